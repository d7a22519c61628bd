#include "DecoderChecks.h"
#include "LinePart.h"
#include "SpiAnalyzer.h"

#include <QtTest>

#include <cstdint>
#include <string>
#include <vector>

using Texts = std::vector<std::string>;

namespace {

constexpr std::int64_t sampleRate = 1000000;
constexpr std::uint32_t clkChannel = 0;
constexpr std::uint32_t mosiChannel = 1;
constexpr std::uint32_t misoChannel = 2;
constexpr std::uint32_t csChannel = 3;
constexpr const char *allLines = "clk=0,mosi=1,miso=2,cs=3";

/// An SPI controller, as the SPI Block Guide V03.06 draws its lines in figures 4-2 and 4-3; a clock is 10 samples.
class Wire {
public:
    explicit Wire(int mode = 0, bool csActiveHigh = false)
        : m_clk(mode >= 2),
          m_mosi(false),
          m_miso(false),
          m_cs(!csActiveHigh),
          m_idleHigh(mode >= 2),
          m_cpha(mode % 2 != 0),
          m_csActiveHigh(csActiveHigh)
    {}
    Wire &wait(std::int64_t samples)
    {
        m_now += samples;
        return *this;
    }
    Wire &select(bool active)
    {
        at(m_cs).set(active == m_csActiveHigh);
        return wait(7);
    }
    /// Bits in the order of time.
    Wire &bits(const std::string &mosi, const std::string &miso)
    {
        for (std::size_t i = 0; i < mosi.size(); ++i) {
            if (!m_cpha) {
                data(mosi[i], miso[i]).wait(5).clock(true).wait(5).clock(false);
            } else {
                clock(true).data(mosi[i], miso[i]).wait(5).clock(false).wait(5);
            }
        }
        return *this;
    }
    /// A word, the highest bit first; MISO has the inverse.
    Wire &word(std::uint64_t value, unsigned width = 8)
    {
        std::string mosi;
        std::string miso;
        for (unsigned i = width; i > 0; --i) {
            const bool one = (value >> (i - 1) & 1U) != 0;
            mosi += one ? '1' : '0';
            miso += one ? '0' : '1';
        }
        starts.push_back(m_now + (m_cpha ? 0 : 5));
        bits(mosi, miso);
        ends.push_back(m_now - (m_cpha ? 5 : 1));
        return wait(4);
    }
    [[nodiscard]] std::int64_t now() const { return m_now; }
    [[nodiscard]] std::unique_ptr<TestCapture> capture(std::int64_t length = -1, std::int64_t from = 0) const
    {
        auto made = std::make_unique<TestCapture>(sampleRate, (length < 0 ? m_now : length) - from);
        const EdgeLine *lines[] = {&m_clk, &m_mosi, &m_miso, &m_cs};
        for (std::uint32_t i = 0; i < 4; ++i) {
            addPart(*made, i, *lines[i], from);
        }
        return made;
    }

    std::vector<std::int64_t> starts; ///< the leading edge of each word's first clock
    std::vector<std::int64_t> ends;   ///< the trailing edge of its last clock, or the sample before it with CPHA 0

private:
    EdgeLine &at(EdgeLine &line) { return line.holdUntil(m_now); }
    Wire &clock(bool active)
    {
        at(m_clk).set(active != m_idleHigh);
        return *this;
    }
    Wire &data(char mosi, char miso)
    {
        at(m_mosi).set(mosi == '1');
        at(m_miso).set(miso == '1');
        return *this;
    }

    EdgeLine m_clk;
    EdgeLine m_mosi;
    EdgeLine m_miso;
    EdgeLine m_cs;
    std::int64_t m_now = 0;
    bool m_idleHigh;
    bool m_cpha;
    bool m_csActiveHigh;
};

/// A run on what was sent.
class Decoded : public DecodeDesk {
public:
    Decoded(const Wire &wire, const std::string &settings, std::int64_t length = -1, std::int64_t from = 0)
        : DecodeDesk(std::make_unique<SpiAnalyzer>(), settings), m_capture(wire.capture(length, from))
    {
        run(*m_capture);
    }

private:
    std::unique_ptr<TestCapture> m_capture;
};

std::string with(const std::string &settings)
{
    return std::string(allLines) + "," + settings;
}

} // namespace

class TstSpi : public QObject {
    Q_OBJECT
private slots:
    void eachModeTakesItsEdge_data();
    void eachModeTakesItsEdge();
    void wordsHaveTwoToSixtyFourBits_data();
    void wordsHaveTwoToSixtyFourBits();
    void theLowestBitMayComeFirst();
    void theSelectMayBeHigh();
    void clocksOfAnotherDeviceAreNoWords();
    void aWordThatTheReleaseCutsIsToldAsCut();
    void theLastEdgeMayFallTogetherWithTheRelease();
    void theFirstEdgeMayFallTogetherWithTheSelect();
    void withoutASelectWordsFollowEachOther();
    void anIdleTimeBeginsAWordAnew();
    void linesMayBeMissing();
    void aCaptureThatBeginsWithinATransferIsReadFromItsEnd();
    void aPauseBeforeTheFirstClockIsAWordsBegin();
    void aCutWordAtTheEndIsNotShown_data();
    void aCutWordAtTheEndIsNotShown();
    void settingsThatDoNotGoTogetherAreRefused();
    void textsTellTheLine();
    void eachBitHasAnArrow();
    void exportsHaveTheWordsOfEachLine();
    void theSimulationIsDecodedAsItWasSent_data();
    void theSimulationIsDecodedAsItWasSent();
    void randomEdgesGiveFramesInOrder();
};

void TstSpi::eachModeTakesItsEdge_data()
{
    QTest::addColumn<int>("mode");
    for (int mode = 0; mode < 4; ++mode) {
        QTest::addRow("CPOL %d, CPHA %d", mode / 2, mode % 2) << mode;
    }
}

void TstSpi::eachModeTakesItsEdge()
{
    QFETCH(int, mode);
    Wire wire(mode);
    wire.wait(20).select(true).word(0xa5).word(0x01).select(false).wait(20).select(true).word(0x80).select(false);
    const std::string settings = with("cpol=" + std::to_string(mode / 2) + ",cpha=" + std::to_string(mode % 2));
    const Decoded desk(wire, settings);
    QCOMPARE(desk.summaries(), (Texts{"word mosi=165 miso=90", "word mosi=1 miso=254", "word mosi=128 miso=127"}));
    for (std::uint64_t i = 0; i < 3; ++i) {
        QCOMPARE(desk.frame(i).first, wire.starts[i]);
        QCOMPARE(desk.frame(i).last, wire.ends[i]);
    }
}

void TstSpi::wordsHaveTwoToSixtyFourBits_data()
{
    QTest::addColumn<unsigned>("width");
    for (const unsigned width : {2U, 3U, 9U, 16U, 31U, 32U, 33U, 63U, 64U}) {
        QTest::addRow("%u bits", width) << width;
    }
}

void TstSpi::wordsHaveTwoToSixtyFourBits()
{
    QFETCH(unsigned, width);
    const std::uint64_t all = ~std::uint64_t(0) >> (64 - width);
    const std::uint64_t values[] = {std::uint64_t(1) << (width - 1), 1, all & 0x123456789abcdef0};
    Wire wire;
    wire.wait(20).select(true).word(values[0], width).word(values[1], width).word(values[2], width).select(false);
    const Decoded desk(wire, with("word=" + std::to_string(width)));
    Texts expected;
    for (const std::uint64_t value : values) {
        expected.push_back("word mosi=" + std::to_string(value) + " miso=" + std::to_string(all & ~value));
    }
    QCOMPARE(desk.summaries(), expected);
}

void TstSpi::theLowestBitMayComeFirst()
{
    Wire wire;
    wire.wait(20).select(true).word(0x01).select(false);
    QCOMPARE(Decoded(wire, with("bit_order=lsb")).summaries(), Texts{"word mosi=128 miso=127"});
}

void TstSpi::theSelectMayBeHigh()
{
    Wire wire(0, true);
    wire.wait(20).word(0x11).select(true).word(0x22).select(false).word(0x33);
    QCOMPARE(Decoded(wire, with("cs_polarity=high")).summaries(), Texts{"word mosi=34 miso=221"});
}

void TstSpi::clocksOfAnotherDeviceAreNoWords()
{
    Wire wire;
    wire.wait(20).bits("101", "000").select(true).word(0x22).select(false).word(0x33).select(true).word(0x44);
    wire.select(false);
    QCOMPARE(Decoded(wire, allLines).summaries(), (Texts{"word mosi=34 miso=221", "word mosi=68 miso=187"}));
    // The line may be connected and yet not looked at.
    QCOMPARE(Decoded(wire, with("cs_polarity=none,word=3")).frame(0).summary(), std::string("word mosi=5 miso=0"));
}

void TstSpi::aWordThatTheReleaseCutsIsToldAsCut()
{
    Wire wire;
    wire.wait(20).select(true).word(0x22).bits("1011", "0001").select(false).wait(10);
    wire.select(true).word(0x33).select(false);
    const Decoded desk(wire, allLines);
    QCOMPARE(desk.summaries(), (Texts{"word mosi=34 miso=221", "cut n=4 mosi=11 miso=1", "word mosi=51 miso=204"}));
    QCOMPARE(desk.frame(1).text, std::string("MOSI 0xB, MISO 0x1, cut after 4 bits"));
    QCOMPARE(desk.bubble(1, Channel(0, mosiChannel), DisplayBase::Decimal),
             (Texts{"!", "Cut", "Word cut after 4 bits"}));
    const auto markers = desk.markers(clkChannel);
    QCOMPARE(
        std::count_if(markers.begin(), markers.end(), [](const Marker &m) { return m.type == MarkerType::ErrorX; }), 1);
}

void TstSpi::theLastEdgeMayFallTogetherWithTheRelease()
{
    // The edge that completes a word counts, an edge that would begin one does not.
    for (const int clocks : {8, 9}) {
        EdgeLine clk(false);
        EdgeLine cs(true);
        cs.hold(10).set(false);
        clk.hold(20);
        for (int i = 0; i < clocks; ++i) {
            clk.bit(true, 5).bit(false, 5);
        }
        cs.holdUntil(20 + (clocks - 1) * 10).set(true);
        TestCapture capture(sampleRate, 300);
        capture.channel(clkChannel, clk).channel(mosiChannel, EdgeLine(true)).channel(csChannel, cs);
        DecodeDesk desk(std::make_unique<SpiAnalyzer>(), "clk=0,mosi=1,cs=3");
        QCOMPARE(desk.run(capture).summaries(), Texts{"word mosi=255"});
    }
}

void TstSpi::theFirstEdgeMayFallTogetherWithTheSelect()
{
    // A leading edge is the first of the word; a trailing one has none before it.
    for (const bool idle : {false, true}) {
        EdgeLine clk(idle);
        EdgeLine mosi(true);
        EdgeLine cs(true);
        cs.hold(20).set(false);
        clk.hold(20);
        mosi.hold(25).set(false); // the highest bit alone is 1
        for (int i = 0; i < 8; ++i) {
            clk.bit(!idle, 5).bit(idle, 5);
        }
        cs.holdUntil(110).set(true);
        TestCapture capture(sampleRate, 300);
        capture.channel(clkChannel, clk).channel(mosiChannel, mosi).channel(csChannel, cs);
        const std::string cpol = idle ? ",cpol=1" : ",cpol=0";
        DecodeDesk leading(std::make_unique<SpiAnalyzer>(), "clk=0,mosi=1,cs=3" + cpol);
        QCOMPARE(leading.run(capture).summaries(), Texts{"word mosi=128"});
        const std::string other = idle ? ",cpol=0,cpha=1" : ",cpol=1,cpha=1";
        DecodeDesk trailing(std::make_unique<SpiAnalyzer>(), "clk=0,mosi=1,cs=3" + other);
        QCOMPARE(trailing.run(capture).summaries(), Texts{"cut n=7 mosi=0"});
    }
}

void TstSpi::withoutASelectWordsFollowEachOther()
{
    Wire wire;
    wire.wait(20).word(0x22).wait(1000).word(0x33).bits("1010", "0000").wait(50).bits("0101", "0000");
    QCOMPARE(Decoded(wire, "clk=0,mosi=1").summaries(), (Texts{"word mosi=34", "word mosi=51", "word mosi=165"}));
}

void TstSpi::anIdleTimeBeginsAWordAnew()
{
    Wire wire;
    wire.wait(20).bits("111", "000").wait(35).word(0x22).wait(20).word(0x33);
    // From the last edge of the clock to the next one: 40 samples of 1 us.
    QCOMPARE(Decoded(wire, "clk=0,mosi=1,idle_time=40000").summaries(),
             (Texts{"cut n=3 mosi=7", "word mosi=34", "word mosi=51"}));
    QCOMPARE(Decoded(wire, "clk=0,mosi=1,idle_time=41000").frame(0).summary(), std::string("word mosi=228"));
}

void TstSpi::linesMayBeMissing()
{
    Wire wire;
    wire.wait(20).select(true).word(0x22).select(false);
    QCOMPARE(Decoded(wire, "clk=0,mosi=1,cs=3").summaries(), Texts{"word mosi=34"});
    QCOMPARE(Decoded(wire, "clk=0,miso=2,cs=3").summaries(), Texts{"word miso=221"});
    const Decoded desk(wire, "clk=0,miso=2");
    QCOMPARE(desk.summaries(), Texts{"word miso=221"});
    QCOMPARE(desk.frame(0).text, std::string("MISO 0xDD"));
}

void TstSpi::aCaptureThatBeginsWithinATransferIsReadFromItsEnd()
{
    Wire wire;
    wire.wait(20).select(true).word(0x22).word(0x33).word(0x44).select(false).wait(10);
    const Texts whole = {"word mosi=34 miso=221", "word mosi=51 miso=204", "word mosi=68 miso=187"};
    for (std::int64_t from = wire.starts[0] + 1; from < wire.ends[2]; ++from) {
        const Texts got = Decoded(wire, allLines, -1, from).summaries();
        const std::size_t left = from <= wire.starts[1] ? 2 : from <= wire.starts[2] ? 1 : 0;
        // A clock whose edge is the first sample cannot be seen.
        const std::size_t fewest = from == wire.starts[1] || from == wire.starts[2] ? left - 1 : left;
        QVERIFY2(got.size() == left || got.size() == fewest, std::to_string(from).c_str());
        QCOMPARE(got, Texts(whole.end() - std::ptrdiff_t(got.size()), whole.end()));
    }
}

void TstSpi::aPauseBeforeTheFirstClockIsAWordsBegin()
{
    Wire wire;
    wire.wait(20).select(true).wait(50).word(0x22).bits("111", "000").select(false);
    QCOMPARE(Decoded(wire, allLines, -1, 30).summaries(), (Texts{"word mosi=34 miso=221", "cut n=3 mosi=7 miso=0"}));
    // Right behind the select, which has triggered it: 12 samples to the first edge, of a clock of 10.
    Wire triggered;
    triggered.wait(20).select(true).wait(7).word(0x22).bits("111", "000").select(false);
    const std::int64_t edge = triggered.starts[0];
    QCOMPARE(Decoded(triggered, allLines, -1, edge - 12).frame(0).summary(), std::string("word mosi=34 miso=221"));
    QVERIFY(Decoded(triggered, allLines, -1, edge - 11).frame(0).summary() != "word mosi=34 miso=221");
}

void TstSpi::aCutWordAtTheEndIsNotShown_data()
{
    eachModeTakesItsEdge_data();
}

void TstSpi::aCutWordAtTheEndIsNotShown()
{
    QFETCH(int, mode);
    Wire wire(mode);
    wire.wait(5).select(true).word(0x22).word(0x33).bits("10", "11").select(false).wait(9).select(true).word(0x44);
    wire.select(false);
    const std::string settings = with("cpol=" + std::to_string(mode / 2) + ",cpha=" + std::to_string(mode % 2));
    const auto whole = Decoded(wire, settings).frames();
    QCOMPARE(whole.size(), std::size_t(4));
    for (std::int64_t length = 1; length < wire.now(); ++length) {
        const Decoded desk(wire, settings, length);
        QCOMPARE(decoderChecks::faultOf(desk, length), std::string());
        QCOMPARE(decoderChecks::faultOfCut(desk.frames(), whole), std::string());
    }
}

void TstSpi::settingsThatDoNotGoTogetherAreRefused()
{
    DecodeDesk desk(std::make_unique<SpiAnalyzer>());
    QVERIFY(!desk.edit({{"mosi", "1"}}).empty());
    QCOMPARE(desk.edit({{"clk", "0"}, {"mosi", "none"}}), std::string("Choose a channel for MOSI or MISO"));
    QCOMPARE(desk.edit({{"miso", "1"}}), std::string());
    QVERIFY(!desk.edit({{"miso", "0"}}).empty());
    QVERIFY(!desk.edit({{"miso", "1"}, {"word", "65"}}).empty());
    QVERIFY(!desk.edit({{"word", "1"}}).empty());
    QCOMPARE(desk.edit({{"word", "64"}, {"cpol", "1"}, {"cpha", "1"}, {"bit_order", "lsb"}, {"cs_polarity", "none"}}),
             std::string());
}

void TstSpi::textsTellTheLine()
{
    Wire wire;
    wire.wait(20).select(true).word(0x41).select(false);
    const Decoded desk(wire, allLines);
    QCOMPARE(desk.bubble(0, Channel(0, mosiChannel), DisplayBase::Hexadecimal), (Texts{"0x41", "MOSI 0x41"}));
    QCOMPARE(desk.bubble(0, Channel(0, misoChannel), DisplayBase::Decimal), (Texts{"190", "MISO 190"}));
    QVERIFY(desk.bubble(0, Channel(0, clkChannel), DisplayBase::Decimal).empty());
    QCOMPARE(desk.frame(0).text, std::string("MOSI 0x41, MISO 0xBE"));
}

void TstSpi::eachBitHasAnArrow()
{
    for (int mode = 0; mode < 4; ++mode) {
        Wire wire(mode);
        wire.wait(20).select(true).word(0x41).select(false);
        const Decoded desk(wire, with("cpol=" + std::to_string(mode / 2) + ",cpha=" + std::to_string(mode % 2)));
        const auto markers = desk.markers(clkChannel);
        QCOMPARE(markers.size(), std::size_t(8));
        for (std::size_t i = 0; i < 8; ++i) {
            QCOMPARE(markers[i].type, mode == 0 || mode == 3 ? MarkerType::UpArrow : MarkerType::DownArrow);
            QCOMPARE(markers[i].sample, std::uint64_t(wire.starts[0]) + 10 * i + (mode % 2 != 0 ? 5 : 0));
        }
    }
}

void TstSpi::exportsHaveTheWordsOfEachLine()
{
    Wire wire;
    wire.wait(20).select(true).word(0x123, 12).word(0xabc, 12).select(false).select(true).word(0x456, 12);
    wire.bits("11", "00").select(false);
    const Decoded desk(wire, with("word=12"));
    QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("out")).toStdString();
    QCOMPARE(decoderChecks::exported(desk, path + ".bin", SpiSettings::MosiWords),
             std::string("\x01\x23\x0a\xbc\x04\x56"));
    QCOMPARE(decoderChecks::exported(desk, path + ".bin", SpiSettings::MisoWords),
             std::string("\x0e\xdc\x05\x43\x0b\xa9"));
    const std::string text = decoderChecks::exported(desk, path + ".txt", SpiSettings::Transfers);
    const std::string first = " 0x123/0xEDC 0xABC/0x543\n";
    const std::string second = " 0x456/0xBA9 0x3/0x0 cut\n";
    QVERIFY2(text.find(first) != std::string::npos && text.find(second) != std::string::npos, text.c_str());
    const std::string lines = decoderChecks::exported(desk, path + ".csv", SpiSettings::Transfers);
    QVERIFY2(lines.starts_with("time_s,first_sample,last_sample,text\n"), lines.c_str());
    QVERIFY2(lines.find(",0x456/0xBA9 0x3/0x0 cut\n") != std::string::npos, lines.c_str());
    const std::string csv = decoderChecks::exported(desk, path + ".csv", 0);
    QVERIFY2(csv.find("word,291,3804,,") != std::string::npos, csv.c_str());
    QVERIFY2(csv.find("kind,mosi,miso,n,text\n") != std::string::npos, csv.c_str());
    QVERIFY2(csv.find("cut,3,0,2,") != std::string::npos, csv.c_str());
}

void TstSpi::theSimulationIsDecodedAsItWasSent_data()
{
    QTest::addColumn<QString>("settings");
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("block");
    QTest::newRow("mode 0") << "cpol=0,cpha=0" << 10000000 << 100000;
    QTest::newRow("mode 1, small blocks") << "cpol=0,cpha=1,word=16" << 8000 << 61;
    QTest::newRow("mode 2, lowest first") << "cpol=1,cpha=0,bit_order=lsb,word=32" << 250000000 << 4096;
    QTest::newRow("mode 3, active high") << "cpol=1,cpha=1,cs_polarity=high,word=5" << 1000000 << 50000;
    QTest::newRow("no select") << "cs_polarity=none" << 1000000 << 50000;
}

/// MOSI counts up, MISO is its inverse; of each 13 transfers of four words one ends in a cut word.
void TstSpi::theSimulationIsDecodedAsItWasSent()
{
    QFETCH(QString, settings);
    QFETCH(int, rate);
    QFETCH(int, block);
    DecodeDesk desk(std::make_unique<SpiAnalyzer>(), with(settings.toStdString()));
    const auto capture = desk.simulate(rate, std::min(rate * std::int64_t(10), std::int64_t(4000000)), block);
    desk.run(*capture);
    const int at = settings.indexOf(QLatin1String("word="));
    const unsigned width = at < 0 ? 8 : unsigned(settings.mid(at + 5).toInt());
    const std::uint64_t all = ~std::uint64_t(0) >> (64 - width);
    const bool hasSelect = !settings.contains(QLatin1String("none"));
    std::uint64_t number = 0;
    std::uint64_t cuts = 0;
    for (const std::string &got : desk.summaries()) {
        if (got.substr(0, 3) == "cut") {
            ++cuts;
            QCOMPARE(number % (4 * 13), std::uint64_t(0));
            continue;
        }
        QCOMPARE(got, "word mosi=" + std::to_string(number & all) + " miso=" + std::to_string(~number & all));
        ++number;
    }
    QVERIFY(number > 100);
    QCOMPARE(cuts > 0, hasSelect);
}

void TstSpi::randomEdgesGiveFramesInOrder()
{
    constexpr std::int64_t length = 20000;
    for (const std::int64_t mean : {1, 2, 10, 100, 2000}) {
        for (const char *settings : {"word=2", "word=64,cpha=1", "idle_time=20000", "cs_polarity=none,cpol=1"}) {
            TestCapture capture(sampleRate, length);
            for (std::uint32_t i = 0; i < 4; ++i) {
                const std::int64_t distance = i == csChannel ? 20 * mean : mean;
                capture.channel(i, i % 2 == 0, decoderChecks::randomEdges(i, distance, length));
            }
            DecodeDesk desk(std::make_unique<SpiAnalyzer>(), with(settings));
            QCOMPARE(decoderChecks::faultOf(desk.run(capture), length), std::string());
        }
    }
}

QTEST_GUILESS_MAIN(TstSpi)
#include "tst_Spi.moc"
