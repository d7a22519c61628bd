#include "analysis/CaptureDifference.h"
#include "files/DataFileBytes.h"
#include "store/MemBudget.h"

#include <QtTest>

namespace {

using Edges = std::vector<std::int64_t>;

std::unique_ptr<SmpData> captureOf(const Edges &edges, int level = 0, std::int64_t samples = 1000)
{
    return CaptureBuilder(2).samples(samples).channel(1, level, edges).build();
}

ChannelDifference compared(const SmpData &a, const SmpData &b, const DifferenceRange &range)
{
    const SmpReadLock lockA(&a);
    const SmpReadLock lockB(&b);
    return compareChannel(a, b, 1, range);
}

ChannelDifference differenceOf(const Edges &a, const Edges &b, std::int64_t tolerance = 0)
{
    return compared(*captureOf(a), *captureOf(b), {0, 0, 1000, tolerance});
}

} // namespace

class TstCaptureDifference : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { memBudget = std::int64_t(1) << 40; }
    void equalChannelsAreTheSame();
    void aMovedEdgeDiffersOnBothSides();
    void edgesWithinTheToleranceAreTheSame();
    void aMissingPulseIsTwoEdgesOfOneSide();
    void edgesOfOtherDirectionsNeverMatch();
    void anotherStartLevelIsTheFirstDifference();
    void anEdgeAtTheStartMayBeLate();
    void anEdgeAtTheEndMayBeOutside();
    void oneStartLiesOnTheOther();
    void aRangeEndsTheComparison();
};

void TstCaptureDifference::equalChannelsAreTheSame()
{
    const ChannelDifference found = differenceOf({10, 20, 500}, {10, 20, 500});
    QVERIFY(found.isSame());
    QCOMPARE(found.differing, std::int64_t(0));
    QCOMPARE(found.edgesA, std::int64_t(3));
    QCOMPARE(found.edgesB, std::int64_t(3));
    QVERIFY(differenceOf({}, {}).isSame());
}

void TstCaptureDifference::aMovedEdgeDiffersOnBothSides()
{
    const ChannelDifference found = differenceOf({10, 20, 500}, {10, 22, 500});
    QCOMPARE(found.differing, std::int64_t(2));
    QCOMPARE(found.first, std::int64_t(20));
    QVERIFY(found.inA && !found.startLevel);
    const ChannelDifference other = differenceOf({10, 22, 500}, {10, 20, 500});
    QCOMPARE(other.first, std::int64_t(20));
    QVERIFY(!other.inA);
}

void TstCaptureDifference::edgesWithinTheToleranceAreTheSame()
{
    QVERIFY(differenceOf({10, 20, 500}, {12, 18, 502}, 2).isSame());
    QCOMPARE(differenceOf({10, 20, 500}, {12, 18, 503}, 2).differing, std::int64_t(2));
}

void TstCaptureDifference::aMissingPulseIsTwoEdgesOfOneSide()
{
    const ChannelDifference found = differenceOf({10, 20, 100, 110, 500, 600}, {10, 20, 500, 600}, 3);
    QCOMPARE(found.differing, std::int64_t(2));
    QCOMPARE(found.first, std::int64_t(100));
    QVERIFY(found.inA);
    QCOMPARE(found.edgesA, std::int64_t(6));
    QCOMPARE(found.edgesB, std::int64_t(4));
}

void TstCaptureDifference::edgesOfOtherDirectionsNeverMatch()
{
    // The second lacks the rising edge at 10: its edge at 20 rises where the first one's falls.
    const ChannelDifference found = differenceOf({10, 20}, {20});
    QCOMPARE(found.first, std::int64_t(10));
    QCOMPARE(found.differing, std::int64_t(3));
}

void TstCaptureDifference::anotherStartLevelIsTheFirstDifference()
{
    const auto a = captureOf({500}, 1);
    const auto b = captureOf({500}, 0);
    const ChannelDifference found = compared(*a, *b, {0, 0, 1000, 5});
    QCOMPARE(found.first, std::int64_t(0));
    QVERIFY(found.startLevel);
    QCOMPARE(found.differing, std::int64_t(2));
}

void TstCaptureDifference::anEdgeAtTheStartMayBeLate()
{
    const auto a = captureOf({300}, 1);
    const auto b = captureOf({2, 300}, 0);
    QVERIFY(compared(*a, *b, {0, 0, 1000, 2}).isSame());
    QVERIFY(compared(*b, *a, {0, 0, 1000, 2}).isSame());
    QVERIFY(!compared(*a, *b, {0, 0, 1000, 1}).isSame());
}

void TstCaptureDifference::anEdgeAtTheEndMayBeOutside()
{
    QVERIFY(differenceOf({10, 997}, {10}, 3).isSame());
    QVERIFY(!differenceOf({10, 996}, {10}, 3).isSame());
    QVERIFY(!differenceOf({10, 999}, {10}).isSame());
}

void TstCaptureDifference::oneStartLiesOnTheOther()
{
    const auto a = captureOf({110, 120});
    const auto b = captureOf({10, 20, 950});
    QVERIFY(compared(*a, *b, {100, 0, 900, 0}).isSame());
    const ChannelDifference found = compared(*a, *b, {100, 1, 900, 0});
    QCOMPARE(found.first, std::int64_t(109));
    QVERIFY(!found.inA);
}

void TstCaptureDifference::aRangeEndsTheComparison()
{
    QVERIFY(compared(*captureOf({10, 600}), *captureOf({10}), {0, 0, 600, 0}).isSame());
    QVERIFY(!compared(*captureOf({10, 600}), *captureOf({10}), {0, 0, 601, 0}).isSame());
}

QTEST_GUILESS_MAIN(TstCaptureDifference)
#include "tst_CaptureDifference.moc"
