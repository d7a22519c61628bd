#include "store/SystemPages.h"

#include <sys/mman.h>

void *systemPages::take(std::size_t size)
{
    void *pages = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED) {
        return nullptr;
    }
    madvise(pages, size, MADV_HUGEPAGE); // a capture is filled through: fewer and larger pages; no matter when refused
    return pages;
}

void systemPages::give(void *pages, std::size_t size)
{
    munmap(pages, size);
}
