#include "wave/CursorBody.h"

#include "analysis/MarkerTimes.h"
#include "settings/Language.h"

#include <QPainter>

CursorBody::CursorBody(int id) : phyId(id), label(MarkerTimes::label(id))
{
    setZValue(1);
    setToolTip(::tr("Timing marker") + QLatin1Char(' ') + label);
    hide();
}

void CursorBody::setMarkerState(MarkerState value)
{
    state = value;
    setVisible(isShown());
    update();
}

void CursorBody::setColumnHeight(int pixels)
{
    setSize({screenScale().s(), pixels});
}

void CursorBody::paint(QPainter *painter, const QStyleOptionGraphicsItem * /*option*/, QWidget * /*widget*/)
{
    // The pixels of a stroke along width / 2 without caps that would pass the ends.
    painter->setRenderHint(QPainter::Antialiasing, false);
    painter->fillRect(0, 0, width, height, TimeMarkers::colors(state).line);
}
