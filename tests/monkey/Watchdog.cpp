#include "monkey/Watchdog.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <pthread.h>

Watchdog::Watchdog(std::chrono::milliseconds most)
    : m_most(most), m_watched(pthread_self()), m_last(now()), m_thread([this] { watch(); })
{}

Watchdog::~Watchdog()
{
    {
        const std::lock_guard lock(m_mutex);
        m_stop = true;
    }
    m_wake.notify_one();
    m_thread.join();
}

std::int64_t Watchdog::now()
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now().time_since_epoch()).count();
}

void Watchdog::alive()
{
    const std::int64_t time = now();
    m_longest = std::max(m_longest, std::chrono::milliseconds(time - m_last.load(std::memory_order_relaxed)));
    m_last.store(time, std::memory_order_relaxed);
}

void Watchdog::watch()
{
    constexpr std::chrono::milliseconds look(100);
    std::unique_lock lock(m_mutex);
    while (!m_wake.wait_for(lock, look, [this] { return m_stop; })) {
        const std::int64_t still = now() - m_last.load(std::memory_order_relaxed);
        if (still > m_most.count()) {
            std::fprintf(stderr, "monkey: the main thread has stood still for %lld ms\n",
                         static_cast<long long>(still));
            pthread_kill(m_watched, SIGABRT);
            m_last.store(now(), std::memory_order_relaxed);
        }
    }
}
