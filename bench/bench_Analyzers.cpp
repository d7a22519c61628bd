// How long the main thread waits for decoders: at the start of the program, which loads them, and while one with ten
// million frames is started, stopped, restarted and removed.

#include "analyzer/AnalyzerManager.h"
#include "store/MemBudget.h"
#include "store/SmpData.h"
#include "support/CaptureBuilder.h"

#include <QCoreApplication>
#include <QEventLoop>

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <corvanlux/analyzer/Decoder.h>
#include <memory>
#include <thread>

namespace {

constexpr std::int64_t frameCount = 10000000;

/// Milliseconds that pass meanwhile.
template<class Job>
double wait(const Job &job)
{
    const auto start = std::chrono::steady_clock::now();
    job();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

class EdgeSettings final : public lux::Settings {
public:
    lux::ChannelSetting line{*this, "line", "Line", ""};
};

class EdgeResults final : public lux::Results {
public:
    explicit EdgeResults(const EdgeSettings & /*settings*/) {}

protected:
    void describe(const FrameData & /*frame*/, lux::FrameText & /*out*/) const override {}
    void values(const FrameData & /*frame*/, lux::FrameValues & /*out*/) const override {}
};

/// A frame and a marker for each edge.
class EdgeAnalyzer final : public lux::Decoder<EdgeSettings, EdgeResults> {
public:
    EdgeAnalyzer() : Decoder("Edges") { m_settings.LoadText("line=0"); }

protected:
    void decode() override
    {
        lux::ChannelReader &line = reader(m_settings.line);
        for (;;) {
            const lux::Sample at = line.nextEdge();
            results().mark(m_settings.line, at, MarkerType::Dot);
            results().add({.firstSample = at, .lastSample = at + 5});
        }
    }
};

AnalyzerHost hostOfNothing()
{
    AnalyzerHost host;
    host.stored = [] { return QString(); };
    host.store = [](const QList<QStringList> &) {};
    return host;
}

/// The first scan of the process: files and libraries are loaded only then.
void loadAllPlugins(benchmark::State &state)
{
    for (auto _ : state) {
        std::unique_ptr<AnalyzerManager> none;
        const double without =
            wait([&none] { none = std::make_unique<AnalyzerManager>(hostOfNothing(), QStringList(), QString()); });
        std::unique_ptr<AnalyzerManager> all;
        const double with = wait([&all] {
            all = std::make_unique<AnalyzerManager>(hostOfNothing(), QStringList(QStringLiteral(LUX_PLUGIN_FOLDER)),
                                                    QString());
        });
        state.SetIterationTime((with - without) * 1e-3);
        state.counters["plugins"] = double(all->foundLibraries().size());
    }
}
BENCHMARK(loadAllPlugins)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);

void finish(const AnalyzerManager &manager)
{
    while (manager.isWorkerRunning(0)) {
        QCoreApplication::processEvents(QEventLoop::AllEvents);
        std::this_thread::yield();
    }
}

void decodeSome(const AnalyzerManager &manager, std::uint64_t frames)
{
    AnalyzerResults *results = nullptr;
    manager.analyzerAt(0)->GetAnalyzerResults(&results);
    while (results->GetNumFrames() < frames) {
        std::this_thread::yield();
    }
}

/// The longest of some tries each.
void waitsWithTenMillionFrames(benchmark::State &state)
{
    SmpData capture(8, 0);
    CaptureBuilder{.samples = (frameCount + 1) * 10, .period = 10}.fill(capture);
    AnalyzerManager manager(hostOfNothing(), {QStringLiteral(LUX_PLUGIN_FOLDER)}, QString());
    manager.setCapture(&capture, 0);
    manager.addLibIndex = 0;
    double start = 0;
    double stop = 0;
    double restart = 0;
    double remove = 0;
    for (auto _ : state) {
        start = std::max(start, wait([&manager] { manager.addAnalyzer(new EdgeAnalyzer); }));
        finish(manager);
        start = std::max(start, wait([&manager] { manager.captureReady(); }));
        decodeSome(manager, frameCount / 2);
        stop = std::max(stop, wait([&manager] { manager.stopWorker(0); }));
        manager.startAnalyzer(0);
        finish(manager);
        restart = std::max(restart, wait([&manager] { manager.restartAnalyzer(0); }));
        finish(manager);
        remove = std::max(remove, wait([&manager] { manager.removeAnalyzer(0); }));
    }
    manager.setCapture(nullptr, 0);
    state.counters["start ms"] = start;
    state.counters["stop ms"] = stop;
    state.counters["restart ms"] = restart;
    state.counters["remove ms"] = remove;
}
BENCHMARK(waitsWithTenMillionFrames)->Iterations(5)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    memBudgetInit();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
