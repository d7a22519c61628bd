#pragma once

#include "AnalyzerExport.h"

#include <atomic>
#include <cstdint>

namespace lux::detail {

/// What readers and results share with the analyzer whose run they belong to. Part of the binary interface: readers are
/// compiled into the decoders.
struct RunControl {
    /// Not 0 when the decode is to be left at its next read.
    std::atomic<std::uint32_t> leave{0};
    std::uint32_t reserved = 0;
};
static_assert(sizeof(RunControl) == 8);

/// Leaves the decode by unwinding, for the reason in `control`, or because the data is at its end.
[[noreturn]] LUX_ANALYZER_API void leaveDecode(RunControl &control);
/// A reader has passed on to another leaf: reports progress, and leaves the decode when that was asked.
LUX_ANALYZER_API void passedOn(RunControl &control, std::int64_t position);

} // namespace lux::detail
