#pragma once

#include "BlockList.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

namespace lux::detail {

/// Bytes that frames refer to by a word: 40 bits of address, 24 bits of length. An address is the number of a slot of
/// 64 KiB and an offset in it; what is longer takes several slots that lie side by side. One thread adds, any may read.
class PayloadStore {
public:
    static constexpr std::size_t mostBytes = (std::size_t(1) << 24) - 1;

    explicit PayloadStore(const MemoryBudget &budget) : m_slots(budget), m_budget(budget) {}
    ~PayloadStore() { m_budget.giveBack(m_charged); }
    PayloadStore(const PayloadStore &) = delete;
    PayloadStore &operator=(const PayloadStore &) = delete;

    /// @param word  out; 0 for no bytes
    /// @return false when memory is spent
    [[nodiscard]] bool add(const std::uint8_t *bytes, std::size_t size, std::uint64_t &word)
    {
        size = std::min(size, mostBytes);
        word = 0;
        if (size == 0)
            return true;
        if (size > m_free && !grow(size))
            return false;
        std::memcpy(m_at, bytes, size);
        word = m_address << lengthBits | size;
        m_at += size;
        m_address += size;
        m_free -= size;
        return true;
    }
    [[nodiscard]] const std::uint8_t *find(std::uint64_t word, std::size_t &size) const
    {
        const std::uint64_t address = word >> lengthBits;
        const std::uint64_t length = word & mostBytes;
        const std::uint64_t slot = address >> slotBits;
        size = 0;
        if (length == 0 || slot >= m_count.load(std::memory_order_acquire))
            return nullptr;
        const Slot &found = m_slots[slot];
        const std::uint64_t offset = address & (slotSize - 1);
        if (offset + length > found.room) // no word of this store
            return nullptr;
        size = length;
        return found.bytes + offset;
    }

private:
    static constexpr unsigned lengthBits = 24;
    static constexpr unsigned slotBits = 16;
    static constexpr std::uint64_t slotSize = 1U << slotBits;

    struct Slot {
        const std::uint8_t *bytes;
        std::uint64_t room; ///< bytes from here to the end of the block
    };

    [[nodiscard]] bool grow(std::size_t size)
    {
        const std::uint64_t slots = (size + slotSize - 1) >> slotBits;
        const auto room = std::int64_t(slots << slotBits);
        if (m_slots.size() + slots > std::uint64_t(1) << (40 - slotBits) || !m_budget.take(room))
            return false;
        m_charged += room;
        try {
            m_blocks.push_back(std::make_unique_for_overwrite<std::uint8_t[]>(std::size_t(room)));
        } catch (const std::bad_alloc &) {
            return false;
        }
        m_at = m_blocks.back().get();
        m_address = m_slots.size() << slotBits;
        m_free = std::uint64_t(room);
        for (std::uint64_t i = 0; i < slots; ++i) {
            if (!m_slots.append({m_at + (i << slotBits), m_free - (i << slotBits)}, true))
                return false;
        }
        m_count.store(m_slots.size(), std::memory_order_release);
        return true;
    }

    BlockList<Slot, 8> m_slots;
    MemoryBudget m_budget;
    std::vector<std::unique_ptr<std::uint8_t[]>> m_blocks;
    std::uint8_t *m_at = nullptr;
    std::uint64_t m_address = 0;
    std::uint64_t m_free = 0;
    std::int64_t m_charged = 0;
    std::atomic<std::uint64_t> m_count{0};
};

} // namespace lux::detail
