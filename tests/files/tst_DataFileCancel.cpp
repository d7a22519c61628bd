#include "files/DataBlocks.h"
#include "files/DataFile.h"
#include "files/DataFileBytes.h"
#include "files/ScriptedDialog.h"
#include "store/MemBudget.h"
#include "store/SmpData.h"

#include <QFileInfo>
#include <QTest>

#include <atomic>
#include <thread>

using Entries = std::vector<std::int64_t>;

/// Jobs on the thread of their own: cancels at each moment, and the readers of the store meanwhile.
class TstDataFileCancel : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
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
    BigFile m_big;
};

void TstDataFileCancel::initTestCase()
{
    memBudget = std::int64_t(4) << 30;
    QVERIFY(!m_big.path.isEmpty());
}

void TstDataFileCancel::aCancelledLoadStopsWithinOnePieceWithoutAReport()
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
    file.file.setFileName(m_big.path);
    QVERIFY(file.file.open(QIODevice::ReadOnly));
    QVERIFY(!file.runWithDialog(DataFile::Mode::Load));
    QCOMPARE(reports, (std::vector<int>{10, 20}));
    QVERIFY(cancelledAt >= 10'000'000 && cancelledAt < 10'000'000 + dataReadPiece);
    QCOMPARE(file.file.pos(), cancelledAt);
    QVERIFY(!data.complete());
}

void TstDataFileCancel::aCancelledSaveStopsWithinOnePieceAndLeavesAPartialFile()
{
    std::vector<int> reports;
    const auto data = captureOf(3'000'000);
    const std::vector<std::uint8_t> select(8, 1);
    DataFile file(data.get());
    collect(file, reports, [&file](int percent) { file.cancelled = percent == 33; });
    file.chnSelect = select.data();
    file.setRange(0, double(data->smpCount()));
    QCOMPARE(file.edgeTotal(), 3'000'000);
    const QString path = m_big.folder.path(QStringLiteral("saved.cxdat"));
    file.file.setFileName(path);
    QVERIFY(file.file.open(QIODevice::WriteOnly));
    QVERIFY(!file.runWithDialog(DataFile::Mode::SaveData));
    QCOMPARE(reports, (std::vector<int>{33}));
    const qint64 written = QFileInfo(path).size();
    QVERIFY(written >= 5'000'000 && written < 5'000'000 + dataReadPiece);
    QVERIFY(data->complete());
}

void TstDataFileCancel::aRejectedDialogCancelsTheRunningLoadAndEmptiesTheStore()
{
    DialogLog log;
    Crossing crossing;
    std::vector<int> reports;
    auto data = captureOf(2);
    DataFile file(data.get(), scripted(log, crossing.script()));
    collect(file, reports, [&](int) { crossing.holdUntilCancelled(file); });
    QVERIFY(!file.loadData(m_big.path, 0));
    QCOMPARE(reports, (std::vector<int>{10}));
    QCOMPARE(log.reports, std::vector<int>());
    QCOMPARE(log.open, 0);
    QVERIFY(data->complete());
    QCOMPARE(data->smpCount(), 0);
    QVERIFY(data->chnRoots()[0] == nullptr);
}

void TstDataFileCancel::aRejectedDialogCancelsTheRunningSave()
{
    DialogLog log;
    Crossing crossing;
    std::vector<int> reports;
    const auto data = captureOf(3'000'000);
    const std::vector<std::uint8_t> select(8, 1);
    DataFile file(data.get(), scripted(log, crossing.script()));
    collect(file, reports, [&](int) { crossing.holdUntilCancelled(file); });
    file.chnSelect = select.data();
    file.setRange(0, double(data->smpCount()));
    QCOMPARE(file.edgeTotal(), 3'000'000);
    file.file.setFileName(m_big.folder.path(QStringLiteral("saved.cxdat")));
    QVERIFY(file.file.open(QIODevice::WriteOnly));
    QVERIFY(!file.runWithDialog(DataFile::Mode::SaveData));
    QCOMPARE(reports, (std::vector<int>{33}));
    QVERIFY(data->complete());
    QCOMPARE(data->entryCount(0), 3'000'000);
}

void TstDataFileCancel::aCancelThatCrossesTheEndOfTheJobIsTooLate()
{
    DialogLog log;
    Crossing crossing;
    std::vector<int> reports;
    SmpData data(8, 0);
    DataFile file(&data, scripted(log, crossing.script()));
    collect(file, reports, [&](int percent) {
        if (percent == 100) {
            crossing.holdUntilCancelled(file);
        }
    });
    QVERIFY(file.loadData(m_big.path, 0));
    QCOMPARE(file.cancelled.load(), 1);
    QCOMPARE(data.entryCount(0), BigFile::entries + 1);
    QCOMPARE(log.reports, std::vector<int>());
}

void TstDataFileCancel::aDialogRejectedBehindTheEndOfTheJobCancelsNothing()
{
    DialogLog log;
    SmpData data(8, 0);
    DataFile *job = nullptr;
    DataFile file(&data, scripted(log, [&job](ScriptedDialog &) {
        job->wait();
        return false;
    }));
    job = &file;
    QVERIFY(file.loadData(m_big.path, 0));
    QCOMPARE(file.cancelled.load(), 0);
    QCOMPARE(data.entryCount(0), BigFile::entries + 1);
}

void TstDataFileCancel::aCancelOfAnEarlierJobIsForgotten()
{
    SmpData data(8, 0);
    DataFile file(&data);
    const auto cancel = QObject::connect(&file, &DataFile::sigReportProgress, [&file](int) { file.cancelled = 1; });
    QVERIFY(!file.loadData(m_big.path, 0));
    QObject::disconnect(cancel);
    QVERIFY2(file.loadData(m_big.folder.write(smallPart()), 0), "a direct job does not look at the flag");
    QVERIFY2(file.loadData(m_big.path, 0), "one in the background begins with a fresh one");
    QCOMPARE(data.entryCount(0), BigFile::entries + 1);
}

void TstDataFileCancel::readersAreRefusedWhileALoadRunsAndAdmittedAfterIt()
{
    std::vector<int> reports;
    auto data = captureOf(2);
    DataFile file(data.get());
    int admitted = 0;
    collect(file, reports, [&](int) { admitted += bool(SmpReadLock(data.get())) + (data->sampleCount() != 0); });
    QVERIFY(bool(SmpReadLock(data.get())));
    QVERIFY(file.loadData(m_big.path, 0));
    QCOMPARE(reports.size(), std::size_t(11));
    QCOMPARE(admitted, 0);
    QVERIFY(bool(SmpReadLock(data.get())));
}

void TstDataFileCancel::aLoadWaitsForTheReadersOfTheFormerCapture()
{
    auto data = CaptureBuilder(8).channel(0, 0, {7}).build();
    const QString path = m_big.folder.write(smallPart());
    std::atomic<bool> reading{false};
    Entries seen;
    std::thread reader([&] {
        const SmpReadLock lock(data.get());
        reading = bool(lock);
        while (data->complete()) {
            std::this_thread::yield();
        }
        seen = entriesOf(*data, 0); // the load waits by now
    });
    while (!reading) {
        std::this_thread::yield();
    }
    DataFile file(data.get());
    const bool loaded = file.loadData(path, 0);
    reader.join();
    QVERIFY(loaded);
    QCOMPARE(seen, (Entries{7, 1000}));
    QCOMPARE(entriesOf(*data, 0), (Entries{5, 1000}));
}

void TstDataFileCancel::aSaveKeepsItsCaptureReadable()
{
    std::vector<int> reports;
    const auto data = captureOf(1000);
    const std::vector<std::uint8_t> select(8, 1);
    DataFile file(data.get());
    int admitted = 0;
    collect(file, reports, [&](int) { admitted += bool(SmpReadLock(data.get())); });
    file.chnSelect = select.data();
    file.setRange(0, double(data->smpCount()));
    file.file.setFileName(m_big.folder.path(QStringLiteral("saved.cxdat")));
    QVERIFY(file.file.open(QIODevice::WriteOnly));
    QVERIFY(file.runWithDialog(DataFile::Mode::SaveData));
    QCOMPARE(reports, (std::vector<int>{100}));
    QCOMPARE(admitted, 1);
}

void TstDataFileCancel::destroyingTheObjectEndsAJobThatStillRuns()
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

QTEST_GUILESS_MAIN(TstDataFileCancel)
#include "tst_DataFileCancel.moc"
