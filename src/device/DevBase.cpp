#include "device/DevBase.h"

#include "acquisition/SmpState.h"
#include "acquisition/SmpTransport.h"
#include "device/DevConnection.h"
#include "device/RequestQueue.h"
#include "settings/Config.h"

#include <QTimer>

#include <algorithm>
#include <cmath>
#include <utility>

SimulationSource *gSimulationSource = nullptr;

namespace {

constexpr int identityNameSize = 6;
constexpr double defaultVth = 1.65; // volts
constexpr int vthGroup = 16;        // channels that share a threshold
constexpr int streaming = 1;        // transferMode

} // namespace

DevBase::DevBase() : devUid(DevControl::uidSize, '\0')
{
    smpDepths = {20000,     200000,    1000000,   2000000,    5000000,    10000000,   20000000,   50000000,
                 100000000, 200000000, 500000000, 1000000000, 2000000000, 5000000000, 10000000000};
    resetPwm();
}

DevBase::~DevBase()
{
    // The threads write the store and emit through this object: they go first.
    endCapture();
    if (SmpTransport *transport = devControl().transport(); transport != nullptr) {
        transport->setCallback(nullptr); // a capture of another device object sets its own
    }
    if (smpData) {
        smpData->clear();
    }
}

void DevBase::startCapture()
{
    if (!smpData || isCapturing()) {
        return;
    }
    emit sigCaptureStarts();
    smpStop.store(false, std::memory_order_release);
    smpAbort.store(false, std::memory_order_release);
    smpCut.store(false, std::memory_order_release);
    if (connected) {
        startHardware();
        return;
    }
    smpData->open(); // here, so that nobody reads the last capture between now and the thread's start
    SimulationSettings settings;
    settings.frequency = smpFrequ();
    settings.depth = smpDepth();
    settings.enable.assign(chnEnable.cbegin(), chnEnable.cend());
    thrSimulate.startRun(settings, gSimulationSource);
}

bool DevBase::isCapturing() const
{
    return thrSimulate.isBusy() || smpBusy.load(std::memory_order_acquire);
}

void DevBase::receiveBulk()
{
    SmpTransport *transport = devControl().transport();
    if (transport == nullptr) {
        return;
    }
    if (transferMode == streaming) {
        transport->setCallback(&thrCtrlTransfer);
    } else {
        transport->setCallback(&thrCtrlStorage);
    }
}

SmpRunSettings DevBase::runSettings() const
{
    constexpr int byteModel = 1; // sends one byte a sample
    SmpRunSettings settings;
    settings.bytes8 = model == byteModel;
    settings.frequency = smpFrequ();
    settings.depth = smpDepth();
    settings.preTrig = preTrigSamples();
    settings.trgPosition = trgPosition;
    settings.memSize = memSize;
    settings.enable.assign(chnEnable.cbegin(), chnEnable.cend());
    settings.trig.assign(chnTrig.cbegin(), chnTrig.cend());
    return settings;
}

void DevBase::startHardware()
{
    if (devControl().transport() == nullptr) {
        report(smpState::starting, SmpDevice::notOpen, 0);
        return;
    }
    // Where the last capture failed may not be taken for the read-back of this one by a stop that comes at once.
    smpSta.store(smpState::starting, std::memory_order_release);
    smpBusy.store(true, std::memory_order_release);
    m_setsUp = true;
    m_stopWanted = false;
    const auto setUp = [config = smpConfig()](DevControl &control) { return control.sendSmpConfig(config); };
    request(setUp, [this, capture = ++m_captures, settings = runSettings()](int error) {
        beginRun(capture, settings, error);
    });
}

void DevBase::beginRun(std::uint32_t capture, const SmpRunSettings &settings, int error)
{
    if (capture != m_captures || !m_setsUp) {
        return; // it has been ended meanwhile
    }
    m_setsUp = false;
    DevControl &control = devControl();
    SmpTransport *transport = control.transport();
    if (error != 0 || m_stopWanted || transport == nullptr) {
        smpBusy.store(false, std::memory_order_release);
        // An instrument that is set up otherwise would capture something else. One that was stopped has done nothing.
        report(error != 0 ? smpState::starting : smpState::done, error, 0);
        return;
    }
    receiveBulk();
    if (transferMode == streaming) {
        thrCtrlTransfer.startRun(settings, control, *transport);
    } else {
        thrCtrlStorage.startRun(settings, control, *transport);
    }
}

void DevBase::setStop()
{
    smpStop.store(true, std::memory_order_release);
    thrSimulate.wake();
    wake();
}

void DevBase::stopCapture()
{
    if (m_setsUp) {
        m_stopWanted = true;
        return;
    }
    if (!connected || !smpBusy.load(std::memory_order_acquire)) {
        setStop();
        return;
    }
    const auto stopDevice = [](DevControl &control) { return control.stopDevice(); };
    const std::uint32_t capture = m_captures;
    // A stream goes on until the instrument stops, and whatever comes meanwhile is known to be the end. Memory may only
    // be read back once the instrument has stopped.
    if (transferMode == streaming) {
        setStop();
        request(stopDevice, [this, capture](int) { breakOffSilentStream(capture); });
        return;
    }
    cutReadBack();
    request(stopDevice, [this, capture](int) {
        if (capture == m_captures) {
            setStop();
        }
    });
}

/// Ends the read-back that is under way, if one is. What is not read yet is lost, as the user wants it.
void DevBase::cutReadBack()
{
    SmpTransport *transport = devControl().transport();
    if (smpSta.load(std::memory_order_acquire) == smpState::reading && transport != nullptr) {
        smpCut.store(true, std::memory_order_release);
        transport->breakOffStream();
    }
}

/// Gives a stream that was stopped the time to bring its end; a device that falls silent is not waited for.
void DevBase::breakOffSilentStream(std::uint32_t capture)
{
    constexpr int graceMs = 200;
    QTimer::singleShot(graceMs, this, [this, capture] {
        SmpTransport *transport = devControl().transport();
        if (capture == m_captures && smpBusy.load(std::memory_order_acquire) && transport != nullptr) {
            transport->breakOffStream();
        }
    });
}

void DevBase::endCapture()
{
    thrSimulate.abort.store(true, std::memory_order_release);
    thrSimulate.wake();
    thrSimulate.join();
    endHardware();
}

void DevBase::endHardware()
{
    if (std::exchange(m_setsUp, false)) {
        smpBusy.store(false, std::memory_order_release); // nothing runs yet
    }
    if (smpBusy.load(std::memory_order_acquire)) {
        smpAbort.store(true, std::memory_order_release);
        smpStop.store(true, std::memory_order_release);
        wake();
        devControl().stopDevice();
        if (SmpTransport *transport = devControl().transport(); transport != nullptr) {
            transport->breakOffStream();
        }
    }
    // A control thread starts its converter, which ends when the control thread has.
    thrCtrlTransfer.join();
    thrCnvtTransfer.join();
    thrCtrlStorage.join();
    thrCnvtStorage.join();
}

void DevBase::request(std::function<int(DevControl &)> job, std::function<void(int result)> done)
{
    if (RequestQueue *requests = devRequests(); requests != nullptr) {
        requests->post(std::move(job), this, std::move(done));
    } else {
        done(job(devControl()));
    }
}

void DevBase::tell(const DevOrder &order)
{
    if (!connected) {
        return;
    }
    if (RequestQueue *requests = devRequests(); requests != nullptr) {
        requests->postLatest(order.key(), [order](DevControl &control) { return order.send(control); });
    } else {
        order.send(devControl());
    }
}

void DevBase::tell(const std::vector<DevOrder> &orders)
{
    if (connected) {
        request([orders](DevControl &control) { return sendOrders(control, orders, [] { return true; }); }, [](int) {});
    }
}

void DevBase::setPwmEnable(bool on0, bool on1)
{
    pwmEnable = {on0, on1};
    tell(DevOrder::enablePwm(on0, on1));
}

PwmCounts DevBase::takePwm(int output, double frequ, double duty, bool hasClock)
{
    const auto index = std::size_t(output);
    // fmax and fmin, unlike clamp, turn what is no number into a limit.
    pwmFrequ[index] = std::fmin(std::fmax(frequ, 0.1), 2e7);
    pwmDuty[index] = std::fmin(std::fmax(duty, 0.0), 100.0);
    if (!hasClock) {
        return {};
    }
    const PwmCounts counts = pwmCounts(pwmClock, pwmFrequ[index], pwmDuty[index]);
    pwmFrequ[index] = counts.frequ;
    pwmDuty[index] = counts.duty;
    return counts;
}

void DevBase::setPwm(int output, double frequ, double duty)
{
    if (output >= 0 && output <= 1) {
        tell(DevOrder::setPwm(output, takePwm(output, frequ, duty, connected)));
    }
}

std::vector<DevOrder> DevBase::startOutputs(bool hasClock)
{
    const PwmCounts first = takePwm(0, 1000.0, 50.0, hasClock);
    const PwmCounts second = takePwm(1, 100000.0, 50.0, hasClock);
    pwmEnable = {true, true};
    return {DevOrder::enablePwm(false, false), DevOrder::setPwm(0, first), DevOrder::setPwm(1, second),
            DevOrder::enablePwm(true, true)};
}

void DevBase::resetPwm()
{
    tell(startOutputs(connected));
}

void DevBase::setVth(double volts, int index)
{
    if (index == 1 || index == 2) {
        tell(DevOrder::setThreshold(index, volts));
    }
}

std::vector<DevOrder> DevBase::storedThresholds() const
{
    std::vector<DevOrder> orders{DevOrder::setThreshold(1, storedVth(1))};
    if (chnEnable.size() > vthGroup) {
        orders.push_back(DevOrder::setThreshold(2, storedVth(2)));
    }
    return orders;
}

void DevBase::loadVth()
{
    tell(storedThresholds());
}

double DevBase::storedVth(int index) const
{
    const QString key = index == 2 ? QStringLiteral("chnVth2") : QStringLiteral("chnVth");
    bool isNumber = false;
    const double volts = deviceGet(name, key).toDouble(&isNumber);
    return isNumber && std::isfinite(volts) ? volts : defaultVth; // "nan" and "inf" are numbers to Qt
}

void DevBase::shutDown()
{
    if (!connected) {
        return;
    }
    if (RequestQueue *requests = devRequests(); requests != nullptr) {
        requests->drop(); // nothing else matters any more
    }
    request([](DevControl &control) { return control.powerOff(); }, [](int) {});
}

int DevBase::prepareConnection(const QByteArray &identity, DevConnection &connection)
{
    connection.model = model;
    connection.identity = identity;
    const int error = readIdentity(identity, connection);
    if (error == 0) {
        connection.orders = storedThresholds();
        const std::vector<DevOrder> outputs = startOutputs(true);
        connection.orders.insert(connection.orders.end(), outputs.begin(), outputs.end());
    }
    return error;
}

void DevBase::takeConnection(const DevConnection &connection)
{
    if (connection.uid.size() == DevControl::uidSize) {
        devUid = connection.uid;
    }
    connected = true;
}

void DevBase::loseConnection()
{
    connected = false;
    devUid.fill('\0');
    if (RequestQueue *requests = devRequests(); requests != nullptr) {
        requests->drop();
    }
}

int DevBase::initDevice(const QByteArray &identity)
{
    DevConnection connection;
    if (const int error = readIdentity(identity, connection); error != 0) {
        return error;
    }
    if (const int error = connection.perform(devControl(), [] { return true; }); error != 0) {
        return error;
    }
    takeConnection(connection);
    return 0;
}

int DevBase::readIdentity(const QByteArray &identity, DevConnection &connection)
{
    if (!namesThisModel(identity)) {
        return DevConnection::errWrongModel;
    }
    readClocks(identity);
    connection.readsStatus = memSize > 0;
    return 0;
}

std::uint8_t DevBase::identityByte(const QByteArray &identity, int index)
{
    return index < identity.size() ? std::uint8_t(identity.at(index)) : std::uint8_t(0);
}

bool DevBase::namesThisModel(const QByteArray &identity) const
{
    return identity.left(identityNameSize) == name.toLatin1();
}

void DevBase::readClocks(const QByteArray &identity)
{
    const auto megahertz = [&identity](int index) {
        return std::int64_t(identityByte(identity, index) | identityByte(identity, index + 1) << 8);
    };
    clockFrequ = megahertz(8) * 1000000;
    pwmClock = megahertz(10) * 1000000;
}
