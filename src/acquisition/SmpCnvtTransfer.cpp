#include "acquisition/SmpCnvtTransfer.h"

#include "acquisition/SmpDevice.h"
#include "acquisition/SmpHost.h"
#include "acquisition/SmpState.h"

#include <utility>

namespace {

constexpr std::int32_t goesOn = -1; ///< a buffer that is not the first

} // namespace

SmpCnvtTransfer::SmpCnvtTransfer(SmpHost &host) : m_host(host) {}

bool SmpCnvtTransfer::startRun(const SmpRunSettings &settings, SmpDevice &device)
{
    join();
    m_bytes8 = settings.bytes8;
    m_depth = settings.depth;
    m_device = &device;
    return launch();
}

void SmpCnvtTransfer::work()
{
    bool stored = true;
    bool first = true;
    for (;;) {
        m_host.smpSem.acquire();
        if (m_host.smpStop.load(std::memory_order_acquire)) {
            m_host.smpSta.store(smpState::reading, std::memory_order_release);
        }
        SmpChunk bytes;
        std::int32_t length = 0;
        if (!m_host.smpBufs.take(bytes, length)) {
            break;
        }
        if (stored && !m_host.smpAbort.load(std::memory_order_acquire)) {
            stored = decode({bytes.bytes(), std::size_t(length)}, std::exchange(first, false) ? firstOffset : goesOn);
            if (!stored) {
                m_device->stopDevice();
            }
        }
        bytes.reset();
        if (m_host.smpSta.load(std::memory_order_acquire) == smpState::reading) {
            m_host.report(smpState::reading, 0, int(m_host.smpData->smpCount() * 100 / m_depth));
        }
    }
    publish(stored);
}

bool SmpCnvtTransfer::decode(std::span<const std::uint8_t> bytes, std::int32_t start)
{
    std::int64_t samples = 0;
    SmpData &data = *m_host.smpData;
    return m_bytes8 ? data.addBytes8(bytes, start, samples) : data.addSliced(bytes, start, samples);
}

/// Closes the store, and tells how the capture ended.
void SmpCnvtTransfer::publish(bool stored)
{
    const bool holdsData = m_host.smpData->smpCount() > 0;
    if (holdsData) {
        m_host.smpData->finish(m_depth);
    } else {
        m_host.smpData->trim();
    }
    const bool isWanted = holdsData && !m_host.smpAbort.load(std::memory_order_acquire);
    const int error = stored ? int(m_host.endErr.load(std::memory_order_acquire)) : smpError::noMemory;
    if (error == 0) {
        m_host.smpSta.store(smpState::done, std::memory_order_release);
    }
    const int sta = m_host.smpSta.load(std::memory_order_acquire);
    // From here on the next capture may be asked for, and all that the host holds is its own; its threads wait for this
    // one's end.
    m_host.smpBusy.store(false, std::memory_order_release);
    emit m_host.sigSmpSta(sta, error, 0);
    if (isWanted) {
        emit m_host.sigSmpDataReady();
    }
}
