#include "DecoderChecks.h"
#include "LcdAnalyzer.h"
#include "WireBundle.h"

#include <QtTest>

#include <cstdint>
#include <string>
#include <vector>

using Texts = std::vector<std::string>;
using Desk = BundleDesk<LcdAnalyzer>;

namespace {

constexpr std::uint32_t rs = 0;
constexpr std::uint32_t rw = 1;
constexpr std::uint32_t e = 2;
constexpr std::uint32_t data = 3;
constexpr const char *fourLines = "rs=0,rw=1,e=2,d4=3,d5=4,d6=5,d7=6";
constexpr const char *eightLines = "rs=0,rw=1,e=2,d0=3,d1=4,d2=5,d3=6,d4=7,d5=8,d6=9,d7=10";

/// A host by figures 25 and 26 of the HD44780U data sheet; E is high for 4 samples.
class Host : public WireBundle {
public:
    explicit Host(unsigned width) : WireBundle(data + 10), m_width(width) {}
    Host &pulse(unsigned value, bool isData = false, bool isRead = false)
    {
        set(rs, isData).set(rw, isRead).wait(2);
        rises.push_back(now());
        set(e, true).bus(data, m_width, value).wait(4);
        falls.push_back(now());
        set(e, false).wait(1).bus(data, m_width, 0).wait(3);
        return *this;
    }
    Host &send(unsigned value, bool isData = false, bool isRead = false)
    {
        if (m_width == 4) {
            pulse(value >> 4, isData, isRead);
        }
        return pulse(value, isData, isRead);
    }
    Host &text(const std::string &characters)
    {
        for (const char c : characters) {
            send(std::uint8_t(c), true);
        }
        return *this;
    }
    Host &startUp()
    {
        wait(20);
        for (const unsigned nibble : {3U, 3U, 3U, 2U}) {
            pulse(nibble);
        }
        return *this;
    }

    std::vector<std::int64_t> rises;
    std::vector<std::int64_t> falls;

private:
    unsigned m_width;
};

std::string textOf(const Desk &desk)
{
    QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("out.txt")).toStdString();
    return decoderChecks::exported(desk, path, LcdSettings::ShownText);
}

} // namespace

class TstLcd : public QObject {
    Q_OBJECT
private slots:
    void eightLinesTransferBytes();
    void fourLinesTransferTheUpperHalfFirst();
    void inTheStartUpEachAccessIsACommand_data();
    void inTheStartUpEachAccessIsACommand();
    void aHalfBeforeTheStartUpStandsAlone();
    void aCaptureMayBeginWithinAByte();
    void aLowerHalfOfThreeIsNoStartUp();
    void withoutAStartUpThePausesTellTheHalves();
    void withoutPausesTheRegistersTellTheHalves();
    void aHalfOfAnotherKindStandsAlone();
    void aHalfRightBeforeTheStartUpStandsAlone();
    void linesMayLieInARow();
    void withoutReadWriteAllAreWrites();
    void instructionsHaveTheirNames_data();
    void instructionsHaveTheirNames();
    void theStatusTellsBusyAndAddress();
    void addressesAreFollowed();
    void theExtendedSetIsRemembered();
    void aGraphicDisplayHasTwoHalves();
    void cutEndsShowNothingFalse();
    void positionsAreWiderThan32Bits();
    void settingsThatDoNotGoTogetherAreRefused();
    void linesThatShareAChannelAreRefused_data();
    void linesThatShareAChannelAreRefused();
    void textsGoFromShortToLong();
    void theTextIsExportedAsItIsShown();
    void theSimulationIsDecodedAsItWasSent_data();
    void theSimulationIsDecodedAsItWasSent();
    void aGraphicDisplayIsSimulated();
    void randomEdgesGiveFramesInOrder();
};

void TstLcd::eightLinesTransferBytes()
{
    Host host(8);
    host.wait(20);
    host.send(0x38).send('A', true).send(0x80, false, true).send('A', true, true);
    const Desk desk(host, eightLines);
    QCOMPARE(desk.summaries(), (Texts{"command v=56", "data v=65", "status v=128", "read v=65"}));
    for (std::uint64_t i = 0; i < 4; ++i) {
        QCOMPARE(desk.frame(i).first, host.rises[i]);
        QCOMPARE(desk.frame(i).last, host.falls[i]);
    }
    QCOMPARE(desk.markers(e).size(), std::size_t(4));
}

void TstLcd::fourLinesTransferTheUpperHalfFirst()
{
    Host host(4);
    host.startUp().send(0x28).send('A', true).send(0x05, false, true);
    const Desk desk(host, fourLines);
    QCOMPARE(desk.summaries(), (Texts{"command v=48", "command v=48", "command v=48", "command v=32", "command v=40",
                                      "data v=65", "status v=5"}));
    QCOMPARE(desk.frame(3).last, host.falls[3]);
    QCOMPARE(desk.frame(4).first, host.rises[4]);
    QCOMPARE(desk.frame(4).last, host.falls[5]);
    // The four lines may be called D0 to D3 as well.
    QCOMPARE(Desk(host, "rs=0,rw=1,e=2,d0=3,d1=4,d2=5,d3=6").summaries(), desk.summaries());
}

void TstLcd::inTheStartUpEachAccessIsACommand_data()
{
    QTest::addColumn<QString>("nibbles");
    QTest::addColumn<QString>("values");
    QTest::newRow("all of it") << "333228"
                               << "30 30 30 20 28";
    QTest::newRow("two times is enough for some") << "33228"
                                                  << "30 30 20 28";
    QTest::newRow("none but the last") << "2280C"
                                       << "20 28 0C";
    QTest::newRow("no start-up: pairs") << "280C"
                                        << "28 0C";
    QTest::newRow("a second one later is pairs") << "3332283332"
                                                 << "30 30 30 20 28 33 32";
}

void TstLcd::inTheStartUpEachAccessIsACommand()
{
    QFETCH(QString, nibbles);
    QFETCH(QString, values);
    Host host(4);
    host.wait(20);
    for (const QChar c : nibbles) {
        host.pulse(QString(c).toUInt(nullptr, 16));
    }
    QStringList got;
    for (const DecodedFrame &frame : Desk(host, fourLines).frames()) {
        QCOMPARE(frame.kind, std::string("command"));
        got += QStringLiteral("%1").arg(std::stoi(frame.value("v")), 2, 16, QLatin1Char('0')).toUpper();
    }
    QCOMPARE(got.join(QLatin1Char(' ')), values);
}

void TstLcd::aHalfBeforeTheStartUpStandsAlone()
{
    Host host(4);
    host.wait(20);
    host.pulse(0xf).startUp().send(0x28);
    const Desk desk(host, fourLines);
    QCOMPARE(desk.summaries().front(), std::string("nibble v=15"));
    QCOMPARE(desk.frame(0).first, host.rises[0]);
    QCOMPARE(desk.frame(0).text, std::string("Half a byte 0xF"));
    QCOMPARE(desk.summaries().back(), std::string("command v=40"));
    QCOMPARE(desk.summaries().size(), std::size_t(6));
    // Two halves before it are a byte.
    Host pair(4);
    pair.wait(20);
    pair.send(0x0c).startUp();
    QCOMPARE(Desk(pair, fourLines).summaries().front(), std::string("command v=12"));
}

void TstLcd::aCaptureMayBeginWithinAByte()
{
    Host host(4);
    host.wait(20);
    host.pulse(0x1, true).startUp().send(0x28).send('Z', true);
    const Texts got = Desk(host, fourLines).summaries();
    QCOMPARE(got.front(), std::string("nibble v=1"));
    QCOMPARE(got.back(), std::string("data v=90"));
}

void TstLcd::aLowerHalfOfThreeIsNoStartUp()
{
    for (const unsigned next : {0x28U, 0x41U}) {
        Host host(4);
        host.wait(20);
        host.pulse(0x3).wait(60);
        host.send(next).wait(60);
        host.send(0x0c).wait(60);
        host.send('A', true).wait(60);
        const Texts got = Desk(host, fourLines).summaries();
        QCOMPARE(got, (Texts{"nibble v=3", "command v=" + std::to_string(next), "command v=12", "data v=65"}));
    }
}

void TstLcd::withoutAStartUpThePausesTellTheHalves()
{
    Host host(4);
    host.wait(20);
    host.pulse(0xb, true).wait(50);
    const std::string text = "Between the bytes the host waits";
    for (const char c : text) {
        host.send(std::uint8_t(c), true).wait(c == ' ' ? 5 : 60);
    }
    const Texts late = Desk(host, fourLines).summaries();
    QCOMPARE(late.size(), text.size() + 1);
    QCOMPARE(late[0], std::string("nibble v=11"));
    QCOMPARE(late[1], std::string("data v=66"));
    Host whole(4);
    whole.wait(20);
    whole.text(text);
    const Texts steady = Desk(whole, fourLines).summaries();
    QCOMPARE(steady.size(), text.size());
    QCOMPARE(steady[0], std::string("data v=66"));
}

/// A host that asks whether the display is busy makes no pauses.
void TstLcd::withoutPausesTheRegistersTellTheHalves()
{
    for (const bool isLate : {false, true}) {
        Host host(4);
        host.wait(20);
        if (isLate) {
            host.pulse(0x1, false, true);
        }
        Texts expected = isLate ? Texts{"nibble v=1"} : Texts();
        for (const unsigned value : {0x21U, 0x22U, 0x23U}) {
            for (int i = 0; i < 8; ++i) {
                host.send(0x85, false, true);
                expected.push_back("status v=133");
            }
            host.send(value, true);
            expected.push_back("data v=" + std::to_string(value));
        }
        QCOMPARE(Desk(host, fourLines).summaries(), expected);
    }
}

void TstLcd::aHalfOfAnotherKindStandsAlone()
{
    Host host(4);
    host.startUp().send(0x28).pulse(4, true).send(0x01).send('B', true);
    const Desk desk(host, fourLines);
    const Texts got = desk.summaries();
    QCOMPARE(Texts(got.begin() + 5, got.end()), (Texts{"nibble v=4", "command v=1", "data v=66"}));
    const auto markers = desk.markers(e);
    QVERIFY(std::any_of(markers.begin(), markers.end(), [](const Marker &m) { return m.type == MarkerType::ErrorX; }));
}

void TstLcd::aHalfRightBeforeTheStartUpStandsAlone()
{
    Host host(4);
    host.wait(20);
    host.pulse(1).send(0x41, true).pulse(7, true).startUp();
    const Texts got = Desk(host, fourLines).summaries();
    QCOMPARE(Texts(got.begin(), got.begin() + 4), (Texts{"nibble v=1", "data v=65", "nibble v=7", "command v=48"}));
}

void TstLcd::linesMayLieInARow()
{
    Host host(8);
    host.wait(20);
    host.send(0x41, true);
    QCOMPARE(Desk(host, "rs=0,e=2,d=3,bits=8").summaries(), Texts{"data v=65"});
    Host half(4);
    half.startUp().send(0x28);
    QCOMPARE(Desk(half, "rs=0,e=2,d=3").summaries().back(), std::string("command v=40"));
}

void TstLcd::withoutReadWriteAllAreWrites()
{
    Host host(8);
    host.wait(20);
    host.send(0x41, true, true);
    QCOMPARE(Desk(host, "rs=0,e=2,d=3,bits=8").summaries(), Texts{"data v=65"});
}

void TstLcd::instructionsHaveTheirNames_data()
{
    QTest::addColumn<QString>("controller");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *controller, int code, const char *text) {
        QTest::addRow("%s %02X", controller, code) << controller << code << text;
    };
    row("hd44780", 0x00, "No operation (0x00)");
    row("hd44780", 0x01, "Clear display (0x01)");
    row("hd44780", 0x03, "Return home (0x03)");
    row("hd44780", 0x06, "Entry mode set: increment, no shift (0x06)");
    row("hd44780", 0x05, "Entry mode set: decrement, display shift (0x05)");
    row("hd44780", 0x0e, "Display control: display on, cursor on, blink off (0x0E)");
    row("hd44780", 0x18, "Cursor or display shift: display, left (0x18)");
    row("hd44780", 0x14, "Cursor or display shift: cursor, right (0x14)");
    row("hd44780", 0x28, "Function set: 4 bits, 2 lines, 5x8 dots (0x28)");
    row("hd44780", 0x34, "Function set: 8 bits, 1 line, 5x10 dots (0x34)");
    row("hd44780", 0x48, "Set CGRAM address: 0b001000 (0x48)");
    row("hd44780", 0xc5, "Set DDRAM address: 0b1000101 (0xC5)");
    row("st7920", 0x30, "Function set: 8 bits, basic set (0x30)");
    row("st7920", 0x26, "Function set: 4 bits, extended set (0x26)");
    row("st7920", 0x0c, "Display control: display on, cursor off, blink off (0x0C)");
    row("ks0108", 0x3f, "Display: on (0x3F)");
    row("ks0108", 0x3e, "Display: off (0x3E)");
    row("ks0108", 0x45, "Set address (Y): 0b000101 (0x45)");
    row("ks0108", 0xba, "Set page (X): 0b010 (0xBA)");
    row("ks0108", 0xc1, "Display start line (Z): 0b000001 (0xC1)");
    row("ks0108", 0x00, "Unknown instruction (0x00)");
}

void TstLcd::instructionsHaveTheirNames()
{
    QFETCH(QString, controller);
    QFETCH(int, code);
    QFETCH(QString, text);
    Host host(8);
    host.wait(20);
    host.send(unsigned(code));
    const Desk desk(host, std::string(eightLines) + ",controller=" + controller.toStdString());
    // Addresses follow the base; so does the code, which is compared as the hexadecimal one here.
    QString got = QString::fromStdString(desk.frame(0, DisplayBase::Binary).text);
    got = got.left(got.lastIndexOf(QLatin1Char('(')));
    got += QStringLiteral("(0x%1)")
               .arg(code, 2, 16, QLatin1Char('0'))
               .toUpper()
               .replace(QLatin1String("0X"), QLatin1String("0x"));
    QCOMPARE(got, text);
}

void TstLcd::theStatusTellsBusyAndAddress()
{
    Host host(8);
    host.wait(20);
    host.send(0xc0, false, true).send(0x12, false, true);
    const Desk desk(host, eightLines);
    QCOMPARE(desk.frame(0).text, std::string("Busy, address 0x40"));
    QCOMPARE(desk.frame(1).text, std::string("Ready, address 0x12"));
    const Desk graphic(host, std::string(eightLines) + ",controller=ks0108");
    QCOMPARE(graphic.frame(1).text, std::string("Ready, display on, in reset"));
}

void TstLcd::addressesAreFollowed()
{
    Host host(8);
    host.wait(20);
    host.text("x").send(0x38).send(0x80 | 0x27).text("ab").send(0x14).text("c").send(0x04).text("d").text("e");
    host.send(0x7f).text("\x1f").text("\x11").send(0x06).send(0x80 | 0x67).text("f").text("g");
    host.send(0x30).send(0x80 | 0x4f).text("hi").send(0x01).text("j");
    const Desk desk(host, eightLines);
    Texts got;
    for (const DecodedFrame &frame : desk.frames()) {
        if (frame.kind == "data") {
            got.push_back(frame.text);
        }
    }
    QCOMPARE(got, (Texts{"Data 0x78 'x'", "Data 0x61 'a' to DDRAM 0x27", "Data 0x62 'b' to DDRAM 0x40",
                         "Data 0x63 'c' to DDRAM 0x42", "Data 0x64 'd' to DDRAM 0x43", "Data 0x65 'e' to DDRAM 0x42",
                         "Data 0x1F to CGRAM 0x3F", "Data 0x11 to CGRAM 0x3E", "Data 0x66 'f' to DDRAM 0x67",
                         "Data 0x67 'g' to DDRAM 0x00", "Data 0x68 'h' to DDRAM 0x4F", "Data 0x69 'i' to DDRAM 0x00",
                         "Data 0x6A 'j' to DDRAM 0x00"}));
}

void TstLcd::theExtendedSetIsRemembered()
{
    Host host(8);
    host.wait(20);
    host.send(0x34).send(0x36).send(0x85).send(0x55, true).send(0x01).send(0x30).send(0x01).text("A");
    const Desk desk(host, std::string(eightLines) + ",controller=st7920");
    Texts got;
    for (const DecodedFrame &frame : desk.frames()) {
        got.push_back(frame.text);
    }
    QCOMPARE(got, (Texts{"Function set: 8 bits, extended set (0x34)",
                         "Function set: 8 bits, extended set, graphics on (0x36)", "Set GDRAM address: 0x05 (0x85)",
                         "Data 0x55 to GDRAM", "Standby (0x01)", "Function set: 8 bits, basic set (0x30)",
                         "Clear display (0x01)", "Data 0x41 'A' to DDRAM 0x00"}));
}

void TstLcd::aGraphicDisplayHasTwoHalves()
{
    Host host(8);
    host.wait(20).set(data + 8, true);
    host.send(0x3f).set(data + 9, true);
    host.send(0x81, true).set(data + 8, false);
    host.send(0xc0);
    const Desk desk(host, std::string(eightLines) + ",controller=ks0108,cs1=11,cs2=12");
    QCOMPARE(desk.summaries(), (Texts{"command v=63 cs=1", "data v=129 cs=3", "command v=192 cs=2"}));
    QCOMPARE(desk.frame(0).text, std::string("Display: on (0x3F), left half"));
    QCOMPARE(desk.frame(1).text, std::string("Data 0x81, both halves"));
    QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("out.csv")).toStdString();
    const std::string csv = decoderChecks::exported(desk, path, 0);
    QVERIFY2(csv.find("kind,v,cs,text\n") != std::string::npos, csv.c_str());
    QVERIFY2(csv.find(",data,129,3,") != std::string::npos, csv.c_str());
}

void TstLcd::cutEndsShowNothingFalse()
{
    Host host(4);
    host.startUp().send(0x28).text("Hi").send(0x80, false, true);
    const auto whole = Desk(host, fourLines).frames();
    // A start-up is known as one when it begins with its first access, and as a whole.
    for (std::int64_t length = 1; length <= host.now(); ++length) {
        QCOMPARE(decoderChecks::faultOfCut(Desk(host, fourLines, 1000000, length).frames(), whole), std::string());
    }
}

void TstLcd::positionsAreWiderThan32Bits()
{
    constexpr std::int64_t far = std::int64_t(1) << 35;
    Host host(8);
    host.wait(far);
    host.send(0x41, true);
    QCOMPARE(Desk(host, eightLines).frame(0).first, far + 2);
    QCOMPARE(Desk(host, eightLines).frame(0).last, far + 6);
}

void TstLcd::settingsThatDoNotGoTogetherAreRefused()
{
    DecodeDesk desk(std::make_unique<LcdAnalyzer>());
    QCOMPARE(desk.edit({{"rs", "0"}, {"e", "1"}}),
             std::string("Choose a channel for each data line: D4 to D7, or D0 to D7"));
    QCOMPARE(desk.edit({{"d4", "2"}, {"d5", "3"}, {"d6", "4"}, {"d7", "5"}}), std::string());
    QVERIFY(!desk.edit({{"bits", "8"}}).empty());
    QCOMPARE(desk.edit({{"d", "6"}}), std::string());
}

void TstLcd::linesThatShareAChannelAreRefused_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("channel");
    QTest::newRow("RS and E") << "rs"
                              << "2";
    QTest::newRow("R/W and RS") << "rw"
                                << "0";
    QTest::newRow("a data line and E") << "d7"
                                       << "2";
    QTest::newRow("two data lines") << "d7"
                                    << "3";
    QTest::newRow("data lines in a row and R/W") << "d"
                                                 << "1";
    QTest::newRow("CS1 and CS2") << "cs1"
                                 << "12";
    QTest::newRow("CS1 and a data line") << "cs1"
                                         << "5";
    QTest::newRow("CS2 and E") << "cs2"
                               << "2";
}

void TstLcd::linesThatShareAChannelAreRefused()
{
    QFETCH(QString, key);
    QFETCH(QString, channel);
    DecodeDesk desk(std::make_unique<LcdAnalyzer>());
    QCOMPARE(desk.edit({{"rs", "0"},
                        {"rw", "1"},
                        {"e", "2"},
                        {"d4", "3"},
                        {"d5", "4"},
                        {"d6", "5"},
                        {"d7", "6"},
                        {"cs1", "11"},
                        {"cs2", "12"}}),
             std::string());
    QCOMPARE(desk.edit({{key.toStdString(), channel.toStdString()}}),
             std::string("All lines must be different channels"));
}

void TstLcd::textsGoFromShortToLong()
{
    Host host(8);
    host.wait(20);
    host.send(0x01).text("A").send(0x80, false, true);
    const Desk desk(host, eightLines);
    const Channel highest(0, 10);
    QCOMPARE(desk.bubble(0, highest, DisplayBase::Hexadecimal),
             (Texts{"0x01", "Clear display", "Clear display (0x01)"}));
    QCOMPARE(desk.bubble(1, highest, DisplayBase::Decimal), (Texts{"'A'", "Data 'A'", "Data 65 'A' to DDRAM 0"}));
    QCOMPARE(desk.bubble(1, highest, DisplayBase::Ascii).back(), std::string("Data 'A' to DDRAM NUL")); // once
    QCOMPARE(desk.bubble(1, highest, DisplayBase::AsciiHex).back(), std::string("Data 'A' (0x41) to DDRAM NUL (0x00)"));
    QCOMPARE(desk.bubble(2, highest, DisplayBase::Hexadecimal), (Texts{"B", "Busy", "Busy, address 0x00"}));
}

void TstLcd::theTextIsExportedAsItIsShown()
{
    Host host(8);
    host.wait(20);
    host.send(0x01).text("Hel").send(0x80, false, true).text("lo").send(0xc0).text("wor\x01ld").send(0x40).text("zz");
    const std::string text = textOf(Desk(host, eightLines));
    QVERIFY2(text.find("\t0x00\tHello\n") != std::string::npos, text.c_str());
    QVERIFY2(text.find("\t0x40\twor.ld\n") != std::string::npos, text.c_str());
    QVERIFY2(text.find('z') == std::string::npos, text.c_str()); // drawn characters are no text
}

void TstLcd::theSimulationIsDecodedAsItWasSent_data()
{
    QTest::addColumn<QString>("settings");
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("block");
    QTest::newRow("four lines") << fourLines << 1000000 << 50000;
    QTest::newRow("four lines, slow") << fourLines << 20000 << 61;
    QTest::newRow("eight lines") << eightLines << 10000000 << 65536;
    QTest::newRow("four lines, no reads") << "rs=0,e=2,d4=3,d5=4,d6=5,d7=6" << 5000000 << 777;
    QTest::newRow("ST7920") << QString::fromStdString(std::string(eightLines) + ",controller=st7920") << 5000000 << 777;
}

/// After the start-up line n: the state, busy and then not, the address, the text with a digit that counts, a read.
void TstLcd::theSimulationIsDecodedAsItWasSent()
{
    QFETCH(QString, settings);
    QFETCH(int, rate);
    QFETCH(int, block);
    DecodeDesk desk(std::make_unique<LcdAnalyzer>(), settings.toStdString());
    const auto capture = desk.simulate(rate, 1000000, block);
    desk.run(*capture);
    const Texts got = desk.summaries();
    QVERIFY(got.size() > 100);
    const bool hasRead = settings.contains(QLatin1String("rw"));
    const bool isNibble = !settings.contains(QLatin1String("d0"));
    Texts expected = {"command v=48", "command v=48", "command v=48"};
    if (isNibble) {
        expected.push_back("command v=32");
    }
    expected.insert(expected.end(), {isNibble ? "command v=40" : "command v=56", "command v=12", "command v=1"});
    expected.push_back("command v=6");
    for (unsigned n = 0; expected.size() < got.size(); ++n) {
        if (isNibble && n % 8 == 7) {
            expected.push_back("nibble v=4");
        }
        if (hasRead) {
            expected.push_back("status v=" + std::to_string(0x80U | (n & 0x7fU)));
            expected.push_back("status v=" + std::to_string(n & 0x7fU));
        }
        expected.push_back(n % 2 == 0 ? "command v=128" : "command v=192");
        for (const char c : std::string("Hello, world! ") + char('0' + (n + 1) % 10)) {
            expected.push_back("data v=" + std::to_string(int(c)));
        }
        if (hasRead) {
            expected.push_back("read v=" + std::to_string((n + 1) & 0xffU));
        }
        if (settings.contains(QLatin1String("st7920")) && n % 4 == 3) {
            expected.insert(expected.end(), {"command v=52", "command v=54", "command v=128", "command v=133"});
            expected.push_back("data v=" + std::to_string((n + 1) & 0xffU));
            expected.insert(expected.end(), {"data v=170", "command v=48"});
        }
    }
    expected.resize(got.size());
    QCOMPARE(got, expected);
}

/// Page after page, the left half and the right one.
void TstLcd::aGraphicDisplayIsSimulated()
{
    DecodeDesk desk(std::make_unique<LcdAnalyzer>(), std::string(eightLines) + ",controller=ks0108,cs1=11,cs2=12");
    const auto capture = desk.simulate(5000000, 1000000, 777);
    desk.run(*capture);
    const Texts got = desk.summaries();
    QVERIFY(got.size() > 100);
    Texts expected;
    for (unsigned n = 0; expected.size() < got.size(); ++n) {
        const std::string half = n % 2 == 0 ? " cs=1" : " cs=2";
        if (n < 2) {
            expected.insert(expected.end(), {"command v=63" + half, "command v=192" + half});
        }
        expected.push_back("status v=0" + half);
        expected.push_back("command v=" + std::to_string(184 + n / 2 % 8) + half);
        expected.push_back("command v=64" + half);
        for (unsigned i = 0; i < 8; ++i) {
            expected.push_back("data v=" + std::to_string((n + i) & 0xffU) + half);
        }
    }
    expected.resize(got.size());
    QCOMPARE(got, expected);
}

void TstLcd::randomEdgesGiveFramesInOrder()
{
    constexpr std::int64_t length = 20000;
    const std::string four(fourLines);
    const std::string eight(eightLines);
    for (const std::int64_t mean : {1, 2, 10, 100, 2000}) {
        for (const std::string &settings :
             {four + ",controller=hd44780", four + ",controller=st7920", eight + ",controller=hd44780",
              eight + ",controller=st7920", eight + ",controller=ks0108"}) {
            TestCapture capture(1000000, length);
            for (std::uint32_t i = 0; i < 12; ++i) {
                capture.channel(i, i % 2 == 0, decoderChecks::randomEdges(i, mean, length));
            }
            DecodeDesk desk(std::make_unique<LcdAnalyzer>(), settings);
            QCOMPARE(decoderChecks::faultOf(desk.run(capture), length), std::string());
        }
    }
}

QTEST_GUILESS_MAIN(TstLcd)
#include "tst_Lcd.moc"
