#include "controls/Look.h"
#include "store/SmpData.h"
#include "wave/TimeMarkers.h"

#include <QtTest>

using namespace TimeMarkers;

namespace {

constexpr PixelScale single{96};
constexpr PixelScale doubled{192};
constexpr std::int64_t megahertz = 1'000'000;

SmpEdgeInfo between(std::int64_t prev, std::int64_t next)
{
    return {prev, next, -1, 0};
}

QStringList units()
{
    return {QStringLiteral("ps"), QStringLiteral("ns"), QStringLiteral("us"), QStringLiteral("ms"),
            QStringLiteral("s")};
}

} // namespace

class TstTimeMarkers : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { globalsFillTables(); }
    void pairsAreLetteredAndTheirMarkersCounted_data();
    void pairsAreLetteredAndTheirMarkersCounted();
    void aNumberThatIsNoStateIsOff();
    void onlyAPlacedMarkerIsPlain();
    void aColumnIsTruncatedToALogicalOneBeforeItsSampleIsTaken();
    void theSampleOfAColumnIsTheNearestWholeOne();
    void aMarkerBeginsAtTheFirstDevicePixelOfItsColumn();
    void aMarkerFarOutsideStaysAnIntegerOutside_data();
    void aMarkerFarOutsideStaysAnIntegerOutside();
    void anEdgeWithinTenPixelsAttracts_data();
    void anEdgeWithinTenPixelsAttracts();
    void onAScaledScreenTheReachIsTenLogicalPixels();
    void ofTwoEquallyNearEdgesTheNextOneAttracts();
    void theStartOfTheDataAttractsLikeAnEdge();
    void withoutAnyEdgeTheMarkerStaysWhereItIs();
    void withoutARatioNothingAttracts();
    void thePointerIsOverAMarkerAlsoOneStrokeBesideIt();
    void timesCountFromTheTriggerInWholePicoseconds();
    void theDistanceOfTwoMarkersHasNoSign();
    void textsLoseNoDigit_data();
    void textsLoseNoDigit();
    void aWholeCaptureAtAnyRateHasATextWithoutAnExponent();
    void theTipOfTheFlagStandsOnTheMarkersLine_data();
    void theTipOfTheFlagStandsOnTheMarkersLine();
    void theFlagHasAPointAndABody();
};

void TstTimeMarkers::pairsAreLetteredAndTheirMarkersCounted_data()
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

void TstTimeMarkers::pairsAreLetteredAndTheirMarkersCounted()
{
    QFETCH(int, id);
    QTEST(label(id), "name");
}

void TstTimeMarkers::aNumberThatIsNoStateIsOff()
{
    QCOMPARE(stateOf(-1), MarkerState::off);
    QCOMPARE(stateOf(0), MarkerState::off);
    QCOMPARE(stateOf(1), MarkerState::following);
    QCOMPARE(stateOf(3), MarkerState::placed);
    QCOMPARE(stateOf(4), MarkerState::off);
}

void TstTimeMarkers::onlyAPlacedMarkerIsPlain()
{
    QCOMPARE(colors(MarkerState::following).line, QColor(0, 255, 0));
    QCOMPARE(colors(MarkerState::following).face, QColor(0xf7, 0xf7, 0xf7));
    QCOMPARE(colors(MarkerState::hovered).line, QColor(0, 255, 0));
    QCOMPARE(colors(MarkerState::placed).line, QColor(31, 191, 31));
    QCOMPARE(colors(MarkerState::placed).face, QColor(0xdf, 0xdf, 0xdf));
}

void TstTimeMarkers::aColumnIsTruncatedToALogicalOneBeforeItsSampleIsTaken()
{
    QCOMPARE(sampleAt(10, {0.0, 4.0}, doubled), 20.0);
    QCOMPARE(sampleAt(11, {0.0, 4.0}, doubled), 20.0);
    QCOMPARE(sampleAt(12, {0.0, 4.0}, doubled), 24.0);
    QCOMPARE(sampleAt(11, {0.0, 4.0}, single), 44.0);
    QCOMPARE(sampleAt(11, {0.0, 4.0}, {144}), 44.0);
}

void TstTimeMarkers::theSampleOfAColumnIsTheNearestWholeOne()
{
    QCOMPARE(sampleAt(3, {0.0, 0.5}, single), 2.0);  // 1.5 + 0.5
    QCOMPARE(sampleAt(3, {0.0, 0.48}, single), 1.0); // 1.44 + 0.5
    QCOMPARE(sampleAt(0, {-40.0, 1.0}, single), -39.0);
    QCOMPARE(sampleAt(7, {1e12, 1.0}, single), 1e12 + 7);
}

void TstTimeMarkers::aMarkerBeginsAtTheFirstDevicePixelOfItsColumn()
{
    QCOMPARE(columnOf(109.0, {100.0, 2.0}, single), 4);
    QCOMPARE(columnOf(109.0, {100.0, 2.0}, doubled), 8);
    QCOMPARE(columnOf(95.0, {100.0, 2.0}, doubled), -4);
}

void TstTimeMarkers::aMarkerFarOutsideStaysAnIntegerOutside_data()
{
    QTest::addColumn<double>("sample");
    QTest::addColumn<double>("ratio");
    QTest::newRow("right, deepest zoom") << double((std::int64_t(1) << 40) - 1) << 0.01;
    QTest::newRow("left, deepest zoom") << -1e12 << 0.01;
    QTest::newRow("no ratio yet") << 5.0 << 0.0;
    QTest::newRow("beyond all") << 1e300 << 1e-300;
}

void TstTimeMarkers::aMarkerFarOutsideStaysAnIntegerOutside()
{
    QFETCH(double, sample);
    QFETCH(double, ratio);
    const int x = columnOf(sample, {0.0, ratio}, doubled);
    QCOMPARE(x > 100'000, sample > 0);
    QCOMPARE(x < -100'000, sample < 0);
    QVERIFY(std::abs(x) <= 10'000'000);
}

void TstTimeMarkers::anEdgeWithinTenPixelsAttracts_data()
{
    QTest::addColumn<double>("sample");
    QTest::addColumn<double>("ratio");
    QTest::addColumn<double>("expected");
    QTest::newRow("on the edge") << 100.0 << 1.0 << 100.0;
    QTest::newRow("ten pixels after") << 110.0 << 1.0 << 100.0;
    QTest::newRow("eleven pixels after") << 111.0 << 1.0 << 111.0;
    QTest::newRow("ten pixels before the next") << 290.0 << 1.0 << 300.0;
    QTest::newRow("eleven pixels before the next") << 289.0 << 1.0 << 289.0;
    QTest::newRow("half a sample a pixel") << 106.0 << 0.5 << 106.0;
    QTest::newRow("five samples at half a sample a pixel") << 105.0 << 0.5 << 100.0;
    QTest::newRow("ten samples a pixel") << 190.0 << 10.0 << 100.0;
}

void TstTimeMarkers::anEdgeWithinTenPixelsAttracts()
{
    QFETCH(double, sample);
    QFETCH(double, ratio);
    QTEST(snapped(sample, between(100, 300), ratio, single), "expected");
}

void TstTimeMarkers::onAScaledScreenTheReachIsTenLogicalPixels()
{
    QCOMPARE(snapped(110.0, between(100, 300), 1.0, doubled), 100.0);
    QCOMPARE(snapped(111.0, between(100, 300), 1.0, doubled), 111.0);
    QCOMPARE(snapped(115.0, between(100, 300), 1.0, {144}), 100.0); // 15 device pixels, scale 1
}

void TstTimeMarkers::ofTwoEquallyNearEdgesTheNextOneAttracts()
{
    QCOMPARE(snapped(105.0, between(100, 110), 1.0, single), 110.0);
    QCOMPARE(snapped(104.0, between(100, 110), 1.0, single), 100.0);
}

void TstTimeMarkers::theStartOfTheDataAttractsLikeAnEdge()
{
    QCOMPARE(snapped(8.0, between(-1, 500), 1.0, single), 0.0);
    QCOMPARE(snapped(11.0, between(-1, 500), 1.0, single), 11.0);
}

void TstTimeMarkers::withoutAnyEdgeTheMarkerStaysWhereItIs()
{
    QCOMPARE(snapped(3.0, between(-1, -1), 1.0, single), 3.0);
}

void TstTimeMarkers::withoutARatioNothingAttracts()
{
    QCOMPARE(snapped(3.0, between(0, 10), 0.0, single), 3.0);
    QCOMPARE(snapped(10.0, between(0, 10), 0.0, single), 10.0);
}

void TstTimeMarkers::thePointerIsOverAMarkerAlsoOneStrokeBesideIt()
{
    for (int x = 96; x <= 104; ++x) {
        QCOMPARE(covers(x, 100, single), x >= 99 && x <= 101);
        QCOMPARE(covers(x, 100, doubled), x >= 98 && x <= 103);
    }
}

void TstTimeMarkers::timesCountFromTheTriggerInWholePicoseconds()
{
    QCOMPARE(timeOf(150.0, 100, megahertz), 50e6);
    QCOMPARE(timeOf(50.0, 100, megahertz), -50e6);
    QCOMPARE(timeOf(100.0, 100, megahertz), 0.0);
    QCOMPARE(timeOf(1.0, 0, 300 * megahertz), 3333.0);
    QCOMPARE(timeOf(-1.0, 0, 300 * megahertz), -3333.0);
    QCOMPARE(timeOf(2.0, 0, 300 * megahertz), 6666.0); // truncated, not rounded
    QCOMPARE(timeOf(-2.0, 0, 300 * megahertz), -6666.0);
}

void TstTimeMarkers::theDistanceOfTwoMarkersHasNoSign()
{
    QCOMPARE(distanceOf(10.0, 30.0, megahertz), 20e6);
    QCOMPARE(distanceOf(30.0, 10.0, megahertz), 20e6);
    QCOMPARE(distanceOf(2.0, 0.0, 300 * megahertz), 6666.0);
}

void TstTimeMarkers::textsLoseNoDigit_data()
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

void TstTimeMarkers::textsLoseNoDigit()
{
    QFETCH(double, ps);
    QTEST(timeText(ps, units()), "expected");
}

void TstTimeMarkers::aWholeCaptureAtAnyRateHasATextWithoutAnExponent()
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

void TstTimeMarkers::theTipOfTheFlagStandsOnTheMarkersLine_data()
{
    QTest::addColumn<int>("dpi");
    for (const int dpi : {96, 120, 144, 192, 240, 288}) {
        QTest::addRow("%d", dpi) << dpi;
    }
}

void TstTimeMarkers::theTipOfTheFlagStandsOnTheMarkersLine()
{
    QFETCH(int, dpi);
    const PixelScale scale{dpi};
    const int x = 50 * scale.s();
    const QRect place = flagPlace(x, scale.dp(36), scale);
    QCOMPARE(place.x() + flagOutline(scale)[3].x(), scale.column(50));
    QCOMPARE(place.bottom(), scale.dp(36) - 1);
}

void TstTimeMarkers::theFlagHasAPointAndABody()
{
    QCOMPARE(flagSize(single), QSize(15, 17));
    QCOMPARE(flagSize(doubled), QSize(30, 34));
    QCOMPARE(flagOutline(single), QPolygon(QVector<QPoint>{{0, 0}, {14, 0}, {14, 9}, {7, 16}, {0, 9}}));
    QCOMPARE(flagOutline(doubled), QPolygon(QVector<QPoint>{{1, 1}, {29, 1}, {29, 19}, {15, 33}, {1, 19}}));
    QCOMPARE(flagBaseline(doubled), 18);
    QCOMPARE(flagPlace(100, 36, single), QRect(93, 19, 15, 17));
}

QTEST_APPLESS_MAIN(TstTimeMarkers)
#include "tst_TimeMarkers.moc"
