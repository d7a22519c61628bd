// The streams of the instruments without memory.

#include "WaveSignal.h"
#include "emulator/Bench.h"

#include <QtTest>

using namespace bench;
using emulator::WaveSignal;
using Wave = emulator::WaveSignal::Wave;

namespace {

constexpr std::uint8_t pipeOf8 = 0x82; // of the model with eight channels
constexpr std::uint8_t pipeOf16 = 0x86;

std::vector<Wave> busy(int channels)
{
    std::vector<Wave> waves;
    for (int i = 0; i < channels; ++i) {
        waves.push_back(Wave::noise(std::uint32_t(i + 1) * 7919, 1, i < 2 ? 20 : 900));
    }
    return waves;
}

bool start(Instrument &device, std::uint32_t enabled = 0xFFFF, std::uint16_t divider = 8)
{
    return bringUp(device) && configure(device, {.divider = divider}, {.enabled = enabled}) && sent(device, 0x38, 0) &&
           run(device) && sent(device, 0x30, 0);
}

} // namespace

class TstInstrumentStream : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theEightChannelModelSendsOneByteASample();
    void theChannelsTakeTurnsInRisingOrder_data();
    void theChannelsTakeTurnsInRisingOrder();
    void readsOfAnySizeGiveTheSameStream();
    void theStreamBeginsAnewWithEachStart();
    void aPacedStreamBringsItsRateInWholePackets();
    void aHalfPaceBringsHalf();
    void nothingIsSentBeforeTheRunOrWithoutTheBulkStart();
    void aStoppedStreamEndsTheReadThatWaits();
    void anEndThatNobodyFetchedIsForgottenAtTheNextStop();
    void aSilentStopLeavesTheReadWaiting();
    void fullSpeedSendsSmallPackets();
};

void TstInstrumentStream::theEightChannelModelSendsOneByteASample()
{
    auto signal = std::make_shared<WaveSignal>(1, busy(8));
    Instrument device(steadyOptions(1), signal);
    QVERIFY(start(device, 0x0F)); // all eight come, whatever is enabled
    const Bytes got = readBulk(device, 40960, 4096, pipeOf8);
    QCOMPARE(got.size(), std::size_t(40960));
    const std::vector<std::uint32_t> wanted = samplesOf(*signal, 0, got.size(), 0xFF);
    QVERIFY(std::equal(got.begin(), got.end(), wanted.begin()));
}

void TstInstrumentStream::theChannelsTakeTurnsInRisingOrder_data()
{
    QTest::addColumn<QVector<int>>("channels");
    QTest::addRow("one") << QVector<int>{5};
    QTest::addRow("three") << QVector<int>{0, 1, 2};
    QTest::addRow("three apart") << QVector<int>{1, 8, 15};
    QTest::addRow("five") << QVector<int>{0, 3, 4, 9, 12};
    QTest::addRow("seven") << QVector<int>{0, 1, 2, 3, 4, 5, 6};
    QTest::addRow("twelve") << QVector<int>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
    QTest::addRow("all") << QVector<int>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
}

void TstInstrumentStream::theChannelsTakeTurnsInRisingOrder()
{
    QFETCH(QVector<int>, channels);
    std::uint32_t mask = 0;
    for (const int channel : channels) {
        mask |= 1U << channel;
    }
    auto signal = std::make_shared<WaveSignal>(1, busy(16));
    Instrument device(steadyOptions(5), signal);
    QVERIFY(start(device, mask));
    const Bytes got = readBulk(device, 65536, 4096, pipeOf16);
    const std::vector<std::uint32_t> samples = decodeSliced(got, std::vector<int>(channels.begin(), channels.end()));
    QVERIFY(samples.size() >= 32000);
    QCOMPARE(samples, samplesOf(*signal, 0, samples.size(), mask));
}

void TstInstrumentStream::readsOfAnySizeGiveTheSameStream()
{
    const auto signal = [] { return std::make_shared<WaveSignal>(1, busy(5)); };
    Instrument whole(steadyOptions(5), signal());
    Instrument pieces(steadyOptions(5), signal());
    QVERIFY(start(whole, 0x1F));
    QVERIFY(start(pieces, 0x1F));
    const Bytes wanted = readBulk(whole, 51200, 51200);
    Bytes got;
    for (std::size_t size = 1; got.size() < wanted.size(); size = size * 5 % 1021 + 1) {
        Bytes buffer(std::min(size, wanted.size() - got.size()));
        QCOMPARE(pieces.bulkIn(pipeOf16, buffer).bytes, buffer.size());
        got.insert(got.end(), buffer.begin(), buffer.end());
    }
    QVERIFY(got == wanted);
}

void TstInstrumentStream::theStreamBeginsAnewWithEachStart()
{
    Instrument device(steadyOptions(5), std::make_shared<WaveSignal>(1, busy(16)));
    QVERIFY(start(device));
    const Bytes first = readBulk(device, 8192);
    QVERIFY(run(device, false) && sent(device, 0x38, 0) && sent(device, 0x38, 0));
    QVERIFY(run(device) && sent(device, 0x30, 0));
    QVERIFY(readBulk(device, 8192) == first);
}

void TstInstrumentStream::aPacedStreamBringsItsRateInWholePackets()
{
    // 800 MHz / 80: 10 MHz and 16 channels, 20,000 bytes a millisecond.
    Instrument device(steadyOptions(5, 1.0), std::make_shared<WaveSignal>(1, busy(16)));
    QVERIFY(start(device, 0xFFFF, 80));
    Bytes buffer(1 << 20);
    QCOMPARE(device.bulkIn(pipeOf16, buffer).outcome, Outcome::NotYet);
    device.tick(millisecond);
    const Answer answer = device.bulkIn(pipeOf16, buffer);
    QCOMPARE(answer.bytes, std::size_t(20000 / 512 * 512));
    QVERIFY(!answer.ends);
    QCOMPARE(device.bulkIn(pipeOf16, buffer).outcome, Outcome::NotYet);
    device.tick(99 * millisecond);
    QCOMPARE(device.bulkIn(pipeOf16, buffer).bytes, buffer.size());
    QCOMPARE(device.bulkIn(pipeOf16, buffer).outcome, Outcome::Done);
    QCOMPARE(device.inBytes(), std::uint64_t(2'000'000 / 512 * 512));
}

void TstInstrumentStream::aHalfPaceBringsHalf()
{
    Instrument device(steadyOptions(1, 0.5), nullptr);
    QVERIFY(start(device, 0xFF, 48)); // 1 MHz
    device.tick(1024 * millisecond);
    QCOMPARE(readBulk(device, 1 << 21, 512, pipeOf8).size(), std::size_t(512 * 1000));
}

void TstInstrumentStream::nothingIsSentBeforeTheRunOrWithoutTheBulkStart()
{
    Instrument device(steadyOptions(5), nullptr);
    QVERIFY(bringUp(device) && configure(device, {}));
    Bytes buffer(512);
    QVERIFY(sent(device, 0x30, 0));
    QCOMPARE(device.bulkIn(pipeOf16, buffer).outcome, Outcome::NotYet);
    QVERIFY(run(device));
    QCOMPARE(device.bulkIn(pipeOf16, buffer).bytes, std::size_t(512));
    QVERIFY(run(device, false) && sent(device, 0x38, 0) && sent(device, 0x38, 0) && run(device));
    QCOMPARE(device.bulkIn(pipeOf16, buffer).outcome, Outcome::NotYet);
}

void TstInstrumentStream::aStoppedStreamEndsTheReadThatWaits()
{
    Instrument device(steadyOptions(5), nullptr);
    QVERIFY(start(device));
    Bytes buffer(512);
    QVERIFY(device.bulkIn(pipeOf16, buffer).ends);
    QVERIFY(run(device, false) && sent(device, 0x38, 0));
    const Answer answer = device.bulkIn(pipeOf16, buffer);
    QVERIFY(answer.outcome == Outcome::Done && answer.ends && answer.bytes == 0);
    QCOMPARE(device.bulkIn(pipeOf16, buffer).outcome, Outcome::NotYet);
}

void TstInstrumentStream::anEndThatNobodyFetchedIsForgottenAtTheNextStop()
{
    Instrument device(steadyOptions(5), nullptr);
    Bytes buffer(512);
    QVERIFY(start(device));
    QVERIFY(run(device, false) && sent(device, 0x38, 0));
    QVERIFY(sent(device, 0x38, 0)); // the next capture begins
    QCOMPARE(device.bulkIn(pipeOf16, buffer).outcome, Outcome::NotYet);
    // A pipe that the host resets forgets it too.
    QVERIFY(run(device) && sent(device, 0x30, 0) && run(device, false));
    QCOMPARE(device.control({0x02, 1, 0, pipeOf16, 0}, {}).outcome, Outcome::Done);
    QCOMPARE(device.bulkIn(pipeOf16, buffer).outcome, Outcome::NotYet);
}

void TstInstrumentStream::aSilentStopLeavesTheReadWaiting()
{
    InstrumentOptions o = steadyOptions(5);
    o.silentStop = true;
    Instrument device(o, nullptr);
    QVERIFY(start(device));
    QVERIFY(run(device, false) && sent(device, 0x38, 0));
    Bytes buffer(512);
    QCOMPARE(device.bulkIn(pipeOf16, buffer).outcome, Outcome::NotYet);
}

void TstInstrumentStream::fullSpeedSendsSmallPackets()
{
    InstrumentOptions o = steadyOptions(5, 1.0);
    o.speed = emulator::Speed::Full;
    Instrument device(o, nullptr);
    QVERIFY(start(device, 0xFFFF, 8000)); // 100 kHz: 200 bytes a millisecond
    device.tick(millisecond);
    Bytes buffer(4096);
    QCOMPARE(device.bulkIn(pipeOf16, buffer).bytes, std::size_t(192));
}

QTEST_GUILESS_MAIN(TstInstrumentStream)
#include "tst_InstrumentStream.moc"
