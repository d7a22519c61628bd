#include "controls/MyButton.h"
#include "measure/AChnMeasureDialog.h"
#include "measure/AChnMeasureSet.h"
#include "measure/AnalogValues.h"
#include "measure/MeasureViewAChn.h"
#include "panels/PanelDevice.h"
#include "support/DialogDriver.h"
#include "support/GuiTestMain.h"
#include "support/MenuDriver.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QLabel>
#include <QLocale>
#include <QRadioButton>

/// The section "Measure" of the analog channels, and the menu and the dialog that belong to it.
class TstMeasureViewAChn : public QObject {
    Q_OBJECT
private slots:
    void init();

    void theFirstSevenParametersShowAtFirst();
    void everyRowShowsTheValuesOfBothChannels();
    void aSignalThatCannotBeMeasuredShowsNoValues();
    void aChannelThatIsNotThereHasValuesThatAreNotKnown();
    void valuesThatAreNoNumbersAreNotShown();
    void aRowThatFindsNothingKeepsItsText();
    void foldingLeavesTheHeader();

    void theButtonOpensTheMenuBesideIt();
    void aChosenParameterComesFirstAndTheOldestGoes();
    void aParameterThatIsNoLongerChosenLeavesItsRow();
    void uncheckingAllLeavesTheHeader();
    void removeAllLeavesTheHeaderAndTheMenuOpensWithoutChecks();
    void aRowWithAnotherParameterDoesNotKeepTheFormerValue();
    void tooManyParametersChangeNothing();
    void theMenuClosesWithAnotherDevice();

    void showAllOpensTheChannelsDialogAndTheMenuComesBack_data();
    void showAllOpensTheChannelsDialogAndTheMenuComesBack();
    void theDialogOfATextThatIsNotWholeHasNoValues_data();
    void theDialogOfATextThatIsNotWholeHasNoValues();
    void theDialogStaysAsItWasOpened();

    void inEveryLanguageTheNamesAreTheSameAndFindTheirValues_data();
    void inEveryLanguageTheNamesAreTheSameAndFindTheirValues();

private:
    /// Works in the menu as long as `act` takes.
    static void inMenu(MeasureViewAChn &view, const std::function<void(AChnMeasureSet &)> &act)
    {
        const MenuDriver<AChnMeasureSet> driver(act);
        QTest::mouseClick(view.btnSetting, Qt::LeftButton);
        QCOMPARE(driver.count, 1);
    }
    static void click(QAbstractButton *button)
    {
        QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(8, button->height() / 2));
    }
    static QStringList texts(const QVector<QLabel *> &labels)
    {
        QStringList shown;
        for (const QLabel *label : labels) {
            shown += label->isHidden() ? QString() : label->text();
        }
        shown.removeAll(QString());
        return shown;
    }
    static QStringList list(const char *words) { return QString::fromLatin1(words).split(QLatin1Char(' ')); }

    QString m_first;
    QString m_second;
    void fill(MeasureViewAChn &view)
    {
        m_first = analogText(QStringLiteral("a"));
        m_second = analogText(QStringLiteral("b"));
        view.paramText = [this](int chn) { return chn == 0 ? m_first : m_second; };
        view.slotMeasureChanged();
        view.resize(240, 300);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
    }
};

void TstMeasureViewAChn::init()
{
    m_first.clear();
    m_second.clear();
}

void TstMeasureViewAChn::theFirstSevenParametersShowAtFirst()
{
    const MeasureViewAChn view;
    QCOMPARE(view.shownIds, (QVector<int>{0, 1, 2, 3, 4, 5, 6}));
    QCOMPARE(view.shownCount, 7);
    QCOMPARE(texts(view.chnLabels), list("Chn1 Chn2"));
    QCOMPARE(texts(view.nameLabels), list("Period Frequency RiseTime FallTime +PulseWidth -PulseWidth DutyCycle"));
    QCOMPARE(texts(view.value1Labels), list("-- -- -- -- -- -- --"));
    QCOMPARE(texts(view.value2Labels), list("-- -- -- -- -- -- --"));
}

void TstMeasureViewAChn::everyRowShowsTheValuesOfBothChannels()
{
    MeasureViewAChn view;
    fill(view);
    QCOMPARE(texts(view.value1Labels), list("a0 a1 a2 a3 a4 a5 a6"));
    QCOMPARE(texts(view.value2Labels), list("b0 b1 b2 b3 b4 b5 b6"));
}

void TstMeasureViewAChn::aSignalThatCannotBeMeasuredShowsNoValues()
{
    MeasureViewAChn view;
    fill(view);
    m_second.clear();
    view.slotMeasureChanged();
    QCOMPARE(texts(view.value1Labels), list("a0 a1 a2 a3 a4 a5 a6"));
    QCOMPARE(texts(view.value2Labels), list("-- -- -- -- -- -- --"));
}

void TstMeasureViewAChn::aChannelThatIsNotThereHasValuesThatAreNotKnown()
{
    MeasureViewAChn view;
    m_first = analogText(QStringLiteral("a"));
    view.paramText = [this](int chn) { return chn == 0 ? m_first : QString(); };
    view.slotMeasureChanged();
    QCOMPARE(view.value2Labels.size(), 7);
    QCOMPARE(texts(view.value1Labels), list("a0 a1 a2 a3 a4 a5 a6"));
    QCOMPARE(texts(view.value2Labels), list("-- -- -- -- -- -- --"));
}

void TstMeasureViewAChn::valuesThatAreNoNumbersAreNotShown()
{
    MeasureViewAChn view;
    fill(view);
    m_first = analogText(QStringLiteral("a"), QStringLiteral("DutyCycle"), QStringLiteral("-nan%"));
    m_second = analogText(QStringLiteral("b"), QStringLiteral("Period"), QStringLiteral("inf"));
    view.slotMeasureChanged();
    QCOMPARE(texts(view.value1Labels), list("a0 a1 a2 a3 a4 a5 --"));
    QCOMPARE(texts(view.value2Labels), list("-- b1 b2 b3 b4 b5 b6"));
}

void TstMeasureViewAChn::aRowThatFindsNothingKeepsItsText()
{
    MeasureViewAChn view;
    fill(view);
    m_first = QStringLiteral("Period:1ms,Vmax:2.00V");
    view.slotMeasureChanged();
    QCOMPARE(texts(view.value1Labels), list("1ms a1 a2 a3 a4 a5 a6"));
}

void TstMeasureViewAChn::foldingLeavesTheHeader()
{
    MeasureViewAChn view;
    fill(view);
    QTest::mouseClick(view.btnExpand, Qt::LeftButton);
    QVERIFY(!view.deployed);
    QVERIFY(view.table->isHidden() && view.btnSetting->isHidden() && view.btnExpand->isVisible());
    QTest::keyClick(view.btnExpand, Qt::Key_Space);
    QVERIFY(view.deployed);
    QVERIFY(view.table->isVisible() && view.btnSetting->isVisible());
}

void TstMeasureViewAChn::theButtonOpensTheMenuBesideIt()
{
    MeasureViewAChn view;
    fill(view);
    QPoint place;
    inMenu(view, [&place](AChnMeasureSet &menu) {
        place = menu.pos();
        QCOMPARE(menu.windowModality() != Qt::NonModal || QApplication::activePopupWidget() == &menu, true);
    });
    const QSize button = view.btnSetting->size();
    QCOMPARE(place, view.btnSetting->mapToGlobal(QPoint(button.width(), button.height() / 3)));
}

void TstMeasureViewAChn::aChosenParameterComesFirstAndTheOldestGoes()
{
    MeasureViewAChn view;
    fill(view);
    inMenu(view, [](AChnMeasureSet &menu) {
        click(menu.boxes.at(7)); // Vmax
        QVERIFY(!menu.boxes.at(6)->isChecked());
        QVERIFY(menu.isVisible());
    });
    QCOMPARE(texts(view.nameLabels), list("Vmax Period Frequency RiseTime FallTime +PulseWidth -PulseWidth"));
    QCOMPARE(texts(view.value1Labels), list("a7 a0 a1 a2 a3 a4 a5"));
    QCOMPARE(texts(view.value2Labels), list("b7 b0 b1 b2 b3 b4 b5"));
}

void TstMeasureViewAChn::aParameterThatIsNoLongerChosenLeavesItsRow()
{
    MeasureViewAChn view;
    fill(view);
    inMenu(view, [](AChnMeasureSet &menu) { click(menu.boxes.at(1)); });
    QCOMPARE(texts(view.nameLabels), list("Period RiseTime FallTime +PulseWidth -PulseWidth DutyCycle"));
    QCOMPARE(texts(view.value1Labels), list("a0 a2 a3 a4 a5 a6"));
    QCOMPARE(texts(view.value2Labels), list("b0 b2 b3 b4 b5 b6"));
    QCOMPARE(view.shownCount, 6);
    inMenu(view, [](AChnMeasureSet &menu) {
        QVERIFY(!menu.boxes.at(1)->isChecked()); // what is free is no parameter
        QVERIFY(menu.boxes.at(6)->isChecked());
    });
}

void TstMeasureViewAChn::uncheckingAllLeavesTheHeader()
{
    MeasureViewAChn view;
    fill(view);
    inMenu(view, [](AChnMeasureSet &menu) {
        for (int id = 0; id < 7; ++id) {
            click(menu.boxes.at(id));
        }
    });
    QVERIFY(texts(view.nameLabels + view.value1Labels + view.value2Labels + view.chnLabels).isEmpty());
    QVERIFY(view.btnSetting->isVisible());
    inMenu(view, [](AChnMeasureSet &menu) { click(menu.boxes.at(16)); });
    QCOMPARE(texts(view.nameLabels + view.value1Labels + view.value2Labels + view.chnLabels),
             list("Vrms a16 b16 Chn1 Chn2"));
}

void TstMeasureViewAChn::removeAllLeavesTheHeaderAndTheMenuOpensWithoutChecks()
{
    MeasureViewAChn view;
    fill(view);
    inMenu(view, [](AChnMeasureSet &menu) { click(menu.removeAllBox); });
    QVERIFY(texts(view.nameLabels + view.value1Labels + view.value2Labels + view.chnLabels).isEmpty());
    QCOMPARE(view.shownCount, 0);
    inMenu(view, [](AChnMeasureSet &menu) {
        for (const QCheckBox *box : menu.boxes) {
            QVERIFY(!box->isChecked());
        }
    });
    view.slotMeasureChanged();
    QVERIFY(texts(view.value1Labels).isEmpty());
}

void TstMeasureViewAChn::aRowWithAnotherParameterDoesNotKeepTheFormerValue()
{
    MeasureViewAChn view;
    fill(view);
    m_first = QStringLiteral("Period:1ms,Frequency:1KHz");
    inMenu(view, [](AChnMeasureSet &menu) { click(menu.boxes.at(16)); });
    QCOMPARE(texts(view.value1Labels), list("-- 1ms 1KHz -- -- -- --"));
}

void TstMeasureViewAChn::tooManyParametersChangeNothing()
{
    MeasureViewAChn view;
    fill(view);
    const std::array<qint32, 8> ids{8, 9, 10, 11, 12, 13, 14, 15};
    view.slotUpdateMeasuresShow(ids.data(), 8);
    QCOMPARE(view.shownIds, (QVector<int>{0, 1, 2, 3, 4, 5, 6}));
    view.slotUpdateMeasuresShow(ids.data(), 2);
    QCOMPARE(view.shownIds, (QVector<int>{8, 9, -1, -1, -1, -1, -1}));
    QCOMPARE(texts(view.nameLabels), list("Vmin Vpp"));
}

void TstMeasureViewAChn::theMenuClosesWithAnotherDevice()
{
    MeasureViewAChn view;
    fill(view);
    bool stayed = true;
    inMenu(view, [&](AChnMeasureSet &menu) {
        m_first.clear();
        view.reload();
        stayed = menu.isVisible();
    });
    QVERIFY(!stayed);
    QCOMPARE(texts(view.value1Labels), list("-- -- -- -- -- -- --"));
}

void TstMeasureViewAChn::showAllOpensTheChannelsDialogAndTheMenuComesBack_data()
{
    QTest::addColumn<int>("chn");
    QTest::newRow("first") << 0;
    QTest::newRow("second") << 1;
}

void TstMeasureViewAChn::showAllOpensTheChannelsDialogAndTheMenuComesBack()
{
    QFETCH(int, chn);
    MeasureViewAChn view;
    fill(view);
    m_first = analogText(QStringLiteral("a"), QStringLiteral("Overshoot"), QStringLiteral("inf%"));
    QStringList values;
    const DialogDriver<AChnMeasureDialog> dialogs([&](AChnMeasureDialog &dialog) {
        QCOMPARE(dialog.windowTitle(), QStringLiteral("  Show All   : CH%1").arg(chn + 1));
        QVERIFY(dialog.isModal());
        values = texts(dialog.valueLabels);
        pressButton(dialog, QStringLiteral("OK"));
    });
    bool cameBack = false;
    QAbstractButton *off = nullptr;
    bool isOff = false;
    inMenu(view, [&](AChnMeasureSet &menu) {
        off = menu.showAllGroup->buttons().first();
        click(off);
        click(menu.showAllGroup->buttons().at(chn + 1));
        cameBack = menu.isVisible();
        isOff = off->isChecked();
    });
    QCOMPARE(dialogs.count, 1);
    QVERIFY(cameBack);
    QVERIFY(isOff);
    QStringList expected = list("a0 a1 a2 a3 a4 a5 a6 a7 a8 a9 a10 a11 a12 -- a14 a15 a16");
    if (chn == 1) {
        expected = list("b0 b1 b2 b3 b4 b5 b6 b7 b8 b9 b10 b11 b12 b13 b14 b15 b16");
    }
    QCOMPARE(values, expected);
}

void TstMeasureViewAChn::theDialogOfATextThatIsNotWholeHasNoValues_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << QString();
    QTest::newRow("two parts") << QStringLiteral("Period:1ms,Frequency:1KHz");
    QTest::newRow("one too many") << analogText(QStringLiteral("a")) + QStringLiteral(",Vpk:1V");
}

void TstMeasureViewAChn::theDialogOfATextThatIsNotWholeHasNoValues()
{
    QFETCH(QString, text);
    const AChnMeasureDialog dialog(0, text);
    QCOMPARE(dialog.valueLabels.size(), 17);
    QCOMPARE(texts(dialog.valueLabels).count(QStringLiteral("--")), 17);
}

void TstMeasureViewAChn::theDialogStaysAsItWasOpened()
{
    MeasureViewAChn view;
    fill(view);
    QStringList values;
    const DialogDriver<AChnMeasureDialog> dialogs([&](AChnMeasureDialog &dialog) {
        m_first = analogText(QStringLiteral("new"));
        view.slotMeasureChanged();
        values = texts(dialog.valueLabels);
        QTest::keyClick(&dialog, Qt::Key_Return);
    });
    view.slotShowAllMeasures(0);
    QCOMPARE(dialogs.count, 1);
    QCOMPARE(values.first(), QStringLiteral("a0"));
    QCOMPARE(view.value1Labels.first()->text(), QStringLiteral("new0"));
}

void TstMeasureViewAChn::inEveryLanguageTheNamesAreTheSameAndFindTheirValues_data()
{
    QTest::addColumn<QString>("code");
    for (const char *code : {"en-US", "de", "ja", "zh-CN", "zh-TW"}) {
        QTest::newRow(code) << QString::fromLatin1(code);
    }
}

void TstMeasureViewAChn::inEveryLanguageTheNamesAreTheSameAndFindTheirValues()
{
    QFETCH(QString, code);
    globalSet(QStringLiteral("userLang"), code);
    languageLoadFrom(QStringLiteral(LUX_LANGUAGE_DIR), QLocale::c());
    {
        QCOMPARE(::tr("Measure Select") == QLatin1String("Measure Select"), code == QLatin1String("en-US"));
        MeasureViewAChn view;
        fill(view);
        inMenu(view, [](AChnMeasureSet &menu) {
            for (int id = 0; id < 17; ++id) {
                QCOMPARE(menu.boxes.at(id)->text(), gMeasureNames.at(id));
            }
            click(menu.removeAllBox);
        });
        for (qint32 id = 0; id < 17; ++id) {
            view.slotUpdateMeasuresShow(&id, 1);
            QCOMPARE(view.nameLabels.first()->text(), gMeasureNames.at(id));
            QCOMPARE(view.value1Labels.first()->text(), QStringLiteral("a%1").arg(id));
        }
    }
    globalSet(QStringLiteral("userLang"), QStringLiteral("en-US"));
    languageLoadFrom(QStringLiteral(LUX_LANGUAGE_DIR), QLocale::c());
}

LUX_GUI_TEST(TstMeasureViewAChn)
#include "tst_MeasureViewAChn.moc"
