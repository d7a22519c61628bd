#include "DecoderChecks.h"
#include "SmbusAnalyzer.h"
#include "SmbusProtocol.h"
#include "StartStopWire.h"

#include <QtTest>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

using Texts = std::vector<std::string>;

namespace {

using Wire = StartStopWire;

constexpr std::int64_t sampleRate = Wire::sampleRate;
constexpr std::uint32_t sclChannel = Wire::sclChannel;
constexpr std::uint32_t sdaChannel = Wire::sdaChannel;
constexpr const char *lines = Wire::lines;

/// A run on what was sent.
class Decoded : public DecodeDesk {
public:
    explicit Decoded(const Wire &wire, std::int64_t length = -1, std::int64_t from = 0, std::int64_t shift = 0)
        : DecodeDesk(std::make_unique<SmbusAnalyzer>(), lines), m_capture(wire.capture(length, from, shift))
    {
        run(*m_capture);
    }

private:
    std::unique_ptr<TestCapture> m_capture;
};

/// What is not a part of a transaction.
Texts transactions(const DecodeDesk &desk)
{
    Texts all;
    for (const DecodedFrame &frame : desk.frames()) {
        if (frame.kind == "transaction") {
            all.push_back(frame.value("protocol") + " " + frame.value("v") + " " + frame.value("pec"));
        } else if (frame.kind == "timeout") {
            all.push_back(frame.kind);
        }
    }
    return all;
}

/// Where the clock is told to be held for too long.
std::vector<std::uint64_t> errorDots(const DecodeDesk &desk)
{
    std::vector<std::uint64_t> all;
    for (const Marker &marker : desk.markers(sclChannel)) {
        if (marker.type == MarkerType::ErrorDot) {
            all.push_back(marker.sample);
        }
    }
    return all;
}

/// A transaction out of hexadecimal digits; "." is a repeated start, "+" a right packet error code.
Wire sent(const std::string &digits)
{
    Wire wire;
    std::vector<std::uint8_t> bytes;
    wire.start();
    for (std::size_t i = 0; i < digits.size(); ++i) {
        if (digits[i] == '.') {
            wire.start();
        } else if (digits[i] == '+') {
            wire.byte(smbus::Pec::of(bytes), false);
        } else {
            bytes.push_back(std::uint8_t(std::stoul(digits.substr(i++, 2), nullptr, 16)));
            wire.byte(bytes.back());
        }
    }
    wire.stop();
    return wire;
}

} // namespace

class TstSmbus : public QObject {
    Q_OBJECT
private slots:
    void eachElementBeginsAndEndsAsOnTheWire();
    void busProtocolsHaveTheirNames_data();
    void busProtocolsHaveTheirNames();
    void thePacketErrorCodeIsThatOfTheStandard();
    void aRightPacketErrorCodeIsTold();
    void aShortTransactionTellsItsRemainderWithoutACode();
    void fixedAddressesHaveTheirNames();
    void nobodyAnswersAnAddress();
    void aCutByteBreaksItsTransaction();
    void aTransactionWithoutBytesIsNone();
    void aClockThatIsHeldIsATimeout();
    void aClockThatIsHeldInPartsIsTold();
    void aClockThatIsHeldWithinAByteIsTold();
    void aTextOfAHeldClockIsWhole();
    void aSlowClockIsNotHeld();
    void severalConditionsBehindATimeoutAreOneTimeout();
    void spikesAreNotSeen();
    void aCaptureMayBeginAnywhere();
    void aCutElementIsNotShown();
    void settingsThatDoNotGoTogetherAreRefused();
    void transactionsStandOnTheRowOfTheClock();
    void markersStandAtBitsAndConditions();
    void exportsHaveALineATransaction();
    void theSimulationIsDecodedAsItWasSent_data();
    void theSimulationIsDecodedAsItWasSent();
    void positionsBehindFourGigasamplesAreExact();
    void randomEdgesGiveFramesInOrder();
};

void TstSmbus::eachElementBeginsAndEndsAsOnTheWire()
{
    Wire wire;
    wire.start().byte(0xb4).byte(0x12).start().byte(0xb5).byte(0xff, false).stop();
    const Decoded desk(wire);
    QCOMPARE(desk.summaries(),
             (Texts{"transaction v=B412B5FF pec=0 protocol=Read Byte", "start", "address v=90 rw=0 ack=1",
                    "data v=18 rw=0 ack=1", "restart", "address v=90 rw=1 ack=1", "data v=255 rw=1 ack=0", "stop"}));
    QCOMPARE(desk.frame(0).first, wire.starts[0]);
    QCOMPARE(desk.frame(0).last, wire.stops[0]);
    QCOMPARE(desk.frame(1).first, wire.starts[0]);
    QCOMPARE(desk.frame(4).first, wire.starts[1]);
    const std::uint64_t frames[] = {2, 3, 5, 6};
    for (std::size_t i = 0; i < 4; ++i) {
        QCOMPARE(desk.frame(frames[i]).first, wire.bytes[i]);
        QCOMPARE(desk.frame(frames[i]).last, wire.ends[i]);
    }
    QCOMPARE(desk.frame(7).last, wire.stops[0]);
}

void TstSmbus::busProtocolsHaveTheirNames_data()
{
    QTest::addColumn<QString>("digits");
    QTest::addColumn<QString>("protocol");
    const auto row = [](const char *digits, const char *protocol) {
        QTest::newRow(digits) << QString::fromLatin1(digits) << QString::fromLatin1(protocol);
    };
    row("B4", "Quick Command");
    row("B5", "Quick Command");
    row("B411", "Send Byte");
    row("B411+", "Send Byte");
    row("B511", "Receive Byte");
    row("B511+", "Receive Byte");
    row("B41122", "Write Byte");
    row("B41122+", "Write Byte");
    row("B4112233", "Write Word");
    row("B4112233+", "Write Word");
    row("B411.B522", "Read Byte");
    row("B411.B522+", "Read Byte");
    row("B411.B52233", "Read Word");
    row("B411.B52233+", "Read Word");
    row("B41102AABB", "Block Write");
    row("B41103AABBCC+", "Block Write");
    row("B411.B502AABB", "Block Read");
    row("B411.B502AABB+", "Block Read");
    row("B4112233.B54455", "Process Call");
    row("B4112233.B54455+", "Process Call");
    row("B41102AABB.B502CCDD", "Block Process Call");
    row("B41102AABB.B501CC+", "Block Process Call");
    row("B411AABBCCDD", "Write 32");
    row("B411AABBCCDDEEFF0011", "Write 64");
    row("B411.B5AABBCCDD", "Read 32");
    row("B411.B5AABBCCDDEEFF0011", "Read 64");
    row("10B41122", "Host Notify");
    row("19B4", "Alert Response");
    row("19B4+", "Alert Response");
    row("B411AABBCC", "Write");
    row("B5AABBCC", "Read");
    row("B41122.B5AABBCC", "Write then read");
}

void TstSmbus::busProtocolsHaveTheirNames()
{
    QFETCH(QString, digits);
    QFETCH(QString, protocol);
    const Wire wire = sent(digits.toStdString());
    const DecodedFrame frame = Decoded(wire).frame(0);
    QCOMPARE(frame.value("protocol"), protocol.toStdString());
    QCOMPARE(frame.value("pec"), std::string(digits.endsWith(QLatin1Char('+')) ? "1" : "0"));
}

void TstSmbus::thePacketErrorCodeIsThatOfTheStandard()
{
    const std::uint8_t check[] = {'1', '2', '3', '4', '5', '6', '7', '8', '9'};
    QCOMPARE(smbus::Pec::of(check), 0xf4U); // of x^8 + x^2 + x + 1
}

void TstSmbus::aRightPacketErrorCodeIsTold()
{
    const Decoded right(sent("B41122+"));
    QCOMPARE(right.frame(0).text,
             "Write Byte 0x5A, command 0x11, PEC right: 0xB4 0x11 0x22 " + right.frame(5).text.substr(4, 4));
    QVERIFY(right.frame(5).text.ends_with(" right, NACK"));
    Wire wire;
    wire.start().all({0xb4, 0x11, 0x22, 0x33}).stop();
    const Decoded none(wire);
    QCOMPARE(none.frame(0).text, std::string("Write Word 0x5A, command 0x11: 0xB4 0x11 0x22 0x33"));
    QCOMPARE(none.frame(3).text, std::string("Command 0x11, ACK"));
    QCOMPARE(none.frame(5).text, std::string("Data 0x33, ACK"));
}

void TstSmbus::aShortTransactionTellsItsRemainderWithoutACode()
{
    const Decoded general(sent("00"));
    QCOMPARE(transactions(general), (Texts{"Quick Command 00 1"}));
    const Decoded sendByte(sent("B4+"));
    QCOMPARE(sendByte.frame(0).value("pec"), std::string("1"));
    QCOMPARE(sendByte.frame(0).value("protocol"), std::string("Send Byte"));
    QCOMPARE(sendByte.frame(0).text.find("PEC"), std::string::npos);
}

void TstSmbus::fixedAddressesHaveTheirNames()
{
    const std::pair<const char *, const char *> names[] = {
        {"10", "Address 0x08 (Host) write, ACK"},          {"16", "Address 0x0B (Smart battery) write, ACK"},
        {"19", "Address 0x0C (Alert response) read, ACK"}, {"C2", "Address 0x61 (Device default) write, ACK"},
        {"00", "Address 0x00 (General call) write, ACK"},  {"B4", "Address 0x5A write, ACK"}};
    for (const auto &[digits, name] : names) {
        QCOMPARE(Decoded(sent(digits)).frame(2).text, std::string(name));
    }
}

void TstSmbus::nobodyAnswersAnAddress()
{
    Wire wire;
    wire.start().byte(0xb4, false).stop();
    const Decoded desk(wire);
    QCOMPARE(desk.frame(0).text, std::string("Quick Command 0x5A, no answer: 0xB4"));
    QCOMPARE(desk.frame(2).summary(), std::string("address v=90 rw=0 ack=0"));
}

void TstSmbus::aCutByteBreaksItsTransaction()
{
    Wire wire;
    wire.start().all({0xb4, 0x11}).bit(true).bit(false).bit(true).stop().start().byte(0xb4).stop();
    const Decoded desk(wire);
    QCOMPARE(transactions(desk), (Texts{"broken B411 0", "Quick Command B4 0"}));
    QCOMPARE(desk.frame(4).summary(), std::string("cut n=3 v=5"));
    QCOMPARE(desk.frame(0).text, std::string("Broken 0x5A: 0xB4 0x11"));
}

void TstSmbus::aTransactionWithoutBytesIsNone()
{
    Wire wire;
    wire.start().stop().start().byte(0xb4).stop();
    QCOMPARE(Decoded(wire).summaries(), (Texts{"start", "stop", "transaction v=B4 pec=0 protocol=Quick Command",
                                               "start", "address v=90 rw=0 ack=1", "stop"}));
}

void TstSmbus::aClockThatIsHeldIsATimeout()
{
    for (const int low : {24999, 25000, 34999, 35000}) {
        Wire wire;
        wire.start().byte(0xb4).bit(true).wait(low - 6).bit(false);
        for (int i = 0; i < 7; ++i) {
            wire.bit(false);
        }
        wire.stop().start().byte(0xb5).stop();
        const Decoded desk(wire);
        const Texts got = transactions(desk);
        QCOMPARE(desk.message(), std::string()); // of frames that are not in their order
        QCOMPARE(got.back(), std::string("Quick Command B5 0"));
        if (low < 25000) {
            QCOMPARE(got, (Texts{"Send Byte B480 0", "Quick Command B5 0"}));
        } else if (low < 35000) {
            QCOMPARE(got, (Texts{"Send Byte B480 0", "timeout", "Quick Command B5 0"}));
        } else {
            QCOMPARE(got, (Texts{"broken B4 0", "timeout", "Quick Command B5 0"}));
        }
    }
    Wire wire;
    wire.start().byte(0xb4).wait(29994).bit(true).stop();
    QCOMPARE(Decoded(wire).frame(3).text, std::string("Time-out: clock low for 30.0 ms"));
}

/// Six bytes, before each of which the clock is held; 100 us of each low are a period of the slowest clock.
void TstSmbus::aClockThatIsHeldInPartsIsTold()
{
    for (const int held : {25000, 25100}) { // us in all
        Wire wire;
        wire.start().byte(0xb4);
        for (int i = 0; i < 5; ++i) {
            wire.wait(held / 5 + 94).byte(0x11);
        }
        wire.stop().start().byte(0xb5).stop();
        const Decoded desk(wire);
        QCOMPARE(desk.message(), std::string());
        const bool isTold = held > 25000;
        QCOMPARE(desk.frame(0).value("sext"), std::string(isTold ? "1" : "(absent)"));
        QCOMPARE(desk.frame(0).value("mext"), std::string(isTold ? "0" : "(absent)"));
        QCOMPARE(desk.frame(0).text.find("clock held for more than 25 ms:") != std::string::npos, isTold);
        QCOMPARE(std::ptrdiff_t(isTold), std::ptrdiff_t(errorDots(desk).size()));
        const std::vector<DecodedFrame> frames = desk.frames();
        QCOMPARE(frames[frames.size() - 4].value("sext"), std::string("(absent)")); // the next transaction begins anew
        // At the fall behind the fifth byte's acknowledgement.
        QVERIFY(!isTold || std::int64_t(errorDots(desk)[0]) == desk.frames()[6].last + 1);
    }
}

void TstSmbus::aClockThatIsHeldWithinAByteIsTold()
{
    for (const int held : {10000, 10050}) {
        Wire wire;
        wire.start().byte(0xb4).bit(true).wait(held / 2 + 94).bit(true).wait(held / 2 + 94);
        for (int i = 0; i < 6; ++i) {
            wire.bit(false);
        }
        wire.bit(false).wait(9000).byte(0x12).wait(9000).stop(); // of the next byte, and of the stop
        const Decoded desk(wire);
        QCOMPARE(desk.message(), std::string());
        QCOMPARE(desk.frame(0).value("sext"), std::string("1"));
        QCOMPARE(desk.frame(0).value("mext"), std::string(held > 10000 ? "1" : "0"));
    }
}

void TstSmbus::aTextOfAHeldClockIsWhole()
{
    Wire wire;
    wire.start().all({0xb4, 0x27, 2, 0x11, 0x12}).start().byte(0xb5);
    for (const unsigned value : {2U, 0x21U, 0x22U}) {
        wire.wait(12000).byte(value);
    }
    wire.byte(smbus::Pec::of(std::vector<std::uint8_t>{0xb4, 0x27, 2, 0x11, 0x12, 0xb5, 2, 0x21, 0x22}), false).stop();
    const Decoded desk(wire);
    const Texts texts = desk.bubble(0, Channel(0, sclChannel), DisplayBase::Binary);
    QCOMPARE(texts[texts.size() - 2],
             std::string("Block Process Call 0b1011010, command 0b00100111, PEC right, "
                         "clock held for more than 25 ms, clock held for more than 10 ms in a byte"));
}

/// A controller of 1 kHz: each low lasts half a millisecond, and none is held.
void TstSmbus::aSlowClockIsNotHeld()
{
    EdgeLine scl(true);
    EdgeLine sda(true);
    scl.hold(1000);
    sda.hold(500).set(false).hold(700);
    for (int i = 0; i < 9 * 12; ++i) {
        scl.set(false).hold(500).set(true).hold(500);
        sda.hold(1000);
    }
    scl.set(false).hold(500).set(true).hold(1000);
    sda.hold(600).set(true).hold(500);
    TestCapture capture(sampleRate, scl.position());
    capture.channel(sclChannel, scl).channel(sdaChannel, sda);
    DecodeDesk desk(std::make_unique<SmbusAnalyzer>(), lines);
    desk.run(capture);
    QCOMPARE(desk.frame(0).kind, std::string("transaction"));
    QCOMPARE(desk.frame(0).value("sext"), std::string("(absent)"));
    QCOMPARE(errorDots(desk).size(), std::size_t(0));
}

void TstSmbus::severalConditionsBehindATimeoutAreOneTimeout()
{
    Wire wire;
    wire.start().byte(0xb4).wait(40000).sda(true).wait(3).scl(true).wait(4).sda(false).wait(4).sda(true).wait(4);
    wire.sda(false).wait(4).sda(true).wait(100);
    QCOMPARE(transactions(Decoded(wire)), (Texts{"broken B4 0", "timeout"}));
}

void TstSmbus::spikesAreNotSeen()
{
    constexpr std::int64_t fast = 100000000; // 10 ns a sample
    for (const int width : {4, 5}) {
        EdgeLine scl(true);
        EdgeLine sda(true);
        sda.hold(500).set(false).hold(200).set(true).hold(width).set(false);
        scl.hold(1000);
        TestCapture capture(fast, 1000);
        capture.channel(sclChannel, scl).channel(sdaChannel, sda);
        DecodeDesk desk(std::make_unique<SmbusAnalyzer>(), lines);
        QCOMPARE(desk.run(capture).summaries().size(), std::size_t(width < 5 ? 1 : 3));
    }
}

void TstSmbus::aCaptureMayBeginAnywhere()
{
    Wire wire;
    wire.start().all({0xb4, 0x12}).start().byte(0xb5).byte(0x34, false).stop().start().byte(0x42).stop();
    const auto whole = Decoded(wire).frames();
    for (std::int64_t from = 1; from < wire.now(); ++from) {
        const auto got = Decoded(wire, -1, from).frames();
        QVERIFY(got.size() <= whole.size());
        for (std::size_t i = 0; i < got.size(); ++i) {
            const DecodedFrame &frame = got[i];
            QVERIFY(std::any_of(whole.begin(), whole.end(), [&](const DecodedFrame &expected) {
                const bool isFirst = expected.kind == "restart" && frame.kind == "start";
                const bool isPart = frame.kind == "transaction" && expected.kind == frame.kind;
                return (frame.first + from == expected.first || isPart) && frame.last + from == expected.last &&
                       (frame.summary() == expected.summary() || isFirst || isPart);
            }));
        }
    }
}

void TstSmbus::aCutElementIsNotShown()
{
    Wire wire;
    wire.start().all({0xb4, 0x12}).start().byte(0xb5).byte(0x34, false).stop().start().byte(0x42).stop();
    Texts whole = Decoded(wire).summaries();
    for (std::int64_t length = 1; length < wire.now(); ++length) {
        const Decoded desk(wire, length);
        QCOMPARE(decoderChecks::faultOf(desk, length), std::string());
        const Texts cut = desk.summaries();
        QVERIFY(cut.size() <= whole.size());
        QCOMPARE(std::count(cut.begin(), cut.end(), whole[0]), std::ptrdiff_t(length > wire.stops[0] ? 1 : 0));
        for (const std::string &summary : cut) {
            QVERIFY(std::find(whole.begin(), whole.end(), summary) != whole.end());
        }
    }
}

void TstSmbus::settingsThatDoNotGoTogetherAreRefused()
{
    DecodeDesk desk(std::make_unique<SmbusAnalyzer>());
    QVERIFY(!desk.edit({{"scl", "1"}}).empty());
    QVERIFY(!desk.edit({{"scl", "1"}, {"sda", "1"}}).empty());
    QCOMPARE(desk.edit({{"scl", "1"}, {"sda", "0"}}), std::string());
}

void TstSmbus::transactionsStandOnTheRowOfTheClock()
{
    const Decoded desk(sent("B41122"));
    const Channel scl(0, sclChannel);
    const Channel sda(0, sdaChannel);
    QCOMPARE(desk.bubble(0, scl, DisplayBase::Hexadecimal),
             (Texts{"T", "Write Byte", "Write Byte 0x5A", "Write Byte 0x5A, command 0x11",
                    "Write Byte 0x5A, command 0x11: 0xB4 0x11 0x22"}));
    QVERIFY(desk.bubble(0, sda, DisplayBase::Hexadecimal).empty());
    QVERIFY(desk.bubble(2, scl, DisplayBase::Hexadecimal).empty());
    QCOMPARE(desk.bubble(2, sda, DisplayBase::Hexadecimal),
             (Texts{"A", "0x5A", "0x5A W A", "Write 0x5A ACK", "Address 0x5A write, ACK"}));
    QCOMPARE(desk.bubble(3, sda, DisplayBase::Decimal), (Texts{"17", "17 A", "Command 17, ACK"}));
}

void TstSmbus::markersStandAtBitsAndConditions()
{
    Wire wire;
    wire.start().byte(0xa0).byte(0x12, false).bit(true).stop();
    const Decoded desk(wire);
    const auto onClock = desk.markers(sclChannel);
    QCOMPARE(onClock.size(), std::size_t(19));
    for (std::size_t i = 0; i < 9; ++i) {
        QCOMPARE(onClock[i].sample, std::uint64_t(wire.bytes[0]) + 10 * i);
    }
    std::vector<MarkerType> types;
    for (const Marker &marker : desk.markers(sdaChannel)) {
        types.push_back(marker.type);
    }
    QVERIFY(types == (std::vector<MarkerType>{MarkerType::Start, MarkerType::Dot, MarkerType::X, MarkerType::ErrorX,
                                              MarkerType::Stop}));
}

void TstSmbus::exportsHaveALineATransaction()
{
    Wire wire;
    wire.start().all({0xb4, 0x11}).stop().start().byte(0xb5).stop();
    const Decoded desk(wire);
    QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("out")).toStdString();
    const std::string text = decoderChecks::exported(desk, path + ".txt", SmbusSettings::Transactions);
    QVERIFY2(text.find("\tSend Byte 0x5A: 0xB4 0x11\n") != std::string::npos, text.c_str());
    QVERIFY2(text.ends_with("\tQuick Command 0x5A: 0xB5\n"), text.c_str());
    const std::string lines = decoderChecks::exported(desk, path + ".csv", SmbusSettings::Transactions);
    QVERIFY2(lines.starts_with("time_s,first_sample,last_sample,text\n"), lines.c_str());
    QVERIFY2(lines.find(",Quick Command 0x5A: 0xB5\n") != std::string::npos, lines.c_str());
    const std::string csv = decoderChecks::exported(desk, path + ".csv", 0);
    QVERIFY2(csv.find("transaction,B411,,,0,Send Byte,,") != std::string::npos, csv.c_str());
    Wire cut;
    cut.start().all({0xb4, 0x11}).bit(true).bit(false).bit(true).stop();
    const std::string one = decoderChecks::exported(Decoded(cut), path + ".csv", 0);
    QVERIFY2(one.find(",cut,5,,,,,3,") != std::string::npos, one.c_str());
}

void TstSmbus::theSimulationIsDecodedAsItWasSent_data()
{
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("block");
    QTest::newRow("1 MHz") << 1000000 << 100000;
    QTest::newRow("20 kHz, small blocks") << 20000 << 53;
    QTest::newRow("50 MHz") << 50000000 << 65536;
}

/// Twenty forms of transaction in turn, each with data that counts up.
void TstSmbus::theSimulationIsDecodedAsItWasSent()
{
    QFETCH(int, rate);
    QFETCH(int, block);
    DecodeDesk desk(std::make_unique<SmbusAnalyzer>(), lines);
    const auto capture = desk.simulate(rate, std::min(rate * std::int64_t(10), std::int64_t(40000000)), block);
    const Texts got = transactions(desk.run(*capture));
    QVERIFY(got.size() > 100);
    Texts expected;
    for (unsigned i = 0; expected.size() < got.size(); ++i) {
        const std::string n = QString::asprintf("%02X", i & 0xffU).toStdString();
        const std::string inverse = QString::asprintf("%02X", ~i & 0xffU).toStdString();
        const auto withPec = [](const std::string &protocol, const std::string &digits, unsigned error = 0) {
            std::vector<std::uint8_t> bytes;
            for (std::size_t at = 0; at < digits.size(); at += 2) {
                bytes.push_back(std::uint8_t(std::stoul(digits.substr(at, 2), nullptr, 16)));
            }
            const unsigned pec = smbus::Pec::of(bytes) ^ error;
            return protocol + " " + digits + QString::asprintf("%02X", pec).toStdString() + (error == 0 ? " 1" : " 0");
        };
        const Texts forms[] = {{"Quick Command B4 0"},
                               {withPec("Send Byte", "B4" + n)},
                               {withPec("Write Word", "B42012" + n)},
                               {withPec("Read Byte", "B421B5" + n)},
                               {withPec("Block Read", "B422B5033132" + n)},
                               {withPec("Process Call", "B42301" + n + "B510" + inverse)},
                               {"Host Notify 10B434" + n + " 0"},
                               {"Alert Response 19B4 0"},
                               {withPec("Read Word", "B421B5" + n, 1)},
                               {"Quick Command 42 0"},
                               {"broken B4 0"},
                               {"broken B4" + n + " 0", "timeout"},
                               {withPec("Receive Byte", "B5" + n)},
                               {withPec("Write Byte", "B424" + n)},
                               {withPec("Read Word", "B425B5" + n + "12")},
                               {withPec("Block Write", "B42604111213" + n)},
                               {withPec("Block Process Call", "B4270211" + n + "B50221" + n)},
                               {withPec("Write 32", "B428111213" + n)},
                               {withPec("Read 64", "B429B521222324252627" + n)},
                               {withPec("Write Word", "B42A" + n + "12")}};
        expected.insert(expected.end(), forms[i % 20].begin(), forms[i % 20].end());
    }
    expected.resize(got.size());
    QCOMPARE(got, expected);
}

void TstSmbus::positionsBehindFourGigasamplesAreExact()
{
    constexpr std::int64_t far = std::int64_t(5) << 32;
    Wire wire;
    wire.start().all({0xb4, 0x11}).stop();
    const Decoded desk(wire, -1, 0, far);
    QCOMPARE(transactions(desk), (Texts{"Send Byte B411 0"}));
    QCOMPARE(desk.frame(0).first, far + wire.starts[0]);
}

void TstSmbus::randomEdgesGiveFramesInOrder()
{
    constexpr std::int64_t length = 50000;
    for (const std::int64_t mean : {1, 2, 10, 100, 10000}) {
        for (const std::int64_t other : {1, 5, 50}) {
            TestCapture capture(sampleRate, length);
            capture.channel(sclChannel, true, decoderChecks::randomEdges(1, mean, length));
            capture.channel(sdaChannel, true, decoderChecks::randomEdges(2, mean * other, length));
            DecodeDesk desk(std::make_unique<SmbusAnalyzer>(), lines);
            QCOMPARE(decoderChecks::faultOf(desk.run(capture), length), std::string());
        }
    }
}

QTEST_GUILESS_MAIN(TstSmbus)
#include "tst_Smbus.moc"
