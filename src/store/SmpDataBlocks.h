#pragma once

#include "store/MemBudget.h"
#include "store/SmpData.h"
#include "store/SmpSlabs.h"

#include <algorithm>
#include <cstdint>

/// What the parts of SmpData share about blocks and cursors. Private to this folder.
namespace smpBlocks {

constexpr std::int64_t maxPosition = (std::int64_t(1) << 40) - 1; ///< what the 40 bits of an entry can hold

/// A charged block, its counts not yet set; null when the system refuses.
template<class Block>
[[nodiscard]] Block *take(SmpSlabs &slabs)
{
    return static_cast<Block *>(slabs.take(sizeof(Block)));
}

/// Gives and credits a block; null is allowed.
template<class Block>
void give(SmpSlabs &slabs, Block *block)
{
    slabs.give(block, sizeof(Block));
}

/// Appends an empty mid. False when the system refuses or the root is full.
[[nodiscard]] inline bool addMid(SmpSlabs &slabs, SmpEdgeRoot &root)
{
    if (root.midCount >= SmpEdgeRoot::capacity) {
        return false;
    }
    auto *mid = take<SmpEdgeMid>(slabs);
    if (mid == nullptr) {
        return false;
    }
    mid->leafCount = 0;
    root.mids[root.midCount] = mid;
    ++root.midCount;
    return true;
}

/// The last leaf of the last mid; null when there is none.
[[nodiscard]] inline SmpEdgeLeaf *lastLeaf(const SmpEdgeRoot &root)
{
    if (root.midCount < 1) {
        return nullptr;
    }
    const SmpEdgeMid &mid = *root.mids[root.midCount - 1];
    return mid.leafCount < 1 ? nullptr : mid.leaves[mid.leafCount - 1];
}

/// Appends to a leaf that has room. A position beyond what 40 bits hold is passed over: finish() would cut it off.
inline void put(SmpEdgeLeaf &leaf, std::int64_t pos)
{
    if (static_cast<std::uint64_t>(pos) > static_cast<std::uint64_t>(maxPosition)) {
        return;
    }
    leaf.setPosition(leaf.count, pos);
    ++leaf.count;
}

[[nodiscard]] inline std::int64_t globalIndex(const SmpEdgeCursor &cursor)
{
    return cursor.root * SmpData::entriesPerMid + std::int64_t(cursor.mid) * SmpEdgeLeaf::capacity + cursor.leaf;
}

/// Entries of a closed channel, which has at least one mid.
[[nodiscard]] inline std::int64_t entries(const SmpEdgeRoot &root)
{
    const SmpEdgeMid &mid = *root.mids[root.midCount - 1];
    const SmpEdgeLeaf *leaf = lastLeaf(root);
    const SmpEdgeCursor end{root.midCount - 1, std::max(mid.leafCount - 1, 0), leaf == nullptr ? 0 : leaf->count};
    return globalIndex(end);
}

} // namespace smpBlocks
