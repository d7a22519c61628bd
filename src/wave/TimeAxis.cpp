#include "wave/TimeAxis.h"

#include "controls/Truncate.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace TimeAxis {

namespace {

double spanOf(const TimeWindow &window, int width)
{
    return double(width) * window.ratio;
}

} // namespace

int clampColumn(int x, int width)
{
    return std::max(0, std::min(x, width - 1));
}

TimeWindow finite(TimeWindow window)
{
    window.ratio = std::isfinite(window.ratio) ? std::clamp(window.ratio, 0.0, ratioLimit) : 0.0;
    window.start = std::isnan(window.start) ? 0.0 : std::clamp(window.start, -startLimit, startLimit);
    return window;
}

double fitRatio(std::int64_t count, int width)
{
    return width > 0 ? double(std::max<std::int64_t>(count, 0)) / width : 0.0;
}

TimeWindow fit(std::int64_t count, int width)
{
    return {0.0, fitRatio(count, width)};
}

double clampRatio(double ratio, std::int64_t count, int width)
{
    const double upper = fitRatio(count, width);
    if (!(ratio <= upper)) {
        ratio = upper;
    }
    return std::max(ratio, minRatio);
}

TimeWindow zoomAbout(const TimeWindow &window, int x, double ratio)
{
    const double focus = double(x) * window.ratio + window.start;
    return finite({focus - double(x) * ratio, ratio});
}

ZoomFrame zoomFrame(const TimeWindow &base, int x, int step, bool zoomIn)
{
    // From the first window and not from frame to frame: the last frame is a factor of two without rounding.
    const double factor = std::exp2(double(step) / animStepCount);
    if (!zoomIn) {
        return {zoomAbout(base, x, base.ratio * factor), false};
    }
    const double ratio = base.ratio / factor;
    const bool atLimit = ratio < minRatio;
    return {zoomAbout(base, x, atLimit ? minRatio : ratio), atLimit};
}

TimeWindow showRange(double a, double b, int width)
{
    if (b < a) {
        std::swap(a, b);
    }
    const double half = width / 2;
    const double ratio = half > 0 ? (b - a + 1.0) / half : 0.0;
    return finite({a - ratio * half * 0.5, ratio});
}

TimeWindow fillWith(double a, double b, int width)
{
    if (b < a) {
        std::swap(a, b);
    }
    return finite({a, width > 0 ? std::max((b - a) / width, minRatio) : 0.0});
}

TimeWindow centredOn(const TimeWindow &window, double position, int width)
{
    return finite({position - double(width / 2) * window.ratio, window.ratio});
}

std::int64_t rightEnd(const TimeWindow &window, int width)
{
    return truncated64(window.start + spanOf(window, width));
}

Settled settle(const TimeWindow &window, std::int64_t count, int width)
{
    if (width <= 0) {
        return {window, false};
    }
    TimeWindow settled = finite(window);
    settled.ratio = std::min(settled.ratio, fitRatio(count, width));
    const double samples = double(std::max<std::int64_t>(count, 0));
    const double span = spanOf(settled, width);
    if (settled.start < 0.0) {
        settled.start = 0.0;
    } else if (span + settled.start > samples) {
        settled.start = std::max(samples - span, 0.0); // rounding alone must not put it before the data
    }
    return {settled, !(settled == window)};
}

TimeWindow place(const TimeWindow &window, std::int64_t count, int width, const Placement &placement)
{
    TimeWindow placed = finite(window);
    const bool everything = placement.viewState == 1;
    const double fitting = fitRatio(count, width);
    const bool unusable = placed.ratio < minRatio || placed.ratio > fitting || everything;
    if (placement.clampToData ? unusable : placed.ratio <= 0.0) {
        placed.ratio = fitting;
    }

    double endLimit = double(count) - spanOf(placed, width);
    if (placement.clampToData) {
        endLimit = std::max(endLimit, 0.0); // rounding
    }

    const double trigger = double(placement.trgPos);
    double candidate = 0.0;
    if (placement.viewState == 2) {
        candidate = placed.start - double(placement.lastTrgPos) + trigger;
    } else if (!everything) {
        candidate = trigger - double(width / 2) * placed.ratio;
    }
    placed.start = candidate < 0.0 ? 0.0 : std::min(candidate, endLimit);
    return finite(placed);
}

} // namespace TimeAxis
