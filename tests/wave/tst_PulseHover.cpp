#include "wave/PulseHover.h"

#include <QtTest>

#include <cmath>
#include <limits>

class TstPulseHover : public QObject {
    Q_OBJECT
private slots:
    void theFirstArrowKeepsTwoPixelsFromItsEdges();
    void theSecondArrowKeepsThreePixelsFromTheSharedEdge();
    void arrowsPassTheViewsEdgesByTenPixelsAtMost();
    void theSecondArrowIsAbsentWhenItWouldStartOutsideTheView();
    void theSecondArrowIsAbsentWithoutASecondEdge();
    void veryLongPulsesStayWithinTheViewsBounds();
    void theSampleUnderAPixelIsTruncated();
    void positionsOutsideTheRangeOfSamplesAreNone_data();
    void positionsOutsideTheRangeOfSamplesAreNone();
};

void TstPulseHover::theFirstArrowKeepsTwoPixelsFromItsEdges()
{
    const ArrowSpans spans = arrowSpans({1100, 1300, -1, 1}, {1000.0, 10.0, 500});
    QCOMPARE(spans.span1Start, 12.0);
    QCOMPARE(spans.span1End, 28.0);
}

void TstPulseHover::theSecondArrowKeepsThreePixelsFromTheSharedEdge()
{
    const ArrowSpans spans = arrowSpans({1100, 1300, 1500, 1}, {1000.0, 10.0, 500});
    QCOMPARE(spans.span2Start, 33.0);
    QCOMPARE(spans.span2End, 48.0);
}

void TstPulseHover::arrowsPassTheViewsEdgesByTenPixelsAtMost()
{
    const ArrowSpans both = arrowSpans({0, 1300, 900000, 1}, {1000.0, 10.0, 500});
    QCOMPARE(both.span1Start, -10.0);
    QCOMPARE(both.span2End, 510.0);
    const ArrowSpans first = arrowSpans({0, 900000, 900100, 1}, {1000.0, 10.0, 500});
    QCOMPARE(first.span1End, 510.0);
}

void TstPulseHover::theSecondArrowIsAbsentWhenItWouldStartOutsideTheView()
{
    QCOMPARE(arrowSpans({0, 4969, 8000, 1}, {0.0, 10.0, 500}).span2Start, 499.9);
    QCOMPARE(arrowSpans({0, 4970, 8000, 1}, {0.0, 10.0, 500}).span2Start, 0.0);
    QCOMPARE(arrowSpans({0, 4970, 8000, 1}, {0.0, 10.0, 500}).span2End, 0.0);
}

void TstPulseHover::theSecondArrowIsAbsentWithoutASecondEdge()
{
    const ArrowSpans spans = arrowSpans({-1, 100, -1, 1}, {-5000.0, 10.0, 2000});
    QCOMPARE(spans.span2Start, 0.0);
    QCOMPARE(spans.span2End, 0.0);
}

void TstPulseHover::veryLongPulsesStayWithinTheViewsBounds()
{
    const std::int64_t last = (std::int64_t(1) << 40) - 1;
    const ArrowSpans spans = arrowSpans({0, last, -1, 1}, {5e11, 0.01, 2000});
    QCOMPARE(spans.span1Start, -10.0);
    QCOMPARE(spans.span1End, 2010.0);
}

void TstPulseHover::theSampleUnderAPixelIsTruncated()
{
    QCOMPARE(sampleUnder(0, {100.9, 1.0, 500}), std::int64_t(100));
    QCOMPARE(sampleUnder(3, {100.0, 0.5, 500}), std::int64_t(101));
    QCOMPARE(sampleUnder(199, {0.0, 0.01, 500}), std::int64_t(1));
}

void TstPulseHover::positionsOutsideTheRangeOfSamplesAreNone_data()
{
    QTest::addColumn<double>("start");
    QTest::newRow("before the data") << -1.0;
    QTest::newRow("far before") << -1e30;
    QTest::newRow("past 40 bits") << 1099511627776.0;
    QTest::newRow("infinite") << std::numeric_limits<double>::infinity();
    QTest::newRow("no number") << std::nan("");
}

void TstPulseHover::positionsOutsideTheRangeOfSamplesAreNone()
{
    QFETCH(double, start);
    QCOMPARE(sampleUnder(0, {start, 1.0, 500}), std::int64_t(-1));
}

QTEST_APPLESS_MAIN(TstPulseHover)
#include "tst_PulseHover.moc"
