#include "files/DataBlocks.h"

#include <QTest>

#include <span>

namespace {

QByteArray hex(std::span<const std::uint8_t> bytes)
{
    return QByteArray(reinterpret_cast<const char *>(bytes.data()), int(bytes.size())).toHex();
}

} // namespace

class TstDataBlocks : public QObject {
    Q_OBJECT
private slots:
    void aFileHeadHasItsFieldsAtTheirOffsetsLittleEndian();
    void aBlockHeadHasItsFieldsAtTheirOffsetsLittleEndian();
    void headsComeBackAsTheyWereWritten_data();
    void headsComeBackAsTheyWereWritten();
    void aFileHeadWithAnotherMarkIsRefusedUnchanged();
    void aBlockHeadWithAnotherMarkIsRefusedUnchanged();
    void theSpareBytesOfTheHeadsAreNotLookedAt();
    void aLevelByteOtherThanZeroReadsAsOne();
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
    for (const std::size_t at : {5, 7, 13, 15, 21, 23, 29, 31, 33, 39})
        fileBytes[at] = 0xFF;
    DataFileHead file;
    QVERIFY(decodeFileHead(fileBytes, file));
    QVERIFY((file == DataFileHead{1, 2, 3, 4}));
    auto blockBytes = encodeBlockHead({1, 0, 3});
    for (const std::size_t at : {3, 6, 7, 13, 15})
        blockBytes[at] = 0xFF;
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

QTEST_GUILESS_MAIN(TstDataBlocks)
#include "tst_DataBlocks.moc"
