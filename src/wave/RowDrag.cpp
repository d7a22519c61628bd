#include "wave/RowDrag.h"

#include "controls/Truncate.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace {

int channelAtRow(std::span<const ChannelRow> rows, std::size_t row)
{
    const auto found =
        std::find_if(rows.begin(), rows.end(), [row](const ChannelRow &r) { return std::size_t(r.showIndex) == row; });
    return found == rows.end() ? -1 : int(found - rows.begin());
}

/// Exchanges row `upper` with the one below it. @return the two channels, the one that is now above first
std::pair<int, int> exchange(ChannelLayout &layout, std::span<ChannelRow> rows, std::size_t upper)
{
    const int falling = channelAtRow(rows, upper);
    const int rising = channelAtRow(rows, upper + 1);
    rows[std::size_t(rising)].showIndex = int(upper);
    rows[std::size_t(falling)].showIndex = int(upper) + 1;
    std::swap(layout.heights[upper], layout.heights[upper + 1]);
    layout.tops[upper + 1] = layout.tops[upper] + layout.heights[upper];
    return {rising, falling};
}

bool has(std::span<const ChannelRow> rows, int chn)
{
    return chn >= 0 && std::size_t(chn) < rows.size();
}

} // namespace

RowDrag dragFrom(const ChannelLayout &layout, std::span<const ChannelRow> rows, int chn)
{
    if (!has(rows, chn)) {
        return {};
    }
    const int top = layout.tops[std::size_t(rows[std::size_t(chn)].showIndex)];
    return {chn, top, top};
}

int wantedTop(const RowDrag &drag, int offsetY, int scrolled)
{
    return truncated32(double(drag.startY) + offsetY + scrolled);
}

int exchangeOnce(ChannelLayout &layout, std::span<ChannelRow> rows, const RowDrag &drag)
{
    if (!has(rows, drag.chn)) {
        return -1;
    }
    const auto row = std::size_t(rows[std::size_t(drag.chn)].showIndex);
    const std::int64_t top = drag.wantedY; // doubled below, to compare with middles without fractions
    if (row + 1 < rows.size()) {
        const std::int64_t middle = 2 * std::int64_t(layout.tops[row + 1]) + layout.heights[row + 1];
        if (2 * (top + layout.heights[row]) > middle) {
            return exchange(layout, rows, row).first;
        }
    }
    if (row > 0) {
        const std::int64_t middle = 2 * std::int64_t(layout.tops[row - 1]) + layout.heights[row - 1];
        if (middle > 2 * top) {
            return exchange(layout, rows, row - 1).second;
        }
    }
    return -1;
}

int draggedTop(const ChannelLayout &layout, const RowDrag &drag)
{
    return std::min(std::max(drag.wantedY, layout.aChnHeight), layout.tops.back());
}

bool moveByOne(ChannelLayout &layout, std::span<ChannelRow> rows, int chn, int step)
{
    if (!has(rows, chn) || (step != -1 && step != 1)) {
        return false;
    }
    const int from = rows[std::size_t(chn)].showIndex;
    int to = from + step;
    while (to >= 0 && std::size_t(to) < rows.size() && layout.heights[std::size_t(to)] == 0) {
        to += step;
    }
    if (to < 0 || std::size_t(to) >= rows.size()) {
        return false;
    }
    for (int row = from; row != to; row += step) {
        exchange(layout, rows, std::size_t(std::min(row, row + step)));
    }
    return true;
}
