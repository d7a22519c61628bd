// What a moved timing marker costs in the whole window, from the mouse event to the painted result: waves, ruler, the
// marker's times, and the measurements that depend on it. One frame of a screen is 16 ms.

#include "Yardsticks.h"
#include "app/MainWindow.h"
#include "controls/Look.h"
#include "device/DevBase.h"
#include "device/DeviceGlobals.h"
#include "measure/PulseMeasure.h"
#include "support/BareSession.h"
#include "support/GuiTestMain.h"
#include "wave/MainView.h"
#include "wave/TimeView.h"
#include "wave/WaveCapture.h"
#include "wave/WaveDataGen.h"
#include "wave/WaveView.h"

#include <QAction>
#include <QMouseEvent>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>
#include <memory>
#include <vector>

namespace {

constexpr int pairs = 5;
constexpr int channels = 16;
constexpr std::int32_t pulse = 20; ///< samples
constexpr std::int64_t transitions = 1'000'000;

/// Counts the paintings of a widget.
class PaintCount : public QObject {
public:
    explicit PaintCount(QWidget *widget) { widget->installEventFilter(this); }
    int count = 0;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        count += event->type() == QEvent::Paint ? 1 : 0;
        return QObject::eventFilter(watched, event);
    }
};

/// The window with a capture of 16 dense channels, all of it in view.
class Desk {
public:
    Desk()
    {
        m_session = makeSession();
        m_window = std::make_unique<MainWindow>(*m_session);
        m_window->resize(fullHd);
        m_window->show();
        fillCapture();
        emit gDev->sigSmpDataReady();
        m_window->findChild<WaveDataGen *>()->zoomFit();
    }
    ~Desk()
    {
        m_window.reset();
        m_session.reset();
    }
    Desk(const Desk &) = delete;
    Desk &operator=(const Desk &) = delete;

    template<typename Widget>
    [[nodiscard]] Widget &part() const
    {
        return *m_window->findChild<Widget *>();
    }
    /// Five pairs stand, and A2 follows the pointer.
    void placeMarkers() const
    {
        constexpr int button = 2;
        constexpr int setAndMove = 6;
        constexpr int placed = 3;
        auto &view = part<MainView>();
        for (int id = 0; id < 2 * pairs; ++id) {
            view.slotTimingMarkerPairClicked(button, id);
            view.slotTimeViewMarkerChanged(setAndMove, id, placed, 120 * (id + 1));
        }
        view.slotTimingMarkerPairClicked(button, 1);
    }
    /// So many measurements between the markers of the first pair.
    void addRows(int count) const
    {
        auto &rows = part<PulseMeasure>();
        QAction firstPair(nullptr);
        firstPair.setData(1);
        for (int row = 0; row < count; ++row) {
            rows.slotBtnAddClicked();
            rows.menuRow = row;
            rows.slotMenuTimeClicked(&firstPair);
        }
    }
    /// Sends the move as the window system does, and lets everything be painted that asks for it.
    void movePointer(QPoint to) const
    {
        QWidget *target = part<WaveView>().viewport();
        QMouseEvent event(QEvent::MouseMove, to, target->mapToGlobal(to), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
        QCoreApplication::sendEvent(target, &event);
        QCoreApplication::processEvents();
    }

private:
    static void fillCapture()
    {
        WaveCapture builder = capture().channels(channels).samples(transitions * pulse).rate(100'000'000);
        for (int chn = 0; chn < channels; ++chn) {
            builder.pulses(chn, std::vector<std::int32_t>(std::size_t(transitions - 1), pulse));
        }
        builder.fill(*gDev->smpData);
    }
    std::unique_ptr<Session> m_session;
    std::unique_ptr<MainWindow> m_window;
};

void movedMarker(benchmark::State &state, int dpi)
{
    startGuiTest(dpi);
    const Desk desk;
    desk.placeMarkers();
    const auto count = int(state.range(0));
    desk.addRows(count);
    QCoreApplication::processEvents();

    const PaintCount waves(desk.part<WaveView>().viewport());
    const PaintCount flags(&desk.part<TimeView>());
    const int width = desk.part<WaveView>().width();
    int x = 100;
    int moves = 0;
    for (auto _ : state) {
        x = x > width - 100 ? 100 : x + 7;
        desk.movePointer({x, 60 * uiScale()});
        ++moves;
    }
    const bool complete = desk.part<MainView>().shownPairs().size() == pairs &&
                          desk.part<PulseMeasure>().requestsOfPair(0).size() >= qMin(count, 1);
    if (waves.count < moves || flags.count < moves || !complete) {
        state.SkipWithError("not every move has been counted and painted");
    }
}

/// The argument: rows of measurements.
void movedMarkerAt96Dpi(benchmark::State &state)
{
    movedMarker(state, 96);
}

void movedMarkerAt192Dpi(benchmark::State &state)
{
    movedMarker(state, 192);
}

/// The yardstick.
void fillOfFullHd(benchmark::State &state)
{
    fillFrames(state, fullHd);
}

BENCHMARK(movedMarkerAt96Dpi)->Arg(0)->Arg(10)->Unit(benchmark::kMillisecond);
BENCHMARK(movedMarkerAt192Dpi)->Arg(10)->Unit(benchmark::kMillisecond);
BENCHMARK(fillOfFullHd)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    const QTemporaryDir settings; // of its own: the user's stay untouched
    qputenv("XDG_DATA_HOME", settings.path().toLocal8Bit());
    const QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
