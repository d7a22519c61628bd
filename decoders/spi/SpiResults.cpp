#include "SpiResults.h"

#include "common/MessageExport.h"

#include <string_view>

using lux::FrameText;
using lux::FrameValues;
using lux::ShortText;

namespace {

bool isSame(const Channel &a, const Channel &b)
{
    return a.isDefined() && a.channelIndex == b.channelIndex;
}

} // namespace

SpiResults::SpiResults(const SpiSettings &settings)
    : m_mosi(settings.mosi), m_miso(settings.miso), m_bits(unsigned(settings.word.value()))
{
    for (const Channel &channel : {m_mosi, m_miso}) {
        if (channel.isDefined()) {
            showBubblesOn(channel);
        }
    }
}

void SpiResults::describe(const FrameData &frame, FrameText &out) const
{
    if (!out.isBubble()) {
        describeWord(frame, out);
    } else if (isSame(m_mosi, out.channel())) {
        describeLine(frame, Line::Mosi, out);
    } else if (isSame(m_miso, out.channel())) {
        describeLine(frame, Line::Miso, out);
    }
}

void SpiResults::describeLine(const FrameData &frame, Line line, FrameText &out) const
{
    if (frame.kind == Cut) {
        out.add("!");
        out.add("Cut");
        out.add("Word cut after ", lux::formatCount(frame.extra), frame.extra == 1 ? " bit" : " bits");
        return;
    }
    const ShortText number = out.number(line == Line::Mosi ? frame.data : frame.data2, m_bits);
    out.add(number);
    out.add(line == Line::Mosi ? "MOSI " : "MISO ", number);
}

void SpiResults::describeWord(const FrameData &frame, FrameText &out) const
{
    const bool isCut = frame.kind == Cut;
    const unsigned bits = isCut ? frame.extra : m_bits;
    ShortText tail;
    if (isCut) {
        tail.add(", cut after ");
        tail.add(lux::formatCount(frame.extra).view());
        tail.add(frame.extra == 1 ? " bit" : " bits");
    }
    const ShortText mosi = out.number(frame.data, bits);
    const ShortText miso = out.number(frame.data2, bits);
    if (m_mosi.isDefined() && m_miso.isDefined()) {
        out.add("MOSI ", mosi, ", MISO ", miso, tail);
    } else {
        out.add(m_mosi.isDefined() ? "MOSI " : "MISO ", m_mosi.isDefined() ? mosi : miso, tail);
    }
}

void SpiResults::values(const FrameData &frame, FrameValues &out) const
{
    out.kind(frame.kind == Cut ? "cut" : "word");
    if (frame.kind == Cut) {
        out.number("n", frame.extra);
    }
    if (m_mosi.isDefined()) {
        out.number("mosi", frame.data);
    }
    if (m_miso.isDefined()) {
        out.number("miso", frame.data2);
    }
}

std::span<const char *const> SpiResults::columns() const
{
    static constexpr const char *names[] = {"mosi", "miso", "n"};
    return names;
}

void SpiResults::exportFile(lux::ExportWriter &out, std::uint32_t optionId) const
{
    switch (optionId) {
    case SpiSettings::MosiWords:
        exportWords(out, Line::Mosi);
        break;
    case SpiSettings::MisoWords:
        exportWords(out, Line::Miso);
        break;
    case SpiSettings::Transfers:
        exportTransfers(out);
        break;
    default:
        exportFrames(out);
        break;
    }
}

/// Whole words, each in as many bytes as it needs, the highest byte first.
void SpiResults::exportWords(lux::ExportWriter &out, Line line) const
{
    constexpr unsigned bitsOfByte = 8;
    const std::uint64_t count = frameCount();
    for (std::uint64_t i = 0; i < count; ++i) {
        const FrameData one = frame(i);
        if (one.kind == Word) {
            out.big(line == Line::Mosi ? one.data : one.data2, (m_bits + bitsOfByte - 1) / bitsOfByte);
        }
        out.progress(i, count);
    }
}

/// A line for what was sent during one select: time, then the words: "0.000012 0x9F/0xFF 0x00/0x20".
void SpiResults::exportTransfers(lux::ExportWriter &out) const
{
    FrameText numbers;
    numbers.start(FrameText::Purpose::Tabular, Channel(), out.base());
    lux::MessageExport messages(out);
    const std::uint64_t count = frameCount();
    for (std::uint64_t i = 0; i < count; ++i) {
        const FrameData one = frame(i);
        if (i == 0 || (one.flags & FirstOfTransfer) != 0) {
            messages.begin(one);
        }
        const unsigned bits = one.kind == Cut ? one.extra : m_bits;
        const ShortText mosi = m_mosi.isDefined() ? numbers.number(one.data, bits) : ShortText();
        const ShortText miso = m_miso.isDefined() ? numbers.number(one.data2, bits) : ShortText();
        messages.add(one, mosi, m_mosi.isDefined() && m_miso.isDefined() ? "/" : "", miso,
                     one.kind == Cut ? " cut" : "");
        out.progress(i, count);
    }
    messages.end();
}
