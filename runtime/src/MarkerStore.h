#pragma once

#include "BlockList.h"
#include "corvanlux/analyzer/AnalyzerTypes.h"

#include <atomic>
#include <cstdint>

namespace lux::detail {

/// The markers of one channel in the order of their samples, 8 bytes each. One thread adds, any may read what is
/// published.
class MarkerStore {
public:
    explicit MarkerStore(const MemoryBudget &budget) : m_markers(budget) {}

    /// @param sample    0 to 2^40 - 1
    /// @param disorder  set when it had to be moved up to the last published marker
    /// @return false when memory is spent
    [[nodiscard]] bool add(std::int64_t sample, MarkerType type, bool &disorder)
    {
        std::uint64_t word = std::uint64_t(sample) << typeBits | (std::uint64_t(type) & typeMask);
        if (m_published > 0 && word >> typeBits < m_markers[m_published - 1] >> typeBits) {
            disorder = true;
            word = (m_markers[m_published - 1] & ~typeMask) | (word & typeMask);
        }
        if (!m_markers.append(word))
            return false;
        for (std::uint64_t i = m_markers.size() - 1; i > m_published; --i) {
            if (m_markers[i - 1] >> typeBits <= word >> typeBits)
                break;
            m_markers[i] = m_markers[i - 1];
            m_markers[i - 1] = word;
        }
        if (m_markers.size() - m_published >= mostHeld)
            publish();
        return true;
    }
    void publish()
    {
        m_published = m_markers.size();
        m_count.store(m_published, std::memory_order_release);
    }

    [[nodiscard]] std::uint64_t count() const { return m_count.load(std::memory_order_acquire); }
    /// @param index  below count()
    [[nodiscard]] Marker at(std::uint64_t index) const
    {
        const std::uint64_t word = m_markers[index];
        return {word >> typeBits, MarkerType(word & typeMask)};
    }
    /// The number of the first `all` markers that stand before `sample`.
    [[nodiscard]] std::uint64_t countBefore(std::uint64_t sample, std::uint64_t all) const
    {
        std::uint64_t low = 0;
        while (low < all) {
            const std::uint64_t middle = low + (all - low) / 2;
            if (m_markers[middle] >> typeBits < sample)
                low = middle + 1;
            else
                all = middle;
        }
        return low;
    }

private:
    static constexpr unsigned typeBits = 8;
    static constexpr std::uint64_t typeMask = (1U << typeBits) - 1;
    static constexpr std::uint64_t mostHeld = 4096; ///< so that a decoder without frames shows its markers too

    BlockList<std::uint64_t, 10> m_markers;
    std::uint64_t m_published = 0; ///< the writer's own m_count
    std::atomic<std::uint64_t> m_count{0};
};

} // namespace lux::detail
