// How long a user waits for the end of a capture that is stopped by its button: from the click until the dialog closes,
// with instruments that answer at once and whose trigger does not come. The worst of several times counts.

#include "app/MainWindow.h"
#include "app/StartUp.h"
#include "controls/MyProgressDlg.h"
#include "device/DevBase.h"
#include "device/DeviceGlobals.h"
#include "panels/Toolbar.h"
#include "platform/UsbPlatformEmulated.h"
#include "session/Session.h"
#include "store/MemBudget.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <benchmark/benchmark.h>
#include <memory>

namespace {

constexpr int longWait = 30000; // ms

/// Program and instrument, connected.
class Desk {
public:
    Desk(int model, bool silentStop)
    {
        emulator::InstrumentOptions options;
        options.model = model;
        options.firmwareInside = true;
        options.silentStop = silentStop;
        m_bus.add(options);
        m_bus.plug();
        m_session = std::make_unique<Session>(std::make_unique<UsbPlatformEmulated>(m_bus));
        m_window = std::make_unique<MainWindow>(*m_session);
        m_window->show();
        (void)QTest::qWaitForWindowExposed(m_window.get());
        (void)QTest::qWaitFor([] { return gDev->connected; }, longWait);
    }
    ~Desk()
    {
        m_window.reset();
        m_session.reset();
    }

    /// A capture that is stopped while it waits. @return ms from the click to the closed dialog, -1 for a failure
    double stop()
    {
        constexpr int risingEdge = 3;
        gDev->setChnTrig(5, risingEdge);
        m_window->findChild<Toolbar *>()->slotShortcutF5();
        auto *dialog = m_window->findChild<MyProgressDlg *>(QStringLiteral("smpDialog"));
        const QString waiting = QStringLiteral("Waiting for trigger...");
        if (!QTest::qWaitFor([&] { return dialog->isVisible() && dialog->labelText() == waiting; }, longWait)) {
            return -1;
        }
        QElapsedTimer clock;
        clock.start();
        QTest::mouseClick(dialog->findChild<QPushButton *>(), Qt::LeftButton);
        while (dialog->isVisible() && clock.elapsed() < longWait) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
        const double took = double(clock.nsecsElapsed()) * 1e-6;
        const bool ended = QTest::qWaitFor([] { return !gDev->isCapturing(); }, longWait);
        return ended && !dialog->isVisible() ? took : -1;
    }

private:
    EmulatedBus m_bus;
    std::unique_ptr<Session> m_session;
    std::unique_ptr<MainWindow> m_window;
};

void stopButton(benchmark::State &state, int model, bool silentStop)
{
    Desk desk(model, silentStop);
    double worst = 0;
    for (auto _ : state) {
        const double took = desk.stop();
        if (took < 0) {
            state.SkipWithError("not stopped");
            return;
        }
        worst = std::max(worst, took);
        state.SetIterationTime(took * 1e-3);
    }
    state.counters["worstMs"] = worst; // at most 300
}

} // namespace

BENCHMARK_CAPTURE(stopButton, storage, 8, false)->UseManualTime()->Iterations(10)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(stopButton, wideStorage, 9, false)->UseManualTime()->Iterations(10)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(stopButton, stream, 5, false)->UseManualTime()->Iterations(10)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(stopButton, streamThatFallsSilent, 5, true)
    ->UseManualTime()
    ->Iterations(10)
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
