// The coordinator of bring-up: its threads, and what reaches it at the wrong moment.

#include "BringUpDesk.h"
#include "device/DeviceGlobals.h"
#include "device/UsbLookThread.h"
#include "support/FakeUsb.h"

#include <QSemaphore>

#include <optional>
#include <thread>

namespace {

/// Holds a thread of the bring-up in one of its pauses until the test lets it go on.
class Hold {
public:
    /// @param ms  the pause, by its length
    Hold(BringUpDesk &desk, int ms)
    {
        desk.init->skipPause = [state = m_state, ms](int pause) {
            if (pause == ms && !state->released.load()) {
                state->reached.release();
                state->go.acquire();
            }
            return pause != 200;
        };
    }
    void await()
    {
        QVERIFY(QTest::qWaitFor([this] { return m_state->reached.tryAcquire(); }, BringUpDesk::longWait));
    }
    void release()
    {
        m_state->released = true;
        m_state->go.release();
    }

private:
    struct State {
        std::atomic<bool> released{false};
        QSemaphore reached;
        QSemaphore go;
    };
    /// Shared with the threads: one may come to a pause when the test has all that it wanted.
    const std::shared_ptr<State> m_state = std::make_shared<State>();
};

constexpr int returnPause = 200;
constexpr int beforeEnable = 30;
constexpr int afterEnable = 40;
constexpr int withoutFpga = 100;

std::uint64_t transfersOf(BringUpDesk &desk)
{
    return desk.bus->with([](emulator::Instrument &i) { return i.faults().transfers(); });
}

} // namespace

class TstDevInit : public QObject {
    Q_OBJECT
private slots:
    void withoutADeviceNothingIsTold();
    void aDeviceThatIsNoInstrumentIsLeftAlone_data();
    void aDeviceThatIsNoInstrumentIsLeftAlone();
    void aRemovalWithoutAConnectionIsNotTold();
    void aDeviceObjectThatWasNotSwappedIsNotInitialised_data();
    void aDeviceObjectThatWasNotSwappedIsNotInitialised();
    void theDeviceObjectIsTouchedOnTheMainThreadAlone();
    void aDeviceObjectThatIsReplacedMeanwhileIsConnectedAllTheSame();
    void thePausesAreThoseOfTheHardware_data();
    void thePausesAreThoseOfTheHardware();
    void aNewBareDeviceWaitsForTheThreadOfTheLast();
    void aNewDeviceWithFirmwareWaitsForTheThreadOfTheLast_data();
    void aNewDeviceWithFirmwareWaitsForTheThreadOfTheLast();
    void aDeviceThatGoesInAPauseIsToldAtOnce_data();
    void aDeviceThatGoesInAPauseIsToldAtOnce();
    void theReturnOfTheDeviceEndsTheWaitAtOnce();
    void aDeviceThatGoesBeforeItsObjectIsConnectedIsTold();
    void theCoordinatorMayGoWhileAThreadWaitsForTheMainThread();
    void theCoordinatorMayGoInEveryPause_data();
    void theCoordinatorMayGoInEveryPause();
    void theCoordinatorMayGoWithARunThatHasNotStarted();
    void aDeviceThatIsHeldBackIsClosedWithTheCoordinator();
    void theVersionIsZeroWhenItCannotBeRead();
};

void TstDevInit::withoutADeviceNothingIsTold()
{
    BringUpDesk desk;
    desk.init->slotDevChange();
    QTRY_VERIFY(!desk.init->isWorking());
    QVERIFY(desk.reports.isEmpty());
}

void TstDevInit::aDeviceThatIsNoInstrumentIsLeftAlone_data()
{
    QTest::addColumn<int>("product");
    for (const int product : {0x01A0, 0x01A5, 0x02A4, 0x03A4, 0xFFFF}) {
        QTest::addRow("%04X", product) << product;
    }
}

void TstDevInit::aDeviceThatIsNoInstrumentIsLeftAlone()
{
    QFETCH(int, product);
    emulator::InstrumentOptions options = runningInstrument(8);
    options.product = std::uint16_t(product);
    BringUpDesk desk;
    desk.bus->add(options);
    desk.bus->plug();
    QTRY_VERIFY(desk.transport->isOpen());
    QVERIFY(desk.reports.isEmpty());
    QVERIFY(!desk.init->isWorking());
    desk.bus->unplug();
    QTRY_VERIFY(!desk.transport->isOpen());
    QVERIFY(desk.reports.isEmpty());
}

void TstDevInit::aRemovalWithoutAConnectionIsNotTold()
{
    BringUpDesk desk;
    desk.add(instrumentOf(8));
    desk.bus->with([](emulator::Instrument &i) { i.faults().atTransfer(0, {emulator::FaultAction::Stall}); });
    desk.bus->plug();
    QTRY_VERIFY(desk.hasEnded());
    desk.bus->unplug();
    QTRY_VERIFY(!desk.transport->isOpen());
    QCOMPARE(desk.reports, (QVector<Report>{{0, 0, 0}, {1, 2, 0}}));
}

void TstDevInit::aDeviceObjectThatWasNotSwappedIsNotInitialised_data()
{
    QTest::addColumn<int>("present");
    QTest::addColumn<int>("model");
    QTest::newRow("of another name") << 9 << 8;
    QTest::newRow("of the same name") << 4 << 8;
    QTest::newRow("of the same name, without hardware") << 0 << 8;
    QTest::newRow("of the earlier build") << 2 << 6;
}

void TstDevInit::aDeviceObjectThatWasNotSwappedIsNotInitialised()
{
    QFETCH(int, present);
    QFETCH(int, model);
    BringUpDesk desk(present);
    // A file begins to load when the instrument has been found.
    std::optional<Session::FileJob> held;
    connect(desk.init, &DevInit::sigInitSta, this, [&](int sta) {
        if (sta == 2) {
            held.emplace(*desk.session);
        }
    });
    desk.add(runningInstrument(model));
    desk.bus->plug();
    QTRY_VERIFY(desk.hasEnded());
    QCOMPARE(desk.asked, QVector<int>{model});
    QCOMPARE(desk.reports.last(), (Report{5, 11, 0}));
    QVERIFY(!gDev->connected);
    QVERIFY(desk.init->identity().isEmpty());
}

void TstDevInit::theDeviceObjectIsTouchedOnTheMainThreadAlone()
{
    BringUpDesk desk;
    QThread *const main = QThread::currentThread();
    QVector<QThread *> threads;
    connect(desk.init, &DevInit::sigDevPreConnect, this, [&] { threads.append(QThread::currentThread()); });
    connect(desk.init, &DevInit::sigInitSta, this, [&] { threads.append(QThread::currentThread()); });
    desk.add(runningInstrument(8));
    desk.bus->plug();
    QTRY_VERIFY(desk.has(6));
    QCOMPARE(threads.count(main), threads.size());
}

void TstDevInit::aDeviceObjectThatIsReplacedMeanwhileIsConnectedAllTheSame()
{
    BringUpDesk desk;
    int rounds = 0;
    desk.session->control().sleep = [&](int) { ++rounds; };
    // Behind the first visit: the requests are under way, or through.
    connect(desk.init, &DevInit::sigDevPreConnect, this, [&] {
        if (desk.asked.size() == 1) {
            QMetaObject::invokeMethod(desk.session.get(), &Session::replaceConfig, Qt::QueuedConnection);
        }
    });
    desk.add(runningInstrument(8));
    desk.bus->plug();
    QTRY_VERIFY(desk.hasEnded());
    QCOMPARE(desk.firstError(), (Report{0, 0}));
    QCOMPARE(gDev->model, 8);
    QVERIFY(gDev->connected);
    QCOMPARE(desk.asked, (QVector<int>{8, 8}));
    desk.session.reset();
    QCOMPARE(rounds, 2);
}

void TstDevInit::thePausesAreThoseOfTheHardware_data()
{
    QTest::addColumn<int>("model");
    QTest::addColumn<QVector<int>>("pauses");
    QTest::newRow("with an FPGA image") << 8 << QVector<int>{beforeEnable, afterEnable};
    QTest::newRow("without one") << 1 << QVector<int>{withoutFpga, beforeEnable, afterEnable};
}

void TstDevInit::thePausesAreThoseOfTheHardware()
{
    QFETCH(int, model);
    QFETCH(QVector<int>, pauses);
    QVector<int> seen; // written by one thread, read when that has ended
    BringUpDesk desk;
    desk.init->skipPause = [&seen](int ms) {
        seen.append(ms);
        return true;
    };
    desk.add(runningInstrument(model));
    desk.bus->plug();
    QTRY_VERIFY(desk.has(6));
    desk.session.reset();
    QCOMPARE(seen, pauses);
}

void TstDevInit::aNewBareDeviceWaitsForTheThreadOfTheLast()
{
    BringUpDesk desk;
    Hold hold(desk, returnPause);
    desk.add(instrumentOf(2));
    desk.bus->with([](emulator::Instrument &i) { i.faults().neverReturn(); });
    desk.bus->plug();
    hold.await();
    QTRY_VERIFY(!desk.transport->isOpen()); // it has left the bus, and does not come back by itself
    desk.bus->unplug();
    desk.bus->with([](emulator::Instrument &i) { i.faults().clear(); });
    desk.bus->plug();
    QTRY_COMPARE(desk.reports.count({0, 0, 0}), 2);
    QVERIFY(desk.init->isWorking());
    QCOMPARE(transfersOf(desk), std::uint64_t(0)); // the thread still stands
    hold.release();
    QTRY_VERIFY(desk.hasEnded());
    QCOMPARE(desk.firstError(), (Report{0, 0}));
    QCOMPARE(gDev->model, 2);
}

void TstDevInit::aNewDeviceWithFirmwareWaitsForTheThreadOfTheLast_data()
{
    QTest::addColumn<int>("pause");
    QTest::newRow("before the FPGA is enabled") << beforeEnable;
    QTest::newRow("behind it") << afterEnable;
}

void TstDevInit::aNewDeviceWithFirmwareWaitsForTheThreadOfTheLast()
{
    QFETCH(int, pause);
    BringUpDesk desk;
    Hold hold(desk, pause);
    desk.add(runningInstrument(2));
    desk.bus->plug();
    hold.await();
    desk.bus->unplug();
    QTRY_VERIFY(!desk.transport->isOpen());
    desk.bus->with([](emulator::Instrument &i) { i.faults().clear(); });
    desk.bus->plug();
    QTRY_COMPARE(desk.reports.count({2, 0, 0}), 2);
    QCOMPARE(transfersOf(desk), std::uint64_t(0));
    hold.release();
    QTRY_VERIFY(desk.hasEnded());
    // The old run neither touched the new device nor told of its own end.
    QCOMPARE(desk.firstError(), (Report{0, 0}));
    QCOMPARE(desk.asked.size(), 1);
    QVERIFY(gDev->connected);
}

void TstDevInit::aDeviceThatGoesInAPauseIsToldAtOnce_data()
{
    QTest::addColumn<int>("model");
    QTest::addColumn<int>("pause");
    QTest::newRow("in place of the upload") << 1 << withoutFpga;
    QTest::newRow("before the FPGA is enabled") << 2 << beforeEnable;
    QTest::newRow("behind it") << 2 << afterEnable;
}

void TstDevInit::aDeviceThatGoesInAPauseIsToldAtOnce()
{
    QFETCH(int, model);
    QFETCH(int, pause);
    BringUpDesk desk;
    Hold hold(desk, pause);
    desk.add(runningInstrument(model));
    desk.bus->plug();
    hold.await();
    desk.bus->unplug();
    QTRY_VERIFY(!desk.transport->isOpen());
    hold.release();
    QTRY_VERIFY(desk.hasEnded());
    QCOMPARE(desk.reports.last(), (Report{4, 1, 0}));
    QTRY_VERIFY(!desk.init->isWorking());
}

void TstDevInit::theReturnOfTheDeviceEndsTheWaitAtOnce()
{
    std::atomic<int> waits{0};
    BringUpDesk desk;
    desk.init->skipPause = [&waits](int ms) {
        waits += ms == returnPause ? 1 : 0;
        return ms != returnPause;
    };
    emulator::InstrumentOptions options = instrumentOf(2);
    options.returnAfter = 20 * 1000 * emulator::nanosecondsPerMillisecond; // one second of real time
    desk.add(options);
    desk.bus->plug();
    QTRY_VERIFY(desk.has(6));
    QVERIFY(!desk.has(1, 5));
    QTRY_VERIFY(!desk.init->isWorking()); // the thread of the first stage may come late to its last wait
    // The wait that the return cut short has sent nothing more.
    int told = 0;
    for (const Report &report : desk.reports) {
        told += report.at(0) == 1 && report.at(2) > 0 ? 1 : 0;
    }
    QVERIFY(told < waits);
}

void TstDevInit::aDeviceThatGoesBeforeItsObjectIsConnectedIsTold()
{
    BringUpDesk desk;
    desk.add(runningInstrument(2));
    bool pulled = false;
    connect(desk.init, &DevInit::sigInitSta, this, [&](int sta) {
        if (sta == 5 && !pulled) {
            pulled = true;
            desk.bus->unplug();
            desk.init->slotDevChange();
            while (desk.transport->isOpen()) { // what the look finds comes before the visit of the thread
                QCoreApplication::sendPostedEvents(desk.init->findChild<UsbLookThread *>());
            }
        }
    });
    desk.bus->plug();
    QTRY_VERIFY(desk.hasEnded());
    QCOMPARE(desk.reports.last(), (Report{5, 1, 0}));
    QVERIFY(desk.asked.isEmpty());
    QVERIFY(!gDev->connected);
}

void TstDevInit::theCoordinatorMayGoWhileAThreadWaitsForTheMainThread()
{
    for (int i = 0; i < 20; ++i) {
        // No event reaches the main thread here; the status is the last that the other one asks alone.
        BringUpDesk desk(0, BringUpDesk::WithWindow);
        desk.add(runningInstrument(2));
        desk.bus->plug();
        desk.init->slotDevChange();
        while (!desk.has(2)) {
            QCoreApplication::sendPostedEvents(desk.init->findChild<UsbLookThread *>());
        }
        const auto asked = [](emulator::Instrument &instrument) {
            const auto &entries = instrument.log().entries();
            return !entries.empty() && entries.back().setup.request == 0x20;
        };
        while (!desk.bus->with(asked)) {
            std::this_thread::yield();
        }
        std::atomic<int> turns{0};
        while (turns.fetch_add(1, std::memory_order_relaxed) < i * 50000) {
            // Nearer and nearer to the wait, and into it. Yielding would take as long as a busy machine likes.
        }
        desk.session.reset();
        QCoreApplication::processEvents();
        QVERIFY(!desk.has(6));
    }
}

void TstDevInit::theCoordinatorMayGoInEveryPause_data()
{
    QTest::addColumn<int>("pause");
    for (const int pause : {returnPause, beforeEnable, afterEnable}) {
        QTest::addRow("of %d ms", pause) << pause;
    }
}

void TstDevInit::theCoordinatorMayGoInEveryPause()
{
    QFETCH(int, pause);
    QSemaphore reached;
    BringUpDesk desk;
    desk.init->skipPause = [&](int ms) {
        if (ms != pause) {
            return ms != returnPause;
        }
        reached.release();
        return false; // waits really
    };
    emulator::InstrumentOptions options = instrumentOf(2);
    options.firmwareInside = pause != returnPause;
    desk.add(options);
    desk.bus->plug();
    QVERIFY(QTest::qWaitFor([&reached] { return reached.tryAcquire(); }));
    desk.session.reset();
    QCOMPARE(desk.firstError(), (Report{0, 0}));
}

void TstDevInit::theCoordinatorMayGoWithARunThatHasNotStarted()
{
    BringUpDesk desk;
    Hold hold(desk, beforeEnable);
    desk.add(runningInstrument(2));
    desk.bus->plug();
    hold.await();
    desk.bus->unplug();
    QTRY_VERIFY(!desk.transport->isOpen());
    desk.bus->plug();
    QTRY_COMPARE(desk.reports.count({2, 0, 0}), 2);
    hold.release();
    desk.session.reset();
    QVERIFY(desk.asked.isEmpty());
}

void TstDevInit::aDeviceThatIsHeldBackIsClosedWithTheCoordinator()
{
    auto made = std::make_unique<FakeUsb>();
    FakeUsb &usb = *made;
    usb.devices = {FakeUsbDevice()};
    UsbTransport transport(std::move(made));
    auto coordinator = std::make_unique<DevInit>(transport);
    bool wasAsked = false;
    coordinator->setHeldBack([&wasAsked] { return wasAsked = true; });
    coordinator->slotDevChange();
    QTRY_VERIFY(wasAsked);
    QVERIFY(!usb.allFreed());
    coordinator.reset(); // the bus may go next
    QVERIFY(usb.allFreed());
}

void TstDevInit::theVersionIsZeroWhenItCannotBeRead()
{
    BringUpDesk desk;
    desk.add(runningInstrument(2));
    desk.bus->with([](emulator::Instrument &i) {
        i.faults().atRequest({0xC0, 0xA2, 0x20}, 0, {emulator::FaultAction::Stall});
    });
    hardwareVersion = 0x1234;
    desk.bus->plug();
    QTRY_VERIFY(desk.has(6));
    QCOMPARE(desk.firstError(), (Report{3, 2}));
    QCOMPARE(int(hardwareVersion.load()), 0);
}

QTEST_GUILESS_MAIN(TstDevInit)
#include "tst_DevInit.moc"
