#include "device/HostSystem.h"

#include <lm.h>
#include <windows.h>

QString osName()
{
    // The usual question for the version is answered with that of the program's manifest.
    WKSTA_INFO_100 *station = nullptr;
    constexpr DWORD level = 100;
    if (NetWkstaGetInfo(nullptr, level, reinterpret_cast<LPBYTE *>(&station)) != NERR_Success || station == nullptr) {
        return windowsName(0, 0);
    }
    const QString name = windowsName(int(station->wki100_ver_major), int(station->wki100_ver_minor));
    NetApiBufferFree(station);
    return name;
}
