#include "analyzer/CloneThread.h"

#include <condition_variable>
#include <mutex>
#include <utility>

struct CloneThread::Desk {
    std::mutex mutex; ///< guards all of it
    std::condition_variable changed;
    std::function<void()> job;
    bool hasJob = false; ///< handed in and not done yet
    bool isOver = false;

    void work()
    {
        std::unique_lock lock(mutex);
        for (;;) {
            changed.wait(lock, [this] { return hasJob || isOver; });
            if (!hasJob) {
                return;
            }
            std::function<void()> current = std::move(job);
            lock.unlock();
            current();
            current = nullptr;
            lock.lock();
            hasJob = false;
            changed.notify_all();
        }
    }
};

CloneThread::CloneThread() : m_desk(std::make_shared<Desk>()), m_thread([desk = m_desk] { desk->work(); }) {}

CloneThread::~CloneThread()
{
    if (m_isLost) {
        m_thread.detach();
        return;
    }
    {
        const std::lock_guard lock(m_desk->mutex);
        m_desk->isOver = true;
    }
    m_desk->changed.notify_all();
    m_thread.join();
}

bool CloneThread::run(std::function<void()> job)
{
    if (m_isLost) {
        return false;
    }
    std::unique_lock lock(m_desk->mutex);
    m_desk->job = std::move(job);
    m_desk->hasJob = true;
    m_desk->changed.notify_all();
    m_isLost = !m_desk->changed.wait_for(lock, patience, [this] { return !m_desk->hasJob; });
    return !m_isLost;
}
