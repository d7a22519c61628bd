#include "DsiResults.h"

#include "DsiNames.h"
#include "common/MessageExport.h"

using lux::FrameText;
using lux::FrameValues;
using lux::ShortText;

DsiResults::DsiResults(const DsiSettings &settings) : m_lanes(settings.lines())
{
    showBubblesOn(m_lanes[0].n);
    for (std::size_t i = 0; i < std::size_t(settings.lanes.value()); ++i) {
        if (m_lanes[i].p.isDefined()) {
            showBubblesOn(m_lanes[i].p);
        }
    }
}

FrameData DsiResults::frameOf(const DsiElement &element, std::size_t lane)
{
    Kind kind = Entry;
    switch (element.kind) {
    case DsiElement::Kind::Byte:
        kind = Byte;
        break;
    case DsiElement::Kind::UltraLowPower:
        kind = UltraLowPower;
        break;
    case DsiElement::Kind::Turnaround:
        kind = Turnaround;
        break;
    case DsiElement::Kind::Burst:
        kind = Burst;
        break;
    default:
        break;
    }
    return {.firstSample = element.first,
            .lastSample = element.last,
            .data = element.value,
            .kind = std::uint8_t(kind),
            .line = std::uint8_t(lane)};
}

FrameData DsiResults::packetFrame(const PacketContent &content, lux::Sample first, lux::Sample last)
{
    return {.firstSample = first,
            .lastSample = last,
            .data = content.payload.empty() ? 0 : keep(content.payload),
            .data2 = std::uint64_t(content.fixed) << 32 | content.head,
            .kind = Packet,
            .flags = content.flags,
            .extra = std::uint32_t(content.payload.size())};
}

std::span<const std::uint8_t> DsiResults::payloadOf(const FrameData &frame) const
{
    return frame.extra == 0 ? std::span<const std::uint8_t>() : bytes(frame.data);
}

// ---- texts ----------------------------------------------------------------------------------------------------------

/// Bytes have a row of their own; all else is on the positive line of its lane.
bool DsiResults::isShownOn(const FrameData &frame, const Channel &channel) const
{
    const DsiSettings::Lane &lane = m_lanes[frame.line % m_lanes.size()];
    return channel.channelIndex == (frame.kind == Byte ? lane.n : lane.p).channelIndex;
}

void DsiResults::describe(const FrameData &frame, FrameText &out) const
{
    if (out.isBubble() && !isShownOn(frame, out.channel())) {
        return;
    }
    ShortText lane;
    if (!out.isBubble() && frame.line > 0) {
        lane.add("Lane ");
        lane.add(lux::formatCount(frame.line));
        lane.add(": ");
    }
    const ShortText duration = lux::formatDuration(frame.lastSample - frame.firstSample + 1, GetSampleRate());
    switch (frame.kind) {
    case Entry:
        describeEntry(frame, out);
        break;
    case Byte:
        out.add(out.number(frame.data, 8));
        out.add("Byte ", out.number(frame.data, 8));
        break;
    case Packet:
        describePacket(frame, out);
        break;
    case Cut:
        out.add("!");
        out.add("Cut");
        out.add("Cut packet");
        out.add("Packet cut after ", lux::formatCount(frame.extra), frame.extra == 1 ? " byte" : " bytes");
        break;
    case Turnaround:
        out.add("T");
        out.add("BTA");
        out.add("Bus turnaround");
        break;
    case UltraLowPower:
        out.add(lane, "U");
        out.add(lane, "ULPS");
        out.add(lane, "Ultra-low power for ", duration);
        break;
    default:
        out.add(lane, "H");
        out.add(lane, "HS");
        out.add(lane, "High-speed burst of ", duration);
        break;
    }
}

void DsiResults::describeEntry(const FrameData &frame, FrameText &out) const
{
    const std::string_view name = dsi::entryName(std::uint8_t(frame.data));
    const ShortText code = lux::formatNumber(frame.data, 8, DisplayBase::Binary);
    ShortText lane;
    if (frame.line > 0) {
        lane.add("Lane ");
        lane.add(lux::formatCount(frame.line));
        lane.add(": ");
    }
    out.add(name.empty() ? "?" : "E");
    out.add(name.empty() ? "Unknown entry" : name);
    out.add(lane, "Entry ", code, name.empty() ? "" : ": ", name);
}

void DsiResults::describePacket(const FrameData &frame, FrameText &out) const
{
    const auto head = std::uint32_t(frame.data2 >> 32);
    const auto dataType = std::uint8_t(head & 0x3fU);
    const bool fromPeripheral = has(frame, FromPeripheral);
    const bool isWrong = has(frame, EccWrong) || has(frame, ChecksumWrong);
    const std::string_view typeName = dsi::typeName(dataType, fromPeripheral);
    ShortText name(typeName.empty() ? "Packet type " : typeName);
    if (typeName.empty()) {
        name.add(out.number(dataType, 6));
    }
    const std::uint8_t parameters[] = {std::uint8_t(head >> 8), std::uint8_t(head >> 16)};
    const std::span<const std::uint8_t> content = has(frame, Long) ? payloadOf(frame) : std::span(parameters);
    std::string_view command;
    if (dsi::hasCommand(dataType, fromPeripheral) && !content.empty()) {
        command = dsi::commandName(content[0]);
    }
    ShortText channel("Channel ");
    channel.add(lux::formatCount(head >> 6 & 3U));
    channel.add(", ");
    ShortText errors(has(frame, EccCorrected) ? ", ECC corrected" : has(frame, EccWrong) ? ", ECC error" : "");
    errors.add(has(frame, ChecksumWrong) ? ", checksum error" : "");
    out.add(isWrong ? "!" : "P");
    out.add(command.empty() ? name.view() : command, isWrong ? " !" : "");
    ShortText title(channel);
    title.add(name);
    title.add(command.empty() ? "" : ", ");
    title.add(command);
    title.add(errors);
    out.add(title);
    if (!content.empty()) {
        title.add(": ");
        out.addBytes(title, content);
    }
}

// ---- values ---------------------------------------------------------------------------------------------------------

void DsiResults::values(const FrameData &frame, FrameValues &out) const
{
    const auto head = std::uint32_t(frame.data2);
    const std::uint8_t parameters[] = {std::uint8_t(head >> 8), std::uint8_t(head >> 16)};
    switch (frame.kind) {
    case Entry: {
        const ShortText code = lux::formatNumber(frame.data, 8, DisplayBase::Binary);
        out.kind("entry").text("v", code.view().substr(2));
        break;
    }
    case Byte:
        out.kind("byte").number("v", frame.data);
        break;
    case Packet:
        out.kind("packet").number("vc", head >> 6 & 3U).number("dt", head & 0x3fU);
        out.hex("data", has(frame, Long) ? payloadOf(frame) : std::span(parameters));
        out.number("ecc", !has(frame, EccWrong) && !has(frame, EccCorrected));
        if (has(frame, Long)) {
            out.number("crc", !has(frame, ChecksumWrong));
        }
        break;
    case Cut:
        out.kind("cut").number("n", frame.extra);
        break;
    case Turnaround:
        out.kind("bta");
        break;
    case UltraLowPower:
        out.kind("ulps");
        break;
    default:
        out.kind("hs");
        break;
    }
    if (frame.line > 0) {
        out.number("lane", frame.line);
    }
}

std::span<const char *const> DsiResults::columns() const
{
    static constexpr const char *names[] = {"lane", "v", "vc", "dt", "data", "ecc", "crc", "n"};
    return names;
}

// ---- exports --------------------------------------------------------------------------------------------------------

void DsiResults::exportFile(lux::ExportWriter &out, std::uint32_t optionId) const
{
    if (optionId == DsiSettings::Packets) {
        exportPackets(out);
    } else {
        exportFrames(out);
    }
}

/// A line a packet, whole or cut; without the entries and bytes that it is made of.
void DsiResults::exportPackets(lux::ExportWriter &out) const
{
    const std::uint64_t count = frameCount();
    FrameText text;
    lux::MessageExport messages(out);
    for (std::uint64_t i = 0; i < count; ++i) {
        const FrameData one = frame(i);
        if (one.kind == Packet || one.kind == Cut) {
            text.start(FrameText::Purpose::Tabular, Channel(), out.base());
            describe(one, text);
            messages.whole(one, text.last());
        }
        out.progress(i, count);
    }
}
