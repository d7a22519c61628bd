#include "wave/FrameMaker.h"

#include <algorithm>
#include <utility>

using namespace std::chrono_literals;

namespace {

constexpr auto framePeriod = 30ms;
constexpr auto shortestPause = 1ms;
constexpr auto overshootTime = 100ms; // how long a view past its data stays before it springs back

} // namespace

FrameMaker::FrameMaker(std::function<void()> frameReady) : m_frameReady(std::move(frameReady)) {}

FrameMaker::~FrameMaker()
{
    const Lock lock(m_mutex); // orders the worker's last writes before the members' end
}

void FrameMaker::quit()
{
    {
        const Lock lock(m_mutex);
        m_quitting = true;
    }
    m_wake.notify_all();
}

void FrameMaker::setSource(const SmpData *source, WaveFrame &front)
{
    {
        Lock lock(m_mutex);
        m_animation.steps = 0;
        ++m_animation.request;
        m_released.wait(lock, [this] { return !m_computing; });
        m_refreshDue = false;
        m_decRefreshDue = false;
        m_input.source = source;
        m_width = 0;
        resizeFrames(front);
    }
    m_wake.notify_all(); // it may wait for an acknowledgement of what is gone
}

void FrameMaker::setWidth(int width, WaveFrame &front)
{
    Lock lock(m_mutex);
    m_released.wait(lock, [this] { return !m_computing; });
    m_width = width;
    resizeFrames(front);
}

/// Gives every frame the size of the present source and width. The caller holds the mutex, and has seen to it that the
/// worker computes nothing.
void FrameMaker::resizeFrames(WaveFrame &front)
{
    dropFrames(front.window());
    const int chnCount = m_input.source ? m_input.source->chnCount : 0;
    const int aChnCount = m_input.source ? m_input.source->aChnCount : 0;
    for (WaveFrame *frame : {&front, &m_ready, &m_back}) {
        frame->resize(chnCount, aChnCount, m_width);
    }
}

/// Makes void what the worker computes or has handed over. The caller holds the mutex.
void FrameMaker::dropFrames(const TimeWindow &window)
{
    ++m_generation;
    m_hasReady = false;
    m_animation.done = 0;
    m_input.window = window;
}

void FrameMaker::setClampToData(bool clamp)
{
    const Lock lock(m_mutex);
    m_clampToData = clamp;
}

bool FrameMaker::clampsToData() const
{
    const Lock lock(m_mutex);
    return m_clampToData;
}

void FrameMaker::setSampleRateHz(std::int64_t rate)
{
    const Lock lock(m_mutex);
    m_input.sampleRateHz = rate;
}

void FrameMaker::setMetrics(const TimeTicks::LabelMetrics &metrics)
{
    const Lock lock(m_mutex);
    m_input.metrics = metrics;
}

WaveInput FrameMaker::replaceFrames(const TimeWindow &window)
{
    const Lock lock(m_mutex);
    dropFrames(window);
    return m_input;
}

void FrameMaker::zoom(bool in, int focusX)
{
    {
        const Lock lock(m_mutex);
        request(in ? Mode::zoomIn : Mode::zoomOut, TimeAxis::animStepCount, focusX);
        m_frameAck = true; // the first frame need not wait for a paint
    }
    m_wake.notify_all();
}

void FrameMaker::settle()
{
    {
        const Lock lock(m_mutex);
        if (!m_clampToData) {
            return;
        }
        request(Mode::settle, 1, 0);
    }
    m_wake.notify_all();
}

void FrameMaker::endAnimation()
{
    {
        const Lock lock(m_mutex);
        m_animation.steps = 0;
        ++m_animation.request;
    }
    m_wake.notify_all();
}

void FrameMaker::setFrameAck()
{
    {
        const Lock lock(m_mutex);
        m_frameAck = true;
    }
    m_wake.notify_all();
}

bool FrameMaker::isAnimating() const
{
    const Lock lock(m_mutex);
    return m_animation.steps > 0 || m_refreshDue;
}

bool FrameMaker::take(WaveFrame &front, bool &decRefresh)
{
    const Lock lock(m_mutex);
    if (!m_refreshDue) {
        return false;
    }
    m_refreshDue = false;
    decRefresh = std::exchange(m_decRefreshDue, false);
    if (m_hasReady) {
        std::swap(front, m_ready);
        m_hasReady = false;
    }
    return true;
}

/// Replaces what the worker is asked for. The caller holds the mutex.
void FrameMaker::request(Mode mode, int steps, int focusX)
{
    m_animation = {mode, steps, 0, focusX, {}, m_animation.request + 1};
}

// ---- worker thread

void FrameMaker::run()
{
    Lock lock(m_mutex);
    for (;;) {
        m_wake.wait(lock, [this] { return m_quitting || m_animation.steps > 0; });
        if (m_quitting) {
            return;
        }
        const auto begun = Clock::now();
        const bool settling = m_animation.mode == Mode::settle;
        if (settling && !waitForSettle(lock)) {
            continue;
        }
        if (!waitForAck(lock)) {
            continue;
        }
        produceFrame(lock);
        if (!settling && m_animation.mode != Mode::settle && m_animation.steps > 0) {
            pace(lock, begun);
        }
    }
}

/// The present window pulled back into the data.
TimeAxis::Settled FrameMaker::settled(Lock &lock)
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
bool FrameMaker::waitForSettle(Lock &lock)
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
bool FrameMaker::waitForAck(Lock &lock)
{
    const std::uint64_t current = m_animation.request;
    m_wake.wait(lock, [&] { return m_quitting || m_frameAck || m_animation.request != current; });
    if (m_quitting || m_animation.request != current) {
        return false;
    }
    m_frameAck = false;
    return true;
}

void FrameMaker::produceFrame(Lock &lock)
{
    if (m_animation.done == 0) {
        m_animation.base = m_input.window;
    }
    Job job{m_input, m_animation, m_generation};
    const int width = m_width;
    m_computing = true;
    lock.unlock();

    bool wanted = true;
    bool atLimit = false;
    if (job.animation.mode == Mode::settle) {
        const std::int64_t count = job.input.source ? job.input.source->sampleCount() : 0;
        const TimeAxis::Settled back = TimeAxis::settle(job.input.window, count, width);
        job.input.window = back.window;
        wanted = back.changed;
    } else {
        const TimeAxis::ZoomFrame frame = TimeAxis::zoomFrame(
            job.animation.base, job.animation.focusX, job.animation.done + 1, job.animation.mode == Mode::zoomIn);
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
    m_frameReady();
    lock.lock();
}

/// Hands the frame over, and counts it for the request that it was made for. The caller holds the mutex.
void FrameMaker::publish(const Job &job, bool atLimit)
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
    if (m_clampToData && m_animation.mode != Mode::settle) {
        request(Mode::settle, 1, 0);
    }
}

/// An animation runs at about 33 frames a second.
void FrameMaker::pace(Lock &lock, Clock::time_point begun)
{
    const auto until = std::max(begun + framePeriod, Clock::now() + shortestPause);
    m_wake.wait_until(lock, until, [this] { return m_quitting; });
}
