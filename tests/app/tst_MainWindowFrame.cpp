#include "app/WindowDesk.h"

#include <QAccessible>
#include <QLabel>

/// The window itself: its place, its panels' places, its title and state line, and the device behind it.
class TstMainWindowFrame : public QObject, private WindowDesk {
    Q_OBJECT
private slots:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void theTitleNamesTheModelAndTheState();
    void aFileInViewIsForgottenWhenACaptureStarts();
    void withoutAFileTheTitleStaysWhenACaptureStarts();
    void theDeviceStateIsReadToThoseWhoCannotSeeIt();
    void replacingTheModelRebindsAndSavesIt();
    void theSameModelIsNotReplaced();
    void closingSavesGeometryAndRatio();
};

void TstMainWindowFrame::theTitleNamesTheModelAndTheState()
{
    QCOMPARE(m_window->windowTitle(), QStringLiteral("RV2520 Unconnected - CorvanLUX"));
    m_window->slotDevPreConnect(9);
    QCOMPARE(m_window->windowTitle(), QStringLiteral("RV2540 Unconnected - CorvanLUX"));
}

void TstMainWindowFrame::aFileInViewIsForgottenWhenACaptureStarts()
{
    gOpenFile = QStringLiteral("/somewhere/a.cxdat");
    m_window->slotReplaceConfig();
    QCOMPARE(m_window->windowTitle(), QStringLiteral("/somewhere/a.cxdat - CorvanLUX"));
    emit gDev->sigSmpSta(0, 0, 0);
    QVERIFY(gOpenFile.isEmpty());
    QCOMPARE(m_window->windowTitle(), QStringLiteral("RV2520 Unconnected - CorvanLUX"));
}

void TstMainWindowFrame::withoutAFileTheTitleStaysWhenACaptureStarts()
{
    m_window->setWindowTitle(QStringLiteral("as it was"));
    emit gDev->sigSmpSta(0, 0, 0);
    QCOMPARE(m_window->windowTitle(), QStringLiteral("as it was"));
}

void TstMainWindowFrame::theDeviceStateIsReadToThoseWhoCannotSeeIt()
{
    QStringList read;
    for (QLabel *label : m_window->findChildren<QLabel *>()) {
        read += QAccessible::queryAccessibleInterface(label)->text(QAccessible::Name);
    }
    QVERIFY(read.contains(QStringLiteral("Device unconnected")));
}

void TstMainWindowFrame::replacingTheModelRebindsAndSavesIt()
{
    m_window->slotDevPreConnect(1);
    QCOMPARE(gDev->model, 1);
    QCOMPARE(globalGet(QStringLiteral("devModel")), QStringLiteral("1"));
    capture();
    QCOMPARE(m_gen->digLine(7).empty(), false);
    QCOMPARE(m_gen->digLine(8).empty(), true);
}

void TstMainWindowFrame::theSameModelIsNotReplaced()
{
    capture();
    const DevBase *before = gDev;
    m_window->slotDevPreConnect(0);
    QCOMPARE(gDev, before);
    QVERIFY(gDev->smpData->complete);
}

void TstMainWindowFrame::closingSavesGeometryAndRatio()
{
    capture();
    m_gen->zoomSetRatio(12.345678);
    m_window->setGeometry(30, 40, 900, 500);
    m_window->close();
    QCOMPARE(globalGet(QStringLiteral("windowPosition")), QStringLiteral("30,40,900,500"));
    QCOMPARE(globalGet(QStringLiteral("windowMaximized")), QStringLiteral("0"));
    QCOMPARE(globalGet(QStringLiteral("ratioSasPix")), QStringLiteral("12.3457"));
}

LUX_GUI_TEST(TstMainWindowFrame)
#include "tst_MainWindowFrame.moc"
