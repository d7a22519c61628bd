#include "wave/MarkerDesk.h"

#include <QLineEdit>
#include <QtTest>

namespace {

constexpr int eightChannelModel = 1;

} // namespace

class TstMainViewMarkers : public QObject {
    Q_OBJECT
private slots:
    void init();
    void aNumberKeyLetsItsMarkerFollowThePointer();
    void eachNumberKeyHasItsMarker_data();
    void eachNumberKeyHasItsMarker();
    void withThePointerOutsideTheMarkerBeginsInTheMiddle();
    void theSameKeyTakesAFollowingMarkerOff();
    void anotherKeyTakesOffTheFollowingMarkerAndCallsItsOwn();
    void aKeyPicksUpAPlacedMarkerButLeavesAHoveredOne();
    void withoutACaptureAKeyOnlyMakesThePair();
    void numberKeysTypeIntoAFieldInTheSidebar();
    void aLeftClickPutsTheMarkerDownAndDoesNotZoom();
    void aRightClickTakesTheMarkerOffAndDoesNotZoom();
    void theMiddleButtonLeavesAFollowingMarker();
    void aDragPansAndDoesNotPutTheMarkerDown();
    void aDragThatEndsOverAMarkerNeitherZoomsNorPicksItUp();
    void thePointerBrightensAMarkerOneStrokeAround_data();
    void thePointerBrightensAMarkerOneStrokeAround();
    void aMarkerThatIsOffStaysOffUnderThePointer();
    void onlyOneOfTwoNeighboursIsBright();
    void aClickPicksUpTheMarkerUnderThePointerAndDoesNotPutItDownAtOnce();
    void aRightClickOnAMarkerZoomsOut();
    void leavingTheViewLeavesAMarkerPlain();
    void aFollowingMarkerSnapsToAnEdgeOfTheChannelUnderThePointer();
    void outsideAllChannelsAMarkerMovesFreely();
    void theStartAndTheEndOfTheDataAttract();
    void onAScaledScreenAMarkerSnapsInLogicalPixels();
};

void TstMainViewMarkers::init()
{
    resetProgram();
    QCursor::setPos(5000, 5000);
}

void TstMainViewMarkers::aNumberKeyLetsItsMarkerFollowThePointer()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.move(250, quietY);
    desk.key(Qt::Key_1);
    QCOMPARE(desk.ids(), (QVector<int>{0, 1}));
    QCOMPARE(desk.made, (QVector<int>{0}));
    QCOMPARE(desk.changes, (MarkerDesk::Changes{{7, 0, 0}, {7, 1, 0}, {7, 0, 1}, {8, 0, 250}}));
    QCOMPARE(desk.state(0), MarkerState::following);
    QCOMPARE(desk.state(1), MarkerState::off);
    QCOMPARE(desk.sample(0), 250.0);
    QCOMPARE(desk.x(0), 250);
    desk.move(333, quietY);
    QCOMPARE(desk.sample(0), 333.0);
    QCOMPARE(desk.x(0), 333);
    QCOMPARE(desk.changes.last(), (std::array<int, 3>{8, 0, 333}));
}

void TstMainViewMarkers::eachNumberKeyHasItsMarker_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::addColumn<int>("id");
    for (int id = 0; id < 10; ++id) {
        QTest::addRow("%d", (id + 1) % 10) << MarkerDesk::keyOf(id) << Qt::KeyboardModifiers() << id;
    }
    QTest::newRow("3 of the keypad") << Qt::Key_3 << Qt::KeyboardModifiers(Qt::KeypadModifier) << 2;
}

void TstMainViewMarkers::eachNumberKeyHasItsMarker()
{
    QFETCH(Qt::Key, key);
    QFETCH(Qt::KeyboardModifiers, modifiers);
    QFETCH(int, id);
    MarkerDesk desk;
    desk.load(squareWave());
    desk.move(250, quietY);
    desk.key(key, modifiers);
    QCOMPARE(desk.ids(), (QVector<int>{id / 2 * 2, id / 2 * 2 + 1}));
    QCOMPARE(desk.state(id), MarkerState::following);
    QCOMPARE(desk.state(id ^ 1), MarkerState::off);
}

void TstMainViewMarkers::withThePointerOutsideTheMarkerBeginsInTheMiddle()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.move(-50, quietY);
    desk.key(Qt::Key_2);
    QCOMPARE(desk.sample(1), 500.0);
}

void TstMainViewMarkers::theSameKeyTakesAFollowingMarkerOff()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.move(250, quietY);
    desk.key(Qt::Key_3);
    desk.key(Qt::Key_3);
    QCOMPARE(desk.state(2), MarkerState::off);
    QVERIFY(!desk.marker(2).isVisible());
    QVERIFY(!desk.flag(2)->isVisibleTo(&desk.ruler));
    QCOMPARE(desk.times.value(2), unknown());
}

void TstMainViewMarkers::anotherKeyTakesOffTheFollowingMarkerAndCallsItsOwn()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.move(250, quietY);
    desk.key(Qt::Key_1);
    desk.key(Qt::Key_4);
    QCOMPARE(desk.state(0), MarkerState::off);
    QCOMPARE(desk.state(3), MarkerState::following);
}

void TstMainViewMarkers::aKeyPicksUpAPlacedMarkerButLeavesAHoveredOne()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.put(0, 250);
    desk.move(251, quietY);
    QCOMPARE(desk.state(0), MarkerState::hovered);
    desk.key(Qt::Key_1);
    QCOMPARE(desk.state(0), MarkerState::hovered);
    desk.move(350, quietY);
    desk.key(Qt::Key_1);
    QCOMPARE(desk.state(0), MarkerState::following);
    QCOMPARE(desk.sample(0), 350.0);
}

void TstMainViewMarkers::withoutACaptureAKeyOnlyMakesThePair()
{
    MarkerDesk desk;
    desk.move(250, quietY);
    desk.key(Qt::Key_1);
    QCOMPARE(desk.made, (QVector<int>{0}));
    QCOMPARE(desk.state(0), MarkerState::off);
    desk.move(260, quietY);
    desk.click(260, quietY);
    QCOMPARE(desk.state(0), MarkerState::off);
    QVERIFY(desk.view.shownPairs().isEmpty());
}

void TstMainViewMarkers::numberKeysTypeIntoAFieldInTheSidebar()
{
    MarkerDesk desk;
    desk.load(squareWave());
    auto *field = desk.sidebar(0).findChild<QLineEdit *>(QStringLiteral("name"));
    QVERIFY(field != nullptr);
    field->setFocus();
    field->clear();
    const QString typed = QStringLiteral("1234567890+-=");
    const double start = desk.gen.viewStart();
    for (const QChar c : typed) {
        QTest::keyClick(desk.view.windowHandle(), c.toLatin1());
    }
    QCOMPARE(field->text(), typed);
    QTest::keyClick(desk.view.windowHandle(), Qt::Key_Home);
    QCOMPARE(field->cursorPosition(), 0);
    QTest::keyClick(desk.view.windowHandle(), Qt::Key_End);
    QCOMPARE(field->cursorPosition(), int(typed.size()));
    QVERIFY(desk.ids().isEmpty());
    QVERIFY(desk.zooms.isEmpty());
    QCOMPARE(desk.gen.viewStart(), start);
    // The same keys are the waves' again when the field has lost the focus.
    desk.waves->setFocus();
    QTest::keyClick(desk.view.windowHandle(), '2');
    QCOMPARE(desk.state(1), MarkerState::following);
}

void TstMainViewMarkers::aLeftClickPutsTheMarkerDownAndDoesNotZoom()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.put(0, 250);
    QCOMPARE(desk.state(0), MarkerState::placed);
    QCOMPARE(desk.flag(0)->markerState(), MarkerState::placed);
    QVERIFY(desk.zooms.isEmpty());
    desk.move(600, quietY);
    QCOMPARE(desk.sample(0), 250.0);
    QCOMPARE(desk.state(0), MarkerState::placed);
}

void TstMainViewMarkers::aRightClickTakesTheMarkerOffAndDoesNotZoom()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.move(250, quietY);
    desk.key(Qt::Key_1);
    desk.click(250, quietY, Qt::RightButton);
    QCOMPARE(desk.state(0), MarkerState::off);
    QVERIFY(desk.zooms.isEmpty());
    desk.click(250, quietY, Qt::RightButton);
    QCOMPARE(desk.zooms.size(), 1); // nothing is attached any more
}

void TstMainViewMarkers::theMiddleButtonLeavesAFollowingMarker()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.move(250, quietY);
    desk.key(Qt::Key_1);
    desk.click(250, quietY, Qt::MiddleButton);
    QCOMPARE(desk.state(0), MarkerState::following);
}

void TstMainViewMarkers::aDragPansAndDoesNotPutTheMarkerDown()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.gen.zoomSetRatio(0.1);
    desk.move(250, quietY);
    desk.key(Qt::Key_1);
    const double sample = desk.sample(0);
    desk.press(250, quietY);
    desk.move(300, quietY);
    desk.release(300, quietY);
    QCOMPARE(desk.drags, (QVector<int>{50}));
    QCOMPARE(desk.state(0), MarkerState::following);
    QCOMPARE(desk.sample(0), sample);
    QVERIFY(desk.zooms.isEmpty());
}

void TstMainViewMarkers::aDragThatEndsOverAMarkerNeitherZoomsNorPicksItUp()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.gen.zoomSetRatio(0.1);
    desk.put(0, 250);
    desk.move(251, quietY);
    QCOMPARE(desk.state(0), MarkerState::hovered);
    desk.press(251, quietY);
    desk.move(301, quietY);
    desk.view.refreshWave();
    QCOMPARE(desk.x(0), 300); // it has come along
    desk.release(301, quietY);
    QCOMPARE(desk.state(0), MarkerState::hovered);
    QVERIFY(desk.zooms.isEmpty());
}

void TstMainViewMarkers::thePointerBrightensAMarkerOneStrokeAround_data()
{
    QTest::addColumn<int>("dpi");
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::newRow("96") << 96 << 249 << 251;
    QTest::newRow("192") << 192 << 248 << 253;
}

void TstMainViewMarkers::thePointerBrightensAMarkerOneStrokeAround()
{
    QFETCH(int, dpi);
    QFETCH(int, from);
    QFETCH(int, to);
    resetProgram(dpi);
    MarkerDesk desk;
    desk.load(capture().samples(desk.gen.viewWidth())); // one a column
    desk.put(0, 250, 500);
    QCOMPARE(desk.x(0), 250);
    for (int x = 244; x < 260; ++x) {
        desk.move(x, 500);
        const bool over = x >= from && x <= to;
        QCOMPARE(desk.state(0), over ? MarkerState::hovered : MarkerState::placed);
        QCOMPARE(desk.flag(0)->markerState(), desk.state(0));
    }
}

void TstMainViewMarkers::aMarkerThatIsOffStaysOffUnderThePointer()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.move(250, quietY);
    desk.key(Qt::Key_1);
    desk.click(250, quietY, Qt::RightButton);
    desk.move(400, quietY);
    desk.move(250, quietY);
    QCOMPARE(desk.x(0), 250); // where it was
    QCOMPARE(desk.state(0), MarkerState::off);
}

void TstMainViewMarkers::onlyOneOfTwoNeighboursIsBright()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.put(0, 252);
    desk.put(1, 250);
    desk.move(249, quietY);
    QCOMPARE(desk.state(1), MarkerState::hovered);
    desk.move(251, quietY); // over both: the first of the list
    QCOMPARE(desk.state(0), MarkerState::hovered);
    QCOMPARE(desk.state(1), MarkerState::placed);
}

void TstMainViewMarkers::aClickPicksUpTheMarkerUnderThePointerAndDoesNotPutItDownAtOnce()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.put(0, 250);
    desk.put(2, 600);
    desk.click(251, quietY);
    QCOMPARE(desk.state(0), MarkerState::following);
    QCOMPARE(desk.state(2), MarkerState::placed);
    desk.move(420, quietY);
    QCOMPARE(desk.sample(0), 420.0);
    desk.click(430, quietY);
    QCOMPARE(desk.state(0), MarkerState::placed);
    QCOMPARE(desk.sample(0), 430.0);
    QVERIFY(desk.zooms.isEmpty());
}

void TstMainViewMarkers::aRightClickOnAMarkerZoomsOut()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.put(0, 250);
    desk.click(251, quietY, Qt::RightButton);
    QCOMPARE(desk.zooms, (QVector<QPair<int, QPoint>>{{2, {251, quietY}}}));
    QVERIFY(desk.marker(0).isShown());
}

void TstMainViewMarkers::leavingTheViewLeavesAMarkerPlain()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.gen.setViewStart(0.0);
    desk.put(0, 20);
    desk.move(21, quietY);
    QCOMPARE(desk.state(0), MarkerState::hovered);
    desk.move(-30, quietY);
    QCOMPARE(desk.state(0), MarkerState::placed);
    desk.move(100, quietY);
    desk.key(Qt::Key_1);
    desk.move(-30, quietY);
    QCOMPARE(desk.state(0), MarkerState::following); // one that follows stays attached
}

void TstMainViewMarkers::aFollowingMarkerSnapsToAnEdgeOfTheChannelUnderThePointer()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.move(250, 10);
    desk.key(Qt::Key_1);
    QCOMPARE(desk.sample(0), 250.0);
    desk.move(210, 10);
    QCOMPARE(desk.sample(0), 200.0);
    QCOMPARE(desk.x(0), 200);
    desk.move(211, 10);
    QCOMPARE(desk.sample(0), 211.0);
    desk.move(291, 10);
    QCOMPARE(desk.sample(0), 300.0);
    desk.move(291, quietY); // another channel's row
    QCOMPARE(desk.sample(0), 291.0);
}

void TstMainViewMarkers::outsideAllChannelsAMarkerMovesFreely()
{
    MarkerDesk desk(eightChannelModel, {1190, 1200}); // eight rows of 120
    desk.load(squareWave());
    desk.move(203, 1000);
    desk.key(Qt::Key_1);
    desk.move(204, 1000);
    QCOMPARE(desk.sample(0), 204.0);
}

void TstMainViewMarkers::theStartAndTheEndOfTheDataAttract()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.move(500, quietY);
    desk.key(Qt::Key_1);
    desk.move(15, quietY);
    QCOMPARE(desk.sample(0), 15.0);
    desk.move(10, quietY);
    QCOMPARE(desk.sample(0), 0.0);
    desk.move(992, quietY);
    QCOMPARE(desk.sample(0), 1000.0);
}

void TstMainViewMarkers::onAScaledScreenAMarkerSnapsInLogicalPixels()
{
    resetProgram(192);
    MarkerDesk desk; // 405 logical columns
    desk.load(capture().samples(405).pulses(0, {100}));
    desk.move(300, 10);
    desk.key(Qt::Key_1);
    desk.move(221, 10); // column 110
    QCOMPARE(desk.sample(0), 100.0);
    QCOMPARE(desk.x(0), 200);
    desk.move(223, 10);
    QCOMPARE(desk.sample(0), 111.0);
    QCOMPARE(desk.x(0), 222);
}

QTEST_MAIN(TstMainViewMarkers)
#include "tst_MainViewMarkers.moc"
