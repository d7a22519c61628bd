#include "device/DevBase.h"

#include "acquisition/SmpTransport.h"
#include "device/DevConnection.h"
#include "device/DevRun.h"
#include "device/RequestQueue.h"
#include "settings/Config.h"

#include <cmath>
#include <utility>

SimulationSource *gSimulationSource = nullptr;

namespace {

constexpr int identityNameSize = 6;
constexpr double defaultVth = 1.65; // volts
constexpr int vthGroup = 16;        // channels that share a threshold

} // namespace

DevBase::DevBase() : devUid(DevControl::uidSize, '\0'), m_run(std::make_unique<DevRun>(*this))
{
    smpDepths = {20000,     200000,    1000000,   2000000,    5000000,    10000000,   20000000,   50000000,
                 100000000, 200000000, 500000000, 1000000000, 2000000000, 5000000000, 10000000000};
    resetPwm();
}

DevBase::~DevBase()
{
    // The threads write the store and emit through this object: they go first.
    m_run->end();
    receiveNothing();
    SmpData::retire(std::move(smpData)); // somebody may still read it
}

void DevBase::leave()
{
    m_run->leave();
    receiveNothing();
}

bool DevBase::waitForThreads(std::chrono::milliseconds most)
{
    return m_run->waitForThreads(most);
}

/// A capture of another device object sets its own receiver, and only this one's is taken away.
void DevBase::receiveNothing()
{
    SmpTransport *transport = devControl().transport();
    if (std::exchange(m_receives, false) && transport != nullptr) {
        transport->setCallback(nullptr);
    }
}

void DevBase::receiveBulk()
{
    m_receives = true;
    m_run->receiveBulk();
}

void DevBase::startCapture()
{
    m_run->start();
}

bool DevBase::isCapturing() const
{
    return m_run->isCapturing();
}

bool DevBase::hasThreads() const
{
    return m_run->hasThreads();
}

void DevBase::stopCapture()
{
    m_run->stop();
}

void DevBase::endCapture()
{
    m_run->end();
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

void DevBase::setPwm(int output, double frequ, double duty)
{
    if (output >= 0 && output <= 1) {
        tell(DevOrder::setPwm(output, takePwm(output, frequ, duty, connected ? pwmClock : 0)));
    }
}

void DevBase::resetPwm()
{
    tell(takeStart(connected ? pwmClock : 0));
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
        const std::vector<DevOrder> outputs = takeStart(pwmClock);
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
