#include "store/Captures.h"
#include "store/MemBudget.h"
#include "store/SmpData.h"
#include "store/SmpWriter.h"

#include <QtTest>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

using captures::Positions;

namespace {

struct Run {
    int x;
    int width;
    int kind;
    bool operator==(const Run &) const = default;
};

using Runs = std::vector<Run>;

/// The line as SmpData makes it; a run that is written beyond `width` records shows as a wrong guard.
Runs lineOf(const SmpData &data, double start, double step, int width)
{
    std::vector<SmpWaveRun> out(std::size_t(std::max(width, 0)) + 1, SmpWaveRun{-7, -7, -7});
    const int count = data.waveRuns(0, start, step, width, out.data());
    Runs runs;
    if (count < 0 || out.back().x != -7) {
        runs.push_back({-1, -1, -1});
    }
    for (int i = 0; i < count; ++i) {
        runs.push_back({out[std::size_t(i)].x, out[std::size_t(i)].width, out[std::size_t(i)].kind});
    }
    return runs;
}

/// The same line, drawn from a sorted list with a plain search for every step. All positions start low.
Runs plainLine(const Positions &entries, double start, double step, int width)
{
    Runs runs;
    int column = start < 0 ? int(-start / step) : 0;
    const auto firstAbove = [&](double at) {
        return std::upper_bound(entries.begin(), entries.end() - 1, std::int64_t(at)) - entries.begin();
    };
    auto index = firstAbove(start < 0 ? 0 : start);
    if (column > width - 1) {
        return runs;
    }
    for (;;) {
        const std::int64_t entry = entries[std::size_t(index)];
        const double x = std::floor((double(entry) - start) / step);
        if (x > width - 1) {
            runs.push_back({column, width - 1 - column, int(index & 1)});
            return runs;
        }
        if (x > column) {
            runs.push_back({column, int(x) - column, int(index & 1)});
        }
        if (entry == entries.back()) {
            return runs;
        }
        runs.push_back({int(x), 1, 2});
        column = int(x) + 1;
        if (column * step + start >= double(entries.back() + 1) || column > width - 1) {
            return runs;
        }
        index = firstAbove(column * step + start);
    }
}

Positions regular(std::int64_t count, std::int64_t distance)
{
    Positions positions;
    for (std::int64_t i = 1; i <= count; ++i) {
        positions.push_back(i * distance);
    }
    return positions;
}

} // namespace

class TstSmpDataWave : public QObject {
    Q_OBJECT
private slots:
    void init() { memBudget = std::int64_t(1) << 40; }

    void aLineAgreesWithOneDrawnFromASortedList_data();
    void aLineAgreesWithOneDrawnFromASortedList();
    void runsAlternateWithTransitionMarks();
    void manyTransitionsInOneColumnGiveOneMark();
    void denseEdgesAtOneSampleAColumnMarkEverySecondColumn();
    void columnsBeforeTheFirstSampleStayWithoutRuns();
    void aLineThatEndsLeftOfTheDataHasNoRuns();
    void theEndMarkEndsTheLineWithoutATransitionMark();
    void theLastColumnOfTheViewIsNeverCovered();
    void aStartOutsideTheDataIsRefused();
    void aChannelWithoutDataIsRefused();
    void aLineWithoutColumnsHoldsNothing();
    void numbersThatAreNoneAreRefused();
    void aColumnFarToTheRightDoesNotWrap();
    void aLineNeverHoldsMoreRunsThanColumns();

    void anAnalogSampleStandsForItsMillivolts();
    void aScaleOfAnySizeDoesNotWrap();
    void oneSampleAColumnTakesTheBranchOfEverySample();
    void severalColumnsToASampleSpreadThePoints();
    void severalSamplesToAColumnTakeOneEach();
    void analogPointsBeforeTheFirstSampleStartFurtherRight();
    void analogPointsFromBehindTheLastSampleAreNone();
    void analogPointsOfAChannelWithoutDataAreNone();
    void analogPointsNeverExceedTheWidth();
};

void TstSmpDataWave::aLineAgreesWithOneDrawnFromASortedList_data()
{
    QTest::addColumn<int>("seed");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("spread");
    int seed = 0;
    for (const int count : {0, 1, 50, 3000, 20480, 90000}) {
        for (const int spread : {1, 7, 500, 100000}) {
            QTest::addRow("%d entries, spread %d", count, spread) << ++seed << count << spread;
        }
    }
}

void TstSmpDataWave::aLineAgreesWithOneDrawnFromASortedList()
{
    QFETCH(int, seed);
    QFETCH(int, count);
    QFETCH(int, spread);
    std::mt19937 random{std::uint32_t(seed)};
    Positions entries;
    std::int64_t pos = 0;
    int scale = spread;
    for (int i = 0; i < count; ++i) {
        if (random() % 500 == 0) {
            scale = random() % 2 == 0 ? 1 : spread; // bursts
        }
        pos += 1 + std::int64_t(random() % std::uint32_t(scale));
        entries.push_back(pos);
    }
    const std::int64_t length = pos + 1 + std::int64_t(random() % 1000);
    SmpData data(1, 0);
    captures::close(data, {entries}, length);
    entries.push_back(length);
    for (int i = 0; i < 60; ++i) {
        const int width = 1 + int(random() % 1920);
        const double whole = double(length) / width; // samples a column with the whole capture in view
        const double fraction = double(random() % 1000 + 1) / 500;
        const double step = i % 3 == 0 ? whole : i % 3 == 1 ? 0.01 + fraction * 10 : whole * fraction;
        const double starts[] = {0.0, 0.0, -double(random() % 2000), double(random() % std::uint64_t(length))};
        const double start = starts[i % 4];
        QVERIFY(lineOf(data, start, step, width) == plainLine(entries, start, step, width));
    }
}

void TstSmpDataWave::runsAlternateWithTransitionMarks()
{
    SmpData data(1, 0);
    captures::close(data, {{100, 250}}, 10000);
    QVERIFY(lineOf(data, 0, 10, 50) == (Runs{{0, 10, 0}, {10, 1, 2}, {11, 14, 1}, {25, 1, 2}, {26, 23, 0}}));
    QVERIFY(lineOf(data, 105, 10, 50) == (Runs{{0, 14, 1}, {14, 1, 2}, {15, 34, 0}}));
}

void TstSmpDataWave::manyTransitionsInOneColumnGiveOneMark()
{
    Positions positions;
    for (std::int64_t pos = 1001; pos < 1999; ++pos) {
        positions.push_back(pos);
    }
    SmpData data(1, 0);
    captures::close(data, {positions}, 10000);
    QVERIFY(lineOf(data, 0, 1000, 8) == (Runs{{0, 1, 0}, {1, 1, 2}, {2, 5, 0}}));
}

void TstSmpDataWave::denseEdgesAtOneSampleAColumnMarkEverySecondColumn()
{
    SmpData data(1, 0);
    captures::close(data, {regular(100, 1)}, 200);
    QVERIFY(lineOf(data, 0, 1.0, 7) ==
            (Runs{{0, 1, 0}, {1, 1, 2}, {2, 1, 0}, {3, 1, 2}, {4, 1, 0}, {5, 1, 2}, {6, 0, 0}}));
}

void TstSmpDataWave::columnsBeforeTheFirstSampleStayWithoutRuns()
{
    SmpData data(1, 0);
    captures::close(data, {{100}}, 10000);
    QVERIFY(lineOf(data, -55, 10, 30) == (Runs{{5, 10, 0}, {15, 1, 2}, {16, 13, 1}}));
}

void TstSmpDataWave::aLineThatEndsLeftOfTheDataHasNoRuns()
{
    SmpData data(1, 0);
    captures::close(data, {{100}}, 10000);
    QVERIFY(lineOf(data, -300, 10, 30) == Runs{});
    QVERIFY(lineOf(data, -1e300, 1e-300, 30) == Runs{});
}

void TstSmpDataWave::theEndMarkEndsTheLineWithoutATransitionMark()
{
    SmpData data(1, 0);
    captures::close(data, {{100}}, 200);
    QVERIFY(lineOf(data, 0, 10, 50) == (Runs{{0, 10, 0}, {10, 1, 2}, {11, 9, 1}}));
}

void TstSmpDataWave::theLastColumnOfTheViewIsNeverCovered()
{
    SmpData data(1, 0);
    captures::close(data, {{}}, 100000);
    QVERIFY(lineOf(data, 0, 10, 50) == (Runs{{0, 49, 0}}));
}

void TstSmpDataWave::aStartOutsideTheDataIsRefused()
{
    SmpData data(1, 0);
    captures::close(data, {{100}}, 200);
    SmpWaveRun out[10];
    QCOMPARE(data.waveRuns(0, 200.5, 1, 10, out), 0); // within the end mark's sample
    QCOMPARE(data.waveRuns(0, 201, 1, 10, out), -1);
    QCOMPARE(data.waveRuns(0, 1e300, 1, 10, out), -1);
}

void TstSmpDataWave::aChannelWithoutDataIsRefused()
{
    SmpData data(2, 0);
    data.begin(0, 1, {{1, 0}});
    data.finish(0);
    SmpWaveRun out[10];
    for (const int chn : {-1, 1, 2}) {
        QCOMPARE(data.waveRuns(chn, 0, 1, 10, out), -1);
    }
}

void TstSmpDataWave::aLineWithoutColumnsHoldsNothing()
{
    SmpData data(1, 0);
    captures::close(data, {{100}}, 200);
    QCOMPARE(data.waveRuns(0, 0, 1, 0, nullptr), 0);
    QCOMPARE(data.waveRuns(0, 0, 1, -5, nullptr), 0);
}

void TstSmpDataWave::numbersThatAreNoneAreRefused()
{
    SmpData data(1, 0);
    captures::close(data, {{100}}, 200);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinite = std::numeric_limits<double>::infinity();
    SmpWaveRun out[10];
    QCOMPARE(data.waveRuns(0, nan, 1, 10, out), -1);
    QCOMPARE(data.waveRuns(0, -infinite, 1, 10, out), -1);
    for (const double step : {0.0, -1.0, nan, infinite}) {
        QCOMPARE(data.waveRuns(0, 0, step, 10, out), -1);
    }
}

void TstSmpDataWave::aColumnFarToTheRightDoesNotWrap()
{
    SmpData data(1, 0);
    captures::close(data, {{5, 10000000000 - 3}}, 10000000000);
    // The second transition would stand in column 10^12.
    QVERIFY(lineOf(data, 0, 0.01, 1000) == (Runs{{0, 500, 0}, {500, 1, 2}, {501, 498, 1}}));
    // Columns whose low 32 bits would lie in the view.
    captures::close(data, {{42949673}}, 10000000000);
    QVERIFY(lineOf(data, 0, 0.01, 1000) == (Runs{{0, 999, 0}}));
}

void TstSmpDataWave::aLineNeverHoldsMoreRunsThanColumns()
{
    SmpData data(1, 0);
    captures::close(data, {regular(5000, 1)}, 6000);
    for (int width = 1; width < 40; ++width) {
        for (const double step : {0.01, 0.3, 0.5, 0.9999999, 1.0, 1.0000001, 1.5, 3.0, 700.0}) {
            for (const double start : {0.0, 0.1, 0.7, -3.0, -3.3, 2999.99999999}) {
                const Runs runs = lineOf(data, start, step, width);
                QVERIFY(runs.size() <= std::size_t(width));
                QVERIFY(runs.empty() || runs[0].x >= 0);
            }
        }
    }
}

// ---- analog --------------------------------------------------------------------------------------------------------

namespace {

/// A mixed capture whose analog channel 0 holds the samples 0, 1, 2, ... (wrapping at 127).
void closeAnalog(SmpData &data, int count)
{
    data.begin(0, 1, {});
    for (int i = 0; i < count; ++i) {
        SmpWriter(data).aChnBuf(0)->samples[i] = std::int8_t(i % 128);
    }
    SmpWriter(data).aChnBuf(0)->count = count;
    SmpWriter(data).setSmpCount(count);
    data.finish(count);
}

double millivolts(int sample)
{
    return (sample + 128) * 1000 * 10.0 / 255.0 - 5000;
}

} // namespace

void TstSmpDataWave::anAnalogSampleStandsForItsMillivolts()
{
    SmpData data(0, 1);
    closeAnalog(data, 1);
    SmpWriter(data).aChnBuf(0)->voltDiv = 200;
    SmpAChnPoint out[1];
    SmpWriter(data).aChnBuf(0)->samples[0] = -128;
    QCOMPARE(data.aChnPoints(0, 0, 1, 1, out), 1);
    QCOMPARE(out[0].value, -1000.0);
    SmpWriter(data).aChnBuf(0)->samples[0] = 127;
    QCOMPARE(data.aChnPoints(0, 0, 1, 1, out), 1);
    QCOMPARE(out[0].value, 1000.0);
}

void TstSmpDataWave::aScaleOfAnySizeDoesNotWrap()
{
    SmpData data(0, 1);
    closeAnalog(data, 1);
    SmpAChnPoint out[1];
    SmpWriter(data).aChnBuf(0)->samples[0] = -128;
    for (const std::int32_t voltDiv : {500000000, std::numeric_limits<std::int32_t>::max()}) {
        SmpWriter(data).aChnBuf(0)->voltDiv = voltDiv;
        QCOMPARE(data.aChnPoints(0, 0, 1, 1, out), 1);
        QCOMPARE(out[0].value, voltDiv * -5.0);
    }
}

void TstSmpDataWave::oneSampleAColumnTakesTheBranchOfEverySample()
{
    SmpData data(0, 1);
    closeAnalog(data, 100);
    SmpAChnPoint out[10];
    // From 0.9 on, steps of a sample: the branch of several samples a column would not differ here but in x.
    QCOMPARE(data.aChnPoints(0, -2.6, 1.0, 10, out), 8);
    for (int n = 0; n < 8; ++n) {
        QCOMPARE(out[n].x, n + 2);
        QCOMPARE(out[n].value, millivolts(n));
    }
}

void TstSmpDataWave::severalColumnsToASampleSpreadThePoints()
{
    SmpData data(0, 1);
    closeAnalog(data, 100);
    SmpAChnPoint out[20];
    QCOMPARE(data.aChnPoints(0, 7.5, 0.25, 20, out), 6); // columns 0, 4, ... 16, and 20 that ends the line
    for (int n = 0; n < 6; ++n) {
        QCOMPARE(out[n].x, n * 4);
        QCOMPARE(out[n].value, millivolts(7 + n));
    }
}

void TstSmpDataWave::severalSamplesToAColumnTakeOneEach()
{
    SmpData data(0, 1);
    closeAnalog(data, 20);
    SmpAChnPoint out[20];
    QCOMPARE(data.aChnPoints(0, 3.0, 2.5, 20, out), 7);
    const int taken[] = {3, 5, 8, 10, 13, 15, 18};
    for (int n = 0; n < 7; ++n) {
        QCOMPARE(out[n].x, n);
        QCOMPARE(out[n].value, millivolts(taken[n]));
    }
}

void TstSmpDataWave::analogPointsBeforeTheFirstSampleStartFurtherRight()
{
    SmpData data(0, 1);
    closeAnalog(data, 20);
    SmpAChnPoint out[20];
    QCOMPARE(data.aChnPoints(0, -10.0, 5.0, 20, out), 4);
    QCOMPARE(out[0].x, 2);
    QCOMPARE(out[3].x, 5);
    QCOMPARE(out[3].value, millivolts(15));
    QCOMPARE(data.aChnPoints(0, -1e300, 1.0, 20, out), 1); // a point right of the view ends the line
    QVERIFY(out[0].x >= 20);
}

void TstSmpDataWave::analogPointsFromBehindTheLastSampleAreNone()
{
    SmpData data(0, 1);
    closeAnalog(data, 20);
    SmpAChnPoint out[20];
    QCOMPARE(data.aChnPoints(0, 20.0, 1.0, 20, out), 0);
    QCOMPARE(data.aChnPoints(0, 1e300, 1.0, 20, out), 0);
    QCOMPARE(data.aChnPoints(0, 19.9, 1.0, 20, out), 1);
}

void TstSmpDataWave::analogPointsOfAChannelWithoutDataAreNone()
{
    SmpData data(0, 1);
    SmpAChnPoint out[20];
    QCOMPARE(data.aChnPoints(0, 0.0, 1.0, 20, out), 0); // no buffer
    closeAnalog(data, 0);
    QCOMPARE(data.aChnPoints(0, 0.0, 1.0, 20, out), 0);
    QCOMPARE(data.aChnPoints(1, 0.0, 1.0, 20, out), 0);
    QCOMPARE(data.aChnPoints(-1, 0.0, 1.0, 20, out), 0);
    closeAnalog(data, 20);
    for (const double bad : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN()}) {
        QCOMPARE(data.aChnPoints(0, 0.0, bad, 20, out), 0);
    }
}

void TstSmpDataWave::analogPointsNeverExceedTheWidth()
{
    SmpData data(0, 1);
    closeAnalog(data, 30000);
    for (const int width : {0, 1, 2, 33}) {
        for (const double step : {0.01, 0.5, 1.0, 1.5, 900.0}) {
            std::vector<SmpAChnPoint> out(std::size_t(width) + 1, SmpAChnPoint{-7, 0});
            QVERIFY(data.aChnPoints(0, 0.0, step, width, out.data()) <= width);
            QCOMPARE(out.back().x, -7);
        }
    }
}

QTEST_APPLESS_MAIN(TstSmpDataWave)
#include "tst_SmpDataWave.moc"
