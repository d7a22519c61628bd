// From the voltage at an emulated instrument's analog input to the values that are read of the capture.

#include "WavFile.h"
#include "acquisition/SmpState.h"
#include "analysis/AnalogParameters.h"
#include "emulator/MixedSignalDesk.h"
#include "support/TestImages.h"

#include <cmath>
#include <numbers>

namespace {

using emulator::AnalogInput;
using emulator::AnalogWave;
using emulator::WavFile;
using emulator::WavInput;
using Kind = emulator::AnalogWave::Kind;

/// A session with a mixed-signal instrument that has these at its analog inputs. Null if it does not come up.
std::unique_ptr<InstrumentDesk> connected(std::unique_ptr<AnalogInput> first, std::unique_ptr<AnalogInput> second)
{
    auto desk = mixedSignalDesk(std::move(first), std::move(second));
    return desk->isGood && desk->plug() ? std::move(desk) : nullptr;
}

/// The value of one name in the text of an analog channel of the last capture.
QString valueOf(int chn, const char *name, int probe = 1)
{
    const SmpReadLock reading(gDev->smpData.get());
    const QString text = reading ? analogParameters(*gDev->smpData, chn, probe) : QString();
    for (const QString &field : text.split(QLatin1Char(','))) {
        if (field.section(QLatin1Char(':'), 0, 0) == QLatin1String(name)) {
            return field.section(QLatin1Char(':'), 1);
        }
    }
    return {};
}

/// The same as millivolts; out of all bounds if it is no voltage.
double millivoltsOf(int chn, const char *name, int probe = 1)
{
    const QString value = valueOf(chn, name, probe);
    const int unit = value.endsWith(QLatin1String("mV")) ? 2 : 1;
    bool good = false;
    const double number = value.chopped(std::min(unit, value.size())).toDouble(&good);
    return good ? number * (unit == 2 ? 1 : 1000) : 1e9;
}

/// Microseconds, of a value that is written in them.
double microsecondsOf(int chn, const char *name)
{
    const QString value = valueOf(chn, name);
    return value.endsWith(QLatin1String("us")) ? value.chopped(2).toDouble() : -1;
}

} // namespace

class TstAnalogCaptures : public QObject {
    Q_OBJECT
private slots:
    void aSineOfOneKilohertzAndThreeVoltsIsReadAsSuch();
    void aSquareWaveAndARampAreReadWithTheirTimes();
    void aRecordingIsReadLikeAWaveAndNoiseNotAtAll();
    void analogSamplesStandAboveTheirDigitalEdges();
    void captureUnplugAndCaptureAgain();
    void theEndOfACaptureIsLearntAtTheFirstQuestion_data();
    void theEndOfACaptureIsLearntAtTheFirstQuestion();
};

void TstAnalogCaptures::aSineOfOneKilohertzAndThreeVoltsIsReadAsSuch()
{
    const auto desk = connected(generator({.kind = Kind::Sine, .frequency = 1000, .peakToPeak = 3}),
                                generator({.kind = Kind::Sine, .frequency = 2000, .peakToPeak = 6, .offset = -1}));
    QVERIFY(desk != nullptr);
    for (const std::int64_t rate : {100'000, 200'000, 1'000'000}) {
        QVERIFY(setRate(rate));
        QVERIFY(desk->capture());
        QCOMPARE(valueOf(0, "Period"), QStringLiteral("1ms"));
        QCOMPARE(valueOf(0, "Frequency"), QStringLiteral("1KHz"));
        QVERIFY(isAbout(millivoltsOf(0, "Vpp"), 3000));
        QVERIFY(isAbout(millivoltsOf(0, "Vmax"), 1500));
        QVERIFY(isAbout(millivoltsOf(0, "Vrms"), 1500 / std::sqrt(2.0)));
        QVERIFY(isAbout(millivoltsOf(0, "Vpp", 10) / 10, 3000));
    }
    QCOMPARE(valueOf(1, "Frequency"), QStringLiteral("2KHz"));
    QVERIFY(isAbout(millivoltsOf(1, "Vpp"), 6000, 2)); // one at either end
    QVERIFY(isAbout(millivoltsOf(1, "Vmax"), 2000));
}

void TstAnalogCaptures::aSquareWaveAndARampAreReadWithTheirTimes()
{
    const auto desk = connected(generator({.kind = Kind::Square, .frequency = 1000, .peakToPeak = 4}),
                                generator({.kind = Kind::Ramp, .frequency = 1000, .peakToPeak = 5, .offset = 1}));
    QVERIFY(desk != nullptr);
    QVERIFY(setRate(1'000'000));
    QVERIFY(desk->capture());
    QCOMPARE(valueOf(0, "Period"), QStringLiteral("1ms"));
    QCOMPARE(valueOf(0, "DutyCycle"), QStringLiteral("50.00%"));
    QCOMPARE(valueOf(0, "+PulseWidth"), QStringLiteral("500us"));
    QVERIFY(std::abs(microsecondsOf(0, "RiseTime") - 11) <= 1);
    QVERIFY(std::abs(microsecondsOf(0, "FallTime") - 11) <= 1);
    QVERIFY(isAbout(millivoltsOf(0, "Vtop"), 2000));
    QVERIFY(isAbout(millivoltsOf(0, "Vbase"), -2000, 2)); // a rise begins before the last step down

    QCOMPARE(valueOf(1, "Frequency"), QStringLiteral("1KHz"));
    QVERIFY(std::abs(microsecondsOf(1, "RiseTime") - 720) <= 14); // two steps of the converter
    QVERIFY(isAbout(millivoltsOf(1, "Vmax"), 3500));
    QVERIFY(isAbout(millivoltsOf(1, "Vmin"), -1500, 3)); // it falls by more than a step a sample
}

void TstAnalogCaptures::aRecordingIsReadLikeAWaveAndNoiseNotAtAll()
{
    // A second of 48000 frames: left 1 kHz at three fifths of full scale, right silent.
    auto file = std::make_shared<WavFile>();
    file->rate = 48000;
    file->channels = 2;
    for (int i = 0; i < 48000; ++i) {
        file->samples.push_back(float(0.6 * std::sin(i * 2 * std::numbers::pi / 48)));
        file->samples.push_back(0);
    }
    const auto desk = connected(std::make_unique<WavInput>(file, 0, WavInput::Settings{}),
                                std::make_unique<WavInput>(file, 1, WavInput::Settings{.noise = 1}));
    QVERIFY(desk != nullptr);
    QVERIFY(setRate(1'000'000));
    QVERIFY(desk->capture());
    QCOMPARE(valueOf(0, "Frequency"), QStringLiteral("1KHz"));
    QVERIFY(isAbout(millivoltsOf(0, "Vpp"), 6000));
    QCOMPARE(valueOf(1, "Frequency"), QString());
    const std::span<const std::int8_t> samples = analogSamples(*gDev->smpData, 1);
    QCOMPARE(int(*std::max_element(samples.begin(), samples.end())), 12); // of 12.75, and the middle lies at -0.5
    QCOMPARE(int(*std::min_element(samples.begin(), samples.end())), -13);
}

void TstAnalogCaptures::analogSamplesStandAboveTheirDigitalEdges()
{
    // Channel 9 of the counter changes every 512 us, as the square wave does.
    const auto desk =
        connected(generator({.kind = Kind::Square, .frequency = 1e6 / 1024, .peakToPeak = 8}), generator({}));
    QVERIFY(desk != nullptr);
    QVERIFY(setRate(1'000'000));
    QVERIFY(desk->capture());
    const SmpData &data = *gDev->smpData;
    const std::span<const std::int8_t> samples = analogSamples(data, 0);
    constexpr int counted = 9;
    for (std::int64_t pos = data.nextEdge(counted, 0); pos < data.smpCount(); pos = data.nextEdge(counted, pos)) {
        SmpEdgeCursor cursor;
        const bool high = data.locate(counted, pos, cursor) == 1;
        constexpr std::int64_t settled = 100;
        QCOMPARE(samples[std::size_t(pos + settled)] > 0, high);
        QCOMPARE(samples[std::size_t(pos - 1)] > 0, !high);
    }
    // All digital channels are what they are without analog inputs.
    for (std::int64_t pos = 0; pos < data.smpCount(); pos += 37) {
        for (int chn = 0; chn < 16; ++chn) {
            SmpEdgeCursor cursor;
            QCOMPARE(data.locate(chn, pos, cursor), int(pos >> chn & 1));
        }
    }
}

void TstAnalogCaptures::captureUnplugAndCaptureAgain()
{
    const auto desk =
        connected(generator({.kind = Kind::Sine, .frequency = 1000, .peakToPeak = 3}), generator({.offset = 1}));
    QVERIFY(desk != nullptr);
    for (int capture = 0; capture < 2; ++capture) {
        QVERIFY(setRate(1'000'000));
        QVERIFY(desk->capture());
        QCOMPARE(desk->lastError(), 0);
        QCOMPARE(gDev->smpData->smpCount(), gDev->smpDepth());
        QVERIFY(desk->unplug());
        QCOMPARE(valueOf(0, "Frequency"), QStringLiteral("1KHz")); // the capture stays
        QCOMPARE(int(analogSamples(*gDev->smpData, 1)[4000]), 25);
        QVERIFY(desk->plug());
    }
}

void TstAnalogCaptures::theEndOfACaptureIsLearntAtTheFirstQuestion_data()
{
    QTest::addColumn<int>("rate");
    QTest::newRow("8 ms") << 1'000'000;
    QTest::newRow("0.8 ms") << 10'000'000;
    QTest::newRow("0.08 ms") << 100'000'000;
}

void TstAnalogCaptures::theEndOfACaptureIsLearntAtTheFirstQuestion()
{
    QFETCH(int, rate);
    // It samples by the clock.
    const auto desk = mixedSignalDesk(generator({.kind = Kind::Sine}), generator({}), 1);
    QVERIFY(desk->isGood && desk->plug());
    QVERIFY(setRate(rate));
    QVERIFY(desk->capture());
    QCOMPARE(desk->lastError(), 0);
    QVERIFY(!desk->has(smpState::filling));
    QVERIFY(!desk->has(smpState::sampling));
    QCOMPARE(gDev->smpData->smpCount(), gDev->smpDepth());
}

QTEST_GUILESS_MAIN(TstAnalogCaptures)
#include "tst_AnalogCaptures.moc"
