#include "acquisition/SmpBufQueue.h"

#include <chrono>
#include <utility>

void SmpBufQueue::append(SmpChunk bytes, std::int32_t length)
{
    const std::lock_guard lock(m_mutex);
    m_smpBufs.push_back(std::move(bytes));
    m_smpBufSizes.push_back(length);
}

bool SmpBufQueue::take(SmpChunk &bytes, std::int32_t &length)
{
    {
        const std::lock_guard lock(m_mutex);
        if (m_smpBufs.empty()) {
            return false;
        }
        bytes = std::move(m_smpBufs.front());
        length = m_smpBufSizes.front();
        m_smpBufs.pop_front();
        m_smpBufSizes.pop_front();
    }
    m_taken.notify_all();
    return true;
}

void SmpBufQueue::dropOldest()
{
    SmpChunk oldest;
    std::int32_t length = 0;
    (void)take(oldest, length);
}

void SmpBufQueue::clear()
{
    std::deque<SmpChunk> all; // freed after the lock
    {
        const std::lock_guard lock(m_mutex);
        all.swap(m_smpBufs);
        m_smpBufSizes.clear();
    }
    m_taken.notify_all();
}

int SmpBufQueue::count() const
{
    const std::lock_guard lock(m_mutex);
    return int(m_smpBufs.size());
}

std::int32_t SmpBufQueue::oldestLength() const
{
    const std::lock_guard lock(m_mutex);
    return m_smpBufSizes.empty() ? 0 : m_smpBufSizes.front();
}

void SmpBufQueue::waitForRoom(int most, int ms)
{
    std::unique_lock lock(m_mutex);
    m_taken.wait_for(lock, std::chrono::milliseconds(ms), [&] { return int(m_smpBufs.size()) <= most; });
}
