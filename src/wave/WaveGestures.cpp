#include "wave/WaveGestures.h"

#include "analysis/MarkerTimes.h"
#include "controls/Look.h"
#include "wave/EdgeJump.h"
#include "wave/ItemZoomBand.h"
#include "wave/MarkerBoard.h"
#include "wave/PulsePointer.h"
#include "wave/RowColumn.h"
#include "wave/VoltageBoard.h"
#include "wave/WaveDataGen.h"
#include "wave/WaveView.h"
#include "wave/ZoomFlag.h"

#include <QCursor>
#include <QGraphicsScene>
#include <QMouseEvent>
#include <QScrollBar>

#include <algorithm>
#include <cmath>

namespace {

constexpr int leastBand = 4; ///< pixels at 96 dpi: a narrower mark was a click

} // namespace

WaveGestures::WaveGestures(const WaveParts &parts, QObject *parent)
    : QObject(parent), m_parts(parts), m_band(new ItemZoomBand)
{
    parts.view.scene()->addItem(m_band);
}

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
        m_banding = event.modifiers() == Qt::ControlModifier && canMoveTime();
    }
}

void WaveGestures::pan(int steps)
{
    if (canMoveTime()) {
        const double tenth = m_parts.waveGen.viewWidth() * m_parts.waveGen.ratioSasPix() / 10.0;
        m_parts.waveGen.setViewStart(m_parts.waveGen.viewStart() + steps * tenth);
    }
}

void WaveGestures::dragBand(int x)
{
    const int left = std::max(std::min(x, m_anchor.x()), 0);
    const int right = std::min(std::max(x, m_anchor.x()), m_parts.view.width());
    m_band->setSize({right - left, m_parts.view.sceneRect().toRect().height()});
    m_band->setPos(left, 0);
    m_band->show();
}

void WaveGestures::dropBand()
{
    m_banding = false;
    const bool isWide = m_band->isVisible() && m_band->boundingRect().width() >= dp(leastBand);
    m_band->hide();
    if (isWide) {
        const double left = m_band->x() / uiScale();
        const double right = left + m_band->boundingRect().width() / uiScale();
        const double start = m_parts.waveGen.viewStart();
        const double ratio = m_parts.waveGen.ratioSasPix();
        m_parts.waveGen.zoomToFill(start + left * ratio, start + right * ratio);
    }
}

void WaveGestures::showCursor()
{
    const Qt::CursorShape shape = m_panning                        ? Qt::ClosedHandCursor
                                  : m_parts.markers.isGrabbable()  ? Qt::SizeHorCursor
                                  : m_parts.voltages.isGrabbable() ? Qt::SizeVerCursor
                                                                   : Qt::ArrowCursor;
    if (m_parts.view.viewport()->cursor().shape() != shape) {
        m_parts.view.viewport()->setCursor(shape);
    }
}

void WaveGestures::move(const QMouseEvent &event)
{
    m_dragged = true;
    if (m_banding && event.buttons() == Qt::LeftButton) {
        dragBand(event.x());
        tellPointer(event.pos());
    } else if (isOverEdge(event.pos())) {
        pointAt(event.pos());
    } else if (event.buttons() == Qt::NoButton) {
        pointAt(event.pos());
        if (!moveMarkers(event.pos())) {
            offerEdge(event.pos());
        }
    } else if (event.buttons() == Qt::LeftButton && canMoveTime()) {
        const int width = (event.x() - m_anchor.x()) / uiScale();
        m_anchor = event.pos();
        m_panning = true;
        emit mouseDraged(width);
    }
    m_panning = m_panning && event.buttons() == Qt::LeftButton;
    showCursor();
}

void WaveGestures::release(const QMouseEvent &event)
{
    m_panning = false;
    if (m_banding) {
        dropBand();
    } else {
        click(event);
    }
    showCursor();
}

void WaveGestures::click(const QMouseEvent &event)
{
    if ((!m_parts.waveGen.isComplete() && !m_parts.rows.isAnalog()) || m_dragged) {
        return;
    }
    if (event.button() == Qt::LeftButton && isOverEdge(event.pos())) {
        m_parts.edges.click();
    } else if (clickMarkers(event) || isBelowRows(event.pos())) {
        return;
    } else if (event.button() == Qt::LeftButton) {
        emit zoomChangedByMouse(zoomFlag::in, event.pos());
    } else if (event.button() == Qt::RightButton) {
        emit zoomChangedByMouse(zoomFlag::out, event.pos());
    }
}

bool WaveGestures::moveMarkers(QPoint point)
{
    // A voltage marker on its way is not held up by the timing markers that it crosses.
    if (!m_parts.markers.isFollowing() && m_parts.voltages.isFollowing() &&
        m_parts.voltages.pointerMoved(sceneY(point))) {
        m_parts.markers.pointerLeft();
        m_parts.edges.hide();
        return true;
    }
    if (m_parts.markers.pointerMoved(point, channelAt(point))) {
        m_parts.voltages.pointerLeft();
        return true;
    }
    return m_parts.voltages.pointerMoved(sceneY(point));
}

bool WaveGestures::clickMarkers(const QMouseEvent &event)
{
    const bool isTimes = m_parts.markers.isFollowing();
    return (!isTimes && m_parts.voltages.clicked(event.button(), sceneY(event.pos()))) ||
           m_parts.markers.clicked(event.button());
}

int WaveGestures::sceneY(QPoint point) const
{
    return int(std::floor(m_parts.view.mapToScene(point).y()));
}

void WaveGestures::leave()
{
    m_parts.pulse.hide();
    m_parts.edges.hide();
    emit pointerMoved(0, QString());
    m_parts.markers.pointerLeft();
    m_parts.voltages.pointerLeft();
    showCursor();
}

void WaveGestures::pointAt(QPoint point)
{
    const int chn = channelAt(point);
    m_parts.pulse.pointAt(chn, m_parts.rows.placeOf(chn), point.x());
    tellPointer(point);
}

void WaveGestures::tellPointer(QPoint point)
{
    static const QStringList units{QStringLiteral("ps"), QStringLiteral("ns"), QStringLiteral("us"),
                                   QStringLiteral("ms"), QStringLiteral("s")};
    QString text;
    if (m_parts.view.viewport()->rect().contains(point)) {
        const SmpData *capture = m_parts.waveGen.source();
        const SmpReadLock lock(capture);
        if (lock && capture->smpCount() > 0 && capture->smpFrequ() > 0) {
            const double sample = MarkerTimes::sampleAt(point.x() / uiScale(), m_parts.waveGen.viewStart(),
                                                        m_parts.waveGen.ratioSasPix());
            text = MarkerTimes::positionText(sample, capture->trgPos(), capture->smpFrequ(), units);
        }
    }
    emit pointerMoved(point.x(), text);
}

void WaveGestures::pointAgain()
{
    pointAt(m_parts.view.viewport()->mapFromGlobal(QCursor::pos()));
}

bool WaveGestures::isBelowRows(QPoint point) const
{
    return m_parts.view.mapToScene(point).y() >= m_parts.rows.totalHeight();
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
