#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <algorithm>
#include <benchmark/benchmark.h>
#include <ctime>

/// The longest time in which the event loop of the main thread has not come round, from here to report(): what a user
/// sees as a window that stands still. With it the most processor time that the thread itself took in such a gap, which
/// is the part that the program answers for. Main thread, one loop at a time.
class LoopGap : public QObject {
public:
    LoopGap()
    {
        m_clock.start();
        m_usedBefore = used();
        connect(&m_timer, &QTimer::timeout, this, &LoopGap::beat);
        m_timer.start(1); // ms: what is measured is at least that
    }

    /// Ends the measurement: counters `gap` and `gapProcessor`, ms.
    void report(benchmark::State &state)
    {
        end();
        state.counters["gap"] = m_longest;
        state.counters["gapProcessor"] = m_mostUsed;
    }
    /// Ends the measurement of a part of something: its processor time as counter `part`, ms, and the longest of all
    /// parts as report() tells it.
    void reportPart(benchmark::State &state, const char *part)
    {
        end();
        const auto raise = [&state](const char *name, double value) {
            benchmark::Counter &counter = state.counters[name];
            counter = std::max(double(counter), value);
        };
        raise("gap", m_longest);
        raise("gapProcessor", m_mostUsed);
        raise(part, m_mostUsed);
    }

private:
    void end()
    {
        beat();
        m_timer.stop();
    }

    /// Processor time of this thread, ms.
    static double used()
    {
        std::timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return double(time.tv_sec) * 1e3 + double(time.tv_nsec) * 1e-6;
    }

    void beat()
    {
        const double now = used();
        m_longest = std::max(m_longest, double(m_clock.nsecsElapsed()) * 1e-6);
        m_mostUsed = std::max(m_mostUsed, now - m_usedBefore);
        m_clock.restart();
        m_usedBefore = now;
    }

    QTimer m_timer;
    QElapsedTimer m_clock;
    double m_usedBefore = 0;
    double m_longest = 0;
    double m_mostUsed = 0;
};
