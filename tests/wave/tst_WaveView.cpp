#include "controls/Look.h"
#include "controls/MyScrollbar.h"
#include "wave/WaveView.h"

#include <QGraphicsScene>
#include <QMouseEvent>
#include <QScrollBar>
#include <QSignalSpy>
#include <QWheelEvent>
#include <QWindow>
#include <QtTest>

namespace {

void turnWheel(WaveView &view, QPoint angle)
{
    const QPointF place(40, 30);
    QWheelEvent event(place, view.mapToGlobal(place.toPoint()), QPoint(), angle, Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(view.viewport(), &event);
}

/// A view of 300 x 200 pixels over a scene of the same width.
struct ShownView {
    QGraphicsScene scene;
    WaveView view{&scene};
    MyScrollbar *bar = view.findChild<MyScrollbar *>();

    QWindow *window() { return view.windowHandle(); } // input takes the way of the window system's

    explicit ShownView(int sceneHeight)
    {
        scene.setSceneRect(0, 0, 300, sceneHeight);
        view.resize(300, 200);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
    }
};

} // namespace

class TstWaveView : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void theWheelIsToldAndDoesNotScroll_data();
    void theWheelIsToldAndDoesNotScroll();
    void aSidewaysStepOfTheWheelIsNotTold();
    void pressesMovesAndReleasesAreToldWithTheirEvents();
    void theSecondPressOfADoubleClickIsToldAsAPress();
    void movesWithoutAButtonAreTold();
    void leavingTheViewportIsTold();
    void theThinBarLiesOverTheRightEdge();
    void theThinBarIsHiddenWhileEverythingFits();
    void theThinBarFollowsTheNativeOneInRangeAndPage();
    void scrollingEitherBarMovesTheOther();
    void theSceneLiesAtTheTopLeftWithoutNativeScrollBars();
};

void TstWaveView::initTestCase()
{
    globalsSetDpi(96);
    globalsFillTables();
}

void TstWaveView::theWheelIsToldAndDoesNotScroll_data()
{
    QTest::addColumn<int>("angle");
    QTest::addColumn<int>("flag");
    QTest::newRow("away from the user") << 120 << 1;
    QTest::newRow("towards the user") << -120 << -1;
    QTest::newRow("smallest step away") << 1 << 1;
}

void TstWaveView::theWheelIsToldAndDoesNotScroll()
{
    QFETCH(int, angle);
    ShownView shown(1000);
    shown.view.verticalScrollBar()->setValue(300);
    QSignalSpy spy(&shown.view, &WaveView::wheelChanged);
    turnWheel(shown.view, {0, angle});
    QCOMPARE(spy.count(), 1);
    QTEST(spy[0][0].toInt(), "flag");
    QCOMPARE(spy[0][1].toPoint(), QPoint(40, 30));
    QCOMPARE(shown.view.verticalScrollBar()->value(), 300);
}

void TstWaveView::aSidewaysStepOfTheWheelIsNotTold()
{
    ShownView shown(1000);
    QSignalSpy spy(&shown.view, &WaveView::wheelChanged);
    turnWheel(shown.view, {120, 0});
    QCOMPARE(spy.count(), 0);
}

void TstWaveView::pressesMovesAndReleasesAreToldWithTheirEvents()
{
    ShownView shown(200);
    QStringList told;
    const auto note = [&told](const char *what) {
        return [&told, what](const QMouseEvent *event) {
            told << QStringLiteral("%1 %2 %3").arg(QLatin1String(what)).arg(event->x()).arg(event->y());
        };
    };
    connect(&shown.view, &WaveView::mousePressed, this, note("press"));
    connect(&shown.view, &WaveView::mouseMoved, this, note("move"));
    connect(&shown.view, &WaveView::mouseReleased, this, note("release"));
    QTest::mouseMove(shown.window(), {10, 20});
    QTest::mousePress(shown.window(), Qt::LeftButton, {}, {10, 20});
    QTest::mouseMove(shown.window(), {15, 25});
    QTest::mouseRelease(shown.window(), Qt::LeftButton, {}, {15, 25});
    QCOMPARE(told, (QStringList{QStringLiteral("move 10 20"), QStringLiteral("press 10 20"),
                                QStringLiteral("move 15 25"), QStringLiteral("release 15 25")}));
}

void TstWaveView::theSecondPressOfADoubleClickIsToldAsAPress()
{
    ShownView shown(200);
    int presses = 0;
    connect(&shown.view, &WaveView::mousePressed, this, [&presses](const QMouseEvent *) { ++presses; });
    QTest::mouseDClick(shown.window(), Qt::LeftButton, {}, {10, 20});
    QCOMPARE(presses, 2);
}

void TstWaveView::movesWithoutAButtonAreTold()
{
    ShownView shown(200);
    QVERIFY(shown.view.testAttribute(Qt::WA_MouseTracking));
    QPoint place;
    connect(&shown.view, &WaveView::mouseMoved, this, [&place](const QMouseEvent *event) { place = event->pos(); });
    QTest::mouseMove(shown.window(), {33, 44});
    QCOMPARE(place, QPoint(33, 44));
}

void TstWaveView::leavingTheViewportIsTold()
{
    ShownView shown(200);
    QSignalSpy spy(&shown.view, &WaveView::mouseLeave);
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(shown.view.viewport(), &leave);
    QCOMPARE(spy.count(), 1);
}

void TstWaveView::theThinBarLiesOverTheRightEdge()
{
    ShownView shown(1000);
    QCOMPARE(shown.bar->geometry(), QRect(290, 0, 10, 200));
    shown.view.resize(400, 150);
    QCOMPARE(shown.bar->geometry(), QRect(390, 0, 10, 150));
}

void TstWaveView::theThinBarIsHiddenWhileEverythingFits()
{
    ShownView shown(200);
    QVERIFY(!shown.bar->isVisible());
    shown.scene.setSceneRect(0, 0, 300, 201);
    QTRY_VERIFY(shown.bar->isVisible());
}

void TstWaveView::theThinBarFollowsTheNativeOneInRangeAndPage()
{
    ShownView shown(1000);
    QCOMPARE(shown.bar->minV, 0);
    QCOMPARE(shown.bar->maxV, 800);
    QCOMPARE(shown.bar->pageStep, 200);
    shown.view.resize(300, 400);
    QCOMPARE(shown.bar->maxV, 600);
    QCOMPARE(shown.bar->pageStep, 400);
}

void TstWaveView::scrollingEitherBarMovesTheOther()
{
    ShownView shown(1000);
    shown.view.verticalScrollBar()->setValue(250);
    QCOMPARE(shown.bar->value, 250);
    shown.bar->setValue(100);
    QCOMPARE(shown.view.verticalScrollBar()->value(), 100);
}

void TstWaveView::theSceneLiesAtTheTopLeftWithoutNativeScrollBars()
{
    ShownView shown(100);
    QCOMPARE(shown.view.mapFromScene(0, 0), QPoint(0, 0));
    QVERIFY(!shown.view.verticalScrollBar()->isVisible());
    QVERIFY(!shown.view.horizontalScrollBar()->isVisible());
    QCOMPARE(shown.view.viewport()->size(), shown.view.size());
    QVERIFY(!shown.view.acceptDrops());
    QCOMPARE(shown.view.styleSheet(), QStringLiteral("QGraphicsView{background-color:#2f2f2f;border:0;}"));
}

QTEST_MAIN(TstWaveView)
#include "tst_WaveView.moc"
