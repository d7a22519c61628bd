#pragma once

#include "acquisition/SmpCtrlThread.h"
#include "acquisition/SmpStreamWindow.h"
#include "store/SmpTrigBytes8.h"
#include "store/SmpTrigSliced.h"

#include <cstdint>
#include <span>

class SmpCnvtTransfer;
class SmpHost;

/// Runs a capture of a device without memory, which pours samples as long as it runs: receives them, searches for the
/// trigger, keeps a sliding window of the samples before it, and ends the run when the depth is reached.
///
/// A member of the device object, joined before that goes. What it receives it hands to SmpCnvtTransfer: until the
/// trigger has come nothing, from then on each buffer, by one token of the host's semaphore each. When a run ends it
/// hands over what is left and a last token, always.
class SmpCtrlTransfer final : public SmpCtrlThread {
    Q_OBJECT
public:
    SmpCtrlTransfer(SmpHost &host, SmpCnvtTransfer &converter);

    /// How long each buffer may wait for the converter to make room, ms. A device that keeps its pace takes at least 50
    /// ms to fill one, and one is being filled meanwhile, so that the wait never leaves it without a read. To be set
    /// before a run.
    int roomWaitMs = 30;

    // ---- called by the transport, on this thread
    void onStart() override;
    void onData(SmpChunk bytes, std::int32_t length) override;

protected:
    void work() override;
    [[nodiscard]] bool isGivenUp() const override;

private:
    void prepare();
    [[nodiscard]] std::int64_t scan(std::span<const std::uint8_t> bytes);
    void search(std::span<const std::uint8_t> bytes);
    void dropWhileWaiting();
    void startSampling(std::int64_t trigger);
    void goOnSampling();
    void endRun(int result);
    void handOver(int tokens);
    void dropOldest();
    [[nodiscard]] int percent() const;

    SmpCnvtTransfer &m_converter;
    // Of the thread.
    SmpStreamWindow m_window;
    SmpTrigSliced m_sliced;
    SmpTrigBytes8 m_bytes8;
    int m_mostQueued = 0; ///< buffers beyond which the converter is waited for
    int m_behindEnd = 0;  ///< buffers that came when the capture was complete
};
