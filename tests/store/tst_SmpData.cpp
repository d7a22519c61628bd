#include "store/Captures.h"
#include "store/MemBudget.h"
#include "store/SmpData.h"
#include "store/SmpStreams.h"
#include "store/SmpWriter.h"

#include <QtTest>

#include <algorithm>
#include <numeric>
#include <span>

using captures::Positions;

namespace {

constexpr std::int64_t plenty = std::int64_t(1) << 40;
constexpr std::int64_t leafBytes = sizeof(SmpEdgeLeaf);
constexpr std::int64_t midBytes = sizeof(SmpEdgeMid);
constexpr std::int64_t rootBytes = sizeof(SmpEdgeRoot);

int allocations = 0;
int refusedAllocation = 0; ///< number of the allocation that fails, from 1

bool refuseOne(std::size_t)
{
    return ++allocations == refusedAllocation;
}

bool refuseFrom(std::size_t)
{
    return ++allocations >= refusedAllocation;
}

void refuse(int allocation, BlockRefusal how)
{
    allocations = 0;
    refusedAllocation = allocation;
    blockRefusal = how;
}

Positions regular(std::int64_t count)
{
    Positions positions(std::size_t(count), 0);
    std::iota(positions.begin(), positions.end(), 1);
    return positions;
}

template<class Block>
bool allNull(std::span<const Block *const> blocks, std::size_t count)
{
    return blocks.size() == count && std::count(blocks.begin(), blocks.end(), nullptr) == std::ptrdiff_t(count);
}

} // namespace

class TstSmpData : public QObject {
    Q_OBJECT
private slots:
    void init() { memBudget = plenty; }
    void cleanup();

    void aNewStoreIsEmptyAndHoldsNoTree();
    void beginSetsTheFieldsOfACaptureAndAnalogBuffers();
    void beginFreesTheFormerCapture();
    void clearFreesEveryBlockAndCreditsTheBudget();
    void aChannelWithoutTransitionsClosesWithExactlyTheEndMark();
    void finishNeedsNoBudgetForTheEndMark();
    void finishAtAnEarlierEndRemovesWhatLiesBeyond_data();
    void finishAtAnEarlierEndRemovesWhatLiesBeyond();
    void finishAtALaterEndKeepsTheSampleCount();
    void finishBelowZeroClosesAnEmptyCapture();
    void finishOfAStoreWithoutChannelsClosesIt();
    void aTransitionAtTheEndBecomesTheEndMark();
    void aFullLastLeafGetsALeafForTheEndMark();
    void startLevelsGoToTheRoots();
    void aLoadedChannelThatEndsInAnEndMarkKeepsOne();
    void growthTakesAMidBeforeItLooksAtTheBudget();
    void growthStopsAtTheLastMidOfARoot();
    void forcedGrowthPassesOverTheBudget();
    void aCreatedChannelHasOneEmptyLeafWhateverTheBudget();
    void creatingAChannelThatIsNoneGivesNull();
    void aDecoderGoesOnAfterMoreMemoryIsThere();
    void theSampleCountIsZeroUntilTheCaptureIsClosed();
    void anAllocationThatFailsAnywhereLosesNoMemory_data();
    void anAllocationThatFailsAnywhereLosesNoMemory();
    void anEntryCostsLittleMoreThanFiveBytes();
};

void TstSmpData::cleanup()
{
    blockRefusal = nullptr;
    QCOMPARE(memBudget.load(), plenty); // every test gives back what it takes
}

void TstSmpData::aNewStoreIsEmptyAndHoldsNoTree()
{
    const SmpData data(3, 2);
    QVERIFY(allNull(data.chnRoots(), 3));
    QVERIFY(allNull(data.aChnBufs(), 2));
    QCOMPARE(data.slicedChn().size(), std::size_t(3));
    QCOMPARE(data.slicedLevel().size(), std::size_t(3));
    QVERIFY(!data.complete());
    QCOMPARE(memBudget.load(), plenty);
}

void TstSmpData::beginSetsTheFieldsOfACaptureAndAnalogBuffers()
{
    SmpData data(3, 1);
    data.begin(1, 1000, {{1, 1, 1}});
    const std::array<std::uint8_t, 16> malformed{};
    std::uint32_t consumed = 0;
    QVERIFY(data.addRle16(malformed, consumed));
    QVERIFY(data.zeroSmpCnt() >= 0);
    data.begin(17, 5000000, {{1, 0, 7}});
    QCOMPARE(data.trgRecord(), 17u);
    QCOMPARE(data.smpFrequ(), std::int64_t(5000000));
    QCOMPARE(data.zeroSmpCnt(), -1);
    QCOMPARE(data.smpCount(), std::int64_t(0));
    QVERIFY(data.chnRoots()[0] != nullptr && data.chnRoots()[1] == nullptr && data.chnRoots()[2] != nullptr);
    QCOMPARE(data.chnRoots()[2]->midCount, 0);
    QCOMPARE(data.aChnBufs()[0]->count, 0);
    QCOMPARE(data.aChnBufs()[0]->voltDiv, 1000);
    QCOMPARE(memBudget.load(), plenty - 2 * rootBytes - std::int64_t(sizeof(SmpAChnBuffer)));
    data.clear();
}

void TstSmpData::beginFreesTheFormerCapture()
{
    SmpData data(1, 1);
    captures::close(data, {regular(50000)}, 60000);
    SmpWriter(data).setTrgPos(5);
    data.begin(0, 1, {{1}});
    QVERIFY(!data.complete());
    QCOMPARE(data.smpCount(), std::int64_t(0));
    QCOMPARE(data.trgPos(), std::int64_t(0));
    QCOMPARE(memBudget.load(), plenty - rootBytes - std::int64_t(sizeof(SmpAChnBuffer)));
    data.clear();
}

void TstSmpData::clearFreesEveryBlockAndCreditsTheBudget()
{
    SmpData data(2, 2);
    captures::close(data, {regular(50000), {}}, 60000);
    QCOMPARE(memBudget.load(),
             plenty - 2 * (rootBytes + midBytes) - 4 * leafBytes - 2 * std::int64_t(sizeof(SmpAChnBuffer)));
    data.clear();
    QCOMPARE(memBudget.load(), plenty);
    QVERIFY(data.chnRoots()[0] == nullptr && data.aChnBufs()[1] == nullptr);
    QVERIFY(!data.complete());
    data.clear();
    QCOMPARE(memBudget.load(), plenty);
}

void TstSmpData::aChannelWithoutTransitionsClosesWithExactlyTheEndMark()
{
    SmpData data(2, 0);
    data.begin(0, 1000000, {{1, 0}});
    SmpWriter(data).setSmpCount(1000);
    data.finish(1000);
    QCOMPARE(captures::entries(data, 0), Positions{1000});
    QCOMPARE(data.edgeCount(0, 0, 999), std::int64_t(0));
    QCOMPARE(data.entryCount(1), std::int64_t(0));
    QVERIFY(data.complete());
}

void TstSmpData::finishNeedsNoBudgetForTheEndMark()
{
    SmpData data(1, 0);
    data.begin(0, 1, {{1}});
    memBudget = 0;
    SmpWriter(data).setSmpCount(10);
    data.finish(10);
    QCOMPARE(captures::entries(data, 0), Positions{10});
    QCOMPARE(memBudget.load(), -midBytes - leafBytes);
    memBudget = plenty - rootBytes - midBytes - leafBytes;
}

void TstSmpData::finishAtAnEarlierEndRemovesWhatLiesBeyond_data()
{
    QTest::addColumn<qint64>("end");
    QTest::addColumn<int>("entries");
    QTest::addColumn<int>("leaves");
    // 60000 transitions at 1, 2, 3 ...: three leaves.
    QTest::newRow("all") << qint64(60001) << 60001 << 3;
    QTest::newRow("the last one") << qint64(60000) << 60000 << 3;
    QTest::newRow("within the last leaf") << qint64(50000) << 50000 << 3;
    QTest::newRow("down to the first entry of a leaf") << qint64(40961) << 40961 << 3;
    QTest::newRow("a whole leaf") << qint64(40960) << 40960 << 2;
    QTest::newRow("within the first leaf") << qint64(100) << 100 << 1;
    QTest::newRow("all but one") << qint64(2) << 2 << 1;
    QTest::newRow("every transition") << qint64(1) << 1 << 1;
    QTest::newRow("every sample") << qint64(0) << 1 << 1;
}

void TstSmpData::finishAtAnEarlierEndRemovesWhatLiesBeyond()
{
    QFETCH(qint64, end);
    QFETCH(int, entries);
    QFETCH(int, leaves);
    SmpData data(1, 0);
    data.begin(0, 1, {{1}});
    captures::append(data, 0, regular(60000));
    SmpWriter(data).setSmpCount(60010);
    data.finish(end);
    QCOMPARE(data.smpCount(), std::int64_t(end));
    QCOMPARE(data.entryCount(0), std::int64_t(entries));
    QCOMPARE(data.lastPosition(0), std::int64_t(end));
    QCOMPARE(data.entryAt(0, {}, entries - 1), std::int64_t(end));
    QCOMPARE(data.entryAt(0, {}, entries - 2), entries > 1 ? std::int64_t(entries - 1) : -1);
    QCOMPARE(data.chnRoots()[0]->mids[0]->leafCount, leaves);
    QCOMPARE(data.chnRoots()[0]->mids[0]->leafLast[leaves - 1], std::int64_t(end));
    QCOMPARE(data.chnRoots()[0]->midLast[0], std::int64_t(end));
    QCOMPARE(memBudget.load(), plenty - rootBytes - midBytes - leaves * leafBytes);
    data.clear();
}

void TstSmpData::finishAtALaterEndKeepsTheSampleCount()
{
    SmpData data(1, 0);
    data.begin(0, 1, {{1}});
    SmpWriter(data).setSmpCount(50);
    data.finish(1000);
    QCOMPARE(data.smpCount(), std::int64_t(50));
    QCOMPARE(data.lastPosition(0), std::int64_t(50));
    data.clear();
}

void TstSmpData::finishBelowZeroClosesAnEmptyCapture()
{
    SmpData data(1, 0);
    data.begin(0, 1, {{1}});
    captures::append(data, 0, {3, 4});
    SmpWriter(data).setSmpCount(10);
    data.finish(-5);
    QCOMPARE(data.smpCount(), std::int64_t(0));
    QCOMPARE(captures::entries(data, 0), Positions{0});
    data.clear();
}

void TstSmpData::finishOfAStoreWithoutChannelsClosesIt()
{
    SmpData data(0, 0);
    data.begin(0, 1, {});
    SmpWriter(data).setSmpCount(5);
    data.finish(3);
    QVERIFY(data.complete());
    QCOMPARE(data.sampleCount(), std::int64_t(3));
}

void TstSmpData::aTransitionAtTheEndBecomesTheEndMark()
{
    SmpData data(1, 0);
    captures::close(data, {{5, 9, 10, 10, 12}}, 10);
    QCOMPARE(captures::entries(data, 0), (Positions{5, 9, 10}));
    data.clear();
}

void TstSmpData::aFullLastLeafGetsALeafForTheEndMark()
{
    SmpData data(1, 0);
    captures::close(data, {regular(20480)}, 30000);
    QCOMPARE(data.chnRoots()[0]->mids[0]->leafCount, 2);
    QCOMPARE(data.chnRoots()[0]->mids[0]->leafLast[0], std::int64_t(20480));
    QCOMPARE(data.chnRoots()[0]->mids[0]->leafLast[1], std::int64_t(30000));
    QCOMPARE(data.chnRoots()[0]->midLast[0], std::int64_t(30000));
    QCOMPARE(data.prevEdge(0, 30000), std::int64_t(20480));
    data.clear();
}

void TstSmpData::startLevelsGoToTheRoots()
{
    SmpData data(3, 0);
    data.begin(0, 1, {{1, 1, 1}});
    SmpWriter(data).setStartLevels(5);
    data.finish(0);
    QCOMPARE(data.chnRoots()[0]->startLevel, 1);
    QCOMPARE(data.chnRoots()[1]->startLevel, 0);
    QCOMPARE(data.chnRoots()[2]->startLevel, 1);
    data.clear();
}

void TstSmpData::aLoadedChannelThatEndsInAnEndMarkKeepsOne()
{
    SmpData data(1, 0);
    data.clear();
    SmpEdgeRoot *root = data.createChn(0);
    SmpEdgeLeaf *leaf = root->mids[0]->leaves[0];
    leaf->setPosition(0, 10);
    leaf->setPosition(1, 100);
    leaf->count = 2;
    SmpWriter(data).setSmpCount(100);
    data.finish(100);
    QCOMPARE(captures::entries(data, 0), (Positions{10, 100}));
    data.clear();
}

void TstSmpData::growthTakesAMidBeforeItLooksAtTheBudget()
{
    SmpData data(1, 0);
    SmpEdgeRoot *root = data.createChn(0);
    QVERIFY(root != nullptr);
    // A mid that says it is full makes the next growth take another; its leaves are not looked at.
    root->mids[0]->leafCount = SmpEdgeMid::capacity;
    memBudget = 0;
    QVERIFY(!data.growChn(*root, false));
    QCOMPARE(root->midCount, 2);
    QCOMPARE(root->mids[1]->leafCount, 0);
    QCOMPARE(memBudget.load(), -midBytes);
    QVERIFY(!data.growChn(*root, false)); // it goes on with the mid that it has
    QCOMPARE(root->midCount, 2);
    QVERIFY(data.growChn(*root, true));
    QCOMPARE(root->mids[1]->leafCount, 1);
    root->mids[0]->leafCount = 1;
    data.clear();
    memBudget += plenty - rootBytes - midBytes - leafBytes;
}

void TstSmpData::growthStopsAtTheLastMidOfARoot()
{
    SmpData data(1, 0);
    SmpEdgeRoot *root = data.createChn(0);
    root->mids[0]->leafCount = SmpEdgeMid::capacity;
    root->midCount = SmpEdgeRoot::capacity;
    root->mids[SmpEdgeRoot::capacity - 1] = root->mids[0];
    QVERIFY(!data.growChn(*root, true));
    QCOMPARE(root->midCount, int(SmpEdgeRoot::capacity));
    root->midCount = 1;
    root->mids[0]->leafCount = 1;
    data.clear();
}

void TstSmpData::forcedGrowthPassesOverTheBudget()
{
    SmpData data(1, 0);
    SmpEdgeRoot *root = data.createChn(0);
    const std::int64_t before = memBudget;
    memBudget = 0;
    QVERIFY(!data.growChn(*root, false));
    QVERIFY(data.growChn(*root, true));
    QCOMPARE(memBudget.load(), -leafBytes);
    memBudget = 1;
    QVERIFY(data.growChn(*root, false)); // what remains is not compared with a leaf's size
    QCOMPARE(memBudget.load(), 1 - leafBytes);
    memBudget = before - 2 * leafBytes;
    data.clear();
}

void TstSmpData::aCreatedChannelHasOneEmptyLeafWhateverTheBudget()
{
    SmpData data(2, 0);
    memBudget = -1;
    SmpEdgeRoot *root = data.createChn(1);
    QVERIFY(root != nullptr);
    QCOMPARE(data.chnRoots()[1], root);
    QCOMPARE(root->midCount, 1);
    QCOMPARE(root->mids[0]->leafCount, 1);
    QCOMPARE(root->mids[0]->leaves[0]->count, 0);
    QCOMPARE(memBudget.load(), -1 - rootBytes - midBytes - leafBytes);
    memBudget += plenty + 1;
    QVERIFY(data.createChn(1) != nullptr); // in place of the former tree
    data.clear();
}

void TstSmpData::creatingAChannelThatIsNoneGivesNull()
{
    SmpData data(2, 0);
    QVERIFY(data.createChn(-1) == nullptr);
    QVERIFY(data.createChn(2) == nullptr);
    for (int allocation = 1; allocation <= 3; ++allocation) {
        refuse(allocation, refuseOne);
        QVERIFY(data.createChn(0) == nullptr);
        QVERIFY(data.chnRoots()[0] == nullptr);
        QCOMPARE(memBudget.load(), plenty);
    }
}

void TstSmpData::aDecoderGoesOnAfterMoreMemoryIsThere()
{
    SmpData data(1, 0);
    data.begin(0, 1, {{1}});
    const std::int64_t before = memBudget;
    memBudget = 0;
    std::int64_t pos = 0;
    QVERIFY(!data.addPulses(std::vector<std::int32_t>(20481, 1), 0, pos));
    memBudget = before - midBytes - leafBytes;
    QVERIFY(data.addPulses({{1}}, 0, pos));
    SmpWriter(data).setSmpCount(30000);
    data.finish(30000);
    QCOMPARE(data.entryCount(0), std::int64_t(20482));
    data.clear();
}

void TstSmpData::theSampleCountIsZeroUntilTheCaptureIsClosed()
{
    SmpData data(1, 0);
    data.begin(0, 1, {{1}});
    SmpWriter(data).setSmpCount(70);
    QCOMPARE(data.sampleCount(), std::int64_t(0));
    data.finish(70);
    QCOMPARE(data.sampleCount(), std::int64_t(70));
    data.open();
    QCOMPARE(data.sampleCount(), std::int64_t(0));
    QCOMPARE(data.entryCount(0), std::int64_t(1)); // open() frees nothing
    data.clear();
}

void TstSmpData::anAllocationThatFailsAnywhereLosesNoMemory_data()
{
    QTest::addColumn<bool>("onlyOne");
    QTest::newRow("that one only") << true;
    QTest::newRow("and all after it") << false;
}

void TstSmpData::anAllocationThatFailsAnywhereLosesNoMemory()
{
    QFETCH(bool, onlyOne);
    smpStreams::Bytes bytes;
    for (std::size_t i = 0; i < 45000; ++i) {
        bytes.push_back(std::uint8_t(i % 2 * 3)); // channels 0 and 1 change with every sample
    }
    bool failed = true;
    int allocation = 0;
    while (failed) {
        refuse(++allocation, onlyOne ? refuseOne : refuseFrom);
        SmpData data(3, 2);
        data.begin(0, 1, {{1, 1, 1}});
        std::int64_t done = 0;
        const bool stored = data.addBytes8(bytes, 0, done);
        data.finish(done);
        failed = allocations >= refusedAllocation;
        QVERIFY(failed || stored);
        QVERIFY(data.complete());
        for (int chn = 0; chn < 3; ++chn) {
            // What is there is whole: rising positions that end in the end mark.
            const Positions entries = captures::entries(data, chn);
            QVERIFY(std::is_sorted(entries.begin(), entries.end()));
            QVERIFY(entries.empty() || entries.back() == done);
            QVERIFY(entries.empty() || chn == 2 || std::int64_t(entries.size()) >= std::min<std::int64_t>(done, 20480));
            SmpWaveRun runs[100];
            QVERIFY(data.waveRuns(chn, 0, 500, 100, runs) <= 100);
            QCOMPARE(data.nextEdge(chn, 0) < 0, entries.empty());
        }
        data.clear();
        QCOMPARE(memBudget.load(), plenty);
    }
    QVERIFY(allocation > 10); // three roots, two buffers, three mids, leaves
}

void TstSmpData::anEntryCostsLittleMoreThanFiveBytes()
{
    SmpData data(1, 0);
    data.begin(0, 1, {{1}});
    const std::vector<std::int32_t> widths(1000000, 3);
    std::int64_t pos = 0;
    for (int i = 0; i < 11; ++i) {
        QVERIFY(data.addPulses(widths, 0, pos));
    }
    SmpWriter(data).setSmpCount(pos);
    data.finish(pos);
    QVERIFY(double(plenty - memBudget) / double(data.entryCount(0)) <= 5.1);
    data.clear();
}

QTEST_APPLESS_MAIN(TstSmpData)
#include "tst_SmpData.moc"
