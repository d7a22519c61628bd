#include "WavFile.h"
#include "emulator/Bench.h"

#include <QtTest>

#include <bit>
#include <cmath>
#include <limits>
#include <random>

using namespace bench;
using emulator::parseWav;
using emulator::WavFile;
using emulator::WavInput;

namespace {

Bytes text(const char *letters)
{
    return {letters, letters + std::strlen(letters)};
}

Bytes chunk(const char *name, const Bytes &content)
{
    const Bytes whole = text(name) + little(content.size(), 4) + content;
    return content.size() % 2 == 0 ? whole : whole + Bytes{0};
}

Bytes riff(const Bytes &chunks)
{
    return text("RIFF") + little(chunks.size() + 4, 4) + text("WAVE") + chunks;
}

constexpr unsigned pcm = 1;
constexpr unsigned ieeeFloat = 3;

Bytes format(unsigned tag, unsigned channels, unsigned rate, unsigned bits)
{
    const unsigned frame = channels * bits / 8;
    return little(tag, 2) + little(channels, 2) + little(rate, 4) + little(rate * frame, 4) + little(frame, 2) +
           little(bits, 2);
}

Bytes extensibleFormat(unsigned tag, unsigned channels, unsigned rate, unsigned bits)
{
    return format(0xFFFE, channels, rate, bits) + little(22, 2) + little(bits, 2) + little(0, 4) + little(tag, 2) +
           Bytes{0, 0, 0, 0, 0x10, 0, 0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71};
}

Bytes wav(unsigned tag, unsigned channels, unsigned bits, const Bytes &data, unsigned rate = 48000)
{
    return riff(chunk("fmt ", format(tag, channels, rate, bits)) + chunk("data", data));
}

Bytes floats(const std::vector<float> &values)
{
    Bytes bytes;
    for (const float value : values) {
        bytes = bytes + little(std::bit_cast<std::uint32_t>(value), 4);
    }
    return bytes;
}

/// A good file, for what can be wrong with it.
Bytes good()
{
    return wav(pcm, 1, 16, little(0x4000, 2) + little(0x8000, 2));
}

std::shared_ptr<const WavFile> fileOf(std::vector<float> samples, int channels, std::int64_t rate)
{
    auto file = std::make_shared<WavFile>();
    file->samples = std::move(samples);
    file->channels = channels;
    file->rate = rate;
    return file;
}

double after(WavInput &input, double seconds)
{
    return input.voltsAt({.seconds = seconds});
}

} // namespace

class TstWavFile : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void eachKindOfSampleIsRead_data();
    void eachKindOfSampleIsRead();
    void stereoIsTwoSamplesAFrame();
    void otherChunksArePassedOver();
    void whatLiesBehindTheFileIsIgnored();
    void theExtensibleFormatIsRead();
    void aMalformedFileIsRefused_data();
    void aMalformedFileIsRefused();
    void aFileThatEndsAnywhereIsRefused();
    void anyByteMayBeWrong();
    void aFileIsPlayedAgainAndAgain();
    void betweenFramesLiesAStraightLine();
    void frameByFrameTheRateDoesNotCount();
    void aChannelTakesTheFilesOwn();
};

void TstWavFile::eachKindOfSampleIsRead_data()
{
    QTest::addColumn<Bytes>("bytes");
    QTest::addColumn<std::vector<float>>("samples");
    QTest::addRow("8 bits") << wav(pcm, 1, 8, {0, 128, 255, 192}) << std::vector<float>{-1, 0, 127.0F / 128, 0.5F};
    QTest::addRow("16 bits") << wav(pcm, 1, 16,
                                    little(0x8000, 2) + little(0, 2) + little(0x4000, 2) + little(0xFFFF, 2))
                             << std::vector<float>{-1, 0, 0.5F, -1.0F / 32768};
    QTest::addRow("24 bits") << wav(pcm, 1, 24, little(0x800000, 3) + little(0x400000, 3) + little(0xFFFFFF, 3))
                             << std::vector<float>{-1, 0.5F, -1.0F / 8388608};
    QTest::addRow("32 bits") << wav(pcm, 1, 32, little(0x80000000, 4) + little(0x40000000, 4))
                             << std::vector<float>{-1, 0.5F};
    QTest::addRow("floating point") << wav(ieeeFloat, 1, 32, floats({-1.5F, 0.25F, 0}))
                                    << std::vector<float>{-1.5F, 0.25F, 0};
}

void TstWavFile::eachKindOfSampleIsRead()
{
    QFETCH(Bytes, bytes);
    QFETCH(std::vector<float>, samples);
    const WavFile file = parseWav(bytes);
    QCOMPARE(QString::fromStdString(file.problem), QString());
    QCOMPARE(file.rate, std::int64_t(48000));
    QCOMPARE(file.channels, 1);
    QCOMPARE(file.samples, samples);
}

void TstWavFile::stereoIsTwoSamplesAFrame()
{
    const WavFile file = parseWav(wav(pcm, 2, 8, {0, 128, 128, 0, 192, 64}, 44100));
    QCOMPARE(file.rate, std::int64_t(44100));
    QCOMPARE(file.channels, 2);
    QCOMPARE(file.frames(), std::size_t(3));
    QCOMPARE(file.samples, (std::vector<float>{-1, 0, 0, -1, 0.5F, -0.5F}));
}

void TstWavFile::otherChunksArePassedOver()
{
    // Odd lengths are filled up; at the end of the file the filling may be missing.
    const Bytes format1 = chunk("fmt ", format(pcm, 1, 8000, 8) + Bytes{0, 0});
    Bytes bytes =
        riff(chunk("LIST", {1, 2, 3}) + format1 + chunk("fact", {}) + text("data") + little(1, 4) + Bytes{192});
    const WavFile file = parseWav(bytes);
    QCOMPARE(QString::fromStdString(file.problem), QString());
    QCOMPARE(file.samples, std::vector<float>{0.5F});
    QCOMPARE(parseWav(riff(format1 + chunk("data", {192}) + chunk("cue ", {1, 2}))).samples, std::vector<float>{0.5F});
}

void TstWavFile::whatLiesBehindTheFileIsIgnored()
{
    QCOMPARE(parseWav(good() + Bytes(100, 7)).samples, parseWav(good()).samples);
}

void TstWavFile::theExtensibleFormatIsRead()
{
    QCOMPARE(parseWav(riff(chunk("fmt ", extensibleFormat(pcm, 1, 8000, 8)) + chunk("data", {192}))).samples,
             std::vector<float>{0.5F});
    const WavFile file =
        parseWav(riff(chunk("fmt ", extensibleFormat(ieeeFloat, 2, 8000, 32)) + chunk("data", floats({1, -1}))));
    QCOMPARE(file.samples, (std::vector<float>{1, -1}));
}

void TstWavFile::aMalformedFileIsRefused_data()
{
    QTest::addColumn<Bytes>("bytes");
    QTest::addColumn<QString>("problem");
    const auto add = [](const char *name, const Bytes &bytes, const char *problem) {
        QTest::addRow("%s", name) << bytes << QString::fromLatin1(problem);
    };
    const Bytes data = chunk("data", {1, 2, 3, 4});
    const auto withFormat = [&data](const Bytes &content) { return riff(chunk("fmt ", content) + data); };
    const Bytes plain = chunk("fmt ", format(pcm, 1, 8000, 8));
    add("nothing", {}, "no WAVE file");
    add("another file", text("<settings><global/></settings>"), "no WAVE file");
    add("another RIFF file", text("RIFF") + little(4, 4) + text("AVI "), "no WAVE file");
    add("without an end", text("RIFF") + little(0xFFFFFFFF, 4) + text("WAVE") + plain + data, "not as long as it says");
    add("without a length", text("RIFF") + little(0, 4) + text("WAVE") + plain + data, "not as long as it says");
    add("no chunk", riff({}), "no data");
    add("no data", riff(plain), "no data");
    add("no frame", riff(plain + chunk("data", {})), "data that are not whole frames");
    add("half a frame", riff(chunk("fmt ", format(pcm, 2, 8000, 8)) + chunk("data", {1, 2, 3})),
        "data that are not whole frames");
    add("data first", riff(data + plain), "data before their format");
    add("data twice", riff(plain + data + data), "data twice");
    add("format twice", riff(plain + plain + data), "two formats");
    add("a short format", withFormat(Bytes(15, 0)), "a format that is too short");
    add("a long chunk", riff(plain + text("data") + little(5, 4) + Bytes{1, 2, 3, 4}), "a chunk that is cut off");
    add("half a chunk head", riff(plain + data + Bytes(4, 0)), "a chunk that is cut off");
    add("ADPCM", withFormat(format(2, 1, 8000, 8)), "neither PCM nor floating point");
    add("no channel", withFormat(format(pcm, 0, 8000, 8)), "neither mono nor stereo");
    add("three channels", withFormat(format(pcm, 3, 8000, 8)), "neither mono nor stereo");
    add("no rate", withFormat(format(pcm, 1, 0, 8)), "a format that contradicts itself");
    add("12 bits", withFormat(format(pcm, 1, 8000, 12)), "samples of a size that is not known");
    add("0 bits", withFormat(format(pcm, 1, 8000, 0)), "samples of a size that is not known");
    add("floating point of 64 bits", withFormat(format(ieeeFloat, 1, 8000, 64)), "samples of a size that is not known");
    Bytes wrong = format(pcm, 1, 8000, 8);
    wrong[8] ^= 1; // bytes a second
    add("bytes a second", withFormat(wrong), "a format that contradicts itself");
    wrong = format(pcm, 1, 8000, 8);
    wrong[12] = 2; // bytes a frame
    add("bytes a frame", withFormat(wrong), "a format that contradicts itself");
    add("a short extensible format", withFormat(format(0xFFFE, 1, 8000, 8)), "a format that is not known");
    wrong = extensibleFormat(pcm, 1, 8000, 8);
    wrong[39] = 0;
    add("another extensible format", withFormat(wrong), "a format that is not known");
    add("no number", wav(ieeeFloat, 1, 32, floats({0, std::numeric_limits<float>::quiet_NaN()})),
        "a sample that is no number");
    add("without a limit", wav(ieeeFloat, 1, 32, floats({std::numeric_limits<float>::infinity()})),
        "a sample that is no number");
    add("too long", wav(pcm, 1, 8, Bytes(WavFile::maxSamples + 1, 0)), "too long");
}

void TstWavFile::aMalformedFileIsRefused()
{
    QFETCH(Bytes, bytes);
    const WavFile file = parseWav(bytes);
    QTEST(QString::fromStdString(file.problem), "problem");
}

void TstWavFile::aFileThatEndsAnywhereIsRefused()
{
    const Bytes whole = riff(chunk("fmt ", extensibleFormat(pcm, 1, 8000, 16)) + chunk("data", little(1, 2)));
    QVERIFY(parseWav(whole).problem.empty());
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const WavFile file = parseWav(Bytes(whole.begin(), whole.begin() + std::ptrdiff_t(size)));
        QVERIFY(!file.problem.empty() && file.samples.empty());
    }
}

void TstWavFile::anyByteMayBeWrong()
{
    std::minstd_rand random(7);
    const Bytes whole = wav(pcm, 2, 16, Bytes(64, 9));
    for (int round = 0; round < 5000; ++round) {
        Bytes bytes = whole;
        for (unsigned i = 0; i <= random() % 4; ++i) {
            bytes[random() % bytes.size()] = std::uint8_t(random());
        }
        const WavFile file = parseWav(bytes);
        QCOMPARE(file.problem.empty(), file.channels > 0);
        QCOMPARE(file.problem.empty(), !file.samples.empty());
    }
}

void TstWavFile::aFileIsPlayedAgainAndAgain()
{
    WavInput input(fileOf({-1, 0, 1, 0.5F}, 1, 1000), 0, {});
    QCOMPARE(after(input, 0), -5.0);
    QCOMPARE(after(input, 0.002), 5.0);
    QCOMPARE(after(input, 0.004), -5.0);
    QVERIFY(std::abs(after(input, 4000.003) - 2.5) < 1e-6);
}

void TstWavFile::betweenFramesLiesAStraightLine()
{
    WavInput input(fileOf({-1, 0, 1, 0.5F}, 1, 1000), 0, {.peakToPeak = 2, .offset = 3});
    QVERIFY(std::abs(after(input, 0.00025) - 2.25) < 1e-9);
    QVERIFY(std::abs(after(input, 0.0035) - 2.75) < 1e-9); // from the last frame to the first
    WavInput single(fileOf({0.5F}, 1, 1000), 0, {});
    QCOMPARE(after(single, 0.00037), 2.5);
}

void TstWavFile::frameByFrameTheRateDoesNotCount()
{
    WavInput input(fileOf({-1, 0, 1, 0.5F}, 1, 1000), 0, {.direct = true});
    QCOMPARE(input.voltsAt({.index = 2, .position = 77, .seconds = 123}), 5.0);
    QCOMPARE(input.voltsAt({.index = 4'000'000'003}), 2.5);
}

void TstWavFile::aChannelTakesTheFilesOwn()
{
    const auto stereo = fileOf({-1, 1, 0, 0}, 2, 1000);
    QCOMPARE(WavInput(stereo, 0, {}).voltsAt({}), -5.0);
    QCOMPARE(WavInput(stereo, 1, {}).voltsAt({}), 5.0);
    QCOMPARE(WavInput(fileOf({0.5F}, 1, 1000), 1, {}).voltsAt({}), 2.5);
}

QTEST_APPLESS_MAIN(TstWavFile)
#include "tst_WavFile.moc"
