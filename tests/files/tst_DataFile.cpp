#include "files/DataBlocks.h"
#include "files/DataFile.h"
#include "files/DataFileBytes.h"
#include "store/MemBudget.h"
#include "store/SmpData.h"
#include "store/SmpWriter.h"

#include <QTest>

using Entries = std::vector<std::int64_t>;

/// Loading, and what a load leaves in the store.
class TstDataFile : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void aLoadBringsBackLengthRateTriggerLevelsAndEdges();
    void theBinaryPartBeginsBehindTheSettingsBlock();
    void blocksAreAcceptedInAnyOrder();
    void aChannelWithoutABlockHasNoData();
    void aFileWithoutAnyBlockIsACaptureWithoutChannels();
    void theSecondBlockBeginsRightBehindTheFirst();
    void aLoadSetsAndClearsOnlyTheLevelsOfItsChannels();
    void aBlockWithoutEntriesIsAQuietChannel();
    void aCaptureOfNoSamplesLoads();
    void aMissingEndMarkIsAdded();
    void entriesBehindTheEndAreCutOff();
    void aTriggerBehindTheEndIsKept();
    void analogBuffersStayEmpty();
    void aLoadReplacesTheFormerCapture();
    void clearingAfterALoadCreditsTheWholeBudget();
    void entriesGoOnAcrossTheSeamsOfLeavesAndPieces_data();
    void entriesGoOnAcrossTheSeamsOfLeavesAndPieces();
    void positionsUpToFortyBitsLoad();
    void thirtyTwoChannelsLoad();
    void aSecondLoadWithTheSameObjectWorks();
};

void TstDataFile::initTestCase()
{
    memBudget = std::int64_t(4) << 30;
}

void TstDataFile::aLoadBringsBackLengthRateTriggerLevelsAndEdges()
{
    const FileFolder folder;
    const QString path = folder.write(DataFileBytes(16)
                                          .samples(1000)
                                          .frequency(250'000'000)
                                          .trigger(77)
                                          .block(0, 0, {10, 20, 1000})
                                          .block(5, 1, {999, 1000})
                                          .bytes());
    SmpData data(16, 0);
    DataFile file(&data);
    QVERIFY(file.loadData(path, 0));
    QVERIFY(data.complete());
    QCOMPARE(data.smpCount(), 1000);
    QCOMPARE(data.smpFrequ(), 250'000'000);
    QCOMPARE(data.trgPos(), 77);
    QCOMPARE(entriesOf(data, 0), (Entries{10, 20, 1000}));
    QCOMPARE(entriesOf(data, 5), (Entries{999, 1000}));
    SmpEdgeCursor cursor;
    QCOMPARE(data.locate(0, 0, cursor), 0);
    QCOMPARE(data.locate(0, 10, cursor), 1);
    cursor = {};
    QCOMPARE(data.locate(5, 0, cursor), 1);
    QVERIFY(!file.file.isOpen());
}

void TstDataFile::theBinaryPartBeginsBehindTheSettingsBlock()
{
    const FileFolder folder;
    const QByteArray settings("<settings/>\r\n");
    const QString path = folder.write(settings + DataFileBytes(8).block(7, 0, {4, 1000}).bytes());
    SmpData data(8, 0);
    DataFile file(&data);
    QVERIFY(file.loadData(path, settings.size()));
    QCOMPARE(entriesOf(data, 7), (Entries{4, 1000}));
}

void TstDataFile::blocksAreAcceptedInAnyOrder()
{
    const FileFolder folder;
    const QString path =
        folder.write(DataFileBytes(8).block(7, 1, {7, 1000}).block(0, 0, {1, 1000}).block(3, 0, {3, 1000}).bytes());
    SmpData data(8, 0);
    DataFile file(&data);
    QVERIFY(file.loadData(path, 0));
    for (const int chn : {0, 3, 7}) {
        QCOMPARE(data.nextEdge(chn, 0), std::max(chn, 1));
    }
}

void TstDataFile::aChannelWithoutABlockHasNoData()
{
    const FileFolder folder;
    const QString path = folder.write(DataFileBytes(8).block(1, 0, {1000}).bytes());
    SmpData data(8, 0);
    DataFile file(&data);
    QVERIFY(file.loadData(path, 0));
    QVERIFY(data.chnRoots()[0] == nullptr);
    QCOMPARE(data.nextEdge(0, 0), -1);
}

void TstDataFile::aFileWithoutAnyBlockIsACaptureWithoutChannels()
{
    const FileFolder folder;
    const QString path = folder.write(DataFileBytes(8).samples(500).bytes());
    SmpData data(8, 0);
    DataFile file(&data);
    QVERIFY(file.loadData(path, 0));
    QCOMPARE(data.sampleCount(), 500);
    for (const SmpEdgeRoot *root : data.chnRoots()) {
        QVERIFY(root == nullptr);
    }
}

void TstDataFile::theSecondBlockBeginsRightBehindTheFirst()
{
    const FileFolder folder;
    const QByteArray one = DataFileBytes(8).block(0, 0, {5, 1000}).bytes();
    SmpData data(8, 0);
    DataFile file(&data);
    QVERIFY2(file.loadData(folder.write(one), 0), "a file that ends exactly after a block");
    QVERIFY2(!file.loadData(folder.write(one + "#"), 0), "and one that ends inside the next head");
}

void TstDataFile::aLoadSetsAndClearsOnlyTheLevelsOfItsChannels()
{
    const FileFolder folder;
    const QString path = folder.write(DataFileBytes(8).block(0, 0, {1000}).block(1, 0x40, {1000}).bytes());
    SmpData data(8, 0);
    SmpWriter(data).setStartLevels(0x81);
    DataFile file(&data);
    QVERIFY(file.loadData(path, 0));
    QCOMPARE(data.startLevels(), std::uint64_t(0x82));
    QCOMPARE(data.chnRoots()[0]->startLevel, 0);
    QCOMPARE(data.chnRoots()[1]->startLevel, 1);
}

void TstDataFile::aBlockWithoutEntriesIsAQuietChannel()
{
    const FileFolder folder;
    const QString path = folder.write(DataFileBytes(8).block(2, 1, {}).block(3, 0, {8, 1000}).bytes());
    SmpData data(8, 0);
    DataFile file(&data);
    QVERIFY(file.loadData(path, 0));
    QCOMPARE(entriesOf(data, 2), (Entries{1000}));
    SmpEdgeCursor cursor;
    QCOMPARE(data.locate(2, 500, cursor), 1);
    QCOMPARE(entriesOf(data, 3), (Entries{8, 1000}));
}

void TstDataFile::aCaptureOfNoSamplesLoads()
{
    const FileFolder folder;
    const QString path = folder.write(DataFileBytes(8).samples(0).block(0, 0, {0}).block(1, 0, {5, 9}).bytes());
    SmpData data(8, 0);
    DataFile file(&data);
    QVERIFY(file.loadData(path, 0));
    QCOMPARE(data.sampleCount(), 0);
    QCOMPARE(entriesOf(data, 0), (Entries{0}));
    QCOMPARE(entriesOf(data, 1), (Entries{0}));
}

void TstDataFile::aMissingEndMarkIsAdded()
{
    const FileFolder folder;
    const QString path = folder.write(DataFileBytes(8).block(0, 0, {5, 9}).bytes());
    SmpData data(8, 0);
    DataFile file(&data);
    QVERIFY(file.loadData(path, 0));
    QCOMPARE(entriesOf(data, 0), (Entries{5, 9, 1000}));
}

void TstDataFile::entriesBehindTheEndAreCutOff()
{
    const FileFolder folder;
    Entries entries = stairs(10, 10, 50'000);
    const QString path = folder.write(DataFileBytes(8).samples(55).block(0, 0, entries).bytes());
    SmpData data(8, 0);
    DataFile file(&data);
    QVERIFY(file.loadData(path, 0));
    QCOMPARE(entriesOf(data, 0), (Entries{10, 20, 30, 40, 50, 55}));
}

void TstDataFile::aTriggerBehindTheEndIsKept()
{
    const FileFolder folder;
    const QString path = folder.write(DataFileBytes(8).trigger(dataFileMax).block(0, 0, {1000}).bytes());
    SmpData data(8, 0);
    DataFile file(&data);
    QVERIFY(file.loadData(path, 0));
    QCOMPARE(data.trgPos(), dataFileMax);
}

void TstDataFile::analogBuffersStayEmpty()
{
    const FileFolder folder;
    const QString path = folder.write(DataFileBytes(16).block(0, 0, {3, 1000}).bytes());
    SmpData data(16, 2);
    data.begin(0, 1, std::vector<std::uint8_t>(16, 1));
    QVERIFY(data.aChnBufs()[0] != nullptr);
    data.finish(0);
    DataFile file(&data);
    QVERIFY(file.loadData(path, 0));
    QCOMPARE(entriesOf(data, 0), (Entries{3, 1000}));
    SmpAChnPoint point{};
    for (int aChn = 0; aChn < 2; ++aChn) {
        QCOMPARE(data.aChnPoints(aChn, 0.0, 1.0, 1, &point), 0);
    }
}

void TstDataFile::aLoadReplacesTheFormerCapture()
{
    const FileFolder folder;
    const QString path = folder.write(DataFileBytes(8).samples(70).block(1, 0, {70}).bytes());
    auto data = CaptureBuilder(8).samples(1000).trigger(500).channel(0, 1, {1, 2, 3}).build();
    DataFile file(data.get());
    QVERIFY(file.loadData(path, 0));
    QCOMPARE(data->smpCount(), 70);
    QCOMPARE(data->trgPos(), 0);
    QVERIFY(data->chnRoots()[0] == nullptr);
    QCOMPARE(entriesOf(*data, 1), (Entries{70}));
}

void TstDataFile::clearingAfterALoadCreditsTheWholeBudget()
{
    const FileFolder folder;
    const QString path =
        folder.write(DataFileBytes(8).samples(60'000).block(0, 0, stairs(1, 1, 60'000)).block(1, 0, {}).bytes());
    const std::int64_t before = memBudget;
    SmpData data(8, 0);
    DataFile file(&data);
    QVERIFY(file.loadData(path, 0));
    QVERIFY(memBudget <= before - 3 * std::int64_t(sizeof(SmpEdgeLeaf)));
    data.clear();
    QCOMPARE(memBudget.load(), before);
}

void TstDataFile::entriesGoOnAcrossTheSeamsOfLeavesAndPieces_data()
{
    QTest::addColumn<int>("edges");
    for (const int edges : {20'479, 20'480, 20'481, 40'959, 40'960, 40'961, 81'920, 100'003}) {
        QTest::newRow(qPrintable(QString::number(edges))) << edges;
    }
}

void TstDataFile::entriesGoOnAcrossTheSeamsOfLeavesAndPieces()
{
    QFETCH(int, edges);
    const FileFolder folder;
    Entries entries = stairs(3, 7, edges);
    const std::int64_t end = entries.back() + 1;
    entries.push_back(end);
    const QString path = folder.write(DataFileBytes(8).samples(end).block(0, 0, entries).block(1, 1, entries).bytes());
    SmpData data(8, 0);
    DataFile file(&data);
    QVERIFY(file.loadData(path, 0));
    QCOMPARE(entriesOf(data, 0), entries);
    QCOMPARE(entriesOf(data, 1), entries);
}

void TstDataFile::positionsUpToFortyBitsLoad()
{
    const FileFolder folder;
    const Entries entries{0xFFFFFFFF, 0x100000000, 0xFFFFFFFFFE, dataFileMax};
    const QString path =
        folder.write(DataFileBytes(8).samples(dataFileMax).frequency(dataFileMax).block(0, 0, entries).bytes());
    SmpData data(8, 0);
    DataFile file(&data);
    QVERIFY(file.loadData(path, 0));
    QCOMPARE(data.smpCount(), dataFileMax);
    QCOMPARE(data.smpFrequ(), dataFileMax);
    QCOMPARE(entriesOf(data, 0), entries);
}

void TstDataFile::thirtyTwoChannelsLoad()
{
    const FileFolder folder;
    DataFileBytes bytes(32);
    for (int chn = 0; chn < 32; ++chn) {
        bytes.block(chn, chn % 2, {chn + 1, 1000});
    }
    SmpData data(32, 0);
    DataFile file(&data);
    QVERIFY(file.loadData(folder.write(bytes.bytes()), 0));
    QCOMPARE(data.startLevels(), std::uint64_t(0xAAAAAAAA));
    for (int chn = 0; chn < 32; ++chn) {
        QCOMPARE(entriesOf(data, chn), (Entries{chn + 1, 1000}));
    }
}

void TstDataFile::aSecondLoadWithTheSameObjectWorks()
{
    const FileFolder folder;
    const QString first = folder.write(DataFileBytes(8).block(0, 0, {1, 1000}).bytes(), QStringLiteral("1.cxdat"));
    const QString second = folder.write(DataFileBytes(8).block(0, 0, {2, 1000}).bytes(), QStringLiteral("2.cxdat"));
    SmpData data(8, 0);
    DataFile file(&data);
    QVERIFY(file.loadData(first, 0));
    QVERIFY(file.loadData(second, 0));
    QCOMPARE(entriesOf(data, 0), (Entries{2, 1000}));
}

QTEST_GUILESS_MAIN(TstDataFile)
#include "tst_DataFile.moc"
