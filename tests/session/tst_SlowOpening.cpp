// A device that the system is slow to find, to open or to close: the main thread waits for neither.

#include "device/DevBase.h"
#include "device/DevControlUsb.h"
#include "device/DevInit.h"
#include "device/DeviceGlobals.h"
#include "device/UsbTransport.h"
#include "platform/UsbPlatformEmulated.h"
#include "session/Session.h"
#include "settings/Config.h"

#include <QSemaphore>
#include <QtTest>

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

namespace {

constexpr int longWait = 30000; // ms: never waited for when all is well

/// What the system may take its time for.
enum class Step { None, List, Open, Claim, Descriptor, EndPoints, Setting, Free, Close };

/// A platform in which one step takes as long as the test likes.
class SlowPlatform final : public UsbPlatformEmulated {
public:
    using UsbPlatformEmulated::UsbPlatformEmulated;

    UsbList openList() override
    {
        pass(Step::List);
        lists.fetch_add(1, std::memory_order_relaxed);
        return UsbPlatformEmulated::openList();
    }
    UsbResult openFile(const char *path, UsbFile &file) override
    {
        pass(Step::Open);
        return UsbPlatformEmulated::openFile(path, file);
    }
    UsbResult initInterface(UsbFile file, UsbInterface &iface) override
    {
        pass(Step::Claim);
        return UsbPlatformEmulated::initInterface(file, iface);
    }
    UsbResult deviceDescriptor(UsbInterface iface, std::span<std::uint8_t> room, std::uint32_t &moved) override
    {
        pass(Step::Descriptor);
        return UsbPlatformEmulated::deviceDescriptor(iface, room, moved);
    }
    UsbResult interfaceSettings(UsbInterface iface, int &count) override
    {
        pass(Step::EndPoints);
        return UsbPlatformEmulated::interfaceSettings(iface, count);
    }
    UsbResult selectSetting(UsbInterface iface) override
    {
        pass(Step::Setting);
        return UsbPlatformEmulated::selectSetting(iface);
    }
    void freeInterface(UsbInterface iface) override
    {
        pass(Step::Free);
        UsbPlatformEmulated::freeInterface(iface);
    }
    void closeFile(UsbFile file) override
    {
        pass(Step::Close);
        UsbPlatformEmulated::closeFile(file);
    }

    /// From now on the first `step` stands still until letGo(). Main thread.
    void hold(Step step) { m_slow.store(step, std::memory_order_release); }
    /// A step has come to stand.
    [[nodiscard]] bool isReached() { return m_reached.tryAcquire(); }
    void letGo() { m_go.release(); }

    std::atomic<int> lists{0};       ///< taken
    std::atomic<bool> onMain{false}; ///< a step stood still on the main thread, which nobody could have let go of

private:
    void pass(Step step)
    {
        Step wanted = step;
        if (!m_slow.compare_exchange_strong(wanted, Step::None, std::memory_order_acq_rel)) {
            return;
        }
        m_reached.release();
        if (QThread::currentThread() == QCoreApplication::instance()->thread()) {
            onMain.store(true, std::memory_order_release);
            return;
        }
        m_go.acquire();
    }

    std::atomic<Step> m_slow{Step::None};
    QSemaphore m_reached;
    QSemaphore m_go;
};

/// A session over two instruments of model 8 that come with their firmware running.
struct SlowDesk {
    SlowDesk()
    {
        configLoad();
        emulator::InstrumentOptions options;
        options.model = 8;
        options.firmwareInside = true;
        bus.add(options);
        bus.add(options);
        auto made = std::make_unique<SlowPlatform>(bus);
        platform = made.get();
        session = std::make_unique<Session>(std::move(made), 0);
        session->control().sleep = [](int) {};
        session->bringUp().skipPause = [](int) { return true; };
        QObject::connect(session.get(), &Session::sigInitSta,
                         [this](int sta, int err, int) { states.append(err == 0 ? sta : -sta); });
        (void)session->watchDevices();
    }
    ~SlowDesk()
    {
        platform->letGo(); // where a test has failed before it
        session.reset();
    }
    SlowDesk(const SlowDesk &) = delete;
    SlowDesk &operator=(const SlowDesk &) = delete;

    [[nodiscard]] bool connect()
    {
        bus.plug();
        return QTest::qWaitFor([this] { return states.contains(6) && !session->bringUp().isWorking(); }, longWait);
    }
    [[nodiscard]] bool reach()
    {
        return QTest::qWaitFor([this] { return platform->isReached(); }, longWait);
    }

    EmulatedBus bus{20.0};
    SlowPlatform *platform = nullptr;
    std::unique_ptr<Session> session;
    QVector<int> states; ///< that were told, negative for errors
};

} // namespace

Q_DECLARE_METATYPE(Step)

class TstSlowOpening : public QObject {
    Q_OBJECT
private slots:
    void aSlowStepOfAnOpeningHoldsUpNobody_data();
    void aSlowStepOfAnOpeningHoldsUpNobody();
    void aSlowStepOfAClosingHoldsUpNobody_data();
    void aSlowStepOfAClosingHoldsUpNobody();
    void aDeviceThatIsReplacedWhileItOpensIsFoundAllTheSame();
    void manyMessagesDuringALookAreTwoLooksMore();
    void aFileThatBeginsToLoadDuringALookKeepsItsDeviceObject();
    void theProgramEndsWithoutWaitingForASlowDevice();
    void aLookBehindAnotherIsStillTheProgramsAtItsEnd();
    void whatWasOpenedBehindTheEndIsClosedAgain();
};

void TstSlowOpening::aSlowStepOfAnOpeningHoldsUpNobody_data()
{
    QTest::addColumn<Step>("step");
    QTest::newRow("the list of devices") << Step::List;
    QTest::newRow("opening") << Step::Open;
    QTest::newRow("claiming") << Step::Claim;
    QTest::newRow("the device descriptor") << Step::Descriptor;
    QTest::newRow("the end points") << Step::EndPoints;
    QTest::newRow("the setting") << Step::Setting;
}

void TstSlowOpening::aSlowStepOfAnOpeningHoldsUpNobody()
{
    QFETCH(Step, step);
    SlowDesk desk;
    desk.platform->hold(step);
    desk.bus.plug();
    QVERIFY(desk.reach());
    QVERIFY(desk.session->bringUp().isWorking());
    QVERIFY(desk.states.isEmpty() && !desk.session->transport().isOpen());
    desk.platform->letGo();
    QTRY_VERIFY(desk.states.contains(6));
    QCOMPARE(desk.states.first(), 2);
    QVERIFY(gDev->connected);
    QVERIFY(!desk.platform->onMain);
}

void TstSlowOpening::aSlowStepOfAClosingHoldsUpNobody_data()
{
    QTest::addColumn<Step>("step");
    QTest::newRow("releasing the interface") << Step::Free;
    QTest::newRow("closing") << Step::Close;
}

void TstSlowOpening::aSlowStepOfAClosingHoldsUpNobody()
{
    QFETCH(Step, step);
    SlowDesk desk;
    QVERIFY(desk.connect());
    desk.platform->hold(step);
    desk.bus.unplug();
    QVERIFY(desk.reach());
    QTRY_COMPARE(desk.states.last(), 7); // it has been told before the system is through
    QVERIFY(!desk.session->transport().isOpen() && !gDev->connected);
    desk.bus.plug();
    desk.platform->letGo();
    QTRY_COMPARE(desk.states.count(6), 2);
    QVERIFY(!desk.platform->onMain);
}

void TstSlowOpening::aDeviceThatIsReplacedWhileItOpensIsFoundAllTheSame()
{
    SlowDesk desk;
    desk.platform->hold(Step::Setting);
    desk.bus.plug(0);
    QVERIFY(desk.reach());
    desk.bus.unplug(0);
    desk.bus.plug(1);
    desk.platform->letGo();
    QTRY_VERIFY(desk.states.contains(6));
    QVERIFY(gDev->connected);
}

void TstSlowOpening::manyMessagesDuringALookAreTwoLooksMore()
{
    SlowDesk desk;
    desk.platform->hold(Step::List);
    desk.session->lookForDevice();
    QVERIFY(desk.reach());
    for (int i = 0; i < 100; ++i) {
        desk.session->lookForDevice();
    }
    desk.platform->letGo();
    QTRY_VERIFY(!desk.session->bringUp().isWorking());
    QCOMPARE(desk.platform->lists.load(), 3);
}

void TstSlowOpening::aFileThatBeginsToLoadDuringALookKeepsItsDeviceObject()
{
    SlowDesk desk;
    desk.platform->hold(Step::Open);
    desk.bus.plug();
    QVERIFY(desk.reach());
    {
        const Session::FileJob job(*desk.session);
        desk.platform->letGo();
        QTest::qWait(10); // an answer that did not wait would be here
        QVERIFY(desk.states.isEmpty() && !desk.session->transport().isOpen());
        QCOMPARE(gDev->model, 0);
    }
    QTRY_VERIFY(desk.states.contains(6));
    QCOMPARE(gDev->model, 8);
}

void TstSlowOpening::theProgramEndsWithoutWaitingForASlowDevice()
{
    SlowDesk desk;
    desk.platform->hold(Step::Claim);
    desk.bus.plug();
    QVERIFY(desk.reach());
    constexpr std::chrono::milliseconds most(20);
    QVERIFY(!desk.session->end(most)); // returns, though somebody is still at work
    desk.platform->letGo();
    QVERIFY(desk.session->end(std::chrono::milliseconds(longWait)));
    QTest::qWait(10);
    QVERIFY(desk.states.isEmpty()); // it has ended: nobody is told
}

void TstSlowOpening::aLookBehindAnotherIsStillTheProgramsAtItsEnd()
{
    SlowDesk desk;
    desk.platform->hold(Step::List);
    desk.session->lookForDevice();
    QVERIFY(desk.reach());
    desk.session->lookForDevice();
    desk.platform->hold(Step::List);
    desk.platform->letGo();
    QVERIFY(desk.reach());
    constexpr std::chrono::milliseconds most(20);
    QVERIFY(!desk.session->end(most)); // whatever the thread of the first look still has to do
    desk.platform->letGo();
    QVERIFY(desk.session->end(std::chrono::milliseconds(longWait)));
}

void TstSlowOpening::whatWasOpenedBehindTheEndIsClosedAgain()
{
    EmulatedBus bus(20.0);
    emulator::InstrumentOptions options;
    options.model = 8;
    options.firmwareInside = true;
    bus.add(options);
    auto platform = std::make_unique<SlowPlatform>(bus);
    SlowPlatform &slow = *platform;
    UsbTransport transport(std::move(platform));
    {
        DevInit init(transport);
        slow.hold(Step::Setting);
        bus.plug();
        QTRY_VERIFY(bus.with([](emulator::Instrument &i) { return i.attached(); }));
        init.slotDevChange();
        QVERIFY(QTest::qWaitFor([&slow] { return slow.isReached(); }, longWait));
        std::thread later([&slow] { slow.letGo(); });
        init.stop();
        later.join();
    }
    QVERIFY(slow.allFreed());
    QVERIFY(!transport.isOpen());
}

QTEST_GUILESS_MAIN(TstSlowOpening)
#include "tst_SlowOpening.moc"
