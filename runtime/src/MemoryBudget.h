#pragma once

#include <atomic>
#include <cstdint>

namespace lux::detail {

/// The account that blocks of results are charged to. Any thread.
class MemoryBudget {
public:
    /// The account that SetAnalyzerMemoryBudget() gave last.
    MemoryBudget();

    /// Charges `bytes` unless nothing is left. @return false when refused
    [[nodiscard]] bool take(std::int64_t bytes) const
    {
        if (m_left == nullptr)
            return true;
        if (m_left->load(std::memory_order_relaxed) < 1)
            return false;
        m_left->fetch_sub(bytes, std::memory_order_relaxed);
        return true;
    }
    void giveBack(std::int64_t bytes) const
    {
        if (m_left != nullptr)
            m_left->fetch_add(bytes, std::memory_order_relaxed);
    }

private:
    std::atomic<std::int64_t> *m_left;
};

} // namespace lux::detail
