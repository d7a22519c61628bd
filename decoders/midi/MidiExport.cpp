#include "MidiResults.h"

#include <array>

using lux::ExportWriter;

namespace {

// Standard MIDI Files 1.0: ticks are 1/25000 of a quarter note of half a second, 20 us; a byte takes 320 us.
constexpr std::uint32_t ticksPerQuarter = 25000;
constexpr std::uint32_t quarterTime = 500000; ///< us
constexpr std::int64_t ticksPerSecond = std::int64_t(ticksPerQuarter) * 1000000 / quarterTime;
constexpr std::int64_t mostDelta = 0x0fffffff; ///< four groups of seven bits
constexpr std::uint8_t escape = 0xf7;          ///< what follows is sent as it is
constexpr std::uint8_t meta = 0xff;

/// Groups of seven bits, the highest first; all but the last have their top bit set.
void writeVariable(ExportWriter &out, std::uint32_t value)
{
    for (unsigned group = 4; group > 0; --group) {
        const std::uint32_t rest = value >> 7 * group;
        if (rest != 0) {
            out.byte(std::uint8_t((rest & 0x7fU) | 0x80U));
        }
    }
    out.byte(std::uint8_t(value & 0x7fU));
}

void patchBig(ExportWriter &out, std::uint64_t at, std::uint32_t value)
{
    const std::array<std::uint8_t, 4> bytes = {std::uint8_t(value >> 24), std::uint8_t(value >> 16),
                                               std::uint8_t(value >> 8), std::uint8_t(value)};
    out.patch(at, bytes);
}

} // namespace

void MidiResults::exportFile(ExportWriter &out, std::uint32_t optionId) const
{
    if (optionId == MidiSettings::StandardMidiFile) {
        exportMidiFile(out);
    } else {
        exportFrames(out);
    }
}

/// Format 0: one track.
void MidiResults::exportMidiFile(ExportWriter &out) const
{
    out.write("MThd");
    out.big(6, 4);
    out.big(0, 2);
    out.big(1, 2);
    out.big(ticksPerQuarter, 2);
    out.write("MTrk");
    const std::uint64_t lengthAt = out.size();
    out.big(0, 4);
    const std::uint64_t begin = out.size();
    writeVariable(out, 0);
    out.byte(meta);
    out.byte(0x51); // tempo
    out.byte(3);
    out.big(quarterTime, 3);
    writeEvents(out);
    writeVariable(out, 0);
    out.byte(meta);
    out.byte(0x2f); // end of track
    out.byte(0);
    patchBig(out, lengthAt, std::uint32_t(out.size() - begin));
}

/// All messages; clocks and the like, which a player makes itself, are left out.
void MidiResults::writeEvents(ExportWriter &out) const
{
    const std::uint64_t count = frameCount();
    const std::int64_t rate = GetSampleRate();
    std::int64_t before = 0;
    for (std::uint64_t i = 0; i < count; ++i) {
        const FrameData one = frame(i);
        if (one.kind == Message) {
            const std::int64_t tick =
                one.firstSample / rate * ticksPerSecond + one.firstSample % rate * ticksPerSecond / rate;
            std::int64_t delta = tick - before;
            for (; delta > mostDelta; delta -= mostDelta) {
                writeVariable(out, std::uint32_t(mostDelta));
                out.byte(meta);
                out.byte(0x01); // a text without characters
                out.byte(0);
            }
            writeVariable(out, std::uint32_t(delta));
            writeEvent(out, one);
            before = tick;
        }
        out.progress(i, count);
    }
}

void MidiResults::writeEvent(ExportWriter &out, const FrameData &frame) const
{
    const Bytes all = bytesOf(frame);
    const auto status = std::uint8_t(frame.data2);
    if (status < MidiParser::systemExclusive) {
        if (has(frame, Running)) {
            out.byte(status); // a file has a running status of its own, which system messages end
        }
        out.write(all.all());
        return;
    }
    const bool isExclusive = status == MidiParser::systemExclusive;
    const auto rest = isExclusive ? all.all().subspan(1) : all.all();
    out.byte(isExclusive ? status : escape);
    writeVariable(out, std::uint32_t(rest.size()));
    out.write(rest);
}
