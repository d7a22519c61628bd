#include "controls/MyButton.h"
#include "device/DeviceGlobals.h"
#include "measure/PickMenu.h"
#include "measure/PulseMeasure.h"
#include "measure/TimingMarkerTip.h"
#include "support/GuiTestMain.h"
#include "wave/MainViewDesk.h"

#include <QAction>

/// What the rows of the section "Pulse Measurements" ask for, and how they show the answers.
class TstPulseMeasure : public QObject {
    Q_OBJECT
private slots:
    void init() { resetProgram(); }

    void itIsReachedByThePointerWhileItLives();
    void rowsThatDifferInTheirTypeOnlyMakeOneRequest();
    void channelsThatAreNotEnabledAreNotAskedFor();
    void channelsThatTheModelLacksAreNotAskedFor();
    void aPairIsAskedForWhileBothItsMarkersAreShown();
    void theRequestsOfAPairAreThoseOfItsRows();
    void aRowShowsTheFieldOfItsType();
    void aRowWithoutResultIsUnknown();
    void resultsThatMakeNoSenseAreUnknown();
    void aMovedMarkerChangesTheRowsOfItsPairOnly();
    void theMainViewAnswersARowOverTheWholeCapture();
    void aRowOnAPairWhoseMarkerIsRemovedIsUnknown();
    void aCaptureOfZeroSamplesMakesAllRowsUnknown();
    void aChannelSwitchedOffMakesItsRowUnknown();

private:
    static void choose(PulseMeasure &panel, int row, int type, int chn, int time)
    {
        panel.menuRow = row;
        panel.slotMenuTypeClicked(panel.typeMenu->actions().at(type));
        panel.slotMenuChnClicked(panel.chnMenu->actions().at(chn));
        panel.slotMenuTimeClicked(panel.timeMenu->actions().at(time));
    }
    static QString value(const PulseMeasure &panel, int row) { return panel.valueLabels.at(row)->text(); }
    static void addRows(PulseMeasure &panel, int count)
    {
        for (int i = 0; i < count; ++i) {
            QTest::mouseClick(panel.btnAdd, Qt::LeftButton);
        }
    }
    static void join(MainViewDesk &desk, PulseMeasure &panel)
    {
        connect(&panel, &PulseMeasure::setChanged, &desk.view, &MainView::slotPulseMeasureInfoChanged);
        connect(&desk.view, &MainView::pulseMeasureChangedbySmpDone, &panel, &PulseMeasure::slotValueChanged);
        connect(&desk.view, &MainView::pulseMeasureChangedbyTimeMarker, &panel,
                &PulseMeasure::slotValueChangedbyTimeMarker);
        connect(gDev, &DevBase::sigChnEnaChanged, &desk.view, &MainView::slotChnEnaChanged);
    }
    static void showPair(MainViewDesk &desk, int group)
    {
        desk.view.slotTimingMarkerPairClicked(0, 2 * group);
        const int first = desk.view.shownPairs().size() * 2;
        desk.view.slotTimeViewMarkerChanged(6, first, 3, 100);
        desk.view.slotTimeViewMarkerChanged(6, first + 1, 3, 300);
    }
};

void TstPulseMeasure::itIsReachedByThePointerWhileItLives()
{
    MainViewDesk desk;
    {
        const PulseMeasure panel(*gDev);
        QCOMPARE(gPulseRequests, static_cast<const PulseRequests *>(&panel));
    }
    QVERIFY(gPulseRequests == nullptr);
}

void TstPulseMeasure::rowsThatDifferInTheirTypeOnlyMakeOneRequest()
{
    MainViewDesk desk;
    PulseMeasure panel(*gDev);
    addRows(panel, 3);
    choose(panel, 0, 1, 3, 0);
    choose(panel, 1, 2, 3, 0);
    choose(panel, 2, 0, 5, 0);
    QCOMPARE(panel.allRequests(), (QStringList{QStringLiteral("3,0"), QStringLiteral("5,0")}));
    panel.slotValueChanged({QStringLiteral("3,0,11,12,13,14"), QStringLiteral("5,0,1,2,3,4")});
    QCOMPARE(value(panel, 0), QStringLiteral("12"));
    QCOMPARE(value(panel, 1), QStringLiteral("13"));
    QCOMPARE(value(panel, 2), QStringLiteral("1"));
}

void TstPulseMeasure::channelsThatAreNotEnabledAreNotAskedFor()
{
    MainViewDesk desk;
    PulseMeasure panel(*gDev);
    addRows(panel, 2);
    QVector<bool> enable(16, true);
    enable[0] = false;
    gDev->setChnEnable(enable);
    QCOMPARE(panel.allRequests(), QStringList{QStringLiteral("1,0")});
}

void TstPulseMeasure::channelsThatTheModelLacksAreNotAskedFor()
{
    MainViewDesk desk(9); // 32 channels
    PulseMeasure panel(*gDev);
    addRows(panel, 2);
    choose(panel, 1, 0, 31, 0);
    desk.replaceDevice(1);                  // 8 channels
    QVERIFY(panel.allRequests().isEmpty()); // the former device has gone, and of the other it has not been told
    panel.reload(*gDev);
    QCOMPARE(panel.allRequests(), QStringList{QStringLiteral("0,0")});
    QCOMPARE(panel.chnButtons.at(1)->text(), QStringLiteral("CH31"));
}

void TstPulseMeasure::aPairIsAskedForWhileBothItsMarkersAreShown()
{
    MainViewDesk desk;
    PulseMeasure panel(*gDev);
    desk.load(capture().pulses(0, {100}));
    addRows(panel, 1);
    choose(panel, 0, 0, 0, 2);
    QCOMPARE(panel.allRequests(), QStringList());
    showPair(desk, 1);
    QCOMPARE(panel.allRequests(), QStringList{QStringLiteral("0,2")});
    desk.view.slotTimeViewMarkerChanged(5, 1, 0, 0);
    QCOMPARE(panel.allRequests(), QStringList());
}

void TstPulseMeasure::theRequestsOfAPairAreThoseOfItsRows()
{
    MainViewDesk desk;
    PulseMeasure panel(*gDev);
    desk.load(capture().pulses(0, {100}));
    showPair(desk, 0);
    showPair(desk, 4);
    addRows(panel, 3);
    choose(panel, 0, 0, 2, 0);
    choose(panel, 1, 0, 3, 1);
    choose(panel, 2, 0, 4, 5);
    QCOMPARE(panel.requestsOfPair(0), QStringList{QStringLiteral("3,1")});
    QCOMPARE(panel.requestsOfPair(4), QStringList{QStringLiteral("4,5")});
    QCOMPARE(panel.requestsOfPair(1), QStringList());
    QCOMPARE(panel.requestsOfPair(-1), QStringList()); // not those of the whole capture, nor of all rows
    QCOMPARE(panel.requestsOfPair(-2), QStringList());
}

void TstPulseMeasure::aRowShowsTheFieldOfItsType()
{
    MainViewDesk desk;
    PulseMeasure panel(*gDev);
    addRows(panel, 4);
    for (int type = 0; type < 4; ++type) {
        choose(panel, type, type, 0, 0);
    }
    panel.slotValueChanged({QStringLiteral("0,0,10,20,30,40")});
    for (int type = 0; type < 4; ++type) {
        QCOMPARE(value(panel, type), QString::number(10 * (type + 1)));
    }
}

void TstPulseMeasure::aRowWithoutResultIsUnknown()
{
    MainViewDesk desk;
    PulseMeasure panel(*gDev);
    addRows(panel, 1);
    QCOMPARE(value(panel, 0), QStringLiteral("###"));
    panel.slotValueChanged({QStringLiteral("0,0,1,2,3,4")});
    QCOMPARE(value(panel, 0), QStringLiteral("1"));
    panel.slotValueChanged({});
    QCOMPARE(value(panel, 0), QStringLiteral("###"));
}

void TstPulseMeasure::resultsThatMakeNoSenseAreUnknown()
{
    MainViewDesk desk;
    PulseMeasure panel(*gDev);
    addRows(panel, 1);
    panel.slotValueChanged({QString(), QStringLiteral(","), QStringLiteral("0,1,9,9,9,9"), QStringLiteral("0,0")});
    QCOMPARE(value(panel, 0), QStringLiteral("###"));
}

void TstPulseMeasure::aMovedMarkerChangesTheRowsOfItsPairOnly()
{
    MainViewDesk desk;
    PulseMeasure panel(*gDev);
    addRows(panel, 3);
    choose(panel, 0, 0, 0, 0);
    choose(panel, 1, 0, 0, 1);
    choose(panel, 2, 0, 0, 2);
    panel.slotValueChanged(
        {QStringLiteral("0,0,1,1,1,1"), QStringLiteral("0,1,2,2,2,2"), QStringLiteral("0,2,3,3,3,3")});
    panel.slotValueChangedbyTimeMarker(0, {QStringLiteral("0,1,7,7,7,7"), QStringLiteral("0,0,8,8,8,8")});
    QCOMPARE(value(panel, 0), QStringLiteral("1"));
    QCOMPARE(value(panel, 1), QStringLiteral("7"));
    QCOMPARE(value(panel, 2), QStringLiteral("3"));
    panel.slotValueChangedbyTimeMarker(1, {});
    QCOMPARE(value(panel, 1), QStringLiteral("7"));
    QCOMPARE(value(panel, 2), QStringLiteral("###"));
    for (const int nobody : {-1, -2, 5, 99}) {
        panel.slotValueChangedbyTimeMarker(nobody, {});
    }
    QCOMPARE(value(panel, 0), QStringLiteral("1"));
    QCOMPARE(value(panel, 1), QStringLiteral("7"));
}

void TstPulseMeasure::theMainViewAnswersARowOverTheWholeCapture()
{
    MainViewDesk desk;
    PulseMeasure panel(*gDev);
    join(desk, panel);
    desk.load(capture().samples(1000).pulses(0, std::vector<std::int32_t>(9, 100)));
    addRows(panel, 2); // rising edges of channel 0, falling edges of channel 1
    QCOMPARE(value(panel, 0), QStringLiteral("5"));
    QCOMPARE(value(panel, 1), QStringLiteral("0"));
    choose(panel, 0, 3, 0, 0);
    QCOMPARE(value(panel, 0), QStringLiteral("4"));
}

void TstPulseMeasure::aRowOnAPairWhoseMarkerIsRemovedIsUnknown()
{
    MainViewDesk desk;
    PulseMeasure panel(*gDev);
    join(desk, panel);
    desk.load(capture().samples(1000).pulses(0, std::vector<std::int32_t>(9, 100)));
    showPair(desk, 0);
    addRows(panel, 2);
    choose(panel, 0, 0, 0, 1);
    QVERIFY(value(panel, 0) != QStringLiteral("###"));
    desk.view.slotTimeViewMarkerChanged(5, 0, 0, 0);
    QCOMPARE(value(panel, 0), QStringLiteral("###"));
    QCOMPARE(value(panel, 1), QStringLiteral("0"));
    desk.view.slotTimingMarkerPairClicked(1, 0);
    QCOMPARE(value(panel, 0), QStringLiteral("###"));
}

void TstPulseMeasure::aCaptureOfZeroSamplesMakesAllRowsUnknown()
{
    MainViewDesk desk;
    PulseMeasure panel(*gDev);
    join(desk, panel);
    desk.load(capture().samples(1000).pulses(0, {100}));
    addRows(panel, 2);
    QCOMPARE(value(panel, 0), QStringLiteral("1"));
    capture().samples(0).fill(*gDev->smpData);
    desk.view.clearForNewData();
    QCOMPARE(value(panel, 0), QStringLiteral("###"));
    QCOMPARE(value(panel, 1), QStringLiteral("###"));
}

void TstPulseMeasure::aChannelSwitchedOffMakesItsRowUnknown()
{
    MainViewDesk desk;
    PulseMeasure panel(*gDev);
    join(desk, panel);
    desk.load(capture().samples(1000).pulses(0, {100}));
    addRows(panel, 1);
    QCOMPARE(value(panel, 0), QStringLiteral("1"));
    QVector<bool> enable(16, true);
    enable[0] = false;
    gDev->setChnEnable(enable);
    QCOMPARE(value(panel, 0), QStringLiteral("###"));
}

LUX_GUI_TEST(TstPulseMeasure)
#include "tst_PulseMeasure.moc"
