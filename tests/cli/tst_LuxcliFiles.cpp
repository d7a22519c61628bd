#include "files/DataFileBytes.h"
#include "files/ForeignFile.h"
#include "store/MemBudget.h"

#include <QDir>
#include <QProcess>
#include <QRegularExpression>
#include <QtTest>

/// "luxcli export" and "luxcli convert" as they were built, run as a user or a script runs them.
class TstLuxcliFiles : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void everyKindConvertsToEveryOther_data();
    void everyKindConvertsToEveryOther();
    void anExportGoesToTheStandardOutput();
    void anExportTakesChannelsAndTimes();
    void aKindMayBeTold();
    void aDataFileOfAnotherProgramsOpensWithItsFacts();
    void capturesOfOtherProgramsAreReadByAllCommands();
    void wrongUsageIsTold_data();
    void wrongUsageIsTold();
    void whatIsReadIsNotWritten_data();
    void whatIsReadIsNotWritten();
    void badInputIsToldAndLeavesNothing_data();
    void badInputIsToldAndLeavesNothing();
    void aFileThatHasLostAllChannelsLeavesNothing_data();
    void aFileThatHasLostAllChannelsLeavesNothing();
    void aFileThatLacksAChannelIsNoSuccess_data();
    void aFileThatLacksAChannelIsNoSuccess();
    void helpIsGood();
    void namesMayHaveAnyBytes_data();
    void namesMayHaveAnyBytes();
    void pipesTakeWhatFilesTake_data();
    void pipesTakeWhatFilesTake();
    void aFullDiskIsTold();
    void aDiskThatFillsIsTold_data();
    void aDiskThatFillsIsTold();
    void aFileThatMayNotGrowIsTold_data();
    void aFileThatMayNotGrowIsTold();
    void aReaderThatLeavesEndsTheProgram();
    void manyChannelsArePicked();

private:
    struct Outcome {
        int code = -1;
        QByteArray out;
        QByteArray err;
    };
    [[nodiscard]] static Outcome run(const QString &program, const QStringList &arguments);
    [[nodiscard]] static Outcome luxcli(const QStringList &arguments) { return run(QStringLiteral(LUXCLI), arguments); }
    [[nodiscard]] Outcome luxcli(const QString &arguments) const;
    /// The dump behind the declarations: the same for the same samples.
    [[nodiscard]] QByteArray changesOf(const QString &path) const;

    FileFolder m_folder;
};

TstLuxcliFiles::Outcome TstLuxcliFiles::run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments, QIODevice::ReadOnly);
    if (!process.waitForFinished(60000)) {
        return {-2, {}, process.errorString().toUtf8()};
    }
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -3, process.readAllStandardOutput(),
            process.readAllStandardError()};
}

/// Words by blanks; names of files are those in the test's folder, marked by "@".
TstLuxcliFiles::Outcome TstLuxcliFiles::luxcli(const QString &arguments) const
{
    QStringList words = arguments.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (QString &word : words) {
        word = word.startsWith(QLatin1Char('@')) ? m_folder.path(word.mid(1)) : word;
    }
    return luxcli(words);
}

QByteArray TstLuxcliFiles::changesOf(const QString &path) const
{
    const Outcome outcome = luxcli({QStringLiteral("export"), path, QStringLiteral("-f"), QStringLiteral("vcd")});
    return outcome.code == 0 ? outcome.out.mid(outcome.out.indexOf("$enddefinitions")) : outcome.err;
}

void TstLuxcliFiles::initTestCase()
{
    QByteArray dump = "$timescale 1 us $end\n$var wire 1 ! CLK $end\n$var wire 1 \" DATA $end\n"
                      "$var wire 1 # CS $end\n$enddefinitions $end\n#0 0! 1\" 1#\n";
    for (int i = 1; i < 2000; ++i) {
        dump += '#' + QByteArray::number(i * 7) + (i % 2 != 0 ? " 1!" : " 0!") + (i % 5 == 0 ? " 0\"" : "") +
                (i % 5 == 3 ? " 1\"\n" : "\n");
    }
    QVERIFY(!m_folder.write(dump + "#15000\n", QStringLiteral("a.vcd")).isEmpty());
    QCOMPARE(luxcli(QStringLiteral("convert @a.vcd @a.cxdat")).err, QByteArray());
}

void TstLuxcliFiles::everyKindConvertsToEveryOther_data()
{
    QTest::addColumn<QString>("from");
    QTest::addColumn<QString>("to");
    const QStringList kinds{QStringLiteral("csv"), QStringLiteral("cxdat"), QStringLiteral("raw"), QStringLiteral("sr"),
                            QStringLiteral("vcd")};
    for (const QString &from : kinds) {
        for (const QString &to : kinds) {
            QTest::addRow("%s to %s", qPrintable(from), qPrintable(to)) << from << to;
        }
    }
}

void TstLuxcliFiles::everyKindConvertsToEveryOther()
{
    QFETCH(QString, from);
    QFETCH(QString, to);
    if (!foreignKindIsBuilt(ForeignKind::Sr) && (from == QLatin1String("sr") || to == QLatin1String("sr"))) {
        QSKIP("built without the library for archives");
    }
    const QString source = m_folder.path(QStringLiteral("from.") + from);
    const QString target = m_folder.path(QStringLiteral("to.") + to);
    const QString back = m_folder.path(QStringLiteral("back.cxdat"));
    const auto convert = [](const QString &in, const QString &out, const QString &kind) {
        QStringList arguments{QStringLiteral("convert"), in, out};
        if (kind == QLatin1String("raw") || kind == QLatin1String("csv")) {
            arguments +=
                {QStringLiteral("--rate"), QStringLiteral("1MHz"), QStringLiteral("--channels"), QStringLiteral("0-2")};
        }
        return luxcli(arguments);
    };
    for (const Outcome &outcome : {convert(m_folder.path(QStringLiteral("a.vcd")), source, {}),
                                   convert(source, target, from), convert(target, back, to)}) {
        QCOMPARE(outcome.err, QByteArray());
        QCOMPARE(outcome.out, QByteArray());
        QCOMPARE(outcome.code, 0);
    }
    const QByteArray changes = changesOf(back);
    QVERIFY(changes.startsWith("$enddefinitions $end\n#0\n$dumpvars\n0!\n1\"\n1#\n$end\n#7\n1!\n"));
    QVERIFY(changes.endsWith("#15000\n"));
    QCOMPARE(changes, changesOf(m_folder.path(QStringLiteral("a.cxdat"))));
}

void TstLuxcliFiles::anExportGoesToTheStandardOutput()
{
    QVERIFY(
        luxcli(QStringLiteral("export @a.cxdat -f csv")).out.startsWith("Time[s],CLK,DATA,CS\n0.000000000,0,1,1\n"));
    QVERIFY(luxcli(QStringLiteral("export @a.cxdat --format text")).out.startsWith("Time[s], CLK, DATA, CS\n"));
    QCOMPARE(luxcli(QStringLiteral("export @a.cxdat -f bin")).out.size(), 15000);
    QVERIFY(luxcli(QStringLiteral("export @a.cxdat -f vcd -o -")).out.contains("$var wire 1 # CS $end\n"));
    const Outcome archive = luxcli(QStringLiteral("export @a.cxdat -f sr"));
    QCOMPARE(archive.code, 1);
    QVERIFY(archive.err.startsWith("luxcli: "));
    const Outcome file = luxcli(QStringLiteral("export @a.cxdat -o @b.csv"));
    QCOMPARE(file.code, 0);
    QCOMPARE(m_folder.read(QStringLiteral("b.csv")), luxcli(QStringLiteral("export @a.cxdat -f csv")).out);
}

void TstLuxcliFiles::anExportTakesChannelsAndTimes()
{
    const Outcome part = luxcli(QStringLiteral("export @a.cxdat -f csv --channels CS,0 --from 10us --to 25us"));
    QCOMPARE(part.err, QByteArray());
    QCOMPARE(part.out, QByteArray("Time[s],CLK,CS\n0.000010000,1,1\n0.000014000,0,1\n0.000021000,1,1\n"
                                  "0.000024000,1,1\n"));
    QCOMPARE(luxcli(QStringLiteral("export @a.cxdat -f bin --from 1ms --to 2ms")).out.size(), 1000);
    // As doubles these are a little less than 15 samples, and a little more than 123.
    QCOMPARE(luxcli(QStringLiteral("export @a.cxdat -f bin --from 15us --to 123us")).out.size(), 108);
    QCOMPARE(luxcli(QStringLiteral("export @a.cxdat -f bin --from 15000000ps --to 123us")).out.size(), 108);
    for (const char *wrong : {"--channels 5", "--channels 99", "--channels NO", "--from 1s", "--from 3ms --to 2ms"}) {
        const Outcome outcome = luxcli(QStringLiteral("export @a.cxdat -f csv ") + QLatin1String(wrong));
        QCOMPARE(outcome.code, 1);
        QCOMPARE(outcome.out, QByteArray());
        QVERIFY2(outcome.err.startsWith("luxcli: "), outcome.err);
    }
}

void TstLuxcliFiles::aKindMayBeTold()
{
    QVERIFY(QFile::copy(m_folder.path(QStringLiteral("a.vcd")), m_folder.path(QStringLiteral("dump"))));
    QCOMPARE(luxcli(QStringLiteral("convert --from vcd --to csv @dump -")).out,
             luxcli(QStringLiteral("export @a.cxdat -f csv")).out);
    QCOMPARE(luxcli(QStringLiteral("convert @a.cxdat @t.txt")).code, 0);
    QCOMPARE(luxcli(QStringLiteral("convert @t.txt @t.cxdat --rate 1000k")).code, 0);
    QVERIFY(luxcli(QStringLiteral("info @t.cxdat")).out.contains("channel 1: DATA, "));
    for (const char *name : {"told", "told.vcd", "told.CXDAT"}) {
        const QString told = QLatin1String(name);
        QCOMPARE(luxcli(QStringLiteral("convert @a.cxdat --to cxdat @") + told).err, QByteArray());
        QCOMPARE(luxcli(QStringLiteral("convert --from cxdat --to csv @%1 -").arg(told)).out,
                 luxcli(QStringLiteral("export @a.cxdat -f csv")).out);
    }
}

void TstLuxcliFiles::aDataFileOfAnotherProgramsOpensWithItsFacts()
{
    const QByteArray info = luxcli(QStringLiteral("info @a.cxdat")).out;
    for (const char *line : {"rate: 1000000 Hz\n", "samples: 15000\n", "channel 0: CLK, 1999 edges\n"}) {
        QVERIFY2(info.contains(line), info);
    }
    const QByteArray head = m_folder.read(QStringLiteral("a.cxdat"));
    QVERIFY(head.contains("<chnEnable>1,1,1,0,0,0,0,0</chnEnable>"));
    QVERIFY(head.contains("<chnShowName2>CS</chnShowName2>"));
}

void TstLuxcliFiles::capturesOfOtherProgramsAreReadByAllCommands()
{
    QVERIFY(luxcli(QStringLiteral("info @a.vcd")).out.contains("channel 1: DATA, "));
    QCOMPARE(changesOf(m_folder.path(QStringLiteral("a.vcd"))), changesOf(m_folder.path(QStringLiteral("a.cxdat"))));
}

void TstLuxcliFiles::wrongUsageIsTold_data()
{
    QTest::addColumn<QString>("arguments");
    for (const char *arguments : {"export",
                                  "export @a.cxdat",
                                  "export @a.cxdat -f png1",
                                  "export @a.cxdat -f cxdat",
                                  "export @a.cxdat @a.vcd",
                                  "export @a.cxdat -f csv --from noon",
                                  "export @a.cxdat --loud",
                                  "convert",
                                  "convert @a.vcd",
                                  "convert @a.vcd @b.vcd @c.vcd",
                                  "convert @a.vcd @b.doc",
                                  "convert @a.doc @b.vcd",
                                  "convert @a.vcd @b.CXDAT",
                                  "convert @a.vcd @b --to odt",
                                  "convert @a.vcd @b.csv --rate fast",
                                  "convert @a.vcd @b.csv --rate 1.5",
                                  "convert @a.vcd @b.csv --rate 1mHz",
                                  "convert @a.vcd @b.csv --rate 2000G",
                                  "convert @a.raw @b.csv --bytes 0",
                                  "convert @a.raw @b.csv --bytes 129",
                                  "convert @a.raw @b.csv --bytes x",
                                  "export @a.cxdat -f csv --channels=",
                                  "export @a.cxdat -f csv -c 0,,1",
                                  "convert @a.vcd @b.csv --channels=",
                                  "convert @a.vcd @b.csv -c ,"}) {
        QTest::newRow(arguments) << QString::fromLatin1(arguments);
    }
}

void TstLuxcliFiles::wrongUsageIsTold()
{
    QFETCH(QString, arguments);
    const Outcome outcome = luxcli(arguments);
    QCOMPARE(outcome.code, 2);
    QCOMPARE(outcome.out, QByteArray());
    QVERIFY2(outcome.err.startsWith("luxcli: "), outcome.err);
}

void TstLuxcliFiles::whatIsReadIsNotWritten_data()
{
    QTest::addColumn<QString>("arguments");
    for (const char *arguments :
         {"export @a.cxdat -f csv -o @a.cxdat", "export @a.cxdat -f png -o @a.cxdat", "export @a.cxdat -f vcd -o @link",
          "convert @a.cxdat @a.cxdat --channels 0", "convert @a.cxdat @link --to sr", "decode @a.cxdat -o @a.cxdat",
          "decode @a.cxdat -o @link", "measure @a.cxdat --channel 0 -o @a.cxdat",
          "measure @a.cxdat --channel 0 -o @link"}) {
        QTest::newRow(arguments) << QString::fromLatin1(arguments);
    }
}

void TstLuxcliFiles::whatIsReadIsNotWritten()
{
    QFETCH(QString, arguments);
    const QString path = m_folder.path(QStringLiteral("a.cxdat"));
#ifdef Q_OS_UNIX
    const QString link = m_folder.path(QStringLiteral("link"));
    QVERIFY(QFile::exists(link) || QFile::link(path, link));
#else
    if (arguments.contains(QLatin1String("@link"))) {
        QSKIP("needs a symbolic link");
    }
#endif
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray before = file.readAll();
    const Outcome outcome = luxcli(arguments);
    QCOMPARE(outcome.code, 2);
    QVERIFY2(outcome.err.contains("is read, and cannot be written"), outcome.err);
    QFile after(path);
    QVERIFY(after.open(QIODevice::ReadOnly));
    QVERIFY(after.readAll() == before);
}

void TstLuxcliFiles::badInputIsToldAndLeavesNothing_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("message");
    QTest::newRow("dump") << QStringLiteral("bad.vcd") << m_folder.read(QStringLiteral("a.vcd")) + "#3 1!\n"
                          << QByteArray("line 2007: the time goes back");
    QTest::newRow("archive") << QStringLiteral("bad.sr") << QByteArray(100, 'x') << QByteArray();
    QTest::newRow("values") << QStringLiteral("bad.csv") << QByteArray("Time,A\n0,1\n1,2\n")
                            << QByteArray("line 3: column 2 is neither 0 nor 1");
    QTest::newRow("bytes without a rate") << QStringLiteral("bad.raw") << QByteArray("abc") << QByteArray("--rate");
    QTest::newRow("data file") << QStringLiteral("bad.cxdat") << QByteArray("abc") << QByteArray();
}

void TstLuxcliFiles::badInputIsToldAndLeavesNothing()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, message);
    const FileFolder folder;
    const QString in = folder.write(bytes, name);
    const QString out = folder.path(QStringLiteral("out.cxdat"));
    const Outcome outcome = luxcli({QStringLiteral("convert"), in, out});
    QCOMPARE(outcome.code, 1);
    QVERIFY2(outcome.err.startsWith("luxcli: ") && outcome.err.contains(message), outcome.err);
    QCOMPARE(QFileInfo(in).dir().entryList(QDir::Files | QDir::Hidden), QStringList(name));
}

void TstLuxcliFiles::aFileThatHasLostAllChannelsLeavesNothing_data()
{
    QTest::addColumn<QString>("arguments");
    for (const char *arguments :
         {"convert cut.cxdat out.cxdat", "convert cut.cxdat out.vcd", "convert cut.cxdat out.sr",
          "export cut.cxdat -o out.csv", "export cut.cxdat -f bin -o out"}) {
        QTest::newRow(arguments) << QString::fromLatin1(arguments);
    }
}

/// Cut within its first channel.
void TstLuxcliFiles::aFileThatHasLostAllChannelsLeavesNothing()
{
    QFETCH(QString, arguments);
    const FileFolder folder;
    const QByteArray whole = m_folder.read(QStringLiteral("a.cxdat"));
    const QString path = folder.write(whole.left(whole.indexOf("</settings>") + 500), QStringLiteral("cut.cxdat"));
    QStringList list = arguments.split(QLatin1Char(' '));
    list.replaceInStrings(QRegularExpression(QStringLiteral("^(cut|out)")), folder.path(QStringLiteral("\\1")));
    const Outcome outcome = luxcli(list);
    QCOMPARE(outcome.code, 1);
    QVERIFY2(outcome.err.contains("The file is incomplete.") && outcome.err.endsWith(": no channel holds data\n"),
             outcome.err);
    QCOMPARE(QFileInfo(path).dir().entryList(QDir::Files | QDir::Hidden), QStringList(QStringLiteral("cut.cxdat")));
}

void TstLuxcliFiles::aFileThatLacksAChannelIsNoSuccess_data()
{
    QTest::addColumn<int>("code");
    QTest::newRow("info @short.cxdat") << 1;
    QTest::newRow("measure @short.cxdat -c 0") << 1;
    QTest::newRow("measure @short.cxdat -c 0 --expect edges<0") << 1;
    QTest::newRow("convert @short.cxdat @short.vcd") << 1;
    QTest::newRow("export @short.cxdat -f csv") << 1;
    QTest::newRow("diff @short.cxdat @short.cxdat") << 2;
    QTest::newRow("diff @a.cxdat @short.cxdat -c 0") << 2;
}

/// Cut within its last channel: what is there is used, and told as not all of it.
void TstLuxcliFiles::aFileThatLacksAChannelIsNoSuccess()
{
    QFETCH(int, code);
    const QByteArray whole = m_folder.read(QStringLiteral("a.cxdat"));
    QVERIFY(!m_folder.write(whole.chopped(10), QStringLiteral("short.cxdat")).isEmpty());
    const Outcome outcome = luxcli(QString::fromLatin1(QTest::currentDataTag()));
    QVERIFY2(outcome.err.contains(": The file is incomplete. These channels are missing: CS\n"), outcome.err);
    QCOMPARE(outcome.code, code);
}

void TstLuxcliFiles::helpIsGood()
{
    for (const char *command : {"export --help", "convert -h"}) {
        const Outcome outcome = luxcli(QString::fromLatin1(command));
        QCOMPARE(outcome.code, 0);
        QVERIFY(outcome.out.startsWith("Usage: luxcli "));
    }
}

void TstLuxcliFiles::namesMayHaveAnyBytes_data()
{
    QTest::addColumn<QString>("kind");
    for (const char *kind : {"cxdat", "sr", "vcd", "csv", "raw"}) {
        QTest::newRow(kind) << QString::fromLatin1(kind);
    }
}

void TstLuxcliFiles::namesMayHaveAnyBytes()
{
#ifdef Q_OS_LINUX
    QFETCH(QString, kind);
    if (!foreignKindIsBuilt(ForeignKind::Sr) && kind == QLatin1String("sr")) {
        QSKIP("built without the library for archives");
    }
    const FileFolder folder;
    const QString script = QStringLiteral("set -e; cd \"$3\"; name=$(printf 'Pr\\374f\\377ung.%1')\n"
                                          "\"$1\" convert \"$2\" \"$name\"; test -f \"$name\"\n"
                                          "\"$1\" convert \"$name\" back.cxdat --rate 1M --channels 0-2\n"
                                          "\"$1\" diff \"$2\" back.cxdat; rm \"$name\"; test \"$(ls -A)\" = back.cxdat")
                               .arg(kind);
    const Outcome outcome =
        run(QStringLiteral("sh"), {QStringLiteral("-c"), script, QStringLiteral("sh"), QStringLiteral(LUXCLI),
                                   m_folder.path(QStringLiteral("a.cxdat")), folder.path(QString())});
    QCOMPARE(outcome.err, QByteArray());
    QCOMPARE(outcome.out, QByteArray());
    QCOMPARE(outcome.code, 0);
#else
    QSKIP("Names are Unicode here.");
#endif
}

void TstLuxcliFiles::pipesTakeWhatFilesTake_data()
{
    QTest::addColumn<QString>("script"); // $1 the program, $2 the capture, $3 a folder
    QTest::addColumn<QString>("direct");
    QTest::newRow("the standard output by its name")
        << QStringLiteral("\"$1\" export \"$2\" -f csv -o /dev/stdout | cat")
        << QStringLiteral("export @a.cxdat -f csv");
    QTest::newRow("a pipe that has a name")
        << QStringLiteral("mkfifo \"$3/p.vcd\"; \"$1\" convert \"$2\" \"$3/p.vcd\" & cat "
                          "\"$3/p.vcd\"; wait $!")
        << QStringLiteral("export @a.cxdat -f vcd");
}

void TstLuxcliFiles::pipesTakeWhatFilesTake()
{
#ifdef Q_OS_LINUX
    QFETCH(QString, script);
    QFETCH(QString, direct);
    const FileFolder folder;
    const Outcome outcome =
        run(QStringLiteral("sh"), {QStringLiteral("-c"), script, QStringLiteral("sh"), QStringLiteral(LUXCLI),
                                   m_folder.path(QStringLiteral("a.cxdat")), folder.path(QString())});
    QCOMPARE(outcome.err, QByteArray());
    QCOMPARE(outcome.code, 0);
    QVERIFY(!outcome.out.isEmpty());
    QCOMPARE(outcome.out, luxcli(direct).out);
    const Outcome archive = run(
        QStringLiteral("sh"), {QStringLiteral("-c"), QStringLiteral("\"$1\" export \"$2\" -f sr -o /dev/stdout | cat"),
                               QStringLiteral("sh"), QStringLiteral(LUXCLI), m_folder.path(QStringLiteral("a.cxdat"))});
    QVERIFY2(archive.err.endsWith(": an archive needs a file (-o)\n"), archive.err);
#else
    QSKIP("needs pipes with names");
#endif
}

void TstLuxcliFiles::aFullDiskIsTold()
{
    const Outcome nowhere = luxcli(QStringLiteral("convert @a.vcd @none/b.csv"));
    QCOMPARE(nowhere.code, 1);
    QVERIFY2(nowhere.err.contains("folder does not exist"), nowhere.err);
    if (!QFileInfo::exists(QStringLiteral("/dev/full"))) {
        QSKIP("needs a device that is always full");
    }
    for (const char *format : {"csv", "text", "bin", "vcd"}) {
        const Outcome full = run(QStringLiteral("sh"),
                                 {QStringLiteral("-c"), QStringLiteral("\"$1\" export \"$2\" -f \"$3\" >/dev/full"),
                                  QStringLiteral("sh"), QStringLiteral(LUXCLI),
                                  m_folder.path(QStringLiteral("a.cxdat")), QLatin1String(format)});
        QCOMPARE(full.code, 1);
        QVERIFY2(full.err.contains("could not be written"), full.err);
    }
}

void TstLuxcliFiles::aDiskThatFillsIsTold_data()
{
    QTest::addColumn<QString>("command");
    for (const char *command :
         {"convert \"$2\" full/out.vcd", "convert \"$2\" full/out.csv", "convert \"$2\" full/out.txt",
          "convert \"$2\" full/out.raw", "convert \"$2\" full/out.cxdat",
          "capture -o full/out.cxdat --simulate --rate 1M --depth 200k",
          "measure \"$2\" -c 0-2 -c 0-2 -c 0-2 -c 0-2 -c 0-2 -c 0-2 -c 0-2 -c 0-2 -c 0-2 --json -o full/out.jsonl",
          "history fetch 1 --folder kept -o full/out.cxdat"}) {
        QTest::newRow(command) << QString::fromLatin1(command);
    }
}

/// A file system that takes a part of what it is given, in a name space of its own.
void TstLuxcliFiles::aDiskThatFillsIsTold()
{
#ifdef Q_OS_LINUX
    QFETCH(QString, command);
    const FileFolder folder;
    const QString script =
        QStringLiteral("cd \"$3\" && mkdir full kept && mount -t tmpfs -o size=8k none full 2>/dev/null || "
                       "exit 77\n"
                       "cp \"$2\" kept/20260101-000000-000_RV2520_1.cxdat\n"
                       "\"$1\" %1 || { code=$?; ls -A full; exit $code; }")
            .arg(command);
    const Outcome outcome =
        run(QStringLiteral("unshare"),
            {QStringLiteral("--user"), QStringLiteral("--map-root-user"), QStringLiteral("--mount"),
             QStringLiteral("sh"), QStringLiteral("-c"), script, QStringLiteral("sh"), QStringLiteral(LUXCLI),
             m_folder.path(QStringLiteral("a.cxdat")), folder.path(QString())});
    if (outcome.code < 0 || outcome.err.contains("unshare") || outcome.code == 77) {
        QSKIP("needs name spaces");
    }
    QCOMPARE(outcome.err.count('\n'), 1);
    QVERIFY2(outcome.err.startsWith("luxcli: full/out.") && outcome.err.endsWith(": The disk is full.\n"), outcome.err);
    QCOMPARE(outcome.out, QByteArray()); // no part is left
    QCOMPARE(outcome.code, 1);
#else
    QSKIP("needs name spaces");
#endif
}

void TstLuxcliFiles::aFileThatMayNotGrowIsTold_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"out.vcd", "out.csv", "out.txt", "out.raw", "out.cxdat"}) {
        QTest::newRow(name) << QString::fromLatin1(name);
    }
}

/// As a limit of the shell has it.
void TstLuxcliFiles::aFileThatMayNotGrowIsTold()
{
#ifdef Q_OS_UNIX
    QFETCH(QString, name);
    const FileFolder folder;
    const QString script = QStringLiteral("cd \"$3\" && ulimit -f 2 && \"$1\" convert \"$2\" \"$4\"");
    const Outcome outcome =
        run(QStringLiteral("sh"), {QStringLiteral("-c"), script, QStringLiteral("sh"), QStringLiteral(LUXCLI),
                                   m_folder.path(QStringLiteral("a.cxdat")), folder.path(QString()), name});
    QVERIFY2(outcome.err.startsWith("luxcli: " + name.toUtf8() + ": "), outcome.err);
    QCOMPARE(outcome.err.count('\n'), 1);
    QCOMPARE(outcome.code, 1);
    QCOMPARE(QDir(folder.path(QString())).entryList(QDir::Files | QDir::Hidden), QStringList());
#else
    QSKIP("There are no such limits here.");
#endif
}

void TstLuxcliFiles::aReaderThatLeavesEndsTheProgram()
{
#ifdef Q_OS_UNIX
    QByteArray dump = "$timescale 1 us $end $var wire 1 ! A $end $enddefinitions $end\n";
    for (int i = 0; i < 50'000; ++i) {
        dump += '#' + QByteArray::number(i) + (i % 2 == 0 ? " 1!\n" : " 0!\n");
    }
    const Outcome outcome =
        run(QStringLiteral("sh"),
            {QStringLiteral("-c"), QStringLiteral("{ \"$1\" export \"$2\" -f csv; echo $? >\"$3\"; } | head -n 1"),
             QStringLiteral("sh"), QStringLiteral(LUXCLI), m_folder.write(dump, QStringLiteral("l.vcd")),
             m_folder.path(QStringLiteral("code"))});
    QCOMPARE(outcome.out, QByteArray("Time[s],A\n"));
    QCOMPARE(m_folder.read(QStringLiteral("code")), QByteArray("1\n"));
    QVERIFY2(outcome.err.contains("could not be written"), outcome.err);
#else
    QSKIP("needs a shell");
#endif
}

void TstLuxcliFiles::manyChannelsArePicked()
{
    QByteArray dump = "$timescale 1 us $end $var reg 100 ! BUS [99:0] $end $enddefinitions $end\n#0 b0 !\n#4 b1010 !\n";
    const QString path = m_folder.write(dump, QStringLiteral("many.vcd"));
    for (const char *arguments : {"convert @many.vcd @many.csv", "export @many.vcd -c 0-7 -f csv", "info @many.vcd"}) {
        const Outcome all = luxcli(QString::fromLatin1(arguments));
        QCOMPARE(all.code, 1);
        QVERIFY2(all.err.contains("100 channels are more than 32; \"luxcli convert --channels\" picks some: numbers"),
                 all.err);
    }
    QCOMPARE(luxcli(QStringLiteral("convert @many.vcd - --to csv --channels BUS[3],0-1")).out,
             QByteArray("Time[s],BUS[3],BUS[0],BUS[1]\n0.000000000,0,0,0\n0.000004000,1,0,1\n"));
}

QTEST_GUILESS_MAIN(TstLuxcliFiles)
#include "tst_LuxcliFiles.moc"
