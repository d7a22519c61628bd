#include "Ps2Results.h"

#include "Ps2Keys.h"
#include "common/MessageExport.h"

using lux::FrameText;
using lux::FrameValues;
using lux::ShortText;

namespace {

/// The LEDs that are on, "Num Lock, Caps Lock": bits 0 to 2 of the argument.
ShortText ledText(std::uint64_t leds)
{
    constexpr std::string_view names[] = {"Scroll Lock", "Num Lock", "Caps Lock"};
    ShortText text;
    for (unsigned i = 0; i < 3; ++i) {
        if ((leds >> i & 1U) != 0) {
            text.add(text.view().empty() ? "" : ", ");
            text.add(names[i]);
        }
    }
    if (text.view().empty()) {
        text.add("none");
    }
    return text;
}

ShortText errorText(const FrameData &frame)
{
    ShortText text;
    text.add((frame.flags & Ps2Results::ParityError) != 0 ? ", parity error" : "");
    text.add((frame.flags & Ps2Results::FramingError) != 0 ? ", framing error" : "");
    text.add((frame.flags & Ps2Results::NoAcknowledge) != 0 ? ", no acknowledgement" : "");
    return text;
}

} // namespace

Ps2Results::Ps2Results(const Ps2Settings &settings) : m_data(settings.data), m_codeSet(settings.codeSet)
{
    showBubblesOn(m_data);
}

/// What a byte says, empty where it says nothing by itself: "Left Shift pressed", "LEDs: Num Lock".
ShortText Ps2Results::meaningOf(const FrameData &frame, const FrameText &out) const
{
    ShortText text;
    switch (frame.line) {
    case Key:
        if (const std::string_view name = ps2::keyName(frame.extra, m_codeSet); !name.empty()) {
            text.add(name);
            text.add((frame.flags & Released) != 0 ? " released" : " pressed");
        }
        break;
    case Prefix:
        text.add(frame.data == ps2::released ? "Released" : "Extended");
        break;
    case Response:
        text.add(ps2::responseName(std::uint32_t(frame.data), m_codeSet));
        break;
    case Identity:
        text.add("ID");
        break;
    case Command:
        text.add(ps2::commandName(std::uint32_t(frame.data)));
        break;
    case Argument:
        if (frame.extra == ps2::setLeds) {
            text.add("LEDs: ");
            text.add(ledText(frame.data));
        } else {
            text.add("Argument ");
            text.add(out.number(frame.data, 8));
        }
        break;
    default:
        break;
    }
    return text;
}

void Ps2Results::describe(const FrameData &frame, FrameText &out) const
{
    if (out.isBubble() && out.channel().channelIndex != m_data.channelIndex) {
        return;
    }
    if (frame.kind == Short) {
        out.add("!");
        out.add("Cut");
        out.add("Cut after ", lux::formatCount(frame.extra), frame.extra == 1 ? " clock" : " clocks");
        return;
    }
    describeByte(frame, out);
}

void Ps2Results::describeByte(const FrameData &frame, FrameText &out) const
{
    const ShortText number = out.number(frame.data, 8);
    const ShortText meaning = meaningOf(frame, out);
    const ShortText errors = errorText(frame);
    const std::string_view sender = frame.kind == Host ? "Host: " : "";
    const bool isWrong = !errors.view().empty();
    if (isWrong) {
        out.add("!");
    }
    out.add(number, isWrong ? " !" : "");
    if (meaning.view().empty()) {
        out.add(sender, frame.kind == Host ? "" : "Data ", number, errors);
        return;
    }
    if (!isWrong) {
        out.add(meaning);
    }
    if (frame.line == Argument && frame.extra != ps2::setLeds) {
        out.add(sender, meaning, errors);
    } else {
        out.add(sender, meaning, " (", number, ")", errors);
    }
}

void Ps2Results::values(const FrameData &frame, FrameValues &out) const
{
    if (frame.kind == Short) {
        out.kind("short").number("n", frame.extra).number("v", frame.data);
        return;
    }
    out.kind(frame.kind == Host ? "host" : "byte").number("v", frame.data);
    out.number("pe", (frame.flags & ParityError) != 0).number("fe", (frame.flags & FramingError) != 0);
    if (frame.kind == Host) {
        out.number("ack", (frame.flags & NoAcknowledge) == 0);
    }
    if (const std::string_view name = ps2::keyName(frame.extra, m_codeSet); frame.line == Key && !name.empty()) {
        out.text("key", name).text("event", (frame.flags & Released) != 0 ? "break" : "make");
    }
}

std::span<const char *const> Ps2Results::columns() const
{
    static constexpr const char *names[] = {"v", "pe", "fe", "key", "event", "ack", "n"};
    return names;
}

void Ps2Results::exportFile(lux::ExportWriter &out, std::uint32_t optionId) const
{
    if (optionId == Ps2Settings::Keys) {
        exportKeys(out);
    } else {
        exportFrames(out);
    }
}

/// A line a key with all bytes of its code, "0.000012 0xE0 0xF0 0x75 Up released", and one for each other byte.
void Ps2Results::exportKeys(lux::ExportWriter &out) const
{
    FrameText text;
    lux::MessageExport messages(out);
    const std::uint64_t count = frameCount();
    for (std::uint64_t i = 0; i < count; ++i) {
        const FrameData one = frame(i);
        text.start(FrameText::Purpose::Tabular, Channel(), out.base());
        const bool isCode = one.kind == Byte && (one.line == Key || one.line == Prefix);
        if (!isCode || !messages.isOpen()) {
            messages.begin(one);
        }
        if (isCode) {
            messages.add(one, text.number(one.data, 8));
        }
        if (isCode && one.line == Key) {
            const ShortText meaning = meaningOf(one, text);
            messages.add(one, meaning.view().empty() ? "unknown" : meaning.view(), errorText(one));
        } else if (!isCode) {
            describe(one, text);
            messages.add(one, text.last());
        }
        if (!isCode || one.line == Key) {
            messages.end();
        }
        out.progress(i, count);
    }
    messages.end();
}
