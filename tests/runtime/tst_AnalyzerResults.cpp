#include "runtime/ReaderDesk.h"

#include <QtTest>

#include <algorithm>
#include <array>
#include <numeric>
#include <random>
#include <span>
#include <vector>

using readerDesk::decode;
using readerDesk::ScriptDecoder;
using readerDesk::ScriptResults;

class TstAnalyzerResults : public QObject {
    Q_OBJECT
private slots:
    void rangeQueriesAgreeWithANaiveSearch_data();
    void rangeQueriesAgreeWithANaiveSearch();
    void aRangeBehindTheLastFrameHoldsNone();
    void aFrameTouchesARangeByTheRuleOfItsEnds();
    void aLongFrameBeforeManyShortOnesIsFound();
    void framesThatComeTooLateOrReachOutAreTidiedAndTold();
    void anOpenFrameHoldsBackWhatFollowsUntilItIsFilled();
    void aDroppedPlaceClosesUp();
    void whatIsOpenAtTheEndIsDropped();
    void markersAreFoundInclusiveAndPerChannel();
    void markersAreTheSameHoweverFarApartAndOfAnyType();
    void manyMarkersAtOnceAreAsOneByOne();
    void markersOutOfOrderSinceTheLastFrameAreSorted();
    void payloadsOfEverySizeComeBackWhole();
    void wordsThatAreNoPayloadGiveNothing();
    void textsAndValuesComeFromOneDescription();
    void aFrameThatDoesNotExistIsEmptyEverywhere();
    void theFirstFaultOfATextIsKept();
    void aFrameTakesAtMost48BytesAndAMarker24();
    void memoryOfEarlierResultsHoldsLaterOnes();
};

namespace {

constexpr std::int64_t length = std::int64_t(1) << 36;

/// Runs `script` with the results of a decode of an empty, long capture.
std::unique_ptr<DecodeDesk> withResults(const std::function<void(ScriptResults &)> &script,
                                        std::int64_t samples = length)
{
    TestCapture capture(1000000, samples);
    return decode(capture, [&script](ScriptDecoder &decoder) { script(decoder.out()); });
}

FrameData frameOf(std::int64_t first, std::int64_t last, std::uint64_t data = 0)
{
    FrameData frame;
    frame.firstSample = first;
    frame.lastSample = last;
    frame.data = data;
    return frame;
}

} // namespace

void TstAnalyzerResults::rangeQueriesAgreeWithANaiveSearch_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("gap");
    QTest::addColumn<int>("width");
    QTest::newRow("none") << 0 << 1 << 1;
    QTest::newRow("one") << 1 << 10 << 5;
    QTest::newRow("less than a group") << 31 << 10 << 5;
    QTest::newRow("a group") << 32 << 10 << 5;
    QTest::newRow("groups and a rest") << 1500 << 10 << 5;
    QTest::newRow("a full second level and a rest") << 33000 << 10 << 5;
    QTest::newRow("overlapping") << 5000 << 10 << 300;
    QTest::newRow("nested deeply") << 5000 << 2 << 20000;
    QTest::newRow("at the same sample") << 3000 << 1 << 4;
}

void TstAnalyzerResults::rangeQueriesAgreeWithANaiveSearch()
{
    QFETCH(int, count);
    QFETCH(int, gap);
    QFETCH(int, width);
    std::mt19937 random(11);
    std::vector<FrameData> frames;
    std::int64_t at = 5;
    for (int i = 0; i < count; ++i) {
        at += std::int64_t(random() % std::uint32_t(gap + 1));
        frames.push_back(frameOf(at, at + std::int64_t(random() % std::uint32_t(width))));
    }
    const auto desk = withResults([&frames](ScriptResults &out) {
        for (const FrameData &frame : frames)
            out.add(frame);
    });
    const AnalyzerResults &results = desk->results();
    QCOMPARE(results.GetNumFrames(), std::uint64_t(count));
    for (int query = 0; query < 500; ++query) {
        const auto past = std::int64_t(random() % std::uint32_t(at + 20)) - 5;
        const std::int64_t upTo = past + std::int64_t(random() % std::uint32_t(query % 2 == 0 ? 40 : at + 10));
        const auto in = [past, upTo](const FrameData &f) { return f.lastSample > past && f.firstSample <= upTo; };
        const auto first = std::find_if(frames.begin(), frames.end(), in);
        const auto last = std::find_if(frames.rbegin(), frames.rend(), in);
        std::uint64_t foundFirst = 7777777;
        std::uint64_t foundLast = 7777777;
        QCOMPARE(results.GetFramesInRange(past, upTo, &foundFirst, &foundLast), first != frames.end());
        if (first == frames.end()) {
            QCOMPARE(foundFirst, std::uint64_t(7777777));
            continue;
        }
        QCOMPARE(foundFirst, std::uint64_t(first - frames.begin()));
        QCOMPARE(foundLast, std::uint64_t(frames.rend() - last - 1));
    }
}

void TstAnalyzerResults::aRangeBehindTheLastFrameHoldsNone()
{
    const auto desk = withResults([](ScriptResults &out) { out.add(frameOf(10, 20)); });
    std::uint64_t first = 9;
    std::uint64_t last = 9;
    QVERIFY(!desk->results().GetFramesInRange(20, 1000, &first, &last));
    QVERIFY(!desk->results().GetFramesInRange(0, 9, &first, &last));
    QCOMPARE(first, std::uint64_t(9)); // they are left as they are
    QCOMPARE(last, std::uint64_t(9));
}

void TstAnalyzerResults::aFrameTouchesARangeByTheRuleOfItsEnds()
{
    const auto desk = withResults([](ScriptResults &out) { out.add(frameOf(10, 20)); });
    std::uint64_t first = 9;
    std::uint64_t last = 9;
    QVERIFY(desk->results().GetFramesInRange(19, 19, &first, &last));
    QCOMPARE(first, std::uint64_t(0));
    QCOMPARE(last, std::uint64_t(0));
    QVERIFY(desk->results().GetFramesInRange(-5, 10, &first, &last));
}

void TstAnalyzerResults::aLongFrameBeforeManyShortOnesIsFound()
{
    constexpr std::int64_t count = 70000;
    const auto desk = withResults([](ScriptResults &out) {
        out.add(frameOf(0, 10 * count));
        for (std::int64_t i = 1; i < count; ++i)
            out.add(frameOf(i, i));
    });
    std::uint64_t first = 9;
    std::uint64_t last = 9;
    QVERIFY(desk->results().GetFramesInRange(5 * count, 6 * count, &first, &last));
    QCOMPARE(first, std::uint64_t(0));
    QCOMPARE(last, std::uint64_t(0));
}

void TstAnalyzerResults::framesThatComeTooLateOrReachOutAreTidiedAndTold()
{
    const auto desk = withResults(
        [](ScriptResults &out) {
            out.add(frameOf(100, 110));
            out.add(frameOf(50, 60));
            out.add(frameOf(120, 115));
            out.add(frameOf(900, 5000));
            out.mark(Channel(0, 0), -5, MarkerType::X);
        },
        1000);
    const AnalyzerResults &results = desk->results();
    QCOMPARE(results.GetFrame(1).firstSample, 100);
    QCOMPARE(results.GetFrame(1).lastSample, 100);
    QCOMPARE(results.GetFrame(2).lastSample, 120);
    QCOMPARE(results.GetFrame(3).lastSample, 999);
    QCOMPARE(desk->markers(0).at(0).sample, std::uint64_t(0));
    QCOMPARE(desk->message(), std::string("2 frames or markers reached out of the capture and were cut.\n1 frames or "
                                          "markers were not in the order of time."));
}

void TstAnalyzerResults::anOpenFrameHoldsBackWhatFollowsUntilItIsFilled()
{
    const auto desk = withResults([](ScriptResults &out) {
        out.add(frameOf(1, 2, 1));
        const std::uint64_t outer = out.open(10);
        const std::uint64_t inner = out.open(11);
        out.add(frameOf(12, 13, 4));
        QCOMPARE(out.frameCount(), std::uint64_t(1));
        out.fill(inner, frameOf(11, 20, 3));
        QCOMPARE(out.frameCount(), std::uint64_t(1));
        out.fill(outer, frameOf(0, 30, 2)); // its first sample is that of open()
        QCOMPARE(out.frameCount(), std::uint64_t(4));
        out.fill(outer, frameOf(0, 99, 9)); // no longer open
        out.add(frameOf(40, 41, 5));
        out.fill(out.open(50), frameOf(0, 45, 6)); // it cannot end before it begins
    });
    QCOMPARE(desk->results().GetNumFrames(), std::uint64_t(6));
    QCOMPARE(desk->results().GetFrame(5).lastSample, 50);
    for (std::uint64_t i = 0; i < 6; ++i)
        QCOMPARE(desk->results().GetFrame(i).data, i + 1);
    QCOMPARE(desk->results().GetFrame(1).firstSample, 10);
    QCOMPARE(desk->results().GetFrame(1).lastSample, 30);
}

void TstAnalyzerResults::aDroppedPlaceClosesUp()
{
    const auto desk = withResults([](ScriptResults &out) {
        const std::uint64_t first = out.open(10);
        out.add(frameOf(11, 11, 0));
        const std::uint64_t second = out.open(12);
        for (int i = 1; i < 3000; ++i)
            out.add(frameOf(12 + i, 12 + i, std::uint64_t(i + 1)));
        out.drop(first);
        QCOMPARE(out.frameCount(), std::uint64_t(1));
        out.fill(second, frameOf(12, 9000, 1));
    });
    QCOMPARE(desk->results().GetNumFrames(), std::uint64_t(3001));
    for (std::uint64_t i = 0; i < 3001; ++i)
        QCOMPARE(desk->results().GetFrame(i).data, i);
}

void TstAnalyzerResults::whatIsOpenAtTheEndIsDropped()
{
    const auto desk = withResults([](ScriptResults &out) {
        out.add(frameOf(1, 1, 0));
        (void)out.open(2);
        out.add(frameOf(3, 3, 1));
        (void)out.open(4);
    });
    QCOMPARE(desk->results().GetNumFrames(), std::uint64_t(2));
    QCOMPARE(desk->results().GetFrame(1).data, std::uint64_t(1));
}

void TstAnalyzerResults::markersAreFoundInclusiveAndPerChannel()
{
    const Channel three(0, 3);
    const auto desk = withResults([&three](ScriptResults &out) {
        out.showBubblesOn(Channel(0, 5));
        for (int i = 0; i < 3000; ++i)
            out.mark(three, 10 * i, i % 2 == 0 ? MarkerType::Zero : MarkerType::ErrorX);
        out.mark(Channel(), 5, MarkerType::Dot); // of a line that is not connected
    });
    const AnalyzerResults &results = desk->results();
    QVERIFY(results.DoMarkersAppearOnChannel(three));
    QVERIFY(!results.DoMarkersAppearOnChannel(Channel(0, 4)));
    QVERIFY(results.DoBubblesAppearOnChannel(Channel(0, 5)));
    QVERIFY(!results.DoBubblesAppearOnChannel(three));
    QVERIFY(!results.DoBubblesAppearOnChannel(Channel()));
    QCOMPARE(results.GetNumMarkers(three), std::uint64_t(3000));
    QCOMPARE(results.GetMarker(three, 7).sample, std::uint64_t(70));
    QCOMPARE(results.GetMarker(three, 7).type, MarkerType::ErrorX);
    std::uint64_t first = 0;
    std::uint64_t last = 0;
    QVERIFY(results.GetMarkersInRange(three, 10, 30, &first, &last));
    QCOMPARE(first, std::uint64_t(1));
    QCOMPARE(last, std::uint64_t(3));
    QVERIFY(!results.GetMarkersInRange(three, 11, 19, &first, &last));
    QVERIFY(!results.GetMarkersInRange(three, 29991, length, &first, &last));
    QVERIFY(results.GetMarkersInRange(three, -9, 0, &first, &last));
    QCOMPARE(last, std::uint64_t(0));
    QVERIFY(!results.GetMarkersInRange(Channel(), 0, length, &first, &last));
}

/// Groups of 64 hold words of 32 bits as long as they can; frames between publish a part of a group.
void TstAnalyzerResults::markersAreTheSameHoweverFarApartAndOfAnyType()
{
    constexpr std::int64_t samples = std::int64_t(1) << 40;
    std::mt19937_64 random(5);
    std::vector<Marker> expected;
    std::int64_t at = 0;
    const auto desk = withResults(
        [&](ScriptResults &out) {
            for (int i = 0; i < 20000; ++i) {
                const bool isFar = random() % 150 == 0;
                at += std::int64_t(random() % (isFar ? 1000000000U : 200U));
                const auto type = MarkerType(random() % 400 == 0 ? 200 : random() % 12);
                expected.push_back({std::uint64_t(at), type});
                out.mark(Channel(0, 1), at, type);
                if (random() % 9 == 0)
                    out.add(frameOf(at, at));
            }
        },
        samples);
    const AnalyzerResults &results = desk->results();
    const Channel line(0, 1);
    QCOMPARE(results.GetNumMarkers(line), std::uint64_t(expected.size()));
    for (std::size_t i = 0; i < expected.size(); ++i) {
        QCOMPARE(results.GetMarker(line, i).sample, expected[i].sample);
        QCOMPARE(results.GetMarker(line, i).type, expected[i].type);
    }
    for (int query = 0; query < 2000; ++query) {
        const std::uint64_t from = expected[random() % expected.size()].sample + random() % 3 - 1;
        const std::uint64_t to = from + random() % 100000;
        const auto isBefore = [](const Marker &marker, std::uint64_t sample) { return marker.sample < sample; };
        const auto first = std::lower_bound(expected.begin(), expected.end(), from, isBefore);
        const auto behind = std::lower_bound(expected.begin(), expected.end(), to + 1, isBefore);
        std::uint64_t foundFirst = 0;
        std::uint64_t foundLast = 0;
        QCOMPARE(results.GetMarkersInRange(line, std::int64_t(from), std::int64_t(to), &foundFirst, &foundLast),
                 first != behind);
        if (first != behind) {
            QCOMPARE(foundFirst, std::uint64_t(first - expected.begin()));
            QCOMPARE(foundLast + 1, std::uint64_t(behind - expected.begin()));
        }
    }
}

void TstAnalyzerResults::manyMarkersAtOnceAreAsOneByOne()
{
    std::vector<std::int64_t> samples;
    for (std::int64_t i = 0; i < 10000; ++i)
        samples.push_back(i * 7 % 5000 + i); // some come too early
    const auto desk = withResults([&samples](ScriptResults &out) {
        out.mark(Channel(0, 0), samples, MarkerType::One);
        out.mark(Channel(), samples, MarkerType::One);
        out.mark(Channel(0, 2), std::span<const std::int64_t>(), MarkerType::One);
        for (const std::int64_t sample : samples)
            out.mark(Channel(0, 1), sample, MarkerType::One);
    });
    const std::vector<Marker> many = desk->markers(0);
    const std::vector<Marker> single = desk->markers(1);
    QCOMPARE(many.size(), samples.size());
    QCOMPARE(desk->results().GetNumMarkers(Channel(0, 2)), std::uint64_t(0));
    for (std::size_t i = 0; i < many.size(); ++i)
        QCOMPARE(many[i].sample, single[i].sample);
    QVERIFY(
        std::is_sorted(many.begin(), many.end(), [](const Marker &a, const Marker &b) { return a.sample < b.sample; }));
}

void TstAnalyzerResults::markersOutOfOrderSinceTheLastFrameAreSorted()
{
    const auto desk = withResults([](ScriptResults &out) {
        const Channel line(0, 0);
        out.mark(line, 30, MarkerType::Dot);
        out.mark(line, 10, MarkerType::X);
        out.mark(line, 20, MarkerType::Start);
        out.add(frameOf(5, 40));
        out.mark(line, 15, MarkerType::Stop); // too late
    });
    std::vector<std::uint64_t> samples;
    for (const Marker &marker : desk->markers(0))
        samples.push_back(marker.sample);
    QCOMPARE(samples, (std::vector<std::uint64_t>{10, 20, 30, 30}));
    QCOMPARE(desk->markers(0)[0].type, MarkerType::X);
    QVERIFY(!desk->message().empty());
}

void TstAnalyzerResults::payloadsOfEverySizeComeBackWhole()
{
    std::vector<std::vector<std::uint8_t>> payloads;
    std::mt19937 random(5);
    for (const std::size_t size : {1U, 0U, 65535U, 1U, 65536U, 65537U, 300000U, 7U, 16777215U, 20000U, 60000U}) {
        std::vector<std::uint8_t> bytes(size);
        for (std::uint8_t &byte : bytes)
            byte = std::uint8_t(random());
        payloads.push_back(bytes);
    }
    const auto desk = withResults([&payloads](ScriptResults &out) {
        for (const auto &bytes : payloads)
            out.add(frameOf(1, 1, out.keep(bytes)));
    });
    for (std::size_t i = 0; i < payloads.size(); ++i) {
        std::size_t size = 99;
        const std::uint8_t *bytes = desk->results().GetPayload(desk->results().GetFrame(i).data, &size);
        QCOMPARE(size, payloads[i].size());
        QVERIFY(std::equal(payloads[i].begin(), payloads[i].end(), bytes));
    }
}

void TstAnalyzerResults::wordsThatAreNoPayloadGiveNothing()
{
    const auto desk = withResults([](ScriptResults &out) { (void)out.keep(std::array<std::uint8_t, 3>{1, 2, 3}); });
    std::size_t size = 9;
    for (const std::uint64_t word :
         {std::uint64_t(0), ~std::uint64_t(0), std::uint64_t(5) << 40, std::uint64_t(65537)}) {
        QVERIFY(desk->results().GetPayload(word, &size) == nullptr);
        QCOMPARE(size, std::size_t(0));
    }
}

void TstAnalyzerResults::textsAndValuesComeFromOneDescription()
{
    const auto desk = withResults([](ScriptResults &out) { out.add(frameOf(1, 2, 0x41)); });
    QCOMPARE(desk->frame(0).text, std::string("Frame 0x41"));
    QCOMPARE(desk->frame(0, DisplayBase::Ascii).text, std::string("Frame 'A'"));
    QCOMPARE(desk->frame(0).summary(), std::string("frame v=65"));
    QCOMPARE(desk->bubble(0, Channel(0, 0), DisplayBase::Decimal), (std::vector<std::string>{"F", "Frame 65"}));
}

void TstAnalyzerResults::aFrameThatDoesNotExistIsEmptyEverywhere()
{
    const auto desk = withResults([](ScriptResults &) {});
    QCOMPARE(desk->results().GetFrame(0).lastSample, 0);
    QCOMPARE(desk->frame(0).text, std::string());
    QCOMPARE(desk->frame(5).summary(), std::string());
    QVERIFY(desk->bubble(0, Channel(0, 0), DisplayBase::Binary).empty());
    QCOMPARE(desk->results().GetMarker(Channel(0, 0), 3).sample, std::uint64_t(0));
}

void TstAnalyzerResults::theFirstFaultOfATextIsKept()
{
    const auto desk = withResults([](ScriptResults &out) { out.add(frameOf(10, 20)); });
    AnalyzerResults &results = desk->results();
    char text[6] = "text";
    QCOMPARE(results.GetTextFault(text, sizeof text), std::size_t(0));
    QCOMPARE(std::string(text), std::string());
    results.KeepTextFault("number");
    results.KeepTextFault("another");
    QCOMPARE(results.GetTextFault(text, sizeof text), std::size_t(6));
    QCOMPARE(std::string(text), std::string("numbe"));
}

void TstAnalyzerResults::aFrameTakesAtMost48BytesAndAMarker24()
{
    constexpr std::int64_t count = 1000000;
    std::atomic<std::int64_t> left{std::int64_t(1) << 40};
    SetAnalyzerMemoryBudget(&left);
    const std::int64_t before = left.load();
    {
        const auto desk = withResults([](ScriptResults &out) {
            for (std::int64_t i = 0; i < count; ++i)
                out.add(frameOf(i, i));
        });
        const std::int64_t frames = before - left.load();
        QVERIFY2(frames >= 40 * count && frames <= 48 * count, std::to_string(frames).c_str());
    }
    {
        const auto desk = withResults([](ScriptResults &out) {
            for (std::int64_t i = 0; i < count; ++i)
                out.mark(Channel(0, 0), i, MarkerType::Dot);
        });
        const std::int64_t markers = before - left.load();
        QVERIFY2(markers >= 4 * count && markers <= 5 * count, std::to_string(markers).c_str());
    }
    {
        constexpr std::int64_t few = count / 4;
        constexpr std::int64_t far = std::int64_t(1) << 22; // too far for words of 32 bits
        const auto desk = withResults(
            [](ScriptResults &out) {
                for (std::int64_t i = 0; i < few; ++i)
                    out.mark(Channel(0, 0), far * i, MarkerType::Dot);
            },
            far * few);
        const std::int64_t markers = before - left.load();
        QVERIFY2(markers >= 8 * few && markers <= 24 * few, std::to_string(markers).c_str());
    }
    QCOMPARE(left.load(), before);
    SetAnalyzerMemoryBudget(nullptr);
}

void TstAnalyzerResults::memoryOfEarlierResultsHoldsLaterOnes()
{
    constexpr std::int64_t count = 900000; // a slab of those that are kept, and many smaller ones
    for (const std::int64_t step : {7, 3}) {
        const auto desk = withResults(
            [step](ScriptResults &out) {
                for (std::int64_t i = 0; i < count; ++i) {
                    out.mark(Channel(0, 0), step * i + 1, MarkerType::Dot);
                    out.add({.firstSample = step * i, .lastSample = step * i + 1, .data = std::uint64_t(step)});
                }
            },
            step * count + 2);
        const AnalyzerResults &results = desk->results();
        QCOMPARE(results.GetNumFrames(), std::uint64_t(count));
        bool isAsAdded = true;
        for (std::int64_t i = 0; i < count; ++i) {
            const Frame frame = results.GetFrame(std::uint64_t(i));
            isAsAdded = isAsAdded && frame.firstSample == step * i && frame.data == std::uint64_t(step) &&
                        results.GetMarker(Channel(0, 0), std::uint64_t(i)).sample == std::uint64_t(step * i + 1);
        }
        QVERIFY(isAsAdded);
    }
}

QTEST_APPLESS_MAIN(TstAnalyzerResults)
#include "tst_AnalyzerResults.moc"
