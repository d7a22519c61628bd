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
/// Main thread, before any capture or transport exists. Cost: one question to the system.
void memBudgetInit();

/// The budget for a machine with `physicalBytes` of memory; 1 TiB when `physicalBytes` is below 1. Pure.
[[nodiscard]] std::int64_t memBudgetFor(std::int64_t physicalBytes);

/// A receive buffer of `size` bytes from the heap, charged to the budget; null when the budget is spent (below 1) or
/// the heap refuses. `size` is not tested against what remains. Free it with freeChunk(). Any thread.
[[nodiscard]] std::uint8_t *allocChunk(std::size_t size);

/// Frees a buffer of allocChunk() and credits `size`, which must be the size it was taken with. Null is allowed and
/// credits nothing. Any thread.
void freeChunk(std::uint8_t *chunk, std::size_t size);

/// A block of `size` bytes from the heap, charged whatever remains of the budget; not cleared. Null, with nothing
/// charged, when the heap refuses. Any thread.
[[nodiscard]] void *takeBlock(std::size_t size);

/// Frees a block of takeBlock() and credits `size`, which must be the size it was taken with. Null is allowed and
/// credits nothing. Any thread.
void giveBlock(void *block, std::size_t size);

/// Asked before each block of a capture and each allocation of takeBlock() and allocChunk(): true makes that one fail
/// as if the system had refused. Null, the normal state, refuses nothing. For the injection of faults; set it while
/// nothing allocates.
using BlockRefusal = bool (*)(std::size_t size);
extern std::atomic<BlockRefusal> blockRefusal;

/// What `blockRefusal` says; false without one. Any thread.
[[nodiscard]] bool blockIsRefused(std::size_t size);
