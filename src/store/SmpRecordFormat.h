#pragma once

#include <cstddef>
#include <cstdint>

/// What a device's memory holds.
enum class SmpRecordFormat {
    Rle16,   ///< groups of 16 bytes, five run-length records
    Rle32,   ///< groups of 32 bytes, six run-length records
    Mixed16, ///< the whole memory: one sample of 4 bytes after another, analog and digital
};
