#include "wave/ChannelLayout.h"

#include <algorithm>
#include <bit>

namespace {

/// Height units above each row position, and the sum of all as the last entry.
std::vector<int> unitsAbove(std::span<const ChannelRow> rows)
{
    std::vector<int> units(rows.size() + 1, 0);
    for (const ChannelRow &row : rows) {
        units[std::size_t(row.showIndex) + 1] = row.enabled ? row.multiplier : 0;
    }
    for (std::size_t p = 1; p < units.size(); ++p) {
        units[p] += units[p - 1];
    }
    return units;
}

double unitHeight(int areaHeight, int units, UnitBounds bounds)
{
    if (units < 1) {
        return bounds.most; // nothing to share the height: the unit only has to be finite
    }
    return std::clamp(double(areaHeight) / units, double(bounds.least), double(bounds.most));
}

} // namespace

ChannelLayout layoutChannels(std::span<const ChannelRow> rows, int aUnits, int areaHeight, UnitBounds bounds)
{
    const std::vector<int> above = unitsAbove(rows);
    const std::size_t count = rows.size();
    const double unit = unitHeight(areaHeight, above[count] + aUnits, bounds);

    ChannelLayout layout;
    layout.aChnHeight = int(aUnits * unit);
    for (std::size_t p = 0; p < count; ++p) {
        layout.tops.push_back(int(above[p] * unit + layout.aChnHeight));
    }
    if (count == 0) {
        layout.totalHeight = layout.aChnHeight;
        return layout;
    }
    for (std::size_t p = 0; p + 1 < count; ++p) {
        layout.heights.push_back(layout.tops[p + 1] - layout.tops[p]);
    }
    layout.heights.push_back(int((above[count] + aUnits) * unit - layout.tops[count - 1]));
    layout.totalHeight = layout.tops.back() + layout.heights.back();
    return layout;
}

int validMultiplier(int stored)
{
    return stored >= 1 && std::bit_width(unsigned(stored)) <= 4 ? stored : 1;
}

int channelUnderPoint(const ChannelLayout &layout, std::span<const ChannelRow> rows, QPoint point, QSize view,
                      int scroll)
{
    if (point.x() < 0 || point.x() >= view.width() || point.y() < 0 || point.y() >= view.height()) {
        return -1;
    }
    const int y = point.y() + scroll;
    for (std::size_t chn = 0; chn < rows.size(); ++chn) {
        const auto p = std::size_t(rows[chn].showIndex);
        if (y >= layout.tops[p] && y < layout.tops[p] + layout.heights[p]) {
            return int(chn);
        }
    }
    return -1;
}
