#include "settings/Globals.h"

#include <QFileInfo>

QString gOpenFile;
QStringList gMeasureNames;

int viewState = 0;
bool disAnimateZoom = false;
bool colorWaveform = false;

void globalsFillNames()
{
    gMeasureNames =
        QStringList{QStringLiteral("Period"),    QStringLiteral("Frequency"),   QStringLiteral("RiseTime"),
                    QStringLiteral("FallTime"),  QStringLiteral("+PulseWidth"), QStringLiteral("-PulseWidth"),
                    QStringLiteral("DutyCycle"), QStringLiteral("Vmax"),        QStringLiteral("Vmin"),
                    QStringLiteral("Vpp"),       QStringLiteral("Vamp"),        QStringLiteral("Vtop"),
                    QStringLiteral("Vbase"),     QStringLiteral("Overshoot"),   QStringLiteral("Preshoot"),
                    QStringLiteral("Vavg"),      QStringLiteral("Vrms")};
}

QString globalsFileArgument(const QStringList &arguments)
{
    for (const QString &argument : arguments) {
        const QFileInfo file(argument);
        const QString suffix = file.suffix();
        const QString lower = suffix.toLower();
        const bool isOwn = suffix == QLatin1String("cxdat") || suffix == QLatin1String("cxset");
        const bool isForeign = lower == QLatin1String("sr") || lower == QLatin1String("vcd");
        if ((isOwn || isForeign) && file.isFile()) {
            return argument;
        }
    }
    return {};
}
