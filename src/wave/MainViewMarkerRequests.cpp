// What others ask of the main view's timing markers: the list of pairs, the ruler, the number keys.

#include "analysis/MarkerTimes.h"
#include "controls/Look.h"
#include "device/DevBase.h"
#include "device/DeviceGlobals.h"
#include "wave/CursorBody.h"
#include "wave/MainView.h"
#include "wave/MarkerChange.h"
#include "wave/WaveDataGen.h"
#include "wave/WaveView.h"

#include <QCursor>
#include <QShortcut>

#include <algorithm>

namespace {

constexpr int markersOfKeys = 10; ///< five pairs
constexpr int fromRightEnd = 20;  ///< pixels at 96 dpi: where a marker begins that was called by its button
constexpr int newMarkerPart = 4;  ///< a new pair begins at 4/5 of the width
constexpr int newMarkerWhole = 5;

} // namespace

QVector<ShownPair> MainView::shownPairs() const
{
    QVector<ShownPair> pairs;
    for (int i = 0; i + 1 < timeMarkers.size(); i += 2) {
        const CursorBody *first = timeMarkers[i];
        const CursorBody *second = timeMarkers[i + 1];
        if (first->isShown() && second->isShown()) {
            pairs.append({first->id() / 2, first->name(), second->name(), first->samplePos, second->samplePos});
        }
    }
    return pairs;
}

void MainView::slotTimingMarkerPairClicked(int type, int phyId)
{
    if (phyId < 0) {
        return;
    }
    switch (type) {
    case pairRequest::add: {
        const int first = markerIndex(MarkerTimes::firstOfPair(phyId));
        const int x = waveView->width() * newMarkerPart / newMarkerWhole;
        setMarker(first, MarkerState::off, x);
        setMarker(first + 1, MarkerState::off, x);
        break;
    }
    case pairRequest::remove:
        removeMarkerPair(phyId);
        break;
    case pairRequest::marker:
        pressMarkerButton(phyId);
        break;
    case pairRequest::location:
        showPair(phyId);
        break;
    default:
        break;
    }
}

void MainView::pressMarkerButton(int phyId)
{
    if (gDev->smpData->sampleCount() < 1) {
        return;
    }
    const int index = markerIndex(phyId);
    const int following = firstMarkerIn(MarkerState::following);
    if (following >= 0) {
        changeMarkerState(following, MarkerState::off);
    }
    if (following == index) {
        return;
    }
    if (timeMarkers[index]->isShown()) {
        changeMarkerState(index, MarkerState::following);
    } else {
        setMarker(index, MarkerState::following, waveView->width() - dp(fromRightEnd));
    }
}

void MainView::showPair(int phyId)
{
    const int group = phyId / 2;
    for (const ShownPair &pair : shownPairs()) {
        if (pair.group == group) {
            const auto [from, to] = std::minmax(pair.firstSample, pair.secondSample);
            waveGen->zoomToRange(from, to);
            return;
        }
    }
}

void MainView::slotTimeViewMarkerChanged(int changedType, int index, int state, int midX)
{
    if (index < 0 || index >= timeMarkers.size()) {
        return;
    }
    if (changedType == markerChange::setState) {
        changeMarkerState(index, TimeMarkers::stateOf(state));
    } else if (changedType == markerChange::setAndMove) {
        setMarker(index, TimeMarkers::stateOf(state), midX);
    }
}

void MainView::slotShortCutTimeMarker()
{
    const auto *shortcut = qobject_cast<const QShortcut *>(sender());
    if (shortcut == nullptr) {
        return;
    }
    const int key = shortcut->key()[0] - Qt::Key_0;
    const int index = markerIndex((key + markersOfKeys - 1) % markersOfKeys);
    if (!gDev->smpData->complete.load(std::memory_order_acquire)) {
        return;
    }
    const int following = firstMarkerIn(MarkerState::following);
    if (following >= 0) {
        changeMarkerState(following, MarkerState::off);
    }
    if (following == index || timeMarkers[index]->markerState() == MarkerState::hovered) {
        return;
    }
    const QPoint pointer = waveView->viewport()->mapFromGlobal(QCursor::pos());
    const bool inside = waveView->viewport()->rect().contains(pointer);
    setMarker(index, MarkerState::following, inside ? pointer.x() : waveView->width() / 2);
}
