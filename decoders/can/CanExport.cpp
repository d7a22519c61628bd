#include "CanResults.h"
#include "common/Pcap.h"

#include <algorithm>
#include <array>

using lux::ExportWriter;
using lux::ShortText;

namespace {

// The identifier word of SocketCAN (Linux, Documentation/networking/can.rst).
constexpr std::uint32_t extendedFlag = 0x80000000U;
constexpr std::uint32_t remoteFlag = 0x40000000U;
// The flag bits of an FD frame there.
constexpr std::uint8_t fdRateSwitch = 1;
constexpr std::uint8_t fdErrorPassive = 2;
constexpr std::uint8_t fdFrame = 4;

constexpr std::size_t classicBytes = 8;

char hexDigit(unsigned value)
{
    return "0123456789ABCDEF"[value & 15U];
}

ShortText hex(std::uint32_t value, unsigned digits)
{
    ShortText text;
    while (digits > 0) {
        text.add(hexDigit(value >> 4 * --digits));
    }
    return text;
}

ShortText decimal(std::int64_t value, unsigned digits)
{
    const ShortText number = lux::formatCount(value);
    ShortText text;
    for (std::size_t i = number.view().size(); i < digits; ++i) {
        text.add('0');
    }
    text.add(number);
    return text;
}

} // namespace

void CanResults::exportFile(ExportWriter &out, std::uint32_t optionId) const
{
    switch (optionId) {
    case CanSettings::CandumpLog:
        exportCandump(out);
        break;
    case CanSettings::Pcap:
        exportPcap(out);
        break;
    default:
        exportFrames(out);
        break;
    }
}

/// What a controller hands to its host: a frame without an error.
bool CanResults::isDelivered(const FrameData &frame)
{
    return frame.kind == Whole && !has(frame, CrcWrong) && !has(frame, StuffCountWrong) &&
           faultOf(frame) == CanFault::None;
}

// ---- candump log ----------------------------------------------------------------------------------------------------

void CanResults::exportCandump(ExportWriter &out) const
{
    const std::uint64_t count = frameCount();
    for (std::uint64_t i = 0; i < count; ++i) {
        const FrameData one = frame(i);
        if (isDelivered(one)) {
            writeCandumpLine(out, one);
        }
        out.progress(i, count);
    }
}

/// "(0.001234) can0 123#1122", "123#R4" for a remote frame, "123##1..." for CAN FD with its flags.
void CanResults::writeCandumpLine(ExportWriter &out, const FrameData &frame) const
{
    constexpr std::int64_t microseconds = 1000000;
    const std::int64_t rate = GetSampleRate();
    const std::int64_t micros = frame.firstSample % rate * microseconds / rate;
    out.write("(");
    out.write(decimal(frame.firstSample / rate, 1));
    out.write(".");
    out.write(decimal(micros, 6));
    out.write(") can0 ");
    out.write(hex(idOf(frame), has(frame, Extended) ? 8 : 3));
    if (has(frame, Fd)) {
        const unsigned flags =
            (has(frame, RateSwitch) ? fdRateSwitch : 0U) | (has(frame, ErrorPassive) ? fdErrorPassive : 0U);
        out.write("##");
        out.write(hex(flags, 1));
    } else {
        out.write("#");
    }
    if (has(frame, Remote)) {
        out.write("R");
        if (codeOf(frame) > 0) {
            out.write(lux::formatCount(std::min<std::int64_t>(codeOf(frame), classicBytes)));
        }
    }
    for (const std::uint8_t byte : dataOf(frame)) {
        out.write(hex(byte, 2));
    }
    out.line();
}

// ---- pcap -----------------------------------------------------------------------------------------------------------

/// The file head of pcap with times in nanoseconds, link type LINKTYPE_CAN_SOCKETCAN.
void CanResults::exportPcap(ExportWriter &out) const
{
    constexpr std::uint32_t linkType = 227;
    lux::writePcapHead(out, linkType);
    const std::uint64_t count = frameCount();
    for (std::uint64_t i = 0; i < count; ++i) {
        const FrameData one = frame(i);
        if (isDelivered(one)) {
            writePacket(out, one);
        }
        out.progress(i, count);
    }
}

/// A packet has always room for the most bytes of its format, as the system's own captures have.
void CanResults::writePacket(ExportWriter &out, const FrameData &frame) const
{
    constexpr std::size_t headBytes = 8;
    const bool isFd = has(frame, Fd);
    const std::span<const std::uint8_t> data = dataOf(frame);
    const std::size_t room = isFd ? CanFrame::mostBytes : classicBytes;
    lux::writePcapPacketHead(out, frame.firstSample, GetSampleRate(), headBytes + room);

    const std::uint32_t flags = (has(frame, Extended) ? extendedFlag : 0U) | (has(frame, Remote) ? remoteFlag : 0U);
    const unsigned fdFlags =
        fdFrame | (has(frame, RateSwitch) ? fdRateSwitch : 0U) | (has(frame, ErrorPassive) ? fdErrorPassive : 0U);
    const auto length =
        has(frame, Remote) ? std::uint8_t(std::min<std::size_t>(codeOf(frame), classicBytes)) : lengthOf(frame);
    out.big(idOf(frame) | flags, 4);
    out.byte(length);
    out.byte(isFd ? std::uint8_t(fdFlags) : std::uint8_t(0));
    out.byte(0);
    out.byte(!isFd && codeOf(frame) > classicBytes ? codeOf(frame) : std::uint8_t(0)); // a code above 8 bytes
    out.write(data);
    for (std::size_t i = data.size(); i < room; ++i) {
        out.byte(0);
    }
}
