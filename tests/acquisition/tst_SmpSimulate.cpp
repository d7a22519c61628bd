#include "acquisition/SmpHost.h"
#include "acquisition/SmpSimulate.h"
#include "store/MemBudget.h"
#include "store/SmpData.h"

#include <QRandomGenerator>
#include <QRegularExpression>
#include <QtTest>

#include <atomic>
#include <functional>
#include <limits>
#include <numeric>

namespace {

constexpr std::int64_t ampleMemory = std::int64_t(1) << 40;

struct State {
    int sta;
    int err;
    int value;
    bool operator==(const State &) const = default;
};

/// A host with a store, its simulation, and what the main thread hears of a run.
class Bench : public SmpHost {
public:
    explicit Bench(int chnCount = 16, int aChnCount = 0)
    {
        smpData = std::make_unique<SmpData>(chnCount, aChnCount);
        settings.frequency = 500000000;
        settings.depth = 20000; // one block
        settings.enable.assign(std::size_t(chnCount), 1);
        simulate.setSeed(1);
        connect(this, &SmpHost::sigSmpSta, &listener, [this](int sta, int err, int value) {
            states.append({sta, err, value});
        });
        connect(this, &SmpHost::sigSmpDataReady, &listener, [this] { ++published; });
    }

    /// Runs to the end. @return true when it got there
    bool run(SimulationSource *source = nullptr)
    {
        states.clear();
        published = 0;
        simulate.startRun(settings, source);
        const bool ended = QTest::qWaitFor([this] { return published > 0; }, 60000);
        (void)smpData->complete(); // what admits a reader to the data
        return ended;
    }

    /// The sum of the first two run widths of a channel: its period, when the capture is that long.
    std::int64_t period(int chn) const
    {
        const SmpEdgeCursor first;
        return smpData->entryAt(chn, first, 1);
    }

    QObject listener;
    SimulationSettings settings;
    QVector<State> states;
    int published = 0;
    SmpSimulate simulate{*this};
};

/// A decoder's simulation that a test writes down.
class Source : public SimulationSource {
public:
    std::function<void(std::int64_t newest, std::vector<SimulationChannel> &)> onBuild =
        [](std::int64_t, std::vector<SimulationChannel> &) {};

    void begin(std::int64_t frequency) override { calls.append(QStringLiteral("begin %1").arg(frequency)); }
    void build(std::int64_t newestSample, std::int64_t frequency, std::vector<SimulationChannel> &channels) override
    {
        calls.append(QStringLiteral("build %1 %2").arg(newestSample).arg(frequency));
        onBuild(newestSample, channels);
    }
    void release() override { calls.append(QStringLiteral("release")); }

    QStringList calls; ///< read only after the run
};

std::vector<std::int64_t> entriesOf(const SmpData &data, int chn)
{
    std::vector<std::int64_t> entries;
    const SmpEdgeCursor first;
    for (std::int64_t i = 0; i < data.entryCount(chn); ++i) {
        entries.push_back(data.entryAt(chn, first, i));
    }
    return entries;
}

using Widths = std::vector<std::int32_t>;

} // namespace

Q_DECLARE_METATYPE(Widths)

class TstSmpSimulate : public QObject {
    Q_OBJECT
private slots:
    void init() { memBudget = ampleMemory; }

    void aBlockLastsAsLongAsDepthAndRateAsk_data();
    void aBlockLastsAsLongAsDepthAndRateAsk();
    void theBasePeriodFollowsDepthAndBlock_data();
    void theBasePeriodFollowsDepthAndBlock();
    void eachPeriodClassIsAQuarterLonger();
    void aBlockIsMadeOfWholePeriodsWithNoPulseBelowTwoSamples_data();
    void aBlockIsMadeOfWholePeriodsWithNoPulseBelowTwoSamples();
    void emptyRunsOfASourceJoinTheirNeighbours_data();
    void emptyRunsOfASourceJoinTheirNeighbours();

    void evenChannelsStartLowAndOddOnesHigh();
    void aDisabledChannelHasNoDataAndTakesNoPeriodClass();
    void periodClassesGoOnFromRunToRun();
    void theSameSeedGivesTheSameWaves();
    void everyChannelEndsAtTheDepth();
    void analogChannelsStayEmpty();
    void aShortCaptureEndsAfterItsFirstBlock();
    void aDepthOfBrokenBlocksEndsExactlyThere();
    void aRunReportsItsProgressByBlocks();
    void aStopBeforeTheFirstBlockGivesAnEmptyCapture();
    void aStopTakesEffectWithinABlockAndKeepsIt();
    void anAbortedRunPublishesNothing();
    void aRunEndsWithItsObject();
    void aSecondStartIsIgnoredWhileARunIsBusy();
    void theNextRunMayBeStartedByTheLastRunsEnd();
    void aRunThatIsStartedWhileTheLastThreadStillEndsIsNotLost();
    void aSpentMemoryBudgetEndsTheRunWithAClosedPart();
    void settingsThatNameNoSamplesGiveAnEmptyCapture_data();
    void settingsThatNameNoSamplesGiveAnEmptyCapture();
    void fewerFlagsThanChannelsLeaveTheRestOff();
    void aThreadThatCannotBeHadIsReported();

    void aSourceIsBegunOnceAskedForEachBlockAndReleasedOnce();
    void aSourceIsReleasedAlsoWhenTheRunIsStoppedAtOnce();
    void aSourceDrivesItsChannelAlone();
    void aLevelThatGoesOnAtABlockSeamMakesNoEdge();
    void aLevelThatChangesAtABlockSeamMakesOneEdge();
    void aSourceGetsItsEntriesBackWithEmptyWidths();
    void aSourceWithoutWidthsLeavesItsChannelQuiet();
    void dataForAChannelThatIsNotCapturedIsPassedOver();
    void senselessSourceDataIsHarmless();
};

// ---- arithmetic ----------------------------------------------------------------------------------------------------

void TstSmpSimulate::aBlockLastsAsLongAsDepthAndRateAsk_data()
{
    QTest::addColumn<qint64>("depth");
    QTest::addColumn<qint64>("rate");
    QTest::addColumn<int>("ms");
    QTest::newRow("8 K at 100 MHz never fills a block") << qint64(8000) << qint64(100000000) << 500;
    QTest::newRow("20 K at 500 MHz fills one at once") << qint64(20000) << qint64(500000000) << 100;
    QTest::newRow("19999 samples are too few") << qint64(19999) << qint64(500000000) << 500;
    QTest::newRow("100 M at 500 MHz") << qint64(100000000) << qint64(500000000) << 100;
    QTest::newRow("10 G at 500 MHz: 100 blocks") << qint64(10000000000) << qint64(500000000) << 200;
    QTest::newRow("10 G at 20 kHz: the longest block") << qint64(10000000000) << qint64(20000) << 2000;
    QTest::newRow("20 K at 20 kHz: small blocks stop growing at 500 ms") << qint64(20000) << qint64(20000) << 500;
    QTest::newRow("1 M at 50 kHz: grows until 20000 samples") << qint64(1000000) << qint64(50000) << 400;
    QTest::newRow("exactly 100 blocks") << qint64(2000000) << qint64(200000) << 100;
}

void TstSmpSimulate::aBlockLastsAsLongAsDepthAndRateAsk()
{
    QFETCH(qint64, depth);
    QFETCH(qint64, rate);
    QTEST(SmpSimulate::blockMs(depth, rate), "ms");
}

void TstSmpSimulate::theBasePeriodFollowsDepthAndBlock_data()
{
    QTest::addColumn<qint64>("depth");
    QTest::addColumn<qint64>("blockSamples");
    QTest::addColumn<int>("period");
    QTest::newRow("in the middle") << qint64(1000000) << qint64(1000000) << 200;
    QTest::newRow("exactly 1000 periods of 200") << qint64(200000) << qint64(20000) << 200;
    QTest::newRow("one sample less") << qint64(199999) << qint64(20000) << 180;
    QTest::newRow("a short capture goes down to 20") << qint64(8000) << qint64(10000) << 20;
    QTest::newRow("a long block lengthens it again") << qint64(20000) << qint64(50000000) << 1020;
    QTest::newRow("at most 50000 periods a block") << qint64(100000000) << qint64(50000000) << 1000;
    QTest::newRow("at most a million periods a capture") << qint64(1000000000) << qint64(10000000) << 1000;
    QTest::newRow("one step above") << qint64(1000000000) << qint64(50100000) << 1100;
    QTest::newRow("never above 2000") << qint64(10000000000) << qint64(100000000) << 2000;
    QTest::newRow("not even for a block of 10 G") << qint64(10000000000) << qint64(10000000000) << 2000;
}

void TstSmpSimulate::theBasePeriodFollowsDepthAndBlock()
{
    QFETCH(qint64, depth);
    QFETCH(qint64, blockSamples);
    QTEST(SmpSimulate::basePeriod(depth, blockSamples), "period");
}

void TstSmpSimulate::eachPeriodClassIsAQuarterLonger()
{
    const int expected[] = {20, 25, 31, 38, 47, 58};
    for (int step = 0; step < SmpSimulate::periodSteps; ++step) {
        QCOMPARE(SmpSimulate::stepPeriod(20, step), expected[step]);
    }
    QCOMPARE(SmpSimulate::stepPeriod(2000, 5), 6102);
}

void TstSmpSimulate::aBlockIsMadeOfWholePeriodsWithNoPulseBelowTwoSamples_data()
{
    QTest::addColumn<qint64>("blockSamples");
    QTest::addColumn<int>("period");
    QTest::addColumn<qint64>("periods");
    QTest::newRow("whole number of periods") << qint64(100000) << 20 << qint64(5000);
    QTest::newRow("a remainder takes one more") << qint64(100001) << 20 << qint64(5001);
    QTest::newRow("less than a period") << qint64(5) << 20 << qint64(1);
    QTest::newRow("long periods") << qint64(100000000) << 6102 << qint64(16389);
}

void TstSmpSimulate::aBlockIsMadeOfWholePeriodsWithNoPulseBelowTwoSamples()
{
    QFETCH(qint64, blockSamples);
    QFETCH(int, period);
    QFETCH(qint64, periods);
    QRandomGenerator random(7);
    const Widths runs = SmpSimulate::genRuns(blockSamples, period, random);
    QCOMPARE(qint64(runs.size()), 2 * periods);
    for (std::size_t i = 0; i < runs.size(); i += 2) {
        QVERIFY(runs[i] >= 2 && runs[i + 1] >= 2);
        QCOMPARE(runs[i] + runs[i + 1], period);
    }
}

void TstSmpSimulate::emptyRunsOfASourceJoinTheirNeighbours_data()
{
    constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
    QTest::addColumn<Widths>("widths");
    QTest::addColumn<Widths>("joined");
    QTest::addColumn<int>("level"); // of the last run; it comes in as 1
    QTest::newRow("none") << Widths{3, 4, 5} << Widths{3, 4, 5} << 1;
    QTest::newRow("nothing at all") << Widths{} << Widths{} << 1;
    QTest::newRow("in the middle") << Widths{3, 0, 5} << Widths{8} << 1;
    QTest::newRow("a pair") << Widths{3, 0, 0, 5} << Widths{3, 5} << 1;
    QTest::newRow("three in turn") << Widths{3, 0, 0, 0, 5} << Widths{8} << 1;
    QTest::newRow("at the start") << Widths{0, 4, 5} << Widths{4, 5} << 1;
    QTest::newRow("two at the start") << Widths{0, 0, 4, 5} << Widths{4, 5} << 1;
    QTest::newRow("at the end") << Widths{3, 4, 0} << Widths{3, 4} << 0;
    QTest::newRow("two at the end") << Widths{3, 4, 0, 0} << Widths{3, 4} << 1;
    QTest::newRow("only empty ones") << Widths{0, 0} << Widths{} << 1;
    QTest::newRow("negative ones count as empty") << Widths{3, -7, 5} << Widths{8} << 1;
    QTest::newRow("a sum beyond a width") << Widths{most, 0, most} << Widths{most} << 1;
}

void TstSmpSimulate::emptyRunsOfASourceJoinTheirNeighbours()
{
    QFETCH(Widths, widths);
    QFETCH(Widths, joined);
    int level = 1;
    QVERIFY(SmpSimulate::joinEmptyRuns(widths, level) == joined);
    QTEST(level, "level");
}

// ---- generated waves -----------------------------------------------------------------------------------------------

void TstSmpSimulate::evenChannelsStartLowAndOddOnesHigh()
{
    Bench bench(32);
    QVERIFY(bench.run());
    for (int chn = 0; chn < 32; ++chn) {
        SmpEdgeCursor cursor;
        QCOMPARE(bench.smpData->locate(chn, 0, cursor), chn % 2);
    }
}

void TstSmpSimulate::aDisabledChannelHasNoDataAndTakesNoPeriodClass()
{
    Bench bench(12);
    bench.settings.depth = 60000;
    QVERIFY(bench.run());
    QVector<std::int64_t> classes;
    for (int chn = 0; chn < 6; ++chn) {
        classes.append(bench.period(chn));
    }
    for (const int off : {1, 2, 3, 5, 7, 11}) {
        bench.settings.enable[std::size_t(off)] = 0;
    }
    QVERIFY(bench.run());
    int next = 0;
    for (const int chn : {0, 4, 6, 8, 9, 10}) {
        QCOMPARE(bench.period(chn), classes.at(next++));
    }
    QCOMPARE(bench.smpData->entryCount(1), std::int64_t(0));
    QVERIFY(bench.smpData->chnRoots()[11] == nullptr);
}

void TstSmpSimulate::periodClassesGoOnFromRunToRun()
{
    Bench bench(6);
    bench.settings.depth = 60000;
    QVERIFY(bench.run());
    QVector<std::int64_t> classes;
    for (int chn = 0; chn < 6; ++chn) {
        classes.append(bench.period(chn));
    }
    bench.settings.enable = {1, 1, 0, 0, 0, 0};
    QVERIFY(bench.run());
    QCOMPARE(bench.period(1), classes.at(1));

    Bench other(6); // another device object goes on as well
    other.settings.depth = 60000;
    QVERIFY(other.run());
    for (int chn = 0; chn < 6; ++chn) {
        QCOMPARE(other.period(chn), classes.at((chn + 2) % 6));
    }
    other.settings.enable = {1, 1, 1, 1, 0, 0};
    QVERIFY(other.run());
}

void TstSmpSimulate::theSameSeedGivesTheSameWaves()
{
    Bench bench(6); // six channels bring the period classes round
    QVERIFY(bench.run());
    const std::vector<std::int64_t> first = entriesOf(*bench.smpData, 3);
    QVERIFY(bench.run());
    QVERIFY(entriesOf(*bench.smpData, 3) == first);
    bench.simulate.setSeed(2);
    QVERIFY(bench.run());
    QVERIFY(entriesOf(*bench.smpData, 3) != first);
}

void TstSmpSimulate::everyChannelEndsAtTheDepth()
{
    Bench bench;
    QVERIFY(bench.run());
    QCOMPARE(bench.smpData->sampleCount(), std::int64_t(20000));
    QCOMPARE(bench.smpData->smpFrequ(), std::int64_t(500000000));
    QCOMPARE(bench.smpData->trgPos(), std::int64_t(0));
    for (int chn = 0; chn < 16; ++chn) {
        QCOMPARE(bench.smpData->lastPosition(chn), std::int64_t(20000));
        const std::vector<std::int64_t> entries = entriesOf(*bench.smpData, chn);
        QVERIFY(entries.size() > 5);
        QVERIFY(std::adjacent_find(entries.begin(), entries.end(), std::greater_equal<>()) == entries.end());
    }
}

void TstSmpSimulate::analogChannelsStayEmpty()
{
    Bench bench(16, 2);
    QVERIFY(bench.run());
    SmpAChnPoint points[10];
    QCOMPARE(bench.smpData->aChnPoints(0, 0.0, 1.0, 10, points), 0);
    QCOMPARE(bench.smpData->aChnPoints(1, 0.0, 1.0, 10, points), 0);
}

// ---- the course of a run -------------------------------------------------------------------------------------------

void TstSmpSimulate::aShortCaptureEndsAfterItsFirstBlock()
{
    Bench bench;
    bench.settings.frequency = 100000000;
    bench.settings.depth = 8000;
    QVERIFY(bench.run());
    QVERIFY((bench.states == QVector<State>{{0, 0, 0}, {5, 0, 0}}));
    QCOMPARE(bench.published, 1);
    QCOMPARE(bench.smpData->sampleCount(), std::int64_t(8000));
    QCOMPARE(bench.smpSta.load(), 5);
}

void TstSmpSimulate::aDepthOfBrokenBlocksEndsExactlyThere()
{
    Bench bench(2);
    bench.settings.frequency = 200000;
    bench.settings.depth = 50000; // two and a half blocks of 20000
    QVERIFY(bench.run());
    QVERIFY((bench.states == QVector<State>{{0, 0, 0}, {3, 0, 40}, {3, 0, 80}, {5, 0, 0}}));
    QCOMPARE(bench.smpData->sampleCount(), std::int64_t(50000));
    QCOMPARE(bench.smpData->lastPosition(0), std::int64_t(50000));
    QCOMPARE(bench.smpData->lastPosition(1), std::int64_t(50000));
    QVERIFY(bench.smpData->prevEdge(0, 49999) > 49000);
}

void TstSmpSimulate::aRunReportsItsProgressByBlocks()
{
    Bench bench(1);
    bench.settings.frequency = 200000;
    bench.settings.depth = 40000;
    QVERIFY(bench.run());
    QVERIFY((bench.states == QVector<State>{{0, 0, 0}, {3, 0, 50}, {5, 0, 0}}));
}

void TstSmpSimulate::aStopBeforeTheFirstBlockGivesAnEmptyCapture()
{
    Bench bench;
    bench.smpStop = true;
    QVERIFY(bench.run());
    QVERIFY((bench.states == QVector<State>{{0, 0, 0}, {5, 0, 0}}));
    QVERIFY(bench.smpData->complete());
    QCOMPARE(bench.smpData->sampleCount(), std::int64_t(0));
    QCOMPARE(bench.smpData->entryCount(0), std::int64_t(1));
}

void TstSmpSimulate::aStopTakesEffectWithinABlockAndKeepsIt()
{
    Bench bench(4);
    bench.settings.frequency = 20000;
    bench.settings.depth = 10000000000; // blocks of two seconds, for days
    bench.simulate.startRun(bench.settings, nullptr);
    QTRY_VERIFY(bench.states.size() >= 2);
    QVERIFY((bench.states.last() == State{3, 0, 0}));
    QVERIFY(!bench.smpData->complete());
    bench.smpStop = true;
    bench.wake();
    QTRY_COMPARE(bench.published, 1);
    QVERIFY((bench.states.last() == State{5, 0, 0}));
    // As many as were told: on a busy machine the stop may come blocks later.
    QCOMPARE(bench.smpData->sampleCount(), std::int64_t(40000) * bench.states.count({3, 0, 0}));
}

void TstSmpSimulate::anAbortedRunPublishesNothing()
{
    Bench bench(4);
    bench.settings.frequency = 20000;
    bench.settings.depth = 10000000000;
    bench.simulate.startRun(bench.settings, nullptr);
    QTRY_VERIFY(bench.states.size() >= 2);
    bench.simulate.abort = true;
    bench.wake();
    bench.simulate.join();
    QCoreApplication::processEvents();
    QVERIFY((bench.states.last() == State{5, 0, 0}));
    QCOMPARE(bench.published, 0);

    bench.settings.depth = 20000; // a later run is a run like any other
    bench.settings.frequency = 500000000;
    QVERIFY(bench.run());
}

void TstSmpSimulate::aRunEndsWithItsObject()
{
    int published = 0;
    QObject listener;
    {
        Bench bench(4);
        connect(&bench, &SmpHost::sigSmpDataReady, &listener, [&published] { ++published; });
        bench.settings.frequency = 20000;
        bench.settings.depth = 10000000000;
        bench.simulate.startRun(bench.settings, nullptr);
        QTRY_VERIFY(bench.states.size() >= 2);
    }
    QCoreApplication::processEvents();
    QCOMPARE(published, 0);
}

void TstSmpSimulate::aSecondStartIsIgnoredWhileARunIsBusy()
{
    Bench bench(2);
    bench.settings.frequency = 20000;
    bench.settings.depth = 10000000000; // until it is stopped
    bench.simulate.startRun(bench.settings, nullptr);
    QVERIFY(bench.simulate.isBusy());
    SimulationSettings other = bench.settings;
    other.depth = 20000;
    bench.simulate.startRun(other, nullptr);
    QTRY_VERIFY(bench.states.size() >= 2);
    bench.smpStop = true;
    bench.wake();
    QTRY_COMPARE(bench.published, 1);
    QVERIFY(!bench.simulate.isBusy());
    QVERIFY(bench.smpData->sampleCount() > other.depth);
    QCOMPARE(bench.states.count({0, 0, 0}), 1);
}

void TstSmpSimulate::theNextRunMayBeStartedByTheLastRunsEnd()
{
    Bench bench(2);
    int ends = 0;
    connect(&bench, &SmpHost::sigSmpSta, &bench.listener, [&](int sta, int, int) {
        if (sta == 5 && ++ends == 1) {
            bench.simulate.startRun(bench.settings, nullptr);
        }
    });
    QVERIFY(bench.run());
    QTRY_COMPARE(bench.published, 2);
    QCOMPARE(ends, 2);
}

void TstSmpSimulate::aRunThatIsStartedWhileTheLastThreadStillEndsIsNotLost()
{
    constexpr int runs = 40;
    Bench bench(2);
    std::atomic<bool> seen{true}; // by the main thread, that the run is no longer busy
    connect(
        &bench, &SmpHost::sigSmpDataReady, &bench.listener,
        [&seen] {
            while (!seen) {
                QThread::yieldCurrentThread();
            }
        },
        Qt::DirectConnection);
    for (int run = 0; run < runs; ++run) {
        bench.simulate.startRun(bench.settings, nullptr); // waits for the thread that has just been let go
        seen = false;
        while (bench.simulate.isBusy()) {
            QThread::yieldCurrentThread();
        }
        seen = true;
    }
    QTRY_COMPARE(bench.published, runs);
    QCOMPARE(bench.states.count({5, 0, 0}), runs);
}

void TstSmpSimulate::aSpentMemoryBudgetEndsTheRunWithAClosedPart()
{
    Bench bench(2);
    memBudget = 2 * std::int64_t(sizeof(SmpEdgeRoot) + sizeof(SmpEdgeMid)); // room for no second leaf
    QVERIFY(bench.run());
    QVERIFY((bench.states == QVector<State>{{0, 0, 0}, {4, 4, 0}}));
    QCOMPARE(bench.published, 1);
    QVERIFY(bench.smpData->complete());
    QCOMPARE(bench.smpData->sampleCount(), std::int64_t(0));
    QCOMPARE(bench.smpData->lastPosition(0), std::int64_t(0));
}

void TstSmpSimulate::settingsThatNameNoSamplesGiveAnEmptyCapture_data()
{
    QTest::addColumn<qint64>("depth");
    QTest::addColumn<qint64>("rate");
    QTest::newRow("no depth") << qint64(0) << qint64(1000000);
    QTest::newRow("no rate") << qint64(20000) << qint64(0);
    QTest::newRow("a negative depth") << qint64(-1) << qint64(1000000);
    QTest::newRow("a negative rate") << qint64(20000) << qint64(-5);
}

void TstSmpSimulate::settingsThatNameNoSamplesGiveAnEmptyCapture()
{
    QFETCH(qint64, depth);
    QFETCH(qint64, rate);
    Bench bench(2);
    bench.settings.depth = depth;
    bench.settings.frequency = rate;
    QVERIFY(bench.run());
    QVERIFY((bench.states == QVector<State>{{0, 0, 0}, {5, 0, 0}}));
    QCOMPARE(bench.smpData->sampleCount(), std::int64_t(0));
}

void TstSmpSimulate::fewerFlagsThanChannelsLeaveTheRestOff()
{
    Bench bench(8);
    bench.settings.enable = {1, 1};
    QVERIFY(bench.run());
    QVERIFY(bench.smpData->entryCount(1) > 1);
    QCOMPARE(bench.smpData->entryCount(2), std::int64_t(0));
}

void TstSmpSimulate::aThreadThatCannotBeHadIsReported()
{
#ifdef Q_OS_WIN
    QSKIP("a thread can be had with a stack of any size");
#endif
    Bench bench(2);
    QVERIFY(bench.run());
    bench.states.clear();
    bench.smpData->closeToReaders(); // as who starts a run does
    bench.simulate.setStackSize(1);
    QTest::ignoreMessage(QtSystemMsg, QRegularExpression(QStringLiteral("stack size")));
    bench.simulate.startRun(bench.settings, nullptr);
    QVERIFY(!bench.simulate.isBusy());
    QVERIFY((bench.states == QVector<State>{{0, 4, 0}}));
    QCOMPARE(bench.smpData->sampleCount(), std::int64_t(20000)); // the last capture can be read again
    bench.simulate.setStackSize(0);
    QVERIFY(bench.run());
}

// ---- data of a source ----------------------------------------------------------------------------------------------

void TstSmpSimulate::aSourceIsBegunOnceAskedForEachBlockAndReleasedOnce()
{
    Source source;
    Bench bench(2);
    bench.settings.frequency = 200000;
    bench.settings.depth = 50000;
    QVERIFY(bench.run(&source));
    QCOMPARE(source.calls, QStringList({QStringLiteral("begin 200000"), QStringLiteral("build 20000 200000"),
                                        QStringLiteral("build 40000 200000"), QStringLiteral("build 60000 200000"),
                                        QStringLiteral("release")}));
}

void TstSmpSimulate::aSourceIsReleasedAlsoWhenTheRunIsStoppedAtOnce()
{
    Source source;
    Bench bench(2);
    bench.smpStop = true;
    QVERIFY(bench.run(&source));
    QCOMPARE(source.calls, QStringList({QStringLiteral("begin 500000000"), QStringLiteral("release")}));
}

void TstSmpSimulate::aSourceDrivesItsChannelAlone()
{
    Source source;
    source.onBuild = [](std::int64_t, std::vector<SimulationChannel> &channels) {
        channels = {{2, 1, 1, {100, 50, 1000}}}; // high, low, high
    };
    Bench bench(4);
    bench.settings.depth = 20000;
    QVERIFY(bench.run(&source));
    SmpEdgeCursor cursor;
    QCOMPARE(bench.smpData->locate(2, 0, cursor), 1);
    QVERIFY((entriesOf(*bench.smpData, 2) == std::vector<std::int64_t>{100, 150, 1150, 20000}));
    QVERIFY(bench.smpData->entryCount(1) > 5);
    QVERIFY(bench.smpData->entryCount(3) > 5);
}

void TstSmpSimulate::aLevelThatGoesOnAtABlockSeamMakesNoEdge()
{
    // Two runs a block: low and high, then high and low. The high run goes on over the seam.
    Source source;
    source.onBuild = [](std::int64_t newest, std::vector<SimulationChannel> &channels) {
        channels = {{2, 0, newest == 20000 ? 1 : 0, {15000, 5000}}};
    };
    Bench bench(4);
    bench.settings.frequency = 200000;
    bench.settings.depth = 40000;
    QVERIFY(bench.run(&source));
    QVERIFY((entriesOf(*bench.smpData, 2) == std::vector<std::int64_t>{15000, 35000, 40000}));
    QVERIFY(!bench.smpData->isEdge(2, 20000));
    SmpEdgeCursor cursor;
    QCOMPARE(bench.smpData->locate(2, 14999, cursor), 0);
    QCOMPARE(bench.smpData->locate(2, 20000, cursor), 1);
    QCOMPARE(bench.smpData->locate(2, 39999, cursor), 0);
}

void TstSmpSimulate::aLevelThatChangesAtABlockSeamMakesOneEdge()
{
    // Low and high in both blocks.
    Source source;
    source.onBuild = [](std::int64_t, std::vector<SimulationChannel> &channels) {
        channels = {{1, 0, 1, {15000, 5000}}};
    };
    Bench bench(4);
    bench.settings.frequency = 200000;
    bench.settings.depth = 40000;
    QVERIFY(bench.run(&source));
    QVERIFY((entriesOf(*bench.smpData, 1) == std::vector<std::int64_t>{15000, 20000, 35000, 40000}));
    SmpEdgeCursor cursor;
    QCOMPARE(bench.smpData->locate(1, 20000, cursor), 0);
    QCOMPARE(bench.smpData->locate(1, 39999, cursor), 1);
}

void TstSmpSimulate::aSourceGetsItsEntriesBackWithEmptyWidths()
{
    Source source;
    QVector<int> sizes;
    std::size_t entries = 0;
    source.onBuild = [&](std::int64_t, std::vector<SimulationChannel> &channels) {
        entries = channels.size();
        channels.resize(1);
        sizes.append(int(channels[0].widths.size()));
        channels[0].chn = 0;
        channels[0].currentLevel = 0;
        channels[0].widths.assign(1, 20000);
    };
    Bench bench(1);
    bench.settings.frequency = 200000;
    bench.settings.depth = 40000;
    QVERIFY(bench.run(&source));
    QVERIFY((sizes == QVector<int>{0, 0}));
    QCOMPARE(entries, std::size_t(1));
    QVERIFY((entriesOf(*bench.smpData, 0) == std::vector<std::int64_t>{40000}));
}

void TstSmpSimulate::aSourceWithoutWidthsLeavesItsChannelQuiet()
{
    Source source;
    source.onBuild = [](std::int64_t, std::vector<SimulationChannel> &channels) { channels = {{0, 1, 1, {}}}; };
    Bench bench(1);
    QVERIFY(bench.run(&source));
    QVERIFY((entriesOf(*bench.smpData, 0) == std::vector<std::int64_t>{20000}));
    SmpEdgeCursor cursor;
    QCOMPARE(bench.smpData->locate(0, 10, cursor), 1);
}

void TstSmpSimulate::dataForAChannelThatIsNotCapturedIsPassedOver()
{
    Source source;
    source.onBuild = [](std::int64_t, std::vector<SimulationChannel> &channels) {
        channels = {{1, 1, 1, {100}}, {-1, 1, 1, {100}}, {2, 1, 1, {100}}, {1000000, 1, 1, {100}}};
    };
    Bench bench(2);
    bench.settings.enable = {1, 0};
    QVERIFY(bench.run(&source));
    QCOMPARE(bench.smpData->entryCount(1), std::int64_t(0));
    QCOMPARE(bench.smpData->startLevels(), std::uint64_t(0));
    QVERIFY(bench.smpData->entryCount(0) > 5);
    QCOMPARE(bench.smpData->sampleCount(), std::int64_t(20000));
}

void TstSmpSimulate::senselessSourceDataIsHarmless()
{
    static constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
    static constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();
    Source source;
    source.onBuild = [](std::int64_t, std::vector<SimulationChannel> &channels) {
        channels = {{0, 77, -5, std::vector<std::int32_t>(1000, most)},
                    {1, -1, 9, {0, 0, least, -1, 0}},
                    {1, 0, 0, {5}},
                    {2, 0, 1, {10, -3, 20, 0, least}}};
    };
    Bench bench(3);
    QVERIFY(bench.run(&source));
    QCOMPARE(bench.smpData->sampleCount(), std::int64_t(20000));
    QVERIFY((entriesOf(*bench.smpData, 0) == std::vector<std::int64_t>{20000}));
    QVERIFY((entriesOf(*bench.smpData, 1) == std::vector<std::int64_t>{20000}));
    QVERIFY((entriesOf(*bench.smpData, 2) == std::vector<std::int64_t>{30, 20000}));
}

QTEST_GUILESS_MAIN(TstSmpSimulate)
#include "tst_SmpSimulate.moc"
