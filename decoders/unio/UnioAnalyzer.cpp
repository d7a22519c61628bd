#include "UnioAnalyzer.h"

#include "UnioTimes.h"
#include "common/Duration.h"

#include <algorithm>
#include <iterator>
#include <string>

using lux::ChannelReader;
using lux::Sample;

LUX_PLUGIN(UnioAnalyzer)

namespace {

constexpr unsigned bitsOfByte = 8;

} // namespace

std::uint32_t UnioAnalyzer::NeededSampleRate()
{
    return std::uint32_t(unio::leastSampleRate);
}

/// DS22076D, chapter 3: a start header, then bytes of eight Manchester bits, the acknowledgement of the controller
/// (MAK) and that of the device (SAK). A rise in a bit's middle is 1.
void UnioAnalyzer::decode()
{
    if (sampleRate() < unio::leastSampleRate) {
        fail("The sample rate is too low: UNI/O needs at least " + std::to_string(unio::leastSampleRate) + " Hz");
    }
    m_standby = lux::samplesIn(unio::standbyTime, sampleRate());
    m_setup = lux::samplesIn(unio::setupTime, sampleRate());
    m_headerLow = lux::samplesIn(unio::headerLow, sampleRate());
    m_shortestBits = lux::samplesIn(headerBits * unio::shortestBit, sampleRate()) - 1; // edges are a sample off
    m_longestBits = lux::samplesUpTo(headerBits * unio::longestBit, sampleRate()) + 1;
    ChannelReader line = reader(m_settings.line);
    m_isInStep = line.level();
    Sample high = line.level() ? 0 : line.sampleCount(); // since when
    for (;;) {
        if (line.level()) {
            const Sample fall = line.peekEdge();
            if (fall - high >= m_standby) {
                results().add({.firstSample = high, .lastSample = fall - 1, .kind = UnioResults::Standby});
                m_isInStep = true;
            }
            if (!line.hasEdge()) {
                return;
            }
            line.nextEdge();
        }
        const Sample fall = line.position();
        const Sample rise = line.nextEdge();
        BitTime bitTime;
        ChannelReader behind = line;
        if (m_isInStep && fall - high >= m_setup && rise - fall >= m_headerLow && findHeader(line, bitTime, behind)) {
            line = behind;
            readMessage(line, bitTime, line.position());
        }
        high = line.level() ? std::max<Sample>(line.lastEdge(), 0) : line.sampleCount();
    }
}

/// The header is 0x55 with MAK: its edges have one pattern. @param atRise  where its first bit begins
/// @param behind  stands in the middle of MAK, when it is one
bool UnioAnalyzer::findHeader(const ChannelReader &atRise, BitTime &bitTime, ChannelReader &behind) const
{
    constexpr std::int64_t quarters[] = {2, 6, 10, 14, 18, 22, 26, 30, 32, 34};
    constexpr std::size_t lastBit = 7;
    if (atRise.edgesLeft() < std::int64_t(std::size(quarters))) {
        return false;
    }
    const Sample begin = atRise.position();
    Sample edges[std::size(quarters)];
    ChannelReader line = atRise;
    for (std::size_t i = 0; i < std::size(quarters); ++i) {
        edges[i] = line.nextEdge();
        if (edges[i] - begin > 2 * m_longestBits) {
            return false;
        }
    }
    bitTime.seven = edges[lastBit] - edges[0];
    if (bitTime.seven < m_shortestBits || bitTime.seven > m_longestBits) {
        return false;
    }
    for (std::size_t i = 0; i < std::size(quarters); ++i) {
        if (!bitTime.isNear(edges[i] - edges[0], quarters[i] - quarters[0])) {
            return false;
        }
    }
    behind = line;
    return bitTime.isNear(edges[0] - begin, quarters[0]);
}

/// @param middle  of the header's MAK
void UnioAnalyzer::readMessage(ChannelReader &line, const BitTime &bitTime, Sample middle)
{
    Sample sak = middle;
    const Bit answer = readBit(line, bitTime, sak, 1);
    if (answer == Bit::CaptureEnd) {
        return;
    }
    const bool isAnswered = answer != Bit::None; // which a header should not be
    results().add({.firstSample = middle - bitTime.quarters(34),
                   .lastSample = std::min(middle + bitTime.quarters(6), sampleCount()) - 1,
                   .data = unio::header,
                   .kind = UnioResults::Header,
                   .flags = std::uint16_t(UnioResults::Mak | (isAnswered ? UnioResults::Sak : 0))});
    if (isAnswered) {
        middle = sak;
    }
    m_next = UnioResults::Device;
    m_isInStep = false; // behind an error devices wait for a standby pulse
    bool hasSak = isAnswered;
    while (readByte(line, bitTime, middle, hasSak)) {
    }
}

/// Goes to the edge in the middle of a bit. It stays where there is none; edges before it are gone over.
/// @param middle  in: of a bit; out: of the one that is so many bits behind it
UnioAnalyzer::Bit UnioAnalyzer::readBit(ChannelReader &line, const BitTime &bitTime, Sample &middle, std::int64_t bits)
{
    const Sample latest = middle + bitTime.quarters(4 * bits + 1);
    ChannelReader ahead = line;
    while (ahead.hasEdgeBefore(latest + 1)) {
        const Sample edge = ahead.nextEdge();
        if (bitTime.isNear(edge - middle, 4 * bits)) {
            line = ahead;
            middle = edge;
            return line.level() ? Bit::One : Bit::Zero;
        }
    }
    return latest < line.sampleCount() ? Bit::None : Bit::CaptureEnd;
}

/// @param middle  in: of the bit before; out: of the last one that has an edge
/// @param isAnswered  in, out: whether that bit is SAK, or MAK because SAK is missing @return whether another byte
/// follows
bool UnioAnalyzer::readByte(ChannelReader &line, const BitTime &bitTime, Sample &middle, bool &isAnswered)
{
    const std::int64_t distance = isAnswered ? 1 : 2;
    const Sample first = middle + bitTime.quarters(4 * distance - 2);
    std::uint32_t value = 0;
    for (unsigned i = 0; i <= bitsOfByte; ++i) { // with MAK
        const Bit bit = readBit(line, bitTime, middle, i == 0 ? distance : 1);
        if (bit == Bit::CaptureEnd) {
            return false;
        }
        if (bit == Bit::None) {
            if (i > 0) {
                results().mark(m_settings.line, middle + bitTime.quarters(4), MarkerType::ErrorX);
                results().add({.firstSample = first,
                               .lastSample = middle + bitTime.quarters(2) - 1,
                               .data = value,
                               .kind = UnioResults::Cut,
                               .extra = i});
            }
            return false;
        }
        results().mark(m_settings.line, middle, bit == Bit::One ? MarkerType::One : MarkerType::Zero);
        value = value << 1 | std::uint32_t(bit == Bit::One);
    }
    const bool goesOn = (value & 1U) != 0;
    Sample sak = middle;
    const Bit answer = readBit(line, bitTime, sak, 1);
    if (answer == Bit::CaptureEnd) {
        return false;
    }
    isAnswered = answer == Bit::One;
    results().mark(m_settings.line, isAnswered ? sak : middle + bitTime.quarters(4),
                   isAnswered ? MarkerType::Dot : MarkerType::X);
    const Sample end = isAnswered ? sak + bitTime.quarters(2) : middle + bitTime.quarters(6);
    const Sample last = std::min(end, sampleCount()) - 1; // all bits are there, if not the last one's end
    addByte(value >> 1, (goesOn ? unsigned(UnioResults::Mak) : 0U) | (isAnswered ? unsigned(UnioResults::Sak) : 0U),
            first, last);
    middle = isAnswered ? sak : middle;
    m_isInStep = !goesOn;
    return goesOn;
}

void UnioAnalyzer::addByte(std::uint32_t value, unsigned flags, Sample first, Sample last)
{
    FrameData frame{.firstSample = first,
                    .lastSample = last,
                    .data = value,
                    .kind = UnioResults::Byte,
                    .flags = std::uint16_t(flags)};
    nameByte(frame);
    results().add(frame);
}

/// A device's address, a command, and what belongs to it (DS22067, chapter 4).
void UnioAnalyzer::nameByte(FrameData &frame)
{
    enum Command : std::uint8_t { Read = 0x03, ReadStatus = 0x05, Write = 0x6c, WriteStatus = 0x6e };
    frame.line = m_next;
    switch (m_next) {
    case UnioResults::Device:
        m_next = UnioResults::Command;
        break;
    case UnioResults::Command:
        switch (frame.data) {
        case Read:
        case Write:
            m_next = UnioResults::AddressHigh;
            break;
        case ReadStatus:
        case WriteStatus:
            m_next = UnioResults::Status;
            break;
        default:
            m_next = UnioResults::Data;
            break;
        }
        break;
    case UnioResults::AddressHigh:
        m_next = UnioResults::AddressLow;
        break;
    case UnioResults::AddressLow:
        m_next = UnioResults::Data;
        break;
    default:
        break;
    }
}
