#include "analyzer/CloneThread.h"

#include "analyzer/LeftBehind.h"
#include "analyzer/WatchedTime.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <utility>

namespace {

constexpr std::chrono::milliseconds jobStep{100}; ///< at a job under way

} // namespace

struct CloneThread::Desk {
    std::mutex mutex; ///< guards all of it
    std::condition_variable changed;
    std::function<void()> job;
    std::function<void()> clearUp; ///< empty unless nobody waits for the job any more
    bool hasJob = false;           ///< handed in and not done yet
    bool isOver = false;

    void work()
    {
        std::unique_lock lock(mutex);
        for (;;) {
            changed.wait(lock, [this] { return hasJob || isOver; });
            if (!hasJob) {
                return;
            }
            for (std::function<void()> next = std::move(job); next; next = std::exchange(clearUp, nullptr)) {
                lock.unlock();
                next();
                next = nullptr; // what it holds goes without the lock
                lock.lock();
            }
            hasJob = false;
            changed.notify_all();
        }
    }
};

CloneThread::CloneThread(std::chrono::milliseconds patience)
    : m_patience(patience), m_desk(std::make_shared<Desk>()), m_thread([desk = m_desk] { desk->work(); })
{}

CloneThread::~CloneThread()
{
    {
        const std::lock_guard lock(m_desk->mutex);
        m_desk->isOver = true;
    }
    m_desk->changed.notify_all();
    if (m_isLost) {
        LeftBehind::leave(m_thread);
    } else {
        m_thread.join();
    }
}

bool CloneThread::run(std::function<void()> job, std::function<void()> clearUp)
{
    if (m_isLost) {
        return false;
    }
    std::unique_lock lock(m_desk->mutex);
    m_desk->job = std::move(job);
    m_desk->hasJob = true;
    m_desk->changed.notify_all();
    WatchedTime waited(jobStep);
    while (m_desk->hasJob && waited.look() < m_patience) {
        const auto most = std::min(jobStep, m_patience - waited.passed());
        m_desk->changed.wait_for(lock, most, [this] { return !m_desk->hasJob; });
    }
    m_isLost = m_desk->hasJob;
    if (m_isLost) {
        m_desk->clearUp = std::move(clearUp);
    }
    return !m_isLost;
}
