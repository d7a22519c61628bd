#pragma once

#include "wave/TimeTicks.h"

#include <QFont>

/// The sizes of the ruler's labels. Fonts are measured on the main thread; frames are computed with the numbers.
class RulerMetrics {
public:
    /// Measures anew when the font or the screen's scale have changed. @return true then
    bool update();
    [[nodiscard]] const TimeTicks::LabelMetrics &metrics() const { return m_metrics; }

private:
    TimeTicks::LabelMetrics m_metrics;
    QFont m_font; ///< that m_metrics are of
    int m_dpi = 0;
};
