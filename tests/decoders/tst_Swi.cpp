#include "DecoderChecks.h"
#include "LinePart.h"
#include "SwiAnalyzer.h"
#include "SwiNames.h"

#include <QtTest>

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

using Texts = std::vector<std::string>;

namespace {

constexpr std::int64_t sampleRate = 10000000; ///< ten samples a microsecond
constexpr std::uint32_t channel = 3;
constexpr const char *line = "sda=3";

/// A wire by the figures of DS40002025A, 7.3.1; times in tenths of a microsecond, which are samples.
class Wire {
public:
    Wire() : m_line(true) { wait(1000); }
    Wire &wait(std::int64_t time)
    {
        m_line.hold(time);
        return *this;
    }
    Wire &pulse(std::int64_t low, std::int64_t high)
    {
        falls.push_back(m_line.position());
        m_line.set(false).hold(low).set(true).hold(high);
        return *this;
    }
    Wire &wake(std::int64_t low = 700) { return pulse(low, 25000); }
    Wire &bit(bool value, std::int64_t start = 43, std::int64_t length = 390)
    {
        bits.push_back(m_line.position());
        return value ? pulse(start, length - start) : pulse(start, start).pulse(start, length - 3 * start);
    }
    Wire &byte(unsigned value, std::int64_t start = 43, std::int64_t length = 390)
    {
        begins.push_back(m_line.position());
        for (unsigned i = 0; i < 8; ++i) {
            bit((value >> i & 1U) != 0, start, length);
        }
        return *this;
    }
    Wire &all(std::initializer_list<unsigned> values)
    {
        for (const unsigned value : values) {
            byte(value);
        }
        return *this;
    }
    /// @param error  is added to the CRC
    Wire &block(std::initializer_list<unsigned> content, unsigned error = 0)
    {
        std::vector<std::uint8_t> sent{std::uint8_t(content.size() + 3)};
        sent.insert(sent.end(), content.begin(), content.end());
        const unsigned crc = swi::crcOf(sent) ^ error;
        sent.push_back(std::uint8_t(crc));
        sent.push_back(std::uint8_t(crc >> 8));
        for (const std::uint8_t value : sent) {
            byte(value);
        }
        return *this;
    }
    [[nodiscard]] std::int64_t now() const { return m_line.position(); }
    [[nodiscard]] const EdgeLine &edges() const { return m_line; }

    std::vector<std::int64_t> falls;
    std::vector<std::int64_t> bits;
    std::vector<std::int64_t> begins; ///< of bytes

private:
    EdgeLine m_line;
};

/// A run on what was sent.
class Decoded : public DecodeDesk {
public:
    explicit Decoded(const Wire &wire, const std::string &settings = line, std::int64_t length = -1,
                     std::int64_t from = 0, std::int64_t shift = 0, std::int64_t rate = sampleRate)
        : DecodeDesk(std::make_unique<SwiAnalyzer>(), settings),
          m_capture(rate, (length < 0 ? wire.now() : length) - from + shift)
    {
        addPart(m_capture, channel, wire.edges(), from, shift);
        run(m_capture);
    }

private:
    TestCapture m_capture;
};

/// All but the bytes, without who sends.
Texts plain(const DecodeDesk &desk)
{
    Texts all;
    for (const DecodedFrame &frame : desk.frames()) {
        if (frame.kind == "wake") {
            all.push_back(frame.kind);
        } else if (frame.kind == "block") {
            all.push_back("block " + frame.value("v") + " " + frame.value("crc"));
        } else if (frame.kind != "byte") {
            all.push_back(frame.kind + " " + frame.value("v"));
        }
    }
    return all;
}

} // namespace

class TstSwi : public QObject {
    Q_OBJECT
private slots:
    void eachElementBeginsAndEndsAsOnTheWire();
    void theCrcIsThatOfTheDataSheet();
    void aWrongCrcIsTold();
    void aWakePulseHasItsShortestTime();
    void pulsesHaveTheirLimits();
    void aZeroHasItsSecondPulseInTime();
    void glitchesAreNotSeen();
    void aBitHasTwoPulsesAtMost();
    void flagsAreToldByName();
    void anotherFlagThanTheFourIsNone();
    void aDeviceThatDoesNotAnswerIsAskedAgain();
    void aPauseCutsABlock();
    void aWakePulseCutsABlock();
    void aCountThatIsTooSmallIsNoBlock();
    void commandsAndAnswersHaveTheirNames();
    void theBitRateStretchesAllPulses();
    void nothingIsDecodedBeforeAWakePulse();
    void aCaptureMayBeginAnywhere();
    void aCutElementIsNotShown();
    void aLowSampleRateIsRefused();
    void bubblesGoFromShortToLong();
    void markersStandAtBits();
    void exportsHaveALineABlock();
    void theSimulationIsDecodedAsItWasSent_data();
    void theSimulationIsDecodedAsItWasSent();
    void positionsBehindFourGigasamplesAreExact();
    void randomEdgesGiveFramesInOrder();
};

void TstSwi::eachElementBeginsAndEndsAsOnTheWire()
{
    Wire wire;
    wire.wake().byte(0x88).wait(300).all({0x04, 0x11, 0x33, 0x43}).wait(500);
    const Decoded desk(wire);
    QCOMPARE(desk.summaries(), (Texts{"wake", "flag v=136", "block v=11 crc=1 from=device", "byte v=4", "byte v=17",
                                      "byte v=51", "byte v=67"}));
    QCOMPARE(desk.frame(0).first, wire.falls[0]);
    QCOMPARE(desk.frame(0).last, wire.falls[0] + 700 - 1);
    QCOMPARE(desk.frame(1).first, wire.begins[0]);
    QCOMPARE(desk.frame(1).last, wire.begins[0] + 8 * 390 - 1);
    QCOMPARE(desk.frame(2).first, wire.begins[1]);
    QCOMPARE(desk.frame(2).last, wire.begins[4] + 8 * 390 - 1);
    for (std::uint64_t i = 1; i < 5; ++i) {
        QCOMPARE(desk.frame(i + 2).first, wire.begins[i]);
        QCOMPARE(desk.frame(i + 2).last, wire.begins[i] + 8 * 390 - 1);
    }
}

void TstSwi::theCrcIsThatOfTheDataSheet()
{
    const std::uint8_t awake[] = {0x04, 0x11, 0x33, 0x43};
    QVERIFY(swi::isCrcRight(awake));
    const std::uint8_t wrong[] = {0x04, 0x11, 0x43, 0x33};
    QVERIFY(!swi::isCrcRight(wrong));
}

void TstSwi::aWrongCrcIsTold()
{
    Wire wire;
    wire.wake().byte(0x77).block({0x1b, 0x00, 0x00, 0x00}, 0x100).wait(500);
    const Decoded desk(wire);
    QCOMPARE(plain(desk), (Texts{"wake", "flag 119", "block 1B000000 0"}));
    QCOMPARE(desk.frame(2).text, std::string("Command Random, CRC wrong: 0x1B 0x00 0x00 0x00"));
    QCOMPARE(desk.message(), std::string()); // which would tell of markers out of order
    const auto markers = desk.markers(channel);
    QVERIFY(std::any_of(markers.begin(), markers.end(), [&](const Marker &marker) {
        return marker.type == MarkerType::ErrorX && marker.sample == std::uint64_t(desk.frame(2).last);
    }));
}

void TstSwi::aWakePulseHasItsShortestTime()
{
    for (const int low : {599, 600, 2000}) {
        Wire wire;
        wire.wake(low).byte(0xbb).wait(500);
        QCOMPARE(plain(Decoded(wire)), low < 600 ? Texts() : (Texts{"wake", "flag 187"}));
    }
    for (const int high : {4999, 5000}) { // and the device its time to wake
        Wire wire;
        wire.pulse(700, high).byte(0xbb).wait(500);
        QCOMPARE(plain(Decoded(wire)), high < 5000 ? Texts() : (Texts{"wake", "flag 187"}));
    }
}

void TstSwi::pulsesHaveTheirLimits()
{
    for (const int start : {41, 46, 86, 100, 101}) { // host and device; 1.4 us more for slow edges
        Wire wire;
        wire.wake().byte(0x77, start, 370).wait(500);
        QCOMPARE(plain(Decoded(wire)).size(), std::size_t(start <= 100 ? 2 : 1));
    }
    for (const int length : {370, 780}) { // bits at their shortest and of a slow device
        Wire wire;
        wire.wake().byte(0xcc, 43, length).wait(500);
        QCOMPARE(plain(Decoded(wire)), (Texts{"wake", "flag 204"}));
    }
}

void TstSwi::aZeroHasItsSecondPulseInTime()
{
    for (const int gap : {86, 172, 259, 260}) { // between the falls of both pulses
        Wire wire;
        wire.wake();
        for (const bool bit : {true, true, true, false, true, true, true}) {
            wire.bit(bit);
        }
        wire.pulse(43, gap - 43).pulse(43, 1000); // the last bit of 0x77, or two
        QCOMPARE(plain(Decoded(wire)).size(), std::size_t(gap < 260 ? 2 : 1));
    }
}

void TstSwi::glitchesAreNotSeen()
{
    for (const int width : {20, 21}) {
        Wire wire;
        wire.wake().pulse(width, 1000).byte(0xbb).wait(500);
        QCOMPARE(plain(Decoded(wire)) == (Texts{"wake", "flag 187"}), width < 21);
    }
}

void TstSwi::aBitHasTwoPulsesAtMost()
{
    Wire wire;
    wire.wake().pulse(43, 43).pulse(43, 43).pulse(43, 1000).byte(0xbb).wake().byte(0xcc).wait(500);
    QCOMPARE(plain(Decoded(wire)), (Texts{"wake", "wake", "flag 204"}));
}

void TstSwi::flagsAreToldByName()
{
    const std::pair<unsigned, const char *> names[] = {{0x77, "Flag Command (0x77)"},
                                                       {0x88, "Flag Transmit (0x88)"},
                                                       {0xbb, "Flag Idle (0xBB)"},
                                                       {0xcc, "Flag Sleep (0xCC)"}};
    for (const auto &[flag, name] : names) {
        Wire wire;
        wire.wake().byte(flag).wait(500);
        QCOMPARE(Decoded(wire).frame(1).text, std::string(name));
    }
}

void TstSwi::anotherFlagThanTheFourIsNone()
{
    Wire wire;
    wire.wake().byte(0x78).all({4, 0x11, 0x33, 0x43}).wake().byte(0xbb).wait(500);
    const Decoded desk(wire);
    QCOMPARE(desk.summaries(), (Texts{"wake", "byte v=120", "wake", "flag v=187"}));
    QCOMPARE(desk.frame(1).text, std::string("No flag: 0x78"));
}

void TstSwi::aDeviceThatDoesNotAnswerIsAskedAgain()
{
    // From the fall of the flag's last bit; 0x88 ends in a 1.
    for (const int wait : {2500, 2501}) {
        Wire wire;
        wire.wake().byte(0x88).wait(wait - 390).byte(0x88).wait(300).all({0x04, 0x11, 0x33, 0x43}).wait(500);
        const Texts got = plain(Decoded(wire));
        QCOMPARE(got.size() == 4 && got[2] == "flag 136", wait > 2500);
    }
}

void TstSwi::aPauseCutsABlock()
{
    for (const int wait : {850000, 850001}) { // tTIMEOUT from the fall of the last bit
        Wire wire;
        wire.wake().byte(0x77).all({7, 0x1b, 0x00}).wait(wait - 390).all({0x12, 0x34, 0x56, 0x78}).wait(500);
        const Texts got = plain(Decoded(wire));
        QCOMPARE(got.at(2), std::string(wait == 850000 ? "block 1B001234 0" : "cut 1B00"));
    }
    for (const int wait : {850000, 850001}) { // to the capture's end, which tells nothing before
        Wire wire;
        wire.wake().byte(0x77).all({7, 0x1b, 0x00}).wait(wait - 390);
        QCOMPARE(plain(Decoded(wire)).size(), std::size_t(wait == 850000 ? 2 : 3));
    }
    Wire wire; // within a byte
    wire.wake().byte(0x77).all({7, 0x1b, 0x00}).bit(true).wait(900000).byte(0xcc).wait(500);
    const Decoded desk(wire);
    QCOMPARE(plain(desk), (Texts{"wake", "flag 119", "cut 1B00", "flag 204"}));
    QCOMPARE(desk.frame(2).text, std::string("Command Random, cut: 0x1B 0x00"));
    QCOMPARE(desk.frame(2).last, wire.bits.at(4 * 8) + 390 - 1);
}

void TstSwi::aWakePulseCutsABlock()
{
    Wire wire;
    wire.wake().byte(0x88).wait(300).all({7, 0x1b}).wake().byte(0xcc).wait(500);
    QCOMPARE(plain(Decoded(wire)), (Texts{"wake", "flag 136", "cut 1B", "wake", "flag 204"}));
}

void TstSwi::aCountThatIsTooSmallIsNoBlock()
{
    for (const unsigned count : {3U, 4U}) {
        Wire wire;
        wire.wake().byte(0x77).all({count, 0x11, 0x33, 0x43}).wake().wait(500);
        const Decoded desk(wire);
        QCOMPARE(plain(desk).at(2), std::string(count < 4 ? "cut " : "block 11 1"));
        QCOMPARE(desk.message(), std::string());
    }
}

void TstSwi::commandsAndAnswersHaveTheirNames()
{
    const std::pair<unsigned, const char *> commands[] = {{0x02, "Read"},  {0x08, "MAC"},      {0x12, "Write"},
                                                          {0x16, "Nonce"}, {0x28, "CheckMac"}, {0x47, "SHA"}};
    for (const auto &[opcode, name] : commands) {
        Wire wire;
        wire.wake().byte(0x77).block({opcode, 0, 1, 0}).wait(500);
        const Decoded desk(wire);
        QVERIFY(desk.frame(2).text.starts_with("Command " + std::string(name) + ": "));
        QVERIFY(desk.frame(4).text.starts_with(std::string(name) + " (0x"));
    }
    const std::pair<unsigned, const char *> answers[] = {
        {0x00, "success"}, {0x0f, "execution error"}, {0x11, "awake"}, {0xff, "CRC or communication error"}};
    for (const auto &[status, name] : answers) {
        Wire wire;
        wire.wake().byte(0x88).wait(300).block({status}).wait(500);
        QVERIFY(Decoded(wire).frame(2).text.starts_with("Answer " + std::string(name) + ": "));
    }
}

void TstSwi::theBitRateStretchesAllPulses()
{
    Wire wire;
    wire.wake(1400).byte(0x77, 86, 780).wait(500);
    QCOMPARE(plain(Decoded(wire, "sda=3,bit_rate=115200")), (Texts{"wake", "flag 119"}));
    Wire host;
    host.wake(1199).byte(0x77, 86, 780).wait(500);
    QCOMPARE(plain(Decoded(host, "sda=3,bit_rate=115200")), Texts());
}

void TstSwi::nothingIsDecodedBeforeAWakePulse()
{
    Wire wire;
    wire.byte(0x77).block({0x1b, 0, 0, 0}).wait(1000).byte(0xbb).wait(900000).byte(0xcc).wait(500);
    QCOMPARE(plain(Decoded(wire)), Texts{"flag 204"}); // or a pause that ends all
}

void TstSwi::aCaptureMayBeginAnywhere()
{
    Wire wire;
    wire.wake().byte(0x88).wait(300).all({4, 0x11, 0x33, 0x43}).wait(500).byte(0x77).block({0x1b, 0, 0, 0});
    wire.wait(20000).wake().byte(0xcc).wait(500);
    const auto whole = Decoded(wire).frames();
    for (std::int64_t from = 1; from < wire.now(); from += 37) {
        const auto got = Decoded(wire, line, -1, from).frames();
        for (std::size_t i = 0; i < got.size(); ++i) {
            const DecodedFrame &expected = whole.at(whole.size() - got.size() + i);
            const bool isCutWake = got[i].kind == "wake" && got[i].last + from == expected.last;
            QVERIFY(got[i].first + from == expected.first || isCutWake);
            QCOMPARE(got[i].summary(), expected.summary());
        }
    }
}

void TstSwi::aCutElementIsNotShown()
{
    Wire wire;
    wire.wake().byte(0x88).wait(300).all({4, 0x11, 0x33, 0x43}).wait(500).byte(0x77).block({0x1b, 0, 0, 0}).wait(500);
    const Texts whole = Decoded(wire).summaries();
    for (std::int64_t length = 1; length < wire.now(); length += 11) {
        const Decoded desk(wire, line, length);
        QCOMPARE(decoderChecks::faultOf(desk, length), std::string());
        const Texts cut = desk.summaries();
        QVERIFY(cut.size() <= whole.size());
        for (const std::string &summary : cut) {
            QVERIFY(std::find(whole.begin(), whole.end(), summary) != whole.end());
        }
        const bool hasBlock = length > wire.bits.at(39) + 129; // a 0, known with its second pulse
        QCOMPARE(std::count(cut.begin(), cut.end(), whole[2]), std::ptrdiff_t(hasBlock ? 1 : 0));
    }
}

void TstSwi::aLowSampleRateIsRefused()
{
    Wire wire;
    wire.wake();
    QVERIFY(Decoded(wire, line, -1, 0, 0, 691199).analyzer->GetDecodeStatus() == DecodeStatus::Failed);
    QVERIFY(Decoded(wire, line, -1, 0, 0, 691200).analyzer->GetDecodeStatus() == DecodeStatus::Complete);
    DecodeDesk desk(std::make_unique<SwiAnalyzer>());
    QVERIFY(!desk.edit({{"sda", "none"}}).empty());
    QCOMPARE(desk.edit({{"sda", "1"}, {"bit_rate", "115200"}}), std::string());
    QVERIFY(!desk.edit({{"bit_rate", "0"}}).empty());
}

void TstSwi::bubblesGoFromShortToLong()
{
    Wire wire;
    wire.wake().byte(0x77).block({0x1b, 0, 0, 0}).wait(500);
    const Decoded desk(wire);
    const Channel on(0, channel);
    QCOMPARE(desk.bubble(0, on, DisplayBase::Hexadecimal), (Texts{"W", "Wake", "Wake, low for 70.0 us"}));
    QCOMPARE(desk.bubble(1, on, DisplayBase::Hexadecimal), (Texts{"C", "Command", "Flag Command (0x77)"}));
    QVERIFY(desk.bubble(2, on, DisplayBase::Hexadecimal).empty()); // its bytes have theirs
    QCOMPARE(desk.bubble(3, on, DisplayBase::Decimal), (Texts{"7", "Count 7"}));
    QCOMPARE(desk.bubble(4, on, DisplayBase::Decimal), (Texts{"27", "Random", "Random (27)"}));
    QCOMPARE(desk.bubble(5, on, DisplayBase::Hexadecimal), (Texts{"0x00", "Data 0x00"}));
    QVERIFY(desk.frame(9).text.starts_with("CRC 0x"));
}

void TstSwi::markersStandAtBits()
{
    Wire wire;
    wire.wake().byte(0x77).wait(500);
    const auto markers = Decoded(wire).markers(channel);
    QCOMPARE(markers.size(), std::size_t(8));
    for (std::size_t i = 0; i < 8; ++i) {
        QCOMPARE(markers[i].sample, std::uint64_t(wire.bits[i]));
        QVERIFY(markers[i].type == ((0x77U >> i & 1U) != 0 ? MarkerType::One : MarkerType::Zero));
    }
}

void TstSwi::exportsHaveALineABlock()
{
    Wire wire;
    wire.wake().byte(0x88).wait(300).all({4, 0x11, 0x33, 0x43}).wait(500);
    const Decoded desk(wire);
    QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("out")).toStdString();
    const std::string text = decoderChecks::exported(desk, path + ".txt", SwiSettings::Blocks);
    QCOMPARE(std::count(text.begin(), text.end(), '\n'), std::ptrdiff_t(3));
    QVERIFY2(text.ends_with("\tAnswer awake: 0x11\n"), text.c_str());
    const std::string lines = decoderChecks::exported(desk, path + ".csv", SwiSettings::Blocks);
    QVERIFY2(lines.starts_with("time_s,first_sample,last_sample,text\n"), lines.c_str());
    QVERIFY2(lines.find(",Answer awake: 0x11\n") != std::string::npos, lines.c_str());
    const std::string csv = decoderChecks::exported(desk, path + ".csv", 0);
    QVERIFY2(csv.find("block,11,1,device,") != std::string::npos, csv.c_str());
}

void TstSwi::theSimulationIsDecodedAsItWasSent_data()
{
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("block");
    QTest::newRow("10 MHz") << 10000000 << 100000;
    QTest::newRow("700 kHz, small blocks") << 700000 << 53;
    QTest::newRow("50 MHz") << 50000000 << 65536;
}

/// Four forms of exchange in turn, with data that counts up.
void TstSwi::theSimulationIsDecodedAsItWasSent()
{
    QFETCH(int, rate);
    QFETCH(int, block);
    DecodeDesk desk(std::make_unique<SwiAnalyzer>(), line);
    const auto capture = desk.simulate(rate, rate * std::int64_t(5), block);
    const Texts got = plain(desk.run(*capture));
    QVERIFY(got.size() > 500);
    Texts expected;
    for (unsigned i = 0; expected.size() < got.size(); ++i) {
        const std::string n = QString::asprintf("%02X", i & 0xffU).toStdString();
        const Texts forms[] = {{"block 1B0100" + n + " 1", "flag 136", "block 010203" + n + " 1", "flag 187"},
                               {"block 0280" + n + "00 0", "flag 136", "block FF 1", "flag 204"},
                               {"block 0800" + n + "00 1", "flag 136", "flag 136", "block 00 1", "flag 204"},
                               {"cut 17" + n},
                               {"block 1B0000" + n + " 1"}};
        const Texts head{"wake", "flag 136", "block 11 1", "flag 119"};
        expected.insert(expected.end(), head.begin(), head.end());
        expected.insert(expected.end(), forms[i % 5].begin(), forms[i % 5].end());
    }
    expected.resize(got.size());
    QCOMPARE(got, expected);
    const auto frames = desk.frames();
    const auto unknown = std::count_if(frames.begin(), frames.end(), [](const DecodedFrame &frame) {
        return frame.kind == "byte" && frame.text == "No flag: 0x55";
    });
    QVERIFY(unknown > 10);
}

void TstSwi::positionsBehindFourGigasamplesAreExact()
{
    constexpr std::int64_t far = std::int64_t(5) << 32;
    Wire wire;
    wire.wake().byte(0x88).wait(300).all({4, 0x11, 0x33, 0x43}).wait(500);
    const Decoded desk(wire, line, -1, 0, far);
    QCOMPARE(plain(desk), (Texts{"wake", "flag 136", "block 11 1"}));
    QCOMPARE(desk.frame(2).first, far + wire.begins[1]);
}

void TstSwi::randomEdgesGiveFramesInOrder()
{
    constexpr std::int64_t length = 200000;
    for (const std::int64_t mean : {1, 10, 43, 100, 1000}) {
        for (const std::int64_t rate : {700000, 10000000}) {
            TestCapture capture(rate, length);
            capture.channel(channel, true, decoderChecks::randomEdges(5, mean, length));
            DecodeDesk desk(std::make_unique<SwiAnalyzer>(), line);
            QCOMPARE(decoderChecks::faultOf(desk.run(capture), length), std::string());
        }
    }
}

QTEST_GUILESS_MAIN(TstSwi)
#include "tst_Swi.moc"
