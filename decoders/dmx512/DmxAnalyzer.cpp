#include "DmxAnalyzer.h"

#include "common/AsyncMarks.h"
#include "common/BitRateFinder.h"
#include "common/Duration.h"

#include <string>

using lux::AsyncCharacter;
using lux::AsyncFormat;
using lux::AsyncLine;
using lux::BitGrid;
using lux::Sample;

LUX_PLUGIN(DmxAnalyzer)

namespace {

// What a receiver must take (ANSI E1.11, table 7).
constexpr std::int64_t leastBreak = 88000;   ///< ns
constexpr std::int64_t leastMark = 8000;     ///< ns
constexpr std::int64_t longest = 1000000000; ///< ns: marks and pauses are shorter than a second

constexpr std::uint32_t mostSlots = 512;

} // namespace

std::uint32_t DmxAnalyzer::NeededSampleRate()
{
    return std::uint32_t(leastSamplesPerBit * m_settings.baudrate.value());
}

/// A slot: a start bit, eight data bits with the lowest first, two stop bits (ANSI E1.11, 8.2).
AsyncFormat DmxAnalyzer::format() const
{
    return {.stopQuarters = 2 * BitGrid::quarters, .idleHigh = !m_settings.invert};
}

void DmxAnalyzer::decode()
{
    const std::int64_t rate = m_settings.baudrate.value() != 0 ? m_settings.baudrate.value() : findBitRate();
    const BitGrid grid(sampleRate(), rate);
    if (grid.isCoarserThan(leastSamplesPerBit)) {
        fail(lux::tooFewSamples(rate, leastSamplesPerBit));
    }
    AsyncLine line(reader(m_settings.rx), grid, format());
    Packet packet;
    while (line.findStart()) {
        const AsyncCharacter character = line.read();
        if (character.isBreak && character.last + 1 >= sampleCount()) {
            return; // the capture cuts it
        }
        const Sample samples = character.last - character.first + 1;
        // An edge is known to a sample, so a break that is one too short may be long enough.
        if (character.isBreak && samples + 1 >= times(leastBreak, rate)) {
            addBreak(line, character, packet);
        } else if (packet.isOpen) {
            addSlot(line, character, packet, grid);
        }
    }
}

std::int64_t DmxAnalyzer::findBitRate()
{
    const std::int64_t found = lux::BitRateFinder(reader(m_settings.rx), sampleRate(), format()).find();
    if (found < 1) {
        fail("No bit rate can be found: the line has too few edges");
    }
    tell("Bit rate found: " + std::to_string(found) + " bits/s");
    return found;
}

/// A time of the standard in samples; at another rate than the standard's it scales with the bit.
Sample DmxAnalyzer::times(std::int64_t nanoseconds, std::int64_t rate) const
{
    return lux::samplesIn(nanoseconds * DmxSettings::standardRate / rate, sampleRate());
}

void DmxAnalyzer::addBreak(const AsyncLine &line, const AsyncCharacter &character, Packet &packet)
{
    packet = {.isOpen = true, .breakEnd = character.last + 1, .end = character.last + 1};
    results().mark(m_settings.rx, line.start(), MarkerType::Start);
    const bool isTooLong = character.last - character.first >= lux::samplesIn(longest, sampleRate());
    results().add({.firstSample = character.first,
                   .lastSample = character.last,
                   .kind = DmxResults::Break,
                   .flags = isTooLong ? std::uint16_t(DmxResults::TooLong) : std::uint16_t(0)});
}

void DmxAnalyzer::addSlot(const AsyncLine &line, const AsyncCharacter &character, Packet &packet, const BitGrid &grid)
{
    const bool isStart = packet.next == 0;
    const Sample pause = character.first - packet.end;
    const bool isTooLong = pause >= lux::samplesIn(longest, sampleRate());
    if (isStart) {
        const bool isTooShort = pause + 1 < times(leastMark, grid.bitRate());
        results().add({.firstSample = packet.breakEnd,
                       .lastSample = character.first - 1,
                       .kind = DmxResults::Mark,
                       .flags = std::uint16_t((isTooShort ? unsigned(DmxResults::TooShort) : 0U) |
                                              (isTooLong ? unsigned(DmxResults::TooLong) : 0U))});
    }
    // A break that is too short for one is a slot of zero whose stop bits are missing.
    const bool hasFramingError = character.stopMissing || character.isBreak;
    lux::markCharacter(results(), m_settings.rx, line, character);
    results().add({.firstSample = character.first,
                   .lastSample = character.last,
                   .data = character.value,
                   .kind = std::uint8_t(isStart ? DmxResults::Start : DmxResults::Slot),
                   .flags = std::uint16_t((hasFramingError ? unsigned(DmxResults::FramingError) : 0U) |
                                          (isTooLong && !isStart ? unsigned(DmxResults::TooLong) : 0U) |
                                          (packet.next > mostSlots ? unsigned(DmxResults::TooManySlots) : 0U)),
                   .extra = packet.next});
    ++packet.next;
    packet.end = character.last + 1;
}
