#include "files/DataBlocks.h"
#include "files/DataFileBytes.h"
#include "store/MemBudget.h"

#include <QBuffer>
#include <QTest>

#include <algorithm>
#include <limits>
#include <span>

namespace {

QByteArray hex(std::span<const std::uint8_t> bytes)
{
    return QByteArray(reinterpret_cast<const char *>(bytes.data()), int(bytes.size())).toHex();
}

/// A device that takes `room` bytes, and answers `reads` times.
class FailingBuffer : public QBuffer {
public:
    qint64 room = std::numeric_limits<qint64>::max();
    int reads = std::numeric_limits<int>::max();

protected:
    qint64 writeData(const char *bytes, qint64 size) override
    {
        const qint64 taken = QBuffer::writeData(bytes, std::min(size, room));
        room -= taken;
        return taken;
    }
    qint64 readData(char *bytes, qint64 size) override { return reads-- > 0 ? QBuffer::readData(bytes, size) : -1; }
};

} // namespace

class TstDataBlocks : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { memBudget = std::int64_t(1) << 30; }
    void aFileHeadHasItsFieldsAtTheirOffsetsLittleEndian();
    void aBlockHeadHasItsFieldsAtTheirOffsetsLittleEndian();
    void headsComeBackAsTheyWereWritten_data();
    void headsComeBackAsTheyWereWritten();
    void aFileHeadWithAnotherMarkIsRefusedUnchanged();
    void aBlockHeadWithAnotherMarkIsRefusedUnchanged();
    void theSpareBytesOfTheHeadsAreNotLookedAt();
    void aLevelByteOtherThanZeroReadsAsOne();
    void aDeviceThatIsFullAfterAnyByteFailsTheWriter();
    void aDeviceThatFailsAtAnyReadFailsTheReader();
    void theHookIsCalledAfterEachPieceAndStopsTheJob();
};

void TstDataBlocks::aFileHeadHasItsFieldsAtTheirOffsetsLittleEndian()
{
    const auto bytes = encodeFileHead({0x0102030405, 0x1112131415, 0x2122232425, 0x20});
    QCOMPARE(hex(bytes), QByteArray("6378646174000000"
                                    "0504030201000000"
                                    "1514131211000000"
                                    "2524232221000000"
                                    "2000000000000000"));
}

void TstDataBlocks::aBlockHeadHasItsFieldsAtTheirOffsetsLittleEndian()
{
    const auto bytes = encodeBlockHead({0x1F, 1, 0x0102030405});
    QCOMPARE(hex(bytes), QByteArray("232344001f010000"
                                    "0504030201000000"));
}

void TstDataBlocks::headsComeBackAsTheyWereWritten_data()
{
    QTest::addColumn<qint64>("number");
    QTest::addColumn<int>("chn");
    QTest::newRow("zero") << qint64(0) << 0;
    QTest::newRow("small") << qint64(1) << 15;
    QTest::newRow("beyond 32 bits") << (qint64(1) << 32) << 31;
    QTest::newRow("largest") << qint64(dataFileMax) << 255;
}

void TstDataBlocks::headsComeBackAsTheyWereWritten()
{
    QFETCH(qint64, number);
    QFETCH(int, chn);
    const DataFileHead file{number, number, number, chn};
    DataFileHead fileBack;
    QVERIFY(decodeFileHead(encodeFileHead(file), fileBack));
    QVERIFY(fileBack == file);
    const DataBlockHead block{chn, 1, number};
    DataBlockHead blockBack;
    QVERIFY(decodeBlockHead(encodeBlockHead(block), blockBack));
    QVERIFY(blockBack == block);
}

void TstDataBlocks::aFileHeadWithAnotherMarkIsRefusedUnchanged()
{
    for (std::size_t at = 0; at < 5; ++at) {
        auto bytes = encodeFileHead({1, 2, 3, 4});
        bytes[at] ^= 0x20;
        DataFileHead head{5, 6, 7, 8};
        QVERIFY(!decodeFileHead(bytes, head));
        QVERIFY((head == DataFileHead{5, 6, 7, 8}));
    }
}

void TstDataBlocks::aBlockHeadWithAnotherMarkIsRefusedUnchanged()
{
    for (std::size_t at = 0; at < 3; ++at) {
        auto bytes = encodeBlockHead({1, 1, 3});
        bytes[at] ^= 0x20;
        DataBlockHead head{5, 0, 7};
        QVERIFY(!decodeBlockHead(bytes, head));
        QVERIFY((head == DataBlockHead{5, 0, 7}));
    }
}

void TstDataBlocks::theSpareBytesOfTheHeadsAreNotLookedAt()
{
    auto fileBytes = encodeFileHead({1, 2, 3, 4});
    for (const std::size_t at : {5, 7, 13, 15, 21, 23, 29, 31, 33, 39}) {
        fileBytes[at] = 0xFF;
    }
    DataFileHead file;
    QVERIFY(decodeFileHead(fileBytes, file));
    QVERIFY((file == DataFileHead{1, 2, 3, 4}));
    auto blockBytes = encodeBlockHead({1, 0, 3});
    for (const std::size_t at : {3, 6, 7, 13, 15}) {
        blockBytes[at] = 0xFF;
    }
    DataBlockHead block;
    QVERIFY(decodeBlockHead(blockBytes, block));
    QVERIFY((block == DataBlockHead{1, 0, 3}));
}

void TstDataBlocks::aLevelByteOtherThanZeroReadsAsOne()
{
    for (const int level : {1, 2, 0x80, 0xFF}) {
        auto bytes = encodeBlockHead({0, 0, 0});
        bytes[5] = std::uint8_t(level);
        DataBlockHead head;
        QVERIFY(decodeBlockHead(bytes, head));
        QCOMPARE(head.level, 1);
    }
}

void TstDataBlocks::aDeviceThatIsFullAfterAnyByteFailsTheWriter()
{
    const auto data = CaptureBuilder(8).channel(0, 0, {1, 2, 3}).channel(4, 1, {7}).build();
    const std::vector<std::uint8_t> all(8, 1);
    const int whole = 40 + 16 + 4 * 5 + 16 + 2 * 5;
    for (int room = 0; room <= whole; ++room) {
        FailingBuffer device;
        QVERIFY(device.open(QIODevice::ReadWrite));
        device.room = room;
        const auto result = writeDataBlocks(device, *data, {all.data(), 0, 999});
        QVERIFY(result == (room == whole ? DataBlocksResult::Done : DataBlocksResult::DeviceError));
        QCOMPARE(device.data().size(), room);
    }
}

void TstDataBlocks::aDeviceThatFailsAtAnyReadFailsTheReader()
{
    const QByteArray part =
        DataFileBytes(8).samples(100'000).block(0, 0, stairs(1, 1, 90'000)).block(1, 0, {5, 100'000}).bytes();
    // The file head; a block head and three pieces; a block head and a piece.
    const int reads = 1 + 1 + 3 + 1 + 1;
    for (int failing = 0; failing <= reads; ++failing) {
        FailingBuffer device;
        device.setData(part);
        QVERIFY(device.open(QIODevice::ReadOnly | QIODevice::Unbuffered));
        device.reads = failing;
        SmpData data(8, 0);
        const auto result = readDataBlocks(device, data);
        QVERIFY(result == (failing == 0       ? DataBlocksResult::HeadRefused
                           : failing == reads ? DataBlocksResult::Done
                                              : DataBlocksResult::DeviceError));
    }
}

void TstDataBlocks::theHookIsCalledAfterEachPieceAndStopsTheJob()
{
    QByteArray part =
        DataFileBytes(8).samples(100'000).block(0, 0, stairs(1, 1, 90'000)).block(1, 0, {5, 100'000}).bytes();
    const std::int64_t first = 40 + 16;
    const std::vector<std::int64_t> positions{first + 204'800, first + 2 * 204'800, first + 450'000,
                                              first + 450'000 + 16 + 10};
    for (std::size_t stopAt = 0; stopAt <= positions.size(); ++stopAt) {
        QBuffer device(&part);
        QVERIFY(device.open(QIODevice::ReadOnly));
        SmpData data(8, 0);
        std::vector<std::int64_t> seen;
        const auto result = readDataBlocks(device, data, [&](std::int64_t position) {
            seen.push_back(position);
            return seen.size() <= stopAt;
        });
        const bool whole = stopAt == positions.size();
        QVERIFY(result == (whole ? DataBlocksResult::Done : DataBlocksResult::Stopped));
        QCOMPARE(seen, std::vector<std::int64_t>(positions.begin(),
                                                 positions.begin() + std::ptrdiff_t(whole ? stopAt : stopAt + 1)));
    }

    const auto data = CaptureBuilder(8).samples(100'000).channel(0, 0, stairs(1, 1, 90'000)).channel(1, 0).build();
    const std::vector<std::uint8_t> all(8, 1);
    QBuffer out;
    QVERIFY(out.open(QIODevice::WriteOnly));
    std::vector<std::int64_t> seen;
    QVERIFY(writeDataBlocks(out, *data, {all.data(), 0, 99'999}, [&seen](std::int64_t entries) {
                seen.push_back(entries);
                return true;
            }) == DataBlocksResult::Done);
    QCOMPARE(seen, (std::vector<std::int64_t>{40'956, 2 * 40'956, 90'001, 90'002}));
}

QTEST_GUILESS_MAIN(TstDataBlocks)
#include "tst_DataBlocks.moc"
