#include "controls/Look.h"
#include "controls/MyButton.h"
#include "device/DeviceGlobals.h"
#include "wave/LabelMove.h"
#include "wave/MainViewDesk.h"
#include "wave/NextEdge.h"

#include <QLineEdit>
#include <QMenu>
#include <QPointer>
#include <QScrollArea>
#include <QScrollBar>
#include <QtTest>

#include <algorithm>

namespace {

constexpr int eightChannelModel = 1;
constexpr int thirtyTwoChannelModel = 9;
constexpr int analogModel = 97;

QString stored(const char *key)
{
    return globalGet(QLatin1String(key));
}

/// Eight rows of 100 pixels, or as many as the model has, and what a hand does with them.
class Rows : public MainViewDesk {
public:
    explicit Rows(int model = eightChannelModel, QSize size = {1190, 800}) : MainViewDesk(model, size) {}

    template<typename Widget>
    [[nodiscard]] Widget *part(int chn, const char *name) const
    {
        return sidebar(chn).template findChild<Widget *>(QLatin1String(name));
    }
    [[nodiscard]] LabelMove *number(int chn) const { return part<LabelMove>(chn, "number"); }

    /// The way of the pointer: pressed on a channel's number, moved step by step to each offset.
    void take(int chn)
    {
        m_from = number(chn)->mapTo(&view, number(chn)->rect().center());
        send(QEvent::MouseButtonPress, Qt::LeftButton, Qt::LeftButton);
    }
    void pull(int offset, int step = 5)
    {
        while (m_offset != offset) {
            m_offset = m_offset < offset ? std::min(m_offset + step, offset) : std::max(m_offset - step, offset);
            send(QEvent::MouseMove, Qt::NoButton, Qt::LeftButton);
        }
    }
    void drop()
    {
        send(QEvent::MouseButtonRelease, Qt::LeftButton, Qt::NoButton);
        m_offset = 0;
    }
    [[nodiscard]] QVector<int> order() const
    {
        QVector<int> channels(gDev->chnEnable.size(), -1);
        for (int chn = 0; chn < channels.size(); ++chn) {
            channels[sidebar(chn).row()] = chn;
        }
        return channels;
    }
    /// Each row lies where its position says, sidebar beside items, and nothing is left above the others.
    [[nodiscard]] bool isAtRest(int top = 0) const
    {
        for (const int chn : order()) {
            const int height = gDev->chnEnable[chn] ? sidebar(chn).height() : 0;
            const QRect items(0, top, waves->width(), height);
            const bool placed = sidebar(chn).geometry() == QRect(0, top, dp(190), height) &&
                                place<ItemWaveLine>(chn) == items && place<ItemWaveBackground>(chn) == items;
            if (!placed || zOf<ItemWaveLine>(chn) != 1.0 || zOf<ItemWaveBackground>(chn) != 0.0) {
                return false;
            }
            top += height;
        }
        return true;
    }
    template<typename Item>
    [[nodiscard]] qreal zOf(int chn) const
    {
        for (const Item *item : items<Item>()) {
            if (item->data(0).toInt() == chn) {
                return item->zValue();
            }
        }
        return -1.0;
    }
    void disable(const QVector<int> &channels)
    {
        QVector<bool> enable(gDev->chnEnable.size(), true);
        for (const int chn : channels) {
            enable[chn] = false;
        }
        gDev->setChnEnable(enable);
        view.slotChnEnaChanged();
    }
    [[nodiscard]] QScrollBar *column() const { return view.findChild<QScrollArea *>()->verticalScrollBar(); }
    /// Opens a channel's height menu by its button and chooses an entry.
    void chooseHeight(int chn, int entry) const
    {
        QTest::mouseClick(part<MyButton>(chn, "setting"), Qt::LeftButton);
        QMenu *menu = sidebar(chn).findChild<QMenu *>();
        QVERIFY(menu->isVisible());
        QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(menu->actions().at(entry)).center());
        QVERIFY(!menu->isVisible());
    }

private:
    /// To the window, as from the system: it knows who holds the mouse, also where the pointer is outside.
    void send(QEvent::Type type, Qt::MouseButton button, Qt::MouseButtons held)
    {
        const QPointF place = m_from + QPoint(0, m_offset);
        QMouseEvent event(type, place, place, view.mapToGlobal(place.toPoint()), button, held, Qt::NoModifier);
        QCoreApplication::sendEvent(view.windowHandle(), &event);
    }

    QPoint m_from;
    int m_offset = 0;
};

} // namespace

class TstMainViewRows : public QObject {
    Q_OBJECT
private slots:
    void init();

    void aDraggedRowLandsWhereItsNeighboursHaveGivenWay();
    void whileDraggedARowLiesAboveTheOthersAndFollowsThePointer();
    void aPressAndReleaseWithoutAMoveChangesNothing();
    void aFastMoveLandsWhereTheRowIsShown();
    void pastTheTopTheRowStopsBelowTheAnalogArea();
    void pastTheBottomTheRowStopsAtTheLastRowsTop();
    void aDisabledRowIsPassedAtOnceAndStaysEmpty();
    void aRowOfEightTimesTheHeightPassesItsNeighboursOneByOne();
    void inAScrolledColumnTheRowFollowsThePointer();
    void aDragBeyondTheVisiblePartScrollsTheColumn();
    void aReleaseOutsideTheWindowEndsTheDrag();
    void anotherModelDuringADragLeavesItsOwnOrder();
    void anotherModelKeepsTheRowsThatItHasAsWell();
    void rowsBelowTheViewAreShownOnTheNextTurns();
    void rowsThatWaitAreShownAtOnceWhenTheColumnIsScrolled();
    void rowsThatGoWhileTheyWaitAreForgotten();
    void rowsThatAreKeptShowWhatIsStored();
    void aResetCanBeTakenBackOnce();
    void aWindowHiddenDuringADragEndsIt();
    void aChannelSwitchedOffDuringItsDragEndsIt();
    void aResizeDuringADragKeepsTheOrder();
    void aViewThatGoesAwayDuringADragDoesNotTellOfIt();
    void callsOutOfOrderAreIgnored();
    void anOrderThatIsNoPermutationIsReplacedAndADragFromItStored();
    void theHoverArrowFollowsTheMovedRow();
    void theHoverIsRenewedWhenAnotherRowComesUnderThePointer();
    void theNextLayoutKeepsTheDraggedOrder();

    void controlWithUpAndDownMovesTheRowByOne();
    void controlWithDownPassesADisabledRow();
    void tabWalksTheRowsFromTopToBottomAlsoAfterAMove();
    void tabToARowOutsideTheVisiblePartScrollsColumnAndWaves();
    void tabPassesDisabledChannels();

    void theMenuSetsTheHeightAndStoresAllHeights();
    void aReplyOfTheMenuWithAnOddValueIsTakenByTheRuleOfHeights();
    void resetBringsBackNamesOrderHeightsAndTriggersInOneAction();

    void anEdgeTriggerTakesTheEdgesOffAllOtherChannels();
    void levelTriggersStayBesideEachOther();
    void aChannelSwitchedOffShowsNoTriggerWhenItComesBack();
    void storedTriggersAreShownFromTheStart();
};

void TstMainViewRows::init()
{
    resetProgram();
    QCursor::setPos(5000, 5000);
}

void TstMainViewRows::aDraggedRowLandsWhereItsNeighboursHaveGivenWay()
{
    Rows rows;
    rows.take(1);
    rows.pull(210);
    QCOMPARE(rows.order(), (QVector<int>{0, 2, 3, 1, 4, 5, 6, 7}));
    rows.drop();
    QCOMPARE(stored("chnShowIndex"), QStringLiteral("0,3,1,2,4,5,6,7"));
    QVERIFY(rows.isAtRest());
    rows.take(7);
    rows.pull(-760);
    rows.drop();
    QCOMPARE(rows.order(), (QVector<int>{7, 0, 2, 3, 1, 4, 5, 6}));
    QVERIFY(rows.isAtRest());
}

void TstMainViewRows::whileDraggedARowLiesAboveTheOthersAndFollowsThePointer()
{
    Rows rows;
    rows.take(1);
    rows.pull(33);
    QCOMPARE(rows.number(1)->cursor().shape(), Qt::ClosedHandCursor);
    QCOMPARE(rows.sidebar(1).y(), 133);
    QCOMPARE(rows.place<ItemWaveLine>(1).y(), 133);
    QCOMPARE(rows.place<ItemWaveBackground>(1).y(), 133);
    QCOMPARE(rows.zOf<ItemWaveBackground>(1), 5.0);
    QCOMPARE(rows.zOf<ItemWaveLine>(1), 6.0);
    QCOMPARE(rows.view.childAt(50, 200)->parentWidget(), &rows.sidebar(1));
    rows.drop();
    QCOMPARE(rows.number(1)->cursor().shape(), Qt::OpenHandCursor);
    QVERIFY(rows.isAtRest());
}

void TstMainViewRows::aPressAndReleaseWithoutAMoveChangesNothing()
{
    Rows rows;
    rows.take(3);
    rows.drop();
    QCOMPARE(rows.order(), (QVector<int>{0, 1, 2, 3, 4, 5, 6, 7}));
    QVERIFY(rows.isAtRest());
}

void TstMainViewRows::aFastMoveLandsWhereTheRowIsShown()
{
    Rows rows;
    rows.take(0);
    rows.pull(510, 1000);
    rows.drop();
    QCOMPARE(rows.order(), (QVector<int>{1, 2, 3, 4, 5, 0, 6, 7}));
    QVERIFY(rows.isAtRest());
}

void TstMainViewRows::pastTheTopTheRowStopsBelowTheAnalogArea()
{
    Rows rows(analogModel, {1190, 1200}); // an analog area of 400 above rows of 50
    rows.take(2);
    rows.pull(-300);
    QCOMPARE(rows.sidebar(2).y(), 400);
    rows.drop();
    QCOMPARE(rows.order().mid(0, 4), (QVector<int>{2, 0, 1, 3}));
    QVERIFY(rows.isAtRest(400));
}

void TstMainViewRows::pastTheBottomTheRowStopsAtTheLastRowsTop()
{
    Rows rows;
    rows.take(5);
    rows.pull(900);
    QCOMPARE(rows.sidebar(5).y(), 700);
    rows.drop();
    QCOMPARE(rows.order(), (QVector<int>{0, 1, 2, 3, 4, 6, 7, 5}));
    QVERIFY(rows.isAtRest());
}

void TstMainViewRows::aDisabledRowIsPassedAtOnceAndStaysEmpty()
{
    Rows rows;
    rows.disable({2});
    rows.take(1);
    rows.pull(2, 1);
    QCOMPARE(rows.order(), (QVector<int>{0, 2, 1, 3, 4, 5, 6, 7}));
    rows.drop();
    QVERIFY(rows.isAtRest());
    QVERIFY(!rows.sidebar(2).isVisible());
}

void TstMainViewRows::aRowOfEightTimesTheHeightPassesItsNeighboursOneByOne()
{
    globalSet(QStringLiteral("chnShowMultip"), QStringLiteral("8"));
    Rows rows; // 15 units of 53.3 pixels
    const int half = rows.sidebar(1).height() / 2;
    rows.take(0);
    rows.pull(half + 3, 1);
    QCOMPARE(rows.order().mid(0, 3), (QVector<int>{1, 0, 2}));
    rows.pull(3 * half + 5, 1);
    QCOMPARE(rows.order().mid(0, 4), (QVector<int>{1, 2, 0, 3}));
    rows.drop();
    QVERIFY(rows.isAtRest());
}

void TstMainViewRows::inAScrolledColumnTheRowFollowsThePointer()
{
    Rows rows(thirtyTwoChannelModel); // rows of 42
    rows.column()->setValue(420);
    rows.take(15);
    rows.pull(90);
    QCOMPARE(rows.column()->value(), 420);
    QCOMPARE(rows.sidebar(15).y(), 15 * 42 + 90);
    rows.drop();
    QCOMPARE(rows.sidebar(15).row(), 17);
    QVERIFY(rows.isAtRest());
}

void TstMainViewRows::aDragBeyondTheVisiblePartScrollsTheColumn()
{
    Rows rows(thirtyTwoChannelModel);
    rows.take(0);
    rows.pull(1200);
    rows.drop();
    QCOMPARE(rows.column()->value(), rows.column()->maximum());
    QCOMPARE(rows.waves->verticalScrollBar()->value(), rows.column()->maximum());
    QCOMPARE(rows.sidebar(0).row(), 31);
    QVERIFY(rows.isAtRest());
}

void TstMainViewRows::aReleaseOutsideTheWindowEndsTheDrag()
{
    Rows rows;
    rows.take(0);
    rows.pull(5000, 50);
    rows.drop();
    QCOMPARE(rows.order(), (QVector<int>{1, 2, 3, 4, 5, 6, 7, 0}));
    QVERIFY(rows.isAtRest());
    rows.move(500, 300); // the pointer that comes back drags nothing
    QVERIFY(rows.isAtRest());
}

void TstMainViewRows::anotherModelDuringADragLeavesItsOwnOrder()
{
    Rows rows(thirtyTwoChannelModel);
    rows.take(15);
    rows.pull(100);
    rows.replaceDevice(eightChannelModel);
    rows.pull(150);
    rows.drop();
    QCOMPARE(rows.order(), (QVector<int>{0, 1, 2, 3, 4, 5, 6, 7}));
    QVERIFY(rows.isAtRest());
    rows.take(0);
    rows.pull(110);
    rows.drop();
    QCOMPARE(rows.order(), (QVector<int>{1, 0, 2, 3, 4, 5, 6, 7}));
    QVERIFY(rows.isAtRest());
}

void TstMainViewRows::anotherModelKeepsTheRowsThatItHasAsWell()
{
    Rows rows(thirtyTwoChannelModel);
    const QPointer<ItemChnSidebar> kept = &rows.sidebar(7);
    const QPointer<ItemChnSidebar> surplus = &rows.sidebar(8);
    rows.replaceDevice(eightChannelModel);
    QVERIFY(!kept.isNull());
    QVERIFY(surplus.isNull());
    QCOMPARE(rows.items<ItemWaveLine>().size(), 8);
    rows.replaceDevice(thirtyTwoChannelModel);
    QCOMPARE(&rows.sidebar(7), kept.data());
    QCOMPARE(rows.items<ItemWaveLine>().size(), 32);
}

void TstMainViewRows::rowsBelowTheViewAreShownOnTheNextTurns()
{
    Rows rows(eightChannelModel);
    rows.replaceDevice(thirtyTwoChannelModel); // rows of 42, the last in view is 19
    for (int chn = 0; chn < 32; ++chn) {
        QCOMPARE(rows.sidebar(chn).isVisible(), chn < 20);
    }
    QTRY_VERIFY(rows.sidebar(31).isVisible());
    for (int chn = 20; chn < 31; ++chn) {
        QVERIFY(rows.sidebar(chn).isVisible());
    }
}

void TstMainViewRows::rowsThatWaitAreShownAtOnceWhenTheColumnIsScrolled()
{
    Rows rows(eightChannelModel);
    rows.replaceDevice(thirtyTwoChannelModel);
    rows.disable({30});
    QVERIFY(!rows.sidebar(31).isVisible());
    rows.column()->setRange(0, 31 * 42 - 800); // as the loop's next turn would set it
    rows.column()->setValue(rows.column()->maximum());
    QVERIFY(rows.sidebar(31).isVisible());
    QVERIFY(!rows.sidebar(30).isVisible());
}

void TstMainViewRows::rowsThatGoWhileTheyWaitAreForgotten()
{
    Rows rows(eightChannelModel);
    rows.replaceDevice(thirtyTwoChannelModel);
    rows.replaceDevice(eightChannelModel);
    QCoreApplication::processEvents();
    QVERIFY(rows.sidebar(7).isVisible());
    rows.replaceDevice(thirtyTwoChannelModel);
    gDev->chnEnable.fill(false);
    rows.view.slotChnEnaChanged();
    QCoreApplication::processEvents();
    QVERIFY(!rows.sidebar(31).isVisible());
}

void TstMainViewRows::rowsThatAreKeptShowWhatIsStored()
{
    Rows rows;
    rows.take(0);
    rows.pull(110);
    rows.drop();
    rows.sidebar(3).setAnalyzerLabel(QStringLiteral("UART"));
    configLoad(); // as opening a file replaces all settings
    chnShowMultipPut({1, 1, 2, 1, 1, 1, 1, 1});
    globalSet(QStringLiteral("chnShowName3"), QStringLiteral("Clock"));
    gDev->setChnTrig(2, 3);
    rows.view.rebuildChannels(*gDev);
    QCOMPARE(rows.order(), (QVector<int>{0, 1, 2, 3, 4, 5, 6, 7}));
    QCOMPARE(rows.sidebar(2).height(), 2 * rows.sidebar(1).height());
    QCOMPARE(rows.sidebar(3).findChild<QLineEdit *>(QStringLiteral("name"))->text(), QStringLiteral("Clock"));
    QCOMPARE(rows.sidebar(3).findChild<QLineEdit *>(QStringLiteral("analyzer"))->text(), QString());
    QVERIFY(rows.sidebar(2).findChild<MyButton *>(QStringLiteral("btnPosEdge"))->selected);
}

void TstMainViewRows::aResetCanBeTakenBackOnce()
{
    Rows rows;
    globalSet(QStringLiteral("chnShowName3"), QStringLiteral("Clock"));
    gDev->setChnTrig(2, 3);
    rows.view.rebuildChannels(*gDev);
    rows.take(0);
    rows.pull(110);
    rows.drop();
    const QVector<int> order = rows.order();
    constexpr int x4 = 2;
    constexpr int reset = 5;
    constexpr int undo = 6;
    rows.chooseHeight(1, x4);
    rows.chooseHeight(1, reset);
    QCOMPARE(rows.order().first(), 0);
    QCOMPARE(gDev->chnTrig.at(2), 0);
    rows.chooseHeight(5, undo);
    QCOMPARE(rows.order(), order);
    QCOMPARE(rows.sidebar(1).multiplier(), 4);
    QCOMPARE(chnShowMultipGet(3).at(1), 4);
    QCOMPARE(globalGet(QStringLiteral("chnShowName3")), QStringLiteral("Clock"));
    QCOMPARE(gDev->chnTrig.at(2), 3);
    QVERIFY(rows.sidebar(2).findChild<MyButton *>(QStringLiteral("btnPosEdge"))->selected);
    rows.sidebar(1).setMultiplier(2);
    rows.chooseHeight(5, undo); // there is nothing to take back any more
    QCOMPARE(rows.sidebar(1).multiplier(), 2);
}

void TstMainViewRows::aWindowHiddenDuringADragEndsIt()
{
    Rows rows;
    rows.take(1);
    rows.pull(120);
    rows.view.hide();
    QCOMPARE(stored("chnShowIndex"), QStringLiteral("0,2,1,3,4,5,6,7"));
    QVERIFY(rows.isAtRest());
    rows.view.show();
    rows.drop();
    QVERIFY(rows.isAtRest());
}

void TstMainViewRows::aChannelSwitchedOffDuringItsDragEndsIt()
{
    Rows rows;
    rows.take(1);
    rows.pull(230);
    rows.disable({1, 6});
    QVERIFY(rows.isAtRest());
    rows.pull(400);
    rows.drop();
    QVERIFY(rows.isAtRest());
    rows.disable({});
    QVERIFY(!rows.order().contains(-1));
    QVERIFY(rows.isAtRest());
}

void TstMainViewRows::aResizeDuringADragKeepsTheOrder()
{
    Rows rows;
    rows.take(1);
    rows.pull(120);
    rows.view.resize(900, 400);
    rows.pull(121);
    rows.drop();
    QVERIFY(!rows.order().contains(-1));
    QVERIFY(rows.isAtRest());
}

void TstMainViewRows::aViewThatGoesAwayDuringADragDoesNotTellOfIt()
{
    {
        Rows rows;
        rows.take(1);
        rows.pull(120);
        globalSet(QStringLiteral("chnShowIndex"), QStringLiteral("7"));
    }
    QCOMPARE(stored("chnShowIndex"), QStringLiteral("7"));
}

void TstMainViewRows::callsOutOfOrderAreIgnored()
{
    Rows rows;
    for (const int chn : {-1, 0, 3, 8, 1000}) {
        rows.view.slotChnMove(3, chn, 500);
        rows.view.slotChnMove(2, chn, 0);
        rows.view.slotChnMove(7, chn, 0);
    }
    rows.view.slotChnMove(1, 8, 0);
    rows.view.slotChnMove(3, 8, 300);
    rows.view.slotChnMove(1, 2, 0);
    rows.view.slotChnMove(3, 4, 300);
    rows.view.slotChnMove(1, 3, 0);
    rows.view.slotChnMove(2, 2, 0);
    rows.view.slotChnMove(2, 3, 0);
    QCOMPARE(rows.order(), (QVector<int>{0, 1, 2, 3, 4, 5, 6, 7}));
    QVERIFY(rows.isAtRest());
}

void TstMainViewRows::anOrderThatIsNoPermutationIsReplacedAndADragFromItStored()
{
    for (const char *list : {"3,3,1,0,2,4,5,6", "9,8,7", "-1,0,1,2,3,4,5,6", "x,y", ",,,", "7,7,7,7,7,7,7,7"}) {
        globalSet(QStringLiteral("chnShowIndex"), QLatin1String(list));
        Rows rows;
        QCOMPARE(rows.order(), (QVector<int>{0, 1, 2, 3, 4, 5, 6, 7}));
        rows.take(0);
        rows.pull(100);
        rows.drop();
        QCOMPARE(stored("chnShowIndex"), QStringLiteral("1,0,2,3,4,5,6,7"));
    }
}

void TstMainViewRows::theHoverArrowFollowsTheMovedRow()
{
    Rows rows;
    rows.load(capture().samples(1000).rate(1000000).pulses(0, std::vector<std::int32_t>(9, 100)));
    rows.take(0);
    rows.pull(300);
    rows.drop();
    rows.move(500, 350);
    QVERIFY(rows.arrow().isVisible());
    QCOMPARE(rows.arrow().sceneBoundingRect().toRect().y(), 302);
    QCOMPARE(rows.texts.first(), QStringLiteral("100us"));
    rows.move(500, 250); // channel 3, which does not change
    QCOMPARE(rows.arrow().sceneBoundingRect().toRect().y(), 202);
    QCOMPARE(rows.texts.last(), QStringLiteral("###"));
}

void TstMainViewRows::theHoverIsRenewedWhenAnotherRowComesUnderThePointer()
{
    Rows rows;
    rows.load(capture().samples(1000).rate(1000000).pulses(0, std::vector<std::int32_t>(9, 100)));
    rows.move(5, 50);
    QCOMPARE(rows.texts.first(), QStringLiteral("100us"));
    QVERIFY(rows.items<NextEdge>().first()->isVisible());
    rows.view.slotChnMove(1, 0, 0);
    rows.view.slotChnMove(3, 0, 60);
    rows.view.slotChnMove(2, 0, 0);
    QCOMPARE(rows.order().first(), 1);
    QCOMPARE(rows.texts.first(), QStringLiteral("1ms")); // a channel that never changes
    QVERIFY(!rows.items<NextEdge>().first()->isVisible());
}

void TstMainViewRows::theNextLayoutKeepsTheDraggedOrder()
{
    Rows rows;
    rows.take(6);
    rows.pull(-350);
    rows.drop();
    const QVector<int> order = rows.order();
    rows.view.resize(900, 560);
    QCOMPARE(rows.order(), order);
    QVERIFY(rows.isAtRest());
    rows.replaceDevice(eightChannelModel);
    QCOMPARE(rows.order(), order);
    QVERIFY(rows.isAtRest());
}

void TstMainViewRows::controlWithUpAndDownMovesTheRowByOne()
{
    Rows rows;
    rows.load(capture().samples(1000));
    rows.number(2)->setFocus(Qt::TabFocusReason);
    QTest::keyClick(rows.number(2), Qt::Key_Down, Qt::ControlModifier);
    QCOMPARE(stored("chnShowIndex"), QStringLiteral("0,1,3,2,4,5,6,7"));
    QVERIFY(rows.isAtRest());
    for (int i = 0; i < 5; ++i) {
        QTest::keyClick(rows.number(2), Qt::Key_Up, Qt::ControlModifier);
    }
    QCOMPARE(rows.order(), (QVector<int>{2, 0, 1, 3, 4, 5, 6, 7}));
    QVERIFY(rows.isAtRest());
    QVERIFY(rows.number(2)->hasFocus());
    QVERIFY(rows.zooms.isEmpty()); // the plain keys zoom
}

void TstMainViewRows::controlWithDownPassesADisabledRow()
{
    Rows rows;
    rows.disable({3, 4});
    rows.number(2)->setFocus(Qt::TabFocusReason);
    QTest::keyClick(rows.number(2), Qt::Key_Down, Qt::ControlModifier);
    QCOMPARE(rows.order(), (QVector<int>{0, 1, 3, 4, 5, 2, 6, 7}));
    QVERIFY(rows.isAtRest());
}

void TstMainViewRows::tabWalksTheRowsFromTopToBottomAlsoAfterAMove()
{
    Rows rows;
    rows.take(0);
    rows.pull(300);
    rows.drop();
    const QVector<int> order{1, 2, 3, 0, 4, 5, 6, 7};
    QCOMPARE(rows.order(), order);
    rows.number(1)->setFocus(Qt::TabFocusReason);
    for (const int chn : order) {
        for (const char *name :
             {"number", "name", "setting", "btnPosEdge", "btnHighLevel", "btnNegEdge", "btnLowLevel"}) {
            QCOMPARE(QApplication::focusWidget(), rows.part<QWidget>(chn, name));
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        }
    }
}

void TstMainViewRows::tabToARowOutsideTheVisiblePartScrollsColumnAndWaves()
{
    Rows rows(thirtyTwoChannelModel); // rows of 42, the last in view is 18
    rows.part<QWidget>(18, "btnLowLevel")->setFocus(Qt::TabFocusReason);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    QCOMPARE(QApplication::focusWidget(), rows.number(19));
    QCOMPARE(rows.column()->value(), 20 * 42 - 800);
    QCOMPARE(rows.waves->verticalScrollBar()->value(), 20 * 42 - 800);
    rows.part<QWidget>(31, "number")->setFocus(Qt::BacktabFocusReason);
    QCOMPARE(rows.column()->value(), rows.column()->maximum());
    rows.part<QWidget>(0, "name")->setFocus(Qt::TabFocusReason);
    QCOMPARE(rows.waves->verticalScrollBar()->value(), 0);
}

void TstMainViewRows::tabPassesDisabledChannels()
{
    Rows rows;
    rows.disable({1, 2});
    rows.part<QWidget>(0, "btnLowLevel")->setFocus(Qt::TabFocusReason);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    QCOMPARE(QApplication::focusWidget(), rows.number(3));
    rows.part<QLineEdit>(3, "name")->setFocus();
    rows.disable({1, 2, 3});
    QVERIFY(!rows.sidebar(3).isAncestorOf(QApplication::focusWidget()));
}

void TstMainViewRows::theMenuSetsTheHeightAndStoresAllHeights()
{
    Rows rows;
    rows.chooseHeight(2, 2);
    QCOMPARE(stored("chnShowMultip"), QStringLiteral("1,1,4,1,1,1,1,1"));
    QCOMPARE(rows.sidebar(2).multiplier(), 4);
    QCOMPARE(rows.sidebar(2).height(), 4 * 800 / 11 + 1); // 11 units, truncated tops
    rows.chooseHeight(5, 3);
    rows.chooseHeight(2, 0);
    QCOMPARE(stored("chnShowMultip"), QStringLiteral("1,1,1,1,1,8,1,1"));
    QVERIFY(rows.isAtRest());
}

void TstMainViewRows::aReplyOfTheMenuWithAnOddValueIsTakenByTheRuleOfHeights()
{
    Rows rows;
    QAction action;
    for (const auto &[value, factor] : {std::pair(15, 15), {16, 1}, {3, 3}, {0, 1}, {-4, 1}}) {
        action.setData(value);
        emit rows.sidebar(0).trigerMenu(&action);
        QCOMPARE(rows.sidebar(0).multiplier(), factor);
    }
}

void TstMainViewRows::resetBringsBackNamesOrderHeightsAndTriggersInOneAction()
{
    globalSet(QStringLiteral("chnShowIndex"), QStringLiteral("7,6,5,4,3,2,1,0"));
    globalSet(QStringLiteral("chnShowMultip"), QStringLiteral("8,1,2,1,1,4,1,1"));
    globalSet(QStringLiteral("chnShowName3"), QStringLiteral("Clock"));
    Rows rows;
    QTest::mouseClick(rows.part<MyButton>(1, "btnHighLevel"), Qt::LeftButton);
    QTest::mouseClick(rows.part<MyButton>(4, "btnPosEdge"), Qt::LeftButton);
    QCOMPARE(deviceGet(gDev->name, QStringLiteral("chnTrig")), QStringLiteral("0,2,0,0,3,0,0,0"));
    rows.chooseHeight(6, 5);
    QCOMPARE(stored("chnShowIndex"), QStringLiteral("0,1,2,3,4,5,6,7"));
    QCOMPARE(stored("chnShowMultip"), QStringLiteral("1,1,1,1,1,1,1,1"));
    QCOMPARE(stored("chnShowName3"), QString());
    QCOMPARE(rows.part<QLineEdit>(3, "name")->text(), QStringLiteral("Channel 3"));
    QCOMPARE(deviceGet(gDev->name, QStringLiteral("chnTrig")), QStringLiteral("0,0,0,0,0,0,0,0"));
    QCOMPARE(gDev->chnTrig, QVector<int>(8, 0));
    QVERIFY(!rows.part<MyButton>(1, "btnHighLevel")->selected);
    QVERIFY(!rows.part<MyButton>(4, "btnPosEdge")->selected);
    QVERIFY(rows.isAtRest());
    QCOMPARE(rows.sidebar(7).geometry(), QRect(0, 700, 190, 100));
}

void TstMainViewRows::anEdgeTriggerTakesTheEdgesOffAllOtherChannels()
{
    Rows rows;
    QTest::mouseClick(rows.part<MyButton>(1, "btnNegEdge"), Qt::LeftButton);
    QTest::mouseClick(rows.part<MyButton>(2, "btnLowLevel"), Qt::LeftButton);
    QVERIFY(rows.part<MyButton>(1, "btnNegEdge")->selected);
    QTest::mouseClick(rows.part<MyButton>(3, "btnPosEdge"), Qt::LeftButton);
    QVERIFY(!rows.part<MyButton>(1, "btnNegEdge")->selected);
    QVERIFY(rows.part<MyButton>(2, "btnLowLevel")->selected);
    QVERIFY(rows.part<MyButton>(3, "btnPosEdge")->selected);
    QCOMPARE(gDev->chnTrig.mid(0, 4), (QVector<int>{0, 0, 1, 3}));
}

void TstMainViewRows::levelTriggersStayBesideEachOther()
{
    Rows rows;
    for (const int chn : {0, 3, 5}) {
        QTest::mouseClick(rows.part<MyButton>(chn, "btnHighLevel"), Qt::LeftButton);
    }
    for (const int chn : {0, 3, 5}) {
        QVERIFY(rows.part<MyButton>(chn, "btnHighLevel")->selected);
    }
    QCOMPARE(gDev->chnTrig, (QVector<int>{2, 0, 0, 2, 0, 2, 0, 0}));
}

void TstMainViewRows::aChannelSwitchedOffShowsNoTriggerWhenItComesBack()
{
    Rows rows;
    QTest::mouseClick(rows.part<MyButton>(4, "btnHighLevel"), Qt::LeftButton);
    rows.disable({4});
    rows.disable({});
    QCOMPARE(gDev->chnTrig[4], 0);
    QVERIFY(!rows.part<MyButton>(4, "btnHighLevel")->selected);
}

void TstMainViewRows::storedTriggersAreShownFromTheStart()
{
    {
        const std::unique_ptr<DevBase> device = createDevice(eightChannelModel);
        deviceSet(device->name, QStringLiteral("chnTrig"), QStringLiteral("0,4,5,-1,2"));
    }
    const Rows rows;
    QVERIFY(rows.part<MyButton>(1, "btnNegEdge")->selected);
    QVERIFY(rows.part<MyButton>(4, "btnHighLevel")->selected);
    for (const int chn : {0, 2, 3, 5}) {
        for (const MyButton *button : rows.sidebar(chn).findChildren<MyButton *>()) {
            QVERIFY(!button->selected);
        }
    }
}

QTEST_MAIN(TstMainViewRows)
#include "tst_MainViewRows.moc"
