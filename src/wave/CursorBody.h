#pragma once

#include "wave/TimeMarkers.h"
#include "wave/WaveItem.h"

/// A timing marker in the waves: a vertical line through all rows, hidden while the marker is off.
///
/// Its sample is what counts; the place on the screen follows from it. Lives on the GUI thread, owned by the scene.
class CursorBody : public WaveItem {
public:
    /// @param id  0 or above
    explicit CursorBody(int id);

    [[nodiscard]] int id() const { return phyId; }
    [[nodiscard]] const QString &name() const { return label; } ///< such as "A1"
    [[nodiscard]] MarkerState markerState() const { return state; }
    [[nodiscard]] bool isShown() const { return state != MarkerState::off; }
    /// Shows or hides the line, too.
    void setMarkerState(MarkerState value);
    /// The height of all rows, device pixels.
    void setColumnHeight(int pixels);

    double samplePos = 0; ///< a whole sample, also outside of the capture; means nothing while the marker is off

    int row = -1; ///< the channel over which it was last held, -1 for none

    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;

private:
    const int phyId;
    const QString label;
    MarkerState state = MarkerState::off;
};
