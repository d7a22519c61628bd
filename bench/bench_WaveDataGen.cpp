// What a frame of the view costs. A frame has 30 ms; the lines of 16 dense channels over 1920 columns may take 10 ms of
// them, the ruler's ticks 50 microseconds. Neither may allocate.

#include "Yardsticks.h"
#include "wave/AllocationCount.h"
#include "wave/TimeTicks.h"
#include "wave/WaveCapture.h"
#include "wave/WaveDataGen.h"

#include <QGuiApplication>

#include <benchmark/benchmark.h>
#include <vector>

namespace {

constexpr int viewColumns = 1920;

void reportAllocations(benchmark::State &state, std::size_t before)
{
    state.counters["allocations"] =
        benchmark::Counter(double(allocationCount - before), benchmark::Counter::kAvgIterations);
}

/// 16 channels, a transition every `state.range(0)` samples; the whole capture in view.
void updateLines(benchmark::State &state)
{
    constexpr int channels = 16;
    constexpr std::int64_t transitions = 1'000'000;
    const auto period = std::int32_t(state.range(0));
    WaveCapture builder = capture().channels(channels).samples(transitions * period);
    for (int chn = 0; chn < channels; ++chn) {
        builder.pulses(chn, std::vector<std::int32_t>(transitions - 1, period));
    }
    const auto data = builder.build();
    WaveDataGen gen;
    gen.setDataSource(data.get());
    gen.setViewWidth(viewColumns);
    gen.zoomFit();
    const std::size_t before = allocationCount;
    for (auto _ : state) {
        gen.updateLines();
    }
    reportAllocations(state, before);
}

/// The ruler over `state.range(0)` picoseconds per pixel.
void updateTimeTicks(benchmark::State &state)
{
    std::vector<TimeTick> ticks(std::size_t(TimeTicks::capacity(viewColumns)));
    TimeTicks::LabelMetrics metrics;
    metrics.unitWidth = {12, 12, 12, 12, 6};
    const double psPerPixel = double(state.range(0));
    const TimeTicks::Scale scale{-0.4 * viewColumns * psPerPixel, psPerPixel, viewColumns};
    const std::size_t before = allocationCount;
    for (auto _ : state) {
        benchmark::DoNotOptimize(TimeTicks::fill(scale, metrics, ticks));
    }
    reportAllocations(state, before);
}

/// The yardstick.
void fillOfFullHd(benchmark::State &state)
{
    fillFrames(state, fullHd);
}

} // namespace

BENCHMARK(updateLines)->Arg(1)->Arg(100)->Unit(benchmark::kMillisecond);
BENCHMARK(updateTimeTicks)->Arg(13)->Arg(40'000)->Arg(1'000'000'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(fillOfFullHd)->Unit(benchmark::kMicrosecond);

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen"); // fonts are measured, nothing is shown
    }
    const QGuiApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
