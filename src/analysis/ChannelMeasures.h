#pragma once

#include "store/SmpData.h"

#include <cstdint>

/// Whole numbers of samples, in turn: how many, the least, the most, their sum, and how they scatter. Exact: sums do
/// not round. Pure; any thread, as all of this file.
class SampleStatistics {
public:
    /// @param samples  0 to 2^40
    void add(std::int64_t samples);

    std::int64_t count = 0;
    std::int64_t least = 0; ///< 0 without any
    std::int64_t most = 0;  ///< 0 without any
    std::int64_t sum = 0;

    /// 0 without any.
    [[nodiscard]] double mean() const;
    /// The standard deviation of all of them (divided by their number, not by one less); 0 without any.
    [[nodiscard]] double deviation() const;

private:
    std::int64_t m_first = 0;
    std::int64_t m_shifted = 0; ///< sum of the distances from the first
    // The sum of their squares, in three parts that do not overflow: a distance is high * 2^20 + low.
    std::uint64_t m_highHigh = 0;
    std::uint64_t m_highLow = 0;
    std::uint64_t m_lowLow = 0;
};

/// The same for what is a quotient: it rounds, as a double does.
class RatioStatistics {
public:
    void add(double value);

    std::int64_t count = 0;
    double least = 0; ///< 0 without any
    double most = 0;  ///< 0 without any

    [[nodiscard]] double deviation() const;

private:
    double m_mean = 0;
    double m_squares = 0; ///< of the distances from the mean
};

/// What a channel does between two samples. A pulse lies between two edges there; a cycle between two rising ones.
struct ChannelMeasures {
    std::int64_t rising = 0;
    std::int64_t falling = 0;
    SampleStatistics high;     ///< widths of high pulses
    SampleStatistics low;      ///< widths of low pulses
    SampleStatistics period;   ///< of the cycles
    SampleStatistics highPart; ///< high samples of each cycle
    RatioStatistics inverse;   ///< 1 / period of each cycle
    RatioStatistics duty;      ///< share of the high level in each cycle, 0 to 1

    [[nodiscard]] std::int64_t edges() const { return rising + falling; }
};

/// Measures one channel from sample `from` on up to, and without, sample `to`. Under a SmpReadLock or a lease.
/// @return false for a channel without data; a range outside the data is empty
/// Cost: some nanoseconds an edge of the range.
[[nodiscard]] bool measureChannel(const SmpData &capture, int chn, std::int64_t from, std::int64_t to,
                                  ChannelMeasures &measures);
