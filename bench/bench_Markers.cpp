// What a moved timing marker costs, from the mouse event to the painted result: waves, ruler and the counts that depend
// on the marker. One frame of a screen is 16 ms.

#include "wave/MainViewDesk.h"
#include "wave/PulseRequests.h"
#include "wave/TimeView.h"

#include <QApplication>
#include <QMouseEvent>

#include <benchmark/benchmark.h>
#include <vector>

namespace {

constexpr int pairs = 5;
constexpr int channels = 16;
constexpr std::int32_t pulse = 20; ///< samples
constexpr std::int64_t transitions = 1'000'000;
const QSize fullHd(1920, 1080);

/// As many measurements of the first pair as the benchmark asks for, spread over the channels.
class Rows : public PulseRequests {
public:
    explicit Rows(int count)
    {
        for (int row = 0; row < count; ++row) {
            m_requests.append(QStringLiteral("%1,1").arg(row % channels));
        }
        gPulseRequests = this;
    }
    ~Rows() override { gPulseRequests = nullptr; }
    [[nodiscard]] QStringList allRequests() const override { return m_requests; }
    [[nodiscard]] QStringList requestsOfPair(int pairIndex) const override
    {
        return pairIndex == 0 ? m_requests : QStringList();
    }

private:
    QStringList m_requests;
};

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

WaveCapture denseWaves()
{
    WaveCapture builder = capture().channels(channels).samples(transitions * pulse).rate(100'000'000);
    for (int chn = 0; chn < channels; ++chn) {
        builder.pulses(chn, std::vector<std::int32_t>(std::size_t(transitions - 1), pulse));
    }
    return builder;
}

/// Five pairs stand, and A2 follows the pointer.
void placeMarkers(MainViewDesk &desk)
{
    constexpr int button = 2;
    constexpr int setAndMove = 6;
    constexpr int placed = 3;
    for (int id = 0; id < 2 * pairs; ++id) {
        desk.view.slotTimingMarkerPairClicked(button, id);
        desk.view.slotTimeViewMarkerChanged(setAndMove, id, placed, 150 * (id + 1));
    }
    desk.view.slotTimingMarkerPairClicked(button, 1);
}

/// Sends the move as the window system does, and lets everything be painted that asks for it.
void movePointer(MainViewDesk &desk, QPoint to)
{
    QMouseEvent event(QEvent::MouseMove, to, desk.waves->viewport()->mapToGlobal(to), Qt::NoButton, Qt::NoButton,
                      Qt::NoModifier);
    QCoreApplication::sendEvent(desk.waves->viewport(), &event);
    QCoreApplication::processEvents();
}

void movedMarker(benchmark::State &state, int dpi)
{
    resetProgram(dpi);
    MainViewDesk desk(0, fullHd);
    TimeView ruler(&desk.gen, &desk.view);
    ruler.setGeometry(dp(190), 0, desk.waves->width(), dp(36));
    ruler.show();
    QObject::connect(&desk.view, &MainView::timeMarkBodyChanged, &ruler, &TimeView::slotMainViewMarkerChanged);
    desk.load(denseWaves());
    const Rows rows(int(state.range(0)));
    placeMarkers(desk);
    QCoreApplication::processEvents();

    const PaintCount waves(desk.waves->viewport());
    const PaintCount flags(&ruler);
    int x = 100;
    int moves = 0;
    for (auto _ : state) {
        x = x > 1500 ? 100 : x + 7;
        movePointer(desk, {x, 60 * uiScale()});
        ++moves;
    }
    if (waves.count < moves || flags.count < moves || desk.view.shownPairs().size() != pairs) {
        state.SkipWithError("not every move has been painted");
    }
}

void markerAt96Dpi(benchmark::State &state)
{
    movedMarker(state, 96);
}

void markerAt192Dpi(benchmark::State &state)
{
    movedMarker(state, 192);
}

BENCHMARK(markerAt96Dpi)->Arg(0)->Arg(10)->Unit(benchmark::kMillisecond);
BENCHMARK(markerAt192Dpi)->Arg(10)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    const QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
