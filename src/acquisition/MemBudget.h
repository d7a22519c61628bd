#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

/// What capture may still allocate, in bytes, for the whole process.
///
/// Every block of a capture and every receive buffer is charged when it is taken and credited when it is freed. The
/// value may go below zero by one allocation. Any thread; relaxed order suffices, since the count guards no data.
extern std::atomic<std::int64_t> memBudget;

/// The first value of `memBudget`. Written once at start.
extern std::int64_t memBudgetStart;

/// Sets both to 70 % of the physical memory, or to 1 TiB if the system does not tell that.
void memBudgetInit();

/// A receive buffer of `size` bytes from the heap, charged to the budget; null when the budget is spent (below 1) or
/// the heap refuses. `size` is not tested against what remains. Free it with freeChunk().
[[nodiscard]] std::uint8_t *allocChunk(std::size_t size);

/// Frees a buffer of allocChunk() and credits `size`, which must be the size it was taken with.
void freeChunk(std::uint8_t *chunk, std::size_t size);
