#include "acquisition/SmpHost.h"

#include <chrono>

SmpHost::SmpHost(QObject *parent) : QObject(parent) {}

SmpHost::~SmpHost() = default;

void SmpHost::waitForStop(int ms, const std::atomic<bool> &abort)
{
    std::unique_lock lock(m_mutex);
    m_woken.wait_for(lock, std::chrono::milliseconds(ms),
                     [&] { return smpStop.load(std::memory_order_acquire) || abort.load(std::memory_order_acquire); });
}

void SmpHost::wake()
{
    // Taking the mutex once is what makes sure that the waiter is either before its test or already waiting.
    m_mutex.lock();
    m_mutex.unlock();
    m_woken.notify_all();
}

bool SmpHost::openStore(const std::function<bool()> &givesUp)
{
    constexpr std::chrono::milliseconds again(20);
    while (!smpData->open(again)) {
        if (givesUp()) {
            smpData->readmit();
            return false;
        }
    }
    return true;
}

void SmpHost::report(int sta, int err, int value)
{
    smpSta.store(sta, std::memory_order_release);
    emit sigSmpSta(sta, err, value);
}
