#pragma once

#include <condition_variable>
#include <mutex>

/// A count of tokens that threads hand to each other. Any thread.
///
/// Not std::counting_semaphore: where there is no futex, as on Windows, a wake-up of that of g++ 12 can be missed, and
/// the test would then wait for ever.
class Tokens {
public:
    void release(int count = 1)
    {
        const std::lock_guard lock(m_mutex);
        m_count += count;
        m_changed.notify_all();
    }
    /// Waits for one.
    void acquire()
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_count > 0; });
        --m_count;
    }

private:
    std::mutex m_mutex; ///< of all below
    std::condition_variable m_changed;
    int m_count = 0;
};
