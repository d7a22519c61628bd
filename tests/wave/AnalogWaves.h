#pragma once

#include "store/SmpWriter.h"

#include <algorithm>
#include <cstdint>
#include <vector>

/// Signals on analog channels, for the tests of what is measured of them.

constexpr std::int64_t analogRate = 1'000'000; // Hz: a sample is a microsecond

/// Twenty periods of a triangle between -3.9 V and 3.9 V; `period` in samples.
inline std::vector<std::int8_t> triangle(int period)
{
    constexpr int amplitude = 100;
    std::vector<std::int8_t> samples(std::size_t(period) * 20, 0);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const int at = int(i) % period;
        const int up = std::min(at, period - at); // half a period up, half a period down
        samples[i] = std::int8_t(4 * amplitude * up / period - amplitude);
    }
    return samples;
}

/// Gives a capture the samples of an analog channel that it has.
inline void setAnalog(SmpData &data, int chn, const std::vector<std::int8_t> &samples)
{
    SmpAChnBuffer *buffer = SmpWriter(data).aChnBuf(chn);
    std::copy(samples.begin(), samples.end(), buffer->samples);
    buffer->count = std::int32_t(samples.size());
}
