#include "device/DevModels.h"
#include "settings/Config.h"
#include "support/FakeDevControl.h"

#include <QSignalSpy>
#include <QtTest>

namespace {

constexpr int allCodes[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 65, 97};

QString stored(const DevBase &device, const char *key)
{
    return deviceGet(device.name, QString::fromLatin1(key));
}

void store(const QString &model, const char *key, const QString &value)
{
    deviceSet(model, QString::fromLatin1(key), value);
}

QVector<bool> channels(int count, const QVector<int> &on)
{
    QVector<bool> flags(count, false);
    for (const int chn : on) {
        if (chn < count) {
            flags[chn] = true;
        }
    }
    return flags;
}

QVector<int> channelsOn(const DevBase &device)
{
    QVector<int> on;
    for (int chn = 0; chn < device.chnEnable.size(); ++chn) {
        if (device.chnEnable.at(chn)) {
            on.append(chn);
        }
    }
    return on;
}

/// Choices of channels that differ in number and place.
QVector<QVector<bool>> choicesOf(int count)
{
    QVector<bool> everySecond(count, false);
    for (int chn = 0; chn < count; chn += 2) {
        everySecond[chn] = true;
    }
    return {QVector<bool>(count, true),
            QVector<bool>(count, false),
            everySecond,
            channels(count, {0}),
            channels(count, {count - 1}),
            channels(count, {0, 1, count - 2}),
            channels(count, {0, 1, count - 2, count - 1}),
            channels(count, {0, 1, 2, 3, 4, 5})};
}

constexpr int rate100M = 0; // indices of the streaming 16-channel model
constexpr int rate16M = 6;
constexpr int rate20K = 18;

} // namespace

class TstDevBase : public QObject {
    Q_OBJECT
private slots:
    void init() { configLoad(); }

    void theRateLimitsFollowTheModel_data();
    void theRateLimitsFollowTheModel();
    void aRateOutOfRangeTakesTheDefault_data();
    void aRateOutOfRangeTakesTheDefault();
    void aFastRateTurnsOffTheHighestChannels();
    void aFastRateLeavesAChannelAboveTheWalkOn();
    void aRateThatAllChannelsSustainTurnsNoneOff();
    void aDepthOutOfRangeTakesTheDefault();
    void aTriggerPositionOutOfRangeTakesFive_data();
    void aTriggerPositionOutOfRangeTakesFive();
    void anyChangeOfChannelsBringsTheRateDown();
    void aSlowRateStaysWhenChannelsChange();
    void aStorageModelKeepsItsRateWhenChannelsChange();
    void turningAChannelOffClearsItsTrigger();
    void aChannelListOfAnotherLengthIsHarmless();
    void anEdgeTriggerIsAloneAmongEdges();
    void levelTriggersCombine();
    void anAnalogEdgeClearsAllAnalogTriggersAndDigitalEdges();
    void aTriggerOfNoChannelOrCodeIsHarmless_data();
    void aTriggerOfNoChannelOrCodeIsHarmless();
    void turningAnAnalogChannelOffClearsItsTrigger();
    void analogSettingsAreStoredAsTheyAre();
    void samplesBeforeTheTriggerNeedADigitalTrigger();
    void theInstrumentsSettingsFollowTheUsers();
    void theTransportIsTunedToTheDataRate();

    void everythingIsSavedAtOnce();
    void savedSettingsSurviveARestart_data();
    void savedSettingsSurviveARestart();
    void savedChannelsSurviveWhateverTheRate_data();
    void savedChannelsSurviveWhateverTheRate();
    void channelsLeftByChoosingARateSurviveARestart_data();
    void channelsLeftByChoosingARateSurviveARestart();
    void aSavedRateOutOfRangeTakesTheDefaultAndIsRewritten();
    void aSavedDepthOutOfRangeTakesTheDefaultAndIsRewritten();
    void senselessSavedSettingsAreHarmless_data();
    void senselessSavedSettingsAreHarmless();
    void shortSavedListsLeaveTheRestAtTheDefaults();
    void negativeSavedTriggersAreKeptAndTriggerNothing();
};

// ---- rates, depths and channels ------------------------------------------------------------------------------------

void TstDevBase::theRateLimitsFollowTheModel_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<qint64>("rate");
    QTest::addColumn<int>("channels"); // that may run at the rate
    QTest::addColumn<int>("wanted");
    QTest::addColumn<qint64>("fastest"); // of the channels wanted
    QTest::addColumn<int>("index");
    QTest::newRow("streaming, 100 MHz") << 5 << qint64(100000000) << 3 << 3 << qint64(100000000) << 0;
    QTest::newRow("streaming, 80 MHz") << 5 << qint64(80000000) << 3 << 4 << qint64(50000000) << 2;
    QTest::newRow("streaming, 50 MHz") << 5 << qint64(50000000) << 6 << 7 << qint64(32000000) << 4;
    QTest::newRow("streaming, 25 MHz") << 5 << qint64(25000000) << 12 << 10 << qint64(25000000) << 5;
    QTest::newRow("streaming, 16 MHz") << 5 << qint64(16000000) << 16 << 13 << qint64(16000000) << 6;
    QTest::newRow("streaming, nobody so fast") << 5 << qint64(100000001) << 0 << 17 << qint64(0) << 0;
    QTest::newRow("8 channels") << 1 << qint64(24000000) << 8 << 5 << qint64(24000000) << 0;
    QTest::newRow("storage") << 3 << qint64(200000000) << 16 << 16 << qint64(200000000) << 0;
    QTest::newRow("storage, 32 channels") << 9 << qint64(500000000) << 32 << 17 << qint64(500000000) << 0;
    QTest::newRow("no channels") << 3 << qint64(0) << 16 << 0 << qint64(200000000) << 0;
}

void TstDevBase::theRateLimitsFollowTheModel()
{
    QFETCH(int, code);
    QFETCH(qint64, rate);
    QFETCH(int, wanted);
    const std::unique_ptr<DevBase> device = createDevice(code);
    QTEST(device->maxChnForFrequ(rate), "channels");
    QTEST(qint64(device->maxFrequForChn(wanted)), "fastest");
    QTEST(device->frequIndexForChn(wanted), "index");
}

void TstDevBase::aRateOutOfRangeTakesTheDefault_data()
{
    QTest::addColumn<int>("index");
    for (const int index : {-1, 14, 40, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        QTest::addRow("%d", index) << index;
    }
}

void TstDevBase::aRateOutOfRangeTakesTheDefault()
{
    QFETCH(int, index);
    const std::unique_ptr<DevBase> device = createDevice(4);
    QVERIFY(device->setSmpFrequIndex(13));
    QCOMPARE(device->smpFrequ(), std::int64_t(20000));
    QVERIFY(!device->setSmpFrequIndex(index));
    QCOMPARE(device->smpFrequIndex, 3);
    QCOMPARE(stored(*device, "smpFrequIndex"), QStringLiteral("3"));
}

void TstDevBase::aFastRateTurnsOffTheHighestChannels()
{
    const std::unique_ptr<DevBase> device = createDevice(5);
    for (int chn = 0; chn < 16; ++chn) {
        device->setChnTrig(chn, 2);
    }
    QSignalSpy changed(device.get(), &DevBase::sigChnEnaChanged);
    QVERIFY(device->setSmpFrequIndex(rate100M));
    QCOMPARE(channelsOn(*device), QVector<int>({0, 1, 2}));
    QCOMPARE(device->chnEnableCount(), 3);
    QCOMPARE(device->chnTrig, QVector<int>({2, 2, 2}) + QVector<int>(13, 0));
    QCOMPARE(device->smpFrequ(), std::int64_t(100000000));
    QCOMPARE(changed.count(), 1);
    QCOMPARE(stored(*device, "chnEnable"), QStringLiteral("1,1,1,0,0,0,0,0,0,0,0,0,0,0,0,0"));
    QCOMPARE(stored(*device, "chnTrig"), QStringLiteral("2,2,2,0,0,0,0,0,0,0,0,0,0,0,0,0"));
}

void TstDevBase::aFastRateLeavesAChannelAboveTheWalkOn()
{
    const std::unique_ptr<DevBase> device = createDevice(5);
    device->setChnEnable(channels(16, {0, 1, 14, 15}));
    QVERIFY(device->setSmpFrequIndex(rate100M));
    QCOMPARE(channelsOn(*device), QVector<int>({0, 14, 15}));
    // A walk that meets too few channels simply ends.
    device->setChnEnable(channels(16, {10, 11, 12, 13, 14, 15}));
    QVERIFY(device->setSmpFrequIndex(rate100M));
    QCOMPARE(channelsOn(*device), QVector<int>({10, 11, 12, 13, 14, 15}));
}

void TstDevBase::aRateThatAllChannelsSustainTurnsNoneOff()
{
    const std::unique_ptr<DevBase> device = createDevice(5);
    QSignalSpy changed(device.get(), &DevBase::sigChnEnaChanged);
    QVERIFY(device->setSmpFrequIndex(rate16M));
    QCOMPARE(device->chnEnableCount(), 16);
    QCOMPARE(changed.count(), 0);
}

void TstDevBase::aDepthOutOfRangeTakesTheDefault()
{
    const std::unique_ptr<DevBase> device = createDevice(4);
    QVERIFY(device->setSmpDepthIndex(13));
    QCOMPARE(device->smpDepth(), std::int64_t(5000000000));
    QVERIFY(!device->setSmpDepthIndex(14));
    QCOMPARE(device->smpDepthIndex, 6);
    QVERIFY(device->setSmpDepthIndex(0));
    QVERIFY(!device->setSmpDepthIndex(-1));
    QCOMPARE(stored(*device, "smpDepthIndex"), QStringLiteral("6"));
}

void TstDevBase::aTriggerPositionOutOfRangeTakesFive_data()
{
    QTest::addColumn<int>("percent");
    QTest::addColumn<bool>("valid");
    QTest::newRow("0") << 0 << true;
    QTest::newRow("99") << 99 << true;
    QTest::newRow("100") << 100 << false;
    QTest::newRow("-1") << -1 << false;
    QTest::newRow("the smallest number") << std::numeric_limits<int>::min() << false;
}

void TstDevBase::aTriggerPositionOutOfRangeTakesFive()
{
    QFETCH(int, percent);
    QFETCH(bool, valid);
    const std::unique_ptr<DevBase> device = createDevice(0);
    device->setTrgPosition(50);
    QCOMPARE(device->setTrgPosition(percent), valid);
    QCOMPARE(device->trgPosition, valid ? percent : 5);
    QCOMPARE(stored(*device, "trgPosition"), QString::number(device->trgPosition));
}

void TstDevBase::anyChangeOfChannelsBringsTheRateDown()
{
    const std::unique_ptr<DevBase> device = createDevice(5);
    QVERIFY(device->setSmpFrequIndex(rate100M));
    QSignalSpy changed(device.get(), &DevBase::sigChnEnaChanged);
    QSignalSpy lowered(device.get(), &DevBase::sigSmpFrequToLower);
    device->setChnEnable(channels(16, {0, 1}));
    QCOMPARE(device->smpFrequIndex, rate16M);
    QCOMPARE(device->smpFrequ(), std::int64_t(16000000));
    QCOMPARE(stored(*device, "smpFrequIndex"), QStringLiteral("6"));
    QCOMPARE(changed.count(), 1);
    QCOMPARE(lowered.count(), 1);
}

void TstDevBase::aSlowRateStaysWhenChannelsChange()
{
    const std::unique_ptr<DevBase> device = createDevice(5);
    QVERIFY(device->setSmpFrequIndex(rate20K));
    QSignalSpy lowered(device.get(), &DevBase::sigSmpFrequToLower);
    device->setChnEnable(channels(16, {0, 1}));
    QCOMPARE(device->smpFrequIndex, rate20K);
    QCOMPARE(lowered.count(), 0);
}

void TstDevBase::aStorageModelKeepsItsRateWhenChannelsChange()
{
    const std::unique_ptr<DevBase> device = createDevice(9);
    QVERIFY(device->setSmpFrequIndex(0));
    device->setChnEnable(channels(32, {31}));
    QCOMPARE(device->smpFrequ(), std::int64_t(500000000));
    QVERIFY(device->setSmpFrequIndex(0));
    QCOMPARE(channelsOn(*device), QVector<int>({31}));
}

void TstDevBase::turningAChannelOffClearsItsTrigger()
{
    const std::unique_ptr<DevBase> device = createDevice(0);
    device->setChnTrig(3, 1);
    device->setChnTrig(4, 2);
    device->setChnEnable(channels(16, {3}));
    QCOMPARE(device->chnTrig.at(3), 1);
    QCOMPARE(device->chnTrig.at(4), 0);
    QCOMPARE(stored(*device, "chnTrig"), QStringLiteral("0,0,0,1,0,0,0,0,0,0,0,0,0,0,0,0"));
}

void TstDevBase::aChannelListOfAnotherLengthIsHarmless()
{
    const std::unique_ptr<DevBase> device = createDevice(1);
    device->setChnEnable({false, true});
    QCOMPARE(channelsOn(*device), QVector<int>({1, 2, 3, 4, 5, 6, 7}));
    device->setChnEnable(QVector<bool>(100, false));
    QCOMPARE(device->chnEnable, QVector<bool>(8, false));
    device->setChnEnable({});
    QCOMPARE(device->chnEnable, QVector<bool>(8, false));
    device->setAChnEnable({true, true});
    QVERIFY(device->aChnEnable.isEmpty());
}

// ---- triggers ------------------------------------------------------------------------------------------------------

void TstDevBase::anEdgeTriggerIsAloneAmongEdges()
{
    const std::unique_ptr<DevBase> device = createDevice(97);
    device->setChnTrig(0, 1);
    device->setChnTrig(1, 4);
    device->setAChnTrig(1, 1);
    device->setChnTrig(3, 3);
    QCOMPARE(device->chnTrig.mid(0, 4), QVector<int>({1, 0, 0, 3}));
    QCOMPARE(device->aChnTrig, QVector<int>({0, 1}));
    device->setAChnTrig(0, 3);
    device->setChnTrig(5, 4);
    QCOMPARE(device->aChnTrig, QVector<int>({0, 0}));
    QCOMPARE(stored(*device, "AChnTrig"), QStringLiteral("0,0"));
    QCOMPARE(device->chnTrig.mid(0, 6), QVector<int>({1, 0, 0, 0, 0, 4}));
}

void TstDevBase::levelTriggersCombine()
{
    const std::unique_ptr<DevBase> device = createDevice(0);
    device->setChnTrig(0, 3);
    for (int chn = 1; chn < 16; ++chn) {
        device->setChnTrig(chn, 1 + chn % 2);
    }
    QCOMPARE(device->chnTrig, QVector<int>({3, 2, 1, 2, 1, 2, 1, 2, 1, 2, 1, 2, 1, 2, 1, 2}));
}

void TstDevBase::anAnalogEdgeClearsAllAnalogTriggersAndDigitalEdges()
{
    const std::unique_ptr<DevBase> device = createDevice(97);
    device->setChnTrig(2, 2);
    device->setChnTrig(3, 3);
    device->setAChnTrig(0, 2);
    device->setAChnTrig(1, 4);
    QCOMPARE(device->aChnTrig, QVector<int>({0, 4}));
    QCOMPARE(device->chnTrig.mid(2, 2), QVector<int>({2, 0}));
    QCOMPARE(stored(*device, "AChnTrig"), QStringLiteral("0,4"));
    QCOMPARE(stored(*device, "chnTrig"), QStringLiteral("0,0,2,0,0,0,0,0,0,0,0,0,0,0,0,0"));
}

void TstDevBase::aTriggerOfNoChannelOrCodeIsHarmless_data()
{
    QTest::addColumn<int>("chn");
    QTest::addColumn<int>("code");
    QTest::newRow("below the channels") << -1 << 3;
    QTest::newRow("above them") << 16 << 3;
    QTest::newRow("far above") << std::numeric_limits<int>::max() << 1;
    QTest::newRow("an unknown code") << 5 << 5;
    QTest::newRow("a negative code") << 5 << -3;
}

void TstDevBase::aTriggerOfNoChannelOrCodeIsHarmless()
{
    QFETCH(int, chn);
    QFETCH(int, code);
    const std::unique_ptr<DevBase> device = createDevice(97);
    device->setChnTrig(1, 4);
    device->setChnTrig(chn, code);
    QCOMPARE(device->chnTrig, QVector<int>({0, 4}) + QVector<int>(14, 0));
    device->setAChnTrig(chn, code);
    QCOMPARE(device->aChnTrig, QVector<int>({0, 0}));
    device->setAChnProbe(chn == 5 ? 2 : chn, 10);
    device->setAChnReverse(chn == 5 ? 2 : chn, true);
    device->setAChnCouple(chn == 5 ? 2 : chn, 1);
    device->setAChnVoltDiv(chn == 5 ? 2 : chn, 1);
    QCOMPARE(device->aChnProbe, QVector<int>({1, 1}));
    QCOMPARE(device->aChnReverse, QVector<bool>({false, false}));
    QCOMPARE(device->aChnCouple, QVector<int>({0, 0}));
    QCOMPARE(device->aChnVoltDiv, QVector<int>({1000, 1000}));
}

void TstDevBase::turningAnAnalogChannelOffClearsItsTrigger()
{
    const std::unique_ptr<DevBase> device = createDevice(97);
    device->setAChnTrig(0, 1);
    device->setAChnTrig(1, 2);
    QSignalSpy changed(device.get(), &DevBase::sigChnEnaChanged);
    device->setAChnEnable({true, false});
    QCOMPARE(device->aChnEnable, QVector<bool>({true, false}));
    QCOMPARE(device->aChnTrig, QVector<int>({1, 0}));
    QCOMPARE(stored(*device, "AChnEnable"), QStringLiteral("1,0"));
    QCOMPARE(stored(*device, "AChnTrig"), QStringLiteral("1,0"));
    QCOMPARE(changed.count(), 1);
}

void TstDevBase::analogSettingsAreStoredAsTheyAre()
{
    const std::unique_ptr<DevBase> device = createDevice(97);
    device->setAChnProbe(1, 100);
    device->setAChnReverse(0, true);
    device->setAChnCouple(1, 2);
    device->setAChnVoltDiv(0, 50);
    QCOMPARE(stored(*device, "AChnProbe"), QStringLiteral("1,100"));
    QCOMPARE(stored(*device, "AChnReverse"), QStringLiteral("1,0"));
    QCOMPARE(stored(*device, "AChnCouple"), QStringLiteral("0,2"));
    QCOMPARE(stored(*device, "AChnVoltDiv"), QStringLiteral("50,1000"));
}

void TstDevBase::samplesBeforeTheTriggerNeedADigitalTrigger()
{
    const std::unique_ptr<DevBase> device = createDevice(97);
    device->setTrgPosition(99);
    QCOMPARE(device->preTrigSamples(), std::int64_t(0));
    device->setAChnTrig(0, 3);
    QCOMPARE(device->preTrigSamples(), std::int64_t(0));
    device->setChnTrig(15, 1);
    QCOMPARE(device->preTrigSamples(), std::int64_t(7920));

    const std::unique_ptr<DevBase> deep = createDevice(0);
    QVERIFY(deep->setSmpDepthIndex(14));
    deep->setTrgPosition(33);
    deep->setChnTrig(0, 4);
    QCOMPARE(deep->preTrigSamples(), std::int64_t(3300000000));
}

// ---- towards the instrument ----------------------------------------------------------------------------------------

void TstDevBase::theInstrumentsSettingsFollowTheUsers()
{
    const std::unique_ptr<DevBase> device = createDevice(9);
    device->clockFrequ = 1000000000;
    QVERIFY(device->setSmpFrequIndex(0));
    QVERIFY(device->setSmpDepthIndex(14));
    device->setTrgPosition(99);
    device->setChnEnable(channels(32, {0, 1, 2, 3, 31}));
    device->setChnTrig(0, 1);
    device->setChnTrig(1, 2);
    device->setChnTrig(31, 4);
    SmpConfig expected;
    expected.depth = 10000000000;
    expected.preTrig = 9900000000;
    expected.preTrigMemory = 531502202; // 99 % of 512 MiB
    expected.divider = 2;
    expected.enabled = 0x8000000F;
    expected.trigger = 0x80000003;
    expected.level = 0x00000003;
    expected.polarity = 0x80000002;
    QVERIFY(device->smpConfig() == expected);
    device->setChnTrig(2, 3);
    expected.trigger = 0x00000007;
    expected.polarity = 0x00000002;
    QVERIFY(device->smpConfig() == expected);
    QVERIFY(DevBase().smpConfig() == SmpConfig{.depth = 20000});
}

void TstDevBase::theTransportIsTunedToTheDataRate()
{
    FakeDevControl control;
    const std::unique_ptr<DevBase> eight = createDevice(1);
    control.calls.clear();
    QVERIFY(eight->setSmpFrequIndex(0));
    eight->setChnEnable(channels(8, {0}));
    QCOMPARE(control.calls,
             QStringList({QStringLiteral("tuneChunkSize 192000000"), QStringLiteral("tuneChunkSize 192000000")}));

    const std::unique_ptr<DevBase> sixteen = createDevice(5);
    control.calls.clear();
    QVERIFY(sixteen->setSmpFrequIndex(rate100M));
    sixteen->setChnEnable(channels(16, {0, 1}));
    QCOMPARE(control.calls,
             QStringList({QStringLiteral("tuneChunkSize 300000000"), QStringLiteral("tuneChunkSize 32000000")}));

    const std::unique_ptr<DevBase> storage = createDevice(0);
    control.calls.clear();
    QVERIFY(storage->setSmpFrequIndex(0));
    QVERIFY(control.calls.isEmpty());
}

// ---- the configuration ---------------------------------------------------------------------------------------------

void TstDevBase::everythingIsSavedAtOnce()
{
    const std::unique_ptr<DevBase> device = createDevice(97);
    QVERIFY(device->setSmpFrequIndex(2));
    QVERIFY(device->setTrgPosition(40));
    device->setChnTrig(1, 3);
    QCOMPARE(globalGet(QStringLiteral("devModel")), QStringLiteral("97"));
    QCOMPARE(stored(*device, "smpFrequIndex"), QStringLiteral("2"));
    QCOMPARE(stored(*device, "smpDepthIndex"), QStringLiteral("0"));
    QCOMPARE(stored(*device, "trgPosition"), QStringLiteral("40"));
    QCOMPARE(stored(*device, "chnTrig"), QStringLiteral("0,3,0,0,0,0,0,0,0,0,0,0,0,0,0,0"));
    QCOMPARE(stored(*device, "chnEnable"), QStringLiteral("1,1,1,1,1,1,1,1,1,1,1,1,1,1,1,1"));
}

void TstDevBase::savedSettingsSurviveARestart_data()
{
    QTest::addColumn<int>("code");
    for (const int code : allCodes) {
        QTest::addRow("code %d", code) << code;
    }
}

void TstDevBase::savedSettingsSurviveARestart()
{
    QFETCH(int, code);
    std::unique_ptr<DevBase> before = createDevice(code);
    before->setSmpFrequIndex(int(before->smpFrequs.size()) - 1);
    before->setSmpDepthIndex(int(before->smpDepths.size()) - 1);
    before->setTrgPosition(77);
    before->setChnEnable(channels(int(before->chnEnable.size()), {1, 3, 7}));
    before->setChnTrig(3, 2);
    before->setChnTrig(7, 4);
    before->setAChnEnable({false, true});
    before->setAChnTrig(1, 2);
    before->setAChnProbe(1, 10);
    before->setAChnReverse(1, true);
    before->setAChnCouple(0, 1);
    before->setAChnVoltDiv(0, 200);
    const std::unique_ptr<DevBase> after = createDevice(code);
    QCOMPARE(after->smpFrequIndex, before->smpFrequIndex);
    QCOMPARE(after->smpDepthIndex, before->smpDepthIndex);
    QCOMPARE(after->trgPosition, 77);
    QCOMPARE(after->chnEnable, before->chnEnable);
    QCOMPARE(after->chnTrig, before->chnTrig);
    QCOMPARE(after->aChnEnable, before->aChnEnable);
    QCOMPARE(after->aChnTrig, before->aChnTrig);
    QCOMPARE(after->aChnProbe, before->aChnProbe);
    QCOMPARE(after->aChnReverse, before->aChnReverse);
    QCOMPARE(after->aChnCouple, before->aChnCouple);
    QCOMPARE(after->aChnVoltDiv, before->aChnVoltDiv);
}

void TstDevBase::savedChannelsSurviveWhateverTheRate_data()
{
    savedSettingsSurviveARestart_data();
}

void TstDevBase::savedChannelsSurviveWhateverTheRate()
{
    QFETCH(int, code);
    const std::unique_ptr<DevBase> sample = createDevice(code);
    const int count = int(sample->chnEnable.size());
    for (int rate = 0; rate < sample->smpFrequs.size(); ++rate) {
        for (const QVector<bool> &choice : choicesOf(count)) {
            // The same by hand: the rate, then the channels.
            configLoad();
            const std::unique_ptr<DevBase> clicked = createDevice(code);
            clicked->setSmpFrequIndex(rate);
            clicked->setChnEnable(choice);

            QVector<int> triggers(count, 0);
            std::transform(choice.cbegin(), choice.cend(), triggers.begin(), [](bool on) { return on ? 2 : 0; });
            configLoad();
            store(sample->name, "smpFrequIndex", QString::number(rate));
            chnEnablePut(sample->name, choice, false);
            store(sample->name, "chnTrig", intListPut(QVector<int>(count, 2).constData(), count));
            for (int restart = 0; restart < 2; ++restart) {
                const std::unique_ptr<DevBase> loaded = createDevice(code);
                QCOMPARE(loaded->chnEnable, choice);
                QCOMPARE(loaded->chnTrig, triggers);
                QCOMPARE(loaded->smpFrequIndex, clicked->smpFrequIndex);
                QVERIFY(loaded->chnEnableCount() <= loaded->maxChnForFrequ(loaded->smpFrequ()));
                QCOMPARE(stored(*loaded, "smpFrequIndex"), QString::number(loaded->smpFrequIndex));
                QCOMPARE(stored(*loaded, "chnTrig"), intListPut(triggers.constData(), count));
            }
        }
    }
}

void TstDevBase::channelsLeftByChoosingARateSurviveARestart_data()
{
    savedSettingsSurviveARestart_data();
}

void TstDevBase::channelsLeftByChoosingARateSurviveARestart()
{
    QFETCH(int, code);
    const std::unique_ptr<DevBase> sample = createDevice(code);
    for (int rate = 0; rate < sample->smpFrequs.size(); ++rate) {
        for (const QVector<bool> &choice : choicesOf(int(sample->chnEnable.size()))) {
            configLoad();
            const std::unique_ptr<DevBase> before = createDevice(code);
            before->setChnEnable(choice);
            before->setSmpFrequIndex(rate);
            const std::unique_ptr<DevBase> after = createDevice(code);
            QCOMPARE(after->chnEnable, before->chnEnable);
            QCOMPARE(after->chnTrig, before->chnTrig);
        }
    }
}

void TstDevBase::aSavedRateOutOfRangeTakesTheDefaultAndIsRewritten()
{
    store(QStringLiteral("RV2520"), "smpFrequIndex", QStringLiteral("40"));
    QCOMPARE(createDevice(8)->smpFrequIndex, 1);
    QCOMPARE(deviceGet(QStringLiteral("RV2520"), QStringLiteral("smpFrequIndex")), QStringLiteral("1"));
}

void TstDevBase::aSavedDepthOutOfRangeTakesTheDefaultAndIsRewritten()
{
    store(QStringLiteral("RV2520"), "smpDepthIndex", QStringLiteral("14"));
    QCOMPARE(createDevice(8)->smpDepthIndex, 14); // the models of a name share their settings
    QCOMPARE(createDevice(4)->smpDepthIndex, 6);
    QCOMPARE(deviceGet(QStringLiteral("RV2520"), QStringLiteral("smpDepthIndex")), QStringLiteral("6"));
}

void TstDevBase::senselessSavedSettingsAreHarmless_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("words") << QStringLiteral("abc,,x");
    QTest::newRow("huge numbers") << QStringLiteral("99999999999999999999,-99999999999999999999");
    QTest::newRow("negative numbers") << QStringLiteral("-3,-4,-2147483648");
    QTest::newRow("a long list") << QStringLiteral("3,").repeated(5000);
    QTest::newRow("commas") << QStringLiteral(",,,,,,,");
    QTest::newRow("a fraction") << QStringLiteral("1.5");
}

void TstDevBase::senselessSavedSettingsAreHarmless()
{
    QFETCH(QString, text);
    for (const int code : allCodes) {
        configLoad();
        const QString name = createDevice(code)->name;
        for (const char *key : {"smpFrequIndex", "smpDepthIndex", "trgPosition", "chnEnable", "chnTrig", "AChnEnable",
                                "AChnTrig", "AChnProbe", "AChnReverse", "AChnCouple", "AChnVoltDiv", "chnVth"}) {
            store(name, key, text);
        }
        const std::unique_ptr<DevBase> device = createDevice(code);
        QVERIFY(device->smpFrequ() > 0);
        QVERIFY(device->smpDepth() > 0);
        QVERIFY(device->trgPosition >= 0 && device->trgPosition <= 99);
        QCOMPARE(device->chnTrig.size(), device->chnEnable.size());
        QCOMPARE(device->aChnTrig.size(), device->aChnEnable.size());
        QCOMPARE(device->aChnProbe.size(), device->aChnEnable.size());
        for (const int kind : device->chnTrig + device->aChnTrig) {
            QVERIFY(kind <= 4);
        }
        QVERIFY(device->preTrigSamples() >= 0);
    }
}

void TstDevBase::shortSavedListsLeaveTheRestAtTheDefaults()
{
    store(QStringLiteral("RV2720"), "chnEnable", QStringLiteral("0,0"));
    store(QStringLiteral("RV2720"), "chnTrig", QStringLiteral("1,1,1,5"));
    store(QStringLiteral("RV2720"), "AChnVoltDiv", QStringLiteral("250"));
    store(QStringLiteral("RV2720"), "AChnProbe", QStringLiteral("10"));
    store(QStringLiteral("RV2720"), "AChnEnable", QStringLiteral("0"));
    const std::unique_ptr<DevBase> device = createDevice(97);
    QCOMPARE(device->chnEnable, QVector<bool>({false, false}) + QVector<bool>(14, true));
    QCOMPARE(device->chnTrig, QVector<int>({0, 0, 1}) + QVector<int>(13, 0));
    QCOMPARE(device->aChnVoltDiv, QVector<int>({250, 1000}));
    QCOMPARE(device->aChnProbe, QVector<int>({10, 1}));
    QCOMPARE(device->aChnEnable, QVector<bool>({false, true}));
}

void TstDevBase::negativeSavedTriggersAreKeptAndTriggerNothing()
{
    const QString list = QStringLiteral("-1,-3,-2147483648,0,0,0,0,0,0,0,0,0,0,0,0,-4");
    store(QStringLiteral("RV2720"), "chnTrig", list);
    store(QStringLiteral("RV2720"), "AChnTrig", QStringLiteral("-2,-3"));
    const std::unique_ptr<DevBase> device = createDevice(97);
    device->setTrgPosition(50);
    QCOMPARE(device->chnTrig.mid(0, 4), QVector<int>({-1, -3, std::numeric_limits<int>::min(), 0}));
    QCOMPARE(device->aChnTrig, QVector<int>({-2, -3}));
    QCOMPARE(stored(*device, "chnTrig"), list);
    QCOMPARE(stored(*device, "AChnTrig"), QStringLiteral("-2,-3"));

    QCOMPARE(device->preTrigSamples(), std::int64_t(0));
    const SmpConfig none = device->smpConfig();
    QCOMPARE(none.trigger | none.level | none.polarity, 0U);

    // They stay beside triggers that the user sets, edges too.
    device->setChnTrig(5, 3);
    QCOMPARE(device->smpConfig().trigger, 0x20U);
    QCOMPARE(stored(*device, "chnTrig"), QStringLiteral("-1,-3,-2147483648,0,0,3,0,0,0,0,0,0,0,0,0,-4"));
    QCOMPARE(stored(*device, "AChnTrig"), QStringLiteral("-2,-3"));
}

QTEST_GUILESS_MAIN(TstDevBase)
#include "tst_DevBase.moc"
