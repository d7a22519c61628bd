#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

namespace emulator {

/// A position behind all samples: "never".
constexpr std::int64_t never = std::numeric_limits<std::int64_t>::max();

/// Digital channels of the widest instrument: what a word of levels holds.
constexpr std::size_t maxChannels = 32;

/// A stretch in which no channel changes.
struct SignalRun {
    std::uint32_t levels = 0; ///< bit i for channel i; 0 for a channel that was not asked for
    std::int64_t end = never; ///< first position with other levels, or an earlier one; above the position asked for
};

/// When a sample is taken.
struct SampleMoment {
    std::int64_t index = 0;    ///< of the sample, from the capture's start
    std::int64_t position = 0; ///< where a signal stands then, in samples of its own rate
    double seconds = 0;        ///< since the capture's start
};

/// What lies on the inputs of an instrument: levels by position, in samples of the signal's own rate from 0.
///
/// Defined at every position from 0 on; a signal of limited length holds its last levels. Reading forward is cheap;
/// reading backward may start anew. Not thread-safe: an instrument has its own.
class LogicSignal {
public:
    virtual ~LogicSignal() = default;
    LogicSignal() = default;
    LogicSignal(const LogicSignal &) = delete;
    LogicSignal &operator=(const LogicSignal &) = delete;

    /// Samples a second of the positions.
    [[nodiscard]] virtual std::int64_t rate() const = 0;
    /// The levels of the channels in `mask` at `position`, and how long they last at least.
    [[nodiscard]] virtual SignalRun at(std::int64_t position, std::uint32_t mask) = 0;
    /// The byte that an analog channel's converter gives: -128 to 127 over the full scale. Flat by default.
    [[nodiscard]] virtual std::int8_t analogAt(int /*channel*/, const SampleMoment & /*moment*/) { return 0; }
};

} // namespace emulator
