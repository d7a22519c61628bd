#include "MdioResults.h"

#include <array>

using lux::FrameText;
using lux::FrameValues;
using lux::ShortText;

namespace {

constexpr unsigned wordBits = 16;

struct OperationText {
    const char *letter;
    const char *name;
    const char *word;
};
constexpr std::array<OperationText, 4> operations{{
    {"W", "Write", "write"},
    {"R", "Read", "read"},
    {"A", "Address", "address"},
    {"I", "Read and increment", "post-read"},
}};

/// IEEE 802.3-2018, table 22-6.
std::string_view registerName(unsigned number)
{
    constexpr std::array<const char *, 16> names{"Control",
                                                 "Status",
                                                 "PHY identifier 1",
                                                 "PHY identifier 2",
                                                 "Auto-negotiation advertisement",
                                                 "Auto-negotiation link partner base page ability",
                                                 "Auto-negotiation expansion",
                                                 "Auto-negotiation next page transmit",
                                                 "Auto-negotiation link partner received next page",
                                                 "Master-slave control",
                                                 "Master-slave status",
                                                 "PSE control",
                                                 "PSE status",
                                                 "MMD access control",
                                                 "MMD access address data",
                                                 "Extended status"};
    return number < names.size() ? names[number] : "Vendor specific";
}

/// IEEE 802.3-2018, table 45-1.
std::string_view deviceName(unsigned number)
{
    switch (number) {
    case 1:
        return "PMA/PMD";
    case 2:
        return "WIS";
    case 3:
        return "PCS";
    case 4:
        return "PHY XS";
    case 5:
        return "DTE XS";
    case 6:
        return "TC";
    case 7:
        return "Auto-negotiation";
    case 8:
    case 9:
    case 10:
    case 11:
        return "Separated PMA";
    case 12:
        return "OFDM PMA/PMD";
    case 13:
        return "Power unit";
    case 29:
        return "Clause 22 extension";
    case 30:
    case 31:
        return "Vendor specific";
    default:
        return "Reserved";
    }
}

/// What the registers of PMA/PMD, WIS, PCS and the XS have alike (IEEE 802.3-2018, tables 45-3, 45-115, 45-176,
/// 45-234 and 45-262); empty elsewhere.
std::string_view commonRegisterName(unsigned device, std::uint64_t address)
{
    if (device < 1 || device > 5) {
        return {};
    }
    switch (address) {
    case 0:
        return "Control 1";
    case 1:
        return "Status 1";
    case 2:
    case 3:
        return "Device identifier";
    case 4:
        return "Speed ability";
    case 5:
    case 6:
        return "Devices in package";
    case 7:
        return "Control 2";
    case 8:
        return "Status 2";
    case 14:
    case 15:
        return "Package identifier";
    default:
        return {};
    }
}

unsigned portOf(const FrameData &frame)
{
    return frame.extra >> MdioResults::addressBits;
}

unsigned placeOf(const FrameData &frame)
{
    return frame.extra & ((1U << MdioResults::addressBits) - 1U);
}

std::string_view faultText(const FrameData &frame)
{
    if ((frame.flags & MdioResults::NoAnswer) != 0) {
        return ", no answer";
    }
    return (frame.flags & MdioResults::TurnaroundError) != 0 ? ", wrong turnaround" : "";
}

} // namespace

MdioResults::MdioResults(const MdioSettings &settings) : m_data(settings.data)
{
    showBubblesOn(m_data);
}

/// "register 0x02 (PHY identifier 1)", "PCS register 0x0001 (Status 1)".
ShortText MdioResults::placeText(const FrameData &frame, const FrameText &out) const
{
    ShortText text;
    const unsigned place = placeOf(frame);
    std::string_view name;
    if ((frame.flags & Clause45) == 0) {
        text.add("register ");
        text.add(out.number(place, addressBits));
        name = registerName(place);
    } else {
        text.add(deviceName(place));
        if (frame.line == SetAddress) {
            return text;
        }
        text.add(" register");
        if ((frame.flags & AddressKnown) == 0) {
            return text;
        }
        text.add(" ");
        text.add(out.number(frame.data2, wordBits));
        name = commonRegisterName(place, frame.data2);
    }
    if (!name.empty()) {
        text.add(" (");
        text.add(name);
        text.add(")");
    }
    return text;
}

void MdioResults::describe(const FrameData &frame, FrameText &out) const
{
    if (out.isBubble() && out.channel().channelIndex != m_data.channelIndex) {
        return;
    }
    if (frame.kind == Error) {
        out.add("!");
        out.add("No operation");
        out.add("Frame with an operation that there is not");
        return;
    }
    const OperationText &operation = operations.at(frame.line);
    const std::string_view fault = faultText(frame);
    const ShortText number = out.number(frame.data, wordBits);
    const ShortText port = out.number(portOf(frame), addressBits);
    out.add(fault.empty() ? operation.letter : "!");
    out.add(number, fault.empty() ? "" : " !");
    out.add(operation.letter, " ", port, ".", out.number(placeOf(frame), addressBits), " ", number,
            fault.empty() ? "" : " !");
    out.add(operation.name, " ", number, fault);
    out.add(operation.name, ", PHY ", port, ", ", placeText(frame, out), ": ", number, fault);
}

void MdioResults::values(const FrameData &frame, FrameValues &out) const
{
    if (frame.kind == Error) {
        out.kind("error").number("v", frame.data);
        return;
    }
    out.kind("frame").number("cl", (frame.flags & Clause45) != 0 ? 45 : 22);
    out.text("op", operations.at(frame.line).word);
    out.number("phy", portOf(frame)).number("reg", placeOf(frame)).number("v", frame.data);
    out.number("ta", (frame.flags & (NoAnswer | TurnaroundError)) == 0);
    if ((frame.flags & AddressKnown) != 0) {
        out.number("address", frame.data2);
    }
}

std::span<const char *const> MdioResults::columns() const
{
    static constexpr const char *names[] = {"cl", "op", "phy", "reg", "address", "v", "ta"};
    return names;
}
