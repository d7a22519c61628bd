#include "NaiveTrigger.h"
#include "SmpStreams.h"
#include "store/SmpTrigSliced.h"

#include <QtTest>

using naiveTrigger::firstChns;
using naiveTrigger::Random;
using smpStreams::Bytes;
using Codes = std::vector<std::int32_t>;

namespace {

constexpr int groupSamples = SmpTrigSliced::groupSamples;

/// Feeds a stream in buffers of 1 to `mostWords` words (all of it at once for 0).
/// @return the trigger's sample in the stream, -1 for none
std::int64_t scanInPieces(const Bytes &stream, const Codes &codes, std::size_t mostWords, Random &random)
{
    SmpTrigSliced scanner;
    scanner.start(codes);
    std::size_t at = 0;
    while (at < stream.size()) {
        const std::size_t words = mostWords == 0 ? stream.size() / 2 : 1 + random() % mostWords;
        const std::size_t length = std::min(words * 2, stream.size() - at);
        // A copy of exactly these bytes, so that a read beyond them is found out.
        const Bytes buffer(stream.begin() + std::ptrdiff_t(at), stream.begin() + std::ptrdiff_t(at + length));
        if (const std::int64_t found = scanner.scan(buffer); found >= 0) {
            return std::int64_t(at / (codes.size() * 2)) * groupSamples + found;
        }
        at += length;
    }
    return -1;
}

/// Codes that a stream of random samples does match somewhere: few of many channels ask for anything.
Codes randomCodes(int chns, Random &random)
{
    Codes codes(std::size_t(chns), 0);
    const int asking = 1 + int(random() % 4);
    for (int i = 0; i < asking; ++i) {
        codes[random() % codes.size()] = std::int32_t(random() % 7) - 1; // -1 and 5 ask for nothing
    }
    return codes;
}

} // namespace

class TstSmpTrigSliced : public QObject {
    Q_OBJECT
private slots:
    void theFirstMatchingSampleIsFoundWhateverTheChannelsAndTheCuts_data();
    void theFirstMatchingSampleIsFoundWhateverTheChannelsAndTheCuts();
    void everyMixOfCodesOfUpToFourChannelsFindsItsSample_data();
    void everyMixOfCodesOfUpToFourChannelsFindsItsSample();
    void withoutACodeTheFirstSampleMatches();
    void theFirstSampleIsNoEdge_data();
    void theFirstSampleIsNoEdge();
    void anEdgeAcrossTwoGroupsAndTwoBuffersIsOne();
    void aGroupCutByABufferCountsAsTheFirstOfTheLater();
    void aTriggerInTheLastSampleIsFound();
    void aNewStartForgetsTheLastStream();
    void halfAWordAtTheEndIsPassedOver();
    void noChannelsMatchAtOnce();
    void anEmptyBufferChangesNothing();
};

void TstSmpTrigSliced::theFirstMatchingSampleIsFoundWhateverTheChannelsAndTheCuts_data()
{
    QTest::addColumn<int>("chns");
    for (int chns = 1; chns <= 16; ++chns) {
        QTest::addRow("%d channels", chns) << chns;
    }
    QTest::newRow("32 channels") << 32;
}

void TstSmpTrigSliced::theFirstMatchingSampleIsFoundWhateverTheChannelsAndTheCuts()
{
    QFETCH(int, chns);
    Random random(chns * 7919);
    int found = 0;
    constexpr int rounds = 60;
    for (int round = 0; round < rounds; ++round) {
        const auto samples = naiveTrigger::samples(groupSamples * (1 + random() % 60), 1 + random() % 300, random);
        const Bytes stream = smpStreams::sliced(samples, firstChns(chns));
        const Codes codes = randomCodes(chns, random);
        const std::int64_t want = naiveTrigger::find(samples, firstChns(chns), codes);
        found += want >= groupSamples ? 1 : 0;
        for (const std::size_t mostWords : {0, 1, 2, 3, 17, 100, 700}) {
            QCOMPARE(scanInPieces(stream, codes, mostWords, random), want);
        }
    }
    QVERIFY(found > rounds / 10); // else the streams try nothing
}

void TstSmpTrigSliced::everyMixOfCodesOfUpToFourChannelsFindsItsSample_data()
{
    QTest::addColumn<int>("chns");
    for (int chns = 1; chns <= 4; ++chns) {
        QTest::addRow("%d channels", chns) << chns;
    }
}

void TstSmpTrigSliced::everyMixOfCodesOfUpToFourChannelsFindsItsSample()
{
    QFETCH(int, chns);
    constexpr int codeCount = 5;
    Random random(chns);
    int mixes = 1;
    for (int i = 0; i < chns; ++i) {
        mixes *= codeCount;
    }
    for (int mix = 0; mix < mixes; ++mix) {
        Codes codes;
        for (int left = mix; codes.size() < std::size_t(chns); left /= codeCount) {
            codes.push_back(left % codeCount);
        }
        const auto samples = naiveTrigger::samples(groupSamples * 40, 20, random);
        const Bytes stream = smpStreams::sliced(samples, firstChns(chns));
        const std::int64_t want = naiveTrigger::find(samples, firstChns(chns), codes);
        QCOMPARE(scanInPieces(stream, codes, 0, random), want);
        QCOMPARE(scanInPieces(stream, codes, 9, random), want);
    }
}

void TstSmpTrigSliced::withoutACodeTheFirstSampleMatches()
{
    SmpTrigSliced scanner;
    scanner.start(Codes(5, 0));
    QCOMPARE(scanner.scan(Bytes(8, 0)), std::int64_t(-1)); // four of five words: no group has ended
    QCOMPARE(scanner.scan(Bytes(2, 0)), std::int64_t(0));
}

void TstSmpTrigSliced::theFirstSampleIsNoEdge_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("word");
    QTest::addColumn<int>("want");
    QTest::newRow("high from the start, rising") << 3 << 0xFFFF << -1;
    QTest::newRow("low from the start, falling") << 4 << 0x0000 << -1;
    QTest::newRow("one sample high, falling") << 4 << 0x0001 << 1;
    QTest::newRow("one sample low, rising") << 3 << 0xFFFE << 1;
    QTest::newRow("rising at the last sample") << 3 << 0x8000 << 15;
}

void TstSmpTrigSliced::theFirstSampleIsNoEdge()
{
    QFETCH(int, code);
    QFETCH(int, word);
    QFETCH(int, want);
    SmpTrigSliced scanner;
    scanner.start(Codes{code});
    QCOMPARE(int(scanner.scan(Bytes{std::uint8_t(word), std::uint8_t(word >> 8)})), want);
}

void TstSmpTrigSliced::anEdgeAcrossTwoGroupsAndTwoBuffersIsOne()
{
    for (const std::int32_t code : {3, 4}) {
        const std::uint8_t before = code == 3 ? 0x00 : 0xFF;
        const auto after = std::uint8_t(~before);
        SmpTrigSliced scanner;
        scanner.start(Codes{0, code});
        QCOMPARE(scanner.scan(Bytes(40, before)), std::int64_t(-1));
        QCOMPARE(scanner.scan(Bytes{before, before, after, after}), std::int64_t(0));
    }
}

void TstSmpTrigSliced::aGroupCutByABufferCountsAsTheFirstOfTheLater()
{
    SmpTrigSliced scanner;
    scanner.start(Codes{2, 2, 0});
    // Three whole groups, and the first word of the fourth, which matches at sample 4 alone.
    Bytes first(18, 0x00);
    first.insert(first.end(), {0x10, 0x00});
    QCOMPARE(scanner.scan(first), std::int64_t(-1));
    QCOMPARE(scanner.scan(Bytes{0xFF, 0xFF, 0x00, 0x00}), std::int64_t(4));
}

void TstSmpTrigSliced::aTriggerInTheLastSampleIsFound()
{
    for (int chns = 1; chns <= 16; ++chns) {
        for (int groups = 1; groups < 12; ++groups) {
            Bytes stream(std::size_t(chns * groups * 2), 0x00);
            stream.back() = 0x80;
            Codes codes(std::size_t(chns), 0);
            codes.back() = smpTrigCode::risingEdge;
            SmpTrigSliced scanner;
            scanner.start(codes);
            QCOMPARE(scanner.scan(stream), std::int64_t(groups) * groupSamples - 1);
        }
    }
}

void TstSmpTrigSliced::aNewStartForgetsTheLastStream()
{
    SmpTrigSliced scanner;
    scanner.start(Codes{2, 3});
    QCOMPARE(scanner.scan(Bytes(6, 0x00)), std::int64_t(-1)); // in the midst of a group, all low
    scanner.start(Codes{0, 3});
    QCOMPARE(scanner.scan(Bytes(400, 0xFF)), std::int64_t(-1)); // high from its start: no edge
}

void TstSmpTrigSliced::halfAWordAtTheEndIsPassedOver()
{
    SmpTrigSliced scanner;
    scanner.start(Codes{2});
    QCOMPARE(scanner.scan(Bytes{0x00, 0x00, 0xFF}), std::int64_t(-1));
    QCOMPARE(scanner.scan(Bytes{0xFF}), std::int64_t(-1));
}

void TstSmpTrigSliced::noChannelsMatchAtOnce()
{
    SmpTrigSliced scanner;
    scanner.start({});
    QCOMPARE(scanner.scan({}), std::int64_t(-1));
    QCOMPARE(scanner.scan(Bytes(2, 0)), std::int64_t(0));
    scanner.start(Codes(100, 0)); // more than can take turns
    QCOMPARE(scanner.scan(Bytes(200, 0)), std::int64_t(0));
}

void TstSmpTrigSliced::anEmptyBufferChangesNothing()
{
    SmpTrigSliced scanner;
    scanner.start(Codes{3});
    QCOMPARE(scanner.scan({}), std::int64_t(-1));
    QCOMPARE(scanner.scan(Bytes{0xFF, 0xFF}), std::int64_t(-1)); // still the first group
    QCOMPARE(scanner.scan({}), std::int64_t(-1));
    QCOMPARE(scanner.scan(Bytes{0xFE, 0xFF}), std::int64_t(1));
}

QTEST_APPLESS_MAIN(TstSmpTrigSliced)
#include "tst_SmpTrigSliced.moc"
