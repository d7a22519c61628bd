#include "settings/Config.h"
#include "settings/Globals.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#ifdef Q_OS_UNIX
#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace {

void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        qFatal("no test file");
    }
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly | QIODevice::Text) ? file.readAll() : QByteArray();
}

/// A document with `inside` between the tags of its root.
QByteArray settings(const QByteArray &inside)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?><settings>" + inside + "</settings>";
}

QByteArray global(const QByteArray &inside)
{
    return settings("<global>" + inside + "</global><devices/><analyzers/>");
}

QByteArray nested(int levels)
{
    return settings(QByteArray("<a>").repeated(levels) + QByteArray("</a>").repeated(levels));
}

/// An element "a" with `count` attributes of different names.
QByteArray manyAttributes(int count)
{
    QByteArray tag = "<a";
    for (int i = 0; i < count; ++i) {
        tag += " a" + QByteArray::number(i) + "='>='";
    }
    return tag + "/>";
}

QString value(const char *key)
{
    return globalGet(QString::fromLatin1(key));
}

void put(const char *key, const char *text)
{
    globalSet(QString::fromLatin1(key), QString::fromUtf8(text));
}

} // namespace

class TstConfig : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void theFileLiesInTheDirectoryOfTheProgramsData();
    void loadingCreatesTheDirectory();
    void aFirstStartWritesTheTemplateTheVersionAndEverythingThatWasRead();
    void whatIsSavedIsLoadedAgain();
    void anUnusableFileIsReplacedByTheTemplate_data();
    void anUnusableFileIsReplacedByTheTemplate();
    void aFileOfFiftyMegabytesIsRefusedWithoutBeingRead();
    void aFileThatIsADirectoryIsReplacedByTheTemplate();
    void aMissingFileForgetsTheDocumentBefore();
    void aBadFileStaysUntilTheNextSave();
    void nestingUpToTheLimitIsRead();
    void attributesUpToTheLimitAreRead();
    void equalSignsOutsideOfTagsAreNoAttributes();
    void aVersionThatDiffersInItsFirstThreeNumbersIsReplaced_data();
    void aVersionThatDiffersInItsFirstThreeNumbersIsReplaced();
    void keysOfOlderVersionsStay();

    void missingSectionsAreMade();
    void readingAKeyAddsAnEmptyElement();
    void keysAreSavedInTheOrderOfTheirFirstUse();
    void aSecondElementOfTheSameKeyIsNotLookedAt();
    void settingReplacesTheText();
    void settingAnElementThatHoldsMarkupRemovesAllItsChildren();
    void settingAnElementThatBeginsWithTextLeavesTheMarkupBehindIt();
    void settingATextThatWasWrittenWithEntitiesReplacesAllOfIt();
    void anyTextSurvivesSavingAndLoading_data();
    void anyTextSurvivesSavingAndLoading();
    void charactersThatXmlCannotHoldAreLeftOut();
    void aKeyThatIsNoNameOfAnElementIsIgnored_data();
    void aKeyThatIsNoNameOfAnElementIsIgnored();
    void devicesHaveTheirOwnKeys();

    void analyzersAreStoredByIndex();
    void anAnalyzerPutTwiceIsReplaced();
    void allAnalyzerTextsAreJoinedInDocumentOrder();
    void clearedAnalyzersAreGone();

    void replacingKeepsTheRunningVersionLanguageDirectoryAndUpdateTime();
    void replacingTakesAllOtherKeysFromTheFile();
    void replacingReadsTheViewOptions();
    void replacingRefusesWhatDoesNotParse_data();
    void replacingRefusesWhatDoesNotParse();
    void aRefusedReplacementChangesNothing_data() { replacingRefusesWhatDoesNotParse_data(); }
    void aRefusedReplacementChangesNothing();
    void replacingKeepsTheWindowsPlaceAndSize();
    void anEncodingThatTheFileDeclaresIsReadAndUtf8IsWritten();
    void theViewOptionsAreNumbers_data();
    void theViewOptionsAreNumbers();

    void savingWritesUtf8IndentedByFour();
    void savingTruncatesALongerFile();
    void aSavedFileIsCompleteAndCanBeAppendedTo();
    void savingToAPathThatCannotBeOpenedReportsIt_data();
    void savingToAPathThatCannotBeOpenedReportsIt();
    void aPipeIsNeitherReadNorWritten();
    void aDeviceIsNotWritten();
    void aSaveThatFailsHalfwayLeavesTheOldFile();

    void theBlockEndsBehindTheLineEnds_data();
    void theBlockEndsBehindTheLineEnds();
    void theBlockMustEndInTheFirst32768Bytes();
    void aFileWithoutABlockIsRefused_data();
    void aFileWithoutABlockIsRefused();
    void theBlockOfASavedFileIsTheWholeFile();
    void theBlockOfADataFileEndsAtItsBinaryPart();

private:
    QByteArray saved();

    QTemporaryDir m_dir;
};

void TstConfig::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
}

void TstConfig::init()
{
    QDir(QFileInfo(configPath()).path()).removeRecursively();
    configLoad();
}

QByteArray TstConfig::saved()
{
    const QString path = m_dir.filePath(QStringLiteral("saved.cxset"));
    if (!configSave(path)) {
        qFatal("cannot save");
    }
    return readFile(path);
}

void TstConfig::theFileLiesInTheDirectoryOfTheProgramsData()
{
    const QString data = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    QCOMPARE(configPath(), data + QStringLiteral("/corvan/lux.config"));
}

void TstConfig::loadingCreatesTheDirectory()
{
    QDir(QFileInfo(configPath()).path()).removeRecursively();
    configLoad();
    QVERIFY(QFileInfo(QFileInfo(configPath()).path()).isDir());
    QVERIFY(!QFileInfo::exists(configPath()));
}

void TstConfig::aFirstStartWritesTheTemplateTheVersionAndEverythingThatWasRead()
{
    QVERIFY(value("userLang").isEmpty());
    QVERIFY(deviceGet(QStringLiteral("RV2420"), QStringLiteral("chnVth")).isEmpty());
    QVERIFY(configSave(configPath()));
    QCOMPARE(readFile(configPath()), QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                                "<settings>\n"
                                                "    <global>\n"
                                                "        <version>" LUX_VERSION "</version>\n"
                                                "        <userLang/>\n"
                                                "    </global>\n"
                                                "    <devices>\n"
                                                "        <RV2420>\n"
                                                "            <chnVth/>\n"
                                                "        </RV2420>\n"
                                                "    </devices>\n"
                                                "    <analyzers/>\n"
                                                "</settings>\n"));
}

void TstConfig::whatIsSavedIsLoadedAgain()
{
    put("lastPath", "/home/me/captures");
    deviceSet(QStringLiteral("RV2420"), QStringLiteral("trgPosition"), QStringLiteral("50"));
    analyzerPut(0, QStringLiteral("I2C.dll"), QStringLiteral("p"), QStringLiteral("1"));
    QVERIFY(configSave(configPath()));
    put("lastPath", "changed");
    configLoad();
    QCOMPARE(value("lastPath"), QStringLiteral("/home/me/captures"));
    QCOMPARE(deviceGet(QStringLiteral("RV2420"), QStringLiteral("trgPosition")), QStringLiteral("50"));
    QCOMPARE(analyzersAll(), QStringLiteral("I2C.dll;p;1;"));
}

void TstConfig::anUnusableFileIsReplacedByTheTemplate_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("no markup") << QByteArray("hello");
    QTest::newRow("binary") << QByteArray("\x00\xff\xfe\x80\x01", 5);
    QTest::newRow("cut short") << global("<lastPath>/x</lastPath>").chopped(5);
    QTest::newRow("two roots") << global("<lastPath>/x</lastPath>") + "<settings/>";
    QTest::newRow("another root") << QByteArray("<config><global><lastPath>/x</lastPath></global></config>");
    QTest::newRow("only a declaration") << QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?>");
    QTest::newRow("unknown entity") << global("<lastPath>&x;</lastPath>");
    QTest::newRow("document type") << QByteArray("<!DOCTYPE settings [<!ENTITY a \"/x\">]>") +
                                          "<settings><global><lastPath>&a;</lastPath></global></settings>";
    QTest::newRow("65 levels") << nested(64);
    QTest::newRow("200,000 levels") << nested(200'000);
    QTest::newRow("200,000 levels left open") << settings(QByteArray("<a>").repeated(200'000)).chopped(11);
    QTest::newRow("too many elements") << global(QByteArray("<a/>").repeated(200'001));
    QTest::newRow("257 attributes of one element") << global(manyAttributes(257));
    QTest::newRow("a million attributes of one element") << global(manyAttributes(1'000'000));
    QTest::newRow("a million equal signs in an open tag") << "<settings" + QByteArray(1'000'000, '=');
}

void TstConfig::anUnusableFileIsReplacedByTheTemplate()
{
    QFETCH(QByteArray, bytes);
    writeFile(configPath(), bytes);
    configLoad();
    QCOMPARE(saved(), QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                 "<settings>\n"
                                 "    <global>\n"
                                 "        <version>" LUX_VERSION "</version>\n"
                                 "    </global>\n"
                                 "    <devices/>\n"
                                 "    <analyzers/>\n"
                                 "</settings>\n"));
}

void TstConfig::aFileOfFiftyMegabytesIsRefusedWithoutBeingRead()
{
    writeFile(configPath(), global("<lastPath>" + QByteArray(50'000'000, 'x') + "</lastPath>"));
    configLoad();
    QVERIFY(value("lastPath").isEmpty());
}

void TstConfig::aFileThatIsADirectoryIsReplacedByTheTemplate()
{
    put("lastPath", "/x");
    QVERIFY(QDir().mkpath(configPath()));
    configLoad();
    QVERIFY(value("lastPath").isEmpty());
    QVERIFY(!configSave(configPath()));
}

void TstConfig::aMissingFileForgetsTheDocumentBefore()
{
    put("lastPath", "/x");
    configLoad();
    QVERIFY(value("lastPath").isEmpty());
}

void TstConfig::aBadFileStaysUntilTheNextSave()
{
    writeFile(configPath(), "broken");
    configLoad();
    QCOMPARE(readFile(configPath()), QByteArray("broken"));
    QVERIFY(configSave(configPath()));
    QVERIFY(readFile(configPath()).startsWith("<?xml"));
}

void TstConfig::nestingUpToTheLimitIsRead()
{
    QVERIFY(configReplace(nested(63)));
    QVERIFY(saved().contains("<a/>"));
}

void TstConfig::attributesUpToTheLimitAreRead()
{
    QVERIFY(configReplace(global(manyAttributes(256))));
    QVERIFY(saved().contains("a255="));
}

void TstConfig::equalSignsOutsideOfTagsAreNoAttributes()
{
    const QByteArray signs(1000, '=');
    QVERIFY(configReplace(global("<!-- < it's " + signs + " --><![CDATA[< ' " + signs + "]]><?note it's < " + signs +
                                 " ?><note>/" + signs + "</note>")));
    QCOMPARE(value("note"), QLatin1Char('/') + QString(1000, QLatin1Char('=')));
}

void TstConfig::aVersionThatDiffersInItsFirstThreeNumbersIsReplaced_data()
{
    QTest::addColumn<QByteArray>("stored");
    QTest::addColumn<QByteArray>("kept");
    const QByteArray program(LUX_VERSION);
    QTest::newRow("same") << program << program;
    QTest::newRow("a fourth number") << program + ".99" << program + ".99";
    QTest::newRow("leading zeros") << "0" + program << "0" + program;
    QTest::newRow("older") << QByteArray("1.0.0") << program;
    QTest::newRow("newer") << QByteArray("99.0.0") << program;
    QTest::newRow("fewer numbers") << QByteArray("3") << program;
    QTest::newRow("last number differs") << program + "1" << program;
    QTest::newRow("no numbers") << QByteArray("a.b.c") << program;
    QTest::newRow("absent") << QByteArray() << program;
}

void TstConfig::aVersionThatDiffersInItsFirstThreeNumbersIsReplaced()
{
    QFETCH(QByteArray, stored);
    QFETCH(QByteArray, kept);
    writeFile(configPath(), global("<version>" + stored + "</version>"));
    configLoad();
    QCOMPARE(value("version").toLatin1(), kept);
}

void TstConfig::keysOfOlderVersionsStay()
{
    writeFile(configPath(), global("<version>1.0.0</version><retired>7</retired>"));
    configLoad();
    QVERIFY(saved().contains("<retired>7</retired>"));
}

void TstConfig::missingSectionsAreMade()
{
    QVERIFY(configReplace("<settings/>"));
    QVERIFY(value("any").isEmpty());
    QVERIFY(deviceGet(QStringLiteral("RV2420"), QStringLiteral("any")).isEmpty());
    QVERIFY(analyzersAll().isEmpty());
    analyzersClear();
    put("any", "1");
    deviceSet(QStringLiteral("RV2420"), QStringLiteral("any"), QStringLiteral("2"));
    analyzerPut(0, QStringLiteral("f"), QStringLiteral("p"), QStringLiteral("t"));
    QCOMPARE(value("any"), QStringLiteral("1"));
    QCOMPARE(deviceGet(QStringLiteral("RV2420"), QStringLiteral("any")), QStringLiteral("2"));
    QCOMPARE(analyzersAll(), QStringLiteral("f;p;t;"));
}

void TstConfig::readingAKeyAddsAnEmptyElement()
{
    QVERIFY(!saved().contains("devModel"));
    QVERIFY(value("devModel").isEmpty());
    QVERIFY(deviceGet(QStringLiteral("RV2520"), QStringLiteral("chnTrig")).isEmpty());
    const QByteArray text = saved();
    QVERIFY(text.contains("        <devModel/>\n"));
    QVERIFY(text.contains("        <RV2520>\n            <chnTrig/>\n        </RV2520>\n"));
    QVERIFY(value("devModel").isEmpty());
    QCOMPARE(saved(), text);
}

void TstConfig::keysAreSavedInTheOrderOfTheirFirstUse()
{
    (void)value("zebra");
    (void)value("ape");
    put("zebra", "1");
    const QByteArray text = saved();
    QVERIFY(text.indexOf("<version>") < text.indexOf("<zebra>"));
    QVERIFY(text.indexOf("<zebra>1</zebra>") > 0);
    QVERIFY(text.indexOf("<zebra>") < text.indexOf("<ape/>"));
}

void TstConfig::aSecondElementOfTheSameKeyIsNotLookedAt()
{
    QVERIFY(configReplace(global("<k>1</k><k>2</k>")));
    QCOMPARE(value("k"), QStringLiteral("1"));
    put("k", "3");
    QVERIFY(saved().contains("<k>2</k>"));
}

void TstConfig::settingReplacesTheText()
{
    put("k", "one");
    put("k", "two");
    QCOMPARE(value("k"), QStringLiteral("two"));
    put("k", "");
    QCOMPARE(value("k"), QString());
}

void TstConfig::settingAnElementThatHoldsMarkupRemovesAllItsChildren()
{
    QVERIFY(configReplace(global("<k><b>x</b>y<c/></k>")));
    QCOMPARE(value("k"), QStringLiteral("xy"));
    put("k", "z");
    QVERIFY(saved().contains("        <k>z</k>\n"));
    QVERIFY(configReplace(global("<k><![CDATA[x]]>y</k>")));
    put("k", "z");
    QVERIFY(saved().contains("        <k>z</k>\n"));
}

void TstConfig::settingAnElementThatBeginsWithTextLeavesTheMarkupBehindIt()
{
    QVERIFY(configReplace(global("<k>x<b>y</b></k>")));
    put("k", "z");
    QCOMPARE(value("k"), QStringLiteral("zy"));
    QVERIFY(configReplace(global("<k>y<![CDATA[q]]></k>")));
    put("k", "z");
    QCOMPARE(value("k"), QStringLiteral("zq"));
}

void TstConfig::settingATextThatWasWrittenWithEntitiesReplacesAllOfIt()
{
    QVERIFY(configReplace(global("<k>a&amp;b&#65;c&lt;</k>")));
    QCOMPARE(value("k"), QStringLiteral("a&bAc<"));
    put("k", "z");
    QCOMPARE(value("k"), QStringLiteral("z"));
    QVERIFY(configReplace(global("<k>" + QByteArray("a&amp;b&#65;\n").repeated(100'000) + "</k>")));
    put("k", "z");
    QCOMPARE(value("k"), QStringLiteral("z"));
}

void TstConfig::anyTextSurvivesSavingAndLoading_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("markup") << QStringLiteral("<b>&amp;</b> ]]> \"quoted\" 'single' <!-- -->");
    QTest::newRow("end of the document") << QStringLiteral("</settings>");
    QTest::newRow("line ends") << QStringLiteral("a\r\nb\nc\rd\te");
    QTest::newRow("blanks around") << QStringLiteral("  a  ");
    QTest::newRow("other scripts") << QString::fromUtf8("Kanal µ 通道 \xF0\x9F\x98\x80");
    QTest::newRow("long") << QString(100'000, QLatin1Char('x'));
}

void TstConfig::anyTextSurvivesSavingAndLoading()
{
    QFETCH(QString, text);
    globalSet(QStringLiteral("k"), text);
    QVERIFY(configSave(configPath()));
    configLoad();
    QCOMPARE(value("k"), text);
}

void TstConfig::charactersThatXmlCannotHoldAreLeftOut()
{
    const QChar lowHalf(0xDE00);
    const QChar highHalf(0xD83D);
    globalSet(QStringLiteral("k"), QStringLiteral("a\x01\x1F") + QChar(0) + lowHalf + QLatin1Char('b') + QChar(0xFFFE) +
                                       QChar(0xFFFF) + QLatin1Char('c') + highHalf);
    QCOMPARE(value("k"), QStringLiteral("abc"));
    QVERIFY(configSave(configPath()));
    configLoad();
    QCOMPARE(value("k"), QStringLiteral("abc"));
}

void TstConfig::aKeyThatIsNoNameOfAnElementIsIgnored_data()
{
    QTest::addColumn<QString>("key");
    QTest::newRow("empty") << QString();
    QTest::newRow("blank inside") << QStringLiteral("a b");
    QTest::newRow("digit first") << QStringLiteral("1a");
    QTest::newRow("sign") << QStringLiteral("+PulseWidth");
    QTest::newRow("markup") << QStringLiteral("a><b");
    QTest::newRow("prefix") << QStringLiteral("a:b");
}

void TstConfig::aKeyThatIsNoNameOfAnElementIsIgnored()
{
    QFETCH(QString, key);
    const QByteArray before = saved();
    globalSet(key, QStringLiteral("x"));
    deviceSet(key, QStringLiteral("k"), QStringLiteral("x"));
    QCOMPARE(globalGet(key), QString());
    QCOMPARE(deviceGet(key, QStringLiteral("k")), QString());
    QCOMPARE(saved(), before);
}

void TstConfig::devicesHaveTheirOwnKeys()
{
    deviceSet(QStringLiteral("RV2420"), QStringLiteral("k"), QStringLiteral("1"));
    deviceSet(QStringLiteral("RV2520"), QStringLiteral("k"), QStringLiteral("2"));
    QCOMPARE(deviceGet(QStringLiteral("RV2420"), QStringLiteral("k")), QStringLiteral("1"));
    QCOMPARE(deviceGet(QStringLiteral("RV2520"), QStringLiteral("k")), QStringLiteral("2"));
    QCOMPARE(value("k"), QString());
}

void TstConfig::analyzersAreStoredByIndex()
{
    analyzerPut(0, QStringLiteral("I2C.dll"), QStringLiteral("0,1"), QStringLiteral("2"));
    analyzerPut(1, QStringLiteral("UART.dll"), QString(), QString());
    QVERIFY(saved().contains("    <analyzers>\n"
                             "        <item0>\n"
                             "            <fileName>I2C.dll</fileName>\n"
                             "            <parameters>0,1</parameters>\n"
                             "            <format>2</format>\n"
                             "        </item0>\n"
                             "        <item1>\n"));
}

void TstConfig::anAnalyzerPutTwiceIsReplaced()
{
    analyzerPut(0, QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c"));
    analyzerPut(0, QStringLiteral("d"), QStringLiteral("e"), QStringLiteral("f"));
    QCOMPARE(analyzersAll(), QStringLiteral("d;e;f;"));
}

void TstConfig::allAnalyzerTextsAreJoinedInDocumentOrder()
{
    QVERIFY(configReplace(settings("<analyzers><item1><fileName>b</fileName><format/></item1><!-- c -->"
                                   "<item0><fileName>a</fileName><parameters>1;2</parameters></item0></analyzers>")));
    QCOMPARE(analyzersAll(), QStringLiteral("b;;a;1;2;"));
}

void TstConfig::clearedAnalyzersAreGone()
{
    analyzerPut(0, QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c"));
    analyzerPut(1, QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c"));
    analyzersClear();
    QCOMPARE(analyzersAll(), QString());
    QVERIFY(saved().contains("    <analyzers/>\n"));
}

void TstConfig::replacingKeepsTheRunningVersionLanguageDirectoryAndUpdateTime()
{
    put("userLang", "de");
    put("lastPath", "/mine");
    put("lastUpdate", "2026-01-02_03:04:05");
    QVERIFY(configReplace(global("<version>1.1.1</version><userLang>zh-CN</userLang><lastPath>/theirs</lastPath>"
                                 "<lastUpdate>2020-01-01_00:00:00</lastUpdate>")));
    QCOMPARE(value("version"), QStringLiteral(LUX_VERSION));
    QCOMPARE(value("userLang"), QStringLiteral("de"));
    QCOMPARE(value("lastPath"), QStringLiteral("/mine"));
    QCOMPARE(value("lastUpdate"), QStringLiteral("2026-01-02_03:04:05"));
}

void TstConfig::replacingTakesAllOtherKeysFromTheFile()
{
    put("disAutoUpdate", "0");
    put("devModel", "3");
    put("mine", "1");
    QVERIFY(configReplace(global("<disAutoUpdate>1</disAutoUpdate><devModel>8</devModel>")));
    QCOMPARE(value("disAutoUpdate"), QStringLiteral("1"));
    QCOMPARE(value("devModel"), QStringLiteral("8"));
    QCOMPARE(value("mine"), QString());
}

void TstConfig::replacingReadsTheViewOptions()
{
    viewState = 0;
    disAnimateZoom = false;
    colorWaveform = false;
    QVERIFY(configReplace(global("<disAnimateZoom>1</disAnimateZoom><viewState>2</viewState>"
                                 "<colorWaveform>1</colorWaveform>")));
    QCOMPARE(viewState, 2);
    QVERIFY(disAnimateZoom);
    QVERIFY(colorWaveform);
    QVERIFY(configReplace(global("")));
    QCOMPARE(viewState, 0);
    QVERIFY(!disAnimateZoom);
    QVERIFY(!colorWaveform);
}

void TstConfig::replacingRefusesWhatDoesNotParse_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("zeros") << QByteArray(100, '\0');
    QTest::newRow("cut short") << global("").chopped(1);
    QTest::newRow("binary part left on") << global("") + "\ncxdat";
    QTest::newRow("another root") << QByteArray("<global/>");
    QTest::newRow("deep") << nested(200'000);
    QTest::newRow("entity bomb") << QByteArray("<!DOCTYPE s [<!ENTITY a \"aaaaaaaaaa\">"
                                               "<!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;\">"
                                               "<!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;\">]>") +
                                        settings("<global><k>&c;</k></global>");
    QTest::newRow("seventeen megabytes") << global("<k>" + QByteArray(17 * 1024 * 1024, 'x') + "</k>");
}

void TstConfig::replacingRefusesWhatDoesNotParse()
{
    QFETCH(QByteArray, bytes);
    QVERIFY(!configReplace(bytes));
}

void TstConfig::aRefusedReplacementChangesNothing()
{
    QFETCH(QByteArray, bytes);
    put("chnShowName3", "MOSI");
    put("viewState", "2");
    viewOptionsLoad();
    const QByteArray before = saved();
    QVERIFY(!configReplace(bytes));
    QCOMPARE(saved(), before);
    QCOMPARE(viewState, 2);
    put("viewState", "0");
    viewOptionsLoad();
}

void TstConfig::replacingKeepsTheWindowsPlaceAndSize()
{
    put("windowPosition", "10,20,800,600");
    put("windowMaximized", "0");
    QVERIFY(configReplace(global("<windowPosition>0,0,1,1</windowPosition><windowMaximized>1</windowMaximized>"
                                 "<ratioSasPix>7</ratioSasPix>")));
    QCOMPARE(value("windowPosition"), QStringLiteral("10,20,800,600"));
    QCOMPARE(value("windowMaximized"), QStringLiteral("0"));
    QCOMPARE(value("ratioSasPix"), QStringLiteral("7"));
}

void TstConfig::anEncodingThatTheFileDeclaresIsReadAndUtf8IsWritten()
{
    QVERIFY(
        configReplace("<?xml version='1.0' encoding='ISO-8859-1'?><settings><global><k>\xB5</k></global></settings>"));
    QCOMPARE(value("k"), QString(QChar(0xB5)));
    const QByteArray text = saved();
    QVERIFY(text.startsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<settings>"));
    QVERIFY(text.contains("<k>\xC2\xB5</k>"));
    QVERIFY(configReplace(text));
    QCOMPARE(value("k"), QString(QChar(0xB5)));
}

void TstConfig::theViewOptionsAreNumbers_data()
{
    QTest::addColumn<QByteArray>("stored");
    QTest::addColumn<int>("state");
    QTest::addColumn<bool>("flag");
    QTest::newRow("absent") << QByteArray() << 0 << false;
    QTest::newRow("zero") << QByteArray("0") << 0 << false;
    QTest::newRow("one") << QByteArray("1") << 1 << true;
    QTest::newRow("two") << QByteArray("2") << 2 << true;
    QTest::newRow("words") << QByteArray("yes") << 0 << false;
    QTest::newRow("too large") << QByteArray("99999999999999999999") << 0 << false;
}

void TstConfig::theViewOptionsAreNumbers()
{
    QFETCH(QByteArray, stored);
    QFETCH(int, state);
    QFETCH(bool, flag);
    put("viewState", stored);
    put("disAnimateZoom", stored);
    put("colorWaveform", stored);
    viewOptionsLoad();
    QCOMPARE(viewState, state);
    QCOMPARE(disAnimateZoom, flag);
    QCOMPARE(colorWaveform, flag);
}

void TstConfig::savingWritesUtf8IndentedByFour()
{
    put("chnShowName0", "µ");
    QVERIFY(saved().contains("\n    <global>\n        <version>"));
    QVERIFY(saved().contains("        <chnShowName0>\xC2\xB5</chnShowName0>\n"));
}

void TstConfig::savingTruncatesALongerFile()
{
    const QString path = m_dir.filePath(QStringLiteral("long.cxset"));
    writeFile(path, QByteArray(100'000, 'x'));
    QVERIFY(configSave(path));
    QCOMPARE(readFile(path), saved());
}

void TstConfig::aSavedFileIsCompleteAndCanBeAppendedTo()
{
    const QString path = m_dir.filePath(QStringLiteral("data.cxdat"));
    QVERIFY(configSave(path));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Append));
    QCOMPARE(file.write("cxdat"), qint64{5});
    file.close();
    QVERIFY(readFile(path).endsWith("</settings>\ncxdat"));
}

void TstConfig::savingToAPathThatCannotBeOpenedReportsIt_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("no path") << QString();
    QTest::newRow("directory") << QDir::tempPath();
    QTest::newRow("absent directory") << m_dir.filePath(QStringLiteral("absent/x.cxset"));
    QTest::newRow("file as a directory") << m_dir.filePath(QStringLiteral("file/x.cxset"));
}

void TstConfig::savingToAPathThatCannotBeOpenedReportsIt()
{
    QFETCH(QString, path);
    writeFile(m_dir.filePath(QStringLiteral("file")), "x");
    QVERIFY(!configSave(path));
}

void TstConfig::aPipeIsNeitherReadNorWritten()
{
#ifdef Q_OS_UNIX
    const QString path = m_dir.filePath(QStringLiteral("pipe.cxset"));
    QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    QVERIFY(!configSave(path)); // waiting for a reader would never end
    QByteArray block;
    QVERIFY(!configHeadOfFile(path, block));
    QVERIFY(!QFileInfo(path).isFile() && QFileInfo::exists(path));
    QFile::remove(configPath());
    QCOMPARE(mkfifo(QFile::encodeName(configPath()).constData(), 0600), 0);
    configLoad();
    QCOMPARE(value("version"), QStringLiteral(LUX_VERSION));
    QVERIFY(!configSave(configPath()));
    QVERIFY(QFile::remove(configPath()));
#else
    QSKIP("this system has no such files");
#endif
}

void TstConfig::aDeviceIsNotWritten()
{
    const QString full = QStringLiteral("/dev/full");
    if (!QFileInfo::exists(full)) {
        QSKIP("this system has no full device");
    }
    QVERIFY(!configSave(full));
    const QString link = m_dir.filePath(QStringLiteral("link"));
    QVERIFY(QFile::link(full, link));
    QVERIFY(!configSave(link));
}

void TstConfig::aSaveThatFailsHalfwayLeavesTheOldFile()
{
#ifdef Q_OS_UNIX
    const QString path = m_dir.filePath(QStringLiteral("kept.cxset"));
    writeFile(path, "old");
    globalSet(QStringLiteral("k"), QString(100'000, QLatin1Char('x')));
    rlimit before{};
    QCOMPARE(getrlimit(RLIMIT_FSIZE, &before), 0);
    rlimit small = before;
    small.rlim_cur = 50'000; // what a disk with as much room left does
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    QCOMPARE(setrlimit(RLIMIT_FSIZE, &small), 0);
    const bool done = configSave(path);
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    QVERIFY(!done);
    QCOMPARE(readFile(path), QByteArray("old"));
    QVERIFY(configSave(path));
    QVERIFY(readFile(path).size() > 100'000);
#else
    QSKIP("needs a limit on the size of files");
#endif
}

void TstConfig::theBlockEndsBehindTheLineEnds_data()
{
    QTest::addColumn<QByteArray>("behind");
    QTest::addColumn<int>("lineEnds");
    QTest::newRow("nothing") << QByteArray() << 0;
    QTest::newRow("line feed") << QByteArray("\n") << 1;
    QTest::newRow("carriage return and line feed") << QByteArray("\r\n") << 2;
    QTest::newRow("many") << QByteArray("\n\r\r\n\n\n") << 6;
    QTest::newRow("binary part") << QByteArray("\ncxdat\n") << 1;
    QTest::newRow("blank") << QByteArray("\n \n") << 1;
    QTest::newRow("zero") << QByteArray("\0\n", 2) << 0;
    QTest::newRow("a second end") << QByteArray("\nx</settings>\n") << 1;
}

void TstConfig::theBlockEndsBehindTheLineEnds()
{
    QFETCH(QByteArray, behind);
    QFETCH(int, lineEnds);
    const QByteArray document = global("<k>1</k>");
    const QString path = m_dir.filePath(QStringLiteral("block.cxdat"));
    writeFile(path, document + behind);
    QByteArray block("left over");
    QVERIFY(configHeadOfFile(path, block));
    QCOMPARE(block, document + behind.left(lineEnds));
}

void TstConfig::theBlockMustEndInTheFirst32768Bytes()
{
    const QByteArray end("</settings>");
    const QByteArray fits = QByteArray(32'768 - end.size(), 'x') + end;
    QCOMPARE(configHeadSize(fits), 32'768);
    QCOMPARE(configHeadSize(fits + "\n\n"), 32'768);
    QCOMPARE(configHeadSize("x" + fits), 0);
    const QByteArray manyLineEnds = "<settings></settings>" + QByteArray(40'000, '\n');
    QCOMPARE(configHeadSize(manyLineEnds), 32'768);

    const QString path = m_dir.filePath(QStringLiteral("limit.cxset"));
    QByteArray block;
    writeFile(path, fits + "\ncxdat");
    QVERIFY(configHeadOfFile(path, block));
    QCOMPARE(block.size(), 32'768);
    writeFile(path, "x" + fits);
    QVERIFY(!configHeadOfFile(path, block));
    QVERIFY(block.isEmpty());
}

void TstConfig::aFileWithoutABlockIsRefused_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("no end tag") << QByteArray("<settings>");
    QTest::newRow("end tag first") << QByteArray("</settings>\n");
    QTest::newRow("end tag cut") << QByteArray("<settings></settings");
    QTest::newRow("other case") << QByteArray("<settings></Settings>");
    QTest::newRow("blank in the end tag") << QByteArray("<settings></settings >");
}

void TstConfig::aFileWithoutABlockIsRefused()
{
    QFETCH(QByteArray, bytes);
    const QString path = m_dir.filePath(QStringLiteral("none.cxset"));
    writeFile(path, bytes);
    QByteArray block("left over");
    QVERIFY(!configHeadOfFile(path, block));
    QVERIFY(block.isEmpty());
    block = "left over";
    QVERIFY(!configHeadOfFile(m_dir.filePath(QStringLiteral("absent.cxset")), block));
    QVERIFY(block.isEmpty());
    QVERIFY(!configHeadOfFile(m_dir.path(), block));
}

void TstConfig::theBlockOfASavedFileIsTheWholeFile()
{
    put("k", "</settings>");
    const QString path = m_dir.filePath(QStringLiteral("whole.cxset"));
    QVERIFY(configSave(path));
    QByteArray block;
    QVERIFY(configHeadOfFile(path, block));
    QCOMPARE(block.size(), QFileInfo(path).size());
    QVERIFY(configReplace(block));
    QCOMPARE(value("k"), QStringLiteral("</settings>"));
}

void TstConfig::theBlockOfADataFileEndsAtItsBinaryPart()
{
    const QByteArray block = saved();
    QByteArray file = block + "cxdat";
    file.append(35, '\0');
    QCOMPARE(configHeadSize(file), block.size());
}

QTEST_GUILESS_MAIN(TstConfig)
#include "tst_Config.moc"
