// The decoders of the records that a device reads back from its memory.

#include "store/SmpDataTails.h"

#include <algorithm>

using namespace smpBytes;

namespace {

constexpr std::uint32_t groupStep = 16; // bytes added to `consumed` for each whole group before a stop, in both formats
constexpr int maxCount = 255;           // samples of one record

/// Groups of 16 bytes: five records {word: 16 bits, count: 8 bits}, one spare byte. A value is one loaded group.
class Rle16 {
public:
    static constexpr std::size_t groupSize = 16;
    static constexpr std::size_t recordSize = 3;
    static constexpr std::size_t records = 5;
    static constexpr std::size_t countAt = 2; ///< in a record
    static std::uint32_t word(const std::uint8_t *record) { return load16(record); }

    explicit Rle16(const std::uint8_t *group) : m_low(load64(group)), m_high(load64(group + 8)) {}

    /// The offset of what is wrong with the group beside counts of 0; the groups of this format hold no check.
    static std::size_t unsoundAt(const std::uint8_t *) { return 0; }

    /// No count is 0.
    [[nodiscard]] bool wellFormed() const
    {
        constexpr std::uint64_t lowCounts = 0x0000FF0000FF0000;  // bytes 2; 5
        constexpr std::uint64_t highCounts = 0x00FF0000FF0000FF; // bytes 8; 11; 14
        return !hasZeroByte(m_low | ~lowCounts) && !hasZeroByte(m_high | ~highCounts);
    }
    /// All five words are `word`.
    [[nodiscard]] bool quiet(std::uint64_t word) const
    {
        constexpr std::uint64_t lowWords = 0xFFFF00FFFF00FFFF;  // bytes 0, 1; 3, 4; 6, 7
        constexpr std::uint64_t highWords = 0x0000FFFF00FFFF00; // bytes 9, 10; 12, 13
        const std::uint64_t lowPattern = word | word << 24 | word << 48;
        const std::uint64_t highPattern = word << 8 | word << 32;
        return (m_low & 0xFFFF) == word && // which decides for most groups that are not
               (((m_low ^ lowPattern) & lowWords) | ((m_high ^ highPattern) & highWords)) == 0;
    }
    [[nodiscard]] std::int64_t samples() const
    {
        return byteOf(m_low, 2) + byteOf(m_low, 5) + byteOf(m_high, 0) + byteOf(m_high, 3) + byteOf(m_high, 6);
    }

private:
    std::uint64_t m_low;
    std::uint64_t m_high;
};

/// Groups of 32 bytes: six records {word: 32 bits, count: 8 bits}, two check bytes whose XOR is 0xFF.
class Rle32 {
public:
    static constexpr std::size_t groupSize = 32;
    static constexpr std::size_t recordSize = 5;
    static constexpr std::size_t records = 6;
    static constexpr std::size_t countAt = 4; ///< in a record
    static std::uint32_t word(const std::uint8_t *record) { return load32(record); }

    explicit Rle32(const std::uint8_t *group)
        : m_a(load64(group)), m_b(load64(group + 8)), m_c(load64(group + 16)), m_d(load64(group + 24))
    {}

    /// The offset of the check bytes when they are wrong, else 0.
    static std::size_t unsoundAt(const std::uint8_t *group)
    {
        constexpr std::size_t checkAt = 30;
        return (group[checkAt] ^ group[checkAt + 1]) == 0xFF ? 0 : checkAt;
    }

    /// No count is 0, and the check bytes are right.
    [[nodiscard]] bool wellFormed() const
    {
        return (byteOf(m_d, 6) ^ byteOf(m_d, 7)) == 0xFF && !hasZeroByte(counts() | 0xFFFF000000000000);
    }
    /// All six words are `word`: at the bytes 0, 5, 10, 15, 20 and 25, the counts behind each.
    [[nodiscard]] bool quiet(std::uint64_t word) const
    {
        return (m_a & 0xFFFFFFFF) == word && // which decides for most groups that are not
               (((m_a ^ (word | word << 40)) & 0xFFFFFF00FFFFFFFF) |
                ((m_b ^ (word >> 24 | word << 16 | word << 56)) & 0xFF00FFFFFFFF00FF) |
                ((m_c ^ (word >> 8 | word << 32)) & 0xFFFFFFFF00FFFFFF) | ((m_d ^ word << 8) & 0x000000FFFFFFFF00)) ==
                   0;
    }
    [[nodiscard]] std::int64_t samples() const
    {
        constexpr std::uint64_t evenBytes = 0x00FF00FF00FF00FF;
        const std::uint64_t pairs = (counts() & evenBytes) + (counts() >> 8 & evenBytes);
        return std::int64_t((pairs * 0x0001000100010001) >> 48); // the sum of the four 16-bit lanes
    }

private:
    /// The six counts, in some order, in the low six bytes.
    [[nodiscard]] std::uint64_t counts() const
    {
        return (m_a & 0x000000FF00000000) >> 32 | (m_b & 0x000000000000FF00) | (m_b & 0x00FF000000000000) >> 32 |
               (m_c & 0x00000000FF000000) | (m_d & 0x00000000000000FF) << 32 | (m_d & 0x0000FF0000000000);
    }

    std::uint64_t m_a;
    std::uint64_t m_b;
    std::uint64_t m_c;
    std::uint64_t m_d;
};

} // namespace

void SmpData::startRecords(RecordState &state, std::uint32_t firstWord)
{
    if (m_smpCount == 0) {
        m_startLevels = firstWord;
        state = {firstWord, 0};
    }
}

/// Takes one record of a chunk into `state`, `smpCount` and the trees. False when memory is spent: the record is then
/// not counted.
bool SmpData::addRecord(Tails &tails, RecordState &state, std::uint32_t word, std::int64_t samples)
{
    if (!tails.addChanged(word ^ state.word, m_smpCount)) {
        return false;
    }
    state.word = word;
    m_smpCount += samples;
    ++state.records;
    if (state.records == m_trgRecord) {
        m_trgPos = m_smpCount;
    }
    return true;
}

/// Where a decoder stands in a chunk of groups. The members are copied here, since the compiler must take every byte
/// written into a leaf for a possible change of them.
struct SmpData::RleRun {
    const std::uint8_t *group; ///< the current group
    std::size_t offset;        ///< the record to go on with, in the current group
    std::uint32_t word;        ///< the levels as they are appended so far
    std::int64_t samples;
    std::uint64_t records; ///< done before the current group
};

/// Decodes whole groups up to `end`, among which no trigger lies and no position reaches the tails' limit. Stops at a
/// group or record that is malformed, or at a record of a channel whose leaf is full: `run` tells where, and the
/// changes of that record that are appended stand in `run.word`.
template<class Format>
void SmpData::addPlainGroups(Tails &tails, RleRun &run, const std::uint8_t *end)
{
    constexpr std::size_t recordBytes = Format::records * Format::recordSize;
    const auto present = std::uint32_t(tails.present());
    const std::uint8_t *group = run.group;
    std::uint32_t last = run.word;
    std::int64_t samples = run.samples;
    std::size_t offset = 0;
    for (; group != end; group += Format::groupSize) {
        const Format loaded(group);
        if (loaded.quiet(last)) {
            if (!loaded.wellFormed()) [[unlikely]] {
                break;
            }
            samples += loaded.samples();
            continue;
        }
        bool stopped = Format::unsoundAt(group) != 0;
        for (offset = 0; offset < recordBytes && !stopped; offset += Format::recordSize) {
            const std::uint32_t word = Format::word(group + offset);
            const std::uint8_t count = group[offset + Format::countAt];
            stopped = count == 0;
            if (stopped) [[unlikely]] {
                break;
            }
            std::uint32_t changed = (word ^ last) & present;
            last = word;
            for (; changed != 0; changed &= changed - 1) {
                if (!tails.put(std::size_t(std::countr_zero(changed)), samples)) [[unlikely]] {
                    last ^= changed;
                    stopped = true;
                    break;
                }
            }
            if (stopped) [[unlikely]] {
                break;
            }
            samples += count;
        }
        if (stopped) [[unlikely]] {
            break;
        }
        offset = 0;
    }
    run = {group, offset, last, samples,
           run.records + std::size_t(group - run.group) / Format::groupSize * Format::records};
}

/// Decodes the rest of the current group, whatever it holds. False when memory is spent.
template<class Format>
bool SmpData::addOddGroup(Tails &tails, RleRun &run, std::size_t groupAt)
{
    constexpr std::size_t recordBytes = Format::records * Format::recordSize;
    std::uint64_t records = run.records + run.offset / Format::recordSize;
    for (std::size_t offset = run.offset; offset < recordBytes; offset += Format::recordSize) {
        const std::uint32_t word = Format::word(run.group + offset);
        const std::uint8_t count = run.group[offset + Format::countAt];
        if (count == 0) {
            m_zeroSmpCnt = std::int32_t(groupAt + offset);
        }
        if (!tails.addChanged(word ^ run.word, run.samples)) {
            return false;
        }
        run.word = word;
        run.samples += count;
        if (++records == m_trgRecord) {
            m_trgPos = run.samples;
        }
    }
    if (const std::size_t unsoundAt = Format::unsoundAt(run.group); unsoundAt != 0) {
        m_zeroSmpCnt = std::int32_t(groupAt + unsoundAt);
    }
    run.group += Format::groupSize;
    run.offset = 0;
    run.records = records;
    return true;
}

template<class Format>
bool SmpData::addRle(std::span<const std::uint8_t> bytes, RecordState &state, std::uint32_t &consumed)
{
    constexpr std::int64_t maxGroupSamples = std::int64_t(Format::records) * maxCount;
    const std::size_t groups = bytes.size() / Format::groupSize;
    if (groups > 0) {
        startRecords(state, Format::word(bytes.data()));
    }
    Tails tails(*this, m_smpCount);
    RleRun run{bytes.data(), 0, state.word, m_smpCount, state.records};
    const std::uint8_t *end = bytes.data() + groups * Format::groupSize;
    bool stored = true;
    while (run.group != end && stored) {
        // Up to the group with the trigger, and up to where positions could reach the limit, groups are plain.
        tails.reach(run.samples);
        auto plain = std::uint64_t(end - run.group) / Format::groupSize;
        plain = run.records < m_trgRecord ? std::min(plain, (m_trgRecord - run.records - 1) / Format::records) : plain;
        const std::int64_t room = std::max<std::int64_t>(0, tails.limit() - run.samples);
        plain = std::min(plain, std::uint64_t(room / maxGroupSamples));
        addPlainGroups<Format>(tails, run, run.group + plain * Format::groupSize);
        if (run.group != end) {
            stored = addOddGroup<Format>(tails, run, std::size_t(run.group - bytes.data()));
        }
    }
    state = {run.word, run.records};
    m_smpCount = run.samples;
    consumed += stored ? std::uint32_t(bytes.size())
                       : std::uint32_t(std::size_t(run.group - bytes.data()) / Format::groupSize) * groupStep;
    return stored;
}

bool SmpData::addRle16(std::span<const std::uint8_t> bytes, std::uint32_t &consumed)
{
    return addRle<Rle16>(bytes, m_rle16, consumed);
}

bool SmpData::addRle32(std::span<const std::uint8_t> bytes, std::uint32_t &consumed)
{
    return addRle<Rle32>(bytes, m_rle32, consumed);
}

bool SmpData::addMixed16(std::span<const std::uint8_t> bytes, std::uint32_t &consumed)
{
    constexpr std::size_t group = 4; // bytes: analog 0, analog 1, 16 digital bits; one record, one sample
    constexpr std::size_t digitalAt = 2;
    const std::size_t records = bytes.size() / group;
    const std::uint8_t *record = bytes.data();
    if (records > 0) {
        startRecords(m_mixed16, load16(record + digitalAt));
    }
    Tails tails(*this, m_smpCount);
    SmpAChnBuffer *analog[2] = {aChnCount > 0 ? m_aChnBufs[0] : nullptr, aChnCount > 1 ? m_aChnBufs[1] : nullptr};
    for (std::size_t r = 0; r < records; ++r, record += group) {
        for (std::size_t a = 0; a < 2; ++a) {
            if (analog[a] != nullptr && r < SmpAChnBuffer::capacity) {
                analog[a]->samples[r] = std::int8_t(record[a]);
            }
        }
        if (!addRecord(tails, m_mixed16, load16(record + digitalAt), 1)) {
            consumed += std::uint32_t(r * group);
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
