#include "wave/CursorHandle.h"

#include "analysis/MarkerTimes.h"
#include "controls/Look.h"
#include "settings/Language.h"

#include <QFontMetrics>
#include <QPainter>

CursorHandle::CursorHandle(int id, QWidget *ruler)
    : QLabel(ruler), phyId(id), label(MarkerTimes::label(id)), outline(TimeMarkers::flagOutline(screenScale()))
{
    QFont small = gFontMain;
    small.setPixelSize(dp(8));
    small.setWeight(QFont::Bold);
    setFont(small);
    labelWidth = QFontMetrics(small).horizontalAdvance(label);
    setFixedSize(TimeMarkers::flagSize(screenScale()));
    setMouseTracking(true); // moves over the flag are moves over the ruler
    setAccessibleName(::tr("Timing marker") + QLatin1Char(' ') + label);
    setCursor(Qt::SizeHorCursor); // it can be taken along
    hide();
}

void CursorHandle::setMarkerState(MarkerState value)
{
    state = value;
    setVisible(state != MarkerState::off);
    update();
}

void CursorHandle::paintEvent(QPaintEvent * /*event*/)
{
    const MarkerColors colors = TimeMarkers::colors(state);
    QPainter painter(this);
    painter.setPen(QPen(colors.line, uiScale(), Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter.setBrush(colors.face);
    painter.drawPolygon(outline);
    painter.setPen(QPen(Qt::black, 1.0));
    painter.setFont(font());
    painter.drawText((width() - labelWidth + 1) / 2, TimeMarkers::flagBaseline(screenScale()), label);
}

void CursorHandle::enterEvent(QEvent *event)
{
    QLabel::enterEvent(event);
    if (state == MarkerState::placed) {
        emit mouseEnter(phyId);
    }
}

void CursorHandle::leaveEvent(QEvent *event)
{
    QLabel::leaveEvent(event);
    if (state == MarkerState::hovered) {
        emit mouseLeave(phyId);
    }
}

void CursorHandle::mouseMoveEvent(QMouseEvent *event)
{
    // A marker that has just been put down lies under the pointer without its entering anew.
    if (state == MarkerState::placed) {
        emit mouseEnter(phyId);
    }
    QLabel::mouseMoveEvent(event);
}
