// The script of faults: what goes wrong, where, and how often.

#include "WaveSignal.h"
#include "emulator/Bench.h"

#include <QtTest>

using namespace bench;
using emulator::Fault;
using emulator::FaultAction;
using emulator::RecordFormat;
using emulator::WaveSignal;
using Wave = emulator::WaveSignal::Wave;
namespace requests = emulator::requests;

namespace {

/// A device with a finished capture of 3000 samples.
struct Captured {
    explicit Captured(int model = 8)
        : signal(std::make_shared<WaveSignal>(1, WaveSignal::counter(16, 3))), device(steadyOptions(model), signal)
    {
        bool good = bringUp(device) && configure(device, {.depth = 3000}) && run(device);
        for (int i = 0; i < 5; ++i) {
            good = good && status(device) != 0;
        }
        if (!good || device.running()) {
            qFatal("no capture");
        }
        device.faults().clear(); // counts from 0
    }

    std::shared_ptr<WaveSignal> signal;
    Instrument device;
};

} // namespace

class TstInstrumentFaults : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void eachTransferOfABringUpCanFail_data();
    void eachTransferOfABringUpCanFail();
    void aShortenedRequestMovesFewerBytes();
    void aShortenedWriteTakesFewerBytes();
    void aRequestWithoutAnAnswerStaysUnanswered();
    void aSlowAnswerSaysByHowMuch();
    void theNthRequestOfAKindIsStruck();
    void everyStatusWordCanBeBad();
    void theBulkReadStallsUntilTheHaltIsCleared();
    void thePlugIsPulledAtAByteOfABulkRead_data();
    void thePlugIsPulledAtAByteOfABulkRead();
    void thePlugIsPulledInAWrite();
    void theBulkReadFallsSilentAtAByte();
    void theBulkReadIsLateAtAByte();
    void aStreamEndsEarly();
    void aRecordOfNoSamplesIsSent();
    void checkBytesDisagree();
    void theCaptureTellsImpossibleNumbers();
    void aDeviceThatNeverComesBack();
    void twoInstrumentsDoNotShareAnything();
};

void TstInstrumentFaults::eachTransferOfABringUpCanFail_data()
{
    QTest::addColumn<int>("action");
    QTest::addColumn<int>("outcome");
    QTest::addRow("stall") << int(FaultAction::Stall) << int(Outcome::Stalled);
    QTest::addRow("failure") << int(FaultAction::Fail) << int(Outcome::Failed);
    QTest::addRow("unplugged") << int(FaultAction::Unplug) << int(Outcome::Gone);
    QTest::addRow("silence") << int(FaultAction::Silence) << int(Outcome::NotYet);
}

void TstInstrumentFaults::eachTransferOfABringUpCanFail()
{
    QFETCH(int, action);
    QFETCH(int, outcome);
    std::size_t total = 0;
    {
        Instrument device({});
        QVERIFY(bringUp(device));
        total = device.log().count();
    }
    for (std::size_t k = 0; k < total; ++k) {
        Instrument device({});
        device.faults().atTransfer(k, Fault{FaultAction(action)});
        QVERIFY2(!bringUp(device), qPrintable(QString::number(k)));
        const auto &struck = device.log().entries().at(k);
        QCOMPARE(int(struck.outcome), outcome);
        QCOMPARE(device.attached(), FaultAction(action) != FaultAction::Unplug);
        // Plugged in anew it comes up.
        device.detach();
        QVERIFY(bringUp(device));
    }
}

void TstInstrumentFaults::aShortenedRequestMovesFewerBytes()
{
    Instrument device(steadyOptions(8));
    device.attach();
    device.faults().atTransfer(0, {FaultAction::Shorten, 3});
    QCOMPARE(ask(device, 0xA2, 0x08, 8).size(), std::size_t(3));
    QCOMPARE(ask(device, 0xA2, 0x08, 8).size(), std::size_t(8));
    device.faults().atTransfer(2, {FaultAction::Shorten, 1});
    QCOMPARE(send(device, 0x50, 0, little(4096, 4)).bytes, std::size_t(1));
}

void TstInstrumentFaults::aShortenedWriteTakesFewerBytes()
{
    Instrument device(steadyOptions(8));
    device.attach();
    QVERIFY(sent(device, 0x50, 0, little(100, 4)));
    device.faults().atOutByte(0, {FaultAction::Shorten, 1000});
    const Bytes block(4096);
    QCOMPARE(device.bulkOut(0x02, block).bytes, std::size_t(1000));
    QCOMPARE(device.bulkOut(0x02, std::span(block).subspan(1000)).bytes, std::size_t(3096));
    QCOMPARE(ask(device, 0x50, 0, 1), Bytes{0});
}

void TstInstrumentFaults::aRequestWithoutAnAnswerStaysUnanswered()
{
    Instrument device(steadyOptions(8));
    device.attach();
    device.faults().atTransfer(0, Fault{FaultAction::Silence});
    QCOMPARE(send(device, 0x38, 0).outcome, Outcome::NotYet);
    QCOMPARE(send(device, 0x38, 0).outcome, Outcome::Done);
}

void TstInstrumentFaults::aSlowAnswerSaysByHowMuch()
{
    Instrument device(steadyOptions(8));
    device.attach();
    device.faults().atTransfer(0, {FaultAction::Delay, 1234});
    const Answer answer = send(device, 0x38, 0);
    QCOMPARE(answer.outcome, Outcome::Done);
    QCOMPARE(answer.delay, std::uint64_t(1234));
    QCOMPARE(send(device, 0x38, 0).delay, std::uint64_t(0));
}

void TstInstrumentFaults::theNthRequestOfAKindIsStruck()
{
    Instrument device(steadyOptions(8));
    device.attach();
    device.faults().atRequest(requests::bulkStop, 2, Fault{FaultAction::Stall});
    QVERIFY(sent(device, 0x38, 0));
    QVERIFY(sent(device, 0x30, 0));
    QVERIFY(sent(device, 0x38, 0));
    QVERIFY(!sent(device, 0x38, 0));
    QVERIFY(sent(device, 0x38, 0));
}

void TstInstrumentFaults::everyStatusWordCanBeBad()
{
    Instrument device(steadyOptions(8));
    QVERIFY(bringUp(device));
    device.faults().setStatus(0xBEEF);
    QCOMPARE(int(status(device)), 0xBEEF);
    QCOMPARE(int(status(device)), 0xBEEF);
    device.faults().clear();
    QCOMPARE(int(status(device)), 0x85C1);
}

void TstInstrumentFaults::theBulkReadStallsUntilTheHaltIsCleared()
{
    Captured rig;
    const Bytes sound = readWindow(rig.device, 0, 1024);
    rig.device.faults().atInByte(512, Fault{FaultAction::Stall});
    QVERIFY(sent(rig.device, 0x30, 0));
    Bytes buffer(1024);
    QCOMPARE(rig.device.bulkIn(0x86, buffer).bytes, std::size_t(512));
    QCOMPARE(rig.device.bulkIn(0x86, buffer).outcome, Outcome::Stalled);
    QCOMPARE(rig.device.bulkIn(0x86, buffer).outcome, Outcome::Stalled);
    Bytes halted(2);
    QCOMPARE(rig.device.control({0x82, 0, 0, 0x86, 2}, halted).bytes, std::size_t(2));
    QCOMPARE(halted, (Bytes{1, 0}));
    QCOMPARE(rig.device.control({0x02, 1, 0, 0x86, 0}, {}).outcome, Outcome::Done);
    QCOMPARE(readWindow(rig.device, 0, 1024), sound);
}

void TstInstrumentFaults::thePlugIsPulledAtAByteOfABulkRead_data()
{
    QTest::addColumn<int>("offset");
    for (const int offset : {0, 1, 511, 512, 700, 1023}) {
        QTest::addRow("byte %d", offset) << offset;
    }
}

void TstInstrumentFaults::thePlugIsPulledAtAByteOfABulkRead()
{
    QFETCH(int, offset);
    Captured rig;
    rig.device.faults().atInByte(std::uint64_t(offset), Fault{FaultAction::Unplug});
    QCOMPARE(readWindow(rig.device, 0, 1024).size(), std::size_t(offset));
    QVERIFY(!rig.device.attached());
}

void TstInstrumentFaults::thePlugIsPulledInAWrite()
{
    Instrument device(steadyOptions(8));
    device.attach();
    device.faults().atOutByte(5000, Fault{FaultAction::Unplug});
    QCOMPARE(uploadFpga(device, 10000), -1);
    QVERIFY(!device.attached());
    QCOMPARE(device.log().entries().size(), std::size_t(3)); // the announcement and two blocks
}

void TstInstrumentFaults::theBulkReadFallsSilentAtAByte()
{
    Captured rig;
    rig.device.faults().atInByte(100, Fault{FaultAction::Silence});
    QCOMPARE(readWindow(rig.device, 0, 1024).size(), std::size_t(100));
    Bytes buffer(512);
    QCOMPARE(rig.device.bulkIn(0x86, buffer).outcome, Outcome::NotYet);
    QCOMPARE(readWindow(rig.device, 0, 1024).size(), std::size_t(1024));
}

void TstInstrumentFaults::theBulkReadIsLateAtAByte()
{
    Captured rig;
    rig.device.faults().atInByte(512, {FaultAction::Delay, millisecond});
    QVERIFY(sent(rig.device, 0x20, 0x10, little(0, 4) + little(1024, 4)) && sent(rig.device, 0x30, 0));
    Bytes buffer(1024);
    QCOMPARE(rig.device.bulkIn(0x86, buffer).bytes, std::size_t(512));
    QCOMPARE(rig.device.bulkIn(0x86, buffer).outcome, Outcome::NotYet);
    rig.device.tick(millisecond - 1);
    QCOMPARE(rig.device.bulkIn(0x86, buffer).outcome, Outcome::NotYet);
    rig.device.tick(1);
    QCOMPARE(rig.device.bulkIn(0x86, buffer).bytes, std::size_t(512));
}

void TstInstrumentFaults::aStreamEndsEarly()
{
    Instrument device(steadyOptions(5));
    QVERIFY(bringUp(device) && configure(device, {}) && run(device));
    device.faults().atInByte(5000, Fault{FaultAction::End});
    QVERIFY(sent(device, 0x30, 0));
    QCOMPARE(readBulk(device, 1 << 20).size(), std::size_t(5000));
}

void TstInstrumentFaults::aRecordOfNoSamplesIsSent()
{
    Captured narrow;
    const Bytes sound = readBack(narrow.device);
    narrow.device.faults().zeroCountAt(RecordFormat::Rle16, 7); // third record of the second group
    const Bytes bad = readBack(narrow.device);
    QVERIFY(sound[16 + 8] != 0);
    QCOMPARE(int(bad[16 + 8]), 0);
    QVERIFY(!decode16(bad).sound);

    Captured wide(9);
    wide.device.faults().zeroCountAt(RecordFormat::Rle32, 7); // second record of the second group
    QCOMPARE(int(readBack(wide.device)[32 + 9]), 0);
}

void TstInstrumentFaults::checkBytesDisagree()
{
    Captured rig(9);
    QVERIFY(decode32(readBack(rig.device)).sound);
    rig.device.faults().wrongCheckAt(3);
    const Bytes bad = readBack(rig.device);
    QVERIFY(!decode32(bad).sound);
    QVERIFY((bad[3 * 32 + 30] ^ bad[3 * 32 + 31]) != 0xFF);
    QVERIFY((bad[2 * 32 + 30] ^ bad[2 * 32 + 31]) == 0xFF);
}

void TstInstrumentFaults::theCaptureTellsImpossibleNumbers()
{
    Captured rig;
    rig.device.faults().setCaptureInfo(0xFFFFFFFF, 7, 0x90000000);
    const Info info = captureInfo(rig.device);
    QCOMPARE(info.recordCount, 0xFFFFFFFF);
    QCOMPARE(info.triggerRecord, 7U);
    QCOMPARE(info.endAddress, 0x90000000);
    // A window outside the memory is served all the same.
    QCOMPARE(readWindow(rig.device, 0x90000000, 4096).size(), std::size_t(4096));
}

void TstInstrumentFaults::aDeviceThatNeverComesBack()
{
    Instrument device({});
    device.faults().neverReturn();
    device.attach();
    QVERIFY(sendHexFirmware(device));
    device.tick(3600 * 1000 * millisecond);
    QVERIFY(!device.attached());
    device.attach(); // somebody plugs it in again
    QVERIFY(device.attached());
    QVERIFY(!device.firmwareRuns());
}

void TstInstrumentFaults::twoInstrumentsDoNotShareAnything()
{
    Captured first;
    Captured second(9);
    first.device.detach();
    QVERIFY(second.device.attached());
    QVERIFY(decode32(readBack(second.device)).sound);
}

QTEST_GUILESS_MAIN(TstInstrumentFaults)
#include "tst_InstrumentFaults.moc"
