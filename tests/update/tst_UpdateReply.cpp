#include "update/CheckUpdate.h"
#include "update/UpdateReply.h"

#include <QtTest>

namespace {

QString numbers(const QString &text)
{
    const VersionNumber number = versionNumber(text);
    return QStringLiteral("%1.%2.%3").arg(number[0]).arg(number[1]).arg(number[2]);
}

} // namespace

/// What is read of a reply, how versions are compared, and when a check is due.
class TstUpdateReply : public QObject {
    Q_OBJECT
private slots:
    void aVersionIsItsFirstThreeNumbers_data();
    void aVersionIsItsFirstThreeNumbers();
    void versionsAreComparedAsMajorThenMinorThenPatch();
    void aVersionIsShownAsItCameIfItIsPlain_data();
    void aVersionIsShownAsItCameIfItIsPlain();
    void aReplyHasFourTexts();
    void aMissingChildReadsAsEmptyText();
    void aReplyWhoseRootHasAnotherNameIsFailedEvenIfItHoldsLast_data();
    void aReplyWhoseRootHasAnotherNameIsFailedEvenIfItHoldsLast();
    void lastUpdateExactlySevenDaysOldIsDueAndSixDaysAndABitIsNot_data();
    void lastUpdateExactlySevenDaysOldIsDueAndSixDaysAndABitIsNot();
};

void TstUpdateReply::aVersionIsItsFirstThreeNumbers_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("version");
    const auto row = [](const char *text, const char *version) {
        QTest::addRow("\"%s\"", text) << QString::fromLatin1(text) << QString::fromLatin1(version);
    };
    row("3.2.5", "3.2.5");
    row("", "0.0.0");
    row("4", "4.0.0");
    row("4.1", "4.1.0");
    row("1.2.3.4", "1.2.3");
    row(" 3.2.5\n", "3.2.5");
    row("3.x.5", "3.0.5");
    row("3.2.5-rc1", "3.2.0");
    row("3..5", "3.0.5");
    row("-3.+2. 5", "0.0.0");
    row("0x10.1e3.007", "0.0.7");
    row("99999999999.0.18446744073709551615", "99999999999.0.18446744073709551615");
    row("18446744073709551616.1", "0.1.0"); // more than a number holds
}

void TstUpdateReply::aVersionIsItsFirstThreeNumbers()
{
    QFETCH(QString, text);
    QFETCH(QString, version);
    QCOMPARE(numbers(text), version);
}

void TstUpdateReply::versionsAreComparedAsMajorThenMinorThenPatch()
{
    QStringList ascending;
    for (const char *text : {"", "0.0.1", "0.1", "1", "3.2.5", "3.2.10", "3.10.0", "10.0.0"}) {
        ascending += QString::fromLatin1(text);
    }
    for (int i = 1; i < ascending.size(); ++i) {
        QVERIFY2(versionNumber(ascending.at(i - 1)) < versionNumber(ascending.at(i)), qPrintable(ascending.at(i)));
    }
    QCOMPARE(versionNumber(QStringLiteral("3.2.5.9")), versionNumber(QStringLiteral("3.2.5")));
}

void TstUpdateReply::aVersionIsShownAsItCameIfItIsPlain_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("shown");
    QTest::newRow("numbers") << QStringLiteral("4.0.1") << QStringLiteral("4.0.1");
    QTest::newRow("short") << QStringLiteral("4") << QStringLiteral("4");
    QTest::newRow("with a name") << QStringLiteral("4.0.1-rc2") << QStringLiteral("4.0.1-rc2");
    QTest::newRow("markup") << QStringLiteral("4.<b>1</b>") << QStringLiteral("4.0.0");
    QTest::newRow("another argument") << QStringLiteral("4.1.0 --all") << QStringLiteral("4.1.0");
    QTest::newRow("an option") << QStringLiteral("--all") << QStringLiteral("0.0.0");
    QTest::newRow("lines") << QStringLiteral("4.1\n.0") << QStringLiteral("4.0.0");
    QTest::newRow("long") << QStringLiteral("4.1.") + QString(1000, QLatin1Char('1')) << QStringLiteral("4.1.0");
}

void TstUpdateReply::aVersionIsShownAsItCameIfItIsPlain()
{
    QFETCH(QString, text);
    QFETCH(QString, shown);
    QCOMPARE(shownVersion(text), shown);
}

void TstUpdateReply::aReplyHasFourTexts()
{
    const auto reply =
        UpdateReply::parse("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<lux>\n"
                           "  <updlink>u&amp;v</updlink><other/><last> 4.0.1 </last>\n"
                           "  <support>3.0</support><dnllink><![CDATA[d]]></dnllink><last>9</last></lux>");
    QVERIFY(reply.has_value());
    QCOMPARE(reply->last, QStringLiteral("4.0.1"));
    QCOMPARE(reply->support, QStringLiteral("3.0"));
    QCOMPARE(reply->dnllink, QStringLiteral("d"));
    QCOMPARE(reply->updlink, QStringLiteral("u&v"));
}

void TstUpdateReply::aMissingChildReadsAsEmptyText()
{
    const auto reply = UpdateReply::parse("<lux><x><last>9</last></x></lux>");
    QVERIFY(reply.has_value());
    QCOMPARE(reply->last + reply->support + reply->dnllink + reply->updlink, QString());
}

void TstUpdateReply::aReplyWhoseRootHasAnotherNameIsFailedEvenIfItHoldsLast_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("html") << QByteArray("<html><last>9</last></html>");
    QTest::newRow("within") << QByteArray("<a><lux><last>9</last></lux></a>");
    QTest::newRow("upper case") << QByteArray("<LUX><last>9</last></LUX>");
    QTest::newRow("entity") << QByteArray("<!DOCTYPE lux [<!ENTITY a SYSTEM \"file:///etc/passwd\">]><lux>&a;</lux>");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("zeros") << QByteArray(1000, '\0');
}

void TstUpdateReply::aReplyWhoseRootHasAnotherNameIsFailedEvenIfItHoldsLast()
{
    QFETCH(QByteArray, bytes);
    QVERIFY(!UpdateReply::parse(bytes).has_value());
}

void TstUpdateReply::lastUpdateExactlySevenDaysOldIsDueAndSixDaysAndABitIsNot_data()
{
    QTest::addColumn<QString>("last");
    QTest::addColumn<bool>("isDue");
    QTest::newRow("exactly seven days") << QStringLiteral("2026-03-02_07:05:01") << true;
    QTest::newRow("more") << QStringLiteral("2019-12-31_23:59:59") << true;
    QTest::newRow("a second less") << QStringLiteral("2026-03-02_07:05:02") << false;
    QTest::newRow("six days and a bit, the seventh day of the calendar")
        << QStringLiteral("2026-03-02_23:00:00") << false;
    QTest::newRow("now") << QStringLiteral("2026-03-09_07:05:01") << false;
    QTest::newRow("in the future: the clock was set back") << QStringLiteral("2026-03-09_07:05:02") << true;
    QTest::newRow("far in the future") << QStringLiteral("9999-01-01_00:00:00") << true;
    QTest::newRow("never") << QString() << true;
    QTest::newRow("no time") << QStringLiteral("2026-02-30_07:05:01") << true;
    QTest::newRow("another form") << QStringLiteral("2026-03-09T07:05:01") << true;
}

void TstUpdateReply::lastUpdateExactlySevenDaysOldIsDueAndSixDaysAndABitIsNot()
{
    QFETCH(QString, last);
    QFETCH(bool, isDue);
    QCOMPARE(isUpdateCheckDue(last, QDateTime(QDate(2026, 3, 9), QTime(7, 5, 1))), isDue);
}

QTEST_GUILESS_MAIN(TstUpdateReply)
#include "tst_UpdateReply.moc"
