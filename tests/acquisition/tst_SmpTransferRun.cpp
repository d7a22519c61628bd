// Whole captures of a device that streams: from the bulk pipe to the closed store.

#include "CaptureDesk.h"
#include "store/Captures.h"
#include "store/NaiveTrigger.h"
#include "store/SmpLease.h"
#include "store/SmpStreams.h"

#include <memory>
#include <thread>

using naiveTrigger::Random;
using smpStreams::Bytes;
using Samples = std::vector<std::uint32_t>;

namespace {

constexpr int group = SmpStreamWindow::groupSamples;

/// What a capture of `samples` must hold: from the group of the first sample that is kept, up to the depth.
struct Expected {
    std::int64_t start = 0; ///< in the stream
    std::int64_t trgPos = 0;
    std::int64_t smpCount = 0;
    bool triggered = false;
};

Expected expect(const Samples &samples, const SmpRunSettings &settings, const std::vector<int> &chns)
{
    std::vector<std::int32_t> codes;
    for (const int chn : chns) {
        codes.push_back(settings.trig[std::size_t(chn)]);
    }
    const std::int64_t trigger = naiveTrigger::find(samples, chns, codes);
    Expected want;
    want.triggered = trigger >= 0;
    want.start = trigger > settings.preTrig ? (trigger - settings.preTrig) / group * group : 0;
    want.trgPos = want.triggered ? trigger - want.start : 0;
    want.smpCount = std::min(settings.depth, std::int64_t(samples.size()) - want.start);
    return want;
}

/// The levels of a closed channel, sample by sample.
std::vector<int> levels(const SmpData &data, int chn)
{
    std::vector<int> all;
    SmpEdgeCursor cursor;
    for (std::int64_t pos = 0; pos < data.smpCount(); ++pos) {
        all.push_back(data.locate(chn, pos, cursor));
    }
    return all;
}

/// True when the closed capture is `smpCount` samples of the stream from `start` on; edges only where levels change,
/// but for position 0 when `edgeAtBegin` allows one there.
bool holds(const SmpData &data, const Samples &samples, std::int64_t start, std::int64_t smpCount,
           const std::vector<int> &chns, bool edgeAtBegin = false)
{
    if (!data.complete() || data.smpCount() != smpCount) {
        return false;
    }
    for (const int chn : chns) {
        std::vector<int> want;
        captures::Positions edges;
        for (std::int64_t i = 0; i < smpCount; ++i) {
            want.push_back(int(samples[std::size_t(start + i)] >> chn & 1));
            if (i > 0 && want[std::size_t(i)] != want[std::size_t(i - 1)]) {
                edges.push_back(i);
            }
        }
        edges.push_back(smpCount);
        captures::Positions has = captures::entries(data, chn);
        if (edgeAtBegin && !has.empty() && has.front() == 0) {
            has.erase(has.begin());
        }
        if (has != edges || levels(data, chn) != want) {
            return false;
        }
    }
    return true;
}

/// Buffers of 1 to `most` words.
std::vector<std::int32_t> randomSizes(std::int32_t most, Random &random)
{
    std::vector<std::int32_t> sizes;
    for (int i = 0; i < 97; ++i) {
        sizes.push_back(2 * std::int32_t(1 + random() % std::uint32_t(most)));
    }
    return sizes;
}

/// Samples that are quiet and low, but for one channel that rises once.
Samples onePulse(std::size_t count, std::size_t at, int chn)
{
    Samples samples(count, 0);
    for (std::size_t i = at; i < count; ++i) {
        samples[i] = std::uint32_t(1) << chn;
    }
    return samples;
}

Bytes bytesOf(const Samples &samples)
{
    Bytes bytes;
    for (const std::uint32_t sample : samples) {
        bytes.push_back(std::uint8_t(sample));
    }
    return bytes;
}

/// A capture of 16 channels, of which the first `chns` are in use, of one pulse of the last of them.
class PulseDesk : public CaptureDesk {
public:
    PulseDesk(int chns, std::size_t count, std::size_t at) : CaptureDesk(16), samples(onePulse(count, at, chns - 1))
    {
        std::fill(settings.enable.begin() + chns, settings.enable.end(), std::uint8_t(0));
        settings.trig[std::size_t(chns - 1)] = smpTrigCode::risingEdge;
        used = naiveTrigger::firstChns(chns);
        bulk.stream = smpStreams::sliced(samples, used);
        bulk.sizes = {1024};
    }
    Samples samples;
    std::vector<int> used;
};

} // namespace

class TstSmpTransferRun : public QObject {
    Q_OBJECT
private slots:
    void theCaptureIsThePartOfTheStreamAroundTheTrigger_data();
    void theCaptureIsThePartOfTheStreamAroundTheTrigger();
    void bytesAreCapturedAroundTheTriggerToo();
    void channelsThatAreOffHaveNoData();
    void withoutATriggerTheCaptureBeginsAtOnce();
    void aTriggerInTheFirstGroupHasFewerSamplesBeforeIt();
    void aRunBeginsWhenTheLastCaptureIsNoLongerRead();
    void aStopWhileTheLastCaptureIsReadKeepsIt();
    void theWindowReachesBackIntoAnEarlierBuffer();
    void aLongWaitHoldsNoMoreThanTheWindow_data();
    void aLongWaitHoldsNoMoreThanTheWindow();
    void afterTheTriggerNoMoreThanTheWindowIsHeldEither_data();
    void afterTheTriggerNoMoreThanTheWindowIsHeldEither();
    void aSlowConverterIsWaitedForWithoutLoss();
    void theStatesPassInOrderWithTheirValues();
    void aFinishedCaptureStopsTheDeviceOnce();

    void aStopWhileWaitingKeepsWhatIsHeld();
    void aStopWhileWaitingWithoutAWindowKeepsTheLastBuffer();
    void aStopBeforeTheWindowIsFullKeepsWhatIsHeld();
    void aStopWhileSamplingKeepsWhatIsThere();
    void aStopBeforeTheStartStopsTheDeviceAgain();
    void afterAStopNoErrorIsShownWhateverTheReadSays();

    void aStreamThatEndsEarlyIsReported_data();
    void aStreamThatEndsEarlyIsReported();
    void anUnplugAtEachBufferEndsTheRun_data();
    void anUnplugAtEachBufferEndsTheRun();
    void aDeviceThatIsNotOpenIsReported();
    void aFailedRequestEndsInTheCodeOfTheRead_data();
    void aFailedRequestEndsInTheCodeOfTheRead();
    void aSpentBudgetInTheConverterIsReportedAndStopsTheDevice();
    void aHeapThatRefusesTheConverterABlockStopsTheDevice();
    void aSpentBudgetInTheTransportIsReported();
    void anAbortPublishesNothing();
    void anAbortBeforeTheFirstReadBreaksTheStreamOff();
    void theNextCaptureMayStartAsTheLastOneIsPublished();
    void whatALastRunLeftIsCleared();
    void withoutAnyChannelTheRunEndsWithoutData();
    void aStreamOfNothingIsLeftUnpublished();
};

void TstSmpTransferRun::theCaptureIsThePartOfTheStreamAroundTheTrigger_data()
{
    QTest::addColumn<int>("chns");
    for (int chns = 1; chns <= 16; ++chns) {
        QTest::addRow("%d channels", chns) << chns;
    }
}

void TstSmpTransferRun::theCaptureIsThePartOfTheStreamAroundTheTrigger()
{
    QFETCH(int, chns);
    Random random(chns);
    const std::vector<int> used = naiveTrigger::firstChns(chns);
    int triggered = 0;
    for (int round = 0; round < 25; ++round) {
        CaptureDesk desk(16);
        std::fill(desk.settings.enable.begin() + chns, desk.settings.enable.end(), std::uint8_t(0));
        const auto asking = std::size_t(random() % std::uint32_t(chns));
        desk.settings.trig[asking] = std::int32_t(1 + random() % 4);
        desk.settings.depth = 200 + random() % 1500;
        desk.settings.preTrig = desk.settings.depth * (random() % 100) / 100;
        const Samples samples =
            naiveTrigger::samples(std::size_t(group) * (200 + random() % 100), 200 + random() % 4000, random);
        desk.bulk.stream = smpStreams::sliced(samples, used);
        desk.bulk.sizes = randomSizes(round % 2 == 0 ? 40 : 400, random);
        desk.startStreaming();
        QVERIFY(desk.runToEnd());
        const Expected want = expect(samples, desk.settings, used);
        if (!want.triggered) {
            QCOMPARE(desk.smpData->trgPos(), std::int64_t(0));
            continue;
        }
        triggered += want.trgPos > 0 ? 1 : 0;
        QCOMPARE(desk.smpData->trgPos(), want.trgPos);
        const bool isFull = want.smpCount == desk.settings.depth;
        QCOMPARE(desk.last(), isFull ? (State{5, 0, 0}) : (State{3, 14, 0}));
        QVERIFY(holds(*desk.smpData, samples, want.start, want.smpCount, used));
        QCOMPARE(desk.published, 1);
        QCOMPARE(desk.leak(), std::int64_t(0));
    }
    QVERIFY(triggered > 3);
}

void TstSmpTransferRun::bytesAreCapturedAroundTheTriggerToo()
{
    Random random(77);
    const std::vector<int> used = naiveTrigger::firstChns(8);
    int triggered = 0;
    for (int round = 0; round < 60; ++round) {
        CaptureDesk desk(8);
        desk.settings.bytes8 = true;
        desk.settings.trig[random() % 8] = std::int32_t(1 + random() % 4);
        desk.settings.depth = 200 + random() % 1500;
        desk.settings.preTrig = desk.settings.depth * (random() % 100) / 100;
        const Samples samples = naiveTrigger::samples(std::size_t(group) * (200 + random() % 100), 1000, random);
        desk.bulk.stream = bytesOf(samples);
        desk.bulk.sizes = randomSizes(100, random);
        for (std::int32_t &size : desk.bulk.sizes) {
            size -= std::int32_t(random() % 2); // a sample may end anywhere
        }
        desk.startStreaming();
        QVERIFY(desk.runToEnd());
        const Expected want = expect(samples, desk.settings, used);
        if (!want.triggered) {
            continue;
        }
        triggered += want.trgPos > 0 ? 1 : 0;
        QCOMPARE(desk.smpData->trgPos(), want.trgPos);
        QVERIFY(holds(*desk.smpData, samples, want.start, want.smpCount, used, true));
        QCOMPARE(desk.leak(), std::int64_t(0));
    }
    QVERIFY(triggered > 10);
}

void TstSmpTransferRun::channelsThatAreOffHaveNoData()
{
    CaptureDesk desk(16);
    desk.settings.enable.assign(16, 0);
    const std::vector<int> used{1, 4, 15};
    for (const int chn : used) {
        desk.settings.enable[std::size_t(chn)] = 1;
    }
    desk.settings.trig[4] = smpTrigCode::fallingEdge;
    desk.settings.trig[5] = smpTrigCode::highLevel; // of a channel that is off: asks for nothing
    Random random(9);
    const Samples samples = naiveTrigger::samples(4000, 150, random);
    desk.settings.depth = 500;
    desk.settings.preTrig = 50;
    desk.bulk.stream = smpStreams::sliced(samples, used);
    desk.startStreaming();
    QVERIFY(desk.runToEnd());
    const Expected want = expect(samples, desk.settings, used);
    QVERIFY(want.triggered);
    QVERIFY(holds(*desk.smpData, samples, want.start, 500, used));
    QCOMPARE(desk.smpData->entryCount(5), std::int64_t(0));
}

void TstSmpTransferRun::withoutATriggerTheCaptureBeginsAtOnce()
{
    CaptureDesk desk(16);
    Random random(3);
    const Samples samples = naiveTrigger::samples(4000, 50, random);
    desk.bulk.stream = smpStreams::sliced(samples, naiveTrigger::firstChns(16));
    desk.startStreaming();
    QVERIFY(desk.runToEnd());
    QVERIFY(holds(*desk.smpData, samples, 0, desk.settings.depth, naiveTrigger::firstChns(16)));
    QCOMPARE(desk.smpData->trgPos(), std::int64_t(0));
    QVERIFY(!desk.course().contains(2));
    QCOMPARE(desk.course().first(), 0);
    QCOMPARE(desk.last(), (State{5, 0, 0}));
}

void TstSmpTransferRun::aRunBeginsWhenTheLastCaptureIsNoLongerRead()
{
    PulseDesk desk(16, 4000, 1000);
    captures::close(*desk.smpData, {{5}}, 10);
    auto lease = std::make_unique<SmpLease>(desk.smpData.get());
    desk.startStreaming();
    while (!lease->writerWaits()) {
        std::this_thread::yield();
    }
    QCOMPARE(desk.smpData->lastPosition(0), std::int64_t(10));
    QVERIFY(!desk.device.running); // nothing is sent that nobody takes
    lease.reset();
    QVERIFY(desk.runToEnd());
    QCOMPARE(desk.last(), (State{5, 0, 0}));
    QCOMPARE(desk.smpData->sampleCount(), desk.settings.depth);
}

void TstSmpTransferRun::aStopWhileTheLastCaptureIsReadKeepsIt()
{
    PulseDesk desk(16, 4000, 1000);
    captures::close(*desk.smpData, {{5}}, 10);
    const SmpLease lease(desk.smpData.get());
    desk.startStreaming();
    desk.stop();
    QVERIFY(desk.runToEnd());
    QCOMPARE(desk.last(), (State{5, 0, 0}));
    QCOMPARE(desk.published, 1); // the view shows it again
    QVERIFY(!lease.writerWaits());
    QCOMPARE(desk.smpData->sampleCount(), std::int64_t(10));
}

void TstSmpTransferRun::aTriggerInTheFirstGroupHasFewerSamplesBeforeIt()
{
    PulseDesk desk(4, 4000, 9);
    desk.settings.preTrig = 700;
    desk.startStreaming();
    QVERIFY(desk.runToEnd());
    QCOMPARE(desk.smpData->trgPos(), std::int64_t(9));
    QVERIFY(holds(*desk.smpData, desk.samples, 0, desk.settings.depth, desk.used));
}

void TstSmpTransferRun::theWindowReachesBackIntoAnEarlierBuffer()
{
    // Buffers of 128 groups. The trigger stands in the third, the window begins in the first.
    PulseDesk desk(4, 16000, 5003);
    desk.settings.depth = 8000;
    desk.settings.preTrig = 4000;
    desk.startStreaming();
    QVERIFY(desk.runToEnd());
    QCOMPARE(desk.cnvtTransfer.firstOffset, (5003 - 4000) / 16 * 8);
    QCOMPARE(desk.smpData->trgPos(), std::int64_t(4000 + (5003 - 4000) % 16));
    QVERIFY(holds(*desk.smpData, desk.samples, 992, 8000, desk.used));
}

void TstSmpTransferRun::aLongWaitHoldsNoMoreThanTheWindow_data()
{
    QTest::addColumn<int>("chns");
    QTest::addColumn<int>("share");
    for (const int chns : {1, 3, 8, 12, 16}) {
        for (const int share : {0, 50, 99}) {
            QTest::addRow("%d channels, %d %% before the trigger", chns, share) << chns << share;
        }
    }
}

void TstSmpTransferRun::aLongWaitHoldsNoMoreThanTheWindow()
{
    QFETCH(int, chns);
    QFETCH(int, share);
    constexpr std::size_t count = 300000;
    PulseDesk desk(chns, count, count - 3 * group);
    desk.settings.depth = 20000;
    desk.settings.preTrig = desk.settings.depth * share / 100;
    desk.bulk.chunkSize = 1024;
    std::int64_t lowest = CaptureDesk::ampleMemory;
    desk.bulk.beforeBuffer = [&](int) { lowest = std::min(lowest, desk.bulk.lowestBudget); };
    desk.startStreaming();
    QVERIFY(desk.runToEnd());
    QVERIFY(desk.smpData->trgPos() >= desk.settings.preTrig);
    const std::int64_t roots = std::int64_t(sizeof(SmpEdgeRoot)) * chns; // all that the store takes before the trigger
    const std::int64_t window = desk.settings.preTrig / group * 2 * chns;
    const std::int64_t most = CaptureDesk::ampleMemory - desk.bulk.lowestBudget - roots;
    // The trigger comes in the last buffers, so that the converter adds to the store only behind them.
    QVERIFY2(most <= window + 8 * 1024 + std::int64_t(sizeof(SmpEdgeMid) + sizeof(SmpEdgeLeaf)) * chns,
             qPrintable(QString::number(most)));
    QVERIFY(holds(*desk.smpData, desk.samples, std::int64_t(count) - 3 * group - desk.smpData->trgPos(),
                  desk.smpData->trgPos() + 3 * group, desk.used));
}

void TstSmpTransferRun::afterTheTriggerNoMoreThanTheWindowIsHeldEither_data()
{
    QTest::addColumn<int>("chns");
    QTest::addColumn<int>("share");
    for (const int chns : {3, 16}) {
        for (const int share : {0, 5, 50}) {
            QTest::addRow("%d channels, %d %% before the trigger", chns, share) << chns << share;
        }
    }
}

void TstSmpTransferRun::afterTheTriggerNoMoreThanTheWindowIsHeldEither()
{
    QFETCH(int, chns);
    QFETCH(int, share);
    constexpr std::size_t count = 300000;
    constexpr std::size_t pulse = 120000;
    PulseDesk desk(chns, count, pulse);
    desk.settings.depth = 160000;
    desk.settings.preTrig = desk.settings.depth * share / 100;
    desk.bulk.chunkSize = 1024;
    desk.bulk.sizes = {1024};
    constexpr int forAsLongAsItTakes = 60000; // of each buffer; never waited for when all is well
    desk.ctrlTransfer.roomWaitMs = forAsLongAsItTakes;
    desk.startStreaming();
    QVERIFY(desk.runToEnd());
    QCOMPARE(desk.last(), (State{5, 0, 0}));
    const std::int64_t window = desk.settings.preTrig / group * 2 * chns;
    // The store holds one edge in all, of the last channel.
    const auto store =
        std::int64_t(sizeof(SmpEdgeRoot)) * chns + std::int64_t(sizeof(SmpEdgeMid) + sizeof(SmpEdgeLeaf));
    const std::int64_t most = CaptureDesk::ampleMemory - desk.bulk.lowestBudget;
    QVERIFY2(most <= window + 8 * 1024 + store, qPrintable(QStringLiteral("%1, %2").arg(most - store).arg(window)));
    QVERIFY(most >= window);
    QVERIFY(holds(*desk.smpData, desk.samples, std::int64_t(pulse) - desk.smpData->trgPos(), desk.settings.depth,
                  desk.used));
}

void TstSmpTransferRun::aSlowConverterIsWaitedForWithoutLoss()
{
    // Each buffer fills thousands of entries, and they come as fast as they are copied.
    CaptureDesk desk(16);
    const std::size_t count = 16 * 40000;
    Samples samples(count);
    for (std::size_t i = 0; i < count; ++i) {
        samples[i] = i % 2 == 0 ? 0x5555 : 0xAAAA;
    }
    desk.settings.depth = std::int64_t(count);
    desk.bulk.stream = smpStreams::sliced(samples, naiveTrigger::firstChns(16));
    desk.bulk.chunkSize = 1 << 14;
    desk.bulk.sizes = {1 << 14};
    desk.startStreaming();
    QVERIFY(desk.runToEnd());
    QCOMPARE(desk.last(), (State{5, 0, 0}));
    QCOMPARE(desk.smpData->smpCount(), std::int64_t(count));
    QCOMPARE(desk.smpData->entryCount(15), std::int64_t(count)); // one less between them, and the end mark
}

void TstSmpTransferRun::theStatesPassInOrderWithTheirValues()
{
    PulseDesk desk(4, 16000, 9000);
    desk.settings.depth = 4000;
    desk.settings.preTrig = 3000;
    desk.bulk.sizes = {800}; // 1600 samples
    desk.startStreaming();
    QVERIFY(desk.runToEnd());
    QCOMPARE(desk.states.mid(0, 4), (QVector<State>{{0, 0, 0}, {1, 0, 40}, {2, 0, 5}, {2, 0, 5}}));
    QCOMPARE(desk.last(), (State{5, 0, 0}));
    QCOMPARE(desk.course().mid(0, 4), (QVector<int>{0, 1, 2, 3}));
    // At the trigger: the samples from the window's begin on, 6000 / 16 * 16, to the end of the sixth buffer.
    QVERIFY(desk.states.contains(State{3, 0, (9600 - 6000) * 100 / 4000}));
}

void TstSmpTransferRun::aFinishedCaptureStopsTheDeviceOnce()
{
    PulseDesk desk(4, 16000, 900);
    desk.startStreaming();
    QVERIFY(desk.runToEnd());
    QCOMPARE(desk.device.calls(), QStringList({QStringLiteral("bulkStop"), QStringLiteral("startDevice"),
                                               QStringLiteral("bulkStart"), QStringLiteral("stopDevice")}));
    QCOMPARE(desk.bulk.limit, 0);
}

// ---- stops ---------------------------------------------------------------------------------------------------------

void TstSmpTransferRun::aStopWhileWaitingKeepsWhatIsHeld()
{
    PulseDesk desk(5, 64000, 64000); // no pulse
    desk.settings.preTrig = 500;
    desk.bulk.sizes = {1000}; // 100 groups
    desk.stopAtBuffer(20);
    desk.startStreaming();
    QVERIFY(desk.runToEnd());
    QCOMPARE(desk.smpData->trgPos(), std::int64_t(0));
    QCOMPARE(desk.last(), (State{5, 0, 0}));
    QVERIFY(holds(*desk.smpData, desk.samples, 0, 1600, desk.used)); // one buffer is the whole window
    QCOMPARE(desk.published, 1);
    QCOMPARE(desk.course(), (QVector<int>{0, 2, 4, 5}));
    QCOMPARE(desk.leak(), std::int64_t(0));
}

void TstSmpTransferRun::aStopWhileWaitingWithoutAWindowKeepsTheLastBuffer()
{
    PulseDesk desk(5, 64000, 64000); // no pulse
    desk.settings.preTrig = 0;
    desk.bulk.sizes = {1000}; // 100 groups
    desk.stopAtBuffer(20);
    desk.startStreaming();
    QVERIFY(desk.runToEnd());
    QCOMPARE(desk.last(), (State{5, 0, 0}));
    QVERIFY(holds(*desk.smpData, desk.samples, 0, 1600, desk.used));
    QCOMPARE(desk.leak(), std::int64_t(0));
}

void TstSmpTransferRun::aStopBeforeTheWindowIsFullKeepsWhatIsHeld()
{
    Random random(6);
    CaptureDesk desk(16);
    const std::vector<int> used = naiveTrigger::firstChns(16);
    Samples samples = naiveTrigger::samples(16000, 40, random);
    for (std::uint32_t &sample : samples) {
        sample &= ~std::uint32_t(8); // channel 3 stays low
    }
    desk.settings.trig[3] = smpTrigCode::highLevel;
    desk.settings.depth = 14000;
    desk.settings.preTrig = 10000;
    desk.bulk.stream = smpStreams::sliced(samples, used);
    desk.bulk.sizes = {1000}; // cuts groups
    desk.stopAtBuffer(7);
    desk.startStreaming();
    QVERIFY(desk.runToEnd());
    QCOMPARE(desk.course(), (QVector<int>{0, 1, 4, 5}));
    QVERIFY(holds(*desk.smpData, samples, 0, 7000 / 32 * 16, used));
}

void TstSmpTransferRun::aStopWhileSamplingKeepsWhatIsThere()
{
    PulseDesk desk(4, 64000, 900);
    desk.settings.depth = 60000;
    desk.stopAtBuffer(6);
    desk.startStreaming();
    QVERIFY(desk.runToEnd());
    QCOMPARE(desk.last(), (State{5, 0, 0}));
    QCOMPARE(desk.smpData->trgPos(), std::int64_t(900 % 16));
    QVERIFY(holds(*desk.smpData, desk.samples, 896, 6 * 2048 - 896, desk.used));
}

void TstSmpTransferRun::aStopBeforeTheStartStopsTheDeviceAgain()
{
    PulseDesk desk(4, 64000, 900);
    desk.device.onCall = [&](const QString &call) {
        if (call == QStringLiteral("bulkStop")) {
            desk.smpStop = true; // the user was faster than the thread
        }
    };
    desk.startStreaming();
    QVERIFY(desk.runToEnd());
    QCOMPARE(desk.last(), (State{5, 0, 0}));
    QCOMPARE(desk.published, 0);
    QCOMPARE(desk.device.calls().last(), QStringLiteral("stopDevice"));
    QVERIFY(desk.device.stopped);
}

void TstSmpTransferRun::afterAStopNoErrorIsShownWhateverTheReadSays()
{
    PulseDesk desk(4, 64000, 900);
    desk.settings.depth = 60000;
    desk.bulk.answer = SmpTransport::runFailed;
    desk.stopAtBuffer(3);
    desk.startStreaming();
    QVERIFY(desk.runToEnd());
    QCOMPARE(desk.last(), (State{5, 0, 0}));
    QCOMPARE(desk.published, 1);
}

// ---- failures ------------------------------------------------------------------------------------------------------

void TstSmpTransferRun::aStreamThatEndsEarlyIsReported_data()
{
    QTest::addColumn<int>("answer");
    QTest::addColumn<int>("error");
    QTest::newRow("the device is done") << int(SmpTransport::runEnded) << 14;
    QTest::newRow("a time-out") << int(SmpTransport::runFailed) << 3;
    QTest::newRow("out of memory") << int(SmpTransport::runNoMemory) << 4;
}

void TstSmpTransferRun::aStreamThatEndsEarlyIsReported()
{
    QFETCH(int, answer);
    QFETCH(int, error);
    for (const std::size_t pulse : {100, 3000, 4000}) { // sampling; waiting when it ends; never
        PulseDesk desk(4, 3200, pulse);
        desk.samples.resize(3200);
        desk.settings.depth = 20000;
        desk.settings.preTrig = 1000;
        desk.bulk.answer = answer;
        desk.startStreaming();
        QVERIFY(desk.runToEnd());
        QCOMPARE(desk.last().err, error);
        QCOMPARE(desk.last().sta, pulse < 3200 ? 3 : 2);
        QCOMPARE(desk.published, 1);
        QVERIFY(desk.smpData->complete());
        QVERIFY(desk.smpData->smpCount() > 0);
        QCOMPARE(desk.device.calls().last(), QStringLiteral("stopDevice"));
        QCOMPARE(desk.leak(), std::int64_t(0));
    }
}

void TstSmpTransferRun::anUnplugAtEachBufferEndsTheRun_data()
{
    QTest::addColumn<int>("buffer");
    for (int buffer = 0; buffer < 12; ++buffer) {
        QTest::addRow("before buffer %d", buffer) << buffer;
    }
}

void TstSmpTransferRun::anUnplugAtEachBufferEndsTheRun()
{
    QFETCH(int, buffer);
    PulseDesk desk(4, 64000, 9000);
    desk.settings.depth = 30000;
    desk.settings.preTrig = 3000;
    desk.device.failing = QStringLiteral("stopDevice"); // it is gone
    desk.bulk.maxBuffers = buffer;
    desk.startStreaming();
    QVERIFY(desk.runToEnd());
    QCOMPARE(desk.last().err, 3);
    QCOMPARE(desk.published, buffer > 0 ? 1 : 0);
    QVERIFY(!desk.smpBusy);
    QCOMPARE(desk.smpBufs.count(), 0);
    QCOMPARE(desk.leak(), std::int64_t(0));
    // And the next one works.
    desk.bulk.maxBuffers = -1;
    desk.startStreaming();
    QVERIFY(desk.runToEnd());
    QCOMPARE(desk.last(), (State{5, 0, 0}));
    QVERIFY(holds(*desk.smpData, desk.samples, 6000, 30000, desk.used));
}

void TstSmpTransferRun::aDeviceThatIsNotOpenIsReported()
{
    PulseDesk desk(4, 6400, 900);
    desk.bulk.open = false;
    desk.startStreaming();
    QVERIFY(desk.runToEnd());
    QCOMPARE(desk.last(), (State{1, 1, 0}));
    QCOMPARE(desk.published, 0);
    QVERIFY(!desk.device.calls().contains(QStringLiteral("startDevice")));
}

void TstSmpTransferRun::aFailedRequestEndsInTheCodeOfTheRead_data()
{
    QTest::addColumn<QString>("failing");
    for (const char *call : {"bulkStop", "startDevice", "bulkStart", "stopDevice"}) {
        QTest::newRow(call) << QString::fromLatin1(call);
    }
}

void TstSmpTransferRun::aFailedRequestEndsInTheCodeOfTheRead()
{
    QFETCH(QString, failing);
    for (const int answer : {SmpDevice::notOpen, SmpDevice::transferFailed}) {
        PulseDesk desk(4, 6400, 900);
        desk.settings.depth = 20000;
        desk.device.failing = failing;
        desk.device.answer = answer;
        desk.bulk.answer = SmpTransport::runFailed;
        desk.bulk.stream.clear(); // nothing comes
        desk.startStreaming();
        QVERIFY(desk.runToEnd());
        QCOMPARE(desk.last(), (State{1, 3, 0}));
        QCOMPARE(desk.published, 0);
        QCOMPARE(desk.leak(), std::int64_t(0));
    }
}

void TstSmpTransferRun::aSpentBudgetInTheConverterIsReportedAndStopsTheDevice()
{
    CaptureDesk desk(16);
    Samples samples(16 * 60000);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = i % 2 == 0 ? 0x5555 : 0xAAAA;
    }
    desk.settings.depth = std::int64_t(samples.size());
    desk.bulk.stream = smpStreams::sliced(samples, naiveTrigger::firstChns(16));
    desk.bulk.chunkSize = 1 << 12;
    constexpr std::int64_t budget = 5 << 20; // spent in the midst of the leaves
    memBudget = budget;
    desk.startStreaming();
    QVERIFY(desk.runToEnd());
    QCOMPARE(desk.last().err, 4);
    QCOMPARE(desk.published, 1);
    QVERIFY(desk.smpData->complete());
    QVERIFY(desk.smpData->smpCount() > 0);
    QVERIFY(desk.smpData->smpCount() < desk.settings.depth);
    QVERIFY(desk.bulk.delivered < desk.bulk.stream.size()); // the device was stopped, long before the depth
    desk.smpData->clear();
    QCOMPARE(memBudget.load(), budget);
}

void TstSmpTransferRun::aHeapThatRefusesTheConverterABlockStopsTheDevice()
{
    // Receive buffers are still to be had, so that only the converter can end the stream.
    PulseDesk desk(4, 640000, 20);
    desk.settings.depth = 6000000; // more than the stream holds
    desk.bulk.sizes = {256};
    blockRefusal = [](std::size_t size) { return size == sizeof(SmpEdgeLeaf); };
    desk.startStreaming();
    const bool ended = desk.runToEnd();
    blockRefusal = nullptr;
    QVERIFY(ended);
    QCOMPARE(desk.last().err, 4);
    QVERIFY(desk.bulk.delivered < desk.bulk.stream.size());
    QCOMPARE(desk.leak(), std::int64_t(0));
}

void TstSmpTransferRun::aSpentBudgetInTheTransportIsReported()
{
    PulseDesk desk(4, 64000, 64000);
    desk.settings.depth = 60000;
    desk.settings.preTrig = 50000; // 25,000 bytes, more than the budget
    desk.bulk.chunkSize = 1024;
    const std::int64_t budget = std::int64_t(sizeof(SmpEdgeRoot)) * 4 + 16 * 1024;
    memBudget = budget;
    desk.startStreaming();
    QVERIFY(desk.runToEnd());
    QCOMPARE(desk.last(), (State{1, 4, 0}));
    QCOMPARE(desk.published, 1);
    QVERIFY(desk.smpData->smpCount() > 0);
    desk.smpData->clear();
    QCOMPARE(memBudget.load(), budget);
}

void TstSmpTransferRun::anAbortPublishesNothing()
{
    for (const std::size_t pulse : {900, 64000}) {
        PulseDesk desk(4, 64000, pulse);
        desk.settings.depth = 60000;
        desk.bulk.beforeBuffer = [&](int buffer) {
            if (buffer == 4) {
                desk.smpAbort = true;
                desk.stop();
            }
        };
        desk.startStreaming();
        QVERIFY(desk.runToEnd());
        QCOMPARE(desk.published, 0);
        QCOMPARE(desk.last(), (State{5, 0, 0}));
        QCOMPARE(desk.smpBufs.count(), 0);
        QCOMPARE(desk.leak(), std::int64_t(0));
    }
}

void TstSmpTransferRun::anAbortBeforeTheFirstReadBreaksTheStreamOff()
{
    PulseDesk desk(4, 64000, 900);
    desk.bulk.device = nullptr; // which does not hear that it is to stop
    desk.device.onCall = [&](const QString &call) {
        if (call == QStringLiteral("bulkStop")) {
            desk.smpAbort = true;
            desk.smpStop = true;
            desk.bulk.breakOffStream();
        }
    };
    desk.startStreaming();
    QVERIFY(desk.runToEnd());
    QCOMPARE(desk.bulk.delivered, std::size_t(0));
    QCOMPARE(desk.last(), (State{5, 0, 0}));
    QCOMPARE(desk.published, 0);
    QCOMPARE(desk.leak(), std::int64_t(0));
}

void TstSmpTransferRun::theNextCaptureMayStartAsTheLastOneIsPublished()
{
    PulseDesk desk(4, 64000, 900);
    int rounds = 0;
    desk.onState = [&](const State &state) {
        if (state.sta == 5 && rounds < 30) {
            ++rounds;
            QVERIFY(!desk.smpBusy);
            desk.startStreaming();
        }
    };
    desk.startStreaming();
    QVERIFY(QTest::qWaitFor([&] { return rounds == 30 && !desk.smpBusy; }, 30000));
    QVERIFY(desk.runToEnd());
    QCOMPARE(desk.last(), (State{5, 0, 0}));
    QVERIFY(holds(*desk.smpData, desk.samples, 896, desk.settings.depth, desk.used));
}

void TstSmpTransferRun::whatALastRunLeftIsCleared()
{
    PulseDesk desk(4, 64000, 900);
    desk.smpBufs.append(SmpChunk::take(100), 100);
    desk.smpSem.release(3);
    desk.endErr = 14;
    desk.startStreaming();
    QVERIFY(desk.runToEnd());
    QCOMPARE(desk.last(), (State{5, 0, 0}));
    QVERIFY(holds(*desk.smpData, desk.samples, 896, desk.settings.depth, desk.used));
    QCOMPARE(desk.leak(), std::int64_t(0));
}

void TstSmpTransferRun::withoutAnyChannelTheRunEndsWithoutData()
{
    CaptureDesk desk(16);
    desk.settings.enable.assign(16, 0);
    desk.bulk.stream.assign(50000, 0x55);
    desk.startStreaming();
    QVERIFY(desk.runToEnd());
    QCOMPARE(desk.last(), (State{5, 0, 0}));
    QCOMPARE(desk.published, 0);
    QCOMPARE(desk.leak(), std::int64_t(0));
}

void TstSmpTransferRun::aStreamOfNothingIsLeftUnpublished()
{
    PulseDesk desk(4, 64000, 900);
    desk.bulk.stream.clear();
    desk.startStreaming();
    QVERIFY(desk.runToEnd());
    QCOMPARE(desk.last(), (State{1, 14, 0}));
    QCOMPARE(desk.published, 0);
    QVERIFY(!desk.smpData->complete());
}

QTEST_GUILESS_MAIN(TstSmpTransferRun)
#include "tst_SmpTransferRun.moc"
