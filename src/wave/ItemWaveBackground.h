#pragma once

#include "wave/WaveItem.h"

#include <QRect>

#include <functional>

/// The ground of a digital channel's row: dark, with a lighter band along the top.
class ItemWaveBackground : public WaveItem {
public:
    explicit ItemWaveBackground(int channel);
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;

    /// What the row's trace paints all over within `exposed`, in the item: it is not painted twice. Empty for nothing.
    /// Called while painting; may be null.
    std::function<QRect(const QPainter &painter, const QRectF &exposed)> covered;

private:
    const int chnIndex;
};
