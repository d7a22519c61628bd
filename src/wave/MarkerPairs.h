#pragma once

#include "wave/TimeMarkers.h"

#include <QString>
#include <QVector>

class CursorBody;
class QGraphicsScene;

/// A pair of timing markers that are both shown on the wave.
struct ShownPair {
    int group;           ///< 0 to 4, for the letters A to E
    QString firstName;   ///< such as "A1"
    QString secondName;  ///< such as "A2"
    double firstSample;  ///< where the first stands; either may be the earlier
    double secondSample; ///< where the second stands
};

/// The timing markers that there are: the items in the scene, in pairs, sorted by id. GUI thread.
///
/// Positions are those of the list; -1 stands for none. The scene has the items, and takes them along when it goes.
class MarkerPairs {
public:
    /// @param scene  not owned, outlives all calls
    explicit MarkerPairs(QGraphicsScene &scene) : m_scene(scene) {}

    /// The height of all rows, device pixels, for these and later items.
    void setColumnHeight(int pixels);

    [[nodiscard]] int size() const { return m_markers.size(); }
    [[nodiscard]] bool has(int index) const { return index >= 0 && index < m_markers.size(); }
    /// Unchecked.
    [[nodiscard]] CursorBody *operator[](int index) const { return m_markers[index]; }

    /// The position of the pair that begins with that id.
    [[nodiscard]] int positionOf(int firstId) const;
    /// Makes the pair that begins with that id, which is not there yet. @return its position
    int add(int firstId);
    void remove(int position);
    void clear();

    /// The position of the first marker in that state.
    [[nodiscard]] int firstIn(MarkerState state) const;
    /// The position of the marker with that id, if it is shown.
    [[nodiscard]] int shownWith(int id) const;
    /// The position of the first shown marker at device pixel `x`.
    [[nodiscard]] int at(int x) const;
    /// The pairs whose markers are both shown, in the order of their letters.
    [[nodiscard]] QVector<ShownPair> shown() const;

private:
    /// @return the position of the first marker of which that is true
    template<class Test>
    [[nodiscard]] int find(const Test &test) const;

    QGraphicsScene &m_scene;
    QVector<CursorBody *> m_markers;
    int m_height = 0;
};
