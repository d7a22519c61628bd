#include "MemoryBudget.h"

#include "corvanlux/analyzer/Analyzer.h"

namespace {

std::atomic<std::atomic<std::int64_t> *> s_account{nullptr};

} // namespace

void SetAnalyzerMemoryBudget(std::atomic<std::int64_t> *bytesLeft)
{
    s_account.store(bytesLeft, std::memory_order_release);
}

namespace lux::detail {

MemoryBudget::MemoryBudget() : m_left(s_account.load(std::memory_order_acquire)) {}

} // namespace lux::detail
