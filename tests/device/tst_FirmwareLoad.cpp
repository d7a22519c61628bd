#include "RequestDesk.h"
#include "device/FirmwareLoad.h"
#include "support/TestImages.h"

#include <QtTest>

using testImages::Bytes;

namespace {

QByteArray bytesOf(const Bytes &bytes)
{
    return {reinterpret_cast<const char *>(bytes.data()), int(bytes.size())};
}

QByteArray bytesOf(const std::string &text)
{
    return QByteArray::fromStdString(text);
}

UsbSetup ramWrite(std::uint32_t address, int length)
{
    return {0x40, 0xA0, std::uint16_t(address & 0xFFFF), std::uint16_t(address >> 16), std::uint16_t(length)};
}

SeenRequest ramWrite(std::uint32_t address, const QByteArray &data)
{
    return {ramWrite(address, int(data.size())), data};
}

const SeenRequest stopCpu = ramWrite(0xE600, QByteArray(1, '\1'));
const SeenRequest startCpu = ramWrite(0xE600, QByteArray(1, '\0'));

/// What a controller's RAM holds after these writes, the control register left out.
testImages::Memory memoryOf(const std::vector<SeenRequest> &seen)
{
    testImages::Memory memory;
    for (const SeenRequest &request : seen) {
        std::uint32_t address = std::uint32_t(request.setup.index) << 16 | request.setup.value;
        if (!request.setup.isIn() && address != 0xE600) {
            for (const char byte : request.data) {
                memory[address++] = std::uint8_t(byte);
            }
        }
    }
    return memory;
}

/// An image of one section of `words`, with the noise of "one" in it.
Bytes imageOfOne(std::size_t words, std::uint32_t address = 0x100)
{
    testImages::Memory memory;
    testImages::place(memory, address, testImages::noise("one", words * 4));
    return testImages::imageOf(memory, 0x12345678);
}

using Send = int (*)(BringUpRun &, const QByteArray &);

} // namespace

Q_DECLARE_METATYPE(Trouble)
Q_DECLARE_METATYPE(Send)

class TstFirmwareLoad : public QObject {
    Q_OBJECT
private slots:
    void hexTextIsSentRecordByRecordWhileTheCpuStands();
    void onlyDataRecordsWithDataAreSent();
    void dataBehindTheEndRecordIsSentAsWell();
    void aWrongChecksumIsNotLookedAt();
    void recordsBehindEachOtherInOneLineAreAllSent();
    void aTextWithoutRecordsOnlyStopsAndStartsTheCpu_data();
    void aTextWithoutRecordsOnlyStopsAndStartsTheCpu();
    void aRecordCutByTheEndOfTheTextEndsTheSend_data();
    void aRecordCutByTheEndOfTheTextEndsTheSend();
    void digitsThatAreNoneEndTheSend_data();
    void digitsThatAreNoneEndTheSend();
    void theCpuStandsStillAfterABadRecord();

    void anImageIsSentInPiecesOf1024Bytes();
    void aSectionsLastPieceIsItsRest_data();
    void aSectionsLastPieceIsItsRest();
    void anImagesAddressesHave32Bits();
    void anImagesHeadAndChecksumAreNotLookedAt();
    void aSectionThatRunsPastTheEndIsNotSent_data();
    void aSectionThatRunsPastTheEndIsNotSent();
    void aFirmwareOf65536BytesIsAnImageAndASmallerOneText();
    void aSectionOfNoWordsDoesNotStartTheFirmware();
    void anImageWithoutRoomForItsEndIsRefused_data();
    void anImageWithoutRoomForItsEndIsRefused();

    void everyTransferOfAFirmwareThatGoesWrongEndsTheSend_data();
    void everyTransferOfAFirmwareThatGoesWrongEndsTheSend();

    void anUploadIsTheImageAndZerosInWholeBlocks_data();
    void anUploadIsTheImageAndZerosInWholeBlocks();
    void anUploadTellsEachFurtherTenPercent();
    void aShortBulkWriteIsFollowedByTheRestOfItsBlock();
    void aBulkWriteThatMovesNothingIsAFailure();
    void theStatusByteIsTheResultOfTheUpload_data();
    void theStatusByteIsTheResultOfTheUpload();
    void theModelWithoutAnFpgaImageOnlyWaits();
    void aModelWithoutATableEntryIsRefused_data();
    void aModelWithoutATableEntryIsRefused();
    void everyTransferOfAnUploadThatGoesWrongEndsIt_data();
    void everyTransferOfAnUploadThatGoesWrongEndsIt();
    void aRunWhoseDeviceHasGoneSendsNothingToTheNextOne();
    void aStoppedRunSendsNothing();
};

// ---- Intel HEX -----------------------------------------------------------------------------------------------------

void TstFirmwareLoad::hexTextIsSentRecordByRecordWhileTheCpuStands()
{
    RequestDesk desk;
    const testImages::Memory memory = testImages::firmwareMemory("fw01A2");
    QCOMPARE(sendHexFirmware(*desk.makeRun(), bytesOf(testImages::firmware("fw01A2"))), 0);
    QCOMPARE(memoryOf(desk.seen), memory);
    QCOMPARE(desk.seen.front(), stopCpu);
    QCOMPARE(desk.seen.back(), startCpu);
    // 259 bytes in 17 records, 33 in 3.
    QCOMPARE(desk.seen.size(), std::size_t(1 + 17 + 3 + 1));
    QCOMPARE(desk.seen.at(1).setup, ramWrite(0, 16));
    QCOMPARE(desk.seen.at(17).setup, ramWrite(256, 3));
}

void TstFirmwareLoad::onlyDataRecordsWithDataAreSent()
{
    RequestDesk desk;
    const std::string text = "a heading\r\n" + testImages::hexRecord(0, 4, {0, 1}) +
                             testImages::hexRecord(0x10, 0, {}) + testImages::hexRecord(0x20, 0, {1, 0xAF}) +
                             testImages::hexRecord(0, 1, {});
    QCOMPARE(sendHexFirmware(*desk.makeRun(), bytesOf(text)), 0);
    QCOMPARE(desk.seen, (std::vector<SeenRequest>{stopCpu, ramWrite(0x20, QByteArray("\x01\xAF")), startCpu}));
}

void TstFirmwareLoad::dataBehindTheEndRecordIsSentAsWell()
{
    RequestDesk desk;
    const std::string text = testImages::hexRecord(0, 1, {}) + testImages::hexRecord(0x30, 0, {7});
    QCOMPARE(sendHexFirmware(*desk.makeRun(), bytesOf(text)), 0);
    QCOMPARE(desk.seen.at(1), ramWrite(0x30, QByteArray("\x07")));
}

void TstFirmwareLoad::aWrongChecksumIsNotLookedAt()
{
    RequestDesk desk;
    QCOMPARE(sendHexFirmware(*desk.makeRun(), ":0100400055ZZ"), 0);
    QCOMPARE(desk.seen.at(1), ramWrite(0x40, QByteArray("\x55")));
}

void TstFirmwareLoad::recordsBehindEachOtherInOneLineAreAllSent()
{
    RequestDesk desk;
    QCOMPARE(sendHexFirmware(*desk.makeRun(), ":0100400055AA:0100410056A9"), 0);
    QCOMPARE(desk.seen.size(), std::size_t(4));
    QCOMPARE(desk.seen.at(2), ramWrite(0x41, QByteArray("\x56")));
}

void TstFirmwareLoad::aTextWithoutRecordsOnlyStopsAndStartsTheCpu_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("of 0 bytes") << QByteArray();
    QTest::newRow("of 65,535 bytes") << QByteArray(65535, '0');
    QTest::newRow("of line ends") << QByteArray("\r\n\n");
}

void TstFirmwareLoad::aTextWithoutRecordsOnlyStopsAndStartsTheCpu()
{
    QFETCH(QByteArray, text);
    RequestDesk desk;
    QCOMPARE(sendHexFirmware(*desk.makeRun(), text), 0);
    QCOMPARE(desk.seen, (std::vector<SeenRequest>{stopCpu, startCpu}));
}

void TstFirmwareLoad::aRecordCutByTheEndOfTheTextEndsTheSend_data()
{
    QTest::addColumn<QByteArray>("text");
    const QByteArray record = ":03004000112233AA";
    for (int length = 1; length < record.size(); ++length) {
        QTest::addRow("after %d of %d bytes", length, int(record.size())) << record.left(length);
    }
}

void TstFirmwareLoad::aRecordCutByTheEndOfTheTextEndsTheSend()
{
    QFETCH(QByteArray, text);
    RequestDesk desk;
    QCOMPARE(sendHexFirmware(*desk.makeRun(), ":0100500044AA\r\n" + text), 2);
    QCOMPARE(desk.seen, (std::vector<SeenRequest>{stopCpu, ramWrite(0x50, QByteArray("\x44"))}));
}

void TstFirmwareLoad::digitsThatAreNoneEndTheSend_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("in the length") << QByteArray(":0G00400011AA");
    QTest::newRow("in the address") << QByteArray(":01004X0011AA");
    QTest::newRow("in the type") << QByteArray(":0100400-11AA");
    QTest::newRow("in the data") << QByteArray(":01004000 1AA");
    QTest::newRow("lower case") << QByteArray(":010040001aAA");
    QTest::newRow("a line end") << QByteArray(":010040001\nAA");
    QTest::newRow("a byte whose own value is that of a digit") << QByteArray(":010040001\x0F"
                                                                             "AA");
    QTest::newRow("a colon for a digit") << QByteArray(":01004000:1AA");
    QTest::newRow("a byte of 255") << QByteArray(":010040001\xFF\x41\x41");
}

void TstFirmwareLoad::digitsThatAreNoneEndTheSend()
{
    QFETCH(QByteArray, text);
    RequestDesk desk;
    QCOMPARE(sendHexFirmware(*desk.makeRun(), text), 2);
    QCOMPARE(desk.seen, (std::vector<SeenRequest>{stopCpu}));
}

void TstFirmwareLoad::theCpuStandsStillAfterABadRecord()
{
    RequestDesk desk;
    QCOMPARE(sendHexFirmware(*desk.makeRun(), ":01G04000\r\n" + bytesOf(testImages::hexRecord(0, 0, {1}))), 2);
    QCOMPARE(desk.seen, (std::vector<SeenRequest>{stopCpu}));
}

// ---- images --------------------------------------------------------------------------------------------------------

void TstFirmwareLoad::anImageIsSentInPiecesOf1024Bytes()
{
    RequestDesk desk;
    const Bytes image = testImages::firmware(testImages::imageFirmware);
    QVERIFY(image.size() >= 65536);
    QCOMPARE(sendImageFirmware(*desk.makeRun(), bytesOf(image)), 0);
    QCOMPARE(memoryOf(desk.seen), testImages::firmwareMemory(testImages::imageFirmware));
    QCOMPARE(desk.seen.front().setup, (UsbSetup{0xC0, 0xA0, 0, 0, 1}));
    QCOMPARE(desk.seen.back(), ramWrite(testImages::imageEntry, QByteArray()));
    // 16 whole pieces, 1000 bytes, 58 whole pieces and 608 bytes.
    QCOMPARE(desk.seen.size(), std::size_t(1 + 16 + 1 + 59 + 1));
    QCOMPARE(desk.seen.at(16).setup, ramWrite(0x3C00, 1024));
    QCOMPARE(desk.seen.at(17).setup, ramWrite(0x10000000, 1000));
    QCOMPARE(desk.seen.at(76).setup, ramWrite(testImages::imageEntry + 58 * 1024, 608));
}

void TstFirmwareLoad::aSectionsLastPieceIsItsRest_data()
{
    QTest::addColumn<int>("words");
    QTest::addColumn<QVector<int>>("pieces");
    QTest::newRow("one word") << 1 << QVector<int>{4};
    QTest::newRow("1020 bytes") << 255 << QVector<int>{1020};
    QTest::newRow("1024 bytes exactly") << 256 << QVector<int>{1024};
    QTest::newRow("1028 bytes") << 257 << QVector<int>{1024, 4};
    QTest::newRow("2048 bytes") << 512 << QVector<int>{1024, 1024};
}

void TstFirmwareLoad::aSectionsLastPieceIsItsRest()
{
    QFETCH(int, words);
    QFETCH(QVector<int>, pieces);
    RequestDesk desk;
    QCOMPARE(sendImageFirmware(*desk.makeRun(), bytesOf(imageOfOne(std::size_t(words)))), 0);
    QVector<int> sent;
    for (std::size_t i = 1; i + 1 < desk.seen.size(); ++i) {
        sent.append(desk.seen.at(i).setup.length);
    }
    QCOMPARE(sent, pieces);
}

void TstFirmwareLoad::anImagesAddressesHave32Bits()
{
    RequestDesk desk;
    QCOMPARE(sendImageFirmware(*desk.makeRun(), bytesOf(imageOfOne(300, 0x8001FE00))), 0);
    QCOMPARE(desk.seen.at(1).setup, (UsbSetup{0x40, 0xA0, 0xFE00, 0x8001, 1024}));
    QCOMPARE(desk.seen.at(2).setup, (UsbSetup{0x40, 0xA0, 0x0200, 0x8002, 176}));
    QCOMPARE(desk.seen.at(3).setup, (UsbSetup{0x40, 0xA0, 0x5678, 0x1234, 0}));
}

void TstFirmwareLoad::anImagesHeadAndChecksumAreNotLookedAt()
{
    Bytes image = imageOfOne(3);
    std::fill_n(image.begin(), 4, std::uint8_t(0xEE));
    std::fill_n(image.end() - 4, 4, std::uint8_t(0xEE));
    RequestDesk desk;
    QCOMPARE(sendImageFirmware(*desk.makeRun(), bytesOf(image)), 0);
    QCOMPARE(desk.seen.size(), std::size_t(3));
}

void TstFirmwareLoad::aSectionThatRunsPastTheEndIsNotSent_data()
{
    QTest::addColumn<Bytes>("image");
    const auto withCount = [](std::uint32_t words) {
        Bytes image = imageOfOne(3);
        Bytes count;
        testImages::putLittle(count, words);
        std::copy(count.begin(), count.end(), image.begin() + 4);
        return image;
    };
    QTest::newRow("by a word, into what ends the image") << withCount(4);
    QTest::newRow("to the last byte of the image") << withCount(6);
    QTest::newRow("by a word, past the last byte") << withCount(7);
    QTest::newRow("whose bytes take more than 32 bits") << withCount(0x40000003);
    QTest::newRow("of the largest size") << withCount(0xFFFFFFFF);
    QTest::newRow("of 65,536 bytes of text") << Bytes(65536, '0');
    QTest::newRow("of 65,536 bytes of 255") << Bytes(65536, 0xFF);
}

void TstFirmwareLoad::aSectionThatRunsPastTheEndIsNotSent()
{
    QFETCH(Bytes, image);
    RequestDesk desk;
    QCOMPARE(sendImageFirmware(*desk.makeRun(), bytesOf(image)), 2);
    QCOMPARE(desk.seen.size(), std::size_t(1)); // the opening read
}

void TstFirmwareLoad::aFirmwareOf65536BytesIsAnImageAndASmallerOneText()
{
    RequestDesk text;
    QCOMPARE(sendFirmware(*text.makeRun(), QByteArray(65535, '0')), 0);
    QCOMPARE(text.seen, (std::vector<SeenRequest>{stopCpu, startCpu}));
    RequestDesk nothing;
    QCOMPARE(sendFirmware(*nothing.makeRun(), QByteArray()), 0);
    QCOMPARE(nothing.seen, (std::vector<SeenRequest>{stopCpu, startCpu}));

    Bytes image = imageOfOne((65536 - 24) / 4);
    QCOMPARE(image.size(), std::size_t(65536));
    RequestDesk whole;
    QCOMPARE(sendFirmware(*whole.makeRun(), bytesOf(image)), 0);
    QCOMPARE(whole.seen.size(), std::size_t(1 + 64 + 1)); // the opening read, pieces, the start
}

void TstFirmwareLoad::aSectionOfNoWordsDoesNotStartTheFirmware()
{
    Bytes image = imageOfOne(3);
    const Bytes empty(8, 0);
    image.insert(image.begin() + 4, empty.begin(), empty.end());
    RequestDesk desk;
    QCOMPARE(sendImageFirmware(*desk.makeRun(), bytesOf(image)), 2);
    QCOMPARE(desk.seen.size(), std::size_t(1));
}

void TstFirmwareLoad::anImageWithoutRoomForItsEndIsRefused_data()
{
    QTest::addColumn<int>("size");
    for (const int size : {0, 1, 4, 12, 15}) {
        QTest::addRow("%d bytes", size) << size;
    }
}

void TstFirmwareLoad::anImageWithoutRoomForItsEndIsRefused()
{
    QFETCH(int, size);
    RequestDesk desk;
    QCOMPARE(sendImageFirmware(*desk.makeRun(), QByteArray(size, '\1')), 2);
    QCOMPARE(desk.seen.size(), std::size_t(1));
}

void TstFirmwareLoad::everyTransferOfAFirmwareThatGoesWrongEndsTheSend_data()
{
    QTest::addColumn<Send>("send");
    QTest::addColumn<Bytes>("firmware");
    QTest::addColumn<Trouble>("trouble");
    QTest::addColumn<int>("result");
    const auto add = [](const char *name, Send send, const Bytes &firmware) {
        QTest::addRow("%s, not open", name) << send << firmware << Trouble::NotOpen << 1;
        QTest::addRow("%s, failed", name) << send << firmware << Trouble::Failed << 2;
        QTest::addRow("%s, short", name) << send << firmware << Trouble::Short << 2;
        QTest::addRow("%s, unplugged", name) << send << firmware << Trouble::Unplugged << 2;
    };
    add("HEX text", &sendHexFirmware, testImages::firmware("fw01A1"));
    add("image", &sendImageFirmware, testImages::firmware(testImages::imageFirmware));
}

void TstFirmwareLoad::everyTransferOfAFirmwareThatGoesWrongEndsTheSend()
{
    QFETCH(Send, send);
    QFETCH(Bytes, firmware);
    QFETCH(Trouble, trouble);
    QFETCH(int, result);
    RequestDesk sound;
    QCOMPARE(send(*sound.makeRun(), bytesOf(firmware)), 0);
    const int count = sound.transfers();
    QVERIFY(count > 20);
    for (int k = 0; k < count; ++k) {
        RequestDesk desk;
        desk.trouble(k, trouble);
        const bool hasData = sound.seen.at(std::size_t(k)).setup.length > 0;
        // A request without data cannot be short.
        QCOMPARE(send(*desk.makeRun(), bytesOf(firmware)), trouble == Trouble::Short && !hasData ? 0 : result);
        QCOMPARE(desk.transfers(), trouble == Trouble::NotOpen ? k : k + 1);
    }
}

// ---- FPGA ----------------------------------------------------------------------------------------------------------

void TstFirmwareLoad::anUploadIsTheImageAndZerosInWholeBlocks_data()
{
    QTest::addColumn<int>("model");
    QTest::addColumn<int>("variant");
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("blocks");
    QTest::newRow("1 byte") << 6 << 0 << 1 << 1;
    QTest::newRow("2048 bytes") << 2 << 0 << 2048 << 1;
    QTest::newRow("2049 bytes") << 3 << 0 << 2049 << 2;
    QTest::newRow("4096 bytes") << 4 << 0 << 4096 << 2;
    QTest::newRow("6144 bytes") << 5 << 0 << 6144 << 2;
    QTest::newRow("6145 bytes, of the variant") << 5 << 1 << 6145 << 3;
    QTest::newRow("100,000 bytes, of two models") << 65 << 0 << 100000 << 25;
}

void TstFirmwareLoad::anUploadIsTheImageAndZerosInWholeBlocks()
{
    QFETCH(int, model);
    QFETCH(int, variant);
    QFETCH(int, size);
    QFETCH(int, blocks);
    RequestDesk desk;
    QCOMPARE(uploadFpga(*desk.makeRun(), {model, variant}), 0);
    QCOMPARE(desk.seen.front().setup, (UsbSetup{0x40, 0x50, 0, 0, 4}));
    QByteArray announced(4, '\0');
    for (int i = 0; i < 4; ++i) {
        announced[i] = char(size >> (8 * i));
    }
    QCOMPARE(desk.seen.front().data, announced);
    QCOMPARE(desk.usb->writeSizes, std::vector<std::uint32_t>(std::size_t(blocks), 4096));
    QCOMPARE(desk.seen.back().setup, (UsbSetup{0xC0, 0x50, 0, 0, 1}));
    QCOMPARE(desk.seen.size(), std::size_t(2));
}

void TstFirmwareLoad::anUploadTellsEachFurtherTenPercent()
{
    RequestDesk desk;
    QCOMPARE(uploadFpga(*desk.makeRun(), {8, 0}), 0); // 25 blocks: 4 percent each, counted from 0
    QCOMPARE(desk.reports,
             (QVector<QVector<int>>{
                 {4, 0, 12}, {4, 0, 24}, {4, 0, 36}, {4, 0, 48}, {4, 0, 60}, {4, 0, 72}, {4, 0, 84}, {4, 0, 96}}));
    RequestDesk small;
    QCOMPARE(uploadFpga(*small.makeRun(), {6, 0}), 0);
    QCOMPARE(small.reports, (QVector<QVector<int>>{{4, 0, 100}}));
}

void TstFirmwareLoad::aShortBulkWriteIsFollowedByTheRestOfItsBlock()
{
    RequestDesk desk;
    desk.usb->writeLimit = 3000;
    QCOMPARE(uploadFpga(*desk.makeRun(), {4, 0}), 0);
    QCOMPARE(desk.usb->writeSizes, (std::vector<std::uint32_t>{3000, 1096, 3000, 1096}));
    QCOMPARE(desk.reports, (QVector<QVector<int>>{{4, 0, 50}, {4, 0, 100}}));
}

void TstFirmwareLoad::aBulkWriteThatMovesNothingIsAFailure()
{
    RequestDesk desk;
    desk.usb->writeLimit = 0;
    QCOMPARE(uploadFpga(*desk.makeRun(), {4, 0}), 3);
    QCOMPARE(desk.usb->writeSizes.size(), std::size_t(1));
}

void TstFirmwareLoad::theStatusByteIsTheResultOfTheUpload_data()
{
    QTest::addColumn<int>("status");
    for (const int status : {0, 1, 0x15, 255}) {
        QTest::addRow("%d", status) << status;
    }
}

void TstFirmwareLoad::theStatusByteIsTheResultOfTheUpload()
{
    QFETCH(int, status);
    RequestDesk desk;
    desk.answer = [status](const UsbSetup &, QByteArray &bytes) { bytes[0] = char(status); };
    QCOMPARE(uploadFpga(*desk.makeRun(), {2, 0}), status);
}

void TstFirmwareLoad::theModelWithoutAnFpgaImageOnlyWaits()
{
    RequestDesk desk;
    QCOMPARE(uploadFpga(*desk.makeRun(), {1, 0}), 0);
    QCOMPARE(desk.pauses, QVector<int>{100});
    QCOMPARE(desk.transfers(), 0);
}

void TstFirmwareLoad::aModelWithoutATableEntryIsRefused_data()
{
    QTest::addColumn<int>("model");
    QTest::addColumn<int>("variant");
    for (const int model : {-1, 0, 10, 64, 96, 98, 1000}) {
        QTest::addRow("%d", model) << model << 0;
    }
    QTest::newRow("no such variant") << 8 << 1;
}

void TstFirmwareLoad::aModelWithoutATableEntryIsRefused()
{
    QFETCH(int, model);
    QFETCH(int, variant);
    RequestDesk desk;
    QCOMPARE(uploadFpga(*desk.makeRun(), {model, variant}), 1);
    QCOMPARE(desk.transfers(), 0);
}

void TstFirmwareLoad::everyTransferOfAnUploadThatGoesWrongEndsIt_data()
{
    QTest::addColumn<Trouble>("trouble");
    QTest::newRow("not open") << Trouble::NotOpen;
    QTest::newRow("failed") << Trouble::Failed;
    QTest::newRow("short") << Trouble::Short;
    QTest::newRow("unplugged") << Trouble::Unplugged;
}

void TstFirmwareLoad::everyTransferOfAnUploadThatGoesWrongEndsIt()
{
    QFETCH(Trouble, trouble);
    RequestDesk sound;
    QCOMPARE(uploadFpga(*sound.makeRun(), {5, 1}), 0);
    const int count = sound.transfers();
    QCOMPARE(count, 1 + 3 + 1);
    for (int k = 0; k < count; ++k) {
        const bool isBulk = k > 0 && k + 1 < count;
        if (trouble == Trouble::NotOpen && k > 1) {
            continue; // the desk closes behind control transfers only
        }
        RequestDesk desk;
        desk.trouble(k, trouble);
        int expected = trouble == Trouble::NotOpen ? 1 : isBulk ? 3 : 2;
        if (trouble == Trouble::Short && isBulk) {
            expected = 0; // the rest follows
        }
        QCOMPARE(uploadFpga(*desk.makeRun(), {5, 1}), expected);
    }
}

void TstFirmwareLoad::aRunWhoseDeviceHasGoneSendsNothingToTheNextOne()
{
    RequestDesk desk;
    const auto run = desk.makeRun();
    run->setGone();
    QVERIFY(desk.transport->isOpen());
    QCOMPARE(sendHexFirmware(*run, bytesOf(testImages::firmware("fw01A1"))), 1);
    QCOMPARE(sendImageFirmware(*run, bytesOf(imageOfOne(3))), 1);
    QCOMPARE(uploadFpga(*run, {2, 0}), 1);
    QCOMPARE(desk.transfers(), 0);
}

void TstFirmwareLoad::aStoppedRunSendsNothing()
{
    RequestDesk desk;
    const auto run = desk.makeRun();
    run->requestStop();
    QCOMPARE(sendHexFirmware(*run, bytesOf(testImages::firmware("fw01A1"))), 1);
    QCOMPARE(uploadFpga(*run, {2, 0}), 1);
    QCOMPARE(desk.transfers(), 0);
}

QTEST_GUILESS_MAIN(TstFirmwareLoad)
#include "tst_FirmwareLoad.moc"
