// How long the main thread waits for decoders: at the start of the program, which loads them, and while one with ten
// million frames is started, stopped, restarted and removed.

#include "analyzer/AnalyzerManager.h"
#include "store/MemBudget.h"
#include "store/SmpData.h"
#include "support/CaptureBuilder.h"

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <algorithm>
#include <array>
#include <benchmark/benchmark.h>
#include <chrono>
#include <corvanlux/analyzer/Decoder.h>
#include <ctime>
#include <dlfcn.h>
#include <memory>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

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

/// Milliseconds of processor time of this thread, which other work on the machine does not lengthen.
template<class Job>
double work(const Job &job)
{
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return double(time.tv_sec) * 1e3 + double(time.tv_nsec) * 1e-6;
    };
    const double start = now();
    job();
    return now() - start;
}

/// The most that one plug-in takes until it has told its name. In a process of its own: here they are not to be loaded
/// yet.
double slowestPlugin()
{
    std::array<int, 2> ends{};
    double slowest = 0;
    if (pipe(ends.data()) != 0) {
        return slowest;
    }
    if (const pid_t child = fork(); child != 0) {
        const bool isTold = read(ends[0], &slowest, sizeof slowest) == sizeof slowest;
        waitpid(child, nullptr, 0);
        return isTold ? slowest : 0;
    }
    const QDir plugins(QStringLiteral(LUX_PLUGIN_FOLDER));
    for (const QString &file : plugins.entryList({QStringLiteral("*.so")}, QDir::Files)) {
        const QByteArray path = QFile::encodeName(plugins.absoluteFilePath(file));
        slowest = std::max(slowest, work([&path] {
                               void *library = dlopen(path.constData(), RTLD_LAZY);
                               const auto name = reinterpret_cast<AnalyzerLib::Name>(dlsym(library, "GetAnalyzerName"));
                               benchmark::DoNotOptimize(name());
                           }));
    }
    _exit(write(ends[1], &slowest, sizeof slowest) == sizeof slowest ? 0 : 1);
}

/// The first scan of the process, since files and libraries are loaded only then; with the file of the guard that the
/// program has. `work` and `slowest` are processor time, which other work on the machine does not lengthen.
void loadAllPlugins(benchmark::State &state)
{
    const QTemporaryDir home;
    const QString guard = home.filePath(QStringLiteral("tried"));
    for (auto _ : state) {
        state.counters["slowest"] = slowestPlugin();
        std::unique_ptr<AnalyzerManager> none;
        const double without =
            wait([&] { none = std::make_unique<AnalyzerManager>(hostOfNothing(), QStringList(), guard); });
        std::unique_ptr<AnalyzerManager> all;
        double worked = 0;
        const double with = wait([&] {
            worked = work([&] {
                all = std::make_unique<AnalyzerManager>(hostOfNothing(), QStringList(QStringLiteral(LUX_PLUGIN_FOLDER)),
                                                        guard);
            });
        });
        state.SetIterationTime((with - without) * 1e-3);
        double bytes = 0;
        for (const AnalyzerLib &library : all->foundLibraries()) {
            bytes += double(QFileInfo(library.path).size());
        }
        state.counters["plugins"] = double(all->foundLibraries().size());
        state.counters["bytes"] = bytes; // not stripped
        state.counters["work"] = worked;
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
