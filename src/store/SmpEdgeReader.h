#pragma once

#include "store/SmpData.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>

namespace smpSeek {
struct Found;
} // namespace smpSeek

/// Reads the entries of one channel of a closed capture from left to right: the next one with the level before it, a
/// jump ahead, or the rest of a leaf at once.
///
/// A plain value of the reader's own, cheap to make and to copy. It points into the trees: whoever uses it holds a
/// SmpReadLock or a SmpLease as long as it lives. It goes forward only. The last entry is the end mark, which is no
/// transition. One thread at a time.
class SmpEdgeReader {
public:
    /// next() where there is no entry any more.
    static constexpr std::int64_t never = std::numeric_limits<std::int64_t>::max();

    /// The entries from one on to the end of its leaf, where they lie. Entry i stands at position(i).
    struct Block {
        std::span<const std::uint32_t> low; ///< low 32 bits of each position
        std::span<const std::uint8_t> high; ///< high 8 bits; as many
        std::int64_t sharedHigh = -1;       ///< the high bits of all of them, shifted up, or -1 where they differ
        std::int64_t last = never;          ///< position of the block's last entry

        [[nodiscard]] int size() const { return int(low.size()); }
        [[nodiscard]] std::int64_t position(int index) const
        {
            const auto i = std::size_t(index);
            return std::int64_t(low[i]) | (sharedHigh >= 0 ? sharedHigh : std::int64_t(high[i]) << 32);
        }
    };

    /// Reads nothing.
    SmpEdgeReader() = default;
    /// Stands at the first entry above `pos` (at the end mark itself for a `pos` there). A channel without data, or a
    /// `pos` outside it, reads as one that is low and has no entry. Cost: that of SmpData::locate().
    SmpEdgeReader(const SmpData &data, int chn, std::int64_t pos = 0);

    /// False when there is nothing to read, nor was at the start.
    [[nodiscard]] bool hasData() const { return m_root != nullptr; }
    /// The position of the next entry; `never` behind the end mark.
    [[nodiscard]] std::int64_t next() const { return m_next; }
    /// The level up to next(): 0 or 1; behind the end mark that of the last sample.
    [[nodiscard]] int level() const { return (m_startLevel + m_index) & 1; }
    /// True when no transition is left: next() is the end mark, or none.
    [[nodiscard]] bool atEnd() const { return m_next >= m_last; }
    /// Names the next entry; behind the end mark that one.
    [[nodiscard]] SmpEdgeCursor cursor() const { return {m_mid, m_leafIndex, m_index}; }

    /// Passes the next entry. @return false when it was the last one. Cost: one or two nanoseconds.
    bool advance()
    {
        if (++m_index < m_count) [[likely]] {
            m_next = position(m_index);
            return true;
        }
        return enterNextLeaf();
    }

    /// Passes all entries at or below `pos`, but for the end mark, whose position is no way to pass it. Never goes
    /// back.
    /// @return false, with nothing passed, for a `pos` outside the data
    /// Cost: logarithmic in the entries passed; next to nothing when next() is above `pos`.
    bool skipTo(std::int64_t pos)
    {
        if (pos < 0 || pos > m_last) {
            return false;
        }
        // Who skips often skips little: one step is tried first.
        if (pos >= m_next && m_index + 1 < m_count) {
            advance();
        }
        if (pos >= m_next) {
            skipForward(pos);
        }
        return true;
    }

    /// The entries from the next one to the end of its leaf, at most 20480, without a copy; none behind the end mark.
    [[nodiscard]] Block block() const;
    /// Passes `count` entries of block(), 1 to its size. @return false when no entry is left
    bool pass(int count)
    {
        m_index += count - 1;
        return advance();
    }

private:
    [[nodiscard]] std::int64_t position(int index) const
    {
        // NOLINTNEXTLINE(clang-analyzer-core.NullDereference): without a leaf there is no index below m_count
        return std::int64_t(m_leaf->posLow[index]) |
               (m_high >= 0 ? m_high : std::int64_t(m_leaf->posHigh[index]) << 32);
    }
    void skipForward(std::int64_t pos);
    void take(const smpSeek::Found &found);
    bool enterNextLeaf();

    const SmpEdgeRoot *m_root = nullptr;
    const SmpEdgeLeaf *m_leaf = nullptr; ///< that of the next entry
    std::int64_t m_next = never;
    std::int64_t m_last = -1;     ///< the end mark's position
    std::int64_t m_leafLast = -1; ///< the position of the leaf's last entry
    std::int64_t m_high = -1;     ///< the high bits of all entries of the leaf, shifted up, or -1 where they differ
    std::int32_t m_index = 0;     ///< of the next entry in its leaf
    std::int32_t m_count = 0;     ///< entries of the leaf
    std::int32_t m_leafIndex = 0;
    std::int32_t m_mid = 0;
    std::int32_t m_startLevel = 0;
};
