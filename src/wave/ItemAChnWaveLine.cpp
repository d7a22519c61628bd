#include "wave/ItemAChnWaveLine.h"

#include "controls/Look.h"
#include "device/DevBase.h"
#include "settings/Globals.h"
#include "wave/AnalogColor.h"
#include "wave/AnalogScale.h"
#include "wave/WaveDataGen.h"

#include <QPainter>
#include <QStyleOptionGraphicsItem>

namespace {

template<typename Value>
void putOfChannel(QVector<Value> &values, int channel, Value value)
{
    if (channel >= 0 && channel < values.size()) {
        values[channel] = value;
    }
}

} // namespace

ItemAChnWaveLine::ItemAChnWaveLine(int channels, const WaveDataGen *generator)
    : waveGen(generator), chnEnabled(channels, char(1)), zeroY(channels, 0), fullScale(channels, 0)
{
    setZValue(0);
    setFlag(ItemUsesExtendedStyleOption); // for the exposed rectangle
}

void ItemAChnWaveLine::setChnEnabled(int channel, bool on)
{
    putOfChannel(chnEnabled, channel, char(on ? 1 : 0));
    update();
}

void ItemAChnWaveLine::setZeroY(int channel, int y)
{
    putOfChannel(zeroY, channel, y);
    update();
}

void ItemAChnWaveLine::setFullScale(int channel, int value)
{
    putOfChannel(fullScale, channel, value);
    update();
}

void ItemAChnWaveLine::paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget * /*widget*/)
{
    if (height == 0) {
        return;
    }
    painter->save();
    // A trace that leaves the area must not cross the rows below it.
    painter->setClipRect(boundingRect(), Qt::IntersectClip);
    const QRect seen = option->exposedRect.toAlignedRect();
    for (int channel = 0; channel < chnEnabled.size(); ++channel) {
        if (chnEnabled[channel] != 0) {
            paintTrace(*painter, channel, seen);
        }
    }
    painter->restore();
}

void ItemAChnWaveLine::paintTrace(QPainter &painter, int channel, const QRect &seen)
{
    const bool reversed = m_device && m_device->aChnReverse.value(channel);
    traceStrokes(waveGen->aChnLine(channel), {zeroY[channel], fullScale[channel], reversed, height}, screenScale(),
                 seen.left(), seen.right(), m_strokes);
    const QColor color = colorWaveform ? aChnColor(channel) : gGreys[channel % int(gGreys.size())];
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRects(m_strokes.bars.data(), int(m_strokes.bars.size()));

    // A stroke of odd width is sharp only about a pixel's middle.
    const double middle = uiScale() % 2 == 0 ? 0.0 : 0.5;
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setPen(QPen(color, uiScale(), Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
    painter.translate(middle, middle);
    painter.drawLines(m_strokes.lines.data(), int(m_strokes.lines.size()));
    painter.translate(-middle, -middle);
}
