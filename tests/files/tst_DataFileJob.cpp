#include "files/DataBlocks.h"
#include "files/DataFile.h"
#include "files/DataFileBytes.h"
#include "files/ScriptedDialog.h"
#include "store/MemBudget.h"
#include "store/SmpData.h"

#include <QFileInfo>
#include <QMetaMethod>
#include <QTest>
#include <QVector>

#include <atomic>

using Entries = std::vector<std::int64_t>;

/// Jobs on the thread of their own: progress, and the dialog in front of them.
class TstDataFileJob : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void thePercentageCountsWholeUnitsAndStopsAtNinetyNine_data();
    void thePercentageCountsWholeUnitsAndStopsAtNinetyNine();
    void aFileLoadsBehindTheDialogFromTheLimitOn_data();
    void aFileLoadsBehindTheDialogFromTheLimitOn();
    void theEndOfAJobIsListenedForBeforeItBegins();
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

private:
    BigFile m_big;
};

void TstDataFileJob::initTestCase()
{
    memBudget = std::int64_t(4) << 30;
    QVERIFY(!m_big.path.isEmpty());
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
    QTest::addColumn<bool>("thread");
    QTest::addColumn<int>("dialogs");
    const qint64 limit = DataFile::backgroundLoadSize;
    QTest::newRow("small") << qint64(1000) << false << 0;
    QTest::newRow("one byte below a tenth") << limit / DataFile::asidePart - 1 << false << 0;
    QTest::newRow("a tenth") << limit / DataFile::asidePart << true << 0;
    QTest::newRow("one byte below") << limit - 1 << true << 0;
    QTest::newRow("at the limit") << limit << true << 1;
}

void TstDataFileJob::aFileLoadsBehindTheDialogFromTheLimitOn()
{
    QFETCH(qint64, size);
    QFETCH(bool, thread);
    QFETCH(int, dialogs);
    // What stands in front of the binary part counts too.
    const qint64 headSize = size - smallPart().size();
    const QString path = m_big.folder.write(QByteArray(int(headSize), '\n') + smallPart());
    DialogLog log;
    SmpData data(8, 0);
    std::vector<int> reports;
    std::atomic<bool> elsewhere{false};
    DataFile file(&data, scripted(log, acceptAtTheEnd));
    file.dialogDelay = 1'000'000; // none appears on its own
    collect(file, reports,
            [&](int) { elsewhere = QThread::currentThread() != QCoreApplication::instance()->thread(); });
    QVERIFY(file.loadData(path, headSize));
    QCOMPARE(elsewhere.load(), thread);
    QCOMPARE(log.texts.size(), 3 * dialogs);
    QCOMPARE(log.open, 0);
    QCOMPARE(entriesOf(data, 0), (Entries{5, 1000}));
}

void TstDataFileJob::theEndOfAJobIsListenedForBeforeItBegins()
{
    // A job may end as soon as it has begun, and its end is told once.
    class Watched final : public DataFile {
    public:
        using DataFile::DataFile;
        QVector<QByteArray> inTime;
        QVector<QByteArray> late;

    protected:
        void connectNotify(const QMetaMethod &signal) override
        {
            (isRunning() || isFinished() ? late : inTime).append(signal.name());
        }
    };
    const qint64 headSize = DataFile::backgroundLoadSize / DataFile::asidePart;
    DialogLog log;
    SmpData data(8, 0);
    Watched file(&data, scripted(log, acceptAtTheEnd));
    QVERIFY(file.loadData(m_big.folder.write(QByteArray(int(headSize), '\n') + smallPart()), headSize));
    QVERIFY(file.inTime.contains("sigJobEnded"));
    QCOMPARE(file.late, QVector<QByteArray>());
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
    QVERIFY(file.loadData(m_big.path, 0));
    QVERIFY(!log.wrongThread);
    QCOMPARE(log.reports, (std::vector<int>{10, 20, 30, 40, 50, 60, 70, 80, 90, 99, 100}));
    QVERIFY(data.complete());
    QCOMPARE(data.entryCount(0), BigFile::entries + 1);
    QVERIFY(!file.file.isOpen());
}

void TstDataFileJob::aSaveInTheBackgroundReportsByEntries()
{
    DialogLog log;
    const auto data = captureOf(3'000'000);
    const std::vector<std::uint8_t> select(8, 1);
    DataFile file(data.get(), scripted(log, acceptAtTheEnd));
    file.chnSelect = select.data();
    file.setRange(0, double(data->smpCount()));
    QCOMPARE(file.edgeTotal(), 3'000'000);
    file.file.setFileName(m_big.folder.path(QStringLiteral("saved.cxdat")));
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
    QVERIFY(file.loadData(
        m_big.folder.write(DataFileBytes(8).samples(900'000).block(0, 0, stairs(1, 1, 800'000)).bytes()), 0));
    QCOMPARE(reports, (std::vector<int>{100}));
    const std::vector<std::uint8_t> select(8, 1);
    file.chnSelect = select.data();
    file.setRange(0, 900'000);
    file.file.setFileName(m_big.folder.path(QStringLiteral("saved.cxdat")));
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
    file.file.setFileName(m_big.folder.write(bytes));
    QVERIFY(bytes.isEmpty() || file.file.open(QIODevice::ReadOnly));
    QVERIFY(!file.runWithDialog(DataFile::Mode(job)));
    QCOMPARE(log.reports, (std::vector<int>{100}));
}

void TstDataFileJob::aRefusedHeadClosesTheDialogAndKeepsTheCapture()
{
    DialogLog log;
    auto data = CaptureBuilder(16).channel(0, 0, {7}).build(); // the file is of a model with 8
    DataFile file(data.get(), scripted(log, acceptAtTheEnd));
    QVERIFY(!file.loadData(m_big.path, 0));
    QCOMPARE(log.reports, (std::vector<int>{100}));
    QVERIFY(data->complete());
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
    QVERIFY(file.loadData(m_big.path, 0));
    QCOMPARE(data.entryCount(0), BigFile::entries + 1);
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
    file.file.setFileName(m_big.folder.path(QStringLiteral("saved.cxdat")));
    QVERIFY(file.file.open(QIODevice::WriteOnly));
    QVERIFY(file.runWithDialog(DataFile::Mode::SaveData));
    QVERIFY(!file.runWithDialog(DataFile::Mode(job)));
    QCOMPARE(entriesOf(*data, 0), (Entries{1, 4}));
}

QTEST_GUILESS_MAIN(TstDataFileJob)
#include "tst_DataFileJob.moc"
