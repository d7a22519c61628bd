#include "DecoderChecks.h"
#include "LinePart.h"
#include "OneWireAnalyzer.h"

#include <QtTest>

#include <cstdint>
#include <string>
#include <vector>

using Texts = std::vector<std::string>;

namespace {

constexpr std::int64_t sampleRate = 1000000;
constexpr std::uint32_t channel = 3;
constexpr const char *line = "owr=3";

/// A bus by the figures of Maxim's application note 126, in microseconds.
class Wire {
public:
    explicit Wire(std::int64_t perMicrosecond = 1) : m_scale(perMicrosecond), m_line(true) { wait(100); }
    Wire &wait(std::int64_t time)
    {
        m_line.hold(time * m_scale);
        return *this;
    }
    Wire &low(std::int64_t time, std::int64_t high)
    {
        falls.push_back(m_line.position());
        m_line.set(false).hold(time * m_scale).set(true).hold(high * m_scale);
        return *this;
    }
    Wire &reset(std::int64_t width = 480) { return low(width, 30).low(120, 330); }
    Wire &bit(bool value) { return value ? low(6, 64) : low(60, 10); }
    Wire &bits(std::uint64_t value, unsigned count)
    {
        for (unsigned i = 0; i < count; ++i) {
            bit((value >> i & 1U) != 0);
        }
        return *this;
    }
    Wire &byte(unsigned value) { return bits(value, 8); }
    /// At overdrive speed.
    Wire &fastReset() { return low(50, 3).low(10, 38); }
    Wire &fastByte(unsigned value)
    {
        for (unsigned i = 0; i < 8; ++i) {
            (value >> i & 1U) != 0 ? low(1, 9) : low(7, 3);
        }
        return *this;
    }
    Wire &search(std::uint64_t code, std::uint64_t conflicts)
    {
        for (unsigned i = 0; i < 64; ++i) {
            const bool chosen = (code >> i & 1U) != 0;
            const bool conflict = (conflicts >> i & 1U) != 0;
            bit(chosen && !conflict).bit(!chosen && !conflict).bit(chosen);
        }
        return *this;
    }
    [[nodiscard]] std::int64_t now() const { return m_line.position(); }
    [[nodiscard]] const EdgeLine &edges() const { return m_line; }

    std::vector<std::int64_t> falls;

private:
    std::int64_t m_scale;
    EdgeLine m_line;
};

/// A run on what was sent.
class Decoded : public DecodeDesk {
public:
    explicit Decoded(const Wire &wire, const std::string &settings = line, std::int64_t length = -1,
                     std::int64_t rate = sampleRate)
        : DecodeDesk(std::make_unique<OneWireAnalyzer>(), settings), m_capture(rate, length < 0 ? wire.now() : length)
    {
        m_capture.channel(channel, wire.edges());
        run(m_capture);
    }

private:
    TestCapture m_capture;
};

/// "01101", in the order in which they are sent.
std::string lowestBits(unsigned value, unsigned count)
{
    std::string bits;
    for (unsigned i = 0; i < count; ++i) {
        bits += (value >> i & 1U) != 0 ? '1' : '0';
    }
    return bits;
}

/// What stands behind the reset of a simulated message without a code.
Texts simpleForm(unsigned form, unsigned n)
{
    switch (form) {
    case 0:
        return {"byte 204", "byte 68"};
    case 6:
        return {"rest " + lowestBits(n, 5)};
    case 8:
        return {"byte 204"};
    default:
        return {"byte 204", "byte " + std::to_string(n & 0xfeU)};
    }
}

/// Kinds and values without what an element is for.
Texts plain(const DecodeDesk &desk)
{
    Texts all;
    for (const DecodedFrame &frame : desk.frames()) {
        all.push_back(frame.kind + " " + (frame.kind == "reset" ? frame.value("present") : frame.value("v")));
    }
    return all;
}

constexpr std::uint64_t code = 0x8D011627F794EE28U; ///< with its own check

} // namespace

class TstOneWire : public QObject {
    Q_OBJECT
private slots:
    void eachElementBeginsAndEndsAsOnTheWire();
    void aBitIsOneUpToTheLookAndZeroBehind();
    void aResetIsOneFromItsShortestTimeOn();
    void aPresencePulseMustComeInTime();
    void commandsCodesAndFunctionsAreToldApart();
    void aCodeHasItsCheck();
    void aSearchTellsTheCodeAndConflicts();
    void aSearchThatNobodyAnswersIsTold();
    void overdriveFollowsItsCommandUntilALongReset();
    void theSpeedAtTheStartIsFound();
    void aResetCutsAByte();
    void bouncesAndGlitchesAreNoSlots();
    void aCaptureMayBeginAnywhere();
    void aCutElementIsNotShown();
    void aLowSampleRateIsRefused();
    void bubblesGoFromShortToLong();
    void markersStandWhereBitsAreLookedAt();
    void aWrongCheckAndASearchWithoutAnswerHaveACross();
    void exportsHaveALineAMessage();
    void theSimulationIsDecodedAsItWasSent_data();
    void theSimulationIsDecodedAsItWasSent();
    void theSimulationHasSlotsThatAreTooLong();
    void positionsBehindFourGigasamplesAreExact();
    void randomEdgesGiveFramesInOrder();
};

void TstOneWire::eachElementBeginsAndEndsAsOnTheWire()
{
    Wire wire;
    wire.reset().byte(0xcc).byte(0x44).wait(200);
    const Decoded desk(wire);
    QCOMPARE(plain(desk), (Texts{"reset 1", "byte 204", "byte 68"}));
    QCOMPARE(desk.frame(0).first, wire.falls[0]);
    QCOMPARE(desk.frame(0).last, wire.falls[1] + 120 - 1);
    QCOMPARE(desk.frame(1).first, wire.falls[2]);
    QCOMPARE(desk.frame(1).last, wire.falls[9] + 60 - 1);
    QCOMPARE(desk.frame(2).first, wire.falls[10]);
    QCOMPARE(desk.frame(2).last, wire.falls[17] + 60 - 1);
}

void TstOneWire::aBitIsOneUpToTheLookAndZeroBehind()
{
    for (const int width : {1, 15, 16, 60, 120, 300}) {
        Wire wire;
        wire.reset().bits(0x7f, 7).low(width, 100);
        QCOMPARE(plain(Decoded(wire)).at(1), std::string(width <= 15 ? "byte 255" : "byte 127"));
    }
    for (const int quarters : {4, 8, 9, 24}) { // overdrive, at 4 samples a microsecond
        Wire wire(4);
        wire.reset().byte(0x3c).fastReset();
        for (int i = 0; i < 7; ++i) {
            wire.low(1, 9);
        }
        EdgeLine edges = wire.edges();
        edges.set(false).hold(quarters).set(true).hold(400);
        TestCapture capture(4000000, edges.position());
        capture.channel(channel, edges);
        DecodeDesk desk(std::make_unique<OneWireAnalyzer>(), line);
        QCOMPARE(plain(desk.run(capture)).back(), std::string(quarters <= 8 ? "byte 255" : "byte 127"));
    }
}

void TstOneWire::aResetIsOneFromItsShortestTimeOn()
{
    for (const int width : {454, 455, 480, 960}) { // 95 %, and edges are known to a microsecond here
        Wire wire;
        wire.reset(width).byte(0xcc);
        QCOMPARE(plain(Decoded(wire)).empty(), width < 455);
    }
    for (const int width : {43, 45, 48, 80}) {
        Wire wire;
        wire.reset().byte(0x3c).low(width, 3).low(10, 38).fastByte(0xcc);
        QCOMPARE(plain(Decoded(wire)).at(2) == "reset 1", width >= 45);
    }
}

void TstOneWire::aPresencePulseMustComeInTime()
{
    for (const int wait : {15, 60, 70, 71}) {
        Wire wire;
        wire.low(480, wait).low(120, 400).byte(0xcc);
        QCOMPARE(plain(Decoded(wire)).at(0), std::string(wait <= 70 ? "reset 1" : "reset 0"));
    }
    Wire wire;
    wire.low(480, 500).byte(0xcc);
    const Decoded desk(wire);
    QCOMPARE(plain(desk), (Texts{"reset 0", "byte 204"}));
    QCOMPARE(desk.frame(0).text, std::string("Reset, no presence"));
    for (const int width : {240, 241}) {
        Wire held;
        held.low(480, 30).low(width, 400);
        QCOMPARE(Decoded(held).frame(0).text,
                 std::string(width == 240 ? "Reset, presence" : "Reset, presence pulse too long"));
    }
}

void TstOneWire::commandsCodesAndFunctionsAreToldApart()
{
    const std::pair<unsigned, const char *> commands[] = {
        {0x33, "Read ROM (0x33)"},           {0x55, "Match ROM (0x55)"},           {0xcc, "Skip ROM (0xCC)"},
        {0xf0, "Search ROM (0xF0)"},         {0xec, "Alarm search (0xEC)"},        {0xa5, "Resume (0xA5)"},
        {0x3c, "Overdrive-skip ROM (0x3C)"}, {0x69, "Overdrive-match ROM (0x69)"}, {0x12, "ROM command 0x12"}};
    for (const auto &[command, name] : commands) {
        Wire wire;
        wire.reset().byte(command).wait(100);
        QCOMPARE(Decoded(wire).frame(1).text, std::string(name));
    }
    Wire wire;
    wire.reset().byte(0x55).bits(code, 64).byte(0xbe).byte(0x91);
    const Decoded desk(wire);
    const auto frames = desk.frames();
    QCOMPARE(frames.size(), std::size_t(12));
    QCOMPARE(frames[2].text, std::string("Family code 0x28"));
    QCOMPARE(frames[3].text, std::string("Serial number 1: 0xEE"));
    QCOMPARE(frames[10].summary(), std::string("byte v=190 role=function"));
    QCOMPARE(frames[11].text, std::string("Data 0x91"));
}

void TstOneWire::aCodeHasItsCheck()
{
    for (const bool wrong : {false, true}) {
        Wire wire;
        wire.reset().byte(0x33).bits(wrong ? code ^ 0x100 : code, 64);
        const DecodedFrame check = Decoded(wire).frame(9);
        QCOMPARE(check.value("crcok"), std::string(wrong ? "0" : "1"));
        QCOMPARE(check.text, std::string(wrong ? "ROM code 28-011627F794EF, CRC 0x8D wrong"
                                               : "ROM code 28-011627F794EE, CRC 0x8D right"));
    }
}

void TstOneWire::aSearchTellsTheCodeAndConflicts()
{
    Wire wire;
    wire.reset().byte(0xf0).search(code, 0x10002).byte(0x44);
    const Decoded desk(wire);
    QCOMPARE(desk.frame(2).summary(), std::string("search v=8D011627F794EE28 crcok=1 conflicts=0000000000010002"));
    QCOMPARE(desk.frame(2).text, std::string("Search: 28-011627F794EE, CRC 0x8D right, 2 conflicts"));
    QCOMPARE(desk.frame(2).first, wire.falls[10]);
    QCOMPARE(desk.frame(2).last, wire.falls[10 + 191] + 60 - 1);
    QCOMPARE(desk.frame(3).summary(), std::string("byte v=68 role=function"));
}

void TstOneWire::aSearchThatNobodyAnswersIsTold()
{
    Wire wire;
    wire.reset().byte(0xec);
    for (int i = 0; i < 192; ++i) {
        wire.bit(true);
    }
    QCOMPARE(Decoded(wire).frame(2).text, std::string("Alarm search: no device"));
    wire.reset().byte(0xf0).bit(true).bit(true).reset();
    QCOMPARE(plain(Decoded(wire)).at(5), std::string("rest 11"));
}

void TstOneWire::overdriveFollowsItsCommandUntilALongReset()
{
    Wire wire;
    wire.reset().byte(0x3c).fastReset().fastByte(0xcc).fastByte(0x5a).wait(20).reset().byte(0xcc).byte(0x5a);
    const Decoded desk(wire);
    QCOMPARE(plain(desk),
             (Texts{"reset 1", "byte 60", "reset 1", "byte 204", "byte 90", "reset 1", "byte 204", "byte 90"}));
    QCOMPARE(desk.frame(2).text, std::string("Overdrive reset, presence"));
    QCOMPARE(desk.frame(5).text, std::string("Reset, presence"));
    // Without overdrive the short pulses are bits: they are low for less than a 1 may be.
    QVERIFY(plain(Decoded(wire, "owr=3,overdrive=false")).size() != desk.frames().size());
    QCOMPARE(plain(Decoded(wire, "owr=3,overdrive=true")), plain(desk));
    Wire match;
    match.reset().byte(0x69).fastByte(0x28).fastByte(0x01);
    QCOMPARE(plain(Decoded(match)).size(), std::size_t(4));
}

void TstOneWire::theSpeedAtTheStartIsFound()
{
    Wire wire;
    wire.fastByte(0x12).fastByte(0x34).wait(20).fastReset().fastByte(0xcc).fastByte(0x5a);
    const Texts expected{"reset 1", "byte 204", "byte 90"};
    QCOMPARE(plain(Decoded(wire)), expected);
    QCOMPARE(plain(Decoded(wire, "owr=3,overdrive=true")), expected);
    QCOMPARE(plain(Decoded(wire, "owr=3,overdrive=false")), Texts());
}

void TstOneWire::aResetCutsAByte()
{
    Wire wire;
    wire.reset().byte(0xcc).bits(0x16, 5).wait(100).reset().bits(0x3, 3).wait(100);
    const Decoded desk(wire);
    QCOMPARE(plain(desk), (Texts{"reset 1", "byte 204", "rest 01101", "reset 1", "rest 110"}));
    QCOMPARE(desk.frame(2).text, std::string("Byte cut after 5 bits: 01101"));
    QCOMPARE(desk.frame(2).first, wire.falls[10]);
    QCOMPARE(desk.frame(2).last, wire.falls[14] + 6 + 54 - 1);
}

void TstOneWire::bouncesAndGlitchesAreNoSlots()
{
    Wire wire;
    wire.reset().bits(0x7f, 7).low(6, 1).low(1, 62);
    QCOMPARE(plain(Decoded(wire)), (Texts{"reset 1", "byte 255"}));
    for (const int width : {4, 5}) { // at 10 samples a microsecond a pulse of 0.4 us, and one of 0.5 us
        Wire fine(10);
        fine.reset().bits(0x7f, 7);
        EdgeLine edges = fine.edges();
        edges.set(false).hold(width).set(true).hold(1000);
        TestCapture capture(10000000, edges.position());
        capture.channel(channel, edges);
        DecodeDesk desk(std::make_unique<OneWireAnalyzer>(), line);
        QCOMPARE(plain(desk.run(capture)).at(1), std::string(width < 5 ? "rest 1111111" : "byte 255"));
    }
}

void TstOneWire::aCaptureMayBeginAnywhere()
{
    Wire wire;
    wire.reset().byte(0xcc).byte(0x44).wait(300).reset().byte(0x33).byte(0x28).wait(100);
    const auto whole = Decoded(wire).frames();
    for (std::int64_t from = 1; from < wire.now(); from += 3) {
        TestCapture capture(sampleRate, wire.now() - from);
        addPart(capture, channel, wire.edges(), from);
        DecodeDesk desk(std::make_unique<OneWireAnalyzer>(), line);
        const auto got = desk.run(capture).frames();
        QVERIFY(got.size() <= whole.size());
        for (std::size_t i = 0; i < got.size(); ++i) {
            const DecodedFrame &expected = whole[whole.size() - got.size() + i];
            QCOMPARE(got[i].first + from, expected.first);
            QCOMPARE(got[i].value("v"), expected.value("v"));
        }
    }
}

void TstOneWire::aCutElementIsNotShown()
{
    Wire wire;
    wire.reset().byte(0xcc).byte(0x44).wait(300).reset().byte(0x33).wait(100);
    const auto whole = Decoded(wire).frames();
    for (std::int64_t length = 1; length < wire.now(); length += 3) {
        const Decoded desk(wire, line, length);
        QCOMPARE(decoderChecks::faultOf(desk, length), std::string());
        auto cut = desk.frames();
        if (!cut.empty() && cut.back().kind == "rest") {
            QVERIFY(cut.back().value("v").size() < 8);
            cut.pop_back();
        }
        QCOMPARE(decoderChecks::faultOfCut(cut, whole), std::string());
    }
}

void TstOneWire::aLowSampleRateIsRefused()
{
    Wire wire;
    wire.reset();
    QVERIFY(Decoded(wire, line, -1, 199999).analyzer->GetDecodeStatus() == DecodeStatus::Failed);
    QVERIFY(Decoded(wire, line, -1, 200000).analyzer->GetDecodeStatus() == DecodeStatus::Complete);
    DecodeDesk desk(std::make_unique<OneWireAnalyzer>());
    QVERIFY(!desk.edit({{"owr", "none"}}).empty());
    QCOMPARE(desk.edit({{"owr", "1"}, {"overdrive", "auto"}}), std::string());
    QVERIFY(!desk.edit({{"overdrive", "fast"}}).empty());
}

void TstOneWire::bubblesGoFromShortToLong()
{
    Wire wire;
    wire.reset().byte(0xcc).byte(0x44);
    const Decoded desk(wire);
    const Channel on(0, channel);
    QCOMPARE(desk.bubble(0, on, DisplayBase::Hexadecimal), (Texts{"R", "Reset", "Reset, presence"}));
    QCOMPARE(desk.bubble(1, on, DisplayBase::Decimal), (Texts{"204", "Skip ROM", "Skip ROM (204)"}));
    QCOMPARE(desk.bubble(2, on, DisplayBase::Ascii), (Texts{"'D'", "Data 'D'"}));
}

void TstOneWire::markersStandWhereBitsAreLookedAt()
{
    Wire wire;
    wire.low(480, 500).bit(true).low(121, 10);
    const Decoded desk(wire);
    const auto markers = desk.markers(channel);
    QCOMPARE(markers.size(), std::size_t(4));
    QVERIFY(markers[0].type == MarkerType::ErrorX); // nobody there
    QCOMPARE(markers[1].sample, std::uint64_t(wire.falls[1] + 15));
    QVERIFY(markers[1].type == MarkerType::Dot);
    QVERIFY(markers[2].type == MarkerType::ErrorDot); // too long
    QVERIFY(markers[3].type == MarkerType::ErrorX);   // and the byte is cut
}

void TstOneWire::aWrongCheckAndASearchWithoutAnswerHaveACross()
{
    const auto crossesOf = [](const Wire &wire) {
        std::vector<std::int64_t> crosses;
        for (const Marker &marker : Decoded(wire).markers(channel)) {
            if (marker.type == MarkerType::ErrorX) {
                crosses.push_back(std::int64_t(marker.sample));
            }
        }
        return crosses;
    };
    Wire right;
    right.reset().byte(0x33).bits(code, 64).reset().byte(0xf0).search(code, 0);
    QVERIFY(crossesOf(right).empty());
    Wire read;
    read.reset().byte(0x33).bits(code ^ 0x100, 64);
    QCOMPARE(crossesOf(read), std::vector<std::int64_t>{Decoded(read).frame(9).last});
    Wire search;
    search.reset().byte(0xf0).search(code ^ 0x100, 0);
    QCOMPARE(crossesOf(search), std::vector<std::int64_t>{Decoded(search).frame(2).last});
    Wire nobody;
    nobody.reset().byte(0xec).bits(~std::uint64_t(0), 64).bits(~std::uint64_t(0), 64).bits(~std::uint64_t(0), 64);
    QCOMPARE(crossesOf(nobody), std::vector<std::int64_t>{Decoded(nobody).frame(2).last});
}

void TstOneWire::exportsHaveALineAMessage()
{
    Wire wire;
    wire.reset().byte(0xcc).byte(0x44).reset().byte(0x33).bits(1, 2).wait(100);
    const Decoded desk(wire);
    QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("out")).toStdString();
    QCOMPARE(decoderChecks::exported(desk, path + ".txt", OneWireSettings::Messages),
             std::string("0.000100 R 0xCC 0x44\n0.002180 R 0x33 10\n"));
    const std::string lines = decoderChecks::exported(desk, path + ".csv", OneWireSettings::Messages);
    QVERIFY2(lines.starts_with("time_s,first_sample,last_sample,text\n"), lines.c_str());
    QVERIFY2(lines.find(",R 0xCC 0x44\n0.002180,") != std::string::npos, lines.c_str());
    const std::string csv = decoderChecks::exported(desk, path + ".csv", 0);
    QVERIFY2(csv.find(",byte,204,command,,,,,,Skip ROM (0xCC)\n") != std::string::npos, csv.c_str());
    QVERIFY2(csv.find(",reset,,,1,0,,,,") != std::string::npos, csv.c_str());
    Wire codes;
    codes.reset().byte(0x33).bits(code, 64).reset().byte(0xf0).search(code, 2).wait(100);
    const std::string two = decoderChecks::exported(Decoded(codes), path + ".csv", 0);
    QVERIFY2(two.find(",byte,141,code,,,8D011627F794EE28,1,,") != std::string::npos, two.c_str());
    QVERIFY2(two.find(",search,8D011627F794EE28,,,,,1,0000000000000002,") != std::string::npos, two.c_str());
}

void TstOneWire::theSimulationIsDecodedAsItWasSent_data()
{
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("block");
    QTest::addColumn<bool>("fast");
    QTest::newRow("1 MHz") << 1000000 << 100000 << false;
    QTest::newRow("200 kHz, small blocks") << 200000 << 53 << false;
    QTest::newRow("20 MHz") << 20000000 << 65536 << true;
}

/// Ten forms of message in turn, with a byte that counts up.
void TstOneWire::theSimulationIsDecodedAsItWasSent()
{
    QFETCH(int, rate);
    QFETCH(int, block);
    QFETCH(bool, fast);
    DecodeDesk desk(std::make_unique<OneWireAnalyzer>(), line);
    const auto capture = desk.simulate(rate, std::min(rate * std::int64_t(4), std::int64_t(20000000)), block);
    const auto got = desk.run(*capture).frames();
    const Texts texts = plain(desk);
    std::size_t at = 0;
    const auto expect = [&](const Texts &expected) {
        for (const std::string &text : expected) {
            QCOMPARE(texts.at(at++), text);
        }
    };
    const auto codeIs = [&](unsigned serial, bool right) {
        at += 7;
        QCOMPARE(got[at].value("code").substr(2), QString::asprintf("%012X28", serial).toStdString());
        QCOMPARE(got[at++].value("crcok"), std::string(right ? "1" : "0"));
    };
    unsigned messages = 0;
    for (; at + 24 < got.size(); ++messages) {
        const unsigned n = messages & 0xffU;
        QCOMPARE(got[at].text == "Reset, presence pulse too long", messages % 10 == 8);
        expect({messages % 10 == 4 ? "reset 0" : "reset 1"});
        switch (messages % 10) {
        case 0:
        case 6:
        case 8:
        case 9:
            expect(simpleForm(messages % 10, n));
            break;
        case 1:
            expect({"byte 51"});
            codeIs(messages, true);
            break;
        case 2:
        case 5:
            expect({"byte 85"});
            codeIs(messages % 10 == 2 ? messages : messages ^ 1U, messages % 10 == 2);
            expect({"byte 190", "byte " + std::to_string(n), "byte " + std::to_string(n ^ 0xffU)});
            break;
        case 3:
            expect({"byte 240"});
            QCOMPARE(got[at].value("conflicts"), std::string("0000000000000100"));
            QVERIFY(texts.at(at++).starts_with("search "));
            break;
        case 4:
            break;
        default:
            if (fast) {
                expect({"byte 60", "reset 1", "byte 204", "byte 240", "byte " + std::to_string(n)});
            } else {
                expect({"byte 236"});
                QVERIFY(texts.at(at++).starts_with("search "));
            }
        }
    }
    QVERIFY(messages > 50);
}

void TstOneWire::theSimulationHasSlotsThatAreTooLong()
{
    DecodeDesk desk(std::make_unique<OneWireAnalyzer>(), line);
    const auto capture = desk.simulate(1000000, 4000000, 100000);
    desk.run(*capture);
    const auto markers = desk.markers(channel);
    const auto longSlots = std::count_if(markers.begin(), markers.end(),
                                         [](const Marker &marker) { return marker.type == MarkerType::ErrorDot; });
    QVERIFY(longSlots > 5);
}

void TstOneWire::positionsBehindFourGigasamplesAreExact()
{
    constexpr std::int64_t far = std::int64_t(5) << 32;
    Wire wire;
    wire.reset().byte(0xcc).byte(0x44);
    std::vector<std::int64_t> edges;
    for (const std::int64_t edge : wire.edges().edges()) {
        edges.push_back(edge + far);
    }
    TestCapture capture(sampleRate, far + wire.now());
    capture.channel(channel, true, edges);
    DecodeDesk desk(std::make_unique<OneWireAnalyzer>(), line);
    QCOMPARE(plain(desk.run(capture)), (Texts{"reset 1", "byte 204", "byte 68"}));
    QCOMPARE(desk.frame(1).first, far + wire.falls[2]);
}

void TstOneWire::randomEdgesGiveFramesInOrder()
{
    constexpr std::int64_t length = 100000;
    for (const std::int64_t mean : {1, 5, 20, 60, 300, 2000}) {
        for (const char *settings : {"owr=3", "owr=3,overdrive=true", "owr=3,overdrive=false"}) {
            for (const std::int64_t rate : {1000000, 10000000}) {
                TestCapture capture(rate, length);
                capture.channel(channel, true, decoderChecks::randomEdges(7, mean, length));
                DecodeDesk desk(std::make_unique<OneWireAnalyzer>(), settings);
                QCOMPARE(decoderChecks::faultOf(desk.run(capture), length), std::string());
            }
        }
    }
}

QTEST_GUILESS_MAIN(TstOneWire)
#include "tst_OneWire.moc"
