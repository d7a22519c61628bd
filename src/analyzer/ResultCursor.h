#pragma once

#include <corvanlux/analyzer/AnalyzerTypes.h>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

class Analyzer;
class AnalyzerResults;
class ResultsReader;

/// One analyzer whose frames are listed.
struct ResultSource {
    AnalyzerResults *results = nullptr; ///< not owned; null for an analyzer without results, which is left out
    const Analyzer *analyzer = nullptr; ///< who it is; never looked into
    DisplayBase format = DisplayBase::Hexadecimal;
};

/// A place in the frames of one analyzer: before frame `frameIndex`. A plain value, good while the results live.
struct ResultCursor {
    ResultSource source;
    std::uint64_t frameIndex = 0;
    std::uint64_t frameCount = 0; ///< at least 1; fixed when the cursor is made, while the decoder may add more
    std::int64_t frameFirst = 0;  ///< first and last sample of that frame; of the last one when there is none
    std::int64_t frameLast = 0;

    /// Behind the last frame.
    [[nodiscard]] bool isPast() const { return frameIndex >= frameCount; }
};

/// Several analyzers' frames as one list: by their first samples, of equal ones by the order of the analyzers, and of
/// one analyzer as it found them. Cursors that stand where a row of that list begins have as many rows before them as
/// the sum of their indices. Any thread that may read the results.
namespace ResultMerge {

using Cursors = std::vector<ResultCursor>;
constexpr std::size_t none = std::size_t(-1);

/// Moves a cursor to a frame, at most behind the last one.
void place(ResultCursor &cursor, std::uint64_t index);
/// What leaves textOf(), and all around it, when the reader's pass was taken meanwhile: nothing that the cursors point
/// at is there any more, perhaps. No std::exception.
class PassTaken {};

/// The text of a frame, UTF-8; empty when the plug-in fails, which is kept by its results.
/// @param reader  who holds the pass; null for one that cannot lose it
[[nodiscard]] std::string textOf(const ResultCursor &cursor, std::uint64_t index, ResultsReader *reader);

/// The cursor before which the next row stands; none behind all frames.
[[nodiscard]] std::size_t next(const Cursors &cursors);
/// The cursor behind which the row before stands; none before all frames.
[[nodiscard]] std::size_t previous(const Cursors &cursors);
/// The cursors stand where a row of the list begins: no frame before them belongs behind one that is still to come.
[[nodiscard]] bool areAtRow(const Cursors &cursors);

/// Moves all cursors to row `row` of all frames; behind all of them for one that there is not.
/// Cost: logarithmic in frames and samples, some ten microseconds for two analyzers with millions of frames.
void seek(Cursors &cursors, std::uint64_t row);

} // namespace ResultMerge
