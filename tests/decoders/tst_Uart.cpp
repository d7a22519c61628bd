#include "AsyncSender.h"
#include "DecoderChecks.h"
#include "UartAnalyzer.h"

#include <QtTest>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string>
#include <vector>

using Texts = std::vector<std::string>;

namespace {

constexpr std::int64_t sampleRate = 1000000;

using Sender = AsyncSender;

/// A run on what was sent, on channel 3.
class Decoded : public DecodeDesk {
public:
    Decoded(const Sender &sender, const std::string &settings, std::int64_t length = -1)
        : DecodeDesk(std::make_unique<UartAnalyzer>(), "rx=3," + settings),
          m_capture(sampleRate, length < 0 ? sender.now() : length)
    {
        m_capture.channel(3, sender.line());
        run(m_capture);
    }

private:
    TestCapture m_capture;
};

/// The values alone: "65", "65!" with an error, "break".
Texts brief(const DecodeDesk &desk)
{
    Texts all;
    for (const DecodedFrame &frame : desk.frames()) {
        const bool isByte = frame.kind == "byte";
        all.push_back(!isByte ? frame.kind
                              : frame.value("v") + (frame.value("pe") == "1" ? "p" : "") +
                                    (frame.value("fe") == "1" ? "f" : ""));
    }
    return all;
}

/// A receiver of 8N1 that looks at samples, one after the other: three looks a bit and their majority.
class SampleReceiver {
public:
    SampleReceiver(std::vector<bool> levels, std::int64_t bitRate) : m_levels(std::move(levels)), m_rate(bitRate) {}

    /// As brief() tells it, with the first sample: "120:65".
    [[nodiscard]] Texts receive() const
    {
        Texts all;
        std::size_t at = 0;
        while (nextStart(at) && at + look(9) + vote() < m_levels.size()) {
            unsigned bits = 0;
            for (unsigned i = 0; i <= 9; ++i) {
                bits |= unsigned(majority(at + look(i))) << i;
            }
            const unsigned value = bits >> 1 & 0xffU;
            const bool stop = (bits >> 9 & 1U) != 0;
            const bool isTail = !stop && value != 0 && at < length();
            if ((bits & 1U) != 0 || isTail) {
                ++at;
                continue;
            }
            const std::string text = !stop && value == 0 ? "break" : std::to_string(value) + (stop ? "" : "f");
            all.push_back(std::to_string(at) + ":" + text);
            if (!stop && value != 0 && lowAround(at + look(9)) >= std::ptrdiff_t(length())) {
                all.push_back(std::to_string(at + length()) + ":break");
            }
            at += look(9);
        }
        return all;
    }

private:
    [[nodiscard]] bool nextStart(std::size_t &at) const
    {
        while (at < m_levels.size() && !m_levels[at]) {
            ++at;
        }
        while (at < m_levels.size() && m_levels[at]) {
            ++at;
        }
        return at < m_levels.size();
    }
    [[nodiscard]] std::size_t look(unsigned bit) const
    {
        const std::int64_t middle = (2 * bit + 1) * sampleRate / (2 * m_rate);
        return std::size_t(middle - (bit == 9 ? sampleRate / (4 * m_rate) / 8 : 0));
    }
    [[nodiscard]] std::size_t length() const
    {
        return std::size_t(std::lround(10.0 * double(sampleRate) / double(m_rate)));
    }
    /// For how long the line is low around a sample; 0 where it is high.
    [[nodiscard]] std::ptrdiff_t lowAround(std::size_t at) const
    {
        const auto here = m_levels.begin() + std::ptrdiff_t(at);
        const auto first = std::find(std::make_reverse_iterator(here), m_levels.rend(), true).base();
        return m_levels[at] ? 0 : std::find(here, m_levels.end(), true) - first;
    }
    [[nodiscard]] std::size_t vote() const
    {
        return sampleRate < 16 * m_rate ? 0 : std::size_t(sampleRate / (4 * m_rate) / 4);
    }
    [[nodiscard]] bool majority(std::size_t at) const
    {
        return int(m_levels[at - vote()]) + int(m_levels[at]) + int(m_levels[at + vote()]) >= 2;
    }

    std::vector<bool> m_levels;
    std::int64_t m_rate;
};

} // namespace

class TstUart : public QObject {
    Q_OBJECT
private slots:
    void aCharacterBeginsWithItsStartEdgeAndEndsWithItsStopBit();
    void charactersHaveFiveToNineBits();
    void theHighestBitMayComeFirst();
    void anInvertedLineIsLowWhileItIsIdle();
    void eachLineMayBeInvertedByItself();
    void eachParityTakesTheRightBitAndTellsTheWrong_data();
    void eachParityTakesTheRightBitAndTellsTheWrong();
    void anIgnoredParityBitIsThereAndMayHaveAnyValue();
    void aLowStopBitIsAFramingErrorAndTheNextStartIsFound();
    void theSecondStopBitIsAskedForWhereItIsSet();
    void halfAStopBitIsEnoughWhereItIsSet();
    void halfAStopBitIsReadAtAnyPlaceOfTheSamples();
    void aLowHalfStopBitIsAFramingError();
    void aLongLowIsOneBreak();
    void aBreakMayLastToTheCapturesEnd();
    void aBreakMayBeginWithinACharacter();
    void aSenderMayBeFivePercentOffAndNotSix_data();
    void aSenderMayBeFivePercentOffAndNotSix();
    void aPulseOfLessThanHalfABitIsNoStart();
    void aSpikeInTheMiddleOfABitIsVotedOut();
    void threeSamplesABitAreEnoughAndTwoAreTooFew();
    void theRateIsFoundAndTold_data();
    void theRateIsFoundAndTold();
    void manyGlitchesDoNotHideTheRate();
    void withoutEdgesNoRateIsFound();
    void twoLinesComeInTheOrderOfTime();
    void pausesAreShownFromTheSetLengthOn();
    void theNinthBitMarksAnAddress();
    void settingsThatDoNotGoTogetherAreRefused();
    void storedSettingsOfEarlierVersionsStayWhatTheyWere();
    void textsGoFromShortToLong();
    void eachBitHasAMarkerAndErrorsTheirOwn();
    void exportsHaveAllCharacters();
    void aCutCharacterIsNotShown();
    void aCutHalfStopBitIsNotShown();
    void theRateIsFoundOfHalfStopBitsAndUncheckedParity();
    void theTailOfACharacterIsNoCharacter();
    void theSimulationIsDecodedAsItWasSent_data();
    void theSimulationIsDecodedAsItWasSent();
    void aReceiverThatLooksAtEachSampleReadsTheSame_data();
    void aReceiverThatLooksAtEachSampleReadsTheSame();
    void randomEdgesGiveFramesInOrder();
};

void TstUart::aCharacterBeginsWithItsStartEdgeAndEndsWithItsStopBit()
{
    Sender sender(104);
    sender.idle(2).byte(0x41).idle(3).byte(0xff).byte(0x00).idle(2);
    const auto frames = Decoded(sender, "baudrate=9600").frames();
    QCOMPARE(frames.size(), std::size_t(3));
    QCOMPARE(frames[0].summary(), std::string("byte ch=3 v=65 pe=0 fe=0"));
    for (std::size_t i = 0; i < 3; ++i) {
        QCOMPARE(frames[i].first, sender.starts[i]);
    }
    QCOMPARE(frames[0].last, frames[0].first + 1041); // 10 bits of 104.17 samples
    QCOMPARE(frames[1].last, frames[2].first - 1);    // the sender is faster: the next start ends it
}

void TstUart::charactersHaveFiveToNineBits()
{
    for (int bits = 5; bits <= 9; ++bits) {
        Sender sender(20);
        const std::string ones(std::size_t(bits) - 1, '0');
        sender.idle(2).raw(ones + "1").raw("1" + ones).idle(1);
        const Decoded desk(sender, "baudrate=50000,data_bits=" + std::to_string(bits));
        QCOMPARE(brief(desk), (Texts{std::to_string(1 << (bits - 1)), "1"}));
    }
}

void TstUart::theHighestBitMayComeFirst()
{
    Sender sender(20);
    sender.idle(2).raw("10000010").idle(1);
    QCOMPARE(brief(Decoded(sender, "baudrate=50000,bit_order=msb")), Texts{"130"});
    QCOMPARE(brief(Decoded(sender, "baudrate=50000,bit_order=lsb")), Texts{"65"});
}

void TstUart::anInvertedLineIsLowWhileItIsIdle()
{
    Sender sender(20, false);
    sender.idle(2).byte(0x41).byte(0x80).low(15).idle(2).byte(0x42).idle(1);
    QCOMPARE(brief(Decoded(sender, "baudrate=50000,invert=true")), (Texts{"65", "128", "break", "66"}));
}

void TstUart::eachLineMayBeInvertedByItself()
{
    Sender sender(20, false);
    sender.idle(2).byte(0x41).byte(0x80).idle(1);
    QCOMPARE(brief(Decoded(sender, "baudrate=50000,invert_rx=true")), (Texts{"65", "128"}));
    QVERIFY(brief(Decoded(sender, "baudrate=50000,invert_tx=true")) != (Texts{"65", "128"}));
}

void TstUart::eachParityTakesTheRightBitAndTellsTheWrong_data()
{
    QTest::addColumn<QString>("parity");
    QTest::addColumn<QString>("right"); // for 0x43, three ones, and 0x41, two
    QTest::newRow("odd") << "odd"
                         << "01";
    QTest::newRow("even") << "even"
                          << "10";
    QTest::newRow("mark") << "mark"
                          << "11";
    QTest::newRow("space") << "space"
                           << "00";
}

void TstUart::eachParityTakesTheRightBitAndTellsTheWrong()
{
    QFETCH(QString, parity);
    QFETCH(QString, right);
    const std::string bits[] = {"11000010", "10000010"};
    const std::string values[] = {"67", "65"};
    Sender sender(20);
    sender.idle(2);
    Texts expected;
    for (int i = 0; i < 2; ++i) {
        const bool one = right[i] == QLatin1Char('1');
        sender.raw(bits[i] + (one ? "1" : "0")).raw(bits[i] + (one ? "0" : "1"));
        expected.insert(expected.end(), {values[i], values[i] + "p"});
    }
    sender.idle(1);
    QCOMPARE(brief(Decoded(sender, "baudrate=50000,parity=" + parity.toStdString())), expected);
}

void TstUart::anIgnoredParityBitIsThereAndMayHaveAnyValue()
{
    Sender sender(20);
    sender.idle(12).raw("110000100").raw("110000101").raw("100000101").raw("100000100").raw("000000001");
    sender.raw("100000101", 0).low(1).idle(2).low(12).idle(2);
    const Decoded desk(sender, "baudrate=50000,parity=ignore");
    QCOMPARE(brief(desk), (Texts{"67", "67", "65", "65", "0", "65f", "break"}));
    QCOMPARE(desk.markers(3)[8].type, MarkerType::Dot);
    QCOMPARE(desk.markers(3)[8].sample, std::uint64_t(sender.starts[0]) + 190);
}

void TstUart::aLowStopBitIsAFramingErrorAndTheNextStartIsFound()
{
    Sender sender(20);
    sender.idle(12).byte(0x41, 0).low(1).idle(1).byte(0x42).idle(1);
    const Decoded desk(sender, "baudrate=50000");
    QCOMPARE(brief(desk), (Texts{"65f", "66"}));
    QCOMPARE(desk.frame(0).last, desk.frame(0).first + 199);
    QCOMPARE(desk.frame(1).first, sender.starts[1]);
}

void TstUart::theSecondStopBitIsAskedForWhereItIsSet()
{
    Sender sender(20);
    sender.idle(12).byte(0x41, 1).byte(0x42, 1.5).byte(0x43, 2).byte(0x44, 2).idle(1);
    QCOMPARE(brief(Decoded(sender, "baudrate=50000,stop_bits=1")), (Texts{"65", "66", "67", "68"}));
    QCOMPARE(brief(Decoded(sender, "baudrate=50000,stop_bits=1.5")), (Texts{"65f", "66", "67", "68"}));
    QCOMPARE(brief(Decoded(sender, "baudrate=50000,stop_bits=2")), (Texts{"65f", "66f", "67", "68"}));
}

void TstUart::halfAStopBitIsEnoughWhereItIsSet()
{
    Sender sender(20);
    sender.idle(12);
    Texts expected;
    for (unsigned value = 0; value < 256; ++value) {
        sender.byte(value, 0.5);
        expected.push_back(std::to_string(value));
    }
    sender.idle(2);
    const Decoded desk(sender, "baudrate=50000,stop_bits=0.5");
    QCOMPARE(brief(desk), expected);
    QCOMPARE(desk.frame(0).last, desk.frame(0).first + 189);
    QCOMPARE(desk.frame(1).first, sender.starts[1]);
}

/// A stop element of a quarter before and behind its look: 2.5 % of the rate each way; and at few samples a bit.
void TstUart::halfAStopBitIsReadAtAnyPlaceOfTheSamples()
{
    for (const double bit : {100.0, 97.5, 102.5, 20.0, 8.7, 5.3, 4.0}) {
        Sender sender(bit);
        sender.idle(12);
        Texts expected;
        for (unsigned value = 0; value < 256; ++value) {
            sender.byte(value, 0.5).idle(value % 5 == 0 ? 0.3 : 0.0);
            expected.push_back(std::to_string(value));
        }
        sender.idle(2);
        const double nominal = bit > 90 ? 100 : bit;
        const auto rate = std::lround(double(sampleRate) / nominal);
        QCOMPARE(brief(Decoded(sender, "stop_bits=0.5,baudrate=" + std::to_string(rate))), expected);
    }
}

void TstUart::aLowHalfStopBitIsAFramingError()
{
    Sender sender(20);
    sender.idle(12).byte(0x41, 0).low(0.5).idle(1).byte(0x42, 0.5).byte(0x43, 1).low(15).idle(0.5).byte(0x44, 0.5);
    sender.idle(1);
    const Decoded desk(sender, "baudrate=50000,stop_bits=0.5");
    QCOMPARE(brief(desk), (Texts{"65f", "66", "67", "break", "68"}));
    QCOMPARE(desk.markers(3)[8].type, MarkerType::ErrorX);
    QCOMPARE(desk.markers(3)[8].sample, std::uint64_t(sender.starts[0]) + 185); // 9 bits and a quarter
}

void TstUart::aLongLowIsOneBreak()
{
    Sender sender(20);
    sender.idle(2).byte(0x41).low(25).idle(2).byte(0x42).low(10).idle(1).byte(0x00).idle(1);
    const Decoded desk(sender, "baudrate=50000");
    QCOMPARE(brief(desk), (Texts{"65", "break", "66", "break", "0"}));
    QCOMPARE(desk.frame(1).first, std::int64_t(12 * 20));
    QCOMPARE(desk.frame(1).last, std::int64_t(37 * 20 - 1));
}

void TstUart::aBreakMayLastToTheCapturesEnd()
{
    Sender sender(20);
    sender.idle(2).low(30);
    const Decoded desk(sender, "baudrate=50000");
    QCOMPARE(brief(desk), Texts{"break"});
    QCOMPARE(desk.frame(0).last, std::int64_t(32 * 20 - 1));
}

void TstUart::aBreakMayBeginWithinACharacter()
{
    Sender sender(20);
    sender.idle(20).byte(0x41).low(3).idle(2).low(14).idle(2).byte(0x42).idle(2).low(5).idle(1).low(9).idle(2);
    const Decoded desk(sender, "baudrate=50000");
    QCOMPARE(brief(desk), (Texts{"65", "12f", "break", "66", "16f"})); // the last one is shorter than a character
    QCOMPARE(desk.message(), std::string()); // such as that markers are not in the order of time
    QCOMPARE(desk.frame(2).first, desk.frame(1).last + 1);
    QCOMPARE(desk.frame(2).last, std::int64_t(49 * 20 - 1));
}

void TstUart::aSenderMayBeFivePercentOffAndNotSix_data()
{
    QTest::addColumn<double>("bit");
    QTest::addColumn<bool>("isRead");
    QTest::newRow("as set") << 100.0 << true;
    QTest::newRow("fast, within") << 95.0 << true;
    QTest::newRow("slow, within") << 105.0 << true;
    QTest::newRow("fast, beyond") << 94.0 << false;
    QTest::newRow("slow, beyond") << 106.0 << false;
}

/// The stop bit is looked at some 9.5 bits behind the start: half a bit there is 5.2 % of the rate.
void TstUart::aSenderMayBeFivePercentOffAndNotSix()
{
    QFETCH(double, bit);
    QFETCH(bool, isRead);
    Sender sender(bit);
    sender.idle(12);
    Texts expected;
    for (unsigned value = 0; value < 256; ++value) {
        sender.byte(value).idle(0.0);
        expected.push_back(std::to_string(value));
    }
    sender.idle(2);
    const Texts got = brief(Decoded(sender, "baudrate=10000"));
    if (isRead) {
        QCOMPARE(got, expected);
    } else {
        QVERIFY(got != expected);
    }
}

void TstUart::aPulseOfLessThanHalfABitIsNoStart()
{
    Sender sender(100);
    sender.idle(12).low(0.4).idle(3).byte(0x41).idle(12).low(0.6).idle(12);
    QCOMPARE(brief(Decoded(sender, "baudrate=10000")), (Texts{"65", "255"}));
}

void TstUart::aSpikeInTheMiddleOfABitIsVotedOut()
{
    // Each bit of 100 samples has one sample of the other level, at different places around its middle.
    for (int place = 40; place <= 60; ++place) {
        EdgeLine line(true);
        line.hold(200);
        for (const char bit : std::string("0100000101")) {
            line.bit(bit == '1', place).bit(bit != '1', 1).bit(bit == '1', 99 - place);
        }
        line.set(true).hold(200);
        TestCapture capture(sampleRate, line.position());
        capture.channel(3, line);
        DecodeDesk desk(std::make_unique<UartAnalyzer>(), "rx=3,baudrate=10000");
        QCOMPARE(brief(desk.run(capture)), Texts{"65"});
    }
}

void TstUart::threeSamplesABitAreEnoughAndTwoAreTooFew()
{
    Sender sender(3);
    sender.idle(3);
    Texts expected;
    for (unsigned value = 0; value < 256; ++value) {
        sender.byte(value);
        expected.push_back(std::to_string(value));
    }
    sender.idle(2);
    QCOMPARE(brief(Decoded(sender, "baudrate=333333")), expected);
    const Decoded desk(sender, "baudrate=500000");
    QCOMPARE(desk.analyzer->GetDecodeStatus(), DecodeStatus::Failed);
    QCOMPARE(desk.message(), std::string("The sample rate is too low: 500000 bits/s need at least 1500000 Hz"));
}

void TstUart::theRateIsFoundAndTold_data()
{
    QTest::addColumn<int>("rate");
    QTest::addColumn<double>("off");
    for (const int rate : {300, 1200, 9600, 19200, 38400, 57600, 115200, 12345}) {
        QTest::addRow("%d", rate) << rate << 1.0;
    }
    QTest::newRow("2 % slow") << 9600 << 1.02;
    QTest::newRow("2 % fast") << 9600 << 0.98;
}

void TstUart::theRateIsFoundAndTold()
{
    QFETCH(int, rate);
    QFETCH(double, off);
    Sender sender(double(sampleRate) / rate * off);
    sender.idle(20);
    Texts expected;
    for (const char c : std::string("The rate is found from the edges.\r\n")) {
        sender.byte(unsigned(c)).idle(0.3 + 2.0 * (c % 3));
        expected.push_back(std::to_string(int(c)));
    }
    sender.idle(20);
    const Decoded desk(sender, "baudrate=0");
    QCOMPARE(brief(desk), expected);
    const std::string told = desk.message();
    const std::string start = "Bit rate found: ";
    QCOMPARE(told.substr(0, start.size()), start);
    QVERIFY2(std::abs(std::stod(told.substr(start.size())) - rate) <= rate * 0.002, told.c_str());
}

void TstUart::manyGlitchesDoNotHideTheRate()
{
    Sender sender(100);
    sender.idle(20);
    Texts expected;
    for (const char c : std::string("glitches between all characters of a text")) {
        sender.byte(unsigned(c)).idle(2).low(0.1).idle(2);
        expected.push_back(std::to_string(int(c)));
    }
    sender.idle(20);
    const Decoded desk(sender, "baudrate=0");
    QCOMPARE(desk.message(), std::string("Bit rate found: 10000 bits/s"));
    QCOMPARE(brief(desk), expected);
}

void TstUart::withoutEdgesNoRateIsFound()
{
    Sender sender(20);
    sender.idle(100).byte(0xff).idle(10);
    const Decoded desk(sender, "baudrate=0");
    QCOMPARE(desk.analyzer->GetDecodeStatus(), DecodeStatus::Failed);
    QCOMPARE(desk.message(), std::string("No bit rate can be found: the lines have too few edges"));
}

void TstUart::twoLinesComeInTheOrderOfTime()
{
    Sender rx(20);
    rx.idle(2).byte(0x01).idle(30).byte(0x03).idle(5);
    Sender tx(20);
    tx.idle(7).byte(0x02).idle(40).byte(0x04).byte(0x05).idle(5);
    TestCapture capture(sampleRate, tx.now());
    capture.channel(0, rx.line()).channel(1, tx.line());
    DecodeDesk desk(std::make_unique<UartAnalyzer>(), "rx=0,tx=1,baudrate=50000,idle_bits=10");
    desk.run(capture);
    QCOMPARE(desk.summaries(),
             (Texts{"byte ch=0 v=1 pe=0 fe=0", "byte ch=1 v=2 pe=0 fe=0", "idle ch=0", "idle ch=1",
                    "byte ch=0 v=3 pe=0 fe=0", "byte ch=1 v=4 pe=0 fe=0", "byte ch=1 v=5 pe=0 fe=0"}));
    QCOMPARE(decoderChecks::faultOf(desk, tx.now()), std::string());
    QCOMPARE(desk.frame(1).text, std::string("TX: Data 0x02"));
    QVERIFY(desk.bubble(1, Channel(0, 0), DisplayBase::Decimal).empty());
    QCOMPARE(desk.bubble(1, Channel(0, 1), DisplayBase::Decimal), Texts{"2"});
}

void TstUart::pausesAreShownFromTheSetLengthOn()
{
    Sender sender(20);
    sender.idle(50).byte(0x41).idle(9).byte(0x42).idle(10).byte(0x43).idle(50);
    QCOMPARE(brief(Decoded(sender, "baudrate=50000,idle_bits=0")), (Texts{"65", "66", "67"}));
    const Decoded desk(sender, "baudrate=50000,idle_bits=10");
    QCOMPARE(brief(desk), (Texts{"65", "66", "idle", "67"}));
    QCOMPARE(desk.frame(2).first, desk.frame(1).last + 1);
    QCOMPARE(desk.frame(2).last, desk.frame(3).first - 1);
    QCOMPARE(desk.frame(2).text, std::string("Idle for 200 us"));
}

void TstUart::theNinthBitMarksAnAddress()
{
    Sender sender(20);
    sender.idle(2).raw("100000101").raw("010000100").idle(1);
    const Decoded desk(sender, "baudrate=50000,data_bits=9,address_bit=true");
    QCOMPARE(desk.summaries(), (Texts{"byte ch=3 v=321 pe=0 fe=0 address=1", "byte ch=3 v=66 pe=0 fe=0"}));
    QCOMPARE(desk.frame(0).text, std::string("Address 0x41"));
    QCOMPARE(desk.frame(1).text, std::string("Data 0x042"));
}

void TstUart::settingsThatDoNotGoTogetherAreRefused()
{
    DecodeDesk desk(std::make_unique<UartAnalyzer>());
    QCOMPARE(desk.edit({{"rx", "none"}, {"tx", "none"}}), std::string("Choose a channel for RX or TX"));
    QCOMPARE(desk.edit({{"rx", "1"}}), std::string());
    QVERIFY(!desk.edit({{"rx", "1"}, {"tx", "1"}}).empty());
    QCOMPARE(desk.edit({{"tx", "2"}, {"data_bits", "8"}, {"address_bit", "true"}}),
             std::string("An address bit needs 9 data bits"));
    QCOMPARE(desk.edit({{"data_bits", "9"}, {"parity", "space"}, {"stop_bits", "1.5"}, {"bit_order", "msb"}}),
             std::string());
    QVERIFY(!desk.edit({{"data_bits", "10"}}).empty());
    QVERIFY(!desk.edit({{"baudrate", "-1"}}).empty());
}

void TstUart::storedSettingsOfEarlierVersionsStayWhatTheyWere()
{
    for (const char *parity : {"none", "odd", "even", "mark", "space"}) {
        for (const char *stop : {"1", "1.5", "2"}) {
            const std::string stored = "rx=3,tx=none,baudrate=9600,data_bits=8,parity=" + std::string(parity) +
                                       ",stop_bits=" + stop +
                                       ",invert=false,invert_rx=false,invert_tx=false,bit_order=lsb,"
                                       "address_bit=false,idle_bits=0";
            UartSettings settings;
            settings.LoadText(stored.c_str());
            QCOMPARE(std::string(settings.SaveText()), stored);
        }
    }
}

void TstUart::textsGoFromShortToLong()
{
    Sender sender(20);
    sender.idle(12).raw("100000101").raw("100000100").raw("100000100", 0).low(1).idle(2).low(15).idle(2);
    const Decoded desk(sender, "baudrate=50000,parity=even");
    const Channel rx(0, 3);
    QCOMPARE(desk.bubble(1, rx, DisplayBase::Hexadecimal), Texts{"0x41"});
    QCOMPARE(desk.bubble(1, rx, DisplayBase::Ascii), Texts{"'A'"});
    QCOMPARE(desk.bubble(0, rx, DisplayBase::Decimal), (Texts{"!", "65 !", "65 PE", "Data 65, parity error"}));
    QCOMPARE(desk.frame(2).text, std::string("Data 0x41, framing error"));
    QCOMPARE(desk.bubble(3, rx, DisplayBase::Decimal), (Texts{"B", "Break", "Break of 300 us"}));
    QVERIFY(desk.bubble(0, Channel(0, 2), DisplayBase::Decimal).empty());
}

void TstUart::eachBitHasAMarkerAndErrorsTheirOwn()
{
    Sender sender(100);
    sender.idle(2).raw("100000100").raw("100000101").raw("100000100", 0).low(1).idle(2);
    const Decoded desk(sender, "baudrate=10000,parity=even");
    const std::vector<Marker> markers = desk.markers(3);
    QCOMPARE(markers.size(), std::size_t(9 + 9 + 10));
    for (std::size_t i = 0; i < 9; ++i) {
        QCOMPARE(markers[i].sample, std::uint64_t(sender.starts[0]) + 150 + 100 * i);
        QCOMPARE(markers[i].type, MarkerType::Dot);
    }
    QCOMPARE(markers[17].type, MarkerType::ErrorDot);
    QCOMPARE(markers[27].type, MarkerType::ErrorX);
}

void TstUart::exportsHaveAllCharacters()
{
    Sender sender(20);
    sender.idle(2).byte('H').byte('i').byte('\n').idle(2);
    const Decoded desk(sender, "baudrate=50000");
    QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("out")).toStdString();
    QCOMPARE(decoderChecks::exported(desk, path + ".bin", UartSettings::RxBytes), std::string("Hi\n"));
    QCOMPARE(decoderChecks::exported(desk, path + ".bin", UartSettings::TxBytes), std::string());
    const std::string csv = decoderChecks::exported(desk, path + ".csv", 0);
    QVERIFY2(csv.find("byte,3,72,0,0,,Data 0x48") != std::string::npos, csv.c_str());
    const std::string text = decoderChecks::exported(desk, path + ".txt", 0);
    QVERIFY2(text.find("Data 0x69") != std::string::npos, text.c_str());
    Sender bus(20);
    bus.idle(2).raw("100000101").raw("010000100").idle(1);
    const Decoded addressed(bus, "baudrate=50000,data_bits=9,address_bit=true");
    const std::string marked = decoderChecks::exported(addressed, path + ".csv", 0);
    QVERIFY2(marked.find("byte,3,321,0,0,1,") != std::string::npos, marked.c_str());
    QVERIFY2(marked.find("byte,3,66,0,0,,") != std::string::npos, marked.c_str());

    Sender nine(20);
    nine.idle(2).raw("100000101").idle(2);
    const Decoded wide(nine, "baudrate=50000,data_bits=9");
    QCOMPARE(decoderChecks::exported(wide, path + ".bin", UartSettings::RxBytes), std::string("\x41\x01"));
}

void TstUart::aCutCharacterIsNotShown()
{
    Sender sender(10);
    sender.idle(3).byte(0x41).byte(0x00).byte(0xff).idle(1).byte(0x55, 0).low(1).idle(2).low(14).idle(1).byte(0x11);
    const auto whole = Decoded(sender, "baudrate=100000").frames();
    QCOMPARE(whole.size(), std::size_t(6));
    for (std::int64_t length = 1; length < sender.now(); ++length) {
        const Decoded desk(sender, "baudrate=100000", length);
        QCOMPARE(decoderChecks::faultOf(desk, length), std::string());
        const auto cut = desk.frames();
        QCOMPARE(decoderChecks::faultOfCut(cut, whole), std::string());
        for (std::size_t i = 0; i < whole.size(); ++i) {
            // Known from the middle of the stop bit on.
            QCOMPARE(cut.size() > i, length > whole[i].first + 95);
        }
    }
}

void TstUart::aCutHalfStopBitIsNotShown()
{
    Sender sender(10);
    sender.idle(3).byte(0x41, 0.5).byte(0x00, 0.5).byte(0xff, 0.5).byte(0x55, 0.5).idle(1).byte(0x11, 0.5).idle(0.5);
    const std::string settings = "baudrate=100000,stop_bits=0.5";
    const auto whole = Decoded(sender, settings).frames();
    QCOMPARE(whole.size(), std::size_t(5));
    for (std::int64_t length = 1; length < sender.now(); ++length) {
        const Decoded desk(sender, settings, length);
        QCOMPARE(decoderChecks::faultOf(desk, length), std::string());
        const auto cut = desk.frames();
        QCOMPARE(decoderChecks::faultOfCut(cut, whole), std::string());
        for (std::size_t i = 0; i < whole.size(); ++i) {
            QCOMPARE(cut.size() > i, length > whole[i].first + 92);
        }
    }
}

void TstUart::theRateIsFoundOfHalfStopBitsAndUncheckedParity()
{
    for (const int rate : {1200, 9600, 57600}) {
        Sender sender(double(sampleRate) / rate);
        sender.idle(20);
        Texts expected;
        for (const char c : std::string("The rate is found from the edges.\r\n")) {
            std::string bits;
            for (unsigned i = 0; i < 8; ++i) {
                bits += (unsigned(c) >> i & 1U) != 0 ? '1' : '0';
            }
            sender.raw(bits + (c % 3 == 0 ? "1" : "0"), 0.5);
            expected.push_back(std::to_string(int(c)));
        }
        sender.idle(20);
        const Decoded desk(sender, "baudrate=0,parity=ignore,stop_bits=0.5");
        QCOMPARE(desk.message(), "Bit rate found: " + std::to_string(rate) + " bits/s");
        QCOMPARE(brief(desk), expected);
    }
}

void TstUart::theTailOfACharacterIsNoCharacter()
{
    // The capture begins within 0x55 and its falling edges; none of them has a stop bit in its place.
    Sender sender(20);
    sender.low(0.5).idle(1).low(1).idle(1).low(1).idle(1).byte(0x00).byte(0x01).byte(0x02).idle(2);
    const Texts got = brief(Decoded(sender, "baudrate=50000"));
    QCOMPARE(got, (Texts{"0", "1", "2"}));
}

void TstUart::theSimulationIsDecodedAsItWasSent_data()
{
    QTest::addColumn<QString>("settings");
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("block");
    QTest::newRow("8n1") << "rx=0,baudrate=115200" << 1000000 << 100000;
    QTest::newRow("7e2, small blocks") << "rx=0,baudrate=9600,data_bits=7,parity=even,stop_bits=2" << 96000 << 77;
    QTest::newRow("one of two inverted") << "rx=0,tx=1,baudrate=19200,invert_tx=true" << 200000 << 4096;
    QTest::newRow("9o1 inverted") << "rx=0,baudrate=57600,data_bits=9,parity=odd,invert=true" << 2000000 << 4096;
    QTest::newRow("8x0.5") << "rx=0,baudrate=14400,parity=ignore,stop_bits=0.5" << 1000000 << 4096;
    QTest::newRow("8s1.5 highest first") << "rx=0,baudrate=250000,parity=space,stop_bits=1.5,bit_order=msb" << 1000000
                                         << 50000;
}

/// What is sent counts up; of every 17 characters one has a wrong parity, of 61 a low stop bit, of 251 one is a break.
void TstUart::theSimulationIsDecodedAsItWasSent()
{
    QFETCH(QString, settings);
    QFETCH(int, rate);
    QFETCH(int, block);
    DecodeDesk desk(std::make_unique<UartAnalyzer>(), settings.toStdString());
    const auto capture = desk.simulate(rate, rate / 2, block);
    desk.run(*capture);
    const bool hasParity =
        settings.contains(QLatin1String("parity")) && !settings.contains(QLatin1String("parity=ignore"));
    const unsigned bits = settings.contains(QLatin1String("=7")) ? 7 : settings.contains(QLatin1String("=9")) ? 9 : 8;
    const Texts got = brief(desk);
    QVERIFY2(got.size() > 300, std::to_string(got.size()).c_str());
    for (std::size_t i = 0; i < got.size(); ++i) {
        const std::size_t value = i & ((1U << bits) - 1U);
        std::string expected = std::to_string(value);
        expected += hasParity && i % 17 == 16 ? "p" : "";
        expected += i % 61 == 60 && value != 0 ? "f" : "";
        QVERIFY2(got[i] == (i % 251 == 250 ? std::string("break") : expected),
                 (std::to_string(i) + ": " + got[i] + ", not " + expected).c_str());
    }
}

void TstUart::aReceiverThatLooksAtEachSampleReadsTheSame_data()
{
    QTest::addColumn<int>("bitRate");
    QTest::addColumn<int>("mean");
    for (const int bitRate : {300000, 115200, 62500, 40000, 9600}) {
        for (const int mean : {2, 5, 20, 60, 300}) {
            QTest::addRow("%d bits/s, an edge each %d samples", bitRate, mean) << bitRate << mean;
        }
    }
}

void TstUart::aReceiverThatLooksAtEachSampleReadsTheSame()
{
    QFETCH(int, bitRate);
    QFETCH(int, mean);
    constexpr std::int64_t length = 50000;
    const std::vector<std::int64_t> edges = decoderChecks::randomEdges(7, mean, length);
    std::vector<bool> levels(length);
    bool level = true;
    for (std::size_t i = 0, next = 0; i < levels.size(); ++i) {
        if (next < edges.size() && edges[next] == std::int64_t(i)) {
            level = !level;
            ++next;
        }
        levels[i] = level;
    }
    TestCapture capture(sampleRate, length);
    capture.channel(3, true, edges);
    DecodeDesk desk(std::make_unique<UartAnalyzer>(), "rx=3,baudrate=" + std::to_string(bitRate));
    desk.run(capture);
    Texts got = brief(desk);
    for (std::size_t i = 0; i < got.size(); ++i) {
        got[i] = std::to_string(desk.frame(i).first) + ":" + got[i];
    }
    QCOMPARE(got, SampleReceiver(levels, bitRate).receive());
}

void TstUart::randomEdgesGiveFramesInOrder()
{
    constexpr std::int64_t length = 20000;
    for (const std::int64_t mean : {1, 2, 5, 20, 100, 1000}) {
        for (const char *settings :
             {"baudrate=100000", "baudrate=0", "baudrate=20000,parity=odd,stop_bits=2,idle_bits=3",
              "baudrate=300000,data_bits=5,invert=true", "baudrate=300000,parity=ignore,stop_bits=0.5",
              "baudrate=0,stop_bits=0.5"}) {
            TestCapture capture(sampleRate, length);
            capture.channel(3, false, decoderChecks::randomEdges(1, mean, length));
            capture.channel(4, true, decoderChecks::randomEdges(2, mean, length));
            DecodeDesk desk(std::make_unique<UartAnalyzer>(), std::string("rx=3,tx=4,") + settings);
            desk.run(capture);
            if (desk.analyzer->GetDecodeStatus() != DecodeStatus::Failed) {
                QCOMPARE(decoderChecks::faultOf(desk, length), std::string());
            }
        }
    }
}

QTEST_GUILESS_MAIN(TstUart)
#include "tst_Uart.moc"
