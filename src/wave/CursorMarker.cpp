#include "wave/CursorMarker.h"

#include "controls/Look.h"
#include "settings/Language.h"

#include <QPainter>

CursorMarker::CursorMarker(int id) : height(dp(3)), phyId(id)
{
    setZValue(2);
    setToolTip(::tr("Voltage marker") + QStringLiteral(" Y%1").arg(id + 1));
    setAcceptHoverEvents(true);
    setAcceptedMouseButtons(Qt::NoButton); // the main view handles the pointer
    hide();
}

void CursorMarker::setMarkerState(MarkerState value)
{
    state = value;
    setVisible(isShown());
    update();
}

void CursorMarker::setLineWidth(int pixels)
{
    prepareGeometryChange();
    width = pixels;
}

void CursorMarker::paint(QPainter *painter, const QStyleOptionGraphicsItem * /*option*/, QWidget * /*widget*/)
{
    const int s = uiScale();
    const int y = height / 2 + s / 2;
    painter->setRenderHint(QPainter::Antialiasing, false);
    painter->setPen(QPen(TimeMarkers::colors(state).line, s, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
    painter->drawLine(0, y, width - s, y);
}
