#include "app/WindowDesk.h"
#include "controls/MyButton.h"
#include "device/BringUpDesk.h"
#include "device/DeviceGlobals.h"
#include "panels/ChnMenuDesk.h"
#include "panels/DevSetting.h"
#include "panels/MenuDevSettings.h"
#include "panels/SmpCtrl.h"
#include "support/DialogDriver.h"
#include "support/MenuDriver.h"
#include "wave/ItemChnSidebar.h"
#include "wave/MainView.h"

#include <QLabel>
#include <QPointer>
#include <QRadioButton>

/// The menus of model and settings over the whole window: what is chosen there while something else goes on.
class TstMainWindowMenus : public QObject, private WindowDesk {
    Q_OBJECT
private slots:
    void cleanup();

    void aModelChosenByMouseTakesTheOldOnesPlace();
    void thePresentModelChosenAgainKeepsTheCapture();
    void anotherModelMayBeChosenWhileDataAreShown();
    void anotherModelMayBeChosenWhileACaptureRuns();
    void channelsTakenOutOfUseLeaveTheView();
    void aReplacedConfigurationClosesTheMenu_data() { whichMenu(); }
    void aReplacedConfigurationClosesTheMenu();

    void anInstrumentOfAnotherModelClosesTheMenu_data() { whichMenu(); }
    void anInstrumentOfAnotherModelClosesTheMenu();
    void anInstrumentOfTheSameModelClosesTheMenu_data() { whichMenu(); }
    void anInstrumentOfTheSameModelClosesTheMenu();
    void anInstrumentThatLeavesClosesTheMenu_data() { whichMenu(); }
    void anInstrumentThatLeavesClosesTheMenu();
    void anInstrumentMayLeaveBehindTheBoxOfAnError();
    void withAnInstrumentNoModelCanBeChosen();
    void outputsArriveInTheInstrument_data();
    void outputsArriveInTheInstrument();
    void anOutputThatIsOffIsOnlySwitchedOff();

private:
    static void whichMenu()
    {
        QTest::addColumn<bool>("ofModels");
        QTest::newRow("models") << true;
        QTest::newRow("settings") << false;
    }
    /// The buttons of the panel: 0 for models, 1 for settings.
    MyButton *menuButton(int index) const
    {
        return m_window->findChild<DevSetting *>()->findChildren<MyButton *>().at(index);
    }
    /// Opens the menu by mouse and does `act` in it.
    /// @return true if it was still open after that
    bool inMenu(bool ofModels, const std::function<void(MenuDialog &)> &act)
    {
        bool isOpen = true;
        const MenuDriver<MenuDialog> driver([&](MenuDialog &menu) {
            act(menu);
            isOpen = menu.isVisible();
        });
        QTest::mouseClick(menuButton(ofModels ? 0 : 1), Qt::LeftButton);
        return isOpen || driver.count != 1;
    }
    void chooseModel(int index)
    {
        inMenu(true, [index](MenuDialog &menu) { ChnMenuDesk::click(menu.findChildren<QRadioButton *>().at(index)); });
    }
    void inSettings(const std::function<void(ChnMenuDesk)> &act)
    {
        inMenu(false, [&act](MenuDialog &menu) { act({dynamic_cast<MenuChnSettings &>(menu)}); });
    }

    /// Waits until the instrument has been told all that was asked for.
    static void waitForRequests()
    {
        bool made = false;
        gDev->request([](DevControl &) { return 0; }, [&made](int) { made = true; });
        QTRY_VERIFY(made);
    }

    void makeDesk(int model)
    {
        m_desk = std::make_unique<BringUpDesk>(model, BringUpDesk::WithWindow);
        makeWindow(*m_desk->session);
    }
    void connectInstrument(int model)
    {
        makeDesk(0);
        m_desk->add(runningInstrument(model));
        m_desk->bus->plug();
        QTRY_VERIFY(m_desk->hasEnded());
        QCOMPARE(m_desk->firstError(), (Report{0, 0}));
    }
    /// Plugs an instrument of `model` in while a menu is open.
    void plugBehindMenu(bool ofModels, int model)
    {
        m_desk->add(runningInstrument(model));
        const bool stayed = inMenu(ofModels, [this](MenuDialog &) {
            m_desk->bus->plug();
            QTRY_VERIFY(m_desk->hasEnded());
        });
        QVERIFY(!stayed);
        QCOMPARE(m_desk->firstError(), (Report{0, 0}));
        QVERIFY(gDev->connected);
        QCOMPARE(gDev->model, model);
        QVERIFY(!m_connectDialog->isVisible());
    }
    template<class Job>
    auto instrument(const Job &job)
    {
        return m_desk->bus->with(0, job);
    }

    std::unique_ptr<BringUpDesk> m_desk;
};

void TstMainWindowMenus::cleanup()
{
    m_window.reset();
    if (m_desk) {
        m_desk.reset();
    } else {
        tearDown();
    }
}

// ---- without an instrument

void TstMainWindowMenus::aModelChosenByMouseTakesTheOldOnesPlace()
{
    setUp(0);
    chooseModel(4);
    QCOMPARE(gDev->model, 9);
    QCOMPARE(m_window->windowTitle(), QStringLiteral("RV2540 Unconnected - CorvanLUX"));
    QCOMPARE(globalGet(QStringLiteral("devModel")), QStringLiteral("9"));
    QCOMPARE(m_window->findChildren<ItemChnSidebar *>().size(), 32);
    QCOMPARE(m_window->findChild<DevSetting *>()->findChild<QLabel *>(QStringLiteral("modelName"))->text(),
             QStringLiteral("RV2540"));
    chooseModel(0); // and on to the next
    QCOMPARE(gDev->model, 5);
    QCOMPARE(m_window->findChildren<ItemChnSidebar *>().size(), 16);
}

void TstMainWindowMenus::thePresentModelChosenAgainKeepsTheCapture()
{
    setUp(8);
    capture(1234);
    const QPointer<DevBase> before = gDev;
    chooseModel(3);
    QVERIFY(!before.isNull());
    QCOMPARE(gDev->smpData->sampleCount(), std::int64_t(1234));
}

void TstMainWindowMenus::anotherModelMayBeChosenWhileDataAreShown()
{
    setUp(8);
    capture();
    QTRY_VERIFY(m_gen->ratioSasPix() > 0);
    QTest::keyClick(m_window.get(), Qt::Key_1); // with a marker on its way
    chooseModel(1);
    QCOMPARE(gDev->model, 6);
    QCOMPARE(gDev->smpData->sampleCount(), std::int64_t(0));
    QVERIFY(!m_window->grab().isNull());
    capture(5000);
    QCOMPARE(gDev->smpData->sampleCount(), std::int64_t(5000));
}

void TstMainWindowMenus::anotherModelMayBeChosenWhileACaptureRuns()
{
    setUp(97); // no dialog stands in the way of the menu
    gDev->setSmpFrequIndex(gDev->smpFrequs.size() - 1);
    QTest::mouseClick(m_window->findChild<SmpCtrl *>()->btnSingle, Qt::LeftButton);
    QVERIFY(gDev->isCapturing());
    chooseModel(2);
    QCOMPARE(gDev->model, 7);
    QVERIFY(!gDev->isCapturing());
    QCoreApplication::processEvents(); // reports of the old one that are still on their way
    QVERIFY(!m_dialog->isVisible());
    gDev->setSmpDepthIndex(0);
    QTest::mouseClick(m_window->findChild<SmpCtrl *>()->btnSingle, Qt::LeftButton);
    QTRY_VERIFY(gDev->smpData->sampleCount() > 0);
    QTRY_VERIFY_WITH_TIMEOUT(!m_dialog->isVisible(), 30000);
}

void TstMainWindowMenus::channelsTakenOutOfUseLeaveTheView()
{
    setUp(5);
    capture();
    inSettings([](ChnMenuDesk menu) {
        menu.click(menu.menu.findChildren<QRadioButton *>().constFirst());
        menu.clickOk();
    });
    QCOMPARE(gDev->chnEnable.count(true), 3);
    int shown = 0;
    for (const ItemChnSidebar *sidebar : m_window->findChildren<ItemChnSidebar *>()) {
        shown += sidebar->isVisible() ? 1 : 0;
    }
    QCOMPARE(shown, 3);
}

void TstMainWindowMenus::aReplacedConfigurationClosesTheMenu()
{
    QFETCH(bool, ofModels);
    setUp(8);
    globalSet(QStringLiteral("devModel"), QStringLiteral("9"));
    QVERIFY(!inMenu(ofModels, [this](MenuDialog &) { m_window->slotReplaceConfig(); }));
    QCOMPARE(gDev->model, 9);
}

// ---- with instruments

void TstMainWindowMenus::anInstrumentOfAnotherModelClosesTheMenu()
{
    QFETCH(bool, ofModels);
    makeDesk(0);
    plugBehindMenu(ofModels, 9);
}

void TstMainWindowMenus::anInstrumentOfTheSameModelClosesTheMenu()
{
    QFETCH(bool, ofModels);
    makeDesk(8);
    const QPointer<DevBase> before = gDev;
    plugBehindMenu(ofModels, 8);
    QCOMPARE(before.data(), gDev);
}

void TstMainWindowMenus::anInstrumentThatLeavesClosesTheMenu()
{
    QFETCH(bool, ofModels);
    connectInstrument(8);
    QVERIFY(!inMenu(ofModels, [this](MenuDialog &) {
        m_desk->bus->unplug();
        QTRY_VERIFY(!gDev->connected);
    }));
    QVERIFY(!gDev->connected);
}

void TstMainWindowMenus::anInstrumentMayLeaveBehindTheBoxOfAnError()
{
    connectInstrument(8);
    int boxes = 0;
    const DialogDriver<QMessageBox> box([&](QMessageBox &) {
        ++boxes;
        m_desk->bus->unplug();
        QTRY_VERIFY(!gDev->connected);
    });
    inSettings([](ChnMenuDesk menu) {
        menu.type(menu.duty(0), QStringLiteral("500"));
        menu.clickOk();
        QVERIFY(!menu.menu.isVisible());
    });
    QCOMPARE(boxes, 1);
    QVERIFY(!gDev->connected);
}

void TstMainWindowMenus::withAnInstrumentNoModelCanBeChosen()
{
    connectInstrument(8);
    chooseModel(4);
    QCOMPARE(gDev->model, 8);
    QVERIFY(gDev->connected);
}

void TstMainWindowMenus::outputsArriveInTheInstrument_data()
{
    QTest::addColumn<int>("model");
    for (const int model : {2, 3, 4, 5, 6, 7, 8, 9, 65, 97}) {
        QTest::addRow("model %d", model) << model;
    }
}

void TstMainWindowMenus::outputsArriveInTheInstrument()
{
    QFETCH(int, model);
    connectInstrument(model);
    inSettings([](ChnMenuDesk menu) {
        menu.type(menu.frequ(0), QStringLiteral("2.5"));
        menu.choose(menu.unit(0), QStringLiteral("MHz"));
        menu.type(menu.duty(0), QStringLiteral("20"));
        menu.type(menu.frequ(1), QStringLiteral("40"));
        menu.choose(menu.unit(1), QStringLiteral("Hz"));
        menu.type(menu.duty(1), QStringLiteral("75"));
        menu.clickOk();
    });
    waitForRequests();
    instrument([](emulator::Instrument &i) {
        const double clock = i.model().pwmClockMhz * 1e6;
        const emulator::Outputs::Pwm &first = i.outputs().pwm(0);
        const emulator::Outputs::Pwm &second = i.outputs().pwm(1);
        QCOMPARE(clock / first.period, 2.5e6);
        QCOMPARE(double(first.high) / first.period, 0.2);
        QCOMPARE(clock / second.period, 40.0);
        QCOMPARE(double(second.high) / second.period, 0.75);
        QVERIFY(first.enabled && second.enabled);
    });
    inSettings([](ChnMenuDesk menu) { // and the menu shows it
        QCOMPARE(menu.frequ(0)->text(), QStringLiteral("2.5"));
        QCOMPARE(menu.unit(0)->currentText(), QStringLiteral("MHz"));
        QCOMPARE(menu.duty(1)->text(), QStringLiteral("75"));
    });
}

void TstMainWindowMenus::anOutputThatIsOffIsOnlySwitchedOff()
{
    connectInstrument(8);
    instrument([](emulator::Instrument &i) { i.log().clear(); });
    inSettings([](ChnMenuDesk menu) {
        menu.checkOutput(0, false);
        menu.type(menu.frequ(1), QStringLiteral("5"));
        menu.clickOk();
    });
    waitForRequests();
    QStringList sent; // register and the first byte
    instrument([&sent](emulator::Instrument &i) {
        for (const emulator::TransferLog::Entry &entry : i.log().entries()) {
            sent += QStringLiteral("%1 %2").arg(entry.setup.value, 0, 16).arg(int(entry.data.at(0)), 0, 16);
        }
        QVERIFY(!i.outputs().pwm(0).enabled && i.outputs().pwm(1).enabled);
    });
    QCOMPARE(sent.size(), 3); // all off, output 1, output 1 on
    QCOMPARE(sent.at(0), QStringLiteral("2 0"));
    QVERIFY(sent.at(1).startsWith(QStringLiteral("78 ")));
    QCOMPARE(sent.at(2), QStringLiteral("2 2"));
    inSettings([](ChnMenuDesk menu) {
        menu.checkOutput(1, false);
        menu.clickOk();
    });
    waitForRequests();
    instrument([](emulator::Instrument &i) {
        const std::size_t told = i.log().entries().size(); // all off, twice unless the second came while it waited
        QVERIFY(told == 4 || told == 5);
        QVERIFY(!i.outputs().pwm(0).enabled && !i.outputs().pwm(1).enabled);
    });
}

LUX_GUI_TEST(TstMainWindowMenus)
#include "tst_MainWindowMenus.moc"
