#pragma once

#include "LogicSignal.h"

#include <array>
#include <cstddef>
#include <vector>

namespace emulator {

/// A generated signal: each channel constant, a square wave, a repeated pattern of widths, or seeded noise. Any
/// position is reached at once but for a pattern, which is walked.
class WaveSignal : public LogicSignal {
public:
    enum class Kind { Constant, Square, Pattern, Noise };

    /// How one channel moves. All widths are in samples and at least 1.
    struct Wave {
        Kind kind = Kind::Constant;
        bool startLevel = false;
        std::int64_t delay = 0;           ///< samples before the first run begins; the start level holds meanwhile
        std::vector<std::int64_t> widths; ///< Pattern: the runs, again and again. Square: high and low time
        std::int64_t shortest = 1;        ///< Noise: the limits of a run
        std::int64_t longest = 1;
        std::uint32_t seed = 1;

        [[nodiscard]] static Wave constant(bool level);
        /// Runs of `half` samples, the first one at the start level.
        [[nodiscard]] static Wave square(std::int64_t half, bool startLevel = false, std::int64_t delay = 0);
        [[nodiscard]] static Wave pattern(std::vector<std::int64_t> widths, bool startLevel = false);
        [[nodiscard]] static Wave noise(std::uint32_t seed, std::int64_t shortest, std::int64_t longest);
        /// One pulse at the other level, `width` samples long.
        [[nodiscard]] static Wave pulse(std::int64_t position, std::int64_t width, bool level = true);
    };

    /// @param waves  up to 32
    WaveSignal(std::int64_t rate, const std::vector<Wave> &waves);
    /// All channels low, for ever.
    [[nodiscard]] static std::vector<Wave> quiet() { return {}; }
    /// Channel i toggles every `half` * 2^i samples: a counter.
    [[nodiscard]] static std::vector<Wave> counter(int channels, std::int64_t half);

    [[nodiscard]] std::int64_t rate() const override { return m_rate; }
    [[nodiscard]] SignalRun at(std::int64_t position, std::uint32_t mask) override;
    /// Channel 0 a sine, channel 1 a ramp, of 256 samples each.
    [[nodiscard]] std::int8_t analogAt(int channel, const SampleMoment &moment) override;

private:
    /// A channel on its way: the run that holds the position.
    struct Track {
        Wave wave;
        bool level = false;
        std::int64_t begin = 0;
        std::int64_t end = never;
        std::size_t index = 0; ///< Pattern: of the next width
        std::uint32_t random = 1;
        std::int64_t stretchEnd = never; ///< Noise: where it begins anew with another seed
    };

    static void rewind(Track &track);
    static void enterStretch(Track &track, std::int64_t position);
    static void step(Track &track);
    [[nodiscard]] static std::int64_t nextWidth(Track &track);
    static void advance(Track &track, std::int64_t position);

    std::int64_t m_rate;

    std::vector<Track> m_tracks;
    // The present run of each track once more, side by side: most questions end here.
    std::array<std::int64_t, maxChannels> m_begins{};
    std::array<std::int64_t, maxChannels> m_ends{};
    std::uint32_t m_levels = 0;
    std::uint32_t m_present = 0; ///< the channels that there are
};

} // namespace emulator
