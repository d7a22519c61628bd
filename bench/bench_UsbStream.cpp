// What a streaming capture reads through the real libusb, by what a bare loop of libusb reads from the same instrument:
// an emulated one behind a node of umockdev. Both in one run; the least times count.

#include "acquisition/SmpCnvtTransfer.h"
#include "acquisition/SmpCtrlTransfer.h"
#include "acquisition/SmpDevice.h"
#include "acquisition/SmpHost.h"
#include "device/UsbPlatformLibusb.h"
#include "device/UsbTransport.h"
#include "emulator/Bench.h"
#include "store/MemBudget.h"
#include "support/UmockdevBus.h"

#include <QCoreApplication>

#include <algorithm>
#include <array>
#include <benchmark/benchmark.h>
#include <chrono>
#include <libusb.h>
#include <limits>
#include <thread>

namespace {

constexpr int model = 5;
constexpr int channels = 16;
constexpr std::int64_t rate = 16'000'000; // the model's fastest with all channels
constexpr std::int64_t ampleMemory = std::int64_t(1) << 40;
constexpr std::uint8_t toDevice = 0x40;
constexpr std::uint8_t bulkIn = 0x86;
constexpr std::uint8_t requestRun = 0x20;
constexpr std::uint8_t requestBulkStart = 0x30;
constexpr std::uint8_t requestBulkStop = 0x38;

template<class Job>
double seconds(const Job &job)
{
    const auto start = std::chrono::steady_clock::now();
    job();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Asks until the answer is true, as a device that has been plugged in takes a moment to be told. @return the answer
template<class Ask>
bool waitFor(const Ask &ask)
{
    using namespace std::chrono_literals;
    const auto until = std::chrono::steady_clock::now() + 10s;
    bool answer = ask();
    while (!answer && std::chrono::steady_clock::now() < until) {
        std::this_thread::sleep_for(1ms);
        answer = ask();
    }
    return answer;
}

/// The requests of a streaming run.
class Device final : public SmpDevice {
public:
    explicit Device(UsbTransport &transport) : m_transport(transport) {}
    int startDevice() override { return run(3); }
    int stopDevice() override
    {
        const int result = run(0);
        return result == done ? bulkStop() : result;
    }
    int bulkStart() override { return m_transport.controlOut(requestBulkStart, 0, 0, {}); }
    int bulkStop() override { return m_transport.controlOut(requestBulkStop, 0, 0, {}); }
    int readStatus(std::uint16_t &) override { return transferFailed; }
    int readCaptureInfo(SmpCaptureInfo &) override { return transferFailed; }
    int setReadWindow(std::uint32_t, std::uint32_t) override { return transferFailed; }

private:
    int run(std::uint8_t on)
    {
        const std::array<std::uint8_t, 1> data{on};
        return m_transport.controlOut(requestRun, 0, 0, data);
    }
    UsbTransport &m_transport;
};

/// A bus with one instrument that has its FPGA and is about to stream a quiet signal.
struct Face {
    explicit Face(double pace)
    {
        emulator::InstrumentOptions options;
        options.model = model;
        options.pace = pace;
        options.firmwareInside = true;
        bus.add(options);
        good = bus.with([](emulator::Instrument &device) {
            const auto divider = std::uint16_t(std::int64_t(device.model().clockMhz) * 1'000'000 / rate);
            return bench::bringUp(device) && bench::configure(device, {.divider = divider});
        });
        bus.plug();
    }
    UmockdevBus bus;
    bool good = false;
};

/// A capture of `bytes` from the plugged instrument. @return false unless all came
bool capture(std::int64_t bytes, double &took)
{
    UsbTransport transport(makeUsbPlatformLibusb());
    if (!waitFor([&transport] { return transport.refresh() == 1; })) {
        return false;
    }
    transport.tuneChunkSize(rate * channels);
    Device device(transport);
    SmpHost host;
    host.smpData = std::make_unique<SmpData>(channels, 0);
    SmpCnvtTransfer converter(host);
    SmpCtrlTransfer control(host, converter);
    transport.setCallback(&control);
    SmpRunSettings settings;
    settings.frequency = rate;
    settings.depth = bytes / (2 * channels) * 16;
    settings.enable.assign(channels, 1);
    settings.trig.assign(channels, 0);
    took = seconds([&] {
        control.startRun(settings, device, transport);
        control.join();
        converter.join();
    });
    return host.smpSta == 5 && host.smpData->smpCount() == settings.depth;
}

/// The bare loop: two transfers of the size that the capture chooses, sent again as soon as they come.
struct Bare {
    std::int64_t left = 0;
    int pending = 0;
    bool good = true;

    static void LIBUSB_CALL ended(libusb_transfer *transfer)
    {
        Bare &self = *static_cast<Bare *>(transfer->user_data);
        self.good = self.good && (transfer->status == LIBUSB_TRANSFER_COMPLETED || self.left <= 0);
        self.left -= transfer->actual_length;
        --self.pending;
        if (self.good && self.left > 0) {
            self.good = libusb_submit_transfer(transfer) == 0;
            self.pending += self.good ? 1 : 0;
        }
    }
};

int request(libusb_device_handle *handle, std::uint8_t number, std::vector<std::uint8_t> data = {})
{
    constexpr unsigned timeout = 2000;
    return libusb_control_transfer(handle, toDevice, number, 0, 0, data.data(), std::uint16_t(data.size()), timeout);
}

/// @return null if there is none
libusb_device_handle *openInstrument(libusb_context *context)
{
    libusb_device **list = nullptr;
    const ssize_t count = libusb_get_device_list(context, &list);
    libusb_device_handle *handle = nullptr;
    for (ssize_t i = 0; i < count && handle == nullptr; ++i) {
        libusb_device_descriptor descriptor{};
        if (libusb_get_device_descriptor(list[i], &descriptor) == 0 && descriptor.idVendor == emulator::vendorId) {
            (void)libusb_open(list[i], &handle);
        }
    }
    libusb_free_device_list(list, 1);
    return handle;
}

/// Reads `bytes` with libusb alone. @return false unless all came
bool readBare(std::int64_t bytes, double &took)
{
    libusb_context *context = nullptr;
    if (libusb_init(&context) != 0) {
        return false;
    }
    libusb_device_handle *handle = nullptr;
    (void)waitFor([&] { return (handle = openInstrument(context)) != nullptr; });
    Bare bare;
    bare.left = bytes;
    bare.good = handle != nullptr && libusb_claim_interface(handle, 0) == 0;
    const std::int32_t size = usbChunkSize(rate * channels);
    std::array<std::vector<std::uint8_t>, 2> buffers;
    std::array<libusb_transfer *, 2> transfers{};
    took = seconds([&] {
        for (std::size_t i = 0; i < transfers.size() && bare.good; ++i) {
            buffers[i].resize(std::size_t(size));
            transfers[i] = libusb_alloc_transfer(0);
            libusb_fill_bulk_transfer(transfers[i], handle, bulkIn, buffers[i].data(), size, Bare::ended, &bare, 0);
            bare.good = libusb_submit_transfer(transfers[i]) == 0;
            bare.pending += bare.good ? 1 : 0;
        }
        bare.good = bare.good && request(handle, requestRun, {3}) == 1 && request(handle, requestBulkStart) == 0;
        while (bare.good && bare.left > 0) {
            libusb_handle_events(context);
        }
    });
    const bool good = bare.good;
    for (libusb_transfer *transfer : transfers) {
        if (transfer != nullptr) {
            (void)libusb_cancel_transfer(transfer);
        }
    }
    while (bare.pending > 0) {
        libusb_handle_events(context);
    }
    std::for_each(transfers.begin(), transfers.end(), libusb_free_transfer);
    if (handle != nullptr) {
        (void)request(handle, requestRun, {0});
        (void)request(handle, requestBulkStop);
        (void)request(handle, requestBulkStop);
        libusb_release_interface(handle, 0);
        libusb_close(handle);
    }
    libusb_exit(context);
    return good;
}

/// As fast as the face brings it.
void unpaced(benchmark::State &state)
{
    constexpr std::int64_t bytes = std::int64_t(256) << 20;
    memBudget = ampleMemory;
    double best = std::numeric_limits<double>::max();
    double bestBare = best;
    for (auto _ : state) {
        Face face(0);
        double took = 0;
        double bare = 0;
        if (!face.good || !readBare(bytes, bare) || !capture(bytes, took)) {
            state.SkipWithError("not captured");
            return;
        }
        best = std::min(best, took);
        bestBare = std::min(bestBare, bare);
        state.SetIterationTime(took);
    }
    state.counters["bytesPerSecond"] = double(bytes) / best;
    state.counters["bareBytesPerSecond"] = double(bytes) / bestBare;
    state.counters["ratio"] = bestBare / best; // at least 0.5
}

/// At the pace of the model's fastest rate: a face without a pace would fill both reads before the first one is seen.
void atItsOwnPace(benchmark::State &state)
{
    constexpr std::int64_t bytes = std::int64_t(64) << 20;
    memBudget = ampleMemory;
    int fewest = std::numeric_limits<int>::max();
    for (auto _ : state) {
        Face face(1);
        double took = 0;
        if (!face.good || !capture(bytes, took)) {
            state.SkipWithError("not captured");
            return;
        }
        fewest = std::min(fewest, face.bus.fewestReadsLeft());
        state.SetIterationTime(took);
    }
    state.counters["readsPendingAtCompletion"] = fewest; // at least 1
}

} // namespace

BENCHMARK(unpaced)->UseManualTime()->Iterations(20)->Unit(benchmark::kMillisecond);
BENCHMARK(atItsOwnPace)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    if (!UmockdevBus::enter(argv)) {
        return 1;
    }
    QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
