#pragma once

#include "UrbQueue.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

/// Emulated instruments, the time that passes for them, and a thread that moves their data: what all faces share that
/// serve an instrument within a test's process.
///
/// Owned by the test, and outlives the platforms over it. Any thread may use it; an instrument itself is reached only
/// through with(), which holds the bus's one lock.
class InstrumentBus {
public:
    using Clock = std::chrono::steady_clock;

    virtual ~InstrumentBus();
    InstrumentBus(const InstrumentBus &) = delete;
    InstrumentBus &operator=(const InstrumentBus &) = delete;

    /// Adds an instrument, which is not plugged in yet. @return its index
    int add(const emulator::InstrumentOptions &options, std::shared_ptr<emulator::LogicSignal> signal = nullptr);
    void plug(int index = 0);
    void unplug(int index = 0);
    /// Calls `job` with an instrument under the lock. It must not call the bus.
    template<class Job>
    auto with(int index, const Job &job)
    {
        const Turn turn(*this);
        return job(*m_ports[std::size_t(index)]->instrument);
    }
    template<class Job>
    auto with(const Job &job)
    {
        return with(0, job);
    }
    /// The fewest bulk reads that were still queued when one had been filled; -1 before the first. Below 1 the host has
    /// left the instrument without a read.
    [[nodiscard]] int fewestReadsLeft(int index = 0);
    /// Tells each arrival twice, as some systems do.
    void announceTwice() { m_announcements = 2; }

protected:
    /// @param timeScale  the instruments' time passes so many times faster than the real one
    explicit InstrumentBus(double timeScale) : m_timeScale(timeScale), m_lastTick(Clock::now()), m_time(m_lastTick) {}
    /// Starts and stops the thread: the last thing that a constructor does, and the first of a destructor.
    void start();
    void stop();

    // What a face does, on the thread.

    /// A transfer has ended. Under the lock.
    virtual void completed(int port, const emulator::Urb &urb) = 0;
    /// Data have been moved, and time has passed. Under the lock.
    virtual void afterPump() {}
    /// A device has come or gone. Without the lock.
    virtual void changed(int port, bool attached, unsigned generation) = 0;

    /// A port of the bus. Its device is another one for the host after each arrival.
    struct Port {
        std::unique_ptr<emulator::Instrument> instrument;
        std::unique_ptr<emulator::UrbQueue> urbs;
        unsigned toldGeneration = 0; ///< what the host was last told of
        bool toldAttached = false;
    };

public:
    /// The lock, with precedence over the pump, which would else take it again before anybody wakes up.
    class Turn {
    public:
        explicit Turn(InstrumentBus &bus) : m_bus(bus)
        {
            m_bus.m_callers.fetch_add(1, std::memory_order_relaxed);
            m_lock = std::unique_lock(m_bus.m_mutex);
        }
        ~Turn()
        {
            m_lock.unlock();
            m_bus.m_callers.fetch_sub(1, std::memory_order_relaxed);
            m_bus.m_wake.notify_one();
        }
        Turn(const Turn &) = delete;
        Turn &operator=(const Turn &) = delete;
        /// Lets the pump work until `condition` is notified.
        void wait(std::condition_variable &condition)
        {
            m_bus.m_wake.notify_one();
            m_bus.m_callers.fetch_sub(1, std::memory_order_relaxed);
            condition.wait(m_lock);
            m_bus.m_callers.fetch_add(1, std::memory_order_relaxed);
        }

    private:
        InstrumentBus &m_bus;
        std::unique_lock<std::mutex> m_lock;
    };

protected:
    // All under the lock.
    [[nodiscard]] bool isPresent(int port, unsigned generation) const;
    /// Lets the real time that has passed pass for the instruments, and for who waits for them: not more than a moment
    /// of it, so that they stand still when the machine does.
    void passTime();
    /// The time that has passed here: what limits of time are measured by.
    [[nodiscard]] Clock::time_point time() const { return m_time; }
    /// Moves data. @return true when there is more to do at once
    bool pumpOnce();
    /// Takes what is present for told.
    void forgetChanges();

    std::mutex m_mutex;
    std::vector<std::unique_ptr<Port>> m_ports;

private:
    /// Tells of what has come and gone since the last call. @return true if something had
    bool tellChanges(std::unique_lock<std::mutex> &lock);
    [[nodiscard]] bool hasWork() const;
    void run();

    std::atomic<int> m_callers{0};  ///< threads that hold the lock or wait for it, the pump not counted
    std::condition_variable m_wake; ///< for the pump: there is something to do
    const double m_timeScale;
    Clock::time_point m_lastTick;
    Clock::time_point m_time;
    std::atomic<int> m_announcements{1};
    bool m_stop = false;
    std::thread m_pump;
};
