#include "device/UsbDesk.h"

#include <QtTest>

#include <limits>
#include <thread>

namespace {

int allocationsLeft = 0;

/// Lets the heap refuse from the given allocation on, counted from 0.
void refuseFrom(int allocation)
{
    allocationsLeft = allocation;
    blockRefusal = [](std::size_t) { return allocationsLeft-- <= 0; };
}

using Sizes = std::vector<std::uint32_t>;
using Lengths = std::vector<std::int32_t>;
using Calls = std::vector<std::string>;

/// Of reads that somebody ends: nearly a minute, so that it does not matter when that one stands still.
constexpr int patience = 20;

} // namespace

class TstUsbReadRun : public QObject {
    Q_OBJECT
private slots:
    void cleanup() { blockRefusal = nullptr; }

    void withoutADeviceOrAReceiverNothingIsRead();
    void whoDoesNotReceiveAnyMoreReadsNothing();
    void withoutBothReadSlotsNothingIsRead_data();
    void withoutBothReadSlotsNothingIsRead();
    void withoutMemoryForTwoBuffersNothingIsRead_data();
    void withoutMemoryForTwoBuffersNothingIsRead();

    void twoReadsAreQueuedBeforeTheDeviceIsStarted();
    void anUnlimitedRunEndsWithTheFirstShortRead();
    void anUnlimitedRunThatEndsWithAWholeReadEndsByTheTimeOut();
    void aReadIsPendingAtEachCompletion();
    void theBuffersAreHandedOverWithoutACopy();

    void aLimitBelowOneReadQueuesOneWholeRead();
    void aLimitIsCoveredByWholeReads_data();
    void aLimitIsCoveredByWholeReads();
    void shortReadsDoNotEndALimitedRun();
    void aLimitedRunToWhichTheDeviceOwesBytesEndsWithoutWaiting();
    void aLimitedRunThatFallsShortWaitsForTheReadThatIsQueued();
    void aLimitBelowZeroIsReachedByTheFirstBuffer();

    void nothingForTwoPointEightSecondsEndsTheRun();
    void aFailedOrEmptyReadEndsTheRun_data();
    void aFailedOrEmptyReadEndsTheRun();
    void aBudgetThatIsSpentMeanwhileEndsTheRun();
    void aFirstReadThatCannotBeQueuedEndsTheRunBeforeTheStart_data();
    void aFirstReadThatCannotBeQueuedEndsTheRunBeforeTheStart();
    void aReadThatCannotBeQueuedLaterStillLetsTheOtherArrive();

    void aNewSizeOfReadsCountsFromTheNextReadOn();
    void aReadIsShortByTheSizeWithWhichItWasQueued();
    void thePipeIsLeftCleanInThisOrder_data();
    void thePipeIsLeftCleanInThisOrder();
    void anotherRunMayFollowAtOnce();
    void requestsMayBeMadeFromTheReceiver();
    void aRunWithinARunIsRefused();
    void theSmallProductIsReadFromItsOwnPipe();
    void aHaltedPipeEndsOneRunAndServesTheNext();

    void aDeviceThatIsClosedByTheReceiverEndsTheRun();
    void aDeviceThatGoesWhileTheRunWaitsEndsItAtOnce();
    void aRunThatIsBrokenOffEndsAtOnceAndTheNextOneRuns();
    void breakingOffWithoutARunIsHarmless();
    void aTransferThatIsUnderWayKeepsItsDeviceFromBeingFreed();
    void anotherDeviceMayBeOpenedWhileTheRunOfTheFirstStillEnds();
    void theSizeOfReadsMayBeTunedFromAnotherThread();
};

void TstUsbReadRun::withoutADeviceOrAReceiverNothingIsRead()
{
    UsbDesk desk(noDevice);
    QCOMPARE(desk.transport->readStream(0, desk.receiver), 1);
    desk.usb->devices = {FakeUsbDevice{}};
    QVERIFY(desk.open());
    desk.transport->setCallback(nullptr);
    QCOMPARE(desk.transport->readStream(0, desk.receiver), 1);
    QCOMPARE(desk.usb->count("queueRead"), 0);
    QCOMPARE(memBudget.load(), UsbDesk::budget);
}

void TstUsbReadRun::whoDoesNotReceiveAnyMoreReadsNothing()
{
    UsbDesk desk;
    QVERIFY(desk.open(1000));
    desk.usb->reads = {FakeRead::of(7)};
    UsbReceiver former;
    QCOMPARE(desk.transport->readStream(0, former), 1);
    QCOMPARE(desk.usb->count("queueRead"), 0);
    QVERIFY(desk.receiver.lengths.empty()); // nor does the one that receives now
    QCOMPARE(desk.transport->readStream(0, desk.receiver), 0);
    QCOMPARE(desk.receiver.lengths, Lengths{7});
}

void TstUsbReadRun::withoutBothReadSlotsNothingIsRead_data()
{
    QTest::addColumn<int>("refused");
    QTest::newRow("the first") << 0;
    QTest::newRow("the second") << 1;
}

void TstUsbReadRun::withoutBothReadSlotsNothingIsRead()
{
    QFETCH(int, refused);
    UsbDesk desk({FakeUsbDevice{}}, {std::uint8_t(refused)});
    QCOMPARE(desk.transport->readStream(0, desk.receiver), 1); // a missing device is told first
    QVERIFY(desk.open());
    QCOMPARE(desk.transport->readStream(0, desk.receiver), 4);
    QCOMPARE(desk.transport->readStream(0, desk.receiver), 4);
    QCOMPARE(desk.usb->count("queueRead"), 0);
    QCOMPARE(memBudget.load(), UsbDesk::budget);
}

void TstUsbReadRun::withoutMemoryForTwoBuffersNothingIsRead_data()
{
    QTest::addColumn<int>("allocation");
    QTest::addColumn<bool>("byBudget");
    QTest::newRow("the heap refuses the first") << 0 << false;
    QTest::newRow("the heap refuses the second") << 1 << false;
    QTest::newRow("the budget is spent") << 0 << true;
    QTest::newRow("the budget is spent by the first") << 1 << true;
}

void TstUsbReadRun::withoutMemoryForTwoBuffersNothingIsRead()
{
    QFETCH(int, allocation);
    QFETCH(bool, byBudget);
    UsbDesk desk;
    QVERIFY(desk.open());
    const std::int64_t start = byBudget ? allocation : UsbDesk::budget; // one byte is enough for one buffer
    memBudget = start;
    if (!byBudget) {
        refuseFrom(allocation);
    }
    QCOMPARE(desk.transport->readStream(0, desk.receiver), 4);
    QCOMPARE(memBudget.load(), start);
    QCOMPARE(desk.usb->count("queueRead"), 0);
    QCOMPARE(desk.receiver.starts, 0);
}

void TstUsbReadRun::twoReadsAreQueuedBeforeTheDeviceIsStarted()
{
    UsbDesk desk;
    QVERIFY(desk.open());
    desk.receiver.started = [&desk] {
        QCOMPARE(desk.usb->count("queueRead"), 2);
        QCOMPARE(desk.usb->count("waitRead 2800"), 0);
    };
    desk.usb->reads = {FakeRead::of(10)};
    QCOMPARE(desk.transport->readStream(0, desk.receiver), 0);
    QCOMPARE(desk.receiver.starts, 1);
}

void TstUsbReadRun::anUnlimitedRunEndsWithTheFirstShortRead()
{
    UsbDesk desk;
    QVERIFY(desk.open(1000));
    desk.usb->reads = {FakeRead::full(), FakeRead::full(), FakeRead::full(), FakeRead::of(999), FakeRead::full()};
    QCOMPARE(desk.transport->readStream(0, desk.receiver), 0);
    QCOMPARE(desk.receiver.lengths, (Lengths{1000, 1000, 1000, 999}));
    QVERIFY(desk.receiver.inOrder);
    QCOMPARE(desk.usb->reads.size(), std::size_t(1));
    QCOMPARE(memBudget.load(), UsbDesk::budget - 4000); // what the receiver holds
    desk.receiver.chunks.clear();
    QCOMPARE(memBudget.load(), UsbDesk::budget);
}

void TstUsbReadRun::anUnlimitedRunThatEndsWithAWholeReadEndsByTheTimeOut()
{
    UsbDesk desk;
    QVERIFY(desk.open(1000));
    desk.usb->reads = {FakeRead::full(), FakeRead::full()};
    QCOMPARE(desk.transport->readStream(0, desk.receiver), 3);
    QCOMPARE(desk.receiver.lengths, (Lengths{1000, 1000}));
    QCOMPARE(desk.usb->count("waitRead 2800"), 3);
}

void TstUsbReadRun::aReadIsPendingAtEachCompletion()
{
    UsbDesk desk;
    QVERIFY(desk.open(64));
    desk.usb->reads = std::deque<FakeRead>(500, FakeRead::full());
    desk.usb->reads.push_back(FakeRead::of(1));
    desk.receiver.received = [&desk](int) { desk.receiver.chunks.clear(); };
    QCOMPARE(desk.transport->readStream(0, desk.receiver), 0);
    QCOMPARE(desk.receiver.lengths.size(), std::size_t(501));
    QVERIFY(desk.receiver.inOrder);
    QCOMPARE(desk.usb->fewestLeft, 1);
    QCOMPARE(memBudget.load(), UsbDesk::budget);
}

void TstUsbReadRun::theBuffersAreHandedOverWithoutACopy()
{
    UsbDesk desk;
    QVERIFY(desk.open(1000));
    desk.usb->reads = {FakeRead::full(), FakeRead::of(3)};
    QCOMPARE(desk.transport->readStream(0, desk.receiver), 0);
    QCOMPARE(desk.usb->buffers.at(0), desk.receiver.chunks.at(0).bytes());
    QCOMPARE(desk.usb->buffers.at(1), desk.receiver.chunks.at(1).bytes());
}

void TstUsbReadRun::aLimitBelowOneReadQueuesOneWholeRead()
{
    UsbDesk desk;
    QVERIFY(desk.open(1000));
    desk.usb->reads = {FakeRead::of(600)};
    QCOMPARE(desk.transport->readStream(600, desk.receiver), 0);
    QCOMPARE(desk.usb->readSizes, Sizes{1000});
    QCOMPARE(desk.receiver.lengths, Lengths{600});
    QCOMPARE(desk.usb->count("abortPipe"), 1);
}

void TstUsbReadRun::aLimitIsCoveredByWholeReads_data()
{
    QTest::addColumn<int>("limit");
    QTest::addColumn<int>("reads");
    QTest::newRow("exactly one read") << 1000 << 1;
    QTest::newRow("a byte more") << 1001 << 2;
    QTest::newRow("exactly two reads") << 2000 << 2;
    QTest::newRow("a byte more than two") << 2001 << 3;
    QTest::newRow("seven reads") << 6500 << 7;
}

void TstUsbReadRun::aLimitIsCoveredByWholeReads()
{
    QFETCH(int, limit);
    QFETCH(int, reads);
    UsbDesk desk;
    QVERIFY(desk.open(1000));
    desk.usb->whenUsedUp = FakeRead::full();
    QCOMPARE(desk.transport->readStream(limit, desk.receiver), 0);
    QCOMPARE(int(desk.usb->readSizes.size()), reads);
    QCOMPARE(int(desk.receiver.lengths.size()), reads);
    QVERIFY(desk.receiver.inOrder);
    desk.receiver.chunks.clear();
    QCOMPARE(memBudget.load(), UsbDesk::budget);
}

void TstUsbReadRun::shortReadsDoNotEndALimitedRun()
{
    UsbDesk desk;
    QVERIFY(desk.open(1000));
    desk.usb->reads = {FakeRead::of(10), FakeRead::of(20), FakeRead::full(), FakeRead::full(), FakeRead::full()};
    QCOMPARE(desk.transport->readStream(5000, desk.receiver), 3); // five reads were asked for and brought 3030 bytes
    QCOMPARE(desk.receiver.lengths, (Lengths{10, 20, 1000, 1000, 1000}));
}

void TstUsbReadRun::aLimitedRunToWhichTheDeviceOwesBytesEndsWithoutWaiting()
{
    UsbDesk desk;
    QVERIFY(desk.open(1000));
    desk.usb->reads = {FakeRead::of(500)};
    QCOMPARE(desk.transport->readStream(600, desk.receiver), 3);
    QCOMPARE(desk.receiver.lengths, Lengths{500});
    QCOMPARE(desk.usb->count("waitRead 2800"), 1); // no wait for the slot that holds no read
    QCOMPARE(desk.usb->count("abortPipe"), 1);
    desk.receiver.chunks.clear();
    QCOMPARE(memBudget.load(), UsbDesk::budget);
}

void TstUsbReadRun::aLimitedRunThatFallsShortWaitsForTheReadThatIsQueued()
{
    UsbDesk desk;
    QVERIFY(desk.open(1000));
    desk.usb->reads = {FakeRead::of(900), FakeRead::full()};
    QCOMPARE(desk.transport->readStream(1900, desk.receiver), 0);
    QCOMPARE(desk.receiver.lengths, (Lengths{900, 1000}));
}

void TstUsbReadRun::aLimitBelowZeroIsReachedByTheFirstBuffer()
{
    UsbDesk desk;
    QVERIFY(desk.open(1000));
    desk.usb->whenUsedUp = FakeRead::full();
    QCOMPARE(desk.transport->readStream(std::numeric_limits<std::int32_t>::min(), desk.receiver), 0);
    QCOMPARE(desk.receiver.lengths, Lengths{1000});
}

void TstUsbReadRun::nothingForTwoPointEightSecondsEndsTheRun()
{
    UsbDesk desk;
    QVERIFY(desk.open(1000));
    QCOMPARE(desk.transport->readStream(0, desk.receiver), 3);
    QCOMPARE(desk.receiver.starts, 1);
    QVERIFY(desk.receiver.lengths.empty());
    QCOMPARE(desk.usb->count("waitRead 2800"), 1);
    QCOMPARE(memBudget.load(), UsbDesk::budget);
}

void TstUsbReadRun::aFailedOrEmptyReadEndsTheRun_data()
{
    QTest::addColumn<int>("error");
    QTest::newRow("empty") << int(UsbError::None);
    QTest::newRow("timed out") << int(UsbError::TimedOut);
    QTest::newRow("halted") << int(UsbError::Halted);
    QTest::newRow("gone") << int(UsbError::Gone);
    QTest::newRow("failed") << int(UsbError::Failed);
}

void TstUsbReadRun::aFailedOrEmptyReadEndsTheRun()
{
    QFETCH(int, error);
    const FakeRead bad = error == 0 ? FakeRead::of(0) : FakeRead::fail(UsbError(error));
    for (const int limit : {0, 5000}) {
        UsbDesk desk;
        QVERIFY(desk.open(1000));
        desk.usb->reads = {FakeRead::full(), bad, FakeRead::full()};
        QCOMPARE(desk.transport->readStream(limit, desk.receiver), 3);
        QCOMPARE(desk.receiver.lengths, Lengths{1000}); // what came before stays
        desk.receiver.chunks.clear();
        QCOMPARE(memBudget.load(), UsbDesk::budget);
    }
}

void TstUsbReadRun::aBudgetThatIsSpentMeanwhileEndsTheRun()
{
    UsbDesk desk;
    QVERIFY(desk.open(1000));
    memBudget = 2500; // for three buffers: the third is larger than what is left
    desk.usb->whenUsedUp = FakeRead::full();
    QCOMPARE(desk.transport->readStream(0, desk.receiver), 4);
    QCOMPARE(desk.receiver.lengths, (Lengths{1000, 1000}));
    QCOMPARE(memBudget.load(), 500);
    desk.receiver.chunks.clear();
    QCOMPARE(memBudget.load(), 2500);
}

void TstUsbReadRun::aFirstReadThatCannotBeQueuedEndsTheRunBeforeTheStart_data()
{
    QTest::addColumn<int>("read");
    QTest::newRow("the first") << 1;
    QTest::newRow("the second") << 2;
}

void TstUsbReadRun::aFirstReadThatCannotBeQueuedEndsTheRunBeforeTheStart()
{
    QFETCH(int, read);
    UsbDesk desk;
    QVERIFY(desk.open(1000));
    desk.usb->whenUsedUp = FakeRead::full();
    desk.usb->failAt = desk.usb->operations + read;
    QCOMPARE(desk.transport->readStream(0, desk.receiver), 3);
    QCOMPARE(desk.receiver.starts, 0);
    QCOMPARE(desk.usb->count("waitRead 2800"), 0);
    QCOMPARE(desk.usb->count("abortPipe"), 1);
    QCOMPARE(memBudget.load(), UsbDesk::budget);
}

void TstUsbReadRun::aReadThatCannotBeQueuedLaterStillLetsTheOtherArrive()
{
    UsbDesk desk;
    QVERIFY(desk.open(1000));
    desk.usb->whenUsedUp = FakeRead::full();
    desk.receiver.received = [&desk](int number) {
        if (number == 2) {
            desk.usb->failAt = desk.usb->operations + 1;
        }
    };
    QCOMPARE(desk.transport->readStream(0, desk.receiver), 3);
    QCOMPARE(desk.receiver.lengths, (Lengths{1000, 1000, 1000, 1000}));
    QVERIFY(desk.receiver.inOrder);
    QCOMPARE(desk.usb->count("waitRead 2800"), 4);
    QCOMPARE(desk.usb->count("queueRead"), 5); // none after the one that was refused
    desk.receiver.chunks.clear();
    QCOMPARE(memBudget.load(), UsbDesk::budget);
}

void TstUsbReadRun::aNewSizeOfReadsCountsFromTheNextReadOn()
{
    UsbDesk desk;
    QVERIFY(desk.open(1000));
    desk.usb->reads = std::deque<FakeRead>(4, FakeRead::full());
    desk.receiver.received = [&desk](int number) { desk.transport->chunkSize = number == 0 ? 3000 : 50; };
    QCOMPARE(desk.transport->readStream(0, desk.receiver), 3);
    QCOMPARE(desk.usb->readSizes, (Sizes{1000, 1000, 3000, 50, 50, 50}));
    QCOMPARE(desk.receiver.lengths, (Lengths{1000, 1000, 3000, 50}));
    desk.receiver.chunks.clear();
    QCOMPARE(memBudget.load(), UsbDesk::budget);
}

void TstUsbReadRun::aReadIsShortByTheSizeWithWhichItWasQueued()
{
    UsbDesk desk;
    QVERIFY(desk.open(1000));
    desk.transport->chunkSize = 1000;
    desk.usb->reads = {FakeRead::full(), FakeRead::full(), FakeRead::of(100)};
    desk.receiver.received = [&desk](int) { desk.transport->chunkSize = 100; };
    // The first two came whole though the size is now another; the third, queued with 100, is whole as well.
    QCOMPARE(desk.transport->readStream(0, desk.receiver), 3);
    QCOMPARE(desk.receiver.lengths, (Lengths{1000, 1000, 100}));

    UsbDesk other;
    QVERIFY(other.open(1000));
    other.usb->reads = {FakeRead::of(500), FakeRead::full()};
    other.receiver.started = [&other] { other.transport->chunkSize = 500; };
    QCOMPARE(other.transport->readStream(0, other.receiver), 0);
    QCOMPARE(other.receiver.lengths, Lengths{500});
}

void TstUsbReadRun::thePipeIsLeftCleanInThisOrder_data()
{
    QTest::addColumn<int>("end");
    QTest::addColumn<int>("result");
    QTest::newRow("a short read") << 0 << 0;
    QTest::newRow("silence") << 1 << 3;
    QTest::newRow("a failed read") << 2 << 3;
    QTest::newRow("a spent budget") << 3 << 4;
}

void TstUsbReadRun::thePipeIsLeftCleanInThisOrder()
{
    QFETCH(int, end);
    UsbDesk desk;
    QVERIFY(desk.open(1000));
    const std::vector<FakeRead> ends = {FakeRead::of(1), FakeRead::silence(), FakeRead::fail(UsbError::Failed),
                                        FakeRead::full()};
    desk.usb->reads = {ends[std::size_t(end)]};
    if (end == 3) {
        desk.receiver.started = [] { memBudget = 0; };
    }
    QTEST(desk.transport->readStream(0, desk.receiver), "result");
    const Calls last(desk.usb->calls.end() - 3, desk.usb->calls.end());
    QCOMPARE(last, (Calls{"abortPipe", "flushPipe", "resetPipe"}));
    QVERIFY(desk.usb->misuse.empty());
}

void TstUsbReadRun::anotherRunMayFollowAtOnce()
{
    UsbDesk desk;
    QVERIFY(desk.open(1000));
    desk.usb->reads = {FakeRead::full(), FakeRead::silence()};
    QCOMPARE(desk.transport->readStream(0, desk.receiver), 3);
    desk.usb->reads = {FakeRead::full(), FakeRead::of(7)};
    QCOMPARE(desk.transport->readStream(0, desk.receiver), 0);
    QCOMPARE(desk.receiver.lengths, (Lengths{1000, 1000, 7}));
    QVERIFY(desk.usb->misuse.empty());
}

void TstUsbReadRun::requestsMayBeMadeFromTheReceiver()
{
    UsbDesk desk;
    QVERIFY(desk.open(1000));
    desk.usb->reads = {FakeRead::of(1)};
    int results = 0;
    desk.receiver.started = [&] { results += desk.transport->controlOut(0x30, 0, 0, {}); };
    desk.receiver.received = [&](int) { results += desk.transport->controlOut(0x38, 0, 0, {}); };
    QCOMPARE(desk.transport->readStream(0, desk.receiver), 0);
    QCOMPARE(results, 0);
    QCOMPARE(desk.usb->setups.size(), std::size_t(2));
}

void TstUsbReadRun::aRunWithinARunIsRefused()
{
    UsbDesk desk;
    QVERIFY(desk.open(1000));
    desk.usb->reads = {FakeRead::full(), FakeRead::of(1)};
    int inner = -1;
    desk.receiver.started = [&] { inner = desk.transport->readStream(0, desk.receiver); };
    QCOMPARE(desk.transport->readStream(0, desk.receiver), 0);
    QCOMPARE(inner, 4);
    QCOMPARE(desk.receiver.lengths, (Lengths{1000, 1}));
}

void TstUsbReadRun::theSmallProductIsReadFromItsOwnPipe()
{
    FakeUsbDevice smallOne;
    smallOne.product = 0x01A3;
    smallOne.pipes = {{0x82, 512}};
    UsbDesk desk({smallOne});
    QVERIFY(desk.open(1000));
    desk.usb->reads = {FakeRead::of(5)};
    QCOMPARE(desk.transport->readStream(0, desk.receiver), 0);
    QCOMPARE(desk.receiver.lengths, Lengths{5});
}

void TstUsbReadRun::aHaltedPipeEndsOneRunAndServesTheNext()
{
    UsbDesk desk;
    QVERIFY(desk.open(1000));
    desk.receiver.received = [&desk](int) { desk.usb->halt(); };
    desk.usb->reads = {FakeRead::full()};
    QCOMPARE(desk.transport->readStream(0, desk.receiver), 3);
    desk.receiver.received = nullptr;
    desk.usb->reads = {FakeRead::of(9)};
    QCOMPARE(desk.transport->readStream(0, desk.receiver), 0);
}

void TstUsbReadRun::aDeviceThatIsClosedByTheReceiverEndsTheRun()
{
    UsbDesk desk;
    QVERIFY(desk.open(1000));
    desk.usb->whenUsedUp = FakeRead::full();
    desk.receiver.received = [&desk](int number) {
        if (number == 1) {
            desk.transport->close();
        }
    };
    QCOMPARE(desk.transport->readStream(0, desk.receiver), 3);
    QCOMPARE(desk.receiver.lengths, (Lengths{1000, 1000}));
    QCOMPARE(desk.usb->count("queueRead"), 3); // none after it was closed
    QVERIFY(desk.usb->allFreed());
    QVERIFY(desk.usb->misuse.empty());
    desk.receiver.chunks.clear();
    QCOMPARE(memBudget.load(), UsbDesk::budget);
}

void TstUsbReadRun::aDeviceThatGoesWhileTheRunWaitsEndsItAtOnce()
{
    for (const bool told : {false, true}) { // by the system's end of the reads, or only by the list
        UsbDesk desk;
        QVERIFY(desk.open(1000));
        desk.usb->holds = true;
        desk.usb->patience = patience;
        desk.usb->reads = {FakeRead::full()};
        std::atomic<bool> waits{false};
        desk.receiver.received = [&waits](int) { waits = true; };
        int result = -1;
        std::thread run([&] { result = desk.transport->readStream(0, desk.receiver); });
        QTRY_VERIFY(waits);
        if (told) {
            desk.usb->unplug();
        } else {
            desk.usb->hideDevices();
        }
        QCOMPARE(desk.transport->refresh(), -1);
        run.join();
        QCOMPARE(desk.usb->waitsTimedOut, 0); // not the 2800 ms of silence
        QCOMPARE(result, 3);
        QVERIFY(desk.usb->allFreed());
        QVERIFY(desk.usb->misuse.empty());
        desk.receiver.chunks.clear();
        QCOMPARE(memBudget.load(), UsbDesk::budget);
    }
}

void TstUsbReadRun::aRunThatIsBrokenOffEndsAtOnceAndTheNextOneRuns()
{
    UsbDesk desk;
    QVERIFY(desk.open(1000));
    desk.usb->holds = true;
    desk.usb->patience = patience;
    desk.usb->reads = {FakeRead::full()};
    std::atomic<bool> waits{false};
    desk.receiver.received = [&waits](int) { waits = true; };
    int result = -1;
    std::thread run([&] { result = desk.transport->readStream(0, desk.receiver); });
    QTRY_VERIFY(waits);
    desk.transport->breakOffStream();
    run.join();
    QCOMPARE(result, 3);
    QCOMPARE(desk.usb->waitsTimedOut, 0); // not the 2800 ms of silence
    QCOMPARE(desk.receiver.lengths, Lengths{1000});
    desk.usb->holds = false;
    desk.usb->reads = {FakeRead::full(), FakeRead::of(7)};
    QCOMPARE(desk.transport->readStream(0, desk.receiver), 0);
    QCOMPARE(desk.receiver.lengths, (Lengths{1000, 1000, 7}));
    QVERIFY(desk.usb->misuse.empty());
    desk.receiver.chunks.clear();
    QCOMPARE(memBudget.load(), UsbDesk::budget);
}

void TstUsbReadRun::breakingOffWithoutARunIsHarmless()
{
    UsbDesk desk;
    desk.transport->breakOffStream(); // nothing is open
    QVERIFY(desk.open(1000));
    desk.transport->breakOffStream();
    desk.usb->reads = {FakeRead::of(7)};
    QCOMPARE(desk.transport->readStream(0, desk.receiver), 0);
    QVERIFY(desk.usb->misuse.empty());
}

void TstUsbReadRun::aTransferThatIsUnderWayKeepsItsDeviceFromBeingFreed()
{
    UsbDesk desk;
    QVERIFY(desk.open(1000));
    bool freedUnderWay = true;
    desk.usb->reads = {FakeRead::of(3)};
    desk.receiver.started = [&] {
        desk.usb->unplug();
        QCOMPARE(desk.transport->refresh(), -1);
        QVERIFY(!desk.transport->isOpen());
        freedUnderWay = desk.usb->interfacesOpen.empty();
    };
    QCOMPARE(desk.transport->readStream(0, desk.receiver), 3);
    QVERIFY(!freedUnderWay);
    QVERIFY(desk.usb->allFreed());
    QVERIFY(desk.usb->misuse.empty());
}

void TstUsbReadRun::anotherDeviceMayBeOpenedWhileTheRunOfTheFirstStillEnds()
{
    UsbDesk desk;
    QVERIFY(desk.open(1000));
    desk.usb->reads = {FakeRead::full()};
    desk.receiver.received = [&](int) {
        FakeUsbDevice other;
        other.path = "fake:2";
        other.product = 0x01A3;
        other.pipes = {{0x82, 512}};
        desk.usb->unplug();
        QCOMPARE(desk.transport->refresh(), -1);
        desk.usb->plug(other);
        QCOMPARE(desk.transport->refresh(), 1);
    };
    QCOMPARE(desk.transport->readStream(0, desk.receiver), 3);
    QVERIFY(desk.transport->isOpen());
    QCOMPARE(int(desk.usb->interfacesOpen.size()), 1);
    desk.receiver.received = nullptr;
    desk.usb->reads = {FakeRead::of(2)};
    QCOMPARE(desk.transport->readStream(0, desk.receiver), 0);
    QVERIFY(desk.usb->misuse.empty());
}

void TstUsbReadRun::theSizeOfReadsMayBeTunedFromAnotherThread()
{
    UsbDesk desk;
    QVERIFY(desk.open(2048));
    desk.usb->reads = std::deque<FakeRead>(100, FakeRead::full());
    desk.receiver.received = [&desk](int) { desk.receiver.chunks.clear(); };
    int result = -1;
    std::thread run([&] { result = desk.transport->readStream(0, desk.receiver); });
    for (int i = 1; i < 300; ++i) {
        desk.transport->tuneChunkSize(i * 5000);
    }
    run.join();
    QCOMPARE(result, 3);
    QVERIFY(desk.receiver.inOrder);
    QCOMPARE(memBudget.load(), UsbDesk::budget);
}

QTEST_GUILESS_MAIN(TstUsbReadRun)
#include "tst_UsbReadRun.moc"
