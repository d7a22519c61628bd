#pragma once

#include <algorithm>
#include <array>
#include <corvanlux/analyzer/ChannelReader.h>
#include <cstddef>
#include <cstdint>
#include <string>

namespace lux {

/// What a user is told of a capture with too few samples for a bit.
/// @param bitRate  bits per second @param samplesPerBit  the least that is decoded
[[nodiscard]] inline std::string tooFewSamples(std::int64_t bitRate, std::int64_t samplesPerBit)
{
    return "The sample rate is too low: " + std::to_string(bitRate) + " bits/s need at least " +
           std::to_string(samplesPerBit * bitRate) + " Hz";
}

/// The bits of an asynchronous element as samples from its first edge.
///
/// Each position is an exact fraction of its own, rounded once, so that nothing adds up however long the element is. An
/// edge that is seen at sample p happened between p - 1 and p, half a sample earlier on the average: so a middle is
/// rounded down and an end to the nearest.
class BitGrid {
public:
    /// The longest element in bits.
    static constexpr unsigned mostBits = 32;
    /// Positions are told in quarters of a bit.
    static constexpr unsigned quarters = 4;

    /// @param sampleRate  Hz @param bitRate  bits per second, at least 1
    BitGrid(std::int64_t sampleRate, std::int64_t bitRate)
        : m_sampleRate(sampleRate),
          m_bitRate(bitRate),
          m_bitsPerSample(std::uint64_t(std::min(double(bitRate) / double(sampleRate), mostBitsPerSample) *
                                        double(std::uint64_t(1) << fractionBits)))
    {
        const std::int64_t divisor = bitRate * quarters;
        for (std::size_t i = 0; i < m_at.size(); ++i) {
            m_at[i] = std::int64_t(i) * sampleRate / divisor;
        }
    }

    /// The sample in the middle of a bit; bit 0 is the one that begins with the edge.
    [[nodiscard]] Sample middleOf(unsigned bit) const { return m_at[bit * quarters + quarters / 2]; }
    /// The sample at so many quarters of a bit behind the edge.
    [[nodiscard]] Sample atQuarter(unsigned quarter) const { return m_at[quarter]; }
    /// The first sample behind so many quarters of a bit.
    [[nodiscard]] Sample endOfQuarters(std::int64_t count) const
    {
        const std::int64_t divisor = m_bitRate * quarters;
        return (2 * count * m_sampleRate + divisor) / (2 * divisor);
    }
    /// The first sample behind so many bits.
    [[nodiscard]] Sample endOf(std::int64_t bits) const { return endOfQuarters(bits * quarters); }
    /// The bit at so many samples behind the edge. Exact but for the samples next to its ends; fast.
    [[nodiscard]] unsigned bitAt(Sample offset) const
    {
        return unsigned(std::uint64_t(offset) * m_bitsPerSample >> fractionBits);
    }
    /// So many bits, a part of one counted as a whole.
    [[nodiscard]] std::int64_t bitsIn(Sample samples) const
    {
        return (samples * m_bitRate + m_sampleRate - 1) / m_sampleRate;
    }
    /// A bit has fewer samples than this number.
    [[nodiscard]] bool isCoarserThan(std::int64_t samplesPerBit) const
    {
        return m_sampleRate < samplesPerBit * m_bitRate;
    }
    [[nodiscard]] std::int64_t bitRate() const { return m_bitRate; }

private:
    static constexpr unsigned fractionBits = 48;
    static constexpr double mostBitsPerSample = 65535; ///< nobody can read them; it only has to fit above the fraction

    std::int64_t m_sampleRate;
    std::int64_t m_bitRate;
    std::uint64_t m_bitsPerSample;
    std::array<Sample, mostBits * quarters + 1> m_at{};
};

} // namespace lux
