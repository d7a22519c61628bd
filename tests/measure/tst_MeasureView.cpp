#include "controls/MyButton.h"
#include "measure/MeasureView.h"
#include "panels/PanelDevice.h"
#include "support/GuiTestMain.h"

#include <QAction>
#include <QLabel>
#include <QMenu>

/// The section "Measurements".
class TstMeasureView : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        QFile::remove(configPath());
        configLoad();
    }

    void itHasTheFourRowsOfUnknownValues();
    void valuesAreShownInTheOrderOfTheRows();
    void noValuesOrTooManyChangeNothing();
    void fewerValuesThanRowsChangeTheFirstRows();
    void aMissingKeyShowsAllRows();
    void aStoredOneHidesTheRowAndUnchecksItsEntry();
    void aStoredValueThatIsNoNumberShowsTheRow_data();
    void aStoredValueThatIsNoNumberShowsTheRow();
    void uncheckingAnEntryHidesTheRowAndStoresOne();
    void checkingItAgainStoresZero();
    void anotherConfigurationIsTakenOver();
    void theMenuOpensAtThePointerOrBelowItsButton();
    void theMenuIsUsedByKeyboard();
    void foldingHidesTheRowsAndTheSettingButton();
    void anActionThatIsNoEntryIsIgnored();

private:
    static bool isShown(const MeasureView &view, int row)
    {
        return !view.nameLabels.at(row)->isHidden() && !view.valueLabels.at(row)->isHidden();
    }
};

void TstMeasureView::itHasTheFourRowsOfUnknownValues()
{
    const MeasureView view;
    QCOMPARE(view.keys, (QStringList{QStringLiteral("DisWidth"), QStringLiteral("DisPeriod"),
                                     QStringLiteral("DisDutyCycle"), QStringLiteral("DisFrequency")}));
    const QStringList names{QStringLiteral("Width"), QStringLiteral("Period"), QStringLiteral("DutyCycle"),
                            QStringLiteral("Frequency")};
    for (int row = 0; row < 4; ++row) {
        QCOMPARE(view.nameLabels.at(row)->text(), names.at(row));
        QCOMPARE(view.valueLabels.at(row)->text(), QStringLiteral("###"));
        QVERIFY((view.valueLabels.at(row)->alignment() & Qt::AlignLeft) != 0);
        QCOMPARE(view.measureMenu->actions().at(row)->text(), names.at(row));
        QCOMPARE(view.measureMenu->actions().at(row)->data().toInt(), row);
    }
    QVERIFY(view.expanded);
}

void TstMeasureView::valuesAreShownInTheOrderOfTheRows()
{
    MeasureView view;
    view.slotValueChanged(
        {QStringLiteral("1us"), QStringLiteral("2us"), QStringLiteral("50%"), QStringLiteral("500KHz")});
    QCOMPARE(view.valueLabels.at(0)->text(), QStringLiteral("1us"));
    QCOMPARE(view.valueLabels.at(1)->text(), QStringLiteral("2us"));
    QCOMPARE(view.valueLabels.at(2)->text(), QStringLiteral("50%"));
    QCOMPARE(view.valueLabels.at(3)->text(), QStringLiteral("500KHz"));
}

void TstMeasureView::noValuesOrTooManyChangeNothing()
{
    MeasureView view;
    view.slotValueChanged({});
    QStringList five;
    for (int i = 0; i < 5; ++i) {
        five.append(QStringLiteral("9"));
    }
    view.slotValueChanged(five);
    for (const QLabel *label : view.valueLabels) {
        QCOMPARE(label->text(), QStringLiteral("###"));
    }
}

void TstMeasureView::fewerValuesThanRowsChangeTheFirstRows()
{
    MeasureView view;
    view.slotValueChanged({QStringLiteral("1us"), QStringLiteral("2us")});
    QCOMPARE(view.valueLabels.at(1)->text(), QStringLiteral("2us"));
    QCOMPARE(view.valueLabels.at(2)->text(), QStringLiteral("###"));
}

void TstMeasureView::aMissingKeyShowsAllRows()
{
    MeasureView view;
    view.reload();
    for (int row = 0; row < 4; ++row) {
        QVERIFY(isShown(view, row));
        QVERIFY(view.measureMenu->actions().at(row)->isChecked());
    }
}

void TstMeasureView::aStoredOneHidesTheRowAndUnchecksItsEntry()
{
    globalSet(QStringLiteral("DisPeriod"), QStringLiteral("1"));
    MeasureView view;
    view.reload();
    QVERIFY(isShown(view, 0));
    QVERIFY(!isShown(view, 1));
    QVERIFY(!view.measureMenu->actions().at(1)->isChecked());
    QVERIFY(isShown(view, 2));
    QCOMPARE(globalGet(QStringLiteral("DisPeriod")), QStringLiteral("1"));
}

void TstMeasureView::aStoredValueThatIsNoNumberShowsTheRow_data()
{
    QTest::addColumn<QString>("stored");
    QTest::newRow("word") << QStringLiteral("garbage");
    QTest::newRow("fraction") << QStringLiteral("1.5");
    QTest::newRow("too large") << QStringLiteral("99999999999999999999");
    QTest::newRow("markup") << QStringLiteral("<b>1</b>");
}

void TstMeasureView::aStoredValueThatIsNoNumberShowsTheRow()
{
    QFETCH(QString, stored);
    globalSet(QStringLiteral("DisPeriod"), stored);
    MeasureView view;
    view.reload();
    QVERIFY(isShown(view, 1));
    QCOMPARE(globalGet(QStringLiteral("DisPeriod")), QStringLiteral("0"));
}

void TstMeasureView::uncheckingAnEntryHidesTheRowAndStoresOne()
{
    MeasureView view;
    view.reload();
    view.measureMenu->actions().at(3)->trigger();
    QVERIFY(!isShown(view, 3));
    QCOMPARE(globalGet(QStringLiteral("DisFrequency")), QStringLiteral("1"));
    QVERIFY(isShown(view, 2));
}

void TstMeasureView::checkingItAgainStoresZero()
{
    globalSet(QStringLiteral("DisWidth"), QStringLiteral("1"));
    MeasureView view;
    view.reload();
    view.measureMenu->actions().at(0)->trigger();
    QVERIFY(isShown(view, 0));
    QCOMPARE(globalGet(QStringLiteral("DisWidth")), QStringLiteral("0"));
}

void TstMeasureView::anotherConfigurationIsTakenOver()
{
    MeasureView view;
    view.reload();
    globalSet(QStringLiteral("DisWidth"), QStringLiteral("7"));
    view.reload();
    QVERIFY(!isShown(view, 0));
    globalSet(QStringLiteral("DisWidth"), QStringLiteral("0"));
    view.reload();
    QVERIFY(isShown(view, 0));
}

void TstMeasureView::theMenuOpensAtThePointerOrBelowItsButton()
{
    MeasureView view;
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    const MyButton &button = *view.btnSetting;
    const QPoint onButton = button.mapToGlobal(button.rect().center());
    QCursor::setPos(onButton);
    QTest::mouseClick(view.btnSetting, Qt::LeftButton);
    QVERIFY(view.measureMenu->isVisible());
    QCOMPARE(view.measureMenu->pos(), onButton);
    view.measureMenu->hide();
    QCursor::setPos(onButton + QPoint(0, 200));
    QTest::keyClick(view.btnSetting, Qt::Key_Space);
    QVERIFY(view.measureMenu->isVisible());
    QCOMPARE(view.measureMenu->pos(), button.mapToGlobal(button.rect().bottomLeft()));
    view.measureMenu->hide();
}

void TstMeasureView::theMenuIsUsedByKeyboard()
{
    MeasureView view;
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    view.reload();
    QTest::keyClick(view.btnSetting, Qt::Key_Space);
    QVERIFY(view.measureMenu->isVisible());
    QTest::keyClick(view.measureMenu, Qt::Key_Down);
    QTest::keyClick(view.measureMenu, Qt::Key_Down);
    QTest::keyClick(view.measureMenu, Qt::Key_Return);
    QVERIFY(!isShown(view, 1));
    QVERIFY(isShown(view, 0));
}

void TstMeasureView::foldingHidesTheRowsAndTheSettingButton()
{
    MeasureView view;
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    QTest::mouseClick(view.btnExpand, Qt::LeftButton);
    QVERIFY(!view.expanded);
    QVERIFY(view.btnSetting->isHidden());
    QVERIFY(view.valuesWidget->isHidden());
    QTest::mouseClick(view.btnExpand, Qt::LeftButton);
    QVERIFY(view.expanded);
    QVERIFY(view.btnSetting->isVisible());
    QVERIFY(view.valuesWidget->isVisible());
}

void TstMeasureView::anActionThatIsNoEntryIsIgnored()
{
    MeasureView view;
    view.reload();
    QAction action;
    action.setData(17);
    view.slotMenuClicked(&action);
    action.setData(-1);
    view.slotMenuClicked(&action);
    for (int row = 0; row < 4; ++row) {
        QVERIFY(isShown(view, row));
    }
}

LUX_GUI_TEST(TstMeasureView)
#include "tst_MeasureView.moc"
