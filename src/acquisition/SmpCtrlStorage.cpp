#include "acquisition/SmpCtrlStorage.h"

#include "acquisition/SmpCnvtStorage.h"
#include "acquisition/SmpHost.h"
#include "acquisition/SmpState.h"
#include "acquisition/SmpTransport.h"

#include <algorithm>

namespace {

constexpr int pollMs = 50;
constexpr int startMs = 1;       ///< a device may begin so much later than its start is acknowledged
constexpr int wideChannels = 32; ///< of the device that sends records of 32 bits

} // namespace

SmpCtrlStorage::SmpCtrlStorage(SmpHost &host, SmpCnvtStorage &converter) : SmpCtrlThread(host), m_converter(converter)
{}

/// The device was started long before. Who breaks a run off that has not begun yet reaches none: the last word of that
/// is the flag that was set before.
void SmpCtrlStorage::onStart()
{
    if (isGivenUp()) {
        m_transport->breakOffStream();
    }
}

void SmpCtrlStorage::onData(SmpChunk bytes, std::int32_t length)
{
    const std::int32_t received = std::clamp(length, 0, bytes.size());
    m_recvBytes += received;
    m_host.smpBufs.append(std::move(bytes), received);
    m_host.smpSem.release();
}

std::optional<SmpCtrlStorage::Window> SmpCtrlStorage::windowOf(const SmpCaptureInfo &info, SmpRecordFormat format,
                                                               std::int32_t memSize)
{
    std::int64_t size = memSize;
    if (format == SmpRecordFormat::Rle16) {
        size = std::int64_t(info.recordCount / 5) * 16;
    } else if (format == SmpRecordFormat::Rle32) {
        size = std::int64_t(info.recordCount / 6) * 32;
    }
    if (size > memSize || info.endAddress > std::uint32_t(memSize)) {
        return std::nullopt;
    }
    std::int64_t address = std::int64_t(info.endAddress) - size;
    if (address < 0) {
        address += memSize; // the ring wrapped
    }
    return Window{address, std::int32_t(size)};
}

std::int64_t SmpCtrlStorage::dueMs(std::int64_t depth, std::int64_t frequency)
{
    return depth * 1000 / std::max<std::int64_t>(frequency, 1);
}

int SmpCtrlStorage::firstPollMs(std::int64_t due)
{
    return int(due % pollMs) + 1 + startMs; // `due` is cut to whole milliseconds
}

void SmpCtrlStorage::work()
{
    if (!awaitCapture()) {
        return;
    }
    if (m_host.smpAbort.load(std::memory_order_acquire)) {
        m_host.smpSta.store(smpState::done, std::memory_order_release);
        endWithoutData(0, 0);
    } else if (!m_transport->isOpen()) {
        endWithoutData(smpError::notOpen, 0);
    } else {
        readBack();
    }
}

/// A stop asks for what has been captured; only one more, while it is read back, gives it up.
bool SmpCtrlStorage::isGivenUp() const
{
    return m_host.smpCut.load(std::memory_order_acquire) || m_host.smpAbort.load(std::memory_order_acquire);
}

/// Starts the device and waits until it has ended or a stop is asked for. @return false when the run is over
bool SmpCtrlStorage::awaitCapture()
{
    m_host.smpSta.store(smpState::starting, std::memory_order_release);
    if (const int error = m_device->startDevice(); error != 0) {
        endWithoutData(error, 0);
        return false;
    }
    emit m_host.sigSmpSta(smpState::starting, 0, 0);
    if (m_host.smpStop.load(std::memory_order_acquire)) {
        m_device->stopDevice(); // the stop that was asked for may have come before the start
    }
    // Progress is time by the capture's length; the wait for the trigger takes any time and does not count.
    const std::int64_t expected = dueMs(m_settings.depth, m_settings.frequency);
    const std::int64_t due = std::max<std::int64_t>(expected, pollMs);
    std::int64_t ticks = 0;
    m_host.waitForStop(firstPollMs(expected));
    while (!m_host.smpStop.load(std::memory_order_acquire)) {
        std::uint16_t status = 0;
        int error = m_device->readStatus(status);
        error = error != 0 ? error : statusError(status);
        if (error != 0) {
            endWithoutData(error, status);
            return false;
        }
        if ((status & smpStatus::triggered) != 0 && (status & smpStatus::runMask) == smpStatus::runEnded) {
            m_host.report(smpState::reading, 0, 0);
            break;
        }
        const bool waits = (status & (smpStatus::triggered | smpStatus::waiting)) == smpStatus::waiting;
        if (waits) {
            m_host.report(smpState::waiting, 0, m_settings.trgPosition);
        } else {
            m_host.report((status & smpStatus::triggered) != 0 ? smpState::sampling : smpState::filling, 0,
                          int(ticks / due));
        }
        m_host.waitForStop(pollMs);
        ticks += waits ? 0 : pollMs * 100;
    }
    return true;
}

SmpRecordFormat SmpCtrlStorage::format() const
{
    const SmpData &data = *m_host.smpData;
    if (data.aChnCount > 0) {
        return SmpRecordFormat::Mixed16;
    }
    return data.chnCount == wideChannels ? SmpRecordFormat::Rle32 : SmpRecordFormat::Rle16;
}

/// Has the device's memory sent, and hands it to the converter, which ends the run.
void SmpCtrlStorage::readBack()
{
    SmpCaptureInfo info;
    if (m_device->readCaptureInfo(info) != 0) {
        endWithoutData(smpError::transfer, 0);
        return;
    }
    const std::optional<Window> window = windowOf(info, format(), m_settings.memSize);
    if (!window) {
        endWithoutData(smpError::transfer, 0); // such an answer is as good as none
        return;
    }
    m_host.readSize.store(window->size, std::memory_order_release);
    if (const int error = m_device->setReadWindow(std::uint32_t(window->address), std::uint32_t(window->size));
        error != 0) {
        endWithoutData(error, 0);
        return;
    }
    m_recvBytes = 0;
    m_host.endErr.store(0, std::memory_order_release);
    m_host.smpBufs.clear();
    m_host.smpSem.acquire(m_host.smpSem.available()); // nobody else takes or gives while nothing is converted
    const std::uint32_t trgRecord = format() == SmpRecordFormat::Mixed16 ? 0 : info.trgRecord;
    if (!beginStore(trgRecord)) {
        return;
    }
    if (!m_converter.startRun(m_settings, format(), *m_device)) {
        endWithoutData(smpError::noMemory, 0);
        return;
    }
    const int result = m_transport->readStream(window->size, *this);
    if (m_recvBytes != window->size && !isGivenUp()) {
        m_host.endErr.store(std::uint32_t(result != 0 ? result : smpError::endedEarly), std::memory_order_release);
    }
    m_host.smpSem.release();
}
