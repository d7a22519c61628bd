#include "controls/Look.h"
#include "controls/MyButton.h"
#include "device/DeviceGlobals.h"
#include "panels/DevSetting.h"
#include "panels/MenuChnSettings.h"
#include "panels/MenuDevSettings.h"
#include "panels/PanelDevice.h"
#include "support/GuiTestMain.h"
#include "support/MenuDriver.h"

#include <QLabel>
#include <QRadioButton>
#include <QSignalSpy>

class TstDevSetting : public QObject {
    Q_OBJECT
private slots:
    void itShowsTheModelsName();
    void theNameFollowsTheDevice();
    void itHasThePlaceOfTheSidebarColumnAndTheRuler_data();
    void itHasThePlaceOfTheSidebarColumnAndTheRuler();
    void theNameIsNotClipped_data();
    void theNameIsNotClipped();
    void theLabelsHaveTheirStyles();
    void thePanelIsRounded();

    void theButtonsHaveIconsAndNames();
    void theModelButtonOpensItsMenuBesideItself();
    void theSettingsButtonOpensItsMenuBesideItself();
    void aModelChosenInTheMenuIsPassedOn();
    void theMenuMayReplaceTheDevice();
    void aButtonOpensAMenuAnewEachTime();
    void anOpenMenuIsClosedOnDemand_data();
    void anOpenMenuIsClosedOnDemand();
    void anOpenMenuClosesWhenTheDeviceIsReplaced_data();
    void anOpenMenuClosesWhenTheDeviceIsReplaced();
    void theButtonsArePressedByKeys();
};

namespace {
QLabel *nameLabel(const DevSetting &setting)
{
    return setting.findChild<QLabel *>(QStringLiteral("modelName"));
}

MyButton *buttonOf(const DevSetting &setting, int index)
{
    return setting.findChildren<MyButton *>().at(index);
}

/// The panel on the screen, with room for menus beside it.
struct ShownSetting {
    ShownSetting()
    {
        setting.move(20, 40);
        setting.show();
        shown = QTest::qWaitForWindowExposed(&setting);
    }
    DevSetting setting;
    bool shown = false;
};

/// Where a menu belongs: at the right edge of its button, a third of the height down.
QPoint besideButton(const MyButton &button)
{
    return button.mapToGlobal(QPoint(button.width(), int(0.33 * button.height())));
}

void whichMenu()
{
    QTest::addColumn<bool>("ofModels");
    QTest::newRow("models") << true;
    QTest::newRow("channels") << false;
}

/// Opens one of the menus, does `act` while it is open, and returns whether it was still open after that.
bool stillOpenAfter(DevSetting &setting, bool ofModels, const std::function<void()> &act)
{
    bool isOpen = true;
    const MenuDriver<MenuDialog> driver([&](MenuDialog &menu) {
        act();
        isOpen = menu.isVisible();
    });
    if (ofModels) {
        setting.choiceDeviceClickedSlot();
    } else {
        setting.choideChannelClickedSlot();
    }
    return isOpen || driver.count != 1;
}

void scales()
{
    QTest::addColumn<int>("dpi");
    QTest::newRow("96") << 96;
    QTest::newRow("144") << 144;
    QTest::newRow("192") << 192;
}
} // namespace

void TstDevSetting::itShowsTheModelsName()
{
    const PanelDevice device(storage16Model);
    const DevSetting setting;
    QVERIFY(!gDev->name.isEmpty());
    QCOMPARE(nameLabel(setting)->text(), gDev->name);
}

void TstDevSetting::theNameFollowsTheDevice()
{
    PanelDevice device(storage16Model);
    DevSetting setting;
    const QString before = nameLabel(setting)->text();
    device.replace(analogModel);
    QCOMPARE(nameLabel(setting)->text(), before); // it holds no device
    setting.reload();
    QVERIFY(gDev->name != before);
    QCOMPARE(nameLabel(setting)->text(), gDev->name);
}

void TstDevSetting::itHasThePlaceOfTheSidebarColumnAndTheRuler_data()
{
    scales();
}

void TstDevSetting::itHasThePlaceOfTheSidebarColumnAndTheRuler()
{
    QFETCH(int, dpi);
    const PanelDevice device(storage16Model);
    globalsSetDpi(dpi);
    const DevSetting setting;
    QCOMPARE(setting.minimumSize(), QSize(dp(190), dp(36)));
    QCOMPARE(setting.maximumSize(), QSize(dp(190), dp(36)));
    globalsSetDpi(96);
}

void TstDevSetting::theNameIsNotClipped_data()
{
    scales();
}

void TstDevSetting::theNameIsNotClipped()
{
    QFETCH(int, dpi);
    const PanelDevice device(storage16Model);
    globalsSetDpi(dpi);
    DevSetting setting;
    QFont font = setting.font();
    font.setPixelSize(dp(13));
    setting.setFont(font);
    setting.show();
    QCoreApplication::processEvents();
    const QLabel *label = nameLabel(setting);
    QVERIFY(label->width() >= label->fontMetrics().horizontalAdvance(label->text()));
    QVERIFY(label->height() >= label->fontMetrics().height());
    globalsSetDpi(96);
}

void TstDevSetting::theLabelsHaveTheirStyles()
{
    const PanelDevice device(storage16Model);
    const DevSetting setting;
    QStringList styles;
    for (const QLabel *label : setting.findChildren<QLabel *>()) {
        styles.append(label->styleSheet());
    }
    QCOMPARE(styles, QStringList({QStringLiteral("QLabel{border:0;border-image:url(:/res/icoDeviceLA);}"),
                                  QStringLiteral("QLabel{border:0;color:#dfdfdf;}")}));
}

void TstDevSetting::thePanelIsRounded()
{
    const PanelDevice device(storage16Model);
    DevSetting setting;
    QImage image(setting.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    setting.render(&image, {}, {}, {});
    QCOMPARE(image.pixelColor(0, 18).alpha(), 0);
    QCOMPARE(image.pixelColor(2, 2).alpha(), 0); // outside the corner
    QCOMPARE(image.pixelColor(2, 18), gGreys[4]);
    QVERIFY(image.pixelColor(5, 18).lightness() < gGreys[5].lightness());
}

// ---- the menus

void TstDevSetting::theButtonsHaveIconsAndNames()
{
    const PanelDevice device(storage16Model);
    const DevSetting setting;
    QCOMPARE(setting.findChildren<MyButton *>().size(), 2);
    QStringList names;
    for (const MyButton *button : setting.findChildren<MyButton *>()) {
        names += button->accessibleName();
        QVERIFY(!button->icon().isNull());
        QVERIFY(button->focusPolicy() & Qt::TabFocus);
        QCOMPARE(button->toolTip(), button->accessibleName());
    }
    QCOMPARE(names, QStringList({QStringLiteral("Model Select"), QStringLiteral("Channel and device settings")}));
}

void TstDevSetting::theModelButtonOpensItsMenuBesideItself()
{
    const PanelDevice device(storage16Model);
    const ShownSetting panel;
    QPoint place;
    const MenuDriver<MenuDevSettings> driver([&](MenuDevSettings &menu) { place = menu.pos(); });
    QTest::mouseClick(buttonOf(panel.setting, 0), Qt::LeftButton);
    QCOMPARE(driver.count, 1);
    QCOMPARE(place, besideButton(*buttonOf(panel.setting, 0)));
}

void TstDevSetting::theSettingsButtonOpensItsMenuBesideItself()
{
    const PanelDevice device(storage16Model);
    const ShownSetting panel;
    QPoint place;
    const MenuDriver<MenuChnSettings> driver([&](MenuChnSettings &menu) { place = menu.pos(); });
    QTest::mouseClick(buttonOf(panel.setting, 1), Qt::LeftButton);
    QCOMPARE(driver.count, 1);
    QCOMPARE(place, besideButton(*buttonOf(panel.setting, 1)));
}

void TstDevSetting::aModelChosenInTheMenuIsPassedOn()
{
    const PanelDevice device(storage16Model);
    const ShownSetting panel;
    const QSignalSpy told(&panel.setting, &DevSetting::simDevModelChanged);
    const MenuDriver<MenuDevSettings> driver([](MenuDevSettings &menu) {
        QRadioButton *last = menu.findChildren<QRadioButton *>().constLast();
        QTest::mouseClick(last, Qt::LeftButton, {}, QPoint(8, last->height() / 2));
    });
    QTest::mouseClick(buttonOf(panel.setting, 0), Qt::LeftButton);
    QCOMPARE(told.size(), 1);
    QCOMPARE(told.at(0).at(0).toInt(), 9);
}

void TstDevSetting::theMenuMayReplaceTheDevice()
{
    PanelDevice device(storage16Model);
    ShownSetting panel;
    connect(&panel.setting, &DevSetting::simDevModelChanged, &panel.setting, [&](int model) {
        device.replace(model);
        panel.setting.reload();
    });
    const MenuDriver<MenuDevSettings> driver([](MenuDevSettings &menu) {
        QTest::keyClick(menu.focusWidget(), Qt::Key_Down);
        QTest::keyClick(menu.focusWidget(), Qt::Key_Down);
        QTest::keyClick(menu.focusWidget(), Qt::Key_Space);
    });
    QTest::mouseClick(buttonOf(panel.setting, 0), Qt::LeftButton);
    QCOMPARE(gDev->model, 9);
    QCOMPARE(nameLabel(panel.setting)->text(), QStringLiteral("RV2540"));
}

void TstDevSetting::aButtonOpensAMenuAnewEachTime()
{
    PanelDevice device(storage16Model);
    const ShownSetting panel;
    QVector<int> channels;
    const MenuDriver<MenuChnSettings> driver([&](MenuChnSettings &menu) {
        channels += menu.findChildren<QAbstractButton *>().size();
        QTest::keyClick(&menu, Qt::Key_Escape);
    });
    QTest::mouseClick(buttonOf(panel.setting, 1), Qt::LeftButton);
    device.replace(9);
    QTest::mouseClick(buttonOf(panel.setting, 1), Qt::LeftButton);
    QCOMPARE(driver.count, 2);
    QCOMPARE(channels.at(1) - channels.at(0), 16 + 1); // channels and a range more
}

void TstDevSetting::anOpenMenuIsClosedOnDemand_data()
{
    whichMenu();
}

void TstDevSetting::anOpenMenuIsClosedOnDemand()
{
    QFETCH(bool, ofModels);
    const PanelDevice device(storage16Model);
    ShownSetting panel;
    panel.setting.closeMenu(); // harmless without one
    QVERIFY(!stillOpenAfter(panel.setting, ofModels, [&] { panel.setting.closeMenu(); }));
    QVERIFY(stillOpenAfter(panel.setting, ofModels, [] {}));
    panel.setting.closeMenu();
}

void TstDevSetting::anOpenMenuClosesWhenTheDeviceIsReplaced_data()
{
    whichMenu();
}

void TstDevSetting::anOpenMenuClosesWhenTheDeviceIsReplaced()
{
    QFETCH(bool, ofModels);
    PanelDevice device(storage16Model);
    ShownSetting panel;
    QVERIFY(!stillOpenAfter(panel.setting, ofModels, [&] { device.replace(9); }));
}

void TstDevSetting::theButtonsArePressedByKeys()
{
    const PanelDevice device(storage16Model);
    const ShownSetting panel;
    const MenuDriver<MenuDialog> driver([](MenuDialog &menu) { QTest::keyClick(&menu, Qt::Key_Escape); });
    for (int index : {0, 1}) {
        buttonOf(panel.setting, index)->setFocus(Qt::TabFocusReason);
        QTest::keyClick(buttonOf(panel.setting, index), Qt::Key_Space);
        QCOMPARE(driver.count, index + 1);
    }
}

LUX_GUI_TEST(TstDevSetting)
#include "tst_DevSetting.moc"
