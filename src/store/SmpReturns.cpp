#include "store/SmpReturns.h"

#include "store/SmpData.h"

#include <chrono>
#include <utility>

using namespace std::chrono_literals;

SmpReturns &SmpReturns::instance()
{
    static SmpReturns returns;
    return returns;
}

SmpReturns::~SmpReturns()
{
    {
        const std::lock_guard lock(m_mutex);
        m_ending = true;
    }
    m_woken.notify_all();
    if (m_thread.joinable()) {
        m_thread.join();
    }
    for (std::unique_ptr<SmpData> &data : m_read) {
        (void)data.release(); // its destructor would wait for who reads it
    }
}

void SmpReturns::giveBack(SmpSlabChain slabs)
{
    const std::lock_guard lock(m_mutex);
    m_slabs.push_back(std::move(slabs));
    startThread();
    m_woken.notify_all();
}

void SmpReturns::keep(std::unique_ptr<SmpData> data)
{
    const std::lock_guard lock(m_mutex);
    m_read.push_back(std::move(data));
    startThread();
    m_woken.notify_all();
}

/// The caller holds the mutex.
void SmpReturns::startThread()
{
    if (!m_thread.joinable()) {
        m_thread = std::thread([this] { run(); });
    }
}

void SmpReturns::run()
{
    constexpr auto again = 20ms; // such readers are rare, and long in leaving
    std::unique_lock lock(m_mutex);
    while (!m_ending) {
        destroyUnread(lock);
        giveSlabs(lock);
        if (m_read.empty()) {
            m_woken.wait(lock, [this] { return m_ending || !isIdle(); });
        } else {
            m_woken.wait_for(lock, again, [this] { return m_ending || !m_slabs.empty(); });
        }
    }
}

/// Outside of the mutex.
void SmpReturns::giveSlabs(std::unique_lock<std::mutex> &lock)
{
    std::vector<SmpSlabChain> slabs = std::exchange(m_slabs, {});
    lock.unlock();
    slabs.clear();
    lock.lock();
}

void SmpReturns::destroyUnread(std::unique_lock<std::mutex> &lock)
{
    std::vector<std::unique_ptr<SmpData>> gone;
    for (std::unique_ptr<SmpData> &data : m_read) {
        if (data->open(0ms)) {
            gone.push_back(std::move(data));
        }
    }
    std::erase(m_read, nullptr);
    lock.unlock();
    gone.clear();
    lock.lock();
}
