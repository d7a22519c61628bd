#pragma once

#include "acquisition/InterfaceDevCallback.h"
#include "acquisition/SmpDevice.h"
#include "acquisition/SmpRunSettings.h"
#include "acquisition/SmpThread.h"
#include "store/SmpRecordFormat.h"

#include <cstdint>
#include <optional>

class SmpCnvtStorage;
class SmpHost;
class SmpTransport;

/// Runs a capture of a device that samples into its own memory: starts it, asks how far it is until it has ended or the
/// user stops it, and then has its records sent.
///
/// A member of the device object, joined before that goes. What it receives it hands to SmpCnvtStorage, by one token of
/// the host's semaphore a buffer, and a last one at the end of the run.
class SmpCtrlStorage final : public SmpThread, public InterfaceDevCallback {
    Q_OBJECT
public:
    SmpCtrlStorage(SmpHost &host, SmpCnvtStorage &converter);

    /// Starts a run. Main thread, while none is busy; returns at once. The host has a store; the device and the
    /// transport, whose receiver this object is, outlive the run.
    void startRun(const SmpRunSettings &settings, SmpDevice &device, SmpTransport &transport);

    // ---- called by the transport, on this thread
    void onStart() override;
    void onData(SmpChunk bytes, std::int32_t length) override;

    /// The part of a ring that holds a capture.
    struct Window {
        std::int64_t address = 0; ///< of its first byte
        std::int32_t size = 0;    ///< bytes; it may go on at the ring's begin
    };
    /// The window for what a device tells of its capture: whole groups. None when it lies outside a memory of `memSize`
    /// bytes. Pure.
    [[nodiscard]] static std::optional<Window> windowOf(const SmpCaptureInfo &info, SmpRecordFormat format,
                                                        std::int32_t memSize);

protected:
    void work() override;

private:
    [[nodiscard]] bool awaitCapture();
    void readBack();
    void end(int err, int value);
    [[nodiscard]] SmpRecordFormat format() const;

    SmpHost &m_host;
    SmpCnvtStorage &m_converter;
    // Written before the thread starts, then its own.
    SmpRunSettings m_settings;
    SmpDevice *m_device = nullptr;
    SmpTransport *m_transport = nullptr;
    std::int64_t m_recvBytes = 0; ///< in the read-back
};
