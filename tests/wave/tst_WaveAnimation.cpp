#include "settings/Globals.h"
#include "support/Tokens.h"
#include "wave/WaveCapture.h"
#include "wave/WaveDataGen.h"
#include "wave/WaveViewer.h"

#include <QElapsedTimer>
#include <QtTest>

#include <atomic>
#include <cmath>
#include <thread>

namespace {

const std::vector<bool> oneAnimation{false, false, false, false, false, false, true};

void showAll(WaveViewer &view)
{
    view.gen.zoomFit();
    view.refreshes.clear();
    view.ratios.clear();
}

/// Lets the animation show its first frame, and leaves the worker waiting for the acknowledgement.
bool showFirstFrame(WaveViewer &view)
{
    view.acknowledging = false;
    return QTest::qWaitFor([&] { return view.refreshes.size() == 1; });
}

void goOn(WaveViewer &view)
{
    view.acknowledging = true;
    view.gen.setFrameAck();
}

bool isNear(double a, double b)
{
    return std::abs(a - b) <= 1e-12 * std::abs(b);
}

} // namespace

/// What WaveDataGen's worker does, and how it meets the calls of the main thread.
class TstWaveAnimation : public QObject {
    Q_OBJECT
private slots:
    void init();
    void aZoomInHalvesTheRatioInSevenFrames();
    void aZoomOutDoublesTheRatioInSevenFrames();
    void eachFrameIsTheSeventhRootOfTwo();
    void framesComeNoFasterThanThirtyMilliseconds();
    void anOvershootIsSeenForATenthOfASecond();
    void aZoomInEndsEarlyAtTheDeepestRatio();
    void aZoomOutPastTheCaptureSpringsBack();
    void eachFrameAfterTheFirstWaitsForTheOneBefore();
    void theHomeKeySpringsBackToTheStart();
    void theEndKeySpringsBackToTheEnd();
    void withoutClampingAnOvershootStays();
    void aSettleOfAWindowInTheDataMakesNoFrame();
    void aNewZoomTakesTheAnimationOverFromTheFrameThatIsShown();
    void aZoomDuringTheOvershootIsNotLost();
    void scrollingEndsAnAnimation();
    void showingAllLetsTheAnimationGoOnFromThere();
    void aResizeLetsTheAnimationGoOnAtTheNewWidth();
    void aResizeToNothingAndBackIsSafe();
    void aNewSourceEndsTheAnimationAndItsFrames();
    void aFrameOfTheFormerSourceThatIsUnderWayIsDropped();
    void aSourceMayBeDeletedAsSoonAsItIsReplaced();
    void dataThatVanishDuringTheOvershootMakeTheRatioZero();
    void anAnimationOfTheFormerCaptureDoesNotGoOnInTheNextOne();
    void aWriterMayReplaceTheCaptureDuringAnimations();
    void manyCallsDuringAnimationsLeaveASettledView();
    void destroyingTheGeneratorEndsItsWorker_data();
    void destroyingTheGeneratorEndsItsWorker();
};

void TstWaveAnimation::init()
{
    viewState = 0;
    disAnimateZoom = false;
}

void TstWaveAnimation::aZoomInHalvesTheRatioInSevenFrames()
{
    const auto data = capture().samples(8000).build();
    WaveViewer view(data.get());
    showAll(view);
    view.gen.zoomInAt(500);
    QVERIFY(view.refreshes.empty());
    QTRY_VERIFY(!view.gen.isAnimating());
    QCOMPARE(view.refreshes, oneAnimation);
    QVERIFY(view.gen.ratioSasPix() == 4.0);
    QCOMPARE(view.gen.viewStart(), 2000.0);
    QVERIFY(view.onMainThread);
}

void TstWaveAnimation::aZoomOutDoublesTheRatioInSevenFrames()
{
    const auto data = capture().samples(100000).build();
    WaveViewer view(data.get());
    view.gen.setRatioKeepStart(3.0);
    view.gen.setViewStart(40000.0);
    view.refreshes.clear();
    view.gen.zoomOutAt(1000); // cut to the last column
    QTRY_VERIFY(!view.gen.isAnimating());
    QCOMPARE(view.refreshes, oneAnimation);
    QVERIFY(view.gen.ratioSasPix() == 6.0);
    QCOMPARE(view.gen.viewStart(), 40000.0 - 999 * 3.0);
}

void TstWaveAnimation::eachFrameIsTheSeventhRootOfTwo()
{
    const auto data = capture().samples(8000).build();
    WaveViewer view(data.get());
    showAll(view);
    view.gen.zoomInAt(0);
    QTRY_VERIFY(!view.gen.isAnimating());
    QCOMPARE(view.ratios.size(), std::size_t(7));
    for (std::size_t i = 0; i < view.ratios.size(); ++i) {
        QVERIFY(isNear(view.ratios[i], 8.0 / std::pow(2.0, double(i + 1) / 7.0)));
    }
}

void TstWaveAnimation::framesComeNoFasterThanThirtyMilliseconds()
{
    const auto data = capture().samples(8000).build();
    WaveViewer view(data.get());
    showAll(view);
    QElapsedTimer timer;
    timer.start();
    view.gen.zoomInAt(500);
    QTRY_VERIFY_WITH_TIMEOUT(!view.gen.isAnimating(), 30000);
    QVERIFY(timer.elapsed() >= 6 * 30); // a busy machine takes longer
}

void TstWaveAnimation::anOvershootIsSeenForATenthOfASecond()
{
    const auto data = capture().samples(8000).build();
    WaveViewer view(data.get());
    view.gen.setRatioKeepStart(2.0);
    QElapsedTimer timer;
    timer.start();
    view.gen.setViewStart(-1000.0);
    QTRY_VERIFY_WITH_TIMEOUT(!view.gen.isAnimating(), 30000);
    QCOMPARE(view.gen.viewStart(), 0.0);
    QVERIFY(timer.elapsed() >= 100);
}

void TstWaveAnimation::aZoomInEndsEarlyAtTheDeepestRatio()
{
    const auto data = capture().samples(8000).build();
    WaveViewer view(data.get());
    view.gen.setRatioKeepStart(0.012);
    view.refreshes.clear();
    view.gen.zoomInAt(0);
    QTRY_VERIFY(!view.gen.isAnimating());
    QCOMPARE(view.refreshes, (std::vector<bool>{false, true}));
    QCOMPARE(view.gen.ratioSasPix(), 0.01);
}

void TstWaveAnimation::aZoomOutPastTheCaptureSpringsBack()
{
    const auto data = capture().samples(8000).build();
    WaveViewer view(data.get());
    showAll(view);
    view.gen.zoomOutAt(500);
    QTRY_VERIFY(!view.gen.isAnimating());
    std::vector<bool> expected = oneAnimation;
    expected.push_back(true);
    QCOMPARE(view.refreshes, expected);
    QVERIFY(view.ratios[6] == 16.0);
    QCOMPARE(view.gen.ratioSasPix(), 8.0);
    QCOMPARE(view.gen.viewStart(), 0.0);
}

void TstWaveAnimation::eachFrameAfterTheFirstWaitsForTheOneBefore()
{
    const auto data = capture().samples(8000).build();
    WaveViewer view(data.get());
    view.acknowledging = false;
    showAll(view);
    view.gen.zoomInAt(500);
    for (std::size_t frame = 1; frame <= 7; ++frame) {
        QTRY_COMPARE(view.refreshes.size(), frame);
        view.gen.setFrameAck();
    }
    QTRY_VERIFY(!view.gen.isAnimating());
    QCOMPARE(view.refreshes, oneAnimation);
}

void TstWaveAnimation::theHomeKeySpringsBackToTheStart()
{
    const auto data = capture().samples(8000).build();
    WaveViewer view(data.get());
    view.gen.setRatioKeepStart(2.0);
    view.refreshes.clear();
    view.gen.setViewStart(-1000.0);
    QCOMPARE(view.gen.viewStart(), -1000.0);
    QTRY_VERIFY(!view.gen.isAnimating());
    QCOMPARE(view.gen.viewStart(), 0.0);
    QCOMPARE(view.gen.ratioSasPix(), 2.0);
    QCOMPARE(view.refreshes, (std::vector<bool>{true, true}));
}

void TstWaveAnimation::theEndKeySpringsBackToTheEnd()
{
    const auto data = capture().samples(8000).build();
    WaveViewer view(data.get());
    view.gen.setRatioKeepStart(2.0);
    view.gen.setViewStart(8000.0 - 1000 * 2.0 + 1000.0);
    QTRY_VERIFY(!view.gen.isAnimating());
    QCOMPARE(view.gen.viewStart(), 6000.0);
}

void TstWaveAnimation::withoutClampingAnOvershootStays()
{
    const auto data = capture().channels(1, 2).samples(8000).build();
    WaveViewer view(data.get());
    view.gen.setClampToData(false);
    view.gen.setRatioKeepStart(2.0);
    view.gen.setViewStart(-1000.0);
    QVERIFY(!view.gen.isAnimating());
    view.refreshes.clear();
    view.gen.zoomOutAt(0);
    QTRY_VERIFY(!view.gen.isAnimating());
    QCOMPARE(view.refreshes, oneAnimation);
    QCOMPARE(view.gen.viewStart(), -1000.0);
    QCOMPARE(view.gen.ratioSasPix(), 4.0);
}

void TstWaveAnimation::aSettleOfAWindowInTheDataMakesNoFrame()
{
    const auto data = capture().samples(8000).build();
    WaveViewer view(data.get());
    view.gen.setRatioKeepStart(2.0);
    view.refreshes.clear();
    view.gen.setViewStart(1000.0);
    QTRY_VERIFY(!view.gen.isAnimating());
    QCOMPARE(view.refreshes, std::vector<bool>{true}); // the call's own
}

void TstWaveAnimation::aNewZoomTakesTheAnimationOverFromTheFrameThatIsShown()
{
    const auto data = capture().samples(8000).build();
    WaveViewer view(data.get());
    showAll(view);
    view.gen.zoomInAt(0);
    QVERIFY(showFirstFrame(view));
    const double shown = view.gen.ratioSasPix();
    view.acknowledging = true;
    view.gen.zoomInAt(500);
    QTRY_VERIFY(!view.gen.isAnimating());
    QVERIFY(view.gen.ratioSasPix() == shown / 2.0);
    QCOMPARE(view.refreshes.size(), std::size_t(8));
}

void TstWaveAnimation::aZoomDuringTheOvershootIsNotLost()
{
    const auto data = capture().samples(8000).build();
    WaveViewer view(data.get());
    view.acknowledging = false; // however long this thread takes, the window does not spring back
    showAll(view);
    view.gen.setViewStart(-1000.0);
    view.acknowledging = true;
    view.gen.zoomInAt(999);
    QTRY_VERIFY(!view.gen.isAnimating());
    QVERIFY(view.gen.ratioSasPix() == 4.0);
    QCOMPARE(view.gen.viewStart(), -1000.0 + 999 * 4.0);
}

void TstWaveAnimation::scrollingEndsAnAnimation()
{
    const auto data = capture().samples(8000).build();
    WaveViewer view(data.get());
    showAll(view);
    view.gen.zoomInAt(0);
    QVERIFY(showFirstFrame(view));
    const double shown = view.gen.ratioSasPix();
    view.gen.setViewStart(100.0);
    goOn(view);
    QTRY_VERIFY(!view.gen.isAnimating());
    QVERIFY(view.gen.ratioSasPix() == shown);
    QCOMPARE(view.gen.viewStart(), 100.0);
}

void TstWaveAnimation::showingAllLetsTheAnimationGoOnFromThere()
{
    const auto data = capture().samples(8000).build();
    WaveViewer view(data.get());
    showAll(view);
    view.gen.zoomInAt(0);
    QVERIFY(showFirstFrame(view));
    view.gen.zoomFit();
    goOn(view);
    QTRY_VERIFY(!view.gen.isAnimating());
    QVERIFY(isNear(view.gen.ratioSasPix(), 8.0 / std::pow(2.0, 6.0 / 7.0)));
}

void TstWaveAnimation::aResizeLetsTheAnimationGoOnAtTheNewWidth()
{
    const auto data = capture().samples(8000).dense(0).build();
    WaveViewer view(data.get());
    showAll(view);
    view.gen.zoomInAt(0);
    QVERIFY(showFirstFrame(view));
    view.gen.setViewWidth(300);
    QVERIFY(view.gen.digLine(0).empty());
    view.gen.updateLines();
    QCOMPARE(view.gen.digLine(0).size(), std::size_t(300));
    goOn(view);
    QTRY_VERIFY(!view.gen.isAnimating());
    QVERIFY(isNear(view.gen.ratioSasPix(), 4.0));
    QCOMPARE(view.gen.digLine(0).size(), std::size_t(300));
}

void TstWaveAnimation::aResizeToNothingAndBackIsSafe()
{
    const auto data = capture().channels(8, 2).samples(8000).dense(0).build();
    WaveViewer view(data.get());
    showAll(view);
    view.gen.zoomOutAt(500);
    for (int width = 2000; width > 0; width -= 40) {
        view.gen.setViewWidth(width);
        QCoreApplication::processEvents();
        view.gen.updateLines();
        view.gen.setViewWidth(0);
        view.gen.updateLines();
        QCoreApplication::processEvents();
    }
    view.gen.setViewWidth(800);
    view.gen.updateLines();
    QTRY_VERIFY(!view.gen.isAnimating());
    view.gen.zoomFit();
    QCOMPARE(view.gen.digLine(0).size(), std::size_t(800));
}

void TstWaveAnimation::aNewSourceEndsTheAnimationAndItsFrames()
{
    const auto data = capture().samples(8000).build();
    const auto other = capture().channels(4).samples(500).build();
    WaveViewer view(data.get());
    showAll(view);
    view.gen.zoomInAt(0);
    QVERIFY(showFirstFrame(view));
    view.acknowledging = true;
    view.gen.setDataSource(nullptr);
    QVERIFY(!view.gen.isAnimating());
    view.gen.setDataSource(other.get());
    view.gen.setViewWidth(500);
    view.refreshes.clear();
    QCoreApplication::processEvents();
    QVERIFY(view.refreshes.empty());
    view.gen.dataReady();
    QCOMPARE(view.gen.ratioSasPix(), 1.0);
    view.gen.zoomInAt(0);
    QTRY_VERIFY(!view.gen.isAnimating());
    QCOMPARE(view.gen.ratioSasPix(), 0.5);
}

void TstWaveAnimation::aFrameOfTheFormerSourceThatIsUnderWayIsDropped()
{
    const auto data = capture().samples(8000).build();
    const auto other = capture().samples(500).build();
    WaveViewer view(data.get());
    showAll(view);
    Tokens handedOver;
    connect(
        &view.gen, &WaveDataGen::frameReady, &view.gen, [&handedOver] { handedOver.release(); }, Qt::DirectConnection);
    view.acknowledging = false;
    view.gen.zoomInAt(0);
    handedOver.acquire(); // its event is in the queue
    view.gen.setDataSource(other.get());
    QVERIFY(!view.gen.isAnimating());
    QCoreApplication::processEvents();
    QVERIFY(view.refreshes.empty());
}

void TstWaveAnimation::aSourceMayBeDeletedAsSoonAsItIsReplaced()
{
    WaveViewer view(nullptr);
    for (int round = 0; round < 50; ++round) {
        auto data = capture().channels(1 + round % 5, round % 3).samples(8000).dense(0).build();
        view.gen.setDataSource(data.get());
        view.gen.setViewWidth(500 + round * 20);
        view.gen.zoomFit();
        view.gen.zoomInAt(100);
        if (round % 2 == 0) {
            QCoreApplication::processEvents();
        }
        view.gen.setDataSource(nullptr);
        data.reset();
        QVERIFY(!view.gen.isAnimating());
        QVERIFY(view.gen.digLine(0).empty());
    }
}

void TstWaveAnimation::dataThatVanishDuringTheOvershootMakeTheRatioZero()
{
    const auto data = capture().samples(8000).build();
    WaveViewer view(data.get());
    view.acknowledging = false; // however long this thread takes, the window does not spring back
    showAll(view);
    view.gen.setViewStart(-1000.0);
    data->clear();
    goOn(view);
    QTRY_VERIFY(!view.gen.isAnimating());
    QCOMPARE(view.gen.ratioSasPix(), 0.0);
    QCOMPARE(view.gen.viewStart(), 0.0);
    capture().samples(8000).fill(*data);
    view.gen.dataReady();
    QCOMPARE(view.gen.ratioSasPix(), 8.0);
}

void TstWaveAnimation::anAnimationOfTheFormerCaptureDoesNotGoOnInTheNextOne()
{
    const auto data = capture().samples(8000).build();
    WaveViewer view(data.get());
    showAll(view);
    view.gen.zoomInAt(500);
    QVERIFY(showFirstFrame(view)); // a capture begins: nothing is shown, nor acknowledged
    capture().samples(4000).fill(*data);
    viewState = 1;
    view.gen.dataReady();
    goOn(view);
    QTRY_VERIFY(!view.gen.isAnimating());
    QCOMPARE(view.gen.ratioSasPix(), 4.0);
    QCOMPARE(view.gen.viewStart(), 0.0);
}

void TstWaveAnimation::aWriterMayReplaceTheCaptureDuringAnimations()
{
    const auto data = capture().channels(2, 2).samples(8000).dense(0).build();
    WaveViewer view(data.get());
    showAll(view);
    std::atomic<bool> stop{false};
    std::thread writer([&] {
        for (int round = 0; !stop.load(std::memory_order_relaxed); ++round) {
            capture().samples(4000 + round % 7 * 1000).pulses(0, {10, 20, 30}).dense(1).fill(*data);
        }
    });
    int zooms = 0;
    const bool zoomed = QTest::qWaitFor(
        [&] {
            if (!view.gen.isAnimating()) {
                ++zooms;
                view.gen.setRatioKeepStart(4.0);
                if (zooms % 2 == 0) {
                    view.gen.zoomInAt(300);
                } else {
                    view.gen.zoomOutAt(300);
                }
            }
            return zooms > 4;
        },
        60000);
    stop.store(true, std::memory_order_relaxed);
    writer.join();
    QVERIFY(zoomed);
    QTRY_VERIFY(!view.gen.isAnimating());
    capture().samples(5000).dense(0).fill(*data);
    viewState = 1;
    view.gen.dataReady();
    QCOMPARE(view.gen.digLine(0).size(), std::size_t(1000));
}

void TstWaveAnimation::manyCallsDuringAnimationsLeaveASettledView()
{
    const auto data = capture().channels(3, 1).samples(8000).dense(0).build();
    WaveViewer view(data.get());
    showAll(view);
    for (int round = 0; round < 400; ++round) {
        switch (round % 8) {
        case 0:
            view.gen.zoomInAt(round);
            break;
        case 1:
            view.gen.setViewStart(round * 40.0 - 3000.0);
            break;
        case 2:
            view.gen.zoomOutAt(round);
            break;
        case 3:
            view.gen.setViewWidth(200 + round * 2);
            view.gen.updateLines();
            break;
        case 4:
            view.gen.zoomStepOut();
            break;
        case 5:
            view.gen.dataReady();
            break;
        case 6:
            view.gen.zoomToRange(round, round * 3.0);
            break;
        default:
            view.gen.jumpNextEdge(0);
            break;
        }
        QCoreApplication::processEvents();
    }
    QTRY_VERIFY(!view.gen.isAnimating());
    const double end = view.gen.viewStart() + view.gen.viewWidth() * view.gen.ratioSasPix();
    QVERIFY(view.gen.viewStart() >= 0.0);
    QVERIFY(end <= 8000.0 + 1e-6);
    QVERIFY(view.onMainThread);
}

void TstWaveAnimation::destroyingTheGeneratorEndsItsWorker_data()
{
    QTest::addColumn<int>("moment");
    QTest::newRow("idle") << 0;
    QTest::newRow("as a zoom begins") << 1;
    QTest::newRow("waiting for the acknowledgement") << 2;
    QTest::newRow("during the overshoot") << 3;
    QTest::newRow("between frames") << 4;
}

void TstWaveAnimation::destroyingTheGeneratorEndsItsWorker()
{
    QFETCH(int, moment);
    const auto data = capture().samples(8000).build();
    auto view = std::make_unique<WaveViewer>(data.get());
    showAll(*view);
    if (moment == 3) {
        view->gen.setViewStart(-1000.0);
    } else if (moment > 0) {
        view->gen.zoomInAt(500);
    }
    if (moment == 2) {
        QVERIFY(showFirstFrame(*view));
    }
    if (moment == 4) {
        QVERIFY(showFirstFrame(*view));
        view->gen.setFrameAck();
        QTRY_COMPARE(view->refreshes.size(), std::size_t(2));
        view->gen.setFrameAck(); // the worker now waits for the third frame's time
    }
    QVERIFY(view->gen.isRunning());
    view.reset();
    QVERIFY(!gWaveGen);
}

QTEST_MAIN(TstWaveAnimation)
#include "tst_WaveAnimation.moc"
