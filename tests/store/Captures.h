#pragma once

#include "store/SmpData.h"
#include "store/SmpWriter.h"

#include <cstdint>
#include <memory>
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
    SmpWriter(data).setStartLevels(0);
    for (std::size_t chn = 0; chn < chns.size(); ++chn) {
        append(data, int(chn), chns[chn]);
    }
    SmpWriter(data).setSmpCount(length);
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

/// A closed capture of one channel with entries after each of `widths`, the last one being the end mark.
inline std::unique_ptr<SmpData> channelOf(const std::vector<std::int32_t> &widths)
{
    auto data = std::make_unique<SmpData>(1, 0);
    const std::uint8_t enable[] = {1};
    data->begin(0, 1000, enable);
    std::int64_t pos = 0;
    (void)data->addPulses(widths, 0, pos);
    SmpWriter(*data).setSmpCount(pos);
    data->finish(pos);
    return data;
}

inline Positions positionsOf(const std::vector<std::int32_t> &widths)
{
    Positions positions;
    std::int64_t pos = 0;
    for (const std::int32_t width : widths) {
        positions.push_back(pos += width);
    }
    return positions;
}

/// Widths without a pattern, the same in every run.
inline std::vector<std::int32_t> irregular(std::size_t count, std::uint32_t largest)
{
    std::vector<std::int32_t> widths(count);
    std::uint32_t state = 1;
    for (std::int32_t &width : widths) {
        state = state * 1664525U + 1013904223U;
        width = std::int32_t((state >> 8) % largest) + 1;
    }
    return widths;
}

} // namespace captures
