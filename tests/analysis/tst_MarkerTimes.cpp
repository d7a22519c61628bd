#include "analysis/MarkerTimes.h"
#include "store/SmpData.h"

#include <QtTest>

#include <cmath>

using namespace MarkerTimes;

namespace {

constexpr std::int64_t megahertz = 1'000'000;

QStringList units()
{
    return {QStringLiteral("ps"), QStringLiteral("ns"), QStringLiteral("us"), QStringLiteral("ms"),
            QStringLiteral("s")};
}

} // namespace

class TstMarkerTimes : public QObject {
    Q_OBJECT
private slots:
    void pairsAreLetteredAndTheirMarkersCounted_data();
    void pairsAreLetteredAndTheirMarkersCounted();
    void theSampleOfAColumnIsTheNearestWholeOneOfAnyWindow();
    void ofTwoEdgesTheNearerOneAnswers();
    void theStartOfTheDataCountsAsAnEdge();
    void withoutAnyEdgeThereIsNoAnswer();
    void aPositionIsToldAsTimeAndSampleFromTheTrigger();
    void timesCountFromTheTriggerInWholePicoseconds();
    void theDistanceOfTwoMarkersHasNoSign();
    void textsLoseNoDigit_data();
    void textsLoseNoDigit();
    void aWholeCaptureAtAnyRateHasATextWithoutAnExponent();
};

void TstMarkerTimes::pairsAreLetteredAndTheirMarkersCounted_data()
{
    QTest::addColumn<int>("id");
    QTest::addColumn<QString>("name");
    QTest::newRow("first") << 0 << QStringLiteral("A1");
    QTest::newRow("its pair") << 1 << QStringLiteral("A2");
    QTest::newRow("of the keys the last") << 9 << QStringLiteral("E2");
    QTest::newRow("Z") << 51 << QStringLiteral("Z2");
    QTest::newRow("past Z") << 52 << QStringLiteral("[1");
    QTest::newRow("far past Z") << 65 << QStringLiteral("a2");
}

void TstMarkerTimes::pairsAreLetteredAndTheirMarkersCounted()
{
    QFETCH(int, id);
    QTEST(label(id), "name");
}

void TstMarkerTimes::theSampleOfAColumnIsTheNearestWholeOneOfAnyWindow()
{
    QCOMPARE(sampleAt(10, 0.4, 1.0), 10.0);
    QCOMPARE(sampleAt(10, 0.5, 1.0), 11.0);
    QCOMPARE(sampleAt(3, 100.0, 0.01), 100.0);
    QCOMPARE(sampleAt(1, 1e300, 1.0), 9e18);
    QCOMPARE(sampleAt(1, -1e300, 1.0), -9e18);
    QCOMPARE(sampleAt(0, std::nan(""), 1.0), 0.0);
}

void TstMarkerTimes::ofTwoEdgesTheNearerOneAnswers()
{
    NearEdge edge;
    QVERIFY(nearestEdge(104.0, {100, 110, -1, 0}, edge));
    QCOMPARE(edge.position, 100.0);
    QCOMPARE(edge.distance, 4.0);
    QVERIFY(nearestEdge(105.0, {100, 110, -1, 0}, edge)); // of two equally near ones the next
    QCOMPARE(edge.position, 110.0);
    QCOMPARE(edge.distance, 5.0);
}

void TstMarkerTimes::theStartOfTheDataCountsAsAnEdge()
{
    NearEdge edge;
    QVERIFY(nearestEdge(8.0, {-1, 500, -1, 0}, edge));
    QCOMPARE(edge.position, 0.0);
    QCOMPARE(edge.distance, 8.0);
}

void TstMarkerTimes::aPositionIsToldAsTimeAndSampleFromTheTrigger()
{
    QCOMPARE(positionText(150.0, 100, megahertz, units()), QStringLiteral("50us  [50]"));
    QCOMPARE(positionText(99.0, 100, megahertz, units()), QStringLiteral("-1us  [-1]"));
    QCOMPARE(positionText(100.0, 100, megahertz, units()), QStringLiteral("0ps  [0]"));
}

void TstMarkerTimes::withoutAnyEdgeThereIsNoAnswer()
{
    NearEdge edge{7.0, 3.0};
    QVERIFY(!nearestEdge(8.0, {-1, -1, -1, 0}, edge));
    QCOMPARE(edge.position, 7.0);
}

void TstMarkerTimes::timesCountFromTheTriggerInWholePicoseconds()
{
    QCOMPARE(timeOf(150.0, 100, megahertz), 50e6);
    QCOMPARE(timeOf(50.0, 100, megahertz), -50e6);
    QCOMPARE(timeOf(100.0, 100, megahertz), 0.0);
    QCOMPARE(timeOf(1.0, 0, 300 * megahertz), 3333.0);
    QCOMPARE(timeOf(-1.0, 0, 300 * megahertz), -3333.0);
    QCOMPARE(timeOf(2.0, 0, 300 * megahertz), 6666.0); // truncated, not rounded
    QCOMPARE(timeOf(-2.0, 0, 300 * megahertz), -6666.0);
}

void TstMarkerTimes::theDistanceOfTwoMarkersHasNoSign()
{
    QCOMPARE(distanceOf(10.0, 30.0, megahertz), 20e6);
    QCOMPARE(distanceOf(30.0, 10.0, megahertz), 20e6);
    QCOMPARE(distanceOf(2.0, 0.0, 300 * megahertz), 6666.0);
}

void TstMarkerTimes::textsLoseNoDigit_data()
{
    QTest::addColumn<double>("ps");
    QTest::addColumn<QString>("expected");
    QTest::newRow("nothing") << 0.0 << QStringLiteral("0ps");
    QTest::newRow("below a unit") << 999.0 << QStringLiteral("999ps");
    QTest::newRow("a unit") << 1000.0 << QStringLiteral("1ns");
    QTest::newRow("negative") << -1000.0 << QStringLiteral("-1ns");
    QTest::newRow("negative below a unit") << -7.0 << QStringLiteral("-7ps");
    QTest::newRow("all digits") << 1234567.0 << QStringLiteral("1.234567us");
    QTest::newRow("all digits of a negative one") << -3333333333.0 << QStringLiteral("-3.333333333ms");
    QTest::newRow("no trailing zeros") << 150e6 << QStringLiteral("150us");
    QTest::newRow("just below a second") << 999999999999.0 << QStringLiteral("999.999999999ms");
    QTest::newRow("seconds are the last unit") << 12e15 << QStringLiteral("12000s");
    QTest::newRow("sixteen digits") << 1234567890123456.0 << QStringLiteral("1234.567890123456s");
    QTest::newRow("never more than seventeen") << 1.5e24 << QStringLiteral("1500000000000s");
    QTest::newRow("never more than seventeen, negative") << -1.5e24 << QStringLiteral("-1500000000000s");
}

void TstMarkerTimes::textsLoseNoDigit()
{
    QFETCH(double, ps);
    QTEST(timeText(ps, units()), "expected");
}

void TstMarkerTimes::aWholeCaptureAtAnyRateHasATextWithoutAnExponent()
{
    constexpr auto last = double((std::int64_t(1) << 40) - 1);
    for (const std::int64_t rate :
         {std::int64_t(1), std::int64_t(3), std::int64_t(20'000), std::int64_t(999'999'937)}) {
        for (const double sign : {1.0, -1.0}) {
            const QString text = timeText(timeOf(sign * last, 0, rate), units());
            QVERIFY2(!text.contains(QLatin1Char('e')), qPrintable(text));
            QVERIFY2(text.endsWith(QLatin1Char('s')), qPrintable(text));
            QVERIFY(text.size() <= 1 + 17 + 1 + 1);
        }
    }
    QCOMPARE(timeText(timeOf(last, 0, 1), units()), QStringLiteral("1099511627775s"));
}

QTEST_APPLESS_MAIN(TstMarkerTimes)
#include "tst_MarkerTimes.moc"
