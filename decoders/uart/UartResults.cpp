#include "UartResults.h"

using lux::FrameText;
using lux::FrameValues;

UartResults::UartResults(const UartSettings &settings)
    : m_rx(settings.rx), m_tx(settings.tx), m_dataBits(unsigned(settings.dataBits.value()))
{
    for (const Channel &channel : {m_rx, m_tx}) {
        if (channel.isDefined()) {
            showBubblesOn(channel);
        }
    }
}

void UartResults::describe(const FrameData &frame, FrameText &out) const
{
    if (out.isBubble() && out.channel().channelIndex != channelOf(frame).channelIndex) {
        return;
    }
    const lux::ShortText duration = lux::formatDuration(frame.lastSample - frame.firstSample + 1, GetSampleRate());
    const std::string_view line = lineName(frame, out);
    switch (frame.kind) {
    case Byte:
        describeByte(frame, out);
        break;
    case Break:
        out.add("B");
        out.add("Break");
        out.add(line, "Break of ", duration);
        break;
    case Idle:
        out.add("I");
        out.add("Idle");
        out.add(line, "Idle for ", duration);
        break;
    default:
        break;
    }
}

/// With two lines the list tells which one it was; a bubble stands on its own row.
std::string_view UartResults::lineName(const FrameData &frame, const FrameText &out) const
{
    if (out.isBubble() || !m_rx.isDefined() || !m_tx.isDefined()) {
        return {};
    }
    return frame.line == Rx ? "RX: " : "TX: ";
}

void UartResults::describeByte(const FrameData &frame, FrameText &out) const
{
    const std::string_view line = lineName(frame, out);
    const bool isAddress = (frame.flags & Address) != 0;
    const lux::ShortText number = isAddress ? out.number(frame.data & 0xffU, 8) : out.number(frame.data, m_dataBits);
    const std::string_view word = isAddress ? "Address " : "Data ";
    const bool parity = (frame.flags & ParityError) != 0;
    const bool framing = (frame.flags & FramingError) != 0;
    if (!parity && !framing) {
        out.add(number);
        if (isAddress || !out.isBubble()) {
            out.add(line, word, number);
        }
        return;
    }
    out.add("!");
    out.add(number, " !");
    out.add(number, parity ? " PE" : "", framing ? " FE" : "");
    out.add(line, word, number, parity ? ", parity error" : "", framing ? ", framing error" : "");
}

void UartResults::values(const FrameData &frame, FrameValues &out) const
{
    switch (frame.kind) {
    case Byte:
        out.kind("byte").number("ch", channelOf(frame).channelIndex).number("v", frame.data);
        out.number("pe", (frame.flags & ParityError) != 0).number("fe", (frame.flags & FramingError) != 0);
        if ((frame.flags & Address) != 0) {
            out.number("address", 1);
        }
        break;
    case Break:
        out.kind("break").number("ch", channelOf(frame).channelIndex);
        break;
    case Idle:
        out.kind("idle").number("ch", channelOf(frame).channelIndex);
        break;
    default:
        break;
    }
}

std::span<const char *const> UartResults::columns() const
{
    static constexpr const char *names[] = {"ch", "v", "pe", "fe", "address"};
    return names;
}

void UartResults::exportFile(lux::ExportWriter &out, std::uint32_t optionId) const
{
    switch (optionId) {
    case UartSettings::RxBytes:
        exportBytes(out, Rx);
        break;
    case UartSettings::TxBytes:
        exportBytes(out, Tx);
        break;
    default:
        exportFrames(out);
        break;
    }
}

/// Characters of up to 8 bits as a byte each, of 9 bits as two, the lower one first; also those with errors.
void UartResults::exportBytes(lux::ExportWriter &out, Line line) const
{
    const std::uint64_t count = frameCount();
    for (std::uint64_t i = 0; i < count; ++i) {
        const FrameData one = frame(i);
        if (one.kind == Byte && one.line == line) {
            out.little(one.data, m_dataBits > 8 ? 2 : 1);
        }
        out.progress(i, count);
    }
}
