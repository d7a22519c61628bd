#include "DecoderChecks.h"
#include "LinePart.h"
#include "MdioAnalyzer.h"

#include <QtTest>

#include <cstdint>
#include <string>
#include <vector>

using Texts = std::vector<std::string>;

namespace {

constexpr std::int64_t sampleRate = 20000000;
constexpr std::uint32_t clockChannel = 0;
constexpr std::uint32_t dataChannel = 1;
constexpr const char *lines = "mdc=0,mdio=1";

/// An interface by the figures of IEEE 802.3, 22.2.4.5: a bit is 20 samples, and its data is there before the rise.
class Wire {
public:
    Wire() : m_clock(false), m_data(true) {}
    Wire &wait(std::int64_t samples)
    {
        m_now += samples;
        return *this;
    }
    /// @param setup  samples from the data to the rise; 20 changes it with the rise before
    Wire &bits(std::uint64_t value, unsigned count, std::int64_t setup = 5)
    {
        for (unsigned i = count; i > 0; --i) {
            m_data.holdUntil(m_now + 20 - setup).set((value >> (i - 1) & 1U) != 0);
            m_now += 20;
            rises.push_back(m_now);
            m_clock.holdUntil(m_now).set(true).holdUntil(m_now + 8).set(false);
        }
        return *this;
    }
    Wire &preamble(unsigned count = 32) { return bits(~std::uint64_t(0), count); }
    /// Start, operation, port, register, turnaround, data.
    Wire &frame(unsigned start, unsigned operation, unsigned port, unsigned place, unsigned turnaround, unsigned data,
                std::int64_t setup = 5)
    {
        starts.push_back(rises.size());
        bits(start << 12 | operation << 10 | port << 5 | place, 14, setup);
        bits(turnaround, 2, setup);
        return bits(data, 16, setup);
    }
    [[nodiscard]] std::int64_t now() const { return m_now + 12; }
    [[nodiscard]] std::unique_ptr<TestCapture> capture(std::int64_t length = -1, std::int64_t from = 0,
                                                       std::int64_t shift = 0) const
    {
        auto made = std::make_unique<TestCapture>(sampleRate, (length < 0 ? now() : length) - from + shift);
        for (const auto &[channel, line] : {std::pair(clockChannel, &m_clock), std::pair(dataChannel, &m_data)}) {
            addPart(*made, channel, *line, from, shift);
        }
        return made;
    }

    std::vector<std::int64_t> rises;
    std::vector<std::size_t> starts; ///< the number of the first rise of each frame

private:
    EdgeLine m_clock;
    EdgeLine m_data;
    std::int64_t m_now = 0;
};

/// A run on what was sent.
class Decoded : public DecodeDesk {
public:
    explicit Decoded(const Wire &wire, std::int64_t length = -1, std::int64_t from = 0, std::int64_t shift = 0)
        : DecodeDesk(std::make_unique<MdioAnalyzer>(), lines), m_capture(wire.capture(length, from, shift))
    {
        run(*m_capture);
    }

private:
    std::unique_ptr<TestCapture> m_capture;
};

constexpr unsigned good = 2; ///< a turnaround

} // namespace

class TstMdio : public QObject {
    Q_OBJECT
private slots:
    void eachElementBeginsAndEndsAsOnTheWire();
    void bothClausesHaveTheirOperations();
    void aBitIsWhatStandsBeforeTheRise();
    void thePreambleHasAtLeast32Ones();
    void aCaptureMayBeginWithinAPreamble();
    void aFrameBehindAnotherNeedsNoPreamble();
    void aReadThatNobodyAnswersIsTold();
    void aWrongTurnaroundIsTold();
    void anOperationThatThereIsNotIsAnError();
    void registersHaveTheirNames();
    void addressesAreKeptForEachDevice();
    void aCaptureMayBeginAnywhere();
    void aCutFrameIsNotShown();
    void settingsThatDoNotGoTogetherAreRefused();
    void bubblesGoFromShortToLong();
    void markersStandAtBits();
    void exportsHaveAColumnAValue();
    void theSimulationIsDecodedAsItWasSent_data();
    void theSimulationIsDecodedAsItWasSent();
    void positionsBehindFourGigasamplesAreExact();
    void randomEdgesGiveFramesInOrder();
};

void TstMdio::eachElementBeginsAndEndsAsOnTheWire()
{
    Wire wire;
    wire.wait(50).preamble().frame(1, 1, 3, 4, good, 0x1234);
    const Decoded desk(wire);
    QCOMPARE(desk.summaries(), (Texts{"frame cl=22 op=write phy=3 reg=4 v=4660 ta=1"}));
    QCOMPARE(desk.frame(0).first, wire.rises[32]);
    QCOMPARE(desk.frame(0).last, wire.rises[63] + 8 - 1);
}

void TstMdio::bothClausesHaveTheirOperations()
{
    Wire wire;
    wire.preamble().frame(1, 1, 31, 30, good, 1).preamble().frame(1, 2, 1, 2, good, 0xffff);
    for (const unsigned operation : {0U, 1U, 2U, 3U}) {
        wire.preamble(40).frame(0, operation, 16, 29, good, 0x8001);
    }
    QCOMPARE(Decoded(wire).summaries(),
             (Texts{"frame cl=22 op=write phy=31 reg=30 v=1 ta=1", "frame cl=22 op=read phy=1 reg=2 v=65535 ta=1",
                    "frame cl=45 op=address phy=16 reg=29 v=32769 ta=1",
                    "frame cl=45 op=write phy=16 reg=29 v=32769 ta=1 address=32769",
                    "frame cl=45 op=post-read phy=16 reg=29 v=32769 ta=1 address=32769",
                    "frame cl=45 op=read phy=16 reg=29 v=32769 ta=1 address=32770"}));
}

void TstMdio::aBitIsWhatStandsBeforeTheRise()
{
    for (const int setup : {1, 10, 20}) {
        Wire wire;
        wire.preamble().frame(1, 1, 3, 4, good, 0x5aa5, setup);
        QCOMPARE(Decoded(wire).summaries(), (Texts{"frame cl=22 op=write phy=3 reg=4 v=23205 ta=1"}));
    }
}

void TstMdio::thePreambleHasAtLeast32Ones()
{
    for (const unsigned ones : {31U, 32U, 100U}) {
        Wire wire;
        wire.bits(0, 1).preamble(ones > 64 ? 64 : ones).preamble(ones > 64 ? 36 : 0).frame(1, 1, 3, 4, good, 7);
        QCOMPARE(Decoded(wire).summaries().size(), std::size_t(ones < 32 ? 0 : 1));
    }
}

void TstMdio::aCaptureMayBeginWithinAPreamble()
{
    for (const unsigned ones : {15, 16, 31}) {
        for (const unsigned turnaround : {2U, 3U}) {
            Wire wire;
            wire.preamble(ones).frame(1, 1, 3, 4, turnaround, 7).preamble().frame(1, 1, 3, 5, good, 8);
            const std::size_t found = Decoded(wire).frames().size();
            QCOMPARE(found, std::size_t(ones >= 16 && turnaround == good ? 2 : 1));
        }
    }
}

void TstMdio::aFrameBehindAnotherNeedsNoPreamble()
{
    Wire wire;
    wire.preamble().frame(1, 1, 3, 4, good, 7).preamble(1).frame(1, 2, 3, 5, good, 8);
    wire.frame(1, 2, 3, 6, good, 9).preamble(5).frame(1, 3, 3, 7, good, 10);
    // The third has no one before it, the fourth no operation: both are none.
    QCOMPARE(Decoded(wire).summaries(),
             (Texts{"frame cl=22 op=write phy=3 reg=4 v=7 ta=1", "frame cl=22 op=read phy=3 reg=5 v=8 ta=1"}));
}

void TstMdio::aReadThatNobodyAnswersIsTold()
{
    Wire wire;
    wire.preamble().frame(1, 2, 3, 4, 3, 0xffff).preamble().frame(1, 2, 3, 4, 0, 5);
    const Decoded desk(wire);
    QCOMPARE(desk.frame(0).summary(), std::string("frame cl=22 op=read phy=3 reg=4 v=65535 ta=0"));
    QCOMPARE(desk.frame(0).text,
             std::string("Read, PHY 0x03, register 0x04 (Auto-negotiation advertisement): 0xFFFF, no answer"));
    QCOMPARE(desk.frame(1).value("ta"), std::string("1"));
}

void TstMdio::aWrongTurnaroundIsTold()
{
    for (const unsigned turnaround : {0U, 1U, 2U, 3U}) {
        Wire wire;
        wire.preamble().frame(1, 1, 3, 0, turnaround, 5);
        QCOMPARE(Decoded(wire).frame(0).text, std::string("Write, PHY 0x03, register 0x00 (Control): 0x0005") +
                                                  (turnaround == good ? "" : ", wrong turnaround"));
    }
}

void TstMdio::anOperationThatThereIsNotIsAnError()
{
    for (const unsigned operation : {0U, 3U}) {
        Wire wire;
        wire.preamble().frame(1, operation, 3, 4, good, 5).preamble().frame(1, 1, 3, 4, good, 5);
        const Decoded desk(wire);
        QCOMPARE(desk.frames().size(), std::size_t(2));
        QCOMPARE(desk.frame(0).kind, std::string("error"));
        QCOMPARE(desk.frame(0).first, wire.rises[32]);
        QCOMPARE(desk.frame(0).last, wire.rises[46] - 1);
        QCOMPARE(desk.frame(1).kind, std::string("frame"));
    }
}

void TstMdio::registersHaveTheirNames()
{
    const std::pair<unsigned, const char *> names[] = {{0, "0x00 (Control)"},
                                                       {1, "0x01 (Status)"},
                                                       {2, "0x02 (PHY identifier 1)"},
                                                       {15, "0x0F (Extended status)"},
                                                       {16, "0x10 (Vendor specific)"}};
    for (const auto &[number, name] : names) {
        Wire wire;
        wire.preamble().frame(1, 2, 0, number, good, 0);
        QCOMPARE(Decoded(wire).frame(0).text, "Read, PHY 0x00, register " + std::string(name) + ": 0x0000");
    }
    const std::pair<unsigned, const char *> devices[] = {{1, "PMA/PMD"},          {3, "PCS"},
                                                         {7, "Auto-negotiation"}, {13, "Power unit"},
                                                         {30, "Vendor specific"}, {20, "Reserved"}};
    for (const auto &[number, name] : devices) {
        Wire wire;
        wire.preamble().frame(0, 0, 0, number, good, 1).preamble().frame(0, 3, 0, number, good, 2);
        const Decoded desk(wire);
        QCOMPARE(desk.frame(0).text, "Address, PHY 0x00, " + std::string(name) + ": 0x0001");
        const std::string known = number < 6 ? " (Status 1)" : "";
        QCOMPARE(desk.frame(1).text, "Read, PHY 0x00, " + std::string(name) + " register 0x0001" + known + ": 0x0002");
    }
}

void TstMdio::addressesAreKeptForEachDevice()
{
    Wire wire;
    wire.preamble().frame(0, 3, 1, 3, good, 0); // before any address
    wire.preamble().frame(0, 0, 1, 3, good, 0xffff).preamble().frame(0, 0, 2, 3, good, 5);
    wire.preamble().frame(0, 2, 1, 3, good, 0).preamble().frame(0, 2, 1, 3, good, 0); // the last one stays
    wire.preamble().frame(0, 2, 2, 3, good, 0).preamble().frame(0, 3, 2, 3, good, 0);
    const auto frames = Decoded(wire).frames();
    QCOMPARE(frames[0].value("address"), std::string("(absent)"));
    QCOMPARE(frames[3].value("address"), std::string("65535"));
    QCOMPARE(frames[4].value("address"), std::string("65535"));
    QCOMPARE(frames[5].value("address"), std::string("5"));
    QCOMPARE(frames[6].value("address"), std::string("6"));
}

void TstMdio::aCaptureMayBeginAnywhere()
{
    Wire wire;
    wire.preamble().frame(1, 1, 3, 4, good, 0xffff).preamble(34).frame(1, 2, 3, 5, good, 0x0ff0).preamble(33);
    wire.frame(1, 2, 3, 5, good, 0x0ff0);
    const auto whole = Decoded(wire).frames();
    QCOMPARE(whole.size(), std::size_t(3));
    for (std::int64_t from = 1; from < wire.now(); from += 7) {
        const auto got = Decoded(wire, -1, from).frames();
        for (std::size_t i = 0; i < got.size(); ++i) {
            const DecodedFrame &expected = whole[whole.size() - got.size() + i];
            QCOMPARE(got[i].first + from, expected.first);
            QCOMPARE(got[i].summary(), expected.summary());
        }
    }
}

void TstMdio::aCutFrameIsNotShown()
{
    Wire wire;
    wire.preamble().frame(1, 1, 3, 4, good, 0xffff).preamble().frame(1, 3, 3, 5, good, 0x0ff0);
    const auto whole = Decoded(wire).frames();
    for (std::int64_t length = 1; length < wire.now(); length += 3) {
        const Decoded desk(wire, length);
        QCOMPARE(decoderChecks::faultOf(desk, length), std::string());
        QCOMPARE(decoderChecks::faultOfCut(desk.frames(), whole), std::string());
        QCOMPARE(desk.frames().empty(), length <= wire.rises[63]);
    }
}

void TstMdio::settingsThatDoNotGoTogetherAreRefused()
{
    DecodeDesk desk(std::make_unique<MdioAnalyzer>());
    QVERIFY(!desk.edit({{"mdc", "1"}}).empty());
    QVERIFY(!desk.edit({{"mdc", "1"}, {"mdio", "1"}}).empty());
    QCOMPARE(desk.edit({{"mdc", "1"}, {"mdio", "0"}}), std::string());
}

void TstMdio::bubblesGoFromShortToLong()
{
    Wire wire;
    wire.preamble().frame(1, 2, 3, 1, good, 0x7809);
    const Decoded desk(wire);
    QCOMPARE(
        desk.bubble(0, Channel(0, dataChannel), DisplayBase::Hexadecimal),
        (Texts{"R", "0x7809", "R 0x03.0x01 0x7809", "Read 0x7809", "Read, PHY 0x03, register 0x01 (Status): 0x7809"}));
    QVERIFY(desk.bubble(0, Channel(0, clockChannel), DisplayBase::Hexadecimal).empty());
    QCOMPARE(desk.frame(0, DisplayBase::Decimal).text, std::string("Read, PHY 3, register 1 (Status): 30729"));
}

void TstMdio::markersStandAtBits()
{
    Wire wire;
    wire.preamble().frame(1, 2, 3, 1, 3, 0);
    const Decoded desk(wire);
    const auto markers = desk.markers(clockChannel);
    QCOMPARE(markers.size(), std::size_t(32));
    for (std::size_t i = 0; i < 32; ++i) {
        QCOMPARE(markers[i].sample, std::uint64_t(wire.rises[32 + i]));
    }
    QCOMPARE(desk.markers(dataChannel).size(), std::size_t(1));
    QCOMPARE(desk.markers(dataChannel)[0].sample, std::uint64_t(wire.rises[32 + 15]));
}

void TstMdio::exportsHaveAColumnAValue()
{
    Wire wire;
    wire.preamble().frame(0, 0, 3, 1, good, 8).preamble().frame(0, 3, 3, 1, good, 9);
    const Decoded desk(wire);
    QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("out")).toStdString();
    const std::string csv = decoderChecks::exported(desk, path + ".csv", 0);
    QVERIFY2(csv.find("frame,45,read,3,1,8,9,1,") != std::string::npos, csv.c_str());
}

void TstMdio::theSimulationIsDecodedAsItWasSent_data()
{
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("block");
    QTest::newRow("20 MHz") << 20000000 << 100000;
    QTest::newRow("20 kHz, small blocks") << 20000 << 53;
    QTest::newRow("100 MHz") << 100000000 << 65536;
}

/// Nine forms in turn, with data that counts up.
void TstMdio::theSimulationIsDecodedAsItWasSent()
{
    QFETCH(int, rate);
    QFETCH(int, block);
    DecodeDesk desk(std::make_unique<MdioAnalyzer>(), lines);
    const auto capture = desk.simulate(rate, 4000000, block);
    const auto got = desk.run(*capture).frames();
    QVERIFY(got.size() > 300);
    for (unsigned i = 0; i < got.size(); ++i) {
        const std::string place = std::to_string(i & 0x1fU);
        const std::string forms[] = {
            "cl=22 op=write phy=5 reg=" + place, "cl=22 op=read phy=5 reg=" + place,  "cl=45 op=address phy=5 reg=3",
            "cl=45 op=read phy=5 reg=3",         "cl=45 op=post-read phy=5 reg=3",    "cl=45 op=write phy=5 reg=3",
            "cl=22 op=read phy=6 reg=" + place,  "cl=22 op=write phy=5 reg=" + place, "error",
            "cl=22 op=write phy=5 reg=" + place};
        const unsigned form = i % 10;
        if (form == 8) {
            QCOMPARE(got[i].kind, std::string("error"));
            continue;
        }
        QVERIFY2(got[i].summary().starts_with("frame " + forms[form] + " v="), got[i].summary().c_str());
        QCOMPARE(got[i].value("v"), std::to_string(form == 6 ? 0xffffU : i & 0xffffU));
        QCOMPARE(got[i].value("ta"), std::string(form == 6 || form == 9 ? "0" : "1"));
        if (form >= 3 && form <= 5) {
            QCOMPARE(got[i].value("address"), std::to_string(i - form + 2 + (form == 5 ? 1 : 0)));
        }
    }
}

void TstMdio::positionsBehindFourGigasamplesAreExact()
{
    constexpr std::int64_t far = std::int64_t(5) << 32;
    Wire wire;
    wire.preamble().frame(1, 1, 3, 4, good, 0x1234);
    const Decoded desk(wire, -1, 0, far);
    QCOMPARE(desk.frames().size(), std::size_t(1));
    QCOMPARE(desk.frame(0).first, far + wire.rises[32]);
}

void TstMdio::randomEdgesGiveFramesInOrder()
{
    constexpr std::int64_t length = 100000;
    for (const std::int64_t mean : {1, 2, 10, 100}) {
        for (const std::int64_t other : {1, 5, 50, 200}) {
            TestCapture capture(sampleRate, length);
            capture.channel(clockChannel, false, decoderChecks::randomEdges(1, mean, length));
            capture.channel(dataChannel, true, decoderChecks::randomEdges(2, mean * other, length));
            DecodeDesk desk(std::make_unique<MdioAnalyzer>(), lines);
            QCOMPARE(decoderChecks::faultOf(desk.run(capture), length), std::string());
        }
    }
}

QTEST_GUILESS_MAIN(TstMdio)
#include "tst_Mdio.moc"
