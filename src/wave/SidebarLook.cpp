#include "wave/SidebarLook.h"

#include "controls/Look.h"
#include "controls/MyButton.h"
#include "controls/Style.h"

#include <QFontInfo>
#include <QFontMetrics>
#include <QLinearGradient>
#include <QPainter>

namespace {

constexpr int mostSidebarFont = 12; ///< pixels at 96 dpi

} // namespace

int sidebarLine()
{
    return 2 * uiScale() + dp(16);
}

QFont atMost(QFont font, int pixels)
{
    if (QFontInfo(font).pixelSize() > pixels) {
        font.setPixelSize(pixels);
    }
    return font;
}

QString sidebarFontStyle(const QFont &font)
{
    return QStringLiteral("QWidget{font-size:%1px;}").arg(QFontInfo(atMost(font, dp(mostSidebarFont))).pixelSize());
}

int sidebarFieldHeight(const QFont &font)
{
    return controlHeight(QFontMetrics(atMost(font, dp(mostSidebarFont))));
}

void dressFlat(MyButton &button)
{
    button.faceColor = Qt::transparent;
    button.hoverColor = gGreys.value(5);
    button.checkedColor = gGreys.value(9);
    button.setIconSize(QSize(dp(16), dp(16)));
}

QString triggerFrameStyle(const QString &objectName)
{
    return QStringLiteral("#%1{background-color:%2;border:%3px solid %4;border-radius:%5px;}")
        .arg(objectName, gGreys[7].name(), QString::number(uiScale()), gGreys[3].name(),
             QString::number(dp(3) + uiScale()));
}

void paintSidebar(QPainter &painter, const QSize &size, int numberWidth, const QColor &color)
{
    const int s = uiScale();
    painter.fillRect(0, 0, size.width(), size.height(), gGreys[6]);
    painter.fillRect(0, 0, size.width(), s, gGreys[4]);
    painter.fillRect(0, size.height() - s, size.width(), s, gGreys[8]);
    painter.fillRect(size.width() - s, 0, s, size.height(), gGreys[9]);

    const QRect column(0, 0, numberWidth, size.height() - s);
    QLinearGradient gradient(0, 0, 0, column.height());
    gradient.setColorAt(0, color.lighter(180));
    // Plain where the number stands: it is read on this colour.
    gradient.setColorAt(0.3, color);
    gradient.setColorAt(0.7, color);
    gradient.setColorAt(1, color.darker(200));
    painter.fillRect(column, gradient);
}
