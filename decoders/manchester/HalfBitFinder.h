#pragma once

#include <corvanlux/analyzer/ChannelReader.h>
#include <cstdint>
#include <vector>

/// Finds the bit time of a line on which edges are half a bit or a whole one apart, from some thousand edges.
class HalfBitFinder {
public:
    explicit HalfBitFinder(const lux::ChannelReader &line);

    /// Samples of half a bit; 0 when there is none to be found. Where all edges are equally far apart, they are taken
    /// for half bits.
    [[nodiscard]] double find() const;
    /// Whether a third of the pulses at least may be half a bit or a whole one of this length.
    [[nodiscard]] bool fits(double half) const;
    /// Half a bit of this length as the line has it, where a pulse of one and a half of these is half a bit of a slow
    /// sender, or a whole one of a fast sender.
    [[nodiscard]] double withTies(double half) const;

private:
    struct Found {
        double half = 0;  ///< 0 for none
        double share = 0; ///< of pulses that it must fit better
    };
    void tryHalf(double near, Found &found) const;
    [[nodiscard]] double shareOf(double half) const;
    [[nodiscard]] double refined(double half) const;

    std::vector<lux::Sample> m_widths; ///< in rising order
    double m_shortest = 0;             ///< the mean of either level's short pulses
};
