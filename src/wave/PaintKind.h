#pragma once

#include <QPaintEngine>
#include <QPainter>
#include <QPainterPath>
#include <QRect>

#include <vector>

/// True where shapes and texts are kept as what they are, as in a drawing of vectors: what is quicker by way of an
/// image is not taken that way there.
[[nodiscard]] inline bool keepsShapes(const QPainter &painter)
{
    const QPaintEngine *engine = painter.paintEngine();
    return engine != nullptr && engine->type() != QPaintEngine::Raster;
}

/// Fills rectangles with the brush, without a pen: at once, and as one shape where shapes are kept.
inline void fillRects(QPainter &painter, const std::vector<QRect> &rects)
{
    if (rects.empty()) {
        return;
    }
    if (!keepsShapes(painter)) {
        painter.drawRects(rects.data(), int(rects.size()));
        return;
    }
    QPainterPath shape;
    shape.setFillRule(Qt::WindingFill);
    for (const QRect &rect : rects) {
        shape.addRect(rect);
    }
    painter.drawPath(shape);
}
