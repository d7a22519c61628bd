#pragma once

#include "support/DecodeDesk.h"

#include <cstdint>
#include <vector>

/// A capture's channel that has a part of a line.
/// @param from  the sample of the line with which the capture begins @param shift  samples of the capture before it
inline void addPart(TestCapture &capture, std::uint32_t channel, const EdgeLine &line, std::int64_t from,
                    std::int64_t shift = 0)
{
    bool level = line.startLevel();
    std::vector<std::int64_t> edges;
    for (const std::int64_t edge : line.edges()) {
        if (edge <= from) {
            level = !level;
        } else {
            edges.push_back(edge - from + shift);
        }
    }
    capture.channel(channel, level, edges);
}
