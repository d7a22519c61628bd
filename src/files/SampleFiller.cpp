#include "files/SampleFiller.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

SampleFiller::SampleFiller(int row, std::vector<int> bits)
    : m_filler(int(bits.size())), m_row(row), m_bits(std::move(bits)), m_lastRow(std::size_t(row))
{
    for (std::size_t i = 0; i < m_bits.size(); ++i) {
        if (const auto bit = std::size_t(m_bits[i]); bit < m_channels.size()) {
            m_channels[bit] = int(i);
            m_mask |= std::uint64_t(1) << bit;
        }
    }
}

std::uint64_t SampleFiller::gathered(const std::uint8_t *row) const
{
    std::uint64_t levels = 0;
    for (std::size_t i = 0; i < m_bits.size(); ++i) {
        const auto bit = std::size_t(m_bits[i]);
        levels |= std::uint64_t(row[bit / 8] >> (bit % 8) & 1) << i;
    }
    return levels;
}

/// Rows of 1, 2, 4 or 8 bytes. The changes of several rows are found at once: which of them change is no branch.
template<class Word>
bool SampleFiller::addWords(const std::uint8_t *from, std::int64_t rows)
{
    constexpr int rowBits = 8 * int(sizeof(Word));
    constexpr int perBlock = 64 / rowBits;
    std::uint64_t mask = m_mask;
    for (int shift = rowBits; shift < 64; shift *= 2) {
        mask |= mask << shift;
    }
    for (std::int64_t row = 0; row < rows; row += perBlock, from += sizeof(std::uint64_t)) {
        const int count = int(std::min<std::int64_t>(perBlock, rows - row));
        std::uint64_t block = 0; // the machines that this is built for are little-endian
        std::uint64_t inside = mask;
        if (count == perBlock) [[likely]] {
            std::memcpy(&block, from, sizeof block);
        } else {
            std::memcpy(&block, from, std::size_t(count) * sizeof(Word));
            inside &= (std::uint64_t(1) << count * rowBits) - 1;
        }
        std::uint64_t before = m_last; // the row in front of each
        if constexpr (perBlock > 1) {
            before |= block << rowBits;
        }
        for (std::uint64_t changed = (block ^ before) & inside; changed != 0; changed &= changed - 1) {
            const auto bit = unsigned(std::countr_zero(changed));
            const std::int64_t pos = m_samples + row + bit / rowBits;
            if (!m_filler.flip(m_channels[bit % rowBits], pos)) [[unlikely]] {
                return false;
            }
        }
        m_last = block >> (count - 1) * rowBits;
    }
    m_samples += rows;
    return true;
}

bool SampleFiller::addWide(const std::uint8_t *from, std::int64_t rows)
{
    const auto size = std::size_t(m_row);
    for (std::int64_t row = 0; row < rows; ++row, from += size) {
        if (std::memcmp(from, m_lastRow.data(), size) == 0) {
            continue;
        }
        std::memcpy(m_lastRow.data(), from, size);
        const std::uint64_t levels = gathered(from);
        if (levels != m_filler.levels() && !m_filler.change(levels, m_samples + row)) {
            return false;
        }
    }
    m_samples += rows;
    return true;
}

bool SampleFiller::add(std::span<const std::uint8_t> bytes)
{
    const std::int64_t rows = std::int64_t(bytes.size()) / m_row;
    if (rows < 1) {
        return true;
    }
    m_isTooLong = rows > CaptureFiller::positionMax - m_samples;
    if (m_isTooLong) {
        return false;
    }
    if (m_samples == 0) {
        m_filler.setStart(gathered(bytes.data()));
        std::memcpy(m_lastRow.data(), bytes.data(), std::size_t(m_row));
        std::memcpy(&m_last, bytes.data(), std::size_t(m_row < 8 ? m_row : 8));
    }
    switch (m_row) {
    case 1:
        return addWords<std::uint8_t>(bytes.data(), rows);
    case 2:
        return addWords<std::uint16_t>(bytes.data(), rows);
    case 4:
        return addWords<std::uint32_t>(bytes.data(), rows);
    case 8:
        return addWords<std::uint64_t>(bytes.data(), rows);
    default:
        return addWide(bytes.data(), rows);
    }
}
