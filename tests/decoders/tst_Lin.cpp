#include "AsyncSender.h"
#include "DecoderChecks.h"
#include "LinAnalyzer.h"
#include "LinSimulation.h"
#include "PcapFields.h"

#include <QtTest>

#include <string>
#include <vector>

using Texts = std::vector<std::string>;

namespace {

constexpr std::int64_t sampleRate = 1000000;
constexpr double bit = 50; ///< samples: 20000 bits/s
const std::string rate = "rx=3,baudrate=20000";

class Decoded : public DecodedLine {
public:
    Decoded(const AsyncSender &sender, const std::string &settings, std::int64_t length = -1)
        : DecodedLine(std::make_unique<LinAnalyzer>(), sender.line(), settings, sampleRate, length)
    {}
};

/// Break, delimiter, sync field, identifier.
void header(AsyncSender &sender, unsigned pid, double breakBits = 13, double delimiter = 1)
{
    sender.low(breakBits).idle(delimiter).byte(0x55).byte(pid);
}

AsyncSender frameOf(unsigned pid, const std::vector<unsigned> &answer)
{
    AsyncSender sender(bit);
    sender.idle(20);
    header(sender, pid);
    sender.bytes(answer).idle(60);
    return sender;
}

} // namespace

class TstLin : public QObject {
    Q_OBJECT
private slots:
    void aFrameReachesFromTheBreakToTheChecksum();
    void theAnswerHasOneToEightBytes();
    void bothChecksumsAreToldAndTheVersionTellsTheRightOne();
    void aWrongParityOfTheIdentifierIsTold();
    void aHeaderWithoutAnswerIsAFrame();
    void anAnswerOfOneByteIsIncomplete();
    void aPauseEndsTheAnswerOnlyWhenItIsTooLong();
    void aFramingErrorEndsTheAnswer();
    void aBreakEndsTheAnswer();
    void aBreakMayBeginWithinACharacter();
    void aBreakHasElevenBits_data();
    void aBreakHasElevenBits();
    void aSenderMayBeFourteenPercentOff_data();
    void aSenderMayBeFourteenPercentOff();
    void aBreakWithoutHeaderIsTold();
    void aLonePulseIsAWakeUpSignal();
    void spikesAreNotSeen();
    void aLongerSpikeBreaksTheHeader();
    void theRateIsFoundAndTold_data();
    void theRateIsFoundAndTold();
    void withoutHeadersNoRateIsFound();
    void textsGoFromShortToLong();
    void diagnosticFramesAreNamed();
    void eachBitHasAMarker();
    void errorsHaveACrossWhereTheyAre_data();
    void errorsHaveACrossWhereTheyAre();
    void settingsAreChecked();
    void exportsHaveAllFrames();
    void thePcapFileHasItsStructure();
    void thePcapFileCanBeReadByOthers();
    void aCutFrameIsNotShown();
    void theSimulationIsDecodedAsItWasSent_data();
    void theSimulationIsDecodedAsItWasSent();
    void randomEdgesGiveFramesInOrder();
};

void TstLin::aFrameReachesFromTheBreakToTheChecksum()
{
    // LIN 2.2A, 2.8: the checksum over 0x4A, 0x55, 0x93, 0xE5 is 0xE6.
    const AsyncSender sender = frameOf(0x4a, {0x55, 0x93, 0xe5, 0xe6});
    const Decoded desk(sender, rate);
    QCOMPARE(desk.summaries(), Texts{"frame id=10 pid=74 par=0 data=5593E5 ck=230 enh=1 cls=0"});
    QCOMPARE(desk.frame(0).first, std::int64_t(20 * 50));
    QCOMPARE(desk.frame(0).last, sender.starts.back() + 499);
}

void TstLin::theAnswerHasOneToEightBytes()
{
    for (unsigned count = 1; count <= 8; ++count) {
        std::vector<unsigned> bytes(count, 0x11);
        std::vector<std::uint8_t> data(count, 0x11);
        const std::uint8_t pid = LinFrame::protectedId(0x23);
        bytes.push_back(LinFrame::checksumOf(LinChecksum::Enhanced, pid, data));
        const Decoded desk(frameOf(pid, bytes), rate);
        QCOMPARE(desk.frames().size(), std::size_t(1));
        QCOMPARE(desk.frame(0).value("data").size(), std::size_t(2 * count));
        QCOMPARE(desk.frame(0).value("enh"), std::string("1"));
        QCOMPARE(desk.frame(0).value("par"), std::string("1"));
    }
}

void TstLin::bothChecksumsAreToldAndTheVersionTellsTheRightOne()
{
    const AsyncSender classic = frameOf(0xa3, {0x11, 0x22, 0xcc});
    const AsyncSender enhanced = frameOf(0xa3, {0x11, 0x22, 0x29});
    const auto isWrong = [](const AsyncSender &sender, const std::string &settings) {
        return Decoded(sender, rate + settings).frame(0).text.find("checksum error") != std::string::npos;
    };
    QCOMPARE(Decoded(classic, rate).frame(0).value("cls"), std::string("1"));
    QCOMPARE(Decoded(classic, rate).frame(0).value("enh"), std::string("0"));
    QVERIFY(isWrong(classic, ",version=2"));
    QVERIFY(!isWrong(classic, ",version=1"));
    QVERIFY(!isWrong(classic, ",checksum=classic"));
    QVERIFY(!isWrong(enhanced, ",version=2"));
    QVERIFY(isWrong(enhanced, ",version=1"));
    QVERIFY(!isWrong(enhanced, ",version=1,checksum=enhanced"));
    const AsyncSender diagnostic = frameOf(0x3c, {0x7f, 0x80}); // classic in all versions
    QVERIFY(!isWrong(diagnostic, ",version=2"));
}

void TstLin::aWrongParityOfTheIdentifierIsTold()
{
    const Decoded desk(frameOf(0x63, {0x11, 0x22, 0x69}), rate);
    QCOMPARE(desk.frame(0).value("id"), std::string("35"));
    QCOMPARE(desk.frame(0).value("par"), std::string("0"));
    QVERIFY(desk.frame(0).text.find("parity error") != std::string::npos);
}

void TstLin::aHeaderWithoutAnswerIsAFrame()
{
    const AsyncSender sender = frameOf(0xa3, {});
    const Decoded desk(sender, rate);
    QCOMPARE(desk.summaries(), Texts{"frame id=35 pid=163 par=1 data="});
    QCOMPARE(desk.frame(0).last, sender.starts.back() + 499);
    QCOMPARE(desk.frame(0).text, std::string("ID 0x23, no response"));
}

void TstLin::anAnswerOfOneByteIsIncomplete()
{
    const Decoded desk(frameOf(0xa3, {0x11}), rate);
    QCOMPARE(desk.summaries(), Texts{"frame id=35 pid=163 par=1 data=11"});
    QCOMPARE(desk.frame(0).text, std::string("ID 0x23, incomplete response: 0x11"));
}

void TstLin::aPauseEndsTheAnswerOnlyWhenItIsTooLong()
{
    for (const double pause : {0.0, 10.0, 35.0, 38.0, 80.0}) {
        AsyncSender sender(bit);
        sender.idle(20);
        header(sender, 0xa3);
        sender.byte(0x11).byte(0x22).idle(pause).byte(0x29).idle(60);
        const Texts got = Decoded(sender, rate).summaries();
        QCOMPARE(got[0].find("ck=41") != std::string::npos, pause < 36.0);
    }
}

void TstLin::aFramingErrorEndsTheAnswer()
{
    AsyncSender sender(bit);
    sender.idle(20);
    header(sender, 0xa3);
    sender.byte(0x11).byte(0x22).byte(0x80, 0).low(1).idle(4);
    header(sender, 0xa3);
    sender.bytes({0x11, 0x22, 0x29}).idle(60);
    QCOMPARE(Decoded(sender, rate).summaries(), (Texts{"frame id=35 pid=163 par=1 data=11 ck=34 enh=0 cls=0 fe=1",
                                                       "frame id=35 pid=163 par=1 data=1122 ck=41 enh=1 cls=0"}));
}

void TstLin::aBreakEndsTheAnswer()
{
    AsyncSender sender(bit);
    sender.idle(20);
    header(sender, 0xa3);
    header(sender, 0xa3);
    sender.bytes({0x11, 0x22, 0x29});
    header(sender, 0xc1, 26, 8);
    sender.bytes({0x11, 0x11, 0x1c}).idle(60);
    QCOMPARE(Decoded(sender, rate).summaries(),
             (Texts{"frame id=35 pid=163 par=1 data=", "frame id=35 pid=163 par=1 data=1122 ck=41 enh=1 cls=0",
                    "frame id=1 pid=193 par=1 data=1111 ck=28 enh=1 cls=0"}));
}

void TstLin::aBreakMayBeginWithinACharacter()
{
    AsyncSender sender(bit);
    sender.idle(20);
    header(sender, 0xa3);
    sender.byte(0x11).low(1).idle(3); // the master does not wait for the answer's end
    header(sender, 0xa3);
    sender.bytes({0x11, 0x22, 0x29}).idle(60);
    sender.low(13).idle(1).byte(0x55).low(2).idle(4); // nor for that of its identifier
    const std::int64_t broken = sender.now();
    header(sender, 0xc1);
    sender.bytes({0x11, 0x11, 0x1c}).idle(60);
    const Decoded desk(sender, rate);
    QCOMPARE(desk.summaries(),
             (Texts{"frame id=35 pid=163 par=1 data=11 fe=1", "frame id=35 pid=163 par=1 data=1122 ck=41 enh=1 cls=0",
                    "frame id=30 pid=30 par=0 data= fe=1", "frame id=1 pid=193 par=1 data=1111 ck=28 enh=1 cls=0"}));
    QCOMPARE(desk.message(), std::string()); // such as that markers are not in the order of time
    QCOMPARE(desk.frame(2).last, broken - 1);
    QCOMPARE(desk.frame(3).first, broken);
}

void TstLin::aBreakHasElevenBits_data()
{
    QTest::addColumn<double>("bits");
    QTest::addColumn<bool>("isBreak");
    QTest::newRow("too short") << 10.9 << false;
    QTest::newRow("just long enough") << 11.0 << true;
    QTest::newRow("as a master sends it") << 13.0 << true;
    QTest::newRow("long") << 40.0 << true;
}

void TstLin::aBreakHasElevenBits()
{
    QFETCH(double, bits);
    QFETCH(bool, isBreak);
    AsyncSender sender(bit);
    sender.idle(20);
    header(sender, 0xa3, bits);
    sender.bytes({0x11, 0x22, 0x29}).idle(60);
    QCOMPARE(Decoded(sender, rate).frames().size(), std::size_t(isBreak ? 1 : 0));
}

void TstLin::aSenderMayBeFourteenPercentOff_data()
{
    QTest::addColumn<double>("off");
    QTest::addColumn<bool>("isRead");
    QTest::newRow("2 % slow") << 1.02 << true;
    QTest::newRow("14 % slow") << 1.14 << true;
    QTest::newRow("14 % fast") << 0.86 << true;
    QTest::newRow("17 % slow") << 1.17 << false;
    QTest::newRow("17 % fast") << 0.83 << false;
}

void TstLin::aSenderMayBeFourteenPercentOff()
{
    QFETCH(double, off);
    QFETCH(bool, isRead);
    AsyncSender sender(bit * off);
    sender.idle(20);
    header(sender, 0xa3, 14);
    sender.bytes({0x11, 0x22, 0x29}).idle(80);
    const Texts got = Decoded(sender, rate).summaries();
    QCOMPARE(got == Texts{"frame id=35 pid=163 par=1 data=1122 ck=41 enh=1 cls=0"}, isRead);
}

void TstLin::aBreakWithoutHeaderIsTold()
{
    AsyncSender sender(bit);
    sender.idle(20).low(14).idle(60).low(14).idle(1).byte(0x55).idle(60).low(14).idle(1).byte(0x54).idle(60);
    const Decoded desk(sender, rate);
    QCOMPARE(desk.summaries(), Texts(3, "break data="));
    QCOMPARE(desk.frame(0).text, std::string("Break without header: no sync field"));
    QCOMPARE(desk.frame(1).text, std::string("Break without header: no identifier"));
    QCOMPARE(desk.frame(0).first, std::int64_t(20 * 50));
    QCOMPARE(desk.frame(0).last, std::int64_t(34 * 50 - 1));
}

void TstLin::aLonePulseIsAWakeUpSignal()
{
    AsyncSender sender(bit);
    sender.idle(40).low(5).idle(60).low(2.8).idle(60).byte(0xaa).byte(0xaa).idle(60);
    header(sender, 0xa3);
    sender.bytes({0x11, 0x22, 0x29}).idle(60);
    const Decoded desk(sender, rate);
    QCOMPARE(desk.summaries(), (Texts{"wakeup", "frame id=35 pid=163 par=1 data=1122 ck=41 enh=1 cls=0"}));
    QCOMPARE(desk.frame(0).text, std::string("Wake-up signal of 250 us"));
}

void TstLin::spikesAreNotSeen()
{
    const AsyncSender sender = frameOf(0x4a, {0x55, 0x93, 0xe5, 0xe6});
    const Texts whole = Decoded(sender, rate).summaries();
    const EdgeLine spiked = decoderChecks::withSpikes(sender.line(), 3); // a sixteenth of a bit
    const DecodedLine desk(std::make_unique<LinAnalyzer>(), spiked, rate, sampleRate);
    QCOMPARE(desk.summaries(), whole);
    QCOMPARE(desk.frame(0).first, std::int64_t(20 * 50));
}

void TstLin::aLongerSpikeBreaksTheHeader()
{
    for (const int spike : {5, 7}) { // samples; an eighth of a bit has 6
        AsyncSender sender(bit);
        const double bits = spike / bit;
        sender.idle(20).low(6).idle(bits).low(7 - bits).idle(1).byte(0x55).byte(0x4a);
        sender.bytes({0x55, 0x93, 0xe5, 0xe6}).idle(60);
        QCOMPARE(Decoded(sender, rate).frames().size(), std::size_t(spike == 5 ? 1 : 0));
    }
}

void TstLin::theRateIsFoundAndTold_data()
{
    QTest::addColumn<double>("rate");
    QTest::addColumn<QString>("told");
    QTest::newRow("20000") << 20000.0 << "20000";
    QTest::newRow("19200, a little slow") << 19000.0 << "19200";
    QTest::newRow("10400") << 10417.0 << "10400";
    QTest::newRow("2400") << 2400.0 << "2400";
    QTest::newRow("none of the usual") << 12500.0 << "12500";
}

void TstLin::theRateIsFoundAndTold()
{
    QFETCH(double, rate);
    QFETCH(QString, told);
    AsyncSender sender(double(sampleRate) / rate);
    sender.idle(20).byte(0x12).byte(0x55).idle(5);
    for (int i = 0; i < 3; ++i) {
        header(sender, 0xa3);
        sender.bytes({0x11, 0x22, 0x29}).idle(40);
    }
    const Decoded desk(sender, "rx=3,baudrate=0");
    QCOMPARE(desk.message(), "Bit rate found: " + told.toStdString() + " bits/s");
    QCOMPARE(desk.summaries(), Texts(3, "frame id=35 pid=163 par=1 data=1122 ck=41 enh=1 cls=0"));
}

void TstLin::withoutHeadersNoRateIsFound()
{
    AsyncSender sender(bit);
    sender.idle(20).bytes({0x55, 0x55, 0x12, 0x00}).idle(60);
    const Decoded desk(sender, "rx=3,baudrate=0");
    QCOMPARE(desk.analyzer->GetDecodeStatus(), DecodeStatus::Failed);
    QCOMPARE(desk.message(), std::string("No bit rate can be found: no break is followed by a sync field"));
}

void TstLin::textsGoFromShortToLong()
{
    const Decoded desk(frameOf(0xa3, {0x11, 0x22, 0x29}), rate);
    QCOMPARE(desk.bubble(0, Channel(0, 3), DisplayBase::Hexadecimal),
             (Texts{"F", "0x23", "ID 0x23", "ID 0x23: 0x11 0x22", "ID 0x23, enhanced checksum 0x29: 0x11 0x22"}));
    const Decoded wrong(frameOf(0xa3, {0x11, 0x22, 0x2a}), rate);
    QCOMPARE(wrong.bubble(0, Channel(0, 3), DisplayBase::Decimal).front(), std::string("!"));
    QCOMPARE(wrong.frame(0).text, std::string("ID 0x23, checksum error, wrong checksum 0x2A: 0x11 0x22"));
}

void TstLin::diagnosticFramesAreNamed()
{
    const auto text = [](unsigned pid, const std::vector<unsigned> &answer) {
        return Decoded(frameOf(pid, answer), rate).frame(0).text;
    };
    QVERIFY(text(0x3c, {0x00, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0x00}).find("go to sleep") !=
            std::string::npos);
    QVERIFY(text(0x3c, {0x7f, 0x06, 0xb2, 0x00, 0xff}).find("master request, read by identifier") != std::string::npos);
    QVERIFY(text(0x7d, {0x7f, 0x06, 0xf2, 0x00, 0xff}).find("slave response, read by identifier") != std::string::npos);
    QVERIFY(text(0x7d, {0x7f, 0x03, 0x7f, 0xb2, 0x12}).find("slave response, negative") != std::string::npos);
}

void TstLin::eachBitHasAMarker()
{
    const AsyncSender sender = frameOf(0xa3, {0x11, 0x22, 0x29});
    const auto markers = Decoded(sender, rate).markers(3);
    QCOMPARE(markers.size(), std::size_t(1 + 4 * 8));
    QCOMPARE(markers[0].type, MarkerType::Start);
    QCOMPARE(std::int64_t(markers[1].sample), sender.starts[1] + 75);
    QCOMPARE(markers[1].type, MarkerType::Dot);
}

void TstLin::errorsHaveACrossWhereTheyAre_data()
{
    QTest::addColumn<unsigned>("pid");
    QTest::addColumn<std::vector<unsigned>>("answer");
    QTest::addColumn<std::vector<std::size_t>>("wrong"); // characters from the sync field on
    const auto row = [](const char *name, unsigned pid, std::vector<unsigned> answer, std::vector<std::size_t> wrong) {
        QTest::newRow(name) << pid << std::move(answer) << std::move(wrong);
    };
    row("none", 0xa3, {0x11, 0x22, 0x29}, {});
    row("checksum", 0xa3, {0x11, 0x22, 0x28}, {4});
    row("incomplete", 0xa3, {0x11}, {2});
    row("no answer", 0xa3, {}, {1});
    row("parity", 0xe3, {0x11, 0x22, 0xe8}, {1});
    row("parity and checksum", 0xe3, {0x11, 0x22, 0x29}, {1, 4});
    row("parity, no answer", 0xe3, {}, {1});
}

void TstLin::errorsHaveACrossWhereTheyAre()
{
    QFETCH(unsigned, pid);
    QFETCH(std::vector<unsigned>, answer);
    QFETCH(std::vector<std::size_t>, wrong);
    const AsyncSender sender = frameOf(pid, answer);
    const Decoded desk(sender, rate);
    std::vector<std::int64_t> expected;
    for (const std::size_t character : wrong) {
        expected.push_back(sender.starts[character] + 499);
    }
    std::vector<std::int64_t> crosses;
    for (const auto &marker : desk.markers(3)) {
        if (marker.type == MarkerType::ErrorX) {
            crosses.push_back(std::int64_t(marker.sample));
        }
    }
    QCOMPARE(crosses, expected);
    QCOMPARE(desk.message(), std::string()); // such as that markers are not in the order of time
}

void TstLin::settingsAreChecked()
{
    DecodeDesk desk(std::make_unique<LinAnalyzer>());
    QVERIFY(!desk.edit({{"rx", "none"}}).empty());
    QCOMPARE(desk.edit({{"rx", "1"}, {"version", "1"}, {"checksum", "enhanced"}, {"baudrate", "0"}}), std::string());
    QVERIFY(!desk.edit({{"version", "3"}}).empty());
    QVERIFY(!desk.edit({{"baudrate", "-1"}}).empty());
    AsyncSender sender(2);
    sender.idle(20);
    header(sender, 0xa3);
    sender.idle(60);
    const Decoded coarse(sender, "rx=3,baudrate=500000");
    QCOMPARE(coarse.message(), std::string("The sample rate is too low: 500000 bits/s need at least 1500000 Hz"));
}

void TstLin::exportsHaveAllFrames()
{
    const Decoded desk(frameOf(0xa3, {0x11, 0x22, 0x29}), rate);
    QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("out")).toStdString();
    const std::string csv = decoderChecks::exported(desk, path + ".csv", 0);
    QVERIFY2(csv.find("frame,35,163,1,1122,41,1,0,") != std::string::npos, csv.c_str());
    const std::string text = decoderChecks::exported(desk, path + ".txt", 0);
    QVERIFY2(text.find("ID 0x23, enhanced checksum 0x29: 0x11 0x22") != std::string::npos, text.c_str());
}

namespace {

/// A whole frame, then a header with a wrong parity bit that nobody answers.
AsyncSender oneAnswerOfTwo()
{
    AsyncSender sender(bit);
    sender.idle(20);
    header(sender, 0xa3);
    sender.bytes({0x11, 0x22, 0x29}).idle(60);
    header(sender, 0xe3);
    sender.idle(60);
    return sender;
}

} // namespace

void TstLin::thePcapFileHasItsStructure()
{
    const Decoded desk(oneAnswerOfTwo(), rate);
    QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("out.pcap")).toStdString();
    const std::string file = decoderChecks::exported(desk, path, LinSettings::Pcap);
    QCOMPARE(file.size(), std::size_t(24 + 16 + 10 + 16 + 8));
    QCOMPARE(file.substr(0, 4), std::string("\x4d\x3c\xb2\xa1"));
    QCOMPARE(file.substr(20, 4), std::string("\xd4\x00\x00\x00", 4)); // link type 212
    QCOMPARE(file.substr(28, 4), std::string("\x40\x42\x0f\x00", 4)); // 20 bits of 50 us
    QCOMPARE(file.substr(40, 10), std::string("\x01\x00\x00\x00\x22\xa3\x29\x00\x11\x22", 10));
    QCOMPARE(file.substr(66, 8), std::string("\x01\x00\x00\x00\x00\xe3\x00\x05", 8)); // no response, parity
}

void TstLin::thePcapFileCanBeReadByOthers()
{
    if (pcapFields::reader().isEmpty()) {
        QSKIP("tshark is not installed");
    }
    const Decoded desk(oneAnswerOfTwo(), rate);
    QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("out.pcap")).toStdString();
    const std::string file = decoderChecks::exported(desk, path, LinSettings::Pcap);
    const QStringList names = {QStringLiteral("lin.frame_id"), QStringLiteral("lin.length"),
                               QStringLiteral("lin.errors"), QStringLiteral("lin.checksum"),
                               QStringLiteral("data.data")};
    const QStringList expected = {QStringLiteral("0x23\t2\t0x00\t0x29\t1122"), QStringLiteral("0x23\t0\t0x05\t0x00\t")};
    QCOMPARE(pcapFields::read(file, names), expected);
}

void TstLin::aCutFrameIsNotShown()
{
    AsyncSender sender(8);
    sender.idle(20);
    header(sender, 0xa3);
    sender.bytes({0x11, 0x22, 0x29}).idle(60).low(14).idle(60);
    header(sender, 0xc1);
    sender.bytes({0x11, 0x11, 0x1c}).idle(80);
    const std::string settings = "rx=3,baudrate=125000";
    const auto whole = Decoded(sender, settings).frames();
    QCOMPARE(whole.size(), std::size_t(3));
    for (std::int64_t length = 1; length < sender.now(); ++length) {
        const Decoded desk(sender, settings, length);
        QCOMPARE(decoderChecks::faultOf(desk, length), std::string());
        QCOMPARE(decoderChecks::faultOfCut(desk.frames(), whole), std::string());
    }
}

void TstLin::theSimulationIsDecodedAsItWasSent_data()
{
    QTest::addColumn<QString>("settings");
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("block");
    QTest::newRow("19200") << "baudrate=19200" << 1000000 << 100000;
    QTest::newRow("found, small blocks") << "baudrate=0" << 400000 << 77;
    QTest::newRow("slow, version 1") << "baudrate=2400,version=1" << 20000 << 4096;
    QTest::newRow("faster than any bus") << "baudrate=250000,checksum=enhanced" << 1000000 << 65536;
}

void TstLin::theSimulationIsDecodedAsItWasSent()
{
    QFETCH(QString, settings);
    QFETCH(int, rate);
    QFETCH(int, block);
    DecodeDesk desk(std::make_unique<LinAnalyzer>(), "rx=0," + settings.toStdString());
    const auto capture =
        desk.simulate(rate, rate * std::int64_t(settings.contains(QLatin1String("2400")) ? 12 : 4), block);
    QCOMPARE(decoderChecks::faultOf(desk.run(*capture), capture->device().smpCount), std::string());
    const auto frames = desk.frames();
    QVERIFY(frames.size() > 72); // all mishaps
    LinSettings own;
    own.LoadText(("rx=0," + settings.toStdString()).c_str());
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const LinSimulated sent = LinSimulated::of(std::uint32_t(i), own);
        const bool isWakeUp = sent.mishap == LinMishap::WakeUp && !settings.contains(QLatin1String("250000"));
        const bool isBreak = sent.mishap == LinMishap::NoIdentifier || sent.mishap == LinMishap::NoSync;
        QCOMPARE(frames[i].kind, std::string(isWakeUp ? "wakeup" : isBreak ? "break" : "frame"));
        if (frames[i].kind != "frame") {
            continue;
        }
        std::string data;
        for (const std::uint8_t byte : sent.frame.data()) {
            data += QString::asprintf("%02X", unsigned(byte)).toStdString();
        }
        QCOMPARE(frames[i].value("data"), data);
        QCOMPARE(frames[i].value("pid"), std::to_string(sent.frame.pid));
        QCOMPARE(frames[i].value("par"), std::string(sent.mishap == LinMishap::WrongParity ? "0" : "1"));
        const bool isRight = frames[i].text.find("checksum error") == std::string::npos;
        QCOMPARE(frames[i].value("fe"), std::string(sent.frame.framingError ? "1" : "(absent)"));
        const bool isWrongOnPurpose = sent.mishap == LinMishap::WrongChecksum;
        QVERIFY2(isRight != isWrongOnPurpose || sent.frame.framingError, frames[i].text.c_str());
    }
}

void TstLin::randomEdgesGiveFramesInOrder()
{
    constexpr std::int64_t length = 200000;
    for (const std::int64_t mean : {1, 5, 30, 60, 300, 2000}) {
        for (const char *settings : {"rx=3,baudrate=20000", "rx=3,baudrate=0", "rx=3,baudrate=300000"}) {
            TestCapture capture(sampleRate, length);
            capture.channel(3, true, decoderChecks::randomEdges(std::uint32_t(mean), mean, length));
            DecodeDesk desk(std::make_unique<LinAnalyzer>(), settings);
            desk.run(capture);
            if (desk.analyzer->GetDecodeStatus() != DecodeStatus::Failed) {
                QCOMPARE(decoderChecks::faultOf(desk, length), std::string());
            }
        }
    }
}

QTEST_GUILESS_MAIN(TstLin)
#include "tst_Lin.moc"
