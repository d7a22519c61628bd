#include "emulator/InstrumentCaptures.h"

#include "WaveSignal.h"
#include "device/DeviceGlobals.h"
#include "support/TestImages.h"

#include <array>

namespace {

using emulator::Fault;
using emulator::FaultAction;
using emulator::Instrument;
using emulator::InstrumentOptions;
using emulator::WaveSignal;
using Wave = emulator::WaveSignal::Wave;

constexpr int triggerChn = 1;
constexpr int lowChn = 3; // never anything else
constexpr std::int64_t triggerAt = 61234;

#ifdef __SANITIZE_THREAD__
// It makes everything slow. What sets these apart from the others is no matter of threads: one that streams, one with
// memory, and the one that reads its memory back as a whole.
constexpr std::array models{5, 9, 97};
#else
constexpr std::array models{1, 2, 3, 4, 5, 6, 7, 8, 9, 65, 97};
#endif

void addModels()
{
    QTest::addColumn<int>("model");
    for (const int code : models) {
        QTest::addRow("model %d", code) << code;
    }
}

/// The signal that all instruments of these tests see; channel 1 rises once, channel 3 never.
std::shared_ptr<WaveSignal> makeSignal()
{
    std::vector<Wave> waves;
    for (int i = 0; i < 32; ++i) {
        waves.push_back(i % 2 == 0 ? Wave::noise(std::uint32_t(i + 1) * 31, 300, 4000 + i * 100)
                                   : Wave::square(777 * (i + 1), i % 3 == 0, i));
    }
    waves[triggerChn] = Wave::pulse(triggerAt, 5000);
    waves[lowChn] = Wave::constant(false);
    return std::make_shared<WaveSignal>(1, waves);
}

/// As fast as the host asks, and one sample of the signal for each sample.
InstrumentOptions optionsOf(int model)
{
    InstrumentOptions options;
    options.model = model;
    options.pace = 0;
    options.direct = true;
    options.leaveAfter = emulator::nanosecondsPerMillisecond;
    options.returnAfter = emulator::nanosecondsPerMillisecond;
    return options;
}

bool streams(int model)
{
    return model == 1 || model == 5;
}

/// Takes the shortest depth, and a trigger that comes at `triggerAt`, or one that never comes.
void setUp(bool comes, int trgPosition = 20)
{
    constexpr int rising = 3;
    gDev->setSmpDepthIndex(0);
    gDev->setTrgPosition(trgPosition);
    gDev->setChnTrig(comes ? triggerChn : lowChn, rising);
}

} // namespace

std::unique_ptr<InstrumentDesk> InstrumentCaptures::connected(InstrumentOptions options)
{
    auto desk = std::make_unique<InstrumentDesk>(makeRoad());
    desk->road->bus().add(options, makeSignal());
    return desk->isGood && desk->plug() ? std::move(desk) : nullptr;
}

void InstrumentCaptures::everyModelCapturesWithoutATrigger_data()
{
    addModels();
}

void InstrumentCaptures::everyModelCapturesWithoutATrigger()
{
    QFETCH(int, model);
    const auto desk = connected(optionsOf(model));
    QVERIFY(desk != nullptr);
    QCOMPARE(gDev->model, model);
    gDev->setSmpDepthIndex(0);
    QVERIFY(desk->capture());
    QCOMPARE(desk->lastError(), 0);
    QCOMPARE(gDev->smpData->smpCount(), gDev->smpDepth());
    QCOMPARE(gDev->smpData->trgPos(), std::int64_t(0));
    QCOMPARE(differenceOf(*gDev->smpData, *makeSignal(), 0), QString());
}

void InstrumentCaptures::everyModelCapturesAboutItsTrigger_data()
{
    addModels();
}

void InstrumentCaptures::everyModelCapturesAboutItsTrigger()
{
    QFETCH(int, model);
    const auto desk = connected(optionsOf(model));
    QVERIFY(desk != nullptr);
    setUp(true);
    QVERIFY(desk->capture());
    QCOMPARE(desk->lastError(), 0);
    const SmpData &data = *gDev->smpData;
    QCOMPARE(data.smpCount(), gDev->smpDepth());
    const std::int64_t wanted = gDev->smpDepth() / 5;
    // The model with analog channels does not tell where its trigger is.
    const std::int64_t before = model == 97 ? wanted : data.trgPos();
    QVERIFY(streams(model) ? before >= wanted && before < wanted + 16 : before == wanted);
    QVERIFY(model == 97 || data.isEdge(triggerChn, data.trgPos()));
    QCOMPARE(differenceOf(data, *makeSignal(), triggerAt - before), QString());
}

void InstrumentCaptures::everyModelIsStoppedWhileItWaits_data()
{
    addModels();
}

void InstrumentCaptures::everyModelIsStoppedWhileItWaits()
{
    QFETCH(int, model);
    const auto desk = connected(optionsOf(model));
    QVERIFY(desk != nullptr);
    setUp(false);
    desk->startCapture();
    QTRY_VERIFY(desk->has(2));
    gDev->stopCapture();
    QVERIFY(desk->awaitEnd());
    QCOMPARE(desk->lastError(), 0);
    QTRY_COMPARE(desk->published, 1);
    QVERIFY(gDev->smpData->smpCount() > 0);
    QCOMPARE(gDev->smpData->trgPos(), std::int64_t(0));
    // The next one is as good as the first.
    gDev->setChnTrig(lowChn, 0);
    QVERIFY(desk->capture());
    QCOMPARE(differenceOf(*gDev->smpData, *makeSignal(), 0), QString());
}

void InstrumentCaptures::everyModelIsUnpluggedWhileItWaitsAndCapturesAgain_data()
{
    addModels();
}

void InstrumentCaptures::everyModelIsUnpluggedWhileItWaitsAndCapturesAgain()
{
    QFETCH(int, model);
    const auto desk = connected(optionsOf(model));
    QVERIFY(desk != nullptr);
    setUp(false);
    if (streams(model)) {
        gDev->setSmpDepthIndex(3); // more than the buffers that are held hold
    }
    desk->startCapture();
    QTRY_VERIFY(desk->has(2));
    QVERIFY(desk->unplug());
    QVERIFY(desk->awaitEnd());
    QVERIFY(desk->lastError() != 0);
    QVERIFY(!desk->transport->isOpen());

    QVERIFY(desk->plug());
    gDev->setChnTrig(lowChn, 0);
    gDev->setSmpDepthIndex(0);
    QVERIFY(desk->capture());
    QCOMPARE(differenceOf(*gDev->smpData, *makeSignal(), 0), QString());
}

void InstrumentCaptures::everyModelIsUnpluggedWhileItSends_data()
{
    addModels();
}

void InstrumentCaptures::everyModelIsUnpluggedWhileItSends()
{
    QFETCH(int, model);
    const auto desk = connected(optionsOf(model));
    QVERIFY(desk != nullptr);
    gDev->setSmpDepthIndex(0);
    desk->road->bus().with(
        [](Instrument &instrument) { instrument.faults().atInByte(100, Fault{FaultAction::Unplug}); });
    desk->startCapture();
    QVERIFY(desk->awaitEnd());
    QVERIFY(desk->lastError() != 0);
    QTRY_VERIFY(!gDev->connected);
    QVERIFY(desk->plug());
    QVERIFY(desk->capture());
    QCOMPARE(desk->lastError(), 0);
    QCOMPARE(gDev->smpData->smpCount(), gDev->smpDepth());
}

void InstrumentCaptures::aStreamNeverLacksAPendingRead()
{
    InstrumentOptions options = optionsOf(5);
    options.pace = 0.25; // some 130 ms a buffer
    // A machine that is busy for all of that time is late now and then, a host that queues too few reads always.
    constexpr int attempts = 5;
    int fewest = 0;
    for (int attempt = 0; attempt < attempts && fewest < 1; ++attempt) {
        const auto desk = connected(options);
        QVERIFY(desk != nullptr);
        constexpr int depthIndex = 4; // 5 million samples: ten buffers
        gDev->setSmpDepthIndex(depthIndex);
        QVERIFY(desk->capture());
        QCOMPARE(desk->lastError(), 0);
        QCOMPARE(gDev->smpData->smpCount(), gDev->smpDepth());
        QCOMPARE(differenceOf(*gDev->smpData, *makeSignal(), 0), QString());
        QVERIFY(desk->road->bus().with([](Instrument &i) { return i.inBytes(); }) > 9'000'000);
        fewest = desk->road->bus().fewestReadsLeft();
    }
    QCOMPARE(fewest, 1);
}

void InstrumentCaptures::aStreamOfFewChannelsIsAsWhole()
{
    const auto desk = connected(optionsOf(5));
    QVERIFY(desk != nullptr);
    for (const int count : {1, 3, 5, 7, 12}) {
        QVector<bool> enable(16, false);
        std::fill(enable.begin(), enable.begin() + count, true);
        gDev->setChnEnable(enable);
        setUp(count > triggerChn, 30);
        QVERIFY(desk->capture());
        const SmpData &data = *gDev->smpData;
        QCOMPARE(data.smpCount(), gDev->smpDepth());
        auto signal = makeSignal();
        for (int chn = 0; chn < 16; ++chn) {
            QCOMPARE(data.chnRoots()[std::size_t(chn)] != nullptr, chn < count);
        }
        // Only the enabled channels hold anything to compare.
        for (int chn = 0; chn < count; ++chn) {
            const std::int64_t from = count > triggerChn ? triggerAt - data.trgPos() : 0;
            for (std::int64_t pos = 0; pos < data.smpCount(); pos += 501) {
                SmpEdgeCursor cursor;
                QCOMPARE(data.locate(chn, pos, cursor), int(signal->at(from + pos, 1U << chn).levels >> chn));
            }
        }
    }
}

void InstrumentCaptures::aMemoryThatWrapsIsReadInOrder()
{
    InstrumentOptions options = optionsOf(9);
    options.ringStart = 0x20000000 - 64;
    const auto desk = connected(options);
    QVERIFY(desk != nullptr);
    gDev->setSmpDepthIndex(0);
    QVERIFY(desk->capture());
    QVERIFY(desk->road->bus().with([](Instrument &i) { return i.capture().info().endAddress; }) < 0x10000);
    QCOMPARE(gDev->smpData->smpCount(), gDev->smpDepth());
    QCOMPARE(differenceOf(*gDev->smpData, *makeSignal(), 0), QString());
}
