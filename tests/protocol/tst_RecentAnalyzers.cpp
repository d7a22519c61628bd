#include "protocol/RecentAnalyzers.h"

#include <QtTest>

namespace {

/// Every file that begins with a letter up to "V" has a plug-in.
QString displayName(const QString &file)
{
    return file < QLatin1String("W") ? file.chopped(4) : QString();
}

QStringList updated(const QString &stored, const QStringList &inUse)
{
    RecentAnalyzers recent;
    recent.update(stored, inUse, displayName);
    return recent.files();
}

QStringList named(const QString &letters)
{
    QStringList files;
    for (const QChar letter : letters) {
        files.append(QString(letter) + QStringLiteral(".dll"));
    }
    return files;
}

} // namespace

class TstRecentAnalyzers : public QObject {
    Q_OBJECT
private slots:
    void withoutAStoredTextTheShippedOnesAreRecent();
    void theNewestStandLast();
    void anUnknownNameGoes();
    void ofTwelveTheTenNewestStay();
    void theStoredTextIsReadOnce();
    void emptyPartsAndRepetitionsAreSkipped();
    void theNamesOfRowsAreTheNewestTen();
};

void TstRecentAnalyzers::withoutAStoredTextTheShippedOnesAreRecent()
{
    QCOMPARE(updated(QString(), {}).join(QLatin1Char(',')), QStringLiteral("CAN.dll,I2C.dll,SPI.dll,UART.dll"));
}

void TstRecentAnalyzers::theNewestStandLast()
{
    RecentAnalyzers recent;
    recent.update(QStringLiteral("A.dll,B.dll,C.dll"), named(QStringLiteral("AD")), displayName);
    QCOMPARE(recent.files(), named(QStringLiteral("BCAD")));
    QCOMPARE(recent.text(), QStringLiteral("B.dll,C.dll,A.dll,D.dll"));
}

void TstRecentAnalyzers::anUnknownNameGoes()
{
    QCOMPARE(updated(QStringLiteral("A.dll,X.dll,B.dll"), {}), named(QStringLiteral("AB")));
    QCOMPARE(updated(QStringLiteral("A.dll"), named(QStringLiteral("Z"))), named(QStringLiteral("A")));
}

void TstRecentAnalyzers::ofTwelveTheTenNewestStay()
{
    const QString twelve = named(QStringLiteral("ABCDEFGHIJKL")).join(QLatin1Char(','));
    QCOMPARE(updated(twelve, {}), named(QStringLiteral("CDEFGHIJKL")));
    QCOMPARE(updated(twelve, named(QStringLiteral("A"))), named(QStringLiteral("DEFGHIJKLA")));
}

void TstRecentAnalyzers::theStoredTextIsReadOnce()
{
    RecentAnalyzers recent;
    QVERIFY(recent.isEmpty());
    recent.update(QStringLiteral("A.dll"), {}, displayName);
    recent.update(QStringLiteral("B.dll"), {}, displayName);
    QCOMPARE(recent.files(), named(QStringLiteral("A")));
}

void TstRecentAnalyzers::emptyPartsAndRepetitionsAreSkipped()
{
    QCOMPARE(updated(QStringLiteral(",A.dll,,A.dll,B.dll,"), {}), named(QStringLiteral("AB")));
    QVERIFY(updated(QStringLiteral(","), {}).isEmpty());
}

void TstRecentAnalyzers::theNamesOfRowsAreTheNewestTen()
{
    QCOMPARE(RecentAnalyzers::namesOfRows({}), QStringList());
    QCOMPARE(RecentAnalyzers::namesOfRows(named(QStringLiteral("ABAC"))), named(QStringLiteral("BAC")));
    QCOMPARE(RecentAnalyzers::namesOfRows(named(QStringLiteral("ABCDEFGHIJKL"))), named(QStringLiteral("CDEFGHIJKL")));
}

QTEST_APPLESS_MAIN(TstRecentAnalyzers)
#include "tst_RecentAnalyzers.moc"
