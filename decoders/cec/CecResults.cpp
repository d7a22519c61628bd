#include "CecResults.h"

#include "CecNames.h"
#include "common/MessageExport.h"

using lux::FrameText;
using lux::FrameValues;
using lux::ShortText;

namespace {

ShortText routeText(std::uint64_t header)
{
    ShortText text;
    text.add(cec::deviceName(unsigned(header >> 4 & 15U), false));
    text.add(" to ");
    text.add(cec::deviceName(unsigned(header & 15U), true));
    return text;
}

/// A digit a block: 1 is acknowledged, or not refused.
ShortText acknowledgeText(const FrameData &frame, std::size_t count)
{
    ShortText text;
    for (std::size_t i = 0; i < count; ++i) {
        text.add((frame.data2 >> i & 1U) != 0 ? '1' : '0');
    }
    return text;
}

} // namespace

CecResults::CecResults(const CecSettings &settings) : m_line(settings.line)
{
    showBubblesOn(m_line);
}

void CecResults::describe(const FrameData &frame, FrameText &out) const
{
    switch (frame.kind) {
    case Start:
        out.add("S");
        out.add("Start");
        break;
    case Block:
        describeBlock(frame, out);
        break;
    default:
        if (!out.isBubble()) { // its blocks have theirs
            describeMessage(frame, out);
        }
        break;
    }
}

void CecResults::describeBlock(const FrameData &frame, FrameText &out) const
{
    const ShortText number = out.number(frame.data, 8);
    const bool isRefused = (frame.flags & Acknowledged) == 0;
    const std::string_view answer = !isRefused                       ? ""
                                    : (frame.flags & Broadcast) != 0 ? ", refused"
                                                                     : ", not acknowledged";
    const std::string_view eom = (frame.flags & Last) != 0 ? ", EOM" : "";
    const std::string_view timing = (frame.flags & Timing) != 0 ? ", wrong bit time" : "";
    const std::string_view mark = isRefused || !timing.empty() ? " !" : "";
    out.add(number, mark);
    switch (frame.line) {
    case Header:
        out.add(routeText(frame.data), mark);
        out.add(routeText(frame.data), (frame.flags & Last) != 0 ? ", poll" : "", eom, answer, timing);
        break;
    case Opcode: {
        const std::string_view name = cec::opcodeName(unsigned(frame.data));
        if (!name.empty()) {
            out.add(name, mark);
            out.add(name, " (", number, ")", eom, answer, timing);
        } else {
            out.add("Opcode ", number, eom, answer, timing);
        }
        break;
    }
    default:
        out.add("Operand ", number, eom, answer, timing);
        break;
    }
}

void CecResults::describeMessage(const FrameData &frame, FrameText &out) const
{
    const std::span<const std::uint8_t> blocks = bytes(frame.data);
    const std::string_view fault = (frame.flags & LineError) != 0 ? ", cut by an error that a follower tells"
                                   : frame.kind == Cut            ? ", cut"
                                   : (frame.flags & Acknowledged) == 0 && (frame.flags & Broadcast) != 0 ? ", refused"
                                   : (frame.flags & Acknowledged) == 0 ? ", not acknowledged"
                                                                       : "";
    if (blocks.empty()) {
        out.add("Message", fault);
        return;
    }
    const ShortText route = routeText(blocks[0]);
    if (blocks.size() == 1) {
        out.add(route, frame.kind == Cut ? "" : ": poll", fault);
        return;
    }
    const std::string_view name = cec::opcodeName(blocks[1]);
    const ShortText number = out.number(blocks[1], 8);
    const std::span<const std::uint8_t> operands = blocks.subspan(2);
    ShortText meaning = cec::operandText(blocks[1], operands);
    if (meaning.view().empty()) {
        for (const std::uint8_t operand : operands) {
            meaning.add(meaning.view().empty() ? "" : " ");
            meaning.add(out.number(operand, 8));
        }
    }
    out.add(route, ": ", name.empty() ? number.view() : name, meaning.view().empty() ? "" : " ", meaning, fault);
}

void CecResults::values(const FrameData &frame, FrameValues &out) const
{
    switch (frame.kind) {
    case Message:
    case Cut: {
        const std::span<const std::uint8_t> blocks = bytes(frame.data);
        out.kind(frame.kind == Message ? "frame" : "cut").hex("v", blocks);
        out.text("ack", acknowledgeText(frame, blocks.size()));
        break;
    }
    case Start:
        out.kind("start");
        break;
    case Block:
        out.kind("block").number("v", frame.data).number("eom", (frame.flags & Last) != 0);
        out.number("ack", (frame.flags & Acknowledged) != 0);
        break;
    default:
        break;
    }
}

std::span<const char *const> CecResults::columns() const
{
    static constexpr const char *names[] = {"v", "eom", "ack"};
    return names;
}

void CecResults::exportFile(lux::ExportWriter &out, std::uint32_t optionId) const
{
    if (optionId == CecSettings::Messages) {
        exportMessages(out);
    } else {
        exportFrames(out);
    }
}

/// A line a message: time, a tab, its text.
void CecResults::exportMessages(lux::ExportWriter &out) const
{
    const std::uint64_t count = frameCount();
    FrameText text;
    lux::MessageExport messages(out);
    for (std::uint64_t i = 0; i < count; ++i) {
        const FrameData one = frame(i);
        if (one.kind == Message || one.kind == Cut) {
            text.start(FrameText::Purpose::Tabular, Channel(), out.base());
            describeMessage(one, text);
            messages.whole(one, text.last());
        }
        out.progress(i, count);
    }
}
