#include "DmxResults.h"

#include "common/MessageExport.h"

#include <array>
#include <string_view>

using lux::ExportWriter;
using lux::FrameText;
using lux::FrameValues;
using lux::ShortText;

namespace {

struct StartCode {
    std::uint8_t code;
    std::string_view name;
};

/// The alternate start codes that the standard itself lays down (ANSI E1.11, annex D), and those of RDM (E1.20) and
/// of text packets.
std::string_view startCodeName(std::uint64_t code)
{
    static constexpr std::array<StartCode, 6> names = {{{0x00, "dimmer data"},
                                                        {0x17, "text"},
                                                        {0x55, "test"},
                                                        {0x90, "UTF-8 text"},
                                                        {0xcc, "RDM"},
                                                        {0xcf, "system information"}}};
    for (const StartCode &known : names) {
        if (known.code == code) {
            return known.name;
        }
    }
    return code == 0x91 ? "manufacturer's" : "alternate";
}

} // namespace

DmxResults::DmxResults(const DmxSettings &settings) : m_line(settings.rx)
{
    showBubblesOn(m_line);
}

void DmxResults::describe(const FrameData &frame, FrameText &out) const
{
    const ShortText duration = lux::formatDuration(frame.lastSample - frame.firstSample + 1, GetSampleRate());
    const std::string_view fault = has(frame, TooShort) ? ", too short" : has(frame, TooLong) ? ", too long" : "";
    switch (frame.kind) {
    case Break:
        out.add(fault.empty() ? "B" : "!");
        out.add("Break");
        out.add("Break of ", duration, fault);
        break;
    case Mark:
        out.add(fault.empty() ? "M" : "!");
        out.add("Mark");
        out.add("Mark after break of ", duration, fault);
        break;
    case Start:
    case Slot:
        describeValue(frame, out);
        break;
    default:
        break;
    }
}

void DmxResults::describeValue(const FrameData &frame, FrameText &out) const
{
    const ShortText value = out.number(frame.data, 8);
    ShortText errors(has(frame, FramingError) ? ", framing error" : "");
    errors.add(has(frame, TooLong) ? ", pause before it too long" : "");
    errors.add(has(frame, TooManySlots) ? ", more than 512 slots" : "");
    const std::string_view sign = frame.flags != 0 ? " !" : "";
    if (frame.flags != 0) {
        out.add("!");
    }
    if (frame.kind == Start) {
        out.add("SC", sign);
        out.add("SC ", value, sign);
        out.add("Start code ", value, sign);
        out.add("Start code ", value, " (", startCodeName(frame.data), ")", errors);
        return;
    }
    const ShortText number = lux::formatCount(frame.extra);
    out.add(value, sign);
    out.add(number, ": ", value, sign);
    out.add("Slot ", number, ": ", value, errors);
}

void DmxResults::values(const FrameData &frame, FrameValues &out) const
{
    switch (frame.kind) {
    case Break:
        out.kind("break");
        break;
    case Mark:
        out.kind("mark");
        break;
    case Start:
    case Slot:
        out.kind(frame.kind == Start ? "start" : "slot").number("n", frame.extra).number("v", frame.data);
        break;
    default:
        break;
    }
    if (has(frame, FramingError)) {
        out.number("fe", 1);
    }
    if (has(frame, TooShort)) {
        out.number("short", 1);
    }
    if (has(frame, TooLong)) {
        out.number("long", 1);
    }
    if (has(frame, TooManySlots)) {
        out.number("excess", 1);
    }
}

std::span<const char *const> DmxResults::columns() const
{
    static constexpr const char *names[] = {"n", "v", "fe", "short", "long", "excess"};
    return names;
}

void DmxResults::exportFile(ExportWriter &out, std::uint32_t optionId) const
{
    if (optionId == DmxSettings::Packets && out.isCsv()) {
        exportPackets(out);
    } else if (optionId == DmxSettings::Packets) {
        exportPacketTexts(out);
    } else {
        exportFrames(out);
    }
}

/// The time of the break, the start code, and all slots; one line a packet.
void DmxResults::exportPackets(ExportWriter &out) const
{
    out.field("time");
    out.field("start code");
    out.field("slots");
    out.endLine();
    const std::uint64_t count = frameCount();
    std::int64_t packet = 0;
    bool isOpen = false;
    for (std::uint64_t i = 0; i < count; ++i) {
        const FrameData one = frame(i);
        if (one.kind == Break) {
            packet = one.firstSample;
        }
        if (isOpen && (one.kind == Break || one.kind == Start)) {
            out.endLine();
            isOpen = false;
        }
        if (one.kind == Start) {
            out.field(out.seconds(packet));
            isOpen = true;
        }
        if (isOpen) {
            out.field(std::int64_t(one.data));
        }
        out.progress(i, count);
    }
    if (isOpen) {
        out.endLine();
    }
}

/// The same as text: "0.000012 0x00 0x7F 0x80".
void DmxResults::exportPacketTexts(ExportWriter &out) const
{
    FrameText numbers;
    numbers.start(FrameText::Purpose::Tabular, Channel(), out.base());
    lux::MessageExport packets(out);
    const std::uint64_t count = frameCount();
    FrameData open;
    for (std::uint64_t i = 0; i < count; ++i) {
        const FrameData one = frame(i);
        if (one.kind == Break) {
            packets.end();
            open = one;
        } else if (one.kind == Start) {
            packets.begin(open);
        }
        if (packets.isOpen() && one.kind != Mark) {
            packets.add(one, numbers.number(one.data, 8));
        }
        out.progress(i, count);
    }
    packets.end();
}
