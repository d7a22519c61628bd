#include "analysis/AnalogParameters.h"
#include "store/SmpWriter.h"
#include "wave/WaveCapture.h"

#include <QtTest>

#include <algorithm>
#include <limits>
#include <random>

namespace {

using Samples = std::vector<std::int8_t>;

constexpr std::int64_t mega = 1'000'000; // Hz: a sample is a microsecond

/// So many samples, each made of its index.
template<class Make>
Samples samplesOf(int count, Make make)
{
    Samples samples(std::size_t(count), 0);
    for (int i = 0; i < count; ++i) {
        samples[std::size_t(i)] = std::int8_t(make(i));
    }
    return samples;
}

/// Straight up in `up` samples, `hold` samples at the top, straight down in `down`, and `hold` at the bottom.
Samples trapezoids(int count, int up, int down, int hold, int low, int high)
{
    return samplesOf(count, [=](int i) {
        const int at = i % (up + down + 2 * hold);
        if (at < up) {
            return low + (high - low) * at / up;
        }
        if (at < up + hold) {
            return high;
        }
        return at < up + hold + down ? high - (high - low) * (at - up - hold) / down : low;
    });
}

/// Pulses of `high` samples in a period of 100. Both levels droop by a step in five samples, as behind a coupling
/// capacitor, so that each rise is one of few samples.
Samples pulses(int high)
{
    return samplesOf(1000, [=](int i) {
        const int low = 100 - high;
        const int at = i % 100;
        return at < low ? -60 - at / 5 : 76 - (at - low) / 5;
    });
}

/// Pulses of 12 samples that fall to a plateau of 25, in a period of 100. Bottom and top droop by a step in five
/// samples, so that each rise is one of few samples: from `bottom` to `top`.
Samples pulsesWithPlateau(int bottom, int top, int plateau)
{
    return samplesOf(1000, [=](int i) {
        const int at = i % 100;
        if (at < 63) {
            return bottom + 11 - at / 5; // the last three are the step below, which the rise leaves
        }
        return at < 75 ? top - (at - 63) / 5 : plateau;
    });
}

/// Ten periods of 100 samples, from -1.5 V to 1.5 V.
Samples wave()
{
    return trapezoids(1000, 40, 40, 10, -38, 38);
}

QString fieldOf(const QString &text, const char *name)
{
    for (const QString &field : text.split(QLatin1Char(','))) {
        if (field.startsWith(QLatin1String(name) + QLatin1Char(':'))) {
            return field.mid(int(qstrlen(name)) + 1);
        }
    }
    return {};
}

} // namespace

/// The values were worked out by another program, in another language.
class TstAnalogParameters : public QObject {
    Q_OBJECT
private slots:
    void aWaveHasSeventeenParametersInTheirOrder();
    void aFlatSignalHasNone();
    void fewSamplesHaveNone();
    void fewerThanFourRisesHaveNone();
    void risesBelowTwoVoltsAtTheProbesTipHaveNone();
    void aSquareWaveOfOneVoltHasNone();
    void aProbeScalesLevelsAndLimit();
    void aSpikeOfOneSampleChangesNothing();
    void aFastRiseNeedsAPlateauOfTwentySamples();
    void aPlateauAtTheMiddleItselfIsNotAboveIt();
    void aLevelThatIsNotPassedCountsAsPassedAtTheFirstSample();
    void aRiseOfTwentySamplesNeedsNoPlateau();
    void aPeriodInWholeNanosecondsIsWrittenSoAndAnotherInPicoseconds();
    void aFrequencyIsCutToWholeHertz();
    void onlyThePeriodInTheMiddleIsTimed();
    void thePreshootBelowTheBaseIsNegative();
    void aPerfectSquareWaveIsTimedFromTheSampleBeforeItsFall();
    void aLevelThatIsNotThereIsNoNumber();
    void aPeriodOfNoSampleLeavesFrequencyAndDutyWithoutValue();
    void anUnknownRateLeavesTimesWithoutValue();
    void randomSamplesGiveTheSameValuesAsTheOtherProgram();
    void anyRateAndProbeIsHarmless();
    void aChannelOfACaptureIsMeasured();
    void aChannelThatACaptureDoesNotHaveHasNone();
    void aCountBeyondTheBufferIsCut();
};

void TstAnalogParameters::aWaveHasSeventeenParametersInTheirOrder()
{
    QCOMPARE(analogParameters(wave(), mega, 1),
             QStringLiteral("Period:100us,Frequency:10KHz,RiseTime:32us,FallTime:32us,+PulseWidth:49us,"
                            "-PulseWidth:51us,DutyCycle:49.00%,Vmax:1.51V,Vmin:-1392.16mV,Vpp:2.90V,Vamp:2.90V,"
                            "Vtop:1.51V,Vbase:-1388.24mV,Overshoot:0.00%,Preshoot:-0.14%,Vavg:21.27mV,Vrms:1.02V"));
}

void TstAnalogParameters::aFlatSignalHasNone()
{
    for (const int level : {-128, 0, 127}) {
        QCOMPARE(analogParameters(Samples(1000, std::int8_t(level)), mega, 1), QString());
    }
}

void TstAnalogParameters::fewSamplesHaveNone()
{
    const Samples all = wave();
    for (std::size_t count = 0; count < 10; ++count) {
        // An array of its own for each, so that a sanitizer sees an index that leaves it.
        QCOMPARE(analogParameters(Samples(all.begin(), all.begin() + std::ptrdiff_t(count)), mega, 1), QString());
    }
}

void TstAnalogParameters::fewerThanFourRisesHaveNone()
{
    const Samples all = wave();
    QCOMPARE(analogParameters(std::span(all).first(300), mega, 1), QString());
    QCOMPARE(fieldOf(analogParameters(std::span(all).first(400), mega, 1), "Period"), QStringLiteral("100us"));
}

void TstAnalogParameters::risesBelowTwoVoltsAtTheProbesTipHaveNone()
{
    const Samples below = trapezoids(1000, 40, 40, 10, -25, 25); // 50 steps of 39.2 mV
    QCOMPARE(analogParameters(below, mega, 1), QString());
    QCOMPARE(analogParameters(below, mega, 10), QString()); // 20 V are needed
    const Samples above = trapezoids(1000, 40, 40, 10, -25, 27);
    QCOMPARE(fieldOf(analogParameters(above, mega, 1), "Vpp"), QStringLiteral("1.96V"));
    QCOMPARE(fieldOf(analogParameters(above, mega, 10), "Vpp"), QStringLiteral("19.61V"));
    const Samples exactly = trapezoids(1000, 40, 40, 10, -26, 25); // from -1 V to 1 V
    QCOMPARE(fieldOf(analogParameters(exactly, mega, 1), "Vpp"), QStringLiteral("1.92V"));
}

void TstAnalogParameters::aSquareWaveOfOneVoltHasNone()
{
    const auto square = [](int i) { return i / 50 % 2 == 0 ? -13 : 12; };
    QCOMPARE(analogParameters(samplesOf(1000, square), mega, 1), QString());
    QCOMPARE(analogParameters(samplesOf(1000, square), mega, 10), QString());
}

void TstAnalogParameters::aProbeScalesLevelsAndLimit()
{
    const QString text = analogParameters(wave(), mega, 100);
    QCOMPARE(fieldOf(text, "Period"), QStringLiteral("100us"));
    QCOMPARE(fieldOf(text, "Vmax"), QStringLiteral("150.98V"));
    QCOMPARE(fieldOf(text, "Vbase"), QStringLiteral("-138823.53mV"));
    QCOMPARE(fieldOf(text, "Vrms"), QStringLiteral("101.98V"));
}

void TstAnalogParameters::aSpikeOfOneSampleChangesNothing()
{
    Samples spiked = wave();
    for (std::size_t i = 7; i < spiked.size(); i += 50) {
        spiked[i] = std::int8_t(i % 100 < 50 ? 127 : -128);
    }
    QCOMPARE(analogParameters(spiked, mega, 1), analogParameters(wave(), mega, 1));
    Samples spikes(1000, 0);
    for (std::size_t i = 20; i < spikes.size(); i += 40) {
        spikes[i] = 127;
    }
    QCOMPARE(analogParameters(spikes, mega, 1), QString());
}

void TstAnalogParameters::aFastRiseNeedsAPlateauOfTwentySamples()
{
    // The last of the plateau's samples that do not fall belong to the rise: they are not counted again.
    for (int high = 19; high < 24; ++high) {
        QCOMPARE(analogParameters(pulses(high), mega, 1), QString());
    }
    QCOMPARE(analogParameters(pulses(24), mega, 1),
             QStringLiteral("Period:100us,Frequency:10KHz,RiseTime:1us,FallTime:1us,+PulseWidth:24us,"
                            "-PulseWidth:76us,DutyCycle:24.00%,Vmax:3.00V,Vmin:-2843.14mV,Vpp:5.84V,Vamp:5.84V,"
                            "Vtop:3.00V,Vbase:-2843.14mV,Overshoot:0.00%,Preshoot:0.00%,Vavg:-1285.59mV,Vrms:2.69V"));
}

void TstAnalogParameters::aPlateauAtTheMiddleItselfIsNotAboveIt()
{
    // From -3 V to 5 V, and a plateau at 1 V or a step higher.
    QCOMPARE(analogParameters(pulsesWithPlateau(-77, 127, 25), mega, 1), QString());
    QCOMPARE(fieldOf(analogParameters(pulsesWithPlateau(-77, 127, 26), mega, 1), "DutyCycle"),
             QStringLiteral("37.00%"));
    // The middle is cut to whole millivolts: of 137.25 mV, which is the plateau's level, to 137.
    QCOMPARE(analogParameters(pulsesWithPlateau(-70, 76, 2), mega, 1), QString());
    QCOMPARE(fieldOf(analogParameters(pulsesWithPlateau(-70, 76, 3), mega, 1), "DutyCycle"), QStringLiteral("37.00%"));
}

void TstAnalogParameters::aLevelThatIsNotPassedCountsAsPassedAtTheFirstSample()
{
    // Each rise begins above the middle of the one before: between the two nothing falls below it.
    const Samples stairs = samplesOf(160, [](int i) {
        const int at = i % 40;
        return -128 + i / 40 * 33 + (at < 30 ? 2 * at : 60 - 27 * (at - 30) / 10);
    });
    const QString text = analogParameters(stairs, mega, 1);
    QCOMPARE(fieldOf(text, "Period"), QStringLiteral("21us"));
    QCOMPARE(fieldOf(text, "+PulseWidth"), QStringLiteral("-97us"));
    QCOMPARE(fieldOf(text, "-PulseWidth"), QStringLiteral("118us"));
    QCOMPARE(fieldOf(text, "DutyCycle"), QStringLiteral("-461.90%"));
}

void TstAnalogParameters::aRiseOfTwentySamplesNeedsNoPlateau()
{
    // Of 18 steps; the filter holds the turning points for two more.
    const QString slow = analogParameters(trapezoids(600, 18, 20, 0, -70, 70), mega, 1);
    QCOMPARE(fieldOf(slow, "Period"), QStringLiteral("38us"));
    QCOMPARE(fieldOf(slow, "+PulseWidth"), QStringLiteral("18us"));
    QCOMPARE(analogParameters(trapezoids(600, 17, 20, 0, -70, 70), mega, 1), QString());
}

void TstAnalogParameters::aPeriodInWholeNanosecondsIsWrittenSoAndAnotherInPicoseconds()
{
    const QString text = analogParameters(wave(), 7 * mega, 1);
    QCOMPARE(fieldOf(text, "Period"), QStringLiteral("14285714ps"));
    QCOMPARE(fieldOf(text, "+PulseWidth"), QStringLiteral("7us"));
    QCOMPARE(fieldOf(text, "-PulseWidth"), QStringLiteral("7285714ps"));
    QCOMPARE(fieldOf(text, "Frequency"), QStringLiteral("70KHz"));
    QCOMPARE(fieldOf(analogParameters(wave(), 8 * mega, 1), "Period"), QStringLiteral("12500ns"));
}

void TstAnalogParameters::aFrequencyIsCutToWholeHertz()
{
    QCOMPARE(fieldOf(analogParameters(trapezoids(1000, 10, 40, 5, -70, 70), mega, 1), "Frequency"),
             QStringLiteral("16666Hz"));
    QCOMPARE(fieldOf(analogParameters(wave(), 199, 1), "Frequency"), QStringLiteral("1Hz"));
    QCOMPARE(fieldOf(analogParameters(wave(), 99, 1), "Frequency"), QStringLiteral("0GHz"));
}

void TstAnalogParameters::onlyThePeriodInTheMiddleIsTimed()
{
    // Ten periods, the sixth of them stretched by ten samples at its bottom: that between the middle rises.
    Samples samples = wave();
    samples.insert(samples.begin() + 595, 10, std::int8_t(-38));
    const QString text = analogParameters(samples, mega, 1);
    QCOMPARE(fieldOf(text, "Period"), QStringLiteral("110us"));
    QCOMPARE(fieldOf(text, "+PulseWidth"), QStringLiteral("49us"));
    // The seventh does not count.
    samples = wave();
    samples.insert(samples.begin() + 695, 10, std::int8_t(-38));
    QCOMPARE(fieldOf(analogParameters(samples, mega, 1), "Period"), QStringLiteral("100us"));
}

void TstAnalogParameters::thePreshootBelowTheBaseIsNegative()
{
    const QString text = analogParameters(trapezoids(1000, 60, 40, 0, -70, 70), mega, 1);
    QCOMPARE(fieldOf(text, "Vmin"), QStringLiteral("-2568.63mV"));
    QCOMPARE(fieldOf(text, "Vbase"), QStringLiteral("-2462.75mV"));
    QCOMPARE(fieldOf(text, "Preshoot"), QStringLiteral("-2.07%"));
}

void TstAnalogParameters::aPerfectSquareWaveIsTimedFromTheSampleBeforeItsFall()
{
    // A rise begins one sample before the flat bottom. If the fall takes a single sample that is still the top.
    QCOMPARE(analogParameters(samplesOf(1000, [](int i) { return i / 50 % 2 == 0 ? -77 : 76; }), mega, 1),
             QStringLiteral("Period:100us,Frequency:10KHz,RiseTime:-50us,FallTime:0s,+PulseWidth:100us,"
                            "-PulseWidth:0s,DutyCycle:100.00%,Vmax:3.00V,Vmin:-3000.00mV,Vpp:6.00V,Vamp:6.00V,"
                            "Vtop:3.00V,Vbase:-3000.00mV,Overshoot:0.00%,Preshoot:0.00%,Vavg:-3.00mV,Vrms:3.00V"));
}

void TstAnalogParameters::aLevelThatIsNotThereIsNoNumber()
{
    // It begins at the top, so that no rise begins below the average.
    const QString text = analogParameters(samplesOf(2000, [](int i) { return i % 100 < 20 ? 76 : -77; }), mega, 1);
    QCOMPARE(fieldOf(text, "Vbase"), QStringLiteral("nanmV"));
    QCOMPARE(fieldOf(text, "Vamp"), QStringLiteral("nanmV"));
    QCOMPARE(fieldOf(text, "Overshoot"), QStringLiteral("nan%"));
    QCOMPARE(fieldOf(text, "Preshoot"), QStringLiteral("nan%"));
    QCOMPARE(fieldOf(text, "RiseTime"), QStringLiteral("100us"));
    QCOMPARE(fieldOf(text, "FallTime"), QStringLiteral("0s"));
}

void TstAnalogParameters::aPeriodOfNoSampleLeavesFrequencyAndDutyWithoutValue()
{
    // The filter makes a peak of one sample of three that stand apart. Each is higher than the one before, so that a
    // rise passes its middle on the very sample on which the next one begins.
    Samples samples(300, -40);
    for (std::size_t peak = 0; peak < 9; ++peak) {
        for (const std::size_t at : {10U, 12U, 14U}) {
            samples[peak * 30 + at] = std::int8_t(30 + 10 * int(peak));
        }
    }
    const QString text = analogParameters(samples, mega, 1);
    QCOMPARE(fieldOf(text, "Period"), QStringLiteral("0s"));
    QCOMPARE(fieldOf(text, "Frequency"), QStringLiteral("--"));
    QCOMPARE(fieldOf(text, "DutyCycle"), QStringLiteral("--"));
}

void TstAnalogParameters::anUnknownRateLeavesTimesWithoutValue()
{
    for (const std::int64_t rate : {std::int64_t(0), std::int64_t(-5), std::numeric_limits<std::int64_t>::min()}) {
        const QString text = analogParameters(wave(), rate, 1);
        for (const char *name : {"Period", "Frequency", "RiseTime", "FallTime", "+PulseWidth", "-PulseWidth"}) {
            QCOMPARE(fieldOf(text, name), QStringLiteral("--"));
        }
        QCOMPARE(fieldOf(text, "DutyCycle"), QStringLiteral("49.00%"));
        QCOMPARE(fieldOf(text, "Vmax"), QStringLiteral("1.51V"));
    }
}

void TstAnalogParameters::randomSamplesGiveTheSameValuesAsTheOtherProgram()
{
    std::uint32_t state = 1;
    const auto next = [&state](int) {
        state = (state * 1103515245U + 12345U) & 0x7fffffffU;
        return int(state >> 16) % 256 - 128;
    };
    QCOMPARE(analogParameters(samplesOf(32768, next), mega, 1),
             QStringLiteral("Period:428us,Frequency:2336Hz,RiseTime:1us,FallTime:-396us,+PulseWidth:25us,"
                            "-PulseWidth:403us,DutyCycle:5.84%,Vmax:3.75V,Vmin:-4843.14mV,Vpp:8.59V,Vamp:3.55V,"
                            "Vtop:1.24V,Vbase:-2311.94mV,Overshoot:70.75%,Preshoot:-71.36%,Vavg:8.22mV,Vrms:1.90V"));
}

void TstAnalogParameters::anyRateAndProbeIsHarmless()
{
    constexpr std::int64_t longest = std::numeric_limits<std::int64_t>::max();
    constexpr int most = std::numeric_limits<int>::max();
    std::mt19937 random(12);
    for (int round = 0; round < 200; ++round) {
        const auto noise = [&random](int) { return int(random() % 256) - 128; };
        const Samples samples = samplesOf(int(random() % 400), noise);
        for (const int probe : {0, 1, -1, 10, most, std::numeric_limits<int>::min()}) {
            for (const std::int64_t rate : {std::int64_t(1), mega, longest}) {
                const QString text = analogParameters(samples, rate, probe);
                QVERIFY(text.isEmpty() || text.count(QLatin1Char(',')) == 16);
            }
        }
    }
    QCOMPARE(fieldOf(analogParameters(wave(), longest, 1), "Period"), QStringLiteral("0s"));
    QCOMPARE(fieldOf(analogParameters(wave(), mega, most), "Vmax"), QStringLiteral("3242279231.75V"));
    QCOMPARE(analogParameters(wave(), mega, 0), QString()); // flat
}

void TstAnalogParameters::aChannelOfACaptureIsMeasured()
{
    const auto data = capture().channels(1, 2).rate(2 * mega).build();
    SmpAChnBuffer *buffer = SmpWriter(*data).aChnBuf(1);
    const Samples samples = wave();
    std::copy(samples.begin(), samples.end(), buffer->samples);
    buffer->count = std::int32_t(samples.size());
    QCOMPARE(fieldOf(analogParameters(*data, 1, 1), "Period"), QStringLiteral("50us"));
    QCOMPARE(fieldOf(analogParameters(*data, 1, 10), "Vmax"), QStringLiteral("15.10V"));
    buffer->count = 300; // three periods
    QCOMPARE(analogParameters(*data, 1, 1), QString());
    buffer->count = 0;
    QCOMPARE(analogParameters(*data, 1, 1), QString());
}

void TstAnalogParameters::aChannelThatACaptureDoesNotHaveHasNone()
{
    const auto data = capture().channels(1, 2).build();
    const SmpData empty(1, 2); // never began: no buffers
    for (const int chn : {-1, 2, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        QCOMPARE(analogParameters(*data, chn, 1), QString());
    }
    QCOMPARE(analogParameters(empty, 0, 1), QString());
}

void TstAnalogParameters::aCountBeyondTheBufferIsCut()
{
    const auto data = capture().channels(1, 1).build();
    SmpWriter(*data).aChnBuf(0)->count = SmpAChnBuffer::capacity + 1;
    QCOMPARE(analogSamples(*data, 0).size(), std::size_t(SmpAChnBuffer::capacity));
    SmpWriter(*data).aChnBuf(0)->count = -1;
    QVERIFY(analogSamples(*data, 0).empty());
}

QTEST_APPLESS_MAIN(TstAnalogParameters)
#include "tst_AnalogParameters.moc"
