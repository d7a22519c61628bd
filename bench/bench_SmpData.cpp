// What the capture store promises about speed, each against a plain yardstick measured in turn with it, so that the
// ratio holds on a busy machine too. The counter "ratio" is the time of the store divided by that of the yardstick.

#include "store/MemBudget.h"
#include "store/SmpData.h"
#include "store/SmpEdgeReader.h"
#include "store/SmpStreams.h"
#include "store/SmpWriter.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstring>
#include <ctime>
#include <limits>
#include <random>

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace {

using smpStreams::Bytes;

constexpr std::size_t streamBytes = std::size_t(64) << 20;
constexpr int channels = 16;

/// The least of the times taken: on a busy machine the one that was disturbed least.
class Least {
public:
    void add(double time) { m_time = std::min(m_time, time); }
    [[nodiscard]] double operator/(const Least &other) const { return m_time / other.m_time; }
    [[nodiscard]] double time() const { return m_time; }

private:
    double m_time = std::numeric_limits<double>::max();
};

/// Processor time, so that what else runs on the machine counts for neither side.
template<class Job>
double seconds(const Job &job)
{
    const std::clock_t start = std::clock();
    job();
    return double(std::clock() - start) / CLOCKS_PER_SEC;
}

/// One call of the decoder under measurement over a whole stream.
using Decode = bool (*)(SmpData &, const Bytes &);

bool decodeRle16(SmpData &data, const Bytes &bytes)
{
    std::uint32_t consumed = 0;
    return data.addRle16(bytes, consumed);
}

bool decodeRle32(SmpData &data, const Bytes &bytes)
{
    std::uint32_t consumed = 0;
    return data.addRle32(bytes, consumed);
}

bool decodeBytes8(SmpData &data, const Bytes &bytes)
{
    std::int64_t count = 0;
    return data.addBytes8(bytes, 0, count);
}

bool decodeSliced(SmpData &data, const Bytes &bytes)
{
    std::int64_t count = 0;
    return data.addSliced(bytes, 0, count);
}

int channelsOf(Decode decode)
{
    return decode == decodeBytes8 ? 8 : decode == decodeRle32 ? 32 : channels;
}

/// A stream of `size` bytes or somewhat less, in which nothing changes.
Bytes quietStream(Decode decode, std::size_t size)
{
    if (decode == decodeBytes8) {
        return Bytes(size, 0x5A);
    }
    if (decode == decodeSliced) {
        return smpStreams::sliced(std::vector<std::uint32_t>(size * 8 / channels, 0x5A5A), [] {
            std::vector<int> all;
            for (int chn = 0; chn < channels; ++chn) {
                all.push_back(chn);
            }
            return all;
        }());
    }
    if (decode == decodeRle16) {
        return smpStreams::rle16(std::vector<smpStreams::Record>(size / 16 * 5, {0x5A5A, 200}));
    }
    return smpStreams::rle32(std::vector<smpStreams::Record>(size / 32 * 6, {0x5A5A1234, 200}));
}

/// A stream of `entries` records, words or bytes, each of which holds one transition, of the channels in turn.
Bytes busyStream(Decode decode, std::size_t entries)
{
    Bytes bytes;
    if (decode == decodeSliced) {
        // Each word changes once, at sample 5 of 16: the levels of all channels flip from group to group.
        bytes.reserve(entries * 2);
        for (std::size_t i = 0; i < entries; ++i) {
            const std::uint32_t word = (i / channels) % 2 == 0 ? 0xFFE0 : 0x001F;
            bytes.insert(bytes.end(), {std::uint8_t(word), std::uint8_t(word >> 8)});
        }
        return bytes;
    }
    const int count = std::min(channelsOf(decode), channels); // as many as the yardstick has vectors
    std::uint32_t word = 0;
    std::vector<smpStreams::Record> records;
    for (std::size_t i = 0; i < entries; ++i) {
        word ^= std::uint32_t(1) << (i % std::size_t(count));
        if (decode == decodeBytes8) {
            bytes.push_back(std::uint8_t(word));
        } else {
            records.push_back({word, std::uint8_t(1 + i % 100)});
        }
    }
    return decode == decodeBytes8  ? bytes
           : decode == decodeRle16 ? smpStreams::rle16(records)
                                   : smpStreams::rle32(records);
}

void quiet(benchmark::State &state, Decode decode)
{
    const Bytes bytes = quietStream(decode, streamBytes);
    Bytes copy(bytes.size());
    SmpData data(channelsOf(decode), 0);
    Least spent;
    Least yardstick;
    for (auto _ : state) {
        data.begin(0, 100000000, smpStreams::enabled(data.chnCount));
        bool stored = false;
        const double took = seconds([&] { stored = decode(data, bytes); });
        if (!stored || data.smpCount() == 0) {
            state.SkipWithError("not decoded");
            return;
        }
        yardstick.add(seconds([&] {
            std::memcpy(copy.data(), bytes.data(), bytes.size());
            benchmark::ClobberMemory();
        }));
        spent.add(took);
        state.SetIterationTime(took);
    }
    state.SetBytesProcessed(std::int64_t(state.iterations()) * std::int64_t(bytes.size()));
    state.counters["ratio"] = spent / yardstick; // to memcpy of the same bytes; at most 8
}

void busy(benchmark::State &state, Decode decode)
{
    constexpr std::size_t entries = 8000000;
    const Bytes bytes = busyStream(decode, entries);
    SmpData data(channelsOf(decode), 0);
    const Bytes enable = smpStreams::enabled(data.chnCount);
    data.begin(0, 100000000, enable);
    if (!decode(data, bytes)) {
        state.SkipWithError("not decoded");
        return;
    }
    data.finish(data.smpCount());
    // The yardstick appends the same positions in the same order to 16 vectors.
    std::vector<std::pair<std::uint32_t, std::int64_t>> order;
    for (int chn = 0; chn < data.chnCount; ++chn) {
        for (std::int64_t i = 0; i < data.entryCount(chn) - 1; ++i) {
            order.emplace_back(chn % channels, data.entryAt(chn, {}, i));
        }
    }
    std::stable_sort(order.begin(), order.end(), [](const auto &a, const auto &b) { return a.second < b.second; });
    std::vector<std::vector<std::int64_t>> lists(channels);
    for (auto &list : lists) {
        list.reserve(order.size() / 4);
    }
    Least spent;
    Least yardstick;
    for (auto _ : state) {
        data.begin(0, 100000000, enable); // its blocks come from those just freed, as the vectors keep theirs
        bool stored = false;
        const double took = seconds([&] { stored = decode(data, bytes); });
        if (!stored) {
            state.SkipWithError("not decoded");
            return;
        }
        for (auto &list : lists) {
            list.clear();
        }
        yardstick.add(seconds([&] {
            for (const auto &[list, pos] : order) {
                lists[list].push_back(pos);
            }
            benchmark::ClobberMemory();
        }));
        spent.add(took);
        state.SetIterationTime(took);
    }
    state.SetItemsProcessed(std::int64_t(state.iterations()) * std::int64_t(order.size()));
    state.counters["perSecond"] = double(order.size()) / spent.time();
    state.counters["ratio"] = spent / yardstick; // to appending the same positions; at most 1.5
}

/// A closed capture of one channel with `entries` transitions, at a mean distance of 50 samples.
struct LongChannel {
    SmpData data{1, 0};
    std::vector<std::int64_t> flat; ///< the same positions, in one array

    LongChannel(std::int64_t entries, bool keepFlat)
    {
        std::mt19937 random(7);
        data.begin(0, 500000000, smpStreams::enabled(1));
        std::vector<std::int32_t> widths;
        std::int64_t pos = 0;
        for (std::int64_t done = 0; done < entries; done += std::int64_t(widths.size())) {
            widths.resize(std::size_t(std::min<std::int64_t>(entries - done, 20000)));
            std::int64_t at = pos;
            for (auto &width : widths) {
                width = std::int32_t(1 + random() % 99);
                at += width;
                if (keepFlat) {
                    flat.push_back(at);
                }
            }
            if (!data.addPulses(widths, 0, pos)) {
                std::abort();
            }
        }
        SmpWriter(data).setSmpCount(pos + 10);
        data.finish(data.smpCount());
    }
};

constexpr int lineWidth = 1920;

void line(benchmark::State &state)
{
    const LongChannel channel(state.range(0), true);
    const double step = double(channel.data.smpCount()) / lineWidth;
    std::vector<SmpWaveRun> runs(lineWidth);
    Least spent;
    Least yardstick;
    for (auto _ : state) {
        int count = 0;
        const double took = seconds([&] { count = channel.data.waveRuns(0, 0.0, step, lineWidth, runs.data()); });
        if (count < lineWidth - 10) {
            state.SkipWithError("not a dense line");
            return;
        }
        yardstick.add(seconds([&] {
            std::int64_t sum = 0;
            for (int column = 0; column < lineWidth; ++column) {
                const auto pos = std::int64_t(column * step);
                sum += std::upper_bound(channel.flat.begin(), channel.flat.end(), pos) - channel.flat.begin();
            }
            benchmark::DoNotOptimize(sum);
        }));
        spent.add(took);
        state.SetIterationTime(took);
    }
    state.counters["leastMicroseconds"] = spent.time() * 1e6;
    state.counters["ratio"] = spent / yardstick; // to a binary search a column in one flat array; at most 0.8
}

/// Reading all entries with their levels, in the three ways that there are.
enum class Way { Steps, Blocks, Skips };

std::int64_t readAll(const SmpData &data, Way way)
{
    std::int64_t sum = 0;
    SmpEdgeReader reader(data, 0);
    switch (way) {
    case Way::Steps:
        do {
            sum += reader.level() != 0 ? reader.next() : -reader.next();
        } while (reader.advance());
        break;
    case Way::Blocks:
        for (SmpEdgeReader::Block block = reader.block(); block.size() > 0; block = reader.block()) {
            int level = reader.level();
            for (int i = 0; i < block.size(); ++i, level ^= 1) {
                sum += level != 0 ? block.position(i) : -block.position(i);
            }
            reader.pass(block.size());
        }
        break;
    case Way::Skips: // to each next entry, as who does not want what lies between
        while (!reader.atEnd()) {
            sum += reader.level() != 0 ? reader.next() : -reader.next();
            reader.skipTo(reader.next());
        }
        break;
    }
    return sum;
}

void sequential(benchmark::State &state, Way way)
{
    const LongChannel channel(state.range(0), true);
    Least spent;
    Least yardstick;
    for (auto _ : state) {
        const double took = seconds([&] { benchmark::DoNotOptimize(readAll(channel.data, way)); });
        yardstick.add(seconds([&] {
            std::int64_t sum = 0;
            int level = 0;
            for (const std::int64_t pos : channel.flat) {
                sum += level != 0 ? pos : -pos;
                level ^= 1;
                benchmark::DoNotOptimize(sum); // one entry at a time, as a decoder has them
            }
        }));
        spent.add(took);
        state.SetIterationTime(took);
    }
    state.counters["nsPerEntry"] = spent.time() * 1e9 / double(channel.flat.size());
    state.counters["ratio"] = spent / yardstick; // to a loop over one flat array; at most 4
}

void queryAtEnd(benchmark::State &state)
{
    static const LongChannel channel(100000000, false);
    static const LongChannel shorter(10000000, true); // a tenth has three steps fewer, and a tenth of the memory
    const std::int64_t pos = channel.data.smpCount() - 5000;
    const auto query = [kind = state.range(0), pos] {
        SmpEdgeInfo info{};
        switch (kind) {
        case 0:
            benchmark::DoNotOptimize(channel.data.nextEdge(0, pos));
            break;
        case 1:
            benchmark::DoNotOptimize(channel.data.prevEdge(0, pos));
            break;
        default:
            benchmark::DoNotOptimize(channel.data.edgeNeighbours(0, pos, info));
        }
    };
    const auto search = [from = shorter.flat.back() - 5000] {
        std::int64_t wanted = from;
        benchmark::DoNotOptimize(wanted);
        auto found = std::upper_bound(shorter.flat.begin(), shorter.flat.end(), wanted);
        benchmark::DoNotOptimize(found);
    };
    const auto many = [](const auto &job) {
        for (int i = 0; i < 100'000; ++i) {
            job();
        }
    };
    Least spent;
    Least yardstick;
    for (auto _ : state) {
        spent.add(seconds([&] { many(query); }));
        yardstick.add(seconds([&] { many(search); }));
    }
    state.counters["nsPerQuery"] = spent.time() * 1e4;
    state.counters["ratio"] = spent / yardstick; // to a binary search in one flat array; at most 10
}

void memoryOfACapture(benchmark::State &state)
{
    double perEntry = 0;
    for (auto _ : state) {
        const std::int64_t before = memBudget.load();
        const LongChannel channel(state.range(0), false);
        perEntry = double(before - memBudget.load()) / double(channel.data.entryCount(0));
    }
    state.counters["bytesPerEntry"] = perEntry; // at most 5.1
}

/// The same capture into one store again and again, with a small one between: the first takes its memory from the
/// system, and so does each later one, since the small one gives it back.
void capturesInTurn(benchmark::State &state)
{
    std::vector<std::int32_t> widths(20000, 7);
    const auto fill = [&widths](SmpData &data, std::int64_t entries) {
        data.begin(0, 500000000, smpStreams::enabled(1));
        std::int64_t pos = 0;
        for (std::int64_t done = 0; done < entries; done += std::int64_t(widths.size())) {
            if (!data.addPulses(widths, 0, pos)) {
                std::abort();
            }
        }
        SmpWriter(data).setSmpCount(pos);
        data.finish(pos);
    };
    Least first;
    Least later;
    Least atOnce;
    for (auto _ : state) {
        SmpData data(1, 0);
        first.add(seconds([&] { fill(data, state.range(0)); }));
        atOnce.add(seconds([&] { fill(data, state.range(0)); })); // takes the memory of the one before
        fill(data, 20000);
        later.add(seconds([&] { fill(data, state.range(0)); }));
    }
    state.counters["firstNsPerEntry"] = first.time() * 1e9 / double(state.range(0));
    state.counters["ratio"] = later / first;        // at most 1.1
    state.counters["ratioAtOnce"] = atOnce / first; // below 1
}

void finishing(benchmark::State &state)
{
    for (auto _ : state) {
        LongChannel channel(state.range(0), false);
        const std::int64_t end = state.range(1) == 0 ? channel.data.smpCount() : 1000;
        channel.data.open();
        state.SetIterationTime(seconds([&] { channel.data.finish(end); }));
    }
}

} // namespace

BENCHMARK_CAPTURE(quiet, addRle16, decodeRle16)->UseManualTime();
BENCHMARK_CAPTURE(quiet, addRle32, decodeRle32)->UseManualTime();
BENCHMARK_CAPTURE(quiet, addBytes8, decodeBytes8)->UseManualTime();
BENCHMARK_CAPTURE(quiet, addSliced, decodeSliced)->UseManualTime();
BENCHMARK_CAPTURE(busy, addRle16, decodeRle16)->UseManualTime();
BENCHMARK_CAPTURE(busy, addRle32, decodeRle32)->UseManualTime();
BENCHMARK_CAPTURE(busy, addBytes8, decodeBytes8)->UseManualTime();
BENCHMARK_CAPTURE(busy, addSliced, decodeSliced)->UseManualTime();
BENCHMARK(line)->UseManualTime()->Arg(1000000)->Arg(10000000)->Arg(100000000);
BENCHMARK_CAPTURE(sequential, steps, Way::Steps)->UseManualTime()->Arg(20000000);
BENCHMARK_CAPTURE(sequential, blocks, Way::Blocks)->UseManualTime()->Arg(20000000);
BENCHMARK_CAPTURE(sequential, skips, Way::Skips)->UseManualTime()->Arg(20000000);
BENCHMARK(queryAtEnd)->Arg(0)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(memoryOfACapture)->Arg(12000000)->Iterations(1);
BENCHMARK(capturesInTurn)->Iterations(5)->Arg(20000000);
BENCHMARK(finishing)->UseManualTime()->Iterations(2)->Args({20000000, 0})->Args({20000000, 1});

int main(int argc, char **argv)
{
#ifdef __GLIBC__
    // The heap keeps what the vectors of the yardsticks give, as a store keeps the memory of the capture before for the
    // next one: else one of the two alone would pay for the system's clearing of pages.
    mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
    mallopt(M_MMAP_MAX, 0);
#endif
    memBudgetInit();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
