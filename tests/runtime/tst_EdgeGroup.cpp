#include "runtime/ReaderDesk.h"

#include <QtTest>

#include <map>
#include <random>
#include <vector>

using lux::ChannelReader;
using lux::EdgeGroup;
using readerDesk::decode;
using readerDesk::ScriptDecoder;

class TstEdgeGroup : public QObject {
    Q_OBJECT
private slots:
    void edgesOfAllLinesComeInTheOrderOfTime();
    void aChannelThatIsNotThereTakesPartAsALowOne();
    void aMoveTellsWhoseLevelChanged();
    void theLastEdgeOfAllLeavesTheDecode();
    void aGroupOfNoChannelLeavesTheDecode();
};

void TstEdgeGroup::edgesOfAllLinesComeInTheOrderOfTime()
{
    constexpr std::uint32_t lines = 5;
    std::mt19937 random(3);
    TestCapture capture(1000000, 100000);
    std::map<std::int64_t, std::uint64_t> expected; // position: lines
    for (std::uint32_t i = 0; i < lines; ++i) {
        std::vector<std::int64_t> edges;
        for (std::int64_t at = 1 + random() % 10; at < 90000; at += 1 + random() % (20 * (i + 1))) {
            edges.push_back(at);
            expected[at] |= std::uint64_t(1) << i;
        }
        capture.channel(i, i % 2 == 1, edges);
    }
    std::size_t steps = 0;
    decode(capture, [&](ScriptDecoder &decoder) {
        std::vector<ChannelReader *> readers;
        for (std::uint32_t i = 0; i < lines; ++i)
            readers.push_back(&decoder.readerOf(i));
        EdgeGroup group(readers);
        std::uint64_t levels = 0b01010;
        for (const auto &[at, changed] : expected) {
            QCOMPARE(group.peekEdge(), at);
            QCOMPARE(group.nextEdge(), at);
            QCOMPARE(group.changed(), changed);
            levels ^= changed;
            QCOMPARE(group.levels(), levels);
            for (const ChannelReader *reader : readers)
                QCOMPARE(reader->position(), at);
            ++steps;
        }
        QVERIFY(!group.hasEdge());
    });
    QCOMPARE(steps, expected.size());
}

void TstEdgeGroup::aChannelThatIsNotThereTakesPartAsALowOne()
{
    TestCapture capture(1000000, 1000);
    capture.channel(0, false, {5});
    bool whole = false;
    decode(capture, [&whole](ScriptDecoder &decoder) {
        EdgeGroup group{&decoder.readerOfNone(), &decoder.readerOf(0)};
        QCOMPARE(group.nextEdge(), 5);
        QCOMPARE(group.levels(), std::uint64_t(0b10));
        whole = true;
    });
    QVERIFY(whole);
}

void TstEdgeGroup::aMoveTellsWhoseLevelChanged()
{
    TestCapture capture(1000000, 1000);
    capture.channel(0, false, {5, 6}).channel(1, false, {5, 6, 7});
    bool whole = false;
    decode(capture, [&whole](ScriptDecoder &decoder) {
        EdgeGroup group{&decoder.readerOf(0), &decoder.readerOf(1)};
        group.advanceTo(100);
        QCOMPARE(group.changed(), std::uint64_t(0b10));
        QCOMPARE(group.levels(), std::uint64_t(0b10));
        QVERIFY(!group.hasEdgeBefore(1000));
        whole = true;
    });
    QVERIFY(whole);
}

void TstEdgeGroup::theLastEdgeOfAllLeavesTheDecode()
{
    TestCapture capture(1000000, 1000);
    capture.channel(0, false, {5}).channel(1, false, {9});
    int edges = 0;
    const auto desk = decode(capture, [&edges](ScriptDecoder &decoder) {
        EdgeGroup group{&decoder.readerOf(0), &decoder.readerOf(1)};
        for (;; ++edges)
            group.nextEdge();
    });
    QCOMPARE(edges, 2);
    QCOMPARE(desk->analyzer->GetDecodeStatus(), DecodeStatus::Complete);
}

void TstEdgeGroup::aGroupOfNoChannelLeavesTheDecode()
{
    TestCapture capture(1000000, 1000);
    int edges = 0;
    const auto desk = decode(capture, [&edges](ScriptDecoder & /*decoder*/) {
        EdgeGroup group(std::span<ChannelReader *const>{});
        QVERIFY(!group.hasEdge());
        for (; edges < 10; ++edges)
            group.nextEdge();
    });
    QCOMPARE(edges, 0);
    QCOMPARE(desk->analyzer->GetDecodeStatus(), DecodeStatus::Complete);
}

QTEST_APPLESS_MAIN(TstEdgeGroup)
#include "tst_EdgeGroup.moc"
