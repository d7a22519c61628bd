#include "device/UsbLookThread.h"

#include "device/UsbLink.h"
#include "device/UsbTransport.h"
#include "settings/PostedCall.h"

#include <QTimer>

#include <algorithm>
#include <utility>

void UsbLookThread::begin()
{
    constexpr int most = 2;
    m_waiting = std::min(m_waiting + 1, most);
    startNext();
}

void UsbLookThread::stop()
{
    m_isStopped = true;
}

void UsbLookThread::end()
{
    stop();
    join();
}

bool UsbLookThread::isBusy() const
{
    return m_works.load(std::memory_order_acquire) || (!m_isStopped && (m_underWay || m_waiting > 0));
}

void UsbLookThread::startNext()
{
    if (m_isStopped || m_underWay || (m_waiting == 0 && !m_leaving)) {
        return;
    }
    m_looks = m_waiting > 0;
    m_waiting -= m_looks ? 1 : 0;
    m_openPath = m_usb.openPath();
    m_underWay = true;
    m_works.store(true, std::memory_order_release);
    if (!launch()) {
        work(); // better late than never
    }
}

void UsbLookThread::work()
{
    if (const std::shared_ptr<UsbLink> leaving = std::exchange(m_leaving, nullptr)) {
        leaving->cut();
    }
    const UsbLook look = m_looks ? m_usb.look(m_openPath) : UsbLook();
    // Before the answer, upon which the main thread may say that the next look works; until it is taken over this one
    // counts as under way.
    m_works.store(false, std::memory_order_release);
    postCall(this, [this, look] { takeOver(look); });
}

void UsbLookThread::takeOver(UsbLook look)
{
    if (m_isStopped) {
        return;
    }
    if (isHeldBack && isHeldBack()) {
        constexpr int againMs = 200;
        m_heldBack = std::move(look); // not in the call, which a timer keeps when this, and the bus, are gone
        QTimer::singleShot(againMs, this, [this] { takeOver(std::exchange(m_heldBack, {})); });
        return;
    }
    UsbChange change = m_usb.takeLook(std::move(look));
    m_underWay = false;
    m_leaving = std::move(change.leaving);
    startNext();
    looked(change.change);
}
