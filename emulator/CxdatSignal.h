#pragma once

#include "EdgeSignal.h"

#include <memory>
#include <span>
#include <string>

namespace emulator {

/// A capture as a signal: what a data file (docs/formats.md) holds.
struct CxdatCapture {
    std::shared_ptr<EdgeSignal> signal; ///< null if the file could not be read
    std::int64_t samples = 0;           ///< length; the last levels hold behind it
    std::int64_t triggerAt = 0;
    int channels = 0;    ///< of the model that captured it
    std::string problem; ///< why there is no signal
};

/// Reads the bytes of a data file. Accepts what the format's description accepts, and nothing else.
[[nodiscard]] CxdatCapture parseCxdat(std::span<const std::uint8_t> file);

} // namespace emulator
