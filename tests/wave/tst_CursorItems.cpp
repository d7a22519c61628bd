#include "controls/Look.h"
#include "wave/CursorBody.h"
#include "wave/CursorMarker.h"
#include "wave/ItemWaveArrow.h"
#include "wave/NextEdge.h"

#include <QPainter>
#include <QtTest>

Q_DECLARE_METATYPE(MarkerState)

namespace {

const QColor untouched(255, 0, 255);

/// What the item paints on untouched ground, with a margin of 5 pixels on all sides.
QImage painted(QGraphicsItem &item)
{
    const QSize size = item.boundingRect().size().toSize();
    QImage image(size + QSize(10, 10), QImage::Format_RGB32);
    image.fill(untouched);
    QPainter painter(&image);
    painter.translate(5, 5);
    item.paint(&painter, nullptr, nullptr);
    painter.end();
    return image;
}

/// True when exactly the pixels of `area` (in the item) have been painted, all in `color`.
bool isOnly(const QImage &image, const QRect &area, const QColor &color)
{
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const bool inside = area.contains(x - 5, y - 5);
            if (image.pixelColor(x, y) != (inside ? color : untouched)) {
                qWarning("differs at %d, %d", x - 5, y - 5);
                return false;
            }
        }
    }
    return true;
}

bool stayedInside(const QImage &image)
{
    const QRect inside = image.rect().adjusted(5, 5, -5, -5);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (!inside.contains(x, y) && image.pixelColor(x, y) != untouched) {
                return false;
            }
        }
    }
    return true;
}

QColor at(const QImage &image, int x, int y)
{
    return image.pixelColor(x + 5, y + 5);
}

} // namespace

class TstCursorItems : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { globalsFillTables(); }
    void init() { gDpi = 96; }
    void cleanup() { gDpi = 96; }

    void aMarkersLineIsOneStrokeWideAndAsHighAsTheRows_data();
    void aMarkersLineIsOneStrokeWideAndAsHighAsTheRows();
    void aMarkerIsSeenUnlessItIsOff();
    void aMarkerLiesOverTheWavesAndBelowTheArrow();
    void aMarkerTellsItsName();
    void aVoltageMarkerIsOneStrokeHighAndAsWideAsTheWaves_data();
    void aVoltageMarkerIsOneStrokeHighAndAsWideAsTheWaves();
    void aVoltageMarkerIsSeenUnlessItIsOff();
    void theEdgeButtonHasABlackBorderInsideItsRectangle_data();
    void theEdgeButtonHasABlackBorderInsideItsRectangle();
    void theChevronPointsToWhereTheButtonLeads_data();
    void theChevronPointsToWhereTheButtonLeads();
    void theChevronIsPaintedSharp_data();
    void theChevronIsPaintedSharp();
    void theEdgeButtonTellsItsWay();
    void theEdgeButtonIsOfferedAtBothEndsOnly();
};

void TstCursorItems::aMarkersLineIsOneStrokeWideAndAsHighAsTheRows_data()
{
    QTest::addColumn<int>("dpi");
    QTest::addColumn<MarkerState>("state");
    QTest::addColumn<QColor>("color");
    QTest::newRow("following") << 96 << MarkerState::following << QColor(0, 255, 0);
    QTest::newRow("hovered") << 96 << MarkerState::hovered << QColor(0, 255, 0);
    QTest::newRow("placed") << 96 << MarkerState::placed << QColor(31, 191, 31);
    QTest::newRow("placed, scaled") << 192 << MarkerState::placed << QColor(31, 191, 31);
}

void TstCursorItems::aMarkersLineIsOneStrokeWideAndAsHighAsTheRows()
{
    QFETCH(int, dpi);
    QFETCH(MarkerState, state);
    QFETCH(QColor, color);
    gDpi = dpi;
    CursorBody marker(0);
    marker.setColumnHeight(40);
    marker.setMarkerState(state);
    QCOMPARE(marker.boundingRect(), QRectF(0, 0, dpi / 96, 40));
    QVERIFY(isOnly(painted(marker), QRect(0, 0, dpi / 96, 40), color));
}

void TstCursorItems::aMarkerIsSeenUnlessItIsOff()
{
    CursorBody marker(0);
    QVERIFY(!marker.isVisible());
    for (const MarkerState state : {MarkerState::following, MarkerState::off, MarkerState::placed}) {
        marker.setMarkerState(state);
        QCOMPARE(marker.isVisible(), state != MarkerState::off);
        QCOMPARE(marker.isShown(), state != MarkerState::off);
    }
}

void TstCursorItems::aMarkerLiesOverTheWavesAndBelowTheArrow()
{
    QCOMPARE(CursorBody(0).zValue(), 1.0);
    QCOMPARE(CursorMarker(0).zValue(), 2.0);
    QCOMPARE(ItemWaveArrow().zValue(), 2.0);
    QCOMPARE(NextEdge().zValue(), 3.0);
}

void TstCursorItems::aMarkerTellsItsName()
{
    QCOMPARE(CursorBody(3).name(), QStringLiteral("B2"));
    QCOMPARE(CursorBody(3).toolTip(), QStringLiteral("Timing marker B2"));
    QCOMPARE(CursorBody(52).name(), QStringLiteral("[1"));
}

void TstCursorItems::aVoltageMarkerIsOneStrokeHighAndAsWideAsTheWaves_data()
{
    QTest::addColumn<int>("dpi");
    QTest::addColumn<QRect>("line");
    QTest::addColumn<int>("height");
    // The pen's square ends pass the line by half a stroke.
    QTest::newRow("96") << 96 << QRect(0, 1, 60, 1) << 3;
    QTest::newRow("192") << 192 << QRect(-1, 3, 60, 2) << 6;
}

void TstCursorItems::aVoltageMarkerIsOneStrokeHighAndAsWideAsTheWaves()
{
    QFETCH(int, dpi);
    QFETCH(QRect, line);
    QFETCH(int, height);
    gDpi = dpi;
    CursorMarker marker(0);
    marker.setLineWidth(60);
    marker.setMarkerState(MarkerState::placed);
    QCOMPARE(marker.boundingRect(), QRectF(0, 0, 60, height));
    QVERIFY(isOnly(painted(marker), line, QColor(31, 191, 31)));
    marker.setMarkerState(MarkerState::hovered);
    QVERIFY(isOnly(painted(marker), line, QColor(0, 255, 0)));
}

void TstCursorItems::aVoltageMarkerIsSeenUnlessItIsOff()
{
    CursorMarker marker(1);
    QCOMPARE(marker.id(), 1);
    QVERIFY(marker.acceptHoverEvents());
    QVERIFY(!marker.isVisible());
    marker.setMarkerState(MarkerState::following);
    QVERIFY(marker.isVisible());
    marker.setMarkerState(MarkerState::off);
    QVERIFY(!marker.isVisible());
}

void TstCursorItems::theEdgeButtonHasABlackBorderInsideItsRectangle_data()
{
    QTest::addColumn<int>("dpi");
    QTest::newRow("96") << 96;
    QTest::newRow("192") << 192;
}

void TstCursorItems::theEdgeButtonHasABlackBorderInsideItsRectangle()
{
    QFETCH(int, dpi);
    gDpi = dpi;
    const int s = uiScale();
    NextEdge button;
    button.setButtonSize({dp(12), dp(40)});
    const QImage image = painted(button);
    QVERIFY(stayedInside(image));
    for (int i = 0; i < s; ++i) {
        QCOMPARE(at(image, i, dp(20)), QColor(Qt::black));
        QCOMPARE(at(image, dp(12) - 1 - i, dp(20)), QColor(Qt::black));
        QCOMPARE(at(image, dp(6), i), QColor(Qt::black));
        QCOMPARE(at(image, dp(6), dp(40) - 1 - i), QColor(Qt::black));
    }
    const QColor face = at(image, s, s); // white of opacity 150 over the ground
    QCOMPARE(face.red(), 255);
    QVERIFY(qAbs(face.green() - 150) <= 1);
}

void TstCursorItems::theChevronPointsToWhereTheButtonLeads_data()
{
    QTest::addColumn<int>("dpi");
    QTest::addColumn<bool>("pointsLeft");
    QTest::addColumn<QPoint>("tip");
    QTest::addColumn<QPoint>("upperEnd");
    QTest::addColumn<QPoint>("lowerEnd");
    QTest::newRow("right") << 96 << false << QPoint(8, 20) << QPoint(4, 16) << QPoint(4, 25);
    QTest::newRow("left") << 96 << true << QPoint(4, 20) << QPoint(8, 16) << QPoint(8, 25);
    QTest::newRow("right, scaled") << 192 << false << QPoint(16, 40) << QPoint(8, 32) << QPoint(8, 50);
}

void TstCursorItems::theChevronPointsToWhereTheButtonLeads()
{
    QFETCH(int, dpi);
    QFETCH(bool, pointsLeft);
    const PixelScale scale{dpi};
    const QVector<QPoint> points = chevron({scale.dp(12), scale.dp(40)}, pointsLeft, scale);
    QCOMPARE(points.size(), 10);
    QTEST(points[0], "tip");
    QTEST(points[8], "upperEnd");
    QTEST(points[9], "lowerEnd");
}

void TstCursorItems::theChevronIsPaintedSharp_data()
{
    QTest::addColumn<int>("dpi");
    QTest::newRow("96") << 96;
    QTest::newRow("192") << 192;
}

void TstCursorItems::theChevronIsPaintedSharp()
{
    QFETCH(int, dpi);
    gDpi = dpi;
    const int s = uiScale();
    NextEdge button;
    button.setButtonSize({dp(12), dp(40)});
    button.setTarget(EdgeSide::right, 0);
    const QImage image = painted(button);
    const QPoint tip(dp(6) + dp(2), dp(20));
    QCOMPARE(at(image, tip.x() - s / 2, tip.y()), gGreys[8]);
    const QColor face = at(image, s, s);
    QCOMPARE(at(image, tip.x() + s - s / 2, tip.y()), face);
    QCOMPARE(at(image, tip.x() - s / 2 - 1, tip.y()), face);
}

void TstCursorItems::theEdgeButtonTellsItsWay()
{
    NextEdge button;
    QVERIFY(!button.isVisible());
    button.setTarget(EdgeSide::left, 5);
    QVERIFY(button.isBackward());
    QCOMPARE(button.channel(), 5);
    QCOMPARE(button.toolTip(), QStringLiteral("Move previous edge to center"));
    button.setTarget(EdgeSide::right, 6);
    QVERIFY(!button.isBackward());
    QCOMPARE(button.toolTip(), QStringLiteral("Move next edge to center"));
}

void TstCursorItems::theEdgeButtonIsOfferedAtBothEndsOnly()
{
    for (int x = 0; x < 110; ++x) {
        const EdgeZone zone = edgeZone(x, 100, 12);
        const bool left = x <= 12;
        const bool right = x >= 88 && x <= 100;
        QCOMPARE(zone.side, left ? EdgeSide::left : right ? EdgeSide::right : EdgeSide::none);
        QCOMPARE(zone.x, left ? 12 : right ? 100 : 0);
    }
}

QTEST_MAIN(TstCursorItems)
#include "tst_CursorItems.moc"
