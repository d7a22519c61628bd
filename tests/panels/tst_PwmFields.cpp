#include "panels/PwmFields.h"

#include <QtTest>

class TstPwmFields : public QObject {
    Q_OBJECT
private slots:
    void aFrequencyIsShownInTheSmallestUnitThatKeepsItBelowAThousand_data();
    void aFrequencyIsShownInTheSmallestUnitThatKeepsItBelowAThousand();
    void aDutyCycleHasSixDigits();
    void theUnitsStandFromLargeToSmall();
    void fieldsAreReadInTheirUnit_data();
    void fieldsAreReadInTheirUnit();
    void whatIsNoNumberOrOutOfRangeGivesNothing_data();
    void whatIsNoNumberOrOutOfRangeGivesNothing();
    void whatIsShownReadsBack_data();
    void whatIsShownReadsBack();
};

void TstPwmFields::aFrequencyIsShownInTheSmallestUnitThatKeepsItBelowAThousand_data()
{
    QTest::addColumn<double>("frequ");
    QTest::addColumn<QString>("number");
    QTest::addColumn<int>("unit");
    QTest::newRow("least") << 0.1 << QStringLiteral("0.1") << 2;
    QTest::newRow("999 Hz") << 999.0 << QStringLiteral("999") << 2;
    QTest::newRow("just below a thousand") << 999.999 << QStringLiteral("999.999") << 2;
    QTest::newRow("rounded up to a thousand") << 999.9999 << QStringLiteral("1") << 1;
    QTest::newRow("1 kHz") << 1000.0 << QStringLiteral("1") << 1;
    QTest::newRow("six digits") << 1234.5678 << QStringLiteral("1.23457") << 1;
    QTest::newRow("100 kHz") << 100000.0 << QStringLiteral("100") << 1;
    QTest::newRow("999.999 kHz") << 999999.0 << QStringLiteral("999.999") << 1;
    QTest::newRow("1 MHz") << 1e6 << QStringLiteral("1") << 0;
    QTest::newRow("most") << 2e7 << QStringLiteral("20") << 0;
    QTest::newRow("as produced") << 2.999999985 << QStringLiteral("3") << 2;
    QTest::newRow("beyond") << 1e12 << QStringLiteral("1e+06") << 0;
}

void TstPwmFields::aFrequencyIsShownInTheSmallestUnitThatKeepsItBelowAThousand()
{
    QFETCH(double, frequ);
    QFETCH(QString, number);
    QFETCH(int, unit);
    const PwmFrequText shown = pwmFrequText(frequ);
    QCOMPARE(shown.number, number);
    QCOMPARE(shown.unit, unit);
}

void TstPwmFields::aDutyCycleHasSixDigits()
{
    QCOMPARE(pwmDutyText(50.0), QStringLiteral("50"));
    QCOMPARE(pwmDutyText(33.3333333), QStringLiteral("33.3333"));
    QCOMPARE(pwmDutyText(0.0), QStringLiteral("0"));
    QCOMPARE(pwmDutyText(100.0), QStringLiteral("100"));
}

void TstPwmFields::theUnitsStandFromLargeToSmall()
{
    QCOMPARE(pwmUnits(), QStringList({QStringLiteral("MHz"), QStringLiteral("KHz"), QStringLiteral("Hz")}));
}

void TstPwmFields::fieldsAreReadInTheirUnit_data()
{
    QTest::addColumn<QString>("frequ");
    QTest::addColumn<int>("unit");
    QTest::addColumn<QString>("duty");
    QTest::addColumn<double>("hertz");
    QTest::addColumn<double>("percent");
    QTest::newRow("Hz") << QStringLiteral("3") << 2 << QStringLiteral("50") << 3.0 << 50.0;
    QTest::newRow("kHz") << QStringLiteral("1.5") << 1 << QStringLiteral("12.5") << 1500.0 << 12.5;
    QTest::newRow("MHz, the most") << QStringLiteral("20") << 0 << QStringLiteral("100") << 2e7 << 100.0;
    QTest::newRow("the least") << QStringLiteral("0.1") << 2 << QStringLiteral("0") << 0.1 << 0.0;
    QTest::newRow("point at the end") << QStringLiteral("5.") << 2 << QStringLiteral("5.") << 5.0 << 5.0;
    QTest::newRow("point first") << QStringLiteral(".5") << 2 << QStringLiteral(".5") << 0.5 << 0.5;
    QTest::newRow("commas") << QStringLiteral("1,5") << 1 << QStringLiteral("12,5") << 1500.0 << 12.5;
    QTest::newRow("exponent") << QStringLiteral("2e3") << 2 << QStringLiteral("1e1") << 2000.0 << 10.0;
    QTest::newRow("blank behind") << QStringLiteral("7 ") << 2 << QStringLiteral("8 ") << 7.0 << 8.0;
    QTest::newRow("leading noughts") << QStringLiteral("007") << 2 << QStringLiteral("08") << 7.0 << 8.0;
}

void TstPwmFields::fieldsAreReadInTheirUnit()
{
    QFETCH(QString, frequ);
    QFETCH(int, unit);
    QFETCH(QString, duty);
    QFETCH(double, hertz);
    QFETCH(double, percent);
    const std::optional<PwmSetting> read = readPwmFields(frequ, unit, duty);
    QVERIFY(read.has_value());
    QCOMPARE(read->frequ, hertz);
    QCOMPARE(read->duty, percent);
}

void TstPwmFields::whatIsNoNumberOrOutOfRangeGivesNothing_data()
{
    QTest::addColumn<QString>("frequ");
    QTest::addColumn<int>("unit");
    QTest::addColumn<QString>("duty");
    const QString good = QStringLiteral("10");
    for (const char *bad :
         {"",      " ",  "nan",  "inf", "-inf", "1e400", "0x10", "10k", "10 Hz",        "10%", "1,5.0",
          "1.2.3", "1e", "1e5x", "--5", "+",    ".",     "e5",   "ten", "\xEF\xBC\x95", "-1",  "-0.5"}) {
        QTest::addRow("frequency \"%s\"", bad) << QString::fromUtf8(bad) << 2 << good;
        QTest::addRow("duty cycle \"%s\"", bad) << good << 2 << QString::fromUtf8(bad);
    }
    QTest::newRow("30 MHz") << QStringLiteral("30") << 0 << good;
    QTest::newRow("above the most") << QStringLiteral("20.0001") << 0 << good;
    QTest::newRow("below the least") << QStringLiteral("0.0999") << 2 << good;
    QTest::newRow("0 Hz") << QStringLiteral("0") << 2 << good;
    QTest::newRow("too small for a number") << QStringLiteral("1e-400") << 2 << good;
    QTest::newRow("duty cycle above 100") << good << 2 << QStringLiteral("100.001");
    QTest::newRow("no unit") << good << -1 << good;
    QTest::newRow("a unit that there is not") << good << 3 << good;
}

void TstPwmFields::whatIsNoNumberOrOutOfRangeGivesNothing()
{
    QFETCH(QString, frequ);
    QFETCH(int, unit);
    QFETCH(QString, duty);
    QVERIFY(!readPwmFields(frequ, unit, duty).has_value());
}

void TstPwmFields::whatIsShownReadsBack_data()
{
    QTest::addColumn<double>("frequ");
    for (const double frequ : {0.1, 1.0, 999.0, 1000.0, 12345.0, 100000.0, 1e6, 1.25e7, 2e7}) {
        QTest::addRow("%g", frequ) << frequ;
    }
}

void TstPwmFields::whatIsShownReadsBack()
{
    QFETCH(double, frequ);
    const PwmFrequText shown = pwmFrequText(frequ);
    const std::optional<PwmSetting> read = readPwmFields(shown.number, shown.unit, pwmDutyText(25.0));
    QVERIFY(read.has_value());
    QCOMPARE(read->frequ, frequ);
    QCOMPARE(read->duty, 25.0);
}

QTEST_GUILESS_MAIN(TstPwmFields)
#include "tst_PwmFields.moc"
