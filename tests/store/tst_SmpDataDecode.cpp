#include "store/Captures.h"
#include "store/MemBudget.h"
#include "store/SmpData.h"
#include "store/SmpStreams.h"
#include "store/SmpWriter.h"

#include <QtTest>

#include <random>

using captures::Positions;
using smpStreams::Bytes;
using smpStreams::Record;

namespace {

constexpr std::int64_t maxPosition = (std::int64_t(1) << 40) - 1;

/// What a decoder should have stored, found by looking at one sample after the other.
struct Expected {
    std::uint64_t startLevels = 0;
    std::int64_t samples = 0;
    std::int64_t trgPos = 0;
    std::vector<Positions> chns;

    explicit Expected(int count) : chns(std::size_t(count)) {}
    void change(std::uint64_t changed, std::int64_t at)
    {
        for (std::size_t chn = 0; chn < chns.size(); ++chn) {
            if ((changed >> chn & 1) != 0) {
                chns[chn].push_back(at);
            }
        }
    }
};

Expected walk(const std::vector<Record> &records, int chns, std::uint32_t trgRecord)
{
    Expected expected(chns);
    expected.startLevels = records.front().word;
    std::uint32_t last = records.front().word;
    std::uint32_t number = 0;
    for (const Record &record : records) {
        expected.change(record.word ^ last, expected.samples);
        last = record.word;
        expected.samples += record.count;
        if (++number == trgRecord) {
            expected.trgPos = expected.samples;
        }
    }
    return expected;
}

/// Walks samples, one word of all channels each. `last` is the word before the first one.
Expected walkSamples(const std::vector<std::uint32_t> &samples, int chns, std::uint32_t last, std::int64_t from = 0)
{
    Expected expected(chns);
    expected.samples = from;
    expected.startLevels = last;
    for (const std::uint32_t word : samples) {
        expected.change(word ^ last, expected.samples);
        last = word;
        ++expected.samples;
    }
    return expected;
}

/// Closes `data` and compares. A transition at the capture's very end becomes the end mark.
bool holds(SmpData &data, const Expected &expected)
{
    if (data.startLevels() != expected.startLevels || data.smpCount() != expected.samples ||
        data.trgPos() != expected.trgPos) {
        return false;
    }
    data.finish(data.smpCount());
    for (std::size_t chn = 0; chn < expected.chns.size(); ++chn) {
        Positions want = expected.chns[chn];
        while (!want.empty() && want.back() >= expected.samples) {
            want.pop_back();
        }
        want.push_back(expected.samples);
        if (captures::entries(data, int(chn)) != want) {
            return false;
        }
    }
    return true;
}

/// `count` records whose word changes with a chance of `percent`; some of them hold no sample when `zeros` is set.
std::vector<Record> randomRecords(std::uint32_t seed, int count, int percent, std::uint32_t mask, bool zeros)
{
    std::mt19937 random(seed);
    std::vector<Record> records;
    std::uint32_t word = std::uint32_t(random()) & mask;
    for (int i = 0; i < count; ++i) {
        if (int(random() % 100) < percent) {
            word ^= (random() % 4 == 0 ? std::uint32_t(random()) : std::uint32_t(1) << random() % 32) & mask;
        }
        const bool zero = zeros && random() % 20 == 0;
        records.push_back({word, zero ? std::uint8_t(0) : std::uint8_t(1 + random() % 255)});
    }
    return records;
}

std::vector<std::uint32_t> randomSamples(std::uint32_t seed, int count, int percent, std::uint32_t mask)
{
    std::mt19937 random(seed);
    std::vector<std::uint32_t> samples;
    std::uint32_t word = std::uint32_t(random()) & mask;
    for (int i = 0; i < count; ++i) {
        if (int(random() % 1000) < percent * 10) {
            word ^= std::uint32_t(random()) & mask;
        }
        samples.push_back(word);
    }
    return samples;
}

Bytes asBytes8(const std::vector<std::uint32_t> &samples)
{
    return Bytes(samples.begin(), samples.end());
}

std::vector<int> firstChns(int count)
{
    std::vector<int> chns;
    for (int chn = 0; chn < count; ++chn) {
        chns.push_back(chn);
    }
    return chns;
}

std::span<const std::uint8_t> part(const Bytes &bytes, std::size_t from, std::size_t to)
{
    return std::span(bytes).subspan(from, to - from);
}

} // namespace

class TstSmpDataDecode : public QObject {
    Q_OBJECT
private slots:
    void init() { memBudget = std::int64_t(1) << 40; }
    void cleanup() { blockRefusal = nullptr; }

    void runLengthRecordsGiveTheTransitionsOfAPlainWalk_data();
    void runLengthRecordsGiveTheTransitionsOfAPlainWalk();
    void aChunkMayEndBehindAnyGroup();
    void theTriggerStandsAtTheEndOfItsRecord();
    void aCountOfZeroLeavesTheOffsetOfTheLastSuchRecord();
    void wrongCheckBytesLeaveTheOffsetOfTheGroupPlusThirty();
    void malformedRecordsAreToldAmongTransitionsToo();
    void aTailShorterThanAGroupIsSkippedAndConsumed();
    void anEmptyChunkChangesNothing();
    void recordsStopAtAFullLeafWhenTheBudgetIsSpent();
    void mixedRecordsSplitIntoAnalogAndDigitalSamples();
    void mixedRecordsStartAtAnalogIndexZeroInEveryCall();
    void mixedRecordsBeyondTheAnalogBufferAreCut();
    void mixedRecordsPassOverAnalogBuffersThatTheHeapRefused();
    void mixedRecordsStopAfterWholeRecordsWhenTheBudgetIsSpent();
    void bytesGiveTheTransitionsOfAPlainWalk_data();
    void bytesGiveTheTransitionsOfAPlainWalk();
    void bytesMayBeSplitAnywhere();
    void aFirstChunkOfBytesTakesItsLevelsFromItsFirstByte();
    void bytesWithAStartBehindTheChunkHoldNoSample();
    void bytesOfChannelsThatAreNotCapturedArePassedOver();
    void bytesStopAtTheSampleThatFindsNoRoom();
    void slicesGiveTheTransitionsOfAPlainWalk_data();
    void slicesGiveTheTransitionsOfAPlainWalk();
    void slicesMayBeSplitBetweenAnyTwoWords();
    void slicesThatGoOnAtAnotherChannelAreNotTakenForQuiet();
    void slicesOfSomeChannelsTakeTurnsInAscendingOrder();
    void aFirstGroupThatAChunkCutsTellsItsLevelsInTheNext();
    void anOddLastByteOfSlicesIsIgnored();
    void slicesWithoutAnyChannelAreIgnored();
    void slicesOfAChannelWithoutARootKeepTheirTurn();
    void slicesStopBeforeTheGroupThatFindsNoRoom();
    void aShortFirstChunkOfSlicesDoesNotReadBeyondItsEnd();
    void positionsKeepTheirHighByteAcrossTheSeamsOf32Bits_data();
    void positionsKeepTheirHighByteAcrossTheSeamsOf32Bits();
    void longRecordsKeepTheirHighByteAcrossASeamOf32Bits();
    void positionsBeyond40BitsAreNeverStored();
    void pulsesAddUpToPositions();
    void pulsesOfAForeignChannelOrOfNoWidthsAreDone();
    void pulsesBeyond40BitsAreNeverStored();
    void joinedPulsesLengthenTheLastRun();
    void joinedPulsesAtTheStartAreNotJoined();
    void pulsesStopAtAFullLeafWhenTheBudgetIsSpent();
};

void TstSmpDataDecode::runLengthRecordsGiveTheTransitionsOfAPlainWalk_data()
{
    QTest::addColumn<int>("seed");
    QTest::addColumn<int>("percent");
    QTest::addColumn<int>("groups");
    for (const int percent : {0, 3, 40, 100}) {
        for (int seed = 1; seed <= 4; ++seed) {
            QTest::addRow("%d%% seed %d", percent, seed) << seed << percent << 400;
        }
    }
    QTest::addRow("several leaves") << 9 << 100 << 120000;
}

void TstSmpDataDecode::runLengthRecordsGiveTheTransitionsOfAPlainWalk()
{
    QFETCH(int, seed);
    QFETCH(int, percent);
    QFETCH(int, groups);
    std::uint32_t consumed = 7;
    SmpData narrow(16, 0);
    const auto narrowRecords = randomRecords(std::uint32_t(seed), groups * 5, percent, 0xFFFF, seed % 2 == 0);
    narrow.begin(0, 1, smpStreams::enabled(16));
    QVERIFY(narrow.addRle16(smpStreams::rle16(narrowRecords), consumed));
    QCOMPARE(consumed, std::uint32_t(7 + groups * 16));
    QVERIFY(holds(narrow, walk(narrowRecords, 16, 0)));

    consumed = 0;
    SmpData wide(32, 0);
    const auto wideRecords = randomRecords(std::uint32_t(seed), groups * 6, percent, 0xFFFFFFFF, seed % 2 == 0);
    wide.begin(0, 1, smpStreams::enabled(32));
    QVERIFY(wide.addRle32(smpStreams::rle32(wideRecords), consumed));
    QCOMPARE(consumed, std::uint32_t(groups * 32));
    QVERIFY(holds(wide, walk(wideRecords, 32, 0)));
}

void TstSmpDataDecode::aChunkMayEndBehindAnyGroup()
{
    const auto records = randomRecords(5, 30, 40, 0xFFFF, false);
    const Bytes narrow = smpStreams::rle16(records);
    const Bytes wide = smpStreams::rle32(records);
    for (std::size_t split = 0; split <= narrow.size(); split += 16) {
        SmpData data(16, 0);
        std::uint32_t consumed = 0;
        data.begin(22, 1, smpStreams::enabled(16));
        QVERIFY(data.addRle16(part(narrow, 0, split), consumed));
        QVERIFY(data.addRle16(part(narrow, split, narrow.size()), consumed));
        QVERIFY(holds(data, walk(records, 16, 22)));
    }
    for (std::size_t split = 0; split <= wide.size(); split += 32) {
        SmpData data(32, 0);
        std::uint32_t consumed = 0;
        data.begin(22, 1, smpStreams::enabled(32));
        QVERIFY(data.addRle32(part(wide, 0, split), consumed));
        QVERIFY(data.addRle32(part(wide, split, wide.size()), consumed));
        QVERIFY(holds(data, walk(records, 32, 22)));
    }
}

void TstSmpDataDecode::theTriggerStandsAtTheEndOfItsRecord()
{
    for (const int percent : {0, 30}) {
        const auto records = randomRecords(11, 60, percent, 0xFFFF, false);
        for (std::uint32_t trigger = 1; trigger <= 60; ++trigger) {
            std::uint32_t consumed = 0;
            SmpData narrow(16, 0);
            narrow.begin(trigger, 1, smpStreams::enabled(16));
            QVERIFY(narrow.addRle16(smpStreams::rle16(records), consumed));
            QVERIFY(narrow.trgPos() > 0);
            QVERIFY(holds(narrow, walk(records, 16, trigger)));
            SmpData wide(32, 0);
            wide.begin(trigger, 1, smpStreams::enabled(32));
            QVERIFY(wide.addRle32(smpStreams::rle32(records), consumed));
            QVERIFY(holds(wide, walk(records, 32, trigger)));
        }
    }
}

void TstSmpDataDecode::aCountOfZeroLeavesTheOffsetOfTheLastSuchRecord()
{
    for (std::size_t bad = 0; bad < 30; ++bad) {
        auto records = std::vector<Record>(30, {0x1234, 9});
        records[0].count = 0;
        records[bad].count = 0;
        std::uint32_t consumed = 0;
        SmpData narrow(16, 0);
        narrow.begin(0, 1, smpStreams::enabled(16));
        QVERIFY(narrow.addRle16(smpStreams::rle16(records), consumed));
        QCOMPARE(narrow.zeroSmpCnt(), std::int32_t(bad / 5 * 16 + bad % 5 * 3));
        SmpData wide(32, 0);
        wide.begin(0, 1, smpStreams::enabled(32));
        QVERIFY(wide.addRle32(smpStreams::rle32(records), consumed));
        QCOMPARE(wide.zeroSmpCnt(), std::int32_t(bad / 6 * 32 + bad % 6 * 5));
        QCOMPARE(wide.smpCount(), std::int64_t(bad == 0 ? 29 : 28) * 9);
    }
}

void TstSmpDataDecode::wrongCheckBytesLeaveTheOffsetOfTheGroupPlusThirty()
{
    Bytes bytes = smpStreams::rle32(std::vector<Record>(18, {0x12345678, 9}));
    SmpData data(32, 0);
    std::uint32_t consumed = 0;
    data.begin(0, 1, smpStreams::enabled(32));
    QVERIFY(data.addRle32(bytes, consumed));
    QCOMPARE(data.zeroSmpCnt(), -1);
    bytes[32 + 31] ^= 0x10;
    data.begin(0, 1, smpStreams::enabled(32));
    QVERIFY(data.addRle32(bytes, consumed));
    QCOMPARE(data.zeroSmpCnt(), 32 + 30);
    QCOMPARE(data.smpCount(), std::int64_t(18 * 9)); // still processed
}

void TstSmpDataDecode::malformedRecordsAreToldAmongTransitionsToo()
{
    std::vector<Record> records;
    for (std::uint32_t i = 0; i < 30; ++i) {
        records.push_back({i % 2 == 0 ? 0x1234U : 0x4321U, 9});
    }
    for (std::size_t bad = 0; bad < 30; ++bad) {
        auto withZero = records;
        withZero[bad].count = 0;
        std::uint32_t consumed = 0;
        SmpData narrow(16, 0);
        narrow.begin(0, 1, smpStreams::enabled(16));
        QVERIFY(narrow.addRle16(smpStreams::rle16(withZero), consumed));
        QCOMPARE(narrow.zeroSmpCnt(), std::int32_t(bad / 5 * 16 + bad % 5 * 3));
        QVERIFY(holds(narrow, walk(withZero, 16, 0)));
        SmpData wide(32, 0);
        wide.begin(0, 1, smpStreams::enabled(32));
        QVERIFY(wide.addRle32(smpStreams::rle32(withZero), consumed));
        QCOMPARE(wide.zeroSmpCnt(), std::int32_t(bad / 6 * 32 + bad % 6 * 5));
        QVERIFY(holds(wide, walk(withZero, 32, 0)));
    }
    for (std::size_t group = 0; group < 5; ++group) {
        Bytes bytes = smpStreams::rle32(records);
        bytes[group * 32 + 30] ^= 0x01;
        std::uint32_t consumed = 0;
        SmpData wide(32, 0);
        wide.begin(0, 1, smpStreams::enabled(32));
        QVERIFY(wide.addRle32(bytes, consumed));
        QCOMPARE(wide.zeroSmpCnt(), std::int32_t(group * 32 + 30));
        QVERIFY(holds(wide, walk(records, 32, 0)));
    }
}

void TstSmpDataDecode::aTailShorterThanAGroupIsSkippedAndConsumed()
{
    const Bytes bytes = smpStreams::rle16(std::vector<Record>(10, {1, 4}));
    for (std::size_t size = 0; size <= bytes.size(); ++size) {
        SmpData data(16, 0);
        std::uint32_t consumed = 100;
        data.begin(0, 1, smpStreams::enabled(16));
        QVERIFY(data.addRle16(part(bytes, 0, size), consumed));
        QCOMPARE(data.smpCount(), std::int64_t(size / 16 * 20));
        QCOMPARE(consumed, std::uint32_t(100 + size));
    }
    const Bytes wide = smpStreams::rle32(std::vector<Record>(12, {1, 4}));
    for (std::size_t size = 0; size <= wide.size(); ++size) {
        SmpData data(32, 0);
        std::uint32_t consumed = 0;
        data.begin(0, 1, smpStreams::enabled(32));
        QVERIFY(data.addRle32(part(wide, 0, size), consumed));
        QCOMPARE(data.smpCount(), std::int64_t(size / 32 * 24));
        QCOMPARE(consumed, std::uint32_t(size));
    }
}

void TstSmpDataDecode::anEmptyChunkChangesNothing()
{
    SmpData data(32, 2);
    std::uint32_t consumed = 5;
    std::int64_t count = -1;
    data.begin(0, 1, smpStreams::enabled(32));
    QVERIFY(data.addMixed16({}, consumed) && data.addRle16({}, consumed) && data.addRle32({}, consumed));
    QVERIFY(data.addBytes8({}, 0, count));
    QCOMPARE(count, std::int64_t(0));
    QVERIFY(data.addSliced({}, 0, count));
    QCOMPARE(count, std::int64_t(0));
    QCOMPARE(consumed, std::uint32_t(5));
    data.finish(0);
    QCOMPARE(data.entryCount(3), std::int64_t(1));
}

void TstSmpDataDecode::recordsStopAtAFullLeafWhenTheBudgetIsSpent()
{
    std::vector<Record> records;
    for (std::uint32_t i = 0; i < 30000; ++i) {
        records.push_back({i & 1, 2});
    }
    std::uint32_t consumed = 0;
    SmpData narrow(16, 0);
    narrow.begin(0, 1, smpStreams::enabled(16));
    memBudget = 0; // a channel's first leaf is forced
    QVERIFY(!narrow.addRle16(smpStreams::rle16(records), consumed));
    // Record 0 changes nothing, records 1 to 20480 fill the leaf, record 20481 finds no room: in group 4096.
    QCOMPARE(consumed, std::uint32_t(4096 * 16));
    QCOMPARE(narrow.smpCount(), std::int64_t(20481 * 2));
    narrow.finish(1000000);
    QCOMPARE(narrow.entryCount(0), std::int64_t(20481));
    QCOMPARE(narrow.lastPosition(0), std::int64_t(20481 * 2));

    consumed = 0;
    SmpData wide(32, 0);
    memBudget = std::int64_t(1) << 30;
    wide.begin(0, 1, smpStreams::enabled(32));
    memBudget = 0;
    QVERIFY(!wide.addRle32(smpStreams::rle32(records), consumed));
    QCOMPARE(consumed, std::uint32_t(20481 / 6 * 16)); // sixteen a group in this format too
    QCOMPARE(wide.smpCount(), std::int64_t(20481 * 2));
}

void TstSmpDataDecode::mixedRecordsSplitIntoAnalogAndDigitalSamples()
{
    const auto samples = randomSamples(3, 500, 30, 0xFFFF);
    Bytes bytes;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        bytes.insert(bytes.end(),
                     {std::uint8_t(i), std::uint8_t(255 - i), std::uint8_t(samples[i]), std::uint8_t(samples[i] >> 8)});
    }
    SmpData data(16, 2);
    std::uint32_t consumed = 0;
    data.begin(20, 1, smpStreams::enabled(16));
    QVERIFY(data.addMixed16(bytes, consumed));
    QCOMPARE(consumed, std::uint32_t(2000));
    QCOMPARE(data.aChnBufs()[0]->count, 500);
    QCOMPARE(data.aChnBufs()[1]->count, 500);
    QCOMPARE(int(data.aChnBufs()[0]->samples[200]), 200 - 256);
    QCOMPARE(int(data.aChnBufs()[1]->samples[3]), -4);
    Expected expected = walkSamples(samples, 16, samples[0]);
    expected.trgPos = 20;
    QVERIFY(holds(data, expected));
}

void TstSmpDataDecode::mixedRecordsStartAtAnalogIndexZeroInEveryCall()
{
    const Bytes first = {1, 2, 0, 0, 3, 4, 0, 0, 5, 6, 0, 0};
    const Bytes second = {9, 8, 0, 0};
    SmpData data(16, 2);
    std::uint32_t consumed = 0;
    data.begin(0, 1, smpStreams::enabled(16));
    QVERIFY(data.addMixed16(first, consumed));
    QVERIFY(data.addMixed16(second, consumed));
    QCOMPARE(data.aChnBufs()[0]->count, 4);
    QCOMPARE(int(data.aChnBufs()[0]->samples[0]), 9);
    QCOMPARE(int(data.aChnBufs()[1]->samples[0]), 8);
    QCOMPARE(int(data.aChnBufs()[0]->samples[1]), 3);
}

void TstSmpDataDecode::mixedRecordsBeyondTheAnalogBufferAreCut()
{
    const std::size_t records = SmpAChnBuffer::capacity + 100;
    SmpData data(16, 2);
    std::uint32_t consumed = 0;
    data.begin(0, 1, smpStreams::enabled(16));
    QVERIFY(data.addMixed16(Bytes(records * 4, 0x11), consumed));
    QVERIFY(data.addMixed16(Bytes(400, 0x11), consumed));
    QCOMPARE(data.aChnBufs()[0]->count, int(SmpAChnBuffer::capacity));
    QCOMPARE(data.aChnBufs()[1]->count, int(SmpAChnBuffer::capacity));
    QCOMPARE(data.smpCount(), std::int64_t(records + 100));
}

void TstSmpDataDecode::mixedRecordsPassOverAnalogBuffersThatTheHeapRefused()
{
    SmpData data(16, 2);
    blockRefusal = [](std::size_t size) { return size == sizeof(SmpAChnBuffer); };
    data.begin(0, 1, smpStreams::enabled(16));
    QVERIFY(data.aChnBufs()[0] == nullptr);
    std::uint32_t consumed = 0;
    QVERIFY(data.addMixed16({{1, 2, 3, 4, 5, 6, 7, 8}}, consumed));
    QCOMPARE(data.smpCount(), std::int64_t(2));
}

void TstSmpDataDecode::mixedRecordsStopAfterWholeRecordsWhenTheBudgetIsSpent()
{
    Bytes bytes;
    for (std::size_t i = 0; i < 30000; ++i) {
        bytes.insert(bytes.end(), {0, 0, std::uint8_t(i & 1), 0});
    }
    SmpData data(16, 2);
    data.begin(0, 1, smpStreams::enabled(16));
    memBudget = 0;
    std::uint32_t consumed = 0;
    QVERIFY(!data.addMixed16(bytes, consumed));
    QCOMPARE(consumed, std::uint32_t(20481 * 4));
}

void TstSmpDataDecode::bytesGiveTheTransitionsOfAPlainWalk_data()
{
    QTest::addColumn<int>("seed");
    QTest::addColumn<int>("percent");
    QTest::addColumn<int>("count");
    int seed = 1;
    for (const int percent : {0, 1, 30, 100}) {
        for (const int count : {1, 7, 8, 9, 1000, 60000}) {
            QTest::addRow("%d samples, %d%%", count, percent) << ++seed << percent << count;
        }
    }
}

void TstSmpDataDecode::bytesGiveTheTransitionsOfAPlainWalk()
{
    QFETCH(int, seed);
    QFETCH(int, percent);
    QFETCH(int, count);
    const auto samples = randomSamples(std::uint32_t(seed), count, percent, 0xFF);
    SmpData data(8, 0);
    std::int64_t done = 0;
    data.begin(0, 1, smpStreams::enabled(8));
    QVERIFY(data.addBytes8(asBytes8(samples), 0, done));
    QCOMPARE(done, std::int64_t(count));
    QVERIFY(holds(data, walkSamples(samples, 8, samples[0])));
}

void TstSmpDataDecode::bytesMayBeSplitAnywhere()
{
    const auto samples = randomSamples(77, 70, 40, 0xFF);
    const Bytes bytes = asBytes8(samples);
    for (std::size_t split = 1; split <= bytes.size(); ++split) {
        SmpData data(8, 0);
        std::int64_t done = 0;
        data.begin(0, 1, smpStreams::enabled(8));
        QVERIFY(data.addBytes8(part(bytes, 0, split), 0, done));
        QCOMPARE(done, std::int64_t(split));
        QVERIFY(data.addBytes8(part(bytes, split, bytes.size()), -1, done));
        QVERIFY(holds(data, walkSamples(samples, 8, samples[0])));
    }
}

void TstSmpDataDecode::aFirstChunkOfBytesTakesItsLevelsFromItsFirstByte()
{
    SmpData data(8, 0);
    std::int64_t done = 0;
    data.begin(0, 1, smpStreams::enabled(8));
    QVERIFY(data.addBytes8({{0x01, 0xFF, 0x00, 0x00}}, 2, done));
    QCOMPARE(done, std::int64_t(2));
    data.finish(2);
    QCOMPARE(data.startLevels(), std::uint64_t(1));
    QCOMPARE(captures::entries(data, 0), (Positions{0, 2})); // a transition at position 0
    QCOMPARE(captures::entries(data, 1), (Positions{2}));
    SmpEdgeCursor cursor;
    QCOMPARE(data.locate(0, 0, cursor), 0);
}

void TstSmpDataDecode::bytesWithAStartBehindTheChunkHoldNoSample()
{
    SmpData data(8, 0);
    std::int64_t done = 9;
    data.begin(0, 1, smpStreams::enabled(8));
    QVERIFY(data.addBytes8({{0x01, 0xFF}}, 5, done));
    QCOMPARE(done, std::int64_t(0));
}

void TstSmpDataDecode::bytesOfChannelsThatAreNotCapturedArePassedOver()
{
    SmpData data(4, 0); // bits 4 to 7 belong to no channel
    std::int64_t done = 0;
    data.begin(0, 1, {{1, 0, 1, 0}});
    QVERIFY(data.addBytes8({{0x00, 0xFF, 0x00, 0xFF, 0xF0, 0xFF, 0x00, 0x01, 0x0E}}, 0, done));
    data.finish(done);
    QCOMPARE(captures::entries(data, 0), (Positions{1, 2, 3, 4, 5, 6, 7, 8, 9}));
    QCOMPARE(captures::entries(data, 2), (Positions{1, 2, 3, 4, 5, 6, 8, 9}));
    QCOMPARE(data.entryCount(1), std::int64_t(0));
}

void TstSmpDataDecode::bytesStopAtTheSampleThatFindsNoRoom()
{
    Bytes bytes;
    for (std::size_t i = 0; i < 30000; ++i) {
        bytes.push_back(i & 1);
    }
    SmpData data(8, 0);
    std::int64_t done = 0;
    data.begin(0, 1, smpStreams::enabled(8));
    memBudget = 0;
    QVERIFY(!data.addBytes8(bytes, 0, done));
    QCOMPARE(done, std::int64_t(20481));
    QCOMPARE(data.smpCount(), done);
}

void TstSmpDataDecode::slicesGiveTheTransitionsOfAPlainWalk_data()
{
    QTest::addColumn<int>("chns");
    QTest::addColumn<int>("percent");
    for (const int percent : {0, 1, 10, 100}) {
        for (const int chns : {1, 2, 3, 5, 13, 16, 31, 32}) {
            QTest::addRow("%d channels, %d%%", chns, percent) << chns << percent;
        }
    }
}

void TstSmpDataDecode::slicesGiveTheTransitionsOfAPlainWalk()
{
    QFETCH(int, chns);
    QFETCH(int, percent);
    const auto samples = randomSamples(std::uint32_t(chns * 100 + percent), 16 * 4000, percent, 0xFFFFFFFF);
    SmpData data(chns, 0);
    std::int64_t done = 0;
    data.begin(0, 1, smpStreams::enabled(chns));
    QVERIFY(data.addSliced(smpStreams::sliced(samples, firstChns(chns)), 0, done));
    QCOMPARE(done, std::int64_t(samples.size()));
    Expected expected = walkSamples(samples, chns, samples[0]);
    expected.startLevels &= (std::uint64_t(1) << chns) - 1;
    QVERIFY(holds(data, expected));
}

void TstSmpDataDecode::slicesMayBeSplitBetweenAnyTwoWords()
{
    const int chns = 5;
    for (const int percent : {1, 40}) {
        const auto samples = randomSamples(41, 16 * 24, percent, 0x1F);
        const Bytes bytes = smpStreams::sliced(samples, firstChns(chns));
        for (std::size_t split = std::size_t(chns) * 2; split <= bytes.size(); split += 2) {
            SmpData data(chns, 0);
            std::int64_t done = 0;
            data.begin(0, 1, smpStreams::enabled(chns));
            QVERIFY(data.addSliced(part(bytes, 0, split), 0, done));
            QCOMPARE(done, std::int64_t(split / 2 / chns * 16)); // whole groups only
            QVERIFY(data.addSliced(part(bytes, split, bytes.size()), -1, done));
            QVERIFY(holds(data, walkSamples(samples, chns, samples[0])));
        }
    }
}

void TstSmpDataDecode::slicesThatGoOnAtAnotherChannelAreNotTakenForQuiet()
{
    // From the split on, the words are those of the quiet stream before it, but they belong to the other channel.
    std::vector<std::uint32_t> samples(16, 2);
    samples.insert(samples.end(), 16, 0);
    samples.insert(samples.end(), std::size_t(16) * 200, 1);
    const Bytes bytes = smpStreams::sliced(samples, {0, 1});
    constexpr std::size_t split = 6;
    SmpData data(2, 0);
    std::int64_t done = 0;
    data.begin(0, 1, smpStreams::enabled(2));
    QVERIFY(data.addSliced(part(bytes, 0, split), 0, done));
    QVERIFY(data.addSliced(part(bytes, split, bytes.size()), -1, done));
    QVERIFY(holds(data, walkSamples(samples, 2, samples[0])));
}

void TstSmpDataDecode::slicesOfSomeChannelsTakeTurnsInAscendingOrder()
{
    const auto samples = randomSamples(43, 16 * 50, 20, 0xFFFF);
    SmpData data(16, 0);
    std::int64_t done = 0;
    Bytes enable(16, 0);
    enable[2] = enable[3] = enable[11] = 1;
    data.begin(0, 1, enable);
    Bytes bytes = smpStreams::sliced(samples, {2, 3, 11});
    bytes.insert(bytes.begin(), {0xAA, 0x55, 0xAA, 0x55}); // before the first sample that counts
    QVERIFY(data.addSliced(bytes, 4, done));
    QCOMPARE(data.slicedChn()[0], 2);
    QCOMPARE(data.slicedChn()[1], 3);
    QCOMPARE(data.slicedChn()[2], 11);
    QCOMPARE(data.slicedLevel()[11], std::int32_t(samples.back() >> 11 & 1));
    QCOMPARE(data.startLevels(), std::uint64_t(samples[0] & 0x080C));
    data.finish(done);
    const Expected expected = walkSamples(samples, 16, samples[0]);
    for (const int chn : {2, 3, 11}) {
        Positions want = expected.chns[std::size_t(chn)];
        want.push_back(done);
        QCOMPARE(captures::entries(data, chn), want);
    }
    QCOMPARE(data.entryCount(0), std::int64_t(0));
}

void TstSmpDataDecode::aFirstGroupThatAChunkCutsTellsItsLevelsInTheNext()
{
    const std::vector<std::uint32_t> samples(16 * 3, 0x1F); // all high, and quiet
    const Bytes bytes = smpStreams::sliced(samples, firstChns(5));
    for (std::size_t split = 0; split <= 12; split += 2) {
        SmpData data(5, 0);
        std::int64_t done = 0;
        data.begin(0, 1, smpStreams::enabled(5));
        QVERIFY(data.addSliced(part(bytes, 0, split), 0, done));
        QVERIFY(data.addSliced(part(bytes, split, split), -1, done));
        QVERIFY(data.addSliced(part(bytes, split, bytes.size()), -1, done));
        QCOMPARE(data.startLevels(), std::uint64_t(0x1F));
        QVERIFY(holds(data, walkSamples(samples, 5, samples[0])));
    }
}

void TstSmpDataDecode::anOddLastByteOfSlicesIsIgnored()
{
    SmpData data(1, 0);
    std::int64_t done = 0;
    data.begin(0, 1, smpStreams::enabled(1));
    QVERIFY(data.addSliced({{0x00, 0xFF, 0xFF}}, 0, done));
    QCOMPARE(done, std::int64_t(16));
    data.finish(done);
    QCOMPARE(captures::entries(data, 0), (Positions{8, 16}));
}

void TstSmpDataDecode::slicesWithoutAnyChannelAreIgnored()
{
    SmpData data(16, 0);
    std::int64_t done = 3;
    data.begin(0, 1, {});
    QVERIFY(data.addSliced(Bytes(400, 0x55), 0, done));
    QCOMPARE(done, std::int64_t(0));
    QVERIFY(data.addSliced(Bytes(400, 0x55), -1, done));
    QCOMPARE(done, std::int64_t(0));
}

void TstSmpDataDecode::slicesOfAChannelWithoutARootKeepTheirTurn()
{
    static int roots = 0;
    roots = 0;
    blockRefusal = [](std::size_t size) { return size == sizeof(SmpEdgeRoot) && ++roots == 2; };
    SmpData data(3, 0);
    data.begin(0, 1, smpStreams::enabled(3));
    blockRefusal = nullptr;
    QVERIFY(data.chnRoots()[1] == nullptr);
    const auto samples = randomSamples(44, 16 * 20, 20, 0x7);
    std::int64_t done = 0;
    QVERIFY(data.addSliced(smpStreams::sliced(samples, {0, 1, 2}), 0, done));
    QCOMPARE(done, std::int64_t(samples.size()));
    data.finish(done);
    Positions want = walkSamples(samples, 3, samples[0]).chns[2];
    want.push_back(done);
    QCOMPARE(captures::entries(data, 2), want);
}

void TstSmpDataDecode::slicesStopBeforeTheGroupThatFindsNoRoom()
{
    std::vector<std::uint32_t> samples;
    for (std::uint32_t i = 0; i < 32000; ++i) {
        samples.push_back(i & 1);
    }
    SmpData data(2, 0);
    std::int64_t done = 0;
    data.begin(0, 1, smpStreams::enabled(2));
    memBudget = 0;
    QVERIFY(!data.addSliced(smpStreams::sliced(samples, {0, 1}), 0, done));
    QCOMPARE(done, std::int64_t(20480)); // samples 1 to 20480 fill the leaf, sample 20481 finds no room
    data.finish(done);
    QCOMPARE(data.entryCount(0), std::int64_t(20480));
    QCOMPARE(data.lastPosition(0), std::int64_t(20480));
}

void TstSmpDataDecode::aShortFirstChunkOfSlicesDoesNotReadBeyondItsEnd()
{
    for (std::size_t size = 0; size < 8; ++size) {
        const Bytes bytes(size, 0xFF);
        SmpData data(4, 0);
        std::int64_t done = 0;
        data.begin(0, 1, smpStreams::enabled(4));
        QVERIFY(data.addSliced(bytes, 0, done));
        QCOMPARE(done, std::int64_t(0));
        QCOMPARE(data.startLevels(), (std::uint64_t(1) << (size + 1) / 2) - 1);
    }
}

void TstSmpDataDecode::positionsKeepTheirHighByteAcrossTheSeamsOf32Bits_data()
{
    QTest::addColumn<qint64>("from");
    QTest::addColumn<int>("percent");
    for (const int percent : {1, 100}) {
        for (const qint64 seam : {qint64(1) << 32, qint64(3) << 32, qint64(255) << 32}) {
            QTest::addRow("seam %d, %d%%", int(seam >> 32), percent) << seam - 777 << percent;
        }
    }
}

void TstSmpDataDecode::positionsKeepTheirHighByteAcrossTheSeamsOf32Bits()
{
    QFETCH(qint64, from);
    QFETCH(int, percent);
    const auto samples = randomSamples(91, 1600, percent, 0xFF);
    std::int64_t done = 0;
    SmpData data(8, 0);
    data.begin(0, 1, smpStreams::enabled(8));
    SmpWriter(data).setSmpCount(from);
    QVERIFY(data.addBytes8(asBytes8(samples), 0, done));
    QVERIFY(holds(data, walkSamples(samples, 8, samples[0], from)));

    SmpData sliced(8, 0);
    sliced.begin(0, 1, smpStreams::enabled(8));
    SmpWriter(sliced).setSmpCount(from);
    QVERIFY(sliced.addSliced(smpStreams::sliced(samples, firstChns(8)), 0, done));
    QVERIFY(holds(sliced, walkSamples(samples, 8, samples[0], from)));

    // The records go on from a word of 0, since they do not begin a capture.
    SmpData records(8, 0);
    std::uint32_t consumed = 0;
    std::vector<Record> ones;
    for (const std::uint32_t word : samples) {
        ones.push_back({word, 1});
    }
    records.begin(0, 1, smpStreams::enabled(8));
    SmpWriter(records).setStartLevels(0);
    SmpWriter(records).setSmpCount(from);
    QVERIFY(records.addRle16(smpStreams::rle16(ones), consumed));
    QVERIFY(holds(records, walkSamples(samples, 8, 0, from)));
}

void TstSmpDataDecode::longRecordsKeepTheirHighByteAcrossASeamOf32Bits()
{
    const std::int64_t from = (std::int64_t(1) << 32) - 60000; // many groups before the seam, and behind it
    const auto records = randomRecords(23, 1200, 60, 0xFF, true);
    // The records go on from a word of 0, since they do not begin a capture.
    Expected expected(8);
    expected.samples = from;
    std::uint32_t last = 0;
    for (const Record &record : records) {
        expected.change(record.word ^ last, expected.samples);
        last = record.word;
        expected.samples += record.count;
    }
    QVERIFY(expected.samples > (std::int64_t(1) << 32) + 60000);
    std::uint32_t consumed = 0;
    SmpData narrow(8, 0);
    narrow.begin(0, 1, smpStreams::enabled(8));
    SmpWriter(narrow).setSmpCount(from);
    QVERIFY(narrow.addRle16(smpStreams::rle16(records), consumed));
    QVERIFY(holds(narrow, expected));
    SmpData wide(8, 0);
    wide.begin(0, 1, smpStreams::enabled(8));
    SmpWriter(wide).setSmpCount(from);
    QVERIFY(wide.addRle32(smpStreams::rle32(records), consumed));
    QVERIFY(holds(wide, expected));
}

void TstSmpDataDecode::positionsBeyond40BitsAreNeverStored()
{
    std::vector<std::uint32_t> samples;
    std::vector<Record> records;
    for (std::uint32_t i = 0; i < 320; ++i) {
        samples.push_back(i & 1);
        records.push_back({i & 1, 1});
    }
    Positions want;
    for (std::int64_t pos = maxPosition - 100; pos <= maxPosition; ++pos) {
        want.push_back(pos);
    }
    std::int64_t done = 0;
    std::uint32_t consumed = 0;
    // The first sample changes nothing, so the transitions start one sample later.
    SmpData bytes(8, 0);
    bytes.begin(0, 1, smpStreams::enabled(8));
    SmpWriter(bytes).setSmpCount(maxPosition - 101);
    QVERIFY(bytes.addBytes8(asBytes8(samples), 0, done));
    bytes.finish(done);
    QCOMPARE(bytes.smpCount(), maxPosition);
    QCOMPARE(captures::entries(bytes, 0), want);

    SmpData sliced(1, 0);
    sliced.begin(0, 1, smpStreams::enabled(1));
    SmpWriter(sliced).setSmpCount(maxPosition - 101);
    QVERIFY(sliced.addSliced(smpStreams::sliced(samples, {0}), 0, done));
    sliced.finish(done);
    QCOMPARE(captures::entries(sliced, 0), want);

    SmpData run(16, 0);
    run.begin(0, 1, smpStreams::enabled(16));
    SmpWriter(run).setSmpCount(maxPosition - 101);
    QVERIFY(run.addRle16(smpStreams::rle16(records), consumed));
    run.finish(run.smpCount());
    QCOMPARE(captures::entries(run, 0), want);
}

void TstSmpDataDecode::pulsesAddUpToPositions()
{
    SmpData data(2, 0);
    data.begin(0, 1, smpStreams::enabled(2));
    std::int64_t pos = 100;
    QVERIFY(data.addPulses({{5, 1, 2147483647}}, 1, pos));
    QCOMPARE(pos, std::int64_t(106) + 2147483647);
    SmpWriter(data).setSmpCount(pos + 10);
    data.finish(data.smpCount());
    QCOMPARE(captures::entries(data, 1), (Positions{105, 106, pos, pos + 10}));
    QCOMPARE(data.entryCount(0), std::int64_t(1));
}

void TstSmpDataDecode::pulsesOfAForeignChannelOrOfNoWidthsAreDone()
{
    SmpData data(2, 0);
    data.begin(0, 1, {{1, 0}});
    std::int64_t pos = 8;
    QVERIFY(data.addPulses({{5, 1}}, 2, pos));
    QVERIFY(data.addPulses({{5, 1}}, -1, pos));
    QVERIFY(data.addPulses({}, 0, pos));
    QVERIFY(data.addPulsesJoin({{5, 1}}, 2, pos, true));
    QVERIFY(data.addPulsesJoin({}, 0, pos, true));
    QCOMPARE(pos, std::int64_t(8));
    QVERIFY(data.addPulsesJoin({{5, 1}}, 1, pos, true)); // a channel that is not captured has no entries
    QCOMPARE(pos, std::int64_t(14));
    QVERIFY(data.addPulsesJoin({{5}}, 0, pos, true)); // nothing to lengthen yet
    SmpWriter(data).setSmpCount(100);
    data.finish(100);
    QCOMPARE(captures::entries(data, 0), (Positions{100}));
}

void TstSmpDataDecode::pulsesBeyond40BitsAreNeverStored()
{
    SmpData data(1, 0);
    data.begin(0, 1, smpStreams::enabled(1));
    std::int64_t pos = maxPosition - 3;
    QVERIFY(data.addPulses({{2, 1, 1, 500}}, 0, pos));
    QVERIFY(data.addPulsesJoin({{3, 3}}, 0, pos, true));
    SmpWriter(data).setSmpCount(pos);
    data.finish(pos);
    QCOMPARE(captures::entries(data, 0), (Positions{maxPosition - 1, maxPosition}));
}

void TstSmpDataDecode::joinedPulsesLengthenTheLastRun()
{
    SmpData data(1, 0);
    data.begin(0, 1, smpStreams::enabled(1));
    std::int64_t pos = 0;
    QVERIFY(data.addPulses({{10, 10}}, 0, pos));
    QVERIFY(data.addPulsesJoin({{5, 7}}, 0, pos, true));
    QCOMPARE(pos, std::int64_t(32));
    QVERIFY(data.addPulsesJoin({{3}}, 0, pos, false));
    SmpWriter(data).setSmpCount(100);
    data.finish(100);
    QCOMPARE(captures::entries(data, 0), (Positions{10, 25, 32, 35, 100}));
}

void TstSmpDataDecode::joinedPulsesAtTheStartAreNotJoined()
{
    SmpData data(1, 0);
    data.begin(0, 1, smpStreams::enabled(1));
    std::int64_t pos = 0;
    QVERIFY(data.addPulsesJoin({{5, 7}}, 0, pos, true));
    SmpWriter(data).setSmpCount(100);
    data.finish(100);
    QCOMPARE(captures::entries(data, 0), (Positions{5, 12, 100}));
}

void TstSmpDataDecode::pulsesStopAtAFullLeafWhenTheBudgetIsSpent()
{
    SmpData data(1, 0);
    data.begin(0, 1, smpStreams::enabled(1));
    memBudget = 0;
    std::int64_t pos = 0;
    QVERIFY(!data.addPulses(std::vector<std::int32_t>(30000, 2), 0, pos));
    QCOMPARE(pos, std::int64_t(20481 * 2));
}

QTEST_APPLESS_MAIN(TstSmpDataDecode)
#include "tst_SmpDataDecode.moc"
