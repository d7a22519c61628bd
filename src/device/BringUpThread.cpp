#include "device/BringUpThread.h"

#include "device/BringUpRun.h"

#include <utility>

BringUpThread::BringUpThread(int firstState) : m_firstState(firstState)
{
    connect(this, &BringUpThread::sigEnded, this, &BringUpThread::startNext, Qt::QueuedConnection);
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
    const std::shared_ptr<BringUpRun> run = std::exchange(m_next, nullptr);
    {
        const std::lock_guard lock(m_mutex);
        m_run = run;
    }
    m_busy.store(true, std::memory_order_release);
    if (!launch()) {
        m_busy.store(false, std::memory_order_release);
        run->report(m_firstState, BringUpRun::notOpen);
    }
}

void BringUpThread::end()
{
    m_next.reset();
    join();
}

void BringUpThread::work()
{
    std::shared_ptr<BringUpRun> run;
    {
        const std::lock_guard lock(m_mutex);
        run.swap(m_run);
    }
    bringUp(*run);
    run.reset();
    m_busy.store(false, std::memory_order_release);
    emit sigEnded();
}
