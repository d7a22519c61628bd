#pragma once

#include <QObject>
#include <QPoint>

class EdgeJump;
class ItemZoomBand;
class MarkerBoard;
class PulsePointer;
class QMouseEvent;
class RowColumn;
class VoltageBoard;
class WaveDataGen;
class WaveView;

/// What a gesture in the waves acts on. None is owned; all outlive the gestures.
struct WaveParts {
    WaveView &view;
    RowColumn &rows;
    MarkerBoard &markers;
    VoltageBoard &voltages;
    PulsePointer &pulse;
    EdgeJump &edges;
    WaveDataGen &waveGen;
};

/// What the pointer does in the waves: it points at pulses, moves the time axis, zooms, and picks up markers.
///
/// Decides which part a gesture belongs to; the parts do the work. GUI thread, owned by the main view. Points are
/// device pixels of the wave view.
class WaveGestures : public QObject {
    Q_OBJECT
public:
    explicit WaveGestures(const WaveParts &parts, QObject *parent);

    void press(const QMouseEvent &event);
    void move(const QMouseEvent &event);
    void release(const QMouseEvent &event);
    void leave();

    /// Moves the view by a tenth of its width for each step: to the left for steps below 0.
    void pan(int steps);
    /// True while there is something to move through.
    [[nodiscard]] bool canMoveTime() const;
    /// The channel whose row holds the point, -1 for none.
    [[nodiscard]] int channelAt(QPoint point) const;
    /// The pulse under the pointer is looked up again, since waves or rows have moved under it.
    void pointAgain();

signals:
    // As MainView's of the same names.
    void zoomChangedByMouse(int flag, QPoint point);
    void mouseDraged(int width);
    void pointerMoved(int x, const QString &text);

private:
    void pointAt(QPoint point);
    void click(const QMouseEvent &event);
    [[nodiscard]] bool isBelowRows(QPoint point) const;
    /// The markers see the pointer. @return true when one of them has used the move up
    bool moveMarkers(QPoint point);
    bool clickMarkers(const QMouseEvent &event);
    /// The row of the scene under the point, device pixels.
    [[nodiscard]] int sceneY(QPoint point) const;
    void dragBand(int x);
    void dropBand();
    void showCursor();
    void tellPointer(QPoint point);
    void offerEdge(QPoint point);
    [[nodiscard]] bool isOverEdge(QPoint point) const;

    WaveParts m_parts;
    ItemZoomBand *m_band;   ///< the scene's
    bool m_banding = false; ///< Ctrl was held at the press: the drag marks a part of the time
    bool m_panning = false; ///< a drag moves the time axis
    bool m_dragged = false; ///< the mouse has moved since the last press
    QPoint m_anchor;        ///< of the drag
};
