#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>

/// Counts what this thread takes from the heap. Include it in one source file of an executable only.
inline thread_local std::size_t allocationCount = 0;

void *operator new(std::size_t size)
{
    ++allocationCount;
    if (void *block = std::malloc(size > 0 ? size : 1)) {
        return block;
    }
    throw std::bad_alloc();
}
void operator delete(void *block) noexcept
{
    std::free(block);
}
void operator delete(void *block, std::size_t) noexcept
{
    std::free(block);
}
