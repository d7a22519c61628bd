#include "files/DataBlocks.h"
#include "files/DataFile.h"
#include "files/DataFileBytes.h"
#include "files/DataFileSaved.h"
#include "settings/Config.h"
#include "store/MemBudget.h"
#include "store/SmpData.h"

#include <QTest>

#include <cmath>

using Entries = std::vector<std::int64_t>;

/// The bytes that a save writes.
class TstDataFileSave : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
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
};

void TstDataFileSave::initTestCase()
{
    memBudget = std::int64_t(4) << 30;
}

void TstDataFileSave::aSaveWritesTheHeadAndAscendingBlocks()
{
    const auto data = CaptureBuilder(16).samples(1000).trigger(77).channel(5, 1, {999}).channel(0, 0, {10, 20}).build();
    QCOMPARE(saved(*data, all(16), 0, 1000), DataFileBytes(16)
                                                 .samples(1000)
                                                 .trigger(77)
                                                 .block(0, 0, {10, 20, 1000})
                                                 .block(5, 1, {999, 1000})
                                                 .told()
                                                 .bytes());
}

void TstDataFileSave::theDocumentedExampleIsWhatIsWritten()
{
    const auto data = CaptureBuilder(8).samples(1000).trigger(10).channel(0, 0, {10, 20}).channel(3, 1).build();
    QCOMPARE(saved(*data, all(8), 0, 1000).toHex(' '), QByteArray("63 78 64 61 74 00 00 00 "
                                                                  "e8 03 00 00 00 00 00 00 "
                                                                  "40 42 0f 00 00 00 00 00 "
                                                                  "0a 00 00 00 00 00 00 00 "
                                                                  "08 03 09 00 00 00 00 00 "
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
    QCOMPARE(folder.read(), "<settings/>\n" + DataFileBytes(8).block(0, 0, {10, 1000}).told().bytes());
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
    QCOMPARE(back.trgPos(), 3);
    QCOMPARE(entriesOf(back, 4), (Entries{10, 500, 1000}));
}

void TstDataFileSave::aRangeThatStartsBehindTheTriggerStoresTriggerZero()
{
    const auto data = CaptureBuilder(8).trigger(100).build();
    QCOMPARE(saved(*data, all(8), 101, 200), DataFileBytes(8).samples(99).trigger(0).told().bytes());
    QCOMPARE(saved(*data, all(8), 99, 200), DataFileBytes(8).samples(101).trigger(1).told().bytes());
    QCOMPARE(saved(*data, all(8), 0, 50), DataFileBytes(8).samples(50).trigger(100).told().bytes());
}

void TstDataFileSave::aQuietChannelHasOneEntryAtTheEnd()
{
    const auto data = CaptureBuilder(8).channel(0, 0).channel(1, 1, {10, 900}).build();
    QCOMPARE(saved(*data, all(8), 20, 120),
             DataFileBytes(8).samples(100).block(0, 0, {100}).block(1, 0, {100}).told().bytes());
}

void TstDataFileSave::theLevelIsThatOfTheFirstSampleOfTheRange()
{
    const auto data = CaptureBuilder(8).channel(0, 0, {10, 20, 30}).build();
    QCOMPARE(saved(*data, all(8), 15, 35), DataFileBytes(8).samples(20).block(0, 1, {5, 15, 20}).told().bytes());
}

void TstDataFileSave::anEdgeOnTheFirstSampleIsPartOfTheLevel()
{
    const auto data = CaptureBuilder(8).channel(0, 0, {10, 20}).build();
    QCOMPARE(saved(*data, all(8), 10, 30), DataFileBytes(8).samples(20).block(0, 1, {10, 20}).told().bytes());
}

void TstDataFileSave::anEdgeRightBehindTheRangeBecomesTheEndMark()
{
    const auto data = CaptureBuilder(8).channel(0, 0, {10, 20, 30}).build();
    QCOMPARE(saved(*data, all(8), 0, 20), DataFileBytes(8).samples(20).block(0, 0, {10, 20}).told().bytes());
    QCOMPARE(saved(*data, all(8), 0, 21), DataFileBytes(8).samples(21).block(0, 0, {10, 20, 21}).told().bytes());
}

void TstDataFileSave::aRangeOfOneSampleHoldsEndMarksOnly()
{
    const auto data = CaptureBuilder(8).channel(0, 0, {10, 11, 12}).build();
    QCOMPARE(saved(*data, all(8), 11, 11), DataFileBytes(8).samples(1).block(0, 0, {1}).told().bytes());
    QCOMPARE(saved(*data, all(8), 12, 12), DataFileBytes(8).samples(1).block(0, 1, {1}).told().bytes());
}

void TstDataFileSave::onlySelectedChannelsWithDataHaveABlock()
{
    const auto data = CaptureBuilder(8).channel(0, 0, {1}).channel(1, 0, {2}).channel(3, 0, {3}).build();
    QCOMPARE(saved(*data, {0, 1, 1, 1, 0, 0, 0, 1}, 0, 1000),
             DataFileBytes(8).block(1, 0, {2, 1000}).block(3, 0, {3, 1000}).told().bytes());
}

void TstDataFileSave::anEmptySelectionWritesTheHeadAlone()
{
    const auto data = CaptureBuilder(8).channel(0, 0, {1}).build();
    QCOMPARE(saved(*data, std::vector<std::uint8_t>(8, 0), 0, 1000), DataFileBytes(8).told().bytes());
}

void TstDataFileSave::aRangeAtTheVeryEndStillEndsInAnEndMark()
{
    const auto data = CaptureBuilder(8).channel(0, 0, {1}).build();
    QCOMPARE(saved(*data, all(8), 1000, 1000), DataFileBytes(8).samples(1).block(0, 1, {1}).told().bytes());
}

void TstDataFileSave::piecesAndLeavesLeaveNoSeamInTheFile_data()
{
    QTest::addColumn<int>("edges");
    QTest::addColumn<int>("skip"); // edges before the range
    for (const int edges : {20'479, 20'480, 20'481, 40'954, 40'955, 40'956, 40'957, 40'960, 61'441, 100'003}) {
        for (const int skip : {0, 1, 20'479, 20'480}) {
            QTest::newRow(qPrintable(QStringLiteral("%1 from %2").arg(edges).arg(skip))) << edges << skip;
        }
    }
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
    for (int i = 0; i < edges; ++i) {
        expected.push_back(positions[std::size_t(skip + i)] - start);
    }
    expected.push_back(end - start);
    const int level = 1 - skip % 2;
    QVERIFY(
        saved(*data, all(8), double(start), double(end)) ==
        DataFileBytes(8).samples(end - start).block(0, level, expected).block(1, 1 - level, expected).told().bytes());
}

void TstDataFileSave::saveLoadSaveGivesTheSameBytes_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("chnCount");
    QTest::newRow("no channels") << DataFileBytes(8).told().bytes() << 8;
    QTest::newRow("one sample") << DataFileBytes(8).samples(1).block(0, 1, {1}).block(3, 0, {1}).told().bytes() << 8;
    QTest::newRow("channels without data")
        << DataFileBytes(16).block(2, 1, {4, 1000}).block(15, 0, {1000}).told().bytes() << 16;
    QTest::newRow("longest capture") << DataFileBytes(8)
                                            .samples(dataFileMax)
                                            .trigger(dataFileMax)
                                            .block(0, 0, {1, 0xFFFFFFFF, 0x100000000, dataFileMax - 1, dataFileMax})
                                            .told()
                                            .bytes()
                                     << 8;
    DataFileBytes wide(32);
    for (int chn = 0; chn < 32; ++chn) {
        wide.block(chn, chn & 1, {chn + 1, chn + 2, 1000});
    }
    QTest::newRow("32 channels") << wide.told().bytes() << 32;
    Entries many = stairs(1, 2, 90'000);
    many.push_back(200'000);
    QTest::newRow("several leaves") << DataFileBytes(8).samples(200'000).block(6, 1, many).told().bytes() << 8;
}

void TstDataFileSave::saveLoadSaveGivesTheSameBytes()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, chnCount);
    const FileFolder folder;
    SmpData data(chnCount, 0);
    DataFile file(&data);
    QVERIFY(file.loadData(folder.write(bytes), 0));
    QVERIFY(saved(data, all(chnCount), 0, double(data.smpCount())) == bytes);

    // A part of it, loaded and saved again.
    const double third = std::floor(double(data.smpCount()) / 3);
    const QByteArray part = saved(data, all(chnCount), third, 2 * third);
    SmpData partData(chnCount, 0);
    DataFile partFile(&partData);
    QVERIFY(partFile.loadData(folder.write(part), 0));
    QVERIFY(saved(partData, all(chnCount), 0, double(partData.smpCount())) == part);
}

QTEST_GUILESS_MAIN(TstDataFileSave)
#include "tst_DataFileSave.moc"
