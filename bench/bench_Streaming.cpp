// What a capture of an instrument promises about speed and memory: the whole path from the bulk pipe to the closed
// store, with a source in memory that keeps no pace. The least times count: on a busy machine the ones disturbed least.

#include "acquisition/InterfaceDevCallback.h"
#include "acquisition/SmpCnvtStorage.h"
#include "acquisition/SmpCnvtTransfer.h"
#include "acquisition/SmpCtrlStorage.h"
#include "acquisition/SmpCtrlTransfer.h"
#include "acquisition/SmpHost.h"
#include "acquisition/SmpTransport.h"
#include "store/MemBudget.h"
#include "store/SmpStreams.h"
#include "store/SmpTrigCode.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstring>
#include <deque>
#include <limits>

namespace {

using smpStreams::Bytes;

constexpr std::int32_t chunkBytes = 1 << 20;
constexpr int channels = 16;
constexpr std::int64_t ampleMemory = std::int64_t(1) << 40;

template<class Job>
double seconds(const Job &job)
{
    const auto start = std::chrono::steady_clock::now();
    job();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

class Device final : public SmpDevice {
public:
    std::atomic<bool> stopped{false};
    SmpCaptureInfo info;
    int startDevice() override { return done; }
    int stopDevice() override
    {
        stopped = true;
        return done;
    }
    int bulkStart() override { return done; }
    int bulkStop() override { return done; }
    int readStatus(std::uint16_t &status) override
    {
        status = 0x00C5; // ended
        return done;
    }
    int readCaptureInfo(SmpCaptureInfo &out) override
    {
        out = info;
        return done;
    }
    int setReadWindow(std::uint32_t, std::uint32_t) override { return done; }
};

/// Brings `source` again and again, `total` bytes in all, with two buffers in its hands as a transport has.
class Bulk final : public SmpTransport {
public:
    Bulk(Device &device, const Bytes &source, std::int64_t total) : m_device(device), m_source(source), m_total(total)
    {}
    /// A place in the whole stream at which one byte is another one; -1 for none.
    std::int64_t pulseAt = -1;
    std::int64_t lowestBudget = ampleMemory;

    [[nodiscard]] bool isOpen() const override { return true; }
    void setCallback(InterfaceDevCallback * /*receiver*/) override {}
    void breakOffStream() override {}
    [[nodiscard]] int readStream(std::int32_t, InterfaceDevCallback &receiver) override
    {
        std::deque<SmpChunk> queued;
        queued.push_back(SmpChunk::take(chunkBytes));
        queued.push_back(SmpChunk::take(chunkBytes));
        receiver.onStart();
        for (std::int64_t at = 0; at < m_total && !m_device.stopped;) {
            SmpChunk chunk = std::move(queued.front());
            queued.pop_front();
            const auto length = std::size_t(std::min<std::int64_t>(chunkBytes, m_total - at));
            std::memcpy(chunk.bytes(), m_source.data() + std::size_t(at) % m_source.size(), length);
            if (pulseAt >= at && pulseAt < at + std::int64_t(length)) {
                chunk.bytes()[pulseAt - at] = 0xFF;
            }
            at += std::int64_t(length);
            receiver.onData(std::move(chunk), std::int32_t(length));
            queued.push_back(SmpChunk::take(chunkBytes));
            lowestBudget = std::min(lowestBudget, memBudget.load());
        }
        return runEnded;
    }

private:
    Device &m_device;
    const Bytes &m_source;
    std::int64_t m_total;
};

/// One capture of a quiet stream: a trigger comes after `waitBytes`, then the depth fills.
void streaming(benchmark::State &state, bool bytes8)
{
    constexpr std::int64_t waitBytes = std::int64_t(512) << 20;
    constexpr std::int64_t totalBytes = std::int64_t(1) << 30;
    memBudget = ampleMemory;
    const Bytes quiet(std::size_t(8) << 20, 0x00);
    const int chns = bytes8 ? 8 : channels;
    const std::int64_t samplesIn16Bytes = bytes8 ? 16 : 8;
    double best = std::numeric_limits<double>::max();
    std::int64_t worstMemory = 0;
    std::int64_t windowBytes = 0;
    for (auto _ : state) {
        SmpHost host;
        host.smpData = std::make_unique<SmpData>(chns, 0);
        SmpCnvtTransfer converter(host);
        SmpCtrlTransfer control(host, converter);
        Device device;
        Bulk bulk(device, quiet, totalBytes);
        bulk.pulseAt = waitBytes;
        bulk.setCallback(&control);
        SmpRunSettings settings;
        settings.bytes8 = bytes8;
        settings.frequency = 100000000;
        settings.depth = (totalBytes - waitBytes) / 16 * samplesIn16Bytes;
        settings.preTrig = settings.depth / 16;
        settings.enable.assign(std::size_t(chns), 1);
        settings.trig.assign(std::size_t(chns), 0);
        settings.trig[0] = smpTrigCode::risingEdge;
        windowBytes = settings.preTrig / samplesIn16Bytes * 16;
        const double took = seconds([&] {
            control.startRun(settings, device, bulk);
            control.join();
            converter.join();
        });
        if (host.smpData->smpCount() != settings.depth || host.smpSta != 5) {
            state.SkipWithError("not captured");
            return;
        }
        best = std::min(best, took);
        worstMemory = std::max(worstMemory, ampleMemory - bulk.lowestBudget);
        state.SetIterationTime(took);
    }
    const std::int64_t moved = totalBytes - windowBytes;     // what the run takes before the depth is reached
    state.counters["bytesPerSecond"] = double(moved) / best; // at least 4e8
    state.counters["chunksBesideWindow"] = double(worstMemory - windowBytes) / chunkBytes; // at most 8
}

/// Memory that holds one transition in each record, read back, against the converter alone over the same bytes.
void readBack(benchmark::State &state)
{
    constexpr std::size_t streamBytes = std::size_t(128) << 20;
    memBudget = ampleMemory;
    std::vector<smpStreams::Record> records(streamBytes / 16 * 5);
    std::uint32_t word = 0;
    for (std::size_t i = 0; i < records.size(); ++i) {
        word ^= std::uint32_t(1) << i % channels;
        records[i] = {word, std::uint8_t(1 + i % 100)};
    }
    const Bytes stream = smpStreams::rle16(records);
    double best = std::numeric_limits<double>::max();
    double yardstick = std::numeric_limits<double>::max();
    for (auto _ : state) {
        SmpHost host;
        host.smpData = std::make_unique<SmpData>(channels, 0);
        SmpCnvtStorage converter(host);
        SmpCtrlStorage control(host, converter);
        Device device;
        device.info = {std::uint32_t(records.size()), 1, std::uint32_t(stream.size())};
        Bulk bulk(device, stream, std::int64_t(stream.size()));
        bulk.setCallback(&control);
        SmpRunSettings settings;
        settings.frequency = 100000000;
        settings.depth = std::int64_t(1) << 40;
        settings.memSize = std::int32_t(stream.size());
        settings.enable.assign(channels, 1);
        const double took = seconds([&] {
            control.startRun(settings, device, bulk);
            control.join();
            converter.join();
        });
        if (host.smpData->entryCount(0) < 1 || host.smpSta != 5) {
            state.SkipWithError("not read back");
            return;
        }
        best = std::min(best, took);
        state.SetIterationTime(took);
        yardstick = std::min(yardstick, seconds([&] {
                                 host.smpData->begin(1, settings.frequency, settings.enable);
                                 std::uint32_t consumed = 0;
                                 for (std::size_t at = 0; at < stream.size(); at += chunkBytes) {
                                     if (!host.smpData->addRle16(std::span(stream).subspan(at, chunkBytes), consumed)) {
                                         state.SkipWithError("not converted");
                                         return;
                                     }
                                 }
                                 host.smpData->finish(settings.depth);
                             }));
    }
    state.counters["bytesPerSecond"] = double(stream.size()) / best;
    state.counters["ratio"] = best / yardstick; // to the converter alone; at most 1.3
}

} // namespace

BENCHMARK_CAPTURE(streaming, slices, false)->UseManualTime();
BENCHMARK_CAPTURE(streaming, bytes8, true)->UseManualTime();
BENCHMARK(readBack)->UseManualTime()->Iterations(5);

BENCHMARK_MAIN();
