#pragma once

#include "wave/TimeAxis.h"
#include "wave/WaveFrame.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>

/// Makes the frames of animated zooms, and pulls the window back into the data, on a worker thread.
///
/// The GUI and the worker never share a buffer: the worker computes whole frames (window, lines, ticks) and hands them
/// over; the GUI takes the newest one on its own thread. What the GUI shows without the worker makes void what is being
/// computed; an animation that is under way then goes on from there with the frames that it has left, unless a settle
/// takes its place. Owned by WaveDataGen, whose thread runs it.
class FrameMaker {
public:
    /// @param frameReady  called on the worker thread, without a lock, when there is a frame to take()
    explicit FrameMaker(std::function<void()> frameReady);
    /// The worker thread has ended.
    ~FrameMaker();
    FrameMaker(const FrameMaker &) = delete;
    FrameMaker &operator=(const FrameMaker &) = delete;

    // ---- worker thread -------------------------------------------------------------------------------------------
    /// Works until quit().
    void run();

    // ---- main thread ---------------------------------------------------------------------------------------------
    /// The worker returns soon, also in the middle of an animation.
    void quit();

    /// What frames are computed from; null for none.
    [[nodiscard]] const SmpData *source() const { return m_input.source; }
    /// Waits until the worker has let go of the former source. Ends an animation. Frames have no columns then.
    /// @param front  the frame that is shown, which gets its size as well
    void setSource(const SmpData *source, WaveFrame &front);
    [[nodiscard]] int width() const { return m_width; } ///< logical pixels
    /// Gives every frame this width. Waits for the worker to leave the frame that it computes; an animation goes on.
    void setWidth(int width, WaveFrame &front);
    /// The window is pulled back into the data after a change.
    void setClampToData(bool clamp);
    [[nodiscard]] bool clampsToData() const;
    void setSampleRateHz(std::int64_t rate);
    void setMetrics(const TimeTicks::LabelMetrics &metrics);

    /// Makes void what the worker computes or has handed over. @return what the frame of `window` is computed from
    [[nodiscard]] WaveInput replaceFrames(const TimeWindow &window);
    /// Twice as near, or as far, about column `focusX`, in several frames.
    void zoom(bool in, int focusX);
    /// Has the window pulled back into the data, if it is to be.
    void settle();
    /// Makes no more of the frames that were asked for.
    void endAnimation();
    /// The last frame has been painted: an animation may go on.
    void setFrameAck();
    /// True while frames are still to come.
    [[nodiscard]] bool isAnimating() const;
    /// Swaps the newest frame in. One that has become void meanwhile counts as well, and leaves `front` as it is.
    /// @param decRefresh  out: the decoded results are to be refreshed as well
    /// @return false when none was handed over since the last call
    [[nodiscard]] bool take(WaveFrame &front, bool &decRefresh);

private:
    enum class Mode { zoomIn, zoomOut, settle };

    /// What the worker is asked for: the latest request is what its next round sees.
    struct Animation {
        Mode mode = Mode::zoomIn;
        int steps = 0;             ///< frames still to produce; the worker sleeps while it is below 1
        int done = 0;              ///< frames produced since `base`; 0 takes the present window as base
        int focusX = 0;            ///< logical pixel held still during a zoom
        TimeWindow base;           ///< window that the zoom's frames are reckoned from
        std::uint64_t request = 0; ///< raised by every request
    };

    /// A frame that the worker makes without the lock, and what tells whether it is still wanted.
    struct Job {
        WaveInput input;
        Animation animation;
        std::uint64_t generation = 0;
    };

    using Lock = std::unique_lock<std::mutex>;
    using Clock = std::chrono::steady_clock;

    void request(Mode mode, int steps, int focusX);
    void resizeFrames(WaveFrame &front);
    void dropFrames(const TimeWindow &window);

    // worker
    [[nodiscard]] bool waitForSettle(Lock &lock);
    [[nodiscard]] bool waitForAck(Lock &lock);
    void produceFrame(Lock &lock);
    void publish(const Job &job, bool atLimit);
    void pace(Lock &lock, Clock::time_point begun);
    [[nodiscard]] TimeAxis::Settled settled(Lock &lock);

    const std::function<void()> m_frameReady;
    mutable std::mutex m_mutex;         ///< guards all below; never held while computing or calling out
    std::condition_variable m_wake;     ///< for the worker: a request, an acknowledgement, the end
    std::condition_variable m_released; ///< for the main thread: m_computing has become false
    bool m_quitting = false;
    bool m_computing = false;  ///< the worker reads the source and writes m_back
    bool m_frameAck = false;   ///< the last frame has been painted
    bool m_clampToData = true; ///< the window is pulled back into the data after a change
    int m_width = 0;           ///< written by the main thread only
    WaveInput m_input;         ///< source written by the main thread only; window: of the newest frame
    Animation m_animation;
    std::uint64_t m_generation = 0; ///< raised by what makes a frame in the making void
    WaveFrame m_back;               ///< the worker's, while m_computing
    WaveFrame m_ready;              ///< handed over, not yet taken
    bool m_hasReady = false;        ///< m_ready is newer than what is shown
    bool m_refreshDue = false;      ///< a frame was told of and not taken
    bool m_decRefreshDue = false;
};
