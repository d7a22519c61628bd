#pragma once

#include <corvanlux/analyzer/ChannelReader.h>
#include <cstdint>

namespace lux {

/// What a two-wire bus did while its clock was high once.
struct BusEvent {
    enum class Kind : std::uint8_t { Bit, Start, Stop };

    Kind kind = Kind::Bit;
    bool bit = false; ///< the data line at the rise of the clock, or right before the condition
    Sample at = 0;    ///< the rise of the clock for a bit, the data line's edge for a condition
    Sample end = 0;   ///< for a bit the first sample behind, where the clock falls
};

/// A clock and a data line whose conditions are edges of the data while the clock is high (UM10204, 3.1.3 and 3.1.4):
/// falling it is a start, rising a stop. Elsewhere the data is a bit at each rise of the clock. An edge of the data in
/// the same sample as one of the clock is no condition.
///
/// Never leaves the decode at the data's end. `Line` is a ChannelReader or a FilteredLine.
template<class Line>
class StartStopBus {
public:
    StartStopBus(const Line &clock, const Line &data) : m_clock(clock), m_data(data)
    {
        m_isHigh = m_clock.level();
        m_rise = m_clock.position();
    }

    /// @return false at the data's end
    bool next(BusEvent &event)
    {
        for (;;) {
            if (m_isHigh) {
                if (m_data.hasEdgeBefore(m_clock.peekEdge())) {
                    const Sample edge = m_data.nextEdge();
                    m_hadCondition = true;
                    event = {.kind = m_data.level() ? BusEvent::Kind::Stop : BusEvent::Kind::Start,
                             .bit = !m_data.level(),
                             .at = edge};
                    return true;
                }
                m_isHigh = false;
                if (!m_hadCondition) {
                    event = {.bit = m_data.level(), .at = m_rise, .end = m_clock.peekEdge()};
                    return true;
                }
            }
            if (!goToRise()) {
                return false;
            }
        }
    }
    /// How long the clock was low before the last bit or condition.
    [[nodiscard]] Sample lowTime() const { return m_lowTime; }
    /// The rise of the clock before the last bit or condition.
    [[nodiscard]] Sample rise() const { return m_rise; }

private:
    bool goToRise()
    {
        Sample fall = m_clock.position();
        if (m_clock.level()) {
            if (!m_clock.hasEdge()) {
                return false;
            }
            fall = m_clock.nextEdge();
        }
        if (!m_clock.hasEdge()) {
            return false;
        }
        m_rise = m_clock.nextEdge();
        m_lowTime = m_rise - fall;
        (void)m_data.levelAt(m_rise);
        m_isHigh = true;
        m_hadCondition = false;
        return true;
    }

    Line m_clock;
    Line m_data;
    Sample m_rise = 0;
    Sample m_lowTime = 0;
    bool m_isHigh = false;
    bool m_hadCondition = false;
};

} // namespace lux
