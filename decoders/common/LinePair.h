#pragma once

#include <algorithm>
#include <corvanlux/analyzer/ChannelReader.h>

namespace lux {

/// Two lines whose levels mean something together, from change to change of either. Never leaves the decode at the
/// data's end.
class LinePair {
public:
    LinePair(const ChannelReader &first, const ChannelReader &second) : m_first(first), m_second(second) {}

    /// Bit 0 is the first line, bit 1 the second.
    [[nodiscard]] unsigned levels() const { return unsigned(m_first.level()) | unsigned(m_second.level()) << 1; }
    /// Where the present levels began; 0 at the capture's begin.
    [[nodiscard]] Sample begin() const { return m_begin; }
    /// The sample of the next change, the capture's length when there is none.
    [[nodiscard]] Sample peekChange() const { return std::min(m_first.peekEdge(), m_second.peekEdge()); }
    [[nodiscard]] bool hasChange() const { return m_first.hasEdge() || m_second.hasEdge(); }
    /// Goes to the next change. There must be one.
    void next()
    {
        const Sample first = m_first.peekEdge();
        const Sample second = m_second.peekEdge();
        m_begin = std::min(first, second);
        if (first == m_begin) {
            m_first.nextEdge();
        }
        if (second == m_begin) {
            m_second.nextEdge();
        }
    }
    [[nodiscard]] Sample sampleCount() const { return m_first.sampleCount(); }

private:
    ChannelReader m_first;
    ChannelReader m_second;
    Sample m_begin = 0;
};

} // namespace lux
