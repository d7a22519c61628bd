#include "runtime/ReaderDesk.h"

#include <QtTest>

#include <stdexcept>

using readerDesk::decode;
using readerDesk::ScriptDecoder;

/// The life of a run: how it starts, and all the ways in which it ends.
class TstAnalyzerRun : public QObject {
    Q_OBJECT
private slots:
    void theDataIsReadAndTheWorkerEndsOnce();
    void aDecoderThatCatchesEverythingMeetsTheEndAgain();
    void anExceptionOfTheDecoderIsToldAsItsText();
    void anExceptionThatIsNoneOfTheStandardsIsToldToo();
    void settingsThatGoNotTogetherFailTheRunWithTheirSentence();
    void aStopIsHeardByALoopThatOnlyReadsLevels();
    void aStopIsHeardByALoopThatOnlyAddsFrames();
    void aStopIsHeardByALoopThatOnlyTakesEdges();
    void aRunCanBeRepeatedOnTheSameInstance();
    void aDecoderThatOverridesRunWorkerItselfEndsTheSameWay();
    void aNewRunDropsTheResultsOfADecoderThatMakesNone();
    void progressRisesToOne();
    void remarksOfTheDecoderAreKept();
    void anEmptyCaptureEndsAtTheFirstRead();
    void theMemoryBudgetEndsTheDecodeAndWhatWasFoundStays();
};

namespace {

std::vector<std::int64_t> dense(std::int64_t count)
{
    std::vector<std::int64_t> edges;
    for (std::int64_t i = 1; i <= count; ++i)
        edges.push_back(i * 2);
    return edges;
}

} // namespace

void TstAnalyzerRun::theDataIsReadAndTheWorkerEndsOnce()
{
    TestCapture capture(2000000, 1000);
    capture.channel(0, false, {1, 2, 3});
    capture.device().trgPos = 17;
    int edges = 0;
    const auto desk = decode(capture, [&edges](ScriptDecoder &decoder) {
        for (;; ++edges)
            decoder.readerOf(0).nextEdge();
    });
    QCOMPARE(edges, 3);
    QCOMPARE(desk->progress.started, 1);
    QCOMPARE(desk->progress.ended, 1);
    QCOMPARE(desk->analyzer->GetDecodeStatus(), DecodeStatus::Complete);
    QCOMPARE(desk->message(), std::string());
    QCOMPARE(desk->results().GetSampleCount(), 1000);
    QCOMPARE(desk->results().GetSampleRate(), 2000000);
    QCOMPARE(desk->results().GetTriggerSample(), 17);
}

void TstAnalyzerRun::aDecoderThatCatchesEverythingMeetsTheEndAgain()
{
    TestCapture capture(1000000, 1000);
    capture.channel(0, false, {1});
    int caught = 0;
    const auto desk = decode(capture, [&caught](ScriptDecoder &decoder) {
        for (int i = 0; i < 5; ++i) {
            try {
                for (;;)
                    decoder.readerOf(0).nextEdge();
            } catch (const std::exception &) {
                QFAIL("the end is no std::exception");
            } catch (...) {
                ++caught;
            }
        }
    });
    QCOMPARE(caught, 5);
    QCOMPARE(desk->analyzer->GetDecodeStatus(), DecodeStatus::Complete);
    QCOMPARE(desk->progress.ended, 1);
}

void TstAnalyzerRun::anExceptionOfTheDecoderIsToldAsItsText()
{
    TestCapture capture(1000000, 1000);
    const auto desk = decode(capture, [](ScriptDecoder &) { throw std::runtime_error("no clock"); });
    QCOMPARE(desk->analyzer->GetDecodeStatus(), DecodeStatus::Failed);
    QCOMPARE(desk->message(), std::string("no clock"));
    QCOMPARE(desk->progress.ended, 1);
    char cut[5];
    QCOMPARE(desk->analyzer->GetDecodeMessage(cut, sizeof cut), std::size_t(8));
    QCOMPARE(std::string(cut), std::string("no c"));
}

void TstAnalyzerRun::anExceptionThatIsNoneOfTheStandardsIsToldToo()
{
    TestCapture capture(1000000, 1000);
    const auto desk = decode(capture, [](ScriptDecoder &) { throw 5; });
    QCOMPARE(desk->analyzer->GetDecodeStatus(), DecodeStatus::Failed);
    QCOMPARE(desk->message(), std::string("The decoder failed."));
}

/// No dialog gives such settings: a stored text that was edited by hand does.
void TstAnalyzerRun::settingsThatGoNotTogetherFailTheRunWithTheirSentence()
{
    TestCapture capture(1000000, 1000);
    capture.channel(0, false, {1});
    int runs = 0;
    DecodeDesk desk(std::make_unique<ScriptDecoder>([&runs](ScriptDecoder & /*decoder*/) { ++runs; }), "a=0,b=0");
    desk.run(capture);
    QCOMPARE(desk.analyzer->GetDecodeStatus(), DecodeStatus::Failed);
    QCOMPARE(desk.message(), std::string("\"A\" and \"B\" must be different channels."));
    QCOMPARE(desk.progress.ended, 1);
    desk.analyzer->GetAnalyzerSettings()->LoadText("b=0");
    desk.run(capture);
    QCOMPARE(desk.analyzer->GetDecodeStatus(), DecodeStatus::Failed);
    QCOMPARE(desk.message(), std::string("Please select a channel for \"A\"."));
    QCOMPARE(runs, 0);
    QCOMPARE(desk.edit({{"a", "0"}, {"b", "none"}}), std::string());
    desk.run(capture);
    QCOMPARE(desk.analyzer->GetDecodeStatus(), DecodeStatus::Complete);
    QCOMPARE(runs, 1);
}

void TstAnalyzerRun::aStopIsHeardByALoopThatOnlyReadsLevels()
{
    TestCapture capture(1000000, 1000);
    capture.channel(0, false, {});
    int reads = 0;
    const auto desk = decode(capture, [&reads](ScriptDecoder &decoder) {
        for (;;) {
            (void)decoder.readerOf(0).levelAt(5);
            if (++reads == 10)
                decoder.StopWorkerThread();
        }
    });
    QCOMPARE(reads, 10);
    QCOMPARE(desk->analyzer->GetDecodeStatus(), DecodeStatus::Stopped);
}

void TstAnalyzerRun::aStopIsHeardByALoopThatOnlyAddsFrames()
{
    TestCapture capture(1000000, 1000);
    int frames = 0;
    const auto desk = decode(capture, [&frames](ScriptDecoder &decoder) {
        for (;; ++frames) {
            decoder.out().add({.firstSample = 5, .lastSample = 6});
            if (frames == 10)
                decoder.StopWorkerThread();
        }
    });
    QCOMPARE(desk->results().GetNumFrames(), std::uint64_t(11));
    QCOMPARE(desk->analyzer->GetDecodeStatus(), DecodeStatus::Stopped);
}

void TstAnalyzerRun::aStopIsHeardByALoopThatOnlyTakesEdges()
{
    constexpr std::int64_t count = 3 * SmpEdgeLeaf::capacity;
    TestCapture capture(1000000, count * 2 + 10);
    capture.channel(0, false, dense(count));
    int edges = 0;
    const auto desk = decode(capture, [&edges](ScriptDecoder &decoder) {
        for (;;) {
            decoder.readerOf(0).nextEdge();
            if (++edges == 10)
                decoder.StopWorkerThread();
        }
    });
    QVERIFY(edges <= SmpEdgeLeaf::capacity); // where it passes on to the next block
    QCOMPARE(desk->analyzer->GetDecodeStatus(), DecodeStatus::Stopped);
}

void TstAnalyzerRun::aRunCanBeRepeatedOnTheSameInstance()
{
    TestCapture capture(1000000, 1000);
    capture.channel(0, false, {1, 2});
    const auto desk = decode(capture, [](ScriptDecoder &decoder) {
        for (;;) {
            const lux::Sample at = decoder.readerOf(0).nextEdge();
            decoder.out().add({.firstSample = at, .lastSample = at});
        }
    });
    desk->analyzer->StopWorkerThread(); // too late: must not reach the next run
    TestCapture other(1000000, 1000);
    other.channel(0, false, {1, 2, 3});
    desk->run(other);
    QCOMPARE(desk->results().GetNumFrames(), std::uint64_t(3));
    QCOMPARE(desk->analyzer->GetDecodeStatus(), DecodeStatus::Complete);
    QCOMPARE(desk->progress.ended, 2);
}

namespace {

/// Written to the plain interface, as a plug-in of others may be.
class PlainAnalyzer final : public Analyzer {
public:
    void RunWorker() override
    {
        lux::ChannelReader &line = GetChannelReader(Channel(0, 0));
        for (;; ++edges)
            line.nextEdge();
    }
    std::uint32_t BuildSimulation(std::int64_t, std::uint32_t, SimulationChannelDescriptor **) override { return 0; }
    std::uint32_t NeededSampleRate() override { return 0; }
    const char *AnalyzerName() const override { return "Plain"; }
    bool NeedsRestart() override { return false; }
    void makeResults() { SetAnalyzerResults(new readerDesk::ScriptResults(m_settings)); }
    int edges = 0;

private:
    readerDesk::ScriptSettings m_settings;
};

} // namespace

void TstAnalyzerRun::aDecoderThatOverridesRunWorkerItselfEndsTheSameWay()
{
    TestCapture capture(1000000, 1000);
    capture.channel(0, false, {1, 2, 3});
    PlainAnalyzer analyzer;
    TestProgress progress;
    analyzer.Init(&capture.device(), nullptr, &progress);
    analyzer.SetupResults();
    analyzer.InitialWorkerThread();
    analyzer.StartProcessing();
    QCOMPARE(analyzer.GetDecodeStatus(), DecodeStatus::Running);
    analyzer.DecodeToEnd();
    QCOMPARE(analyzer.edges, 3);
    QCOMPARE(progress.ended, 1);
    QCOMPARE(analyzer.GetDecodeStatus(), DecodeStatus::Complete);
    AnalyzerResults *results = nullptr;
    QVERIFY(!analyzer.GetAnalyzerResults(&results));
}

void TstAnalyzerRun::aNewRunDropsTheResultsOfADecoderThatMakesNone()
{
    PlainAnalyzer analyzer;
    analyzer.makeResults();
    AnalyzerResults *results = nullptr;
    QVERIFY(analyzer.GetAnalyzerResults(&results) && results != nullptr);
    analyzer.SetupResults();
    QVERIFY(!analyzer.GetAnalyzerResults(&results));
    QVERIFY(results == nullptr);
}

void TstAnalyzerRun::progressRisesToOne()
{
    constexpr std::int64_t count = 10 * SmpEdgeLeaf::capacity;
    TestCapture capture(1000000, count * 2 + 10);
    capture.channel(0, false, dense(count));
    double half = 0;
    DecodeDesk *running = nullptr;
    DecodeDesk desk(std::make_unique<ScriptDecoder>([&](ScriptDecoder &decoder) {
                        for (int i = 0;; ++i) {
                            decoder.readerOf(0).nextEdge();
                            if (i == count / 2 + 1)
                                half = running->progress.progress;
                        }
                    }),
                    "a=0");
    running = &desk;
    desk.run(capture);
    QVERIFY2(half > 0.4 && half < 0.6, std::to_string(half).c_str());
    QCOMPARE(desk.progress.progress, 1.0);
}

void TstAnalyzerRun::remarksOfTheDecoderAreKept()
{
    TestCapture capture(1000000, 1000);
    const auto desk = decode(capture, [](ScriptDecoder &decoder) {
        decoder.tellThat("9600 bits/s were found.");
        decoder.failWith("Then it stopped.");
    });
    QCOMPARE(desk->message(), std::string("9600 bits/s were found.\nThen it stopped."));
    QCOMPARE(desk->analyzer->GetDecodeStatus(), DecodeStatus::Failed);
}

void TstAnalyzerRun::anEmptyCaptureEndsAtTheFirstRead()
{
    TestCapture capture(1000000, 0);
    capture.channel(0, true, {});
    bool read = false;
    const auto desk = decode(capture, [&read](ScriptDecoder &decoder) {
        (void)decoder.readerOf(0).levelAt(0);
        read = true;
    });
    QVERIFY(!read);
    QCOMPARE(desk->analyzer->GetDecodeStatus(), DecodeStatus::Complete);
}

void TstAnalyzerRun::theMemoryBudgetEndsTheDecodeAndWhatWasFoundStays()
{
    constexpr std::int64_t budget = 1000000;
    std::atomic<std::int64_t> left{budget};
    SetAnalyzerMemoryBudget(&left);
    TestCapture capture(1000000, 100000000);
    {
        const auto desk = decode(capture, [](ScriptDecoder &decoder) {
            for (std::int64_t i = 0;; ++i)
                decoder.out().add({.firstSample = i, .lastSample = i});
        });
        QCOMPARE(desk->analyzer->GetDecodeStatus(), DecodeStatus::OutOfMemory);
        QCOMPARE(desk->message(), std::string("Out of memory, the decode ended early."));
        const std::uint64_t found = desk->results().GetNumFrames();
        QVERIFY(found > budget / 48 && found < 2 * budget / 40);
        QVERIFY(left.load() < 1);
        QCOMPARE(desk->results().GetFrame(found - 1).firstSample, std::int64_t(found - 1));
    }
    QCOMPARE(left.load(), budget);
    SetAnalyzerMemoryBudget(nullptr);
}

QTEST_APPLESS_MAIN(TstAnalyzerRun)
#include "tst_AnalyzerRun.moc"
