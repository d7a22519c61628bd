#include "acquisition/SmpCtrlTransfer.h"

#include "acquisition/SmpCnvtTransfer.h"
#include "acquisition/SmpDevice.h"
#include "acquisition/SmpHost.h"
#include "acquisition/SmpState.h"
#include "acquisition/SmpTransport.h"
#include "store/SmpWriter.h"

#include <algorithm>

namespace {

constexpr int byteChannels = 8; ///< of a device that sends one byte a sample

/// Buffers that may be queued before the converter is waited for, even if the trigger found fewer.
constexpr int leastRoom = 2;

/// Buffers that may still come when a capture is complete: those that were on their way when the device was stopped.
constexpr int mostBehindEnd = 4;

} // namespace

SmpCtrlTransfer::SmpCtrlTransfer(SmpHost &host, SmpCnvtTransfer &converter)
    : SmpCtrlThread(host), m_converter(converter)
{}

void SmpCtrlTransfer::work()
{
    m_host.report(smpState::starting, 0, 0);
    m_device->bulkStop();
    prepare();
    m_host.smpSta.store(smpState::filling, std::memory_order_release);
    m_host.endErr.store(0, std::memory_order_release);
    if (!beginStore(0)) {
        return;
    }
    if (!m_converter.startRun(m_settings, *m_device)) {
        endWithoutData(smpError::noMemory, 0);
        return;
    }
    endRun(m_transport->readStream(0, *this));
}

bool SmpCtrlTransfer::isGivenUp() const
{
    return m_host.smpStop.load(std::memory_order_acquire) || m_host.smpAbort.load(std::memory_order_acquire);
}

/// Brings everything that a run counts to its start.
void SmpCtrlTransfer::prepare()
{
    std::vector<std::int32_t> kinds; // of the channels in use
    for (std::size_t chn = 0; chn < m_settings.enable.size(); ++chn) {
        if (m_settings.enable[chn] != 0) {
            kinds.push_back(m_settings.trig[chn]);
        }
    }
    m_window.start(m_settings.bytes8 ? byteChannels : int(kinds.size()), m_settings.preTrig);
    m_sliced.start(kinds);
    m_bytes8.start(SmpTrigBytes8::masksOf(m_settings.trig));
    m_mostQueued = 0;
    m_behindEnd = 0;
    m_converter.firstOffset = 0;
    m_host.smpBufs.clear();
    m_host.smpSem.acquire(m_host.smpSem.available()); // nobody else takes or gives while no run is under way
}

void SmpCtrlTransfer::onStart()
{
    (void)m_device->startDevice(); // a device that does not start sends nothing, which ends the run
    m_device->bulkStart();
    if (m_host.smpStop.load(std::memory_order_acquire)) {
        m_device->stopDevice(); // the stop that was asked for may have come before the start
    }
    if (m_host.smpAbort.load(std::memory_order_acquire)) {
        m_transport->breakOffStream(); // as may this, which then reached no run
    }
}

void SmpCtrlTransfer::onData(SmpChunk bytes, std::int32_t length)
{
    const int sta = m_host.smpSta.load(std::memory_order_acquire);
    if (sta >= smpState::reading || m_host.smpAbort.load(std::memory_order_acquire)) {
        if (++m_behindEnd > mostBehindEnd) {
            m_transport->breakOffStream(); // the device has not heard that it is to stop
        }
        return; // the buffer is freed
    }
    // While the trigger has not come the converter takes nothing, so that the bytes stay until they are searched.
    const std::span<const std::uint8_t> received(bytes.bytes(), std::size_t(std::clamp(length, 0, bytes.size())));
    m_host.smpBufs.append(std::move(bytes), std::int32_t(received.size()));
    if (sta == smpState::filling || sta == smpState::waiting) {
        search(received);
    } else {
        m_window.receive(std::int64_t(received.size()));
    }
    if (m_host.smpSta.load(std::memory_order_acquire) >= smpState::sampling) {
        goOnSampling();
    }
}

/// Searches a buffer that has just been received. @return the trigger's sample in the stream, or -1
std::int64_t SmpCtrlTransfer::scan(std::span<const std::uint8_t> bytes)
{
    if (m_settings.bytes8) {
        const std::int64_t found = m_bytes8.scan(bytes);
        return found < 0 ? -1 : m_window.recvBytes() + found;
    }
    const std::int64_t found = m_sliced.scan(bytes);
    return found < 0 ? -1 : m_window.recvGroups() * SmpStreamWindow::groupSamples + found;
}

void SmpCtrlTransfer::search(std::span<const std::uint8_t> bytes)
{
    const std::int64_t trigger = scan(bytes);
    m_window.receive(std::int64_t(bytes.size()));
    if (trigger >= 0) {
        startSampling(trigger);
    } else if (m_window.samplesHeld() < m_window.preTrig()) {
        emit m_host.sigSmpSta(m_host.smpSta.load(std::memory_order_acquire), 0, percent());
    } else {
        dropWhileWaiting();
        m_host.report(smpState::waiting, 0, m_settings.trgPosition);
    }
}

/// Lets go of the oldest buffers as long as the newer ones alone fill the window.
void SmpCtrlTransfer::dropWhileWaiting()
{
    while (m_host.smpBufs.count() > 0 && m_window.mayDrop(m_host.smpBufs.oldestLength())) {
        dropOldest();
    }
}

void SmpCtrlTransfer::dropOldest()
{
    m_window.drop(m_host.smpBufs.oldestLength());
    m_host.smpBufs.dropOldest();
}

void SmpCtrlTransfer::startSampling(std::int64_t trigger)
{
    SmpWriter(*m_host.smpData).setTrgPos(m_window.trigger(trigger));
    m_host.report(smpState::sampling, 0, percent());
    handOver(-1); // the newest one follows as any other
    m_mostQueued = std::max(m_host.smpBufs.count(), leastRoom);
}

/// One more buffer of a capture whose trigger has come.
void SmpCtrlTransfer::goOnSampling()
{
    if (m_window.samplesHeld() >= m_settings.depth) {
        m_device->stopDevice();
        m_host.smpSta.store(smpState::reading, std::memory_order_release);
        m_host.smpSem.release();
        return;
    }
    if (m_host.smpSta.load(std::memory_order_acquire) == smpState::sampling) { // else the converter has seen a stop
        emit m_host.sigSmpSta(smpState::sampling, 0, percent());
    }
    m_host.smpSem.release();
    m_host.smpBufs.waitForRoom(m_mostQueued, roomWaitMs);
}

void SmpCtrlTransfer::endRun(int result)
{
    if (m_window.samplesHeld() < m_settings.depth && !m_host.smpStop.load(std::memory_order_acquire)) {
        m_host.endErr.store(std::uint32_t(result != 0 ? result : smpError::endedEarly), std::memory_order_release);
        m_device->stopDevice();
    }
    if (m_host.smpSta.load(std::memory_order_acquire) < smpState::sampling) {
        handOver(1); // no trigger came: the converter has nothing yet
    } else {
        m_host.smpSem.release();
    }
    if (m_behindEnd > mostBehindEnd) {
        m_device->stopDevice(); // once more, lest it goes on to send
    }
}

/// Gives the converter a token for each buffer, and `tokens` more, after the buffers are dropped that lie before the
/// capture's first sample.
void SmpCtrlTransfer::handOver(int tokens)
{
    while (m_host.smpBufs.count() > 1 && m_host.smpBufs.oldestLength() <= m_window.firstOffset()) {
        dropOldest();
    }
    m_converter.firstOffset = std::int32_t(m_window.firstOffset());
    m_host.smpSem.release(m_host.smpBufs.count() + tokens);
}

int SmpCtrlTransfer::percent() const
{
    return int(m_window.samplesHeld() * 100 / m_settings.depth);
}
