#include "app/MainMenu.h"
#include "app/WindowDesk.h"
#include "device/DeviceGlobals.h"
#include "files/DataBlocks.h"
#include "files/DataFile.h"
#include "settings/Config.h"
#include "settings/Globals.h"
#include "support/BoxCloser.h"

#include <QTemporaryDir>

#include <cmath>

/// Files that are dropped on the window, opened, or named on the command line.
class TstMainWindowFiles : public QObject, private WindowDesk {
    Q_OBJECT
private slots:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void aDropWithoutALocalFileDoesNothing();
    void aDroppedFileOfAnotherKindGivesTheBox();
    void aDataFileOpensWithItsSettings();
    void aFileOfFlatLinesInViewIsShownWhole();
    void aSettingsFileChangesTheModelAndKeepsTheLanguage();
    void aBrokenFileGivesTheBoxAndTheProgramGoesOn_data();
    void aBrokenFileGivesTheBoxAndTheProgramGoesOn();
    void aDataFileWithoutDataBehindItsSettingsGivesTheBox();
    void aHeadOfAnyNumbersIsShown_data();
    void aHeadOfAnyNumbersIsShown();
    void aFileOfAnotherChannelCountGivesTheBoxAndChangesNothing();
    void aFileThatFailsLateChangesNothing_data();
    void aFileThatFailsLateChangesNothing();
    void aFileCutShortOpensAndNamesWhatIsMissing();
    void theSettingsOfANamedFileThatFailsAreGivenBack();
    void anotherFileThatDoesNotOpenLeavesTheOneInView();
    void aFileDroppedDuringACaptureEndsItAndOpens();
    void theStartTimerLoadsTheFileOfTheCommandLine();
    void theStartTimerLoadsAnotherProgramsCapture();
    void theStartTimerTellsOfAnotherProgramsCaptureThatDoesNotLoad();
    void theStartTimerTellsOfAFileThatDoesNotLoad();
    void theStartTimerLeavesACaptureThatWasStartedBeforeItAlone();

private:
    QString writeDataFile(const QString &name);
    QString writeText(const QString &name, const QByteArray &text);

    QTemporaryDir m_dir;
};

QString TstMainWindowFiles::writeDataFile(const QString &name)
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

QString TstMainWindowFiles::writeText(const QString &name, const QByteArray &text)
{
    QFile file(m_dir.filePath(name));
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size() ? file.fileName() : QString();
}

void TstMainWindowFiles::aDropWithoutALocalFileDoesNothing()
{
    BoxCloser closer;
    drop(QUrl(QStringLiteral("https://localhost/a.cxdat")));
    QCOMPARE(closer.seen.count, 0);
}

void TstMainWindowFiles::aDroppedFileOfAnotherKindGivesTheBox()
{
    const QString path = m_dir.filePath(QStringLiteral("a.CXDAT"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();
    BoxCloser closer;
    drop(path);
    QCOMPARE(closer.seen.count, 1);
    QCOMPARE(closer.seen.title, QStringLiteral("An error occurred"));
    QVERIFY(closer.seen.text.startsWith(QStringLiteral("File open failed.\r\n") + path + QStringLiteral("\r\n")));
    QCOMPARE(closer.seen.button, QStringLiteral("Close"));
    QCOMPARE(closer.seen.icon, QMessageBox::Warning);
}

void TstMainWindowFiles::aDataFileOpensWithItsSettings()
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
    QCOMPARE(gDev->smpData->smpFrequ(), 20000000);
    QCOMPARE(m_window->windowTitle(), path + QStringLiteral(" - CorvanLUX"));
    QVERIFY(!m_gen->digLine(31).empty());
}

/// The zoom that stays from before would show a piece without a transition. A new capture keeps it even so.
void TstMainWindowFiles::aFileOfFlatLinesInViewIsShownWhole()
{
    const QString path = writeDataFile(QStringLiteral("flat.cxdat"));
    QVERIFY(!path.isEmpty());
    const double close = 0.01;
    emit gDev->sigSmpDataReady();
    m_gen->zoomSetRatio(close);
    emit gDev->sigSmpDataReady();
    QCOMPARE(m_gen->ratioSasPix(), close);
    BoxCloser closer;
    drop(path);
    QCOMPARE(closer.seen.count, 0);
    QCOMPARE(m_gen->viewStart(), 0.0);
    QCOMPARE(m_gen->ratioSasPix(), 50000.0 / m_gen->viewWidth());
}

void TstMainWindowFiles::aSettingsFileChangesTheModelAndKeepsTheLanguage()
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

void TstMainWindowFiles::aBrokenFileGivesTheBoxAndTheProgramGoesOn_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const QByteArray settings = "<settings><global><devModel>0</devModel></global><devices/><analyzers/></settings>\n";
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("no settings block") << QByteArray(100, 'x');
    QTest::newRow("settings that are no document") << QByteArray("<settings><global></settings>\n");
    QTest::newRow("a head of zeros") << settings + QByteArray(40, '\0');
    QTest::newRow("a short head") << settings + QByteArray("cxdat\0\0\0", 8);
}

void TstMainWindowFiles::aBrokenFileGivesTheBoxAndTheProgramGoesOn()
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
    QVERIFY(closer.seen.text.startsWith(QStringLiteral("File open failed.\r\n") + path + QStringLiteral("\r\n")));
    capture();
    QVERIFY(!m_gen->digLine(0).empty());
}

void TstMainWindowFiles::aDataFileWithoutDataBehindItsSettingsGivesTheBox()
{
    const QString path = m_dir.filePath(QStringLiteral("settings.cxdat"));
    QVERIFY(configSave(path));
    BoxCloser closer;
    m_window->findChild<MainMenu *>()->openFile(path);
    QCOMPARE(closer.seen.count, 1);
    QVERIFY(gOpenFile.isEmpty());
    QCOMPARE(m_window->windowTitle(), QStringLiteral("RV2520 Unconnected - CorvanLUX"));
}

void TstMainWindowFiles::aHeadOfAnyNumbersIsShown_data()
{
    QTest::addColumn<qint64>("samples");
    QTest::addColumn<qint64>("rate");
    QTest::addColumn<qint64>("trigger");
    const qint64 most = dataFileMax;
    QTest::newRow("no rate") << qint64(1000) << qint64(0) << qint64(0);
    QTest::newRow("the fastest rate") << qint64(1000) << most << qint64(0);
    QTest::newRow("the slowest rate and the most samples") << most << qint64(1) << qint64(0);
    QTest::newRow("a trigger far behind the end") << qint64(1000) << qint64(1000000) << most;
    QTest::newRow("one sample") << qint64(1) << qint64(1000000) << qint64(0);
    QTest::newRow("no sample") << qint64(0) << qint64(1000000) << qint64(0);
    QTest::newRow("the most of all") << most << most << most;
}

void TstMainWindowFiles::aHeadOfAnyNumbersIsShown()
{
    QFETCH(qint64, samples);
    QFETCH(qint64, rate);
    QFETCH(qint64, trigger);
    const QString path = m_dir.filePath(QStringLiteral("any.cxdat"));
    QVERIFY(configSave(path));
    const auto head = encodeFileHead({samples, rate, trigger, 16});
    const auto block = encodeBlockHead({5, 1, 0});
    QFile file(path);
    QVERIFY(file.open(QIODevice::Append));
    file.write(reinterpret_cast<const char *>(head.data()), DataFileHead::size);
    file.write(reinterpret_cast<const char *>(block.data()), DataBlockHead::size);
    file.close();
    BoxCloser closer;
    drop(path);
    QCOMPARE(closer.seen.count, 0);
    QCOMPARE(gDev->smpData->sampleCount(), samples);
    for (const int state : {0, 1, 2}) {
        viewState = state;
        emit gDev->sigSmpDataReady();
        for (const char *zoom : {"All", "Out", "In", "Trg", "1e300", "0", "-1", "nan", "inf"}) {
            m_window->slotToolbarZoomChanged(QLatin1String(zoom));
            m_window->slotPosiViewChanged(0.9);
            m_window->slotMouseDraged(1 << 30);
            QVERIFY(std::isfinite(m_gen->ratioSasPix()) && std::isfinite(m_gen->viewStart()));
            QVERIFY(!m_window->grab().isNull());
        }
    }
    viewState = 0;
}

void TstMainWindowFiles::aFileOfAnotherChannelCountGivesTheBoxAndChangesNothing()
{
    globalSet(QStringLiteral("devModel"), QStringLiteral("9")); // of 32 channels, in front of the data of 16
    const QString path = writeDataFile(QStringLiteral("mixed.cxdat"));
    QVERIFY(!path.isEmpty());
    globalSet(QStringLiteral("devModel"), QStringLiteral("0"));
    const DevBase *device = gDev;
    BoxCloser closer;
    drop(path);
    QCOMPARE(closer.seen.count, 1);
    QCOMPARE(closer.seen.text, QStringLiteral("File open failed.\r\n") + path +
                                   QStringLiteral("\r\nThe file holds another number of channels than its model has."));
    QCOMPARE(gDev, device);
    QCOMPARE(globalGet(QStringLiteral("devModel")), QStringLiteral("0"));
    QCOMPARE(gDev->smpData->sampleCount(), 50000);
}

void TstMainWindowFiles::aFileThatFailsLateChangesNothing_data()
{
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<QByteArray>("bytes");
    const QByteArray settings = "<settings><global><devModel>9</devModel><chnShowName0>theirs</chnShowName0></global>"
                                "<devices/><analyzers/></settings>\n";
    const auto head = encodeFileHead({1000, 1000000, 0, 32});
    const auto block = encodeBlockHead({5, 1, 2});
    const QByteArray data = QByteArray(reinterpret_cast<const char *>(head.data()), DataFileHead::size) +
                            QByteArray(reinterpret_cast<const char *>(block.data()), DataBlockHead::size);
    QTest::newRow("entries out of order") << "cxdat" << settings + data + QByteArray("\2\0\0\0\0\1\0\0\0\0", 10);
    QTest::newRow("cut within a block") << "cxdat" << settings + data + QByteArray("\2\0\0", 3);
    QTest::newRow("malformed settings") << "cxset"
                                        << "<global>" + settings;
}

void TstMainWindowFiles::aFileThatFailsLateChangesNothing()
{
    QFETCH(QString, suffix);
    QFETCH(QByteArray, bytes);
    const QString good = writeDataFile(QStringLiteral("good.cxdat"));
    drop(good);
    globalSet(QStringLiteral("chnShowName0"), QStringLiteral("mine"));
    const DevBase *device = gDev;
    const QString path = m_dir.filePath(QStringLiteral("late.") + suffix);
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    file.close();
    BoxCloser closer;
    drop(path);
    QCOMPARE(closer.seen.count, 1);
    QCOMPARE(closer.seen.text, QStringLiteral("File open failed.\r\n%1\r\nThe file is damaged.").arg(path));
    QCOMPARE(gDev, device);
    QCOMPARE(globalGet(QStringLiteral("chnShowName0")), QStringLiteral("mine"));
    QCOMPARE(gDev->smpData->sampleCount(), 50000);
    QCOMPARE(gOpenFile, good);
    QCOMPARE(m_window->windowTitle(), good + QStringLiteral(" - CorvanLUX"));
}

void TstMainWindowFiles::aFileCutShortOpensAndNamesWhatIsMissing()
{
    globalSet(QStringLiteral("chnShowName15"), QStringLiteral("SDA"));
    const QString path = writeDataFile(QStringLiteral("cut.cxdat"));
    QVERIFY(QFile::resize(path, QFileInfo(path).size() - 1));
    BoxCloser closer;
    drop(path);
    QCOMPARE(closer.seen.count, 1);
    QCOMPARE(closer.seen.text, QStringLiteral("The file is incomplete. These channels are missing:\r\nSDA\r\n") + path);
    QCOMPARE(gDev->smpData->sampleCount(), 50000);
    QCOMPARE(gDev->smpData->entryCount(15), 0);
    QVERIFY(gDev->smpData->entryCount(14) > 0);
}

void TstMainWindowFiles::theSettingsOfANamedFileThatFailsAreGivenBack()
{
    const QString path = writeDataFile(QStringLiteral("named.cxdat"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.seek(file.size() - 5));
    file.write(QByteArray(5, '\0')); // out of order: seen only when the entries are read
    file.close();
    tearDown();
    globalSet(QStringLiteral("chnShowName0"), QStringLiteral("mine"));
    QVERIFY(configSave(configPath()));
    globalSet(QStringLiteral("chnShowName0"), QStringLiteral("theirs"));
    gOpenFile = path;
    m_session = makeSession(0);
    BoxCloser closer;
    makeWindow();
    QTRY_COMPARE(closer.seen.count, 1);
    QCOMPARE(closer.seen.icon, QMessageBox::Information);
    QCOMPARE(globalGet(QStringLiteral("chnShowName0")), QStringLiteral("mine"));
    QVERIFY(gOpenFile.isEmpty());
    QFile::remove(configPath());
}

void TstMainWindowFiles::anotherFileThatDoesNotOpenLeavesTheOneInView()
{
    const QString path = writeDataFile(QStringLiteral("good.cxdat"));
    drop(path);
    BoxCloser closer;
    drop(m_dir.filePath(QStringLiteral("missing.cxdat")));
    QCOMPARE(closer.seen.count, 1);
    QCOMPARE(gOpenFile, path);
    QCOMPARE(gDev->smpData->sampleCount(), 50000);
    QCOMPARE(m_window->windowTitle(), path + QStringLiteral(" - CorvanLUX"));
}

void TstMainWindowFiles::aFileDroppedDuringACaptureEndsItAndOpens()
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

void TstMainWindowFiles::theStartTimerLoadsTheFileOfTheCommandLine()
{
    const QString path = writeDataFile(QStringLiteral("named.cxdat"));
    QVERIFY(!path.isEmpty());
    tearDown();
    gOpenFile = path;
    m_session = makeSession();
    makeWindow();
    QCOMPARE(m_window->windowTitle(), path + QStringLiteral(" - CorvanLUX"));
    QTRY_COMPARE(gDev->smpData->sampleCount(), 50000);
    QVERIFY(!m_gen->digLine(0).empty());
}

void TstMainWindowFiles::theStartTimerLoadsAnotherProgramsCapture()
{
    const QString path = writeText(QStringLiteral("named.vcd"), "$timescale 1 us $end\n$var wire 1 ! clock $end\n"
                                                                "$enddefinitions $end\n#0\n0!\n#20\n1!\n#30\n");
    tearDown();
    gOpenFile = path;
    m_session = makeSession(6);
    makeWindow();
    QTRY_COMPARE(gDev->smpData->sampleCount(), 30);
    QCOMPARE(gDev->smpData->nextEdge(0, 0), 20);
    QCOMPARE(chnShowNameGet(0), QStringLiteral("clock"));
    QCOMPARE(gOpenFile, path);
    QCOMPARE(m_window->windowTitle(), path + QStringLiteral(" - CorvanLUX"));
    QVERIFY(!m_gen->digLine(0).empty());
}

void TstMainWindowFiles::theStartTimerTellsOfAnotherProgramsCaptureThatDoesNotLoad()
{
    const QString path = writeText(QStringLiteral("bad.vcd"), "no dump");
    tearDown();
    gOpenFile = path;
    m_session = makeSession(6);
    BoxCloser closer;
    makeWindow();
    QTRY_COMPARE(closer.seen.count, 1);
    QVERIFY(closer.seen.text.startsWith(QStringLiteral("File open failed.\r\n") + path + QStringLiteral("\r\n")));
    QVERIFY(gOpenFile.isEmpty());
    QCOMPARE(gDev->model, 6);
    QVERIFY(m_window->windowTitle().startsWith(gDev->name));
}

void TstMainWindowFiles::theStartTimerTellsOfAFileThatDoesNotLoad()
{
    const QString path = m_dir.filePath(QStringLiteral("nothing.cxdat"));
    tearDown();
    gOpenFile = path;
    m_session = makeSession();
    BoxCloser closer;
    makeWindow();
    QTRY_COMPARE(closer.seen.count, 1);
    QVERIFY(closer.seen.text.startsWith(QStringLiteral("File open failed.\r\n") + path + QStringLiteral("\r\n")));
    QCOMPARE(closer.seen.icon, QMessageBox::Information);
}

void TstMainWindowFiles::theStartTimerLeavesACaptureThatWasStartedBeforeItAlone()
{
    tearDown();
    gOpenFile = m_dir.filePath(QStringLiteral("nothing.cxdat"));
    m_session = makeSession();
    gDev->setSmpDepthIndex(14); // until it is stopped
    m_window = std::make_unique<MainWindow>(*m_session);
    BoxCloser closer;
    int states = 0;
    const QObject listener; // goes before the count
    connect(gDev, &DevBase::sigSmpSta, &listener, [&states] { ++states; });
    gDev->startCapture();
    for (int id = 1; id < 1000; ++id) {
        QTimerEvent timeout(id);
        QApplication::sendEvent(m_window.get(), &timeout);
    }
    QVERIFY(gDev->isCapturing());
    QTRY_VERIFY(states >= 2); // stopped before its first samples it would leave none
    gDev->stopCapture();
    QTRY_VERIFY(gDev->smpData->sampleCount() > 0);
    QCOMPARE(closer.seen.count, 0);
    QTRY_VERIFY(gOpenFile.isEmpty());
}

LUX_GUI_TEST(TstMainWindowFiles)
#include "tst_MainWindowFiles.moc"
