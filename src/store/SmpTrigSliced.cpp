#include "store/SmpTrigSliced.h"

#include "store/SmpBytes.h"
#include "store/SmpTrigCode.h"

#include <algorithm>
#include <bit>
#include <cstddef>

using namespace smpBytes;

namespace {

constexpr std::uint32_t allSamples = 0xFFFF;
constexpr int blockGroups = 4; ///< looked at as one: 64 samples of a channel

/// The words of one channel in `blockGroups` groups, the earliest lowest. `stride`: bytes of a group.
std::uint64_t gather(const std::uint8_t *at, std::size_t stride)
{
    return std::uint64_t(load16(at)) | std::uint64_t(load16(at + stride)) << 16 |
           std::uint64_t(load16(at + 2 * stride)) << 32 | std::uint64_t(load16(at + 3 * stride)) << 48;
}

} // namespace

void SmpTrigSliced::start(std::span<const std::int32_t> kinds)
{
    using namespace smpTrigCode;
    m_slots = int(std::min<std::size_t>(kinds.size(), maxChannels));
    m_partCount = 0;
    for (int slot = 0; slot < m_slots; ++slot) {
        const std::int32_t kind = kinds[std::size_t(slot)];
        if (kind < lowLevel || kind > fallingEdge) {
            continue;
        }
        Part &part = m_parts[std::size_t(m_partCount++)];
        part.slot = slot;
        part.turn = kind == lowLevel || kind == fallingEdge ? allSamples : 0;
        part.edge = kind == risingEdge || kind == fallingEdge;
        part.last = 0;
    }
    m_slot = 0;
    m_part = 0;
    m_firstGroup = true;
    m_match = allSamples;
}

std::uint32_t SmpTrigSliced::matchOf(Part &part, std::uint32_t word) const
{
    const std::uint32_t turned = word ^ part.turn;
    if (!part.edge) {
        return turned;
    }
    const std::uint32_t last = m_firstGroup ? turned & 1 : part.last; // nothing lies before the first sample
    part.last = std::uint16_t(turned >> (groupSamples - 1));
    return turned & ~(turned << 1 | last);
}

/// Takes the next word of a group into `m_match`.
void SmpTrigSliced::takeWord(std::uint32_t word)
{
    if (m_part < m_partCount && m_parts[std::size_t(m_part)].slot == m_slot) {
        m_match &= matchOf(m_parts[std::size_t(m_part)], word);
        ++m_part;
    }
    ++m_slot;
}

/// The samples of `blockGroups` whole groups at which all parts match, the earliest lowest.
std::uint64_t SmpTrigSliced::matchOfBlock(const std::uint8_t *at)
{
    constexpr std::uint64_t everyWord = 0x0001000100010001;
    const std::size_t stride = std::size_t(m_slots) * wordBytes;
    std::uint64_t match = ~std::uint64_t(0);
    for (int i = 0; i < m_partCount; ++i) {
        Part &part = m_parts[std::size_t(i)];
        const std::uint64_t samples = gather(at + std::size_t(part.slot) * wordBytes, stride) ^ part.turn * everyWord;
        // A level asks for nothing of the sample before: then `before` is masked away.
        const std::uint64_t before = (samples << 1 | part.last) & (std::uint64_t(0) - std::uint64_t(part.edge));
        part.last = std::uint16_t(samples >> 63);
        match &= samples & ~before;
    }
    return match;
}

std::int64_t SmpTrigSliced::scan(std::span<const std::uint8_t> bytes)
{
    if (m_slots < 1) {
        return bytes.empty() ? -1 : 0; // no channel asks for anything
    }
    const std::uint8_t *at = bytes.data();
    const std::uint8_t *const end = at + bytes.size() / wordBytes * wordBytes;
    const std::ptrdiff_t blockBytes = std::ptrdiff_t(m_slots) * wordBytes * blockGroups;
    std::int64_t groups = 0; // that ended in this buffer
    while (at != end) {
        if (m_slot == 0 && !m_firstGroup && end - at >= blockBytes) {
            const std::uint64_t match = matchOfBlock(at);
            if (match != 0) {
                return groups * groupSamples + std::countr_zero(match);
            }
            at += blockBytes;
            groups += blockGroups;
            continue;
        }
        takeWord(load16(at));
        at += wordBytes;
        if (m_slot < m_slots) {
            continue;
        }
        if (m_match != 0) {
            return groups * groupSamples + std::countr_zero(m_match);
        }
        ++groups;
        m_slot = 0;
        m_part = 0;
        m_match = allSamples;
        m_firstGroup = false;
    }
    return -1;
}
