#pragma once

#include "acquisition/SmpData.h"

#include <QStringList>
#include <QThread>
#include <QVector>

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <span>
#include <vector>

/// One mark of the time ruler.
struct TimeTick {
    std::int32_t x;    ///< logical pixel
    std::int32_t kind; ///< 0 absolute label on a decade tick, 1 relative label
    char text[32];     ///< NUL-terminated
};

/// The view's time window, and the lines that the items draw: computed once a frame, in place.
///
/// Pixels are logical: device pixels / uiScale(). One object for the life of the program, on the main thread, with a
/// worker thread of its own for animated zooms. The GUI and the worker never share a buffer: the worker computes whole
/// frames (window, lines, ticks) and hands them over; the GUI takes the newest one on its own thread before
/// sigViewRefresh. A call on the main thread that changes the window computes its frame at once and makes what the
/// worker may still be computing void.
class WaveDataGen : public QThread {
    Q_OBJECT
public:
    explicit WaveDataGen(QObject *parent = nullptr);
    ~WaveDataGen() override;

    static constexpr int animStepCount = 7;  ///< frames of an animated zoom
    static constexpr double minRatio = 0.01; ///< samples per pixel

    // ---- main thread ---------------------------------------------------------------------------------------------
    [[nodiscard]] double ratioSasPix() const; ///< samples per logical pixel of the frame that is shown
    [[nodiscard]] double viewStart() const;   ///< sample position of logical pixel 0 of the frame that is shown
    [[nodiscard]] int viewWidth() const;      ///< logical pixels

    /// Null while the device object is being replaced: waits until the worker has let go of the former source.
    void setDataSource(const SmpData *source);
    /// False for the mixed-signal model, whose window may lie past its data.
    void setClampToData(bool clamp);
    /// The rate of the ruler while an analog model has no capture, Hz.
    void setSampleRateHz(std::int64_t rate);
    void setViewWidth(int width);

    void updateLines();
    void dataReady();
    void zoomFit();
    void zoomToTrigger();
    void zoomInAt(int x);
    void zoomOutAt(int x);
    void zoomStepIn();
    void zoomStepOut();
    void zoomSetRatio(double ratio);
    void zoomToRange(double a, double b);
    void setViewStart(double start);
    void jumpPrevEdge(int chn);
    void jumpNextEdge(int chn);
    void setRatioKeepStart(double ratio);

    /// The last frame has been painted: an animation may go on.
    void setFrameAck();

    /// The runs of a channel's line, empty for none. Valid until the next call that changes the window or the next
    /// return to the event loop.
    [[nodiscard]] std::span<const SmpWaveRun> digLine(int chn) const;
    [[nodiscard]] std::span<const SmpAChnPoint> aChnLine(int chn) const;
    [[nodiscard]] std::span<const TimeTick> timeTicks() const;
    [[nodiscard]] QString aChnParamText(int chn) const;
    void setAChnProbe(int chn, int factor);

signals:
    /// The lines have changed. `decRefresh` asks also for the decoded results, which are spared on frames between.
    /// Emitted on the main thread.
    void sigViewRefresh(bool decRefresh);
    void sigParameterRefreshAch();

protected:
    void run() override;
};

/// The one generator, for items and panels. Set by the constructor, cleared by the destructor.
extern WaveDataGen *gWaveGen;
