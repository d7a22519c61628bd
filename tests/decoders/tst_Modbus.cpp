#include "AsyncSender.h"
#include "DecoderChecks.h"
#include "ModbusAnalyzer.h"
#include "ModbusSimulation.h"

#include <QtTest>

#include <numeric>
#include <string>
#include <vector>

using Texts = std::vector<std::string>;

namespace {

constexpr std::int64_t sampleRate = 1000000;
constexpr double bit = 100; ///< samples: 10000 bits/s
const std::string rate = "rx=3,baudrate=10000";

class Decoded : public DecodedLine {
public:
    Decoded(const AsyncSender &sender, const std::string &settings, std::int64_t length = -1)
        : DecodedLine(std::make_unique<ModbusAnalyzer>(), sender.line(), settings, sampleRate, length)
    {}
};

std::vector<unsigned> withCrc(std::vector<unsigned> bytes)
{
    const std::vector<std::uint8_t> narrow(bytes.begin(), bytes.end());
    const std::uint32_t crc = ModbusCrc::of(narrow);
    bytes.push_back(crc & 0xffU);
    bytes.push_back(crc >> 8);
    return bytes;
}

/// Frames with right CRCs and a silence of four characters behind each.
AsyncSender sent(const std::vector<std::vector<unsigned>> &frames)
{
    AsyncSender sender(bit);
    sender.idle(50);
    for (const auto &frame : frames) {
        sender.bytes(withCrc(frame)).idle(40);
    }
    return sender;
}

std::string ascii(const std::vector<unsigned> &bytes)
{
    std::string text = ":";
    const unsigned sum = std::accumulate(bytes.begin(), bytes.end(), 0U);
    for (const unsigned byte : bytes) {
        text += QString::asprintf("%02X", byte).toStdString();
    }
    return text + QString::asprintf("%02X\r\n", (0x100U - (sum & 0xffU)) & 0xffU).toStdString();
}

AsyncSender sentAscii(const std::string &text)
{
    AsyncSender sender(bit);
    sender.idle(50);
    for (const char character : text) {
        sender.byte(unsigned(character));
    }
    return sender.idle(50);
}

Texts valuesOf(const DecodeDesk &desk, const std::string &name)
{
    Texts all;
    for (const DecodedFrame &frame : desk.frames()) {
        all.push_back(frame.value(name));
    }
    return all;
}

Texts brief(const DecodeDesk &desk)
{
    Texts all;
    for (const DecodedFrame &frame : desk.frames()) {
        all.push_back(frame.kind + " " + frame.value("v") + " " + frame.value("crc"));
    }
    return all;
}

} // namespace

class TstModbus : public QObject {
    Q_OBJECT
private slots:
    void aFrameReachesFromItsAddressToItsCrc();
    void aWrongCrcIsTold();
    void silenceOfThreeAndAHalfCharactersEndsAFrame_data();
    void silenceOfThreeAndAHalfCharactersEndsAFrame();
    void aWholeFrameEndsWithAShorterSilence();
    void aLineThatNobodyDrivesIsSilent();
    void aPauseWithinAFrameIsTold();
    void fastLinesHaveTheirOwnSilence();
    void charactersThatAreTooFewAreAnError();
    void errorsOfCharactersAreTold();
    void anIgnoredParityBitIsNoError();
    void asciiFramesEndWithTheirLine();
    void asciiFramesMayBreakOff();
    void anAsciiFrameMayWaitForASecond();
    void requestsAndResponsesAreToldApart();
    void aRequestThatIsSentAgainIsNoResponse();
    void theRoleTellsWhatALineHas();
    void twoLinesComeInTheOrderOfTime();
    void aResponseKnowsItsRequest();
    void functionsAndExceptionsAreNamed();
    void theRateIsFoundAndTold();
    void textsGoFromShortToLong();
    void eachBitHasAMarker();
    void whatIsWrongHasAnErrorCross_data();
    void whatIsWrongHasAnErrorCross();
    void anAsciiFrameHasAnErrorCrossWhereItBreaksOff();
    void aReadWithAWriteTellsBothAddresses();
    void settingsThatDoNotGoTogetherAreRefused();
    void exportsHaveAllFrames();
    void theRegistersAreExportedOneALine();
    void aCutFrameIsNotShown();
    void aFrameThatTheCapturesBeginCutsIsNotShown();
    void theTailOfACharacterHidesNoColon();
    void theSimulationIsDecodedAsItWasSent_data();
    void theSimulationIsDecodedAsItWasSent();
    void randomEdgesGiveFramesInOrder();
};

void TstModbus::aFrameReachesFromItsAddressToItsCrc()
{
    AsyncSender sender(bit);
    // The frame of the standard's own example of a CRC: 02 07, 41 12.
    sender.idle(50).bytes({0x02, 0x07, 0x41, 0x12}).idle(50);
    const Decoded desk(sender, rate);
    QCOMPARE(desk.summaries(), Texts{"frame ch=3 v=02074112 crc=1 unit=2 fn=7 side=request"});
    QCOMPARE(desk.frame(0).first, std::int64_t(5000));
    QCOMPARE(desk.frame(0).last, std::int64_t(9000 - 1));
}

void TstModbus::aWrongCrcIsTold()
{
    AsyncSender sender(bit);
    sender.idle(50).bytes({0x02, 0x07, 0x41, 0x13}).idle(50);
    const Decoded desk(sender, rate);
    QCOMPARE(brief(desk), Texts{"frame 02074113 0"});
    QVERIFY(desk.frame(0).text.find("CRC error") != std::string::npos);
}

void TstModbus::silenceOfThreeAndAHalfCharactersEndsAFrame_data()
{
    QTest::addColumn<double>("characters");
    QTest::addColumn<int>("frames");
    QTest::newRow("none") << 0.0 << 1;
    QTest::newRow("1.5") << 1.5 << 1;
    QTest::newRow("3.2") << 3.2 << 1;
    QTest::newRow("3.5") << 3.5 << 2;
    QTest::newRow("20") << 20.0 << 2;
}

void TstModbus::silenceOfThreeAndAHalfCharactersEndsAFrame()
{
    QFETCH(double, characters);
    QFETCH(int, frames);
    AsyncSender sender(bit);
    sender.idle(50).bytes({1, 2, 3, 4, 5}).idle(characters * 10).bytes({6, 7, 8, 9}).idle(50);
    QCOMPARE(int(Decoded(sender, rate).frames().size()), frames);
}

void TstModbus::aWholeFrameEndsWithAShorterSilence()
{
    for (const double characters : {1.0, 1.6, 3.0}) {
        AsyncSender sender(bit);
        sender.idle(50).bytes(withCrc({1, 3, 0, 0, 0, 1})).idle(characters * 10);
        sender.bytes(withCrc({1, 3, 2, 0, 5})).idle(50);
        QCOMPARE(Decoded(sender, rate).frames().size(), std::size_t(characters > 1.5 ? 2 : 1));
    }
}

void TstModbus::aLineThatNobodyDrivesIsSilent()
{
    AsyncSender sender(bit);
    sender.idle(50);
    for (const double low : {60.0, 33.0}) {
        sender.low(low).idle(5).bytes(withCrc({1, 7})).idle(5);
    }
    sender.low(60).idle(5).bytes({1, 2, 3, 4, 5}).low(60).idle(5).bytes({1, 2}).low(20).idle(5).bytes({3, 4}).idle(50);
    QCOMPARE(brief(Decoded(sender, rate)), (Texts{"frame 010741E2 1", "frame 010741E2 1", "frame 0102030405 0",
                                                  "frame 0102000304 0"})); // the last break is too short
}

void TstModbus::aPauseWithinAFrameIsTold()
{
    for (const double characters : {1.4, 1.6}) {
        AsyncSender sender(bit);
        sender.idle(50).bytes({2, 7}).idle(characters * 10).bytes({0x41, 0x12}).idle(50);
        QCOMPARE(Decoded(sender, rate).frame(0).value("pause"), std::string(characters > 1.5 ? "1" : "(absent)"));
    }
}

void TstModbus::fastLinesHaveTheirOwnSilence()
{
    // 100000 bits/s: 1.75 ms are 17.5 characters.
    for (const double time : {1.5, 1.75}) {
        AsyncSender sender(10);
        sender.idle(500).bytes({1, 2, 3, 4, 5}).idle(time * 100).bytes({6, 7, 8, 9}).idle(500);
        QCOMPARE(Decoded(sender, "rx=3,baudrate=100000").frames().size(), std::size_t(time > 1.7 ? 2 : 1));
    }
}

void TstModbus::charactersThatAreTooFewAreAnError()
{
    AsyncSender sender(bit);
    sender.idle(50).bytes({1, 2, 3}).idle(50).bytes({2, 7, 0x41, 0x12}).idle(50);
    sender.bytes(std::vector<unsigned>(300, 0x55)).idle(50);
    const Decoded desk(sender, rate);
    QCOMPARE(desk.frame(0).summary(), std::string("error ch=3 v=010203"));
    QCOMPARE(desk.frame(1).value("crc"), std::string("1"));
    QCOMPARE(desk.frame(2).value("v").size(), std::size_t(512)); // no frame is longer than 256 bytes
    QCOMPARE(desk.frames().size(), std::size_t(4));
}

void TstModbus::errorsOfCharactersAreTold()
{
    AsyncSender parity(bit);
    parity.idle(50).raw("010000000").raw("111000001").raw("100000100").raw("010010000").idle(50);
    const Decoded desk(parity, rate + ",parity=even");
    QCOMPARE(desk.frame(0).summary(), std::string("frame ch=3 v=02074112 crc=1 unit=2 fn=7 side=request pe=1"));
    AsyncSender framing(bit);
    framing.idle(50).byte(2).byte(7).byte(0x41).byte(0x12, 0).low(1).idle(50);
    QCOMPARE(Decoded(framing, rate).frame(0).value("fe"), std::string("1"));
}

void TstModbus::anIgnoredParityBitIsNoError()
{
    AsyncSender sender(bit);
    sender.idle(50);
    bool parity = false;
    for (const unsigned byte : withCrc({1, 6, 0, 1, 0, 9})) {
        std::string bits;
        for (unsigned i = 0; i < 8; ++i) {
            bits += (byte >> i & 1U) != 0 ? '1' : '0';
        }
        sender.raw(bits + (parity ? "1" : "0"));
        parity = !parity;
    }
    sender.idle(50);
    const Decoded desk(sender, rate + ",parity=ignore");
    QCOMPARE(valuesOf(desk, "crc"), Texts{"1"});
    QCOMPARE(valuesOf(desk, "pe"), Texts{"(absent)"});
    QCOMPARE(valuesOf(Decoded(sender, rate + ",parity=even"), "pe"), Texts{"1"});
}

void TstModbus::asciiFramesEndWithTheirLine()
{
    AsyncSender sender = sentAscii("x" + ascii({0xf7, 3, 0x13, 0x89, 0, 0x0a}));
    const Decoded desk(sender, rate + ",mode=ascii");
    QCOMPARE(brief(desk), Texts{"frame F7031389000A60 1"}); // the standard's own example of an LRC
    QCOMPARE(desk.frame(0).first, sender.starts[1]);
    QCOMPARE(desk.frame(0).last, sender.starts.back() + 999);
    QCOMPARE(brief(Decoded(sentAscii(":F7031389000A61\r\n"), rate + ",mode=ascii")), Texts{"frame F7031389000A61 0"});
    AsyncSender seven(bit);
    seven.idle(50);
    for (const char character : ascii({1, 7})) {
        std::string bits;
        int ones = 0;
        for (unsigned i = 0; i < 7; ++i) {
            bits += (unsigned(character) >> i & 1U) != 0 ? '1' : '0';
            ones += int(unsigned(character) >> i & 1U);
        }
        seven.raw(bits + (ones % 2 != 0 ? "1" : "0"));
    }
    QCOMPARE(brief(Decoded(seven.idle(50), rate + ",mode=ascii,data_bits=7,parity=even")), Texts{"frame 0107F8 1"});
}

void TstModbus::asciiFramesMayBreakOff()
{
    const std::string whole = ascii({1, 7});
    const auto got = [&](const std::string &text) {
        return brief(Decoded(sentAscii(text + whole), rate + ",mode=ascii"));
    };
    QCOMPARE(got(":0103"), (Texts{"error 0103 (absent)", "frame 0107F8 1"}));
    QCOMPARE(got(":01 3"), (Texts{"error 01 (absent)", "frame 0107F8 1"}));
    QCOMPARE(got(":0103FC\r\r"), (Texts{"error 0103FC (absent)", "frame 0107F8 1"}));
    QCOMPARE(got(":01\r\n"), (Texts{"error 01 (absent)", "frame 0107F8 1"}));
    QCOMPARE(got("0103FC\r\n"), Texts{"frame 0107F8 1"});
}

void TstModbus::anAsciiFrameMayWaitForASecond()
{
    for (const double seconds : {0.9, 1.1}) {
        AsyncSender sender(bit);
        sender.idle(50).byte(':').byte('0').idle(seconds * 10000);
        for (const char character : std::string("107F8\r\n") + ascii({1, 7})) {
            sender.byte(unsigned(character));
        }
        const auto all = brief(Decoded(sender.idle(50), rate + ",mode=ascii"));
        QCOMPARE(all.front(), std::string(seconds < 1.0 ? "frame 0107F8 1" : "error  (absent)"));
        QCOMPARE(all.back(), std::string("frame 0107F8 1"));
        QCOMPARE(all.size(), std::size_t(2));
    }
}

void TstModbus::requestsAndResponsesAreToldApart()
{
    const AsyncSender sender = sent({{1, 3, 0, 0, 0, 2},
                                     {1, 3, 4, 0, 1, 0, 2},
                                     {1, 6, 0, 1, 0, 9},
                                     {1, 6, 0, 1, 0, 9},
                                     {1, 16, 0, 1, 0, 1, 2, 0, 7},
                                     {1, 16, 0, 1, 0, 1},
                                     {1, 3, 0, 0, 0, 2},
                                     {2, 3, 0, 0, 0, 2},
                                     {2, 0x83, 2},
                                     {0, 6, 0, 1, 0, 9},
                                     {0, 6, 0, 1, 0, 9}});
    QCOMPARE(valuesOf(Decoded(sender, rate), "side"),
             (Texts{"request", "response", "request", "response", "request", "response", "request", "request",
                    "response", "request", "request"}));
}

/// One that begins with address 0x03xx looks like three bytes of a response.
void TstModbus::aRequestThatIsSentAgainIsNoResponse()
{
    const Decoded registers(sent({{1, 3, 3, 5, 0, 2}, {1, 3, 3, 5, 0, 2}, {1, 3, 4, 1, 2, 3, 4}}), rate);
    QCOMPARE(valuesOf(registers, "side"), (Texts{"request", "request", "response"}));
    const Decoded coils(sent({{1, 1, 3, 5, 0, 9}, {1, 1, 3, 5, 0, 9}, {1, 1, 2, 1, 1}}), rate);
    QCOMPARE(valuesOf(coils, "side"), (Texts{"request", "request", "response"}));
    const Decoded answered(sent({{1, 1, 0, 5, 0, 17}, {1, 1, 3, 0xff, 0xff, 1}, {1, 1, 0, 5, 0, 17}}), rate);
    QCOMPARE(valuesOf(answered, "side"), (Texts{"request", "response", "request"}));
}

void TstModbus::theRoleTellsWhatALineHas()
{
    const AsyncSender sender = sent({{1, 3, 0, 0, 0, 2}, {1, 6, 0, 1, 0, 9}});
    QCOMPARE(valuesOf(Decoded(sender, rate + ",role=master"), "side"), (Texts{"request", "request"}));
    QCOMPARE(valuesOf(Decoded(sender, rate + ",role=slave"), "side"), (Texts{"response", "response"}));
}

void TstModbus::twoLinesComeInTheOrderOfTime()
{
    AsyncSender tx(bit);
    tx.idle(50).bytes(withCrc({1, 6, 0, 1, 0, 9})).idle(200).bytes(withCrc({1, 6, 0, 1, 0, 9})).idle(200);
    AsyncSender rx(bit, false);
    rx.idle(200).bytes(withCrc({1, 6, 0, 1, 0, 9})).idle(200);
    TestCapture capture(sampleRate, tx.now());
    capture.channel(0, rx.line()).channel(1, tx.line());
    DecodeDesk desk(std::make_unique<ModbusAnalyzer>(), "rx=0,tx=1,baudrate=10000,invert_rx=true");
    desk.run(capture);
    QCOMPARE(valuesOf(desk, "ch"), (Texts{"1", "0", "1"}));
    QCOMPARE(valuesOf(desk, "side"), (Texts{"request", "response", "request"}));
    QCOMPARE(valuesOf(desk, "crc"), Texts(3, "1"));
    QVERIFY(desk.bubble(0, Channel(0, 0), DisplayBase::Decimal).empty());
    QVERIFY(!desk.bubble(0, Channel(0, 1), DisplayBase::Decimal).empty());
}

void TstModbus::aResponseKnowsItsRequest()
{
    const Decoded desk(sent({{1, 3, 0, 100, 0, 1}, {1, 3, 2, 0x12, 0x34}, {9, 3, 2, 0x12, 0x34}}), rate);
    QCOMPARE(desk.frame(0).text,
             std::string("Unit 0x01: Read holding registers request, address 0x0064, count 1: 0x00 0x64 "
                         "0x00 0x01"));
    QCOMPARE(desk.frame(1).text,
             std::string("Unit 0x01: Read holding registers response, address 0x0064, count 1: 0x02 0x12 "
                         "0x34"));
    QCOMPARE(desk.frame(2).text, std::string("Unit 0x09: Read holding registers response: 0x02 0x12 0x34"));
}

void TstModbus::functionsAndExceptionsAreNamed()
{
    const auto text = [](const std::vector<unsigned> &frame) { return Decoded(sent({frame}), rate).frame(0).text; };
    QVERIFY(text({1, 1, 0, 0, 0, 1}).find("Read coils request") != std::string::npos);
    QVERIFY(text({1, 43, 14, 1, 0}).find("Encapsulated interface transport") != std::string::npos);
    QVERIFY(text({1, 100, 1}).find("Function 0x64") != std::string::npos);
    QCOMPARE(text({1, 0x83, 2}), std::string("Unit 0x01: Read holding registers exception, illegal data address"));
    QCOMPARE(text({1, 0x83, 99}), std::string("Unit 0x01: Read holding registers exception, unknown code 0x63"));
    QVERIFY(text({0, 6, 0, 1, 0, 9}).find("Unit 0x00 (all): Write single register request, address 0x0001") == 0);
}

void TstModbus::theRateIsFoundAndTold()
{
    AsyncSender sender(double(sampleRate) / 9600);
    sender.idle(50);
    for (unsigned i = 0; i < 10; ++i) {
        sender.bytes(withCrc({1, 3, 0, i, 0, 1})).idle(60);
    }
    const Decoded desk(sender, "rx=3,baudrate=0");
    QCOMPARE(desk.message(), std::string("Bit rate found: 9600 bits/s"));
    QCOMPARE(valuesOf(desk, "crc"), Texts(10, "1"));
    QCOMPARE(Decoded(sent({}), "rx=3,baudrate=0").message(),
             std::string("No bit rate can be found: the lines have too few edges"));
}

void TstModbus::textsGoFromShortToLong()
{
    const Decoded desk(sent({{1, 6, 0, 1, 0, 9}}), rate);
    QCOMPARE(desk.bubble(0, Channel(0, 3), DisplayBase::Decimal),
             (Texts{"Q", "6", "Write single register", "1: Write single register request",
                    "Unit 1: Write single register request, address 1",
                    "Unit 1: Write single register request, address 1: 0 1 0 9"}));
    const Texts binary = desk.bubble(0, Channel(0, 3), DisplayBase::Binary);
    QCOMPARE(binary[1], std::string("0b0000110"));
    QCOMPARE(binary[4], std::string("Unit 0b00000001: Write single register request, address 0b0000000000000001"));
}

void TstModbus::eachBitHasAMarker()
{
    const AsyncSender sender = sent({{1, 6, 0, 1, 0, 9}});
    const auto markers = Decoded(sender, rate).markers(3);
    QCOMPARE(markers.size(), std::size_t(8 * 8));
    QCOMPARE(std::int64_t(markers[0].sample), sender.starts[0] + 150);
}

namespace {

std::vector<std::int64_t> crosses(const DecodeDesk &desk)
{
    std::vector<std::int64_t> all;
    for (const auto &marker : desk.markers(3)) {
        if (marker.type == MarkerType::ErrorX) {
            all.push_back(std::int64_t(marker.sample));
        }
    }
    return all;
}

} // namespace

void TstModbus::whatIsWrongHasAnErrorCross_data()
{
    QTest::addColumn<std::vector<unsigned>>("bytes");
    QTest::addColumn<double>("pause"); // characters behind the second byte
    QTest::addColumn<bool>("isWrong");
    QTest::newRow("none") << std::vector<unsigned>{2, 7, 0x41, 0x12} << 0.0 << false;
    QTest::newRow("check") << std::vector<unsigned>{2, 7, 0x41, 0x13} << 0.0 << true;
    QTest::newRow("too short") << std::vector<unsigned>{2, 7, 0x41} << 0.0 << true;
    QTest::newRow("pause") << std::vector<unsigned>{2, 7, 0x41, 0x12} << 2.0 << false;
    QTest::newRow("pause and check") << std::vector<unsigned>{2, 7, 0x41, 0x13} << 2.0 << true;
}

void TstModbus::whatIsWrongHasAnErrorCross()
{
    QFETCH(std::vector<unsigned>, bytes);
    QFETCH(double, pause);
    QFETCH(bool, isWrong);
    AsyncSender sender(bit);
    sender.idle(50);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        sender.idle(i == 2 ? pause * 10 : 0).byte(bytes[i]);
    }
    sender.idle(50).bytes(withCrc({1, 3, 0, 0, 0, 1})).idle(50);
    std::vector<std::int64_t> expected;
    if (pause > 0) {
        expected.push_back(sender.starts[2]);
    }
    if (isWrong) {
        expected.push_back(sender.starts[bytes.size() - 1] + 999);
    }
    const Decoded desk(sender, rate);
    QCOMPARE(crosses(desk), expected);
    QCOMPARE(desk.frames().back().value("crc"), std::string("1"));
}

void TstModbus::anAsciiFrameHasAnErrorCrossWhereItBreaksOff()
{
    const AsyncSender right = sentAscii(ascii({1, 7}));
    QVERIFY(crosses(Decoded(right, rate + ",mode=ascii")).empty());
    const AsyncSender wrong = sentAscii(":0107F9\r\n" + ascii({1, 7}));
    QCOMPARE(crosses(Decoded(wrong, rate + ",mode=ascii")), std::vector<std::int64_t>{wrong.starts[8] + 999});
    const AsyncSender broken = sentAscii(":01" + ascii({1, 7}));
    const auto all = crosses(Decoded(broken, rate + ",mode=ascii"));
    QCOMPARE(all.size(), std::size_t(1));
    QVERIFY(all[0] > broken.starts[3] && all[0] < broken.starts[4]); // at the next colon
}

void TstModbus::aReadWithAWriteTellsBothAddresses()
{
    const Decoded desk(sent({{1, 23, 0, 3, 0, 1, 0, 14, 0, 1, 2, 0, 0xff}, {1, 23, 2, 0, 0xfe}, {2, 23, 2, 0, 0xfe}}),
                       rate);
    QVERIFY(desk.frame(0).text.find(" request, read address 0x0003, count 1, write address 0x000E, count 1: ") !=
            std::string::npos);
    QVERIFY(desk.frame(1).text.find(" response, read address 0x0003, count 1: ") != std::string::npos);
    QVERIFY(desk.frame(2).text.find(" response: ") != std::string::npos);
}

void TstModbus::settingsThatDoNotGoTogetherAreRefused()
{
    DecodeDesk desk(std::make_unique<ModbusAnalyzer>());
    QCOMPARE(desk.edit({{"rx", "none"}}), std::string("Choose a channel for RX or TX"));
    QCOMPARE(desk.edit({{"rx", "1"}}), std::string());
    QCOMPARE(desk.edit({{"data_bits", "7"}}), std::string("RTU needs 8 data bits"));
    QCOMPARE(desk.edit({{"mode", "ascii"}, {"parity", "odd"}, {"stop_bits", "2"}, {"role", "slave"}}), std::string());
    QVERIFY(!desk.edit({{"tx", "1"}}).empty());
    QVERIFY(!desk.edit({{"data_bits", "9"}}).empty());
    const Decoded coarse(sent({}), "rx=3,baudrate=500000");
    QCOMPARE(coarse.message(), std::string("The sample rate is too low: 500000 bits/s need at least 1500000 Hz"));
}

void TstModbus::exportsHaveAllFrames()
{
    const Decoded desk(sent({{1, 6, 0, 1, 0, 9}}), rate);
    QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("out")).toStdString();
    const std::string csv = decoderChecks::exported(desk, path + ".csv", 0);
    QVERIFY2(csv.find("frame,3,010600010009") != std::string::npos, csv.c_str());
    const std::string text = decoderChecks::exported(desk, path + ".txt", 0);
    QVERIFY2(text.find("Write single register request, address 0x0001") != std::string::npos, text.c_str());
}

void TstModbus::theRegistersAreExportedOneALine()
{
    const Decoded desk(sent({{1, 3, 0, 100, 0, 2},
                             {1, 3, 4, 0x12, 0x34, 0, 5},
                             {2, 1, 0, 8, 0, 3},
                             {2, 1, 1, 0x05},
                             {3, 16, 1, 0, 0, 1, 2, 0xab, 0xcd},
                             {3, 16, 1, 0, 0, 1},
                             {3, 5, 0, 7, 0xff, 0},
                             {3, 5, 0, 7, 0xff, 0},
                             {3, 15, 0, 1, 0, 2, 1, 2},
                             {4, 3, 2, 9, 9},
                             {1, 3, 0, 100, 0, 2},
                             {1, 0x83, 2},
                             {3, 22, 0, 4, 0, 0xf2, 0, 0x25},
                             {3, 22, 0, 4, 0, 0xf2, 0, 0x25},
                             {3, 23, 0, 3, 0, 1, 0, 14, 0, 1, 2, 0, 0xff},
                             {3, 23, 2, 0, 0xfe}}),
                       rate);
    QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("out.csv")).toStdString();
    std::string csv = decoderChecks::exported(desk, path, ModbusSettings::Registers);
    std::string lines;
    for (std::size_t at = 0; at < csv.size();) { // without the times
        const std::size_t end = csv.find('\n', at);
        lines += csv.substr(csv.find(',', at) + 1, end - csv.find(',', at));
        at = end + 1;
    }
    QCOMPARE(QString::fromStdString(lines), QStringLiteral("unit,access,table,address,value\n"
                                                           "1,read,holding register,100,4660\n"
                                                           "1,read,holding register,101,5\n"
                                                           "2,read,coil,8,1\n"
                                                           "2,read,coil,9,0\n"
                                                           "2,read,coil,10,1\n"
                                                           "3,write,holding register,256,43981\n"
                                                           "3,write,coil,7,1\n"
                                                           "3,write,coil,1,0\n"
                                                           "3,write,coil,2,1\n"
                                                           "3,and mask,holding register,4,242\n"
                                                           "3,or mask,holding register,4,37\n"
                                                           "3,write,holding register,14,255\n"
                                                           "3,read,holding register,3,254\n"));
}

void TstModbus::aCutFrameIsNotShown()
{
    const auto check = [](const AsyncSender &sender, const std::string &settings, std::size_t frames) {
        const auto whole = Decoded(sender, settings).frames();
        QCOMPARE(whole.size(), frames);
        for (std::int64_t length = 1; length < sender.now(); length += 3) {
            const Decoded desk(sender, settings, length);
            QCOMPARE(decoderChecks::faultOf(desk, length), std::string());
            QCOMPARE(decoderChecks::faultOfCut(desk.frames(), whole), std::string());
        }
    };
    AsyncSender rtu(10);
    rtu.idle(20).bytes(withCrc({1, 6, 0, 1, 0, 9})).idle(200).bytes(withCrc({1, 6, 0, 1, 0, 9})).idle(200);
    check(rtu, "rx=3,baudrate=100000", 2);
    AsyncSender lines(10);
    lines.idle(20);
    for (const char character : ascii({1, 7}) + ascii({2, 7})) {
        lines.byte(unsigned(character));
    }
    check(lines.idle(50), "rx=3,baudrate=100000,mode=ascii", 2);
}

/// Behind a silence, a frame with a wrong CRC is one; before the first silence it may be the end of one.
void TstModbus::aFrameThatTheCapturesBeginCutsIsNotShown()
{
    for (const double idle : {4.0, 34.0}) { // bits; a silence is 32.5
        AsyncSender sender(bit);
        sender.idle(idle).bytes({0x11, 0x22, 0x33, 0x44, 0x55}).idle(50).bytes(withCrc({1, 7})).idle(50);
        const Texts whole{"frame 010741E2 1"};
        const Texts both{"frame 1122334455 0", "frame 010741E2 1"};
        QCOMPARE(brief(Decoded(sender, rate)), idle < 32 ? whole : both);
    }
    AsyncSender late(bit); // ends three bits behind the edge that is taken for a start
    late.low(2).idle(1).low(1).idle(2 + 35).bytes({0x11, 0x22, 0x33, 0x44, 0x55}).idle(50);
    QCOMPARE(brief(Decoded(late, rate)), Texts{"frame 1122334455 0"});
    AsyncSender right(bit);
    right.idle(4).bytes(withCrc({1, 7})).idle(50);
    QCOMPARE(brief(Decoded(right, rate)), Texts{"frame 010741E2 1"});
}

void TstModbus::theTailOfACharacterHidesNoColon()
{
    AsyncSender sender(bit);
    sender.idle(1).low(2).idle(4); // the last bits of a character; read from their edge on, it ends within the colon
    for (const char character : ascii({1, 7})) {
        sender.byte(unsigned(character));
    }
    QCOMPARE(brief(Decoded(sender.idle(50), rate + ",mode=ascii")), Texts{"frame 0107F8 1"});
}

void TstModbus::theSimulationIsDecodedAsItWasSent_data()
{
    QTest::addColumn<QString>("settings");
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("block");
    QTest::newRow("one line") << "rx=0,baudrate=19200" << 1000000 << 100000;
    QTest::newRow("two lines, small blocks") << "rx=0,tx=1,baudrate=9600,parity=even,invert_tx=true" << 200000 << 77;
    QTest::newRow("ASCII") << "tx=1,baudrate=57600,mode=ascii,data_bits=7,parity=odd,stop_bits=2" << 1000000 << 65536;
    QTest::newRow("found, fast") << "rx=0,baudrate=0,role=auto" << 4000000 << 65536;
    QTest::newRow("fast") << "rx=0,tx=1,baudrate=1000000,role=master" << 20000000 << 65536;
}

void TstModbus::theSimulationIsDecodedAsItWasSent()
{
    QFETCH(QString, settings);
    QFETCH(int, rate);
    QFETCH(int, block);
    DecodeDesk desk(std::make_unique<ModbusAnalyzer>(), settings.toStdString());
    const auto capture = desk.simulate(rate, rate * std::int64_t(2), block);
    QCOMPARE(decoderChecks::faultOf(desk.run(*capture), capture->device().smpCount), std::string());
    const auto frames = desk.frames();
    constexpr std::size_t untilAllMishaps = 56;
    QVERIFY(frames.size() > untilAllMishaps);
    const std::size_t check = settings.contains(QLatin1String("ascii")) ? 2 : 4; // digits
    const bool isAscii = check == 2;
    const bool hasParity = settings.contains(QLatin1String("parity"));
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const ModbusSimulated sentNow = ModbusSimulated::of(std::uint32_t(i));
        const bool isCut = sentNow.mishap == ModbusMishap::Cut;
        QCOMPARE(frames[i].kind, std::string(isCut ? "error" : "frame"));
        std::string expected;
        for (const std::uint8_t byte : sentNow.bytes) {
            expected += QString::asprintf("%02X", unsigned(byte)).toStdString();
        }
        const std::string got = frames[i].value("v");
        if (isCut) {
            QCOMPARE(got, expected.substr(0, 4));
            continue;
        }
        QCOMPARE(got.substr(0, got.size() - check), expected);
        QCOMPARE(frames[i].value("crc"), std::string(sentNow.isCheckWrong ? "0" : "1"));
        QCOMPARE(frames[i].value("side"), std::string(sentNow.isResponse ? "response" : "request"));
        const auto is = [&](ModbusMishap mishap, bool may = true) {
            return std::string(may && sentNow.mishap == mishap ? "1" : "(absent)");
        };
        QCOMPARE(frames[i].value("pe"), is(ModbusMishap::Parity, hasParity));
        QCOMPARE(frames[i].value("fe"), is(ModbusMishap::Framing));
        QCOMPARE(frames[i].value("pause"), is(ModbusMishap::Pause, !isAscii));
    }
}

void TstModbus::randomEdgesGiveFramesInOrder()
{
    constexpr std::int64_t length = 200000;
    for (const std::int64_t mean : {1, 5, 30, 60, 300, 2000}) {
        for (const char *settings :
             {"rx=3,tx=4,baudrate=20000", "rx=3,baudrate=0", "rx=3,baudrate=300000,mode=ascii"}) {
            TestCapture capture(sampleRate, length);
            capture.channel(3, true, decoderChecks::randomEdges(std::uint32_t(mean), mean, length));
            capture.channel(4, true, decoderChecks::randomEdges(std::uint32_t(mean + 1), mean, length));
            DecodeDesk desk(std::make_unique<ModbusAnalyzer>(), settings);
            desk.run(capture);
            if (desk.analyzer->GetDecodeStatus() != DecodeStatus::Failed) {
                QCOMPARE(decoderChecks::faultOf(desk, length), std::string());
            }
        }
    }
}

QTEST_GUILESS_MAIN(TstModbus)
#include "tst_Modbus.moc"
