#include "usbip/UsbIpWire.h"

#include <algorithm>
#include <string_view>

namespace emulator::usbip {

namespace {

constexpr std::uint16_t answerMask = 0x7FFF; // an answer has the operation's code without its top bit
constexpr std::string_view path = "/sys/devices/emulated/usb1/1-1";
constexpr std::size_t pathSize = 256;
constexpr std::uint32_t busNumber = 1;
constexpr std::uint32_t deviceNumber = 2;
constexpr std::uint32_t fullSpeed = 2;
constexpr std::uint32_t highSpeed = 3;
constexpr std::uint32_t notIsochronous = 0xFFFFFFFF;

void put16(Bytes &out, std::uint32_t value)
{
    out.insert(out.end(), {std::uint8_t(value >> 8), std::uint8_t(value)});
}

void put32(Bytes &out, std::uint32_t value)
{
    put16(out, value >> 16);
    put16(out, value & 0xFFFF);
}

void putText(Bytes &out, std::string_view text, std::size_t size)
{
    out.insert(out.end(), text.begin(), text.end());
    out.resize(out.size() + size - text.size(), 0);
}

std::uint32_t get32(std::span<const std::uint8_t> bytes, std::size_t at)
{
    return std::uint32_t(bytes[at]) << 24 | std::uint32_t(bytes[at + 1]) << 16 | std::uint32_t(bytes[at + 2]) << 8 |
           bytes[at + 3];
}

void set32(HeadBytes &bytes, std::size_t at, std::uint32_t value)
{
    for (std::size_t i = 0; i < 4; ++i) {
        bytes[at + i] = std::uint8_t(value >> (24 - 8 * i));
    }
}

Bytes answerHead(Operation operation, OperationStatus status)
{
    Bytes out;
    put16(out, version);
    put16(out, std::uint16_t(operation) & answerMask);
    put32(out, std::uint32_t(status));
    return out;
}

void putDevice(Bytes &out, const Instrument &device)
{
    const Bytes d = device.deviceDescriptor();
    putText(out, path, pathSize);
    putText(out, busId, busIdSize);
    put32(out, busNumber);
    put32(out, deviceNumber);
    put32(out, device.speed() == Speed::High ? highSpeed : fullSpeed);
    put16(out, std::uint32_t(d[8] | d[9] << 8));
    put16(out, std::uint32_t(d[10] | d[11] << 8));
    put16(out, std::uint32_t(d[12] | d[13] << 8));
    const Bytes configuration = device.configurationDescriptor();
    out.insert(out.end(), {d[4], d[5], d[6], configuration[5], d[17], configuration[4]});
}

} // namespace

OperationHead parseOperation(std::span<const std::uint8_t, operationSize> head)
{
    return {std::uint16_t(head[0] << 8 | head[1]), std::uint16_t(head[2] << 8 | head[3])};
}

Bytes deviceList(const Instrument &device)
{
    Bytes out = answerHead(Operation::ListDevices, OperationStatus::Good);
    put32(out, device.attached() ? 1 : 0);
    if (device.attached()) {
        putDevice(out, device);
        const Bytes configuration = device.configurationDescriptor();
        const std::span<const std::uint8_t> interface(configuration.data() + 9, 9);
        out.insert(out.end(), {interface[5], interface[6], interface[7], 0});
    }
    return out;
}

Bytes importAnswer(const Instrument &device, OperationStatus status)
{
    Bytes out = answerHead(Operation::Import, status);
    if (status == OperationStatus::Good) {
        putDevice(out, device);
    }
    return out;
}

Head parseHead(std::span<const std::uint8_t, headSize> head)
{
    constexpr std::size_t lengthAt = 24;
    constexpr std::size_t unlinksAt = 20;
    constexpr std::size_t setupAt = 40;
    Head out;
    out.command = get32(head, 0);
    out.sequence = get32(head, 4);
    out.toHost = get32(head, 12) == 1;
    out.endpoint = get32(head, 16);
    out.length = get32(head, lengthAt);
    out.unlinks = get32(head, unlinksAt);
    std::copy_n(head.begin() + setupAt, out.setup.size(), out.setup.begin());
    return out;
}

HeadBytes submitAnswer(std::uint32_t sequence, std::int32_t status, std::uint32_t actual)
{
    HeadBytes out{};
    set32(out, 0, std::uint32_t(Command::SubmitAnswer));
    set32(out, 4, sequence);
    set32(out, 20, std::uint32_t(status));
    set32(out, 24, actual);
    set32(out, 32, notIsochronous);
    return out;
}

HeadBytes unlinkAnswer(std::uint32_t sequence, std::int32_t status)
{
    HeadBytes out{};
    set32(out, 0, std::uint32_t(Command::UnlinkAnswer));
    set32(out, 4, sequence);
    set32(out, 20, std::uint32_t(status));
    return out;
}

std::int32_t statusOf(Outcome outcome)
{
    constexpr std::int32_t brokenPipe = -32;    // EPIPE
    constexpr std::int32_t protocolError = -71; // EPROTO
    constexpr std::int32_t shutDown = -108;     // ESHUTDOWN
    switch (outcome) {
    case Outcome::Done:
        return 0;
    case Outcome::Stalled:
        return brokenPipe;
    case Outcome::NotYet:
    case Outcome::Failed:
        return protocolError;
    case Outcome::Gone:
        break;
    }
    return shutDown;
}

} // namespace emulator::usbip
