#include "NaiveTrigger.h"
#include "SmpStreams.h"
#include "store/SmpTrigBytes8.h"

#include <QtTest>

using naiveTrigger::Random;
using smpStreams::Bytes;
using Codes = std::vector<std::int32_t>;
using Masks = SmpTrigBytes8::Masks;

namespace {

/// The rule byte by byte.
std::int64_t find(const Bytes &stream, const Masks &masks)
{
    std::uint32_t before = stream.empty() ? 0 : stream[0];
    for (std::size_t i = 0; i < stream.size(); ++i) {
        const std::uint32_t now = stream[i];
        const std::uint32_t a = now & masks.edge;
        const std::uint32_t b = before & masks.edge;
        const std::uint32_t wrong = a != b ? (before & (a ^ b)) ^ masks.fall : masks.edge;
        if (wrong == 0 && (now & masks.level) == masks.value) {
            return std::int64_t(i);
        }
        before = now;
    }
    return -1;
}

/// Feeds a stream in buffers of 1 to `most` bytes (all of it at once for 0).
std::int64_t scanInPieces(const Bytes &stream, const Masks &masks, std::size_t most, Random &random)
{
    SmpTrigBytes8 scanner;
    scanner.start(masks);
    std::size_t at = 0;
    while (at < stream.size()) {
        const std::size_t wanted = most == 0 ? stream.size() : 1 + random() % most;
        const std::size_t length = std::min(wanted, stream.size() - at);
        const Bytes buffer(stream.begin() + std::ptrdiff_t(at), stream.begin() + std::ptrdiff_t(at + length));
        if (const std::int64_t found = scanner.scan(buffer); found >= 0) {
            return std::int64_t(at) + found;
        }
        at += length;
    }
    return -1;
}

Bytes randomBytes(std::size_t count, std::uint32_t calm, Random &random)
{
    Bytes bytes;
    for (const std::uint32_t sample : naiveTrigger::samples(count, calm, random)) {
        bytes.push_back(std::uint8_t(sample));
    }
    return bytes;
}

} // namespace

class TstSmpTrigBytes8 : public QObject {
    Q_OBJECT
private slots:
    void codesBecomeMasks();
    void theFirstMatchingSampleIsFoundWhateverTheCodesAndTheCuts();
    void withAnEdgeOfOneChannelTheRuleIsThatOfAllOtherModels();
    void severalEdgeChannelsMustFallExactlyAsAsked();
    void withoutACodeTheFirstSampleMatches();
    void theFirstSampleIsNoEdge();
    void anEdgeAcrossTwoBuffersIsOne();
    void aNewStartForgetsTheLastStream();
    void anEmptyBufferChangesNothing();
};

void TstSmpTrigBytes8::codesBecomeMasks()
{
    QVERIFY(SmpTrigBytes8::masksOf(Codes{0, 1, 2, 3, 4, -1, 5, 2}) == (Masks{0x18, 0x10, 0x86, 0x84}));
    QVERIFY(SmpTrigBytes8::masksOf({}) == Masks{});
    QVERIFY(SmpTrigBytes8::masksOf(Codes(40, 1)).level == 0xFFFFFFFF);
}

void TstSmpTrigBytes8::theFirstMatchingSampleIsFoundWhateverTheCodesAndTheCuts()
{
    Random random(17);
    int found = 0;
    constexpr int rounds = 1500;
    for (int round = 0; round < rounds; ++round) {
        Codes codes(8, 0);
        for (std::uint32_t asking = 1 + random() % 3; asking > 0; --asking) {
            codes[random() % 8] = std::int32_t(random() % 7) - 1;
        }
        const Masks masks = SmpTrigBytes8::masksOf(codes);
        const Bytes stream = randomBytes(1 + random() % 200, 1 + random() % 100, random);
        const std::int64_t want = find(stream, masks);
        found += want > 0 ? 1 : 0;
        for (const std::size_t most : {0, 1, 3, 8, 20, 90}) {
            QCOMPARE(scanInPieces(stream, masks, most, random), want);
        }
    }
    QVERIFY(found > rounds / 10);
}

void TstSmpTrigBytes8::withAnEdgeOfOneChannelTheRuleIsThatOfAllOtherModels()
{
    Random random(5);
    for (int round = 0; round < 200; ++round) {
        Codes codes;
        for (int chn = 0; chn < 8; ++chn) {
            codes.push_back(random() % 4 == 0 ? std::int32_t(1 + random() % 2) : 0);
        }
        codes[random() % 8] = std::int32_t(3 + random() % 2);
        const auto samples = naiveTrigger::samples(300, 10, random);
        Bytes stream;
        for (const std::uint32_t sample : samples) {
            stream.push_back(std::uint8_t(sample));
        }
        const std::int64_t want = naiveTrigger::find(samples, naiveTrigger::firstChns(8), codes);
        QCOMPARE(scanInPieces(stream, SmpTrigBytes8::masksOf(codes), 50, random), want);
    }
}

void TstSmpTrigBytes8::severalEdgeChannelsMustFallExactlyAsAsked()
{
    // Channel 0 is to rise or channel 1 to fall; channel 1 must fall whenever one of them moves.
    Random random(1);
    const Masks masks{0x03, 0x02, 0, 0};
    QCOMPARE(scanInPieces(Bytes{0x02, 0x03, 0x03, 0x01}, masks, 0, random), std::int64_t(3));
    QCOMPARE(scanInPieces(Bytes{0x02, 0x01}, masks, 0, random), std::int64_t(1));
    QCOMPARE(scanInPieces(Bytes{0x03, 0x00}, masks, 0, random), std::int64_t(-1));
    QCOMPARE(find(Bytes{0x03, 0x00}, masks), std::int64_t(-1));
}

void TstSmpTrigBytes8::withoutACodeTheFirstSampleMatches()
{
    SmpTrigBytes8 scanner;
    scanner.start({});
    QCOMPARE(scanner.scan(Bytes{0x5A}), std::int64_t(0));
}

void TstSmpTrigBytes8::theFirstSampleIsNoEdge()
{
    SmpTrigBytes8 scanner;
    scanner.start({0x80, 0, 0, 0});
    QCOMPARE(scanner.scan(Bytes(100, 0xFF)), std::int64_t(-1));
    scanner.start({0x80, 0x80, 0, 0});
    QCOMPARE(scanner.scan(Bytes(100, 0x00)), std::int64_t(-1));
}

void TstSmpTrigBytes8::anEdgeAcrossTwoBuffersIsOne()
{
    SmpTrigBytes8 scanner;
    scanner.start({0x01, 0x01, 0, 0});
    QCOMPARE(scanner.scan(Bytes(16, 0xFF)), std::int64_t(-1));
    QCOMPARE(scanner.scan(Bytes(1, 0xFE)), std::int64_t(0));
}

void TstSmpTrigBytes8::aNewStartForgetsTheLastStream()
{
    SmpTrigBytes8 scanner;
    scanner.start({0x01, 0, 0, 0});
    QCOMPARE(scanner.scan(Bytes(3, 0x00)), std::int64_t(-1));
    scanner.start({0x01, 0, 0, 0});
    QCOMPARE(scanner.scan(Bytes(30, 0x01)), std::int64_t(-1));
}

void TstSmpTrigBytes8::anEmptyBufferChangesNothing()
{
    SmpTrigBytes8 scanner;
    scanner.start({0x01, 0, 0, 0});
    QCOMPARE(scanner.scan({}), std::int64_t(-1));
    QCOMPARE(scanner.scan(Bytes{0x01}), std::int64_t(-1)); // still the first sample
    QCOMPARE(scanner.scan({}), std::int64_t(-1));
    QCOMPARE(scanner.scan(Bytes{0x00, 0x01}), std::int64_t(1));
}

QTEST_APPLESS_MAIN(TstSmpTrigBytes8)
#include "tst_SmpTrigBytes8.moc"
