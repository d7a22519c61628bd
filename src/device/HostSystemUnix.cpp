#include "device/HostSystem.h"

#include <QSysInfo>

QString osName()
{
    return QSysInfo::prettyProductName();
}
