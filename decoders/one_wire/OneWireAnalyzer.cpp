#include "OneWireAnalyzer.h"

#include "common/Crc.h"
#include "common/Duration.h"
#include "common/FilteredLine.h"

#include <algorithm>
#include <span>
#include <string>

using lux::Sample;

LUX_PLUGIN(OneWireAnalyzer)

namespace {

/// Maxim application note 27: x^8 + x^5 + x^4 + 1, the lowest bit first.
using CodeCrc = lux::Crc<lux::CrcModel{.width = 8, .polynomial = 0x31, .lsbFirst = true}>;

/// A clock that is a twentieth too fast, the controller's or the instrument's, still makes resets: nothing else is as
/// long.
constexpr std::int64_t resetPercent = 95;

/// A code with its own check gives 0.
bool isCodeRight(std::uint64_t code)
{
    CodeCrc crc;
    for (unsigned i = 0; i < OneWireResults::codeBytes; ++i) {
        crc.addByte(std::uint8_t(code >> (8 * i)));
    }
    return crc.value() == 0;
}

} // namespace

OneWireAnalyzer::Times::Times(const OneWireTimes &times, std::int64_t sampleRate)
    : mostOne(lux::samplesUpTo(times.mostOne, sampleRate)),
      slot(lux::samplesIn(times.slot, sampleRate)),
      mostZero(lux::samplesUpTo(times.mostZero, sampleRate)),
      leastReset(lux::samplesIn(times.leastReset * resetPercent / 100, sampleRate) - 1), // edges are a sample off
      presenceLook(lux::samplesUpTo(times.presenceLook, sampleRate)),
      mostPresence(lux::samplesUpTo(times.mostPresence, sampleRate))
{}

std::uint32_t OneWireAnalyzer::NeededSampleRate()
{
    return std::uint32_t(oneWire::leastSampleRate);
}

/// Slots and resets are told apart by how long the line is low (Maxim application note 126).
void OneWireAnalyzer::decode()
{
    if (sampleRate() < oneWire::leastSampleRate) {
        fail("The sample rate is too low: 1-Wire needs at least " + std::to_string(oneWire::leastSampleRate) + " Hz");
    }
    m_standard = Times(oneWire::standardTimes, sampleRate());
    m_overdrive = Times(oneWire::overdriveTimes, sampleRate());
    m_isOverdrive = m_settings.speed == OneWireSpeed::Overdrive;
    m_stage = Stage::Lost;
    m_count = 0;
    const Sample glitch = lux::samplesIn(oneWire::glitch, sampleRate());
    if (glitch > 1) {
        decodeLine(lux::FilteredLine(reader(m_settings.line), glitch));
    } else {
        decodeLine(reader(m_settings.line));
    }
    addRest();
}

template<class Line>
void OneWireAnalyzer::decodeLine(Line line)
{
    if (!line.level() && line.hasEdge() && line.nextEdge() >= m_standard.leastReset) {
        // The end of a reset: what follows can be counted, but the reset itself is not there to be shown.
        if (line.hasEdgeBefore(line.position() + m_standard.presenceLook + 1)) {
            line.nextEdge();
            if (!line.hasEdge()) {
                return;
            }
            line.nextEdge();
        }
        m_isOverdrive = false;
        m_stage = Stage::Unknown;
    }
    Sample fall = 0;
    unsigned shortSlots = 0;
    while (line.hasEdge()) {
        const Sample lastFall = fall;
        fall = line.level() ? line.nextEdge() : line.position();
        if (!line.hasEdge()) {
            return;
        }
        Sample rise = line.nextEdge();
        if (rise - fall >= (m_isOverdrive ? m_overdrive : m_standard).leastReset) {
            if (!takeReset(line, fall, rise)) {
                return;
            }
        } else if (m_stage != Stage::Lost) {
            rise = passBounces(line, fall, rise);
            takeSlot(fall, rise, line.peekEdge());
        } else if (m_settings.speed == OneWireSpeed::Auto) {
            // No byte at standard speed has such short slots.
            shortSlots = fall - lastFall < m_standard.slot / 2 ? shortSlots + 1 : 0;
            m_isOverdrive = m_isOverdrive || shortSlots >= bitsOfByte;
        }
    }
}

/// A line that falls again within a slot begins no other one: devices are busy with the first.
/// @return where it rises for good, as far as this tells the bit
template<class Line>
Sample OneWireAnalyzer::passBounces(Line &line, Sample fall, Sample rise) const
{
    const Times &times = m_isOverdrive ? m_overdrive : m_standard;
    const Sample end = fall + times.slot - times.slot / 4;
    while (line.hasEdgeBefore(end)) {
        Line ahead = line;
        const Sample again = ahead.nextEdge();
        if (!ahead.hasEdge() || ahead.nextEdge() - again >= times.leastReset) {
            break;
        }
        line = ahead;
        if (again <= fall + times.mostOne) {
            rise = line.position();
        }
    }
    return rise;
}

/// @return false when the capture ends before it is known who is there
template<class Line>
bool OneWireAnalyzer::takeReset(Line &line, Sample fall, Sample rise)
{
    addRest();
    m_isOverdrive = m_isOverdrive && rise - fall < m_standard.leastReset;
    const Times &times = m_isOverdrive ? m_overdrive : m_standard;
    const Sample look = rise + times.presenceLook;
    const bool isPresent = line.hasEdgeBefore(look + 1);
    if (!isPresent && look >= line.sampleCount()) {
        return false;
    }
    Sample last = look;
    unsigned flags = m_isOverdrive ? unsigned(OneWireResults::Overdrive) : 0U;
    if (isPresent) {
        const Sample begin = line.nextEdge();
        last = line.peekEdge() - 1;
        flags |= OneWireResults::Present;
        if (last - begin >= times.mostPresence) {
            flags |= OneWireResults::LongPresence;
            results().mark(m_settings.line, begin, MarkerType::ErrorX);
        }
        if (line.hasEdge()) {
            line.nextEdge();
        }
    } else {
        results().mark(m_settings.line, look, MarkerType::ErrorX);
    }
    results().add(
        {.firstSample = fall, .lastSample = last, .kind = OneWireResults::Reset, .flags = std::uint16_t(flags)});
    m_stage = Stage::Command;
    return true;
}

/// A slot that is low for longer than a device looks is a 0, however much longer.
void OneWireAnalyzer::takeSlot(Sample fall, Sample rise, Sample nextFall)
{
    const Times &times = m_isOverdrive ? m_overdrive : m_standard;
    const Sample end = std::max(rise, fall + times.slot);
    if (end > sampleCount()) {
        return; // the capture cuts the slot
    }
    const bool bit = rise - fall <= times.mostOne;
    const bool isTooLong = rise - fall > times.mostZero;
    if (m_count == 0) {
        m_first = fall;
    }
    m_last = std::min(end, nextFall) - 1;
    results().mark(m_settings.line, std::min(fall + times.mostOne, m_last),
                   isTooLong ? MarkerType::ErrorDot : MarkerType::Dot);
    m_bits[m_count++] = bit ? '1' : '0';
    if (m_stage == Stage::Search) {
        if (m_count == bitsOfSearch) {
            takeSearch();
        }
    } else if (m_count == bitsOfByte) {
        takeByte();
    }
}

void OneWireAnalyzer::takeByte()
{
    std::uint64_t value = 0;
    for (unsigned i = 0; i < bitsOfByte; ++i) {
        value |= std::uint64_t(m_bits[i] & 1U) << i;
    }
    m_count = 0;
    FrameData frame{.firstSample = m_first, .lastSample = m_last, .data = value, .kind = OneWireResults::Byte};
    switch (m_stage) {
    case Stage::Command:
        takeCommand(frame);
        break;
    case Stage::Code:
        takeCodeByte(frame);
        break;
    case Stage::Function:
        frame.line = OneWireResults::Function;
        break;
    default:
        frame.line = OneWireResults::Plain;
        break;
    }
    results().add(frame);
}

void OneWireAnalyzer::takeCommand(FrameData &frame)
{
    frame.line = OneWireResults::Command;
    m_codeBytes = 0;
    m_code = 0;
    switch (frame.data) {
    case oneWire::ReadRom:
    case oneWire::MatchRom:
    case oneWire::OverdriveMatchRom:
        m_stage = Stage::Code;
        break;
    case oneWire::SearchRom:
    case oneWire::AlarmSearch:
        m_stage = Stage::Search;
        m_isAlarm = frame.data == oneWire::AlarmSearch;
        break;
    default:
        m_stage = Stage::Function;
        break;
    }
    const bool isOverdrive = frame.data == oneWire::OverdriveSkipRom || frame.data == oneWire::OverdriveMatchRom;
    m_isOverdrive = m_isOverdrive || (isOverdrive && m_settings.speed != OneWireSpeed::Standard);
}

void OneWireAnalyzer::takeCodeByte(FrameData &frame)
{
    frame.line = OneWireResults::Code;
    frame.extra = m_codeBytes;
    m_code |= frame.data << (8 * m_codeBytes);
    if (++m_codeBytes == OneWireResults::codeBytes) {
        frame.data2 = m_code;
        if (!isCodeRight(m_code)) {
            frame.flags = OneWireResults::CrcError;
            results().mark(m_settings.line, m_last, MarkerType::ErrorX);
        }
        m_stage = Stage::Function;
    }
}

/// Each device sends a bit of its code and the complement, then the controller chooses who stays (Maxim application
/// note 187).
void OneWireAnalyzer::takeSearch()
{
    FrameData frame{.firstSample = m_first, .lastSample = m_last, .kind = OneWireResults::Search};
    bool isNobody = false;
    for (std::size_t i = 0; i < bitsOfSearch / 3; ++i) {
        const bool bit = m_bits[3 * i] == '1';
        const bool complement = m_bits[3 * i + 1] == '1';
        frame.data |= std::uint64_t(m_bits[3 * i + 2] & 1U) << i;
        frame.data2 |= std::uint64_t(!bit && !complement) << i;
        isNobody = isNobody || (bit && complement);
    }
    unsigned flags = isCodeRight(frame.data) ? 0U : unsigned(OneWireResults::CrcError);
    flags |= isNobody ? unsigned(OneWireResults::NoDevice) : 0U;
    if (flags != 0) {
        results().mark(m_settings.line, m_last, MarkerType::ErrorX);
    }
    flags |= m_isAlarm ? unsigned(OneWireResults::Alarm) : 0U;
    frame.flags = std::uint16_t(flags);
    results().add(frame);
    m_count = 0;
    m_stage = Stage::Function;
}

/// The bits that are not enough for an element.
void OneWireAnalyzer::addRest()
{
    if (m_count > 0) {
        results().mark(m_settings.line, m_last, MarkerType::ErrorX);
        results().add({.firstSample = m_first,
                       .lastSample = m_last,
                       .data = results().keep(std::span(m_bits.data(), m_count)),
                       .kind = OneWireResults::Rest,
                       .extra = m_count});
    }
    m_count = 0;
}
