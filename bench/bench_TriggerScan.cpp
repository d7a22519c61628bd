// What the search for a trigger promises about speed while the trigger does not come, against memchr over the same
// bytes, measured in turn with it. The counter "ratio" is the speed of the search divided by that of memchr.

#include "store/SmpTrigBytes8.h"
#include "store/SmpTrigSliced.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstring>
#include <ctime>
#include <limits>
#include <vector>

namespace {

constexpr std::size_t bufferBytes = std::size_t(1) << 20; // one receive buffer of a fast device
constexpr std::size_t streamBytes = std::size_t(64) << 20;
constexpr int rising = 3;
constexpr int high = 2;

using Bytes = std::vector<std::uint8_t>;

template<class Job>
double seconds(const Job &job)
{
    const std::clock_t start = std::clock();
    job();
    return double(std::clock() - start) / CLOCKS_PER_SEC;
}

/// Searches the stream in buffers. `scan` returns the place in a buffer or -1.
template<class Scan>
void measure(benchmark::State &state, const Bytes &stream, const Scan &scan)
{
    double spent = std::numeric_limits<double>::max();
    double yardstick = std::numeric_limits<double>::max();
    bool found = false;
    for (auto _ : state) {
        const double took = seconds([&] {
            for (std::size_t at = 0; at < stream.size(); at += bufferBytes) {
                found = scan(std::span(stream).subspan(at, std::min(bufferBytes, stream.size() - at))) >= 0 || found;
            }
        });
        yardstick = std::min(yardstick, seconds([&] {
                                 for (std::size_t at = 0; at < stream.size(); at += bufferBytes) {
                                     const void *place =

                                         std::memchr(stream.data() + at, 0xA7,
                                                     std::min(bufferBytes, stream.size() - at)); // in no stream here
                                     benchmark::DoNotOptimize(place);
                                     found = place != nullptr || found;
                                 }
                             }));
        spent = std::min(spent, took);
        state.SetIterationTime(took);
    }
    if (found) {
        state.SkipWithError("found what is not there");
    }
    state.SetBytesProcessed(std::int64_t(state.iterations()) * std::int64_t(stream.size()));
    state.counters["ratio"] = yardstick / spent;                      // at least 0.05
    state.counters["bytesPerSecond"] = double(stream.size()) / spent; // at least 5e8
}

/// `chns` channels, of which each changes in each group, but for the last one, which stays low. Whole groups, so that
/// the stream may follow itself.
Bytes slicedStream(std::size_t chns)
{
    Bytes stream(streamBytes / (2 * chns) * 2 * chns);
    for (std::size_t i = 0; i < stream.size(); i += 2) {
        const bool last = i / 2 % chns == chns - 1;
        stream[i] = last ? 0x00 : 0xF0;
        stream[i + 1] = last ? 0x00 : 0x3C;
    }
    return stream;
}

/// One edge that does not come, of the last channel.
void slicedEdge(benchmark::State &state)
{
    const auto chns = std::size_t(state.range(0));
    std::vector<std::int32_t> kinds(chns, 0);
    kinds.back() = rising;
    SmpTrigSliced scanner;
    scanner.start(kinds);
    measure(state, slicedStream(chns), [&](std::span<const std::uint8_t> bytes) { return scanner.scan(bytes); });
}

/// All channels asked for a level, which they never have together.
void slicedLevels(benchmark::State &state)
{
    const auto chns = std::size_t(state.range(0));
    SmpTrigSliced scanner;
    scanner.start(std::vector<std::int32_t>(chns, high));
    measure(state, slicedStream(chns), [&](std::span<const std::uint8_t> bytes) { return scanner.scan(bytes); });
}

/// An edge of one channel while seven others change, with or without a level asked for beside it.
void bytes8(benchmark::State &state, SmpTrigBytes8::Masks masks)
{
    Bytes stream(streamBytes);
    for (std::size_t i = 0; i < stream.size(); ++i) {
        stream[i] = std::uint8_t(i % 0x71);
    }
    SmpTrigBytes8 scanner;
    scanner.start(masks);
    measure(state, stream, [&](std::span<const std::uint8_t> bytes) { return scanner.scan(bytes); });
}

} // namespace

BENCHMARK(slicedEdge)->UseManualTime()->Arg(1)->Arg(2)->Arg(3)->Arg(5)->Arg(8)->Arg(12)->Arg(16);
BENCHMARK(slicedLevels)->UseManualTime()->Arg(1)->Arg(2)->Arg(3)->Arg(5)->Arg(8)->Arg(12)->Arg(16);
BENCHMARK_CAPTURE(bytes8, edge, SmpTrigBytes8::Masks{0x80, 0, 0, 0})->UseManualTime();
BENCHMARK_CAPTURE(bytes8, edgeAndLevel, SmpTrigBytes8::Masks{0x80, 0x80, 0x03, 0x01})->UseManualTime();
BENCHMARK_CAPTURE(bytes8, level, SmpTrigBytes8::Masks{0, 0, 0x80, 0x80})->UseManualTime();

BENCHMARK_MAIN();
