#include "analyzer/AnalyzerManager.h"
#include "analyzer/MadeResults.h"
#include "files/FileSizeLimit.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <atomic>
#include <memory>
#include <thread>

#ifdef Q_OS_UNIX
#include <sys/syscall.h>
#include <unistd.h>

namespace {

std::atomic<bool> isDiskHeld{false}; // a file that takes over the rights of an earlier one is not made meanwhile
std::atomic<bool> isDiskReached{false};

} // namespace

/// The system's, in this program.
extern "C" int fchown(int file, uid_t owner, gid_t group) noexcept
{
    isDiskReached = true;
    while (isDiskHeld) {
        std::this_thread::yield();
    }
    return int(syscall(SYS_fchown, file, owner, group));
}
#endif

namespace {

constexpr int patience = 120000; // ms, of a busy machine

/// A manager without plug-ins that exports made-up results into a folder of its own.
class ExportDesk {
public:
    ExportDesk() { results.row(1000, 0, 10); }

    [[nodiscard]] QString path(const char *name) const { return folder.filePath(QString::fromLatin1(name)); }
    bool run(const QString &target)
    {
        manager.startExport(&results, target, int(DisplayBase::Decimal), 0);
        return wait();
    }
    bool wait()
    {
        return QTest::qWaitFor([this] { return !manager.isExporting(); }, patience);
    }
    [[nodiscard]] QByteArray read(const char *name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
    }
    void put(const char *name, const QByteArray &bytes) const
    {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    [[nodiscard]] QStringList files() const { return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden); }

    QTemporaryDir folder;
    AnalyzerManager manager{AnalyzerHost{}, QStringList(), QString()};
    MadeResults results{'A'};
};

/// Results whose writing is held up at its first frame.
class HeldResults : public MadeResults {
public:
    using MadeResults::MadeResults;
    void describe(const FrameData &frame, lux::FrameText &out) const override
    {
        reached.store(true);
        while (held.load()) {
            std::this_thread::yield();
        }
        MadeResults::describe(frame, out);
    }
    mutable std::atomic<bool> reached{false};
    std::atomic<bool> held{true};
};

/// Lets an export go on as soon as a change of results waits for it; earlier it could come to its end before.
/// @param gate  that of the export
std::thread releaseWhenWanted(HeldResults &held, const ResultsGate &gate)
{
    return std::thread([&] {
        while (!gate.isWanted()) {
            std::this_thread::yield();
        }
        held.held = false;
    });
}

} // namespace

/// The thread that writes decoded results into a file.
class TstExportDataProMng : public QObject {
    Q_OBJECT
private slots:
    void aTextHasOneLineAFrame();
    void theEndingOfTheNameMakesItCsv();
    void aFormatThatIsNoneIsHexadecimal();
    void aNameWithoutEndingIsWrittenToo();
    void anEarlierFileIsReplacedWhenTheNewOneIsWhole();
    void aNameBeyondLatinIsWritten();
    void progressIsOneWithoutAnExport();
    void aCancelledExportLeavesNoFile();
    void aCancelledExportLeavesTheEarlierFile();
    void anExportEndsWhenItsResultsAreReplaced();
    void aDiskThatHangsHoldsUpNoCapture();
    void onlyOneExportRunsAtATime();
    void aTargetThatCannotBeWrittenIsTold_data();
    void aTargetThatCannotBeWrittenIsTold();
    void aFullDiskIsToldAndLeavesTheEarlierFile();
    void aDecoderThatThrowsIsTold();
    void theManagerMayGoDuringAnExport();
};

void TstExportDataProMng::aTextHasOneLineAFrame()
{
    ExportDesk desk;
    QVERIFY(desk.run(desk.path("frames.txt")));
    QVERIFY(desk.manager.exportOutcome().isDone());
    const QList<QByteArray> lines = desk.read("frames.txt").trimmed().split('\n');
    QCOMPARE(lines.size(), 1000);
    QVERIFY(lines.at(999).endsWith("\tA999"));
    QCOMPARE(desk.files(), QStringList{QStringLiteral("frames.txt")});
}

void TstExportDataProMng::theEndingOfTheNameMakesItCsv()
{
    ExportDesk desk;
    QVERIFY(desk.run(desk.path("frames.CSV")));
    QVERIFY(desk.read("frames.CSV").startsWith("time_s,first_sample,last_sample,kind,text\n"));
    QCOMPARE(desk.read("frames.CSV").count('\n'), 1001);
}

void TstExportDataProMng::aFormatThatIsNoneIsHexadecimal()
{
    ExportDesk desk;
    BaseResults results;
    for (const auto &[format, text] :
         {std::pair(1, "\tbase 1\n"), std::pair(-5, "\tbase 2\n"), std::pair(77, "\tbase 2\n")}) {
        desk.manager.startExport(&results, desk.path("base.txt"), format, 0);
        QVERIFY(desk.wait());
        QVERIFY2(desk.read("base.txt").endsWith(text), desk.read("base.txt").constData());
    }
}

void TstExportDataProMng::aNameWithoutEndingIsWrittenToo()
{
    ExportDesk desk;
    QVERIFY(desk.run(desk.path("frames")));
    QCOMPARE(desk.read("frames").count('\n'), 1000);
}

void TstExportDataProMng::anEarlierFileIsReplacedWhenTheNewOneIsWhole()
{
    ExportDesk desk;
    desk.put("frames.txt", "before");
    QVERIFY(desk.run(desk.path("frames.txt")));
    QCOMPARE(desk.read("frames.txt").count('\n'), 1000);
}

void TstExportDataProMng::aNameBeyondLatinIsWritten()
{
    ExportDesk desk;
    const QString path = desk.folder.filePath(QStringLiteral("解码 結果 ü.txt"));
    QVERIFY(desk.run(path));
    QVERIFY(desk.manager.exportOutcome().isDone());
    QVERIFY(QFile::exists(path));
    QCOMPARE(desk.files().size(), 1);
}

void TstExportDataProMng::progressIsOneWithoutAnExport()
{
    const ExportDesk desk;
    QCOMPARE(desk.manager.exportProgress(), 1.0);
}

void TstExportDataProMng::aCancelledExportLeavesNoFile()
{
    ExportDesk desk;
    HeldResults held('A');
    held.row(5000, 0, 10);
    desk.manager.startExport(&held, desk.path("frames.txt"), 1, 0);
    QTRY_VERIFY(held.reached.load());
    desk.manager.cancelExport();
    held.held = false;
    QVERIFY(desk.wait());
    QVERIFY(desk.manager.exportOutcome().cancelled);
    QVERIFY(held.texts < 10);
    QCOMPARE(desk.files(), QStringList());
}

void TstExportDataProMng::aCancelledExportLeavesTheEarlierFile()
{
    ExportDesk desk;
    desk.put("frames.txt", "before");
    HeldResults held('A');
    held.row(5000, 0, 10);
    desk.manager.startExport(&held, desk.path("frames.txt"), 1, 0);
    QTRY_VERIFY(held.reached.load());
    desk.manager.cancelExport();
    held.held = false;
    QVERIFY(desk.wait());
    QCOMPARE(desk.read("frames.txt"), QByteArray("before"));
    QCOMPARE(desk.files().size(), 1);
    QVERIFY(desk.run(desk.path("frames.txt"))); // the next one is not cancelled
    QVERIFY(desk.manager.exportOutcome().isDone());
}

void TstExportDataProMng::anExportEndsWhenItsResultsAreReplaced()
{
    ExportDesk desk;
    HeldResults held('A');
    held.row(5000, 0, 10);
    desk.manager.startExport(&held, desk.path("frames.txt"), 1, 0);
    QTRY_VERIFY(held.reached.load());
    std::thread later = releaseWhenWanted(held, desk.manager.gate());
    desk.manager.captureStarts(); // waits for all readers of results
    later.join();
    QVERIFY(desk.wait());
    QVERIFY(desk.manager.exportOutcome().cancelled);
    QCOMPARE(desk.files(), QStringList());
}

void TstExportDataProMng::aDiskThatHangsHoldsUpNoCapture()
{
#ifdef Q_OS_UNIX
    constexpr int longest = 2000; // ms, of who would wait for the disk
    ExportDesk desk;
    desk.put("frames.txt", "before");
    auto results = std::make_unique<MadeResults>('A');
    results->row(10, 0, 10);
    isDiskHeld = true;
    isDiskReached = false;
    desk.manager.startExport(results.get(), desk.path("frames.txt"), 1, 0);
    QTRY_VERIFY(isDiskReached);
    std::atomic<bool> isThrough{false};
    bool isHeldUp = false;
    std::thread watch([&] {
        for (int ms = 0; ms < longest && !isThrough; ++ms) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        isHeldUp = !isThrough;
        if (isHeldUp) {
            isDiskHeld = false;
        }
    });
    desk.manager.captureStarts();
    isThrough = true;
    watch.join();
    QVERIFY(!isHeldUp);
    results.reset();
    QVERIFY(desk.manager.isExporting()); // the file is still to be removed
    QCOMPARE(desk.manager.exportProgress(), 1.0);
    desk.manager.cancelExport();
    isDiskHeld = false;
    QVERIFY(desk.wait());
    QVERIFY(desk.manager.exportOutcome().cancelled);
    QCOMPARE(desk.read("frames.txt"), QByteArray("before"));
    QCOMPARE(desk.files().size(), 1);
#endif
}

void TstExportDataProMng::onlyOneExportRunsAtATime()
{
    ExportDesk desk;
    HeldResults held('A');
    held.row(10, 0, 10);
    desk.manager.startExport(&held, desk.path("one.txt"), 1, 0);
    desk.manager.startExport(&desk.results, desk.path("two.txt"), 1, 0);
    held.held = false;
    QVERIFY(desk.wait());
    QCOMPARE(desk.files(), QStringList{QStringLiteral("one.txt")});
}

void TstExportDataProMng::aTargetThatCannotBeWrittenIsTold_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("fault");
    QTest::newRow("no folder") << QStringLiteral("nowhere/frames.txt") << int(WriteFault::NoFolder);
    QTest::newRow("a folder") << QStringLiteral("folder") << int(WriteFault::NotPlain);
    QTest::newRow("no name") << QString() << int(WriteFault::NotPlain);
}

void TstExportDataProMng::aTargetThatCannotBeWrittenIsTold()
{
    QFETCH(QString, name);
    QFETCH(int, fault);
    ExportDesk desk;
    QVERIFY(QDir(desk.folder.path()).mkdir(QStringLiteral("folder")));
    QVERIFY(desk.run(desk.folder.path() + QLatin1Char('/') + name));
    QCOMPARE(int(desk.manager.exportOutcome().fault), fault);
    QVERIFY(!desk.manager.exportOutcome().isDone());
    QCOMPARE(desk.files(), QStringList());
}

void TstExportDataProMng::aFullDiskIsToldAndLeavesTheEarlierFile()
{
#ifdef Q_OS_UNIX
    ExportDesk desk;
    desk.put("frames.txt", "before");
    {
        const FileSizeLimit full(4096);
        QVERIFY(desk.run(desk.path("frames.txt")));
    }
    QCOMPARE(int(desk.manager.exportOutcome().fault), int(WriteFault::DiskFull));
    QCOMPARE(desk.read("frames.txt"), QByteArray("before"));
    QCOMPARE(desk.files().size(), 1);
#endif
}

void TstExportDataProMng::aDecoderThatThrowsIsTold()
{
    ExportDesk desk;
    desk.results.frame(20000, 20001, false, true);
    QVERIFY(desk.run(desk.path("frames.txt")));
    QCOMPARE(int(desk.manager.exportOutcome().fault), int(WriteFault::Other));
    QCOMPARE(desk.manager.exportOutcome().words, QStringLiteral("no text"));
    QCOMPARE(desk.files(), QStringList());
}

void TstExportDataProMng::theManagerMayGoDuringAnExport()
{
    HeldResults held('A');
    held.row(5000, 0, 10);
    QTemporaryDir folder;
    auto manager = std::make_unique<AnalyzerManager>(AnalyzerHost{}, QStringList(), QString());
    manager->startExport(&held, folder.filePath(QStringLiteral("frames.txt")), 1, 0);
    QTRY_VERIFY(held.reached.load());
    std::thread later = releaseWhenWanted(held, manager->gate());
    manager.reset();
    later.join();
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files).size(), 0);
}

QTEST_GUILESS_MAIN(TstExportDataProMng)
#include "tst_ExportDataProMng.moc"
