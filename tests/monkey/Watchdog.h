#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>

/// Ends the process when the thread that made it, the main thread, stands still for too long; measures its longest
/// pause. What ends the process is a signal to that very thread, so that the stack that is told is the one that hangs.
class Watchdog {
public:
    explicit Watchdog(std::chrono::milliseconds most);
    ~Watchdog();
    Watchdog(const Watchdog &) = delete;
    Watchdog &operator=(const Watchdog &) = delete;

    /// The main thread is back in its event loop. That thread.
    void alive();
    /// That thread.
    [[nodiscard]] std::chrono::milliseconds longestPause() const { return m_longest; }

private:
    using Clock = std::chrono::steady_clock;
    [[nodiscard]] static std::int64_t now();
    void watch();

    const std::chrono::milliseconds m_most;
    const std::thread::native_handle_type m_watched;
    std::atomic<std::int64_t> m_last; ///< ms of the clock
    std::chrono::milliseconds m_longest{0};
    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_stop = false;
    std::thread m_thread;
};
