#include "BlockList.h"

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace lux::detail {
namespace {

constexpr std::align_val_t alignment{largePage};

} // namespace

void *newSlab(std::size_t bytes)
{
    void *slab = ::operator new(bytes, alignment);
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    madvise(slab, bytes, MADV_HUGEPAGE); // a wish: without it all works the same
#endif
    return slab;
}

void freeSlab(void *slab)
{
    ::operator delete(slab, alignment);
}

} // namespace lux::detail
