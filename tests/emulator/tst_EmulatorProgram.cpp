// corvanlux-emulator as a user starts it: what it prints, what it returns, and that its options reach the instrument.

#include "emulator/UsbIpConnection.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

using namespace bench;
using usbIpClient::bigAt;
using usbIpClient::Connection;
using usbIpClient::longWait;

namespace {

struct Ended {
    int code = -1;
    QString out;
    QString errors;
};

/// Runs it to its end; a line that it accepts would make it serve for ever.
Ended run(const QStringList &arguments)
{
    QProcess program;
    program.start(QStringLiteral(LUX_EMULATOR), arguments);
    if (!program.waitForFinished(longWait) || program.exitStatus() != QProcess::NormalExit) {
        program.kill();
        program.waitForFinished();
        return {};
    }
    return {program.exitCode(), QString::fromLocal8Bit(program.readAllStandardOutput()),
            QString::fromLocal8Bit(program.readAllStandardError())};
}

/// It listens on a port of its own choice, until the end of the test or "quit".
struct Listening {
    explicit Listening(const QStringList &arguments)
    {
        program.start(QStringLiteral(LUX_EMULATOR),
                      QStringList{QStringLiteral("--listen"), QStringLiteral("0")} << arguments);
        while (!program.canReadLine() && program.waitForReadyRead(longWait)) {
        }
        port = std::uint16_t(program.readLine().trimmed().split(':').last().toUInt());
    }
    ~Listening()
    {
        program.kill();
        program.waitForFinished();
    }
    bool order(const QByteArray &line)
    {
        return program.write(line + '\n') > 0 && program.waitForBytesWritten(longWait);
    }
    /// The next line of its complaints.
    QString complaint()
    {
        program.setReadChannel(QProcess::StandardError);
        while (!program.canReadLine() && program.waitForReadyRead(longWait)) {
        }
        const QString line = QString::fromLocal8Bit(program.readLine()).trimmed();
        program.setReadChannel(QProcess::StandardOutput);
        return line;
    }
    /// @return the exit code
    int quit() { return order("quit") && program.waitForFinished(longWait) ? program.exitCode() : -1; }

    QProcess program;
    std::uint16_t port = 0;
};

/// What became of the request that stops the bulk pipe: a Linux error number, 0 for good.
int stopBulk(Connection &host)
{
    return host.write(0x38, 0, {});
}

constexpr int brokenPipe = -32;    // EPIPE: a stall
constexpr int protocolError = -71; // EPROTO

} // namespace

class TstEmulatorProgram : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void helpIsPrintedAndIsNoError();
    void badUseIsToldWithTheHelpAndCode2_data();
    void badUseIsToldWithTheHelpAndCode2();
    void aFileThatIsNoGoodIsToldWithCode2_data();
    void aFileThatIsNoGoodIsToldWithCode2();
    void aPortThatIsTakenIsToldWithCode1();
    void faultsOfTheCommandLineStrike();
    void faultsOfAScriptStrike();
    void faultsComeAndGoByOrders();
    void aBadOrderIsToldAndServingGoesOn();
    void aDeviceOfFullSpeedSaysSo();
    void twoInstrumentsAreTwoPrograms();
};

void TstEmulatorProgram::helpIsPrintedAndIsNoError()
{
    const Ended ended = run({QStringLiteral("--help")});
    QCOMPARE(ended.code, 0);
    QVERIFY(ended.out.startsWith(QStringLiteral("Usage: corvanlux-emulator ")));
    QCOMPARE(ended.errors, QString());
}

void TstEmulatorProgram::badUseIsToldWithTheHelpAndCode2_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("told");
    QTest::addRow("nothing") << QStringList() << QStringLiteral("a model, and either --listen or --vhci, are needed");
    QTest::addRow("an unknown option") << QStringList{QStringLiteral("--lisen")} << QStringLiteral("unknown: --lisen");
    QTest::addRow("an unknown model") << QStringList{QStringLiteral("--model"), QStringLiteral("10")}
                                      << QStringLiteral("no model: 10");
}

void TstEmulatorProgram::badUseIsToldWithTheHelpAndCode2()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, told);
    const Ended ended = run(arguments);
    QCOMPARE(ended.code, 2);
    QCOMPARE(ended.out, QString());
    QVERIFY2(ended.errors.startsWith(QStringLiteral("corvanlux-emulator: ") + told + QStringLiteral("\n\nUsage: ")),
             qPrintable(ended.errors));
}

void TstEmulatorProgram::aFileThatIsNoGoodIsToldWithCode2_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("told");
    const QString missing = QStringLiteral("/nonexistent/file");
    QTest::addRow("no such signal") << QStringList{QStringLiteral("--signal"), missing}
                                    << missing + QStringLiteral(": cannot be read");
    QTest::addRow("a folder as signal") << QStringList{QStringLiteral("--signal"), QStringLiteral("/")}
                                        << QStringLiteral("/: ");
    QTest::addRow("a signal that is no capture")
        << QStringList{QStringLiteral("--signal"), QStringLiteral("/dev/null")} << QStringLiteral("/dev/null: ");
    QTest::addRow("no such WAVE file") << QStringList{QStringLiteral("--model"), QStringLiteral("97"),
                                                      QStringLiteral("--signal"),
                                                      QStringLiteral("ch2=wav,file=") + missing}
                                       << missing + QStringLiteral(": cannot be read");
    QTest::addRow("a WAVE file that is none")
        << QStringList{QStringLiteral("--model"), QStringLiteral("97"), QStringLiteral("--signal"),
                       QStringLiteral("ch1=wav,file=/dev/null")}
        << QStringLiteral("/dev/null: no WAVE file");
    QTest::addRow("no such script") << QStringList{QStringLiteral("--script"), missing}
                                    << missing + QStringLiteral(": cannot be read");
    QTest::addRow("a bad fault") << QStringList{QStringLiteral("--fault"), QStringLiteral("stall@moon")}
                                 << QStringLiteral("fault \"stall@moon\": no place: moon");
}

void TstEmulatorProgram::aFileThatIsNoGoodIsToldWithCode2()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, told);
    const QStringList good{QStringLiteral("--listen"), QStringLiteral("0"), QStringLiteral("--model"),
                           QStringLiteral("8")};
    const Ended ended = run(good + arguments);
    QCOMPARE(ended.code, 2);
    QCOMPARE(ended.out, QString());
    QVERIFY2(ended.errors.startsWith(QStringLiteral("corvanlux-emulator: ") + told), qPrintable(ended.errors));
}

void TstEmulatorProgram::aPortThatIsTakenIsToldWithCode1()
{
    Listening first({QStringLiteral("--model"), QStringLiteral("8")});
    const QString port = QString::number(first.port);
    const Ended ended = run({QStringLiteral("--listen"), port, QStringLiteral("--model"), QStringLiteral("8")});
    QCOMPARE(ended.code, 1);
    QVERIFY2(ended.errors.startsWith(QStringLiteral("corvanlux-emulator: port %1: ").arg(port)),
             qPrintable(ended.errors));
    QCOMPARE(first.quit(), 0);
}

void TstEmulatorProgram::faultsOfTheCommandLineStrike()
{
    Listening emulator({QStringLiteral("--model=8"), QStringLiteral("--firmware"),
                        QStringLiteral("--fault=stall@transfer:0"), QStringLiteral("--fault=fail@bulk-stop:2")});
    Connection host(emulator.port);
    QVERIFY(host.import());
    QCOMPARE(stopBulk(host), brokenPipe);
    QCOMPARE(stopBulk(host), 0);
    QCOMPARE(stopBulk(host), protocolError);
    QCOMPARE(stopBulk(host), 0);
    QCOMPARE(emulator.quit(), 0);
}

void TstEmulatorProgram::faultsOfAScriptStrike()
{
    QTemporaryDir folder;
    QFile script(folder.filePath(QStringLiteral("faults")));
    QVERIFY(script.open(QIODevice::WriteOnly));
    QVERIFY(script.write("# the first two\nstall@transfer:0\nunplug@transfer:1\n") > 0);
    script.close();
    Listening emulator(
        {QStringLiteral("--model=8"), QStringLiteral("--firmware"), QStringLiteral("--script"), script.fileName()});
    Connection host(emulator.port);
    QVERIFY(host.import());
    QCOMPARE(stopBulk(host), brokenPipe);
    QVERIFY(stopBulk(host) != 0);
    QVERIFY(host.receive(1).empty()); // the device has left the bus
    QCOMPARE(emulator.quit(), 0);
}

void TstEmulatorProgram::faultsComeAndGoByOrders()
{
    Listening emulator({QStringLiteral("--model=8"), QStringLiteral("--firmware")});
    Connection host(emulator.port);
    QVERIFY(host.import());
    QCOMPARE(stopBulk(host), 0);
    QVERIFY(emulator.order("fault stall@bulk-stop+"));
    QVERIFY(emulator.order("are you there?")); // what it says to this comes after the orders before
    QCOMPARE(emulator.complaint(), QStringLiteral("corvanlux-emulator: no order: are you there?"));
    QCOMPARE(stopBulk(host), brokenPipe);
    QCOMPARE(stopBulk(host), brokenPipe);
    QVERIFY(emulator.order("clear"));
    QVERIFY(emulator.order("are you there?"));
    QVERIFY(!emulator.complaint().isEmpty());
    QCOMPARE(stopBulk(host), 0);
    QCOMPARE(emulator.quit(), 0);
}

void TstEmulatorProgram::aBadOrderIsToldAndServingGoesOn()
{
    Listening emulator({QStringLiteral("--model=8"), QStringLiteral("--firmware")});
    QVERIFY(emulator.order("fault stall@moon"));
    QCOMPARE(emulator.complaint(), QStringLiteral("corvanlux-emulator: fault \"stall@moon\": no place: moon"));
    Connection host(emulator.port);
    QVERIFY(host.import());
    QCOMPARE(stopBulk(host), 0);
    QCOMPARE(emulator.quit(), 0);
}

void TstEmulatorProgram::aDeviceOfFullSpeedSaysSo()
{
    Listening emulator({QStringLiteral("--model=8"), QStringLiteral("--firmware"), QStringLiteral("--full-speed")});
    Connection list(emulator.port);
    list.send({0x01, 0x11, 0x80, 0x05, 0, 0, 0, 0});
    const Bytes told = list.receive(8 + 4 + 312 + 4);
    QCOMPARE(told.size(), std::size_t(8 + 4 + 312 + 4));
    constexpr std::uint32_t fullSpeed = 2;
    QCOMPARE(bigAt(told, 8 + 4 + 256 + 32 + 8), fullSpeed);
    QCOMPARE(emulator.quit(), 0);
}

void TstEmulatorProgram::twoInstrumentsAreTwoPrograms()
{
    Listening one(
        {QStringLiteral("--model=8"), QStringLiteral("--firmware"), QStringLiteral("--fault=stall@bulk-stop")});
    Listening two({QStringLiteral("--model=5"), QStringLiteral("--firmware")});
    QVERIFY(one.port != two.port);
    Connection first(one.port);
    Connection second(two.port);
    QVERIFY(first.import() && second.import());
    QCOMPARE(stopBulk(second), 0);
    QCOMPARE(stopBulk(first), brokenPipe);
    QVERIFY(one.order("unplug"));
    QVERIFY(first.receive(1).empty());
    QCOMPARE(stopBulk(second), 0);
    QCOMPARE(one.quit(), 0);
    QCOMPARE(two.quit(), 0);
}

QTEST_GUILESS_MAIN(TstEmulatorProgram)
#include "tst_EmulatorProgram.moc"
