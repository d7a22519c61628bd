// "luxcli export -f png|svg", as it was built, beside the program that makes the pictures.

#include "cli/LuxcliRun.h"
#include "settings/Config.h"
#include "store/MemBudget.h"
#include "support/DecodeDesk.h"

#include <QImage>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <QtTest>

#include <filesystem>

using luxcliRun::luxcli;
using luxcliRun::Outcome;

class TstLuxcliPicture : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void aPictureHasTheSizeThatIsAskedFor();
    void withoutASizeItIsAsHighAsItsRows();
    void itShowsTheTimeThatIsAskedFor();
    void aDrawingHoldsNamesAndWhatIsDecodedAsText();
    void capturesOfOtherProgramsAreShownToo();
    void wrongUsageIsTold_data();
    void wrongUsageIsTold();
    void badInputIsToldAndLeavesNothing_data();
    void badInputIsToldAndLeavesNothing();
    void anEarlierPictureStaysIfANewOneFails();
    void aFullDiskIsToldInALine_data();
    void aFullDiskIsToldInALine();
    void whatIsStoredStaysAsItIs();
    void itSpeaksEnglishWhateverTheWindowSpeaks();
    void aMissingProgramIsTold();

private:
    FileFolder m_folder;
    QString m_capture; ///< 16 channels, 1 MHz, 10 ms: "Hi" on channel 0, channel 3 low up to the middle, then high
};

namespace {

constexpr std::int64_t half = 5000; // samples

/// The characters "Hi" at 9600 baud, 8N1.
EdgeLine hello()
{
    constexpr std::int64_t bit = 104; // samples
    EdgeLine line(true);
    line.hold(1000);
    for (const char c : {'H', 'i'}) {
        line.bit(false, bit);
        for (unsigned i = 0; i < 8; ++i)
            line.bit((unsigned(c) >> i & 1U) != 0, bit);
        line.bit(true, 2 * bit);
    }
    return line;
}

QStringList textsOf(const QByteArray &svg)
{
    QStringList texts;
    QXmlStreamReader xml(svg);
    while (!xml.atEnd()) {
        if (xml.readNext() == QXmlStreamReader::StartElement && xml.name() == QLatin1String("text"))
            texts += xml.readElementText().trimmed();
    }
    return xml.hasError() ? QStringList() : texts;
}

/// The rows of pixels that are white in a column: where the waves of that time are.
QVector<int> linesAt(const QImage &image, int x)
{
    QVector<int> lines;
    for (int y = 0; y < image.height(); ++y) {
        if (qGray(image.pixel(x, y)) > 230)
            lines += y;
    }
    return lines;
}

} // namespace

void TstLuxcliPicture::initTestCase()
{
    if (!QFileInfo::exists(QStringLiteral(CORVANLUX)))
        QSKIP("the program with the window is not built");
    memBudget = std::int64_t(4) << 30;
    configLoad();
    const QByteArray uart = "<item0><fileName>UART.dll</fileName><parameters>rx=0,baudrate=9600</parameters>"
                            "<format>2</format></item0>";
    CaptureBuilder builder(16);
    builder.samples(2 * half).channel(0, 1, hello().edges()).channel(3, 0, {half});
    m_capture = luxcliRun::save(m_folder, QStringLiteral("a.cxdat"), builder, uart);
    QVERIFY(!m_capture.isEmpty());
}

void TstLuxcliPicture::aPictureHasTheSizeThatIsAskedFor()
{
    const QString path = m_folder.path(QStringLiteral("sized.png"));
    const Outcome outcome = luxcli("export %1 -o %2 --size 801x307 --dpi 192", m_capture, path);
    QCOMPARE(outcome.err, QByteArray());
    QCOMPARE(outcome.out, QByteArray());
    QCOMPARE(outcome.code, 0);
    const QImage image(path);
    QCOMPARE(image.size(), QSize(801, 307));
    QCOMPARE(qRound(image.dotsPerMeterX() * 0.0254), 192);
}

void TstLuxcliPicture::withoutASizeItIsAsHighAsItsRows()
{
    const QString all = m_folder.path(QStringLiteral("all.png"));
    const QString one = m_folder.path(QStringLiteral("one.png"));
    QCOMPARE(luxcli("export %1 -o %2", m_capture, all).code, 0);
    QCOMPARE(luxcli("export %1 -o %2 --channels Clock", m_capture, one).code, 0);
    constexpr int ruler = 36;
    QCOMPARE(QImage(all).width(), 1600);
    QCOMPARE(QImage(one).width(), 1600);
    QVERIFY(QImage(one).height() > ruler + 20);
    QCOMPARE(QImage(all).height() - ruler, 2 * (QImage(one).height() - ruler));
}

void TstLuxcliPicture::itShowsTheTimeThatIsAskedFor()
{
    const QString path = m_folder.path(QStringLiteral("time.png"));
    // From 4 to 6 ms: the change of channel 3, at 5 ms, stands in the middle.
    QCOMPARE(luxcli("export %1 -o %2 --channels 3 --from 4ms --to 6ms --size 1000x200", m_capture, path).code, 0);
    const QImage image(path);
    constexpr int sidebar = 186; // with the border between both
    const int middle = (sidebar + 1000) / 2;
    const QVector<int> before = linesAt(image, middle - 20);
    const QVector<int> after = linesAt(image, middle + 20);
    QVERIFY(!before.isEmpty() && !after.isEmpty());
    QVERIFY(before.constLast() > after.constLast() + 20); // low, then high
    QCOMPARE(linesAt(image, sidebar + 20).constLast(), before.constLast());
    QCOMPARE(linesAt(image, 980).constLast(), after.constLast());
}

void TstLuxcliPicture::aDrawingHoldsNamesAndWhatIsDecodedAsText()
{
    const QString path = m_folder.path(QStringLiteral("decoded.svg"));
    const Outcome outcome = luxcli("export %1 -f svg -o %2 --from 1ms --to 3.3ms", m_capture, path);
    QCOMPARE(outcome.err, QByteArray());
    QCOMPARE(outcome.code, 0);
    const QStringList texts = textsOf(m_folder.read(QStringLiteral("decoded.svg")));
    QVERIFY2(texts.contains(QStringLiteral("Clock")), qPrintable(texts.join(QLatin1Char('|'))));
    QVERIFY2(texts.contains(QStringLiteral("0x48")), qPrintable(texts.join(QLatin1Char('|'))));
}

void TstLuxcliPicture::capturesOfOtherProgramsAreShownToo()
{
    const QString dump = m_folder.write("$timescale 1 us $end\n$var wire 1 ! sclk $end\n$var wire 1 # mosi $end\n"
                                        "$enddefinitions $end\n#0 0! 1#\n#40 1!\n#60 0# 0!\n#100\n",
                                        QStringLiteral("other.vcd"));
    const QString path = m_folder.path(QStringLiteral("other.svg"));
    QCOMPARE(luxcli("export %1 -o %2 --channels mosi", dump, path).code, 0);
    const QStringList texts = textsOf(m_folder.read(QStringLiteral("other.svg")));
    QVERIFY(texts.contains(QStringLiteral("mosi")));
    QVERIFY(!texts.contains(QStringLiteral("sclk")));
}

void TstLuxcliPicture::wrongUsageIsTold_data()
{
    QTest::addColumn<QByteArray>("arguments");
    for (const char *arguments :
         {"export %1 -f png", "export %1 -o %2 --size 100", "export %1 -o %2 --size 100x900",
          "export %1 -o %2 --size 900x100000", "export %1 -o %2 --dpi 95", "export %1 -o %2 --dpi 961",
          "export %1 -o %2 --dpi many", "export %1 -f csv --size 900x900"})
        QTest::newRow(arguments) << QByteArray(arguments);
}

void TstLuxcliPicture::wrongUsageIsTold()
{
    QFETCH(QByteArray, arguments);
    const QString path = m_folder.path(QStringLiteral("wrong.png"));
    const Outcome outcome = luxcli(arguments.constData(), m_capture, path);
    QCOMPARE(outcome.code, 2);
    QVERIFY2(outcome.err.startsWith("luxcli: ") && outcome.err.count('\n') == 1, outcome.err);
    QVERIFY(!QFileInfo::exists(path));
}

void TstLuxcliPicture::badInputIsToldAndLeavesNothing_data()
{
    QTest::addColumn<QByteArray>("arguments");
    QTest::addColumn<QByteArray>("told");
    QTest::newRow("no file") << QByteArray("export %1.none -o %2") << QByteArray("The file does not exist.");
    QTest::newRow("no channel") << QByteArray("export %1 -o %2 --channels 16") << QByteArray("there is no channel 16");
    QTest::newRow("no time") << QByteArray("export %1 -o %2 --from 1s") << QByteArray("nothing between these times");
    QTest::newRow("no folder") << QByteArray("export %1 -f png -o %2/none/a.png")
                               << QByteArray("The folder does not exist.");
}

void TstLuxcliPicture::badInputIsToldAndLeavesNothing()
{
    QFETCH(QByteArray, arguments);
    QFETCH(QByteArray, told);
    const QString path = m_folder.path(QStringLiteral("bad.png"));
    const Outcome outcome = luxcli(arguments.constData(), m_capture, path);
    QCOMPARE(outcome.code, 1);
    QVERIFY2(outcome.err.startsWith("luxcli: ") && outcome.err.contains(told), outcome.err);
    QCOMPARE(outcome.err.count('\n'), 1);
    QVERIFY(!QFileInfo::exists(path));
}

void TstLuxcliPicture::anEarlierPictureStaysIfANewOneFails()
{
    const QString path = m_folder.write("a picture", QStringLiteral("earlier.png"));
    QCOMPARE(luxcli("export %1 -o %2 --channels 99", m_capture, path).code, 1);
    QCOMPARE(m_folder.read(QStringLiteral("earlier.png")), QByteArray("a picture"));
}

void TstLuxcliPicture::aFullDiskIsToldInALine_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("picture of pixels") << QStringLiteral("out.png");
    QTest::newRow("drawing") << QStringLiteral("out.svg");
}

void TstLuxcliPicture::aFullDiskIsToldInALine()
{
#ifdef Q_OS_LINUX
    QFETCH(QString, name);
    const QString full = m_folder.path(QStringLiteral("full"));
    QVERIFY(QDir().mkpath(full));
    const Outcome outcome =
        luxcliRun::run(QStringLiteral("unshare"),
                       {QStringLiteral("--user"), QStringLiteral("--map-root-user"), QStringLiteral("--mount"),
                        QStringLiteral("sh"), QStringLiteral("-c"),
                        QStringLiteral("mount -t tmpfs -o size=8k none \"$3\" 2>/dev/null || exit 77\n"
                                       "\"$1\" export \"$2\" -o \"$3/$4\" || { code=$?; ls -A \"$3\"; exit $code; }"),
                        QStringLiteral("sh"), QStringLiteral(LUXCLI), m_capture, full, name});
    if (outcome.code < 0 || outcome.err.contains("unshare") || outcome.code == 77)
        QSKIP("needs name spaces");
    QCOMPARE(outcome.err.count('\n'), 1);
    QVERIFY2(outcome.err.startsWith("luxcli: ") && outcome.err.endsWith(name.toUtf8() + ": The disk is full.\n"),
             outcome.err);
    QCOMPARE(outcome.out, QByteArray());
    QCOMPARE(outcome.code, 1);
#else
    QSKIP("needs name spaces");
#endif
}

void TstLuxcliPicture::whatIsStoredStaysAsItIs()
{
    globalSet(QStringLiteral("devModel"), QStringLiteral("9"));
    QVERIFY(configSave(configPath()));
    const QFileInfo stored(configPath());
    const QStringList files = stored.dir().entryList(QDir::Files);
    QFile before(stored.filePath());
    QVERIFY(before.open(QIODevice::ReadOnly));
    const QByteArray bytes = before.readAll();
    QCOMPARE(luxcli("export %1 -o %2", m_capture, m_folder.path(QStringLiteral("stored.png"))).code, 0);
    QFile after(stored.filePath());
    QVERIFY(after.open(QIODevice::ReadOnly));
    QCOMPARE(after.readAll(), bytes);
    QCOMPARE(stored.dir().entryList(QDir::Files), files);
    QVERIFY(QFile::remove(configPath()));
}

void TstLuxcliPicture::itSpeaksEnglishWhateverTheWindowSpeaks()
{
    globalSet(QStringLiteral("userLang"), QStringLiteral("de"));
    QVERIFY(configSave(configPath()));
    const Outcome picture = luxcli("export %1 -o %2", m_capture, m_folder.path(QStringLiteral("english.svg")));
    const Outcome missing = luxcli("export %1 -o %2", m_folder.path(QStringLiteral("nothing.cxdat")),
                                   m_folder.path(QStringLiteral("none.svg")));
    QVERIFY(QFile::remove(configPath()));
    QCOMPARE(picture.err, QByteArray());
    QVERIFY(textsOf(m_folder.read(QStringLiteral("english.svg"))).contains(QStringLiteral("Channel 0")));
    QVERIFY2(missing.err.contains("The file does not exist."), missing.err);
}

void TstLuxcliPicture::aMissingProgramIsTold()
{
    const QTemporaryDir folder;
    const QFileInfo program(QStringLiteral(LUXCLI));
    const QString alone = folder.filePath(program.fileName());
    std::filesystem::copy_file(program.filePath().toStdString(), alone.toStdString());
    const QString path = m_folder.path(QStringLiteral("missing.png"));
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LD_LIBRARY_PATH"), program.path()); // of the decoder runtime
    process.setProcessEnvironment(environment);
    process.start(alone, {QStringLiteral("export"), m_capture, QStringLiteral("-o"), path});
    QVERIFY(process.waitForFinished(60000));
    QCOMPARE(process.exitCode(), 1);
    const QByteArray told = process.readAllStandardError();
    QVERIFY2(told.startsWith("luxcli: ") && told.contains("is missing"), told);
    QVERIFY(!QFileInfo::exists(path));
}

QTEST_GUILESS_MAIN(TstLuxcliPicture)
#include "tst_LuxcliPicture.moc"
