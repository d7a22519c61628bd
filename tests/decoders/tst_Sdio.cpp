#include "DecoderChecks.h"
#include "SdioAnalyzer.h"

#include <QtTest>

#include <cstdint>
#include <string>
#include <vector>

using Texts = std::vector<std::string>;

namespace {

constexpr std::int64_t sampleRate = 10000000;
constexpr std::int64_t half = 4; ///< samples of half a clock
constexpr std::uint32_t cmdChannel = 1;
constexpr std::uint32_t dat0Channel = 2;
constexpr const char *commandLines = "clk=0,cmd=1";
constexpr const char *narrow = "clk=0,cmd=1,d0=2,width=1";
constexpr const char *wide = "clk=0,cmd=1,d0=2,d1=3,d2=4,d3=5,width=4";
constexpr const char *doubled = "clk=0,cmd=1,d0=2,d1=3,d2=4,d3=5,ddr=true";

/// The remainder of a division, bit by bit.
std::uint32_t remainder(const std::vector<bool> &bits, unsigned width, std::uint32_t polynomial)
{
    std::uint32_t rest = 0;
    for (const bool bit : bits) {
        const bool out = ((rest >> (width - 1) & 1U) != 0) != bit;
        rest = (rest << 1 ^ (out ? polynomial : 0U)) & ((1U << width) - 1U);
    }
    return rest;
}

std::vector<bool> bitsOf(std::uint64_t value, unsigned count)
{
    std::vector<bool> bits;
    while (count > 0) {
        bits.push_back((value >> --count & 1U) != 0);
    }
    return bits;
}

/// Host and card, as 3.6 of the standard draws their lines: changes at the clock's fall, taken at its rise.
class Wire {
public:
    Wire() : m_clk(false), m_lines(5, EdgeLine(true)) {}

    Wire &clock(bool cmd = true, unsigned dat = 15)
    {
        at(m_lines[0]).set(cmd);
        for (unsigned i = 0; i < 4; ++i) {
            at(m_lines[i + 1]).set((dat >> i & 1U) != 0);
        }
        m_now += half;
        at(m_clk).set(true);
        m_now += half;
        at(m_clk).set(false);
        return *this;
    }
    Wire &idle(unsigned clocks = 8)
    {
        for (unsigned i = 0; i < clocks; ++i) {
            clock();
        }
        return *this;
    }
    Wire &bits(const std::vector<bool> &list)
    {
        for (const bool bit : list) {
            clock(bit);
        }
        return *this;
    }
    /// @param head  start and transmission bit and the index @param damage  is added to the check and the end bit
    Wire &token(std::uint32_t head, std::uint32_t argument, unsigned damage = 0)
    {
        std::vector<bool> content = bitsOf(std::uint64_t(head) << 32 | argument, 40);
        starts.push_back(m_now + half);
        const std::uint32_t tail = (remainder(content, 7, 0x09) << 1 | 1U) ^ damage;
        bits(content).bits(bitsOf(tail, 8));
        ends.push_back(m_now - 1);
        return idle();
    }
    Wire &command(std::uint32_t index, std::uint32_t argument, unsigned damage = 0)
    {
        return token(0x40 | index, argument, damage);
    }
    Wire &response(std::uint32_t index, std::uint32_t argument = 0x900) { return token(index, argument); }
    Wire &block(const std::vector<std::uint8_t> &bytes, unsigned width, unsigned damage = 0)
    {
        std::vector<std::vector<bool>> lines(width);
        for (const std::uint8_t byte : bytes) {
            for (unsigned bit = 0; bit < 8; ++bit) {
                lines[width - 1 - bit % width].push_back((byte >> (7 - bit) & 1U) != 0);
            }
        }
        for (std::vector<bool> &line : lines) {
            const std::uint32_t crc = remainder(line, 16, 0x1021) ^ (&line == lines.data() ? damage : 0U);
            const std::vector<bool> tail = bitsOf(crc, 16);
            line.insert(line.begin(), false);
            line.insert(line.end(), tail.begin(), tail.end());
            line.push_back(true);
        }
        starts.push_back(m_now + half);
        for (std::size_t i = 0; i < lines[0].size(); ++i) {
            unsigned mask = 15;
            for (unsigned line = 0; line < width; ++line) {
                mask ^= lines[line][i] ? 0U : 1U << line;
            }
            clock(true, mask);
        }
        ends.push_back(m_now - 1);
        return idle();
    }
    /// A clock with other data at its rise than at its fall.
    Wire &bothEdges(unsigned rise, unsigned fall)
    {
        for (const bool isRise : {true, false}) {
            m_now += half / 2;
            for (unsigned i = 0; i < 4; ++i) {
                at(m_lines[i + 1]).set(((isRise ? rise : fall) >> i & 1U) != 0);
            }
            m_now += half / 2;
            at(m_clk).set(isRise);
        }
        return *this;
    }
    /// On four lines: the first byte of each two with the rises, the second with the falls, and a check for each.
    /// @param damage  is added to the checks of DAT0, in the lower half to that of the rises
    Wire &doubledBlock(const std::vector<std::uint8_t> &bytes, std::uint32_t damage = 0)
    {
        std::vector<bool> lines[2][4];
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            for (unsigned bit = 0; bit < 8; ++bit) {
                lines[i % 2][3 - bit % 4].push_back((bytes[i] >> (7 - bit) & 1U) != 0);
            }
        }
        for (std::vector<bool> &line : lines[1]) {
            line.resize(lines[0][0].size()); // behind an odd number of bytes the falls carry zeros
        }
        for (unsigned edge = 0; edge < 2; ++edge) {
            for (unsigned line = 0; line < 4; ++line) {
                const unsigned wrong = line == 0 ? damage >> (16 * edge) & 0xffffU : 0;
                const std::vector<bool> tail = bitsOf(remainder(lines[edge][line], 16, 0x1021) ^ wrong, 16);
                lines[edge][line].insert(lines[edge][line].end(), tail.begin(), tail.end());
            }
        }
        starts.push_back(m_now + half);
        bothEdges(0, 9); // what the fall behind the start bit carries says nothing
        for (std::size_t i = 0; i < lines[0][0].size(); ++i) {
            unsigned masks[2] = {};
            for (unsigned line = 0; line < 8; ++line) {
                masks[line / 4] |= unsigned(lines[line / 4][line % 4][i]) << line % 4;
            }
            bothEdges(masks[0], masks[1]);
        }
        bothEdges(15, 6);
        ends.push_back(m_now - 1);
        return idle();
    }
    /// DAT0 bit by bit.
    Wire &dat0(const std::string &levels)
    {
        for (const char level : levels) {
            clock(true, level == '1' ? 15 : 14);
        }
        return *this;
    }
    [[nodiscard]] std::int64_t now() const { return m_now; }
    [[nodiscard]] std::unique_ptr<TestCapture> capture(std::int64_t length = -1) const
    {
        auto made = std::make_unique<TestCapture>(sampleRate, length < 0 ? m_now + 1 : length);
        made->channel(0, m_clk);
        for (std::uint32_t i = 0; i < m_lines.size(); ++i) {
            made->channel(i + 1, m_lines[i]);
        }
        return made;
    }

    std::vector<std::int64_t> starts; ///< the rise at the start bit of each token and block
    std::vector<std::int64_t> ends;   ///< the last sample of the clock that takes the end bit

private:
    EdgeLine &at(EdgeLine &line) { return line.holdUntil(m_now); }

    EdgeLine m_clk;
    std::vector<EdgeLine> m_lines; ///< CMD, DAT0 to DAT3
    std::int64_t m_now = 0;
};

class Decoded : public DecodeDesk {
public:
    Decoded(const Wire &wire, const std::string &settings, std::int64_t length = -1)
        : DecodeDesk(std::make_unique<SdioAnalyzer>(), settings), m_capture(wire.capture(length))
    {
        run(*m_capture);
    }

private:
    std::unique_ptr<TestCapture> m_capture;
};

std::string last(const Texts &texts)
{
    return texts.empty() ? std::string() : texts.back();
}

} // namespace

class TstSdio : public QObject {
    Q_OBJECT

private slots:
    void aCommandIsReadAtTheRisesOfTheClock();
    void aWrongCheckAndAWrongEndBitAreTold_data();
    void aWrongCheckAndAWrongEndBitAreTold();
    void theRegisterOfALongResponseHas120Bits();
    void aResponseWithoutCheckIsNoError();
    void aCaptureMayBeginWithAResponse();
    void aTokenThatTheCapturesBeginCutsIsNotShown_data();
    void aTokenThatTheCapturesBeginCutsIsNotShown();
    void theRestBehindACutTokenIsNoCheck();
    void aTokenBehindAPauseIsShownAsItIs();
    void aLineThatIsHeldLowSaysNothing();
    void blocksHaveTheLengthThatCommandsTell_data();
    void blocksHaveTheLengthThatCommandsTell();
    void aWrongCheckOfOneLineIsABlockError();
    void multipleBlocksEndWithAStop();
    void aStopCutsABlock();
    void aBlockThatIsTooShortHidesNoOther();
    void anUndefinedApplicationCommandIsThePlainOne();
    void aWrittenBlockIsAnswered_data();
    void aWrittenBlockIsAnswered();
    void aCardIsBusyBehindR1b();
    void sdioBlocksHaveTheSizeOfTheirFunction();
    void dataWithoutACommandIsNone();
    void applicationCommandsHaveTheirNames();
    void responsesTellStateAndErrors();
    void bubblesGoFromShortToLong();
    void tokensHaveMarkers();
    void aWrongCheckHasAnErrorCross();
    void aTableHasTheWidthOfDataAndTheBitsOfACutToken();
    void anExportHasALineACommand();
    void withoutAWidthTheBusIsAsWideAsItHasLines();
    void aWideBusNeedsItsLines();
    void doubleDataRateTakesDataAtBothEdges_data();
    void doubleDataRateTakesDataAtBothEdges();
    void aWrongCheckOfOneEdgeIsABlockError();
    void aBlockOfDoubleDataRateIsAnswered();
    void aStopCutsABlockOfDoubleDataRate();
    void doubleDataRateNeedsFourLines();
    void nothingFalseIsShownWhereTheCaptureEnds();
    void theSimulationIsDecodedAsItWasSent_data();
    void theSimulationIsDecodedAsItWasSent();
    void positionsBeyondFourThousandMillionAreRight();
    void randomEdgesGiveFramesInOrder();

private:
    static void nothingFalseIsShownOf(const Wire &wire, const char *settings);
};

/// The checks are those of the standard's own examples (4.5).
void TstSdio::aCommandIsReadAtTheRisesOfTheClock()
{
    Wire wire;
    wire.idle().command(17, 0).response(17);
    const Decoded desk(wire, commandLines);
    QCOMPARE(desk.summaries(),
             (Texts{"command idx=17 arg=0 crc=42 ok=1 end=1", "response idx=17 arg=2304 crc=51 ok=1 end=1"}));
    for (std::size_t i = 0; i < 2; ++i) {
        QCOMPARE(desk.frame(i).first, wire.starts[i]);
        QCOMPARE(desk.frame(i).last, wire.ends[i]);
    }
}

void TstSdio::aWrongCheckAndAWrongEndBitAreTold_data()
{
    QTest::addColumn<unsigned>("damage");
    QTest::addColumn<QString>("text");
    QTest::newRow("none") << 0U << "CMD13 SEND_STATUS, argument 0x12340000";
    QTest::newRow("check") << 2U << "CMD13 SEND_STATUS, argument 0x12340000, CRC error";
    QTest::newRow("end bit") << 1U << "CMD13 SEND_STATUS, argument 0x12340000, end bit error";
    QTest::newRow("both") << 0x81U << "CMD13 SEND_STATUS, argument 0x12340000, CRC error, end bit error";
}

void TstSdio::aWrongCheckAndAWrongEndBitAreTold()
{
    QFETCH(unsigned, damage);
    QFETCH(QString, text);
    Wire wire;
    wire.idle().command(13, 0x12340000, damage).command(0, 0);
    const Decoded desk(wire, commandLines);
    QCOMPARE(QString::fromStdString(desk.frame(0).text), text);
    QCOMPARE(desk.frame(0).value("ok"), std::string(damage > 1 ? "0" : "1"));
    QCOMPARE(desk.frame(0).value("end"), std::string((damage & 1U) != 0 ? "0" : "1"));
    QCOMPARE(desk.frame(1).text, std::string("CMD0 GO_IDLE_STATE, argument 0x00000000"));
}

void TstSdio::theRegisterOfALongResponseHas120Bits()
{
    const std::string name = "0353445355313647"; // as a CID begins: maker, OEM, product
    std::vector<bool> content;
    std::string expected;
    for (unsigned i = 0; i < 15; ++i) {
        const unsigned byte = i < 8 ? unsigned(std::stoul(name.substr(2 * i, 2), nullptr, 16)) : 0xf0U + i;
        const std::vector<bool> bits = bitsOf(byte, 8);
        content.insert(content.end(), bits.begin(), bits.end());
        expected += QString::asprintf("%02X", byte).toStdString();
    }
    for (const unsigned damage : {0U, 2U}) {
        Wire wire;
        wire.idle().command(2, 0).bits(bitsOf(0x3f, 8)).bits(content);
        wire.bits(bitsOf((remainder(content, 7, 0x09) << 1 | 1U) ^ damage, 8)).idle().command(3, 0);
        const Decoded desk(wire, commandLines);
        QCOMPARE(desk.frames().size(), std::size_t(3));
        QCOMPARE(desk.frame(1).value("reg"), expected);
        QCOMPARE(desk.frame(1).value("ok"), std::string(damage == 0 ? "1" : "0"));
        QCOMPARE(desk.frame(1).last - desk.frame(1).first + 1, 2 * half * 135 + half);
    }
}

void TstSdio::aResponseWithoutCheckIsNoError()
{
    Wire wire;
    wire.idle().command(55, 0).response(55).command(41, 0x40100000);
    wire.bits(bitsOf(0x3fc0ff8000ff, 48)).idle().command(2, 0);
    const Decoded desk(wire, commandLines);
    QCOMPARE(desk.summaries()[3], std::string("response idx=63 arg=3237969920 crc=127 ok=0 end=1"));
    QCOMPARE(desk.frame(3).text, std::string("R3 to ACMD41: 0xC0FF8000"));
    QCOMPARE(desk.frame(2).text, std::string("ACMD41 SD_SEND_OP_COND, argument 0x40100000"));
}

/// Whether it is long is told by its end then.
void TstSdio::aCaptureMayBeginWithAResponse()
{
    Wire plain;
    plain.idle().bits(bitsOf(0x3fc0ff8000ff, 48)).idle().command(2, 0);
    QCOMPARE(Decoded(plain, commandLines).summaries().size(), std::size_t(2));
    Wire longOne;
    std::vector<bool> content(120, true);
    content[1] = false;
    longOne.idle().bits(bitsOf(0x3f, 8)).bits(bitsOf(0x0102030405060708, 64)).bits(bitsOf(0, 56));
    longOne.bits(bitsOf(1, 8)).idle();
    const Decoded desk(longOne, commandLines);
    QCOMPARE(desk.summaries(), Texts{"response idx=63 reg=010203040506070800000000000000 crc=0 ok=0 end=1"});
}

void TstSdio::aTokenThatTheCapturesBeginCutsIsNotShown_data()
{
    QTest::addColumn<unsigned>("missing");
    for (const unsigned bits : {1U, 2U, 7U, 13U, 30U, 47U}) {
        QTest::addRow("%u bits are missing", bits) << bits;
    }
}

void TstSdio::aTokenThatTheCapturesBeginCutsIsNotShown()
{
    QFETCH(unsigned, missing);
    std::vector<bool> bits = bitsOf(0x4d5a5a00ff00 | remainder(bitsOf(0x4d5a5a00ff, 40), 7, 0x09) << 1 | 1U, 48);
    bits.erase(bits.begin(), bits.begin() + missing);
    Wire wire;
    wire.bits(bits).idle(2).response(13).command(0, 0);
    const Texts expected{"response idx=13 arg=2304 crc=31 ok=1 end=1", "command idx=0 arg=0 crc=74 ok=1 end=1"};
    QCOMPARE(Decoded(wire, commandLines).summaries(), expected);
}

/// Of few ones: its end and the line at rest behind it may have a right check.
void TstSdio::theRestBehindACutTokenIsNoCheck()
{
    for (unsigned missing = 1; missing < 40; ++missing) {
        std::vector<bool> bits = bitsOf(0x4300000000 << 8 | remainder(bitsOf(0x4300000000, 40), 7, 0x09) << 1 | 1U, 48);
        bits.erase(bits.begin(), bits.begin() + missing);
        Wire wire;
        wire.bits(bits).idle(60).command(13, 0x12345678).idle();
        QCOMPARE(Decoded(wire, commandLines).summaries().front().substr(0, 14), std::string("command idx=13"));
    }
}

void TstSdio::aTokenBehindAPauseIsShownAsItIs()
{
    Wire wire;
    wire.idle(8).command(13, 0, 2).command(0, 0);
    QCOMPARE(Decoded(wire, commandLines).summaries().size(), std::size_t(2));
    Wire withoutPause;
    withoutPause.idle(6).command(13, 0, 2).command(0, 0);
    QCOMPARE(Decoded(withoutPause, commandLines).summaries(), Texts{"command idx=0 arg=0 crc=74 ok=1 end=1"});
}

void TstSdio::aLineThatIsHeldLowSaysNothing()
{
    Wire wire;
    wire.bits(std::vector<bool>(40, false)).idle().bits(std::vector<bool>(1000, false)).idle().command(0, 0);
    QCOMPARE(Decoded(wire, commandLines).summaries(), Texts{"command idx=0 arg=0 crc=74 ok=1 end=1"});
}

void TstSdio::blocksHaveTheLengthThatCommandsTell_data()
{
    QTest::addColumn<int>("setLength");
    QTest::addColumn<bool>("isApplication");
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("length");
    QTest::newRow("as set") << 8 << false << 17 << 8;
    QTest::newRow("least") << 1 << false << 17 << 1;
    QTest::newRow("not set") << 0 << false << 17 << 512;
    QTest::newRow("too long") << 2049 << false << 17 << 512;
    QTest::newRow("longest") << 2048 << false << 17 << 2048;
    QTest::newRow("switch") << 8 << false << 6 << 64;
    QTest::newRow("status of the card") << 8 << true << 13 << 64;
    QTest::newRow("configuration") << 8 << true << 51 << 8;
    QTest::newRow("written blocks") << 8 << true << 22 << 4;
}

void TstSdio::blocksHaveTheLengthThatCommandsTell()
{
    QFETCH(int, setLength);
    QFETCH(bool, isApplication);
    QFETCH(int, index);
    QFETCH(int, length);
    for (const unsigned width : {1U, 4U}) {
        Wire wire;
        wire.idle().command(16, std::uint32_t(setLength)).response(16);
        if (isApplication) {
            wire.command(55, 0).response(55);
        }
        std::vector<std::uint8_t> bytes;
        std::string hex;
        for (int i = 0; i < length; ++i) {
            bytes.push_back(std::uint8_t(i * 7));
            hex += QString::asprintf("%02X", unsigned(bytes.back())).toStdString();
        }
        wire.command(std::uint32_t(index), 0).response(std::uint32_t(index)).block(bytes, width).command(13, 0);
        const Decoded desk(wire, width == 1 ? narrow : wide);
        const std::size_t number = isApplication ? 6 : 4;
        QCOMPARE(desk.frames().size(), number + 2);
        QCOMPARE(desk.summaries()[number], "data width=" + std::to_string(width) + " v=" + hex + " ok=1");
        QCOMPARE(desk.frame(number).first, wire.starts[number]);
        QCOMPARE(desk.frame(number).last, wire.ends[number]);
    }
}

void TstSdio::aWrongCheckOfOneLineIsABlockError()
{
    for (const unsigned damage : {1U, 0x8000U}) {
        Wire wire;
        wire.idle().command(16, 4).response(16).command(17, 0).response(17).block({1, 2, 3, 4}, 4, damage);
        const Decoded desk(wire, wide);
        QCOMPARE(last(desk.summaries()), std::string("data width=4 v=01020304 ok=0"));
        QCOMPARE(desk.frame(4).text, std::string("Data, 4 bytes, CRC error: 0x01 0x02 0x03 0x04"));
    }
}

void TstSdio::multipleBlocksEndWithAStop()
{
    Wire wire;
    wire.idle().command(16, 2).response(16).command(18, 0).response(18).block({1, 2}, 4).block({3, 4}, 4);
    wire.command(12, 0).response(12).command(13, 0).response(13).block({5, 6}, 4);
    const Texts all = Decoded(wire, wide).summaries();
    QCOMPARE(all.size(), std::size_t(10));
    QCOMPARE(all[5], std::string("data width=4 v=0304 ok=1"));
    Wire counted;
    counted.idle().command(16, 2).response(16).command(23, 1).response(23).command(18, 0).response(18);
    counted.block({1, 2}, 4).block({3, 4}, 4).command(13, 0);
    QCOMPARE(Decoded(counted, wide).summaries().size(), std::size_t(8));
}

void TstSdio::aStopCutsABlock()
{
    Wire wire;
    wire.idle().command(16, 512).response(16).command(18, 0).response(18).dat0("0" + std::string(16, '1'));
    wire.command(12, 0).response(12);
    const Decoded desk(wire, narrow);
    const DecodedFrame cut = desk.frame(4);
    QCOMPARE(cut.kind, std::string("cut_data"));
    QCOMPARE(cut.value("v").substr(0, 6), std::string("FFFFFF"));
    QVERIFY(cut.last <= wire.ends[4]);
    QCOMPARE(last(desk.summaries()).substr(0, 15), std::string("response idx=12"));
}

/// The length was set before the capture, so that 512 bytes are expected.
void TstSdio::aBlockThatIsTooShortHidesNoOther()
{
    for (const unsigned width : {1U, 4U}) {
        Wire wire;
        wire.idle().command(17, 0).response(17).block({1, 2, 3, 4}, width).command(16, 4).response(16);
        wire.command(17, 0).response(17).block({5, 6, 7, 8}, width).command(13, 0).response(13);
        const Texts got = Decoded(wire, width == 1 ? narrow : wide).summaries();
        QCOMPARE(got.size(), std::size_t(9));
        QCOMPARE(got[6], "data width=" + std::to_string(width) + " v=05060708 ok=1");
    }
}

void TstSdio::anUndefinedApplicationCommandIsThePlainOne()
{
    Wire wire;
    wire.idle().command(55, 0).response(55).command(16, 4).response(16).command(17, 0).response(17);
    wire.block({1, 2, 3, 4}, 1).command(13, 0);
    const Texts got = Decoded(wire, narrow).summaries();
    QCOMPARE(got.size(), std::size_t(8));
    QCOMPARE(got[6], std::string("data width=1 v=01020304 ok=1"));
}

void TstSdio::aWrittenBlockIsAnswered_data()
{
    QTest::addColumn<QString>("status");
    QTest::addColumn<QString>("text");
    QTest::newRow("accepted") << "010"
                              << "Block status: accepted";
    QTest::newRow("check") << "101"
                           << "Block status: CRC error";
    QTest::newRow("not written") << "110"
                                 << "Block status: write error";
}

void TstSdio::aWrittenBlockIsAnswered()
{
    QFETCH(QString, status);
    QFETCH(QString, text);
    for (const unsigned width : {1U, 4U}) {
        Wire wire;
        wire.idle().command(16, 2).response(16).command(24, 0).response(24).block({0x12, 0x34}, width);
        wire.dat0("0" + status.toStdString() + "10000").idle().command(13, 0);
        const Decoded desk(wire, width == 1 ? narrow : wide);
        QCOMPARE(desk.frames().size(), std::size_t(8));
        QCOMPARE(desk.frame(5).text, text.toStdString());
        QCOMPARE(desk.frame(5).last - desk.frame(5).first + 1, 2 * half * 4 + half);
        QCOMPARE(desk.frame(6).kind, std::string("busy"));
        QCOMPARE(desk.frame(6).last - desk.frame(6).first + 1, 2 * half * 4 - half);
    }
}

void TstSdio::aCardIsBusyBehindR1b()
{
    Wire wire;
    wire.idle().command(38, 0).response(38).dat0("0000000000").idle().command(13, 0).response(13).dat0("000").idle();
    const Texts all = Decoded(wire, narrow).summaries();
    QCOMPARE(all.size(), std::size_t(5));
    QCOMPARE(all[2], std::string("busy"));
}

/// CMD52 sets the size of function 1 to 0x0104; CMD53 then reads two of its blocks, or bytes.
void TstSdio::sdioBlocksHaveTheSizeOfTheirFunction()
{
    const std::vector<std::uint8_t> bytes(0x104, 0x5a);
    const auto setRegister = [](std::uint32_t address, std::uint32_t value) { return 1U << 31 | address << 9 | value; };
    Wire wire;
    wire.idle().command(52, setRegister(0x110, 4)).response(52, 0x1004).command(52, setRegister(0x111, 1));
    wire.response(52, 0x1001).command(53, 1U << 28 | 1U << 27 | 2).response(53, 0x1000).block(bytes, 4);
    wire.block(bytes, 4).command(53, 1U << 28 | 3).response(53, 0x1000).block({7, 8, 9}, 4).command(13, 0);
    const Texts all = Decoded(wire, wide).summaries();
    QCOMPARE(all.size(), std::size_t(12));
    QVERIFY(all[6].size() > 2 * 0x104 && all[7] == all[6]);
    QCOMPARE(all[10], std::string("data width=4 v=070809 ok=1"));
}

void TstSdio::dataWithoutACommandIsNone()
{
    Wire wire;
    wire.idle().block({1, 2}, 4).command(13, 0).response(13).block({1, 2}, 4).command(17, 0, 2).block({1, 2}, 4);
    QCOMPARE(Decoded(wire, wide).summaries().size(), std::size_t(3));
}

void TstSdio::applicationCommandsHaveTheirNames()
{
    Wire wire;
    wire.idle().command(55, 0).response(55).command(6, 2).response(6).command(6, 2).command(5, 0).command(52, 0);
    const Decoded desk(wire, commandLines);
    QCOMPARE(desk.frame(2).text, std::string("ACMD6 SET_BUS_WIDTH, argument 0x00000002"));
    QCOMPARE(desk.frame(3).text, std::string("R1 to ACMD6: 0x00000900, state tran"));
    QCOMPARE(desk.frame(4).text, std::string("CMD6 SWITCH_FUNC, argument 0x00000002"));
    QCOMPARE(desk.frame(5).text, std::string("CMD5 IO_SEND_OP_COND, argument 0x00000000"));
    QCOMPARE(desk.frame(6).text, std::string("CMD52 IO_RW_DIRECT, argument 0x00000000"));
}

void TstSdio::responsesTellStateAndErrors()
{
    Wire wire;
    wire.idle().command(13, 0).response(13, 0x00400e00).command(12, 0).response(12, 0x80000a00).command(3, 0);
    wire.response(3, 0x12340500);
    const Decoded desk(wire, commandLines);
    QCOMPARE(desk.frame(1).text, std::string("R1 to CMD13: 0x00400E00, state prg, ILLEGAL_COMMAND"));
    QCOMPARE(desk.frame(3).text, std::string("R1b to CMD12: 0x80000A00, state data, OUT_OF_RANGE"));
    QCOMPARE(desk.frame(5).text, std::string("R6 to CMD3: 0x12340500"));
}

void TstSdio::bubblesGoFromShortToLong()
{
    Wire wire;
    wire.idle().command(16, 2).response(16).command(17, 1, 0).response(17).block({0x41, 0x42}, 4);
    const Decoded desk(wire, wide);
    const Channel cmd(0, cmdChannel);
    const Channel dat0(0, dat0Channel);
    QCOMPARE(desk.bubble(2, cmd, DisplayBase::Decimal),
             (Texts{"C", "CMD17", "CMD17 READ_SINGLE_BLOCK", "CMD17 READ_SINGLE_BLOCK, argument 1"}));
    QCOMPARE(desk.bubble(3, cmd, DisplayBase::Decimal),
             (Texts{"R", "R1", "R1 to CMD17", "R1 to CMD17: 2304", "R1 to CMD17: 2304, state tran"}));
    QCOMPARE(desk.bubble(4, dat0, DisplayBase::Ascii).front(), std::string("D"));
    QCOMPARE(last(desk.bubble(4, dat0, DisplayBase::Hexadecimal)), std::string("Data, 2 bytes: 0x41 0x42"));
    QVERIFY(desk.bubble(2, dat0, DisplayBase::Decimal).empty());
    QVERIFY(desk.bubble(4, cmd, DisplayBase::Decimal).empty());
}

void TstSdio::tokensHaveMarkers()
{
    Wire wire;
    wire.idle().command(0, 0).command(0, 0, 1);
    const auto markers = Decoded(wire, commandLines).markers(cmdChannel);
    QCOMPARE(markers.size(), std::size_t(4));
    QCOMPARE(markers[0].type, MarkerType::Start);
    QCOMPARE(markers[1].type, MarkerType::Stop);
    QCOMPARE(markers[3].type, MarkerType::ErrorX);
    QCOMPARE(markers[0].sample, std::uint64_t(wire.starts[0]));
}

void TstSdio::aWrongCheckHasAnErrorCross()
{
    Wire wire;
    wire.idle().command(0, 0).command(16, 4, 2).command(16, 4).response(16).command(24, 0).response(24);
    wire.block({1, 2, 3, 4}, 1, 1).bits(bitsOf(0x3fc0ff8000ff, 48)).idle();
    const Decoded desk(wire, narrow);
    std::vector<std::int64_t> crosses;
    for (const std::uint32_t channel : {cmdChannel, dat0Channel}) {
        for (const auto &marker : desk.markers(channel)) {
            if (marker.type == MarkerType::ErrorX) {
                crosses.push_back(std::int64_t(marker.sample));
            }
        }
    }
    QCOMPARE(crosses, (std::vector<std::int64_t>{wire.ends[1], wire.ends[6]}));
}

void TstSdio::aTableHasTheWidthOfDataAndTheBitsOfACutToken()
{
    Wire wire;
    wire.idle().command(16, 4).response(16).command(17, 0).response(17).block({1, 2, 3, 4}, 4).bits(bitsOf(0x40, 8));
    const Decoded desk(wire, wide);
    QCOMPARE(desk.summaries().back(), std::string("cut n=8"));
    QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("out.csv")).toStdString();
    const std::string csv = decoderChecks::exported(desk, path, 0);
    QVERIFY2(csv.find("end,v,width,n,text\n") != std::string::npos, csv.c_str());
    QVERIFY2(csv.find(",01020304,4,,") != std::string::npos, csv.c_str());
    QVERIFY2(csv.find(",,,8,Cut after 8 bits") != std::string::npos, csv.c_str());
}

void TstSdio::anExportHasALineACommand()
{
    Wire wire;
    wire.idle().response(13).command(16, 2).response(16).command(24, 0).response(24).block({0x12, 0x34}, 1);
    wire.dat0("00101").idle().command(0, 0);
    const Decoded desk(wire, narrow);
    QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("out")).toStdString();
    const auto lines = QString::fromStdString(decoderChecks::exported(desk, path + ".txt", SdioSettings::Commands))
                           .split(QLatin1Char('\n'));
    QCOMPARE(lines.size(), 5);
    QVERIFY2(lines[0].endsWith(QStringLiteral(" Response: 0x00000900")), qPrintable(lines[0]));
    QVERIFY2(lines[1].endsWith(
                 QStringLiteral(" CMD16 SET_BLOCKLEN, argument 0x00000002 | R1 to CMD16: 0x00000900, state tran")),
             qPrintable(lines[1]));
    QVERIFY2(lines[2].endsWith(
                 QStringLiteral(" CMD24 WRITE_BLOCK, argument 0x00000000 | R1 to CMD24: 0x00000900, state tran | "
                                "Data, 2 bytes: 0x12 0x34 | Block status: accepted")),
             qPrintable(lines[2]));
    QVERIFY2(lines[3].endsWith(QStringLiteral(" CMD0 GO_IDLE_STATE, argument 0x00000000")), qPrintable(lines[3]));
    const std::string csv = decoderChecks::exported(desk, path + ".csv", SdioSettings::Commands);
    QVERIFY2(csv.starts_with("time_s,first_sample,last_sample,text\n"), csv.c_str());
}

void TstSdio::withoutAWidthTheBusIsAsWideAsItHasLines()
{
    for (const char *lines : {"d0=2", "d0=2,d1=3", "d0=2,d1=3,d2=4,d3=5"}) {
        SdioSettings settings;
        settings.LoadText((std::string("clk=0,cmd=1,") + lines).c_str());
        QCOMPARE(settings.problem(), std::string());
        QCOMPARE(settings.usedLines(), std::string(lines).size() > 10 ? 4U : 1U);
    }
}

void TstSdio::aWideBusNeedsItsLines()
{
    DecodeDesk desk(std::make_unique<SdioAnalyzer>());
    QVERIFY(!desk.edit({{"clk", "0"}}).empty());
    QCOMPARE(desk.edit({{"clk", "0"}, {"cmd", "1"}}), std::string());
    QCOMPARE(desk.edit({{"d0", "2"}, {"width", "4"}}),
             std::string("Choose channels for DAT1 to DAT3, or a bus width of 1 bit"));
    QCOMPARE(desk.edit({{"width", "1"}}), std::string());
    QCOMPARE(desk.edit({{"width", "4"}, {"d1", "3"}, {"d2", "4"}, {"d3", "5"}}), std::string());
    QVERIFY(!desk.edit({{"cmd", "0"}}).empty());
}

void TstSdio::doubleDataRateTakesDataAtBothEdges_data()
{
    QTest::addColumn<int>("length");
    for (const int length : {1, 2, 3, 8, 63, 512}) {
        QTest::addRow("%d bytes", length) << length;
    }
}

void TstSdio::doubleDataRateTakesDataAtBothEdges()
{
    QFETCH(int, length);
    std::vector<std::uint8_t> bytes;
    std::string hex;
    for (int i = 0; i < length; ++i) {
        bytes.push_back(std::uint8_t(i * 7 + 1));
        hex += QString::asprintf("%02X", unsigned(bytes.back())).toStdString();
    }
    Wire wire;
    wire.idle().command(16, std::uint32_t(length)).response(16).command(17, 0).response(17).doubledBlock(bytes);
    wire.command(13, 0).response(13);
    const Decoded desk(wire, doubled);
    QCOMPARE(desk.frames().size(), std::size_t(7));
    QCOMPARE(desk.summaries()[4], "data width=4 v=" + hex + " ok=1");
    QCOMPARE(desk.frame(4).first, wire.starts[4]);
    QCOMPARE(desk.frame(4).last, wire.ends[4]);
}

void TstSdio::aWrongCheckOfOneEdgeIsABlockError()
{
    for (const std::uint32_t damage : {0U, 1U, 0x8000U, 0x10000U, 0x80000000U}) {
        Wire wire;
        wire.idle().command(16, 4).response(16).command(17, 0).response(17).doubledBlock({1, 2, 3, 4}, damage);
        QCOMPARE(last(Decoded(wire, doubled).summaries()),
                 std::string("data width=4 v=01020304 ok=") + (damage == 0 ? "1" : "0"));
    }
}

/// The status and the time in which the card is busy have nothing at the falls.
void TstSdio::aBlockOfDoubleDataRateIsAnswered()
{
    Wire wire;
    wire.idle().command(16, 2).response(16).command(25, 0).response(25).doubledBlock({0x12, 0x34});
    wire.dat0("001010000").idle().doubledBlock({0x56, 0x78}).dat0("00101").idle().command(12, 0).response(12);
    const Decoded desk(wire, doubled);
    const Texts got = desk.summaries();
    QCOMPARE(got.size(), std::size_t(11));
    QCOMPARE(Texts(got.begin() + 4, got.begin() + 9),
             (Texts{"data width=4 v=1234 ok=1", "status v=2", "busy", "data width=4 v=5678 ok=1", "status v=2"}));
    QCOMPARE(desk.frame(6).last - desk.frame(6).first + 1, 2 * half * 4 - half);
}

void TstSdio::aStopCutsABlockOfDoubleDataRate()
{
    Wire wire;
    wire.idle().command(16, 512).response(16).command(18, 0).response(18).clock(true, 0);
    wire.idle(12).command(12, 0).response(12);
    const Decoded desk(wire, doubled);
    QCOMPARE(desk.frame(4).kind, std::string("cut_data"));
    QVERIFY(desk.frame(4).last <= wire.ends[4]);
    QCOMPARE(last(desk.summaries()).substr(0, 15), std::string("response idx=12"));
}

/// And a stored text without the setting has data at the rises.
void TstSdio::doubleDataRateNeedsFourLines()
{
    DecodeDesk desk(std::make_unique<SdioAnalyzer>());
    const std::string told = "Double data rate needs a bus of 4 bits";
    QCOMPARE(desk.edit({{"clk", "0"}, {"cmd", "1"}, {"ddr", "true"}}), std::string());
    QCOMPARE(desk.edit({{"d0", "2"}}), told);
    QCOMPARE(desk.edit({{"d1", "3"}, {"d2", "4"}, {"d3", "5"}}), std::string());
    QCOMPARE(desk.edit({{"width", "1"}}), told);
    SdioSettings settings;
    settings.LoadText(wide);
    QVERIFY(!settings.ddr);
    QCOMPARE(std::string(settings.SaveText()), std::string(wide) + ",ddr=false");
}

void TstSdio::nothingFalseIsShownWhereTheCaptureEnds()
{
    Wire wire;
    wire.idle().command(16, 4).response(16).command(24, 0).response(24).block({1, 2, 3, 4}, 4);
    wire.dat0("0010100000").idle().command(13, 0);
    Wire fast;
    fast.idle().command(16, 4).response(16).command(24, 0).response(24).doubledBlock({1, 2, 3, 4});
    fast.dat0("0010100000").idle().command(13, 0);
    for (const auto &[sent, settings] : {std::pair(&wire, wide), std::pair(&fast, doubled)}) {
        nothingFalseIsShownOf(*sent, settings);
    }
}

void TstSdio::nothingFalseIsShownOf(const Wire &wire, const char *settings)
{
    const Decoded whole(wire, settings);
    QCOMPARE(whole.frames().size(), std::size_t(8));
    for (std::int64_t length = 1; length < wire.now(); length += 3) {
        const Decoded cut(wire, settings, length);
        std::vector<DecodedFrame> frames = cut.frames();
        if (!frames.empty() && frames.back().kind == "cut") {
            QCOMPARE(frames.back().first, whole.frame(frames.size() - 1).first);
            frames.pop_back();
        }
        QCOMPARE(decoderChecks::faultOfCut(frames, whole.frames()), std::string());
    }
}

void TstSdio::theSimulationIsDecodedAsItWasSent_data()
{
    QTest::addColumn<QString>("settings");
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("block");
    QTest::newRow("four lines") << wide << 10000000 << 100000;
    QTest::newRow("one line, small blocks") << narrow << 20000 << 61;
    QTest::newRow("fast") << wide << 500000000 << 1048576;
    QTest::newRow("double data rate") << doubled << 10000000 << 4096;
}

void TstSdio::theSimulationIsDecodedAsItWasSent()
{
    QFETCH(QString, settings);
    QFETCH(int, rate);
    QFETCH(int, block);
    DecodeDesk desk(std::make_unique<SdioAnalyzer>(), settings.toStdString());
    const auto capture = desk.simulate(rate, std::min(rate * std::int64_t(10), std::int64_t(6000000)), block);
    desk.run(*capture);
    const Texts all = desk.summaries();
    QVERIFY(all.size() > 14);
    QCOMPARE(all[8].substr(0, 50), std::string("response idx=63 reg=000102030405060708090A0B0C0D0E"));
    unsigned round = 1;
    unsigned blocks = 0;
    unsigned cuts = 0;
    unsigned wrongEnds = 0;
    for (std::size_t i = 14; i < all.size(); ++i) {
        const bool hasFunctions = round % 4 == 3; // one block, and one that is stopped
        if (all[i].find("data") == 0) {
            const unsigned seed = round + blocks;
            const bool isWrong = !hasFunctions && round % 5 == 4 && (blocks == 0 || blocks == 3);
            std::string expected = settings == QLatin1String(narrow) ? "data width=1 v=" : "data width=4 v=";
            for (unsigned byte = 0; byte < 8; ++byte) {
                expected += QString::asprintf("%02X", (seed + byte) & 0xffU).toStdString();
            }
            QCOMPARE(all[i], expected + (isWrong ? " ok=0" : " ok=1"));
            const bool hasWrongEnd = !hasFunctions && round % 5 == 2 && (blocks == 0 || blocks == 3);
            QCOMPARE(desk.frame(i).text.find("end bit error") != std::string::npos, hasWrongEnd);
            blocks += hasFunctions ? 0 : 1;
            round += blocks / 4;
            blocks %= 4;
        } else if (all[i].find("cut_data") == 0) {
            QVERIFY(hasFunctions);
            ++cuts;
            ++round;
        } else if (all[i].find("cut") != 0) {
            const bool isWrong = round % 5 == 0 && blocks == 0 && all[i].find("command idx=13") == 0;
            const bool hasWrongEnd = round % 5 == 3 && blocks == 0 && all[i].find("command idx=13") == 0;
            QCOMPARE(all[i].find("end=0") != std::string::npos, hasWrongEnd);
            wrongEnds += hasWrongEnd ? 1 : 0;
            const bool hasNoCheck = hasFunctions && all[i].find("response idx=63") == 0;
            QVERIFY2(all[i].find("ok=1") != std::string::npos || isWrong || hasNoCheck ||
                         all[i].find("ok=") == std::string::npos,
                     all[i].c_str());
        }
    }
    QVERIFY(cuts > 0);
    QVERIFY(wrongEnds > 0);
    QVERIFY(round > 1);
}

void TstSdio::positionsBeyondFourThousandMillionAreRight()
{
    constexpr std::int64_t far = 5000000000;
    Wire wire;
    wire.idle().command(17, 1).response(17);
    const auto near = wire.capture();
    TestCapture capture(sampleRate, far + wire.now());
    const auto moved = [&](std::uint32_t channel) {
        std::vector<std::int64_t> edges;
        lux::detail::RunControl control;
        lux::ChannelReader reader(near->root(channel), control, wire.now());
        while (reader.hasEdge()) {
            edges.push_back(far + reader.nextEdge());
        }
        return edges;
    };
    capture.channel(0, false, moved(0)).channel(1, true, moved(1));
    DecodeDesk desk(std::make_unique<SdioAnalyzer>(), commandLines);
    desk.run(capture);
    QCOMPARE(desk.frames().size(), std::size_t(2));
    QCOMPARE(desk.frame(1).first, far + wire.starts[1]);
    QCOMPARE(desk.frame(1).last, far + wire.ends[1]);
}

void TstSdio::randomEdgesGiveFramesInOrder()
{
    constexpr std::int64_t length = 60000;
    for (const std::int64_t mean : {1, 2, 10, 100}) {
        for (const char *settings : {commandLines, narrow, wide, doubled}) {
            TestCapture capture(sampleRate, length);
            for (std::uint32_t i = 0; i < 6; ++i) {
                capture.channel(i, i != 0, decoderChecks::randomEdges(i, i == 0 ? mean : 5 * mean, length));
            }
            DecodeDesk desk(std::make_unique<SdioAnalyzer>(), settings);
            QCOMPARE(decoderChecks::faultOf(desk.run(capture), length), std::string());
        }
    }
}

QTEST_GUILESS_MAIN(TstSdio)
#include "tst_Sdio.moc"
