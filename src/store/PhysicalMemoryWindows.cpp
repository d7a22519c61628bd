#include "store/PhysicalMemory.h"

#include <windows.h>

std::int64_t physicalMemoryBytes()
{
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof(status);
    if (!GlobalMemoryStatusEx(&status)) {
        return 0;
    }
    return static_cast<std::int64_t>(status.ullTotalPhys);
}
