#include "measure/PulseRows.h"
#include "measure/TimingMarkerTip.h"

#include <QGridLayout>
#include <QLabel>
#include <QPointer>

/// The rows of the section "Pulse Measurements": how they come and go.
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
    void foldingHidesTheRowsAndTheAddButton();
    void tabGoesThroughTheRowsInTheirOrder();
};

void TstPulseMeasureRows::newRowsTakeTheLeastUsedTypeAndChannel()
{
    MainViewDesk desk;
    PulseMeasure panel(*gDev);
    PulseRows::enableOnly({0, 1, 2});
    PulseRows::add(panel, 5);
    QCOMPARE(PulseRows::texts(panel),
             (QStringList{QStringLiteral("0CH0"), QStringLiteral("1CH1"), QStringLiteral("2CH2"),
                          QStringLiteral("3CH0"), QStringLiteral("0CH1")}));
    for (const MyButton *button : panel.timeButtons) {
        QCOMPARE(button->text(), QStringLiteral("ALL"));
        QCOMPARE(button->objectName(), QStringLiteral("0"));
    }
    QTest::mouseClick(panel.removeButtons.at(1), Qt::LeftButton);
    PulseRows::add(panel, 1); // falling edges are used least, and so is channel 1
    QCOMPARE(PulseRows::texts(panel).last(), QStringLiteral("1CH1"));
}

void TstPulseMeasureRows::newRowsLeaveOutChannelsThatAreNotEnabled()
{
    MainViewDesk desk;
    PulseMeasure panel(*gDev);
    PulseRows::enableOnly({3, 9});
    PulseRows::add(panel, 3);
    QCOMPARE(PulseRows::texts(panel),
             (QStringList{QStringLiteral("0CH3"), QStringLiteral("1CH9"), QStringLiteral("2CH3")}));
}

void TstPulseMeasureRows::withNoChannelEnabledARowTakesTheFirstAndIsUnknown()
{
    MainViewDesk desk;
    PulseMeasure panel(*gDev);
    desk.load(capture().pulses(0, {100}));
    connect(&panel, &PulseMeasure::setChanged, &desk.view, &MainView::slotPulseMeasureInfoChanged);
    connect(&desk.view, &MainView::pulseMeasureChangedbySmpDone, &panel, &PulseMeasure::slotValueChanged);
    PulseRows::enableOnly({});
    PulseRows::add(panel, 1);
    QCOMPARE(panel.chnButtons.first()->text(), QStringLiteral("CH0"));
    QCOMPARE(panel.valueLabels.first()->text(), QStringLiteral("###"));
}

void TstPulseMeasureRows::addingARowAsksForCounts()
{
    MainViewDesk desk;
    PulseMeasure panel(*gDev);
    QSignalSpy changed(&panel, &PulseMeasure::setChanged);
    PulseRows::add(panel, 2);
    QCOMPARE(changed.count(), 2);
}

void TstPulseMeasureRows::aRowIsSixWidgetsInOneLineOfTheGrid()
{
    MainViewDesk desk;
    PulseMeasure panel(*gDev);
    PulseRows::add(panel, 2);
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
        QCOMPARE(panel.removeButtons.at(row)->accessibleName(), QStringLiteral("Remove pulse row %1").arg(row + 1));
    }
}

void TstPulseMeasureRows::theButtonsAreAsWideAsTheirWidestTexts()
{
    MainViewDesk desk;
    PulseMeasure panel(*gDev);
    PulseRows::add(panel, 1);
    const QFontMetrics metrics = panel.chnButtons.first()->fontMetrics();
    const int padding = panel.chnButtons.first()->width() - metrics.horizontalAdvance(QStringLiteral("CH15"));
    QVERIFY(padding > 0 && padding < 16);
    QCOMPARE(panel.timeButtons.first()->width(), metrics.horizontalAdvance(QStringLiteral("A1-A2")) + padding);
}

void TstPulseMeasureRows::removingARowMovesTheLaterOnesUp()
{
    MainViewDesk desk;
    PulseMeasure panel(*gDev);
    PulseRows::add(panel, 4);
    const QPointer<QWidget> removed = panel.valueLabels.at(1);
    const QWidget *later = panel.valueLabels.at(2);
    QTest::mouseClick(panel.removeButtons.at(1), Qt::LeftButton);
    QCOMPARE(PulseRows::texts(panel),
             (QStringList{QStringLiteral("0CH0"), QStringLiteral("2CH2"), QStringLiteral("3CH3")}));
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
        PulseMeasure panel(*gDev);
        PulseRows::add(panel, 4);
        QStringList left = PulseRows::texts(panel);
        for (const int number : order) {
            const QString row = QStringLiteral("%1CH%1").arg(number);
            QTest::mouseClick(panel.removeButtons.at(left.indexOf(row)), Qt::LeftButton);
            left.removeOne(row);
            QCOMPARE(PulseRows::texts(panel), left);
            QCOMPARE(panel.grid->count(), 6 * left.size());
        }
    } while (std::next_permutation(order.begin(), order.end()));
}

void TstPulseMeasureRows::removingTheOnlyRowLeavesNoMargins()
{
    MainViewDesk desk;
    PulseMeasure panel(*gDev);
    PulseRows::add(panel, 1);
    QVERIFY(!panel.grid->contentsMargins().isNull());
    QTest::mouseClick(panel.removeButtons.first(), Qt::LeftButton);
    QVERIFY(panel.grid->contentsMargins().isNull());
    QCOMPARE(panel.grid->count(), 0);
    QVERIFY(panel.allRequests().isEmpty());
}

void TstPulseMeasureRows::foldingHidesTheRowsAndTheAddButton()
{
    MainViewDesk desk;
    PulseMeasure panel(*gDev);
    PulseRows::add(panel, 1);
    PulseRows::show(panel);
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
    PulseMeasure panel(*gDev);
    PulseRows::add(panel, 3);
    QTest::mouseClick(panel.removeButtons.at(0), Qt::LeftButton);
    PulseRows::add(panel, 1);
    PulseRows::show(panel);
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
