#pragma once

#include "wave/TimeMarkers.h"

#include <QObject>
#include <QSize>
#include <QStringList>
#include <QVector>

#include <functional>

class CursorMarker;
class QGraphicsScene;

/// What makes a height in the analog area a voltage of one channel.
struct AChnScale {
    int zeroY = 0;     ///< the zero level, device pixels from the top of the area
    int fullScale = 0; ///< what the area's height stands for, millivolts; 0 if it is not known
};

/// The two voltage markers Y1 and Y2 over the analog area: their states and places, what pointer, keys and buttons do
/// to them, and the voltages that they read.
///
/// Owns the items in the scene. It knows neither rows nor widgets: who calls tells where the pointer is, and `scaleOf`
/// what a height stands for. Without an analog area there are no markers, and nothing here does anything. GUI thread,
/// owned by the main view. Ids are 0 and 1; y is in device pixels of the scene, where the area begins at 0.
class VoltageBoard : public QObject {
    Q_OBJECT
public:
    static constexpr int markerCount = 2;

    /// @param scene  not owned, outlives this
    VoltageBoard(QGraphicsScene &scene, QObject *parent);

    /// Takes the markers away, and makes them anew for a device with analog channels. They have no place until
    /// setArea().
    void rebuild(bool analog);
    /// The width of the waves and the height of the analog area. Markers keep their voltage.
    void setArea(QSize area);
    /// The channel whose voltages are read, 0 or above.
    void setChannel(int chn);
    [[nodiscard]] int channel() const { return m_channel; }
    /// What a height stands for has changed for channel `chn`.
    void scaleChanged(int chn);

    /// The button of marker `id`: the marker follows the pointer from now on, and the other one no longer. Of a marker
    /// that follows already, the button takes it off again, or, once it has moved, lays it down. Ids that are none are
    /// ignored.
    void pressButton(int id);
    /// The marker that follows the pointer stays where it is. Nothing without one.
    void layDown();
    /// Takes off the marker that follows the pointer. Nothing without one.
    void dropFollowing();
    /// Moves the marker that was touched last by a logical pixel, up (`step` -1) or down (1), and lays it down. Nothing
    /// without such a marker.
    void moveByKey(int step);

    [[nodiscard]] bool isFollowing() const { return firstIn(MarkerState::following) >= 0; }
    /// True while the pointer moves a marker or lies over one.
    [[nodiscard]] bool isGrabbable() const;
    /// The pointer has moved over the waves, no button down.
    /// @return true when a marker has used the move up
    bool pointerMoved(int y);
    /// A click at `y` that no drag was. @return true when a marker has used it up
    bool clicked(Qt::MouseButton button, int y);
    void pointerLeft();

    /// How the sidebar's settings read at present. Must outlive the calls here; may be empty.
    std::function<AChnScale(int chn)> scaleOf;
    bool movesBoth = false; ///< a marker that follows the pointer takes the other one along

signals:
    /// The voltages of both markers, and between them; "###" for what is not known.
    void valuesChanged(const QStringList &values);
    /// A marker follows the pointer from now on (`on`), or no longer.
    void followingChanged(bool on);

private:
    void updateValues();
    [[nodiscard]] bool has(int id) const { return id >= 0 && id < m_markers.size(); }
    [[nodiscard]] bool isInArea(int y) const { return y >= 0 && y < m_area.height() && !m_markers.isEmpty(); }
    [[nodiscard]] int areaHeight() const; ///< logical pixels
    /// The id of the marker in that state, -1 for none.
    [[nodiscard]] int firstIn(MarkerState state) const;
    void setState(int id, MarkerState state);
    void place(int id);
    /// Where the marker stands in the area of the present height, logical pixels.
    [[nodiscard]] int positionOf(int id) const;
    void moveTo(int id, int position);
    void drag(int id, int y);
    void hover(int y);
    [[nodiscard]] QStringList readValues() const;

    QGraphicsScene &m_scene;
    QVector<CursorMarker *> m_markers; ///< both, by id, or none
    QSize m_area;
    int m_channel = 0;
    int m_touched = -1;           ///< id of the marker that was called, picked up or moved last
    bool m_hasMoved = false;      ///< the marker that follows the pointer has moved since it does
    bool m_pointerInArea = false; ///< at the last move
};
