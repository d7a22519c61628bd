#include "wave/ItemAChWaveBackground.h"

#include "controls/Look.h"
#include "controls/PixelScale.h"
#include "controls/Truncate.h"
#include "wave/AnalogScale.h"
#include "wave/WaveDataGen.h"

#include <QPainter>

ItemAChWaveBackground::ItemAChWaveBackground(const WaveDataGen *generator) : waveGen(generator)
{
    setZValue(0);
}

void ItemAChWaveBackground::paint(QPainter *painter, const QStyleOptionGraphicsItem * /*option*/, QWidget * /*widget*/)
{
    if (height == 0) {
        return;
    }
    const PixelScale scale = screenScale();
    const int logical = height / scale.s();
    m_lines.clear();
    for (int i = 1; i < aChnDivisions; ++i) {
        const int y = scale.column(truncated32(double(i) * logical / aChnDivisions));
        m_lines.emplace_back(0, y, width - 1, y);
    }
    for (const TimeTick &tick : waveGen->timeTicks()) {
        const int x = scale.column(tick.x); // where the ruler has the tick's line
        m_lines.emplace_back(x, 0, x, height - 1);
    }
    painter->setRenderHint(QPainter::Antialiasing, false);
    painter->setPen(QPen(gGreys[2], scale.s(), Qt::DotLine, Qt::SquareCap, Qt::BevelJoin));
    painter->drawLines(m_lines.data(), int(m_lines.size()));
}
