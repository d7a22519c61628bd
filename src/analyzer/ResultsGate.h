#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

class AnalyzerResults;
class LostReaders;
class ResultsReader;

/// Who keeps results alive for a reader that does not come out of them. Main thread.
class ResultsKeeper {
public:
    virtual ~ResultsKeeper() = default;
    /// Whether it can: a pass is taken from nobody else.
    [[nodiscard]] virtual bool owns(const AnalyzerResults *results) const = 0;
    /// Keeps them as long as `reader` isStuck().
    virtual void keep(const AnalyzerResults *results, std::shared_ptr<ResultsReader> reader) = 0;
};

/// Who reads results for longer than an event, and who replaces them: the list of results, the texts of bubbles and an
/// export hold a ResultsPass while they have a pointer into any results; before results are replaced the manager closes
/// the gate, which waits until every pass is given back.
///
/// Holders ask isWanted() between two frames and leave within 20 ms when it says so. One that is inside of a plug-in's
/// code at the end of the patience loses its pass instead: its thread touches nothing any more when it comes out, and
/// the keeper keeps what it is in. Who follows it into the same results waits for it, since results make one text of a
/// kind at a time. Without a keeper the gate waits without limit. Any thread.
class ResultsGate {
public:
    static constexpr std::chrono::seconds grace{2}; ///< for one text

    /// @param keeper  outlives the gate; null for none
    explicit ResultsGate(ResultsKeeper *keeper = nullptr);
    ResultsGate(const ResultsGate &) = delete;
    ResultsGate &operator=(const ResultsGate &) = delete;

    /// Of a change with its readers; a test's is longer. Main thread.
    std::chrono::milliseconds patience{40};

    /// A change is waiting: give the pass back. Cost: one atomic load.
    [[nodiscard]] bool isWanted() const { return modifyPending.load(std::memory_order_acquire); }
    /// Takes the pass from a reader if it is inside of a plug-in's code. @return whether it was taken. Main thread.
    [[nodiscard]] bool take(const std::shared_ptr<ResultsReader> &reader);
    /// Takes the pass from those that have been inside of one text since `grace`, as calls of this tell.
    /// @param now  in the caller's time  @return what they are in. Main thread, every now and then.
    [[nodiscard]] std::vector<const AnalyzerResults *> takeFromStuck(std::chrono::milliseconds now);
    /// Joins the thread of a reader that was asked to end; one that is held fast in a plug-in is left behind. Main
    /// thread.
    /// @param waitForEnd  waits at most that long, and tells whether the thread has nothing more to do
    void endThread(std::thread &thread, const std::shared_ptr<ResultsReader> &reader,
                   const std::function<bool(std::chrono::milliseconds)> &waitForEnd);

private:
    friend class ResultsPass;
    friend class ResultsChange;

    [[nodiscard]] bool takeLocked(const std::shared_ptr<ResultsReader> &reader);

    ResultsKeeper *const m_keeper;
    std::atomic<bool> modifyPending{false};
    const std::shared_ptr<LostReaders> m_lost;
    std::mutex m_mutex; ///< of what follows
    std::condition_variable m_changed;
    std::vector<std::shared_ptr<ResultsReader>> m_holders;
    int m_changes = 0;
};

/// What the holder of a pass is doing, for who may have to go on without it. A thread uses one for all of its passes.
class ResultsReader {
public:
    /// Runs code of a plug-in, which must not throw; behind those that lost their pass within the same results. Needs a
    /// pass. Cost: three atomic operations. The reader's thread.
    /// @return false when the pass was taken meanwhile: nothing that belongs to others may be touched any more
    template<class Call>
    [[nodiscard]] bool inside(const AnalyzerResults *results, const Call &call)
    {
        m_results.store(results, std::memory_order_relaxed);
        m_calls.store(m_calls.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
        m_state.store(State::Inside, std::memory_order_release);
        if (waitForTurn()) {
            call();
        }
        State state = State::Inside;
        return m_state.compare_exchange_strong(state, State::Outside, std::memory_order_acq_rel);
    }
    /// One call may take as long as it likes.
    void setLong(bool isLong) { m_isLong.store(isLong, std::memory_order_relaxed); }

    /// Its pass was taken, and it never gets another one. Any thread.
    [[nodiscard]] bool isLost() const { return m_state.load(std::memory_order_acquire) == State::Lost; }
    /// Lost, and still inside of results(). Any thread.
    [[nodiscard]] bool isStuck() const { return isLost() && !m_isOut.load(std::memory_order_acquire); }
    /// What it is in, of one that is lost.
    [[nodiscard]] const AnalyzerResults *results() const { return m_results.load(std::memory_order_relaxed); }

private:
    friend class ResultsGate;
    friend class ResultsPass;
    enum class State : std::uint8_t { Outside, Inside, Lost };

    /// @return false when the pass was taken before nobody else was in results()
    [[nodiscard]] bool waitForTurn() const;

    std::atomic<State> m_state{State::Outside};
    std::atomic<const AnalyzerResults *> m_results{nullptr}; ///< written outside only
    std::atomic<std::uint64_t> m_calls{0};
    std::atomic<bool> m_isLong{false};
    std::atomic<bool> m_isOut{false};    ///< of one that is lost
    std::shared_ptr<LostReaders> m_lost; ///< its gate's, which may be gone; the reader's thread's, with the pass
    // The gate's, under its mutex:
    std::uint64_t m_seenCalls = 0;
    std::chrono::milliseconds m_seenAt{0};
};

/// Admission to read results, while it lives; false when a change is under way. Any thread.
class ResultsPass {
public:
    explicit ResultsPass(ResultsGate &gate, std::shared_ptr<ResultsReader> reader = std::make_shared<ResultsReader>());
    /// Of a reader that is lost: it is out now. The gate may be gone by then.
    ~ResultsPass();
    ResultsPass(const ResultsPass &) = delete;
    ResultsPass &operator=(const ResultsPass &) = delete;
    explicit operator bool() const { return m_gate != nullptr; }

private:
    ResultsGate *m_gate; ///< null when refused
    std::shared_ptr<ResultsReader> m_reader;
};

/// The right to replace results, while it lives: no pass is held, and none is given. Its constructor waits for those
/// who have one, and takes it from those who do not come. Main thread, which must hold no pass itself; may nest.
class ResultsChange {
public:
    explicit ResultsChange(ResultsGate &gate) : ResultsChange(gate, gate.patience) {}
    /// @param patience  with readers that are inside of a plug-in's code
    ResultsChange(ResultsGate &gate, std::chrono::milliseconds patience);
    ~ResultsChange();
    ResultsChange(const ResultsChange &) = delete;
    ResultsChange &operator=(const ResultsChange &) = delete;

private:
    ResultsGate &m_gate;
};
