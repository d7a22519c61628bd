#pragma once

#include <charconv>
#include <corvanlux/analyzer/DecoderSettings.h>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace lux {

/// The channels of a text such as "3+2+5+4" or "4-7", up to channel 63. An empty text has none.
/// @return nothing when the text is no such list
inline std::optional<std::vector<Channel>> channelList(std::string_view text)
{
    constexpr std::uint32_t mostChannels = 64;
    std::vector<Channel> channels;
    const char *at = text.data();
    const char *end = at + text.size();
    const auto readNumber = [&at, end](std::uint32_t &number) {
        const auto [behind, error] = std::from_chars(at, end, number);
        at = behind;
        return error == std::errc() && number < mostChannels;
    };
    while (at != end) {
        std::uint32_t first = 0;
        if (!readNumber(first)) {
            return std::nullopt;
        }
        std::uint32_t last = first;
        if (at != end && *at == '-' && (++at == end || !readNumber(last))) {
            return std::nullopt;
        }
        for (std::uint32_t number = first; number <= last; ++number) {
            channels.emplace_back(0, number);
        }
        if (last < first || (at != end && (*at != '+' || ++at == end))) {
            return std::nullopt;
        }
    }
    return channels;
}

} // namespace lux
