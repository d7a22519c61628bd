// An instrument that falls silent, at each of its requests: the main thread never waits for it.

#include "acquisition/SmpState.h"
#include "device/DevBase.h"
#include "device/DevControlUsb.h"
#include "device/DevInit.h"
#include "device/DevRequests.h"
#include "device/DeviceGlobals.h"
#include "platform/UsbPlatformEmulated.h"
#include "session/Session.h"
#include "settings/Config.h"
#include "store/MemBudget.h"

#include <QElapsedTimer>
#include <QTimer>
#include <QtTest>

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

namespace {

constexpr int longWait = 30000; // ms: never waited for when all is well
/// Of a request, ms: far longer than a busy machine may hold up a thread that waits for nobody.
constexpr int timeOutMs = 20000;

/// The beats of the main thread's event loop, and the longest time between two.
class Heart : public QObject {
public:
    Heart()
    {
        m_clock.start();
        connect(&m_timer, &QTimer::timeout, this, [this] {
            longestMs = std::max(longestMs, double(m_clock.nsecsElapsed()) * 1e-6);
            m_clock.restart();
            beats.fetch_add(1, std::memory_order_release);
        });
        m_timer.start(1);
    }
    std::atomic<int> beats{0};
    double longestMs = 0;

private:
    QTimer m_timer;
    QElapsedTimer m_clock;
};

/// A bus whose devices answer no request any more from one of them on. Such a request runs into its time limit, or, so
/// that nobody has to wait that long, ends when the main thread has shown that it does not wait for it.
class SilentPlatform final : public UsbPlatformEmulated {
public:
    SilentPlatform(EmulatedBus &bus, Heart &heart) : UsbPlatformEmulated(bus), m_heart(heart) {}

    UsbResult controlTransfer(UsbInterface iface, const UsbSetup &setup, std::uint8_t *data,
                              std::uint32_t &moved) override
    {
        constexpr int vendor = 0x40; // of the type: what is asked when it is opened is the system's matter
        if ((setup.requestType & vendor) == 0) {
            return UsbPlatformEmulated::controlTransfer(iface, setup, data, moved);
        }
        if (setup.request == heldRequest) {
            isHeld = true;
            while (!released) {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
        }
        const int number = requests.fetch_add(1, std::memory_order_acq_rel);
        if (number < silentFrom.load(std::memory_order_acquire)) {
            return UsbPlatformEmulated::controlTransfer(iface, setup, data, moved);
        }
        moved = 0;
        silenced.fetch_add(1, std::memory_order_acq_rel);
        constexpr int enoughBeats = 3;
        const int until = m_heart.beats.load(std::memory_order_acquire) + enoughBeats;
        for (int ms = 0; ms < timeOutMs && !released && m_heart.beats.load(std::memory_order_acquire) < until; ++ms) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return {UsbError::TimedOut};
    }

    UsbResult queueRead(UsbInterface iface, std::uint8_t pipe, std::uint8_t *buffer, std::uint32_t size,
                        UsbReadSlot &slot) override
    {
        ++reads;
        return UsbPlatformEmulated::queueRead(iface, pipe, buffer, size, slot);
    }

    std::atomic<int> heldRequest{-1}; ///< answered only when all is released
    std::atomic<bool> isHeld{false};
    std::atomic<int> reads{0};
    std::atomic<int> requests{0};
    std::atomic<int> silentFrom{1 << 30};
    std::atomic<int> silenced{0};
    std::atomic<bool> released{false}; ///< the program ends: nobody beats any more

private:
    Heart &m_heart;
};

/// A session over an instrument of `model`, through all that it is asked and told.
class Life {
public:
    Life(int model, int silentFrom)
    {
        QFile::remove(configPath());
        configLoad();
        memBudget = std::int64_t(1) << 30;
        emulator::InstrumentOptions options;
        options.model = model;
        options.firmwareInside = true;
        m_bus.add(options);
        auto made = std::make_unique<SilentPlatform>(m_bus, heart);
        platform = made.get();
        platform->silentFrom = silentFrom;
        m_session = std::make_unique<Session>(std::move(made), 0);
        m_session->control().sleep = [](int) {};
        m_session->bringUp().skipPause = [](int) { return true; };
        QObject::connect(m_session.get(), &Session::sigInitSta, [this](int sta, int err, int) {
            isUp = isUp || sta == 6;
            initError = initError == 0 && err != 0 ? sta * 256 + err : initError;
            endOfBringUp = sta == 6 && err == 0 ? platform->requests.load() : endOfBringUp;
        });
        (void)m_session->watchDevices();
    }
    ~Life()
    {
        platform->released = true;
        m_session.reset();
    }
    Life(const Life &) = delete;
    Life &operator=(const Life &) = delete;

    /// Everything that a user does with it, until it is switched off. @return false when it does not come to an end
    [[nodiscard]] bool run()
    {
        m_bus.plug();
        if (!QTest::qWaitFor([this] { return (isUp || initError != 0) && !m_session->bringUp().isWorking(); },
                             longWait)) {
            return false;
        }
        connected = gDev->connected;
        if (!connected) {
            return true;
        }
        (void)m_session->replaceConfig();
        gDev->setVth(1.0, 1);
        gDev->setPwm(0, 2000, 25);
        constexpr int risingEdge = 3; // which does not come
        gDev->setChnTrig(5, risingEdge);
        (void)m_session->startCapture();
        const bool waits =
            QTest::qWaitFor([] { return !gDev->isCapturing() || gDev->smpSta.load() == smpState::waiting; }, longWait);
        m_session->stopCapture();
        const bool ends = QTest::qWaitFor([] { return !gDev->isCapturing(); }, longWait);
        gDev->shutDown();
        bool isThrough = false;
        gDev->request([](DevControl &) { return 0; }, [&isThrough](int) { isThrough = true; });
        return waits && ends && QTest::qWaitFor([&isThrough] { return isThrough; }, longWait);
    }

    /// Brings the instrument up and starts a capture; then it falls silent, and a thread of the capture waits for it.
    [[nodiscard]] bool fallSilent()
    {
        m_bus.plug();
        if (!QTest::qWaitFor([this] { return isUp && !m_session->bringUp().isWorking(); }, longWait)) {
            return false;
        }
        constexpr int risingEdge = 3; // which does not come
        gDev->setChnTrig(5, risingEdge);
        (void)m_session->startCapture();
        if (!QTest::qWaitFor([] { return gDev->smpSta.load() == smpState::waiting; }, longWait)) {
            return false;
        }
        platform->silentFrom = 0;
        for (int ms = 0; ms < longWait && platform->silenced == 0; ++ms) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1)); // no beat: it waits as long as it can
        }
        return platform->silenced > 0;
    }
    /// Brings the instrument up and starts a capture, of which a thread waits for the answer to `request`.
    [[nodiscard]] bool captureUntil(std::uint8_t request)
    {
        m_bus.plug();
        if (!QTest::qWaitFor([this] { return isUp && !m_session->bringUp().isWorking(); }, longWait)) {
            return false;
        }
        platform->heldRequest = request;
        (void)m_session->startCapture();
        return QTest::qWaitFor([this] { return platform->isHeld.load(); }, longWait);
    }
    [[nodiscard]] Session &session() const { return *m_session; }

    Heart heart;
    SilentPlatform *platform = nullptr;
    bool isUp = false;
    bool connected = false;
    int initError = 0;
    int endOfBringUp = 0; ///< requests until then

private:
    EmulatedBus m_bus{20.0};
    std::unique_ptr<Session> m_session;
};

} // namespace

class TstSilentInstrument : public QObject {
    Q_OBJECT
private slots:
    void theMainThreadNeverWaitsForASilentInstrument_data();
    void theMainThreadNeverWaitsForASilentInstrument();
    void aDeviceIsReplacedWithoutWaitingForItsCapture();
    void aDeviceThatIsLeftBeforeItsReadBackReadsNothing();
    void theProgramEndsWithoutWaitingForItsCapture();
    void aProgramWithoutACaptureEndsAtOnce();
};

void TstSilentInstrument::theMainThreadNeverWaitsForASilentInstrument_data()
{
    QTest::addColumn<int>("model");
    for (const int model : {1, 2, 3, 4, 5, 6, 7, 8, 9, 65, 97}) {
        QTest::addRow("model %d", model) << model;
    }
}

void TstSilentInstrument::theMainThreadNeverWaitsForASilentInstrument()
{
    QFETCH(int, model);
    int requests = 0;
    int bringUp = 0;
    {
        Life sound(model, 1 << 30);
        QVERIFY(sound.run());
        QVERIFY(sound.connected);
        QCOMPARE(sound.initError, 0);
        requests = sound.platform->requests;
        bringUp = sound.endOfBringUp;
        QVERIFY(bringUp > 10 && requests > bringUp + 15);
    }
    double longest = 0;
    for (int k = 0; k < requests; ++k) {
        Life life(model, k);
        QVERIFY2(life.run(), qPrintable(QStringLiteral("request %1 of %2").arg(k).arg(requests)));
        if (k < bringUp) {
            // Such a bring-up has failed, at its first time-out; an instrument without a version is one all the same.
            QVERIFY2(!life.connected && life.initError != 0, qPrintable(QString::number(k)));
            QVERIFY(life.platform->silenced <= 2);
        }
        longest = std::max(longest, life.heart.longestMs);
        // A request on the main thread would take it for the whole time limit.
        QVERIFY2(life.heart.longestMs < timeOutMs / 2, qPrintable(QStringLiteral("request %1").arg(k)));
    }
    qInfo("model %d: %d requests, longest gap of the event loop %.1f ms", model, requests, longest);
}

void TstSilentInstrument::aDeviceIsReplacedWithoutWaitingForItsCapture()
{
    Life life(8, 1 << 30); // its capture asks for the state again and again
    QVERIFY(life.fallSilent());
    QElapsedTimer clock;
    clock.start();
    QVERIFY(life.session().chooseModel(5));
    QVERIFY(clock.elapsed() < timeOutMs / 2);
    QCOMPARE(gDev->model, 5);
    QVERIFY(!life.session().mayStartCapture());
    QTRY_VERIFY(life.session().mayStartCapture()); // once the request has had its time
    QVERIFY(life.session().startCapture());
}

void TstSilentInstrument::aDeviceThatIsLeftBeforeItsReadBackReadsNothing()
{
    Life life(8, 1 << 30);
    QVERIFY(life.captureUntil(devRequest::bulkStart));
    QVERIFY(life.session().chooseModel(5)); // which receives from now on
    QVERIFY(!life.session().mayStartCapture());
    life.platform->released = true;
    QTRY_VERIFY(life.session().mayStartCapture());
    QCOMPARE(life.platform->reads.load(), 0);
    QCOMPARE(gDev->smpBufs.count(), 0);
}

void TstSilentInstrument::theProgramEndsWithoutWaitingForItsCapture()
{
    Life life(8, 1 << 30);
    QVERIFY(life.fallSilent());
    QElapsedTimer clock;
    clock.start();
    constexpr std::chrono::milliseconds most(100);
    QVERIFY(!life.session().end(most));
    QVERIFY(clock.elapsed() < timeOutMs / 2);
}

void TstSilentInstrument::aProgramWithoutACaptureEndsAtOnce()
{
    Life life(8, 1 << 30);
    QVERIFY(life.session().end(std::chrono::milliseconds(longWait)));
    QCOMPARE(life.platform->silenced.load(), 0);
}

QTEST_GUILESS_MAIN(TstSilentInstrument)
#include "tst_SilentInstrument.moc"
