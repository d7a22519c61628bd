#include "settings/Globals.h"
#include "store/SmpWriter.h"
#include "wave/AllocationCount.h"
#include "wave/WaveCapture.h"
#include "wave/WaveDataGen.h"
#include "wave/WaveViewer.h"

#include <QtTest>

#include <cmath>
#include <functional>
#include <limits>

namespace {

constexpr std::int64_t longest = (std::int64_t(1) << 40) - 1;

QByteArray tickLabels(const WaveDataGen &gen)
{
    QByteArrayList texts;
    for (const TimeTick &tick : gen.timeTicks()) {
        texts << QByteArray(tick.text);
    }
    return texts.join(' ');
}

} // namespace

/// What the calls of the main thread do at once. Animations are tested apart.
class TstWaveDataGen : public QObject {
    Q_OBJECT
private slots:
    void init();
    void theGlobalPointsToTheOneGenerator();
    void aNewSourceHasNoColumnsUntilTheNextWidth();
    void indicesPastTheListsGiveNothing();
    void aProbeFactorIsOneUntilItIsSet();
    void widthsAreCutToWhatAScreenCanHave();
    void theFirstRatioIsZeroAndRefusesToZoomIn();
    void aConstantChannelIsOneRunUpToTheEndOfTheData();
    void aChannelThatWasNotCapturedHasNoLine();
    void aDenseChannelYieldsOneMarkPerColumn();
    void aWindowThatStartsBeforeTheDataLeavesItsFirstColumnsFree();
    void atTheDeepestZoomOneSampleSpansAHundredColumns();
    void aWindowFarFromTheDataHasNoLines_data();
    void aWindowFarFromTheDataHasNoLines();
    void anAnalogLineTakesOneSamplePerColumn();
    void anAnalogLineStartsBehindTheColumnsBeforeTheData();
    void aCaptureOfOneSampleFillsTheView();
    void theLongestCaptureFillsTheView();
    void aCaptureInProgressIsInvisible();
    void timeZeroIsTheTrigger();
    void aDigitalModelWithoutCaptureHasNoTicks();
    void anAnalogModelWithoutCaptureTakesTheSetRate();
    void aCaptureWithoutARateHasNoTicks();
    void updatingTheLinesAllocatesNothing();
    void updatingTheLinesEmitsNothing();
    void newDataOfADigitalModelEmitTheParametersAndThenTheView();
    void newDataIsPlacedByTheViewState_data();
    void newDataIsPlacedByTheViewState();
    void theSamePlaceIsRelativeToTheTriggerBefore();
    void newDataMendARatioThatWasLost();
    void dataThatComeBeforeTheFirstLayoutArePlacedByIt();
    void allFillsTheViewWithTheCapture();
    void theTriggerComesToTheMiddle();
    void aTriggerNearTheStartIsInTheMiddleForAMoment();
    void theStepsZoomAboutTheMiddleColumn();
    void aStepInStopsAtTheDeepestRatio();
    void aTypedRatioHoldsTheMiddleSample();
    void aRangeFillsTheMiddleHalf();
    void aRangeAtTheStartFillsTheMiddleHalfForAMoment();
    void scrollingStoresAnyStart();
    void thePreviousEdgeComesToTheMiddle();
    void thePreviousEdgeOfNoneIsTheStartOfTheData();
    void theNextEdgeBehindTheViewComesToTheMiddle();
    void theNextEdgeOfNoneIsTheEndOfTheData();
    void aNewWidthOfTheAnalogModelKeepsTheStart();
    void aNewWidthOfTheAnalogModelWithoutDataCentresSampleZero();
    void withoutAnimationZoomingIsDoneAtOnce();
    void everyCallIsHarmless_data();
    void everyCallIsHarmless();
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

void TstWaveDataGen::aNewSourceHasNoColumnsUntilTheNextWidth()
{
    const auto data = capture().channels(2, 2).build();
    WaveViewer view(data.get());
    view.gen.zoomFit();
    QVERIFY(!view.gen.digLine(1).empty());
    QVERIFY(!view.gen.aChnLine(1).empty());
    QVERIFY(!view.gen.timeTicks().empty());
    view.gen.setDataSource(data.get());
    QCOMPARE(view.gen.viewWidth(), 0);
    QVERIFY(view.gen.digLine(1).empty());
    QVERIFY(view.gen.aChnLine(1).empty());
    QVERIFY(view.gen.timeTicks().empty());
    view.gen.setViewWidth(700);
    QCOMPARE(view.gen.viewWidth(), 700);
    QVERIFY(view.gen.digLine(1).empty());
    view.gen.updateLines();
    QVERIFY(!view.gen.digLine(1).empty());
}

void TstWaveDataGen::indicesPastTheListsGiveNothing()
{
    const auto data = capture().channels(2, 2).build();
    WaveViewer view(data.get());
    view.gen.zoomFit();
    for (const int chn : {-1, 2, 1000000}) {
        QVERIFY(view.gen.digLine(chn).empty());
        QVERIFY(view.gen.aChnLine(chn).empty());
        QCOMPARE(view.gen.aChnParamText(chn), QString());
    }
    QCOMPARE(view.gen.aChnParamText(1), QString());
}

void TstWaveDataGen::aProbeFactorIsOneUntilItIsSet()
{
    WaveDataGen gen;
    gen.setAChnProbe(2, 10);
    gen.setAChnProbe(-1, 10);
    QCOMPARE(gen.aChnProbe(0), 1);
    QCOMPARE(gen.aChnProbe(2), 10);
    QCOMPARE(gen.aChnProbe(3), 1);
    QCOMPARE(gen.aChnProbe(-1), 1);
}

void TstWaveDataGen::widthsAreCutToWhatAScreenCanHave()
{
    WaveDataGen gen;
    gen.setViewWidth(-7);
    QCOMPARE(gen.viewWidth(), 0);
    gen.setViewWidth(std::numeric_limits<int>::max());
    QCOMPARE(gen.viewWidth(), WaveDataGen::maxViewWidth);
}

void TstWaveDataGen::theFirstRatioIsZeroAndRefusesToZoomIn()
{
    const auto data = capture().build();
    WaveViewer view(data.get());
    QCOMPARE(view.gen.ratioSasPix(), 0.0);
    view.gen.zoomInAt(10);
    QVERIFY(!view.gen.isAnimating());
    view.gen.zoomStepIn();
    disAnimateZoom = true;
    view.gen.zoomInAt(10);
    QVERIFY(view.refreshes.empty());
    QCOMPARE(view.gen.ratioSasPix(), 0.0);
}

void TstWaveDataGen::aConstantChannelIsOneRunUpToTheEndOfTheData()
{
    const auto data = capture().samples(1000).build();
    WaveViewer view(data.get(), 500);
    view.gen.setClampToData(false);
    view.gen.setRatioKeepStart(4.0);
    const auto line = view.gen.digLine(0);
    QCOMPARE(line.size(), std::size_t(1));
    QCOMPARE(line[0].x, 0);
    QCOMPARE(line[0].width, 250);
    QCOMPARE(line[0].kind, 0);
}

void TstWaveDataGen::aChannelThatWasNotCapturedHasNoLine()
{
    SmpData data(3, 0);
    const std::uint8_t enable[] = {1, 0, 1};
    data.begin(0, 1000, enable);
    SmpWriter(data).setSmpCount(500);
    data.finish(500);
    WaveViewer view(&data);
    view.gen.zoomFit();
    QVERIFY(!view.gen.digLine(0).empty());
    QVERIFY(view.gen.digLine(1).empty());
    QVERIFY(!view.gen.digLine(2).empty());
}

void TstWaveDataGen::aDenseChannelYieldsOneMarkPerColumn()
{
    const auto data = capture().samples(100000).dense(0).build();
    WaveViewer view(data.get(), 500);
    view.gen.zoomFit();
    const auto line = view.gen.digLine(0);
    QCOMPARE(line.size(), std::size_t(500));
    for (std::size_t i = 0; i < line.size(); ++i) {
        QCOMPARE(line[i].x, int(i));
        QCOMPARE(line[i].width, 1);
        QCOMPARE(line[i].kind, 2);
    }
}

void TstWaveDataGen::aWindowThatStartsBeforeTheDataLeavesItsFirstColumnsFree()
{
    const auto data = capture().samples(1000).pulses(0, {50}).build();
    WaveViewer view(data.get(), 500);
    view.gen.setClampToData(false);
    view.gen.setRatioKeepStart(2.0);
    view.gen.setViewStart(-101.0);
    const auto line = view.gen.digLine(0);
    QCOMPARE(line.size(), std::size_t(3));
    QCOMPARE(line[0].x, 50);
    QCOMPARE(line[1].x, 75);
    QCOMPARE(line[1].kind, 2);
    QCOMPARE(line[2].kind, 1);
}

void TstWaveDataGen::atTheDeepestZoomOneSampleSpansAHundredColumns()
{
    const auto data = capture().samples(1000).pulses(0, {2, 1}).build();
    WaveViewer view(data.get(), 1000);
    view.gen.zoomSetRatio(0.0001);
    view.gen.setViewStart(0.0);
    QCOMPARE(view.gen.ratioSasPix(), 0.01);
    const auto line = view.gen.digLine(0);
    QCOMPARE(line.size(), std::size_t(5));
    const int x[] = {0, 200, 201, 300, 301};
    const int width[] = {200, 1, 99, 1, 698};
    const int kind[] = {0, 2, 1, 2, 0};
    for (std::size_t i = 0; i < line.size(); ++i) {
        QCOMPARE(line[i].x, x[i]);
        QCOMPARE(line[i].width, width[i]);
        QCOMPARE(line[i].kind, kind[i]);
        QVERIFY(line[i].x + line[i].width <= 1000);
    }
}

void TstWaveDataGen::aWindowFarFromTheDataHasNoLines_data()
{
    QTest::addColumn<double>("start");
    QTest::newRow("just before") << -2000.0;
    QTest::newRow("just past") << 1001.0;
    QTest::newRow("far before") << -1e300;
    QTest::newRow("far past") << 1e300;
    QTest::newRow("infinitely far") << std::numeric_limits<double>::infinity();
}

void TstWaveDataGen::aWindowFarFromTheDataHasNoLines()
{
    QFETCH(double, start);
    const auto data = capture().channels(1, 1).samples(1000).build();
    WaveViewer view(data.get(), 500);
    view.gen.setClampToData(false);
    view.gen.setRatioKeepStart(2.0);
    view.gen.setViewStart(start);
    QVERIFY(view.gen.digLine(0).empty());
    QVERIFY(view.gen.aChnLine(0).empty());
}

void TstWaveDataGen::anAnalogLineTakesOneSamplePerColumn()
{
    const auto data = capture().channels(1, 2).samples(1000).build();
    WaveViewer view(data.get(), 100);
    view.gen.zoomFit();
    const auto line = view.gen.aChnLine(1);
    QCOMPARE(line.size(), std::size_t(100));
    QCOMPARE(line[0].x, 0);
    QCOMPARE(line[0].value, -5000.0);
    QCOMPARE(line[3].x, 3);
    QCOMPARE(line[3].value, 30 * 1000 * 10.0 / 255.0 - 5000.0);
}

void TstWaveDataGen::anAnalogLineStartsBehindTheColumnsBeforeTheData()
{
    const auto data = capture().channels(1, 1).samples(1000).build();
    WaveViewer view(data.get(), 100);
    view.gen.setClampToData(false);
    view.gen.setRatioKeepStart(4.0);
    view.gen.setViewStart(-40.0);
    QCOMPARE(view.gen.aChnLine(0).size(), std::size_t(90));
    QCOMPARE(view.gen.aChnLine(0)[0].x, 10);
}

void TstWaveDataGen::aCaptureOfOneSampleFillsTheView()
{
    const auto data = capture().channels(1, 1).samples(1).build();
    WaveViewer view(data.get(), 500);
    view.gen.dataReady();
    QCOMPARE(view.gen.ratioSasPix(), 1.0 / 500);
    QCOMPARE(view.gen.viewStart(), 0.0);
    QCOMPARE(view.gen.digLine(0).size(), std::size_t(1));
    QCOMPARE(view.gen.digLine(0)[0].width, 499);
    QCOMPARE(view.gen.aChnLine(0).size(), std::size_t(1));
    QVERIFY(!view.gen.timeTicks().empty());
}

void TstWaveDataGen::theLongestCaptureFillsTheView()
{
    const auto data = capture().samples(longest).trigger(longest / 2).rate(500'000'000).build();
    WaveViewer view(data.get(), 500);
    view.gen.dataReady();
    QCOMPARE(view.gen.ratioSasPix(), double(longest) / 500);
    QCOMPARE(view.gen.viewStart(), 0.0);
    QCOMPARE(view.gen.digLine(0).size(), std::size_t(1));
    QVERIFY(!view.gen.timeTicks().empty());
    view.gen.zoomSetRatio(0.01);
    view.gen.setViewStart(double(longest) - 2.0);
    QCOMPARE(view.gen.digLine(0).size(), std::size_t(1));
    QCOMPARE(view.gen.digLine(0)[0].width, 200);
}

void TstWaveDataGen::aCaptureInProgressIsInvisible()
{
    const auto data = capture().channels(1, 0).samples(1000).build();
    WaveViewer view(data.get(), 500);
    view.gen.zoomFit();
    data->open();
    view.gen.updateLines();
    QVERIFY(view.gen.digLine(0).empty());
    QVERIFY(view.gen.timeTicks().empty());
    view.gen.jumpNextEdge(0);
    QCOMPARE(view.gen.viewStart(), -500.0);
}

void TstWaveDataGen::timeZeroIsTheTrigger()
{
    const auto data = capture().samples(1050).rate(1'000'000).trigger(200).build();
    WaveViewer view(data.get(), 1050);
    view.gen.zoomFit();
    QCOMPARE(tickLabels(view.gen), QByteArray("+800us +900us 0 +100us +200us +300us +400us +500us +600us +700us "
                                              "+800us"));
    QCOMPARE(view.gen.timeTicks()[2].x, 200);
    QCOMPARE(view.gen.timeTicks()[2].kind, 0);
}

void TstWaveDataGen::aDigitalModelWithoutCaptureHasNoTicks()
{
    const SmpData data(8, 0);
    WaveViewer view(&data);
    view.gen.setSampleRateHz(1'000'000);
    view.gen.setRatioKeepStart(1.0);
    QVERIFY(view.gen.timeTicks().empty());
}

void TstWaveDataGen::anAnalogModelWithoutCaptureTakesTheSetRate()
{
    const SmpData data(8, 2);
    WaveViewer view(&data);
    view.gen.setRatioKeepStart(1.0);
    QVERIFY(view.gen.timeTicks().empty());
    view.gen.setSampleRateHz(1'000'000);
    view.gen.updateLines();
    QCOMPARE(view.gen.viewStart(), -500.0);
    QCOMPARE(tickLabels(view.gen), QByteArray("+500us +600us +700us +800us +900us 0 +100us +200us +300us +400us"));
}

void TstWaveDataGen::aCaptureWithoutARateHasNoTicks()
{
    for (const std::int64_t rate : {std::int64_t(0), std::int64_t(-5), std::numeric_limits<std::int64_t>::min()}) {
        const auto data = capture().rate(rate).build();
        WaveViewer view(data.get());
        view.gen.zoomFit();
        QVERIFY(view.gen.timeTicks().empty());
        QVERIFY(!view.gen.digLine(0).empty());
    }
}

void TstWaveDataGen::updatingTheLinesAllocatesNothing()
{
    const auto data = capture().channels(4, 2).samples(100000).dense(0).pulses(1, {5, 70, 900}).build();
    WaveViewer view(data.get(), 1920);
    view.gen.zoomFit();
    const std::size_t before = allocationCount;
    view.gen.updateLines();
    const std::size_t taken = allocationCount - before;
    QCOMPARE(taken, std::size_t(0));
}

void TstWaveDataGen::updatingTheLinesEmitsNothing()
{
    const auto data = capture().build();
    WaveViewer view(data.get());
    view.gen.updateLines();
    QVERIFY(view.refreshes.empty());
}

void TstWaveDataGen::newDataOfADigitalModelEmitTheParametersAndThenTheView()
{
    const auto data = capture().channels(1).build();
    WaveViewer view(data.get());
    QStringList order;
    connect(&view.gen, &WaveDataGen::sigParameterRefreshAch, this, [&] { order << QStringLiteral("parameters"); });
    connect(&view.gen, &WaveDataGen::sigViewRefresh, this,
            [&](bool dec) { order << (dec ? QStringLiteral("view, decoded") : QStringLiteral("view")); });
    view.gen.dataReady();
    QCOMPARE(order.join(QLatin1Char(';')), QStringLiteral("parameters;view"));
    QCOMPARE(view.gen.aChnParamText(0), QString());
}

void TstWaveDataGen::newDataIsPlacedByTheViewState_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<double>("start");
    QTest::addColumn<double>("ratio");
    QTest::newRow("time zero in the middle") << 0 << 3500.0 << 1.0;
    QTest::newRow("everything") << 1 << 0.0 << 10.0;
    QTest::newRow("the same place") << 2 << 4500.0 << 1.0;
    QTest::newRow("any other") << 7 << 3500.0 << 1.0;
}

void TstWaveDataGen::newDataIsPlacedByTheViewState()
{
    QFETCH(int, state);
    const auto data = capture().samples(10000).trigger(4000).build();
    WaveViewer view(data.get());
    view.gen.setRatioKeepStart(1.0);
    view.gen.setViewStart(500.0);
    viewState = state;
    view.gen.dataReady();
    QTEST(view.gen.viewStart(), "start");
    QTEST(view.gen.ratioSasPix(), "ratio");
}

void TstWaveDataGen::theSamePlaceIsRelativeToTheTriggerBefore()
{
    const auto data = capture().samples(10000).trigger(4000).build();
    WaveViewer view(data.get());
    view.gen.setRatioKeepStart(1.0);
    view.gen.dataReady();
    QCOMPARE(view.gen.viewStart(), 3500.0);
    capture().samples(10000).trigger(6000).fill(*data);
    viewState = 2;
    view.gen.dataReady();
    QCOMPARE(view.gen.viewStart(), 5500.0);
}

void TstWaveDataGen::newDataMendARatioThatWasLost()
{
    const auto data = capture().samples(10000).build();
    WaveViewer view(data.get());
    view.gen.dataReady();
    data->clear();
    view.gen.zoomFit();
    QCOMPARE(view.gen.ratioSasPix(), 0.0);
    capture().samples(10000).fill(*data);
    view.gen.dataReady();
    QCOMPARE(view.gen.ratioSasPix(), 10.0);
}

void TstWaveDataGen::dataThatComeBeforeTheFirstLayoutArePlacedByIt()
{
    const auto data = capture().samples(10000).build();
    WaveViewer view(data.get(), 0);
    view.gen.dataReady();
    QVERIFY(std::isfinite(view.gen.ratioSasPix()));
    view.gen.setViewWidth(1000);
    view.gen.updateLines();
    QCOMPARE(view.gen.ratioSasPix(), 10.0);
    QVERIFY(!view.gen.digLine(0).empty());
}

void TstWaveDataGen::allFillsTheViewWithTheCapture()
{
    const auto data = capture().samples(5000).build();
    WaveViewer view(data.get());
    view.gen.zoomFit();
    QCOMPARE(view.gen.viewStart(), 0.0);
    QCOMPARE(view.gen.ratioSasPix(), 5.0);
    QCOMPARE(view.refreshes, std::vector<bool>{true});
    QVERIFY(!view.gen.isAnimating());
}

void TstWaveDataGen::theTriggerComesToTheMiddle()
{
    const auto data = capture().samples(5000).trigger(2000).build();
    WaveViewer view(data.get(), 1001);
    view.gen.zoomToTrigger();
    QCOMPARE(view.gen.ratioSasPix(), 1.0);
    QCOMPARE(view.gen.viewStart(), 1500.0);
    QCOMPARE(view.refreshes, std::vector<bool>{true});
}

void TstWaveDataGen::aTriggerNearTheStartIsInTheMiddleForAMoment()
{
    const auto data = capture().samples(5000).trigger(100).build();
    WaveViewer view(data.get(), 1001);
    view.gen.zoomToTrigger();
    QCOMPARE(view.gen.viewStart(), -400.0);
    QTRY_COMPARE(view.gen.viewStart(), 0.0);
    QCOMPARE(view.gen.ratioSasPix(), 1.0);
}

void TstWaveDataGen::theStepsZoomAboutTheMiddleColumn()
{
    const auto data = capture().samples(50000).build();
    WaveViewer view(data.get(), 1001);
    view.gen.zoomSetRatio(10.0);
    view.gen.setViewStart(1000.0);
    view.gen.zoomStepIn();
    QCOMPARE(view.gen.ratioSasPix(), 9.0);
    QCOMPARE(view.gen.viewStart(), 1500.0);
    view.gen.zoomStepOut();
    QCOMPARE(view.gen.ratioSasPix(), 9.9);
    QCOMPARE(view.gen.viewStart(), 1050.0);
    view.gen.zoomFit();
    view.gen.zoomStepOut();
    QCOMPARE(view.gen.ratioSasPix(), 50000 / 1001.0 * 1.1);
}

void TstWaveDataGen::aStepInStopsAtTheDeepestRatio()
{
    const auto data = capture().samples(50000).build();
    WaveViewer view(data.get());
    view.gen.zoomSetRatio(0.0105);
    view.gen.zoomStepIn();
    QCOMPARE(view.gen.ratioSasPix(), 0.01);
    view.refreshes.clear();
    view.gen.zoomStepIn(); // not below the limit: goes on, and stays
    QCOMPARE(view.refreshes.size(), std::size_t(1));
    view.gen.setRatioKeepStart(0.009);
    view.refreshes.clear();
    view.gen.zoomStepIn();
    QVERIFY(view.refreshes.empty());
}

void TstWaveDataGen::aTypedRatioHoldsTheMiddleSample()
{
    const auto data = capture().samples(50000).build();
    WaveViewer view(data.get());
    view.gen.zoomFit();
    view.gen.zoomSetRatio(2.0);
    QCOMPARE(view.gen.ratioSasPix(), 2.0);
    QCOMPARE(view.gen.viewStart(), 24000.0);
    view.gen.zoomSetRatio(1e9);
    QCOMPARE(view.gen.ratioSasPix(), 50.0);
}

void TstWaveDataGen::aRangeFillsTheMiddleHalf()
{
    const auto data = capture().samples(50000).build();
    WaveViewer view(data.get());
    view.gen.zoomToRange(10000.0, 10999.0);
    QCOMPARE(view.gen.ratioSasPix(), 2.0);
    QCOMPARE(view.gen.viewStart(), 9500.0);
    QCOMPARE(view.refreshes, std::vector<bool>{false});
}

void TstWaveDataGen::aRangeAtTheStartFillsTheMiddleHalfForAMoment()
{
    const auto data = capture().samples(50000).build();
    WaveViewer view(data.get());
    view.gen.zoomToRange(0.0, 999.0);
    QCOMPARE(view.gen.viewStart(), -500.0);
    QTRY_COMPARE(view.gen.viewStart(), 0.0);
    QCOMPARE(view.gen.ratioSasPix(), 2.0);
}

void TstWaveDataGen::scrollingStoresAnyStart()
{
    const auto data = capture().samples(5000).build();
    WaveViewer view(data.get());
    view.gen.zoomSetRatio(1.0);
    view.gen.setViewStart(-1000.0);
    QCOMPARE(view.gen.viewStart(), -1000.0);
    QCOMPARE(view.gen.digLine(0).size(), std::size_t(0));
    view.gen.setViewStart(1000.25);
    QCOMPARE(view.gen.viewStart(), 1000.25);
}

void TstWaveDataGen::thePreviousEdgeComesToTheMiddle()
{
    const auto data = capture().samples(5000).pulses(0, {2000, 1000}).build();
    WaveViewer view(data.get());
    view.gen.zoomSetRatio(1.0);
    view.gen.setViewStart(3000.5);
    view.gen.jumpPrevEdge(0);
    QCOMPARE(view.gen.viewStart(), 2500.0);
    view.gen.jumpPrevEdge(0);
    QCOMPARE(view.gen.viewStart(), 1500.0);
    QCOMPARE(view.gen.ratioSasPix(), 1.0);
}

void TstWaveDataGen::thePreviousEdgeOfNoneIsTheStartOfTheData()
{
    const auto data = capture().samples(5000).pulses(0, {2000}).build();
    WaveViewer view(data.get());
    view.gen.zoomSetRatio(1.0);
    for (const double start : {1999.9, -50.0}) {
        view.gen.setViewStart(start);
        view.gen.jumpPrevEdge(0);
        QCOMPARE(view.gen.viewStart(), -500.0);
    }
}

void TstWaveDataGen::theNextEdgeBehindTheViewComesToTheMiddle()
{
    const auto data = capture().samples(5000).pulses(0, {500, 500, 1, 1000}).build();
    WaveViewer view(data.get());
    view.gen.zoomSetRatio(1.0);
    view.gen.setViewStart(0.9);
    view.gen.jumpNextEdge(0); // behind sample 1000, which is an edge
    QCOMPARE(view.gen.viewStart(), 501.0);
    view.gen.jumpNextEdge(0);
    QCOMPARE(view.gen.viewStart(), 1501.0);
}

void TstWaveDataGen::theNextEdgeOfNoneIsTheEndOfTheData()
{
    const auto data = capture().channels(2).samples(5000).pulses(0, {500}).build();
    WaveViewer view(data.get());
    view.gen.zoomSetRatio(1.0);
    for (const double start : {0.0, 4500.0, 9000.0}) {
        for (const int chn : {0, 1, 2, -1}) {
            view.gen.setViewStart(start);
            view.gen.jumpNextEdge(chn);
            QCOMPARE(view.gen.viewStart(), 4500.0);
        }
    }
}

void TstWaveDataGen::aNewWidthOfTheAnalogModelKeepsTheStart()
{
    const auto data = capture().channels(1, 1).samples(5000).build();
    WaveViewer view(data.get());
    view.gen.setClampToData(false);
    view.gen.setRatioKeepStart(1.0);
    view.gen.setViewStart(-70.0);
    view.refreshes.clear();
    view.gen.setViewWidth(500);
    view.gen.setRatioKeepStart(2.0);
    QCOMPARE(view.gen.viewStart(), -70.0);
    QCOMPARE(view.gen.ratioSasPix(), 2.0);
    QCOMPARE(view.refreshes, std::vector<bool>{true});
}

void TstWaveDataGen::aNewWidthOfTheAnalogModelWithoutDataCentresSampleZero()
{
    const SmpData data(1, 1);
    WaveViewer view(&data, 800);
    view.gen.setRatioKeepStart(2.0);
    QCOMPARE(view.gen.viewStart(), -800.0);
    QCOMPARE(view.gen.ratioSasPix(), 2.0);
    QCOMPARE(view.refreshes, std::vector<bool>{false});
    QVERIFY(!view.gen.isAnimating());
}

void TstWaveDataGen::withoutAnimationZoomingIsDoneAtOnce()
{
    disAnimateZoom = true;
    const auto data = capture().samples(8000).build();
    WaveViewer view(data.get());
    view.gen.zoomFit();
    view.refreshes.clear();
    view.gen.zoomInAt(250);
    QCOMPARE(view.gen.ratioSasPix(), 4.0);
    QCOMPARE(view.gen.viewStart(), 1000.0);
    view.gen.zoomOutAt(5000); // cut to the last column
    QCOMPARE(view.gen.ratioSasPix(), 8.0);
    QCOMPARE(view.gen.viewStart(), 1000.0 - 999 * 4.0);
    QCOMPARE(view.refreshes, (std::vector<bool>{true, true}));
    view.gen.setViewStart(0.0);
    view.gen.zoomSetRatio(0.015);
    view.gen.zoomInAt(0);
    QCOMPARE(view.gen.ratioSasPix(), 0.01);
}

void TstWaveDataGen::everyCallIsHarmless_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<std::int64_t>("samples");
    QTest::addColumn<bool>("clamp");
    for (const int width : {-1, 0, 1, 2, 1000}) {
        for (const std::int64_t samples : {std::int64_t(-1), std::int64_t(0), std::int64_t(1), longest}) {
            for (const bool clamp : {false, true}) {
                QTest::addRow("%d columns, %lld samples, %d", width, static_cast<long long>(samples), int(clamp))
                    << width << samples << clamp;
            }
        }
    }
}

void TstWaveDataGen::everyCallIsHarmless()
{
    QFETCH(int, width);
    QFETCH(std::int64_t, samples);
    QFETCH(bool, clamp);
    const auto data = samples < 0 ? nullptr : capture().channels(2, 1).samples(samples).build();
    WaveViewer view(data.get(), width);
    WaveDataGen &gen = view.gen;
    gen.setClampToData(clamp);
    const double inf = std::numeric_limits<double>::infinity();
    const double odd[] = {0.0, -1.0, 0.5, 1e300, -1e300, inf, -inf, std::numeric_limits<double>::quiet_NaN()};
    std::vector<std::function<void()>> calls{
        [&] { gen.updateLines(); },    [&] { gen.dataReady(); },      [&] { gen.zoomFit(); },
        [&] { gen.zoomToTrigger(); },  [&] { gen.zoomStepIn(); },     [&] { gen.zoomStepOut(); },
        [&] { gen.jumpPrevEdge(0); },  [&] { gen.jumpNextEdge(0); },  [&] { gen.jumpPrevEdge(-1); },
        [&] { gen.jumpNextEdge(99); }, [&] { gen.zoomInAt(-50000); }, [&] { gen.zoomOutAt(50000); },
    };
    for (const double value : odd) {
        calls.emplace_back([&gen, value] { gen.setViewStart(value); });
        calls.emplace_back([&gen, value] { gen.zoomSetRatio(value); });
        calls.emplace_back([&gen, value] { gen.setRatioKeepStart(value); });
        calls.emplace_back([&gen, value] { gen.zoomToRange(value, 10.0); });
        calls.emplace_back([&gen, value] { gen.zoomToRange(10.0, value); });
    }
    for (const auto &first : calls) {
        for (const auto &second : calls) {
            first();
            second();
            QVERIFY(std::isfinite(gen.ratioSasPix()));
            QVERIFY(std::isfinite(gen.viewStart()));
            for (const TimeTick &tick : gen.timeTicks()) {
                QVERIFY(tick.x >= 0 && tick.x < width);
            }
            for (const SmpWaveRun &run : gen.digLine(0)) {
                QVERIFY(run.x >= 0 && run.x + run.width <= width);
            }
        }
    }
}

QTEST_MAIN(TstWaveDataGen)
#include "tst_WaveDataGen.moc"
