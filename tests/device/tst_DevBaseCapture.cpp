// The device object and a connected instrument: starts, stops and ends of its captures.

#include "acquisition/SmpCtrlStorage.h"
#include "acquisition/SmpCtrlTransfer.h"
#include "device/DevModels.h"
#include "settings/Config.h"
#include "store/MemBudget.h"
#include "store/SmpStreams.h"
#include "support/FakeDevControl.h"

#include <QElapsedTimer>
#include <QtTest>

#include <atomic>
#include <thread>

namespace {

constexpr std::int64_t ampleMemory = std::int64_t(1) << 40;
constexpr std::uint16_t waitsForTrigger = 0x00C9;

using smpStreams::Bytes;

/// A model that is plugged in, and what the main thread hears of it.
class PluggedIn : public QObject {
public:
    explicit PluggedIn(int code)
    {
        memBudget = ampleMemory;
        control.bulk = &bulk;
        bulk.device = &control.device;
        device = createDevice(code);
        QByteArray identity = device->name.toLatin1().leftJustified(16, '\0', true);
        identity[6] = char(100);
        identity[8] = char(100);
        isConnected = device->initDevice(identity) == 0;
        control.calls.clear();
        connect(device.get(), &DevBase::sigSmpSta, this, [this](int sta, int err, int) { states.append({sta, err}); });
        connect(device.get(), &DevBase::sigSmpDataReady, this, [this] { ++published; });
        connect(
            device.get(), &DevBase::sigCaptureStarts, this, [this] { ++starts; }, Qt::DirectConnection);
    }
    [[nodiscard]] QPair<int, int> last() const { return states.isEmpty() ? qMakePair(-1, -1) : states.last(); }

    FakeDevControl control;
    FakeBulk bulk;
    std::unique_ptr<DevBase> device;
    bool isConnected = false;
    QVector<QPair<int, int>> states;
    int published = 0;
    int starts = 0;
};

/// A ring that holds `count` records of one sample more each.
void fillRing(PluggedIn &desk, std::size_t count)
{
    std::vector<smpStreams::Record> records;
    for (std::size_t i = 0; i < count; ++i) {
        records.push_back({std::uint32_t(i & 1), std::uint8_t(1 + i % 200)});
    }
    desk.bulk.stream = desk.device->chnEnable.size() == 32 ? smpStreams::rle32(records) : smpStreams::rle16(records);
    desk.control.device.info = {std::uint32_t(count), 7, std::uint32_t(desk.bulk.stream.size())};
}

/// Sets the shortest capture of a streaming model, and a stream that is more than enough for it.
void fillStream(PluggedIn &desk)
{
    QVERIFY(desk.device->setSmpDepthIndex(0));
    desk.bulk.stream.assign(2 * 1000 * 1000, 0x00);
}

/// A transport that brings nothing and ends its run only when it is broken off.
class SilentBulk final : public SmpTransport {
public:
    [[nodiscard]] bool isOpen() const override { return true; }
    void setCallback(InterfaceDevCallback * /*receiver*/) override {}
    void breakOffStream() override { m_brokenOff = true; }
    [[nodiscard]] int readStream(std::int32_t, InterfaceDevCallback &receiver) override
    {
        receiver.onStart();
        while (!m_brokenOff) {
            std::this_thread::yield();
        }
        return runFailed;
    }

private:
    std::atomic<bool> m_brokenOff{false};
};

} // namespace

class TstDevBaseCapture : public QObject {
    Q_OBJECT
private slots:
    void init() { configLoad(); }

    void everyStorageModelReadsItsMemoryBack_data();
    void everyStorageModelReadsItsMemoryBack();
    void everyStreamingModelCapturesItsStream_data();
    void everyStreamingModelCapturesItsStream();
    void aCaptureTakesTheSettingsThatItBeganWith();
    void aSecondStartWhileACaptureRunsIsIgnored();
    void aSetUpThatFailsIsReportedAndStartsNothing_data();
    void aSetUpThatFailsIsReportedAndStartsNothing();
    void anInstrumentThatDoesNotStartIsReported();
    void aStorageModelIsStoppedBeforeItsMemoryIsRead();
    void aStopRightAfterTheStartCutsNoReadBack();
    void aStreamThatFallsSilentAtTheStopIsBrokenOff();
    void onlyARunningInstrumentIsStopped();
    void aStopEndsTheWaitForTheTriggerAtOnce();
    void endingACapturePublishesNothing_data();
    void endingACapturePublishesNothing();
    void aDeviceDeletedDuringACaptureJoinsItsThreads_data();
    void aDeviceDeletedDuringACaptureJoinsItsThreads();
    void anInstrumentThatGoesDuringTheCaptureEndsIt();
    void theReceiverIsThatOfTheModel();
    void aLookAtTheListsOfAModelLeavesTheReceiverAlone();
    void theLastCaptureStaysInViewUntilDataComes();
};

void TstDevBaseCapture::everyStorageModelReadsItsMemoryBack_data()
{
    QTest::addColumn<int>("code");
    for (const int code : {2, 3, 4, 6, 7, 8, 9, 65, 97}) {
        QTest::addRow("code %d", code) << code;
    }
}

void TstDevBaseCapture::everyStorageModelReadsItsMemoryBack()
{
    QFETCH(int, code);
    PluggedIn desk(code);
    QVERIFY(desk.isConnected);
    desk.device->setChnTrig(3, 3);
    if (code == 97) {
        desk.bulk.stream.assign(32768, 0x11);
        desk.bulk.sizes = {32768};
        desk.control.device.info.endAddress = 32768;
    } else {
        fillRing(desk, 6000);
    }
    desk.device->startCapture();
    QTRY_COMPARE(desk.published, 1);
    QVERIFY(!desk.device->isCapturing());
    QCOMPARE(desk.control.calls, QStringList{QStringLiteral("sendSmpConfig")});
    QVERIFY(desk.control.config == desk.device->smpConfig());
    QCOMPARE(desk.control.config.trigger, 8U);
    QCOMPARE(desk.states.first(), qMakePair(0, 0));
    QCOMPARE(desk.last(), qMakePair(5, 0));
    QCOMPARE(desk.starts, 1);
    QCOMPARE(desk.device->readSize.load(), std::int32_t(desk.bulk.stream.size()));
    QVERIFY(desk.device->smpData->sampleCount() > 0);
    QCOMPARE(desk.device->smpData->smpFrequ(), desk.device->smpFrequ());
    desk.device->smpData->clear();
    QCOMPARE(memBudget.load(), ampleMemory);
}

void TstDevBaseCapture::everyStreamingModelCapturesItsStream_data()
{
    QTest::addColumn<int>("code");
    QTest::newRow("one byte a sample") << 1;
    QTest::newRow("slices") << 5;
}

void TstDevBaseCapture::everyStreamingModelCapturesItsStream()
{
    QFETCH(int, code);
    PluggedIn desk(code);
    QVERIFY(desk.isConnected);
    fillStream(desk);
    desk.device->setTrgPosition(50);
    desk.device->setChnTrig(0, 3);
    // The pulse of channel 0: of all words of the slices in turn, or of bit 0 of the bytes.
    constexpr std::size_t pulseGroup = 2000;
    const std::size_t groupBytes = code == 1 ? 16 : 32;
    desk.bulk.stream[pulseGroup * groupBytes] = 0x01;
    desk.bulk.stream[(pulseGroup + 1) * groupBytes] = 0x01;
    desk.bulk.stream[(pulseGroup + 1) * groupBytes + 1] = 0x01;
    desk.device->startCapture();
    QTRY_COMPARE(desk.published, 1);
    QCOMPARE(desk.last(), qMakePair(5, 0));
    QCOMPARE(desk.device->smpData->sampleCount(), desk.device->smpDepth());
    QCOMPARE(desk.device->smpData->trgPos(), desk.device->preTrigSamples()); // a group's first sample in both
    QVERIFY(desk.device->smpData->isEdge(0, desk.device->smpData->trgPos()));
    QVERIFY(desk.control.device.stopped);
    QVERIFY(desk.control.calls.contains(QStringLiteral("sendSmpConfig")));
    desk.device->smpData->clear();
    QCOMPARE(memBudget.load(), ampleMemory);
}

void TstDevBaseCapture::aCaptureTakesTheSettingsThatItBeganWith()
{
    PluggedIn desk(2);
    fillRing(desk, 6000);
    desk.control.device.answerStatuses({waitsForTrigger});
    desk.bulk.device = nullptr;
    QVERIFY(desk.device->setSmpFrequIndex(3));
    const std::int64_t rate = desk.device->smpFrequ();
    desk.device->startCapture();
    QTRY_COMPARE(desk.last(), qMakePair(2, 0));
    desk.device->setSmpFrequIndex(0);
    desk.device->setChnEnable(QVector<bool>(16, false));
    desk.device->stopCapture();
    QTRY_COMPARE(desk.published, 1);
    QVERIFY(!desk.device->isCapturing());
    QCOMPARE(desk.device->smpData->smpFrequ(), rate);
    QVERIFY(desk.device->smpData->entryCount(0) > 1);
}

void TstDevBaseCapture::aSecondStartWhileACaptureRunsIsIgnored()
{
    PluggedIn desk(2);
    fillRing(desk, 600);
    desk.control.device.answerStatuses({waitsForTrigger});
    desk.bulk.device = nullptr;
    desk.device->startCapture();
    desk.device->startCapture();
    QTRY_COMPARE(desk.last(), qMakePair(2, 0));
    desk.device->startCapture();
    QCOMPARE(desk.starts, 1);
    QCOMPARE(desk.control.calls.count(QStringLiteral("sendSmpConfig")), 1);
    desk.device->stopCapture();
    QTRY_COMPARE(desk.published, 1);
    desk.device->startCapture();
    QCOMPARE(desk.starts, 2);
}

void TstDevBaseCapture::aSetUpThatFailsIsReportedAndStartsNothing_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("error");
    for (const int code : {2, 5}) {
        QTest::addRow("not open, code %d", code) << code << 1;
        QTest::addRow("failed, code %d", code) << code << 2;
    }
}

void TstDevBaseCapture::aSetUpThatFailsIsReportedAndStartsNothing()
{
    QFETCH(int, code);
    QFETCH(int, error);
    PluggedIn desk(code);
    desk.control.configAnswer = error;
    desk.device->startCapture();
    QVERIFY(!desk.device->isCapturing());
    QCOMPARE(desk.states, (QVector<QPair<int, int>>{{0, error}}));
    desk.control.configAnswer = 0;
    desk.control.bulk = nullptr; // nothing to read from
    desk.device->startCapture();
    QCOMPARE(desk.last(), qMakePair(0, 1));
    QVERIFY(desk.control.device.calls().isEmpty());
}

void TstDevBaseCapture::anInstrumentThatDoesNotStartIsReported()
{
    PluggedIn desk(2);
    desk.control.device.failing = QStringLiteral("startDevice");
    desk.device->startCapture();
    QTRY_COMPARE(desk.last(), qMakePair(0, 2));
    QTRY_VERIFY(!desk.device->isCapturing());
    QCOMPARE(desk.published, 0);
}

void TstDevBaseCapture::aStorageModelIsStoppedBeforeItsMemoryIsRead()
{
    PluggedIn desk(2);
    fillRing(desk, 600);
    desk.control.device.answerStatuses({waitsForTrigger});
    desk.bulk.device = nullptr;
    desk.device->startCapture();
    QTRY_COMPARE(desk.last(), qMakePair(2, 0));
    desk.device->stopCapture();
    QTRY_COMPARE(desk.published, 1);
    const QStringList calls = desk.control.device.calls();
    QVERIFY(calls.indexOf(QStringLiteral("stopDevice")) < calls.indexOf(QStringLiteral("readCaptureInfo")));
    QCOMPARE(calls.count(QStringLiteral("stopDevice")), 1);
    QCOMPARE(desk.control.calls.last(), QStringLiteral("stopDevice"));
}

void TstDevBaseCapture::aStopRightAfterTheStartCutsNoReadBack()
{
    PluggedIn desk(2);
    fillRing(desk, 600);
    desk.control.device.answerStatuses({waitsForTrigger});
    desk.bulk.device = nullptr;
    desk.device->smpSta = 4; // where the capture before this one has failed
    desk.device->startCapture();
    desk.device->stopCapture();
    QVERIFY(!desk.device->smpCut);
    QTRY_COMPARE(desk.published, 1);
}

void TstDevBaseCapture::aStreamThatFallsSilentAtTheStopIsBrokenOff()
{
    SilentBulk silent;
    std::atomic<bool> known{false};
    PluggedIn desk(5);
    desk.control.bulk = &silent;
    desk.control.device.onCall = [&](const QString &call) {
        if (call == QStringLiteral("stopDevice") && desk.device->smpStop) {
            known = true;
        }
    };
    desk.device->startCapture();
    QTRY_VERIFY(desk.control.device.running);
    desk.device->stopCapture();
    QTRY_COMPARE(desk.last(), qMakePair(5, 0)); // a read that is not broken off waits for ever
    QVERIFY(known);                             // the threads know of the stop before the instrument does
}

void TstDevBaseCapture::onlyARunningInstrumentIsStopped()
{
    for (const int code : {2, 5}) {
        PluggedIn desk(code);
        desk.device->stopCapture();
        QVERIFY(desk.device->smpStop);
        QVERIFY(desk.control.calls.isEmpty());
        QVERIFY(desk.control.device.calls().isEmpty());
    }
}

void TstDevBaseCapture::aStopEndsTheWaitForTheTriggerAtOnce()
{
    PluggedIn desk(2);
    fillRing(desk, 600);
    desk.control.device.answerStatuses({waitsForTrigger});
    desk.bulk.device = nullptr;
    desk.device->startCapture();
    QTRY_COMPARE(desk.last(), qMakePair(2, 0));
    desk.device->stopCapture();
    const int polls = desk.control.device.calls().count(QStringLiteral("readStatus"));
    QTRY_COMPARE(desk.last(), qMakePair(5, 0));
    // At most the poll that was just to come: the wait between two was not waited out and asked again.
    QVERIFY(desk.control.device.calls().count(QStringLiteral("readStatus")) <= polls + 1);
}

void TstDevBaseCapture::endingACapturePublishesNothing_data()
{
    QTest::addColumn<int>("code");
    QTest::newRow("storage") << 2;
    QTest::newRow("streaming") << 5;
}

void TstDevBaseCapture::endingACapturePublishesNothing()
{
    QFETCH(int, code);
    SilentBulk silent;
    PluggedIn desk(code);
    if (code == 5) {
        desk.control.bulk = &silent;
    }
    desk.control.device.answerStatuses({waitsForTrigger});
    desk.device->startCapture();
    QTRY_VERIFY(desk.control.device.running);
    desk.device->endCapture();
    QVERIFY(!desk.device->isCapturing());
    QCoreApplication::processEvents();
    QCOMPARE(desk.published, 0);
    QCOMPARE(desk.last(), qMakePair(5, 0)); // so that the dialog goes
    // And the next one runs.
    desk.control.bulk = &desk.bulk;
    desk.control.device.answerStatuses({0x00C5});
    if (code == 5) {
        fillStream(desk);
    } else {
        fillRing(desk, 600);
    }
    desk.device->startCapture();
    QTRY_COMPARE(desk.published, 1);
}

void TstDevBaseCapture::aDeviceDeletedDuringACaptureJoinsItsThreads_data()
{
    endingACapturePublishesNothing_data();
}

void TstDevBaseCapture::aDeviceDeletedDuringACaptureJoinsItsThreads()
{
    QFETCH(int, code);
    SilentBulk silent;
    PluggedIn desk(code);
    if (code == 5) {
        desk.control.bulk = &silent;
    }
    desk.control.device.answerStatuses({waitsForTrigger});
    desk.device->startCapture();
    QTRY_VERIFY(desk.control.device.running);
    desk.device.reset();
    QTRY_VERIFY(desk.control.device.stopped); // the device object waits 50 ms for it at most
    QCoreApplication::processEvents();
    QCOMPARE(desk.published, 0);
    QTRY_COMPARE(memBudget.load(), ampleMemory);
}

void TstDevBaseCapture::anInstrumentThatGoesDuringTheCaptureEndsIt()
{
    PluggedIn desk(2);
    desk.control.device.answerStatuses({waitsForTrigger});
    desk.device->startCapture();
    QTRY_COMPARE(desk.last(), qMakePair(2, 0));
    desk.device->connected = false;
    desk.bulk.open = false;
    desk.device->stopCapture();
    QTRY_COMPARE(desk.last(), qMakePair(2, 1));
    QVERIFY(!desk.device->isCapturing());
    QVERIFY(!desk.control.calls.contains(QStringLiteral("stopDevice")));
}

void TstDevBaseCapture::theReceiverIsThatOfTheModel()
{
    PluggedIn desk(5);
    QVERIFY(dynamic_cast<SmpCtrlTransfer *>(desk.bulk.receiver()) != nullptr);
    desk.device = createDevice(1);
    QCOMPARE(desk.bulk.receiver(), nullptr); // the one that went let go; a capture takes it again
    desk.device.reset();
    for (const int code : {0, 2, 9, 97}) {
        desk.device = createDevice(code);
        QVERIFY(dynamic_cast<SmpCtrlStorage *>(desk.bulk.receiver()) != nullptr);
        desk.device.reset();
        QCOMPARE(desk.bulk.receiver(), nullptr);
    }
}

void TstDevBaseCapture::aLookAtTheListsOfAModelLeavesTheReceiverAlone()
{
    const PluggedIn desk(2);
    InterfaceDevCallback *const receiver = desk.bulk.receiver();
    QVERIFY(receiver != nullptr);
    for (const int code : {0, 2, 5}) {
        {
            const std::unique_ptr<const DevBase> model = createModel(code);
            QCOMPARE(model->model, code);
            QCOMPARE(desk.bulk.receiver(), receiver); // a capture may be under way
        }
        QCOMPARE(desk.bulk.receiver(), receiver);
    }
}

void TstDevBaseCapture::theLastCaptureStaysInViewUntilDataComes()
{
    PluggedIn desk(2);
    fillRing(desk, 600);
    desk.device->startCapture();
    QTRY_COMPARE(desk.published, 1);
    QTRY_VERIFY(!desk.device->hasThreads()); // they answered from what is changed now
    desk.control.device.answerStatuses({waitsForTrigger});
    desk.bulk.device = nullptr;
    desk.device->startCapture();
    QTRY_COMPARE(desk.last(), qMakePair(2, 0));
    QVERIFY(bool(SmpReadLock(desk.device->smpData.get())));
    desk.device->stopCapture();
    QTRY_COMPARE(desk.published, 2);
}

QTEST_GUILESS_MAIN(TstDevBaseCapture)
#include "tst_DevBaseCapture.moc"
