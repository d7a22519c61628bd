#include "store/SystemPages.h"

#include <new>

namespace {
constexpr std::align_val_t alignment{64};
} // namespace

void *systemPages::take(std::size_t size)
{
    return ::operator new(size, alignment, std::nothrow);
}

void systemPages::give(void *pages, std::size_t)
{
    ::operator delete(pages, alignment);
}
