#include "acquisition/MemBudget.h"
#include "acquisition/SmpData.h"
#include "files/DataBlocks.h"
#include "files/DataFile.h"
#include "files/DataFileBytes.h"

#include <QEventLoop>
#include <QFileInfo>
#include <QTest>

#include <functional>
#include <memory>
#include <thread>

using Entries = std::vector<std::int64_t>;

namespace {

/// What the scripted dialogs of one test have seen. Main thread.
struct DialogLog {
    QStringList texts;        ///< title, label and button of each
    std::vector<int> reports; ///< all percentages, in the order of their arrival
    bool wrongThread = false; ///< a report that did not arrive on the main thread
    int open = 0;             ///< dialogs that live
};

/// A dialog that does in exec() what the test says.
class ScriptedDialog : public JobDialog {
public:
    using Script = std::function<bool(ScriptedDialog &)>;

    ScriptedDialog(DialogLog &log, Script script) : m_log(log), m_script(std::move(script)) { ++m_log.open; }
    ~ScriptedDialog() override { --m_log.open; }
    ScriptedDialog(const ScriptedDialog &) = delete;
    ScriptedDialog &operator=(const ScriptedDialog &) = delete;

    void setProgress(int percent) override
    {
        m_log.wrongThread |= QThread::currentThread() != QCoreApplication::instance()->thread();
        m_log.reports.push_back(percent);
        if (percent == 100)
            m_loop.exit();
    }
    bool exec() override { return m_script(*this); }
    /// Processes events until 100 has arrived.
    bool runToTheEnd()
    {
        m_loop.exec();
        return true;
    }

private:
    DialogLog &m_log;
    Script m_script;
    QEventLoop m_loop;
};

JobDialogFactory scripted(DialogLog &log, ScriptedDialog::Script script)
{
    return [&log, script](const QString &title, const QString &label, const QString &button) {
        log.texts << title << label << button;
        return std::make_unique<ScriptedDialog>(log, script);
    };
}

const ScriptedDialog::Script acceptAtTheEnd = [](ScriptedDialog &dialog) { return dialog.runToTheEnd(); };

/// Brings the dialog's rejection and a certain report of the job together.
class Crossing {
public:
    /// A dialog that is rejected as soon as the job stands in its report.
    [[nodiscard]] ScriptedDialog::Script script()
    {
        return [this](ScriptedDialog &) {
            while (!m_inReport)
                std::this_thread::yield();
            return false;
        };
    }
    /// On the job's thread, within a report: goes on only when the main thread has cancelled the job.
    void holdUntilCancelled(const DataFile &file)
    {
        m_inReport = true;
        while (file.cancelled.load() == 0)
            std::this_thread::yield();
    }

private:
    std::atomic<bool> m_inReport{false};
};

/// A small data file's binary part.
QByteArray smallPart()
{
    return DataFileBytes(8).block(0, 0, {5, 1000}).bytes();
}

/// A capture of `entries` entries in channel 0, the end mark included.
std::unique_ptr<SmpData> captureOf(int entries)
{
    return CaptureBuilder(8).samples(2 * std::int64_t(entries)).channel(0, 0, stairs(1, 2, entries - 1)).build();
}

/// Collects the reports on the thread that makes them; `then` runs there after each.
void collect(DataFile &file, std::vector<int> &reports, std::function<void(int)> then = {})
{
    QObject::connect(&file, &DataFile::sigReportProgress, [&reports, then](int percent) {
        reports.push_back(percent);
        if (then)
            then(percent);
    });
}

} // namespace

/// Jobs on the thread of their own: progress, cancel, and the dialog in front of them.
class TstDataFileJob : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void thePercentageCountsWholeUnitsAndStopsAtNinetyNine_data();
    void thePercentageCountsWholeUnitsAndStopsAtNinetyNine();
    void aFileLoadsBehindTheDialogFromTheLimitOn_data();
    void aFileLoadsBehindTheDialogFromTheLimitOn();
    void theDialogHasTheTextsOfItsJob_data();
    void theDialogHasTheTextsOfItsJob();
    void reportsRiseToOneHundredOnTheMainThread();
    void aSaveInTheBackgroundReportsByEntries();
    void aDirectJobReportsNothingButTheEnd();
    void aFailedJobClosesItsDialog_data();
    void aFailedJobClosesItsDialog();
    void aRefusedHeadClosesTheDialogAndKeepsTheCapture();
    void withoutADialogTheJobIsWaitedFor_data();
    void withoutADialogTheJobIsWaitedFor();
    void aModeWithoutAJobFails_data();
    void aModeWithoutAJobFails();
    void aCancelledLoadStopsWithinOnePieceWithoutAReport();
    void aCancelledSaveStopsWithinOnePieceAndLeavesAPartialFile();
    void aRejectedDialogCancelsTheRunningLoadAndEmptiesTheStore();
    void aRejectedDialogCancelsTheRunningSave();
    void aCancelThatCrossesTheEndOfTheJobIsTooLate();
    void aDialogRejectedBehindTheEndOfTheJobCancelsNothing();
    void aCancelOfAnEarlierJobIsForgotten();
    void readersAreRefusedWhileALoadRunsAndAdmittedAfterIt();
    void aLoadWaitsForTheReadersOfTheFormerCapture();
    void aSaveKeepsItsCaptureReadable();
    void destroyingTheObjectEndsAJobThatStillRuns();

private:
    /// Opens the big file at its binary part, for a job that is started by hand.
    void openBig(DataFile &file);

    static constexpr int bigEntries = 10'000'000;
    FileFolder m_folder;
    QString m_big; ///< loads behind the dialog: a little above the limit
};

void TstDataFileJob::initTestCase()
{
    memBudget = std::int64_t(4) << 30;
    m_big = m_folder.write(
        DataFileBytes(8).samples(2 * std::int64_t(bigEntries)).block(0, 0, stairs(1, 2, bigEntries)).bytes(),
        QStringLiteral("big.cxdat"));
    QVERIFY(!m_big.isEmpty());
}

void TstDataFileJob::openBig(DataFile &file)
{
    file.file.setFileName(m_big);
    QVERIFY(file.file.open(QIODevice::ReadOnly));
}

void TstDataFileJob::thePercentageCountsWholeUnitsAndStopsAtNinetyNine_data()
{
    QTest::addColumn<qint64>("done");
    QTest::addColumn<qint64>("total");
    QTest::addColumn<int>("percent");
    QTest::newRow("nothing") << qint64(0) << qint64(50) << 0;
    QTest::newRow("below one unit") << qint64(4) << qint64(50) << 0;
    QTest::newRow("one unit") << qint64(5) << qint64(50) << 10;
    QTest::newRow("between units") << qint64(14) << qint64(50) << 20;
    QTest::newRow("total between units") << qint64(25) << qint64(54) << 50;
    QTest::newRow("not a whole percent") << qint64(5) << qint64(35) << 14;
    QTest::newRow("all") << qint64(50) << qint64(50) << 99;
    QTest::newRow("beyond") << qint64(500) << qint64(50) << 99;
    QTest::newRow("a total below one unit") << qint64(4) << qint64(4) << 0;
    QTest::newRow("no total") << qint64(100) << qint64(0) << 0;
    QTest::newRow("huge") << (qint64(5) << 45) << (qint64(10) << 45) << 50;
}

void TstDataFileJob::thePercentageCountsWholeUnitsAndStopsAtNinetyNine()
{
    QFETCH(qint64, done);
    QFETCH(qint64, total);
    QFETCH(int, percent);
    QCOMPARE(DataFile::percentOf(done, total, 5), percent);
}

void TstDataFileJob::aFileLoadsBehindTheDialogFromTheLimitOn_data()
{
    QTest::addColumn<qint64>("size");
    QTest::addColumn<int>("dialogs");
    QTest::newRow("small") << qint64(1000) << 0;
    QTest::newRow("one byte below") << qint64(DataFile::backgroundLoadSize - 1) << 0;
    QTest::newRow("at the limit") << qint64(DataFile::backgroundLoadSize) << 1;
}

void TstDataFileJob::aFileLoadsBehindTheDialogFromTheLimitOn()
{
    QFETCH(qint64, size);
    QFETCH(int, dialogs);
    // What stands in front of the binary part counts too.
    const qint64 headSize = size - smallPart().size();
    const QString path = m_folder.write(QByteArray(int(headSize), '\n') + smallPart());
    DialogLog log;
    SmpData data(8, 0);
    DataFile file(&data, scripted(log, acceptAtTheEnd));
    QVERIFY(file.loadData(path, headSize));
    QCOMPARE(log.texts.size(), 3 * dialogs);
    QCOMPARE(log.open, 0);
    QCOMPARE(entriesOf(data, 0), (Entries{5, 1000}));
}

void TstDataFileJob::theDialogHasTheTextsOfItsJob_data()
{
    QTest::addColumn<int>("job");
    QTest::addColumn<QStringList>("texts");
    const QString cancel = QStringLiteral("Cancel");
    const QStringList load{QStringLiteral("Open File"), QStringLiteral("Loading file, please wait..."), cancel};
    const QStringList save{QStringLiteral("Save File"), QStringLiteral("Saving file, please wait..."), cancel};
    QTest::newRow("load") << 0 << load;
    QTest::newRow("save") << 1 << save;
    QTest::newRow("any other") << 9 << save;
}

void TstDataFileJob::theDialogHasTheTextsOfItsJob()
{
    QFETCH(int, job);
    QFETCH(QStringList, texts);
    DialogLog log;
    const auto data = captureOf(2);
    DataFile file(data.get(), scripted(log, acceptAtTheEnd));
    QVERIFY(!file.runWithDialog(DataFile::Mode(job))); // no file is open
    QCOMPARE(log.texts, texts);
}

void TstDataFileJob::reportsRiseToOneHundredOnTheMainThread()
{
    DialogLog log;
    SmpData data(8, 0);
    DataFile file(&data, scripted(log, acceptAtTheEnd));
    QVERIFY(file.loadData(m_big, 0));
    QVERIFY(!log.wrongThread);
    QCOMPARE(log.reports, (std::vector<int>{10, 20, 30, 40, 50, 60, 70, 80, 90, 99, 100}));
    QVERIFY(data.complete);
    QCOMPARE(data.entryCount(0), bigEntries + 1);
    QVERIFY(!file.file.isOpen());
}

void TstDataFileJob::aSaveInTheBackgroundReportsByEntries()
{
    DialogLog log;
    const auto data = captureOf(3'000'000);
    const std::vector<std::uint8_t> select(8, 1);
    DataFile file(data.get(), scripted(log, acceptAtTheEnd));
    file.chnSelect = select.data();
    file.setRange(0, double(data->smpCount));
    QCOMPARE(file.edgeTotal(), 3'000'000);
    file.file.setFileName(m_folder.path(QStringLiteral("saved.cxdat")));
    QVERIFY(file.file.open(QIODevice::WriteOnly));
    QVERIFY(file.runWithDialog(DataFile::Mode::SaveData));
    QVERIFY(!log.wrongThread);
    QCOMPARE(log.reports, (std::vector<int>{33, 66, 99, 100}));
    QCOMPARE(file.file.size(), 40 + 16 + 5 * 3'000'000);
}

void TstDataFileJob::aDirectJobReportsNothingButTheEnd()
{
    std::vector<int> reports;
    SmpData data(8, 0);
    DataFile file(&data);
    collect(file, reports);
    QVERIFY(
        file.loadData(m_folder.write(DataFileBytes(8).samples(900'000).block(0, 0, stairs(1, 1, 800'000)).bytes()), 0));
    QCOMPARE(reports, (std::vector<int>{100}));
    const std::vector<std::uint8_t> select(8, 1);
    file.chnSelect = select.data();
    file.setRange(0, 900'000);
    file.file.setFileName(m_folder.path(QStringLiteral("saved.cxdat")));
    QVERIFY(file.file.open(QIODevice::WriteOnly));
    QVERIFY(file.saveData());
    QCOMPARE(reports, (std::vector<int>{100, 100}));
}

void TstDataFileJob::aFailedJobClosesItsDialog_data()
{
    QTest::addColumn<int>("job");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("load of a closed file") << 0 << QByteArray();
    QTest::newRow("load of a bad head") << 0 << QByteArray("<settings/>");
    QTest::newRow("load of a cut block") << 0 << smallPart().chopped(1);
    QTest::newRow("save to a file open for reading") << 1 << smallPart();
    QTest::newRow("unknown job") << 9 << smallPart();
}

void TstDataFileJob::aFailedJobClosesItsDialog()
{
    QFETCH(int, job);
    QFETCH(QByteArray, bytes);
    DialogLog log;
    const auto data = captureOf(2);
    DataFile file(data.get(), scripted(log, acceptAtTheEnd));
    file.file.setFileName(m_folder.write(bytes));
    QVERIFY(bytes.isEmpty() || file.file.open(QIODevice::ReadOnly));
    QVERIFY(!file.runWithDialog(DataFile::Mode(job)));
    QCOMPARE(log.reports, (std::vector<int>{100}));
}

void TstDataFileJob::aRefusedHeadClosesTheDialogAndKeepsTheCapture()
{
    DialogLog log;
    auto data = CaptureBuilder(16).channel(0, 0, {7}).build(); // the file is of a model with 8
    DataFile file(data.get(), scripted(log, acceptAtTheEnd));
    QVERIFY(!file.loadData(m_big, 0));
    QCOMPARE(log.reports, (std::vector<int>{100}));
    QVERIFY(data->complete);
    QCOMPARE(entriesOf(*data, 0), (Entries{7, 1000}));
}

void TstDataFileJob::withoutADialogTheJobIsWaitedFor_data()
{
    QTest::addColumn<bool>("factory");
    QTest::newRow("no factory") << false;
    QTest::newRow("a factory that makes none") << true;
}

void TstDataFileJob::withoutADialogTheJobIsWaitedFor()
{
    QFETCH(bool, factory);
    SmpData data(8, 0);
    const JobDialogFactory none = [](const QString &, const QString &, const QString &) { return nullptr; };
    DataFile file(&data, factory ? none : JobDialogFactory());
    int events = 0; // handled while the load runs
    QMetaObject::invokeMethod(
        &file, [&events] { ++events; }, Qt::QueuedConnection);
    QVERIFY(file.loadData(m_big, 0));
    QCOMPARE(data.entryCount(0), bigEntries + 1);
    QCOMPARE(events, 0);
}

void TstDataFileJob::aModeWithoutAJobFails_data()
{
    QTest::addColumn<int>("job");
    QTest::newRow("above") << 9;
    QTest::newRow("below") << -1;
}

void TstDataFileJob::aModeWithoutAJobFails()
{
    QFETCH(int, job);
    const auto data = captureOf(2);
    DataFile file(data.get());
    file.file.setFileName(m_folder.path(QStringLiteral("saved.cxdat")));
    QVERIFY(file.file.open(QIODevice::WriteOnly));
    QVERIFY(file.runWithDialog(DataFile::Mode::SaveData));
    QVERIFY(!file.runWithDialog(DataFile::Mode(job)));
    QCOMPARE(entriesOf(*data, 0), (Entries{1, 4}));
}

void TstDataFileJob::aCancelledLoadStopsWithinOnePieceWithoutAReport()
{
    std::vector<int> reports;
    SmpData data(8, 0);
    DataFile file(&data);
    std::int64_t cancelledAt = 0;
    collect(file, reports, [&](int percent) {
        if (percent == 20) {
            file.cancelled = 1;
            cancelledAt = file.file.pos();
        }
    });
    openBig(file);
    QVERIFY(!file.runWithDialog(DataFile::Mode::Load));
    QCOMPARE(reports, (std::vector<int>{10, 20}));
    QVERIFY(cancelledAt >= 10'000'000 && cancelledAt < 10'000'000 + dataReadPiece);
    QCOMPARE(file.file.pos(), cancelledAt);
    QVERIFY(!data.complete);
}

void TstDataFileJob::aCancelledSaveStopsWithinOnePieceAndLeavesAPartialFile()
{
    std::vector<int> reports;
    const auto data = captureOf(3'000'000);
    const std::vector<std::uint8_t> select(8, 1);
    DataFile file(data.get());
    collect(file, reports, [&file](int percent) { file.cancelled = percent == 33; });
    file.chnSelect = select.data();
    file.setRange(0, double(data->smpCount));
    QCOMPARE(file.edgeTotal(), 3'000'000);
    const QString path = m_folder.path(QStringLiteral("saved.cxdat"));
    file.file.setFileName(path);
    QVERIFY(file.file.open(QIODevice::WriteOnly));
    QVERIFY(!file.runWithDialog(DataFile::Mode::SaveData));
    QCOMPARE(reports, (std::vector<int>{33}));
    const qint64 written = QFileInfo(path).size();
    QVERIFY(written >= 5'000'000 && written < 5'000'000 + dataReadPiece);
    QVERIFY(data->complete);
}

void TstDataFileJob::aRejectedDialogCancelsTheRunningLoadAndEmptiesTheStore()
{
    DialogLog log;
    Crossing crossing;
    std::vector<int> reports;
    auto data = captureOf(2);
    DataFile file(data.get(), scripted(log, crossing.script()));
    collect(file, reports, [&](int) { crossing.holdUntilCancelled(file); });
    QVERIFY(!file.loadData(m_big, 0));
    QCOMPARE(reports, (std::vector<int>{10}));
    QCOMPARE(log.reports, std::vector<int>());
    QCOMPARE(log.open, 0);
    QVERIFY(data->complete);
    QCOMPARE(data->smpCount, 0);
    QVERIFY(data->chnRoots[0] == nullptr);
}

void TstDataFileJob::aRejectedDialogCancelsTheRunningSave()
{
    DialogLog log;
    Crossing crossing;
    std::vector<int> reports;
    const auto data = captureOf(3'000'000);
    const std::vector<std::uint8_t> select(8, 1);
    DataFile file(data.get(), scripted(log, crossing.script()));
    collect(file, reports, [&](int) { crossing.holdUntilCancelled(file); });
    file.chnSelect = select.data();
    file.setRange(0, double(data->smpCount));
    QCOMPARE(file.edgeTotal(), 3'000'000);
    file.file.setFileName(m_folder.path(QStringLiteral("saved.cxdat")));
    QVERIFY(file.file.open(QIODevice::WriteOnly));
    QVERIFY(!file.runWithDialog(DataFile::Mode::SaveData));
    QCOMPARE(reports, (std::vector<int>{33}));
    QVERIFY(data->complete);
    QCOMPARE(data->entryCount(0), 3'000'000);
}

void TstDataFileJob::aCancelThatCrossesTheEndOfTheJobIsTooLate()
{
    DialogLog log;
    Crossing crossing;
    std::vector<int> reports;
    SmpData data(8, 0);
    DataFile file(&data, scripted(log, crossing.script()));
    collect(file, reports, [&](int percent) {
        if (percent == 100)
            crossing.holdUntilCancelled(file);
    });
    QVERIFY(file.loadData(m_big, 0));
    QCOMPARE(file.cancelled.load(), 1);
    QCOMPARE(data.entryCount(0), bigEntries + 1);
    QCOMPARE(log.reports, std::vector<int>());
}

void TstDataFileJob::aDialogRejectedBehindTheEndOfTheJobCancelsNothing()
{
    DialogLog log;
    SmpData data(8, 0);
    DataFile *job = nullptr;
    DataFile file(&data, scripted(log, [&job](ScriptedDialog &) {
        job->wait();
        return false;
    }));
    job = &file;
    QVERIFY(file.loadData(m_big, 0));
    QCOMPARE(file.cancelled.load(), 0);
    QCOMPARE(data.entryCount(0), bigEntries + 1);
}

void TstDataFileJob::aCancelOfAnEarlierJobIsForgotten()
{
    SmpData data(8, 0);
    DataFile file(&data);
    const auto cancel = QObject::connect(&file, &DataFile::sigReportProgress, [&file](int) { file.cancelled = 1; });
    QVERIFY(!file.loadData(m_big, 0));
    QObject::disconnect(cancel);
    QVERIFY2(file.loadData(m_folder.write(smallPart()), 0), "a direct job does not look at the flag");
    QVERIFY2(file.loadData(m_big, 0), "one in the background begins with a fresh one");
    QCOMPARE(data.entryCount(0), bigEntries + 1);
}

void TstDataFileJob::readersAreRefusedWhileALoadRunsAndAdmittedAfterIt()
{
    std::vector<int> reports;
    auto data = captureOf(2);
    DataFile file(data.get());
    int admitted = 0;
    collect(file, reports, [&](int) { admitted += bool(SmpReadLock(data.get())) + (data->sampleCount() != 0); });
    QVERIFY(bool(SmpReadLock(data.get())));
    QVERIFY(file.loadData(m_big, 0));
    QCOMPARE(reports.size(), std::size_t(11));
    QCOMPARE(admitted, 0);
    QVERIFY(bool(SmpReadLock(data.get())));
}

void TstDataFileJob::aLoadWaitsForTheReadersOfTheFormerCapture()
{
    auto data = CaptureBuilder(8).channel(0, 0, {7}).build();
    const QString path = m_folder.write(smallPart());
    std::atomic<bool> reading{false};
    Entries seen;
    std::thread reader([&] {
        const SmpReadLock lock(data.get());
        reading = bool(lock);
        while (data->complete)
            std::this_thread::yield();
        seen = entriesOf(*data, 0); // the load waits by now
    });
    while (!reading)
        std::this_thread::yield();
    DataFile file(data.get());
    const bool loaded = file.loadData(path, 0);
    reader.join();
    QVERIFY(loaded);
    QCOMPARE(seen, (Entries{7, 1000}));
    QCOMPARE(entriesOf(*data, 0), (Entries{5, 1000}));
}

void TstDataFileJob::aSaveKeepsItsCaptureReadable()
{
    std::vector<int> reports;
    const auto data = captureOf(1000);
    const std::vector<std::uint8_t> select(8, 1);
    DataFile file(data.get());
    int admitted = 0;
    collect(file, reports, [&](int) { admitted += bool(SmpReadLock(data.get())); });
    file.chnSelect = select.data();
    file.setRange(0, double(data->smpCount));
    file.file.setFileName(m_folder.path(QStringLiteral("saved.cxdat")));
    QVERIFY(file.file.open(QIODevice::WriteOnly));
    QVERIFY(file.runWithDialog(DataFile::Mode::SaveData));
    QCOMPARE(reports, (std::vector<int>{100}));
    QCOMPARE(admitted, 1);
}

void TstDataFileJob::destroyingTheObjectEndsAJobThatStillRuns()
{
    SmpData data(8, 0);
    Crossing crossing;
    bool held = false;
    {
        DataFile file(&data);
        QObject::connect(&file, &DataFile::sigReportProgress, [&](int) {
            crossing.holdUntilCancelled(file);
            held = true;
        });
        file.start(); // nothing is open: the job fails, and is held in its last report
    }
    QVERIFY(held);
}

QTEST_GUILESS_MAIN(TstDataFileJob)
#include "tst_DataFileJob.moc"
