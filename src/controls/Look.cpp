#include "controls/Look.h"

#include "settings/Globals.h"

#include <QFileInfo>
#include <QFontDatabase>
#include <QFontInfo>
#include <QRawFont>

#include <array>
#include <cmath>

int gDpi = 96;
QVector<QColor> gChnColors;
QVector<QColor> gGreys;

QFont gFontMain;
QFont gFontSmall;
QFont gFontLarge;

namespace {

/// What selects a font of the resources among all fonts: its family and its width.
struct ApplicationFont {
    QString family; ///< empty if the font did not load
    int stretch = QFont::Unstretched;

    void applyTo(QFont &font) const
    {
        if (!family.isEmpty()) {
            font.setFamily(family);
            font.setStretch(stretch);
        }
    }
};

/// The width that a font file tells of itself, in percent. Source: OpenType, table OS/2, field usWidthClass, 1 to 9.
int stretchOf(const QString &path)
{
    constexpr int widthClassAt = 6; // a 16-bit number, big-endian, below 256
    constexpr std::array<int, 9> percents{QFont::UltraCondensed, QFont::ExtraCondensed, QFont::Condensed,
                                          QFont::SemiCondensed,  QFont::Unstretched,    QFont::SemiExpanded,
                                          QFont::Expanded,       QFont::ExtraExpanded,  QFont::UltraExpanded};
    const QByteArray table = QRawFont(path, 12).fontTable("OS/2");
    const int widthClass = table.size() > widthClassAt + 1 ? table.at(widthClassAt + 1) : 0;
    return widthClass >= 1 && widthClass <= 9 ? percents[std::size_t(widthClass - 1)] : QFont::Unstretched;
}

/// A condensed font may bear the family name of the plain one, so that the family alone would not find it.
ApplicationFont applicationFont(const QString &path)
{
    if (!QFileInfo::exists(path)) {
        return {};
    }
    const QStringList families = QFontDatabase::applicationFontFamilies(QFontDatabase::addApplicationFont(path));
    return families.isEmpty() ? ApplicationFont{} : ApplicationFont{families.first(), stretchOf(path)};
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
    // Desktops scale by quarters of 96. A screen's size in whole millimetres tells the dots of such a scale inexactly.
    constexpr double step = 24;
    constexpr double tolerance = 0.5;
    // A comparison with a NaN is false.
    const double told = logicalDotsPerInch > least ? qMin(logicalDotsPerInch, most) : least;
    const double scale = std::round(told / step) * step;
    gDpi = static_cast<int>(std::abs(told - scale) <= tolerance ? scale : told);
}

void globalsFillTables()
{
    gChnColors = {QColor(223, 31, 223), QColor(39, 39, 239), QColor(31, 207, 31), QColor(223, 223, 31),
                  QColor(223, 119, 31), QColor(207, 23, 15), QColor(159, 47, 7),  QColor(127, 127, 111)};
    gGreys = {QColor(0xf7, 0xf7, 0xf7), QColor(0xdf, 0xdf, 0xdf), QColor(0xaf, 0xaf, 0xaf), QColor(0x9f, 0x9f, 0x9f),
              QColor(0x7f, 0x7f, 0x7f), QColor(0x57, 0x5b, 0x5f), QColor(0x3f, 0x3f, 0x3f), QColor(0x2f, 0x2f, 0x2f),
              QColor(0x1f, 0x1f, 0x23), QColor(0x07, 0x07, 0x07)};
    globalsFillNames();
}

void globalsLoadFonts(const QFont &system, const QString &languageFont)
{
    const ApplicationFont tahoma = applicationFont(QStringLiteral(":/res/Tahoma.ttf"));
    const ApplicationFont verdana = applicationFont(QStringLiteral(":/res/Verdana.ttf"));

    gFontMain = system;
    if (languageFont.isEmpty()) {
        tahoma.applyTo(gFontMain);
    } else if (languageFont != QLatin1String("SysDefault")) {
        gFontMain.setFamily(languageFont);
    }
    gFontSmall = gFontMain;
    tahoma.applyTo(gFontSmall);
    gFontLarge = gFontMain;
    verdana.applyTo(gFontLarge);

    const double size = pointSize(system);
    gFontMain.setPointSizeF(size + 0.5);
    gFontSmall.setPointSizeF(qMax(size - 0.5, 0.5));
    gFontLarge.setPointSizeF(size + 2.0);
}
