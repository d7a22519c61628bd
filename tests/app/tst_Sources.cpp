// Rules of the source tree that no compiler checks: who may include whom, and how texts are translated.

#include "support/SourceText.h"

#include <QFile>
#include <QHash>
#include <QRegularExpression>
#include <QSet>
#include <QStringList>
#include <QtTest>

namespace {

/// What `code` includes in quotes, without the output of moc.
QStringList includesOf(const QString &code)
{
    static const QRegularExpression line(QStringLiteral("^[ \\t]*#[ \\t]*include[ \\t]*\"([^\"\\n]+)\""),
                                         QRegularExpression::MultilineOption);
    const QString clean = Stripper(code, true).run();
    QStringList includes;
    for (auto match = line.globalMatch(clean); match.hasNext();) {
        const QString path = match.next().captured(1);
        if (!path.endsWith(QStringLiteral(".moc"))) {
            includes += path;
        }
    }
    return includes;
}

/// Lines, counted from 1, that call a `tr` other than the global one.
QList<int> wrongTranslations(const QString &code)
{
    static const QRegularExpression call(QStringLiteral("(?<![A-Za-z0-9_])tr\\s*\\("));
    static const QRegularExpression global(QStringLiteral("(^|[^A-Za-z0-9_>])::$"));
    const QString clean = Stripper(code, false).run();
    QList<int> lines;
    for (auto match = call.globalMatch(clean); match.hasNext();) {
        const int start = match.next().capturedStart();
        if (!global.match(clean.mid(qMax(0, start - 3), qMin(start, 3))).hasMatch()) {
            lines += clean.leftRef(start).count(QLatin1Char('\n')) + 1;
        }
    }
    return lines;
}

QString partOf(const QString &path)
{
    return path.section(QLatin1Char('/'), 0, 0);
}

/// A folder of src/: how high it stands, and what it may include, itself left out.
struct Folder {
    int rank = -1;
    QStringList below;
};

/// The folders as the build knows them.
QHash<QString, Folder> readFolders()
{
    QFile file(QStringLiteral(LUX_FOLDER_TABLE));
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    QHash<QString, Folder> folders;
    const QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (const QString &line : lines) {
        const QString head = line.section(QLatin1Char(':'), 0, 0);
        folders.insert(head.section(QLatin1Char(' '), 0, 0),
                       {head.section(QLatin1Char(' '), 1).toInt(),
                        line.section(QLatin1Char(':'), 1).split(QLatin1Char(' '), Qt::SkipEmptyParts)});
    }
    return folders;
}

const QHash<QString, Folder> &folders()
{
    static const QHash<QString, Folder> table = readFolders();
    return table;
}

/// Why the file `from` must not include `include`; empty if it may.
QString fault(const QString &from, const QString &include)
{
    if (!include.contains(QLatin1Char('/')) || include.contains(QStringLiteral(".."))) {
        return QStringLiteral("is not written from src/");
    }
    const QString here = partOf(from);
    const QString there = partOf(include);
    if (!folders().contains(here) || !folders().contains(there)) {
        return QStringLiteral("is of a folder without a rank");
    }
    if (here != there && !folders().value(here).below.contains(there)) {
        return QStringLiteral("is of a folder that is not linked");
    }
    return {};
}

QStringList wrongIncludes(const Sources &sources)
{
    QStringList wrong;
    for (auto file = sources.cbegin(); file != sources.cend(); ++file) {
        for (const QString &include : includesOf(file.value())) {
            const QString reason =
                sources.contains(include) ? fault(file.key(), include) : QStringLiteral("names no file below src/");
            if (!reason.isEmpty()) {
                wrong += file.key() + QStringLiteral(": \"") + include + QStringLiteral("\" ") + reason;
            }
        }
    }
    return wrong;
}

/// Looks for files that include each other.
class RingSearch {
public:
    explicit RingSearch(const Sources &sources) : m_sources(sources) {}

    /// One ring, its first file also at the end; empty if there is none.
    QStringList run()
    {
        for (auto file = m_sources.cbegin(); file != m_sources.cend(); ++file) {
            const QStringList ring = visit(file.key());
            if (!ring.isEmpty()) {
                return ring;
            }
        }
        return {};
    }

private:
    QStringList visit(const QString &path)
    {
        if (m_way.contains(path)) {
            return m_way.mid(m_way.indexOf(path)) << path;
        }
        if (m_done.contains(path)) {
            return {};
        }
        m_way += path;
        for (const QString &include : includesOf(m_sources.value(path))) {
            const QStringList ring = visit(include);
            if (!ring.isEmpty()) {
                return ring;
            }
        }
        m_way.removeLast();
        m_done += path;
        return {};
    }

    const Sources &m_sources;
    QStringList m_way;
    QSet<QString> m_done;
};

Sources tree(std::initializer_list<std::pair<const char *, const char *>> files)
{
    Sources sources;
    for (const auto &[path, code] : files) {
        sources.insert(QString::fromLatin1(path), QString::fromLatin1(code));
    }
    return sources;
}

} // namespace

class TstSources : public QObject {
    Q_OBJECT

private slots:
    void theTreeIsFound();
    void everyTextIsTranslatedByTheGlobalFunction();
    void everyIncludePointsDownwards();
    void theTableOfTheDocumentIsThatOfTheBuild();
    void noFilesIncludeEachOther();
    void theWavesAskForNoGlobalDevice();

    void theTextCheckFindsOtherFunctionsOfThatName_data();
    void theTextCheckFindsOtherFunctionsOfThatName();
    void theIncludeCheckFindsWrongDirections_data();
    void theIncludeCheckFindsWrongDirections();
    void theIncludeCheckReadsCodeAndNotComments();
    void theIncludeCheckFindsFilesThatDoNotExist();
    void theRingCheckFindsARing();
    void theRingCheckAllowsSeveralWaysToOneFile();
};

void TstSources::theTreeIsFound()
{
    const Sources sources = readSources(QStringLiteral(LUX_SOURCE_DIR));
    QVERIFY(sources.size() > 20);
    QVERIFY(sources.contains(QStringLiteral("settings/Config.h")));
    QVERIFY(folders().contains(QStringLiteral("app")));
}

void TstSources::everyTextIsTranslatedByTheGlobalFunction()
{
    QStringList wrong;
    const Sources sources = readSources(QStringLiteral(LUX_SOURCE_DIR));
    for (auto file = sources.cbegin(); file != sources.cend(); ++file) {
        if (file.key().startsWith(QStringLiteral("settings/Language."))) {
            continue;
        }
        for (const int line : wrongTranslations(file.value())) {
            wrong += QStringLiteral("%1:%2").arg(file.key()).arg(line);
        }
    }
    QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(QLatin1Char('\n'))));
}

void TstSources::everyIncludePointsDownwards()
{
    const QStringList wrong = wrongIncludes(readSources(QStringLiteral(LUX_SOURCE_DIR)));
    QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(QLatin1Char('\n'))));
}

void TstSources::theTableOfTheDocumentIsThatOfTheBuild()
{
    QFile file(QStringLiteral(LUX_ARCHITECTURE));
    QVERIFY(file.open(QIODevice::ReadOnly));
    static const QRegularExpression row(QStringLiteral("^\\| (\\d+) \\| `(\\w+)/` \\|"),
                                        QRegularExpression::MultilineOption);
    QStringList told;
    const QString text = QString::fromUtf8(file.readAll());
    for (auto match = row.globalMatch(text); match.hasNext();) {
        const auto found = match.next();
        told += found.captured(2) + QLatin1Char(' ') + found.captured(1);
    }
    QStringList built;
    for (auto folder = folders().cbegin(); folder != folders().cend(); ++folder) {
        built += folder.key() + QLatin1Char(' ') + QString::number(folder->rank);
    }
    told.sort();
    built.sort();
    QCOMPARE(told.join(QStringLiteral(", ")), built.join(QStringLiteral(", ")));
}

void TstSources::noFilesIncludeEachOther()
{
    const Sources sources = readSources(QStringLiteral(LUX_SOURCE_DIR));
    const QStringList ring = RingSearch(sources).run();
    QVERIFY2(ring.isEmpty(), qPrintable(ring.join(QStringLiteral(" -> "))));
}

void TstSources::theWavesAskForNoGlobalDevice()
{
    static const QRegularExpression global(QStringLiteral("\\bgDev\\b"));
    const Sources sources = readSources(QStringLiteral(LUX_SOURCE_DIR));
    int files = 0;
    for (auto file = sources.cbegin(); file != sources.cend(); ++file) {
        if (partOf(file.key()) == QStringLiteral("wave")) {
            ++files;
            QVERIFY2(!Stripper(file.value(), false).run().contains(global), qPrintable(file.key()));
        }
    }
    QVERIFY(files > 10);
}

void TstSources::theTextCheckFindsOtherFunctionsOfThatName_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<int>("found");
    QTest::newRow("global") << QStringLiteral("a = ::tr(\"Open\");") << 0;
    QTest::newRow("global, first") << QStringLiteral("::tr(\"Open\")") << 0;
    QTest::newRow("plain") << QStringLiteral("a = tr(\"Open\");") << 1;
    QTest::newRow("plain, first") << QStringLiteral("tr(\"Open\");") << 1;
    QTest::newRow("blank before the bracket") << QStringLiteral("f(tr (\"Open\"));") << 1;
    QTest::newRow("of a class") << QStringLiteral("a = QObject::tr(\"Open\");") << 1;
    QTest::newRow("of a template") << QStringLiteral("a = T<int>::tr(\"Open\");") << 1;
    QTest::newRow("of an object") << QStringLiteral("a = box->tr(\"x\") + box.tr(\"y\");") << 2;
    QTest::newRow("longer names") << QStringLiteral("str(x); trAnalyzer(a, b); tr_(x); x.str();") << 0;
    QTest::newRow("line comment") << QStringLiteral("f(); // tr(\"Open\")\n") << 0;
    QTest::newRow("block comment") << QStringLiteral("/* tr( \n tr( */ f();") << 0;
    QTest::newRow("behind a comment") << QStringLiteral("/* \" */ tr(x); // \"") << 1;
    QTest::newRow("text") << QStringLiteral("f(\"tr(\\\" tr(\"); g('\"'); h(\" tr( \");") << 0;
    QTest::newRow("raw text") << QStringLiteral("f(R\"x(tr(\" )\" tr()x\"); tr(a);") << 1;
    QTest::newRow("digit separators") << QStringLiteral("f(1'000); tr(x); g(1'0);") << 1;
}

void TstSources::theTextCheckFindsOtherFunctionsOfThatName()
{
    QFETCH(QString, code);
    QFETCH(int, found);
    QCOMPARE(wrongTranslations(code).size(), found);
}

void TstSources::theIncludeCheckFindsWrongDirections_data()
{
    QTest::addColumn<QString>("from");
    QTest::addColumn<QString>("include");
    QTest::addColumn<bool>("allowed");
    const auto row = [](const char *from, const char *include, bool allowed) {
        QTest::addRow("%s includes %s", from, include)
            << QString::fromLatin1(from) << QString::fromLatin1(include) << allowed;
    };
    row("wave/MainView.cpp", "device/DevBase.h", true);
    row("wave/MainView.cpp", "wave/MainView.h", true);
    row("wave/MainView.cpp", "settings/Config.h", true);
    row("wave/MainView.cpp", "app/MainWindow.h", false);
    row("wave/MainView.cpp", "panels/Toolbar.h", false);
    row("wave/MainView.cpp", "MainView.h", false);
    row("wave/MainView.cpp", "wave/../settings/Config.h", false);
    row("wave/MainView.cpp", "files/DataFile.h", false);
    row("store/SmpData.h", "settings/Config.h", false);
    row("store/SmpData.h", "acquisition/SmpHost.h", false);
    row("settings/Config.h", "store/SmpData.h", false);
    row("settings/Config.h", "controls/Look.h", false);
    row("acquisition/SmpHost.h", "device/DevBase.h", false);
    row("analysis/PulseCount.h", "store/SmpData.h", true);
    row("device/DevBase.h", "acquisition/SmpHost.h", true);
    row("files/DataFile.cpp", "device/DevBase.h", false);
    row("controls/Style.cpp", "wave/MainView.h", false);
    row("controls/Style.cpp", "settings/Language.h", true);
    row("panels/Toolbar.cpp", "controls/MyButton.h", true);
    row("app/MainWindow.cpp", "panels/Toolbar.h", true);
    row("app/MainWindow.cpp", "app/MainMenu.h", true);
    row("other/Thing.cpp", "settings/Config.h", false);
    row("wave/MainView.cpp", "other/Thing.h", false);
}

void TstSources::theIncludeCheckFindsWrongDirections()
{
    QFETCH(QString, from);
    QFETCH(QString, include);
    QFETCH(bool, allowed);
    QCOMPARE(fault(from, include).isEmpty(), allowed);
}

void TstSources::theIncludeCheckReadsCodeAndNotComments()
{
    const QString code = QStringLiteral("#include \"a/A.h\"\n  #  include \"b/B.h\" // why\n// #include \"c/C.h\"\n"
                                        "/*\n#include \"d/D.h\"\n*/\n#include <QString>\n#include \"x.moc\"\n");
    QCOMPARE(includesOf(code), QStringList({QStringLiteral("a/A.h"), QStringLiteral("b/B.h")}));
}

void TstSources::theIncludeCheckFindsFilesThatDoNotExist()
{
    const Sources sources = tree({{"wave/A.h", "#include \"wave/B.h\"\n"}, {"wave/C.h", "#include \"wave/A.h\"\n"}});
    QCOMPARE(wrongIncludes(sources), QStringList{QStringLiteral("wave/A.h: \"wave/B.h\" names no file below src/")});
}

void TstSources::theRingCheckFindsARing()
{
    const Sources sources = tree({{"wave/A.cpp", "#include \"wave/B.h\"\n"},
                                  {"wave/B.h", "#include \"wave/C.h\"\n"},
                                  {"wave/C.h", "#include \"wave/D.h\"\n"},
                                  {"wave/D.h", "#include \"wave/B.h\"\n"}});
    QCOMPARE(RingSearch(sources).run().join(QLatin1Char(' ')), QStringLiteral("wave/B.h wave/C.h wave/D.h wave/B.h"));
    const Sources self = tree({{"wave/A.h", "#include \"wave/A.h\"\n"}});
    QCOMPARE(RingSearch(self).run().size(), 2);
}

void TstSources::theRingCheckAllowsSeveralWaysToOneFile()
{
    const Sources sources = tree({{"wave/A.h", "#include \"wave/B.h\"\n#include \"wave/C.h\"\n"},
                                  {"wave/B.h", "#include \"wave/D.h\"\n"},
                                  {"wave/C.h", "#include \"wave/D.h\"\n"},
                                  {"wave/D.h", ""}});
    QVERIFY(RingSearch(sources).run().isEmpty());
}

QTEST_GUILESS_MAIN(TstSources)
#include "tst_Sources.moc"
