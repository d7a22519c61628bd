#pragma once

#include "wave/TimeMarkers.h"

#include <QLabel>

/// The flag of a timing marker in the ruler, with the marker's label, pointing down at its line.
///
/// It paints itself and tells of the pointer; clicks go on to the ruler. GUI thread, owned by the ruler.
class CursorHandle : public QLabel {
    Q_OBJECT
public:
    /// @param id  of the marker, 0 or above
    CursorHandle(int id, QWidget *ruler);

    [[nodiscard]] int id() const { return phyId; }
    [[nodiscard]] MarkerState markerState() const { return state; }
    /// Shows or hides the flag, too.
    void setMarkerState(MarkerState value);

signals:
    /// The pointer is over the flag of a placed marker.
    void mouseEnter(int phyId);
    /// The pointer has left the flag of a hovered marker.
    void mouseLeave(int phyId);

protected:
    void paintEvent(QPaintEvent *event) override;
    void enterEvent(QEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;

private:
    MarkerState state = MarkerState::off;
    const int phyId;
    const QString label;
    int labelWidth;         ///< device pixels, as all sizes
    const QPolygon outline; ///< of this screen's scale
};
