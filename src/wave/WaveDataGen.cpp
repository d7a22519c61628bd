#include "wave/WaveDataGen.h"

#include "analysis/AnalogParameters.h"
#include "controls/Look.h"
#include "controls/Truncate.h"
#include "settings/Globals.h"

#include <QFontMetrics>

#include <algorithm>
#include <utility>

WaveDataGen *gWaveGen = nullptr;

WaveDataGen::WaveDataGen(QObject *parent) : QThread(parent)
{
    gWaveGen = this;
    connect(this, &WaveDataGen::frameReady, this, &WaveDataGen::takeFrame, Qt::QueuedConnection);
    connect(&m_measurer, &AnalogMeasurer::measured, this, &WaveDataGen::takeAChnTexts, Qt::QueuedConnection);
    start(QThread::InheritPriority);
}

WaveDataGen::~WaveDataGen()
{
    {
        const Lock lock(m_mutex);
        m_quitting = true;
    }
    m_wake.notify_all();
    wait();
    const Lock lock(m_mutex); // orders the worker's last writes before the members' end
    gWaveGen = nullptr;
}

// ---- the window and what it shows -------------------------------------------------------------------------

double WaveDataGen::ratioSasPix() const
{
    return window().ratio;
}

double WaveDataGen::viewStart() const
{
    return window().start;
}

int WaveDataGen::viewWidth() const
{
    return m_width;
}

std::span<const SmpWaveRun> WaveDataGen::digLine(int chn) const
{
    return m_front.digLine(chn);
}

std::span<const SmpAChnPoint> WaveDataGen::aChnLine(int chn) const
{
    return m_front.aChnLine(chn);
}

std::span<const TimeTick> WaveDataGen::timeTicks() const
{
    return m_front.timeTicks();
}

QString WaveDataGen::aChnParamText(int chn) const
{
    return m_aChnParamTexts.value(chn);
}

int WaveDataGen::aChnProbe(int chn) const
{
    return m_aChnProbes.value(chn, 1);
}

void WaveDataGen::setAChnProbe(int chn, int factor)
{
    if (chn < 0) {
        return;
    }
    while (m_aChnProbes.size() <= chn) {
        m_aChnProbes.append(1);
    }
    m_aChnProbes[chn] = factor;
}

// ---- sources and sizes ------------------------------------------------------------------------------------

void WaveDataGen::setDataSource(const SmpData *source)
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
        resizeFrames();
    }
    m_wake.notify_all(); // it may wait for an acknowledgement of what is gone

    m_placementDue = false;
    m_history.clear();
    m_measurer.cancel();
    m_aChnParamTexts.clear();
    for (int chn = 0; source && chn < source->aChnCount; ++chn) {
        m_aChnParamTexts.append(QString());
    }
}

void WaveDataGen::setViewWidth(int width)
{
    updateMetrics();
    Lock lock(m_mutex);
    m_released.wait(lock, [this] { return !m_computing; });
    m_width = std::clamp(width, 0, maxViewWidth);
    resizeFrames();
}

/// Gives every frame the size of the present source and width. The caller holds the mutex, and has seen to it that the
/// worker computes nothing.
void WaveDataGen::resizeFrames()
{
    dropFrames();
    const int chnCount = m_input.source ? m_input.source->chnCount : 0;
    const int aChnCount = m_input.source ? m_input.source->aChnCount : 0;
    for (WaveFrame *frame : {&m_front, &m_ready, &m_back}) {
        frame->resize(chnCount, aChnCount, m_width);
    }
}

/// Makes void what the worker computes or has handed over. The caller holds the mutex.
void WaveDataGen::dropFrames()
{
    ++m_generation;
    m_hasReady = false;
    m_animation.done = 0;
    m_input.window = window();
}

void WaveDataGen::setClampToData(bool clamp)
{
    const Lock lock(m_mutex);
    m_clampToData = clamp;
}

void WaveDataGen::setSampleRateHz(std::int64_t rate)
{
    const Lock lock(m_mutex);
    m_input.sampleRateHz = rate;
}

/// Fonts are measured here, on the main thread; frames are computed with the numbers.
void WaveDataGen::updateMetrics()
{
    if (m_metricsDpi == gDpi && m_metricsFont == gFontMain) {
        return;
    }
    m_metricsDpi = gDpi;
    m_metricsFont = gFontMain;
    const QFontMetrics fontMetrics(gFontMain);
    TimeTicks::LabelMetrics metrics;
    metrics.digitWidth = dp(6);
    metrics.margin = dp(8);
    metrics.scale = uiScale();
    for (std::size_t unit = 0; unit < TimeTicks::unitNames.size(); ++unit) {
        metrics.unitWidth[unit] = fontMetrics.horizontalAdvance(QLatin1String(TimeTicks::unitNames[unit]));
    }
    const Lock lock(m_mutex);
    m_input.metrics = metrics;
}

// ---- calls that change the window -------------------------------------------------------------------------

std::int64_t WaveDataGen::sampleCount() const
{
    return m_input.source ? m_input.source->sampleCount() : 0;
}

bool WaveDataGen::isComplete() const
{
    return m_input.source && m_input.source->complete();
}

/// Computes the frame of `window` at once.
void WaveDataGen::showWindow(const TimeWindow &window)
{
    updateMetrics();
    Lock lock(m_mutex);
    m_front.setWindow(TimeAxis::finite(window));
    dropFrames();
    const WaveInput input = m_input;
    lock.unlock();
    m_front.render(input);
}

void WaveDataGen::refresh(const TimeWindow &window)
{
    showWindow(window);
    emit sigViewRefresh(true);
}

void WaveDataGen::settle()
{
    Lock lock(m_mutex);
    if (!m_clampToData) {
        return;
    }
    request(AnimMode::settle, 1, 0);
    lock.unlock();
    m_wake.notify_all();
}

void WaveDataGen::updateLines()
{
    if (m_placementDue && m_width > 0) {
        placeCapture();
    } else {
        showWindow(window());
    }
}

/// Places the window for a new capture by `viewState`, and computes its frame.
void WaveDataGen::placeCapture()
{
    TimeWindow placed = window();
    m_placementDue = m_width < 1;
    if (!m_placementDue) {
        std::int64_t count = 0;
        TimeAxis::Placement placement;
        placement.viewState = viewState;
        placement.lastTrgPos = m_lastTriggerPos;
        {
            const SmpReadLock reading(m_input.source);
            count = reading ? m_input.source->smpCount() : 0;
            placement.trgPos = reading ? m_input.source->trgPos() : 0;
        }
        {
            const Lock lock(m_mutex);
            placement.clampToData = m_clampToData;
        }
        placed = TimeAxis::place(placed, count, m_width, placement);
        m_lastTriggerPos = placement.trgPos;
    }
    showWindow(placed);
}

void WaveDataGen::dataReady()
{
    m_history.clear();
    placeCapture();
    measureAnalog();
    emit sigViewRefresh(false);
}

/// Hands copies of the analog samples to the measurer: it reads no capture, and a capture waits only for the copying.
void WaveDataGen::measureAnalog()
{
    AnalogMeasurer::Job job;
    {
        const SmpReadLock reading(m_input.source);
        for (int chn = 0; chn < m_aChnParamTexts.size(); ++chn) {
            const std::span<const std::int8_t> samples =
                reading ? analogSamples(*m_input.source, chn) : std::span<const std::int8_t>();
            job.channels.push_back({{samples.begin(), samples.end()}, aChnProbe(chn)});
        }
        job.rate = reading ? m_input.source->smpFrequ() : 0;
    }
    if (job.channels.empty()) {
        emit sigParameterRefreshAch();
    } else {
        m_measurer.measure(std::move(job));
    }
}

void WaveDataGen::takeAChnTexts()
{
    if (std::optional<QStringList> texts = m_measurer.takeTexts()) {
        m_aChnParamTexts = *std::move(texts);
        emit sigParameterRefreshAch();
    }
}

void WaveDataGen::zoomFit()
{
    leave(ViewHistory::Step::zoom);
    refresh(TimeAxis::fit(sampleCount(), m_width));
}

void WaveDataGen::zoomToTrigger()
{
    leave(ViewHistory::Step::zoom);
    std::int64_t trigger = 0;
    {
        const SmpReadLock reading(m_input.source);
        if (reading) {
            trigger = m_input.source->trgPos();
        }
    }
    refresh(TimeAxis::centredOn({0.0, 1.0}, double(trigger), m_width));
    settle();
}

void WaveDataGen::zoomInAt(int x)
{
    if (window().ratio >= minRatio) {
        zoomAt(AnimMode::zoomIn, x);
    }
}

void WaveDataGen::zoomOutAt(int x)
{
    zoomAt(AnimMode::zoomOut, x);
}

void WaveDataGen::zoomAt(AnimMode mode, int x)
{
    leave(ViewHistory::Step::zoom);
    const int column = TimeAxis::clampColumn(x, m_width);
    if (disAnimateZoom) {
        refresh(TimeAxis::zoomFrame(window(), column, animStepCount, mode == AnimMode::zoomIn).window);
        settle();
        return;
    }
    Lock lock(m_mutex);
    request(mode, animStepCount, column);
    m_frameAck = true; // the first frame need not wait for a paint
    lock.unlock();
    m_wake.notify_all();
}

void WaveDataGen::zoomStepIn()
{
    if (window().ratio < minRatio) {
        return;
    }
    leave(ViewHistory::Step::zoom);
    refresh(TimeAxis::zoomAbout(window(), m_width / 2, std::max(window().ratio * 0.9, minRatio)));
    settle();
}

void WaveDataGen::zoomStepOut()
{
    leave(ViewHistory::Step::zoom);
    refresh(TimeAxis::zoomAbout(window(), m_width / 2, window().ratio * 1.1));
    settle();
}

void WaveDataGen::zoomSetRatio(double ratio)
{
    leave(ViewHistory::Step::zoom);
    refresh(TimeAxis::zoomAbout(window(), m_width / 2, TimeAxis::clampRatio(ratio, sampleCount(), m_width)));
    settle();
}

void WaveDataGen::zoomToRange(double a, double b)
{
    leave(ViewHistory::Step::zoom);
    showWindow(TimeAxis::showRange(a, b, m_width));
    emit sigViewRefresh(false);
    settle();
}

void WaveDataGen::zoomToFill(double a, double b)
{
    leave(ViewHistory::Step::zoom);
    refresh(TimeAxis::fillWith(a, b, m_width));
    settle();
}

void WaveDataGen::goBack()
{
    TimeWindow before;
    if (m_history.back(window(), before)) {
        refresh(before);
        settle();
    }
}

void WaveDataGen::setViewStart(double start)
{
    leave(ViewHistory::Step::move);
    refresh({start, window().ratio});
    settle();
}

void WaveDataGen::jumpPrevEdge(int chn)
{
    leave(ViewHistory::Step::zoom);
    std::int64_t edge = -1;
    {
        const SmpReadLock reading(m_input.source);
        if (reading) {
            edge = m_input.source->prevEdge(chn, truncated64(window().start));
        }
    }
    refresh(TimeAxis::centredOn(window(), double(std::max<std::int64_t>(edge, 0)), m_width));
    settle();
}

void WaveDataGen::jumpNextEdge(int chn)
{
    leave(ViewHistory::Step::zoom);
    std::int64_t edge = 0;
    {
        const SmpReadLock reading(m_input.source);
        if (reading) {
            edge = m_input.source->nextEdge(chn, TimeAxis::rightEnd(window(), m_width));
            if (edge < 0) {
                edge = m_input.source->smpCount();
            }
        }
    }
    refresh(TimeAxis::centredOn(window(), double(edge), m_width));
    settle();
}

void WaveDataGen::setRatioKeepStart(double ratio)
{
    if (sampleCount() > 0) {
        refresh({window().start, ratio});
        settle();
        return;
    }
    showWindow({double(m_width) * ratio * -0.5, ratio});
    emit sigViewRefresh(false);
}

void WaveDataGen::setFrameAck()
{
    {
        const Lock lock(m_mutex);
        m_frameAck = true;
    }
    m_wake.notify_all();
}

bool WaveDataGen::isAnimating() const
{
    const Lock lock(m_mutex);
    return m_animation.steps > 0 || m_refreshDue;
}

/// Shows the newest frame of the worker. A frame that has become void meanwhile still leads to a refresh, of what
/// replaced it: whoever acknowledges frames can rely on one signal for each.
void WaveDataGen::takeFrame()
{
    Lock lock(m_mutex);
    if (!m_refreshDue) {
        return;
    }
    m_refreshDue = false;
    const bool decRefresh = std::exchange(m_decRefreshDue, false);
    if (m_hasReady) {
        std::swap(m_front, m_ready);
        m_hasReady = false;
    }
    lock.unlock();
    emit sigViewRefresh(decRefresh);
}
