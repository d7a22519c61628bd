// How long a user waits for the end of a capture that is stopped by its button: from the click until the dialog closes,
// with instruments that answer at once and whose trigger does not come. The worst of several times counts.

#include "app/MainWindow.h"
#include "app/StartUp.h"
#include "controls/MyProgressDlg.h"
#include "device/DevBase.h"
#include "device/DevControlUsb.h"
#include "device/DevIdentity.h"
#include "device/DevModels.h"
#include "device/DeviceGlobals.h"
#include "device/UsbTransport.h"
#include "emulator/Bench.h"
#include "panels/Toolbar.h"
#include "store/MemBudget.h"
#include "platform/UsbPlatformEmulated.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <array>
#include <benchmark/benchmark.h>
#include <memory>

namespace {

constexpr std::uint8_t requestEeprom = 0xA2;
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
        m_bus.with([](emulator::Instrument &device) { (void)bench::bringUp(device); });
        m_bus.plug();
        m_transport = std::make_unique<UsbTransport>(std::make_unique<UsbPlatformEmulated>(m_bus));
        gUsb = m_transport.get();
        m_control = std::make_unique<DevControlUsb>(*m_transport);
        setDevControl(m_control.get());
        gDev = createDevice(model).release();
        (void)QTest::qWaitFor([] { return gUsb->refresh() == 1; }, longWait);
        std::array<std::uint8_t, devIdentity::blockSize> block{};
        (void)gUsb->controlIn(requestEeprom, devIdentity::blockAt, 0, block);
        gDev->initDevice(QByteArray(reinterpret_cast<const char *>(block.data()), int(block.size())));
        m_window = std::make_unique<MainWindow>();
        m_window->show();
        (void)QTest::qWaitForWindowExposed(m_window.get());
    }
    ~Desk()
    {
        m_window.reset();
        delete gDev;
        gDev = nullptr;
        setDevControl(nullptr);
        gUsb = nullptr;
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
    std::unique_ptr<UsbTransport> m_transport;
    std::unique_ptr<DevControlUsb> m_control;
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
