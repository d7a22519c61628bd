#include "UsbResults.h"

#include "UsbNames.h"

#include <algorithm>

using lux::FrameText;
using lux::FrameValues;
using lux::ShortText;

namespace {

constexpr std::size_t tokenBytes = 3;
constexpr std::size_t checkBytes = 2;

std::string_view nameOf(UsbEnd end)
{
    switch (end) {
    case UsbEnd::StuffError:
        return "Bit stuffing error";
    case UsbEnd::Babble:
        return "Packet too long";
    default:
        return "Error";
    }
}

std::uint32_t tokenBits(std::span<const std::uint8_t> bytes)
{
    return bytes.size() < tokenBytes ? 0U : std::uint32_t(bytes[1]) | std::uint32_t(bytes[2]) << 8;
}

std::span<const std::uint8_t> dataOf(std::span<const std::uint8_t> bytes)
{
    return bytes.size() < 1 + checkBytes ? std::span<const std::uint8_t>() : bytes.subspan(1, bytes.size() - 3);
}

} // namespace

UsbResults::UsbResults(const UsbSettings &settings) : m_dp(settings.dp), m_dm(settings.dm)
{
    showBubblesOn(m_dp);
    showBubblesOn(m_dm);
}

FrameData UsbResults::frameOf(const UsbPacket &packet)
{
    const std::size_t count = packet.count();
    const bool isInline = count <= sizeof(std::uint64_t);
    std::uint64_t data = 0;
    if (isInline) {
        for (std::size_t i = count; i > 0; --i) {
            data = data << 8 | packet.bytes[i - 1];
        }
    } else {
        data = keep(std::span(packet.bytes.data(), count));
    }
    const auto flag = [](bool isSet, Flag value) { return isSet ? unsigned(value) : 0U; };
    constexpr unsigned syncBits = 8;
    const unsigned flags = flag(packet.bits >= syncBits && packet.sync != usb::sync, SyncWrong) |
                           flag(!packet.isCheckRight(), CrcWrong) | flag(isInline, Inline) | flag(count == 0, Short) |
                           flag(packet.isLowSpeed, LowSpeed);
    return {.firstSample = packet.first,
            .lastSample = packet.last,
            .data = data,
            .kind = Packet,
            .flags = std::uint16_t(flags),
            .extra = std::uint32_t(count)};
}

FrameData UsbResults::frameOf(const Parts &parts, std::span<const std::uint8_t> bytes, lux::Sample first,
                              lux::Sample last)
{
    const std::uint64_t words = std::uint64_t(parts.token) | std::uint64_t(parts.dataPid) << 8 |
                                std::uint64_t(parts.handshake) << 16 | std::uint64_t(parts.address) << 24 |
                                std::uint64_t(parts.endpoint) << 32 | std::uint64_t(parts.stage) << 40;
    return {.firstSample = first,
            .lastSample = last,
            .data = bytes.empty() ? 0 : keep(bytes),
            .data2 = words,
            .kind = Transaction,
            .line = 1,
            .extra = std::uint32_t(bytes.size())};
}

UsbResults::Parts UsbResults::partsOf(const FrameData &frame)
{
    const auto byte = [&](unsigned number) { return std::uint8_t(frame.data2 >> 8 * number); };
    return {.token = byte(0),
            .dataPid = byte(1),
            .handshake = byte(2),
            .address = byte(3),
            .endpoint = byte(4),
            .stage = Stage(byte(5))};
}

UsbResults::Bytes::Bytes(const UsbResults &results, const FrameData &frame)
{
    if (frame.extra == 0) {
        return;
    }
    if (has(frame, Inline)) {
        for (std::size_t i = 0; i < sizeof m_own; ++i) {
            m_own[i] = std::uint8_t(frame.data >> 8 * i);
        }
        m_all = std::span(m_own, std::min<std::size_t>(frame.extra, sizeof m_own));
    } else {
        m_all = results.bytes(frame.data);
    }
}

// ---- texts ----------------------------------------------------------------------------------------------------------

void UsbResults::describe(const FrameData &frame, FrameText &out) const
{
    if (out.isBubble() && out.channel().channelIndex != (frame.line == 0 ? m_dp : m_dm).channelIndex) {
        return;
    }
    const ShortText duration = lux::formatDuration(frame.lastSample - frame.firstSample + 1, GetSampleRate());
    const auto state = [&](std::string_view letter, std::string_view name) {
        out.add(letter);
        out.add(name);
        out.add(name, " for ", duration);
    };
    switch (frame.kind) {
    case Packet:
        describePacket(frame, out);
        break;
    case KeepAlive:
        out.add("K");
        out.add("Keep-alive");
        break;
    case Reset:
        state("R", "Reset");
        break;
    case Suspend:
        state("S", "Suspend");
        break;
    case Resume:
        state("W", "Resume");
        break;
    case Error:
        out.add("!");
        out.add("Error");
        out.add(nameOf(UsbEnd(frame.extra)));
        break;
    default:
        describeTransaction(frame, out);
        break;
    }
}

void UsbResults::describePacket(const FrameData &frame, FrameText &out) const
{
    if (has(frame, Short)) {
        out.add("!");
        out.add("Invalid");
        out.add("Invalid packet", has(frame, SyncWrong) ? ", wrong sync pattern" : "");
        return;
    }
    const Bytes content(*this, frame);
    const std::span<const std::uint8_t> bytes = content.all();
    const std::string_view name = usb::packetName(bytes[0]);
    const usb::Kind kind = usb::kindOf(bytes[0]);
    const bool isWrong = has(frame, SyncWrong) || has(frame, CrcWrong) || kind == usb::Kind::Unknown;
    ShortText errors(has(frame, SyncWrong) ? ", wrong sync pattern" : "");
    errors.add(has(frame, CrcWrong) ? ", CRC error" : "");
    out.add(isWrong ? "!" : name.substr(0, 1));
    out.add(name, isWrong ? " !" : "");
    const std::uint32_t bits = tokenBits(bytes);
    switch (kind) {
    case usb::Kind::Token: {
        const ShortText address = out.number(bits & 0x7fU, usb::addressBits);
        const ShortText endpoint = out.number(bits >> 7 & 15U, usb::endpointBits);
        out.add(name, " ", address, ".", endpoint, isWrong ? " !" : "");
        out.add(name, ", address ", address, ", endpoint ", endpoint, errors);
        break;
    }
    case usb::Kind::Frame:
        out.add(name, " ", lux::formatCount(bits & 0x7ffU), isWrong ? " !" : "");
        out.add(name, ", frame ", lux::formatCount(bits & 0x7ffU), errors);
        break;
    case usb::Kind::Data: {
        const std::span<const std::uint8_t> data = dataOf(bytes);
        ShortText title(name);
        title.add(errors);
        title.add(data.empty() ? ", no data" : ": ");
        if (data.empty()) {
            out.add(title);
        } else {
            out.addBytes(title, data, 8);
            out.addBytes(title, data);
        }
        break;
    }
    case usb::Kind::Unknown:
        out.add("Unknown packet ", out.number(bytes[0], 8), errors);
        break;
    default:
        out.add(name, errors);
        break;
    }
}

void UsbResults::describeTransaction(const FrameData &frame, FrameText &out) const
{
    const Parts parts = partsOf(frame);
    const Bytes content(*this, frame);
    const std::span<const std::uint8_t> bytes = content.all();
    const std::string_view name = usb::packetName(parts.token);
    const std::string_view result = parts.handshake != 0 ? usb::packetName(parts.handshake)
                                    : parts.dataPid != 0 ? std::string_view("no handshake")
                                                         : std::string_view("no answer");
    ShortText title(name);
    title.add(" ");
    title.add(out.number(parts.address, usb::addressBits));
    title.add(".");
    title.add(out.number(parts.endpoint, usb::endpointBits));
    out.add(name.substr(0, 1));
    out.add(name);
    out.add(title);
    title.add(", ");
    title.add(result);
    out.add(title);
    if (parts.stage == Stage::Setup && bytes.size() == usb::setupBytes) {
        out.add(title, ": ", usb::requestText(bytes, out.base()));
    } else if (parts.stage == Stage::Status && bytes.size() >= usb::setupBytes) {
        const std::span<const std::uint8_t> setup = bytes.first(usb::setupBytes);
        const std::string request = usb::requestText(setup, out.base());
        const std::string content9 = usb::descriptorText(setup, bytes.subspan(usb::setupBytes), out.base());
        out.add(title, ": end of ", request);
        if (!content9.empty()) {
            out.add(title, ": end of ", request, ": ", content9);
        }
    } else if (!bytes.empty()) {
        title.add(": ");
        out.addBytes(title, bytes);
    }
}

// ---- values ---------------------------------------------------------------------------------------------------------

void UsbResults::values(const FrameData &frame, FrameValues &out) const
{
    switch (frame.kind) {
    case Packet:
        packetValues(frame, out);
        break;
    case KeepAlive:
        out.kind("keepalive");
        break;
    case Reset:
        out.kind("reset");
        break;
    case Suspend:
        out.kind("suspend");
        break;
    case Resume:
        out.kind("resume");
        break;
    case Error:
        out.kind("error");
        break;
    default:
        transactionValues(frame, out);
        break;
    }
}

void UsbResults::packetValues(const FrameData &frame, FrameValues &out) const
{
    const Bytes content(*this, frame);
    const std::span<const std::uint8_t> bytes = content.all();
    out.kind("packet").text("pid", has(frame, Short) ? "Invalid" : usb::packetName(bytes[0]));
    if (!has(frame, Short)) {
        const std::uint32_t bits = tokenBits(bytes);
        switch (usb::kindOf(bytes[0])) {
        case usb::Kind::Token:
            out.number("addr", bits & 0x7fU).number("ep", bits >> 7 & 15U);
            break;
        case usb::Kind::Frame:
            out.number("n", bits & 0x7ffU);
            break;
        case usb::Kind::Data:
            out.hex("data", dataOf(bytes));
            break;
        default:
            break;
        }
    }
    out.number("err", has(frame, SyncWrong) || has(frame, CrcWrong));
}

void UsbResults::transactionValues(const FrameData &frame, FrameValues &out) const
{
    const Parts parts = partsOf(frame);
    const Bytes content(*this, frame);
    out.kind("transaction").text("pid", usb::packetName(parts.token));
    out.number("addr", parts.address).number("ep", parts.endpoint);
    if (parts.stage == Stage::Status) {
        out.hex("request", content.all());
    } else if (parts.dataPid != 0) {
        out.hex("data", content.all());
    }
    out.text("result", parts.handshake != 0 ? usb::packetName(parts.handshake) : std::string_view("none"));
}

std::span<const char *const> UsbResults::columns() const
{
    static constexpr const char *names[] = {"pid", "addr", "ep", "n", "data", "request", "result", "err"};
    return names;
}
