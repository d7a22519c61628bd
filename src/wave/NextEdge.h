#pragma once

#include "controls/PixelScale.h"

#include <QGraphicsObject>
#include <QPoint>
#include <QVector>

/// Which of the two edge buttons belongs to a pointer position.
enum class EdgeSide { none, left, right };

/// Where an edge button is asked for.
struct EdgeZone {
    EdgeSide side = EdgeSide::none;
    int x = 0; ///< device pixels: the button ends left of it; 0 for none
};

/// The zone of a pointer at `x`: at most `zone` from the left end, or from `right`. Device pixels.
[[nodiscard]] EdgeZone edgeZone(int x, int right, int zone);

/// The pixels of the chevron in a button, each as wide as a stroke. Device pixels.
[[nodiscard]] QVector<QPoint> chevron(QSize button, bool pointsLeft, PixelScale scale);

/// The translucent button at the end of a row that brings the channel's previous or next edge to the middle.
///
/// One for all rows, hidden at rest. It paints itself; the main view handles the pointer. GUI thread, owned by the
/// scene. Sizes are device pixels.
class NextEdge : public QGraphicsObject {
    Q_OBJECT
public:
    NextEdge();

    /// The width of every edge button.
    [[nodiscard]] static int buttonWidth();

    [[nodiscard]] int channel() const { return chnIndex; }
    [[nodiscard]] bool isBackward() const { return goesBack; }
    /// The button of channel `chn`; at the left end of its row it goes back.
    void setTarget(EdgeSide side, int chn);
    void setButtonSize(QSize size);

    [[nodiscard]] QRectF boundingRect() const override { return {0.0, 0.0, qreal(width), qreal(height)}; }
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;

signals:
    /// Never emitted: the main view has the click before the item could.
    void nextEdgeClicked();

private:
    bool goesBack = false;
    int chnIndex = 0;
    int width = 0;
    int height = 0;
};
