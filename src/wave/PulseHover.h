#pragma once

#include "store/SmpData.h"

#include <cstdint>

/// The two arrows of the pulse under the pointer, in logical pixels. A `span2End` of 0: there is no second one.
struct ArrowSpans {
    double span1Start = 0;
    double span1End = 0;
    double span2Start = 0;
    double span2End = 0;
    bool operator==(const ArrowSpans &) const = default;
};

/// The part of the capture that the view shows.
struct WaveWindow {
    double start; ///< sample at logical pixel 0
    double ratio; ///< samples per logical pixel, above 0
    int width;    ///< logical pixels
};

/// The sample under a logical pixel, truncated; values out of the range of samples come back as -1.
[[nodiscard]] std::int64_t sampleUnder(int x, const WaveWindow &window);

/// The first arrow lies within the pulse, the second within the one after it.
[[nodiscard]] ArrowSpans arrowSpans(const SmpEdgeInfo &info, const WaveWindow &window);
