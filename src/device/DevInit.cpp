#include "device/DevInit.h"

#include "device/DevBase.h"
#include "device/DevRequests.h"
#include "device/DeviceGlobals.h"
#include "device/PostedCall.h"
#include "device/UsbIds.h"
#include "device/UsbTransport.h"

#include <utility>

std::atomic<std::uint16_t> hardwareVersion{0};

namespace {

constexpr int staLoading = 0;
constexpr int staFinishing = 2;
constexpr int staConnecting = 5;
constexpr int staConnected = 6;
constexpr int staGone = 7;

} // namespace

DevInit::DevInit(UsbTransport &usb, QObject *parent) : QObject(parent), m_usb(usb) {}

DevInit::~DevInit()
{
    if (m_run) {
        m_run->requestStop();
    }
    m_attach.end();
    m_renumDone.end();
}

void DevInit::slotDevChange()
{
    const int change = m_usb.refresh();
    if (change < 0) {
        deviceGone();
    } else if (change > 0 && isUsbInstrument(m_usb.vendorId, m_usb.productId)) {
        deviceOpened();
    }
}

void DevInit::deviceGone()
{
    if (m_run) {
        m_run->setGone();
    }
    if (!gDev->connected) {
        return;
    }
    gDev->connected = false;
    gDev->devUid.fill('\0');
    hardwareVersion.store(0, std::memory_order_relaxed);
    emit sigInitSta(staGone, 0, 0);
}

void DevInit::deviceOpened()
{
    const bool hasFirmware = m_usb.pipeReady == 1;
    // The device has come back, or another one has come: what the last run still has to say is out of date.
    if (m_run) {
        m_run->requestStop();
    }
    m_run = newRun();
    emit sigInitSta(hasFirmware ? staFinishing : staLoading, 0, 0);
    if (hasFirmware) {
        m_renumDone.begin(m_run);
    } else {
        m_attach.begin(m_run);
    }
}

std::shared_ptr<BringUpRun> DevInit::newRun()
{
    // Filled when the run exists; the run's thread reads it only afterwards.
    const auto self = std::make_shared<std::weak_ptr<BringUpRun>>();
    BringUpRun::Host host;
    host.skipPause = skipPause;
    host.report = [this, self](int sta, int err, int n) {
        postCall(this, [this, run = self->lock(), sta, err, n] {
            if (!run->stopRequested.load(std::memory_order_acquire)) {
                emit sigInitSta(sta, err, n);
            }
        });
    };
    host.connectDevice = [this, self](int model, const QByteArray &identity) {
        postCall(this, [this, run = self->lock(), model, identity] { connectDevice(*run, model, identity); });
    };
    auto run = std::make_shared<BringUpRun>(m_usb, m_usb.productId.load(), std::move(host));
    *self = run;
    return run;
}

void DevInit::connectDevice(BringUpRun &run, int model, const QByteArray &identity)
{
    if (run.stopRequested.load(std::memory_order_acquire)) {
        return;
    }
    if (const int error = initDevice(run, model, identity); error != 0) {
        emit sigInitSta(staConnecting, error, 0);
    } else {
        m_identity = identity;
        emit sigInitSta(staConnected, 0, 0);
        // The last request, before anybody can start a capture, whose data it would stop.
        (void)m_usb.controlOut(devRequest::bulkStop, 0, 0, {});
    }
    run.endConnect();
}

int DevInit::initDevice(const BringUpRun &run, int model, const QByteArray &identity)
{
    if (run.isGone()) {
        return BringUpRun::notOpen;
    }
    emit sigDevPreConnect(model);
    // The object stays while a file loads into its store. Models may share a name, so that this is what tells them
    // apart.
    return gDev->model == model ? gDev->initDevice(identity) : DevBase::errWrongModel;
}
