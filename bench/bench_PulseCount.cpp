// What the list of pulse measurements promises about speed: a row costs nothing worth mentioning, however many edges
// the capture holds, so that the counts follow a marker that is dragged.

#include "analysis/PulseCount.h"
#include "store/MemBudget.h"
#include "store/SmpWriter.h"

#include <benchmark/benchmark.h>
#include <cstdint>
#include <memory>
#include <random>
#include <vector>

namespace {

constexpr int longestPulse = 16; // samples

/// One channel with so many edges at irregular distances.
std::unique_ptr<SmpData> captureOf(std::int64_t edges)
{
    memBudget = std::int64_t(1) << 40;
    auto data = std::make_unique<SmpData>(1, 0);
    const std::vector<std::uint8_t> enable(1, 1);
    data->begin(0, 100'000'000, enable);
    std::mt19937 random(20261121);
    std::vector<std::int32_t> widths(1'000'000);
    std::int64_t pos = 0;
    for (std::int64_t done = 0; done < edges; done += std::int64_t(widths.size())) {
        for (std::int32_t &width : widths) {
            width = std::int32_t(1 + random() % longestPulse);
        }
        if (!data->addPulses(widths, 0, pos)) {
            return nullptr;
        }
    }
    SmpWriter(*data).setSmpCount(pos + longestPulse);
    data->finish(data->smpCount());
    return data;
}

/// One row over ranges that lie anywhere in the capture.
void row(benchmark::State &state)
{
    const auto data = captureOf(state.range(0));
    if (!data) {
        state.SkipWithError("no memory for the capture");
        return;
    }
    std::mt19937_64 random(1);
    for (auto _ : state) {
        const auto a = std::int64_t(random() % std::uint64_t(data->smpCount()));
        const auto b = std::int64_t(random() % std::uint64_t(data->smpCount()));
        PulseCounts counts;
        bool counted = countPulses(*data, 0, std::min(a, b), std::max(a, b), counts);
        benchmark::DoNotOptimize(counted);
        benchmark::DoNotOptimize(counts);
    }
}

/// One row as the list of measurements asks for it: the whole capture, and the text of the answer.
void rowAsText(benchmark::State &state)
{
    const auto data = captureOf(state.range(0));
    if (!data) {
        state.SkipWithError("no memory for the capture");
        return;
    }
    for (auto _ : state) {
        QString fields = pulseCountFields(*data, 0, 0, data->smpCount());
        benchmark::DoNotOptimize(fields);
    }
}

} // namespace

BENCHMARK(row)->Arg(1'000'000)->Arg(100'000'000);
BENCHMARK(rowAsText)->Arg(100'000'000);
BENCHMARK_MAIN();
