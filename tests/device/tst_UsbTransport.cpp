#include "device/UsbDesk.h"
#include "settings/HostSystem.h"

#include <QtTest>

#include <cstring>
#include <limits>
#include <thread>

namespace {

FakeUsbDevice device(const char *path, std::uint16_t product = 0x01A1)
{
    FakeUsbDevice made;
    made.path = path;
    made.product = product;
    return made;
}

std::string path(std::size_t length)
{
    return std::string(length, 'p');
}

} // namespace

class TstUsbTransport : public QObject {
    Q_OBJECT
private slots:
    void beforeTheFirstRefreshNothingIsOpen();
    void withoutADeviceARefreshChangesNothing();
    void aDeviceThatIsThereIsOpened();
    void anOpenDeviceStaysOpenWhileItsPathIsListedWhateverElseCame();
    void anOpenDeviceWhosePathIsNoLongerListedIsClosed();
    void theLastDeviceThatGoesIsClosed();
    void aSecondDeviceIsOpenedByTheRefreshAfterTheFirstHasGone();
    void aDeviceThatCannotBeUsedLeavesTheTurnToTheNext_data();
    void aDeviceThatCannotBeUsedLeavesTheTurnToTheNext();
    void onlyTheFirstHundredInterfacesAreLookedAt();
    void aListThatCannotBeHadIsAnEmptyOne();
    void everyListIsFreed();
    void closingFreesTheInterfaceThenTheFile();
    void aDestroyedTransportHasClosedItsDevice();
    void aPathIsFetchedWithTheRoomThatItNeeds();
    void aPathThatCannotBeFetchedTellsWhy_data();
    void aPathThatCannotBeFetchedTellsWhy();
    void aPathThatJustFitsIsNotCut();
    void anInterfaceWithoutAPathIsPassedOver();

    void theIdentityIsReadFromTheDescriptor();
    void aDeviceWithoutFirmwareIsOpenButNotReady_data();
    void aDeviceWithoutFirmwareIsOpenButNotReady();
    void theSmallProductUsesItsOwnEndPointAndHasNoOutPipe();
    void theEndPointIsFoundBehindOthers();
    void aReadyDeviceGetsItsPoliciesInOrder();
    void aDeviceThatIsNotReadyGetsOnlyTheControlTimeOuts();
    void atFullSpeedReadsAreSmallerAndTheLevelIsLimited();
    void aLevelBelowTheLimitStays();
    void atHighSpeedTheSizeOfReadsStartsAnew();

    void theSizeOfReadsFillsInAFifthToATwentiethOfASecond_data();
    void theSizeOfReadsFillsInAFifthToATwentiethOfASecond();
    void everyRateWithinReachFillsInTime();
    void aRateThatIsNoneChangesNothing();

    void aRequestWithoutADeviceIsNotSent();
    void aRequestGoesOutAsASetupPacket();
    void aRequestThatMovesFewerBytesHasFailed();
    void aRequestThatTheDeviceRefusesHasFailed();
    void aRequestWithoutDataIsDone();
    void moreDataThanAPacketCanTellAreRefused();
    void aWriteTellsHowMuchTheDeviceTook();
    void aWriteWithoutADeviceOrAPipeFails();

    void changesOnTheBusAreToldOnTheMainThreadOnceEach();
    void aSystemThatCannotTellChangesIsSaid();
    void theHostIsNamed();
};

void TstUsbTransport::beforeTheFirstRefreshNothingIsOpen()
{
    const UsbDesk desk;
    const UsbTransport &t = *desk.transport;
    QVERIFY(!t.isOpen());
    QCOMPARE(t.deviceOpen.load(), 0);
    QCOMPARE(int(t.pipeReady), 0);
    QCOMPARE(int(t.vendorId), 0);
    QCOMPARE(int(t.bcdUsb), 0);
    QCOMPARE(int(t.pipeOut), 0x02);
    QCOMPARE(int(t.pipeIn), 0x86);
    QCOMPARE(t.chunkSize.load(), 0x100000);
    QCOMPARE(desk.usb->operations, 0);
}

void TstUsbTransport::withoutADeviceARefreshChangesNothing()
{
    UsbDesk desk(noDevice);
    QCOMPARE(desk.transport->refresh(), 0);
    QVERIFY(!desk.transport->isOpen());
}

void TstUsbTransport::aDeviceThatIsThereIsOpened()
{
    UsbDesk desk;
    QCOMPARE(desk.transport->refresh(), 1);
    QVERIFY(desk.transport->isOpen());
    QCOMPARE(desk.transport->deviceOpen.load(), 1);
    QCOMPARE(int(desk.transport->pipeReady), 1);
    QCOMPARE(desk.transport->refresh(), 0);
}

void TstUsbTransport::anOpenDeviceStaysOpenWhileItsPathIsListedWhateverElseCame()
{
    UsbDesk desk({device("b")});
    QVERIFY(desk.open());
    desk.usb->devices = {device("a"), device("b"), device("c")};
    QCOMPARE(desk.transport->refresh(), 0);
    desk.usb->devices = {device("x"), device("y"), device("b")};
    QCOMPARE(desk.transport->refresh(), 0);
    QCOMPARE(desk.usb->count("openFile a"), 0);
    QVERIFY(desk.transport->isOpen());
}

void TstUsbTransport::anOpenDeviceWhosePathIsNoLongerListedIsClosed()
{
    UsbDesk desk({device("b")});
    QVERIFY(desk.open());
    desk.usb->devices = {device("bb"), device("B"), device("")};
    QCOMPARE(desk.transport->refresh(), -1);
    QVERIFY(!desk.transport->isOpen());
    QVERIFY(desk.usb->allFreed());
}

void TstUsbTransport::theLastDeviceThatGoesIsClosed()
{
    UsbDesk desk;
    QVERIFY(desk.open());
    desk.usb->unplug();
    QCOMPARE(desk.transport->refresh(), -1);
    QVERIFY(!desk.transport->isOpen());
    QVERIFY(desk.usb->allFreed());
    QCOMPARE(desk.usb->count("abortPipe"), 0); // no read has run: nothing goes to a device that is gone
    QCOMPARE(desk.transport->refresh(), 0);
}

void TstUsbTransport::aSecondDeviceIsOpenedByTheRefreshAfterTheFirstHasGone()
{
    UsbDesk desk({device("a")});
    QVERIFY(desk.open());
    desk.usb->devices = {device("a"), device("b", 0x02A1)};
    QCOMPARE(desk.transport->refresh(), 0);
    desk.usb->devices = {device("b", 0x02A1)};
    QCOMPARE(desk.transport->refresh(), -1);
    QCOMPARE(desk.transport->refresh(), 1);
    QCOMPARE(int(desk.transport->productId), 0x02A1);
}

void TstUsbTransport::aDeviceThatCannotBeUsedLeavesTheTurnToTheNext_data()
{
    QTest::addColumn<int>("fault");
    QTest::addColumn<int>("closed");
    QTest::newRow("does not open") << 0 << 0;
    QTest::newRow("does not initialise") << 1 << 1;
    QTest::newRow("has a short descriptor") << 2 << 1;
    QTest::newRow("does not tell its end points") << 3 << 1;
}

void TstUsbTransport::aDeviceThatCannotBeUsedLeavesTheTurnToTheNext()
{
    QFETCH(int, fault);
    FakeUsbDevice bad = device("bad", 0x03A3);
    bad.opens = fault != 0;
    bad.initialises = fault != 1;
    bad.descriptorLength = fault == 2 ? 17 : 18;
    bad.tellsSettings = fault != 3;
    UsbDesk desk({bad, device("good", 0x01A2)});
    QCOMPARE(desk.transport->refresh(), 1);
    QCOMPARE(int(desk.transport->productId), 0x01A2);
    QTEST(desk.usb->count("closeFile"), "closed");
    QCOMPARE(int(desk.usb->filesOpen.size()), 1);
    QCOMPARE(int(desk.usb->interfacesOpen.size()), 1);
    QCOMPARE(desk.usb->misuse.size(), std::size_t(0));

    UsbDesk alone({bad});
    QCOMPARE(alone.transport->refresh(), 0);
    QVERIFY(!alone.transport->isOpen());
    QVERIFY(alone.usb->allFreed());
}

void TstUsbTransport::onlyTheFirstHundredInterfacesAreLookedAt()
{
    FakeUsbDevice bad = device("bad");
    bad.opens = false;
    std::vector<FakeUsbDevice> many(100, bad);
    many.push_back(device("good"));
    UsbDesk desk(many);
    QCOMPARE(desk.transport->refresh(), 0);
    QCOMPARE(desk.usb->count("listHas"), 100);
    desk.usb->devices.erase(desk.usb->devices.begin());
    QCOMPARE(desk.transport->refresh(), 1);
}

void TstUsbTransport::aListThatCannotBeHadIsAnEmptyOne()
{
    UsbDesk desk;
    desk.usb->failAt = 1;
    QCOMPARE(desk.transport->refresh(), 0);
    QVERIFY(desk.open());
    desk.usb->failAt = desk.usb->operations + 1;
    QCOMPARE(desk.transport->refresh(), -1);
    QCOMPARE(desk.usb->misuse.size(), std::size_t(0));
}

void TstUsbTransport::everyListIsFreed()
{
    UsbDesk desk;
    QCOMPARE(desk.transport->refresh(), 1);
    QVERIFY(desk.usb->lists.empty());
    QCOMPARE(desk.transport->refresh(), 0);
    QVERIFY(desk.usb->lists.empty());
    desk.usb->unplug();
    QCOMPARE(desk.transport->refresh(), -1);
    QVERIFY(desk.usb->lists.empty());
    QCOMPARE(desk.transport->refresh(), 0);
    QVERIFY(desk.usb->lists.empty());
    QCOMPARE(desk.usb->count("openList"), 4);
}

void TstUsbTransport::closingFreesTheInterfaceThenTheFile()
{
    UsbDesk desk;
    QVERIFY(desk.open());
    desk.usb->calls.clear();
    desk.transport->close();
    QCOMPARE(desk.usb->calls, (std::vector<std::string>{"freeInterface", "closeFile"}));
    QVERIFY(!desk.transport->isOpen());
    desk.transport->close();
    QCOMPARE(desk.usb->calls.size(), std::size_t(2));
}

void TstUsbTransport::aDestroyedTransportHasClosedItsDevice()
{
    UsbDesk desk;
    QVERIFY(desk.open());
    int closed = 0;
    desk.usb->onClose = [&closed] { ++closed; };
    desk.transport.reset();
    QCOMPARE(closed, 1);
}

void TstUsbTransport::aPathIsFetchedWithTheRoomThatItNeeds()
{
    FakeUsb usb;
    usb.devices = {device("first"), device("second")};
    std::vector<std::size_t> rooms;
    usb.onDetail = [&rooms](int index, std::span<char> room, std::size_t &needed) -> UsbResult {
        rooms.push_back(room.size());
        const char *text = index == 1 ? "second" : "?";
        needed = std::strlen(text) + 1;
        if (room.size() < needed) {
            return {UsbError::TooSmall, 122};
        }
        std::memcpy(room.data(), text, needed);
        return {};
    };
    char room[260] = {};
    QCOMPARE(usbFetchPath(usb, UsbList(1), 1, room), std::uint32_t(usbPathFits));
    QCOMPARE(QByteArray(room), QByteArray("second"));
    QCOMPARE(rooms, (std::vector<std::size_t>{0, 7}));
}

void TstUsbTransport::aPathThatCannotBeFetchedTellsWhy_data()
{
    QTest::addColumn<int>("fault");
    QTest::addColumn<quint32>("result");
    QTest::addColumn<QByteArray>("left");
    QTest::newRow("the first question fails") << 0 << 0x8007001FU << QByteArray("untouched");
    QTest::newRow("only the low half of a code counts") << 1 << 0x80075678U << QByteArray("untouched");
    QTest::newRow("the second question fails") << 2 << 0x800700D2U << QByteArray("untouched");
    QTest::newRow("no memory for it") << 3 << 0x8007000EU << QByteArray("untouched");
    QTest::newRow("a path of 260 bytes is cut") << 4 << 0x8007007AU << QByteArray(259, 'p');
    QTest::newRow("a path of 5000 bytes is cut") << 5 << 0x8007007AU << QByteArray(259, 'p');
}

void TstUsbTransport::aPathThatCannotBeFetchedTellsWhy()
{
    QFETCH(int, fault);
    FakeUsb usb;
    int questions = 0;
    usb.onDetail = [fault, &questions](int, std::span<char> room, std::size_t &needed) -> UsbResult {
        ++questions;
        const std::string text = path(fault == 4 ? 260 : 5000);
        needed = fault == 3 ? std::size_t(-1) : text.size() + 1;
        switch (fault) {
        case 0:
            return {UsbError::Failed, 31};
        case 1:
            return {UsbError::NotFound, 0x12345678};
        default:
            break;
        }
        if (room.size() < needed) {
            return {UsbError::TooSmall, 122};
        }
        if (fault == 2) {
            return {UsbError::Gone, 0xD2};
        }
        std::memcpy(room.data(), text.c_str(), needed);
        return {};
    };
    char room[260] = "untouched";
    QTEST(usbFetchPath(usb, UsbList(1), 0, room), "result");
    QTEST(QByteArray(room), "left");
    QCOMPARE(questions, fault < 2 || fault == 3 ? 1 : 2);
}

void TstUsbTransport::aPathThatJustFitsIsNotCut()
{
    UsbDesk desk({device(path(259).c_str())});
    QCOMPARE(desk.transport->refresh(), 1);
    QCOMPARE(desk.transport->refresh(), 0);
}

void TstUsbTransport::anInterfaceWithoutAPathIsPassedOver()
{
    UsbDesk desk({device(path(260).c_str()), device("good")});
    QCOMPARE(desk.transport->refresh(), 1);
    QCOMPARE(desk.usb->count("openFile good"), 1);
    QCOMPARE(desk.transport->refresh(), 0);
    desk.usb->devices.pop_back();
    QCOMPARE(desk.transport->refresh(), -1);
}

void TstUsbTransport::theIdentityIsReadFromTheDescriptor()
{
    FakeUsbDevice other = device("a", 0xBEEF);
    other.vendor = 0x1234;
    other.bcdUsb = 0x0310;
    UsbDesk desk({other});
    QVERIFY(desk.open());
    QCOMPARE(int(desk.transport->vendorId), 0x1234);
    QCOMPARE(int(desk.transport->productId), 0xBEEF);
    QCOMPARE(int(desk.transport->bcdUsb), 0x0310);
    QCOMPARE(int(desk.transport->pipeIn), 0x86);
    QCOMPARE(int(desk.transport->pipeOut), 0x02);
}

void TstUsbTransport::aDeviceWithoutFirmwareIsOpenButNotReady_data()
{
    QTest::addColumn<int>("pipes");
    QTest::addColumn<int>("product");
    QTest::newRow("no end points") << 0 << 0x01A1;
    QTest::newRow("only end point 0x82, which is that of another product") << 1 << 0x01A1;
    QTest::newRow("the end point of the others on the small product") << 2 << 0x01A3;
    QTest::newRow("the end point takes no bytes") << 3 << 0x01A1;
    QTest::newRow("the OUT end point of the same number") << 4 << 0x01A1;
}

void TstUsbTransport::aDeviceWithoutFirmwareIsOpenButNotReady()
{
    QFETCH(int, pipes);
    QFETCH(int, product);
    const std::vector<std::vector<UsbPipe>> shapes = {
        {}, {{0x82, 512}}, {{0x02, 512}, {0x86, 512}}, {{0x86, 0}, {0x86, 512}}, {{0x06, 512}}};
    FakeUsbDevice bare = device("a", std::uint16_t(product));
    bare.pipes = shapes[std::size_t(pipes)];
    UsbDesk desk({bare});
    desk.transport->pipeReady = 1; // of the device before
    QCOMPARE(desk.transport->refresh(), 1);
    QCOMPARE(int(desk.transport->pipeReady), 0);
    QVERIFY(desk.transport->isOpen());
    QCOMPARE(desk.usb->count("selectSetting"), 0);
}

void TstUsbTransport::theSmallProductUsesItsOwnEndPointAndHasNoOutPipe()
{
    FakeUsbDevice smallOne = device("a", 0x01A3);
    smallOne.pipes = {{0x82, 512}};
    UsbDesk desk({smallOne});
    QVERIFY(desk.open());
    QCOMPARE(int(desk.transport->pipeReady), 1);
    QCOMPARE(int(desk.transport->pipeIn), 0x82);
    QCOMPARE(int(desk.transport->pipeOut), 0x00);
    QCOMPARE(desk.usb->count("policy 82 3 2800"), 1);
}

void TstUsbTransport::theEndPointIsFoundBehindOthers()
{
    FakeUsbDevice many = device("a");
    many.pipes = {{0x81, 64}, {0x02, 512}, {0x84, 8}, {0x86, 1024}, {0x88, 512}};
    UsbDesk desk({many});
    QVERIFY(desk.open());
    QCOMPARE(int(desk.transport->pipeReady), 1);
    QCOMPARE(desk.usb->count("queryPipe"), 4);
}

void TstUsbTransport::aReadyDeviceGetsItsPoliciesInOrder()
{
    UsbDesk desk;
    QVERIFY(desk.open());
    const std::vector<std::string> set(desk.usb->calls.end() - 8, desk.usb->calls.end());
    QCOMPARE(set, (std::vector<std::string>{"selectSetting", "policy 02 3 3000", "policy 86 3 2800", "policy 86 5 1",
                                            "policy 86 6 0", "policy 86 7 1", "policy 00 3 2000", "policy 80 3 2000"}));
}

void TstUsbTransport::aDeviceThatIsNotReadyGetsOnlyTheControlTimeOuts()
{
    FakeUsbDevice bare = device("a");
    bare.pipes = {};
    UsbDesk desk({bare});
    QVERIFY(desk.open());
    const std::vector<std::string> set(desk.usb->calls.end() - 3, desk.usb->calls.end());
    QCOMPARE(set, (std::vector<std::string>{"interfaceSettings", "policy 00 3 2000", "policy 80 3 2000"}));
}

void TstUsbTransport::atFullSpeedReadsAreSmallerAndTheLevelIsLimited()
{
    FakeUsbDevice slow = device("a");
    slow.pipes = {{0x86, 511}};
    UsbDesk desk({slow});
    QCOMPARE(desk.transport->refresh(), 1);
    QCOMPARE(desk.transport->chunkSize.load(), 102400);
    QCOMPARE(int(desk.transport->bcdUsb), 0x0110);
    QCOMPARE(int(desk.transport->pipeReady), 1);
}

void TstUsbTransport::aLevelBelowTheLimitStays()
{
    FakeUsbDevice slow = device("a");
    slow.pipes = {{0x86, 64}};
    slow.bcdUsb = 0x0100;
    UsbDesk desk({slow});
    QVERIFY(desk.open());
    QCOMPARE(int(desk.transport->bcdUsb), 0x0100);
}

void TstUsbTransport::atHighSpeedTheSizeOfReadsStartsAnew()
{
    UsbDesk desk;
    desk.transport->chunkSize = 4096;
    QCOMPARE(desk.transport->refresh(), 1);
    QCOMPARE(desk.transport->chunkSize.load(), 0x100000);
    QCOMPARE(int(desk.transport->bcdUsb), 0x0200);
}

void TstUsbTransport::theSizeOfReadsFillsInAFifthToATwentiethOfASecond_data()
{
    QTest::addColumn<qint64>("rate");
    QTest::addColumn<int>("size");
    QTest::newRow("less than a byte a second") << qint64(7) << 2048;
    QTest::newRow("a byte a second") << qint64(8) << 2048;
    QTest::newRow("20 kHz, one channel") << qint64(20000) << 2048;
    QTest::newRow("just enough for 4096") << qint64(4096 * 5 * 8) << 4096;
    QTest::newRow("a little less: the halved size is stored whatever its time") << qint64((4096 * 5 - 1) * 8) << 2048;
    QTest::newRow("a fifth of a second exactly") << qint64(0x100000) * 5 * 8 << 0x100000;
    QTest::newRow("a twentieth of a second exactly") << qint64(0x100000) * 20 * 8 << 0x100000;
    QTest::newRow("a byte more a second") << (qint64(0x100000) * 20 + 1) * 8 << 0x200000;
    QTest::newRow("up to eight bits more count as none") << qint64(0x100000) * 20 * 8 + 7 << 0x100000;
    QTest::newRow("320 Mbit/s") << qint64(320000000) << 0x200000;
    QTest::newRow("the last size") << (qint64(1) << 30) * 20 * 8 << (1 << 30);
    QTest::newRow("never beyond it") << (qint64(1) << 62) << (1 << 30);
    QTest::newRow("the greatest rate") << std::numeric_limits<qint64>::max() << (1 << 30);
}

void TstUsbTransport::theSizeOfReadsFillsInAFifthToATwentiethOfASecond()
{
    QFETCH(qint64, rate);
    QTEST(int(usbChunkSize(rate)), "size");
    UsbDesk desk;
    desk.transport->tuneChunkSize(rate);
    QTEST(int(desk.transport->chunkSize), "size");
}

void TstUsbTransport::everyRateWithinReachFillsInTime()
{
    for (std::int64_t bytes = 2048 * 5; bytes < (std::int64_t(1) << 30) * 20; bytes += bytes / 7 + 1) {
        const double time = usbChunkSize(bytes * 8) / double(bytes);
        QVERIFY2(time >= 0.05 && time <= 0.2, qPrintable(QString::number(bytes)));
    }
}

void TstUsbTransport::aRateThatIsNoneChangesNothing()
{
    UsbDesk desk;
    desk.transport->chunkSize = 12345;
    desk.transport->tuneChunkSize(0);
    desk.transport->tuneChunkSize(-1);
    desk.transport->tuneChunkSize(std::numeric_limits<qint64>::min());
    QCOMPARE(desk.transport->chunkSize.load(), 12345);
}

void TstUsbTransport::aRequestWithoutADeviceIsNotSent()
{
    UsbDesk desk(noDevice);
    std::uint8_t data[2] = {1, 2};
    std::uint32_t moved = 9;
    QCOMPARE(desk.transport->controlOut(0x20, 0, 0, data), 1);
    QCOMPARE(desk.transport->controlIn(0x20, 0, 0, data), 1);
    QCOMPARE(desk.transport->bulkWrite(data, moved), 1);
    QCOMPARE(moved, 0U);
    QCOMPARE(desk.usb->operations, 0);
    QCOMPARE(int(data[0]), 1);
}

void TstUsbTransport::aRequestGoesOutAsASetupPacket()
{
    UsbDesk desk;
    QVERIFY(desk.open());
    const std::uint8_t sent[3] = {0xA3, 0x01, 0xCA};
    QCOMPARE(desk.transport->controlOut(0x60, 0x1234, 0x5678, sent), 0);
    std::uint8_t got[2] = {};
    QCOMPARE(desk.transport->controlIn(0x20, 0x0010, 0, got), 0);
    QCOMPARE(int(got[1]), 0x5A);
    QCOMPARE(desk.usb->setups.size(), std::size_t(2));
    QCOMPARE(desk.usb->setups[0], (UsbSetup{0x40, 0x60, 0x1234, 0x5678, 3}));
    QCOMPARE(desk.usb->setups[1], (UsbSetup{0xC0, 0x20, 0x0010, 0, 2}));
    QCOMPARE(desk.usb->setups[0].wire(), (std::array<std::uint8_t, 8>{0x40, 0x60, 0x34, 0x12, 0x78, 0x56, 0x03, 0x00}));
}

void TstUsbTransport::aRequestThatMovesFewerBytesHasFailed()
{
    UsbDesk desk;
    QVERIFY(desk.open());
    desk.usb->onControl = [](const UsbSetup &setup, std::uint8_t *, std::uint32_t &moved) -> UsbResult {
        moved = setup.length - 1U;
        return {};
    };
    std::uint8_t data[4] = {};
    QCOMPARE(desk.transport->controlOut(0x20, 0, 0, data), 2);
    QCOMPARE(desk.transport->controlIn(0x20, 0, 0, data), 2);
}

void TstUsbTransport::aRequestThatTheDeviceRefusesHasFailed()
{
    UsbDesk desk;
    QVERIFY(desk.open());
    desk.usb->onControl = [](const UsbSetup &setup, std::uint8_t *, std::uint32_t &moved) -> UsbResult {
        moved = setup.length;
        return {UsbError::Halted, 31};
    };
    std::uint8_t data[4] = {};
    QCOMPARE(desk.transport->controlOut(0x20, 0, 0, data), 2);
    QVERIFY(desk.transport->isOpen());
}

void TstUsbTransport::aRequestWithoutDataIsDone()
{
    UsbDesk desk;
    QVERIFY(desk.open());
    QCOMPARE(desk.transport->controlOut(0x30, 0, 0, {}), 0);
    QCOMPARE(desk.usb->setups.at(0), (UsbSetup{0x40, 0x30, 0, 0, 0}));
}

void TstUsbTransport::moreDataThanAPacketCanTellAreRefused()
{
    UsbDesk desk;
    QVERIFY(desk.open());
    std::vector<std::uint8_t> data(0x10000);
    QCOMPARE(desk.transport->controlOut(0xA0, 0, 0, data), 2);
    QCOMPARE(desk.transport->controlIn(0xA0, 0, 0, data), 2);
    QCOMPARE(desk.usb->setups.size(), std::size_t(0));
    data.pop_back();
    QCOMPARE(desk.transport->controlOut(0xA0, 0, 0, data), 0);
}

void TstUsbTransport::aWriteTellsHowMuchTheDeviceTook()
{
    UsbDesk desk;
    QVERIFY(desk.open());
    const std::vector<std::uint8_t> data(4096);
    std::uint32_t moved = 0;
    QCOMPARE(desk.transport->bulkWrite(data, moved), 0);
    QCOMPARE(moved, 4096U);
    desk.usb->writeLimit = 1000;
    QCOMPARE(desk.transport->bulkWrite(data, moved), 0);
    QCOMPARE(moved, 1000U);
}

void TstUsbTransport::aWriteWithoutADeviceOrAPipeFails()
{
    FakeUsbDevice smallOne = device("a", 0x01A3);
    smallOne.pipes = {{0x82, 512}};
    UsbDesk desk({smallOne});
    const std::vector<std::uint8_t> data(4096);
    std::uint32_t moved = 5;
    QCOMPARE(desk.transport->bulkWrite(data, moved), 1);
    QVERIFY(desk.open());
    QCOMPARE(desk.transport->bulkWrite(data, moved), 2);
    QCOMPARE(moved, 0U);
}

void TstUsbTransport::changesOnTheBusAreToldOnTheMainThreadOnceEach()
{
    UsbDesk desk(noDevice);
    QVERIFY(desk.transport->registerHotplug(42));
    int told = 0;
    const auto count = [this, &told] {
        QCOMPARE(QThread::currentThread(), thread());
        ++told;
    };
    // Direct, so that it runs on the thread that emits.
    connect(desk.transport.get(), &UsbTransport::sigDevChange, this, count, Qt::DirectConnection);
    std::thread([&desk] {
        desk.usb->plug(device("a"));
        desk.usb->unplug();
        desk.usb->plug(device("b"));
    }).join();
    QCOMPARE(told, 0);
    QCoreApplication::processEvents();
    QCOMPARE(told, 3);
}

void TstUsbTransport::aSystemThatCannotTellChangesIsSaid()
{
    UsbDesk desk;
    desk.usb->hotplugWorks = false;
    QVERIFY(!desk.transport->registerHotplug(42));
}

void TstUsbTransport::theHostIsNamed()
{
    QCOMPARE(UsbTransport::osName(), osName());
    QCOMPARE(UsbTransport::osTag(), osTag());
}

QTEST_GUILESS_MAIN(TstUsbTransport)
#include "tst_UsbTransport.moc"
