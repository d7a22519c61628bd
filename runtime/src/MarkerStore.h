#pragma once

#include "BlockList.h"
#include "corvanlux/analyzer/AnalyzerTypes.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace lux::detail {

/// The markers of one channel in the order of their samples. One thread adds, any may read what is published.
///
/// Groups of 64 have the sample of the first one in a head, and a word of 32 bits each: how far behind it, and the
/// type. A group that is too wide for that has words of 64 bits in a list beside; its head then tells where. So a
/// marker takes some 4 bytes, 12 where they are rare: decoders mark each bit, and new memory is what that costs.
class MarkerStore {
public:
    explicit MarkerStore(const MemoryBudget &budget) : m_words(budget), m_heads(budget), m_wide(budget)
    {
        m_held.resize(mostHeld);
    }

    // ---- the worker ------------------------------------------------------------------------------------------------

    /// Holds markers back until publish().
    /// @param samples   each 0 to 2^40 - 1; none before the one in front of it
    /// @return false when memory is spent
    [[nodiscard]] bool addRising(const std::int64_t *samples, std::size_t count, MarkerType type)
    {
        while (count > 0) {
            const std::size_t part = std::min(count, mostHeld - m_heldCount);
            std::uint64_t *held = m_held.data() + m_heldCount;
            for (std::size_t i = 0; i < part; ++i)
                held[i] = std::uint64_t(samples[i]) << typeBits | (std::uint64_t(type) & typeMask);
            m_isSorted = m_isSorted && std::uint64_t(samples[0]) >= m_last;
            m_last = std::uint64_t(samples[part - 1]);
            m_heldCount += part;
            samples += part;
            count -= part;
            if (m_heldCount == mostHeld && !publish())
                return false;
        }
        return true;
    }
    [[nodiscard]] bool add(std::int64_t sample, MarkerType type) { return addRising(&sample, 1, type); }
    /// Sorts what is held back, and lets readers see it. @return false when memory is spent; the rest is lost then
    [[nodiscard]] bool publish()
    {
        if (!m_isSorted)
            putInOrder();
        bool isDone = true;
        for (std::size_t from = 0; from < m_heldCount && isDone;) {
            const std::size_t room = groupSize - std::size_t(m_words.size() & (groupSize - 1));
            const std::size_t count = std::min(room, m_heldCount - from);
            isDone = addToGroup(m_held.data() + from, count);
            from += count;
        }
        if (m_heldCount > 0)
            m_last = m_newest = m_held[m_heldCount - 1] >> typeBits;
        m_heldCount = 0;
        m_isSorted = true;
        m_count.store(m_stored, std::memory_order_release);
        return isDone;
    }
    /// Markers that had to be moved up to the last published one.
    [[nodiscard]] std::uint64_t disordered() const { return m_disordered; }

    // ---- any thread ------------------------------------------------------------------------------------------------

    [[nodiscard]] std::uint64_t count() const { return m_count.load(std::memory_order_acquire); }
    /// @param index  below count()
    [[nodiscard]] Marker at(std::uint64_t index) const
    {
        const std::uint64_t word = wordAt(index);
        return {word >> typeBits, MarkerType(word & typeMask)};
    }
    /// The number of the first `all` markers that stand before `sample`.
    [[nodiscard]] std::uint64_t countBefore(std::uint64_t sample, std::uint64_t all) const
    {
        // Among the heads first: they lie close together.
        std::uint64_t low = 0;
        std::uint64_t high = (all + groupSize - 1) / groupSize;
        while (low < high) {
            const std::uint64_t middle = low + (high - low) / 2;
            if (wordAt(middle * groupSize) >> typeBits < sample)
                low = middle + 1;
            else
                high = middle;
        }
        high = std::min(low * groupSize, all);
        low = low == 0 ? 0 : (low - 1) * groupSize;
        while (low < high) {
            const std::uint64_t middle = low + (high - low) / 2;
            if (wordAt(middle) >> typeBits < sample)
                low = middle + 1;
            else
                high = middle;
        }
        return low;
    }

private:
    static constexpr unsigned typeBits = 8; ///< of a word of 64 bits; the sample is above
    static constexpr std::uint64_t typeMask = (1U << typeBits) - 1;
    static constexpr unsigned shortTypeBits = 5; ///< of a word of 32 bits; the distance is above
    static constexpr std::uint64_t shortTypeMask = (1U << shortTypeBits) - 1;
    static constexpr std::uint64_t farthest = (std::uint64_t(1) << (32 - shortTypeBits)) - 1;
    static constexpr std::size_t groupSize = 64;
    static constexpr std::uint64_t isWide = std::uint64_t(1) << 63; ///< in a head
    static constexpr std::size_t mostHeld = 4096; ///< so that a decoder without frames shows its markers too

    /// A group turns wide while readers may look at its first markers.
    [[nodiscard]] std::uint64_t head(std::uint64_t group) const
    {
        auto &word = const_cast<std::uint64_t &>(m_heads[group]);
        return std::atomic_ref(word).load(std::memory_order_acquire);
    }
    [[nodiscard]] std::uint64_t wordAt(std::uint64_t index) const
    {
        const std::uint64_t top = head(index / groupSize);
        if ((top & isWide) != 0) [[unlikely]]
            return m_wide[(top & ~isWide) * groupSize + index % groupSize];
        const std::uint64_t word = m_words[index];
        return (top + (word >> shortTypeBits)) << typeBits | (word & shortTypeMask);
    }
    /// Small disorder is put right; what would come before published markers is moved up to the last of them.
    void putInOrder()
    {
        const std::span held(m_held.data(), m_heldCount);
        for (std::uint64_t &word : held) {
            if (word >> typeBits < m_newest) {
                word = m_newest << typeBits | (word & typeMask);
                ++m_disordered;
            }
        }
        std::stable_sort(held.begin(), held.end(),
                         [](std::uint64_t a, std::uint64_t b) { return a >> typeBits < b >> typeBits; });
    }
    /// Stores words that have room in the last group.
    [[nodiscard]] bool addToGroup(const std::uint64_t *words, std::size_t count)
    {
        const std::uint64_t first = m_stored;
        if (first % groupSize == 0 && !m_heads.append(words[0] >> typeBits))
            return false;
        std::uint32_t *out = m_words.extend(count);
        if (out == nullptr)
            return false;
        const std::uint64_t top = m_heads[first / groupSize];
        std::uint64_t types = 0;
        for (std::size_t i = 0; i < count; ++i) {
            types |= words[i];
            out[i] = std::uint32_t(((words[i] >> typeBits) - top) << shortTypeBits | (words[i] & shortTypeMask));
        }
        const bool fits = (top & isWide) == 0 && (words[count - 1] >> typeBits) - top <= farthest &&
                          (types & typeMask) <= shortTypeMask;
        if (!fits && !addWide(first, words, count)) [[unlikely]]
            return false;
        m_stored += count;
        return true;
    }
    [[nodiscard]] bool addWide(std::uint64_t first, const std::uint64_t *words, std::size_t count)
    {
        const std::uint64_t group = first / groupSize;
        std::uint64_t top = m_heads[group];
        if ((top & isWide) == 0) {
            const std::uint64_t place = m_wide.size() / groupSize;
            std::uint64_t *wide = m_wide.extend(groupSize);
            if (wide == nullptr)
                return false;
            for (std::uint64_t i = 0; i < first % groupSize; ++i)
                wide[i] = wordAt(group * groupSize + i);
            top = place | isWide;
            std::atomic_ref(m_heads[group]).store(top, std::memory_order_release);
        }
        std::copy_n(words, count, &m_wide[(top & ~isWide) * groupSize + first % groupSize]);
        return true;
    }

    BlockList<std::uint32_t, 12> m_words; ///< all markers, those of wide groups to no use
    BlockList<std::uint64_t, 8> m_heads;  ///< the sample of a group's first marker, or isWide and a place in m_wide
    BlockList<std::uint64_t, 10> m_wide;  ///< sample and type, 64 a group
    std::vector<std::uint64_t> m_held;    ///< sample and type, not published yet; room for mostHeld
    std::size_t m_heldCount = 0;
    bool m_isSorted = true;     ///< what is held
    std::uint64_t m_last = 0;   ///< the sample of the last one that was added
    std::uint64_t m_newest = 0; ///< that of the last published one
    std::uint64_t m_stored = 0; ///< the writer's own m_count
    std::uint64_t m_disordered = 0;
    std::atomic<std::uint64_t> m_count{0};
};

} // namespace lux::detail
