#pragma once

#include "LogicSignal.h"

#include <memory>

namespace emulator {

/// The sampling clock: a signal as an instrument sees it, at `clock` / `divider` samples a second.
///
/// Sample i is the signal at its position floor(i * signal rate / sample rate); with equal rates that is i.
class Sampler {
public:
    Sampler() = default;
    /// @param signal   null reads as all low
    /// @param clock    Hz; `divider` 0 counts as 1
    /// @param direct   take sample i from position i, whatever the rates
    Sampler(std::shared_ptr<LogicSignal> signal, std::int64_t clock, std::uint32_t divider, bool direct);

    /// The levels of the channels in `mask` at sample `i`, and how many samples they last at least.
    [[nodiscard]] SignalRun at(std::int64_t i, std::uint32_t mask) const;
    [[nodiscard]] std::int8_t analogAt(int channel, std::int64_t i) const;
    /// Samples that are due after `nanoseconds`.
    [[nodiscard]] std::int64_t samplesIn(double nanoseconds) const;

private:
    [[nodiscard]] std::int64_t positionOf(std::int64_t i) const;
    [[nodiscard]] std::int64_t firstSampleAt(std::int64_t position) const;

    std::shared_ptr<LogicSignal> m_signal;
    std::int64_t m_num = 1; ///< signal positions ...
    std::int64_t m_den = 1; ///< ... in so many samples
    double m_samplesPerNanosecond = 0;
    double m_secondsPerSample = 0;
};

} // namespace emulator
