#pragma once

#include "common/Crc.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

// Packets of a display link (MIPI Alliance Specification for Display Serial Interface 1.01, 8 and 9).

namespace dsi {

inline constexpr std::size_t headBytes = 4;     ///< identifier, two bytes, check (8.4)
inline constexpr std::size_t checksumBytes = 2; ///< behind the payload of a long packet
inline constexpr unsigned checkedBits = 24;

/// The checksum (9.6): x^16 + x^12 + x^5 + 1, lowest bit first.
inline constexpr lux::CrcModel checksum = {.width = 16, .polynomial = 0x1021, .initial = 0xffff, .lsbFirst = true};

/// Which bits of the head each bit of its check covers (9.4): a Hamming code that corrects one bit and tells two.
inline constexpr std::array<std::uint32_t, 6> eccMasks = {0xf12cb7, 0xf2555b, 0x749a6d, 0xb8e38e, 0xdf03f0, 0xeffc00};

[[nodiscard]] constexpr std::uint8_t eccOf(std::uint32_t head)
{
    std::uint32_t ecc = 0;
    for (unsigned i = 0; i < eccMasks.size(); ++i) {
        std::uint32_t covered = head & eccMasks[i];
        for (unsigned shift = 16; shift > 0; shift /= 2) {
            covered ^= covered >> shift;
        }
        ecc |= (covered & 1U) << i;
    }
    return std::uint8_t(ecc);
}

enum class Ecc : std::uint8_t { Right, Corrected, Wrong };

/// Checks the head, and corrects one wrong bit of it.
/// @param head  in/out, the identifier is the lowest byte @param sent  the check
[[nodiscard]] constexpr Ecc checkHead(std::uint32_t &head, std::uint8_t sent)
{
    const std::uint32_t syndrome = std::uint32_t(eccOf(head)) ^ sent;
    if (syndrome == 0) {
        return Ecc::Right;
    }
    if ((syndrome & (syndrome - 1)) == 0) {
        return Ecc::Corrected; // a bit of the check itself
    }
    for (unsigned bit = 0; bit < checkedBits; ++bit) {
        if (eccOf(1U << bit) == syndrome) {
            head ^= 1U << bit;
            return Ecc::Corrected;
        }
    }
    return Ecc::Wrong;
}

/// A packet with a payload and a checksum behind the head (8.8, table 16).
[[nodiscard]] constexpr bool isLong(std::uint32_t dataType)
{
    constexpr std::uint32_t firstOfLong = 9;
    return (dataType & 15U) >= firstOfLong;
}

} // namespace dsi
