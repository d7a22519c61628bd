#include "analysis/MarkerVolts.h"

#include <QtTest>

#include <limits>

using MarkerVolts::AreaLevel;

/// Voltages of markers in the analog area.
class TstMarkerVolts : public QObject {
    Q_OBJECT
private slots:
    void aVoltageIsToldWithTwoDecimals_data();
    void aVoltageIsToldWithTwoDecimals();
    void aMarkerAboveTheZeroLevelIsPositive();
    void theVoltageStaysWhenTheAreaChangesItsHeight();
    void theDifferenceHasNoSign();
    void anAreaWithoutHeightGivesNumbers();
};

void TstMarkerVolts::aVoltageIsToldWithTwoDecimals_data()
{
    QTest::addColumn<double>("millivolts");
    QTest::addColumn<QString>("text");
    const auto row = [](double millivolts, const char *text) {
        QTest::newRow(text) << millivolts << QString::fromLatin1(text);
    };
    row(0.0, "0.00mV");
    row(12.345, "12.35mV");
    row(999.99, "999.99mV");
    row(-999.99, "-999.99mV");
    row(999.999, "1000.00mV"); // the change comes by the value, not by its text
    row(1000.0, "1.00V");
    row(-1000.0, "-1.00V");
    row(-4321.0, "-4.32V");
    row(500000.0, "500.00V");
}

void TstMarkerVolts::aVoltageIsToldWithTwoDecimals()
{
    QFETCH(double, millivolts);
    QFETCH(QString, text);
    QCOMPARE(MarkerVolts::formatMarkerVoltage(millivolts), text);
}

void TstMarkerVolts::aMarkerAboveTheZeroLevelIsPositive()
{
    const AreaLevel zero{200, 400};
    QCOMPARE(MarkerVolts::voltageOf({100, 400}, zero, 10000), 2500.0);
    QCOMPARE(MarkerVolts::voltageOf({200, 400}, zero, 10000), 0.0);
    QCOMPARE(MarkerVolts::voltageOf({300, 400}, zero, 500), -125.0);
}

void TstMarkerVolts::theVoltageStaysWhenTheAreaChangesItsHeight()
{
    // The marker was put down in an area of 400 pixels; the area, and the zero level in it, have 800 now.
    QCOMPARE(MarkerVolts::voltageOf({100, 400}, {400, 800}, 10000), 2500.0);
}

void TstMarkerVolts::theDifferenceHasNoSign()
{
    QCOMPARE(MarkerVolts::differenceOf({100, 400}, {300, 400}, 10000), 5000.0);
    QCOMPARE(MarkerVolts::differenceOf({300, 400}, {100, 400}, 10000), 5000.0);
    QCOMPARE(MarkerVolts::differenceOf({100, 400}, {200, 800}, 10000), 0.0);
}

void TstMarkerVolts::anAreaWithoutHeightGivesNumbers()
{
    QCOMPARE(MarkerVolts::voltageOf({100, 0}, {200, 0}, 10000), 0.0);
    QCOMPARE(MarkerVolts::differenceOf({100, 0}, {200, 400}, 1000), 500.0);
    QCOMPARE(MarkerVolts::voltageOf({1, 1}, {0, 1}, std::numeric_limits<int>::max()), -2147483647.0);
}

QTEST_GUILESS_MAIN(TstMarkerVolts)
#include "tst_MarkerVolts.moc"
