#include "settings/NativeNames.h"

#include <QString>
#include <QTextCodec>

#include <algorithm>

void takeNamesOfAnyBytes(int argc, char *argv[])
{
#ifdef Q_OS_WIN
    Q_UNUSED(argc)
    Q_UNUSED(argv)
#else
    const auto isRead = [](const char *argument) { return QString::fromLocal8Bit(argument).toLocal8Bit() == argument; };
    if (!std::all_of(argv, argv + argc, isRead)) {
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
    }
#endif
}
