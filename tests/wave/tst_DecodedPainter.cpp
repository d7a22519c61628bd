#include "controls/Look.h"
#include "settings/Globals.h"
#include "support/GuiTestMain.h"
#include "wave/DecodedFake.h"
#include "wave/DecodedPainter.h"

#include <QFontMetrics>
#include <QLinearGradient>
#include <QPainter>

namespace {

constexpr int logicalWidth = 300;
constexpr int chn = 2;
const QColor trace(10, 200, 250);

QImage ground()
{
    QImage image(logicalWidth * uiScale(), dp(60), QImage::Format_RGB32);
    image.fill(QColor(0x20, 0x60, 0x90));
    QPainter painter(&image);
    painter.fillRect(QRect(0, dp(20), image.width(), dp(1)), Qt::white);
    for (int x = 0; x < image.width(); x += 7) {
        painter.fillRect(QRect(x, 0, 1, dp(12)), Qt::white);
    }
    return image;
}

DecodedView viewOf(const QImage &image, double viewStart = 0.0, double ratio = 1.0)
{
    return {viewStart, ratio, image.width(), 100'000, PixelScale{gDpi}};
}

QImage painted(const DecodedView &view, int left = -1, int right = 1 << 20)
{
    QImage image = ground();
    QPainter painter(&image);
    DecodedPainter().paint(painter, chn, view, image.height(), trace, left, right);
    return image;
}

QPen toldPen(QColor color)
{
    return {color, qreal(uiScale()), Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin};
}

/// A box drawn stroke by stroke as it is told.
void drawTold(QPainter &painter, DecodedBubble box, int width)
{
    const int s = uiScale();
    QLinearGradient shade(0, 0, 0, dp(14) / 2 + s);
    shade.setColorAt(0, QColor(0xaf, 0xaf, 0xaf));
    shade.setColorAt(1.0, QColor(0, 0, 0, 207));
    painter.setFont(gFontSmall);
    painter.setBrush(shade);
    const std::int64_t tx = (box.x2 - box.textWidth + 1 + box.x1) / 2;
    if (box.x1 < width && box.x2 > 0) {
        box.x1 = std::max<std::int64_t>(box.x1, -dp(10));
        box.x2 = std::min<std::int64_t>(box.x2, width + dp(10));
    }
    painter.setPen(toldPen(colorWaveform ? QColor(0xaf, 0xaf, 0xaf) : gChnColors[chn]));
    painter.drawRect(int(box.x1), s / 2, int(box.x2 - box.x1), dp(14));
    if (box.textWidth != 0 && tx <= width && tx + box.textWidth >= 0) {
        painter.setPen(QColor(0xf7, 0xf7, 0xf7));
        painter.drawText(int(tx), dp(14) - dp(3) + s / 2, box.text.text());
    }
}

/// All the boxes of one decoder drawn as they are told.
QImage told(const DecodedChannel &decoded, const DecodedView &view)
{
    BubbleTexts texts;
    std::vector<DecodedBubble> boxes;
    addBubbles(decoded, view, texts, boxes);
    const int margin = dp(20); // where a stroke leaves the picture its end would look cut
    const QImage under = ground();
    QImage image(under.width() + 2 * margin, under.height() + margin, QImage::Format_RGB32);
    QPainter painter(&image);
    painter.translate(margin, 0);
    painter.drawImage(0, 0, under);
    for (const DecodedBubble &box : boxes) {
        drawTold(painter, box, under.width());
    }
    painter.end();
    return image.copy(margin, 0, under.width(), under.height());
}

/// Text may differ by the last bit of a blend.
bool alike(const QImage &left, const QImage &right)
{
    for (int y = 0; y < left.height(); ++y) {
        for (int x = 0; x < left.width(); ++x) {
            const QColor a = left.pixelColor(x, y);
            const QColor b = right.pixelColor(x, y);
            if (std::abs(a.red() - b.red()) > 2 || std::abs(a.green() - b.green()) > 2 ||
                std::abs(a.blue() - b.blue()) > 2) {
                qWarning("pixel %d, %d: %s, told %s", x, y, qPrintable(a.name()), qPrintable(b.name()));
                return false;
            }
        }
    }
    return true;
}

void toldFigure(QPainter &painter, int type, int x, int y)
{
    const int s = uiScale();
    painter.setPen(toldPen(QColor(0xaf, 0xaf, 0xaf)));
    painter.setBrush(QColor(0xaf, 0xaf, 0xaf));
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.drawEllipse(x - 5 * s, y - 5 * s, 10 * s, 10 * s);
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setPen(toldPen(QColor(0x1f, 0x1f, 0x23)));
    const int u = (5 * s) / 2;
    if (type == 10) {
        const int v = 5 * s - u;
        painter.drawLine(x - s, y - v, x, y - v);
        painter.drawLine(x, y - v, x, y + u);
        painter.drawLine(x - s, y + v, x + s, y + v);
        return;
    }
    const int w = (3 * s) / 2;
    const int t = 3 * s - w;
    const int top = y - 5 * s + u;
    const int bot = y + u - s;
    painter.drawLine(x - t, top + s, x - t, bot);
    painter.drawLine(x + s - t, top, x + w - s, top);
    painter.drawLine(x + w, bot, x + w, top + s);
    painter.drawLine(x + w - s, y + u, x + s - t, y + u);
}

/// A sign drawn as the table of signs tells.
void toldSign(QPainter &painter, int type, int x, int y)
{
    const int s = uiScale();
    const QColor grey(0xdf, 0xdf, 0xdf);
    const bool error = type == 1 || type == 3 || type == 7;
    const bool arrow = type == 4 || type == 5;
    painter.setPen(toldPen(error ? QColor(Qt::red) : arrow && colorWaveform ? trace : grey));
    painter.setBrush(error ? QColor(Qt::red) : grey);
    painter.setRenderHint(QPainter::Antialiasing, type <= 1 || type == 8);
    if (type <= 1) {
        painter.drawEllipse(x - 2 * s, y - 2 * s, 5 * s, 5 * s);
    } else if (type <= 3) {
        painter.drawRect(x - 2 * s, y - 2 * s, 4 * s, 4 * s);
    } else if (type == 4) {
        painter.drawPoint(x, y - 2 * s);
        painter.drawLine(x - s, y - s, x + s, y - s);
        painter.drawLine(x - 2 * s, y, x + 2 * s, y);
        painter.drawLine(x - 3 * s, y + s, x + 3 * s, y + s);
    } else if (type == 5) {
        painter.drawLine(x - 3 * s, y - 2 * s, x + 3 * s, y - 2 * s);
        painter.drawLine(x - 2 * s, y - s, x + 2 * s, y - s);
        painter.drawLine(x - s, y, x + s, y);
        painter.drawPoint(x, y + s);
    } else if (type <= 7) {
        painter.drawLine(x - 3 * s, y + 3 * s, x + 3 * s, y - 3 * s);
        painter.drawLine(x + 3 * s, y + 3 * s, x - 3 * s, y - 3 * s);
    } else if (type == 8) {
        painter.setBrush(Qt::green);
        painter.drawEllipse(x - 4 * s, y - 4 * s, 9 * s, 9 * s);
    } else if (type == 9) {
        painter.setBrush(Qt::red);
        painter.drawRect(x - 4 * s, y - 4 * s, 9 * s, 9 * s);
    } else {
        toldFigure(painter, type, x, y);
    }
}

} // namespace

class TstDecodedPainter : public QObject {
    Q_OBJECT
private slots:
    void init();
    void boxesLookAsTheyAreTold_data();
    void boxesLookAsTheyAreTold();
    void signsLookAsTheyAreTold_data();
    void signsLookAsTheyAreTold();
    void anUnknownSignIsPassedOver();
    void boxesOfSeveralDecodersLieOverEachOther();
    void paintingAPartGivesThePixelsOfTheWhole();
    void aTextScrollsAwayWithItsFrame();
    void withoutDecodersNothingIsPainted();
    void touchingWallsAreOneRectangle();
    void aBoxWiderThanTheRowIsCutTenPixelsBeyondBothEnds();
};

void TstDecodedPainter::init()
{
    globalsSetDpi(96);
    colorWaveform = false;
}

void TstDecodedPainter::boxesLookAsTheyAreTold_data()
{
    QTest::addColumn<int>("dpi");
    QTest::addColumn<double>("ratio");
    QTest::addColumn<bool>("inColour");
    for (const int dpi : {96, 120, 192, 288}) {
        for (const double ratio : {0.3, 1.0, 2.0, 7.0}) {
            QTest::addRow("%d dpi, %g samples a pixel", dpi, ratio) << dpi << ratio << (ratio > 1.5);
        }
    }
}

void TstDecodedPainter::boxesLookAsTheyAreTold()
{
    QFETCH(int, dpi);
    QFETCH(double, ratio);
    QFETCH(bool, inColour);
    globalsSetDpi(dpi);
    colorWaveform = inColour;
    DecodedFake decoded;
    decoded.add(2, 60, {"S", "Start"}).add(60, 61).add(61, 62).add(62, 63).add(63, 65).add(66, 68).add(70, 73);
    decoded.add(80, 91, {"W"}).add(95, 109, {"WWWWWWWWWWWWWW"}).add(140, 142).add(150, 2000, {"0x41", "Data 0x41"});
    DecodedFakes source;
    source.decoders.emplace_back(chn, &decoded);
    const DecodedView view = viewOf(ground(), 30.0, ratio);
    QVERIFY(alike(painted(view), told(decoded, view)));
    QVERIFY(painted(view) != ground());
}

void TstDecodedPainter::signsLookAsTheyAreTold_data()
{
    QTest::addColumn<int>("dpi");
    for (const int dpi : {96, 192, 288}) {
        QTest::addRow("%d dpi", dpi) << dpi;
    }
}

void TstDecodedPainter::signsLookAsTheyAreTold()
{
    QFETCH(int, dpi);
    globalsSetDpi(dpi);
    const int s = uiScale();
    for (const bool inColour : {false, true}) {
        colorWaveform = inColour;
        DecodedFake decoded;
        QImage image = ground();
        QPainter painter(&image);
        for (int type = 0; type < 12; ++type) {
            const int sample = 5 + 20 * type;
            decoded.mark(std::uint64_t(sample), type);
            toldSign(painter, type, sample * s + s / 2, 2 * s + image.height() / 2 + s / 2);
        }
        DecodedFakes source;
        source.decoders.emplace_back(chn, &decoded);
        QVERIFY(alike(painted(viewOf(image)), image));
    }
}

void TstDecodedPainter::anUnknownSignIsPassedOver()
{
    DecodedFake decoded;
    decoded.mark(50, 12).mark(100, -1).mark(150, 1 << 30);
    DecodedFakes source;
    source.decoders.emplace_back(chn, &decoded);
    QCOMPARE(painted(viewOf(ground())), ground());
}

void TstDecodedPainter::boxesOfSeveralDecodersLieOverEachOther()
{
    DecodedFake lower;
    lower.add(10, 100, {"under"}).add(120, 200, {"left"});
    DecodedFake upper;
    upper.add(50, 150, {"over"});
    DecodedFakes source;
    source.decoders.emplace_back(chn, &lower);
    source.decoders.emplace_back(chn + 1, &upper);
    source.decoders.emplace_back(chn, &upper);
    const DecodedView view = viewOf(ground());
    DecodedFake all;
    QImage image = told(lower, view);
    QPainter painter(&image);
    BubbleTexts texts;
    std::vector<DecodedBubble> boxes;
    addBubbles(upper, view, texts, boxes);
    drawTold(painter, boxes[0], image.width());
    QVERIFY(alike(painted(view), image));
}

void TstDecodedPainter::paintingAPartGivesThePixelsOfTheWhole()
{
    DecodedFake decoded;
    decoded.add(2, 60, {"Start"}).add(60, 62).add(80, 91).mark(30, 8).mark(70, 11);
    DecodedFakes source;
    source.decoders.emplace_back(chn, &decoded);
    const DecodedView view = viewOf(ground());
    const QImage whole = painted(view);
    for (int left = 0; left < 100; ++left) {
        const QImage part = painted(view, left, left + 5);
        const QRect seen(left, 0, 6, whole.height());
        QCOMPARE(part.copy(seen), whole.copy(seen));
    }
}

void TstDecodedPainter::aTextScrollsAwayWithItsFrame()
{
    DecodedFake decoded;
    decoded.add(0, 50'000, {"far away"});
    DecodedFakes source;
    source.decoders.emplace_back(chn, &decoded);
    const DecodedView view = viewOf(ground(), 1000.0);
    const QImage image = painted(view);
    DecodedFake mute;
    mute.add(0, 50'000, {""});
    QImage empty = ground();
    QPainter painter(&empty);
    drawTold(painter, {-1000, 49'000, {}, 0}, empty.width());
    QVERIFY(alike(image, empty));
    QCOMPARE(image.pixelColor(0, 0), gChnColors[chn]);
    QVERIFY(image.pixelColor(0, 7) != gChnColors[chn]); // its end is out of sight
}

void TstDecodedPainter::withoutDecodersNothingIsPainted()
{
    QCOMPARE(painted(viewOf(ground())), ground());
    const DecodedFakes source;
    QCOMPARE(painted(viewOf(ground())), ground());
}

void TstDecodedPainter::touchingWallsAreOneRectangle()
{
    std::vector<DecodedBubble> boxes;
    for (int x = 0; x < 100; ++x) {
        boxes.push_back({x, x + 1, {}, 0});
    }
    QCOMPARE(apartFromBegin(boxes), std::size_t(100));
    BubbleShapes shapes;
    bubbleShapes(boxes, 1000, 0, 999, PixelScale{96}, cornerCuts(PixelScale{96}), shapes);
    QCOMPARE(shapes.walls, std::vector<QRect>{QRect(0, 1, 101, 13)});
    QCOMPARE(shapes.lids, (std::vector<QRect>{QRect(0, 0, 101, 1), QRect(0, 14, 101, 1)}));
    QVERIFY(shapes.insides.empty());
    boxes[50].x1 = 40;
    QCOMPARE(apartFromBegin(boxes), std::size_t(50));
}

void TstDecodedPainter::aBoxWiderThanTheRowIsCutTenPixelsBeyondBothEnds()
{
    const std::vector<DecodedBubble> boxes{{-5'000'000'000, 5'000'000'000, {}, 0}};
    BubbleShapes shapes;
    bubbleShapes(boxes, 300, 0, 299, PixelScale{96}, cornerCuts(PixelScale{96}), shapes);
    QCOMPARE(shapes.lids, (std::vector<QRect>{QRect(-10, 0, 321, 1), QRect(-10, 14, 321, 1)}));
    QCOMPARE(shapes.walls, (std::vector<QRect>{QRect(-10, 1, 1, 13), QRect(310, 1, 1, 13)}));
    QCOMPARE(shapes.insides, std::vector<QRect>{QRect(-9, 1, 319, 13)});
    bubbleShapes(boxes, 600, 0, 599, PixelScale{192}, cornerCuts(PixelScale{192}), shapes);
    QCOMPARE(shapes.insides, std::vector<QRect>{QRect(-19, 2, 638, 26)});
}

LUX_GUI_TEST(TstDecodedPainter)
#include "tst_DecodedPainter.moc"
