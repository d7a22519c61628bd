#pragma once

#include <algorithm>
#include <corvanlux/analyzer/ChannelReader.h>
#include <cstdint>

/// What D+ and D- are together (Universal Serial Bus Specification 2.0, table 7-2).
enum class UsbState : std::uint8_t { Se0, J, K, Se1 };

/// Both lines of a bus, from change to change. Never leaves the decode at the data's end.
class UsbLine {
public:
    /// @param fullSpeed  J is D+ high; at low speed it is D- high
    UsbLine(const lux::ChannelReader &dp, const lux::ChannelReader &dm, bool fullSpeed)
        : m_j(fullSpeed ? dp : dm), m_k(fullSpeed ? dm : dp)
    {}

    [[nodiscard]] UsbState state() const
    {
        return UsbState(std::uint8_t(m_j.level()) | std::uint8_t(std::uint8_t(m_k.level()) << 1));
    }
    /// Where the present state began; 0 at the capture's begin.
    [[nodiscard]] lux::Sample begin() const { return m_begin; }
    /// The sample of the next change, the capture's length when there is none.
    [[nodiscard]] lux::Sample peekChange() const { return std::min(m_j.peekEdge(), m_k.peekEdge()); }
    [[nodiscard]] bool hasChange() const { return m_j.hasEdge() || m_k.hasEdge(); }
    /// Goes to the next change. There must be one.
    void next()
    {
        const lux::Sample j = m_j.peekEdge();
        const lux::Sample k = m_k.peekEdge();
        m_begin = std::min(j, k);
        if (j == m_begin) {
            m_j.nextEdge();
        }
        if (k == m_begin) {
            m_k.nextEdge();
        }
    }
    [[nodiscard]] lux::Sample sampleCount() const { return m_j.sampleCount(); }

private:
    lux::ChannelReader m_j; ///< the line that is high in J
    lux::ChannelReader m_k;
    lux::Sample m_begin = 0;
};
