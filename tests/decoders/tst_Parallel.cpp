#include "DecoderChecks.h"
#include "ParallelAnalyzer.h"
#include "WireBundle.h"

#include <QtTest>

#include <cstdint>
#include <string>
#include <vector>

using Texts = std::vector<std::string>;
using Desk = BundleDesk<ParallelAnalyzer>;

namespace {

constexpr std::uint32_t clk = 0;
constexpr std::uint32_t enable = 1;
constexpr std::uint32_t firstLine = 2;
constexpr const char *eightLines = "d0=2,d1=3,d2=4,d3=5,d4=6,d5=7,d6=8,d7=9";

std::string with(const std::string &settings)
{
    return std::string(eightLines) + "," + settings;
}

/// Words on eight lines, a clock of 10 samples each: low while they change, then high.
WireBundle clocked(const std::vector<unsigned> &words)
{
    WireBundle wires(10);
    wires.wait(20);
    for (const unsigned word : words) {
        wires.bus(firstLine, 8, word).wait(5).set(clk, true).wait(5).set(clk, false);
    }
    return wires.wait(3);
}

} // namespace

class TstParallel : public QObject {
    Q_OBJECT
private slots:
    void wordsAreTakenAtTheRise();
    void wordsAreTakenAtTheFall();
    void bothEdgesMayTakeWords();
    void wordsCountOnlyWhileTheyAreEnabled();
    void thirtyTwoLinesMakeAWord();
    void aLineThatIsMissingIsLow();
    void theAddressStandsBesideTheWord();
    void withoutAClockEachChangeIsAWord();
    void wordsThatDoNotSettleAreNone_data();
    void wordsThatDoNotSettleAreNone();
    void aGlitchDoesNotEndAWord();
    void positionsAreWiderThan32Bits();
    void cutEndsShowNothingFalse();
    void settingsThatDoNotGoTogetherAreRefused();
    void textsGoFromShortToLong();
    void eachWordHasAnArrow();
    void exportsHaveTheWords();
    void theSimulationIsDecodedAsItWasSent_data();
    void theSimulationIsDecodedAsItWasSent();
    void randomEdgesGiveFramesInOrder();
};

void TstParallel::wordsAreTakenAtTheRise()
{
    const Desk desk(clocked({0x11, 0xa5, 0xff}), with("clk=0"));
    QCOMPARE(desk.summaries(), (Texts{"word v=17", "word v=165", "word v=255"}));
    for (std::uint64_t i = 0; i < 3; ++i) {
        QCOMPARE(desk.frame(i).first, std::int64_t(25 + 10 * i));
        QCOMPARE(desk.frame(i).last, std::int64_t(29 + 10 * i));
    }
}

void TstParallel::wordsAreTakenAtTheFall()
{
    WireBundle wires(10, 1U << clk);
    wires.wait(20);
    for (const unsigned word : {1U, 2U, 3U}) {
        wires.bus(firstLine, 8, word).wait(5).set(clk, false).wait(5).set(clk, true);
    }
    QCOMPARE(Desk(wires, with("clk=0,clock_edge=falling")).summaries(), (Texts{"word v=1", "word v=2", "word v=3"}));
}

void TstParallel::bothEdgesMayTakeWords()
{
    WireBundle wires(10);
    wires.wait(20);
    for (const unsigned word : {1U, 2U, 3U, 4U}) {
        wires.bus(firstLine, 8, word).wait(5).set(clk, !wires.level(clk)).wait(5);
    }
    const Desk desk(wires, with("clk=0,clock_edge=either"));
    QCOMPARE(desk.summaries(), (Texts{"word v=1", "word v=2", "word v=3", "word v=4"}));
    QCOMPARE(desk.frame(0).last, std::int64_t(34)); // up to the next edge
    QCOMPARE(desk.frame(3).last, wires.now() - 1);
}

void TstParallel::wordsCountOnlyWhileTheyAreEnabled()
{
    WireBundle wires(10, 1U << enable);
    wires.wait(20);
    for (const unsigned word : {1U, 2U, 3U, 4U}) {
        wires.set(enable, word == 1 || word == 4).bus(firstLine, 8, word).wait(5);
        wires.set(clk, true).wait(5).set(clk, false);
    }
    QCOMPARE(Desk(wires, with("clk=0,enable=1")).summaries(), (Texts{"word v=2", "word v=3"}));
    QCOMPARE(Desk(wires, with("clk=0,enable=1,enable_polarity=high")).summaries(), (Texts{"word v=1", "word v=4"}));
    // Without a clock as well, as the line is when the word begins.
    QCOMPARE(Desk(wires, with("enable=1")).summaries(), (Texts{"word v=2", "word v=3"}));
}

void TstParallel::thirtyTwoLinesMakeAWord()
{
    WireBundle wires(33);
    std::string settings = "clk=0";
    for (unsigned i = 0; i < 32; ++i) {
        settings += ",d" + std::to_string(i) + "=" + std::to_string(i + 1);
    }
    wires.wait(5).bus(1, 32, 0x80000001).wait(5).set(clk, true).wait(5);
    const Desk desk(wires, settings);
    QCOMPARE(desk.summaries(), Texts{"word v=2147483649"});
    QCOMPARE(desk.frame(0).text, std::string("Word 0x80000001"));
}

void TstParallel::aLineThatIsMissingIsLow()
{
    QCOMPARE(Desk(clocked({0xff}), "clk=0,d0=2,d3=5").summaries(), Texts{"word v=9"});
}

void TstParallel::theAddressStandsBesideTheWord()
{
    const Desk desk(clocked({0xa5}), "clk=0,d0=2,d1=3,d2=4,d3=5,a=6+7-8+9");
    QCOMPARE(desk.summaries(), Texts{"word v=5 addr=10"});
    QCOMPARE(desk.frame(0).text, std::string("Word 0x5 at address 0xA"));
}

void TstParallel::withoutAClockEachChangeIsAWord()
{
    WireBundle wires(10);
    wires.wait(7).bus(firstLine, 8, 3).wait(1).bus(firstLine, 8, 4).wait(9);
    const Desk desk(wires, eightLines);
    QCOMPARE(desk.summaries(), (Texts{"word v=0", "word v=3", "word v=4"}));
    QCOMPARE(desk.frame(0).first, std::int64_t(0));
    QCOMPARE(desk.frame(0).last, std::int64_t(6));
    QCOMPARE(desk.frame(1).first, std::int64_t(7));
    QCOMPARE(desk.frame(1).last, std::int64_t(7));
    QCOMPARE(desk.frame(2).last, wires.now() - 1);
}

void TstParallel::wordsThatDoNotSettleAreNone_data()
{
    QTest::addColumn<int>("skew");
    QTest::addColumn<int>("words");
    QTest::newRow("lines that settle just too briefly") << 3 << 2;
    QTest::newRow("lines that settle just long enough") << 4 << 3;
}

void TstParallel::wordsThatDoNotSettleAreNone()
{
    QFETCH(int, skew);
    QFETCH(int, words);
    WireBundle wires(10);
    wires.wait(20).set(firstLine, true).wait(skew).set(firstLine + 1, true).wait(20);
    // 4 us are four samples.
    const Desk desk(wires, with("settle_time=4000"));
    QCOMPARE(int(desk.summaries().size()), words);
    QCOMPARE(desk.summaries().front(), std::string("word v=0"));
    QCOMPARE(desk.summaries().back(), std::string("word v=3"));
    QCOMPARE(desk.frame(0).last, std::int64_t(19));
    QCOMPARE(desk.frames().back().first, std::int64_t(20 + skew));
}

void TstParallel::aGlitchDoesNotEndAWord()
{
    WireBundle wires(10);
    wires.wait(20).set(firstLine, true).wait(1).set(firstLine, false).wait(20);
    QCOMPARE(Desk(wires, with("settle_time=4000")).summaries(), Texts{"word v=0"});
    QCOMPARE(Desk(wires, with("settle_time=1000")).summaries().size(), std::size_t(3));
}

void TstParallel::positionsAreWiderThan32Bits()
{
    constexpr std::int64_t far = std::int64_t(1) << 36;
    WireBundle wires(10);
    wires.wait(far).bus(firstLine, 8, 0x5a).wait(5).set(clk, true).wait(5).set(clk, false).wait(5);
    const Desk desk(wires, with("clk=0"));
    QCOMPARE(desk.summaries(), Texts{"word v=90"});
    QCOMPARE(desk.frame(0).first, far + 5);
    QCOMPARE(desk.frame(0).last, far + 9);
}

void TstParallel::cutEndsShowNothingFalse()
{
    const WireBundle wires = clocked({0x11, 0xa5, 0xff, 0x42});
    const auto whole = Desk(wires, with("clk=0")).frames();
    for (std::int64_t length = 1; length <= wires.now(); ++length) {
        QCOMPARE(decoderChecks::faultOfCut(Desk(wires, with("clk=0"), 1000000, length).frames(), whole), std::string());
    }
    for (std::int64_t from = 1; from < 60; ++from) {
        const Texts got = Desk(wires, with("clk=0"), 1000000, -1, from).summaries();
        const std::size_t seen = from < 25 ? 4 : from < 35 ? 3 : from < 45 ? 2 : from < 55 ? 1 : 0;
        QCOMPARE(got.size(), seen);
        QVERIFY(seen == 0 || got.back() == "word v=66");
    }
}

void TstParallel::settingsThatDoNotGoTogetherAreRefused()
{
    DecodeDesk desk(std::make_unique<ParallelAnalyzer>());
    QCOMPARE(desk.edit({{"clk", "0"}}), std::string("Choose a channel for one data line at least"));
    QVERIFY(!desk.edit({{"d0", "0"}}).empty());
    QCOMPARE(desk.edit({{"d0", "1"}}), std::string());
    for (const char *text : {"1+", "+1", "x", "1 2", "1++2", "99999999999", "8-5", "8-", "-8", "64"}) {
        QCOMPARE(desk.edit({{"a", text}}), std::string("Address lines are channel numbers, such as 8+9+10 or 8-15"));
    }
    QCOMPARE(desk.edit({{"a", "8+9"}}), std::string());
}

void TstParallel::textsGoFromShortToLong()
{
    const Desk desk(clocked({0x41}), with("clk=0"));
    const Channel highest(0, 9);
    QCOMPARE(desk.bubble(0, highest, DisplayBase::Decimal), (Texts{"65", "Word 65"}));
    QCOMPARE(desk.bubble(0, highest, DisplayBase::Ascii), (Texts{"'A'", "Word 'A'"}));
    QCOMPARE(desk.frame(0, DisplayBase::Binary).text, std::string("Word 0b01000001"));
}

void TstParallel::eachWordHasAnArrow()
{
    const Desk desk(clocked({1, 2}), with("clk=0"));
    const auto markers = desk.markers(clk);
    QCOMPARE(markers.size(), std::size_t(2));
    QCOMPARE(markers[0].type, MarkerType::UpArrow);
    QCOMPARE(markers[0].sample, std::uint64_t(25));
}

void TstParallel::exportsHaveTheWords()
{
    const Desk desk(clocked({0x41, 0x42}), with("clk=0"));
    QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("out")).toStdString();
    QCOMPARE(decoderChecks::exported(desk, path + ".bin", ParallelSettings::Words), std::string("AB"));
    const std::string csv = decoderChecks::exported(desk, path + ".csv", 0);
    QVERIFY2(csv.find(",word,65,Word 0x41") != std::string::npos, csv.c_str());
    QVERIFY(decoderChecks::exported(desk, path + ".txt", 0).find("\tWord 0x42") != std::string::npos);
}

void TstParallel::theSimulationIsDecodedAsItWasSent_data()
{
    QTest::addColumn<QString>("settings");
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("block");
    QTest::newRow("rising") << "clk=0" << 10000000 << 50000;
    QTest::newRow("falling") << "clk=0,clock_edge=falling" << 3000000 << 777;
    QTest::newRow("either") << "clk=0,clock_edge=either" << 1000000 << 50000;
    QTest::newRow("with an enable") << "clk=0,enable=1,enable_polarity=high" << 48000 << 50000;
    QTest::newRow("fast") << "clk=0,enable=1" << 500000000 << 100000;
}

/// Word n is n times an odd number.
void TstParallel::theSimulationIsDecodedAsItWasSent()
{
    QFETCH(QString, settings);
    QFETCH(int, rate);
    QFETCH(int, block);
    DecodeDesk desk(std::make_unique<ParallelAnalyzer>(), with(settings.toStdString()));
    const auto capture = desk.simulate(rate, 1000000, block);
    desk.run(*capture);
    std::uint32_t number = 0;
    for (const std::string &got : desk.summaries()) {
        QCOMPARE(got, "word v=" + std::to_string((number++ * 2654435761U) & 0xffU));
    }
    QVERIFY(number > 1000);
}

void TstParallel::randomEdgesGiveFramesInOrder()
{
    constexpr std::int64_t length = 20000;
    for (const std::int64_t mean : {1, 2, 10, 100, 2000}) {
        for (const char *settings : {"clk=0", "clk=0,enable=1,clock_edge=either", "enable=1", "settle_time=5000"}) {
            TestCapture capture(1000000, length);
            for (std::uint32_t i = 0; i < 10; ++i) {
                capture.channel(i, i % 2 == 0, decoderChecks::randomEdges(i, mean, length));
            }
            DecodeDesk desk(std::make_unique<ParallelAnalyzer>(), with(settings));
            QCOMPARE(decoderChecks::faultOf(desk.run(capture), length), std::string());
        }
    }
}

QTEST_GUILESS_MAIN(TstParallel)
#include "tst_Parallel.moc"
