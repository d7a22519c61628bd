#pragma once

#include "wave/TimeMarkers.h"

#include <QGraphicsObject>

/// A voltage marker: a horizontal line through the analog area, hidden while the marker is off.
///
/// Lives on the GUI thread, owned by the scene. Sizes are device pixels.
class CursorMarker : public QGraphicsObject {
    Q_OBJECT
public:
    /// @param id  0 for Y1, 1 for Y2
    explicit CursorMarker(int id);

    [[nodiscard]] int id() const { return phyId; }
    [[nodiscard]] MarkerState markerState() const { return state; }
    [[nodiscard]] bool isShown() const { return state != MarkerState::off; }
    /// Shows or hides the line, too.
    void setMarkerState(MarkerState value);
    /// The width of the waves.
    void setLineWidth(int pixels);

    int position = 0;  ///< where it stands, logical pixels from the top of the analog area
    int refHeight = 0; ///< the height of the analog area that `position` refers to, logical pixels

    [[nodiscard]] QRectF boundingRect() const override { return {0.0, 0.0, qreal(width), qreal(height)}; }
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;

private:
    int width = 0;
    const int height;
    const int phyId;
    MarkerState state = MarkerState::off;
};
