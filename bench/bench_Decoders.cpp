// What the decoders promise about speed: edges of all their channels a second, on 20 million edges of their own traffic
// and on noise. The plug-ins are loaded as the program loads them.

#include "DecoderTraffic.h"
#include "support/DecodeDesk.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <dlfcn.h>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr std::int64_t edgesWanted = 20000000;
constexpr int rounds = 4; ///< the first one also pays for memory that the process did not have yet

/// Processor time, so that what else runs on the machine does not count.
template<class Job>
double seconds(const Job &job)
{
    const std::clock_t start = std::clock();
    job();
    return double(std::clock() - start) / CLOCKS_PER_SEC;
}

/// The plug-in stays loaded.
std::unique_ptr<Analyzer> makeDecoder(const char *plugin)
{
    void *file = dlopen(plugin, RTLD_NOW);
    auto *create = file == nullptr ? nullptr : reinterpret_cast<Analyzer *(*)()>(dlsym(file, "CreateAnalyzer"));
    if (create == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        std::exit(1);
    }
    return std::unique_ptr<Analyzer>(create());
}

struct Protocol {
    const char *plugin;
    const char *settings;
    std::vector<bool> idleLevels;
    void (*add)(Traffic &);
};

const Protocol uart{LUX_PLUGIN_UART, "rx=0,baudrate=10000000", {true}, addUart};
const Protocol spi{LUX_PLUGIN_SPI, "clk=0,mosi=1,miso=2,cs=3", {false, false, false, true}, addSpi};
const Protocol i2c{LUX_PLUGIN_I2C, "scl=0,sda=1", {true, true}, addI2c};

void measure(benchmark::State &state, const Protocol &protocol, TestCapture &capture, std::int64_t edges)
{
    double least = std::numeric_limits<double>::max();
    std::uint64_t frames = 0;
    for (auto _ : state) {
        DecodeDesk desk(makeDecoder(protocol.plugin), protocol.settings);
        least = std::min(least, seconds([&] { desk.run(capture); }));
        frames = desk.results().GetNumFrames();
    }
    state.counters["edges/s"] = double(edges) / least;
    state.counters["frames"] = double(frames);
    state.counters["ms"] = least * 1e3;
}

void ownTraffic(benchmark::State &state, const Protocol &protocol)
{
    Traffic traffic(protocol.idleLevels);
    while (traffic.edges < edgesWanted) {
        protocol.add(traffic);
    }
    measure(state, protocol, *traffic.capture(), traffic.edges);
}

/// Edges at random distances on all lines.
void noise(benchmark::State &state, const Protocol &protocol)
{
    Traffic traffic(protocol.idleLevels);
    std::vector<bool> level = protocol.idleLevels;
    while (traffic.edges < edgesWanted) {
        const std::size_t line = traffic.random() % level.size();
        traffic.set(line, level[line] = !level[line]);
        traffic.wait(1 + traffic.random() % 8);
    }
    measure(state, protocol, *traffic.capture(), traffic.edges);
}

/// Ten thousand million samples with a burst at each end.
void quiet(benchmark::State &state, const Protocol &protocol)
{
    Traffic traffic(protocol.idleLevels);
    protocol.add(traffic);
    traffic.set(0, protocol.idleLevels[0]);
    traffic.wait(10000000000);
    protocol.add(traffic);
    measure(state, protocol, *traffic.capture(), traffic.edges);
}

/// 200 million samples with two million characters.
void uartOfTwoSeconds(benchmark::State &state)
{
    Traffic traffic(uart.idleLevels);
    for (int i = 0; i < 2000000; ++i) {
        addUart(traffic);
    }
    measure(state, uart, *traffic.capture(200000000), traffic.edges);
}

/// 100 million samples with a million bytes.
void spiOfOneSecond(benchmark::State &state)
{
    Traffic traffic(spi.idleLevels);
    for (int i = 0; i < 1000000 / 8; ++i) {
        addSpi(traffic);
    }
    measure(state, spi, *traffic.capture(100000000), traffic.edges);
}

/// The search alone: the rest of the capture is quiet.
void autoRate(benchmark::State &state)
{
    Protocol automatic = uart;
    automatic.settings = "rx=0,baudrate=0";
    Traffic traffic(uart.idleLevels);
    for (int i = 0; i < 10000; ++i) {
        addUart(traffic);
    }
    measure(state, automatic, *traffic.capture(), traffic.edges);
}

BENCHMARK_CAPTURE(ownTraffic, uart, uart)->Unit(benchmark::kMillisecond)->Iterations(rounds);
BENCHMARK_CAPTURE(ownTraffic, spi, spi)->Unit(benchmark::kMillisecond)->Iterations(rounds);
BENCHMARK_CAPTURE(ownTraffic, i2c, i2c)->Unit(benchmark::kMillisecond)->Iterations(rounds);
BENCHMARK_CAPTURE(noise, uart, uart)->Unit(benchmark::kMillisecond)->Iterations(rounds);
BENCHMARK_CAPTURE(noise, spi, spi)->Unit(benchmark::kMillisecond)->Iterations(rounds);
BENCHMARK_CAPTURE(noise, i2c, i2c)->Unit(benchmark::kMillisecond)->Iterations(rounds);
BENCHMARK_CAPTURE(quiet, uart, uart)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(quiet, spi, spi)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(quiet, i2c, i2c)->Unit(benchmark::kMillisecond);
BENCHMARK(uartOfTwoSeconds)->Unit(benchmark::kMillisecond)->Iterations(rounds);
BENCHMARK(spiOfOneSecond)->Unit(benchmark::kMillisecond)->Iterations(rounds);
BENCHMARK(autoRate)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
