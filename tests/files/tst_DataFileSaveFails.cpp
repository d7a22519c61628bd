#include "files/DataBlocks.h"
#include "files/DataFile.h"
#include "files/DataFileBytes.h"
#include "files/DataFileSaved.h"
#include "files/FileSizeLimit.h"
#include "store/MemBudget.h"
#include "store/SmpData.h"

#include <QFileInfo>
#include <QTest>

/// Saves that cannot succeed.
class TstDataFileSaveFails : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void aReversedRangeFails();
    void aSaveWithoutAClosedCaptureFails();
    void aSaveToAClosedFileFails();
    void aSaveToAFileOpenForReadingFails();
    void aDiskThatIsFullAfterSomeBytesFailsTheSave_data();
    void aDiskThatIsFullAfterSomeBytesFailsTheSave();
    void aDeviceThatIsAlwaysFullFailsTheSave_data();
    void aDeviceThatIsAlwaysFullFailsTheSave();
};

void TstDataFileSaveFails::initTestCase()
{
    memBudget = std::int64_t(4) << 30;
}

void TstDataFileSaveFails::aReversedRangeFails()
{
    const FileFolder folder;
    const auto data = CaptureBuilder(8).channel(0, 0, {1}).build();
    DataFile file(data.get());
    file.posStart = 10;
    file.posEnd = 9;
    file.file.setFileName(folder.path(QStringLiteral("a.cxdat")));
    QVERIFY(file.file.open(QIODevice::Append));
    QVERIFY(!file.saveData());
    file.file.close();
    QCOMPARE(folder.read(), QByteArray());
}

void TstDataFileSaveFails::aSaveWithoutAClosedCaptureFails()
{
    SmpData data(8, 0);
    QCOMPARE(saved(data, all(8), 0, 0), QByteArray());
    data.finish(0);
    QCOMPARE(saved(data, all(8), 0, 0).size(), DataFileHead::size);
}

void TstDataFileSaveFails::aSaveToAClosedFileFails()
{
    const auto data = CaptureBuilder(8).channel(0, 0, {1}).build();
    DataFile file(data.get());
    file.setRange(0, 1000);
    QVERIFY(!file.saveData());
}

void TstDataFileSaveFails::aSaveToAFileOpenForReadingFails()
{
    const FileFolder folder;
    const auto data = CaptureBuilder(8).channel(0, 0, {1}).build();
    DataFile file(data.get());
    file.setRange(0, 1000);
    file.file.setFileName(folder.write("as it was"));
    QVERIFY(file.file.open(QIODevice::ReadOnly));
    QVERIFY(!file.saveData());
    file.file.close();
    QCOMPARE(folder.read(), QByteArray("as it was"));
}

void TstDataFileSaveFails::aDiskThatIsFullAfterSomeBytesFailsTheSave_data()
{
    QTest::addColumn<int>("room"); // bytes
    for (const int room : {0, 20, 39, 40, 50, 56, 60, 204'835, 204'836, 204'837, 300'000, 499'999, 500'055}) {
        QTest::newRow(qPrintable(QString::number(room))) << room;
    }
}

void TstDataFileSaveFails::aDiskThatIsFullAfterSomeBytesFailsTheSave()
{
#ifdef Q_OS_UNIX
    QFETCH(int, room);
    const FileFolder folder;
    const auto data = CaptureBuilder(8).samples(1'000'000).channel(0, 0, stairs(1, 1, 99'999)).build();
    const auto select = all(8);
    DataFile file(data.get());
    file.chnSelect = select.data();
    file.setRange(0, 1'000'000);
    file.file.setFileName(folder.path(QStringLiteral("a.cxdat")));
    QVERIFY(file.file.open(QIODevice::Append));
    bool done = true;
    {
        const FileSizeLimit limit(room);
        done = file.saveData();
        file.file.close();
    }
    QVERIFY(!done);
    QVERIFY(folder.read().size() <= room);
    QCOMPARE(saved(*data, select, 0, 1'000'000).size(), 500'056); // with one byte more than the last row it fits
#else
    QSKIP("the size of files cannot be limited here");
#endif
}

void TstDataFileSaveFails::aDeviceThatIsAlwaysFullFailsTheSave_data()
{
    QTest::addColumn<int>("edges");
    QTest::newRow("head alone") << -1;
    QTest::newRow("within one buffer") << 10;
    QTest::newRow("several pieces") << 100'000;
}

void TstDataFileSaveFails::aDeviceThatIsAlwaysFullFailsTheSave()
{
    QFETCH(int, edges);
    const QString full = QStringLiteral("/dev/full");
    if (!QFile::exists(full) || QFileInfo(full).isFile()) {
        QSKIP("this system has no device that is always full");
    }
    CaptureBuilder builder(8);
    builder.samples(1'000'000);
    if (edges >= 0) {
        builder.channel(0, 0, stairs(1, 1, edges));
    }
    const auto data = builder.build();
    DataFile file(data.get());
    const auto select = all(8);
    file.chnSelect = select.data();
    file.setRange(0, 1'000'000);
    file.file.setFileName(full);
    QVERIFY(file.file.open(QIODevice::Append));
    QVERIFY(!file.saveData());
}

QTEST_GUILESS_MAIN(TstDataFileSaveFails)
#include "tst_DataFileSaveFails.moc"
