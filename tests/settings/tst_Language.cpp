#include "settings/Config.h"
#include "settings/Language.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLocale>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

namespace {

/// Builds a language file in steps, such as language("de").text("Open", "Öffnen").file(dir).
class LanguageFile {
public:
    explicit LanguageFile(const QByteArray &code) : m_head("<code>" + code + "</code>"), m_name(code + ".xml") {}

    LanguageFile &head(const QByteArray &tag, const QByteArray &text)
    {
        m_head += "<" + tag + ">" + text + "</" + tag + ">";
        return *this;
    }
    LanguageFile &text(const QByteArray &src, const QByteArray &translation)
    {
        m_lux += "<t src=\"" + src + "\">" + translation + "</t>";
        return *this;
    }
    LanguageFile &analyzer(const QByteArray &className, const QByteArray &src, const QByteArray &translation)
    {
        m_analyzers += "<t class=\"" + className + "\" src=\"" + src + "\">" + translation + "</t>";
        return *this;
    }
    LanguageFile &named(const QByteArray &name)
    {
        m_name = name;
        return *this;
    }
    void write(const QTemporaryDir &dir) const
    {
        QFile file(dir.filePath(QString::fromLatin1(m_name)));
        const QByteArray xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><language><head>" + m_head + "</head><lux>" +
                               m_lux + "</lux><analyzers>" + m_analyzers + "</analyzers></language>";
        if (!file.open(QIODevice::WriteOnly) || file.write(xml) != xml.size()) {
            qFatal("no test file");
        }
    }

private:
    QByteArray m_head;
    QByteArray m_lux;
    QByteArray m_analyzers;
    QByteArray m_name;
};

LanguageFile language(const char *code)
{
    return LanguageFile(code);
}

QStringList codes(const QVector<LanguageInfo> &languages)
{
    QStringList list;
    for (const LanguageInfo &info : languages) {
        list += info.code;
    }
    return list;
}

} // namespace

class TstLanguage : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void theDirectoryIsBesideTheProgram();
    void theLanguageOfAFirstStartFollowsTheLocale_data();
    void theLanguageOfAFirstStartFollowsTheLocale();
    void aFirstStartStoresTheLanguageAndLoadsItsFile();
    void aFirstStartInEnglishTriesTheFileToo();
    void aStoredEnglishIsTheBuiltInOne();
    void aStoredLanguageIsLoadedWhateverTheLocale();
    void anUnusableFileGivesEnglishAndKeepsTheChoice_data();
    void anUnusableFileGivesEnglishAndKeepsTheChoice();
    void aCodeNeverNamesAFileElsewhere();
    void aCodeWithASeparatorOfAnySystemIsNoFile_data();
    void aCodeWithASeparatorOfAnySystemIsNoFile();
    void aFileNeedNotNameItsOwnCode();
    void loadingFromTheProgramsDirectoryWithoutFilesGivesEnglish();

    void aTextWithoutAnEntryComesBackAsItIs();
    void theLookUpIgnoresCase();
    void anEmptyTranslationGivesTheCallersText();
    void theFirstOfTwoEntriesCounts();
    void theTagsOfEntriesDoNotMatter();
    void theRootsChildrenCountByPlace();
    void anEntryWithoutASourceIsNeverFound();

    void anAnalyzersTextNeedsItsClass();
    void aLeadingNumberIsKept_data();
    void aLeadingNumberIsKept();
    void aFileWithoutAThirdChildTranslatesNoAnalyzer();
    void aFileWithoutASecondChildTranslatesNothing();
    void anEmptyAnalyzerTranslationGivesTheCallersText();

    void theHeadsTextsAreFoundByTag();
    void theBuiltInHeadNamesEnglish();

    void theListBeginsWithEnglish();
    void theListHasTheWordsOfTheRestartNoticeInEachLanguage();
    void theListFollowsTheDirectorysOrder();
    void theTwoChineseLanguagesComeNext();
    void oneChineseLanguageAloneIsListed();
    void theProviderIsAddedToTheNotice();
    void aFileThatDoesNotFitItsNameIsLeftOut();
    void filesThatCannotBeReadAreLeftOut();
    void aMissingDirectoryListsEnglishOnly();

    void aHugeFileIsReadAndSearchedQuickly();
    void textsAreLookedUpFromManyThreads();

private:
    void load(const char *code);
    void writeRaw(const char *name, const QByteArray &bytes);

    std::unique_ptr<QTemporaryDir> m_dir;
};

void TstLanguage::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
}

void TstLanguage::init()
{
    QDir(QFileInfo(configPath()).path()).removeRecursively();
    configLoad();
    m_dir = std::make_unique<QTemporaryDir>();
}

void TstLanguage::cleanup()
{
    load("en-US");
}

void TstLanguage::load(const char *code)
{
    globalSet(QStringLiteral("userLang"), QString::fromLatin1(code));
    languageLoadFrom(m_dir->path(), QLocale::c());
}

void TstLanguage::writeRaw(const char *name, const QByteArray &bytes)
{
    QFile file(m_dir->filePath(QString::fromLatin1(name)));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), qint64{bytes.size()});
}

void TstLanguage::theDirectoryIsBesideTheProgram()
{
    QCOMPARE(languageDirectory(), QCoreApplication::applicationDirPath() + QStringLiteral("/Language/"));
}

void TstLanguage::theLanguageOfAFirstStartFollowsTheLocale_data()
{
    QTest::addColumn<QLocale>("locale");
    QTest::addColumn<QString>("code");
    QTest::newRow("Taiwan") << QLocale(QLocale::Chinese, QLocale::Taiwan) << QStringLiteral("zh-TW");
    QTest::newRow("China") << QLocale(QLocale::Chinese, QLocale::China) << QStringLiteral("zh-CN");
    QTest::newRow("Hong Kong") << QLocale(QLocale::Chinese, QLocale::HongKong) << QStringLiteral("zh-CN");
    QTest::newRow("Germany") << QLocale(QLocale::German, QLocale::Germany) << QStringLiteral("en-US");
    QTest::newRow("English") << QLocale(QLocale::English, QLocale::UnitedKingdom) << QStringLiteral("en-US");
    QTest::newRow("none") << QLocale::c() << QStringLiteral("en-US");
}

void TstLanguage::theLanguageOfAFirstStartFollowsTheLocale()
{
    QFETCH(QLocale, locale);
    QFETCH(QString, code);
    QCOMPARE(languageOfLocale(locale), code);
}

void TstLanguage::aFirstStartStoresTheLanguageAndLoadsItsFile()
{
    language("zh-TW").text("Open", "T").write(*m_dir);
    languageLoadFrom(m_dir->path(), QLocale(QLocale::Chinese, QLocale::Taiwan));
    QCOMPARE(globalGet(QStringLiteral("userLang")), QStringLiteral("zh-TW"));
    QCOMPARE(::tr("Open"), QStringLiteral("T"));
}

void TstLanguage::aFirstStartInEnglishTriesTheFileToo()
{
    language("en-US").text("Colour", "Color").write(*m_dir);
    languageLoadFrom(m_dir->path(), QLocale::c());
    QCOMPARE(globalGet(QStringLiteral("userLang")), QStringLiteral("en-US"));
    QCOMPARE(::tr("Colour"), QStringLiteral("Color"));
}

void TstLanguage::aStoredEnglishIsTheBuiltInOne()
{
    language("en-US").text("Colour", "Color").write(*m_dir);
    load("en-US");
    QCOMPARE(::tr("Colour"), QStringLiteral("Colour"));
}

void TstLanguage::aStoredLanguageIsLoadedWhateverTheLocale()
{
    language("de")
        .text("Open", "\xC3\x96"
                      "ffnen")
        .write(*m_dir);
    globalSet(QStringLiteral("userLang"), QStringLiteral("de"));
    languageLoadFrom(m_dir->path(), QLocale(QLocale::Chinese, QLocale::China));
    QCOMPARE(::tr("Open"), QString::fromUtf8("Öffnen"));
    QCOMPARE(globalGet(QStringLiteral("userLang")), QStringLiteral("de"));
}

void TstLanguage::anUnusableFileGivesEnglishAndKeepsTheChoice_data()
{
    QTest::addColumn<bool>("present");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("missing") << false << QByteArray();
    QTest::newRow("empty") << true << QByteArray();
    QTest::newRow("cut short") << true << QByteArray("<language><head/><lux><t src=\"Open\">X</t>");
    QTest::newRow("deep") << true
                          << QByteArray("<language><head/><lux><t src=\"Open\">X</t>" +
                                        QByteArray("<a>").repeated(200'000) + QByteArray("</a>").repeated(200'000) +
                                        "</lux></language>");
    QTest::newRow("fifty megabytes") << true
                                     << QByteArray("<language><head/><lux><t src=\"Open\">X" +
                                                   QByteArray(50'000'000, 'X') + "</t></lux></language>");
    QTest::newRow("empty root") << true << QByteArray("<language/>");
    QTest::newRow("another document") << true << QByteArray("<html><body><p src=\"Open\">X</p></body></html>");
}

void TstLanguage::anUnusableFileGivesEnglishAndKeepsTheChoice()
{
    QFETCH(bool, present);
    QFETCH(QByteArray, bytes);
    if (present) {
        writeRaw("de.xml", bytes);
    }
    load("de");
    QCOMPARE(::tr("Open"), QStringLiteral("Open"));
    QCOMPARE(globalGet(QStringLiteral("userLang")), QStringLiteral("de"));
}

void TstLanguage::aCodeNeverNamesAFileElsewhere()
{
    language("de").text("Open", "X").write(*m_dir);
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("inner")));
    globalSet(QStringLiteral("userLang"), QStringLiteral("../de"));
    languageLoadFrom(m_dir->filePath(QStringLiteral("inner")), QLocale::c());
    QCOMPARE(::tr("Open"), QStringLiteral("Open"));
    globalSet(QStringLiteral("userLang"), m_dir->filePath(QStringLiteral("de")));
    languageLoadFrom(m_dir->path(), QLocale::c());
    QCOMPARE(::tr("Open"), QStringLiteral("Open"));
}

void TstLanguage::aCodeWithASeparatorOfAnySystemIsNoFile_data()
{
    QTest::addColumn<QString>("code");
    QTest::newRow("colon") << QStringLiteral("C:de");
    QTest::newRow("backslash") << QStringLiteral("x\\de");
}

void TstLanguage::aCodeWithASeparatorOfAnySystemIsNoFile()
{
    QFETCH(QString, code);
    QFile file(m_dir->filePath(code + QStringLiteral(".xml"))); // here, a plain name
    if (!file.open(QIODevice::WriteOnly)) {
        QSKIP("this system allows no such name");
    }
    QVERIFY(file.write("<language><head/><lux><t src=\"Open\">X</t></lux></language>") > 0);
    file.close();
    globalSet(QStringLiteral("userLang"), code);
    languageLoadFrom(m_dir->path(), QLocale::c());
    QCOMPARE(::tr("Open"), QStringLiteral("Open"));
}

void TstLanguage::aFileNeedNotNameItsOwnCode()
{
    language("de").text("Open", "X").named("at.xml").write(*m_dir);
    load("at");
    QCOMPARE(::tr("Open"), QStringLiteral("X"));
}

void TstLanguage::loadingFromTheProgramsDirectoryWithoutFilesGivesEnglish()
{
    QVERIFY(!QFileInfo::exists(languageDirectory()));
    languageLoad();
    QVERIFY(!globalGet(QStringLiteral("userLang")).isEmpty());
    QCOMPARE(::tr("Open"), QStringLiteral("Open"));
    QCOMPARE(codes(languageList()), QStringList{QStringLiteral("en-US")});
}

void TstLanguage::aTextWithoutAnEntryComesBackAsItIs()
{
    language("de").text("Open", "X").write(*m_dir);
    load("de");
    QCOMPARE(::tr("Close ME"), QStringLiteral("Close ME"));
    QCOMPARE(::tr(QString()), QString());
    QCOMPARE(::tr("µs"), QString::fromUtf8("µs"));
}

void TstLanguage::theLookUpIgnoresCase()
{
    language("de").text("open FILE", "Datei").write(*m_dir);
    load("de");
    QCOMPARE(::tr("Open File"), QStringLiteral("Datei"));
    QCOMPARE(::tr(QStringLiteral("OPEN file")), QStringLiteral("Datei"));
}

void TstLanguage::anEmptyTranslationGivesTheCallersText()
{
    language("de").text("open", "").write(*m_dir);
    load("de");
    QCOMPARE(::tr("OPEN"), QStringLiteral("OPEN"));
}

void TstLanguage::theFirstOfTwoEntriesCounts()
{
    language("de").text("Open", "1").text("OPEN", "2").text("Close", "").text("close", "3").write(*m_dir);
    load("de");
    QCOMPARE(::tr("open"), QStringLiteral("1"));
    QCOMPARE(::tr("close"), QStringLiteral("close"));
}

void TstLanguage::theTagsOfEntriesDoNotMatter()
{
    writeRaw("de.xml", "<x><h/><y><a src=\"A\">1</a><b src=\"B\">2</b></y><z><c class=\"C\" src=\"D\">3</c></z></x>");
    load("de");
    QCOMPARE(::tr("A"), QStringLiteral("1"));
    QCOMPARE(::tr("B"), QStringLiteral("2"));
    QCOMPARE(trAnalyzer(QStringLiteral("D"), QStringLiteral("C")), QStringLiteral("3"));
}

void TstLanguage::theRootsChildrenCountByPlace()
{
    writeRaw("de.xml", "<language><!-- note --><head/><other><t src=\"A\">1</t></other>"
                       "<another><t class=\"C\" src=\"A\">2</t></another><lux><t src=\"B\">3</t></lux></language>");
    load("de");
    QCOMPARE(::tr("A"), QStringLiteral("1"));
    QCOMPARE(trAnalyzer(QStringLiteral("A"), QStringLiteral("C")), QStringLiteral("2"));
    QCOMPARE(::tr("B"), QStringLiteral("B"));
}

void TstLanguage::anEntryWithoutASourceIsNeverFound()
{
    writeRaw("de.xml", "<language><head/><lux><t>X</t></lux><analyzers><t class=\"C\">Y</t></analyzers></language>");
    load("de");
    QCOMPARE(::tr(""), QString());
    QCOMPARE(trAnalyzer(QStringLiteral("8"), QStringLiteral("C")), QStringLiteral("8"));
}

void TstLanguage::anAnalyzersTextNeedsItsClass()
{
    language("de").text("Start", "lux").analyzer("I2C", "Start", "i2c").analyzer("UART", "start", "uart").write(*m_dir);
    load("de");
    QCOMPARE(trAnalyzer(QStringLiteral("START"), QStringLiteral("I2C")), QStringLiteral("i2c"));
    QCOMPARE(trAnalyzer(QStringLiteral("Start"), QStringLiteral("UART")), QStringLiteral("uart"));
    QCOMPARE(trAnalyzer(QStringLiteral("Start"), QStringLiteral("i2c")), QStringLiteral("Start"));
    QCOMPARE(trAnalyzer(QStringLiteral("Start"), QString()), QStringLiteral("Start"));
    QCOMPARE(::tr("Start"), QStringLiteral("lux"));
}

void TstLanguage::aLeadingNumberIsKept_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("translation");
    QTest::newRow("no number") << QStringLiteral("Stop bits") << QStringLiteral("Stoppbits");
    QTest::newRow("number") << QStringLiteral("1.5 stop bits") << QStringLiteral("1.5 Stoppbits");
    QTest::newRow("version-like") << QStringLiteral("1. 2.3  Stop Bits") << QStringLiteral("1. 2.3  Stoppbits");
    QTest::newRow("number without a blank") << QStringLiteral("2STOP BITS") << QStringLiteral("2Stoppbits");
    QTest::newRow("unknown") << QStringLiteral("2 start bits") << QStringLiteral("2 start bits");
    QTest::newRow("only a number") << QStringLiteral("2.5 ") << QStringLiteral("2.5 ");
    QTest::newRow("sign first") << QStringLiteral("-2 stop bits") << QStringLiteral("-2 stop bits");
    QTest::newRow("empty") << QString() << QString();
    QTest::newRow("whole text with its number") << QStringLiteral("8 bits") << QStringLiteral("8 bits");
}

void TstLanguage::aLeadingNumberIsKept()
{
    QFETCH(QString, text);
    QFETCH(QString, translation);
    language("de").analyzer("UART", "stop bits", "Stoppbits").analyzer("UART", "8 bits", "never found").write(*m_dir);
    load("de");
    QCOMPARE(trAnalyzer(text, QStringLiteral("UART")), translation);
}

void TstLanguage::aFileWithoutAThirdChildTranslatesNoAnalyzer()
{
    writeRaw("de.xml", "<language><head/><lux><t src=\"Open\" class=\"I2C\">X</t></lux></language>");
    load("de");
    QCOMPARE(::tr("Open"), QStringLiteral("X"));
    QCOMPARE(trAnalyzer(QStringLiteral("Open"), QStringLiteral("I2C")), QStringLiteral("Open"));
}

void TstLanguage::aFileWithoutASecondChildTranslatesNothing()
{
    writeRaw("de.xml", "<language><head><code>de</code><t src=\"Open\">X</t></head></language>");
    load("de");
    QCOMPARE(::tr("Open"), QStringLiteral("Open"));
    QCOMPARE(languageHead(QStringLiteral("code")), QStringLiteral("de"));
}

void TstLanguage::anEmptyAnalyzerTranslationGivesTheCallersText()
{
    language("de").analyzer("UART", "bits", "").write(*m_dir);
    load("de");
    QCOMPARE(trAnalyzer(QStringLiteral("8 Bits"), QStringLiteral("UART")), QStringLiteral("8 Bits"));
}

void TstLanguage::theHeadsTextsAreFoundByTag()
{
    language("de").head("font", "SysDefault").head("name", "Deutsch").head("name", "second").write(*m_dir);
    load("de");
    QCOMPARE(languageHead(QStringLiteral("font")), QStringLiteral("SysDefault"));
    QCOMPARE(languageHead(QStringLiteral("name")), QStringLiteral("Deutsch"));
    QCOMPARE(languageHead(QStringLiteral("provider")), QString());
    QCOMPARE(languageHead(QString()), QString());
}

void TstLanguage::theBuiltInHeadNamesEnglish()
{
    load("en-US");
    QCOMPARE(languageHead(QStringLiteral("code")), QStringLiteral("en-US"));
    QCOMPARE(languageHead(QStringLiteral("name")), QStringLiteral("English"));
    QCOMPARE(languageHead(QStringLiteral("font")), QString());
}

void TstLanguage::theListBeginsWithEnglish()
{
    const QVector<LanguageInfo> languages = languageListFrom(m_dir->path());
    QCOMPARE(languages.size(), 1);
    QCOMPARE(languages.first().code, QStringLiteral("en-US"));
    QCOMPARE(languages.first().name, QStringLiteral("English"));
    QCOMPARE(languages.first().info, QStringLiteral("You need to restart to make the language settings take effect!"));
    QCOMPARE(languages.first().title, QStringLiteral("Language"));
}

void TstLanguage::theListHasTheWordsOfTheRestartNoticeInEachLanguage()
{
    QFile file(m_dir->filePath(QStringLiteral("de.xml")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("<language><head><code>de</code><name>D</name></head>"
               "<lux><t src=\"Language\">Sprache</t><t src=\"cancel\">Abbrechen</t></lux></language>");
    file.close();
    const LanguageInfo german = languageListFrom(m_dir->path()).at(1);
    QCOMPARE(german.title, QStringLiteral("Sprache"));
    QCOMPARE(german.accept, QStringLiteral("OK"));
    QCOMPARE(german.reject, QStringLiteral("Abbrechen"));
}

void TstLanguage::theListFollowsTheDirectorysOrder()
{
    for (const char *code : {"ru", "de", "Fr", "it"}) {
        language(code).write(*m_dir);
    }
    writeRaw("notes.txt", "<language><head><code>notes</code></head></language>");
    QCOMPARE(codes(languageListFrom(m_dir->path())).join(QLatin1Char(' ')), QStringLiteral("en-US de Fr it ru"));
}

void TstLanguage::theTwoChineseLanguagesComeNext()
{
    for (const char *code : {"zh-TW", "de", "zh-CN", "ru"}) {
        language(code).write(*m_dir);
    }
    QCOMPARE(codes(languageListFrom(m_dir->path())).join(QLatin1Char(' ')), QStringLiteral("en-US zh-CN zh-TW de ru"));
}

void TstLanguage::oneChineseLanguageAloneIsListed()
{
    language("zh-TW").write(*m_dir);
    QCOMPARE(codes(languageListFrom(m_dir->path())).join(QLatin1Char(' ')), QStringLiteral("en-US zh-TW"));
    QVERIFY(QFile::remove(m_dir->filePath(QStringLiteral("zh-TW.xml"))));
    language("zh-CN").write(*m_dir);
    QCOMPARE(codes(languageListFrom(m_dir->path())).join(QLatin1Char(' ')), QStringLiteral("en-US zh-CN"));
}

void TstLanguage::theProviderIsAddedToTheNotice()
{
    language("de").head("name", "Deutsch").head("info", "Neustart").head("provider", "A. B.").write(*m_dir);
    language("ru").head("name", "R").head("info", "N").write(*m_dir);
    const QVector<LanguageInfo> languages = languageListFrom(m_dir->path());
    QCOMPARE(languages.size(), 3);
    QCOMPARE(languages.at(1).name, QStringLiteral("Deutsch"));
    QCOMPARE(languages.at(1).info, QStringLiteral("Neustart\r\nA. B."));
    QCOMPARE(languages.at(2).info, QStringLiteral("N"));
}

void TstLanguage::aFileThatDoesNotFitItsNameIsLeftOut()
{
    language("de").named("at.xml").write(*m_dir);
    language("fr").named("FR.xml").write(*m_dir);
    writeRaw("it.xml", "<language/>");
    writeRaw(".xml", "<language><head/></language>");
    QCOMPARE(codes(languageListFrom(m_dir->path())), QStringList{QStringLiteral("en-US")});
}

void TstLanguage::filesThatCannotBeReadAreLeftOut()
{
    writeRaw("bad.xml", "<language><head><code>bad</code></head>");
    writeRaw("empty.xml", "");
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("dir.xml")));
    language("de").write(*m_dir);
    QCOMPARE(codes(languageListFrom(m_dir->path())).join(QLatin1Char(' ')), QStringLiteral("en-US de"));
}

void TstLanguage::aMissingDirectoryListsEnglishOnly()
{
    QCOMPARE(codes(languageListFrom(m_dir->filePath(QStringLiteral("absent")))), QStringList{QStringLiteral("en-US")});
}

void TstLanguage::aHugeFileIsReadAndSearchedQuickly()
{
    LanguageFile file = language("de");
    for (int i = 0; i < 100'000; ++i) {
        file.text("Text " + QByteArray::number(i), "T" + QByteArray::number(i));
    }
    file.write(*m_dir);
    load("de");
    for (int i = 0; i < 100'000; ++i) { // by a walk it would be 5,000,000,000 comparisons
        QCOMPARE(::tr(QStringLiteral("TEXT %1").arg(i)), QStringLiteral("T%1").arg(i));
    }
}

void TstLanguage::textsAreLookedUpFromManyThreads()
{
    language("de").text("Open", "X").analyzer("I2C", "ack", "Y").write(*m_dir);
    load("de");
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&wrong] {
            for (int i = 0; i < 1000; ++i) {
                const bool right = ::tr("Open") == QStringLiteral("X") &&
                                   trAnalyzer(QStringLiteral("2 ACK"), QStringLiteral("I2C")) == QStringLiteral("2 Y");
                wrong.fetch_add(right ? 0 : 1, std::memory_order_relaxed);
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    QCOMPARE(wrong.load(), 0);
}

QTEST_GUILESS_MAIN(TstLanguage)
#include "tst_Language.moc"
