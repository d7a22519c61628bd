// "luxcli capture" and "luxcli devices" as they were built, without an instrument.

#include "cli/LuxcliRun.h"
#include "settings/Config.h"
#include "store/MemBudget.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

using luxcliRun::luxcli;
using luxcliRun::Outcome;

class TstLuxcliCapture : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void aSimulatedCaptureIsSaved();
    void capturesAreRepeatedAndDecoded();
    void aDecoderMayHaveTheOnlyChannel();
    void theUsersSettingsCountForNothingAndStayAsTheyAre();
    void anInterruptKeepsWhatThereIs_data();
    void anInterruptKeepsWhatThereIs();
    void aProgramThatOutlivesItsTerminalGoesOn();
    void aReaderThatLeavesEndsTheProgram();
    void aFullDiskLeavesNoFile();
    void whatCannotBeWrittenIsToldBeforeTheCapture_data();
    void whatCannotBeWrittenIsToldBeforeTheCapture();
    void wrongUsageIsTold_data();
    void wrongUsageIsTold();
    void helpIsGood();

private:
    [[nodiscard]] QString path(const char *name) const { return m_folder.path(QString::fromLatin1(name)); }
    /// Runs a shell script: $1 is the program, $2 the folder of the test.
    [[nodiscard]] Outcome shell(const char *script) const
    {
        return luxcliRun::run(QStringLiteral("sh"),
                              {QStringLiteral("-c"), QString::fromLatin1(script), QStringLiteral("sh"),
                               QStringLiteral(LUXCLI), m_folder.path(QString())});
    }

    FileFolder m_folder;
};

void TstLuxcliCapture::initTestCase()
{
    memBudget = std::int64_t(4) << 30;
    configLoad();
}

void TstLuxcliCapture::aSimulatedCaptureIsSaved()
{
    const Outcome outcome = luxcli(
        "capture -o %1 --simulate --model RV2540 --rate 50M --depth 20k -c 0-2,31 --timeout 1s", path("sim.cxdat"));
    QCOMPARE(outcome.err, QByteArray());
    QCOMPARE(outcome.out, QByteArray());
    QCOMPARE(outcome.code, 0);
    const Outcome info = luxcli("info %1", path("sim.cxdat"));
    QVERIFY2(info.out.contains("model: RV2540\nrate: 50000000 Hz\nsamples: 20000\n"), info.out);
    QVERIFY(info.out.contains("channel 2: ") && info.out.contains("channel 31: ") && !info.out.contains("channel 3: "));
}

void TstLuxcliCapture::capturesAreRepeatedAndDecoded()
{
    const Outcome outcome = luxcli(
        "capture -o %1 --simulate --rate 1M --depth 20k --repeat 2 -a UART:rx=3,baudrate=115200", path("loop.cxdat"));
    QCOMPARE(outcome.err, QByteArray());
    QCOMPARE(outcome.code, 0);
    int heads = 0;
    int bytes = 0;
    for (const QByteArray &line : outcome.out.split('\n')) {
        const QJsonObject object = QJsonDocument::fromJson(line).object();
        heads += object.contains(QStringLiteral("capture")) ? 1 : 0;
        bytes += object[QStringLiteral("k")].toString() == QLatin1String("byte") ? 1 : 0;
    }
    QCOMPARE(heads, 2);
    QVERIFY(bytes > 20); // the decoder has driven its channel
    QVERIFY(outcome.out.startsWith("{\"capture\":\"loop-1\""));
    QVERIFY(luxcli("info %1", path("loop-2.cxdat")).out.contains("analyzer: UART:"));
    QVERIFY(!QFileInfo::exists(path("loop.cxdat")));
}

/// The settings that name no channel need none.
void TstLuxcliCapture::aDecoderMayHaveTheOnlyChannel()
{
    const Outcome outcome = luxcli("capture --simulate --rate 1M --depth 20k -c 3 -a UART:rx=3,baudrate=115200");
    QCOMPARE(outcome.err, QByteArray());
    QCOMPARE(outcome.code, 0);
    QVERIFY(outcome.out.startsWith("{\"capture\":\"capture\"") && outcome.out.contains("\"k\":\"byte\""));
}

void TstLuxcliCapture::theUsersSettingsCountForNothingAndStayAsTheyAre()
{
    const QString before = configPath();
    const QByteArray settings =
        "<settings><global><devModel>8</devModel><chnShowName1>Mine</chnShowName1></global><devices><RV2520>"
        "<smpFrequIndex>3</smpFrequIndex><smpDepthIndex>2</smpDepthIndex><chnEnable>1,0,1</chnEnable>"
        "<chnVth>0.60</chnVth></RV2520></devices><analyzers/></settings>\n";
    const auto captured = [this] {
        const Outcome outcome = luxcli("capture -o %1 --simulate --model 8", path("plain.cxdat"));
        const QList<QByteArray> info = luxcli("info %1", path("plain.cxdat")).out.split('\n');
        return outcome.err + info.mid(0, 5).join('\n') + QByteArray::number(info.size());
    };
    const QByteArray without = captured();
    QVERIFY(QDir().mkpath(QFileInfo(before).path()));
    QFile file(before);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(settings) == settings.size());
    file.close();
    QCOMPARE(captured(), without);
    QVERIFY2(without.contains("\nmodel: RV2520\n"), without);
    QVERIFY(!m_folder.read(QStringLiteral("plain.cxdat")).contains("Mine"));
    QCOMPARE(luxcli("capture -o %1 --simulate --model 8 --depth 20k --threshold 1.2V", path("own.cxdat")).code, 0);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), settings);
    file.close();
    QVERIFY(file.remove());
    QVERIFY(m_folder.read(QStringLiteral("own.cxdat")).contains("<chnVth>1.20</chnVth>"));
}

void TstLuxcliCapture::anInterruptKeepsWhatThereIs_data()
{
    QTest::addColumn<QByteArray>("signal");
    QTest::newRow("Ctrl+C") << QByteArray("INT");
    QTest::newRow("a request to end") << QByteArray("TERM");
    QTest::newRow("the end of the terminal") << QByteArray("HUP");
}

/// The signal comes while one of a thousand captures runs. Whoever runs the test may have it ignored, as nohup(1) does.
void TstLuxcliCapture::anInterruptKeepsWhatThereIs()
{
#ifdef Q_OS_UNIX
    QFETCH(const QByteArray, signal);
    QByteArray script =
        "rm -f \"$2\"/cut-*\n"
        "env --default-signal \"$1\" capture -o \"$2/cut.cxdat\" --simulate --rate 1M --depth 200k --repeat 1k &\n"
        "program=$!\n"
        "until [ -e \"$2/cut-0001.cxdat\" ] || ! kill -0 $program; do :; done\n"
        "kill -@ $program; wait $program";
    const Outcome outcome = shell(script.replace('@', signal).constData());
    QCOMPARE(outcome.code, 130);
    const QStringList files = QDir(m_folder.path(QString())).entryList({QStringLiteral("cut-*")}, QDir::Files);
    QVERIFY(!files.isEmpty() && files.size() < 900);
    for (const QString &name : files)
        QCOMPARE(luxcli("info %1", m_folder.path(name)).code, 0);
#else
    QSKIP("needs a shell");
#endif
}

void TstLuxcliCapture::aProgramThatOutlivesItsTerminalGoesOn()
{
#ifdef Q_OS_UNIX
    const Outcome outcome = shell("trap '' HUP; \"$1\" capture -o \"$2/nohup.cxdat\" --simulate --rate 1M --depth 20k "
                                  "--repeat 3 & program=$!\n"
                                  "until [ -e \"$2/nohup-1.cxdat\" ] || ! kill -0 $program; do :; done\n"
                                  "kill -HUP $program; wait $program");
    QCOMPARE(outcome.code, 0);
    QVERIFY(QFileInfo::exists(path("nohup-3.cxdat")));
#else
    QSKIP("needs a shell");
#endif
}

void TstLuxcliCapture::aReaderThatLeavesEndsTheProgram()
{
#ifdef Q_OS_UNIX
    const Outcome outcome = shell("{ \"$1\" capture --simulate --rate 1M --depth 20k --repeat 1k -a "
                                  "UART:rx=3,baudrate=115200; echo $? >\"$2/code\"; } | head -n 1");
    QVERIFY(outcome.out.startsWith("{\"capture\""));
    QCOMPARE(m_folder.read(QStringLiteral("code")), QByteArray("1\n"));
    QVERIFY2(outcome.err.contains("could not be written"), outcome.err);
#else
    QSKIP("needs a shell");
#endif
}

/// A limit of a file's size stands for a disk that is full.
void TstLuxcliCapture::aFullDiskLeavesNoFile()
{
#ifdef Q_OS_UNIX
    const Outcome outcome = shell("mkdir \"$2/full\"; trap '' XFSZ; ulimit -f 4; exec \"$1\" capture -o "
                                  "\"$2/full/out.cxdat\" --simulate --rate 1M --depth 200k");
    QCOMPARE(outcome.code, 1);
    QVERIFY2(outcome.err.startsWith("luxcli: "), outcome.err);
    QCOMPARE(QDir(path("full")).entryList(QDir::Files), QStringList());
#else
    QSKIP("needs a shell");
#endif
}

void TstLuxcliCapture::whatCannotBeWrittenIsToldBeforeTheCapture_data()
{
    QTest::addColumn<QByteArray>("arguments");
    QTest::addColumn<QByteArray>("message");
    QTest::newRow("no folder") << QByteArray("-o %1/none/out.cxdat") << QByteArray("The folder does not exist.");
    QTest::newRow("a folder") << QByteArray("-o %1/taken.cxdat") << QByteArray("This is a folder");
    QTest::newRow("the first of a series")
        << QByteArray("-o %1/many.cxdat --repeat 10") << QByteArray("This is a folder");
}

/// The capture itself would take minutes.
void TstLuxcliCapture::whatCannotBeWrittenIsToldBeforeTheCapture()
{
    QFETCH(const QByteArray, arguments);
    QFETCH(const QByteArray, message);
    const FileFolder folder;
    QVERIFY(QDir().mkdir(folder.path(QStringLiteral("taken.cxdat"))));
    QVERIFY(QDir().mkdir(folder.path(QStringLiteral("many-01.cxdat"))));
    const Outcome outcome =
        luxcli(("capture --simulate --rate 1M --depth 10G " + arguments).constData(), folder.path(QString()));
    QCOMPARE(outcome.code, 1);
    QVERIFY2(outcome.err.startsWith("luxcli: ") && outcome.err.contains(message), outcome.err);
    QCOMPARE(QDir(folder.path(QString())).entryList(QDir::Files), QStringList());
}

void TstLuxcliCapture::wrongUsageIsTold_data()
{
    QTest::addColumn<QString>("arguments");
    for (const char *arguments : {"capture",
                                  "capture -o out.txt",
                                  "capture -o %1 extra",
                                  "capture -o %1 --rate fast",
                                  "capture -o %1 --depth -1",
                                  "capture -o %1 --channels 3-1",
                                  "capture -o %1 --trigger 2",
                                  "capture -o %1 --trigger 2:up",
                                  "capture -o %1 --trigger 2:rising,3:falling",
                                  "capture -o %1 --trigger 2:high -t 2:low",
                                  "capture -o %1 --position 100",
                                  "capture -o %1 --threshold 5",
                                  "capture -o %1 --threshold nan",
                                  "capture -o %1 --timeout soon",
                                  "capture -o %1 --repeat 0",
                                  "capture -o %1 --format xml",
                                  "capture -o %1 -a UART:rx",
                                  "capture -o %1 --simulate --model RV9999",
                                  "capture -o %1 --simulate --model RV2210 --threshold 1",
                                  "capture -a NoSuch --simulate",
                                  "capture -o %1 --simulate --rate 33M",
                                  "capture -o %1 --simulate --trigger 2:rising",
                                  "capture -o %1 --simulate --position 10",
                                  "capture --simulate -a UART:rx=3 --output=",
                                  "capture -o %1 --simulate -a UART:rx=3 --channels 0-2",
                                  "capture -o %1 --simulate -a UART:rx=3,tx=40",
                                  "devices all",
                                  "devices --loud"})
        QTest::newRow(arguments) << QString::fromLatin1(arguments);
}

void TstLuxcliCapture::wrongUsageIsTold()
{
    QFETCH(QString, arguments);
    const Outcome outcome = luxcli(arguments.toLatin1().constData(), path("wrong.cxdat"));
    QCOMPARE(outcome.code, 2);
    QVERIFY2(outcome.err.startsWith("luxcli: "), outcome.err);
    QCOMPARE(outcome.out, QByteArray());
    QVERIFY(!QFileInfo::exists(path("wrong.cxdat")));
}

void TstLuxcliCapture::helpIsGood()
{
    for (const char *arguments : {"capture --help", "devices -h"}) {
        const Outcome outcome = luxcli(arguments);
        QCOMPARE(outcome.code, 0);
        QVERIFY(outcome.out.startsWith("Usage: luxcli "));
    }
}

QTEST_GUILESS_MAIN(TstLuxcliCapture)
#include "tst_LuxcliCapture.moc"
