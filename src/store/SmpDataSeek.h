#pragma once

#include "store/SmpData.h"

#include <algorithm>
#include <cstdint>

/// Searching forward in the tree of one closed channel. Private to this folder.
///
/// A line is drawn by one search a column, each from where the last one ended, so what counts is the number of distant
/// cache lines that a search touches. It therefore takes the bounds of a leaf from the index arrays of the mid, which
/// lie close together, guesses the entry by interpolation between them, and looks around there.
namespace smpSeek {

/// The first index in (low, high] for which `above` holds, when it does not hold at `low` and does at `high`.
template<class Above>
[[nodiscard]] int bisect(int low, int high, const Above &above)
{
    while (high - low > 1) {
        const int middle = low + (high - low) / 2;
        (above(middle) ? high : low) = middle;
    }
    return high;
}

/// The same, looking around `guess` first, in steps that double. `guess` lies between the two.
template<class Above>
[[nodiscard]] int bisectNear(int low, int guess, int high, int step, const Above &above)
{
    if (above(guess)) {
        high = guess;
        for (int probe = guess - step; probe > low; probe -= step) {
            if (!above(probe)) {
                low = probe;
                break;
            }
            high = probe;
            step *= 2;
        }
    } else {
        low = guess;
        for (int probe = guess + step; probe < high; probe += step) {
            if (above(probe)) {
                high = probe;
                break;
            }
            low = probe;
            step *= 2;
        }
    }
    return bisect(low, high, above);
}

/// The first index in [hint, last] for which `above` holds; at `last` it is taken to hold, unlooked at.
template<class Above>
[[nodiscard]] int firstFrom(int hint, int last, const Above &above)
{
    if (hint >= last || above(hint)) {
        return hint;
    }
    return bisectNear(hint, hint, last, 1, above);
}

/// Entries of one leaf that share the high byte of their position: only the low words are read.
struct LowWords {
    const SmpEdgeLeaf &leaf;
    std::int64_t high; ///< the shared part, shifted up

    [[nodiscard]] std::int64_t position(int index) const { return high | std::int64_t(leaf.posLow[index]); }
    /// How many of the `window` entries from `first` on are not above `pos`, which shares the high byte.
    [[nodiscard]] int notAbove(int first, std::int64_t pos) const
    {
        const auto low = std::uint32_t(pos);
        int count = 0;
        for (int i = 0; i < window; ++i) {
            count += leaf.posLow[first + i] <= low ? 1 : 0;
        }
        return count;
    }
    static constexpr int window = 16;
};

/// The first entry of a leaf above `pos`, from `hint` on. `last` is the leaf's last entry, at `lastPos`, at or above
/// `pos`; it is the answer when no other is.
[[nodiscard]] inline int entryAbove(const LowWords &entries, std::int64_t pos, int hint, int last, std::int64_t lastPos)
{
    constexpr int window = LowWords::window;
    const auto above = [&](int index) { return pos < entries.position(index); };
    if (hint >= last || above(hint)) {
        return hint;
    }
    if (last - hint <= window || above(hint + window)) {
        return bisect(hint, std::min(hint + window, last), above);
    }
    const std::int64_t hintPos = entries.position(hint);
    if (lastPos <= hintPos) {
        return bisect(hint, last, above);
    }
    // Two steps of interpolation: the first one lands about a square root of the way off, the second one beside it.
    // What is left are a few entries, counted without a branch that could be guessed wrong.
    const double density = double(last - hint) / double(lastPos - hintPos);
    const auto inside = [&](double index) { return int(std::clamp(index, double(hint), double(last - 1))); };
    int guess = inside(double(hint) + double(pos - hintPos) * density);
    guess = inside(double(guess) + double(pos - entries.position(guess)) * density);
    const int first = std::clamp(guess - window / 2, hint, last - window);
    const int below = entries.notAbove(first, pos);
    if (below == window) {
        return bisectNear(hint, first + window - 1, last, window, above);
    }
    return below == 0 ? bisectNear(hint, first, last, window, above) : first + below;
}

/// The same for a leaf whose entries differ in their high bytes, which is rare.
[[nodiscard]] inline int entryAbove(const SmpEdgeLeaf &leaf, std::int64_t pos, int hint, int last)
{
    return firstFrom(hint, last, [&](int index) { return pos < leaf.position(index); });
}

/// The position of the entry before the first one of a leaf; 0 for a channel's first leaf.
[[nodiscard]] inline std::int64_t positionBefore(const SmpEdgeRoot &root, int mid, int leaf)
{
    return leaf > 0 ? root.mids[mid]->leafLast[leaf - 1] : mid > 0 ? root.midLast[mid - 1] : 0;
}

/// A leaf that exists, with what a search knows of it from the index arrays.
struct Found {
    const SmpEdgeLeaf *leaf = nullptr;
    int count = 0;          ///< its entries
    std::int64_t high = -1; ///< the high bits of all its positions, shifted up, or -1 where they differ
    std::int64_t last = -1; ///< the position of its last entry
};

[[nodiscard]] inline Found leafAt(const SmpEdgeRoot &root, int mid, int leaf)
{
    const SmpEdgeMid &block = *root.mids[mid];
    const SmpEdgeLeaf *found = block.leaves[leaf];
    // All leaves but a channel's last one are full.
    const bool full = mid < root.midCount - 1 || leaf < block.leafCount - 1;
    const std::int64_t last = block.leafLast[leaf];
    const bool shares = positionBefore(root, mid, leaf) >> 32 == last >> 32;
    return {found, full ? SmpEdgeLeaf::capacity : found->count, shares ? last >> 32 << 32 : -1, last};
}

/// Moves `cursor` to the first entry above `pos`, or to the end mark when `pos` is there, never backwards. The cursor
/// must name an entry; `found` tells the leaf of the one found.
/// Returns the level at `pos`, or -1, with cursor and `found` unchanged, when `pos` is outside the data.
[[nodiscard]] inline int forward(const SmpEdgeRoot &root, std::int64_t pos, SmpEdgeCursor &cursor, Found &found)
{
    const int lastMid = root.midCount - 1;
    if (pos < 0 || pos > root.midLast[lastMid]) {
        return -1;
    }
    const int m = firstFrom(cursor.root, lastMid, [&](int i) { return pos < root.midLast[i]; });
    const SmpEdgeMid &mid = *root.mids[m];
    const int leafHint = m == cursor.root ? cursor.mid : 0;
    const int l = firstFrom(leafHint, mid.leafCount - 1, [&](int i) { return pos < mid.leafLast[i]; });
    const int entryHint = m == cursor.root && l == cursor.mid ? cursor.leaf : 0;

    found = leafAt(root, m, l);
    const int last = found.count - 1;
    const int e = found.high >= 0 ? entryAbove({*found.leaf, found.high}, pos, entryHint, last, found.last)
                                  : entryAbove(*found.leaf, pos, entryHint, last);
    cursor = {m, l, e};
    return (root.startLevel + e) & 1;
}

/// Fetches, ahead of the searches of a dense line, the cache lines that they will look at. One for each line.
class Scout {
public:
    /// Fetches for a later search, for `pos`, behind the one that ended at `cursor`. Stays within its mid.
    void lookAhead(const SmpEdgeRoot &root, const SmpEdgeCursor &cursor, double pos)
    {
        const SmpEdgeMid &mid = *root.mids[cursor.root];
        if (m_mid != cursor.root || m_leaf < cursor.mid) {
            m_mid = cursor.root;
            m_leaf = cursor.mid;
        }
        while (m_leaf < mid.leafCount - 1 && double(mid.leafLast[m_leaf]) <= pos) {
            ++m_leaf;
        }
        const auto first = double(positionBefore(root, m_mid, m_leaf));
        const auto last = double(mid.leafLast[m_leaf]);
        if (last <= first) {
            return;
        }
        constexpr int most = SmpEdgeLeaf::capacity - 1 - lineEntries;
        const double share = std::clamp((pos - first) / (last - first), 0.0, 1.0);
        const int guess = std::clamp(int(share * SmpEdgeLeaf::capacity), lineEntries, most);
        const SmpEdgeLeaf &leaf = *mid.leaves[m_leaf];
        for (const int index : {guess, guess - lineEntries, guess + lineEntries}) {
            fetch(&leaf.posLow[index]);
        }
    }

private:
    static constexpr int lineEntries = 16; ///< of a cache line

    static void fetch([[maybe_unused]] const void *address)
    {
#ifdef __GNUC__
        __builtin_prefetch(address);
#endif
    }

    int m_mid = -1;
    int m_leaf = 0;
};

} // namespace smpSeek
