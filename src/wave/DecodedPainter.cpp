#include "wave/DecodedPainter.h"

#include "controls/Look.h"
#include "settings/Globals.h"
#include "wave/PaintKind.h"

#include <QFontMetrics>
#include <QLinearGradient>
#include <QPainter>

namespace {

constexpr int underText = 3; ///< from a text's baseline to the end of the box, pixels at 96 dpi, as the one below
constexpr int signReach = 8; ///< no sign reaches further
constexpr int shadowAlpha = 207;

} // namespace

std::shared_ptr<DecodedPainter> DecodedPainter::shared()
{
    static std::weak_ptr<DecodedPainter> kept;
    std::shared_ptr<DecodedPainter> painter = kept.lock();
    if (!painter) {
        painter = std::make_shared<DecodedPainter>();
        kept = painter;
    }
    return painter;
}

void DecodedPainter::paint(QPainter &painter, int chn, const DecodedView &view, int height, QColor line, int left,
                           int right)
{
    if (gDecodedSource == nullptr) {
        return;
    }
    m_row.clear();
    m_texts.useFont(gFontSmall);
    gDecodedSource->visit(chn, [&](const DecodedChannel &decoded) {
        addBubbles(decoded, view, m_texts, m_row.bubbles);
        addMarkers(decoded, view, m_row.markers);
    });
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setFont(gFontSmall);
    m_outline = colorWaveform ? gGreys[2] : gChnColors[chn % gChnColors.size()];
    std::span<const DecodedBubble> rest(m_row.bubbles);
    while (!rest.empty()) { // a box over others hides what they have shown so far
        const std::size_t apart = apartFromBegin(rest);
        paintBoxes(painter, rest.first(apart), view, left, right);
        paintTexts(painter, rest.first(apart), view, left, right);
        rest = rest.subspan(apart);
    }
    paintMarkers(painter, view, height, line, left, right);
}

void DecodedPainter::paintBoxes(QPainter &painter, std::span<const DecodedBubble> boxes, const DecodedView &view,
                                int left, int right)
{
    // As with the trace, a stroke's pixels filled as rectangles are the same picture at a fraction of the cost.
    if (m_cuts.size() != std::size_t(2 * view.scale.s())) {
        m_cuts = cornerCuts(view.scale);
    }
    bubbleShapes(boxes, view.width, left, right, view.scale, m_cuts, m_shapes);
    painter.setPen(Qt::NoPen);
    painter.setBrush(m_outline);
    for (const std::vector<QRect> *rects : {&m_shapes.lids, &m_shapes.walls}) {
        fillRects(painter, *rects);
    }
    QLinearGradient shade(0, 0, 0, view.scale.dp(bubbleHeight) / 2 + view.scale.s());
    shade.setColorAt(0, gGreys[2]);
    shade.setColorAt(1.0, QColor(0, 0, 0, shadowAlpha));
    painter.setBrush(shade);
    fillRects(painter, m_shapes.insides);
}

void DecodedPainter::paintTexts(QPainter &painter, std::span<const DecodedBubble> boxes, const DecodedView &view,
                                int left, int right)
{
    painter.setPen(gGreys[0]);
    const int base = view.scale.dp(bubbleHeight) - view.scale.dp(underText) + view.scale.s() / 2;
    const int top = base - QFontMetrics(gFontSmall).ascent();
    for (const DecodedBubble &box : boxes) {
        const std::int64_t x = textColumn(box);
        if (box.textWidth != 0 && x <= right && x + box.textWidth >= left) {
            painter.drawStaticText(int(x), top, box.text);
        }
    }
}

void DecodedPainter::paintMarkers(QPainter &painter, const DecodedView &view, int height, QColor line, int left,
                                  int right)
{
    const int s = view.scale.s();
    const int y = 2 * s + height / 2 + s / 2;
    const int reach = view.scale.dp(signReach);
    for (const DecodedMarker &marker : m_row.markers) {
        const std::int64_t x = view.column(double(marker.sample));
        if (x + reach >= left && x - reach <= right) {
            m_glyphs.draw(painter, marker.type, int(x), y, line);
        }
    }
}
