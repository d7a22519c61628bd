#include "DecoderChecks.h"
#include "JtagAnalyzer.h"
#include "WireBundle.h"

#include <QtTest>

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <set>
#include <string>
#include <vector>

using Texts = std::vector<std::string>;
using Desk = BundleDesk<JtagAnalyzer>;

namespace {

constexpr std::uint32_t tck = 0;
constexpr std::uint32_t tms = 1;
constexpr std::uint32_t tdi = 2;
constexpr std::uint32_t tdo = 3;
constexpr std::uint32_t trst = 4;
constexpr const char *lines = "tck=0,tms=1,tdi=2,tdo=3";
constexpr const char *noStates = "tck=0,tms=1,tdi=2,tdo=3,states=false";

/// A port's lines by IEEE 1149.1-2013, 4.3 to 4.6: they change at the fall of TCK; a clock is 10 samples.
class Port : public WireBundle {
public:
    explicit Port(std::int64_t rest = 20, bool isReset = false) : WireBundle(5, (isReset ? 0U : 1U << trst) | 1U << tms)
    {
        wait(rest);
    }
    Port &clock(bool mode, bool in = false, bool out = false)
    {
        set(tck, false).set(tms, mode).set(tdi, in).set(tdo, out).wait(5);
        rises.push_back(now());
        set(tck, true).wait(5);
        return *this;
    }
    Port &lead(std::initializer_list<int> modes)
    {
        for (const int mode : modes) {
            clock(mode != 0);
        }
        return *this;
    }
    Port &reset() { return lead({1, 1, 1, 1, 1, 0}); }
    /// Bits in the order of time, the last one leaves the shift state.
    Port &shift(const std::string &in, const std::string &out)
    {
        starts.push_back(rises.back());
        for (std::size_t i = 0; i < in.size(); ++i) {
            clock(i + 1 == in.size(), in[i] == '1', out[i] == '1');
        }
        ends.push_back(rises.back());
        return *this;
    }
    /// A whole scan from Run-Test/Idle and back.
    Port &ir(const std::string &in, const std::string &out)
    {
        lead({1, 1, 0, 0}).shift(in, out);
        return lead({1, 0});
    }
    Port &dr(const std::string &in, const std::string &out)
    {
        lead({1, 0, 0}).shift(in, out);
        return lead({1, 0});
    }

    std::vector<std::int64_t> rises;
    std::vector<std::int64_t> starts; ///< the edge that enters a shift
    std::vector<std::int64_t> ends;   ///< the edge of its last bit
};

std::string repeated(const std::string &text, int count)
{
    std::string all;
    for (int i = 0; i < count; ++i) {
        all += text;
    }
    return all;
}

Texts statesOf(const Desk &desk)
{
    Texts names;
    for (const DecodedFrame &frame : desk.frames()) {
        if (frame.kind == "state") {
            names.push_back(frame.value("name"));
        }
    }
    return names;
}

std::vector<DecodedFrame> ofKind(const std::vector<DecodedFrame> &frames, const std::string &kind)
{
    std::vector<DecodedFrame> some;
    std::copy_if(frames.begin(), frames.end(), std::back_inserter(some),
                 [&](const DecodedFrame &frame) { return frame.kind == kind; });
    return some;
}

} // namespace

class TstJtag : public QObject {
    Q_OBJECT
private slots:
    void shiftsHaveBothDirections();
    void aShiftMayHaveAnyLength_data();
    void aShiftMayHaveAnyLength();
    void pausesAreJoined();
    void captureWithoutShiftGivesNoFrame();
    void allSixteenStatesAreSeen();
    void fiveClocksLeadToResetFromEachState();
    void stateFramesFollowEachOther();
    void theResetLineCutsAShift();
    void aCaptureMayBeginWithinAReset();
    void theHighestBitMayComeFirst();
    void aLateOutputIsReadLater();
    void linesMayBeMissing();
    void theCodeOfAllOnesIsBypass();
    void cutEndsShowNothingFalse();
    void aCaptureThatBeginsBetweenClocksShowsNothingFalse();
    void aSlowlySampledCaptureThatBeginsBetweenClocksShowsNothingFalse();
    void positionsAreWiderThan32Bits();
    void settingsThatDoNotGoTogetherAreRefused();
    void textsGoFromShortToLong();
    void vectorsAreExported();
    void framesAreExported();
    void theSimulationIsDecodedAsItWasSent_data();
    void theSimulationIsDecodedAsItWasSent();
    void randomEdgesGiveFramesInOrder();
};

void TstJtag::shiftsHaveBothDirections()
{
    Port port;
    port.reset().ir("0111", "1000").dr("10000001", "00001111");
    const Desk desk(port, noStates);
    QCOMPARE(desk.summaries(), (Texts{"shift reg=IR n=4 tdi=E tdo=1", "shift reg=DR n=8 tdi=81 tdo=F0"}));
    for (std::uint64_t i = 0; i < 2; ++i) {
        QCOMPARE(desk.frame(i).first, port.starts[i]);
        QCOMPARE(desk.frame(i).last, port.ends[i]);
    }
    QCOMPARE(desk.markers(tck).size(), std::size_t(12)); // one a bit
}

void TstJtag::aShiftMayHaveAnyLength_data()
{
    QTest::addColumn<int>("bits");
    for (const int bits : {1, 2, 3, 4, 5, 31, 32, 63, 64, 65, 127, 128, 129, 1000}) {
        QTest::addRow("%d bits", bits) << bits;
    }
}

void TstJtag::aShiftMayHaveAnyLength()
{
    QFETCH(int, bits);
    const std::string ones(std::size_t(bits), '1');
    std::string last(std::size_t(bits), '0');
    last.back() = '1';
    Port port;
    port.reset().dr(ones, last);
    std::string all = std::string(1, "F137"[bits % 4]) + std::string(std::size_t((bits - 1) / 4), 'F');
    std::string high = std::string(1, "8124"[bits % 4]) + std::string(std::size_t((bits - 1) / 4), '0');
    QCOMPARE(Desk(port, noStates).summaries(),
             Texts{"shift reg=DR n=" + std::to_string(bits) + " tdi=" + all + " tdo=" + high});
}

void TstJtag::pausesAreJoined()
{
    Port port;
    // Three bits, a pause of three clocks, two bits, a second pause, one bit.
    port.reset().lead({1, 0, 0}).shift("110", "001").lead({0, 0, 0, 1, 0}).shift("10", "01").lead({0, 1, 0});
    port.shift("1", "1").lead({1, 0});
    const Desk desk(port, noStates);
    QCOMPARE(desk.summaries(), Texts{"shift reg=DR n=6 tdi=2B tdo=34"});
    QCOMPARE(desk.frame(0).first, port.starts.front());
    QCOMPARE(desk.frame(0).last, port.ends.back());
}

void TstJtag::captureWithoutShiftGivesNoFrame()
{
    Port port;
    port.reset().lead({1, 0, 1, 1, 0}).lead({1, 1, 0, 1, 0, 1, 1, 0}).dr("1", "0");
    QCOMPARE(Desk(port, noStates).summaries(), Texts{"shift reg=DR n=1 tdi=1 tdo=0"});
}

void TstJtag::allSixteenStatesAreSeen()
{
    Port port;
    port.reset().lead({1, 0, 0}).shift("1", "1").lead({0, 1, 1, 0});
    port.lead({1, 1, 0, 0}).shift("1", "1").lead({0, 1, 1, 0}).lead({1});
    const Desk desk(port, lines);
    const Texts names = statesOf(desk);
    QCOMPARE(std::set<std::string>(names.begin(), names.end()).size(), std::size_t(16));
    QCOMPARE(names, (Texts{"Select-DR-Scan", "Select-IR-Scan", "Test-Logic-Reset", "Run-Test/Idle",  "Select-DR-Scan",
                           "Capture-DR",     "Shift-DR",       "Exit1-DR",         "Pause-DR",       "Exit2-DR",
                           "Update-DR",      "Run-Test/Idle",  "Select-DR-Scan",   "Select-IR-Scan", "Capture-IR",
                           "Shift-IR",       "Exit1-IR",       "Pause-IR",         "Exit2-IR",       "Update-IR",
                           "Run-Test/Idle"}));
}

void TstJtag::fiveClocksLeadToResetFromEachState()
{
    for (int number = 0; number < 16; ++number) {
        auto state = JtagState(number);
        for (int i = 0; i < 5; ++i) {
            state = nextState(state, true);
        }
        QCOMPARE(state, JtagState::TestLogicReset);
    }
}

void TstJtag::stateFramesFollowEachOther()
{
    Port port;
    port.reset().dr("1010", "0101").lead({0, 0, 0, 1});
    std::int64_t next = -1;
    for (const DecodedFrame &frame : Desk(port, lines).frames()) {
        if (frame.kind != "state") {
            continue;
        }
        QVERIFY(next < 0 || frame.first == next);
        next = frame.last + 1;
        QVERIFY(std::find(port.rises.begin(), port.rises.end(), next) != port.rises.end());
    }
    QCOMPARE(Desk(port, lines).frames().back().summary(), std::string("state name=Run-Test/Idle clocks=4"));
}

void TstJtag::theResetLineCutsAShift()
{
    Port port;
    port.reset().lead({1, 0, 0}).clock(false, true, true).clock(false, false, true);
    port.set(trst, false).wait(20);
    port.clock(false).clock(false).set(trst, true).wait(3);
    port.lead({0}).ir("11", "01");
    const Desk desk(port, std::string(noStates) + ",trst=4");
    QCOMPARE(desk.summaries(), (Texts{"cut n=2 tdi=1 tdo=3", "shift reg=IR n=2 tdi=3 tdo=2"}));
    QCOMPARE(desk.frame(0).text, std::string("Cut, 2 bits: TDI 0x1, TDO 0x3, cut by TRST"));
    const Texts states = statesOf(Desk(port, std::string(lines) + ",trst=4"));
    QCOMPARE(std::count(states.begin(), states.end(), "Test-Logic-Reset"), std::ptrdiff_t(2));
}

void TstJtag::aCaptureMayBeginWithinAReset()
{
    for (const int ones : {0, 1, 2, 3}) {
        Port port(20, true);
        port.clock(true).clock(false).set(trst, true).wait(3);
        for (int i = 0; i < ones; ++i) {
            port.clock(true);
        }
        port.lead({0}).dr("1101", "0110");
        QCOMPARE(Desk(port, std::string(noStates) + ",trst=4").summaries(), Texts{"shift reg=DR n=4 tdi=B tdo=6"});
    }
}

void TstJtag::theHighestBitMayComeFirst()
{
    Port port;
    port.reset().dr("10000", "11000");
    const Desk desk(port, std::string(noStates) + ",bit_order=msb");
    QCOMPARE(desk.summaries(), Texts{"shift reg=DR n=5 tdi=10 tdo=18"});
    QCOMPARE(desk.frame(0).text, std::string("DR, 5 bits: TDI 0x10, TDO 0x18"));
}

void TstJtag::aLateOutputIsReadLater()
{
    // TDO comes seven samples behind the fall of TCK, two behind the rise at which it is wanted.
    WireBundle wires(5, 1U << tms);
    wires.wait(20);
    const auto clock = [&wires](bool mode, bool out) {
        wires.set(tck, false).set(tms, mode).wait(5).set(tck, true).wait(2).set(tdo, out).wait(3);
    };
    for (const int mode : {1, 1, 1, 1, 1, 0, 1, 0, 0}) {
        clock(mode != 0, false);
    }
    for (const char bit : std::string("1011")) {
        clock(false, bit == '1');
    }
    clock(true, false);
    clock(true, false);
    clock(false, false);
    QCOMPARE(Desk(wires, std::string(noStates) + ",cable_delay=2000").summaries(),
             Texts{"shift reg=DR n=5 tdi=0 tdo=D"});
    QCOMPARE(Desk(wires, std::string(noStates) + ",cable_delay=1000").summaries(),
             Texts{"shift reg=DR n=5 tdi=0 tdo=1A"}); // a clock late
}

void TstJtag::linesMayBeMissing()
{
    Port port;
    port.reset().dr("1000", "0110");
    QCOMPARE(Desk(port, "tck=0,tms=1,tdi=2,states=false").summaries(), Texts{"shift reg=DR n=4 tdi=1 tdo=null"});
    const Desk desk(port, "tck=0,tms=1,tdo=3,states=false");
    QCOMPARE(desk.summaries(), Texts{"shift reg=DR n=4 tdi=null tdo=6"});
    QCOMPARE(desk.frame(0).text, std::string("DR, 4 bits: TDO 0x6"));
}

void TstJtag::theCodeOfAllOnesIsBypass()
{
    Port port;
    port.reset().ir("11111", "10000").ir("11110", "10000").dr("11111", "00000");
    const Desk desk(port, noStates);
    QCOMPARE(desk.frame(0).text, std::string("IR, 5 bits: TDI 0x1F, TDO 0x01 (BYPASS)"));
    QCOMPARE(desk.frame(1).text, std::string("IR, 5 bits: TDI 0x0F, TDO 0x01"));
    QCOMPARE(desk.frame(2).text, std::string("DR, 5 bits: TDI 0x1F, TDO 0x00"));
}

void TstJtag::cutEndsShowNothingFalse()
{
    Port port;
    port.reset().ir("0111", "1000").dr("10000001", "00001111");
    const auto whole = Desk(port, noStates).frames();
    for (std::int64_t length = 1; length <= port.now(); ++length) {
        const auto cut = Desk(port, noStates, 1000000, length).frames();
        QCOMPARE(decoderChecks::faultOfCut(cut, whole), std::string());
        // A shift may go on behind a pause: it is known when Update is reached.
        QCOMPARE(cut.size() > 0, length > port.ends[0] + 10);
    }
    QCOMPARE(
        decoderChecks::faultOfCut(Desk(port, lines, 1000000, port.now() - 30).frames(), Desk(port, lines).frames()),
        std::string());
}

/// Each begin within one of several scans; what is shown are the last of the whole capture's frames.
void TstJtag::aCaptureThatBeginsBetweenClocksShowsNothingFalse()
{
    const std::vector<int> modes = {1, 1, 0, 0, 0, 0, 1, 1, 0, 0, 1, 0, 0, 0, 0, 1, 0, 1, 0, 0, 1,
                                    1, 1, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1, 0, 1, 0, 0, 0, 1, 1, 0};
    Port whole;
    for (const int mode : modes) {
        whole.clock(mode != 0);
    }
    for (const std::string kind : {"state", "shift"}) {
        const auto all = ofKind(Desk(whole, lines).frames(), kind);
        for (std::size_t from = 1; from < modes.size(); ++from) {
            Port late(6);
            for (std::size_t i = from; i < modes.size(); ++i) {
                late.clock(modes[i] != 0);
            }
            const std::int64_t offset = whole.rises[from] - late.rises[0];
            const auto got = ofKind(Desk(late, lines).frames(), kind);
            QVERIFY(got.size() <= all.size());
            for (std::size_t i = 0; i < got.size(); ++i) {
                const DecodedFrame &expected = all[all.size() - got.size() + i];
                QCOMPARE(got[i].first + offset, expected.first);
                QCOMPARE(got[i].summary(), expected.summary());
            }
            QVERIFY(from > 20 || !got.empty());
        }
    }
}

/// A clock of 2.2 samples: its first rise may come at the third one, and the next one two behind it.
void TstJtag::aSlowlySampledCaptureThatBeginsBetweenClocksShowsNothingFalse()
{
    WireBundle port(4, 1U << tck);
    port.wait(1).set(tck, false);
    const int modes[] = {0, 0, 1, 1, 0, 0, 1, 1, 0, 0, 0, 0, 1, 1, 0};
    for (int i = 0; i < 15; ++i) {
        port.wait(i == 0 ? 1 : 0).set(tck, false).set(tms, modes[i] != 0).wait(1).set(tck, true).wait(1);
    }
    QCOMPARE(Desk(port, noStates).summaries(), Texts());
}

void TstJtag::positionsAreWiderThan32Bits()
{
    constexpr std::int64_t far = std::int64_t(1) << 34;
    Port port;
    port.wait(far);
    port.reset().dr("1010", "0000");
    const Desk desk(port, noStates);
    QCOMPARE(desk.summaries(), Texts{"shift reg=DR n=4 tdi=5 tdo=0"});
    QCOMPARE(desk.frame(0).first, port.starts[0]);
    QVERIFY(desk.frame(0).first > far);
}

void TstJtag::settingsThatDoNotGoTogetherAreRefused()
{
    DecodeDesk desk(std::make_unique<JtagAnalyzer>());
    QCOMPARE(desk.edit({{"tck", "0"}, {"tms", "1"}}), std::string("Choose a channel for TDI or TDO"));
    QVERIFY(!desk.edit({{"tdo", "1"}}).empty());
    QCOMPARE(desk.edit({{"tdo", "2"}}), std::string());
}

void TstJtag::textsGoFromShortToLong()
{
    Port port;
    port.reset().ir("0100", "1000").dr(repeated("10", 40), repeated("0", 80));
    const Desk desk(port, lines);
    const auto all = desk.frames();
    const auto at = [&](const std::string &kind, int nth) {
        for (std::uint64_t i = 0; i < all.size(); ++i) {
            if (all[i].kind == kind && nth-- == 0) {
                return i;
            }
        }
        return std::uint64_t(0);
    };
    const std::uint64_t ir = at("shift", 0);
    QCOMPARE(desk.bubble(ir, Channel(0, tdi), DisplayBase::Binary),
             (Texts{"IR", "IR 0b0010", "TDI IR 0b0010, 4 bits"}));
    QCOMPARE(desk.bubble(ir, Channel(0, tdo), DisplayBase::Decimal), (Texts{"IR", "IR 1", "TDO IR 1, 4 bits"}));
    QVERIFY(desk.bubble(ir, Channel(0, tms), DisplayBase::Decimal).empty());
    const std::uint64_t state = at("state", 2);
    QCOMPARE(desk.bubble(state, Channel(0, tms), DisplayBase::Decimal), (Texts{"TLR", "Test-Logic-Reset"}));
    QVERIFY(desk.bubble(state, Channel(0, tdi), DisplayBase::Decimal).empty());
    QCOMPARE(all[at("shift", 1)].text, "DR, 80 bits: TDI 0x" + repeated("5", 20) + ", TDO 0x" + repeated("0", 20));
}

void TstJtag::vectorsAreExported()
{
    Port port;
    port.reset().ir("0100", "1000").dr("110000000", "000000001").lead({0, 0, 0, 0, 1, 0, 1, 1, 0});
    const Desk desk(port, lines);
    QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("out.svf")).toStdString();
    QCOMPARE(decoderChecks::exported(desk, path, JtagSettings::Vectors),
             std::string("ENDIR IDLE;\nENDDR IDLE;\nSTATE RESET;\nSIR 4 TDI (2) TDO (1);\nSDR 9 TDI (003) TDO (100);\n"
                         "RUNTEST 5 TCK;\n"));
}

void TstJtag::framesAreExported()
{
    Port port;
    port.reset().ir("0100", "1000").lead({0, 0, 0, 0, 1});
    QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("out.csv")).toStdString();
    const std::string csv = decoderChecks::exported(Desk(port, lines), path, 0);
    QVERIFY2(csv.find(",kind,reg,n,tdi,tdo,name,clocks,text\n") != std::string::npos, csv.c_str());
    QVERIFY2(csv.find(",shift,IR,4,2,1,,,") != std::string::npos, csv.c_str());
    QVERIFY2(csv.find(",state,,,,,Run-Test/Idle,") != std::string::npos, csv.c_str());
}

void TstJtag::theSimulationIsDecodedAsItWasSent_data()
{
    QTest::addColumn<QString>("settings");
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("block");
    QTest::newRow("10 MHz") << noStates << 10000000 << 50000;
    QTest::newRow("20 kHz, small blocks") << noStates << 20000 << 53;
    QTest::newRow("500 MHz") << noStates << 500000000 << 100000;
    QTest::newRow("with TRST") << QStringLiteral("%1,trst=4").arg(QLatin1String(noStates)) << 10000000 << 50000;
}

/// Scan n: the number in five bits of the instruction, then in 32 bits of data, or in 100 of which 68 are zeros. TRST
/// cuts a shift of three bits before each eleventh one.
void TstJtag::theSimulationIsDecodedAsItWasSent()
{
    QFETCH(QString, settings);
    QFETCH(int, rate);
    QFETCH(int, block);
    DecodeDesk desk(std::make_unique<JtagAnalyzer>(), settings.toStdString());
    const auto capture = desk.simulate(rate, rate >= 500000000 ? 20000000 : 1000000, block);
    desk.run(*capture);
    const Texts got = desk.summaries();
    QVERIFY(got.size() > 100);
    const auto digits = [](std::uint32_t value) { return QString::number(value, 16).toUpper().toStdString(); };
    Texts expected;
    for (std::uint32_t n = 0; expected.size() < got.size(); ++n) {
        if (settings.contains(QLatin1String("trst")) && n % 11 == 10) {
            expected.push_back("cut n=3 tdi=" + digits(n & 7U) + " tdo=" + digits(~n & 7U));
        }
        expected.push_back("shift reg=IR n=5 tdi=" + digits(n & 0x1fU) + " tdo=" + digits(~n & 0x1fU));
        if (n % 7 == 0) {
            expected.push_back("shift reg=DR n=100 tdi=" + digits(n) + " tdo=" + repeated("F", 17) + digits(~n));
        } else {
            expected.push_back("shift reg=DR n=32 tdi=" + digits(n) + " tdo=" + digits(~n));
        }
    }
    expected.resize(got.size());
    QCOMPARE(got, expected);
}

void TstJtag::randomEdgesGiveFramesInOrder()
{
    constexpr std::int64_t length = 20000;
    for (const std::int64_t mean : {1, 2, 10, 100, 2000}) {
        for (const char *settings : {"tck=0,tms=1,tdi=2,tdo=3,trst=4", "tck=0,tms=1,tdi=2,tdo=3,cable_delay=50000"}) {
            TestCapture capture(1000000, length);
            for (std::uint32_t i = 0; i < 5; ++i) {
                const std::int64_t distance = i == trst ? 100 * mean : mean;
                capture.channel(i, i % 2 == 0, decoderChecks::randomEdges(i, distance, length));
            }
            DecodeDesk desk(std::make_unique<JtagAnalyzer>(), settings);
            QCOMPARE(decoderChecks::faultOf(desk.run(capture), length), std::string());
        }
    }
}

QTEST_GUILESS_MAIN(TstJtag)
#include "tst_Jtag.moc"
