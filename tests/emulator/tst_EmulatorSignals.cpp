// What lies on the inputs: generated signals, edge lists, data files, and the clock that samples them.

#include "CxdatSignal.h"
#include "EdgeSignal.h"
#include "Sampler.h"
#include "WaveSignal.h"
#include "emulator/Bench.h"

#include <QtTest>

#include <random>

using namespace bench;
using emulator::CxdatCapture;
using emulator::EdgeSignal;
using emulator::never;
using emulator::parseCxdat;
using emulator::Sampler;
using emulator::SignalRun;
using emulator::WaveSignal;
using Wave = emulator::WaveSignal::Wave;

namespace {

/// A data file of 1000 samples at 1 MHz: channel 0 low, high from 10 to 20; channel 3 high.
Bytes dataFile()
{
    const std::string settings = "<settings><global/></settings>\n";
    Bytes file(settings.begin(), settings.end());
    file = file + Bytes{'c', 'x', 'd', 'a', 't', 0, 0, 0} + little(1000, 8) + little(1'000'000, 8) + little(10, 8) +
           little(8, 8);
    file = file + Bytes{'#', '#', 'D', 0, 0, 0, 0, 0} + little(3, 8) + little(10, 5) + little(20, 5) + little(1000, 5);
    return file + Bytes{'#', '#', 'D', 0, 3, 1, 0, 0} + little(1, 8) + little(1000, 5);
}

constexpr std::size_t headAt = 31;
constexpr std::size_t firstBlock = headAt + 40;

/// Every run that `at` tells, checked against single samples at random places, forward and backward.
void compareRuns(emulator::LogicSignal &signal, emulator::LogicSignal &again, std::int64_t length, std::uint32_t mask)
{
    std::vector<std::uint32_t> samples;
    for (std::int64_t at = 0; at < length;) {
        const SignalRun run = signal.at(at, mask);
        QVERIFY(run.end > at);
        const std::int64_t end = std::min(run.end, length);
        samples.insert(samples.end(), std::size_t(end - at), run.levels);
        at = end;
    }
    std::minstd_rand random(5);
    for (int i = 0; i < 2000; ++i) {
        const auto at = std::int64_t(random() % std::uint64_t(length));
        QCOMPARE(again.at(at, mask).levels, samples[std::size_t(at)]);
    }
}

} // namespace

class TstEmulatorSignals : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aSquareWaveTogglesEveryHalfPeriod();
    void aPatternRepeatsItsWidths();
    void noiseStaysWithinItsWidthsAndRepeatsForItsSeed();
    void farNoiseIsWhatAWalkThereFinds();
    void noiseIsReachedAnywhereAtOnce();
    void runsAndSingleSamplesAgree();
    void anEdgeListTellsLevelsForwardAndBackward();
    void channelsOutsideTheMaskEndNoRun();
    void aDataFileIsReadWithItsEdges();
    void aDataFileThatIsCutIsRefusedAtEveryByte();
    void malformedDataFilesAreRefused();
    void anEdgeAtTheFirstSampleInvertsTheStartLevel();
    void equalRatesMapSampleForSample();
    void aFasterSignalIsSampledAndASlowerOneHeld();
    void sampledRunsEndWhereTheLevelsChange();
};

void TstEmulatorSignals::aSquareWaveTogglesEveryHalfPeriod()
{
    WaveSignal signal(1, {Wave::square(3), Wave::square(4, true, 2)});
    const std::vector<std::uint32_t> wanted{2, 2, 2, 3, 3, 3, 0, 0, 0, 1, 3, 3, 2, 2};
    QCOMPARE(samplesOf(signal, 0, wanted.size()), wanted);
    QCOMPARE(signal.at(3'000'000'000'003, 1).levels, 1U);
    QCOMPARE(signal.at(3'000'000'000'003, 1).end, std::int64_t(3'000'000'000'006));
}

void TstEmulatorSignals::aPatternRepeatsItsWidths()
{
    WaveSignal signal(1, {Wave::pattern({1, 2, 3}), Wave::pulse(2, 3)});
    const std::vector<std::uint32_t> wanted{0, 1, 3, 2, 2, 0, 1, 0, 0, 1, 1, 1, 0};
    QCOMPARE(samplesOf(signal, 0, wanted.size()), wanted);
    QCOMPARE(signal.at(1000, 2).end, never);
}

void TstEmulatorSignals::noiseStaysWithinItsWidthsAndRepeatsForItsSeed()
{
    WaveSignal one(1, {Wave::noise(7, 5, 9)});
    WaveSignal same(1, {Wave::noise(7, 5, 9)});
    WaveSignal other(1, {Wave::noise(8, 5, 9)});
    const auto samples = samplesOf(one, 0, 1000);
    QVERIFY(samples == samplesOf(same, 0, 1000));
    QVERIFY(samples != samplesOf(other, 0, 1000));
    for (std::int64_t at = 0; at < 1000;) {
        const std::int64_t end = one.at(at, 1).end;
        QVERIFY(end - at >= 5 && end - at <= 9);
        at = end;
    }
}

void TstEmulatorSignals::farNoiseIsWhatAWalkThereFinds()
{
    constexpr std::int64_t shortest = 1 << 20;
    constexpr std::int64_t end = std::int64_t(1) << 31;
    const Wave wave = Wave::noise(7, shortest, 2 * shortest);
    WaveSignal walked(1, {wave});
    WaveSignal jumped(1, {wave});
    std::uint32_t before = walked.at(0, 1).levels;
    std::int64_t changed = 0;
    for (std::int64_t at = walked.at(0, 1).end; at < end;) {
        const SignalRun run = walked.at(at, 1);
        if (run.levels != before) {
            QVERIFY(at - changed >= shortest);
            changed = at;
            before = run.levels;
        }
        WaveSignal fresh(1, {wave});
        QCOMPARE(fresh.at(at, 1).levels, run.levels);
        QCOMPARE(fresh.at(at, 1).end, run.end);
        QCOMPARE(jumped.at(end - at, 1).levels, WaveSignal(1, {wave}).at(end - at, 1).levels);
        at = run.end;
    }
}

void TstEmulatorSignals::noiseIsReachedAnywhereAtOnce()
{
    // A walk from 0 would not end.
    WaveSignal signal(1, {Wave::noise(7, 1, 9)});
    for (const std::int64_t at : {std::int64_t(1) << 60, std::int64_t(1) << 40, (std::int64_t(1) << 61) + 1}) {
        const SignalRun run = signal.at(at, 1);
        QVERIFY(run.end > at && run.end <= at + 10);
    }
}

void TstEmulatorSignals::runsAndSingleSamplesAgree()
{
    const std::vector<Wave> waves{Wave::noise(1, 1, 30), Wave::square(17), Wave::pattern({5, 1, 200}),
                                  Wave::constant(true), Wave::noise(2, 100, 400)};
    WaveSignal signal(1, waves);
    WaveSignal again(1, waves);
    compareRuns(signal, again, 20000, 0x1F);
    compareRuns(again, signal, 20000, 0x12);
}

void TstEmulatorSignals::anEdgeListTellsLevelsForwardAndBackward()
{
    std::vector<EdgeSignal::Channel> channels(3);
    channels[0] = {false, {0, 1, 2, 50, 51, 1000, 9999}};
    channels[2].startLevel = true;
    std::minstd_rand random(3);
    for (std::int64_t at = 0; at < 20000; at += 1 + std::int64_t(random() % 40)) {
        channels[1].edges.push_back(at);
    }
    EdgeSignal signal(1, channels);
    EdgeSignal again(1, channels);
    QCOMPARE(samplesOf(signal, 0, 4, 5), (std::vector<std::uint32_t>{5, 4, 5, 5}));
    compareRuns(signal, again, 20000, 7);
    QCOMPARE(signal.at(30000, 5).levels, 5U);
    QCOMPARE(signal.at(30000, 7).end, never);
}

void TstEmulatorSignals::channelsOutsideTheMaskEndNoRun()
{
    EdgeSignal edges(1, {{false, {1, 2, 3, 4}}, {false, {100}}});
    QCOMPARE(edges.at(0, 2).end, std::int64_t(100));
    QCOMPARE(edges.at(0, 3).end, std::int64_t(1));
    WaveSignal waves(1, {Wave::square(1), Wave::square(100)});
    QCOMPARE(waves.at(0, 2).end, std::int64_t(100));
}

void TstEmulatorSignals::aDataFileIsReadWithItsEdges()
{
    const CxdatCapture capture = parseCxdat(dataFile());
    QVERIFY2(capture.signal != nullptr, capture.problem.c_str());
    QCOMPARE(capture.samples, std::int64_t(1000));
    QCOMPARE(capture.triggerAt, std::int64_t(10));
    QCOMPARE(capture.channels, 8);
    QCOMPARE(capture.signal->rate(), std::int64_t(1'000'000));
    QCOMPARE(capture.signal->at(0, 0xFF).levels, 8U);
    QCOMPARE(capture.signal->at(10, 0xFF).levels, 9U);
    QCOMPARE(capture.signal->at(19, 0xFF).levels, 9U);
    QCOMPARE(capture.signal->at(20, 0xFF).levels, 8U);
    QCOMPARE(capture.signal->at(20, 0xFF).end, never); // the end mark is no edge
}

void TstEmulatorSignals::aDataFileThatIsCutIsRefusedAtEveryByte()
{
    const Bytes file = dataFile();
    const std::size_t secondBlock = firstBlock + 16 + 15;
    for (std::size_t length = 0; length < file.size(); ++length) {
        const bool whole = length == firstBlock || length == secondBlock;
        const CxdatCapture capture = parseCxdat(std::span(file).first(length));
        QVERIFY2((capture.signal != nullptr) == whole, qPrintable(QString::number(length)));
        QCOMPARE(capture.problem.empty(), whole);
    }
}

void TstEmulatorSignals::malformedDataFilesAreRefused()
{
    const auto refused = [](std::size_t at, std::uint8_t value) {
        Bytes file = dataFile();
        file.at(at) = value;
        return parseCxdat(file).signal == nullptr;
    };
    QVERIFY(refused(headAt, 'C'));
    QVERIFY(refused(headAt + 32, 33));         // channels
    QVERIFY(refused(firstBlock, '!'));         // no block
    QVERIFY(refused(firstBlock + 4, 8));       // channel out of range
    QVERIFY(refused(firstBlock + 4, 3));       // channel twice
    QVERIFY(refused(firstBlock + 12, 0xFF));   // too many entries
    QVERIFY(refused(firstBlock + 16 + 5, 10)); // entries that do not increase
    QVERIFY(parseCxdat(dataFile() + Bytes{0}).signal == nullptr);
    QVERIFY(!refused(headAt + 5, 0xAA)); // fillings mean nothing
}

void TstEmulatorSignals::anEdgeAtTheFirstSampleInvertsTheStartLevel()
{
    Bytes file = dataFile();
    file.at(firstBlock + 16) = 0;
    const CxdatCapture capture = parseCxdat(file);
    QVERIFY(capture.signal != nullptr);
    QCOMPARE(capture.signal->at(0, 1).levels, 1U);
    QCOMPARE(capture.signal->at(20, 1).levels, 0U);
}

void TstEmulatorSignals::equalRatesMapSampleForSample()
{
    auto signal = std::make_shared<WaveSignal>(100'000'000, std::vector{Wave::noise(3, 1, 50)});
    const Sampler sampler(signal, 1'000'000'000, 10, false);
    for (std::int64_t i = 0; i < 1000; ++i) {
        QCOMPARE(sampler.at(i, 1).levels, signal->at(i, 1).levels);
    }
    QCOMPARE(sampler.samplesIn(1e6), std::int64_t(100'000));
}

void TstEmulatorSignals::aFasterSignalIsSampledAndASlowerOneHeld()
{
    auto signal = std::make_shared<WaveSignal>(3'000'000, std::vector{Wave::noise(3, 1, 50)});
    const Sampler slow(signal, 100'000'000, 50, false); // 2 MHz: positions 0, 1, 3, 4, 6 ...
    const Sampler fast(signal, 100'000'000, 10, false); // 10 MHz
    const Sampler direct(signal, 100'000'000, 10, true);
    for (std::int64_t i = 0; i < 3000; ++i) {
        QCOMPARE(slow.at(i, 1).levels, signal->at(i * 3 / 2, 1).levels);
        QCOMPARE(fast.at(i, 1).levels, signal->at(i * 3 / 10, 1).levels);
        QCOMPARE(direct.at(i, 1).levels, signal->at(i, 1).levels);
    }
}

void TstEmulatorSignals::sampledRunsEndWhereTheLevelsChange()
{
    for (const std::uint32_t divider : {7U, 10U, 33U, 100U, 999U}) {
        const auto make = [] { return std::make_shared<WaveSignal>(10'000'000, std::vector{Wave::noise(3, 1, 9)}); };
        const Sampler runs(make(), 100'000'000, divider, false);
        const Sampler single(make(), 100'000'000, divider, false);
        for (std::int64_t at = 0; at < 3000;) {
            const SignalRun run = runs.at(at, 1);
            QVERIFY(run.end > at);
            for (; at < run.end; ++at) {
                QCOMPARE(single.at(at, 1).levels, run.levels);
            }
        }
    }
}

QTEST_GUILESS_MAIN(TstEmulatorSignals)
#include "tst_EmulatorSignals.moc"
