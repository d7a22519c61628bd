#pragma once

#include "wave/PulseHover.h"
#include "wave/WaveItem.h"

/// The arrows that show the pulse under the pointer and the one after it.
class ItemWaveArrow : public WaveItem {
public:
    ItemWaveArrow();
    /// Schedules a repaint.
    void setSpans(const ArrowSpans &value);
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;

private:
    ArrowSpans spans;
};
