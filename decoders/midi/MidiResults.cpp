#include "MidiResults.h"

#include "MidiNames.h"

#include <string_view>

using lux::FrameText;
using lux::FrameValues;
using lux::ShortText;

namespace {

constexpr unsigned bitsOfTwo = 14; ///< of a number that two bytes of data hold

} // namespace

MidiResults::MidiResults(const MidiSettings &settings) : m_line(settings.rx)
{
    showBubblesOn(m_line);
}

FrameData MidiResults::made(Kind kind, std::span<const std::uint8_t> bytes, std::uint8_t status, unsigned flags)
{
    FrameData frame{.data2 = status, .kind = kind, .extra = std::uint32_t(bytes.size())};
    if (bytes.size() > sizeof frame.data) {
        frame.data = keep(bytes);
        flags |= Kept;
    } else {
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            frame.data |= std::uint64_t(bytes[i]) << 8 * i;
        }
    }
    frame.flags = std::uint16_t(flags);
    return frame;
}

MidiResults::Bytes MidiResults::bytesOf(const FrameData &frame) const
{
    Bytes all;
    all.count = frame.extra;
    if (has(frame, Kept)) {
        all.kept = bytes(frame.data);
    } else {
        for (std::size_t i = 0; i < all.few.size(); ++i) {
            all.few[i] = std::uint8_t(frame.data >> 8 * i);
        }
    }
    return all;
}

// ---- texts ----------------------------------------------------------------------------------------------------------

void MidiResults::describe(const FrameData &frame, FrameText &out) const
{
    switch (frame.kind) {
    case Message:
        describeMessage(frame, out);
        break;
    case RealTime: {
        const std::string_view name = midiNames::ofRealTime(std::uint8_t(frame.data));
        out.add(name.substr(0, 1));
        out.add(name);
        break;
    }
    case Error: {
        const Bytes all = bytesOf(frame);
        out.add("!");
        out.add("Error");
        if (has(frame, FramingError)) {
            out.addBytes("Framing error: ", all.all());
        } else {
            out.addBytes(frame.data2 == 0 ? "No message: " : "Incomplete message: ", all.all());
        }
        break;
    }
    default:
        break;
    }
}

void MidiResults::describeMessage(const FrameData &frame, FrameText &out) const
{
    const Bytes all = bytesOf(frame);
    const auto status = std::uint8_t(frame.data2);
    const auto data = has(frame, Running) ? all.all() : all.all().subspan(1);
    if (status == MidiParser::systemExclusive) {
        const std::string_view name = midiNames::ofExclusive(all.all());
        out.add("X");
        out.add("SysEx");
        ShortText text("System exclusive");
        if (!name.empty()) {
            text.add(", ");
            text.add(name);
        }
        out.add(text);
        text.add(": ");
        out.addBytes(text, all.all());
    } else if (status < MidiParser::systemExclusive) {
        describeChannelMessage(status, data, has(frame, Running), out);
    } else {
        describeCommon(status, data, out);
    }
}

/// Channel voice and channel mode messages (tables 1 to 4): data of one or two bytes.
void MidiResults::describeChannelMessage(std::uint8_t status, std::span<const std::uint8_t> data, bool isRunning,
                                         FrameText &out) const
{
    const ShortText first = out.number(data[0], 7);
    const ShortText second = data.size() > 1 ? out.number(data[1], 7) : ShortText();
    const ShortText note = midiNames::ofNote(data[0]);
    ShortText where("Channel ");
    where.add(lux::formatCount((status & 0x0fU) + 1));
    where.add(isRunning ? " (running): " : ": ");
    switch (status >> 4) {
    case 0x8:
    case 0x9: {
        const bool isOn = status >> 4 == 0x9 && data[1] != 0; // a velocity of zero turns the note off
        out.add(isOn ? "+" : "-");
        out.add(note);
        out.add(isOn ? "On " : "Off ", note);
        out.add(isOn ? "Note on " : "Note off ", note);
        out.add(where, isOn ? "note on " : "note off ", note, ", velocity ", second);
        break;
    }
    case 0xa:
        out.add("P");
        out.add("Pressure ", note);
        out.add(where, "key pressure ", note, ", ", second);
        break;
    case 0xb: {
        const ShortText name = midiNames::ofController(data[0]);
        out.add("C");
        out.add(name);
        out.add(name, " ", second);
        out.add(where, "controller ", first, " (", name, "), ", second);
        break;
    }
    case 0xc:
        out.add("Pg");
        out.add("Program ", first);
        out.add(where, "program ", first);
        break;
    case 0xd:
        out.add("P");
        out.add("Pressure ", first);
        out.add(where, "channel pressure ", first);
        break;
    default: {
        constexpr std::int64_t middle = 8192; // decimal numbers tell how far it is from there
        const std::int64_t position = data[1] << 7 | data[0];
        const bool isDecimal = out.base() == DisplayBase::Decimal;
        const ShortText bend =
            isDecimal ? lux::formatCount(position - middle) : out.number(std::uint64_t(position), bitsOfTwo);
        out.add("B");
        out.add("Bend ", bend);
        out.add(where, "pitch bend ", bend);
        break;
    }
    }
}

/// System common messages (table 5).
void MidiResults::describeCommon(std::uint8_t status, std::span<const std::uint8_t> data, FrameText &out) const
{
    switch (status) {
    case 0xf1:
        out.add("T");
        out.add("Time code");
        out.add("Time code quarter frame, piece ", lux::formatCount(data[0] >> 4), ": ",
                out.number(data[0] & 0x0fU, 4));
        break;
    case 0xf2:
        out.add("SP");
        out.add("Song position");
        out.add("Song position ", out.number(unsigned(data[1] << 7 | data[0]), bitsOfTwo));
        break;
    case 0xf3:
        out.add("SS");
        out.add("Song select");
        out.add("Song select ", out.number(data[0], 7));
        break;
    default:
        out.add("TR");
        out.add("Tune request");
        break;
    }
}

// ---- values ---------------------------------------------------------------------------------------------------------

void MidiResults::values(const FrameData &frame, FrameValues &out) const
{
    const Bytes all = bytesOf(frame);
    out.kind(frame.kind == Message ? "message" : frame.kind == RealTime ? "realtime" : "error").hex("v", all.all());
    if (frame.kind == Message && has(frame, Running)) {
        out.hex("status", frame.data2, 2);
    }
    if (has(frame, FramingError)) {
        out.number("fe", 1);
    }
}

std::span<const char *const> MidiResults::columns() const
{
    static constexpr const char *names[] = {"v", "status", "fe"};
    return names;
}
