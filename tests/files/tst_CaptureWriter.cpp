#include "files/CaptureWriter.h"
#include "files/FileSizeLimit.h"
#include "files/ForeignBytes.h"
#include "settings/Config.h"
#include "settings/ConfigDocument.h"
#include "store/MemBudget.h"
#include "store/SmpWriter.h"

#include <QDir>
#include <QtTest>

#include <random>

using Edges = std::vector<std::int64_t>;

namespace {

/// Changes of `channels` channels at random, of which every third is quiet.
std::unique_ptr<SmpData> randomCapture(int model, int channels, std::int64_t samples, int mean, std::int64_t rate)
{
    std::mt19937 random(std::uint32_t(samples + mean));
    CaptureBuilder builder(model);
    builder.samples(samples).trigger(samples / 7);
    for (int chn = 0; chn < channels; ++chn) {
        Edges edges;
        const auto step = std::uint32_t(chn % 3 == 2 ? mean * 50 : mean) * 2 - 1;
        for (std::int64_t pos = 1 + std::int64_t(random() % step); pos < samples;
             pos += 1 + std::int64_t(random() % step)) {
            edges.push_back(pos);
        }
        builder.channel(chn, chn & 1, edges);
    }
    auto data = builder.build();
    data->open();
    SmpWriter(*data).setSmpFrequ(rate);
    data->readmit();
    return data;
}

QStringList namesOf(const SmpData &data)
{
    QStringList names;
    for (int chn = 0; chn < data.chnCount; ++chn) {
        names.append(chn == 0 ? QStringLiteral("a, \"b\"") : QStringLiteral("n%1").arg(chn));
    }
    return names;
}

CaptureOut outOf(const SmpData &data, CaptureKind kind)
{
    CaptureOut out;
    out.kind = kind;
    for (int chn = 0; chn < data.chnCount; ++chn) {
        out.part.channels.push_back(data.chnRoots()[std::size_t(chn)] != nullptr ? 1 : 0);
    }
    out.part.end = double(data.smpCount());
    out.names = namesOf(data);
    return out;
}

ForeignKind foreignKind(CaptureKind kind)
{
    return kind == CaptureKind::Sr    ? ForeignKind::Sr
           : kind == CaptureKind::Vcd ? ForeignKind::Vcd
           : kind == CaptureKind::Bin ? ForeignKind::Raw
                                      : ForeignKind::Csv;
}

void kinds()
{
    QTest::addColumn<int>("kind");
    QTest::newRow("csv") << int(CaptureKind::Csv);
    QTest::newRow("sr") << int(CaptureKind::Sr);
    QTest::newRow("vcd") << int(CaptureKind::Vcd);
    QTest::newRow("bin") << int(CaptureKind::Bin);
}

} // namespace

/// What is written reads back to the same samples, and what cannot be written leaves nothing.
class TstCaptureWriter : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void itReadsBackToTheSameSamples_data();
    void itReadsBackToTheSameSamples();
    void aLongArchiveReadsBack_data();
    void aLongArchiveReadsBack();
    void aPartReadsBackToItsSamples_data() { kinds(); }
    void aPartReadsBackToItsSamples();
    void kindsAreNamed();
    void aDumpIsAsTheStandardHasIt();
    void valuesHaveTheirLastLine();
    void textIsThatOfTheWindow();
    void aDataFileHoldsTheSettings();
    void aCancelAtAnyPieceLeavesTheEarlierFile_data() { kinds(); }
    void aCancelAtAnyPieceLeavesTheEarlierFile();
    void aFullDiskLeavesTheEarlierFile_data() { kinds(); }
    void aFullDiskLeavesTheEarlierFile();
    void whatCannotBeWrittenIsTold();

private:
    FileFolder m_folder;
};

void TstCaptureWriter::initTestCase()
{
    memBudget = std::int64_t(4) << 30;
    configLoad();
}

void TstCaptureWriter::itReadsBackToTheSameSamples_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("channels");
    QTest::addColumn<qlonglong>("rate");
    QTest::addColumn<int>("mean");
    for (const auto &[kind, name] :
         {std::pair(CaptureKind::Csv, "csv"), {CaptureKind::Sr, "sr"}, {CaptureKind::Vcd, "vcd"}}) {
        for (const qlonglong rate : {1LL, 50'000LL, 24'000'000LL, 500'000'000LL, 300'000'000LL, 1'000'000'000'000LL}) {
            QTest::addRow("%s at %lld Hz", name, rate) << int(kind) << 5 << rate << 7;
        }
        for (const int channels : {1, 8, 9, 16, 17, 32}) {
            QTest::addRow("%s of %d", name, channels) << int(kind) << channels << 1'000'000LL << 3;
        }
        QTest::addRow("%s, quiet", name) << int(kind) << 3 << 1'000'000LL << 3000;
    }
    for (const int channels : {8, 16, 32}) {
        QTest::addRow("bin of %d", channels) << int(CaptureKind::Bin) << channels << 1'000'000LL << 3;
    }
}

void TstCaptureWriter::itReadsBackToTheSameSamples()
{
    QFETCH(int, kind);
    QFETCH(int, channels);
    QFETCH(qlonglong, rate);
    QFETCH(int, mean);
    const auto data = randomCapture(channels <= 8 ? 8 : channels <= 16 ? 16 : 32, channels, 20'000, mean, rate);
    const QString path = m_folder.path(QStringLiteral("whole"));
    if (kind == int(CaptureKind::Sr) && !foreignKindIsBuilt(ForeignKind::Sr)) {
        QSKIP("built without the library for archives");
    }
    QCOMPARE(writeCaptureFile(path, *data, outOf(*data, CaptureKind(kind))).result, FileResult::Done);
    ForeignOptions options;
    const bool isText = kind == int(CaptureKind::Csv);
    options.rate = isText || kind == int(CaptureKind::Bin) ? rate : 0;
    options.unitSize = kind == int(CaptureKind::Bin) ? data->chnCount / 8 : 0;
    const ForeignCapture read = readForeign(path, foreignKind(CaptureKind(kind)), options);
    QVERIFY2(read.isDone(), qPrintable(read.detail));
    QCOMPARE(qlonglong(read.capture->smpFrequ()), rate);
    QCOMPARE(read.capture->smpCount(), data->smpCount());
    QCOMPARE(read.capture->chnCount, data->chnCount);
    if (isText || kind == int(CaptureKind::Vcd)) {
        QCOMPARE(read.capture->trgPos(), data->trgPos());
    }
    for (int chn = 0; chn < channels; ++chn) {
        QCOMPARE(entriesOf(*read.capture, chn), entriesOf(*data, chn));
        QCOMPARE(read.capture->startLevels() >> chn & 1, data->startLevels() >> chn & 1);
    }
    if (isText || kind == int(CaptureKind::Sr)) {
        QCOMPARE(read.names, namesOf(*data).mid(0, channels));
    }
}

/// Busy stretches of an archive are stored, and others packed; both in several pieces and entries.
void TstCaptureWriter::aLongArchiveReadsBack()
{
    QFETCH(int, channels);
    QFETCH(int, mean);
    if (!foreignKindIsBuilt(ForeignKind::Sr)) {
        QSKIP("built without the library for archives");
    }
    const auto data =
        randomCapture(channels <= 8 ? 8 : 32, channels, 9'000'001 / ((channels + 7) / 8), mean, 1'000'000);
    const QString path = m_folder.path(QStringLiteral("long"));
    QCOMPARE(writeCaptureFile(path, *data, outOf(*data, CaptureKind::Sr)).result, FileResult::Done);
    const ForeignCapture read = readForeign(path, ForeignKind::Sr);
    QVERIFY2(read.isDone(), qPrintable(read.detail));
    QCOMPARE(read.capture->smpCount(), data->smpCount());
    for (int chn = 0; chn < channels; ++chn) {
        QVERIFY(entriesOf(*read.capture, chn) == entriesOf(*data, chn));
        QCOMPARE(read.capture->startLevels() >> chn & 1, data->startLevels() >> chn & 1);
    }
    QVERIFY((QFileInfo(path).size() < 4'000'000) == (mean > 1000));
}

void TstCaptureWriter::aLongArchiveReadsBack_data()
{
    QTest::addColumn<int>("channels");
    QTest::addColumn<int>("mean");
    QTest::newRow("8, busy") << 8 << 12;
    QTest::newRow("8, calm") << 8 << 2000;
    QTest::newRow("20, calm") << 20 << 3000;
}

void TstCaptureWriter::aPartReadsBackToItsSamples()
{
    QFETCH(int, kind);
    if (kind == int(CaptureKind::Sr) && !foreignKindIsBuilt(ForeignKind::Sr)) {
        QSKIP("built without the library for archives");
    }
    const auto data = randomCapture(16, 16, 5000, 5, 1'000'000);
    CaptureOut out = outOf(*data, CaptureKind(kind));
    out.part.channels = {0, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0};
    out.part.start = 1234;
    out.part.end = 3000.5;
    const QString path = m_folder.path(QStringLiteral("part"));
    QCOMPARE(writeCaptureFile(path, *data, out).result, FileResult::Done);
    ForeignOptions options;
    options.rate = 1'000'000;
    options.unitSize = 2;
    const ForeignCapture read = readForeign(path, foreignKind(CaptureKind(kind)), options);
    QVERIFY2(read.isDone(), qPrintable(read.detail));
    QCOMPARE(read.capture->smpCount(), 1767);
    const bool isPlain = kind == int(CaptureKind::Bin);
    for (const auto &[from, to] : {std::pair(3, isPlain ? 3 : 0), {9, isPlain ? 9 : 1}}) {
        Edges expected;
        for (const std::int64_t edge : edgesOf(*data, from)) {
            if (edge > 1234 && edge <= 3000) {
                expected.push_back(edge - 1234);
            }
        }
        QCOMPARE(edgesOf(*read.capture, to), expected);
    }
}

void TstCaptureWriter::kindsAreNamed()
{
    QCOMPARE(captureKindNamed(QStringLiteral("CSV")), CaptureKind::Csv);
    QCOMPARE(captureKindOf(QStringLiteral("/a.b/c.VCD")), CaptureKind::Vcd);
    QCOMPARE(captureKindOf(QStringLiteral("a.raw")), CaptureKind::Bin);
    QCOMPARE(captureKindOf(QStringLiteral("a.cxset")), CaptureKind::None);
    QCOMPARE(captureKindOf(QStringLiteral("a.cxdat")), CaptureKind::Cxdat);
    QCOMPARE(captureKindOf(QStringLiteral("a.CXDAT")), CaptureKind::None); // as whoever opens it has it
    QCOMPARE(foreignKindOf(QStringLiteral("a.Sr")), ForeignKind::Sr);
    QCOMPARE(foreignKindOf(QStringLiteral("a.cxdat")), ForeignKind::None);
    QVERIFY(isForeignCapture(QStringLiteral("a.vcd")) && !isForeignCapture(QStringLiteral("a.csv")));
}

void TstCaptureWriter::aDumpIsAsTheStandardHasIt()
{
    const auto data = CaptureBuilder(8).samples(10).trigger(3).channel(0, 1, {2, 5}).channel(4, 0, {5}).build();
    CaptureOut out = outOf(*data, CaptureKind::Vcd);
    out.names[4] = QStringLiteral("chip select");
    const QString path = m_folder.path(QStringLiteral("small.vcd"));
    QVERIFY(writeCaptureFile(path, *data, out).isDone());
    QCOMPARE(m_folder.read(QStringLiteral("small.vcd")),
             QByteArray("$version CorvanLUX $end\n$comment Sample rate: 1000000 Hz; trigger: 3 $end\n"
                        "$timescale 1 us $end\n$scope module corvanlux $end\n$var wire 1 ! a,_\"b\" $end\n"
                        "$var wire 1 \" chip_select $end\n$upscope $end\n$enddefinitions $end\n"
                        "#0\n$dumpvars\n1!\n0\"\n$end\n#2\n0!\n#5\n1!\n1\"\n#10\n"));
}

void TstCaptureWriter::valuesHaveTheirLastLine()
{
    const auto data = CaptureBuilder(8).samples(10).trigger(3).channel(0, 1, {2}).channel(4, 0, {9}).build();
    const QString path = m_folder.path(QStringLiteral("small.csv"));
    QVERIFY(writeCaptureFile(path, *data, outOf(*data, CaptureKind::Csv)).isDone());
    QCOMPARE(m_folder.read(QStringLiteral("small.csv")),
             QByteArray("Time[s],\"a, \"\"b\"\"\",n4\n-0.000003000,1,0\n-0.000001000,0,0\n0.000006000,0,1\n"));
    CaptureOut part = outOf(*data, CaptureKind::Csv);
    part.part.end = 8;
    QVERIFY(writeCaptureFile(path, *data, part).isDone());
    QVERIFY(m_folder.read(QStringLiteral("small.csv")).endsWith("\n-0.000001000,0,0\n0.000004000,0,0\n"));
}

void TstCaptureWriter::textIsThatOfTheWindow()
{
    const auto data = CaptureBuilder(8).samples(10).channel(0, 1, {2}).channel(4, 0, {9}).build();
    CaptureOut out = outOf(*data, CaptureKind::Text);
    QBuffer buffer;
    QVERIFY(buffer.open(QIODevice::WriteOnly));
    QVERIFY(writeCaptureTo(buffer, *data, out).isDone());
    QCOMPARE(buffer.data(),
             QByteArray("Time[s], a, \"b\", n4\n0.000000000, 1, 0\n0.000002000, 0, 0\n0.000009000, 0, 1\n"));
}

void TstCaptureWriter::aDataFileHoldsTheSettings()
{
    const auto data = randomCapture(8, 4, 3000, 9, 1'000'000);
    const auto settings = ConfigDocument::parse("<settings><global><devModel>1</devModel></global></settings>\n");
    CaptureOut out = outOf(*data, CaptureKind::Cxdat);
    out.settings = &*settings;
    const QString path = m_folder.path(QStringLiteral("a.cxdat"));
    QCOMPARE(writeCaptureFile(path, *data, out).result, FileResult::Done);
    const CaptureFile file([](const ConfigDocument &) { return 8; });
    const OpenedCapture opened = file.open(path);
    QCOMPARE(opened.outcome.result, FileResult::Done);
    QCOMPARE(entriesOf(*opened.capture, 1), entriesOf(*data, 1));
}

void TstCaptureWriter::aCancelAtAnyPieceLeavesTheEarlierFile()
{
    QFETCH(int, kind);
    const FileFolder folder;
    const auto data = randomCapture(16, 16, 100'000, 5, 1'000'000);
    CaptureOut out = outOf(*data, CaptureKind(kind));
    int pieces = 0;
    out.hook = [&pieces](double share) {
        ++pieces;
        return share >= 0 && share <= 1;
    };
    const bool isBuilt = writeCaptureFile(folder.path(QStringLiteral("whole")), *data, out).isDone();
    QVERIFY(isBuilt ? pieces > 0 : !foreignKindIsBuilt(ForeignKind::Sr));
    const QString path = folder.write("earlier");
    const auto files = QFileInfo(path).dir().entryList(QDir::Files | QDir::Hidden);
    for (int piece = 0; piece < pieces; ++piece) {
        int left = piece;
        out.hook = [&left](double) { return left-- > 0; };
        QCOMPARE(writeCaptureFile(path, *data, out).result, FileResult::Cancelled);
        QCOMPARE(folder.read(), QByteArray("earlier"));
        QCOMPARE(QFileInfo(path).dir().entryList(QDir::Files | QDir::Hidden), files);
    }
}

void TstCaptureWriter::aFullDiskLeavesTheEarlierFile()
{
#ifdef Q_OS_UNIX
    QFETCH(int, kind);
    const auto data = randomCapture(16, 16, 100'000, 5, 1'000'000);
    for (const int room : {0, 100, 70'000}) {
        const FileFolder folder;
        const QString path = folder.write("earlier");
        const QString other = folder.path(QStringLiteral("new"));
        FileResult over = FileResult::Done;
        FileResult fresh = FileResult::Done;
        {
            const FileSizeLimit limit(room);
            over = writeCaptureFile(path, *data, outOf(*data, CaptureKind(kind))).result;
            fresh = writeCaptureFile(other, *data, outOf(*data, CaptureKind(kind))).result;
        }
        // Qt tells this limit from a full disk.
        QVERIFY(over == FileResult::DiskFull || over == FileResult::Failed);
        QCOMPARE(fresh, over);
        QCOMPARE(folder.read(), QByteArray("earlier"));
        QCOMPARE(QFileInfo(path).dir().entryList(QDir::Files | QDir::Hidden).size(), 1);
    }
#else
    QSKIP("needs a limit of the size of files");
#endif
}

void TstCaptureWriter::whatCannotBeWrittenIsTold()
{
    const auto data = randomCapture(8, 2, 100, 5, 1'000'000);
    const QString nowhere = m_folder.path(QStringLiteral("none/a"));
    QCOMPARE(writeCaptureFile(nowhere, *data, outOf(*data, CaptureKind::Vcd)).result, FileResult::NoFolder);
    QCOMPARE(writeCaptureFile(QDir::tempPath(), *data, outOf(*data, CaptureKind::Sr)).result, FileResult::NotPlain);
    QBuffer buffer;
    QVERIFY(buffer.open(QIODevice::WriteOnly));
    QCOMPARE(writeCaptureTo(buffer, *data, outOf(*data, CaptureKind::Sr)).result, FileResult::WrongKind);
    CaptureOut none = outOf(*data, CaptureKind::Vcd);
    none.part.channels.pop_back();
    QCOMPARE(writeCaptureTo(buffer, *data, none).result, FileResult::NoCapture);
    QCOMPARE(writeCaptureTo(buffer, SmpData(8, 0), outOf(*data, CaptureKind::Vcd)).result, FileResult::NoCapture);
}

QTEST_GUILESS_MAIN(TstCaptureWriter)
#include "tst_CaptureWriter.moc"
