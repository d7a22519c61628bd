#pragma once

#include "wave/ChannelLayout.h"

#include <span>

/// A row on its way to another place, as plain values. Device pixels of the column, y downward.
///
/// The rows between its old and its new place are exchanged with it one by one while it moves, so that layout and
/// order are those of a finished move at each moment. All functions are pure; any thread.
struct RowDrag {
    int chn = -1;    ///< the dragged channel, -1 for none
    int startY = 0;  ///< top of its row when it was taken
    int wantedY = 0; ///< where the pointer last asked its top to be, also outside of the column
};

/// The drag of a row that is still in its place.
/// @param chn  physical channel; one that `rows` lacks gives the drag of none
[[nodiscard]] RowDrag dragFrom(const ChannelLayout &layout, std::span<const ChannelRow> rows, int chn);

/// Where the pointer asks the row's top to be after a move by `offsetY` from where it was taken, while the column has
/// been scrolled by `scrolled`: the row stays under the pointer. No sum overflows.
[[nodiscard]] int wantedTop(const RowDrag &drag, int offsetY, int scrolled = 0);

/// Exchanges the dragged row with the neighbour whose middle it has passed where it was last asked to be. With its
/// middle touched a neighbour stays; an empty row gives way at the first pixel. At most one row gives way.
/// @return the physical channel that gave way, -1 for none
int exchangeOnce(ChannelLayout &layout, std::span<ChannelRow> rows, const RowDrag &drag);

/// Where the dragged row is shown: as asked, but not above the digital rows nor below the last row's top.
[[nodiscard]] int draggedTop(const ChannelLayout &layout, const RowDrag &drag);

/// Exchanges a row with its next neighbour that is shown, past those that are not.
/// @param step  -1 up, 1 down
/// @return false if no shown row is there; nothing has changed then
bool moveByOne(ChannelLayout &layout, std::span<ChannelRow> rows, int chn, int step);
