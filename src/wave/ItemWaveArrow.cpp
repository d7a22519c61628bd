#include "wave/ItemWaveArrow.h"

#include "controls/Look.h"
#include "wave/WaveStrokes.h"

#include <QPainter>

ItemWaveArrow::ItemWaveArrow()
{
    setZValue(2);
}

void ItemWaveArrow::setSpans(const ArrowSpans &value)
{
    spans = value;
    update();
}

void ItemWaveArrow::paint(QPainter *painter, const QStyleOptionGraphicsItem * /*option*/, QWidget * /*widget*/)
{
    const PixelScale scale = screenScale();
    const ArrowStrokes strokes = arrowStrokes(spans, height, scale);
    if (strokes.lines.isEmpty()) {
        return;
    }
    painter->setRenderHint(QPainter::Antialiasing, false);
    painter->setPen(QPen(gGreys[2], scale.s(), Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
    painter->drawLines(strokes.lines);
    painter->drawPoints(strokes.points.constData(), strokes.points.size());
}
