#pragma once

#include "AnalyzerTypes.h"
#include "SimulationChannelDescriptor.h"

#include <cstdint>

namespace lux {

class Simulation;

/// A line that a simulation drives. Belongs to the simulation.
class LUX_ANALYZER_API SimulationLine {
public:
    /// The level from now on. Two changes without time between them are none.
    void set(bool high);
    void toggle() { set(!level()); }
    [[nodiscard]] bool level() const;

private:
    friend class Simulation;
    SimulationLine() = default;
    Simulation *m_simulation = nullptr;
    std::uint32_t m_index = 0;
};

/// The signal of a simulated capture, written in the order of time: set levels, let time pass, set levels.
///
/// Positions are 64 bits. Times are exact fractions of a second: what does not fill a sample is carried on, so that
/// bits never drift. On the simulation's thread.
class LUX_ANALYZER_API Simulation {
public:
    static constexpr std::uint32_t mostLines = 64;

    explicit Simulation(std::int64_t sampleRate);
    Simulation(const Simulation &) = delete;
    Simulation &operator=(const Simulation &) = delete;
    ~Simulation();

    /// The line on a channel, which begins with this level; the same line for the same channel. The undefined channel
    /// has a line of its own that nobody sees. A reference stays good.
    SimulationLine &line(const Channel &channel, bool idleLevel);
    [[nodiscard]] std::int64_t sampleRate() const; ///< Hz
    [[nodiscard]] std::int64_t position() const;   ///< now, in whole samples
    /// Lets whole samples pass; a count below 0 is none.
    void hold(std::int64_t samples);
    /// Lets `count` / `perSecond` seconds pass: holdTime(1, baudrate) is a bit. `perSecond` 1 to 2^40, count 0 to 2^40.
    void holdTime(std::int64_t count, std::int64_t perSecond);
    /// Lets time pass up to this sample; none when it is over.
    void holdUntil(std::int64_t sample);
    /// A number from 0 to `below` - 1, the same sequence in each simulation.
    [[nodiscard]] std::uint32_t random(std::uint32_t below);

    // ---- for the runtime -------------------------------------------------------------------------------------------

    /// The decoder is asked for an element. One that does not come to its end with 2^24 operations is left by
    /// unwinding, as a decode is.
    void beginElement();
    /// Cuts all lines at `newestSample` and hands them out; what lies beyond waits for the next block.
    std::uint32_t takeBlock(std::int64_t newestSample, SimulationChannelDescriptor **channels);

    struct Private;

private:
    friend class SimulationLine;
    Private *m_private;
};

} // namespace lux
