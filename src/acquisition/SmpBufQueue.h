#pragma once

#include "store/SmpChunk.h"

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>

/// The received buffers on their way from the thread that receives to the thread that converts.
///
/// A buffer has one owner: it is moved in, and moved out or dropped. What a thread wrote before it touched the queue,
/// the other sees after it has touched the queue later. Any thread; every operation but the waiting one is short. The
/// queue counts no tokens: who takes is told by a semaphore beside it when to.
class SmpBufQueue {
public:
    /// Appends a buffer of which the first `length` bytes are filled.
    void append(SmpChunk bytes, std::int32_t length);
    /// Moves the oldest buffer out. @return false when there is none
    [[nodiscard]] bool take(SmpChunk &bytes, std::int32_t &length);
    /// Frees the oldest buffer, if there is one.
    void dropOldest();
    /// Frees all.
    void clear();

    [[nodiscard]] int count() const;
    /// The filled bytes of the oldest buffer; 0 when there is none.
    [[nodiscard]] std::int32_t oldestLength() const;

    /// Blocks while more than `most` buffers are queued, for `ms` milliseconds at the longest.
    void waitForRoom(int most, int ms);

private:
    mutable std::mutex m_mutex; ///< guards the two lists, which have equal lengths
    std::condition_variable m_taken;
    std::deque<SmpChunk> m_smpBufs;
    std::deque<std::int32_t> m_smpBufSizes;
};
