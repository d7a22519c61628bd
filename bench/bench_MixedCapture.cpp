// How long a user of the mixed-signal model waits for a capture's picture: from the start until waves and traces are
// painted, with an instrument that samples at its own clock. Beyond the instrument's own time, which is depth by rate,
// it is to take at most 30 ms (`beyond`; `readBack` is the part of it after the answer that the instrument has ended);
// captures one after the other, each painted, are to come 20 times a second.

#include "AnalogWave.h"
#include "MixedSignal.h"
#include "WaveSignal.h"
#include "acquisition/SmpState.h"
#include "app/MainWindow.h"
#include "app/StartUp.h"
#include "device/DevBase.h"
#include "device/DeviceGlobals.h"
#include "panels/Toolbar.h"
#include "platform/UsbPlatformEmulated.h"
#include "session/Session.h"
#include "store/MemBudget.h"
#include "wave/WaveView.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

#include <algorithm>
#include <benchmark/benchmark.h>
#include <ctime>
#include <memory>
#include <utility>
#include <vector>

namespace {

constexpr int longWait = 30000; // ms
constexpr QSize fullHd(1920, 1080);

/// A mixed-signal instrument with a sine at each analog input, and a counter at the digital ones.
std::shared_ptr<emulator::MixedSignal> signal()
{
    using emulator::AnalogWave;
    constexpr std::int64_t clock = 1'000'000;
    std::vector<std::unique_ptr<emulator::AnalogInput>> inputs;
    for (const double frequency : {1000.0, 3000.0}) {
        const AnalogWave::Settings sine{.kind = AnalogWave::Kind::Sine, .frequency = frequency, .peakToPeak = 6};
        inputs.push_back(std::make_unique<AnalogWave>(sine));
    }
    auto digital = std::make_shared<emulator::WaveSignal>(clock, emulator::WaveSignal::counter(16, 1));
    return std::make_shared<emulator::MixedSignal>(std::move(digital), std::move(inputs));
}

/// What one capture took, ms; below 0 for a failure.
struct Times {
    double painted = -1;   ///< from the start
    double readBack = -1;  ///< from the answer that the instrument has ended to the picture
    double processor = -1; ///< processor time of all threads, those of the emulated instrument too
};

/// Program and instrument, connected.
class Desk : public QObject {
public:
    explicit Desk(std::int64_t rate)
    {
        emulator::InstrumentOptions options;
        options.model = 97;
        options.firmwareInside = true;
        m_bus.add(options, signal());
        m_bus.plug();
        m_session = std::make_unique<Session>(std::make_unique<UsbPlatformEmulated>(m_bus));
        m_window = std::make_unique<MainWindow>(*m_session);
        m_window->resize(fullHd);
        m_window->show();
        (void)QTest::qWaitForWindowExposed(m_window.get());
        (void)QTest::qWaitFor([] { return gDev->connected; }, longWait);
        isReady = gDev->connected && gDev->setSmpFrequIndex(gDev->smpFrequs.indexOf(rate));
        // Behind the window's own slots.
        connect(m_session.get(), &Session::sigSmpDataReady, this, [this] { m_hasData = true; });
        connect(m_session.get(), &Session::sigSmpSta, this, [this](int sta, int err, int) {
            m_readBegan = sta == smpState::reading && m_readBegan < 0 ? now() : m_readBegan;
            m_hasFailed = m_hasFailed || err != 0;
        });
        m_window->findChild<WaveView *>()->viewport()->installEventFilter(this);
    }
    ~Desk() override
    {
        m_window.reset();
        m_session.reset();
    }

    /// A capture by the key of the toolbar.
    Times capture()
    {
        m_clock.start();
        while (!m_session->mayStartCapture() && m_clock.elapsed() < longWait) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
        }
        m_isPainted = m_hasData = m_hasFailed = false;
        m_readBegan = -1;
        m_clock.start();
        const std::clock_t before = std::clock();
        m_window->findChild<Toolbar *>()->slotShortcutF5();
        while (!m_isPainted && !m_hasFailed && m_clock.elapsed() < longWait) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
        if (!m_isPainted || m_readBegan < 0) {
            return {};
        }
        const double painted = now();
        return {painted, painted - m_readBegan, double(std::clock() - before) * 1e3 / CLOCKS_PER_SEC};
    }

    bool isReady = false;

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && m_hasData) {
            QTimer::singleShot(0, this, [this] { m_isPainted = true; }); // behind the painting
        }
        return false;
    }

private:
    [[nodiscard]] double now() const { return double(m_clock.nsecsElapsed()) * 1e-6; }

    EmulatedBus m_bus;
    std::unique_ptr<Session> m_session;
    std::unique_ptr<MainWindow> m_window;
    QElapsedTimer m_clock;
    double m_readBegan = -1;
    bool m_hasData = false;
    bool m_hasFailed = false;
    bool m_isPainted = false;
};

/// By the rate, in Hz.
void captureUntilPainted(benchmark::State &state)
{
    Desk desk(state.range(0));
    if (!desk.isReady || desk.capture().painted < 0) { // the first one makes what all others share
        state.SkipWithError("not connected");
        return;
    }
    const double own = double(gDev->smpDepth()) * 1e3 / double(gDev->smpFrequ());
    Times sum{0, 0, 0};
    double worst = 0;
    int captures = 0;
    QElapsedTimer clock;
    clock.start();
    for (auto _ : state) {
        const Times one = desk.capture();
        if (one.painted < 0) {
            state.SkipWithError("no capture");
            return;
        }
        ++captures;
        sum = {sum.painted + one.painted, sum.readBack + one.readBack, sum.processor + one.processor};
        worst = std::max(worst, one.readBack);
        state.SetIterationTime(one.painted * 1e-3);
    }
    // All in ms but the last.
    state.counters["own"] = own;
    state.counters["beyond"] = sum.painted / captures - own; // at most 30
    state.counters["readBack"] = sum.readBack / captures;
    state.counters["worstReadBack"] = worst;
    state.counters["processor"] = sum.processor / captures;
    state.counters["captures"] = captures / (double(clock.nsecsElapsed()) * 1e-9); // a second: at least 20
}

} // namespace

BENCHMARK(captureUntilPainted)
    ->Arg(1'000'000)
    ->Arg(10'000'000)
    ->Arg(100'000'000)
    ->UseManualTime()
    ->Iterations(40)
    ->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    const QTemporaryDir home;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("XDG_DATA_HOME", home.path().toLocal8Bit());
    QApplication application(argc, argv);
    memBudgetInit();
    StartUp::initGlobals({});
    StartUp::initLook();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
