// What a repaint of the wave view costs with decoded rows: 16 rows in a raster image of 1920 x 1080, four analyzers of
// 2.5 million frames each that show themselves on four rows, each with markers on one. The argument is the number of
// frames in view. Each is to take at most 16 ms, and all frames in view at most twice as long as a thousand.

#include "analyzer/AnalyzerManager.h"
#include "controls/Look.h"
#include "protocol/ResultsOnChannel.h"
#include "wave/DecodedSource.h"
#include "wave/MainViewDesk.h"

#include <QApplication>
#include <QImage>
#include <QPainter>

#include <array>
#include <benchmark/benchmark.h>
#include <corvanlux/analyzer/DecoderResults.h>
#include <memory>

namespace {

constexpr QSize fullHd(1920, 1080);
constexpr std::int64_t frames = 2'500'000;
constexpr std::int64_t samplesOfAFrame = 40;
constexpr std::int64_t samples = frames * samplesOfAFrame;
constexpr std::int32_t pulse = 4000; ///< samples between two edges of a trace

/// Bytes side by side, as a busy line has them.
class BusyResults : public lux::Results {
public:
    explicit BusyResults(int firstRow)
    {
        const Channel marked(0, std::uint32_t(firstRow));
        for (std::uint32_t row = 0; row < 4; ++row) {
            ShowBubblesOn(Channel(0, std::uint32_t(firstRow) + row));
        }
        for (std::int64_t i = 0; i < frames; ++i) {
            const std::int64_t from = i * samplesOfAFrame;
            mark(marked, from + samplesOfAFrame / 2, MarkerType(i % 12));
            add({.firstSample = from, .lastSample = from + samplesOfAFrame - 4, .data = std::uint64_t(i * 7 % 256)});
        }
    }
    void describe(const FrameData &frame, lux::FrameText &out) const override
    {
        out.add(lux::formatNumber(frame.data, 8, out.base()));
        out.add("Data ", lux::formatNumber(frame.data, 8, out.base()));
    }
    void values(const FrameData &, lux::FrameValues &out) const override { out.kind("byte"); }
};

class BusySource : public DecodedSource {
public:
    BusySource()
    {
        for (int i = 0; i < 4; ++i) {
            m_results[std::size_t(i)] = std::make_unique<BusyResults>(4 * i);
        }
        gDecodedSource = this;
    }
    ~BusySource() override { gDecodedSource = nullptr; }
    void visit(int chn, const std::function<void(const DecodedChannel &)> &visit) const override
    {
        visit(ResultsOnChannel(*m_results[std::size_t(chn / 4 % 4)], chn, int(DisplayBase::Hexadecimal), m_maker));
    }
    [[nodiscard]] QString chnLabel(int) const override { return {}; }

private:
    AnalyzerManager m_manager{AnalyzerHost{}, QStringList(), QString()};
    mutable BubbleMaker m_maker{m_manager, {}};
    std::array<std::unique_ptr<BusyResults>, 4> m_results;
};

void decodedRepaint(benchmark::State &state)
{
    resetProgram();
    WaveCapture dense = capture().channels(16).samples(samples);
    for (int chn = 0; chn < 16; ++chn) {
        dense.pulses(chn, std::vector<std::int32_t>(std::size_t(samples / pulse), pulse));
    }
    MainViewDesk desk(0, fullHd + QSize(dp(190), 0));
    desk.load(dense);
    desk.gen.zoomSetRatio(double(state.range(0) * samplesOfAFrame) / fullHd.width());
    desk.gen.setViewStart(double(samples) / 3.0);
    QCoreApplication::processEvents();
    QImage image(fullHd, QImage::Format_RGB32);
    for (auto _ : state) {
        QPainter painter(&image);
        desk.waves->render(&painter, QRectF(image.rect()), image.rect());
        benchmark::DoNotOptimize(image.constBits());
    }
}

BENCHMARK(decodedRepaint)
    ->Unit(benchmark::kMillisecond)
    ->Arg(1)
    ->Arg(30)
    ->Arg(70)
    ->Arg(140)
    ->Arg(400)
    ->Arg(1000)
    ->Arg(1900)
    ->Arg(5000)
    ->Arg(100'000)
    ->Arg(frames);

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    const QApplication app(argc, argv);
    globalsLoadFonts(QApplication::font(), QString());
    const BusySource source;
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
