#include "files/SampleFiller.h"

#include <cstring>
#include <utility>

SampleFiller::SampleFiller(int row, std::vector<int> bits)
    : m_filler(int(bits.size())), m_row(row), m_bits(std::move(bits)), m_lastRow(std::size_t(row))
{
    for (std::size_t i = 0; i < m_bits.size(); ++i) {
        m_isPlain = m_isPlain && m_bits[i] == int(i);
        m_mask |= m_bits[i] < 64 ? std::uint64_t(1) << m_bits[i] : 0;
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

std::uint64_t SampleFiller::levelsOf(std::uint64_t word) const
{
    if (m_isPlain) {
        return word;
    }
    std::uint64_t levels = 0;
    for (std::size_t i = 0; i < m_bits.size(); ++i) {
        levels |= (word >> m_bits[i] & 1) << i;
    }
    return levels;
}

/// Rows of 1, 2, 4 or 8 bytes.
template<class Word>
bool SampleFiller::addWords(const std::uint8_t *from, std::int64_t rows)
{
    constexpr std::int64_t perBlock = 8 / std::int64_t(sizeof(Word));
    const auto wordAt = [from](std::int64_t row) {
        Word word;
        std::memcpy(&word, from + row * std::int64_t(sizeof word), sizeof word);
        return word; // machines that this is built for are little-endian
    };
    std::int64_t row = 0;
    while (row < rows) {
        const Word whole = wordAt(row);
        const std::uint64_t word = whole & m_mask;
        if (word != m_last) {
            m_last = word;
            if (!m_filler.change(levelsOf(word), m_samples + row)) {
                return false;
            }
        }
        ++row;
        if (row + perBlock <= rows && wordAt(row) == whole) {
            std::uint64_t pattern = whole;
            for (std::size_t bits = 8 * sizeof(Word); bits < 64; bits *= 2) {
                pattern |= pattern << bits;
            }
            std::uint64_t block = pattern;
            while (row + perBlock <= rows && block == pattern) {
                std::memcpy(&block, from + row * std::int64_t(sizeof(Word)), sizeof block);
                row += block == pattern ? perBlock : 0;
            }
        }
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
        m_last &= m_mask;
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
