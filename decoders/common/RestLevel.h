#pragma once

#include <corvanlux/analyzer/ChannelReader.h>

namespace lux {

/// The level at which a line rests: that of its longest pause, which lasts longer than anything in a frame.
/// @param line  from its beginning on; a copy goes forward @param otherwise  for a line that has no time to look at
/// Cost: a step for each edge, at most 20000 of them.
[[nodiscard]] inline bool restLevel(ChannelReader line, bool otherwise)
{
    constexpr int mostEdges = 20000;
    Sample longest = 0;
    bool rest = otherwise;
    for (int i = 0; i < mostEdges; ++i) {
        const Sample width = line.peekEdge() - line.position();
        if (width > longest) {
            longest = width;
            rest = line.level();
        }
        if (!line.hasEdge()) {
            break;
        }
        line.nextEdge();
    }
    return rest;
}

} // namespace lux
