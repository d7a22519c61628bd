#include "CxdatSignal.h"

#include "UsbTypes.h"

#include <algorithm>
#include <string_view>

namespace emulator {

namespace {

constexpr std::size_t settingsLimit = 32768;
constexpr std::string_view settingsEnd = "</settings>";
constexpr std::string_view headMagic = "cxdat";
constexpr std::string_view blockMagic = "##D";
constexpr std::size_t headSize = 40;
constexpr std::size_t blockHeadSize = 16;
constexpr std::size_t wordSize = 5; // most numbers have 40 bits

using View = std::span<const std::uint8_t>;

std::int64_t wordAt(View bytes, std::size_t at)
{
    return std::int64_t(readLittle(bytes.subspan(at, wordSize)));
}

bool begins(View bytes, std::string_view magic)
{
    return bytes.size() >= magic.size() && std::equal(magic.begin(), magic.end(), bytes.begin());
}

/// Where the file head begins; 0 if there is no settings block.
std::size_t headStart(View file)
{
    const View settings = file.first(std::min(file.size(), settingsLimit));
    const auto found = std::search(settings.begin(), settings.end(), settingsEnd.begin(), settingsEnd.end());
    if (found == settings.end() || found == settings.begin()) {
        return 0;
    }
    const auto behind = std::find_if(found + std::ptrdiff_t(settingsEnd.size()), settings.end(),
                                     [](std::uint8_t byte) { return byte != '\r' && byte != '\n'; });
    return std::size_t(behind - settings.begin());
}

/// Takes one channel block off the front of `rest`. @return what is wrong with it; null if nothing is
const char *readBlock(View &rest, std::int64_t samples, std::vector<EdgeSignal::Channel> &channels,
                      std::uint32_t &present)
{
    if (rest.size() < blockHeadSize || !begins(rest, blockMagic)) {
        return "not a channel block";
    }
    const std::size_t channel = rest[4];
    if (channel >= channels.size() || (present >> channel & 1) != 0) {
        return "a channel out of range, or twice";
    }
    const auto count = std::uint64_t(wordAt(rest, 8));
    const View entries = rest.subspan(blockHeadSize);
    if (count > entries.size() / wordSize) {
        return "more entries than the file holds";
    }
    EdgeSignal::Channel &out = channels[channel];
    out.startLevel = rest[5] != 0;
    out.edges.reserve(std::size_t(count));
    std::int64_t last = -1;
    for (std::size_t i = 0; i < count; ++i) {
        const std::int64_t edge = wordAt(entries, i * wordSize);
        if (edge <= last) {
            return "entries that do not increase";
        }
        last = edge;
        if (edge < samples) { // the end mark is no edge
            out.edges.push_back(edge);
        }
    }
    present |= 1U << channel;
    rest = entries.subspan(std::size_t(count) * wordSize);
    return nullptr;
}

CxdatCapture refused(const char *why)
{
    CxdatCapture capture;
    capture.problem = why;
    return capture;
}

} // namespace

CxdatCapture parseCxdat(View file)
{
    const std::size_t start = headStart(file);
    if (start == 0) {
        return refused("no settings block");
    }
    const View head = file.subspan(start);
    if (head.size() < headSize || !begins(head, headMagic)) {
        return refused("no file head");
    }
    CxdatCapture capture;
    capture.samples = wordAt(head, 8);
    const std::int64_t rate = wordAt(head, 16);
    capture.triggerAt = wordAt(head, 24);
    capture.channels = head[32];
    if (std::size_t(capture.channels) > maxChannels) {
        return refused("too many channels");
    }
    std::vector<EdgeSignal::Channel> channels(std::size_t(capture.channels), EdgeSignal::Channel{});
    std::uint32_t present = 0;
    for (View rest = head.subspan(headSize); !rest.empty();) {
        if (const char *problem = readBlock(rest, capture.samples, channels, present)) {
            return refused(problem);
        }
    }
    capture.signal = std::make_shared<EdgeSignal>(rate, std::move(channels));
    return capture;
}

} // namespace emulator
