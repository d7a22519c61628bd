#include "wave/MainView.h"
#include "wave/PulseRequests.h"

PulseRequests *gPulseRequests = nullptr;

void MainView::slotPulseMeasureInfoChanged()
{
    emit pulseMeasureChangedbySmpDone({});
}

void MainView::refreshPulsesOfPair(int group)
{
    emit pulseMeasureChangedbyTimeMarker(group, {});
}
