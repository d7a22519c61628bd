#pragma once

#include <bit>
#include <cstdint>

namespace lux {

/// The bit behind the data that tells a wrong one (TIA-232-F leaves it to the equipment; these are the usual ones).
enum class Parity : std::uint8_t {
    None,
    Odd,     ///< the number of ones with the parity bit is odd
    Even,    ///< it is even
    Mark,    ///< the bit is always 1
    Space,   ///< it is always 0
    Ignored, ///< there is a bit, and it tells nothing
};

[[nodiscard]] constexpr bool isOdd(std::uint64_t bits)
{
    return (std::popcount(bits) & 1) != 0;
}

/// The parity bit that belongs to the data; an ignored one may as well be the other.
[[nodiscard]] constexpr bool parityBit(std::uint64_t data, Parity parity)
{
    switch (parity) {
    case Parity::Odd:
        return !isOdd(data);
    case Parity::Even:
        return isOdd(data);
    case Parity::Mark:
        return true;
    case Parity::None:
    case Parity::Space:
    case Parity::Ignored:
        break;
    }
    return false;
}

} // namespace lux
