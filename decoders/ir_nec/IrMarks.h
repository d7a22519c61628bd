#pragma once

#include <corvanlux/analyzer/ChannelReader.h>
#include <cstdint>

/// A time for which light is received.
struct IrMark {
    lux::Sample begin = 0;
    lux::Sample end = 0;     ///< the first sample behind it
    std::int64_t pulses = 0; ///< one, or those of the carrier
    lux::Sample lastPulse = 0;
};

/// The marks of a line, one after the other; pulses of a carrier are one mark. Never leaves the decode at the data's
/// end.
class IrMarks {
public:
    /// @param gap    the longest pause within a mark, in samples
    /// @param spike  samples: a shorter mark is none
    /// @param mostPulses  a mark of more is none: it has a carrier
    IrMarks(const lux::ChannelReader &line, bool activeHigh, lux::Sample gap, lux::Sample spike,
            std::int64_t mostPulses)
        : m_line(line), m_activeHigh(activeHigh), m_gap(gap), m_spike(spike), m_mostPulses(mostPulses)
    {
        // A mark that the capture cuts is none.
        if (m_line.level() == m_activeHigh && m_line.hasEdge()) {
            m_line.nextEdge();
        }
        findNext();
    }

    /// Where the next mark begins; the capture's length when there is none.
    [[nodiscard]] lux::Sample peek() const { return m_begin; }
    /// @return false when there is no further one whose end is in the capture
    [[nodiscard]] bool next(IrMark &mark)
    {
        if (!m_hasNext) {
            return false;
        }
        mark = m_next;
        findNext();
        return true;
    }

private:
    void findNext()
    {
        do {
            m_begin = m_line.peekEdge();
            m_hasNext = read(m_next);
        } while (m_hasNext && (m_next.end - m_next.begin < m_spike || m_next.pulses > m_mostPulses));
    }
    [[nodiscard]] bool read(IrMark &mark)
    {
        if (m_line.level() == m_activeHigh || m_line.edgesLeft() < 2) {
            return false;
        }
        mark.begin = m_line.nextEdge();
        mark.pulses = 0;
        for (;;) {
            mark.lastPulse = m_line.position();
            mark.end = m_line.nextEdge();
            ++mark.pulses;
            if (m_line.peekEdge() - mark.end > m_gap) {
                return mark.end + m_gap < m_line.sampleCount();
            }
            if (m_line.edgesLeft() < 2) {
                return false;
            }
            m_line.nextEdge();
        }
    }

    lux::ChannelReader m_line;
    bool m_activeHigh;
    lux::Sample m_gap;
    lux::Sample m_spike;
    std::int64_t m_mostPulses;
    IrMark m_next;
    lux::Sample m_begin = 0;
    bool m_hasNext = false;
};
