#include "cli/Quantity.h"

#include <QtTest>

class TstQuantity : public QObject {
    Q_OBJECT
private slots:
    void aTimeIsAWholeNumberOfSamplesWhereItIsMeantToBe();
    void countsAreExact_data();
    void countsAreExact();
    void ratesMayHaveTheirUnit();
    void timesBecomeWholeSamplesWithoutRounding();
    void timesThatAreNoneAreRefused_data();
    void timesThatAreNoneAreRefused();
    void channelListsAreSortedAndEachOnce();
    void channelListsThatAreNoneAreRefused_data();
    void channelListsThatAreNoneAreRefused();
    void countsAreTextsAsTheyAreTaken();
    void textsTakeTheFittingUnit();
};

void TstQuantity::aTimeIsAWholeNumberOfSamplesWhereItIsMeantToBe()
{
    QCOMPARE(Quantity::samplesWithParts(15e-6, 1e6), 15.0);
    QCOMPARE(Quantity::samplesWithParts(123e-6, 1e6), 123.0);
    QCOMPARE(Quantity::samplesWithParts(9.5, 1e9), 9.5e9);
    QVERIFY(Quantity::samplesWithParts(15e-9, 1e8) > 1.4 && Quantity::samplesWithParts(15e-9, 1e8) < 1.6);
}

void TstQuantity::countsAreExact_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint64>("count"); // -1 for none
    const auto row = [](const char *text, qint64 count) { QTest::newRow(text) << QString::fromLatin1(text) << count; };
    row("0", 0);
    row("20000", 20000);
    row("100M", 100'000'000);
    row("62.5M", 62'500'000);
    row("62.5 M", 62'500'000);
    row("1k", 1000);
    row("1K", 1000);
    row("10G", 10'000'000'000);
    row("0.000000001G", 1);
    row("4611686018427387k", 4'611'686'018'427'387'000);
    row("4611686018427388k", -1); // above 2^62
    row("5000000000G", -1);
    row("99999999999999999G", -1);
    row("999999999999999999", 999'999'999'999'999'999);
    row("1000000000000000000", -1); // more digits than are taken
    row("", -1);
    row("M", -1);
    row(".", -1);
    row("-1", -1);
    row("+1", -1);
    row("1.5", -1);
    row("1.2345k", -1);
    row("1..5k", -1);
    row("1e6", -1);
    row("0x10", -1);
    row("ten", -1);
    row("10MM", -1);
}

void TstQuantity::countsAreExact()
{
    QFETCH(QString, text);
    QFETCH(qint64, count);
    QCOMPARE(Quantity::count(text).value_or(-1), std::int64_t(count));
}

void TstQuantity::ratesMayHaveTheirUnit()
{
    QCOMPARE(Quantity::frequency(QStringLiteral("100M")).value_or(-1), std::int64_t(100'000'000));
    QCOMPARE(Quantity::frequency(QStringLiteral("100MHz")).value_or(-1), std::int64_t(100'000'000));
    QCOMPARE(Quantity::frequency(QStringLiteral("62.5 MHz")).value_or(-1), std::int64_t(62'500'000));
    QCOMPARE(Quantity::frequency(QStringLiteral("50kHz")).value_or(-1), std::int64_t(50'000));
    QCOMPARE(Quantity::frequency(QStringLiteral("50000 Hz")).value_or(-1), std::int64_t(50'000));
    QVERIFY(!Quantity::frequency(QStringLiteral("Hz")));
    QVERIFY(!Quantity::frequency(QStringLiteral("1s")));
}

void TstQuantity::timesBecomeWholeSamplesWithoutRounding()
{
    const auto samples = [](const char *text, std::int64_t rate) {
        const auto time = Quantity::time(QString::fromLatin1(text));
        return time ? Quantity::samples(*time, rate).value_or(-2) : -1;
    };
    QCOMPARE(samples("10ms", 100'000'000), std::int64_t(1'000'000));
    QCOMPARE(samples("1.5", 1'000'000), std::int64_t(1'500'000));
    QCOMPARE(samples("2s", 500'000'000), std::int64_t(1'000'000'000));
    QCOMPARE(samples("7ns", 100'000'000), std::int64_t(0));
    QCOMPARE(samples("9999ps", 1'000'000'000), std::int64_t(9));
    QCOMPARE(samples("0.3us", 10'000'000), std::int64_t(3)); // 0.3 is no double
    QCOMPARE(samples("1234567.8901234567", 500'000'000), std::int64_t(617'283'945'061'728));
    QCOMPARE(samples("999999999999999999", 500'000'000), std::int64_t(-2));
}

void TstQuantity::timesThatAreNoneAreRefused_data()
{
    QTest::addColumn<QString>("text");
    for (const char *text : {"", "s", "ms", "-1s", "1h", "1 m", "noon", "1.2.3", "1s2", "nan", "inf", "1e-3"})
        QTest::newRow(text[0] == '\0' ? "empty" : text) << QString::fromLatin1(text);
}

void TstQuantity::timesThatAreNoneAreRefused()
{
    QFETCH(QString, text);
    QVERIFY(!Quantity::time(text));
}

void TstQuantity::channelListsAreSortedAndEachOnce()
{
    QCOMPARE(Quantity::channels(QStringLiteral("3")).value(), (QVector<int>{3}));
    QCOMPARE(Quantity::channels(QStringLiteral("0-2,7")).value(), (QVector<int>{0, 1, 2, 7}));
    QCOMPARE(Quantity::channels(QStringLiteral("7, 1-2,2")).value(), (QVector<int>{1, 2, 7}));
    QCOMPARE(Quantity::channels(QStringLiteral("0-63")).value().size(), 64);
}

void TstQuantity::channelListsThatAreNoneAreRefused_data()
{
    QTest::addColumn<QString>("text");
    for (const char *text : {"", ",", "1,", "2-1", "-3", "1-", "1-2-3", "64", "0-64", "a", "1.5", "4294967296"})
        QTest::newRow(text[0] == '\0' ? "empty" : text) << QString::fromLatin1(text);
}

void TstQuantity::channelListsThatAreNoneAreRefused()
{
    QFETCH(QString, text);
    QVERIFY(!Quantity::channels(text));
}

void TstQuantity::countsAreTextsAsTheyAreTaken()
{
    for (const char *text : {"0", "999", "1k", "1.5k", "62.5M", "100M", "10G", "1.024k", "1234.567k", "20k"}) {
        const QString asTaken = QString::fromLatin1(text);
        QCOMPARE(Quantity::countText(Quantity::count(asTaken).value()), asTaken);
    }
}

void TstQuantity::textsTakeTheFittingUnit()
{
    QCOMPARE(Quantity::text(1'250'000, QStringLiteral("Hz")), QStringLiteral("1.25 MHz"));
    QCOMPARE(Quantity::text(0.00125, QStringLiteral("s")), QStringLiteral("1.25 ms"));
    QCOMPARE(Quantity::text(1e-9, QStringLiteral("s")), QStringLiteral("1 ns"));
    QCOMPARE(Quantity::text(0, QStringLiteral("s")), QStringLiteral("0 s"));
    QCOMPARE(Quantity::text(999.9999999999e-9, QStringLiteral("s")), QStringLiteral("1 us"));
}

QTEST_APPLESS_MAIN(TstQuantity)
#include "tst_Quantity.moc"
