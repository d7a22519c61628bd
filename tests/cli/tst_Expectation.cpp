#include "analysis/ChannelMeasures.h"
#include "cli/Expectation.h"

#include <QtTest>

namespace {

constexpr std::int64_t rate = 10'000'000;

/// 1 MHz, 30 % high, but for one cycle of 12 samples with 4 high ones among 9 of 10 with 3.
ChannelMeasures clockMeasures()
{
    ChannelMeasures measures;
    measures.rising = 11;
    measures.falling = 10;
    for (int i = 0; i < 10; ++i) {
        const int period = i == 4 ? 12 : 10;
        const int high = i == 4 ? 4 : 3;
        measures.high.add(high);
        measures.low.add(period - high);
        measures.period.add(period);
        measures.highPart.add(high);
        measures.inverse.add(1.0 / period);
        measures.duty.add(double(high) / period);
    }
    return measures;
}

} // namespace

class TstExpectation : public QObject {
    Q_OBJECT
private slots:
    void whatIsExpectedHoldsOrNot_data();
    void whatIsExpectedHoldsOrNot();
    void whatIsNoExpectationIsRefused_data();
    void whatIsNoExpectationIsRefused();
    void nothingMeasuredHasNoValueButCounts();
    void spreadsAreInHertzSecondsAndShares();
    void aValueIsShownInItsUnit();
};

void TstExpectation::whatIsExpectedHoldsOrNot_data()
{
    QTest::addColumn<bool>("holds");
    const auto row = [](const char *text, bool holds) { QTest::newRow(text) << holds; };
    row("edges=21", true);
    row("edges=20", false);
    row("edges=20+-1", true);
    row("edges=20+-5%", true);
    row("edges=20+-4%", false);
    row("edges>20", true);
    row("edges>21", false);
    row("edges>=21", true);
    row("edges<=21", true);
    row("edges<21", false);
    row("edges<1k", true);
    row("rising=11", true);
    row("falling=10", true);
    row("pulses=10", true);
    row("frequency=1MHz+-2%", true); // 10 cycles in 10.2 us
    row("frequency=1MHz+-1%", false);
    row("frequency=1MHz+-20kHz", true);
    row("frequency = 1000kHz +- 20 kHz", true);
    row("frequency=1000000+-20k", true);
    row("frequency<1MHz", true);
    row("frequency.max=1MHz", true);
    row("frequency.max=1.000001MHz", false);
    row("frequency.min<833.4kHz", true);
    row("frequency.min>833.3kHz", true);
    row("frequency.count=10", true);
    row("period=1.02us", true);
    row("period.mean=1020ns", true);
    row("period.max=1.2us+-0ns", true);
    row("period.deviation=60ns", true);
    row("duty=30%+-1%", true);    // 31 of 102
    row("duty=30%+-0.3%", false); // points, no parts
    row("duty=0.3+-0.01", true);
    row("duty.min=30%", true);
    row("duty.max<=34%", true);
    row("high.min>=300ns", true);
    row("high.max=400ns", true);
    row("low=710ns", true);
    row("low.count=10", true);
}

void TstExpectation::whatIsExpectedHoldsOrNot()
{
    QFETCH(bool, holds);
    QString error;
    const auto expectation = Expectation::parse(QString::fromLatin1(QTest::currentDataTag()), error);
    QVERIFY2(expectation.has_value(), qPrintable(error));
    const auto value = expectation->valueIn(clockMeasures(), rate);
    QVERIFY(value.has_value());
    QCOMPARE(expectation->holds(*value), holds);
}

void TstExpectation::whatIsNoExpectationIsRefused_data()
{
    QTest::addColumn<QString>("text");
    for (const char *text : {"nothing",
                             "frequency",
                             "frequency=",
                             "=1MHz",
                             "colour=3",
                             "frequency.median=1MHz",
                             "edges.min=3",
                             "frequency=1ms",
                             "period=1MHz",
                             "high=50%",
                             "edges=1.x",
                             "frequency=1MHz+-",
                             "frequency=1MHz+-x%",
                             "frequency=1MHz+-1s",
                             "frequency<1MHz+-1%",
                             "frequency=-1MHz",
                             "duty=x%",
                             "frequency==1MHz",
                             "%",
                             "edges=3s"})
        QTest::newRow(text) << QString::fromLatin1(text);
    QTest::newRow("empty") << QString();
}

void TstExpectation::whatIsNoExpectationIsRefused()
{
    QFETCH(QString, text);
    QString error;
    QVERIFY(!Expectation::parse(text, error));
    QVERIFY(!error.isEmpty());
}

void TstExpectation::nothingMeasuredHasNoValueButCounts()
{
    QString error;
    const auto of = [&error](const char *text) {
        return Expectation::parse(QString::fromLatin1(text), error)->valueIn({}, rate);
    };
    QVERIFY(!of("frequency>0"));
    QVERIFY(!of("duty.max<50%"));
    QVERIFY(!of("high=1us"));
    QCOMPARE(of("edges=0").value_or(-1), 0.0);
    QCOMPARE(of("period.count=0").value_or(-1), 0.0);
}

void TstExpectation::spreadsAreInHertzSecondsAndShares()
{
    const auto spreads = spreadsOf(clockMeasures(), rate);
    QCOMPARE(spreads[0].most, 1e6);
    QCOMPARE(spreads[0].mean, 1e8 / 102);
    QCOMPARE(spreads[1].mean, 1.02e-6);
    QCOMPARE(spreads[2].mean, 31.0 / 102);
    QCOMPARE(spreads[3].least, 3e-7);
    QCOMPARE(spreads[4].most, 8e-7);
    QCOMPARE(spreads[4].count, std::int64_t(10));
}

void TstExpectation::aValueIsShownInItsUnit()
{
    QString error;
    const auto shown = [&error](const char *text, double value) {
        return Expectation::parse(QString::fromLatin1(text), error)->shown(value);
    };
    QCOMPARE(shown("frequency=1", 1e6), QStringLiteral("1 MHz"));
    QCOMPARE(shown("high=1", 2e-7), QStringLiteral("200 ns"));
    QCOMPARE(shown("duty=1", 0.5), QStringLiteral("50 %"));
    QCOMPARE(shown("edges=1", 12), QStringLiteral("12"));
}

QTEST_APPLESS_MAIN(TstExpectation)
#include "tst_Expectation.moc"
