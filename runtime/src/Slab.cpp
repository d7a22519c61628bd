#include "BlockList.h"

#if defined(__linux__)
#include "SlabReturns.h"

#include <cstdint>
#include <sys/mman.h>
#endif

namespace lux::detail {

#if defined(__linux__)

namespace {

char *mapped(std::size_t bytes)
{
    void *at = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (at == MAP_FAILED)
        throw std::bad_alloc();
    return static_cast<char *>(at);
}

std::size_t behindLargePage(const char *at)
{
    return reinterpret_cast<std::uintptr_t>(at) % largePage;
}

/// Whole large pages: the system mostly gives what begins with one, or else more is taken and cut.
char *mappedInLargePages(std::size_t bytes)
{
    char *at = mapped(bytes);
    if (behindLargePage(at) != 0) {
        munmap(at, bytes);
        at = mapped(bytes + largePage);
        const std::size_t before = (largePage - behindLargePage(at)) % largePage;
        if (before > 0)
            munmap(at, before);
        at += before;
        munmap(at + bytes, largePage - before);
    }
#if defined(MADV_HUGEPAGE)
    madvise(at, bytes, MADV_HUGEPAGE); // a wish: without it all works the same
#endif
    return at;
}

} // namespace

void *newSlab(std::size_t bytes)
{
    if (void *spare = SlabReturns::instance().take(bytes); spare != nullptr)
        return spare;
    if (bytes >= largePage)
        return mappedInLargePages(bytes);
    char *at = mapped(bytes);
#if defined(MADV_POPULATE_WRITE)
    madvise(at, bytes, MADV_POPULATE_WRITE); // all pages in one step, or one by one when they are touched
#endif
    return at;
}

void freeSlab(void *slab, std::size_t bytes)
{
    SlabReturns::instance().free(slab, bytes);
}

#else

namespace {

constexpr std::align_val_t alignment{64}; ///< a cache line

} // namespace

void *newSlab(std::size_t bytes)
{
    return ::operator new(bytes, alignment);
}

void freeSlab(void *slab, std::size_t /*bytes*/)
{
    ::operator delete(slab, alignment);
}

#endif

} // namespace lux::detail
