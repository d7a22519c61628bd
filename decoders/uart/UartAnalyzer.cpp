#include "UartAnalyzer.h"

#include "common/AsyncMarks.h"
#include "common/BitRateFinder.h"

#include <algorithm>
#include <string>
#include <utility>

using lux::AsyncCharacter;
using lux::BitGrid;
using lux::Sample;

LUX_PLUGIN(UartAnalyzer)

std::uint32_t UartAnalyzer::NeededSampleRate()
{
    return std::uint32_t(std::min<std::int64_t>(leastSamplesPerBit * m_settings.baudrate.value(), UINT32_MAX));
}

/// Start-stop characters (TIA-232-F, 2.1): each is found by its start edge and read on its own clock.
void UartAnalyzer::decode()
{
    const std::int64_t rate = m_settings.baudrate.value() != 0 ? m_settings.baudrate.value() : findBitRate();
    const BitGrid grid(sampleRate(), rate);
    if (grid.isCoarserThan(leastSamplesPerBit)) {
        fail(lux::tooFewSamples(rate, leastSamplesPerBit));
    }
    m_hasAddressBit = m_settings.addressBit;
    m_idleShown = m_settings.idleBits > 0 ? grid.endOf(m_settings.idleBits) : INT64_MAX;
    std::vector<Direction> lines;
    addDirection(lines, UartResults::Rx, grid);
    addDirection(lines, UartResults::Tx, grid);
    for (;;) {
        const auto first = std::min_element(lines.begin(), lines.end(), [](const Direction &a, const Direction &b) {
            return a.isOver != b.isOver ? b.isOver : a.next < b.next;
        });
        if (first == lines.end() || first->isOver) {
            return;
        }
        if (first->isIdle) {
            addIdle(*first);
        } else {
            addCharacter(*first);
            findNext(*first);
        }
    }
}

std::int64_t UartAnalyzer::findBitRate()
{
    const std::pair<Channel, bool> lines[] = {{m_settings.rx, m_settings.invertRx},
                                              {m_settings.tx, m_settings.invertTx}};
    for (const auto &[channel, inverted] : lines) {
        if (!channel.isDefined()) {
            continue;
        }
        const lux::BitRateFinder finder(reader(channel), sampleRate(), m_settings.format(inverted));
        if (const std::int64_t found = finder.find(); found > 0) {
            tell("Bit rate found: " + std::to_string(found) + " bits/s");
            return found;
        }
    }
    fail("No bit rate can be found: the lines have too few edges");
}

void UartAnalyzer::addDirection(std::vector<Direction> &all, UartResults::Line number, const BitGrid &grid)
{
    const bool isRx = number == UartResults::Rx;
    const Channel channel = isRx ? m_settings.rx : m_settings.tx;
    if (!channel.isDefined()) {
        return;
    }
    const lux::AsyncFormat format = m_settings.format(isRx ? m_settings.invertRx : m_settings.invertTx);
    all.push_back({.line = lux::AsyncLine(reader(channel), grid, format), .channel = channel, .number = number});
    findNext(all.back());
}

void UartAnalyzer::findNext(Direction &direction) const
{
    if (direction.hasBreak) {
        direction.next = direction.idleFrom;
        return;
    }
    direction.isOver = !direction.line.findStart();
    direction.next = direction.line.start();
    const Sample idle = direction.next - direction.idleFrom;
    direction.isIdle = !direction.isOver && direction.idleFrom > 0 && idle >= m_idleShown;
    if (direction.isIdle) {
        direction.next = direction.idleFrom;
    }
}

void UartAnalyzer::addIdle(Direction &direction)
{
    results().add({.firstSample = direction.idleFrom,
                   .lastSample = direction.line.start() - 1,
                   .kind = UartResults::Idle,
                   .line = direction.number});
    direction.isIdle = false;
    direction.next = direction.line.start();
}

void UartAnalyzer::addCharacter(Direction &direction)
{
    const AsyncCharacter character = direction.hasBreak ? direction.late : direction.line.read();
    if (character.stopMissing && !character.isBreak && character.first < direction.line.length()) {
        direction.line.forget(); // it began before the capture, and this was no start bit
        return;
    }
    UartResults &out = results();
    lux::markCharacter(out, direction.channel, direction.line, character);
    out.add({.firstSample = character.first,
             .lastSample = character.last,
             .data = character.value,
             .kind = std::uint8_t(character.isBreak ? UartResults::Break : UartResults::Byte),
             .line = direction.number,
             .flags = flagsOf(character)});
    direction.idleFrom = character.last + 1;
    direction.hasBreak = direction.line.breakWithin(character, direction.line.length()) < sampleCount();
    if (direction.hasBreak) {
        direction.late = direction.line.readBreak();
        direction.late.first = direction.idleFrom;
    }
}

std::uint16_t UartAnalyzer::flagsOf(const AsyncCharacter &character) const
{
    if (character.isBreak) {
        return 0;
    }
    unsigned flags = 0;
    if (character.parityWrong) {
        flags |= UartResults::ParityError;
    }
    if (character.stopMissing) {
        flags |= UartResults::FramingError;
    }
    if (m_hasAddressBit && (character.value & 0x100U) != 0) {
        flags |= UartResults::Address;
    }
    return std::uint16_t(flags);
}
