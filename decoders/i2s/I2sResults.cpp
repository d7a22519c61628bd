#include "I2sResults.h"

#include "I2sWave.h"

#include <algorithm>

using lux::FrameText;
using lux::FrameValues;
using lux::ShortText;

namespace {

unsigned slotOf(const FrameData &frame)
{
    return frame.extra >> 16;
}

unsigned bitsOf(const FrameData &frame)
{
    return frame.extra & 0xffffU;
}

} // namespace

I2sResults::I2sResults(const I2sSettings &settings)
    : m_isStereo(settings.isStereo()),
      m_isSigned(settings.isSigned),
      m_firstSlot(settings.firstSlot()),
      m_bits(settings.bits.value())
{
    if (settings.sd.isDefined()) {
        showBubblesOn(settings.sd);
    }
}

/// Signed samples have a sign as decimal numbers; in the other bases they stand as they are on the wire.
ShortText I2sResults::number(const FrameData &frame, DisplayBase base) const
{
    const unsigned bits = std::max(1U, bitsOf(frame));
    if (base == DisplayBase::Decimal && m_isSigned) {
        const unsigned unused = 64 - bits;
        return lux::formatCount(std::int64_t(frame.data << unused) >> unused);
    }
    return lux::formatNumber(frame.data, bits, base);
}

void I2sResults::describe(const FrameData &frame, FrameText &out) const
{
    const ShortText value = number(frame, out.base());
    const bool isLeft = slotOf(frame) == 0;
    ShortText place(m_isStereo ? (isLeft ? "Left" : "Right") : "Slot ");
    ShortText letter(m_isStereo ? (isLeft ? "L " : "R ") : "");
    if (!m_isStereo) {
        place.add(lux::formatCount(slotOf(frame)).view());
        letter.add(lux::formatCount(slotOf(frame)).view());
        letter.add(": ");
    }
    ShortText count;
    if ((frame.flags & WrongCount) != 0) {
        count.add(", ");
        count.add(lux::formatCount(bitsOf(frame)).view());
        count.add(bitsOf(frame) == 1 ? " bit only" : " bits, not as many as usual");
    } else if ((frame.flags & ShortFrame) != 0) {
        count.add(", the frame has ");
        count.add(lux::formatCount(std::int64_t(frame.data2)).view());
        count.add(" clocks only");
    }
    out.add(value);
    out.add(letter, value, count.view().empty() ? "" : "!");
    out.add(place, " ", value, count);
}

void I2sResults::values(const FrameData &frame, FrameValues &out) const
{
    out.kind("sample").number("slot", slotOf(frame)).number("v", frame.data);
    if ((frame.flags & WrongCount) != 0) {
        out.number("n", bitsOf(frame));
    } else if ((frame.flags & ShortFrame) != 0) {
        out.number("clocks", frame.data2);
    }
}

std::span<const char *const> I2sResults::columns() const
{
    static constexpr const char *names[] = {"slot", "v", "n", "clocks"};
    return names;
}

void I2sResults::exportFile(lux::ExportWriter &out, std::uint32_t optionId) const
{
    if (optionId == I2sSettings::Wave) {
        exportWave(out);
    } else {
        exportFrames(out);
    }
}

/// All slots as channels of one file. A slot that a frame has not is silence there.
void I2sResults::exportWave(lux::ExportWriter &out) const
{
    const std::uint64_t count = frameCount();
    unsigned channels = m_isStereo ? 2 : 1;
    unsigned bits = unsigned(m_bits);
    std::uint64_t frames = 0; ///< from the first word of the first slot seen to its last
    std::int64_t first = 0;
    std::int64_t last = 0;
    for (std::uint64_t i = 0; i < count; ++i) {
        const FrameData one = frame(i);
        channels = std::max(channels, slotOf(one) - m_firstSlot + 1);
        bits = m_bits > 0 ? bits : std::max(bits, bitsOf(one));
        if (slotOf(one) == slotOf(frame(0))) {
            first = frames == 0 ? one.firstSample : first;
            last = one.firstSample;
            ++frames;
        }
        out.progress(i, 2 * count);
    }
    I2sWave wave(out, {.channels = channels, .bits = std::max(1U, bits), .isSigned = m_isSigned});
    for (std::uint64_t i = 0; i < count; ++i) {
        const FrameData one = frame(i);
        wave.add(slotOf(one) - m_firstSlot, one.data, bitsOf(one));
        out.progress(count + i, 2 * count);
    }
    wave.finish(frames > 1 ? frames - 1 : 0, last - first, GetSampleRate());
}
