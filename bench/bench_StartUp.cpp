// How long a user waits for the window, and what the idle program costs. The yardstick is `bareWindowUntilPainted`, an
// empty window of Qt from its application object on.

#include "LoopGap.h"
#include "Yardsticks.h"
#include "app/MainWindow.h"
#include "app/StartUp.h"
#include "device/UsbPlatformNone.h"
#include "session/Session.h"
#include "store/MemBudget.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTemporaryDir>
#include <QTimer>

#include <benchmark/benchmark.h>
#include <ctime>
#include <memory>

namespace {

struct Program {
    int argc = 1;
    char name[10] = "corvanlux";
    char *argv[2] = {name, nullptr};
    std::unique_ptr<QApplication> application;
    std::unique_ptr<Session> session;
    std::unique_ptr<MainWindow> window;

    void start()
    {
        application = std::make_unique<QApplication>(argc, argv);
        memBudgetInit();
        StartUp::initGlobals({});
        StartUp::initLook();
        session = std::make_unique<Session>(std::make_unique<UsbPlatformNone>());
        window = std::make_unique<MainWindow>(*session);
        showUntilPainted(*window);
    }

    ~Program()
    {
        window.reset();
        session.reset();
    }
};

/// From the application object to the painted window; the program's own load time is not in it.
void startUntilPainted(benchmark::State &state)
{
    for (auto _ : state) {
        QElapsedTimer clock;
        clock.start();
        Program program;
        program.start();
        state.SetIterationTime(double(clock.nsecsElapsed()) * 1e-9);
    }
}
BENCHMARK(startUntilPainted)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);

/// The yardstick: the same with nothing in the window.
void bareWindowUntilPainted(benchmark::State &state)
{
    for (auto _ : state) {
        QElapsedTimer clock;
        clock.start();
        int argc = 1;
        char name[] = "bare";
        char *argv[] = {name, nullptr};
        const QApplication application(argc, argv);
        QWidget window;
        window.resize(fullHd);
        showUntilPainted(window);
        state.SetIterationTime(double(clock.nsecsElapsed()) * 1e-9);
    }
}
BENCHMARK(bareWindowUntilPainted)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);

/// The longest gap of the event loop from the painted window to the end of what a start has to do.
void gapsAfterTheStart(benchmark::State &state)
{
    for (auto _ : state) {
        Program program;
        program.start();
        LoopGap gap;
        QEventLoop loop;
        QTimer::singleShot(700, &loop, &QEventLoop::quit);
        loop.exec();
        gap.report(state);
    }
}
BENCHMARK(gapsAfterTheStart)->Iterations(1)->Unit(benchmark::kMillisecond);

/// Processor time of one idle second, after the start has settled.
void idleSecond(benchmark::State &state)
{
    const auto run = [](int milliseconds) {
        QEventLoop loop;
        QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
        loop.exec();
    };
    for (auto _ : state) {
        Program program;
        program.start();
        run(700);
        const std::clock_t before = std::clock();
        run(1000);
        state.SetIterationTime(double(std::clock() - before) / CLOCKS_PER_SEC);
    }
}
BENCHMARK(idleSecond)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    const QTemporaryDir home;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("XDG_DATA_HOME", home.path().toLocal8Bit());
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
