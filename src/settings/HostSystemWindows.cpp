#include "settings/HostSystem.h"

// The first declares what the second needs, so this is not the order of the alphabet.
// clang-format off
#include <windows.h>
#include <lm.h>
// clang-format on

namespace {

struct Version {
    int major = 0;
    int minor = 0;
};

/// 0.0 when it cannot be had. The usual question for the version is answered with that of the program's manifest.
Version windowsVersion()
{
    WKSTA_INFO_100 *station = nullptr;
    constexpr DWORD level = 100;
    if (NetWkstaGetInfo(nullptr, level, reinterpret_cast<LPBYTE *>(&station)) != NERR_Success || station == nullptr) {
        return {};
    }
    const Version version{int(station->wki100_ver_major), int(station->wki100_ver_minor)};
    NetApiBufferFree(station);
    return version;
}

} // namespace

QString osName()
{
    const Version version = windowsVersion();
    return windowsName(version.major, version.minor);
}

QString osTag()
{
    const Version version = windowsVersion();
    return windowsTag(version.major, version.minor);
}
