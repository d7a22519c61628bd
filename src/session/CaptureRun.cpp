#include "session/CaptureRun.h"

#include "acquisition/SmpState.h"
#include "device/DevBase.h"
#include "device/DevInit.h"
#include "device/DeviceGlobals.h"
#include "session/Session.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

namespace {

constexpr int captureLookMs = 20;

} // namespace

CaptureRun::CaptureRun(Session &session) : m_session(session), m_isTold(session.watchDevices())
{
    connect(&session, &Session::sigInitSta, this, &CaptureRun::takeInitReport);
    connect(&session, &Session::sigSmpSta, this, &CaptureRun::takeReport);
    connect(&session, &Session::sigSmpDataReady, this, [this] { m_published = true; });
}

void CaptureRun::takeInitReport(int sta, int err, int value)
{
    if (m_isCapturing) {
        return; // the capture tells what becomes of it
    }
    m_last = {End::Failed, sta, err};
    if (err == 0 && told) {
        told(sta, value);
    }
}

void CaptureRun::takeReport(int sta, int err, int value)
{
    if (err == smpError::malformedRecord || m_last.err != 0) {
        return; // a note; what comes behind an error
    }
    m_last = {End::Failed, sta, err};
    if (err == 0 && told) {
        told(sta, value);
    }
}

void CaptureRun::runUntil(const std::function<bool()> &hasEnded)
{
    QEventLoop loop;
    QTimer timer;
    connect(&timer, &QTimer::timeout, &loop, [&] {
        if (hasEnded()) {
            loop.quit();
        }
    });
    timer.start(captureLookMs);
    loop.exec();
}

CaptureRun::Outcome CaptureRun::bringUp(Milliseconds most)
{
    constexpr Milliseconds lookAgain(250); // where the system does not tell of instruments
    m_last = {};
    QElapsedTimer clock;
    clock.start();
    qint64 lastLook = 0;
    m_session.lookForDevice();
    Outcome outcome;
    runUntil([&] {
        if (!isWanted()) {
            outcome = {End::Stopped};
            return true;
        }
        if (gDev->connected) {
            outcome = {};
            return true;
        }
        // Of some steps an instrument may do without: an error is the end when nothing more is tried.
        if (m_last.err != 0 && !m_session.bringUp().isWorking()) {
            outcome = m_last;
            return true;
        }
        if (clock.hasExpired(most.count())) {
            outcome = {End::NoInstrument};
            return true;
        }
        if (!m_isTold && clock.elapsed() - lastLook > lookAgain.count()) {
            lastLook = clock.elapsed();
            m_session.lookForDevice();
        }
        return false;
    });
    return outcome;
}

void CaptureRun::awaitLook()
{
    constexpr qint64 mostMs = 2000;
    m_session.lookForDevice();
    QElapsedTimer clock;
    clock.start();
    runUntil([&] { return !gDev->connected || !m_session.bringUp().isWorking() || clock.hasExpired(mostMs); });
}

CaptureRun::Outcome CaptureRun::capture(std::optional<Milliseconds> trigger)
{
    constexpr qint64 mostAfterStopMs = 10'000;
    m_last = {};
    m_published = false;
    if (!m_session.startCapture()) {
        return {End::Failed, smpState::starting, smpError::notReady};
    }
    m_isCapturing = true;
    const bool onInstrument = gDev->connected;
    bool isLate = false;
    bool isStopped = false;
    bool hasDied = false;
    int quietLooks = 0;
    QElapsedTimer clock;
    clock.start();
    QElapsedTimer stopClock;
    runUntil([&] {
        const bool isOver = !gDev->isCapturing() && (m_published || m_last.err != 0);
        if (isOver) {
            return true;
        }
        if (isStopped) {
            // One that was stopped before it began has no data; the last word of a thread may still be on its way.
            hasDied = stopClock.hasExpired(mostAfterStopMs);
            const bool isQuiet = m_last.sta == smpState::done && !gDev->isCapturing() && !gDev->hasThreads();
            quietLooks = isQuiet ? quietLooks + 1 : 0;
            return hasDied || quietLooks > 1;
        }
        isLate = trigger && m_last.sta < smpState::sampling && clock.hasExpired(trigger->count());
        if (isLate || !isWanted()) {
            isStopped = true;
            stopClock.start();
            m_session.stopCapture();
        }
        return false;
    });
    if (hasDied) {
        m_last.err = smpError::timedOut;
    }
    if (m_last.err != 0) {
        awaitLook(); // the capture may hear of it before the bus does
    }
    m_isCapturing = false;
    if (m_last.err != 0) {
        return {onInstrument && !gDev->connected ? End::Unplugged : End::Failed, m_last.sta, m_last.err};
    }
    if (isLate) {
        return {End::NoTrigger, m_last.sta};
    }
    if (isStopped) {
        return {m_published ? End::Stopped : End::StoppedEmpty};
    }
    return {};
}
