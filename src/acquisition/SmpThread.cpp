#include "acquisition/SmpThread.h"

void SmpThread::join()
{
    wait();
    (void)m_left.load(std::memory_order_acquire);
}

bool SmpThread::launch()
{
    join();
    m_left.store(false, std::memory_order_relaxed);
    m_launched.store(true, std::memory_order_release);
    start(QThread::InheritPriority);
    return isRunning() || isFinished();
}

void SmpThread::run()
{
    if (!m_launched.load(std::memory_order_acquire)) {
        return; // nobody asked for a run
    }
    work();
    m_left.store(true, std::memory_order_release);
}
