#include "app/WindowDesk.h"
#include "device/DeviceGlobals.h"
#include "panels/SmpCtrl.h"
#include "panels/Toolbar.h"
#include "settings/Globals.h"
#include "support/BoxCloser.h"
#include "wave/MainView.h"
#include "wave/PosiView.h"

#include <QImage>
#include <QLabel>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>

#include <thread>

/// What the main window does with the reports of a capture and the moves of its panels.
class TstMainWindow : public QObject, private WindowDesk {
    Q_OBJECT
private slots:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void aReportOfNothingShowsOnePercent();
    void aReportBeyondTheEndShowsNinetyNine();
    void theDialogFollowsTheStatesOfACapture();
    void theStopButtonOnlyAsksWhileSampling();
    void afterAnErrorTheButtonClosesTheDialog();
    void anErrorCodeStandsInTheDialogWithStateAndError();
    void aCaptureThatDoesNotEvenStartOpensTheDialogWithItsCode();
    void aStreamThatCannotKeepUpClosesTheDialogAndShowsABox();
    void onlyTheAnalogModelsCodeBoxHasATail();
    void theAnalogModelShowsItsProgressInTheBarAlone();
    void theNoteOfAMalformedRecordIsOnlySaved();
    void reportsOfAReplacedDeviceAreDropped();
    void zoomTextsReachTheGenerator();
    void dragMovesTheViewByWholeColumns();
    void thePositionBarMovesTheViewWithinTheCapture();
    void thePositionBarFollowsTheWidthOfTheWindow();
    void mouseZoomIsIgnoredWithoutData();
    void aCaptureOfNoSamplesEmptiesTheView();
    void shiftIsPassedToTheView();

private:
    QLabel *dialogLabel() const { return m_dialog->findChild<QLabel *>(); }
    QProgressBar *dialogBar() const { return m_dialog->findChild<QProgressBar *>(); }
    QPushButton *dialogButton() const { return m_dialog->findChild<QPushButton *>(); }
};

void TstMainWindow::aReportOfNothingShowsOnePercent()
{
    emit gDev->sigSmpSta(0, 0, 0);
    emit gDev->sigSmpSta(1, 0, 0);
    QCOMPARE(dialogBar()->value(), 1);
    QCOMPARE(dialogLabel()->text(), QStringLiteral("Pre-sampling..."));
}

void TstMainWindow::aReportBeyondTheEndShowsNinetyNine()
{
    emit gDev->sigSmpSta(0, 0, 0);
    emit gDev->sigSmpSta(3, 0, 120);
    QCOMPARE(dialogBar()->value(), 99);
    QVERIFY(m_dialog->isVisible());
}

void TstMainWindow::theDialogFollowsTheStatesOfACapture()
{
    QVERIFY(!m_dialog->isVisible());
    emit gDev->sigSmpSta(0, 0, 0);
    QVERIFY(m_dialog->isVisible());
    QVERIFY(dialogButton()->isVisible());
    QCOMPARE(m_dialog->windowTitle(), QStringLiteral("Sampling"));
    QCOMPARE(dialogButton()->text(), QStringLiteral("Stop"));
    emit gDev->sigSmpSta(7, 0, 50);
    QCOMPARE(dialogLabel()->text(), QStringLiteral("Sample start..."));
    emit gDev->sigSmpSta(2, 0, 5);
    QCOMPARE(dialogLabel()->text(), QStringLiteral("Waiting for trigger..."));
    QCOMPARE(dialogBar()->value(), 5);
    emit gDev->sigSmpSta(4, 0, 60);
    QVERIFY(!dialogButton()->isVisible());
    emit gDev->sigSmpSta(5, 0, 0);
    QVERIFY(!m_dialog->isVisible());
}

void TstMainWindow::theStopButtonOnlyAsksWhileSampling()
{
    emit gDev->sigSmpSta(0, 0, 0);
    QTest::mouseClick(dialogButton(), Qt::LeftButton);
    QVERIFY(gDev->smpStop);
    QVERIFY(m_dialog->isVisible());
}

void TstMainWindow::afterAnErrorTheButtonClosesTheDialog()
{
    emit gDev->sigSmpSta(0, 0, 0);
    emit gDev->sigSmpSta(4, 4, 0);
    QCOMPARE(dialogLabel()->text(), QStringLiteral("Out of memory, Sample abort."));
    QVERIFY(dialogButton()->isVisible());
    QTest::mouseClick(dialogButton(), Qt::LeftButton);
    QVERIFY(!m_dialog->isVisible());
}

void TstMainWindow::anErrorCodeStandsInTheDialogWithStateAndError()
{
    emit gDev->sigSmpSta(0, 0, 0);
    emit gDev->sigSmpSta(2, 14, 0);
    QCOMPARE(dialogLabel()->text(), QStringLiteral("An error occurred: S-20e"));
}

void TstMainWindow::aCaptureThatDoesNotEvenStartOpensTheDialogWithItsCode()
{
    emit gDev->sigSmpSta(0, 2, 0);
    QVERIFY(m_dialog->isVisible());
    QCOMPARE(dialogLabel()->text(), QStringLiteral("An error occurred: S-2"));
    QTest::mouseClick(dialogButton(), Qt::LeftButton);
    QVERIFY(!m_dialog->isVisible());
}

void TstMainWindow::aStreamThatCannotKeepUpClosesTheDialogAndShowsABox()
{
    m_window->slotDevPreConnect(5);
    BoxCloser closer;
    emit gDev->sigSmpSta(0, 0, 0);
    emit gDev->sigSmpSta(3, 14, 0);
    QCOMPARE(closer.seen.count, 1);
    QCOMPARE(closer.seen.title, QStringLiteral("An error occurred"));
    QCOMPARE(closer.seen.text,
             QStringLiteral("Cannot keep up with this sample rate.\r\nPlease try to reduce the sample rate."));
    QVERIFY(!m_dialog->isVisible());
}

void TstMainWindow::onlyTheAnalogModelsCodeBoxHasATail()
{
    m_window->slotDevPreConnect(97);
    BoxCloser closer;
    emit gDev->sigSmpSta(2, 14, 0);
    QCOMPARE(closer.seen.text, QStringLiteral("S-20e.                 "));
    emit gDev->sigSmpSta(4, 4, 0);
    QCOMPARE(closer.seen.text, QStringLiteral("Out of memory, Sample abort."));
    QVERIFY(!m_dialog->isVisible());
}

void TstMainWindow::theAnalogModelShowsItsProgressInTheBarAlone()
{
    m_window->slotDevPreConnect(97);
    QCoreApplication::processEvents(); // the bar's new groups are shown
    QProgressBar *bar = m_window->findChild<Toolbar *>()->smpCtrl->smpBar;
    const auto start = [&] {
        bar->setValue(50);
        bar->show();
        emit gDev->sigSmpSta(0, 0, 0);
    };
    start();
    QCOMPARE(bar->value(), 50);
    emit gDev->sigSmpSta(1, 0, 0);
    QCOMPARE(bar->value(), 1);
    emit gDev->sigSmpSta(3, 0, 120);
    QCOMPARE(bar->value(), 99);
    QVERIFY(bar->isVisible());
    emit gDev->sigSmpSta(5, 0, 100);
    QVERIFY(!bar->isVisible());

    start();
    BoxCloser closer;
    emit gDev->sigSmpSta(3, 1, 0);
    QVERIFY(!bar->isVisible());
    QCOMPARE(closer.seen.count, 1);
    QVERIFY(!m_dialog->isVisible());
}

void TstMainWindow::theNoteOfAMalformedRecordIsOnlySaved()
{
    BoxCloser closer;
    emit gDev->sigSmpSta(4, 32, 4711); // the store belongs to the next capture's writer by then
    QCOMPARE(globalGet(QStringLiteral("zeroSmpCnt")), QStringLiteral("4711"));
    QCOMPARE(closer.seen.count, 0);
    QVERIFY(!m_dialog->isVisible());
}

void TstMainWindow::reportsOfAReplacedDeviceAreDropped()
{
    // From another thread, as those of a capture: they are on their way to the window when the device goes away.
    std::thread([] {
        emit gDev->sigSmpSta(0, 0, 0);
        emit gDev->sigSmpDataReady();
    }).join();
    const QPointer<DevBase> old(gDev);
    m_window->slotDevPreConnect(9);
    QVERIFY(old.isNull());
    CaptureBuilder{100000}.fill(*gDev->smpData);
    QCoreApplication::processEvents();
    QVERIFY(!m_dialog->isVisible());
    QVERIFY(m_gen->digLine(0).empty());

    std::thread([] { emit gDev->sigSmpSta(0, 0, 0); }).join();
    QCoreApplication::processEvents();
    QVERIFY(m_dialog->isVisible());
}

void TstMainWindow::zoomTextsReachTheGenerator()
{
    capture();
    m_window->slotToolbarZoomChanged(QStringLiteral("All"));
    QCOMPARE(m_gen->ratioSasPix(), 100000.0 / m_gen->viewWidth());
    m_window->slotToolbarZoomChanged(QStringLiteral("Trg"));
    QCOMPARE(m_gen->ratioSasPix(), 1.0);
    m_window->slotToolbarZoomChanged(QStringLiteral("Out"));
    QCOMPARE(m_gen->ratioSasPix(), 1.1);
    m_window->slotToolbarZoomChanged(QStringLiteral("In"));
    QVERIFY(qAbs(m_gen->ratioSasPix() - 0.99) < 1e-9);
    m_window->slotToolbarZoomChanged(QStringLiteral("7.5"));
    QCOMPARE(m_gen->ratioSasPix(), 7.5);
    m_window->slotToolbarZoomChanged(QStringLiteral("no number"));
    QCOMPARE(m_gen->ratioSasPix(), 100000.0 / m_gen->viewWidth());
}

void TstMainWindow::dragMovesTheViewByWholeColumns()
{
    capture();
    m_gen->zoomSetRatio(10.0);
    m_gen->setViewStart(20000.0);
    m_window->slotMouseDraged(25);
    QCOMPARE(m_gen->viewStart(), 20000.0 - 250.0);
}

void TstMainWindow::thePositionBarMovesTheViewWithinTheCapture()
{
    capture();
    m_gen->zoomSetRatio(10.0);
    m_window->slotPosiViewChanged(0.25);
    QCOMPARE(m_gen->viewStart(), 25000.0);
    m_window->slotPosiViewChanged(-0.25);
    QCOMPARE(m_gen->viewStart(), 0.0);
    m_window->slotPosiViewChanged(1.0);
    QCOMPARE(m_gen->viewStart(), 100000.0 - m_gen->viewWidth() * 10.0);
}

void TstMainWindow::thePositionBarFollowsTheWidthOfTheWindow()
{
    capture();
    m_gen->zoomFit();
    auto *bar = m_window->findChild<PosiView *>();
    QCOMPARE(bar->maximum(), 0);
    const int before = m_gen->viewWidth();
    m_window->resize(900, 700);
    QCOMPARE(m_gen->viewWidth(), before - 300);
    QCOMPARE(bar->pageStep(), int(10000.0 * (before - 300) / before));
    QCOMPARE(bar->maximum(), 10000 - bar->pageStep());
}

void TstMainWindow::mouseZoomIsIgnoredWithoutData()
{
    disAnimateZoom = true;
    m_window->slotMouseZoomChanged(2, QPoint(100, 10));
    QCOMPARE(m_gen->ratioSasPix(), 0.0);
    capture();
    m_gen->zoomSetRatio(8.0);
    m_window->slotMouseZoomChanged(1, QPoint(100, 10));
    QCOMPARE(m_gen->ratioSasPix(), 4.0);
    disAnimateZoom = false;
}

void TstMainWindow::aCaptureOfNoSamplesEmptiesTheView()
{
    auto *view = m_window->findChild<MainView *>();
    const QImage empty = view->grab().toImage();
    capture();
    QVERIFY(view->grab().toImage() != empty);
    capture(0); // stopped at once
    QVERIFY(view->grab().toImage() == empty);
}

void TstMainWindow::shiftIsPassedToTheView()
{
    auto *view = m_window->findChild<MainView *>();
    QTest::keyPress(m_window.get(), Qt::Key_Shift);
    QVERIFY(view->shiftHeld);
    QTest::keyRelease(m_window.get(), Qt::Key_Shift);
    QVERIFY(!view->shiftHeld);
}

LUX_GUI_TEST(TstMainWindow)
#include "tst_MainWindow.moc"
