#pragma once

#include "files/CaptureFiller.h"

#include <cstdint>

/// Turns times, told in ticks of a decimal part of a second, into samples, and finds the sample rate that holds all of
/// them exactly.
///
/// Private to this folder; one thread at a time. There are three ways:
/// - A rate is told beforehand: each time must be the nearest tick to a sample of it.
/// - The rate is that of the ticks as long as rate and positions fit into 40 bits.
/// - From there on, or where asked for from the start, it is the least rate that is a whole number of Hz and has a
///   sample at each time so far. The positions that are already stored follow when it must rise, which each time at
///   least doubles it.
class TimeGrid {
public:
    /// Answers of place() that are no positions.
    static constexpr std::int64_t tooLong = -1;   ///< the position has no room in 40 bits
    static constexpr std::int64_t tooFine = -2;   ///< the rate has no room in 40 bits
    static constexpr std::int64_t notOfRate = -3; ///< a rate was told, and this is no time of it

    /// @param ticksPerSecond  a power of ten, up to 10^15
    /// @param rate            Hz, if it is known; 0 if not
    /// @param least           take the least rate from the start
    TimeGrid(CaptureFiller &filler, std::int64_t ticksPerSecond, std::int64_t rate, bool least);

    /// The sample of a time. Times come in any order; what is stored must have come from here.
    [[nodiscard]] std::int64_t place(std::int64_t ticks)
    {
        if (m_told > 0) {
            return placeAtRate(ticks);
        }
        return m_unit == 1 && ticks <= CaptureFiller::positionMax ? ticks : placeOnUnit(ticks);
    }
    /// Hz, of the positions handed out last.
    [[nodiscard]] std::int64_t rate() const { return m_told > 0 ? m_told : m_ticksPerSecond / m_unit; }

private:
    [[nodiscard]] std::int64_t placeAtRate(std::int64_t ticks) const;
    [[nodiscard]] std::int64_t placeOnUnit(std::int64_t ticks);
    [[nodiscard]] bool takeUnit(std::int64_t unit);

    CaptureFiller &m_filler;
    const std::int64_t m_ticksPerSecond;
    const std::int64_t m_told; ///< Hz, or 0
    const double m_perTick;    ///< samples of the told rate
    std::int64_t m_unit;       ///< ticks a sample; 1 as long as the rate is that of the ticks
    bool m_isLeast;            ///< the unit divides all times so far
};
