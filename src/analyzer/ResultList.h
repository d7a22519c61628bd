#pragma once

#include "analyzer/ResultCursor.h"
#include "analyzer/RowFilter.h"

#include <QStringList>

#include <functional>
#include <span>

/// The list of all decoded frames, of which there is only ever one page of text: what its thread does, as functions
/// over plain values. Any thread that may read the results.
///
/// Without a search a row's number counts all frames from the first one on; with a search it counts those that match.
/// Each step looks at one frame, so that its caller can hear requests between any two. All that makes texts may be left
/// by ResultMerge::PassTaken.
namespace ResultList {

/// What is to be listed.
struct Query {
    QString searchText;   ///< empty for all frames
    double begSample = 0; ///< the list begins at the first frame that ends past it; a search begins at the first frame
    double endSample = 0; ///< samples of the capture; 0 when there is nothing to show
};

/// Which frame a row shows.
struct Row {
    const Analyzer *analyzer = nullptr;
    std::uint64_t frame = 0; ///< its index
    std::int64_t first = 0;  ///< its first and last sample
    std::int64_t last = 0;
};

/// Where the list stands.
struct State {
    ResultMerge::Cursors pageCursors; ///< at the page's first row
    ResultMerge::Cursors fillCursors; ///< behind the page's last row, while it is filled forward
    ResultMerge::Cursors scanCursors; ///< behind the last frame that was counted
    QStringList rows;                 ///< the page
    std::vector<Row> rowRanges;       ///< of the same rows
    bool fillForward = true;
    bool inOrder = true;   ///< the page is a piece of the list; see reset()
    bool scanning = false; ///< the scan has begun
    bool scanned = false;  ///< totalRows is known
    qint64 scanMatches = 0;
    qint64 topRow = 0;    ///< number of the page's first row
    qint64 totalRows = 0; ///< as far as it is known
    int rowNum = 0;       ///< rows that fit in the view
    bool hasData = false;
    RowFilter filter;
    ResultsReader *reader = nullptr; ///< whose thread this is; not owned, null for one that cannot lose its pass
};

enum class Step {
    More,     ///< go on
    PageFull, ///< go on, the page has just become full
    Idle      ///< nothing is left to do
};

/// Starts anew. Keeps `rowNum` and `reader`. Without a search the page begins with the frames that are still under way
/// at `begSample`, and leaves out those that have ended by then, though they may come behind the former in the list.
/// Such a page is not in order; the first scroll to another row leaves it for good.
void reset(State &state, std::span<const ResultSource> sources, const Query &query);
/// Another number of rows fits in the view: the page is to be filled by step() from the same first row on.
void setRowNum(State &state, int rowNum);
/// Gives all cursors up; the page and its numbers stay as they are.
void dropCursors(State &state);
/// Looks at one more frame: for the page while that is not full, then, with a search, to count the rows.
[[nodiscard]] Step step(State &state);
/// Moves the page's first row to `row`, cut to 0 and totalRows; the page is to be filled by step() then. At totalRows
/// it becomes the last page. However the page came to a row, it shows the same there; only one that is not in order
/// stays as it is when it begins at `row` already.
/// @param leave  asked between two frames; true ends the move early, at whatever row it has come to
/// Cost: with a search, one text a frame on the way; without one, no text, and a long way is no longer than a short
/// one.
void scrollTo(State &state, qint64 row, const std::function<bool()> &leave);

} // namespace ResultList
