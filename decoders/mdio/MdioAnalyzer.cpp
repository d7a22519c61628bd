#include "MdioAnalyzer.h"

using lux::ChannelReader;
using lux::Sample;

LUX_PLUGIN(MdioAnalyzer)

namespace {

constexpr unsigned preambleBits = 32;              ///< IEEE 802.3-2018, 22.2.4.5.2
constexpr unsigned bitsAtBegin = preambleBits / 2; ///< a capture may begin within a preamble

/// The operations as they are sent (22.2.4.5.4, 45.3.4).
enum Code : std::uint32_t {
    AddressOf45 = 0,
    WriteOfBoth = 1,
    ReadOf22 = 2,
    PostReadOf45 = 2,
    ReadOf45 = 3,
};

/// @return false for one that there is not
bool operationOf(bool isClause45, std::uint32_t code, std::uint8_t &operation)
{
    switch (code) {
    case AddressOf45:
        operation = MdioResults::SetAddress;
        return isClause45;
    case WriteOfBoth:
        operation = MdioResults::Write;
        return true;
    case ReadOf22: // and PostReadOf45
        operation = isClause45 ? MdioResults::PostRead : MdioResults::Read;
        return true;
    default: // ReadOf45
        operation = MdioResults::Read;
        return isClause45;
    }
}

} // namespace

/// IEEE 802.3-2018, 22.2.4.5 and 45.3: a preamble of 32 ones, then a start (01, or 00 for clause 45), operation, port,
/// register or device, turnaround and 16 bits of data.
///
/// Who drives the line changes it behind the rise of the clock; so a bit is what stands right before it. A station may
/// leave out the preamble of a frame that follows another (22.2.4.4.2).
void MdioAnalyzer::decode()
{
    m_addresses.fill(unknown);
    ChannelReader clock = reader(m_settings.clock);
    ChannelReader data = reader(m_settings.data);
    unsigned ones = 0;
    unsigned needed = bitsAtBegin; // ones before a frame; behind another one is enough
    for (;;) {
        const Sample rise = clock.nextRise();
        if (data.levelAt(rise - 1)) {
            ones += ones < preambleBits ? 1U : 0U;
            continue;
        }
        const bool isPreambleWhole = ones == preambleBits;
        if (ones >= needed) {
            const ChannelReader clockThere = clock;
            const ChannelReader dataThere = data;
            Frame frame{.rises = {rise}};
            if (!readFrame(clock, data, frame)) {
                return;
            }
            const bool isFrame = addFrame(frame, isPreambleWhole);
            if (!isFrame) {
                clock = clockThere; // what follows may be the next preamble
                data = dataThere;
            }
            needed = isFrame ? 1 : preambleBits;
        } else {
            needed = preambleBits;
        }
        ones = 0;
    }
}

/// The clock stands at the rise of the first bit, which is a 0. @return false where the capture cuts the frame
bool MdioAnalyzer::readFrame(ChannelReader &clock, ChannelReader &data, Frame &frame) const
{
    if (clock.edgesLeft() < 2 * (std::int64_t(frameBits) - 1)) {
        return false;
    }
    for (unsigned i = 1; i < frameBits; ++i) {
        frame.rises[i] = clock.nextRise();
        frame.bits = frame.bits << 1 | std::uint32_t(data.levelAt(frame.rises[i] - 1));
    }
    frame.last = clock.peekEdge() - 1;
    return true;
}

/// @return false where it is none
bool MdioAnalyzer::addFrame(const Frame &frame, bool isPreambleWhole)
{
    const bool isClause45 = (frame.bits >> 30 & 1U) == 0;
    const std::uint32_t turnaround = frame.bits >> 16 & 3U;
    std::uint8_t operation = 0;
    const bool isKnown = operationOf(isClause45, frame.bits >> 28 & 3U, operation);
    const bool isRead = operation == MdioResults::Read || operation == MdioResults::PostRead;
    const bool isTurned = isRead ? (turnaround & 1U) == 0 : turnaround == 2; // who reads lets the first bit float
    if (!isPreambleWhole && (!isKnown || !isTurned)) {
        return false;
    }
    if (!isKnown) {
        addError(frame);
        return false;
    }
    FrameData found{.firstSample = frame.rises[0],
                    .lastSample = frame.last,
                    .data = frame.bits & 0xffffU,
                    .kind = MdioResults::Access,
                    .line = operation,
                    .extra = frame.bits >> 18 & 0x3ffU};
    unsigned flags = isClause45 ? unsigned(MdioResults::Clause45) : 0U;
    if (!isTurned) {
        flags |= isRead ? MdioResults::NoAnswer : MdioResults::TurnaroundError;
        results().mark(m_settings.data, frame.rises[15], MarkerType::ErrorX);
    }
    found.flags = std::uint16_t(flags);
    if (isClause45) {
        useAddress(found);
    }
    for (const Sample rise : frame.rises) {
        results().mark(m_settings.clock, rise, MarkerType::UpArrow);
    }
    results().add(found);
    return true;
}

void MdioAnalyzer::addError(const Frame &frame)
{
    constexpr unsigned headBits = 14;
    results().mark(m_settings.data, frame.rises[3], MarkerType::ErrorX);
    results().add({.firstSample = frame.rises[0],
                   .lastSample = frame.rises[headBits] - 1,
                   .data = frame.bits >> (frameBits - headBits),
                   .kind = MdioResults::Error});
}

/// Clause 45: a frame sets the address of the register that later ones access; reading may count it up.
void MdioAnalyzer::useAddress(FrameData &frame)
{
    std::uint32_t &address = m_addresses.at(frame.extra);
    if (frame.line == MdioResults::SetAddress) {
        address = std::uint32_t(frame.data);
        return;
    }
    if (address == unknown) {
        return;
    }
    frame.data2 = address;
    frame.flags = std::uint16_t(frame.flags | MdioResults::AddressKnown);
    if (frame.line == MdioResults::PostRead && address < 0xffffU) {
        ++address; // the last one stays (45.3.4)
    }
}
