#pragma once

#include <corvanlux/analyzer/ChannelReader.h>
#include <cstdint>

namespace lux {

/// A time in nanoseconds as samples, the part of one left out.
[[nodiscard]] constexpr Sample samplesIn(std::int64_t nanoseconds, std::int64_t sampleRate)
{
    constexpr std::int64_t perSecond = 1000000000;
    // Whole seconds apart, so that the product stays within 64 bits at any rate.
    return nanoseconds / perSecond * sampleRate + nanoseconds % perSecond * sampleRate / perSecond;
}

/// The same, a part of a sample counted as a whole one.
[[nodiscard]] constexpr Sample samplesUpTo(std::int64_t nanoseconds, std::int64_t sampleRate)
{
    constexpr std::int64_t perSecond = 1000000000;
    return samplesIn(nanoseconds, sampleRate) + (nanoseconds % perSecond * sampleRate % perSecond != 0 ? 1 : 0);
}

} // namespace lux
