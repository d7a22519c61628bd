#include "store/Captures.h"
#include "store/MemBudget.h"
#include "store/SmpEdgeReader.h"
#include "store/SmpWriter.h"

#include <QtTest>

#include <algorithm>
#include <vector>

using namespace captures;

/// Reading a channel from left to right, against a plain list of the same positions.
class TstSmpEdgeReader : public QObject {
    Q_OBJECT
private slots:
    void init() { memBudget = std::int64_t(1) << 40; }
    void stepsVisitEachEntryWithItsLevel_data() { shapes(); }
    void stepsVisitEachEntryWithItsLevel();
    void blocksHoldEachEntryOnce_data() { shapes(); }
    void blocksHoldEachEntryOnce();
    void skipsLandWhereASearchDoes_data() { shapes(); }
    void skipsLandWhereASearchDoes();
    void aReaderBeginsAnywhere_data() { shapes(); }
    void aReaderBeginsAnywhere();
    void aSkipNeverGoesBack();
    void aSkipOutsideTheDataPassesNothing();
    void theEndMarkIsTheLastAndIsToldFromTransitions();
    void behindTheEndNothingIsLeft();
    void aChannelThatStartsHighIsHighBeforeItsFirstEntry();
    void aChannelWithoutDataReadsAsLow();
    void partOfABlockCanBePassed();

private:
    static void shapes();
};

void TstSmpEdgeReader::shapes()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("largest");
    QTest::newRow("one entry") << 1 << 100;
    QTest::newRow("dense") << 50000 << 1;
    QTest::newRow("a leaf exactly") << 20480 << 9;
    QTest::newRow("two leaves and one entry") << 40961 << 1000;
    QTest::newRow("a leaf across 2^32") << 30000 << 300000;
    QTest::newRow("several high bytes in a leaf") << 15000 << 8000000;
}

void TstSmpEdgeReader::stepsVisitEachEntryWithItsLevel()
{
    QFETCH(int, count);
    QFETCH(int, largest);
    const std::vector<std::int32_t> widths = irregular(std::size_t(count), std::uint32_t(largest));
    const Positions positions = positionsOf(widths);
    const auto data = channelOf(widths);
    SmpEdgeReader reader(*data, 0);
    Positions read;
    int level = 0;
    do {
        QCOMPARE(reader.level(), level);
        QCOMPARE(data->entryAt(0, reader.cursor()), reader.next());
        read.push_back(reader.next());
        level ^= 1;
    } while (reader.advance());
    QCOMPARE(read, positions);
}

void TstSmpEdgeReader::blocksHoldEachEntryOnce()
{
    QFETCH(int, count);
    QFETCH(int, largest);
    const std::vector<std::int32_t> widths = irregular(std::size_t(count), std::uint32_t(largest));
    const auto data = channelOf(widths);
    SmpEdgeReader reader(*data, 0);
    Positions read;
    for (SmpEdgeReader::Block block = reader.block(); block.size() > 0; block = reader.block()) {
        QCOMPARE(block.low.size(), block.high.size());
        QCOMPARE(reader.level(), int(read.size() % 2));
        for (int i = 0; i < block.size(); ++i) {
            const auto at = std::size_t(i);
            QCOMPARE(block.position(i), std::int64_t(block.high[at]) << 32 | std::int64_t(block.low[at]));
            read.push_back(block.position(i));
        }
        QCOMPARE(block.last, read.back());
        reader.pass(block.size());
    }
    QCOMPARE(read, positionsOf(widths));
}

void TstSmpEdgeReader::skipsLandWhereASearchDoes()
{
    QFETCH(int, count);
    QFETCH(int, largest);
    const std::vector<std::int32_t> widths = irregular(std::size_t(count), std::uint32_t(largest));
    const Positions positions = positionsOf(widths);
    const auto data = channelOf(widths);
    for (const std::int64_t part : {3, 100, 40000}) {
        const std::int64_t step = std::max<std::int64_t>(1, positions.back() / part);
        SmpEdgeReader reader(*data, 0);
        for (std::int64_t pos = 0; pos < positions.back(); pos += step) {
            const auto expected = std::upper_bound(positions.begin(), positions.end(), pos);
            QVERIFY(reader.skipTo(pos));
            QCOMPARE(reader.next(), *expected);
            QCOMPARE(reader.level(), int((expected - positions.begin()) % 2));
            if (reader.atEnd()) {
                break;
            }
            reader.advance(); // skips and steps mix
            QCOMPARE(reader.next(), *(expected + 1));
            pos = std::max(pos, *expected);
        }
    }
}

void TstSmpEdgeReader::aReaderBeginsAnywhere()
{
    QFETCH(int, count);
    QFETCH(int, largest);
    const std::vector<std::int32_t> widths = irregular(std::size_t(count), std::uint32_t(largest));
    const Positions positions = positionsOf(widths);
    const auto data = channelOf(widths);
    const std::int64_t step = std::max<std::int64_t>(1, positions.back() / 997);
    for (std::int64_t pos = 0; pos < positions.back(); pos += step) {
        const auto expected = std::upper_bound(positions.begin(), positions.end(), pos);
        const SmpEdgeReader reader(*data, 0, pos);
        QCOMPARE(reader.next(), *expected);
        QCOMPARE(reader.level(), int((expected - positions.begin()) % 2));
    }
}

void TstSmpEdgeReader::aSkipNeverGoesBack()
{
    SmpData data(1, 0);
    close(data, {{10, 20, 30}}, 100);
    SmpEdgeReader reader(data, 0);
    QVERIFY(reader.skipTo(20));
    QVERIFY(reader.skipTo(5));
    QCOMPARE(reader.next(), std::int64_t(30));
}

void TstSmpEdgeReader::aSkipOutsideTheDataPassesNothing()
{
    SmpData data(1, 0);
    close(data, {{10, 20, 30}}, 100);
    SmpEdgeReader reader(data, 0);
    QVERIFY(!reader.skipTo(101));
    QVERIFY(!reader.skipTo(-1));
    QCOMPARE(reader.next(), std::int64_t(10));
    QVERIFY(reader.skipTo(100)); // the end mark is found at its own position
    QCOMPARE(reader.next(), std::int64_t(100));
    QVERIFY(!SmpEdgeReader(data, 0, 101).hasData());
    QVERIFY(!SmpEdgeReader(data, 0, -1).hasData());
}

void TstSmpEdgeReader::theEndMarkIsTheLastAndIsToldFromTransitions()
{
    SmpData data(1, 0);
    close(data, {{10}}, 100);
    SmpEdgeReader reader(data, 0);
    QVERIFY(!reader.atEnd());
    QVERIFY(reader.advance());
    QVERIFY(reader.atEnd());
    QCOMPARE(reader.next(), std::int64_t(100));
    QCOMPARE(reader.level(), 1);
}

void TstSmpEdgeReader::behindTheEndNothingIsLeft()
{
    SmpData data(1, 0);
    close(data, {{10}}, 100);
    SmpEdgeReader reader(data, 0, 50);
    for (int i = 0; i < 3; ++i) {
        QVERIFY(!reader.advance());
        QVERIFY(reader.atEnd());
        QCOMPARE(reader.next(), SmpEdgeReader::never);
        QCOMPARE(reader.level(), 1);
        QCOMPARE(reader.block().size(), 0);
        QVERIFY(reader.skipTo(100));
        QVERIFY(!reader.skipTo(101));
    }
}

void TstSmpEdgeReader::aChannelThatStartsHighIsHighBeforeItsFirstEntry()
{
    SmpData data(2, 0);
    data.begin(0, 1000, std::vector<std::uint8_t>{1, 1});
    SmpWriter(data).setStartLevels(2);
    append(data, 1, {7});
    SmpWriter(data).setSmpCount(50);
    data.finish(50);
    SmpEdgeReader reader(data, 1);
    QCOMPARE(reader.level(), 1);
    QVERIFY(reader.advance());
    QCOMPARE(reader.level(), 0);
}

void TstSmpEdgeReader::aChannelWithoutDataReadsAsLow()
{
    SmpData data(2, 0);
    data.begin(0, 1000, std::vector<std::uint8_t>{0, 1});
    data.finish(0);
    for (const int chn : {0, 2, -1}) {
        SmpEdgeReader reader(data, chn);
        QVERIFY(!reader.hasData());
        QVERIFY(!reader.advance());
        QVERIFY(!reader.skipTo(0));
        QCOMPARE(reader.next(), SmpEdgeReader::never);
        QCOMPARE(reader.level(), 0);
        QVERIFY(reader.atEnd());
        QCOMPARE(reader.block().size(), 0);
    }
    QVERIFY(!SmpEdgeReader().hasData());
}

void TstSmpEdgeReader::partOfABlockCanBePassed()
{
    const auto data = channelOf(irregular(45000, 50));
    const Positions positions = positionsOf(irregular(45000, 50));
    SmpEdgeReader reader(*data, 0);
    std::size_t at = 0;
    while (at < positions.size()) {
        QCOMPARE(reader.next(), positions[at]);
        QCOMPARE(reader.level(), int(at % 2));
        const int count = std::min(reader.block().size(), 777);
        at += std::size_t(count);
        QCOMPARE(reader.pass(count), at < positions.size());
    }
}

QTEST_APPLESS_MAIN(TstSmpEdgeReader)
#include "tst_SmpEdgeReader.moc"
