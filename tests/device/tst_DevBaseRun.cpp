// The device object at work: captures, their end, and what goes to an instrument.

#include "acquisition/SmpSimulate.h"
#include "device/DevModels.h"
#include "settings/Config.h"
#include "store/MemBudget.h"
#include "support/FakeDevControl.h"

#include <QtTest>

#include <cmath>
#include <limits>

namespace {

/// A device and what the main thread hears of it.
class Listener : public QObject {
public:
    explicit Listener(DevBase &device)
    {
        connect(&device, &DevBase::sigSmpSta, this, [this](int sta, int err, int) { states.append({sta, err}); });
        connect(&device, &DevBase::sigSmpDataReady, this, [this] { ++published; });
        connect(
            &device, &DevBase::sigCaptureStarts, this, [this] { ++starts; }, Qt::DirectConnection);
    }

    QVector<QPair<int, int>> states;
    int published = 0;
    int starts = 0;
};

/// Sets a capture of blocks of two seconds, that lasts for days. How many of them there are when it is stopped is a
/// matter of the machine; each is told.
constexpr std::int64_t blockSamples = 40000;
void chooseEndless(DevBase &device)
{
    device.setSmpFrequIndex(int(device.smpFrequs.size()) - 1);
    device.setSmpDepthIndex(int(device.smpDepths.size()) - 1);
}

/// Sets a capture that ends at once.
void chooseShort(DevBase &device)
{
    device.setSmpFrequIndex(0);
    device.setSmpDepthIndex(0);
}

/// An instrument's identity block: the name, and clocks in megahertz.
QByteArray identityOf(const QByteArray &name, int clock, int pwmClock)
{
    QByteArray block = name.leftJustified(16, '\0', true);
    block[8] = char(clock & 0xFF);
    block[9] = char(clock >> 8);
    block[10] = char(pwmClock & 0xFF);
    block[11] = char(pwmClock >> 8);
    return block;
}

/// Counts what it is asked; drives no channel.
class CountingSource : public SimulationSource {
public:
    std::atomic<int> begun{0};
    std::atomic<int> built{0};
    std::atomic<int> released{0};

    void begin(std::int64_t) override { ++begun; }
    void build(std::int64_t, std::int64_t, std::vector<SimulationChannel> &) override { ++built; }
    void release() override { ++released; }
};

} // namespace

class TstDevBaseRun : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        configLoad();
        memBudget = std::int64_t(1) << 40;
    }

    void withoutAnInstrumentEveryModelSimulates_data();
    void withoutAnInstrumentEveryModelSimulates();
    void theLastCaptureIsClosedToReadersAsSoonAsTheNextStarts();
    void aSecondStartWhileACaptureRunsIsIgnored();
    void aCaptureKeepsTheSettingsThatItBeganWith();
    void aStopKeepsWhatHasBeenCaptured();
    void aStopBeforeAStartHasNoEffectOnIt();
    void aStopWithoutACaptureIsHarmless();
    void theNextCaptureMayStartAsTheLastOneIsPublished();
    void aDeviceDeletedDuringACaptureJoinsItAndPublishesNothing();
    void endingACapturePublishesNothing();
    void aSpentMemoryBudgetIsReported();
    void theSourceOfTheDayDrivesTheCapture();
    void aDeviceWithoutAModelCapturesNothing();

    void bringUpConnectsTheModelThatItNames_data();
    void bringUpConnectsTheModelThatItNames();
    void bringUpRefusesAnotherModel_data();
    void bringUpRefusesAnotherModel();
    void bringUpPassesOnWhatTheStatusTells_data();
    void bringUpPassesOnWhatTheStatusTells();
    void bringUpReadsTheClocks_data();
    void bringUpReadsTheClocks();
    void bringUpTunesAStreamingTransportFirst();
    void bringUpGoesOnWithoutAnIdentity();
    void theNoHardwareModelNeverConnects();

    void pwmOutputsRunFromTheStart();
    void pwmSettingsAreLimited_data();
    void pwmSettingsAreLimited();
    void aConnectedPwmOutputTellsWhatItReallyProduces();
    void resettingThePwmSwitchesOffAndOnAgain();
    void aThresholdReachesOnlyAConnectedInstrument();
    void theStoredThresholdIsSent_data();
    void theStoredThresholdIsSent();
    void bothGroupsOfTheWideModelGetTheirStoredThreshold();
    void onlyAConnectedInstrumentIsSwitchedOff();
};

// ---- simulated captures --------------------------------------------------------------------------------------------

void TstDevBaseRun::withoutAnInstrumentEveryModelSimulates_data()
{
    QTest::addColumn<int>("code");
    for (const int code : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 65, 97}) {
        QTest::addRow("code %d", code) << code;
    }
}

void TstDevBaseRun::withoutAnInstrumentEveryModelSimulates()
{
    QFETCH(int, code);
    const std::unique_ptr<DevBase> device = createDevice(code);
    chooseShort(*device);
    Listener listener(*device);
    device->startCapture();
    QTRY_COMPARE(listener.published, 1);
    QCOMPARE(listener.starts, 1);
    QCOMPARE(listener.states, (QVector<QPair<int, int>>{{0, 0}, {5, 0}}));
    QCOMPARE(device->smpData->sampleCount(), device->smpDepth());
    QCOMPARE(device->smpData->smpFrequ(), device->smpFrequ());
    for (int chn = 0; chn < device->chnEnable.size(); ++chn) {
        QCOMPARE(device->smpData->entryCount(chn) > 0, device->chnEnable.at(chn));
    }
}

void TstDevBaseRun::theLastCaptureIsClosedToReadersAsSoonAsTheNextStarts()
{
    const std::unique_ptr<DevBase> device = createDevice(0);
    chooseShort(*device);
    Listener listener(*device);
    device->startCapture();
    QTRY_COMPARE(listener.published, 1);
    chooseEndless(*device);
    bool readable = false;
    connect(
        device.get(), &DevBase::sigCaptureStarts, &listener,
        [&] { readable = bool(SmpReadLock(device->smpData.get())); }, Qt::DirectConnection);
    device->startCapture();
    QVERIFY(readable); // until everybody has been told
    QVERIFY(!SmpReadLock(device->smpData.get()));
    QCOMPARE(device->smpData->sampleCount(), std::int64_t(0));
}

void TstDevBaseRun::aSecondStartWhileACaptureRunsIsIgnored()
{
    const std::unique_ptr<DevBase> device = createDevice(0);
    chooseEndless(*device);
    Listener listener(*device);
    device->startCapture();
    device->startCapture();
    QCOMPARE(listener.starts, 1);
    device->stopCapture();
    QTRY_COMPARE(listener.published, 1);
    QCOMPARE(listener.states.count({0, 0}), 1);
}

void TstDevBaseRun::aCaptureKeepsTheSettingsThatItBeganWith()
{
    const std::unique_ptr<DevBase> device = createDevice(0);
    chooseEndless(*device);
    Listener listener(*device);
    device->startCapture();
    device->setSmpFrequIndex(0);
    device->setSmpDepthIndex(0);
    device->setChnEnable(QVector<bool>(16, false));
    QTRY_VERIFY(listener.states.size() >= 2);
    device->stopCapture();
    QTRY_COMPARE(listener.published, 1);
    QCOMPARE(device->smpData->smpFrequ(), std::int64_t(20000));
    QCOMPARE(device->smpData->sampleCount(), blockSamples * listener.states.count({3, 0}));
    QVERIFY(device->smpData->entryCount(15) > 1);
}

void TstDevBaseRun::aStopKeepsWhatHasBeenCaptured()
{
    const std::unique_ptr<DevBase> device = createDevice(8);
    chooseEndless(*device);
    Listener listener(*device);
    device->startCapture();
    QTRY_VERIFY(listener.states.size() >= 2);
    device->stopCapture();
    QTRY_COMPARE(listener.published, 1);
    QCOMPARE(listener.states.last(), qMakePair(5, 0));
    QCOMPARE(device->smpData->sampleCount(), blockSamples * listener.states.count({3, 0}));
}

void TstDevBaseRun::aStopBeforeAStartHasNoEffectOnIt()
{
    const std::unique_ptr<DevBase> device = createDevice(8);
    chooseShort(*device);
    Listener listener(*device);
    device->stopCapture();
    QVERIFY(device->smpStop);
    device->startCapture();
    QVERIFY(!device->smpStop);
    QTRY_COMPARE(listener.published, 1);
    QCOMPARE(device->smpData->sampleCount(), std::int64_t(20000));
}

void TstDevBaseRun::aStopWithoutACaptureIsHarmless()
{
    DevBase bare;
    bare.stopCapture();
    bare.endCapture();
    QVERIFY(bare.smpStop);
}

void TstDevBaseRun::theNextCaptureMayStartAsTheLastOneIsPublished()
{
    const std::unique_ptr<DevBase> device = createDevice(0);
    chooseShort(*device);
    Listener listener(*device);
    connect(device.get(), &DevBase::sigSmpDataReady, &listener, [&] {
        if (listener.published < 4) {
            device->startCapture();
        }
    });
    device->startCapture();
    QTRY_COMPARE(listener.published, 4);
    QCOMPARE(listener.starts, 4);
}

void TstDevBaseRun::aDeviceDeletedDuringACaptureJoinsItAndPublishesNothing()
{
    CountingSource source;
    gSimulationSource = &source;
    std::unique_ptr<DevBase> device = createDevice(9);
    chooseEndless(*device);
    Listener listener(*device);
    device->startCapture();
    QTRY_VERIFY(listener.states.size() >= 2);
    const std::int64_t spent = (std::int64_t(1) << 40) - memBudget;
    QVERIFY(spent > 0);
    device.reset();
    QCOMPARE(source.released.load(), 1);
    QCOMPARE(memBudget.load(), std::int64_t(1) << 40);
    QCoreApplication::processEvents(); // what the run had said before it was joined
    QCOMPARE(listener.published, 0);
    gSimulationSource = nullptr;

    device = createDevice(9); // and in the midst of its start
    device->startCapture();
    device.reset();
}

void TstDevBaseRun::endingACapturePublishesNothing()
{
    const std::unique_ptr<DevBase> device = createDevice(0);
    chooseEndless(*device);
    Listener listener(*device);
    device->startCapture();
    QTRY_VERIFY(listener.states.size() >= 2);
    device->endCapture();
    QVERIFY(!device->hasThreads());
    QCoreApplication::processEvents();
    QCOMPARE(listener.published, 0);
    chooseShort(*device);
    device->startCapture();
    QTRY_COMPARE(listener.published, 1);
}

void TstDevBaseRun::aSpentMemoryBudgetIsReported()
{
    const std::unique_ptr<DevBase> device = createDevice(0);
    chooseShort(*device);
    Listener listener(*device);
    memBudget = 1000;
    device->startCapture();
    QTRY_COMPARE(listener.published, 1);
    QCOMPARE(listener.states, (QVector<QPair<int, int>>{{0, 0}, {4, 4}}));
    QVERIFY(device->smpData->complete());
}

void TstDevBaseRun::theSourceOfTheDayDrivesTheCapture()
{
    CountingSource source;
    gSimulationSource = &source;
    const std::unique_ptr<DevBase> device = createDevice(0);
    chooseShort(*device);
    Listener listener(*device);
    device->startCapture();
    QTRY_COMPARE(listener.published, 1);
    gSimulationSource = nullptr;
    device->startCapture();
    QTRY_COMPARE(listener.published, 2);
    QCOMPARE(source.begun.load(), 1);
    QCOMPARE(source.built.load(), 1);
    QCOMPARE(source.released.load(), 1);
}

void TstDevBaseRun::aDeviceWithoutAModelCapturesNothing()
{
    DevBase bare;
    Listener listener(bare);
    bare.startCapture();
    QCOMPARE(listener.starts, 0);
    QVERIFY(!bare.isCapturing());
    QCOMPARE(bare.smpFrequ(), std::int64_t(0));
    QCOMPARE(bare.devUid, QByteArray(8, '\0'));
    QCOMPARE(bare.depthMax, std::int64_t(10000000000));
    QCOMPARE(bare.smpDepths.size(), 15);
}

// ---- bring-up ------------------------------------------------------------------------------------------------------

void TstDevBaseRun::bringUpConnectsTheModelThatItNames_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<bool>("asksStatus");
    for (const int code : {1, 2, 3, 4, 5, 6, 7, 8, 9, 65, 97}) {
        QTest::addRow("code %d", code) << code << (code != 1 && code != 5);
    }
}

void TstDevBaseRun::bringUpConnectsTheModelThatItNames()
{
    QFETCH(int, code);
    FakeDevControl control;
    const std::unique_ptr<DevBase> device = createDevice(code);
    control.calls.clear();
    QCOMPARE(device->initDevice(identityOf(device->name.toLatin1(), 500, 250)), 0);
    QVERIFY(device->connected);
    QCOMPARE(device->devUid, control.uid);
    QTEST(control.calls.contains(QStringLiteral("readStatus")), "asksStatus");
    QCOMPARE(control.calls.last(), QStringLiteral("readUid"));
}

void TstDevBaseRun::bringUpRefusesAnotherModel_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QByteArray>("identity");
    for (const int code : {1, 2, 3, 4, 5, 6, 7, 8, 9, 65, 97}) {
        QTest::addRow("another name for code %d", code) << code << identityOf("RV9999", 500, 250);
        QTest::addRow("nothing for code %d", code) << code << QByteArray();
    }
    QTest::newRow("a block that is too short") << 8 << QByteArray("RV252");
    QTest::newRow("another case") << 8 << identityOf("rv2520", 500, 250);
}

void TstDevBaseRun::bringUpRefusesAnotherModel()
{
    QFETCH(int, code);
    QFETCH(QByteArray, identity);
    FakeDevControl control;
    const std::unique_ptr<DevBase> device = createDevice(code);
    QCOMPARE(device->initDevice(identity), 11);
    QVERIFY(!device->connected);
    QCOMPARE(device->devUid, QByteArray(8, '\0'));
}

void TstDevBaseRun::bringUpPassesOnWhatTheStatusTells_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("answer");
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("result");
    for (const int code : {2, 4}) {
        QTest::addRow("not open, code %d", code) << code << 1 << 0x85C1 << 1;
        QTest::addRow("transfer failed, code %d", code) << code << 2 << 0x85C1 << 2;
        QTest::addRow("no bus, code %d", code) << code << 0 << 0xFFFF << 7;
        QTest::addRow("all zero, code %d", code) << code << 0 << 0 << 8;
        QTest::addRow("not running, code %d", code) << code << 0 << 0x85C3 << 9;
        QTest::addRow("bits missing, code %d", code) << code << 0 << 0x8501 << 10;
        QTest::addRow("a fault, code %d", code) << code << 0 << 0x85D1 << 13;
        QTest::addRow("not ready, code %d", code) << code << 0 << 0x84C1 << 12;
        QTest::addRow("not ready, bit 15, code %d", code) << code << 0 << 0x05C1 << 12;
        QTest::addRow("ready, other bits do not count, code %d", code) << code << 0 << 0xF5CE << 0;
    }
    QTest::newRow("a streaming model is not asked") << 5 << 2 << 0 << 0;
    QTest::newRow("nor the one of 8 channels") << 1 << 2 << 0 << 0;
}

void TstDevBaseRun::bringUpPassesOnWhatTheStatusTells()
{
    QFETCH(int, code);
    QFETCH(int, answer);
    QFETCH(int, status);
    QFETCH(int, result);
    FakeDevControl control;
    control.statusAnswer = answer;
    control.status = std::uint16_t(status);
    const std::unique_ptr<DevBase> device = createDevice(code);
    QCOMPARE(device->initDevice(identityOf(device->name.toLatin1(), 500, 250)), result);
    QCOMPARE(device->connected, result == 0);
}

void TstDevBaseRun::bringUpReadsTheClocks_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<qint64>("clock");
    QTest::addColumn<qint64>("pwmClock");
    QTest::newRow("most models") << 8 << qint64(500000000) << qint64(65535000000);
    QTest::newRow("streaming") << 5 << qint64(500000000) << qint64(65535000000);
    QTest::newRow("a fixed PWM clock") << 4 << qint64(500000000) << qint64(250000000);
    QTest::newRow("one byte, and five times that") << 1 << qint64(200000000) << qint64(1000000000);
    QTest::newRow("the no-hardware model") << 0 << qint64(500000000) << qint64(65535000000);
}

void TstDevBaseRun::bringUpReadsTheClocks()
{
    QFETCH(int, code);
    FakeDevControl control;
    const std::unique_ptr<DevBase> device = createDevice(code);
    QByteArray identity = identityOf(device->name.toLatin1(), 500, 65535);
    identity[6] = char(200);
    device->initDevice(identity);
    QTEST(qint64(device->clockFrequ), "clock");
    QTEST(qint64(device->pwmClock), "pwmClock");
    device->initDevice(device->name.toLatin1()); // a block that ends behind the name
    QCOMPARE(device->clockFrequ, std::int64_t(0));
    device->setPwm(0, 1000.0, 50.0);
    QVERIFY(std::isfinite(device->pwmFrequ[0]) && std::isfinite(device->pwmDuty[0]));
}

void TstDevBaseRun::bringUpTunesAStreamingTransportFirst()
{
    FakeDevControl control;
    const std::unique_ptr<DevBase> eight = createDevice(1);
    control.calls.clear();
    eight->initDevice(QByteArray("another"));
    QCOMPARE(control.calls, QStringList({QStringLiteral("tuneChunkSize 128000000")}));
    const std::unique_ptr<DevBase> sixteen = createDevice(5);
    control.calls.clear();
    sixteen->initDevice(QByteArray("RV2310"));
    QCOMPARE(control.calls, QStringList({QStringLiteral("tuneChunkSize 160000000"), QStringLiteral("readUid")}));
}

void TstDevBaseRun::bringUpGoesOnWithoutAnIdentity()
{
    FakeDevControl control;
    control.uidAnswer = 2;
    const std::unique_ptr<DevBase> device = createDevice(2);
    QCOMPARE(device->initDevice(identityOf("RV2320", 100, 100)), 0);
    QVERIFY(device->connected);
    QCOMPARE(device->devUid, QByteArray(8, '\0'));
    control.uidAnswer = 0;
    control.uid = "short";
    QCOMPARE(device->initDevice(identityOf("RV2320", 100, 100)), 0);
    QCOMPARE(device->devUid, QByteArray(8, '\0'));
}

void TstDevBaseRun::theNoHardwareModelNeverConnects()
{
    FakeDevControl control;
    const std::unique_ptr<DevBase> device = createDevice(0);
    control.calls.clear();
    QCOMPARE(device->initDevice(identityOf("RV2520", 500, 250)), 1);
    QVERIFY(!device->connected);
    QVERIFY(control.calls.isEmpty());
}

// ---- a connected instrument ----------------------------------------------------------------------------------------

void TstDevBaseRun::pwmOutputsRunFromTheStart()
{
    const std::unique_ptr<DevBase> device = createDevice(0);
    QVERIFY(device->pwmEnable[0] && device->pwmEnable[1]);
    QCOMPARE(device->pwmFrequ[0], 1000.0);
    QCOMPARE(device->pwmFrequ[1], 100000.0);
    QCOMPARE(device->pwmDuty[0], 50.0);
    QCOMPARE(device->pwmDuty[1], 50.0);
}

void TstDevBaseRun::pwmSettingsAreLimited_data()
{
    QTest::addColumn<double>("frequ");
    QTest::addColumn<double>("duty");
    QTest::addColumn<double>("keptFrequ");
    QTest::addColumn<double>("keptDuty");
    const double infinite = std::numeric_limits<double>::infinity();
    QTest::newRow("too fast") << 3e7 << 50.0 << 2e7 << 50.0;
    QTest::newRow("too slow") << 0.01 << 101.0 << 0.1 << 100.0;
    QTest::newRow("negative") << -5.0 << -1.0 << 0.1 << 0.0;
    QTest::newRow("no numbers") << std::nan("") << std::nan("") << 0.1 << 0.0;
    QTest::newRow("infinite") << infinite << infinite << 2e7 << 100.0;
}

void TstDevBaseRun::pwmSettingsAreLimited()
{
    QFETCH(double, frequ);
    QFETCH(double, duty);
    DevBase device;
    for (const int output : {0, 1, 2, -1, 1000000}) {
        device.setPwm(output, frequ, duty);
    }
    QTEST(device.pwmFrequ[0], "keptFrequ");
    QTEST(device.pwmFrequ[1], "keptFrequ");
    QTEST(device.pwmDuty[1], "keptDuty");
}

void TstDevBaseRun::aConnectedPwmOutputTellsWhatItReallyProduces()
{
    FakeDevControl control;
    const std::unique_ptr<DevBase> device = createDevice(2);
    QCOMPARE(device->initDevice(identityOf("RV2320", 200, 200)), 0);
    device->setPwm(0, 3.0, 50.0);
    QCOMPARE(control.calls.last(), QStringLiteral("sendPwm 0 66666667 33333333"));
    QVERIFY(std::abs(device->pwmFrequ[0] - 2.999999985) < 1e-12);
    QVERIFY(device->pwmDuty[0] < 50.0);
    device->setPwmEnable(false, true);
    QCOMPARE(control.calls.last(), QStringLiteral("sendPwmEnable 2"));
    QVERIFY(!device->pwmEnable[0] && device->pwmEnable[1]);
}

void TstDevBaseRun::resettingThePwmSwitchesOffAndOnAgain()
{
    FakeDevControl control;
    const std::unique_ptr<DevBase> device = createDevice(2);
    QCOMPARE(device->initDevice(identityOf("RV2320", 200, 200)), 0);
    control.calls.clear();
    device->resetPwm();
    QCOMPARE(control.calls, QStringList({QStringLiteral("sendPwmEnable 0"), QStringLiteral("sendPwm 0 200000 100000"),
                                         QStringLiteral("sendPwm 1 2000 1000"), QStringLiteral("sendPwmEnable 3")}));
    QVERIFY(device->pwmEnable[0] && device->pwmEnable[1]);
}

void TstDevBaseRun::aThresholdReachesOnlyAConnectedInstrument()
{
    FakeDevControl control;
    const std::unique_ptr<DevBase> device = createDevice(9);
    control.calls.clear();
    device->setVth(1.65, 1);
    device->loadVth();
    QVERIFY(control.calls.isEmpty());
    QCOMPARE(device->initDevice(identityOf("RV2540", 200, 200)), 0);
    control.calls.clear();
    device->setVth(5.0, 1);
    device->setVth(-5.0, 2);
    device->setVth(1.0, 0);
    device->setVth(1.0, 3);
    QCOMPARE(control.calls, QStringList({QStringLiteral("sendVth 1 848 0"), QStringLiteral("sendVth 2 65415 727")}));
}

void TstDevBaseRun::theStoredThresholdIsSent_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("call");
    QTest::newRow("none") << QString() << QStringLiteral("sendVth 1 621 242");
    QTest::newRow("2.8") << QStringLiteral("2.80") << QStringLiteral("sendVth 1 969 242");
    QTest::newRow("0 is a voltage") << QStringLiteral("0") << QStringLiteral("sendVth 1 121 242");
    QTest::newRow("no number") << QStringLiteral("high") << QStringLiteral("sendVth 1 621 242");
    QTest::newRow("what is called no number") << QStringLiteral("nan") << QStringLiteral("sendVth 1 621 242");
    QTest::newRow("infinite") << QStringLiteral("-inf") << QStringLiteral("sendVth 1 621 242");
}

void TstDevBaseRun::theStoredThresholdIsSent()
{
    QFETCH(QString, text);
    FakeDevControl control;
    const std::unique_ptr<DevBase> device = createDevice(8);
    QCOMPARE(device->initDevice(identityOf("RV2520", 200, 200)), 0);
    deviceSet(device->name, QStringLiteral("chnVth"), text);
    device->loadVth();
    QTEST(control.calls.last(), "call");
}

void TstDevBaseRun::bothGroupsOfTheWideModelGetTheirStoredThreshold()
{
    FakeDevControl control;
    const std::unique_ptr<DevBase> device = createDevice(9);
    QCOMPARE(device->initDevice(identityOf("RV2540", 200, 200)), 0);
    control.calls.clear();
    deviceSet(device->name, QStringLiteral("chnVth"), QStringLiteral("0.90"));
    deviceSet(device->name, QStringLiteral("chnVth2"), QStringLiteral("4.00"));
    device->loadVth();
    QCOMPARE(control.calls, QStringList({QStringLiteral("sendVth 1 393 242"), QStringLiteral("sendVth 2 848 0")}));
    deviceSet(device->name, QStringLiteral("chnVth2"), QString());
    device->loadVth();
    QCOMPARE(control.calls.last(), QStringLiteral("sendVth 2 621 242"));
}

void TstDevBaseRun::onlyAConnectedInstrumentIsSwitchedOff()
{
    FakeDevControl control;
    const std::unique_ptr<DevBase> device = createDevice(8);
    control.calls.clear();
    device->shutDown();
    QVERIFY(control.calls.isEmpty());
    QCOMPARE(device->initDevice(identityOf("RV2520", 200, 200)), 0);
    device->shutDown();
    QCOMPARE(control.calls.last(), QStringLiteral("powerOff"));
}

QTEST_GUILESS_MAIN(TstDevBaseRun)
#include "tst_DevBaseRun.moc"
