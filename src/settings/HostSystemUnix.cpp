#include "settings/HostSystem.h"

#include <QSysInfo>

QString osName()
{
    return QSysInfo::prettyProductName();
}

QString osTag()
{
#ifdef Q_OS_MACOS
    return QStringLiteral("mac");
#else
    return QStringLiteral("lnx");
#endif
}
