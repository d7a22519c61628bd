#pragma once

#include "AsyncLine.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace lux {

/// Finds the bit rate of a line with start-stop characters from its own edges.
///
/// All pulses within characters are whole bits, so the shortest that is there often is a bit, or a few; which of these
/// it is tells a trial: the rate at which the characters have the fewest errors. Looks at some ten thousand edges at
/// most: some milliseconds, whatever the capture's length.
class BitRateFinder {
public:
    /// Fewer pulses than this tell nothing.
    static constexpr std::size_t leastPulses = 4;

    /// @param format  the characters to try
    BitRateFinder(const ChannelReader &line, std::int64_t sampleRate, const AsyncFormat &format)
        : m_line(line), m_sampleRate(sampleRate), m_format(format)
    {}

    /// @return bits per second, a usual rate where one is near; 0 when there is none to be found
    [[nodiscard]] std::int64_t find() const
    {
        const std::vector<Sample> pulses = pulseWidths();
        if (pulses.size() < leastPulses) {
            return 0;
        }
        std::int64_t best = 0;
        double fewest = 2.0;
        // A tenth of the pulses is a single bit in any text, unless the line has that many glitches.
        for (const std::size_t tenths : {1U, 4U, 7U}) {
            const double shortest = bitWidth(pulses, tenths);
            for (const double parts : {1.0, 2.0, 3.0, 4.0}) {
                const double width = shortest / parts;
                const std::int64_t rate = usualRate(double(m_sampleRate) / width);
                if (width < double(leastSamplesPerBit) || rate < 1) {
                    break;
                }
                const double errors = errorsAt(rate);
                if (errors + clearlyFewer < fewest) {
                    fewest = errors;
                    best = rate;
                }
            }
        }
        return best;
    }

private:
    static constexpr std::size_t mostPulses = 8192;
    static constexpr int mostCharacters = 1000;
    static constexpr std::int64_t leastSamplesPerBit = 3;
    static constexpr double usualWithin = 0.03; ///< a rate so near to a usual one is that one
    static constexpr double clearlyFewer = 0.1; ///< a higher rate must be better by this part of all characters

    /// The widths of the pulses that lead away from idle and back: never a pause between characters.
    [[nodiscard]] std::vector<Sample> pulseWidths() const
    {
        std::vector<Sample> widths;
        widths.reserve(mostPulses);
        ChannelReader line(m_line);
        if (line.level() != m_format.idleHigh && line.hasEdge()) {
            line.nextEdge();
        }
        while (widths.size() < mostPulses && line.edgesLeft() >= 2) {
            const Sample from = line.nextEdge();
            widths.push_back(line.nextEdge() - from);
        }
        return widths;
    }
    /// The width that fits all pulses best, from that of the one behind so many tenths of them on.
    [[nodiscard]] static double bitWidth(const std::vector<Sample> &pulses, std::size_t tenths)
    {
        std::vector<Sample> sorted(pulses);
        std::sort(sorted.begin(), sorted.end());
        double width = double(sorted[sorted.size() * tenths / 10]);
        for (int round = 0; round < 4; ++round) {
            double samples = 0.0;
            double bits = 0.0;
            for (const Sample pulse : sorted) {
                const double count = std::round(double(pulse) / width);
                if (count >= 1.0 && count <= 10.0 && std::abs(double(pulse) - count * width) < width * 0.3) {
                    samples += double(pulse);
                    bits += count;
                }
            }
            if (bits > 0.0) {
                width = samples / bits;
            }
        }
        return width;
    }
    [[nodiscard]] static std::int64_t usualRate(double measured)
    {
        static constexpr std::array<std::int64_t, 42> usual = {
            50,     75,     110,    150,     200,     300,     600,     1200,    1800,   2400,   3600,
            4800,   7200,   9600,   10400,   14400,   19200,   28800,   31250,   38400,  50000,  57600,
            62500,  76800,  100000, 115200,  125000,  153600,  200000,  230400,  250000, 307200, 460800,
            500000, 576000, 921600, 1000000, 1500000, 2000000, 2500000, 3000000, 4000000};
        for (const std::int64_t rate : usual) {
            if (std::abs(measured - double(rate)) < usualWithin * double(rate)) {
                return rate;
            }
        }
        return std::llround(measured);
    }
    /// The part of the characters that are wrong at a rate.
    [[nodiscard]] double errorsAt(std::int64_t rate) const
    {
        AsyncLine line(m_line, BitGrid(m_sampleRate, rate), m_format);
        int characters = 0;
        int wrong = 0;
        while (characters < mostCharacters && line.findStart()) {
            const AsyncCharacter character = line.read();
            ++characters;
            wrong += int(character.parityWrong || character.stopMissing);
        }
        return characters == 0 ? 1.0 : double(wrong) / characters;
    }

    const ChannelReader &m_line;
    std::int64_t m_sampleRate;
    AsyncFormat m_format;
};

} // namespace lux
