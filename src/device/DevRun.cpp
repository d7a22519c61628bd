#include "device/DevRun.h"

#include "acquisition/SmpState.h"
#include "acquisition/SmpTransport.h"
#include "device/DevBase.h"
#include "device/DevControl.h"

#include <QDeadlineTimer>
#include <QTimer>

#include <algorithm>
#include <iterator>
#include <utility>

DevRun::DevRun(DevBase &device)
    : m_device(device),
      m_simulate(device),
      m_cnvtStorage(device),
      m_ctrlStorage(device, m_cnvtStorage),
      m_cnvtTransfer(device),
      m_ctrlTransfer(device, m_cnvtTransfer)
{}

void DevRun::start()
{
    if (!m_device.smpData || isCapturing()) {
        return;
    }
    emit m_device.sigCaptureStarts();
    m_device.smpStop.store(false, std::memory_order_release);
    m_device.smpAbort.store(false, std::memory_order_release);
    m_device.smpCut.store(false, std::memory_order_release);
    if (m_device.connected) {
        startHardware();
        return;
    }
    // Here, so that nobody begins to read the last capture; its thread waits for the others.
    m_device.smpData->closeToReaders();
    SimulationSettings settings;
    settings.frequency = m_device.smpFrequ();
    settings.depth = m_device.smpDepth();
    settings.enable.assign(m_device.chnEnable.cbegin(), m_device.chnEnable.cend());
    m_simulate.startRun(settings, gSimulationSource);
}

bool DevRun::hasThreads() const
{
    return m_simulate.isRunning() || m_ctrlStorage.isRunning() || m_cnvtStorage.isRunning() ||
           m_ctrlTransfer.isRunning() || m_cnvtTransfer.isRunning();
}

bool DevRun::isCapturing() const
{
    return m_simulate.isBusy() || m_device.smpBusy.load(std::memory_order_acquire);
}

void DevRun::receiveBulk()
{
    SmpTransport *transport = devControl().transport();
    if (transport == nullptr) {
        return;
    }
    if (m_device.transferMode == devTransfer::streaming) {
        transport->setCallback(&m_ctrlTransfer);
    } else {
        transport->setCallback(&m_ctrlStorage);
    }
}

SmpRunSettings DevRun::runSettings() const
{
    SmpRunSettings settings;
    settings.bytes8 = m_device.model == devModel::bytes8;
    settings.frequency = m_device.smpFrequ();
    settings.depth = m_device.smpDepth();
    settings.preTrig = m_device.preTrigSamples();
    settings.trgPosition = m_device.trgPosition;
    settings.memSize = m_device.memSize;
    settings.enable.assign(m_device.chnEnable.cbegin(), m_device.chnEnable.cend());
    settings.trig.assign(m_device.chnTrig.cbegin(), m_device.chnTrig.cend());
    return settings;
}

void DevRun::startHardware()
{
    if (devControl().transport() == nullptr) {
        m_device.report(smpState::starting, SmpDevice::notOpen, 0);
        return;
    }
    // Where the last capture failed may not be taken for the read-back of this one by a stop that comes at once.
    m_device.smpSta.store(smpState::starting, std::memory_order_release);
    m_device.smpBusy.store(true, std::memory_order_release);
    m_setsUp = true;
    m_stopWanted = false;
    const auto setUp = [config = m_device.smpConfig()](DevControl &control) { return control.sendSmpConfig(config); };
    m_device.request(setUp, [this, capture = ++m_captures, settings = runSettings()](int error) {
        beginRun(capture, settings, error);
    });
}

void DevRun::beginRun(std::uint32_t capture, const SmpRunSettings &settings, int error)
{
    if (capture != m_captures || !m_setsUp) {
        return; // it has been ended meanwhile
    }
    m_setsUp = false;
    DevControl &control = devControl();
    SmpTransport *transport = control.transport();
    if (error != 0 || m_stopWanted || transport == nullptr) {
        m_device.smpBusy.store(false, std::memory_order_release);
        // An instrument that is set up otherwise would capture something else. One that was stopped has done nothing.
        m_device.report(error != 0 ? smpState::starting : smpState::done, error, 0);
        return;
    }
    receiveBulk();
    if (m_device.transferMode == devTransfer::streaming) {
        m_ctrlTransfer.startRun(settings, control, *transport);
    } else {
        m_ctrlStorage.startRun(settings, control, *transport);
    }
}

void DevRun::setStop()
{
    m_device.smpStop.store(true, std::memory_order_release);
    m_device.wake();
}

void DevRun::stop()
{
    if (m_setsUp) {
        m_stopWanted = true;
        return;
    }
    if (!m_device.connected || !m_device.smpBusy.load(std::memory_order_acquire)) {
        setStop();
        return;
    }
    const auto stopDevice = [](DevControl &control) { return control.stopDevice(); };
    const std::uint32_t capture = m_captures;
    // A stream goes on until the instrument stops, and whatever comes meanwhile is known to be the end. Memory may only
    // be read back once the instrument has stopped.
    if (m_device.transferMode == devTransfer::streaming) {
        setStop();
        m_device.request(stopDevice, [this, capture](int) { breakOffSilentStream(capture); });
        return;
    }
    cutReadBack();
    m_device.request(stopDevice, [this, capture](int) {
        if (capture == m_captures) {
            setStop();
        }
    });
}

/// Ends the read-back that is under way, if one is. What is not read yet is lost, as the user wants it.
void DevRun::cutReadBack()
{
    SmpTransport *transport = devControl().transport();
    if (m_device.smpSta.load(std::memory_order_acquire) == smpState::reading && transport != nullptr) {
        m_device.smpCut.store(true, std::memory_order_release);
        transport->breakOffStream();
    }
}

/// Gives a stream that was stopped the time to bring its end; a device that falls silent is not waited for.
void DevRun::breakOffSilentStream(std::uint32_t capture)
{
    constexpr int graceMs = 200;
    QTimer::singleShot(graceMs, &m_device, [this, capture] {
        SmpTransport *transport = devControl().transport();
        if (capture == m_captures && m_device.smpBusy.load(std::memory_order_acquire) && transport != nullptr) {
            transport->breakOffStream();
        }
    });
}

void DevRun::end()
{
    endSimulation();
    endHardware();
}

void DevRun::endSimulation()
{
    abortSimulation();
    m_simulate.join();
}

void DevRun::abortSimulation()
{
    m_simulate.abort.store(true, std::memory_order_release);
    m_device.wake();
}

void DevRun::leave()
{
    abortSimulation();
    const bool ran = abortHardware();
    ++m_captures; // what was asked for the capture is answered to nobody
    if (ran) {
        m_device.request([](DevControl &control) { return control.stopDevice(); }, [](int) {});
        if (SmpTransport *transport = devControl().transport(); transport != nullptr) {
            transport->breakOffStream();
        }
    }
}

bool DevRun::waitForThreads(std::chrono::milliseconds most)
{
    QDeadlineTimer deadline(most);
    QThread *const threads[] = {&m_simulate, &m_ctrlTransfer, &m_cnvtTransfer, &m_ctrlStorage, &m_cnvtStorage};
    return std::all_of(std::begin(threads), std::end(threads),
                       [&deadline](QThread *thread) { return thread->wait(deadline); });
}

bool DevRun::abortHardware()
{
    if (std::exchange(m_setsUp, false)) {
        m_device.smpBusy.store(false, std::memory_order_release); // nothing runs yet
    }
    // Asked before the abort is told: the control thread may be gone right after it, and stops no instrument then.
    const bool ran = m_device.smpBusy.load(std::memory_order_acquire);
    if (ran) {
        m_device.smpAbort.store(true, std::memory_order_release);
        m_device.smpStop.store(true, std::memory_order_release);
        m_device.wake();
    }
    return ran;
}

void DevRun::endHardware()
{
    if (abortHardware()) {
        devControl().stopDevice();
        if (SmpTransport *transport = devControl().transport(); transport != nullptr) {
            transport->breakOffStream();
        }
    }
    // A control thread starts its converter, which ends when the control thread has.
    m_ctrlTransfer.join();
    m_cnvtTransfer.join();
    m_ctrlStorage.join();
    m_cnvtStorage.join();
}
