#include "wave/MarkerBoard.h"

#include "analysis/MarkerTimes.h"
#include "controls/Look.h"
#include "controls/Truncate.h"
#include "store/SmpData.h"
#include "wave/CursorBody.h"
#include "wave/MarkerChange.h"
#include "wave/WaveDataGen.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int fromRightEnd = 20; ///< pixels at 96 dpi: where a marker begins that was called by its button
constexpr int newMarkerPart = 4; ///< a new pair begins at 4/5 of the width
constexpr int newMarkerWhole = 5;

} // namespace

MarkerBoard::MarkerBoard(QGraphicsScene &scene, WaveDataGen &waveGen, QObject *parent)
    : QObject(parent),
      m_markers(scene),
      m_waveGen(waveGen),
      m_timeUnits{QStringLiteral("ps"), QStringLiteral("ns"), QStringLiteral("us"), QStringLiteral("ms"),
                  QStringLiteral("s")}
{}

MarkerBoard::~MarkerBoard() = default; // the scene, a sibling, has the items

void MarkerBoard::setArea(QSize area)
{
    m_area = area;
    m_markers.setColumnHeight(area.height());
}

TimeWindow MarkerBoard::window() const
{
    return {m_waveGen.viewStart(), m_waveGen.ratioSasPix()};
}

bool MarkerBoard::hasSamples() const
{
    return m_waveGen.sampleCount() > 0;
}

// ---- the pairs

int MarkerBoard::indexOf(int id)
{
    if (id < 0) {
        return -1;
    }
    const int firstId = MarkerTimes::firstOfPair(id);
    const int position = m_markers.positionOf(firstId);
    return (position < 0 ? addPair(firstId) : position) + id - firstId;
}

int MarkerBoard::addPair(int firstId)
{
    const int position = m_markers.add(firstId);
    emit timMarkPairChanged(markerChange::pairMade, firstId, QString(), QString());
    emit timeMarkBodyChanged(markerChange::state, firstId, int(MarkerState::off));
    emit timeMarkBodyChanged(markerChange::state, firstId + 1, int(MarkerState::off));
    return position;
}

void MarkerBoard::removePair(int id)
{
    const int firstId = MarkerTimes::firstOfPair(id);
    const int position = m_markers.positionOf(firstId);
    if (position < 0) {
        return;
    }
    emit timeMarkBodyChanged(markerChange::pairGone, position, -1);
    m_markers.remove(position);
    emit pairChanged(firstId / 2);
}

// ---- requests

void MarkerBoard::ask(PairRequest request, int id)
{
    if (id < 0) {
        return;
    }
    switch (request) {
    case PairRequest::add: {
        const int first = indexOf(MarkerTimes::firstOfPair(id));
        const int x = m_area.width() * newMarkerPart / newMarkerWhole;
        setStateAt(first, MarkerState::off, x);
        setStateAt(first + 1, MarkerState::off, x);
        break;
    }
    case PairRequest::remove:
        removePair(id);
        break;
    case PairRequest::marker:
        pressButton(id);
        break;
    case PairRequest::location:
        showPair(id);
        break;
    }
}

void MarkerBoard::pressButton(int id)
{
    if (!hasSamples()) {
        return;
    }
    const int index = indexOf(id);
    const int following = m_markers.firstIn(MarkerState::following);
    if (following >= 0) {
        setState(following, MarkerState::off);
    }
    if (following == index) {
        return;
    }
    if (m_markers[index]->isShown()) {
        setState(index, MarkerState::following);
    } else {
        setStateAt(index, MarkerState::following, m_area.width() - dp(fromRightEnd));
    }
}

void MarkerBoard::showPair(int id)
{
    const int group = id / 2;
    for (const ShownPair &pair : m_markers.shown()) {
        if (pair.group == group) {
            const auto [from, to] = std::minmax(pair.firstSample, pair.secondSample);
            m_waveGen.zoomToRange(from, to);
            return;
        }
    }
}

void MarkerBoard::callByKey(int id, int x)
{
    const int index = indexOf(id);
    if (!m_waveGen.isComplete()) {
        return;
    }
    const int following = m_markers.firstIn(MarkerState::following);
    if (following >= 0) {
        setState(following, MarkerState::off);
    }
    if (following != index && m_markers[index]->markerState() != MarkerState::hovered) {
        setStateAt(index, MarkerState::following, x);
    }
}

// ---- state and place

void MarkerBoard::setStateAt(int index, MarkerState state, int x)
{
    if (!m_markers.has(index)) {
        return;
    }
    showState(index, state);
    m_markers[index]->samplePos = TimeMarkers::sampleAt(x, window(), screenScale());
    place(index);
    hasMoved(index);
}

void MarkerBoard::setState(int index, MarkerState state)
{
    if (!m_markers.has(index)) {
        return;
    }
    const bool wasShown = m_markers[index]->isShown();
    showState(index, state);
    if (wasShown != m_markers[index]->isShown()) {
        hasMoved(index);
    }
}

void MarkerBoard::showState(int index, MarkerState state)
{
    if (state == MarkerState::following) {
        emit pickedUp();
        const int other = m_markers.firstIn(MarkerState::following);
        if (other >= 0 && other != index) {
            showState(other, MarkerState::placed);
        }
    }
    if (state == MarkerState::following) {
        m_touched = m_markers[index]->id();
    }
    m_markers[index]->setMarkerState(state);
    emit timeMarkBodyChanged(markerChange::state, m_markers[index]->id(), int(state));
}

void MarkerBoard::place(int index)
{
    const int x = TimeMarkers::columnOf(m_markers[index]->samplePos, window(), screenScale());
    m_markers[index]->setPos(x, 0);
    emit timeMarkBodyChanged(markerChange::place, index, x);
}

void MarkerBoard::snap(int index, QPoint point, int chn)
{
    const TimeWindow seen = window();
    const PixelScale scale = screenScale();
    double sample = TimeMarkers::sampleAt(point.x(), seen, scale);
    if (chn >= 0) {
        m_markers[index]->row = chn;
        const SmpData *capture = m_waveGen.source();
        const SmpReadLock lock(capture);
        SmpEdgeInfo edges{};
        if (lock && capture->edgeNeighbours(chn, truncated64(sample), edges) == 0) {
            sample = TimeMarkers::snapped(sample, edges, seen.ratio, scale);
        }
    }
    m_markers[index]->samplePos = sample;
    place(index);
    hasMoved(index);
}

void MarkerBoard::reposition()
{
    for (int i = 0; i < m_markers.size(); ++i) {
        if (m_markers[i]->isShown()) {
            place(i);
        }
    }
}

void MarkerBoard::takeOff()
{
    // The pulses are counted for all pairs at once, with the new capture.
    for (int i = 0; i < m_markers.size(); ++i) {
        if (m_markers[i]->isShown()) {
            showState(i, MarkerState::off);
            tellTexts(i);
        }
    }
}

void MarkerBoard::hasMoved(int index)
{
    tellTexts(index);
    emit pairChanged(m_markers[index]->id() / 2);
}

void MarkerBoard::tellTexts(int index)
{
    const CursorBody *marker = m_markers[index];
    const CursorBody *other = m_markers[index ^ 1]; // pairs begin at even positions
    QString value = QStringLiteral("###");
    QString total = value;
    {
        const SmpData *capture = m_waveGen.source();
        const SmpReadLock lock(capture);
        if (lock && marker->isShown() && capture->smpFrequ() > 0) {
            const std::int64_t rate = capture->smpFrequ();
            value = MarkerTimes::timeText(MarkerTimes::timeOf(marker->samplePos, capture->trgPos(), rate), m_timeUnits);
            if (other->isShown()) {
                const double distance = MarkerTimes::distanceOf(marker->samplePos, other->samplePos, rate);
                total = MarkerTimes::timeText(distance, m_timeUnits);
            }
        }
    }
    emit timMarkPairChanged(markerChange::time, marker->id(), value, total);
}

// ---- moves by key

void MarkerBoard::moveByKey(int step)
{
    const int index = m_markers.shownWith(m_touched);
    if (m_markers.has(index)) {
        moveTo(index, m_markers[index]->samplePos + step * std::max(1.0, std::floor(window().ratio)));
    }
}

void MarkerBoard::moveToEdge(int step, const QVector<int> &channels)
{
    const int index = m_markers.shownWith(m_touched);
    if (!m_markers.has(index)) {
        return;
    }
    const int row = m_markers[index]->row;
    const QVector<int> rows = channels.contains(row) ? QVector<int>{row} : channels;
    const std::int64_t from = truncated64(m_markers[index]->samplePos);
    std::int64_t best = -1;
    {
        const SmpData *capture = m_waveGen.source();
        const SmpReadLock lock(capture);
        for (int i = 0; lock && i < rows.size(); ++i) {
            const std::int64_t edge =
                step < 0 ? capture->prevEdge(rows[i], from - 1) : capture->nextEdge(rows[i], from);
            const bool isNearer = best < 0 || (step < 0 ? edge > best : edge < best);
            if (edge >= 0 && edge < capture->smpCount() && isNearer) {
                best = edge;
            }
        }
    }
    if (best >= 0) {
        moveTo(index, double(best));
    }
}

void MarkerBoard::moveTo(int index, double sample)
{
    if (m_markers[index]->markerState() == MarkerState::following) {
        setState(index, MarkerState::placed); // the pointer would take it back
    }
    const double last = std::max(0.0, double(m_waveGen.sampleCount()) - 1.0);
    m_markers[index]->samplePos = std::clamp(sample, 0.0, last);
    const double column = (m_markers[index]->samplePos - window().start) / window().ratio;
    if (!(column >= 0.0 && column < m_waveGen.viewWidth())) {
        const double half = m_waveGen.viewWidth() / 2 * window().ratio;
        m_waveGen.setViewStart(m_markers[index]->samplePos - half);
    }
    place(index);
    hasMoved(index);
}

bool MarkerBoard::isGrabbable() const
{
    return m_markers.firstIn(MarkerState::following) >= 0 || m_markers.firstIn(MarkerState::hovered) >= 0;
}

// ---- the pointer

bool MarkerBoard::pointerMoved(QPoint point, int chn)
{
    const int following = m_markers.firstIn(MarkerState::following);
    if (following >= 0) {
        snap(following, point, chn);
        return true;
    }
    const int hit = m_markers.at(point.x());
    const int hovered = m_markers.firstIn(MarkerState::hovered);
    if (hovered >= 0 && hovered != hit) {
        setState(hovered, MarkerState::placed);
    }
    if (hit >= 0 && hit != hovered) {
        setState(hit, MarkerState::hovered);
    }
    return hit >= 0;
}

bool MarkerBoard::dropFollowing()
{
    const int following = m_markers.firstIn(MarkerState::following);
    if (following < 0) {
        return false;
    }
    emit pickedUp(); // what was offered beside it goes as well
    setState(following, MarkerState::off);
    return true;
}

bool MarkerBoard::clicked(Qt::MouseButton button)
{
    const int following = m_markers.firstIn(MarkerState::following);
    if (following >= 0 && button == Qt::LeftButton) {
        setState(following, MarkerState::placed);
        return true;
    }
    if (button == Qt::RightButton && dropFollowing()) {
        return true;
    }
    const int hovered = m_markers.firstIn(MarkerState::hovered);
    if (following < 0 && hovered >= 0 && button == Qt::LeftButton) {
        setState(hovered, MarkerState::following);
        return true;
    }
    return false;
}

void MarkerBoard::pointerLeft()
{
    setState(m_markers.firstIn(MarkerState::hovered), MarkerState::placed);
}
