#pragma once

#include <cstdint>

namespace lux {

/// Which bit of a word is sent first.
enum class BitOrder : std::uint8_t { LsbFirst, MsbFirst };

/// The lowest `count` bits, 1 to 64, in reverse order.
[[nodiscard]] constexpr std::uint64_t reversed(std::uint64_t bits, unsigned count)
{
    std::uint64_t result = 0;
    for (unsigned i = 0; i < count; ++i) {
        result = result << 1 | (bits >> i & 1U);
    }
    return result;
}

/// A word that grows by a bit at a time, up to 64.
class BitCollector {
public:
    explicit constexpr BitCollector(BitOrder order) : m_lsbFirst(order == BitOrder::LsbFirst) {}

    constexpr void add(bool bit)
    {
        if (m_lsbFirst) {
            m_value |= std::uint64_t(bit) << m_count;
        } else {
            m_value = m_value << 1 | std::uint64_t(bit);
        }
        ++m_count;
    }
    constexpr void clear()
    {
        m_value = 0;
        m_count = 0;
    }
    [[nodiscard]] constexpr std::uint64_t value() const { return m_value; }
    [[nodiscard]] constexpr unsigned count() const { return m_count; }

private:
    std::uint64_t m_value = 0;
    unsigned m_count = 0;
    bool m_lsbFirst;
};

} // namespace lux
