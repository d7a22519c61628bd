#include "DmxAnalyzer.h"

#include "common/AsyncMarks.h"
#include "common/BitRateFinder.h"
#include "common/Duration.h"

#include <algorithm>
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
    const auto isCut = [this](const AsyncCharacter &character) {
        return character.isBreak && character.last + 1 >= sampleCount();
    };
    // An edge is known to a sample, so a break that is one too short may be long enough.
    const Sample shortestBreak = times(leastBreak, rate) - 1;
    Packet packet;
    while (line.findStart()) {
        AsyncCharacter character = line.read();
        bool isBreak = character.isBreak && character.last - character.first + 1 >= shortestBreak;
        if (!isBreak && !isCut(character)) {
            const Sample breakBegin = line.breakWithin(character, shortestBreak);
            character.last = std::min(character.last, breakBegin - 1);
            if (packet.isOpen) {
                addSlot(line, character, packet, grid);
            }
            isBreak = breakBegin < sampleCount();
            character = isBreak ? line.readBreak() : character;
        }
        if (isBreak && !isCut(character)) {
            addBreak(character, packet);
        }
    }
}

/// A dark stage has slots of zero only, whose nine low bits a finder takes for one: the standard's rate is tried first.
std::int64_t DmxAnalyzer::findBitRate()
{
    const std::int64_t found = fitsStandardRate()
                                   ? DmxSettings::standardRate
                                   : lux::BitRateFinder(reader(m_settings.rx), sampleRate(), format()).find();
    if (found < 1) {
        fail("No bit rate can be found: the line has too few edges");
    }
    tell("Bit rate found: " + std::to_string(found) + " bits/s");
    return found;
}

/// Whether the line has slots at the rate of the standard, nearly all of them sound.
bool DmxAnalyzer::fitsStandardRate()
{
    constexpr int mostCharacters = 1000;
    constexpr int mostWrong = 10; // percent
    const BitGrid grid(sampleRate(), DmxSettings::standardRate);
    if (grid.isCoarserThan(leastSamplesPerBit)) {
        return false;
    }
    AsyncLine line(reader(m_settings.rx), grid, format());
    int slots = 0;
    int wrong = 0;
    for (int i = 0; i < mostCharacters && line.findStart(); ++i) {
        const AsyncCharacter character = line.read();
        const Sample samples = character.last - character.first + 1;
        const bool isCut = character.isBreak && character.last + 1 >= sampleCount();
        if (!isCut && (!character.isBreak || samples + 1 < times(leastBreak, DmxSettings::standardRate))) {
            ++slots;
            wrong += int(character.stopMissing || character.isBreak);
        }
    }
    return slots > 0 && 100 * wrong <= mostWrong * slots;
}

/// A time of the standard in samples; at another rate than the standard's it scales with the bit.
Sample DmxAnalyzer::times(std::int64_t nanoseconds, std::int64_t rate) const
{
    return lux::samplesIn(nanoseconds * DmxSettings::standardRate / rate, sampleRate());
}

void DmxAnalyzer::addBreak(const AsyncCharacter &character, Packet &packet)
{
    packet = {.isOpen = true, .breakEnd = character.last + 1, .end = character.last + 1};
    results().mark(m_settings.rx, character.first, MarkerType::Start);
    const bool isTooLong = character.last - character.first >= lux::samplesIn(longest, sampleRate());
    if (isTooLong) {
        results().mark(m_settings.rx, character.last, MarkerType::ErrorX);
    }
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
    const bool isTooShort = isStart && pause + 1 < times(leastMark, grid.bitRate());
    const bool isTooMany = packet.next > mostSlots;
    if (isTooShort || isTooLong) {
        results().mark(m_settings.rx, character.first - 1, MarkerType::ErrorX);
    }
    if (isTooMany) {
        results().mark(m_settings.rx, character.first, MarkerType::ErrorX);
    }
    if (isStart) {
        results().add({.firstSample = packet.breakEnd,
                       .lastSample = character.first - 1,
                       .kind = DmxResults::Mark,
                       .flags = std::uint16_t((isTooShort ? unsigned(DmxResults::TooShort) : 0U) |
                                              (isTooLong ? unsigned(DmxResults::TooLong) : 0U))});
    }
    // A break that is too short for one is a slot of zero whose stop bits are missing.
    const bool hasFramingError = character.stopMissing || character.isBreak;
    lux::markWholeOrBroken(results(), m_settings.rx, line, character);
    results().add({.firstSample = character.first,
                   .lastSample = character.last,
                   .data = character.value,
                   .kind = std::uint8_t(isStart ? DmxResults::Start : DmxResults::Slot),
                   .flags = std::uint16_t((hasFramingError ? unsigned(DmxResults::FramingError) : 0U) |
                                          (isTooLong && !isStart ? unsigned(DmxResults::TooLong) : 0U) |
                                          (isTooMany ? unsigned(DmxResults::TooManySlots) : 0U)),
                   .extra = packet.next});
    ++packet.next;
    packet.end = character.last + 1;
}
