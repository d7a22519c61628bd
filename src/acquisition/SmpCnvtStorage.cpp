#include "acquisition/SmpCnvtStorage.h"

#include "acquisition/SmpDevice.h"
#include "acquisition/SmpHost.h"
#include "acquisition/SmpState.h"

#include <algorithm>

SmpCnvtStorage::SmpCnvtStorage(SmpHost &host) : m_host(host) {}

bool SmpCnvtStorage::startRun(const SmpRunSettings &settings, SmpRecordFormat format, SmpDevice &device)
{
    constexpr std::size_t group16 = 16;
    constexpr std::size_t group32 = 32;
    join();
    m_format = format;
    m_depth = settings.depth;
    m_device = &device;
    m_groupBytes = format == SmpRecordFormat::Rle16 ? group16 : group32;
    if (format == SmpRecordFormat::Mixed16) {
        // Its decoder wants the whole memory at once.
        m_groupBytes = std::size_t(std::max(m_host.readSize.load(std::memory_order_acquire), 1));
    }
    m_consumed = 0;
    m_rest.clear();
    return launch();
}

void SmpCnvtStorage::work()
{
    bool stored = true;
    for (;;) {
        m_host.smpSem.acquire();
        SmpChunk bytes;
        std::int32_t length = 0;
        if (!m_host.smpBufs.take(bytes, length)) {
            break;
        }
        if (stored && !m_host.smpAbort.load(std::memory_order_acquire)) {
            stored = decode({bytes.bytes(), std::size_t(length)});
            if (!stored) {
                m_device->stopDevice();
            }
        }
        bytes.reset();
        m_host.report(smpState::reading, 0, percent());
    }
    if (stored && !m_rest.empty()) {
        stored = decodeWhole(m_rest); // what ended early
    }
    publish(stored);
}

/// Decodes the next bytes of the memory, wherever the buffers cut them. @return false when memory is spent
bool SmpCnvtStorage::decode(std::span<const std::uint8_t> bytes)
{
    if (!m_rest.empty()) {
        const std::size_t missing = std::min(m_groupBytes - m_rest.size(), bytes.size());
        m_rest.insert(m_rest.end(), bytes.begin(), bytes.begin() + std::ptrdiff_t(missing));
        bytes = bytes.subspan(missing);
        if (m_rest.size() < m_groupBytes) {
            return true;
        }
        const bool stored = decodeWhole(m_rest);
        m_rest.clear();
        if (!stored) {
            return false;
        }
    }
    const std::size_t whole = bytes.size() / m_groupBytes * m_groupBytes;
    m_rest.assign(bytes.begin() + std::ptrdiff_t(whole), bytes.end());
    return whole == 0 || decodeWhole(bytes.first(whole));
}

bool SmpCnvtStorage::decodeWhole(std::span<const std::uint8_t> bytes)
{
    SmpData &data = *m_host.smpData;
    switch (m_format) {
    case SmpRecordFormat::Mixed16:
        return data.addMixed16(bytes, m_consumed);
    case SmpRecordFormat::Rle32:
        return data.addRle32(bytes, m_consumed);
    default:
        return data.addRle16(bytes, m_consumed);
    }
}

/// How much of what was asked for is converted; 0 when nothing was asked for.
int SmpCnvtStorage::percent() const
{
    const std::int32_t total = m_host.readSize.load(std::memory_order_acquire);
    return total > 0 ? int(float(m_consumed) * 100.0F / float(total)) : 0;
}

/// Closes the store, and tells how the capture ended.
void SmpCnvtStorage::publish(bool stored)
{
    SmpData &data = *m_host.smpData;
    const bool holdsData = m_consumed > 0;
    if (holdsData) {
        data.finish(m_depth);
    } else {
        data.trim();
    }
    const bool isWanted = holdsData && !m_host.smpAbort.load(std::memory_order_acquire);
    const int error = stored ? int(m_host.endErr.load(std::memory_order_acquire)) : smpError::noMemory;
    const int staBefore = m_host.smpSta.load(std::memory_order_acquire);
    const int malformed = error == 0 ? data.zeroSmpCnt() : -1;
    if (error == 0) {
        m_host.smpSta.store(smpState::done, std::memory_order_release);
    }
    // From here on the next capture may be asked for, and all that the host holds is its own; its threads wait for this
    // one's end.
    m_host.smpBusy.store(false, std::memory_order_release);
    if (malformed >= 0) {
        emit m_host.sigSmpSta(staBefore, smpError::malformedRecord, malformed);
    }
    emit m_host.sigSmpSta(error == 0 ? smpState::done : staBefore, error, 0);
    if (isWanted) {
        emit m_host.sigSmpDataReady();
    }
}
