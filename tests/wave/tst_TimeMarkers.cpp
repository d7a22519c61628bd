#include "controls/Look.h"
#include "store/SmpData.h"
#include "wave/TimeMarkers.h"

#include <QtTest>

using namespace TimeMarkers;

namespace {

constexpr PixelScale single{96};
constexpr PixelScale doubled{192};

SmpEdgeInfo between(std::int64_t prev, std::int64_t next)
{
    return {prev, next, -1, 0};
}

} // namespace

class TstTimeMarkers : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { globalsFillTables(); }
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
    void theTipOfTheFlagStandsOnTheMarkersLine_data();
    void theTipOfTheFlagStandsOnTheMarkersLine();
    void theFlagHasAPointAndABody();
};

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
