#include "session/Session.h"

#include "device/DevBase.h"
#include "device/DevControlUsb.h"
#include "device/DevInit.h"
#include "device/DevModels.h"
#include "device/DeviceGlobals.h"
#include "device/RequestQueue.h"
#include "device/UsbTransport.h"
#include "settings/Config.h"

#include <QDeadlineTimer>
#include <QTimer>

#include <algorithm>
#include <thread>
#include <utility>

namespace {

int storedModel()
{
    return globalGet(QStringLiteral("devModel")).toInt();
}

} // namespace

Session::Session(std::unique_ptr<UsbPlatform> platform) : Session(std::move(platform), std::max(storedModel(), 0)) {}

Session::Session(std::unique_ptr<UsbPlatform> platform, int model)
    : m_transport(std::make_unique<UsbTransport>(std::move(platform))),
      m_control(std::make_unique<DevControlUsb>(*m_transport)),
      m_requests(std::make_unique<RequestQueue>(*m_control))
{
    Q_ASSERT(gUsb == nullptr && gDev == nullptr && gDevInit == nullptr);
    gUsb = m_transport.get();
    setDevControl(m_control.get(), m_requests.get());
    makeDevice(model);
    constexpr int lookMs = 20;
    m_leavingTimer.setInterval(lookMs);
    connect(&m_leavingTimer, &QTimer::timeout, this, &Session::dropLeaving);
    m_bringUp = std::make_unique<DevInit>(*m_transport);
    gDevInit = m_bringUp.get();
    // A file may have begun to load while the bus was looked at.
    m_bringUp->setHeldBack([this] { return !mayReplaceDevice(); });
    // Both are emitted on this thread: the device object has been swapped when the second returns.
    connect(gDevInit, &DevInit::sigInitSta, this, &Session::sigInitSta);
    connect(gDevInit, &DevInit::sigDevPreConnect, this, &Session::chooseModel);
}

Session::~Session()
{
    gDevInit = nullptr;
    m_bringUp.reset();
    delete std::exchange(gDev, nullptr);
    m_leaving.clear();
    setDevControl(nullptr);
    m_requests.reset(); // when the last of them has been made
    gUsb = nullptr;
}

bool Session::end(std::chrono::milliseconds most)
{
    constexpr std::chrono::milliseconds again(2);
    const QDeadlineTimer deadline(most);
    m_bringUp->stop();
    gDev->leave();
    for (;;) {
        dropLeaving();
        if (!m_bringUp->isWorking() && !gDev->hasThreads() && m_leaving.empty() && m_requests->isIdle()) {
            return true;
        }
        if (deadline.hasExpired()) {
            return false;
        }
        std::this_thread::sleep_for(again);
    }
}

bool Session::mayStartCapture() const
{
    return m_fileJobs == 0 && m_leaving.empty() && !gDev->isCapturing();
}

bool Session::startCapture()
{
    if (!mayStartCapture()) {
        return false;
    }
    gDev->startCapture();
    return true;
}

void Session::stopCapture()
{
    gDev->stopCapture();
}

void Session::endCaptures()
{
    gDev->endCapture();
    for (const std::unique_ptr<DevBase> &device : m_leaving) {
        device->endCapture();
    }
}

void Session::makeDevice(int model)
{
    gDev = createDevice(model).release();
    // A capture thread's report may still be queued when its device has been replaced.
    const unsigned generation = ++m_generation;
    connect(gDev, &DevBase::sigSmpSta, this, [this, generation](int sta, int err, int n) {
        if (generation == m_generation) {
            emit sigSmpSta(sta, err, n);
        }
    });
    connect(gDev, &DevBase::sigSmpDataReady, this, [this, generation] {
        if (generation == m_generation) {
            emit sigSmpDataReady();
        }
    });
    connect(gDev, &DevBase::sigChnEnaChanged, this, &Session::sigChnEnaChanged);
}

void Session::replaceDevice(int model)
{
    ++m_generation; // no report of the old device may get out any more
    emit sigDeviceLeaves();
    std::unique_ptr<DevBase> old(std::exchange(gDev, nullptr));
    old->leave();
    // A thread of its capture may be waiting for an instrument that does not answer, or for a decoder that is to drive
    // a simulated one.
    constexpr std::chrono::milliseconds most(30);
    if (!old->waitForThreads(most)) {
        m_leaving.push_back(std::move(old));
        m_leavingTimer.start();
    }
    old.reset();
    makeDevice(model);
}

void Session::dropLeaving()
{
    m_leaving.erase(std::remove_if(m_leaving.begin(), m_leaving.end(),
                                   [](const std::unique_ptr<DevBase> &device) { return !device->hasThreads(); }),
                    m_leaving.end());
    if (m_leaving.empty()) {
        m_leavingTimer.stop();
    }
}

bool Session::chooseModel(int model)
{
    if (model == gDev->model) {
        return true;
    }
    if (!mayReplaceDevice()) {
        return false;
    }
    replaceDevice(model);
    emit sigDeviceReplaced();
    globalSet(QStringLiteral("devModel"), QString::number(gDev->model));
    return true;
}

bool Session::replaceConfig()
{
    if (!mayReplaceDevice()) {
        return false;
    }
    const int model = storedModel();
    const bool stays = gDev->connected && gDev->model == model;
    replaceDevice(model);
    if (stays) {
        m_bringUp->reconnect();
    }
    emit sigDeviceReplaced();
    return true;
}

bool Session::watchDevices(std::uintptr_t window)
{
    connect(gUsb, &UsbTransport::sigDevChange, this, &Session::lookForDevice, Qt::UniqueConnection);
    return m_transport->registerHotplug(window);
}

void Session::lookForDevice()
{
    if (!mayReplaceDevice()) {
        // A file fills the device object's store, which must stay until it has. Each message is one look.
        constexpr int againMs = 200;
        QTimer::singleShot(againMs, this, &Session::lookForDevice);
        return;
    }
    m_bringUp->slotDevChange();
}
