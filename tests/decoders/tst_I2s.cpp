#include "DecoderChecks.h"
#include "I2sAnalyzer.h"
#include "PythonReader.h"
#include "WireBundle.h"

#include <QtTest>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

using Texts = std::vector<std::string>;
using Desk = BundleDesk<I2sAnalyzer>;

namespace {

constexpr std::uint32_t sck = 0;
constexpr std::uint32_t wordSelect = 1;
constexpr std::uint32_t sd = 2;
constexpr const char *lines = "sck=0,ws=1,sd=2";

std::string with(const std::string &settings)
{
    return std::string(lines) + "," + settings;
}

/// A sender; a clock is 10 samples, the lines change at the fall of SCK.
class Sender : public WireBundle {
public:
    Sender() : WireBundle(3) { wait(20); }
    Sender &bit(bool select, bool data)
    {
        set(sck, false).set(wordSelect, select).set(sd, data).wait(5);
        rises.push_back(now());
        set(sck, true).wait(5);
        return *this;
    }
    Sender &idle(int clocks, bool select)
    {
        for (int i = 0; i < clocks; ++i) {
            bit(select, false);
        }
        return *this;
    }
    /// Bits in the order of time; the word select goes to `next` with the last one where it is a clock early.
    Sender &word(bool select, const std::string &bits, bool isEarly, bool next)
    {
        for (std::size_t i = 0; i < bits.size(); ++i) {
            bit(isEarly && i + 1 == bits.size() ? next : select, bits[i] == '1');
        }
        return *this;
    }
    Sender &stereo(const std::string &left, const std::string &right, bool isEarly, bool isLeftHigh)
    {
        return word(isLeftHigh, left, isEarly, !isLeftHigh).word(!isLeftHigh, right, isEarly, isLeftHigh);
    }
    Sender &i2s(const std::string &left, const std::string &right) { return stereo(left, right, true, false); }
    /// A frame of slots; the word select is high for the clock before it, or for its first one.
    Sender &frame(const std::string &bits, bool isEarly)
    {
        for (std::size_t i = 0; i < bits.size(); ++i) {
            bit(isEarly ? i + 1 == bits.size() : i == 0, bits[i] == '1');
        }
        return *this;
    }

    std::vector<std::int64_t> rises;
};

std::string sample(int slot, std::uint64_t value)
{
    return "sample slot=" + std::to_string(slot) + " v=" + std::to_string(value);
}

std::string bitsOf(std::uint64_t value, int width)
{
    std::string bits;
    for (int i = width - 1; i >= 0; --i) {
        bits += (value >> i & 1U) != 0 ? '1' : '0';
    }
    return bits;
}

/// The I2S words of one frame after the other, behind a right word of zeros.
Sender i2sFrames(const std::vector<std::uint64_t> &words, int width)
{
    Sender sender;
    sender.idle(3, false).idle(width, true).bit(false, false);
    for (std::size_t i = 0; i + 1 < words.size(); i += 2) {
        sender.i2s(bitsOf(words[i], width), bitsOf(words[i + 1], width));
    }
    return sender;
}

} // namespace

class TstI2s : public QObject {
    Q_OBJECT
private slots:
    void i2sWordsBeginAClockBehindTheChange();
    void leftJustifiedWordsBeginAtTheChange();
    void rightJustifiedWordsEndBeforeTheChange();
    void aCaptureMayBeginWithinARightJustifiedWordsPadding();
    void pcmFramesBeginAtTheRise_data();
    void pcmFramesBeginAtTheRise();
    void slotsFollowEachOther();
    void slotsMayBeWiderThanWords();
    void slotsAreCountedFromTheFrame();
    void aFrameThatIsTooShortIsTold();
    void aFrameThatEndsBehindAWholeWordIsTold_data();
    void aFrameThatEndsBehindAWholeWordIsTold();
    void wordsHaveOneToSixtyFourBits_data();
    void wordsHaveOneToSixtyFourBits();
    void aWordWithTooFewBitsIsTold();
    void aClockThatWentMissingIsTold();
    void bitsMayBeTakenAtTheFall();
    void theLowestBitMayComeFirst();
    void leftMayBeEitherLevel();
    void theLastWordIsShownWhenItIsWhole();
    void cutEndsShowNothingFalse();
    void positionsAreWiderThan32Bits();
    void settingsThatDoNotGoTogetherAreRefused();
    void textsGoFromShortToLong();
    void soundIsExported_data();
    void soundIsExported();
    void waveFilesAreReadByOthers();
    void theSimulationIsDecodedAsItWasSent_data();
    void theSimulationIsDecodedAsItWasSent();
    void randomEdgesGiveFramesInOrder();
};

void TstI2s::i2sWordsBeginAClockBehindTheChange()
{
    const Sender sender = i2sFrames({0x80, 0x01, 0xa5, 0x5a}, 8);
    for (const char *settings : {"bits=8", "bits=0"}) {
        const Desk desk(sender, with(settings));
        const Texts expected = {sample(1, 0), sample(0, 0x80), sample(1, 0x01), sample(0, 0xa5), sample(1, 0x5a)};
        QCOMPARE(desk.summaries(), expected);
        QCOMPARE(desk.frame(1).first, sender.rises[12]);
        QCOMPARE(desk.frame(1).last, sender.rises[19]);
    }
    // Bits behind those of a word are left out.
    QCOMPARE(Desk(sender, with("bits=4")).summaries(),
             (Texts{sample(1, 0), sample(0, 8), sample(1, 0), sample(0, 10), sample(1, 5)}));
}

void TstI2s::leftJustifiedWordsBeginAtTheChange()
{
    Sender sender;
    sender.idle(3, false)
        .stereo("10100000", "01110000", false, true)
        .stereo("11110000", "00010000", false, true)
        .idle(1, true);
    QCOMPARE(Desk(sender, with("format=left,bits=4")).summaries(),
             (Texts{sample(0, 10), sample(1, 7), sample(0, 15), sample(1, 1)}));
}

void TstI2s::rightJustifiedWordsEndBeforeTheChange()
{
    Sender sender;
    sender.idle(3, false)
        .stereo("00001010", "11110111", false, true)
        .stereo("00001111", "11110001", false, true)
        .idle(1, true);
    const Desk desk(sender, with("format=right,bits=4"));
    QCOMPARE(desk.summaries(), (Texts{sample(0, 10), sample(1, 7), sample(0, 15), sample(1, 1)}));
    QCOMPARE(desk.frame(0).first, sender.rises[3 + 4]);
    QCOMPARE(desk.frame(0).last, sender.rises[3 + 7]);
    QCOMPARE(Desk(sender, with("format=right")).summaries().front(), sample(0, 10));
}

void TstI2s::aCaptureMayBeginWithinARightJustifiedWordsPadding()
{
    Sender sender;
    sender.stereo("0000" + bitsOf(0xa5, 8), "0000" + bitsOf(0x3c, 8), false, true).idle(3, true);
    const std::string settings = with("format=right,bits=8");
    for (const int cut : {0, 3, 4, 5}) { // clocks; the first one that is there is not taken for a bit
        const std::int64_t from = sender.rises[std::size_t(cut)] - 3;
        const Texts got = Desk(sender, settings, 1000000, -1, from).summaries();
        QCOMPARE(got, cut < 4 ? (Texts{sample(0, 0xa5), sample(1, 0x3c)}) : Texts{sample(1, 0x3c)});
    }
}

void TstI2s::pcmFramesBeginAtTheRise_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<bool>("isEarly");
    QTest::newRow("mode A") << "pcm" << true;
    QTest::newRow("mode B") << "dsp_b" << false;
}

void TstI2s::pcmFramesBeginAtTheRise()
{
    QFETCH(QString, format);
    QFETCH(bool, isEarly);
    Sender sender;
    sender.idle(3, false);
    if (isEarly) {
        sender.bit(true, false);
    }
    const std::size_t begin = sender.rises.size();
    sender.frame("1010000000000", isEarly).frame("0111000000000", isEarly).frame("1111000000000", isEarly);
    const Desk desk(sender, with("bits=4,format=" + format.toStdString()));
    QCOMPARE(desk.summaries(), (Texts{sample(0, 10), sample(0, 7), sample(0, 15)}));
    QCOMPARE(desk.frame(0).first, sender.rises[begin]);
    QCOMPARE(desk.frame(0).last, sender.rises[begin + 3]);
}

void TstI2s::slotsFollowEachOther()
{
    Sender sender;
    sender.idle(3, false)
        .bit(true, false)
        .frame("0001001001000101", true)
        .frame("1111111011011100", true)
        .bit(false, false);
    // Slots of a TDM bus are counted from 1, as they are on data sheets.
    for (const char *settings : {"format=tdm,bits=4,slots=4", "format=tdm,bits=4", "format=tdm,slots=4"}) {
        QCOMPARE(Desk(sender, with(settings)).summaries(),
                 (Texts{sample(1, 1), sample(2, 2), sample(3, 4), sample(4, 5), sample(1, 15), sample(2, 14),
                        sample(3, 13), sample(4, 12)}));
    }
    QCOMPARE(Desk(sender, with("format=pcm,bits=4,slots=2")).summaries(),
             (Texts{sample(0, 1), sample(1, 2), sample(0, 15), sample(1, 14)}));
}

void TstI2s::slotsMayBeWiderThanWords()
{
    Sender sender;
    sender.idle(3, false).bit(true, false).frame("1010111101011111", true).frame("1100000000110000", true);
    QCOMPARE(Desk(sender, with("format=tdm,bits=4,slot_width=8")).summaries(),
             (Texts{sample(1, 10), sample(2, 5), sample(1, 12), sample(2, 3)}));
}

void TstI2s::slotsAreCountedFromTheFrame()
{
    // A select that is high for half of a frame is as good as a pulse.
    Sender sender;
    sender.idle(3, false).bit(true, false);
    for (const char *bits : {"0001001", "1001010", "0001001"}) {
        sender.word(true, bits, true, false).word(false, "00100010", true, true);
    }
    QCOMPARE(Desk(sender, with("format=tdm,bits=4,slots=2")).summaries().front(), sample(1, 1));
}

void TstI2s::aFrameThatIsTooShortIsTold()
{
    Sender sender;
    sender.idle(3, false).bit(true, false).frame("10100101", true).frame("110011", true).frame("11110000", true);
    const Desk desk(sender, with("format=tdm,bits=4,slots=2"));
    QCOMPARE(desk.summaries(),
             (Texts{sample(1, 10), sample(2, 5), sample(1, 12), sample(2, 3) + " n=2", sample(1, 15), sample(2, 0)}));
    QCOMPARE(desk.frame(3).text, std::string("Slot 2 0x3, 2 bits, not as many as usual"));
}

void TstI2s::aFrameThatEndsBehindAWholeWordIsTold_data()
{
    QTest::addColumn<QString>("settings");
    QTest::addColumn<QString>("cut");
    QTest::addColumn<QStringList>("words");
    // Behind a slot, within the padding of one, and within that of the last one; a frame has 24 clocks.
    const auto row = [](const char *name, const char *settings, const char *cut, const char *words) {
        QTest::newRow(name) << settings << cut << QString::fromLatin1(words).split(QLatin1Char(' '));
    };
    row("slots are missing", "bits=4,slots=6", "101001011100", "10 5 12");
    row("a slot's padding", "bits=4,slots=3,slot_width=8", "1010000001010", "10 5");
    row("the last padding", "bits=4,slots=3,slot_width=8", "10100000010100001100000", "10 5 12");
}

void TstI2s::aFrameThatEndsBehindAWholeWordIsTold()
{
    QFETCH(QString, settings);
    QFETCH(QString, cut);
    QFETCH(QStringList, words);
    for (const bool isEarly : {true, false}) {
        Sender sender;
        sender.idle(3, false);
        if (isEarly) {
            sender.bit(true, false);
        }
        sender.frame(bitsOf(0, 24), isEarly).frame(cut.toStdString(), isEarly).frame(bitsOf(0, 24), isEarly);
        sender.frame(bitsOf(0, 24), isEarly);
        const Desk desk(sender, with(settings.toStdString() + (isEarly ? ",format=pcm" : ",format=dsp_b")));
        const int whole = settings.contains(QLatin1String("slots=6")) ? 6 : 3;
        Texts expected;
        for (int frame = 0; frame < 4; ++frame) {
            for (int slot = 0; slot < (frame == 1 ? words.size() : whole); ++slot) {
                expected.push_back(sample(slot, frame == 1 ? words[slot].toULong() : 0));
            }
            if (frame == 1) {
                expected.back() += " clocks=" + std::to_string(cut.size());
            }
        }
        QCOMPARE(desk.summaries(), expected);
        const auto wrong = std::size_t(whole + words.size() - 1);
        QVERIFY(desk.frame(wrong).text.ends_with(", the frame has " + std::to_string(cut.size()) + " clocks only"));
        QCOMPARE(desk.markers(sd)[wrong].type, MarkerType::ErrorX);
        QCOMPARE(desk.markers(sd)[wrong + 1].type, MarkerType::Start);
    }
}

void TstI2s::wordsHaveOneToSixtyFourBits_data()
{
    QTest::addColumn<int>("bits");
    for (const int bits : {1, 2, 8, 13, 24, 32, 33, 63, 64}) {
        QTest::addRow("%d bits", bits) << bits;
    }
}

void TstI2s::wordsHaveOneToSixtyFourBits()
{
    QFETCH(int, bits);
    const std::uint64_t all = ~std::uint64_t(0) >> (64 - bits);
    const std::vector<std::uint64_t> words = {all, std::uint64_t(1) << (bits - 1), 0x123456789abcdef1 & all, 1};
    Texts expected;
    for (std::size_t i = 0; i < words.size(); ++i) {
        expected.push_back(sample(int(i % 2), words[i]));
    }
    const Texts got = Desk(i2sFrames(words, bits), with("bits=" + std::to_string(bits))).summaries();
    QCOMPARE(Texts(got.begin() + 1, got.end()), expected);
    // Clocks behind a word, and as many as there are: 70 a side are more than a word can have.
    Sender sender;
    sender.idle(3, false);
    for (int i = 0; i < 2; ++i) {
        sender.stereo(bitsOf(words[2], bits) + std::string(std::size_t(70 - bits), '1'), std::string(70, '0'), false,
                      true);
    }
    QCOMPARE(Desk(sender, with("format=left,bits=" + std::to_string(bits))).frame(0).summary(), sample(0, words[2]));
}

void TstI2s::aWordWithTooFewBitsIsTold()
{
    Sender sender = i2sFrames({0x12, 0x34}, 8);
    sender.i2s("1010", "10000001").i2s("00000000", "00000000");
    const Desk desk(sender, with("bits=8"));
    QCOMPARE(desk.frame(3).summary(), sample(0, 10) + " n=4");
    QCOMPARE(desk.frame(3).text, std::string("Left 0xA, 4 bits, not as many as usual"));
    QCOMPARE(desk.frame(4).summary(), sample(1, 129));
    const auto markers = desk.markers(sd);
    QCOMPARE(markers[3].type, MarkerType::ErrorX);
    QTemporaryDir folder;
    const std::string csv = decoderChecks::exported(desk, folder.filePath(QStringLiteral("out.csv")).toStdString(), 0);
    QVERIFY2(csv.find("kind,slot,v,n,clocks,text\n") != std::string::npos, csv.c_str());
    QVERIFY2(csv.find(",sample,0,10,4,,") != std::string::npos, csv.c_str());
}

void TstI2s::aClockThatWentMissingIsTold()
{
    Sender sender;
    sender.idle(2, true).bit(false, false);
    sender.i2s("00000001", "00000010").i2s("0000011", "00000100").i2s("00000101", "000000110");
    QCOMPARE(Desk(sender, lines).summaries(), (Texts{sample(0, 1), sample(1, 2), sample(0, 3) + " n=7", sample(1, 4),
                                                     sample(0, 5), sample(1, 6) + " n=9"}));
}

void TstI2s::bitsMayBeTakenAtTheFall()
{
    WireBundle wires(3, 1U << sck);
    wires.wait(20);
    const auto bit = [&wires](bool select, bool data) {
        wires.set(sck, true).set(wordSelect, select).set(sd, data).wait(5).set(sck, false).wait(5);
    };
    bit(true, false);
    bit(false, false);
    for (const int one : {1, 0, 1, 1}) {
        bit(false, one != 0);
    }
    bit(true, true);
    QCOMPARE(Desk(wires, with("edge=falling")).summaries(), Texts{sample(0, 0x17)});
}

void TstI2s::theLowestBitMayComeFirst()
{
    const Texts got = Desk(i2sFrames({0x80, 0x13}, 8), with("bits=8,bit_order=lsb")).summaries();
    QCOMPARE(Texts(got.begin() + 1, got.end()), (Texts{sample(0, 1), sample(1, 0xc8)}));
}

void TstI2s::leftMayBeEitherLevel()
{
    const Texts got = Desk(i2sFrames({0x80, 0x13}, 8), with("bits=8,left=high")).summaries();
    QCOMPARE(Texts(got.begin() + 1, got.end()), (Texts{sample(1, 0x80), sample(0, 0x13)}));
    QCOMPARE(Desk(i2sFrames({0x80, 0x13}, 8), with("bits=8,left=low")).frame(1).summary(), sample(0, 0x80));
}

void TstI2s::theLastWordIsShownWhenItIsWhole()
{
    Sender sender;
    sender.idle(2, true).bit(false, false).i2s("0001", "0010").word(false, "011100", false, false);
    QCOMPARE(Desk(sender, with("bits=4")).summaries(), (Texts{sample(0, 1), sample(1, 2), sample(0, 7)}));
    QCOMPARE(Desk(sender, with("bits=7")).summaries(), (Texts{sample(0, 1) + " n=4", sample(1, 2) + " n=4"}));
    QCOMPARE(Desk(sender, lines).summaries(), (Texts{sample(0, 1), sample(1, 2)}));
}

void TstI2s::cutEndsShowNothingFalse()
{
    const Sender sender = i2sFrames({0x80, 0x01, 0xa5, 0x5a}, 8);
    for (const char *settings : {"bits=8", "bits=0", "bits=4", "bits=8,format=right", "bits=4,format=pcm"}) {
        const auto whole = Desk(sender, with(settings)).frames();
        for (std::int64_t length = 1; length <= sender.now(); ++length) {
            const auto cut = Desk(sender, with(settings), 1000000, length).frames();
            QCOMPARE(decoderChecks::faultOfCut(cut, whole), std::string());
        }
    }
}

void TstI2s::positionsAreWiderThan32Bits()
{
    constexpr std::int64_t far = std::int64_t(1) << 36;
    Sender sender;
    sender.wait(far);
    sender.idle(2, true).bit(false, false).i2s("0001", "0010");
    const Desk desk(sender, lines);
    QCOMPARE(desk.frame(0).first, sender.rises[3]);
    QVERIFY(desk.frame(0).first > far);
}

void TstI2s::settingsThatDoNotGoTogetherAreRefused()
{
    DecodeDesk desk(std::make_unique<I2sAnalyzer>());
    QVERIFY(!desk.edit({{"sck", "0"}, {"ws", "1"}}).empty());
    QVERIFY(!desk.edit({{"sd", "1"}}).empty());
    QCOMPARE(desk.edit({{"sd", "2"}}), std::string());
    QCOMPARE(desk.edit({{"bits", "24"}, {"slot_width", "16"}}),
             std::string("A slot must have as many clocks as a word has bits"));
    QCOMPARE(desk.edit({{"slot_width", "24"}}), std::string());
}

void TstI2s::textsGoFromShortToLong()
{
    const Sender sender = i2sFrames({0x80, 0x41}, 8);
    const Desk desk(sender, with("bits=8"));
    const Channel line(0, sd);
    QCOMPARE(desk.bubble(1, line, DisplayBase::Decimal), (Texts{"-128", "L -128", "Left -128"}));
    QCOMPARE(desk.bubble(2, line, DisplayBase::Decimal), (Texts{"65", "R 65", "Right 65"}));
    QCOMPARE(desk.bubble(1, line, DisplayBase::Hexadecimal), (Texts{"0x80", "L 0x80", "Left 0x80"}));
    QCOMPARE(Desk(sender, with("bits=8,signed=false")).frame(1, DisplayBase::Decimal).text, std::string("Left 128"));
    Sender tdm;
    tdm.idle(3, false).bit(true, false).frame("00010010", true).bit(false, false);
    QCOMPARE(Desk(tdm, with("format=tdm,bits=4,slots=2")).bubble(1, line, DisplayBase::Decimal),
             (Texts{"2", "2: 2", "Slot 2 2"}));
}

void TstI2s::soundIsExported_data()
{
    QTest::addColumn<int>("bits");
    QTest::addColumn<bool>("isSigned");
    QTest::addColumn<QByteArray>("data");
    // The words 1 and the highest one that is negative, each at the upper end of its bytes.
    QTest::newRow("8 bits, unsigned in the file") << 8 << true << QByteArray::fromHex("8100");
    QTest::newRow("8 bits as they are") << 8 << false << QByteArray::fromHex("0180");
    QTest::newRow("12 bits in 16") << 12 << true << QByteArray::fromHex("10000080");
    QTest::newRow("16 bits") << 16 << true << QByteArray::fromHex("01000080");
    QTest::newRow("16 bits, unsigned on the wire") << 16 << false << QByteArray::fromHex("01800000");
    QTest::newRow("24 bits") << 24 << true << QByteArray::fromHex("010000000080");
    QTest::newRow("32 bits") << 32 << true << QByteArray::fromHex("0100000000000080");
    QTest::newRow("the upper 32 of 40") << 40 << true << QByteArray::fromHex("0000000000000080");
}

void TstI2s::soundIsExported()
{
    QFETCH(int, bits);
    QFETCH(bool, isSigned);
    QFETCH(QByteArray, data);
    Sender sender;
    sender.idle(2, true).bit(false, false);
    const std::string one = bitsOf(1, bits);
    const std::string top = bitsOf(std::uint64_t(1) << (bits - 1), bits);
    sender.i2s(one, top).i2s(one, top);
    const Desk desk(sender, with("bits=" + std::to_string(bits) + (isSigned ? "" : ",signed=false")));
    QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("out.wav")).toStdString();
    const QByteArray file = QByteArray::fromStdString(decoderChecks::exported(desk, path, I2sSettings::Wave));
    QCOMPARE(file.mid(44, 2 * data.size()), data + data);
    QCOMPARE(file.left(4), QByteArray("RIFF"));
    const auto number = [&file](int at, int bytes) {
        unsigned value = 0;
        for (int i = bytes - 1; i >= 0; --i) {
            value = value << 8 | std::uint8_t(file[at + i]);
        }
        return value;
    };
    QCOMPARE(number(4, 4), unsigned(file.size() - 8));
    QCOMPARE(number(22, 2), 2U);
    // A frame has twice the word's clocks of 10 us.
    const auto rate = unsigned(100000.0 / (2 * bits) + 0.5);
    QCOMPARE(number(24, 4), rate);
    QCOMPARE(number(28, 4), rate * unsigned(data.size()));
    QCOMPARE(number(40, 4), unsigned(2 * data.size()));
}

void TstI2s::waveFilesAreReadByOthers()
{
    const Sender sender = i2sFrames({0x0102, 0x8304, 0x0506, 0xf708}, 16);
    const Desk desk(sender, with("bits=16"));
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("out.wav"));
    decoderChecks::exportTo(desk, path.toStdString(), I2sSettings::Wave);
    const auto text = pythonReader::read("wave",
                                         "w = wave.open(sys.argv[1])\n"
                                         "print(w.getnchannels(), w.getsampwidth(), w.getframerate(), w.getnframes())\n"
                                         "print(w.readframes(9).hex())",
                                         path);
    if (!text) {
        QSKIP("python3 is not installed");
    }
    // The frame before the first whole one has its right word alone.
    QCOMPARE(*text, std::string("2 2 3125 3 0000000002010483060508f7"));
}

void TstI2s::theSimulationIsDecodedAsItWasSent_data()
{
    QTest::addColumn<QString>("settings");
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("block");
    QTest::newRow("I2S") << "bits=16" << 10000000 << 50000;
    QTest::newRow("I2S, at the fall, small blocks") << "bits=24,edge=falling,left=high" << 20000 << 53;
    QTest::newRow("left-justified") << "bits=16,format=left,slot_width=32" << 1000000 << 50000;
    QTest::newRow("right-justified") << "bits=20,format=right,slot_width=32" << 1000000 << 50000;
    QTest::newRow("mode A") << "bits=13,format=pcm,slot_width=16" << 1000000 << 777;
    QTest::newRow("mode B, two slots, lowest first") << "bits=16,format=dsp_b,slots=2,bit_order=lsb" << 1000000 << 777;
    QTest::newRow("TDM") << "bits=16,format=tdm,slots=8,slot_width=32" << 500000000 << 100000;
}

/// Word n is n times an odd number, in slot after slot. Each 23rd frame lacks its last clock: a bit of the last word,
/// where words have no room around them, and else a clock of a frame of slots.
void TstI2s::theSimulationIsDecodedAsItWasSent()
{
    QFETCH(QString, settings);
    QFETCH(int, rate);
    QFETCH(int, block);
    DecodeDesk desk(std::make_unique<I2sAnalyzer>(), with(settings.toStdString()));
    const auto capture = desk.simulate(rate, rate >= 500000000 ? 20000000 : 500000, block);
    desk.run(*capture);
    const auto numberAt = [&settings](const char *key, unsigned usual) {
        const int at = settings.indexOf(QLatin1String(key));
        return at < 0 ? usual : settings.mid(at + int(strlen(key))).section(QLatin1Char(','), 0, 0).toUInt();
    };
    const unsigned bits = numberAt("bits=", 16);
    const bool isFramed = settings.contains(QLatin1String("pcm")) || settings.contains(QLatin1String("dsp")) ||
                          settings.contains(QLatin1String("tdm"));
    const unsigned count = numberAt("slots=", isFramed ? 1 : 2);
    const unsigned firstSlot = settings.contains(QLatin1String("tdm")) ? 1 : 0;
    const bool isWide = settings.contains(QLatin1String("slot_width"));
    const bool isLsb = settings.contains(QLatin1String("lsb"));
    const Texts got = desk.summaries();
    QVERIFY(got.size() > 50);
    // Words before the first change that is seen are missing.
    std::uint32_t number = 0;
    const auto text = [&](std::uint32_t n) {
        const std::uint64_t value = (n * 2654435761U) & (~std::uint64_t(0) >> (64 - bits));
        const std::string whole = sample(int(n % count + firstSlot), value);
        if (n % count != count - 1 || n / count % 23 != 22) {
            return whole;
        }
        if (isWide) {
            const unsigned clocks = numberAt("slot_width=", 0) * count - 1;
            return isFramed ? whole + " clocks=" + std::to_string(clocks) : whole;
        }
        const std::uint64_t left = isLsb ? value & (~std::uint64_t(0) >> (65 - bits)) : value >> 1;
        return sample(int(n % count + firstSlot), left) + " n=" + std::to_string(bits - 1);
    };
    while (number < 2 * count && text(number) != got.front()) {
        ++number;
    }
    Texts expected;
    while (expected.size() < got.size()) {
        expected.push_back(text(number++));
    }
    for (std::size_t i = 0; i < got.size(); ++i) {
        QVERIFY2(got[i] == expected[i], (std::to_string(i) + got[i] + " not " + expected[i]).c_str());
    }
}

void TstI2s::randomEdgesGiveFramesInOrder()
{
    constexpr std::int64_t length = 20000;
    for (const std::int64_t mean : {1, 2, 10, 100, 2000}) {
        for (const char *settings :
             {"bits=0", "bits=64", "format=left,bits=3", "format=right,bits=0", "format=right,bits=5", "format=pcm",
              "format=dsp_b,bits=1,slots=64", "format=tdm,slot_width=256"}) {
            TestCapture capture(1000000, length);
            for (std::uint32_t i = 0; i < 3; ++i) {
                const std::int64_t distance = i == wordSelect ? 10 * mean : mean;
                capture.channel(i, i % 2 == 0, decoderChecks::randomEdges(i, distance, length));
            }
            DecodeDesk desk(std::make_unique<I2sAnalyzer>(), with(settings));
            QCOMPARE(decoderChecks::faultOf(desk.run(capture), length), std::string());
        }
    }
}

QTEST_GUILESS_MAIN(TstI2s)
#include "tst_I2s.moc"
