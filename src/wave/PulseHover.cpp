#include "wave/PulseHover.h"

#include <algorithm>

namespace {

constexpr double overhang = 10.0;    ///< logical pixels by which an arrow may pass the view's edges
constexpr double gapAtEdge = 2.0;    ///< logical pixels between an arrow's end and its edge
constexpr double gapAfterEdge = 3.0; ///< the same at the start of the second arrow
constexpr double sampleLimit = double(std::int64_t(1) << 40); ///< positions have 40 bits

std::int64_t prevOrStart(const SmpEdgeInfo &info)
{
    return std::max<std::int64_t>(info.prevEdge, 0);
}

} // namespace

std::int64_t sampleUnder(int x, const WaveWindow &window)
{
    const double sample = window.start + x * window.ratio;
    const bool inRange = sample > -1.0 && sample < sampleLimit;
    return inRange ? std::int64_t(sample) : -1;
}

ArrowSpans arrowSpans(const SmpEdgeInfo &info, const WaveWindow &window)
{
    const auto pixel = [&window](std::int64_t edge) { return (double(edge) - window.start) / window.ratio; };
    const double right = window.width + overhang;
    const double next = pixel(info.nextEdge);

    ArrowSpans spans;
    spans.span1Start = std::max(pixel(prevOrStart(info)) + gapAtEdge, -overhang);
    spans.span1End = std::min(next - gapAtEdge, right);
    const bool secondSeen = next - gapAtEdge <= right && next + gapAfterEdge < window.width;
    if (secondSeen && info.afterNextEdge > info.nextEdge) {
        spans.span2Start = next + gapAfterEdge;
        spans.span2End = std::min(pixel(info.afterNextEdge) - gapAtEdge, right);
    }
    return spans;
}
