#include "wave/VoltageBoard.h"

#include "analysis/MarkerVolts.h"
#include "controls/Look.h"
#include "wave/CursorMarker.h"

#include <QGraphicsScene>

#include <algorithm>
#include <cstdint>
#include <utility>

namespace {

constexpr double firstPlace = 0.3; ///< of the area's height, for marker 0
constexpr double nextPlace = 0.4;  ///< further down, for each after it

QString unknown()
{
    return QStringLiteral("###");
}

MarkerVolts::AreaLevel levelOf(const CursorMarker &marker)
{
    return {marker.position, marker.refHeight};
}

} // namespace

VoltageBoard::VoltageBoard(QGraphicsScene &scene, QObject *parent) : QObject(parent), m_scene(scene) {}

void VoltageBoard::rebuild(bool analog)
{
    const bool wasFollowing = isFollowing();
    qDeleteAll(std::exchange(m_markers, {}));
    m_touched = -1;
    for (int id = 0; analog && id < markerCount; ++id) {
        m_markers.append(new CursorMarker(id));
        m_scene.addItem(m_markers.last());
    }
    if (wasFollowing) {
        emit followingChanged(false);
    }
    updateValues();
}

// ---- places

int VoltageBoard::areaHeight() const
{
    return m_area.height() / uiScale();
}

void VoltageBoard::setArea(QSize area)
{
    m_area = area;
    for (int id = 0; id < m_markers.size(); ++id) {
        CursorMarker &marker = *m_markers[id];
        marker.setLineWidth(area.width());
        if (marker.refHeight <= 0) {
            marker.position = int((firstPlace + nextPlace * id) * areaHeight());
            marker.refHeight = areaHeight();
        }
        place(id);
    }
    updateValues(); // the zero level has moved in whole pixels
}

int VoltageBoard::positionOf(int id) const
{
    const CursorMarker &marker = *m_markers[id];
    const std::int64_t scaled = std::int64_t{marker.position} * areaHeight();
    return marker.refHeight > 0 ? int(scaled / marker.refHeight) : 0;
}

void VoltageBoard::place(int id)
{
    const int half = int(m_markers[id]->boundingRect().height()) / 2;
    m_markers[id]->setPos(0, positionOf(id) * uiScale() - half);
}

void VoltageBoard::moveTo(int id, int position)
{
    m_markers[id]->position = position;
    m_markers[id]->refHeight = areaHeight();
    place(id);
}

// ---- values

void VoltageBoard::setChannel(int chn)
{
    m_channel = chn;
    updateValues();
}

void VoltageBoard::scaleChanged(int chn)
{
    if (chn == m_channel) {
        updateValues();
    }
}

void VoltageBoard::updateValues()
{
    if (m_markers.size() == markerCount) {
        emit valuesChanged(readValues());
    }
}

QStringList VoltageBoard::readValues() const
{
    const CursorMarker &first = *m_markers.first();
    const CursorMarker &second = *m_markers.last();
    const AChnScale scale = scaleOf ? scaleOf(m_channel) : AChnScale{};
    const MarkerVolts::AreaLevel zero{scale.zeroY / uiScale(), areaHeight()};
    const auto textOf = [&](const CursorMarker &marker) {
        return marker.isShown()
                   ? MarkerVolts::formatMarkerVoltage(MarkerVolts::voltageOf(levelOf(marker), zero, scale.fullScale))
                   : unknown();
    };
    QString difference = unknown();
    if (first.isShown() && second.isShown()) {
        difference = MarkerVolts::formatMarkerVoltage(
            MarkerVolts::differenceOf(levelOf(first), levelOf(second), scale.fullScale));
    }
    return {textOf(first), textOf(second), difference};
}

// ---- states

int VoltageBoard::firstIn(MarkerState state) const
{
    const auto found = std::find_if(m_markers.cbegin(), m_markers.cend(),
                                    [state](const CursorMarker *marker) { return marker->markerState() == state; });
    return found == m_markers.cend() ? -1 : int(found - m_markers.cbegin());
}

void VoltageBoard::setState(int id, MarkerState state)
{
    const bool wasFollowing = isFollowing();
    m_markers[id]->setMarkerState(state);
    if (state == MarkerState::following) {
        m_touched = id;
        m_hasMoved = false;
    }
    if (wasFollowing != isFollowing()) {
        emit followingChanged(!wasFollowing);
    }
}

void VoltageBoard::pressButton(int id)
{
    if (!has(id)) {
        return;
    }
    if (m_markers[id]->markerState() != MarkerState::following) {
        const int other = (id + 1) % markerCount;
        if (m_markers[other]->markerState() == MarkerState::following) {
            setState(other, MarkerState::off);
        }
        setState(id, MarkerState::following);
    } else {
        setState(id, m_hasMoved ? MarkerState::placed : MarkerState::off);
    }
    updateValues();
}

void VoltageBoard::layDown()
{
    const int following = firstIn(MarkerState::following);
    if (has(following)) {
        setState(following, MarkerState::placed);
    }
}

void VoltageBoard::dropFollowing()
{
    const int following = firstIn(MarkerState::following);
    if (has(following)) {
        setState(following, MarkerState::off);
        updateValues();
    }
}

void VoltageBoard::moveByKey(int step)
{
    if (!has(m_touched) || !m_markers[m_touched]->isShown()) {
        return;
    }
    if (m_markers[m_touched]->markerState() == MarkerState::following) {
        layDown(); // the pointer would take it back
    }
    moveTo(m_touched, std::clamp(positionOf(m_touched) + step, 0, std::max(areaHeight() - 1, 0)));
    updateValues();
}

// ---- the pointer

bool VoltageBoard::isGrabbable() const
{
    return firstIn(MarkerState::hovered) >= 0 || (m_pointerInArea && isFollowing());
}

bool VoltageBoard::pointerMoved(int y)
{
    m_pointerInArea = isInArea(y);
    const int following = firstIn(MarkerState::following);
    if (following < 0) {
        hover(y);
        return false;
    }
    if (m_pointerInArea) {
        drag(following, y);
    }
    return m_pointerInArea;
}

void VoltageBoard::drag(int id, int y)
{
    const int other = (id + 1) % markerCount;
    int distance = y / uiScale() - positionOf(id);
    if (movesBoth && m_markers[other]->isShown()) {
        // Both keep their distance, so that they stop together where the first of them meets an end of the area.
        const int from = positionOf(other);
        distance = std::clamp(distance, -from, std::max(areaHeight() - 1 - from, -from));
        moveTo(other, from + distance);
    }
    m_hasMoved = m_hasMoved || distance != 0;
    moveTo(id, positionOf(id) + distance);
    updateValues();
}

void VoltageBoard::hover(int y)
{
    const auto covers = [this, y](const CursorMarker *marker) {
        const QRect place = marker->sceneBoundingRect().toRect().adjusted(0, -uiScale(), 0, uiScale());
        return m_pointerInArea && marker->isShown() && y >= place.top() && y <= place.bottom();
    };
    const auto found = std::find_if(m_markers.cbegin(), m_markers.cend(), covers);
    const int hit = found == m_markers.cend() ? -1 : int(found - m_markers.cbegin());
    const int hovered = firstIn(MarkerState::hovered);
    if (has(hovered) && hovered != hit) {
        setState(hovered, MarkerState::placed);
    }
    if (has(hit) && hit != hovered) {
        setState(hit, MarkerState::hovered);
    }
}

bool VoltageBoard::clicked(Qt::MouseButton button, int y)
{
    const int following = firstIn(MarkerState::following);
    const int hovered = firstIn(MarkerState::hovered);
    if (has(following) && isInArea(y) && button == Qt::LeftButton) {
        setState(following, MarkerState::placed);
    } else if (has(following) && isInArea(y) && button == Qt::RightButton) {
        dropFollowing();
    } else if (following < 0 && has(hovered)) {
        setState(hovered, MarkerState::following);
    } else {
        return false;
    }
    return true;
}

void VoltageBoard::pointerLeft()
{
    m_pointerInArea = false;
    hover(-1);
}
