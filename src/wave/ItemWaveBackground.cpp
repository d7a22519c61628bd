#include "wave/ItemWaveBackground.h"

#include "controls/Look.h"

#include <QLinearGradient>
#include <QPainter>
#include <QRegion>
#include <QStyleOptionGraphicsItem>

ItemWaveBackground::ItemWaveBackground(int channel) : chnIndex(channel)
{
    setZValue(0);
    setFlag(ItemUsesExtendedStyleOption); // for the exposed rectangle
    setData(0, chnIndex);
}

void ItemWaveBackground::paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget * /*widget*/)
{
    if (height == 0) {
        return;
    }
    painter->setRenderHint(QPainter::Antialiasing, false);
    const int band = dp(4);
    QLinearGradient gradient(0, 0, 0, band);
    gradient.setColorAt(0, gGreys[3]);
    gradient.setColorAt(1, gGreys[8]);
    painter->fillRect(0, 0, width, qMin(band, height), gradient);
    // Below the band the gradient only repeats its last colour, and a plain fill is several times as fast.
    if (height > band) {
        const QRect trace = covered ? covered(*painter, option->exposedRect) : QRect();
        for (const QRect &part : QRegion(0, band, width, height - band) - trace) {
            painter->fillRect(part, gGreys[8]);
        }
    }
}
