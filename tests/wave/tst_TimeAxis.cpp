#include "wave/TimeAxis.h"

#include <QtTest>

#include <cmath>
#include <limits>

using namespace TimeAxis;

namespace {

constexpr double inf = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr std::int64_t longest = (std::int64_t(1) << 40) - 1;

double sampleUnder(const TimeWindow &window, int x)
{
    return window.start + x * window.ratio;
}

bool isFinite(const TimeWindow &window)
{
    return std::isfinite(window.start) && std::isfinite(window.ratio) && window.ratio >= 0.0;
}

} // namespace

class TstTimeAxis : public QObject {
    Q_OBJECT
private slots:
    void columnsAreCutToTheView();
    void fittingDividesTheCaptureByTheWidth();
    void aTypedRatioStaysWithinItsLimits();
    void aRatioThatIsNoNumberFitsTheCapture();
    void zoomingHoldsTheSampleUnderThePointer();
    void sevenFramesAreExactlyAFactorOfTwo_data();
    void sevenFramesAreExactlyAFactorOfTwo();
    void neighbouringFramesDifferByTheSeventhRootOfTwo();
    void aZoomInThatReachesTheDeepestRatioEndsThere();
    void aRangeFillsTheMiddleHalfOfTheView();
    void halfAnOddViewIsAWholeNumber();
    void aRangeToldBackwardsIsTurnedRound();
    void aWindowWithinTheDataIsSettled();
    void anOvershootIsPulledBackIntoTheData_data();
    void anOvershootIsPulledBackIntoTheData();
    void settlingTwiceChangesNothingMore_data();
    void settlingTwiceChangesNothingMore();
    void settlingWithoutDataMakesTheRatioZero();
    void settlingAViewWithoutColumnsChangesNothing();
    void aNewCaptureIsPlacedByTheViewState_data();
    void aNewCaptureIsPlacedByTheViewState();
    void aRatioThatCannotHoldTheCaptureIsReplaced_data();
    void aRatioThatCannotHoldTheCaptureIsReplaced();
    void withoutClampingTheRatioOfANewCaptureStays();
    void theRightEndIsTruncated();
    void degenerateInputsGiveFiniteWindows();
};

void TstTimeAxis::columnsAreCutToTheView()
{
    QCOMPARE(clampColumn(-5, 100), 0);
    QCOMPARE(clampColumn(99, 100), 99);
    QCOMPARE(clampColumn(100, 100), 99);
    QCOMPARE(clampColumn(7, 0), 0);
    QCOMPARE(clampColumn(7, -3), 0);
}

void TstTimeAxis::fittingDividesTheCaptureByTheWidth()
{
    QCOMPARE(fitRatio(5000, 1000), 5.0);
    QCOMPARE(fitRatio(1, 1000), 0.001);
    QCOMPARE(fitRatio(longest, 1), double(longest));
    QCOMPARE(fitRatio(5000, 0), 0.0);
    QCOMPARE(fitRatio(5000, -1), 0.0);
    QCOMPARE(fit(5000, 1000), (TimeWindow{0.0, 5.0}));
}

void TstTimeAxis::aTypedRatioStaysWithinItsLimits()
{
    QCOMPARE(clampRatio(2.0, 5000, 1000), 2.0);
    QCOMPARE(clampRatio(0.001, 5000, 1000), 0.01);
    QCOMPARE(clampRatio(-3.0, 5000, 1000), 0.01);
    QCOMPARE(clampRatio(9.0, 5000, 1000), 5.0);
    QCOMPARE(clampRatio(inf, 5000, 1000), 5.0);
    QCOMPARE(clampRatio(2.0, 0, 1000), 0.01);
}

void TstTimeAxis::aRatioThatIsNoNumberFitsTheCapture()
{
    QCOMPARE(clampRatio(notANumber, 5000, 1000), 5.0);
}

void TstTimeAxis::zoomingHoldsTheSampleUnderThePointer()
{
    const TimeWindow before{100.0, 4.0};
    const TimeWindow after = zoomAbout(before, 300, 1.0);
    QCOMPARE(after.ratio, 1.0);
    QCOMPARE(after.start, 1000.0);
    QCOMPARE(sampleUnder(after, 300), sampleUnder(before, 300));
}

void TstTimeAxis::sevenFramesAreExactlyAFactorOfTwo_data()
{
    QTest::addColumn<double>("ratio");
    QTest::addColumn<bool>("zoomIn");
    for (const double ratio : {8.0, 5.0, 0.3, 1.0 / 3.0, 1e9}) {
        QTest::addRow("in %g", ratio) << ratio << true;
        QTest::addRow("out %g", ratio) << ratio << false;
    }
}

void TstTimeAxis::sevenFramesAreExactlyAFactorOfTwo()
{
    QFETCH(double, ratio);
    QFETCH(bool, zoomIn);
    const ZoomFrame last = zoomFrame({0.0, ratio}, 0, animStepCount, zoomIn);
    QVERIFY(last.window.ratio == (zoomIn ? ratio / 2.0 : ratio * 2.0));
    QVERIFY(!last.atLimit);
}

void TstTimeAxis::neighbouringFramesDifferByTheSeventhRootOfTwo()
{
    const double factor = std::pow(2.0, 1.0 / 7.0);
    const TimeWindow base{500.0, 8.0};
    TimeWindow before = base;
    for (int step = 1; step <= animStepCount; ++step) {
        const TimeWindow now = zoomFrame(base, 250, step, true).window;
        QVERIFY(std::abs(before.ratio / now.ratio - factor) < 1e-12);
        QVERIFY(std::abs(sampleUnder(now, 250) - 2500.0) < 1e-9);
        before = now;
    }
}

void TstTimeAxis::aZoomInThatReachesTheDeepestRatioEndsThere()
{
    const TimeWindow base{1000.0, 0.012};
    QVERIFY(!zoomFrame(base, 100, 1, true).atLimit);
    const ZoomFrame deep = zoomFrame(base, 100, 2, true);
    QVERIFY(deep.atLimit);
    QCOMPARE(deep.window.ratio, 0.01);
    QCOMPARE(sampleUnder(deep.window, 100), sampleUnder(base, 100));
    QVERIFY(!zoomFrame(base, 100, 7, false).atLimit);
}

void TstTimeAxis::aRangeFillsTheMiddleHalfOfTheView()
{
    const TimeWindow window = showRange(1000.0, 1999.0, 1000);
    QCOMPARE(window.ratio, 2.0);
    QCOMPARE(window.start, 500.0);
    QCOMPARE(sampleUnder(window, 250), 1000.0);
    QCOMPARE(sampleUnder(window, 750), 2000.0);
}

void TstTimeAxis::halfAnOddViewIsAWholeNumber()
{
    QCOMPARE(showRange(0.0, 99.0, 101).ratio, 2.0);
    QCOMPARE(showRange(0.0, 99.0, 101).start, -50.0);
    QCOMPARE(centredOn({7.0, 3.0}, 1000.0, 101).start, 850.0);
}

void TstTimeAxis::aRangeToldBackwardsIsTurnedRound()
{
    QCOMPARE(showRange(1999.0, 1000.0, 1000), showRange(1000.0, 1999.0, 1000));
}

void TstTimeAxis::aWindowWithinTheDataIsSettled()
{
    QVERIFY(!settle({0.0, 5.0}, 5000, 1000).changed);
    QVERIFY(!settle({4000.0, 1.0}, 5000, 1000).changed);
    QVERIFY(!settle({123.4, 0.01}, 5000, 1000).changed);
}

void TstTimeAxis::anOvershootIsPulledBackIntoTheData_data()
{
    QTest::addColumn<double>("start");
    QTest::addColumn<double>("ratio");
    QTest::addColumn<double>("settledStart");
    QTest::addColumn<double>("settledRatio");
    QTest::newRow("before the data, as the Home key asks") << -1000.0 << 1.0 << 0.0 << 1.0;
    QTest::newRow("past the data, as the End key asks") << 5000.0 << 1.0 << 4000.0 << 1.0;
    QTest::newRow("zoomed out too far, on the left") << -2500.0 << 10.0 << 0.0 << 5.0;
    QTest::newRow("zoomed out too far, on the right") << 100.0 << 10.0 << 0.0 << 5.0;
    QTest::newRow("far past the data") << 1e17 << 2.0 << 3000.0 << 2.0;
    QTest::newRow("by one sample") << 4001.0 << 1.0 << 4000.0 << 1.0;
}

void TstTimeAxis::anOvershootIsPulledBackIntoTheData()
{
    QFETCH(double, start);
    QFETCH(double, ratio);
    const Settled result = settle({start, ratio}, 5000, 1000);
    QVERIFY(result.changed);
    QTEST(result.window.start, "settledStart");
    QTEST(result.window.ratio, "settledRatio");
}

void TstTimeAxis::settlingTwiceChangesNothingMore_data()
{
    QTest::addColumn<std::int64_t>("count");
    QTest::addColumn<int>("width");
    for (const std::int64_t count : {std::int64_t(1), std::int64_t(7), std::int64_t(999983), longest}) {
        for (const int width : {1, 3, 1366, 1919}) {
            QTest::addRow("%lld samples, %d columns", static_cast<long long>(count), width) << count << width;
        }
    }
}

void TstTimeAxis::settlingTwiceChangesNothingMore()
{
    QFETCH(std::int64_t, count);
    QFETCH(int, width);
    for (const TimeWindow &window : {TimeWindow{-5.0, 1e13}, TimeWindow{1e13, 0.3}, TimeWindow{1e13, 1e13}}) {
        const Settled once = settle(window, count, width);
        QVERIFY(once.changed);
        QVERIFY(once.window.start >= 0.0);
        QVERIFY(!settle(once.window, count, width).changed);
    }
}

void TstTimeAxis::settlingWithoutDataMakesTheRatioZero()
{
    const Settled result = settle({100.0, 3.0}, 0, 1000);
    QVERIFY(result.changed);
    QCOMPARE(result.window, (TimeWindow{0.0, 0.0}));
}

void TstTimeAxis::settlingAViewWithoutColumnsChangesNothing()
{
    QVERIFY(!settle({-100.0, 3.0}, 5000, 0).changed);
    QCOMPARE(settle({-100.0, 3.0}, 5000, -4).window, (TimeWindow{-100.0, 3.0}));
}

void TstTimeAxis::aNewCaptureIsPlacedByTheViewState_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<std::int64_t>("trigger");
    QTest::addColumn<double>("start");
    QTest::addColumn<double>("ratio");
    const auto at = [](std::int64_t trigger) { return trigger; };
    // The window before: 2000 samples from 3000 on, the trigger before at 2500; 10000 samples in 1000 columns.
    QTest::newRow("0: the trigger in the middle") << 0 << at(5000) << 4000.0 << 2.0;
    QTest::newRow("0: not before the data") << 0 << at(300) << 0.0 << 2.0;
    QTest::newRow("0: not past the data") << 0 << at(9900) << 8000.0 << 2.0;
    QTest::newRow("1: everything") << 1 << at(5000) << 0.0 << 10.0;
    QTest::newRow("2: in place relative to the trigger") << 2 << at(2600) << 3100.0 << 2.0;
    QTest::newRow("2: not before the data") << 2 << at(-600) << 0.0 << 2.0;
    QTest::newRow("2: not past the data") << 2 << at(9900) << 8000.0 << 2.0;
    QTest::newRow("an unknown state is as 0") << 3 << at(5000) << 4000.0 << 2.0;
    QTest::newRow("a negative state is as 0") << -1 << at(5000) << 4000.0 << 2.0;
}

void TstTimeAxis::aNewCaptureIsPlacedByTheViewState()
{
    QFETCH(int, state);
    QFETCH(std::int64_t, trigger);
    const TimeWindow placed = place({3000.0, 2.0}, 10000, 1000, {state, trigger, 2500, true});
    QTEST(placed.start, "start");
    QTEST(placed.ratio, "ratio");
}

void TstTimeAxis::aRatioThatCannotHoldTheCaptureIsReplaced_data()
{
    QTest::addColumn<double>("ratio");
    QTest::newRow("never set") << 0.0;
    QTest::newRow("below the deepest zoom") << 0.009;
    QTest::newRow("wider than the capture") << 10.5;
    QTest::newRow("infinite") << inf;
    QTest::newRow("no number") << notANumber;
}

void TstTimeAxis::aRatioThatCannotHoldTheCaptureIsReplaced()
{
    QFETCH(double, ratio);
    const TimeWindow placed = place({0.0, ratio}, 10000, 1000, {0, 5000, 0, true});
    QCOMPARE(placed.ratio, 10.0);
    QCOMPARE(placed.start, 0.0);
}

void TstTimeAxis::withoutClampingTheRatioOfANewCaptureStays()
{
    QCOMPARE(place({0.0, 50.0}, 10000, 1000, {0, 30000, 0, false}), (TimeWindow{-40000.0, 50.0}));
    QCOMPARE(place({0.0, 0.005}, 10000, 1000, {1, 5000, 0, false}), (TimeWindow{0.0, 0.005}));
    QCOMPARE(place({0.0, 0.0}, 10000, 1000, {1, 5000, 0, false}), (TimeWindow{0.0, 10.0}));
}

void TstTimeAxis::theRightEndIsTruncated()
{
    QCOMPARE(rightEnd({10.6, 0.1}, 3), std::int64_t(10));
    QCOMPARE(rightEnd({10.6, 0.1}, 5), std::int64_t(11));
    QCOMPARE(rightEnd({-0.9, 0.0}, 5), std::int64_t(0));
}

void TstTimeAxis::degenerateInputsGiveFiniteWindows()
{
    const double odd[] = {0.0, -1.0, 1.0, 1e300, -1e300, inf, -inf, notANumber};
    for (const double start : odd) {
        for (const double ratio : odd) {
            const TimeWindow window{start, ratio};
            for (const std::int64_t count : {std::int64_t(0), std::int64_t(1), longest}) {
                for (const int width : {-1000000, 0, 1, 1000, 65536}) {
                    QVERIFY(isFinite(finite(window)));
                    QVERIFY(isFinite(zoomAbout(window, clampColumn(500, width), ratio)));
                    QVERIFY(isFinite(zoomFrame(finite(window), 5, 3, true).window));
                    QVERIFY(isFinite(zoomFrame(finite(window), 5, 3, false).window));
                    QVERIFY(isFinite(showRange(start, ratio, width)));
                    QVERIFY(isFinite(centredOn(window, start, width)));
                    QVERIFY(std::isfinite(clampRatio(ratio, count, width)));
                    if (width > 0) {
                        QVERIFY(isFinite(settle(window, count, width).window));
                    }
                    for (int state = 0; state < 3; ++state) {
                        QVERIFY(isFinite(place(window, count, width, {state, count / 2, 0, true})));
                        QVERIFY(isFinite(place(window, count, width, {state, count / 2, longest, false})));
                    }
                    (void)rightEnd(window, width);
                }
            }
        }
    }
}

QTEST_APPLESS_MAIN(TstTimeAxis)
#include "tst_TimeAxis.moc"
