#include "store/SmpTrigBytes8.h"

#include "store/SmpBytes.h"
#include "store/SmpTrigCode.h"

#include <algorithm>
#include <bit>
#include <cstddef>

using namespace smpBytes;

namespace {

constexpr std::uint64_t everyByte = 0x0101010101010101;
constexpr std::uint64_t lowBits = 0x7F7F7F7F7F7F7F7F;
constexpr std::size_t wordSamples = 8;

/// The top bit of each byte that is not 0; exact for every byte, since no sum carries into the next one.
std::uint64_t nonZeroBytes(std::uint64_t word)
{
    return (((word & lowBits) + lowBits) | word) & ~lowBits;
}

/// Fewer than eight samples, filled up with repeats of the last one.
std::uint64_t loadPart(const std::uint8_t *at, std::size_t count)
{
    std::uint64_t word = 0;
    for (std::size_t i = wordSamples; i > 0; --i) {
        word = word << 8 | at[std::min(i, count) - 1];
    }
    return word;
}

} // namespace

SmpTrigBytes8::Masks SmpTrigBytes8::masksOf(std::span<const std::int32_t> codes)
{
    using namespace smpTrigCode;
    Masks masks;
    for (std::size_t chn = 0; chn < std::min<std::size_t>(codes.size(), 32); ++chn) {
        const std::uint32_t bit = std::uint32_t(1) << chn;
        const std::int32_t code = codes[chn];
        masks.level |= code == lowLevel || code == highLevel ? bit : 0;
        masks.value |= code == highLevel ? bit : 0;
        masks.edge |= code == risingEdge || code == fallingEdge ? bit : 0;
        masks.fall |= code == fallingEdge ? bit : 0;
    }
    return masks;
}

void SmpTrigBytes8::start(const Masks &masks)
{
    const auto spread = [](std::uint32_t mask) { return (mask & 0xFF) * everyByte; };
    m_edge = spread(masks.edge);
    m_fall = spread(masks.fall & masks.edge);
    m_level = spread(masks.level);
    m_value = spread(masks.value & masks.level);
    m_noEdge = m_edge == 0 ? ~std::uint64_t(0) : 0;
    m_first = true;
}

/// The top bit of each byte whose sample passes. Takes the last of the eight samples as the one before the next.
std::uint64_t SmpTrigBytes8::matchOf(std::uint64_t samples)
{
    const std::uint64_t before = samples << 8 | m_last;
    const std::uint64_t moved = (samples ^ before) & m_edge;
    // A channel that fell was high before; of those that moved, exactly the ones that must fall may have fallen.
    const std::uint64_t wrong = ((before & moved) ^ m_fall) | ((samples & m_level) ^ m_value);
    m_last = samples >> 56;
    return ~nonZeroBytes(wrong) & (nonZeroBytes(moved) | m_noEdge) & ~lowBits;
}

std::int64_t SmpTrigBytes8::scan(std::span<const std::uint8_t> bytes)
{
    if (bytes.empty()) {
        return -1;
    }
    const std::uint8_t *const begin = bytes.data();
    if (m_first) {
        m_last = *begin;
        m_first = false;
    }
    std::size_t at = 0;
    for (; bytes.size() - at >= wordSamples; at += wordSamples) {
        if (const std::uint64_t match = matchOf(load64(begin + at)); match != 0) {
            return std::int64_t(at) + std::countr_zero(match) / 8;
        }
    }
    const std::size_t count = bytes.size() - at;
    if (count == 0) {
        return -1;
    }
    // The repeats that fill the word move nothing; by level they match only where the last sample does.
    const std::uint64_t match = matchOf(loadPart(begin + at, count));
    return match != 0 ? std::int64_t(at) + std::countr_zero(match) / 8 : -1;
}
