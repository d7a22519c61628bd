#pragma once

#include <algorithm>
#include <corvanlux/analyzer/ChannelReader.h>

namespace lux {

/// A channel without its glitches: pulses shorter than a given width are not there. Has the operations of a
/// ChannelReader that walk it, so that a decoder can be written for both.
class FilteredLine {
public:
    /// @param width  samples; a pulse of so many stays
    FilteredLine(const ChannelReader &line, Sample width)
        : m_ahead(line), m_width(width), m_pos(line.position()), m_next(line.sampleCount()), m_level(line.level())
    {
        findNext();
    }

    [[nodiscard]] Sample position() const { return m_pos; }
    [[nodiscard]] bool level() const { return m_level; }
    [[nodiscard]] Sample sampleCount() const { return m_ahead.sampleCount(); }
    [[nodiscard]] bool hasEdge() const { return m_next < sampleCount(); }
    [[nodiscard]] bool hasEdgeBefore(Sample sample) const { return m_next < std::min(sample, sampleCount()); }
    [[nodiscard]] Sample peekEdge() const { return m_next; }
    /// Goes to the next edge. Leaves the decode when there is none.
    Sample nextEdge()
    {
        if (!hasEdge()) {
            return m_ahead.nextEdge();
        }
        m_pos = m_next;
        m_level = !m_level;
        findNext();
        return m_pos;
    }
    /// The level at `sample`, to which the line goes forward.
    bool levelAt(Sample sample)
    {
        while (m_next <= sample && hasEdge()) {
            nextEdge();
        }
        m_pos = std::max(m_pos, sample);
        return m_level;
    }

private:
    /// The reader goes to the edge that is shown next, so that it stands there ahead of this line.
    void findNext()
    {
        m_next = sampleCount();
        while (m_ahead.hasEdge()) {
            const Sample edge = m_ahead.nextEdge();
            if (!m_ahead.hasEdgeBefore(edge + m_width)) {
                m_next = edge;
                return;
            }
            m_ahead.nextEdge();
        }
    }

    ChannelReader m_ahead;
    Sample m_width;
    Sample m_pos;
    Sample m_next;
    bool m_level;
};

/// Goes to the next edge behind which the level stays for `width` samples: what FilteredLine shows, of a reader that is
/// not to be ahead. Leaves the decode when there is none.
inline Sample nextSteadyEdge(ChannelReader &line, Sample width)
{
    for (;;) {
        const Sample edge = line.nextEdge();
        if (!line.hasEdgeBefore(edge + width)) {
            return edge;
        }
        line.nextEdge();
    }
}

} // namespace lux
