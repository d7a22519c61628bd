#pragma once

#include <cstdint>

/// The physical memory of this machine in bytes; 0 when the system does not tell. Any thread. One implementation for
/// each system, in a file of its own.
[[nodiscard]] std::int64_t physicalMemoryBytes();
