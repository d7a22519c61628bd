#include "device/DevBase.h"

#include "acquisition/SmpState.h"
#include "acquisition/SmpTransport.h"
#include "device/DevControl.h"
#include "settings/Config.h"

#include <QTimer>

#include <algorithm>
#include <cmath>

SimulationSource *gSimulationSource = nullptr;

namespace {

constexpr int identityNameSize = 6;
constexpr std::uint16_t readyMask = 0x8F00;
constexpr std::uint16_t readyValue = 0x8500;
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
    DevControl &control = devControl();
    SmpTransport *transport = control.transport();
    const int error = transport != nullptr ? control.sendSmpConfig(smpConfig()) : SmpDevice::notOpen;
    if (error != 0) {
        report(0, error, 0); // an instrument that is set up otherwise would capture something else
        return;
    }
    receiveBulk();
    ++m_captures;
    // Where the last capture failed may not be taken for the read-back of this one by a stop that comes at once.
    smpSta.store(smpState::starting, std::memory_order_release);
    if (transferMode == streaming) {
        thrCtrlTransfer.startRun(runSettings(), control, *transport);
    } else {
        thrCtrlStorage.startRun(runSettings(), control, *transport);
    }
}

void DevBase::stopCapture()
{
    const bool stopsDevice = connected && smpBusy.load(std::memory_order_acquire);
    // A stream goes on until the instrument stops, and whatever comes meanwhile is known to be the end. Memory may only
    // be read back once the instrument has stopped.
    if (stopsDevice && transferMode != streaming) {
        cutReadBack();
        devControl().stopDevice();
    }
    smpStop.store(true, std::memory_order_release);
    thrSimulate.wake();
    wake();
    if (stopsDevice && transferMode == streaming) {
        devControl().stopDevice();
        breakOffSilentStream();
    }
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
void DevBase::breakOffSilentStream()
{
    constexpr int graceMs = 200;
    QTimer::singleShot(graceMs, this, [this, capture = m_captures] {
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

void DevBase::setPwmEnable(bool on0, bool on1)
{
    pwmEnable = {on0, on1};
    if (connected) {
        devControl().sendPwmEnable(std::uint8_t((on0 ? 1 : 0) | (on1 ? 2 : 0)));
    }
}

void DevBase::setPwm(int output, double frequ, double duty)
{
    if (output < 0 || output > 1) {
        return;
    }
    const auto index = std::size_t(output);
    // fmax and fmin, unlike clamp, turn what is no number into a limit.
    pwmFrequ[index] = std::fmin(std::fmax(frequ, 0.1), 2e7);
    pwmDuty[index] = std::fmin(std::fmax(duty, 0.0), 100.0);
    if (!connected) {
        return;
    }
    const PwmCounts counts = pwmCounts(pwmClock, pwmFrequ[index], pwmDuty[index]);
    pwmFrequ[index] = counts.frequ;
    pwmDuty[index] = counts.duty;
    devControl().sendPwm(output, counts.period, counts.high);
}

void DevBase::resetPwm()
{
    setPwmEnable(false, false);
    setPwm(0, 1000.0, 50.0);
    setPwm(1, 100000.0, 50.0);
    setPwmEnable(true, true);
}

void DevBase::setVth(double volts, int index)
{
    if (connected && (index == 1 || index == 2)) {
        devControl().sendVth(index, vthCodes(volts));
    }
}

void DevBase::loadVth()
{
    setVth(storedVth(1), 1);
    if (chnEnable.size() > vthGroup) {
        setVth(storedVth(2), 2);
    }
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
    if (connected) {
        devControl().powerOff();
    }
}

int DevBase::initDevice(const QByteArray &identity)
{
    if (!namesThisModel(identity)) {
        return errWrongModel;
    }
    readClocks(identity);
    if (memSize > 0) {
        if (const int error = checkReady(); error != 0) {
            return error;
        }
    }
    finishInit();
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

int DevBase::checkReady()
{
    std::uint16_t status = 0;
    if (const int error = devControl().readStatus(status); error != 0) {
        return error;
    }
    if (const int error = statusError(status); error != 0) {
        return error;
    }
    return (status & readyMask) == readyValue ? 0 : errNotReady;
}

void DevBase::finishInit()
{
    QByteArray uid;
    if (devControl().readUid(uid) == 0 && uid.size() == DevControl::uidSize) {
        devUid = uid;
    }
    connected = true;
}
