#include "settings/FileReplacement.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QtTest>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#include <unistd.h>
#endif

class TstFileReplacement : public QObject {
    Q_OBJECT
private slots:
    void init();

    void theTargetIsWholeOrAsItWas();
    void whatIsNotFinishedLeavesNothing();
    void aPartTakesTheNameOnlyWhereThereIsNone();
    void anEmptyPartIsNotKept();
    void theModeOfTheEarlierFileIsKept();
    void aNewFileHasTheModeOfAnyNewFile();
    void aLinkStaysAndItsTargetIsReplaced();
    void aLinkToNothingStaysAndItsTargetIsMade();
    void aRingOfLinksIsRefused();
    void aProtectedFileIsNotReplaced();
    void aFolderThatTakesNoNewFileIsRefused();
    void whatIsNoPlainFileIsRefused_data();
    void whatIsNoPlainFileIsRefused();
    void aNameWithoutAFolderIsRefused_data();
    void aNameWithoutAFolderIsRefused();
    void aNameOfFullLengthCanBeWritten();
    void aPartThatWasLeftBehindIsSteppedOver();
    void aFullDiskIsTold();

private:
    [[nodiscard]] QString path(const char *name) const { return m_dir->filePath(QLatin1String(name)); }
    static void write(const QString &path, const QByteArray &bytes)
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        QCOMPARE(file.write(bytes), qint64(bytes.size()));
    }
    static QByteArray read(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(none)");
    }
    [[nodiscard]] int files() const
    {
        return QDir(m_dir->path())
            .entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System)
            .size();
    }

    std::unique_ptr<QTemporaryDir> m_dir;
};

void TstFileReplacement::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
}

void TstFileReplacement::theTargetIsWholeOrAsItWas()
{
    write(path("a"), "old");
    FileReplacement target(path("a"));
    QCOMPARE(target.partPath(), QString());
    QCOMPARE(target.begin(), WriteFault::None);
    QCOMPARE(QFileInfo(target.partPath()).absolutePath(), m_dir->path());
    QCOMPARE(read(path("a")), QByteArray("old"));
    write(target.partPath(), "new");
    QCOMPARE(read(path("a")), QByteArray("old"));
    QCOMPARE(target.finish(), WriteFault::None);
    QCOMPARE(read(path("a")), QByteArray("new"));
    QCOMPARE(files(), 1);
}

void TstFileReplacement::whatIsNotFinishedLeavesNothing()
{
    write(path("a"), "old");
    {
        FileReplacement target(path("a"));
        QCOMPARE(target.begin(), WriteFault::None);
        write(target.partPath(), "new");
        QCOMPARE(files(), 2);
    }
    QCOMPARE(read(path("a")), QByteArray("old"));
    QCOMPARE(files(), 1);
}

void TstFileReplacement::aPartTakesTheNameOnlyWhereThereIsNone()
{
    for (const bool there : {false, true}) {
        if (there) {
            write(path("a"), "old");
        }
        FileReplacement target(path("a"));
        QCOMPARE(target.begin(), WriteFault::None);
        write(target.partPath(), "half");
        target.keepPart();
        QCOMPARE(read(path("a")), there ? QByteArray("old") : QByteArray("half"));
        QCOMPARE(files(), 1);
    }
}

void TstFileReplacement::anEmptyPartIsNotKept()
{
    FileReplacement target(path("a"));
    QCOMPARE(target.begin(), WriteFault::None);
    target.keepPart();
    QCOMPARE(files(), 0);
}

void TstFileReplacement::theModeOfTheEarlierFileIsKept()
{
    write(path("a"), "old");
    const QFile::Permissions own = QFile::ReadOwner | QFile::WriteOwner;
    for (const QFile::Permissions more :
         {QFile::Permissions(), QFile::ReadGroup | QFile::ReadOther | QFile::ExeOwner}) {
        QVERIFY(QFile::setPermissions(path("a"), own | more));
        const QFile::Permissions before = QFile::permissions(path("a"));
        QCOMPARE(replaceTextFile(path("a"), "new"), WriteFault::None);
        QCOMPARE(QFile::permissions(path("a")), before);
    }
}

void TstFileReplacement::aNewFileHasTheModeOfAnyNewFile()
{
    write(path("any"), "x");
    QCOMPARE(replaceTextFile(path("a"), "x"), WriteFault::None);
    QCOMPARE(QFile::permissions(path("a")), QFile::permissions(path("any")));
}

void TstFileReplacement::aLinkStaysAndItsTargetIsReplaced()
{
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("there")));
    write(path("there/a"), "old");
    QVERIFY(QFile::link(path("there/a"), path("first.lnk")));
    QVERIFY(QFile::link(path("first.lnk"), path("second.lnk")));
    QCOMPARE(replaceTextFile(path("second.lnk"), "new"), WriteFault::None);
    QVERIFY(QFileInfo(path("second.lnk")).isSymLink() && QFileInfo(path("first.lnk")).isSymLink());
    QVERIFY(!QFileInfo(path("there/a")).isSymLink());
    QCOMPARE(read(path("there/a")), QByteArray("new"));
}

void TstFileReplacement::aLinkToNothingStaysAndItsTargetIsMade()
{
    QVERIFY(QFile::link(path("a"), path("a.lnk")));
    QCOMPARE(replaceTextFile(path("a.lnk"), "new"), WriteFault::None);
    QVERIFY(QFileInfo(path("a.lnk")).isSymLink());
    QCOMPARE(read(path("a")), QByteArray("new"));
}

void TstFileReplacement::aRingOfLinksIsRefused()
{
    QVERIFY(QFile::link(path("b.lnk"), path("a.lnk")));
    QVERIFY(QFile::link(path("a.lnk"), path("b.lnk")));
    QCOMPARE(replaceTextFile(path("a.lnk"), "new"), WriteFault::NotPlain);
    QVERIFY(QFileInfo(path("a.lnk")).isSymLink());
    QCOMPARE(files(), 2);
}

void TstFileReplacement::aProtectedFileIsNotReplaced()
{
    write(path("a"), "old");
    QVERIFY(QFile::setPermissions(path("a"), QFile::ReadOwner));
    if (QFileInfo(path("a")).isWritable()) {
        QSKIP("permissions do not bind this user");
    }
    QCOMPARE(replaceTextFile(path("a"), "new"), WriteFault::NoRights);
    QCOMPARE(read(path("a")), QByteArray("old"));
    QCOMPARE(files(), 1);
}

void TstFileReplacement::aFolderThatTakesNoNewFileIsRefused()
{
    const QString noPlace = QStringLiteral("/proc/self"); // where not even the administrator makes a file
    if (!QFileInfo(noPlace).isDir()) {
        QSKIP("this system has no such folder");
    }
    FileReplacement target(noPlace + QStringLiteral("/lux.cxset"));
    const WriteFault fault = target.begin();
    QVERIFY(fault == WriteFault::NoRights || fault == WriteFault::NoFolder);
    QCOMPARE(target.partPath(), QString());

    write(path("a"), "old");
    QVERIFY(QFile::setPermissions(m_dir->path(), QFile::ReadOwner | QFile::ExeOwner));
    if (!QFileInfo(m_dir->path()).isWritable()) {
        QCOMPARE(replaceTextFile(path("a"), "new"), WriteFault::NoRights);
        QCOMPARE(read(path("a")), QByteArray("old"));
    }
    QVERIFY(QFile::setPermissions(m_dir->path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
}

void TstFileReplacement::whatIsNoPlainFileIsRefused_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("folder") << QStringLiteral("folder");
#ifdef Q_OS_UNIX
    QTest::newRow("pipe") << QStringLiteral("pipe");
    QTest::newRow("device") << QStringLiteral("device");
    QTest::newRow("link to a device") << QStringLiteral("link");
#endif
}

void TstFileReplacement::whatIsNoPlainFileIsRefused()
{
    QFETCH(QString, kind);
    QString target = path("a");
    if (kind == QStringLiteral("folder")) {
        QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("a")));
#ifdef Q_OS_UNIX
    } else if (kind == QStringLiteral("pipe")) {
        QCOMPARE(mkfifo(QFile::encodeName(target).constData(), 0600), 0);
#endif
    } else if (kind == QStringLiteral("link")) {
        QVERIFY(QFile::link(QStringLiteral("/dev/null"), target));
    } else {
        target = QStringLiteral("/dev/null");
    }
    const int before = files();
    QCOMPARE(replaceTextFile(target, "new"), WriteFault::NotPlain);
    QVERIFY(!QFileInfo(target).isFile());
    QCOMPARE(files(), before);
}

void TstFileReplacement::aNameWithoutAFolderIsRefused_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("none") << QString();
    QTest::newRow("absent") << QStringLiteral("absent/a");
    QTest::newRow("file") << QStringLiteral("file/a");
    QTest::newRow("empty name") << QStringLiteral("absent/");
}

void TstFileReplacement::aNameWithoutAFolderIsRefused()
{
    QFETCH(QString, name);
    write(path("file"), "x");
    QCOMPARE(replaceTextFile(name.isEmpty() ? name : m_dir->filePath(name), "new"), WriteFault::NoFolder);
}

void TstFileReplacement::aNameOfFullLengthCanBeWritten()
{
    const QString longest = m_dir->filePath(QString(QChar(0xE4)).repeated(127)); // two bytes each
    QCOMPARE(replaceTextFile(longest, "new"), WriteFault::None);
    QCOMPARE(read(longest), QByteArray("new"));
    QCOMPARE(files(), 1);
}

void TstFileReplacement::aPartThatWasLeftBehindIsSteppedOver()
{
    QString left;
    {
        FileReplacement killed(path("a"));
        QCOMPARE(killed.begin(), WriteFault::None);
        left = killed.partPath();
    }
    write(left, "left");
    QCOMPARE(replaceTextFile(path("a"), "new"), WriteFault::None);
    QCOMPARE(read(path("a")), QByteArray("new"));
    QCOMPARE(read(left), QByteArray("left"));
}

void TstFileReplacement::aFullDiskIsTold()
{
    QFile full(QStringLiteral("/dev/full"));
    if (!full.open(QIODevice::WriteOnly)) {
        QSKIP("this system has no full device");
    }
    full.write("x");
    QCOMPARE(syncToDisk(full), WriteFault::DiskFull);
}

QTEST_GUILESS_MAIN(TstFileReplacement)
#include "tst_FileReplacement.moc"
