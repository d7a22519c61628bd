#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>

/// Who reads results for longer than an event, and who replaces them: the list of results and an export hold a
/// ResultsPass while they have a pointer into any results; before results are replaced the manager closes the gate,
/// which waits until every pass is given back.
///
/// Holders ask isWanted() between two frames and leave within 20 ms when it says so. Any thread.
class ResultsGate {
public:
    /// A change is waiting: give the pass back. Cost: one atomic load.
    [[nodiscard]] bool isWanted() const { return modifyPending.load(std::memory_order_acquire); }

private:
    friend class ResultsPass;
    friend class ResultsChange;

    std::atomic<bool> modifyPending{false};
    std::mutex m_mutex; ///< of what follows
    std::condition_variable m_changed;
    int m_holders = 0;
    int m_changes = 0;
};

/// Admission to read results, while it lives; false when a change is under way. Any thread.
class ResultsPass {
public:
    explicit ResultsPass(ResultsGate &gate);
    ~ResultsPass();
    ResultsPass(const ResultsPass &) = delete;
    ResultsPass &operator=(const ResultsPass &) = delete;
    explicit operator bool() const { return m_gate != nullptr; }

private:
    ResultsGate *m_gate; ///< null when refused
};

/// The right to replace results, while it lives: no pass is held, and none is given. Its constructor waits for those
/// who have one. Main thread, which must hold no pass itself; may nest.
class ResultsChange {
public:
    explicit ResultsChange(ResultsGate &gate);
    ~ResultsChange();
    ResultsChange(const ResultsChange &) = delete;
    ResultsChange &operator=(const ResultsChange &) = delete;

private:
    ResultsGate &m_gate;
};
