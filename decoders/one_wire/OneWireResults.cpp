#include "OneWireResults.h"

#include "OneWireTimes.h"
#include "common/MessageExport.h"

#include <bit>

using lux::FrameText;
using lux::FrameValues;
using lux::ShortText;

namespace {

/// The commands to the ROM, which all devices have (Maxim book of iButton standards, chapter 5); empty for others.
std::string_view commandName(std::uint64_t command)
{
    switch (command) {
    case oneWire::ReadRom:
        return "Read ROM";
    case oneWire::MatchRom:
        return "Match ROM";
    case oneWire::SkipRom:
        return "Skip ROM";
    case oneWire::SearchRom:
        return "Search ROM";
    case oneWire::AlarmSearch:
        return "Alarm search";
    case oneWire::OverdriveSkipRom:
        return "Overdrive-skip ROM";
    case oneWire::OverdriveMatchRom:
        return "Overdrive-match ROM";
    case oneWire::Resume:
        return "Resume";
    default:
        return {};
    }
}

std::string_view roleName(std::uint8_t role)
{
    switch (role) {
    case OneWireResults::Command:
        return "command";
    case OneWireResults::Code:
        return "code";
    case OneWireResults::Function:
        return "function";
    default:
        return "plain";
    }
}

/// Family, serial number and check as they are printed on devices: "28-EE9427161 01, CRC 0x8D".
ShortText codeText(std::uint64_t code, const FrameText &out, bool wrong)
{
    constexpr char digits[] = "0123456789ABCDEF";
    ShortText text;
    const auto addByte = [&](unsigned number) {
        const std::uint64_t byte = code >> (8 * number) & 0xffU;
        text.add(digits[byte >> 4]);
        text.add(digits[byte & 15U]);
    };
    addByte(0);
    text.add('-');
    for (unsigned i = OneWireResults::codeBytes - 2; i > 0; --i) {
        addByte(i);
    }
    text.add(", CRC ");
    text.add(out.number(code >> 56, 8));
    text.add(wrong ? " wrong" : " right");
    return text;
}

} // namespace

OneWireResults::OneWireResults(const OneWireSettings &settings) : m_line(settings.line)
{
    showBubblesOn(m_line);
}

std::string_view OneWireResults::restOf(const FrameData &frame) const
{
    const std::span<const std::uint8_t> kept = bytes(frame.data);
    return {reinterpret_cast<const char *>(kept.data()), kept.size()};
}

void OneWireResults::describe(const FrameData &frame, FrameText &out) const
{
    switch (frame.kind) {
    case Reset:
        describeReset(frame, out);
        break;
    case Byte:
        describeByte(frame, out);
        break;
    case Search:
        describeSearch(frame, out);
        break;
    case Rest:
        out.add("!");
        out.add("Cut");
        out.add("Byte cut after ", lux::formatCount(frame.extra),
                frame.extra == 1 ? " bit: " : " bits: ", restOf(frame));
        break;
    default:
        break;
    }
}

void OneWireResults::describeReset(const FrameData &frame, FrameText &out) const
{
    const bool isPresent = (frame.flags & Present) != 0;
    const std::string_view word = (frame.flags & Overdrive) != 0 ? "Overdrive reset" : "Reset";
    out.add(isPresent ? "R" : "R!");
    out.add("Reset", isPresent ? "" : " !");
    if ((frame.flags & LongPresence) != 0) {
        out.add(word, ", presence pulse too long");
        return;
    }
    out.add(word, isPresent ? ", presence" : ", no presence");
}

void OneWireResults::describeByte(const FrameData &frame, FrameText &out) const
{
    const ShortText number = out.number(frame.data, 8);
    const std::string_view name = frame.line == Command ? commandName(frame.data) : std::string_view();
    if (frame.line == Code && frame.extra == codeBytes - 1) {
        const bool wrong = (frame.flags & CrcError) != 0;
        out.add(number, wrong ? " !" : "");
        out.add("CRC ", number, wrong ? " wrong" : " right");
        out.add("ROM code ", codeText(frame.data2, out, wrong));
        return;
    }
    out.add(number);
    if (!name.empty()) {
        out.add(name);
        out.add(name, " (", number, ")");
        return;
    }
    switch (frame.line) {
    case Command:
        out.add("ROM command ", number);
        break;
    case Code:
        if (frame.extra == 0) {
            out.add("Family code ", number);
        } else {
            out.add("Serial number ", lux::formatCount(frame.extra), ": ", number);
        }
        break;
    default:
        out.add("Data ", number);
        break;
    }
}

void OneWireResults::describeSearch(const FrameData &frame, FrameText &out) const
{
    const std::string_view word = (frame.flags & Alarm) != 0 ? "Alarm search" : "Search";
    out.add("S");
    out.add(word);
    if ((frame.flags & NoDevice) != 0) {
        out.add(word, ": no device");
        return;
    }
    const ShortText code = codeText(frame.data, out, (frame.flags & CrcError) != 0);
    const int conflicts = std::popcount(frame.data2);
    out.add(code);
    out.add(word, ": ", code);
    if (conflicts > 0) {
        out.add(word, ": ", code, ", ", lux::formatCount(conflicts), conflicts == 1 ? " conflict" : " conflicts");
    }
}

void OneWireResults::values(const FrameData &frame, FrameValues &out) const
{
    switch (frame.kind) {
    case Reset:
        out.kind("reset").flag("present", (frame.flags & Present) != 0);
        out.flag("overdrive", (frame.flags & Overdrive) != 0);
        break;
    case Byte:
        out.kind("byte").number("v", frame.data).text("role", roleName(frame.line));
        if (frame.line == Code && frame.extra == codeBytes - 1) {
            out.hex("code", frame.data2, 2 * codeBytes).flag("crcok", (frame.flags & CrcError) == 0);
        }
        break;
    case Search:
        out.kind("search").hex("v", frame.data, 2 * codeBytes).flag("crcok", (frame.flags & CrcError) == 0);
        out.hex("conflicts", frame.data2, 2 * codeBytes);
        break;
    case Rest:
        out.kind("rest").text("v", restOf(frame));
        break;
    default:
        break;
    }
}

std::span<const char *const> OneWireResults::columns() const
{
    static constexpr const char *names[] = {"v", "role", "present", "overdrive", "code", "crcok", "conflicts"};
    return names;
}

void OneWireResults::exportFile(lux::ExportWriter &out, std::uint32_t optionId) const
{
    if (optionId == OneWireSettings::Messages) {
        exportMessages(out);
    } else {
        exportFrames(out);
    }
}

/// A line from reset to reset: "0.000012 R 0xCC 0x44".
void OneWireResults::exportMessages(lux::ExportWriter &out) const
{
    FrameText numbers;
    numbers.start(FrameText::Purpose::Tabular, Channel(), out.base());
    lux::MessageExport messages(out);
    const std::uint64_t count = frameCount();
    for (std::uint64_t i = 0; i < count; ++i) {
        const FrameData one = frame(i);
        if (one.kind == Reset || i == 0) {
            messages.begin(one);
        }
        switch (one.kind) {
        case Reset:
            messages.add(one, (one.flags & Present) != 0 ? "R" : "R!");
            break;
        case Byte:
            messages.add(one, numbers.number(one.data, 8));
            break;
        case Search:
            messages.add(one, numbers.number(one.data, 64));
            break;
        default:
            messages.add(one, restOf(one));
            break;
        }
        out.progress(i, count);
    }
    messages.end();
}
