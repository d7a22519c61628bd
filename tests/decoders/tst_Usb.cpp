#include "DecoderChecks.h"
#include "LinePart.h"
#include "PcapFields.h"
#include "UsbAnalyzer.h"
#include "UsbNames.h"

#include <QtTest>

#include <cstdint>
#include <string>
#include <vector>

using Texts = std::vector<std::string>;
using Bytes = std::vector<std::uint8_t>;

namespace {

constexpr std::uint32_t dpChannel = 0;
constexpr std::uint32_t dmChannel = 1;
constexpr const char *fullLines = "dp=0,dm=1,speed=full";
constexpr const char *lowLines = "dp=0,dm=1,speed=low";
constexpr std::int64_t parts = 1000; ///< of a bit

/// The check of 7.1.9 and 8.3.5 by division, bit by bit as sent, and complemented.
std::uint32_t check(const std::vector<bool> &bits, unsigned width, std::uint32_t polynomial)
{
    const std::uint32_t all = (1U << width) - 1U;
    std::uint32_t rest = all;
    for (const bool bit : bits) {
        const bool out = ((rest >> (width - 1) & 1U) != 0) != bit;
        rest = (rest << 1 ^ (out ? polynomial : 0U)) & all;
    }
    return rest ^ all;
}

/// Both lines of a bus; a bit has any number of samples, also a fraction.
class Wire {
public:
    /// @param samplesPerBit  in thousandths
    explicit Wire(bool fullSpeed = true, std::int64_t samplesPerBit = 8000)
        : m_j(true), m_k(false), m_fullSpeed(fullSpeed), m_bit(samplesPerBit)
    {}
    Wire &state(bool j, bool k)
    {
        at(m_j).set(j);
        at(m_k).set(k);
        return *this;
    }
    Wire &wait(std::int64_t bits)
    {
        m_time += bits * m_bit;
        return *this;
    }
    Wire &samples(std::int64_t count)
    {
        m_time += count * parts;
        return *this;
    }
    Wire &idle(std::int64_t bits) { return state(true, false).wait(bits); }
    Wire &se0(std::int64_t bits) { return state(false, false).wait(bits); }
    /// Bits with stuffing, as a packet without its end; begins with J before it.
    Wire &bits(const std::vector<bool> &list, bool isStuffed = true)
    {
        bool j = true;
        int ones = 0;
        for (const bool one : list) {
            j = one ? j : !j;
            state(j, !j).wait(1);
            ones = one ? ones + 1 : 0;
            if (ones == 6 && isStuffed) {
                j = !j;
                state(j, !j).wait(1);
                ones = 0;
            }
        }
        return *this;
    }
    static std::vector<bool> bitsOf(const Bytes &bytes)
    {
        std::vector<bool> list;
        for (const std::uint8_t byte : bytes) {
            for (unsigned i = 0; i < 8; ++i) {
                list.push_back((byte >> i & 1U) != 0);
            }
        }
        return list;
    }
    /// @param content  from the sync pattern on
    Wire &raw(const Bytes &content)
    {
        starts.push_back(m_time / parts);
        bits(bitsOf(content)).se0(2);
        ends.push_back(m_time / parts - 1);
        return idle(2);
    }
    Wire &token(std::uint8_t pid, std::uint32_t content, std::uint32_t damage = 0)
    {
        std::vector<bool> list;
        for (unsigned i = 0; i < 11; ++i) {
            list.push_back((content >> i & 1U) != 0);
        }
        const std::uint32_t crc = check(list, 5, 0x05) ^ damage;
        std::uint32_t all = content;
        for (unsigned i = 0; i < 5; ++i) {
            all |= (crc >> (4 - i) & 1U) << (11 + i);
        }
        return raw({0x80, pid, std::uint8_t(all), std::uint8_t(all >> 8)});
    }
    Wire &data(std::uint8_t pid, const Bytes &bytes, std::uint32_t damage = 0)
    {
        const std::uint32_t crc = check(bitsOf(bytes), 16, 0x8005) ^ damage;
        Bytes all = {0x80, pid};
        all.insert(all.end(), bytes.begin(), bytes.end());
        std::uint32_t sent = 0;
        for (unsigned i = 0; i < 16; ++i) {
            sent |= (crc >> (15 - i) & 1U) << i;
        }
        all.push_back(std::uint8_t(sent));
        all.push_back(std::uint8_t(sent >> 8));
        return raw(all);
    }
    Wire &handshake(std::uint8_t pid) { return raw({0x80, pid}); }
    [[nodiscard]] std::int64_t now() const { return m_time / parts; }
    [[nodiscard]] std::int64_t rate() const { return (m_fullSpeed ? 12000000 : 1500000) * m_bit / parts; }
    [[nodiscard]] std::unique_ptr<TestCapture> capture(std::int64_t length = -1, std::int64_t from = 0) const
    {
        auto made = std::make_unique<TestCapture>(rate(), (length < 0 ? now() : length) - from);
        const EdgeLine *lines[] = {m_fullSpeed ? &m_j : &m_k, m_fullSpeed ? &m_k : &m_j};
        for (std::uint32_t i = 0; i < 2; ++i) {
            addPart(*made, i, *lines[i], from);
        }
        return made;
    }

    std::vector<std::int64_t> starts; ///< the first edge of each packet
    std::vector<std::int64_t> ends;   ///< the last sample of its SE0

private:
    EdgeLine &at(EdgeLine &line) { return line.holdUntil(m_time / parts); }

    EdgeLine m_j;
    EdgeLine m_k;
    bool m_fullSpeed;
    std::int64_t m_bit;
    std::int64_t m_time = 0; ///< in thousandths of a sample
};

class Decoded : public DecodeDesk {
public:
    explicit Decoded(const Wire &wire, const std::string &settings = fullLines, std::int64_t length = -1,
                     std::int64_t from = 0)
        : DecodeDesk(std::make_unique<UsbAnalyzer>(), settings), m_capture(wire.capture(length, from))
    {
        run(*m_capture);
    }
    /// All but transactions.
    [[nodiscard]] Texts packets() const
    {
        Texts list;
        for (const DecodedFrame &one : frames()) {
            if (one.kind != "transaction") {
                list.push_back(one.summary());
            }
        }
        return list;
    }
    [[nodiscard]] Texts transactions() const
    {
        Texts list;
        for (const DecodedFrame &one : frames()) {
            if (one.kind == "transaction") {
                list.push_back(one.text);
            }
        }
        return list;
    }

private:
    std::unique_ptr<TestCapture> m_capture;
};

const Bytes deviceDescriptor = {18, 1, 0x10, 0x01, 0, 0, 0, 8, 0x34, 0x12, 0x78, 0x56, 0, 1, 0, 0, 0, 1};

} // namespace

class TstUsb : public QObject {
    Q_OBJECT

private slots:
    void eachPacketHasItsValues_data();
    void eachPacketHasItsValues();
    void packetsBeginAndEndOnTheWire();
    void stuffBitsAreTakenOutEverywhere();
    void wrongChecksAreTold();
    void aWrongSyncPatternIsTold();
    void whatIsWrongHasAnErrorCross();
    void sevenOnesBreakAPacket();
    void packetsThatAreCutShortAreTold();
    void theBitRateMayDiffer_data();
    void theBitRateMayDiffer();
    void skewOfEdgesIsNoEndOfPacket();
    void keepAlivesAreThoseOfLowSpeed();
    void anSe0Of2500NanosecondsIsAReset();
    void threeMillisecondsOfIdleAreASuspend();
    void aLongKIsAResume();
    void lowSpeedPacketsFollowAPreamble_data();
    void lowSpeedPacketsFollowAPreamble();
    void theSpeedIsFound_data();
    void theSpeedIsFound();
    void transactionsHoldTheirPackets();
    void anAnswerThatComesTooLateIsNone();
    void controlTransfersTellTheirRequest();
    void dataThatIsSentAgainCountsOnce();
    void requestsHaveTheirNames_data();
    void requestsHaveTheirNames();
    void configurationsTellWhatIsInThem();
    void numbersOfRequestsFollowTheBase();
    void bubblesGoFromShortToLong();
    void aCaptureMayBeginWithinAPacket();
    void nothingFalseIsShownWhereTheCaptureEnds();
    void exportsCanBeReadByOthers();
    void theSimulationIsDecodedAsItWasSent_data();
    void theSimulationIsDecodedAsItWasSent();
    void aTooLowSampleRateIsRefused();
    void randomEdgesGiveFramesInOrder();
};

void TstUsb::eachPacketHasItsValues_data()
{
    QTest::addColumn<int>("pid");
    QTest::addColumn<QString>("name");
    const std::pair<int, const char *> handshakes[] = {{0xd2, "ACK"},  {0x5a, "NAK"},     {0x1e, "STALL"},
                                                       {0x96, "NYET"}, {0x33, "UNKNOWN"}, {0xd3, "UNKNOWN"}};
    for (const auto &[pid, name] : handshakes) {
        QTest::addRow("%s %02x", name, pid) << pid << QString::fromLatin1(name);
    }
}

void TstUsb::eachPacketHasItsValues()
{
    QFETCH(int, pid);
    QFETCH(QString, name);
    for (const bool fullSpeed : {true, false}) {
        Wire wire(fullSpeed);
        wire.idle(20).token(0xa5, 1654).token(0xe1, 54 | 15 << 7).token(0xb4, 127).data(0xc3, {});
        wire.data(0x4b, {0x00, 0xff}).handshake(std::uint8_t(pid)).idle(40);
        QCOMPARE(Decoded(wire, fullSpeed ? fullLines : lowLines).packets(),
                 (Texts{"packet pid=SOF n=1654 err=0", "packet pid=OUT addr=54 ep=15 err=0",
                        "packet pid=PING addr=127 ep=0 err=0", "packet pid=DATA0 data= err=0",
                        "packet pid=DATA1 data=00FF err=0", "packet pid=" + name.toStdString() + " err=0"}));
    }
}

void TstUsb::packetsBeginAndEndOnTheWire()
{
    Wire wire;
    wire.idle(20).token(0xa5, 1).data(0xc3, {1, 2, 3}).handshake(0xd2).idle(40);
    const Decoded desk(wire);
    QCOMPARE(desk.frames().size(), std::size_t(3));
    for (std::size_t i = 0; i < 3; ++i) {
        QCOMPARE(desk.frame(i).first, wire.starts[i]);
        QCOMPARE(desk.frame(i).last, wire.ends[i]);
    }
}

void TstUsb::stuffBitsAreTakenOutEverywhere()
{
    for (unsigned shift = 0; shift < 8; ++shift) {
        const Bytes bytes = {std::uint8_t(0xff << shift), 0xff, std::uint8_t(0x3f << shift), 0x7e, 0xff, 0xff};
        Wire wire;
        wire.idle(20).data(0xc3, bytes).idle(40);
        std::string hex;
        for (const std::uint8_t byte : bytes) {
            hex += QString::asprintf("%02X", unsigned(byte)).toStdString();
        }
        QCOMPARE(Decoded(wire).packets(), Texts{"packet pid=DATA0 data=" + hex + " err=0"});
    }
}

void TstUsb::wrongChecksAreTold()
{
    for (unsigned bit = 0; bit < 16; ++bit) {
        Wire wire;
        wire.idle(20).token(0x69, 5, 1U << bit % 5).idle(40).data(0x4b, {1, 2}, 1U << bit).idle(40);
        const Decoded desk(wire);
        QCOMPARE(desk.packets(), (Texts{"packet pid=IN addr=5 ep=0 err=1", "packet pid=DATA1 data=0102 err=1"}));
        QCOMPARE(desk.frame(0).text, std::string("IN, address 0x05, endpoint 0x0, CRC error"));
    }
}

void TstUsb::aWrongSyncPatternIsTold()
{
    Wire wire;
    wire.idle(20).raw({0x40, 0xd2}).idle(40);
    const Decoded desk(wire);
    QCOMPARE(desk.packets(), Texts{"packet pid=ACK err=1"});
    QCOMPARE(desk.frame(0).text, std::string("ACK, wrong sync pattern"));
    Wire noise;
    noise.idle(20).raw({0x40, 0xd3}).raw({0x40}).bits(Wire::bitsOf({0x40, 0xd2})).idle(40).handshake(0x5a).idle(40);
    QCOMPARE(Decoded(noise).packets(), Texts{"packet pid=NAK err=0"});
}

void TstUsb::whatIsWrongHasAnErrorCross()
{
    Wire wire;
    wire.idle(20).token(0x69, 5).data(0x4b, {1, 2}).handshake(0xd2).idle(40); // all right
    wire.token(0x69, 5, 1).idle(40).data(0x4b, {1, 2}, 1).idle(40).handshake(0x33).idle(40).raw({0x40, 0xd2}).idle(40);
    std::vector<std::int64_t> crosses;
    for (const auto &marker : Decoded(wire).markers(dpChannel)) {
        if (marker.type == MarkerType::ErrorX) {
            crosses.push_back(std::int64_t(marker.sample));
        }
    }
    QCOMPARE(crosses,
             (std::vector<std::int64_t>{wire.ends[3], wire.ends[4], wire.ends[5], wire.starts[6], wire.ends[6]}));
}

void TstUsb::sevenOnesBreakAPacket()
{
    Wire wire;
    std::vector<bool> bits = Wire::bitsOf({0x80, 0xc3, 0x01});
    bits.insert(bits.end(), 7, true);
    wire.idle(20).bits(bits, false).state(true, false).wait(20).handshake(0xd2).idle(40);
    const Decoded desk(wire);
    QCOMPARE(desk.packets(), (Texts{"packet pid=DATA0 data= err=1", "error", "packet pid=ACK err=0"}));
    QCOMPARE(desk.frame(1).text, std::string("Bit stuffing error"));
    QCOMPARE(desk.markers(dpChannel)[1].type, MarkerType::ErrorX);
}

void TstUsb::packetsThatAreCutShortAreTold()
{
    Wire wire;
    wire.idle(20).raw({0x80}).raw({0x80, 0x69}).raw({0x80, 0x69, 0x01}).raw({0x80, 0xc3, 0x01}).idle(40);
    QCOMPARE(Decoded(wire).packets(), (Texts{"packet pid=Invalid err=0", "packet pid=IN addr=0 ep=0 err=1",
                                             "packet pid=IN addr=0 ep=0 err=1", "packet pid=DATA0 data= err=1"}));
}

void TstUsb::theBitRateMayDiffer_data()
{
    QTest::addColumn<bool>("fullSpeed");
    QTest::addColumn<qint64>("nominal"); // thousandths of samples a bit
    QTest::addColumn<qint64>("sent");
    QTest::newRow("full speed, 0.25 % fast") << true << qint64(8000) << qint64(7980);
    QTest::newRow("full speed, 0.25 % slow") << true << qint64(8000) << qint64(8020);
    QTest::newRow("low speed, 1.5 % fast") << false << qint64(8000) << qint64(7880);
    QTest::newRow("low speed, 1.5 % slow") << false << qint64(8000) << qint64(8120);
    QTest::newRow("two samples a bit") << true << qint64(2000) << qint64(2000);
    QTest::newRow("two samples a bit, fast") << true << qint64(2000) << qint64(1995);
    QTest::newRow("two samples a bit, slow") << true << qint64(2000) << qint64(2005);
    QTest::newRow("two samples a bit, low speed, fast") << false << qint64(2000) << qint64(1975);
    QTest::newRow("two samples a bit, low speed, slow") << false << qint64(2000) << qint64(2025);
    QTest::newRow("a bit more than two samples a bit") << true << qint64(2083) << qint64(2083);
    QTest::newRow("a bit more than two samples a bit, slow") << true << qint64(2083) << qint64(2088);
    QTest::newRow("two samples and a quarter a bit, fast") << false << qint64(2250) << qint64(2217);
    QTest::newRow("an odd number of samples") << true << qint64(4167) << qint64(4167);
}

/// 7.1.11: a host is within 0.05 %, a device of full speed within 0.25 %, of low speed within 1.5 %.
void TstUsb::theBitRateMayDiffer()
{
    QFETCH(bool, fullSpeed);
    QFETCH(qint64, nominal);
    QFETCH(qint64, sent);
    Bytes bytes;
    for (unsigned i = 0; i < (fullSpeed ? 1023 : 8); ++i) {
        bytes.push_back(std::uint8_t(i * i));
    }
    Wire wire(fullSpeed, sent);
    wire.idle(20).data(0xc3, bytes).handshake(0xd2).idle(40);
    const auto made = wire.capture();
    made->device().smpFrequ = (fullSpeed ? 12000000 : 1500000) * nominal / parts;
    DecodeDesk desk(std::make_unique<UsbAnalyzer>(), fullSpeed ? fullLines : lowLines);
    desk.run(*made);
    QCOMPARE(desk.frames().size(), std::size_t(2));
    QCOMPARE(desk.frame(0).value("err"), std::string("0"));
    QCOMPARE(desk.frame(0).value("data").size(), 2 * bytes.size());
}

/// Both lines change up to a third of a bit apart.
void TstUsb::skewOfEdgesIsNoEndOfPacket()
{
    Wire wire;
    wire.idle(20).token(0x69, 5).data(0xc3, {0x55, 0x0f, 0xff}).handshake(0xd2).idle(40);
    const Texts straight = Decoded(wire).packets();
    const auto near = wire.capture();
    for (const std::int64_t skew : {-2, -1, 1, 2}) {
        TestCapture capture(wire.rate(), wire.now());
        for (std::uint32_t i = 0; i < 2; ++i) {
            lux::detail::RunControl control;
            lux::ChannelReader reader(near->root(i), control, wire.now());
            const bool level = reader.level();
            std::vector<std::int64_t> edges;
            while (reader.hasEdge()) {
                edges.push_back(reader.nextEdge() + (i == 1 ? skew : 0));
            }
            capture.channel(i, level, edges);
        }
        DecodeDesk desk(std::make_unique<UsbAnalyzer>(), fullLines);
        desk.run(capture);
        Texts got;
        for (const DecodedFrame &frame : desk.frames()) {
            if (frame.kind == "packet") {
                got.push_back(frame.summary());
            }
        }
        QCOMPARE(got, straight);
    }
}

void TstUsb::keepAlivesAreThoseOfLowSpeed()
{
    Wire low(false);
    low.idle(50).se0(2).idle(1500).se0(2).idle(40);
    const Decoded desk(low, lowLines);
    QCOMPARE(desk.packets(), (Texts{"keepalive", "keepalive"}));
    QCOMPARE(desk.frame(0).first, std::int64_t(400));
    QCOMPARE(desk.frame(0).last, std::int64_t(415));
    Wire full;
    full.idle(50).se0(2).idle(1500);
    QVERIFY(Decoded(full).packets().empty());
}

void TstUsb::anSe0Of2500NanosecondsIsAReset()
{
    for (const bool fullSpeed : {true, false}) {
        for (const std::int64_t samples : {-1, 0}) {
            Wire wire(fullSpeed, 20000);
            wire.idle(50).state(false, false).samples(wire.rate() / 400000 + samples).idle(40);
            const bool isReset = samples == 0;
            QCOMPARE(Decoded(wire, fullSpeed ? fullLines : lowLines).packets(), isReset     ? Texts{"reset"}
                                                                                : fullSpeed ? Texts()
                                                                                            : Texts{"keepalive"});
        }
    }
    Wire cut;
    cut.idle(50).se0(10000);
    QVERIFY(Decoded(cut).packets().empty());
}

void TstUsb::threeMillisecondsOfIdleAreASuspend()
{
    for (const std::int64_t samples : {-1, 0}) {
        Wire wire(true, 4000);
        wire.idle(20).handshake(0xd2);
        const std::int64_t begin = wire.ends.back() + 1;
        wire.samples(begin + wire.rate() / 1000 * 3 - wire.now() + samples).handshake(0xd2).idle(40);
        const Texts got = Decoded(wire).packets();
        QCOMPARE(got.size(), std::size_t(samples < 0 ? 2 : 3));
        QCOMPARE(got[1] == "suspend", samples == 0);
    }
}

void TstUsb::aLongKIsAResume()
{
    Wire wire(true, 2000);
    wire.idle(12 * 4000).state(false, true).wait(12 * 20000).se0(10).idle(40).handshake(0xd2).idle(40);
    QCOMPARE(Decoded(wire).packets(), (Texts{"suspend", "resume", "packet pid=ACK err=0"}));
}

/// 8.6.5: hubs send the packet behind a PRE on at low speed, with the polarity of full speed on this bus.
void TstUsb::lowSpeedPacketsFollowAPreamble_data()
{
    QTest::addColumn<qint64>("skew"); // samples by which D- changes later; a bit of low speed has 64
    QTest::newRow("straight") << qint64(0);
    QTest::newRow("D- late") << qint64(20);
    QTest::newRow("D- early") << qint64(-20);
}

void TstUsb::lowSpeedPacketsFollowAPreamble()
{
    QFETCH(qint64, skew);
    Wire wire(true, 8000);
    wire.idle(20).bits(Wire::bitsOf({0x80, 0x3c})).idle(6);
    const std::int64_t before = wire.now();
    Wire low(true, 64000);
    low.samples(before).token(0x69, 5).handshake(0x5a).idle(40);
    wire.samples(low.now() - before).idle(100).handshake(0xd2).idle(40);
    const auto fast = wire.capture();
    const auto slow = low.capture();
    TestCapture capture(wire.rate(), wire.now());
    for (std::uint32_t i = 0; i < 2; ++i) {
        std::vector<std::int64_t> edges;
        for (const TestCapture *part : {fast.get(), slow.get()}) {
            lux::detail::RunControl control;
            lux::ChannelReader reader(part->root(i), control, wire.now());
            while (reader.hasEdge()) {
                edges.push_back(reader.nextEdge() + (part == slow.get() && i == 1 ? skew : 0));
            }
        }
        std::sort(edges.begin(), edges.end());
        capture.channel(i, i == 0, edges);
    }
    DecodeDesk desk(std::make_unique<UsbAnalyzer>(), fullLines);
    desk.run(capture);
    Texts got;
    for (const DecodedFrame &frame : desk.frames()) {
        if (frame.kind == "packet") {
            got.push_back(frame.summary());
        }
    }
    QCOMPARE(got, (Texts{"packet pid=PRE err=0", "packet pid=IN addr=5 ep=0 err=0", "packet pid=NAK err=0",
                         "packet pid=ACK err=0"}));
}

void TstUsb::theSpeedIsFound_data()
{
    QTest::addColumn<bool>("fullSpeed");
    QTest::newRow("full") << true;
    QTest::newRow("low") << false;
}

void TstUsb::theSpeedIsFound()
{
    QFETCH(bool, fullSpeed);
    Wire wire(fullSpeed, fullSpeed ? 8000 : 64000);
    wire.idle(20).token(0x69, 5).handshake(0x5a).idle(40);
    const Decoded desk(wire, "dp=0,dm=1");
    QCOMPARE(desk.packets(), (Texts{"packet pid=IN addr=5 ep=0 err=0", "packet pid=NAK err=0"}));
    QCOMPARE(desk.message(), std::string(fullSpeed ? "Speed found: full speed" : "Speed found: low speed"));
    const Decoded wrong(wire, fullSpeed ? lowLines : fullLines);
    QCOMPARE(wrong.message(), std::string(fullSpeed ? "The idle level of the bus is that of full speed"
                                                    : "The idle level of the bus is that of low speed"));
    Wire quiet(fullSpeed);
    quiet.idle(1000).state(false, true).samples(1).idle(10);
    QVERIFY(Decoded(quiet, "dp=0,dm=1").packets().empty());
}

void TstUsb::transactionsHoldTheirPackets()
{
    Wire wire;
    wire.idle(20).token(0xe1, 5 | 2 << 7).data(0xc3, {1, 2}).handshake(0xd2).idle(40);
    wire.token(0x69, 5 | 1 << 7).handshake(0x5a).idle(40).token(0x69, 6 | 3 << 7).data(0x4b, {9}).idle(40);
    wire.token(0xe1, 7).idle(40);
    const Decoded desk(wire);
    QCOMPARE(desk.transactions(), (Texts{"OUT 0x05.0x2, ACK: 0x01 0x02", "IN 0x05.0x1, NAK",
                                         "IN 0x06.0x3, no handshake: 0x09", "OUT 0x07.0x0, no answer"}));
    QCOMPARE(desk.frame(0).summary(), std::string("transaction pid=OUT addr=5 ep=2 data=0102 result=ACK"));
    QCOMPARE(desk.frame(0).first, wire.starts[0]);
    QCOMPARE(desk.frame(0).last, wire.ends[2]);
}

void TstUsb::anAnswerThatComesTooLateIsNone()
{
    for (const std::int64_t bits : {16, 40}) {
        Wire wire;
        wire.idle(20).token(0x69, 5).idle(bits).handshake(0x5a).idle(40);
        QCOMPARE(Decoded(wire).transactions(), Texts{bits < 30 ? "IN 0x05.0x0, NAK" : "IN 0x05.0x0, no answer"});
    }
}

void TstUsb::controlTransfersTellTheirRequest()
{
    Wire wire;
    wire.idle(20).token(0x2d, 5).data(0xc3, {0x80, 6, 0, 1, 0, 0, 18, 0}).handshake(0xd2).idle(40);
    for (std::size_t at = 0; at < 18; at += 8) {
        const auto from = deviceDescriptor.begin() + std::ptrdiff_t(at);
        wire.token(0x69, 5).handshake(0x5a).idle(40);
        wire.token(0x69, 5);
        wire.data(at % 16 == 0 ? 0x4b : 0xc3, Bytes(from, from + std::ptrdiff_t(std::min<std::size_t>(8, 18 - at))));
        wire.handshake(0xd2).idle(40);
    }
    wire.token(0xe1, 5).data(0x4b, {}).handshake(0xd2).idle(40);
    const Texts got = Decoded(wire).transactions();
    QCOMPARE(got.size(), std::size_t(8));
    QCOMPARE(got.front(), std::string("SETUP 0x05.0x0, ACK: GET_DESCRIPTOR Device 0, 18 bytes"));
    QCOMPARE(got.back(),
             std::string("OUT 0x05.0x0, ACK: end of GET_DESCRIPTOR Device 0, 18 bytes: USB 1.10, class 0x00, "
                         "vendor 0x1234, product 0x5678"));
    Wire noData;
    noData.idle(20).token(0x2d, 0).data(0xc3, {0, 5, 13, 0, 0, 0, 0, 0}).handshake(0xd2).idle(40);
    noData.token(0x69, 0).data(0x4b, {}).handshake(0xd2).idle(40);
    QCOMPARE(Decoded(noData).transactions(),
             (Texts{"SETUP 0x00.0x0, ACK: SET_ADDRESS 0x0D", "IN 0x00.0x0, ACK: end of SET_ADDRESS 0x0D"}));
}

/// The host's acknowledgement of the first packet has not reached the device.
void TstUsb::dataThatIsSentAgainCountsOnce()
{
    Wire wire;
    wire.idle(20).token(0x2d, 5).data(0xc3, {0x80, 6, 0, 1, 0, 0, 18, 0}).handshake(0xd2).idle(40);
    const auto part = [](int from, int to) {
        return Bytes(deviceDescriptor.begin() + from, deviceDescriptor.begin() + to);
    };
    for (const auto &[pid, bytes] : {std::pair(0x4b, part(0, 8)), std::pair(0x4b, part(0, 8)),
                                     std::pair(0xc3, part(8, 16)), std::pair(0x4b, part(16, 18))}) {
        wire.token(0x69, 5).data(std::uint8_t(pid), bytes).handshake(0xd2).idle(40);
    }
    wire.token(0xe1, 5).data(0x4b, {}).handshake(0xd2).idle(40);
    const Texts got = Decoded(wire).transactions();
    QCOMPARE(got.size(), std::size_t(6));
    QCOMPARE(got.back(),
             std::string("OUT 0x05.0x0, ACK: end of GET_DESCRIPTOR Device 0, 18 bytes: USB 1.10, class 0x00, "
                         "vendor 0x1234, product 0x5678"));
}

void TstUsb::requestsHaveTheirNames_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *hex, const char *text) {
        QTest::newRow(text) << QByteArray::fromHex(hex) << QString::fromLatin1(text);
    };
    row("8000000000000200", "GET_STATUS, value 0x0000, index 0x0000, 2 bytes");
    row("8006030309040a00", "GET_DESCRIPTOR String 3, 10 bytes");
    row("810600220000ff00", "GET_DESCRIPTOR HID report 0, 255 bytes");
    row("0009010000000000", "SET_CONFIGURATION 1");
    row("210a000000000000", "SET_IDLE, value 0x0000, index 0x0000");
    row("a101000100000100", "GET_REPORT, value 0x0100, index 0x0000, 1 byte");
    row("c01d000000000400", "vendor request 0x1D, value 0x0000, index 0x0000, 4 bytes");
    row("8002000000000000", "request 0x02, value 0x0000, index 0x0000");
    row("a006002900004700", "hub GET_DESCRIPTOR, value 0x2900, index 0x0000, 71 bytes");
    row("2303040002000000", "port SET_FEATURE, value 0x0004, index 0x0002");
    row("2309000001000000", "port RESET_TT, value 0x0000, index 0x0001");
    row("a002000000000000", "class request 0x02, value 0x0000, index 0x0000");
    row("a206000000000000", "class request 0x06, value 0x0000, index 0x0000");
}

void TstUsb::requestsHaveTheirNames()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, text);
    const Bytes setup(bytes.begin(), bytes.end());
    QCOMPARE(QString::fromStdString(usb::requestText(setup, DisplayBase::Hexadecimal)), text);
}

void TstUsb::configurationsTellWhatIsInThem()
{
    const Bytes request = {0x80, 6, 0, 2, 0, 0, 255, 0};
    const Bytes answer = {9, 2, 34,   0,    1, 1, 0, 0xa0, 50, 9, 4, 0, 0,    1, 3, 1, 2,
                          0, 9, 0x21, 0x10, 1, 0, 1, 0x22, 52, 0, 7, 5, 0x81, 3, 4, 0, 10};
    QCOMPARE(
        usb::descriptorText(request, answer, DisplayBase::Hexadecimal),
        std::string("Configuration 1, 1 interface, 100 mA; Interface 0 class 0x03; HID; Endpoint 0x1 IN interrupt"));
    QCOMPARE(usb::descriptorText(request, Bytes{4, 3, 'A', 0}, DisplayBase::Decimal), std::string("\"A\""));
    for (std::size_t length = 0; length <= answer.size(); ++length) {
        Bytes part(answer.begin(), answer.begin() + std::ptrdiff_t(length));
        QVERIFY(usb::descriptorText(request, part, DisplayBase::Decimal).size() < 100);
        part.resize(answer.size(), 0xff);
        QVERIFY(usb::descriptorText(request, part, DisplayBase::Decimal).size() < 200);
    }
}

void TstUsb::numbersOfRequestsFollowTheBase()
{
    const Bytes vendor = {0xc0, 0x1d, 2, 1, 3, 0, 4, 0};
    QCOMPARE(usb::requestText(vendor, DisplayBase::Decimal),
             std::string("vendor request 29, value 258, index 3, 4 bytes"));
    const Bytes address = {0, 5, 13, 0, 0, 0, 0, 0};
    QCOMPARE(usb::requestText(address, DisplayBase::Binary), std::string("SET_ADDRESS 0b0001101"));
    const Bytes device = {0x80, 6, 0, 1, 0, 0, 18, 0};
    const Bytes answer = {18, 1, 0x10, 1, 9, 0, 0, 8, 2, 1, 4, 3, 0, 1, 0, 0, 0, 1};
    QCOMPARE(usb::descriptorText(device, answer, DisplayBase::Decimal),
             std::string("USB 1.10, class 9, vendor 258, product 772"));
}

void TstUsb::bubblesGoFromShortToLong()
{
    Wire wire;
    wire.idle(20).token(0x69, 5 | 1 << 7).data(0x4b, {0x41}).handshake(0xd2).idle(40);
    const Decoded desk(wire);
    const Channel dp(0, dpChannel);
    const Channel dm(0, dmChannel);
    QCOMPARE(desk.bubble(1, dp, DisplayBase::Hexadecimal),
             (Texts{"I", "IN", "IN 0x05.0x1", "IN, address 0x05, endpoint 0x1"}));
    QCOMPARE(QString::fromStdString(desk.bubble(2, dp, DisplayBase::Ascii).back()), QStringLiteral("DATA1: \"A\""));
    QCOMPARE(desk.bubble(0, dm, DisplayBase::Decimal), (Texts{"I", "IN", "IN 5.1", "IN 5.1, ACK", "IN 5.1, ACK: 65"}));
    QVERIFY(desk.bubble(0, dp, DisplayBase::Decimal).empty());
    QVERIFY(desk.bubble(1, dm, DisplayBase::Decimal).empty());
}

void TstUsb::aCaptureMayBeginWithinAPacket()
{
    Wire wire;
    wire.idle(20).token(0x69, 5).data(0xc3, {0xaa, 0x00, 0xff}).idle(3).handshake(0xd2).idle(40);
    const std::int64_t end = wire.ends[1];
    for (std::int64_t from = wire.starts[1] + 1; from < end - 16; ++from) {
        const Decoded desk(wire, fullLines, -1, from);
        QCOMPARE(desk.packets(), Texts{"packet pid=ACK err=0"});
        QCOMPARE(desk.frame(0).first, wire.starts[2] - from);
    }
}

void TstUsb::nothingFalseIsShownWhereTheCaptureEnds()
{
    Wire wire;
    wire.idle(20).token(0x69, 5).data(0xc3, {0xaa, 0x00, 0xff}).handshake(0xd2).idle(40).token(0xe1, 6).idle(40);
    const Texts whole = Decoded(wire).packets();
    for (std::int64_t length = 1; length < wire.now(); ++length) {
        const Decoded cut(wire, fullLines, length);
        const Texts got = cut.packets();
        QVERIFY(got.size() <= whole.size());
        for (std::size_t i = 0; i < got.size(); ++i) {
            QCOMPARE(got[i], whole[i]);
        }
        QCOMPARE(decoderChecks::faultOf(cut, length), std::string());
        QVERIFY(cut.transactions().size() <= std::size_t(length > wire.ends[3] + 30 * 8 ? 2 : 1));
    }
}

void TstUsb::exportsCanBeReadByOthers()
{
    Wire wire;
    wire.idle(20).token(0x69, 5).data(0x4b, {1, 2, 3, 4, 5, 6, 7, 8}).handshake(0xd2).raw({0x80}).idle(40);
    const Decoded desk(wire);
    QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("out")).toStdString();
    const std::string pcap = decoderChecks::exported(desk, path + ".pcap", UsbSettings::Pcap);
    QCOMPARE(pcap.size(), std::size_t(24 + (16 + 3) + (16 + 11) + (16 + 1)));
    QCOMPARE(pcap.substr(20, 4), std::string("\x20\x01\x00\x00", 4));                 // LINKTYPE_USB_2_0
    QCOMPARE(pcap.substr(24, 12), std::string("\0\0\0\0\x82\x06\0\0\x03\0\0\0", 12)); // 160 samples of 96 MHz
    QCOMPARE(pcap.substr(40, 2), std::string("\x69\x05"));
    QCOMPARE(pcap.back(), '\xd2');
    const std::string text = decoderChecks::exported(desk, path + ".txt", UsbSettings::Transactions);
    QVERIFY2(text.find(" IN 0x05.0x0, ACK: 0x01 0x02") != std::string::npos, text.c_str());
    const std::string lines = decoderChecks::exported(desk, path + ".csv", UsbSettings::Transactions);
    QVERIFY2(lines.starts_with("time_s,first_sample,last_sample,text\n"), lines.c_str());
    QVERIFY2(lines.find(",\"IN 0x05.0x0, ACK: 0x01 0x02") != std::string::npos, lines.c_str());

    if (pcapFields::reader().isEmpty()) {
        QSKIP("tshark is not installed");
    }
    const QStringList expected = {QStringLiteral("0x69\t5\t0"), QStringLiteral("0x4b\t\t"), QStringLiteral("0xd2\t\t")};
    QCOMPARE(pcapFields::read(pcap, {QStringLiteral("usbll.pid"), QStringLiteral("usbll.device_addr"),
                                     QStringLiteral("usbll.endp")}),
             expected);
}

void TstUsb::theSimulationIsDecodedAsItWasSent_data()
{
    QTest::addColumn<QString>("settings");
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("block");
    QTest::newRow("full speed") << fullLines << 100000000 << 100000;
    QTest::newRow("low speed, small blocks") << lowLines << 10000000 << 997;
    QTest::newRow("auto, two samples a bit") << "dp=0,dm=1" << 24000000 << 65536;
}

void TstUsb::theSimulationIsDecodedAsItWasSent()
{
    QFETCH(QString, settings);
    QFETCH(int, rate);
    QFETCH(int, block);
    const bool isLow = settings == QLatin1String(lowLines);
    DecodeDesk desk(std::make_unique<UsbAnalyzer>(), settings.toStdString());
    desk.run(*desk.simulate(rate, isLow ? 800000 : 2000000, block));
    unsigned number = ~0U;
    std::size_t checked = 0;
    std::size_t preambles = 0;
    std::size_t handshakes[2] = {}; // with a wrong sync pattern, without a known identifier
    bool hasSuspended = false;
    for (const DecodedFrame &frame : desk.frames()) {
        const std::string got = frame.summary();
        const std::string address = std::to_string(number & 0x7fU);
        const std::string bytes = QString::asprintf("%02XFFFF%02X", number & 0xffU, ~number & 0xffU).toStdString();
        if (got == "keepalive" || got.find("SOF") != std::string::npos) {
            ++number;
            QVERIFY(isLow || got == "packet pid=SOF n=" + std::to_string(number & 0x7ffU) + " err=0");
            continue;
        }
        if (number % 64 == 63) {
            QVERIFY2(got == (hasSuspended ? "resume" : "suspend"), got.c_str());
            hasSuspended = !hasSuspended;
            ++checked;
        } else if (!isLow && number % 64 == 31) {
            const std::string out = "pid=OUT addr=" + address + " ep=6 ";
            const Texts expected = {"packet pid=PRE err=0", "packet " + out + "err=0",
                                    "packet pid=DATA0 data=" + bytes + " err=0", "packet pid=NAK err=0",
                                    "transaction " + out + "data=" + bytes + " result=NAK"};
            QVERIFY2(std::find(expected.begin(), expected.end(), got) != expected.end(), got.c_str());
            preambles += got == expected[0] ? 1 : 0;
        } else if (frame.kind == "transaction" && number % 10 != 1) {
            const Texts expected = {"",
                                    "",
                                    "OUT addr=" + address + " ep=2 data=" + bytes + " result=ACK",
                                    "IN addr=" + address + " ep=1 result=NAK",
                                    "IN addr=" + address + " ep=3 result=STALL",
                                    "",
                                    "IN addr=" + address + " ep=4 result=none",
                                    "IN addr=" + address + " ep=5 result=none"};
            QCOMPARE(QString::fromStdString(got), QString::fromStdString("transaction pid=" + expected[number % 10]));
            ++checked;
        } else if (number % 10 == 6 && got.find("DATA0") != std::string::npos) {
            QCOMPARE(got, "packet pid=DATA0 data=" + bytes + " err=1");
        } else if (number % 10 == 0) {
            QCOMPARE(QString::fromStdString(got), QStringLiteral("reset"));
        } else if (number % 10 == 5) {
            QCOMPARE(got, "packet pid=IN addr=" + address + " ep=15 err=1");
        } else if (number % 10 >= 8) {
            const bool isKnown = number % 10 == 8;
            QCOMPARE(got, std::string(isKnown ? "packet pid=ACK err=1" : "packet pid=UNKNOWN err=0"));
            ++handshakes[isKnown ? 0 : 1];
        }
    }
    QVERIFY(checked > 20);
    QVERIFY(handshakes[0] > 1 && handshakes[1] > 1);
    QVERIFY(isLow || preambles > 0);
}

void TstUsb::aTooLowSampleRateIsRefused()
{
    Wire wire(true, 1999);
    wire.idle(20).handshake(0xd2);
    const Decoded desk(wire);
    QCOMPARE(desk.analyzer->GetDecodeStatus(), DecodeStatus::Failed);
    QVERIFY(desk.message().find("24000000 Hz") != std::string::npos);
}

void TstUsb::randomEdgesGiveFramesInOrder()
{
    constexpr std::int64_t length = 60000;
    for (const std::int64_t mean : {1, 4, 8, 64, 1000}) {
        for (const char *settings : {fullLines, lowLines, "dp=0,dm=1"}) {
            TestCapture capture(96000000, length);
            capture.channel(0, true, decoderChecks::randomEdges(1, mean, length));
            capture.channel(1, false, decoderChecks::randomEdges(2, mean, length));
            DecodeDesk desk(std::make_unique<UsbAnalyzer>(), settings);
            QCOMPARE(decoderChecks::faultOf(desk.run(capture), length), std::string());
        }
    }
}

QTEST_GUILESS_MAIN(TstUsb)
#include "tst_Usb.moc"
