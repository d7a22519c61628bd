#pragma once

#include "wave/WaveItem.h"

/// The part of the time that is being marked with Ctrl and a drag, to be zoomed into.
class ItemZoomBand : public WaveItem {
public:
    ItemZoomBand();
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;
};
