#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <thread>

/// A thread for code of a plug-in that may never return: who waits for it waits no longer than the patience.
///
/// Any thread may own it; its jobs all run on the same one. Knows nothing of decoders.
class CloneThread {
public:
    static constexpr std::chrono::seconds patience{5};

    CloneThread();
    /// Joins the thread, unless a job was left behind.
    ~CloneThread();
    CloneThread(const CloneThread &) = delete;
    CloneThread &operator=(const CloneThread &) = delete;

    /// Runs `job` on the thread and waits for it. It must not throw, and may reach only what it holds itself.
    /// @return false when it did not return in time: thread and job are left behind until the process ends, and all
    /// further jobs are passed over
    [[nodiscard]] bool run(std::function<void()> job);

private:
    struct Desk;
    std::shared_ptr<Desk> m_desk; ///< the thread's too
    std::thread m_thread;
    bool m_isLost = false;
};
