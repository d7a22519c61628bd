// Captures into the instrument's memory, and what is read back of them.

#include "WaveSignal.h"
#include "emulator/Bench.h"

#include <QtTest>

using namespace bench;
using emulator::WaveSignal;
using Wave = emulator::WaveSignal::Wave;

namespace {

constexpr std::uint32_t memSize16 = 16 * 1000;

struct Rig {
    explicit Rig(int model, const std::vector<Wave> &waves, std::uint32_t memory = memSize16, std::uint32_t ring = 0)
        : signal(std::make_shared<WaveSignal>(100'000'000, waves)), device(options(model, memory, ring), signal)
    {
        if (!bringUp(device)) {
            qFatal("the instrument does not come up");
        }
    }

    static InstrumentOptions options(int model, std::uint32_t memory, std::uint32_t ring)
    {
        InstrumentOptions o;
        o.model = model;
        o.memorySize = memory;
        o.ringStart = ring;
        o.direct = true; // sample i of the capture is sample i of the signal
        return o;
    }

    /// Runs a capture to its end. @return false if it does not end within a minute
    bool capture(const Samples &s, const Triggers &t = {})
    {
        if (!configure(device, s, t) || !run(device)) {
            return false;
        }
        for (int i = 0; i < 60000 && (status(device) & 7) != 5; ++i) {
            device.tick(millisecond);
        }
        return (status(device) & 7) == 5;
    }

    std::shared_ptr<WaveSignal> signal;
    Instrument device;
};

std::vector<Wave> busy(int channels, std::uint32_t seed = 1)
{
    std::vector<Wave> waves;
    for (int i = 0; i < channels; ++i) {
        waves.push_back(Wave::noise(seed + std::uint32_t(i) * 977, 1, 700));
    }
    return waves;
}

} // namespace

class TstInstrumentStorage : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aCaptureWithoutTriggerBeginsWithTheFirstSample();
    void theThirtyTwoChannelModelHasItsOwnRecords();
    void channelsThatAreOffTakeNoRecords();
    void aQuietSignalTakesOneRecordFor255Samples();
    void theTriggerComesAtItsSample_data();
    void theTriggerComesAtItsSample();
    void anEdgeOnTheVeryFirstSampleIsNone();
    void theTriggerIsNotLookedForBeforeThePreTriggerPartIsFull();
    void withoutAPreTriggerPartTheRecordsBeginAtTheTrigger();
    void theStatusFollowsThePhasesInTime();
    void anUnpacedCaptureMovesOnWithEachStatusRequest();
    void theRingWrapsBehindItsEnd();
    void theNextCaptureGoesOnBehindTheLast();
    void aPreTriggerPartBeyondItsShareOfTheMemoryLosesItsOldest();
    void aFullMemoryEndsTheCapture();
    void aStopBeforeTheTriggerKeepsTheLastSamples();
    void aStopBehindTheTriggerKeepsWhatCame();
    void aStopAtOnceLeavesAWholeGroup();
    void windowsThatEndOnAPacketEndWithAnEmptyPacket();
    void aWindowIsReadAcrossTheEndOfTheMemory();
    void anEmptyWindowEndsAtOnce();
    void theAnalogModelReadsItsWholeMemory();
    void aSlowerClockTakesEverySecondSample();
    void aHundredMillionQuietSamplesAreQuick();
};

void TstInstrumentStorage::aCaptureWithoutTriggerBeginsWithTheFirstSample()
{
    Rig rig(8, busy(16));
    QVERIFY(rig.capture({.depth = 20000}));
    const Decoded got = decode16(readBack(rig.device));
    QVERIFY(got.sound);
    QVERIFY(got.samples.size() >= 20000);
    QCOMPARE(got.samples, samplesOf(*rig.signal, 0, got.samples.size()));
    QCOMPARE(captureInfo(rig.device).triggerRecord, 0U);
    QCOMPARE(captureInfo(rig.device).recordCount % 5, 0U);
}

void TstInstrumentStorage::theThirtyTwoChannelModelHasItsOwnRecords()
{
    Rig rig(9, busy(32), 32 * 1000);
    QVERIFY(rig.capture({.depth = 20000, .preTrigger = 1000, .preMemory = 16000},
                        {.enabled = 0xFFFFFFFF, .takesPart = 1U << 31, .polarity = 0}));
    const Info info = captureInfo(rig.device);
    const Decoded got = decode32(readBack(rig.device), info.triggerRecord);
    QVERIFY(got.sound);
    QCOMPARE(got.trigger, std::int64_t(1000));
    const std::int64_t at = rig.device.capture().triggerAt();
    QCOMPARE(got.samples, samplesOf(*rig.signal, at - 1000, got.samples.size(), 0xFFFFFFFF));
    QVERIFY((got.samples[999] >> 31) == 0 && (got.samples[1000] >> 31) == 1);
}

void TstInstrumentStorage::channelsThatAreOffTakeNoRecords()
{
    Rig rig(8, {Wave::square(1), Wave::square(1000)});
    QVERIFY(rig.capture({.depth = 10000}, {.enabled = 2}));
    const Decoded got = decode16(readBack(rig.device));
    QCOMPARE(got.samples, samplesOf(*rig.signal, 0, got.samples.size(), 2));
    QVERIFY(captureInfo(rig.device).recordCount < 60);
}

void TstInstrumentStorage::aQuietSignalTakesOneRecordFor255Samples()
{
    Rig rig(8, {Wave::constant(true)});
    QVERIFY(rig.capture({.depth = 255 * 10}));
    QCOMPARE(captureInfo(rig.device).recordCount, 10U);
    const Bytes bytes = readBack(rig.device);
    QCOMPARE(bytes.size(), std::size_t(32));
    QCOMPARE(Bytes(bytes.begin(), bytes.begin() + 6), (Bytes{1, 0, 255, 1, 0, 255}));
}

void TstInstrumentStorage::theTriggerComesAtItsSample_data()
{
    QTest::addColumn<quint32>("takesPart");
    QTest::addColumn<quint32>("level");
    QTest::addColumn<quint32>("polarity");
    QTest::addColumn<qint64>("at"); // with 100 samples before it
    // Channel 0 toggles every 150 samples from low, channel 1 every 400, channel 2 is high from 5000 on.
    QTest::addRow("low level") << 1U << 1U << 0U << qint64(100);
    QTest::addRow("high level") << 1U << 1U << 1U << qint64(150);
    QTest::addRow("rising edge") << 1U << 0U << 0U << qint64(150);
    QTest::addRow("falling edge") << 1U << 0U << 1U << qint64(300);
    QTest::addRow("two levels") << 3U << 3U << 3U << qint64(450);
    QTest::addRow("a level that comes late") << 4U << 4U << 4U << qint64(5000);
    QTest::addRow("rising edge while another is high") << 3U << 2U << 2U << qint64(450);
    QTest::addRow("falling edge while another is low") << 3U << 2U << 1U << qint64(300);
    QTest::addRow("rising edge of a channel while a late one is high") << 5U << 4U << 4U << qint64(5250);
}

void TstInstrumentStorage::theTriggerComesAtItsSample()
{
    QFETCH(quint32, takesPart);
    QFETCH(quint32, level);
    QFETCH(quint32, polarity);
    QFETCH(qint64, at);
    Rig rig(8, {Wave::square(150), Wave::square(400), Wave::square(5000)});
    QVERIFY(rig.capture({.depth = 2000, .preTrigger = 100, .preMemory = 4096},
                        {.takesPart = takesPart, .level = level, .polarity = polarity}));
    QCOMPARE(rig.device.capture().triggerAt(), std::int64_t(at));
    const Info info = captureInfo(rig.device);
    const Decoded got = decode16(readBack(rig.device), info.triggerRecord);
    QCOMPARE(got.trigger, std::int64_t(100));
    QVERIFY(got.samples.size() >= 2000);
    QCOMPARE(got.samples, samplesOf(*rig.signal, at - 100, got.samples.size()));
}

void TstInstrumentStorage::anEdgeOnTheVeryFirstSampleIsNone()
{
    Rig rig(8, {Wave::square(500, true)}); // high from the start, rises again at 1000
    QVERIFY(rig.capture({.depth = 2000}, {.takesPart = 1}));
    QCOMPARE(rig.device.capture().triggerAt(), std::int64_t(1000));
}

void TstInstrumentStorage::theTriggerIsNotLookedForBeforeThePreTriggerPartIsFull()
{
    Rig rig(8, {Wave::square(500)}); // rises at 500, 1500, 2500 ...
    QVERIFY(rig.capture({.depth = 5000, .preTrigger = 1500, .preMemory = 4096}, {.takesPart = 1}));
    QCOMPARE(rig.device.capture().triggerAt(), std::int64_t(1500));
    QVERIFY(rig.capture({.depth = 5000, .preTrigger = 1501, .preMemory = 4096}, {.takesPart = 1}));
    QCOMPARE(rig.device.capture().triggerAt(), std::int64_t(2500));
}

void TstInstrumentStorage::withoutAPreTriggerPartTheRecordsBeginAtTheTrigger()
{
    Rig rig(8, {Wave::square(500)});
    QVERIFY(rig.capture({.depth = 3000}, {.takesPart = 1}));
    QCOMPARE(captureInfo(rig.device).triggerRecord, 0U);
    const Decoded got = decode16(readBack(rig.device));
    QCOMPARE(got.samples, samplesOf(*rig.signal, 500, got.samples.size()));
}

void TstInstrumentStorage::theStatusFollowsThePhasesInTime()
{
    // 1 MHz: a thousand samples a millisecond. The trigger comes at sample 50000.
    Rig rig(8, {Wave::square(50000)});
    Instrument &device = rig.device;
    QVERIFY(configure(device, {.depth = 60000, .preTrigger = 20000, .preMemory = 16000, .divider = 1000},
                      {.takesPart = 1}));
    QVERIFY(run(device));
    QCOMPARE(int(status(device)), 0x85C2);
    device.tick(19 * millisecond);
    QCOMPARE(int(status(device)), 0x85C2);
    device.tick(2 * millisecond);
    QCOMPARE(int(status(device)), 0x85CA);
    device.tick(28 * millisecond);
    QCOMPARE(int(status(device)), 0x85CA);
    device.tick(2 * millisecond);
    QCOMPARE(int(status(device)), 0x85C6);
    device.tick(38 * millisecond);
    QCOMPARE(int(status(device)), 0x85C6);
    device.tick(2 * millisecond);
    QCOMPARE(int(status(device)), 0x85C5);
    QVERIFY(!device.running());
}

void TstInstrumentStorage::anUnpacedCaptureMovesOnWithEachStatusRequest()
{
    InstrumentOptions o = Rig::options(8, memSize16, 0);
    o.pace = 0;
    Instrument device(o, std::make_shared<WaveSignal>(1, std::vector{Wave::square(50000)}));
    QVERIFY(bringUp(device));
    QVERIFY(configure(device, {.depth = 60000, .preTrigger = 20000, .preMemory = 16000, .divider = 50000},
                      {.takesPart = 1}));
    QVERIFY(run(device));
    QCOMPARE(int(status(device)), 0x85C2);
    QCOMPARE(int(status(device)), 0x85CA);
    QCOMPARE(int(status(device)), 0x85C6);
    QCOMPARE(int(status(device)), 0x85C5);
    QCOMPARE(int(status(device)), 0x85C5);
}

void TstInstrumentStorage::theRingWrapsBehindItsEnd()
{
    Rig rig(8, busy(8), memSize16, memSize16 - 64);
    QVERIFY(rig.capture({.depth = 20000, .preTrigger = 300, .preMemory = 4096}, {.takesPart = 1}));
    const Info info = captureInfo(rig.device);
    QVERIFY(info.endAddress < info.recordCount / 5 * 16);
    const Decoded got = decode16(readBack(rig.device), info.triggerRecord);
    QCOMPARE(got.trigger, std::int64_t(300));
    QCOMPARE(got.samples, samplesOf(*rig.signal, rig.device.capture().triggerAt() - 300, got.samples.size()));
}

void TstInstrumentStorage::theNextCaptureGoesOnBehindTheLast()
{
    Rig rig(8, busy(4));
    QVERIFY(rig.capture({.depth = 5000}));
    const Info first = captureInfo(rig.device);
    QVERIFY(rig.capture({.depth = 5000}));
    const Info second = captureInfo(rig.device);
    QCOMPARE(second.recordCount, first.recordCount);
    QCOMPARE(second.endAddress, 2 * first.endAddress);
}

void TstInstrumentStorage::aPreTriggerPartBeyondItsShareOfTheMemoryLosesItsOldest()
{
    // A record a sample: 5 samples a group. 100 groups are allowed, 2000 samples were asked for.
    Rig rig(8, {Wave::square(1), Wave::square(10000)});
    QVERIFY(rig.capture({.depth = 4000, .preTrigger = 2000, .preMemory = 1600}, {.takesPart = 2}));
    const Info info = captureInfo(rig.device);
    const Decoded got = decode16(readBack(rig.device), info.triggerRecord);
    QCOMPARE(got.trigger, std::int64_t(500));
    QCOMPARE(rig.device.capture().firstKept(), std::int64_t(9500));
    QCOMPARE(got.samples, samplesOf(*rig.signal, 9500, got.samples.size()));
}

void TstInstrumentStorage::aFullMemoryEndsTheCapture()
{
    Rig rig(8, {Wave::square(1)}, 16 * 100, 16 * 30);
    QVERIFY(rig.capture({.depth = 1'000'000}));
    const Info info = captureInfo(rig.device);
    QCOMPARE(info.recordCount, 500U);
    QCOMPARE(info.endAddress, 480U);
    const Decoded got = decode16(readBack(rig.device));
    QCOMPARE(got.samples, samplesOf(*rig.signal, 0, 500));
}

void TstInstrumentStorage::aStopBeforeTheTriggerKeepsTheLastSamples()
{
    Rig rig(8, {Wave::square(7)});
    QVERIFY(configure(rig.device, {.depth = 10000, .preTrigger = 1000, .preMemory = 8000, .divider = 1000},
                      {.takesPart = 2}));
    QVERIFY(run(rig.device));
    rig.device.tick(5 * millisecond);
    QCOMPARE(int(status(rig.device)), 0x85CA);
    QVERIFY(run(rig.device, false));
    const Info info = captureInfo(rig.device);
    QCOMPARE(info.triggerRecord, 0U);
    const Decoded got = decode16(readBack(rig.device));
    QVERIFY(got.samples.size() >= 1000 && got.samples.size() < 1100);
    QCOMPARE(got.samples, samplesOf(*rig.signal, 4000, got.samples.size()));
}

void TstInstrumentStorage::aStopBehindTheTriggerKeepsWhatCame()
{
    Rig rig(8, {Wave::square(7)});
    QVERIFY(configure(rig.device, {.depth = 10000, .divider = 1000}));
    QVERIFY(run(rig.device));
    rig.device.tick(5 * millisecond);
    QVERIFY(run(rig.device, false));
    QCOMPARE(int(status(rig.device)), 0x85C5);
    const Decoded got = decode16(readBack(rig.device));
    QVERIFY(got.samples.size() >= 5000 && got.samples.size() < 5100);
    QCOMPARE(got.samples, samplesOf(*rig.signal, 0, got.samples.size()));
}

void TstInstrumentStorage::aStopAtOnceLeavesAWholeGroup()
{
    Rig rig(8, {Wave::square(7)});
    QVERIFY(configure(rig.device, {.depth = 10000}, {.takesPart = 2}));
    QVERIFY(run(rig.device));
    QVERIFY(run(rig.device, false));
    QCOMPARE(captureInfo(rig.device).recordCount, 5U);
    QVERIFY(!rig.device.running());
}

void TstInstrumentStorage::windowsThatEndOnAPacketEndWithAnEmptyPacket()
{
    Rig rig(8, busy(4));
    QVERIFY(rig.capture({.depth = 5000}));
    Bytes buffer(1024);
    // A host that asks for more than there is: the short packet, here one of length zero, ends its transfer.
    QVERIFY(sent(rig.device, 0x20, 0x10, little(0, 4) + little(512, 4)) && sent(rig.device, 0x30, 0));
    Answer answer = rig.device.bulkIn(0x86, buffer);
    QCOMPARE(answer.bytes, std::size_t(512));
    QVERIFY(answer.ends);
    QCOMPARE(rig.device.bulkIn(0x86, buffer).outcome, Outcome::NotYet);
    // A host that asks for just as much: its next transfer gets the packet of length zero.
    QVERIFY(sent(rig.device, 0x30, 0));
    answer = rig.device.bulkIn(0x86, std::span(buffer).first(512));
    QVERIFY(answer.ends && answer.bytes == 512);
    answer = rig.device.bulkIn(0x86, buffer);
    QVERIFY(answer.outcome == Outcome::Done && answer.ends && answer.bytes == 0);
    QCOMPARE(rig.device.bulkIn(0x86, buffer).outcome, Outcome::NotYet);
    // A window that ends within a packet needs no more than that.
    QVERIFY(sent(rig.device, 0x20, 0x10, little(0, 4) + little(528, 4)) && sent(rig.device, 0x30, 0));
    answer = rig.device.bulkIn(0x86, std::span(buffer).first(512));
    QVERIFY(answer.ends && answer.bytes == 512);
    answer = rig.device.bulkIn(0x86, std::span(buffer).first(512));
    QVERIFY(answer.ends && answer.bytes == 16);
    QCOMPARE(rig.device.bulkIn(0x86, buffer).outcome, Outcome::NotYet);
}

void TstInstrumentStorage::aWindowIsReadAcrossTheEndOfTheMemory()
{
    Rig rig(8, {Wave::square(1)}, 1600);
    QVERIFY(rig.capture({.depth = 100000}));
    const Bytes all = readWindow(rig.device, 0, 1600);
    const Bytes wrapped = readWindow(rig.device, 1584, 48);
    QCOMPARE(wrapped, Bytes(all.end() - 16, all.end()) + Bytes(all.begin(), all.begin() + 32));
}

void TstInstrumentStorage::anEmptyWindowEndsAtOnce()
{
    Rig rig(8, busy(4));
    QVERIFY(rig.capture({.depth = 5000}));
    QVERIFY(sent(rig.device, 0x20, 0x10, little(0, 4) + little(0, 4)) && sent(rig.device, 0x30, 0));
    Bytes buffer(512);
    const Answer answer = rig.device.bulkIn(0x86, buffer);
    QVERIFY(answer.outcome == Outcome::Done && answer.ends && answer.bytes == 0);
    QCOMPARE(rig.device.bulkIn(0x86, buffer).outcome, Outcome::NotYet);
}

void TstInstrumentStorage::theAnalogModelReadsItsWholeMemory()
{
    Rig rig(97, {Wave::square(100), Wave::square(3000)}, 0);
    QCOMPARE(rig.device.memory().size(), 32768U);
    QVERIFY(rig.capture({.depth = 8000, .preTrigger = 400, .preMemory = 1638}, {.takesPart = 2}));
    const Info info = captureInfo(rig.device);
    QCOMPARE(info.recordCount, 8192U);
    const Bytes bytes = readWindow(rig.device, info.endAddress, 32768);
    QCOMPARE(bytes.size(), std::size_t(32768));
    // The share of the memory is 409 samples.
    const std::int64_t first = rig.device.capture().firstKept();
    QCOMPARE(first, std::int64_t(3000 - 400));
    for (std::size_t i = 0; i < 8192; ++i) {
        const std::int64_t at = first + std::int64_t(i);
        QCOMPARE(std::int8_t(bytes[4 * i]), rig.signal->analogAt(0, {.position = at}));
        QCOMPARE(std::int8_t(bytes[4 * i + 1]), rig.signal->analogAt(1, {.position = at}));
        QCOMPARE(std::uint32_t(number(bytes, 4 * i + 2, 2)), rig.signal->at(at, 0xFFFF).levels);
    }
}

void TstInstrumentStorage::aSlowerClockTakesEverySecondSample()
{
    InstrumentOptions o = Rig::options(8, memSize16, 0);
    o.direct = false;
    auto signal = std::make_shared<WaveSignal>(100'000'000, busy(6));
    Instrument device(o, signal);
    QVERIFY(bringUp(device));
    QVERIFY(configure(device, {.depth = 3000, .divider = 20})); // of 1 GHz: 50 MHz
    QVERIFY(run(device));
    device.tick(millisecond);
    const Decoded got = decode16(readBack(device));
    QVERIFY(got.samples.size() >= 3000);
    for (std::size_t i = 0; i < got.samples.size(); ++i) {
        QCOMPARE(got.samples[i], signal->at(std::int64_t(2 * i), 0xFFFF).levels);
    }
}

void TstInstrumentStorage::aHundredMillionQuietSamplesAreQuick()
{
    InstrumentOptions o = Rig::options(8, 0, 0);
    o.pace = 0;
    Instrument device(o, std::make_shared<WaveSignal>(1, std::vector{Wave::square(1'000'000)}));
    QVERIFY(bringUp(device));
    QVERIFY(configure(device, {.depth = 100'000'000}));
    QVERIFY(run(device));
    for (int i = 0; i < 10 && (status(device) & 7) != 5; ++i) {
    }
    QVERIFY(!device.running());
    QCOMPARE(device.capture().firstKept(), std::int64_t(0));
    QVERIFY(device.memory().samplesKept() >= 100'000'000);
    QVERIFY(captureInfo(device).recordCount < 500'000);
}

QTEST_GUILESS_MAIN(TstInstrumentStorage)
#include "tst_InstrumentStorage.moc"
