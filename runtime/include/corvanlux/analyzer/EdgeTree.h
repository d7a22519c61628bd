#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

// The tree of one digital channel: the positions at which its level changes, in three levels of blocks.
//
// The program writes it and the decoder runtime reads it in place: the layout of these three records is part of the
// binary interface and must not change. Positions are sample indices from 0, 40 bits wide, in strictly increasing
// order; the last entry of a closed channel is the end mark at the capture's length. `midLast`, `leafLast` and
// `startLevel` exist only once the capture is closed. Every leaf but the last is full.

struct SmpEdgeLeaf {
    static constexpr int capacity = 20480; ///< even, so that a level follows from the index within the leaf alone
    std::uint32_t posLow[capacity];        ///< low 32 bits of each position
    std::uint8_t posHigh[capacity];        ///< high 8 bits
    std::int32_t count;

    [[nodiscard]] std::int64_t position(int index) const
    {
        return std::int64_t(posHigh[index]) << 32 | std::int64_t(posLow[index]);
    }
    void setPosition(int index, std::int64_t pos)
    {
        posLow[index] = std::uint32_t(pos);
        posHigh[index] = std::uint8_t(pos >> 32);
    }
};

struct SmpEdgeMid {
    static constexpr int capacity = 5120;
    SmpEdgeLeaf *leaves[capacity];
    std::int64_t leafLast[capacity]; ///< position of the last entry of each leaf
    std::int32_t leafCount;
};

struct SmpEdgeRoot {
    static constexpr int capacity = 1024;
    SmpEdgeMid *mids[capacity];
    std::int64_t midLast[capacity]; ///< position of the last entry of each mid
    std::int32_t midCount;
    std::int32_t startLevel; ///< 0 or 1
};

static_assert(sizeof(void *) == 8, "the edge trees are read in place by 64-bit programs only");
static_assert(std::is_standard_layout_v<SmpEdgeLeaf> && std::is_trivially_copyable_v<SmpEdgeLeaf>);
static_assert(offsetof(SmpEdgeLeaf, posLow) == 0);
static_assert(offsetof(SmpEdgeLeaf, posHigh) == 81920);
static_assert(offsetof(SmpEdgeLeaf, count) == 102400);
static_assert(sizeof(SmpEdgeLeaf) == 102404);
static_assert(std::is_standard_layout_v<SmpEdgeMid> && std::is_trivially_copyable_v<SmpEdgeMid>);
static_assert(offsetof(SmpEdgeMid, leaves) == 0);
static_assert(offsetof(SmpEdgeMid, leafLast) == 40960);
static_assert(offsetof(SmpEdgeMid, leafCount) == 81920);
static_assert(sizeof(SmpEdgeMid) == 81928);
static_assert(std::is_standard_layout_v<SmpEdgeRoot> && std::is_trivially_copyable_v<SmpEdgeRoot>);
static_assert(offsetof(SmpEdgeRoot, mids) == 0);
static_assert(offsetof(SmpEdgeRoot, midLast) == 8192);
static_assert(offsetof(SmpEdgeRoot, midCount) == 16384);
static_assert(offsetof(SmpEdgeRoot, startLevel) == 16388);
static_assert(sizeof(SmpEdgeRoot) == 16392);
