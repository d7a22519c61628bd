#include "device/DeviceGlobals.h"
#include "panels/MenuDevSettings.h"
#include "panels/PanelDevice.h"
#include "support/GuiTestMain.h"

#include <QButtonGroup>
#include <QGroupBox>
#include <QRadioButton>
#include <QSignalSpy>

class TstMenuDevSettings : public QObject {
    Q_OBJECT
private slots:
    void theModelsStandInOrderUnderTheirTitle();
    void theModelOfTheMomentIsChecked_data();
    void theModelOfTheMomentIsChecked();
    void aClickClosesTheMenuAndTellsTheCode_data();
    void aClickClosesTheMenuAndTellsTheCode();
    void theCheckedOneCanBeClickedToo();
    void withAnInstrumentNothingCanBeChosen();
    void theArrowKeysOnlyLookAndSpaceChooses();
    void enterChoosesToo();
    void escapeChoosesNothing();
    void theMenuClosesWhenTheDeviceGoes();
    void theDeviceMayGoInTheMidstOfAChoice();

private:
    static QList<QRadioButton *> buttons(const MenuDevSettings &menu) { return menu.findChildren<QRadioButton *>(); }
    static void click(QRadioButton *button)
    {
        QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(8, button->height() / 2));
    }
    static void open(MenuDevSettings &menu)
    {
        menu.popup(QPoint(10, 10));
        QVERIFY(QTest::qWaitForWindowExposed(&menu));
    }
};

void TstMenuDevSettings::theModelsStandInOrderUnderTheirTitle()
{
    const PanelDevice device(0);
    MenuDevSettings menu;
    open(menu);
    QStringList texts;
    int above = -1;
    for (const QRadioButton *button : buttons(menu)) {
        texts += button->text();
        const int y = button->mapTo(&menu, QPoint()).y();
        QVERIFY(y > above);
        above = y;
    }
    QCOMPARE(texts, QStringList({QStringLiteral("RV2310 - 100MHz, 16CH"), QStringLiteral("RV2320 - 100MHz, 16CH"),
                                 QStringLiteral("RV2420 - 200MHz, 16CH"), QStringLiteral("RV2520 - 500MHz, 16CH"),
                                 QStringLiteral("RV2540 - 500MHz, 32CH")}));
    QCOMPARE(menu.findChild<QGroupBox *>()->title(), QStringLiteral("  Model Select  "));
    QVERIFY(menu.findChild<QButtonGroup *>()->exclusive());
}

void TstMenuDevSettings::theModelOfTheMomentIsChecked_data()
{
    QTest::addColumn<int>("model");
    QTest::addColumn<int>("checked"); // -1 for none
    const QMap<int, int> rows{{0, -1}, {1, -1}, {2, 1}, {3, 2}, {4, 3},   {5, 0},
                              {6, 1},  {7, 2},  {8, 3}, {9, 4}, {65, -1}, {97, -1}};
    for (auto row = rows.cbegin(); row != rows.cend(); ++row) {
        QTest::addRow("model %d", row.key()) << row.key() << row.value();
    }
}

void TstMenuDevSettings::theModelOfTheMomentIsChecked()
{
    QFETCH(int, model);
    QFETCH(int, checked);
    const PanelDevice device(model);
    const MenuDevSettings menu;
    for (int i = 0; i < 5; ++i) {
        QCOMPARE(buttons(menu).at(i)->isChecked(), i == checked);
        QVERIFY(buttons(menu).at(i)->isEnabled());
    }
}

void TstMenuDevSettings::aClickClosesTheMenuAndTellsTheCode_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("code");
    for (int index = 0; index < 5; ++index) {
        QTest::addRow("button %d", index) << index << index + 5;
    }
}

void TstMenuDevSettings::aClickClosesTheMenuAndTellsTheCode()
{
    QFETCH(int, index);
    QFETCH(int, code);
    const PanelDevice device(97);
    MenuDevSettings menu;
    QVector<int> told;
    connect(&menu, &MenuDevSettings::simDevModelChanged, &menu, [&](int model) {
        QVERIFY(!menu.isVisible());
        told += model;
    });
    open(menu);
    click(buttons(menu).at(index));
    QCOMPARE(told, QVector<int>{code});
    QCOMPARE(gDev->model, 97); // whoever listens changes it
}

void TstMenuDevSettings::theCheckedOneCanBeClickedToo()
{
    const PanelDevice device(2);
    MenuDevSettings menu;
    const QSignalSpy told(&menu, &MenuDevSettings::simDevModelChanged);
    open(menu);
    click(buttons(menu).at(1));
    QCOMPARE(told.size(), 1);
    QCOMPARE(told.at(0).at(0).toInt(), 6);
}

void TstMenuDevSettings::withAnInstrumentNothingCanBeChosen()
{
    const PanelDevice device(8);
    gDev->connected = true;
    MenuDevSettings menu;
    const QSignalSpy told(&menu, &MenuDevSettings::simDevModelChanged);
    open(menu);
    for (QRadioButton *button : buttons(menu)) {
        QVERIFY(!button->isEnabled());
        click(button);
    }
    QTest::keyClick(&menu, Qt::Key_Down);
    QTest::keyClick(&menu, Qt::Key_Return);
    QTest::keyClick(&menu, Qt::Key_Space);
    QCOMPARE(told.size(), 0);
    QVERIFY(buttons(menu).at(3)->isChecked());
    gDev->connected = false;
}

void TstMenuDevSettings::theArrowKeysOnlyLookAndSpaceChooses()
{
    const PanelDevice device(5);
    MenuDevSettings menu;
    const QSignalSpy told(&menu, &MenuDevSettings::simDevModelChanged);
    open(menu);
    QCOMPARE(menu.focusWidget(), buttons(menu).at(0));
    QTest::keyClick(menu.focusWidget(), Qt::Key_Up); // the end of the list
    QTest::keyClick(menu.focusWidget(), Qt::Key_Down);
    QTest::keyClick(menu.focusWidget(), Qt::Key_Right);
    QTest::keyClick(menu.focusWidget(), Qt::Key_Left);
    QCOMPARE(menu.focusWidget(), buttons(menu).at(1));
    QCOMPARE(told.size(), 0);
    QVERIFY(menu.isVisible());
    QVERIFY(buttons(menu).at(0)->isChecked());
    QTest::keyClick(menu.focusWidget(), Qt::Key_Space);
    QCOMPARE(told.size(), 1);
    QCOMPARE(told.at(0).at(0).toInt(), 6);
    QVERIFY(!menu.isVisible());
}

void TstMenuDevSettings::enterChoosesToo()
{
    const PanelDevice device(97);
    MenuDevSettings menu;
    const QSignalSpy told(&menu, &MenuDevSettings::simDevModelChanged);
    open(menu);
    QCOMPARE(menu.focusWidget(), buttons(menu).at(0));
    for (int i = 0; i < 9; ++i) {
        QTest::keyClick(menu.focusWidget(), Qt::Key_Down);
    }
    QTest::keyClick(menu.focusWidget(), Qt::Key_Return);
    QCOMPARE(told.size(), 1);
    QCOMPARE(told.at(0).at(0).toInt(), 9);
}

void TstMenuDevSettings::escapeChoosesNothing()
{
    const PanelDevice device(8);
    MenuDevSettings menu;
    const QSignalSpy told(&menu, &MenuDevSettings::simDevModelChanged);
    open(menu);
    QTest::keyClick(menu.focusWidget(), Qt::Key_Escape);
    QVERIFY(!menu.isVisible());
    QCOMPARE(told.size(), 0);
}

void TstMenuDevSettings::theMenuClosesWhenTheDeviceGoes()
{
    PanelDevice device(8);
    MenuDevSettings menu;
    open(menu);
    device.replace(9);
    QVERIFY(!menu.isVisible());
}

void TstMenuDevSettings::theDeviceMayGoInTheMidstOfAChoice()
{
    PanelDevice device(8);
    MenuDevSettings menu;
    connect(&menu, &MenuDevSettings::simDevModelChanged, &menu, [&](int model) { device.replace(model); });
    open(menu);
    click(buttons(menu).at(0));
    QCOMPARE(gDev->model, 5);
    QVERIFY(!menu.isVisible());
}

LUX_GUI_TEST(TstMenuDevSettings)
#include "tst_MenuDevSettings.moc"
