// What every decoder of the build promises about speed: on some 20 million edges of its own simulated traffic, alone
// and two at once, on noise, on a long quiet capture, and where it has to find the rate.

#include "support/PluginChecks.h"
#include "support/PluginFiles.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <ctime>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

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
Traffic ownTraffic(const PluginFile &plugin, std::int64_t wanted = edgesWanted)
{
    constexpr std::int64_t longest = std::int64_t(1) << 39;
    std::int64_t samples = leastRate / 100;
    Traffic made = simulated(plugin, samples);
    while (made.edges < wanted / 2 && samples < longest) {
        const std::int64_t factor = made.edges < 1000 ? 16 : wanted / made.edges + 1;
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

/// Settings of a decoder: keys and values.
using Wishes = std::vector<std::pair<std::string, std::string>>;

/// What the decoder finds out by itself in this capture, as settings.
Wishes foundIn(const PluginFile &plugin, TestCapture &capture)
{
    struct Finding {
        std::string told;
        std::vector<std::string> keys; ///< the decoder has one of them
    };
    static const std::vector<Finding> findings = {{"\nBit rate found: ", {"baudrate", "bitrate"}},
                                                  {"\nData bit rate found: ", {"data_baudrate"}},
                                                  {"\nSpeed found: ", {"speed"}}};
    const auto desk = connected(plugin);
    const std::string told = '\n' + desk->run(capture).message();
    Wishes wishes;
    for (const Finding &finding : findings) {
        const std::size_t at = told.find(finding.told);
        if (at == std::string::npos)
            continue;
        const std::size_t from = at + finding.told.size();
        const std::string value = told.substr(from, told.find_first_of(" \n", from) - from);
        for (const std::string &key : finding.keys) {
            if (desk->edit({{key, value}}).empty())
                wishes.emplace_back(key, value);
        }
    }
    return wishes;
}

/// Seconds of processor time, the least of some runs.
double leastSeconds(const PluginFile &plugin, TestCapture &capture, const Wishes &wishes = {})
{
    double least = std::numeric_limits<double>::max();
    for (int i = 0; i < rounds; ++i) {
        const auto desk = connected(plugin);
        desk->edit(wishes);
        least = std::min(least, seconds([&] { desk->run(capture); }));
    }
    return least;
}

/// The positions of a channel's edges.
std::vector<std::int64_t> edgesOf(const SmpEdgeRoot &root, std::int64_t samples)
{
    std::vector<std::int64_t> edges;
    for (int i = 0; i < root.midCount; ++i) {
        for (int k = 0; k < root.mids[i]->leafCount; ++k) {
            const SmpEdgeLeaf &leaf = *root.mids[i]->leaves[k];
            for (int n = 0; n < leaf.count; ++n)
                edges.push_back(leaf.position(n));
        }
    }
    if (!edges.empty() && edges.back() >= samples)
        edges.pop_back(); // the end mark
    return edges;
}

/// Edges on the lines of `like`, one at a time and `mean` samples apart on average.
Traffic noiseLike(const TestCapture &like, std::int64_t edges, std::int64_t mean)
{
    std::vector<std::uint32_t> lines;
    for (std::uint32_t channel = 0; channel < 64; ++channel) {
        if (like.root(channel) != nullptr)
            lines.push_back(channel);
    }
    std::mt19937_64 random(1);
    std::vector<std::vector<std::int64_t>> positions(lines.size());
    std::int64_t at = 0;
    for (std::int64_t i = 0; i < edges; ++i) {
        at += 1 + std::int64_t(random() % std::uint64_t(2 * mean));
        positions[random() % lines.size()].push_back(at);
    }
    Traffic made;
    made.edges = edges;
    made.capture = std::make_unique<TestCapture>(const_cast<TestCapture &>(like).device().smpFrequ, at + 2, 64);
    for (std::size_t i = 0; i < lines.size(); ++i)
        made.capture->channel(lines[i], like.root(lines[i])->startLevel != 0, positions[i]);
    return made;
}

/// Samples from edge to edge within a capture's traffic, on average: without its pauses.
std::int64_t meanDistance(const TestCapture &capture, std::int64_t samples)
{
    constexpr std::int64_t pause = 64; ///< a distance of more than so many of the usual one is none
    std::vector<std::int64_t> edges;
    for (std::uint32_t channel = 0; channel < 64; ++channel) {
        if (const SmpEdgeRoot *root = capture.root(channel); root != nullptr) {
            const std::vector<std::int64_t> own = edgesOf(*root, samples);
            edges.insert(edges.end(), own.begin(), own.end());
        }
    }
    std::sort(edges.begin(), edges.end());
    std::vector<std::int64_t> distances;
    for (std::size_t i = 1; i < edges.size(); ++i)
        distances.push_back(edges[i] - edges[i - 1]);
    if (distances.empty())
        return 1;
    const auto middle = distances.begin() + std::ptrdiff_t(distances.size() / 2);
    std::nth_element(distances.begin(), middle, distances.end());
    const std::int64_t longest = pause * std::max<std::int64_t>(*middle, 1);
    std::int64_t sum = 0;
    std::int64_t count = 0;
    for (const std::int64_t distance : distances) {
        sum += distance <= longest ? distance : 0;
        count += distance <= longest ? 1 : 0;
    }
    return std::max<std::int64_t>(sum / count, 1);
}

/// Noise as dense as the decoder's own traffic, eight times as dense, and an eighth: the speed by that for the traffic.
/// A line with few edges is quick to read whatever is made of each of them, so that there the samples a second count.
/// Rates are those that the decoder finds in its traffic: in noise it would find none, and give up, or one that fits.
void noise(benchmark::State &state, const PluginFile &plugin)
{
    constexpr std::int64_t edges = 2000000;
    constexpr std::int64_t denser = 8;
    const Traffic own = ownTraffic(plugin, edges);
    const std::int64_t mean = meanDistance(*own.capture, own.capture->device().smpCount);
    const Wishes wishes = foundIn(plugin, *own.capture);
    const auto ratio = [&](std::int64_t distance, bool bySamples, double usual) {
        const Traffic made = noiseLike(*own.capture, edges, distance);
        const double size = double(made.edges) / double(own.edges) * (bySamples ? double(distance) / double(mean) : 1);
        return usual * size / leastSeconds(plugin, *made.capture, wishes);
    };
    for (auto _ : state) {
        const double usual = leastSeconds(plugin, *own.capture, wishes);
        state.counters["edges/s"] = double(own.edges) / usual;
        state.counters["as dense"] = ratio(mean, false, usual);
        state.counters["denser"] = ratio(std::max<std::int64_t>(mean / denser, 1), false, usual);
        state.counters["sparser"] = ratio(mean * denser, true, usual);
    }
}

/// Ten thousand million samples with a burst of the decoder's own traffic at each end.
void quiet(benchmark::State &state, const PluginFile &plugin)
{
    constexpr std::int64_t samples = 10000000000;
    constexpr std::int64_t edges = 2000;
    const Traffic burst = ownTraffic(plugin, edges);
    const std::int64_t length = burst.capture->device().smpCount;
    TestCapture capture(burst.capture->device().smpFrequ, samples, 64);
    for (std::uint32_t channel = 0; channel < 64; ++channel) {
        const SmpEdgeRoot *root = burst.capture->root(channel);
        if (root == nullptr)
            continue;
        std::vector<std::int64_t> positions = edgesOf(*root, length);
        if (positions.size() % 2 != 0)
            positions.pop_back(); // idle between the bursts
        const std::size_t count = positions.size();
        for (std::size_t i = 0; i < count; ++i)
            positions.push_back(positions[i] + samples - length);
        capture.channel(channel, root->startLevel != 0, positions);
    }
    for (auto _ : state)
        state.counters["ms"] = leastSeconds(plugin, capture) * 1e3;
    state.counters["edges"] = double(2 * burst.edges);
}

/// Decoders that find the rate or the form by themselves: a short capture, of which the search is the most.
void autoRate(benchmark::State &state, const PluginFile &plugin)
{
    constexpr std::int64_t edges = 20000;
    const Traffic traffic = ownTraffic(plugin, edges);
    double least = std::numeric_limits<double>::max();
    std::uint64_t frames = 0;
    for (auto _ : state) {
        for (int i = 0; i < rounds; ++i) {
            const auto desk = connected(plugin);
            if (plugin.name == "DMX512")
                desk->edit({{"baudrate", "0"}}); // the others have it so
            least = std::min(least, seconds([&] { desk->run(*traffic.capture); }));
            frames = desk->results().GetNumFrames();
        }
    }
    state.counters["ms"] = least * 1e3;
    state.counters["edges"] = double(traffic.edges);
    state.counters["frames"] = double(frames);
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
    const auto add = [&plugins](const char *kind, auto *measure, int iterations, const std::vector<std::string> &only) {
        for (const PluginFile &plugin : plugins) {
            if (!only.empty() && std::find(only.begin(), only.end(), plugin.name) == only.end())
                continue;
            benchmark::RegisterBenchmark((kind + ('/' + plugin.name)).c_str(),
                                         [&plugin, measure](benchmark::State &state) { measure(state, plugin); })
                ->Unit(benchmark::kMillisecond)
                ->Iterations(iterations);
        }
    };
    add("decode", &decode, rounds, {});
    add("noise", &noise, 1, {});
    add("quiet", &quiet, 1, {});
    add("autoRate", &autoRate, 1, {"CAN", "DMX512", "IRNEC", "LIN", "Manchester", "UART"});
    add("twoAtOnce", &twoAtOnce, rounds, {"SPI", "UART"});
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
