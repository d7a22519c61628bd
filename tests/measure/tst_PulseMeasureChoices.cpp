#include "device/DeviceGlobals.h"
#include "measure/PickMenu.h"
#include "measure/PulseRows.h"
#include "measure/TimingMarkerTip.h"

#include <QAction>

/// What a row of the section "Pulse Measurements" counts, and how that is chosen by mouse and keyboard.
class TstPulseMeasureChoices : public QObject {
    Q_OBJECT
private slots:
    void init() { resetProgram(); }

    void aTypeIsChosenByKeyboard();
    void aChannelIsChosenByMouse();
    void aTimeIsChosenByMouse();
    void channelsThatAreNotEnabledCannotBeChosen();
    void pairsThatAreNotShownCannotBeChosen();
    void anotherChoiceAsksForCounts();
    void theSameChoiceOrNoCaptureAsksForNothing();
    void aRowOnAnInvalidTimeAsksForNothing();
    void aRowOnAChannelThatIsNotEnabledAsksForNothing();
    void aRemovedRowDoesNotTakeTheChoiceOfItsMenu();
    void aPairRemovedWhileItsMenuIsOpenLeavesTheRowUnknown();
    void anotherModelClosesTheMenuAndForgetsTheValues();
    void theChannelMenuFollowsTheModel();

private:
    static void pick(PickMenu &menu, int entry)
    {
        const QPoint place = menu.actionGeometry(menu.actions().at(entry)).center();
        QTest::mouseMove(menu.windowHandle(), place - QPoint(0, 2));
        QTest::mouseClick(menu.windowHandle(), Qt::LeftButton, {}, place);
    }
};

void TstPulseMeasureChoices::aTypeIsChosenByKeyboard()
{
    MainViewDesk desk;
    PulseMeasure panel(*gDev);
    PulseRows::add(panel, 2);
    PulseRows::show(panel);
    panel.typeButtons.at(1)->setFocus();
    QTest::keyClick(panel.typeButtons.at(1), Qt::Key_Space);
    QVERIFY(panel.typeMenu->isVisible());
    QCOMPARE(panel.menuRow, 1);
    QTest::keyClick(panel.typeMenu, Qt::Key_Down);
    QTest::keyClick(panel.typeMenu, Qt::Key_Down);
    QTest::keyClick(panel.typeMenu, Qt::Key_Return);
    QCOMPARE(PulseRows::texts(panel), (QStringList{QStringLiteral("0CH0"), QStringLiteral("3CH1")}));
    QCOMPARE(panel.typeButtons.at(1)->accessibleName(), QStringLiteral("Pulse row 2, Negative pulses"));
    QCOMPARE(panel.typeButtons.at(1)->icon().pixmap(16, 16).toImage(),
             QIcon(QStringLiteral(":/res/btnNegPulse")).pixmap(16, 16).toImage());
}

void TstPulseMeasureChoices::aChannelIsChosenByMouse()
{
    MainViewDesk desk;
    PulseMeasure panel(*gDev);
    PulseRows::add(panel, 1);
    PulseRows::show(panel);
    QTest::mouseClick(panel.chnButtons.first(), Qt::LeftButton);
    QCOMPARE(panel.chnMenu->width(), panel.chnButtons.first()->width());
    QCOMPARE(panel.chnMenu->x(), panel.chnButtons.first()->mapToGlobal(QPoint()).x());
    pick(*panel.chnMenu, 7);
    QTRY_COMPARE(panel.chnButtons.first()->text(), QStringLiteral("CH7"));
    QCOMPARE(panel.chnButtons.first()->objectName(), QStringLiteral("7"));
}

void TstPulseMeasureChoices::aTimeIsChosenByMouse()
{
    MainViewDesk desk;
    PulseMeasure panel(*gDev);
    desk.load(capture().pulses(0, {100}));
    desk.view.slotTimingMarkerPairClicked(0, 2);
    desk.view.slotTimeViewMarkerChanged(6, 0, 3, 100);
    desk.view.slotTimeViewMarkerChanged(6, 1, 3, 300);
    PulseRows::add(panel, 1);
    PulseRows::show(panel);
    QTest::mouseClick(panel.timeButtons.first(), Qt::LeftButton);
    pick(*panel.timeMenu, 2);
    QTRY_COMPARE(panel.timeButtons.first()->text(), QStringLiteral("B1-B2"));
}

void TstPulseMeasureChoices::channelsThatAreNotEnabledCannotBeChosen()
{
    MainViewDesk desk;
    PulseMeasure panel(*gDev);
    PulseRows::enableOnly({0, 5});
    PulseRows::add(panel, 1);
    PulseRows::show(panel);
    QTest::mouseClick(panel.chnButtons.first(), Qt::LeftButton);
    for (const QAction *entry : panel.chnMenu->actions()) {
        const int chn = entry->data().toInt();
        QCOMPARE(entry->isEnabled(), chn == 0 || chn == 5);
        QCOMPARE(entry->text(), QStringLiteral("CH%1").arg(chn));
    }
    pick(*panel.chnMenu, 3);
    QCOMPARE(panel.chnButtons.first()->text(), QStringLiteral("CH0"));
}

void TstPulseMeasureChoices::pairsThatAreNotShownCannotBeChosen()
{
    MainViewDesk desk;
    PulseMeasure panel(*gDev);
    desk.load(capture().pulses(0, {100}));
    desk.view.slotTimingMarkerPairClicked(0, 0);
    desk.view.slotTimingMarkerPairClicked(0, 2);
    desk.view.slotTimeViewMarkerChanged(6, 0, 3, 100); // of the first pair one marker only
    desk.view.slotTimeViewMarkerChanged(6, 2, 3, 100);
    desk.view.slotTimeViewMarkerChanged(6, 3, 3, 200);
    PulseRows::add(panel, 1);
    PulseRows::show(panel);
    QTest::mouseClick(panel.timeButtons.first(), Qt::LeftButton);
    QStringList enabled;
    for (const QAction *entry : panel.timeMenu->actions()) {
        if (entry->isEnabled()) {
            enabled.append(entry->text());
        }
    }
    QCOMPARE(enabled, (QStringList{QStringLiteral("ALL"), QStringLiteral("B1-B2")}));
    QCOMPARE(panel.timeMenu->actions().size(), 6);
    panel.timeMenu->hide();
}

void TstPulseMeasureChoices::anotherChoiceAsksForCounts()
{
    MainViewDesk desk;
    PulseMeasure panel(*gDev);
    desk.load(capture().pulses(0, {100}));
    PulseRows::add(panel, 1);
    QSignalSpy changed(&panel, &PulseMeasure::setChanged);
    panel.menuRow = 0;
    panel.slotMenuTypeClicked(panel.typeMenu->actions().at(2));
    QCOMPARE(changed.count(), 1);
    panel.slotMenuChnClicked(panel.chnMenu->actions().at(2));
    QCOMPARE(changed.count(), 2);
}

void TstPulseMeasureChoices::theSameChoiceOrNoCaptureAsksForNothing()
{
    MainViewDesk desk;
    PulseMeasure panel(*gDev);
    PulseRows::add(panel, 1);
    QSignalSpy changed(&panel, &PulseMeasure::setChanged);
    panel.menuRow = 0;
    panel.slotMenuTypeClicked(panel.typeMenu->actions().at(2));
    QCOMPARE(panel.typeButtons.first()->objectName(), QStringLiteral("2"));
    desk.load(capture().pulses(0, {100}));
    panel.slotMenuTypeClicked(panel.typeMenu->actions().at(2));
    panel.slotMenuTimeClicked(panel.timeMenu->actions().at(0));
    QCOMPARE(changed.count(), 0);
}

void TstPulseMeasureChoices::aRowOnAnInvalidTimeAsksForNothing()
{
    MainViewDesk desk;
    PulseMeasure panel(*gDev);
    desk.load(capture().pulses(0, {100}));
    PulseRows::add(panel, 1);
    QSignalSpy changed(&panel, &PulseMeasure::setChanged);
    panel.menuRow = 0;
    panel.slotValueChanged({QStringLiteral("0,0,1,2,3,4")});
    QCOMPARE(panel.valueLabels.first()->text(), QStringLiteral("1"));
    panel.slotMenuTimeClicked(panel.timeMenu->actions().at(3));
    QCOMPARE(panel.timeButtons.first()->text(), QStringLiteral("C1-C2"));
    QCOMPARE(panel.valueLabels.first()->text(), QStringLiteral("###")); // not the count of the whole capture
    panel.slotMenuTypeClicked(panel.typeMenu->actions().at(1));
    QCOMPARE(changed.count(), 0);
}

void TstPulseMeasureChoices::aRowOnAChannelThatIsNotEnabledAsksForNothing()
{
    MainViewDesk desk;
    PulseMeasure panel(*gDev);
    desk.load(capture().pulses(0, {100}));
    PulseRows::add(panel, 1);
    panel.slotValueChanged({QStringLiteral("0,0,1,2,3,4")});
    PulseRows::enableOnly({1});
    QSignalSpy changed(&panel, &PulseMeasure::setChanged);
    panel.menuRow = 0;
    panel.slotMenuTypeClicked(panel.typeMenu->actions().at(1));
    QCOMPARE(panel.typeButtons.first()->objectName(), QStringLiteral("1"));
    QCOMPARE(panel.valueLabels.first()->text(), QStringLiteral("###"));
    QCOMPARE(changed.count(), 0);
    panel.slotMenuChnClicked(panel.chnMenu->actions().at(1)); // to one that is
    QCOMPARE(changed.count(), 1);
}

void TstPulseMeasureChoices::aRemovedRowDoesNotTakeTheChoiceOfItsMenu()
{
    MainViewDesk desk;
    PulseMeasure panel(*gDev);
    PulseRows::add(panel, 2);
    PulseRows::show(panel);
    QTest::mouseClick(panel.typeButtons.at(0), Qt::LeftButton);
    QVERIFY(panel.typeMenu->isVisible());
    panel.removeButtons.at(0)->click();
    panel.slotMenuTypeClicked(panel.typeMenu->actions().at(3));
    QCOMPARE(PulseRows::texts(panel), QStringList{QStringLiteral("1CH1")});
    panel.menuRow = 17;
    panel.slotMenuChnClicked(panel.chnMenu->actions().at(3));
    QCOMPARE(PulseRows::texts(panel), QStringList{QStringLiteral("1CH1")});
    panel.typeMenu->hide();
}

void TstPulseMeasureChoices::aPairRemovedWhileItsMenuIsOpenLeavesTheRowUnknown()
{
    MainViewDesk desk;
    PulseMeasure panel(*gDev);
    connect(&panel, &PulseMeasure::setChanged, &desk.view, &MainView::slotPulseMeasureInfoChanged);
    connect(&desk.view, &MainView::pulseMeasureChangedbySmpDone, &panel, &PulseMeasure::slotValueChanged);
    desk.load(capture().pulses(0, {100}));
    desk.view.slotTimingMarkerPairClicked(0, 0);
    desk.view.slotTimeViewMarkerChanged(6, 0, 3, 100);
    desk.view.slotTimeViewMarkerChanged(6, 1, 3, 300);
    PulseRows::add(panel, 1);
    PulseRows::show(panel);
    QTest::mouseClick(panel.timeButtons.first(), Qt::LeftButton);
    desk.view.slotTimingMarkerPairClicked(1, 0);
    pick(*panel.timeMenu, 1);
    QTRY_VERIFY(!panel.timeMenu->isVisible());
    QCOMPARE(panel.timeButtons.first()->text(), QStringLiteral("A1-A2"));
    QCOMPARE(panel.valueLabels.first()->text(), QStringLiteral("###"));
}

void TstPulseMeasureChoices::anotherModelClosesTheMenuAndForgetsTheValues()
{
    MainViewDesk desk(9);
    PulseMeasure panel(*gDev);
    PulseRows::add(panel, 2);
    panel.slotValueChanged({QStringLiteral("0,0,1,2,3,4"), QStringLiteral("1,0,1,2,3,4")});
    PulseRows::show(panel);
    QTest::mouseClick(panel.chnButtons.first(), Qt::LeftButton);
    QVERIFY(panel.chnMenu->isVisible());
    desk.replaceDevice(1);
    panel.reload(*gDev);
    QVERIFY(!panel.chnMenu->isVisible());
    QCOMPARE(panel.valueLabels.at(0)->text(), QStringLiteral("###"));
    QCOMPARE(panel.valueLabels.at(1)->text(), QStringLiteral("###"));
    QCOMPARE(panel.valueLabels.size(), 2);
}

void TstPulseMeasureChoices::theChannelMenuFollowsTheModel()
{
    MainViewDesk desk(1);
    PulseMeasure panel(*gDev);
    PulseRows::add(panel, 1);
    PulseRows::show(panel);
    QCOMPARE(panel.chnMenu->actions().size(), 8);
    for (const int model : {9, 0, 1, 9}) {
        desk.replaceDevice(model);
        panel.reload(*gDev);
        QTest::mouseClick(panel.chnButtons.first(), Qt::LeftButton);
        QVERIFY(panel.chnMenu->isVisible());
        QCOMPARE(panel.chnMenu->actions().size(), gDev->chnEnable.size());
        QCOMPARE(panel.chnMenu->actions().last()->data().toInt(), gDev->chnEnable.size() - 1);
    }
}

LUX_GUI_TEST(TstPulseMeasureChoices)
#include "tst_PulseMeasureChoices.moc"
