#include "SwdResults.h"

#include "SwdSequences.h"

using lux::FrameText;
using lux::FrameValues;
using lux::ShortText;

namespace {

constexpr unsigned bitsOfData = 32;
constexpr unsigned bitsOfByte = 8;

const char *nameOf(SwdAck ack)
{
    static constexpr const char *names[] = {"OK", "WAIT", "FAULT", "NOREPLY", "ERROR"};
    return names[unsigned(ack)];
}

unsigned addressOf(const FrameData &frame)
{
    return frame.extra & 0xfU;
}

SwdSelect selectOf(const FrameData &frame)
{
    return {.dpBank = std::uint8_t(frame.extra >> 4 & 0xfU),
            .apBank = std::uint8_t(frame.extra >> 8 & 0xfU),
            .ap = std::uint8_t(frame.extra >> 16 & 0xffU),
            .isKnown = (frame.flags & SwdResults::SelectKnown) != 0};
}

/// "DPIDR", "AP 0 CSW", "AP 0x4" while the bank is not known.
ShortText registerOf(const FrameData &frame, const FrameText &out)
{
    const SwdSelect select = selectOf(frame);
    const bool isAp = (frame.flags & SwdResults::Ap) != 0;
    const char *name = swdRegister(isAp, (frame.flags & SwdResults::Read) != 0, addressOf(frame), select);
    ShortText text;
    if (isAp) {
        text.add("AP ");
        if (select.isKnown) {
            text.add(lux::formatCount(select.ap).view());
            text.add(" ");
        }
    }
    if (name != nullptr) {
        text.add(name);
    } else if (select.isKnown) {
        text.add(out.number(unsigned(select.apBank) << 4 | addressOf(frame), bitsOfByte).view());
    } else {
        text.add(out.number(addressOf(frame), 4).view());
    }
    return text;
}

} // namespace

SwdResults::SwdResults(const SwdSettings &settings)
{
    if (settings.swdio.isDefined()) {
        showBubblesOn(settings.swdio);
    }
}

std::uint32_t SwdResults::packed(unsigned address, const SwdSelect &select)
{
    return address | unsigned(select.dpBank) << 4 | unsigned(select.apBank) << 8 | unsigned(select.ap) << 16;
}

void SwdResults::describe(const FrameData &frame, FrameText &out) const
{
    switch (frame.kind) {
    case Reset:
        out.add("R");
        out.add("Reset");
        out.add("Line reset");
        break;
    case Switch:
        out.add("S");
        out.add("Switch");
        out.add("Switch to SWD");
        break;
    case Leave:
        out.add("L");
        out.add("Leave");
        out.add(SwdTarget(frame.extra) == SwdTarget::Jtag ? "Switch to JTAG" : "Switch to the dormant state");
        break;
    case Request:
        out.add("!");
        out.add("Parity");
        out.add("Request with wrong parity");
        break;
    default:
        describeTransfer(frame, out);
        break;
    }
}

void SwdResults::describeTransfer(const FrameData &frame, FrameText &out)
{
    const bool isRead = (frame.flags & Read) != 0;
    const bool hasData = (frame.flags & HasData) != 0;
    const auto ack = SwdAck(frame.line);
    const ShortText name = registerOf(frame, out);
    const ShortText value = hasData ? out.number(frame.data, bitsOfData) : ShortText();
    const char *parity = (frame.flags & WrongParity) != 0 ? ", wrong parity" : "";
    out.add(ack == SwdAck::Ok ? (isRead ? "R" : "W") : "!");
    out.add(isRead ? "R " : "W ", name);
    if (ack == SwdAck::Ok) {
        out.add(isRead ? "R " : "W ", name, " ", value);
        out.add(isRead ? "Read " : "Write ", name, ": ", value, ", OK", parity);
    } else {
        out.add(isRead ? "R " : "W ", name, " ", nameOf(ack));
        const char *what = ack == SwdAck::NoReply ? "no reply" : ack == SwdAck::Error ? "wrong answer" : nameOf(ack);
        out.add(isRead ? "Read " : "Write ", name, ": ", value, hasData ? ", " : "", what, parity);
    }
}

void SwdResults::values(const FrameData &frame, FrameValues &out) const
{
    static constexpr const char *kinds[] = {"reset", "switch", "leave", "transfer", "request"};
    out.kind(kinds[frame.kind]);
    if (frame.kind == Leave) {
        out.text("to", SwdTarget(frame.extra) == SwdTarget::Jtag ? "jtag" : "dormant");
    }
    if (frame.kind != Transfer && frame.kind != Request) {
        return;
    }
    out.flag("ap", (frame.flags & Ap) != 0).flag("rd", (frame.flags & Read) != 0).number("addr", addressOf(frame));
    if (frame.kind == Transfer) {
        out.text("ack", nameOf(SwdAck(frame.line)));
    }
    if ((frame.flags & HasData) != 0) {
        out.number("v", frame.data).flag("perr", (frame.flags & WrongParity) != 0);
    }
}

std::span<const char *const> SwdResults::columns() const
{
    static constexpr const char *names[] = {"ap", "rd", "addr", "ack", "v", "perr", "to"};
    return names;
}
