// Captures whose requests go wrong, each in turn, over the bus in the process.

#include "device/DeviceGlobals.h"
#include "emulator/CaptureFaults.h"
#include "platform/UsbPlatformEmulated.h"

#include <QThread>

#include <atomic>
#include <functional>

using emulator::Fault;
using emulator::FaultAction;
using emulator::Instrument;

namespace {

/// A platform that lets a test act between two requests, on the thread that made them.
class WatchedPlatform final : public UsbPlatformEmulated {
public:
    using UsbPlatformEmulated::UsbPlatformEmulated;

    /// Calls `act` when `count` requests from now on have been answered. While no capture runs.
    void after(std::size_t count, std::function<void()> act)
    {
        m_act = std::move(act);
        m_left = int(count);
    }
    UsbResult controlTransfer(UsbInterface iface, const UsbSetup &setup, std::uint8_t *data,
                              std::uint32_t &moved) override
    {
        constexpr std::uint8_t vendor = 0x40;
        const UsbResult result = UsbPlatformEmulated::controlTransfer(iface, setup, data, moved);
        if ((setup.requestType & 0x60) == vendor && --m_left == 0) {
            m_act();
        }
        return result;
    }

private:
    std::atomic<int> m_left{0};
    std::function<void()> m_act;
};

class WatchedRoad final : public InstrumentRoad {
public:
    explicit WatchedRoad(WatchedPlatform *&platform) : m_platform(platform) {}
    InstrumentBus &bus() override { return m_bus; }
    std::unique_ptr<UsbPlatform> makePlatform() override
    {
        auto made = std::make_unique<WatchedPlatform>(m_bus);
        m_platform = made.get();
        return made;
    }

private:
    EmulatedBus m_bus;
    WatchedPlatform *&m_platform;
};

/// A desk whose platform is watched.
struct WatchedDesk {
    explicit WatchedDesk(int model) : faults(std::make_unique<WatchedRoad>(platform), model) {}
    WatchedPlatform *platform = nullptr;
    CaptureFaultDesk faults;
};

/// One model for each kind of capture.
void addKinds()
{
    QTest::addColumn<int>("model");
    QTest::newRow("storage") << 8;
    QTest::newRow("streaming") << 5;
}

/// The error of a capture whose device has gone before request `number`, and is known to have.
int errorWhenGone(const CaptureFaultDesk &faults, std::size_t number)
{
    constexpr int notOpen = 1;
    if (!faults.streams()) {
        return notOpen;
    }
    // A stream's reads are queued before it is started, and before it is stopped all have come.
    const auto &requests = faults.requests();
    const auto begin = std::find_if(requests.begin(), requests.end(),
                                    [](const auto &entry) { return emulator::requests::run.matches(entry.setup); });
    const auto end = std::find_if(begin + 1, requests.end(),
                                  [](const auto &entry) { return emulator::requests::run.matches(entry.setup); });
    if (number <= std::size_t(begin - requests.begin())) {
        return notOpen;
    }
    return number <= std::size_t(end - requests.begin()) ? CaptureFaultDesk::readFailed : 0;
}

} // namespace

class TstCaptureRequestFaults : public QObject {
    Q_OBJECT
private slots:
    void everyModelOfAKindAsksTheSame();
    void everyRequestThatGoesWrongIsToldAndTheNextCaptureWorks_data();
    void everyRequestThatGoesWrongIsToldAndTheNextCaptureWorks();
    void aPlugPulledAtAnyRequestIsToldAndTheNextAttachWorks_data();
    void aPlugPulledAtAnyRequestIsToldAndTheNextAttachWorks();
    void aDeviceThatIsFoundGoneBeforeAnyRequestIsToldAndTheNextAttachWorks_data();
    void aDeviceThatIsFoundGoneBeforeAnyRequestIsToldAndTheNextAttachWorks();
    void aStopWhoseRequestsGoWrongEndsTheCaptureAllTheSame_data();
    void aStopWhoseRequestsGoWrongEndsTheCaptureAllTheSame();
    void aStreamThatGoesOnBehindItsEndIsBrokenOff();
    void aStopWhileTheMemoryIsReadKeepsWhatHasComeAndIsNoError();
    void aRingOutsideItsMemoryIsToldAndTheNextCaptureWorks_data();
    void aRingOutsideItsMemoryIsToldAndTheNextCaptureWorks();
};

void TstCaptureRequestFaults::everyModelOfAKindAsksTheSame()
{
    const auto requestsOf = [](int model) {
        QVector<std::tuple<int, int, int>> asked;
        const WatchedDesk watched(model);
        for (const auto &entry : watched.faults.requests()) {
            asked.append({entry.setup.requestType, entry.setup.request, entry.setup.value});
        }
        return asked;
    };
    const auto storage = requestsOf(8);
    QVERIFY(storage.size() > 6);
    QVERIFY(requestsOf(9) == storage);
    QVERIFY(requestsOf(97) == storage);
    const auto streaming = requestsOf(5);
    QCOMPARE(streaming.size(), 7);
    QVERIFY(requestsOf(1) == streaming);
}

void TstCaptureRequestFaults::everyRequestThatGoesWrongIsToldAndTheNextCaptureWorks_data()
{
    QTest::addColumn<int>("model");
    QTest::addColumn<Wrong>("wrong");
    for (const int model : {8, 5}) {
        QTest::addRow("%s, stalled", model == 8 ? "storage" : "streaming") << model << Wrong::Stalled;
        QTest::addRow("%s, failed", model == 8 ? "storage" : "streaming") << model << Wrong::Failed;
        QTest::addRow("%s, a byte short", model == 8 ? "storage" : "streaming") << model << Wrong::Short;
        QTest::addRow("%s, nothing moved", model == 8 ? "storage" : "streaming") << model << Wrong::Nothing;
    }
}

void TstCaptureRequestFaults::everyRequestThatGoesWrongIsToldAndTheNextCaptureWorks()
{
    QFETCH(int, model);
    QFETCH(Wrong, wrong);
    WatchedDesk watched(model);
    CaptureFaultDesk &faults = watched.faults;
    QVERIFY(faults.isGood());
    for (std::size_t k = 0; k < faults.requests().size(); ++k) {
        const std::size_t length = faults.requests().at(k).length;
        const bool isCut = wrong == Wrong::Short || wrong == Wrong::Nothing;
        if ((isCut && length == 0) || (wrong == Wrong::Short && length == 1)) {
            continue; // what has no data cannot be short
        }
        const QByteArray place = placeOf("request", k);
        QVERIFY2(faults.captureWithRequest(k, wrong), place);
        QVERIFY2(faults.desk->lastError() == faults.errorOf(k), place);
        QVERIFY2(faults.leavesNothing(), place);
        QCOMPARE(faults.desk->published, faults.errorOf(k) == 0 ? 1 : 0);
        QCOMPARE(faults.soundCapture(), QString());
    }
    QCOMPARE(faults.soundCaptureAfterReplug(), QString());
    QVERIFY(faults.leavesNothing());
}

void TstCaptureRequestFaults::aPlugPulledAtAnyRequestIsToldAndTheNextAttachWorks_data()
{
    addKinds();
}

void TstCaptureRequestFaults::aPlugPulledAtAnyRequestIsToldAndTheNextAttachWorks()
{
    QFETCH(int, model);
    WatchedDesk watched(model);
    CaptureFaultDesk &faults = watched.faults;
    QVERIFY(faults.isGood());
    for (std::size_t k = 0; k < faults.requests().size(); ++k) {
        const QByteArray place = placeOf("request", k);
        QVERIFY2(faults.captureWithRequest(k, Wrong::Unplugged), place);
        const int error = faults.desk->lastError();
        const bool isLast = faults.streams() && k + 2 >= faults.requests().size();
        if (isLast) {
            QVERIFY2(error == 0, place); // all had come
        } else if (faults.errorOf(k) != 0) {
            QVERIFY2(error == faults.errorOf(k), place);
        } else {
            // What follows fails, or finds the device gone, whichever is first.
            QVERIFY2(error == 1 || error == (faults.streams() ? 3 : 2), place);
        }
        QVERIFY2(faults.leavesNothing(), place);
        QCOMPARE(faults.soundCaptureAfterReplug(), QString());
    }
    QVERIFY(faults.leavesNothing());
}

void TstCaptureRequestFaults::aDeviceThatIsFoundGoneBeforeAnyRequestIsToldAndTheNextAttachWorks_data()
{
    addKinds();
}

void TstCaptureRequestFaults::aDeviceThatIsFoundGoneBeforeAnyRequestIsToldAndTheNextAttachWorks()
{
    QFETCH(int, model);
    WatchedDesk watched(model);
    CaptureFaultDesk &faults = watched.faults;
    QVERIFY(faults.isGood());
    const auto findGone = [&faults] {
        faults.bus().unplug();
        DevInit &init = *faults.desk->init;
        QMetaObject::invokeMethod(&init, &DevInit::slotDevChange, Qt::QueuedConnection);
        while (faults.desk->transport->isOpen()) {
            QThread::msleep(1); // the request was made on a thread of the program's: the main one looks meanwhile
        }
    };
    for (std::size_t k = 1; k <= faults.requests().size(); ++k) {
        const QByteArray place = placeOf("after request", k - 1);
        watched.platform->after(k, findGone);
        QVERIFY2(faults.captureWith([](Instrument &) {}), place);
        QVERIFY2(faults.desk->lastError() == errorWhenGone(faults, k), place);
        QVERIFY2(faults.leavesNothing(), place);
        QVERIFY2(!faults.desk->transport->isOpen() && !gDev->connected, place);
        QCOMPARE(faults.soundCaptureAfterReplug(), QString());
    }
    QVERIFY(faults.leavesNothing());
}

void TstCaptureRequestFaults::aStopWhoseRequestsGoWrongEndsTheCaptureAllTheSame_data()
{
    QTest::addColumn<int>("model");
    QTest::addColumn<bool>("stopsRun");
    QTest::addColumn<bool>("stopsBulk");
    QTest::addColumn<bool>("unplugs");
    for (const int model : {8, 5}) {
        const char *const kind = model == 8 ? "storage" : "streaming";
        QTest::addRow("%s, neither", kind) << model << true << true << false;
        QTest::addRow("%s, the run goes on", kind) << model << false << true << false;
        QTest::addRow("%s, the bulk pipe goes on", kind) << model << true << false << false;
        QTest::addRow("%s, both go on", kind) << model << false << false << false;
        QTest::addRow("%s, the plug is pulled", kind) << model << false << false << true;
    }
}

void TstCaptureRequestFaults::aStopWhoseRequestsGoWrongEndsTheCaptureAllTheSame()
{
    QFETCH(int, model);
    QFETCH(bool, stopsRun);
    QFETCH(bool, stopsBulk);
    QFETCH(bool, unplugs);
    WatchedDesk watched(model);
    CaptureFaultDesk &faults = watched.faults;
    QVERIFY(faults.isGood());
    constexpr int highLevel = 2;
    constexpr int waiting = 2;
    gDev->setChnTrig(0, highLevel);
    faults.start([](Instrument &instrument) { instrument.setSignal(nullptr); }); // all low: waiting costs nothing
    QTRY_VERIFY(faults.desk->has(waiting));
    faults.bus().with([&](Instrument &instrument) {
        const Fault fault{unplugs ? FaultAction::Unplug : FaultAction::Stall};
        instrument.faults().clear();
        if (!stopsRun || unplugs) {
            instrument.faults().atRequest(emulator::requests::run, 0, fault);
        }
        if (!stopsBulk && !unplugs) {
            instrument.faults().atRequest(emulator::requests::bulkStop, 0, fault);
        }
    });
    gDev->stopCapture();
    QVERIFY(faults.desk->awaitEnd());
    QCOMPARE(faults.desk->lastError() != 0, unplugs && !faults.streams()); // the memory went with the plug
    QVERIFY(faults.leavesNothing());
    gDev->setChnTrig(0, 0);
    faults.bus().with([&faults](Instrument &instrument) { instrument.setSignal(faults.signal); });
    // A stream that has heard neither is still under way.
    const bool goesOn = !stopsRun && !stopsBulk && faults.streams();
    QCOMPARE(unplugs || goesOn ? faults.soundCaptureAfterReplug() : faults.soundCapture(), QString());
    QVERIFY(faults.leavesNothing());
}

void TstCaptureRequestFaults::aStreamThatGoesOnBehindItsEndIsBrokenOff()
{
    WatchedDesk watched(5);
    CaptureFaultDesk &faults = watched.faults;
    QVERIFY(faults.isGood());
    // Each is asked for the second time at the end of the capture.
    QVERIFY(faults.captureWith([](Instrument &instrument) {
        instrument.faults().atRequest(emulator::requests::run, 1, {FaultAction::Stall});
        instrument.faults().atRequest(emulator::requests::bulkStop, 1, {FaultAction::Stall});
    }));
    QCOMPARE(faults.desk->lastError(), 0);
    QTRY_COMPARE(faults.desk->published, 1);
    QVERIFY(faults.leavesNothing());
    QVERIFY(!faults.bus().with([](Instrument &instrument) { return instrument.running(); }));
    QCOMPARE(faults.soundCapture(), QString());
}

void TstCaptureRequestFaults::aRingOutsideItsMemoryIsToldAndTheNextCaptureWorks_data()
{
    QTest::addColumn<int>("model");
    QTest::addColumn<quint32>("records");
    QTest::addColumn<quint32>("end");
    QTest::newRow("end behind the memory") << 8 << 1000U << 0x10000001U;
    QTest::newRow("end at the largest address") << 8 << 1000U << 0xFFFFFFFFU;
    QTest::newRow("more records than fit") << 8 << 0x10000000U / 16 * 5 + 5 << 0U;
    QTest::newRow("the most records") << 8 << 0xFFFFFFFFU << 0U;
    QTest::newRow("32 channels, end behind the memory") << 9 << 1000U << 0x20000001U;
    QTest::newRow("32 channels, the most records") << 9 << 0xFFFFFFFFU << 0U;
    QTest::newRow("mixed signals, end behind the memory") << 97 << 0U << 32769U;
}

void TstCaptureRequestFaults::aRingOutsideItsMemoryIsToldAndTheNextCaptureWorks()
{
    QFETCH(int, model);
    QFETCH(quint32, records);
    QFETCH(quint32, end);
    WatchedDesk watched(model);
    CaptureFaultDesk &faults = watched.faults;
    QVERIFY(faults.isGood());
    constexpr int failed = 2; // such an answer is as good as none
    QVERIFY(faults.captureWith([&](Instrument &i) { i.faults().setCaptureInfo(records, 0, end); }));
    QCOMPARE(faults.desk->lastError(), failed);
    QVERIFY(faults.leavesNothing());
    QCOMPARE(faults.desk->published, 0);
    QCOMPARE(faults.soundCapture(), QString());
}

void TstCaptureRequestFaults::aStopWhileTheMemoryIsReadKeepsWhatHasComeAndIsNoError()
{
    WatchedDesk watched(8);
    CaptureFaultDesk &faults = watched.faults;
    QVERIFY(faults.isGood());
    constexpr std::uint64_t pauseAt = CaptureFaultDesk::readSize * 5 / 2;
    constexpr std::uint64_t longer = 3600 * emulator::nanosecondsPerSecond;
    faults.start([](Instrument &instrument) { instrument.faults().atInByte(pauseAt, {FaultAction::Delay, longer}); });
    QTRY_VERIFY(gDev->smpSta == 4 &&
                faults.bus().with([](Instrument &instrument) { return instrument.inBytes() >= pauseAt; }));
    gDev->stopCapture();
    QVERIFY(faults.desk->awaitEnd());
    QCOMPARE(faults.desk->lastError(), 0);
    QTRY_COMPARE(faults.desk->published, 1);
    QVERIFY(gDev->smpData->smpCount() > 0 && gDev->smpData->smpCount() < gDev->smpDepth());
    QVERIFY(faults.leavesNothing());
    QCOMPARE(faults.soundCapture(), QString());
}

QTEST_GUILESS_MAIN(TstCaptureRequestFaults)
#include "tst_CaptureRequestFaults.moc"
