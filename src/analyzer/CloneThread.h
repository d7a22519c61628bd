#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <thread>

/// A thread for code of a plug-in that may never return: who waits for it waits no longer than the patience, in which a
/// machine that stands still hardly counts.
///
/// Any thread may own it; its jobs all run on the same one. Knows nothing of decoders.
class CloneThread {
public:
    explicit CloneThread(std::chrono::milliseconds patience = std::chrono::seconds(5));
    /// Joins the thread, unless a job was left behind. Such a thread ends when its job returns after all.
    ~CloneThread();
    CloneThread(const CloneThread &) = delete;
    CloneThread &operator=(const CloneThread &) = delete;

    /// Runs `job` on the thread and waits for it. It must not throw, and may reach only what it holds itself.
    /// @param clearUp  run on the thread too, after a job that returned too late
    /// @return false when it did not return in time: thread and job are left behind, if need be until the process ends,
    /// and all further jobs are passed over
    [[nodiscard]] bool run(std::function<void()> job, std::function<void()> clearUp = {});

private:
    struct Desk;
    std::chrono::milliseconds m_patience;
    std::shared_ptr<Desk> m_desk; ///< the thread's too
    std::thread m_thread;
    bool m_isLost = false;
};
