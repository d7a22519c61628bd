#include "MidiAnalyzer.h"

#include "common/AsyncMarks.h"
#include "common/BitRateFinder.h"

#include <string>

using lux::AsyncCharacter;
using lux::AsyncLine;
using lux::BitGrid;

LUX_PLUGIN(MidiAnalyzer)

namespace {

/// A line that is no MIDI line never ends a message: what there is is then shown piece by piece.
std::size_t mostBytes(const MidiParser::Pending &pending)
{
    constexpr std::size_t mostStray = 256;
    constexpr std::size_t mostExclusive = 1 << 20;
    return pending.isStray ? mostStray : mostExclusive;
}

} // namespace

std::uint32_t MidiAnalyzer::NeededSampleRate()
{
    return std::uint32_t(leastSamplesPerBit * m_settings.baudrate.value());
}

void MidiAnalyzer::decode()
{
    const std::int64_t rate = m_settings.baudrate.value() != 0 ? m_settings.baudrate.value() : findBitRate();
    const BitGrid grid(sampleRate(), rate);
    if (grid.isCoarserThan(leastSamplesPerBit)) {
        fail(lux::tooFewSamples(rate, leastSamplesPerBit));
    }
    AsyncLine line(reader(m_settings.rx), grid, format());
    const Channel rx = m_settings.rx;
    Receiver receiver;
    while (line.findStart()) {
        const AsyncCharacter character = line.read();
        if (character.stopMissing && !character.isBreak && character.first < line.length()) {
            line.forget(); // it began before the capture, and this was no start bit
            continue;
        }
        const auto byte = std::uint8_t(character.value);
        const bool isRealTime = !character.stopMissing && MidiParser::isRealTime(byte);
        if (character.stopMissing || (!isRealTime && receiver.parser.interrupts(byte))) {
            addPending(receiver, false); // before this one has its markers: they are in the order of time
        }
        lux::markCharacter(results(), rx, line, character);
        if (character.stopMissing) {
            addFramingError(receiver, character);
        } else if (isRealTime) {
            takeRealTime(receiver, character);
        } else {
            take(receiver, character);
        }
    }
}

std::int64_t MidiAnalyzer::findBitRate()
{
    const std::int64_t found = lux::BitRateFinder(reader(m_settings.rx), sampleRate(), format()).find();
    if (found < 1) {
        fail("No bit rate can be found: the line has too few edges");
    }
    tell("Bit rate found: " + std::to_string(found) + " bits/s");
    return found;
}

void MidiAnalyzer::take(Receiver &receiver, const AsyncCharacter &character)
{
    const auto byte = std::uint8_t(character.value);
    if (!receiver.parser.isPending()) {
        receiver.first = character.first;
    }
    receiver.last = character.last;
    if (receiver.hasPlace) {
        receiver.raw.push_back(byte);
    }
    if (receiver.parser.take(byte) == MidiParser::Event::Complete) {
        addPending(receiver, true);
    } else if (receiver.parser.pending().bytes.size() >= mostBytes(receiver.parser.pending())) {
        addPending(receiver, false);
    }
}

/// May stand within any message, which goes on behind it.
void MidiAnalyzer::takeRealTime(Receiver &receiver, const AsyncCharacter &character)
{
    const auto byte = std::uint8_t(character.value);
    if (receiver.parser.isPending()) {
        if (!receiver.hasPlace) {
            receiver.place = results().open(receiver.first);
            receiver.hasPlace = true;
            receiver.raw = receiver.parser.pending().bytes;
        }
        receiver.raw.push_back(byte);
        receiver.last = character.last;
    }
    FrameData frame = results().made(MidiResults::RealTime, {&byte, 1}, byte, 0);
    frame.firstSample = character.first;
    frame.lastSample = character.last;
    results().add(frame);
}

/// Adds what is pending: a message, or what there is of one with all that came meanwhile.
void MidiAnalyzer::addPending(Receiver &receiver, bool isWhole)
{
    if (!receiver.parser.isPending()) {
        return;
    }
    const MidiParser::Pending &pending = receiver.parser.pending();
    const bool isExclusive = pending.status == MidiParser::systemExclusive;
    const bool isSound = isWhole && !pending.isStray && (!isExclusive || MidiParser::isSoundExclusive(pending.bytes));
    const bool showsRaw = !isSound && receiver.hasPlace;
    FrameData frame =
        results().made(isSound ? MidiResults::Message : MidiResults::Error, showsRaw ? receiver.raw : pending.bytes,
                       pending.isStray ? 0 : pending.status, pending.isRunning ? unsigned(MidiResults::Running) : 0U);
    frame.firstSample = receiver.first;
    frame.lastSample = receiver.last;
    if (!isSound) {
        results().mark(m_settings.rx, receiver.last, MarkerType::ErrorX);
    }
    if (receiver.hasPlace) {
        results().fill(receiver.place, frame);
    } else {
        results().add(frame);
    }
    receiver.hasPlace = false;
    receiver.parser.drop();
}

/// A byte that is not sound also leaves no status to run on.
void MidiAnalyzer::addFramingError(Receiver &receiver, const AsyncCharacter &character)
{
    receiver.parser.forgetStatus();
    const auto byte = std::uint8_t(character.value);
    FrameData frame = results().made(MidiResults::Error, {&byte, 1}, 0, MidiResults::FramingError);
    frame.firstSample = character.first;
    frame.lastSample = character.last;
    results().add(frame);
}
