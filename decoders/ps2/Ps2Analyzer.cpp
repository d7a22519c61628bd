#include "Ps2Analyzer.h"

#include "Ps2Keys.h"
#include "common/Duration.h"
#include "common/Parity.h"

#include <algorithm>

using lux::FilteredLine;
using lux::Sample;

LUX_PLUGIN(Ps2Analyzer)

namespace {

constexpr unsigned clocksOfByte = 11; ///< start, eight bits, parity, stop; or eight bits, parity, stop, acknowledgement
constexpr unsigned bitsOfByte = 8;

// IBM Personal System/2 Hardware Interface Technical Reference, keyboard, clock and data signals. Nanoseconds.
constexpr std::int64_t inhibitTime = 100000;  ///< the host holds the clock low for so long at least
constexpr std::int64_t mostPause = 200000;    ///< a clock is high for 50 us at most; longer ones are accepted to here
constexpr std::int64_t leastIdle = 120000;    ///< longer than the clock is high within a byte
constexpr std::int64_t mostAnswer = 15000000; ///< the keyboard begins to clock what the host wants to send
constexpr std::int64_t spike = 4000; ///< pulses of up to this are not seen: lines bounce that nobody drives high
constexpr std::int64_t leastSampleRate = 100000; ///< Hz; the shortest pulse is 30 us long

} // namespace

std::uint32_t Ps2Analyzer::NeededSampleRate()
{
    return std::uint32_t(leastSampleRate);
}

/// The keyboard's bits are there when the clock falls, the host's when it rises.
void Ps2Analyzer::decode()
{
    m_inhibit = lux::samplesIn(inhibitTime, sampleRate());
    m_mostPause = lux::samplesUpTo(mostPause, sampleRate());
    m_leastIdle = lux::samplesIn(leastIdle, sampleRate());
    m_mostAnswer = lux::samplesUpTo(mostAnswer, sampleRate());
    m_lastRise = 0;
    m_isInStep = false;
    m_transfer = {};
    m_sequence = {};
    const Sample shortest = lux::samplesIn(spike, sampleRate()) + 1; // an edge is known to a sample
    FilteredLine clock(reader(m_settings.clock), shortest);
    FilteredLine data(reader(m_settings.data), shortest);
    if (!clock.level() && clock.hasEdge()) {
        m_lastRise = clock.nextEdge();
    }
    // A capture may begin behind a host's request: the data stays low until the keyboard clocks it.
    const bool isRequest = !data.levelAt(m_lastRise) && !data.hasEdgeBefore(clock.peekEdge());
    m_transfer.sender = isRequest ? Sender::Host : Sender::Keyboard;
    while (clock.level() && clock.hasEdge()) {
        const Sample fall = clock.nextEdge();
        takeClock({.fall = fall, .rise = clock.peekEdge(), .hasRise = clock.hasEdge()}, data);
        if (!clock.hasEdge()) {
            return;
        }
        m_lastRise = clock.nextEdge();
    }
}

void Ps2Analyzer::takeClock(const Clock &clock, FilteredLine &data)
{
    const Sample pause = clock.fall - m_lastRise;
    const bool isFirstOfHost = m_transfer.sender == Sender::Host && m_transfer.count == 0;
    if (pause > (isFirstOfHost ? m_mostAnswer : m_mostPause)) {
        cutTransfer();
    }
    m_isInStep = m_isInStep || pause >= m_leastIdle;
    if (clock.rise - clock.fall >= m_inhibit) {
        if (m_transfer.count + 1 == clocksOfByte) {
            takeLastClock(clock, data);
        }
        if (!clock.hasRise) {
            return;
        }
        cutTransfer();
        m_isInStep = true;
        // A host that wants to send pulls the data low before it lets the clock go.
        m_transfer.sender = data.levelAt(clock.rise) ? Sender::Keyboard : Sender::Host;
        return;
    }
    if (!m_isInStep) {
        m_transfer = {};
        return;
    }
    takeBit(clock, data);
}

/// Behind the tenth clock a byte is sent to its end: a host that has seen the last one fall may hold it low at once,
/// until it has read the byte.
void Ps2Analyzer::takeLastClock(const Clock &clock, FilteredLine &data)
{
    takeBit({.fall = clock.fall, .rise = std::min(clock.rise, clock.fall + m_transfer.low), .hasRise = true}, data);
}

void Ps2Analyzer::takeBit(const Clock &clock, FilteredLine &data)
{
    if (m_transfer.sender == Sender::Host) {
        takeHostBit(clock, data);
    } else {
        takeKeyboardBit(clock, data.levelAt(clock.fall));
    }
}

void Ps2Analyzer::takeKeyboardBit(const Clock &clock, bool bit)
{
    if (m_transfer.count == 0) {
        if (bit) {
            m_isInStep = false; // no start bit
            results().mark(m_settings.data, clock.fall, MarkerType::ErrorX);
            return;
        }
        m_transfer = {.first = clock.fall};
    }
    m_transfer.bits |= std::uint32_t(bit) << m_transfer.count;
    m_transfer.low = clock.rise - clock.fall;
    m_transfer.last = clock.rise - 1;
    ++m_transfer.count;
    results().mark(m_settings.clock, clock.fall, MarkerType::DownArrow);
    if (m_transfer.count == clocksOfByte) {
        addByte(m_transfer.bits >> 1, 0);
    }
}

void Ps2Analyzer::takeHostBit(const Clock &clock, FilteredLine &data)
{
    const bool isLast = m_transfer.count + 1 == clocksOfByte;
    if (!isLast && !clock.hasRise) {
        return; // the capture cuts it
    }
    if (m_transfer.count == 0) {
        m_transfer = {.sender = Sender::Host, .first = clock.fall};
    }
    const Sample look = isLast ? clock.fall : clock.rise;
    m_transfer.bits |= std::uint32_t(data.levelAt(look)) << m_transfer.count;
    m_transfer.low = clock.rise - clock.fall;
    m_transfer.last = clock.rise - 1;
    ++m_transfer.count;
    results().mark(m_settings.clock, look, isLast ? MarkerType::DownArrow : MarkerType::UpArrow);
    if (isLast) {
        const bool acknowledged = (m_transfer.bits >> (clocksOfByte - 1) & 1U) == 0;
        addByte(m_transfer.bits, acknowledged ? 0U : unsigned(Ps2Results::NoAcknowledge));
    }
}

/// @param bits  eight bits of data, parity, stop
void Ps2Analyzer::addByte(std::uint32_t bits, unsigned flags)
{
    FrameData frame{.firstSample = m_transfer.first, .lastSample = m_transfer.last, .data = bits & 0xffU};
    const bool parity = (bits >> bitsOfByte & 1U) != 0;
    const bool stop = (bits >> (bitsOfByte + 1) & 1U) != 0;
    flags |= parity == parityBit(frame.data, lux::Parity::Odd) ? 0U : unsigned(Ps2Results::ParityError);
    flags |= stop ? 0U : unsigned(Ps2Results::FramingError);
    frame.flags = std::uint16_t(flags);
    if (m_transfer.sender == Sender::Host) {
        frame.kind = Ps2Results::Host;
        nameHostByte(frame);
    } else {
        frame.kind = Ps2Results::Byte;
        nameKeyboardByte(frame);
    }
    if (flags != 0) {
        results().mark(m_settings.data, m_transfer.last, MarkerType::ErrorX);
    }
    results().add(frame);
    m_transfer = {};
}

void Ps2Analyzer::nameKeyboardByte(FrameData &frame)
{
    const auto byte = std::uint32_t(frame.data);
    if (frame.flags != 0) {
        m_sequence.prefix = 0;
        m_sequence.isReleased = false;
        frame.line = Ps2Results::Key; // of which nothing is known
    } else if (m_sequence.identityBytes > 0 && byte != ps2::acknowledge) {
        --m_sequence.identityBytes;
        frame.line = Ps2Results::Identity;
    } else if (m_sequence.prefix == 0 && !m_sequence.isReleased &&
               !ps2::responseName(byte, m_settings.codeSet).empty()) {
        frame.line = Ps2Results::Response;
    } else {
        nameKey(frame);
    }
}

/// A code is one byte, with 0xe0 or 0xe1 before it; the pause key has two behind 0xe1. Where the key is let go sets 2
/// and 3 have 0xf0 before the byte, set 1 its highest bit.
void Ps2Analyzer::nameKey(FrameData &frame)
{
    const auto byte = std::uint32_t(frame.data);
    const bool isFirstSet = m_settings.codeSet == Ps2CodeSet::One;
    frame.line = Ps2Results::Prefix;
    if (byte == ps2::extended || byte == ps2::extendedPause) {
        m_sequence.prefix = byte;
        m_sequence.codesToCome = byte == ps2::extendedPause ? 2 : 1;
        return;
    }
    if (byte == ps2::released && !isFirstSet) {
        m_sequence.isReleased = true;
        return;
    }
    if (m_sequence.codesToCome > 1) {
        --m_sequence.codesToCome;
        m_sequence.isReleased = false;
        return;
    }
    frame.line = Ps2Results::Key;
    const bool isReleased = isFirstSet ? (byte & 0x80U) != 0 : m_sequence.isReleased;
    frame.extra = m_sequence.prefix << bitsOfByte | (isFirstSet ? byte & 0x7fU : byte);
    frame.flags = isReleased ? Ps2Results::Released : 0;
    m_sequence.prefix = 0;
    m_sequence.codesToCome = 0;
    m_sequence.isReleased = false;
}

void Ps2Analyzer::nameHostByte(FrameData &frame)
{
    const auto byte = std::uint32_t(frame.data);
    if (m_sequence.command != 0 && ps2::commandName(byte).empty()) {
        frame.line = Ps2Results::Argument;
        frame.extra = m_sequence.command;
        m_sequence.command = 0;
        return;
    }
    frame.line = Ps2Results::Command;
    m_sequence = {.command = ps2::hasArgument(byte) ? byte : 0, .identityBytes = byte == ps2::readId ? 2U : 0U};
}

/// A pause or the host's inhibit ends a byte that is not complete.
void Ps2Analyzer::cutTransfer()
{
    if (m_transfer.count > 0) {
        results().mark(m_settings.data, m_transfer.last, MarkerType::ErrorX);
        results().add({.firstSample = m_transfer.first,
                       .lastSample = m_transfer.last,
                       .data = m_transfer.sender == Sender::Host ? m_transfer.bits : m_transfer.bits >> 1,
                       .kind = Ps2Results::Short,
                       .extra = m_transfer.count});
    }
    m_transfer = {};
}
