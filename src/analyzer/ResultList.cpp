#include "analyzer/ResultList.h"

#include <algorithm>
#include <corvanlux/analyzer/AnalyzerResults.h>
#include <utility>

namespace ResultList {

namespace {

constexpr qint64 walkedAtMost = 256; // rows; a longer way is reckoned

qint64 rowsBefore(const ResultMerge::Cursors &cursors)
{
    qint64 sum = 0;
    for (const ResultCursor &cursor : cursors) {
        sum += qint64(cursor.frameIndex);
    }
    return sum;
}

Row rowOf(const ResultCursor &cursor)
{
    return {cursor.source.analyzer, cursor.frameIndex, cursor.frameFirst, cursor.frameLast};
}

QString shown(const std::string &text)
{
    return QString::fromUtf8(text.data(), int(text.size()));
}

bool isFull(const State &state)
{
    return state.rows.size() >= state.rowNum;
}

bool counts(const State &state, const ResultCursor &cursor, std::uint64_t index)
{
    return state.filter.isEmpty() || state.filter.matches(ResultMerge::textOf(cursor, index, state.reader));
}

void raiseTotal(State &state)
{
    state.totalRows = std::max(state.totalRows, state.topRow + state.rows.size());
}

/// One frame at the end of the page. @return false behind all frames
bool fillDown(State &state)
{
    const std::size_t at = ResultMerge::next(state.fillCursors);
    if (at == ResultMerge::none) {
        return false;
    }
    ResultCursor &cursor = state.fillCursors[at];
    const std::string text = ResultMerge::textOf(cursor, cursor.frameIndex, state.reader);
    if (state.filter.matches(text)) {
        state.rows.append(shown(text));
        state.rowRanges.push_back(rowOf(cursor));
        if (!state.filter.isEmpty()) {
            raiseTotal(state);
        }
    }
    ResultMerge::place(cursor, cursor.frameIndex + 1);
    return true;
}

/// One frame before the page. @return false before all frames
bool fillUp(State &state)
{
    const std::size_t at = ResultMerge::previous(state.pageCursors);
    if (at == ResultMerge::none) {
        return false;
    }
    ResultCursor &cursor = state.pageCursors[at];
    ResultMerge::place(cursor, cursor.frameIndex - 1);
    const std::string text = ResultMerge::textOf(cursor, cursor.frameIndex, state.reader);
    if (state.filter.matches(text)) {
        --state.topRow;
        state.rows.prepend(shown(text));
        state.rowRanges.insert(state.rowRanges.begin(), rowOf(cursor));
    }
    return true;
}

/// One frame into the page. @return false when there are no more frames than it holds
bool fill(State &state)
{
    if (state.fillForward && !fillDown(state)) {
        state.fillForward = false; // the page has run into the end of the data: it grows upwards instead
    }
    return state.fillForward || fillUp(state);
}

Step scan(State &state)
{
    if (!state.scanning) {
        state.scanning = true;
        state.scanCursors = state.pageCursors;
        state.scanMatches = state.topRow;
    }
    const std::size_t at = ResultMerge::next(state.scanCursors);
    if (at == ResultMerge::none) {
        state.scanned = true;
        return Step::Idle;
    }
    ResultCursor &cursor = state.scanCursors[at];
    if (counts(state, cursor, cursor.frameIndex)) {
        ++state.scanMatches;
        state.totalRows = std::max(state.totalRows, state.scanMatches);
    }
    ResultMerge::place(cursor, cursor.frameIndex + 1);
    return Step::More;
}

void emptyPage(State &state)
{
    state.rows.clear();
    state.rowRanges.clear();
}

/// The page is to be filled from its first row on.
void fillAnew(State &state)
{
    emptyPage(state);
    state.fillForward = true;
    state.fillCursors = state.pageCursors;
}

void walkUp(State &state, qint64 row, const std::function<bool()> &leave)
{
    while (state.topRow > row && !leave()) {
        const std::size_t at = ResultMerge::previous(state.pageCursors);
        if (at == ResultMerge::none) {
            break;
        }
        ResultCursor &cursor = state.pageCursors[at];
        ResultMerge::place(cursor, cursor.frameIndex - 1);
        state.topRow -= counts(state, cursor, cursor.frameIndex) ? 1 : 0;
    }
}

void walkDown(State &state, qint64 row, const std::function<bool()> &leave)
{
    while (state.topRow < row && !leave()) {
        const std::size_t at = ResultMerge::next(state.pageCursors);
        if (at == ResultMerge::none) {
            break;
        }
        ResultCursor &cursor = state.pageCursors[at];
        state.topRow += counts(state, cursor, cursor.frameIndex) ? 1 : 0;
        ResultMerge::place(cursor, cursor.frameIndex + 1);
    }
}

/// A few rows up a full page: its other rows stay, and only those above are made.
void slideUp(State &state, qint64 distance)
{
    for (qint64 i = 0; i < distance; ++i) {
        state.rows.removeLast();
        state.rowRanges.pop_back();
    }
    state.fillForward = false;
    state.fillCursors.clear();
}

} // namespace

void reset(State &state, std::span<const ResultSource> sources, const Query &query)
{
    const int rowNum = state.rowNum;
    ResultsReader *const reader = state.reader;
    state = {};
    state.rowNum = rowNum;
    state.reader = reader;
    state.filter = RowFilter(query.searchText);
    state.hasData = query.endSample > 0;
    if (!state.hasData) {
        return;
    }
    const std::int64_t from = query.begSample < 1.0 ? -1 : std::int64_t(query.begSample);
    for (const ResultSource &source : sources) {
        const std::uint64_t count = source.results != nullptr ? source.results->GetNumFrames() : 0;
        if (count == 0) {
            continue;
        }
        ResultCursor cursor{source, 0, count, 0, 0};
        std::uint64_t first = 0;
        std::uint64_t last = 0;
        if (state.filter.isEmpty()) {
            const bool found = source.results->GetFramesInRange(from, std::int64_t(query.endSample), &first, &last);
            first = found ? first : count;
            state.totalRows += qint64(count);
        }
        ResultMerge::place(cursor, first);
        state.pageCursors.push_back(cursor);
    }
    state.fillCursors = state.pageCursors;
    state.inOrder = ResultMerge::areAtRow(state.pageCursors);
    state.topRow = rowsBefore(state.pageCursors);
}

void setRowNum(State &state, int rowNum)
{
    state.rowNum = rowNum;
    if (!state.pageCursors.empty()) {
        fillAnew(state);
    }
}

void dropCursors(State &state)
{
    state.pageCursors.clear();
    state.fillCursors.clear();
    state.scanCursors.clear();
    state.scanning = false;
}

Step step(State &state)
{
    if (state.pageCursors.empty()) {
        return Step::Idle;
    }
    if (!isFull(state)) {
        if (fill(state)) {
            if (!isFull(state)) {
                return Step::More;
            }
            raiseTotal(state);
            return Step::PageFull;
        }
        raiseTotal(state);
        state.scanned = true; // every frame has been looked at
    }
    return state.filter.isEmpty() || state.scanned ? Step::Idle : scan(state);
}

void scrollTo(State &state, qint64 row, const std::function<bool()> &leave)
{
    if (state.pageCursors.empty() || !state.hasData) {
        return;
    }
    const qint64 target = std::clamp<qint64>(row, 0, state.totalRows);
    const qint64 distance = target < state.topRow ? state.topRow - target : target - state.topRow;
    if (!state.inOrder && distance == 0) {
        return;
    }
    if (state.inOrder && target < state.topRow && distance < state.rows.size() && isFull(state)) {
        slideUp(state, distance);
        return;
    }
    if (!state.inOrder || (state.filter.isEmpty() && distance > walkedAtMost)) {
        ResultMerge::seek(state.pageCursors, std::uint64_t(target)); // a search is always in order
        state.topRow = target;
        state.inOrder = true;
    } else if (target < state.topRow) {
        walkUp(state, target, leave);
    } else {
        walkDown(state, target, leave);
    }
    fillAnew(state);
}

} // namespace ResultList
