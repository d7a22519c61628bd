#include "files/ForeignBytes.h"
#include "files/SrMetadata.h"
#include "files/SrWriter.h"
#include "store/MemBudget.h"

#include <QtTest>

using Edges = std::vector<std::int64_t>;

namespace {

const QByteArray threeProbes = "[global]\nany=thing\n\n[device 1]\ncapturefile=logic-1\ntotal probes=3\n"
                               "samplerate=1 MHz\ntotal analog=0\nprobe1=CLK\nprobe2=DATA\nprobe3=CS\nunitsize=1\n";

ForeignCapture sr(const ZipBytes &zip, const QStringList &channels = {})
{
    ForeignOptions options;
    options.channels = channels;
    return foreign(zip.bytes(), ForeignKind::Sr, options);
}

/// Probes 1 to `count` in samples of `bytes`.
QByteArray probes(int count, int bytes)
{
    QByteArray text = "[device 1]\ncapturefile=logic-1\nsamplerate=100 kHz\ntotal probes=" + QByteArray::number(count) +
                      "\nunitsize=" + QByteArray::number(bytes) + '\n';
    for (int i = 1; i <= count; ++i) {
        text += "probe" + QByteArray::number(i) + "=P" + QByteArray::number(i) + '\n';
    }
    return text;
}

} // namespace

/// Session archives.
class TstSrReader : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void samplesBecomeChanges();
    void chunksFollowTheirNumbers();
    void aSingleUnnumberedChunkIsRead();
    void samplesMayHaveAnySize_data();
    void samplesMayHaveAnySize();
    void quietStretchesArePassed();
    void severalHundredChannelsArePicked();
    void analogChannelsAreNoted();
    void ratesAreReadAsTheyAreWritten_data();
    void ratesAreReadAsTheyAreWritten();
    void badArchivesAreTold_data();
    void badArchivesAreTold();
    void aZipBombIsTold_data();
    void aZipBombIsTold();
    void anArchiveCutAnywhereIsTold();
    void anEntryThatIsFlippedIsTold();
    void chunksOfAnyLengthGoOn();
    void spentMemoryIsTold();
};

void TstSrReader::initTestCase()
{
    memBudget = std::int64_t(4) << 30;
    if (!foreignKindIsBuilt(ForeignKind::Sr)) {
        QSKIP("built without the library for archives");
    }
}

void TstSrReader::samplesBecomeChanges()
{
    const ForeignCapture read = sr(ZipBytes().session(threeProbes, QByteArray("\x01\x01\x00\x02\xff\x00", 6)));
    QVERIFY2(read.isDone(), qPrintable(read.detail));
    QCOMPARE(read.names, (QStringList{QStringLiteral("CLK"), QStringLiteral("DATA"), QStringLiteral("CS")}));
    QCOMPARE(read.capture->smpFrequ(), 1'000'000);
    QCOMPARE(read.capture->smpCount(), 6);
    QCOMPARE(read.capture->chnCount, 8);
    QCOMPARE(edgesOf(*read.capture, 0), (Edges{2, 4, 5}));
    QCOMPARE(edgesOf(*read.capture, 1), (Edges{3, 5}));
    QCOMPARE(edgesOf(*read.capture, 2), (Edges{4, 5}));
    QCOMPARE(levelsAt(*read.capture, 0), 1);
    QVERIFY(read.notes.isEmpty());
}

void TstSrReader::chunksFollowTheirNumbers()
{
    ZipBytes zip;
    zip.add("logic-1-10", QByteArray(1, '\1')).add("metadata", threeProbes);
    for (int i = 9; i >= 1; --i) {
        zip.add("logic-1-" + QByteArray::number(i), QByteArray(2, '\0'));
    }
    const ForeignCapture read = sr(zip.add("version", "2\n").add("analog-1-1-1", "abcd").add("logic-10-3", "no"));
    QVERIFY2(read.isDone(), qPrintable(read.detail));
    QCOMPARE(read.capture->smpCount(), 19);
    QCOMPARE(edgesOf(*read.capture, 0), (Edges{18}));
}

void TstSrReader::aSingleUnnumberedChunkIsRead()
{
    const ForeignCapture read = sr(ZipBytes().add("version", "2").add("metadata", threeProbes).add("logic-1", "\1\3"));
    QVERIFY2(read.isDone(), qPrintable(read.detail));
    QCOMPARE(edgesOf(*read.capture, 1), (Edges{1}));
}

void TstSrReader::samplesMayHaveAnySize_data()
{
    QTest::addColumn<int>("bytes");
    QTest::addColumn<QStringList>("channels");
    for (int bytes = 1; bytes <= 9; ++bytes) {
        const QString last = QString::number(bytes * 8 - 1);
        QTest::addRow("%d", bytes) << bytes << QStringList{last, QStringLiteral("0")};
        if (bytes <= 4) {
            QTest::addRow("%d, all", bytes) << bytes << QStringList();
        }
    }
}

/// The last bit of each sample is the lowest of its number, the first bit the second lowest.
void TstSrReader::samplesMayHaveAnySize()
{
    QFETCH(int, bytes);
    QFETCH(QStringList, channels);
    QByteArray samples;
    Edges lastEdges;
    Edges firstEdges;
    for (int i = 0; i < 100; ++i) {
        const int value = i < 40 || i > 70 ? i : 40;
        QByteArray row(bytes, '\0');
        row[0] = char(value >> 1 & 1);
        row[bytes - 1] = char(row[bytes - 1] | (value & 1) << 7);
        samples += row;
        const int before = i == 0 ? 0 : (i - 1 < 40 || i - 1 > 70 ? i - 1 : 40);
        if (((value ^ before) & 1) != 0) {
            lastEdges.push_back(i);
        }
        if (((value ^ before) & 2) != 0) {
            firstEdges.push_back(i);
        }
    }
    const ForeignCapture read = sr(ZipBytes().session(probes(bytes * 8, bytes), samples), channels);
    QVERIFY2(read.isDone(), qPrintable(read.detail));
    QCOMPARE(read.capture->smpCount(), 100);
    QCOMPARE(edgesOf(*read.capture, channels.isEmpty() ? bytes * 8 - 1 : 0), lastEdges);
    QCOMPARE(edgesOf(*read.capture, channels.isEmpty() ? 0 : 1), firstEdges);
}

void TstSrReader::quietStretchesArePassed()
{
    for (int quiet = 0; quiet < 40; ++quiet) {
        const QByteArray samples = QByteArray(quiet, '\2') + '\1' + QByteArray(quiet, '\1') + '\2';
        const ForeignCapture read = sr(ZipBytes().session(threeProbes, samples));
        QVERIFY2(read.isDone(), qPrintable(read.detail));
        const Edges expected = quiet == 0 ? Edges{1} : Edges{quiet, quiet * 2 + 1};
        QCOMPARE(edgesOf(*read.capture, 0), expected);
        QCOMPARE(edgesOf(*read.capture, 1), expected);
    }
}

void TstSrReader::severalHundredChannelsArePicked()
{
    const QByteArray name(300, 'n');
    QByteArray metadata = probes(500, 63);
    metadata.replace("=P400\n", '=' + name + '\n');
    QByteArray samples(63 * 3, '\0');
    samples[63 + 399 / 8] = char(1 << 399 % 8);
    const ZipBytes zip = ZipBytes().session(metadata, samples);
    const ForeignCapture all = sr(zip);
    QCOMPARE(all.result, FileResult::Damaged);
    QVERIFY2(all.detail.startsWith(QStringLiteral("500 channels are more than 32")), qPrintable(all.detail));
    const ForeignCapture some = sr(zip, {QStringLiteral("P7"), QStringLiteral("399")});
    QVERIFY2(some.isDone(), qPrintable(some.detail));
    QCOMPARE(some.names[1], QString(foreignNameMax, QLatin1Char('n')));
    QCOMPARE(edgesOf(*some.capture, 1), (Edges{1, 2}));
}

void TstSrReader::analogChannelsAreNoted()
{
    QByteArray metadata = threeProbes;
    metadata.replace("total analog=0", "total analog=2\nanalog4=A0");
    const ForeignCapture read = sr(ZipBytes().session(metadata, "ab").add("analog-1-4-1", QByteArray(8, '\0')));
    QVERIFY(read.isDone());
    QCOMPARE(read.notes, QStringList(QStringLiteral("2 analog channels are passed over")));
}

void TstSrReader::ratesAreReadAsTheyAreWritten_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<qlonglong>("rate");
    QTest::newRow("plain") << QStringLiteral("24000000") << 24'000'000LL;
    QTest::newRow("with its unit") << QStringLiteral("24 MHz") << 24'000'000LL;
    QTest::newRow("short") << QStringLiteral("12.5k") << 12'500LL;
    QTest::newRow("GHz") << QStringLiteral("1.000000001 GHz") << 1'000'000'001LL;
    QTest::newRow("Hz") << QStringLiteral("7 Hz") << 7LL;
    QTest::newRow("too much") << QStringLiteral("2000 GHz") << 0LL;
    QTest::newRow("below 0") << QStringLiteral("-5") << 0LL;
    QTest::newRow("a word") << QStringLiteral("fast") << 0LL;
    QTest::newRow("nothing") << QString() << 0LL;
}

void TstSrReader::ratesAreReadAsTheyAreWritten()
{
    QFETCH(QString, text);
    QFETCH(qlonglong, rate);
    QCOMPARE(qlonglong(rateOfText(text)), rate);
}

void TstSrReader::badArchivesAreTold_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("detail");
    const auto row = [](const char *name, const QByteArray &bytes, const char *detail) {
        QTest::newRow(name) << bytes << QString::fromLatin1(detail);
    };
    const auto with = [](const char *from, const char *to) {
        return ZipBytes().session(QByteArray(threeProbes).replace(from, to), "abc").bytes();
    };
    row("empty", {}, "it is no whole archive");
    row("something else", QByteArray(4000, 'x'), "it is no whole archive");
    row("no version", ZipBytes().add("metadata", threeProbes).bytes(), "version: it is missing");
    row("another version", ZipBytes().add("version", "3").add("metadata", threeProbes).bytes(),
        "version: \"3\" is none");
    row("long version", ZipBytes().add("version", QByteArray(17, '2')).bytes(), "version: 17 bytes are too many");
    row("no metadata", ZipBytes().add("version", "2").add("logic-1-1", "a").bytes(), "metadata: it is missing");
    row("long metadata", ZipBytes().session(QByteArray(2 << 20, '#'), "a").bytes(), "metadata: 2097152 bytes");
    row("empty metadata", ZipBytes().session({}, "a").bytes(), "metadata: there are no logic channels");
    row("no rate", with("samplerate=1 MHz\n", ""), "metadata: there is no sample rate");
    row("rate of 0", with("1 MHz", "0"), "metadata: line 7: \"samplerate=0\" cannot be");
    row("no size of a sample", with("unitsize=1\n", ""), "metadata: there is no size of a sample");
    row("huge size of a sample", with("unitsize=1", "unitsize=2000000000"),
        "metadata: line 12: \"unitsize=2000000000\"");
    row("size of a sample below 0", with("unitsize=1", "unitsize=-1"), "metadata: line 12: ");
    row("channel beyond the sample", with("probe3", "probe9"), "metadata: channel 9 has no room in 1 bytes");
    row("channel 0", with("probe3", "probe0"), "metadata: line 11: \"probe0=CS\" cannot be");
    row("millions of channels", with("total probes=3", "total probes=9999999"), "metadata: line 6: ");
    row("no samples", ZipBytes().add("version", "2").add("metadata", threeProbes).bytes(), "there are no samples");
    row("empty chunk", ZipBytes().session(threeProbes, {}).bytes(), "there are no samples of logic-1 in it");
    row("part of a sample", ZipBytes().session(probes(9, 2), "abc").bytes(), "logic-1-1: 3 bytes are no whole samples");
    row("missing chunk", ZipBytes().session(threeProbes, "a").add("logic-1-3", "a").bytes(), "logic-1-2 is missing");
    row("absolute path", ZipBytes().session(threeProbes, "a").add("/etc/x", "a").bytes(),
        "/etc/x: this name leads out");
    row("path to above", ZipBytes().session(threeProbes, "a").add("a/../../x", "a").bytes(),
        "a/../../x: this name leads out");
    row("path of Windows", ZipBytes().session(threeProbes, "a").add("C:x", "a").bytes(), "C:x: this name leads out");
    row("wrong size", ZipBytes().session(threeProbes, "a").add("logic-1-2", "abc", {2, -1, false}).bytes(),
        "logic-1-2: ");
    row("entry beyond the file",
        ZipBytes().session(threeProbes, "a").add("logic-1-2", "abc", {1 << 30, -1, false}).bytes(),
        "logic-1-2: its size cannot be");
    row("wrong place", ZipBytes().session(threeProbes, "a").add("logic-1-2", "abc", {-1, 1 << 29, false}).bytes(), "");
    row("wrong checksum", ZipBytes().session(threeProbes, "a").add("logic-1-2", "abc", {-1, -1, true}).bytes(),
        "logic-1-2: ");
    const QByteArray many(1000, '\2');
    row("wrong checksum of what is packed",
        ZipBytes()
            .session(threeProbes, "a")
            .addPacked("logic-1-2", ZipBytes::deflated(many), ZipBytes::crc(many) ^ 1U, many.size())
            .bytes(),
        "logic-1-2: ");
}

void TstSrReader::badArchivesAreTold()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, detail);
    const ForeignCapture read = foreign(bytes, ForeignKind::Sr);
    QCOMPARE(read.result, FileResult::Damaged);
    QVERIFY2(read.detail.startsWith(detail) && !read.detail.isEmpty(), qPrintable(read.detail));
    QVERIFY(!read.capture);
}

void TstSrReader::aZipBombIsTold_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("detail");
    const auto row = [](const char *name, const QByteArray &bytes, const char *detail) {
        QTest::newRow(name) << bytes << QString::fromLatin1(detail);
    };
    const QByteArray many(40'000, '\1');
    ZipBytes bomb = ZipBytes().session(threeProbes, many);
    for (int i = 2; i < 10; ++i) {
        bomb.add("logic-1-" + QByteArray::number(i), many.left(0), {many.size(), 0, false});
    }
    QByteArray longList = ZipBytes().session(threeProbes, "a").bytes();
    constexpr int sizeOfList = 22 - 12; // from the end, in the end record
    qToLittleEndian<quint32>(7 << 20, longList.data() + longList.size() - sizeOfList);
    row("millions of entries", longList, "a list of 7340032 bytes is too long");
    row("entries in one place", bomb.bytes(), "logic-1-2: the entries overlap");
    const auto packed = [](std::int64_t told) {
        return ZipBytes().session(threeProbes, "a").addDeflated("logic-1-2", QByteArray(1 << 16, '\0'), told).bytes();
    };
    row("an entry that unpacks to more than it tells", packed(1000), "logic-1-2: ");
    row("an entry that unpacks to less than it tells", packed(1 << 17), "logic-1-2: ");
    row("a huge entry that unpacks to less than it tells", packed(std::int64_t(3) << 30), "logic-1-2: ");
    row("metadata", ZipBytes().add("version", "2").addDeflated("metadata", QByteArray(2 << 20, '#'), 2 << 20).bytes(),
        "metadata: 2097152 bytes are too many");
}

void TstSrReader::aZipBombIsTold()
{
    badArchivesAreTold();
}

void TstSrReader::anArchiveCutAnywhereIsTold()
{
    const QByteArray whole = ZipBytes().session(threeProbes, QByteArray(100, 'a')).bytes();
    for (int size = 0; size < whole.size(); ++size) {
        QVERIFY(!foreign(whole.left(size), ForeignKind::Sr).isDone());
    }
}

void TstSrReader::anEntryThatIsFlippedIsTold()
{
    const QByteArray whole = ZipBytes().session(threeProbes, QByteArray(100, 'a')).bytes();
    for (int at = 0; at < whole.size(); ++at) {
        QByteArray flipped = whole;
        flipped[at] = char(flipped[at] ^ 0x10);
        const ForeignCapture read = foreign(flipped, ForeignKind::Sr);
        QVERIFY(read.isDone() ? read.capture->smpCount() == 100 : !read.detail.isEmpty());
    }
}

/// Pieces of any length are read as the whole is: a row may be the first or the last of a word.
void TstSrReader::chunksOfAnyLengthGoOn()
{
    QByteArray samples;
    std::uint32_t random = 7;
    for (int i = 0; i < 500; ++i) {
        random = random * 1664525 + 1013904223;
        samples += char(random >> 29);
    }
    const ForeignCapture whole = sr(ZipBytes().session(threeProbes, samples));
    ZipBytes zip;
    zip.add("version", "2").add("metadata", threeProbes);
    int at = 0;
    for (int length = 1; at < samples.size(); ++length) {
        zip.add("logic-1-" + QByteArray::number(length), samples.mid(at, length));
        at += length;
    }
    const ForeignCapture parts = sr(zip);
    QVERIFY2(parts.isDone(), qPrintable(parts.detail));
    QCOMPARE(parts.capture->smpCount(), 500);
    for (int chn = 0; chn < 3; ++chn) {
        QVERIFY(edgesOf(*whole.capture, chn).size() > 150);
        QCOMPARE(edgesOf(*parts.capture, chn), edgesOf(*whole.capture, chn));
    }
}

void TstSrReader::spentMemoryIsTold()
{
    QByteArray samples;
    for (int i = 0; i < 30'000; ++i) {
        samples += char(i & 1);
    }
    memBudget = 0;
    const ForeignCapture read = sr(ZipBytes().session(threeProbes, samples));
    memBudget = std::int64_t(4) << 30;
    QCOMPARE(read.result, FileResult::NoMemory);
}

QTEST_GUILESS_MAIN(TstSrReader)
#include "tst_SrReader.moc"
