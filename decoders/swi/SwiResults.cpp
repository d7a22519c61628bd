#include "SwiResults.h"

#include "SwiNames.h"
#include "common/MessageExport.h"

#include <string_view>

using lux::FrameText;
using lux::FrameValues;
using lux::ShortText;

SwiResults::SwiResults(const SwiSettings &settings) : m_line(settings.line)
{
    showBubblesOn(m_line);
}

/// A block without count and CRC; of one that is cut what is there behind the count.
std::span<const std::uint8_t> SwiResults::contentOf(const FrameData &frame) const
{
    const std::span<const std::uint8_t> all = bytes(frame.data);
    if (frame.kind == Block) {
        return all.subspan(1, all.size() - 1 - swi::crcBytes);
    }
    return all.empty() ? all : all.subspan(1);
}

void SwiResults::describe(const FrameData &frame, FrameText &out) const
{
    const std::string_view name = swi::flagName(frame.data);
    switch (frame.kind) {
    case Wake:
        out.add("W");
        out.add("Wake");
        out.add("Wake, low for ", lux::formatDuration(frame.lastSample - frame.firstSample + 1, GetSampleRate()));
        break;
    case Flag:
        out.add(name.substr(0, 1));
        out.add(name);
        out.add("Flag ", name, " (", out.number(frame.data, 8), ")");
        break;
    case Byte:
        describeByte(frame, out);
        break;
    default:
        if (!out.isBubble()) { // its bytes have theirs
            describeBlock(frame, out);
        }
        break;
    }
}

void SwiResults::describeByte(const FrameData &frame, FrameText &out) const
{
    const ShortText number = out.number(frame.data, 8);
    out.add(number);
    switch (frame.line) {
    case Count:
        out.add("Count ", number);
        break;
    case Opcode: {
        const std::string_view name = swi::opcodeName(unsigned(frame.data));
        if (name.empty()) {
            out.add("Opcode ", number);
        } else {
            out.add(name);
            out.add(name, " (", number, ")");
        }
        break;
    }
    case Check:
        out.add("CRC ", number);
        break;
    case Unknown:
        out.add(number, " !");
        out.add("No flag: ", number);
        break;
    default:
        out.add("Data ", number);
        break;
    }
}

void SwiResults::describeBlock(const FrameData &frame, FrameText &out) const
{
    const std::span<const std::uint8_t> content = contentOf(frame);
    const bool isAnswer = (frame.flags & FromDevice) != 0;
    ShortText head(isAnswer ? "Answer" : "Command");
    if (!content.empty()) {
        const std::string_view name =
            isAnswer ? content.size() == 1 && frame.kind == Block ? swi::statusName(content[0]) : std::string_view()
                     : swi::opcodeName(content[0]);
        head.add(name.empty() ? "" : " ");
        head.add(name);
    }
    if (frame.kind == Cut) {
        head.add(", cut");
    } else if ((frame.flags & CrcError) != 0) {
        head.add(", CRC wrong");
    }
    head.add(content.empty() ? "" : ": ");
    out.addBytes(head, content);
}

void SwiResults::values(const FrameData &frame, FrameValues &out) const
{
    switch (frame.kind) {
    case Wake:
        out.kind("wake");
        break;
    case Flag:
        out.kind("flag").number("v", frame.data);
        break;
    case Byte:
        out.kind("byte").number("v", frame.data);
        break;
    case Block:
        out.kind("block").hex("v", contentOf(frame)).number("crc", (frame.flags & CrcError) == 0);
        out.text("from", (frame.flags & FromDevice) != 0 ? "device" : "host");
        break;
    case Cut:
        out.kind("cut").hex("v", contentOf(frame));
        out.text("from", (frame.flags & FromDevice) != 0 ? "device" : "host");
        break;
    default:
        break;
    }
}

std::span<const char *const> SwiResults::columns() const
{
    static constexpr const char *names[] = {"v", "crc", "from"};
    return names;
}

void SwiResults::exportFile(lux::ExportWriter &out, std::uint32_t optionId) const
{
    if (optionId == SwiSettings::Blocks) {
        exportBlocks(out);
    } else {
        exportFrames(out);
    }
}

/// A line a wake pulse, flag or block: time, a tab, its text.
void SwiResults::exportBlocks(lux::ExportWriter &out) const
{
    const std::uint64_t count = frameCount();
    FrameText text;
    lux::MessageExport messages(out);
    for (std::uint64_t i = 0; i < count; ++i) {
        const FrameData one = frame(i);
        if (one.kind != Byte) {
            text.start(FrameText::Purpose::Tabular, Channel(), out.base());
            describe(one, text);
            messages.whole(one, text.last());
        }
        out.progress(i, count);
    }
}
