// What the measurement of analog channels promises about speed: a full buffer of 32,768 samples takes at most 3 ms,
// whatever it holds, so that twenty captures a second leave time for everything else.

#include "analysis/AnalogParameters.h"
#include "store/SmpData.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <random>
#include <vector>

namespace {

constexpr std::int64_t rate = 1'000'000; // Hz

using Samples = std::vector<std::int8_t>;

Samples sine(int period)
{
    Samples samples(SmpAChnBuffer::capacity, 0);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = std::int8_t(std::lround(100 * std::sin(2 * std::numbers::pi * double(i) / period)));
    }
    return samples;
}

Samples noise()
{
    std::mt19937 random(20261122);
    Samples samples(SmpAChnBuffer::capacity, 0);
    for (std::int8_t &sample : samples) {
        sample = std::int8_t(int(random() % 256) - 128);
    }
    return samples;
}

void measure(benchmark::State &state, const Samples &samples)
{
    for (auto _ : state) {
        QString text = analogParameters(samples, rate, 1);
        benchmark::DoNotOptimize(text);
    }
    state.counters["measured"] = analogParameters(samples, rate, 1).isEmpty() ? 0 : 1;
}

void slowSine(benchmark::State &state)
{
    measure(state, sine(4096));
}

void fastSine(benchmark::State &state)
{
    measure(state, sine(48));
}

void randomSamples(benchmark::State &state)
{
    measure(state, noise());
}

void flat(benchmark::State &state)
{
    measure(state, Samples(SmpAChnBuffer::capacity, 0));
}

} // namespace

BENCHMARK(slowSine)->Unit(benchmark::kMillisecond);
BENCHMARK(fastSine)->Unit(benchmark::kMillisecond);
BENCHMARK(randomSamples)->Unit(benchmark::kMillisecond);
BENCHMARK(flat)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
