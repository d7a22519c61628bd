#include "device/BringUpThread.h"

#include "device/BringUpRun.h"

#include <utility>

BringUpThread::BringUpThread()
{
    connect(this, &QThread::finished, this, &BringUpThread::startNext);
}

void BringUpThread::begin(std::shared_ptr<BringUpRun> run)
{
    m_next = std::move(run);
    startNext();
}

void BringUpThread::startNext()
{
    if (!m_next || m_busy.load(std::memory_order_acquire)) {
        return; // still at work: its end comes here again
    }
    wait(); // a thread that has nothing more to do may not have ended
    {
        const std::lock_guard lock(m_mutex);
        m_run = std::exchange(m_next, nullptr);
    }
    m_busy.store(true, std::memory_order_release);
    start(QThread::InheritPriority);
}

void BringUpThread::join()
{
    m_next.reset();
    wait();
    // wait() orders the memory too, but inside a library that a race detector cannot look into.
    (void)m_busy.load(std::memory_order_acquire);
}

void BringUpThread::run()
{
    std::shared_ptr<BringUpRun> current;
    {
        const std::lock_guard lock(m_mutex);
        current.swap(m_run);
    }
    work(*current);
    current.reset();
    m_busy.store(false, std::memory_order_release);
}
