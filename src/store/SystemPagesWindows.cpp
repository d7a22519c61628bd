#include "store/SystemPages.h"

#include <windows.h>

void *systemPages::take(std::size_t size)
{
    return VirtualAlloc(nullptr, size, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
}

void systemPages::give(void *pages, std::size_t)
{
    VirtualFree(pages, 0, MEM_RELEASE);
}
