// The edge button of the main view: where it is offered, and what a click does.

#include "controls/Look.h"
#include "device/DevBase.h"
#include "device/DeviceGlobals.h"
#include "wave/MainView.h"
#include "wave/NextEdge.h"
#include "wave/WaveDataGen.h"
#include "wave/WaveView.h"

namespace {

constexpr int buttonGap = 5; ///< pixels at 96 dpi by which the button is lower than its row
constexpr int buttonTop = 4; ///< pixels at 96 dpi, from the row's top

} // namespace

bool MainView::isOverNextEdge(QPoint point) const
{
    return nextEdge->isVisible() && nextEdge->sceneBoundingRect().contains(waveView->mapToScene(point));
}

void MainView::offerNextEdge(QPoint point)
{
    const int s = uiScale();
    const int bar = waveView->scrollBarWidth();
    const EdgeZone zone = edgeZone(point.x(), waveView->width() - (bar > 0 ? bar + s : 0), NextEdge::buttonWidth());
    showNextEdge(zone.side, channelAt(point), zone.x);
}

void MainView::showNextEdge(EdgeSide side, int chn, int x)
{
    if (x == 0) {
        nextEdge->hide();
        return;
    }
    if (chn < 0 || gDev->smpData->sampleCount() < 1) {
        return;
    }
    const auto row = std::size_t(m_chns[std::size_t(chn)].showIndex);
    nextEdge->setTarget(side, chn);
    nextEdge->setButtonSize({NextEdge::buttonWidth(), m_rows.heights[row] - dp(buttonGap)});
    nextEdge->setPos(x - NextEdge::buttonWidth(), m_rows.tops[row] + dp(buttonTop));
    nextEdge->show();
}

void MainView::clickNextEdge()
{
    if (nextEdge->isBackward()) {
        waveGen->jumpPrevEdge(nextEdge->channel());
    } else {
        waveGen->jumpNextEdge(nextEdge->channel());
    }
}
