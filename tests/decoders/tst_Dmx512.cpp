#include "AsyncSender.h"
#include "DecoderChecks.h"
#include "DmxAnalyzer.h"
#include "DmxSimulation.h"

#include <QtTest>

#include <string>
#include <vector>

using Texts = std::vector<std::string>;

namespace {

constexpr std::int64_t sampleRate = 2000000;
constexpr double bit = 8; ///< samples of 4 us
const std::string rx = "rx=3";

class Decoded : public DecodedLine {
public:
    Decoded(const AsyncSender &sender, const std::string &settings, std::int64_t length = -1)
        : DecodedLine(std::make_unique<DmxAnalyzer>(), sender.line(), settings, sampleRate, length)
    {}
};

/// Microseconds in bits.
double us(double time)
{
    return time / 4;
}

AsyncSender &packet(AsyncSender &sender, const std::vector<unsigned> &values)
{
    return sender.low(us(100)).idle(us(12)).bytes(values, 2);
}

} // namespace

class TstDmx512 : public QObject {
    Q_OBJECT
private slots:
    void aPacketIsABreakAMarkAStartCodeAndSlots();
    void slotsBeforeTheFirstBreakAreNotShown();
    void aBreakLastsForEightyEightMicroseconds_data();
    void aBreakLastsForEightyEightMicroseconds();
    void aBreakMayBeginWithinASlot();
    void aMarkLastsForEightMicroseconds();
    void aMissingStopBitIsAFramingError();
    void aSecondStopBitIsAskedFor();
    void aPauseOfASecondIsTooLong();
    void moreThan512SlotsAreToldEach();
    void anInvertedLineIsLowWhileItIsIdle();
    void aSenderMayBeTwoPercentOffAndNotSeven();
    void twoSamplesABitAreEnough();
    void theRateIsFoundAndTold();
    void theRateOfADarkStageIsThatOfTheStandard();
    void anotherRateIsFoundWhereItFitsBetter();
    void textsGoFromShortToLong();
    void eachBitHasAMarker();
    void whatIsTooLongTooShortOrTooMuchHasACross();
    void settingsAreChecked();
    void exportsHaveAllSlots();
    void aCutSlotIsNotShown();
    void theSimulationIsDecodedAsItWasSent_data();
    void theSimulationIsDecodedAsItWasSent();
    void randomEdgesGiveFramesInOrder();
};

void TstDmx512::aPacketIsABreakAMarkAStartCodeAndSlots()
{
    AsyncSender sender(bit);
    sender.idle(20);
    packet(sender, {0, 0x55, 255}).idle(us(50));
    sender.byte(7, 2);
    packet(sender, {0x17, 1}).idle(20);
    const Decoded desk(sender, rx);
    QCOMPARE(desk.summaries(), (Texts{"break", "mark", "start n=0 v=0", "slot n=1 v=85", "slot n=2 v=255",
                                      "slot n=3 v=7", "break", "mark", "start n=0 v=23", "slot n=1 v=1"}));
    QCOMPARE(desk.frame(0).first, std::int64_t(160));
    QCOMPARE(desk.frame(0).last, std::int64_t(160 + 199));
    QCOMPARE(desk.frame(1).first, std::int64_t(360));
    QCOMPARE(desk.frame(1).last, std::int64_t(383));
    QCOMPARE(desk.frame(2).first, sender.starts[0]);
    QCOMPARE(desk.frame(2).last, sender.starts[0] + 87);
}

void TstDmx512::slotsBeforeTheFirstBreakAreNotShown()
{
    AsyncSender sender(bit);
    sender.idle(20).bytes({1, 2, 3}, 2).idle(5);
    packet(sender, {0, 9}).idle(20);
    QCOMPARE(Decoded(sender, rx).summaries(), (Texts{"break", "mark", "start n=0 v=0", "slot n=1 v=9"}));
}

void TstDmx512::aBreakLastsForEightyEightMicroseconds_data()
{
    QTest::addColumn<double>("time");
    QTest::addColumn<bool>("isBreak");
    QTest::newRow("as long as it must be") << 88.0 << true;
    QTest::newRow("a sample less, which an edge may be") << 87.5 << true;
    QTest::newRow("too short") << 86.5 << false;
    QTest::newRow("a second") << 900000.0 << true;
}

void TstDmx512::aBreakLastsForEightyEightMicroseconds()
{
    QFETCH(double, time);
    QFETCH(bool, isBreak);
    AsyncSender sender(bit);
    sender.idle(20);
    packet(sender, {0, 1}).low(us(time)).idle(us(12)).bytes({0, 2}, 2).idle(20);
    const Decoded desk(sender, rx);
    QCOMPARE(desk.frame(4).summary(), std::string(isBreak ? "break" : "slot n=2 v=0 fe=1"));
    QCOMPARE(desk.frames().size(), std::size_t(isBreak ? 8 : 7));
}

void TstDmx512::aBreakMayBeginWithinASlot()
{
    AsyncSender cut(bit);
    cut.low(3).idle(1).low(1).idle(2); // a capture that begins within a slot
    packet(cut, {0, 9}).idle(20);
    const Decoded desk(cut, rx);
    QCOMPARE(desk.summaries(), (Texts{"break", "mark", "start n=0 v=0", "slot n=1 v=9"}));
    QCOMPARE(desk.frame(0).first, std::int64_t(7 * 8));
    QCOMPARE(desk.frame(0).last, std::int64_t(32 * 8 - 1));

    AsyncSender reset(bit);
    reset.idle(20);
    packet(reset, {0, 9}).low(1).idle(2);
    packet(reset, {0, 8}).idle(20);
    const Decoded second(reset, rx);
    QCOMPARE(second.message(), std::string()); // such as that markers are not in the order of time
    QCOMPARE(second.summaries(), (Texts{"break", "mark", "start n=0 v=0", "slot n=1 v=9", "slot n=2 v=3 fe=1", "break",
                                        "mark", "start n=0 v=0", "slot n=1 v=8"}));
}

void TstDmx512::aMarkLastsForEightMicroseconds()
{
    for (const double time : {8.0, 7.0}) {
        AsyncSender sender(bit);
        sender.idle(20).low(us(100)).idle(us(time)).bytes({0, 2}, 2).idle(20);
        const Decoded desk(sender, rx);
        QCOMPARE(desk.frame(1).value("short"), std::string(time < 8.0 ? "1" : "(absent)"));
        QCOMPARE(desk.frame(3).summary(), std::string("slot n=1 v=2"));
    }
}

void TstDmx512::aMissingStopBitIsAFramingError()
{
    AsyncSender sender(bit);
    sender.idle(20);
    packet(sender, {0, 1}).byte(0x41, 0).low(1).idle(2).byte(3, 2).idle(20);
    const Decoded desk(sender, rx);
    QCOMPARE(desk.frame(4).summary(), std::string("slot n=2 v=65 fe=1"));
    QCOMPARE(desk.frame(5).summary(), std::string("slot n=3 v=3"));
}

void TstDmx512::aSecondStopBitIsAskedFor()
{
    AsyncSender sender(bit);
    sender.idle(20);
    packet(sender, {0, 1}).byte(0x41, 1.0).byte(0x42, 1.8).byte(0x43, 2).idle(20);
    const Decoded desk(sender, rx);
    QCOMPARE(desk.frame(4).summary(), std::string("slot n=2 v=65 fe=1"));
    QCOMPARE(desk.frame(5).summary(), std::string("slot n=3 v=66"));
    QCOMPARE(desk.frame(6).summary(), std::string("slot n=4 v=67"));
}

void TstDmx512::aPauseOfASecondIsTooLong()
{
    AsyncSender sender(bit);
    sender.idle(20);
    packet(sender, {0, 1}).idle(us(999000)).byte(2, 2).idle(us(1000100)).byte(3, 2).low(us(1000100)).idle(us(12));
    sender.byte(0, 2).idle(20);
    const Decoded desk(sender, rx);
    QCOMPARE(desk.frame(4).summary(), std::string("slot n=2 v=2"));
    QCOMPARE(desk.frame(5).summary(), std::string("slot n=3 v=3 long=1"));
    QCOMPARE(desk.frame(6).summary(), std::string("break long=1"));
}

void TstDmx512::moreThan512SlotsAreToldEach()
{
    AsyncSender sender(bit);
    sender.idle(20);
    packet(sender, std::vector<unsigned>(514, 5)).idle(20);
    const Decoded desk(sender, rx);
    QCOMPARE(desk.frames().size(), std::size_t(2 + 514));
    QCOMPARE(desk.frame(514).summary(), std::string("slot n=512 v=5"));
    QCOMPARE(desk.frame(515).summary(), std::string("slot n=513 v=5 excess=1"));
}

void TstDmx512::anInvertedLineIsLowWhileItIsIdle()
{
    AsyncSender sender(bit, false);
    sender.idle(20);
    packet(sender, {0, 0x55}).idle(20);
    QCOMPARE(Decoded(sender, "rx=3,invert=true").summaries(),
             (Texts{"break", "mark", "start n=0 v=0", "slot n=1 v=85"}));
}

void TstDmx512::aSenderMayBeTwoPercentOffAndNotSeven()
{
    for (const double off : {0.98, 1.02, 0.93, 1.07}) {
        AsyncSender sender(bit * off);
        sender.idle(20);
        std::vector<unsigned> values{0};
        for (unsigned value = 0; value < 256; ++value) {
            values.push_back(value);
        }
        packet(sender, values).idle(20);
        const auto frames = Decoded(sender, rx).frames();
        if (std::abs(off - 1.0) > 0.03) {
            const auto isWrong = [](const DecodedFrame &frame) { return frame.value("fe") == "1"; };
            QVERIFY2(std::any_of(frames.begin(), frames.end(), isWrong), std::to_string(off).c_str());
            continue;
        }
        QCOMPARE(frames.size(), std::size_t(3 + 256));
        for (std::size_t i = 0; i < 256; ++i) {
            QCOMPARE(frames[3 + i].summary(), "slot n=" + std::to_string(i + 1) + " v=" + std::to_string(i));
        }
    }
}

void TstDmx512::twoSamplesABitAreEnough()
{
    AsyncSender sender(2);
    sender.idle(20);
    std::vector<unsigned> values{0};
    for (unsigned value = 0; value < 256; ++value) {
        values.push_back(value);
    }
    packet(sender, values).idle(20);
    const auto frames = Decoded(sender, "rx=3,baudrate=1000000").frames();
    QCOMPARE(frames.size(), std::size_t(3 + 256));
    QCOMPARE(frames.back().summary(), std::string("slot n=256 v=255"));
    const Decoded coarse(sender, "rx=3,baudrate=1200000");
    QCOMPARE(coarse.message(), std::string("The sample rate is too low: 1200000 bits/s need at least 2400000 Hz"));
}

void TstDmx512::theRateIsFoundAndTold()
{
    AsyncSender sender(bit);
    sender.idle(20);
    packet(sender, {0, 1, 2, 3, 0x55, 0x77, 0x13}).idle(20);
    packet(sender, {0, 1, 2, 3, 0x55, 0x77, 0x13}).idle(20);
    const Decoded desk(sender, "rx=3,baudrate=0");
    QCOMPARE(desk.message(), std::string("Bit rate found: 250000 bits/s"));
    QCOMPARE(desk.frames().size(), std::size_t(2 * 9));
    AsyncSender quiet(bit);
    quiet.idle(100);
    QCOMPARE(Decoded(quiet, "rx=3,baudrate=0").message(),
             std::string("No bit rate can be found: the line has too few edges"));
}

void TstDmx512::theRateOfADarkStageIsThatOfTheStandard()
{
    AsyncSender sender(bit);
    sender.idle(20);
    packet(sender, std::vector<unsigned>(100, 0)).idle(20);
    packet(sender, std::vector<unsigned>(100, 0)).idle(20);
    const Decoded desk(sender, "rx=3,baudrate=0");
    QCOMPARE(desk.message(), std::string("Bit rate found: 250000 bits/s"));
    QCOMPARE(desk.frames().size(), std::size_t(2 * 102));
    QCOMPARE(desk.frame(2 * 102 - 1).summary(), std::string("slot n=99 v=0"));
    AsyncSender cut(bit);
    cut.idle(20);
    packet(cut, {0, 0x20, 0xff, 0x94}).low(us(60)); // a break that the capture cuts, not a slot
    QCOMPARE(Decoded(cut, "rx=3,baudrate=0").message(), std::string("Bit rate found: 250000 bits/s"));
}

void TstDmx512::anotherRateIsFoundWhereItFitsBetter()
{
    AsyncSender sender(2 * bit);
    sender.idle(20);
    packet(sender, {0, 1, 2, 3, 0x55, 0x77, 0x13}).idle(20);
    packet(sender, {0, 1, 2, 3, 0x55, 0x77, 0x13}).idle(20);
    const Decoded desk(sender, "rx=3,baudrate=0");
    QCOMPARE(desk.message(), std::string("Bit rate found: 125000 bits/s"));
    QCOMPARE(desk.frames().size(), std::size_t(2 * 9));
}

void TstDmx512::textsGoFromShortToLong()
{
    AsyncSender sender(bit);
    sender.idle(20);
    packet(sender, {0xcc, 0x41}).byte(0x42, 0).low(1).idle(30);
    const Decoded desk(sender, rx);
    const Channel channel(0, 3);
    QCOMPARE(desk.bubble(0, channel, DisplayBase::Decimal), (Texts{"B", "Break", "Break of 100 us"}));
    QCOMPARE(desk.frame(1).text, std::string("Mark after break of 12.0 us"));
    QCOMPARE(desk.frame(2).text, std::string("Start code 0xCC (RDM)"));
    QCOMPARE(desk.bubble(3, channel, DisplayBase::Decimal), (Texts{"65", "1: 65", "Slot 1: 65"}));
    QCOMPARE(desk.frame(4).text, std::string("Slot 2: 0x42, framing error"));
}

void TstDmx512::eachBitHasAMarker()
{
    AsyncSender sender(bit);
    sender.idle(20);
    packet(sender, {0, 0x41}).idle(30);
    const auto markers = Decoded(sender, rx).markers(3);
    QCOMPARE(markers.size(), std::size_t(1 + 2 * 8));
    QCOMPARE(markers[0].type, MarkerType::Start);
    QCOMPARE(std::int64_t(markers[1].sample), sender.starts[0] + 12);
}

void TstDmx512::whatIsTooLongTooShortOrTooMuchHasACross()
{
    AsyncSender sender(bit);
    sender.idle(20);
    packet(sender, {0, 1}).idle(us(1000100)).byte(3, 2);
    sender.low(us(1000100)).idle(us(7)).bytes(std::vector<unsigned>(514, 5), 2).idle(20);
    const Decoded desk(sender, rx);
    QCOMPARE(desk.message(), std::string()); // such as that markers are not in the order of time
    std::vector<std::int64_t> crosses;
    for (const Marker &marker : desk.markers(3)) {
        if (marker.type == MarkerType::ErrorX) {
            crosses.push_back(std::int64_t(marker.sample));
        }
    }
    const std::vector<std::int64_t> expected{sender.starts[2] - 1,    // a pause
                                             desk.frame(5).last,      // a break
                                             sender.starts[3] - 1,    // the mark behind it
                                             sender.starts[3 + 513]}; // a slot behind the last
    QCOMPARE(crosses, expected);
}

void TstDmx512::settingsAreChecked()
{
    DecodeDesk desk(std::make_unique<DmxAnalyzer>());
    QVERIFY(!desk.edit({{"rx", "none"}}).empty());
    QCOMPARE(desk.edit({{"rx", "1"}, {"invert", "true"}, {"baudrate", "0"}}), std::string());
    QVERIFY(!desk.edit({{"baudrate", "-1"}}).empty());
}

void TstDmx512::exportsHaveAllSlots()
{
    AsyncSender sender(bit);
    sender.idle(20);
    packet(sender, {0, 0x41, 2}).idle(30);
    packet(sender, {0x17, 9}).idle(30);
    const Decoded desk(sender, rx);
    QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("out")).toStdString();
    const std::string csv = decoderChecks::exported(desk, path + ".csv", 0);
    QVERIFY2(csv.find("slot,1,65,,,,,Slot 1: 0x41") != std::string::npos, csv.c_str());
    const std::string packets = decoderChecks::exported(desk, path + ".csv", DmxSettings::Packets);
    QCOMPARE(packets.substr(0, 22), std::string("time,start code,slots\n").substr(0, 22));
    QVERIFY2(packets.find("0.0000800,0,65,2\n") != std::string::npos, packets.c_str());
    QVERIFY2(packets.find(",23,9\n") != std::string::npos, packets.c_str());
    const std::string text = decoderChecks::exported(desk, path + ".txt", DmxSettings::Packets);
    QVERIFY2(text.starts_with("0.0000800 0x00 0x41 0x02\n") && text.ends_with(" 0x17 0x09\n"), text.c_str());
}

void TstDmx512::aCutSlotIsNotShown()
{
    AsyncSender sender(bit);
    sender.idle(5);
    packet(sender, {0, 0x41, 2}).idle(30);
    packet(sender, {0x17, 9}).idle(30);
    const auto whole = Decoded(sender, rx).frames();
    QCOMPARE(whole.size(), std::size_t(5 + 4));
    for (std::int64_t length = 1; length < sender.now(); ++length) {
        const Decoded desk(sender, rx, length);
        QCOMPARE(decoderChecks::faultOf(desk, length), std::string());
        QCOMPARE(decoderChecks::faultOfCut(desk.frames(), whole), std::string());
    }
}

void TstDmx512::theSimulationIsDecodedAsItWasSent_data()
{
    QTest::addColumn<QString>("settings");
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("block");
    QTest::newRow("standard") << "" << 1000000 << 100000;
    QTest::newRow("inverted, small blocks") << ",invert=true" << 2000000 << 777;
    QTest::newRow("found") << ",baudrate=0" << 12000000 << 65536;
    QTest::newRow("slow") << ",baudrate=9600" << 100000 << 4096;
}

void TstDmx512::theSimulationIsDecodedAsItWasSent()
{
    QFETCH(QString, settings);
    QFETCH(int, rate);
    QFETCH(int, block);
    DecodeDesk desk(std::make_unique<DmxAnalyzer>(), "rx=0" + settings.toStdString());
    const bool isSlow = settings.contains(QLatin1String("9600"));
    const auto capture = desk.simulate(rate, rate / (isSlow ? std::int64_t(1) : 5) * (isSlow ? 5 : 1), block);
    QCOMPARE(decoderChecks::faultOf(desk.run(*capture), capture->device().smpCount), std::string());
    const auto frames = desk.frames();
    QVERIFY(frames.size() > 1500);
    std::size_t at = 0;
    for (std::uint32_t number = 0; at < frames.size(); ++number) {
        const DmxSimulated sent = DmxSimulated::of(number);
        QCOMPARE(frames[at++].kind, std::string("break"));
        for (std::uint32_t slot = 0; slot <= sent.slotCount + 1 && at < frames.size(); ++slot) {
            const DecodedFrame &frame = frames[at++];
            if (slot == 0) {
                QCOMPARE(frame.summary(), std::string(sent.shortMark ? "mark short=1" : "mark"));
            } else if (slot == 1) {
                QCOMPARE(frame.summary(), "start n=0 v=" + std::to_string(sent.startCode));
            } else {
                const std::uint32_t n = slot - 1;
                QCOMPARE(frame.summary(), "slot n=" + std::to_string(n) +
                                              " v=" + std::to_string(DmxSimulated::valueOf(number, n)) +
                                              (n == sent.wrongSlot ? " fe=1" : "") + (n > 512 ? " excess=1" : ""));
            }
        }
    }
}

void TstDmx512::randomEdgesGiveFramesInOrder()
{
    constexpr std::int64_t length = 200000;
    for (const std::int64_t mean : {1, 4, 10, 60, 300}) {
        for (const char *settings : {"rx=3", "rx=3,baudrate=0", "rx=3,invert=true,baudrate=1000000"}) {
            TestCapture capture(sampleRate, length);
            capture.channel(3, true, decoderChecks::randomEdges(std::uint32_t(mean), mean, length));
            DecodeDesk desk(std::make_unique<DmxAnalyzer>(), settings);
            desk.run(capture);
            if (desk.analyzer->GetDecodeStatus() != DecodeStatus::Failed) {
                QCOMPARE(decoderChecks::faultOf(desk, length), std::string());
            }
        }
    }
}

QTEST_GUILESS_MAIN(TstDmx512)
#include "tst_Dmx512.moc"
