#include "acquisition/SmpBufQueue.h"

#include <QtTest>

#include <thread>

namespace {

constexpr std::int64_t budget = 1 << 20;

/// A queue of buffers of these lengths, 100 bytes taken for each.
void fill(SmpBufQueue &queue, const std::vector<std::int32_t> &lengths)
{
    for (const std::int32_t length : lengths) {
        SmpChunk chunk = SmpChunk::take(100);
        chunk.bytes()[0] = std::uint8_t(length);
        queue.append(std::move(chunk), length);
    }
}

} // namespace

class TstSmpBufQueue : public QObject {
    Q_OBJECT
private slots:
    void init() { memBudget = budget; }

    void buffersComeOutInTheOrderInWhichTheyCame();
    void theOldestIsDroppedAndFreed();
    void clearingFreesAll();
    void anEmptyQueueGivesNothing();
    void aWaitForRoomEndsWithATake();
    void aWaitForRoomEndsWithItsTime();
    void twoThreadsHandOverEveryBuffer();
};

void TstSmpBufQueue::buffersComeOutInTheOrderInWhichTheyCame()
{
    SmpBufQueue queue;
    fill(queue, {10, 20, 30});
    QCOMPARE(queue.count(), 3);
    QCOMPARE(queue.oldestLength(), 10);
    for (const std::int32_t want : {10, 20, 30}) {
        SmpChunk chunk;
        std::int32_t length = 0;
        QVERIFY(queue.take(chunk, length));
        QCOMPARE(length, want);
        QCOMPARE(std::int32_t(chunk.bytes()[0]), want);
    }
    QCOMPARE(memBudget.load(), budget);
}

void TstSmpBufQueue::theOldestIsDroppedAndFreed()
{
    SmpBufQueue queue;
    fill(queue, {10, 20});
    queue.dropOldest();
    QCOMPARE(queue.oldestLength(), 20);
    QCOMPARE(memBudget.load(), budget - 100);
}

void TstSmpBufQueue::clearingFreesAll()
{
    SmpBufQueue queue;
    fill(queue, {10, 20, 30});
    queue.clear();
    QCOMPARE(queue.count(), 0);
    QCOMPARE(memBudget.load(), budget);
}

void TstSmpBufQueue::anEmptyQueueGivesNothing()
{
    SmpBufQueue queue;
    SmpChunk chunk;
    std::int32_t length = 5;
    QVERIFY(!queue.take(chunk, length));
    QVERIFY(!chunk);
    queue.dropOldest();
    QCOMPARE(queue.oldestLength(), 0);
}

void TstSmpBufQueue::aWaitForRoomEndsWithATake()
{
    SmpBufQueue queue;
    fill(queue, {10, 20, 30});
    std::thread taker([&queue] {
        queue.dropOldest();
        queue.dropOldest();
    });
    queue.waitForRoom(1, 60000);
    QCOMPARE(queue.count(), 1);
    taker.join();
}

void TstSmpBufQueue::aWaitForRoomEndsWithItsTime()
{
    SmpBufQueue queue;
    fill(queue, {10, 20, 30});
    queue.waitForRoom(1, 1);
    QCOMPARE(queue.count(), 3);
    queue.waitForRoom(3, 60000); // there is room: no wait
}

void TstSmpBufQueue::twoThreadsHandOverEveryBuffer()
{
    SmpBufQueue queue;
    constexpr int many = 5000;
    std::int64_t sum = 0;
    std::thread taker([&] {
        for (int taken = 0; taken < many;) {
            SmpChunk chunk;
            std::int32_t length = 0;
            if (queue.take(chunk, length)) {
                ++taken;
                sum += length == std::int32_t(chunk.bytes()[0]) ? length : 0;
            }
        }
    });
    std::int64_t want = 0;
    for (int i = 0; i < many; ++i) {
        fill(queue, {1 + i % 100});
        want += 1 + i % 100;
        queue.waitForRoom(3, 1000);
    }
    taker.join();
    QCOMPARE(sum, want);
    QCOMPARE(memBudget.load(), budget);
}

QTEST_APPLESS_MAIN(TstSmpBufQueue)
#include "tst_SmpBufQueue.moc"
