#pragma once

#include "acquisition/InterfaceDevCallback.h"
#include "acquisition/SmpRunSettings.h"
#include "acquisition/SmpThread.h"

#include <cstdint>

class SmpDevice;
class SmpHost;
class SmpTransport;

/// The thread that controls one capture of an instrument and receives its data: what the two kinds of instruments have
/// in common.
///
/// A member of the device object, joined before that goes.
class SmpCtrlThread : public SmpThread, public InterfaceDevCallback {
    Q_OBJECT
public:
    /// Starts a run. Main thread, while none is busy; returns at once. The host has a store; the device and the
    /// transport, whose receiver this object is, outlive the run. A depth below 1 counts as 1.
    void startRun(const SmpRunSettings &settings, SmpDevice &device, SmpTransport &transport);

protected:
    explicit SmpCtrlThread(SmpHost &host) : m_host(host) {}

    /// Begins the store, once those who read the last capture have left. Ends the run instead when the user gives it up
    /// meanwhile: the last capture then stays. @return false when the run has ended
    [[nodiscard]] bool beginStore(std::uint32_t trgRecord);
    /// Ends a run in which nothing is converted, in the state that it has reached.
    void endWithoutData(int err, int value);
    /// True when who waits in beginStore() is to give up.
    [[nodiscard]] virtual bool isGivenUp() const = 0;

    SmpHost &m_host;
    // Written before the thread starts, then its own.
    SmpRunSettings m_settings;
    SmpDevice *m_device = nullptr;
    SmpTransport *m_transport = nullptr;
};
