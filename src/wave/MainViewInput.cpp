#include "analysis/PulseTimes.h"
#include "controls/Look.h"
#include "controls/PixelScale.h"
#include "device/DevBase.h"
#include "device/DeviceGlobals.h"
#include "wave/ItemWaveArrow.h"
#include "wave/MainView.h"
#include "wave/NextEdge.h"
#include "wave/PulseHover.h"
#include "wave/WaveDataGen.h"
#include "wave/WaveView.h"

#include <QCursor>
#include <QMouseEvent>
#include <QScrollBar>

namespace {

constexpr int zoomIn = 1;
constexpr int zoomOut = 2;
constexpr double beyondEnds = 1000.0; ///< samples by which Home and End pass the data, to show where it ends

} // namespace

bool MainView::canMoveTime() const
{
    return gDev->isAnalogModel() || gDev->smpData->sampleCount() > 0;
}

void MainView::slotWheelChanged(int flag, QPoint point)
{
    emit zoomChangedByMouse(flag == 1 ? zoomIn : zoomOut, point);
}

void MainView::slotMousePressed(QMouseEvent *event)
{
    dragged = false;
    if (event->button() == Qt::LeftButton) {
        pressPos = event->pos();
    }
}

void MainView::slotMouseMoved(QMouseEvent *event)
{
    dragged = true;
    if (isOverNextEdge(event->pos())) {
        hover(event->pos());
    } else if (event->buttons() == Qt::NoButton) {
        hover(event->pos());
        if (!moveOverMarkers(event->pos())) {
            offerNextEdge(event->pos());
        }
    } else if (event->buttons() == Qt::LeftButton && canMoveTime()) {
        const int width = (event->x() - pressPos.x()) / uiScale();
        pressPos = event->pos();
        emit mouseDraged(width);
    }
}

void MainView::slotMouseReleased(QMouseEvent *event)
{
    const bool hasCapture = gDev->smpData->complete.load(std::memory_order_acquire);
    if ((!hasCapture && gDev->aChnEnable.isEmpty()) || dragged) {
        return;
    }
    if (event->button() == Qt::LeftButton && isOverNextEdge(event->pos())) {
        clickNextEdge();
    } else if (releaseOverMarkers(event->button())) {
        return;
    } else if (event->button() == Qt::LeftButton) {
        emit zoomChangedByMouse(zoomIn, event->pos());
    } else if (event->button() == Qt::RightButton) {
        emit zoomChangedByMouse(zoomOut, event->pos());
    }
}

void MainView::slotMouseLeave()
{
    hideHover();
    nextEdge->hide();
    const int hovered = firstMarkerIn(MarkerState::hovered);
    if (hovered >= 0) {
        changeMarkerState(hovered, MarkerState::placed);
    }
}

int MainView::channelAt(QPoint point) const
{
    return channelUnderPoint(m_rows, m_chns, point, waveView->size(), waveView->verticalScrollBar()->value());
}

bool MainView::pulseUnder(int chn, int x, SmpEdgeInfo &info, std::int64_t &rate) const
{
    const SmpData *capture = gDev->smpData.get();
    const SmpReadLock lock(capture);
    if (!lock || chn < 0 || capture->smpFrequ < 1) {
        return false;
    }
    const WaveWindow window{waveGen->viewStart(), waveGen->ratioSasPix(), waveGen->viewWidth()};
    const std::int64_t sample = sampleUnder(x / uiScale(), window);
    rate = capture->smpFrequ;
    return window.ratio > 0.0 && sample >= 0 && sample < capture->smpCount &&
           capture->edgeNeighbours(chn, sample, info) == 0;
}

void MainView::hover(QPoint point)
{
    const int chn = channelAt(point);
    SmpEdgeInfo info{};
    std::int64_t rate = 0;
    if (!pulseUnder(chn, point.x(), info, rate)) {
        hideHover();
        return;
    }
    emit logMeasureChanged(pulseTexts(pulseTimes(info, rate), timeUnits, freqUnits));
    const double start = waveGen->viewStart();
    const double ratio = waveGen->ratioSasPix();
    const auto edge = double(info.nextEdge);
    if (hoverChn == chn && hoverStart == start && hoverEdge == edge && m_hoverRatio == ratio) {
        return;
    }
    hoverChn = chn;
    hoverStart = start;
    hoverEdge = edge;
    m_hoverRatio = ratio;
    placeArrow(chn, info);
}

void MainView::placeArrow(int chn, const SmpEdgeInfo &info)
{
    const int s = uiScale();
    const auto row = std::size_t(m_chns[std::size_t(chn)].showIndex);
    waveArrow->setPos(0, m_rows.tops[row] + 2 * s);
    waveArrow->setSize({waveView->width(), m_rows.heights[row] - 4 * s});
    waveArrow->setSpans(arrowSpans(info, {waveGen->viewStart(), waveGen->ratioSasPix(), waveView->width() / s}));
    waveArrow->show();
}

void MainView::repeatHover()
{
    hover(waveView->viewport()->mapFromGlobal(QCursor::pos()));
}

void MainView::hideHover()
{
    waveArrow->hide();
    forgetHover();
    emit logMeasureChanged(noPulseTexts());
}

void MainView::forgetHover()
{
    hoverChn = hoverStart = hoverEdge = m_hoverRatio = 0;
}

void MainView::zoomAboutMiddle(int flag)
{
    if (canMoveTime()) {
        emit zoomChangedByMouse(flag, QPoint(waveView->width() / 2, 0));
    }
}

void MainView::slotShortCutZoomIn()
{
    zoomAboutMiddle(zoomIn);
}

void MainView::slotShortCutZoomOut()
{
    zoomAboutMiddle(zoomOut);
}

void MainView::slotShortCutMovToBeg()
{
    if (canMoveTime()) {
        waveGen->setViewStart(-beyondEnds);
    }
}

void MainView::slotShortCutMovToEnd()
{
    if (!canMoveTime()) {
        return;
    }
    const auto samples = double(gDev->smpData->sampleCount());
    waveGen->setViewStart(samples - waveGen->viewWidth() * waveGen->ratioSasPix() + beyondEnds);
}
