// Thresholds that are typed: what is taken, what is refused, and how often the user is told.

#include "device/DeviceGlobals.h"
#include "panels/Toolbar.h"
#include "panels/VthDesk.h"

#include <QShortcut>
#include <QSignalSpy>

namespace {

/// Brings a window back to the front when a box over it has been closed, as a window manager does.
class WindowManager : public QObject {
public:
    explicit WindowManager(QWidget &window) : m_window(window) { qApp->installEventFilter(this); }
    bool eventFilter(QObject *object, QEvent *event) override
    {
        if (event->type() == QEvent::Show && qobject_cast<QMessageBox *>(object) != nullptr) {
            connect(object, &QObject::destroyed, this, [this] {
                m_window.activateWindow();
                QCoreApplication::processEvents();
            });
        }
        return false;
    }

private:
    QWidget &m_window;
};

/// The ways in which a field is finished.
enum Way { Enter, KeypadEnter, Tab, BackTab, ClickElsewhere, OtherWindow };

void finish(VthDesk &desk, int row, Way way)
{
    QLineEdit *edit = desk.panel->vthEdits.at(row);
    switch (way) {
    case Enter:
        QTest::keyClick(edit, Qt::Key_Return);
        break;
    case KeypadEnter:
        QTest::keyClick(edit, Qt::Key_Enter, Qt::KeypadModifier);
        break;
    case Tab:
        QTest::keyClick(edit, Qt::Key_Tab);
        break;
    case BackTab:
        QTest::keyClick(edit, Qt::Key_Backtab);
        break;
    case ClickElsewhere:
        QTest::mouseClick(desk.after, Qt::LeftButton);
        break;
    case OtherWindow: {
        QWidget other;
        other.show();
        other.activateWindow();
        QTRY_VERIFY(!edit->hasFocus() || desk.boxes.seen.count > 0);
        break;
    }
    }
    QCoreApplication::processEvents();
}

void ways()
{
    QTest::addColumn<int>("way");
    QTest::newRow("enter") << int(Enter);
    QTest::newRow("keypad") << int(KeypadEnter);
    QTest::newRow("tab") << int(Tab);
    QTest::newRow("back") << int(BackTab);
    QTest::newRow("click") << int(ClickElsewhere);
    QTest::newRow("another window") << int(OtherWindow);
}

} // namespace

class TstVthSettingEntry : public QObject {
    Q_OBJECT
private slots:
    void aVoltageIsANumberFromMinusFourToFour_data();
    void aVoltageIsANumberFromMinusFourToFour();
    void aTypedVoltageIsAppliedAndSaved_data() { ways(); }
    void aTypedVoltageIsAppliedAndSaved();
    void theThresholdIsSavedWithTwoDecimalsAndAppliedAsTyped();
    void whatIsNoVoltageIsRefusedAndNothingIsApplied_data();
    void whatIsNoVoltageIsRefusedAndNothingIsApplied();
    void aRefusalIsToldOnceHoweverTheFieldIsLeft_data() { ways(); }
    void aRefusalIsToldOnceHoweverTheFieldIsLeft();
    void theZeroOfARefusalIsTakenWhenTheFieldIsLeft_data() { ways(); }
    void theZeroOfARefusalIsTakenWhenTheFieldIsLeft();
    void anotherRefusalIsToldAgain();
    void passingThroughTheFieldAppliesNothing();
    void escapeTakesBackWhatIsTyped();
    void upAndDownInTheFieldAreNoShortcutsOfTheWindow();
    void theSecondRowIsRefusedByItself();
    void twoRefusedFieldsAreToldOnceEach();
    void choosingAFamilyDropsWhatIsBeingTyped();
    void aPanelThatGoesWithTheFocusTakesNothing();
    void theBarMayBeRebuiltWhileTheBoxIsOpen();
    void f5TakesWhatIsBeingTypedBeforeItStarts();
    void f5WithARefusedEntryStartsNothing();
};

void TstVthSettingEntry::aVoltageIsANumberFromMinusFourToFour_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<bool>("ok");
    QTest::addColumn<double>("volts");
    const auto taken = [](const char *entry, double volts) {
        QTest::newRow(entry) << QString::fromLatin1(entry) << true << volts;
    };
    taken("4", 4.0);
    taken("4.0000", 4.0);
    taken("-4", -4.0);
    taken("-4.0", -4.0);
    taken("0", 0.0);
    taken("-0", 0.0);
    taken("+1.5", 1.5);
    taken(".5", 0.5);
    taken("2.", 2.0);
    taken("  2 ", 2.0);
    taken("1e0", 1.0);
    taken("1,5", 1.5);
    taken("-0,25", -0.25);
    taken("25E-1", 2.5);
    taken("1e-300", 1e-300);
    QTest::newRow("a minus sign of print") << QString::fromUtf8("−1") << true << -1.0;
    for (const char *entry :
         {"",      " ",          "abc", "nan", "-nan", "inf", "-inf", "infinity", "1e400", "-1e400", "0x1",
          "1,5.0", "1.5V",       "1 5", "-",   ".",    "e",   "1e",   "--1",      "1.2.3", "4.0001", "4.000000000001",
          "-4.01", "-4.0000001", "1e9", "true"}) {
        QTest::addRow("refused \"%s\"", entry) << QString::fromLatin1(entry) << false << 0.0;
    }
    const auto strange = [](const char *name, const QString &entry) { QTest::newRow(name) << entry << false << 0.0; };
    strange("full-width digits", QString::fromUtf8("１．５"));
    strange("Arabic digits", QString::fromUtf8("١٫٥"));
    strange("a fraction", QString::fromUtf8("½"));
    strange("a zero within", QStringLiteral("1") + QChar(0) + QStringLiteral("5"));
    strange("half a surrogate pair", QString(QChar(0xd800)));
    strange("long", QString(32767, QLatin1Char('1')));
}

void TstVthSettingEntry::aVoltageIsANumberFromMinusFourToFour()
{
    QFETCH(QString, entry);
    QFETCH(bool, ok);
    QFETCH(double, volts);
    QCOMPARE(thresholdOf(entry).has_value(), ok);
    QCOMPARE(thresholdOf(entry).value_or(0.0), volts);
}

void TstVthSettingEntry::aTypedVoltageIsAppliedAndSaved()
{
    QFETCH(int, way);
    VthDesk desk(oneRowModel, customSettings("1"));
    desk.show();
    desk.type(0, text("-2.5"));
    QCOMPARE(desk.instrument.calls, QStringList()); // not before the field is finished
    finish(desk, 0, Way(way));
    QTRY_COMPARE(desk.instrument.calls, QStringList{sentVth(-2.5, 1)});
    QCOMPARE(VthDesk::saved("chnVth"), text("-2.50"));
    QCOMPARE(VthDesk::saved("chnLevel"), text("Custom I/O"));
    QCOMPARE(desk.boxes.seen.count, 0);
}

void TstVthSettingEntry::theThresholdIsSavedWithTwoDecimalsAndAppliedAsTyped()
{
    VthDesk desk(oneRowModel, customSettings("1"));
    desk.show();
    desk.type(0, text("1.239"));
    finish(desk, 0, Enter);
    QCOMPARE(desk.instrument.calls, QStringList{sentVth(1.239, 1)});
    QVERIFY(sentVth(1.239, 1) != sentVth(1.23, 1));
    QCOMPARE(VthDesk::saved("chnVth"), text("1.24"));
}

void TstVthSettingEntry::whatIsNoVoltageIsRefusedAndNothingIsApplied_data()
{
    QTest::addColumn<QString>("entry");
    for (const char *entry :
         {"", "abc", "nan", "inf", "1e400", "0x1", "1,5,0", "4.01", "4.0001", "-4.01", "1e9", "   "}) {
        QTest::addRow("\"%s\"", entry) << QString::fromLatin1(entry);
    }
    QTest::newRow("full-width digits") << QString::fromUtf8("１");
    QTest::newRow("markup") << text("<b>1</b>");
}

void TstVthSettingEntry::whatIsNoVoltageIsRefusedAndNothingIsApplied()
{
    QFETCH(QString, entry);
    VthDesk desk(oneRowModel, customSettings("1.1"));
    desk.show();
    QLineEdit *edit = desk.panel->vthEdits.at(0);
    edit->setFocus();
    edit->setText(entry);
    finish(desk, 0, Enter);
    QCOMPARE(desk.boxes.seen.count, 1);
    QCOMPARE(desk.boxes.seen.icon, QMessageBox::Warning);
    QCOMPARE(desk.boxes.seen.title, text("A Setting is Invalid"));
    QCOMPARE(desk.boxes.seen.text, text("The effective range of threshold voltage is -4.0 ~ 4.0V"));
    QCOMPARE(desk.boxes.seen.button, text("Close"));
    QCOMPARE(desk.shown(), text("0"));
    desk.comeBackTo(0);
    QCOMPARE(desk.instrument.calls, QStringList());
    QCOMPARE(VthDesk::saved("chnVth"), text("1.10"));
    QCOMPARE(desk.panel->levelBoxes.at(0)->currentIndex(), customLevel);
}

void TstVthSettingEntry::aRefusalIsToldOnceHoweverTheFieldIsLeft()
{
    QFETCH(int, way);
    VthDesk desk(oneRowModel, customSettings("1.1"));
    desk.show();
    desk.type(0, text("4.01"));
    finish(desk, 0, Way(way));
    desk.comeBackTo(0);
    QCOMPARE(desk.boxes.seen.count, 1);
    QCOMPARE(desk.shown(), text("0"));
    QCOMPARE(desk.panel->vthEdits.at(0)->selectedText(), text("0"));
    QCOMPARE(desk.instrument.calls, QStringList());
    QCOMPARE(VthDesk::saved("chnVth"), text("1.10"));
}

void TstVthSettingEntry::theZeroOfARefusalIsTakenWhenTheFieldIsLeft()
{
    QFETCH(int, way);
    VthDesk desk(oneRowModel, customSettings("1.1"));
    desk.show();
    desk.type(0, text("5"));
    finish(desk, 0, Way(way));
    desk.comeBackTo(0);
    QCOMPARE(desk.instrument.calls, QStringList());
    finish(desk, 0, Tab);
    QVERIFY(desk.after->hasFocus());
    QCOMPARE(desk.boxes.seen.count, 1);
    QCOMPARE(desk.instrument.calls, QStringList{sentVth(0, 1)});
    QCOMPARE(VthDesk::saved("chnVth"), text("0.00"));
}

void TstVthSettingEntry::anotherRefusalIsToldAgain()
{
    VthDesk desk(oneRowModel, customSettings("1.1"));
    desk.show();
    for (const char *entry : {"5", "", "x"}) {
        desk.type(0, text(entry));
        finish(desk, 0, Enter);
        desk.comeBackTo(0);
    }
    QCOMPARE(desk.boxes.seen.count, 3);
    desk.type(0, text("1.5"));
    finish(desk, 0, Enter);
    QCOMPARE(desk.boxes.seen.count, 3);
    QCOMPARE(desk.instrument.calls, QStringList{sentVth(1.5, 1)});
}

void TstVthSettingEntry::passingThroughTheFieldAppliesNothing()
{
    VthDesk desk(oneRowModel, customSettings("1.234567"));
    QCOMPARE(desk.atStart, QStringList{sentVth(1.234567, 1)});
    desk.show();
    for (const Way way : {Enter, Tab, BackTab, ClickElsewhere, OtherWindow}) {
        desk.panel->vthEdits.at(0)->setFocus();
        finish(desk, 0, way);
        desk.show();
    }
    QCOMPARE(desk.instrument.calls, QStringList());
    QCOMPARE(desk.shown(), text("1.23"));
}

void TstVthSettingEntry::escapeTakesBackWhatIsTyped()
{
    VthDesk desk(oneRowModel, customSettings("1.2"));
    desk.show();
    const QLineEdit *edit = desk.panel->vthEdits.at(0);
    for (const char *typed : {"0.7", "nonsense", "9"}) {
        desk.type(0, text(typed));
        QTest::keyClick(desk.panel->vthEdits.at(0), Qt::Key_Escape);
        QCOMPARE(desk.shown(), text("1.20"));
        QVERIFY(!edit->hasFocus());
    }
    QCOMPARE(desk.boxes.seen.count, 0);
    QCOMPARE(desk.instrument.calls, QStringList());

    desk.type(0, text("9")); // which a zero stands for when it has been refused
    finish(desk, 0, Enter);
    desk.comeBackTo(0);
    QTest::keyClick(desk.panel->vthEdits.at(0), Qt::Key_Escape);
    QCOMPARE(desk.shown(), text("1.20"));
    QCOMPARE(VthDesk::saved("chnVth"), text("1.20"));
}

void TstVthSettingEntry::upAndDownInTheFieldAreNoShortcutsOfTheWindow()
{
    VthDesk desk(oneRowModel, customSettings("1.2"));
    const QShortcut up(Qt::Key_Up, &desk.window);
    const QShortcut down(Qt::Key_Down, &desk.window);
    QSignalSpy raised(&up, &QShortcut::activated);
    QSignalSpy lowered(&down, &QShortcut::activated);
    desk.show();
    desk.type(0, text("0.7"));
    QTest::keyClick(desk.panel->vthEdits.at(0), Qt::Key_Up);
    QTest::keyClick(desk.panel->vthEdits.at(0), Qt::Key_Down);
    QCOMPARE(raised.size() + lowered.size(), 0);
    QCOMPARE(desk.shown(), text("0.7"));
}

void TstVthSettingEntry::theSecondRowIsRefusedByItself()
{
    VthDesk desk(twoRowModel, {{text("chnLevel2"), text("Custom I/O")}, {text("chnVth2"), text("0.2")}});
    desk.show();
    desk.type(1, text("-5"));
    finish(desk, 1, Enter);
    QCOMPARE(desk.boxes.seen.count, 1);
    desk.comeBackTo(1);
    QCOMPARE(desk.shown(0), text("1.65"));
    QCOMPARE(desk.shown(1), text("0"));
    desk.type(1, text("-4"));
    finish(desk, 1, Enter);
    QCOMPARE(desk.instrument.calls, QStringList{sentVth(-4, 2)});
    QCOMPARE(VthDesk::saved("chnVth"), text("1.65"));
    QCOMPARE(VthDesk::saved("chnVth2"), text("-4.00"));
}

void TstVthSettingEntry::twoRefusedFieldsAreToldOnceEach()
{
    VthDesk desk(twoRowModel, {{text("chnLevel"), text("Custom I/O")}, {text("chnLevel2"), text("Custom I/O")}});
    const WindowManager manager(desk.window);
    desk.show();
    desk.type(1, text("x"));
    desk.panel->vthEdits.at(0)->setText(text("y")); // not finished, although the focus is elsewhere
    // The focus that comes to the first field finishes the second one. Boxes without end would never return.
    const auto tooMany = connect(qApp, &QApplication::focusChanged, &desk.window, [&desk] {
        if (desk.boxes.seen.count > 4) {
            qFatal("one box after the other");
        }
    });
    desk.panel->slotVthEditFinish();
    QCoreApplication::processEvents();
    disconnect(tooMany);
    QCOMPARE(desk.boxes.seen.count, 2);
    QCOMPARE(desk.shown(0), text("0"));
    QCOMPARE(desk.shown(1), text("0"));
    QCOMPARE(VthDesk::saved("chnVth2"), text("1.65"));
}

void TstVthSettingEntry::choosingAFamilyDropsWhatIsBeingTyped()
{
    VthDesk desk(oneRowModel, customSettings("1"));
    desk.show();
    for (const char *entry : {"-3", "abc"}) {
        desk.panel->levelBoxes.at(0)->setCurrentIndex(customLevel);
        desk.instrument.calls.clear();
        desk.type(0, text(entry));
        QVERIFY(desk.panel->vthEdits.at(0)->hasFocus());
        desk.panel->levelBoxes.at(0)->setCurrentText(text("1.8V CMOS"));
        QCoreApplication::processEvents();
        QCOMPARE(desk.instrument.calls, QStringList{sentVth(0.9, 1)});
        QCOMPARE(desk.shown(), text("0.90"));
        QVERIFY(!desk.panel->vthEdits.at(0)->hasFocus());
    }
    QCOMPARE(desk.boxes.seen.count, 0);
    QCOMPARE(VthDesk::saved("chnVth"), text("0.90"));
}

void TstVthSettingEntry::aPanelThatGoesWithTheFocusTakesNothing()
{
    for (const char *entry : {"3", "abc"}) {
        VthDesk desk(oneRowModel, customSettings("1"));
        desk.show();
        desk.type(0, text(entry));
        delete desk.panel;
        QCoreApplication::processEvents();
        QCOMPARE(desk.boxes.seen.count, 0);
        QCOMPARE(desk.instrument.calls, QStringList());
        QCOMPARE(VthDesk::saved("chnVth"), text("1.00"));
    }
}

void TstVthSettingEntry::theBarMayBeRebuiltWhileTheBoxIsOpen()
{
    PanelDevice device(oneRowModel);
    deviceSet(gDev->name, text("chnLevel"), text("Custom I/O"));
    Toolbar bar;
    bar.resize(1200, bar.height());
    bar.show();
    bar.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&bar));
    const QPointer<VthSetting> old = bar.vthSetting;
    QLineEdit *edit = bar.vthSetting->vthEdits.at(0);
    edit->setFocus();
    edit->setText(text("abc"));
    // An instrument of another model arrives, which needs no user.
    bool rebuilt = false;
    QTimer::singleShot(0, &bar, [&] {
        QVERIFY(qobject_cast<QMessageBox *>(QApplication::activeModalWidget()) != nullptr);
        device.replace(twoRowModel);
        bar.reload();
        rebuilt = bar.vthSetting != old && old != nullptr && old->isHidden();
        bar.vthSetting->levelBoxes.at(0)->setCurrentText(text("5.0V TTL"));
        QApplication::activeModalWidget()->close();
    });
    QTest::keyClick(edit, Qt::Key_Return);
    QVERIFY(rebuilt);
    QTRY_VERIFY(old.isNull());
    QCOMPARE(bar.findChildren<VthSetting *>().size(), 1);
    QCOMPARE(bar.vthSetting->vthEdits.at(0)->text(), text("1.58"));
    QCOMPARE(deviceGet(gDev->name, text("chnVth")), text("1.58"));
}

void TstVthSettingEntry::f5TakesWhatIsBeingTypedBeforeItStarts()
{
    VthDesk desk(oneRowModel, customSettings("1"));
    Toolbar bar;
    QStringList order;
    connect(&bar, &Toolbar::startAsked, &bar, [&] { order = desk.instrument.calls; });
    bar.vthSetting->vthEdits.at(0)->setText(text("2.2"));
    desk.instrument.calls.clear();
    bar.slotShortcutF5();
    QCOMPARE(order, QStringList{sentVth(2.2, 1)});
}

void TstVthSettingEntry::f5WithARefusedEntryStartsNothing()
{
    VthDesk desk(oneRowModel, customSettings("1"));
    Toolbar bar;
    int starts = 0;
    connect(&bar, &Toolbar::startAsked, &bar, [&starts] { ++starts; });
    bar.vthSetting->vthEdits.at(0)->setText(text("22"));
    bar.slotShortcutF5();
    QCOMPARE(starts, 0);
    QCOMPARE(desk.boxes.seen.count, 1);
    QCOMPARE(bar.vthSetting->vthEdits.at(0)->text(), text("0"));
}

QTEST_MAIN(TstVthSettingEntry)
#include "tst_VthSettingEntry.moc"
