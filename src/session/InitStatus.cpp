#include "session/InitStatus.h"

#include "settings/Language.h"

#include <algorithm>

namespace InitStatus {

QString connectingText()
{
    return ::tr("Device connecting, please wait") + QStringLiteral("...");
}

QString errorText(int sta, int err)
{
    return ::tr("An error occurred") + QStringLiteral(": I-") + QString::number(sta * 256 + err, 16);
}

int progress(int sta, int n)
{
    switch (sta) {
    case 0:
        return 10;
    case 1:
        return std::min(10 + n / 60, 70);
    case 2:
        return 70;
    case 4:
        return std::min(70 + n / 5, 90);
    case 5:
        return 90;
    default:
        return -1;
    }
}

bool isDeviceChange(std::uint32_t message, std::uintptr_t parameter)
{
    // Windows API: WM_DEVICECHANGE with DBT_DEVICEARRIVAL or DBT_DEVICEREMOVECOMPLETE.
    constexpr std::uint32_t deviceChange = 537;
    constexpr std::uintptr_t arrival = 0x8000;
    constexpr std::uintptr_t removal = 0x8004;
    return message == deviceChange && (parameter == arrival || parameter == removal);
}

} // namespace InitStatus
