#pragma once

/// What a digital channel triggers on, as it is stored and chosen; 0 for nothing.
namespace chnTrigger {

inline constexpr int lowLevel = 1;
inline constexpr int highLevel = 2;
inline constexpr int risingEdge = 3;
inline constexpr int fallingEdge = 4;

/// True for the two of which all channels together can have one at most.
[[nodiscard]] constexpr bool isEdge(int code)
{
    return code == risingEdge || code == fallingEdge;
}

} // namespace chnTrigger
