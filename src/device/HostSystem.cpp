#include "device/HostSystem.h"

QString windowsName(int major, int minor)
{
    if (major < 5) {
        return QStringLiteral("Windows");
    }
    switch (major) {
    case 5:
        return minor == 0   ? QStringLiteral("Windows 2000")
               : minor == 1 ? QStringLiteral("Windows XP")
                            : QStringLiteral("Windows XP later");
    case 6:
        return minor == 0   ? QStringLiteral("Windows Vista")
               : minor == 1 ? QStringLiteral("Windows 7")
               : minor == 2 ? QStringLiteral("Windows 8")
                            : QStringLiteral("Windows 8.1");
    case 10:
        return QStringLiteral("Windows 10");
    default:
        return QStringLiteral("Windows 10 later");
    }
}
