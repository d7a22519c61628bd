#include "wave/WaveGestures.h"

#include "controls/Look.h"
#include "wave/EdgeJump.h"
#include "wave/MarkerBoard.h"
#include "wave/PulsePointer.h"
#include "wave/RowColumn.h"
#include "wave/WaveDataGen.h"
#include "wave/WaveView.h"
#include "wave/ZoomFlag.h"

#include <QCursor>
#include <QMouseEvent>
#include <QScrollBar>

WaveGestures::WaveGestures(const WaveParts &parts, QObject *parent) : QObject(parent), m_parts(parts) {}

bool WaveGestures::canMoveTime() const
{
    return m_parts.rows.isAnalog() || m_parts.waveGen.sampleCount() > 0;
}

int WaveGestures::channelAt(QPoint point) const
{
    return m_parts.rows.channelAt(point, m_parts.view.size(), m_parts.view.verticalScrollBar()->value());
}

void WaveGestures::press(const QMouseEvent &event)
{
    m_dragged = false;
    if (event.button() == Qt::LeftButton) {
        m_anchor = event.pos();
    }
}

void WaveGestures::move(const QMouseEvent &event)
{
    m_dragged = true;
    if (isOverEdge(event.pos())) {
        pointAt(event.pos());
    } else if (event.buttons() == Qt::NoButton) {
        pointAt(event.pos());
        if (!m_parts.markers.pointerMoved(event.pos(), channelAt(event.pos()))) {
            offerEdge(event.pos());
        }
    } else if (event.buttons() == Qt::LeftButton && canMoveTime()) {
        const int width = (event.x() - m_anchor.x()) / uiScale();
        m_anchor = event.pos();
        emit mouseDraged(width);
    }
}

void WaveGestures::release(const QMouseEvent &event)
{
    if ((!m_parts.waveGen.isComplete() && !m_parts.rows.isAnalog()) || m_dragged) {
        return;
    }
    if (event.button() == Qt::LeftButton && isOverEdge(event.pos())) {
        m_parts.edges.click();
    } else if (m_parts.markers.clicked(event.button())) {
        return;
    } else if (event.button() == Qt::LeftButton) {
        emit zoomChangedByMouse(zoomFlag::in, event.pos());
    } else if (event.button() == Qt::RightButton) {
        emit zoomChangedByMouse(zoomFlag::out, event.pos());
    }
}

void WaveGestures::leave()
{
    m_parts.pulse.hide();
    m_parts.edges.hide();
    m_parts.markers.pointerLeft();
}

void WaveGestures::pointAt(QPoint point)
{
    const int chn = channelAt(point);
    m_parts.pulse.pointAt(chn, m_parts.rows.placeOf(chn), point.x());
}

void WaveGestures::pointAgain()
{
    pointAt(m_parts.view.viewport()->mapFromGlobal(QCursor::pos()));
}

bool WaveGestures::isOverEdge(QPoint point) const
{
    return m_parts.edges.isUnder(m_parts.view.mapToScene(point));
}

void WaveGestures::offerEdge(QPoint point)
{
    const int bar = m_parts.view.scrollBarWidth();
    const int right = m_parts.view.width() - (bar > 0 ? bar + uiScale() : 0);
    const int chn = channelAt(point);
    m_parts.edges.offer(point.x(), chn, m_parts.rows.placeOf(chn), right);
}
