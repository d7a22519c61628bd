#pragma once

#include <array>
#include <corvanlux/analyzer/ChannelReader.h>
#include <cstdint>

/// Some bits of a transfer, on one, two or four lines: the first ones are the highest.
struct QspiBits {
    std::uint32_t value = 0; ///< up to 32 bits
    lux::Sample first = 0;   ///< the edge that takes the first of them
    lux::Sample last = 0;    ///< the last sample before the clock's other edge behind the last of them
};

/// Clock and data lines of a chip while it is selected. Never leaves the decode at the data's end.
class QspiWire {
public:
    /// @param takenAtRise  the clock's edge at which data is taken
    QspiWire(const lux::ChannelReader &clk, const std::array<lux::ChannelReader *, 4> &lines, bool takenAtRise);

    /// Goes to the edges from `begin` on, up to `end`.
    void select(lux::Sample begin, lux::Sample end);
    /// Takes whole bits. On one line they come on IO0 when the controller sends them, on IO1 when the chip does.
    /// @param atBothEdges  two times a clock
    /// @return false when the select ends before
    bool take(unsigned bits, unsigned lines, bool fromChip, bool atBothEdges, QspiBits &taken);
    /// Clocks that were taken since select().
    [[nodiscard]] unsigned clocks() const { return m_clocks; }
    /// Behind bits that were taken at both edges: the next one is taken at the usual edge again.
    void finishDouble() { m_atBoth = false; }
    /// The edge that was taken last.
    [[nodiscard]] lux::Sample edge() const { return m_clk.position(); }
    /// Both single lines at the edge that was taken last.
    [[nodiscard]] unsigned singleLines() const { return m_single; }

private:
    bool nextEdge(bool atBothEdges);

    lux::ChannelReader m_clk;
    std::array<lux::ChannelReader, 4> m_lines;
    lux::Sample m_end = 0;
    unsigned m_clocks = 0;
    unsigned m_single = 0; ///< IO0 is bit 0, IO1 bit 1
    bool m_takenAtRise;
    bool m_atBoth = false;
};
