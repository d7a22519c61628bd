#include "store/MemBudget.h"
#include "store/SmpData.h"
#include "store/SmpWriter.h"

#include <QtTest>

#include <vector>

/// A channel so long that it needs a second mid: some 520 MB.
class TstSmpDataSeam : public QObject {
    Q_OBJECT
private slots:
    void anEntryAtTheSeamOfTwoMidsIsFoundFromBothSides();
};

void TstSmpDataSeam::anEntryAtTheSeamOfTwoMidsIsFoundFromBothSides()
{
    constexpr std::int64_t seam = SmpData::entriesPerMid; // entry n stands at position n + 1
    constexpr std::int64_t budget = std::int64_t(1) << 40;
    memBudget = budget;
    SmpData data(1, 0);
    data.begin(0, 1, {{1}});
    const std::vector<std::int32_t> ones(1 << 20, 1);
    std::int64_t pos = 0;
    for (std::int64_t left = seam + 10; left > 0;) {
        const auto count = std::size_t(std::min(left, std::int64_t(ones.size())));
        QVERIFY(data.addPulses({ones.data(), count}, 0, pos));
        left -= std::int64_t(count);
    }
    SmpWriter(data).setSmpCount(seam + 100);
    data.finish(seam + 100);
    QCOMPARE(data.chnRoots()[0]->midCount, 2);
    QCOMPARE(data.entryCount(0), seam + 11);
    QCOMPARE(data.chnRoots()[0]->midLast[0], seam);

    SmpEdgeCursor cursor;
    QCOMPARE(data.locate(0, seam - 1, cursor), 1);
    QCOMPARE(cursor, (SmpEdgeCursor{0, 5119, 20479}));
    QCOMPARE(data.locate(0, seam, cursor), 0);
    QCOMPARE(cursor, (SmpEdgeCursor{1, 0, 0}));
    QCOMPARE(data.entryAt(0, cursor, -1), seam);
    QCOMPARE(data.prevEdge(0, seam), seam);
    QCOMPARE(data.nextEdge(0, seam), seam + 1);
    SmpEdgeInfo info{};
    QCOMPARE(data.edgeNeighbours(0, seam - 1, info), 0);
    QCOMPARE(info.prevEdge, seam - 1);
    QCOMPARE(info.nextEdge, seam);
    QCOMPARE(info.afterNextEdge, seam + 1);
    QCOMPARE(data.edgeCount(0, 0, seam + 100), seam + 10);

    // A line over the whole channel, and one at the seam itself.
    std::vector<SmpWaveRun> runs(1920);
    const int dense = data.waveRuns(0, 0, double(seam) / 1920, 1920, runs.data());
    QVERIFY(dense >= 1915);
    for (int i = 0; i < dense; ++i) {
        QCOMPARE(runs[std::size_t(i)].x, i);
        QCOMPARE(runs[std::size_t(i)].kind, 2);
    }
    QCOMPARE(data.waveRuns(0, double(seam - 4), 0.5, 20, runs.data()), 19);
    QCOMPARE(runs[7].x, 8); // the seam's last entry, four samples on
    QCOMPARE(runs[7].kind, 2);
    QCOMPARE(runs[8].kind, 0);

    // A cut just before the seam gives the second mid back.
    data.open();
    data.finish(seam - 5);
    QCOMPARE(data.chnRoots()[0]->midCount, 1);
    QCOMPARE(data.entryCount(0), seam - 5);
    QCOMPARE(data.lastPosition(0), seam - 5); // the first mid ends there now
    QCOMPARE(data.nextEdge(0, seam - 6), seam - 5);
    QCOMPARE(data.nextEdge(0, seam - 4), std::int64_t(-1));
    QCOMPARE(memBudget.load(), budget - std::int64_t(sizeof(SmpEdgeRoot)) - std::int64_t(sizeof(SmpEdgeMid)) -
                                   SmpEdgeMid::capacity * std::int64_t(sizeof(SmpEdgeLeaf)));
    data.clear();
    QCOMPARE(memBudget.load(), budget);
}

QTEST_APPLESS_MAIN(TstSmpDataSeam)
#include "tst_SmpDataSeam.moc"
