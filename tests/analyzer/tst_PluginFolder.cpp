#include "analyzer/AnalyzerManager.h"
#include "analyzer/PluginFolder.h"
#include "analyzer/PluginGuard.h"
#include "settings/Config.h"

#include <QDir>
#include <QFile>
#include <QLockFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

namespace {

QString folderOf(const char *plugin)
{
    return QStringLiteral(LUX_TEST_PLUGINS "/") + QString::fromLatin1(plugin);
}

#if defined(Q_OS_WIN)
const QString suffix = QStringLiteral(".dll");
#elif defined(Q_OS_MACOS)
const QString suffix = QStringLiteral(".dylib");
#else
const QString suffix = QStringLiteral(".so");
#endif

/// What the guards that live in a folder try at present, in any order.
QStringList triedIn(const QString &guardFolder)
{
    QStringList names;
    const QDir folder(guardFolder);
    for (const QString &trying : folder.entryList({QStringLiteral("*.trying")}, QDir::Files)) {
        QFile file(folder.filePath(trying));
        if (file.open(QIODevice::ReadOnly)) {
            names.append(QString::fromUtf8(file.readAll()).section(QLatin1Char('\t'), 0, 0));
        }
    }
    names.removeAll(QString());
    names.sort();
    return names;
}

/// Leaves the lock of this process in a file, as one that dies at once does.
void leaveLock(const QString &path)
{
    QLockFile lock(path);
    QVERIFY(lock.tryLock(0));
    QFile locked(path);
    QVERIFY(locked.open(QIODevice::ReadOnly));
    const QByteArray owner = locked.readAll();
    locked.close();
    lock.unlock();
    QVERIFY(locked.open(QIODevice::WriteOnly));
    locked.write(owner);
    locked.close();
    QTest::qSleep(20); // no program starts again within the clock's step
}

} // namespace

class TstPluginFolder : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void aFileThatLacksAnEntryPointGivesNoEntry_data();
    void aFileThatLacksAnEntryPointGivesNoEntry();
    void aFileThatIsNoLibraryGivesNoEntry();
    void aPluginWithoutAListOfModelsIsOfferedForEveryModel();
    void emptyPartsOfTheListOfModelsAreLeftOut_data();
    void emptyPartsOfTheListOfModelsAreLeftOut();
    void namesAreStoredWithTheSuffixOfOneSystem();
    void aSuffixInCapitalsIsOneWhereFileNamesKnowNoCase();
    void aFileWhoseNameCannotBeStoredIsRefused_data();
    void aFileWhoseNameCannotBeStoredIsRefused();
    void aNameThatTheFirstFolderHasWins();
    void aPluginThatThrowsWhenItIsAskedIsLeftOut_data();
    void aPluginThatThrowsWhenItIsAskedIsLeftOut();
    void onlyTheProgramsOwnFolderAndTheUsersAreLookedInto();
    void nothingIsLoadedFromWhereOthersMayWrite();
    void aPluginWithWhichTheProgramDiedIsPassedOverUntilItIsRetried_data();
    void aPluginWithWhichTheProgramDiedIsPassedOverUntilItIsRetried();
    void aGuardWithoutAFolderRemembersAndWritesNothing();
    void aChangedFileIsTriedAgain();
    void aProcessThatLivesIsNoCulprit();
    void aDeadProcessIsACulpritThoughItsIdIsInUseAgain();
    void guardsOfOneProcessLeaveEachOthersNamesAlone();
    void aGuardThatIsGoneLeavesNoFileBehind();

private:
    [[nodiscard]] QString copied(const char *plugin, const QString &folder, const QString &name = {}) const;

    QTemporaryDir m_dir;
};

void TstPluginFolder::initTestCase()
{
    // The test is its own victim: see aPluginWithWhichTheProgramDied...
    const QByteArray victim = qgetenv("LUX_TEST_VICTIM");
    if (!victim.isEmpty()) {
        qputenv("LUX_TEST_DIE", "1");
        AnalyzerManager manager({}, {QString::fromUtf8(victim)}, QString::fromUtf8(qgetenv("LUX_TEST_GUARD")));
        (void)manager.createAnalyzer(0);
        QFAIL("the plug-in did not end the process");
    }
    QVERIFY(m_dir.isValid());
}

void TstPluginFolder::init()
{
    QDir(m_dir.path()).removeRecursively();
    QVERIFY(QDir().mkpath(m_dir.path()));
}

QString TstPluginFolder::copied(const char *plugin, const QString &folder, const QString &name) const
{
    const QString target = m_dir.filePath(folder);
    QDir().mkpath(target);
    const QString from = folderOf(plugin) + QLatin1Char('/') + QString::fromLatin1(plugin) + suffix;
    const QString file = name.isEmpty() ? QString::fromLatin1(plugin) : name;
    QFile::copy(from, target + QLatin1Char('/') + file + suffix);
    return target;
}

void TstPluginFolder::aFileThatLacksAnEntryPointGivesNoEntry_data()
{
    QTest::addColumn<QString>("plugin");
    QTest::newRow("all but CreateAnalyzer") << QStringLiteral("bare");
    QTest::newRow("CreateAnalyzer") << QStringLiteral("lacks-create");
    QTest::newRow("DestroyAnalyzer") << QStringLiteral("lacks-destroy");
    QTest::newRow("GetAnalyzerName") << QStringLiteral("lacks-name");
}

void TstPluginFolder::aFileThatLacksAnEntryPointGivesNoEntry()
{
    QFETCH(QString, plugin);
    PluginGuard guard({});
    const auto scan = PluginFolder::scan({folderOf(plugin.toLatin1().constData())}, guard);
    QVERIFY(scan.libraries.isEmpty());
    QCOMPARE(scan.refusals.size(), 1);
    QCOMPARE(scan.refusals.constFirst().fileName, plugin + QStringLiteral(".dll"));
    QCOMPARE(scan.refusals.constFirst().reason, QStringLiteral("it lacks an entry point of a decoder"));
}

void TstPluginFolder::aFileThatIsNoLibraryGivesNoEntry()
{
    QDir().mkpath(m_dir.filePath(QStringLiteral("junk")));
    QFile file(m_dir.filePath(QStringLiteral("junk/A")) + suffix);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("no library");
    file.close();
    QDir().mkpath(m_dir.filePath(QStringLiteral("junk/B")) + suffix); // a folder of such a name
    PluginGuard guard({});
    const auto scan = PluginFolder::scan({m_dir.filePath(QStringLiteral("junk"))}, guard);
    QVERIFY(scan.libraries.isEmpty());
    QCOMPARE(scan.refusals.size(), 1);
    QVERIFY(!scan.refusals.constFirst().reason.isEmpty());
}

void TstPluginFolder::aPluginWithoutAListOfModelsIsOfferedForEveryModel()
{
    PluginGuard guard({});
    const auto scan = PluginFolder::scan({folderOf("returns")}, guard);
    QCOMPARE(scan.libraries.size(), 1);
    QVERIFY(scan.libraries.constFirst().supportedModels.isEmpty());
    const auto some = PluginFolder::scan({folderOf("sound")}, guard);
    QCOMPARE(some.libraries.constFirst().supportedModels, QVector<int>({3, 5}));
    int model = 0;
    AnalyzerHost host;
    host.model = [&model] { return model; };
    const AnalyzerManager manager(host, {folderOf("returns")}, {});
    for (; model < 12; ++model) {
        QCOMPARE(manager.libraryDisplayNames(), QStringList{QStringLiteral("Lie")}); // without a note
    }
}

void TstPluginFolder::emptyPartsOfTheListOfModelsAreLeftOut_data()
{
    QTest::addColumn<QString>("list");
    QTest::addColumn<QVector<int>>("codes");
    QTest::newRow("none") << QString() << QVector<int>{};
    QTest::newRow("one") << QStringLiteral("9") << QVector<int>{9};
    QTest::newRow("an empty part") << QStringLiteral("3,,5") << QVector<int>{3, 5};
    QTest::newRow("no number") << QStringLiteral("x,65") << QVector<int>{0, 65};
}

void TstPluginFolder::emptyPartsOfTheListOfModelsAreLeftOut()
{
    QFETCH(QString, list);
    QTEST(PluginFolder::modelCodes(list), "codes");
}

void TstPluginFolder::namesAreStoredWithTheSuffixOfOneSystem()
{
    QCOMPARE(PluginFolder::storedName(QStringLiteral("SPI") + suffix), QStringLiteral("SPI.dll"));
    QVERIFY(PluginFolder::storedName(QStringLiteral("SPI.txt")).isEmpty());
}

void TstPluginFolder::aSuffixInCapitalsIsOneWhereFileNamesKnowNoCase()
{
    const QString folder = copied("sound", QStringLiteral("capitals"), QStringLiteral("A"));
    const QString file = folder + QStringLiteral("/A");
    QVERIFY(QFile::rename(file + suffix, file + suffix.toUpper()));
    PluginGuard guard({});
    const auto scan = PluginFolder::scan({folder}, guard);
    QVERIFY(scan.refusals.isEmpty());
#ifdef Q_OS_WIN
    QCOMPARE(scan.libraries.size(), 1);
    QCOMPARE(scan.libraries.constFirst().fileName, QStringLiteral("A.dll"));
#else
    QVERIFY(scan.libraries.isEmpty());
#endif
}

void TstPluginFolder::aFileWhoseNameCannotBeStoredIsRefused_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("ends a value of the list of analyzers") << QStringLiteral("a;b");
    QTest::newRow("parts the recent ones") << QStringLiteral("a,b");
    QTest::newRow("is trimmed") << QStringLiteral(" a");
#ifndef Q_OS_WIN // there no file has such a name
    QTest::newRow("breaks a line") << QStringLiteral("a\nb");
    QTest::newRow("is no text of a document") << QStringLiteral("a\x01");
#endif
}

void TstPluginFolder::aFileWhoseNameCannotBeStoredIsRefused()
{
    QFETCH(QString, name);
    // A folder for each: Windows removes no library that is loaded.
    const QString folder = copied("sound", QStringLiteral("of %1").arg(qHash(name)), name);
    QCOMPARE(copied("sound", QDir(folder).dirName(), QStringLiteral("c d")), folder);
    PluginGuard guard({});
    const auto scan = PluginFolder::scan({folder}, guard);
    QCOMPARE(scan.refusals.size(), 1);
    QCOMPARE(scan.refusals.constFirst().fileName, name + QStringLiteral(".dll"));
    QVERIFY2(scan.refusals.constFirst().reason.startsWith(QLatin1String("its name cannot be stored")),
             qPrintable(scan.refusals.constFirst().reason));
    QCOMPARE(scan.libraries.size(), 1);
    QCOMPARE(scan.libraries.constFirst().fileName, QStringLiteral("c d.dll"));
}

void TstPluginFolder::aNameThatTheFirstFolderHasWins()
{
    PluginGuard guard({});
    const QString first = copied("sound", QStringLiteral("first"), QStringLiteral("A"));
    const QString second = copied("returns", QStringLiteral("second"), QStringLiteral("A"));
    const auto scan = PluginFolder::scan({first, second}, guard);
    QCOMPARE(scan.libraries.size(), 1);
    QVERIFY(scan.libraries.constFirst().path.startsWith(first));
    QCOMPARE(scan.refusals.size(), 1);
}

void TstPluginFolder::aPluginThatThrowsWhenItIsAskedIsLeftOut_data()
{
    QTest::addColumn<QString>("plugin");
    QTest::newRow("throws") << QStringLiteral("name-throws");
    QTest::newRow("null") << QStringLiteral("no-name");
}

void TstPluginFolder::aPluginThatThrowsWhenItIsAskedIsLeftOut()
{
    QFETCH(QString, plugin);
    PluginGuard guard({});
    const auto scan = PluginFolder::scan({folderOf(plugin.toLatin1().constData())}, guard);
    QVERIFY(scan.libraries.isEmpty());
    QCOMPARE(scan.refusals.size(), 1);
}

void TstPluginFolder::onlyTheProgramsOwnFolderAndTheUsersAreLookedInto()
{
    const QStringList folders = PluginFolder::standardFolders();
    QCOMPARE(folders, QStringList({QCoreApplication::applicationDirPath() + QStringLiteral("/Analyzer/"),
                                   QFileInfo(configPath()).path() + QStringLiteral("/Analyzer/")}));
    for (const QString &folder : folders) {
        QVERIFY2(QDir::isAbsolutePath(folder), qPrintable(folder)); // never the current folder
    }
}

void TstPluginFolder::nothingIsLoadedFromWhereOthersMayWrite()
{
#ifdef Q_OS_UNIX
    PluginGuard guard({});
    const QString folder = copied("sound", QStringLiteral("open"));
    const QFile::Permissions own = QFile::permissions(folder);
    QVERIFY(QFile::setPermissions(folder, own | QFile::WriteOther));
    QVERIFY(PluginFolder::scan({folder}, guard).libraries.isEmpty());
    QVERIFY(QFile::setPermissions(folder, own));
    QCOMPARE(PluginFolder::scan({folder}, guard).libraries.size(), 1);

    const QString file = folder + QStringLiteral("/sound") + suffix;
    QVERIFY(QFile::setPermissions(file, QFile::permissions(file) | QFile::WriteOther));
    QVERIFY(PluginFolder::scan({folder}, guard).libraries.isEmpty());
#else
    QSKIP("files have no such permissions here");
#endif
}

void TstPluginFolder::aPluginWithWhichTheProgramDiedIsPassedOverUntilItIsRetried_data()
{
    QTest::addColumn<QString>("plugin");
    QTest::newRow("while it was loaded") << QStringLiteral("dies");
    QTest::newRow("in its first call") << QStringLiteral("create-dies");
}

void TstPluginFolder::aPluginWithWhichTheProgramDiedIsPassedOverUntilItIsRetried()
{
    QFETCH(QString, plugin);
    const QString name = plugin + QStringLiteral(".dll");
    // A folder for each: Windows removes no library that is loaded.
    const QString plugins = copied(plugin.toLatin1().constData(), QStringLiteral("plugins of ") + plugin);
    const QString guardFolder = m_dir.filePath(QStringLiteral("guard of ") + plugin);
    QProcess victim;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LUX_TEST_VICTIM"), plugins);
    environment.insert(QStringLiteral("LUX_TEST_GUARD"), guardFolder);
    victim.setProcessEnvironment(environment);
    victim.start(QCoreApplication::applicationFilePath(), QStringList());
    QVERIFY(victim.waitForFinished());
    QCOMPARE(victim.exitCode(), 66);

    {
        PluginGuard guard(guardFolder);
        QCOMPARE(guard.blocked(), QStringList{name});
        const auto scan = PluginFolder::scan({plugins}, guard);
        QVERIFY(scan.libraries.isEmpty());
        QCOMPARE(scan.refusals.size(), 1);
        QVERIFY(scan.refusals.constFirst().passedOver);
        guard.retry(name);
    }
    PluginGuard guard(guardFolder);
    QCOMPARE(PluginFolder::scan({plugins}, guard).libraries.size(), 1); // no death is asked for here
}

void TstPluginFolder::aGuardWithoutAFolderRemembersAndWritesNothing()
{
    PluginGuard guard({});
    {
        const PluginTrial trial(guard, QStringLiteral("sound.dll"), folderOf("sound"));
    }
    guard.retry(QStringLiteral("sound.dll"));
    QVERIFY(guard.blocked().isEmpty());
    QVERIFY(!QFile::exists(QStringLiteral("/passed-over")));
}

void TstPluginFolder::aChangedFileIsTriedAgain()
{
    const QString plugins = copied("sound", QStringLiteral("plugins"));
    const QString path = plugins + QStringLiteral("/sound") + suffix;
    const QString guardFolder = m_dir.filePath(QStringLiteral("guard"));
    QVERIFY(QDir().mkpath(guardFolder));
    QFile trying(guardFolder + QStringLiteral("/1.trying"));
    QVERIFY(trying.open(QIODevice::WriteOnly));
    const QFileInfo file(path);
    trying.write(
        QStringLiteral("sound.dll\t%1\t%2").arg(file.size()).arg(file.lastModified().toMSecsSinceEpoch()).toUtf8());
    trying.close();
    PluginGuard guard(guardFolder);
    QVERIFY(guard.isBlocked(QStringLiteral("sound.dll"), path));
    QFile changed(path);
    QVERIFY(changed.open(QIODevice::Append));
    changed.write("\n");
    changed.close();
    QVERIFY(!guard.isBlocked(QStringLiteral("sound.dll"), path));
}

void TstPluginFolder::aProcessThatLivesIsNoCulprit()
{
    const QString guardFolder = m_dir.filePath(QStringLiteral("guard"));
    PluginGuard living(guardFolder);
    const PluginTrial trial(living, QStringLiteral("sound.dll"), folderOf("sound"));
    const PluginGuard other(guardFolder);
    QVERIFY(other.blocked().isEmpty());
}

void TstPluginFolder::aDeadProcessIsACulpritThoughItsIdIsInUseAgain()
{
    // In a container each start may have the same id.
    const QString guardFolder = m_dir.filePath(QStringLiteral("guard"));
    QVERIFY(QDir().mkpath(guardFolder));
    const QString left = guardFolder + QStringLiteral("/%1.").arg(QCoreApplication::applicationPid());
    leaveLock(left + QStringLiteral("lock"));
    QFile trying(left + QStringLiteral("trying"));
    QVERIFY(trying.open(QIODevice::WriteOnly));
    trying.write("sound.dll\t1\t1");
    trying.close();
    const PluginGuard guard(guardFolder);
    QCOMPARE(guard.blocked(), QStringList{QStringLiteral("sound.dll")});
    QCOMPARE(QDir(guardFolder).entryList(QDir::Files), QStringList{QStringLiteral("passed-over")});
}

void TstPluginFolder::guardsOfOneProcessLeaveEachOthersNamesAlone()
{
    const QString guardFolder = m_dir.filePath(QStringLiteral("guard"));
    PluginGuard first(guardFolder);
    const PluginTrial trial(first, QStringLiteral("first.dll"), folderOf("sound"));
    {
        PluginGuard second(guardFolder);
        {
            const PluginTrial other(second, QStringLiteral("second.dll"), folderOf("sound"));
            QCOMPARE(triedIn(guardFolder), QStringList({QStringLiteral("first.dll"), QStringLiteral("second.dll")}));
        }
        QCOMPARE(triedIn(guardFolder), QStringList{QStringLiteral("first.dll")});
    }
    QCOMPARE(triedIn(guardFolder), QStringList{QStringLiteral("first.dll")});
}

void TstPluginFolder::aGuardThatIsGoneLeavesNoFileBehind()
{
    const QString guardFolder = m_dir.filePath(QStringLiteral("guard"));
    {
        PluginGuard guard(guardFolder);
        const PluginTrial trial(guard, QStringLiteral("sound.dll"), folderOf("sound"));
        QCOMPARE(triedIn(guardFolder), QStringList{QStringLiteral("sound.dll")});
    }
    QVERIFY(QDir(guardFolder).isEmpty());
}

QTEST_GUILESS_MAIN(TstPluginFolder)
#include "tst_PluginFolder.moc"
