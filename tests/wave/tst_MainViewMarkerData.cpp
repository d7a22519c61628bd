#include "device/DeviceGlobals.h"
#include "wave/MarkerDesk.h"

#include <QScrollBar>
#include <QtTest>

namespace {

constexpr int analogModel = 97;
constexpr int eightChannelModel = 1;
constexpr int thirtyTwoChannelModel = 9;

} // namespace

class TstMainViewMarkerData : public QObject {
    Q_OBJECT
private slots:
    void init();
    void markersKeepTheirSamplesWhenTheViewMoves();
    void aMarkerThatIsOffIsNotMovedWithTheView();
    void markersAreAsHighAsAllRows();
    void newDataTakesMarkersOffAndKeepsThePairs();
    void newDataWhileAMarkerFollowsEndsThat();
    void anotherModelWhileAMarkerFollowsTakesAllMarkersAway();
    void whileACaptureRunsAFollowingMarkerShowsNoTimes();
    void aCaptureOfOneSampleTakesMarkers();
    void aCaptureOfTheGreatestLengthTakesMarkers();
    void aMarkerSnapsInTheLastOfThirtyTwoScrolledRows();
    void theAnalogModelTakesMarkersInItsRows();
};

void TstMainViewMarkerData::init()
{
    resetProgram();
    QCursor::setPos(5000, 5000);
}

void TstMainViewMarkerData::markersKeepTheirSamplesWhenTheViewMoves()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.put(0, 250);
    desk.put(3, 350);
    desk.changes.clear();
    desk.gen.zoomSetRatio(0.5); // about sample 500
    QCOMPARE(desk.x(0), 0);
    QCOMPARE(desk.x(3), 200);
    QCOMPARE(desk.changes, (MarkerDesk::Changes{{8, 0, 0}, {8, 3, 200}}));
    desk.gen.setViewStart(300.0);
    QCOMPARE(desk.x(0), -100);
    QCOMPARE(desk.x(3), 100);
    QCOMPARE(desk.sample(0), 250.0);
}

void TstMainViewMarkerData::aMarkerThatIsOffIsNotMovedWithTheView()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.ask(0, 0);
    desk.changes.clear();
    desk.gen.zoomSetRatio(0.5);
    QVERIFY(desk.changes.isEmpty());
}

void TstMainViewMarkerData::markersAreAsHighAsAllRows()
{
    MarkerDesk desk(eightChannelModel);
    desk.load(squareWave());
    desk.put(0, 250);
    QCOMPARE(desk.marker(0).sceneBoundingRect(), QRectF(250, 0, 1, 800));
    desk.view.resize(1190, 640);
    QCOMPARE(desk.marker(0).sceneBoundingRect(), QRectF(250, 0, 1, 640));
    gDev->chnEnable.fill(false, 2);
    gDev->chnEnable.resize(8);
    desk.view.slotChnEnaChanged();
    QCOMPARE(desk.marker(0).boundingRect().height(), desk.waves->sceneRect().height());
}

void TstMainViewMarkerData::newDataTakesMarkersOffAndKeepsThePairs()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.put(0, 250);
    desk.put(1, 350);
    desk.put(2, 450);
    desk.load(squareWave());
    QCOMPARE(desk.ids(), (QVector<int>{0, 1, 2, 3}));
    for (const int id : {0, 1, 2}) {
        QCOMPARE(desk.state(id), MarkerState::off);
        QCOMPARE(desk.times.value(id), unknown());
        QVERIFY(!desk.flag(id)->isVisibleTo(&desk.ruler));
    }
    QVERIFY(desk.view.shownPairs().isEmpty());
}

void TstMainViewMarkerData::newDataWhileAMarkerFollowsEndsThat()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.move(250, quietY);
    desk.key(Qt::Key_1);
    desk.load(squareWave());
    desk.move(260, quietY);
    QCOMPARE(desk.state(0), MarkerState::off);
    desk.click(260, quietY);
    QCOMPARE(desk.zooms.size(), 1);
}

void TstMainViewMarkerData::anotherModelWhileAMarkerFollowsTakesAllMarkersAway()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.put(2, 450);
    desk.move(250, quietY);
    desk.key(Qt::Key_1);
    desk.replaceDevice(thirtyTwoChannelModel);
    desk.ruler.dropHandles();
    QVERIFY(desk.ids().isEmpty());
    desk.move(260, quietY);
    desk.click(260, quietY);
    desk.load(capture().channels(32).samples(1000));
    desk.made.clear();
    desk.move(250, quietY);
    desk.key(Qt::Key_1);
    QCOMPARE(desk.made, (QVector<int>{0}));
    QCOMPARE(desk.state(0), MarkerState::following);
    QVERIFY(desk.flag(0)->isVisibleTo(&desk.ruler));
}

void TstMainViewMarkerData::whileACaptureRunsAFollowingMarkerShowsNoTimes()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.move(250, quietY);
    desk.key(Qt::Key_1);
    gDev->smpData->open();
    desk.move(205, 10);
    QCOMPARE(desk.times.value(0), unknown());
    desk.click(205, 10);
    QCOMPARE(desk.state(0), MarkerState::following);
    desk.load(squareWave());
    QCOMPARE(desk.state(0), MarkerState::off);
}

void TstMainViewMarkerData::aCaptureOfOneSampleTakesMarkers()
{
    MarkerDesk desk;
    desk.load(capture().samples(1));
    desk.move(500, quietY);
    desk.key(Qt::Key_1);
    desk.move(501, quietY);
    QVERIFY(desk.sample(0) == 0.0 || desk.sample(0) == 1.0);
    desk.press(501, quietY);
    desk.release(501, quietY);
    desk.put(1, 700);
    desk.ask(3, 0);
    QCOMPARE(desk.view.shownPairs().size(), 1);
    QVERIFY(!desk.view.grab().isNull());
}

void TstMainViewMarkerData::aCaptureOfTheGreatestLengthTakesMarkers()
{
    constexpr std::int64_t longest = (std::int64_t(1) << 40) - 1;
    MarkerDesk desk;
    desk.load(capture().samples(longest).rate(1));
    desk.move(500, quietY);
    desk.key(Qt::Key_1);
    desk.move(999, quietY); // the end is within reach
    QCOMPARE(desk.sample(0), double(longest));
    QCOMPARE(desk.times.value(0), texts("1099511627775s", "###"));
    desk.press(999, quietY);
    desk.release(999, quietY);
    desk.gen.zoomSetRatio(0.01);
    desk.gen.setViewStart(0.0);
    QVERIFY(desk.x(0) > 100'000);
    QVERIFY(!desk.view.grab().isNull());
    QVERIFY(!desk.ruler.grab().isNull());
    QCOMPARE(desk.sample(0), double(longest));
}

void TstMainViewMarkerData::aMarkerSnapsInTheLastOfThirtyTwoScrolledRows()
{
    MarkerDesk desk(thirtyTwoChannelModel);
    desk.load(capture().channels(32).samples(1000).pulses(31, {500}));
    desk.waves->verticalScrollBar()->setValue(32 * 42);
    desk.move(300, 790);
    desk.key(Qt::Key_1);
    desk.move(505, 790);
    QCOMPARE(desk.sample(0), 500.0);
    QCOMPARE(desk.marker(0).boundingRect().height(), 32.0 * 42);
}

void TstMainViewMarkerData::theAnalogModelTakesMarkersInItsRows()
{
    MarkerDesk desk(analogModel, {1190, 1200}); // the analog area is 400 high
    desk.load(capture().channels(16, 2).samples(1000).pulses(0, {500}));
    desk.move(300, 425);
    desk.key(Qt::Key_1);
    desk.move(505, 425);
    QCOMPARE(desk.sample(0), 500.0);
    desk.move(505, 100); // over no digital channel
    QCOMPARE(desk.sample(0), 505.0);
    QCOMPARE(desk.marker(0).boundingRect().height(), 1200.0);
}

QTEST_MAIN(TstMainViewMarkerData)
#include "tst_MainViewMarkerData.moc"
