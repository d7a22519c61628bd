#pragma once

#include "acquisition/SmpCtrlThread.h"
#include "acquisition/SmpDevice.h"
#include "store/SmpRecordFormat.h"

#include <cstdint>
#include <optional>

class SmpCnvtStorage;
class SmpHost;

/// Runs a capture of a device that samples into its own memory: starts it, asks how far it is until it has ended or the
/// user stops it, and then has its records sent.
///
/// A member of the device object, joined before that goes. What it receives it hands to SmpCnvtStorage, by one token of
/// the host's semaphore a buffer, and a last one at the end of the run.
class SmpCtrlStorage final : public SmpCtrlThread {
    Q_OBJECT
public:
    SmpCtrlStorage(SmpHost &host, SmpCnvtStorage &converter);

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
    /// How long a capture takes that waits for no trigger, whole milliseconds; a frequency below 1 Hz counts as 1.
    /// Pure.
    [[nodiscard]] static std::int64_t dueMs(std::int64_t depth, std::int64_t frequency);
    /// When the status is asked for first, milliseconds after the start; then every 50 ms. So that the end of a capture
    /// that waits for no trigger is learnt at once, not up to 50 ms later, one of the questions is put just behind it.
    /// Pure. @param due  see dueMs(); 0 or above
    [[nodiscard]] static int firstPollMs(std::int64_t due);

protected:
    void work() override;
    [[nodiscard]] bool isGivenUp() const override;

private:
    [[nodiscard]] bool awaitCapture();
    void readBack();
    [[nodiscard]] SmpRecordFormat format() const;

    SmpCnvtStorage &m_converter;
    std::int64_t m_recvBytes = 0; ///< in the read-back
};
