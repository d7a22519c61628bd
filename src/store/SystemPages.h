#pragma once

#include <cstddef>

/// Memory straight from the system, whole pages, that goes straight back to it. Any thread. One implementation for each
/// system, in a file of its own.
namespace systemPages {

/// `size` bytes, a multiple of 1 MB, aligned to 64 bytes at least; zero or not. Null when the system refuses. The pages
/// themselves come when they are first touched, where the system can do that.
[[nodiscard]] void *take(std::size_t size);

/// Gives back what take() gave, with the size it was taken with. Cost: that of freeing its pages, some 100 microseconds
/// for a megabyte at worst.
void give(void *pages, std::size_t size);

} // namespace systemPages
