#include "settings/HostSystem.h"

#include <QLatin1String>

namespace {

struct WindowsText {
    const char *name;
    const char *tag;
};

WindowsText windowsText(int major, int minor)
{
    if (major < 5) {
        return {"Windows", "win"};
    }
    switch (major) {
    case 5:
        return minor == 0   ? WindowsText{"Windows 2000", "w2k"}
               : minor == 1 ? WindowsText{"Windows XP", "wxp"}
                            : WindowsText{"Windows XP later", "wxpl"};
    case 6:
        return minor == 0   ? WindowsText{"Windows Vista", "wv"}
               : minor == 1 ? WindowsText{"Windows 7", "w7"}
               : minor == 2 ? WindowsText{"Windows 8", "w8"}
                            : WindowsText{"Windows 8.1", "w8l"};
    case 10:
        return {"Windows 10", "w10"};
    default:
        return {"Windows 10 later", "w10l"};
    }
}

} // namespace

QString windowsName(int major, int minor)
{
    return QLatin1String(windowsText(major, minor).name);
}

QString windowsTag(int major, int minor)
{
    return QLatin1String(windowsText(major, minor).tag);
}
