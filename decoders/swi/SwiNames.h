#pragma once

#include <cstdint>
#include <span>
#include <string_view>

/// Words of Microchip DS40002025A (ATSHA204A), and of the devices that came after it.
namespace swi {

/// DS40002025A, table 5-2.
enum Flag : std::uint8_t { Command = 0x77, Transmit = 0x88, Idle = 0xbb, Sleep = 0xcc };

[[nodiscard]] constexpr bool isFlag(std::uint64_t byte)
{
    return byte == Command || byte == Transmit || byte == Idle || byte == Sleep;
}
[[nodiscard]] std::string_view flagName(std::uint64_t flag);
/// A command's first byte (table 8-4); empty for none.
[[nodiscard]] std::string_view opcodeName(unsigned opcode);
/// A device's answer of one byte (table 8-3); empty for none.
[[nodiscard]] std::string_view statusName(unsigned status);

inline constexpr unsigned crcBytes = 2;
inline constexpr unsigned leastCount = 4; ///< the count itself, a byte, the CRC

/// The CRC-16 of a block (5.1, x^16 + x^15 + x^2 + 1): the lowest bit of each byte goes in first.
[[nodiscard]] std::uint32_t crcOf(std::span<const std::uint8_t> bytes);
/// Whether a block, with count and CRC, is right.
[[nodiscard]] bool isCrcRight(std::span<const std::uint8_t> block);

} // namespace swi
