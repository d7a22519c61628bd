#include "wave/PulseHover.h"

#include <QtTest>

#include <cmath>
#include <limits>

namespace {

constexpr std::int64_t mhz = 1000000;

QStringList timeUnits()
{
    return {QStringLiteral("ps"), QStringLiteral("ns"), QStringLiteral("us"), QStringLiteral("ms"),
            QStringLiteral("s")};
}

QStringList freqUnits()
{
    return {QStringLiteral("Hz"), QStringLiteral("KHz"), QStringLiteral("MHz"), QStringLiteral("GHz")};
}

QStringList texts(const SmpEdgeInfo &info, std::int64_t rate)
{
    return pulseTexts(pulseTimes(info, rate), timeUnits(), freqUnits());
}

QStringList list(const char *width, const char *period, const char *duty, const char *frequ)
{
    return {QLatin1String(width), QLatin1String(period), QLatin1String(duty), QLatin1String(frequ)};
}

} // namespace

class TstPulseHover : public QObject {
    Q_OBJECT
private slots:
    void aHighPulseTellsItsShareAsDuty();
    void aLowPulseTellsTheOtherShareAsDuty();
    void aPulseWithoutASecondEdgeAfterItHasOnlyAWidth();
    void noEdgeBeforeThePulseCountsFromTheStartOfTheData();
    void anEndMarkThatIsNoLaterEdgeGivesNoPeriod();
    void anAlwaysLowStartHasADutyAboveZero();
    void unitsGrowWhileAThousandIsReached_data();
    void unitsGrowWhileAThousandIsReached();
    void valuesThatAreNotAboveZeroAreUnknown();
    void nineSignificantDigitsAreShown();
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

void TstPulseHover::aHighPulseTellsItsShareAsDuty()
{
    QCOMPARE(texts({100, 130, 200, 1}, mhz), list("30us", "100us", "30%", "10KHz"));
}

void TstPulseHover::aLowPulseTellsTheOtherShareAsDuty()
{
    QCOMPARE(texts({100, 130, 200, 0}, mhz), list("30us", "100us", "70%", "10KHz"));
}

void TstPulseHover::aPulseWithoutASecondEdgeAfterItHasOnlyAWidth()
{
    QCOMPARE(texts({100, 130, -1, 1}, mhz), list("30us", "###", "###", "###"));
}

void TstPulseHover::noEdgeBeforeThePulseCountsFromTheStartOfTheData()
{
    QCOMPARE(texts({-1, 40, 100, 0}, mhz), list("40us", "100us", "60%", "10KHz"));
}

void TstPulseHover::anEndMarkThatIsNoLaterEdgeGivesNoPeriod()
{
    QCOMPARE(texts({100, 130, 130, 1}, mhz), list("30us", "###", "###", "###"));
}

void TstPulseHover::anAlwaysLowStartHasADutyAboveZero()
{
    const PulseTimes times = pulseTimes({0, 999, 1000, 0}, mhz);
    QVERIFY(qAbs(times.duty - 0.001) < 1e-9);
}

void TstPulseHover::unitsGrowWhileAThousandIsReached_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("text");
    QTest::newRow("below the first step") << 999.0 << QStringLiteral("999ps");
    QTest::newRow("exactly a thousand") << 1000.0 << QStringLiteral("1ns");
    QTest::newRow("two steps") << 1.5e6 << QStringLiteral("1.5us");
    QTest::newRow("one second") << 1e12 << QStringLiteral("1s");
    QTest::newRow("no unit beyond seconds") << 1.2e16 << QStringLiteral("12000s");
}

void TstPulseHover::unitsGrowWhileAThousandIsReached()
{
    QFETCH(double, value);
    QFETCH(QString, text);
    QCOMPARE(unitText(value, timeUnits()), text);
}

void TstPulseHover::valuesThatAreNotAboveZeroAreUnknown()
{
    QCOMPARE(unitText(0.0, timeUnits()), QStringLiteral("###"));
    QCOMPARE(unitText(-1.0, timeUnits()), QStringLiteral("###"));
    QCOMPARE(unitText(std::nan(""), timeUnits()), QStringLiteral("###"));
    QCOMPARE(noPulseTexts(), list("###", "###", "###", "###"));
}

void TstPulseHover::nineSignificantDigitsAreShown()
{
    QCOMPARE(unitText(123456789.0, timeUnits()), QStringLiteral("123.456789us"));
    QCOMPARE(texts({0, 1, 3, 1}, mhz), list("1us", "3us", "33.3333333%", "333.333333KHz"));
}

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
