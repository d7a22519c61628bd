#include "I2sAnalyzer.h"

#include <algorithm>
#include <optional>

using lux::ChannelReader;
using lux::Sample;

LUX_PLUGIN(I2sAnalyzer)

/// The bits at the edges that count. A copy looks ahead. Never leaves the decode at the data's end.
class I2sAnalyzer::Clocks {
public:
    Clocks(const ChannelReader &sck, const ChannelReader &ws, const ChannelReader &sd, bool atRise)
        : m_sck(sck), m_ws(ws), m_sd(sd), m_atRise(atRise)
    {}
    bool next(Clock &clock)
    {
        if (!m_sck.hasEdge()) {
            return false;
        }
        clock.edge = m_sck.nextEdge();
        if (m_sck.level() != m_atRise) {
            if (!m_sck.hasEdge()) {
                return false;
            }
            clock.edge = m_sck.nextEdge();
        }
        clock.ws = m_ws.levelAt(clock.edge);
        clock.sd = m_sd.levelAt(clock.edge);
        return true;
    }

private:
    ChannelReader m_sck;
    ChannelReader m_ws;
    ChannelReader m_sd;
    bool m_atRise;
};

void I2sAnalyzer::decode()
{
    Clocks clocks(reader(m_settings.sck), reader(m_settings.ws), reader(m_settings.sd),
                  m_settings.edge == I2sEdge::Rising);
    m_rules = rules();
    m_usual = 0;
    m_before = 0;
    if (m_settings.isStereo()) {
        readStereo(clocks);
    } else {
        readFrames(clocks);
    }
}

I2sAnalyzer::Rules I2sAnalyzer::rules() const
{
    return {.sd = m_settings.sd,
            .format = m_settings.format,
            .bitOrder = m_settings.bitOrder,
            .isLeftHigh = m_settings.isLeftHigh(),
            .wanted = std::uint64_t(m_settings.bits.value()),
            .firstSlot = m_settings.firstSlot()};
}

/// NXP UM11732, 3.1 and 3.2: the word select tells the side, and each of its changes ends a word. In I2S the lowest bit
/// still comes with the clock that shows the change. What comes before the first change may be cut, and is not shown.
void I2sAnalyzer::readStereo(Clocks &clocks)
{
    const bool isLate = m_rules.format == I2sFormat::I2s;
    const bool isRight = m_rules.format == I2sFormat::Right;
    const std::uint64_t wanted = m_rules.wanted;
    Bits bits;
    Clock clock;
    if (!clocks.next(clock)) {
        return;
    }
    bool ws = clock.ws;
    bool hasBegin = false;
    while (clocks.next(clock)) {
        const bool isChange = clock.ws != ws;
        if (!isChange || isLate) {
            isRight ? bits.addLast(clock.sd, clock.edge) : bits.addFirst(clock.sd, clock.edge);
        }
        if (!isChange) {
            continue;
        }
        // Of a right-justified word that the capture's begin cuts the value is known when all of its bits are there.
        if (hasBegin || (isRight && wanted > 0 && bits.count >= wanted)) {
            endHalf(bits, ws);
        }
        hasBegin = true;
        ws = clock.ws;
        bits.clear();
        if (!isLate) {
            bits.addLast(clock.sd, clock.edge);
        }
    }
    // The word that the capture's end cuts: its value is known when all of its bits are there.
    if (hasBegin && !isRight && wanted > 0 && bits.count >= wanted) {
        add(wordOf(bits, 0, unsigned(wanted), ws == m_rules.isLeftHigh ? 0 : 1, false));
    }
}

void I2sAnalyzer::endHalf(const Bits &bits, bool ws)
{
    if (bits.count == 0) {
        return;
    }
    const std::uint64_t slot = ws == m_rules.isLeftHigh ? 0 : 1;
    const std::uint64_t wanted = m_rules.wanted;
    const std::uint64_t there = std::min<std::uint64_t>(bits.count, Bits::most);
    const bool isRight = m_rules.format == I2sFormat::Right;
    if (wanted == 0) {
        // All bits that there are: as many as two halves in a row had last, or a clock went missing.
        m_usual = bits.count == m_before || m_usual == 0 ? bits.count : m_usual;
        m_before = bits.count;
        const bool isWrong = bits.count != m_usual;
        add(wordOf(bits, isRight ? bits.count - there : 0, unsigned(there), slot, isWrong));
    } else if (bits.count < wanted) {
        add(wordOf(bits, 0, unsigned(there), slot, true));
    } else {
        add(wordOf(bits, isRight ? bits.count - wanted : 0, unsigned(wanted), slot, false));
    }
}

/// How the slots of a frame lie: as the settings tell, and else as the first frame has them.
I2sAnalyzer::Slots I2sAnalyzer::slotsOf(const Clocks &clocks) const
{
    const auto bits = std::uint64_t(m_settings.bits.value());
    const std::uint64_t frame = clocksOfFrame(clocks);
    Slots slots{.count = std::uint64_t(m_settings.slotCount.value()),
                .width = std::max(std::uint64_t(m_settings.slotWidth.value()), bits)};
    if (slots.count == 0) {
        const bool isOne = m_settings.format != I2sFormat::Tdm || slots.width == 0;
        slots.count = isOne ? 1 : std::max<std::uint64_t>(1, frame / slots.width);
    }
    if (slots.width == 0) {
        slots.width = std::max<std::uint64_t>(1, frame / slots.count);
    }
    slots.wanted = std::min<std::uint64_t>(bits > 0 ? bits : slots.width, Bits::most);
    return slots;
}

/// A rise of the word select begins a frame of slots that follow each other; in mode A and TDM with the clock behind
/// it. A word is kept until it is known whether its frame ends with it too early.
void I2sAnalyzer::readFrames(Clocks &clocks)
{
    const bool isLate = m_settings.format != I2sFormat::DspB;
    const Slots slots = slotsOf(clocks);
    Bits bits;
    std::uint64_t slot = slots.count; ///< the present one; that many behind the last
    std::uint64_t inSlot = 0;
    std::optional<FrameData> kept;
    const auto endWord = [&] {
        if (kept) {
            add(*kept);
        }
        kept = wordOf(bits, 0, unsigned(bits.count), slot + m_rules.firstSlot, bits.count < slots.wanted);
    };
    const auto take = [&](const Clock &clock) {
        if (slot == slots.count) {
            return;
        }
        if (inSlot < slots.wanted) {
            bits.addLast(clock.sd, clock.edge);
            if (bits.count == slots.wanted) {
                endWord();
            }
        }
        if (++inSlot == slots.width) {
            inSlot = 0;
            ++slot;
            bits.clear();
        }
    };
    bool ws = true;
    for (Clock clock; clocks.next(clock); ws = clock.ws) {
        const bool begins = clock.ws && !ws;
        if (!begins || isLate) {
            take(clock);
        }
        if (begins) {
            if (slot < slots.count && bits.count > 0 && bits.count < slots.wanted) {
                endWord();
            } else if (slot < slots.count && kept) {
                kept->flags |= I2sResults::ShortFrame;
                kept->data2 = slot * slots.width + inSlot;
            }
            slot = 0;
            inSlot = 0;
            bits.clear();
            if (!isLate) {
                take(clock);
            }
        }
    }
    if (kept) {
        add(*kept);
    }
}

/// The clocks from the first rise of the word select to the second; 0 where there are none.
std::uint64_t I2sAnalyzer::clocksOfFrame(Clocks clocks) const
{
    std::uint64_t count = 0;
    bool hasBegin = false;
    bool ws = true;
    for (Clock clock; clocks.next(clock); ws = clock.ws) {
        if (clock.ws && !ws) {
            if (hasBegin) {
                return count;
            }
            hasBegin = true;
        }
        count += hasBegin ? 1 : 0;
    }
    return 0;
}

/// @param first  of the bits that make the word, counted from the first that was taken
FrameData I2sAnalyzer::wordOf(const Bits &bits, std::uint64_t first, unsigned width, std::uint64_t slot,
                              bool isWrong) const
{
    const std::uint64_t kept = std::min<std::uint64_t>(bits.count, Bits::most);
    // The last bits lie lowest; the first ones are above those that follow them.
    const std::uint64_t behind = m_rules.format == I2sFormat::Right ? 0 : kept - width;
    const std::uint64_t mask = ~std::uint64_t(0) >> (Bits::most - width);
    const std::uint64_t value = bits.value >> behind & mask;
    return {.firstSample = bits.at[first % Bits::most],
            .lastSample = bits.at[(first + width - 1) % Bits::most],
            .data = m_rules.bitOrder == lux::BitOrder::MsbFirst ? value : lux::reversed(value, width),
            .kind = I2sResults::Word,
            .flags = std::uint16_t(isWrong ? I2sResults::WrongCount : 0),
            .extra = std::uint32_t(slot << 16 | width)};
}

void I2sAnalyzer::add(const FrameData &word)
{
    results().mark(m_rules.sd, word.firstSample, word.flags != 0 ? MarkerType::ErrorX : MarkerType::Start);
    results().add(word);
}
