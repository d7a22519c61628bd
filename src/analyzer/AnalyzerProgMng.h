#pragma once

#include <QThread>

#include <atomic>
#include <condition_variable>
#include <corvanlux/analyzer/Analyzer.h>
#include <corvanlux/analyzer/ProgressManager.h>
#include <mutex>

/// The worker thread of one analyzer, as the decoder runtime drives it.
///
/// Made by AnalyzerMaker and let go by AnalyzerRuns, on the main thread. A worker that is through parks itself, and
/// leaves when it is let go: by its owner, and in no other way. The decoder's stack is unwound by then.
class AnalyzerProgMng : public QThread, public ProgressManager {
    Q_OBJECT
public:
    /// @param decoder  not owned; must outlive the thread
    explicit AnalyzerProgMng(Analyzer *decoder);
    /// The thread has ended: isIdle().
    ~AnalyzerProgMng() override;

    Analyzer *const analyzer; ///< not owned
    std::atomic<double> progress{0.0};

    // ---- main thread -----------------------------------------------------------------------------------------------

    /// No thread runs: it may be started, or destroyed.
    [[nodiscard]] bool isIdle() const;
    /// The worker is through and waits to be let go.
    [[nodiscard]] bool isParked() const;
    /// Asks the worker to leave. Returns at once; a worker that is through already is not asked.
    void askToStop();
    /// Waits at most `ms` until the worker is parked or there is none. @return whether that is so
    [[nodiscard]] bool waitParked(int ms);
    /// Lets a parked worker go and waits for its thread, which has nothing more to do.
    void letGo();

    // ---- of the runtime --------------------------------------------------------------------------------------------

    void StartWorker() override;
    /// On the worker thread; returns when the worker is let go. A decode that was not asked to stop is announced.
    void WorkerEnded() override;
    void SetProgress(double value) override { progress.store(value, std::memory_order_relaxed); }

signals:
    /// The decode has come to its natural end. Emitted on the worker thread.
    void sigStopWorkThread(AnalyzerProgMng *me, Analyzer *anly);

protected:
    void run() override;

private:
    enum class State { Idle, Running, Parked };

    mutable std::mutex m_mutex; ///< of all below; never held while calling out
    std::condition_variable m_changed;
    State m_state = State::Idle;
    bool stopPending = false; ///< set by askToStop(), cleared by the worker
    bool m_letGo = false;
    std::atomic<bool> m_left{true}; ///< the thread has nothing more to do: orders its memory for letGo()
};

Q_DECLARE_METATYPE(Analyzer *)
Q_DECLARE_METATYPE(AnalyzerProgMng *)
