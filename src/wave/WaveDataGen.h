#pragma once

#include "store/SmpData.h"
#include "wave/AnalogReadings.h"
#include "wave/FrameMaker.h"
#include "wave/RulerMetrics.h"
#include "wave/TimeAxis.h"
#include "wave/TimeTicks.h"
#include "wave/ViewHistory.h"
#include "wave/WaveFrame.h"

#include <QString>
#include <QThread>

#include <cstdint>
#include <span>

/// The view's time window, and the lines that the items draw: computed once a frame, in place.
///
/// Pixels are logical: device pixels / uiScale(). One object for the life of the program, on the main thread, with a
/// worker thread of its own for animated zooms, whose work is FrameMaker's. A call on the main thread that changes the
/// window computes its frame at once and makes what the worker may still be computing void. An animation that is under
/// way then goes on from the new window with the frames that it has left, unless the call ends in a settle, which takes
/// the animation's place. The worker's newest frame is taken on the main thread before sigViewRefresh.
class WaveDataGen : public QThread {
    Q_OBJECT
public:
    /// Starts the worker thread.
    explicit WaveDataGen(QObject *parent = nullptr);
    /// Ends the worker thread, also in the middle of an animation, and waits for it.
    ~WaveDataGen() override;

    static constexpr int animStepCount = TimeAxis::animStepCount; ///< frames of an animated zoom
    static constexpr double minRatio = TimeAxis::minRatio;        ///< samples per pixel
    static constexpr int maxViewWidth = 65536;                    ///< logical pixels, far beyond any screen

    // ---- main thread ---------------------------------------------------------------------------------------------
    [[nodiscard]] double ratioSasPix() const; ///< samples per logical pixel of the frame that is shown
    [[nodiscard]] double viewStart() const;   ///< sample position of logical pixel 0 of the frame that is shown
    [[nodiscard]] int viewWidth() const;      ///< logical pixels
    /// The capture that is shown; null while the device object is being replaced. To be read under a SmpReadLock.
    [[nodiscard]] const SmpData *source() const { return m_maker.source(); }
    [[nodiscard]] std::int64_t sampleCount() const; ///< of the source, 0 unless it is complete
    [[nodiscard]] bool isComplete() const;          ///< the source is complete, be it empty

    /// Null while the device object is being replaced: waits until the worker has let go of the former source. Ends an
    /// animation. The view has no columns until the next setViewWidth(); the window stays.
    void setDataSource(const SmpData *source);
    /// False for the mixed-signal model, whose window may lie past its data.
    void setClampToData(bool clamp);
    /// The rate of the ruler while an analog model has no capture, Hz. Seen by the next frame.
    void setSampleRateHz(std::int64_t rate);
    /// Takes the memory of all frames and empties the lines; updateLines() fills them. Widths are cut to 0 to
    /// maxViewWidth. Waits for the worker to leave the frame that it computes; an animation goes on at the new width.
    void setViewWidth(int width);

    /// Computes the lines and ticks of the present window anew. Emits nothing.
    void updateLines();
    /// A capture or a file has delivered data: places the window by `viewState`. Ends an animation, which was of the
    /// capture before. The analog channels are measured on a thread of its own; until sigParameterRefreshAch their
    /// texts are those of the capture before.
    void dataReady();
    /// The whole capture fills the view.
    void zoomFit();
    /// One sample per pixel, the trigger in the middle.
    void zoomToTrigger();
    /// Twice as near, or as far, about column `x`: animated, unless `disAnimateZoom`.
    void zoomInAt(int x);
    void zoomOutAt(int x);
    /// The ratio times 0.9, or 1.1, about the middle column.
    void zoomStepIn();
    void zoomStepOut();
    /// The ratio, within its limits, about the middle column.
    void zoomSetRatio(double ratio);
    /// Samples a to b fill the middle half of the view.
    void zoomToRange(double a, double b);
    /// Samples a to b fill the view.
    void zoomToFill(double a, double b);
    /// The view before the user's last step, back to the one in which the capture came; nothing before that.
    void goBack();
    /// Scrolls. What lies past the data springs back 100 ms later.
    void setViewStart(double start);
    /// The channel's last edge at or before the window's start comes to the middle column; the data's start for none.
    void jumpPrevEdge(int chn);
    /// The channel's first edge after the window comes to the middle column; the data's end for none.
    void jumpNextEdge(int chn);
    /// After a change of the view's width, on a model with analog channels.
    void setRatioKeepStart(double ratio);

    /// The last frame has been painted: an animation may go on.
    void setFrameAck();
    /// True while frames of an animation or of a settle are still to come.
    [[nodiscard]] bool isAnimating() const;

    /// The runs of a channel's line, empty for none. Valid until the next call that changes the window or the next
    /// return to the event loop.
    [[nodiscard]] std::span<const SmpWaveRun> digLine(int chn) const;
    [[nodiscard]] std::span<const SmpAChnPoint> aChnLine(int chn) const;
    [[nodiscard]] std::span<const TimeTick> timeTicks() const;
    /// The measured values of an analog channel as one text; empty for none.
    [[nodiscard]] QString aChnParamText(int chn) const;
    /// The probe factor of an analog channel, for its measured values.
    void setAChnProbe(int chn, int factor);
    /// 1 until set.
    [[nodiscard]] int aChnProbe(int chn) const;

signals:
    /// The lines have changed. `decRefresh` asks also for the decoded results, which are spared on frames between.
    /// Emitted on the main thread.
    void sigViewRefresh(bool decRefresh);
    /// The texts of aChnParamText() are those of the newest capture. Emitted on the main thread.
    void sigParameterRefreshAch();
    /// The worker has handed over a frame; reaches the main thread through its event loop.
    void frameReady(QPrivateSignal);

protected:
    void run() override;

private:
    [[nodiscard]] const TimeWindow &window() const { return m_front.window(); }
    void showWindow(const TimeWindow &window);
    void refresh(const TimeWindow &window);
    void leave(ViewHistory::Step step) { m_history.leave(window(), step); }
    void zoomAt(bool in, int x);
    void placeCapture();
    void updateMetrics();
    void takeFrame();

    WaveFrame m_front; ///< what the items draw
    ViewHistory m_history;
    RulerMetrics m_metrics;
    std::int64_t m_lastTriggerPos = 0; ///< of the capture that was placed last
    bool m_placementDue = false;       ///< a capture came while the view had no columns
    FrameMaker m_maker;                ///< the worker's part
    AnalogReadings m_readings;
};

/// The one generator, for items and panels. Set by the constructor, cleared by the destructor.
extern WaveDataGen *gWaveGen;
