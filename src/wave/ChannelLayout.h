#pragma once

#include <QPoint>
#include <QSize>

#include <span>
#include <vector>

/// What decides the height and the place of one digital channel's row.
struct ChannelRow {
    int showIndex;  ///< row position; over all channels a permutation of 0 to count - 1
    int multiplier; ///< height factor: 1, 2, 4 or 8
    bool enabled;
};

/// The rows from top to bottom, in device pixels. Row p begins where row p - 1 ends; a disabled channel's row is empty.
struct ChannelLayout {
    int aChnHeight = 0;       ///< height of the analog area above the first row
    std::vector<int> tops;    ///< by row position
    std::vector<int> heights; ///< by row position
    int totalHeight = 0;      ///< analog area and all rows
};

/// The bounds of one height unit, in device pixels.
struct UnitBounds {
    int least;
    int most;
};

/// Places the rows: the units of all rows and of the analog area share `areaHeight`, within the bounds.
/// @param rows    by physical channel
/// @param aUnits  units of the analog area, 0 without one
[[nodiscard]] ChannelLayout layoutChannels(std::span<const ChannelRow> rows, int aUnits, int areaHeight,
                                           UnitBounds bounds);

/// A stored height factor as it is used: 1 to 15 pass, anything else is 1.
[[nodiscard]] int validMultiplier(int stored);

/// The physical channel whose row holds a point of the view, -1 for none or a point outside the view.
/// @param scroll  device pixels by which the rows are scrolled up
[[nodiscard]] int channelUnderPoint(const ChannelLayout &layout, std::span<const ChannelRow> rows, QPoint point,
                                    QSize view, int scroll);
