#include "CanResults.h"

#include <array>

using lux::FrameText;
using lux::FrameValues;
using lux::ShortText;

namespace {

struct FaultName {
    const char *word; ///< stable
    const char *text;
};

FaultName nameOf(CanFault fault)
{
    switch (fault) {
    case CanFault::Stuff:
        return {"stuff", "stuff error"};
    case CanFault::FixedStuff:
        return {"fixed_stuff", "form error at a fixed stuff bit"};
    case CanFault::CrcDelimiter:
        return {"crc_delimiter", "form error at the CRC delimiter"};
    case CanFault::AckDelimiter:
        return {"ack_delimiter", "form error at the ACK delimiter"};
    case CanFault::EndOfFrame:
        return {"end_of_frame", "form error in the end of frame"};
    case CanFault::ProtocolException:
        return {"protocol_exception", "protocol exception"};
    case CanFault::Glitch:
        return {"glitch", "glitch"};
    case CanFault::CaptureEnd:
        return {"capture_end", "the capture ends"};
    case CanFault::None:
        break;
    }
    return {"none", "no error"};
}

} // namespace

CanResults::CanResults(const CanSettings &settings) : m_line(settings.rx)
{
    showBubblesOn(m_line);
}

void CanResults::addFrame(const CanFrame &frame, CanFault fault, lux::Sample first, lux::Sample last)
{
    const auto flag = [](bool isSet, Flag value) { return isSet ? unsigned(value) : 0U; };
    const unsigned flags = flag(frame.hasId, HasId) | flag(frame.extended, Extended) | flag(frame.remote, Remote) |
                           flag(frame.fd, Fd) | flag(frame.rateSwitch, RateSwitch) |
                           flag(frame.errorPassive, ErrorPassive) | flag(!frame.crcRight, CrcWrong) |
                           flag(!frame.stuffCountRight, StuffCountWrong) | flag(frame.acknowledged, Acknowledged);
    const std::uint8_t length = frame.isWhole ? frame.length : std::uint8_t(0);
    const std::uint64_t bytes = length == 0 ? 0 : keep(std::span(frame.data.data(), length));
    add({.firstSample = first,
         .lastSample = last,
         .data = bytes,
         .data2 = std::uint64_t(frame.crc) << 32 | frame.id,
         .kind = std::uint8_t(frame.isWhole ? Whole : Cut),
         .flags = std::uint16_t(flags),
         .extra = std::uint32_t(frame.dlc) | std::uint32_t(length) << 8 | std::uint32_t(fault) << 16});
}

std::span<const std::uint8_t> CanResults::dataOf(const FrameData &frame) const
{
    return lengthOf(frame) == 0 ? std::span<const std::uint8_t>() : bytes(frame.data);
}

// ---- texts ----------------------------------------------------------------------------------------------------------

void CanResults::describe(const FrameData &frame, FrameText &out) const
{
    const ShortText duration = lux::formatDuration(std::int64_t(frame.data), GetSampleRate());
    switch (frame.kind) {
    case Whole:
        describeFrame(frame, out);
        break;
    case Cut:
        describeCut(frame, out);
        break;
    case Error:
        out.add("E");
        out.add("Error");
        out.add("Error frame");
        out.add("Error frame, flag of ", duration);
        break;
    case Overload:
        out.add("O");
        out.add("Overload");
        out.add("Overload frame");
        out.add("Overload frame, flag of ", duration);
        break;
    default:
        break;
    }
}

void CanResults::describeFrame(const FrameData &frame, FrameText &out) const
{
    const bool isFd = has(frame, Fd);
    const bool isCheckWrong = has(frame, CrcWrong) || has(frame, StuffCountWrong);
    const bool isWrong = isCheckWrong || faultOf(frame) != CanFault::None || !has(frame, Acknowledged);
    const ShortText id = out.number(idOf(frame), has(frame, Extended) ? 29 : 11);
    const char *kind = isFd ? "FD" : has(frame, Remote) ? "Remote" : "Data";
    ShortText title(kind);
    title.add(has(frame, Extended) ? " extended " : " ");
    title.add(id);

    ShortText errors(isFd && has(frame, RateSwitch) ? ", BRS" : "");
    errors.add(isFd && has(frame, ErrorPassive) ? ", ESI" : "");
    errors.add(has(frame, CrcWrong) ? ", CRC error" : "");
    errors.add(has(frame, StuffCountWrong) ? ", stuff count error" : "");
    errors.add(has(frame, Acknowledged) ? "" : ", no ACK");
    if (faultOf(frame) != CanFault::None) {
        errors.add(", ");
        errors.add(nameOf(faultOf(frame)).text);
    }

    out.add(isWrong ? "!" : isFd ? "F" : has(frame, Remote) ? "R" : "D");
    out.add(id, isWrong ? " !" : "");
    out.add(title, isWrong ? " !" : "");
    ShortText head(title);
    head.add(" [");
    head.add(has(frame, Remote) ? lux::formatCount(codeOf(frame)) : lux::formatCount(lengthOf(frame)));
    head.add("]");
    head.add(errors);
    if (lengthOf(frame) == 0) {
        out.add(head);
        out.add(head, ", CRC ", out.number(crcOf(frame), 15));
        return;
    }
    ShortText full(head);
    full.add(", CRC ");
    full.add(out.number(crcOf(frame), !isFd ? 15 : lengthOf(frame) > 16 ? 21 : 17));
    head.add(": ");
    full.add(": ");
    out.addBytes(head, dataOf(frame), 8);
    out.addBytes(full, dataOf(frame));
}

void CanResults::describeCut(const FrameData &frame, FrameText &out) const
{
    const std::string_view why = nameOf(faultOf(frame)).text;
    out.add("!");
    out.add("Cut");
    out.add("Cut: ", why);
    if (has(frame, HasId)) {
        out.add("Cut frame ", out.number(idOf(frame), has(frame, Extended) ? 29 : 11), ": ", why);
    } else {
        out.add("Cut frame: ", why);
    }
}

// ---- values ---------------------------------------------------------------------------------------------------------

void CanResults::values(const FrameData &frame, FrameValues &out) const
{
    switch (frame.kind) {
    case Whole:
        out.kind("frame").number("id", idOf(frame)).number("ext", has(frame, Extended));
        out.number("rtr", has(frame, Remote)).number("fd", has(frame, Fd));
        if (has(frame, Fd)) {
            out.number("brs", has(frame, RateSwitch)).number("esi", has(frame, ErrorPassive));
        }
        out.number("dlc", codeOf(frame)).hex("data", dataOf(frame)).number("crc", crcOf(frame));
        out.number("crcok", !has(frame, CrcWrong) && !has(frame, StuffCountWrong));
        out.number("ack", has(frame, Acknowledged));
        if (faultOf(frame) != CanFault::None) {
            out.text("fault", nameOf(faultOf(frame)).word);
        }
        break;
    case Cut:
        out.kind("cut");
        if (has(frame, HasId)) {
            out.number("id", idOf(frame)).number("ext", has(frame, Extended));
        }
        out.text("fault", nameOf(faultOf(frame)).word);
        break;
    case Error:
        out.kind("error");
        break;
    case Overload:
        out.kind("overload");
        break;
    default:
        break;
    }
}

std::span<const char *const> CanResults::columns() const
{
    static constexpr const char *names[] = {"id",  "ext",  "rtr", "fd",    "brs", "esi",
                                            "dlc", "data", "crc", "crcok", "ack", "fault"};
    return names;
}
