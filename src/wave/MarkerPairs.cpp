#include "wave/MarkerPairs.h"

#include "controls/Look.h"
#include "wave/CursorBody.h"

#include <QGraphicsScene>

#include <algorithm>
#include <utility>

template<class Test>
int MarkerPairs::find(const Test &test) const
{
    const auto found = std::find_if(m_markers.cbegin(), m_markers.cend(), test);
    return found == m_markers.cend() ? -1 : int(found - m_markers.cbegin());
}

void MarkerPairs::setColumnHeight(int pixels)
{
    m_height = pixels;
    for (CursorBody *marker : m_markers) {
        marker->setColumnHeight(pixels);
    }
}

int MarkerPairs::positionOf(int firstId) const
{
    return find([firstId](const CursorBody *marker) { return marker->id() == firstId; });
}

int MarkerPairs::add(int firstId)
{
    const int behind = find([firstId](const CursorBody *marker) { return marker->id() > firstId; });
    const int position = behind < 0 ? size() : behind;
    for (const int offset : {0, 1}) {
        auto *marker = new CursorBody(firstId + offset);
        marker->setColumnHeight(m_height);
        m_markers.insert(position + offset, marker);
        m_scene.addItem(marker);
    }
    return position;
}

void MarkerPairs::remove(int position)
{
    delete m_markers.takeAt(position);
    delete m_markers.takeAt(position);
}

void MarkerPairs::clear()
{
    qDeleteAll(std::exchange(m_markers, {}));
}

int MarkerPairs::firstIn(MarkerState state) const
{
    return find([state](const CursorBody *marker) { return marker->markerState() == state; });
}

int MarkerPairs::shownWith(int id) const
{
    return find([id](const CursorBody *marker) { return marker->id() == id && marker->isShown(); });
}

int MarkerPairs::at(int x) const
{
    return find([x](const CursorBody *marker) {
        return marker->isShown() && TimeMarkers::covers(x, int(marker->x()), screenScale());
    });
}

QVector<ShownPair> MarkerPairs::shown() const
{
    QVector<ShownPair> pairs;
    for (int i = 0; i + 1 < m_markers.size(); i += 2) {
        const CursorBody *first = m_markers[i];
        const CursorBody *second = m_markers[i + 1];
        if (first->isShown() && second->isShown()) {
            pairs.append({first->id() / 2, first->name(), second->name(), first->samplePos, second->samplePos});
        }
    }
    return pairs;
}
