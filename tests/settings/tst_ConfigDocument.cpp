#include "settings/Config.h"
#include "settings/ConfigDocument.h"

#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

class TstConfigDocument : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }
    void init()
    {
        QFile::remove(configPath());
        configLoad();
    }

    void readingAddsNoElements();
    void aPipeIsNotWaitedFor();
    void aCopyDoesNotFollowTheRunningDocument();
    void whatIsTakenDoesNotFollowTheRunningDocument();
    void aBlockIsWhatASaveWrites();
    void aLongBlockLosesWhatMeansNothing();
    void aBlockThatIsReadCanBeWrittenAgain_data();
    void aBlockThatIsReadCanBeWrittenAgain();
    void theOrderOfAnAnalyzersPartsSurvives();
    void aBlockThatIsTooLongNamesWhatIsLongest();
    void aBlockThatItsReaderWouldCutIsNone();

private:
    static ConfigDocument of(const QByteArray &inside)
    {
        return ConfigDocument::parse("<settings>" + inside + "</settings>").value();
    }
    static QString text(int length) { return QString(length, QLatin1Char('n')); }
};

void TstConfigDocument::readingAddsNoElements()
{
    const ConfigDocument document = of("<global><devModel>9</devModel></global>");
    QCOMPARE(document.global(QStringLiteral("devModel")), QStringLiteral("9"));
    QCOMPARE(document.global(QStringLiteral("viewState")), QString());
    QVERIFY(!document.block()->contains("viewState"));
    QCOMPARE(of("").global(QStringLiteral("devModel")), QString());
}

void TstConfigDocument::aPipeIsNotWaitedFor()
{
#ifdef Q_OS_UNIX
    const QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("pipe"));
    QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    QVERIFY(!ConfigDocument::load(path));
#endif
    QVERIFY(!ConfigDocument::load(QStringLiteral("/dev/zero")));
}

void TstConfigDocument::aCopyDoesNotFollowTheRunningDocument()
{
    globalSet(QStringLiteral("k"), QStringLiteral("before"));
    const ConfigDocument copy = configCopy();
    globalSet(QStringLiteral("k"), QStringLiteral("after"));
    QCOMPARE(copy.global(QStringLiteral("k")), QStringLiteral("before"));
}

void TstConfigDocument::whatIsTakenDoesNotFollowTheRunningDocument()
{
    const ConfigDocument theirs = of("<global><k>1</k></global>");
    configTake(theirs);
    globalSet(QStringLiteral("k"), QStringLiteral("2"));
    QCOMPARE(theirs.global(QStringLiteral("k")), QStringLiteral("1"));
    configTake(theirs);
    QCOMPARE(globalGet(QStringLiteral("k")), QStringLiteral("1"));
}

void TstConfigDocument::aBlockIsWhatASaveWrites()
{
    globalSet(QStringLiteral("empty"), QString());
    const QTemporaryDir dir;
    QVERIFY(configSave(dir.filePath(QStringLiteral("a"))));
    QFile file(dir.filePath(QStringLiteral("a")));
    QVERIFY(file.open(QIODevice::ReadOnly | QIODevice::Text));
    QCOMPARE(configCopy().block().value(), file.readAll());
}

void TstConfigDocument::aLongBlockLosesWhatMeansNothing()
{
    for (int i = 0; i < 1000; ++i) { // some 30 bytes each
        globalSet(QStringLiteral("lookedAt%1").arg(i), QString());
        deviceSet(QStringLiteral("RV2420"), QStringLiteral("lookedAt%1").arg(i), QString());
    }
    globalSet(QStringLiteral("chnShowName3"), QStringLiteral("MOSI"));
    globalSet(QStringLiteral("chnShowMultip"), QStringLiteral("1,1,1"));
    globalSet(QStringLiteral("lastPath"), QStringLiteral("/mine"));
    deviceSet(QStringLiteral("RV2420"), QStringLiteral("chnTrig"), QStringLiteral("0,0,3"));
    deviceSet(QStringLiteral("RV2420"), QStringLiteral("chnEnable"), QStringLiteral("1,1,1"));
    const QByteArray block = configCopy().block().value();
    QVERIFY(block.size() < 1000);
    QCOMPARE(configHeadSize(block), block.size());
    QVERIFY(block.contains("    <global>\n        ")); // what fits indented stays so
    QVERIFY(block.contains("<chnShowName3>MOSI</chnShowName3>"));
    QVERIFY(block.contains("<chnTrig>0,0,3</chnTrig>"));
    for (const char *gone : {"lookedAt", "chnShowMultip", "lastPath", "chnEnable"}) {
        QVERIFY2(!block.contains(gone), gone);
    }
    QVERIFY(ConfigDocument::parse(block).has_value());
    QCOMPARE(globalGet(QStringLiteral("lastPath")), QStringLiteral("/mine")); // the running document keeps all
}

void TstConfigDocument::aBlockThatIsReadCanBeWrittenAgain_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::newRow("one long value") << QByteArray("<settings><global><k>");
    QTest::newRow("many values in one line")
        << "<settings><global>" + QByteArray("<a>1</a>").repeated(3000) + QByteArray("<k>");
    QTest::newRow("many empty values") << "<settings><global>" + QByteArray("<a/>").repeated(6000) + QByteArray("<k>");
}

void TstConfigDocument::aBlockThatIsReadCanBeWrittenAgain()
{
    QFETCH(QByteArray, before);
    const QByteArray after = "</k></global><devices/><analyzers/></settings>\n";
    const QByteArray whole = before + QByteArray(configHeadLimit - before.size() - after.size(), 'x') + after;
    QCOMPARE(configHeadSize(whole), configHeadLimit);
    globalSet(QStringLiteral("lastPath"), text(200));
    QVERIFY(configReplace(whole));
    for (int chn = 0; chn < 32; ++chn) { // what the program looks at, and so adds
        globalGet(QStringLiteral("chnShowName%1").arg(chn));
    }
    const auto block = configCopy().block();
    // The declaration and "version" are new to it: who fills the block to its last byte has no room for them.
    const QByteArray shorter = before + QByteArray(configHeadLimit - before.size() - after.size() - 100, 'x') + after;
    QVERIFY(configReplace(shorter));
    QVERIFY(configCopy().block().has_value());
    QVERIFY(!block || configHeadSize(*block) == block->size());
}

void TstConfigDocument::theOrderOfAnAnalyzersPartsSurvives()
{
    analyzerPut(0, QStringLiteral("I2C.dll"), QString(), QStringLiteral("hex"));
    globalSet(QStringLiteral("k"), text(32'000));
    for (int i = 0; i < 100; ++i) {
        globalGet(QStringLiteral("lookedAt%1").arg(i));
    }
    const QString all = analyzersAll();
    QVERIFY(configReplace(configCopy().block().value()));
    QCOMPARE(analyzersAll(), all);
}

void TstConfigDocument::aBlockThatIsTooLongNamesWhatIsLongest()
{
    globalSet(QStringLiteral("chnShowName3"), text(20'000));
    deviceSet(QStringLiteral("RV2420"), QStringLiteral("chnLevel"), text(5'000));
    analyzerPut(7, QStringLiteral("I2C.dll"), text(10'000), QString());
    const ConfigDocument document = configCopy();
    QVERIFY(!document.block());
    QCOMPARE(document.longest(3),
             (QStringList{QStringLiteral("chnShowName3"), QStringLiteral("item7"), QStringLiteral("chnLevel")}));
    QCOMPARE(of("").longest(3), QStringList());
}

void TstConfigDocument::aBlockThatItsReaderWouldCutIsNone()
{
    QVERIFY(!of("<global><k><settings>1</settings></k></global>").block()); // an end tag before the end
    QVERIFY(of("<!-- </settings> --><global/>").block().has_value());
}

QTEST_GUILESS_MAIN(TstConfigDocument)
#include "tst_ConfigDocument.moc"
