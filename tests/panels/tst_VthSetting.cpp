#include "controls/Look.h"
#include "device/DeviceGlobals.h"
#include "panels/VthDesk.h"
#include "settings/Language.h"

#include <QLocale>

class TstVthSetting : public QObject {
    Q_OBJECT
private slots:
    void theRowsFollowTheModel_data();
    void theRowsFollowTheModel();
    void theBoxOffersTheFamiliesInTheirOrder();
    void aFamilyShowsAppliesAndSavesItsThreshold_data();
    void aFamilyShowsAppliesAndSavesItsThreshold();
    void aFamilyIsChosenByKey();
    void onlyTheLastEntryEnablesTheField();
    void theSavedLevelIsShownAndAppliedAtTheStart();
    void theSavedThresholdOfAFamilyDoesNotCount();
    void aSavedNameThatNoPresetHasSelectsTheThirdOne_data();
    void aSavedNameThatNoPresetHasSelectsTheThirdOne();
    void customStartsFromItsDefaultUnlessAVoltageIsSaved_data();
    void customStartsFromItsDefaultUnlessAVoltageIsSaved();
    void switchingToCustomKeepsTheLastThresholdApplied();
    void customIsKnownInAnotherLanguage();
    void anIndexThatNoEntryHasIsIgnored();
    void eachRowHasItsKeysAndItsThreshold();
    void withoutAnInstrumentTheKeysAreSaved();
    void aModelKeepsItsOwnLevels();
    void everyControlHasANameAndIsReachedByTab();
    void theRowsFitTheBar_data();
    void theRowsFitTheBar();
};

void TstVthSetting::theRowsFollowTheModel_data()
{
    QTest::addColumn<int>("model");
    QTest::addColumn<QStringList>("labels");
    QTest::newRow("no instrument") << 0 << QStringList{text("Vth:")};
    QTest::newRow("streaming, 16 channels") << 5 << QStringList{text("Vth:")};
    QTest::newRow("storage, 16 channels") << 8 << QStringList{text("Vth:")};
    QTest::newRow("32 channels") << 9 << QStringList{text("CH0~15 Vth:"), text("CH16~31 Vth:")};
    QTest::newRow("analog") << 97 << QStringList{text("Vth:")};
}

void TstVthSetting::theRowsFollowTheModel()
{
    QFETCH(int, model);
    QFETCH(QStringList, labels);
    const VthDesk desk(model);
    QStringList texts;
    for (const QLabel *label : qAsConst(desk.panel->labels)) {
        texts.append(label->text());
    }
    QCOMPARE(texts, labels);
    QCOMPARE(desk.panel->levelBoxes.size(), labels.size());
    QCOMPARE(desk.panel->vthEdits.size(), labels.size());
    QCOMPARE(desk.panel->units.size(), labels.size());
    for (const QLabel *unit : qAsConst(desk.panel->units)) {
        QCOMPARE(unit->text(), text("V"));
    }
    QCOMPARE(desk.atStart.size(), labels.size()); // each row has applied its threshold
}

void TstVthSetting::theBoxOffersTheFamiliesInTheirOrder()
{
    const VthDesk desk(twoRowModel);
    for (const QComboBox *box : qAsConst(desk.panel->levelBoxes)) {
        QStringList names;
        for (int i = 0; i < box->count(); ++i) {
            names.append(box->itemText(i));
        }
        QCOMPARE(names.join(QLatin1Char('|')), text("5.0V TTL|5.0V CMOS|3.3V CMOS|3.0V CMOS|2.5V CMOS|1.8V CMOS|"
                                                    "1.5V CMOS|1.2V CMOS|0.9V CMOS|Custom I/O"));
        QCOMPARE(box->currentText(), text("3.3V CMOS"));
    }
    QCOMPARE(desk.panel->presets.size(), 10);
    QCOMPARE(desk.panel->presets.at(1), qMakePair(text("5.0V CMOS"), 2.5));
}

void TstVthSetting::aFamilyShowsAppliesAndSavesItsThreshold_data()
{
    QTest::addColumn<double>("volts");
    QTest::addColumn<QString>("shown");
    const auto row = [](const char *name, double volts, const char *shown) {
        QTest::newRow(name) << volts << QString::fromLatin1(shown);
    };
    row("5.0V TTL", 1.58, "1.58");
    row("5.0V CMOS", 2.5, "2.50");
    row("3.3V CMOS", 1.65, "1.65");
    row("3.0V CMOS", 1.5, "1.50");
    row("2.5V CMOS", 1.25, "1.25");
    row("1.8V CMOS", 0.9, "0.90");
    row("1.5V CMOS", 0.75, "0.75");
    row("1.2V CMOS", 0.6, "0.60");
    row("0.9V CMOS", 0.45, "0.45");
}

void TstVthSetting::aFamilyShowsAppliesAndSavesItsThreshold()
{
    QFETCH(double, volts);
    QFETCH(QString, shown);
    const QString name = text(QTest::currentDataTag());
    const VthDesk desk(oneRowModel, customSettings("-1"));
    desk.panel->levelBoxes.at(0)->setCurrentText(name);
    QCOMPARE(desk.shown(), shown);
    QCOMPARE(desk.instrument.calls, QStringList{sentVth(volts, 1)});
    QCOMPARE(VthDesk::saved("chnLevel"), name);
    QCOMPARE(VthDesk::saved("chnVth"), shown);
}

void TstVthSetting::aFamilyIsChosenByKey()
{
    VthDesk desk(oneRowModel);
    desk.show();
    QComboBox *box = desk.panel->levelBoxes.at(0);
    box->setFocus(Qt::TabFocusReason);
    QTest::keyClick(box, Qt::Key_Down);
    QCOMPARE(desk.instrument.calls, QStringList{sentVth(1.5, 1)});
    QTest::keyClick(box, Qt::Key_End);
    QTest::keyClick(box, Qt::Key_Tab);
    QVERIFY(desk.panel->vthEdits.at(0)->hasFocus());
}

void TstVthSetting::onlyTheLastEntryEnablesTheField()
{
    const VthDesk desk(oneRowModel);
    for (int i = 0; i <= customLevel; ++i) {
        desk.panel->levelBoxes.at(0)->setCurrentIndex(i);
        QCOMPARE(desk.panel->vthEdits.at(0)->isEnabled(), i == customLevel);
    }
}

void TstVthSetting::theSavedLevelIsShownAndAppliedAtTheStart()
{
    const VthDesk desk(oneRowModel, customSettings("-0.75"));
    QCOMPARE(desk.panel->levelBoxes.at(0)->currentIndex(), customLevel);
    QCOMPARE(desk.shown(), text("-0.75"));
    QVERIFY(desk.panel->vthEdits.at(0)->isEnabled());
    QCOMPARE(desk.atStart, QStringList{sentVth(-0.75, 1)});
}

void TstVthSetting::theSavedThresholdOfAFamilyDoesNotCount()
{
    const VthDesk desk(oneRowModel, {{text("chnLevel"), text("1.8V CMOS")}, {text("chnVth"), text("3.9")}});
    QCOMPARE(desk.panel->levelBoxes.at(0)->currentText(), text("1.8V CMOS"));
    QVERIFY(!desk.panel->vthEdits.at(0)->isEnabled());
    QCOMPARE(desk.atStart, QStringList{sentVth(0.9, 1)});
    QCOMPARE(VthDesk::saved("chnVth"), text("0.90"));
}

void TstVthSetting::aSavedNameThatNoPresetHasSelectsTheThirdOne_data()
{
    QTest::addColumn<QString>("level");
    QTest::newRow("nothing") << QString();
    QTest::newRow("unknown") << text("4.4V ECL");
    QTest::newRow("a number") << text("5");
    QTest::newRow("another case") << text("5.0v ttl");
    QTest::newRow("part of a name") << text("5.0V");
    QTest::newRow("a blank behind it") << text("5.0V TTL ");
    QTest::newRow("long") << QString(100000, QLatin1Char('5'));
}

void TstVthSetting::aSavedNameThatNoPresetHasSelectsTheThirdOne()
{
    QFETCH(QString, level);
    const VthDesk desk(oneRowModel, {{text("chnLevel"), level}, {text("chnVth"), text("3")}});
    QCOMPARE(desk.panel->levelBoxes.at(0)->currentText(), text("3.3V CMOS"));
    QCOMPARE(desk.atStart, QStringList{sentVth(1.65, 1)});
    QCOMPARE(VthDesk::saved("chnLevel"), text("3.3V CMOS"));
    QCOMPARE(VthDesk::saved("chnVth"), text("1.65"));
}

void TstVthSetting::customStartsFromItsDefaultUnlessAVoltageIsSaved_data()
{
    QTest::addColumn<QString>("saved");
    QTest::addColumn<double>("volts");
    const auto row = [](const char *name, const QString &saved, double volts) {
        QTest::newRow(name) << saved << volts;
    };
    row("nothing", QString(), 1.65);
    row("letters", text("abc"), 1.65);
    row("no number", text("nan"), 1.65);
    row("infinite", text("inf"), 1.65);
    row("too large for a number", text("1e400"), 1.65);
    row("above the range", text("4.01"), 1.65);
    row("far above it", text("1e9"), 1.65);
    row("below the range", text("-4.01"), 1.65);
    row("a comma", text("1,5"), 1.5);
    row("hexadecimal", text("0x1"), 1.65);
    row("long", QString(100000, QLatin1Char('9')), 1.65);
    row("a list", text("1.2,3.4"), 1.65);
    row("upper limit", text("4"), 4.0);
    row("lower limit", text("-4.00"), -4.0);
    row("zero", text("0"), 0.0);
    row("blanks around", text(" 2.5 "), 2.5);
}

void TstVthSetting::customStartsFromItsDefaultUnlessAVoltageIsSaved()
{
    QFETCH(QString, saved);
    QFETCH(double, volts);
    const QString custom = text("Custom I/O");
    const VthDesk desk(
        twoRowModel,
        {{text("chnLevel"), custom}, {text("chnVth"), saved}, {text("chnLevel2"), custom}, {text("chnVth2"), saved}});
    const QString shown = QString::number(volts, 'f', 2);
    QCOMPARE(desk.shown(0), shown);
    QCOMPARE(desk.shown(1), shown);
    QCOMPARE(desk.atStart, (QStringList{sentVth(volts, 1), sentVth(volts, 2)}));
    QCOMPARE(VthDesk::saved("chnVth"), shown);
    QCOMPARE(VthDesk::saved("chnVth2"), shown);
    QCOMPARE(desk.boxes.seen.count, 0);
}

void TstVthSetting::switchingToCustomKeepsTheLastThresholdApplied()
{
    const VthDesk desk(oneRowModel, customSettings("-2.25"));
    QComboBox *box = desk.panel->levelBoxes.at(0);
    box->setCurrentText(text("5.0V CMOS"));
    box->setCurrentIndex(customLevel);
    QCOMPARE(desk.shown(), text("2.50"));
    QCOMPARE(desk.instrument.calls, (QStringList{sentVth(2.5, 1), sentVth(2.5, 1)}));
    QCOMPARE(VthDesk::saved("chnLevel"), text("Custom I/O"));
    QCOMPARE(VthDesk::saved("chnVth"), text("2.50"));
}

void TstVthSetting::customIsKnownInAnotherLanguage()
{
    const PanelDevice device(oneRowModel);
    deviceSet(gDev->name, text("chnLevel"), text("Custom I/O"));
    deviceSet(gDev->name, text("chnVth"), text("0.3"));
    globalSet(text("userLang"), text("de"));
    languageLoadFrom(QStringLiteral(LUX_LANGUAGE_DIR), QLocale::c());
    for (int i = 0; i < 2; ++i) { // the second one finds the German name
        const VthSetting panel;
        QVERIFY(panel.levelBoxes.at(0)->currentText() != text("Custom I/O"));
        QCOMPARE(panel.levelBoxes.at(0)->currentIndex(), customLevel);
        QCOMPARE(VthDesk::saved("chnLevel"), panel.levelBoxes.at(0)->currentText());
        QCOMPARE(VthDesk::saved("chnVth"), text("0.30"));
    }
    globalSet(text("userLang"), text("en-US"));
    languageLoadFrom(QStringLiteral(LUX_LANGUAGE_DIR), QLocale::c());
}

void TstVthSetting::anIndexThatNoEntryHasIsIgnored()
{
    const VthDesk desk(oneRowModel);
    for (const int index : {-1, -1000000, 10, 1000000}) {
        desk.panel->slotVioClicked(index);
        desk.panel->slotVioClicked2(index);
    }
    desk.panel->levelBoxes.at(0)->setCurrentIndex(-1);
    QCOMPARE(desk.instrument.calls, QStringList());
    QCOMPARE(desk.shown(), text("1.65"));
    QCOMPARE(VthDesk::saved("chnLevel"), text("3.3V CMOS"));
}

void TstVthSetting::eachRowHasItsKeysAndItsThreshold()
{
    VthDesk desk(twoRowModel);
    QCOMPARE(desk.atStart, (QStringList{sentVth(1.65, 1), sentVth(1.65, 2)}));
    desk.panel->levelBoxes.at(1)->setCurrentText(text("1.2V CMOS"));
    QCOMPARE(desk.instrument.calls, QStringList{sentVth(0.6, 2)});
    QCOMPARE(VthDesk::saved("chnLevel"), text("3.3V CMOS"));
    QCOMPARE(VthDesk::saved("chnVth"), text("1.65"));
    QCOMPARE(VthDesk::saved("chnLevel2"), text("1.2V CMOS"));
    QCOMPARE(VthDesk::saved("chnVth2"), text("0.60"));
    desk.panel->levelBoxes.at(0)->setCurrentText(text("5.0V TTL"));
    QCOMPARE(desk.instrument.calls.last(), sentVth(1.58, 1));
    QCOMPARE(VthDesk::saved("chnVth2"), text("0.60"));
}

void TstVthSetting::withoutAnInstrumentTheKeysAreSaved()
{
    const VthDesk desk(oneRowModel);
    gDev->connected = false;
    desk.panel->levelBoxes.at(0)->setCurrentText(text("2.5V CMOS"));
    QCOMPARE(desk.instrument.calls, QStringList());
    QCOMPARE(VthDesk::saved("chnLevel"), text("2.5V CMOS"));
    QCOMPARE(VthDesk::saved("chnVth"), text("1.25"));
}

void TstVthSetting::aModelKeepsItsOwnLevels()
{
    PanelDevice device(oneRowModel);
    const QString first = gDev->name;
    VthSetting(nullptr).levelBoxes.at(0)->setCurrentText(text("5.0V TTL"));
    device.replace(twoRowModel);
    QCOMPARE(VthSetting(nullptr).levelBoxes.at(0)->currentText(), text("3.3V CMOS"));
    QCOMPARE(deviceGet(first, text("chnLevel")), text("5.0V TTL"));
}

void TstVthSetting::everyControlHasANameAndIsReachedByTab()
{
    VthDesk desk(twoRowModel, {{text("chnLevel"), text("Custom I/O")}, {text("chnLevel2"), text("Custom I/O")}});
    desk.show();
    const VthSetting &panel = *desk.panel;
    QStringList names;
    desk.before->setFocus();
    for (QWidget *expected : QWidgetList{panel.levelBoxes.at(0), panel.vthEdits.at(0), panel.levelBoxes.at(1),
                                         panel.vthEdits.at(1), desk.after}) {
        QTest::keyClick(desk.window.focusWidget(), Qt::Key_Tab);
        QCOMPARE(desk.window.focusWidget(), expected);
        names.append(expected->accessibleName());
    }
    names.removeLast();
    QVERIFY(!names.contains(QString()));
    QCOMPARE(names.removeDuplicates(), 0);
}

void TstVthSetting::theRowsFitTheBar_data()
{
    QTest::addColumn<int>("model");
    QTest::addColumn<int>("dpi");
    for (const int dpi : {96, 192}) {
        QTest::addRow("one row, %d dpi", dpi) << oneRowModel << dpi;
        QTest::addRow("two rows, %d dpi", dpi) << twoRowModel << dpi;
    }
}

void TstVthSetting::theRowsFitTheBar()
{
    QFETCH(int, model);
    QFETCH(int, dpi);
    const PanelDevice device(model);
    globalsSetDpi(dpi);
    {
        QFont font;
        font.setPixelSize(dp(13));
        QWidget window;
        window.setFont(font);
        VthSetting panel(&window);
        panel.resize(panel.sizeHint().width(), dp(44));
        window.resize(panel.size());
        window.show();
        QCoreApplication::processEvents();
        QCOMPARE(panel.height(), dp(44)); // as high as the bar leaves it
        for (const QComboBox *box : qAsConst(panel.levelBoxes)) {
            QVERIFY(box->geometry().top() >= 0 && box->geometry().bottom() < dp(44));
            QVERIFY(box->width() >= box->sizeHint().width());
        }
        for (QLineEdit *edit : qAsConst(panel.vthEdits)) {
            QVERIFY(edit->geometry().bottom() < dp(44));
            QVERIFY(edit->fontMetrics().horizontalAdvance(text("-4.00")) < edit->contentsRect().width());
        }
        for (const QLabel *label : panel.labels + panel.units) {
            QVERIFY(label->width() >= label->fontMetrics().horizontalAdvance(label->text()));
            QVERIFY(label->geometry().right() < panel.width());
        }
    }
    globalsSetDpi(96);
}

QTEST_MAIN(TstVthSetting)
#include "tst_VthSetting.moc"
