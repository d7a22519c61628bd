#include "protocol/DecodeProgress.h"

#include "controls/Look.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

DecodeProgress::DecodeProgress(QWidget *parent) : QWidget(parent)
{
    setFixedHeight(dp(2));
}

void DecodeProgress::setShare(double share)
{
    const double shown = std::isnan(share) ? 0.0 : std::min(share, 1.0);
    if (shown < m_share || shown > m_share) {
        m_share = shown;
        update();
    }
}

void DecodeProgress::paintEvent(QPaintEvent *)
{
    if (m_share < 0.0) {
        return;
    }
    QPainter painter(this);
    painter.fillRect(rect(), gGreys[6]);
    painter.fillRect(QRect(0, 0, std::max(int(m_share * width()), dp(2)), height()), gChnColors[2]);
}
