#include "wave/MarkerGlyphs.h"

#include "controls/Look.h"
#include "settings/Globals.h"
#include "wave/PaintKind.h"

#include <QLine>
#include <QPainter>
#include <QPen>
#include <QVector>

namespace {

/// The types, by the numbers that decoders give them.
enum MarkerCode { Dot, ErrorDot, Square, ErrorSquare, UpArrow, DownArrow, X, ErrorX, Start, Stop, One, Zero, codes };

constexpr int mostReach = 7; ///< no sign reaches further from its middle, logical pixels

QPen penOf(QColor color, int s)
{
    return {color, qreal(s), Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin};
}

/// A square of `size` whose top left corner is `corner` left of and above the middle; logical pixels.
QRect about(int corner, int size, int s)
{
    return {-corner * s, -corner * s, size * s, size * s};
}

/// @param down  1 for an arrow that points downwards, -1 for one upwards
void drawArrow(QPainter &painter, int down, int s)
{
    // The tip is a point, and behind it three strokes that grow.
    const int tip = down > 0 ? s : -2 * s;
    QVector<QLine> strokes;
    for (int i = 1; i <= 3; ++i) {
        const int y = tip - i * down * s;
        strokes.append(QLine(-i * s, y, i * s, y));
    }
    painter.drawLines(strokes);
    painter.drawPoint(0, tip);
}

void drawX(QPainter &painter, int s)
{
    const int arm = 3 * s;
    painter.drawLine(-arm, arm, arm, -arm);
    painter.drawLine(arm, arm, -arm, -arm);
}

QVector<QLine> figureOne(int s)
{
    const int u = 5 * s / 2;
    const int v = 5 * s - u;
    return {{-s, -v, 0, -v}, {0, -v, 0, u}, {-s, v, s, v}};
}

QVector<QLine> figureZero(int s)
{
    const int w = 3 * s / 2;
    const int t = 3 * s - w;
    const int u = 5 * s / 2;
    const int top = -5 * s + u;
    const int bottom = u - s;
    return {{-t, top + s, -t, bottom}, {s - t, top, w - s, top}, {w, bottom, w, top + s}, {w - s, u, s - t, u}};
}

void drawFigure(QPainter &painter, const QVector<QLine> &lines, int s)
{
    painter.setPen(penOf(gGreys[2], s));
    painter.setBrush(gGreys[2]);
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.drawEllipse(about(5, 10, s));
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setPen(penOf(gGreys[8], s));
    painter.drawLines(lines);
}

/// Draws a sign about the painter's origin.
void drawGlyph(QPainter &painter, int type, QColor arrow, int s)
{
    const bool isError = type == ErrorDot || type == ErrorSquare || type == ErrorX;
    const QColor color = isError ? QColor(Qt::red) : gGreys[1];
    painter.setPen(penOf(type == UpArrow || type == DownArrow ? arrow : color, s));
    painter.setBrush(type == Start ? QColor(Qt::green) : type == Stop ? QColor(Qt::red) : color);
    painter.setRenderHint(QPainter::Antialiasing, type == Dot || type == ErrorDot || type == Start);
    switch (type) {
    case Dot:
    case ErrorDot:
        painter.drawEllipse(about(2, 5, s));
        break;
    case Square:
    case ErrorSquare:
        painter.drawRect(about(2, 4, s));
        break;
    case UpArrow:
    case DownArrow:
        drawArrow(painter, type == DownArrow ? 1 : -1, s);
        break;
    case X:
    case ErrorX:
        drawX(painter, s);
        break;
    case Start:
        painter.drawEllipse(about(4, 9, s));
        break;
    case Stop:
        painter.drawRect(about(4, 9, s));
        break;
    case One:
        drawFigure(painter, figureOne(s), s);
        break;
    default:
        drawFigure(painter, figureZero(s), s);
        break;
    }
}

} // namespace

const QImage &MarkerGlyphs::glyph(int type, QColor arrow)
{
    if (m_dpi != gDpi) {
        m_dpi = gDpi;
        m_glyphs.clear();
    }
    QImage &image = m_glyphs[quint64(unsigned(type)) << 32 | arrow.rgba()];
    if (image.isNull()) {
        const int reach = mostReach * uiScale();
        image = QImage(2 * reach, 2 * reach, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.translate(reach, reach);
        drawGlyph(painter, type, arrow, uiScale());
    }
    return image;
}

void MarkerGlyphs::draw(QPainter &painter, int type, int x, int y, QColor line)
{
    if (type < 0 || type >= codes) {
        return;
    }
    const QColor arrow = colorWaveform ? line : gGreys[1];
    if (keepsShapes(painter)) {
        painter.save();
        painter.translate(x, y);
        drawGlyph(painter, type, arrow, uiScale());
        painter.restore();
        return;
    }
    const int reach = mostReach * uiScale();
    painter.drawImage(QPoint(x - reach, y - reach), glyph(type, arrow));
}
