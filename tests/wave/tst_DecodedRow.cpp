#include "wave/DecodedFake.h"
#include "wave/DecodedRow.h"

#include <QtTest>

#include <random>

namespace {

/// Each letter is 6 pixels wide.
int sixEach(const QString &text)
{
    return text.length() * 6;
}

DecodedView oneToOne(int width = 1000, std::int64_t samples = 100'000)
{
    return {0.0, 1.0, width, samples, PixelScale{96}};
}

std::vector<DecodedBubble> bubblesOf(const DecodedChannel &decoded, const DecodedView &view)
{
    BubbleTexts texts(sixEach);
    std::vector<DecodedBubble> out;
    addBubbles(decoded, view, texts, out);
    return out;
}

std::vector<DecodedMarker> markersOf(const DecodedChannel &decoded, const DecodedView &view)
{
    std::vector<DecodedMarker> out;
    addMarkers(decoded, view, out);
    return out;
}

std::vector<std::uint64_t> samplesOf(const std::vector<DecodedMarker> &markers)
{
    std::vector<std::uint64_t> samples;
    for (const DecodedMarker &marker : markers) {
        samples.push_back(marker.sample);
    }
    return samples;
}

/// The boxes as they are told, probe after probe: left and right column of each.
std::vector<std::pair<std::int64_t, std::int64_t>> toldBubbles(const DecodedFake &decoded, const DecodedView &view)
{
    std::vector<std::pair<std::int64_t, std::int64_t>> out;
    const int s = view.scale.s();
    const double step = std::max(view.ratio, 1.0);
    const double end = std::min(view.viewStart + view.width * view.ratio / s, double(view.smpCount));
    auto p = std::int64_t(view.viewStart);
    while (double(p) < end) {
        const auto n = std::int64_t(double(p) + step);
        std::uint64_t f = 0;
        std::uint64_t l = 0;
        const bool found = decoded.framesInRange(p, n, f, l);
        p = n;
        if (!found) {
            continue;
        }
        const DecodedSpan frame = decoded.frame(l);
        p = frame.last;
        if (l - f < 3 && double(frame.last - frame.first) / view.ratio >= s) {
            const auto column = [&](std::int64_t sample) {
                return std::int64_t((double(sample) - view.viewStart) / view.ratio) * s + s / 2;
            };
            out.emplace_back(column(frame.first), column(frame.last));
        }
    }
    return out;
}

/// The markers as they are told.
std::vector<std::uint64_t> toldMarkers(const DecodedFake &decoded, const DecodedView &view)
{
    std::vector<std::uint64_t> out;
    const double step = std::max(view.ratio, 1.0);
    const double end = std::min(view.viewStart + view.width * view.ratio / view.scale.s(), double(view.smpCount));
    const std::uint64_t total = decoded.markerCount();
    auto p = std::uint64_t(view.viewStart);
    bool crowded = false;
    while (double(p) <= end) {
        auto n = std::uint64_t(std::min(double(p) + step, end));
        std::uint64_t a = 0;
        std::uint64_t b = 0;
        if (decoded.markersInRange(std::int64_t(p), std::int64_t(n), a, b)) {
            const DecodedMarker marker = decoded.marker(b);
            const bool far = b + 1 < total && double(decoded.marker(b + 1).sample - marker.sample) >= view.ratio * 11.0;
            if (a != b) {
                crowded = !far;
            } else if (b + 1 < total) {
                if (far && !crowded) {
                    out.push_back(marker.sample);
                }
                crowded = !far;
            } else if (!crowded) {
                out.push_back(marker.sample);
            }
            n = std::max(n, marker.sample);
        }
        p = n + 1;
    }
    return out;
}

DecodedFake randomResults(unsigned seed)
{
    std::mt19937 random(seed);
    const auto upTo = [&random](int most) { return std::int64_t(random() % unsigned(most)); };
    const int dense = seed % 3 == 0 ? 3 : seed % 3 == 1 ? 40 : 900;
    DecodedFake decoded;
    for (std::int64_t at = upTo(50); at < 20'000; at += upTo(dense)) {
        const std::int64_t end = at + upTo(dense); // some last no time
        decoded.add(at, end);
        at = end + 1;
        if (upTo(20) == 0) {
            at += upTo(3000);
        }
    }
    std::uint64_t sample = 0;
    while (sample < 20'000) {
        sample += std::uint64_t(upTo(upTo(4) == 0 ? 2000 : dense));
        decoded.mark(sample, int(upTo(12)));
    }
    return decoded;
}

} // namespace

class TstDecodedRow : public QObject {
    Q_OBJECT
private slots:
    void framesStandWhereTheyAreDecoded();
    void framesNarrowerThanAPixelGetABoxAtAHigherZoomOnly();
    void pixelsInWhichManyFramesEndShowNone();
    void aTextThatJustFitsIsShown();
    void theWidestTextThatFitsIsShownAndTheFirstOfEquals();
    void aBoxWithoutAFittingTextIsEmptyOrShowsDots_data();
    void aBoxWithoutAFittingTextIsEmptyOrShowsDots();
    void aFrameWithoutTextsGetsNoBox();
    void textsAreAskedForOnlyWhereABoxCanHoldOne();
    void aNarrowFrameWithoutTextsOnThisChannelGetsNoBox();
    void aDecoderWithoutBubblesOnTheChannelIsNotSearched();
    void framesWithinALongerOneAreAllShown();
    void aLongerFrameStandsOnItsRowThoughOthersLieInIt_data();
    void aLongerFrameStandsOnItsRowThoughOthersLieInIt();
    void framesOfTwoLinesAtOnceAreAllShown();
    void aFrameWiderThanTheViewIsOneBoxAndOneProbe();
    void textsOfStrangePluginsDoNoHarm();
    void markersWithRoomAroundThemAreKept();
    void crowdedMarkersAreLeftOut();
    void severalMarkersInAPixelCrowdThoseBehind();
    void aDecoderWithoutMarkersOnTheChannelIsNotSearched();
    void aSampleWiderThanAPixelIsTestedByItself();
    void boxesAndMarkersAreThoseOfTheToldWalk_data();
    void boxesAndMarkersAreThoseOfTheToldWalk();
    void theQueriesFollowThePixels();
};

void TstDecodedRow::framesStandWhereTheyAreDecoded()
{
    DecodedFake decoded;
    decoded.add(100, 160, {"AB"});
    DecodedView view = oneToOne();
    view.viewStart = 50.0;
    view.ratio = 2.0;
    std::vector<DecodedBubble> out = bubblesOf(decoded, view);
    QCOMPARE(out.size(), std::size_t(1));
    QCOMPARE(out[0].x1, std::int64_t(25));
    QCOMPARE(out[0].x2, std::int64_t(55));
    QCOMPARE(out[0].text.text(), QStringLiteral("AB"));
    QCOMPARE(out[0].textWidth, 12);

    view.scale.dpi = 192;
    out = bubblesOf(decoded, view);
    QCOMPARE(out[0].x1, std::int64_t(25 * 2 + 1));
    QCOMPARE(out[0].x2, std::int64_t(55 * 2 + 1));
}

void TstDecodedRow::framesNarrowerThanAPixelGetABoxAtAHigherZoomOnly()
{
    DecodedFake decoded;
    decoded.add(100, 109).add(300, 309);
    DecodedView view = oneToOne();
    view.ratio = 10.0;
    QVERIFY(bubblesOf(decoded, view).empty());
    view.ratio = 9.0;
    QCOMPARE(bubblesOf(decoded, view).size(), std::size_t(2));
}

void TstDecodedRow::pixelsInWhichManyFramesEndShowNone()
{
    DecodedFake three;
    three.add(101, 102).add(102, 103).add(104, 140);
    DecodedView view = oneToOne();
    view.ratio = 10.0;
    QCOMPARE(bubblesOf(three, view).size(), std::size_t(1));
    DecodedFake four;
    four.add(101, 102).add(102, 103).add(103, 104).add(104, 140);
    QVERIFY(bubblesOf(four, view).empty());
}

void TstDecodedRow::aTextThatJustFitsIsShown()
{
    DecodedFake decoded;
    decoded.add(100, 118, {"A", "ABC", "ABCD"}).add(200, 217, {"A", "ABC", "ABCD"});
    const std::vector<DecodedBubble> out = bubblesOf(decoded, oneToOne());
    QCOMPARE(out[0].text.text(), QStringLiteral("ABC")); // 18 in 18
    QCOMPARE(out[1].text.text(), QStringLiteral("A"));
}

void TstDecodedRow::theWidestTextThatFitsIsShownAndTheFirstOfEquals()
{
    DecodedFake decoded;
    decoded.add(100, 150, {"AB", "CD", "A", "too long for it"});
    QCOMPARE(bubblesOf(decoded, oneToOne())[0].text.text(), QStringLiteral("AB"));
}

void TstDecodedRow::aBoxWithoutAFittingTextIsEmptyOrShowsDots_data()
{
    QTest::addColumn<int>("dpi");
    QTest::addColumn<int>("width");
    QTest::addColumn<QString>("text");
    QTest::newRow("1 wide") << 96 << 1 << QString();
    QTest::newRow("11 wide") << 96 << 11 << QString();
    QTest::newRow("12 wide") << 96 << 12 << QStringLiteral("...");
    QTest::newRow("11 wide at 192 dpi") << 192 << 11 << QString();
    QTest::newRow("12 wide at 192 dpi") << 192 << 12 << QStringLiteral("...");
}

void TstDecodedRow::aBoxWithoutAFittingTextIsEmptyOrShowsDots()
{
    QFETCH(int, dpi);
    QFETCH(int, width);
    QFETCH(QString, text);
    DecodedView view = oneToOne();
    view.scale.dpi = dpi;
    DecodedFake decoded;
    decoded.add(100, 100 + std::max(width, view.scale.s()), {"much too long"});
    const std::vector<DecodedBubble> out = bubblesOf(decoded, view);
    QCOMPARE(out.size(), std::size_t(1));
    QCOMPARE(out[0].text.text(), text);
    QCOMPARE(out[0].textWidth, text.isEmpty() ? 0 : view.scale.dp(10));
}

void TstDecodedRow::aFrameWithoutTextsGetsNoBox()
{
    DecodedFake decoded;
    decoded.add(100, 150, {}).add(200, 250, {""});
    const std::vector<DecodedBubble> out = bubblesOf(decoded, oneToOne());
    QCOMPARE(out.size(), std::size_t(1));
    QCOMPARE(out[0].x1, std::int64_t(200));
    QCOMPARE(out[0].text.text(), QStringLiteral("..."));
}

void TstDecodedRow::textsAreAskedForOnlyWhereABoxCanHoldOne()
{
    DecodedFake decoded;
    decoded.add(100, 105).add(200, 206);
    QCOMPARE(bubblesOf(decoded, oneToOne()).size(), std::size_t(2));
    QCOMPARE(decoded.textQueries, 1); // no letter is narrower than 6
}

void TstDecodedRow::aNarrowFrameWithoutTextsOnThisChannelGetsNoBox()
{
    DecodedFake decoded;
    decoded.shares = true;
    decoded.add(100, 101, {}).add(200, 201, {"t"}).add(300, 305, {});
    const std::vector<DecodedBubble> out = bubblesOf(decoded, oneToOne());
    QCOMPARE(out.size(), std::size_t(1));
    QCOMPARE(out[0].x1, std::int64_t(200));
    QCOMPARE(out[0].textWidth, 0);
}

void TstDecodedRow::aDecoderWithoutBubblesOnTheChannelIsNotSearched()
{
    DecodedFake decoded;
    decoded.add(100, 150);
    decoded.bubbles = false;
    QVERIFY(bubblesOf(decoded, oneToOne()).empty());
    QCOMPARE(decoded.rangeQueries, 0);
}

void TstDecodedRow::framesWithinALongerOneAreAllShown()
{
    DecodedFake decoded;
    decoded.add(100, 800);
    for (int i = 0; i < 12; ++i) {
        decoded.add(100 + 50 * i, 149 + 50 * i);
    }
    const std::vector<DecodedBubble> out = bubblesOf(decoded, oneToOne());
    QCOMPARE(out.size(), std::size_t(12) + 1); // and the rest of the longer one, behind them
    for (int i = 0; i < 12; ++i) {
        QCOMPARE(out[std::size_t(i)].x1, std::int64_t(100 + 50 * i));
    }
}

void TstDecodedRow::aLongerFrameStandsOnItsRowThoughOthersLieInIt_data()
{
    QTest::addColumn<double>("ratio");
    QTest::newRow("each of the others is wide") << 1.0;
    QTest::newRow("a pixel has many of the others") << 500.0;
}

void TstDecodedRow::aLongerFrameStandsOnItsRowThoughOthersLieInIt()
{
    QFETCH(double, ratio);
    DecodedFake decoded;
    decoded.shares = true;
    for (std::int64_t at = 0; at < 100'000; at += 50'000) {
        decoded.add(at, at + 40'000, {"long"});
        for (std::int64_t inner = at; inner < at + 40'000; inner += 50) {
            decoded.add(inner, inner + 49, {});
        }
    }
    DecodedView view = oneToOne(200);
    view.ratio = ratio;
    view.viewStart = 20'000.0; // within the first one
    const std::vector<DecodedBubble> out = bubblesOf(decoded, view);
    QCOMPARE(out.size(), std::size_t(ratio > 1.0 ? 2 : 1));
    QCOMPARE(out[0].x1, view.column(0.0));
    QCOMPARE(out[0].x2, view.column(40'000.0));
    QVERIFY(decoded.textQueries <= 2 * 5);
}

void TstDecodedRow::framesOfTwoLinesAtOnceAreAllShown()
{
    DecodedFake decoded; // the other line's say nothing here, and begin half a frame later
    decoded.shares = true;
    for (int i = 0; i < 8; ++i) {
        decoded.add(100 + 100 * i, 199 + 100 * i).add(150 + 100 * i, 249 + 100 * i, {});
    }
    const std::vector<DecodedBubble> out = bubblesOf(decoded, oneToOne());
    QCOMPARE(out.size(), std::size_t(8));
    for (int i = 0; i < 8; ++i) {
        QCOMPARE(out[std::size_t(i)].x1, std::int64_t(100 + 100 * i));
    }
}

void TstDecodedRow::aFrameWiderThanTheViewIsOneBoxAndOneProbe()
{
    DecodedFake decoded;
    decoded.add(100, 90'000);
    DecodedView view = oneToOne();
    view.viewStart = 5000.0;
    const std::vector<DecodedBubble> out = bubblesOf(decoded, view);
    QCOMPARE(out.size(), std::size_t(1));
    QCOMPARE(out[0].x1, std::int64_t(-4900));
    QCOMPARE(out[0].x2, std::int64_t(85'000));
    QCOMPARE(decoded.rangeQueries, 2); // whether there is any, and the probe
}

void TstDecodedRow::textsOfStrangePluginsDoNoHarm()
{
    DecodedFake decoded;
    decoded.add(0, 900, {std::string(5'000'000, 'x'), "\xff\xfe", "A"});
    const std::vector<DecodedBubble> out = bubblesOf(decoded, oneToOne());
    QCOMPARE(out.size(), std::size_t(1));
    QCOMPARE(out[0].textWidth, 12); // two bytes that are no letters
    BubbleTexts texts(sixEach);
    QCOMPARE(texts.of(nullptr).width, 0);
    for (int i = 0; i < 10'000; ++i) {
        QCOMPARE(texts.of(QByteArray::number(i).constData()).width, 6 * QByteArray::number(i).size());
    }
}

void TstDecodedRow::markersWithRoomAroundThemAreKept()
{
    DecodedFake decoded;
    decoded.mark(100, 3).mark(111, 4).mark(500, 5);
    const std::vector<DecodedMarker> out = markersOf(decoded, oneToOne());
    QCOMPARE(samplesOf(out), (std::vector<std::uint64_t>{100, 111, 500}));
    QCOMPARE(out[1].type, 4);
}

void TstDecodedRow::crowdedMarkersAreLeftOut()
{
    DecodedFake decoded;
    decoded.mark(100).mark(110).mark(115).mark(200).mark(220);
    // 115 has room behind it, but none before it
    QCOMPARE(samplesOf(markersOf(decoded, oneToOne())), (std::vector<std::uint64_t>{200, 220}));
    DecodedFake last;
    last.mark(100).mark(105);
    QVERIFY(markersOf(last, oneToOne()).empty());
}

void TstDecodedRow::severalMarkersInAPixelCrowdThoseBehind()
{
    DecodedView view = oneToOne();
    view.ratio = 10.0;
    DecodedFake near;
    near.mark(101).mark(105).mark(150);
    QVERIFY(markersOf(near, view).empty());
    DecodedFake far;
    far.mark(101).mark(105).mark(215);
    QCOMPARE(samplesOf(markersOf(far, view)), (std::vector<std::uint64_t>{215}));
}

void TstDecodedRow::aDecoderWithoutMarkersOnTheChannelIsNotSearched()
{
    DecodedFake decoded;
    decoded.mark(100).mark(500);
    decoded.marks = false;
    QVERIFY(markersOf(decoded, oneToOne()).empty());
    QCOMPARE(decoded.rangeQueries, 0);
}

void TstDecodedRow::aSampleWiderThanAPixelIsTestedByItself()
{
    DecodedView view = oneToOne();
    view.ratio = 0.05;
    DecodedFake decoded;
    decoded.mark(10).mark(12).mark(14); // 40 pixels apart
    QCOMPARE(samplesOf(markersOf(decoded, view)), (std::vector<std::uint64_t>{10, 12, 14}));
    view.ratio = 0.2; // 10 pixels apart
    QVERIFY(markersOf(decoded, view).empty());
}

void TstDecodedRow::boxesAndMarkersAreThoseOfTheToldWalk_data()
{
    QTest::addColumn<double>("ratio");
    QTest::addColumn<int>("dpi");
    for (const double ratio : {0.01, 0.5, 1.0, 1.5, 2.7, 10.0, 33.3, 250.0}) {
        for (const int dpi : {96, 144, 192}) {
            QTest::addRow("%g samples a pixel, %d dpi", ratio, dpi) << ratio << dpi;
        }
    }
}

void TstDecodedRow::boxesAndMarkersAreThoseOfTheToldWalk()
{
    QFETCH(double, ratio);
    QFETCH(int, dpi);
    for (unsigned seed = 0; seed < 12; ++seed) {
        const DecodedFake decoded = randomResults(seed);
        DecodedView view{double(seed) * 301.25, ratio, 700, 20'000, PixelScale{dpi}};
        std::vector<std::pair<std::int64_t, std::int64_t>> columns;
        for (const DecodedBubble &bubble : bubblesOf(decoded, view)) {
            columns.emplace_back(bubble.x1, bubble.x2);
        }
        std::vector<std::pair<std::int64_t, std::int64_t>> told = toldBubbles(decoded, view);
        if (told.size() > columns.size()) { // the told walk's last window reaches out of the row
            QCOMPARE(told.size(), columns.size() + 1);
            QVERIFY(told.back().first >= view.width);
            told.pop_back();
        }
        QCOMPARE(columns, told);
        QCOMPARE(samplesOf(markersOf(decoded, view)), toldMarkers(decoded, view));
    }
}

void TstDecodedRow::theQueriesFollowThePixels()
{
    DecodedView view = oneToOne(1000, 1'000'000);
    view.ratio = 1000.0;
    DecodedFake many;
    for (int i = 0; i < 30'000; ++i) {
        many.add(i * 30, i * 30 + 25);
        many.mark(std::uint64_t(i) * 30);
    }
    QVERIFY(bubblesOf(many, view).empty());
    QVERIFY(markersOf(many, view).empty());
    QVERIFY(many.rangeQueries <= 2 * 1000 + 10);
    QCOMPARE(many.textQueries, 0);

    DecodedFake few;
    few.add(10, 20'000).add(900'000, 950'000).mark(5).mark(999'000);
    QCOMPARE(bubblesOf(few, view).size(), std::size_t(2));
    QCOMPARE(markersOf(few, view).size(), std::size_t(2));
    QVERIFY(few.rangeQueries <= 20);
}

QTEST_MAIN(TstDecodedRow)
#include "tst_DecodedRow.moc"
