#pragma once

#include "BitGrid.h"
#include "BitOrder.h"
#include "Parity.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace lux {

/// How characters are sent on an asynchronous line.
struct AsyncFormat {
    unsigned dataBits = 8; ///< 5 to 9
    Parity parity = Parity::None;
    unsigned stopQuarters = BitGrid::quarters; ///< the stop element in quarters of a bit: 2, 4, 6 or 8
    BitOrder order = BitOrder::LsbFirst;
    bool idleHigh = true; ///< the level of the idle line, of a stop bit and of a 1
};

/// One start-stop character as it was received.
struct AsyncCharacter {
    Sample first = 0;
    Sample last = 0;
    std::uint32_t value = 0;
    bool parityWrong = false;
    bool stopMissing = false;
    bool isBreak = false; ///< the line did not come back for longer than a character
};

/// A line with start-stop characters (TIA-232-F, 2.1; ISO/IEC 1177): a start bit, data bits, parity, a stop element.
///
/// A bit is what two of three looks around its middle see, or the look in the middle where a bit is too short for
/// three. The stop bit is looked at a little early: so a sender may be as much too fast as too slow, by half a bit at
/// the character's end, which is some 5 % of its rate; by a quarter where there is half a stop bit only. The line is
/// asked for an element only when the capture has all of it, so that it never leaves the decode at the data's end;
/// several lines can be read in turn.
class AsyncLine {
public:
    /// The most bits of a character, its start bit and a stop bit included, and some to spare.
    static constexpr unsigned mostBits = 16;
    /// A bit of at least so many samples is looked at three times, a sixteenth of a bit apart.
    static constexpr std::int64_t samplesForVote = 16;

    AsyncLine(const ChannelReader &line, const BitGrid &grid, const AsyncFormat &format)
        : m_line(line),
          m_grid(grid),
          m_format(format),
          m_bitsToStop(1 + format.dataBits + unsigned(hasParity())),
          m_vote(grid.isCoarserThan(samplesForVote) ? 0 : grid.atQuarter(1) / 4),
          m_length(grid.endOfQuarters(m_bitsToStop * BitGrid::quarters + format.stopQuarters))
    {
        for (unsigned bit = 0; bit < m_bitsToStop; ++bit) {
            m_looks[bit] = grid.middleOf(bit);
        }
        m_looks[m_bitsToStop] = grid.atQuarter(m_bitsToStop * BitGrid::quarters + stopLook()) - early();
    }

    /// Goes to the next start bit: an edge from idle behind which the line is not idle in the bit's middle.
    /// @return false when no character follows whose stop bit is in the capture
    bool findStart()
    {
        for (;;) {
            while (m_line.level() != m_format.idleHigh) {
                if (!m_line.hasEdge()) {
                    return false;
                }
                m_line.nextEdge();
            }
            if (!m_line.hasEdge() || m_line.peekEdge() + m_looks[m_bitsToStop] + m_vote >= m_line.sampleCount()) {
                return false;
            }
            m_start = m_line.nextEdge();
            if (m_line.peekEdge() > m_start + m_looks[0] + m_vote || look(0) != m_format.idleHigh) {
                return true;
            }
        }
    }
    /// The edge of the start bit that was found.
    [[nodiscard]] Sample start() const { return m_start; }
    /// Reads the character whose start was found, and goes to where the next start is looked for.
    [[nodiscard]] AsyncCharacter read()
    {
        AsyncCharacter character{.first = m_start};
        const std::uint32_t bits = readBits();
        character.value = bits >> 1 & ((1U << m_format.dataBits) - 1U);
        if (m_format.order == BitOrder::MsbFirst) {
            character.value = std::uint32_t(reversed(character.value, m_format.dataBits));
        }
        const bool parity = hasParity() && (bits >> (m_bitsToStop - 1) & 1U) != 0;
        character.parityWrong = isParityChecked() && parity != parityBit(character.value, m_format.parity);
        character.stopMissing = (bits >> m_bitsToStop & 1U) == 0;
        if (character.stopMissing && character.value == 0 && !parity) {
            endOfBreak(character);
        } else {
            endOfStop(character);
        }
        return character;
    }
    /// A break may begin within a character, and hides its stop bit.
    /// @param character  the one that was read last @param least  samples of a break
    /// @return where it begins; the capture's length when there is none
    [[nodiscard]] Sample breakWithin(const AsyncCharacter &character, Sample least) const
    {
        const bool isLow = character.stopMissing && !character.isBreak && m_line.level() != m_format.idleHigh;
        return isLow && m_line.peekEdge() - m_line.lastEdge() >= least ? m_line.lastEdge() : m_line.sampleCount();
    }
    /// Reads the break that began within the last character, and goes behind it.
    [[nodiscard]] AsyncCharacter readBreak()
    {
        m_start = m_line.lastEdge();
        AsyncCharacter character{.first = m_start, .stopMissing = true};
        endOfBreak(character);
        return character;
    }
    /// A character that began before the line was known is none: looks for the next start right behind this one.
    void forget() { m_line.seek(m_start); }
    /// The sample where a bit is looked at; 0 is the start bit.
    [[nodiscard]] Sample lookOf(unsigned bit) const { return m_start + m_looks[bit]; }
    /// The number of the first stop bit.
    [[nodiscard]] unsigned stopBit() const { return m_bitsToStop; }
    /// The nominal length of a character.
    [[nodiscard]] Sample length() const { return m_length; }

private:
    [[nodiscard]] bool hasParity() const { return m_format.parity != Parity::None; }
    [[nodiscard]] bool isParityChecked() const { return hasParity() && m_format.parity != Parity::Ignored; }
    /// The middle of the stop bit, or of the part of it that is there, in quarters of a bit behind its begin.
    [[nodiscard]] unsigned stopLook() const { return std::min(m_format.stopQuarters, BitGrid::quarters) / 2; }
    /// The look at the stop bit comes before this middle.
    [[nodiscard]] Sample early() const { return m_grid.atQuarter(stopLook()) / 16; }
    /// What three looks around a bit's middle see, by majority.
    [[nodiscard]] bool look(unsigned bit) const
    {
        const Sample middle = m_start + m_looks[bit];
        ChannelReader line(m_line);
        const bool before = line.levelAt(middle - m_vote);
        const bool at = line.levelAt(middle);
        return at == before ? at : line.levelAt(middle + m_vote);
    }
    /// The bits from the start bit, which is the lowest, to the first stop bit, 1 for the idle level. Goes to the last
    /// edge before the look at the stop bit.
    ///
    /// From edge to edge, each of which turns all bits that are looked at behind it: random data has some five edges a
    /// character, and asking for each bit would be a branch that nothing can foresee.
    [[nodiscard]] std::uint32_t readBits()
    {
        const Sample last = m_start + m_looks[m_bitsToStop];
        const ChannelReader atStart(m_line);
        std::uint32_t bits = 0;
        Sample narrowest = INT64_MAX;
        Sample before = m_start;
        while (m_line.peekEdge() <= last) {
            const Sample edge = m_line.nextEdge();
            bits ^= bitsBehind(edge - m_start);
            narrowest = std::min(narrowest, edge - before);
            before = edge;
        }
        narrowest = std::min(narrowest, m_line.peekEdge() - before);
        return narrowest > 2 * m_vote ? bits : voteBits(atStart);
    }
    /// The same where a pulse is so short that it is not seen by all three looks: what two of them see.
    /// @param line  at the start edge
    [[nodiscard]] std::uint32_t voteBits(ChannelReader line) const
    {
        const Sample last = m_start + m_looks[m_bitsToStop] + m_vote;
        std::uint32_t early = 0;
        std::uint32_t middle = 0;
        std::uint32_t late = 0;
        while (line.peekEdge() <= last) {
            const Sample edge = line.nextEdge() - m_start;
            early ^= bitsBehind(edge + m_vote);
            middle ^= bitsBehind(edge);
            late ^= bitsBehind(std::max<Sample>(edge - m_vote, 0));
        }
        return (early & middle) | (middle & late) | (early & late);
    }
    /// The bits that are looked at at or behind an edge, so far from that of the start bit.
    [[nodiscard]] std::uint32_t bitsBehind(Sample edge) const
    {
        const unsigned bit = m_grid.bitAt(edge);
        return ~std::uint32_t(0) << (bit + unsigned(edge > m_looks[bit]));
    }
    void endOfBreak(AsyncCharacter &character)
    {
        character.isBreak = true;
        character.parityWrong = false;
        if (m_line.level() != m_format.idleHigh && m_line.hasEdge()) {
            m_line.nextEdge();
            character.last = m_line.position() - 1;
        } else {
            character.last = m_line.level() == m_format.idleHigh ? m_line.lastEdge() - 1 : m_line.sampleCount() - 1;
        }
    }
    /// The character ends with its stop element, with the start edge of the next one, or with the capture.
    void endOfStop(AsyncCharacter &character)
    {
        const Sample end = std::min(m_start + m_length, m_line.sampleCount());
        character.last = end - 1;
        if (character.stopMissing || m_line.level() != m_format.idleHigh || !m_line.hasEdgeBefore(end)) {
            return;
        }
        const Sample edge = m_line.peekEdge();
        const Sample middle = edge + m_grid.middleOf(0);
        if (middle < m_line.sampleCount() && m_line.peekLevel(middle) != m_format.idleHigh) {
            // A sender whose clock is fast ends the stop element early, as far as half a bit.
            const unsigned needed = m_bitsToStop * BitGrid::quarters + m_format.stopQuarters - BitGrid::quarters / 2;
            character.stopMissing = edge <= m_start + m_grid.atQuarter(needed) - early();
            character.last = edge - 1;
        }
    }

    ChannelReader m_line;
    BitGrid m_grid;
    AsyncFormat m_format;
    unsigned m_bitsToStop;                  ///< bits before the stop element
    Sample m_vote;                          ///< from the middle look to the two others
    std::array<Sample, mostBits> m_looks{}; ///< where each bit is looked at, from the start edge
    Sample m_length;
    Sample m_start = 0;
};

} // namespace lux
