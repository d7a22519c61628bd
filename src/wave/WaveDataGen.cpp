#include "wave/WaveDataGen.h"

#include "controls/Truncate.h"
#include "settings/Globals.h"

#include <algorithm>

WaveDataGen *gWaveGen = nullptr;

WaveDataGen::WaveDataGen(QObject *parent) : QThread(parent), m_maker([this] { emit frameReady(QPrivateSignal()); })
{
    gWaveGen = this;
    connect(this, &WaveDataGen::frameReady, this, &WaveDataGen::takeFrame, Qt::QueuedConnection);
    connect(&m_readings, &AnalogReadings::changed, this, &WaveDataGen::sigParameterRefreshAch);
    start(QThread::InheritPriority);
}

WaveDataGen::~WaveDataGen()
{
    m_maker.quit();
    wait();
    gWaveGen = nullptr;
}

void WaveDataGen::run()
{
    m_maker.run();
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
    return m_maker.width();
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
    return m_readings.text(chn);
}

int WaveDataGen::aChnProbe(int chn) const
{
    return m_readings.probe(chn);
}

void WaveDataGen::setAChnProbe(int chn, int factor)
{
    m_readings.setProbe(chn, factor);
}

// ---- sources and sizes ------------------------------------------------------------------------------------

void WaveDataGen::setDataSource(const SmpData *source)
{
    m_maker.setSource(source, m_front);
    m_placementDue = false;
    m_history.clear();
    m_readings.clear(source);
}

void WaveDataGen::setViewWidth(int width)
{
    updateMetrics();
    m_maker.setWidth(std::clamp(width, 0, maxViewWidth), m_front);
}

void WaveDataGen::setClampToData(bool clamp)
{
    m_maker.setClampToData(clamp);
}

void WaveDataGen::setSampleRateHz(std::int64_t rate)
{
    m_maker.setSampleRateHz(rate);
}

void WaveDataGen::updateMetrics()
{
    if (m_metrics.update()) {
        m_maker.setMetrics(m_metrics.metrics());
    }
}

// ---- calls that change the window -------------------------------------------------------------------------

std::int64_t WaveDataGen::sampleCount() const
{
    return source() ? source()->sampleCount() : 0;
}

bool WaveDataGen::isComplete() const
{
    return source() && source()->complete();
}

/// Computes the frame of `window` at once.
void WaveDataGen::showWindow(const TimeWindow &window)
{
    updateMetrics();
    m_front.setWindow(TimeAxis::finite(window));
    m_front.render(m_maker.replaceFrames(m_front.window()));
}

void WaveDataGen::refresh(const TimeWindow &window)
{
    showWindow(window);
    emit sigViewRefresh(true);
}

void WaveDataGen::updateLines()
{
    if (m_placementDue && viewWidth() > 0) {
        placeCapture();
    } else {
        showWindow(window());
    }
}

/// Places the window for a new capture by `viewState`, and computes its frame.
void WaveDataGen::placeCapture()
{
    TimeWindow placed = window();
    m_placementDue = viewWidth() < 1;
    if (!m_placementDue) {
        std::int64_t count = 0;
        TimeAxis::Placement placement;
        placement.viewState = viewState;
        placement.lastTrgPos = m_lastTriggerPos;
        {
            const SmpReadLock reading(source());
            count = reading ? source()->smpCount() : 0;
            placement.trgPos = reading ? source()->trgPos() : 0;
        }
        placement.clampToData = m_maker.clampsToData();
        placed = TimeAxis::place(placed, count, viewWidth(), placement);
        m_lastTriggerPos = placement.trgPos;
    }
    showWindow(placed);
}

void WaveDataGen::dataReady()
{
    m_history.clear();
    m_maker.endAnimation();
    placeCapture();
    m_readings.measure(source());
    emit sigViewRefresh(false);
}

void WaveDataGen::zoomFit()
{
    leave(ViewHistory::Step::zoom);
    refresh(TimeAxis::fit(sampleCount(), viewWidth()));
}

void WaveDataGen::zoomToTrigger()
{
    leave(ViewHistory::Step::zoom);
    std::int64_t trigger = 0;
    {
        const SmpReadLock reading(source());
        if (reading) {
            trigger = source()->trgPos();
        }
    }
    refresh(TimeAxis::centredOn({0.0, 1.0}, double(trigger), viewWidth()));
    m_maker.settle();
}

void WaveDataGen::zoomInAt(int x)
{
    if (window().ratio >= minRatio) {
        zoomAt(true, x);
    }
}

void WaveDataGen::zoomOutAt(int x)
{
    zoomAt(false, x);
}

void WaveDataGen::zoomAt(bool in, int x)
{
    leave(ViewHistory::Step::zoom);
    const int column = TimeAxis::clampColumn(x, viewWidth());
    if (disAnimateZoom) {
        refresh(TimeAxis::zoomFrame(window(), column, animStepCount, in).window);
        m_maker.settle();
    } else {
        m_maker.zoom(in, column);
    }
}

void WaveDataGen::zoomStepIn()
{
    if (window().ratio < minRatio) {
        return;
    }
    leave(ViewHistory::Step::zoom);
    refresh(TimeAxis::zoomAbout(window(), viewWidth() / 2, std::max(window().ratio * 0.9, minRatio)));
    m_maker.settle();
}

void WaveDataGen::zoomStepOut()
{
    leave(ViewHistory::Step::zoom);
    refresh(TimeAxis::zoomAbout(window(), viewWidth() / 2, window().ratio * 1.1));
    m_maker.settle();
}

void WaveDataGen::zoomSetRatio(double ratio)
{
    leave(ViewHistory::Step::zoom);
    refresh(TimeAxis::zoomAbout(window(), viewWidth() / 2, TimeAxis::clampRatio(ratio, sampleCount(), viewWidth())));
    m_maker.settle();
}

void WaveDataGen::zoomToRange(double a, double b)
{
    leave(ViewHistory::Step::zoom);
    showWindow(TimeAxis::showRange(a, b, viewWidth()));
    emit sigViewRefresh(false);
    m_maker.settle();
}

void WaveDataGen::zoomToFill(double a, double b)
{
    leave(ViewHistory::Step::zoom);
    refresh(TimeAxis::fillWith(a, b, viewWidth()));
    m_maker.settle();
}

void WaveDataGen::goBack()
{
    TimeWindow before;
    if (m_history.back(window(), before)) {
        refresh(before);
        m_maker.settle();
    }
}

void WaveDataGen::setViewStart(double start)
{
    leave(ViewHistory::Step::move);
    refresh({start, window().ratio});
    m_maker.settle();
}

void WaveDataGen::jumpPrevEdge(int chn)
{
    leave(ViewHistory::Step::zoom);
    std::int64_t edge = -1;
    {
        const SmpReadLock reading(source());
        if (reading) {
            edge = source()->prevEdge(chn, truncated64(window().start));
        }
    }
    refresh(TimeAxis::centredOn(window(), double(std::max<std::int64_t>(edge, 0)), viewWidth()));
    m_maker.settle();
}

void WaveDataGen::jumpNextEdge(int chn)
{
    leave(ViewHistory::Step::zoom);
    std::int64_t edge = 0;
    {
        const SmpReadLock reading(source());
        if (reading) {
            edge = source()->nextEdge(chn, TimeAxis::rightEnd(window(), viewWidth()));
            if (edge < 0) {
                edge = source()->smpCount();
            }
        }
    }
    refresh(TimeAxis::centredOn(window(), double(edge), viewWidth()));
    m_maker.settle();
}

void WaveDataGen::setRatioKeepStart(double ratio)
{
    if (sampleCount() > 0) {
        refresh({window().start, ratio});
        m_maker.settle();
        return;
    }
    showWindow({double(viewWidth()) * ratio * -0.5, ratio});
    emit sigViewRefresh(false);
}

void WaveDataGen::setFrameAck()
{
    m_maker.setFrameAck();
}

bool WaveDataGen::isAnimating() const
{
    return m_maker.isAnimating();
}

/// Shows the newest frame of the worker. A frame that has become void meanwhile still leads to a refresh, of what
/// replaced it: whoever acknowledges frames can rely on one signal for each.
void WaveDataGen::takeFrame()
{
    bool decRefresh = false;
    if (m_maker.take(m_front, decRefresh)) {
        emit sigViewRefresh(decRefresh);
    }
}
