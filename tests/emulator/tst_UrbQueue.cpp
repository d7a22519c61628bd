// What a host controller does: transfers in order, answers in time, and an end for all when the device leaves.

#include "UrbQueue.h"
#include "WaveSignal.h"
#include "emulator/Bench.h"

#include <QtTest>

using namespace bench;
using emulator::FaultAction;
using emulator::Urb;
using emulator::UrbQueue;
using Wave = emulator::WaveSignal::Wave;

namespace {

/// A streaming instrument behind its queue: 16 channels at 10 MHz are 20,000 bytes a millisecond.
struct Rig {
    explicit Rig(double pace = 0)
        : device(steadyOptions(5, pace),
                 std::make_shared<emulator::WaveSignal>(1, emulator::WaveSignal::counter(16, 5))),
          queue(device)
    {
        if (!bringUp(device) || !configure(device, {.divider = 80})) {
            qFatal("the instrument does not come up");
        }
        queue.forgetFewest();
        device.faults().clear();
    }
    void start()
    {
        if (!run(device) || !sent(device, 0x30, 0)) {
            qFatal("no stream");
        }
    }
    void read(std::uint64_t key, Bytes &buffer)
    {
        Urb urb;
        urb.key = key;
        urb.kind = Urb::Kind::BulkIn;
        urb.endpoint = 0x86;
        urb.buffer = buffer;
        queue.submit(urb);
    }
    void control(std::uint64_t key, const SetupPacket &setup, Bytes &buffer)
    {
        Urb urb;
        urb.key = key;
        urb.setup = setup;
        urb.buffer = buffer;
        queue.submit(urb);
    }

    Instrument device;
    UrbQueue queue;
};

constexpr SetupPacket askStatus{0xC0, 0x20, 0, 0, 2};

} // namespace

class TstUrbQueue : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void readsAreFilledInTheOrderOfTheirSubmission();
    void aPacedReadGrowsOverManyPumps();
    void aRequestIsServedWhileAReadWaits();
    void aLateAnswerComesAtItsTime();
    void anUnansweredRequestStaysUntilItIsTakenBack();
    void aStallEndsOnlyThatTransfer();
    void aReadThatIsTakenBackKeepsWhatCame();
    void unpluggingEndsAllThatIsPending();
    void transfersOfAnEarlierArrivalEnd();
    void aStopEndsTheReadThatIsUnderWayShort();
    void theRoomOfAPumpIsKept();
    void theFewestReadsThatWereLeftAreTold();
};

void TstUrbQueue::readsAreFilledInTheOrderOfTheirSubmission()
{
    Rig rig;
    Bytes first(2048);
    Bytes second(1024);
    rig.read(1, first);
    rig.read(2, second);
    QVERIFY(rig.queue.pump().empty()); // nothing is sent yet
    rig.start();
    const std::vector<Urb> done = rig.queue.pump();
    QCOMPARE(done.size(), std::size_t(2));
    QCOMPARE(done[0].key, std::uint64_t(1));
    QCOMPARE(done[1].key, std::uint64_t(2));
    QCOMPARE(done[0].actual, first.size());
    QVERIFY(run(rig.device, false) && sent(rig.device, 0x38, 0));
    rig.start();
    QVERIFY(readBulk(rig.device, 3072, 3072) == first + second);
}

void TstUrbQueue::aPacedReadGrowsOverManyPumps()
{
    Rig rig(1.0);
    Bytes buffer(65536);
    rig.read(1, buffer);
    rig.start();
    for (int i = 0; i < 3; ++i) {
        rig.device.tick(millisecond);
        QVERIFY(rig.queue.pump().empty());
        QVERIFY(!rig.queue.wantsMore());
    }
    rig.device.tick(millisecond);
    const std::vector<Urb> done = rig.queue.pump();
    QCOMPARE(done.size(), std::size_t(1));
    QCOMPARE(done[0].actual, buffer.size());
}

void TstUrbQueue::aRequestIsServedWhileAReadWaits()
{
    Rig rig;
    Bytes buffer(512);
    Bytes status(2);
    rig.read(1, buffer);
    rig.control(2, askStatus, status);
    const std::vector<Urb> done = rig.queue.pump();
    QCOMPARE(done.size(), std::size_t(1));
    QCOMPARE(done[0].key, std::uint64_t(2));
    QCOMPARE(done[0].outcome, Outcome::Done);
    QCOMPARE(int(status[0] & 3), 1);
}

void TstUrbQueue::aLateAnswerComesAtItsTime()
{
    Rig rig;
    rig.device.faults().atTransfer(0, {FaultAction::Delay, 5 * millisecond});
    Bytes status(2);
    Bytes next(2);
    rig.control(1, askStatus, status);
    rig.control(2, askStatus, next); // waits behind the first
    rig.device.tick(4 * millisecond);
    QVERIFY(rig.queue.pump().empty());
    rig.device.tick(5 * millisecond); // from the first pump on
    QCOMPARE(rig.queue.pump().size(), std::size_t(2));
    QCOMPARE(rig.device.faults().transfers(), std::uint64_t(2));
}

void TstUrbQueue::anUnansweredRequestStaysUntilItIsTakenBack()
{
    Rig rig;
    rig.device.faults().atTransfer(0, emulator::Fault{FaultAction::Silence});
    Bytes status(2);
    rig.control(1, askStatus, status);
    QVERIFY(rig.queue.pump().empty());
    rig.device.tick(10'000 * millisecond);
    QVERIFY(rig.queue.pump().empty());
    QVERIFY(rig.queue.cancel(1).has_value());
    QVERIFY(!rig.queue.cancel(1).has_value());
    QVERIFY(rig.queue.empty());
    rig.control(2, askStatus, status);
    QCOMPARE(rig.queue.pump().size(), std::size_t(1));
}

void TstUrbQueue::aStallEndsOnlyThatTransfer()
{
    Rig rig;
    Bytes buffer(4);
    Bytes status(2);
    rig.control(1, {0xC0, 0xEE, 0, 0, 4}, buffer);
    rig.control(2, askStatus, status);
    const std::vector<Urb> done = rig.queue.pump();
    QCOMPARE(done.size(), std::size_t(2));
    QCOMPARE(done[0].outcome, Outcome::Stalled);
    QCOMPARE(done[1].outcome, Outcome::Done);
}

void TstUrbQueue::aReadThatIsTakenBackKeepsWhatCame()
{
    Rig rig(1.0);
    Bytes buffer(65536);
    rig.read(1, buffer);
    rig.start();
    rig.device.tick(millisecond);
    QVERIFY(rig.queue.pump().empty());
    const auto urb = rig.queue.cancel(1);
    QVERIFY(urb.has_value());
    QCOMPARE(urb->actual, std::size_t(20000 / 512 * 512));
}

void TstUrbQueue::unpluggingEndsAllThatIsPending()
{
    Rig rig;
    Bytes first(512);
    Bytes second(512);
    rig.read(1, first);
    rig.read(2, second);
    rig.device.detach();
    const std::vector<Urb> done = rig.queue.pump();
    QCOMPARE(done.size(), std::size_t(2));
    for (const Urb &urb : done) {
        QCOMPARE(urb.outcome, Outcome::Gone);
        QCOMPARE(urb.actual, std::size_t(0));
    }
}

void TstUrbQueue::transfersOfAnEarlierArrivalEnd()
{
    Rig rig;
    Bytes buffer(512);
    rig.read(1, buffer);
    rig.device.detach();
    rig.device.attach();
    QCOMPARE(rig.queue.pump().front().outcome, Outcome::Gone);
    Bytes status(2);
    rig.control(2, askStatus, status);
    QCOMPARE(rig.queue.pump().front().outcome, Outcome::Done);
}

void TstUrbQueue::aStopEndsTheReadThatIsUnderWayShort()
{
    Rig rig(1.0);
    Bytes buffer(65536);
    Bytes second(65536);
    rig.read(1, buffer);
    rig.read(2, second);
    rig.start();
    rig.device.tick(millisecond);
    QVERIFY(rig.queue.pump().empty());
    QVERIFY(run(rig.device, false) && sent(rig.device, 0x38, 0));
    const std::vector<Urb> done = rig.queue.pump();
    QCOMPARE(done.size(), std::size_t(1));
    QCOMPARE(done[0].actual, std::size_t(20000 / 512 * 512));
    QCOMPARE(done[0].outcome, Outcome::Done);
}

void TstUrbQueue::theRoomOfAPumpIsKept()
{
    Rig rig;
    Bytes buffer(8192);
    rig.read(1, buffer);
    rig.start();
    QVERIFY(rig.queue.pump(4096).empty());
    QVERIFY(rig.queue.wantsMore());
    QCOMPARE(rig.queue.pump(4096).size(), std::size_t(1));
    QVERIFY(readBulk(rig.device, 512, 512).size() == 512);
}

void TstUrbQueue::theFewestReadsThatWereLeftAreTold()
{
    Rig rig;
    Bytes one(512);
    Bytes two(512);
    QCOMPARE(rig.queue.fewestReadsLeft(), -1);
    rig.start();
    rig.read(1, one);
    rig.read(2, two);
    QCOMPARE(rig.queue.pump(512).size(), std::size_t(1));
    QCOMPARE(rig.queue.fewestReadsLeft(), 1);
    QCOMPARE(rig.queue.pump(512).size(), std::size_t(1));
    QCOMPARE(rig.queue.fewestReadsLeft(), 0);
}

QTEST_GUILESS_MAIN(TstUrbQueue)
#include "tst_UrbQueue.moc"
