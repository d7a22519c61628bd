#pragma once

/// What a channel's trigger asks for, as settings and files hold it; every other number asks for nothing.
namespace smpTrigCode {

constexpr int none = 0;
constexpr int lowLevel = 1;
constexpr int highLevel = 2;
constexpr int risingEdge = 3;
constexpr int fallingEdge = 4;

/// True for the two of which all channels together can have one at most.
[[nodiscard]] constexpr bool isEdge(int code)
{
    return code == risingEdge || code == fallingEdge;
}

} // namespace smpTrigCode
