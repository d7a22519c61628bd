#include "CecAnalyzer.h"
#include "DecoderChecks.h"
#include "LinePart.h"

#include <QtTest>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

using Texts = std::vector<std::string>;

namespace {

constexpr std::int64_t sampleRate = 100000; ///< 10 us a sample
constexpr std::uint32_t channel = 4;
constexpr const char *line = "cec=4";

/// A line by the figures of the CEC supplement, 5.2; times in tens of microseconds.
class Wire {
public:
    Wire() : m_line(true) { wait(500); }
    Wire &wait(std::int64_t time)
    {
        m_line.hold(time);
        return *this;
    }
    Wire &pulse(std::int64_t low, std::int64_t length)
    {
        falls.push_back(m_line.position());
        m_line.set(false).hold(low).set(true).hold(length - low);
        return *this;
    }
    Wire &start(std::int64_t low = 370, std::int64_t length = 450) { return pulse(low, length); }
    Wire &bit(bool value) { return pulse(value ? 60 : 150, 240); }
    Wire &block(unsigned value, bool isLast, bool acknowledge = false)
    {
        for (unsigned i = 8; i > 0; --i) {
            bit((value >> (i - 1) & 1U) != 0);
        }
        return bit(isLast).bit(acknowledge);
    }
    Wire &message(std::initializer_list<unsigned> blocks, bool acknowledge = false)
    {
        start();
        std::size_t left = blocks.size();
        for (const unsigned value : blocks) {
            block(value, --left == 0, acknowledge);
        }
        return wait(1200);
    }
    [[nodiscard]] std::int64_t now() const { return m_line.position(); }
    [[nodiscard]] const EdgeLine &edges() const { return m_line; }

    std::vector<std::int64_t> falls;

private:
    EdgeLine m_line;
};

/// A run on what was sent.
class Decoded : public DecodeDesk {
public:
    explicit Decoded(const Wire &wire, std::int64_t length = -1)
        : DecodeDesk(std::make_unique<CecAnalyzer>(), line), m_capture(sampleRate, length < 0 ? wire.now() : length)
    {
        m_capture.channel(channel, wire.edges());
        run(m_capture);
    }

private:
    TestCapture m_capture;
};

/// Messages only, as kind, blocks and acknowledgements.
Texts messages(const DecodeDesk &desk)
{
    Texts all;
    for (const DecodedFrame &frame : desk.frames()) {
        if (frame.kind == "frame" || frame.kind == "cut") {
            all.push_back(frame.kind + " " + frame.value("v") + " " + frame.value("ack"));
        }
    }
    return all;
}

std::string firstText(const Wire &wire)
{
    return Decoded(wire).frame(0).text;
}

} // namespace

class TstCec : public QObject {
    Q_OBJECT
private slots:
    void eachElementBeginsAndEndsAsOnTheWire();
    void aStartBitHasItsLimits();
    void aBitHasItsLimits();
    void acknowledgementsAreTheOtherWayRoundForAll();
    void aMessageMayEndBehindARefusedBlock();
    void aMessageThatEndsBeforeItsLastBlockIsCut();
    void anErrorThatAFollowerTellsCutsTheMessage();
    void aStartCutsTheMessageBefore();
    void aBitOfDoubtfulLengthIsMarked();
    void aSpikeWithinABitIsNotSeen();
    void seventeenBlocksAreTooMany();
    void messagesHaveTheirNames_data();
    void messagesHaveTheirNames();
    void aCaptureMayBeginAnywhere();
    void aCutMessageIsNotShown();
    void bubblesGoFromShortToLong();
    void markersStandWhereBitsAreLookedAt();
    void aBlockThatIsNotTakenHasACross();
    void exportsHaveALineAMessage();
    void settingsAreChecked();
    void theSimulationIsDecodedAsItWasSent_data();
    void theSimulationIsDecodedAsItWasSent();
    void positionsBehindFourGigasamplesAreExact();
    void randomEdgesGiveFramesInOrder();
};

void TstCec::eachElementBeginsAndEndsAsOnTheWire()
{
    Wire wire;
    wire.message({0x05, 0xc4});
    const Decoded desk(wire);
    QCOMPARE(desk.summaries(),
             (Texts{"frame v=05C4 ack=11", "start", "block v=5 eom=0 ack=1", "block v=196 eom=1 ack=1"}));
    QCOMPARE(desk.frame(0).first, wire.falls[0]);
    QCOMPARE(desk.frame(0).last, wire.falls[20] + 240 - 1);
    QCOMPARE(desk.frame(1).first, wire.falls[0]);
    QCOMPARE(desk.frame(1).last, wire.falls[1] - 1);
    QCOMPARE(desk.frame(2).first, wire.falls[1]);
    QCOMPARE(desk.frame(2).last, wire.falls[11] - 1);
    QCOMPARE(desk.frame(3).first, wire.falls[11]);
    QCOMPARE(desk.frame(3).last, wire.falls[20] + 240 - 1);
}

void TstCec::aStartBitHasItsLimits()
{
    // 0.2 ms more than a sender may be off at either side.
    for (const int low : {329, 330, 370, 410, 411}) {
        Wire wire;
        wire.start(low, 450).block(0x45, true);
        QCOMPARE(messages(Decoded(wire)).size(), std::size_t(low >= 330 && low <= 410 ? 1 : 0));
    }
    for (const int length : {409, 410, 490, 491}) {
        Wire wire;
        wire.start(370, length).block(0x45, true);
        QCOMPARE(messages(Decoded(wire)).size(), std::size_t(length >= 410 && length <= 490 ? 1 : 0));
    }
}

void TstCec::aBitHasItsLimits()
{
    for (const int low : {40, 80, 105, 106, 130, 170, 190}) { // looked at after 1.05 ms
        Wire wire;
        wire.start().pulse(low, 240).bit(false).bit(false).bit(false).bit(false).bit(true).bit(false).bit(true);
        wire.bit(true).bit(false);
        QCOMPARE(messages(Decoded(wire)), (Texts{low <= 105 ? "frame 85 1" : "frame 05 1"}));
    }
    for (const int length : {184, 185, 295, 296}) {
        Wire wire;
        wire.start().pulse(60, length).bit(false).bit(false).bit(false).bit(false).bit(true).bit(false).bit(true);
        wire.bit(true).bit(false).wait(1000);
        QCOMPARE(messages(Decoded(wire)).front() == "frame 85 1", length >= 185 && length <= 295);
    }
}

void TstCec::acknowledgementsAreTheOtherWayRoundForAll()
{
    Wire wire;
    wire.message({0x45}).message({0x45}, true).message({0x4f, 0x36}, true).message({0x4f, 0x36});
    const Decoded desk(wire);
    QCOMPARE(messages(desk), (Texts{"frame 45 1", "frame 45 0", "frame 4F36 11", "frame 4F36 00"}));
    Texts texts;
    for (const DecodedFrame &frame : desk.frames()) {
        if (frame.kind == "frame") {
            texts.push_back(frame.text);
        }
    }
    QCOMPARE(texts, (Texts{"Playback 1 to Audio system: poll", "Playback 1 to Audio system: poll, not acknowledged",
                           "Playback 1 to all: Standby", "Playback 1 to all: Standby, refused"}));
}

void TstCec::aMessageMayEndBehindARefusedBlock()
{
    Wire wire;
    wire.start().block(0x50, false).block(0x44, false, true).wait(1000).message({0x45});
    QCOMPARE(messages(Decoded(wire)), (Texts{"frame 5044 10", "frame 45 1"}));
}

void TstCec::aMessageThatEndsBeforeItsLastBlockIsCut()
{
    Wire wire;
    wire.start().block(0x50, false).block(0x44, false).wait(1000).start().block(0x50, false).bit(true).wait(1000);
    wire.start().wait(1000).message({0x45});
    const Decoded desk(wire);
    QCOMPARE(messages(desk), (Texts{"cut 5044 11", "cut 50 1", "frame 45 1"}));
    QCOMPARE(desk.frame(0).text, std::string("Audio system to TV: User Control Pressed, cut"));
}

void TstCec::anErrorThatAFollowerTellsCutsTheMessage()
{
    for (const int low : {315, 316, 360}) {
        Wire wire;
        wire.start().block(0x50, false).bit(true).pulse(low, 800).message({0x45});
        const Decoded desk(wire);
        QCOMPARE(messages(desk), (Texts{"cut 50 1", "frame 45 1"}));
        QCOMPARE(desk.frame(0).text == "Audio system to TV, cut by an error that a follower tells", low >= 316);
    }
}

void TstCec::aStartCutsTheMessageBefore()
{
    Wire wire;
    wire.start().block(0x50, false).bit(true).message({0x45});
    QCOMPARE(messages(Decoded(wire)), (Texts{"cut 50 1", "frame 45 1"}));
}

void TstCec::aBitOfDoubtfulLengthIsMarked()
{
    for (const int low : {19, 20, 100, 101, 109, 110, 190}) {
        Wire wire;
        wire.start().pulse(low, 240).bit(false).bit(false).bit(false).bit(false).bit(true).bit(false).bit(true);
        wire.bit(true).bit(false);
        const bool isRight = (low >= 20 && low <= 100) || low >= 110;
        const Decoded desk(wire);
        QCOMPARE(desk.frame(2).text.ends_with(", wrong bit time"), !isRight);
        QCOMPARE(desk.markers(channel)[1].type == MarkerType::Dot, isRight);
    }
}

void TstCec::aSpikeWithinABitIsNotSeen()
{
    for (const int spike : {5, 6}) { // 40 to 50 us, and more
        Wire wire;
        EdgeLine edges = wire.edges();
        edges.set(false).hold(337).set(true).hold(spike).set(false).hold(33 - spike).set(true).hold(80);
        for (const int bit : {0, 1, 0, 0, 0, 1, 0, 1, 1, 0}) {
            edges.set(false).hold(bit != 0 ? 60 : 150).set(true).hold(bit != 0 ? 180 : 90);
        }
        TestCapture capture(sampleRate, edges.position());
        capture.channel(channel, edges);
        DecodeDesk desk(std::make_unique<CecAnalyzer>(), line);
        QCOMPARE(messages(desk.run(capture)).size(), std::size_t(spike < 6 ? 1 : 0));
    }
}

void TstCec::seventeenBlocksAreTooMany()
{
    Wire wire;
    wire.start();
    for (unsigned i = 0; i < 15; ++i) {
        wire.block(i, false);
    }
    Wire more = wire;
    wire.block(15, true).wait(1000);
    more.block(15, false).block(16, true).wait(1000);
    QCOMPARE(messages(Decoded(wire)), (Texts{"frame 000102030405060708090A0B0C0D0E0F 1111111111111111"}));
    QCOMPARE(messages(Decoded(more)), (Texts{"cut 000102030405060708090A0B0C0D0E0F 1111111111111111"}));
}

void TstCec::messagesHaveTheirNames_data()
{
    QTest::addColumn<QByteArray>("blocks");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *blocks, const char *text) {
        QTest::newRow(blocks) << QByteArray::fromHex(blocks) << QString::fromLatin1(text);
    };
    row("4f821000", "Playback 1 to all: Active Source 1.0.0.0");
    row("0f801000230A", "TV to all: Routing Change 1.0.0.0 to 2.3.0.A");
    row("5047414D50", "Audio system to TV: Set OSD Name \"AMP\"");
    row("0564004869", "TV to Audio system: Set OSD String \"Hi\"");
    row("0f32656E67", "TV to all: Set Menu Language \"eng\"");
    row("054441", "TV to Audio system: User Control Pressed Volume Up");
    row("054499", "TV to Audio system: User Control Pressed 0x99");
    row("509001", "Audio system to TV: Report Power Status standby");
    row("509E05", "Audio system to TV: CEC Version 1.4");
    row("50009F00", "Audio system to TV: Feature Abort Get CEC Version, unrecognized opcode");
    row("507A0E", "Audio system to TV: Report Audio Status 0x0E");
    row("05A0080046", "TV to Audio system: Vendor Command With ID 0x08 0x00 0x46");
    row("F5EE", "Unregistered to Audio system: 0xEE");
}

void TstCec::messagesHaveTheirNames()
{
    QFETCH(QByteArray, blocks);
    QFETCH(QString, text);
    Wire wire;
    wire.start();
    const bool isBroadcast = (blocks[0] & 15) == 15;
    for (int i = 0; i < blocks.size(); ++i) {
        wire.block(std::uint8_t(blocks[i]), i + 1 == blocks.size(), isBroadcast);
    }
    QCOMPARE(firstText(wire), text.toStdString());
}

void TstCec::aCaptureMayBeginAnywhere()
{
    Wire wire;
    wire.message({0x05, 0xc4}).message({0x50, 0x44, 0x41});
    const auto whole = Decoded(wire).frames();
    for (std::int64_t from = 1; from < wire.now(); from += 7) {
        TestCapture capture(sampleRate, wire.now() - from);
        addPart(capture, channel, wire.edges(), from);
        DecodeDesk desk(std::make_unique<CecAnalyzer>(), line);
        const auto got = desk.run(capture).frames();
        for (std::size_t i = 0; i < got.size(); ++i) {
            const DecodedFrame &expected = whole.at(whole.size() - got.size() + i);
            QVERIFY(got[i].first + from >= expected.first && got[i].last + from == expected.last);
            QCOMPARE(got[i].summary(), expected.summary());
        }
    }
}

void TstCec::aCutMessageIsNotShown()
{
    Wire wire;
    wire.message({0x05, 0xc4}).start().block(0x50, false).block(0x44, false, true).wait(600);
    const auto whole = Decoded(wire).frames();
    for (std::int64_t length = 1; length < wire.now(); length += 3) {
        const Decoded desk(wire, length);
        QCOMPARE(decoderChecks::faultOf(desk, length), std::string());
        QCOMPARE(desk.message(), std::string());
        const auto cut = desk.frames();
        if (length < wire.falls[20] + 150) {
            QVERIFY(messages(desk).empty());
        }
        Texts all;
        for (const DecodedFrame &frame : whole) {
            all.push_back(frame.summary());
        }
        for (const DecodedFrame &frame : cut) { // the message may be missing around its blocks
            QVERIFY(std::find(all.begin(), all.end(), frame.summary()) != all.end());
        }
    }
}

void TstCec::bubblesGoFromShortToLong()
{
    Wire wire;
    wire.message({0x05, 0x36}, true);
    const Decoded desk(wire);
    const Channel on(0, channel);
    QVERIFY(desk.bubble(0, on, DisplayBase::Hexadecimal).empty()); // its blocks have theirs
    QCOMPARE(desk.bubble(1, on, DisplayBase::Hexadecimal), (Texts{"S", "Start"}));
    QCOMPARE(desk.bubble(2, on, DisplayBase::Hexadecimal),
             (Texts{"0x05 !", "TV to Audio system !", "TV to Audio system, not acknowledged"}));
    QCOMPARE(desk.bubble(3, on, DisplayBase::Decimal),
             (Texts{"54 !", "Standby !", "Standby (54), EOM, not acknowledged"}));
    Wire operand;
    operand.message({0x05, 0x44, 0x41}).message({0x05, 0xee}).message({0x45});
    Texts blocks;
    for (const DecodedFrame &frame : Decoded(operand).frames()) {
        if (frame.kind == "block") {
            blocks.push_back(frame.text);
        }
    }
    QCOMPARE(blocks, (Texts{"TV to Audio system", "User Control Pressed (0x44)", "Operand 0x41, EOM",
                            "TV to Audio system", "Opcode 0xEE, EOM", "Playback 1 to Audio system, poll, EOM"}));
}

void TstCec::markersStandWhereBitsAreLookedAt()
{
    Wire wire;
    wire.message({0x05});
    const auto markers = Decoded(wire).markers(channel);
    QCOMPARE(markers.size(), std::size_t(11));
    QVERIFY(markers[0].type == MarkerType::Start);
    for (std::size_t i = 1; i < markers.size(); ++i) {
        QCOMPARE(markers[i].sample, std::uint64_t(wire.falls[i] + 105));
        QVERIFY(markers[i].type == MarkerType::Dot);
    }
}

void TstCec::aBlockThatIsNotTakenHasACross()
{
    Wire wire;
    wire.message({0x05, 0x36}).message({0x45}, true).message({0x4f, 0x36}, true).message({0x4f}).wait(100);
    std::vector<std::int64_t> crosses;
    for (const Marker &marker : Decoded(wire).markers(channel)) {
        if (marker.type == MarkerType::X) {
            crosses.push_back(std::int64_t(marker.sample));
        }
    }
    // The tenth bits of the poll that nobody takes, and of the one to all that somebody refuses.
    QCOMPARE(crosses, (std::vector<std::int64_t>{wire.falls[21 + 10] + 105, wire.falls[21 + 11 + 21 + 10] + 105}));
}

void TstCec::exportsHaveALineAMessage()
{
    Wire wire;
    wire.message({0x05, 0x36}).message({0x45});
    const Decoded desk(wire);
    QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("out")).toStdString();
    QCOMPARE(decoderChecks::exported(desk, path + ".txt", CecSettings::Messages),
             std::string("0.00500\tTV to Audio system: Standby\n0.06950\tPlayback 1 to Audio system: poll\n"));
    const std::string lines = decoderChecks::exported(desk, path + ".csv", CecSettings::Messages);
    QVERIFY2(lines.starts_with("time_s,first_sample,last_sample,text\n"), lines.c_str());
    QVERIFY2(lines.find(",TV to Audio system: Standby\n0.06950,") != std::string::npos, lines.c_str());
    const std::string csv = decoderChecks::exported(desk, path + ".csv", 0);
    QVERIFY2(csv.find("block,54,1,1,") != std::string::npos, csv.c_str());
}

void TstCec::settingsAreChecked()
{
    DecodeDesk desk(std::make_unique<CecAnalyzer>());
    QVERIFY(!desk.edit({{"cec", "none"}}).empty());
    QCOMPARE(desk.edit({{"cec", "2"}}), std::string());
}

void TstCec::theSimulationIsDecodedAsItWasSent_data()
{
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("block");
    QTest::newRow("1 MHz") << 1000000 << 100000;
    QTest::newRow("10 kHz, small blocks") << 10000 << 53;
    QTest::newRow("20 MHz") << 20000000 << 65536;
}

/// Nine forms in turn, with an operand that counts up.
void TstCec::theSimulationIsDecodedAsItWasSent()
{
    QFETCH(int, rate);
    QFETCH(int, block);
    DecodeDesk desk(std::make_unique<CecAnalyzer>(), line);
    const auto capture = desk.simulate(rate, rate * std::int64_t(30), block);
    const Texts got = messages(desk.run(*capture));
    QVERIFY(got.size() > 250);
    for (unsigned i = 0; i < got.size(); ++i) {
        const std::string n = QString::asprintf("%02X", i & 0xffU).toStdString();
        const std::string forms[] = {"frame 45 1",
                                     "frame 48 0",
                                     "frame 0544" + n + " 111",
                                     "frame 4F8210" + n + " 1111",
                                     "frame 5F72" + n + " 000",
                                     "frame 50" + n + " 10",
                                     "cut 50 1",
                                     "cut 50 1",
                                     "frame 45 1"};
        QCOMPARE(got[i], forms[i % 9]);
    }
    const auto frames = desk.frames();
    const auto doubtful = std::count_if(frames.begin(), frames.end(), [](const DecodedFrame &frame) {
        return frame.text.ends_with(", wrong bit time");
    });
    QCOMPARE(doubtful > 20, rate >= 100000);
}

void TstCec::positionsBehindFourGigasamplesAreExact()
{
    constexpr std::int64_t far = std::int64_t(5) << 32;
    Wire wire;
    wire.message({0x45});
    std::vector<std::int64_t> edges;
    for (const std::int64_t edge : wire.edges().edges()) {
        edges.push_back(edge + far);
    }
    TestCapture capture(sampleRate, far + wire.now());
    capture.channel(channel, true, edges);
    DecodeDesk desk(std::make_unique<CecAnalyzer>(), line);
    QCOMPARE(messages(desk.run(capture)), (Texts{"frame 45 1"}));
    QCOMPARE(desk.frame(0).first, far + wire.falls[0]);
}

void TstCec::randomEdgesGiveFramesInOrder()
{
    constexpr std::int64_t length = 200000;
    for (const std::int64_t mean : {1, 10, 60, 150, 300, 1000}) {
        for (const std::int64_t rate : {10000, 100000, 1000000}) {
            TestCapture capture(rate, length);
            capture.channel(channel, true, decoderChecks::randomEdges(3, mean, length));
            DecodeDesk desk(std::make_unique<CecAnalyzer>(), line);
            QCOMPARE(decoderChecks::faultOf(desk.run(capture), length), std::string());
        }
    }
}

QTEST_GUILESS_MAIN(TstCec)
#include "tst_Cec.moc"
