#pragma once

#include <corvanlux/analyzer/ChannelReader.h>

namespace lux {

/// A stretch of a capture in which a device is selected.
struct SelectSpan {
    Sample begin = 0; ///< the first sample, that of the edge unless the capture begins selected
    Sample end = 0;   ///< the first sample that is not selected, or the capture's length
    bool hasBegin = false;
    bool hasEnd = false;
};

/// The stretches in which a select line is active, one after the other. Without a line all of the capture is one.
/// Never leaves the decode at the data's end.
class SelectSpans {
public:
    SelectSpans(const ChannelReader &select, bool activeHigh) : m_select(select), m_activeHigh(activeHigh) {}

    /// @return false when there is no further one
    bool next(SelectSpan &span)
    {
        if (m_isOver) {
            return false;
        }
        if (!m_select.exists()) {
            span = {.begin = 0, .end = m_select.sampleCount()};
            m_isOver = true;
            return true;
        }
        if (m_select.level() != m_activeHigh) {
            if (!m_select.hasEdge()) {
                return false;
            }
            m_select.nextEdge();
        }
        const Sample begin = m_select.position();
        span = {.begin = begin, .end = m_select.peekEdge(), .hasBegin = begin > 0, .hasEnd = m_select.hasEdge()};
        if (m_select.hasEdge()) {
            m_select.nextEdge();
        } else {
            m_isOver = true;
        }
        return true;
    }

private:
    ChannelReader m_select;
    bool m_activeHigh;
    bool m_isOver = false;
};

} // namespace lux
