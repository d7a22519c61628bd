#pragma once

#include <corvanlux/analyzer/ChannelReader.h>
#include <cstdint>

/// The bits of a serial wire: the level of SWDIO at each rising edge of SWCLK. A copy looks ahead. Never leaves the
/// decode at the data's end.
///
/// The target changes SWDIO right behind the edge, so that a sample at the edge may already show the next bit: the
/// level is taken one sample before.
class SwdBits {
public:
    struct Bit {
        lux::Sample at = 0; ///< the edge
        bool value = false;
    };

    SwdBits(const lux::ChannelReader &clock, const lux::ChannelReader &data)
        : m_clock(clock), m_data(data), m_left((clock.edgesLeft() + (clock.level() ? 0 : 1)) / 2)
    {
        read();
    }
    [[nodiscard]] std::int64_t left() const { return m_left; } ///< bits that follow
    /// The next bit's level; only while bits are left.
    [[nodiscard]] bool peek() const { return m_next.value; }
    /// Only while bits are left.
    Bit next()
    {
        const Bit bit = m_next;
        --m_left;
        read();
        return bit;
    }
    void skip(std::int64_t count)
    {
        for (; count > 0 && m_left > 0; --count) {
            next();
        }
    }
    /// Bits as a number, the first one lowest. Only while so many are left. @param last  the sample of the last one
    std::uint64_t number(unsigned count, lux::Sample &last)
    {
        std::uint64_t value = 0;
        for (unsigned i = 0; i < count; ++i) {
            const Bit bit = next();
            value |= std::uint64_t(bit.value) << i;
            last = bit.at;
        }
        return value;
    }

private:
    void read()
    {
        if (m_left > 0) {
            m_next.at = m_clock.nextRise();
            m_next.value = m_data.levelAt(m_next.at - 1);
        }
    }

    lux::ChannelReader m_clock;
    lux::ChannelReader m_data;
    std::int64_t m_left;
    Bit m_next;
};
