// What luxcli takes of memory and time for long files, as it was built.

#include "files/DataBlocks.h"
#include "files/DataFileBytes.h"
#include "files/ForeignBytes.h"
#include "files/ForeignFile.h"
#include "support/ChildUse.h"

#include <QFile>
#include <QtTest>

class TstLuxcliLimits : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void aConversionTakesTheMemoryOfTheCapture_data();
    void aConversionTakesTheMemoryOfTheCapture();
    void aHugeFileIsToldOfByItsHeads();
    void aZipBombTakesNoMemory();
    void aGigabyteOfCommentTakesNoMemory();

private:
    [[nodiscard]] ChildUse luxcli(const QString &arguments) const;

    FileFolder m_folder;
};

namespace {

constexpr std::int64_t megabyte = 1 << 20;
constexpr int edges = 4'000'000;
constexpr std::int64_t most = 51 * edges / 10 + 64 * megabyte; ///< 5.1 bytes an edge and 64 MB

} // namespace

/// Words by blanks; names of files are those in the test's folder, marked by "@".
ChildUse TstLuxcliLimits::luxcli(const QString &arguments) const
{
#ifdef Q_OS_UNIX
    QStringList words = arguments.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (QString &word : words) {
        word = word.startsWith(QLatin1Char('@')) ? m_folder.path(word.mid(1)) : word;
    }
    return runChild(QStringLiteral(LUXCLI), words);
#else
    return {};
#endif
}

void TstLuxcliLimits::initTestCase()
{
#if !defined(Q_OS_UNIX) || defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    QSKIP("needs a program that takes its own memory only, and a system that tells of it");
#endif
    // 12 million samples of 8 channels, of which a channel in turn changes with each third.
    QFile raw(m_folder.path(QStringLiteral("a.raw")));
    QVERIFY(raw.open(QIODevice::WriteOnly));
    QByteArray piece;
    unsigned levels = 0;
    for (int i = 0; i < edges; ++i) {
        levels ^= 1U << (i % 8);
        piece.append(3, char(levels));
        if (piece.size() >= megabyte || i + 1 == edges) {
            QCOMPARE(raw.write(piece), qint64(piece.size()));
            piece.clear();
        }
    }
    raw.close();
    QCOMPARE(luxcli(QStringLiteral("convert @a.raw @a.cxdat --rate 100M")).code, 0);
    QVERIFY(QFileInfo(m_folder.path(QStringLiteral("a.cxdat"))).size() > 5 * (edges - 8));
}

void TstLuxcliLimits::aConversionTakesTheMemoryOfTheCapture_data()
{
    QTest::addColumn<QString>("from");
    QTest::addColumn<QString>("to");
    for (const char *kind : {"raw", "sr", "vcd", "csv"}) {
        QTest::addRow("cxdat to %s", kind) << QStringLiteral("@a.cxdat") << QStringLiteral("@b.") + QLatin1String(kind);
        QTest::addRow("%s to cxdat", kind) << QStringLiteral("@b.") + QLatin1String(kind) << QStringLiteral("@c.cxdat");
    }
}

void TstLuxcliLimits::aConversionTakesTheMemoryOfTheCapture()
{
    QFETCH(QString, from);
    QFETCH(QString, to);
    if ((from + to).contains(QLatin1String(".sr")) && !foreignKindIsBuilt(ForeignKind::Sr)) {
        QSKIP("built without the library for archives");
    }
    const ChildUse use = luxcli(QStringLiteral("convert %1 %2 --rate 100M").arg(from, to));
    QCOMPARE(use.code, 0);
    QVERIFY2(use.peak < most, qPrintable(QStringLiteral("%1 MB").arg(use.peak / megabyte)));
    QVERIFY2(use.peak > 5 * std::int64_t(edges), "it cannot have held the capture");
}

void TstLuxcliLimits::aHugeFileIsToldOfByItsHeads()
{
    constexpr std::int64_t entries = 20'000'000'000;
    const QByteArray settings = "<settings><global><devModel>1</devModel></global><devices/><analyzers/></settings>\n";
    DataFileBytes data(8);
    data.samples(1'000'000'000'000).frequency(100'000'000).block(3, 0, {});
    QByteArray bytes = settings + data.bytes();
    const auto head = encodeBlockHead({3, 0, entries});
    bytes.replace(bytes.size() - DataBlockHead::size, DataBlockHead::size,
                  QByteArray(reinterpret_cast<const char *>(head.data()), DataBlockHead::size));
    QFile file(m_folder.write(bytes, QStringLiteral("huge.cxdat")));
    // 100 GB that are not on the disk.
    if (!file.open(QIODevice::ReadWrite) || !file.resize(file.size() + entries * dataEntrySize)) {
        QSKIP("no file of this system is so long");
    }
    const ChildUse use = luxcli(QStringLiteral("info @huge.cxdat"));
    QCOMPARE(use.code, 0);
    QVERIFY2(use.peak < 64 * megabyte, qPrintable(QStringLiteral("%1 MB").arg(use.peak / megabyte)));
    QVERIFY2(use.processor < 2, qPrintable(QStringLiteral("%1 s").arg(use.processor))); // what is read takes 20 s
}

/// Half a gigabyte that never changes, in half a megabyte.
void TstLuxcliLimits::aZipBombTakesNoMemory()
{
    if (!foreignKindIsBuilt(ForeignKind::Sr)) {
        QSKIP("built without the library for archives");
    }
    constexpr int chunk = 16 << 20; // bytes
    constexpr int chunks = 32;
    const QByteArray quiet(chunk, '\0');
    const QByteArray packed = ZipBytes::deflated(quiet);
    const std::uint32_t sum = ZipBytes::crc(quiet);
    ZipBytes zip;
    zip.add("version", "2")
        .add("metadata", "[device 1]\ncapturefile=logic-1\nsamplerate=1 MHz\ntotal probes=1\n"
                         "unitsize=1\nprobe1=A\n");
    for (int i = 1; i <= chunks; ++i) {
        zip.addPacked("logic-1-" + QByteArray::number(i), packed, sum, chunk);
    }
    QVERIFY(!m_folder.write(zip.bytes(), QStringLiteral("bomb.sr")).isEmpty());
    const ChildUse use = luxcli(QStringLiteral("convert @bomb.sr @bomb.cxdat"));
    QCOMPARE(use.code, 0);
    QVERIFY2(use.peak < 96 * megabyte, qPrintable(QStringLiteral("%1 MB").arg(use.peak / megabyte)));
}

void TstLuxcliLimits::aGigabyteOfCommentTakesNoMemory()
{
    const QString path = m_folder.write("$timescale 1 us $end $var wire 1 ! A $end $enddefinitions $end\n"
                                        "#0 0!\n#5 1!\n$comment ",
                                        QStringLiteral("comment.vcd"));
    QFile file(path);
    // Of zeros, most of which are not on the disk.
    if (!file.open(QIODevice::ReadWrite) || !file.resize(1024 * megabyte) || !file.seek(file.size())) {
        QSKIP("no file of this system is so long");
    }
    QVERIFY(file.write(" $end\n#9 0!\n#20\n") > 0);
    file.close();
    const ChildUse use = luxcli(QStringLiteral("convert @comment.vcd @comment.cxdat"));
    QVERIFY(file.remove());
    QCOMPARE(use.code, 0);
    QVERIFY2(use.peak < 96 * megabyte, qPrintable(QStringLiteral("%1 MB").arg(use.peak / megabyte)));
}

QTEST_GUILESS_MAIN(TstLuxcliLimits)
#include "tst_LuxcliLimits.moc"
