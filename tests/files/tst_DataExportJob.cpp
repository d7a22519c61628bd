#include "files/DataExported.h"
#include "files/ScriptedDialog.h"
#include "settings/Config.h"
#include "store/MemBudget.h"
#include "store/SmpData.h"

#include <QFileInfo>
#include <QTest>
#include <QTimer>

#include <atomic>

using Mode = DataFile::Mode;

namespace {

/// A job that writes the first `samples` of a capture into a file that is open.
class Job : public DataFile {
public:
    Job(SmpData &data, Mode kind, double samples, JobDialogFactory dialogs = {})
        : DataFile(&data, std::move(dialogs)), m_select(allOf(data))
    {
        chnSelect = m_select.data();
        setRange(0, samples);
        file.setFileName(m_folder.path(QStringLiteral("a.out")));
        const auto how = QIODevice::WriteOnly | QIODevice::Truncate;
        opened = file.open(kind == Mode::ExportText ? how | QIODevice::Text : how);
        dialogDelay = 1'000'000; // none appears on its own
        (void)edgeTotal();
    }
    [[nodiscard]] qint64 written() const { return QFileInfo(file.fileName()).size(); }
    bool opened = false;

private:
    const FileFolder m_folder;
    const std::vector<std::uint8_t> m_select;
};

void bothJobs()
{
    QTest::addColumn<int>("job");
    QTest::newRow("binary") << int(Mode::ExportBinary);
    QTest::newRow("text") << int(Mode::ExportText);
}

} // namespace

/// Exports on the thread of their own, and the dialog in front of them.
class TstDataExportJob : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanupTestCase() { m_data.reset(); }

    void aBackgroundExportWritesWhatADirectOneWrites_data() { bothJobs(); }
    void aBackgroundExportWritesWhatADirectOneWrites();
    void theHeaderIsMadeOnTheMainThread();
    void theDialogHasTheTextsOfASave_data() { bothJobs(); }
    void theDialogHasTheTextsOfASave();
    void aTextReportsByEntries();
    void aDumpReportsBySamples();
    void aFailedExportClosesItsDialog_data() { bothJobs(); }
    void aFailedExportClosesItsDialog();
    void aRejectedDialogCancelsTheRunningExport_data() { bothJobs(); }
    void aRejectedDialogCancelsTheRunningExport();
    void aDumpOfALongQuietCaptureIsCancelledAtOnce();

    void theSizeDecidesHowAJobRuns_data();
    void theSizeDecidesHowAJobRuns();
    void theWindowIsServedWhileAJobRunsAside();
    void aJobAsideThatTakesLongGetsItsDialog();
    void aJobAsideIsCancelledByItsLateDialog();
    void aJobAsideWithoutDialogsIsWaitedFor();
    void aJobThatDoesNotWriteIsRefused();

private:
    /// 10,000,000 entries, of which the last one is the end mark, and 20,000,000 samples.
    std::unique_ptr<SmpData> m_data;
};

void TstDataExportJob::initTestCase()
{
    memBudget = std::int64_t(4) << 30;
    configLoad();
    m_data = captureOf(10'000'000);
    QCOMPARE(m_data->smpCount(), 20'000'000);
}

void TstDataExportJob::aBackgroundExportWritesWhatADirectOneWrites()
{
    QFETCH(int, job);
    const bool text = Mode(job) == Mode::ExportText;
    const QByteArray direct = exported(*m_data, Mode(job), allOf(*m_data), 0, 300'000);
    Job behind(*m_data, Mode(job), 300'000);
    QVERIFY(behind.opened && behind.runWithDialog(Mode(job)));
    behind.file.close();
    QVERIFY(behind.file.open(text ? QIODevice::ReadOnly | QIODevice::Text : QIODevice::ReadOnly));
    QVERIFY(behind.file.readAll() == direct);
    QCOMPARE(direct.size(), text ? 96 + 36 * 150'001 : 300'000);
}

void TstDataExportJob::theHeaderIsMadeOnTheMainThread()
{
    globalSet(QStringLiteral("chnShowName0"), QStringLiteral("as it was at the start"));
    // From the moment when there is a dialog, the configuration is this thread's alone.
    Job job(*m_data, Mode::ExportText, 300'000, [](const QString &, const QString &, const QString &) {
        globalSet(QStringLiteral("chnShowName0"), QStringLiteral("changed"));
        return nullptr;
    });
    QVERIFY(job.opened && job.runWithDialog(Mode::ExportText));
    globalSet(QStringLiteral("chnShowName0"), QString());
    job.file.close();
    QVERIFY(job.file.open(QIODevice::ReadOnly));
    QVERIFY(job.file.readLine().startsWith("Time[s], as it was at the start, Channel 1"));
}

void TstDataExportJob::theDialogHasTheTextsOfASave()
{
    QFETCH(int, job);
    DialogLog log;
    Job file(*m_data, Mode(job), 1000, scripted(log, acceptAtTheEnd));
    QVERIFY(file.opened && file.runWithDialog(Mode(job)));
    QCOMPARE(log.texts, QStringList({QStringLiteral("Save File"), QStringLiteral("Saving file, please wait..."),
                                     QStringLiteral("Cancel")}));
    QCOMPARE(log.reports, (std::vector<int>{100}));
    QVERIFY(!log.wrongThread);
}

void TstDataExportJob::aTextReportsByEntries()
{
    std::vector<int> reports;
    Job job(*m_data, Mode::ExportText, 200'000);
    QCOMPARE(job.workTotal, 100'001);
    collect(job, reports);
    QVERIFY(job.runWithDialog(Mode::ExportText));
    QCOMPARE(reports, (std::vector<int>{20, 40, 60, 80, 99, 100}));
}

void TstDataExportJob::aDumpReportsBySamples()
{
    std::vector<int> reports;
    Job job(*m_data, Mode::ExportBinary, 11'000'000);
    collect(job, reports);
    QVERIFY(job.runWithDialog(Mode::ExportBinary));
    QCOMPARE(reports, (std::vector<int>{20, 40, 60, 80, 99, 100}));
}

void TstDataExportJob::aFailedExportClosesItsDialog()
{
    QFETCH(int, job);
    DialogLog log;
    Job file(*m_data, Mode(job), 1000, scripted(log, acceptAtTheEnd));
    file.file.close();
    QVERIFY(!file.runWithDialog(Mode(job)));
    QCOMPARE(log.reports, (std::vector<int>{100}));
}

void TstDataExportJob::aRejectedDialogCancelsTheRunningExport()
{
    QFETCH(int, job);
    DialogLog log;
    Crossing crossing;
    std::vector<int> reports;
    Job file(*m_data, Mode(job), 20'000'000, scripted(log, crossing.script()));
    collect(file, reports, [&](int) { crossing.holdUntilCancelled(file); });
    QVERIFY(file.opened && !file.runWithDialog(Mode(job)));
    // It ends in the piece of its first report, and makes no other one.
    QCOMPARE(reports.size(), std::size_t(1));
    QVERIFY(reports[0] > 0 && reports[0] < 100);
    const bool text = Mode(job) == Mode::ExportText;
    const qint64 first = text ? 100'000 * 36 : 2'000'000; // bytes until the first whole percent, or unit
    QVERIFY(file.written() >= first && file.written() < first + 2 * dataWritePiece);
    QVERIFY(m_data->complete());
}

void TstDataExportJob::aDumpOfALongQuietCaptureIsCancelledAtOnce()
{
    DialogLog log;
    Crossing crossing;
    std::vector<int> reports;
    const auto quiet = CaptureBuilder(8).samples(200'000'000).channel(0, 1).build();
    Job file(*quiet, Mode::ExportBinary, 200'000'000, scripted(log, crossing.script()));
    collect(file, reports, [&](int) { crossing.holdUntilCancelled(file); });
    QVERIFY(file.opened && !file.runWithDialog(Mode::ExportBinary));
    QCOMPARE(reports, (std::vector<int>{1}));
    QVERIFY(file.written() < 2'000'000 + dataWritePiece);
}

void TstDataExportJob::theSizeDecidesHowAJobRuns_data()
{
    QTest::addColumn<int>("job");
    QTest::addColumn<int>("samples");
    QTest::addColumn<bool>("thread");
    QTest::addColumn<int>("dialogs");
    // The entries of 2 n samples are n and the end mark.
    const auto row = [](const char *name, Mode job, int samples, bool thread, int dialogs) {
        QTest::newRow(name) << int(job) << samples << thread << dialogs;
    };
    row("a small text", Mode::ExportText, 2 * 19'998, false, 0);
    row("a text between", Mode::ExportText, 2 * 19'999, true, 0);
    row("a text just below", Mode::ExportText, 2 * 199'998, true, 0);
    row("a big text", Mode::ExportText, 2 * 199'999, true, 1);
    row("a small dump", Mode::ExportBinary, 1'999'999, false, 0);
    row("a small dump of nearly a million changes", Mode::ExportBinary, 1'999'997, false, 0);
    row("a small dump of a million changes", Mode::ExportBinary, 1'999'999, true, 0);
    row("a dump between", Mode::ExportBinary, 2'000'000, true, 0);
    row("a dump just below", Mode::ExportBinary, 19'999'999, true, 0);
    row("a big dump", Mode::ExportBinary, 20'000'000, true, 1);
    row("a small save", Mode::SaveData, 2 * 999'998, false, 0);
    row("a save between", Mode::SaveData, 2 * 999'999, true, 0);
    row("a save just below", Mode::SaveData, 2 * 9'999'998, true, 0);
    row("a big save", Mode::SaveData, 2 * 9'999'999, true, 1);
}

void TstDataExportJob::theSizeDecidesHowAJobRuns()
{
    QFETCH(int, job);
    QFETCH(int, samples);
    QFETCH(bool, thread);
    QFETCH(int, dialogs);
    DialogLog log;
    std::vector<int> reports;
    std::atomic<bool> elsewhere{false};
    // The changes count only for the rows that tell of them.
    const bool quiet = Mode(job) == Mode::ExportBinary &&
                       !QString::fromLatin1(QTest::currentDataTag()).contains(QStringLiteral("changes"));
    const auto still = CaptureBuilder(8).samples(20'000'000).channel(0, 1, {5}).build();
    Job file(quiet ? *still : *m_data, Mode(job), samples, scripted(log, acceptAtTheEnd));
    collect(file, reports,
            [&](int) { elsewhere = QThread::currentThread() != QCoreApplication::instance()->thread(); });
    QVERIFY(file.opened && file.runJob(Mode(job)));
    QCOMPARE(elsewhere.load(), thread);
    QCOMPARE(log.texts.size(), 3 * dialogs);
    QCOMPARE(reports.back(), 100);
    QVERIFY(file.written() > 0);
}

void TstDataExportJob::theWindowIsServedWhileAJobRunsAside()
{
    DialogLog log;
    std::vector<int> reports;
    std::atomic<bool> served{false};
    Job job(*m_data, Mode::ExportText, 200'000, scripted(log, acceptAtTheEnd));
    job.dialogDelay = 1'000'000; // however slow the machine is
    collect(job, reports, [&served](int) {
        while (!served) {
            std::this_thread::yield();
        }
    });
    QTimer::singleShot(0, this, [&served] { served = true; });
    QVERIFY(job.runJob(Mode::ExportText));
    QVERIFY(served);
    QCOMPARE(log.texts.size(), 0);
}

void TstDataExportJob::aJobAsideThatTakesLongGetsItsDialog()
{
    DialogLog log;
    std::vector<int> reports;
    std::atomic<bool> shown{false};
    Job job(*m_data, Mode::ExportText, 200'000, scripted(log, [&shown](ScriptedDialog &dialog) {
        shown = true;
        return dialog.runToTheEnd();
    }));
    job.dialogDelay = 0;
    collect(job, reports, [&shown](int percent) {
        while (percent == 60 && !shown) {
            std::this_thread::yield();
        }
    });
    QVERIFY(job.runJob(Mode::ExportText));
    QCOMPARE(log.texts.size(), 3);
    QVERIFY(!log.wrongThread);
    // First it is told how far the job has come, and all that follows.
    QVERIFY(log.reports.size() >= 4 && log.reports[0] <= 60);
    QCOMPARE(std::vector<int>(log.reports.end() - 3, log.reports.end()), (std::vector<int>{80, 99, 100}));
    QCOMPARE(log.open, 0);
}

void TstDataExportJob::aJobAsideIsCancelledByItsLateDialog()
{
    DialogLog log;
    Crossing crossing;
    std::vector<int> reports;
    Job job(*m_data, Mode::ExportText, 200'000, scripted(log, crossing.script()));
    job.dialogDelay = 0;
    collect(job, reports, [&](int) { crossing.holdUntilCancelled(job); });
    QVERIFY(!job.runJob(Mode::ExportText));
    QCOMPARE(reports, (std::vector<int>{20}));
    QVERIFY(job.written() < 2 * 20'000 * 36);
}

void TstDataExportJob::aJobAsideWithoutDialogsIsWaitedFor()
{
    Job job(*m_data, Mode::ExportBinary, 3'000'000);
    int events = 0;
    QTimer::singleShot(0, this, [&events] { ++events; });
    QVERIFY(job.runJob(Mode::ExportBinary));
    QCOMPARE(job.written(), 3'000'000);
    QCOMPARE(events, 0);
}

void TstDataExportJob::aJobThatDoesNotWriteIsRefused()
{
    Job job(*m_data, Mode::ExportBinary, 20'000'000);
    QVERIFY(!job.runJob(Mode::Load));
    QVERIFY(!job.runJob(Mode(9)));
    QCOMPARE(entriesOf(*m_data, 0).size(), std::size_t(10'000'000));
}

QTEST_GUILESS_MAIN(TstDataExportJob)
#include "tst_DataExportJob.moc"
