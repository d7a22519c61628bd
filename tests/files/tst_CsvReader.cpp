#include "files/CsvLines.h"
#include "files/CsvReader.h"
#include "files/ForeignBytes.h"
#include "store/MemBudget.h"

#include <QtTest>

using Edges = std::vector<std::int64_t>;

namespace {

ForeignCapture csv(const QByteArray &bytes, std::int64_t rate = 0, const QStringList &channels = {})
{
    ForeignOptions options;
    options.rate = rate;
    options.channels = channels;
    return foreign(bytes, ForeignKind::Csv, options);
}

ForeignCapture raw(const QByteArray &bytes, std::int64_t rate, int unitSize, const QStringList &channels = {})
{
    ForeignOptions options;
    options.rate = rate;
    options.unitSize = unitSize;
    options.channels = channels;
    return foreign(bytes, ForeignKind::Raw, options);
}

} // namespace

/// Levels as columns of text, and plain bytes.
class TstCsvReader : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { memBudget = std::int64_t(4) << 30; }
    void timesTellTheLeastRate();
    void timesBeforeZeroLeadToTheTrigger();
    void timesAreRoundedToAToldRate();
    void linesWithoutTimesAreSamples();
    void separatorsQuotesAndCommentsAreTaken();
    void emptyFieldsAreLowAndCounted();
    void someOfManyColumnsArePicked();
    void aTimeIsReadExactly_data();
    void aTimeIsReadExactly();
    void badLinesAreTold_data();
    void badLinesAreTold();
    void anEndlessLineIsTold();
    void aHookCancels();
    void spentMemoryIsTold();
    void plainBytesAreSamples();
    void plainBytesMustFit_data();
    void plainBytesMustFit();
    void aFileThatIsCutMeanwhileIsNoCapture_data();
    void aFileThatIsCutMeanwhileIsNoCapture();
};

void TstCsvReader::timesTellTheLeastRate()
{
    const ForeignCapture read = csv("Time[s],CLK,\"DATA, in\"\n0.000000000,0,1\n0.000001500,1,1\n0.000003000,0,0\n"
                                    "0.000010500,0,0\n");
    QVERIFY2(read.isDone(), qPrintable(read.detail));
    QCOMPARE(read.names, (QStringList{QStringLiteral("CLK"), QStringLiteral("DATA, in")}));
    QCOMPARE(read.capture->smpFrequ(), 2'000'000); // 1.5 us is no period of whole hertz
    QCOMPARE(read.capture->smpCount(), 22);
    QCOMPARE(edgesOf(*read.capture, 0), (Edges{3, 6}));
    QCOMPARE(edgesOf(*read.capture, 1), (Edges{6}));
    QCOMPARE(read.notes,
             QStringList(QStringLiteral("no rate is told; taken for 2000000 Hz, the least that holds all times")));
}

void TstCsvReader::timesBeforeZeroLeadToTheTrigger()
{
    const ForeignCapture read = csv("Time[s], A\n-0.000002000, 1\n0.000001000, 0\n0.000004000, 0\n");
    QVERIFY2(read.isDone(), qPrintable(read.detail));
    QCOMPARE(read.capture->smpFrequ(), 1'000'000);
    QCOMPARE(read.capture->trgPos(), 2);
    QCOMPARE(edgesOf(*read.capture, 0), (Edges{3}));
    QCOMPARE(read.capture->smpCount(), 7);
}

void TstCsvReader::timesAreRoundedToAToldRate()
{
    const ForeignCapture read = csv("Time,A\n0.000000042,1\n0.000000083,0\n0.000000417,0\n", 24'000'000);
    QVERIFY2(read.isDone(), qPrintable(read.detail));
    QCOMPARE(read.capture->smpFrequ(), 24'000'000);
    QCOMPARE(edgesOf(*read.capture, 0), (Edges{1}));
    QCOMPARE(read.capture->smpCount(), 10);
}

void TstCsvReader::linesWithoutTimesAreSamples()
{
    const ForeignCapture read = csv("0,1\n0,1\n1,1\n\n1,0\n", 1000);
    QVERIFY2(read.isDone(), qPrintable(read.detail));
    QCOMPARE(read.names, (QStringList{QString(), QString()}));
    QCOMPARE(read.capture->smpCount(), 4);
    QCOMPARE(edgesOf(*read.capture, 0), (Edges{2}));
    QCOMPARE(edgesOf(*read.capture, 1), (Edges{3}));
}

void TstCsvReader::separatorsQuotesAndCommentsAreTaken()
{
    const ForeignCapture read =
        csv("; made by a program\r\n# at noon\r\n\r\nTime\tA\t\"a \"\"b\"\"\"\r\n1e-6\t 0\t\"1\"\r\n"
            "+2.0E-6\t1 \t\"0\"\r\n");
    QVERIFY2(read.isDone(), qPrintable(read.detail));
    QCOMPARE(read.names, (QStringList{QStringLiteral("A"), QStringLiteral("a \"b\"")}));
    QCOMPARE(edgesOf(*read.capture, 0), (Edges{1}));
    QCOMPARE(csv("0;1\n1;0\n", 5).capture->smpCount(), 2);
}

void TstCsvReader::emptyFieldsAreLowAndCounted()
{
    const ForeignCapture read = csv("A,B\n1,\nx,1\n1,Z", 5);
    QVERIFY2(read.isDone(), qPrintable(read.detail));
    QCOMPARE(edgesOf(*read.capture, 0), (Edges{1, 2}));
    QCOMPARE(read.notes, QStringList(QStringLiteral("3 empty or unknown fields are taken for 0")));
}

void TstCsvReader::someOfManyColumnsArePicked()
{
    QByteArray head = "Time";
    QByteArray low = "0.0";
    for (int i = 0; i < 1000; ++i) {
        head += ",c" + QByteArray::number(i);
        low += ",0";
    }
    const QByteArray bytes = head + '\n' + low + "\n0.5" + low.mid(3).replace(2 * 700 + 1, 1, "1") + '\n';
    QVERIFY(csv(bytes).detail.startsWith(QStringLiteral("1000 channels are more than 32")));
    const ForeignCapture read = csv(bytes, 0, {QStringLiteral("c700"), QStringLiteral("5")});
    QVERIFY2(read.isDone(), qPrintable(read.detail));
    QCOMPARE(edgesOf(*read.capture, 0), (Edges{1}));
    QCOMPARE(edgesOf(*read.capture, 1), Edges());
}

void TstCsvReader::aTimeIsReadExactly_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("isGood");
    QTest::addColumn<qlonglong>("ticks");
    const auto row = [](const char *text, bool isGood, qlonglong ticks) {
        QTest::newRow(text) << QByteArray(text) << isGood << ticks;
    };
    row("0", true, 0);
    row("1", true, 1'000'000'000'000);
    row("-0.5", true, -500'000'000'000);
    row(".5", true, 500'000'000'000);
    row("2.", true, 2'000'000'000'000);
    row("1e-12", true, 1);
    row("1.5e-12", true, 2);
    row("1.49E-12", true, 1);
    row("0.30000000000000004", true, 300'000'000'000);
    row("123456789012345678901234567890e-30", true, 123'456'789'012);
    row("1e-400", true, 0);
    row("4611686", true, 4'611'686'000'000'000'000);
    row("1e7", false, 0);
    row("1e300", false, 0);
    row("", false, 0);
    row("-", false, 0);
    row(".", false, 0);
    row("1.2.3", false, 0);
    row("1e", false, 0);
    row("1e+", false, 0);
    row("1x", false, 0);
    row("nan", false, 0);
    row("99999999999999999999", false, 0);
}

void TstCsvReader::aTimeIsReadExactly()
{
    QFETCH(QByteArray, text);
    QFETCH(bool, isGood);
    QFETCH(qlonglong, ticks);
    std::int64_t found = 0;
    QCOMPARE(csvTime({text.constData(), std::size_t(text.size())}, found), isGood);
    QCOMPARE(qlonglong(found), ticks);
}

void TstCsvReader::badLinesAreTold_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<qlonglong>("rate");
    QTest::addColumn<QString>("detail");
    const auto row = [](const char *name, const QByteArray &bytes, qlonglong rate, const char *detail) {
        QTest::newRow(name) << bytes << rate << QString::fromLatin1(detail);
    };
    row("empty", "", 0, "there are no lines of data in it");
    row("names alone", "Time,A\n", 0, "there are no lines of data in it");
    row("times alone", "Time\n0.5\n", 0, "there is no channel in it");
    row("no rate", "A,B\n0,1\n", 0, "there is no column of times: the rate must be told (--rate)");
    row("time goes back", "Time,A\n0,1\n0.2,0\n0.1,1\n", 0, "line 4: the time goes back");
    row("times closer than the rate", "Time,A\n0,1\n1,0\n1.1,1\n1.2,0\n", 2, "line 5: the times before are closer");
    row("time that is none", "Time,A\n0,1\nnoon,0\n", 0, "line 3: this is no time in seconds");
    row("times too far", "Time,A\n0,1\n0.000000000001,0\n2,1\n3,0\n", 0,
        "line 5: this time needs more than 2^40 samples");
    row("times too far for a rate", "Time,A\n0,1\n4000000,0\n4000001,0\n", 1'000'000,
        "line 4: this time needs more than 2^40 samples");
    row("time of 2^63", "Time,A\n0,1\n9223372036854775808,0\n", 0, "line 3: this is no time in seconds");
    row("analog", "Time,A\n0,1\n1,3.3\n", 0, "line 3: column 2 is neither 0 nor 1");
    row("more columns", "Time,A\n0,1\n1,0,1\n", 0, "line 3: more than 2 columns");
    row("less columns", "Time,A,B\n0,1,0\n1,0\n", 0, "line 3: less than 3 columns");
    row("a byte of zero", QByteArray("Time,A\n0,1\n1,\0\n", 15), 0, "line 3: column 2 is neither 0 nor 1");
}

void TstCsvReader::badLinesAreTold()
{
    QFETCH(QByteArray, bytes);
    QFETCH(qlonglong, rate);
    QFETCH(QString, detail);
    const ForeignCapture read = csv(bytes, rate);
    QCOMPARE(read.result, FileResult::Damaged);
    QVERIFY2(read.detail.startsWith(detail), qPrintable(read.detail));
}

void TstCsvReader::anEndlessLineIsTold()
{
    EndlessText names({}, "name,", qint64(1) << 40);
    QCOMPARE(readCsv(names, {}, {}).detail, QStringLiteral("line 1 has no end"));
    EndlessText levels("Time,A\n0,1\n", "0,", qint64(1) << 40);
    QCOMPARE(readCsv(levels, {}, {}).detail, QStringLiteral("line 3 has no end"));
}

void TstCsvReader::aHookCancels()
{
    QByteArray text;
    for (int i = 0; i < 40'000; ++i) {
        text += i % 2 == 0 ? "0\n" : "1\n";
    }
    ForeignOptions options;
    options.rate = 1;
    QCOMPARE(foreign(text, ForeignKind::Csv, options, [](double) { return false; }).result, FileResult::Cancelled);
    QCOMPARE(foreign(text, ForeignKind::Raw, options, [](double) { return false; }).result, FileResult::Cancelled);
}

void TstCsvReader::spentMemoryIsTold()
{
    QByteArray text;
    for (int i = 0; i < 30'000; ++i) {
        text += i % 2 == 0 ? "0\n" : "1\n";
    }
    memBudget = 0;
    const ForeignCapture read = csv(text, 1);
    memBudget = std::int64_t(4) << 30;
    QCOMPARE(read.result, FileResult::NoMemory);
}

void TstCsvReader::plainBytesAreSamples()
{
    const QByteArray bytes("\x01\x80\x01\x80\x00\x80\x00\x00", 8);
    const ForeignCapture one = raw(bytes, 1000, 0);
    QVERIFY2(one.isDone(), qPrintable(one.detail));
    QCOMPARE(one.capture->smpCount(), 8);
    QCOMPARE(one.capture->chnCount, 8);
    QCOMPARE(edgesOf(*one.capture, 7), (Edges{1, 2, 3, 4, 5, 6}));
    const ForeignCapture two = raw(bytes, 1000, 2);
    QCOMPARE(two.capture->chnCount, 16);
    QCOMPARE(two.capture->smpFrequ(), 1000);
    QCOMPARE(edgesOf(*two.capture, 0), (Edges{2}));
    QCOMPARE(edgesOf(*two.capture, 15), (Edges{3}));
    const ForeignCapture picked = raw(bytes, 1000, 0, {QStringLiteral("15"), QStringLiteral("0")});
    QCOMPARE(picked.capture->smpCount(), 4);
    QCOMPARE(edgesOf(*picked.capture, 0), (Edges{3}));
}

void TstCsvReader::plainBytesMustFit_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<qlonglong>("rate");
    QTest::addColumn<int>("unitSize");
    QTest::addColumn<QString>("detail");
    QTest::newRow("no rate") << QByteArray("abc") << 0LL << 1 << QStringLiteral("the rate of plain bytes");
    QTest::newRow("wide samples") << QByteArray("abc") << 1LL << 129 << QStringLiteral("a sample has 1 to 128");
    QTest::newRow("nothing") << QByteArray() << 1LL << 1 << QStringLiteral("0 bytes are no whole samples of 1");
    QTest::newRow("a part") << QByteArray("abc") << 1LL << 2 << QStringLiteral("3 bytes are no whole samples of 2");
    QTest::newRow("many channels")
        << QByteArray("abcde") << 1LL << 5
        << QStringLiteral("40 channels are more than 32; \"luxcli convert --channels\" picks some: numbers (0-7)");
}

void TstCsvReader::plainBytesMustFit()
{
    QFETCH(QByteArray, bytes);
    QFETCH(qlonglong, rate);
    QFETCH(int, unitSize);
    QFETCH(QString, detail);
    const ForeignCapture read = raw(bytes, rate, unitSize);
    QCOMPARE(read.result, FileResult::Damaged);
    QVERIFY2(read.detail.startsWith(detail), qPrintable(read.detail));
    QVERIFY2(!read.detail.contains(QLatin1String("names")), qPrintable(read.detail)); // they have none
}

void TstCsvReader::aFileThatIsCutMeanwhileIsNoCapture_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<QByteArray>("line"); // any number of which may follow
    QTest::newRow("values") << int(ForeignKind::Csv) << QByteArray() << QByteArray("0,1\n");
    QTest::newRow("a dump") << int(ForeignKind::Vcd)
                            << QByteArray("$timescale 1us $end $var wire 1 ! A $end $enddefinitions $end\n#1\n")
                            << QByteArray("0! \n");
    QTest::newRow("plain bytes") << int(ForeignKind::Raw) << QByteArray() << QByteArray("0123");
}

void TstCsvReader::aFileThatIsCutMeanwhileIsNoCapture()
{
    QFETCH(int, kind);
    QFETCH(QByteArray, head);
    QFETCH(QByteArray, line);
    constexpr int lines = 4 << 20;
    const FileFolder folder;
    const QString path = folder.write(head + line.repeated(lines), QStringLiteral("capture"));
    ForeignOptions options;
    options.rate = 1'000'000;
    QVERIFY(readForeign(path, ForeignKind(kind), options).isDone());
    bool isCut = false;
    const ForeignCapture read = readForeign(path, ForeignKind(kind), options, [&](double) {
        isCut = isCut || QFile::resize(path, head.size() + line.size());
        return true;
    });
    QVERIFY(isCut);
    QVERIFY(!read.isDone());
    QVERIFY2(read.detail.contains(QLatin1String("it cannot be read further")), qPrintable(read.detail));
}

QTEST_GUILESS_MAIN(TstCsvReader)
#include "tst_CsvReader.moc"
