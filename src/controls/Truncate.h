#pragma once

#include <cstdint>
#include <limits>

/// Truncates toward zero to an integer. A value beyond the integer's range becomes its nearest end, and no number
/// becomes 0, so that geometry of a degenerate view never runs into undefined behaviour.
template<typename Integer>
[[nodiscard]] constexpr Integer truncated(double value)
{
    using Limits = std::numeric_limits<Integer>;
    constexpr double low = double(Limits::min());
    constexpr double high = double(Limits::max());
    if (value >= high) {
        return Limits::max();
    }
    if (value <= low) {
        return Limits::min();
    }
    return value == value ? Integer(value) : Integer(0);
}

[[nodiscard]] constexpr std::int64_t truncated64(double value)
{
    return truncated<std::int64_t>(value);
}

[[nodiscard]] constexpr std::int32_t truncated32(double value)
{
    return truncated<std::int32_t>(value);
}
