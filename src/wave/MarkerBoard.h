#pragma once

#include "wave/MarkerPairs.h"
#include "wave/TimeMarkers.h"

#include <QObject>
#include <QPoint>
#include <QStringList>
#include <QVector>

class QGraphicsScene;
class WaveDataGen;

/// What the list of pairs asks of the timing markers.
enum class PairRequest { add, remove, marker, location };

/// The timing markers of the waves: their pairs, states and places, and what pointer, keys, ruler and list of pairs do
/// to them.
///
/// It knows neither rows nor widgets: who calls tells the channel under the pointer. GUI thread, owned by the main
/// view. `x` and points are device pixels of the waves; positions are those of the list, which is sorted by id.
class MarkerBoard : public QObject {
    Q_OBJECT
public:
    /// @param scene, waveGen  not owned, outlive this
    MarkerBoard(QGraphicsScene &scene, WaveDataGen &waveGen, QObject *parent);
    ~MarkerBoard() override;

    /// The size of all rows together, which the markers cross.
    void setArea(QSize area);

    /// The pairs whose markers are both shown, in the order of their letters.
    [[nodiscard]] QVector<ShownPair> shownPairs() const { return m_markers.shown(); }
    /// Forgets all pairs, without telling.
    void clear() { m_markers.clear(); }
    /// Puts all markers in the state `off`; the pairs stay.
    void takeOff();
    /// Brings every shown marker in line with the generator's window.
    void reposition();

    /// What the list of pairs asks about marker `id` (0 or above), see MainView::slotTimingMarkerPairClicked().
    void ask(PairRequest request, int id);
    /// The marker at a position gets `state`. Positions that are none are ignored, here and below.
    void setState(int index, MarkerState state);
    /// The same, and it moves to `x`.
    void setStateAt(int index, MarkerState state, int x);
    /// The key of marker `id`: its pair is made if need be; the marker follows the pointer from `x` on, or no longer.
    void callByKey(int id, int x);

    /// Moves the marker that was touched last by a logical pixel, at least a sample, to the left (`step` -1) or the
    /// right (1), and brings it into view. Nothing without such a marker.
    void moveByKey(int step);
    /// The same to the previous or next edge of the channel over which it was last held, or of any of `channels`.
    void moveToEdge(int step, const QVector<int> &channels);

    /// Takes off the marker that follows the pointer. @return whether there was one
    bool dropFollowing();
    [[nodiscard]] bool isFollowing() const { return m_markers.firstIn(MarkerState::following) >= 0; }
    /// True while a marker follows the pointer or lies under it.
    [[nodiscard]] bool isGrabbable() const;
    /// The pointer has moved over the waves, no button down.
    /// @param chn  channel under it, -1 for none
    /// @return true when a marker has used the move up
    bool pointerMoved(QPoint point, int chn);
    /// A click that no drag was. @return true when a marker has used it up
    bool clicked(Qt::MouseButton button);
    void pointerLeft();

signals:
    // As MainView's of the same names.
    void timMarkPairChanged(int type, int phyId, const QString &value, const QString &total);
    void timeMarkBodyChanged(int type, int index, int value);
    /// A marker of the pair has moved, come or gone.
    void pairChanged(int group);
    /// A marker follows the pointer from now on.
    void pickedUp();

private:
    [[nodiscard]] TimeWindow window() const;
    [[nodiscard]] bool hasSamples() const;
    /// The position of the marker, whose pair is made if need be; -1 for a negative id.
    [[nodiscard]] int indexOf(int id);
    /// @return its position
    int addPair(int firstId);
    void removePair(int id);
    void pressButton(int id);
    void showPair(int id);
    /// Only one marker follows the pointer: another one is put down.
    void showState(int index, MarkerState state);
    void place(int index);
    void snap(int index, QPoint point, int chn);
    void hasMoved(int index);
    void moveTo(int index, double sample);
    void tellTexts(int index);

    MarkerPairs m_markers;
    WaveDataGen &m_waveGen;
    QSize m_area;
    int m_touched = -1; ///< id of the marker that was called, picked up or moved last
    const QStringList m_timeUnits;
};
