#pragma once

#include "UsbTypes.h"

#include <array>
#include <memory>
#include <vector>

namespace emulator {

/// How samples stand in an instrument's memory.
enum class RecordFormat {
    Rle16,  ///< groups of 16 bytes: five records {16 bits, count: 8 bits}, one spare byte
    Rle32,  ///< groups of 32 bytes: six records {32 bits, count: 8 bits}, two check bytes whose XOR is 0xFF
    Mixed16 ///< groups of 4 bytes: two analog bytes, 16 bits; one sample
};

/// The sample memory: a ring of groups of records. What is written behind its end goes on at its start; the oldest
/// group gives way to the newest as long as a limit says so.
class RecordMemory {
public:
    static constexpr std::size_t biggestGroup = 32;
    static constexpr std::int64_t maxCount = 255; ///< samples of one record

    /// @param size  bytes; whole groups. Blocks are taken from the heap when they are first written.
    RecordMemory(RecordFormat format, std::uint32_t size);

    [[nodiscard]] std::uint32_t size() const { return m_size; }
    [[nodiscard]] RecordFormat format() const { return m_format; }
    [[nodiscard]] std::uint32_t groupSize() const;
    [[nodiscard]] std::uint32_t recordsInGroup() const;

    /// Forgets all records; the first group comes to stand at `address`, rounded down to a whole group.
    void begin(std::uint32_t address);
    /// Up to `bytes` are kept from now on, at least one group: older groups are dropped.
    void slideWithin(std::uint32_t bytes);
    /// From now on nothing is dropped: the memory fills up.
    void fill() { m_sliding = false; }

    /// Appends samples that are all alike. Mixed16: one record each, with the analog bytes of appendMixed() zero.
    /// @return the samples that found room
    std::int64_t append(std::uint32_t word, std::int64_t samples);
    /// Mixed16: one sample.
    bool appendMixed(std::int8_t analog0, std::int8_t analog1, std::uint16_t word);
    /// Ends the present record: what follows begins a new one, also with the same levels.
    void closeRecord();
    /// True when records stand in a group that is not full. Such a group is not in the memory yet.
    [[nodiscard]] bool groupOpen() const { return m_inGroup > 0 || m_count > 0; }
    /// No room for a further group.
    [[nodiscard]] bool isFull() const { return !m_sliding && m_groups == m_size / groupSize(); }

    /// Records kept, those of the open group too; the present record counts.
    [[nodiscard]] std::uint32_t recordCount() const;
    /// Samples in the records that are kept. Cost: one step a record.
    [[nodiscard]] std::int64_t samplesKept() const;
    /// Byte address in the ring behind the last whole group.
    [[nodiscard]] std::uint32_t endAddress() const { return m_next; }

    /// Bytes from `address` on, which is taken modulo the size; behind the end comes the start.
    void read(std::uint64_t address, std::span<std::uint8_t> out) const;

private:
    static constexpr std::uint32_t blockSize = 0x10000; // whole groups of every format

    void flushRecord();
    void writeGroup();
    std::int64_t appendGroups(std::int64_t samples);
    [[nodiscard]] std::uint8_t *blockAt(std::uint32_t address);

    RecordFormat m_format;
    std::uint32_t m_size;
    std::vector<std::unique_ptr<std::uint8_t[]>> m_blocks;
    std::array<std::uint8_t, biggestGroup> m_group{}; ///< the open group
    std::uint32_t m_inGroup = 0;                      ///< its finished records
    std::uint32_t m_word = 0;                         ///< the present record
    std::int64_t m_count = 0;                         ///< its samples, 0 for none
    std::uint32_t m_next = 0;                         ///< where the open group will stand
    std::uint32_t m_groups = 0;                       ///< kept in the memory
    std::uint32_t m_limit = 0;                        ///< groups to keep while sliding
    std::int64_t m_appended = 0;                      ///< samples since begin(), dropped ones too
    bool m_sliding = false;
};

} // namespace emulator
