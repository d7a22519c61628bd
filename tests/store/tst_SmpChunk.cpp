#include "store/SmpChunk.h"

#include <QtTest>

class TstSmpChunk : public QObject {
    Q_OBJECT
private slots:
    void init() { memBudget = 1000; }
    void aBufferIsChargedWhileItIsOwned();
    void aBufferThatIsHandedOverIsCreditedOnceByItsLastOwner();
    void aBufferThatIsReplacedIsCreditedAtOnce();
    void aBufferLargerThanABudgetThatIsNotSpentIsGiven();
    void aSpentBudgetGivesAnEmptyBufferThatCostsNothing();
    void aRefusalOfTheHeapGivesAnEmptyBufferThatCostsNothing();
    void aSizeThatIsNoneGivesAnEmptyBuffer();
};

void TstSmpChunk::aBufferIsChargedWhileItIsOwned()
{
    {
        SmpChunk chunk = SmpChunk::take(300);
        QVERIFY(bool(chunk));
        QCOMPARE(chunk.size(), 300);
        chunk.bytes()[299] = 7;
        QCOMPARE(memBudget.load(), 700);
    }
    QCOMPARE(memBudget.load(), 1000);
}

void TstSmpChunk::aBufferThatIsHandedOverIsCreditedOnceByItsLastOwner()
{
    SmpChunk first = SmpChunk::take(300);
    const std::uint8_t *bytes = first.bytes();
    SmpChunk second = std::move(first);
    QVERIFY(!first);
    QCOMPARE(first.size(), 0);
    QCOMPARE(second.bytes(), bytes);
    QCOMPARE(second.size(), 300);
    first.reset();
    QCOMPARE(memBudget.load(), 700);
    second.reset();
    QVERIFY(!second);
    QCOMPARE(memBudget.load(), 1000);
}

void TstSmpChunk::aBufferThatIsReplacedIsCreditedAtOnce()
{
    SmpChunk chunk = SmpChunk::take(300);
    chunk = SmpChunk::take(100);
    QCOMPARE(chunk.size(), 100);
    QCOMPARE(memBudget.load(), 900);
}

void TstSmpChunk::aBufferLargerThanABudgetThatIsNotSpentIsGiven()
{
    const SmpChunk chunk = SmpChunk::take(5000);
    QVERIFY(bool(chunk));
    QCOMPARE(memBudget.load(), -4000);
}

void TstSmpChunk::aSpentBudgetGivesAnEmptyBufferThatCostsNothing()
{
    memBudget = 0;
    const SmpChunk chunk = SmpChunk::take(10);
    QVERIFY(!chunk);
    QCOMPARE(chunk.size(), 0);
    QCOMPARE(memBudget.load(), 0);
}

void TstSmpChunk::aRefusalOfTheHeapGivesAnEmptyBufferThatCostsNothing()
{
    blockRefusal = [](std::size_t) { return true; };
    const SmpChunk chunk = SmpChunk::take(10);
    blockRefusal = nullptr;
    QVERIFY(!chunk);
    QCOMPARE(memBudget.load(), 1000);
}

void TstSmpChunk::aSizeThatIsNoneGivesAnEmptyBuffer()
{
    QVERIFY(!SmpChunk::take(0));
    QVERIFY(!SmpChunk::take(-1));
    QCOMPARE(memBudget.load(), 1000);
}

QTEST_APPLESS_MAIN(TstSmpChunk)
#include "tst_SmpChunk.moc"
