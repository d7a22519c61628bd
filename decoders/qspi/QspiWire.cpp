#include "QspiWire.h"

#include <algorithm>

using lux::ChannelReader;
using lux::Sample;

QspiWire::QspiWire(const ChannelReader &clk, const std::array<ChannelReader *, 4> &lines, bool takenAtRise)
    : m_clk(clk), m_lines{*lines[0], *lines[1], *lines[2], *lines[3]}, m_takenAtRise(takenAtRise)
{}

/// The rise of the first clock may lie in the sample of the select.
void QspiWire::select(Sample begin, Sample end)
{
    m_clk.advanceTo(begin - 1);
    m_end = end;
    m_clocks = 0;
    m_single = 0;
    m_atBoth = false;
}

/// The chip may be released in the same sample as the last edge.
bool QspiWire::nextEdge(bool atBothEdges)
{
    if (!atBothEdges || !m_atBoth) {
        if (m_clk.level() == m_takenAtRise) {
            if (!m_clk.hasEdgeBefore(m_end + 1)) {
                return false;
            }
            m_clk.nextEdge();
        }
    }
    if (!m_clk.hasEdgeBefore(m_end + 1)) {
        return false;
    }
    m_clk.nextEdge();
    m_atBoth = atBothEdges;
    m_clocks += m_clk.level() == m_takenAtRise ? 1U : 0U;
    return true;
}

bool QspiWire::take(unsigned bits, unsigned lines, bool fromChip, bool atBothEdges, QspiBits &taken)
{
    taken = {};
    for (unsigned count = 0; count < bits; count += lines) {
        if (!nextEdge(atBothEdges)) {
            return false;
        }
        const Sample at = m_clk.position();
        if (count == 0) {
            taken.first = at;
        }
        unsigned mask = 0;
        if (lines == 1) {
            m_single = unsigned(m_lines[0].levelAt(at)) | unsigned(m_lines[1].levelAt(at)) << 1;
            mask = m_single >> unsigned(fromChip) & 1U;
        } else {
            for (unsigned i = lines; i > 0; --i) {
                mask = mask << 1 | unsigned(m_lines[i - 1].levelAt(at));
            }
        }
        taken.value = taken.value << lines | mask;
    }
    taken.last = std::max(taken.first, std::min({m_clk.peekEdge(), m_end, m_clk.sampleCount()}) - 1);
    return true;
}
