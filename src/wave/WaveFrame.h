#pragma once

#include "store/SmpData.h"
#include "wave/TimeAxis.h"
#include "wave/TimeTicks.h"

#include <cstdint>
#include <span>
#include <vector>

/// What one frame is computed from: values, and the capture they apply to.
struct WaveInput {
    const SmpData *source = nullptr; ///< null for none; must live until the frame is computed
    TimeWindow window;
    std::int64_t sampleRateHz = 0; ///< rate of the ruler while an analog model has no capture
    TimeTicks::LabelMetrics metrics;
};

/// One picture of the view: the window, a line for each channel, the ruler's ticks.
///
/// Used by one thread at a time; a frame changes its thread by being swapped. All memory is taken by resize().
class WaveFrame {
public:
    /// Takes the memory for lines of `width` columns, and empties them. The window stays.
    void resize(int chnCount, int aChnCount, int width);

    /// Computes the whole frame, under a read lock on the capture of its own. Without a closed capture the lines are
    /// empty. No allocation. Cost: one seek per column and digital channel, whatever the data.
    void render(const WaveInput &input);

    [[nodiscard]] const TimeWindow &window() const { return m_window; }
    /// Stands in for render() while there is nothing to compute.
    void setWindow(const TimeWindow &window) { m_window = window; }
    /// Empty for a channel that does not exist or has no line.
    [[nodiscard]] std::span<const SmpWaveRun> digLine(int chn) const;
    [[nodiscard]] std::span<const SmpAChnPoint> aChnLine(int chn) const;
    [[nodiscard]] std::span<const TimeTick> timeTicks() const;

private:
    void clearLines();
    void renderLines(const SmpData &source);
    void renderTicks(const WaveInput &input, bool closed);

    TimeWindow m_window;
    int m_width = 0;                ///< columns
    std::vector<SmpWaveRun> m_runs; ///< channel after channel, `m_width` each
    std::vector<int> m_runCounts;
    std::vector<SmpAChnPoint> m_points; ///< channel after channel, some more than `m_width` each
    std::vector<int> m_pointCounts;
    std::vector<TimeTick> m_ticks;
    int m_tickCount = 0;
};
