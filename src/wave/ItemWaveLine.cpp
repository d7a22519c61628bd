#include "wave/ItemWaveLine.h"

#include "controls/Look.h"
#include "settings/Globals.h"
#include "wave/DecodedSource.h"
#include "wave/WaveDataGen.h"
#include "wave/WaveStrokes.h"

#include <QPainter>
#include <QStyleOptionGraphicsItem>

DecodedSource *gDecodedSource = nullptr;

namespace {

constexpr int lighterPercent = 120;

} // namespace

ItemWaveLine::ItemWaveLine(int channel, const WaveDataGen *generator)
    : chnIndex(channel), waveGen(generator), lineColor(gChnColors[channel % 8].lighter(lighterPercent))
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
    if (gDecodedSource != nullptr) {
        gDecodedSource->paintRow(*painter, {chnIndex, width, height, waveGen->viewStart(), waveGen->ratioSasPix()});
    }
}

void ItemWaveLine::paintTrace(QPainter &painter, const QRectF &exposed)
{
    // The told strokes are all parallel to an axis: their pixels as rectangles, filled at once, are the same picture
    // at a fraction of the cost of stroking.
    const PixelScale scale = screenScale();
    const QRect seen = exposed.toAlignedRect();
    traceRects(waveGen->digLine(chnIndex), traceLevels(height, scale), scale, seen.left(), seen.right(), m_rects);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colorWaveform ? lineColor : gGreys[0]);
    painter.drawRects(m_rects.data(), int(m_rects.size()));
}
