// What a frame of the wave view costs on the GUI thread: 16 rows in a raster image of 1920 x 1080, and steps of a pan,
// a hover and a marker through the event loop in a window of 3840 x 2160 with 32 dense rows. Each of these is to take
// at most 16 ms, and at most four times `fillOfFrame`, one memset of that frame in the same run. A repaint of grid and
// both analog traces over 16 rows is to take at most 16 ms.

#include "Yardsticks.h"
#include "controls/Look.h"
#include "wave/AnalogDesk.h"
#include "wave/MarkerDesk.h"

#include <QApplication>
#include <QImage>
#include <QPainter>

#include <benchmark/benchmark.h>
#include <cmath>
#include <numbers>

namespace {

constexpr int samplesPerColumn = 10;

/// All 16 channels change every `pulse` samples.
WaveCapture waves(int pulse)
{
    const int samples = fullHd.width() * samplesPerColumn;
    WaveCapture what = capture().channels(16).samples(samples);
    for (int chn = 0; chn < 16; ++chn) {
        what.pulses(chn, std::vector<std::int32_t>(std::size_t(samples / pulse), pulse));
    }
    return what;
}

/// Paints the wave view as a full repaint of its viewport does.
void paintFrame(MainViewDesk &desk, QImage &image)
{
    QPainter painter(&image);
    desk.waves->render(&painter, QRectF(image.rect()), image.rect());
}

void runFrames(benchmark::State &state, int dpi)
{
    resetProgram(dpi);
    MainViewDesk desk(0, fullHd + QSize(dp(190), 0));
    desk.load(waves(int(state.range(0))));
    QImage image(fullHd, QImage::Format_RGB32);
    for (auto _ : state) {
        paintFrame(desk, image);
        benchmark::DoNotOptimize(image.constBits());
    }
}

void fullRepaint(benchmark::State &state)
{
    runFrames(state, 96);
}

void fullRepaintAtScaleTwo(benchmark::State &state)
{
    runFrames(state, 192);
}

/// The lines of the frame, then the frame: what one step of a pan costs.
void panStep(benchmark::State &state)
{
    resetProgram();
    MainViewDesk desk(0, fullHd + QSize(dp(190), 0));
    desk.load(waves(int(state.range(0))));
    desk.gen.zoomSetRatio(samplesPerColumn / 2.0);
    QImage image(fullHd, QImage::Format_RGB32);
    double start = 100.0;
    for (auto _ : state) {
        start = start > 5000.0 ? 100.0 : start + 7.0;
        desk.gen.setViewStart(start);
        paintFrame(desk, image);
    }
}

/// An analog signal over the whole of its buffer.
enum class AnalogSignal { sine, square, noise, fullSwing };

int analogSample(AnalogSignal signal, int i)
{
    constexpr double period = 320.0;
    switch (signal) {
    case AnalogSignal::sine:
        return int(100.0 * std::sin(i * 2.0 * std::numbers::pi / period));
    case AnalogSignal::square:
        return i / 160 % 2 == 0 ? -100 : 100;
    case AnalogSignal::noise:
        return int((unsigned(i) * 2'654'435'761U >> 24U) & 0xffU) - 128;
    default:
        return i % 2 == 0 ? -128 : 127;
    }
}

/// Both analog traces over the grid and 16 digital rows, a sample a column. The whole buffer holds 8000 samples.
void analogRepaint(benchmark::State &state, int dpi)
{
    resetProgram(dpi);
    AnalogDesk desk(fullHd + QSize(dp(190), 0));
    const auto signal = AnalogSignal(state.range(0));
    const auto value = [signal](int chn, int i) { return analogSample(signal, i + chn); };
    WaveCapture digital = capture().channels(16, 2);
    for (int chn = 0; chn < 16; ++chn) {
        digital.pulses(chn, std::vector<std::int32_t>(80, 100));
    }
    desk.fill(8000, value, digital);
    desk.gen.zoomSetRatio(1.0);
    QImage image(fullHd, QImage::Format_RGB32);
    for (auto _ : state) {
        paintFrame(desk, image);
        benchmark::DoNotOptimize(image.constBits());
    }
}

void analogTraces(benchmark::State &state)
{
    analogRepaint(state, 96);
}

void analogTracesAtScaleTwo(benchmark::State &state)
{
    analogRepaint(state, 192);
}

/// A shown window over 32 rows with an edge in every column.
struct BigWindow {
    BigWindow() : desk((resetProgram(), thirtyTwoChannels), ultraHd + QSize(dp(190), 0))
    {
        WaveCapture dense = capture().channels(32).samples(2 * ultraHd.width());
        for (int chn = 0; chn < 32; ++chn) {
            dense.dense(chn);
        }
        desk.load(dense);
        desk.gen.zoomSetRatio(1.0);
        QCoreApplication::processEvents();
    }
    static constexpr int thirtyTwoChannels = 9;
    MarkerDesk desk;
};

void bigPanStep(benchmark::State &state)
{
    BigWindow window;
    double start = 100.0;
    for (auto _ : state) {
        start = start > 3000.0 ? 100.0 : start + 7.0;
        window.desk.gen.setViewStart(start);
        QCoreApplication::processEvents();
    }
}

void bigHoverStep(benchmark::State &state)
{
    BigWindow window;
    int y = 0;
    for (auto _ : state) {
        y = (y + 70) % ultraHd.height();
        window.desk.move(500 + y, y);
    }
}

void bigMarkerStep(benchmark::State &state)
{
    BigWindow window;
    window.desk.move(500, 500);
    window.desk.key(Qt::Key_1);
    int x = 500;
    for (auto _ : state) {
        x = x > 3000 ? 500 : x + 11;
        window.desk.move(x, 500);
    }
}

/// The yardstick of what fills 3840 x 2160.
void fillOfFrame(benchmark::State &state)
{
    fillFrames(state, ultraHd);
}

/// The yardstick of what fills 1920 x 1080.
void fillOfFullHd(benchmark::State &state)
{
    fillFrames(state, fullHd);
}

/// The samples of a pulse: an edge in every column, in every second, in every fifth, flat.
void pulses(benchmark::internal::Benchmark *bench)
{
    for (const int columns : {0, 2, 5, fullHd.width()}) {
        bench->Arg(columns == 0 ? 1 : columns * samplesPerColumn);
    }
    bench->Unit(benchmark::kMillisecond);
}

BENCHMARK(fullRepaint)->Apply(pulses);
BENCHMARK(fullRepaintAtScaleTwo)->Apply(pulses);
BENCHMARK(panStep)->Apply(pulses);
BENCHMARK(analogTraces)->DenseRange(0, 3)->Unit(benchmark::kMillisecond); // by AnalogSignal
BENCHMARK(analogTracesAtScaleTwo)->DenseRange(0, 3)->Unit(benchmark::kMillisecond);
BENCHMARK(bigPanStep)->Unit(benchmark::kMillisecond);
BENCHMARK(bigHoverStep)->Unit(benchmark::kMillisecond);
BENCHMARK(bigMarkerStep)->Unit(benchmark::kMillisecond);
BENCHMARK(fillOfFrame)->Unit(benchmark::kMillisecond);
BENCHMARK(fillOfFullHd)->Unit(benchmark::kMillisecond);

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
