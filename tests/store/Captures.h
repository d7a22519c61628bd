#pragma once

#include "store/SmpData.h"

#include <cstdint>
#include <vector>

/// Builders of captures from plain lists of positions, and the way back. For tests.
namespace captures {

using Positions = std::vector<std::int64_t>;

/// Appends `positions` to a channel of a capture that fills.
inline void append(SmpData &data, int chn, const Positions &positions)
{
    for (const std::int64_t pos : positions) {
        std::int64_t from = pos - 1; // a width of 1 leads to the position from wherever the last one was
        const std::int32_t width = 1;
        if (!data.addPulses({&width, 1}, chn, from)) {
            return;
        }
    }
}

/// A closed capture of `length` samples, one channel for each list of transitions; all start low.
inline void close(SmpData &data, const std::vector<Positions> &chns, std::int64_t length)
{
    const std::vector<std::uint8_t> enable(std::size_t(data.chnCount), 1);
    data.begin(0, 100000000, enable);
    data.startLevels = 0;
    for (std::size_t chn = 0; chn < chns.size(); ++chn) {
        append(data, int(chn), chns[chn]);
    }
    data.smpCount = length;
    data.finish(length);
}

/// All entries of a closed channel, the end mark included.
inline Positions entries(const SmpData &data, int chn)
{
    Positions all;
    for (std::int64_t i = 0; i < data.entryCount(chn); ++i) {
        all.push_back(data.entryAt(chn, {}, i));
    }
    return all;
}

} // namespace captures
