// What every decoder of the build promises about speed, on some 20 million edges of its own simulated traffic, alone
// and two at once.

#include "support/PluginChecks.h"
#include "support/PluginFiles.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <ctime>
#include <limits>
#include <memory>
#include <string>
#include <thread>

namespace {

constexpr std::int64_t edgesWanted = 20000000;
constexpr std::int64_t leastRate = 100000000;
constexpr int rounds = 4; ///< the first one also pays for memory that the process did not have yet

/// Processor time, so that what else runs on the machine does not count.
template<class Job>
double seconds(const Job &job)
{
    const std::clock_t start = std::clock();
    job();
    return double(std::clock() - start) / CLOCKS_PER_SEC;
}

/// The same of the calling thread alone.
template<class Job>
double threadSeconds(const Job &job)
{
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return double(time.tv_sec) + double(time.tv_nsec) * 1e-9;
    };
    const double start = now();
    job();
    return now() - start;
}

std::unique_ptr<DecodeDesk> connected(const PluginFile &plugin)
{
    auto desk = std::make_unique<DecodeDesk>(plugin.make());
    pluginChecks::connectChannels(*desk->analyzer);
    return desk;
}

struct Traffic {
    std::unique_ptr<TestCapture> capture;
    std::int64_t edges = 0;
};

/// The decoder's simulation for so many samples.
Traffic simulated(const PluginFile &plugin, std::int64_t samples)
{
    const auto desk = connected(plugin);
    const std::int64_t rate = std::max<std::int64_t>(4 * std::int64_t(desk->analyzer->NeededSampleRate()), leastRate);
    Traffic made;
    made.capture = desk->simulate(rate, samples, samples / 16 + 1);
    for (std::uint32_t channel = 0; channel < 64; ++channel) {
        if (const SmpEdgeRoot *root = made.capture->root(channel); root != nullptr) {
            lux::detail::RunControl control;
            made.edges += lux::ChannelReader(root, control, made.capture->device().smpCount).edgesLeft();
        }
    }
    return made;
}

/// Some of it tells how dense it is.
Traffic ownTraffic(const PluginFile &plugin)
{
    constexpr std::int64_t longest = std::int64_t(1) << 39;
    std::int64_t samples = leastRate / 100;
    Traffic made = simulated(plugin, samples);
    while (made.edges < edgesWanted / 2 && samples < longest) {
        const std::int64_t factor = made.edges < 1000 ? 16 : edgesWanted / made.edges + 1;
        samples = std::min(longest, samples * std::min<std::int64_t>(factor, 256));
        made = simulated(plugin, samples);
    }
    return made;
}

void decode(benchmark::State &state, const PluginFile &plugin)
{
    const Traffic traffic = ownTraffic(plugin);
    double least = std::numeric_limits<double>::max();
    std::uint64_t frames = 0;
    for (auto _ : state) {
        const auto desk = connected(plugin);
        least = std::min(least, seconds([&] { desk->run(*traffic.capture); }));
        frames = desk->results().GetNumFrames();
    }
    state.counters["edges/s"] = double(traffic.edges) / least;
    state.counters["edges"] = double(traffic.edges);
    state.counters["frames"] = double(frames);
    state.counters["ms"] = least * 1e3;
}

/// Two workers on threads of their own, by the time of one: 2 were twice the work in the same time. Processor time of
/// the slower one counts, which has what they take from each other: caches, memory, and the system's locks.
void twoAtOnce(benchmark::State &state, const PluginFile &plugin)
{
    const Traffic traffic = ownTraffic(plugin);
    double one = std::numeric_limits<double>::max();
    double two = one;
    for (auto _ : state) {
        auto alone = connected(plugin);
        one = std::min(one, threadSeconds([&] { alone->run(*traffic.capture); }));
        alone.reset();
        const auto first = connected(plugin);
        const auto second = connected(plugin);
        double otherTime = 0;
        std::thread other([&] { otherTime = threadSeconds([&] { second->run(*traffic.capture); }); });
        const double time = threadSeconds([&] { first->run(*traffic.capture); });
        other.join();
        two = std::min(two, std::max(time, otherTime));
    }
    state.counters["times one"] = 2 * one / two;
    state.counters["ms"] = two * 1e3;
}

} // namespace

int main(int argc, char **argv)
{
    const std::vector<PluginFile> plugins = pluginsIn(QStringLiteral(LUX_PLUGIN_FOLDER));
    for (const PluginFile &plugin : plugins) {
        benchmark::RegisterBenchmark(("decode/" + plugin.name).c_str(),
                                     [&plugin](benchmark::State &state) { decode(state, plugin); })
            ->Unit(benchmark::kMillisecond)
            ->Iterations(rounds);
    }
    for (const PluginFile &plugin : plugins) {
        if (plugin.name == "SPI" || plugin.name == "UART") {
            benchmark::RegisterBenchmark(("twoAtOnce/" + plugin.name).c_str(),
                                         [&plugin](benchmark::State &state) { twoAtOnce(state, plugin); })
                ->Unit(benchmark::kMillisecond)
                ->Iterations(rounds);
        }
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
