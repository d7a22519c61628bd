#pragma once

#include "AnalogWave.h"

#include <string>
#include <string_view>

namespace emulator {

/// What lies on an analog input, told in one word:
///
///     chN=KIND[,KEY=VALUE...]
///
/// with N from 1. The kinds are flat, sine, square, ramp, noise and wav; the keys frequency (Hz), vpp, offset and noise
/// (volts; vpp and noise from peak to peak), each where it has a meaning, and file, which comes last in its word and
/// may hold commas. Numbers are decimal. docs/emulator.md tells it to the user.
struct AnalogWord {
    int channel = 0; ///< from 0
    AnalogWave::Settings settings;
    std::string file;    ///< a WAVE file, whose -1 to 1 are `settings.peakToPeak` volts; empty for a generated wave
    std::string problem; ///< why the word is refused; empty for a good one

    /// True if the word begins as these do, good or not.
    [[nodiscard]] static bool isOne(std::string_view word);
    [[nodiscard]] static AnalogWord parse(std::string_view word);
};

} // namespace emulator
