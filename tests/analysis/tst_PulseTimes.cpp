#include "analysis/PulseTimes.h"

#include <QtTest>

#include <cmath>

namespace {

constexpr std::int64_t mhz = 1000000;

QStringList timeUnits()
{
    return {QStringLiteral("ps"), QStringLiteral("ns"), QStringLiteral("us"), QStringLiteral("ms"),
            QStringLiteral("s")};
}

QStringList freqUnits()
{
    return {QStringLiteral("Hz"), QStringLiteral("KHz"), QStringLiteral("MHz"), QStringLiteral("GHz")};
}

QStringList texts(const SmpEdgeInfo &info, std::int64_t rate)
{
    return pulseTexts(pulseTimes(info, rate), timeUnits(), freqUnits());
}

QStringList list(const char *width, const char *period, const char *duty, const char *frequ)
{
    return {QLatin1String(width), QLatin1String(period), QLatin1String(duty), QLatin1String(frequ)};
}

} // namespace

class TstPulseTimes : public QObject {
    Q_OBJECT
private slots:
    void aHighPulseTellsItsShareAsDuty();
    void aLowPulseTellsTheOtherShareAsDuty();
    void aPulseWithoutASecondEdgeAfterItHasOnlyAWidth();
    void noEdgeBeforeThePulseCountsFromTheStartOfTheData();
    void anEndMarkThatIsNoLaterEdgeGivesNoPeriod();
    void anAlwaysLowStartHasADutyAboveZero();
    void unitsGrowWhileAThousandIsReached_data();
    void unitsGrowWhileAThousandIsReached();
    void valuesThatAreNotAboveZeroAreUnknown();
    void nineSignificantDigitsAreShown();
};

void TstPulseTimes::aHighPulseTellsItsShareAsDuty()
{
    QCOMPARE(texts({100, 130, 200, 1}, mhz), list("30us", "100us", "30%", "10KHz"));
}

void TstPulseTimes::aLowPulseTellsTheOtherShareAsDuty()
{
    QCOMPARE(texts({100, 130, 200, 0}, mhz), list("30us", "100us", "70%", "10KHz"));
}

void TstPulseTimes::aPulseWithoutASecondEdgeAfterItHasOnlyAWidth()
{
    QCOMPARE(texts({100, 130, -1, 1}, mhz), list("30us", "###", "###", "###"));
}

void TstPulseTimes::noEdgeBeforeThePulseCountsFromTheStartOfTheData()
{
    QCOMPARE(texts({-1, 40, 100, 0}, mhz), list("40us", "100us", "60%", "10KHz"));
}

void TstPulseTimes::anEndMarkThatIsNoLaterEdgeGivesNoPeriod()
{
    QCOMPARE(texts({100, 130, 130, 1}, mhz), list("30us", "###", "###", "###"));
}

void TstPulseTimes::anAlwaysLowStartHasADutyAboveZero()
{
    const PulseTimes times = pulseTimes({0, 999, 1000, 0}, mhz);
    QVERIFY(qAbs(times.duty - 0.001) < 1e-9);
}

void TstPulseTimes::unitsGrowWhileAThousandIsReached_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("text");
    QTest::newRow("below the first step") << 999.0 << QStringLiteral("999ps");
    QTest::newRow("exactly a thousand") << 1000.0 << QStringLiteral("1ns");
    QTest::newRow("two steps") << 1.5e6 << QStringLiteral("1.5us");
    QTest::newRow("one second") << 1e12 << QStringLiteral("1s");
    QTest::newRow("no unit beyond seconds") << 1.2e16 << QStringLiteral("12000s");
}

void TstPulseTimes::unitsGrowWhileAThousandIsReached()
{
    QFETCH(double, value);
    QFETCH(QString, text);
    QCOMPARE(unitText(value, timeUnits()), text);
}

void TstPulseTimes::valuesThatAreNotAboveZeroAreUnknown()
{
    QCOMPARE(unitText(0.0, timeUnits()), QStringLiteral("###"));
    QCOMPARE(unitText(-1.0, timeUnits()), QStringLiteral("###"));
    QCOMPARE(unitText(std::nan(""), timeUnits()), QStringLiteral("###"));
    QCOMPARE(noPulseTexts(), list("###", "###", "###", "###"));
}

void TstPulseTimes::nineSignificantDigitsAreShown()
{
    QCOMPARE(unitText(123456789.0, timeUnits()), QStringLiteral("123.456789us"));
    QCOMPARE(texts({0, 1, 3, 1}, mhz), list("1us", "3us", "33.3333333%", "333.333333KHz"));
}

QTEST_APPLESS_MAIN(TstPulseTimes)
#include "tst_PulseTimes.moc"
