// Whole captures of a device with memory: from the start over the poll to the closed store.

#include "CaptureDesk.h"
#include "store/Captures.h"
#include "store/NaiveTrigger.h"
#include "store/SmpLease.h"
#include "store/SmpStreams.h"

#include <QElapsedTimer>

#include <memory>
#include <thread>

using naiveTrigger::Random;
using smpStreams::Bytes;
using smpStreams::Record;

namespace {

constexpr std::uint16_t starts = 0x00C1; ///< neither triggered nor waiting
constexpr std::uint16_t waits = 0x00C9;
constexpr std::uint16_t fills = 0x00C6; ///< triggered, still running
constexpr std::uint16_t ended = 0x00C5;

std::vector<Record> randomRecords(std::size_t count, std::uint32_t channels, Random &random)
{
    std::vector<Record> records;
    std::uint32_t word = random();
    for (std::size_t i = 0; i < count; ++i) {
        word ^= random() % 3 == 0 ? std::uint32_t(1) << random() % channels : 0;
        const std::uint32_t mask = channels == 32 ? 0xFFFFFFFF : (std::uint32_t(1) << channels) - 1;
        records.push_back({word & mask, std::uint8_t(1 + random() % 255)});
    }
    return records;
}

/// The transitions of a channel and the end mark.
captures::Positions edgesOf(const std::vector<Record> &records, int chn, std::int64_t depth)
{
    captures::Positions edges;
    std::int64_t pos = 0;
    for (std::size_t i = 0; i < records.size(); ++i) {
        if (i > 0 && ((records[i].word ^ records[i - 1].word) >> chn & 1) != 0 && pos < depth) {
            edges.push_back(pos);
        }
        pos += records[i].count;
    }
    edges.push_back(std::min(pos, depth));
    return edges;
}

std::int64_t samplesOf(const std::vector<Record> &records, std::size_t count)
{
    std::int64_t samples = 0;
    for (std::size_t i = 0; i < count; ++i) {
        samples += records[i].count;
    }
    return samples;
}

/// A device of 16 or 32 channels whose ring holds records.
class RingDesk : public CaptureDesk {
public:
    explicit RingDesk(std::size_t count, int chns = 16) : CaptureDesk(chns)
    {
        Random random(int(count) + chns);
        fill(randomRecords(count, std::uint32_t(chns), random));
        settings.memSize = 1 << 20;
        settings.depth = 1'000'000'000; // more than any ring holds, and the first question comes at once
        device.info.trgRecord = std::uint32_t(count / 3);
    }
    void fill(const std::vector<Record> &list)
    {
        records = list;
        bulk.stream = smpData->chnCount == 32 ? smpStreams::rle32(records) : smpStreams::rle16(records);
        device.info.recordCount = std::uint32_t(records.size());
        device.info.endAddress = std::uint32_t(bulk.stream.size()) + 64;
    }
    [[nodiscard]] bool holdsAll() const
    {
        for (int chn = 0; chn < smpData->chnCount; ++chn) {
            if (captures::entries(*smpData, chn) != edgesOf(records, chn, settings.depth)) {
                return false;
            }
        }
        return smpData->complete();
    }
    [[nodiscard]] bool run()
    {
        startStorage();
        return runToEnd();
    }

    std::vector<Record> records;
};

} // namespace

class TstSmpStorageRun : public QObject {
    Q_OBJECT
private slots:
    void theRingComesBackEdgeForEdge_data();
    void theRingComesBackEdgeForEdge();
    void theTriggerStandsAtTheEndOfItsRecord();
    void theLastCaptureIsReadOnUntilTheRecordsCome();
    void aReadBackThatIsGivenUpKeepsTheLastCapture();
    void channelsThatAreOffHaveNoData();
    void aStreamLongerThanTheDepthIsCut();
    void buffersMayCutAGroup_data();
    void buffersMayCutAGroup();
    void mixedSignalsComeBackWhateverTheBuffers_data();
    void mixedSignalsComeBackWhateverTheBuffers();
    void thePollShowsHowFarTheDeviceIs();
    void aVeryShortCaptureDividesByFiftyMilliseconds();
    void theEndOfACaptureIsAskedForAsSoonAsItIsDue();
    void theWaitForATriggerShowsNoProgress();
    void theReadBackShowsItsShare();
    void theWindowOfARing_data();
    void theWindowOfARing();
    void anAnswerOutsideTheMemoryIsAFailure_data();
    void anAnswerOutsideTheMemoryIsAFailure();
    void tooFewRecordsForAGroupStillReadWithoutAShare();

    void aStopEndsThePollAtOnce_data();
    void aStopEndsThePollAtOnce();
    void aStopBeforeTheStartStopsTheDeviceAgain();
    void aStopBeforeTheTriggerLeavesNone();
    void aReadBackThatIsBrokenOffBeforeItBeginsReadsNothing_data();
    void aReadBackThatIsBrokenOffBeforeItBeginsReadsNothing();

    void aFailedRequestEndsInItsCode_data();
    void aFailedRequestEndsInItsCode();
    void aBadStatusEndsThePollWithTheWord_data();
    void aBadStatusEndsThePollWithTheWord();
    void aDeviceThatGoesDuringThePollIsNotReadBack();
    void anUnplugAtEachBufferKeepsWhatHasCome_data();
    void anUnplugAtEachBufferKeepsWhatHasCome();
    void aReadBackThatEndsEarlyIsReported();
    void aReadBackThatBringsTooMuchIsReported();
    void aSpentBudgetIsReportedAndStopsTheDevice();
    void aBudgetSpentByTheTransportIsReported();
    void malformedRecordsAreToldAndKept_data();
    void malformedRecordsAreToldAndKept();
    void anAbortPublishesNothing_data();
    void anAbortPublishesNothing();
    void aFailureLeavesTheLastCaptureInView();
    void theNextCaptureMayStartAsTheLastOneIsPublished();
    void whatALastRunLeftIsCleared();
};

void TstSmpStorageRun::theRingComesBackEdgeForEdge_data()
{
    QTest::addColumn<int>("chns");
    QTest::addColumn<int>("records");
    for (const int chns : {8, 16, 32}) {
        for (const int records : {30, 6000, 30000}) {
            QTest::addRow("%d channels, %d records", chns, records) << chns << records;
        }
    }
}

void TstSmpStorageRun::theRingComesBackEdgeForEdge()
{
    QFETCH(int, chns);
    QFETCH(int, records);
    RingDesk desk(std::size_t(records), chns);
    desk.bulk.chunkSize = 4096;
    QVERIFY(desk.run());
    QVERIFY(desk.holdsAll());
    QCOMPARE(desk.last(), (State{5, 0, 0}));
    QCOMPARE(desk.published, 1);
    QCOMPARE(desk.smpData->smpCount(), samplesOf(desk.records, desk.records.size()));
    QCOMPARE(desk.device.size, std::uint32_t(desk.bulk.stream.size()));
    QCOMPARE(desk.device.address, 64U);
    QCOMPARE(desk.bulk.limit, std::int32_t(desk.bulk.stream.size()));
    QCOMPARE(desk.readSize.load(), std::int32_t(desk.bulk.stream.size()));
    QCOMPARE(desk.device.calls(), QStringList({QStringLiteral("startDevice"), QStringLiteral("readStatus"),
                                               QStringLiteral("readCaptureInfo"), QStringLiteral("setReadWindow")}));
    QCOMPARE(desk.leak(), std::int64_t(0));
}

void TstSmpStorageRun::theLastCaptureIsReadOnUntilTheRecordsCome()
{
    RingDesk desk(600);
    captures::close(*desk.smpData, {{5}}, 10);
    auto lease = std::make_unique<SmpLease>(desk.smpData.get());
    bool undisturbed = false;
    desk.device.onCall = [&](const QString &call) {
        if (call == QLatin1String("readCaptureInfo")) {
            undisturbed = !lease->writerWaits();
        }
    };
    desk.startStorage();
    while (!lease->writerWaits()) {
        std::this_thread::yield();
    }
    desk.smpStop = true; // which asks for what there is, and is no reason not to wait
    lease.reset();
    QVERIFY(desk.runToEnd());
    QVERIFY(undisturbed);
    QCOMPARE(desk.last(), (State{5, 0, 0}));
    QVERIFY(desk.holdsAll());
}

void TstSmpStorageRun::aReadBackThatIsGivenUpKeepsTheLastCapture()
{
    RingDesk desk(600);
    captures::close(*desk.smpData, {{5}}, 10);
    const SmpLease lease(desk.smpData.get());
    desk.smpCut = true;
    desk.startStorage();
    desk.stop();
    QVERIFY(desk.runToEnd());
    QCOMPARE(desk.last(), (State{5, 0, 0}));
    QCOMPARE(desk.published, 1);
    QCOMPARE(desk.smpData->sampleCount(), std::int64_t(10));
}

void TstSmpStorageRun::theTriggerStandsAtTheEndOfItsRecord()
{
    RingDesk desk(3000);
    desk.device.info.trgRecord = 1001;
    QVERIFY(desk.run());
    QCOMPARE(desk.smpData->trgPos(), samplesOf(desk.records, 1001));
}

void TstSmpStorageRun::channelsThatAreOffHaveNoData()
{
    RingDesk desk(3000);
    desk.settings.enable.assign(16, 0);
    desk.settings.enable[7] = 1;
    QVERIFY(desk.run());
    QCOMPARE(captures::entries(*desk.smpData, 7), edgesOf(desk.records, 7, desk.settings.depth));
    QCOMPARE(desk.smpData->entryCount(6), std::int64_t(0));
}

void TstSmpStorageRun::aStreamLongerThanTheDepthIsCut()
{
    RingDesk desk(3000);
    desk.settings.depth = 20000;
    QVERIFY(desk.run());
    QCOMPARE(desk.smpData->smpCount(), std::int64_t(20000));
    QVERIFY(desk.holdsAll());
}

void TstSmpStorageRun::buffersMayCutAGroup_data()
{
    QTest::addColumn<int>("chns");
    QTest::addRow("16 channels") << 16;
    QTest::addRow("32 channels") << 32;
}

void TstSmpStorageRun::buffersMayCutAGroup()
{
    QFETCH(int, chns);
    Random random(chns);
    for (int round = 0; round < 20; ++round) {
        RingDesk desk(3000, chns);
        desk.bulk.sizes.clear();
        for (int i = 0; i < 50; ++i) {
            desk.bulk.sizes.push_back(std::int32_t(1 + random() % (round < 10 ? 40 : 700)));
        }
        QVERIFY(desk.run());
        QVERIFY(desk.holdsAll());
        QCOMPARE(desk.last(), (State{5, 0, 0}));
        QCOMPARE(desk.smpData->trgPos(), samplesOf(desk.records, 1000));
    }
}

void TstSmpStorageRun::mixedSignalsComeBackWhateverTheBuffers_data()
{
    QTest::addColumn<int>("buffer");
    for (const int buffer : {32768, 16384, 10000, 1001}) {
        QTest::addRow("buffers of %d bytes", buffer) << buffer;
    }
}

void TstSmpStorageRun::mixedSignalsComeBackWhateverTheBuffers()
{
    QFETCH(int, buffer);
    CaptureDesk desk(16, 2);
    desk.settings.memSize = 32768;
    desk.settings.depth = 8000;
    for (int i = 0; i < 8192; ++i) {
        const auto digital = std::uint16_t(i / 100);
        desk.bulk.stream.insert(desk.bulk.stream.end(), {std::uint8_t(i), std::uint8_t(i * 3), std::uint8_t(digital),
                                                         std::uint8_t(digital >> 8)});
    }
    desk.bulk.sizes = {buffer};
    desk.device.info = {0xFFFFFFFF, 77, 400}; // neither of the first two means anything here
    desk.startStorage();
    QVERIFY(desk.runToEnd());
    QCOMPARE(desk.last(), (State{5, 0, 0}));
    QCOMPARE(desk.device.size, 32768U);
    QCOMPARE(desk.device.address, 400U);
    QCOMPARE(desk.smpData->smpCount(), std::int64_t(8000));
    QCOMPARE(desk.smpData->trgPos(), std::int64_t(0));
    QCOMPARE(desk.smpData->nextEdge(0, 0), std::int64_t(100));
    QCOMPARE(desk.smpData->edgeCount(0, 0, 7999), std::int64_t(79));
    for (int i = 0; i < 8192; ++i) {
        QCOMPARE(desk.smpData->aChnBufs()[0]->samples[i], std::int8_t(i));
        QCOMPARE(desk.smpData->aChnBufs()[1]->samples[i], std::int8_t(i * 3));
    }
}

void TstSmpStorageRun::thePollShowsHowFarTheDeviceIs()
{
    RingDesk desk(300);
    desk.settings.depth = 10000000;
    desk.settings.frequency = 20000000; // 500 ms
    desk.settings.trgPosition = 33;
    desk.device.answerStatuses({starts, starts, waits, waits, fills, fills, ended});
    QVERIFY(desk.run());
    QCOMPARE(
        desk.states.mid(0, 8),
        (QVector<State>{{0, 0, 0}, {1, 0, 0}, {1, 0, 10}, {2, 0, 33}, {2, 0, 33}, {3, 0, 20}, {3, 0, 30}, {4, 0, 0}}));
    QCOMPARE(desk.last(), (State{5, 0, 0}));
}

void TstSmpStorageRun::aVeryShortCaptureDividesByFiftyMilliseconds()
{
    RingDesk desk(300);
    desk.settings.depth = 20000;
    desk.settings.frequency = 500000000;
    desk.device.answerStatuses({starts, starts, fills, ended});
    QVERIFY(desk.run());
    QCOMPARE(desk.states.mid(0, 4), (QVector<State>{{0, 0, 0}, {1, 0, 0}, {1, 0, 100}, {3, 0, 200}}));
}

void TstSmpStorageRun::theEndOfACaptureIsAskedForAsSoonAsItIsDue()
{
    QCOMPARE(SmpCtrlStorage::dueMs(8000, 10'000'000), std::int64_t(0));
    QCOMPARE(SmpCtrlStorage::dueMs(8000, 1'000'000), std::int64_t(8));
    QCOMPARE(SmpCtrlStorage::dueMs(10'000'000'000, 20'000), std::int64_t(500'000'000));
    QCOMPARE(SmpCtrlStorage::dueMs(8000, 0), std::int64_t(8'000'000));
    QCOMPARE(SmpCtrlStorage::firstPollMs(0), 2);
    QCOMPARE(SmpCtrlStorage::firstPollMs(8), 10);
    QCOMPARE(SmpCtrlStorage::firstPollMs(80), 32);
    constexpr std::int64_t interval = 50;
    for (std::int64_t due = 0; due < 500; ++due) {
        // `due` is cut: the capture may last until the next millisecond.
        std::int64_t question = SmpCtrlStorage::firstPollMs(due);
        while (question <= due) {
            question += interval;
        }
        QCOMPARE(question, due + 2);
    }
}

void TstSmpStorageRun::theWaitForATriggerShowsNoProgress()
{
    RingDesk desk(300);
    desk.device.answerStatuses({waits, waits, waits, waits, fills, ended});
    QVERIFY(desk.run());
    QCOMPARE(desk.states.at(5), (State{3, 0, 0}));
}

void TstSmpStorageRun::theReadBackShowsItsShare()
{
    RingDesk desk(1000); // 3200 bytes
    desk.bulk.sizes = {800};
    QVERIFY(desk.run());
    QCOMPARE(desk.states,
             (QVector<State>{{0, 0, 0}, {4, 0, 0}, {4, 0, 25}, {4, 0, 50}, {4, 0, 75}, {4, 0, 100}, {5, 0, 0}}));
}

void TstSmpStorageRun::theWindowOfARing_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<quint32>("records");
    QTest::addColumn<quint32>("end");
    QTest::addColumn<int>("memSize");
    QTest::addColumn<qint64>("address");
    QTest::addColumn<int>("size");
    const int rle16 = int(SmpRecordFormat::Rle16);
    const int rle32 = int(SmpRecordFormat::Rle32);
    const int mixed = int(SmpRecordFormat::Mixed16);
    QTest::newRow("whole groups only") << rle16 << 14U << 1000U << 4096 << qint64(968) << 32;
    QTest::newRow("none") << rle16 << 4U << 1000U << 4096 << qint64(1000) << 0;
    QTest::newRow("of six records") << rle32 << 14U << 1000U << 4096 << qint64(936) << 64;
    QTest::newRow("it wraps") << rle16 << 100U << 16U << 4096 << qint64(16 - 320 + 4096) << 320;
    QTest::newRow("it ends with the memory") << rle16 << 10U << 4096U << 4096 << qint64(4064) << 32;
    QTest::newRow("it is the memory") << rle16 << 1280U << 48U << 4096 << qint64(48) << 4096;
    QTest::newRow("analog: all of it") << mixed << 3U << 100U << 32768 << qint64(100) << 32768;
    QTest::newRow("one group too many") << rle16 << 1285U << 48U << 4096 << qint64(-1) << -1;
    QTest::newRow("a count beyond all numbers") << rle16 << 0xFFFFFFFFU << 48U << 4096 << qint64(-1) << -1;
    QTest::newRow("the same of 32 channels") << rle32 << 0xFFFFFFFFU << 48U << 0x20000000 << qint64(-1) << -1;
    QTest::newRow("an end behind the memory") << rle16 << 10U << 4097U << 4096 << qint64(-1) << -1;
    QTest::newRow("an end beyond all numbers") << mixed << 10U << 0x80000000U << 32768 << qint64(-1) << -1;
}

void TstSmpStorageRun::theWindowOfARing()
{
    QFETCH(int, format);
    QFETCH(quint32, records);
    QFETCH(quint32, end);
    QFETCH(int, memSize);
    QFETCH(qint64, address);
    QFETCH(int, size);
    const auto window = SmpCtrlStorage::windowOf({records, 0, end}, SmpRecordFormat(format), memSize);
    QCOMPARE(window.has_value(), size >= 0);
    if (window) {
        QCOMPARE(qint64(window->address), address);
        QCOMPARE(window->size, size);
    }
}

void TstSmpStorageRun::anAnswerOutsideTheMemoryIsAFailure_data()
{
    QTest::addColumn<quint32>("records");
    QTest::addColumn<quint32>("end");
    QTest::newRow("too many records") << 0xFFFFFFFFU << 64U;
    QTest::newRow("an end outside") << 100U << 0xFFFFFFF0U;
}

void TstSmpStorageRun::anAnswerOutsideTheMemoryIsAFailure()
{
    QFETCH(quint32, records);
    QFETCH(quint32, end);
    RingDesk desk(300);
    desk.device.info = {records, 1, end};
    QVERIFY(desk.run());
    QCOMPARE(desk.last(), (State{4, 2, 0}));
    QCOMPARE(desk.published, 0);
    QVERIFY(!desk.device.calls().contains(QStringLiteral("setReadWindow")));
}

void TstSmpStorageRun::tooFewRecordsForAGroupStillReadWithoutAShare()
{
    RingDesk desk(30);
    desk.device.info.recordCount = 4;
    desk.bulk.stream.clear();
    QVERIFY(desk.run());
    QVERIFY(desk.device.calls().contains(QStringLiteral("setReadWindow")));
    QCOMPARE(desk.device.size, 0U);
    QCOMPARE(desk.bulk.limit, 0);
    QCOMPARE(desk.states, (QVector<State>{{0, 0, 0}, {4, 0, 0}, {5, 0, 0}}));
    QCOMPARE(desk.published, 0);
    // A device that sends something all the same.
    desk.bulk.stream.assign(64, 0x11);
    desk.bulk.sizes = {32};
    QVERIFY(desk.run());
    QCOMPARE(desk.states, (QVector<State>{{0, 0, 0}, {4, 0, 0}, {4, 0, 0}, {4, 0, 0}, {4, 14, 0}}));
    QCOMPARE(desk.published, 1);
}

// ---- stops ---------------------------------------------------------------------------------------------------------

void TstSmpStorageRun::aStopEndsThePollAtOnce_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("sta");
    QTest::newRow("filling") << int(starts) << 1;
    QTest::newRow("waiting") << int(waits) << 2;
    QTest::newRow("sampling") << int(fills) << 3;
}

void TstSmpStorageRun::aStopEndsThePollAtOnce()
{
    QFETCH(int, status);
    QFETCH(int, sta);
    RingDesk desk(300);
    desk.device.answerStatuses({std::uint16_t(status)});
    desk.bulk.device = nullptr; // which reads its memory back although it is stopped
    desk.startStorage();
    QTRY_VERIFY(!desk.states.isEmpty() && desk.last().sta == sta);
    desk.stop();
    QVERIFY(desk.runToEnd());
    QCOMPARE(desk.last(), (State{5, 0, 0}));
    QVERIFY(desk.holdsAll());
    QCOMPARE(desk.published, 1);
}

void TstSmpStorageRun::aStopBeforeTheStartStopsTheDeviceAgain()
{
    RingDesk desk(300);
    desk.bulk.device = nullptr;
    desk.device.onCall = [&](const QString &call) {
        if (call == QStringLiteral("startDevice")) {
            desk.smpStop = true;
        }
    };
    QVERIFY(desk.run());
    QCOMPARE(desk.device.calls().mid(0, 3), QStringList({QStringLiteral("startDevice"), QStringLiteral("stopDevice"),
                                                         QStringLiteral("readCaptureInfo")}));
    QVERIFY(desk.holdsAll());
}

void TstSmpStorageRun::aStopBeforeTheTriggerLeavesNone()
{
    RingDesk desk(300);
    desk.device.info.trgRecord = 0;
    desk.device.answerStatuses({waits});
    desk.bulk.device = nullptr;
    desk.device.onCall = [&](const QString &call) { desk.smpStop = call == QStringLiteral("readStatus"); };
    QVERIFY(desk.run());
    QCOMPARE(desk.smpData->trgPos(), std::int64_t(0));
    QVERIFY(desk.holdsAll());
}

void TstSmpStorageRun::aReadBackThatIsBrokenOffBeforeItBeginsReadsNothing_data()
{
    QTest::addColumn<bool>("aborts");
    QTest::newRow("by a stop") << false;
    QTest::newRow("by the end of the device object") << true;
}

void TstSmpStorageRun::aReadBackThatIsBrokenOffBeforeItBeginsReadsNothing()
{
    QFETCH(bool, aborts);
    RingDesk desk(3000);
    desk.device.onCall = [&](const QString &call) {
        if (call == QStringLiteral("setReadWindow")) {
            (aborts ? desk.smpAbort : desk.smpCut) = true;
            desk.bulk.breakOffStream();
        }
    };
    QVERIFY(desk.run());
    QCOMPARE(desk.bulk.delivered, std::size_t(0));
    QCOMPARE(desk.last(), (State{5, 0, 0}));
    QCOMPARE(desk.published, 0);
    QCOMPARE(desk.leak(), std::int64_t(0));
}

// ---- failures ------------------------------------------------------------------------------------------------------

void TstSmpStorageRun::aFailedRequestEndsInItsCode_data()
{
    QTest::addColumn<QString>("failing");
    QTest::addColumn<int>("call");
    QTest::addColumn<int>("answer");
    QTest::addColumn<int>("sta");
    QTest::addColumn<int>("error");
    for (const int answer : {1, 2}) {
        QTest::addRow("start, %d", answer) << QStringLiteral("startDevice") << 0 << answer << 0 << answer;
        QTest::addRow("first poll, %d", answer) << QStringLiteral("readStatus") << 0 << answer << 0 << answer;
        QTest::addRow("third poll, %d", answer) << QStringLiteral("readStatus") << 2 << answer << 2 << answer;
        QTest::addRow("info, %d", answer) << QStringLiteral("readCaptureInfo") << 0 << answer << 4 << 2;
        QTest::addRow("window, %d", answer) << QStringLiteral("setReadWindow") << 0 << answer << 4 << answer;
    }
}

void TstSmpStorageRun::aFailedRequestEndsInItsCode()
{
    QFETCH(QString, failing);
    QFETCH(int, call);
    QFETCH(int, answer);
    RingDesk desk(300);
    desk.device.answerStatuses({starts, waits, fills, ended});
    desk.device.failing = failing;
    desk.device.failingCall = call;
    desk.device.answer = answer;
    QVERIFY(desk.run());
    QTEST(desk.last().sta, "sta");
    QTEST(desk.last().err, "error");
    QCOMPARE(desk.last().value, 0);
    QCOMPARE(desk.published, 0);
    QCOMPARE(desk.leak(), std::int64_t(0));
    desk.device.failing.clear(); // the next one works
    QVERIFY(desk.run());
    QVERIFY(desk.holdsAll());
}

void TstSmpStorageRun::aBadStatusEndsThePollWithTheWord_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("error");
    QTest::newRow("no bus") << 0xFFFF << 7;
    QTest::newRow("all zero") << 0x0000 << 8;
    QTest::newRow("not running") << 0x00C3 << 9;
    QTest::newRow("bits missing") << 0x0041 << 10;
    QTest::newRow("a fault") << 0x00D1 << 13;
}

void TstSmpStorageRun::aBadStatusEndsThePollWithTheWord()
{
    QFETCH(int, status);
    QFETCH(int, error);
    RingDesk desk(300);
    desk.device.answerStatuses({waits, std::uint16_t(status)});
    QVERIFY(desk.run());
    QCOMPARE(desk.last(), (State{2, error, status}));
    QCOMPARE(desk.published, 0);
}

void TstSmpStorageRun::aDeviceThatGoesDuringThePollIsNotReadBack()
{
    RingDesk desk(300);
    desk.device.answerStatuses({waits, ended});
    desk.bulk.open = false;
    QVERIFY(desk.run());
    QCOMPARE(desk.last(), (State{4, 1, 0}));
    QVERIFY(!desk.device.calls().contains(QStringLiteral("readCaptureInfo")));
}

void TstSmpStorageRun::anUnplugAtEachBufferKeepsWhatHasCome_data()
{
    QTest::addColumn<int>("buffer");
    for (int buffer = 0; buffer < 5; ++buffer) {
        QTest::addRow("before buffer %d", buffer) << buffer;
    }
}

void TstSmpStorageRun::anUnplugAtEachBufferKeepsWhatHasCome()
{
    QFETCH(int, buffer);
    RingDesk desk(1000);
    const std::vector<Record> all = desk.records;
    desk.bulk.sizes = {640}; // 40 groups, 200 records; five buffers
    desk.bulk.maxBuffers = buffer;
    QVERIFY(desk.run());
    QCOMPARE(desk.last(), (State{4, 3, 0}));
    QCOMPARE(desk.published, buffer > 0 ? 1 : 0);
    QCOMPARE(desk.smpData->smpCount(), samplesOf(all, std::size_t(buffer) * 200));
    QCOMPARE(desk.leak(), std::int64_t(0));
    desk.bulk.maxBuffers = -1;
    QVERIFY(desk.run());
    QVERIFY(desk.holdsAll());
}

void TstSmpStorageRun::aReadBackThatEndsEarlyIsReported()
{
    for (const std::size_t missing : {1, 16, 1000}) {
        RingDesk desk(1000);
        desk.bulk.stream.resize(desk.bulk.stream.size() - missing);
        desk.bulk.sizes = {641};
        QVERIFY(desk.run());
        QCOMPARE(desk.last(), (State{4, 14, 0}));
        QCOMPARE(desk.published, 1);
        QCOMPARE(desk.smpData->smpCount(), samplesOf(desk.records, desk.bulk.stream.size() / 16 * 5));
        QCOMPARE(desk.leak(), std::int64_t(0));
    }
}

void TstSmpStorageRun::aReadBackThatBringsTooMuchIsReported()
{
    RingDesk desk(1000);
    desk.device.info.recordCount = 500;
    QVERIFY(desk.run());
    QCOMPARE(desk.last(), (State{4, 14, 0}));
    QCOMPARE(desk.published, 1);
}

void TstSmpStorageRun::aSpentBudgetIsReportedAndStopsTheDevice()
{
    RingDesk desk(10);
    std::vector<Record> records(400000, {0, 1});
    for (std::size_t i = 0; i < records.size(); i += 2) {
        records[i].word = 0xFFFF;
    }
    desk.fill(records);
    desk.settings.memSize = 1 << 24;
    desk.bulk.chunkSize = 1 << 12;
    constexpr std::int64_t budget = 6 << 20;
    memBudget = budget;
    QVERIFY(desk.run());
    QCOMPARE(desk.last(), (State{4, 4, 0}));
    QCOMPARE(desk.device.calls().count(QStringLiteral("stopDevice")), 1);
    QCOMPARE(desk.published, 1);
    QVERIFY(desk.smpData->smpCount() > 0 && desk.smpData->smpCount() < 400000);
    QCOMPARE(captures::entries(*desk.smpData, 15).back(), desk.smpData->smpCount());
    desk.smpData->clear();
    QCOMPARE(memBudget.load(), budget);
}

void TstSmpStorageRun::aBudgetSpentByTheTransportIsReported()
{
    RingDesk desk(1000);
    memBudget = 16 * std::int64_t(sizeof(SmpEdgeRoot)); // the roots take all
    QVERIFY(desk.run());
    QCOMPARE(desk.last(), (State{4, 4, 0}));
    QCOMPARE(desk.published, 0);
    desk.smpData->clear();
    QCOMPARE(memBudget.load(), 16 * std::int64_t(sizeof(SmpEdgeRoot)));
}

void TstSmpStorageRun::malformedRecordsAreToldAndKept_data()
{
    QTest::addColumn<int>("chns");
    QTest::addColumn<int>("at");
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("told");
    QTest::newRow("a count of 0") << 16 << 320 + 3 * 2 + 2 << 0 << 320 + 6;
    QTest::newRow("a count of 0, 32 channels") << 32 << 320 + 5 * 2 + 4 << 0 << 320 + 10;
    QTest::newRow("wrong check bytes") << 32 << 320 + 30 << 0x55 << 320 + 30;
}

void TstSmpStorageRun::malformedRecordsAreToldAndKept()
{
    QFETCH(int, chns);
    QFETCH(int, at);
    QFETCH(int, value);
    QFETCH(int, told);
    RingDesk desk(600, chns);
    desk.bulk.stream[std::size_t(at)] = std::uint8_t(value);
    QVERIFY(desk.run());
    QCOMPARE(desk.states.mid(desk.states.size() - 2), (QVector<State>{{4, 32, told}, {5, 0, 0}}));
    QCOMPARE(desk.smpData->zeroSmpCnt(), told);
    QCOMPARE(desk.published, 1);
}

void TstSmpStorageRun::anAbortPublishesNothing_data()
{
    QTest::addColumn<QString>("during");
    QTest::newRow("the poll") << QStringLiteral("readStatus");
    QTest::newRow("the read-back") << QString();
}

void TstSmpStorageRun::anAbortPublishesNothing()
{
    QFETCH(QString, during);
    RingDesk desk(3000);
    const auto abort = [&desk] {
        desk.smpAbort = true;
        desk.stop();
    };
    bool once = false;
    desk.device.onCall = [&](const QString &call) {
        if (call == during && !once) {
            once = true;
            abort();
        }
    };
    desk.bulk.sizes = {400};
    desk.bulk.beforeBuffer = [&](int buffer) {
        if (buffer == 2) {
            abort();
        }
    };
    QVERIFY(desk.run());
    QCOMPARE(desk.published, 0);
    QVERIFY(!desk.smpBusy);
    QCOMPARE(desk.leak(), std::int64_t(0));
}

void TstSmpStorageRun::aFailureLeavesTheLastCaptureInView()
{
    RingDesk desk(300);
    QVERIFY(desk.run());
    desk.device.failing = QStringLiteral("readCaptureInfo");
    QVERIFY(desk.run());
    QCOMPARE(desk.last(), (State{4, 2, 0}));
    QVERIFY(desk.holdsAll());
}

void TstSmpStorageRun::theNextCaptureMayStartAsTheLastOneIsPublished()
{
    RingDesk desk(300);
    int rounds = 0;
    desk.onState = [&](const State &state) {
        if (state.sta == 5 && rounds < 30) {
            ++rounds;
            desk.startStorage();
        }
    };
    desk.startStorage();
    QVERIFY(QTest::qWaitFor([&] { return rounds == 30 && !desk.smpBusy; }, 30000));
    QVERIFY(desk.runToEnd());
    QVERIFY(desk.holdsAll());
}

void TstSmpStorageRun::whatALastRunLeftIsCleared()
{
    RingDesk desk(300);
    desk.smpBufs.append(SmpChunk::take(100), 100);
    desk.smpSem.release(3);
    desk.endErr = 14;
    QVERIFY(desk.run());
    QCOMPARE(desk.last(), (State{5, 0, 0}));
    QVERIFY(desk.holdsAll());
    QCOMPARE(desk.leak(), std::int64_t(0));
}

QTEST_GUILESS_MAIN(TstSmpStorageRun)
#include "tst_SmpStorageRun.moc"
