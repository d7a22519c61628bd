#pragma once

#include <QThread>

#include <atomic>

/// A thread that works once in a while: of a capture, where it is a member of the device object, or of a bring-up. Its
/// owner joins it before it goes.
///
/// QThread orders the memory of who starts, the thread and who waits for it, but inside a library that a race detector
/// cannot look into: what is written before launch() and read after join() is ordered here once more.
class SmpThread : public QThread {
    Q_OBJECT
public:
    /// Waits for the thread's end; afterwards all that it wrote may be read. Not on the thread itself.
    void join();

protected:
    /// Starts the thread, after its last run has ended. One thread at a time.
    /// @return false when the system gives no thread
    [[nodiscard]] bool launch();
    /// What the thread does.
    virtual void work() = 0;

    void run() final;

private:
    std::atomic<bool> m_launched{false};
    std::atomic<bool> m_left{true};
};
