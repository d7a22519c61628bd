// A picture of a view on 100 million edges, as luxcli and the window make it: laying the view out and painting it, as
// pixels and as shapes, beside what Qt takes to pack the same pixels (`writePng`). To paint may take 100 ms.

#include "analyzer/AnalyzerManager.h"
#include "app/OffscreenView.h"
#include "app/StartUp.h"
#include "device/DevBase.h"
#include "device/DeviceGlobals.h"
#include "store/MemBudget.h"
#include "store/SmpData.h"
#include "support/BareSession.h"

#include <QApplication>
#include <QBuffer>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>
#include <memory>
#include <vector>

namespace {

constexpr int channels = 16;
constexpr std::int64_t edgesOfChannel = 6'250'000;
constexpr QSize usual(1600, 900);

/// The session and its capture; the view comes and goes.
class Desk {
public:
    Desk() : m_session(makeSession())
    {
        memBudget = std::int64_t(4) << 30;
        SmpData &data = *gDev->smpData;
        const std::vector<std::uint8_t> enable(channels, 1);
        data.begin(0, 100'000'000, enable);
        std::uint32_t random = 1;
        for (int chn = 0; chn < channels; ++chn) {
            std::vector<std::int32_t> widths;
            for (std::int64_t i = 0; i < edgesOfChannel; ++i) {
                random = random * 1664525 + 1013904223;
                widths.push_back(1 + std::int32_t((random >> 8) % 31));
            }
            std::int64_t pos = 0;
            m_isMade = data.addPulses(widths, chn, pos) && m_isMade;
        }
        data.finish(edgesOfChannel * 32);
        m_manager = std::make_unique<AnalyzerManager>(AnalyzerHost(), QStringList(), QString());
    }

    [[nodiscard]] bool isMade() const { return m_isMade; }
    [[nodiscard]] std::unique_ptr<OffscreenView> view() const
    {
        auto view = std::make_unique<OffscreenView>(*m_manager);
        view->showPart(usual, false, 0, double(gDev->smpData->smpCount()));
        return view;
    }

private:
    std::unique_ptr<Session> m_session;
    std::unique_ptr<AnalyzerManager> m_manager;
    bool m_isMade = true;
};

Desk &desk()
{
    static Desk one;
    return one;
}

void layAndPaint(benchmark::State &state)
{
    if (!desk().isMade()) {
        state.SkipWithError("no memory for the capture");
    }
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(desk().view()->picture().image().constBits());
    }
}

void paintShapes(benchmark::State &state)
{
    const auto view = desk().view();
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(view->picture().shapes().size());
    }
}

void writePng(benchmark::State &state)
{
    const QImage image = desk().view()->picture().image();
    for ([[maybe_unused]] auto _ : state) {
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        benchmark::DoNotOptimize(image.save(&buffer, "PNG"));
    }
}

} // namespace

BENCHMARK(layAndPaint)->Unit(benchmark::kMillisecond);
BENCHMARK(paintShapes)->Unit(benchmark::kMillisecond);
BENCHMARK(writePng)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    const QTemporaryDir settings; // of its own: the user's stay untouched
    qputenv("XDG_DATA_HOME", settings.path().toLocal8Bit());
    const QApplication app(argc, argv);
    StartUp::initGlobals({});
    StartUp::initLook();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
