#include "AsyncSender.h"
#include "DecoderChecks.h"
#include "MidiAnalyzer.h"
#include "MidiSimulation.h"
#include "PythonReader.h"

#include <QtTest>

#include <string>
#include <vector>

using Texts = std::vector<std::string>;

namespace {

constexpr std::int64_t sampleRate = 1000000;
constexpr double bit = 32;

class Decoded : public DecodedLine {
public:
    Decoded(const AsyncSender &sender, const std::string &settings, std::int64_t length = -1)
        : DecodedLine(std::make_unique<MidiAnalyzer>(), sender.line(), settings, sampleRate, length)
    {}
};

AsyncSender sent(const std::vector<unsigned> &bytes)
{
    AsyncSender sender(bit);
    sender.idle(20).bytes(bytes).idle(20);
    return sender;
}

/// "message 903C40", "realtime F8".
Texts brief(const DecodeDesk &desk)
{
    Texts all;
    for (const DecodedFrame &frame : desk.frames()) {
        all.push_back(frame.kind + " " + frame.value("v"));
    }
    return all;
}

Texts decoded(const std::vector<unsigned> &bytes)
{
    return brief(Decoded(sent(bytes), "rx=3"));
}

std::string textOf(const std::vector<unsigned> &bytes)
{
    return Decoded(sent(bytes), "rx=3").frame(0).text;
}

std::string hexOf(const std::vector<std::uint8_t> &bytes)
{
    std::string text;
    for (const std::uint8_t byte : bytes) {
        text += QString::asprintf("%02X", unsigned(byte)).toStdString();
    }
    return text;
}

/// The events of a format 0 file: "960:90 3C 40", with the ticks from the start.
Texts eventsOf(const std::string &file)
{
    Texts events;
    std::size_t at = 14 + 8;
    const auto byte = [&] { return unsigned(std::uint8_t(file[at++])); };
    const auto variable = [&] {
        std::uint32_t value = 0;
        for (;;) {
            const unsigned group = byte();
            value = value << 7 | (group & 0x7fU);
            if (group < 0x80U) {
                return value;
            }
        }
    };
    std::uint64_t tick = 0;
    while (at < file.size()) {
        tick += variable();
        std::vector<std::uint8_t> bytes{std::uint8_t(byte())};
        std::uint32_t count = bytes[0] >> 5 == 6 ? 1 : 2; // C0 to DF have one
        if (bytes[0] == 0xff) {
            bytes.push_back(std::uint8_t(byte()));
            count = variable();
        } else if (bytes[0] >= 0xf0) {
            count = variable();
        }
        for (; count > 0 && at < file.size(); --count) {
            bytes.push_back(std::uint8_t(byte()));
        }
        events.push_back(std::to_string(tick) + ":" + hexOf(bytes));
    }
    return events;
}

} // namespace

class TstMidi : public QObject {
    Q_OBJECT
private slots:
    void aMessageReachesFromItsStatusToItsLastByte();
    void eachStatusHasItsDataBytes();
    void aRunningStatusHoldsUntilACommonMessage();
    void realTimeBytesMayStandWithinAMessage();
    void exclusiveMessagesEndWithTheirOwnStatus();
    void aManufacturerHasOneOrThreeBytes();
    void whatIsNotWholeIsAnError();
    void dataWithoutStatusIsAnError();
    void anErrorHasTheRealTimeBytesInIt();
    void aFramingErrorBreaksTheMessage();
    void aLineWithoutMessagesIsShownPieceByPiece();
    void aSenderMayBeFivePercentOffAndNotSeven_data();
    void aSenderMayBeFivePercentOffAndNotSeven();
    void anInvertedLineIsLowWhileItIsIdle();
    void theRateIsFoundAndTold();
    void messagesAreNamed();
    void numbersOfTwoBytesFollowTheBase();
    void textsGoFromShortToLong();
    void eachBitHasAMarker();
    void anErrorHasACrossAtItsEnd();
    void settingsAreChecked();
    void exportsHaveAllMessages();
    void theMidiFileHasAllMessagesAtTheirTimes();
    void theMidiFileCanBeReadByOthers();
    void aLongPauseIsWrittenInPieces();
    void aCutMessageIsNotShown();
    void theSimulationIsDecodedAsItWasSent_data();
    void theSimulationIsDecodedAsItWasSent();
    void randomEdgesGiveFramesInOrder();
};

void TstMidi::aMessageReachesFromItsStatusToItsLastByte()
{
    const AsyncSender sender = sent({0x90, 0x3c, 0x40, 0x80, 0x3c, 0x00});
    const Decoded desk(sender, "rx=3");
    QCOMPARE(desk.summaries(), (Texts{"message v=903C40", "message v=803C00"}));
    QCOMPARE(desk.frame(0).first, sender.starts[0]);
    QCOMPARE(desk.frame(0).last, sender.starts[3] - 1);
    QCOMPARE(desk.frame(1).last, sender.starts[5] + 319);
}

void TstMidi::eachStatusHasItsDataBytes()
{
    QCOMPARE(decoded({0x8f, 1, 2, 0x9f, 1, 2, 0xaf, 1, 2, 0xbf, 1, 2, 0xcf, 1, 0xdf, 1, 0xef, 1, 2}),
             (Texts{"message 8F0102", "message 9F0102", "message AF0102", "message BF0102", "message CF01",
                    "message DF01", "message EF0102"}));
    QCOMPARE(decoded({0xf1, 1, 0xf2, 1, 2, 0xf3, 1, 0xf6}),
             (Texts{"message F101", "message F20102", "message F301", "message F6"}));
    QCOMPARE(decoded({0xf8, 0xf9, 0xfa, 0xfb, 0xfc, 0xfd, 0xfe, 0xff}),
             (Texts{"realtime F8", "realtime F9", "realtime FA", "realtime FB", "realtime FC", "realtime FD",
                    "realtime FE", "realtime FF"}));
}

void TstMidi::aRunningStatusHoldsUntilACommonMessage()
{
    const Decoded desk(sent({0x90, 1, 2, 3, 4, 0xf8, 5, 6, 0xc1, 7, 8, 0xf6, 9, 0x80, 1, 2}), "rx=3");
    QCOMPARE(brief(desk), (Texts{"message 900102", "message 0304", "realtime F8", "message 0506", "message C107",
                                 "message 08", "message F6", "error 09", "message 800102"}));
    QCOMPARE(desk.frame(1).value("status"), std::string("90"));
    QCOMPARE(desk.frame(5).value("status"), std::string("C1"));
}

void TstMidi::realTimeBytesMayStandWithinAMessage()
{
    const AsyncSender sender = sent({0x90, 0xf8, 1, 0xfe, 2, 0xf0, 0x7d, 0xfa, 1, 0xf7});
    const Decoded desk(sender, "rx=3");
    QCOMPARE(brief(desk), (Texts{"message 900102", "realtime F8", "realtime FE", "message F07D01F7", "realtime FA"}));
    QCOMPARE(desk.frame(0).first, sender.starts[0]);
    QCOMPARE(desk.frame(0).last, sender.starts[5] - 1);
    QCOMPARE(desk.frame(1).first, sender.starts[1]);
}

void TstMidi::exclusiveMessagesEndWithTheirOwnStatus()
{
    std::vector<unsigned> bytes{0xf0, 0x41};
    std::string text = "message F041";
    for (unsigned i = 0; i < 300; ++i) {
        bytes.push_back(i & 0x7fU);
        text += QString::asprintf("%02X", i & 0x7fU).toStdString();
    }
    bytes.push_back(0xf7);
    QCOMPARE(decoded(bytes), Texts{text + "F7"});
    QCOMPARE(decoded({0xf0, 0x41, 1, 2, 0x90, 1, 2}), (Texts{"error F0410102", "message 900102"}));
}

void TstMidi::aManufacturerHasOneOrThreeBytes()
{
    QCOMPARE(decoded({0xf0, 0x7c, 0xf7, 0xf0, 0x00, 0x20, 0x01, 0xf7, 0xf0, 0xf7, 0xf0, 0x00, 0x20, 0xf7}),
             (Texts{"message F07CF7", "message F0002001F7", "error F0F7", "error F00020F7"}));
}

void TstMidi::whatIsNotWholeIsAnError()
{
    QCOMPARE(decoded({0x80, 1, 0xc0, 0xf2, 7, 0xf5, 0xf4, 3, 4, 0x90, 1, 2, 3, 0xb0, 1, 2}),
             (Texts{"error 8001", "error C0", "error F207", "error F5", "error F40304", "message 900102", "error 03",
                    "message B00102"}));
}

void TstMidi::dataWithoutStatusIsAnError()
{
    QCOMPARE(decoded({1, 2, 3, 0xf6, 0x1a, 0x1b, 0xf7, 0xf6, 0xf7, 1, 2, 0xf6}),
             (Texts{"error 010203", "message F6", "error 1A1BF7", "message F6", "error F70102", "message F6"}));
}

void TstMidi::anErrorHasTheRealTimeBytesInIt()
{
    QCOMPARE(decoded({0xf3, 0xf8, 0xf6}), (Texts{"error F3F8", "realtime F8", "message F6"}));
}

void TstMidi::aFramingErrorBreaksTheMessage()
{
    AsyncSender sender(bit);
    sender.idle(20).byte(0x90).byte(1).byte(0x42, 0).low(1).idle(2).byte(1).byte(2).byte(0xf6).idle(20);
    QCOMPARE(Decoded(sender, "rx=3").summaries(),
             (Texts{"error v=9001", "error v=42 fe=1", "error v=0102", "message v=F6"}));
}

void TstMidi::aLineWithoutMessagesIsShownPieceByPiece()
{
    const Decoded desk(sent(std::vector<unsigned>(600, 5)), "rx=3");
    QCOMPARE(desk.frames().size(), std::size_t(2)); // and 88 bytes that the capture cuts
    QCOMPARE(desk.frame(0).value("v").size(), std::size_t(512));
}

void TstMidi::aSenderMayBeFivePercentOffAndNotSeven_data()
{
    QTest::addColumn<double>("off");
    QTest::addColumn<bool>("isRead");
    QTest::newRow("slow, within") << 1.045 << true;
    QTest::newRow("fast, within") << 0.955 << true;
    QTest::newRow("slow, beyond") << 1.07 << false;
    QTest::newRow("fast, beyond") << 0.93 << false;
}

void TstMidi::aSenderMayBeFivePercentOffAndNotSeven()
{
    QFETCH(double, off);
    QFETCH(bool, isRead);
    AsyncSender sender(bit * off);
    sender.idle(20);
    Texts expected;
    for (unsigned note = 0; note < 128; ++note) {
        sender.bytes({0x90, note, 0x55});
        expected.push_back("message 90" + hexOf({std::uint8_t(note), 0x55}));
    }
    sender.idle(20);
    QCOMPARE(brief(Decoded(sender, "rx=3")) == expected, isRead);
}

void TstMidi::anInvertedLineIsLowWhileItIsIdle()
{
    AsyncSender sender(bit, false);
    sender.idle(20).bytes({0x90, 1, 2}).idle(20);
    QCOMPARE(brief(Decoded(sender, "rx=3,invert=true")), Texts{"message 900102"});
}

void TstMidi::theRateIsFoundAndTold()
{
    const Decoded desk(sent({0x90, 1, 2, 0x90, 3, 5, 0x80, 1, 2, 0xb0, 7, 0x55}), "rx=3,baudrate=0");
    QCOMPARE(desk.message(), std::string("Bit rate found: 31250 bits/s"));
    QCOMPARE(desk.frames().size(), std::size_t(4));
    const Decoded none(sent({}), "rx=3,baudrate=0");
    QCOMPARE(none.analyzer->GetDecodeStatus(), DecodeStatus::Failed);
    const Decoded coarse(sent({0xf6}), "rx=3,baudrate=500000");
    QCOMPARE(coarse.message(), std::string("The sample rate is too low: 500000 bits/s need at least 1500000 Hz"));
}

void TstMidi::messagesAreNamed()
{
    QCOMPARE(textOf({0x90, 60, 0x40}), std::string("Channel 1: note on C4, velocity 0x40"));
    QCOMPARE(textOf({0x9f, 61, 0}), std::string("Channel 16: note off C#4, velocity 0x00"));
    QCOMPARE(textOf({0xa1, 0, 9}), std::string("Channel 2: key pressure C-1, 0x09"));
    QCOMPARE(textOf({0xb0, 7, 9}), std::string("Channel 1: controller 0x07 (Volume), 0x09"));
    QCOMPARE(textOf({0xb0, 39, 9}), std::string("Channel 1: controller 0x27 (Volume, low part), 0x09"));
    QCOMPARE(textOf({0xb0, 123, 0}), std::string("Channel 1: controller 0x7B (All notes off), 0x00"));
    QCOMPARE(textOf({0xb0, 20, 0}), std::string("Channel 1: controller 0x14 (Controller 20), 0x00"));
    QCOMPARE(textOf({0xc0, 5}), std::string("Channel 1: program 0x05"));
    QCOMPARE(textOf({0xd0, 5}), std::string("Channel 1: channel pressure 0x05"));
    QCOMPARE(textOf({0xe0, 0, 0x40}), std::string("Channel 1: pitch bend 0x2000"));
    QCOMPARE(textOf({0xe0, 0x7f, 0x3f}), std::string("Channel 1: pitch bend 0x1FFF"));
    QCOMPARE(textOf({0xf1, 0x35}), std::string("Time code quarter frame, piece 3: 0x5"));
    QCOMPARE(textOf({0xf2, 1, 2}), std::string("Song position 0x0101"));
    QCOMPARE(textOf({0xf3, 1}), std::string("Song select 0x01"));
    QCOMPARE(textOf({0xf6}), std::string("Tune request"));
    QCOMPARE(textOf({0xfe}), std::string("Active sensing"));
    QCOMPARE(textOf({0xf0, 0x7e, 0x7f, 6, 1, 0xf7}),
             std::string("System exclusive, Identity request: 0xF0 0x7E 0x7F 0x06 0x01 0xF7"));
}

void TstMidi::numbersOfTwoBytesFollowTheBase()
{
    const auto last = [](const std::vector<unsigned> &bytes, DisplayBase base) {
        return Decoded(sent(bytes), "rx=3").bubble(0, Channel(0, 3), base).back();
    };
    QCOMPARE(last({0xe0, 0, 0x40}, DisplayBase::Decimal), std::string("Channel 1: pitch bend 0")); // from the middle
    QCOMPARE(last({0xe0, 0x7f, 0x3f}, DisplayBase::Decimal), std::string("Channel 1: pitch bend -1"));
    QCOMPARE(last({0xe0, 0x7f, 0x3f}, DisplayBase::Binary), std::string("Channel 1: pitch bend 0b01111111111111"));
    QCOMPARE(last({0xf2, 1, 2}, DisplayBase::Decimal), std::string("Song position 257"));
    QCOMPARE(last({0xf1, 0x35}, DisplayBase::Binary), std::string("Time code quarter frame, piece 3: 0b0101"));
}

void TstMidi::textsGoFromShortToLong()
{
    const Decoded desk(sent({0x90, 60, 0x40, 61, 0x41, 0xf4, 0xf6}), "rx=3");
    const Channel channel(0, 3);
    QCOMPARE(desk.bubble(0, channel, DisplayBase::Decimal),
             (Texts{"+", "C4", "On C4", "Note on C4", "Channel 1: note on C4, velocity 64"}));
    QCOMPARE(desk.frame(1).text, std::string("Channel 1 (running): note on C#4, velocity 0x41"));
    QCOMPARE(desk.frame(2).text, std::string("No message: 0xF4"));
}

void TstMidi::eachBitHasAMarker()
{
    const AsyncSender sender = sent({0x90, 1, 2});
    const auto markers = Decoded(sender, "rx=3").markers(3);
    QCOMPARE(markers.size(), std::size_t(24));
    QCOMPARE(std::int64_t(markers[0].sample), sender.starts[0] + 48);
}

void TstMidi::anErrorHasACrossAtItsEnd()
{
    AsyncSender sender = sent({0x90, 1, 0xf6, 2, 3, 0xf0, 0xf7, 0x90, 0xf8});
    sender.byte(0x42, 0).low(1).idle(2).byte(0xf6).idle(20);
    const Decoded desk(sender, "rx=3");
    QCOMPARE(desk.message(), std::string()); // such as that markers are not in the order of time
    QCOMPARE(brief(desk), (Texts{"error 9001", "message F6", "error 0203", "error F0F7", "error 90F8", "realtime F8",
                                 "error 42", "message F6"}));
    std::vector<std::int64_t> crosses;
    for (const Marker &marker : desk.markers(3)) {
        if (marker.type == MarkerType::ErrorX) {
            crosses.push_back(std::int64_t(marker.sample));
        }
    }
    const std::vector<std::int64_t> expected{desk.frame(0).last, desk.frame(2).last, desk.frame(3).last,
                                             desk.frame(4).last, sender.starts[9] + 9 * 32 + 15};
    QCOMPARE(crosses, expected);
}

void TstMidi::settingsAreChecked()
{
    DecodeDesk desk(std::make_unique<MidiAnalyzer>());
    QVERIFY(!desk.edit({{"rx", "none"}}).empty());
    QCOMPARE(desk.edit({{"rx", "1"}, {"invert", "true"}, {"baudrate", "0"}}), std::string());
    QVERIFY(!desk.edit({{"baudrate", "-1"}}).empty());
}

void TstMidi::exportsHaveAllMessages()
{
    const Decoded desk(sent({0x90, 60, 0x40, 0xf8}), "rx=3");
    QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("out")).toStdString();
    const std::string csv = decoderChecks::exported(desk, path + ".csv", 0);
    QVERIFY2(csv.find("message,903C40,,,") != std::string::npos, csv.c_str());
    const std::string text = decoderChecks::exported(desk, path + ".txt", 0);
    QVERIFY2(text.find("Timing clock") != std::string::npos, text.c_str());
}

void TstMidi::theMidiFileHasAllMessagesAtTheirTimes()
{
    AsyncSender sender(bit);
    sender.idle(31.25).bytes({0x90, 60, 0x40}).idle(1000).bytes({61, 0x41, 0xf8, 0xf0, 0x7d, 1, 0xf7, 0xf2, 1, 2});
    sender.bytes({0xc0, 5, 0xf4}).idle(20);
    const Decoded desk(sender, "rx=3");
    QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("out.mid")).toStdString();
    const std::string file = decoderChecks::exported(desk, path, MidiSettings::StandardMidiFile);
    QCOMPARE(file.substr(0, 18), std::string("MThd\0\0\0\6\0\0\0\1\x61\xa8MTrk", 18));
    const std::size_t length = std::size_t(std::uint8_t(file[20])) << 8 | std::uint8_t(file[21]);
    QCOMPARE(length, file.size() - 22);
    // 20 us a tick: 1 ms, then three bytes of 320 us and 1000 bits of 32 us.
    QCOMPARE(eventsOf(file), (Texts{"0:FF5107A120", "50:903C40", "1698:903D41", "1746:F07D01F7", "1810:F7F20102",
                                    "1858:C005", "1858:FF2F"}));
}

void TstMidi::theMidiFileCanBeReadByOthers()
{
    AsyncSender sender(bit);
    sender.idle(31.25).bytes({0x90, 60, 0x40}).idle(1000).bytes({61, 0x41, 0xf8, 0xf0, 0x7d, 1, 0xf7}).idle(20);
    sender.bytes({0xc3, 5}).idle(20);
    const Decoded desk(sender, "rx=3");
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("out.mid"));
    decoderChecks::exportTo(desk, path.toStdString(), MidiSettings::StandardMidiFile);
    const auto text = pythonReader::read("mido",
                                         "at = 0.0\n"
                                         "for m in mido.MidiFile(sys.argv[1]):\n"
                                         "    at += m.time\n"
                                         "    if not m.is_meta:\n"
                                         "        print('%.5f' % at, m.hex())\n",
                                         path);
    if (!text) {
        QSKIP("python3-mido is not installed");
    }
    QCOMPARE(*text, std::string("0.00100 90 3C 40 0.03396 90 3D 41 0.03492 F0 7D 01 F7 0.03684 C3 05"));
}

void TstMidi::aLongPauseIsWrittenInPieces()
{
    constexpr std::int64_t bitSamples = 32;
    EdgeLine line(true);
    line.hold(100);
    const auto send = [&line](unsigned byte) {
        line.bit(false, bitSamples);
        for (unsigned i = 0; i < 8; ++i) {
            line.bit((byte >> i & 1U) != 0, bitSamples);
        }
        line.bit(true, bitSamples);
    };
    send(0xf6);
    line.hold(12000 * sampleRate);
    send(0xf6);
    line.hold(1000);
    const DecodedLine desk(std::make_unique<MidiAnalyzer>(), line, "rx=3", sampleRate);
    QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("out.mid")).toStdString();
    const Texts events = eventsOf(decoderChecks::exported(desk, path, MidiSettings::StandardMidiFile));
    // 2^28 - 1 ticks at a time.
    QCOMPARE(events[1], std::string("5:F7F6"));
    QCOMPARE(events[2], std::string("268435460:FF01"));
    QCOMPARE(events[4], std::string("600000021:F7F6"));
}

void TstMidi::aCutMessageIsNotShown()
{
    AsyncSender sender(8);
    sender.idle(5).bytes({0x90, 1, 2, 3, 4, 0xf0, 0x7d, 0xf8, 1, 0xf7, 0xc0, 5}).idle(20);
    const std::string settings = "rx=3,baudrate=125000";
    const auto whole = Decoded(sender, settings).frames();
    QCOMPARE(whole.size(), std::size_t(5));
    for (std::int64_t length = 1; length < sender.now(); ++length) {
        const Decoded desk(sender, settings, length);
        QCOMPARE(decoderChecks::faultOf(desk, length), std::string());
        const auto cut = desk.frames();
        for (const DecodedFrame &frame : cut) { // a real-time byte within the message that is cut is shown
            QVERIFY(std::any_of(whole.begin(), whole.end(), [&](const DecodedFrame &other) {
                return other.first == frame.first && other.summary() == frame.summary();
            }));
        }
    }
}

void TstMidi::theSimulationIsDecodedAsItWasSent_data()
{
    QTest::addColumn<QString>("settings");
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("block");
    QTest::newRow("standard") << "" << 1000000 << 100000;
    QTest::newRow("inverted, small blocks") << ",invert=true" << 200000 << 77;
    QTest::newRow("found") << ",baudrate=0" << 4000000 << 65536;
    QTest::newRow("fast") << ",baudrate=1000000" << 50000000 << 65536;
}

void TstMidi::theSimulationIsDecodedAsItWasSent()
{
    QFETCH(QString, settings);
    QFETCH(int, rate);
    QFETCH(int, block);
    DecodeDesk desk(std::make_unique<MidiAnalyzer>(), "rx=0" + settings.toStdString());
    const auto capture = desk.simulate(rate, rate / 2, block);
    QCOMPARE(decoderChecks::faultOf(desk.run(*capture), capture->device().smpCount), std::string());
    const Texts got = brief(desk);
    QVERIFY(got.size() > 200);
    std::size_t at = 0;
    for (std::uint32_t number = 0; at < got.size(); ++number) {
        const MidiSimulated sentNow = MidiSimulated::of(number);
        std::vector<std::uint8_t> bytes = sentNow.bytes;
        if (sentNow.isError && sentNow.realTime != 0) {
            bytes.insert(bytes.end() - 1, sentNow.realTime);
        }
        if (at + 1 == got.size() && got[at] == "realtime " + hexOf({sentNow.realTime})) {
            break; // the capture cuts the message around it
        }
        const bool isRealTime = bytes[0] == 0xf8;
        if (sentNow.hasFramingError) {
            QCOMPARE(got[at++], "error " + hexOf({bytes.begin(), bytes.end() - 1}));
            if (at < got.size()) {
                QCOMPARE(got[at++], "error " + hexOf({bytes.back()}));
            }
            continue;
        }
        const std::string expected = isRealTime ? "realtime " : sentNow.isError ? "error " : "message ";
        QCOMPARE(got[at++], expected + hexOf(bytes));
        if (sentNow.realTime != 0 && at < got.size()) {
            QCOMPARE(got[at++], "realtime " + hexOf({sentNow.realTime}));
        }
    }
    for (const char *one : {"error 90", "error 0", "error 1", "error F4", "error F5", "error F7", "realtime F8",
                            "realtime FA", "realtime FB", "realtime FC", "realtime FE", "realtime FF"}) {
        QVERIFY2(std::any_of(got.begin(), got.end(), [one](const std::string &text) { return text.starts_with(one); }),
                 one);
    }
}

void TstMidi::randomEdgesGiveFramesInOrder()
{
    constexpr std::int64_t length = 200000;
    for (const std::int64_t mean : {1, 16, 40, 60, 300}) {
        for (const char *settings : {"rx=3", "rx=3,baudrate=0", "rx=3,invert=true,baudrate=300000"}) {
            TestCapture capture(sampleRate, length);
            capture.channel(3, true, decoderChecks::randomEdges(std::uint32_t(mean), mean, length));
            DecodeDesk desk(std::make_unique<MidiAnalyzer>(), settings);
            desk.run(capture);
            if (desk.analyzer->GetDecodeStatus() != DecodeStatus::Failed) {
                QCOMPARE(decoderChecks::faultOf(desk, length), std::string());
            }
        }
    }
}

QTEST_GUILESS_MAIN(TstMidi)
#include "tst_Midi.moc"
