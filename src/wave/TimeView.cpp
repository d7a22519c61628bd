#include "wave/TimeView.h"

#include "analysis/MarkerTimes.h"
#include "controls/Look.h"
#include "wave/CursorHandle.h"
#include "wave/MarkerChange.h"
#include "wave/PointerTag.h"
#include "wave/WaveDataGen.h"

#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <utility>

RulerMark rulerMark(const TimeTick &tick, int dpi, int height)
{
    const auto scaled = [dpi](int pixels) { return pixels * dpi / 96; };
    const int scale = dpi / 96;
    const int x = tick.x * scale;
    const int lineX = x + scale / 2;
    // What stands at the left end begins there: half of a "0" was cut.
    const int least = scaled(1);
    if (tick.kind == tickKind::base) {
        return {QPoint(least, scaled(16)), QLine()};
    }
    if (tick.kind == tickKind::decade) {
        return {QPoint(std::max(x - 6 * dpi / 192, least), scaled(16)), QLine(lineX, scaled(21), lineX, height - 2)};
    }
    return {QPoint(std::max(x - scaled(8) / 2, least), scaled(28)), QLine(lineX, scaled(31), lineX, height - 2)};
}

int besideFlags(const QRect &label, std::span<const QRect> flags, int gap)
{
    int left = label.left();
    for (const QRect &flag : flags) {
        if (flag.intersects(QRect(QPoint(left, label.top()), label.size()))) {
            left = flag.right() + 1 + gap;
        }
    }
    return left;
}

std::vector<std::optional<int>> labelsBesideFlags(std::span<const QRect> labels, std::span<const QRect> flags, int gap)
{
    std::vector<std::optional<int>> places(labels.size());
    std::vector<QRect> taken;
    for (std::size_t i = labels.size(); i-- > 0;) { // who is moved to the right finds the others there already
        const QRect &label = labels[i];
        const QRect place(QPoint(besideFlags(label, flags, gap), label.top()), label.size());
        const bool isMoved = place.left() != label.left();
        if (isMoved && std::any_of(taken.begin(), taken.end(), [&](const QRect &other) {
                return other.intersects(place.adjusted(-gap, 0, gap, 0));
            })) {
            continue;
        }
        places[i] = place.left();
        taken.push_back(place);
    }
    return places;
}

TimeView::TimeView(const WaveDataGen *waveGen, QWidget *parent)
    : QWidget(parent), m_waveGen(waveGen), m_pointer(new PointerTag(this))
{
    setFixedHeight(dp(36));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void TimeView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setFont(gFontMain);
    painter.setPen(QPen(gGreys[0], uiScale()));
    painter.fillRect(0, 0, width(), height() - 1, gGreys[8]);
    painter.fillRect(0, height() - 1, width(), 1, gGreys[3]);

    const std::vector<QRect> flags = shownFlags();
    const auto labelRect = [metrics = painter.fontMetrics()](QPoint baseline, const QString &text) {
        const int ascent = metrics.tightBoundingRect(QStringLiteral("0")).height();
        return QRect(baseline.x(), baseline.y() - ascent, metrics.horizontalAdvance(text), ascent);
    };
    const auto ticks = m_waveGen->timeTicks();
    std::vector<RulerMark> marks;
    std::vector<QRect> labels;
    for (const TimeTick &tick : ticks) {
        marks.push_back(rulerMark(tick, gDpi, height()));
        labels.push_back(labelRect(marks.back().text, QString::fromLatin1(tick.text)));
    }
    const std::vector<std::optional<int>> places = labelsBesideFlags(labels, flags, dp(2));
    m_lines.clear();
    for (std::size_t i = 0; i < labels.size(); ++i) {
        if (places[i]) {
            painter.setPen(QPen(ticks[i].kind == tickKind::base ? gGreys[2] : gGreys[0], uiScale()));
            painter.drawText(*places[i], marks[i].text.y(), QString::fromLatin1(ticks[i].text));
        }
        if (!marks[i].line.isNull()) {
            m_lines.append(marks[i].line);
        }
    }
    painter.setPen(QPen(gGreys[0], uiScale()));
    painter.drawLines(m_lines);
}

std::vector<QRect> TimeView::shownFlags() const
{
    std::vector<QRect> flags;
    for (const CursorHandle *handle : handles) {
        if (handle->markerState() != MarkerState::off) {
            flags.push_back(handle->geometry());
        }
    }
    std::sort(flags.begin(), flags.end(), [](const QRect &a, const QRect &b) { return a.left() < b.left(); });
    return flags;
}

void TimeView::slotPointerMoved(int x, const QString &text)
{
    m_pointer->pointAt(x, text, shownFlags());
}

void TimeView::dropHandles()
{
    qDeleteAll(std::exchange(handles, {}));
    moved = false;
}

void TimeView::slotMainViewMarkerChanged(int changedType, int index, int value)
{
    if (index < 0) {
        return;
    }
    update(); // labels give way to flags
    switch (changedType) {
    case markerChange::state:
        handleOf(index)->setMarkerState(TimeMarkers::stateOf(value));
        break;
    case markerChange::place:
        if (index < handles.size()) {
            handles[index]->setGeometry(TimeMarkers::flagPlace(value, height(), screenScale()));
        }
        break;
    case markerChange::pairGone:
        removePair(index);
        break;
    default:
        break;
    }
}

CursorHandle *TimeView::handleOf(int phyId)
{
    const auto find = [this, phyId] {
        return std::find_if(handles.begin(), handles.end(),
                            [phyId](CursorHandle *each) { return each->id() == phyId; });
    };
    if (find() == handles.end()) {
        addPair(phyId);
    }
    return *find();
}

void TimeView::addPair(int phyId)
{
    const int first = MarkerTimes::firstOfPair(phyId);
    const auto before =
        std::find_if(handles.begin(), handles.end(), [first](CursorHandle *each) { return each->id() > first; });
    auto position = int(before - handles.begin());
    for (const int id : {first, first + 1}) {
        auto *handle = new CursorHandle(id, this);
        connect(handle, &CursorHandle::mouseEnter, this, &TimeView::slotMouseEnter);
        connect(handle, &CursorHandle::mouseLeave, this, &TimeView::slotMouseLeave);
        handles.insert(position++, handle);
    }
}

void TimeView::removePair(int position)
{
    if (position + 1 >= handles.size()) {
        return;
    }
    for (int i = 0; i < 2; ++i) {
        CursorHandle *handle = handles.takeAt(position);
        handle->disconnect(this); // the pointer that rests on it leaves it now, which would make the pair anew
        handle->hide();
        handle->deleteLater(); // the click that removes it may have come through it
    }
}

int TimeView::firstIn(MarkerState state) const
{
    const auto found = std::find_if(handles.begin(), handles.end(),
                                    [state](const CursorHandle *each) { return each->markerState() == state; });
    return found == handles.end() ? -1 : int(found - handles.begin());
}

void TimeView::slotMouseEnter(int phyId)
{
    if (firstIn(MarkerState::following) < 0) {
        handleOf(phyId)->setMarkerState(MarkerState::hovered);
    }
}

void TimeView::slotMouseLeave(int phyId)
{
    handleOf(phyId)->setMarkerState(MarkerState::placed);
}

void TimeView::mousePressEvent(QMouseEvent * /*event*/)
{
    moved = false;
}

void TimeView::mouseDoubleClickEvent(QMouseEvent * /*event*/)
{
    moved = false; // the second press of two quick clicks counts as a press
}

void TimeView::mouseMoveEvent(QMouseEvent *event)
{
    moved = true;
    const int following = firstIn(MarkerState::following);
    if (following >= 0) {
        emit timeMarkerChanged(markerChange::setAndMove, following, int(MarkerState::following), event->x());
    }
}

void TimeView::mouseReleaseEvent(QMouseEvent *event)
{
    if (moved) {
        return;
    }
    const int following = firstIn(MarkerState::following);
    if (event->button() == Qt::LeftButton) {
        pickUpOrPutDown();
    } else if (event->button() == Qt::RightButton && following >= 0) {
        emit timeMarkerChanged(markerChange::setState, following, int(MarkerState::off), 0);
    }
}

void TimeView::pickUpOrPutDown()
{
    // One of both at most: what has just been picked up must not be put down by the same click.
    for (int i = 0; i < handles.size(); ++i) {
        const MarkerState state = handles[i]->markerState();
        if (state == MarkerState::hovered || state == MarkerState::following) {
            const MarkerState next = state == MarkerState::hovered ? MarkerState::following : MarkerState::placed;
            emit timeMarkerChanged(markerChange::setState, i, int(next), 0);
            return;
        }
    }
}
