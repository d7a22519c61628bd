// luxcli, as it was built, in front of a pipe that nobody reads.

#include "cli/LuxcliRun.h"
#include "store/MemBudget.h"

#include <QDir>
#include <QFileInfo>
#include <QtTest>

#ifdef Q_OS_LINUX
#include <csignal>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

class TstLuxcliPipe : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void aSignalEndsTheProgramWhileNobodyReads_data();
    void aSignalEndsTheProgramWhileNobodyReads();
    void aReaderThatComesLateGetsAll();
    void aSignalEndsTheWaitForAReader_data();
    void aSignalEndsTheWaitForAReader();
    void aNamedPipeGetsAllWhenItsReaderComes();
    void cleanupTestCase();

private:
    void start(const char *arguments);
    [[nodiscard]] bool hasWritten() const;

    FileFolder m_folder;
    QString m_capture; ///< of 10000 characters at 100 kBd
    int m_pipe = -1;   ///< both ends, so that it stays open
    QProcess m_program;
};

#ifdef Q_OS_LINUX

namespace {

/// Whether a process handles a signal by itself, as proc(5) tells.
bool catches(qint64 process, int signal)
{
    QFile status(QStringLiteral("/proc/%1/status").arg(process));
    const QByteArray text = status.open(QIODevice::ReadOnly) ? status.readAll() : QByteArray();
    const int at = text.indexOf("SigCgt:\t");
    return at >= 0 && (text.mid(at + 8, 16).toULongLong(nullptr, 16) >> (signal - 1) & 1) != 0;
}

} // namespace

void TstLuxcliPipe::initTestCase()
{
    memBudgetInit();
    constexpr int bit = 10; // samples
    std::vector<std::int64_t> edges;
    for (int i = 1; i <= 100'000; ++i) {
        edges.push_back(std::int64_t(bit) * i);
    }
    CaptureBuilder builder(16);
    builder.samples(1'001'000).channel(0, 1, edges);
    m_capture = luxcliRun::save(m_folder, QStringLiteral("long.cxdat"), builder);
    QVERIFY(!m_capture.isEmpty());
    const QByteArray path = QFile::encodeName(m_folder.path(QStringLiteral("pipe")));
    QCOMPARE(mkfifo(path.constData(), 0600), 0);
    m_pipe = open(path.constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    QVERIFY(m_pipe >= 0);
    constexpr int least = 4096; // bytes
    QVERIFY(fcntl(m_pipe, F_SETPIPE_SZ, least) >= least);
    m_program.setStandardOutputFile(m_folder.path(QStringLiteral("pipe")));
}

void TstLuxcliPipe::cleanupTestCase()
{
    m_program.kill();
    m_program.waitForFinished();
    close(m_pipe);
}

void TstLuxcliPipe::start(const char *arguments)
{
    QStringList list = QString::fromUtf8(arguments).split(QLatin1Char(' '));
    list.replaceInStrings(QStringLiteral("%1"), m_capture);
    list.replaceInStrings(QStringLiteral("%2"), m_folder.path(QStringLiteral("out.cxdat")));
    m_program.start(QStringLiteral(LUXCLI), list, QIODevice::ReadOnly);
}

bool TstLuxcliPipe::hasWritten() const
{
    int waiting = 0; // bytes
    return ioctl(m_pipe, FIONREAD, &waiting) == 0 && waiting > 0;
}

void TstLuxcliPipe::aSignalEndsTheProgramWhileNobodyReads_data()
{
    QTest::addColumn<QByteArray>("arguments");
    QTest::addColumn<int>("signal");
    QTest::newRow("many frames") << QByteArray("decode %1 -a UART:rx=0,baudrate=100000") << SIGINT;
    QTest::newRow("the last frames") << QByteArray("decode %1 -a UART:rx=0,baudrate=100000 --to 20ms") << SIGTERM;
    QTest::newRow("captured frames")
        << QByteArray("capture -o %2 --simulate --rate 1M --depth 200k -a UART:rx=3,baudrate=115200") << SIGINT;
    QTest::newRow("exported levels") << QByteArray("export %1 -f csv") << SIGINT;
}

void TstLuxcliPipe::aSignalEndsTheProgramWhileNobodyReads()
{
    QFETCH(const QByteArray, arguments);
    QFETCH(const int, signal);
    constexpr int mostMs = 20'000; // the test's own patience
    constexpr int toFillMs = 300;
    char rest[65536];
    while (read(m_pipe, rest, sizeof rest) > 0) {
    }
    start(arguments.constData());
    QTRY_VERIFY_WITH_TIMEOUT(hasWritten(), mostMs);
    QTest::qWait(toFillMs);
    QCOMPARE(m_program.state(), QProcess::Running);
    QCOMPARE(::kill(pid_t(m_program.processId()), signal), 0);
    const bool hasEnded = m_program.waitForFinished(mostMs / 4);
    if (!hasEnded) {
        m_program.kill();
        m_program.waitForFinished();
    }
    QVERIFY(hasEnded);
    QCOMPARE(m_program.readAllStandardError(), QByteArray());
    QCOMPARE(m_program.exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_program.exitCode(), 130);
    if (arguments.contains("%2")) {
        QCOMPARE(luxcliRun::luxcli("info %1", m_folder.path(QStringLiteral("out.cxdat"))).code, 0);
    }
}

void TstLuxcliPipe::aReaderThatComesLateGetsAll()
{
    constexpr int mostMs = 20'000;
    constexpr int lateMs = 500;
    char piece[65536];
    while (read(m_pipe, piece, sizeof piece) > 0) {
    }
    start("decode %1 -a UART:rx=0,baudrate=100000");
    QTRY_VERIFY_WITH_TIMEOUT(hasWritten(), mostMs);
    QTest::qWait(lateMs);
    QByteArray all;
    const auto readOn = [&] {
        for (ssize_t count = 0; (count = read(m_pipe, piece, sizeof piece)) > 0;) {
            all.append(piece, int(count));
        }
    };
    QElapsedTimer timer;
    timer.start();
    while (!m_program.waitForFinished(1) && timer.elapsed() < mostMs) {
        readOn();
    }
    readOn();
    QCOMPARE(m_program.exitCode(), 0);
    QCOMPARE(all, luxcliRun::luxcli("decode %1 -a UART:rx=0,baudrate=100000", m_capture).out);
    QVERIFY(all.size() > 500'000);
}

void TstLuxcliPipe::aSignalEndsTheWaitForAReader_data()
{
    QTest::addColumn<QByteArray>("arguments");
    QTest::addColumn<int>("signal");
    QTest::newRow("decode") << QByteArray("decode %1 -a UART:rx=0,baudrate=100000 -o %2") << SIGINT;
    QTest::newRow("export") << QByteArray("export %1 -f csv -o %2") << SIGTERM;
    QTest::newRow("measure") << QByteArray("measure %1 --channel 0 -o %2") << SIGTERM;
}

void TstLuxcliPipe::aSignalEndsTheWaitForAReader()
{
    QFETCH(const QByteArray, arguments);
    QFETCH(const int, signal);
    constexpr int mostMs = 20'000; // the test's own patience
    const FileFolder folder;
    const QString pipe = folder.path(QStringLiteral("lonely"));
    QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    QProcess program;
    QStringList list = QString::fromUtf8(arguments).split(QLatin1Char(' '));
    list.replaceInStrings(QStringLiteral("%1"), m_capture);
    list.replaceInStrings(QStringLiteral("%2"), pipe);
    program.start(QStringLiteral(LUXCLI), list, QIODevice::ReadOnly);
    QVERIFY(program.waitForStarted(mostMs));
    QTRY_VERIFY_WITH_TIMEOUT(catches(program.processId(), signal), mostMs);
    QCOMPARE(::kill(pid_t(program.processId()), signal), 0);
    const bool hasEnded = program.waitForFinished(mostMs);
    program.kill();
    program.waitForFinished();
    QVERIFY(hasEnded);
    QCOMPARE(program.readAllStandardError(), QByteArray());
    QCOMPARE(program.exitCode(), 130);
    QCOMPARE(QDir(QFileInfo(pipe).path()).entryList(QDir::Files | QDir::System), QStringList(QStringLiteral("lonely")));
}

void TstLuxcliPipe::aNamedPipeGetsAllWhenItsReaderComes()
{
    const FileFolder folder;
    const QString pipe = folder.path(QStringLiteral("late"));
    QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    const luxcliRun::Outcome outcome = luxcliRun::run(
        QStringLiteral("sh"),
        {QStringLiteral("-c"),
         QStringLiteral("\"$1\" decode \"$2\" -a UART:rx=0,baudrate=100000 -o \"$3\" & sleep 0.3; cat \"$3\"; wait $!"),
         QStringLiteral("sh"), QStringLiteral(LUXCLI), m_capture, pipe});
    QCOMPARE(outcome.code, 0);
    QCOMPARE(outcome.out, luxcliRun::luxcli("decode %1 -a UART:rx=0,baudrate=100000", m_capture).out);
}

#else

void TstLuxcliPipe::initTestCase()
{
    QSKIP("needs pipes with names");
}
void TstLuxcliPipe::cleanupTestCase() {}
void TstLuxcliPipe::start(const char * /*arguments*/) {}
bool TstLuxcliPipe::hasWritten() const
{
    return false;
}
void TstLuxcliPipe::aSignalEndsTheProgramWhileNobodyReads_data() {}
void TstLuxcliPipe::aSignalEndsTheProgramWhileNobodyReads() {}
void TstLuxcliPipe::aReaderThatComesLateGetsAll() {}
void TstLuxcliPipe::aSignalEndsTheWaitForAReader_data() {}
void TstLuxcliPipe::aSignalEndsTheWaitForAReader() {}
void TstLuxcliPipe::aNamedPipeGetsAllWhenItsReaderComes() {}

#endif

QTEST_GUILESS_MAIN(TstLuxcliPipe)
#include "tst_LuxcliPipe.moc"
