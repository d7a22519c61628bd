#include "panels/Options.h"
#include "settings/Globals.h"
#include "settings/HistoryOptions.h"
#include "support/GuiTestMain.h"

#include <QGroupBox>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>

class TstOptions : public QObject {
    Q_OBJECT
private slots:
    void init();

    void theGroupsAndTheirButtonsStandInOrder();
    void theButtonsShowTheOptions_data();
    void theButtonsShowTheOptions();
    void okStoresTheKeysAndTheGlobals_data();
    void okStoresTheKeysAndTheGlobals();
    void cancelStoresNothing();
    void theUpdateOptionIsReadFromItsKey_data();
    void theUpdateOptionIsReadFromItsKey();
    void anUnknownViewStateShowsTheSecondButtonAndStoresZero_data();
    void anUnknownViewStateShowsTheSecondButtonAndStoresZero();
    void theFirstChoiceTellsWhatACheckSends();
    void theLimitsOfTheHistoryAreShownAndStored();
    void withoutAHistoryItsLimitsAreDisabled();
    void theDialogIsAnsweredByKeysAlone();
    void theFocusBeginsOnWhatIsChosen_data();
    void theFocusBeginsOnWhatIsChosen();

private:
    static QList<QGroupBox *> groups(const Options &dialog) { return dialog.findChildren<QGroupBox *>(); }
    static QRadioButton *button(const Options &dialog, int group, int place)
    {
        return groups(dialog).at(group)->findChildren<QRadioButton *>().at(place);
    }
    /// The checked place of each group.
    static QList<int> checked(const Options &dialog);
    static void press(Options &dialog, const QString &text);
    static QString keys();
};

void TstOptions::init()
{
    for (const char *key : {"disAutoUpdate", "disAnimateZoom", "viewState", "colorWaveform", "keepCaptures",
                            "historyCaptures", "historyGigabytes"}) {
        globalSet(QLatin1String(key), QString());
    }
    viewOptionsLoad();
}

QList<int> TstOptions::checked(const Options &dialog)
{
    QList<int> places;
    for (const QGroupBox *group : groups(dialog)) {
        const auto buttons = group->findChildren<QRadioButton *>();
        for (int i = 0; i < buttons.size(); ++i) {
            if (buttons.at(i)->isChecked()) {
                places += i;
            }
        }
    }
    return places;
}

void TstOptions::press(Options &dialog, const QString &text)
{
    for (QPushButton *push : dialog.findChildren<QPushButton *>()) {
        if (push->text() == text) {
            QTest::mouseClick(push, Qt::LeftButton);
        }
    }
}

QString TstOptions::keys()
{
    QStringList values;
    for (const char *key : {"disAutoUpdate", "disAnimateZoom", "viewState", "colorWaveform", "keepCaptures"}) {
        values += globalGet(QLatin1String(key));
    }
    return values.join(QLatin1Char(','));
}

void TstOptions::theGroupsAndTheirButtonsStandInOrder()
{
    const Options dialog;
    QStringList texts;
    for (const QGroupBox *group : groups(dialog)) {
        texts += group->title();
        for (const QRadioButton *choice : group->findChildren<QRadioButton *>()) {
            texts += choice->text();
        }
    }
    QCOMPARE(
        texts,
        QStringList({QStringLiteral("  Check for updates on launch  "), QStringLiteral("Enable"),
                     QStringLiteral("Disable"), QStringLiteral("  Animate zooming  "), QStringLiteral("Enable"),
                     QStringLiteral("Disable"), QStringLiteral("  View state after new sampling  "),
                     QStringLiteral("Zoom all the way out"), QStringLiteral("Show time zero, with previous zoom level"),
                     QStringLiteral("Keep exactly the same position as before (if possible)"),
                     QStringLiteral("  Use channel color drawing waveform  "), QStringLiteral("Enable"),
                     QStringLiteral("Disable"), QStringLiteral("  Keep captures in the list of recent ones  "),
                     QStringLiteral("Those of instruments"), QStringLiteral("Simulated ones too"),
                     QStringLiteral("Disable")}));
    const Qt::WindowFlags buttons = dialog.windowFlags() & (Qt::WindowMinMaxButtonsHint | Qt::WindowCloseButtonHint |
                                                            Qt::WindowContextHelpButtonHint);
    QCOMPARE(int(buttons), int(Qt::WindowCloseButtonHint));
}

void TstOptions::theButtonsShowTheOptions_data()
{
    QTest::addColumn<bool>("animate");
    QTest::addColumn<int>("view");
    QTest::addColumn<bool>("colour");
    QTest::addColumn<QList<int>>("places");
    QTest::newRow("the defaults") << false << 0 << false << QList<int>({0, 0, 1, 1, 0});
    QTest::newRow("all other") << true << 1 << true << QList<int>({0, 1, 0, 0, 0});
    QTest::newRow("the same place") << false << 2 << true << QList<int>({0, 0, 2, 0, 0});
}

void TstOptions::theButtonsShowTheOptions()
{
    QFETCH(bool, animate);
    QFETCH(int, view);
    QFETCH(bool, colour);
    QFETCH(QList<int>, places);
    disAnimateZoom = animate;
    viewState = view;
    colorWaveform = colour;
    QCOMPARE(checked(Options()), places);
}

void TstOptions::okStoresTheKeysAndTheGlobals_data()
{
    QTest::addColumn<QList<int>>("places");
    QTest::addColumn<QString>("stored");
    QTest::newRow("first ones") << QList<int>({0, 0, 0, 0, 0}) << QStringLiteral("0,0,1,1,0");
    QTest::newRow("second ones") << QList<int>({1, 1, 1, 1, 1}) << QStringLiteral("1,1,0,0,1");
    QTest::newRow("the third") << QList<int>({0, 1, 2, 0, 2}) << QStringLiteral("0,1,2,1,2");
}

void TstOptions::okStoresTheKeysAndTheGlobals()
{
    QFETCH(QList<int>, places);
    QFETCH(QString, stored);
    Options dialog;
    dialog.show();
    for (int group = 0; group < places.size(); ++group) {
        QRadioButton *choice = button(dialog, group, places.at(group));
        QTest::mouseClick(choice, Qt::LeftButton, {}, QPoint(8, choice->height() / 2));
    }
    QCOMPARE(checked(dialog), places);
    press(dialog, QStringLiteral("OK"));
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QVERIFY(!dialog.isVisible());
    QCOMPARE(keys(), stored);
    QCOMPARE(QStringLiteral("%1,%2,%3").arg(int(disAnimateZoom)).arg(viewState).arg(int(colorWaveform)),
             stored.mid(2, 5));
    QCOMPARE(checked(Options()), places); // and the next opening shows what was stored
}

void TstOptions::cancelStoresNothing()
{
    Options dialog;
    dialog.show();
    for (int group = 0; group < 4; ++group) {
        button(dialog, group, group == 0 || group == 1 ? 1 : 0)->click();
    }
    press(dialog, QStringLiteral("Cancel"));
    QVERIFY(!dialog.isVisible());
    QCOMPARE(keys(), QStringLiteral(",,,,"));
    QVERIFY(!disAnimateZoom && viewState == 0 && !colorWaveform);
}

void TstOptions::theUpdateOptionIsReadFromItsKey_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<int>("place");
    QTest::newRow("empty") << QString() << 0;
    QTest::newRow("0") << QStringLiteral("0") << 0;
    QTest::newRow("1") << QStringLiteral("1") << 1;
    QTest::newRow("7") << QStringLiteral("7") << 1;
    QTest::newRow("no number") << QStringLiteral("yes") << 0;
}

void TstOptions::theUpdateOptionIsReadFromItsKey()
{
    QFETCH(QString, value);
    QFETCH(int, place);
    globalSet(QStringLiteral("disAutoUpdate"), value);
    QCOMPARE(checked(Options()).constFirst(), place);
}

void TstOptions::anUnknownViewStateShowsTheSecondButtonAndStoresZero_data()
{
    QTest::addColumn<QString>("value");
    QTest::newRow("7") << QStringLiteral("7");
    QTest::newRow("3") << QStringLiteral("3");
    QTest::newRow("-1") << QStringLiteral("-1");
    QTest::newRow("no number") << QStringLiteral("x");
}

void TstOptions::anUnknownViewStateShowsTheSecondButtonAndStoresZero()
{
    QFETCH(QString, value);
    globalSet(QStringLiteral("viewState"), value);
    viewOptionsLoad();
    Options dialog;
    dialog.show();
    QCOMPARE(checked(dialog).at(2), 1);
    press(dialog, QStringLiteral("OK"));
    QCOMPARE(globalGet(QStringLiteral("viewState")), QStringLiteral("0"));
    QCOMPARE(viewState, 0);
}

void TstOptions::theFirstChoiceTellsWhatACheckSends()
{
    for (const bool checksAtStart : {true, false}) {
        const Options dialog(nullptr, checksAtStart);
        const QGroupBox *box = dialog.findChildren<QGroupBox *>().constFirst();
        for (const char *fact : {"version", "word width", "system", "model", "damaged record", "whether you asked"}) {
            QVERIFY2(box->toolTip().contains(QLatin1String(fact)), fact);
        }
        QCOMPARE(box->toolTip().contains(QStringLiteral("once in seven days")), checksAtStart);
        QCOMPARE(box->toolTip().contains(QStringLiteral("without the check")), !checksAtStart);
        QVERIFY(box->accessibleDescription().contains(QStringLiteral("Nothing else is sent.")));
    }
}

void TstOptions::theLimitsOfTheHistoryAreShownAndStored()
{
    HistoryOptions{KeepCaptures::OfInstruments, 30, 4}.store();
    Options dialog;
    dialog.show();
    const auto limits = dialog.findChildren<QSpinBox *>();
    QCOMPARE(limits.size(), 2);
    QCOMPARE(limits.at(0)->value(), 30);
    QCOMPARE(limits.at(1)->value(), 4);
    limits.at(0)->setFocus();
    limits.at(0)->selectAll();
    QTest::keyClicks(limits.at(0), QStringLiteral("12"));
    QTest::keyClick(limits.at(1), Qt::Key_Up);
    press(dialog, QStringLiteral("OK"));
    QCOMPARE(HistoryOptions::stored(), (HistoryOptions{KeepCaptures::OfInstruments, 12, 5}));
}

void TstOptions::withoutAHistoryItsLimitsAreDisabled()
{
    Options dialog;
    dialog.show();
    const auto limits = dialog.findChildren<QSpinBox *>();
    for (const int place : {2, 0, 2, 1}) {
        QRadioButton *choice = button(dialog, 4, place);
        QTest::mouseClick(choice, Qt::LeftButton, {}, QPoint(8, choice->height() / 2));
        QCOMPARE(limits.at(0)->isEnabled(), place != 2);
        QCOMPARE(limits.at(1)->isEnabled(), place != 2);
    }
}

void TstOptions::theFocusBeginsOnWhatIsChosen_data()
{
    QTest::addColumn<QString>("disAutoUpdate");
    QTest::addColumn<int>("place");
    QTest::newRow("enabled") << "0" << 0;
    QTest::newRow("disabled") << "1" << 1;
}

void TstOptions::theFocusBeginsOnWhatIsChosen()
{
    QFETCH(QString, disAutoUpdate);
    QFETCH(int, place);
    globalSet(QStringLiteral("disAutoUpdate"), disAutoUpdate);
    Options dialog;
    dialog.show();
    dialog.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QCOMPARE(dialog.focusWidget(), button(dialog, 0, place));
    QTest::keyClick(dialog.focusWidget(), Qt::Key_Space);
    QCOMPARE(checked(dialog).constFirst(), place);
}

void TstOptions::theDialogIsAnsweredByKeysAlone()
{
    Options dialog;
    dialog.show();
    dialog.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QSet<QWidget *> reached;
    for (int i = 0; i < 9; ++i) {
        QTest::keyClick(&dialog, Qt::Key_Tab);
        reached += dialog.focusWidget();
    }
    QCOMPARE(reached.size(), 9); // five groups, two numbers and two buttons
    button(dialog, 2, 1)->setFocus(Qt::TabFocusReason);
    QTest::keyClick(dialog.focusWidget(), Qt::Key_Down);
    QCOMPARE(checked(dialog).at(2), 2);
    QTest::keyClick(&dialog, Qt::Key_Return);
    QCOMPARE(viewState, 2);
    QVERIFY(!dialog.isVisible());
}

LUX_GUI_TEST(TstOptions)
#include "tst_Options.moc"
