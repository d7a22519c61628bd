#pragma once

#include <cstdint>

/// The times of the bus in nanoseconds (Microchip DS22076D, table 1-2, and chapter 3).
namespace unio {

inline constexpr std::int64_t standbyTime = 600000;    ///< T_STBY: high for so long
inline constexpr std::int64_t setupTime = 10000;       ///< T_SS: high before a start header
inline constexpr std::int64_t headerLow = 5000;        ///< T_HDR: low before its first bit
inline constexpr std::int64_t shortestBit = 9500;      ///< 10 us, and a clock that is 5 % off
inline constexpr std::int64_t longestBit = 105000;     ///< 100 us, and a clock that is 5 % off
inline constexpr std::int64_t leastSampleRate = 50000; ///< Hz: five samples of the longest bit

inline constexpr std::uint8_t header = 0x55;

} // namespace unio
