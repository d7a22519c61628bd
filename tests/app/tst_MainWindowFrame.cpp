#include "app/MainMenu.h"
#include "app/WindowDesk.h"
#include "controls/MyButton.h"
#include "device/DeviceGlobals.h"
#include "panels/DevSetting.h"
#include "panels/SmpCtrl.h"
#include "panels/Toolbar.h"
#include "settings/Globals.h"
#include "wave/MainView.h"
#include "wave/PosiView.h"
#include "wave/TimeView.h"

#include <QAccessible>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QScrollArea>
#include <QShortcut>
#include <QWheelEvent>

/// The window itself: its place, its panels' places, its title and state line, and the device behind it.
class TstMainWindowFrame : public QObject, private WindowDesk {
    Q_OBJECT
private slots:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void thePanelsStandInTheirPlacesOfTheGrid();
    void theWindowIsNeverSmallerThanItsPanelsNeed();
    void aBarWiderThanTheWindowFollowsWheelAndFocus();
    void theStartKeyIsPressedOnceHoweverLongItIsHeld();
    void noCaptureBeginsWhileAFileIsReadOrWritten();
    void theStateLineTellsWhetherAFileIsInView();
    void aMaximisedWindowKeepsItsPositionForLater();
    void theTitleNamesTheModelAndTheState();
    void aFileInViewIsForgottenWhenACaptureStarts();
    void withoutAFileTheTitleStaysWhenACaptureStarts();
    void theDeviceStateIsReadToThoseWhoCannotSeeIt();
    void replacingTheModelRebindsAndSavesIt();
    void theSameModelIsNotReplaced();
    void closingSavesGeometryAndRatio();

private:
    QLabel *stateLine() const
    {
        const QList<QLabel *> own = m_window->findChildren<QLabel *>(QString(), Qt::FindDirectChildrenOnly);
        return own.size() == 1 ? own.constFirst() : nullptr;
    }
};

void TstMainWindowFrame::thePanelsStandInTheirPlacesOfTheGrid()
{
    const auto *grid = qobject_cast<QGridLayout *>(m_window->layout());
    QVERIFY(grid != nullptr);
    const auto cells = [&](QWidget *widget) {
        int row = -1;
        int column = -1;
        int rows = 0;
        int columns = 0;
        grid->getItemPosition(grid->indexOf(widget), &row, &column, &rows, &columns);
        return QRect(column, row, columns, rows);
    };
    QCOMPARE(cells(m_window->findChild<QScrollArea *>()), QRect(0, 0, 3, 1));
    QCOMPARE(cells(m_window->findChild<MainMenu *>()), QRect(3, 0, 1, 1));
    QVERIFY(m_window->findChild<MainMenu *>()->isVisible());
    QCOMPARE(cells(m_window->findChild<DevSetting *>()), QRect(0, 1, 1, 1));
    QCOMPARE(cells(m_window->findChild<TimeView *>()), QRect(1, 1, 1, 1));
    QCOMPARE(cells(m_window->findChild<MainView *>()), QRect(0, 2, 2, 1));
    QCOMPARE(cells(stateLine()), QRect(0, 3, 1, 1));
    QCOMPARE(cells(m_window->findChild<PosiView *>()), QRect(1, 3, 1, 1));
    QCOMPARE(grid->rowStretch(2), 1);
    QCOMPARE(grid->columnStretch(1), 1);
    QCOMPARE(grid->contentsMargins(), QMargins(2, 0, 2, 2));
}

void TstMainWindowFrame::theWindowIsNeverSmallerThanItsPanelsNeed()
{
    QCOMPARE(m_window->minimumSize(), QSize(800, 240));
    QCOMPARE(m_window->findChild<QScrollArea *>()->height(), 48);
    QCOMPARE(stateLine()->height(), 20);
    QCOMPARE(stateLine()->styleSheet(),
             QStringLiteral("background-color:#2f2f2f;border:1px solid #7f7f7f;color:#f7f7f7;"));
}

void TstMainWindowFrame::aBarWiderThanTheWindowFollowsWheelAndFocus()
{
    m_window->slotDevPreConnect(9); // with two rows of thresholds
    m_window->resize(m_window->minimumSize());
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    QCoreApplication::processEvents();
    QWidget *bar = m_window->findChild<Toolbar *>();
    QWidget *port = bar->parentWidget();
    const int beyond = bar->width() - port->width();
    QVERIFY(beyond > 0);
    const auto turn = [port](int angle) {
        const QPointF at(port->width() / 2.0, port->height() / 2.0);
        QWheelEvent event(at, port->mapToGlobal(at.toPoint()), QPoint(), QPoint(0, angle), Qt::NoButton, Qt::NoModifier,
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(port, &event);
    };
    for (int i = 0; i < 10; ++i) {
        turn(-120);
    }
    QCOMPARE(bar->x(), -beyond);
    for (int i = 0; i < 10; ++i) {
        turn(120);
    }
    QCOMPARE(bar->x(), 0);
    auto *last = bar->findChild<QLineEdit *>(QStringLiteral("zoomEdit"));
    last->setFocus();
    QVERIFY(port->rect().contains(QRect(last->mapTo(port, QPoint()), last->size())));
}

void TstMainWindowFrame::theStartKeyIsPressedOnceHoweverLongItIsHeld()
{
    for (const auto *shortcut : m_window->findChildren<QShortcut *>()) {
        const int key = shortcut->key()[0] & ~int(Qt::KeyboardModifierMask);
        // Held down they go on: the view and the markers.
        const bool isUpOrDown = key == Qt::Key_Up || key == Qt::Key_Down;
        const bool moves = key == Qt::Key_Left || key == Qt::Key_Right || (isUpOrDown && key != shortcut->key()[0]);
        QCOMPARE(shortcut->autoRepeat(), moves);
    }
    gDev->setSmpDepthIndex(0);
    QTest::keyClick(m_window.get(), Qt::Key_F5);
    QVERIFY(gDev->isCapturing());
    QTRY_COMPARE(gDev->smpData->sampleCount(), 20000);
}

void TstMainWindowFrame::noCaptureBeginsWhileAFileIsReadOrWritten()
{
    gDev->setSmpDepthIndex(0);
    {
        const Session::FileJob job(*m_session);
        QTest::keyClick(m_window.get(), Qt::Key_F5);
        QVERIFY(!gDev->isCapturing());
        QTest::mouseClick(m_window->findChild<SmpCtrl *>()->btnSingle, Qt::LeftButton);
        QVERIFY(!gDev->isCapturing());
    }
    QTest::mouseClick(m_window->findChild<SmpCtrl *>()->btnSingle, Qt::LeftButton);
    QVERIFY(gDev->isCapturing());
    QTRY_COMPARE(gDev->smpData->sampleCount(), 20000);
}

void TstMainWindowFrame::theStateLineTellsWhetherAFileIsInView()
{
    QCOMPARE(stateLine()->text(), QStringLiteral("Device unconnected"));
    gOpenFile = QStringLiteral("/somewhere/a.cxdat");
    m_window->slotReplaceConfig();
    QCOMPARE(stateLine()->text(), QStringLiteral("Data review"));
    gDev->connected = true;
    emit m_window->findChild<MainMenu *>()->openFileGone();
    QCOMPARE(stateLine()->text(), QStringLiteral("Device connected"));
    QCOMPARE(m_window->windowTitle(), QStringLiteral("/somewhere/a.cxdat - CorvanLUX"));
    gDev->connected = false;
}

void TstMainWindowFrame::aMaximisedWindowKeepsItsPositionForLater()
{
    const QString position = QStringLiteral("30,40,700,500");
    globalSet(QStringLiteral("windowPosition"), position);
    globalSet(QStringLiteral("windowMaximized"), QStringLiteral("1"));
    m_window = std::make_unique<MainWindow>(*m_session);
    m_window->show();
    QVERIFY(m_window->isMaximized());
    m_window->close();
    QCOMPARE(globalGet(QStringLiteral("windowPosition")), position);
    QCOMPARE(globalGet(QStringLiteral("windowMaximized")), QStringLiteral("1"));
}

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
    QCOMPARE(stateLine()->text(), QStringLiteral("Device unconnected"));
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
    const QAccessibleInterface *line = QAccessible::queryAccessibleInterface(stateLine());
    QCOMPARE(line->text(QAccessible::Name), QStringLiteral("Device unconnected"));
    QCOMPARE(line->text(QAccessible::Description), QStringLiteral("Device state"));
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
    QVERIFY(gDev->smpData->complete());
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
