#include "device/UsbReadRun.h"

#include "acquisition/SmpTransport.h"

#include <algorithm>
#include <span>
#include <utility>

UsbReadRun::UsbReadRun(UsbLink &link, std::array<std::unique_ptr<UsbReadSlot>, 2> &readSlots,
                       InterfaceDevCallback &receiver, const std::atomic<std::int32_t> &chunkSize, std::int32_t limit)
    : m_link(link), m_receiver(receiver), m_chunkSize(chunkSize), m_limit(limit)
{
    m_reads[0].slot = readSlots[0].get();
    m_reads[1].slot = readSlots[1].get();
}

int UsbReadRun::run()
{
    if (!takeBuffers()) {
        return SmpTransport::runNoMemory;
    }
    int result = SmpTransport::runFailed;
    if (queueFirst()) {
        m_receiver.onStart();
        result = receive();
    }
    cleanUp();
    return result;
}

bool UsbReadRun::takeBuffers()
{
    const std::int32_t size = m_chunkSize.load(std::memory_order_relaxed);
    for (Read &read : m_reads) {
        read.chunk = SmpChunk::take(size);
        if (!read.chunk) {
            return false;
        }
    }
    return true;
}

bool UsbReadRun::queueFirst()
{
    if (!queue(m_reads[0])) {
        return false;
    }
    return (m_limit != 0 && m_requested >= m_limit) || queue(m_reads[1]);
}

bool UsbReadRun::queue(Read &read)
{
    const std::int32_t size = read.chunk.size();
    read.queued = m_link.queueRead({read.chunk.bytes(), std::size_t(size)}, *read.slot).ok();
    m_queueFailed = !read.queued; // nothing is queued after it, so it stays
    m_requested += size;
    return read.queued;
}

int UsbReadRun::receive()
{
    std::int64_t received = 0;
    for (;; m_index ^= 1) {
        Read &read = m_reads[m_index];
        const std::int32_t size = read.chunk.size();
        const std::int32_t length = await(read);
        if (length == 0) {
            return SmpTransport::runFailed;
        }
        m_receiver.onData(std::move(read.chunk), length);
        received += length;
        if (m_limit == 0 ? length < size : received >= m_limit) {
            return SmpTransport::runEnded;
        }
        // After a read that could not be queued, a later one would leave a hole in the stream.
        const bool due = (m_limit == 0 || m_requested < m_limit) && !m_queueFailed;
        if (!due) {
            continue;
        }
        read.chunk = SmpChunk::take(m_chunkSize.load(std::memory_order_relaxed));
        if (!read.chunk) {
            return SmpTransport::runNoMemory;
        }
        (void)queue(read); // what the other read has still to bring is awaited first
    }
}

std::int32_t UsbReadRun::await(Read &read)
{
    if (!read.queued || !m_link.platform.waitRead(*read.slot, silenceMs)) {
        return 0;
    }
    std::uint32_t moved = 0;
    const UsbResult result = m_link.platform.readResult(m_link.iface, *read.slot, moved);
    read.queued = false;
    if (!result.ok()) {
        return 0;
    }
    return std::min(std::int32_t(std::min(moved, 0x7FFFFFFFU)), read.chunk.size());
}

void UsbReadRun::cleanUp()
{
    m_link.platform.abortPipe(m_link.iface, m_link.pipeIn);
    m_link.platform.flushPipe(m_link.iface, m_link.pipeIn);
    m_link.platform.resetPipe(m_link.iface, m_link.pipeIn);
    m_reads[m_index].chunk.reset();
    m_reads[m_index ^ 1].chunk.reset();
}
