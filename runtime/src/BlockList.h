#pragma once

#include "MemoryBudget.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <type_traits>
#include <vector>

namespace lux::detail {

/// Memory for lists of millions: the system is asked to map it in large pages, since queries jump about in it and spend
/// their time on the translation of addresses otherwise. Throws std::bad_alloc.
inline constexpr std::size_t largePage = std::size_t(2) << 20; ///< bytes
inline constexpr std::size_t slabBytes = 2 * largePage;
[[nodiscard]] void *newSlab(std::size_t bytes);
void freeSlab(void *slab);

/// Values in blocks that never move, so that other threads may read what was there before while one appends.
///
/// It publishes nothing itself: the owner stores a count by release, and readers, who load it by acquire, look only at
/// what lies below it. The directory is written before the entries that it leads to, and never changed.
/// @tparam SlabBytes     size of the slabs in which a long list goes on
/// @tparam SingleBlocks  blocks of their own before the first slab; so many that a slab is an eighth of the list at
/// most
template<class T, unsigned BlockBits, std::size_t SlabBytes = slabBytes,
         std::uint64_t SingleBlocks = 8 * SlabBytes / (sizeof(T) << BlockBits)>
class BlockList {
    static_assert(std::is_trivially_copyable_v<T>);

public:
    static constexpr std::size_t blockSize = std::size_t(1) << BlockBits;

    explicit BlockList(const MemoryBudget &budget) : m_budget(budget) {}
    ~BlockList()
    {
        for (std::uint64_t block = 0; block < m_singleBlocks; ++block)
            std::allocator<T>().deallocate(blockAt(block), blockSize);
        for (T *slab : m_slabs)
            freeSlab(slab);
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
    static constexpr std::size_t blocksPerSlab = SlabBytes / (blockSize * sizeof(T));

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
        const std::size_t bytes = m_blocks < SingleBlocks ? blockSize * sizeof(T) : SlabBytes;
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
        if (m_blocks < SingleBlocks) {
            T *block = std::allocator<T>().allocate(blockSize);
            ++m_singleBlocks;
            return block;
        }
        if (m_spare == 0) {
            m_slabs.reserve(m_slabs.size() + 1);
            m_slabs.push_back(static_cast<T *>(newSlab(SlabBytes)));
            m_spare = blocksPerSlab;
        }
        return m_slabs.back() + (blocksPerSlab - m_spare--) * blockSize;
    }

    MemoryBudget m_budget;
    std::unique_ptr<Segment[]> m_segments;
    std::vector<T *> m_slabs;         ///< behind the single blocks
    std::uint64_t m_singleBlocks = 0; ///< the first ones, each of its own
    std::size_t m_spare = 0;          ///< blocks of the last slab that are not used yet
    T *m_open = nullptr;              ///< the block of the last entry
    std::uint64_t m_size = 0;
    std::uint64_t m_blocks = 0;
    std::int64_t m_charged = 0;
};

} // namespace lux::detail
