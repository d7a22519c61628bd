// The timing markers of the main view: the list of pairs, their states and places, and what the pointer does to them.

#include "analysis/MarkerTimes.h"
#include "controls/Truncate.h"
#include "device/DevBase.h"
#include "device/DeviceGlobals.h"
#include "wave/CursorBody.h"
#include "wave/MainView.h"
#include "wave/MarkerChange.h"
#include "wave/NextEdge.h"
#include "wave/WaveDataGen.h"

#include <QGraphicsScene>

#include <algorithm>
#include <utility>

TimeWindow MainView::timeWindow() const
{
    return {waveGen->viewStart(), waveGen->ratioSasPix()};
}

// ---- the list ------------------------------------------------------------------------------------------------------

int MainView::markerIndex(int phyId)
{
    if (phyId < 0) {
        return -1;
    }
    const int firstId = MarkerTimes::firstOfPair(phyId);
    const auto at = std::find_if(timeMarkers.cbegin(), timeMarkers.cend(),
                                 [firstId](const CursorBody *marker) { return marker->id() >= firstId; });
    const auto position = int(at - timeMarkers.cbegin());
    if (at == timeMarkers.cend() || (*at)->id() != firstId) {
        addMarkerPair(position, firstId);
    }
    return position + phyId - firstId;
}

void MainView::addMarkerPair(int position, int firstId)
{
    for (const int offset : {0, 1}) {
        auto *marker = new CursorBody(firstId + offset);
        marker->setColumnHeight(m_rows.totalHeight);
        timeMarkers.insert(position + offset, marker);
        scene->addItem(marker);
    }
    emit timMarkPairChanged(markerChange::pairMade, firstId, QString(), QString());
    emit timeMarkBodyChanged(markerChange::state, firstId, int(MarkerState::off));
    emit timeMarkBodyChanged(markerChange::state, firstId + 1, int(MarkerState::off));
}

void MainView::removeMarkerPair(int phyId)
{
    const int firstId = MarkerTimes::firstOfPair(phyId);
    const auto at = std::find_if(timeMarkers.cbegin(), timeMarkers.cend(),
                                 [firstId](const CursorBody *marker) { return marker->id() == firstId; });
    if (at == timeMarkers.cend()) {
        return;
    }
    const auto position = int(at - timeMarkers.cbegin());
    emit timeMarkBodyChanged(markerChange::pairGone, position, -1);
    delete timeMarkers.takeAt(position);
    delete timeMarkers.takeAt(position);
    refreshPulsesOfPair(firstId / 2);
}

void MainView::removeMarkers()
{
    qDeleteAll(std::exchange(timeMarkers, {}));
}

int MainView::firstMarkerIn(MarkerState state) const
{
    const auto found = std::find_if(timeMarkers.cbegin(), timeMarkers.cend(),
                                    [state](const CursorBody *marker) { return marker->markerState() == state; });
    return found == timeMarkers.cend() ? -1 : int(found - timeMarkers.cbegin());
}

// ---- state and place -----------------------------------------------------------------------------------------------

void MainView::setMarker(int index, MarkerState state, int x)
{
    showMarkerState(index, state);
    timeMarkers[index]->samplePos = TimeMarkers::sampleAt(x, timeWindow(), screenScale());
    placeMarker(index);
    markerHasMoved(index);
}

void MainView::changeMarkerState(int index, MarkerState state)
{
    const bool wasShown = timeMarkers[index]->isShown();
    showMarkerState(index, state);
    if (wasShown != timeMarkers[index]->isShown()) {
        markerHasMoved(index);
    }
}

void MainView::showMarkerState(int index, MarkerState state)
{
    if (state == MarkerState::following) {
        nextEdge->hide();
        const int other = firstMarkerIn(MarkerState::following);
        if (other >= 0 && other != index) {
            showMarkerState(other, MarkerState::placed);
        }
    }
    timeMarkers[index]->setMarkerState(state);
    emit timeMarkBodyChanged(markerChange::state, timeMarkers[index]->id(), int(state));
}

void MainView::placeMarker(int index)
{
    const int x = TimeMarkers::columnOf(timeMarkers[index]->samplePos, timeWindow(), screenScale());
    timeMarkers[index]->setPos(x, 0);
    emit timeMarkBodyChanged(markerChange::place, index, x);
}

void MainView::snapMarker(int index, QPoint point)
{
    const TimeWindow window = timeWindow();
    const PixelScale scale = screenScale();
    double sample = TimeMarkers::sampleAt(point.x(), window, scale);
    const int chn = channelAt(point);
    if (chn >= 0) {
        const SmpData *capture = gDev->smpData.get();
        const SmpReadLock lock(capture);
        SmpEdgeInfo edges{};
        if (lock && capture->edgeNeighbours(chn, truncated64(sample), edges) == 0) {
            sample = TimeMarkers::snapped(sample, edges, window.ratio, scale);
        }
    }
    timeMarkers[index]->samplePos = sample;
    placeMarker(index);
    markerHasMoved(index);
}

void MainView::repositionMarkers()
{
    for (int i = 0; i < timeMarkers.size(); ++i) {
        if (timeMarkers[i]->isShown()) {
            placeMarker(i);
        }
    }
}

void MainView::takeMarkersOff()
{
    // The pulses are counted for all pairs at once, with the new capture.
    for (int i = 0; i < timeMarkers.size(); ++i) {
        if (timeMarkers[i]->isShown()) {
            showMarkerState(i, MarkerState::off);
            tellMarkerTexts(i);
        }
    }
}

void MainView::markerHasMoved(int index)
{
    tellMarkerTexts(index);
    refreshPulsesOfPair(timeMarkers[index]->id() / 2);
}

void MainView::tellMarkerTexts(int index)
{
    const CursorBody *marker = timeMarkers[index];
    const CursorBody *other = timeMarkers[index ^ 1]; // pairs begin at even positions
    QString value = QStringLiteral("###");
    QString total = value;
    {
        const SmpData *capture = gDev->smpData.get();
        const SmpReadLock lock(capture);
        if (lock && marker->isShown() && capture->smpFrequ > 0) {
            const std::int64_t rate = capture->smpFrequ;
            value = MarkerTimes::timeText(MarkerTimes::timeOf(marker->samplePos, capture->trgPos, rate), timeUnits);
            if (other->isShown()) {
                const double distance = MarkerTimes::distanceOf(marker->samplePos, other->samplePos, rate);
                total = MarkerTimes::timeText(distance, timeUnits);
            }
        }
    }
    emit timMarkPairChanged(markerChange::time, marker->id(), value, total);
}

// ---- the pointer ---------------------------------------------------------------------------------------------------

bool MainView::moveOverMarkers(QPoint point)
{
    const int following = firstMarkerIn(MarkerState::following);
    if (following >= 0) {
        snapMarker(following, point);
        return true;
    }
    int hit = -1;
    for (int i = 0; i < timeMarkers.size() && hit < 0; ++i) {
        if (timeMarkers[i]->isShown() && TimeMarkers::covers(point.x(), int(timeMarkers[i]->x()), screenScale())) {
            hit = i;
        }
    }
    const int hovered = firstMarkerIn(MarkerState::hovered);
    if (hovered >= 0 && hovered != hit) {
        changeMarkerState(hovered, MarkerState::placed);
    }
    if (hit >= 0 && hit != hovered) {
        changeMarkerState(hit, MarkerState::hovered);
    }
    return hit >= 0;
}

bool MainView::releaseOverMarkers(Qt::MouseButton button)
{
    const int following = firstMarkerIn(MarkerState::following);
    if (following >= 0 && button == Qt::LeftButton) {
        changeMarkerState(following, MarkerState::placed);
        return true;
    }
    if (following >= 0 && button == Qt::RightButton) {
        nextEdge->hide();
        changeMarkerState(following, MarkerState::off);
        return true;
    }
    const int hovered = firstMarkerIn(MarkerState::hovered);
    if (following < 0 && hovered >= 0 && button == Qt::LeftButton) {
        changeMarkerState(hovered, MarkerState::following);
        return true;
    }
    return false;
}
