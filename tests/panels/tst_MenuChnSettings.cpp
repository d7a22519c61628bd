#include "controls/Look.h"
#include "device/DeviceGlobals.h"
#include "panels/ChnMenuDesk.h"
#include "support/BoxCloser.h"
#include "support/FakeDevControl.h"
#include "support/GuiTestMain.h"

#include <QButtonGroup>
#include <QGroupBox>
#include <QLabel>
#include <QRadioButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalSpy>

namespace {

const QString channelError = QStringLiteral("Please select at least one channel.\n");
const QString positionError = QStringLiteral("Trigger position setting failed.\n");
const QString pwmError = QStringLiteral("The effective range of PWM:[0.1Hz,20MHz], duty cycle:[0%,100%].");

} // namespace

class TstMenuChnSettings : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    // What it shows.
    void theRangesFollowTheModelsLimits_data();
    void theRangesFollowTheModelsLimits();
    void theGroupsFollowTheModel_data();
    void theGroupsFollowTheModel();
    void theChannelsStandFourToARow_data();
    void theChannelsStandFourToARow();
    void theChannelsInUseAreChecked();
    void theOutputsShowWhatIsReallyProduced();
    void theFieldsOfAnOutputFollowItsBox();
    void theSliderShowsThePositionAndItsLabelFollows();
    void theSliderHasATickForEveryTwentyPercent();
    void theMenuFitsALowScreen_data();
    void theMenuFitsALowScreen();

    // What is typed and clicked.
    void noRangeIsCheckedAtFirst();
    void aRangeChecksItsChannelsAndNoOthers();
    void aChannelClickedByHandIsNoRangeAnyMore();
    void onlyATextThatBeginsWithADigitCanBeTyped_data();
    void onlyATextThatBeginsWithADigitCanBeTyped();
    void tabReachesEveryControlAndEnterPressesOk();
    void enterOnCancelCancels();

    // OK and Cancel.
    void okAppliesEverythingAndCloses();
    void outputsAreSwitchedOffBeforeTheyAreSet();
    void withoutAChannelTheBoxTellsItAndTheRestIsApplied();
    void aPositionThatIsRefusedIsTold();
    void thirtyMegahertzLeaveTheOutputsAsTheyWere();
    void whatIsNoNumberLeavesTheOutputsAsTheyWere_data();
    void whatIsNoNumberLeavesTheOutputsAsTheyWere();
    void onlyTheFirstBadOutputIsTold();
    void allErrorsStandInOneBox();
    void outputsThatAreOffAreNotSet();
    void anOutputThatIsOffIsNotRead();
    void theAnalogModelsPositionIsLeftAlone();
    void cancelAndEscapeChangeNothing_data();
    void cancelAndEscapeChangeNothing();

    // The box, and devices that go.
    void theMenuIsOutOfTheWayOfTheBoxAndComesBackAsItWas();
    void theMenuClosesWhenTheDeviceGoes();
    void aClickThatComesTooLateChangesNothing();
    void theDeviceMayGoBehindTheBox();
    void theMenuMayBeDismissedBehindTheBox();

private:
    void open(int model, bool connected = false);
    [[nodiscard]] ChnMenuDesk desk() const { return {*m_menu}; }
    [[nodiscard]] QList<QRadioButton *> ranges() const;
    [[nodiscard]] QVector<bool> checkedChannels() const;
    /// What was sent to the outputs.
    [[nodiscard]] QStringList sent() const { return m_control->calls.filter(QStringLiteral("sendPwm")); }
    void expectNothingChanged();

    std::unique_ptr<FakeDevControl> m_control;
    std::unique_ptr<PanelDevice> m_device;
    std::unique_ptr<MenuChnSettings> m_menu;
    std::unique_ptr<BoxCloser> m_boxes;
};

void TstMenuChnSettings::init()
{
    QFile::remove(configPath());
    m_control = std::make_unique<FakeDevControl>();
    m_boxes = std::make_unique<BoxCloser>();
}

void TstMenuChnSettings::cleanup()
{
    m_menu.reset();
    if (gDev != nullptr) {
        gDev->connected = false;
    }
    m_device.reset();
    m_boxes.reset();
    m_control.reset();
    globalsSetDpi(96);
}

void TstMenuChnSettings::open(int model, bool connected)
{
    if (!m_device || gDev->model != model) {
        m_device = std::make_unique<PanelDevice>(model);
    }
    if (connected) {
        gDev->connected = true;
        gDev->pwmClock = 200000000;
    }
    m_control->calls.clear();
    m_menu = std::make_unique<MenuChnSettings>();
    m_menu->popup(QPoint(10, 10));
    QVERIFY(QTest::qWaitForWindowExposed(m_menu.get()));
}

QList<QRadioButton *> TstMenuChnSettings::ranges() const
{
    QList<QRadioButton *> shown;
    for (QRadioButton *button : m_menu->findChildren<QRadioButton *>()) {
        if (button->isVisible()) {
            shown += button;
        }
    }
    return shown;
}

QVector<bool> TstMenuChnSettings::checkedChannels() const
{
    QVector<bool> checked;
    for (int chn = 0; desk().channel(chn) != nullptr; ++chn) {
        checked += desk().channel(chn)->isChecked();
    }
    return checked;
}

// ---- what it shows

void TstMenuChnSettings::theRangesFollowTheModelsLimits_data()
{
    QTest::addColumn<int>("model");
    QTest::addColumn<QStringList>("ranges"); // last channel and MHz
    QTest::newRow("streaming, 8 channels") << 1 << QStringList({QStringLiteral("3 24"), QStringLiteral("7 24")});
    QTest::newRow("streaming, 16 channels")
        << 5
        << QStringList({QStringLiteral("2 100"), QStringLiteral("5 50"), QStringLiteral("8 32"),
                        QStringLiteral("11 25"), QStringLiteral("15 16")});
    QTest::newRow("storage, 16 channels")
        << 7 << QStringList({QStringLiteral("3 200"), QStringLiteral("7 200"), QStringLiteral("15 200")});
    QTest::newRow("storage, 32 channels") << 9
                                          << QStringList({QStringLiteral("3 500"), QStringLiteral("7 500"),
                                                          QStringLiteral("15 500"), QStringLiteral("31 500")});
    QTest::newRow("analog") << 97
                            << QStringList(
                                   {QStringLiteral("3 100"), QStringLiteral("7 100"), QStringLiteral("15 100")});
}

void TstMenuChnSettings::theRangesFollowTheModelsLimits()
{
    QFETCH(int, model);
    QFETCH(QStringList, ranges);
    open(model);
    QCOMPARE(this->ranges().size(), ranges.size());
    for (int i = 0; i < ranges.size(); ++i) {
        const QStringList parts = ranges.at(i).split(QLatin1Char(' '));
        const QRadioButton *button = this->ranges().at(i);
        QCOMPARE(button->text(),
                 QStringLiteral("Select CH0~%1 (Maximum sample rate is %2MHz)").arg(parts.at(0), parts.at(1)));
        QCOMPARE(button->objectName(), parts.at(0));
        QVERIFY(button->group() != nullptr && button->group()->exclusive());
    }
}

void TstMenuChnSettings::theGroupsFollowTheModel_data()
{
    QTest::addColumn<int>("model");
    QTest::addColumn<QString>("titles");
    QTest::newRow("all") << 8 << QStringLiteral("Channel Enable|PWM Setting|Trigger Position");
    QTest::newRow("without outputs") << 1 << QStringLiteral("Channel Enable|Trigger Position");
    QTest::newRow("analog") << 97 << QStringLiteral("Channel Enable|PWM Setting");
}

void TstMenuChnSettings::theGroupsFollowTheModel()
{
    QFETCH(int, model);
    QFETCH(QString, titles);
    open(model);
    QStringList shown;
    for (const QGroupBox *group : m_menu->findChildren<QGroupBox *>()) {
        if (group->isVisible()) {
            shown += group->title();
        }
    }
    QCOMPARE(shown.join(QLatin1Char('|')), titles);
    QCOMPARE(desk().slider() == nullptr, model == 97);
    QVERIFY(desk().button(QStringLiteral("OK"))->isVisible() && desk().button(QStringLiteral("Cancel"))->isVisible());
}

void TstMenuChnSettings::theChannelsStandFourToARow_data()
{
    QTest::addColumn<int>("model");
    QTest::addColumn<int>("channels");
    QTest::newRow("8") << 1 << 8;
    QTest::newRow("16") << 7 << 16;
    QTest::newRow("32") << 9 << 32;
}

void TstMenuChnSettings::theChannelsStandFourToARow()
{
    QFETCH(int, model);
    QFETCH(int, channels);
    open(model);
    QCOMPARE(checkedChannels().size(), channels);
    for (int chn = 0; chn < channels; ++chn) {
        const QPoint place = desk().channel(chn)->pos();
        QCOMPARE(place.y(), desk().channel(chn / 4 * 4)->y());
        QCOMPARE(place.x(), desk().channel(chn % 4)->x());
        QVERIFY(chn % 4 == 0 || place.x() > desk().channel(chn - 1)->x());
        QVERIFY(chn < 4 || place.y() > desk().channel(chn - 4)->y());
    }
}

void TstMenuChnSettings::theChannelsInUseAreChecked()
{
    m_device = std::make_unique<PanelDevice>(1);
    gDev->setChnEnable({true, false, true, false, false, false, true, true});
    open(1);
    QCOMPARE(checkedChannels(), gDev->chnEnable);
}

void TstMenuChnSettings::theOutputsShowWhatIsReallyProduced()
{
    m_device = std::make_unique<PanelDevice>(8);
    gDev->connected = true;
    gDev->pwmClock = 200000000;
    gDev->setPwm(0, 3000.0, 33.0);
    gDev->setPwm(1, 1.7e7, 50.0); // 12 clocks
    gDev->setPwmEnable(false, true);
    open(8);
    QCOMPARE(desk().frequ(0)->text(), QStringLiteral("2.99999")); // 66667 clocks are a little too many
    QCOMPARE(desk().unit(0)->currentText(), QStringLiteral("KHz"));
    QCOMPARE(desk().duty(0)->text(), QStringLiteral("32.9998"));
    QVERIFY(!desk().output(0)->isChecked());
    QCOMPARE(desk().frequ(1)->text(), QStringLiteral("16.6667"));
    QCOMPARE(desk().unit(1)->currentText(), QStringLiteral("MHz"));
    QCOMPARE(desk().duty(1)->text(), QStringLiteral("50"));
    QVERIFY(desk().output(1)->isChecked());
    QStringList units;
    for (int i = 0; i < desk().unit(0)->count(); ++i) {
        units += desk().unit(0)->itemText(i);
    }
    QCOMPARE(units, QStringList({QStringLiteral("MHz"), QStringLiteral("KHz"), QStringLiteral("Hz")}));
}

void TstMenuChnSettings::theFieldsOfAnOutputFollowItsBox()
{
    open(8);
    for (const bool on : {true, false, true}) {
        desk().checkOutput(0, on);
        QCOMPARE(desk().frequ(0)->isEnabled(), on);
        QCOMPARE(desk().unit(0)->isEnabled(), on);
        QCOMPARE(desk().duty(0)->isEnabled(), on);
        QVERIFY(desk().frequ(1)->isEnabled() && desk().unit(1)->isEnabled() && desk().duty(1)->isEnabled());
    }
    gDev->setPwmEnable(false, false);
    open(8);
    QVERIFY(!desk().frequ(0)->isEnabled() && !desk().unit(1)->isEnabled() && !desk().duty(1)->isEnabled());
}

void TstMenuChnSettings::theSliderShowsThePositionAndItsLabelFollows()
{
    m_device = std::make_unique<PanelDevice>(8);
    gDev->setTrgPosition(41);
    open(8);
    const QSlider *slider = desk().slider();
    QCOMPARE(slider->minimum(), 0);
    QCOMPARE(slider->maximum(), 99);
    QCOMPARE(slider->value(), 41);
    QCOMPARE(slider->orientation(), Qt::Horizontal);
    const auto *label = slider->parentWidget()->findChild<QLabel *>();
    QCOMPARE(label->text(), QStringLiteral("41%"));
    QTest::keyClick(desk().slider(), Qt::Key_Right);
    QCOMPARE(label->text(), QStringLiteral("42%"));
    QTest::keyClick(desk().slider(), Qt::Key_End);
    QCOMPARE(label->text(), QStringLiteral("99%"));
    QVERIFY(label->width() >= label->fontMetrics().horizontalAdvance(label->text()));
    QCOMPARE(gDev->trgPosition, 41); // until OK
}

void TstMenuChnSettings::theSliderHasATickForEveryTwentyPercent()
{
    open(8);
    QCOMPARE(desk().slider()->tickInterval(), 20);
    QVERIFY(desk().slider()->tickPosition() != QSlider::NoTicks);
    const QImage image = desk().slider()->grab().toImage();
    int ticks = 0;
    for (int x = 0; x < image.width(); ++x) {
        ticks += image.pixelColor(x, image.height() - 1) == gGreys[4] ? 1 : 0;
    }
    QCOMPARE(ticks, 5); // 0, 20, 40, 60 and 80
}

void TstMenuChnSettings::theMenuFitsALowScreen_data()
{
    QTest::addColumn<int>("model");
    QTest::addColumn<int>("dpi");
    QTest::addColumn<bool>("scrolls");
    QTest::newRow("the largest model") << 9 << 96 << false;
    QTest::newRow("the largest model on a fine screen") << 9 << 176 << true;
}

void TstMenuChnSettings::theMenuFitsALowScreen()
{
    QFETCH(int, model);
    QFETCH(int, dpi);
    QFETCH(bool, scrolls);
    m_device = std::make_unique<PanelDevice>(model);
    globalsSetDpi(dpi);
    open(model);
    const QRect screen = m_menu->screen()->availableGeometry();
    QCOMPARE(screen.united(m_menu->geometry()), screen);
    const QWidget *ok = desk().button(QStringLiteral("OK"));
    QVERIFY(m_menu->rect().contains(QRect(ok->mapTo(m_menu.get(), QPoint()), ok->size())));
    QCOMPARE(m_menu->findChild<QScrollArea *>()->verticalScrollBar()->maximum() > 0, scrolls);
    if (!scrolls) {
        QVERIFY(m_menu->height() <= 700 && m_menu->width() <= 600);
    }
    // What has the focus is in view.
    desk().slider()->setFocus(Qt::TabFocusReason);
    QTest::keyClick(desk().slider(), Qt::Key_Backtab);
    QTest::keyClick(m_menu->focusWidget(), Qt::Key_Tab);
    QCOMPARE(m_menu->focusWidget(), desk().slider());
    QVERIFY(!desk().slider()->visibleRegion().isEmpty());
}

// ---- what is typed and clicked

void TstMenuChnSettings::noRangeIsCheckedAtFirst()
{
    open(7);
    for (const QRadioButton *range : ranges()) {
        QVERIFY(!range->isChecked());
    }
}

void TstMenuChnSettings::aRangeChecksItsChannelsAndNoOthers()
{
    m_device = std::make_unique<PanelDevice>(5);
    gDev->setChnEnable(QVector<bool>(16, false));
    open(5);
    const QVector<int> last{2, 5, 8, 11, 15};
    for (const int index : {1, 4, 0, 3, 2}) {
        desk().click(ranges().at(index));
        QVERIFY(ranges().at(index)->isChecked());
        for (int chn = 0; chn < 16; ++chn) {
            QCOMPARE(desk().channel(chn)->isChecked(), chn <= last.at(index));
        }
    }
    QCOMPARE(gDev->chnEnable, QVector<bool>(16, false)); // until OK
}

void TstMenuChnSettings::aChannelClickedByHandIsNoRangeAnyMore()
{
    open(7);
    desk().click(ranges().at(0));
    desk().click(desk().channel(9));
    QCOMPARE(checkedChannels(), QVector<bool>({true, true, true, true, false, false, false, false, false, true, false,
                                               false, false, false, false, false}));
    for (const QRadioButton *range : ranges()) {
        QVERIFY(!range->isChecked());
    }
    desk().click(ranges().at(0)); // and it can be chosen again
    QVERIFY(!desk().channel(9)->isChecked());
}

void TstMenuChnSettings::onlyATextThatBeginsWithADigitCanBeTyped_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("stands");
    QTest::newRow("number") << QStringLiteral("12.5") << QStringLiteral("12.5");
    QTest::newRow("one digit") << QStringLiteral("7") << QStringLiteral("7");
    QTest::newRow("letters behind") << QStringLiteral("12kHz") << QStringLiteral("12kHz");
    QTest::newRow("letters first") << QStringLiteral("nan") << QString();
    QTest::newRow("point first") << QStringLiteral(".5") << QStringLiteral("5");
    QTest::newRow("sign first") << QStringLiteral("-5") << QStringLiteral("5");
    QTest::newRow("point last") << QStringLiteral("5.") << QStringLiteral("5.");
    QTest::newRow("too large a number") << QStringLiteral("1e400") << QStringLiteral("1e400");
    QTest::newRow("hexadecimal") << QStringLiteral("0x10") << QStringLiteral("0x10");
    QTest::newRow("blank first") << QStringLiteral(" 5") << QStringLiteral("5");
}

void TstMenuChnSettings::onlyATextThatBeginsWithADigitCanBeTyped()
{
    QFETCH(QString, typed);
    QFETCH(QString, stands);
    open(8);
    for (QLineEdit *field : {desk().frequ(0), desk().duty(0), desk().frequ(1), desk().duty(1)}) {
        desk().type(field, typed);
        QCOMPARE(field->text(), stands);
    }
    QVERIFY(m_menu->isVisible());
}

void TstMenuChnSettings::tabReachesEveryControlAndEnterPressesOk()
{
    open(7);
    QVERIFY(m_menu->focusWidget() != nullptr && m_menu->focusWidget() != m_menu.get());
    QSet<QWidget *> reached;
    for (int i = 0; i < 40; ++i) {
        reached += m_menu->focusWidget();
        QTest::keyClick(m_menu->focusWidget(), Qt::Key_Tab);
    }
    // One of the ranges, the channels, two outputs of four controls, the slider, two buttons.
    QCOMPARE(reached.size(), 1 + 16 + 8 + 1 + 2);
    for (QWidget *control : {static_cast<QWidget *>(desk().channel(15)), static_cast<QWidget *>(desk().duty(1)),
                             static_cast<QWidget *>(desk().unit(0)), static_cast<QWidget *>(desk().slider()),
                             static_cast<QWidget *>(desk().button(QStringLiteral("Cancel")))}) {
        QVERIFY(reached.contains(control));
    }
    desk().channel(4)->setFocus(Qt::TabFocusReason);
    QTest::keyClick(m_menu->focusWidget(), Qt::Key_Space);
    desk().type(desk().duty(0), QStringLiteral("7")); // one digit
    QTest::keyClick(m_menu->focusWidget(), Qt::Key_Return);
    QVERIFY(!m_menu->isVisible());
    QVERIFY(!gDev->chnEnable.at(4));
    QCOMPARE(gDev->pwmDuty[0], 7.0);
}

void TstMenuChnSettings::enterOnCancelCancels()
{
    open(7);
    desk().click(desk().channel(4));
    desk().button(QStringLiteral("Cancel"))->setFocus(Qt::TabFocusReason);
    QTest::keyClick(m_menu->focusWidget(), Qt::Key_Return);
    QVERIFY(!m_menu->isVisible());
    QVERIFY(gDev->chnEnable.at(4));
}

// ---- OK and Cancel

void TstMenuChnSettings::okAppliesEverythingAndCloses()
{
    open(8, true);
    desk().slider()->setFocus(Qt::TabFocusReason);
    QTest::keyClick(desk().slider(), Qt::Key_End);
    desk().click(ranges().at(0));
    desk().type(desk().frequ(0), QStringLiteral("2.5"));
    desk().choose(desk().unit(0), QStringLiteral("MHz"));
    desk().type(desk().duty(0), QStringLiteral("25"));
    desk().checkOutput(1, false);
    desk().clickOk();
    QVERIFY(!m_menu->isVisible());
    QCOMPARE(m_boxes->seen.count, 0);
    QCOMPARE(gDev->trgPosition, 99);
    QCOMPARE(gDev->chnEnable.count(true), 4);
    QCOMPARE(gDev->pwmFrequ[0], 2.5e6);
    QCOMPARE(gDev->pwmDuty[0], 25.0);
    QVERIFY(gDev->pwmEnable[0] && !gDev->pwmEnable[1]);
    QCOMPARE(deviceGet(gDev->name, QStringLiteral("trgPosition")), QStringLiteral("99"));
}

void TstMenuChnSettings::outputsAreSwitchedOffBeforeTheyAreSet()
{
    open(8, true);
    desk().choose(desk().unit(0), QStringLiteral("Hz"));
    desk().type(desk().frequ(0), QStringLiteral("100"));
    desk().type(desk().duty(1), QStringLiteral("10"));
    desk().clickOk();
    QCOMPARE(sent(), QStringList({QStringLiteral("sendPwmEnable 0"), QStringLiteral("sendPwm 0 2000000 1000000"),
                                  QStringLiteral("sendPwm 1 2000 200"), QStringLiteral("sendPwmEnable 3")}));
}

void TstMenuChnSettings::withoutAChannelTheBoxTellsItAndTheRestIsApplied()
{
    open(7, true);
    const QSignalSpy changed(gDev, &DevBase::sigChnEnaChanged);
    for (int chn = 0; chn < 16; ++chn) {
        desk().click(desk().channel(chn));
    }
    QTest::keyClick(desk().slider(), Qt::Key_Home);
    desk().type(desk().duty(1), QStringLiteral("75"));
    desk().clickOk();
    QCOMPARE(m_boxes->seen.count, 1);
    QCOMPARE(m_boxes->seen.title, QStringLiteral("A Setting is Invalid"));
    QCOMPARE(m_boxes->seen.text, channelError);
    QCOMPARE(m_boxes->seen.button, QStringLiteral("Close"));
    QCOMPARE(m_boxes->seen.icon, QMessageBox::Warning);
    QVERIFY(m_menu->isVisible());
    QCOMPARE(changed.size(), 0);
    QCOMPARE(gDev->chnEnable, QVector<bool>(16, true));
    QCOMPARE(gDev->trgPosition, 0);
    QCOMPARE(gDev->pwmDuty[1], 75.0);
    QCOMPARE(sent().size(), 4);
}

void TstMenuChnSettings::aPositionThatIsRefusedIsTold()
{
    open(7);
    desk().slider()->setMaximum(150);
    QTest::keyClick(desk().slider(), Qt::Key_End);
    desk().click(desk().channel(3));
    desk().clickOk();
    QCOMPARE(m_boxes->seen.text, positionError);
    QCOMPARE(gDev->trgPosition, 5);
    QVERIFY(!gDev->chnEnable.at(3));
    QVERIFY(m_menu->isVisible());
}

void TstMenuChnSettings::thirtyMegahertzLeaveTheOutputsAsTheyWere()
{
    open(8, true);
    desk().choose(desk().unit(0), QStringLiteral("MHz"));
    desk().type(desk().frequ(0), QStringLiteral("30"));
    desk().checkOutput(1, false);
    desk().click(desk().channel(15));
    desk().clickOk();
    QCOMPARE(m_boxes->seen.count, 1);
    QCOMPARE(m_boxes->seen.text, pwmError);
    QCOMPARE(sent(), QStringList());
    QVERIFY(gDev->pwmEnable[0] && gDev->pwmEnable[1]);
    QCOMPARE(gDev->pwmFrequ[0], 1000.0);
    QVERIFY(!gDev->chnEnable.at(15)); // the rest is applied
    QVERIFY(m_menu->isVisible());
    // Corrected, it is taken.
    desk().type(desk().frequ(0), QStringLiteral("20"));
    desk().clickOk();
    QCOMPARE(m_boxes->seen.count, 1);
    QCOMPARE(gDev->pwmFrequ[0], 2e7);
    QVERIFY(!gDev->pwmEnable[1]);
    QVERIFY(!m_menu->isVisible());
}

void TstMenuChnSettings::whatIsNoNumberLeavesTheOutputsAsTheyWere_data()
{
    QTest::addColumn<int>("output");
    QTest::addColumn<bool>("inDuty");
    QTest::addColumn<QString>("text");
    for (const char *bad :
         {"", "nan", "inf", "1e400", "0x10", "5kHz", "5%", "1,5.0", "1.2.3", "-1", "5 5", "1e", "101e9"}) {
        QTest::addRow("frequency \"%s\"", bad) << 0 << false << QString::fromLatin1(bad);
        QTest::addRow("duty cycle \"%s\"", bad) << 1 << true << QString::fromLatin1(bad);
    }
    QTest::newRow("duty cycle above 100") << 0 << true << QStringLiteral("100.01");
    QTest::newRow("frequency 0") << 1 << false << QStringLiteral("0");
}

void TstMenuChnSettings::whatIsNoNumberLeavesTheOutputsAsTheyWere()
{
    QFETCH(int, output);
    QFETCH(bool, inDuty);
    QFETCH(QString, text);
    open(8, true);
    (inDuty ? desk().duty(output) : desk().frequ(output))->setText(text); // as a paste might, whatever can be typed
    desk().clickOk();
    QCOMPARE(m_boxes->seen.text, pwmError);
    QCOMPARE(sent(), QStringList());
    QVERIFY(m_menu->isVisible());
}

void TstMenuChnSettings::onlyTheFirstBadOutputIsTold()
{
    open(8, true);
    desk().type(desk().frequ(0), QStringLiteral("5x"));
    desk().type(desk().frequ(1), QStringLiteral("5x"));
    desk().clickOk();
    QCOMPARE(m_boxes->seen.count, 1);
    QCOMPARE(m_boxes->seen.text, pwmError);
}

void TstMenuChnSettings::allErrorsStandInOneBox()
{
    open(7);
    desk().slider()->setMaximum(100);
    QTest::keyClick(desk().slider(), Qt::Key_End);
    for (int chn = 0; chn < 16; ++chn) {
        desk().click(desk().channel(chn));
    }
    desk().type(desk().duty(1), QStringLiteral("500"));
    desk().clickOk();
    QCOMPARE(m_boxes->seen.count, 1);
    QCOMPARE(m_boxes->seen.text, positionError + channelError + pwmError);
}

void TstMenuChnSettings::outputsThatAreOffAreNotSet()
{
    open(8, true);
    desk().checkOutput(0, false);
    desk().checkOutput(1, false);
    desk().clickOk();
    QCOMPARE(sent(), QStringList({QStringLiteral("sendPwmEnable 0"), QStringLiteral("sendPwmEnable 0")}));
    QVERIFY(!gDev->pwmEnable[0] && !gDev->pwmEnable[1]);
    QVERIFY(!m_menu->isVisible());
}

void TstMenuChnSettings::anOutputThatIsOffIsNotRead()
{
    open(8, true);
    desk().type(desk().frequ(0), QStringLiteral("5x"));
    desk().checkOutput(0, false);
    desk().clickOk();
    QCOMPARE(m_boxes->seen.count, 0);
    QCOMPARE(sent(), QStringList({QStringLiteral("sendPwmEnable 0"), QStringLiteral("sendPwm 1 2000 1000"),
                                  QStringLiteral("sendPwmEnable 2")}));
    QCOMPARE(gDev->pwmFrequ[0], 1000.0);
}

void TstMenuChnSettings::theAnalogModelsPositionIsLeftAlone()
{
    open(97);
    QVERIFY(desk().slider() == nullptr);
    deviceSet(gDev->name, QStringLiteral("trgPosition"), QStringLiteral("untouched"));
    gDev->trgPosition = 73;
    desk().click(desk().channel(0));
    desk().clickOk();
    QVERIFY(!m_menu->isVisible());
    QVERIFY(!gDev->chnEnable.at(0));
    QCOMPARE(gDev->trgPosition, 73);
    QCOMPARE(deviceGet(gDev->name, QStringLiteral("trgPosition")), QStringLiteral("untouched"));
}

void TstMenuChnSettings::cancelAndEscapeChangeNothing_data()
{
    QTest::addColumn<bool>("byKey");
    QTest::newRow("cancel") << false;
    QTest::newRow("escape") << true;
}

void TstMenuChnSettings::cancelAndEscapeChangeNothing()
{
    QFETCH(bool, byKey);
    open(7, true);
    desk().click(ranges().at(0));
    desk().checkOutput(0, false);
    desk().type(desk().duty(1), QStringLiteral("1"));
    QTest::keyClick(desk().slider(), Qt::Key_End);
    if (byKey) {
        QTest::keyClick(desk().duty(1), Qt::Key_Escape);
    } else {
        desk().clickCancel();
    }
    QVERIFY(!m_menu->isVisible());
    expectNothingChanged();
}

void TstMenuChnSettings::expectNothingChanged()
{
    QCOMPARE(m_control->calls, QStringList());
    QCOMPARE(gDev->chnEnable, QVector<bool>(gDev->chnEnable.size(), true));
    QCOMPARE(gDev->trgPosition, 5);
    QVERIFY(gDev->pwmEnable[0] && gDev->pwmEnable[1]);
    QCOMPARE(gDev->pwmDuty[1], 50.0);
}

// ---- the box, and devices that go

/// Runs `act` as soon as a message box is shown.
class AtBox : public QObject {
public:
    explicit AtBox(std::function<void()> act) : m_act(std::move(act)) { qApp->installEventFilter(this); }
    bool eventFilter(QObject *object, QEvent *event) override
    {
        if (event->type() == QEvent::Show && qobject_cast<QMessageBox *>(object) != nullptr) {
            m_act();
        }
        return false;
    }

private:
    std::function<void()> m_act;
};

void TstMenuChnSettings::theMenuIsOutOfTheWayOfTheBoxAndComesBackAsItWas()
{
    open(7);
    const QPoint place = m_menu->pos();
    desk().click(desk().channel(2));
    desk().type(desk().duty(0), QStringLiteral("200"));
    bool isPopup = true;
    const AtBox atBox([&] { isPopup = QApplication::activePopupWidget() != nullptr; });
    desk().clickOk();
    QVERIFY(!isPopup); // a pop-up would take the clicks that are meant for the box
    QVERIFY(m_menu->isVisible());
    QCOMPARE(m_menu->pos(), place);
    QCOMPARE(QApplication::activePopupWidget(), m_menu.get());
    QCOMPARE(desk().duty(0)->text(), QStringLiteral("200"));
    QVERIFY(!desk().channel(2)->isChecked());
    desk().clickCancel();
    QVERIFY(!m_menu->isVisible());
}

void TstMenuChnSettings::theMenuClosesWhenTheDeviceGoes()
{
    open(7);
    m_device->replace(9);
    QVERIFY(!m_menu->isVisible());
}

void TstMenuChnSettings::aClickThatComesTooLateChangesNothing()
{
    open(7);
    desk().click(desk().channel(2));
    m_device->replace(8);
    desk().clickOk();
    QTest::keyClick(desk().duty(0), Qt::Key_Return);
    QCOMPARE(m_boxes->seen.count, 0);
    expectNothingChanged();
    m_device.reset(); // and without any device
    desk().clickOk();
    QVERIFY(!m_menu->isVisible());
}

void TstMenuChnSettings::theDeviceMayGoBehindTheBox()
{
    open(7);
    desk().type(desk().duty(0), QStringLiteral("200"));
    const AtBox atBox([this] { m_device->replace(9); });
    desk().clickOk();
    QCOMPARE(m_boxes->seen.count, 1);
    QVERIFY(!m_menu->isVisible());
    expectNothingChanged();
}

void TstMenuChnSettings::theMenuMayBeDismissedBehindTheBox()
{
    m_device = std::make_unique<PanelDevice>(7);
    m_menu = std::make_unique<MenuChnSettings>();
    const AtBox atBox([this] { m_menu->dismiss(); });
    QTimer::singleShot(0, m_menu.get(), [this] {
        desk().type(desk().duty(0), QStringLiteral("200"));
        desk().clickOk();
    });
    m_menu->exec(QPoint(10, 10)); // returns, though the menu was not on the screen when it was dismissed
    QCOMPARE(m_boxes->seen.count, 1);
    QVERIFY(!m_menu->isVisible());
}

LUX_GUI_TEST(TstMenuChnSettings)
#include "tst_MenuChnSettings.moc"
