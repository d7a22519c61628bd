#include "settings/Config.h"
#include "settings/Language.h"

#include <QDir>
#include <QFileInfo>
#include <QLocale>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <array>

namespace {

const QString model = QStringLiteral("RV2520");

void put(const char *key, const QString &text)
{
    globalSet(QString::fromLatin1(key), text);
}

void putDevice(const char *key, const char *text)
{
    deviceSet(model, QString::fromLatin1(key), QString::fromLatin1(text));
}

QString device(const char *key)
{
    return deviceGet(model, QString::fromLatin1(key));
}

} // namespace

class TstConfigValues : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void aListIsSplitAtCommas_data();
    void aListIsSplitAtCommas();
    void anEmptyListLeavesTheArrayAlone();
    void noMoreThanTheCapacityIsStored();
    void aListOfFiftyMegabytesIsReadInOnePass_data();
    void aListOfFiftyMegabytesIsReadInOnePass();
    void aBooleanIsTrueUnlessItIsZero();
    void listsAreWrittenWithoutBlanks();

    void enabledChannelsKeepTheDefaultsThatTheTextDoesNotReach();
    void enabledChannelsAreWrittenAndReadPerModelAndKind();
    void aTriggerKindAboveFourReadsAsNone_data();
    void aTriggerKindAboveFourReadsAsNone();
    void triggersAreWrittenAndReadPerModelAndKind();

    void theDisplayOrderIsAPermutation_data();
    void theDisplayOrderIsAPermutation();
    void theDisplayOrderIsWrittenAndRead();
    void theHeightFactorIsOneOfFour_data();
    void theHeightFactorIsOneOfFour();
    void theHeightFactorsAreWrittenAndRead();
    void aCountOfNoChannelsGivesAnEmptyList();
    void aChannelHasItsStoredNameOrTheDefaultOne();
    void theDefaultNameOfAChannelIsTranslated();
    void theTagPositionsAreThoseStored_data();
    void theTagPositionsAreThoseStored();
};

void TstConfigValues::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
}

void TstConfigValues::init()
{
    QDir(QFileInfo(configPath()).path()).removeRecursively();
    configLoad();
}

void TstConfigValues::aListIsSplitAtCommas_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QVector<int>>("numbers");
    QTest::newRow("one") << QStringLiteral("7") << QVector<int>{7};
    QTest::newRow("three") << QStringLiteral("1,-2,3") << QVector<int>{1, -2, 3};
    QTest::newRow("empty parts are left out") << QStringLiteral(",1,,2,") << QVector<int>{1, 2};
    QTest::newRow("only commas") << QStringLiteral(",,,") << QVector<int>{};
    QTest::newRow("blanks around") << QStringLiteral(" 1 , 2") << QVector<int>{1, 2};
    QTest::newRow("words and fractions") << QStringLiteral("a,1.5,0x10,2") << QVector<int>{0, 0, 0, 2};
    QTest::newRow("limits") << QStringLiteral("2147483647,-2147483648") << QVector<int>{2147483647, -2147483647 - 1};
    QTest::newRow("beyond the limits") << QStringLiteral("2147483648,-2147483649,1") << QVector<int>{0, 0, 1};
}

void TstConfigValues::aListIsSplitAtCommas()
{
    QFETCH(QString, text);
    QFETCH(QVector<int>, numbers);
    QVector<int> read(10, -1);
    read.resize(intListGet(text, read.data(), read.size()));
    QCOMPARE(read, numbers);
}

void TstConfigValues::anEmptyListLeavesTheArrayAlone()
{
    std::array<int, 2> numbers{5, 6};
    QCOMPARE(intListGet(QString(), numbers.data(), 2), 0);
    QCOMPARE(numbers, (std::array<int, 2>{5, 6}));
    std::array<bool, 2> flags{true, false};
    QCOMPARE(boolListGet(QString(), flags.data(), 2), 0);
    QCOMPARE(flags, (std::array<bool, 2>{true, false}));
}

void TstConfigValues::noMoreThanTheCapacityIsStored()
{
    std::array<int, 3> numbers{-1, -1, -1};
    QCOMPARE(intListGet(QStringLiteral("1,2,3"), numbers.data(), 2), 2);
    QCOMPARE(numbers, (std::array<int, 3>{1, 2, -1}));
    QCOMPARE(intListGet(QStringLiteral("1"), nullptr, 0), 0);
    QCOMPARE(intListGet(QStringLiteral("1"), nullptr, -1), 0);
}

void TstConfigValues::aListOfFiftyMegabytesIsReadInOnePass_data()
{
    QTest::addColumn<QString>("unit");
    QTest::addColumn<int>("stored");
    QTest::newRow("commas") << QStringLiteral(",") << 0;
    QTest::newRow("digits") << QStringLiteral("1") << 1;
    QTest::newRow("numbers") << QStringLiteral("1,") << 32;
    QTest::newRow("garbage") << QStringLiteral("x") << 1;
}

void TstConfigValues::aListOfFiftyMegabytesIsReadInOnePass()
{
    QFETCH(QString, unit);
    QFETCH(int, stored);
    std::array<int, 32> numbers{};
    QCOMPARE(intListGet(unit.repeated(50'000'000 / unit.size()), numbers.data(), 32), stored);
}

void TstConfigValues::aBooleanIsTrueUnlessItIsZero()
{
    std::array<bool, 6> flags{};
    QCOMPARE(boolListGet(QStringLiteral("1,0,-1,2,x,00"), flags.data(), 6), 6);
    QCOMPARE(flags, (std::array<bool, 6>{true, false, true, true, false, false}));
}

void TstConfigValues::listsAreWrittenWithoutBlanks()
{
    const std::array<int, 3> numbers{1, -20, 300};
    const std::array<bool, 3> flags{true, false, true};
    QCOMPARE(intListPut(numbers.data(), 3), QStringLiteral("1,-20,300"));
    QCOMPARE(boolListPut(flags.data(), 3), QStringLiteral("1,0,1"));
    QCOMPARE(intListPut(numbers.data(), 0), QString());
}

void TstConfigValues::enabledChannelsKeepTheDefaultsThatTheTextDoesNotReach()
{
    QVector<bool> flags(4, true);
    chnEnableGet(model, flags, false);
    QCOMPARE(flags, QVector<bool>({true, true, true, true}));
    putDevice("chnEnable", "0,1");
    chnEnableGet(model, flags, false);
    QCOMPARE(flags, QVector<bool>({false, true, true, true}));
    putDevice("chnEnable", "0,0,0,0,1,1,1,1");
    chnEnableGet(model, flags, false);
    QCOMPARE(flags, QVector<bool>({false, false, false, false}));
}

void TstConfigValues::enabledChannelsAreWrittenAndReadPerModelAndKind()
{
    chnEnablePut(model, {true, false}, false);
    chnEnablePut(model, {false, true}, true);
    QCOMPARE(device("chnEnable"), QStringLiteral("1,0"));
    QCOMPARE(device("AChnEnable"), QStringLiteral("0,1"));
    QVector<bool> flags(2, true);
    chnEnableGet(model, flags, true);
    QCOMPARE(flags, QVector<bool>({false, true}));
    QVector<bool> others(2, true);
    chnEnableGet(QStringLiteral("RV2420"), others, true);
    QCOMPARE(others, QVector<bool>({true, true}));
}

void TstConfigValues::aTriggerKindAboveFourReadsAsNone_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QVector<int>>("kinds");
    QTest::newRow("empty") << QByteArray() << QVector<int>{0, 0, 0, 0};
    QTest::newRow("all kinds") << QByteArray("1,2,3,4") << QVector<int>{1, 2, 3, 4};
    QTest::newRow("five") << QByteArray("4,5,3,2147483647") << QVector<int>{4, 0, 3, 0};
    QTest::newRow("negative ones stay") << QByteArray("-1,1") << QVector<int>{-1, 1, 0, 0};
    QTest::newRow("too many") << QByteArray("1,1,1,1,2,2") << QVector<int>{1, 1, 1, 1};
}

void TstConfigValues::aTriggerKindAboveFourReadsAsNone()
{
    QFETCH(QByteArray, text);
    QFETCH(QVector<int>, kinds);
    putDevice("chnTrig", text);
    QVector<int> read(4, 3);
    chnTrigGet(model, read, false);
    QCOMPARE(read, kinds);
}

void TstConfigValues::triggersAreWrittenAndReadPerModelAndKind()
{
    chnTrigPut(model, {1, 0, 4}, false);
    chnTrigPut(model, {3}, true);
    QCOMPARE(device("chnTrig"), QStringLiteral("1,0,4"));
    QCOMPARE(device("AChnTrig"), QStringLiteral("3"));
    QVector<int> kinds(2);
    chnTrigGet(model, kinds, true);
    QCOMPARE(kinds, QVector<int>({3, 0}));
}

void TstConfigValues::theDisplayOrderIsAPermutation_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QVector<int>>("order");
    const QVector<int> identity{0, 1, 2, 3};
    QTest::newRow("empty") << QString() << identity;
    QTest::newRow("reversed") << QStringLiteral("3,2,1,0") << QVector<int>{3, 2, 1, 0};
    QTest::newRow("short, the rest is in place") << QStringLiteral("1,0") << QVector<int>{1, 0, 2, 3};
    QTest::newRow("short, the rest is taken") << QStringLiteral("3,2") << identity;
    QTest::newRow("duplicate") << QStringLiteral("0,1,1,3") << identity;
    QTest::newRow("out of range") << QStringLiteral("0,1,2,4") << identity;
    QTest::newRow("far out of range") << QStringLiteral("0,1,2,64") << identity;
    QTest::newRow("negative") << QStringLiteral("0,1,2,-1") << identity;
    QTest::newRow("words") << QStringLiteral("a,b,c,d") << identity;
    QTest::newRow("more channels than the model has") << QStringLiteral("1,0,3,2,5,4") << QVector<int>{1, 0, 3, 2};
}

void TstConfigValues::theDisplayOrderIsAPermutation()
{
    QFETCH(QString, text);
    QFETCH(QVector<int>, order);
    put("chnShowIndex", text);
    QCOMPARE(chnShowIndexGet(4), order);
}

void TstConfigValues::theDisplayOrderIsWrittenAndRead()
{
    QVector<int> order;
    for (int i = 31; i >= 0; --i) {
        order += i;
    }
    chnShowIndexPut(order);
    QCOMPARE(chnShowIndexGet(32), order);
    QVERIFY(globalGet(QStringLiteral("chnShowIndex")).startsWith(QStringLiteral("31,30,29")));
}

void TstConfigValues::theHeightFactorIsOneOfFour_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QVector<int>>("factors");
    QTest::newRow("empty") << QString() << QVector<int>{1, 1, 1, 1};
    QTest::newRow("all four") << QStringLiteral("1,2,4,8") << QVector<int>{1, 2, 4, 8};
    QTest::newRow("others") << QStringLiteral("0,3,16,-2") << QVector<int>{1, 1, 1, 1};
    QTest::newRow("short") << QStringLiteral("8") << QVector<int>{8, 1, 1, 1};
}

void TstConfigValues::theHeightFactorIsOneOfFour()
{
    QFETCH(QString, text);
    QFETCH(QVector<int>, factors);
    put("chnShowMultip", text);
    QCOMPARE(chnShowMultipGet(4), factors);
}

void TstConfigValues::theHeightFactorsAreWrittenAndRead()
{
    chnShowMultipPut({1, 8, 2});
    QCOMPARE(globalGet(QStringLiteral("chnShowMultip")), QStringLiteral("1,8,2"));
    QCOMPARE(chnShowMultipGet(3), QVector<int>({1, 8, 2}));
}

void TstConfigValues::aCountOfNoChannelsGivesAnEmptyList()
{
    put("chnShowIndex", QStringLiteral("0,1"));
    QVERIFY(chnShowIndexGet(0).isEmpty());
    QVERIFY(chnShowIndexGet(-1).isEmpty());
    QVERIFY(chnShowMultipGet(-1).isEmpty());
    QVERIFY(AChnHorLabelPosGet(-1).isEmpty());
}

void TstConfigValues::aChannelHasItsStoredNameOrTheDefaultOne()
{
    QCOMPARE(chnShowNameGet(0), QStringLiteral("Channel 0"));
    QCOMPARE(chnShowNameGet(31), QStringLiteral("Channel 31"));
    put("chnShowName31", QStringLiteral("SCL"));
    QCOMPARE(chnShowNameGet(31), QStringLiteral("SCL"));
    QCOMPARE(chnShowNameGet(3), QStringLiteral("Channel 3"));
}

void TstConfigValues::theDefaultNameOfAChannelIsTranslated()
{
    const QTemporaryDir dir;
    QFile file(dir.filePath(QStringLiteral("de.xml")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(file.write("<language><head/><lux><t src=\"Channel\">Kanal</t></lux></language>") > 0);
    file.close();
    globalSet(QStringLiteral("userLang"), QStringLiteral("de"));
    languageLoadFrom(dir.path(), QLocale::c());
    const QString translated = chnShowNameGet(7);
    globalSet(QStringLiteral("userLang"), QStringLiteral("en-US"));
    languageLoadFrom(dir.path(), QLocale::c());
    QCOMPARE(translated, QStringLiteral("Kanal 7"));
    QCOMPARE(chnShowNameGet(7), QStringLiteral("Channel 7"));
}

void TstConfigValues::theTagPositionsAreThoseStored_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QVector<int>>("positions");
    QTest::newRow("empty") << QString() << QVector<int>{};
    QTest::newRow("one") << QStringLiteral("40") << QVector<int>{40};
    QTest::newRow("two") << QStringLiteral("40,-7") << QVector<int>{40, -7};
    QTest::newRow("three") << QStringLiteral("40,-7,9") << QVector<int>{40, -7};
}

void TstConfigValues::theTagPositionsAreThoseStored()
{
    QFETCH(QString, text);
    QFETCH(QVector<int>, positions);
    put("AChnHorLabelPos", text);
    QCOMPARE(AChnHorLabelPosGet(2), positions);
}

QTEST_GUILESS_MAIN(TstConfigValues)
#include "tst_ConfigValues.moc"
