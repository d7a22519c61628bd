#pragma once

#include "device/UsbPlatform.h"

#include <cstdint>
#include <mutex>
#include <span>

/// One opened device, held by the transport while it is open and by each transfer for as long as it lasts; who lets go
/// of it last frees interface and file. So a device may be closed under a transfer, which then fails.
///
/// Any thread. The platform outlives it.
class UsbLink {
public:
    /// Takes over both; freed in the reverse order.
    UsbLink(UsbPlatform &platform, UsbFile file, UsbInterface iface);
    ~UsbLink();
    UsbLink(const UsbLink &) = delete;
    UsbLink &operator=(const UsbLink &) = delete;

    UsbPlatform &platform;
    const UsbInterface iface;
    // Set before the link is shared, and never again.
    std::uint8_t pipeIn = 0;
    std::uint8_t pipeOut = 0;

    /// As UsbPlatform::queueRead() on `pipeIn`; Gone once the link has been cut, Aborted after breakOff().
    [[nodiscard]] UsbResult queueRead(std::span<std::uint8_t> buffer, UsbReadSlot &slot);
    /// Ends the reads of a run that is under way and lets it queue no more. Any thread; once.
    void cut();
    /// Ends the reads of a run that is under way and lets it queue no more. Any thread. Harmless without a run.
    void breakOff();
    /// Lets a new run queue reads.
    void startRun();

private:
    const UsbFile m_file;
    std::mutex m_mutex; ///< orders queueing and cutting; held for no call that blocks
    bool m_cut = false;
    bool m_brokenOff = false;
    bool m_reads = false; ///< a read has been queued since the link was made
};
