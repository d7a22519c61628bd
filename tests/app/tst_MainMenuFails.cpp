#include "app/MenuDesk.h"
#include "device/DeviceGlobals.h"
#include "files/DataFile.h"
#include "support/HeldSource.h"

#include <QProgressBar>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

/// Saves and exports that fail, are cancelled, or meet something else.
class TstMainMenuFails : public QObject, private MenuDesk {
    Q_OBJECT
private slots:
    void init() { setUpMenu(); }
    void cleanup() { tearDownMenu(); }

    void aFileThatCannotBeWrittenGivesTheBox_data();
    void aFileThatCannotBeWrittenGivesTheBox();
    void aPipeWithoutAReaderIsRefusedAtOnce_data();
    void aPipeWithoutAReaderIsRefusedAtOnce();
    void aDirectoryIsEnteredAndNotWrittenTo();
    void settingsTooLongToBeReadAgainGiveTheBox();
    void aBigSaveRunsBehindTheProgressDialog();
    void aCancelledJobGivesTheBox_data();
    void aCancelledJobGivesTheBox();
    void whatIsDroppedWhileAJobRunsIsIgnored();
    void theKeysDoNothingWhileAJobRuns();
    void aCaptureThatIsReplacedBehindTheDialogsIsNotSaved_data();
    void aCaptureThatIsReplacedBehindTheDialogsIsNotSaved();
    void savingDuringACaptureGivesTheNotice_data();
    void savingDuringACaptureGivesTheNotice();
    void openingDuringACaptureEndsIt();

private:
    /// Runs action 0 save, 1 save the settings, 2 text, 3 CSV or 4 binary.
    void act(int kind)
    {
        if (kind == 0) {
            m_menu->actSaveData();
        } else if (kind == 1) {
            m_menu->actSaveSettings();
        } else {
            exportAs(kind);
        }
    }
    /// More entries than a save without a dialog writes.
    void bigCapture() { CaptureBuilder{4'000'000, 1000000, 1}.fill(*gDev->smpData); }
};

void TstMainMenuFails::aFileThatCannotBeWrittenGivesTheBox_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<bool>("full");
    for (const auto &[kind, name] : {std::pair{0, "saved"}, {2, "text"}, {3, "csv"}, {4, "binary"}}) {
        QTest::addRow("%s, a disk that is full", name) << kind << true;
        QTest::addRow("%s, where nothing can be made", name) << kind << false;
    }
}

void TstMainMenuFails::aFileThatCannotBeWrittenGivesTheBox()
{
#ifndef Q_OS_UNIX
    QSKIP("this system has no such files");
#endif
    QFETCH(int, kind);
    QFETCH(bool, full);
    capture(1000);
    if (full) {
        m_path = path("full.out");
        QVERIFY(QFile::link(QStringLiteral("/dev/full"), m_path));
    } else {
        m_path = QStringLiteral("/proc/lux.out"); // not even the administrator makes a file there
    }
    act(kind);
    QCOMPARE(m_boxes->seen.count, 1);
    QCOMPARE(m_boxes->seen.title, QStringLiteral("An error occurred"));
    QVERIFY(m_boxes->seen.text.startsWith(QStringLiteral("File save failed.\r\n") + m_path + QStringLiteral("\r\n")));
    QCOMPARE(m_boxes->seen.button, QStringLiteral("Close"));
    QCOMPARE(m_boxes->seen.icon, QMessageBox::Warning);
    QCOMPARE(gDev->smpData->sampleCount(), 1000);
    QVERIFY(!m_menu->isBusy());
}

void TstMainMenuFails::aPipeWithoutAReaderIsRefusedAtOnce_data()
{
    QTest::addColumn<int>("kind");
    QTest::newRow("saved") << 0;
    QTest::newRow("settings") << 1;
    QTest::newRow("text") << 2;
    QTest::newRow("binary") << 4;
}

void TstMainMenuFails::aPipeWithoutAReaderIsRefusedAtOnce()
{
#ifdef Q_OS_UNIX
    QFETCH(int, kind);
    capture(1000);
    m_path = path("pipe.out");
    QCOMPARE(mkfifo(QFile::encodeName(m_path).constData(), 0600), 0);
    act(kind); // a write that waits for a reader would never return
    QCOMPARE(m_files->count, 1);
    QCOMPARE(m_boxes->seen.count, kind == 1 ? 0 : 1); // settings that cannot be saved go unnoticed
    if (kind != 1) {
        QVERIFY(
            m_boxes->seen.text.startsWith(QStringLiteral("File save failed.\r\n") + m_path + QStringLiteral("\r\n")));
    }
    QVERIFY(!m_menu->isBusy());
#endif
}

void TstMainMenuFails::aDirectoryIsEnteredAndNotWrittenTo()
{
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("folder.cxdat")));
    capture(1000);
    m_path = path("folder.cxdat");
    m_menu->actSaveData();
    QCOMPARE(m_files->count, 1);
    QCOMPARE(m_boxes->seen.count, 0);
    QVERIFY(QDir(m_path).isEmpty());
}

void TstMainMenuFails::settingsTooLongToBeReadAgainGiveTheBox()
{
    capture(1000);
    for (int chn = 0; chn < 16; ++chn) {
        globalSet(QStringLiteral("chnShowName%1").arg(chn), QString(10000, QLatin1Char('n')));
    }
    m_path = path("long.cxdat");
    m_menu->actSaveData();
    QCOMPARE(m_boxes->seen.count, 1);
    QVERIFY(m_boxes->seen.text.startsWith(QStringLiteral("File save failed.\r\n") + m_path + QStringLiteral("\r\n")));
}

void TstMainMenuFails::aBigSaveRunsBehindTheProgressDialog()
{
    bigCapture();
    QString title;
    QString label;
    DialogDriver<MyProgressDlg> progress([&](MyProgressDlg &dialog) {
        title = dialog.windowTitle();
        label = dialog.labelText();
        QTRY_VERIFY_WITH_TIMEOUT(!dialog.isVisible(), 30000);
    });
    m_path = path("big.cxdat");
    m_menu->actSaveData();
    QCOMPARE(progress.count, 1);
    QCOMPARE(title, QStringLiteral("Save File"));
    QCOMPARE(label, QStringLiteral("Saving file, please wait..."));
    QCOMPARE(m_boxes->seen.count, 0);
    m_menu->actOpenFile();
    QCOMPARE(gDev->smpData->sampleCount(), 4'000'000);
}

void TstMainMenuFails::aCancelledJobGivesTheBox_data()
{
    QTest::addColumn<int>("kind");
    QTest::newRow("save") << 0;
    QTest::newRow("text") << 2;
    QTest::newRow("binary") << 4;
}

void TstMainMenuFails::aCancelledJobGivesTheBox()
{
    QFETCH(int, kind);
    if (kind == 4) {
        CaptureBuilder{2'000'000'000, 1000000, 1000}.fill(*gDev->smpData); // 4 GB, if it were not cancelled
    } else {
        bigCapture();
    }
    DialogDriver<MyProgressDlg> progress([](MyProgressDlg &dialog) { pressButton(dialog, QStringLiteral("Cancel")); });
    m_path = path("cancelled.out");
    const std::int64_t samples = gDev->smpData->sampleCount();
    act(kind);
    QCOMPARE(progress.count, 1);
    QCOMPARE(m_boxes->seen.count, 1);
    QVERIFY(m_boxes->seen.text.startsWith(QStringLiteral("File save failed.\r\n") + m_path + QStringLiteral("\r\n")));
    QVERIFY(QFile::exists(m_path)); // what was written stays
    QCOMPARE(gDev->smpData->sampleCount(), samples);
}

void TstMainMenuFails::whatIsDroppedWhileAJobRunsIsIgnored()
{
    m_path = path("other.cxset");
    globalSet(QStringLiteral("devModel"), QStringLiteral("9"));
    m_menu->actSaveSettings();
    globalSet(QStringLiteral("devModel"), QStringLiteral("0"));
    bigCapture();
    const DevBase *device = gDev;
    DialogDriver<MyProgressDlg> progress([&](MyProgressDlg &dialog) {
        QVERIFY(m_menu->isBusy());
        drop(path("other.cxset"));
        m_window->slotDevPreConnect(9);
        QTRY_VERIFY_WITH_TIMEOUT(!dialog.isVisible(), 30000);
    });
    m_path = path("big.cxdat");
    m_menu->actSaveData();
    QCOMPARE(progress.count, 1);
    QCOMPARE(gDev, device);
    QCOMPARE(m_boxes->seen.count, 0);
    QVERIFY(!m_menu->isBusy());
}

void TstMainMenuFails::theKeysDoNothingWhileAJobRuns()
{
    bigCapture();
    DialogDriver<MyProgressDlg> progress([&](MyProgressDlg &dialog) {
        for (QWidget *widget : {static_cast<QWidget *>(m_window.get()), static_cast<QWidget *>(&dialog)}) {
            QTest::keyClick(widget, Qt::Key_S, Qt::ControlModifier);
            QTest::keyClick(widget, Qt::Key_O, Qt::ControlModifier);
        }
        m_menu->actSaveData();
        m_menu->actOpenFile();
        exportAs(2);
        QTRY_VERIFY_WITH_TIMEOUT(!dialog.isVisible(), 30000);
    });
    m_path = path("big.cxdat");
    m_menu->actSaveData();
    QCOMPARE(progress.count, 1);
    QCOMPARE(m_files->count, 1);
    QCOMPARE(m_selections->count, 1);
    QCOMPARE(m_boxes->seen.count, 0);
}

void TstMainMenuFails::aCaptureThatIsReplacedBehindTheDialogsIsNotSaved_data()
{
    QTest::addColumn<bool>("early");
    QTest::newRow("behind the dialog of channels") << true;
    QTest::newRow("behind the dialog of files") << false;
}

void TstMainMenuFails::aCaptureThatIsReplacedBehindTheDialogsIsNotSaved()
{
    QFETCH(bool, early);
    capture(1000);
    m_path = path("gone.cxdat");
    const auto replace = [this] {
        m_window->slotDevPreConnect(9);
        capture(500);
    };
    std::unique_ptr<DialogDriver<QFileDialog>> meanwhile;
    if (early) {
        m_select = [&](ExportDataSet &) { replace(); };
    } else {
        m_files = std::make_unique<DialogDriver<QFileDialog>>([&](QFileDialog &dialog) {
            replace();
            chooseFile(dialog, m_path);
        });
    }
    m_menu->actSaveData();
    QCOMPARE(m_files->count, early ? 0 : 1);
    QCOMPARE(m_boxes->seen.count, 1);
    QCOMPARE(m_boxes->seen.text, QStringLiteral("Sorry, there is no data that can be saved."));
    QVERIFY(!QFile::exists(m_path));
}

void TstMainMenuFails::savingDuringACaptureGivesTheNotice_data()
{
    QTest::addColumn<int>("model");
    QTest::newRow("a model with a progress dialog") << 0;
    QTest::newRow("the analog model, whose window stays open to keys") << 97;
}

void TstMainMenuFails::savingDuringACaptureGivesTheNotice()
{
    QFETCH(int, model);
    if (model != 0) {
        tearDownMenu();
        setUpMenu(model);
    }
    capture(1000);
    gDev->setSmpDepthIndex(gDev->smpDepths.size() - 1);
    for (const bool exports : {false, true}) {
        const HeldSource source; // that of the analog model would be over in half a second
        gDev->startCapture();
        QVERIFY(gDev->isCapturing());
        act(exports ? 2 : 0);
        QCOMPARE(m_boxes->seen.text, exports ? QStringLiteral("Sorry, there is no data that can be exported.")
                                             : QStringLiteral("Sorry, there is no data that can be saved."));
        QVERIFY(gDev->isCapturing());
    }
    QCOMPARE(m_boxes->seen.count, 2);
    QCOMPARE(m_selections->count, 0);
}

void TstMainMenuFails::openingDuringACaptureEndsIt()
{
    capture(1000);
    m_path = path("open.cxdat");
    m_menu->actSaveData();
    gDev->setSmpDepthIndex(gDev->smpDepths.size() - 1);
    gDev->startCapture();
    m_menu->actOpenFile();
    QVERIFY(!gDev->isCapturing());
    QCOMPARE(gDev->smpData->sampleCount(), 1000);
    QCOMPARE(m_boxes->seen.count, 0);
}

LUX_GUI_TEST(TstMainMenuFails)
#include "tst_MainMenuFails.moc"
