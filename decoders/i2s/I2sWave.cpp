#include "I2sWave.h"

#include <algorithm>
#include <array>

namespace {

constexpr unsigned bitsOfByte = 8;
constexpr unsigned bitsOfWord = 32; ///< the widest of a file
constexpr std::uint32_t formatPcm = 1;
constexpr std::uint32_t formatLength = 16;
constexpr std::uint64_t riffLengthAt = 4;
constexpr std::uint64_t rateAt = 24;
constexpr std::uint64_t bytesPerSecondAt = 28;
constexpr std::uint64_t dataLengthAt = 40;
constexpr std::uint64_t headLength = 44;

} // namespace

I2sWave::I2sWave(lux::ExportWriter &out, const I2sWaveForm &form)
    : m_out(out),
      m_form(form),
      m_bytes((std::min(form.bits, bitsOfWord) + bitsOfByte - 1) / bitsOfByte),
      m_words(form.channels, 0)
{
    m_out.write("RIFF");
    m_out.little(0, 4);
    m_out.write("WAVEfmt ");
    m_out.little(formatLength, 4);
    m_out.little(formatPcm, 2);
    m_out.little(form.channels, 2);
    m_out.little(0, 4); // frames a second
    m_out.little(0, 4); // bytes a second
    m_out.little(std::uint64_t(form.channels) * m_bytes, 2);
    m_out.little(std::uint64_t(m_bytes) * bitsOfByte, 2);
    m_out.write("data");
    m_out.little(0, 4);
}

void I2sWave::add(unsigned channel, std::uint64_t word, unsigned bits)
{
    if (channel < m_next) {
        writeFrame();
    }
    const std::uint64_t top = word << (64 - bits);
    auto value = std::uint32_t(top >> bitsOfWord);
    // A file of one byte a word has it unsigned, wider ones signed.
    constexpr std::uint32_t sign = std::uint32_t(1) << (bitsOfWord - 1);
    if (m_form.isSigned == (m_bytes == 1)) {
        value ^= sign;
    }
    if (channel < m_words.size()) {
        m_words[channel] = value;
        m_next = channel + 1;
    }
}

void I2sWave::writeFrame()
{
    for (std::uint32_t &word : m_words) {
        m_out.little(word >> (bitsOfWord - m_bytes * bitsOfByte), m_bytes);
        word = 0;
    }
    m_next = 0;
}

void I2sWave::finish(std::uint64_t frames, std::int64_t samples, std::int64_t sampleRate)
{
    if (m_next > 0) {
        writeFrame();
    }
    const std::uint64_t length = m_out.size() - headLength;
    if (length % 2 != 0) {
        m_out.byte(0); // chunks have an even length
    }
    const double rate = samples > 0 ? double(frames) * double(sampleRate) / double(samples) : 1.0;
    const auto framesPerSecond = std::uint32_t(std::clamp(rate + 0.5, 1.0, 4.0e9));
    patch(riffLengthAt, std::uint32_t(m_out.size() - riffLengthAt - 4));
    patch(rateAt, framesPerSecond);
    patch(bytesPerSecondAt, framesPerSecond * std::uint32_t(m_words.size()) * m_bytes);
    patch(dataLengthAt, std::uint32_t(length));
}

void I2sWave::patch(std::uint64_t at, std::uint32_t value)
{
    std::array<std::uint8_t, 4> bytes{};
    for (std::uint8_t &byte : bytes) {
        byte = std::uint8_t(value);
        value >>= bitsOfByte;
    }
    m_out.patch(at, bytes);
}
