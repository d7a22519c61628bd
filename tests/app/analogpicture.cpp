// Makes the picture of the analog area for the guide: analogpicture FILE.png
//
// No data file holds analog signals, so it needs an instrument: an emulated one in this process, whose capture has the
// same samples each time. scripts/pictures runs it on the display of the other pictures.

#include "app/MainWindow.h"
#include "app/StartUp.h"
#include "emulator/MixedSignalDesk.h"
#include "measure/AnalyzerView.h"
#include "measure/MeasureViewAChn.h"
#include "panels/Toolbar.h"
#include "store/MemBudget.h"
#include "wave/WaveDataGen.h"

#include <QApplication>
#include <QTemporaryDir>

#include <array>
#include <cstdio>

namespace {

constexpr QSize pictureSize(1152, 720);
using Kind = emulator::AnalogWave::Kind;

/// Slow channels of the counter: their pulses can be seen beside the analog signals.
bool isShown(int chn)
{
    return chn >= 8 && chn < 12;
}

/// The rate and channels that the picture is of, as the toolbar then has them.
bool configure(MainWindow &window)
{
    constexpr std::int64_t rate = 1'000'000;
    QVector<bool> channels(gDev->chnEnable.size());
    for (int chn = 0; chn < channels.size(); ++chn) {
        channels[chn] = isShown(chn);
    }
    gDev->setChnEnable(channels);
    const bool isSet = setRate(rate);
    window.findChild<Toolbar *>()->reload();
    return isSet;
}

/// @return false if there is no picture to take
bool capture(InstrumentDesk &desk, MainWindow &window)
{
    if (!desk.isGood || !desk.plug() || !configure(window)) {
        return false;
    }
    constexpr std::array<qint32, MeasureViewAChn::rowCount> parameters{0, 1, 2, 3, 6, 7, 9};
    window.findChild<AnalyzerView *>()->measureViewAChn->slotUpdateMeasuresShow(parameters.data(),
                                                                                int(parameters.size()));
    bool isMeasured = false;
    QObject::connect(gWaveGen, &WaveDataGen::sigParameterRefreshAch, &window, [&] { isMeasured = true; });
    window.findChild<Toolbar *>()->slotShortcutF5();
    if (!QTest::qWaitFor([&] { return isMeasured && desk.lastError() == 0; }, InstrumentDesk::longWait)) {
        return false;
    }
    gWaveGen->zoomFit();
    return QTest::qWaitFor([] { return !gWaveGen->isAnimating(); });
}

bool takePicture(const QString &path)
{
    const auto desk = mixedSignalDesk(generator({.kind = Kind::Sine, .frequency = 1000, .peakToPeak = 4}),
                                      generator({.kind = Kind::Square, .frequency = 500, .peakToPeak = 3}));
    MainWindow window(*desk->session);
    window.resize(pictureSize);
    window.show();
    return QTest::qWaitForWindowExposed(&window) && capture(*desk, window) && window.grab().save(path);
}

} // namespace

int main(int argc, char **argv)
{
    const QTemporaryDir home;
    qputenv("XDG_DATA_HOME", home.path().toLocal8Bit());
    const QApplication application(argc, argv);
    if (argc != 2) {
        std::fputs("Usage: analogpicture FILE.png\n", stderr);
        return 2;
    }
    memBudgetInit();
    StartUp::initGlobals({});
    StartUp::initLook();
    if (!takePicture(QString::fromLocal8Bit(argv[1]))) {
        std::fputs("analogpicture: no capture, or no room for the file\n", stderr);
        return 1;
    }
    return 0;
}
