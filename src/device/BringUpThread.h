#pragma once

#include "acquisition/SmpThread.h"

#include <atomic>
#include <memory>
#include <mutex>

class BringUpRun;

/// A thread of the bring-up: works on one run at a time.
///
/// A member of the coordinator, which lives on the main thread. A run that is begun while the last one still ends,
/// which takes until its present transfer is over, starts by itself then: nobody waits for it.
class BringUpThread : public SmpThread {
    Q_OBJECT
public:
    /// @param firstState  what a run reports with error 1 when the system gives no thread for it
    explicit BringUpThread(int firstState);

    /// Starts a run, at once or as soon as the last one has ended. Main thread; does not block.
    void begin(std::shared_ptr<BringUpRun> run);
    /// Forgets a run that has not started, and waits for the one that has, which must have been stopped: for one
    /// transfer at the most. Main thread, not inside of a call by the run.
    void end();
    /// True from begin() until the run's work has ended. Main thread.
    [[nodiscard]] bool isBusy() const { return m_next != nullptr || m_busy.load(std::memory_order_acquire); }

signals:
    /// A run's work has ended. Emitted on the thread.
    void sigEnded();

protected:
    virtual void bringUp(BringUpRun &run) = 0;

private:
    void work() final;
    void startNext();

    const int m_firstState;
    std::mutex m_mutex;                 ///< of `m_run`
    std::shared_ptr<BringUpRun> m_run;  ///< the one that the thread works on
    std::shared_ptr<BringUpRun> m_next; ///< waits for its turn; main thread
    std::atomic<bool> m_busy{false};    ///< set on the main thread when a run starts, cleared on the thread as it ends
};
