#include "analyzer/AnalyzerProgMng.h"

#include <chrono>

AnalyzerProgMng::AnalyzerProgMng(Analyzer *decoder) : analyzer(decoder) {}

AnalyzerProgMng::~AnalyzerProgMng()
{
    Q_ASSERT(isIdle());
}

bool AnalyzerProgMng::isIdle() const
{
    const std::lock_guard lock(m_mutex);
    return m_state == State::Idle;
}

bool AnalyzerProgMng::isParked() const
{
    const std::lock_guard lock(m_mutex);
    return m_state == State::Parked;
}

void AnalyzerProgMng::askToStop()
{
    {
        const std::lock_guard lock(m_mutex);
        if (m_state != State::Running) {
            return;
        }
        stopPending = true;
    }
    analyzer->StopWorkerThread();
}

bool AnalyzerProgMng::waitParked(int ms)
{
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, std::chrono::milliseconds(ms), [this] { return m_state != State::Running; });
}

void AnalyzerProgMng::letGo()
{
    {
        const std::lock_guard lock(m_mutex);
        if (m_state == State::Idle) {
            return;
        }
        m_letGo = true;
    }
    m_changed.notify_all();
    wait(); // orders the memory too, but inside a library that a race detector cannot look into
    (void)m_left.load(std::memory_order_acquire);
    const std::lock_guard lock(m_mutex);
    m_state = State::Idle;
}

void AnalyzerProgMng::StartWorker()
{
    {
        const std::lock_guard lock(m_mutex);
        if (m_state != State::Idle) {
            return; // a decoder that starts its worker twice
        }
        m_state = State::Running;
        stopPending = false;
        m_letGo = false;
    }
    progress.store(0.0, std::memory_order_relaxed);
    m_left.store(false, std::memory_order_relaxed);
    start(QThread::InheritPriority);
    if (!isRunning() && !isFinished()) { // the system gives no thread
        const std::lock_guard lock(m_mutex);
        m_state = State::Idle;
    }
}

void AnalyzerProgMng::run()
{
    analyzer->DecodeToEnd();
    m_left.store(true, std::memory_order_release);
}

void AnalyzerProgMng::WorkerEnded()
{
    bool announce = false;
    {
        const std::lock_guard lock(m_mutex);
        if (m_state != State::Running) {
            return;
        }
        announce = !stopPending;
        stopPending = false;
        m_state = State::Parked;
    }
    m_changed.notify_all();
    if (announce) {
        emit sigStopWorkThread(this, analyzer);
    }
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_letGo; });
}
