#include "acquisition/SmpCtrlThread.h"

#include "acquisition/SmpHost.h"
#include "acquisition/SmpState.h"

#include <algorithm>

void SmpCtrlThread::startRun(const SmpRunSettings &settings, SmpDevice &device, SmpTransport &transport)
{
    join(); // the last run's thread may still have a signal to emit
    m_settings = settings;
    m_settings.depth = std::max<std::int64_t>(settings.depth, 1);
    m_settings.enable.resize(std::size_t(m_host.smpData->chnCount), 0);
    m_settings.trig.resize(m_settings.enable.size(), 0);
    m_device = &device;
    m_transport = &transport;
    m_host.smpBusy.store(true, std::memory_order_release);
    if (!launch()) {
        m_host.smpSta.store(smpState::starting, std::memory_order_release);
        endWithoutData(smpError::noMemory, 0);
    }
}

bool SmpCtrlThread::beginStore(std::uint32_t trgRecord)
{
    if (m_host.openStore([this] { return isGivenUp(); })) {
        m_host.smpData->begin(trgRecord, m_settings.frequency, m_settings.enable);
        return true;
    }
    const bool isWanted = !m_host.smpAbort.load(std::memory_order_acquire);
    m_host.smpSta.store(smpState::done, std::memory_order_release);
    endWithoutData(0, 0);
    if (isWanted) {
        emit m_host.sigSmpDataReady(); // the last capture can be read again
    }
    return false;
}

void SmpCtrlThread::endWithoutData(int err, int value)
{
    const int sta = m_host.smpSta.load(std::memory_order_acquire);
    m_host.smpBusy.store(false, std::memory_order_release); // from here on the host's state is the next run's
    emit m_host.sigSmpSta(sta, err, value);
}
