#include "files/DataExported.h"
#include "settings/Config.h"
#include "store/MemBudget.h"
#include "store/SmpData.h"
#include "store/SmpWriter.h"

#include <QTest>

#include <cmath>
#include <limits>

/// What stands in the two kinds of export.
class TstDataExport : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void init();

    void aTimeHasNineDecimals_data();
    void aTimeHasNineDecimals();

    void eachChangeOfAChosenChannelHasOneLine();
    void channelsThatChangeTogetherShareALine();
    void aCaptureWithoutAChangeHasAHeaderAndOneLine();
    void withoutAChosenChannelTheTextHasOneTime();
    void aRangeThatStartsOnATransitionShowsItsNewLevelFirst();
    void aTransitionOnTheLastSampleOfTheRangeHasItsLine();
    void timesBeforeTheTriggerAreNegative();
    void aChannelWithoutDataIsZeroAndMakesNoLine();
    void aChannelThatIsNotChosenMakesNoLine();
    void aRangeAtTheEndOfTheCaptureHasOneLine_data();
    void aRangeAtTheEndOfTheCaptureHasOneLine();
    void aCaptureWithoutARateHasTimesOfZero();
    void linesEndAsTheSystemEndsThem();

    void theHeaderHasTheNamesOfTheChosenChannels();
    void aNameStandsInTheHeaderAsItIs_data();
    void aNameStandsInTheHeaderAsItIs();

    void aRowHasABitForEachChannelOfTheModel_data();
    void aRowHasABitForEachChannelOfTheModel();
    void aChannelThatIsNotChosenKeepsItsBitWithZero();
    void aChannelWithoutDataKeepsItsBitWithZero();
    void aRangeOfTheDumpHasItsSamplesAlone();
    void aRangeAtTheEndOfTheCaptureHasOneRow();
    void aDumpWithoutAChosenChannelIsAllZero();

    void analogChannelsAreInNoExport();
    void aCaptureOfOneSampleExports();
    void theLongestCaptureExports();
};

void TstDataExport::initTestCase()
{
    memBudget = std::int64_t(4) << 30;
}

void TstDataExport::init()
{
    QFile::remove(configPath());
    configLoad();
}

void TstDataExport::aTimeHasNineDecimals_data()
{
    QTest::addColumn<double>("seconds");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("zero") << 0.0 << QByteArray("0.000000000");
    QTest::newRow("microseconds") << 1.5e-6 << QByteArray("0.000001500");
    QTest::newRow("negative seconds") << -2.0 << QByteArray("-2.000000000");
    QTest::newRow("negative microseconds") << -1.5e-6 << QByteArray("-0.000001500");
    QTest::newRow("below half a nanosecond") << 0.4e-9 << QByteArray("0.000000000");
    QTest::newRow("half a nanosecond") << 0.5e-9 << QByteArray("0.000000001");
    QTest::newRow("little before zero has no sign") << -0.4e-9 << QByteArray("0.000000000");
    QTest::newRow("half a nanosecond before zero") << -0.5e-9 << QByteArray("0.000000000");
    QTest::newRow("more than half a nanosecond before zero") << -0.6e-9 << QByteArray("-0.000000001");
    QTest::newRow("a negative half rounds up") << -2.5e-9 << QByteArray("-0.000000002");
    QTest::newRow("all digits") << 8.123456789 << QByteArray("8.123456789");
    QTest::newRow("ten seconds") << 10.0 << QByteArray("10.000000000");
    QTest::newRow("days") << 1234567.000000001 << QByteArray("1234567.000000001");
    QTest::newRow("just below a second") << 0.9999999994 << QByteArray("0.999999999");
    QTest::newRow("rounds to a second") << 0.9999999996 << QByteArray("1.000000000");
    QTest::newRow("too long for 64 bits") << 1e12 << QByteArray("9223372036.854775807");
    QTest::newRow("too early for 64 bits") << -1e12 << QByteArray("-9223372036.854775807");
    QTest::newRow("endless") << std::numeric_limits<double>::infinity() << QByteArray("9223372036.854775807");
    QTest::newRow("no number") << std::nan("") << QByteArray("0.000000000");
}

void TstDataExport::aTimeHasNineDecimals()
{
    QFETCH(double, seconds);
    QFETCH(QByteArray, text);
    char out[exportTimeMax];
    const int size = putExportTime(seconds, out);
    QVERIFY(size <= exportTimeMax);
    QCOMPARE(QByteArray(out, size), text);
}

void TstDataExport::eachChangeOfAChosenChannelHasOneLine()
{
    const auto data = CaptureBuilder(8).samples(100).channel(0, 0, {10, 11, 50}).channel(1, 1, {20}).build();
    QCOMPARE(linesOf(textOf(*data, {1, 1}, 0, 100)), QByteArray("0.000000000, 0, 1\n"
                                                                "0.000010000, 1, 1\n"
                                                                "0.000011000, 0, 1\n"
                                                                "0.000020000, 0, 0\n"
                                                                "0.000050000, 1, 0\n"));
}

void TstDataExport::channelsThatChangeTogetherShareALine()
{
    const auto data = CaptureBuilder(8).samples(100).channel(0, 0, {10, 30}).channel(5, 0, {10, 31}).build();
    QCOMPARE(linesOf(textOf(*data, allOf(*data), 0, 31)), QByteArray("0.000000000, 0, 0, 0, 0, 0, 0, 0, 0\n"
                                                                     "0.000010000, 1, 0, 0, 0, 0, 1, 0, 0\n"
                                                                     "0.000030000, 0, 0, 0, 0, 0, 1, 0, 0\n"));
}

void TstDataExport::aCaptureWithoutAChangeHasAHeaderAndOneLine()
{
    const auto data = CaptureBuilder(8).channel(0, 1).channel(1, 0).build();
    QCOMPARE(textOf(*data, {1, 1}, 0, 1000), QByteArray("Time[s], Channel 0, Channel 1\n0.000000000, 1, 0\n"));
}

void TstDataExport::withoutAChosenChannelTheTextHasOneTime()
{
    const auto data = CaptureBuilder(8).trigger(3).channel(0, 1, {5, 8}).build();
    const QByteArray expected("Time[s]\n-0.000003000\n");
    QCOMPARE(textOf(*data, std::vector<std::uint8_t>(8, 0), 0, 1000), expected);

    QBuffer out;
    QVERIFY(out.open(QIODevice::WriteOnly));
    QCOMPARE(writeTextExport(out, *data, {nullptr, 0, 999}, textExportHeader(nullptr, 8)), DataBlocksResult::Done);
    QCOMPARE(out.data(), expected);
}

void TstDataExport::aRangeThatStartsOnATransitionShowsItsNewLevelFirst()
{
    const auto data = CaptureBuilder(8).channel(0, 0, {10, 20}).build();
    QCOMPARE(linesOf(textOf(*data, {1}, 10, 30)), QByteArray("0.000010000, 1\n0.000020000, 0\n"));
    QCOMPARE(linesOf(textOf(*data, {1}, 9, 20)), QByteArray("0.000009000, 0\n0.000010000, 1\n"));
}

void TstDataExport::aTransitionOnTheLastSampleOfTheRangeHasItsLine()
{
    const auto data = CaptureBuilder(8).samples(100).channel(0, 0, {10, 99}).build();
    const std::vector<std::uint8_t> first{1};
    QCOMPARE(linesOf(textOf(*data, first, 5, 11)), QByteArray("0.000005000, 0\n0.000010000, 1\n"));
    QCOMPARE(linesOf(textOf(*data, first, 5, 10)), QByteArray("0.000005000, 0\n"));
    QCOMPARE(linesOf(textOf(*data, first, 50, 100)), QByteArray("0.000050000, 1\n0.000099000, 0\n"));
}

void TstDataExport::timesBeforeTheTriggerAreNegative()
{
    const auto data = CaptureBuilder(8).trigger(20).channel(0, 0, {10, 20, 30}).build();
    QCOMPARE(linesOf(textOf(*data, {1}, 0, 1000)), QByteArray("-0.000020000, 0\n"
                                                              "-0.000010000, 1\n"
                                                              "0.000000000, 0\n"
                                                              "0.000010000, 1\n"));
}

void TstDataExport::aChannelWithoutDataIsZeroAndMakesNoLine()
{
    const auto data = CaptureBuilder(8).channel(1, 1, {10}).build();
    QCOMPARE(textOf(*data, {1, 1}, 0, 1000),
             QByteArray("Time[s], Channel 0, Channel 1\n0.000000000, 0, 1\n0.000010000, 0, 0\n"));
    QCOMPARE(linesOf(textOf(*data, {1, 0, 1}, 0, 1000)), QByteArray("0.000000000, 0, 0\n"));
}

void TstDataExport::aChannelThatIsNotChosenMakesNoLine()
{
    const auto data = CaptureBuilder(8).channel(0, 0, {10}).channel(1, 0, {20, 30}).build();
    QCOMPARE(textOf(*data, {1}, 0, 1000), QByteArray("Time[s], Channel 0\n0.000000000, 0\n0.000010000, 1\n"));
}

void TstDataExport::aRangeAtTheEndOfTheCaptureHasOneLine_data()
{
    QTest::addColumn<QByteArray>("select");
    QTest::addColumn<QByteArray>("lines");
    QTest::newRow("a channel") << QByteArray("\1\0\0\0\0\0\0\0", 8) << QByteArray("0.000100000, 1\n");
    QTest::newRow("one without data") << QByteArray("\0\1\0\0\0\0\0\0", 8) << QByteArray("0.000100000, 0\n");
    QTest::newRow("none") << QByteArray(8, '\0') << QByteArray("0.000100000\n");
}

void TstDataExport::aRangeAtTheEndOfTheCaptureHasOneLine()
{
    QFETCH(QByteArray, select);
    QFETCH(QByteArray, lines);
    const auto data = CaptureBuilder(8).samples(100).channel(0, 0, {10}).build();
    QCOMPARE(linesOf(textOf(*data, std::vector<std::uint8_t>(select.begin(), select.end()), 500, 600)), lines);
}

void TstDataExport::aCaptureWithoutARateHasTimesOfZero()
{
    const auto data = CaptureBuilder(8).channel(0, 0, {10}).build();
    SmpWriter(*data).setSmpFrequ(0);
    QCOMPARE(linesOf(textOf(*data, {1}, 0, 1000)), QByteArray("0.000000000, 0\n0.000000000, 1\n"));
}

void TstDataExport::linesEndAsTheSystemEndsThem()
{
    const auto data = CaptureBuilder(8).channel(0, 0, {10}).build();
    const FileFolder folder;
    DataFile file(data.get());
    file.setRange(0, 1000);
    file.file.setFileName(folder.path(QStringLiteral("a.csv")));
    QVERIFY(file.file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text));
    QVERIFY(file.exportText());
    file.file.close();
#ifdef Q_OS_WIN
    const QByteArray expected("Time[s]\r\n0.000000000\r\n");
#else
    const QByteArray expected("Time[s]\n0.000000000\n");
#endif
    QCOMPARE(folder.read(QStringLiteral("a.csv")), expected);
}

void TstDataExport::theHeaderHasTheNamesOfTheChosenChannels()
{
    globalSet(QStringLiteral("chnShowName1"), QStringLiteral("SCL"));
    globalSet(QStringLiteral("chnShowName2"), QStringLiteral("not chosen"));
    const std::uint8_t select[] = {1, 1, 0, 255};
    QCOMPARE(textExportHeader(select, 4), QByteArray("Time[s], Channel 0, SCL, Channel 3\n"));
    QCOMPARE(textExportHeader(nullptr, 4), QByteArray("Time[s]\n"));
}

void TstDataExport::aNameStandsInTheHeaderAsItIs_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("comma") << QStringLiteral("SDA, inverted");
    QTest::newRow("quotes") << QStringLiteral("\"a\" 'b'");
    QTest::newRow("line end") << QStringLiteral("first\nsecond");
    QTest::newRow("not Latin") << QString::fromUtf8("\xE6\x97\xB6\xE9\x92\x9F \xD0\x90 \xF0\x9F\x94\x8C");
    QTest::newRow("10,000 letters") << QString(10000, QLatin1Char('n'));
    QTest::newRow("10,000 letters of three bytes") << QString(10000, QChar(0x6642));
}

void TstDataExport::aNameStandsInTheHeaderAsItIs()
{
    QFETCH(QString, name);
    globalSet(QStringLiteral("chnShowName0"), name);
    globalSet(QStringLiteral("chnShowName7"), name);
    const auto data = CaptureBuilder(8).channel(0, 1).build();
    const QByteArray bytes = name.toUtf8();
    QCOMPARE(textOf(*data, {1, 0, 0, 0, 0, 0, 0, 1}, 0, 1000),
             "Time[s], " + bytes + ", " + bytes + "\n0.000000000, 1, 0\n");
}

void TstDataExport::aRowHasABitForEachChannelOfTheModel_data()
{
    QTest::addColumn<int>("chnCount");
    QTest::addColumn<int>("width");
    QTest::newRow("8") << 8 << 1;
    QTest::newRow("12") << 12 << 2;
    QTest::newRow("16") << 16 << 2;
    QTest::newRow("24") << 24 << 3;
    QTest::newRow("32") << 32 << 4;
    QTest::newRow("40") << 40 << 5;
    QTest::newRow("64") << 64 << 8;
}

void TstDataExport::aRowHasABitForEachChannelOfTheModel()
{
    QFETCH(int, chnCount);
    QFETCH(int, width);
    // Channel c is high from sample c + 1 on.
    CaptureBuilder builder(chnCount);
    builder.samples(chnCount + 3);
    std::vector<std::uint64_t> values{0};
    for (int chn = 0; chn < chnCount; ++chn) {
        builder.channel(chn, 0, {chn + 1});
        values.push_back(values.back() | std::uint64_t(1) << chn);
    }
    values.push_back(values.back());
    values.push_back(values.back());
    const auto data = builder.build();
    QCOMPARE(binaryOf(*data, allOf(*data), 0, double(data->smpCount())).toHex(), rows(width, values).toHex());
}

void TstDataExport::aChannelThatIsNotChosenKeepsItsBitWithZero()
{
    const auto data = CaptureBuilder(8).samples(4).channel(0, 1, {2}).channel(1, 1, {3}).channel(7, 0, {1}).build();
    QCOMPARE(binaryOf(*data, {1, 0, 0, 0, 0, 0, 0, 1}, 0, 4).toHex(), QByteArray("01818080"));
    QCOMPARE(binaryOf(*data, {0, 1}, 0, 4).toHex(), QByteArray("02020200"));
}

void TstDataExport::aChannelWithoutDataKeepsItsBitWithZero()
{
    const auto data = CaptureBuilder(16).samples(3).channel(9, 0, {1}).build();
    QCOMPARE(binaryOf(*data, allOf(*data), 0, 3).toHex(), QByteArray("000000020002"));
}

void TstDataExport::aRangeOfTheDumpHasItsSamplesAlone()
{
    const auto data = CaptureBuilder(8).samples(100).trigger(7).channel(0, 0, {10, 12, 13}).build();
    QCOMPARE(binaryOf(*data, allOf(*data), 10, 14).toHex(), QByteArray("01010001"));
    QCOMPARE(binaryOf(*data, allOf(*data), 9, 10).toHex(), QByteArray("00"));
    QCOMPARE(binaryOf(*data, allOf(*data), 98.5, 1e9).toHex(), QByteArray("0101"));
    QCOMPARE(binaryOf(*data, allOf(*data), 14, 10).toHex(), QByteArray("01010001"));
}

void TstDataExport::aRangeAtTheEndOfTheCaptureHasOneRow()
{
    const auto data = CaptureBuilder(8).samples(100).channel(0, 0, {10}).build();
    QCOMPARE(binaryOf(*data, allOf(*data), 500, 600).toHex(), QByteArray("01"));
}

void TstDataExport::aDumpWithoutAChosenChannelIsAllZero()
{
    const auto data = CaptureBuilder(16).channel(0, 1, {10}).build();
    QCOMPARE(binaryOf(*data, std::vector<std::uint8_t>(16, 0), 0, 1000), QByteArray(2000, '\0'));
}

void TstDataExport::analogChannelsAreInNoExport()
{
    const auto data = CaptureBuilder(16, 2).samples(2).channel(0, 1).build();
    SmpWriter(*data).aChnBuf(0)->count = 2;
    SmpWriter(*data).aChnBuf(0)->samples[1] = 100;
    QCOMPARE(linesOf(textOf(*data, allOf(*data), 0, 2)), "0.000000000, 1" + QByteArray(", 0").repeated(15) + "\n");
    QCOMPARE(binaryOf(*data, allOf(*data), 0, 2).toHex(), QByteArray("01000100"));
}

void TstDataExport::aCaptureOfOneSampleExports()
{
    const auto data = CaptureBuilder(8).samples(1).channel(0, 1).channel(1, 0).build();
    QCOMPARE(linesOf(textOf(*data, {1, 1}, 0, 1)), QByteArray("0.000000000, 1, 0\n"));
    QCOMPARE(binaryOf(*data, allOf(*data), 0, 1).toHex(), QByteArray("01"));
}

void TstDataExport::theLongestCaptureExports()
{
    SmpData data(8, 0);
    const FileFolder folder;
    const QByteArray bytes = DataFileBytes(8)
                                 .samples(dataFileMax)
                                 .frequency(500'000'000)
                                 .trigger(dataFileMax - 3)
                                 .block(0, 1, {2, 0x100000000, dataFileMax - 2, dataFileMax})
                                 .bytes();
    DataFile loader(&data);
    QVERIFY(loader.loadData(folder.write(bytes), 0));
    QCOMPARE(linesOf(textOf(data, {1}, 0, double(dataFileMax))), QByteArray("-2199.023255544, 1\n"
                                                                            "-2199.023255540, 0\n"
                                                                            "-2190.433320952, 1\n"
                                                                            "0.000000002, 0\n"));
    QCOMPARE(binaryOf(data, allOf(data), double(dataFileMax - 4), double(dataFileMax)).toHex(), QByteArray("01010000"));
}

QTEST_GUILESS_MAIN(TstDataExport)
#include "tst_DataExport.moc"
