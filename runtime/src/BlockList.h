#pragma once

#include "MemoryBudget.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <type_traits>

namespace lux::detail {

/// Memory for lists of millions, from the system and not from the heap, whose arenas grow in steps that threads wait
/// for, and give back what the next run asks for again. From `largePage` bytes on it is asked to be mapped in large
/// pages, since queries jump about in it and spend their time on the translation of addresses otherwise. Throws
/// std::bad_alloc.
inline constexpr std::size_t largePage = std::size_t(2) << 20; ///< bytes
inline constexpr std::size_t slabBytes = 2 * largePage;
[[nodiscard]] void *newSlab(std::size_t bytes);
void freeSlab(void *slab, std::size_t bytes);

/// Values in blocks that never move, so that other threads may read what was there before while one appends.
///
/// It publishes nothing itself: the owner stores a count by release, and readers, who load it by acquire, look only at
/// what lies below it. The directory is written before the entries that it leads to, and never changed.
/// Memory is taken a block at a time at first, then an eighth of the list at a time.
/// @tparam SlabBytes    the most that is taken at a time
/// @tparam EarlyBlocks  the list takes that much as soon as it has so many blocks; 0: an eighth as above
template<class T, unsigned BlockBits, std::size_t SlabBytes = slabBytes, std::uint64_t EarlyBlocks = 0>
class BlockList {
    static_assert(std::is_trivially_copyable_v<T>);

public:
    static constexpr std::size_t blockSize = std::size_t(1) << BlockBits;

    explicit BlockList(const MemoryBudget &budget) : m_budget(budget) {}
    ~BlockList()
    {
        std::uint64_t block = 0;
        for (; block < m_blocks && blocksAt(block) == 1; ++block)
            std::allocator<T>().deallocate(blockAt(block), blockSize);
        for (; block < m_blocks; block += blocksAt(block))
            freeSlab(blockAt(block), bytesOf(blocksAt(block)));
        m_budget.giveBack(m_charged);
    }
    BlockList(const BlockList &) = delete;
    BlockList &operator=(const BlockList &) = delete;

    [[nodiscard]] const T &operator[](std::uint64_t index) const
    {
        return blockAt(index >> BlockBits)[index & (blockSize - 1)];
    }
    [[nodiscard]] T &operator[](std::uint64_t index) { return blockAt(index >> BlockBits)[index & (blockSize - 1)]; }
    /// Entries, published or not. The writer only.
    [[nodiscard]] std::uint64_t size() const { return m_size; }
    /// @param forced  passes over the budget
    /// @return false when no block can be had; nothing changes then
    [[nodiscard]] bool append(const T &value, bool forced = false)
    {
        if ((m_size & (blockSize - 1)) == 0) {
            if (m_size >> BlockBits == m_blocks && !grow(forced))
                return false;
            m_open = blockAt(m_size >> BlockBits);
        }
        m_open[m_size & (blockSize - 1)] = value;
        ++m_size;
        return true;
    }
    /// Appends `count` entries that are to be written, all of one block: size() modulo blockSize plus `count` must not
    /// pass blockSize. @return the first of them; null when no block can be had, and nothing changes then
    [[nodiscard]] T *extend(std::size_t count, bool forced = false)
    {
        const std::size_t used = m_size & (blockSize - 1);
        if (used == 0) {
            if (m_size >> BlockBits == m_blocks && !grow(forced))
                return nullptr;
            m_open = blockAt(m_size >> BlockBits);
        }
        m_size += count;
        return m_open + used;
    }
    /// Takes the last entry away again; it must not have been published.
    void removeLast()
    {
        --m_size;
        m_open = blockAt(m_size >> BlockBits);
    }

private:
    static constexpr unsigned segmentBits = 10;
    static constexpr std::size_t segmentSize = std::size_t(1) << segmentBits;
    static constexpr std::size_t mostSegments = 8192;
    using Segment = std::unique_ptr<T *[]>;
    static constexpr std::size_t blockBytes = blockSize * sizeof(T);
    static constexpr std::uint64_t blocksPerSlab = SlabBytes / blockBytes;
    static constexpr std::uint64_t part = 8;                         ///< of a list that is taken at a time
    static constexpr std::size_t leastSlab = std::size_t(128) << 10; ///< less comes from the heap

    /// Blocks that are taken at a time when the list has `blocks`: more and more, the same for each number. Where a
    /// slab begins, it is that of the slab.
    [[nodiscard]] static std::uint64_t blocksAt(std::uint64_t blocks)
    {
        if (EarlyBlocks > 0)
            return blocks < EarlyBlocks ? 1 : blocksPerSlab;
        const std::uint64_t wanted = std::min(blocksPerSlab, std::bit_floor(blocks / part));
        return wanted * blockBytes < leastSlab ? 1 : wanted;
    }
    [[nodiscard]] static constexpr std::size_t bytesOf(std::uint64_t blocks)
    {
        return blocks == blocksPerSlab ? SlabBytes : std::size_t(blocks) * blockBytes;
    }
    [[nodiscard]] T *blockAt(std::uint64_t block) const
    {
        return m_segments[block >> segmentBits][block & (segmentSize - 1)];
    }
    [[nodiscard]] bool charge(std::size_t bytes, bool forced)
    {
        const auto size = std::int64_t(bytes);
        if (!m_budget.take(size)) {
            if (!forced)
                return false;
            m_budget.giveBack(-size);
        }
        m_charged += size;
        return true;
    }
    [[nodiscard]] bool grow(bool forced)
    {
        const std::size_t segment = std::size_t(m_blocks >> segmentBits);
        const std::size_t bytes = bytesOf(blocksAt(m_blocks));
        const bool fromSlab = m_spare > 0;
        if (segment >= mostSegments || (!fromSlab && !charge(bytes, forced)))
            return false;
        try {
            if (m_segments == nullptr)
                m_segments = std::make_unique<Segment[]>(mostSegments);
            if (m_segments[segment] == nullptr)
                m_segments[segment] = std::make_unique<T *[]>(segmentSize);
            m_segments[segment][m_blocks & (segmentSize - 1)] = newBlock();
        } catch (const std::bad_alloc &) {
            if (!fromSlab) {
                m_budget.giveBack(std::int64_t(bytes));
                m_charged -= std::int64_t(bytes);
            }
            return false;
        }
        ++m_blocks;
        return true;
    }

    [[nodiscard]] T *newBlock()
    {
        if (m_spare > 0) {
            --m_spare;
            return blockAt(m_blocks - 1) + blockSize;
        }
        const std::uint64_t blocks = blocksAt(m_blocks);
        if (blocks == 1)
            return std::allocator<T>().allocate(blockSize);
        T *slab = static_cast<T *>(newSlab(bytesOf(blocks)));
        m_spare = blocks - 1;
        return slab;
    }

    MemoryBudget m_budget;
    std::unique_ptr<Segment[]> m_segments;
    std::uint64_t m_spare = 0; ///< blocks of the last slab that are not used yet
    T *m_open = nullptr;       ///< the block of the last entry
    std::uint64_t m_size = 0;
    std::uint64_t m_blocks = 0;
    std::int64_t m_charged = 0;
};

} // namespace lux::detail
