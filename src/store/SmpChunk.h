#pragma once

#include "store/MemBudget.h"

#include <cstddef>
#include <cstdint>
#include <utility>

/// A receive buffer: bytes of the heap that are charged to the budget, with the size they were taken with.
///
/// It is moved from the transport to a queue to the conversion thread and has one owner at any time; whoever lets go of
/// it gives back exactly what was charged, whatever size the transport takes its buffers with by then. It belongs to no
/// thread; only the hand-over needs care.
class SmpChunk {
public:
    SmpChunk() = default;
    ~SmpChunk() { freeChunk(m_bytes, std::size_t(m_size)); }

    SmpChunk(SmpChunk &&other) noexcept
        : m_bytes(std::exchange(other.m_bytes, nullptr)), m_size(std::exchange(other.m_size, 0))
    {}
    SmpChunk &operator=(SmpChunk &&other) noexcept
    {
        std::swap(m_bytes, other.m_bytes);
        std::swap(m_size, other.m_size);
        other.reset();
        return *this;
    }

    /// A buffer of `size` bytes, above 0, not cleared. An empty one when the budget is spent (below 1) or the heap
    /// refuses. Any thread.
    [[nodiscard]] static SmpChunk take(std::int32_t size)
    {
        SmpChunk chunk;
        if (size > 0) {
            chunk.m_bytes = allocChunk(std::size_t(size));
            chunk.m_size = chunk.m_bytes != nullptr ? size : 0;
        }
        return chunk;
    }

    /// Frees the bytes now and credits the budget. An empty one stays empty.
    void reset() { freeChunk(std::exchange(m_bytes, nullptr), std::size_t(std::exchange(m_size, 0))); }

    [[nodiscard]] explicit operator bool() const { return m_bytes != nullptr; }
    [[nodiscard]] std::uint8_t *bytes() { return m_bytes; }
    [[nodiscard]] const std::uint8_t *bytes() const { return m_bytes; }
    /// Bytes taken, which may be more than were received; 0 when empty.
    [[nodiscard]] std::int32_t size() const { return m_size; }

private:
    std::uint8_t *m_bytes = nullptr;
    std::int32_t m_size = 0;
};
