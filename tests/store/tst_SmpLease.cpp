#include "store/Captures.h"
#include "store/MemBudget.h"
#include "store/SmpLease.h"

#include <QtTest>

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

using namespace std::chrono_literals;

class TstSmpLease : public QObject {
    Q_OBJECT
private slots:
    void init() { memBudget = ample; }

    void aLeaseIsGrantedWhereAReadLockIs();
    void aHolderLearnsThatAWriterWaits();
    void eachHolderIsCalledOnceOutsideOfAllLocks();
    void aHolderMayLeaveWithinTheCall();
    void aHolderMayDestroyItsLeaseWithinTheCall();
    void aReleaseWaitsForACallThatIsUnderWay();
    void aWriterGoesOnAsSoonAsTheLastHolderHasLeft();
    void aBoundedWaitGivesUpOnAHolderThatStays();
    void aReadmittedStoreTellsTheNextWriterAnew();
    void aRetiredStoreGoesAtOnceWhenNobodyReads();
    void aRetiredStoreLastsAsLongAsItIsRead();
    void nobodyWaitsForAHolderWhoHasResignedNorCallsIt();
    void whoHasResignedKeepsTheTreesUntilItsRelease();
    void treesAreLeftToWhoHasResignedOnlyWhenAllOthersHaveLeft();
    void readersOfAFrameAreWaitedForBeforeTreesAreLeft();
    void readersNeverSeeACaptureThatAWriterTouches();

private:
    static constexpr std::int64_t ample = std::int64_t(1) << 40;
};

void TstSmpLease::aLeaseIsGrantedWhereAReadLockIs()
{
    SmpData data(1, 0);
    QVERIFY(!SmpLease(&data));
    QVERIFY(!SmpLease(nullptr));
    captures::close(data, {{5}}, 10);
    SmpLease lease(&data);
    QVERIFY(bool(lease));
    QVERIFY(bool(SmpLease(&data)));
    QVERIFY(!lease.writerWaits());
    QCOMPARE(data.leaseCount(), 1);
    lease.release();
    lease.release();
    QVERIFY(!lease);
    QVERIFY(!lease.writerWaits());
    QCOMPARE(data.leaseCount(), 0);
    data.closeToReaders();
    QVERIFY(!SmpLease(&data));
}

void TstSmpLease::aHolderLearnsThatAWriterWaits()
{
    SmpData data(1, 0);
    captures::close(data, {{5}}, 10);
    SmpLease lease(&data);
    data.closeToReaders(); // which waits for nobody
    QVERIFY(lease.writerWaits());
    QVERIFY(bool(lease));
    QCOMPARE(data.nextEdge(0, 0), std::int64_t(5)); // what is held stays good
}

void TstSmpLease::eachHolderIsCalledOnceOutsideOfAllLocks()
{
    SmpData data(1, 0);
    captures::close(data, {{5}}, 10);
    int calls = 0;
    std::vector<std::unique_ptr<SmpLease>> leases;
    for (int i = 0; i < 3; ++i) {
        leases.push_back(std::make_unique<SmpLease>(&data, [&] {
            ++calls;
            QVERIFY(data.leaseCount() > 0); // would stand still under the list's mutex
            QVERIFY(!SmpLease(&data));
        }));
    }
    data.closeToReaders();
    data.closeToReaders();
    QVERIFY(!data.open(0ms));
    QCOMPARE(calls, 3);
}

void TstSmpLease::aHolderMayLeaveWithinTheCall()
{
    SmpData data(1, 0);
    captures::close(data, {{5}}, 10);
    std::vector<std::unique_ptr<SmpLease>> leases(4);
    for (auto &lease : leases) {
        lease = std::make_unique<SmpLease>(&data, [&lease] { lease->release(); });
    }
    QVERIFY(data.open(0ms));
    QCOMPARE(data.leaseCount(), 0);
}

void TstSmpLease::aHolderMayDestroyItsLeaseWithinTheCall()
{
    SmpData data(1, 0);
    captures::close(data, {{5}}, 10);
    std::unique_ptr<SmpLease> lease;
    const std::vector<int> marks{1, 2, 3};
    int sum = 0;
    lease = std::make_unique<SmpLease>(&data, [&lease, &sum, marks] {
        lease.reset();
        for (const int mark : marks) { // what the call captured is still there
            sum += mark;
        }
    });
    QVERIFY(data.open(0ms));
    QCOMPARE(sum, 6);
}

void TstSmpLease::aReleaseWaitsForACallThatIsUnderWay()
{
    SmpData data(1, 0);
    captures::close(data, {{5}}, 10);
    std::atomic<bool> inCall{false};
    std::atomic<bool> goOn{false};
    std::atomic<bool> callOver{false};
    auto lease = std::make_unique<SmpLease>(&data, [&] {
        inCall = true;
        while (!goOn) {
            std::this_thread::yield();
        }
        callOver = true;
    });
    std::thread writer([&] { data.open(); });
    while (!inCall) {
        std::this_thread::yield();
    }
    bool overBefore = false;
    std::thread holder([&] {
        lease.reset();
        overBefore = callOver;
    });
    goOn = true;
    holder.join();
    writer.join();
    QVERIFY(overBefore);
}

void TstSmpLease::aWriterGoesOnAsSoonAsTheLastHolderHasLeft()
{
    SmpData data(1, 0);
    captures::close(data, {{5}}, 10);
    auto first = std::make_unique<SmpLease>(&data);
    auto second = std::make_unique<SmpLease>(&data);
    auto frame = std::make_unique<SmpReadLock>(&data);
    std::atomic<bool> opened{false};
    std::thread writer([&] {
        data.open();
        opened = true;
    });
    while (!first->writerWaits()) {
        std::this_thread::yield();
    }
    first.reset();
    QVERIFY(!opened);
    second.reset();
    QVERIFY(!opened);
    frame.reset();
    writer.join();
    QVERIFY(opened);
}

void TstSmpLease::aBoundedWaitGivesUpOnAHolderThatStays()
{
    SmpData data(1, 0);
    captures::close(data, {{5}}, 10);
    SmpLease lease(&data);
    QVERIFY(!data.open(1ms)); // on the holder's own thread: an unbounded wait would never end
    QVERIFY(!SmpReadLock(&data));
    lease.release();
    QVERIFY(data.open(0ms));
    {
        captures::close(data, {{5}}, 10);
        const SmpReadLock frame(&data);
        QVERIFY(!data.open(1ms));
    }
    QVERIFY(data.open(0ms));
}

void TstSmpLease::aReadmittedStoreTellsTheNextWriterAnew()
{
    SmpData data(1, 0);
    captures::close(data, {{5}}, 10);
    int calls = 0;
    SmpLease lease(&data, [&] { ++calls; });
    QVERIFY(!data.open(0ms));
    data.readmit();
    QVERIFY(!lease.writerWaits());
    QCOMPARE(data.sampleCount(), std::int64_t(10));
    QVERIFY(bool(SmpLease(&data)));
    QVERIFY(!data.open(0ms));
    QCOMPARE(calls, 2);
}

void TstSmpLease::aRetiredStoreGoesAtOnceWhenNobodyReads()
{
    auto data = std::make_unique<SmpData>(2, 0);
    captures::close(*data, {{5}, {6}}, 10);
    QVERIFY(memBudget < ample);
    bool told = false;
    auto lease = std::make_unique<SmpLease>(data.get());
    lease.reset();
    lease = std::make_unique<SmpLease>(data.get(), [&] {
        told = true;
        lease->release();
    });
    SmpData::retire(std::move(data));
    QVERIFY(told);
    QCOMPARE(memBudget.load(), ample);
    SmpData::retire(nullptr);
}

void TstSmpLease::aRetiredStoreLastsAsLongAsItIsRead()
{
    auto data = std::make_unique<SmpData>(1, 0);
    captures::close(*data, {{5}}, 10);
    SmpData &held = *data;
    auto lease = std::make_unique<SmpLease>(&held);
    SmpData::retire(std::move(data)); // returns, though this thread itself is the holder
    QVERIFY(lease->writerWaits());
    QCOMPARE(held.nextEdge(0, 0), std::int64_t(5));
    QVERIFY(memBudget < ample);
    lease.reset();
    QTRY_COMPARE(memBudget.load(), ample);
}

void TstSmpLease::nobodyWaitsForAHolderWhoHasResignedNorCallsIt()
{
    SmpData data(1, 0);
    captures::close(data, {{5}}, 10);
    int calls = 0;
    SmpLease lease(&data, [&] { ++calls; });
    lease.resign();
    QVERIFY(!lease);
    QVERIFY(data.open(0ms));
    QCOMPARE(calls, 0);
    QCOMPARE(data.leaseCount(), 0);
    captures::close(data, {{7}}, 10);
    QCOMPARE(data.nextEdge(0, 0), std::int64_t(7));
    lease.release();
    QCOMPARE(data.nextEdge(0, 0), std::int64_t(7));
}

void TstSmpLease::whoHasResignedKeepsTheTreesUntilItsRelease()
{
    auto data = std::make_unique<SmpData>(1, 0);
    captures::close(*data, {{5}}, 10);
    const SmpEdgeRoot &root = *data->chnRoots()[0];
    const std::int64_t charged = memBudget;
    SmpLease first(data.get());
    SmpLease second(data.get());
    first.resign();
    second.resign();
    QCOMPARE(data->nextEdge(0, 0), std::int64_t(5)); // nobody has come yet
    data->clear();
    QCOMPARE(data->entryCount(0), std::int64_t(0));
    QCOMPARE(memBudget.load(), charged);
    SmpData::retire(std::move(data));
    first.release();
    QCOMPARE(root.mids[0]->leaves[0]->position(0), std::int64_t(5));
    QCOMPARE(memBudget.load(), charged);
    second.release();
    QCOMPARE(memBudget.load(), ample);
}

void TstSmpLease::treesAreLeftToWhoHasResignedOnlyWhenAllOthersHaveLeft()
{
    SmpData data(1, 0);
    captures::close(data, {{5}}, 10);
    SmpLease resigned(&data);
    SmpLease other(&data);
    resigned.resign();
    QVERIFY(!data.open(0ms));
    QCOMPARE(data.nextEdge(0, 0), std::int64_t(5));
    data.readmit(); // the writer gives up: all is as it was
    QCOMPARE(data.sampleCount(), std::int64_t(10));
    other.release();
    resigned.release();
    QVERIFY(data.open(0ms));
    QCOMPARE(data.nextEdge(0, 0), std::int64_t(5));
}

void TstSmpLease::readersOfAFrameAreWaitedForBeforeTreesAreLeft()
{
    SmpData data(1, 0);
    captures::close(data, {{5}}, 10);
    SmpLease lease(&data);
    lease.resign();
    std::atomic<bool> reads{false};
    std::atomic<bool> left{false};
    int torn = 0;
    std::thread reader([&] {
        const SmpReadLock lock(&data);
        reads = bool(lock);
        while (data.complete()) {
            std::this_thread::yield();
        }
        for (int i = 0; i < 100'000; ++i) {
            torn += data.nextEdge(0, 0) == 5 ? 0 : 1;
        }
        left = true;
    });
    while (!reads) {
        std::this_thread::yield();
    }
    data.open();
    const bool wasLeft = left;
    reader.join();
    QVERIFY(wasLeft);
    QCOMPARE(torn, 0);
}

void TstSmpLease::readersNeverSeeACaptureThatAWriterTouches()
{
    constexpr int captureCount = 60;
    SmpData data(2, 0);
    std::atomic<bool> done{false};
    std::atomic<int> torn{0};
    std::atomic<int> admitted{0};
    std::atomic<int> called{0};
    const auto read = [&] {
        while (!done) {
            SmpLease lease(&data, [&] { ++called; });
            if (!lease) {
                std::this_thread::yield();
                continue;
            }
            ++admitted;
            while (!lease.writerWaits() && !done) {
                // Each capture holds transitions at n and 2 n and is 3 n long.
                const std::int64_t n = data.smpCount() / 3;
                torn += data.nextEdge(0, 0) == n && data.lastPosition(1) == 3 * n ? 0 : 1;
            }
        }
    };
    std::thread first(read);
    std::thread second(read);
    for (int n = 1; n <= captureCount || admitted < 2; ++n) {
        captures::close(data, {{n, 2 * n}, {n, 2 * n}}, 3 * n);
        std::this_thread::yield();
    }
    done = true;
    first.join();
    second.join();
    QCOMPARE(torn.load(), 0);
    QVERIFY(called <= admitted);
}

QTEST_GUILESS_MAIN(TstSmpLease)
#include "tst_SmpLease.moc"
