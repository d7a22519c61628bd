#include "wave/ItemWaveLine.h"

#include "controls/Look.h"
#include "settings/Globals.h"
#include "wave/DecodedPainter.h"
#include "wave/DecodedSource.h"
#include "wave/PaintKind.h"
#include "wave/WaveDataGen.h"
#include "wave/WaveStrokes.h"

#include <QImage>
#include <QPainter>
#include <QStyleOptionGraphicsItem>

#include <algorithm>
#include <utility>

DecodedSource *gDecodedSource = nullptr;

namespace {

constexpr int lighterPercent = 120;
constexpr std::size_t columnsOfARect = 6; ///< more rectangles than one in so many columns are painted as rows

} // namespace

ItemWaveLine::ItemWaveLine(int channel, const WaveDataGen *generator)
    : chnIndex(channel),
      waveGen(generator),
      lineColor(gChnColors[channel % 8].lighter(lighterPercent)),
      m_decoded(DecodedPainter::shared())
{
    setZValue(1);
    setFlag(ItemUsesExtendedStyleOption); // for the exposed rectangle
    setData(0, chnIndex);
}

void ItemWaveLine::paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget * /*widget*/)
{
    if (height == 0 || waveGen->sampleCount() < 1) {
        return;
    }
    painter->setRenderHint(QPainter::Antialiasing, false);
    paintTrace(*painter, option->exposedRect);
    paintDecoded(*painter, option->exposedRect);
}

void ItemWaveLine::paintDecoded(QPainter &painter, const QRectF &exposed)
{
    const DecodedView view{waveGen->viewStart(), waveGen->ratioSasPix(), width, waveGen->sampleCount(), screenScale()};
    const QRect seen = exposed.toAlignedRect();
    m_decoded->paint(painter, chnIndex, view, height, lineColor, seen.left(), seen.right());
}

void ItemWaveLine::paintTrace(QPainter &painter, const QRectF &exposed)
{
    // The told strokes are all parallel to an axis: their pixels as rectangles, filled at once, are the same picture
    // at a fraction of the cost of stroking.
    const QRect seen = exposed.toAlignedRect();
    if (std::exchange(m_measured, QRect()) != seen) {
        measure(seen);
    }
    const QColor color = colorWaveform ? lineColor : gGreys[0];
    if (isPaintedAsRows(painter)) {
        paintRows(painter, seen, color);
        return;
    }
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    fillRects(painter, m_rects);
}

void ItemWaveLine::measure(const QRect &seen)
{
    const PixelScale scale = screenScale();
    traceRects(waveGen->digLine(chnIndex), traceLevels(height, scale), scale, seen.left(), seen.right(), m_rects);
}

bool ItemWaveLine::isPaintedAsRows(const QPainter &painter) const
{
    const PixelScale scale = screenScale();
    const TraceLevels levels = traceLevels(height, scale);
    const bool isDense = m_rects.size() * columnsOfARect > std::size_t(std::max(width, 0));
    return isDense && !keepsShapes(painter) && levels.lowY - levels.highY > scale.s();
}

QRect ItemWaveLine::covers(const QPainter &painter, const QRectF &exposed)
{
    if (height == 0 || waveGen->sampleCount() < 1) {
        return {};
    }
    m_measured = exposed.toAlignedRect();
    measure(m_measured);
    if (!isPaintedAsRows(painter)) {
        return {};
    }
    const PixelScale scale = screenScale();
    const TraceLevels levels = traceLevels(height, scale);
    const QRect band(0, levels.highY - scale.s() / 2, width, levels.lowY - levels.highY + scale.s());
    return band & QRect(m_measured.left(), 0, m_measured.width(), height);
}

void ItemWaveLine::paintRows(QPainter &painter, const QRect &seen, QColor color)
{
    const PixelScale scale = screenScale();
    const TraceLevels levels = traceLevels(height, scale);
    traceRows(m_rects, levels, scale, width, gGreys[8].rgb(), color.rgb(), m_traceRows);
    const int left = std::max(seen.left(), 0);
    const int right = std::min(seen.right() + 1, width);
    const auto fill = [&](const std::vector<QRgb> &row, int top, int bottom) {
        const QImage line(reinterpret_cast<const uchar *>(row.data()), width, 1, QImage::Format_RGB32);
        painter.fillRect(left, top, right - left, bottom - top, QBrush(line));
    };
    const int highTop = levels.highY - scale.s() / 2;
    const int lowTop = levels.lowY - scale.s() / 2;
    fill(m_traceRows.high, highTop, highTop + scale.s());
    fill(m_traceRows.between, highTop + scale.s(), lowTop);
    fill(m_traceRows.low, lowTop, lowTop + scale.s());
}
