#include "wave/PosiView.h"

#include "controls/Look.h"
#include "controls/Style.h"
#include "controls/Truncate.h"
#include "settings/Language.h"

#include <algorithm>
#include <cmath>

PosiBar posiBar(std::int64_t sampleCount, int viewWidth, double ratio, double viewStart)
{
    // A step of the bar comes back through share x length, some units in the last place lower: without the allowance
    // it would fall to the step below, and moves by a single step would stick.
    constexpr double allowance = 1e-9;
    constexpr double whole = PosiView::resolution;
    const bool numbers = std::isfinite(ratio) && std::isfinite(viewStart);
    if (sampleCount <= 0 || viewWidth <= 0 || !numbers || ratio <= 0.0) {
        return {0, 0, 0};
    }
    const double perSample = whole / double(sampleCount);
    const double page = viewWidth * ratio * perSample;
    const std::int32_t steps = page < 1.0 ? 1 : page > whole ? PosiView::resolution : truncated32(page);
    const std::int32_t maxV = std::max(0, truncated32(double(sampleCount) * perSample - steps + allowance));
    const double pos = perSample * viewStart;
    const std::int32_t value = pos < 0.0 ? 0 : truncated32(std::min(double(maxV), pos + allowance));
    return {value, maxV, steps};
}

PosiView::PosiView(QWidget *parent) : QScrollBar(Qt::Horizontal, parent)
{
    setRange(0, 0);
    setFixedHeight(dp(20));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(::tr("Horizontal position"));
    setStyleSheet(scrollBarStyle() + QStringLiteral("QScrollBar::handle{background-color:%1;}"
                                                    "QScrollBar::handle:hover{background-color:%2;}")
                                         .arg(handleColor().name(), handleColor().lighter(115).name()));
    connect(this, &QScrollBar::valueChanged, this, &PosiView::slotBarValueChanged);
}

QColor PosiView::handleColor()
{
    return {0x5f, 0x8f, 0xbf};
}

void PosiView::updatePosi(std::int64_t sampleCount, int viewWidth, double ratio, double viewStart)
{
    const PosiBar bar = posiBar(sampleCount, viewWidth, ratio, viewStart);
    m_updating = true;
    posi = bar.value;
    setRange(0, bar.maxV);
    setPageStep(bar.page);
    setSingleStep(std::max(1, bar.page / 10));
    setValue(bar.value);
    m_updating = false;
}

void PosiView::slotBarValueChanged(int value)
{
    const int total = maximum() + pageStep();
    if (m_updating || value == posi || total <= 0) {
        return;
    }
    emit sigPosiChanged(double(value) / total);
}
