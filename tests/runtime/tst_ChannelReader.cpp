#include "runtime/ReaderDesk.h"

#include <QtTest>

#include <algorithm>
#include <random>
#include <vector>

using lux::ChannelReader;
using readerDesk::decode;
using readerDesk::ScriptDecoder;

/// Going through one channel, against a plain list of its edges.
class TstChannelReader : public QObject {
    Q_OBJECT
private slots:
    void edgesComeInOrderAndTheEndLeavesTheDecode();
    void levelsAreReadAheadAndBehind();
    void queriesNearTheEndTellWithoutLeaving();
    void anEdgeAtTheFirstSampleIsPartOfTheLevelThere();
    void aLevelAtOrPastTheEndLeavesTheDecode();
    void aChannelWithoutEdgesIsSteady();
    void risesAndFallsAreToldApart();
    void waitingForALevelStaysWhereItIs();
    void skippedEdgesAreCountedAcrossLeaves();
    void aCopyWalksByItself();
    void randomMovesAgreeWithAPlainList_data();
    void randomMovesAgreeWithAPlainList();
    void aChannelThatIsNotThereIsLowForever();
    void anAbsentChannelFailsTheDecodeWithASentence();
};

namespace {

constexpr std::int64_t length = 1000;

std::vector<std::int64_t> everyTenth(std::int64_t count)
{
    std::vector<std::int64_t> edges;
    for (std::int64_t i = 1; i <= count; ++i)
        edges.push_back(i * 10);
    return edges;
}

/// Runs `script` on channel 0 with these edges.
DecodeStatus onEdges(const std::vector<std::int64_t> &edges, std::int64_t samples, bool startLevel,
                     const std::function<void(ChannelReader &)> &script)
{
    TestCapture capture(1000000, samples);
    capture.channel(0, startLevel, edges);
    return decode(capture, [&script](ScriptDecoder &decoder) { script(decoder.readerOf(0)); })
        ->analyzer->GetDecodeStatus();
}

} // namespace

void TstChannelReader::edgesComeInOrderAndTheEndLeavesTheDecode()
{
    std::vector<std::int64_t> seen;
    bool destroyed = false;
    bool passed = false;
    const DecodeStatus status = onEdges({3, 4, 700, 999}, length, false, [&](ChannelReader &line) {
        struct Guard {
            bool &flag;
            ~Guard() { flag = true; }
        } guard{destroyed};
        for (;;) {
            seen.push_back(line.nextEdge());
            QCOMPARE(line.position(), seen.back());
            QCOMPARE(line.lastEdge(), seen.back());
            QCOMPARE(line.level(), seen.size() % 2 == 1);
            passed = seen.size() > 4;
        }
    });
    QCOMPARE(seen, (std::vector<std::int64_t>{3, 4, 700, 999}));
    QVERIFY(destroyed);
    QVERIFY(!passed);
    QCOMPARE(status, DecodeStatus::Complete);
}

void TstChannelReader::levelsAreReadAheadAndBehind()
{
    const DecodeStatus status = onEdges({10, 20, 30}, length, true, [](ChannelReader &line) {
        QCOMPARE(line.level(), true);
        QCOMPARE(line.levelAt(9), true);
        QCOMPARE(line.levelAt(10), false);
        QCOMPARE(line.position(), 10);
        QCOMPARE(line.peekLevel(25), true);
        QCOMPARE(line.position(), 10);
        QCOMPARE(line.levelAt(29), true);
        QCOMPARE(line.levelAt(12), false); // behind: the reader stays
        QCOMPARE(line.levelAt(0), true);
        QCOMPARE(line.position(), 29);
        QCOMPARE(line.nextEdge(), 30);
        line.seek(5);
        QCOMPARE(line.nextEdge(), 10);
    });
    QCOMPARE(status, DecodeStatus::Complete);
}

void TstChannelReader::queriesNearTheEndTellWithoutLeaving()
{
    bool whole = false;
    onEdges({10, 990}, length, false, [&whole](ChannelReader &line) {
        QCOMPARE(line.peekEdge(), 10);
        QVERIFY(!line.hasEdgeBefore(10));
        QVERIFY(line.hasEdgeBefore(11));
        QCOMPARE(line.edgesLeft(), 2);
        QVERIFY(line.nextEdgeBefore(11));
        QVERIFY(!line.nextEdgeBefore(500));
        QCOMPARE(line.position(), 500);
        QCOMPARE(line.nextEdge(), 990);
        QVERIFY(!line.hasEdge());
        QVERIFY(!line.hasEdgeBefore(length + 5000));
        QCOMPARE(line.peekEdge(), length);
        QCOMPARE(line.edgesLeft(), 0);
        QCOMPARE(line.levelAt(length - 1), false);
        whole = true;
    });
    QVERIFY(whole);
}

void TstChannelReader::anEdgeAtTheFirstSampleIsPartOfTheLevelThere()
{
    bool whole = false;
    onEdges({0, 7}, length, false, [&whole](ChannelReader &line) {
        QCOMPARE(line.level(), true);
        QCOMPARE(line.lastEdge(), 0);
        QCOMPARE(line.edgesPassed(), 1);
        QCOMPARE(line.nextEdge(), 7);
        whole = true;
    });
    QVERIFY(whole);
}

void TstChannelReader::aLevelAtOrPastTheEndLeavesTheDecode()
{
    for (const std::int64_t sample : {length, length + 1, std::int64_t(1) << 40}) {
        bool left = true;
        onEdges({10}, length, false, [&](ChannelReader &line) {
            QCOMPARE(line.levelAt(length - 1), true);
            (void)line.levelAt(sample);
            left = false;
        });
        QVERIFY(left);
        onEdges({10}, length, false, [&](ChannelReader &line) {
            line.advanceTo(sample);
            left = false;
        });
        QVERIFY(left);
    }
}

void TstChannelReader::aChannelWithoutEdgesIsSteady()
{
    bool reached = false;
    onEdges({}, length, true, [&](ChannelReader &line) {
        QVERIFY(!line.hasEdge());
        QCOMPARE(line.lastEdge(), -1);
        QCOMPARE(line.levelAt(length - 1), true);
        reached = true;
        line.nextEdge();
        reached = false;
    });
    QVERIFY(reached);
}

void TstChannelReader::risesAndFallsAreToldApart()
{
    bool whole = false;
    onEdges({10, 20, 30, 40, 50}, length, false, [&whole](ChannelReader &line) {
        QCOMPARE(line.nextFall(), 20);
        QCOMPARE(line.nextRise(), 30);
        QCOMPARE(line.nextRise(), 50);
        whole = true;
    });
    QVERIFY(whole);
}

void TstChannelReader::waitingForALevelStaysWhereItIs()
{
    bool whole = false;
    onEdges({10, 20}, length, false, [&whole](ChannelReader &line) {
        line.advanceTo(4);
        QCOMPARE(line.waitForLevel(false), 4);
        QCOMPARE(line.waitForLevel(true), 10);
        QCOMPARE(line.waitForLevel(true), 10);
        whole = true;
    });
    QVERIFY(whole);
}

void TstChannelReader::skippedEdgesAreCountedAcrossLeaves()
{
    static constexpr std::int64_t count = 3 * SmpEdgeLeaf::capacity + 5;
    bool whole = false;
    onEdges(everyTenth(count), (count + 1) * 10, false, [&whole](ChannelReader &line) {
        QCOMPARE(line.edgesLeft(), count);
        QCOMPARE(line.skipEdges(0), 0);
        QCOMPARE(line.skipEdges(1), 10);
        QCOMPARE(line.skipEdges(SmpEdgeLeaf::capacity - 1), SmpEdgeLeaf::capacity * 10);
        QCOMPARE(line.lastEdge(), SmpEdgeLeaf::capacity * 10);
        QCOMPARE(line.edgesPassed(), SmpEdgeLeaf::capacity);
        QCOMPARE(line.advanceTo((3 * SmpEdgeLeaf::capacity) * 10), 2 * SmpEdgeLeaf::capacity);
        QCOMPARE(line.edgesLeft(), 5);
        QCOMPARE(line.skipEdges(5), count * 10);
        QVERIFY(!line.hasEdge());
        whole = true;
        line.skipEdges(1);
        whole = false;
    });
    QVERIFY(whole);
}

void TstChannelReader::aCopyWalksByItself()
{
    bool whole = false;
    onEdges({10, 20, 30}, length, false, [&whole](ChannelReader &line) {
        ChannelReader ahead = line;
        QCOMPARE(ahead.nextEdge(), 10);
        QCOMPARE(ahead.nextEdge(), 20);
        QCOMPARE(line.nextEdge(), 10);
        whole = true;
    });
    QVERIFY(whole);
}

void TstChannelReader::randomMovesAgreeWithAPlainList_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("widest");
    QTest::newRow("a leaf, dense") << 20480 << 3;
    QTest::newRow("many leaves") << 200000 << 50;
    QTest::newRow("few, far apart") << 40 << 2000000000;
}

void TstChannelReader::randomMovesAgreeWithAPlainList()
{
    QFETCH(int, count);
    QFETCH(int, widest);
    std::mt19937 random(std::uint32_t(count) * 7U);
    std::vector<std::int64_t> edges;
    std::int64_t at = 0;
    for (int i = 0; i < count; ++i)
        edges.push_back(at += 1 + std::int64_t(random() % std::uint32_t(widest)));
    const std::int64_t samples = at + 100;
    const auto upTo = [&edges](std::int64_t sample) {
        return std::upper_bound(edges.begin(), edges.end(), sample) - edges.begin();
    };
    int moves = 0;
    const DecodeStatus status = onEdges(edges, samples, false, [&](ChannelReader &line) {
        for (;;) {
            const std::int64_t before = line.position();
            const std::int64_t far =
                std::int64_t(random()) % (moves % 5 == 0 ? samples : widest * std::int64_t(12)) + 1;
            const std::int64_t to = before + far;
            const auto asked = std::int64_t(random() % std::uint32_t(std::min<std::int64_t>(samples, 0xFFFFFFFF)));
            QCOMPARE(line.peekLevel(asked), upTo(asked) % 2 == 1);
            QCOMPARE(line.hasEdgeBefore(to), upTo(to - 1) > upTo(before));
            if (moves % 97 == 0)
                line.seek(asked);
            else if (moves % 3 == 0)
                QCOMPARE(line.advanceTo(to), std::int64_t(upTo(to) - upTo(before)));
            else if (moves % 3 == 1)
                QCOMPARE(line.levelAt(to), upTo(to) % 2 == 1);
            else
                QCOMPARE(line.nextEdge(), edges[std::size_t(upTo(before))]);
            const auto passed = upTo(line.position());
            QCOMPARE(line.level(), passed % 2 == 1);
            QCOMPARE(line.edgesPassed(), std::int64_t(passed));
            QCOMPARE(line.lastEdge(), passed == 0 ? -1 : edges[std::size_t(passed - 1)]);
            QCOMPARE(line.peekEdge(), passed == count ? samples : edges[std::size_t(passed)]);
            if (QTest::currentTestFailed() || ++moves == 20000)
                return;
        }
    });
    QCOMPARE(status, DecodeStatus::Complete);
    QVERIFY(moves > 10);
}

void TstChannelReader::aChannelThatIsNotThereIsLowForever()
{
    TestCapture capture(1000000, length);
    bool whole = false;
    decode(capture, [&whole](ScriptDecoder &decoder) {
        ChannelReader &line = decoder.readerOfNone();
        QVERIFY(!line.exists());
        QVERIFY(!line.hasEdge());
        QCOMPARE(line.edgesLeft(), 0);
        QCOMPARE(line.lastEdge(), -1);
        QCOMPARE(line.levelAt(length - 1), false);
        QCOMPARE(line.peekLevel(3), false);
        line.seek(2);
        QCOMPARE(line.position(), 2);
        whole = true;
        line.nextEdge();
        whole = false;
    });
    QVERIFY(whole);
}

void TstChannelReader::anAbsentChannelFailsTheDecodeWithASentence()
{
    TestCapture capture(1000000, length);
    const auto desk = decode(capture, [](ScriptDecoder &decoder) { (void)decoder.readerOf(3); });
    QCOMPARE(desk->analyzer->GetDecodeStatus(), DecodeStatus::Failed);
    QCOMPARE(desk->message(), std::string("Channel 3 is not in this capture."));
    QCOMPARE(desk->progress.ended, 1);
}

QTEST_APPLESS_MAIN(TstChannelReader)
#include "tst_ChannelReader.moc"
