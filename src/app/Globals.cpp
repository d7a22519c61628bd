#include "app/Globals.h"

#include <QFileInfo>
#include <QFontDatabase>
#include <QFontInfo>

UsbTransport *gUsb = nullptr;
DevBase *gDev = nullptr;
DevInit *gDevInit = nullptr;

int gDpi = 96;
QVector<QColor> gChnColors;
QVector<QColor> gGreys;
QStringList gMeasureNames;

QFont gFontMain;
QFont gFontSmall;
QFont gFontLarge;

QString gOpenFile;

int viewState = 0;
bool disAnimateZoom = false;
bool colorWaveform = false;

namespace {

/// The family of a font of the resources; empty if it does not load.
QString applicationFont(const QString &path)
{
    if (!QFileInfo::exists(path)) {
        return {};
    }
    const QStringList families = QFontDatabase::applicationFontFamilies(QFontDatabase::addApplicationFont(path));
    return families.isEmpty() ? QString() : families.first();
}

/// A theme may give the system's font in pixels, and then the font itself knows no points.
double pointSize(const QFont &font)
{
    return font.pointSizeF() > 0 ? font.pointSizeF() : QFontInfo(font).pointSizeF();
}

} // namespace

void globalsSetDpi(double logicalDotsPerInch)
{
    constexpr double least = 96;
    constexpr double most = 96 * 100; // no screen; it keeps dp() within 32 bits
    // A comparison with a NaN is false.
    gDpi = logicalDotsPerInch > least ? static_cast<int>(qMin(logicalDotsPerInch, most)) : static_cast<int>(least);
}

void globalsFillTables()
{
    gChnColors = {QColor(223, 31, 223), QColor(39, 39, 239), QColor(31, 207, 31), QColor(223, 223, 31),
                  QColor(223, 119, 31), QColor(207, 23, 15), QColor(159, 47, 7),  QColor(127, 127, 111)};
    gGreys = {QColor(0xf7, 0xf7, 0xf7), QColor(0xdf, 0xdf, 0xdf), QColor(0xaf, 0xaf, 0xaf), QColor(0x9f, 0x9f, 0x9f),
              QColor(0x7f, 0x7f, 0x7f), QColor(0x57, 0x5b, 0x5f), QColor(0x3f, 0x3f, 0x3f), QColor(0x2f, 0x2f, 0x2f),
              QColor(0x1f, 0x1f, 0x23), QColor(0x07, 0x07, 0x07)};
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
        if ((suffix == QLatin1String("cxdat") || suffix == QLatin1String("cxset")) && file.isFile()) {
            return argument;
        }
    }
    return {};
}

void globalsLoadFonts(const QFont &system, const QString &languageFont)
{
    const QString tahoma = applicationFont(QStringLiteral(":/res/Tahoma.ttf"));
    const QString verdana = applicationFont(QStringLiteral(":/res/Verdana.ttf"));

    gFontMain = system;
    const QString family = languageFont.isEmpty() ? tahoma : languageFont;
    if (!family.isEmpty() && family != QLatin1String("SysDefault")) {
        gFontMain.setFamily(family);
    }
    gFontSmall = gFontMain;
    if (!tahoma.isEmpty()) {
        gFontSmall.setFamily(tahoma);
    }
    gFontLarge = gFontMain;
    if (!verdana.isEmpty()) {
        gFontLarge.setFamily(verdana);
    }

    const double size = pointSize(system);
    gFontMain.setPointSizeF(size + 0.5);
    gFontSmall.setPointSizeF(qMax(size - 0.5, 0.5));
    gFontLarge.setPointSizeF(size + 2.0);
}
