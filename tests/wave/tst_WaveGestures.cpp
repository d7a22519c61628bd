// Keys and gestures in the waves beyond click, drag and wheel; every one by the events of the window system.

#include "wave/CursorHandle.h"
#include "wave/ItemZoomBand.h"
#include "wave/MarkerDesk.h"
#include "wave/PointerTag.h"

#include <QScrollBar>
#include <QWheelEvent>
#include <QtTest>

namespace {

constexpr int viewWidth = 1000; ///< of a desk's waves, pixels
constexpr int thirtyTwoChannelModel = 9;

/// 100,000 samples in a view of 1,000 pixels at ten samples a pixel, from sample 20,000 on.
void showMiddle(MarkerDesk &desk)
{
    desk.load(capture().samples(100000).rate(1000000).pulses(0, std::vector<std::int32_t>(99, 1000)));
    desk.gen.zoomSetRatio(10.0);
    desk.gen.setViewStart(20000.0);
}

void turnWheel(MarkerDesk &desk, int angle, Qt::KeyboardModifiers modifiers)
{
    const QPoint place(300, 100);
    QWidget *viewport = desk.waves->viewport();
    QWheelEvent event(place, viewport->mapToGlobal(place), {}, QPoint(0, angle), Qt::NoButton, modifiers,
                      Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(viewport, &event);
}

void pressWithControl(MarkerDesk &desk, int x, int y)
{
    QTest::mousePress(desk.view.windowHandle(), Qt::LeftButton, Qt::ControlModifier,
                      desk.waves->mapTo(&desk.view, QPoint(x, y)));
}

Qt::CursorShape shapeOver(const MarkerDesk &desk)
{
    return desk.waves->viewport()->cursor().shape();
}

} // namespace

class TstWaveGestures : public QObject {
    Q_OBJECT
private slots:
    void init();

    void leftAndRightMoveByATenthOfTheView();
    void theWheelWithShiftMovesInsteadOfZooming();
    void controlWithADragZoomsIntoWhatIsMarked_data();
    void controlWithADragZoomsIntoWhatIsMarked();
    void aMarkOfAFewPixelsZoomsNothing();
    void backspaceGoesBackThroughTheViews();
    void aNewCaptureHasNoViewToGoBackTo();
    void shiftWithLeftAndRightMovesTheMarkerThatWasTouchedLast();
    void withControlTheMarkerGoesToTheNextEdge();
    void aMarkerThatLeavesTheViewByKeyTakesItAlong();
    void withoutAMarkerTheKeysMoveNothing();
    void aClickBelowTheLastRowZoomsNothing();
    void thePointerShowsWhatCanBeDone();
    void theRulerTellsTimeAndSampleUnderThePointer();
    void theRulerTellsThemWhileAZoomIsMarked();
    void aViewWithoutACaptureSaysHowToBegin_data();
    void aViewWithoutACaptureSaysHowToBegin();
    void aFileOfFlatLinesInViewIsShownWhole();
    void aTransitionInARowOutOfViewDoesNotCount();
    void aFileWhoseViewShowsATransitionStaysInPlace();
};

void TstWaveGestures::init()
{
    resetProgram();
    QCursor::setPos(5000, 5000);
}

void TstWaveGestures::leftAndRightMoveByATenthOfTheView()
{
    MarkerDesk desk;
    showMiddle(desk);
    desk.key(Qt::Key_Right);
    QCOMPARE(desk.gen.viewStart(), 21000.0);
    desk.key(Qt::Key_Left);
    desk.key(Qt::Key_Left);
    QCOMPARE(desk.gen.viewStart(), 19000.0);
}

void TstWaveGestures::theWheelWithShiftMovesInsteadOfZooming()
{
    MarkerDesk desk;
    showMiddle(desk);
    turnWheel(desk, -120, Qt::ShiftModifier);
    QCOMPARE(desk.gen.viewStart(), 21000.0);
    turnWheel(desk, 120, Qt::ShiftModifier);
    QCOMPARE(desk.gen.viewStart(), 20000.0);
    QVERIFY(desk.zooms.isEmpty());
    turnWheel(desk, 120, {});
    QCOMPARE(desk.zooms.size(), 1);
}

void TstWaveGestures::controlWithADragZoomsIntoWhatIsMarked_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::newRow("to the right") << 200 << 400;
    QTest::newRow("to the left") << 400 << 200;
}

void TstWaveGestures::controlWithADragZoomsIntoWhatIsMarked()
{
    QFETCH(int, from);
    QFETCH(int, to);
    MarkerDesk desk;
    showMiddle(desk);
    desk.move(from, 50);
    pressWithControl(desk, from, 50);
    desk.move(to, 60);
    QVERIFY(desk.items<ItemZoomBand>().first()->isVisible());
    QCOMPARE(desk.items<ItemZoomBand>().first()->sceneBoundingRect().width(), 200.0);
    desk.release(to, 60);
    QVERIFY(!desk.items<ItemZoomBand>().first()->isVisible());
    QCOMPARE(desk.gen.viewStart(), 22000.0);
    QCOMPARE(desk.gen.ratioSasPix(), 2000.0 / viewWidth);
    QVERIFY(desk.zooms.isEmpty());
    QVERIFY(desk.drags.isEmpty());
}

void TstWaveGestures::aMarkOfAFewPixelsZoomsNothing()
{
    MarkerDesk desk;
    showMiddle(desk);
    desk.move(200, 50);
    pressWithControl(desk, 200, 50);
    desk.move(203, 50);
    desk.release(203, 50);
    QCOMPARE(desk.gen.viewStart(), 20000.0);
    QVERIFY(desk.zooms.isEmpty());
}

void TstWaveGestures::backspaceGoesBackThroughTheViews()
{
    MarkerDesk desk;
    showMiddle(desk);
    desk.gen.zoomSetRatio(5.0);
    const double near = desk.gen.viewStart();
    desk.key(Qt::Key_Right);
    desk.key(Qt::Key_Right);
    desk.key(Qt::Key_Backspace);
    QCOMPARE(desk.gen.viewStart(), near);
    desk.key(Qt::Key_Backspace);
    QCOMPARE(desk.gen.viewStart(), 20000.0);
    QCOMPARE(desk.gen.ratioSasPix(), 10.0);
}

void TstWaveGestures::aNewCaptureHasNoViewToGoBackTo()
{
    MarkerDesk desk;
    showMiddle(desk);
    desk.view.clearForNewData();
    desk.gen.dataReady();
    const double start = desk.gen.viewStart();
    desk.key(Qt::Key_Backspace);
    QCOMPARE(desk.gen.viewStart(), start);
}

void TstWaveGestures::shiftWithLeftAndRightMovesTheMarkerThatWasTouchedLast()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.put(0, 150);
    desk.put(1, 450);
    desk.key(Qt::Key_Right, Qt::ShiftModifier);
    QCOMPARE(desk.sample(1), 451.0);
    desk.key(Qt::Key_Left, Qt::ShiftModifier);
    desk.key(Qt::Key_Left, Qt::ShiftModifier);
    QCOMPARE(desk.sample(1), 449.0);
    QCOMPARE(desk.x(1), 449);
    QCOMPARE(desk.sample(0), 150.0);
    QCOMPARE(desk.times[1], texts("449us", "299us"));
}

void TstWaveGestures::withControlTheMarkerGoesToTheNextEdge()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.put(0, 150, 30); // within the row of channel 0
    const Qt::KeyboardModifiers both = Qt::ControlModifier | Qt::ShiftModifier;
    desk.key(Qt::Key_Right, both);
    QCOMPARE(desk.sample(0), 200.0);
    desk.key(Qt::Key_Right, both);
    QCOMPARE(desk.sample(0), 300.0);
    desk.key(Qt::Key_Left, both);
    QCOMPARE(desk.sample(0), 200.0);
    for (int i = 0; i < 20; ++i) {
        desk.key(Qt::Key_Right, both);
    }
    QCOMPARE(desk.sample(0), 900.0); // the last edge; the data's end is none
}

void TstWaveGestures::aMarkerThatLeavesTheViewByKeyTakesItAlong()
{
    MarkerDesk desk;
    showMiddle(desk);
    desk.put(0, 995);
    QCOMPARE(desk.sample(0), 29950.0);
    for (int i = 0; i < 5; ++i) {
        desk.key(Qt::Key_Right, Qt::ShiftModifier);
    }
    QCOMPARE(desk.sample(0), 30000.0);
    QCOMPARE(desk.gen.viewStart(), 25000.0);
    QCOMPARE(desk.x(0), 500);
}

void TstWaveGestures::withoutAMarkerTheKeysMoveNothing()
{
    MarkerDesk desk;
    showMiddle(desk);
    desk.put(0, 500);
    desk.key(Qt::Key_1);
    desk.key(Qt::Key_1); // taken up and off again
    QCOMPARE(desk.state(0), MarkerState::off);
    const double before = desk.sample(0);
    desk.key(Qt::Key_Right, Qt::ShiftModifier);
    QCOMPARE(desk.sample(0), before);
    QCOMPARE(desk.gen.viewStart(), 20000.0);
}

void TstWaveGestures::aClickBelowTheLastRowZoomsNothing()
{
    MarkerDesk desk(0, {1190, 2400}); // rows end at 16 x 120 pixels
    desk.load(squareWave());
    desk.click(500, 2000);
    desk.click(500, 2000, Qt::RightButton);
    QVERIFY(desk.zooms.isEmpty());
    desk.click(500, 900);
    QCOMPARE(desk.zooms.size(), 1);
}

void TstWaveGestures::thePointerShowsWhatCanBeDone()
{
    MarkerDesk desk;
    showMiddle(desk);
    desk.move(300, 100);
    QCOMPARE(shapeOver(desk), Qt::ArrowCursor);
    desk.press(300, 100);
    desk.move(320, 100);
    QCOMPARE(shapeOver(desk), Qt::ClosedHandCursor);
    desk.release(320, 100);
    QCOMPARE(shapeOver(desk), Qt::ArrowCursor);
    desk.put(0, 600);
    desk.move(700, quietY);
    QCOMPARE(shapeOver(desk), Qt::ArrowCursor);
    desk.move(600, quietY);
    QCOMPARE(shapeOver(desk), Qt::SizeHorCursor);
    QCOMPARE(desk.flag(0)->cursor().shape(), Qt::SizeHorCursor);
    QWidget *height = desk.sidebar(0).findChild<QWidget *>(QStringLiteral("setting"));
    QCOMPARE(height->cursor().shape(), Qt::SizeVerCursor);
}

void TstWaveGestures::theRulerTellsTimeAndSampleUnderThePointer()
{
    MarkerDesk desk;
    desk.load(squareWave().trigger(400));
    const auto *tag = desk.ruler.findChild<PointerTag *>();
    desk.move(300, quietY); // also beside all channels that change
    QCOMPARE(tag->text(), QStringLiteral("-100us  [-100]"));
    QVERIFY(tag->x() > 300);
    QVERIFY(!tag->accessibleDescription().isEmpty());
    desk.move(990, quietY);
    QCOMPARE(tag->text(), QStringLiteral("590us  [590]"));
    QVERIFY(tag->geometry().right() < 990);
    desk.move(-50, quietY);
    QVERIFY(tag->isHidden());
}

void TstWaveGestures::theRulerTellsThemWhileAZoomIsMarked()
{
    MarkerDesk desk;
    desk.load(squareWave().trigger(400));
    const auto *tag = desk.ruler.findChild<PointerTag *>();
    desk.move(300, quietY);
    pressWithControl(desk, 300, quietY);
    desk.move(450, quietY);
    QCOMPARE(tag->text(), QStringLiteral("50us  [50]"));
    QVERIFY(tag->x() > 450);
    desk.release(450, quietY);
}

void TstWaveGestures::aViewWithoutACaptureSaysHowToBegin_data()
{
    QTest::addColumn<int>("model");
    QTest::newRow("digital") << 0;
    QTest::newRow("analog") << 97;
}

void TstWaveGestures::aViewWithoutACaptureSaysHowToBegin()
{
    QFETCH(int, model);
    MarkerDesk desk(model);
    const QImage empty = desk.waves->grab().toImage();
    QVERIFY(!desk.waves->hint().isEmpty());
    desk.waves->hint = nullptr;
    QVERIFY(desk.waves->grab().toImage() != empty); // it is seen
    MarkerDesk full(model);
    full.load(squareWave());
    QVERIFY(full.waves->hint().isEmpty());
}

void TstWaveGestures::aFileOfFlatLinesInViewIsShownWhole()
{
    MarkerDesk desk;
    desk.load(capture().samples(100000).pulses(0, {90000, 10}));
    desk.gen.zoomSetRatio(1.0);
    desk.gen.setViewStart(500.0);
    desk.view.showAllIfFlat();
    QCOMPARE(desk.gen.viewStart(), 0.0);
    QCOMPARE(desk.gen.ratioSasPix(), 100.0);
}

void TstWaveGestures::aTransitionInARowOutOfViewDoesNotCount()
{
    MarkerDesk desk(thirtyTwoChannelModel);
    desk.load(capture().channels(32).samples(100000).pulses(31, {500}));
    desk.gen.zoomSetRatio(1.0);
    desk.gen.setViewStart(0.0);
    desk.waves->verticalScrollBar()->setValue(32 * 42);
    desk.view.showAllIfFlat();
    QCOMPARE(desk.gen.ratioSasPix(), 1.0); // its row is in view
    desk.waves->verticalScrollBar()->setValue(0);
    desk.view.showAllIfFlat();
    QCOMPARE(desk.gen.ratioSasPix(), 100.0);
}

void TstWaveGestures::aFileWhoseViewShowsATransitionStaysInPlace()
{
    MarkerDesk desk;
    desk.load(capture().samples(100000).pulses(0, {90000, 10}));
    desk.gen.zoomSetRatio(1.0);
    desk.gen.setViewStart(89500.0);
    desk.view.showAllIfFlat();
    QCOMPARE(desk.gen.ratioSasPix(), 1.0);
    desk.load(capture().samples(100000)); // nothing changes anywhere: nothing better is to be seen
    desk.gen.zoomSetRatio(1.0);
    desk.view.showAllIfFlat();
    QCOMPARE(desk.gen.ratioSasPix(), 1.0);
}

QTEST_MAIN(TstWaveGestures)
#include "tst_WaveGestures.moc"
