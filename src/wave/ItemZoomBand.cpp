#include "wave/ItemZoomBand.h"

#include "controls/Look.h"

#include <QPainter>

ItemZoomBand::ItemZoomBand()
{
    setZValue(4);
    hide();
}

void ItemZoomBand::paint(QPainter *painter, const QStyleOptionGraphicsItem * /*option*/, QWidget * /*widget*/)
{
    const int s = uiScale();
    painter->fillRect(0, 0, width, height, QColor(255, 255, 255, 50));
    painter->fillRect(0, 0, s, height, gGreys[0]);
    painter->fillRect(width - s, 0, s, height, gGreys[0]);
}
