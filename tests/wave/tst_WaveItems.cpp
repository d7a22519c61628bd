#include "controls/Look.h"
#include "device/DeviceGlobals.h"
#include "settings/Globals.h"
#include "wave/DecodedFake.h"
#include "wave/MainViewDesk.h"
#include "wave/WaveStrokes.h"

#include <QLineEdit>
#include <QPainter>
#include <QStyleOptionGraphicsItem>
#include <QtTest>

namespace {

const QColor untouched(255, 0, 255);
constexpr int logicalWidth = 100;

QImage blank(QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(untouched);
    return image;
}

/// What the item paints on untouched ground.
QImage painted(WaveItem &item, QSize size)
{
    item.setSize(size);
    QImage image = blank({size.width(), qMax(size.height(), 10)});
    QPainter painter(&image);
    QStyleOptionGraphicsItem option;
    option.exposedRect = item.boundingRect();
    item.paint(&painter, &option, nullptr);
    return image;
}

/// A device with a capture and a generator over `logicalWidth` pixels, one sample each.
struct Waves {
    std::unique_ptr<DevBase> device = createDevice(0);
    WaveDataGen gen;

    explicit Waves(const WaveCapture &what)
    {
        gDev = device.get();
        what.fill(*device->smpData);
        gen.setDataSource(device->smpData.get());
        gen.setViewWidth(logicalWidth);
        gen.dataReady();
        gen.zoomFit();
    }
    ~Waves()
    {
        gen.setDataSource(nullptr);
        gDev = nullptr;
    }
};

/// Channel 0 is low up to 30, high up to 60, then low.
WaveCapture onePulse()
{
    return capture().channels(16).samples(logicalWidth).pulses(0, {30, 30});
}

} // namespace

class TstWaveItems : public QObject {
    Q_OBJECT
private slots:
    void init();
    void itemsTakeNoPartInInput();
    void theGroundIsALightBandOverAPlainFill_data();
    void theGroundIsALightBandOverAPlainFill();
    void aRowOfHeightZeroPaintsNothing();
    void aTraceStandsAtItsTwoLevels_data();
    void aTraceStandsAtItsTwoLevels();
    void aTraceIsNearlyWhiteOrInItsChannelsColour();
    void withoutACaptureNoTraceIsPainted();
    void aDenseRegionIsASolidBlock();
    void aTraceOfManyStrokesLooksLikeItsStrokes();
    void theGroundUnderATraceOfManyStrokesIsPaintedOnce_data();
    void theGroundUnderATraceOfManyStrokesIsPaintedOnce();
    void theGroundUnderATraceOfFewStrokesIsPaintedByItsItem();
    void paintingAPartGivesThePixelsOfTheWhole();
    void theArrowIsTheToldStrokes_data();
    void theArrowIsTheToldStrokes();
    void theArrowPaintsNothingForShortSpans();
    void whatIsDecodedIsPaintedOverTheTrace();
    void decodersAreNotAskedForARowThatIsNotShown();
    void theNamesOfDecodersStandInTheSidebars();
};

void TstWaveItems::init()
{
    resetProgram();
}

void TstWaveItems::itemsTakeNoPartInInput()
{
    const ItemWaveBackground item(3);
    QCOMPARE(item.acceptedMouseButtons(), Qt::NoButton);
    QVERIFY(!item.flags().testFlag(QGraphicsItem::ItemIsSelectable));
    QVERIFY(!item.flags().testFlag(QGraphicsItem::ItemIsMovable));
}

void TstWaveItems::theGroundIsALightBandOverAPlainFill_data()
{
    QTest::addColumn<int>("dpi");
    QTest::addColumn<int>("height");
    for (const int dpi : {96, 144, 192}) {
        for (const int height : {1, 3, 4, 5, 60}) {
            QTest::addRow("%d dpi, %d high", dpi, height) << dpi << height;
        }
    }
}

void TstWaveItems::theGroundIsALightBandOverAPlainFill()
{
    QFETCH(int, dpi);
    QFETCH(int, height);
    resetProgram(dpi);
    const QSize size(20, height);

    QImage told = blank({size.width(), qMax(height, 10)});
    QPainter painter(&told);
    QLinearGradient gradient(0, 0, 0, dp(4));
    gradient.setColorAt(0, QColor(0x9f, 0x9f, 0x9f));
    gradient.setColorAt(1, QColor(0x1f, 0x1f, 0x23));
    painter.fillRect(QRect(QPoint(), size), gradient);

    ItemWaveBackground item(0);
    QCOMPARE(painted(item, size), told);
}

void TstWaveItems::aRowOfHeightZeroPaintsNothing()
{
    Waves waves(onePulse());
    ItemWaveBackground background(0);
    ItemWaveLine line(0, &waves.gen);
    const QSize closed(logicalWidth, 0);
    QCOMPARE(painted(background, closed), blank({logicalWidth, 10}));
    QCOMPARE(painted(line, closed), blank({logicalWidth, 10}));
}

void TstWaveItems::aTraceStandsAtItsTwoLevels_data()
{
    QTest::addColumn<int>("dpi");
    QTest::newRow("96") << 96;
    QTest::newRow("192") << 192;
}

void TstWaveItems::aTraceStandsAtItsTwoLevels()
{
    QFETCH(int, dpi);
    resetProgram(dpi);
    const int s = uiScale();
    Waves waves(onePulse());
    ItemWaveLine line(0, &waves.gen);
    const QImage image = painted(line, {logicalWidth * s, 51 * s});
    const int low = dpi == 96 ? 44 : 1 + 89; // s / 2 + 0.89 of the last row
    const int high = dpi == 96 ? 4 + 5 : 8 + 11 + 1;
    const auto isTrace = [&image](int x, int y) { return image.pixelColor(x, y) == QColor(0xf7, 0xf7, 0xf7); };
    const auto isGround = [&image](int x, int y) { return image.pixelColor(x, y) == untouched; };

    for (const int x : {5 * s, 80 * s}) { // a stroke covers s rows, the last of them above its y when s is 2
        QVERIFY(isTrace(x, low));
        QVERIFY(isTrace(x, low - s + 1));
        QVERIFY(isGround(x, low + 1));
        QVERIFY(isGround(x, low - s));
        QVERIFY(isGround(x, high));
    }
    QVERIFY(isTrace(45 * s, high));
    QVERIFY(isGround(45 * s, high - s));
    QVERIFY(isGround(45 * s, high + 1));
    for (const int column : {30, 60}) { // an edge fills its own logical column, and only that
        QVERIFY(isTrace(column * s, 30 * s));
        QVERIFY(isTrace(column * s + s - 1, 30 * s));
        QVERIFY(isGround(column * s - 1, 30 * s));
        QVERIFY(isGround(column * s + s, 30 * s));
    }
}

void TstWaveItems::aTraceIsNearlyWhiteOrInItsChannelsColour()
{
    Waves waves(capture().channels(16).samples(logicalWidth));
    ItemWaveLine line(10, &waves.gen);
    QCOMPARE(painted(line, {logicalWidth, 51}).pixelColor(50, 44), QColor(0xf7, 0xf7, 0xf7));
    colorWaveform = true;
    QCOMPARE(painted(line, {logicalWidth, 51}).pixel(50, 44), QColor(31, 207, 31).lighter(120).rgb());
}

void TstWaveItems::withoutACaptureNoTraceIsPainted()
{
    Waves waves(onePulse());
    ItemWaveLine line(0, &waves.gen);
    waves.device->smpData->clear();
    QCOMPARE(painted(line, {logicalWidth, 51}), blank({logicalWidth, 51}));
}

void TstWaveItems::aDenseRegionIsASolidBlock()
{
    Waves waves(capture().channels(16).samples(10 * logicalWidth).dense(0));
    ItemWaveLine line(0, &waves.gen);
    const QImage image = painted(line, {logicalWidth, 51});
    for (int x = 0; x < logicalWidth - 1; ++x) {
        QCOMPARE(image.pixelColor(x, 8), untouched);
        QCOMPARE(image.pixelColor(x, 9), gGreys[0]);
        QCOMPARE(image.pixelColor(x, 44), gGreys[0]);
        QCOMPARE(image.pixelColor(x, 45), untouched);
    }
}

void TstWaveItems::aTraceOfManyStrokesLooksLikeItsStrokes()
{
    // A change every second sample at one sample a pixel: a vertical in every second column, levels between them.
    Waves waves(capture().channels(16).samples(logicalWidth).pulses(0, std::vector<std::int32_t>(logicalWidth / 2, 2)));
    waves.gen.zoomSetRatio(1.0);
    ItemWaveLine line(0, &waves.gen);
    const QSize size(logicalWidth, 51);
    QImage expected = blank(size);
    expected.fill(gGreys[8]);
    QImage actual = expected;
    std::vector<QRect> rects;
    traceRects(waves.gen.digLine(0), traceLevels(51, {96}), {96}, 0, logicalWidth, rects);
    QVERIFY(rects.size() > logicalWidth / 6);
    QPainter strokes(&expected);
    strokes.setPen(Qt::NoPen);
    strokes.setBrush(gGreys[0]);
    strokes.drawRects(rects.data(), int(rects.size()));
    line.setSize(size);
    QStyleOptionGraphicsItem option;
    option.exposedRect = QRect({0, 0}, size);
    QPainter rows(&actual);
    line.paint(&rows, &option, nullptr);
    QCOMPARE(actual, expected);
}

void TstWaveItems::theGroundUnderATraceOfManyStrokesIsPaintedOnce_data()
{
    QTest::addColumn<int>("dpi");
    QTest::addColumn<int>("height");
    for (const int dpi : {96, 192}) {
        for (const int height : {1, 4, 5, 9, 20, 51, 300}) {
            QTest::addRow("%d dpi, %d high", dpi, height) << dpi << height;
        }
    }
}

void TstWaveItems::theGroundUnderATraceOfManyStrokesIsPaintedOnce()
{
    QFETCH(int, dpi);
    QFETCH(int, height);
    resetProgram(dpi);
    Waves waves(capture().channels(16).samples(logicalWidth).pulses(0, std::vector<std::int32_t>(logicalWidth / 2, 2)));
    waves.gen.zoomSetRatio(1.0);
    const QSize size(logicalWidth * uiScale(), height);
    const TraceLevels levels = traceLevels(height, screenScale());
    ItemWaveLine line(0, &waves.gen);
    line.setSize(size);
    ItemWaveBackground ground(0);
    ground.setSize(size);
    for (const QRect part : {QRect({0, 0}, size), QRect(size.width() / 4, height / 4, size.width() / 2, height / 2)}) {
        QStyleOptionGraphicsItem option;
        option.exposedRect = part;
        QRect left;
        const auto paintBoth = [&](bool spares) {
            QImage image = blank(size);
            QPainter painter(&image);
            painter.setClipRect(part);
            ground.covered = [&](const QPainter &on, const QRectF &exposed) {
                left = line.covers(on, exposed);
                return spares ? left : QRect();
            };
            ground.paint(&painter, &option, nullptr);
            const QRect kept = left & part;
            const bool isSpared = kept.isEmpty() || image.pixelColor(kept.center()) == untouched;
            line.paint(&painter, &option, nullptr);
            return std::pair(image, isSpared);
        };
        const auto [image, isSpared] = paintBoth(true);
        QVERIFY(isSpared);
        QVERIFY(image == paintBoth(false).first);
        QCOMPARE(left.isEmpty(), levels.lowY - levels.highY <= uiScale()); // of the lowest rows the strokes are one
    }
}

void TstWaveItems::theGroundUnderATraceOfFewStrokesIsPaintedByItsItem()
{
    Waves waves(onePulse());
    ItemWaveLine line(0, &waves.gen);
    line.setSize({logicalWidth, 51});
    QImage image = blank({logicalWidth, 51});
    const QPainter painter(&image);
    QVERIFY(line.covers(painter, image.rect()).isEmpty());
    waves.device->smpData->clear();
    QVERIFY(line.covers(painter, image.rect()).isEmpty());
}

void TstWaveItems::paintingAPartGivesThePixelsOfTheWhole()
{
    resetProgram(192);
    Waves waves(capture().channels(16).samples(500).pulses(0, {50, 13, 7, 100, 3, 3, 3, 9, 140}));
    ItemWaveLine line(0, &waves.gen);
    const QImage whole = painted(line, {2 * logicalWidth, 100});
    for (int left = 0; left < 190; left += 7) {
        const QRect part(left, 0, 10, 100);
        QImage image = blank(whole.size());
        QPainter painter(&image);
        painter.setClipRect(part);
        QStyleOptionGraphicsItem option;
        option.exposedRect = part;
        line.paint(&painter, &option, nullptr);
        QCOMPARE(image.copy(part), whole.copy(part));
    }
}

void TstWaveItems::theArrowIsTheToldStrokes_data()
{
    QTest::addColumn<int>("dpi");
    QTest::newRow("96") << 96;
    QTest::newRow("192") << 192;
}

void TstWaveItems::theArrowIsTheToldStrokes()
{
    QFETCH(int, dpi);
    resetProgram(dpi);
    const int s = uiScale();
    ItemWaveArrow arrow;
    arrow.setSpans({10.0, 40.0, 45.0, 80.0});
    const QImage image = painted(arrow, {logicalWidth * s, 40 * s});
    const int y = s / 2 + (4 * s + 40 * s) / 2;
    const auto isArrow = [&image](int x, int row) { return image.pixelColor(x, row) == QColor(0xaf, 0xaf, 0xaf); };

    // A square of s pixels ends at its own coordinate when s is 2.
    QVERIFY(isArrow(10 * s, y) && isArrow(40 * s, y) && isArrow(25 * s, y));
    QVERIFY(!isArrow(10 * s - 1, y) && !isArrow(41 * s, y) && !isArrow(25 * s, y - s) && !isArrow(25 * s, y + 1));
    for (int i = 1; i <= 3; ++i) {
        for (const int side : {-1, 1}) {
            QVERIFY(isArrow((10 + i) * s, y + side * i * s));
            QVERIFY(isArrow((40 - i) * s, y + side * i * s));
            QVERIFY(isArrow((80 - i) * s, y + side * i * s));
            QVERIFY(!isArrow((45 + i) * s, y + side * i * s));
        }
    }
    QVERIFY(!isArrow(14 * s, y - 4 * s));
    QVERIFY(isArrow(45 * s, y) && isArrow(80 * s, y) && !isArrow(43 * s, y) && !isArrow(81 * s, y));
}

void TstWaveItems::theArrowPaintsNothingForShortSpans()
{
    ItemWaveArrow arrow;
    arrow.setSpans({10.0, 13.9, 20.0, 23.9});
    QCOMPARE(painted(arrow, {logicalWidth, 40}), blank({logicalWidth, 40}));
}

void TstWaveItems::whatIsDecodedIsPaintedOverTheTrace()
{
    Waves waves(capture().channels(16).samples(logicalWidth).pulses(4, {1}));
    DecodedFake decoded;
    decoded.add(20, 60, {}).add(70, 80, {""}).mark(40, 9);
    DecodedFakes source;
    source.decoders.emplace_back(4, &decoded);
    ItemWaveLine line(4, &waves.gen);
    const QImage image = painted(line, {logicalWidth, 51});
    QCOMPARE(source.asked, std::vector<int>{4});
    QCOMPARE(image.pixelColor(70, 7), gChnColors[4]);
    QCOMPARE(image.pixelColor(80, 7), gChnColors[4]);
    QVERIFY(image.pixelColor(75, 9) != gGreys[0]); // darkened
    QCOMPARE(image.pixelColor(20, 3), untouched);
    QCOMPARE(image.pixelColor(40, 2 + 51 / 2), QColor(Qt::red));
}

void TstWaveItems::decodersAreNotAskedForARowThatIsNotShown()
{
    Waves waves(onePulse());
    const DecodedFakes source;
    ItemWaveLine line(0, &waves.gen);
    (void)painted(line, {logicalWidth, 0});
    waves.device->smpData->clear();
    (void)painted(line, {logicalWidth, 51});
    QVERIFY(source.asked.empty());
}

void TstWaveItems::theNamesOfDecodersStandInTheSidebars()
{
    const DecodedFakes source;
    const MainViewDesk desk;
    const auto *field = desk.sidebar(1).findChild<QLineEdit *>(QStringLiteral("analyzer"));
    QVERIFY(field != nullptr);
    QCOMPARE(field->text(), QStringLiteral("I2C - SCL"));
}

QTEST_MAIN(TstWaveItems)
#include "tst_WaveItems.moc"
