#pragma once

#include "acquisition/SmpRunSettings.h"
#include "acquisition/SmpThread.h"

#include <cstdint>
#include <span>

class SmpDevice;
class SmpHost;

/// Turns the buffers of a streaming capture into edges: the sole writer of the store during a run.
///
/// A member of the device object, joined before that goes. It waits for a token of the host's semaphore before each
/// buffer, and ends at a token without one.
class SmpCnvtTransfer final : public SmpThread {
    Q_OBJECT
public:
    explicit SmpCnvtTransfer(SmpHost &host);

    /// Starts to convert what the host's queue will bring. From SmpCtrlTransfer's thread, after the store was begun.
    /// @return false when the system gives no thread
    [[nodiscard]] bool startRun(const SmpRunSettings &settings, SmpDevice &device);

    /// Bytes of the first buffer that lie before the capture's first sample. Written before the first token is given.
    std::int32_t firstOffset = 0;

protected:
    void work() override;

private:
    [[nodiscard]] bool decode(std::span<const std::uint8_t> bytes, std::int32_t start);
    void publish(bool stored);

    SmpHost &m_host;
    // Written before the thread starts, then its own.
    bool m_bytes8 = false;
    std::int64_t m_depth = 0;
    SmpDevice *m_device = nullptr;
};
