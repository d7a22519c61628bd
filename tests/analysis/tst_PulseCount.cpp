#include "analysis/PulseCount.h"
#include "store/SmpWriter.h"
#include "wave/WaveCapture.h"

#include <QtTest>

#include <random>

namespace {

/// Counts by looking at every sample. `levels` holds the level of each one.
PulseCounts countedOneByOne(const std::vector<int> &levels, std::int64_t from, std::int64_t to)
{
    PulseCounts counts;
    std::vector<int> turns; // the new levels
    std::int64_t behindStart = 0;
    for (std::int64_t i = std::max<std::int64_t>(from, 1); i <= to && i < std::int64_t(levels.size()); ++i) {
        if (levels[std::size_t(i)] != levels[std::size_t(i - 1)]) {
            turns.push_back(levels[std::size_t(i)]);
            behindStart += i > from ? 1 : 0;
        }
    }
    if (behindStart == 0) {
        return counts; // an edge on the start alone is no edge of the range
    }
    for (std::size_t i = 0; i < turns.size(); ++i) {
        const bool rises = turns[i] == 1;
        (rises ? counts.rising : counts.falling) += 1;
        if (i > 0) {
            (rises ? counts.negative : counts.positive) += 1;
        }
    }
    return counts;
}

} // namespace

class TstPulseCount : public QObject {
    Q_OBJECT
private slots:
    void theFourCountsFollowFromEdgesStartAndLevel_data();
    void theFourCountsFollowFromEdgesStartAndLevel();
    void countsAgreeWithLookingAtEverySample();
    void aRangeThatStartsOnAnEdgeCountsItWithTheOthers();
    void aRangeWithoutEdgesGivesZeros();
    void anEdgeOnTheStartAloneIsNotCounted();
    void anEdgeOnTheEndIsCounted();
    void theEndOfTheCaptureIsNoEdge();
    void anEnabledChannelThatNeverChangesGivesZeros();
    void aChannelWithoutDataHasNoCounts();
    void positionsOutsideTheDataHaveNoCounts_data();
    void positionsOutsideTheDataHaveNoCounts();
};

void TstPulseCount::theFourCountsFollowFromEdgesStartAndLevel_data()
{
    QTest::addColumn<qint64>("edges");
    QTest::addColumn<bool>("atStart");
    QTest::addColumn<int>("level");
    QTest::addColumn<QVector<qint64>>("counts"); // rising, falling, positive, negative
    const auto row = [](const char *name, qint64 edges, bool atStart, int level, QVector<qint64> counts) {
        QTest::newRow(name) << edges << atStart << level << counts;
    };
    row("none, high", 0, false, 1, {0, 0, 0, 0});
    row("none, on an edge", 0, true, 0, {0, 0, 0, 0});
    row("one from high", 1, false, 1, {0, 1, 0, 0});
    row("one from low", 1, false, 0, {1, 0, 0, 0});
    row("one behind a rise", 1, true, 1, {1, 1, 1, 0});
    row("one behind a fall", 1, true, 0, {1, 1, 0, 1});
    row("two from high", 2, false, 1, {1, 1, 0, 1});
    row("two behind a rise", 2, true, 1, {2, 1, 1, 1});
    row("two behind a fall", 2, true, 0, {1, 2, 1, 1});
    row("three from low", 3, false, 0, {2, 1, 1, 1});
    row("most", (qint64(1) << 40) - 1, false, 0,
        {qint64(1) << 39, (qint64(1) << 39) - 1, (qint64(1) << 39) - 1, (qint64(1) << 39) - 1});
}

void TstPulseCount::theFourCountsFollowFromEdgesStartAndLevel()
{
    QFETCH(qint64, edges);
    QFETCH(bool, atStart);
    QFETCH(int, level);
    QFETCH(QVector<qint64>, counts);
    const PulseCounts found = pulseCounts(edges, atStart, level);
    QCOMPARE((QVector<qint64>{found.rising, found.falling, found.positive, found.negative}), counts);
}

void TstPulseCount::countsAgreeWithLookingAtEverySample()
{
    std::mt19937 random(20261121);
    const auto below = [&random](int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(random); };
    for (int round = 0; round < 200; ++round) {
        constexpr int samples = 60;
        const int longest = 1 + below(20);
        std::vector<std::int32_t> widths;
        std::vector<int> levels;
        int level = 0;
        while (levels.size() < samples) {
            widths.push_back(1 + below(longest));
            levels.insert(levels.end(), std::size_t(widths.back()), level);
            level = 1 - level;
        }
        levels.resize(samples);
        const auto data = capture().samples(samples).pulses(0, widths).build();
        const bool startsHigh = below(2) == 1;
        if (startsHigh) {
            SmpWriter(*data).chnRoot(0)->startLevel = 1;
            for (int &each : levels) {
                each = 1 - each;
            }
        }
        for (int pair = 0; pair < 50; ++pair) {
            const std::int64_t a = below(samples + 1);
            const std::int64_t b = below(samples + 1);
            PulseCounts found{-1, -1, -1, -1};
            QVERIFY(countPulses(*data, 0, std::min(a, b), std::max(a, b), found));
            QCOMPARE(found, countedOneByOne(levels, std::min(a, b), std::max(a, b)));
        }
    }
}

void TstPulseCount::aRangeThatStartsOnAnEdgeCountsItWithTheOthers()
{
    const auto data = capture().pulses(0, {100, 50, 50, 300}).build(); // rises at 100, falls at 150, rises at 200
    QCOMPARE(pulseCountFields(*data, 0, 100, 300), QStringLiteral("2,1,1,1"));
}

void TstPulseCount::aRangeWithoutEdgesGivesZeros()
{
    const auto data = capture().pulses(0, {100, 50, 50, 300}).build();
    QCOMPARE(pulseCountFields(*data, 0, 210, 490), QStringLiteral("0,0,0,0"));
}

void TstPulseCount::anEdgeOnTheStartAloneIsNotCounted()
{
    const auto data = capture().pulses(0, {100, 50}).build();
    QCOMPARE(pulseCountFields(*data, 0, 100, 149), QStringLiteral("0,0,0,0"));
    QCOMPARE(pulseCountFields(*data, 0, 100, 100), QStringLiteral("0,0,0,0"));
}

void TstPulseCount::anEdgeOnTheEndIsCounted()
{
    const auto data = capture().pulses(0, {100, 50}).build();
    QCOMPARE(pulseCountFields(*data, 0, 99, 149), QStringLiteral("1,0,0,0"));
    QCOMPARE(pulseCountFields(*data, 0, 99, 150), QStringLiteral("1,1,1,0"));
}

void TstPulseCount::theEndOfTheCaptureIsNoEdge()
{
    const auto data = capture().samples(1000).pulses(0, {100}).build();
    QCOMPARE(pulseCountFields(*data, 0, 0, 1000), QStringLiteral("1,0,0,0"));
    QCOMPARE(pulseCountFields(*data, 0, 1000, 1000), QStringLiteral("0,0,0,0"));
}

void TstPulseCount::anEnabledChannelThatNeverChangesGivesZeros()
{
    const auto data = capture().channels(2).pulses(0, {100}).build();
    QCOMPARE(pulseCountFields(*data, 1, 0, 1000), QStringLiteral("0,0,0,0"));
}

void TstPulseCount::aChannelWithoutDataHasNoCounts()
{
    const SmpData data(2, 0);
    PulseCounts untouched{1, 2, 3, 4};
    QVERIFY(!countPulses(data, 0, 0, 10, untouched));
    QCOMPARE(untouched, (PulseCounts{1, 2, 3, 4}));
    const auto closed = capture().channels(2).pulses(0, {100}).build();
    QCOMPARE(pulseCountFields(*closed, 2, 0, 10), QStringLiteral("###,###,###,###"));
    QCOMPARE(pulseCountFields(*closed, -1, 0, 10), QStringLiteral("###,###,###,###"));
}

void TstPulseCount::positionsOutsideTheDataHaveNoCounts_data()
{
    QTest::addColumn<qint64>("from");
    QTest::addColumn<qint64>("to");
    QTest::newRow("before the start") << qint64(-1) << qint64(500);
    QTest::newRow("past the end") << qint64(500) << qint64(1001);
    QTest::newRow("both past the end") << qint64(2000) << qint64(3000);
    QTest::newRow("far away") << std::numeric_limits<qint64>::min() << std::numeric_limits<qint64>::max();
}

void TstPulseCount::positionsOutsideTheDataHaveNoCounts()
{
    QFETCH(qint64, from);
    QFETCH(qint64, to);
    const auto data = capture().samples(1000).pulses(0, {100, 50}).build();
    QCOMPARE(pulseCountFields(*data, 0, from, to), QStringLiteral("###,###,###,###"));
}

QTEST_GUILESS_MAIN(TstPulseCount)
#include "tst_PulseCount.moc"
