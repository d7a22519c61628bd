#include "LinResults.h"

#include <array>
#include <string_view>

using lux::FrameText;
using lux::FrameValues;
using lux::ShortText;

namespace {

/// The services of configuration and identification (LIN 2.2A, 4.2.3.1).
std::string_view serviceName(std::uint8_t service)
{
    static constexpr std::array<std::string_view, 8> names = {
        "assign NAD", "assign frame identifier", "read by identifier", "conditional change NAD",
        "data dump",  "assign NAD by position",  "save configuration", "assign frame identifier range"};
    constexpr std::uint8_t first = 0xb0;
    return service >= first && service - first < std::uint8_t(names.size()) ? names[std::size_t(service - first)]
                                                                            : std::string_view();
}

/// What a diagnostic frame is for: node address, length, service (LIN 2.2A, 4.2.2 and 4.2.3).
ShortText diagnosticName(const LinFrame &frame)
{
    constexpr std::uint8_t answerOffset = 0x40;
    constexpr std::uint8_t negativeAnswer = 0x7f;
    const auto data = frame.data();
    const bool isRequest = frame.id() == LinFrame::masterRequest;
    if (isRequest && !data.empty() && data[0] == 0) {
        return {"go to sleep"};
    }
    ShortText text(isRequest ? "master request" : "slave response");
    if (data.size() < 3) {
        return text;
    }
    if (!isRequest && data[2] == negativeAnswer) {
        text.add(", negative");
        return text;
    }
    const std::string_view service = serviceName(isRequest ? data[2] : std::uint8_t(data[2] - answerOffset));
    if (!service.empty()) {
        text.add(", ");
        text.add(service);
    }
    return text;
}

ShortText nameOf(const LinFrame &frame)
{
    constexpr std::uint8_t firstReserved = 0x3e;
    if (frame.id() == LinFrame::masterRequest || frame.id() == LinFrame::slaveResponse) {
        return diagnosticName(frame);
    }
    return frame.id() >= firstReserved ? ShortText("reserved") : ShortText();
}

} // namespace

LinResults::LinResults(const LinSettings &settings) : m_settings(settings), m_line(settings.rx)
{
    showBubblesOn(m_line);
}

void LinResults::addFrame(const LinFrame &frame, lux::Sample first, lux::Sample last)
{
    std::uint64_t bytes = 0;
    for (std::size_t i = 0; i < LinFrame::mostData; ++i) {
        bytes |= std::uint64_t(frame.bytes[i]) << 8 * i;
    }
    const bool isWrong = frame.hasChecksum() && !frame.isRight(m_settings.checksumFor(frame.id()));
    add({.firstSample = first,
         .lastSample = last,
         .data = bytes,
         .data2 = std::uint64_t(frame.pid) | std::uint64_t(frame.bytes[LinFrame::mostData]) << 8,
         .kind = Whole,
         .flags = std::uint16_t((frame.isParityRight() ? 0U : unsigned(ParityWrong)) |
                                (isWrong ? unsigned(ChecksumWrong) : 0U) |
                                (frame.framingError ? unsigned(FramingError) : 0U)),
         .extra = std::uint32_t(frame.count)});
}

LinFrame LinResults::unpacked(const FrameData &frame)
{
    LinFrame out{.pid = std::uint8_t(frame.data2), .count = frame.extra, .framingError = has(frame, FramingError)};
    for (std::size_t i = 0; i < LinFrame::mostData; ++i) {
        out.bytes[i] = std::uint8_t(frame.data >> 8 * i);
    }
    out.bytes[LinFrame::mostData] = std::uint8_t(frame.data2 >> 8);
    return out;
}

// ---- texts ----------------------------------------------------------------------------------------------------------

void LinResults::describe(const FrameData &frame, FrameText &out) const
{
    const ShortText duration = lux::formatDuration(frame.lastSample - frame.firstSample + 1, GetSampleRate());
    switch (frame.kind) {
    case Whole:
        describeFrame(frame, out);
        break;
    case Break:
        out.add("B");
        out.add("Break");
        out.add("Break without header");
        out.add("Break without header: ", has(frame, NoSync) ? "no sync field" : "no identifier");
        break;
    case WakeUp:
        out.add("W");
        out.add("Wake-up");
        out.add("Wake-up signal of ", duration);
        break;
    default:
        break;
    }
}

void LinResults::describeFrame(const FrameData &frame, FrameText &out) const
{
    const LinFrame lin = unpacked(frame);
    const ShortText id = out.number(lin.id(), 6);
    const bool isWrong = frame.flags != 0 || lin.count < 2;
    ShortText head("ID ");
    head.add(id);
    const ShortText name = nameOf(lin);
    if (!name.view().empty()) {
        head.add(" ");
        head.add(name);
    }
    ShortText errors(has(frame, ParityWrong) ? ", parity error" : "");
    errors.add(has(frame, ChecksumWrong) ? ", checksum error" : "");
    errors.add(has(frame, FramingError) ? ", framing error" : "");
    errors.add(lin.count == 0 ? ", no response" : lin.count == 1 ? ", incomplete response" : "");

    out.add(isWrong ? "!" : "F");
    out.add(id, isWrong ? " !" : "");
    out.add("ID ", id, isWrong ? " !" : "");
    if (lin.count == 0) {
        out.add(head, errors);
        return;
    }
    ShortText full(head);
    full.add(errors);
    if (lin.hasChecksum()) {
        const bool isEnhanced = lin.isRight(LinChecksum::Enhanced);
        full.add(isEnhanced ? ", enhanced" : lin.isRight(LinChecksum::Classic) ? ", classic" : ", wrong");
        full.add(" checksum ");
        full.add(out.number(lin.checksum(), 8));
    }
    full.add(": ");
    head.add(errors);
    head.add(": ");
    out.addBytes(head, lin.data());
    out.addBytes(full, lin.data());
}

// ---- values ---------------------------------------------------------------------------------------------------------

void LinResults::values(const FrameData &frame, FrameValues &out) const
{
    const LinFrame lin = unpacked(frame);
    switch (frame.kind) {
    case Whole:
        out.kind("frame").number("id", lin.id()).number("pid", lin.pid).number("par", lin.isParityRight());
        out.hex("data", lin.data());
        if (lin.hasChecksum()) {
            out.number("ck", lin.checksum()).number("enh", lin.isRight(LinChecksum::Enhanced));
            out.number("cls", lin.isRight(LinChecksum::Classic));
        }
        if (has(frame, FramingError)) {
            out.number("fe", 1);
        }
        break;
    case Break:
        out.kind("break").hex("data", {});
        break;
    case WakeUp:
        out.kind("wakeup");
        break;
    default:
        break;
    }
}

std::span<const char *const> LinResults::columns() const
{
    static constexpr const char *names[] = {"id", "pid", "par", "data", "ck", "enh", "cls", "fe"};
    return names;
}
