#include "analysis/AnalogFormat.h"

#include <QtTest>

#include <cmath>
#include <limits>

class TstAnalogFormat : public QObject {
    Q_OBJECT
private slots:
    void aTimeTakesTheLargestUnitInWhichItIsWhole_data();
    void aTimeTakesTheLargestUnitInWhichItIsWhole();
    void aFrequencyTakesTheLargestUnitInWhichItIsWhole_data();
    void aFrequencyTakesTheLargestUnitInWhichItIsWhole();
    void aVoltageIsInVoltsFromAHundredMillivoltsOn_data();
    void aVoltageIsInVoltsFromAHundredMillivoltsOn();
    void aPercentageHasTwoDecimals();
};

void TstAnalogFormat::aTimeTakesTheLargestUnitInWhichItIsWhole_data()
{
    QTest::addColumn<qint64>("ps");
    QTest::addColumn<QString>("text");
    const auto add = [](qint64 ps, const char *text) { QTest::addRow("%s", text) << ps << QString::fromLatin1(text); };
    add(1, "1ps");
    add(999, "999ps");
    add(1000, "1ns");
    add(1'500'000, "1500ns");
    add(1'234'567, "1234567ps");
    add(20'000'000, "20us");
    add(3'000'000'000, "3ms");
    add(7'000'000'000'000, "7s");
    add(7'000'000'000'000'000, "7000s"); // four steps and no more
    add(-50'000'000, "-50us");
    add(-1, "-1ps");
    add(0, "0s");
    add(std::numeric_limits<qint64>::min(), "-9223372036854775808ps");
}

void TstAnalogFormat::aTimeTakesTheLargestUnitInWhichItIsWhole()
{
    QFETCH(qint64, ps);
    QTEST(formatTimePs(ps), "text");
}

void TstAnalogFormat::aFrequencyTakesTheLargestUnitInWhichItIsWhole_data()
{
    QTest::addColumn<qint64>("hz");
    QTest::addColumn<QString>("text");
    const auto add = [](qint64 hz, const char *text) { QTest::addRow("%s", text) << hz << QString::fromLatin1(text); };
    add(1'000'000 / 3, "333333Hz");
    add(1000, "1KHz");
    add(1500, "1500Hz");
    add(25'000'000, "25MHz");
    add(1'000'000'000, "1GHz");
    add(1'000'000'000'000, "1000GHz");
    add(-2000, "-2KHz");
    add(0, "0GHz");
}

void TstAnalogFormat::aFrequencyTakesTheLargestUnitInWhichItIsWhole()
{
    QFETCH(qint64, hz);
    QTEST(formatFrequency(hz), "text");
}

void TstAnalogFormat::aVoltageIsInVoltsFromAHundredMillivoltsOn_data()
{
    QTest::addColumn<double>("millivolts");
    QTest::addColumn<QString>("text");
    const auto add = [](double mv, const char *text) { QTest::addRow("%s", text) << mv << QString::fromLatin1(text); };
    add(100.0, "0.10V");
    add(99.99, "99.99mV");
    add(99.999, "100.00mV"); // it is the whole number that decides
    add(100.999, "0.10V");
    add(3001.4, "3.00V");
    add(0.0, "0.00mV");
    add(-500.0, "-500.00mV");
    add(-12345.678, "-12345.68mV");
    add(std::numeric_limits<double>::quiet_NaN(), "nanmV");
}

void TstAnalogFormat::aVoltageIsInVoltsFromAHundredMillivoltsOn()
{
    QFETCH(double, millivolts);
    QTEST(formatVoltage(millivolts), "text");
}

void TstAnalogFormat::aPercentageHasTwoDecimals()
{
    QCOMPARE(formatPercent(50.0), QStringLiteral("50.00%"));
    QCOMPARE(formatPercent(-2.0724), QStringLiteral("-2.07%"));
    QCOMPARE(formatPercent(std::numeric_limits<double>::quiet_NaN()), QStringLiteral("nan%"));
    QCOMPARE(formatPercent(std::numeric_limits<double>::infinity()), QStringLiteral("inf%"));
    QCOMPARE(formatPercent(-std::numeric_limits<double>::infinity()), QStringLiteral("-inf%"));
}

QTEST_APPLESS_MAIN(TstAnalogFormat)
#include "tst_AnalogFormat.moc"
