#include "store/PhysicalMemory.h"

std::int64_t physicalMemoryBytes()
{
    return 0;
}
