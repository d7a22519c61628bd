// The worker thread of WaveDataGen: produces the frames of animated zooms, and pulls the window back into the data.

#include "wave/WaveDataGen.h"

#include <algorithm>
#include <utility>

using namespace std::chrono_literals;

namespace {

constexpr auto framePeriod = 30ms;
constexpr auto shortestPause = 1ms;
constexpr auto overshootTime = 100ms; // how long a view past its data stays before it springs back

} // namespace

/// Replaces what the worker is asked for. The caller holds the mutex.
void WaveDataGen::request(AnimMode mode, int steps, int focusX)
{
    m_animation = {mode, steps, 0, focusX, {}, m_animation.request + 1};
}

void WaveDataGen::run()
{
    Lock lock(m_mutex);
    for (;;) {
        m_wake.wait(lock, [this] { return m_quitting || m_animation.steps > 0; });
        if (m_quitting) {
            return;
        }
        const auto begun = Clock::now();
        const bool settling = m_animation.mode == AnimMode::settle;
        if (settling && !waitForSettle(lock)) {
            continue;
        }
        if (!waitForAck(lock)) {
            continue;
        }
        produceFrame(lock);
        if (!settling && m_animation.mode != AnimMode::settle && m_animation.steps > 0) {
            pace(lock, begun);
        }
    }
}

/// The present window pulled back into the data.
TimeAxis::Settled WaveDataGen::settled(Lock &lock)
{
    const SmpData *source = m_input.source;
    m_computing = true;
    lock.unlock();
    const std::int64_t count = source ? source->sampleCount() : 0;
    lock.lock();
    m_computing = false;
    m_released.notify_all();
    return TimeAxis::settle(m_input.window, count, m_width);
}

/// Leaves an overshoot visible for a moment.
/// @return false if there is nothing to pull back, or another request has come
bool WaveDataGen::waitForSettle(Lock &lock)
{
    const std::uint64_t current = m_animation.request;
    if (!settled(lock).changed) {
        if (m_animation.request == current) {
            m_animation.steps = 0;
        }
        return false;
    }
    m_wake.wait_for(lock, overshootTime, [&] { return m_quitting || m_animation.request != current; });
    return !m_quitting && m_animation.request == current;
}

/// Never runs ahead of the screen: a slow machine shows fewer frames, not later ones.
/// @return false if another request has come meanwhile
bool WaveDataGen::waitForAck(Lock &lock)
{
    const std::uint64_t current = m_animation.request;
    m_wake.wait(lock, [&] { return m_quitting || m_frameAck || m_animation.request != current; });
    if (m_quitting || m_animation.request != current) {
        return false;
    }
    m_frameAck = false;
    return true;
}

void WaveDataGen::produceFrame(Lock &lock)
{
    if (m_animation.done == 0) {
        m_animation.base = m_input.window;
    }
    FrameJob job{m_input, m_animation, m_generation};
    const int width = m_width;
    m_computing = true;
    lock.unlock();

    bool wanted = true;
    bool atLimit = false;
    if (job.animation.mode == AnimMode::settle) {
        const std::int64_t count = job.input.source ? job.input.source->sampleCount() : 0;
        const TimeAxis::Settled back = TimeAxis::settle(job.input.window, count, width);
        job.input.window = back.window;
        wanted = back.changed;
    } else {
        const TimeAxis::ZoomFrame frame = TimeAxis::zoomFrame(
            job.animation.base, job.animation.focusX, job.animation.done + 1, job.animation.mode == AnimMode::zoomIn);
        job.input.window = frame.window;
        atLimit = frame.atLimit;
    }
    if (wanted) {
        m_back.render(job.input);
    }

    lock.lock();
    m_computing = false;
    m_released.notify_all();
    const bool isVoid = job.generation != m_generation; // then the next round looks at what has changed
    if (isVoid || !wanted) {
        m_frameAck = true; // not used up
        if (!isVoid && job.animation.request == m_animation.request) {
            m_animation.steps = 0;
        }
        return;
    }
    publish(job, atLimit);
    lock.unlock();
    emit frameReady(QPrivateSignal());
    lock.lock();
}

/// Hands the frame over, and counts it for the request that it was made for. The caller holds the mutex.
void WaveDataGen::publish(const FrameJob &job, bool atLimit)
{
    m_input.window = job.input.window;
    std::swap(m_back, m_ready);
    m_hasReady = true;
    m_refreshDue = true;
    if (job.animation.request != m_animation.request) {
        return;
    }
    ++m_animation.done;
    m_animation.steps = atLimit ? 0 : m_animation.steps - 1;
    if (m_animation.steps > 0) {
        return;
    }
    m_decRefreshDue = true;
    if (m_clampToData && m_animation.mode != AnimMode::settle) {
        request(AnimMode::settle, 1, 0);
    }
}

/// An animation runs at about 33 frames a second.
void WaveDataGen::pace(Lock &lock, Clock::time_point begun)
{
    const auto until = std::max(begun + framePeriod, Clock::now() + shortestPause);
    m_wake.wait_until(lock, until, [this] { return m_quitting; });
}
