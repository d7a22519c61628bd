#include "acquisition/MemBudget.h"
#include "acquisition/SmpData.h"
#include "app/Config.h"
#include "files/DataBlocks.h"
#include "files/DataFile.h"
#include "files/DataFileBytes.h"

#include <QFileInfo>
#include <QTest>

#include <cmath>
#include <limits>

#ifdef Q_OS_UNIX
#include <csignal>
#include <sys/resource.h>
#endif

using Entries = std::vector<std::int64_t>;

namespace {

/// Saves a range of `data` into a new file, which becomes the result; empty when the save fails.
QByteArray saved(SmpData &data, const std::vector<std::uint8_t> &select, double start, double end)
{
    const FileFolder folder;
    DataFile file(&data);
    file.chnSelect = select.data();
    file.setRange(start, end);
    file.file.setFileName(folder.path(QStringLiteral("a.cxdat")));
    if (!file.file.open(QIODevice::Append) || !file.saveData())
        return {};
    file.file.close();
    return folder.read();
}

#ifdef Q_OS_UNIX
/// While it lives no file of this process grows beyond `bytes`, as on a disk with so much room left.
class FileSizeLimit {
public:
    explicit FileSizeLimit(int bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &m_before);
        rlimit limited = m_before;
        limited.rlim_cur = rlim_t(bytes);
        setrlimit(RLIMIT_FSIZE, &limited);
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }
    FileSizeLimit(const FileSizeLimit &) = delete;
    FileSizeLimit &operator=(const FileSizeLimit &) = delete;

private:
    rlimit m_before{};
    void (*m_handler)(int);
};
#endif

std::vector<std::uint8_t> all(int chnCount)
{
    return std::vector<std::uint8_t>(std::size_t(chnCount), 1);
}

} // namespace

/// The range of a save, and the bytes that it writes.
class TstDataFileSave : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void theRangeIsSwappedLimitedAndNeverEmpty_data();
    void theRangeIsSwappedLimitedAndNeverEmpty();
    void aRangeWithoutACaptureIsTheFirstSample();
    void theEntriesOfASaveAreCountedWithOneEndMarkAChannel();
    void nothingIsCountedWithoutASelectionOrACapture();
    void aSaveWritesTheHeadAndAscendingBlocks();
    void theDocumentedExampleIsWhatIsWritten();
    void aSaveAppendsBehindTheSettingsBlock();
    void aWholeFileOfSettingsAndDataLoadsAgain();
    void aRangeThatStartsBehindTheTriggerStoresTriggerZero();
    void aQuietChannelHasOneEntryAtTheEnd();
    void theLevelIsThatOfTheFirstSampleOfTheRange();
    void anEdgeOnTheFirstSampleIsPartOfTheLevel();
    void anEdgeRightBehindTheRangeBecomesTheEndMark();
    void aRangeOfOneSampleHoldsEndMarksOnly();
    void onlySelectedChannelsWithDataHaveABlock();
    void anEmptySelectionWritesTheHeadAlone();
    void aRangeAtTheVeryEndStillEndsInAnEndMark();
    void piecesAndLeavesLeaveNoSeamInTheFile_data();
    void piecesAndLeavesLeaveNoSeamInTheFile();
    void saveLoadSaveGivesTheSameBytes_data();
    void saveLoadSaveGivesTheSameBytes();
    void aReversedRangeFails();
    void aSaveWithoutAClosedCaptureFails();
    void aSaveToAClosedFileFails();
    void aSaveToAFileOpenForReadingFails();
    void aDiskThatIsFullAfterSomeBytesFailsTheSave_data();
    void aDiskThatIsFullAfterSomeBytesFailsTheSave();
    void aDeviceThatIsAlwaysFullFailsTheSave_data();
    void aDeviceThatIsAlwaysFullFailsTheSave();
};

void TstDataFileSave::initTestCase()
{
    memBudget = std::int64_t(4) << 30;
}

void TstDataFileSave::theRangeIsSwappedLimitedAndNeverEmpty_data()
{
    constexpr double inf = std::numeric_limits<double>::infinity();
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    QTest::addColumn<double>("start");
    QTest::addColumn<double>("end");
    QTest::addColumn<qint64>("first");
    QTest::addColumn<qint64>("last");
    QTest::newRow("all") << 0.0 << 1000.0 << qint64(0) << qint64(999);
    QTest::newRow("reversed") << 1000.0 << 0.0 << qint64(0) << qint64(999);
    QTest::newRow("outside on both sides") << -5.0 << 2000.0 << qint64(0) << qint64(999);
    QTest::newRow("fractions widen") << 9.9 << 20.1 << qint64(9) << qint64(20);
    QTest::newRow("whole end is exclusive") << 9.0 << 20.0 << qint64(9) << qint64(19);
    QTest::newRow("empty holds one") << 7.0 << 7.0 << qint64(7) << qint64(7);
    QTest::newRow("empty between two samples") << 7.5 << 7.5 << qint64(7) << qint64(7);
    QTest::newRow("empty at zero") << 0.0 << 0.0 << qint64(0) << qint64(0);
    QTest::newRow("empty at the end") << 1000.0 << 1000.0 << qint64(1000) << qint64(1000);
    QTest::newRow("wholly before") << -9.0 << -3.0 << qint64(0) << qint64(0);
    QTest::newRow("wholly behind") << 5000.0 << 6000.0 << qint64(1000) << qint64(1000);
    QTest::newRow("infinite") << -inf << inf << qint64(0) << qint64(999);
    QTest::newRow("infinite reversed") << inf << -inf << qint64(0) << qint64(999);
    QTest::newRow("huge") << -1e300 << 1e300 << qint64(0) << qint64(999);
    QTest::newRow("no number at the start") << nan << 10.0 << qint64(0) << qint64(9);
    QTest::newRow("no number at the end") << 10.0 << nan << qint64(0) << qint64(9);
    QTest::newRow("no numbers") << nan << nan << qint64(0) << qint64(0);
}

void TstDataFileSave::theRangeIsSwappedLimitedAndNeverEmpty()
{
    QFETCH(double, start);
    QFETCH(double, end);
    QFETCH(qint64, first);
    QFETCH(qint64, last);
    const auto data = CaptureBuilder(8).samples(1000).build();
    DataFile file(data.get());
    file.setRange(start, end);
    QCOMPARE(qint64(file.posStart), first);
    QCOMPARE(qint64(file.posEnd), last);
    QCOMPARE(qint64(file.smpTotal), last - first + 1);
}

void TstDataFileSave::aRangeWithoutACaptureIsTheFirstSample()
{
    SmpData data(8, 0);
    data.smpCount = 500; // a capture that fills
    DataFile file(&data);
    file.setRange(0, 500);
    QCOMPARE(file.posStart, 0);
    QCOMPARE(file.posEnd, 0);
}

void TstDataFileSave::theEntriesOfASaveAreCountedWithOneEndMarkAChannel()
{
    const auto data = CaptureBuilder(8).channel(0, 0, {10, 20, 30}).channel(1, 0, {20}).channel(2, 0).build();
    DataFile file(data.get());
    auto select = all(8);
    file.chnSelect = select.data();
    file.setRange(0, 1000);
    QCOMPARE(file.edgeTotal(), 4 + 2 + 1);
    QCOMPARE(file.workTotal, 7);
    file.setRange(10, 30); // the edge at 10 is part of the level, that at 30 lies behind
    QCOMPARE(file.edgeTotal(), 2 + 2 + 1);
    select[0] = 0;
    QCOMPARE(file.edgeTotal(), 2 + 1);
}

void TstDataFileSave::nothingIsCountedWithoutASelectionOrACapture()
{
    const auto data = CaptureBuilder(8).channel(0, 0, {10}).build();
    DataFile file(data.get());
    file.workTotal = 9;
    file.setRange(0, 1000);
    QCOMPARE(file.edgeTotal(), 0);
    QCOMPARE(file.workTotal, 0);
    const auto select = all(8);
    file.chnSelect = select.data();
    QCOMPARE(file.edgeTotal(), 2);
    data->open();
    QCOMPARE(file.edgeTotal(), 0);
}

void TstDataFileSave::aSaveWritesTheHeadAndAscendingBlocks()
{
    const auto data = CaptureBuilder(16).samples(1000).trigger(77).channel(5, 1, {999}).channel(0, 0, {10, 20}).build();
    QCOMPARE(saved(*data, all(16), 0, 1000),
             DataFileBytes(16).samples(1000).trigger(77).block(0, 0, {10, 20, 1000}).block(5, 1, {999, 1000}).bytes());
}

void TstDataFileSave::theDocumentedExampleIsWhatIsWritten()
{
    const auto data = CaptureBuilder(8).samples(1000).trigger(10).channel(0, 0, {10, 20}).channel(3, 1).build();
    QCOMPARE(saved(*data, all(8), 0, 1000).toHex(' '), QByteArray("63 78 64 61 74 00 00 00 "
                                                                  "e8 03 00 00 00 00 00 00 "
                                                                  "40 42 0f 00 00 00 00 00 "
                                                                  "0a 00 00 00 00 00 00 00 "
                                                                  "08 00 00 00 00 00 00 00 "
                                                                  "23 23 44 00 00 00 00 00 "
                                                                  "03 00 00 00 00 00 00 00 "
                                                                  "0a 00 00 00 00 "
                                                                  "14 00 00 00 00 "
                                                                  "e8 03 00 00 00 "
                                                                  "23 23 44 00 03 01 00 00 "
                                                                  "01 00 00 00 00 00 00 00 "
                                                                  "e8 03 00 00 00"));
}

void TstDataFileSave::aSaveAppendsBehindTheSettingsBlock()
{
    const FileFolder folder;
    const auto data = CaptureBuilder(8).channel(0, 0, {10}).build();
    DataFile file(data.get());
    const auto select = all(8);
    file.chnSelect = select.data();
    file.setRange(0, 1000);
    file.file.setFileName(folder.write("<settings/>\n"));
    QVERIFY(file.file.open(QIODevice::Append));
    QVERIFY(file.saveData());
    file.file.close();
    QCOMPARE(folder.read(), "<settings/>\n" + DataFileBytes(8).block(0, 0, {10, 1000}).bytes());
}

void TstDataFileSave::aWholeFileOfSettingsAndDataLoadsAgain()
{
    const FileFolder folder;
    const QString path = folder.path(QStringLiteral("whole.cxdat"));
    configLoad();
    deviceSet(QStringLiteral("RV2420"), QStringLiteral("chnVth"), QStringLiteral("1.2"));
    QVERIFY(configSave(path));
    QByteArray settings;
    QVERIFY(configHeadOfFile(path, settings));
    const auto data = CaptureBuilder(16).trigger(3).channel(4, 1, {10, 500}).build();
    {
        DataFile file(data.get());
        const auto select = all(16);
        file.chnSelect = select.data();
        file.setRange(0, 1000);
        file.file.setFileName(path);
        QVERIFY(file.file.open(QIODevice::Append));
        QVERIFY(file.saveData());
    }
    QByteArray head;
    QVERIFY(configHeadOfFile(path, head));
    QCOMPARE(head, settings);
    SmpData back(16, 0);
    DataFile file(&back);
    QVERIFY(file.loadData(path, head.size()));
    QCOMPARE(back.trgPos, 3);
    QCOMPARE(entriesOf(back, 4), (Entries{10, 500, 1000}));
}

void TstDataFileSave::aRangeThatStartsBehindTheTriggerStoresTriggerZero()
{
    const auto data = CaptureBuilder(8).trigger(100).build();
    QCOMPARE(saved(*data, all(8), 101, 200), DataFileBytes(8).samples(99).trigger(0).bytes());
    QCOMPARE(saved(*data, all(8), 99, 200), DataFileBytes(8).samples(101).trigger(1).bytes());
    QCOMPARE(saved(*data, all(8), 0, 50), DataFileBytes(8).samples(50).trigger(100).bytes());
}

void TstDataFileSave::aQuietChannelHasOneEntryAtTheEnd()
{
    const auto data = CaptureBuilder(8).channel(0, 0).channel(1, 1, {10, 900}).build();
    QCOMPARE(saved(*data, all(8), 20, 120),
             DataFileBytes(8).samples(100).block(0, 0, {100}).block(1, 0, {100}).bytes());
}

void TstDataFileSave::theLevelIsThatOfTheFirstSampleOfTheRange()
{
    const auto data = CaptureBuilder(8).channel(0, 0, {10, 20, 30}).build();
    QCOMPARE(saved(*data, all(8), 15, 35), DataFileBytes(8).samples(20).block(0, 1, {5, 15, 20}).bytes());
}

void TstDataFileSave::anEdgeOnTheFirstSampleIsPartOfTheLevel()
{
    const auto data = CaptureBuilder(8).channel(0, 0, {10, 20}).build();
    QCOMPARE(saved(*data, all(8), 10, 30), DataFileBytes(8).samples(20).block(0, 1, {10, 20}).bytes());
}

void TstDataFileSave::anEdgeRightBehindTheRangeBecomesTheEndMark()
{
    const auto data = CaptureBuilder(8).channel(0, 0, {10, 20, 30}).build();
    QCOMPARE(saved(*data, all(8), 0, 20), DataFileBytes(8).samples(20).block(0, 0, {10, 20}).bytes());
    QCOMPARE(saved(*data, all(8), 0, 21), DataFileBytes(8).samples(21).block(0, 0, {10, 20, 21}).bytes());
}

void TstDataFileSave::aRangeOfOneSampleHoldsEndMarksOnly()
{
    const auto data = CaptureBuilder(8).channel(0, 0, {10, 11, 12}).build();
    QCOMPARE(saved(*data, all(8), 11, 11), DataFileBytes(8).samples(1).block(0, 0, {1}).bytes());
    QCOMPARE(saved(*data, all(8), 12, 12), DataFileBytes(8).samples(1).block(0, 1, {1}).bytes());
}

void TstDataFileSave::onlySelectedChannelsWithDataHaveABlock()
{
    const auto data = CaptureBuilder(8).channel(0, 0, {1}).channel(1, 0, {2}).channel(3, 0, {3}).build();
    QCOMPARE(saved(*data, {0, 1, 1, 1, 0, 0, 0, 1}, 0, 1000),
             DataFileBytes(8).block(1, 0, {2, 1000}).block(3, 0, {3, 1000}).bytes());
}

void TstDataFileSave::anEmptySelectionWritesTheHeadAlone()
{
    const auto data = CaptureBuilder(8).channel(0, 0, {1}).build();
    QCOMPARE(saved(*data, std::vector<std::uint8_t>(8, 0), 0, 1000), DataFileBytes(8).bytes());
}

void TstDataFileSave::aRangeAtTheVeryEndStillEndsInAnEndMark()
{
    const auto data = CaptureBuilder(8).channel(0, 0, {1}).build();
    QCOMPARE(saved(*data, all(8), 1000, 1000), DataFileBytes(8).samples(1).block(0, 1, {1}).bytes());
}

void TstDataFileSave::piecesAndLeavesLeaveNoSeamInTheFile_data()
{
    QTest::addColumn<int>("edges");
    QTest::addColumn<int>("skip"); // edges before the range
    for (const int edges : {20'479, 20'480, 20'481, 40'954, 40'955, 40'956, 40'957, 40'960, 61'441, 100'003})
        for (const int skip : {0, 1, 20'479, 20'480})
            QTest::newRow(qPrintable(QStringLiteral("%1 from %2").arg(edges).arg(skip))) << edges << skip;
}

void TstDataFileSave::piecesAndLeavesLeaveNoSeamInTheFile()
{
    QFETCH(int, edges);
    QFETCH(int, skip);
    const Entries positions = stairs(5, 3, edges + skip);
    const std::int64_t end = positions.back() + 2;
    const std::int64_t start = skip > 0 ? positions[std::size_t(skip - 1)] + 1 : 0;
    const auto data = CaptureBuilder(8).samples(end).channel(0, 1, positions).channel(1, 0, positions).build();
    Entries expected;
    for (int i = 0; i < edges; ++i)
        expected.push_back(positions[std::size_t(skip + i)] - start);
    expected.push_back(end - start);
    const int level = 1 - skip % 2;
    QVERIFY(saved(*data, all(8), double(start), double(end)) ==
            DataFileBytes(8).samples(end - start).block(0, level, expected).block(1, 1 - level, expected).bytes());
}

void TstDataFileSave::saveLoadSaveGivesTheSameBytes_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("chnCount");
    QTest::newRow("no channels") << DataFileBytes(8).bytes() << 8;
    QTest::newRow("one sample") << DataFileBytes(8).samples(1).block(0, 1, {1}).block(3, 0, {1}).bytes() << 8;
    QTest::newRow("channels without data")
        << DataFileBytes(16).block(2, 1, {4, 1000}).block(15, 0, {1000}).bytes() << 16;
    QTest::newRow("longest capture") << DataFileBytes(8)
                                            .samples(dataFileMax)
                                            .trigger(dataFileMax)
                                            .block(0, 0, {1, 0xFFFFFFFF, 0x100000000, dataFileMax - 1, dataFileMax})
                                            .bytes()
                                     << 8;
    DataFileBytes wide(32);
    for (int chn = 0; chn < 32; ++chn)
        wide.block(chn, chn & 1, {chn + 1, chn + 2, 1000});
    QTest::newRow("32 channels") << wide.bytes() << 32;
    Entries many = stairs(1, 2, 90'000);
    many.push_back(200'000);
    QTest::newRow("several leaves") << DataFileBytes(8).samples(200'000).block(6, 1, many).bytes() << 8;
}

void TstDataFileSave::saveLoadSaveGivesTheSameBytes()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, chnCount);
    const FileFolder folder;
    SmpData data(chnCount, 0);
    DataFile file(&data);
    QVERIFY(file.loadData(folder.write(bytes), 0));
    QVERIFY(saved(data, all(chnCount), 0, double(data.smpCount)) == bytes);

    // A part of it, loaded and saved again.
    const double third = std::floor(double(data.smpCount) / 3);
    const QByteArray part = saved(data, all(chnCount), third, 2 * third);
    SmpData partData(chnCount, 0);
    DataFile partFile(&partData);
    QVERIFY(partFile.loadData(folder.write(part), 0));
    QVERIFY(saved(partData, all(chnCount), 0, double(partData.smpCount)) == part);
}

void TstDataFileSave::aReversedRangeFails()
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

void TstDataFileSave::aSaveWithoutAClosedCaptureFails()
{
    SmpData data(8, 0);
    QCOMPARE(saved(data, all(8), 0, 0), QByteArray());
    data.finish(0);
    QCOMPARE(saved(data, all(8), 0, 0).size(), DataFileHead::size);
}

void TstDataFileSave::aSaveToAClosedFileFails()
{
    const auto data = CaptureBuilder(8).channel(0, 0, {1}).build();
    DataFile file(data.get());
    file.setRange(0, 1000);
    QVERIFY(!file.saveData());
}

void TstDataFileSave::aSaveToAFileOpenForReadingFails()
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

void TstDataFileSave::aDiskThatIsFullAfterSomeBytesFailsTheSave_data()
{
    QTest::addColumn<int>("room"); // bytes
    for (const int room : {0, 20, 39, 40, 50, 56, 60, 204'835, 204'836, 204'837, 300'000, 499'999, 500'055})
        QTest::newRow(qPrintable(QString::number(room))) << room;
}

void TstDataFileSave::aDiskThatIsFullAfterSomeBytesFailsTheSave()
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

void TstDataFileSave::aDeviceThatIsAlwaysFullFailsTheSave_data()
{
    QTest::addColumn<int>("edges");
    QTest::newRow("head alone") << -1;
    QTest::newRow("within one buffer") << 10;
    QTest::newRow("several pieces") << 100'000;
}

void TstDataFileSave::aDeviceThatIsAlwaysFullFailsTheSave()
{
    QFETCH(int, edges);
    const QString full = QStringLiteral("/dev/full");
    if (!QFile::exists(full) || QFileInfo(full).isFile())
        QSKIP("this system has no device that is always full");
    CaptureBuilder builder(8);
    builder.samples(1'000'000);
    if (edges >= 0)
        builder.channel(0, 0, stairs(1, 1, edges));
    const auto data = builder.build();
    DataFile file(data.get());
    const auto select = all(8);
    file.chnSelect = select.data();
    file.setRange(0, 1'000'000);
    file.file.setFileName(full);
    QVERIFY(file.file.open(QIODevice::Append));
    QVERIFY(!file.saveData());
}

QTEST_GUILESS_MAIN(TstDataFileSave)
#include "tst_DataFileSave.moc"
