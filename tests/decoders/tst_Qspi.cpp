#include "DecoderChecks.h"
#include "QspiAnalyzer.h"

#include <QtTest>

#include <cstdint>
#include <string>
#include <vector>

using Texts = std::vector<std::string>;

namespace {

constexpr std::int64_t sampleRate = 100000000;
constexpr std::int64_t half = 5; ///< samples of half a clock
constexpr std::uint32_t csChannel = 1;
constexpr std::uint32_t io0Channel = 2;
constexpr const char *allLines = "clk=0,cs=1,io0=2,io1=3,io2=4,io3=5";

std::string with(const std::string &more)
{
    return std::string(allLines) + "," + more;
}

/// A controller and its chip, as the data sheets draw them in mode 0.
class Wire {
public:
    Wire() : m_clk(false), m_cs(true), m_io(4, EdgeLine(true)) { wait(20); }

    Wire &wait(std::int64_t samples)
    {
        m_now += samples;
        return *this;
    }
    Wire &select()
    {
        at(m_cs).set(false);
        begins.push_back(m_now);
        return wait(7);
    }
    Wire &release()
    {
        at(m_cs).set(true);
        ends.push_back(m_now - 1);
        return wait(30);
    }
    /// One clock; bit i of the mask is IOi.
    Wire &clock(unsigned mask)
    {
        levels(mask).wait(half);
        at(m_clk).set(true);
        wait(half);
        at(m_clk).set(false);
        return *this;
    }
    Wire &clocks(unsigned count)
    {
        for (unsigned i = 0; i < count; ++i) {
            clock(15);
        }
        return *this;
    }
    /// Half a clock; data stands two samples before its edge.
    Wire &toggle(unsigned mask)
    {
        levels(mask).wait(2);
        m_level = !m_level;
        at(m_clk).set(m_level);
        return wait(half - 2);
    }
    /// The highest bits first, on IO0 from the controller and on IO1 from the chip when on one line; more than 64 begin
    /// anew.
    Wire &one(std::uint64_t value, unsigned count, bool fromChip = false)
    {
        while (count > 0) {
            const auto bit = unsigned(value >> --count % 64 & 1U);
            clock(fromChip ? bit << 1 : bit);
        }
        return *this;
    }
    Wire &wide(std::uint64_t value, unsigned count, unsigned lines)
    {
        while (count > 0) {
            count -= lines;
            clock(unsigned(value >> count % 64) & ((1U << lines) - 1U));
        }
        return *this;
    }
    Wire &fast(std::uint64_t value, unsigned count, unsigned lines, bool fromChip = false)
    {
        while (count > 0) {
            count -= lines;
            const unsigned mask = unsigned(value >> count % 64) & ((1U << lines) - 1U);
            toggle(fromChip && lines == 1 ? mask << 1 : mask);
        }
        return *this;
    }
    [[nodiscard]] std::int64_t now() const { return m_now; }
    EdgeLine &cs() { return at(m_cs); }
    [[nodiscard]] std::unique_ptr<TestCapture> capture(std::int64_t length = -1, std::int64_t from = 0,
                                                       bool inverted = false) const
    {
        auto made = std::make_unique<TestCapture>(sampleRate, (length < 0 ? m_now : length) - from);
        const EdgeLine *lines[] = {&m_clk, &m_cs, &m_io[0], &m_io[1], &m_io[2], &m_io[3]};
        for (std::uint32_t i = 0; i < 6; ++i) {
            bool level = lines[i]->startLevel() != (inverted && i == 0);
            std::vector<std::int64_t> edges;
            for (const std::int64_t edge : lines[i]->edges()) {
                if (edge <= from) {
                    level = !level;
                } else {
                    edges.push_back(edge - from);
                }
            }
            made->channel(i, level, edges);
        }
        return made;
    }

    std::vector<std::int64_t> begins; ///< of each select
    std::vector<std::int64_t> ends;

private:
    EdgeLine &at(EdgeLine &line) { return line.holdUntil(m_now); }
    Wire &levels(unsigned mask)
    {
        for (unsigned i = 0; i < 4; ++i) {
            at(m_io[i]).set((mask >> i & 1U) != 0);
        }
        return *this;
    }

    EdgeLine m_clk;
    EdgeLine m_cs;
    std::vector<EdgeLine> m_io;
    std::int64_t m_now = 0;
    bool m_level = false;
};

class Decoded : public DecodeDesk {
public:
    explicit Decoded(const Wire &wire, const std::string &settings = allLines, std::int64_t length = -1,
                     std::int64_t from = 0, bool inverted = false)
        : DecodeDesk(std::make_unique<QspiAnalyzer>(), settings), m_capture(wire.capture(length, from, inverted))
    {
        run(*m_capture);
    }
    [[nodiscard]] Texts transfers() const
    {
        Texts list;
        for (const DecodedFrame &one : frames()) {
            if (one.kind == "transfer" || one.kind == "short") {
                list.push_back(one.summary());
            }
        }
        return list;
    }

private:
    std::unique_ptr<TestCapture> m_capture;
};

/// A read of two bytes, 12 34, at address ABCDEF.
Wire readWire(unsigned code, unsigned addressLines, bool hasMode, unsigned dummy, unsigned dataLines)
{
    Wire wire;
    wire.select().one(code, 8);
    addressLines == 1 ? wire.one(0xabcdef, 24) : wire.wide(0xabcdef, 24, addressLines);
    if (hasMode) {
        wire.wide(0xf0, 8, addressLines);
    }
    wire.clocks(dummy);
    dataLines == 1 ? wire.one(0x1234, 16, true) : wire.wide(0x1234, 16, dataLines);
    wire.release();
    return wire;
}

} // namespace

class TstQspi : public QObject {
    Q_OBJECT

private slots:
    void readsHaveTheirPhases_data();
    void readsHaveTheirPhases();
    void doubleRateTakesBothEdges_data();
    void doubleRateTakesBothEdges();
    void phasesStandWhereTheyAre();
    void commandsWithoutDataEndWithTheirCode();
    void singleLinesTellBothDirections();
    void dataIsWrittenOnTheLinesOfItsCommand();
    void qpiHasAllOnFourLines();
    void qpiDummyClocksAreThoseOfTheParameters();
    void fourByteAddressesFollowTheChip();
    void readingGoesOnWithoutACommand();
    void theConfigurationKeepsTheChipReading();
    void chipsUnderstandCommandsDifferently();
    void otherCommandsAreAsTheModeTells();
    void dataMayComeWithoutCommands();
    void aSelectWithFewClocksIsShort();
    void glitchesOfTheSelectArePassedOver();
    void theClockMayFall();
    void theLastEdgeMayFallTogetherWithTheRelease();
    void theFirstEdgeMayFallTogetherWithTheSelect();
    void dummyClocksMayBeSet();
    void linesMayBeListed();
    void settingsThatDoNotGoTogetherAreRefused();
    void linesThatShareAChannelAreRefused();
    void bubblesGoFromShortToLong();
    void exportsHaveTheDataOfEachDirection();
    void whatTheCaptureCutsIsNotShown();
    void aCaptureThatTheSelectTriggersBeginsWithATransfer();
    void theSimulationIsDecodedAsItWasSent_data();
    void theSimulationIsDecodedAsItWasSent();
    void itIsOfferedForModelsThatAreFastEnough();
    void randomEdgesGiveFramesInOrder();
};

void TstQspi::readsHaveTheirPhases_data()
{
    QTest::addColumn<unsigned>("code");
    QTest::addColumn<unsigned>("addressLines");
    QTest::addColumn<bool>("hasMode");
    QTest::addColumn<unsigned>("dummy");
    QTest::addColumn<unsigned>("dataLines");
    QTest::newRow("read") << 0x03U << 1U << false << 0U << 1U;
    QTest::newRow("fast") << 0x0bU << 1U << false << 8U << 1U;
    QTest::newRow("dual output") << 0x3bU << 1U << false << 8U << 2U;
    QTest::newRow("quad output") << 0x6bU << 1U << false << 8U << 4U;
    QTest::newRow("dual I/O") << 0xbbU << 2U << true << 0U << 2U;
    QTest::newRow("quad I/O") << 0xebU << 4U << true << 4U << 4U;
    QTest::newRow("word quad I/O") << 0xe7U << 4U << true << 2U << 4U;
    QTest::newRow("octal word quad I/O") << 0xe3U << 4U << true << 0U << 4U;
}

void TstQspi::readsHaveTheirPhases()
{
    QFETCH(unsigned, code);
    QFETCH(unsigned, addressLines);
    QFETCH(bool, hasMode);
    QFETCH(unsigned, dummy);
    QFETCH(unsigned, dataLines);
    const Decoded desk(readWire(code, addressLines, hasMode, dummy, dataLines));
    const DecodedFrame transfer = desk.frame(0);
    QCOMPARE(transfer.value("cmd"), QString::asprintf("%02X", code).toStdString());
    QCOMPARE(transfer.value("addr"), std::string("ABCDEF"));
    QCOMPARE(transfer.value("mode"), std::string(hasMode ? "F0" : "(absent)"));
    QCOMPARE(transfer.value("lines"), std::to_string(dataLines));
    QCOMPARE(transfer.value("data"), std::string("1234"));
    QCOMPARE(transfer.value("data4"), std::string(dataLines == 4 ? "1234" : "(absent)"));
    Texts kinds;
    for (const DecodedFrame &one : desk.frames()) {
        kinds.push_back(one.kind);
    }
    Texts expected = {"transfer", "command", "address"};
    if (hasMode) {
        expected.push_back("mode");
    }
    if (dummy > 0) {
        expected.push_back("dummy");
    }
    expected.insert(expected.end(), {"data", "data"});
    QCOMPARE(kinds, expected);
}

void TstQspi::doubleRateTakesBothEdges_data()
{
    QTest::addColumn<unsigned>("code");
    QTest::addColumn<unsigned>("lines");
    QTest::addColumn<bool>("hasMode");
    QTest::addColumn<unsigned>("dummy");
    QTest::newRow("one line") << 0x0dU << 1U << false << 6U;
    QTest::newRow("two lines") << 0xbdU << 2U << true << 4U;
    QTest::newRow("four lines") << 0xedU << 4U << true << 7U;
}

void TstQspi::doubleRateTakesBothEdges()
{
    QFETCH(unsigned, code);
    QFETCH(unsigned, lines);
    QFETCH(bool, hasMode);
    QFETCH(unsigned, dummy);
    Wire wire;
    wire.select().one(code, 8).wait(3).fast(0xabcdef, 24, lines);
    if (hasMode) {
        wire.fast(0xf0, 8, lines);
    }
    wire.clocks(dummy).wait(3).fast(0x123456, 24, lines, true).wait(3).release();
    const DecodedFrame frame = Decoded(wire).frame(0);
    QCOMPARE(frame.value("addr"), std::string("ABCDEF"));
    QCOMPARE(frame.value("mode"), std::string(hasMode ? "F0" : "(absent)"));
    QCOMPARE(frame.value("data"), std::string("123456"));
}

void TstQspi::phasesStandWhereTheyAre()
{
    const Wire wire = readWire(0x03, 1, false, 0, 1);
    const Decoded desk(wire);
    const std::int64_t first = wire.begins[0] + 7 + half;
    QCOMPARE(desk.frame(0).first, wire.begins[0]);
    QCOMPARE(desk.frame(0).last, wire.ends[0]);
    const std::int64_t clocks[] = {8, 24, 8, 8};
    std::int64_t at = first;
    for (std::size_t i = 0; i < 4; ++i) {
        QCOMPARE(desk.frame(i + 1).first, at);
        at += clocks[i] * 2 * half;
        QCOMPARE(desk.frame(i + 1).last, at - half - 1);
    }
    const auto markers = desk.markers(0);
    QCOMPARE(markers.size(), std::size_t(4));
    QCOMPARE(markers[0].sample, std::uint64_t(first));
    QCOMPARE(markers[0].type, MarkerType::UpArrow);
}

void TstQspi::commandsWithoutDataEndWithTheirCode()
{
    Wire wire;
    wire.select().one(0x06, 8).release().select().one(0x20, 8).one(0x123456, 24).release();
    const Decoded desk(wire);
    QCOMPARE(desk.transfers(), (Texts{"transfer cmd=06", "transfer cmd=20 addr=123456 out=123456 in=000000"}));
    QCOMPARE(desk.frame(0).text, std::string("Write enable"));
}

void TstQspi::singleLinesTellBothDirections()
{
    Wire wire;
    wire.select().one(0xab, 8).one(0, 24).one(0x15, 8, true).release();
    wire.select().one(0x9f, 8).one(0xef4018, 24, true).one(5, 3).release();
    QCOMPARE(Decoded(wire).transfers(), (Texts{"transfer cmd=AB lines=1 data=15 out=00000000 in=00000015",
                                               "transfer cmd=9F lines=1 data=EF4018 out=000000 in=EF4018"}));
    Wire longOne;
    longOne.select().one(0x03, 8).one(0, 24).one(0, 8 * 100, true).release();
    const DecodedFrame frame = Decoded(longOne).frame(0);
    QCOMPARE(frame.value("data").size(), std::size_t(128));
    QCOMPARE(frame.value("out").size(), std::size_t(128));
    QVERIFY(frame.text.find("100 bytes") != std::string::npos);
}

void TstQspi::dataIsWrittenOnTheLinesOfItsCommand()
{
    Wire wire;
    wire.select().one(0x02, 8).one(1, 24).one(0x1234, 16).release();
    wire.select().one(0x32, 8).one(2, 24).wide(0x1234, 16, 4).release();
    const Decoded desk(wire);
    QCOMPARE(desk.transfers()[0],
             std::string("transfer cmd=02 addr=000001 lines=1 data=1234 out=0000011234 in=0000000000"));
    QCOMPARE(desk.transfers()[1], std::string("transfer cmd=32 addr=000002 lines=4 data=1234 data4=1234"));
    QCOMPARE(desk.frame(3).text, std::string("Write 0x12"));
}

void TstQspi::qpiHasAllOnFourLines()
{
    Wire wire;
    wire.select().wide(0xeb, 8, 4).wide(0xabcdef, 24, 4).wide(0xff, 8, 4).wide(0x1234, 16, 4).release();
    wire.select().wide(0x0b, 8, 4).wide(0xabcdef, 24, 4).clocks(2).wide(0x12, 8, 4).release();
    wire.select().wide(0x05, 8, 4).wide(0x02, 8, 4).release().select().wide(0xff, 8, 4).release();
    wire.select().one(0x05, 8).one(3, 8, true).release().select().one(0x38, 8).release();
    wire.select().wide(0x02, 8, 4).wide(1, 24, 4).wide(0x55, 8, 4).release();
    QCOMPARE(Decoded(wire, with("qpi=true")).transfers(),
             (Texts{"transfer cmd=EB addr=ABCDEF mode=FF lines=4 data=1234 data4=1234",
                    "transfer cmd=0B addr=ABCDEF lines=4 data=12 data4=12", "transfer cmd=05 lines=4 data=02 data4=02",
                    "transfer cmd=FF", "transfer cmd=05 lines=1 data=03 out=00 in=03", "transfer cmd=38",
                    "transfer cmd=02 addr=000001 lines=4 data=55 data4=55"}));
}

void TstQspi::qpiDummyClocksAreThoseOfTheParameters()
{
    for (unsigned code = 0; code < 4; ++code) {
        Wire wire;
        wire.select().wide(0xc0, 8, 4).wide(code << 4, 8, 4).release();
        wire.select().wide(0xeb, 8, 4).wide(1, 24, 4).wide(0xff, 8, 4).clocks(2 * code).wide(0x12, 8, 4).release();
        wire.select().wide(0x0b, 8, 4).wide(1, 24, 4).clocks(2 + 2 * code).wide(0x34, 8, 4).release();
        const Texts got = Decoded(wire, with("qpi=true")).transfers();
        QCOMPARE(got[1], std::string("transfer cmd=EB addr=000001 mode=FF lines=4 data=12 data4=12"));
        QCOMPARE(got[2], std::string("transfer cmd=0B addr=000001 lines=4 data=34 data4=34"));
    }
}

void TstQspi::fourByteAddressesFollowTheChip()
{
    Wire wire;
    wire.select().one(0xb7, 8).release().select().one(0x03, 8).one(0x01020304, 32).one(0x12, 8, true).release();
    wire.select().one(0xe9, 8).release().select().one(0x03, 8).one(0x010203, 24).one(0x12, 8, true).release();
    wire.select().one(0x13, 8).one(0x01020304, 32).one(0x12, 8, true).release();
    const Decoded desk(wire);
    QCOMPARE(desk.frame(2).value("addr"), std::string("01020304"));
    const Texts got = desk.transfers();
    QCOMPARE(got[1].substr(0, 45), std::string("transfer cmd=03 addr=01020304 lines=1 data=12"));
    QCOMPARE(got[3].substr(0, 43), std::string("transfer cmd=03 addr=010203 lines=1 data=12"));
    QCOMPARE(got[4].substr(0, 45), std::string("transfer cmd=13 addr=01020304 lines=1 data=12"));
    Wire fixed;
    fixed.select().one(0x03, 8).one(0x01020304, 32).one(0x12, 8, true).release();
    QCOMPARE(Decoded(fixed, with("address=4")).frame(0).value("addr"), std::string("01020304"));
}

void TstQspi::readingGoesOnWithoutACommand()
{
    Wire wire;
    wire.select().one(0xeb, 8).wide(1, 24, 4).wide(0xa5, 8, 4).clocks(4).wide(0x12, 8, 4).release();
    wire.select().wide(2, 24, 4).wide(0x20, 8, 4).clocks(4).wide(0x34, 8, 4).release();
    wire.select().wide(3, 24, 4).wide(0xff, 8, 4).clocks(4).wide(0x56, 8, 4).release();
    wire.select().one(0x06, 8).release();
    const Decoded desk(wire);
    QCOMPARE(desk.transfers(),
             (Texts{"transfer cmd=EB addr=000001 mode=A5 lines=4 data=12 data4=12",
                    "transfer cmd=EB addr=000002 mode=20 lines=4 data=34 data4=34",
                    "transfer cmd=EB addr=000003 mode=FF lines=4 data=56 data4=56", "transfer cmd=06"}));
    QVERIFY(desk.frame(6).text.find("Fast read quad I/O, continued 0x000002") != std::string::npos);
}

void TstQspi::theConfigurationKeepsTheChipReading()
{
    const auto read = [](Wire &wire, bool hasCode, unsigned address, unsigned firstBit, unsigned value) {
        wire.select();
        if (hasCode) {
            wire.one(0xeb, 8);
        }
        wire.wide(address, 24, 4).one(firstBit, 1).clocks(5).wide(value, 8, 4).release();
    };
    Wire wire; // six dummy clocks; the first one keeps the chip reading
    wire.select().one(0x8163, 16).release();
    read(wire, true, 1, 0, 0x12);
    read(wire, false, 2, 0, 0x34);
    read(wire, false, 3, 1, 0x56);
    wire.select().one(0x06, 8).release();
    wire.select().one(0x816b, 16).release(); // not any more
    read(wire, true, 4, 0, 0x78);
    wire.select().one(0x05, 8).release();
    const Texts got = Decoded(wire, with("set=micron")).transfers();
    QCOMPARE(got.size(), std::size_t(8));
    QCOMPARE(got[1], std::string("transfer cmd=EB addr=000001 lines=4 data=12 data4=12"));
    QCOMPARE(got[2], std::string("transfer cmd=EB addr=000002 lines=4 data=34 data4=34"));
    QCOMPARE(got[3], std::string("transfer cmd=EB addr=000003 lines=4 data=56 data4=56"));
    QCOMPARE(got[4], std::string("transfer cmd=06"));
    QCOMPARE(got[6], std::string("transfer cmd=EB addr=000004 lines=4 data=78 data4=78"));
    QCOMPARE(got[7].substr(0, 15), std::string("transfer cmd=05"));
}

void TstQspi::chipsUnderstandCommandsDifferently()
{
    Wire wire;
    wire.select().one(0x38, 8).wide(1, 24, 4).wide(0x12, 8, 4).release();
    for (const char *set : {"set=macronix", "set=micron"}) {
        QCOMPARE(Decoded(wire, with(set)).transfers(), Texts{"transfer cmd=38 addr=000001 lines=4 data=12 data4=12"});
    }
    QCOMPARE(Decoded(wire).frame(0).text, std::string("Enter QPI"));
    Wire micron;
    micron.select().one(0xeb, 8).wide(1, 24, 4).clocks(10).wide(0x12, 8, 4).release();
    QCOMPARE(Decoded(micron, with("set=micron")).transfers(),
             Texts{"transfer cmd=EB addr=000001 lines=4 data=12 data4=12"});
    Wire macronix;
    macronix.select().one(0xeb, 8).wide(1, 24, 4).wide(0xa5, 8, 4).clocks(4).wide(0x12, 8, 4).release();
    macronix.select().wide(2, 24, 4).wide(0x00, 8, 4).clocks(4).wide(0x34, 8, 4).release();
    macronix.select().one(0x35, 8).release();
    QCOMPARE(Decoded(macronix, with("set=macronix")).transfers().size(), std::size_t(3));
    QCOMPARE(Decoded(macronix, with("set=macronix")).transfers()[2], std::string("transfer cmd=35"));
}

void TstQspi::otherCommandsAreAsTheModeTells()
{
    Wire wire;
    wire.select().one(0x88, 8).wide(0xabcdef, 24, 4).wide(0x1234, 16, 4).release();
    QCOMPARE(Decoded(wire, with("mode=144")).transfers(),
             Texts{"transfer cmd=88 addr=ABCDEF lines=4 data=1234 data4=1234"});
    Wire dual;
    dual.select().one(0x88, 8).one(0xabcdef, 24).wide(0x1234, 16, 2).release();
    QCOMPARE(Decoded(dual, with("mode=112")).transfers(),
             Texts{"transfer cmd=88 addr=ABCDEF lines=2 data=1234 data2=1234"});
    Wire plain;
    plain.select().one(0x88, 8).one(0x5a, 8, true).release();
    QCOMPARE(Decoded(plain).transfers(), Texts{"transfer cmd=88 lines=1 data=5A out=00 in=5A"});
}

void TstQspi::dataMayComeWithoutCommands()
{
    Wire wire;
    wire.select().wide(0x12345678, 32, 4).release();
    QCOMPARE(Decoded(wire, with("mode=444")).transfers(), Texts{"transfer lines=4 data=12345678 data4=12345678"});
    QCOMPARE(Decoded(wire, with("mode=444,word_order=little")).frame(0).value("data"), std::string("21436587"));
    QCOMPARE(Decoded(wire, with("mode=444,word=4,word_order=little")).frame(0).value("data"), std::string("43218765"));
}

void TstQspi::aSelectWithFewClocksIsShort()
{
    Wire wire;
    wire.select().clocks(7).release().select().release().select().clocks(1).release().select().one(6, 8).release();
    const Decoded desk(wire);
    QCOMPARE(desk.transfers(), (Texts{"short n=7", "short n=1", "transfer cmd=06"}));
    QCOMPARE(desk.frame(0).text, std::string("Select with 7 clocks"));
    const auto crosses = desk.markers(csChannel);
    QCOMPARE(crosses.size(), std::size_t(2));
    for (std::size_t i = 0; i < 2; ++i) {
        QCOMPARE(crosses[i].type, MarkerType::ErrorX);
        QCOMPARE(std::int64_t(crosses[i].sample), desk.frame(i).last);
    }
}

void TstQspi::glitchesOfTheSelectArePassedOver()
{
    Wire wire;
    wire.select().one(0x05, 8);
    wire.cs().set(true).hold(1).set(false);
    wire.wait(4).one(0x5a, 8, true).release();
    QCOMPARE(Decoded(wire, with("glitch=2")).transfers(), Texts{"transfer cmd=05 lines=1 data=5A out=00 in=5A"});
    QCOMPARE(Decoded(wire, with("glitch=1")).transfers().size(), std::size_t(2));
}

void TstQspi::theClockMayFall()
{
    const Wire wire = readWire(0xeb, 4, true, 4, 4);
    const Decoded desk(wire, with("clock_edge=falling"), -1, 0, true);
    QCOMPARE(desk.transfers(), Texts{"transfer cmd=EB addr=ABCDEF mode=F0 lines=4 data=1234 data4=1234"});
    QCOMPARE(desk.markers(0)[0].type, MarkerType::DownArrow);
}

void TstQspi::theLastEdgeMayFallTogetherWithTheRelease()
{
    Wire wire;
    wire.select().one(0x05, 8).one(0x5a >> 1, 7, true).wait(half);
    TestCapture capture(sampleRate, wire.now() + 50);
    const auto before = wire.capture();
    for (std::uint32_t i = 0; i < 6; ++i) {
        lux::detail::RunControl control;
        lux::ChannelReader reader(before->root(i), control, wire.now());
        const bool level = reader.level();
        std::vector<std::int64_t> edges;
        while (reader.hasEdge()) {
            edges.push_back(reader.nextEdge());
        }
        if (i <= csChannel) {
            edges.push_back(wire.now());
        }
        if (i == io0Channel + 1 && reader.level()) {
            edges.push_back(wire.now() - half);
        }
        capture.channel(i, level, edges);
    }
    DecodeDesk desk(std::make_unique<QspiAnalyzer>(), allLines);
    desk.run(capture);
    QCOMPARE(desk.summaries()[0], std::string("transfer cmd=05 lines=1 data=5A out=00 in=5A"));
    QCOMPARE(decoderChecks::faultOf(desk, wire.now() + 50), std::string());
}

void TstQspi::theFirstEdgeMayFallTogetherWithTheSelect()
{
    EdgeLine clk(false);
    EdgeLine cs(true);
    EdgeLine io0(true);
    cs.hold(20).set(false).holdUntil(110).set(true);
    clk.hold(20);
    for (int i = 0; i < 8; ++i) {
        clk.bit(true, half).bit(false, half);
    }
    io0.hold(25).set(false).holdUntil(45).set(true).holdUntil(95).set(false); // 1001 1111
    TestCapture capture(sampleRate, 200);
    capture.channel(0, clk).channel(csChannel, cs).channel(io0Channel, io0);
    DecodeDesk desk(std::make_unique<QspiAnalyzer>(), "clk=0,cs=1,io0=2,io1=none");
    QCOMPARE(desk.run(capture).frame(0).value("cmd"), std::string("9F"));
}

void TstQspi::dummyClocksMayBeSet()
{
    const Decoded desk(readWire(0xeb, 4, true, 6, 4), with("dummy=6"));
    QCOMPARE(desk.transfers(), Texts{"transfer cmd=EB addr=ABCDEF mode=F0 lines=4 data=1234 data4=1234"});
    QCOMPARE(Decoded(readWire(0xbb, 2, true, 0, 2), with("dummy=0")).frame(0).value("data"), std::string("1234"));
}

void TstQspi::linesMayBeListed()
{
    const Wire wire = readWire(0xeb, 4, true, 4, 4);
    for (const char *settings : {"clk=0,cs=1,io=2-5", "clk=0,cs=1,io=2+3+4+5", "clk=0,cs=1,io0=2,io1=3,io=9+9+4+5"}) {
        QCOMPARE(Decoded(wire, settings).frame(0).value("data"), std::string("1234"));
    }
    DecodeDesk desk(std::make_unique<QspiAnalyzer>());
    for (const char *text : {"2+", "+2", "a", "5-2", "1+2+3+4+5", "99", "2-", "1 2"}) {
        QCOMPARE(desk.edit({{"clk", "0"}, {"cs", "1"}, {"io0", "2"}, {"io", text}}),
                 std::string("The data lines are up to four channels, such as 3+2+5+4 or 4-7"));
    }
}

void TstQspi::settingsThatDoNotGoTogetherAreRefused()
{
    DecodeDesk desk(std::make_unique<QspiAnalyzer>());
    QVERIFY(!desk.edit({{"clk", "0"}}).empty());
    QCOMPARE(desk.edit({{"clk", "0"}, {"cs", "1"}}), std::string("Choose a channel for IO0 or IO1"));
    QCOMPARE(desk.edit({{"io1", "3"}}), std::string());
    QCOMPARE(desk.edit({{"qpi", "true"}}), std::string("Choose channels for all four data lines"));
    QCOMPARE(desk.edit({{"io0", "2"}, {"io2", "4"}, {"io3", "5"}}), std::string());
    QVERIFY(!desk.edit({{"io3", "0"}}).empty());
}

void TstQspi::linesThatShareAChannelAreRefused()
{
    for (const char *text : {"2-4+2", "2+2", "0-3", "2+1", "2+3+4+4"}) {
        DecodeDesk desk(std::make_unique<QspiAnalyzer>());
        QCOMPARE(desk.edit({{"clk", "0"}, {"cs", "1"}, {"io", text}}),
                 std::string("All lines must be different channels"));
    }
    DecodeDesk desk(std::make_unique<QspiAnalyzer>());
    QCOMPARE(desk.edit({{"clk", "0"}, {"cs", "1"}, {"io2", "2"}, {"io", "2-5"}}),
             std::string("All lines must be different channels"));
    QCOMPARE(desk.edit({{"io", "3-6"}}), std::string());
}

void TstQspi::bubblesGoFromShortToLong()
{
    const Decoded desk(readWire(0x6b, 1, false, 8, 4));
    const Channel cs(0, csChannel);
    const Channel io0(0, io0Channel);
    QCOMPARE(desk.bubble(0, cs, DisplayBase::Hexadecimal),
             (Texts{"T", "0x6B", "Fast read quad output", "Fast read quad output 0xABCDEF",
                    "Fast read quad output 0xABCDEF, 2 bytes", "Fast read quad output 0xABCDEF, 2 bytes: 0x12 0x34"}));
    QCOMPARE(desk.bubble(1, io0, DisplayBase::Decimal),
             (Texts{"C", "107", "Command 107", "Fast read quad output", "Command 107: Fast read quad output"}));
    QCOMPARE(desk.bubble(3, io0, DisplayBase::Decimal), (Texts{"X", "Dummy", "Dummy, 8 clocks"}));
    QCOMPARE(desk.bubble(4, io0, DisplayBase::Decimal), (Texts{"18", "Read 18"}));
    QVERIFY(desk.bubble(0, io0, DisplayBase::Decimal).empty());
    QVERIFY(desk.bubble(1, cs, DisplayBase::Decimal).empty());
}

void TstQspi::exportsHaveTheDataOfEachDirection()
{
    Wire wire;
    wire.select().one(0x03, 8).one(0, 24).one(0x4142, 16, true).release();
    wire.select().one(0x32, 8).one(0, 24).wide(0x6162, 16, 4).release();
    wire.select().one(0x6b, 8).one(0, 24).clocks(8).wide(0x4344, 16, 4).release();
    const Decoded desk(wire);
    QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("out")).toStdString();
    QCOMPARE(decoderChecks::exported(desk, path + ".bin", QspiSettings::ReadData), std::string("ABCD"));
    QCOMPARE(decoderChecks::exported(desk, path + ".bin", QspiSettings::WrittenData), std::string("ab"));
    const std::string csv = decoderChecks::exported(desk, path + ".csv", 0);
    QVERIFY2(csv.find(",transfer,03,000000,") != std::string::npos, csv.c_str());
    QVERIFY2(csv.find(",v,n,out,in,data2,data4,text\n") != std::string::npos, csv.c_str());
    QVERIFY2(csv.find(",1,4142,,,0000000000,0000004142,,,") != std::string::npos, csv.c_str());
    QVERIFY2(csv.find(",4,4344,,,,,,4344,") != std::string::npos, csv.c_str());
    const std::string text = decoderChecks::exported(desk, path + ".txt", QspiSettings::Transfers);
    QCOMPARE(std::count(text.begin(), text.end(), '\n'), std::ptrdiff_t(3));
    QVERIFY2(text.find(desk.frame(0).text) != std::string::npos, text.c_str());
    const std::string lines = decoderChecks::exported(desk, path + ".csv", QspiSettings::Transfers);
    QVERIFY2(lines.starts_with("time_s,first_sample,last_sample,text\n"), lines.c_str());
    QCOMPARE(std::count(lines.begin(), lines.end(), '\n'), std::ptrdiff_t(4));
}

void TstQspi::whatTheCaptureCutsIsNotShown()
{
    Wire wire;
    wire.select().one(0x05, 8).one(0x5a, 8, true).release();
    wire.select().one(0xeb, 8).wide(1, 24, 4).wide(0xff, 8, 4).clocks(4).wide(0x1234, 16, 4).release();
    const Decoded whole(wire);
    for (std::int64_t length = 1; length < wire.now(); ++length) {
        const Decoded cut(wire, allLines, length);
        QCOMPARE(decoderChecks::faultOf(cut, length), std::string());
        const Texts got = cut.transfers();
        QCOMPARE(got.size(), std::size_t(length > wire.ends[1] + 1 ? 2 : length > wire.ends[0] + 1 ? 1 : 0));
        for (std::size_t i = 0; i < got.size(); ++i) {
            QCOMPARE(got[i], whole.transfers()[i]);
        }
    }
    for (std::int64_t from = wire.begins[0] + 1; from < wire.ends[0]; from += 3) {
        QCOMPARE(Decoded(wire, allLines, -1, from).transfers(), Texts{whole.transfers()[1]});
    }
}

void TstQspi::aCaptureThatTheSelectTriggersBeginsWithATransfer()
{
    Wire wire;
    wire.select().one(0x05, 8).one(0x5a, 8, true).release();
    wire.select().one(0x9f, 8).one(0x12, 8, true).release();
    const Texts whole = Decoded(wire).transfers();
    // The first rise comes 12 samples behind the select, and a clock is 10 samples.
    QCOMPARE(Decoded(wire, allLines, -1, wire.begins[0]).transfers(), whole);
    QCOMPARE(Decoded(wire, allLines, -1, wire.begins[0] + 1).transfers(), Texts{whole[1]});
    Wire unknown; // a pause within a transfer, behind which no command comes
    unknown.select().wait(100).one(0xf7, 8).one(0x5a, 8, true).release();
    QCOMPARE(Decoded(unknown, allLines, -1, unknown.begins[0] + 1).transfers(), Texts());
    QCOMPARE(Decoded(unknown).transfers().size(), std::size_t(1));
}

void TstQspi::theSimulationIsDecodedAsItWasSent_data()
{
    QTest::addColumn<QString>("settings");
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("block");
    QTest::newRow("all lines") << allLines << 100000000 << 100000;
    QTest::newRow("QPI, small blocks") << QString::fromStdString(with("qpi=true")) << 1000 << 61;
    QTest::newRow("falling edges, 4-byte addresses")
        << QString::fromStdString(with("clock_edge=falling,address=4")) << 500000000 << 1048576;
    QTest::newRow("data alone") << QString::fromStdString(with("mode=444")) << 100000000 << 65536;
    QTest::newRow("other chips") << QString::fromStdString(with("set=micron")) << 100000000 << 65536;
}

void TstQspi::theSimulationIsDecodedAsItWasSent()
{
    QFETCH(QString, settings);
    QFETCH(int, rate);
    QFETCH(int, block);
    DecodeDesk desk(std::make_unique<QspiAnalyzer>(), settings.toStdString());
    desk.run(*desk.simulate(rate, rate == 1000 ? 100000 : 2000000, block));
    const bool isQpi = settings.contains(QLatin1String("qpi"));
    const bool isRaw = settings.contains(QLatin1String("444"));
    const Texts codes = isQpi ? Texts{"EB", "06", "02", "05", "0B"}
                              : Texts{"9F", "06", "02", "05", "03", "0B", "3B", "BB", "6B", "EB", "32", "0D", "ED"};
    const int digits = settings.contains(QLatin1String("address=4")) ? 8 : 6;
    std::string ongoing; // the command that the transfer before keeps
    unsigned continued = 0;
    unsigned number = 0;
    for (const DecodedFrame &frame : desk.frames()) {
        if (frame.kind != "transfer" && frame.kind != "short") {
            continue;
        }
        if (isRaw) {
            QCOMPARE(frame.value("data"), QString::asprintf("%08X", number).toStdString());
        } else if (ongoing.empty() && number % 17 == 16) {
            QCOMPARE(frame.summary(), std::string(isQpi ? "short n=1" : "short n=3"));
        } else {
            const bool isContinued = !ongoing.empty();
            const std::string code = isContinued ? ongoing : codes[number % codes.size()];
            continued += isContinued ? 1 : 0;
            QCOMPARE(frame.value("cmd"), code);
            const bool hasAddress = code != "9F" && code != "06" && code != "05";
            const std::string address = QString::asprintf("%0*X", digits, number).toStdString();
            QCOMPARE(frame.value("addr"), hasAddress ? address : std::string("(absent)"));
            std::string data;
            for (unsigned i = 0; i < 4; ++i) {
                data += QString::asprintf("%02X", (number + i) & 0xffU).toStdString();
            }
            QCOMPARE(frame.value("data"), code == "06" ? std::string("(absent)") : data);
            const bool keeps = frame.value("mode") != "(absent)" && !isContinued && number / codes.size() % 2 != 0;
            QVERIFY(frame.value("mode") == (keeps ? "A5" : "FF") || frame.value("mode") == "(absent)");
            ongoing = keeps ? code : std::string();
        }
        ++number;
    }
    QVERIFY(number > 50);
    QVERIFY(isRaw || continued > 0 || settings.contains(QLatin1String("micron")));
}

void TstQspi::itIsOfferedForModelsThatAreFastEnough()
{
    QCOMPARE(std::string(lux::detail::modelsOf<QspiAnalyzer>()), std::string("0,4,8,9,65"));
}

void TstQspi::randomEdgesGiveFramesInOrder()
{
    constexpr std::int64_t length = 60000;
    for (const std::int64_t mean : {1, 4, 30}) {
        for (const char *settings : {"set=winbond", "set=macronix,mode=144", "mode=444,word=3", "qpi=true,glitch=5"}) {
            TestCapture capture(sampleRate, length);
            for (std::uint32_t i = 0; i < 6; ++i) {
                const std::int64_t distance = i == csChannel ? 60 * mean : mean;
                capture.channel(i, i % 2 == 0, decoderChecks::randomEdges(i + 7, distance, length));
            }
            DecodeDesk desk(std::make_unique<QspiAnalyzer>(), with(settings));
            QCOMPARE(decoderChecks::faultOf(desk.run(capture), length), std::string());
        }
    }
}

QTEST_GUILESS_MAIN(TstQspi)
#include "tst_Qspi.moc"
