#include "LcdResults.h"

#include "LcdMemory.h"

using lux::FrameText;
using lux::FrameValues;
using lux::ShortText;

namespace {

constexpr unsigned bitsOfByte = 8;
constexpr std::uint64_t busyFlag = 0x80;

/// The character ROM has ASCII there, but for a yen sign and two arrows (HD44780U data sheet, table 4).
bool isCharacter(std::uint64_t code)
{
    return code >= 0x20 && code <= 0x7d && code != 0x5c;
}

const char *nameOf(LcdRam ram)
{
    switch (ram) {
    case LcdRam::Display:
        return "DDRAM";
    case LcdRam::Characters:
        return "CGRAM";
    case LcdRam::Graphics:
        return "GDRAM";
    default:
        return "RAM";
    }
}

} // namespace

LcdResults::LcdResults(const LcdSettings &settings) : m_controller(settings.controller)
{
    // On the highest data line, so that an access stands once.
    const std::vector<Channel> bus = settings.bus();
    if (!bus.empty() && bus.back().isDefined()) {
        showBubblesOn(bus.back());
    }
}

void LcdResults::describe(const FrameData &frame, FrameText &out) const
{
    switch (frame.kind) {
    case Command:
        describeCommand(frame, out);
        break;
    case Status:
        describeStatus(frame, out);
        break;
    case Nibble:
        out.add("!");
        out.add("Nibble");
        out.add("Half a byte ", out.number(frame.data, bitsOfByte / 2));
        break;
    default:
        describeData(frame, out);
        break;
    }
}

void LcdResults::describeCommand(const FrameData &frame, FrameText &out) const
{
    const LcdInstruction what =
        lcdInstruction(m_controller, std::uint8_t(frame.data), (frame.flags & Extended) != 0, out.base());
    const ShortText code = out.number(frame.data, bitsOfByte);
    const bool hasDetail = !what.detail.view().empty();
    out.add(code);
    out.add(what.name);
    out.add(what.name, hasDetail ? ": " : "", what.detail, " (", code, ")", half(frame));
}

void LcdResults::describeStatus(const FrameData &frame, FrameText &out) const
{
    const bool isBusy = (frame.data & busyFlag) != 0;
    out.add(isBusy ? "B" : "R");
    out.add(isBusy ? "Busy" : "Ready");
    if (m_controller == LcdController::Ks0108) {
        out.add(isBusy ? "Busy" : "Ready", (frame.data & 0x20) != 0 ? ", display off" : ", display on",
                (frame.data & 0x10) != 0 ? ", in reset" : "", half(frame));
    } else {
        out.add(isBusy ? "Busy" : "Ready", ", address ", out.number(frame.data & ~busyFlag, bitsOfByte - 1));
    }
}

void LcdResults::describeData(const FrameData &frame, FrameText &out) const
{
    const auto ram = LcdRam(frame.line);
    const bool isText = ram != LcdRam::Characters && ram != LcdRam::Graphics && m_controller != LcdController::Ks0108 &&
                        isCharacter(frame.data);
    const ShortText number = out.number(frame.data, bitsOfByte);
    ShortText shown;
    if (isText) {
        shown.add('\'');
        shown.add(char(frame.data));
        shown.add('\'');
    }
    ShortText where;
    if (ram == LcdRam::Display || ram == LcdRam::Characters) {
        where.add(frame.kind == Data ? " to " : " from ");
        where.add(nameOf(ram));
        where.add(" ");
        where.add(out.number(frame.data2, bitsOfByte - 1).view());
    } else if (ram == LcdRam::Graphics) {
        where.add(frame.kind == Data ? " to GDRAM" : " from GDRAM");
    }
    out.add(isText ? shown : number);
    out.add(frame.kind == Data ? "Data " : "Read ", isText ? shown : number);
    const bool tellsCharacter = out.base() == DisplayBase::Ascii || out.base() == DisplayBase::AsciiHex;
    const bool showsBoth = isText && !tellsCharacter;
    out.add(frame.kind == Data ? "Data " : "Read ", number, showsBoth ? " " : "", showsBoth ? shown : ShortText(),
            where, half(frame));
}

/// Which half of the display is meant, where there are two.
ShortText LcdResults::half(const FrameData &frame) const
{
    static constexpr const char *names[] = {"", ", left half", ", right half", ", both halves"};
    return ShortText(m_controller == LcdController::Ks0108 ? names[frame.extra & 3U] : "");
}

void LcdResults::values(const FrameData &frame, FrameValues &out) const
{
    static constexpr const char *kinds[] = {"command", "data", "status", "read", "nibble"};
    out.kind(kinds[frame.kind]).number("v", frame.data);
    if (m_controller == LcdController::Ks0108) {
        out.number("cs", frame.extra);
    }
}

std::span<const char *const> LcdResults::columns() const
{
    static constexpr const char *names[] = {"v", "cs"};
    return names;
}

void LcdResults::exportFile(lux::ExportWriter &out, std::uint32_t optionId) const
{
    if (optionId == LcdSettings::ShownText) {
        exportText(out);
    } else {
        exportFrames(out);
    }
}

/// A line for what is written to the display in a row: time, tab, the address where it begins, tab, the text. A
/// character that is not ASCII is a full stop.
void LcdResults::exportText(lux::ExportWriter &out) const
{
    FrameText numbers;
    numbers.start(FrameText::Purpose::Tabular, Channel(), out.base());
    const std::uint64_t count = frameCount();
    bool isOpen = false;
    for (std::uint64_t i = 0; i < count; ++i) {
        const FrameData one = frame(i);
        out.progress(i, count);
        if (one.kind == Status || one.kind == Nibble) {
            continue; // asked in between
        }
        const auto ram = LcdRam(one.line);
        if (one.kind != Data || (ram != LcdRam::Display && ram != LcdRam::Unknown)) {
            out.write(isOpen ? "\n" : "");
            isOpen = false;
            continue;
        }
        if (!isOpen) {
            out.write(out.seconds(one.firstSample));
            out.write("\t");
            if (ram == LcdRam::Display) {
                out.write(numbers.number(one.data2, bitsOfByte - 1));
            }
            out.write("\t");
            isOpen = true;
        }
        const char shown[] = {isCharacter(one.data) ? char(one.data) : '.', '\0'};
        out.write(shown);
    }
    out.write(isOpen ? "\n" : "");
}
