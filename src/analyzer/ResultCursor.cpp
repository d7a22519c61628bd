#include "analyzer/ResultCursor.h"

#include "analyzer/PluginCall.h"
#include "analyzer/ResultsGate.h"

#include <algorithm>
#include <corvanlux/analyzer/AnalyzerResults.h>

namespace {

std::int64_t firstOf(const ResultCursor &cursor, std::uint64_t index)
{
    return cursor.source.results->GetFrame(index).firstSample;
}

/// How many frames begin before `sample`.
std::uint64_t countBefore(const ResultCursor &cursor, std::int64_t sample)
{
    std::uint64_t low = 0;
    std::uint64_t high = cursor.frameCount;
    while (low < high) {
        const std::uint64_t middle = low + (high - low) / 2;
        if (firstOf(cursor, middle) < sample) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return low;
}

} // namespace

namespace ResultMerge {

void place(ResultCursor &cursor, std::uint64_t index)
{
    cursor.frameIndex = std::min(index, cursor.frameCount);
    const Frame frame = cursor.source.results->GetFrame(std::min(index, cursor.frameCount - 1));
    cursor.frameFirst = frame.firstSample;
    cursor.frameLast = frame.lastSample;
}

std::string textOf(const ResultCursor &cursor, std::uint64_t index, ResultsReader *reader)
{
    AnalyzerResults &results = *cursor.source.results;
    std::string text;
    const auto make = [&] {
        const QString fault = pluginFault([&] {
            results.BuildTabularText(index, cursor.source.format);
            text = results.GetTabularTextString();
        });
        if (!fault.isEmpty()) {
            results.KeepTextFault(fault.toUtf8().constData());
            text.clear();
        }
    };
    if (reader == nullptr) {
        make();
    } else if (!reader->inside(&results, make)) {
        throw PassTaken();
    }
    return text;
}

std::size_t next(const Cursors &cursors)
{
    std::size_t best = none;
    for (std::size_t i = 0; i < cursors.size(); ++i) {
        if (!cursors[i].isPast() && (best == none || cursors[i].frameFirst < cursors[best].frameFirst)) {
            best = i;
        }
    }
    return best;
}

std::size_t previous(const Cursors &cursors)
{
    std::size_t best = none;
    std::int64_t bestFirst = 0;
    for (std::size_t i = 0; i < cursors.size(); ++i) {
        if (cursors[i].frameIndex == 0) {
            continue;
        }
        const std::int64_t first = firstOf(cursors[i], cursors[i].frameIndex - 1);
        if (best == none || first >= bestFirst) { // of equal ones the last: it stands behind the others
            best = i;
            bestFirst = first;
        }
    }
    return best;
}

bool areAtRow(const Cursors &cursors)
{
    const std::size_t before = previous(cursors);
    const std::size_t behind = next(cursors);
    if (before == none || behind == none) {
        return true;
    }
    const std::int64_t first = firstOf(cursors[before], cursors[before].frameIndex - 1);
    return first < cursors[behind].frameFirst || (first == cursors[behind].frameFirst && before <= behind);
}

void seek(Cursors &cursors, std::uint64_t row)
{
    const auto rowsBefore = [&cursors](std::int64_t sample) {
        std::uint64_t sum = 0;
        for (const ResultCursor &cursor : cursors) {
            sum += countBefore(cursor, sample);
        }
        return sum;
    };
    // The sample at which the row's frame begins: the first one behind which there are more rows than `row`.
    std::int64_t low = 0;
    std::int64_t high = 0;
    for (const ResultCursor &cursor : cursors) {
        high = std::max(high, firstOf(cursor, cursor.frameCount - 1));
    }
    while (low < high) {
        const std::int64_t middle = low + (high - low) / 2;
        if (rowsBefore(middle + 1) > row) {
            high = middle;
        } else {
            low = middle + 1;
        }
    }
    std::uint64_t rest = row - std::min(row, rowsBefore(low));
    for (ResultCursor &cursor : cursors) {
        const std::uint64_t before = countBefore(cursor, low);
        const std::uint64_t taken = std::min(rest, countBefore(cursor, low + 1) - before);
        place(cursor, before + taken);
        rest -= taken;
    }
}

} // namespace ResultMerge
