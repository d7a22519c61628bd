#include "files/DataBlocks.h"
#include "files/DataFile.h"
#include "files/DataFileBytes.h"
#include "files/DataFileSaved.h"
#include "store/MemBudget.h"

#include <QBuffer>
#include <QTest>

#include <random>

namespace {

struct Outcome {
    DataBlocksResult result = DataBlocksResult::Done;
    DataBlocksFound found;
    bool operator==(const Outcome &other) const
    {
        return result == other.result && (result != DataBlocksResult::Done ||
                                          (found.blocks == other.found.blocks && found.cut == other.found.cut &&
                                           found.missing == other.found.missing));
    }
};

Outcome readInto(SmpData &data, QByteArray bytes)
{
    QBuffer device(&bytes);
    device.open(QIODevice::ReadOnly);
    Outcome outcome;
    outcome.result = readDataBlocks(device, data, {}, &outcome.found);
    return outcome;
}

Outcome checked(QByteArray bytes, int chnCount, bool andEntries)
{
    QBuffer device(&bytes);
    device.open(QIODevice::ReadOnly);
    Outcome outcome;
    outcome.result = checkDataBlocks(device, chnCount, andEntries, outcome.found);
    return outcome;
}

/// Blocks of channels 1, 4 and 6, as the head promises.
DataFileBytes threeBlocks()
{
    return DataFileBytes(8).promise({1, 4, 6}).block(1, 1, {10, 20, 1000}).block(4, 0, {1000}).block(6, 0, {7, 1000});
}

} // namespace

/// Files that end before their last block, and what the head says of that.
class TstDataBlocksCut : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { memBudget = std::int64_t(1) << 30; }

    void theHeadTellsItsBlocksInBytesThatWereSpare();
    void whatContradictsItselfSaysNothing_data();
    void whatContradictsItselfSaysNothing();
    void aSaveTellsTheBlocksThatFollow();
    void aFileCutAnywhereOpensAsFarAsItsBlocksAreWhole();
    void aFileWithoutTheNumberOpensAsWholeWhereABlockEnds();
    void whatStandsBehindTheLastBlockIsDamage();
    void aDamagedBlockIsNoCut();
    void moreBlocksThanToldAreRead();
    void aModelOfManyChannelsNamesThoseThatFit();
    void theCheckFindsWhatTheReaderFinds();
    void theCheckWithoutEntriesReadsOnlyHeads();
    void theMemoryOfATreeIsKnownBefore_data();
    void theMemoryOfATreeIsKnownBefore();
};

void TstDataBlocksCut::theHeadTellsItsBlocksInBytesThatWereSpare()
{
    DataFileHead head{1, 2, 3, 32};
    head.blockCount = 3;
    head.blockChns = std::uint64_t(1) << 31 | 1 << 9 | 1;
    const auto bytes = encodeFileHead(head);
    const QByteArray tail(reinterpret_cast<const char *>(bytes.data()) + 32, 8);
    QCOMPARE(tail.toHex(), QByteArray("2004010200800000"));
    DataFileHead back;
    QVERIFY(decodeFileHead(bytes, back));
    QVERIFY(back == head);
    head.blockCount = 0; // known, other than not told
    head.blockChns = 0;
    QVERIFY(decodeFileHead(encodeFileHead(head), back));
    QCOMPARE(back.blockCount, 0);
}

void TstDataBlocksCut::whatContradictsItselfSaysNothing_data()
{
    QTest::addColumn<int>("chnCount");
    QTest::addColumn<QByteArray>("tail");
    QTest::newRow("zeros, as of earlier writers") << 16 << QByteArray(7, '\0');
    QTest::newRow("ones") << 16 << QByteArray(7, '\xFF');
    QTest::newRow("a number without channels") << 16 << QByteArray("\x03\0\0\0\0\0\0", 7);
    QTest::newRow("channels without a number") << 16 << QByteArray("\0\x03\0\0\0\0\0", 7);
    QTest::newRow("a smaller number") << 16 << QByteArray("\x02\x03\0\0\0\0\0", 7);
    QTest::newRow("a channel that there is not") << 16 << QByteArray("\x02\0\0\x01\0\0\0", 7);
    QTest::newRow("more than there are") << 200 << QByteArray("\xFE\0\0\0\0\0\0", 7);
}

void TstDataBlocksCut::whatContradictsItselfSaysNothing()
{
    QFETCH(int, chnCount);
    QFETCH(QByteArray, tail);
    auto bytes = encodeFileHead({1, 2, 3, chnCount});
    std::copy(tail.begin(), tail.end(), bytes.begin() + 33);
    DataFileHead head;
    QVERIFY(decodeFileHead(bytes, head));
    QCOMPARE(head.blockCount, -1);
    QCOMPARE(head.blockChns, std::uint64_t(0));
}

void TstDataBlocksCut::aSaveTellsTheBlocksThatFollow()
{
    const auto data = CaptureBuilder(16).channel(0, 0, {5}).channel(9, 1, {7}).channel(12, 0).build();
    auto select = all(16);
    select[12] = 0;
    QCOMPARE(saved(*data, select, 0, 1000).mid(33, 7), QByteArray("\x03\x01\x02\0\0\0\0", 7));
    QCOMPARE(saved(*data, std::vector<std::uint8_t>(16, 0), 0, 1000).mid(33, 7), QByteArray("\x01\0\0\0\0\0\0", 7));
}

void TstDataBlocksCut::aFileCutAnywhereOpensAsFarAsItsBlocksAreWhole()
{
    const QByteArray whole = threeBlocks().bytes();
    const int ends[] = {40 + 16 + 15, 40 + 16 + 15 + 16 + 5, whole.size()};
    for (int size = DataFileHead::size; size <= whole.size(); ++size) {
        SmpData data(8, 0);
        const Outcome outcome = readInto(data, whole.left(size));
        QCOMPARE(outcome.result, DataBlocksResult::Done);
        std::vector<int> missing;
        for (const int i : {0, 1, 2}) {
            const int chn = std::array{1, 4, 6}[std::size_t(i)];
            const bool there = size >= ends[i];
            QCOMPARE(data.chnRoots()[std::size_t(chn)] != nullptr, there);
            if (!there) {
                missing.push_back(chn);
            }
        }
        QCOMPARE(outcome.found.missing, missing);
        QCOMPARE(outcome.found.cut, size < whole.size());
        QCOMPARE(outcome.found.blocks, 3 - int(missing.size()));
    }
}

void TstDataBlocksCut::aFileWithoutTheNumberOpensAsWholeWhereABlockEnds()
{
    const QByteArray whole = DataFileBytes(8).block(1, 1, {10, 20, 1000}).block(4, 0, {1000}).bytes();
    for (int size = DataFileHead::size; size <= whole.size(); ++size) {
        SmpData data(8, 0);
        const Outcome outcome = readInto(data, whole.left(size));
        const bool blockEnds = size == DataFileHead::size || size == 40 + 16 + 15 || size == whole.size();
        QCOMPARE(outcome.result, blockEnds ? DataBlocksResult::Done : DataBlocksResult::Damaged);
        QVERIFY(!outcome.found.cut && outcome.found.missing.empty());
    }
}

void TstDataBlocksCut::whatStandsBehindTheLastBlockIsDamage()
{
    for (const int spare : {1, 15, 16, 100}) {
        SmpData data(8, 0);
        QCOMPARE(readInto(data, threeBlocks().raw(QByteArray(spare, '\0')).bytes()).result, DataBlocksResult::Damaged);
    }
}

void TstDataBlocksCut::aDamagedBlockIsNoCut()
{
    const auto first = [] { return DataFileBytes(8).promise({1, 4}).block(1, 1, {10, 1000}); };
    for (const QByteArray &bytes : {first().raw(QByteArray(16, '\0')).bytes(), first().block(1, 0, {1000}).bytes(),
                                    first().block(4, 0, {7, 7, 1000}).bytes(), first().block(8, 0, {1000}).bytes()}) {
        SmpData data(8, 0);
        QCOMPARE(readInto(data, bytes).result, DataBlocksResult::Damaged);
    }
}

void TstDataBlocksCut::moreBlocksThanToldAreRead()
{
    SmpData data(8, 0);
    const Outcome outcome =
        readInto(data, DataFileBytes(8).promise({1}).block(1, 1, {1000}).block(5, 0, {1000}).bytes());
    QCOMPARE(outcome.result, DataBlocksResult::Done);
    QCOMPARE(outcome.found.blocks, 2);
    QVERIFY(!outcome.found.cut);
}

void TstDataBlocksCut::aModelOfManyChannelsNamesThoseThatFit()
{
    CaptureBuilder capture(200);
    for (const int chn : {3, 47, 48, 199}) {
        capture.channel(chn, 0, {5});
    }
    const QByteArray whole = saved(*capture.build(), all(200), 0, 1000);
    SmpData data(200, 0);
    const Outcome outcome = readInto(data, whole.left(40 + 16 + 10));
    QVERIFY(outcome.found.cut);
    QCOMPARE(outcome.found.missing, (std::vector<int>{47})); // there is no room to name the others
    QVERIFY(!readInto(data, whole).found.cut);
}

void TstDataBlocksCut::theCheckFindsWhatTheReaderFinds()
{
    std::mt19937 random(7);
    const QByteArray whole = threeBlocks().bytes();
    for (int i = 0; i < 5000; ++i) {
        QByteArray bytes = whole;
        for (int change = 0; change < 2; ++change) {
            bytes[int(random() % unsigned(bytes.size()))] = char(random());
        }
        bytes.truncate(i % 3 == 0 ? int(random() % unsigned(bytes.size() + 1)) : bytes.size());
        SmpData data(8, 0);
        const Outcome outcome = readInto(data, bytes);
        QVERIFY2(checked(bytes, 8, true) == outcome, bytes.toHex().constData());
        // The heads alone may miss what is wrong with the entries.
        const Outcome heads = checked(bytes, 8, false);
        QVERIFY(heads == outcome || outcome.result == DataBlocksResult::Damaged);
    }
}

void TstDataBlocksCut::theCheckWithoutEntriesReadsOnlyHeads()
{
    /// Counts what is read of it.
    class CountedBuffer : public QBuffer {
    public:
        using QBuffer::QBuffer;
        qint64 count = 0;

    protected:
        qint64 readData(char *bytes, qint64 size) override
        {
            count += size;
            return QBuffer::readData(bytes, size);
        }
    };
    QByteArray bytes = DataFileBytes(8).samples(1'000'000).block(0, 0, stairs(1, 1, 500'000)).bytes();
    CountedBuffer device(&bytes);
    QVERIFY(device.open(QIODevice::ReadOnly | QIODevice::Unbuffered));
    DataBlocksFound found;
    QCOMPARE(checkDataBlocks(device, 8, false, found), DataBlocksResult::Done);
    QCOMPARE(device.count, qint64(40 + 16));
    QCOMPARE(found.bytes, treeBytes(500'000));
}

void TstDataBlocksCut::theMemoryOfATreeIsKnownBefore_data()
{
    QTest::addColumn<int>("entries");
    for (const int entries : {0, 1, 20'479, 20'480, 20'481, 50'000}) {
        QTest::addRow("%d", entries) << entries;
    }
}

void TstDataBlocksCut::theMemoryOfATreeIsKnownBefore()
{
    QFETCH(int, entries);
    const std::int64_t before = memBudget;
    SmpData data(8, 0);
    const auto bytes = DataFileBytes(8).samples(100'000).block(3, 0, stairs(1, 1, entries)).bytes();
    QCOMPARE(readInto(data, bytes).result, DataBlocksResult::Done);
    data.finish(data.smpCount());
    const std::int64_t taken = before - memBudget;
    QVERIFY(taken <= treeBytes(entries));
    QVERIFY(treeBytes(entries) - taken <= std::int64_t(sizeof(SmpEdgeLeaf)));
}

QTEST_GUILESS_MAIN(TstDataBlocksCut)
#include "tst_DataBlocksCut.moc"
