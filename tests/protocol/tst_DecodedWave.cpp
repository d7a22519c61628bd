#include "analyzer/MadeResults.h"
#include "protocol/DecodedWave.h"
#include "protocol/FaceDesk.h"
#include "protocol/ResultsOnChannel.h"
#include "wave/DecodedRow.h"

namespace {

constexpr std::chrono::seconds patience{30}; // with a thread for which the program does not wait that long

DecodedView view(double ratio)
{
    return {0.0, ratio, 1000, 100'000, PixelScale{96}};
}

int wide(const QString &text)
{
    return 6 * text.length();
}

} // namespace

class TstDecodedWave : public QObject {
    Q_OBJECT
private slots:
    void theWavesSeeWhatIsDecodedWhileItLives();
    void onlyTheChannelsOfAnAnalyzerShowIt();
    void textsFollowTheDisplayFormat();
    void aFormatThatIsNoneIsHexadecimal();
    void framesOnSeveralChannelsAreShared();
    void channelsTellWhoUsesThem();
};

void TstDecodedWave::theWavesSeeWhatIsDecodedWhileItLives()
{
    FaceDesk desk("kinds");
    {
        const DecodedWave wave(*desk.manager, {}, patience);
        QCOMPARE(gDecodedSource, static_cast<const DecodedSource *>(&wave));
        QVERIFY(desk.add());
        QVERIFY(desk.waitForWorkers());
        int decoders = 0;
        gDecodedSource->visit(0, [&decoders](const DecodedChannel &decoded) {
            ++decoders;
            QVERIFY(decoded.hasBubbles() && decoded.hasMarkers());
            BubbleTexts texts(wide);
            DecodedRow row;
            addBubbles(decoded, view(1.0), texts, row.bubbles);
            addMarkers(decoded, view(1.0), row.markers);
            QCOMPARE(row.bubbles.size(), std::size_t(9)); // an edge each 100 samples
            QCOMPARE(row.bubbles[0].x1, std::int64_t(100));
            QCOMPARE(row.bubbles[0].text.text(), QStringLiteral("edge 100"));
            QVERIFY(row.markers.size() >= 9);
        });
        QCOMPARE(decoders, 1);
    }
    QVERIFY(gDecodedSource == nullptr);
}

void TstDecodedWave::onlyTheChannelsOfAnAnalyzerShowIt()
{
    FaceDesk desk("kinds");
    const DecodedWave wave(*desk.manager, {}, patience);
    QVERIFY(desk.add(3) && desk.add(5) && desk.add(3));
    QVERIFY(desk.waitForWorkers());
    for (const auto &[channel, wanted] : {std::pair(3, 2), std::pair(5, 1), std::pair(0, 0), std::pair(-1, 0)}) {
        int decoders = 0;
        wave.visit(channel, [&decoders](const DecodedChannel &) { ++decoders; });
        QCOMPARE(decoders, wanted);
    }
    desk.manager->captureStarts(); // the results are gone
    wave.visit(3, [](const DecodedChannel &decoded) { QVERIFY(!decoded.hasBubbles()); });
}

void TstDecodedWave::textsFollowTheDisplayFormat()
{
    FaceDesk desk("kinds");
    const DecodedWave wave(*desk.manager, {}, patience);
    QVERIFY(desk.add());
    QVERIFY(desk.waitForWorkers());
    for (const int format : {0, 1, 2, 3, 4, -5, 1000}) {
        desk.manager->setDisplayFormat(0, format);
        wave.visit(0, [](const DecodedChannel &decoded) {
            QCOMPARE(QByteArray(decoded.textsOf(0).texts[0]), QByteArray("edge 100"));
            QCOMPARE(decoded.textsOf(1U << 30).count, 0U);
        });
    }
}

void TstDecodedWave::aFormatThatIsNoneIsHexadecimal()
{
    AnalyzerManager manager(AnalyzerHost{}, QStringList(), QString());
    BubbleMaker maker(manager, {}, patience);
    BaseResults results;
    for (const auto &[format, text] : {std::pair(0, "base 0"), std::pair(1, "base 1"), std::pair(2, "base 2"),
                                       std::pair(-5, "base 2"), std::pair(5, "base 2"), std::pair(1000, "base 2")}) {
        const ResultsOnChannel decoded(results, 0, format, maker);
        QCOMPARE(QByteArray(decoded.textsOf(0).texts[0]), QByteArray(text));
    }
}

void TstDecodedWave::framesOnSeveralChannelsAreShared()
{
    AnalyzerManager manager(AnalyzerHost{}, QStringList(), QString());
    BubbleMaker maker(manager, {});
    BaseResults one({1});
    QVERIFY(!ResultsOnChannel(one, 1, 2, maker).sharesFrames());
    BaseResults two({1, 31});
    QVERIFY(ResultsOnChannel(two, 1, 2, maker).sharesFrames());
    QVERIFY(ResultsOnChannel(two, 31, 2, maker).sharesFrames());
}

void TstDecodedWave::channelsTellWhoUsesThem()
{
    FaceDesk desk("kinds");
    const DecodedWave wave(*desk.manager, {}, patience);
    QVERIFY(desk.add(3) && desk.add(3));
    QCOMPARE(wave.chnLabel(3), QStringLiteral("Face - Line, Face - Line"));
    QCOMPARE(wave.chnLabel(0), QString());
    QCOMPARE(wave.chnLabel(-1), QString());
    QCOMPARE(wave.chnLabel(99), QString());
}

QTEST_GUILESS_MAIN(TstDecodedWave)
#include "tst_DecodedWave.moc"
