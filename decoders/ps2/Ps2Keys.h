#pragma once

#include "Ps2Settings.h"

#include <cstdint>
#include <string_view>

/// The prefixes of codes (IBM Personal System/2 Hardware Interface Technical Reference, keyboard, scan codes).
namespace ps2 {

inline constexpr std::uint32_t extended = 0xe0;
inline constexpr std::uint32_t extendedPause = 0xe1; ///< two codes follow
inline constexpr std::uint32_t released = 0xf0;      ///< sets 2 and 3; set 1 has the highest bit set instead

/// The name of a key; empty for a code that none has.
/// @param code  with its prefix: 0xe075; that of the pause key is 0xe1 and its last byte
[[nodiscard]] std::string_view keyName(std::uint32_t code, Ps2CodeSet set);

/// What a keyboard says apart from keys; empty for a key.
[[nodiscard]] std::string_view responseName(std::uint32_t byte, Ps2CodeSet set);

/// A command of the host to the keyboard; empty for none.
[[nodiscard]] std::string_view commandName(std::uint32_t byte);
/// Whether the host sends another byte with it.
[[nodiscard]] bool hasArgument(std::uint32_t command);

inline constexpr std::uint32_t setLeds = 0xed;
inline constexpr std::uint32_t readId = 0xf2;
inline constexpr std::uint32_t acknowledge = 0xfa;

} // namespace ps2
