// A load while somebody reads the last capture for long.

#include "files/DataFile.h"
#include "files/DataFileBytes.h"
#include "files/ScriptedDialog.h"
#include "store/MemBudget.h"
#include "store/SmpLease.h"

#include <QTest>

class TstDataFileLease : public QObject {
    Q_OBJECT
private slots:
    void init() { memBudget = std::int64_t(4) << 30; }
    void aLoadGoesOnAsSoonAsTheHolderHasLeft();
    void aHolderThatLeavesWhenCalledIsCalledByALoad();
    void aLoadThatIsGivenUpKeepsTheCapture();
    void aRefusedFileDisturbsNoHolder();
};

void TstDataFileLease::aLoadGoesOnAsSoonAsTheHolderHasLeft()
{
    const FileFolder folder;
    const QString path = folder.write(smallPart(), QStringLiteral("small.cxdat"));
    const auto data = captureOf(100);
    auto lease = std::make_unique<SmpLease>(data.get());
    DialogLog log;
    DataFile file(data.get(), scripted(log, [&](ScriptedDialog &dialog) { // events go on: the holder's too
                      lease.reset();
                      return dialog.runToTheEnd();
                  }));
    file.dialogDelay = 0;
    QVERIFY(file.loadData(path, 0));
    QVERIFY(!lease);
    QCOMPARE(data->sampleCount(), std::int64_t(1000));
    QCOMPARE(data->entryCount(0), std::int64_t(2));
}

void TstDataFileLease::aHolderThatLeavesWhenCalledIsCalledByALoad()
{
    const FileFolder folder;
    const QString path = folder.write(smallPart(), QStringLiteral("small.cxdat"));
    const auto data = captureOf(100);
    std::unique_ptr<SmpLease> lease;
    lease = std::make_unique<SmpLease>(data.get(), [&lease] { lease->release(); });
    DataFile file(data.get());
    QVERIFY(file.loadData(path, 0));
    QVERIFY(!*lease);
    QCOMPARE(data->sampleCount(), std::int64_t(1000));
}

void TstDataFileLease::aLoadThatIsGivenUpKeepsTheCapture()
{
    const FileFolder folder;
    const QString path = folder.write(smallPart(), QStringLiteral("small.cxdat"));
    const auto data = captureOf(100);
    const SmpLease lease(data.get());
    DialogLog log;
    DataFile file(data.get(), scripted(log, [](ScriptedDialog &) { return false; }));
    file.dialogDelay = 0;
    QVERIFY(!file.loadData(path, 0));
    QCOMPARE(log.texts.size(), 3);
    QVERIFY(!lease.writerWaits());
    QCOMPARE(data->sampleCount(), std::int64_t(200));
    QCOMPARE(data->entryCount(0), std::int64_t(100));
}

void TstDataFileLease::aRefusedFileDisturbsNoHolder()
{
    const FileFolder folder;
    const QString path = folder.write(QByteArray("no data file, but long enough for a head of one"));
    const auto data = captureOf(100);
    bool told = false;
    const SmpLease lease(data.get(), [&told] { told = true; });
    DataFile file(data.get());
    QVERIFY(!file.loadData(path, 0));
    QVERIFY(!told);
    QVERIFY(bool(lease) && !lease.writerWaits());
}

QTEST_GUILESS_MAIN(TstDataFileLease)
#include "tst_DataFileLease.moc"
