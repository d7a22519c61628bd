#include "support/UsbPlatformContract.h"

#include <QtTest>

#include <array>
#include <atomic>
#include <cstring>
#include <thread>
#include <utility>

namespace {

constexpr std::uint8_t pipeIn = 0x86;
constexpr std::uint8_t pipeOut = 0x02;
constexpr int longWait = 5000; // ms: never waited for when all is well
constexpr int shortWait = 30;  // ms
constexpr std::uint16_t product = 0x01A4;

using Bytes = std::vector<std::uint8_t>;

} // namespace

/// An open device with two slots and two buffers of reads.
struct UsbPlatformContract::Device {
    explicit Device(UsbPlatform &usb_) : usb(usb_)
    {
        reads[0] = usb.makeReadSlot();
        reads[1] = usb.makeReadSlot();
    }
    ~Device() { close(); }
    Device(const Device &) = delete;
    Device &operator=(const Device &) = delete;

    bool open(const std::string &path)
    {
        if (!usb.openFile(path.c_str(), file).ok()) {
            return false;
        }
        if (!usb.initInterface(file, iface).ok()) {
            return false;
        }
        int count = 0;
        (void)usb.interfaceSettings(iface, count);
        if (count > 0) {
            (void)usb.selectSetting(iface);
        }
        usb.setPipePolicy(iface, 0x00, UsbPolicy::TransferTimeout, 2000);
        usb.setPipePolicy(iface, 0x80, UsbPolicy::TransferTimeout, 2000);
        return true;
    }
    void close()
    {
        usb.freeInterface(std::exchange(iface, UsbInterface::None));
        usb.closeFile(std::exchange(file, UsbFile::None));
    }
    UsbResult queue(std::size_t slot, std::uint8_t pipe = pipeIn)
    {
        buffers[slot].assign(size, 0xEE);
        return usb.queueRead(iface, pipe, buffers[slot].data(), std::uint32_t(size), *reads[slot]);
    }
    /// Waits for a read. @return its bytes, cut to what came; what the platform answered in `last`
    Bytes take(std::size_t slot)
    {
        std::uint32_t length = 0;
        last = {UsbError::Pending};
        if (usb.waitRead(*reads[slot], longWait)) {
            last = usb.readResult(iface, *reads[slot], length);
        }
        return {buffers[slot].begin(), buffers[slot].begin() + length};
    }
    UsbResult request(const UsbSetup &setup)
    {
        data.assign(setup.length, 0xEE);
        return usb.controlTransfer(iface, setup, data.data(), moved);
    }
    void cleanPipe()
    {
        usb.abortPipe(iface, pipeIn);
        usb.flushPipe(iface, pipeIn);
        usb.resetPipe(iface, pipeIn);
    }

    static constexpr std::size_t size = 64 * 1024;
    UsbPlatform &usb;
    UsbFile file = UsbFile::None;
    UsbInterface iface = UsbInterface::None;
    std::array<std::unique_ptr<UsbReadSlot>, 2> reads;
    std::array<Bytes, 2> buffers;
    Bytes data;
    std::uint32_t moved = 0;
    UsbResult last;
};

void UsbPlatformContract::init()
{
    m_face = makeFace();
    m_usb = m_face->makePlatform();
    QVERIFY(m_usb != nullptr);
}

void UsbPlatformContract::cleanup()
{
    m_usb.reset();
    m_face.reset();
}

std::vector<std::string> UsbPlatformContract::paths()
{
    std::vector<std::string> found;
    const UsbList list = m_usb->openList();
    for (int index = 0; list != UsbList::None && m_usb->listHas(list, index); ++index) {
        std::array<char, 260> room{};
        std::size_t needed = 0;
        if (m_usb->interfaceDetail(list, index, room, needed).ok()) {
            found.emplace_back(room.data());
        }
    }
    m_usb->freeList(list);
    return found;
}

std::vector<std::string> UsbPlatformContract::awaitPaths(std::size_t count)
{
    (void)QTest::qWaitFor([this, count] { return paths().size() == count; });
    return paths();
}

std::unique_ptr<UsbPlatformContract::Device> UsbPlatformContract::openOnly()
{
    const std::vector<std::string> found = awaitPaths(1);
    auto device = std::make_unique<Device>(*m_usb);
    if (found.size() != 1 || !device->open(found[0])) {
        return nullptr;
    }
    return device;
}

#define OPEN_DEVICE(device)                                                                                            \
    m_face->plug(product, true);                                                                                       \
    const std::unique_ptr<Device> device = openOnly();                                                                 \
    QVERIFY(device != nullptr)

void UsbPlatformContract::anEmptyBusHasNoEntries()
{
    QVERIFY(paths().empty());
    m_usb->freeList(UsbList::None);
}

void UsbPlatformContract::anEntryTellsHowMuchRoomItsPathNeeds()
{
    m_face->plug(product, true);
    const std::vector<std::string> found = awaitPaths(1);
    QCOMPARE(found.size(), std::size_t(1));
    const UsbList list = m_usb->openList();
    std::size_t needed = 0;
    QCOMPARE(m_usb->interfaceDetail(list, 0, {}, needed).error, UsbError::TooSmall);
    QCOMPARE(needed, found[0].size() + 1);
    Bytes room(needed, 0xEE);
    auto *chars = reinterpret_cast<char *>(room.data());
    QCOMPARE(m_usb->interfaceDetail(list, 0, {chars, needed - 1}, needed).error, UsbError::TooSmall);
    QCOMPARE(int(room[0]), 0xEE);
    QVERIFY(m_usb->interfaceDetail(list, 0, {chars, needed}, needed).ok());
    QCOMPARE(std::string(chars), found[0]);
    for (const int index : {-1, 1, 1000}) {
        QVERIFY(!m_usb->listHas(list, index));
        QCOMPARE(m_usb->interfaceDetail(list, index, {chars, room.size()}, needed).error, UsbError::NotFound);
        QCOMPARE(needed, std::size_t(0));
    }
    m_usb->freeList(list);
}

void UsbPlatformContract::aPathStaysTheSameAndIsNotThatOfAnother()
{
    m_face->plug(product, true);
    const std::vector<std::string> first = awaitPaths(1);
    QCOMPARE(first.size(), std::size_t(1));
    QCOMPARE(paths(), first);
    if (!m_face->takesTwo()) {
        return;
    }
    m_face->plug(product, true);
    const std::vector<std::string> both = awaitPaths(2);
    QCOMPARE(both.size(), std::size_t(2));
    QVERIFY(both[0] != both[1]);
    QVERIFY(both[0] == first[0] || both[1] == first[0]);
}

void UsbPlatformContract::aListDoesNotChangeWhileTheBusDoes()
{
    m_face->plug(product, true);
    QCOMPARE(awaitPaths(1).size(), std::size_t(1));
    const UsbList list = m_usb->openList();
    m_face->unplug();
    QVERIFY(awaitPaths(0).empty());
    std::size_t needed = 0;
    QVERIFY(m_usb->listHas(list, 0));
    QCOMPARE(m_usb->interfaceDetail(list, 0, {}, needed).error, UsbError::TooSmall);
    m_usb->freeList(list);
}

void UsbPlatformContract::aPathThatIsNoneDoesNotOpen()
{
    UsbFile file = UsbFile(7);
    QVERIFY(!m_usb->openFile("no such device", file).ok());
    QCOMPARE(file, UsbFile::None);
    m_usb->closeFile(file);
    m_usb->freeInterface(UsbInterface::None);
}

void UsbPlatformContract::aDeviceIsOpenedClosedAndOpenedAgain()
{
    OPEN_DEVICE(device);
    device->close();
    QVERIFY(device->open(paths().at(0)));
    QVERIFY(device->request(m_face->statusRequest()).ok());
}

void UsbPlatformContract::theDescriptorHasEighteenBytesAndTheIds()
{
    OPEN_DEVICE(device);
    std::array<std::uint8_t, 18> d{};
    std::uint32_t moved = 0;
    QVERIFY(m_usb->deviceDescriptor(device->iface, d, moved).ok());
    QCOMPARE(moved, 18U);
    QCOMPARE(int(d[0]), 18);
    QCOMPARE(int(d[1]), 1);
    QCOMPARE(d[8] | d[9] << 8, 0x77A1);
    QCOMPARE(d[10] | d[11] << 8, int(product));
    std::array<std::uint8_t, 9> part{};
    QVERIFY(m_usb->deviceDescriptor(device->iface, part, moved).ok());
    QCOMPARE(moved, 9U);
    QVERIFY(std::equal(part.begin(), part.end(), d.begin()));
}

void UsbPlatformContract::theEndPointsAreToldOneByOne()
{
    OPEN_DEVICE(device);
    int count = 0;
    QVERIFY(m_usb->interfaceSettings(device->iface, count).ok());
    QVERIFY(count >= 2);
    int found = 0;
    for (int index = 0; index < count; ++index) {
        UsbPipe pipe;
        QVERIFY(m_usb->queryPipe(device->iface, index, pipe).ok());
        if (pipe.id == pipeIn || pipe.id == pipeOut) {
            QVERIFY(pipe.maxPacket >= 512);
            ++found;
        }
    }
    QCOMPARE(found, 2);
    UsbPipe pipe;
    QCOMPARE(m_usb->queryPipe(device->iface, count, pipe).error, UsbError::NotFound);
    QCOMPARE(m_usb->queryPipe(device->iface, -1, pipe).error, UsbError::NotFound);
}

void UsbPlatformContract::aDeviceWithoutFirmwareHasNoBulkEndPoints()
{
    m_face->plug(product, false);
    const std::unique_ptr<Device> device = openOnly();
    QVERIFY(device != nullptr);
    int count = -1;
    QVERIFY(m_usb->interfaceSettings(device->iface, count).ok());
    for (int index = 0; index < count; ++index) {
        UsbPipe pipe;
        QVERIFY(m_usb->queryPipe(device->iface, index, pipe).ok());
        QVERIFY(pipe.id != pipeIn);
    }
    QVERIFY(!device->queue(0).ok());
    QVERIFY(!m_usb->waitRead(*device->reads[0], longWait));
}

void UsbPlatformContract::policiesAreTakenByPipesThatThereAre()
{
    OPEN_DEVICE(device);
    for (const std::uint8_t pipe : {std::uint8_t(0x00), std::uint8_t(0x80), pipeIn, pipeOut}) {
        QVERIFY(m_usb->setPipePolicy(device->iface, pipe, UsbPolicy::TransferTimeout, 1000).ok());
    }
    QVERIFY(m_usb->setPipePolicy(device->iface, pipeIn, UsbPolicy::AllowPartialReads, 1).ok());
    QVERIFY(m_usb->setPipePolicy(device->iface, pipeIn, UsbPolicy::AutoFlush, 0).ok());
    QVERIFY(m_usb->setPipePolicy(device->iface, pipeIn, UsbPolicy::RawIo, 1).ok());
    QCOMPARE(m_usb->setPipePolicy(device->iface, 0x8D, UsbPolicy::TransferTimeout, 1000).error, UsbError::NotFound);
}

void UsbPlatformContract::aRequestIsAnswered()
{
    OPEN_DEVICE(device);
    QVERIFY(device->request(m_face->statusRequest()).ok());
    QCOMPARE(device->moved, 2U);
    QVERIFY(device->data != Bytes(2, 0xEE));
}

void UsbPlatformContract::aShorterAnswerIsToldByItsLength()
{
    OPEN_DEVICE(device);
    QVERIFY(device->request(m_face->shortRequest()).ok());
    QVERIFY(device->moved > 0);
    QVERIFY(device->moved < 64);
    QCOMPARE(int(device->data[device->moved]), 0xEE);
}

void UsbPlatformContract::aRefusedRequestIsHaltedAndTheNextOneWorks()
{
    OPEN_DEVICE(device);
    QCOMPARE(device->request(m_face->refusedRequest()).error, UsbError::Halted);
    QCOMPARE(device->moved, 0U);
    QVERIFY(device->request(m_face->statusRequest()).ok());
}

void UsbPlatformContract::aRequestWithoutDataMovesNone()
{
    OPEN_DEVICE(device);
    device->moved = 9;
    QVERIFY(m_usb->controlTransfer(device->iface, m_face->emptyRequest(), nullptr, device->moved).ok());
    QCOMPARE(device->moved, 0U);
}

void UsbPlatformContract::aWriteMovesAllItsBytes()
{
    OPEN_DEVICE(device);
    m_usb->setPipePolicy(device->iface, pipeOut, UsbPolicy::TransferTimeout, 3000);
    const Bytes block(4096, 0x3C);
    std::uint32_t moved = 0;
    for (int i = 0; i < 4; ++i) {
        QVERIFY(m_usb->writePipe(device->iface, pipeOut, block, moved).ok());
        QCOMPARE(moved, 4096U);
    }
    QCOMPARE(m_face->written(), std::size_t(4 * 4096));
}

void UsbPlatformContract::aWriteToAPipeThatThereIsNotFails()
{
    OPEN_DEVICE(device);
    const Bytes block(16, 0);
    for (const std::uint8_t pipe : {std::uint8_t(0x00), std::uint8_t(0x0D)}) {
        std::uint32_t moved = 5;
        QVERIFY(!m_usb->writePipe(device->iface, pipe, block, moved).ok());
        QCOMPARE(moved, 0U);
    }
}

void UsbPlatformContract::anIdleSlotHasNothingToWaitFor()
{
    OPEN_DEVICE(device);
    std::uint32_t moved = 5;
    QVERIFY(!m_usb->waitRead(*device->reads[0], longWait));
    QCOMPARE(m_usb->readResult(device->iface, *device->reads[0], moved).error, UsbError::NotFound);
    QCOMPARE(moved, 0U);
}

void UsbPlatformContract::queuedReadsAreFilledInOrder()
{
    OPEN_DEVICE(device);
    QVERIFY(device->queue(0).ok());
    QVERIFY(device->queue(1).ok());
    const Bytes sent = m_face->send(3 * Device::size + 100);
    Bytes got;
    for (int read = 0; read < 4; ++read) {
        const std::size_t slot = std::size_t(read % 2);
        const Bytes part = device->take(slot);
        QVERIFY(device->last.ok());
        QCOMPARE(part.size(), read < 3 ? Device::size : std::size_t(100));
        got.insert(got.end(), part.begin(), part.end());
        if (read < 2) {
            QVERIFY(device->queue(slot).ok());
        }
    }
    QCOMPARE(got.size(), sent.size());
    QVERIFY(got == sent);
    // A slot whose result has been asked for is idle.
    QVERIFY(!m_usb->waitRead(*device->reads[0], longWait));
}

void UsbPlatformContract::aReadThatIsUnderWayIsPending()
{
    OPEN_DEVICE(device);
    QVERIFY(device->queue(0).ok());
    std::uint32_t moved = 5;
    QCOMPARE(m_usb->readResult(device->iface, *device->reads[0], moved).error, UsbError::Pending);
    QCOMPARE(moved, 0U);
    const Bytes sent = m_face->send(10);
    QCOMPARE(device->take(0), sent);
}

void UsbPlatformContract::aReadEndsWithTheTimeOutOfItsPipe()
{
    OPEN_DEVICE(device);
    m_usb->setPipePolicy(device->iface, pipeIn, UsbPolicy::TransferTimeout, shortWait);
    QVERIFY(device->queue(0).ok());
    QVERIFY(device->take(0).empty());
    QCOMPARE(device->last.error, UsbError::TimedOut);
    device->cleanPipe();
    const Bytes sent = m_face->send(10);
    QVERIFY(device->queue(0).ok());
    QCOMPARE(device->take(0), sent);
}

void UsbPlatformContract::aWaitEndsWithItsOwnTime()
{
    OPEN_DEVICE(device);
    QVERIFY(device->queue(0).ok());
    QVERIFY(!m_usb->waitRead(*device->reads[0], shortWait));
    const Bytes sent = m_face->send(10);
    QCOMPARE(device->take(0), sent); // it was still queued
}

void UsbPlatformContract::anAbortedReadEndsAndItsSlotServesAgain()
{
    OPEN_DEVICE(device);
    QVERIFY(device->queue(0).ok());
    QVERIFY(device->queue(1).ok());
    QVERIFY(m_usb->abortPipe(device->iface, pipeIn).ok());
    device->buffers[0].clear(); // the platform has let go of both
    device->buffers[1].clear();
    std::uint32_t moved = 5;
    QCOMPARE(m_usb->readResult(device->iface, *device->reads[0], moved).error, UsbError::Aborted);
    QCOMPARE(moved, 0U);
    QVERIFY(m_usb->flushPipe(device->iface, pipeIn).ok());
    QVERIFY(m_usb->resetPipe(device->iface, pipeIn).ok());
    // The one whose result nobody has asked for serves as well.
    QVERIFY(device->queue(1).ok());
    QCOMPARE(m_usb->readResult(device->iface, *device->reads[1], moved).error, UsbError::Pending);
    const Bytes sent = m_face->send(2000);
    QCOMPARE(device->take(1), sent);
}

void UsbPlatformContract::anAbortWakesAWaitingThread()
{
    OPEN_DEVICE(device);
    QVERIFY(device->queue(0).ok());
    std::atomic<int> waited{-1};
    std::thread waiting([&] { waited = m_usb->waitRead(*device->reads[0], longWait) ? 1 : 0; });
    m_usb->abortPipe(device->iface, pipeIn);
    waiting.join();
    QCOMPARE(waited.load(), 1); // not by the end of its time
}

void UsbPlatformContract::anAbortWithoutReadsIsHarmless()
{
    OPEN_DEVICE(device);
    device->cleanPipe();
    device->cleanPipe();
    const Bytes sent = m_face->send(10);
    QVERIFY(device->queue(0).ok());
    QCOMPARE(device->take(0), sent);
}

void UsbPlatformContract::aHaltedPipeReadsAgainAfterAReset()
{
    OPEN_DEVICE(device);
    m_face->halt();
    QVERIFY(device->queue(0).ok());
    QVERIFY(device->take(0).empty());
    QCOMPARE(device->last.error, UsbError::Halted);
    device->cleanPipe();
    const Bytes sent = m_face->send(10);
    QVERIFY(device->queue(0).ok());
    QCOMPARE(device->take(0), sent);
}

void UsbPlatformContract::aReadOfAPipeThatThereIsNotIsNotQueued()
{
    OPEN_DEVICE(device);
    QVERIFY(!device->queue(0, 0x8D).ok());
    QVERIFY(!m_usb->waitRead(*device->reads[0], longWait));
}

void UsbPlatformContract::freeingAnInterfaceEndsItsReads()
{
    OPEN_DEVICE(device);
    QVERIFY(device->queue(0).ok());
    QVERIFY(device->queue(1).ok());
    device->close();
    device->buffers[0].clear();
    QVERIFY(m_usb->waitRead(*device->reads[0], longWait));
    QVERIFY(m_usb->waitRead(*device->reads[1], longWait));
    QVERIFY(device->open(paths().at(0)));
    QVERIFY(device->queue(0).ok());
    device->cleanPipe();
}

void UsbPlatformContract::requestsWorkWhileAReadIsPending()
{
    OPEN_DEVICE(device);
    QVERIFY(device->queue(0).ok());
    QVERIFY(device->queue(1).ok());
    for (int i = 0; i < 20; ++i) {
        QVERIFY(device->request(m_face->statusRequest()).ok());
    }
    const Bytes sent = m_face->send(10);
    QCOMPARE(device->take(0), sent);
}

void UsbPlatformContract::anUnplugEndsAPendingRead()
{
    OPEN_DEVICE(device);
    QVERIFY(device->queue(0).ok());
    QVERIFY(device->queue(1).ok());
    m_face->unplug();
    for (const std::size_t slot : {std::size_t(0), std::size_t(1)}) {
        QVERIFY(device->take(slot).empty());
        QVERIFY(!device->last.ok());
        QVERIFY(device->last.error != UsbError::Pending);
    }
    device->cleanPipe();
}

void UsbPlatformContract::aDeviceThatHasGoneAnswersErrorsOnly()
{
    OPEN_DEVICE(device);
    m_face->unplug();
    QVERIFY(awaitPaths(0).empty());
    QVERIFY(!device->request(m_face->statusRequest()).ok());
    std::uint32_t moved = 5;
    QVERIFY(!m_usb->writePipe(device->iface, pipeOut, Bytes(16), moved).ok());
    QCOMPARE(moved, 0U);
    if (device->queue(0).ok()) {
        QVERIFY(device->take(0).empty());
        QVERIFY(!device->last.ok());
    }
    device->cleanPipe();
    device->close();
}

void UsbPlatformContract::aDeviceThatComesBackIsOpenedByItsNewPath()
{
    OPEN_DEVICE(device);
    m_face->unplug();
    QVERIFY(awaitPaths(0).empty());
    device->close();
    m_face->plug(0x03A1, true);
    const std::unique_ptr<Device> again = openOnly();
    QVERIFY(again != nullptr);
    std::array<std::uint8_t, 18> d{};
    QVERIFY(m_usb->deviceDescriptor(again->iface, d, again->moved).ok());
    QCOMPARE(d[10] | d[11] << 8, 0x03A1);
}

void UsbPlatformContract::arrivalsAndRemovalsAreTold()
{
    std::atomic<int> told{0};
    if (!m_usb->registerHotplug(0, [&told] { ++told; })) {
        QSKIP("this platform tells its messages to a window");
    }
    QCOMPARE(told.load(), 0);
    m_face->plug(product, true);
    QTRY_VERIFY(told >= 1);
    QCOMPARE(paths().size(), std::size_t(1)); // what is told can be seen
    told = 0;
    m_face->unplug();
    QTRY_VERIFY(told >= 1);
    QVERIFY(paths().empty());
    m_usb.reset(); // while `told` lives
}
