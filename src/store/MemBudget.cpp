#include "store/MemBudget.h"

#include "store/PhysicalMemory.h"

#include <cstdlib>

namespace {
constexpr std::int64_t budgetWhenUnknown = 0x10000000000; // 1 TiB, bytes
constexpr double budgetShare = 0.7;                       // of the physical memory
} // namespace

std::atomic<std::int64_t> memBudget{0};
std::int64_t memBudgetStart = 0;
std::atomic<BlockRefusal> blockRefusal{nullptr};

std::int64_t memBudgetFor(std::int64_t physicalBytes)
{
    if (physicalBytes < 1) {
        return budgetWhenUnknown;
    }
    return static_cast<std::int64_t>(static_cast<double>(physicalBytes) * budgetShare);
}

void memBudgetInit()
{
    memBudgetStart = memBudgetFor(physicalMemoryBytes());
    memBudget.store(memBudgetStart, std::memory_order_relaxed);
}

std::uint8_t *allocChunk(std::size_t size)
{
    if (memBudget.load(std::memory_order_relaxed) < 1) {
        return nullptr;
    }
    return static_cast<std::uint8_t *>(takeBlock(size));
}

void freeChunk(std::uint8_t *chunk, std::size_t size)
{
    giveBlock(chunk, size);
}

bool blockIsRefused(std::size_t size)
{
    const BlockRefusal refuses = blockRefusal.load(std::memory_order_relaxed);
    return refuses != nullptr && refuses(size);
}

void *takeBlock(std::size_t size)
{
    if (blockIsRefused(size)) {
        return nullptr;
    }
    void *block = std::malloc(size == 0 ? 1 : size); // a null answer must mean refusal only
    if (block != nullptr) {
        memBudget.fetch_sub(static_cast<std::int64_t>(size), std::memory_order_relaxed);
    }
    return block;
}

void giveBlock(void *block, std::size_t size)
{
    if (block == nullptr) {
        return;
    }
    std::free(block);
    memBudget.fetch_add(static_cast<std::int64_t>(size), std::memory_order_relaxed);
}
