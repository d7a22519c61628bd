#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>

namespace lux::detail {

/// What a decoder hands in for a text: it may be null.
inline const char *orEmpty(const char *text)
{
    return text == nullptr ? "" : text;
}

/// Copies what fits, always ended when there is room for the end. @return the length of the whole text
inline std::size_t copyText(const std::string &text, char *out, std::size_t size)
{
    if (out != nullptr && size > 0) {
        const std::size_t length = std::min(text.size(), size - 1);
        std::memcpy(out, text.data(), length);
        out[length] = '\0';
    }
    return text.size();
}

} // namespace lux::detail
