#include "DecoderChecks.h"
#include "LinePart.h"
#include "Ps2Analyzer.h"

#include <QtTest>

#include <bit>
#include <cstdint>
#include <string>
#include <vector>

using Texts = std::vector<std::string>;

namespace {

constexpr std::int64_t sampleRate = 1000000;
constexpr std::uint32_t clockChannel = 2;
constexpr std::uint32_t dataChannel = 3;
constexpr const char *lines = "clk=2,data=3";

/// A port by the figures of IBM's reference, in microseconds: the data is there before the clock falls.
class Wire {
public:
    Wire() : m_clock(true), m_data(true) { wait(500); }
    Wire &wait(std::int64_t time)
    {
        m_now += time;
        return *this;
    }
    Wire &clock(bool level)
    {
        m_clock.holdUntil(m_now).set(level);
        return *this;
    }
    Wire &data(bool level)
    {
        m_data.holdUntil(m_now).set(level);
        return *this;
    }
    Wire &pulse(std::int64_t low = 40)
    {
        falls.push_back(m_now);
        return clock(false).wait(low).clock(true);
    }
    /// The bits of a byte with start, parity and stop.
    static std::uint32_t bitsOf(std::uint32_t value)
    {
        return value << 1 | (std::popcount(value) % 2 == 0 ? 1U << 9 : 0U) | 1U << 10;
    }
    Wire &send(std::uint32_t bits, unsigned count = 11, std::int64_t half = 40)
    {
        for (unsigned i = 0; i < count; ++i) {
            data((bits >> i & 1U) != 0).wait(half / 2).pulse(half).wait(half - half / 2);
        }
        return data(true).wait(500);
    }
    Wire &keyboard(std::uint32_t value) { return send(bitsOf(value)); }
    Wire &request(std::int64_t low = 100, std::int64_t answer = 200)
    {
        clock(false).wait(low - 5).data(false).wait(5).clock(true).wait(answer);
        return *this;
    }
    Wire &host(std::uint32_t bits, bool acknowledge = true)
    {
        for (unsigned i = 0; i < 10; ++i) {
            falls.push_back(m_now);
            clock(false).wait(10).data((bits >> i & 1U) != 0).wait(30).clock(true).wait(40);
        }
        return data(!acknowledge).pulse().data(true).wait(500);
    }
    Wire &command(std::uint32_t value) { return request().host(bitsOf(value) >> 1); }
    [[nodiscard]] std::int64_t now() const { return m_now; }
    [[nodiscard]] const EdgeLine &clockLine() const { return m_clock; }
    [[nodiscard]] const EdgeLine &dataLine() const { return m_data; }
    [[nodiscard]] std::unique_ptr<TestCapture> capture(std::int64_t length = -1, std::int64_t from = 0,
                                                       std::int64_t shift = 0) const
    {
        auto made = std::make_unique<TestCapture>(sampleRate, (length < 0 ? m_now : length) - from + shift);
        for (const auto &[channel, line] : {std::pair(clockChannel, &m_clock), std::pair(dataChannel, &m_data)}) {
            addPart(*made, channel, *line, from, shift);
        }
        return made;
    }

    std::vector<std::int64_t> falls;

private:
    EdgeLine m_clock;
    EdgeLine m_data;
    std::int64_t m_now = 0;
};

/// A run on what was sent.
class Decoded : public DecodeDesk {
public:
    explicit Decoded(const Wire &wire, const std::string &settings = lines, std::int64_t length = -1,
                     std::int64_t from = 0, std::int64_t shift = 0)
        : DecodeDesk(std::make_unique<Ps2Analyzer>(), settings), m_capture(wire.capture(length, from, shift))
    {
        run(*m_capture);
    }
    [[nodiscard]] Texts texts() const
    {
        Texts all;
        for (const DecodedFrame &frame : frames()) {
            all.push_back(frame.text);
        }
        return all;
    }

private:
    std::unique_ptr<TestCapture> m_capture;
};

/// Without the key's name.
Texts plain(const DecodeDesk &desk)
{
    Texts all;
    for (const DecodedFrame &frame : desk.frames()) {
        all.push_back(frame.kind == "short" ? "short " + frame.value("n")
                                            : frame.kind + " " + frame.value("v") + " " + frame.value("pe") +
                                                  frame.value("fe") + (frame.value("ack") == "0" ? " unanswered" : ""));
    }
    return all;
}

} // namespace

class TstPs2 : public QObject {
    Q_OBJECT
private slots:
    void eachElementBeginsAndEndsAsOnTheWire();
    void parityAndStopAreChecked();
    void keysHaveTheirNamesInEachSet_data();
    void keysHaveTheirNamesInEachSet();
    void thePauseKeyIsOneKey();
    void theHostSendsAfterItsRequest();
    void aRequestIsAnInhibitOfItsShortestTime();
    void theKeyboardMustAnswerInTime();
    void answersAreNoKeys();
    void aPauseCutsAByte();
    void anInhibitCutsAByte();
    void anInhibitOfTheLastClockLeavesTheByteWhole();
    void aByteWithoutStartBitIsNone();
    void spikesAreNotSeen();
    void aCaptureMayBeginAnywhere();
    void aCaptureMayBeginBehindACutByte();
    void aCutElementIsNotShown();
    void settingsThatDoNotGoTogetherAreRefused();
    void bubblesGoFromShortToLong();
    void markersStandAtClocksAndErrors();
    void framesAreExported();
    void anExportHasALineAKey();
    void theSimulationIsDecodedAsItWasSent_data();
    void theSimulationIsDecodedAsItWasSent();
    void positionsBehindFourGigasamplesAreExact();
    void randomEdgesGiveFramesInOrder();
};

void TstPs2::eachElementBeginsAndEndsAsOnTheWire()
{
    Wire wire;
    wire.keyboard(0x1c).keyboard(0xf0).command(0xed);
    const Decoded desk(wire);
    QCOMPARE(plain(desk), (Texts{"byte 28 00", "byte 240 00", "host 237 00"}));
    for (std::uint64_t i = 0; i < 3; ++i) {
        QCOMPARE(desk.frame(i).first, wire.falls[11 * i]);
        QCOMPARE(desk.frame(i).last, wire.falls[11 * i + 10] + 40 - 1);
    }
}

void TstPs2::parityAndStopAreChecked()
{
    Wire wire;
    wire.send(Wire::bitsOf(0x1c) ^ 1U << 9).send(Wire::bitsOf(0x1c) ^ 1U << 10).send(Wire::bitsOf(0) ^ 3U << 9);
    const Decoded desk(wire);
    QCOMPARE(plain(desk), (Texts{"byte 28 10", "byte 28 01", "byte 0 11"}));
    QCOMPARE(desk.frame(0).text, std::string("Data 0x1C, parity error"));
    QCOMPARE(desk.frame(2).text, std::string("Data 0x00, parity error, framing error"));
}

void TstPs2::keysHaveTheirNamesInEachSet_data()
{
    QTest::addColumn<int>("set");
    QTest::addColumn<QList<int>>("bytes");
    QTest::addColumn<QString>("last");
    QTest::newRow("1: A") << 1 << QList<int>{0x1e} << "A pressed (0x1E)";
    QTest::newRow("1: A up") << 1 << QList<int>{0x9e} << "A released (0x9E)";
    QTest::newRow("1: Left Shift up") << 1 << QList<int>{0xaa} << "Left Shift released (0xAA)";
    QTest::newRow("1: Up up") << 1 << QList<int>{0xe0, 0xc8} << "Up released (0xC8)";
    QTest::newRow("1: Pause") << 1 << QList<int>{0xe1, 0x1d, 0x45} << "Pause pressed (0x45)";
    QTest::newRow("2: A") << 2 << QList<int>{0x1c} << "A pressed (0x1C)";
    QTest::newRow("2: A up") << 2 << QList<int>{0xf0, 0x1c} << "A released (0x1C)";
    QTest::newRow("2: F7") << 2 << QList<int>{0x83} << "F7 pressed (0x83)";
    QTest::newRow("2: Up") << 2 << QList<int>{0xe0, 0x75} << "Up pressed (0x75)";
    QTest::newRow("2: Up up") << 2 << QList<int>{0xe0, 0xf0, 0x75} << "Up released (0x75)";
    QTest::newRow("2: keypad") << 2 << QList<int>{0x75} << "Keypad 8 pressed (0x75)";
    QTest::newRow("2: none") << 2 << QList<int>{0x02} << "Data 0x02";
    QTest::newRow("3: Caps Lock") << 3 << QList<int>{0x14} << "Caps Lock pressed (0x14)";
    QTest::newRow("3: Up up") << 3 << QList<int>{0xf0, 0x63} << "Up released (0x63)";
}

void TstPs2::keysHaveTheirNamesInEachSet()
{
    QFETCH(int, set);
    QFETCH(QList<int>, bytes);
    QFETCH(QString, last);
    Wire wire;
    for (const int byte : bytes) {
        wire.keyboard(std::uint32_t(byte));
    }
    const Decoded desk(wire, std::string(lines) + ",scan_code_set=" + std::to_string(set));
    QCOMPARE(desk.texts().back(), last.toStdString());
}

void TstPs2::thePauseKeyIsOneKey()
{
    Wire wire;
    for (const unsigned byte : {0xe1U, 0x14U, 0x77U, 0xe1U, 0xf0U, 0x14U, 0xf0U, 0x77U, 0x1cU}) {
        wire.keyboard(byte);
    }
    const Texts texts = Decoded(wire).texts();
    QCOMPARE(texts[1], std::string("Extended (0x14)"));
    QCOMPARE(texts[2], std::string("Pause pressed (0x77)"));
    QCOMPARE(texts[7], std::string("Pause released (0x77)"));
    QCOMPARE(texts[8], std::string("A pressed (0x1C)"));
}

void TstPs2::theHostSendsAfterItsRequest()
{
    Wire wire;
    wire.command(0xed).keyboard(0xfa).command(0x05).keyboard(0xfa).command(0xf3).keyboard(0xfa).command(0x20);
    const Decoded desk(wire);
    QCOMPARE(desk.texts(),
             (Texts{"Host: Set LEDs (0xED)", "ACK (0xFA)", "Host: LEDs: Scroll Lock, Caps Lock (0x05)", "ACK (0xFA)",
                    "Host: Set typematic rate (0xF3)", "ACK (0xFA)", "Host: Argument 0x20"}));
    Wire bad;
    bad.request().host(Wire::bitsOf(0xff) >> 1 ^ 1U << 8).request().host(Wire::bitsOf(0xff) >> 1, false);
    const Decoded wrong(bad);
    QCOMPARE(wrong.texts(), (Texts{"Host: Reset (0xFF), parity error", "Host: Reset (0xFF), no acknowledgement"}));
    QCOMPARE(wrong.frame(1).value("ack"), std::string("0"));
}

void TstPs2::aRequestIsAnInhibitOfItsShortestTime()
{
    for (const int low : {99, 100, 1000}) {
        Wire wire;
        wire.request(low).host(Wire::bitsOf(0xf4) >> 1);
        QCOMPARE(plain(Decoded(wire)).at(0) == "host 244 00", low >= 100);
    }
}

void TstPs2::theKeyboardMustAnswerInTime()
{
    for (const int answer : {15000, 15001}) {
        Wire wire;
        wire.request(100, answer).host(Wire::bitsOf(0xf4) >> 1);
        QCOMPARE(plain(Decoded(wire)).at(0) == "host 244 00", answer == 15000);
    }
}

void TstPs2::answersAreNoKeys()
{
    Wire wire;
    wire.command(0xff).keyboard(0xfa).keyboard(0xaa).command(0xf2).keyboard(0xfa).keyboard(0xab).keyboard(0x83);
    wire.keyboard(0x83).keyboard(0xfe).keyboard(0xee).keyboard(0xfc).keyboard(0x00);
    const Texts texts = Decoded(wire).texts();
    QCOMPARE(texts[2], std::string("Self-test passed (0xAA)"));
    QCOMPARE(texts[5], std::string("ID (0xAB)"));
    QCOMPARE(texts[6], std::string("ID (0x83)"));
    QCOMPARE(texts[7], std::string("F7 pressed (0x83)"));
    QCOMPARE(Texts(texts.begin() + 8, texts.end()),
             (Texts{"Resend (0xFE)", "Echo (0xEE)", "Self-test failed (0xFC)", "Overrun (0x00)"}));
}

void TstPs2::aPauseCutsAByte()
{
    for (const int pause : {200, 201}) { // from the rise to the next fall
        Wire wire;
        wire.send(Wire::bitsOf(0x1c), 5).wait(pause - 540).send(Wire::bitsOf(0x1c) >> 5, 6);
        const Texts got = plain(Decoded(wire));
        QCOMPARE(got.at(0), std::string(pause == 200 ? "byte 28 00" : "short 5"));
    }
    Wire wire;
    wire.send(Wire::bitsOf(0x1c), 1).keyboard(0x1c);
    QCOMPARE(plain(Decoded(wire)), (Texts{"short 1", "byte 28 00"}));
    QCOMPARE(Decoded(wire).frame(0).text, std::string("Cut after 1 clock"));
}

void TstPs2::anInhibitCutsAByte()
{
    Wire wire;
    wire.send(Wire::bitsOf(0x1c), 7).wait(-480).clock(false).wait(150).clock(true).wait(60).keyboard(0x1c);
    QCOMPARE(plain(Decoded(wire)), (Texts{"short 7", "byte 28 00"}));
}

void TstPs2::anInhibitOfTheLastClockLeavesTheByteWhole()
{
    Wire wire;
    const std::uint32_t bits = Wire::bitsOf(0x1c);
    for (unsigned i = 0; i < 11; ++i) {
        wire.data((bits >> i & 1U) != 0).wait(20).pulse(i < 10 ? 40 : 700).wait(20);
    }
    wire.wait(500).keyboard(0xf0);
    const Decoded desk(wire);
    QCOMPARE(plain(desk), (Texts{"byte 28 00", "byte 240 00"}));
    QCOMPARE(desk.frame(0).last, wire.falls[10] + 40 - 1);
}

void TstPs2::aByteWithoutStartBitIsNone()
{
    Wire wire;
    wire.send(0x7ff).keyboard(0x1c);
    QCOMPARE(plain(Decoded(wire)), (Texts{"byte 28 00"}));
}

void TstPs2::spikesAreNotSeen()
{
    Wire wire;
    wire.keyboard(0x1c).command(0xed).keyboard(0xfa).wait(500);
    for (const std::int64_t spike : {4, 5}) { // microseconds
        TestCapture capture(sampleRate, wire.now());
        capture.channel(clockChannel, decoderChecks::withSpikes(wire.clockLine(), spike, 3));
        capture.channel(dataChannel, decoderChecks::withSpikes(wire.dataLine(), spike, 3));
        DecodeDesk desk(std::make_unique<Ps2Analyzer>(), lines);
        desk.run(capture);
        QCOMPARE(plain(desk) == (Texts{"byte 28 00", "host 237 00", "byte 250 00"}), spike < 5);
    }
}

void TstPs2::aCaptureMayBeginAnywhere()
{
    Wire wire;
    wire.keyboard(0x00).keyboard(0x5a).command(0xf4).keyboard(0xfa);
    const auto whole = Decoded(wire).frames();
    for (std::int64_t from = 1; from < wire.now(); from += 3) {
        const auto got = Decoded(wire, lines, -1, from).frames();
        QVERIFY(got.size() <= whole.size());
        for (std::size_t i = 0; i < got.size(); ++i) {
            const DecodedFrame &expected = whole[whole.size() - got.size() + i];
            QCOMPARE(got[i].first + from, expected.first);
            QCOMPARE(got[i].summary(), expected.summary());
        }
    }
}

void TstPs2::aCaptureMayBeginBehindACutByte()
{
    Wire wire;
    wire.data(false).wait(20).pulse().wait(40).pulse().wait(12).data(true).wait(500).keyboard(0x5a);
    for (std::int64_t from = wire.falls[0]; from < wire.falls[1] + 300; ++from) {
        const auto got = Decoded(wire, lines, -1, from).frames();
        QVERIFY(!got.empty());
        QCOMPARE(got.back().kind, std::string("byte"));
        QCOMPARE(got.back().value("v"), std::string("90"));
        QCOMPARE(got.size(), std::size_t(1));
    }
}

void TstPs2::aCutElementIsNotShown()
{
    Wire wire;
    wire.keyboard(0x1c).command(0xf4).keyboard(0xfa);
    const auto whole = Decoded(wire).frames();
    QCOMPARE(whole.size(), std::size_t(3));
    for (std::int64_t length = 1; length < wire.now(); ++length) {
        const Decoded desk(wire, lines, length);
        QCOMPARE(decoderChecks::faultOf(desk, length), std::string());
        QCOMPARE(decoderChecks::faultOfCut(desk.frames(), whole), std::string());
        QCOMPARE(!desk.frames().empty(), length > wire.falls[10]);
    }
}

void TstPs2::settingsThatDoNotGoTogetherAreRefused()
{
    DecodeDesk desk(std::make_unique<Ps2Analyzer>());
    QVERIFY(!desk.edit({{"clk", "1"}}).empty());
    QVERIFY(!desk.edit({{"clk", "1"}, {"data", "1"}}).empty());
    QCOMPARE(desk.edit({{"clk", "1"}, {"data", "0"}, {"scan_code_set", "3"}}), std::string());
    QVERIFY(!desk.edit({{"scan_code_set", "4"}}).empty());
}

void TstPs2::bubblesGoFromShortToLong()
{
    Wire wire;
    wire.keyboard(0x1c).send(Wire::bitsOf(0x1c) ^ 1U << 9);
    const Decoded desk(wire);
    const Channel on(0, dataChannel);
    QCOMPARE(desk.bubble(0, on, DisplayBase::Hexadecimal), (Texts{"0x1C", "A pressed", "A pressed (0x1C)"}));
    QCOMPARE(desk.bubble(1, on, DisplayBase::Decimal), (Texts{"!", "28 !", "Data 28, parity error"}));
    QVERIFY(desk.bubble(0, Channel(0, clockChannel), DisplayBase::Hexadecimal).empty());
    QCOMPARE(desk.frame(0).summary(), std::string("byte v=28 pe=0 fe=0 key=A event=make"));
}

void TstPs2::markersStandAtClocksAndErrors()
{
    Wire wire;
    wire.keyboard(0x1c).send(Wire::bitsOf(0x1c) ^ 1U << 10);
    const Decoded desk(wire);
    const auto onClock = desk.markers(clockChannel);
    QCOMPARE(onClock.size(), std::size_t(22));
    for (std::size_t i = 0; i < onClock.size(); ++i) {
        QCOMPARE(onClock[i].sample, std::uint64_t(wire.falls[i]));
        QVERIFY(onClock[i].type == MarkerType::DownArrow);
    }
    QCOMPARE(desk.markers(dataChannel).size(), std::size_t(1));
    QVERIFY(desk.markers(dataChannel)[0].type == MarkerType::ErrorX);
}

void TstPs2::anExportHasALineAKey()
{
    Wire wire;
    wire.keyboard(0x1c).keyboard(0xe0).keyboard(0xf0).keyboard(0x75).command(0xed).keyboard(0xfa).command(0x02);
    wire.keyboard(0xe0).send(Wire::bitsOf(0x75) ^ 1U << 9).keyboard(0xe0).send(Wire::bitsOf(0x75), 5).keyboard(0x75);
    const Decoded desk(wire);
    QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("out")).toStdString();
    QStringList got = QString::fromStdString(decoderChecks::exported(desk, path + ".txt", Ps2Settings::Keys))
                          .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (QString &line : got) {
        line = line.section(QLatin1Char(' '), 1); // without the time
    }
    const char *expected = "0x1C A pressed|0xE0 0xF0 0x75 Up released|Host: Set LEDs (0xED)|ACK (0xFA)|"
                           "Host: LEDs: Num Lock (0x02)|0xE0 0x75 unknown, parity error|0xE0|Cut after 5 clocks|"
                           "0x75 Up pressed";
    QCOMPARE(got.join(QLatin1Char('|')), QString::fromLatin1(expected));
    const std::string csv = decoderChecks::exported(desk, path + ".csv", Ps2Settings::Keys);
    QVERIFY2(csv.starts_with("time_s,first_sample,last_sample,text\n"), csv.c_str());
    QVERIFY2(csv.find(",0xE0 0xF0 0x75 Up released\n") != std::string::npos, csv.c_str());
}

void TstPs2::framesAreExported()
{
    Wire wire;
    wire.keyboard(0x1c).command(0xed).send(Wire::bitsOf(0x1c), 5).keyboard(0x1c);
    const Decoded desk(wire, lines);
    QTemporaryDir folder;
    const std::string csv = decoderChecks::exported(desk, folder.filePath(QStringLiteral("out.csv")).toStdString(), 0);
    QVERIFY2(csv.find(",byte,28,0,0,A,make,,,") != std::string::npos, csv.c_str());
    QVERIFY2(csv.find(",host,237,0,0,,,1,,") != std::string::npos, csv.c_str());
    QVERIFY2(csv.find(",short,12,,,,,,5,") != std::string::npos, csv.c_str());
}

void TstPs2::theSimulationIsDecodedAsItWasSent_data()
{
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("block");
    QTest::newRow("1 MHz") << 1000000 << 100000;
    QTest::newRow("100 kHz, small blocks") << 100000 << 53;
    QTest::newRow("20 MHz") << 20000000 << 65536;
}

/// Nine forms in turn, with a byte that counts up.
void TstPs2::theSimulationIsDecodedAsItWasSent()
{
    QFETCH(int, rate);
    QFETCH(int, block);
    DecodeDesk desk(std::make_unique<Ps2Analyzer>(), lines);
    const auto capture = desk.simulate(rate, std::min(rate * std::int64_t(4), std::int64_t(40000000)), block);
    desk.run(*capture);
    Texts expected;
    const Texts got = plain(desk);
    const auto byte = [](unsigned v, const char *errors = " 00") { return "byte " + std::to_string(v) + errors; };
    for (unsigned i = 0; expected.size() < got.size(); ++i) {
        const unsigned n = i & 0xffU;
        const Texts forms[] = {{byte(n & 0x7fU)},
                               {byte(0xf0), byte(n & 0x7fU)},
                               {byte(0xe0), byte(0x75)},
                               {"host 237 00", byte(0xfa), "host " + std::to_string(n & 7U) + " 00", byte(0xfa)},
                               {byte(n, " 10")},
                               {byte(n, " 01")},
                               {"short 5"},
                               {"host 255 00", byte(0xfa), byte(0xaa)},
                               {"host 238 00 unanswered"},
                               {}}; // a byte without a start bit is none
        expected.insert(expected.end(), forms[i % 10].begin(), forms[i % 10].end());
    }
    QVERIFY(got.size() > 300);
    expected.resize(got.size());
    QCOMPARE(got, expected);
    const auto frames = desk.frames();
    const auto markers = desk.markers(dataChannel);
    const auto alone = std::count_if(markers.begin(), markers.end(), [&](const Marker &marker) {
        return std::none_of(frames.begin(), frames.end(), [&](const DecodedFrame &frame) {
            return frame.first <= std::int64_t(marker.sample) && std::int64_t(marker.sample) <= frame.last;
        });
    });
    QVERIFY(alone > 10);
}

void TstPs2::positionsBehindFourGigasamplesAreExact()
{
    constexpr std::int64_t far = std::int64_t(5) << 32;
    Wire wire;
    wire.keyboard(0x1c);
    const Decoded desk(wire, lines, -1, 0, far);
    QCOMPARE(plain(desk), (Texts{"byte 28 00"}));
    QCOMPARE(desk.frame(0).first, far + wire.falls[0]);
}

void TstPs2::randomEdgesGiveFramesInOrder()
{
    constexpr std::int64_t length = 100000;
    for (const std::int64_t mean : {1, 10, 40, 100, 1000}) {
        for (const std::int64_t other : {1, 5, 50}) {
            TestCapture capture(sampleRate, length);
            capture.channel(clockChannel, true, decoderChecks::randomEdges(1, mean, length));
            capture.channel(dataChannel, true, decoderChecks::randomEdges(2, mean * other, length));
            DecodeDesk desk(std::make_unique<Ps2Analyzer>(), lines);
            QCOMPARE(decoderChecks::faultOf(desk.run(capture), length), std::string());
        }
    }
}

QTEST_GUILESS_MAIN(TstPs2)
#include "tst_Ps2.moc"
