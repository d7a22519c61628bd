#pragma once

#include "AnalogInput.h"

#include <memory>
#include <span>
#include <string>
#include <vector>

namespace emulator {

/// What a WAVE file holds.
struct WavFile {
    static constexpr int maxChannels = 2;
    static constexpr std::size_t maxSamples = std::size_t(1) << 24;

    std::int64_t rate = 0; ///< frames a second
    int channels = 0;      ///< 1 or 2; 0 if the file could not be read
    /// `channels` a frame, at least one frame; -1 to 1 in whole-number files, anything finite in others.
    std::vector<float> samples;
    std::string problem; ///< why there is nothing

    [[nodiscard]] std::size_t frames() const { return samples.size() / std::size_t(channels); }
};

/// Reads the bytes of a RIFF WAVE file ("Multimedia Programming Interface and Data Specifications 1.0", IBM and
/// Microsoft, 1991; the extensible format by Microsoft's "Multiple Channel Audio Data and WAVE Files", 2001): PCM of 8,
/// 16, 24 or 32 bits and IEEE floating point of 32 bits, mono or stereo. What lies behind the RIFF chunk is ignored,
/// unknown chunks are passed over; anything else, and more than `maxSamples`, is refused.
[[nodiscard]] WavFile parseWav(std::span<const std::uint8_t> file);

/// One channel of a WAVE file on an analog input, again and again.
class WavInput : public AnalogInput {
public:
    struct Settings {
        double peakToPeak = highestVolts - lowestVolts; ///< volts from -1 to 1
        double offset = 0;                              ///< volts
        double noise = 0;                               ///< volts from peak to peak, added
        bool direct = false;                            ///< take frame i for sample i, whatever the rates
    };

    /// @param file     one that was read; shared by its channels
    /// @param channel  of the file; beyond its channels the last one
    WavInput(std::shared_ptr<const WavFile> file, int channel, const Settings &settings, std::uint32_t seed = 1);

    /// Between two frames the straight line.
    [[nodiscard]] double voltsAt(const SampleMoment &moment) override;

private:
    [[nodiscard]] double frameAt(std::size_t frame) const;

    std::shared_ptr<const WavFile> m_file;
    std::size_t m_channel;
    Settings m_settings;
    Noise m_noise;
};

} // namespace emulator
