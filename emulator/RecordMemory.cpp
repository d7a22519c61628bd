#include "RecordMemory.h"

#include <algorithm>
#include <cstring>

namespace emulator {

namespace {

struct Shape {
    std::uint32_t group;   ///< bytes
    std::uint32_t records; ///< in a group
    std::uint32_t word;    ///< bytes of a record's levels
    std::uint32_t record;  ///< bytes
};

constexpr Shape shapeOf(RecordFormat format)
{
    switch (format) {
    case RecordFormat::Rle16:
        return {16, 5, 2, 3};
    case RecordFormat::Rle32:
        return {32, 6, 4, 5};
    case RecordFormat::Mixed16:
        break;
    }
    return {4, 1, 2, 4};
}

} // namespace

RecordMemory::RecordMemory(RecordFormat format, std::uint32_t size)
    : m_format(format),
      m_size(size / shapeOf(format).group * shapeOf(format).group),
      m_blocks((std::size_t(m_size) + blockSize - 1) / blockSize)
{}

std::uint32_t RecordMemory::groupSize() const
{
    return shapeOf(m_format).group;
}

std::uint32_t RecordMemory::recordsInGroup() const
{
    return shapeOf(m_format).records;
}

void RecordMemory::begin(std::uint32_t address)
{
    m_next = m_size == 0 ? 0 : address % m_size / groupSize() * groupSize();
    m_group.fill(0);
    m_inGroup = 0;
    m_count = 0;
    m_groups = 0;
    m_appended = 0;
    m_sliding = false;
}

void RecordMemory::slideWithin(std::uint32_t bytes)
{
    m_limit = std::clamp<std::uint32_t>(bytes / groupSize(), 1, std::max<std::uint32_t>(m_size / groupSize(), 1));
    m_sliding = true;
}

std::uint8_t *RecordMemory::blockAt(std::uint32_t address)
{
    std::unique_ptr<std::uint8_t[]> &block = m_blocks[address / blockSize];
    if (block == nullptr) {
        block = std::make_unique<std::uint8_t[]>(blockSize);
    }
    return block.get() + address % blockSize;
}

/// Puts the open group into the memory as it stands; its content stays for the next.
void RecordMemory::writeGroup()
{
    if (m_format == RecordFormat::Rle32) {
        const auto check = std::uint8_t(m_next / 32 * 7);
        m_group[30] = check;
        m_group[31] = check ^ 0xFF;
    }
    std::memcpy(blockAt(m_next), m_group.data(), groupSize());
    m_next += groupSize();
    if (m_next == m_size) {
        m_next = 0;
    }
    ++m_groups;
    if (m_sliding) {
        m_groups = std::min(m_groups, m_limit);
    }
}

/// Moves the present record into the open group, and that into the memory when it is full.
void RecordMemory::flushRecord()
{
    const Shape shape = shapeOf(m_format);
    const std::span<std::uint8_t> at(m_group.data() + std::size_t(m_inGroup) * shape.record, shape.record);
    writeLittle(at.first(shape.word), m_word);
    at[shape.word] = std::uint8_t(m_count);
    m_count = 0;
    if (++m_inGroup == shape.records) {
        m_inGroup = 0;
        writeGroup();
    }
}

void RecordMemory::closeRecord()
{
    if (m_count > 0) {
        flushRecord();
    }
}

/// Appends whole groups of full records, all the same. @return the samples that they hold
std::int64_t RecordMemory::appendGroups(std::int64_t samples)
{
    const Shape shape = shapeOf(m_format);
    const std::int64_t groupSamples = maxCount * shape.records;
    const std::int64_t before = m_appended;
    if (samples < groupSamples) {
        return 0;
    }
    for (std::uint32_t i = 0; i < shape.records; ++i) {
        const std::span<std::uint8_t> at(m_group.data() + std::size_t(i) * shape.record, shape.record);
        writeLittle(at.first(shape.word), m_word);
        at[shape.word] = std::uint8_t(maxCount);
    }
    for (; samples >= groupSamples && !isFull(); samples -= groupSamples) {
        m_appended += groupSamples;
        writeGroup();
    }
    return m_appended - before;
}

std::int64_t RecordMemory::append(std::uint32_t word, std::int64_t samples)
{
    std::int64_t left = samples;
    if (m_format == RecordFormat::Mixed16) {
        while (left > 0 && appendMixed(0, 0, std::uint16_t(word))) {
            --left;
        }
        return samples - left;
    }
    if (m_count > 0 && word != m_word) {
        flushRecord();
    }
    m_word = word;
    while (left > 0 && !isFull()) {
        if (!groupOpen()) {
            left -= appendGroups(left);
        }
        const std::int64_t now = isFull() ? 0 : std::min(left, maxCount - m_count);
        m_count += now;
        m_appended += now;
        left -= now;
        if (m_count == maxCount) {
            flushRecord();
        }
    }
    return samples - left;
}

bool RecordMemory::appendMixed(std::int8_t analog0, std::int8_t analog1, std::uint16_t word)
{
    if (isFull()) {
        return false;
    }
    m_group[0] = std::uint8_t(analog0);
    m_group[1] = std::uint8_t(analog1);
    writeLittle(std::span(m_group).subspan(2, 2), word);
    ++m_appended;
    writeGroup();
    return true;
}

std::uint32_t RecordMemory::recordCount() const
{
    return m_groups * recordsInGroup() + m_inGroup + (m_count > 0 ? 1 : 0);
}

std::int64_t RecordMemory::samplesKept() const
{
    const Shape shape = shapeOf(m_format);
    if (m_format == RecordFormat::Mixed16) {
        return m_groups;
    }
    std::int64_t samples = m_count;
    const auto addGroup = [&samples, shape](const std::uint8_t *group, std::uint32_t records) {
        for (std::uint32_t i = 0; i < records; ++i) {
            samples += group[i * shape.record + shape.word];
        }
    };
    addGroup(m_group.data(), m_inGroup);
    std::array<std::uint8_t, biggestGroup> group{};
    for (std::uint32_t i = 0; i < m_groups; ++i) {
        read(std::uint64_t(m_next) + m_size - std::uint64_t(i + 1) * shape.group, std::span(group).first(shape.group));
        addGroup(group.data(), shape.records);
    }
    return samples;
}

void RecordMemory::read(std::uint64_t address, std::span<std::uint8_t> out) const
{
    if (m_size == 0) {
        std::fill(out.begin(), out.end(), std::uint8_t(0));
        return;
    }
    auto at = std::uint32_t(address % m_size);
    while (!out.empty()) {
        const std::size_t piece =
            std::min<std::size_t>({out.size(), m_size - at, std::size_t(blockSize) - at % blockSize});
        const std::uint8_t *block = m_blocks[at / blockSize].get();
        if (block == nullptr) {
            std::memset(out.data(), 0, piece);
        } else {
            std::memcpy(out.data(), block + at % blockSize, piece);
        }
        out = out.subspan(piece);
        at = std::uint32_t((at + piece) % m_size);
    }
}

} // namespace emulator
