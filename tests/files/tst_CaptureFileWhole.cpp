#include "files/CaptureFile.h"
#include "files/DataFileBytes.h"
#include "files/FileSizeLimit.h"
#include "settings/Config.h"
#include "store/MemBudget.h"

#include <QDir>
#include <QStandardPaths>
#include <QTest>

#include <functional>
#include <random>

#ifdef Q_OS_UNIX
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace {

/// Whatever ends a save or an export, an earlier file stays, or the new one is whole.
enum Job { Save, Text, Binary, Settings, Config };
constexpr const char *jobNames[] = {"save", "text", "binary", "settings", "config"};

ConfigDocument someSettings()
{
    return ConfigDocument::parse("<settings><global><devModel>1</devModel></global><devices/><analyzers/></settings>")
        .value();
}

void addJobs()
{
    QTest::addColumn<int>("job");
    for (int job = Save; job <= Config; ++job) {
        QTest::newRow(jobNames[job]) << job;
    }
}

#ifdef Q_OS_UNIX
/// Runs `act` in a process of its own. @return true if it was killed before its end
bool runsIntoItsDeath(const std::function<void()> &act)
{
    const pid_t child = fork();
    if (child == 0) {
        const rlimit noCore{0, 0};
        setrlimit(RLIMIT_CORE, &noCore);
        act();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFSIGNALED(status);
}
#endif

} // namespace

class TstCaptureFileWhole : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void init();

    void killedAtAnyByteItLeavesTheEarlierFile_data() { addJobs(); }
    void killedAtAnyByteItLeavesTheEarlierFile();
    void killedAtAnyMomentItLeavesOneOfTheTwo_data() { addJobs(); }
    void killedAtAnyMomentItLeavesOneOfTheTwo();
    void aDiskThatIsFullAnywhereLeavesTheEarlierFile_data() { addJobs(); }
    void aDiskThatIsFullAnywhereLeavesTheEarlierFile();
    void aDiskThatIsFullLeavesThePartWhereThereWasNone();
    void aCancelAtAnyPieceLeavesTheEarlierFile_data();
    void aCancelAtAnyPieceLeavesTheEarlierFile();
    void aCancelledSaveOfANewNameOpensWithWhatItHolds();
    void aCancelledSaveLeavesNothingWhereNoPartIsWanted();

private:
    [[nodiscard]] FileOutcome run(int job, const std::function<bool()> &mayGoOn = {});
    [[nodiscard]] QByteArray target() const { return m_folder.read(QStringLiteral("target")); }
    [[nodiscard]] int files() const
    {
        return QDir(m_folder.path(QStringLiteral("."))).entryList(QDir::Files | QDir::Hidden).size();
    }
    /// The earlier file lies there, and what the job is to write is known.
    void prepare(int job);

    FileFolder m_folder;
    std::unique_ptr<SmpData> m_data;
    const QByteArray m_old{"the earlier file"};
    QByteArray m_new;
};

void TstCaptureFileWhole::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    memBudget = std::int64_t(4) << 30;
    configLoad();
    globalSet(QStringLiteral("k"), QString(300'000, QLatin1Char('k'))); // so that "config" has some pieces, too
    // As many entries as are written at once on this thread.
    CaptureBuilder capture(8);
    capture.samples(1'000'000);
    for (const int chn : {0, 3, 5}) {
        capture.channel(chn, 0, stairs(1 + chn, 4, 240'000));
    }
    m_data = capture.build();
}

void TstCaptureFileWhole::init()
{
    QDir folder(m_folder.path(QStringLiteral(".")));
    for (const QString &name : folder.entryList(QDir::Files | QDir::Hidden)) {
        QVERIFY(folder.remove(name));
    }
}

FileOutcome TstCaptureFileWhole::run(int job, const std::function<bool()> &mayGoOn)
{
    CaptureFile file([](const ConfigDocument &) { return 8; });
    file.mayGoOn = mayGoOn;
    const QString path = m_folder.path(QStringLiteral("target"));
    CapturePart part{std::vector<std::uint8_t>(8, 1), 0, double(m_data->smpCount())};
    switch (job) {
    case Save:
        return file.save(path, *m_data, part, someSettings());
    case Text:
        part.end = 200'000; // a text takes more room
        return file.exportTo(path, *m_data, part, ExportKind::Text);
    case Binary:
        return file.exportTo(path, *m_data, part, ExportKind::Binary);
    case Settings:
        return CaptureFile::saveSettings(path, someSettings());
    default:
        return {configSave(path) ? FileResult::Done : FileResult::Failed};
    }
}

void TstCaptureFileWhole::prepare(int job)
{
    QVERIFY(run(job).isDone());
    m_new = target();
    QVERIFY(m_new.size() > 100);
    QVERIFY(!m_folder.write(m_old, QStringLiteral("target")).isEmpty());
    QCOMPARE(files(), 1);
}

void TstCaptureFileWhole::killedAtAnyByteItLeavesTheEarlierFile()
{
#ifdef Q_OS_UNIX
    QFETCH(int, job);
    prepare(job);
    std::mt19937 random(std::uint32_t(job) + 1);
    for (int i = 0; i < 50; ++i) {
        const auto byte = rlim_t(random() % unsigned(m_new.size()));
        QVERIFY(runsIntoItsDeath([&] {
            const rlimit limit{byte, RLIM_INFINITY}; // its signal is not ignored here, and ends the process there
            setrlimit(RLIMIT_FSIZE, &limit);
            static_cast<void>(run(job));
        }));
        QCOMPARE(target(), m_old);
    }
    QVERIFY(run(job).isDone()); // the parts that were left behind are in nobody's way
    QCOMPARE(target(), m_new);
#else
    QSKIP("needs a limit on the size of files");
#endif
}

void TstCaptureFileWhole::killedAtAnyMomentItLeavesOneOfTheTwo()
{
#ifdef Q_OS_UNIX
    QFETCH(int, job);
    prepare(job);
    std::mt19937 random(std::uint32_t(job) + 100);
    int killed = 0;
    unsigned range = 4'000; // us of its life
    const int times = job == Save ? 200 : 40;
    for (int i = 0; i < times; ++i) {
        QVERIFY(!m_folder.write(m_old, QStringLiteral("target")).isEmpty());
        const auto moment = suseconds_t(1 + random() % range);
        const bool died = runsIntoItsDeath([&] {
            const itimerval death{{0, 0}, {0, moment}};
            setitimer(ITIMER_REAL, &death, nullptr);
            static_cast<void>(run(job));
        });
        killed += died ? 1 : 0;
        // How long a run takes is the disk's affair: the moments follow it, so that some come behind the end.
        range = died ? range + range / 4 : range / 2 + 1;
        QVERIFY(target() == m_new || (died && target() == m_old));
    }
    QVERIFY(killed > 0 && killed < times);
#else
    QSKIP("needs processes of its own");
#endif
}

void TstCaptureFileWhole::aDiskThatIsFullAnywhereLeavesTheEarlierFile()
{
#ifdef Q_OS_UNIX
    QFETCH(int, job);
    prepare(job);
    for (int room = 0; room < m_new.size(); room += 65'536) {
        FileOutcome outcome;
        {
            const FileSizeLimit limit(room);
            outcome = run(job);
        }
        QVERIFY(!outcome.isDone());
        QCOMPARE(target(), m_old);
        QCOMPARE(files(), 1);
    }
    const FileSizeLimit enough(m_new.size());
    QVERIFY(run(job).isDone());
    QCOMPARE(target(), m_new);
#else
    QSKIP("needs a limit on the size of files");
#endif
}

void TstCaptureFileWhole::aDiskThatIsFullLeavesThePartWhereThereWasNone()
{
#ifdef Q_OS_UNIX
    prepare(Save);
    QVERIFY(QFile::remove(m_folder.path(QStringLiteral("target"))));
    for (const int room : {0, 200'000}) {
        {
            const FileSizeLimit limit(room);
            QVERIFY(!run(Save).isDone());
        }
        QCOMPARE(target(), m_new.left(room));
        QCOMPARE(files(), room == 0 ? 0 : 1); // nothing is worth no file
    }
#endif
}

void TstCaptureFileWhole::aCancelAtAnyPieceLeavesTheEarlierFile_data()
{
    QTest::addColumn<int>("job");
    for (const int job : {Save, Text, Binary}) {
        QTest::newRow(jobNames[job]) << job;
    }
}

void TstCaptureFileWhole::aCancelAtAnyPieceLeavesTheEarlierFile()
{
    QFETCH(int, job);
    prepare(job);
    int pieces = 0;
    QVERIFY(run(job, [&pieces] {
                ++pieces;
                return true;
            }).isDone());
    QVERIFY(pieces > 4);
    for (int piece = 0; piece < pieces; ++piece) {
        QVERIFY(!m_folder.write(m_old, QStringLiteral("target")).isEmpty());
        int left = piece;
        QCOMPARE(run(job, [&left] { return left-- > 0; }).result, FileResult::Cancelled);
        QCOMPARE(target(), m_old);
        QCOMPARE(files(), 1);
    }
}

void TstCaptureFileWhole::aCancelledSaveOfANewNameOpensWithWhatItHolds()
{
    int left = 8; // the first channel takes six pieces
    QCOMPARE(run(Save, [&left] { return left-- > 0; }).result, FileResult::Cancelled);
    const QString path = m_folder.path(QStringLiteral("part.cxdat"));
    QVERIFY(QFile::rename(m_folder.path(QStringLiteral("target")), path));
    const OpenedCapture opened = CaptureFile([](const ConfigDocument &) { return 8; }).open(path);
    QVERIFY(opened.outcome.isDone() && opened.outcome.cut);
    QCOMPARE(opened.outcome.missing, (std::vector<int>{3, 5}));
    QCOMPARE(opened.capture->entryCount(0), 240'001);
    QCOMPARE(opened.capture->entryCount(3), 0);
}

void TstCaptureFileWhole::aCancelledSaveLeavesNothingWhereNoPartIsWanted()
{
    CaptureFile file([](const ConfigDocument &) { return 8; });
    int left = 8;
    file.mayGoOn = [&left] { return left-- > 0; };
    file.keepsPart = false;
    const CapturePart part{std::vector<std::uint8_t>(8, 1), 0, double(m_data->smpCount())};
    const FileOutcome outcome = file.save(m_folder.path(QStringLiteral("target")), *m_data, part, someSettings());
    QCOMPARE(outcome.result, FileResult::Cancelled);
    QCOMPARE(files(), 0);
}

QTEST_GUILESS_MAIN(TstCaptureFileWhole)
#include "tst_CaptureFileWhole.moc"
