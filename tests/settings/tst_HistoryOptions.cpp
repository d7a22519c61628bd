#include "settings/Config.h"
#include "settings/ConfigDocument.h"
#include "settings/HistoryOptions.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QTest>

namespace {

QString at(const QByteArray &name)
{
    return QDir::rootPath() + QStringLiteral("tmp/") + QString::fromLatin1(name);
}

} // namespace

class TstHistoryOptions : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }
    void init();

    void withoutKeysTheDefaultsHold();
    void whatIsStoredIsReadAgain();
    void aKeyOutOfRangeGivesItsDefault_data();
    void aKeyOutOfRangeGivesItsDefault();
    void theFileOpenedLastComesFirst();
    void anOldFileThatIsOpenedAgainMovesToTheFront();
    void onlyTheLastTenFilesStay();
    void aPathMayHoldAnything();
    void whatIsNoPathIsPassedOver();
    void somebodysFileChangesNeither();
    void theListOfFilesIsNotPassedOn();
};

void TstHistoryOptions::init()
{
    QFile::remove(configPath());
    configLoad();
}

void TstHistoryOptions::withoutKeysTheDefaultsHold()
{
    QCOMPARE(HistoryOptions::stored(), (HistoryOptions{KeepCaptures::OfInstruments, 20, 2}));
    QVERIFY(RecentFiles::paths().isEmpty());
}

void TstHistoryOptions::whatIsStoredIsReadAgain()
{
    for (const auto &options :
         {HistoryOptions{KeepCaptures::None, 1, 999}, HistoryOptions{KeepCaptures::All, 999, 1}}) {
        options.store();
        QCOMPARE(HistoryOptions::stored(), options);
    }
}

void TstHistoryOptions::aKeyOutOfRangeGivesItsDefault_data()
{
    QTest::addColumn<QString>("value");
    for (const char *value : {"-1", "1000", "99999999999", "x", "1.5"}) {
        QTest::newRow(value) << QString::fromLatin1(value);
    }
}

void TstHistoryOptions::aKeyOutOfRangeGivesItsDefault()
{
    QFETCH(QString, value);
    for (const char *key : {"keepCaptures", "historyCaptures", "historyGigabytes"}) {
        globalSet(QLatin1String(key), value);
    }
    QCOMPARE(HistoryOptions::stored(), HistoryOptions{});
}

void TstHistoryOptions::theFileOpenedLastComesFirst()
{
    RecentFiles::add(at("a.cxdat"));
    RecentFiles::add(at("b.cxdat"));
    QCOMPARE(RecentFiles::paths(), QStringList({at("b.cxdat"), at("a.cxdat")}));
    RecentFiles::remove(at("b.cxdat"));
    QCOMPARE(RecentFiles::paths(), QStringList(at("a.cxdat")));
}

void TstHistoryOptions::anOldFileThatIsOpenedAgainMovesToTheFront()
{
    for (const char *name : {"a.cxdat", "b.cxdat", "a.cxdat"}) {
        RecentFiles::add(at(name));
    }
    QCOMPARE(RecentFiles::paths(), QStringList({at("a.cxdat"), at("b.cxdat")}));
}

void TstHistoryOptions::onlyTheLastTenFilesStay()
{
    for (int i = 0; i < 12; ++i) {
        RecentFiles::add(at(QByteArray::number(i) + ".cxdat"));
    }
    QCOMPARE(RecentFiles::paths().size(), RecentFiles::most);
    QCOMPARE(RecentFiles::paths().constFirst(), at("11.cxdat"));
    QCOMPARE(RecentFiles::paths().constLast(), at("2.cxdat"));
}

void TstHistoryOptions::aPathMayHoldAnything()
{
    const QString path = at("a, b%2C;<&>\n") + QStringLiteral("\u00e4\u6355.cxdat");
    RecentFiles::add(path);
    RecentFiles::add(at("b.cxdat"));
    QVERIFY(configSave(configPath()));
    configLoad();
    QCOMPARE(RecentFiles::paths(), QStringList({at("b.cxdat"), path}));
}

void TstHistoryOptions::whatIsNoPathIsPassedOver()
{
    globalSet(QStringLiteral("recentFiles"), QStringLiteral(",,relative.cxdat,%1,%1,%").arg(at("a.cxdat")));
    QCOMPARE(RecentFiles::paths(), QStringList(at("a.cxdat")));
}

void TstHistoryOptions::somebodysFileChangesNeither()
{
    const HistoryOptions options{KeepCaptures::None, 7, 3};
    options.store();
    RecentFiles::add(at("mine.cxdat"));
    QVERIFY(configReplace("<settings><global><keepCaptures>1</keepCaptures><historyCaptures>1</historyCaptures>"
                          "<historyGigabytes>1</historyGigabytes><recentFiles>/tmp/theirs.cxdat</recentFiles>"
                          "</global><devices/><analyzers/></settings>"));
    QCOMPARE(HistoryOptions::stored(), options);
    QCOMPARE(RecentFiles::paths(), QStringList(at("mine.cxdat")));
}

void TstHistoryOptions::theListOfFilesIsNotPassedOn()
{
    RecentFiles::add(at("secret.cxdat"));
    QVERIFY(!configCopy().block().value().contains("secret"));
    QCOMPARE(RecentFiles::paths().size(), 1);
}

QTEST_GUILESS_MAIN(TstHistoryOptions)
#include "tst_HistoryOptions.moc"
