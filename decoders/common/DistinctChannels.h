#pragma once

#include <algorithm>
#include <corvanlux/analyzer/DecoderSettings.h>
#include <cstdint>
#include <vector>

namespace lux {

/// Whether those of the channels that are defined are all different ones.
inline bool areDistinct(const std::vector<Channel> &channels)
{
    std::vector<std::uint32_t> used;
    for (const Channel &channel : channels) {
        if (channel.isDefined()) {
            used.push_back(channel.channelIndex);
        }
    }
    std::sort(used.begin(), used.end());
    return std::adjacent_find(used.begin(), used.end()) == used.end();
}

} // namespace lux
