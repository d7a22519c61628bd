#pragma once

#include "acquisition/SmpRunSettings.h"
#include "acquisition/SmpThread.h"
#include "store/SmpRecordFormat.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

class SmpDevice;
class SmpHost;

/// Turns the records that a device reads back from its memory into edges: the sole writer of the store during a
/// read-back.
///
/// A member of the device object, joined before that goes. It waits for a token of the host's semaphore before each
/// buffer, and ends at a token without one.
class SmpCnvtStorage final : public SmpThread {
    Q_OBJECT
public:
    explicit SmpCnvtStorage(SmpHost &host);

    /// Starts to convert what the host's queue will bring, `readSize` bytes of it. From SmpCtrlStorage's thread, after
    /// the store was begun.
    /// @return false when the system gives no thread
    [[nodiscard]] bool startRun(const SmpRunSettings &settings, SmpRecordFormat format, SmpDevice &device);

protected:
    void work() override;

private:
    [[nodiscard]] bool decode(std::span<const std::uint8_t> bytes);
    [[nodiscard]] bool decodeWhole(std::span<const std::uint8_t> bytes);
    void publish(bool stored);
    [[nodiscard]] int percent() const;

    SmpHost &m_host;
    // Written before the thread starts, then its own.
    SmpRecordFormat m_format = SmpRecordFormat::Rle16;
    std::int64_t m_depth = 0;
    std::size_t m_groupBytes = 0;
    SmpDevice *m_device = nullptr;
    // Of the thread.
    std::uint32_t m_consumed = 0;     ///< bytes converted
    std::vector<std::uint8_t> m_rest; ///< the begin of a group that the last buffer cut
};
