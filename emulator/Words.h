#pragma once

#include <optional>
#include <string_view>
#include <utility>

namespace emulator {

/// What stands before and behind the first `mark`; without one, all and nothing.
[[nodiscard]] inline std::pair<std::string_view, std::optional<std::string_view>> parted(std::string_view text,
                                                                                         char mark)
{
    const std::size_t at = text.find(mark);
    return at == std::string_view::npos ? std::pair(text, std::optional<std::string_view>())
                                        : std::pair(text.substr(0, at), std::optional(text.substr(at + 1)));
}

} // namespace emulator
