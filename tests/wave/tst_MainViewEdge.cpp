#include "controls/MyScrollbar.h"
#include "wave/CursorBody.h"
#include "wave/MainViewDesk.h"
#include "wave/NextEdge.h"

#include <QtTest>

namespace {

constexpr int eightChannelModel = 1;
constexpr int thirtyTwoChannelModel = 9;

/// 100,000 samples, a hundred a pixel; channel 2 changes at 10,000, 20,000 and so on.
WaveCapture slowWave()
{
    return capture().samples(100'000).pulses(2, std::vector<std::int32_t>(9, 10'000));
}

const NextEdge &button(const MainViewDesk &desk)
{
    return *desk.items<NextEdge>().first();
}

/// The sample in the middle column.
double middle(const MainViewDesk &desk)
{
    return desk.gen.viewStart() + desk.gen.viewWidth() / 2 * desk.gen.ratioSasPix();
}

} // namespace

class TstMainViewEdge : public QObject {
    Q_OBJECT
private slots:
    void init();
    void theLeftEndOfARowOffersThePreviousEdge();
    void theRightEndOfARowOffersTheNextEdge();
    void elsewhereNoButtonIsShown();
    void thePointerInAnotherRowTakesTheButtonThere();
    void onAScaledScreenTheButtonIsScaled();
    void theButtonKeepsClearOfTheScrollBar();
    void withoutACaptureNoButtonIsShown();
    void belowTheLastRowNoButtonAppears();
    void aClickBringsThePreviousEdgeToTheMiddle();
    void aClickBringsTheNextEdgeToTheMiddle();
    void theButtonStaysForTheNextClick();
    void aRightClickOnTheButtonZoomsOut();
    void theButtonDoesNotPan();
    void theHoverGoesOnUnderTheButton();
    void leavingTheViewTakesTheButtonAway();
    void newDataTakesTheButtonAway();
    void anotherModelTakesTheButtonAway();
    void anotherLayoutTakesTheButtonAway();
    void aMarkerThatFollowsTakesTheButtonAway();
};

void TstMainViewEdge::init()
{
    resetProgram();
    QCursor::setPos(5000, 5000);
}

void TstMainViewEdge::theLeftEndOfARowOffersThePreviousEdge()
{
    MainViewDesk desk; // 16 rows of 50
    desk.load(slowWave());
    QVERIFY(!button(desk).isVisible());
    desk.move(12, 120);
    QVERIFY(button(desk).isVisible());
    QVERIFY(button(desk).isBackward());
    QCOMPARE(button(desk).channel(), 2);
    QCOMPARE(button(desk).sceneBoundingRect(), QRectF(0, 104, 12, 45));
}

void TstMainViewEdge::theRightEndOfARowOffersTheNextEdge()
{
    MainViewDesk desk;
    desk.load(slowWave());
    desk.move(988, 120);
    QVERIFY(button(desk).isVisible());
    QVERIFY(!button(desk).isBackward());
    QCOMPARE(button(desk).channel(), 2);
    QCOMPARE(button(desk).sceneBoundingRect(), QRectF(988, 104, 12, 45));
}

void TstMainViewEdge::elsewhereNoButtonIsShown()
{
    MainViewDesk desk;
    desk.load(slowWave());
    desk.move(5, 120);
    QVERIFY(button(desk).isVisible());
    desk.move(13, 120);
    QVERIFY(!button(desk).isVisible());
    desk.move(987, 120);
    QVERIFY(!button(desk).isVisible());
}

void TstMainViewEdge::thePointerInAnotherRowTakesTheButtonThere()
{
    MainViewDesk desk;
    desk.load(slowWave());
    desk.move(5, 120);
    desk.move(5, 220);
    QCOMPARE(button(desk).channel(), 4);
    QCOMPARE(button(desk).y(), 204.0);
}

void TstMainViewEdge::onAScaledScreenTheButtonIsScaled()
{
    resetProgram(192);
    MainViewDesk desk; // rows of 84 in a view of 810
    desk.load(slowWave());
    desk.move(24, 200);
    QCOMPARE(button(desk).sceneBoundingRect(), QRectF(0, 2 * 84 + 8, 24, 84 - 10));
}

void TstMainViewEdge::theButtonKeepsClearOfTheScrollBar()
{
    MainViewDesk desk(thirtyTwoChannelModel);
    desk.load(capture().channels(32).samples(1000));
    QVERIFY(desk.waves->findChild<MyScrollbar *>()->isVisible());
    desk.move(980, 120);
    QVERIFY(button(desk).isVisible());
    QCOMPARE(button(desk).sceneBoundingRect().right(), 1000.0 - 10 - 1);
}

void TstMainViewEdge::withoutACaptureNoButtonIsShown()
{
    MainViewDesk desk;
    desk.move(5, 120);
    QVERIFY(!button(desk).isVisible());
    desk.load(capture().samples(0));
    desk.move(6, 120);
    QVERIFY(!button(desk).isVisible());
}

void TstMainViewEdge::belowTheLastRowNoButtonAppears()
{
    MainViewDesk desk(eightChannelModel, {1190, 1200});
    desk.load(slowWave());
    desk.move(5, 1000);
    QVERIFY(!button(desk).isVisible());
}

void TstMainViewEdge::aClickBringsThePreviousEdgeToTheMiddle()
{
    MainViewDesk desk;
    desk.load(slowWave());
    desk.gen.zoomSetRatio(1.0);
    desk.gen.setViewStart(45'000.0);
    desk.click(5, 120);
    QCOMPARE(middle(desk), 40'000.0);
    QVERIFY(desk.zooms.isEmpty());
}

void TstMainViewEdge::aClickBringsTheNextEdgeToTheMiddle()
{
    MainViewDesk desk;
    desk.load(slowWave());
    desk.gen.zoomSetRatio(1.0);
    desk.gen.setViewStart(45'000.0);
    desk.click(995, 120);
    QCOMPARE(middle(desk), 50'000.0);
    QVERIFY(desk.zooms.isEmpty());
}

void TstMainViewEdge::theButtonStaysForTheNextClick()
{
    MainViewDesk desk;
    desk.load(slowWave());
    desk.gen.zoomSetRatio(1.0);
    desk.gen.setViewStart(45'000.0);
    desk.move(995, 120);
    for (int i = 0; i < 3; ++i) {
        desk.press(995, 120);
        desk.release(995, 120);
        QVERIFY(button(desk).isVisible());
    }
    QCOMPARE(middle(desk), 70'000.0);
}

void TstMainViewEdge::aRightClickOnTheButtonZoomsOut()
{
    MainViewDesk desk;
    desk.load(slowWave());
    desk.click(5, 120, Qt::RightButton);
    QCOMPARE(desk.zooms, (QVector<QPair<int, QPoint>>{{2, {5, 120}}}));
}

void TstMainViewEdge::theButtonDoesNotPan()
{
    MainViewDesk desk;
    desk.load(slowWave());
    desk.move(5, 120);
    desk.press(5, 120);
    desk.move(8, 121);
    desk.release(8, 121);
    QVERIFY(desk.drags.isEmpty());
}

void TstMainViewEdge::theHoverGoesOnUnderTheButton()
{
    MainViewDesk desk;
    desk.load(slowWave());
    desk.move(5, 120);
    desk.texts.clear();
    desk.move(6, 120);
    QCOMPARE(desk.texts.value(0), QStringLiteral("10ms"));
}

void TstMainViewEdge::leavingTheViewTakesTheButtonAway()
{
    MainViewDesk desk;
    desk.load(slowWave());
    desk.move(5, 120);
    desk.move(-20, 120);
    QVERIFY(!button(desk).isVisible());
}

void TstMainViewEdge::newDataTakesTheButtonAway()
{
    MainViewDesk desk;
    desk.load(slowWave());
    desk.move(5, 120);
    desk.view.clearForNewData();
    QVERIFY(!button(desk).isVisible());
}

void TstMainViewEdge::anotherModelTakesTheButtonAway()
{
    MainViewDesk desk;
    desk.load(slowWave());
    desk.move(5, 790); // channel 15
    QVERIFY(button(desk).isVisible());
    desk.replaceDevice(eightChannelModel);
    QVERIFY(!button(desk).isVisible());
}

void TstMainViewEdge::anotherLayoutTakesTheButtonAway()
{
    MainViewDesk desk;
    desk.load(slowWave());
    desk.move(5, 120);
    desk.view.resize(1190, 900);
    QVERIFY(!button(desk).isVisible());
}

void TstMainViewEdge::aMarkerThatFollowsTakesTheButtonAway()
{
    MainViewDesk desk;
    desk.load(slowWave());
    desk.move(5, 120);
    desk.key(Qt::Key_1);
    QVERIFY(!button(desk).isVisible());
    desk.move(6, 120);
    QVERIFY(!button(desk).isVisible());
    QCOMPARE(desk.items<CursorBody>().first()->markerState(), MarkerState::following);
}

QTEST_MAIN(TstMainViewEdge)
#include "tst_MainViewEdge.moc"
