#include "device/DevInit.h"

#include "device/DevBase.h"
#include "device/DeviceGlobals.h"
#include "device/UsbIds.h"
#include "device/UsbTransport.h"
#include "settings/PostedCall.h"

#include <utility>

std::atomic<std::uint16_t> hardwareVersion{0};

namespace {

constexpr int staLoading = 0;
constexpr int staFinishing = 2;
constexpr int staConnecting = 5;
constexpr int staConnected = 6;
constexpr int staGone = 7;

} // namespace

DevInit::DevInit(UsbTransport &usb, QObject *parent) : QObject(parent), m_usb(usb), m_look(usb)
{
    m_look.setParent(this); // for whoever looks for it by its type
    m_look.looked = [this](int change) { deviceChanged(change); };
}

DevInit::~DevInit()
{
    stop();
    m_look.end();
    m_attach.end();
    m_renumDone.end();
}

void DevInit::stop()
{
    m_look.stop();
    if (m_run) {
        m_run->requestStop();
    }
}

void DevInit::slotDevChange()
{
    m_look.begin();
}

void DevInit::deviceChanged(int change)
{
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
    forgetDevice();
}

void DevInit::forgetDevice()
{
    gDev->loseConnection();
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
    host.control = &devControl();
    host.prepareDevice = [this, self](int model, const QByteArray &identity) {
        postCall(this, [this, run = self->lock(), model, identity] { prepareDevice(*run, model, identity); });
    };
    host.takeOver = [this, self](const DevConnection &connection, int result) {
        postCall(this, [this, run = self->lock(), connection, result] { takeOver(*run, connection, result); });
    };
    auto run = std::make_shared<BringUpRun>(m_usb, m_usb.productId.load(), std::move(host));
    *self = run;
    return run;
}

void DevInit::prepareDevice(BringUpRun &run, int model, const QByteArray &identity)
{
    if (run.stopRequested.load(std::memory_order_acquire)) {
        return;
    }
    DevConnection connection;
    connection.endsBringUp = true;
    if (const int error = prepareConnection(run, model, identity, connection); error != 0) {
        emit sigInitSta(staConnecting, error, 0);
        run.endVisit({});
        return;
    }
    m_prepared = gDev;
    run.endVisit(std::move(connection));
}

int DevInit::prepareConnection(const BringUpRun &run, int model, const QByteArray &identity, DevConnection &connection)
{
    if (run.isGone()) {
        return BringUpRun::notOpen;
    }
    emit sigDevPreConnect(model);
    // The object stays while a file loads into its store. Models may share a name, so that this is what tells them
    // apart.
    return gDev->model == model ? gDev->prepareConnection(identity, connection) : DevConnection::errWrongModel;
}

void DevInit::takeOver(BringUpRun &run, const DevConnection &connection, int result)
{
    if (run.stopRequested.load(std::memory_order_acquire)) {
        return;
    }
    const int error = result == 0 && run.isGone() ? BringUpRun::notOpen : result;
    if (error == 0 && m_prepared != gDev) {
        prepareDevice(run, connection.model, connection.identity);
        return;
    }
    if (error != 0) {
        emit sigInitSta(staConnecting, error, 0);
    } else {
        gDev->takeConnection(connection);
        m_identity = connection.identity;
        m_uid = gDev->devUid;
        emit sigInitSta(staConnected, 0, 0);
    }
    run.endVisit({});
}

void DevInit::reconnect()
{
    DevConnection connection;
    if (gDev->prepareConnection(m_identity, connection) != 0) {
        return;
    }
    connection.uid = m_uid;
    gDev->takeConnection(connection);
    const auto perform = [connection](DevControl &control) {
        return DevConnection(connection).perform(control, [] { return true; });
    };
    gDev->request(perform, [this](int result) {
        if (result != 0 && gDev->connected) {
            forgetDevice();
            emit sigInitSta(staConnecting, result, 0);
        }
    });
}
