#include "wave/AnalogScale.h"

#include <QImage>
#include <QtTest>

#include <limits>

namespace {

constexpr int height = 500;
constexpr int tenVolts = 10'000;

TraceStrokes allStrokes(const std::vector<SmpAChnPoint> &points, const TraceScale &trace, int dpi = 96)
{
    TraceStrokes strokes{{QLineF(1, 2, 3, 4)}, {QRect(1, 2, 3, 4)}}; // what a former paint has left
    traceStrokes(points, trace, {dpi}, 0, 1000, strokes);
    return strokes;
}

std::vector<QLineF> strokes(const std::vector<SmpAChnPoint> &points, const TraceScale &trace, int dpi = 96)
{
    return allStrokes(points, trace, dpi).lines;
}

} // namespace

class TstAnalogScale : public QObject {
    Q_OBJECT
private slots:
    void aTextOfVoltsPerDivisionIsReadInMillivolts_data();
    void aTextOfVoltsPerDivisionIsReadInMillivolts();
    void millivoltsPerDivisionAreToldInVoltsWhereTheyAreWhole();
    void aFlagKeepsItsPartOfTheHeight_data();
    void aFlagKeepsItsPartOfTheHeight();
    void flagsStartAtThreeAndSevenTenths();
    void onlyAPlaceWithinItsHeightIsOne();
    void aVoltageAndItsRowBelongTogether_data();
    void aVoltageAndItsRowBelongTogether();
    void aVoltageBeyondTheAreaStandsAtItsEdge();
    void withoutAFullScaleOrAHeightNothingIsDivided();
    void eachPairOfNeighboursIsOneStrokeAboveItsSamples_data();
    void eachPairOfNeighboursIsOneStrokeAboveItsSamples();
    void aReversedTraceIsMirroredAboutItsZeroLevel();
    void aSinglePointAndAFullScaleOfZeroDrawNothing();
    void aStrokeThatLeavesTheAreaIsCutOnItsWay();
    void strokesBesideTheExposedColumnsAreLeftOut();
    void steepStrokesFromColumnToColumnAreBars_data();
    void steepStrokesFromColumnToColumnAreBars();
    void aGentleStrokeBetweenColumnsStaysALine();
    void noBarLeavesTheArea_data();
    void noBarLeavesTheArea();
    void barsReachFromPointToPointWithoutAGap();
};

void TstAnalogScale::aTextOfVoltsPerDivisionIsReadInMillivolts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("millivolts");
    QTest::newRow("millivolts") << "50mV/div" << 50;
    QTest::newRow("volts") << "20V/div" << 20'000;
    QTest::newRow("another case") << "20v/div" << 0;
    QTest::newRow("millivolts in another case end as volts") << "5MV/div" << 5000;
    QTest::newRow("no unit") << "20" << 0;
    QTest::newRow("no number") << "V/div" << 0;
    QTest::newRow("nothing") << "" << 0;
    QTest::newRow("more than fits") << "99999999999V/div" << 0;
    QTest::newRow("more volts than millivolts fit") << "2147483647V/div" << std::numeric_limits<int>::max();
}

void TstAnalogScale::aTextOfVoltsPerDivisionIsReadInMillivolts()
{
    QFETCH(QString, text);
    QTEST(voltDivOfText(text), "millivolts");
}

void TstAnalogScale::millivoltsPerDivisionAreToldInVoltsWhereTheyAreWhole()
{
    QCOMPARE(voltDivText(50), QStringLiteral("50mV/div"));
    QCOMPARE(voltDivText(1000), QStringLiteral("1V/div"));
    QCOMPARE(voltDivText(1500), QStringLiteral("1500mV/div"));
    QCOMPARE(voltDivText(50'000), QStringLiteral("50V/div"));
}

void TstAnalogScale::aFlagKeepsItsPartOfTheHeight_data()
{
    QTest::addColumn<int>("s");
    QTest::newRow("96") << 1;
    QTest::newRow("192") << 2;
}

void TstAnalogScale::aFlagKeepsItsPartOfTheHeight()
{
    QFETCH(int, s);
    const TagPlace place = placeAt(100 * s, 400 * s, s);
    QCOMPARE(place, (TagPlace{100, 400}));
    QCOMPARE(centreOf(place, 400 * s, s), 100 * s);
    QCOMPARE(centreOf(place, 800 * s, s), 200 * s);
    QCOMPARE(centreOf(place, 402 * s, s), 100 * s); // 100.5, truncated
}

void TstAnalogScale::flagsStartAtThreeAndSevenTenths()
{
    QCOMPARE(startPlace(0, 336, 1), (TagPlace{100, 336})); // 100.8
    QCOMPARE(startPlace(1, 336, 1), (TagPlace{235, 336})); // 235.2
    QCOMPARE(startPlace(0, 672, 2), (TagPlace{100, 336}));
}

void TstAnalogScale::onlyAPlaceWithinItsHeightIsOne()
{
    QVERIFY(isPlace({0, 1}));
    QVERIFY(isPlace({336, 336}));
    QVERIFY(!isPlace({0, 0}));
    QVERIFY(!isPlace({337, 336}));
    QVERIFY(!isPlace({-1, 336}));
    QVERIFY(!isPlace({-2, -1}));
}

void TstAnalogScale::aVoltageAndItsRowBelongTogether_data()
{
    QTest::addColumn<int>("s");
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("millivolts");
    QTest::newRow("the zero level") << 1 << 250 << 0;
    QTest::newRow("above it") << 1 << 150 << 2000;
    QTest::newRow("below it") << 1 << 300 << -1000;
    QTest::newRow("at 192 dpi") << 2 << 150 << 2000;
}

void TstAnalogScale::aVoltageAndItsRowBelongTogether()
{
    QFETCH(int, s);
    QFETCH(int, row);
    QFETCH(int, millivolts);
    QCOMPARE(voltageAt(row * s, 250 * s, tenVolts, height * s, s), millivolts);
    QCOMPARE(rowOfVoltage(millivolts, 250 * s, tenVolts, height * s, s), row * s);
}

void TstAnalogScale::aVoltageBeyondTheAreaStandsAtItsEdge()
{
    QCOMPARE(rowOfVoltage(32'767, 250, tenVolts, height, 1), 0);
    QCOMPARE(rowOfVoltage(-32'768, 250, tenVolts, height, 1), height - 1);
    QCOMPARE(rowOfVoltage(-32'768, 500, tenVolts, 2 * height, 2), 2 * height - 2);
    QCOMPARE(rowOfVoltage(-5000, 250, tenVolts, height, 1), height);
}

void TstAnalogScale::withoutAFullScaleOrAHeightNothingIsDivided()
{
    QCOMPARE(voltageAt(10, 250, 0, height, 1), 0);
    QCOMPARE(voltageAt(10, 250, tenVolts, 0, 1), 0);
    QCOMPARE(rowOfVoltage(1000, 250, 0, height, 1), 250);
    QCOMPARE(voltageAt(0, height, std::numeric_limits<int>::max(), 1, 1), std::numeric_limits<int>::max());
}

void TstAnalogScale::eachPairOfNeighboursIsOneStrokeAboveItsSamples_data()
{
    QTest::addColumn<int>("dpi");
    QTest::newRow("96") << 96;
    QTest::newRow("144 has scale one") << 144;
    QTest::newRow("192") << 192;
    QTest::newRow("288") << 288;
}

void TstAnalogScale::eachPairOfNeighboursIsOneStrokeAboveItsSamples()
{
    QFETCH(int, dpi);
    const PixelScale scale{dpi};
    const auto lines = strokes({{0, 0.0}, {30, 1000.0}, {40, -1000.0}}, {250, tenVolts, false, height}, dpi);
    QCOMPARE(lines.size(), std::size_t(2));
    QCOMPARE(lines[0], QLineF(scale.column(0), 250, scale.column(30), 200));
    QCOMPARE(lines[1], QLineF(scale.column(30), 200, scale.column(40), 300));
}

void TstAnalogScale::aReversedTraceIsMirroredAboutItsZeroLevel()
{
    const auto lines = strokes({{0, 0.0}, {30, 1000.0}}, {250, tenVolts, true, height});
    QCOMPARE(lines.size(), std::size_t(1));
    QCOMPARE(lines[0], QLineF(0, 250, 30, 300));
}

void TstAnalogScale::aSinglePointAndAFullScaleOfZeroDrawNothing()
{
    QVERIFY(strokes({}, {250, tenVolts, false, height}).empty());
    QVERIFY(strokes({{0, 0.0}}, {250, tenVolts, false, height}).empty());
    QVERIFY(strokes({{0, 0.0}, {1, 1.0}}, {250, 0, false, height}).empty());
    QVERIFY(strokes({{0, 0.0}, {1, 1.0}}, {250, tenVolts, false, 0}).empty());
}

void TstAnalogScale::aStrokeThatLeavesTheAreaIsCutOnItsWay()
{
    // 50 V where 0.5 V fill the area, 500 rows: 500 rows a column.
    const TraceScale scale{250, 500, false, height};
    const auto up = strokes({{0, 0.0}, {100, 50'000.0}}, scale);
    QCOMPARE(up[0], QLineF(0, 250, 0.5, 0));
    const auto down = strokes({{0, -49'751.0}, {100, 249.0}}, scale);
    QCOMPARE(down[0], QLineF(99.004, height - 1, 100, 1));
    const auto across = strokes({{0, 25'000.0}, {100, -25'000.0}}, scale);
    QCOMPARE(across[0], QLineF(49.5, 0, 50.498, height - 1));
    QVERIFY(strokes({{0, 50'000.0}, {100, 40'000.0}}, scale).empty());
    QVERIFY(strokes({{0, -50'000.0}, {100, -40'000.0}}, scale).empty());
}

void TstAnalogScale::strokesBesideTheExposedColumnsAreLeftOut()
{
    TraceStrokes strokes;
    const std::vector<SmpAChnPoint> points{{0, 0.0}, {100, 0.0}, {200, 0.0}, {300, 0.0}};
    traceStrokes(points, {250, tenVolts, false, height}, {96}, 120, 180, strokes);
    QCOMPARE(strokes.lines.size(), std::size_t(1));
    QCOMPARE(strokes.lines[0], QLineF(100, 250, 200, 250));
}

void TstAnalogScale::steepStrokesFromColumnToColumnAreBars_data()
{
    QTest::addColumn<int>("dpi");
    QTest::addColumn<QVector<QRect>>("bars");
    QTest::newRow("96") << 96 << QVector<QRect>{{10, 250, 1, 51}, {11, 200, 1, 51}, {12, 250, 1, 51}};
    QTest::newRow("192") << 192 << QVector<QRect>{{20, 499, 2, 102}, {22, 399, 2, 102}, {24, 499, 2, 102}};
}

/// Up to +1 V in one column, and in the next down to -1 V, of 100 rows.
void TstAnalogScale::steepStrokesFromColumnToColumnAreBars()
{
    QFETCH(int, dpi);
    QFETCH(QVector<QRect>, bars);
    const int s = dpi / 96;
    const TraceScale scale{250 * s, tenVolts, false, height * s};
    const auto all = allStrokes({{10, -1000.0}, {11, 1000.0}, {12, -1000.0}}, scale, dpi);
    QVERIFY(all.lines.empty());
    QCOMPARE(QVector<QRect>(all.bars.begin(), all.bars.end()), bars);
}

void TstAnalogScale::aGentleStrokeBetweenColumnsStaysALine()
{
    const auto all = allStrokes({{10, 0.0}, {11, 320.0}, {12, 0.0}}, {250, tenVolts, false, height});
    QCOMPARE(all.lines.size(), std::size_t(2));
    QVERIFY(all.bars.empty());
}

void TstAnalogScale::noBarLeavesTheArea_data()
{
    QTest::addColumn<int>("dpi");
    QTest::newRow("96") << 96;
    QTest::newRow("192") << 192;
}

void TstAnalogScale::noBarLeavesTheArea()
{
    QFETCH(int, dpi);
    const int s = dpi / 96;
    std::vector<SmpAChnPoint> points;
    for (int x = 0; x < 200; ++x) {
        points.push_back({x, double(x * 7919 % 9001) * 4 - 18'000.0});
    }
    const auto all = allStrokes(points, {250 * s, tenVolts, false, height * s}, dpi);
    QVERIFY(all.bars.size() > 100);
    for (const QRect &bar : all.bars) {
        QVERIFY(bar.top() >= -s / 2);
        QVERIFY(bar.bottom() < height * s);
    }
    for (const QLineF &line : all.lines) {
        QVERIFY(std::min(line.y1(), line.y2()) >= 0);
        QVERIFY(std::max(line.y1(), line.y2()) <= height * s - 1);
    }
}

void TstAnalogScale::barsReachFromPointToPointWithoutAGap()
{
    std::vector<SmpAChnPoint> points;
    for (int x = 0; x < 200; ++x) {
        points.push_back({x, double(x * 7919 % 9001) - 4500.0});
    }
    const auto all = allStrokes(points, {250, tenVolts, false, height});
    QImage image(200, height, QImage::Format_Mono);
    image.fill(0);
    const auto mark = [&image](int x, int top, int bottom) {
        for (int y = std::max(top, 0); y <= std::min(bottom, height - 1); ++y) {
            image.setPixel(x, y, 1);
        }
    };
    for (const QRect &bar : all.bars) {
        mark(bar.left(), bar.top(), bar.bottom());
    }
    for (const QLineF &line : all.lines) {
        mark(int(line.x1()), int(std::min(line.y1(), line.y2())), int(std::max(line.y1(), line.y2())));
        mark(int(line.x2()), int(std::min(line.y1(), line.y2())), int(std::max(line.y1(), line.y2())));
    }
    QVERIFY(all.bars.size() > 100);
    for (int x = 1; x < 200; ++x) {
        const int y1 = int(250 - points[std::size_t(x - 1)].value * height / tenVolts);
        const int y2 = int(250 - points[std::size_t(x)].value * height / tenVolts);
        for (int y = std::max(std::min(y1, y2), 0); y <= std::min(std::max(y1, y2), height - 1); ++y) {
            QVERIFY2(image.pixelIndex(x - 1, y) + image.pixelIndex(x, y) > 0, qPrintable(QString::number(x)));
        }
    }
}

QTEST_GUILESS_MAIN(TstAnalogScale)
#include "tst_AnalogScale.moc"
