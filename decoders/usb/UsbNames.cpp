#include "UsbNames.h"

#include "UsbPacket.h"

#include <corvanlux/analyzer/FrameText.h>

namespace usb {

namespace {

constexpr std::uint8_t getDescriptor = 6;
constexpr std::uint8_t setAddress = 5;
constexpr std::uint8_t setConfiguration = 9;

enum DescriptorType : std::uint8_t {
    DeviceDescriptor = 1,
    ConfigurationDescriptor = 2,
    StringDescriptor = 3,
    InterfaceDescriptor = 4,
    EndpointDescriptor = 5,
};

std::string number(std::uint32_t value, unsigned bits, DisplayBase base)
{
    return std::string(lux::formatNumber(value, bits, base).view());
}

std::string decimal(std::int64_t value)
{
    return std::string(lux::formatCount(value).view());
}

std::uint16_t word(std::span<const std::uint8_t> bytes, std::size_t at)
{
    return at + 1 < bytes.size() ? std::uint16_t(bytes[at] | bytes[at + 1] << 8) : std::uint16_t(0);
}

/// Tables 9-5, and 7.1 of the HID definition.
std::string_view descriptorName(std::uint8_t type)
{
    switch (type) {
    case DeviceDescriptor:
        return "Device";
    case ConfigurationDescriptor:
        return "Configuration";
    case StringDescriptor:
        return "String";
    case InterfaceDescriptor:
        return "Interface";
    case EndpointDescriptor:
        return "Endpoint";
    case 6:
        return "Device qualifier";
    case 7:
        return "Other speed configuration";
    case 8:
        return "Interface power";
    case 9:
        return "OTG";
    case 11:
        return "Interface association";
    case 15:
        return "BOS";
    case 0x21:
        return "HID";
    case 0x22:
        return "HID report";
    case 0x23:
        return "HID physical";
    case 0x29:
        return "Hub";
    default:
        return {};
    }
}

/// Table 9-4.
std::string_view standardRequest(std::uint8_t request)
{
    static constexpr std::string_view names[] = {"GET_STATUS",
                                                 "CLEAR_FEATURE",
                                                 "",
                                                 "SET_FEATURE",
                                                 "",
                                                 "SET_ADDRESS",
                                                 "GET_DESCRIPTOR",
                                                 "SET_DESCRIPTOR",
                                                 "GET_CONFIGURATION",
                                                 "SET_CONFIGURATION",
                                                 "GET_INTERFACE",
                                                 "SET_INTERFACE",
                                                 "SYNCH_FRAME"};
    return request < std::size(names) ? names[request] : std::string_view();
}

/// Requests to an interface of a human interface device.
std::string_view hidRequest(std::uint8_t request)
{
    switch (request) {
    case 1:
        return "GET_REPORT";
    case 2:
        return "GET_IDLE";
    case 3:
        return "GET_PROTOCOL";
    case 9:
        return "SET_REPORT";
    case 10:
        return "SET_IDLE";
    case 11:
        return "SET_PROTOCOL";
    default:
        return {};
    }
}

/// Requests to a hub or to one of its ports (table 11-16).
std::string_view hubRequest(std::uint8_t request)
{
    static constexpr std::string_view names[] = {
        "GET_STATUS",     "CLEAR_FEATURE",   "",         "SET_FEATURE",  "",       "", "GET_DESCRIPTOR",
        "SET_DESCRIPTOR", "CLEAR_TT_BUFFER", "RESET_TT", "GET_TT_STATE", "STOP_TT"};
    return request < std::size(names) ? names[request] : std::string_view();
}

std::string deviceText(std::span<const std::uint8_t> bytes, DisplayBase base)
{
    constexpr std::size_t whole = 18;
    if (bytes.size() < whole) {
        return {};
    }
    const std::uint16_t release = word(bytes, 2);
    return "USB " + decimal(release >> 8) + "." + decimal(release >> 4 & 15) + decimal(release & 15) + ", class " +
           number(bytes[4], 8, base) + ", vendor " + number(word(bytes, 8), 16, base) + ", product " +
           number(word(bytes, 10), 16, base);
}

std::string stringText(std::span<const std::uint8_t> bytes)
{
    std::string text = "\"";
    for (std::size_t at = 2; at + 1 < bytes.size() && at + 1 < bytes[0]; at += 2) {
        const std::uint16_t unit = word(bytes, at);
        text += unit >= ' ' && unit < 0x7f && unit != '"' ? char(unit) : '.';
    }
    return text + "\"";
}

/// One of the descriptors of a configuration.
std::string partText(std::span<const std::uint8_t> part, DisplayBase base)
{
    constexpr std::int64_t milliamperes = 2; // a unit of bMaxPower
    const std::uint8_t type = part[1];
    std::string text(descriptorName(type));
    if (text.empty()) {
        text = "descriptor " + number(type, 8, base);
    }
    if (type == ConfigurationDescriptor && part.size() >= 9) {
        text += " " + decimal(part[5]) + ", " + decimal(part[4]) + (part[4] == 1 ? " interface, " : " interfaces, ") +
                decimal(part[8] * milliamperes) + " mA";
    } else if (type == InterfaceDescriptor && part.size() >= 9) {
        text += " " + decimal(part[2]) + " class " + number(part[5], 8, base);
    } else if (type == EndpointDescriptor && part.size() >= 7) {
        static constexpr std::string_view types[] = {" control", " isochronous", " bulk", " interrupt"};
        text += " " + number(part[2] & 15, endpointBits, base) + ((part[2] & 0x80) != 0 ? " IN" : " OUT");
        text += types[part[3] & 3];
    }
    return text;
}

std::string configurationText(std::span<const std::uint8_t> bytes, DisplayBase base)
{
    std::string text;
    for (std::size_t at = 0; at + 2 <= bytes.size();) {
        const std::size_t length = bytes[at];
        if (length < 2 || at + length > bytes.size()) {
            break;
        }
        text += (text.empty() ? "" : "; ") + partText(bytes.subspan(at, length), base);
        at += length;
    }
    return text;
}

} // namespace

std::string_view packetName(std::uint8_t pid)
{
    switch (pid) {
    case out:
        return "OUT";
    case in:
        return "IN";
    case startOfFrame:
        return "SOF";
    case setup:
        return "SETUP";
    case data0:
        return "DATA0";
    case data1:
        return "DATA1";
    case data2:
        return "DATA2";
    case mdata:
        return "MDATA";
    case ack:
        return "ACK";
    case nak:
        return "NAK";
    case stall:
        return "STALL";
    case nyet:
        return "NYET";
    case preamble:
        return "PRE";
    case split:
        return "SPLIT";
    case ping:
        return "PING";
    default:
        return "UNKNOWN";
    }
}

bool isDeviceToHost(std::span<const std::uint8_t> bytes)
{
    return (bytes[0] & 0x80U) != 0;
}

std::uint16_t lengthOf(std::span<const std::uint8_t> bytes)
{
    return word(bytes, 6);
}

std::string requestText(std::span<const std::uint8_t> bytes, DisplayBase base)
{
    constexpr unsigned standard = 0;
    constexpr unsigned ofClass = 1;
    constexpr unsigned ofVendor = 2;
    constexpr unsigned toDevice = 0;
    constexpr unsigned toInterface = 1;
    constexpr unsigned toOther = 3;
    const unsigned type = bytes[0] >> 5 & 3U;
    const unsigned recipient = bytes[0] & 31U;
    const std::uint8_t request = bytes[1];
    std::string text;
    if (type == standard) {
        text = standardRequest(request);
    } else if (type == ofClass && recipient == toInterface) {
        text = hidRequest(request);
    } else if (type == ofClass && (recipient == toDevice || recipient == toOther) && !hubRequest(request).empty()) {
        text = recipient == toDevice ? "hub " : "port ";
        text += hubRequest(request);
    }
    if (text.empty()) {
        text = type == ofVendor ? "vendor request " : type == ofClass ? "class request " : "request ";
        text += number(request, 8, base);
    }
    const std::uint16_t value = word(bytes, 2);
    if (type == standard && (request == getDescriptor || request == getDescriptor + 1)) {
        const std::string_view name = descriptorName(std::uint8_t(value >> 8));
        text += " " + (name.empty() ? number(value >> 8, 8, base) : std::string(name)) + " " + decimal(value & 0xff);
    } else if (type == standard && request == setAddress) {
        text += " " + number(value, value >> addressBits == 0 ? addressBits : 16, base);
    } else if (type == standard && request == setConfiguration) {
        text += " " + decimal(value);
    } else {
        text += ", value " + number(value, 16, base);
        text += ", index " + number(word(bytes, 4), 16, base);
    }
    const std::uint16_t length = lengthOf(bytes);
    return length == 0 ? text : text + ", " + decimal(length) + (length == 1 ? " byte" : " bytes");
}

std::string descriptorText(std::span<const std::uint8_t> bytes, std::span<const std::uint8_t> data, DisplayBase base)
{
    const bool isStandard = (bytes[0] >> 5 & 3U) == 0;
    if (!isStandard || bytes[1] != getDescriptor || data.size() < 2) {
        return {};
    }
    switch (data[1]) {
    case DeviceDescriptor:
        return deviceText(data, base);
    case StringDescriptor:
        return stringText(data);
    case ConfigurationDescriptor:
        return configurationText(data, base);
    default:
        return {};
    }
}

} // namespace usb
