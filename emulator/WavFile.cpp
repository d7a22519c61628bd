#include "WavFile.h"

#include "UsbTypes.h"

#include <array>
#include <bit>
#include <string_view>
#include <utility>

namespace emulator {

namespace {

using Octets = std::span<const std::uint8_t>;

constexpr std::size_t chunkHeadSize = 8;
constexpr std::size_t leastFormatSize = 16;
constexpr std::size_t extensibleFormatSize = 40;
constexpr std::uint64_t pcm = 1;
constexpr std::uint64_t ieeeFloat = 3;
constexpr std::uint64_t extensible = 0xFFFE;

/// The format chunk, read.
struct Format {
    bool known = false;
    bool isFloat = false;
    std::size_t channels = 0;
    std::int64_t rate = 0;
    std::size_t bytes = 0; ///< a sample
};

bool hasName(Octets bytes, std::string_view magic)
{
    return bytes.size() >= magic.size() && std::equal(magic.begin(), magic.end(), bytes.begin());
}

/// Reads the format chunk. @return what is wrong with it; null if nothing is
const char *readFormat(Octets chunk, Format &format)
{
    if (format.known) {
        return "two formats";
    }
    if (chunk.size() < leastFormatSize) {
        return "a format that is too short";
    }
    const auto number = [chunk](std::size_t at, std::size_t bytes) { return readLittle(chunk.subspan(at, bytes)); };
    std::uint64_t tag = number(0, 2);
    if (tag == extensible) {
        static constexpr std::array<std::uint8_t, 14> idEnd{0,    0,    0,    0,    0x10, 0,    0x80,
                                                            0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71};
        constexpr std::size_t idAt = 24;
        if (chunk.size() < extensibleFormatSize ||
            !std::equal(idEnd.begin(), idEnd.end(), chunk.subspan(idAt + 2).begin())) {
            return "a format that is not known";
        }
        tag = number(idAt, 2);
    }
    const std::uint64_t bits = number(14, 2);
    format.isFloat = tag == ieeeFloat;
    if (tag != pcm && tag != ieeeFloat) {
        return "neither PCM nor floating point";
    }
    if (bits != 32 && (format.isFloat || (bits != 8 && bits != 16 && bits != 24))) {
        return "samples of a size that is not known";
    }
    format.channels = std::size_t(number(2, 2));
    format.rate = std::int64_t(number(4, 4));
    format.bytes = std::size_t(bits / 8);
    if (format.channels < 1 || format.channels > std::size_t(WavFile::maxChannels)) {
        return "neither mono nor stereo";
    }
    const std::uint64_t frame = format.channels * format.bytes;
    if (format.rate < 1 || number(12, 2) != frame || number(8, 4) != std::uint64_t(format.rate) * frame) {
        return "a format that contradicts itself";
    }
    format.known = true;
    return nullptr;
}

/// One sample. PCM of 8 bits is without a sign (128 is 0), of more bits with one.
float sampleOf(Octets bytes, bool isFloat)
{
    const auto word = std::uint32_t(readLittle(bytes));
    if (isFloat) {
        return std::bit_cast<float>(word);
    }
    const auto unused = unsigned(32 - 8 * bytes.size());
    const std::uint32_t high = word << unused; // the sign comes to stand in the highest bit
    constexpr double full = 2147483648.0;
    return float(double(std::int32_t(bytes.size() == 1 ? high ^ 0x80000000U : high)) / full);
}

/// Reads the data chunk. @return what is wrong with it; null if nothing is
const char *readData(Octets chunk, const Format &format, WavFile &file)
{
    if (!format.known) {
        return "data before their format";
    }
    if (file.channels != 0) {
        return "data twice";
    }
    if (chunk.empty() || chunk.size() % (format.channels * format.bytes) != 0) {
        return "data that are not whole frames";
    }
    if (chunk.size() / format.bytes > WavFile::maxSamples) {
        return "too long";
    }
    file.samples.reserve(chunk.size() / format.bytes);
    for (Octets rest = chunk; !rest.empty(); rest = rest.subspan(format.bytes)) {
        const float sample = sampleOf(rest.first(format.bytes), format.isFloat);
        if (!std::isfinite(sample)) {
            return "a sample that is no number";
        }
        file.samples.push_back(sample);
    }
    file.channels = int(format.channels);
    file.rate = format.rate;
    return nullptr;
}

WavFile refusedFile(const char *why)
{
    WavFile file;
    file.problem = why;
    return file;
}

} // namespace

WavFile parseWav(Octets bytes)
{
    constexpr std::size_t headSize = chunkHeadSize + 4;
    if (bytes.size() < headSize || !hasName(bytes, "RIFF") || !hasName(bytes.subspan(chunkHeadSize), "WAVE")) {
        return refusedFile("no WAVE file");
    }
    const std::uint64_t size = readLittle(bytes.subspan(4, 4));
    if (size < headSize - chunkHeadSize || size > bytes.size() - chunkHeadSize) {
        return refusedFile("not as long as it says");
    }
    WavFile file;
    Format format;
    for (Octets rest = bytes.subspan(headSize, std::size_t(size) + chunkHeadSize - headSize); !rest.empty();) {
        if (rest.size() < chunkHeadSize) {
            return refusedFile("a chunk that is cut off");
        }
        const std::uint64_t length = readLittle(rest.subspan(4, 4));
        const Octets content = rest.subspan(chunkHeadSize);
        if (length > content.size()) {
            return refusedFile("a chunk that is cut off");
        }
        const Octets chunk = content.first(std::size_t(length));
        const char *problem = hasName(rest, "fmt ")   ? readFormat(chunk, format)
                              : hasName(rest, "data") ? readData(chunk, format, file)
                                                      : nullptr;
        if (problem != nullptr) {
            return refusedFile(problem);
        }
        // Chunks begin at even places; behind the last one the byte between may be missing.
        rest = content.subspan(std::min(std::size_t(length + length % 2), content.size()));
    }
    return file.channels == 0 ? refusedFile("no data") : file;
}

WavInput::WavInput(std::shared_ptr<const WavFile> file, int channel, const Settings &settings, std::uint32_t seed)
    : m_file(std::move(file)),
      m_channel(std::size_t(std::clamp(channel, 0, m_file->channels - 1))),
      m_settings(settings),
      m_noise(settings.noise, seed)
{}

double WavInput::frameAt(std::size_t frame) const
{
    return double(m_file->samples[frame * std::size_t(m_file->channels) + m_channel]);
}

double WavInput::voltsAt(const SampleMoment &moment)
{
    const std::size_t frames = m_file->frames();
    double value = 0;
    if (m_settings.direct) {
        value = frameAt(std::size_t(moment.index) % frames);
    } else {
        const double at = std::fmod(moment.seconds * double(m_file->rate), double(frames));
        const auto frame = std::min(std::size_t(at), frames - 1);
        const double share = at - double(frame);
        value = frameAt(frame) * (1 - share) + frameAt((frame + 1) % frames) * share;
    }
    return m_settings.offset + m_settings.peakToPeak / 2 * value + m_noise.next();
}

} // namespace emulator
