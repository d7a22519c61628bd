#pragma once

#include <QGraphicsItem>
#include <QSize>

/// An item of the wave scene: a rectangle from (0, 0) in device pixels that paints and takes no part in input.
///
/// Lives on the GUI thread, owned by the scene.
class WaveItem : public QGraphicsItem {
public:
    WaveItem();
    [[nodiscard]] QRectF boundingRect() const override { return {0.0, 0.0, qreal(width), qreal(height)}; }
    void setSize(QSize size);

protected:
    int width = 0;  ///< device pixels
    int height = 0; ///< device pixels; 0 for a disabled channel, which paints nothing
};
