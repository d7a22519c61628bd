#include "device/BringUpRun.h"

#include "device/UsbTransport.h"

#include <chrono>
#include <utility>

BringUpRun::BringUpRun(UsbTransport &usb, std::uint16_t product_, Host host)
    : product(product_), m_usb(usb), m_host(std::move(host))
{}

int BringUpRun::controlOut(std::uint8_t request, std::uint16_t value, std::uint16_t index,
                           std::span<const std::uint8_t> data)
{
    return hasDevice() ? m_usb.controlOut(request, value, index, data) : notOpen;
}

int BringUpRun::controlIn(std::uint8_t request, std::uint16_t value, std::uint16_t index, std::span<std::uint8_t> data)
{
    return hasDevice() ? m_usb.controlIn(request, value, index, data) : notOpen;
}

int BringUpRun::bulkWrite(std::span<const std::uint8_t> data, std::uint32_t &moved)
{
    moved = 0;
    return hasDevice() ? m_usb.bulkWrite(data, moved) : notOpen;
}

void BringUpRun::report(int sta, int err, int n)
{
    if (!isStopped()) {
        m_host.report(sta, err, n);
    }
}

void BringUpRun::pause(int ms)
{
    if (m_host.skipPause && m_host.skipPause(ms)) {
        return;
    }
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, std::chrono::milliseconds(ms), [this] { return !hasDevice(); });
}

void BringUpRun::pauseForReturn(int ms)
{
    if (m_host.skipPause && m_host.skipPause(ms)) {
        return;
    }
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, std::chrono::milliseconds(ms), [this] { return isStopped(); });
}

void BringUpRun::connectDevice(int model, const QByteArray &identity)
{
    if (isStopped()) {
        return;
    }
    m_host.prepareDevice(model, identity);
    // More than once when the device object has been replaced meanwhile.
    for (std::optional<DevConnection> connection = awaitVisit(); connection; connection = awaitVisit()) {
        const int result = connection->perform(*m_host.control, [this] { return hasDevice(); });
        if (isStopped()) {
            return;
        }
        m_host.takeOver(*connection, result);
    }
}

std::optional<DevConnection> BringUpRun::awaitVisit()
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_visitEnded || isStopped(); });
    m_visitEnded = false;
    return isStopped() ? std::nullopt : std::exchange(m_next, std::nullopt);
}

void BringUpRun::requestStop()
{
    {
        const std::lock_guard lock(m_mutex);
        stopRequested.store(true, std::memory_order_release);
    }
    m_changed.notify_all();
}

void BringUpRun::setGone()
{
    {
        const std::lock_guard lock(m_mutex);
        m_gone.store(true, std::memory_order_release);
    }
    m_changed.notify_all();
}

void BringUpRun::endVisit(std::optional<DevConnection> next)
{
    {
        const std::lock_guard lock(m_mutex);
        m_next = std::move(next);
        m_visitEnded = true;
    }
    m_changed.notify_all();
}
