#include "app/MainMenu.h"
#include "app/MainWindow.h"
#include "device/DevBase.h"
#include "device/DevModels.h"
#include "files/DataFile.h"
#include "support/BoxCloser.h"
#include "support/CaptureBuilder.h"
#include "support/GuiTestMain.h"
#include "wave/MainView.h"
#include "wave/MyProgressDlg.h"
#include "wave/WaveDataGen.h"

#include <QAccessible>
#include <QDropEvent>
#include <QLabel>
#include <QMimeData>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QTemporaryDir>

#include <memory>
#include <thread>

class TstMainWindow : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void aReportOfNothingShowsOnePercent();
    void aReportBeyondTheEndShowsNinetyNine();
    void theDialogFollowsTheStatesOfACapture();
    void theStopButtonOnlyAsksWhileSampling();
    void afterAnErrorTheButtonClosesTheDialog();
    void anErrorCodeStandsInTheDialogWithStateAndError();
    void aStreamThatCannotKeepUpClosesTheDialogAndShowsABox();
    void onlyTheAnalogModelsCodeBoxHasATail();
    void theNoteOfAMalformedRecordIsOnlySaved();
    void theTitleNamesTheModelAndTheState();
    void aFileInViewIsForgottenWhenACaptureStarts();
    void withoutAFileTheTitleStaysWhenACaptureStarts();
    void theDeviceStateIsReadToThoseWhoCannotSeeIt();
    void replacingTheModelRebindsAndSavesIt();
    void theSameModelIsNotReplaced();
    void reportsOfAReplacedDeviceAreDropped();
    void zoomTextsReachTheGenerator();
    void dragMovesTheViewByWholeColumns();
    void thePositionBarMovesTheViewWithinTheCapture();
    void mouseZoomIsIgnoredWithoutData();
    void shiftIsPassedToTheView();
    void closingSavesGeometryAndRatio();
    void aDropWithoutALocalFileDoesNothing();
    void aDroppedFileOfAnotherKindGivesTheBox();
    void aDataFileOpensWithItsSettings();
    void aSettingsFileChangesTheModelAndKeepsTheLanguage();
    void aBrokenFileGivesTheBoxAndTheProgramGoesOn_data();
    void aBrokenFileGivesTheBoxAndTheProgramGoesOn();
    void aDataFileWithoutDataBehindItsSettingsGivesTheBox();
    void aFileDroppedDuringACaptureEndsItAndOpens();
    void theStartTimerLoadsTheFileOfTheCommandLine();
    void theStartTimerTellsOfAFileThatDoesNotLoad();
    void theStartTimerLeavesACaptureThatWasStartedBeforeItAlone();

private:
    QLabel *dialogLabel() const { return m_dialog->findChild<QLabel *>(); }
    QProgressBar *dialogBar() const { return m_dialog->findChild<QProgressBar *>(); }
    QPushButton *dialogButton() const { return m_dialog->findChild<QPushButton *>(); }
    void makeWindow();
    void capture(std::int64_t samples = 100000);
    QString writeDataFile(const QString &name);
    void drop(const QUrl &url);
    void drop(const QString &path) { drop(QUrl::fromLocalFile(path)); }

    QTemporaryDir m_dir;
    std::unique_ptr<MainWindow> m_window;
    MyProgressDlg *m_dialog = nullptr;
    WaveDataGen *m_gen = nullptr;
};

void TstMainWindow::init()
{
    QFile::remove(configPath());
    configLoad();
    gOpenFile.clear();
    gDev = createDevice(0).release();
    makeWindow();
}

void TstMainWindow::cleanup()
{
    m_window.reset();
    delete gDev;
    gDev = nullptr;
}

void TstMainWindow::makeWindow()
{
    m_window = std::make_unique<MainWindow>();
    m_window->resize(1200, 700);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    m_dialog = m_window->findChild<MyProgressDlg *>();
    m_gen = m_window->findChild<WaveDataGen *>();
    QVERIFY(m_dialog != nullptr && m_gen != nullptr);
}

void TstMainWindow::capture(std::int64_t samples)
{
    CaptureBuilder{samples}.fill(*gDev->smpData);
    emit gDev->sigSmpDataReady();
}

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

void TstMainWindow::theNoteOfAMalformedRecordIsOnlySaved()
{
    BoxCloser closer;
    gDev->smpData->zeroSmpCnt = 4711;
    emit gDev->sigSmpSta(4, 32, 4711);
    QCOMPARE(globalGet(QStringLiteral("zeroSmpCnt")), QStringLiteral("4711"));
    QCOMPARE(closer.seen.count, 0);
    QVERIFY(!m_dialog->isVisible());
}

void TstMainWindow::theTitleNamesTheModelAndTheState()
{
    QCOMPARE(m_window->windowTitle(), QStringLiteral("RV2520 Unconnected - CorvanLUX"));
    m_window->slotDevPreConnect(9);
    QCOMPARE(m_window->windowTitle(), QStringLiteral("RV2540 Unconnected - CorvanLUX"));
}

void TstMainWindow::aFileInViewIsForgottenWhenACaptureStarts()
{
    gOpenFile = QStringLiteral("/somewhere/a.cxdat");
    m_window->slotReplaceConfig();
    QCOMPARE(m_window->windowTitle(), QStringLiteral("/somewhere/a.cxdat - CorvanLUX"));
    emit gDev->sigSmpSta(0, 0, 0);
    QVERIFY(gOpenFile.isEmpty());
    QCOMPARE(m_window->windowTitle(), QStringLiteral("RV2520 Unconnected - CorvanLUX"));
}

void TstMainWindow::withoutAFileTheTitleStaysWhenACaptureStarts()
{
    m_window->setWindowTitle(QStringLiteral("as it was"));
    emit gDev->sigSmpSta(0, 0, 0);
    QCOMPARE(m_window->windowTitle(), QStringLiteral("as it was"));
}

void TstMainWindow::theDeviceStateIsReadToThoseWhoCannotSeeIt()
{
    QStringList read;
    for (QLabel *label : m_window->findChildren<QLabel *>()) {
        read += QAccessible::queryAccessibleInterface(label)->text(QAccessible::Name);
    }
    QVERIFY(read.contains(QStringLiteral("Device unconnected")));
}

void TstMainWindow::replacingTheModelRebindsAndSavesIt()
{
    m_window->slotDevPreConnect(1);
    QCOMPARE(gDev->model, 1);
    QCOMPARE(globalGet(QStringLiteral("devModel")), QStringLiteral("1"));
    capture();
    QCOMPARE(m_gen->digLine(7).empty(), false);
    QCOMPARE(m_gen->digLine(8).empty(), true);
}

void TstMainWindow::theSameModelIsNotReplaced()
{
    capture();
    const DevBase *before = gDev;
    m_window->slotDevPreConnect(0);
    QCOMPARE(gDev, before);
    QVERIFY(gDev->smpData->complete);
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

void TstMainWindow::shiftIsPassedToTheView()
{
    auto *view = m_window->findChild<MainView *>();
    QTest::keyPress(m_window.get(), Qt::Key_Shift);
    QVERIFY(view->shiftHeld);
    QTest::keyRelease(m_window.get(), Qt::Key_Shift);
    QVERIFY(!view->shiftHeld);
}

void TstMainWindow::closingSavesGeometryAndRatio()
{
    capture();
    m_gen->zoomSetRatio(12.345678);
    m_window->setGeometry(30, 40, 900, 500);
    m_window->close();
    QCOMPARE(globalGet(QStringLiteral("windowPosition")), QStringLiteral("30,40,900,500"));
    QCOMPARE(globalGet(QStringLiteral("windowMaximized")), QStringLiteral("0"));
    QCOMPARE(globalGet(QStringLiteral("ratioSasPix")), QStringLiteral("12.3457"));
}

void TstMainWindow::drop(const QUrl &url)
{
    // A file manager may offer the file for moving, and would then delete it.
    const Qt::DropActions offered = Qt::CopyAction | Qt::MoveAction;
    QMimeData mime;
    mime.setUrls({url});
    QDragEnterEvent enter(QPoint(50, 50), offered, &mime, Qt::LeftButton, Qt::ShiftModifier);
    QApplication::sendEvent(m_window.get(), &enter);
    QVERIFY(enter.isAccepted());
    QCOMPARE(enter.dropAction(), Qt::CopyAction);
    QDropEvent event(QPointF(50, 50), offered, &mime, Qt::LeftButton, Qt::ShiftModifier);
    QApplication::sendEvent(m_window.get(), &event);
    QVERIFY(event.isAccepted());
    QCOMPARE(event.dropAction(), Qt::CopyAction);
}

void TstMainWindow::aDropWithoutALocalFileDoesNothing()
{
    BoxCloser closer;
    drop(QUrl(QStringLiteral("https://localhost/a.cxdat")));
    QCOMPARE(closer.seen.count, 0);
}

void TstMainWindow::aDroppedFileOfAnotherKindGivesTheBox()
{
    const QString path = m_dir.filePath(QStringLiteral("a.CXDAT"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();
    BoxCloser closer;
    drop(path);
    QCOMPARE(closer.seen.count, 1);
    QCOMPARE(closer.seen.title, QStringLiteral("An error occurred"));
    QCOMPARE(closer.seen.text, QStringLiteral("File open failed.\r\n") + path);
    QCOMPARE(closer.seen.button, QStringLiteral("Close"));
    QCOMPARE(closer.seen.icon, QMessageBox::Warning);
}

QString TstMainWindow::writeDataFile(const QString &name)
{
    CaptureBuilder{50000, 20000000}.fill(*gDev->smpData);
    const QString path = m_dir.filePath(name);
    if (!configSave(path)) {
        return {};
    }
    const std::vector<std::uint8_t> all(std::size_t(gDev->smpData->chnCount), 1);
    DataFile job(gDev->smpData.get());
    job.file.setFileName(path);
    job.chnSelect = all.data();
    job.setRange(0, 50000);
    if (!job.file.open(QIODevice::WriteOnly | QIODevice::Append) || !job.saveData()) {
        return {};
    }
    job.file.close();
    return path;
}

void TstMainWindow::aDataFileOpensWithItsSettings()
{
    m_window->slotDevPreConnect(9);
    const QString path = writeDataFile(QStringLiteral("thirtytwo.cxdat"));
    QVERIFY(!path.isEmpty());
    m_window->slotDevPreConnect(0);
    BoxCloser closer;
    drop(path);
    QCOMPARE(closer.seen.count, 0);
    QCOMPARE(gDev->model, 9);
    QCOMPARE(gDev->smpData->sampleCount(), 50000);
    QCOMPARE(gDev->smpData->smpFrequ, 20000000);
    QCOMPARE(m_window->windowTitle(), path + QStringLiteral(" - CorvanLUX"));
    QVERIFY(!m_gen->digLine(31).empty());
}

void TstMainWindow::aSettingsFileChangesTheModelAndKeepsTheLanguage()
{
    const QString path = m_dir.filePath(QStringLiteral("other.cxset"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("<?xml version=\"1.0\" encoding=\"UTF-8\"?><settings><global><userLang>ja</userLang>"
               "<disAutoUpdate>1</disAutoUpdate><devModel>5</devModel></global><devices/><analyzers/></settings>\n");
    file.close();
    globalSet(QStringLiteral("userLang"), QStringLiteral("de"));
    BoxCloser closer;
    m_window->findChild<MainMenu *>()->openFile(path);
    QCOMPARE(closer.seen.count, 0);
    QCOMPARE(gDev->model, 5);
    QCOMPARE(globalGet(QStringLiteral("userLang")), QStringLiteral("de"));
    QCOMPARE(globalGet(QStringLiteral("disAutoUpdate")), QStringLiteral("1"));
    QVERIFY(gOpenFile.isEmpty());
}

void TstMainWindow::aBrokenFileGivesTheBoxAndTheProgramGoesOn_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const QByteArray settings = "<settings><global><devModel>0</devModel></global><devices/><analyzers/></settings>\n";
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("no settings block") << QByteArray(100, 'x');
    QTest::newRow("settings that are no document") << QByteArray("<settings><global></settings>\n");
    QTest::newRow("a head of zeros") << settings + QByteArray(40, '\0');
    QTest::newRow("a short head") << settings + QByteArray("cxdat\0\0\0", 8);
}

void TstMainWindow::aBrokenFileGivesTheBoxAndTheProgramGoesOn()
{
    QFETCH(QByteArray, bytes);
    const QString path = m_dir.filePath(QStringLiteral("broken.cxdat"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    file.close();
    BoxCloser closer;
    m_window->findChild<MainMenu *>()->openFile(path);
    QCOMPARE(closer.seen.count, 1);
    QCOMPARE(closer.seen.text, QStringLiteral("File open failed.\r\n") + path);
    capture();
    QVERIFY(!m_gen->digLine(0).empty());
}

void TstMainWindow::aDataFileWithoutDataBehindItsSettingsGivesTheBox()
{
    const QString path = m_dir.filePath(QStringLiteral("settings.cxdat"));
    QVERIFY(configSave(path));
    BoxCloser closer;
    m_window->findChild<MainMenu *>()->openFile(path);
    QCOMPARE(closer.seen.count, 1);
    QVERIFY(gOpenFile.isEmpty());
    QCOMPARE(m_window->windowTitle(), QStringLiteral("RV2520 Unconnected - CorvanLUX"));
}

void TstMainWindow::aFileDroppedDuringACaptureEndsItAndOpens()
{
    const QString path = writeDataFile(QStringLiteral("dropped.cxdat"));
    QVERIFY(!path.isEmpty());
    gDev->setSmpDepthIndex(14);
    gDev->startCapture();
    QTRY_VERIFY(m_dialog->isVisible());
    m_window->findChild<MainMenu *>()->openFile(path);
    QVERIFY(!m_dialog->isVisible());
    QCOMPARE(gDev->smpData->sampleCount(), 50000);
    QCOMPARE(gOpenFile, path);
}

void TstMainWindow::theStartTimerLoadsTheFileOfTheCommandLine()
{
    const QString path = writeDataFile(QStringLiteral("named.cxdat"));
    QVERIFY(!path.isEmpty());
    cleanup();
    gOpenFile = path;
    gDev = createDevice(0).release();
    makeWindow();
    QCOMPARE(m_window->windowTitle(), path + QStringLiteral(" - CorvanLUX"));
    QTRY_COMPARE(gDev->smpData->sampleCount(), 50000);
    QVERIFY(!m_gen->digLine(0).empty());
}

void TstMainWindow::theStartTimerTellsOfAFileThatDoesNotLoad()
{
    const QString path = m_dir.filePath(QStringLiteral("nothing.cxdat"));
    cleanup();
    gOpenFile = path;
    gDev = createDevice(0).release();
    BoxCloser closer;
    makeWindow();
    QTRY_COMPARE(closer.seen.count, 1);
    QCOMPARE(closer.seen.text, QStringLiteral("File open failed.\r\n") + path);
    QCOMPARE(closer.seen.icon, QMessageBox::Information);
}

void TstMainWindow::theStartTimerLeavesACaptureThatWasStartedBeforeItAlone()
{
    cleanup();
    gOpenFile = m_dir.filePath(QStringLiteral("nothing.cxdat"));
    gDev = createDevice(0).release();
    gDev->setSmpDepthIndex(0);
    m_window = std::make_unique<MainWindow>();
    BoxCloser closer;
    gDev->startCapture();
    for (int id = 1; id < 1000; ++id) {
        QTimerEvent timeout(id);
        QApplication::sendEvent(m_window.get(), &timeout);
    }
    QTRY_COMPARE(gDev->smpData->sampleCount(), 20000);
    QCOMPARE(closer.seen.count, 0);
    QTRY_VERIFY(gOpenFile.isEmpty());
}

LUX_GUI_TEST(TstMainWindow)
#include "tst_MainWindow.moc"
