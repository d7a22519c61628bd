#pragma once

#include "acquisition/SmpData.h"

#include <cstdint>

/// Searching forward in the tree of one closed channel. Private to this folder.
namespace smpSeek {

/// The first index in [low, high] for which `above` holds; `high` is taken to hold, unlooked at. `above` must be
/// false up to some index and true from there on.
template<class Above>
[[nodiscard]] int firstAbove(int low, int high, const Above &above)
{
    if (low >= high || above(low)) {
        return low;
    }
    while (high - low > 1) {
        const int middle = low + (high - low) / 2;
        (above(middle) ? high : low) = middle;
    }
    return high;
}

/// Moves `cursor` to the first entry above `pos`, or to the end mark when `pos` is there, never backwards. The cursor
/// must name an entry. Returns the level at `pos`, or -1, with the cursor unchanged, when `pos` is outside the data.
[[nodiscard]] inline int forward(const SmpEdgeRoot &root, std::int64_t pos, SmpEdgeCursor &cursor)
{
    const int lastMid = root.midCount - 1;
    if (pos < 0 || pos > root.midLast[lastMid]) {
        return -1;
    }
    const int m = firstAbove(cursor.root, lastMid, [&](int i) { return pos < root.midLast[i]; });
    const SmpEdgeMid &mid = *root.mids[m];
    const int leafHint = m == cursor.root ? cursor.mid : 0;
    const int l = firstAbove(leafHint, mid.leafCount - 1, [&](int i) { return pos < mid.leafLast[i]; });
    const SmpEdgeLeaf &leaf = *mid.leaves[l];
    const int entryHint = m == cursor.root && l == leafHint ? cursor.leaf : 0;
    const int e = firstAbove(entryHint, leaf.count - 1, [&](int i) { return pos < leaf.position(i); });
    cursor = {m, l, e};
    return (root.startLevel + e) & 1;
}

} // namespace smpSeek
