#include "controls/Look.h"
#include "wave/MarkerDesk.h"

#include <QtTest>

#include <utility>

class TstMainViewMarkerPairs : public QObject {
    Q_OBJECT
private slots:
    void init();
    void timesCountFromTheTriggerAndDistancesBetweenThePair();
    void aMarkerOnTheTriggerShowsZeroPicoseconds();
    void aMarkerTakenOffLosesItsTexts();
    void eachChangeOfAMarkerAsksForThePulsesOfItsPair();
    void aHoverAsksForNoPulses();
    void thePanelAddsAPairThatIsOff();
    void thePanelsPairsStandInTheOrderOfTheirLetters();
    void removingAPairTakesItsMarkersAndFlagsAway();
    void aPairIsRemovedWhileItsMarkerFollows();
    void aMarkersButtonCallsItToTheRightEndAndSendsItAway();
    void aMarkersButtonPicksItUpWhereItStands();
    void onlyOneMarkerFollowsThePointer();
    void aMarkersButtonDoesNothingWithoutSamples();
    void theLocationButtonShowsBothMarkersOfAPair();
    void theLocationOfAPairWithOneMarkerDoesNothing();
    void idsAboveFiftyOneHaveLabelsPastZ();
    void requestsThatAreNoneAreIgnored();
    void pairsWithBothMarkersAreShown();
    void aFlagInTheRulerPicksItsMarkerUpMovesItAndPutsItDown();
    void flagAndLineStandOverEachOther_data();
    void flagAndLineStandOverEachOther();
    void changesOfFlagsThatAreNoneAreIgnored();
};

void TstMainViewMarkerPairs::init()
{
    resetProgram();
    QCursor::setPos(5000, 5000);
}

void TstMainViewMarkerPairs::timesCountFromTheTriggerAndDistancesBetweenThePair()
{
    MarkerDesk desk;
    desk.load(squareWave().trigger(100));
    desk.put(0, 250);
    QCOMPARE(desk.times.value(0), texts("150us", "###"));
    desk.put(1, 50);
    QCOMPARE(desk.times.value(1), texts("-50us", "200us"));
    desk.put(2, 450); // of another pair
    QCOMPARE(desk.times.value(2), texts("350us", "###"));
}

void TstMainViewMarkerPairs::aMarkerOnTheTriggerShowsZeroPicoseconds()
{
    MarkerDesk desk;
    desk.load(squareWave().trigger(250));
    desk.put(0, 250);
    QCOMPARE(desk.times.value(0), texts("0ps", "###"));
    desk.put(1, 250);
    QCOMPARE(desk.times.value(1), texts("0ps", "0ps"));
}

void TstMainViewMarkerPairs::aMarkerTakenOffLosesItsTexts()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.put(0, 250);
    desk.put(1, 350);
    desk.click(351, quietY);
    desk.click(351, quietY, Qt::RightButton);
    QCOMPARE(desk.state(1), MarkerState::off);
    QCOMPARE(desk.times.value(1), unknown());
    desk.move(250, quietY);
    desk.click(250, quietY);
    desk.move(260, quietY);
    QCOMPARE(desk.times.value(0), texts("260us", "###"));
}

void TstMainViewMarkerPairs::eachChangeOfAMarkerAsksForThePulsesOfItsPair()
{
    MarkerDesk desk;
    desk.load(squareWave());
    const auto asked = [&desk] { return std::exchange(desk.recounts, {}); };
    desk.move(250, quietY);
    desk.key(Qt::Key_3);
    QCOMPARE(asked(), (QVector<int>{1}));
    desk.move(260, quietY);
    QCOMPARE(asked(), (QVector<int>{1}));
    desk.press(260, quietY, Qt::RightButton);
    desk.release(260, quietY, Qt::RightButton);
    QCOMPARE(asked(), (QVector<int>{1}));
    desk.ask(1, 2);
    QCOMPARE(asked(), (QVector<int>{1}));
}

void TstMainViewMarkerPairs::aHoverAsksForNoPulses()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.put(0, 250);
    desk.recounts.clear();
    desk.move(251, quietY);
    desk.move(300, quietY);
    QVERIFY(desk.recounts.isEmpty());
}

void TstMainViewMarkerPairs::thePanelAddsAPairThatIsOff()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.ask(0, 4);
    QCOMPARE(desk.ids(), (QVector<int>{4, 5}));
    QCOMPARE(desk.state(4), MarkerState::off);
    QCOMPARE(desk.state(5), MarkerState::off);
    QCOMPARE(desk.times.value(4), unknown());
    QCOMPARE(desk.x(5), 800);
}

void TstMainViewMarkerPairs::thePanelsPairsStandInTheOrderOfTheirLetters()
{
    MarkerDesk desk;
    desk.load(squareWave());
    for (const int id : {8, 0, 4}) {
        desk.ask(0, id);
    }
    desk.changes.clear();
    desk.move(250, quietY);
    desk.key(Qt::Key_5); // C1 stands third
    QCOMPARE(desk.changes.last(), (std::array<int, 3>{8, 2, 250}));
    QCOMPARE(desk.flag(4)->x(), 250 - 7);
}

void TstMainViewMarkerPairs::removingAPairTakesItsMarkersAndFlagsAway()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.put(0, 250);
    desk.put(2, 350);
    desk.put(4, 450);
    desk.changes.clear();
    desk.ask(1, 2);
    QCOMPARE(desk.ids(), (QVector<int>{0, 1, 4, 5}));
    QCOMPARE(desk.changes, (MarkerDesk::Changes{{9, 2, -1}}));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(desk.flag(2), nullptr);
    QVERIFY(desk.flag(4) != nullptr);
    desk.ask(1, 2); // there is none any more
    QCOMPARE(desk.ids().size(), 4);
    desk.made.clear();
    desk.ask(0, 2);
    QCOMPARE(desk.made, (QVector<int>{2}));
    QCOMPARE(desk.ids().size(), 6);
}

void TstMainViewMarkerPairs::aPairIsRemovedWhileItsMarkerFollows()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.move(250, quietY);
    desk.key(Qt::Key_1);
    desk.ask(1, 0);
    desk.move(260, quietY);
    QVERIFY(desk.ids().isEmpty());
    desk.click(260, quietY);
    QCOMPARE(desk.zooms.size(), 1);
}

void TstMainViewMarkerPairs::aMarkersButtonCallsItToTheRightEndAndSendsItAway()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.ask(2, 1);
    QCOMPARE(desk.state(1), MarkerState::following);
    QCOMPARE(desk.x(1), 980);
    desk.ask(2, 1);
    QCOMPARE(desk.state(1), MarkerState::off);
}

void TstMainViewMarkerPairs::aMarkersButtonPicksItUpWhereItStands()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.put(0, 250);
    desk.ask(2, 0);
    QCOMPARE(desk.state(0), MarkerState::following);
    QCOMPARE(desk.sample(0), 250.0);
}

void TstMainViewMarkerPairs::onlyOneMarkerFollowsThePointer()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.put(0, 250);
    desk.ask(2, 3);
    desk.ask(2, 0);
    QCOMPARE(desk.state(3), MarkerState::off);
    QCOMPARE(desk.state(0), MarkerState::following);
    desk.put(2, 450);
    desk.key(Qt::Key_6);
    desk.view.slotTimeViewMarkerChanged(5, 2, 1, 0); // by the ruler
    QCOMPARE(desk.state(2), MarkerState::following);
    QCOMPARE(desk.state(5), MarkerState::placed);
}

void TstMainViewMarkerPairs::aMarkersButtonDoesNothingWithoutSamples()
{
    MarkerDesk desk;
    desk.ask(2, 0);
    QVERIFY(desk.ids().isEmpty());
    desk.load(capture().samples(0));
    desk.ask(2, 0);
    QVERIFY(desk.ids().isEmpty());
}

void TstMainViewMarkerPairs::theLocationButtonShowsBothMarkersOfAPair()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.put(0, 450);
    desk.put(1, 351);
    desk.ask(3, 0);
    QCOMPARE(desk.gen.ratioSasPix(), 100.0 / 500.0);
    QCOMPARE(desk.x(1), 250);
    QCOMPARE(desk.x(0), 745);
}

void TstMainViewMarkerPairs::theLocationOfAPairWithOneMarkerDoesNothing()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.put(0, 450);
    const double ratio = desk.gen.ratioSasPix();
    desk.ask(3, 0);
    desk.ask(3, 6);
    QCOMPARE(desk.gen.ratioSasPix(), ratio);
    QCOMPARE(desk.ids(), (QVector<int>{0, 1}));
}

void TstMainViewMarkerPairs::idsAboveFiftyOneHaveLabelsPastZ()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.ask(0, 52);
    desk.ask(2, 53);
    QCOMPARE(desk.marker(52).name(), QStringLiteral("[1"));
    QCOMPARE(desk.state(53), MarkerState::following);
    QCOMPARE(desk.times.value(53), texts("980us", "###"));
    desk.ask(1, 52);
    QVERIFY(desk.ids().isEmpty());
}

void TstMainViewMarkerPairs::requestsThatAreNoneAreIgnored()
{
    MarkerDesk desk;
    desk.load(squareWave());
    for (const int type : {-1, 0, 1, 2, 3, 4}) {
        desk.ask(type, -1);
    }
    desk.ask(4, 0);
    desk.ask(-1, 0);
    QVERIFY(desk.ids().isEmpty());
    QVERIFY(desk.changes.isEmpty());
}

void TstMainViewMarkerPairs::pairsWithBothMarkersAreShown()
{
    MarkerDesk desk;
    desk.load(squareWave());
    QVERIFY(desk.view.shownPairs().isEmpty());
    desk.put(4, 600);
    desk.put(5, 450);
    desk.put(0, 250);
    desk.put(1, 350);
    desk.put(2, 700);
    const QVector<ShownPair> pairs = desk.view.shownPairs();
    QCOMPARE(pairs.size(), 2);
    QCOMPARE(pairs[0].group, 0);
    QCOMPARE(pairs[0].firstName, QStringLiteral("A1"));
    QCOMPARE(pairs[1].group, 2);
    QCOMPARE(pairs[1].firstName, QStringLiteral("C1"));
    QCOMPARE(pairs[1].secondName, QStringLiteral("C2"));
    QCOMPARE(pairs[1].firstSample, 600.0);
    QCOMPARE(pairs[1].secondSample, 450.0);
}

void TstMainViewMarkerPairs::aFlagInTheRulerPicksItsMarkerUpMovesItAndPutsItDown()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.put(0, 250);
    desk.move(-50, quietY);
    desk.ruler.move(0, 1000); // clear of the waves
    desk.ruler.show();
    QVERIFY(QTest::qWaitForWindowExposed(&desk.ruler));
    const auto moveTo = [&desk](int x) {
        QCursor::setPos(desk.ruler.mapToGlobal({x, 30}));
        QCoreApplication::processEvents();
    };
    const auto click = [&desk](int x) { QTest::mouseClick(desk.ruler.windowHandle(), Qt::LeftButton, {}, {x, 30}); };
    moveTo(250);
    QCOMPARE(desk.flag(0)->markerState(), MarkerState::hovered);
    click(250);
    QCOMPARE(desk.state(0), MarkerState::following);
    QCOMPARE(desk.flag(0)->markerState(), MarkerState::following);
    moveTo(305);
    QCOMPARE(desk.sample(0), 305.0); // the ruler has no edges
    QCOMPARE(desk.flag(0)->x(), 305 - 7);
    QCOMPARE(desk.times.value(0), texts("305us", "###"));
    click(305);
    QCOMPARE(desk.state(0), MarkerState::placed);
    moveTo(400);
    QCOMPARE(desk.sample(0), 305.0);
}

void TstMainViewMarkerPairs::flagAndLineStandOverEachOther_data()
{
    QTest::addColumn<int>("dpi");
    for (const int dpi : {96, 144, 192}) {
        QTest::addRow("%d", dpi) << dpi;
    }
}

void TstMainViewMarkerPairs::flagAndLineStandOverEachOther()
{
    QFETCH(int, dpi);
    resetProgram(dpi);
    MarkerDesk desk;
    desk.load(capture().samples(100));
    desk.put(0, 300, 500);
    desk.move(-50, 10);
    const QColor plain(31, 191, 31);
    const QImage waves = desk.waves->grab().toImage();
    const QImage ruler = desk.ruler.grab().toImage();
    QVector<int> line;
    QVector<int> tip;
    for (int x = 0; x < waves.width(); ++x) {
        if (waves.pixelColor(x, 500) == plain) {
            line.append(x);
        }
        if (ruler.pixelColor(x, ruler.height() - 1) == plain) {
            tip.append(x);
        }
    }
    QCOMPARE(line.size(), uiScale());
    QVERIFY(!tip.isEmpty());
    QCOMPARE(tip.first() + tip.last(), line.first() + line.last());
}

void TstMainViewMarkerPairs::changesOfFlagsThatAreNoneAreIgnored()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.view.slotTimeViewMarkerChanged(5, 0, 1, 0);
    desk.view.slotTimeViewMarkerChanged(6, -1, 1, 50);
    QVERIFY(desk.changes.isEmpty());
    desk.put(0, 250);
    desk.view.slotTimeViewMarkerChanged(7, 0, 1, 0);
    QCOMPARE(desk.state(0), MarkerState::placed);
    desk.view.slotTimeViewMarkerChanged(5, 0, 17, 0);
    QCOMPARE(desk.state(0), MarkerState::off);
    QCOMPARE(desk.times.value(0), unknown());
}

QTEST_MAIN(TstMainViewMarkerPairs)
#include "tst_MainViewMarkerPairs.moc"
