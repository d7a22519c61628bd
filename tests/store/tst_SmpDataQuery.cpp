#include "store/Captures.h"
#include "store/MemBudget.h"
#include "store/SmpData.h"
#include "store/SmpWriter.h"

#include <QtTest>

#include <algorithm>
#include <random>

using captures::Positions;

namespace {

/// What the queries should answer, found in a sorted list that ends in the end mark.
class Model {
public:
    explicit Model(Positions entries, int startLevel = 0) : m_entries(std::move(entries)), m_startLevel(startLevel) {}

    [[nodiscard]] bool inside(std::int64_t pos) const { return pos >= 0 && pos <= m_entries.back(); }
    /// The index of the first entry above `pos`; the end mark for a `pos` there.
    [[nodiscard]] std::size_t after(std::int64_t pos) const
    {
        const auto found = std::upper_bound(m_entries.begin(), m_entries.end() - 1, pos);
        return std::size_t(found - m_entries.begin());
    }
    [[nodiscard]] int level(std::int64_t pos) const { return inside(pos) ? int(after(pos) + m_startLevel) & 1 : -1; }
    [[nodiscard]] std::int64_t at(std::size_t index) const { return index < m_entries.size() ? m_entries[index] : -1; }
    [[nodiscard]] std::int64_t prev(std::int64_t pos) const { return inside(pos) ? at(after(pos) - 1) : -1; }
    [[nodiscard]] std::int64_t next(std::int64_t pos) const { return inside(pos) ? at(after(pos)) : -1; }
    [[nodiscard]] std::int64_t afterNext(std::int64_t pos) const { return at(after(pos) + 1); }

private:
    Positions m_entries;
    std::size_t m_startLevel;
};

std::int64_t indexOf(const SmpEdgeCursor &cursor)
{
    return cursor.root * SmpData::entriesPerMid + std::int64_t(cursor.mid) * 20480 + cursor.leaf;
}

SmpEdgeCursor cursorAt(std::int64_t index)
{
    return {std::int32_t(index / SmpData::entriesPerMid), std::int32_t(index % SmpData::entriesPerMid / 20480),
            std::int32_t(index % 20480)};
}

/// `count` positions from `from` on whose distances lie between 1 and `spread`; now and then a burst or a long gap.
Positions randomPositions(std::uint32_t seed, int count, std::int64_t spread, std::int64_t from = 0)
{
    std::mt19937_64 random(seed);
    Positions positions;
    std::int64_t pos = from;
    std::int64_t scale = spread;
    for (int i = 0; i < count; ++i) {
        if (random() % 1000 == 0) {
            scale = random() % 3 == 0 ? 1 : random() % 3 == 0 ? spread * 50 : spread;
        }
        pos += 1 + std::int64_t(random() % std::uint64_t(scale));
        positions.push_back(pos);
    }
    return positions;
}

/// All queries at `pos` agree with the model.
bool agrees(const SmpData &data, const Model &model, std::int64_t pos)
{
    SmpEdgeCursor cursor;
    const int level = data.locate(0, pos, cursor);
    SmpEdgeInfo info{};
    const int found = data.edgeNeighbours(0, pos, info);
    if (level != model.level(pos) || data.prevEdge(0, pos) != model.prev(pos) ||
        data.nextEdge(0, pos) != model.next(pos) ||
        data.isEdge(0, pos) != (model.inside(pos) && model.prev(pos) == pos)) {
        return false;
    }
    if (level < 0) {
        return found == -1;
    }
    return indexOf(cursor) == std::int64_t(model.after(pos)) && found == 0 && info.level == level &&
           info.prevEdge == model.prev(pos) && info.nextEdge == model.next(pos) &&
           info.afterNextEdge == model.afterNext(pos);
}

} // namespace

class TstSmpDataQuery : public QObject {
    Q_OBJECT
private slots:
    void init() { memBudget = std::int64_t(1) << 40; }

    void everyQueryAgreesWithASortedList_data();
    void everyQueryAgreesWithASortedList();
    void aChannelWithoutTransitionsAnswersWithItsEndMark();
    void aPositionAtTheEndMarkFollowsTheCursor();
    void aPositionOutsideTheDataIsRefused();
    void aChannelWithoutDataIsRefused();
    void anEntryAtTheSeamOfTwoLeavesIsFoundFromBothSides();
    void theHintDoesNotChangeTheAnswer();
    void aRefusedLocateLeavesTheCursorAlone();
    void aHintThatNamesNoEntryIsIgnored();
    void theCountOfEdgesIsTheSameInBothDirections();
    void anEntryIsReachedByItsOffsetFromACursor();
    void entriesAtTheSamePositionAreSteppedOverTogether();
    void levelsFollowTheStartLevel();
};

void TstSmpDataQuery::everyQueryAgreesWithASortedList_data()
{
    QTest::addColumn<int>("seed");
    QTest::addColumn<int>("count");
    QTest::addColumn<qint64>("spread");
    QTest::addColumn<qint64>("from");
    int seed = 0;
    for (const int count : {1, 2, 9, 100, 20479, 20480, 20481, 40960, 70000}) {
        for (const qint64 spread : {1, 3, 1000}) {
            QTest::addRow("%d entries, spread %d", count, int(spread)) << ++seed << count << spread << qint64(0);
        }
    }
    QTest::addRow("over a seam of 32 bits") << 90 << 50000 << qint64(1000) << (qint64(1) << 32) - 20000000;
    QTest::addRow("each entry with a high byte of its own") << 91 << 200 << qint64(8000000000) << qint64(0);
    QTest::addRow("near the largest position") << 92 << 30000 << qint64(1) << (qint64(1) << 40) - 2000000;
}

void TstSmpDataQuery::everyQueryAgreesWithASortedList()
{
    QFETCH(int, seed);
    QFETCH(int, count);
    QFETCH(qint64, spread);
    QFETCH(qint64, from);
    Positions positions = randomPositions(std::uint32_t(seed), count, spread, from);
    std::mt19937_64 random{std::uint32_t(seed)};
    const std::int64_t length = positions.back() + 1 + std::int64_t(random() % 50);
    SmpData data(1, 0);
    captures::close(data, {positions}, length);
    positions.push_back(length);
    const Model model(positions);
    QCOMPARE(data.entryCount(0), std::int64_t(positions.size()));
    QCOMPARE(data.lastPosition(0), length);
    for (int i = 0; i < 3000; ++i) {
        const std::int64_t entry = positions[random() % positions.size()];
        QVERIFY(agrees(data, model, entry - 1));
        QVERIFY(agrees(data, model, entry));
        QVERIFY(agrees(data, model, entry + 1));
        QVERIFY(agrees(data, model, std::int64_t(random() % std::uint64_t(length + 1))));
    }
    for (const std::int64_t pos : {std::int64_t(-1), std::int64_t(0), length - 1, length, length + 1}) {
        QVERIFY(agrees(data, model, pos));
    }
}

void TstSmpDataQuery::aChannelWithoutTransitionsAnswersWithItsEndMark()
{
    SmpData data(1, 0);
    captures::close(data, {{}}, 1000);
    for (const std::int64_t pos : {0, 1, 500, 999, 1000}) {
        QCOMPARE(data.nextEdge(0, pos), std::int64_t(1000));
        QCOMPARE(data.prevEdge(0, pos), std::int64_t(-1));
    }
    SmpEdgeInfo info{};
    QCOMPARE(data.edgeNeighbours(0, 500, info), 0);
    QCOMPARE(info.afterNextEdge, std::int64_t(-1));
}

void TstSmpDataQuery::aPositionAtTheEndMarkFollowsTheCursor()
{
    SmpData data(1, 0);
    captures::close(data, {{10, 20}}, 100);
    SmpEdgeCursor cursor;
    QCOMPARE(data.locate(0, 100, cursor), 0);
    QCOMPARE(cursor, (SmpEdgeCursor{0, 0, 2}));
    QVERIFY(!data.isEdge(0, 100));
    QCOMPARE(data.prevEdge(0, 100), std::int64_t(20));
    QCOMPARE(data.nextEdge(0, 100), std::int64_t(100));
    QCOMPARE(data.edgeCount(0, 15, 100), std::int64_t(1));
}

void TstSmpDataQuery::aPositionOutsideTheDataIsRefused()
{
    SmpData data(1, 0);
    captures::close(data, {{10, 20}}, 100);
    for (const std::int64_t pos : {std::int64_t(-1), std::int64_t(101), INT64_MIN, INT64_MAX}) {
        SmpEdgeCursor cursor;
        SmpEdgeInfo info{};
        QCOMPARE(data.locate(0, pos, cursor), -1);
        QVERIFY(!data.isEdge(0, pos));
        QCOMPARE(data.prevEdge(0, pos), std::int64_t(-1));
        QCOMPARE(data.nextEdge(0, pos), std::int64_t(-1));
        QCOMPARE(data.edgeCount(0, pos, 50), std::int64_t(-1));
        QCOMPARE(data.edgeCount(0, 50, pos), std::int64_t(-1));
        QCOMPARE(data.edgeNeighbours(0, pos, info), -1);
    }
}

void TstSmpDataQuery::aChannelWithoutDataIsRefused()
{
    SmpData data(3, 0);
    data.begin(0, 1, {{1, 0, 1}});
    data.finish(0);
    SmpEdgeInfo info{};
    SmpEdgeCursor cursor;
    for (const int chn : {-1, 1, 3, 1000}) {
        QCOMPARE(data.locate(chn, 0, cursor), -1);
        QVERIFY(!data.isEdge(chn, 0));
        QCOMPARE(data.prevEdge(chn, 0), std::int64_t(-1));
        QCOMPARE(data.nextEdge(chn, 0), std::int64_t(-1));
        QCOMPARE(data.edgeCount(chn, 0, 0), std::int64_t(-1));
        QCOMPARE(data.edgeNeighbours(chn, 0, info), -1);
        QCOMPARE(data.entryAt(chn, {}), std::int64_t(-1));
        QCOMPARE(data.lastPosition(chn), std::int64_t(-1));
        QCOMPARE(data.entryCount(chn), std::int64_t(0));
    }
    QCOMPARE(data.locate(0, 0, cursor), 0); // a capture without samples still holds the end mark
}

void TstSmpDataQuery::anEntryAtTheSeamOfTwoLeavesIsFoundFromBothSides()
{
    Positions positions;
    for (std::int64_t i = 1; i <= 20481; ++i) {
        positions.push_back(i * 10);
    }
    SmpData data(1, 0);
    captures::close(data, {positions}, 300000);
    SmpEdgeCursor cursor;
    QCOMPARE(data.locate(0, 204799, cursor), 1);
    QCOMPARE(cursor, (SmpEdgeCursor{0, 0, 20479}));
    QCOMPARE(data.locate(0, 204800, cursor), 0);
    QCOMPARE(cursor, (SmpEdgeCursor{0, 1, 0}));
    QVERIFY(data.isEdge(0, 204800));
    QCOMPARE(data.prevEdge(0, 204805), std::int64_t(204800));
    QCOMPARE(data.nextEdge(0, 204805), std::int64_t(204810));
    SmpEdgeInfo info{};
    QCOMPARE(data.edgeNeighbours(0, 204795, info), 0);
    QCOMPARE(info.prevEdge, std::int64_t(204790));
    QCOMPARE(info.nextEdge, std::int64_t(204800));
    QCOMPARE(info.afterNextEdge, std::int64_t(204810));
    QCOMPARE(data.edgeCount(0, 204790, 204810), std::int64_t(2));
}

void TstSmpDataQuery::theHintDoesNotChangeTheAnswer()
{
    Positions positions = randomPositions(17, 50000, 200);
    SmpData data(1, 0);
    captures::close(data, {positions}, positions.back() + 5);
    positions.push_back(positions.back() + 5);
    const Model model(positions);
    std::mt19937 random(3);
    for (int i = 0; i < 20000; ++i) {
        const std::int64_t pos = positions[random() % positions.size()] - random() % 3;
        SmpEdgeCursor cursor = cursorAt(std::int64_t(random() % positions.size())); // before, at or behind the answer
        QCOMPARE(data.locate(0, pos, cursor), model.level(pos));
        QCOMPARE(indexOf(cursor), std::int64_t(model.after(pos)));
    }
}

void TstSmpDataQuery::aRefusedLocateLeavesTheCursorAlone()
{
    SmpData data(1, 0);
    captures::close(data, {{10, 20, 30}}, 100);
    SmpEdgeCursor cursor{0, 0, 1};
    QCOMPARE(data.locate(0, 101, cursor), -1);
    QCOMPARE(cursor, (SmpEdgeCursor{0, 0, 1}));
}

void TstSmpDataQuery::aHintThatNamesNoEntryIsIgnored()
{
    SmpData data(1, 0);
    captures::close(data, {{10, 20, 30}}, 100);
    for (const SmpEdgeCursor hint : {SmpEdgeCursor{5, 0, 0}, SmpEdgeCursor{0, 7, 0}, SmpEdgeCursor{0, 0, 4},
                                     SmpEdgeCursor{-1, 0, 0}, SmpEdgeCursor{0, -1, 0}, SmpEdgeCursor{0, 0, -1}}) {
        SmpEdgeCursor cursor = hint;
        QCOMPARE(data.locate(0, 15, cursor), 1);
        QCOMPARE(cursor, (SmpEdgeCursor{0, 0, 1}));
    }
}

void TstSmpDataQuery::theCountOfEdgesIsTheSameInBothDirections()
{
    SmpData data(1, 0);
    captures::close(data, {{10, 20, 30}}, 100);
    QCOMPARE(data.edgeCount(0, 10, 30), std::int64_t(2)); // the one at 10 is not above 10
    QCOMPARE(data.edgeCount(0, 30, 10), std::int64_t(2));
    QCOMPARE(data.edgeCount(0, 9, 30), std::int64_t(3));
    QCOMPARE(data.edgeCount(0, 9, 9), std::int64_t(0));
}

void TstSmpDataQuery::anEntryIsReachedByItsOffsetFromACursor()
{
    Positions positions = randomPositions(5, 45000, 9);
    SmpData data(1, 0);
    captures::close(data, {positions}, positions.back() + 1);
    const SmpEdgeCursor cursor = cursorAt(20480);
    QCOMPARE(data.entryAt(0, cursor), positions[20480]);
    QCOMPARE(data.entryAt(0, cursor, -1), positions[20479]);
    QCOMPARE(data.entryAt(0, cursor, 20480), positions[40960]);
    QCOMPARE(data.entryAt(0, cursor, -20480), positions[0]);
    QCOMPARE(data.entryAt(0, cursor, -20481), std::int64_t(-1));
    QCOMPARE(data.entryAt(0, {}, 45000), positions.back() + 1);
    QCOMPARE(data.entryAt(0, {}, 45001), std::int64_t(-1));
    QCOMPARE(data.entryAt(0, cursor, INT64_MAX), std::int64_t(-1));
    QCOMPARE(data.entryAt(0, cursor, INT64_MIN), std::int64_t(-1));
}

void TstSmpDataQuery::entriesAtTheSamePositionAreSteppedOverTogether()
{
    SmpData data(1, 0);
    captures::close(data, {Positions(30000, 50)}, 100); // over a seam of leaves
    SmpEdgeCursor cursor;
    QCOMPARE(data.locate(0, 49, cursor), 0);
    QCOMPARE(cursor, SmpEdgeCursor{});
    QCOMPARE(data.locate(0, 50, cursor), 0);
    QCOMPARE(cursor, (SmpEdgeCursor{0, 1, 30000 - 20480}));
    QCOMPARE(data.nextEdge(0, 50), std::int64_t(100));
    QCOMPARE(data.edgeCount(0, 49, 50), std::int64_t(30000));
}

void TstSmpDataQuery::levelsFollowTheStartLevel()
{
    SmpData data(2, 0);
    data.begin(0, 1, {{1, 1}});
    SmpWriter(data).setStartLevels(2);
    captures::append(data, 0, {10});
    captures::append(data, 1, {10});
    SmpWriter(data).setSmpCount(20);
    data.finish(20);
    SmpEdgeCursor cursor;
    QCOMPARE(data.locate(0, 9, cursor), 0);
    QCOMPARE(data.locate(0, 10, cursor), 1);
    cursor = {};
    QCOMPARE(data.locate(1, 9, cursor), 1);
    QCOMPARE(data.locate(1, 10, cursor), 0);
}

QTEST_APPLESS_MAIN(TstSmpDataQuery)
#include "tst_SmpDataQuery.moc"
