#include "wave/AnalogDesk.h"

#include <QtTest>

#include <cmath>

namespace {

constexpr int mixedHeight = 336; ///< of the area at 96 dpi, when the rows are at their least height

QString storedPlaces()
{
    return globalGet(QStringLiteral("AChnHorLabelPos"));
}

/// Low up to the middle of the capture, then high: both analog channels, and digital channel 0.
void fillStep(AnalogDesk &desk, int samples)
{
    desk.fill(
        samples, [samples](int, int sample) { return sample < samples / 2 ? -26 : 25; },
        capture().channels(16, 2).pulses(0, {samples / 2}));
}

/// A volt up and a volt down from sample to sample, on both analog channels.
void fillAlternating(AnalogDesk &desk, int samples)
{
    desk.fill(
        samples, [](int, int sample) { return sample % 2 == 0 ? 25 : -26; }, capture().channels(16, 2));
}

int brightness(QRgb pixel)
{
    return qGray(pixel);
}

/// The rows of a column in which there is more than the ground, without the dots of the grid.
bool isTraceAt(const QImage &picture, int x, int y)
{
    return x >= 0 && x < picture.width() && y >= 0 && y < picture.height() && brightness(picture.pixel(x, y)) > 0xb8;
}

/// The same at most two rows above or below.
bool isTraceNear(const QImage &picture, int x, int y)
{
    bool found = false;
    for (int d = -2; d <= 2; ++d) {
        found = found || isTraceAt(picture, x, y + d);
    }
    return found;
}

} // namespace

class TstAnalogArea : public QObject {
    Q_OBJECT
private slots:
    void init();

    // The area.
    void onlyAModelWithAnalogChannelsHasTheArea();
    void theAreaIsEightUnitsAboveTheRows();
    void anotherModelTakesTheAreaAwayAndBringsItBack();
    void theAreaFitsALowScreen_data();
    void theAreaFitsALowScreen();

    // Grid and traces.
    void theGridHasTenDivisionsAndALineAtEachTick_data();
    void theGridHasTenDivisionsAndALineAtEachTick();
    void theGridDrawsNoLineAtItsEdgesNorBeyondThem();
    void theGridIsThereBeforeTheFirstCapture();
    void aSampleStandsAboveItsDigitalEdge_data();
    void aSampleStandsAboveItsDigitalEdge();
    void whereASampleSpansColumnsItStandsAboveItsDigitalEdgeToo_data();
    void whereASampleSpansColumnsItStandsAboveItsDigitalEdgeToo();
    void theTraceEndsWhereTheDigitalOneEnds();
    void aValueStandsAtItsHeightAboveTheZeroLevel();
    void belowASampleAColumnStraightStrokesJoinTheSamples();
    void aboveASampleAColumnAFastSignalAliases();
    void aReversedTraceIsMirroredAtOnce();
    void aChannelThatIsOffIsNotDrawn();
    void aTraceBeyondTheAreaDoesNotCrossTheRows();
    void tracesTakeTheirChannelsColoursByTheOption();
    void aFullScaleOfZeroDrawsNothing();
    void withoutAHeightNothingIsPainted();
    void aSimulatedCaptureShowsTheAreaWithoutTraces();

    // Flags of the zero levels.
    void flagsStartAtThreeAndSevenTenthsAndAreStored();
    void aFlagIsDraggedAndItsTraceFollows();
    void aFlagStaysWithinTheArea();
    void aFlagKeepsItsPartOfTheHeight();
    void arrowsAndPageKeysMoveAFlag();
    void aMoveWithoutTheButtonOrWithAnotherOneMovesNoFlag();
    void storedPlacesThatAreNoneAreReplaced_data();
    void storedPlacesThatAreNoneAreReplaced();
    void aMoveIsToldToWhomReadsVoltages();

    // The flag of the trigger.
    void theTriggerFlagStandsAtItsLevel();
    void draggingTheTriggerFlagSetsTheLevel();
    void theTriggerFlagSnapsToWholeMillivolts();
    void arrowKeysMoveTheTriggerByAFiftiethOfADivision();
    void aLevelBeyondTheAreaStandsAtItsEdge();
    void theTriggerFlagFollowsTheZeroLevelOfItsChannelOnly();
    void theTriggerFlagFollowsTheVoltsPerDivision();
    void aTriggerFlagWithoutAFullScaleStaysWhereItIs();
    void theFlagsOfZeroAndTriggerDoNotHideEachOther();

    // Keys.
    void tabWalksFromTheAnalogControlsToTheRows();
    void everyControlTellsItsNameToAScreenReader();
    void aControlReachedByTabIsBroughtIntoView();
};

void TstAnalogArea::init()
{
    QFile::remove(configPath());
    resetProgram();
}

// ---- the area

void TstAnalogArea::onlyAModelWithAnalogChannelsHasTheArea()
{
    const MainViewDesk digital(0);
    QVERIFY(digital.view.findChild<ItemAChnSidebar *>() == nullptr);
    QVERIFY(digital.items<ItemAChnWaveLine>().isEmpty());
    QVERIFY(!digital.view.analog().exists());
    QCOMPARE(digital.view.analog().zeroY(0), 0);
    QCOMPARE(digital.view.analog().fullScaleMv(0), 0);
    QVERIFY(globalGet(QStringLiteral("AChnHorLabelPos")).isEmpty());
}

void TstAnalogArea::theAreaIsEightUnitsAboveTheRows()
{
    const AnalogDesk desk;
    QCOMPARE(desk.column()->geometry(), QRect(0, 0, 190, mixedHeight));
    QCOMPARE(desk.sidebar(0).y(), mixedHeight);
    QCOMPARE(desk.items<ItemAChnWaveLine>().first()->sceneBoundingRect(), QRectF(0, 0, 1000, mixedHeight));
    QCOMPARE(desk.items<ItemAChWaveBackground>().first()->sceneBoundingRect(), QRectF(0, 0, 1000, mixedHeight));
}

void TstAnalogArea::anotherModelTakesTheAreaAwayAndBringsItBack()
{
    AnalogDesk desk;
    AnalogDesk::choose(desk.part<QComboBox>(0, "volt"), QStringLiteral("2V/div"));
    desk.replaceDevice(0);
    QVERIFY(desk.column() == nullptr);
    QVERIFY(desk.items<ItemAChnWaveLine>().isEmpty());
    QCOMPARE(desk.sidebar(0).y(), 0);
    desk.replaceDevice(analogModel);
    QVERIFY(desk.column() != nullptr && desk.column()->isVisible());
    QCOMPARE(desk.area().fullScaleMv(0), 20'000);
    QCOMPARE(desk.sidebar(0).y(), desk.height());
}

void TstAnalogArea::theAreaFitsALowScreen_data()
{
    QTest::addColumn<int>("dpi");
    QTest::newRow("96") << 96;
    QTest::newRow("192") << 192;
}

/// On a screen of 1280 x 720 some 570 pixels are left for the waves.
void TstAnalogArea::theAreaFitsALowScreen()
{
    QFETCH(int, dpi);
    resetProgram(dpi);
    const AnalogDesk desk({dp(900), dp(560)});
    QCOMPARE(desk.height(), dp(mixedHeight));
    const QWidget *last = desk.part<QWidget>("trigPositionZero");
    const QPoint end = last->mapTo(desk.column(), last->rect().bottomRight());
    QVERIFY2(end.y() < desk.height(), qPrintable(QString::number(end.y())));
    QVERIFY(end.x() < desk.trigTag()->x());
    for (const char *panel : {"aChn0", "aChn1", "aChnTrigger"}) {
        const QWidget *parts = desk.part<QWidget>(panel);
        QVERIFY2(parts->width() >= parts->minimumSizeHint().width(), panel); // nothing is pushed together
    }
}

// ---- grid and traces

void TstAnalogArea::theGridHasTenDivisionsAndALineAtEachTick_data()
{
    QTest::addColumn<int>("dpi");
    QTest::newRow("96") << 96;
    QTest::newRow("192") << 192;
}

void TstAnalogArea::theGridHasTenDivisionsAndALineAtEachTick()
{
    QFETCH(int, dpi);
    resetProgram(dpi);
    AnalogDesk desk({dp(1190), dp(800)});
    const int s = uiScale();
    desk.part<QCheckBox>(0, "enable")->click();
    desk.part<QCheckBox>(1, "enable")->click();
    const QImage picture = desk.picture();
    const auto dotsInRow = [&](int y) {
        int dots = 0;
        for (int x = 0; x < dp(900); ++x) {
            dots += picture.pixel(x, y) == gGreys[2].rgb() ? 1 : 0;
        }
        return dots;
    };
    for (int i = 1; i <= 9; ++i) {
        const int y = int(i * (desk.height() / s) * 0.1) * s + s / 2;
        QVERIFY2(dotsInRow(y) > dp(900) / 4, qPrintable(QString::number(i)));
        QVERIFY(dotsInRow(y) < dp(900) * 3 / 4);      // with gaps between them
        QVERIFY(dotsInRow(y - 2 * s) < dp(900) / 10); // the vertical lines alone
    }
    QVERIFY(desk.gen.timeTicks().size() > 3);
    for (const TimeTick &tick : desk.gen.timeTicks()) {
        const int x = tick.x * s + s / 2;
        int dots = 0;
        for (int y = 0; x < dp(900) && y < desk.height(); ++y) {
            dots += picture.pixel(x, y) == gGreys[2].rgb() ? 1 : 0;
        }
        QVERIFY(x >= dp(900) || dots > desk.height() / 4);
    }
}

void TstAnalogArea::theGridDrawsNoLineAtItsEdgesNorBeyondThem()
{
    const AnalogDesk desk;
    ItemAChWaveBackground grid(&desk.gen);
    grid.setSize({100, 100});
    QImage image(120, 120, QImage::Format_RGB32);
    image.fill(Qt::black);
    QPainter painter(&image);
    QStyleOptionGraphicsItem option;
    grid.paint(&painter, &option, nullptr);
    painter.end();
    const auto dotsIn = [&image](const QRect &part) {
        int dots = 0;
        for (int y = part.top(); y <= part.bottom(); ++y) {
            for (int x = part.left(); x <= part.right(); ++x) {
                dots += image.pixel(x, y) == QColor(Qt::black).rgb() ? 0 : 1;
            }
        }
        return dots;
    };
    QVERIFY(dotsIn({0, 10, 100, 1}) > 25); // a tenth of the height
    QVERIFY(dotsIn({0, 0, 100, 1}) < 5);   // the vertical lines alone
    QCOMPARE(dotsIn({0, 100, 120, 20}), 0);
}

void TstAnalogArea::theGridIsThereBeforeTheFirstCapture()
{
    const AnalogDesk desk;
    QVERIFY(!desk.gen.isComplete());
    QVERIFY(!desk.gen.timeTicks().empty());
    const QImage picture = desk.picture();
    const int x = desk.gen.timeTicks()[1].x;
    QVERIFY(picture.pixel(x, 0) == gGreys[2].rgb() || picture.pixel(x, 1) == gGreys[2].rgb());
}

void TstAnalogArea::aSampleStandsAboveItsDigitalEdge_data()
{
    QTest::addColumn<int>("dpi");
    QTest::addColumn<int>("samplesPerColumn");
    QTest::newRow("96, a sample a column") << 96 << 1;
    QTest::newRow("96, ten samples a column") << 96 << 10;
    QTest::newRow("192, a sample a column") << 192 << 1;
    QTest::newRow("192, ten samples a column") << 192 << 10;
}

void TstAnalogArea::aSampleStandsAboveItsDigitalEdge()
{
    QFETCH(int, dpi);
    QFETCH(int, samplesPerColumn);
    resetProgram(dpi);
    AnalogDesk desk({dp(1190), dp(800)});
    desk.part<QCheckBox>(1, "enable")->click();
    fillStep(desk, desk.gen.viewWidth() * samplesPerColumn);
    QCOMPARE(desk.gen.ratioSasPix(), double(samplesPerColumn));
    const QImage picture = desk.picture();
    const int s = uiScale();
    // The edge of the digital row: the only column with a stroke at mid-height.
    const QRect row = desk.place<ItemWaveLine>(0);
    int edge = 0;
    while (edge < picture.width() && !isTraceAt(picture, edge, row.center().y())) {
        ++edge;
    }
    QCOMPARE(edge / s, desk.gen.viewWidth() / 2);
    // The analog step goes from the column before to the same one: high from there on, low before it.
    const int zero = desk.area().zeroY(0);
    const int high = zero - int(1000.0 * desk.height() / 10'000) + s / 2; // 25 of 255 steps of ten volts
    const int low = zero + int(1000.0 * desk.height() / 10'000) + s / 2;
    const auto nearRow = [&](int x, int y) {
        bool found = false;
        for (int d = -2 * s; d <= 2 * s; ++d) {
            found = found || isTraceAt(picture, x, y + d);
        }
        return found;
    };
    QVERIFY(nearRow(edge + s, high));
    QVERIFY(!nearRow(edge + s, low));
    QVERIFY(nearRow(edge - 2 * s, low));
    QVERIFY(!nearRow(edge - 2 * s, high));
}

void TstAnalogArea::whereASampleSpansColumnsItStandsAboveItsDigitalEdgeToo_data()
{
    QTest::addColumn<double>("start");
    QTest::addColumn<double>("ratio");
    QTest::newRow("from a sample on") << 1480.0 << 0.05;
    QTest::newRow("from within a sample") << 1480.75 << 0.05;
    QTest::newRow("shortly before the next one") << 1499.0 + 63.0 / 64 << 0.01;
    QTest::newRow("two columns a sample") << 1300.5 << 0.5;
    QTest::newRow("one column a sample") << 1030.5 << 1.0;
    QTest::newRow("before the first sample") << -3.5 << 0.6;
}

void TstAnalogArea::whereASampleSpansColumnsItStandsAboveItsDigitalEdgeToo()
{
    QFETCH(double, start);
    QFETCH(double, ratio);
    AnalogDesk desk;
    fillStep(desk, start < 0 ? 1000 : 3000);
    desk.gen.setRatioKeepStart(ratio);
    desk.gen.setViewStart(start);
    const std::span<const SmpWaveRun> row = desk.gen.digLine(0);
    const auto edge = std::find_if(row.begin(), row.end(), [](const SmpWaveRun &run) { return run.kind == 2; });
    QVERIFY(edge != row.end());
    const std::span<const SmpAChnPoint> trace = desk.gen.aChnLine(0);
    const auto high =
        std::find_if(trace.begin(), trace.end(), [](const SmpAChnPoint &point) { return point.value > 0; });
    QVERIFY(high != trace.end());
    QCOMPARE(high->x, edge->x);
    // From one end of the view to the other.
    QVERIFY(trace.front().x <= std::max(0.0, -start / ratio));
    QVERIFY(trace.back().x >= desk.gen.viewWidth() - 1);
}

void TstAnalogArea::theTraceEndsWhereTheDigitalOneEnds()
{
    resetProgram(192);
    AnalogDesk desk({dp(1190), dp(800)});
    fillStep(desk, desk.gen.viewWidth());
    const QImage picture = desk.picture();
    const int x = (desk.gen.viewWidth() - 20) * 2; // the scroll bar lies over the last ten
    bool found = false;
    for (int y = 0; y < desk.height(); ++y) {
        found = found || isTraceAt(picture, x, y);
    }
    QVERIFY(found);
}

void TstAnalogArea::aValueStandsAtItsHeightAboveTheZeroLevel()
{
    AnalogDesk desk;
    desk.part<QCheckBox>(1, "enable")->click();
    desk.fill(
        1000, [](int, int) { return 25; }, capture().channels(16, 2));
    // (25 + 128) * 10000 / 255 - 5000 = 1000 mV, of 10 V in 336 pixels: 33.6
    const int y = int(desk.area().zeroY(0) - 1000.0 * mixedHeight / 10'000);
    const QImage picture = desk.picture();
    for (const int x : {3, 500, 980}) {
        QVERIFY(isTraceAt(picture, x, y));
        QVERIFY(!isTraceAt(picture, x, y - 2));
        QVERIFY(!isTraceAt(picture, x, y + 2));
    }
}

void TstAnalogArea::belowASampleAColumnStraightStrokesJoinTheSamples()
{
    AnalogDesk desk;
    desk.part<QCheckBox>(1, "enable")->click();
    fillAlternating(desk, 1000);
    desk.gen.setViewStart(0);
    desk.gen.setRatioKeepStart(0.05); // a sample each 20 columns
    const QImage picture = desk.picture();
    const int zero = desk.area().zeroY(0);
    const int step = mixedHeight / 10; // a volt
    for (int sample = 1; sample < 20; ++sample) {
        const int x = sample * 20;
        const int y = sample % 2 == 0 ? zero - step : zero + step;
        QVERIFY(isTraceNear(picture, x, y));
        QVERIFY(isTraceNear(picture, x + 10, zero));
        QVERIFY(!isTraceNear(picture, x, zero));
        QVERIFY(!isTraceNear(picture, x + 10, y));
    }
}

void TstAnalogArea::aboveASampleAColumnAFastSignalAliases()
{
    AnalogDesk desk;
    desk.part<QCheckBox>(1, "enable")->click();
    fillAlternating(desk, desk.gen.viewWidth() * 2);
    QCOMPARE(desk.gen.ratioSasPix(), 2.0);
    const QImage picture = desk.picture();
    const int zero = desk.area().zeroY(0);
    const int step = mixedHeight / 10;
    // Of two samples, one up and one down, a column takes the first.
    for (int x = 3; x < 980; x += 7) {
        QVERIFY(isTraceNear(picture, x, zero - step));
        QVERIFY(!isTraceNear(picture, x, zero));
        QVERIFY(!isTraceNear(picture, x, zero + step));
    }
}

void TstAnalogArea::aReversedTraceIsMirroredAtOnce()
{
    AnalogDesk desk;
    desk.part<QCheckBox>(1, "enable")->click();
    desk.fill(
        1000, [](int, int) { return 25; }, capture().channels(16, 2));
    AnalogDesk::clickOn(desk.part<QWidget>(0, "setting"));
    QSignalSpy repainted(desk.waves->scene(), &QGraphicsScene::changed);
    QCoreApplication::processEvents(); // of the capture
    repainted.clear();
    desk.part<QCheckBox>("reverse")->click();
    QVERIFY(gDev->aChnReverse.at(0));
    QTRY_VERIFY(!repainted.isEmpty());
    const int y = int(desk.area().zeroY(0) + 1000.0 * mixedHeight / 10'000);
    const QImage picture = desk.picture();
    QVERIFY(isTraceAt(picture, 500, y));
    QVERIFY(!isTraceAt(picture, 500, 2 * desk.area().zeroY(0) - y));
    desk.part<MenuDialog>("extend")->close();
}

void TstAnalogArea::aChannelThatIsOffIsNotDrawn()
{
    AnalogDesk desk;
    desk.fill(
        1000, [](int chn, int) { return chn == 0 ? 25 : 77; }, capture().channels(16, 2));
    const int y = int(desk.area().zeroY(0) - 1000.0 * mixedHeight / 10'000);
    QVERIFY(isTraceAt(desk.picture(), 500, y));
    desk.part<QCheckBox>(0, "enable")->click();
    QVERIFY(!isTraceAt(desk.picture(), 500, y));
    QVERIFY(!desk.tag(0)->isVisible());
    QVERIFY(desk.tag(1)->isVisible());
}

void TstAnalogArea::aTraceBeyondTheAreaDoesNotCrossTheRows()
{
    AnalogDesk desk;
    desk.part<QCheckBox>(1, "enable")->click();
    const WaveCapture low = capture().channels(16, 2).pulses(0, {999}); // a flat row
    desk.fill(
        1000, [](int, int) { return 0; }, low);
    const QImage before = desk.picture();
    AnalogDesk::choose(desk.part<QComboBox>(0, "volt"), QStringLiteral("50mV/div"));
    desk.fill(
        1000, [](int, int sample) { return sample % 2 == 0 ? -128 : 127; }, low);
    const QImage after = desk.picture();
    const QRect rows(0, mixedHeight, before.width(), before.height() - mixedHeight);
    QCOMPARE(after.copy(rows), before.copy(rows));
    QVERIFY(isTraceAt(after, 501, 5));
    QVERIFY(isTraceAt(after, 501, mixedHeight - 5));
}

void TstAnalogArea::tracesTakeTheirChannelsColoursByTheOption()
{
    AnalogDesk desk;
    desk.fill(
        1000, [](int, int) { return 25; }, capture().channels(16, 2));
    const auto colorOf = [&desk](int chn) {
        const int y = int(desk.area().zeroY(chn) - 1000.0 * mixedHeight / 10'000);
        return QColor(desk.picture().pixel(503, y));
    };
    QCOMPARE(colorOf(0), gGreys[0]);
    QCOMPARE(colorOf(1), gGreys[1]);
    colorWaveform = true;
    desk.view.refreshWave();
    QCOMPARE(colorOf(0).rgb(), gChnColors[0].lighter(120).rgb());
    QCOMPARE(colorOf(1).rgb(), gChnColors[1].lighter(120).rgb());
    colorWaveform = false;
}

void TstAnalogArea::aFullScaleOfZeroDrawsNothing()
{
    AnalogDesk desk;
    const QImage before = desk.picture();
    desk.fill(
        1000, [](int, int) { return 25; }, capture().channels(16, 2));
    const QImage traces = desk.picture();
    desk.view.slotChnSetChangedACH(13, 0, 0);
    desk.view.slotChnSetChangedACH(13, 1, 0);
    const QImage none = desk.picture();
    int seen = 0;
    int left = 0;
    for (int y = 0; y < mixedHeight; ++y) {
        seen += isTraceAt(traces, 503, y) ? 1 : 0;
        left += isTraceAt(none, 503, y) ? 1 : 0;
    }
    QCOMPARE(seen, 2);
    QCOMPARE(left, 0);
}

void TstAnalogArea::withoutAHeightNothingIsPainted()
{
    AnalogDesk desk;
    desk.fill(
        1000, [](int, int) { return 25; }, capture().channels(16, 2));
    ItemAChWaveBackground grid(&desk.gen);
    ItemAChnWaveLine traces(2, &desk.gen);
    traces.setFullScale(0, 10'000);
    QImage image(100, 10, QImage::Format_RGB32);
    image.fill(Qt::magenta);
    const QImage before = image;
    QPainter painter(&image);
    QStyleOptionGraphicsItem option;
    option.exposedRect = QRectF(0, 0, 100, 10);
    for (WaveItem *item : {static_cast<WaveItem *>(&grid), static_cast<WaveItem *>(&traces)}) {
        item->setSize({100, 0});
        item->paint(&painter, &option, nullptr);
    }
    painter.end();
    QCOMPARE(image, before);
}

void TstAnalogArea::aSimulatedCaptureShowsTheAreaWithoutTraces()
{
    AnalogDesk desk;
    capture().channels(16, 2).samples(1000).pulses(0, {500}).fill(*gDev->smpData);
    for (int chn = 0; chn < 2; ++chn) {
        SmpWriter(*gDev->smpData).aChnBuf(chn)->count = 0; // a simulated capture writes no analog samples
    }
    desk.view.clearForNewData();
    desk.gen.dataReady();
    desk.gen.zoomFit();
    const QImage picture = desk.picture();
    for (int y = 0; y < mixedHeight; ++y) {
        QVERIFY(!isTraceAt(picture, 503, y));
    }
}

// ---- flags of the zero levels

void TstAnalogArea::flagsStartAtThreeAndSevenTenthsAndAreStored()
{
    const AnalogDesk desk;
    QCOMPARE(desk.tag(0)->centre(), 100); // 100.8
    QCOMPARE(desk.tag(1)->centre(), 235); // 235.2
    QCOMPARE(storedPlaces(), QStringLiteral("100,336,235,336"));
    QCOMPARE(desk.area().zeroY(0), 100);
    QCOMPARE(desk.area().zeroY(1), 235);
    QCOMPARE(desk.tag(0)->size(), QSize(11, 11));
}

void TstAnalogArea::aFlagIsDraggedAndItsTraceFollows()
{
    AnalogDesk desk;
    desk.part<QCheckBox>(1, "enable")->click();
    desk.fill(
        1000, [](int, int) { return 25; }, capture().channels(16, 2));
    AnalogDesk::drag(desk.tag(0), 50);
    QCOMPARE(desk.tag(0)->centre(), 150);
    QCOMPARE(desk.area().zeroY(0), 150);
    QCOMPARE(storedPlaces(), QStringLiteral("150,336,235,336"));
    const QImage picture = desk.picture();
    QVERIFY(isTraceAt(picture, 503, 150 - 34));
    QVERIFY(!isTraceAt(picture, 503, 100 - 34));
}

void TstAnalogArea::aFlagStaysWithinTheArea()
{
    AnalogDesk desk;
    AnalogDesk::drag(desk.tag(0), -101);
    QCOMPARE(desk.tag(0)->centre(), 100);
    AnalogDesk::drag(desk.tag(0), -100);
    QCOMPARE(desk.tag(0)->centre(), 0);
    AnalogDesk::drag(desk.tag(0), mixedHeight + 1);
    QCOMPARE(desk.tag(0)->centre(), 0);
    AnalogDesk::drag(desk.tag(0), mixedHeight);
    QCOMPARE(desk.tag(0)->centre(), mixedHeight);
}

void TstAnalogArea::aFlagKeepsItsPartOfTheHeight()
{
    AnalogDesk desk;
    AnalogDesk::drag(desk.tag(0), 68); // at the middle
    QCOMPARE(desk.area().zeroY(0), mixedHeight / 2);
    desk.view.resize(1190, 1440); // 24 units of 60
    QCOMPARE(desk.height(), 480);
    QCOMPARE(desk.area().zeroY(0), 240);
    QCOMPARE(desk.tag(0)->centre(), 240);
    desk.view.resize(1190, 800);
    QCOMPARE(desk.area().zeroY(0), mixedHeight / 2);
}

void TstAnalogArea::arrowsAndPageKeysMoveAFlag()
{
    AnalogDesk desk;
    const double ratio = desk.gen.ratioSasPix();
    AnalogDesk::pressKey(desk.tag(0), Qt::Key_Up);
    QCOMPARE(desk.area().zeroY(0), 99);
    AnalogDesk::pressKey(desk.tag(0), Qt::Key_Down);
    AnalogDesk::pressKey(desk.tag(0), Qt::Key_PageDown);
    QCOMPARE(desk.area().zeroY(0), 110);
    AnalogDesk::pressKey(desk.tag(0), Qt::Key_PageUp);
    QCOMPARE(storedPlaces(), QStringLiteral("100,336,235,336"));
    QCOMPARE(desk.gen.ratioSasPix(), ratio); // the arrows zoom elsewhere
}

void TstAnalogArea::aMoveWithoutTheButtonOrWithAnotherOneMovesNoFlag()
{
    AnalogDesk desk;
    QTest::mousePress(desk.tag(0), Qt::RightButton, {}, QPoint(5, 5));
    AnalogDesk::moveHeld(desk.tag(0), QPoint(5, 50));
    QTest::mouseRelease(desk.tag(0), Qt::RightButton, {}, QPoint(5, 5));
    QTest::mousePress(desk.tag(0), Qt::LeftButton, {}, QPoint(5, 5));
    QTest::mouseRelease(desk.tag(0), Qt::LeftButton, {}, QPoint(5, 5));
    AnalogDesk::moveHeld(desk.tag(0), QPoint(5, 50));
    QCOMPARE(desk.area().zeroY(0), 100);
}

void TstAnalogArea::storedPlacesThatAreNoneAreReplaced_data()
{
    QTest::addColumn<QString>("places");
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("second");
    QTest::newRow("another height") << "50,100,25,100" << 168 << 84;
    QTest::newRow("one flag only") << "50,100" << 168 << 235;
    QTest::newRow("a height of zero") << "50,0,25,100" << 100 << 84;
    QTest::newRow("a negative height") << "50,-100,25,100" << 100 << 84;
    QTest::newRow("below the area") << "101,100,25,100" << 100 << 84;
    QTest::newRow("above the area") << "-1,100,25,100" << 100 << 84;
    QTest::newRow("no numbers") << "a,b,c,d" << 100 << 235;
    QTest::newRow("huge") << "2147483647,2147483647,0,2147483647" << 336 << 0;
}

void TstAnalogArea::storedPlacesThatAreNoneAreReplaced()
{
    QFETCH(QString, places);
    globalSet(QStringLiteral("AChnHorLabelPos"), places);
    const AnalogDesk desk;
    QTEST(desk.area().zeroY(0), "first");
    QTEST(desk.area().zeroY(1), "second");
}

void TstAnalogArea::aMoveIsToldToWhomReadsVoltages()
{
    AnalogDesk desk;
    QSignalSpy told(&desk.view, &MainView::aChnScaleChanged);
    AnalogDesk::pressKey(desk.tag(1), Qt::Key_Up);
    QCOMPARE(told.size(), 1);
    QCOMPARE(told.takeFirst().constFirst().toInt(), 1);
    AnalogDesk::choose(desk.part<QComboBox>(0, "volt"), QStringLiteral("50mV/div"));
    QCOMPARE(told.takeFirst().constFirst().toInt(), 0);
    told.clear();
    AnalogDesk::clickOn(desk.part<QWidget>(0, "probe"));
    QVERIFY(told.isEmpty());
}

// ---- the flag of the trigger

void TstAnalogArea::theTriggerFlagStandsAtItsLevel()
{
    AnalogDesk desk;
    QCOMPARE(desk.trigTag()->centre(), 100);
    AnalogDesk::type(desk.part<QSpinBox>("trigLevel"), QStringLiteral("1000"));
    QCOMPARE(desk.trigTag()->centre(), 66); // 100 - 33.6
    AnalogDesk::clickOn(desk.part<QWidget>("trigLevelZero"));
    QCOMPARE(desk.trigTag()->centre(), 100);
}

void TstAnalogArea::draggingTheTriggerFlagSetsTheLevel()
{
    AnalogDesk desk;
    AnalogDesk::drag(desk.trigTag(), -42);
    QCOMPARE(desk.part<QSpinBox>("trigLevel")->value(), 1250); // 42 of 336 pixels, of 10 V
    QCOMPARE(storedOfDevice("ATrigValue"), QStringLiteral("1250"));
    QCOMPARE(desk.trigTag()->centre(), 58);
    AnalogDesk::drag(desk.trigTag(), -59); // beyond the top
    QCOMPARE(desk.part<QSpinBox>("trigLevel")->value(), 1250);
}

void TstAnalogArea::theTriggerFlagSnapsToWholeMillivolts()
{
    AnalogDesk desk;
    AnalogDesk::choose(desk.part<QComboBox>(0, "volt"), QStringLiteral("1V/div"));
    AnalogDesk::drag(desk.trigTag(), 50);
    const int level = desk.part<QSpinBox>("trigLevel")->value();
    QCOMPARE(level, -1488); // 1488.1
    QCOMPARE(desk.trigTag()->centre(), int(100 - level * 336.0 / 10'000));
}

void TstAnalogArea::arrowKeysMoveTheTriggerByAFiftiethOfADivision()
{
    AnalogDesk desk;
    AnalogDesk::pressKey(desk.trigTag(), Qt::Key_Up);
    QCOMPARE(desk.part<QSpinBox>("trigLevel")->value(), 20);
    AnalogDesk::pressKey(desk.trigTag(), Qt::Key_PageDown);
    QCOMPARE(desk.part<QSpinBox>("trigLevel")->value(), -180);
    QCOMPARE(storedOfDevice("ATrigValue"), QStringLiteral("-180"));
}

void TstAnalogArea::aLevelBeyondTheAreaStandsAtItsEdge()
{
    AnalogDesk desk;
    AnalogDesk::type(desk.part<QSpinBox>("trigLevel"), QStringLiteral("32767"));
    QCOMPARE(desk.trigTag()->centre(), 0);
    AnalogDesk::type(desk.part<QSpinBox>("trigLevel"), QStringLiteral("-32768"));
    QCOMPARE(desk.trigTag()->centre(), mixedHeight - 1);
}

void TstAnalogArea::theTriggerFlagFollowsTheZeroLevelOfItsChannelOnly()
{
    AnalogDesk desk;
    AnalogDesk::drag(desk.tag(1), 20);
    QCOMPARE(desk.trigTag()->centre(), 100);
    AnalogDesk::drag(desk.tag(0), 20);
    QCOMPARE(desk.trigTag()->centre(), 120);
    AnalogDesk::clickOn(desk.part<QWidget>("trigChannel"));
    QCOMPARE(desk.trigTag()->centre(), 255);
    QCOMPARE(desk.trigTag()->channel(), 1);
}

void TstAnalogArea::theTriggerFlagFollowsTheVoltsPerDivision()
{
    AnalogDesk desk;
    AnalogDesk::type(desk.part<QSpinBox>("trigLevel"), QStringLiteral("1000"));
    AnalogDesk::choose(desk.part<QComboBox>(1, "volt"), QStringLiteral("500mV/div"));
    QCOMPARE(desk.trigTag()->centre(), 66);
    AnalogDesk::choose(desk.part<QComboBox>(0, "volt"), QStringLiteral("500mV/div"));
    QCOMPARE(desk.trigTag()->centre(), 32); // 100 - 67.2
}

void TstAnalogArea::aTriggerFlagWithoutAFullScaleStaysWhereItIs()
{
    AnalogDesk desk;
    AnalogDesk::type(desk.part<QSpinBox>("trigLevel"), QStringLiteral("1000"));
    auto *volt = desk.part<QComboBox>(0, "volt");
    volt->setCurrentIndex(-1); // no text, which is no number
    QCOMPARE(desk.area().fullScaleMv(0), 0);
    QCOMPARE(desk.trigTag()->centre(), 66);
    AnalogDesk::drag(desk.trigTag(), 30);
    AnalogDesk::drag(desk.tag(0), 30);
    QCOMPARE(desk.trigTag()->centre(), 66);
    QCOMPARE(desk.part<QSpinBox>("trigLevel")->value(), 1000);
}

void TstAnalogArea::theFlagsOfZeroAndTriggerDoNotHideEachOther()
{
    const AnalogDesk desk;
    QCOMPARE(desk.tag(0)->y(), desk.trigTag()->y());
    QVERIFY(!desk.tag(0)->geometry().intersects(desk.trigTag()->geometry()));
    const auto shapeOf = [](AChnTAG *flag) { return flag->grab().toImage(); };
    QVERIFY(shapeOf(desk.tag(0)) != shapeOf(desk.trigTag()));
}

// ---- keys

void TstAnalogArea::tabWalksFromTheAnalogControlsToTheRows()
{
    AnalogDesk desk;
    QWidget *first = desk.part<QWidget>(0, "enable");
    first->setFocus();
    QStringList walked;
    for (int i = 0; i < 30 && !walked.contains(QStringLiteral("number")); ++i) {
        walked.append(QApplication::focusWidget()->objectName());
        QTest::keyClick(&desk.view, Qt::Key_Tab);
    }
    QCOMPARE(walked, QStringLiteral("enable,probe,setting,volt,enable,probe,setting,volt,trigEnable,trigSetting,"
                                    "trigChannel,btnPosEdge,btnNegEdge,trigLevel,trigLevelZero,trigPosition,"
                                    "trigPositionZero,tag0,tag1,trigTag,number")
                         .split(QLatin1Char(',')));
    QTest::keyClick(&desk.view, Qt::Key_Backtab);
}

void TstAnalogArea::everyControlTellsItsNameToAScreenReader()
{
    const AnalogDesk desk;
    QStringList names;
    for (const QWidget *control : desk.column()->tabStops()) {
        QVERIFY2(!control->accessibleName().isEmpty(), qPrintable(control->objectName()));
        QVERIFY2(!names.contains(control->accessibleName()), qPrintable(control->accessibleName()));
        names.append(control->accessibleName());
    }
    QVERIFY(names.contains(QStringLiteral("CH2, Zero level")));
}

void TstAnalogArea::aControlReachedByTabIsBroughtIntoView()
{
    AnalogDesk desk({1190, 200});
    QScrollBar *bar = desk.view.findChild<QScrollArea *>()->verticalScrollBar();
    QCOMPARE(bar->value(), 0);
    desk.part<QWidget>("trigPosition")->setFocus();
    QTest::keyClick(&desk.view, Qt::Key_Tab);
    const QWidget *focused = QApplication::focusWidget();
    QCOMPARE(focused->objectName(), QStringLiteral("trigPositionZero"));
    QVERIFY(bar->value() > 0);
    QVERIFY(!focused->visibleRegion().isEmpty());
}

QTEST_MAIN(TstAnalogArea)
#include "tst_AnalogArea.moc"
