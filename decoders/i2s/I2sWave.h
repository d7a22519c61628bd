#pragma once

#include <corvanlux/analyzer/ExportWriter.h>
#include <cstdint>
#include <vector>

/// What a wave file holds.
struct I2sWaveForm {
    unsigned channels = 2;
    unsigned bits = 16; ///< of a word; more than 32 are cut to the upper ones
    bool isSigned = true;
};

/// Writes samples as a wave file: "Multimedia Programming Interface and Data Specifications 1.0" (IBM, Microsoft), WAVE
/// and its PCM format. Words stand at the upper end of the bytes that they need, as it has them.
class I2sWave {
public:
    I2sWave(lux::ExportWriter &out, const I2sWaveForm &form);
    /// A word of a channel, counted from 0; a channel that is not behind the last one begins a frame.
    /// @param bits  of this word, 1 to 64
    void add(unsigned channel, std::uint64_t word, unsigned bits);
    /// Writes the lengths and the rate, which is that of `frames` in so many samples of the capture.
    void finish(std::uint64_t frames, std::int64_t samples, std::int64_t sampleRate);

private:
    void writeFrame();
    void patch(std::uint64_t at, std::uint32_t value);

    lux::ExportWriter &m_out;
    I2sWaveForm m_form;
    unsigned m_bytes;                   ///< of a word
    std::vector<std::uint32_t> m_words; ///< of the frame that is being filled, at their upper end
    unsigned m_next = 0;
};
