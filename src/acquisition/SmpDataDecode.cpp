#include "acquisition/SmpDataBlocks.h"

#include <algorithm>
#include <bit>

using namespace smpBlocks;

namespace {

constexpr std::size_t mixed16Group = 4; // bytes: analog 0, analog 1, 16 digital bits
constexpr std::size_t rle16Group = 16;  // bytes: five records and a spare byte
constexpr std::size_t rle16Record = 3;  // bytes: 16 digital bits, count
constexpr std::size_t rle16Records = 5; // in a group
constexpr std::size_t rle32Group = 32;  // bytes: six records and two check bytes
constexpr std::size_t rle32Record = 5;  // bytes: 32 digital bits, count
constexpr std::size_t rle32Records = 6; // in a group
constexpr std::size_t rle32Check = 30;  // offset in a group of the two check bytes, whose XOR is 0xFF
constexpr std::uint32_t groupStep = 16; // added to `consumed` for each whole group before a stop, in both formats
constexpr int slicedBits = 16;          // samples in one word of one channel

std::uint32_t loadLe16(const std::uint8_t *bytes)
{
    return std::uint32_t(bytes[0]) | std::uint32_t(bytes[1]) << 8;
}

std::uint32_t loadLe32(const std::uint8_t *bytes)
{
    return loadLe16(bytes) | loadLe16(bytes + 2) << 16;
}

} // namespace

/// The leaf of each channel that the next entry goes to. Lives for one call of a decoder.
class SmpData::Tails {
public:
    static constexpr std::size_t capacity = 64; ///< channels that a word can carry

    explicit Tails(SmpData &data) : m_data(data)
    {
        for (std::size_t chn = 0; chn < std::min(data.chnRoots.size(), capacity); ++chn) {
            SmpEdgeRoot *root = data.chnRoots[chn];
            m_present |= std::uint64_t(root != nullptr) << chn;
            m_leaves[chn] = root == nullptr ? nullptr : lastLeaf(*root);
        }
    }

    /// Bit i is set for a channel that has a root: only these may be appended to.
    [[nodiscard]] std::uint64_t present() const { return m_present; }

    /// Appends an entry. False when memory is spent.
    [[nodiscard]] bool add(std::size_t chn, std::int64_t pos)
    {
        SmpEdgeLeaf *leaf = m_leaves[chn];
        if (leaf == nullptr || leaf->count >= SmpEdgeLeaf::capacity) {
            leaf = m_leaves[chn] = m_data.writableLeaf(*m_data.chnRoots[chn]);
            if (leaf == nullptr) {
                return false;
            }
        }
        put(*leaf, pos);
        return true;
    }

    /// Appends an entry at `pos` on every channel whose bit is set in `changed`.
    [[nodiscard]] bool addChanged(std::uint64_t changed, std::int64_t pos)
    {
        for (changed &= m_present; changed != 0; changed &= changed - 1) {
            if (!add(std::size_t(std::countr_zero(changed)), pos)) {
                return false;
            }
        }
        return true;
    }

private:
    SmpData &m_data;
    std::uint64_t m_present = 0;
    std::array<SmpEdgeLeaf *, capacity> m_leaves{};
};

// ---- records of the device's memory --------------------------------------------------------------------------------

void SmpData::startRecords(RecordState &state, std::uint32_t firstWord)
{
    if (smpCount == 0) {
        startLevels = firstWord;
        state = {firstWord, 0};
    }
}

bool SmpData::addRecord(Tails &tails, RecordState &state, std::uint32_t word, std::int64_t samples)
{
    if (!tails.addChanged(word ^ state.word, smpCount)) {
        return false;
    }
    state.word = word;
    smpCount += samples;
    ++state.records;
    if (state.records == trgRecord) {
        trgPos = smpCount;
    }
    return true;
}

bool SmpData::addMixed16(std::span<const std::uint8_t> bytes, std::uint32_t &consumed)
{
    const std::size_t records = bytes.size() / mixed16Group;
    const std::uint8_t *record = bytes.data();
    if (records > 0) {
        startRecords(m_mixed16, loadLe16(record + 2));
    }
    Tails tails(*this);
    SmpAChnBuffer *analog[2] = {aChnCount > 0 ? aChnBufs[0] : nullptr, aChnCount > 1 ? aChnBufs[1] : nullptr};
    for (std::size_t r = 0; r < records; ++r, record += mixed16Group) {
        for (std::size_t a = 0; a < 2; ++a) {
            if (analog[a] != nullptr && r < SmpAChnBuffer::capacity) {
                analog[a]->samples[r] = std::int8_t(record[a]);
            }
        }
        if (!addRecord(tails, m_mixed16, loadLe16(record + 2), 1)) {
            consumed += std::uint32_t(r * mixed16Group);
            return false;
        }
    }
    for (SmpAChnBuffer *buffer : analog) {
        if (buffer != nullptr) {
            const std::size_t count = std::size_t(buffer->count) + records;
            buffer->count = std::int32_t(std::min<std::size_t>(count, SmpAChnBuffer::capacity));
        }
    }
    consumed += std::uint32_t(bytes.size());
    return true;
}

bool SmpData::addRle16(std::span<const std::uint8_t> bytes, std::uint32_t &consumed)
{
    const std::size_t groups = bytes.size() / rle16Group;
    if (groups > 0) {
        startRecords(m_rle16, loadLe16(bytes.data()));
    }
    Tails tails(*this);
    for (std::size_t g = 0; g < groups; ++g) {
        const std::uint8_t *group = bytes.data() + g * rle16Group;
        for (std::size_t offset = 0; offset < rle16Records * rle16Record; offset += rle16Record) {
            const std::uint8_t samples = group[offset + 2];
            if (samples == 0) {
                zeroSmpCnt = std::int32_t(g * rle16Group + offset);
            }
            if (!addRecord(tails, m_rle16, loadLe16(group + offset), samples)) {
                consumed += std::uint32_t(g) * groupStep;
                return false;
            }
        }
    }
    consumed += std::uint32_t(bytes.size());
    return true;
}

bool SmpData::addRle32(std::span<const std::uint8_t> bytes, std::uint32_t &consumed)
{
    const std::size_t groups = bytes.size() / rle32Group;
    if (groups > 0) {
        startRecords(m_rle32, loadLe32(bytes.data()));
    }
    Tails tails(*this);
    for (std::size_t g = 0; g < groups; ++g) {
        const std::uint8_t *group = bytes.data() + g * rle32Group;
        for (std::size_t offset = 0; offset < rle32Records * rle32Record; offset += rle32Record) {
            const std::uint8_t samples = group[offset + 4];
            if (samples == 0) {
                zeroSmpCnt = std::int32_t(g * rle32Group + offset);
            }
            if (!addRecord(tails, m_rle32, loadLe32(group + offset), samples)) {
                consumed += std::uint32_t(g) * groupStep;
                return false;
            }
        }
        if ((group[rle32Check] ^ group[rle32Check + 1]) != 0xFF) {
            zeroSmpCnt = std::int32_t(g * rle32Group + rle32Check);
        }
    }
    consumed += std::uint32_t(bytes.size());
    return true;
}

// ---- streams of samples
// ----------------------------------------------------------------------------------------------

bool SmpData::addBytes8(std::span<const std::uint8_t> bytes, std::int32_t start, std::int64_t &smpCountOut)
{
    if (start >= 0 && !bytes.empty()) {
        startLevels = bytes[0];
        m_lastByte = bytes[0];
    }
    Tails tails(*this);
    bool stored = true;
    for (std::size_t i = std::size_t(std::max(start, 0)); i < bytes.size(); ++i) {
        if (!tails.addChanged(std::uint64_t(bytes[i] ^ m_lastByte), smpCount)) {
            stored = false;
            break;
        }
        m_lastByte = bytes[i];
        ++smpCount;
    }
    smpCountOut = smpCount;
    return stored;
}

void SmpData::firstSlices(std::span<const std::uint8_t> bytes)
{
    startLevels = 0;
    m_slot = 0;
    m_slotCount = 0;
    for (std::size_t chn = 0; chn < std::min(chnRoots.size(), Tails::capacity); ++chn) {
        if (chnRoots[chn] == nullptr && m_enabled[chn] == 0) {
            continue;
        }
        const std::size_t at = std::size_t(m_slotCount) * 2;
        const int level = at < bytes.size() ? bytes[at] & 1 : 0;
        slicedChn[std::size_t(m_slotCount)] = std::int32_t(chn);
        slicedLevel[chn] = level;
        startLevels |= std::uint64_t(level) << chn;
        ++m_slotCount;
    }
}

bool SmpData::addSliced(std::span<const std::uint8_t> bytes, std::int32_t start, std::int64_t &smpCountOut)
{
    bytes = bytes.subspan(std::min(std::size_t(std::max(start, 0)), bytes.size()));
    if (start >= 0) {
        firstSlices(bytes);
    }
    Tails tails(*this);
    bool stored = true;
    const std::size_t words = m_slotCount < 1 ? 0 : bytes.size() / 2;
    for (std::size_t w = 0; w < words && stored; ++w) {
        const std::uint32_t word = loadLe16(bytes.data() + w * 2);
        const auto chn = std::size_t(slicedChn[std::size_t(m_slot)]);
        // Bit k of `changed` is set where sample k differs from the one before it.
        std::uint32_t changed = (word ^ (word << 1 | std::uint32_t(slicedLevel[chn]))) & 0xFFFF;
        for (; changed != 0 && stored && (tails.present() >> chn & 1) != 0; changed &= changed - 1) {
            stored = tails.add(chn, smpCount + std::countr_zero(changed));
        }
        slicedLevel[chn] = std::int32_t(word >> (slicedBits - 1));
        if (stored && ++m_slot == m_slotCount) {
            smpCount += slicedBits;
            m_slot = 0;
        }
    }
    smpCountOut = smpCount;
    return stored;
}

// ---- simulated runs
// --------------------------------------------------------------------------------------------------

bool SmpData::addPulses(std::span<const std::int32_t> widths, int chn, std::int64_t &pos)
{
    if (chn < 0 || chn >= chnCount || widths.empty()) {
        return true;
    }
    SmpEdgeRoot *root = chnRoots[std::size_t(chn)];
    for (const std::int32_t width : widths) {
        pos += width;
        if (root == nullptr) {
            continue;
        }
        SmpEdgeLeaf *leaf = writableLeaf(*root);
        if (leaf == nullptr) {
            return false;
        }
        put(*leaf, pos);
    }
    return true;
}

bool SmpData::addPulsesJoin(std::span<const std::int32_t> widths, int chn, std::int64_t &pos, bool join)
{
    if (chn < 0 || chn >= chnCount || widths.empty() || !join || pos <= 0) {
        return addPulses(widths, chn, pos);
    }
    pos += widths[0];
    const SmpEdgeRoot *root = chnRoots[std::size_t(chn)];
    SmpEdgeLeaf *leaf = root == nullptr ? nullptr : lastLeaf(*root);
    if (leaf != nullptr && leaf->count > 0) {
        // Beyond 40 bits the largest position stands for it: finish() makes that the end mark.
        leaf->setPosition(leaf->count - 1, std::clamp(pos, std::int64_t(0), maxPosition));
    }
    return addPulses(widths.subspan(1), chn, pos);
}
