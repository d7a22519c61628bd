#include "wave/WaveItem.h"

WaveItem::WaveItem()
{
    setFlags(GraphicsItemFlags());
    setAcceptedMouseButtons(Qt::NoButton);
}

void WaveItem::setSize(QSize size)
{
    if (size == QSize(width, height)) {
        return;
    }
    prepareGeometryChange();
    width = size.width();
    height = size.height();
}
