#include "wave/RulerMetrics.h"

#include "controls/Look.h"

#include <QFontMetrics>

bool RulerMetrics::update()
{
    if (m_dpi == gDpi && m_font == gFontMain) {
        return false;
    }
    m_dpi = gDpi;
    m_font = gFontMain;
    const QFontMetrics fontMetrics(gFontMain);
    m_metrics.digitWidth = dp(6);
    m_metrics.margin = dp(8);
    m_metrics.scale = uiScale();
    for (std::size_t unit = 0; unit < TimeTicks::unitNames.size(); ++unit) {
        m_metrics.unitWidth[unit] = fontMetrics.horizontalAdvance(QLatin1String(TimeTicks::unitNames[unit]));
    }
    return true;
}
