#pragma once

#include "wave/WaveItem.h"

/// The ground of a digital channel's row: dark, with a lighter band along the top.
class ItemWaveBackground : public WaveItem {
public:
    explicit ItemWaveBackground(int channel);
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;

private:
    const int chnIndex;
};
