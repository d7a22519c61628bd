#pragma once

#include <cstdint>

/// Little-endian loads from unaligned bytes; compilers make one instruction of each.
namespace smpBytes {

[[nodiscard]] inline std::uint32_t load16(const std::uint8_t *bytes)
{
    return std::uint32_t(bytes[0]) | std::uint32_t(bytes[1]) << 8;
}

[[nodiscard]] inline std::uint32_t load32(const std::uint8_t *bytes)
{
    return std::uint32_t(bytes[0]) | std::uint32_t(bytes[1]) << 8 | std::uint32_t(bytes[2]) << 16 |
           std::uint32_t(bytes[3]) << 24;
}

[[nodiscard]] inline std::uint64_t load64(const std::uint8_t *bytes)
{
    return std::uint64_t(bytes[0]) | std::uint64_t(bytes[1]) << 8 | std::uint64_t(bytes[2]) << 16 |
           std::uint64_t(bytes[3]) << 24 | std::uint64_t(bytes[4]) << 32 | std::uint64_t(bytes[5]) << 40 |
           std::uint64_t(bytes[6]) << 48 | std::uint64_t(bytes[7]) << 56;
}

/// Byte `index` of a loaded word.
[[nodiscard]] inline std::uint32_t byteOf(std::uint64_t word, int index)
{
    return std::uint32_t(word >> (8 * index)) & 0xFF;
}

/// True when one of the eight bytes is 0.
[[nodiscard]] inline bool hasZeroByte(std::uint64_t word)
{
    return ((word - 0x0101010101010101) & ~word & 0x8080808080808080) != 0;
}

} // namespace smpBytes
