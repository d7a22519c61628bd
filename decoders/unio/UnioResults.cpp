#include "UnioResults.h"

#include "common/MessageExport.h"

#include <string_view>

using lux::FrameText;
using lux::FrameValues;
using lux::ShortText;

namespace {

/// The commands of serial EEPROMs on the bus (DS22067, table 4-1); empty for others.
std::string_view commandName(std::uint64_t command)
{
    switch (command) {
    case 0x03:
        return "READ";
    case 0x05:
        return "RDSR";
    case 0x06:
        return "CRRD";
    case 0x67:
        return "SETAL";
    case 0x6c:
        return "WRITE";
    case 0x6d:
        return "ERAL";
    case 0x6e:
        return "WRSR";
    case 0x91:
        return "WRDI";
    case 0x96:
        return "WREN";
    default:
        return {};
    }
}

std::string_view roleName(std::uint8_t role)
{
    switch (role) {
    case UnioResults::Device:
        return "Device ";
    case UnioResults::Command:
        return "Command ";
    case UnioResults::AddressHigh:
        return "Address high ";
    case UnioResults::AddressLow:
        return "Address low ";
    case UnioResults::Status:
        return "Status ";
    default:
        return "Data ";
    }
}

} // namespace

UnioResults::UnioResults(const UnioSettings &settings) : m_line(settings.line)
{
    showBubblesOn(m_line);
}

void UnioResults::describe(const FrameData &frame, FrameText &out) const
{
    switch (frame.kind) {
    case Standby:
        out.add("S");
        out.add("Standby");
        out.add("Standby for ", lux::formatDuration(frame.lastSample - frame.firstSample + 1, GetSampleRate()));
        break;
    case Header:
        out.add("H");
        out.add("Header");
        out.add("Start header", (frame.flags & Sak) != 0 ? ", SAK" : "");
        break;
    case Byte:
        describeByte(frame, out);
        break;
    case Cut:
        out.add("!");
        out.add("Cut");
        out.add("Byte cut after ", lux::formatCount(frame.extra), frame.extra == 1 ? " bit" : " bits");
        break;
    default:
        break;
    }
}

void UnioResults::describeByte(const FrameData &frame, FrameText &out) const
{
    const ShortText number = out.number(frame.data, 8);
    const bool isAnswered = (frame.flags & Sak) != 0;
    const std::string_view mak = (frame.flags & Mak) != 0 ? ", MAK" : ", NoMAK";
    const std::string_view sak = isAnswered ? ", SAK" : ", NoSAK";
    const std::string_view name = frame.line == Command ? commandName(frame.data) : std::string_view();
    const std::string_view mark = isAnswered ? "" : " !";
    out.add(number, mark);
    if (!name.empty()) {
        out.add(name, mark);
        out.add(name, " (", number, ")", mark);
        out.add("Command ", name, " (", number, ")", mak, sak);
    } else {
        out.add(roleName(frame.line), number, mark);
        out.add(roleName(frame.line), number, mak, sak);
    }
}

void UnioResults::values(const FrameData &frame, FrameValues &out) const
{
    switch (frame.kind) {
    case Standby:
        out.kind("standby");
        break;
    case Cut:
        out.kind("cut").number("n", frame.extra).number("v", frame.data);
        break;
    default:
        out.kind(frame.kind == Header ? "header" : "byte").number("v", frame.data);
        out.number("mak", (frame.flags & Mak) != 0).number("sak", (frame.flags & Sak) != 0);
        break;
    }
}

std::span<const char *const> UnioResults::columns() const
{
    static constexpr const char *names[] = {"v", "mak", "sak", "n"};
    return names;
}

void UnioResults::exportFile(lux::ExportWriter &out, std::uint32_t optionId) const
{
    if (optionId == UnioSettings::Messages) {
        exportMessages(out);
    } else {
        exportFrames(out);
    }
}

/// A line from start header to start header: "0.000012 0xA0 READ 0x00 0x12 0x34".
void UnioResults::exportMessages(lux::ExportWriter &out) const
{
    FrameText numbers;
    numbers.start(FrameText::Purpose::Tabular, Channel(), out.base());
    lux::MessageExport messages(out);
    const std::uint64_t count = frameCount();
    for (std::uint64_t i = 0; i < count; ++i) {
        const FrameData one = frame(i);
        if (one.kind == Header) {
            messages.begin(one);
        } else if (one.kind == Standby) {
            messages.end();
        } else {
            if (!messages.isOpen()) {
                messages.begin(one);
            }
            const std::string_view name = one.line == Command ? commandName(one.data) : std::string_view();
            const ShortText number = numbers.number(one.data, 8);
            messages.add(one,
                         one.kind == Cut ? "cut"
                         : name.empty()  ? number.view()
                                         : name,
                         one.kind == Byte && (one.flags & Sak) == 0 ? "!" : "");
        }
        out.progress(i, count);
    }
    messages.end();
}
