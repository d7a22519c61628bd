#include "wave/NextEdge.h"

#include "controls/Look.h"
#include "settings/Language.h"

#include <QPainter>

EdgeZone edgeZone(int x, int right, int zone)
{
    if (x <= zone) {
        return {EdgeSide::left, zone};
    }
    if (x >= right - zone && x <= right) {
        return {EdgeSide::right, right};
    }
    return {};
}

QVector<QPoint> chevron(QSize button, bool pointsLeft, PixelScale scale)
{
    const QPoint centre(button.width() / 2, button.height() / 2);
    const int direction = pointsLeft ? -1 : 1;
    QVector<QPoint> points;
    for (int i = 0; i <= 4; ++i) {
        const int x = centre.x() + direction * (scale.dp(2) - scale.dp(i));
        points.append({x, centre.y() - scale.dp(i)});
        points.append({x, centre.y() + scale.dp(i + 1)});
    }
    return points;
}

NextEdge::NextEdge()
{
    setZValue(3);
    setAcceptedMouseButtons(Qt::NoButton);
    hide();
}

int NextEdge::buttonWidth()
{
    return dp(12);
}

void NextEdge::setTarget(EdgeSide side, int chn)
{
    goesBack = side == EdgeSide::left;
    chnIndex = chn;
    setToolTip(goesBack ? ::tr("Move previous edge to center") : ::tr("Move next edge to center"));
    update();
}

void NextEdge::setButtonSize(QSize size)
{
    prepareGeometryChange();
    width = size.width();
    height = size.height();
}

void NextEdge::paint(QPainter *painter, const QStyleOptionGraphicsItem * /*option*/, QWidget * /*widget*/)
{
    const int s = uiScale();
    const double half = s * 0.5;
    painter->setRenderHint(QPainter::Antialiasing, true);
    painter->setPen(QPen(Qt::black, s, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter->setBrush(QColor(255, 255, 255, 150));
    painter->drawRect(QRectF(half, half, width - s, height - s)); // the border lies within the item

    // A point is a square of one stroke: as a rectangle in whole pixels it stays sharp under antialiasing.
    painter->setPen(Qt::NoPen);
    painter->setBrush(gGreys[8]);
    for (const QPoint &point : chevron({width, height}, goesBack, screenScale())) {
        painter->drawRect(point.x() - s / 2, point.y() - s / 2, s, s);
    }
}
