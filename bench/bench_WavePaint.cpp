// What a frame of the wave view costs on the GUI thread: 16 rows in a raster image of 1920 x 1080. A full repaint of
// dense rows is to take 16 ms at most.

#include "controls/Look.h"
#include "wave/MainViewDesk.h"

#include <QApplication>
#include <QImage>
#include <QPainter>

#include <benchmark/benchmark.h>

namespace {

constexpr QSize fullHd(1920, 1080);
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
