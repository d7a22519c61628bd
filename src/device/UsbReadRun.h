#pragma once

#include "acquisition/InterfaceDevCallback.h"
#include "device/UsbLink.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>

/// One bulk read run: keeps two reads queued, in turn, and hands on what they bring.
///
/// Lives on the stack of UsbTransport::readStream(), on the thread that called it. What it is given outlives it.
class UsbReadRun {
public:
    /// The longest that nothing may come, ms: the wait here and the pipe's own time-out.
    static constexpr int silenceMs = 2800;

    /// @param slots      the two places of reads, idle
    /// @param chunkSize  bytes of the next read; another thread may change it
    /// @param limit      see SmpTransport::readStream()
    UsbReadRun(UsbLink &link, std::array<std::unique_ptr<UsbReadSlot>, 2> &readSlots, InterfaceDevCallback &receiver,
               const std::atomic<std::int32_t> &chunkSize, std::int32_t limit);

    /// The whole run, once. @return what SmpTransport::readStream() answers, without "not open"
    [[nodiscard]] int run();

private:
    /// A place of a read, its buffer, and whether it is queued. A buffer stays here until it is handed on.
    struct Read {
        UsbReadSlot *slot = nullptr;
        SmpChunk chunk;
        bool queued = false;
    };

    [[nodiscard]] bool takeBuffers();
    [[nodiscard]] bool queueFirst();
    [[nodiscard]] int receive();
    [[nodiscard]] bool queue(Read &read);
    /// Waits for a read. @return the bytes that it brought, 0 for none
    [[nodiscard]] std::int32_t await(Read &read);
    void cleanUp();

    UsbLink &m_link;
    InterfaceDevCallback &m_receiver;
    const std::atomic<std::int32_t> &m_chunkSize;
    const std::int32_t m_limit;
    std::array<Read, 2> m_reads;
    std::size_t m_index = 0;      ///< the read that is waited for
    std::int64_t m_requested = 0; ///< bytes asked for by all reads so far
    bool m_queueFailed = false;
};
