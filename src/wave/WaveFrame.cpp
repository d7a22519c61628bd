#include "wave/WaveFrame.h"

#include "analysis/MarkerTimes.h"

#include <algorithm>
#include <cmath>

namespace {

/// Below this a column's sample position cannot be told from its neighbours' in any capture, and dividing by it leaves
/// the range of whole numbers. The fitting ratio of one sample in the widest view is far above.
constexpr double smallestRatio = 1e-6;

bool isDrawable(const TimeWindow &window, int width, std::int64_t count)
{
    return window.ratio >= smallestRatio && window.start + double(width) * window.ratio > 0.0 &&
           window.start <= double(count);
}

/// Points that an analog line may have beyond one a column: of the samples at both edges of the view.
constexpr int pointsAtEdges = 3;

/// The line of an analog channel. Where a sample spans columns it begins with the one at the left edge, which stands to
/// the left of the view: each sample is in the column of its digital edge.
/// @param out  room for `width` + `pointsAtEdges` points. @return the points
int analogLine(const SmpData &source, int chn, const TimeWindow &window, int width, SmpAChnPoint *out)
{
    if (width < 1 || window.ratio > 1.0 || window.start < 0.0) {
        return source.aChnPoints(chn, window.start, window.ratio, width, out);
    }
    const double first = std::floor(window.start);
    const int columns = width + int(std::ceil(1.0 / window.ratio)); // those of the first sample included
    const int points = source.aChnPoints(chn, first, window.ratio, columns, out);
    for (int n = 0; n < points; ++n) {
        out[n].x = std::int32_t(std::floor((first + n - window.start) / window.ratio));
    }
    return points;
}

template<typename T>
std::span<const T> line(const std::vector<T> &all, const std::vector<int> &counts, int chn, int width)
{
    if (chn < 0 || std::size_t(chn) >= counts.size()) {
        return {};
    }
    return {all.data() + std::size_t(chn) * std::size_t(width), std::size_t(counts[std::size_t(chn)])};
}

} // namespace

void WaveFrame::resize(int chnCount, int aChnCount, int width)
{
    const auto columns = std::size_t(std::max(width, 0));
    m_width = int(columns);
    m_runs.assign(std::size_t(chnCount) * columns, {});
    m_runCounts.assign(std::size_t(chnCount), 0);
    m_points.assign(std::size_t(aChnCount) * (columns + pointsAtEdges), {});
    m_pointCounts.assign(std::size_t(aChnCount), 0);
    m_ticks.assign(std::size_t(TimeTicks::capacity(m_width)), {});
    m_tickCount = 0;
}

void WaveFrame::render(const WaveInput &input)
{
    m_window = input.window;
    clearLines();
    const SmpReadLock lock(input.source);
    const bool closed = bool(lock) && input.source->smpCount() > 0;
    if (closed && isDrawable(m_window, m_width, input.source->smpCount())) {
        renderLines(*input.source);
    }
    renderTicks(input, closed);
}

void WaveFrame::clearLines()
{
    std::fill(m_runCounts.begin(), m_runCounts.end(), 0);
    std::fill(m_pointCounts.begin(), m_pointCounts.end(), 0);
    m_tickCount = 0;
}

void WaveFrame::renderLines(const SmpData &source)
{
    const int chnCount = std::min(source.chnCount, std::int32_t(m_runCounts.size()));
    for (int chn = 0; chn < chnCount; ++chn) {
        SmpWaveRun *out = m_runs.data() + std::size_t(chn) * std::size_t(m_width);
        m_runCounts[std::size_t(chn)] = std::max(0, source.waveRuns(chn, m_window.start, m_window.ratio, m_width, out));
    }
    const int aChnCount = std::min(source.aChnCount, std::int32_t(m_pointCounts.size()));
    for (int chn = 0; chn < aChnCount; ++chn) {
        SmpAChnPoint *out = m_points.data() + std::size_t(chn) * std::size_t(m_width + pointsAtEdges);
        m_pointCounts[std::size_t(chn)] = analogLine(source, chn, m_window, m_width, out);
    }
}

void WaveFrame::renderTicks(const WaveInput &input, bool closed)
{
    const SmpData *source = input.source;
    if (!source || (!closed && source->aChnCount < 1)) {
        return;
    }
    const std::int64_t rate = closed ? source->smpFrequ() : input.sampleRateHz;
    if (rate < 1) {
        return;
    }
    const double psPerSample = psPerSecond / double(rate);
    const double zero = closed ? double(source->trgPos()) : 0.0;
    const TimeTicks::Scale scale{(m_window.start - zero) * psPerSample, psPerSample * m_window.ratio, m_width};
    m_tickCount = TimeTicks::fill(scale, input.metrics, m_ticks);
}

std::span<const SmpWaveRun> WaveFrame::digLine(int chn) const
{
    return line(m_runs, m_runCounts, chn, m_width);
}

std::span<const SmpAChnPoint> WaveFrame::aChnLine(int chn) const
{
    return line(m_points, m_pointCounts, chn, m_width + pointsAtEdges);
}

std::span<const TimeTick> WaveFrame::timeTicks() const
{
    return {m_ticks.data(), std::size_t(m_tickCount)};
}
