#include "wave/WaveStrokes.h"

#include <QImage>
#include <QPainter>
#include <QRandomGenerator>
#include <QtTest>

namespace {

constexpr int viewWidth = 90;
constexpr int rowHeight = 60;

/// A line of `width` logical pixels, as a capture gives it: flat runs of random length, transitions between them.
std::vector<SmpWaveRun> randomRuns(quint32 seed, int width, int longestFlat)
{
    QRandomGenerator random(seed);
    std::vector<SmpWaveRun> runs;
    int x = 0;
    while (x < width - 1) {
        const int flat = qMin(random.bounded(longestFlat + 1), width - 1 - x);
        if (flat > 0) {
            runs.push_back({x, flat, random.bounded(2)});
        }
        x += flat;
        if (x < width - 1) {
            runs.push_back({x++, 1, 2});
        }
    }
    return runs;
}

QImage blank(int dpi)
{
    QImage image(viewWidth * dpi / 96, rowHeight * dpi / 96, QImage::Format_RGB32);
    image.fill(Qt::black);
    return image;
}

/// The strokes of a trace one by one, with the pen that they are told with.
QImage strokedTrace(const std::vector<SmpWaveRun> &runs, PixelScale scale)
{
    QImage image = blank(scale.dpi);
    const TraceLevels levels = traceLevels(image.height(), scale);
    const int s = scale.s();
    QPainter painter(&image);
    painter.setPen(QPen(Qt::white, s, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
    for (const SmpWaveRun &run : runs) {
        const int xs = run.x * s + s / 2;
        if (run.kind == 0) {
            painter.drawLine(xs, levels.lowY, run.width * s + xs, levels.lowY);
        } else if (run.kind == 1) {
            painter.drawLine(xs, levels.highY, run.width * s + xs, levels.highY);
        } else if (run.kind == 2) {
            painter.drawLine(xs, levels.highY, xs, levels.lowY);
        }
    }
    return image;
}

QImage filledTrace(const std::vector<SmpWaveRun> &runs, PixelScale scale)
{
    QImage image = blank(scale.dpi);
    std::vector<QRect> rects;
    traceRects(runs, traceLevels(image.height(), scale), scale, 0, image.width(), rects);
    QPainter painter(&image);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::white);
    painter.drawRects(rects.data(), int(rects.size()));
    return image;
}

/// The trace as rows of pixels, on the ground of a blank image.
QImage rowedTrace(const std::vector<SmpWaveRun> &runs, PixelScale scale)
{
    QImage image = blank(scale.dpi);
    const TraceLevels levels = traceLevels(image.height(), scale);
    std::vector<QRect> rects;
    traceRects(runs, levels, scale, 0, image.width(), rects);
    TraceRows rows;
    traceRows(rects, levels, scale, image.width(), qRgb(0, 0, 0), qRgb(255, 255, 255), rows);
    const int highTop = levels.highY - scale.s() / 2;
    const int lowTop = levels.lowY - scale.s() / 2;
    for (int y = highTop; y < lowTop + scale.s(); ++y) {
        const std::vector<QRgb> &row = y < highTop + scale.s() ? rows.high : y < lowTop ? rows.between : rows.low;
        std::copy(row.begin(), row.end(), reinterpret_cast<QRgb *>(image.scanLine(y)));
    }
    return image;
}

int headPoints(const ArrowStrokes &strokes)
{
    return int(std::count_if(strokes.points.cbegin(), strokes.points.cend(),
                             [&](QPoint p) { return p.y() != strokes.lines[0].y1(); }));
}

} // namespace

class TstWaveStrokes : public QObject {
    Q_OBJECT
private slots:
    void theSwingSpansMostOfAShortRowAndItsMarginsStopGrowingInATallOne_data();
    void theSwingSpansMostOfAShortRowAndItsMarginsStopGrowingInATallOne();
    void filledRectanglesAreThePixelsOfTheToldStrokes_data();
    void filledRectanglesAreThePixelsOfTheToldStrokes();
    void aRegionWithAnEdgeInEveryColumnIsOneSolidBlock();
    void runsOfAnUnknownKindDrawNothing();
    void strokesOutsideTheWantedColumnsAreLeftOut();
    void noArrowIsDrawnWhenBothSpansAreShorterThanFour();
    void aShortFirstSpanIsDrawnWhenTheSecondIsLongEnough();
    void headsGrowWithTheSpanUpToThreeSteps_data();
    void headsGrowWithTheSpanUpToThreeSteps();
    void aLongArrowLeavesRoomForItsTips();
    void theSecondArrowPointsRightOnlyWithAsManyHeadsAsTheFirst();
    void theSecondArrowIsAPlainLineWhenTheFirstHasMoreHeads();
    void theSecondArrowHasItsOwnHeadsWhenTheFirstHasNone();
    void strokesAreScaledByWholeDevicePixels();
    void onAScaledScreenAnArrowEndsBetweenLogicalColumns();
    void spansFarOutsideAreCutBeforeTheyBecomeIntegers();
};

void TstWaveStrokes::theSwingSpansMostOfAShortRowAndItsMarginsStopGrowingInATallOne_data()
{
    QTest::addColumn<int>("dpi");
    QTest::addColumn<int>("height");
    QTest::addColumn<int>("highY");
    QTest::addColumn<int>("lowY");
    QTest::newRow("one row") << 96 << 51 << 4 + 5 << 44;
    QTest::newRow("tall") << 96 << 960 << 24 << 939;
    QTest::newRow("last growing margin") << 96 << 182 << 4 + 19 << 161;
    QTest::newRow("double scale") << 192 << 101 << 8 + 11 + 1 << 90;
    QTest::newRow("one and a half") << 144 << 101 << 6 + 11 << 89;
    QTest::newRow("one pixel high") << 96 << 1 << 4 << 0;
}

void TstWaveStrokes::theSwingSpansMostOfAShortRowAndItsMarginsStopGrowingInATallOne()
{
    QFETCH(int, dpi);
    QFETCH(int, height);
    const TraceLevels levels = traceLevels(height, {dpi});
    QTEST(levels.highY, "highY");
    QTEST(levels.lowY, "lowY");
}

void TstWaveStrokes::filledRectanglesAreThePixelsOfTheToldStrokes_data()
{
    QTest::addColumn<int>("dpi");
    QTest::addColumn<int>("longestFlat");
    for (const int dpi : {96, 120, 144, 192, 288, 384}) {
        for (const int longestFlat : {0, 1, 3, 30}) {
            QTest::addRow("%d dpi, flat runs of up to %d", dpi, longestFlat) << dpi << longestFlat;
        }
    }
}

void TstWaveStrokes::filledRectanglesAreThePixelsOfTheToldStrokes()
{
    QFETCH(int, dpi);
    QFETCH(int, longestFlat);
    for (quint32 seed = 1; seed <= 10; ++seed) {
        const std::vector<SmpWaveRun> runs = randomRuns(seed, viewWidth, longestFlat);
        QCOMPARE(filledTrace(runs, {dpi}), strokedTrace(runs, {dpi}));
        QCOMPARE(rowedTrace(runs, {dpi}), strokedTrace(runs, {dpi}));
    }
}

void TstWaveStrokes::aRegionWithAnEdgeInEveryColumnIsOneSolidBlock()
{
    std::vector<QRect> rects;
    traceRects(randomRuns(1, viewWidth, 0), {10, 40}, {96}, 0, viewWidth, rects);
    QCOMPARE(rects, (std::vector<QRect>{QRect(0, 10, viewWidth - 1, 31)}));
}

void TstWaveStrokes::runsOfAnUnknownKindDrawNothing()
{
    const std::vector<SmpWaveRun> runs{{0, 5, 3}, {5, 5, -1}};
    std::vector<QRect> rects{QRect(1, 1, 1, 1)};
    traceRects(runs, {10, 40}, {96}, 0, viewWidth, rects);
    QVERIFY(rects.empty());
}

void TstWaveStrokes::strokesOutsideTheWantedColumnsAreLeftOut()
{
    const std::vector<SmpWaveRun> runs{{0, 20, 0}, {20, 1, 2}, {21, 20, 1}, {41, 1, 2}, {42, 20, 0}};
    std::vector<QRect> rects;
    traceRects(runs, {10, 40}, {96}, 30, 35, rects);
    QCOMPARE(rects, (std::vector<QRect>{QRect(21, 10, 21, 1)}));
}

void TstWaveStrokes::noArrowIsDrawnWhenBothSpansAreShorterThanFour()
{
    QVERIFY(arrowStrokes({10.0, 13.9, 20.0, 23.9}, 40, {96}).lines.isEmpty());
    QVERIFY(arrowStrokes({10.0, 13.9, 20.0, 23.9}, 40, {96}).points.isEmpty());
    QVERIFY(!arrowStrokes({10.0, 14.0, 0.0, 0.0}, 40, {96}).lines.isEmpty());
}

void TstWaveStrokes::aShortFirstSpanIsDrawnWhenTheSecondIsLongEnough()
{
    const ArrowStrokes strokes = arrowStrokes({10.0, 12.0, 15.0, 30.0}, 40, {96});
    QCOMPARE(strokes.lines[0], QLine(10, 22, 12, 22));
    QCOMPARE(strokes.lines[1], QLine(15, 22, 28, 22));
}

void TstWaveStrokes::headsGrowWithTheSpanUpToThreeSteps_data()
{
    QTest::addColumn<double>("length");
    QTest::addColumn<int>("heads");
    QTest::newRow("four pixels have none") << 4.0 << 0;
    QTest::newRow("five have one") << 5.0 << 1;
    QTest::newRow("seven have two") << 7.0 << 2;
    QTest::newRow("nine have three") << 9.0 << 3;
    QTest::newRow("a hundred have no more") << 100.0 << 3;
}

void TstWaveStrokes::headsGrowWithTheSpanUpToThreeSteps()
{
    QFETCH(double, length);
    QFETCH(int, heads);
    const ArrowStrokes strokes = arrowStrokes({10.0, 10.0 + length, 0.0, 0.0}, 40, {96});
    QCOMPARE(headPoints(strokes), heads * 4);
    QCOMPARE(strokes.points.contains(QPoint(10, 22)), heads >= 2);
}

void TstWaveStrokes::aLongArrowLeavesRoomForItsTips()
{
    const ArrowStrokes strokes = arrowStrokes({10.0, 50.0, 0.0, 0.0}, 40, {96});
    QCOMPARE(strokes.lines, QVector<QLine>{QLine(12, 22, 48, 22)});
    for (const QPoint point : {QPoint(10, 22), QPoint(50, 22), QPoint(13, 19), QPoint(13, 25), QPoint(47, 19)}) {
        QVERIFY(strokes.points.contains(point));
    }
}

void TstWaveStrokes::theSecondArrowPointsRightOnlyWithAsManyHeadsAsTheFirst()
{
    const ArrowStrokes strokes = arrowStrokes({10.0, 17.0, 20.0, 60.0}, 40, {96}); // two heads
    QCOMPARE(strokes.lines[1], QLine(20, 22, 58, 22));
    QVERIFY(strokes.points.contains(QPoint(60, 22)));
    QVERIFY(strokes.points.contains(QPoint(58, 20)));
    QVERIFY(!strokes.points.contains(QPoint(57, 19)));
    QVERIFY(!strokes.points.contains(QPoint(21, 21)));
}

void TstWaveStrokes::theSecondArrowIsAPlainLineWhenTheFirstHasMoreHeads()
{
    const ArrowStrokes strokes = arrowStrokes({10.0, 50.0, 53.0, 56.0}, 40, {96}); // k2 is 2, three heads
    QCOMPARE(strokes.lines[1], QLine(53, 22, 56, 22));
    QVERIFY(!strokes.points.contains(QPoint(56, 22)));
    QCOMPARE(arrowStrokes({10.0, 50.0, 53.0, 54.9}, 40, {96}).lines.size(), 1); // k2 is 0
}

void TstWaveStrokes::theSecondArrowHasItsOwnHeadsWhenTheFirstHasNone()
{
    const ArrowStrokes strokes = arrowStrokes({10.0, 14.0, 17.0, 60.0}, 40, {96});
    QCOMPARE(headPoints(strokes), 3 * 2);
    QCOMPARE(headPoints(arrowStrokes({10.0, 14.0, 17.0, 20.0}, 40, {96})), 2 * 2);
    QCOMPARE(headPoints(arrowStrokes({10.0, 14.0, 17.0, 19.0}, 40, {96})), 0);
}

void TstWaveStrokes::strokesAreScaledByWholeDevicePixels()
{
    const ArrowStrokes strokes = arrowStrokes({10.0, 50.0, 0.0, 0.0}, 80, {192});
    QCOMPARE(strokes.lines[0], QLine(21 + 4, 1 + (8 + 80) / 2, 101 - 4, 45));
    QVERIFY(strokes.points.contains(QPoint(23, 43)));
}

void TstWaveStrokes::onAScaledScreenAnArrowEndsBetweenLogicalColumns()
{
    const ArrowStrokes strokes = arrowStrokes({10.6, 13.4, 20.6, 60.9}, 80, {192});
    QCOMPARE(strokes.lines[0], QLine(22, 45, 27, 45));
    QCOMPARE(strokes.lines[1], QLine(42, 45, 122 - 4, 45));
}

void TstWaveStrokes::spansFarOutsideAreCutBeforeTheyBecomeIntegers()
{
    const ArrowStrokes strokes = arrowStrokes({-1e300, 1e300, 1e300, 1e301}, 40, {384});
    QCOMPARE(strokes.lines.size(), 2);
}

QTEST_APPLESS_MAIN(TstWaveStrokes)
#include "tst_WaveStrokes.moc"
