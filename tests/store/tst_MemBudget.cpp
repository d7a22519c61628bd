#include "store/MemBudget.h"
#include "store/PhysicalMemory.h"

#include <QtTest>

#include <cstring>

class TstMemBudget : public QObject {
    Q_OBJECT
private slots:
    void cleanup() { blockRefusal = nullptr; }
    void theBudgetStartsAtSeventyPercentOfThePhysicalMemory();
    void aSystemThatDoesNotTellItsMemoryGivesOneTebibyte();
    void aChunkLargerThanAPositiveRemainderIsGivenAllTheSame();
    void noChunkIsGivenOnceTheBudgetIsBelowOne();
    void aFreedChunkIsCreditedInFull();
    void aChunkThatTheHeapRefusesIsNotCharged();
    void freeingNullCreditsNothing();
    void aBlockIsTakenWhateverTheBudget();
};

void TstMemBudget::theBudgetStartsAtSeventyPercentOfThePhysicalMemory()
{
    QCOMPARE(memBudgetFor(1000), std::int64_t(700));
    QCOMPARE(memBudgetFor(std::int64_t(1) << 34), std::int64_t(12025908428)); // 0.7 of 16 GiB, cut
    memBudgetInit();
    QVERIFY(physicalMemoryBytes() > 0);
    QCOMPARE(memBudgetStart, memBudgetFor(physicalMemoryBytes()));
    QCOMPARE(memBudget.load(), memBudgetStart);
}

void TstMemBudget::aSystemThatDoesNotTellItsMemoryGivesOneTebibyte()
{
    QCOMPARE(memBudgetFor(0), std::int64_t(1) << 40);
}

void TstMemBudget::aChunkLargerThanAPositiveRemainderIsGivenAllTheSame()
{
    memBudget = 1;
    std::uint8_t *chunk = allocChunk(4096);
    QVERIFY(chunk != nullptr);
    std::memset(chunk, 0xA5, 4096);
    QCOMPARE(memBudget.load(), std::int64_t(1 - 4096));
    freeChunk(chunk, 4096);
}

void TstMemBudget::noChunkIsGivenOnceTheBudgetIsBelowOne()
{
    memBudget = 0;
    QVERIFY(allocChunk(1) == nullptr);
    memBudget = -5;
    QVERIFY(allocChunk(1) == nullptr);
    QCOMPARE(memBudget.load(), std::int64_t(-5));
}

void TstMemBudget::aFreedChunkIsCreditedInFull()
{
    memBudget = 10000;
    std::uint8_t *chunk = allocChunk(300);
    QCOMPARE(memBudget.load(), std::int64_t(9700));
    freeChunk(chunk, 300);
    QCOMPARE(memBudget.load(), std::int64_t(10000));
}

void TstMemBudget::aChunkThatTheHeapRefusesIsNotCharged()
{
    memBudget = 10000;
    blockRefusal = [](std::size_t size) { return size > 100; };
    QVERIFY(allocChunk(101) == nullptr);
    QCOMPARE(memBudget.load(), std::int64_t(10000));
    std::uint8_t *chunk = allocChunk(100);
    QVERIFY(chunk != nullptr);
    freeChunk(chunk, 100);
}

void TstMemBudget::freeingNullCreditsNothing()
{
    memBudget = 10;
    freeChunk(nullptr, 4096);
    giveBlock(nullptr, 4096);
    QCOMPARE(memBudget.load(), std::int64_t(10));
}

void TstMemBudget::aBlockIsTakenWhateverTheBudget()
{
    memBudget = -10;
    void *block = takeBlock(64);
    QVERIFY(block != nullptr);
    QCOMPARE(memBudget.load(), std::int64_t(-74));
    giveBlock(block, 64);
    QCOMPARE(memBudget.load(), std::int64_t(-10));
}

QTEST_APPLESS_MAIN(TstMemBudget)
#include "tst_MemBudget.moc"
