#include "analysis/ChannelMeasures.h"
#include "store/SmpWriter.h"
#include "wave/WaveCapture.h"

#include <QtTest>

#include <cmath>
#include <random>

namespace {

/// The mean and the deviation by their definitions.
std::pair<double, double> scatterOf(const std::vector<double> &values)
{
    double sum = 0;
    for (const double value : values) {
        sum += value;
    }
    const double mean = sum / double(values.size());
    double squares = 0;
    for (const double value : values) {
        squares += (value - mean) * (value - mean);
    }
    return {mean, std::sqrt(squares / double(values.size()))};
}

bool isNear(double a, double b)
{
    return std::abs(a - b) <= 1e-9 * std::max(std::abs(a), std::abs(b));
}

ChannelMeasures measured(const SmpData &data, int chn, std::int64_t from, std::int64_t to)
{
    ChannelMeasures measures;
    const SmpReadLock lock(&data);
    return lock && measureChannel(data, chn, from, to, measures) ? measures
                                                                 : ChannelMeasures{-1, -1, {}, {}, {}, {}, {}, {}};
}

} // namespace

class TstChannelMeasures : public QObject {
    Q_OBJECT
private slots:
    void widthsAndPeriodsOfAKnownSignal();
    void aRangeHasTheEdgesFromItsStartToBeforeItsEnd();
    void anIncompletePulseHasNoWidth();
    void aQuietChannelHasNothingToMeasure();
    void aChannelWithoutDataCannotBeMeasured();
    void measuresAgreeWithTheirDefinitions();
    void deviationIsExactForLongPulses();
};

/// High for 30, low for 70, twice; then high for 50, low for 50.
void TstChannelMeasures::widthsAndPeriodsOfAKnownSignal()
{
    const auto data = WaveCapture().channels(2).samples(1000).pulses(1, {100, 30, 70, 30, 70, 50, 50, 10}).build();
    const ChannelMeasures m = measured(*data, 1, 0, 1000);
    QCOMPARE(m.rising, std::int64_t(4));
    QCOMPARE(m.falling, std::int64_t(4));
    QCOMPARE(m.edges(), std::int64_t(8));
    QCOMPARE(m.period.count, std::int64_t(3));
    QCOMPARE(m.period.least, std::int64_t(100));
    QCOMPARE(m.period.most, std::int64_t(100));
    QCOMPARE(m.period.deviation(), 0.0);
    QCOMPARE(m.high.count, std::int64_t(4));
    QCOMPARE(m.high.least, std::int64_t(10));
    QCOMPARE(m.high.most, std::int64_t(50));
    QCOMPARE(m.high.mean(), 30.0);
    QCOMPARE(m.high.deviation(), std::sqrt(200.0));
    QCOMPARE(m.low.count, std::int64_t(3));
    QCOMPARE(m.low.sum, std::int64_t(190));
    QCOMPARE(m.highPart.sum, std::int64_t(110));
    QCOMPARE(m.duty.least, 0.3);
    QCOMPARE(m.duty.most, 0.5);
    QCOMPARE(m.inverse.most, 0.01);
}

void TstChannelMeasures::aRangeHasTheEdgesFromItsStartToBeforeItsEnd()
{
    const auto data = WaveCapture().samples(1000).pulses(0, {100, 100, 100, 100}).build();
    QCOMPARE(measured(*data, 0, 100, 400).edges(), std::int64_t(3));
    QCOMPARE(measured(*data, 0, 101, 401).edges(), std::int64_t(3));
    QCOMPARE(measured(*data, 0, 101, 400).edges(), std::int64_t(2));
    QCOMPARE(measured(*data, 0, 300, 300).edges(), std::int64_t(0));
    QCOMPARE(measured(*data, 0, 2000, 3000).edges(), std::int64_t(0));
    QCOMPARE(measured(*data, 0, 0, 5000).edges(), std::int64_t(4));
}

void TstChannelMeasures::anIncompletePulseHasNoWidth()
{
    const auto data = WaveCapture().samples(1000).pulses(0, {100, 20}).build();
    const ChannelMeasures m = measured(*data, 0, 0, 1000);
    QCOMPARE(m.high.count, std::int64_t(1));
    QCOMPARE(m.low.count, std::int64_t(0));
    QCOMPARE(m.period.count, std::int64_t(0));
    QCOMPARE(m.inverse.count, std::int64_t(0));
}

void TstChannelMeasures::aQuietChannelHasNothingToMeasure()
{
    const auto data = WaveCapture().channels(3).samples(1000).build();
    const ChannelMeasures m = measured(*data, 2, 0, 1000);
    QCOMPARE(m.edges(), std::int64_t(0));
    QCOMPARE(m.high.mean(), 0.0);
    QCOMPARE(m.high.deviation(), 0.0);
    QCOMPARE(m.inverse.deviation(), 0.0);
}

void TstChannelMeasures::aChannelWithoutDataCannotBeMeasured()
{
    const auto data = WaveCapture().channels(2).samples(1000).build();
    ChannelMeasures m;
    const SmpReadLock lock(data.get());
    QVERIFY(!measureChannel(*data, 2, 0, 1000, m));
    QVERIFY(!measureChannel(*data, -1, 0, 1000, m));
}

void TstChannelMeasures::measuresAgreeWithTheirDefinitions()
{
    std::mt19937 random(7); // NOLINT(cert-msc51-cpp): the same in each run
    for (int round = 0; round < 20; ++round) {
        std::vector<std::int32_t> widths;
        std::int64_t end = 0;
        for (int i = 0; i < 500; ++i) {
            widths.push_back(int(1 + random() % (i % 7 == 0 ? 3'000'000U : 40U)));
            end += widths.back();
        }
        const auto data = WaveCapture().samples(end + 5).pulses(0, widths).build();
        const ChannelMeasures m = measured(*data, 0, 0, end + 5);
        std::vector<double> high;
        std::vector<double> periods;
        std::vector<double> inverse;
        for (std::size_t i = 1; i < widths.size(); i += 2) {
            high.push_back(double(widths[i]));
            if (i + 2 < widths.size()) {
                periods.push_back(double(widths[i]) + double(widths[i + 1]));
                inverse.push_back(1 / periods.back());
            }
        }
        QCOMPARE(m.high.count, std::int64_t(high.size()));
        QVERIFY(isNear(m.high.mean(), scatterOf(high).first));
        QVERIFY(isNear(m.high.deviation(), scatterOf(high).second));
        QCOMPARE(m.period.count, std::int64_t(periods.size()));
        QVERIFY(isNear(m.period.deviation(), scatterOf(periods).second));
        QVERIFY(isNear(m.inverse.deviation(), scatterOf(inverse).second));
    }
}

void TstChannelMeasures::deviationIsExactForLongPulses()
{
    constexpr std::int64_t longest = std::int64_t(1) << 40;
    SampleStatistics statistics;
    statistics.add(longest);
    statistics.add(longest - 2);
    QCOMPARE(statistics.deviation(), 1.0);
    SampleStatistics wide;
    wide.add(0);
    wide.add(longest);
    QCOMPARE(wide.deviation(), double(longest) / 2);
}

QTEST_GUILESS_MAIN(TstChannelMeasures)
#include "tst_ChannelMeasures.moc"
