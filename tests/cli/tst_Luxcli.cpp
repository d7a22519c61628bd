#include "device/DevModels.h"
#include "files/CaptureFile.h"
#include "files/DataFileBytes.h"
#include "settings/Config.h"
#include "settings/ConfigDocument.h"
#include "store/MemBudget.h"
#include "support/DecodeDesk.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QScopeGuard>
#include <QStandardPaths>
#include <QtTest>

#include <algorithm>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

/// The program as it was built, run as a user or a script runs it.
class TstLuxcli : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void jsonLinesHaveAHeadAndALineAFrame();
    void csvHasAHeadAndQuotesWhatNeedsIt();
    void textHasTimeAndWords();
    void timesLimitWhatIsWritten();
    void aFrameThatEndsOrBeginsAtALimitIsWritten();
    void framesOfSeveralDecodersComeInTheOrderOfTime();
    void withoutADecoderThoseOfTheFileAreTaken();
    void anOutputFileIsWrittenWhole();
    void anOutputFileHasNothingOfWhatIsToldToNobody();
    void aPipeTakesTheOutputAndStaysAPipe();
    void anEarlierOutputStaysWhereAllInputIsBad();
    void severalFilesAreDecodedOneAfterTheOther();
    void linesOfSeveralFilesTellTheirs();
    void decodersAndTheirSettingsAreListed();
    void infoTellsOfTheCapture();
    void helpAndVersionAreGood();
    void wrongUsageIsTold_data();
    void wrongUsageIsTold();
    void aRefusedValueIsToldWithThePossibleOnes();
    void keysThatMeanTheSameAreTaken();
    void theModeOfSpiStandsForPolarityAndPhase();
    void aModeThatContradictsPolarityOrPhaseIsRefused();
    void badInputIsTold_data();
    void badInputIsTold();
    void aFileCutAnywhereIsBadInput();
    void aGoodFileIsDecodedBesideABadOne();
    void aFullDiskIsTold();
    void aReaderThatLeavesEndsTheProgram();
    void anInterruptEndsTheProgramInOrder();
    void noLibraryOfWindowsIsLinked();

private:
    /// What a run of the program left.
    struct Outcome {
        int code = -1;
        QByteArray out;
        QByteArray err;
    };
    [[nodiscard]] Outcome luxcli(const QStringList &arguments) const { return run(QStringLiteral(LUXCLI), arguments); }
    [[nodiscard]] Outcome run(const QString &program, const QStringList &arguments) const;
    [[nodiscard]] Outcome shell(const QString &script) const;
    [[nodiscard]] QString save(const QString &name, CaptureBuilder &builder, const QByteArray &analyzers = {}) const;

    FileFolder m_folder;
    QString m_capture; ///< "Hi," on channel 0 and its complement on channel 3, 9600 bits/s at 1 MHz
    QString m_long;    ///< 20000 characters on channel 0
    int m_model = 0;   ///< one with 16 channels
};

namespace {

constexpr std::int64_t bit = 104; // samples
constexpr int channels = 16;

/// Characters 8N1 behind 1000 samples of idle line.
EdgeLine serial(const QByteArray &text, bool idle = true)
{
    EdgeLine line(idle);
    line.hold(1000);
    for (const char c : text) {
        line.bit(!idle, bit);
        for (unsigned i = 0; i < 8; ++i)
            line.bit((unsigned(c) >> i & 1U) != 0 ? idle : !idle, bit);
        line.bit(idle, 2 * bit);
    }
    return line;
}

const QString uart = QStringLiteral("UART:rx=0,baudrate=9600");

QList<QByteArray> linesOf(const QByteArray &text)
{
    QList<QByteArray> lines = text.split('\n');
    if (lines.last().isEmpty())
        lines.removeLast();
    return lines;
}

} // namespace

TstLuxcli::Outcome TstLuxcli::run(const QString &program, const QStringList &arguments) const
{
    QProcess process;
    process.start(program, arguments, QIODevice::ReadOnly);
    if (!process.waitForFinished(60000))
        return {-2, {}, process.errorString().toUtf8()};
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -3, process.readAllStandardOutput(),
            process.readAllStandardError()};
}

TstLuxcli::Outcome TstLuxcli::shell(const QString &script) const
{
    return run(QStringLiteral("sh"), {QStringLiteral("-c"), script, QStringLiteral("sh"), QStringLiteral(LUXCLI),
                                      m_long, m_folder.path(QStringLiteral("code"))});
}

QString TstLuxcli::save(const QString &name, CaptureBuilder &builder, const QByteArray &analyzers) const
{
    const auto data = builder.build();
    const QByteArray settings = "<settings><global><devModel>" + QByteArray::number(m_model) +
                                "</devModel><chnShowName0>Serial</chnShowName0></global><devices/><analyzers>" +
                                analyzers + "</analyzers></settings>\n";
    const CapturePart whole{std::vector<std::uint8_t>(channels, 1), 0, double(data->smpCount())};
    const QString path = m_folder.path(name);
    const CaptureFile file(digitalChannelsOf);
    return file.save(path, *data, whole, ConfigDocument::parse(settings).value()).isDone() ? path : QString();
}

void TstLuxcli::initTestCase()
{
    memBudget = std::int64_t(4) << 30;
    configLoad();
    for (int model = 1; model < 200 && m_model == 0; ++model) {
        const auto settings = ConfigDocument::parse("<settings><global><devModel>" + QByteArray::number(model) +
                                                    "</devModel></global></settings>");
        m_model = digitalChannelsOf(*settings) == channels ? model : 0;
    }
    QVERIFY(m_model > 0);
    const EdgeLine line = serial("Hi,");
    m_capture =
        save(QStringLiteral("hello.cxdat"),
             CaptureBuilder(channels).samples(6000).trigger(7).channel(0, 1, line.edges()).channel(3, 0, line.edges()));
    const EdgeLine many = serial(QByteArray(20000, 'U'));
    m_long = save(QStringLiteral("long.cxdat"),
                  CaptureBuilder(channels).samples(many.position() + 1000).channel(0, 1, many.edges()));
    QVERIFY(!m_capture.isEmpty() && !m_long.isEmpty());
}

void TstLuxcli::jsonLinesHaveAHeadAndALineAFrame()
{
    const Outcome outcome = luxcli({QStringLiteral("decode"), m_capture, QStringLiteral("-a"), uart});
    QCOMPARE(outcome.err, QByteArray());
    QCOMPARE(outcome.code, 0);
    const QList<QByteArray> lines = linesOf(outcome.out);
    QCOMPARE(lines.size(), 4);
    const QJsonObject head = QJsonDocument::fromJson(lines[0]).object();
    QCOMPARE(head[QStringLiteral("capture")].toString(), QStringLiteral("hello"));
    QCOMPARE(head[QStringLiteral("rate")].toInt(), 1000000);
    QCOMPARE(head[QStringLiteral("samples")].toInt(), 6000);
    QCOMPARE(head[QStringLiteral("settings")].toObject()[QStringLiteral("baudrate")].toInt(), 9600);
    const QJsonObject first = QJsonDocument::fromJson(lines[1]).object();
    QCOMPARE(first[QStringLiteral("s")].toInt(), 1000);
    QVERIFY(qAbs(first[QStringLiteral("e")].toInt() - (1000 + 10 * 104)) < 5);
    QCOMPARE(first[QStringLiteral("k")].toString(), QStringLiteral("byte"));
    QCOMPARE(first[QStringLiteral("v")].toInt(), int('H'));
    QCOMPARE(first[QStringLiteral("t")].toDouble(), 0.001);
    QCOMPARE(QJsonDocument::fromJson(lines[3]).object()[QStringLiteral("v")].toInt(), int(','));
}

void TstLuxcli::csvHasAHeadAndQuotesWhatNeedsIt()
{
    const Outcome outcome = luxcli(
        {QStringLiteral("decode"), m_capture, QStringLiteral("--analyzer"), uart, QStringLiteral("--format=csv")});
    QCOMPARE(outcome.code, 0);
    const QList<QByteArray> lines = linesOf(outcome.out);
    QCOMPARE(lines.size(), 4);
    QCOMPARE(lines[0], QByteArray("time,first,last,analyzer,kind,values,text"));
    QVERIFY2(lines[1].startsWith("0.001000,1000,") && lines[1].contains(",UART/RS232/485,byte,"), lines[1]);
    QVERIFY2(lines[1].contains("v=72"), lines[1]);
}

void TstLuxcli::textHasTimeAndWords()
{
    const Outcome outcome = luxcli({QStringLiteral("decode"), QStringLiteral("--format"), QStringLiteral("text"),
                                    QStringLiteral("-a"), uart, QStringLiteral("--"), m_capture});
    QCOMPARE(outcome.code, 0);
    const QList<QByteArray> lines = linesOf(outcome.out);
    QCOMPARE(lines.size(), 3);
    QVERIFY2(lines[0].startsWith("0.001000\t") && lines[0].contains("0x48"), lines[0]);
}

void TstLuxcli::timesLimitWhatIsWritten()
{
    const auto values = [this](const QStringList &limits) {
        const Outcome outcome =
            luxcli(QStringList{QStringLiteral("decode"), m_capture, QStringLiteral("-a"), uart} + limits);
        QByteArray all;
        for (const QByteArray &line : linesOf(outcome.out).mid(1))
            all += char(QJsonDocument::fromJson(line).object()[QStringLiteral("v")].toInt());
        return all;
    };
    QCOMPARE(values({QStringLiteral("--from"), QStringLiteral("2.1ms")}), QByteArray("i,"));
    QCOMPARE(values({QStringLiteral("--to"), QStringLiteral("0.0021")}), QByteArray("H"));
    QCOMPARE(
        values({QStringLiteral("--from"), QStringLiteral("2500us"), QStringLiteral("--to"), QStringLiteral("3ms")}),
        QByteArray("i"));
    QCOMPARE(values({QStringLiteral("--from"), QStringLiteral("9s")}), QByteArray());
}

void TstLuxcli::aFrameThatEndsOrBeginsAtALimitIsWritten()
{
    const QStringList decode{QStringLiteral("decode"), m_capture, QStringLiteral("-a"), uart};
    const QList<QByteArray> frames = linesOf(luxcli(decode).out).mid(1);
    QCOMPARE(frames.size(), 3);
    const auto count = [&](const char *limit, int sample) { // the capture's samples are microseconds
        const QString time = QStringLiteral("%1us").arg(sample);
        return linesOf(luxcli(decode + QStringList{QString::fromLatin1(limit), time}).out).size() - 1;
    };
    for (int i = 0; i < frames.size(); ++i) {
        const QJsonObject frame = QJsonDocument::fromJson(frames.at(i)).object();
        const int first = frame[QStringLiteral("s")].toInt();
        const int last = frame[QStringLiteral("e")].toInt();
        QCOMPARE(count("--from", last), 3 - i);
        QCOMPARE(count("--from", last + 1), 2 - i);
        QCOMPARE(count("--to", first), i + 1);
        QCOMPARE(count("--to", first - 1), i);
    }
}

void TstLuxcli::framesOfSeveralDecodersComeInTheOrderOfTime()
{
    const Outcome outcome = luxcli({QStringLiteral("decode"), m_capture, QStringLiteral("-a"), uart,
                                    QStringLiteral("-a"), QStringLiteral("uart:rx=3,baudrate=9600,invert=true")});
    QCOMPARE(outcome.code, 0);
    const QList<QByteArray> lines = linesOf(outcome.out);
    QCOMPARE(lines.size(), 7);
    for (int i = 1; i < 7; ++i) {
        const QJsonObject frame = QJsonDocument::fromJson(lines[i]).object();
        QCOMPARE(frame[QStringLiteral("a")].toInt(), (i - 1) % 2);
        QCOMPARE(frame[QStringLiteral("v")].toInt(), int("HHii,,"[i - 1]));
    }
}

void TstLuxcli::withoutADecoderThoseOfTheFileAreTaken()
{
    const QString path = save(QStringLiteral("stored.cxdat"),
                              CaptureBuilder(channels).samples(6000).channel(0, 1, serial("Hi,").edges()),
                              "<item0><fileName>UART.dll</fileName><parameters>rx=0,baudrate=9600</parameters>"
                              "<format>2</format></item0>");
    const Outcome outcome = luxcli({QStringLiteral("decode"), path});
    QCOMPARE(outcome.err, QByteArray());
    QCOMPARE(outcome.code, 0);
    QCOMPARE(linesOf(outcome.out).size(), 4);
    QVERIFY(luxcli({QStringLiteral("info"), path}).out.contains("analyzer: UART:rx=0,baudrate=9600\n"));
}

void TstLuxcli::anOutputFileIsWrittenWhole()
{
    const QString path = m_folder.path(QStringLiteral("out.jsonl"));
    const QStringList arguments{QStringLiteral("decode"), m_capture, QStringLiteral("-a"), uart};
    const Outcome toFile = luxcli(arguments + QStringList{QStringLiteral("-o"), path});
    QCOMPARE(toFile.code, 0);
    QCOMPARE(toFile.out, QByteArray());
    QCOMPARE(m_folder.read(QStringLiteral("out.jsonl")), luxcli(arguments).out);
}

void TstLuxcli::anOutputFileHasNothingOfWhatIsToldToNobody()
{
#ifdef Q_OS_UNIX
    const QString path = m_folder.path(QStringLiteral("alone.jsonl"));
    const QString found = QStringLiteral("UART:rx=0"); // what was found is told
    const Outcome told = luxcli({QStringLiteral("decode"), m_capture, QStringLiteral("-a"), found});
    QVERIFY(!told.err.isEmpty());
    for (const char *closed : {"<&- >&- 2>&-", ">&- 2>&-", "2>&-"}) {
        const QString script = QStringLiteral("\"$1\" decode \"$2\" -a \"$3\" -o \"$4\" ") + QLatin1String(closed);
        const Outcome alone = run(QStringLiteral("sh"), {QStringLiteral("-c"), script, QStringLiteral("sh"),
                                                         QStringLiteral(LUXCLI), m_capture, found, path});
        QCOMPARE(alone.code, 0);
        QCOMPARE(m_folder.read(QStringLiteral("alone.jsonl")), told.out);
    }
#else
    QSKIP("Standard streams cannot be closed here.");
#endif
}

void TstLuxcli::aPipeTakesTheOutputAndStaysAPipe()
{
#ifdef Q_OS_UNIX
    const QString path = m_folder.path(QStringLiteral("pipe"));
    QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    const int pipe = open(QFile::encodeName(path).constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    QVERIFY(pipe >= 0);
    const auto close = qScopeGuard([pipe] { ::close(pipe); });
    const QStringList arguments{QStringLiteral("decode"), m_capture, QStringLiteral("-a"), uart};
    QCOMPARE(luxcli(arguments + QStringList{QStringLiteral("-o"), path}).code, 0);
    QByteArray arrived(1 << 16, '\0');
    arrived.truncate(int(std::max<ssize_t>(0, read(pipe, arrived.data(), std::size_t(arrived.size())))));
    QCOMPARE(arrived, luxcli(arguments).out);
    struct stat there {};
    QCOMPARE(lstat(QFile::encodeName(path).constData(), &there), 0);
    QVERIFY(S_ISFIFO(there.st_mode));
#else
    QSKIP("Pipes have no file names here.");
#endif
}

void TstLuxcli::anEarlierOutputStaysWhereAllInputIsBad()
{
    const QString path = m_folder.write("earlier\n", QStringLiteral("earlier.jsonl"));
    const QString bad = m_folder.write("no capture", QStringLiteral("bad.cxdat"));
    const Outcome outcome =
        luxcli({QStringLiteral("decode"), bad, QStringLiteral("-a"), uart, QStringLiteral("-o"), path});
    QCOMPARE(outcome.code, 1);
    QCOMPARE(m_folder.read(QStringLiteral("earlier.jsonl")), QByteArray("earlier\n"));
}

void TstLuxcli::severalFilesAreDecodedOneAfterTheOther()
{
    const Outcome outcome = luxcli({QStringLiteral("decode"), m_capture, m_capture, QStringLiteral("-a"), uart});
    QCOMPARE(outcome.code, 0);
    const QList<QByteArray> lines = linesOf(outcome.out);
    QCOMPARE(lines.size(), 8);
    QCOMPARE(lines.mid(0, 4), lines.mid(4));
}

/// As one table: with one head, and a column that parts the captures.
void TstLuxcli::linesOfSeveralFilesTellTheirs()
{
    const QString other = QFileInfo(m_capture).dir().filePath(QStringLiteral("an,other.cxdat"));
    QVERIFY(QFile::copy(m_capture, other));
    const auto lines = [&](const char *format) {
        return linesOf(luxcli({QStringLiteral("decode"), m_capture, other, QStringLiteral("-a"), uart,
                               QStringLiteral("--format"), QString::fromLatin1(format)})
                           .out);
    };
    const QByteArray name = QFileInfo(m_capture).completeBaseName().toUtf8();
    const QList<QByteArray> table = lines("csv");
    QCOMPARE(table.size(), 7);
    QCOMPARE(table[0], QByteArray("capture,time,first,last,analyzer,kind,values,text"));
    QVERIFY2(table[1].startsWith(name + ",0.001000,1000,"), table[1]);
    QCOMPARE(table[4], "\"an,other\"" + table[1].mid(name.size()));
    const QList<QByteArray> text = lines("text");
    QCOMPARE(text.size(), 6);
    QVERIFY2(text[0].startsWith(name + "\t0.001000\t"), text[0]);
    QCOMPARE(text[3], "an,other" + text[0].mid(name.size()));
}

void TstLuxcli::decodersAndTheirSettingsAreListed()
{
    const Outcome all = luxcli({QStringLiteral("analyzers")});
    QCOMPARE(all.code, 0);
    QVERIFY(all.out.contains("UART\tUART/RS232/485\n"));
    const Outcome one = luxcli({QStringLiteral("analyzers"), QStringLiteral("uart/rs232/485")});
    QCOMPARE(one.code, 0);
    QVERIFY(one.out.contains("rx\tchannel\tnumber or none\tnone\t"));
    QVERIFY(
        one.out.contains("parity\tchoice\tnone|odd|even|mark|space|ignore\tnone\tParity\tThe bit behind the data\n"));
    const Outcome text = luxcli({QStringLiteral("analyzers"), QStringLiteral("QSPI")});
    QVERIFY(text.out.contains("such as 3+2+5+4 or 4-7\n")); // which no list of values could tell
    QCOMPARE(luxcli({QStringLiteral("analyzers"), QStringLiteral("--all")}).code, 0);
}

void TstLuxcli::infoTellsOfTheCapture()
{
    const Outcome outcome = luxcli({QStringLiteral("info"), m_capture});
    QCOMPARE(outcome.code, 0);
    for (const char *line : {"rate: 1000000 Hz\n", "samples: 6000\n", "length: 0.006000 s\n", "trigger: 7\n"})
        QVERIFY2(outcome.out.contains(line), outcome.out);
    const QByteArray edges = QByteArray::number(int(serial("Hi,").edges().size()));
    QVERIFY2(outcome.out.contains("channel 0: Serial, " + edges + " edges\n"), outcome.out);
    const QString missing = m_folder.path(QStringLiteral("missing.cxdat"));
    for (const QStringList &files : {QStringList{m_capture, missing}, QStringList{missing, m_capture}}) {
        const Outcome several = luxcli(QStringList{QStringLiteral("info")} + files);
        QCOMPARE(several.out, outcome.out);
        QVERIFY2(several.err.contains("missing.cxdat: The file does not exist.\n"), several.err);
        QCOMPARE(several.code, 1);
    }
}

void TstLuxcli::helpAndVersionAreGood()
{
    const QList<QStringList> questions{{QStringLiteral("--help")},
                                       {QStringLiteral("--version")},
                                       {QStringLiteral("decode"), QStringLiteral("--help")},
                                       {QStringLiteral("analyzers"), QStringLiteral("-h")},
                                       {QStringLiteral("info"), QStringLiteral("--help")}};
    for (const QStringList &question : questions) {
        const Outcome outcome = luxcli(question);
        QCOMPARE(outcome.code, 0);
        QVERIFY(!outcome.out.isEmpty());
        QCOMPARE(outcome.err, QByteArray());
    }
}

void TstLuxcli::wrongUsageIsTold_data()
{
    QTest::addColumn<QStringList>("arguments");
    const auto row = [](const char *name, const char *arguments) {
        QTest::newRow(name) << QString::fromLatin1(arguments).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    };
    row("nothing", "");
    row("no such command", "undo");
    row("no file to decode", "decode -a UART:rx=0");
    row("no file to tell of", "info");
    row("unknown option", "decode FILE --loud");
    row("option without its value", "decode FILE -a");
    row("value for none", "decode FILE --help=1");
    row("unknown analyzer", "decode FILE -a NoSuch:rx=0");
    row("no name", "decode FILE -a :rx=0");
    row("unknown setting", "decode FILE -a UART:rx=0,colour=3");
    row("setting without a value", "decode FILE -a UART:rx");
    row("value that is none", "decode FILE -a UART:rx=0,parity=blue");
    row("number beyond its range", "decode FILE -a UART:rx=0,data_bits=77");
    row("a required channel is missing", "decode FILE -a SPI:mosi=1");
    row("a channel that is used twice", "decode FILE -a I2C:scl=1,sda=1");
    row("unknown format", "decode FILE -a UART:rx=0 --format xml");
    row("time that is none", "decode FILE -a UART:rx=0 --from noon");
    row("time below 0", "decode FILE -a UART:rx=0 --to -3");
    row("times the wrong way round", "decode FILE -a UART:rx=0 --from 2ms --to 1ms");
    row("frames into the capture that is read", "decode FILE -a UART:rx=0 -o FILE");
    row("two names", "analyzers UART SPI");
    row("settings of an unknown analyzer", "analyzers NoSuch");
}

void TstLuxcli::wrongUsageIsTold()
{
    QFETCH(QStringList, arguments);
    arguments.replaceInStrings(QStringLiteral("FILE"), m_capture);
    const QByteArray before = m_folder.read(QStringLiteral("hello.cxdat"));
    const Outcome outcome = luxcli(arguments);
    QCOMPARE(outcome.code, 2);
    QCOMPARE(outcome.out, QByteArray());
    QCOMPARE(m_folder.read(QStringLiteral("hello.cxdat")), before);
    QVERIFY2(outcome.err.startsWith("luxcli: ") || outcome.err.startsWith("Usage: "), outcome.err);
}

void TstLuxcli::aRefusedValueIsToldWithThePossibleOnes()
{
    const auto told = [this](const char *setting) {
        const QString analyzer = QStringLiteral("UART:rx=0,") + QLatin1String(setting);
        const Outcome outcome = luxcli({QStringLiteral("decode"), m_capture, QStringLiteral("-a"), analyzer});
        return QString::fromUtf8(outcome.err).trimmed();
    };
    QCOMPARE(told("parity=blue"),
             QStringLiteral("luxcli: UART: \"blue\" is no value of parity; possible: none|odd|even|mark|space|ignore"));
    QCOMPARE(told("data_bits=77"), QStringLiteral("luxcli: UART: \"77\" is no value of data_bits; possible: 5 to 9"));
    QCOMPARE(told("invert=x"), QStringLiteral("luxcli: UART: \"x\" is no value of invert; possible: false|true"));
    QCOMPARE(told("tx=x"), QStringLiteral("luxcli: UART: \"x\" is no value of tx; possible: number or none"));
}

/// What decoders name differently, since their fields do.
void TstLuxcli::keysThatMeanTheSameAreTaken()
{
    const auto head = [this](const char *analyzer) {
        const Outcome outcome =
            luxcli({QStringLiteral("decode"), m_capture, QStringLiteral("-a"), QString::fromLatin1(analyzer)});
        return outcome.out.left(outcome.out.indexOf('\n'));
    };
    QVERIFY(head("UART:rx=3,bitrate=9600").contains("\"baudrate\":9600"));
    QVERIFY(head("UART:rx=3,baudrate=9600.3").contains("\"baudrate\":9600,"));
    QVERIFY(head("UART:rx=3,baudrate=auto").contains("\"baudrate\":0"));
    QVERIFY(head("UART:rx=3,baudrate=0.3").isEmpty()); // 0 would find it
    QVERIFY(head("UART:rx=3,bit_rate=9600").contains("\"baudrate\":9600"));
    QVERIFY(head("Manchester:data=3,baudrate=9600").contains("\"bitrate\":9600"));
    const QByteArray modbus = head("Modbus:rx=3,baudrate=9600,invert=true");
    QVERIFY2(modbus.contains("\"invert_rx\":\"true\"") && modbus.contains("\"invert_tx\":\"true\""), modbus);
}

void TstLuxcli::theModeOfSpiStandsForPolarityAndPhase()
{
    const auto head = [this](const char *settings) {
        const QString analyzer = QStringLiteral("SPI:clk=0,mosi=1,") + QLatin1String(settings);
        const Outcome outcome = luxcli({QStringLiteral("decode"), m_capture, QStringLiteral("-a"), analyzer});
        return outcome.out.left(outcome.out.indexOf('\n'));
    };
    QVERIFY(head("mode=0").contains("\"cpol\":0,\"cpha\":0,"));
    QVERIFY(head("mode=1").contains("\"cpol\":0,\"cpha\":1,"));
    QVERIFY(head("mode=2").contains("\"cpol\":1,\"cpha\":0,"));
    QVERIFY(head("mode=3").contains("\"cpol\":1,\"cpha\":1,"));
    QVERIFY(head("cpha=true,mode=3,cpol=1").contains("\"cpol\":1,\"cpha\":1,"));
}

void TstLuxcli::aModeThatContradictsPolarityOrPhaseIsRefused()
{
    const auto told = [this](const char *request) {
        const Outcome outcome =
            luxcli({QStringLiteral("decode"), m_capture, QStringLiteral("-a"), QString::fromLatin1(request)});
        return QString::fromUtf8(outcome.err).trimmed() + QStringLiteral(" %1").arg(outcome.code);
    };
    QCOMPARE(told("SPI:clk=0,mosi=1,mode=3,cpol=0"), QStringLiteral("luxcli: SPI: mode=3 contradicts cpol=0 2"));
    QCOMPARE(told("SPI:clk=0,mosi=1,cpha=true,mode=2"), QStringLiteral("luxcli: SPI: mode=2 contradicts cpha=1 2"));
    QCOMPARE(told("SPI:clk=0,mosi=1,mode=4"),
             QStringLiteral("luxcli: SPI: \"4\" is no value of mode; possible: 0|1|2|3 2"));
    QVERIFY(told("UART:rx=3,mode=1").startsWith(QStringLiteral("luxcli: UART has no setting \"mode\"")));
    QVERIFY(
        told("Modbus:rx=3,mode=1").startsWith(QStringLiteral("luxcli: Modbus: \"1\" is no value of mode; possible")));
}

void TstLuxcli::badInputIsTold_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("analyzer");
    const QByteArray whole = m_folder.read(QStringLiteral("hello.cxdat"));
    const auto row = [this](const char *name, const QByteArray &bytes, const char *suffix = ".cxdat") {
        const QString file = QString::fromLatin1(name).replace(QLatin1Char(' '), QLatin1Char('-'));
        QTest::newRow(name) << m_folder.write(bytes, file + QLatin1String(suffix)) << uart;
    };
    QTest::newRow("missing") << m_folder.path(QStringLiteral("none.cxdat")) << uart;
    QTest::newRow("a folder") << QDir::tempPath() << uart;
    row("empty", {});
    row("another suffix", whole, ".txt");
    row("settings alone", whole.left(whole.indexOf("</settings>") + 12), ".cxset");
    row("something else", QByteArray(5000, 'x'));
    row("settings that are none", "<settings><global></settings>\n" + QByteArray(500, '\0'));
    QByteArray damaged = whole;
    damaged.replace(damaged.size() - 40, 40, QByteArray(40, '\xff'));
    row("damaged", damaged);
    QTest::newRow("a channel that the model has not") << m_capture << QStringLiteral("UART:rx=63,baudrate=9600");
    QTest::newRow("a channel that the capture has not") << m_capture << QStringLiteral("UART:rx=5,baudrate=9600");
    QTest::newRow("no stored analyzers") << m_capture << QString();
}

void TstLuxcli::badInputIsTold()
{
    QFETCH(QString, path);
    QFETCH(QString, analyzer);
    QStringList arguments{QStringLiteral("decode"), path};
    if (!analyzer.isEmpty())
        arguments += {QStringLiteral("-a"), analyzer};
    const Outcome outcome = luxcli(arguments);
    QCOMPARE(outcome.code, 1);
    QVERIFY2(outcome.err.startsWith("luxcli: "), outcome.err);
    QVERIFY2(linesOf(outcome.out).size() <= 1, outcome.out); // a head at most
}

/// As a copy is that was interrupted.
void TstLuxcli::aFileCutAnywhereIsBadInput()
{
    const QByteArray whole = m_folder.read(QStringLiteral("hello.cxdat"));
    constexpr int cuts = 25;
    for (int i = 0; i < cuts; ++i) {
        const QString path = m_folder.write(whole.left(whole.size() * i / cuts), QStringLiteral("cut.cxdat"));
        for (const QStringList &command : {QStringList{QStringLiteral("decode"), path, QStringLiteral("-a"), uart},
                                           QStringList{QStringLiteral("info"), path}}) {
            const Outcome outcome = luxcli(command);
            QVERIFY2(outcome.code == 1 && outcome.err.startsWith("luxcli: "),
                     QByteArray::number(i) + ": " + QByteArray::number(outcome.code) + ' ' + outcome.err);
        }
    }
}

void TstLuxcli::aGoodFileIsDecodedBesideABadOne()
{
    const Outcome outcome = luxcli(
        {QStringLiteral("decode"), m_folder.path(QStringLiteral("none.cxdat")), m_capture, QStringLiteral("-a"), uart});
    QCOMPARE(outcome.code, 1);
    QCOMPARE(linesOf(outcome.out).size(), 4);
    QVERIFY(outcome.err.contains("none.cxdat"));
}

void TstLuxcli::aFullDiskIsTold()
{
    const Outcome nowhere = luxcli({QStringLiteral("decode"), m_capture, QStringLiteral("-a"), uart,
                                    QStringLiteral("-o"), m_folder.path(QStringLiteral("none/out.jsonl"))});
    QCOMPARE(nowhere.code, 1);
    QVERIFY(nowhere.err.startsWith("luxcli: "));
    if (!QFileInfo::exists(QStringLiteral("/dev/full")))
        QSKIP("needs a device that is always full");
    const QStringList scripts{QStringLiteral("\"$1\" decode \"$2\" -a UART:rx=0,baudrate=9600 >/dev/full"),
                              QStringLiteral("\"$1\" info \"$2\" >/dev/full"),
                              QStringLiteral("\"$1\" analyzers >/dev/full")};
    for (const QString &script : scripts) {
        const Outcome full = shell(script);
        QCOMPARE(full.code, 1);
        QVERIFY2(full.err.startsWith("luxcli: "), full.err);
    }
}

void TstLuxcli::aReaderThatLeavesEndsTheProgram()
{
#ifdef Q_OS_UNIX
    const Outcome outcome =
        shell(QStringLiteral("{ \"$1\" decode \"$2\" -a UART:rx=0,baudrate=9600; echo $? >\"$3\"; } | head -n 1"));
    QVERIFY(outcome.out.startsWith("{\"capture\""));
    QCOMPARE(m_folder.read(QStringLiteral("code")), QByteArray("1\n"));
    QVERIFY(outcome.err.contains("could not be written"));
#else
    QSKIP("needs a shell");
#endif
}

/// It has more to write than a pipe holds, so that it is at work when the signal comes.
void TstLuxcli::anInterruptEndsTheProgramInOrder()
{
#ifdef Q_OS_UNIX
    const Outcome outcome =
        shell(QStringLiteral("mkfifo \"$3.pipe\"\n"
                             "\"$1\" decode \"$2\" \"$2\" \"$2\" -a UART:rx=0,baudrate=9600 >\"$3.pipe\" & program=$!\n"
                             "{ read -r line; kill -INT $program; wc -l; } <\"$3.pipe\"\n"
                             "wait $program"));
    QCOMPARE(outcome.code, 130);
    QVERIFY2(outcome.out.trimmed().toInt() < 60000, outcome.out);
#else
    QSKIP("needs a shell");
#endif
}

void TstLuxcli::noLibraryOfWindowsIsLinked()
{
    const QString ldd = QStandardPaths::findExecutable(QStringLiteral("ldd"));
    if (ldd.isEmpty())
        QSKIP("needs ldd");
    QStringList files{QStringLiteral(LUXCLI)};
    const QDir folder(QStringLiteral(LUX_PLUGIN_FOLDER));
    for (const QString &name : folder.entryList({QStringLiteral("*.so")}, QDir::Files))
        files += folder.filePath(name);
    for (const QString &file : files) {
        const Outcome outcome = run(ldd, {file});
        QCOMPARE(outcome.code, 0);
        QVERIFY2(outcome.out.contains("libAnalyzer.so"), outcome.out);
        QCOMPARE(outcome.out.contains("libQt5Core"), file == QStringLiteral(LUXCLI));
        for (const char *part : {"libQt5Gui", "libQt5Widgets", "libX11", "libxcb", "libGL"})
            QVERIFY2(!outcome.out.contains(part), outcome.out);
    }
}

QTEST_GUILESS_MAIN(TstLuxcli)
#include "tst_Luxcli.moc"
