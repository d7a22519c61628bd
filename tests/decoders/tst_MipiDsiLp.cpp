#include "DecoderChecks.h"
#include "DsiAnalyzer.h"
#include "DsiNames.h"

#include <QtTest>

#include <cstdint>
#include <string>
#include <vector>

using Texts = std::vector<std::string>;
using Bytes = std::vector<std::uint8_t>;

namespace {

constexpr std::int64_t sampleRate = 100000000;
constexpr std::int64_t step = 10; ///< samples of a state
constexpr std::uint32_t positive = 0;
constexpr std::uint32_t negative = 1;
constexpr const char *oneLane = "d0p=0,d0n=1";

/// A lane as D-PHY draws it: states of one length each.
class Wire {
public:
    Wire() : m_p(true), m_n(true) {}

    /// "10" is LP-10.
    Wire &state(const char *levels, std::int64_t steps = 1)
    {
        m_p.holdUntil(m_now).set(levels[0] == '1');
        m_n.holdUntil(m_now).set(levels[1] == '1');
        m_now += steps * step;
        return *this;
    }
    Wire &states(const std::vector<const char *> &list)
    {
        for (const char *one : list) {
            state(one);
        }
        return *this;
    }
    Wire &stop(std::int64_t steps = 6) { return state("11", steps); }
    Wire &bits(const std::string &list)
    {
        for (const char bit : list) {
            state(bit == '1' ? "10" : "01").state("00");
        }
        return *this;
    }
    Wire &enter(const std::string &code)
    {
        states({"10", "00", "01", "00"});
        entries.push_back(m_now);
        return bits(code);
    }
    Wire &byte(unsigned value)
    {
        std::string list;
        for (unsigned i = 0; i < 8; ++i) {
            list += (value >> i & 1U) != 0 ? '1' : '0';
        }
        bytes.push_back(m_now);
        return bits(list);
    }
    Wire &send(const Bytes &list)
    {
        for (const std::uint8_t one : list) {
            byte(one);
        }
        return *this;
    }
    Wire &leave() { return state("10").stop(); }
    [[nodiscard]] std::int64_t now() const { return m_now; }
    [[nodiscard]] const EdgeLine &p() const { return m_p; }
    [[nodiscard]] const EdgeLine &n() const { return m_n; }
    [[nodiscard]] std::unique_ptr<TestCapture> capture(std::int64_t length = -1) const
    {
        auto made = std::make_unique<TestCapture>(sampleRate, length < 0 ? m_now : length);
        made->channel(positive, m_p).channel(negative, m_n);
        return made;
    }

    std::vector<std::int64_t> entries; ///< where the first bit of each code begins
    std::vector<std::int64_t> bytes;   ///< where each byte begins

private:
    EdgeLine m_p;
    EdgeLine m_n;
    std::int64_t m_now = 0;
};

constexpr const char *lowPowerData = "11100001";

class Decoded : public DecodeDesk {
public:
    explicit Decoded(const Wire &wire, const std::string &settings = oneLane, std::int64_t length = -1)
        : DecodeDesk(std::make_unique<DsiAnalyzer>(), settings), m_capture(wire.capture(length))
    {
        run(*m_capture);
    }
    /// Those that are no bytes.
    [[nodiscard]] Texts others() const
    {
        Texts list;
        for (const DecodedFrame &one : frames()) {
            if (one.kind != "byte") {
                list.push_back(one.summary());
            }
        }
        return list;
    }

private:
    std::unique_ptr<TestCapture> m_capture;
};

/// Heads with their checks as they stand in public examples: DCS set_display_on and exit_sleep_mode, an EoTp.
const Bytes displayOn = {0x05, 0x29, 0x00, 0x1c};
const Bytes exitSleep = {0x05, 0x11, 0x00, 0x36};
const Bytes endOfTransmission = {0x08, 0x0f, 0x0f, 0x01};

/// The checksum of 9.6, by division.
Bytes withChecksum(Bytes head, const Bytes &payload, unsigned damage = 0)
{
    unsigned rest = 0xffff;
    for (const std::uint8_t byte : payload) {
        for (unsigned bit = 0; bit < 8; ++bit) {
            const bool out = ((rest ^ byte >> bit) & 1U) != 0;
            rest = rest >> 1 ^ (out ? 0x8408U : 0U);
        }
    }
    head.insert(head.end(), payload.begin(), payload.end());
    head.push_back(std::uint8_t(rest ^ damage));
    head.push_back(std::uint8_t(rest >> 8));
    return head;
}

Bytes headOf(unsigned type, unsigned length)
{
    const unsigned head = type | length << 8;
    return {std::uint8_t(head), std::uint8_t(length), std::uint8_t(length >> 8), dsi::eccOf(head)};
}

} // namespace

class TstMipiDsiLp : public QObject {
    Q_OBJECT

private slots:
    void aShortPacketIsFourBytes();
    void framesStandWhereTheirBitsAre();
    void aLongPacketHasAChecksum_data();
    void aLongPacketHasAChecksum();
    void oneWrongBitOfAHeadIsCorrected();
    void twoWrongBitsOfAHeadAreTold();
    void theLengthIsThatOfTheCorrectedHead();
    void whatIsWrongHasAMarker();
    void aTableHasTheBytesOfACutPacket();
    void packetsAreExportedOneALine();
    void packetsFollowEachOtherInOneTransmission();
    void entriesHaveTheirNames_data();
    void entriesHaveTheirNames();
    void ultraLowPowerLastsToTheStopState();
    void aTurnaroundGivesTheLaneAway();
    void aBurstIsNotDecoded();
    void whatIsNoSequenceHasNoMeaning_data();
    void whatIsNoSequenceHasNoMeaning();
    void spacesMayBeLong();
    void aPacketThatEndsEarlyIsCut();
    void otherLanesTellTheirStates();
    void lanesNeedBothChannels();
    void commandsHaveTheirNames();
    void bubblesGoFromShortToLong();
    void nothingFalseIsShownWhereTheCaptureEnds();
    void theSimulationIsDecodedAsItWasSent_data();
    void theSimulationIsDecodedAsItWasSent();
    void itIsOfferedForModelsWithTheseInputs();
    void randomEdgesGiveFramesInOrder();
};

void TstMipiDsiLp::aShortPacketIsFourBytes()
{
    Wire wire;
    wire.stop().enter(lowPowerData).send(displayOn).leave().enter(lowPowerData).send(exitSleep).leave();
    const Decoded desk(wire);
    QCOMPARE(desk.others(), (Texts{"entry v=11100001", "packet vc=0 dt=5 data=2900 ecc=1", "entry v=11100001",
                                   "packet vc=0 dt=5 data=1100 ecc=1"}));
    QCOMPARE(desk.summaries()[2], std::string("byte v=5"));
}

void TstMipiDsiLp::framesStandWhereTheirBitsAre()
{
    Wire wire;
    wire.stop().enter(lowPowerData).send(displayOn).leave();
    const Decoded desk(wire);
    QCOMPARE(desk.frame(0).first, wire.entries[0]);
    QCOMPARE(desk.frame(0).last, wire.bytes[0] - 1);
    QCOMPARE(desk.frame(1).first, wire.bytes[0]);
    QCOMPARE(desk.frame(1).last, wire.bytes[3] + 16 * step - 1);
    for (std::size_t i = 0; i < 4; ++i) {
        QCOMPARE(desk.frame(2 + i).first, wire.bytes[i]);
        QCOMPARE(desk.frame(2 + i).last, wire.bytes[i] + 16 * step - 1);
    }
}

void TstMipiDsiLp::aLongPacketHasAChecksum_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<unsigned>("damage");
    QTest::newRow("no payload") << 0 << 0U;
    QTest::newRow("one byte") << 1 << 0U;
    QTest::newRow("more than a byte tells") << 300 << 0U;
    QTest::newRow("wrong") << 5 << 1U;
    QTest::newRow("no payload, wrong") << 0 << 0x80U;
}

void TstMipiDsiLp::aLongPacketHasAChecksum()
{
    QFETCH(int, length);
    QFETCH(unsigned, damage);
    Bytes payload;
    std::string hex;
    for (int i = 0; i < length; ++i) {
        payload.push_back(std::uint8_t(i * 3));
        hex += QString::asprintf("%02X", unsigned(payload.back())).toStdString();
    }
    Wire wire;
    wire.stop().enter(lowPowerData).send(withChecksum(headOf(0x79, unsigned(length)), payload, damage)).leave();
    const Decoded desk(wire);
    QCOMPARE(desk.others()[1], "packet vc=1 dt=57 data=" + hex + " ecc=1 crc=" + (damage == 0 ? "1" : "0"));
    QCOMPARE(desk.frame(1).text.find("checksum error") != std::string::npos, damage != 0);
}

void TstMipiDsiLp::oneWrongBitOfAHeadIsCorrected()
{
    for (unsigned bit = 0; bit < 30; ++bit) {
        Bytes bytes = displayOn;
        bytes[bit / 8] = std::uint8_t(bytes[bit / 8] ^ 1U << bit % 8);
        Wire wire;
        wire.stop().enter(lowPowerData).send(bytes).leave();
        const Decoded desk(wire);
        QCOMPARE(desk.frame(1).kind, std::string("packet"));
        QCOMPARE(desk.frame(1).value("ecc"), std::string("0"));
        QCOMPARE(desk.frame(1).text, std::string("Channel 0, DCS short write, no parameters, set_display_on, ECC "
                                                 "corrected: 0x29 0x00"));
    }
}

void TstMipiDsiLp::twoWrongBitsOfAHeadAreTold()
{
    for (unsigned bit = 8; bit < 24; ++bit) {
        Bytes bytes = displayOn;
        bytes[bit / 8] = std::uint8_t(bytes[bit / 8] ^ 1U << bit % 8);
        bytes[3] ^= 0x20;
        Wire wire;
        wire.stop().enter(lowPowerData).send(bytes).leave();
        const DecodedFrame frame = Decoded(wire).frame(1);
        QCOMPARE(frame.value("ecc"), std::string("0"));
        QVERIFY2(frame.text.find("ECC error") != std::string::npos, frame.text.c_str());
    }
}

void TstMipiDsiLp::theLengthIsThatOfTheCorrectedHead()
{
    Bytes bytes = withChecksum(headOf(0x39, 3), {1, 2, 3});
    bytes[1] ^= 0x40;
    Wire wire;
    wire.stop().enter(lowPowerData).send(bytes).leave();
    QCOMPARE(Decoded(wire).others()[1], std::string("packet vc=0 dt=57 data=010203 ecc=0 crc=1"));
}

void TstMipiDsiLp::whatIsWrongHasAMarker()
{
    Bytes corrected = withChecksum(headOf(0x39, 3), {1, 2, 3}, 1);
    corrected[1] ^= 0x40;
    Bytes wrong = displayOn;
    wrong[1] ^= 0x01;
    wrong[3] ^= 0x20;
    Wire wire;
    wire.stop().enter(lowPowerData).send(displayOn).send(withChecksum(headOf(0x29, 2), {1, 2})).leave();
    const std::size_t right = wire.bytes.size();
    wire.enter(lowPowerData).send(corrected).send(wrong).leave();
    std::vector<std::int64_t> crosses;
    std::vector<std::int64_t> dots;
    for (const auto &marker : Decoded(wire).markers(negative)) {
        if (marker.type == MarkerType::ErrorX) {
            crosses.push_back(std::int64_t(marker.sample));
        } else if (marker.type == MarkerType::ErrorDot) {
            dots.push_back(std::int64_t(marker.sample));
        }
    }
    const auto endOf = [&](std::size_t byte) { return wire.bytes[right + byte] + 16 * step - 1; };
    QCOMPARE(dots, std::vector<std::int64_t>{endOf(3)});
    QCOMPARE(crosses, (std::vector<std::int64_t>{endOf(8), endOf(12)}));
}

void TstMipiDsiLp::aTableHasTheBytesOfACutPacket()
{
    Wire wire;
    wire.stop().enter(lowPowerData).send({0x05, 0x29, 0x00}).leave();
    QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("out.csv")).toStdString();
    const std::string csv = decoderChecks::exported(Decoded(wire), path, 0);
    QVERIFY2(csv.find(",ecc,crc,n,text\n") != std::string::npos, csv.c_str());
    QVERIFY2(csv.find(",cut,,,,,,,,3,Packet cut after 3 bytes") != std::string::npos, csv.c_str());
}

void TstMipiDsiLp::packetsAreExportedOneALine()
{
    Wire wire;
    wire.stop().enter(lowPowerData).send(displayOn).send({0x05, 0x29, 0x00}).leave();
    const Decoded desk(wire);
    QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("out")).toStdString();
    const std::string text = decoderChecks::exported(desk, path + ".txt", DsiSettings::Packets);
    QCOMPARE(std::count(text.begin(), text.end(), '\n'), std::ptrdiff_t(2));
    QVERIFY2(text.ends_with("\tPacket cut after 3 bytes\n"), text.c_str());
    const std::string lines = decoderChecks::exported(desk, path + ".csv", DsiSettings::Packets);
    QVERIFY2(lines.starts_with("time_s,first_sample,last_sample,text\n"), lines.c_str());
    QVERIFY2(lines.ends_with(",Packet cut after 3 bytes\n"), lines.c_str());
}

void TstMipiDsiLp::packetsFollowEachOtherInOneTransmission()
{
    Wire wire;
    wire.stop().enter(lowPowerData).send(displayOn).send(withChecksum(headOf(0x29, 2), {1, 2}));
    wire.send(endOfTransmission).leave();
    const Decoded desk(wire);
    QCOMPARE(desk.others(), (Texts{"entry v=11100001", "packet vc=0 dt=5 data=2900 ecc=1",
                                   "packet vc=0 dt=41 data=0102 ecc=1 crc=1", "packet vc=0 dt=8 data=0F0F ecc=1"}));
}

void TstMipiDsiLp::entriesHaveTheirNames_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("text");
    QTest::newRow("reset") << "01100010"
                           << "Entry 0b01100010: Reset trigger";
    QTest::newRow("tearing") << "01011101"
                             << "Entry 0b01011101: Tearing effect trigger";
    QTest::newRow("acknowledge") << "00100001"
                                 << "Entry 0b00100001: Acknowledge trigger";
    QTest::newRow("unknown") << "10100000"
                             << "Entry 0b10100000: Unknown-5";
    QTest::newRow("none") << "11111111"
                          << "Entry 0b11111111";
}

/// Bits behind the code are passed over.
void TstMipiDsiLp::entriesHaveTheirNames()
{
    QFETCH(QString, code);
    QFETCH(QString, text);
    Wire wire;
    wire.stop().enter(code.toStdString()).bits("1010").leave().enter(lowPowerData).send(displayOn).leave();
    const Decoded desk(wire);
    QCOMPARE(desk.others().size(), std::size_t(3));
    QCOMPARE(QString::fromStdString(desk.frame(0).text), text);
}

void TstMipiDsiLp::ultraLowPowerLastsToTheStopState()
{
    Wire wire;
    wire.stop().enter("00011110").state("00", 500).state("10", 100);
    const std::int64_t end = wire.now();
    wire.stop().enter(lowPowerData).leave();
    const Decoded desk(wire);
    QCOMPARE(desk.others(), (Texts{"entry v=00011110", "ulps", "entry v=11100001"}));
    QCOMPARE(desk.frame(1).last, end - 1);
    Wire cut;
    cut.stop().enter("00011110").state("00", 500);
    QCOMPARE(Decoded(cut).others(), Texts{"entry v=00011110"});
}

void TstMipiDsiLp::aTurnaroundGivesTheLaneAway()
{
    Wire wire;
    wire.stop();
    const std::int64_t begin = wire.now();
    wire.states({"10", "00", "10"}).state("00", 4).state("10").stop();
    wire.enter(lowPowerData).send({0x21, 0x9c, 0x00, dsi::eccOf(0x9c21)}).leave();
    wire.states({"10", "00", "10"}).state("00", 4).state("10").stop();
    wire.enter(lowPowerData).send({0x21, 0x00, 0x00, dsi::eccOf(0x21)}).leave();
    const Decoded desk(wire);
    QCOMPARE(desk.frame(0).kind, std::string("bta"));
    QCOMPARE(desk.frame(0).first, begin);
    QCOMPARE(desk.frame(0).last, begin + 7 * step - 1);
    QCOMPARE(desk.frame(2).text, std::string("Channel 0, DCS short read response, 1 byte: 0x9C 0x00"));
    QCOMPARE(desk.frame(9).text, std::string("Channel 0, H sync start: 0x00 0x00"));
}

void TstMipiDsiLp::aBurstIsNotDecoded()
{
    Wire wire;
    wire.stop();
    const std::int64_t begin = wire.now();
    wire.state("01").state("00", 3).states({"10", "01", "00", "10", "00", "01", "00"});
    const std::int64_t end = wire.now();
    wire.stop().enter(lowPowerData).send(displayOn).leave();
    const Decoded desk(wire);
    QCOMPARE(desk.others().size(), std::size_t(3));
    QCOMPARE(desk.frame(0).kind, std::string("hs"));
    QCOMPARE(desk.frame(0).first, begin);
    QCOMPARE(desk.frame(0).last, end - 1);
}

void TstMipiDsiLp::whatIsNoSequenceHasNoMeaning_data()
{
    QTest::addColumn<QString>("states");
    QTest::newRow("request alone") << "10";
    QTest::newRow("request and bridge") << "10 00";
    QTest::newRow("aborted escape") << "10 00 01";
    QTest::newRow("escape without a code") << "10 00 01 00";
    QTest::newRow("half a code") << "10 00 01 00 10 00 10 00 10";
    QTest::newRow("half a turnaround") << "10 00 10";
    QTest::newRow("high-speed request alone") << "01";
    QTest::newRow("both lines fall") << "00 10 00";
}

void TstMipiDsiLp::whatIsNoSequenceHasNoMeaning()
{
    QFETCH(QString, states);
    Wire wire;
    wire.stop();
    for (const QString &one : states.split(QLatin1Char(' '))) {
        wire.state(one.toLatin1().constData());
    }
    wire.stop().enter(lowPowerData).send(displayOn).leave();
    QCOMPARE(Decoded(wire).others(), (Texts{"entry v=11100001", "packet vc=0 dt=5 data=2900 ecc=1"}));
}

void TstMipiDsiLp::spacesMayBeLong()
{
    Wire wire;
    wire.stop().enter(lowPowerData).state("00", 50).byte(0x05).state("00", 70).send({0x29, 0x00}).bits("0011");
    wire.state("00", 1000).bits("1000").leave();
    const Decoded desk(wire);
    QCOMPARE(desk.others()[1], std::string("packet vc=0 dt=5 data=2900 ecc=1"));
    QCOMPARE(desk.frame(2).last, wire.bytes[0] + 16 * step - 1);
}

void TstMipiDsiLp::aPacketThatEndsEarlyIsCut()
{
    Wire wire;
    wire.stop().enter(lowPowerData).send(headOf(0x39, 4)).send({1, 2}).bits("101").leave();
    wire.enter(lowPowerData).leave();
    const Decoded desk(wire);
    QCOMPARE(desk.others(), (Texts{"entry v=11100001", "cut n=6", "entry v=11100001"}));
    QCOMPARE(desk.frame(1).first, wire.bytes[0]);
    QCOMPARE(desk.frame(1).last, wire.bytes[5] + 16 * step - 1);
    QCOMPARE(desk.frames().size(), std::size_t(9));
    QCOMPARE(desk.markers(negative).back().type, MarkerType::ErrorX);
}

void TstMipiDsiLp::otherLanesTellTheirStates()
{
    Wire wire;
    wire.stop().enter(lowPowerData).send(displayOn).leave().stop(200);
    Wire other;
    other.stop(20).enter("00011110").state("00", 60).state("10").stop().state("01").state("00", 9).stop();
    TestCapture capture(sampleRate, wire.now());
    capture.channel(0, wire.p()).channel(1, wire.n()).channel(2, other.p()).channel(3, other.n());
    DecodeDesk desk(std::make_unique<DsiAnalyzer>(), "d0p=0,d0n=1,d1p=2,d1n=3,lanes=2");
    desk.run(capture);
    QCOMPARE(decoderChecks::faultOf(desk, wire.now()), std::string());
    Texts got;
    for (const std::string &one : desk.summaries()) {
        if (one.find("lane") != std::string::npos) {
            got.push_back(one);
        }
    }
    QCOMPARE(got, (Texts{"entry v=00011110 lane=1", "ulps lane=1", "hs lane=1"}));
    QCOMPARE(desk.frames().back().text, std::string("Lane 1: High-speed burst of 1.00 us"));
    desk.edit({{"lanes", "1"}});
    desk.run(capture);
    QCOMPARE(desk.summaries().size(), std::size_t(6));
}

void TstMipiDsiLp::lanesNeedBothChannels()
{
    DecodeDesk desk(std::make_unique<DsiAnalyzer>());
    QVERIFY(!desk.edit({{"d0p", "0"}}).empty());
    QCOMPARE(desk.edit({{"d0p", "0"}, {"d0n", "1"}}), std::string());
    QCOMPARE(desk.edit({{"lanes", "2"}, {"d1p", "2"}}),
             std::string("Choose both channels of each lane, or fewer lanes"));
    QCOMPARE(desk.edit({{"d1n", "3"}}), std::string());
    QVERIFY(!desk.edit({{"lanes", "5"}}).empty());
}

void TstMipiDsiLp::commandsHaveTheirNames()
{
    QCOMPARE(dsi::commandName(0x2c), std::string_view("write_memory_start"));
    QVERIFY(dsi::commandName(0xfe).empty());
    QCOMPARE(dsi::typeName(0x02, true), std::string_view("Acknowledge and error report"));
    QCOMPARE(dsi::typeName(0x02, false), std::string_view("Colour mode off"));
    Wire wire;
    wire.stop().enter(lowPowerData).send(withChecksum(headOf(0x39, 3), {0x2a, 0, 1})).leave();
    QCOMPARE(Decoded(wire).frame(1).text, std::string("Channel 0, DCS long write, set_column_address: 0x2A 0x00 0x01"));
}

void TstMipiDsiLp::bubblesGoFromShortToLong()
{
    Wire wire;
    wire.stop().enter(lowPowerData).send(displayOn).leave();
    const Decoded desk(wire);
    const Channel p(0, positive);
    const Channel n(0, negative);
    QCOMPARE(desk.bubble(0, p, DisplayBase::Decimal),
             (Texts{"E", "Low-power data", "Entry 0b11100001: Low-power data"}));
    QCOMPARE(desk.bubble(1, p, DisplayBase::Decimal),
             (Texts{"P", "set_display_on", "Channel 0, DCS short write, no parameters, set_display_on",
                    "Channel 0, DCS short write, no parameters, set_display_on: 41 0"}));
    QCOMPARE(desk.bubble(3, n, DisplayBase::Decimal), (Texts{"41", "Byte 41"}));
    QVERIFY(desk.bubble(3, p, DisplayBase::Decimal).empty());
    QVERIFY(desk.bubble(1, n, DisplayBase::Decimal).empty());
}

/// Bytes that are whole are shown; a packet that is not is neither shown nor told as cut.
void TstMipiDsiLp::nothingFalseIsShownWhereTheCaptureEnds()
{
    Wire wire;
    wire.stop().enter(lowPowerData).send(displayOn).send(withChecksum(headOf(0x39, 2), {1, 2})).leave();
    wire.states({"10", "00", "10"}).state("00", 4).state("10").stop();
    const Texts whole = Decoded(wire).summaries();
    for (std::int64_t length = 1; length < wire.now(); ++length) {
        const Decoded cut(wire, oneLane, length);
        QCOMPARE(decoderChecks::faultOf(cut, length), std::string());
        for (const std::string &one : cut.summaries()) {
            QVERIFY2(std::find(whole.begin(), whole.end(), one) != whole.end(), one.c_str());
        }
    }
}

void TstMipiDsiLp::theSimulationIsDecodedAsItWasSent_data()
{
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("block");
    QTest::addColumn<int>("lanes");
    QTest::newRow("usual") << 100000000 << 100000 << 1;
    QTest::newRow("slow, small blocks") << 1000 << 61 << 1;
    QTest::newRow("fast") << 1000000000 << 1048576 << 1;
    QTest::newRow("two lanes") << 100000000 << 100000 << 2;
}

void TstMipiDsiLp::theSimulationIsDecodedAsItWasSent()
{
    QFETCH(int, rate);
    QFETCH(int, block);
    QFETCH(int, lanes);
    DecodeDesk desk(std::make_unique<DsiAnalyzer>(), lanes == 1 ? oneLane : "d0p=0,d0n=1,d1p=2,d1n=3,lanes=2");
    const std::int64_t length = rate == 1000000000 ? 4000000 : rate == 1000 ? 200000 : 600000;
    desk.run(*desk.simulate(rate, length, block));
    Texts expected;
    Texts got;
    for (const DecodedFrame &frame : desk.frames()) {
        if (frame.kind != "byte") {
            got.push_back(frame.summary());
        }
    }
    const std::string data = "entry v=11100001";
    for (unsigned number = 0; expected.size() < got.size(); ++number) {
        const std::string low = QString::asprintf("%02X", number & 0xffU).toStdString();
        const std::string high = QString::asprintf("%02X", number >> 8 & 0xffU).toStdString();
        const std::string flipped = QString::asprintf("%02X", (number >> 8 ^ 0x80U) & 0xffU).toStdString();
        const std::string payload = "packet vc=0 dt=57 data=2A" + low + high + "FF00 ecc=1 crc=";
        const Texts rounds[] = {
            {data, "packet vc=0 dt=21 data=36" + low + " ecc=1"},
            {data, payload + "1", "packet vc=0 dt=8 data=0F0F ecc=1"},
            {number % 20 == 2 ? "entry v=01100010" : "entry v=01011101"},
            {"entry v=00011110", "ulps"},
            {"bta", "entry v=00100001", "bta"},
            number % 20 == 5 ? Texts{"entry v=00011110", "ulps"} : Texts{"entry v=00100001"},
            {data, "packet vc=0 dt=21 data=" + low + high + " ecc=0"},
            {data, "packet vc=0 dt=21 data=" + low + flipped + " ecc=0"},
            {data, payload + "0"},
            {"hs", data, "cut n=5"},
        };
        if (number % 10 == 5 && lanes == 2) {
            expected.insert(expected.end(), {"entry v=00011110 lane=1", "ulps lane=1", "hs lane=1"});
        }
        expected.insert(expected.end(), rounds[number % 10].begin(), rounds[number % 10].end());
    }
    expected.resize(got.size());
    QVERIFY(got.size() > 60);
    QCOMPARE(got, expected);
}

void TstMipiDsiLp::itIsOfferedForModelsWithTheseInputs()
{
    QCOMPARE(std::string(lux::detail::modelsOf<DsiAnalyzer>()), std::string("9,65"));
}

void TstMipiDsiLp::randomEdgesGiveFramesInOrder()
{
    constexpr std::int64_t length = 60000;
    for (const std::int64_t mean : {1, 4, 30, 500}) {
        for (const char *settings : {oneLane, "d0p=0,d0n=1,d1p=2,d1n=3,d2p=4,d2n=5,d3p=6,d3n=7,lanes=4"}) {
            TestCapture capture(sampleRate, length);
            for (std::uint32_t i = 0; i < 8; ++i) {
                capture.channel(i, true, decoderChecks::randomEdges(i, mean, length));
            }
            DecodeDesk desk(std::make_unique<DsiAnalyzer>(), settings);
            QCOMPARE(decoderChecks::faultOf(desk.run(capture), length), std::string());
        }
    }
}

QTEST_GUILESS_MAIN(TstMipiDsiLp)
#include "tst_MipiDsiLp.moc"
