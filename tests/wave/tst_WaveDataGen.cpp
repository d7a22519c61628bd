#include "app/Globals.h"
#include "wave/WaveCapture.h"
#include "wave/WaveDataGen.h"

#include <QtTest>

#include <cmath>
#include <limits>

namespace {

/// A generator with a capture and a main window that acknowledges each frame.
struct View {
    explicit View(const SmpData *data, int width = 1000)
    {
        QObject::connect(&gen, &WaveDataGen::sigViewRefresh, &gen, [this](bool dec) {
            refreshes.push_back(dec);
            ratios.push_back(gen.ratioSasPix());
            if (acknowledging)
                gen.setFrameAck();
        });
        gen.setDataSource(data);
        gen.setViewWidth(width);
    }
    /// As after a capture: everything in view.
    void showAll()
    {
        gen.dataReady();
        gen.zoomFit();
        refreshes.clear();
        ratios.clear();
    }

    std::vector<bool> refreshes;
    std::vector<double> ratios;
    bool acknowledging = true;
    WaveDataGen gen;
};

} // namespace

class TstWaveDataGen : public QObject {
    Q_OBJECT
private slots:
    void init();
    void theGlobalPointsToTheOneGenerator();
    void theFirstRatioIsZeroAndRefusesToZoomIn();
    void allFillsTheViewWithTheCapture();
    void aConstantChannelIsOneRunUpToTheEndOfTheData();
    void aDenseChannelYieldsOneMarkPerColumn();
    void anAnimatedZoomInHalvesTheRatioInSevenFrames();
    void destroyingTheGeneratorEndsAnAnimation();
};

void TstWaveDataGen::init()
{
    viewState = 0;
    disAnimateZoom = false;
}

void TstWaveDataGen::theGlobalPointsToTheOneGenerator()
{
    {
        WaveDataGen gen;
        QCOMPARE(gWaveGen, &gen);
    }
    QVERIFY(!gWaveGen);
}

void TstWaveDataGen::theFirstRatioIsZeroAndRefusesToZoomIn()
{
    const auto data = capture().build();
    View view(data.get());
    QCOMPARE(view.gen.ratioSasPix(), 0.0);
    disAnimateZoom = true;
    view.gen.zoomInAt(10);
    QVERIFY(view.refreshes.empty());
    QCOMPARE(view.gen.ratioSasPix(), 0.0);
}

void TstWaveDataGen::allFillsTheViewWithTheCapture()
{
    const auto data = capture().samples(5000).build();
    View view(data.get());
    view.gen.zoomFit();
    QCOMPARE(view.gen.viewStart(), 0.0);
    QCOMPARE(view.gen.ratioSasPix(), 5.0);
    QCOMPARE(view.refreshes, std::vector<bool>{true});
}

void TstWaveDataGen::aConstantChannelIsOneRunUpToTheEndOfTheData()
{
    const auto data = capture().samples(1000).build();
    View view(data.get(), 500);
    view.gen.setClampToData(false);
    view.gen.setRatioKeepStart(4.0);
    const auto line = view.gen.digLine(0);
    QCOMPARE(line.size(), std::size_t(1));
    QCOMPARE(line[0].x, 0);
    QCOMPARE(line[0].width, 250);
    QCOMPARE(line[0].kind, 0);
}

void TstWaveDataGen::aDenseChannelYieldsOneMarkPerColumn()
{
    const auto data = capture().samples(100000).dense(0).build();
    View view(data.get(), 500);
    view.showAll();
    const auto line = view.gen.digLine(0);
    QCOMPARE(line.size(), std::size_t(500));
    for (std::size_t i = 0; i < line.size(); ++i) {
        QCOMPARE(line[i].x, int(i));
        QCOMPARE(line[i].width, 1);
        QCOMPARE(line[i].kind, 2);
    }
}

void TstWaveDataGen::anAnimatedZoomInHalvesTheRatioInSevenFrames()
{
    const auto data = capture().samples(8000).build();
    View view(data.get());
    view.showAll();
    view.gen.zoomInAt(500);
    QVERIFY(view.refreshes.empty());
    QTRY_COMPARE(view.refreshes.size(), std::size_t(7));
    QCOMPARE(view.refreshes, (std::vector<bool>{false, false, false, false, false, false, true}));
    QCOMPARE(view.gen.ratioSasPix(), 4.0);
    QCOMPARE(view.gen.viewStart(), 2000.0);
}

void TstWaveDataGen::destroyingTheGeneratorEndsAnAnimation()
{
    const auto data = capture().samples(8000).build();
    View view(data.get());
    view.acknowledging = false;
    view.showAll();
    view.gen.zoomInAt(500);
    QVERIFY(view.gen.isRunning());
}

QTEST_MAIN(TstWaveDataGen)
#include "tst_WaveDataGen.moc"
