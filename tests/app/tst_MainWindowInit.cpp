#include "app/AboutLUX.h"
#include "app/WindowDesk.h"
#include "controls/MyButton.h"
#include "device/BringUpDesk.h"
#include "device/DeviceGlobals.h"
#include "panels/SmpCtrl.h"
#include "panels/Toolbar.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTemporaryDir>

/// What the main window shows of instruments that come and go, and what it does for them.
class TstMainWindowInit : public QObject, private WindowDesk {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void theDialogHasItsTitleAndButton();
    void firmwareBeingSentShowsTheDialogWithoutItsButton();
    void theWaitForTheReturnMovesTheBar();
    void aDeviceWithFirmwareShowsTheDialogWhenItIsHidden();
    void identifyingChangesNothing();
    void theFpgaMovesTheBarToNinety();
    void anErrorShowsTheButtonAndItsCode_data();
    void anErrorShowsTheButtonAndItsCode();
    void theButtonClosesTheDialogOfAnError();
    void aBringUpBehindAnErrorStartsAfresh();
    void connectedClosesTheDialogAndTellsTitleStateAndBar();
    void goneTellsTitleStateAndBar();
    void statesBeyondTheLastClearTheStatus();
    void theAnalogModelsButtonsFollowTheConnection();

    void aPluggedInstrumentIsConnectedWithThresholdAndOutputs();
    void anInstrumentThatIsThereAtTheStartIsFound();
    void aPulledInstrumentIsTold();
    void anInstrumentOfTheSameModelKeepsTheCapture();
    void closingTheWindowSwitchesTheInstrumentOff();
    void aSettingsFileKeepsTheInstrumentConnected();
    void aSettingsFileOfAnotherModelLetsGoOfTheInstrument();
    void aSettingsFileForAnInstrumentThatFailsShowsItUnconnected();
    void theAboutDialogTellsTheInstrument();
    void theWindowMayGoAtAnyReport_data();
    void theWindowMayGoAtAnyReport();

private:
    QLabel *label() const { return m_connectDialog->findChild<QLabel *>(); }
    QProgressBar *bar() const { return m_connectDialog->findChild<QProgressBar *>(); }
    QPushButton *button() const { return m_connectDialog->findChild<QPushButton *>(); }
    QLabel *status() const
    {
        for (QLabel *one : m_window->findChildren<QLabel *>(QString(), Qt::FindDirectChildrenOnly)) {
            if (one->accessibleDescription() == QStringLiteral("Device state")) {
                return one;
            }
        }
        return nullptr;
    }
    /// The look of an instrument that is there.
    bool looksConnected() const { return !m_window->findChild<SmpCtrl *>()->btnSingle->useCheckedIcon; }
    void show(int sta, int err = 0, int n = 0) { m_window->slotDevInitStaShow(sta, err, n); }
    /// The window over an instrument that runs its firmware and has been brought up.
    void connectInstrument(int model)
    {
        makeDesk();
        m_desk->add(runningInstrument(model));
        m_desk->bus->plug();
        QTRY_VERIFY_WITH_TIMEOUT(m_desk->hasEnded(), BringUpDesk::longWait);
        QCOMPARE(m_desk->firstError(), (Report{0, 0}));
    }
    /// The window over a bus with nothing on it.
    void makeDesk()
    {
        tearDown();
        m_desk = std::make_unique<BringUpDesk>(0, BringUpDesk::WithWindow);
        makeWindow(*m_desk->session);
    }
    template<class Job>
    auto instrument(const Job &job)
    {
        return m_desk->bus->with(0, job);
    }

    std::unique_ptr<BringUpDesk> m_desk;
};

void TstMainWindowInit::init()
{
    setUp();
}

void TstMainWindowInit::cleanup()
{
    m_window.reset();
    m_desk.reset();
    tearDown();
}

// ---- the dialog

void TstMainWindowInit::theDialogHasItsTitleAndButton()
{
    QCOMPARE(m_connectDialog->windowTitle(), QStringLiteral("Device connect"));
    QCOMPARE(button()->text(), QStringLiteral("Close"));
    QVERIFY(m_connectDialog->isModal());
    QVERIFY(!m_connectDialog->isVisible());
}

void TstMainWindowInit::firmwareBeingSentShowsTheDialogWithoutItsButton()
{
    show(0);
    QVERIFY(m_connectDialog->isVisible());
    QVERIFY(!button()->isVisible());
    QCOMPARE(bar()->value(), 10);
    QCOMPARE(label()->text(), QStringLiteral("Device connecting, please wait..."));
    QTest::keyClick(m_connectDialog, Qt::Key_Escape);
    QVERIFY(m_connectDialog->isVisible());
}

void TstMainWindowInit::theWaitForTheReturnMovesTheBar()
{
    show(0);
    show(1, 0, 0);
    QCOMPARE(bar()->value(), 10);
    show(1, 0, 1800);
    QCOMPARE(bar()->value(), 40);
    show(1, 0, 10000);
    QCOMPARE(bar()->value(), 70);
    QCOMPARE(label()->text(), QStringLiteral("Device connecting, please wait..."));
}

void TstMainWindowInit::aDeviceWithFirmwareShowsTheDialogWhenItIsHidden()
{
    show(2);
    QVERIFY(m_connectDialog->isVisible());
    QVERIFY(!button()->isVisible());
    QCOMPARE(bar()->value(), 70);
    QCOMPARE(label()->text(), QStringLiteral("Device connecting, please wait..."));
}

void TstMainWindowInit::identifyingChangesNothing()
{
    show(0);
    show(3);
    QCOMPARE(bar()->value(), 10);
    QCOMPARE(label()->text(), QStringLiteral("Device connecting, please wait..."));
}

void TstMainWindowInit::theFpgaMovesTheBarToNinety()
{
    show(2);
    show(4, 0, 50);
    QCOMPARE(bar()->value(), 80);
    show(4, 0, 100);
    QCOMPARE(bar()->value(), 90);
    show(5);
    QCOMPARE(bar()->value(), 90);
    QVERIFY(m_connectDialog->isVisible());
}

void TstMainWindowInit::anErrorShowsTheButtonAndItsCode_data()
{
    QTest::addColumn<int>("sta");
    QTest::addColumn<int>("err");
    QTest::addColumn<QString>("text");
    QTest::newRow("no firmware") << 0 << 1 << QStringLiteral("An error occurred: I-1");
    QTest::newRow("did not return") << 1 << 5 << QStringLiteral("An error occurred: I-105");
    QTest::newRow("EEPROM") << 3 << 2 << QStringLiteral("An error occurred: I-302");
    QTest::newRow("FPGA status") << 4 << 9 << QStringLiteral("An error occurred: I-409");
    QTest::newRow("not ready") << 5 << 12 << QStringLiteral("An error occurred: I-50c");
    QTest::newRow("in the state of connection") << 6 << 1 << QStringLiteral("An error occurred: I-601");
}

void TstMainWindowInit::anErrorShowsTheButtonAndItsCode()
{
    QFETCH(int, sta);
    QFETCH(int, err);
    QFETCH(QString, text);
    show(2);
    show(sta, err, 50);
    QVERIFY(button()->isVisible());
    QCOMPARE(label()->text(), text);
    QCOMPARE(bar()->value(), 70);
    QCOMPARE(status()->text(), QStringLiteral("Device unconnected"));
}

void TstMainWindowInit::theButtonClosesTheDialogOfAnError()
{
    show(0);
    show(0, 1);
    QCOMPARE(m_connectDialog->focusWidget(), button());
    QTest::keyClick(button(), Qt::Key_Space);
    QVERIFY(!m_connectDialog->isVisible());
}

void TstMainWindowInit::aBringUpBehindAnErrorStartsAfresh()
{
    show(0);
    show(1, 5);
    show(2);
    QVERIFY(!button()->isVisible());
    QCOMPARE(label()->text(), QStringLiteral("Device connecting, please wait..."));
}

void TstMainWindowInit::connectedClosesTheDialogAndTellsTitleStateAndBar()
{
    QVERIFY(!looksConnected());
    show(2);
    show(6);
    QVERIFY(!m_connectDialog->isVisible());
    QCOMPARE(m_window->windowTitle(), QStringLiteral("RV2520 Connected - CorvanLUX"));
    QCOMPARE(status()->text(), QStringLiteral("Device connected"));
    QVERIFY(looksConnected());
}

void TstMainWindowInit::goneTellsTitleStateAndBar()
{
    show(6);
    show(7);
    QCOMPARE(m_window->windowTitle(), QStringLiteral("RV2520 Unconnected - CorvanLUX"));
    QCOMPARE(status()->text(), QStringLiteral("Device unconnected"));
    QVERIFY(!looksConnected());
    QVERIFY(!m_connectDialog->isVisible());
}

void TstMainWindowInit::statesBeyondTheLastClearTheStatus()
{
    for (const int sta : {8, 9, 100}) {
        show(6);
        show(sta);
        QCOMPARE(status()->text(), QString());
        QCOMPARE(m_window->windowTitle(), QStringLiteral("RV2520 Connected - CorvanLUX"));
    }
}

void TstMainWindowInit::theAnalogModelsButtonsFollowTheConnection()
{
    m_window->slotDevPreConnect(97);
    const auto *ctrl = m_window->findChild<SmpCtrl *>();
    show(6);
    QVERIFY(!ctrl->btnSingle->useCheckedIcon && !ctrl->btnAuto->useCheckedIcon);
    show(7);
    QVERIFY(ctrl->btnSingle->useCheckedIcon && ctrl->btnAuto->useCheckedIcon);
}

// ---- instruments

void TstMainWindowInit::aPluggedInstrumentIsConnectedWithThresholdAndOutputs()
{
    makeDesk();
    deviceSet(QStringLiteral("RV2540"), QStringLiteral("chnLevel"), QStringLiteral("Custom I/O"));
    deviceSet(QStringLiteral("RV2540"), QStringLiteral("chnVth"), QStringLiteral("0.8"));
    deviceSet(QStringLiteral("RV2540"), QStringLiteral("chnLevel2"), QStringLiteral("5.0V CMOS"));
    m_desk->add(instrumentOf(9));
    QVector<bool> shown; // after each report
    connect(gDevInit, &DevInit::sigInitSta, this, [&] { shown.append(m_connectDialog->isVisible()); });
    m_desk->bus->plug();
    QTRY_VERIFY_WITH_TIMEOUT(m_desk->hasEnded(), BringUpDesk::longWait);
    QVERIFY(!shown.takeLast());
    QVERIFY(shown.size() > 5 && !shown.contains(false));
    QCOMPARE(m_desk->firstError(), (Report{0, 0}));
    QCOMPARE(gDev->model, 9);
    QCOMPARE(globalGet(QStringLiteral("devModel")), QStringLiteral("9"));
    QVERIFY(!m_connectDialog->isVisible());
    QCOMPARE(m_window->windowTitle(), QStringLiteral("RV2540 Connected - CorvanLUX"));
    QCOMPARE(status()->text(), QStringLiteral("Device connected"));
    QVERIFY(looksConnected());
    instrument([](emulator::Instrument &i) {
        const emulator::Outputs &outputs = i.outputs();
        QVERIFY(std::abs(outputs.threshold(0).volts() - 0.8) < 0.01);
        QVERIFY(std::abs(outputs.threshold(1).volts() - 2.5) < 0.01);
        QVERIFY(outputs.pwm(0).enabled && outputs.pwm(1).enabled);
    });
}

void TstMainWindowInit::anInstrumentThatIsThereAtTheStartIsFound()
{
    tearDown();
    m_desk = std::make_unique<BringUpDesk>(0, BringUpDesk::WithWindow);
    m_desk->add(runningInstrument(3));
    m_desk->bus->plug();
    QVERIFY(m_desk->reports.isEmpty());
    makeWindow(*m_desk->session);
    QTRY_VERIFY_WITH_TIMEOUT(m_desk->has(6), BringUpDesk::longWait);
    QCOMPARE(m_desk->reports.first(), (Report{2, 0, 0}));
    QCOMPARE(gDev->model, 3);
}

void TstMainWindowInit::aPulledInstrumentIsTold()
{
    connectInstrument(8);
    QVERIFY(looksConnected());
    m_desk->bus->unplug();
    QTRY_COMPARE_WITH_TIMEOUT(status()->text(), QStringLiteral("Device unconnected"), BringUpDesk::longWait);
    QCOMPARE(m_window->windowTitle(), QStringLiteral("RV2520 Unconnected - CorvanLUX"));
    QVERIFY(!looksConnected());
}

void TstMainWindowInit::anInstrumentOfTheSameModelKeepsTheCapture()
{
    connectInstrument(8);
    capture(1234);
    m_desk->bus->unplug();
    QTRY_VERIFY_WITH_TIMEOUT(!gDev->connected, BringUpDesk::longWait);
    QCOMPARE(gDev->smpData->sampleCount(), std::int64_t(1234));
    m_desk->bus->plug();
    QTRY_VERIFY_WITH_TIMEOUT(gDev->connected, BringUpDesk::longWait);
    QCOMPARE(gDev->smpData->sampleCount(), std::int64_t(1234));
}

void TstMainWindowInit::closingTheWindowSwitchesTheInstrumentOff()
{
    connectInstrument(8);
    QVERIFY(instrument([](emulator::Instrument &i) { return i.fpga().enabled(); }));
    m_window->close();
    QTRY_VERIFY(!instrument([](emulator::Instrument &i) { return i.fpga().enabled(); }));
    instrument([](emulator::Instrument &i) {
        const emulator::SetupPacket last = i.log().entries().back().setup;
        QCOMPARE(int(last.request), 0x10);
        QCOMPARE(int(last.value), 0);
    });
}

void TstMainWindowInit::aSettingsFileKeepsTheInstrumentConnected()
{
    connectInstrument(8);
    const DevBase *const before = gDev;
    deviceSet(QStringLiteral("RV2520"), QStringLiteral("chnLevel"), QStringLiteral("Custom I/O"));
    deviceSet(QStringLiteral("RV2520"), QStringLiteral("chnVth"), QStringLiteral("1.2"));
    m_window->slotReplaceConfig();
    QVERIFY(gDev != before || gDev->smpData->sampleCount() == 0);
    QVERIFY(gDev->connected);
    QCOMPARE(gDev->model, 8);
    QCOMPARE(gDev->clockFrequ, std::int64_t(1000000000));
    QCOMPARE(gDev->devUid.toHex(), QByteArray("1032547698badcfe"));
    QCOMPARE(m_window->windowTitle(), QStringLiteral("RV2520 Connected - CorvanLUX"));
    QCOMPARE(status()->text(), QStringLiteral("Device connected"));
    QVERIFY(looksConnected());
    QTRY_VERIFY(instrument([](emulator::Instrument &i) { return i.outputs().threshold(0).volts(); }) < 1.21);
    QTRY_VERIFY(instrument([](emulator::Instrument &i) { return i.outputs().pwm(0).enabled; }));
    m_desk->bus->unplug();
    QTRY_VERIFY_WITH_TIMEOUT(!gDev->connected, BringUpDesk::longWait);
}

void TstMainWindowInit::aSettingsFileOfAnotherModelLetsGoOfTheInstrument()
{
    connectInstrument(8);
    globalSet(QStringLiteral("devModel"), QStringLiteral("9"));
    m_window->slotReplaceConfig();
    QCOMPARE(gDev->model, 9);
    QVERIFY(!gDev->connected);
    QCOMPARE(m_window->windowTitle(), QStringLiteral("RV2540 Unconnected - CorvanLUX"));
    QCOMPARE(status()->text(), QStringLiteral("Device unconnected"));
    QVERIFY(!looksConnected());
}

void TstMainWindowInit::aSettingsFileForAnInstrumentThatFailsShowsItUnconnected()
{
    connectInstrument(8);
    instrument([](emulator::Instrument &i) { i.faults().setStatus(0); });
    m_window->slotReplaceConfig();
    QTRY_VERIFY(!gDev->connected);
    QCOMPARE(status()->text(), QStringLiteral("Device unconnected"));
    QVERIFY(!looksConnected());
    QCOMPARE(label()->text(), QStringLiteral("An error occurred: I-508"));
    QVERIFY(m_connectDialog->isVisible() && button()->isVisible());
}

void TstMainWindowInit::theAboutDialogTellsTheInstrument()
{
    connectInstrument(8);
    const SystemInfo info = systemInfoNow();
    QCOMPARE(int(info.bcdUsb), 0x0200);
    QVERIFY(systemInfoText(info).contains(QStringLiteral("Device ID: 1032547698badcfe0102")));
    m_desk->bus->unplug();
    QTRY_VERIFY_WITH_TIMEOUT(!gDev->connected, BringUpDesk::longWait);
    QVERIFY(systemInfoText(systemInfoNow()).contains(QStringLiteral("Device ID: 00000000000000000000")));
}

void TstMainWindowInit::theWindowMayGoAtAnyReport_data()
{
    QTest::addColumn<int>("sta");
    for (int sta = 0; sta <= 6; ++sta) {
        if (sta != 3) {
            QTest::addRow("report %d", sta) << sta;
        }
    }
}

void TstMainWindowInit::theWindowMayGoAtAnyReport()
{
    QFETCH(int, sta);
    constexpr int finishing = 2;
    makeDesk();
    m_desk->add(instrumentOf(2));
    if (sta < finishing) {
        // The return of a device ends the reports of its first stage, those too that are still on their way.
        m_desk->bus->with([](emulator::Instrument &i) { i.faults().neverReturn(); });
    }
    m_desk->bus->plug();
    // As at the end of the program: the window goes, the rest while the thread may be at any step.
    QTRY_VERIFY_WITH_TIMEOUT(m_desk->has(sta), BringUpDesk::longWait);
    m_window->close();
    m_window.reset();
    m_desk.reset();
    QVERIFY(gDev == nullptr);
}

LUX_GUI_TEST(TstMainWindowInit)
#include "tst_MainWindowInit.moc"
