#include "IrNecResults.h"

using lux::FrameText;
using lux::FrameValues;
using lux::ShortText;

IrNecResults::IrNecResults(const IrNecSettings &settings) : m_line(settings.ir)
{
    showBubblesOn(m_line);
}

void IrNecResults::describe(const FrameData &frame, FrameText &out) const
{
    switch (frame.kind) {
    case Whole:
        describeCode(frame, out);
        break;
    case Repeat:
        out.add("R");
        out.add("Repeat");
        if ((frame.flags & Known) != 0) {
            const Code code(frame.data);
            out.add("Repeat of ", out.number(code.command(), 8));
            out.add("Repeat of address ", out.number(code.address(), code.isExtended() ? 16 : 8), ", command ",
                    out.number(code.command(), 8));
        }
        break;
    case Cut:
        out.add("!");
        out.add("Cut");
        out.add("Cut after ", lux::formatCount(frame.extra), frame.extra == 1 ? " bit" : " bits");
        break;
    default:
        break;
    }
}

void IrNecResults::describeCode(const FrameData &frame, FrameText &out) const
{
    const Code code(frame.data);
    const bool isRight = code.isCommandRight();
    const ShortText address = out.number(code.address(), code.isExtended() ? 16 : 8);
    const ShortText command = out.number(code.command(), 8);
    const std::string_view sign = isRight ? "" : " !";
    if (!isRight) {
        out.add("!");
    }
    out.add(command, sign);
    out.add(address, ": ", command, sign);
    out.add("Address ", address, ", command ", command, sign);
    if (code.isExtended()) {
        out.add("Extended address ", address, ", command ", command, sign);
    }
    if (!isRight) {
        out.add(code.isExtended() ? "Extended address " : "Address ", address, ", command ", command,
                ", its complement is ", out.number(code.bytes[3], 8));
    }
}

void IrNecResults::values(const FrameData &frame, FrameValues &out) const
{
    const Code code(frame.data);
    switch (frame.kind) {
    case Whole:
        out.kind("frame").hex("bytes", code.bytes).number("address", code.address());
        out.number("command", code.command()).number("ext", code.isExtended()).number("ok", code.isCommandRight());
        break;
    case Repeat:
        out.kind("repeat");
        if ((frame.flags & Known) != 0) {
            out.number("address", code.address()).number("command", code.command());
        }
        break;
    case Cut:
        out.kind("cut").number("bits", frame.extra);
        break;
    default:
        break;
    }
}

std::span<const char *const> IrNecResults::columns() const
{
    static constexpr const char *names[] = {"bytes", "address", "command", "ext", "ok", "bits"};
    return names;
}
