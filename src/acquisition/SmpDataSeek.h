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

/// The same as firstAbove(), for an answer that is often near `low`: the steps double until one is too far. On a dense
/// channel the searches of a line then stay within the few cache lines between two columns.
template<class Above>
[[nodiscard]] int firstAboveNear(int low, int high, const Above &above)
{
    for (int step = 16; high - low > step && !above(low); step *= 2) {
        if (above(low + step)) {
            return firstAbove(low, low + step, above);
        }
        low += step;
    }
    return firstAbove(low, high, above);
}

/// The first entry above `pos` in a leaf, from `hint` on; the last one if there is none before it.
[[nodiscard]] inline int firstEntryAbove(const SmpEdgeLeaf &leaf, int hint, std::int64_t pos)
{
    const int last = leaf.count - 1;
    const std::uint8_t high = leaf.posHigh[hint];
    // Nearly every leaf lies within one range of 32 bits: then the low words tell all.
    if (high == leaf.posHigh[last] && pos >> 32 == high) {
        const auto low = std::uint32_t(pos);
        return firstAboveNear(hint, last, [&](int i) { return low < leaf.posLow[i]; });
    }
    return firstAboveNear(hint, last, [&](int i) { return pos < leaf.position(i); });
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
    const int e = firstEntryAbove(leaf, entryHint, pos);
    cursor = {m, l, e};
    return (root.startLevel + e) & 1;
}

} // namespace smpSeek
