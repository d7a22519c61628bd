// The program as the system ends it: in order, with its settings written.

#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>

namespace {

/// The program catches the signal from now on, as the system tells.
bool catches(qint64 pid, int number)
{
    QFile status(QStringLiteral("/proc/%1/status").arg(pid));
    if (!status.open(QIODevice::ReadOnly)) {
        return false;
    }
    const QByteArray text = status.readAll();
    const int at = text.indexOf("SigCgt:");
    return at >= 0 && (text.mid(at + 7, 17).trimmed().toULongLong(nullptr, 16) >> (number - 1) & 1U) != 0;
}

/// The variables of a program with a home of its own.
QProcessEnvironment environmentIn(const QString &home)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char *name : {"HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME"}) {
        environment.insert(QString::fromLatin1(name), home);
    }
    return environment;
}

} // namespace

class TstProgramEnds : public QObject {
    Q_OBJECT
private slots:
    void aSignalEndsTheProgramInOrder_data();
    void aSignalEndsTheProgramInOrder();
    void aSignalEndsTheProgramBehindTheBoxOfAMissingFile();
    void theVersionIsToldWithoutADisplay();
};

void TstProgramEnds::aSignalEndsTheProgramInOrder_data()
{
    QTest::addColumn<int>("number");
    QTest::newRow("interrupt") << SIGINT;
    QTest::newRow("terminate") << SIGTERM;
}

void TstProgramEnds::aSignalEndsTheProgramInOrder()
{
    QFETCH(int, number);
    const QTemporaryDir home;
    QProcess program;
    program.setProcessEnvironment(environmentIn(home.path()));
    program.start(QStringLiteral(LUX_PROGRAM), QStringList());
    QVERIFY(program.waitForStarted(30000));
    QTRY_VERIFY_WITH_TIMEOUT(catches(program.processId(), number), 30000);
    QCOMPARE(kill(pid_t(program.processId()), number), 0);
    QVERIFY(program.waitForFinished(30000));
    QCOMPARE(program.exitStatus(), QProcess::NormalExit);
    QCOMPARE(program.exitCode(), 0);
    QDirIterator files(home.path(), {QStringLiteral("lux.config")}, QDir::Files, QDirIterator::Subdirectories);
    QVERIFY(files.hasNext());
    QFile config(files.next());
    QVERIFY(config.open(QIODevice::ReadOnly));
    QVERIFY(config.readAll().contains("<windowMaximized>")); // what a closing window leaves
}

void TstProgramEnds::aSignalEndsTheProgramBehindTheBoxOfAMissingFile()
{
    const QTemporaryDir home;
    QProcess program;
    program.setProcessEnvironment(environmentIn(home.path()));
    program.start(QStringLiteral(LUX_PROGRAM), {home.filePath(QStringLiteral("missing.cxdat"))});
    QVERIFY(program.waitForStarted(30000));
    QByteArray told;
    QTRY_VERIFY_WITH_TIMEOUT((told += program.readAllStandardError()).contains("missing.cxdat"), 30000);
    QCOMPARE(kill(pid_t(program.processId()), SIGTERM), 0);
    QVERIFY(program.waitForFinished(30000));
    QCOMPARE(program.exitStatus(), QProcess::NormalExit);
    QCOMPARE(program.exitCode(), 0);
}

void TstProgramEnds::theVersionIsToldWithoutADisplay()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("none"));
    QProcess program;
    program.setProcessEnvironment(environment);
    program.start(QStringLiteral(LUX_PROGRAM), {QStringLiteral("--version")});
    QVERIFY(program.waitForFinished(30000));
    QCOMPARE(program.exitStatus(), QProcess::NormalExit);
    QCOMPARE(program.exitCode(), 0);
    QVERIFY(program.readAllStandardOutput().startsWith("CorvanLUX "));
}

QTEST_GUILESS_MAIN(TstProgramEnds)
#include "tst_ProgramEnds.moc"
