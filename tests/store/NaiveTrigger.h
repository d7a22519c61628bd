#pragma once

#include "store/SmpTrigCode.h"

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

/// The trigger rule sample by sample, in its plainest form, and streams to try it on. For tests.
namespace naiveTrigger {

/// Seeded random numbers of 32 bits.
class Random {
public:
    explicit Random(int seed) : m_engine(std::uint32_t(seed)) {}
    std::uint32_t operator()() { return std::uint32_t(m_engine()); }

private:
    std::mt19937 m_engine;
};

/// Whether a channel with this code matches at a sample whose level is `now`, after one whose level was `before`.
inline bool matches(int code, bool before, bool now)
{
    switch (code) {
    case smpTrigCode::lowLevel:
        return !now;
    case smpTrigCode::highLevel:
        return now;
    case smpTrigCode::risingEdge:
        return !before && now;
    case smpTrigCode::fallingEdge:
        return before && !now;
    default:
        return true;
    }
}

/// The first sample at which the channels `chns` match their codes, all of them; -1 for none. No sample before the
/// first one exists.
inline std::int64_t find(const std::vector<std::uint32_t> &samples, const std::vector<int> &chns,
                         const std::vector<std::int32_t> &codes)
{
    for (std::size_t i = 0; i < samples.size(); ++i) {
        bool all = true;
        for (std::size_t c = 0; c < chns.size(); ++c) {
            const bool now = (samples[i] >> chns[c] & 1) != 0;
            const bool before = (samples[i == 0 ? 0 : i - 1] >> chns[c] & 1) != 0;
            all = all && matches(codes[c], before, now);
        }
        if (all) {
            return std::int64_t(i);
        }
    }
    return -1;
}

/// Samples of 32 channels, of which each moves at one sample in `calm`.
inline std::vector<std::uint32_t> samples(std::size_t count, std::uint32_t calm, Random &random)
{
    std::vector<std::uint32_t> all(count);
    std::uint32_t word = random();
    for (std::uint32_t &sample : all) {
        for (int chn = 0; chn < 32; ++chn) {
            word ^= std::uint32_t(random() % calm == 0) << chn;
        }
        sample = word;
    }
    return all;
}

/// The numbers 0 to `count` - 1.
inline std::vector<int> firstChns(int count)
{
    std::vector<int> chns;
    for (int chn = 0; chn < count; ++chn) {
        chns.push_back(chn);
    }
    return chns;
}

} // namespace naiveTrigger
