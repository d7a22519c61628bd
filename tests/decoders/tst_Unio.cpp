#include "DecoderChecks.h"
#include "LinePart.h"
#include "UnioAnalyzer.h"

#include <QtTest>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

using Texts = std::vector<std::string>;

namespace {

constexpr std::int64_t sampleRate = 1000000;
constexpr std::uint32_t channel = 3;
constexpr const char *line = "scio=3";

/// A bus by the figures of DS22076D, chapter 3, in microseconds. A bit takes 40 unless told otherwise.
class Wire {
public:
    explicit Wire(std::int64_t bitTime = 40) : m_line(true), m_bitTime(bitTime) {}
    Wire &hold(bool level, std::int64_t time)
    {
        m_line.set(level).hold(time);
        return *this;
    }
    Wire &standby(std::int64_t time = 700) { return hold(true, time); }
    Wire &bit(bool value)
    {
        const std::int64_t half = m_bitTime / 2;
        m_line.set(!value).hold(half).set(value).hold(m_bitTime - half);
        return *this;
    }
    Wire &bits(unsigned value, unsigned count)
    {
        for (unsigned i = count; i > 0; --i) {
            bit((value >> (i - 1) & 1U) != 0);
        }
        return *this;
    }
    Wire &header(std::int64_t setup = 10, std::int64_t low = 5)
    {
        hold(true, setup).hold(false, low);
        begins.push_back(m_line.position());
        bits(0x55, 8).bit(true);
        m_line.hold(m_bitTime);
        return *this;
    }
    Wire &byte(unsigned value, bool mak = true, bool sak = true)
    {
        begins.push_back(m_line.position());
        bits(value, 8).bit(mak);
        if (sak) {
            return bit(true);
        }
        m_line.hold(m_bitTime);
        return *this;
    }
    void setBitTime(std::int64_t time) { m_bitTime = time; }
    [[nodiscard]] std::int64_t now() const { return m_line.position(); }
    [[nodiscard]] const EdgeLine &edges() const { return m_line; }

    std::vector<std::int64_t> begins; ///< of headers and bytes

private:
    EdgeLine m_line;
    std::int64_t m_bitTime;
};

/// A run on what was sent.
class Decoded : public DecodeDesk {
public:
    explicit Decoded(const Wire &wire, std::int64_t length = -1, std::int64_t from = 0, std::int64_t shift = 0,
                     std::int64_t rate = sampleRate)
        : DecodeDesk(std::make_unique<UnioAnalyzer>(), line),
          m_capture(rate, (length < 0 ? wire.now() : length) - from + shift)
    {
        addPart(m_capture, channel, wire.edges(), from, shift);
        run(m_capture);
    }

private:
    TestCapture m_capture;
};

const std::string headerText = "header v=85 mak=1 sak=0";

std::string byteText(unsigned value, int mak = 1, int sak = 1)
{
    return "byte v=" + std::to_string(value) + " mak=" + std::to_string(mak) + " sak=" + std::to_string(sak);
}

} // namespace

class TstUnio : public QObject {
    Q_OBJECT
private slots:
    void eachElementBeginsAndEndsAsOnTheWire();
    void aStandbyPulseHasItsShortestTime();
    void aStartHeaderHasItsShortestTimes();
    void bitsMayBeTenToHundredMicrosecondsLong();
    void aByteMayBeFasterOrSlowerThanItsHeader();
    void anEdgeIsTakenWithinAQuarterOfABit();
    void aMissingSakIsTold();
    void messagesMayFollowWithoutStandby();
    void aStandbyPulseCutsAByte();
    void behindAnErrorNothingIsDecodedBeforeAStandbyPulse();
    void bytesHaveTheirNames();
    void aCaptureMayBeginAnywhere();
    void aCutElementIsNotShown();
    void aLowSampleRateIsRefused();
    void bubblesGoFromShortToLong();
    void markersStandAtBits();
    void exportsHaveALineAMessage();
    void theSimulationIsDecodedAsItWasSent_data();
    void theSimulationIsDecodedAsItWasSent();
    void positionsBehindFourGigasamplesAreExact();
    void randomEdgesGiveFramesInOrder();
};

void TstUnio::eachElementBeginsAndEndsAsOnTheWire()
{
    Wire wire;
    wire.standby().header().byte(0xa0).byte(0x96, false).hold(true, 100);
    const Decoded desk(wire);
    QCOMPARE(desk.summaries(), (Texts{"standby", headerText, byteText(0xa0), byteText(0x96, 0)}));
    QCOMPARE(desk.frame(0).first, std::int64_t(0));
    QCOMPARE(desk.frame(0).last, std::int64_t(709));
    for (std::uint64_t i = 0; i < 3; ++i) {
        QCOMPARE(desk.frame(i + 1).first, wire.begins[i]);
        QCOMPARE(desk.frame(i + 1).last, wire.begins[i] + 400 - 1);
    }
}

void TstUnio::aStandbyPulseHasItsShortestTime()
{
    for (const int time : {599, 600}) {
        Wire wire;
        wire.hold(false, 100).hold(true, time).hold(false, 100).hold(true, 50);
        QCOMPARE(Decoded(wire).summaries(), time < 600 ? Texts() : Texts{"standby"});
    }
    Wire idle; // and at the capture's end
    idle.hold(false, 100).hold(true, 800);
    QCOMPARE(Decoded(idle).summaries(), Texts{"standby"});
}

void TstUnio::aStartHeaderHasItsShortestTimes()
{
    for (const int setup : {9, 10}) {
        Wire wire;
        wire.standby().header().byte(0xa0, false).hold(true, -20).header(setup, 5).byte(0x12, false).standby(100);
        const Wire &sent = wire;
        QCOMPARE(Decoded(sent).summaries().size(), std::size_t(setup < 10 ? 3 : 5));
    }
    for (const int low : {4, 5, 100}) {
        Wire wire;
        wire.standby().header(10, low).byte(0xa0, false).standby(100);
        QCOMPARE(Decoded(wire).summaries().size(), std::size_t(low < 5 ? 1 : 3));
    }
}

void TstUnio::bitsMayBeTenToHundredMicrosecondsLong()
{
    for (const int time : {9, 10, 100, 105, 106}) {
        Wire wire(time);
        wire.standby().header().byte(0xa0, false).standby(300);
        QCOMPARE(Decoded(wire).summaries().size(), std::size_t(time >= 10 && time <= 105 ? 3 : 1));
    }
}

void TstUnio::aByteMayBeFasterOrSlowerThanItsHeader()
{
    for (const int time : {37, 38, 40, 42, 43}) { // 7 % off
        Wire wire(40);
        wire.standby().header();
        wire.setBitTime(time);
        wire.byte(0x00).byte(0xff).byte(0x5a, true, false).byte(0xc3, false).standby(100);
        QCOMPARE(Decoded(wire).summaries(),
                 (Texts{"standby", headerText, byteText(0), byteText(0xff), byteText(0x5a, 1, 0), byteText(0xc3, 0)}));
    }
}

void TstUnio::anEdgeIsTakenWithinAQuarterOfABit()
{
    for (const int late : {-11, -10, 10, 11}) { // the edge in the middle of a byte's first bit
        Wire wire;
        wire.standby().header().hold(false, 20 + late).hold(true, 20 - late);
        wire.bits(0, 7).bit(false).bit(true).standby(100);
        const Texts got = Decoded(wire).summaries();
        QCOMPARE(got.size() == 3 && got[2] == byteText(0x80, 0), late >= -10 && late <= 10);
    }
}

void TstUnio::aMissingSakIsTold()
{
    Wire wire;
    wire.standby().header().byte(0xa1, true, false).byte(0x96).byte(0x12, false, false).standby(100);
    const Decoded desk(wire);
    QCOMPARE(desk.summaries(),
             (Texts{"standby", headerText, byteText(0xa1, 1, 0), byteText(0x96), byteText(0x12, 0, 0)}));
    QCOMPARE(desk.frame(2).text, std::string("Device 0xA1, MAK, NoSAK"));
    QCOMPARE(desk.frame(2).last, wire.begins[2] - 1);
    Wire answered;
    answered.standby().hold(true, 10).hold(false, 5).bits(0x55, 8).bit(true).bit(true).byte(0xa0, false).standby(100);
    QCOMPARE(Decoded(answered).frame(1).text, std::string("Start header, SAK"));
}

void TstUnio::messagesMayFollowWithoutStandby()
{
    Wire wire;
    wire.standby().header().byte(0xa0).byte(0x96, false).header().byte(0xa0).byte(0x91, false).standby(100);
    QCOMPARE(Decoded(wire).summaries(), (Texts{"standby", headerText, byteText(0xa0), byteText(0x96, 0), headerText,
                                               byteText(0xa0), byteText(0x91, 0)}));
}

void TstUnio::aStandbyPulseCutsAByte()
{
    Wire wire;
    wire.standby().header().byte(0xa0).bits(0x1d, 5).standby().header().byte(0xa0, false).standby(100);
    const Decoded desk(wire);
    QCOMPARE(desk.summaries(),
             (Texts{"standby", headerText, byteText(0xa0), "cut n=5 v=29", "standby", headerText, byteText(0xa0, 0)}));
    QCOMPARE(desk.frame(3).text, std::string("Byte cut after 5 bits"));
    QCOMPARE(desk.frame(3).last, wire.begins[1] + 600 - 1);
}

void TstUnio::behindAnErrorNothingIsDecodedBeforeAStandbyPulse()
{
    Wire wire;
    wire.standby().header().byte(0xa0).bits(0x1d, 5).hold(true, 300).header().byte(0x12, false).standby();
    wire.header().byte(0x34, false).standby(100);
    QCOMPARE(Decoded(wire).summaries(),
             (Texts{"standby", headerText, byteText(0xa0), "cut n=5 v=29", "standby", headerText, byteText(0x34, 0)}));
}

void TstUnio::bytesHaveTheirNames()
{
    const std::pair<unsigned, const char *> commands[] = {{0x03, "READ"},  {0x05, "RDSR"},  {0x06, "CRRD"},
                                                          {0x67, "SETAL"}, {0x6c, "WRITE"}, {0x6d, "ERAL"},
                                                          {0x6e, "WRSR"},  {0x91, "WRDI"},  {0x96, "WREN"}};
    for (const auto &[command, name] : commands) {
        Wire wire;
        wire.standby().header().byte(0xa0).byte(command).byte(0x01).byte(0x02).byte(0x03, false).standby(100);
        const auto frames = Decoded(wire).frames();
        QVERIFY(frames[3].text.starts_with("Command " + std::string(name) + " (0x"));
        const bool hasAddress = command == 0x03 || command == 0x6c;
        const bool hasStatus = command == 0x05 || command == 0x6e;
        QCOMPARE(frames[4].text, std::string(hasAddress  ? "Address high 0x01, MAK, SAK"
                                             : hasStatus ? "Status 0x01, MAK, SAK"
                                                         : "Data 0x01, MAK, SAK"));
        QCOMPARE(frames[5].text.starts_with("Address low"), hasAddress);
        QVERIFY(frames[6].text.ends_with(", NoMAK, SAK"));
    }
}

void TstUnio::aCaptureMayBeginAnywhere()
{
    Wire wire;
    wire.standby().header().byte(0xa0).byte(0x55).byte(0xaa, false).header().byte(0xa0).byte(0x0f, false).standby();
    const auto whole = Decoded(wire).frames();
    for (std::int64_t from = 1; from < wire.now(); from += 3) {
        const auto got = Decoded(wire, -1, from).frames();
        for (const DecodedFrame &frame : got) {
            QVERIFY(std::any_of(whole.begin(), whole.end(), [&](const DecodedFrame &expected) {
                const bool isCutStandby = frame.kind == "standby" && expected.last == frame.last + from;
                return (expected.first == frame.first + from && expected.summary() == frame.summary()) || isCutStandby;
            }));
        }
    }
}

void TstUnio::aCutElementIsNotShown()
{
    Wire wire;
    wire.standby().header().byte(0xa0).byte(0x55).bits(0x1d, 5).standby().header().byte(0x0f, false).standby(100);
    const auto whole = Decoded(wire).frames();
    for (std::int64_t length = 1; length < wire.now(); ++length) {
        const Decoded desk(wire, length);
        QCOMPARE(decoderChecks::faultOf(desk, length), std::string());
        QCOMPARE(decoderChecks::faultOfCut(desk.frames(), whole), std::string());
        QCOMPARE(desk.message(), std::string()); // nothing reaches out of the capture
    }
}

void TstUnio::aLowSampleRateIsRefused()
{
    Wire wire;
    wire.standby();
    QVERIFY(Decoded(wire, -1, 0, 0, 49999).analyzer->GetDecodeStatus() == DecodeStatus::Failed);
    QVERIFY(Decoded(wire, -1, 0, 0, 50000).analyzer->GetDecodeStatus() == DecodeStatus::Complete);
    DecodeDesk desk(std::make_unique<UnioAnalyzer>());
    QVERIFY(!desk.edit({{"scio", "none"}}).empty());
    QCOMPARE(desk.edit({{"scio", "1"}}), std::string());
}

void TstUnio::bubblesGoFromShortToLong()
{
    Wire wire;
    wire.standby().header().byte(0xa0).byte(0x96, false).standby(100);
    const Decoded desk(wire);
    const Channel on(0, channel);
    QCOMPARE(desk.bubble(0, on, DisplayBase::Hexadecimal), (Texts{"S", "Standby", "Standby for 710 us"}));
    QCOMPARE(desk.bubble(1, on, DisplayBase::Hexadecimal), (Texts{"H", "Header", "Start header"}));
    QCOMPARE(desk.bubble(2, on, DisplayBase::Decimal), (Texts{"160", "Device 160", "Device 160, MAK, SAK"}));
    QCOMPARE(desk.bubble(3, on, DisplayBase::Hexadecimal),
             (Texts{"0x96", "WREN", "WREN (0x96)", "Command WREN (0x96), NoMAK, SAK"}));
}

void TstUnio::markersStandAtBits()
{
    Wire wire;
    wire.standby().header().byte(0xa0, false, false).standby(100);
    const Decoded desk(wire);
    const auto markers = desk.markers(channel);
    QCOMPARE(markers.size(), std::size_t(10));
    for (std::size_t i = 0; i < 9; ++i) {
        QCOMPARE(markers[i].sample, std::uint64_t(wire.begins[1]) + 20 + 40 * i);
        QVERIFY(markers[i].type == (i < 8 && (0xa0U >> (7 - i) & 1U) != 0 ? MarkerType::One : MarkerType::Zero));
    }
    QVERIFY(markers[9].type == MarkerType::X);
}

void TstUnio::exportsHaveALineAMessage()
{
    Wire wire;
    wire.standby().header().byte(0xa0).byte(0x96, false).header().byte(0xa0, true, false).byte(0x12, false);
    wire.standby();
    const Decoded desk(wire);
    QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("out")).toStdString();
    QCOMPARE(decoderChecks::exported(desk, path + ".txt", UnioSettings::Messages),
             std::string("0.000715 0xA0 WREN\n0.001930 0xA0! 0x12\n"));
    const std::string lines = decoderChecks::exported(desk, path + ".csv", UnioSettings::Messages);
    QVERIFY2(lines.starts_with("time_s,first_sample,last_sample,text\n"), lines.c_str());
    QVERIFY2(lines.find(",0xA0 WREN\n0.001930,") != std::string::npos, lines.c_str());
    const std::string csv = decoderChecks::exported(desk, path + ".csv", 0);
    QVERIFY2(csv.find("byte,150,0,1,,") != std::string::npos, csv.c_str());
    Wire cut;
    cut.standby().header().byte(0xa0).bits(0x1d, 5).standby(100);
    const std::string one = decoderChecks::exported(Decoded(cut), path + ".csv", 0);
    QVERIFY2(one.find(",cut,29,,,5,") != std::string::npos, one.c_str());
}

void TstUnio::theSimulationIsDecodedAsItWasSent_data()
{
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("block");
    QTest::newRow("1 MHz") << 1000000 << 100000;
    QTest::newRow("100 kHz, small blocks") << 100000 << 53;
    QTest::newRow("20 MHz") << 20000000 << 65536;
}

/// Six forms of message in turn, with data that counts up.
void TstUnio::theSimulationIsDecodedAsItWasSent()
{
    QFETCH(int, rate);
    QFETCH(int, block);
    DecodeDesk desk(std::make_unique<UnioAnalyzer>(), line);
    const auto capture = desk.simulate(rate, rate * std::int64_t(2), block);
    const Texts got = desk.run(*capture).summaries();
    QVERIFY(got.size() > 400);
    Texts expected;
    for (unsigned i = 0; expected.size() < got.size(); ++i) {
        const unsigned n = i & 0xffU;
        const Texts forms[] = {
            {byteText(0xa0), byteText(0x96, 0), headerText, byteText(0xa0), byteText(0x91, 0)},
            {byteText(0xa0), byteText(0x6c), byteText(0), byteText(0x10), byteText(n, 0)},
            {byteText(0xa0), byteText(0x03), byteText(0), byteText(0x10), byteText(n), byteText(n ^ 0xffU, 0)},
            {byteText(0xa0), byteText(0x05), byteText(n & 0x0fU, 0)},
            {byteText(0xa0, 0, 0)},
            {byteText(0xa0), byteText(0x06), "cut n=5 v=" + std::to_string(n & 0x1fU)}};
        expected.push_back("standby");
        expected.push_back(headerText);
        expected.insert(expected.end(), forms[i % 6].begin(), forms[i % 6].end());
    }
    expected.resize(got.size());
    QCOMPARE(got, expected);
}

void TstUnio::positionsBehindFourGigasamplesAreExact()
{
    constexpr std::int64_t far = std::int64_t(5) << 32;
    Wire wire;
    wire.standby().header().byte(0xa0).byte(0x12, false).standby(100);
    const Decoded desk(wire, -1, 0, far);
    QCOMPARE(desk.summaries(), (Texts{"standby", headerText, byteText(0xa0), byteText(0x12, 0)}));
    QCOMPARE(desk.frame(2).first, far + wire.begins[1]);
}

void TstUnio::randomEdgesGiveFramesInOrder()
{
    constexpr std::int64_t length = 200000;
    for (const std::int64_t mean : {1, 5, 10, 40, 300}) {
        for (const std::int64_t rate : {50000, 1000000, 10000000}) {
            TestCapture capture(rate, length);
            capture.channel(channel, true, decoderChecks::randomEdges(5, mean, length));
            DecodeDesk desk(std::make_unique<UnioAnalyzer>(), line);
            QCOMPARE(decoderChecks::faultOf(desk.run(capture), length), std::string());
        }
    }
}

QTEST_GUILESS_MAIN(TstUnio)
#include "tst_Unio.moc"
