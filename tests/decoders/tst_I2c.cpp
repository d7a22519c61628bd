#include "DecoderChecks.h"
#include "I2cAnalyzer.h"
#include "StartStopWire.h"

#include <QtTest>

#include <cstdint>
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
    explicit Decoded(const Wire &wire, const std::string &settings = lines, std::int64_t length = -1,
                     std::int64_t from = 0, std::int64_t rate = sampleRate)
        : DecodeDesk(std::make_unique<I2cAnalyzer>(), settings), m_capture(wire.capture(length, from, 0, rate))
    {
        run(*m_capture);
    }

private:
    std::unique_ptr<TestCapture> m_capture;
};

std::string with(const std::string &settings)
{
    return std::string(lines) + "," + settings;
}

} // namespace

class TstI2c : public QObject {
    Q_OBJECT
private slots:
    void eachElementBeginsAndEndsAsOnTheWire();
    void aReadHasItsDirectionUpToTheNextAddress();
    void aTenBitAddressIsAnAddressAndItsSecondByte();
    void aTenBitReadOfAnotherDeviceHasNoWholeAddress();
    void reservedAddressesHaveTheirNames();
    void whatAGeneralCallAsksIsTold();
    void addressesAreShownWithSevenOrEightBits();
    void aStretchedClockIsTold();
    void aStopOrStartWithinAByteCutsIt();
    void theNinthClockMayCarryTheStop();
    void aRestartOnAnIdleBusLacksItsStop();
    void dataMayChangeInTheSampleInWhichTheClockFalls();
    void aFreeBusIsNotDecoded();
    void glitchesBelowTheFilterAreNotSeen();
    void aCaptureMayBeginAnywhere();
    void aCutByteIsNotShown();
    void settingsThatDoNotGoTogetherAreRefused();
    void markersStandAtBitsAndConditions();
    void exportsHaveBytesAndMessages();
    void theSimulationIsDecodedAsItWasSent_data();
    void theSimulationIsDecodedAsItWasSent();
    void randomEdgesGiveFramesInOrder();
};

void TstI2c::eachElementBeginsAndEndsAsOnTheWire()
{
    Wire wire;
    wire.wait(20).start().byte(0xa0).byte(0x12).byte(0xff, false).stop();
    const Decoded desk(wire);
    QCOMPARE(desk.summaries(),
             (Texts{"start", "address v=80 rw=0 ack=1", "data v=18 rw=0 ack=1", "data v=255 rw=0 ack=0", "stop"}));
    QCOMPARE(desk.frame(0).first, wire.starts[0]);
    QCOMPARE(desk.frame(0).last, wire.starts[0]);
    for (std::uint64_t i = 0; i < 3; ++i) {
        QCOMPARE(desk.frame(i + 1).first, wire.bytes[i]);
        QCOMPARE(desk.frame(i + 1).last, wire.ends[i]);
    }
    QCOMPARE(desk.frame(4).first, wire.stops[0]);
}

void TstI2c::aReadHasItsDirectionUpToTheNextAddress()
{
    Wire wire;
    wire.wait(20).start().byte(0xa0).byte(0x00).start().byte(0xa1).byte(0x55).byte(0x66, false).stop();
    wire.start().byte(0x20, false).stop();
    QCOMPARE(
        Decoded(wire).summaries(),
        (Texts{"start", "address v=80 rw=0 ack=1", "data v=0 rw=0 ack=1", "restart", "address v=80 rw=1 ack=1",
               "data v=85 rw=1 ack=1", "data v=102 rw=1 ack=0", "stop", "start", "address v=16 rw=0 ack=0", "stop"}));
}

void TstI2c::aTenBitAddressIsAnAddressAndItsSecondByte()
{
    Wire wire;
    wire.wait(20).start().byte(0xf4).byte(0x34).byte(0x01).start().byte(0xf5).byte(0x02, false).stop();
    const Decoded desk(wire);
    QCOMPARE(desk.summaries(),
             (Texts{"start", "address v=122 rw=0 ack=1", "data v=52 rw=0 ack=1 ten_bit=564", "data v=1 rw=0 ack=1",
                    "restart", "address v=122 rw=1 ack=1 ten_bit=564", "data v=2 rw=1 ack=0", "stop"}));
    QCOMPARE(desk.frame(1).text, std::string("10-bit address 0x7A write, ACK"));
    QCOMPARE(desk.frame(2).text, std::string("Address 0x234, ACK"));
    QCOMPARE(desk.frame(5).text, std::string("10-bit address 0x234 read, ACK"));
}

/// Behind a stop no device is addressed, and another first part is that of another device.
void TstI2c::aTenBitReadOfAnotherDeviceHasNoWholeAddress()
{
    Wire wire;
    wire.wait(20).start().byte(0xf4).byte(0x34).start().byte(0xf3).stop().start().byte(0xf5).byte(0x02, false).stop();
    const Decoded desk(wire);
    QCOMPARE(desk.frame(4).text, std::string("10-bit address 0x79 read, ACK"));
    QCOMPARE(desk.frame(7).text, std::string("10-bit address 0x7A read, ACK"));
    QCOMPARE(desk.frame(7).value("ten_bit"), std::string("(absent)"));
}

void TstI2c::reservedAddressesHaveTheirNames()
{
    const std::pair<unsigned, const char *> names[] = {
        {0x00, "General call 0x00, ACK"},     {0x01, "START byte 0x00, ACK"},          {0x02, "CBUS address 0x01, ACK"},
        {0x04, "Reserved address 0x02, ACK"}, {0x0a, "Hs-mode master code 0x05, ACK"}, {0xf9, "Device ID 0x7C, ACK"},
        {0x10, "Address 0x08 write, ACK"},    {0xef, "Address 0x77 read, ACK"}};
    for (const auto &[byte, name] : names) {
        Wire wire;
        wire.wait(20).start().byte(byte).stop();
        QCOMPARE(Decoded(wire).frame(1).text, std::string(name));
    }
}

void TstI2c::whatAGeneralCallAsksIsTold()
{
    const std::pair<unsigned, const char *> names[] = {{0x06, "0x06 (reset, and write the address)"},
                                                       {0x04, "0x04 (write the address)"},
                                                       {0x00, "0x00 (not allowed)"},
                                                       {0x41, "0x41 (hardware general call)"},
                                                       {0x08, "0x08 (not fixed)"}};
    for (const auto &[byte, name] : names) {
        Wire wire;
        wire.wait(20).start().byte(0x00).byte(byte).byte(0x06).stop().start().byte(0x40).byte(0x06).stop();
        const Decoded desk(wire);
        QCOMPARE(desk.frame(2).text, "General call " + std::string(name) + ", ACK");
        QCOMPARE(desk.frame(3).text, std::string("Data 0x06, ACK"));
        QCOMPARE(desk.frame(7).text, std::string("Data 0x06, ACK"));
    }
}

void TstI2c::addressesAreShownWithSevenOrEightBits()
{
    Wire wire;
    wire.wait(20).start().byte(0xa1, false).stop();
    const Channel sda(0, sdaChannel);
    QCOMPARE(Decoded(wire, with("address_format=7")).bubble(1, sda, DisplayBase::Hexadecimal),
             (Texts{"A", "0x50", "0x50 R N", "Read 0x50 NACK", "Address 0x50 read, NACK"}));
    const Decoded desk(wire, with("address_format=8"));
    QCOMPARE(desk.frame(1).text, std::string("Address 0xA1 read, NACK"));
    QCOMPARE(desk.frame(1).summary(), std::string("address v=80 rw=1 ack=0"));
    QVERIFY(desk.bubble(1, Channel(0, sclChannel), DisplayBase::Hexadecimal).empty());
}

void TstI2c::aStretchedClockIsTold()
{
    Wire wire;
    wire.wait(20).start().byte(0xa0).wait(18).byte(0x12).wait(19).byte(0x34).stop();
    const Decoded desk(wire);
    // The clock is low for 6 samples between bits: 24 is four times as long, 25 is more.
    QCOMPARE(desk.frame(2).text, std::string("Data 0x12, ACK"));
    QCOMPARE(desk.frame(3).text, std::string("Data 0x34, ACK, clock held low for 25.0 us"));
}

void TstI2c::aStopOrStartWithinAByteCutsIt()
{
    Wire wire;
    wire.wait(20).start().byte(0xa0).bit(true).bit(false).bit(true).stop();
    wire.start().bit(true).start().byte(0xa1).stop();
    const Decoded desk(wire);
    QCOMPARE(desk.summaries(), (Texts{"start", "address v=80 rw=0 ack=1", "cut n=3 v=5", "stop", "start", "cut n=1 v=1",
                                      "restart", "address v=80 rw=1 ack=1", "stop"}));
    QCOMPARE(desk.frame(2).text, std::string("Byte cut after 3 bits"));
    QCOMPARE(desk.frame(2).last, wire.stops[0] - 1);
}

void TstI2c::theNinthClockMayCarryTheStop()
{
    Wire wire;
    wire.wait(20).start().byte(0xa1);
    for (int i = 0; i < 8; ++i) {
        wire.bit(true);
    }
    wire.stop();
    const Decoded desk(wire);
    QCOMPARE(desk.summaries(), (Texts{"start", "address v=80 rw=1 ack=1", "data v=255 rw=1 ack=1", "stop"}));
    QCOMPARE(desk.frame(2).last, wire.stops[0] - 1);
}

void TstI2c::aRestartOnAnIdleBusLacksItsStop()
{
    for (const int idle : {150, 170}) { // a bit is 10 samples, and 16 of them are too long for a repeated start
        Wire wire;
        wire.wait(20).start().byte(0xa0).sda(true).wait(3).scl(true).wait(idle).start().byte(0xa0).stop();
        const Decoded desk(wire);
        const DecodedFrame restart = desk.frame(2);
        const auto markers = desk.markers(sdaChannel);
        const auto crosses = std::count_if(markers.begin(), markers.end(), [&](const Marker &marker) {
            return marker.type == MarkerType::ErrorX && std::int64_t(marker.sample) == restart.first;
        });
        QCOMPARE(crosses, idle == 150 ? 0 : 1);
        QCOMPARE(restart.kind, std::string("restart"));
        QCOMPARE(restart.text,
                 std::string(idle == 150 ? "Repeated start" : "Repeated start, the stop before is missing"));
    }
}

void TstI2c::dataMayChangeInTheSampleInWhichTheClockFalls()
{
    Wire wire;
    wire.wait(20).start();
    for (const bool level : {true, false, true, false, false, false, false, true, false}) {
        wire.sda(level).scl(false).wait(5).scl(true).wait(5); // and the clock rises while the data is there
    }
    wire.sda(false).scl(false).wait(5).scl(true).wait(5).sda(true).wait(5);
    QCOMPARE(Decoded(wire).summaries(), (Texts{"start", "address v=80 rw=1 ack=1", "stop"}));
}

void TstI2c::aFreeBusIsNotDecoded()
{
    Wire wire;
    wire.wait(20);
    for (int i = 0; i < 12; ++i) {
        wire.bit(i % 2 == 0);
    }
    wire.stop().start().byte(0xa0).stop().scl(false).wait(2).stop();
    QCOMPARE(Decoded(wire).summaries(), (Texts{"start", "address v=80 rw=0 ack=1", "stop"}));
}

void TstI2c::glitchesBelowTheFilterAreNotSeen()
{
    constexpr std::int64_t fast = 100000000; // 10 ns a sample
    for (const int width : {4, 5, 6}) {
        Wire wire;
        wire.wait(200).start().sda(true).wait(20).scl(true).wait(50).sda(false).wait(width).sda(true).wait(50);
        wire.scl(false).wait(30);
        for (const bool level : {false, true, false, false, false, false, false, false}) {
            wire.sda(level).wait(30).scl(true).wait(30).scl(false).wait(width).scl(true).wait(30).scl(false).wait(30);
        }
        wire.stop().wait(100);
        const Texts got = Decoded(wire, with("glitch_filter=50"), -1, 0, fast).summaries();
        QCOMPARE(got == (Texts{"start", "address v=80 rw=0 ack=1", "stop"}), width < 5);
        QVERIFY(Decoded(wire, with("glitch_filter=0"), -1, 0, fast).summaries() != got || width >= 5);
    }
}

void TstI2c::aCaptureMayBeginAnywhere()
{
    Wire wire;
    wire.wait(20).start().byte(0xa0).byte(0x12).start().byte(0xa1).byte(0x34, false).stop().start().byte(0x42).stop();
    const auto whole = Decoded(wire).frames();
    for (std::int64_t from = 1; from < wire.now(); ++from) {
        const auto got = Decoded(wire, lines, -1, from).frames();
        QVERIFY(got.size() <= whole.size());
        for (std::size_t i = 0; i < got.size(); ++i) {
            const DecodedFrame &expected = whole[whole.size() - got.size() + i];
            QCOMPARE(got[i].first + from, expected.first);
            const bool seenFirst = i == 0 && expected.kind == "restart"; // what was before is not known
            QCOMPARE(got[i].summary(), seenFirst ? std::string("start") : expected.summary());
        }
    }
}

void TstI2c::aCutByteIsNotShown()
{
    Wire wire;
    wire.wait(20).start().byte(0xa0).byte(0x12).start().byte(0xa1).bit(true).bit(true).stop();
    const auto whole = Decoded(wire).frames();
    QCOMPARE(whole.size(), std::size_t(7));
    for (std::int64_t length = 1; length < wire.now(); ++length) {
        const Decoded desk(wire, lines, length);
        QCOMPARE(decoderChecks::faultOf(desk, length), std::string());
        const auto cut = desk.frames();
        QCOMPARE(decoderChecks::faultOfCut(cut, whole), std::string());
        for (std::size_t i : {std::size_t(1), std::size_t(2)}) {
            QCOMPARE(cut.size() > i, length > wire.bytes[i - 1] + 80); // from the ninth clock on
        }
    }
}

void TstI2c::settingsThatDoNotGoTogetherAreRefused()
{
    DecodeDesk desk(std::make_unique<I2cAnalyzer>());
    QVERIFY(!desk.edit({{"scl", "1"}}).empty());
    QVERIFY(!desk.edit({{"scl", "1"}, {"sda", "1"}}).empty());
    QCOMPARE(desk.edit({{"scl", "1"}, {"sda", "0"}, {"address_format", "8"}, {"glitch_filter", "0"}}), std::string());
    QVERIFY(!desk.edit({{"glitch_filter", "-1"}}).empty());
}

void TstI2c::markersStandAtBitsAndConditions()
{
    Wire wire;
    wire.wait(20).start().byte(0xa0).byte(0x12, false).bit(true).stop();
    const Decoded desk(wire);
    const auto onClock = desk.markers(sclChannel);
    QCOMPARE(onClock.size(), std::size_t(19));
    for (std::size_t i = 0; i < 9; ++i) {
        QCOMPARE(onClock[i].sample, std::uint64_t(wire.bytes[0]) + 10 * i);
        QCOMPARE(onClock[i].type, MarkerType::UpArrow);
    }
    std::vector<MarkerType> types;
    for (const Marker &marker : desk.markers(sdaChannel)) {
        types.push_back(marker.type);
    }
    QVERIFY(types == (std::vector<MarkerType>{MarkerType::Start, MarkerType::Dot, MarkerType::X, MarkerType::ErrorX,
                                              MarkerType::Stop}));
}

void TstI2c::exportsHaveBytesAndMessages()
{
    Wire wire;
    wire.wait(20).start().byte(0xf4).byte(0x34).byte(0x41).stop();
    wire.start().byte(0xa0).byte(0x42).start().byte(0xa1).byte(0x43, false).stop();
    const Decoded desk(wire);
    QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("out")).toStdString();
    QCOMPARE(decoderChecks::exported(desk, path + ".bin", I2cSettings::DataBytes), std::string("ABC"));
    const std::string text = decoderChecks::exported(desk, path + ".txt", I2cSettings::Messages);
    QVERIFY2(text.find(" S 0x7A W A 0x34 A 0x41 A P\n") != std::string::npos, text.c_str());
    QVERIFY2(text.find(" S 0x50 W A 0x42 A Sr 0x50 R A 0x43 N P\n") != std::string::npos, text.c_str());
    const std::string lines = decoderChecks::exported(desk, path + ".csv", I2cSettings::Messages);
    QVERIFY2(lines.starts_with("time_s,first_sample,last_sample,text\n"), lines.c_str());
    QVERIFY2(lines.find(",S 0x7A W A 0x34 A 0x41 A P\n") != std::string::npos, lines.c_str());
    const std::string csv = decoderChecks::exported(desk, path + ".csv", 0);
    QVERIFY2(csv.find("data,67,1,0,") != std::string::npos, csv.c_str());
    QVERIFY2(csv.find("data,52,0,1,564,,") != std::string::npos, csv.c_str());
    Wire cut;
    cut.wait(20).start().byte(0xa0).bit(true).stop();
    const std::string one = decoderChecks::exported(Decoded(cut), path + ".csv", 0);
    QVERIFY2(one.find("cut,1,,,,1,") != std::string::npos, one.c_str());
}

void TstI2c::theSimulationIsDecodedAsItWasSent_data()
{
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("block");
    QTest::newRow("1 MHz") << 1000000 << 100000;
    QTest::newRow("20 kHz, small blocks") << 20000 << 53;
    QTest::newRow("100 MHz") << 100000000 << 65536;
}

/// Nine forms of message in turn, each with a byte that counts up.
void TstI2c::theSimulationIsDecodedAsItWasSent()
{
    QFETCH(int, rate);
    QFETCH(int, block);
    DecodeDesk desk(std::make_unique<I2cAnalyzer>(), lines);
    const auto capture = desk.simulate(rate, std::min(rate * std::int64_t(20), std::int64_t(10000000)), block);
    desk.run(*capture);
    Texts expected;
    const Texts got = desk.summaries();
    const auto data = [](unsigned v, int rw, int ack) {
        return "data v=" + std::to_string(v) + " rw=" + std::to_string(rw) + " ack=" + std::to_string(ack);
    };
    const auto address = [](unsigned v, int rw, int ack = 1) {
        return "address v=" + std::to_string(v) + " rw=" + std::to_string(rw) + " ack=" + std::to_string(ack);
    };
    for (unsigned i = 0; expected.size() < got.size(); ++i) {
        const unsigned n = i & 0xffU;
        const Texts messages[] = {{address(0x50, 0), data(0, 0, 1), data(n, 0, 1)},
                                  {address(0x50, 1), data(n, 1, 1), data(n ^ 0xffU, 1, 0)},
                                  {address(0x48, 0), data(n, 0, 1), "restart", address(0x48, 1), data(n, 1, 0)},
                                  {address(0x79, 0), data(0x34, 0, 1) + " ten_bit=308", data(n, 0, 1), "restart",
                                   address(0x79, 1) + " ten_bit=308", data(n, 1, 0)},
                                  {address(0, 0), data(6, 0, 1)},
                                  {address(0x21, 0, 0)},
                                  {address(0x50, 0), data(n, 0, 1)},
                                  {address(0x50, 0), "restart", address(0x50, 0), data(n, 0, 1)},
                                  {address(0x50, 0), "cut n=3 v=5"}};
        expected.push_back("start");
        expected.insert(expected.end(), messages[i % 9].begin(), messages[i % 9].end());
        expected.push_back("stop");
    }
    QVERIFY(got.size() > 100);
    expected.resize(got.size());
    QCOMPARE(got, expected);
    const auto frames = desk.frames();
    QVERIFY(std::any_of(frames.begin(), frames.end(), [](const DecodedFrame &frame) {
        return frame.text == "Repeated start, the stop before is missing";
    }));
}

void TstI2c::randomEdgesGiveFramesInOrder()
{
    constexpr std::int64_t length = 20000;
    for (const std::int64_t mean : {1, 2, 10, 100, 2000}) {
        for (const std::int64_t other : {1, 5, 50}) {
            for (const char *settings : {"glitch_filter=0", "glitch_filter=4000"}) {
                TestCapture capture(sampleRate, length);
                capture.channel(sclChannel, true, decoderChecks::randomEdges(1, mean, length));
                capture.channel(sdaChannel, true, decoderChecks::randomEdges(2, mean * other, length));
                DecodeDesk desk(std::make_unique<I2cAnalyzer>(), with(settings));
                QCOMPARE(decoderChecks::faultOf(desk.run(capture), length), std::string());
            }
        }
    }
}

QTEST_GUILESS_MAIN(TstI2c)
#include "tst_I2c.moc"
