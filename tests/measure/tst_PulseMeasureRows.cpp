#include "measure/PickMenu.h"
#include "measure/PulseMeasure.h"
#include "measure/TimingMarkerTip.h"
#include "support/GuiTestMain.h"
#include "wave/MainViewDesk.h"
#include "wave/MyButton.h"

#include <QAction>
#include <QGridLayout>
#include <QLabel>
#include <QPointer>

/// The rows of the section "Pulse Measurements": how they come, go and are changed by mouse and keyboard.
class TstPulseMeasureRows : public QObject {
    Q_OBJECT
private slots:
    void init() { resetProgram(); }

    void newRowsTakeTheLeastUsedTypeAndChannel();
    void newRowsLeaveOutChannelsThatAreNotEnabled();
    void withNoChannelEnabledARowTakesTheFirstAndIsUnknown();
    void addingARowAsksForCounts();
    void aRowIsSixWidgetsInOneLineOfTheGrid();
    void theButtonsAreAsWideAsTheirWidestTexts();
    void removingARowMovesTheLaterOnesUp();
    void rowsAreRemovedInAnyOrder();
    void removingTheOnlyRowLeavesNoMargins();
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
    void foldingHidesTheRowsAndTheAddButton();
    void tabGoesThroughTheRowsInTheirOrder();

private:
    static void addRows(PulseMeasure &panel, int count)
    {
        for (int i = 0; i < count; ++i) {
            QTest::mouseClick(panel.btnAdd, Qt::LeftButton);
        }
    }
    static QStringList texts(const PulseMeasure &panel)
    {
        QStringList all;
        for (int row = 0; row < panel.valueLabels.size(); ++row) {
            all.append(panel.typeButtons.at(row)->objectName() + panel.chnButtons.at(row)->text());
        }
        return all;
    }
    static void show(PulseMeasure &panel)
    {
        panel.resize(234, 300);
        panel.move(100, 50);
        panel.show();
        panel.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&panel));
    }
    static void pick(PickMenu &menu, int entry)
    {
        const QPoint place = menu.actionGeometry(menu.actions().at(entry)).center();
        QTest::mouseMove(menu.windowHandle(), place - QPoint(0, 2));
        QTest::mouseClick(menu.windowHandle(), Qt::LeftButton, {}, place);
    }
    static void enableOnly(std::initializer_list<int> channels)
    {
        gDev->chnEnable.fill(false);
        for (const int chn : channels) {
            gDev->chnEnable[chn] = true;
        }
    }
};

void TstPulseMeasureRows::newRowsTakeTheLeastUsedTypeAndChannel()
{
    MainViewDesk desk;
    PulseMeasure panel;
    enableOnly({0, 1, 2});
    addRows(panel, 5);
    QCOMPARE(texts(panel), (QStringList{QStringLiteral("0CH0"), QStringLiteral("1CH1"), QStringLiteral("2CH2"),
                                        QStringLiteral("3CH0"), QStringLiteral("0CH1")}));
    for (const MyButton *button : panel.timeButtons) {
        QCOMPARE(button->text(), QStringLiteral("ALL"));
        QCOMPARE(button->objectName(), QStringLiteral("0"));
    }
    QTest::mouseClick(panel.removeButtons.at(1), Qt::LeftButton);
    addRows(panel, 1); // falling edges are used least, and so is channel 1
    QCOMPARE(texts(panel).last(), QStringLiteral("1CH1"));
}

void TstPulseMeasureRows::newRowsLeaveOutChannelsThatAreNotEnabled()
{
    MainViewDesk desk;
    PulseMeasure panel;
    enableOnly({3, 9});
    addRows(panel, 3);
    QCOMPARE(texts(panel), (QStringList{QStringLiteral("0CH3"), QStringLiteral("1CH9"), QStringLiteral("2CH3")}));
}

void TstPulseMeasureRows::withNoChannelEnabledARowTakesTheFirstAndIsUnknown()
{
    MainViewDesk desk;
    PulseMeasure panel;
    desk.load(capture().pulses(0, {100}));
    connect(&panel, &PulseMeasure::setChanged, &desk.view, &MainView::slotPulseMeasureInfoChanged);
    connect(&desk.view, &MainView::pulseMeasureChangedbySmpDone, &panel, &PulseMeasure::slotValueChanged);
    enableOnly({});
    addRows(panel, 1);
    QCOMPARE(panel.chnButtons.first()->text(), QStringLiteral("CH0"));
    QCOMPARE(panel.valueLabels.first()->text(), QStringLiteral("###"));
}

void TstPulseMeasureRows::addingARowAsksForCounts()
{
    MainViewDesk desk;
    PulseMeasure panel;
    QSignalSpy changed(&panel, &PulseMeasure::setChanged);
    addRows(panel, 2);
    QCOMPARE(changed.count(), 2);
}

void TstPulseMeasureRows::aRowIsSixWidgetsInOneLineOfTheGrid()
{
    MainViewDesk desk;
    PulseMeasure panel;
    addRows(panel, 2);
    for (int row = 0; row < 2; ++row) {
        const QList<QWidget *> expected{panel.typeButtons.at(row), panel.chnButtons.at(row),
                                        panel.timeButtons.at(row), panel.colonLabels.at(row),
                                        panel.valueLabels.at(row), panel.removeButtons.at(row)};
        for (int column = 0; column < 6; ++column) {
            QCOMPARE(panel.grid->itemAtPosition(row, column)->widget(), expected.at(column));
        }
        QCOMPARE(panel.colonLabels.at(row)->text(), QStringLiteral(": "));
        QCOMPARE(panel.removeButtons.at(row)->objectName(), QString::number(row));
        QVERIFY(!panel.typeButtons.at(row)->accessibleName().isEmpty());
        QVERIFY(!panel.removeButtons.at(row)->accessibleName().isEmpty());
    }
}

void TstPulseMeasureRows::theButtonsAreAsWideAsTheirWidestTexts()
{
    MainViewDesk desk;
    PulseMeasure panel;
    addRows(panel, 1);
    const QFontMetrics metrics = panel.chnButtons.first()->fontMetrics();
    const int padding = panel.chnButtons.first()->width() - metrics.horizontalAdvance(QStringLiteral("CH15"));
    QVERIFY(padding > 0 && padding < 16);
    QCOMPARE(panel.timeButtons.first()->width(), metrics.horizontalAdvance(QStringLiteral("A1-A2")) + padding);
}

void TstPulseMeasureRows::removingARowMovesTheLaterOnesUp()
{
    MainViewDesk desk;
    PulseMeasure panel;
    addRows(panel, 4);
    const QPointer<QWidget> removed = panel.valueLabels.at(1);
    const QWidget *later = panel.valueLabels.at(2);
    QTest::mouseClick(panel.removeButtons.at(1), Qt::LeftButton);
    QCOMPARE(texts(panel), (QStringList{QStringLiteral("0CH0"), QStringLiteral("2CH2"), QStringLiteral("3CH3")}));
    QCOMPARE(panel.grid->itemAtPosition(1, 4)->widget(), later);
    QVERIFY(panel.grid->itemAtPosition(3, 0) == nullptr);
    for (int row = 0; row < 3; ++row) {
        QCOMPARE(panel.removeButtons.at(row)->objectName(), QString::number(row));
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(removed.isNull());
}

void TstPulseMeasureRows::rowsAreRemovedInAnyOrder()
{
    MainViewDesk desk;
    QList<int> order{0, 1, 2, 3};
    do {
        PulseMeasure panel;
        addRows(panel, 4);
        QStringList left = texts(panel);
        for (const int number : order) {
            const QString row = QStringLiteral("%1CH%1").arg(number);
            QTest::mouseClick(panel.removeButtons.at(left.indexOf(row)), Qt::LeftButton);
            left.removeOne(row);
            QCOMPARE(texts(panel), left);
            QCOMPARE(panel.grid->count(), 6 * left.size());
        }
    } while (std::next_permutation(order.begin(), order.end()));
}

void TstPulseMeasureRows::removingTheOnlyRowLeavesNoMargins()
{
    MainViewDesk desk;
    PulseMeasure panel;
    addRows(panel, 1);
    QVERIFY(!panel.grid->contentsMargins().isNull());
    QTest::mouseClick(panel.removeButtons.first(), Qt::LeftButton);
    QVERIFY(panel.grid->contentsMargins().isNull());
    QCOMPARE(panel.grid->count(), 0);
    QVERIFY(panel.allRequests().isEmpty());
}

void TstPulseMeasureRows::aTypeIsChosenByKeyboard()
{
    MainViewDesk desk;
    PulseMeasure panel;
    addRows(panel, 2);
    show(panel);
    panel.typeButtons.at(1)->setFocus();
    QTest::keyClick(panel.typeButtons.at(1), Qt::Key_Space);
    QVERIFY(panel.typeMenu->isVisible());
    QCOMPARE(panel.menuRow, 1);
    QTest::keyClick(panel.typeMenu, Qt::Key_Down);
    QTest::keyClick(panel.typeMenu, Qt::Key_Down);
    QTest::keyClick(panel.typeMenu, Qt::Key_Return);
    QCOMPARE(texts(panel), (QStringList{QStringLiteral("0CH0"), QStringLiteral("3CH1")}));
    QCOMPARE(panel.typeButtons.at(1)->accessibleName(), QStringLiteral("Negative pulses"));
    QCOMPARE(panel.typeButtons.at(1)->icon().pixmap(16, 16).toImage(),
             QIcon(QStringLiteral(":/res/btnNegPulse")).pixmap(16, 16).toImage());
}

void TstPulseMeasureRows::aChannelIsChosenByMouse()
{
    MainViewDesk desk;
    PulseMeasure panel;
    addRows(panel, 1);
    show(panel);
    QTest::mouseClick(panel.chnButtons.first(), Qt::LeftButton);
    QCOMPARE(panel.chnMenu->width(), panel.chnButtons.first()->width());
    QCOMPARE(panel.chnMenu->x(), panel.chnButtons.first()->mapToGlobal(QPoint()).x());
    pick(*panel.chnMenu, 7);
    QTRY_COMPARE(panel.chnButtons.first()->text(), QStringLiteral("CH7"));
    QCOMPARE(panel.chnButtons.first()->objectName(), QStringLiteral("7"));
}

void TstPulseMeasureRows::aTimeIsChosenByMouse()
{
    MainViewDesk desk;
    PulseMeasure panel;
    desk.load(capture().pulses(0, {100}));
    desk.view.slotTimingMarkerPairClicked(0, 2);
    desk.view.slotTimeViewMarkerChanged(6, 0, 3, 100);
    desk.view.slotTimeViewMarkerChanged(6, 1, 3, 300);
    addRows(panel, 1);
    show(panel);
    QTest::mouseClick(panel.timeButtons.first(), Qt::LeftButton);
    pick(*panel.timeMenu, 2);
    QTRY_COMPARE(panel.timeButtons.first()->text(), QStringLiteral("B1-B2"));
}

void TstPulseMeasureRows::channelsThatAreNotEnabledCannotBeChosen()
{
    MainViewDesk desk;
    PulseMeasure panel;
    enableOnly({0, 5});
    addRows(panel, 1);
    show(panel);
    QTest::mouseClick(panel.chnButtons.first(), Qt::LeftButton);
    for (const QAction *entry : panel.chnMenu->actions()) {
        const int chn = entry->data().toInt();
        QCOMPARE(entry->isEnabled(), chn == 0 || chn == 5);
        QCOMPARE(entry->text(), QStringLiteral("CH%1").arg(chn));
    }
    pick(*panel.chnMenu, 3);
    QCOMPARE(panel.chnButtons.first()->text(), QStringLiteral("CH0"));
}

void TstPulseMeasureRows::pairsThatAreNotShownCannotBeChosen()
{
    MainViewDesk desk;
    PulseMeasure panel;
    desk.load(capture().pulses(0, {100}));
    desk.view.slotTimingMarkerPairClicked(0, 0);
    desk.view.slotTimingMarkerPairClicked(0, 2);
    desk.view.slotTimeViewMarkerChanged(6, 0, 3, 100); // of the first pair one marker only
    desk.view.slotTimeViewMarkerChanged(6, 2, 3, 100);
    desk.view.slotTimeViewMarkerChanged(6, 3, 3, 200);
    addRows(panel, 1);
    show(panel);
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

void TstPulseMeasureRows::anotherChoiceAsksForCounts()
{
    MainViewDesk desk;
    PulseMeasure panel;
    desk.load(capture().pulses(0, {100}));
    addRows(panel, 1);
    QSignalSpy changed(&panel, &PulseMeasure::setChanged);
    panel.menuRow = 0;
    panel.slotMenuTypeClicked(panel.typeMenu->actions().at(2));
    QCOMPARE(changed.count(), 1);
    panel.slotMenuChnClicked(panel.chnMenu->actions().at(2));
    QCOMPARE(changed.count(), 2);
}

void TstPulseMeasureRows::theSameChoiceOrNoCaptureAsksForNothing()
{
    MainViewDesk desk;
    PulseMeasure panel;
    addRows(panel, 1);
    QSignalSpy changed(&panel, &PulseMeasure::setChanged);
    panel.menuRow = 0;
    panel.slotMenuTypeClicked(panel.typeMenu->actions().at(2));
    QCOMPARE(panel.typeButtons.first()->objectName(), QStringLiteral("2"));
    desk.load(capture().pulses(0, {100}));
    panel.slotMenuTypeClicked(panel.typeMenu->actions().at(2));
    panel.slotMenuTimeClicked(panel.timeMenu->actions().at(0));
    QCOMPARE(changed.count(), 0);
}

void TstPulseMeasureRows::aRowOnAnInvalidTimeAsksForNothing()
{
    MainViewDesk desk;
    PulseMeasure panel;
    desk.load(capture().pulses(0, {100}));
    addRows(panel, 1);
    QSignalSpy changed(&panel, &PulseMeasure::setChanged);
    panel.menuRow = 0;
    panel.slotMenuTimeClicked(panel.timeMenu->actions().at(3));
    panel.slotMenuTypeClicked(panel.typeMenu->actions().at(1));
    QCOMPARE(panel.timeButtons.first()->text(), QStringLiteral("C1-C2"));
    QCOMPARE(changed.count(), 0);
}

void TstPulseMeasureRows::aRowOnAChannelThatIsNotEnabledAsksForNothing()
{
    MainViewDesk desk;
    PulseMeasure panel;
    desk.load(capture().pulses(0, {100}));
    addRows(panel, 1);
    enableOnly({1});
    QSignalSpy changed(&panel, &PulseMeasure::setChanged);
    panel.menuRow = 0;
    panel.slotMenuTypeClicked(panel.typeMenu->actions().at(1));
    QCOMPARE(panel.typeButtons.first()->objectName(), QStringLiteral("1"));
    QCOMPARE(changed.count(), 0);
    panel.slotMenuChnClicked(panel.chnMenu->actions().at(1)); // to one that is
    QCOMPARE(changed.count(), 1);
}

void TstPulseMeasureRows::aRemovedRowDoesNotTakeTheChoiceOfItsMenu()
{
    MainViewDesk desk;
    PulseMeasure panel;
    addRows(panel, 2);
    show(panel);
    QTest::mouseClick(panel.typeButtons.at(0), Qt::LeftButton);
    QVERIFY(panel.typeMenu->isVisible());
    panel.removeButtons.at(0)->click();
    panel.slotMenuTypeClicked(panel.typeMenu->actions().at(3));
    QCOMPARE(texts(panel), QStringList{QStringLiteral("1CH1")});
    panel.menuRow = 17;
    panel.slotMenuChnClicked(panel.chnMenu->actions().at(3));
    QCOMPARE(texts(panel), QStringList{QStringLiteral("1CH1")});
    panel.typeMenu->hide();
}

void TstPulseMeasureRows::aPairRemovedWhileItsMenuIsOpenLeavesTheRowUnknown()
{
    MainViewDesk desk;
    PulseMeasure panel;
    connect(&panel, &PulseMeasure::setChanged, &desk.view, &MainView::slotPulseMeasureInfoChanged);
    connect(&desk.view, &MainView::pulseMeasureChangedbySmpDone, &panel, &PulseMeasure::slotValueChanged);
    desk.load(capture().pulses(0, {100}));
    desk.view.slotTimingMarkerPairClicked(0, 0);
    desk.view.slotTimeViewMarkerChanged(6, 0, 3, 100);
    desk.view.slotTimeViewMarkerChanged(6, 1, 3, 300);
    addRows(panel, 1);
    show(panel);
    QTest::mouseClick(panel.timeButtons.first(), Qt::LeftButton);
    desk.view.slotTimingMarkerPairClicked(1, 0);
    pick(*panel.timeMenu, 1);
    QTRY_VERIFY(!panel.timeMenu->isVisible());
    QCOMPARE(panel.timeButtons.first()->text(), QStringLiteral("A1-A2"));
    desk.view.slotPulseMeasureInfoChanged();
    QCOMPARE(panel.valueLabels.first()->text(), QStringLiteral("###"));
}

void TstPulseMeasureRows::anotherModelClosesTheMenuAndForgetsTheValues()
{
    MainViewDesk desk(9);
    PulseMeasure panel;
    addRows(panel, 2);
    panel.slotValueChanged({QStringLiteral("0,0,1,2,3,4"), QStringLiteral("1,0,1,2,3,4")});
    show(panel);
    QTest::mouseClick(panel.chnButtons.first(), Qt::LeftButton);
    QVERIFY(panel.chnMenu->isVisible());
    desk.replaceDevice(1);
    panel.reload();
    QVERIFY(!panel.chnMenu->isVisible());
    QCOMPARE(panel.valueLabels.at(0)->text(), QStringLiteral("###"));
    QCOMPARE(panel.valueLabels.at(1)->text(), QStringLiteral("###"));
    QCOMPARE(panel.valueLabels.size(), 2);
}

void TstPulseMeasureRows::theChannelMenuFollowsTheModel()
{
    MainViewDesk desk(1);
    PulseMeasure panel;
    QCOMPARE(panel.chnMenu->actions().size(), 8);
    for (const int model : {9, 0, 1, 9}) {
        desk.replaceDevice(model);
        panel.reload();
        QCOMPARE(panel.chnMenu->actions().size(), gDev->chnEnable.size());
        QCOMPARE(panel.chnMenu->actions().last()->data().toInt(), gDev->chnEnable.size() - 1);
    }
}

void TstPulseMeasureRows::foldingHidesTheRowsAndTheAddButton()
{
    MainViewDesk desk;
    PulseMeasure panel;
    addRows(panel, 1);
    show(panel);
    QTest::mouseClick(panel.btnExpand, Qt::LeftButton);
    QVERIFY(!panel.expanded);
    QVERIFY(panel.rowsWidget->isHidden());
    QVERIFY(panel.btnAdd->isHidden());
    QTest::mouseClick(panel.btnExpand, Qt::LeftButton);
    QVERIFY(panel.rowsWidget->isVisible());
}

void TstPulseMeasureRows::tabGoesThroughTheRowsInTheirOrder()
{
    MainViewDesk desk;
    PulseMeasure panel;
    addRows(panel, 3);
    QTest::mouseClick(panel.removeButtons.at(0), Qt::LeftButton);
    addRows(panel, 1);
    show(panel);
    panel.btnAdd->setFocus();
    for (int row = 0; row < 3; ++row) {
        for (QWidget *next : {panel.typeButtons.at(row), panel.chnButtons.at(row), panel.timeButtons.at(row),
                              panel.removeButtons.at(row)}) {
            QTest::keyClick(&panel, Qt::Key_Tab);
            QCOMPARE(QApplication::focusWidget(), next);
        }
    }
}

LUX_GUI_TEST(TstPulseMeasureRows)
#include "tst_PulseMeasureRows.moc"
