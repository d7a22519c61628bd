#include "wave/CursorBody.h"
#include "wave/CursorHandle.h"
#include "wave/MainViewDesk.h"
#include "wave/TimeView.h"

#include <QLineEdit>
#include <QScrollBar>
#include <QtTest>

#include <array>

namespace {

constexpr int analogModel = 97;
constexpr int eightChannelModel = 1;
constexpr int thirtyTwoChannelModel = 9;
constexpr int quietY = 410; ///< in the row of a channel that never changes

/// 1,000 samples at 1 MHz, one a pixel; channel 0 changes at 100, 200, 300 and so on and is low at first.
WaveCapture squareWave()
{
    return capture().samples(1000).rate(1000000).pulses(0, std::vector<std::int32_t>(9, 100));
}

/// What a marker's line in the list of pairs shows.
struct Texts {
    QString value;
    QString total;
    bool operator==(const Texts &) const = default;
};

/// A main view with a ruler, joined as the main window joins them.
class MarkerDesk : public MainViewDesk {
public:
    using Changes = QVector<std::array<int, 3>>;

    explicit MarkerDesk(int model = 0, QSize size = {1190, 800}) : MainViewDesk(model, size)
    {
        QObject::connect(&view, &MainView::timeMarkBodyChanged, &ruler, &TimeView::slotMainViewMarkerChanged);
        QObject::connect(&ruler, &TimeView::timeMarkerChanged, &view, &MainView::slotTimeViewMarkerChanged);
        QObject::connect(&view, &MainView::timeMarkBodyChanged, &ruler, [this](int type, int index, int value) {
            changes.append({type, index, value});
        });
        QObject::connect(&view, &MainView::timMarkPairChanged, &ruler,
                         [this](int type, int id, const QString &value, const QString &total) {
                             if (type == 0) {
                                 made.append(id);
                             } else if (type == 4) {
                                 times[id] = {value, total};
                             }
                         });
        QObject::connect(&view, &MainView::pulseMeasureChangedbyTimeMarker, &ruler,
                         [this](int group) { recounts.append(group); });
        ruler.resize(waves->width(), dp(36));
    }

    [[nodiscard]] QVector<int> ids() const
    {
        QVector<int> all;
        for (const CursorBody *marker : items<CursorBody>()) {
            all.append(marker->id());
        }
        std::sort(all.begin(), all.end());
        return all;
    }
    [[nodiscard]] const CursorBody &marker(int id) const
    {
        const auto all = items<CursorBody>();
        const auto found = std::find_if(all.begin(), all.end(), [id](const auto *each) { return each->id() == id; });
        return **found;
    }
    [[nodiscard]] MarkerState state(int id) const { return marker(id).markerState(); }
    [[nodiscard]] double sample(int id) const { return marker(id).samplePos; }
    [[nodiscard]] int x(int id) const { return int(marker(id).x()); }
    [[nodiscard]] CursorHandle *flag(int id) const
    {
        const auto all = ruler.findChildren<CursorHandle *>();
        const auto found = std::find_if(all.begin(), all.end(), [id](const auto *each) { return each->id() == id; });
        return found == all.end() ? nullptr : *found;
    }
    /// Puts marker `id` (0 to 9) down at the column, by its key and a click.
    void put(int id, int column, int y = quietY)
    {
        move(column, y);
        key(keyOf(id));
        press(column, y);
        release(column, y);
    }
    [[nodiscard]] static Qt::Key keyOf(int id) { return id == 9 ? Qt::Key_0 : Qt::Key(Qt::Key_1 + id); }
    void ask(int type, int id) { view.slotTimingMarkerPairClicked(type, id); }

    TimeView ruler{&gen};
    Changes changes;
    QVector<int> recounts;  ///< pairs whose pulses were counted anew
    QVector<int> made;      ///< first ids of the pairs that the view has made
    QMap<int, Texts> times; ///< the last texts of each marker
};

Texts unknown()
{
    return {QStringLiteral("###"), QStringLiteral("###")};
}

Texts texts(const char *value, const char *total)
{
    return {QString::fromLatin1(value), QString::fromLatin1(total)};
}

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
    void thePointerBrightensAMarkerOneStrokeAround_data();
    void thePointerBrightensAMarkerOneStrokeAround();
    void onlyOneOfTwoNeighboursIsBright();
    void aClickPicksUpTheMarkerUnderThePointerAndDoesNotPutItDownAtOnce();
    void aRightClickOnAMarkerZoomsOut();
    void leavingTheViewLeavesAMarkerPlain();

    void aFollowingMarkerSnapsToAnEdgeOfTheChannelUnderThePointer();
    void outsideAllChannelsAMarkerMovesFreely();
    void theStartAndTheEndOfTheDataAttract();
    void onAScaledScreenAMarkerSnapsInLogicalPixels();

    void timesCountFromTheTriggerAndDistancesBetweenThePair();
    void aMarkerOnTheTriggerShowsZeroPicoseconds();
    void aMarkerTakenOffLosesItsTexts();
    void eachChangeOfAMarkerAsksForThePulsesOfItsPair();
    void aHoverAsksForNoPulses();

    void markersKeepTheirSamplesWhenTheViewMoves();
    void aMarkerThatIsOffIsNotMovedWithTheView();
    void markersAreAsHighAsAllRows();

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

    void newDataTakesMarkersOffAndKeepsThePairs();
    void newDataWhileAMarkerFollowsEndsThat();
    void anotherModelWhileAMarkerFollowsTakesAllMarkersAway();
    void whileACaptureRunsAFollowingMarkerShowsNoTimes();
    void aCaptureOfOneSampleTakesMarkers();
    void aCaptureOfTheGreatestLengthTakesMarkers();
    void aMarkerSnapsInTheLastOfThirtyTwoScrolledRows();
    void theAnalogModelTakesMarkersInItsRows();
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
    QTest::addColumn<int>("id");
    for (int id = 0; id < 10; ++id) {
        QTest::addRow("%d", (id + 1) % 10) << MarkerDesk::keyOf(id) << id;
    }
}

void TstMainViewMarkers::eachNumberKeyHasItsMarker()
{
    QFETCH(Qt::Key, key);
    QFETCH(int, id);
    MarkerDesk desk;
    desk.load(squareWave());
    desk.move(250, quietY);
    desk.key(key);
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
    QLineEdit field(&desk.sidebar(0));
    field.show();
    field.setFocus();
    const double start = desk.gen.viewStart();
    for (const char c : "1234567890+-=") {
        if (c != '\0') {
            QTest::keyClick(desk.view.windowHandle(), c);
        }
    }
    QCOMPARE(field.text(), QStringLiteral("1234567890+-="));
    QTest::keyClick(desk.view.windowHandle(), Qt::Key_Home);
    QCOMPARE(field.cursorPosition(), 0);
    QTest::keyClick(desk.view.windowHandle(), Qt::Key_End);
    QCOMPARE(field.cursorPosition(), 13);
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

void TstMainViewMarkers::timesCountFromTheTriggerAndDistancesBetweenThePair()
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

void TstMainViewMarkers::aMarkerOnTheTriggerShowsZeroPicoseconds()
{
    MarkerDesk desk;
    desk.load(squareWave().trigger(250));
    desk.put(0, 250);
    QCOMPARE(desk.times.value(0), texts("0ps", "###"));
    desk.put(1, 250);
    QCOMPARE(desk.times.value(1), texts("0ps", "0ps"));
}

void TstMainViewMarkers::aMarkerTakenOffLosesItsTexts()
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

void TstMainViewMarkers::eachChangeOfAMarkerAsksForThePulsesOfItsPair()
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

void TstMainViewMarkers::aHoverAsksForNoPulses()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.put(0, 250);
    desk.recounts.clear();
    desk.move(251, quietY);
    desk.move(300, quietY);
    QVERIFY(desk.recounts.isEmpty());
}

void TstMainViewMarkers::markersKeepTheirSamplesWhenTheViewMoves()
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

void TstMainViewMarkers::aMarkerThatIsOffIsNotMovedWithTheView()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.ask(0, 0);
    desk.changes.clear();
    desk.gen.zoomSetRatio(0.5);
    QVERIFY(desk.changes.isEmpty());
}

void TstMainViewMarkers::markersAreAsHighAsAllRows()
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

void TstMainViewMarkers::thePanelAddsAPairThatIsOff()
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

void TstMainViewMarkers::thePanelsPairsStandInTheOrderOfTheirLetters()
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

void TstMainViewMarkers::removingAPairTakesItsMarkersAndFlagsAway()
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

void TstMainViewMarkers::aPairIsRemovedWhileItsMarkerFollows()
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

void TstMainViewMarkers::aMarkersButtonCallsItToTheRightEndAndSendsItAway()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.ask(2, 1);
    QCOMPARE(desk.state(1), MarkerState::following);
    QCOMPARE(desk.x(1), 980);
    desk.ask(2, 1);
    QCOMPARE(desk.state(1), MarkerState::off);
}

void TstMainViewMarkers::aMarkersButtonPicksItUpWhereItStands()
{
    MarkerDesk desk;
    desk.load(squareWave());
    desk.put(0, 250);
    desk.ask(2, 0);
    QCOMPARE(desk.state(0), MarkerState::following);
    QCOMPARE(desk.sample(0), 250.0);
}

void TstMainViewMarkers::onlyOneMarkerFollowsThePointer()
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

void TstMainViewMarkers::aMarkersButtonDoesNothingWithoutSamples()
{
    MarkerDesk desk;
    desk.ask(2, 0);
    QVERIFY(desk.ids().isEmpty());
    desk.load(capture().samples(0));
    desk.ask(2, 0);
    QVERIFY(desk.ids().isEmpty());
}

void TstMainViewMarkers::theLocationButtonShowsBothMarkersOfAPair()
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

void TstMainViewMarkers::theLocationOfAPairWithOneMarkerDoesNothing()
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

void TstMainViewMarkers::idsAboveFiftyOneHaveLabelsPastZ()
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

void TstMainViewMarkers::requestsThatAreNoneAreIgnored()
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

void TstMainViewMarkers::pairsWithBothMarkersAreShown()
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

void TstMainViewMarkers::aFlagInTheRulerPicksItsMarkerUpMovesItAndPutsItDown()
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

void TstMainViewMarkers::flagAndLineStandOverEachOther_data()
{
    QTest::addColumn<int>("dpi");
    for (const int dpi : {96, 144, 192}) {
        QTest::addRow("%d", dpi) << dpi;
    }
}

void TstMainViewMarkers::flagAndLineStandOverEachOther()
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

void TstMainViewMarkers::changesOfFlagsThatAreNoneAreIgnored()
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

void TstMainViewMarkers::newDataTakesMarkersOffAndKeepsThePairs()
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

void TstMainViewMarkers::newDataWhileAMarkerFollowsEndsThat()
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

void TstMainViewMarkers::anotherModelWhileAMarkerFollowsTakesAllMarkersAway()
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

void TstMainViewMarkers::whileACaptureRunsAFollowingMarkerShowsNoTimes()
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

void TstMainViewMarkers::aCaptureOfOneSampleTakesMarkers()
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

void TstMainViewMarkers::aCaptureOfTheGreatestLengthTakesMarkers()
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

void TstMainViewMarkers::aMarkerSnapsInTheLastOfThirtyTwoScrolledRows()
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

void TstMainViewMarkers::theAnalogModelTakesMarkersInItsRows()
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

QTEST_MAIN(TstMainViewMarkers)
#include "tst_MainViewMarkers.moc"
