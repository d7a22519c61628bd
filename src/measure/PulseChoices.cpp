#include "measure/PulseChoices.h"

#include "device/DevBase.h"
#include "measure/TimingMarkerPair.h"
#include "settings/Language.h"
#include "wave/MainView.h"

#include <algorithm>

QString pulseTypeName(int type)
{
    switch (type) {
    case 0:
        return ::tr("Rising edges");
    case 1:
        return ::tr("Falling edges");
    case 2:
        return ::tr("Positive pulses");
    default:
        return ::tr("Negative pulses");
    }
}

QString pulseTypeIcon(int type)
{
    switch (type) {
    case 0:
        return QStringLiteral(":/res/btnPosEdge");
    case 1:
        return QStringLiteral(":/res/btnNegEdge");
    case 2:
        return QStringLiteral(":/res/btnPosPulse");
    default:
        return QStringLiteral(":/res/btnNegPulse");
    }
}

QString pulseChnText(int chn)
{
    return QStringLiteral("CH") + QString::number(chn);
}

QString pulseTimeText(int time)
{
    return time == 0 ? QStringLiteral("ALL") : pairName(time - 1);
}

bool isChannelInUse(const DevBase *device, int chn)
{
    return device != nullptr && device->chnEnable.value(chn, false);
}

bool isPulseTimeShown(int time)
{
    if (time == 0) {
        return true;
    }
    const QVector<ShownPair> shown = gMainView == nullptr ? QVector<ShownPair>() : gMainView->shownPairs();
    return std::any_of(shown.begin(), shown.end(), [time](const ShownPair &pair) { return pair.group == time - 1; });
}
