#include "AsyncSender.h"
#include "DecoderChecks.h"
#include "ManchesterAnalyzer.h"
#include "ManchesterSimulation.h"

#include <QtTest>

#include <string>
#include <vector>

using Texts = std::vector<std::string>;

namespace {

constexpr std::int64_t sampleRate = 1000000;
const std::string rate = "data=3,bitrate=20000,";

/// Writes bits of each code; a half is 25 samples.
class Sender {
public:
    explicit Sender(bool rest = false, double half = 25) : m_line(rest), m_half(half), m_rest(rest) {}
    Sender &pause(double halves) { return level(m_rest, halves); }
    Sender &level(bool high, double halves)
    {
        m_line.set(high);
        m_time += halves * m_half;
        m_line.holdUntil(std::int64_t(m_time + 0.5));
        return *this;
    }
    /// A 1 rises.
    Sender &rising(const std::string &bits)
    {
        begins.push_back(m_line.position());
        for (const char bit : bits) {
            level(bit == '0', 1).level(bit == '1', 1);
        }
        return *this;
    }
    Sender &falling(std::string bits)
    {
        for (char &bit : bits) {
            bit = bit == '0' ? '1' : '0';
        }
        return rising(bits);
    }
    Sender &differential(const std::string &bits)
    {
        for (const char bit : bits) {
            level(bit == '0' ? !m_line.level() : m_line.level(), 1).level(!m_line.level(), 1);
        }
        return *this;
    }
    Sender &mark(const std::string &bits)
    {
        for (const char bit : bits) {
            level(!m_line.level(), 1).level(bit == '1' ? !m_line.level() : m_line.level(), 1);
        }
        return *this;
    }
    Sender &space(std::string bits)
    {
        for (char &bit : bits) {
            bit = bit == '0' ? '1' : '0';
        }
        return mark(bits);
    }
    [[nodiscard]] const EdgeLine &line() const { return m_line; }

    std::vector<std::int64_t> begins;

private:
    EdgeLine m_line;
    double m_half;
    double m_time = 0;
    bool m_rest;
};

class Decoded : public DecodedLine {
public:
    Decoded(const Sender &sender, const std::string &settings, std::int64_t length = -1)
        : DecodedLine(std::make_unique<ManchesterAnalyzer>(), sender.line(), settings, sampleRate, length)
    {}
};

/// The bits alone, "violation" and the like by their kinds. Without what frames of remote controls consist of.
Texts brief(const DecodeDesk &desk)
{
    Texts all;
    for (const DecodedFrame &frame : desk.frames()) {
        if (frame.kind == "leader" || frame.kind == "element") {
            continue;
        }
        all.push_back(frame.kind == "violation" ? frame.kind : frame.value("v"));
    }
    return all;
}

/// A frame of RC-6 on a line that rests high.
Sender remote(const std::string &mode, bool toggle, const std::string &data)
{
    Sender sender(true);
    sender.pause(40).level(false, 6).level(true, 2).rising("1" + mode).level(!toggle, 2).level(toggle, 2);
    sender.rising(data).pause(48);
    return sender;
}

} // namespace

class TstManchester : public QObject {
    Q_OBJECT
private slots:
    void aRunReachesFromItsFirstBitToItsLast();
    void eitherConventionMayBeSet();
    void theConventionIsToldByTheStartBitWhereTheLineRestsHigh();
    void theTrailerOfRc6IsOneBit();
    void aFrameOfRc6HasElements();
    void modesOfRc6HaveTheirOwnElements();
    void wordsAndPreamblesLeaveOutTheElementsOfRc6();
    void aLeaderWithoutATrailerBeginsARunAsAnySilenceDoes();
    void differentialCodeHasAnEdgeAtTheBeginOfAZero();
    void biphaseMarkHasAnEdgeInTheMiddleOfAOne();
    void biphaseSpaceHasAnEdgeInTheMiddleOfAZero();
    void runsAreSplitWhereHalfABitIsMissing();
    void otherRunsTellThePhaseOfEqualBits();
    void withoutOtherRunsEqualBitsAreOnes();
    void aMiddleWithoutEdgeIsAViolation();
    void aGlitchEndsARun();
    void spikesAreNotSeen_data();
    void spikesAreNotSeen();
    void aSampleIsASpikeWhereABitHasTen();
    void theSenderMayBeFastOrSlowAtFourSamplesABit_data();
    void theSenderMayBeFastOrSlowAtFourSamplesABit();
    void pulsesMayBeFortyPercentOff_data();
    void pulsesMayBeFortyPercentOff();
    void fewerThanFourBitsAreNoise();
    void aRunIsShownFromItsPreambleOn();
    void wordsHaveTheSetLength();
    void theRateIsFoundAndTold_data();
    void theRateIsFoundAndTold();
    void theRateIsFoundWhereOneLevelIsLonger();
    void aRateThatFitsNoEdgesIsNotTaken();
    void withoutEdgesNoRateIsFound();
    void textsGoFromShortToLong();
    void eachBitHasAMarker();
    void settingsAreChecked();
    void exportsHaveAllBits();
    void longRunsLoseNoBit();
    void aCutBitIsNotShown();
    void whatBeganBeforeTheCaptureIsShownWhereItIsKnown();
    void aStreamWithoutRestIsInvertedByItsPolarity();
    void theSimulationIsDecodedAsItWasSent_data();
    void theSimulationIsDecodedAsItWasSent();
    void randomEdgesGiveFramesInOrder();
};

void TstManchester::aRunReachesFromItsFirstBitToItsLast()
{
    Sender sender;
    sender.pause(10).rising("10110010").pause(10).rising("0110").pause(10);
    const Decoded desk(sender, rate + "convention=802.3");
    QCOMPARE(desk.summaries(), (Texts{"bits v=10110010", "bits v=0110"}));
    QCOMPARE(desk.frame(0).first, sender.begins[0]);
    QCOMPARE(desk.frame(0).last, sender.begins[0] + 8 * 50 - 1);
    QCOMPARE(desk.frame(1).first, sender.begins[1]);
    QCOMPARE(desk.frame(1).last, sender.begins[1] + 4 * 50 - 1);
}

void TstManchester::eitherConventionMayBeSet()
{
    Sender sender;
    sender.pause(10).falling("10110010").pause(10);
    QCOMPARE(brief(Decoded(sender, rate + "convention=thomas")), Texts{"10110010"});
    QCOMPARE(brief(Decoded(sender, rate + "convention=802.3")), Texts{"01001101"});
    QCOMPARE(brief(Decoded(sender, rate + "convention=auto")), Texts{"10110010"});
}

void TstManchester::theConventionIsToldByTheStartBitWhereTheLineRestsHigh()
{
    Sender rising(true);
    rising.pause(10).rising("10110010").pause(10).rising("1100").pause(10);
    Sender falling(true);
    falling.pause(10).falling("10110010").pause(10).falling("1100").pause(10);
    for (const char *polarity : {"polarity=low", "polarity=auto"}) {
        QCOMPARE(brief(Decoded(rising, rate + polarity)), (Texts{"10110010", "1100"}));
        QCOMPARE(brief(Decoded(falling, rate + polarity)), (Texts{"10110010", "1100"}));
    }
}

/// As RC-6 has it: a leader of six halves and two, a start bit, three bits, one of twice the length, sixteen bits.
void TstManchester::theTrailerOfRc6IsOneBit()
{
    // The bit is twice as long; a run with its neighbours' halves has pulses of three halves.
    for (const char *mode : {"1000", "1110", "1001"}) {
        for (const bool toggle : {false, true}) {
            Sender sender(true);
            for (const char *data : {"0000010011001010", "1100010011001011"}) {
                sender.pause(40).level(false, 6).level(true, 2).rising(mode);
                sender.level(!toggle, 2).level(toggle, 2).rising(data).pause(2);
            }
            sender.pause(40);
            const std::string head = mode + std::string(toggle ? "1" : "0");
            const Decoded desk(sender, rate + "polarity=low");
            QCOMPARE(brief(desk), (Texts{head + "0000010011001010", head + "1100010011001011"}));
            QCOMPARE(desk.frame(1).first, sender.begins[0]);
            QCOMPARE(desk.frame(1).last, sender.begins[1] + 16 * 50 - 1);
        }
    }
}

void TstManchester::aFrameOfRc6HasElements()
{
    const Decoded desk(remote("000", false, "0000010011001010"), rate + "polarity=low");
    QCOMPARE(desk.summaries(),
             (Texts{"leader", "bits v=100000000010011001010", "element name=start v=1", "element name=mode v=0",
                    "element name=toggle v=0", "element name=address v=4", "element name=command v=202"}));
    // In halves of a bit of 25 samples, behind a rest of 40: what begins where, and ends before what follows.
    const int begins[] = {40, 48, 48, 50, 56, 60, 76, 92};
    for (std::size_t i = 0; i < 7; ++i) {
        QCOMPARE(desk.frame(i).first, std::int64_t(begins[i]) * 25);
        QCOMPARE(desk.frame(i).last, std::int64_t(i == 1 ? begins[7] : begins[i + (i == 0 ? 2 : 1)]) * 25 - 1);
    }
    QCOMPARE(decoderChecks::faultOf(desk, 140 * 25), std::string());
    const Channel line(0, 3);
    QCOMPARE(desk.bubble(0, line, DisplayBase::Hexadecimal), (Texts{"L", "Leader"}));
    QCOMPARE(desk.bubble(6, line, DisplayBase::Hexadecimal), (Texts{"0xCA", "Command 0xCA"}));
    QCOMPARE(desk.bubble(4, line, DisplayBase::Decimal), (Texts{"0", "Toggle 0"}));
}

void TstManchester::modesOfRc6HaveTheirOwnElements()
{
    const auto behindToggle = [](const DecodeDesk &desk) {
        Texts all = desk.summaries();
        all.erase(all.begin(), all.begin() + 5);
        return all;
    };
    // Of mode 6 the customer code has eight bits, or sixteen where the first is a 1.
    const Decoded shorter(remote("110", false, "000011110000010000001100"), rate + "polarity=low");
    QCOMPARE(behindToggle(shorter),
             (Texts{"element name=customer v=15", "element name=data v=4", "element name=data v=12"}));
    const Decoded longer(remote("110", false, "10000000000011110000010000001100"), rate + "polarity=low");
    QCOMPARE(behindToggle(longer),
             (Texts{"element name=customer v=32783", "element name=data v=4", "element name=data v=12"}));
    const Decoded other(remote("011", true, "0000111101"), rate + "polarity=low");
    QCOMPARE(behindToggle(other), (Texts{"element name=data v=15", "element name=data v=1"}));
}

void TstManchester::wordsAndPreamblesLeaveOutTheElementsOfRc6()
{
    const Sender sender = remote("000", false, "0000010011001010");
    QCOMPARE(Decoded(sender, rate + "polarity=low,bits=7").summaries(), (Texts{"word v=64", "word v=9", "word v=74"}));
    QCOMPARE(Decoded(sender, rate + "polarity=low,preamble=0000").summaries(), (Texts{"bits v=00000000010011001010"}));
}

void TstManchester::aLeaderWithoutATrailerBeginsARunAsAnySilenceDoes()
{
    Sender sender(true);
    sender.pause(40).level(false, 6).level(true, 2).rising("100001001100").pause(40);
    QCOMPARE(brief(Decoded(sender, rate + "polarity=low")), Texts{"100001001100"});
    Sender split(true); // two halves more in the fifth bit than a trailer has
    split.pause(40).level(false, 6).level(true, 2).rising("1000").level(true, 3).level(false, 3);
    split.rising("0100010011001011").pause(40);
    Texts got = brief(Decoded(split, rate + "polarity=low"));
    got.erase(std::remove(got.begin(), got.end(), "violation"), got.end());
    QCOMPARE(got, (Texts{"1000", "0100010011001011"}));
}

void TstManchester::differentialCodeHasAnEdgeAtTheBeginOfAZero()
{
    for (const bool rest : {false, true}) {
        Sender sender(rest);
        sender.pause(10).differential("0110100011101").pause(10);
        QCOMPARE(brief(Decoded(sender, rate + "decodeas=differential")), Texts{"0110100011101"});
    }
    Sender one; // the first bit has no edge at its begin, which a rest before it cannot tell
    one.pause(10).differential("1110100").pause(10);
    QCOMPARE(brief(Decoded(one, rate + "decodeas=differential")), Texts{"110100"});
}

void TstManchester::biphaseMarkHasAnEdgeInTheMiddleOfAOne()
{
    Sender sender;
    sender.pause(10).mark("0110100011101").level(!sender.line().level(), 1).pause(10);
    const Decoded desk(sender, rate + "decodeas=mark");
    QCOMPARE(brief(desk), Texts{"0110100011101"});
    QCOMPARE(desk.frame(0).first, std::int64_t(250));
    QCOMPARE(desk.frame(0).last, std::int64_t(250 + 13 * 50 - 1));
}

void TstManchester::biphaseSpaceHasAnEdgeInTheMiddleOfAZero()
{
    Sender sender;
    sender.pause(10).space("0110100011101").level(!sender.line().level(), 1).pause(10);
    QCOMPARE(brief(Decoded(sender, rate + "decodeas=space")), Texts{"0110100011101"});
}

void TstManchester::runsAreSplitWhereHalfABitIsMissing()
{
    for (const double silence : {2.4, 2.7}) {
        // The last half of the 1 is high, and the next run's first one.
        Sender sender;
        sender.pause(10).rising("10100011").level(true, silence - 1).falling("10010").pause(10);
        const Texts got = brief(Decoded(sender, rate + "convention=802.3"));
        QCOMPARE(got.front(), std::string("10100011"));
    }
    Sender sender;
    sender.pause(10).rising("1010").pause(1.6).rising("1001").pause(10);
    QCOMPARE(brief(Decoded(sender, rate + "convention=802.3")), (Texts{"1010", "1001"}));
}

void TstManchester::otherRunsTellThePhaseOfEqualBits()
{
    Sender sender;
    sender.pause(10).rising("00000000").pause(10).rising("00010010").pause(10).rising("00000000").pause(10);
    QCOMPARE(brief(Decoded(sender, rate + "convention=802.3")), (Texts{"00000000", "00010010", "00000000"}));
    Sender ones;
    ones.pause(10).rising("11111111").pause(10).rising("10010010").pause(10);
    QCOMPARE(brief(Decoded(ones, rate + "convention=802.3")), (Texts{"11111111", "10010010"}));
}

void TstManchester::withoutOtherRunsEqualBitsAreOnes()
{
    Sender rising;
    rising.pause(10).rising("11111111").pause(10);
    QCOMPARE(brief(Decoded(rising, rate + "convention=802.3")), Texts{"11111111"});
    Sender falling;
    falling.pause(10).falling("11111111").pause(10);
    QCOMPARE(brief(Decoded(falling, rate + "convention=thomas")), Texts{"11111111"});
}

void TstManchester::aMiddleWithoutEdgeIsAViolation()
{
    // A bit that stays high, between sound ones of which the one before ends high.
    Sender sender;
    sender.pause(10).rising("100101101").level(false, 2).rising("010010110").pause(10);
    const Texts got = brief(Decoded(sender, rate + "convention=802.3"));
    QCOMPARE(got, (Texts{"100101101", "violation", "010010110"}));
}

void TstManchester::aGlitchEndsARun()
{
    Sender sender;
    sender.pause(10).rising("10010110").level(false, 0.5).level(true, 0.3).level(false, 0.5).pause(10);
    const Decoded desk(sender, rate + "convention=802.3");
    QCOMPARE(brief(desk).front(), std::string("10010110"));
    QCOMPARE(desk.frame(1).kind, std::string("violation"));
}

void TstManchester::spikesAreNotSeen_data()
{
    QTest::addColumn<int>("samples");
    QTest::addColumn<bool>("isRead");
    QTest::newRow("up to a quarter of half a bit") << 6 << true;
    QTest::newRow("longer") << 7 << false;
}

void TstManchester::spikesAreNotSeen()
{
    QFETCH(int, samples);
    QFETCH(bool, isRead);
    Sender sender;
    sender.pause(10).rising("1001011011100010").pause(10);
    const EdgeLine spiked = decoderChecks::withSpikes(sender.line(), samples, 3);
    const DecodedLine desk(std::make_unique<ManchesterAnalyzer>(), spiked, rate + "convention=802.3", sampleRate);
    QCOMPARE(brief(desk) == Texts{"1001011011100010"}, isRead);
}

void TstManchester::aSampleIsASpikeWhereABitHasTen()
{
    Sender sender(false, 5);
    sender.pause(10).rising("1001011011100010").pause(10);
    const EdgeLine spiked = decoderChecks::withSpikes(sender.line(), 1, 3);
    const std::string settings = "data=3,bitrate=100000,convention=802.3";
    QCOMPARE(brief(DecodedLine(std::make_unique<ManchesterAnalyzer>(), spiked, settings, sampleRate)),
             Texts{"1001011011100010"});
}

void TstManchester::theSenderMayBeFastOrSlowAtFourSamplesABit_data()
{
    QTest::addColumn<double>("half");
    for (const double half : {1.88, 1.94, 1.98, 2.0, 2.02, 2.06, 2.12}) {
        QTest::addRow("%.2f samples", half) << half;
    }
}

void TstManchester::theSenderMayBeFastOrSlowAtFourSamplesABit()
{
    QFETCH(double, half);
    const std::string first = "11111111111111111111111101001100011010111001";
    const std::string second = "110100100011000111011010100110010110100";
    Sender sender(false, half);
    sender.pause(20).falling(first).pause(20).falling(second).pause(20);
    QCOMPARE(brief(Decoded(sender, "data=3,bitrate=250000,convention=thomas")), (Texts{first, second}));
}

void TstManchester::pulsesMayBeFortyPercentOff_data()
{
    QTest::addColumn<double>("late");
    QTest::addColumn<bool>("isRead");
    QTest::newRow("as it should be") << 0.0 << true;
    QTest::newRow("within") << 0.4 << true;
    QTest::newRow("beyond") << 0.65 << false;
}

/// Falling edges are late, so that high pulses are longer and low ones shorter.
void TstManchester::pulsesMayBeFortyPercentOff()
{
    QFETCH(double, late);
    QFETCH(bool, isRead);
    Sender sender;
    sender.pause(10);
    const std::string bits = "100101101110001010011";
    for (const char bit : bits) {
        if (bit == '1') {
            sender.level(true, 1);
            sender.level(false, 1);
        } else {
            sender.level(false, 1);
            sender.level(true, 1);
        }
    }
    sender.pause(10);
    EdgeLine line(false);
    bool level = false;
    for (const std::int64_t edge : sender.line().edges()) {
        level = !level;
        line.holdUntil(edge + (level ? 0 : std::int64_t(late * 25))).set(level);
    }
    line.hold(250);
    const DecodedLine desk(std::make_unique<ManchesterAnalyzer>(), line, rate + "convention=thomas", sampleRate);
    QCOMPARE(brief(desk) == Texts{bits}, isRead);
}

void TstManchester::fewerThanFourBitsAreNoise()
{
    Sender sender;
    sender.pause(10).rising("100").pause(10).rising("1001").pause(10).level(true, 1).pause(10);
    QCOMPARE(brief(Decoded(sender, rate + "convention=802.3")), Texts{"1001"});
}

void TstManchester::aRunIsShownFromItsPreambleOn()
{
    Sender sender;
    sender.pause(10).rising("0101011001").pause(10).rising("00000001").pause(10);
    const Decoded desk(sender, rate + "convention=802.3,preamble=1010");
    QCOMPARE(brief(desk), Texts{"101011001"});
    QCOMPARE(desk.frame(0).first, sender.begins[0] + 50);
    QCOMPARE(brief(Decoded(sender, rate + "convention=802.3,preamble=auto")), (Texts{"0101011001", "00000001"}));
}

void TstManchester::wordsHaveTheSetLength()
{
    Sender sender;
    sender.pause(10).rising("101011000110").pause(10);
    const Decoded desk(sender, rate + "convention=802.3,bits=5");
    QCOMPARE(desk.summaries(), (Texts{"word v=21", "word v=17", "rest n=2 v=2"}));
    QCOMPARE(desk.frame(1).first, sender.begins[0] + 250);
    QCOMPARE(desk.frame(1).last, sender.begins[0] + 499);
    QCOMPARE(desk.frame(2).last, sender.begins[0] + 599);
    QCOMPARE(Decoded(sender, rate + "convention=802.3,bits=5,bit_order=lsb").frame(1).value("v"), std::string("17"));
    QCOMPARE(Decoded(sender, rate + "convention=802.3,bits=4,bit_order=lsb").frame(1).value("v"), std::string("3"));
}

void TstManchester::theRateIsFoundAndTold_data()
{
    QTest::addColumn<double>("half");
    QTest::addColumn<QString>("told");
    QTest::newRow("20000") << 25.0 << "20000";
    QTest::newRow("1200") << 416.667 << "1200";
    QTest::newRow("fast") << 3.0 << "166667";
}

void TstManchester::theRateIsFoundAndTold()
{
    QFETCH(double, half);
    QFETCH(QString, told);
    Sender sender(false, half);
    sender.pause(10);
    for (int i = 0; i < 20; ++i) {
        sender.rising("10110010101011").pause(10);
    }
    const Decoded desk(sender, "data=3,convention=802.3");
    QCOMPARE(desk.message(), "Bit rate found: " + told.toStdString() + " bits/s");
    QCOMPARE(brief(desk), Texts(20, "10110010101011"));
}

void TstManchester::theRateIsFoundWhereOneLevelIsLonger()
{
    // What a receiver of infrared light makes of it: each pulse is longer by a part of half a bit, or shorter.
    const std::string halves = "0110010101101001100110";
    for (const double longer : {-0.28, -0.2, 0.2, 0.28}) {
        Sender sender;
        sender.pause(10);
        for (int run = 0; run < 20; ++run) {
            for (std::size_t i = 0; i < halves.size(); ++i) {
                const bool high = halves[i] == '1';
                const bool isEdge = i > 0 && halves[i - 1] != halves[i];
                sender.level(high, 1 + (isEdge ? (high ? longer : -longer) : 0.0));
            }
            sender.pause(10);
        }
        QCOMPARE(brief(Decoded(sender, "data=3,convention=802.3")), Texts(20, "10111001010"));
    }
}

void TstManchester::aRateThatFitsNoEdgesIsNotTaken()
{
    Sender sender(false, 250); // 2000 bits/s
    sender.pause(10).rising("10110010101011").pause(10);
    const Decoded desk(sender, "data=3,bitrate=64,convention=802.3");
    QCOMPARE(desk.message(), std::string("Bit rate found: 2000 bits/s"));
    QCOMPARE(brief(desk), Texts{"10110010101011"});
}

void TstManchester::withoutEdgesNoRateIsFound()
{
    Sender sender;
    sender.pause(100);
    const Decoded desk(sender, "data=3");
    QCOMPARE(desk.analyzer->GetDecodeStatus(), DecodeStatus::Failed);
    QVERIFY(desk.message().find("No bit rate can be found") == 0);
    QCOMPARE(Decoded(sender, rate).frames().size(), std::size_t(0));
    const Decoded coarse(sender, "data=3,bitrate=300000");
    QCOMPARE(coarse.message(), std::string("The sample rate is too low: 300000 bits/s need at least 1200000 Hz"));
}

void TstManchester::textsGoFromShortToLong()
{
    Sender sender;
    sender.pause(10).rising("1011001000000001").pause(10);
    const Channel channel(0, 3);
    QCOMPARE(Decoded(sender, rate + "convention=802.3").bubble(0, channel, DisplayBase::Hexadecimal),
             (Texts{"16", "16 bits", "1011001000000001", "16 bits: 1011001000000001"}));
    QCOMPARE(Decoded(sender, rate + "convention=802.3,format=words").frame(0).text, std::string("16 bits: 0xB2 0x01"));
    QCOMPARE(Decoded(sender, rate + "convention=802.3,bits=8").bubble(0, channel, DisplayBase::Hexadecimal),
             (Texts{"0xB2", "Word 0xB2"}));
    QCOMPARE(Decoded(sender, rate + "convention=802.3,bits=12").frame(1).text, std::string("Rest of 4 bits: 0x1"));
}

void TstManchester::eachBitHasAMarker()
{
    Sender sender;
    sender.pause(10).rising("10110010").pause(10);
    const auto markers = Decoded(sender, rate + "convention=802.3").markers(3);
    QCOMPARE(markers.size(), std::size_t(8));
    QCOMPARE(markers[0].type, MarkerType::One);
    QCOMPARE(markers[1].type, MarkerType::Zero);
    QCOMPARE(std::int64_t(markers[1].sample), sender.begins[0] + 75);
}

void TstManchester::settingsAreChecked()
{
    DecodeDesk desk(std::make_unique<ManchesterAnalyzer>());
    QVERIFY(!desk.edit({{"data", "none"}}).empty());
    QCOMPARE(desk.edit({{"data", "1"}, {"preamble", "102"}}),
             std::string("The preamble has other characters than 0 and 1"));
    QCOMPARE(desk.edit({{"preamble", "1010"}, {"decodeas", "Manchester"}, {"convention", "thomas"}, {"bits", "64"}}),
             std::string());
    QCOMPARE(desk.edit({{"decodeas", "mark"}, {"format", "ascii"}, {"polarity", "low"}}), std::string());
    QVERIFY(!desk.edit({{"bits", "65"}}).empty());
}

void TstManchester::exportsHaveAllBits()
{
    Sender sender;
    sender.pause(10).rising("10110010").pause(10);
    const Decoded desk(sender, rate + "convention=802.3");
    QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("out")).toStdString();
    const std::string csv = decoderChecks::exported(desk, path + ".csv", 0);
    QVERIFY2(csv.find("bits,10110010,,") != std::string::npos, csv.c_str());
    const std::string text = decoderChecks::exported(desk, path + ".txt", 0);
    QVERIFY2(text.find("8 bits: 10110010") != std::string::npos, text.c_str());
}

void TstManchester::longRunsLoseNoBit()
{
    constexpr std::size_t count = BiphaseRun::mostBits + 1000;
    std::string bits = "1011";
    std::uint32_t state = 1;
    while (bits.size() < count) {
        state = state * 1664525U + 1013904223U;
        bits += (state >> 31) != 0 ? '1' : '0';
    }
    struct Code {
        const char *settings;
        Sender &(Sender::*send)(const std::string &);
    };
    for (const Code &code : {Code{"convention=802.3", &Sender::rising}, Code{"decodeas=mark", &Sender::mark},
                             Code{"decodeas=differential", &Sender::differential}}) {
        Sender sender(false, 5);
        (sender.pause(10).*code.send)("0" + bits);
        if (std::string(code.settings) == "decodeas=mark") {
            sender.level(!sender.line().level(), 1); // ends the last bit
        }
        sender.pause(10);
        const Decoded desk(sender, std::string("data=3,bitrate=100000,") + code.settings);
        std::string got;
        for (const std::string &part : brief(desk)) {
            got += part;
        }
        QVERIFY2(got == "0" + bits, code.settings);
        QCOMPARE(desk.frames().size(), std::size_t(2));
    }
}

void TstManchester::aCutBitIsNotShown()
{
    Sender sender(false, 10);
    sender.pause(10).rising("1011001001").pause(10).rising("100110").pause(10);
    const std::string settings = "data=3,bitrate=50000,convention=802.3";
    const auto whole = Decoded(sender, settings).frames();
    QCOMPARE(whole.size(), std::size_t(2));
    for (std::int64_t length = 1; length < sender.line().position(); ++length) {
        const Decoded desk(sender, settings, length);
        QCOMPARE(decoderChecks::faultOf(desk, length), std::string());
        const auto cut = desk.frames();
        QVERIFY(cut.size() <= 2);
        for (std::size_t i = 0; i < cut.size(); ++i) { // what there is of a run is the whole one's begin
            const std::string bits = cut[i].value("v");
            QCOMPARE(bits, whole[i].value("v").substr(0, bits.size()));
        }
    }
}

void TstManchester::whatBeganBeforeTheCaptureIsShownWhereItIsKnown()
{
    const auto after = [](const std::string &bits, double halves) {
        Sender sender;
        sender.rising(bits).pause(10);
        EdgeLine line(sender.line().startLevel());
        const auto skipped = std::int64_t(halves * 25);
        bool level = line.startLevel();
        for (const std::int64_t edge : sender.line().edges()) {
            level = !level;
            line.holdUntil(edge - skipped).set(level);
        }
        line.hold(250);
        return brief(DecodedLine(std::make_unique<ManchesterAnalyzer>(), line, rate + "convention=802.3", sampleRate));
    };
    // Begins in the second half of the first bit.
    QCOMPARE(after("11011001", 1.5), Texts{"1011001"});
    // Begins before more than half of a whole bit between two middles.
    QCOMPARE(after("10011001", 1.2), Texts{"10011001"});
    // Equal bits may be ones or zeros.
    QVERIFY(after("11111111", 1.5).empty());
}

void TstManchester::aStreamWithoutRestIsInvertedByItsPolarity()
{
    Sender sender; // as a tag sends: never a pause
    sender.falling("1110100110100111010011010");
    const std::string bits = brief(Decoded(sender, rate + "polarity=high")).front();
    std::string inverted = brief(Decoded(sender, rate + "polarity=low")).front();
    QVERIFY(bits.size() > 20);
    for (char &bit : inverted) {
        bit = bit == '0' ? '1' : '0';
    }
    QCOMPARE(inverted, bits);
    QVERIFY(bits.find("11101001") != std::string::npos);
}

void TstManchester::theSimulationIsDecodedAsItWasSent_data()
{
    QTest::addColumn<QString>("settings");
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("block");
    QTest::newRow("IEEE 802.3") << "bitrate=20000,convention=802.3" << 1000000 << 100000;
    QTest::newRow("Thomas, small blocks") << "bitrate=20000,convention=thomas,polarity=low" << 200000 << 77;
    QTest::newRow("found") << "convention=802.3,polarity=high" << 1000000 << 65536;
    QTest::newRow("auto, rests high") << "polarity=low" << 1000000 << 65536;
    QTest::newRow("mark") << "decodeas=mark,bitrate=100000" << 1000000 << 4096;
    QTest::newRow("space, found") << "decodeas=space" << 400000 << 4096;
    QTest::newRow("differential") << "decodeas=differential,bitrate=9600" << 1000000 << 4096;
}

void TstManchester::theSimulationIsDecodedAsItWasSent()
{
    QFETCH(QString, settings);
    QFETCH(int, rate);
    QFETCH(int, block);
    DecodeDesk desk(std::make_unique<ManchesterAnalyzer>(), "data=0," + settings.toStdString());
    const auto capture = desk.simulate(rate, rate, block);
    QCOMPARE(decoderChecks::faultOf(desk.run(*capture), capture->device().smpCount), std::string());
    const bool isDifferential = settings.contains(QLatin1String("differential"));
    const Texts got = brief(desk);
    QVERIFY(got.size() > 80);
    const bool hasRoom = rate == 1000000 && !settings.contains(QLatin1String("100000")); // 40 samples a bit
    const bool hasRemotes =
        !settings.contains(QLatin1String("convention")) && !settings.contains(QLatin1String("decodeas"));
    const std::vector<DecodedFrame> frames = desk.frames();
    QCOMPARE(hasRemotes, std::any_of(frames.begin(), frames.end(), [](const auto &f) { return f.kind == "leader"; }));
    std::uint32_t number = 0;
    for (std::size_t i = 0; i + 1 < got.size(); ++i) { // the last one may be cut
        const ManchesterSimulated sent = ManchesterSimulated::of(number++, hasRemotes);
        std::string expected;
        for (const bool bit : sent.bits) {
            expected += bit ? '1' : '0';
        }
        QCOMPARE(got[i], isDifferential ? expected.substr(1) : expected);
        if (sent.hasViolation && hasRoom && i + 2 < got.size()) {
            QCOMPARE(got[++i], std::string("violation"));
        }
    }
}

void TstManchester::randomEdgesGiveFramesInOrder()
{
    constexpr std::int64_t length = 200000;
    for (const std::int64_t mean : {1, 5, 15, 30, 60, 300}) {
        for (const char *settings :
             {"data=3,bitrate=20000", "data=3", "data=3,bitrate=20000,decodeas=mark,bits=8", "data=3,decodeas=space"}) {
            TestCapture capture(sampleRate, length);
            capture.channel(3, true, decoderChecks::randomEdges(std::uint32_t(mean), mean, length));
            DecodeDesk desk(std::make_unique<ManchesterAnalyzer>(), settings);
            desk.run(capture);
            if (desk.analyzer->GetDecodeStatus() != DecodeStatus::Failed) {
                QCOMPARE(decoderChecks::faultOf(desk, length), std::string());
            }
        }
    }
}

QTEST_GUILESS_MAIN(TstManchester)
#include "tst_Manchester.moc"
