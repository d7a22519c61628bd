// What lies on analog inputs: generated waves, the converter, and the clock that samples them.

#include "AnalogWave.h"
#include "MixedSignal.h"
#include "Sampler.h"
#include "WaveSignal.h"

#include <QtTest>

#include <cmath>
#include <limits>

using emulator::AnalogInput;
using emulator::AnalogWave;
using emulator::convert;
using emulator::MixedSignal;
using emulator::Noise;
using emulator::SampleMoment;
using emulator::Sampler;
using emulator::WaveSignal;
using Kind = emulator::AnalogWave::Kind;
using Wave = emulator::WaveSignal::Wave;

namespace {

/// Of 4 V and 1 kHz about 1 V.
AnalogWave waveOf(Kind kind)
{
    return AnalogWave({.kind = kind, .frequency = 1000, .peakToPeak = 4, .offset = 1});
}

/// The voltage so many periods behind the start.
double after(AnalogInput &input, double periods)
{
    return input.voltsAt({.seconds = periods / 1000});
}

bool isNear(double a, double b, double by = 1e-6)
{
    return std::abs(a - b) < by;
}

} // namespace

class TstAnalogSignals : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theConverterSpansTenVolts_data();
    void theConverterSpansTenVolts();
    void aSineSwingsAboutItsOffset();
    void aSquareWaveSettlesAtItsLevels();
    void theEdgesOfASquareWaveTakeAHundredthOfThePeriod();
    void aRampRisesForNineTenthsOfThePeriod();
    void aFlatSignalIsItsOffset();
    void noiseStaysWithinItsLimitsAndFillsThem();
    void noiseIsAddedToAWave();
    void twoLooksAtNoiseDiffer();
    void aWaveFollowsTheTimeWhateverTheSamplesAre();
    void theDigitalChannelsOfAMixedSignalAreThoseOfItsSignal();
    void anAnalogChannelWithoutInputIsThatOfTheSignal();
};

void TstAnalogSignals::theConverterSpansTenVolts_data()
{
    QTest::addColumn<double>("volts");
    QTest::addColumn<int>("byte");
    QTest::addRow("lowest") << -5.0 << -128;
    QTest::addRow("highest") << 5.0 << 127;
    QTest::addRow("middle") << 0.0 << 0;
    QTest::addRow("nearly the middle") << -1e-12 << 0;
    QTest::addRow("below the middle") << -1e-6 << -1;
    QTest::addRow("1.5 V") << 1.5 << 38;
    QTest::addRow("-1.5 V") << -1.5 << -39;
    QTest::addRow("below") << -1000.0 << -128;
    QTest::addRow("above") << 1000.0 << 127;
    QTest::addRow("no number") << std::numeric_limits<double>::quiet_NaN() << -128;
    QTest::addRow("without end") << std::numeric_limits<double>::infinity() << 127;
}

void TstAnalogSignals::theConverterSpansTenVolts()
{
    QFETCH(double, volts);
    QTEST(int(convert(volts)), "byte");
}

void TstAnalogSignals::aSineSwingsAboutItsOffset()
{
    AnalogWave wave = waveOf(Kind::Sine);
    QVERIFY(isNear(after(wave, 0), 1));
    QVERIFY(isNear(after(wave, 0.25), 3));
    QVERIFY(isNear(after(wave, 1.0 / 12), 2));
    QVERIFY(isNear(after(wave, 0.75), -1));
    QVERIFY(isNear(after(wave, 1000.25), 3));
}

void TstAnalogSignals::aSquareWaveSettlesAtItsLevels()
{
    AnalogWave wave = waveOf(Kind::Square);
    QVERIFY(isNear(after(wave, 0.49), -1));
    QVERIFY(isNear(after(wave, 0.6), 3));
    QVERIFY(isNear(after(wave, 0.999), 3));
    QVERIFY(isNear(after(wave, 7.1), -1));
}

void TstAnalogSignals::theEdgesOfASquareWaveTakeAHundredthOfThePeriod()
{
    AnalogWave wave = waveOf(Kind::Square);
    QVERIFY(isNear(after(wave, 0.5), -1));
    QVERIFY(after(wave, 0.5 + 0.0005) < -0.6); // 10 %
    QVERIFY(after(wave, 0.5 + 0.012) > 2.6);   // 90 %
    QVERIFY(after(wave, 1.0005) > 2.6);
    QVERIFY(after(wave, 1.012) < -0.6);
}

void TstAnalogSignals::aRampRisesForNineTenthsOfThePeriod()
{
    AnalogWave wave = waveOf(Kind::Ramp);
    QVERIFY(isNear(after(wave, 0), -1));
    QVERIFY(isNear(after(wave, 0.45), 1));
    QVERIFY(isNear(after(wave, 0.9), 3));
    QVERIFY(isNear(after(wave, 0.95), 1));
    QVERIFY(isNear(after(wave, 2.225), 0));
}

void TstAnalogSignals::aFlatSignalIsItsOffset()
{
    AnalogWave wave = waveOf(Kind::Flat);
    QVERIFY(isNear(after(wave, 0), 1));
    QVERIFY(isNear(after(wave, 0.3), 1));
}

void TstAnalogSignals::noiseStaysWithinItsLimitsAndFillsThem()
{
    AnalogWave wave = waveOf(Kind::Noise);
    double lowest = 1, highest = 1, sum = 0;
    constexpr int count = 10000;
    for (int i = 0; i < count; ++i) {
        const double volts = after(wave, i * 0.001);
        QVERIFY(volts >= -1 && volts <= 3);
        lowest = std::min(lowest, volts);
        highest = std::max(highest, volts);
        sum += volts;
    }
    QVERIFY(lowest < -0.99 && highest > 2.99);
    QVERIFY(isNear(sum / count, 1, 0.05));
}

void TstAnalogSignals::noiseIsAddedToAWave()
{
    AnalogWave wave({.kind = Kind::Sine, .frequency = 1000, .peakToPeak = 4, .noise = 0.5});
    double lowest = 5, highest = -5;
    for (int i = 0; i < 1000; ++i) {
        const double volts = after(wave, 0.25 + i);
        lowest = std::min(lowest, volts);
        highest = std::max(highest, volts);
    }
    QVERIFY(lowest >= 1.75 && lowest < 1.76);
    QVERIFY(highest <= 2.25 && highest > 2.24);
}

void TstAnalogSignals::twoLooksAtNoiseDiffer()
{
    AnalogWave wave = waveOf(Kind::Noise);
    QVERIFY(after(wave, 0) != after(wave, 0));
    Noise first(1, 5), same(1, 5), other(1, 6), zero(1, 0);
    const double value = first.next();
    QCOMPARE(same.next(), value);
    QVERIFY(other.next() != value);
    QVERIFY(zero.next() != zero.next()); // a seed like any other
}

void TstAnalogSignals::aWaveFollowsTheTimeWhateverTheSamplesAre()
{
    for (const bool direct : {false, true}) {
        std::vector<std::unique_ptr<AnalogInput>> inputs;
        inputs.push_back(std::make_unique<AnalogWave>(
            AnalogWave::Settings{.kind = Kind::Ramp, .frequency = 1000, .peakToPeak = 10}));
        const auto signal =
            std::make_shared<MixedSignal>(std::make_shared<WaveSignal>(1000, WaveSignal::quiet()), std::move(inputs));
        const Sampler sampler(signal, 100'000'000, 100, direct); // 1 MHz: 1000 samples a period
        QCOMPARE(sampler.analogAt(0, 0), std::int8_t(-128));
        QCOMPARE(sampler.analogAt(0, 900), std::int8_t(127));
        QCOMPARE(sampler.analogAt(0, 450), std::int8_t(0));
        QCOMPARE(sampler.analogAt(0, 5'000'000'900), std::int8_t(127));
    }
}

void TstAnalogSignals::theDigitalChannelsOfAMixedSignalAreThoseOfItsSignal()
{
    const auto digital = std::make_shared<WaveSignal>(1000, WaveSignal::counter(4, 3));
    MixedSignal mixed(digital, {});
    QCOMPARE(mixed.rate(), std::int64_t(1000));
    WaveSignal again(1000, WaveSignal::counter(4, 3));
    for (std::int64_t at = 0; at < 100; ++at) {
        QCOMPARE(mixed.at(at, 7).levels, again.at(at, 7).levels);
        QCOMPARE(mixed.at(at, 7).end, again.at(at, 7).end);
    }
}

void TstAnalogSignals::anAnalogChannelWithoutInputIsThatOfTheSignal()
{
    const auto digital = std::make_shared<WaveSignal>(1000, WaveSignal::quiet());
    std::vector<std::unique_ptr<AnalogInput>> inputs(1);
    inputs.push_back(std::make_unique<AnalogWave>(AnalogWave::Settings{.offset = 5}));
    MixedSignal mixed(digital, std::move(inputs));
    const SampleMoment moment{.position = 64};
    QCOMPARE(mixed.analogAt(0, moment), std::int8_t(100));
    QCOMPARE(mixed.analogAt(1, moment), std::int8_t(127));
    for (const int channel : {-1, 2, 1000}) {
        QCOMPARE(mixed.analogAt(channel, moment), digital->analogAt(channel, moment));
    }
}

QTEST_APPLESS_MAIN(TstAnalogSignals)
#include "tst_AnalogSignals.moc"
