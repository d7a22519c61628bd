// What the decoder runtime promises about speed. Walking is measured against a plain loop over a flat array of the same
// positions, in turn with it, so that the ratio holds on a busy machine too.

#include "runtime/ReaderDesk.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <limits>
#include <random>
#include <vector>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace {

using lux::ChannelReader;
using readerDesk::ScriptDecoder;

constexpr std::int64_t edgeCount = 20000000;

/// Processor time, so that what else runs on the machine counts for neither side.
template<class Job>
double seconds(const Job &job)
{
    const std::clock_t start = std::clock();
    job();
    return double(std::clock() - start) / CLOCKS_PER_SEC;
}

/// A channel with edges at random distances, as a tree and as a flat array.
struct Line {
    Line()
    {
        std::mt19937 random(1);
        std::int64_t at = 0;
        for (std::int64_t i = 0; i < edgeCount; ++i)
            positions.push_back(at += 1 + random() % 16);
        capture = std::make_unique<TestCapture>(100000000, at + 1000);
        capture->channel(0, false, positions);
    }
    std::vector<std::int64_t> positions;
    std::unique_ptr<TestCapture> capture;
};

Line &line()
{
    static Line made;
    return made;
}

/// Walks all edges by `walk` and by a plain loop, in turn, and tells edges a second and the ratio of both.
template<class Walk>
void walkAgainstFlat(benchmark::State &state, const Walk &walk)
{
    double least = std::numeric_limits<double>::max();
    double leastFlat = least;
    const Line &data = line();
    for (auto _ : state) {
        least = std::min(least, seconds([&] { readerDesk::decode(*line().capture, walk); }));
        leastFlat = std::min(leastFlat, seconds([&data] {
                                 std::int64_t widest = 0;
                                 std::int64_t last = 0;
                                 for (const std::int64_t position : data.positions) {
                                     benchmark::DoNotOptimize(widest = std::max(widest, position - last));
                                     last = position;
                                 }
                             }));
    }
    state.counters["edges/s"] = double(edgeCount) / least;
    state.counters["flat edges/s"] = double(edgeCount) / leastFlat;
    state.counters["of flat"] = leastFlat / least;
}

/// The reader as decode() gets it.
void walkByReference(benchmark::State &state)
{
    walkAgainstFlat(state, [](ScriptDecoder &decoder) {
        ChannelReader &reader = decoder.readerOf(0);
        std::int64_t widest = 0;
        std::int64_t last = 0;
        for (;;) {
            const std::int64_t position = reader.nextEdge();
            benchmark::DoNotOptimize(widest = std::max(widest, position - last));
            last = position;
        }
    });
}

/// A copy of it in a local variable.
void walkByCopy(benchmark::State &state)
{
    walkAgainstFlat(state, [](ScriptDecoder &decoder) {
        ChannelReader reader = decoder.readerOf(0);
        std::int64_t widest = 0;
        std::int64_t last = 0;
        for (;;) {
            const std::int64_t position = reader.nextEdge();
            benchmark::DoNotOptimize(widest = std::max(widest, position - last));
            last = position;
        }
    });
}

/// Levels at a steady step of half an edge's mean distance.
void readLevels(benchmark::State &state)
{
    double least = std::numeric_limits<double>::max();
    constexpr std::int64_t step = 4;
    const std::int64_t samples = line().capture->device().smpCount;
    for (auto _ : state) {
        least = std::min(least, seconds([] {
                             readerDesk::decode(*line().capture, [](ScriptDecoder &decoder) {
                                 ChannelReader &reader = decoder.readerOf(0);
                                 for (std::int64_t at = 0;; at += step)
                                     benchmark::DoNotOptimize(reader.levelAt(at));
                             });
                         }));
    }
    state.counters["levels/s"] = double(samples / step) / least;
}

/// Jumps over a million edges each.
void jumpOverAMillionEdges(benchmark::State &state)
{
    std::int64_t jumps = 0;
    double total = 0;
    for (auto _ : state) {
        total += seconds([&jumps] {
            readerDesk::decode(*line().capture, [&jumps](ScriptDecoder &decoder) {
                ChannelReader &reader = decoder.readerOf(0);
                constexpr std::int64_t far = 8500000;
                for (;; ++jumps)
                    reader.advanceTo(reader.position() + far);
            });
        });
    }
    state.counters["ns a jump"] = total * 1e9 / double(std::max<std::int64_t>(jumps, 1));
}

/// Results of ten million frames, some of them nested.
DecodeDesk &manyFrames()
{
    static const std::unique_ptr<DecodeDesk> desk = [] {
        constexpr std::int64_t count = 10000000;
        static TestCapture capture(100000000, count * 100);
        return readerDesk::decode(capture, [](ScriptDecoder &decoder) {
            for (std::int64_t i = 0; i < count; ++i) {
                const std::int64_t width = i % 1000 == 0 ? 50000 : 80;
                decoder.out().add(
                    {.firstSample = i * 100, .lastSample = i * 100 + width, .data = std::uint64_t(i & 255)});
            }
        });
    }();
    return *desk;
}

void addFrames(benchmark::State &state)
{
    static TestCapture capture(100000000, 1000000000);
    constexpr std::int64_t count = 5000000;
    double least = std::numeric_limits<double>::max();
    for (auto _ : state) {
        least = std::min(least, seconds([] {
                             readerDesk::decode(capture, [](ScriptDecoder &decoder) {
                                 for (std::int64_t i = 0; i < count; ++i)
                                     decoder.out().add({.firstSample = i * 100, .lastSample = i * 100 + 80});
                             });
                         }));
    }
    state.counters["ns a frame"] = least * 1e9 / double(count);
}

void framesInRange(benchmark::State &state)
{
    const AnalyzerResults &results = manyFrames().results();
    std::mt19937_64 random(3);
    std::uint64_t first = 0;
    std::uint64_t last = 0;
    for (auto _ : state) {
        const auto at = std::int64_t(random() % 1000000000);
        benchmark::DoNotOptimize(results.GetFramesInRange(at, at + 5000, &first, &last));
    }
}

/// Ten million frames side by side, in the largest pages that there are.
const FrameData *flatFrames()
{
    static const FrameData *made = [] {
        constexpr std::size_t largePage = std::size_t(2) << 20;
        constexpr std::size_t bytes = 10000000 * sizeof(FrameData) / largePage * largePage + largePage;
        void *memory = std::aligned_alloc(largePage, bytes);
#if defined(__linux__)
        madvise(memory, bytes, MADV_HUGEPAGE);
#endif
        std::memset(memory, 1, bytes);
        return static_cast<const FrameData *>(memory);
    }();
    return made;
}

/// Of frames anywhere in ten million, and next to it what their memory alone takes: one read out of a flat array,
/// each of which waits for the one before.
void tabularText(benchmark::State &state)
{
    AnalyzerResults &results = manyFrames().results();
    const FrameData *flat = flatFrames();
    std::mt19937_64 random(3);
    constexpr int some = 10000;
    constexpr std::uint64_t all = 10000000;
    double text = 0;
    double read = 0;
    for (auto _ : state) {
        text += seconds([&] {
            for (int i = 0; i < some; ++i) {
                results.BuildTabularText(random() % all, DisplayBase::AsciiHex);
                benchmark::DoNotOptimize(results.GetTabularTextString());
            }
        });
        read += seconds([&] {
            std::uint64_t before = 0;
            for (int i = 0; i < some; ++i)
                benchmark::DoNotOptimize(before = flat[(random() + before) % all].data);
        });
    }
    const double count = double(state.iterations()) * some;
    state.counters["ns a text"] = text * 1e9 / count;
    state.counters["ns a read"] = read * 1e9 / count;
    state.counters["own ns"] = (text - read) * 1e9 / count;
}

/// As a list does that is scrolled through.
void tabularTextInOrder(benchmark::State &state)
{
    AnalyzerResults &results = manyFrames().results();
    std::uint64_t at = 0;
    for (auto _ : state) {
        results.BuildTabularText(at++ % 10000000, DisplayBase::AsciiHex);
        benchmark::DoNotOptimize(results.GetTabularTextString());
    }
}

BENCHMARK(walkByReference)->Iterations(5)->Unit(benchmark::kMillisecond);
BENCHMARK(walkByCopy)->Iterations(5)->Unit(benchmark::kMillisecond);
BENCHMARK(readLevels)->Iterations(5)->Unit(benchmark::kMillisecond);
BENCHMARK(jumpOverAMillionEdges)->Iterations(500)->Unit(benchmark::kMicrosecond);
BENCHMARK(addFrames)->Iterations(5)->Unit(benchmark::kMillisecond);
BENCHMARK(framesInRange);
BENCHMARK(tabularText)->Unit(benchmark::kMillisecond);
BENCHMARK(tabularTextInOrder);

} // namespace

BENCHMARK_MAIN();
