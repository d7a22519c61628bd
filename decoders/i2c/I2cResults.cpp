#include "I2cResults.h"

#include "common/MessageExport.h"

#include <string_view>

using lux::FrameText;
using lux::FrameValues;
using lux::ShortText;

namespace {

constexpr unsigned addressBits = 7;
constexpr unsigned tenBits = 10;

/// The first byte's reserved values (UM10204, 3.1.12, table 3); empty for an address of a device.
std::string_view reservedName(std::uint64_t byte)
{
    const std::uint64_t address = byte >> 1;
    if (byte == 0x00) {
        return "General call";
    }
    if (byte == 0x01) {
        return "START byte";
    }
    if (address == 0x01) {
        return "CBUS address";
    }
    if (address == 0x02 || address == 0x03) {
        return "Reserved address";
    }
    if (address >> 2 == 0x01) {
        return "Hs-mode master code";
    }
    if (byte >> 3 == I2cResults::tenBitPrefix) {
        return "10-bit address";
    }
    if (address >> 2 == 0x1f) {
        return (byte & 1U) != 0 ? "Device ID" : "Reserved address";
    }
    return {};
}

/// What the byte behind a general call asks of all devices (UM10204, 3.1.13).
std::string_view generalCallName(std::uint64_t byte)
{
    if ((byte & 1U) != 0) {
        return "hardware general call";
    }
    switch (byte) {
    case 0x00:
        return "not allowed";
    case 0x04:
        return "write the address";
    case 0x06:
        return "reset, and write the address";
    default:
        return "not fixed";
    }
}

std::string_view ackText(const FrameData &frame)
{
    return (frame.flags & I2cResults::Nack) != 0 ? "NACK" : "ACK";
}

} // namespace

I2cResults::I2cResults(const I2cSettings &settings) : m_sda(settings.sda), m_addressFormat(settings.addressFormat)
{
    showBubblesOn(m_sda);
}

void I2cResults::describe(const FrameData &frame, FrameText &out) const
{
    if (out.isBubble() && out.channel().channelIndex != m_sda.channelIndex) {
        return;
    }
    switch (frame.kind) {
    case Start:
        out.add("S");
        out.add("Start");
        break;
    case Restart:
        out.add("Sr");
        out.add("Restart");
        out.add("Repeated start", (frame.flags & LostStop) != 0 ? ", the stop before is missing" : "");
        break;
    case Stop:
        out.add("P");
        out.add("Stop");
        break;
    case Address:
        describeAddress(frame, out);
        break;
    case Data:
        describeData(frame, out);
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

ShortText I2cResults::addressText(const FrameData &frame, const FrameText &out) const
{
    if (m_addressFormat == I2cAddressFormat::EightBits) {
        return out.number(frame.data, addressBits + 1);
    }
    return out.number(frame.data >> 1, addressBits);
}

ShortText I2cResults::stretchText(const FrameData &frame) const
{
    ShortText text;
    if ((frame.flags & Stretched) != 0) {
        text.add(", clock held low for ");
        text.add(lux::formatDuration(frame.extra, GetSampleRate()).view());
    }
    return text;
}

void I2cResults::describeAddress(const FrameData &frame, FrameText &out) const
{
    const ShortText number = addressText(frame, out);
    const bool isRead = (frame.flags & Read) != 0;
    const std::string_view reserved = reservedName(frame.data);
    const bool isTenBit = frame.data >> 3 == tenBitPrefix;
    out.add("A");
    out.add(number);
    out.add(number, isRead ? " R " : " W ", (frame.flags & Nack) != 0 ? "N" : "A");
    if (reserved.empty()) {
        out.add(isRead ? "Read " : "Write ", number, " ", ackText(frame));
        out.add("Address ", number, isRead ? " read, " : " write, ", ackText(frame), stretchText(frame));
    } else {
        const ShortText shown = (frame.flags & TenBit) != 0 ? out.number(frame.data2, tenBits) : number;
        const std::string_view direction = !isTenBit ? "" : isRead ? " read" : " write";
        out.add(reserved, " ", shown, direction, ", ", ackText(frame), stretchText(frame));
    }
}

void I2cResults::describeData(const FrameData &frame, FrameText &out) const
{
    const ShortText number = out.number(frame.data, 8);
    out.add(number);
    out.add(number, (frame.flags & Nack) != 0 ? " N" : " A");
    if ((frame.flags & TenBit) != 0) {
        out.add("Address ", out.number(frame.data2, tenBits), ", ", ackText(frame), stretchText(frame));
        return;
    }
    if ((frame.flags & GeneralCall) != 0) {
        out.add("General call ", number, " (", generalCallName(frame.data), "), ", ackText(frame), stretchText(frame));
        return;
    }
    out.add("Data ", number, ", ", ackText(frame), stretchText(frame));
}

void I2cResults::values(const FrameData &frame, FrameValues &out) const
{
    switch (frame.kind) {
    case Start:
        out.kind("start");
        break;
    case Restart:
        out.kind("restart");
        break;
    case Stop:
        out.kind("stop");
        break;
    case Cut:
        out.kind("cut").number("n", frame.extra).number("v", frame.data);
        break;
    case Address:
    case Data:
        out.kind(frame.kind == Address ? "address" : "data");
        out.number("v", frame.kind == Address ? frame.data >> 1 : frame.data);
        out.number("rw", (frame.flags & Read) != 0).number("ack", (frame.flags & Nack) == 0);
        if ((frame.flags & TenBit) != 0) {
            out.number("ten_bit", frame.data2);
        }
        break;
    default:
        break;
    }
}

std::span<const char *const> I2cResults::columns() const
{
    static constexpr const char *names[] = {"v", "rw", "ack", "ten_bit", "n"};
    return names;
}

void I2cResults::exportFile(lux::ExportWriter &out, std::uint32_t optionId) const
{
    switch (optionId) {
    case I2cSettings::DataBytes:
        exportBytes(out);
        break;
    case I2cSettings::Messages:
        exportMessages(out);
        break;
    default:
        exportFrames(out);
        break;
    }
}

/// All data bytes in their order, without addresses.
void I2cResults::exportBytes(lux::ExportWriter &out) const
{
    const std::uint64_t count = frameCount();
    for (std::uint64_t i = 0; i < count; ++i) {
        const FrameData one = frame(i);
        if (one.kind == Data && (one.flags & TenBit) == 0) {
            out.byte(std::uint8_t(one.data));
        }
        out.progress(i, count);
    }
}

/// A line from start to stop: time, then the elements: "0.000012 S 0x50 W A 0x00 A Sr 0x50 R A 0x12 N P".
void I2cResults::exportMessages(lux::ExportWriter &out) const
{
    FrameText numbers;
    numbers.start(FrameText::Purpose::Tabular, Channel(), out.base());
    lux::MessageExport messages(out);
    const std::uint64_t count = frameCount();
    for (std::uint64_t i = 0; i < count; ++i) {
        const FrameData one = frame(i);
        if (one.kind == Start || !messages.isOpen()) {
            messages.begin(one);
        }
        const std::string_view ack = (one.flags & Nack) != 0 ? " N" : " A";
        switch (one.kind) {
        case Start:
            messages.add(one, "S");
            break;
        case Restart:
            messages.add(one, "Sr");
            break;
        case Stop:
            messages.add(one, "P");
            messages.end();
            break;
        case Address:
            messages.add(one, addressText(one, numbers), (one.flags & Read) != 0 ? " R" : " W", ack);
            break;
        case Data:
            messages.add(one, numbers.number(one.data, 8), ack);
            break;
        default:
            messages.add(one, "cut");
            break;
        }
        out.progress(i, count);
    }
    messages.end();
}
