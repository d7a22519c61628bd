#pragma once

#include <algorithm>
#include <array>
#include <corvanlux/analyzer/ChannelReader.h>
#include <cstddef>
#include <cstdint>

/// The bits of a serial wire: the level of SWDIO at each rising edge of SWCLK. A copy looks ahead. Never leaves the
/// decode at the data's end.
///
/// The target changes SWDIO right behind the edge, so that a sample at the edge may already show the next bit: the
/// level is taken one sample before. Bits are read 64 at a time, each once, however often they are looked at: what is
/// not understood is looked at bit after bit for what may begin there.
class SwdBits {
public:
    static constexpr unsigned mostPeeked = 64;

    struct Bit {
        lux::Sample at = 0; ///< the edge
        bool value = false;
    };

    SwdBits(const lux::ChannelReader &clock, const lux::ChannelReader &data)
        : m_clock(clock), m_data(data), m_unread((clock.edgesLeft() + (clock.level() ? 0 : 1)) / 2)
    {
        read();
    }
    [[nodiscard]] std::int64_t left() const { return m_unread + m_count; } ///< bits that follow
    /// The next bit's level; only while bits are left.
    [[nodiscard]] bool peek() const { return (m_levels & 1U) != 0; }
    /// The next bits as a number, the first one lowest, and 0 for those behind the last one. @param count  up to
    /// mostPeeked - 1
    [[nodiscard]] std::uint64_t peek(unsigned count)
    {
        fill(count);
        return m_levels & ((std::uint64_t(1) << count) - 1);
    }
    /// Where a bit is taken. @param number  0 for the next one; only while so many are left
    [[nodiscard]] lux::Sample peekAt(unsigned number)
    {
        fill(number + 1);
        return m_at[(m_first + number) % mostPeeked];
    }
    /// Only while bits are left.
    Bit next()
    {
        const Bit bit{m_at[m_first], peek()};
        drop(1);
        return bit;
    }
    void skip(std::int64_t count)
    {
        while (count > 0 && m_count > 0) {
            const auto some = unsigned(std::min<std::int64_t>(count, m_count));
            drop(some);
            count -= some;
        }
    }
    /// Bits as a number, the first one lowest. Only while so many are left. @param last  the sample of the last one
    std::uint64_t number(unsigned count, lux::Sample &last)
    {
        fill(count);
        const std::uint64_t value = count < mostPeeked ? peek(count) : m_levels;
        last = m_at[(m_first + count - 1) % mostPeeked];
        drop(count);
        return value;
    }

private:
    void fill(unsigned count)
    {
        if (m_count < count) {
            read();
        }
    }
    void drop(unsigned count)
    {
        m_levels = count < mostPeeked ? m_levels >> count : 0;
        m_first = (m_first + count) % mostPeeked;
        m_count -= count;
        fill(1);
    }
    void read()
    {
        for (; m_count < mostPeeked && m_unread > 0; --m_unread) {
            const lux::Sample at = m_clock.nextRise();
            m_at[(m_first + m_count) % mostPeeked] = at;
            m_levels |= std::uint64_t(m_data.levelAt(at - 1)) << m_count++;
        }
    }

    lux::ChannelReader m_clock;
    lux::ChannelReader m_data;
    std::int64_t m_unread;
    std::uint64_t m_levels = 0; ///< of the bits that were read, the next one lowest
    unsigned m_count = 0;       ///< of these
    unsigned m_first = 0;       ///< the place of the next one's sample
    std::array<lux::Sample, mostPeeked> m_at;
};
