#include "store/PhysicalMemory.h"

#include <unistd.h>

std::int64_t physicalMemoryBytes()
{
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageSize = sysconf(_SC_PAGESIZE);
    if (pages < 1 || pageSize < 1) {
        return 0;
    }
    return std::int64_t(pages) * std::int64_t(pageSize);
}
