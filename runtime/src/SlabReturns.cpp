#include "SlabReturns.h"

#include <exception>
#include <new>
#include <sys/mman.h>
#include <utility>

namespace lux::detail {

SlabReturns &SlabReturns::instance()
{
    static SlabReturns returns;
    return returns;
}

SlabReturns::~SlabReturns()
{
    {
        const std::lock_guard lock(m_mutex);
        m_ending = true;
    }
    m_woken.notify_all();
    if (m_thread.joinable())
        m_thread.join();
}

void *SlabReturns::take(std::size_t bytes)
{
    const std::lock_guard lock(m_mutex);
    if (m_waiting != nullptr && m_waiting->bytes == bytes) // as good as a marked one, and not even marked
        return std::exchange(m_waiting, m_waiting->next);
    for (std::size_t i = m_spareCount; i > 0; --i) {
        if (m_spare[i - 1].bytes == bytes) {
            m_spareBytes -= bytes;
            return std::exchange(m_spare[i - 1], m_spare[--m_spareCount]).slab;
        }
    }
    return nullptr;
}

bool SlabReturns::hasRoomFor(std::size_t bytes) const
{
    return !m_ending && m_spareCount < most && m_spareBytes + bytes <= mostBytes;
}

void SlabReturns::free(void *slab, std::size_t bytes) noexcept
{
    try {
        const std::lock_guard lock(m_mutex);
        if (!m_ending) {
            if (!m_thread.joinable())
                m_thread = std::thread([this] { run(); });
            m_waiting = new (slab) Waiting{m_waiting, bytes};
            slab = nullptr;
        }
    } catch (const std::exception &) {
        // without a thread: here
    }
    if (slab != nullptr)
        munmap(slab, bytes);
    else
        m_woken.notify_all();
}

void SlabReturns::run()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_woken.wait(lock, [this] { return m_ending || m_waiting != nullptr; });
        if (m_waiting == nullptr)
            return;
        Waiting *slab = std::exchange(m_waiting, m_waiting->next);
        const std::size_t bytes = slab->bytes;
        const bool isWanted = hasRoomFor(bytes);
        lock.unlock();
        const bool isMarked = isWanted && mark(slab, bytes);
        if (!isMarked)
            munmap(slab, bytes);
        lock.lock();
        if (isMarked) { // only this thread adds
            m_spare[m_spareCount++] = {slab, bytes};
            m_spareBytes += bytes;
        }
    }
}

bool SlabReturns::mark(Waiting *slab, std::size_t bytes)
{
#if defined(MADV_FREE)
    return madvise(slab, bytes, MADV_FREE) == 0;
#else
    return false;
#endif
}

} // namespace lux::detail
