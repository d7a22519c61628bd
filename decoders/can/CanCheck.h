#pragma once

#include "common/Crc.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

// Bit stuffing and checks of CAN frames, for receiver and simulation.

namespace can {

// The generator polynomials (ISO 11898-1:2015, 10.4.2.6); the registers of CAN FD begin with a 1 in the highest bit.
inline constexpr lux::CrcModel crc15 = {.width = 15, .polynomial = 0x4599};
inline constexpr lux::CrcModel crc17 = {.width = 17, .polynomial = 0x1685b, .initial = 0x10000};
inline constexpr lux::CrcModel crc21 = {.width = 21, .polynomial = 0x102899, .initial = 0x100000};
inline constexpr unsigned mostBytesOfCrc17 = 16;

inline constexpr unsigned stuffAfter = 5;      ///< equal bits (10.5)
inline constexpr unsigned fixedStuffAfter = 4; ///< bits of a CAN FD check
inline constexpr unsigned stuffCountBits = 4;
inline constexpr unsigned endOfFrameBits = 7;

/// The stuff count (10.4.2.6): the number of stuff bits modulo 8 as a Gray code, and even parity.
[[nodiscard]] constexpr std::uint32_t stuffCountField(unsigned stuffBits)
{
    const std::uint32_t number = stuffBits % 8;
    const std::uint32_t gray = number ^ number >> 1;
    const std::uint32_t parity = (gray ^ gray >> 1 ^ gray >> 2) & 1U;
    return gray << 1 | parity;
}

/// Bits in the order of time, as bytes, for a check by table.
class BitString {
public:
    void add(bool bit)
    {
        m_last = m_last << 1 | std::uint32_t(bit);
        if (++m_count % 8 == 0) {
            m_bytes[m_count / 8 - 1] = std::uint8_t(m_last);
        }
    }
    void add(std::uint32_t value, unsigned count)
    {
        while (count > 0) {
            add((value >> --count & 1U) != 0);
        }
    }
    template<lux::CrcModel model>
    [[nodiscard]] std::uint32_t check() const
    {
        lux::Crc<model> crc;
        crc.addBytes(std::span(m_bytes.data(), m_count / 8));
        for (unsigned i = m_count % 8; i > 0; --i) {
            crc.addBit((m_last >> (i - 1) & 1U) != 0);
        }
        return crc.value();
    }

private:
    std::array<std::uint8_t, 96> m_bytes; ///< the longest frame has 727 bits; only what was added is written
    unsigned m_count = 0;
    std::uint32_t m_last = 0;
};

} // namespace can
