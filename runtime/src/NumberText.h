#pragma once

#include <charconv>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>

namespace lux::detail {

/// The whole of `text` as a decimal number, whatever the locale; finite.
inline std::optional<double> parseNumber(std::string_view text)
{
    double number = 0;
    const char *end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (text.empty() || error != std::errc() || stop != end || !std::isfinite(number))
        return std::nullopt;
    return number;
}

/// The shortest decimal digits that give `number` again, without an exponent for what settings hold.
inline std::string plainNumber(double number)
{
    char digits[400];
    const auto [end, error] = std::to_chars(digits, digits + sizeof digits, number, std::chars_format::fixed);
    return error == std::errc() ? std::string(digits, end) : std::string();
}

} // namespace lux::detail
