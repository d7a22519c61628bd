// The decoders of samples that a device streams, and of the runs of a simulated capture.

#include "store/SmpDataTails.h"

#include <algorithm>
#include <cstring>

using namespace smpBytes;

// ---- one byte a sample ---------------------------------------------------------------------------------------------

bool SmpData::addBytes8(std::span<const std::uint8_t> bytes, std::int32_t start, std::int64_t &smpCountOut)
{
    if (start >= 0 && !bytes.empty()) {
        m_startLevels = bytes[0];
        m_lastByte = bytes[0];
    }
    bytes = bytes.subspan(std::min(std::size_t(std::max(start, 0)), bytes.size()));
    Tails tails(*this, m_smpCount);
    const std::uint64_t present = (tails.present() & 0xFF) * 0x0101010101010101;
    std::uint64_t last = m_lastByte;
    std::int64_t samples = m_smpCount;
    const std::uint8_t *at = bytes.data();
    const std::uint8_t *end = at + bytes.size();
    bool stored = true;
    while (at != end && stored) {
        // Eight samples at a time: bit 8 s + c is set where channel c changes with sample s. The last few samples
        // stand in a word that is filled up with repeats of the last one, which change nothing.
        const auto count = int(std::min<std::ptrdiff_t>(8, end - at));
        std::uint64_t word = 0;
        if (count == 8) {
            word = load64(at);
        } else {
            for (int i = 7; i >= 0; --i) {
                word = word << 8 | at[std::min(i, count - 1)];
            }
        }
        std::uint64_t changed = (word ^ (word << 8 | last)) & present;
        for (; changed != 0; changed &= changed - 1) {
            const int bit = std::countr_zero(changed);
            if (!tails.add(std::size_t(bit & 7), samples + (bit >> 3))) [[unlikely]] {
                samples += (bit >> 3) - count; // the samples before this one are done
                stored = false;
                break;
            }
        }
        last = word >> 56;
        samples += count;
        at += count;
    }
    m_lastByte = std::uint8_t(last);
    m_smpCount = samples;
    smpCountOut = samples;
    return stored;
}

// ---- words of one channel in turn ----------------------------------------------------------------------------------

namespace {

constexpr int slicedBits = 16;         // samples in one word of one channel
constexpr std::size_t slicedWord = 2;  // bytes
constexpr int busyGroups = 8;          // decoded at once where channels change
constexpr std::size_t quietBytes = 64; // compared at once; room for one group of 32 channels

} // namespace

/// The channels that take turns in a stream of slices, while it is decoded.
struct SmpData::Turns {
    const std::int32_t *chns; ///< in the order of their words
    std::int32_t *levels;     ///< by channel
    int slotCount;

    [[nodiscard]] std::size_t groupBytes() const { return std::size_t(slotCount) * slicedWord; }
};

/// The bytes of a stream in which no channel changes, for one state of all channels.
class SmpData::QuietPattern {
public:
    void build(const Turns &turns)
    {
        int slot = 0;
        for (std::size_t at = 0; at < quietBytes; at += slicedWord) {
            const int fill = turns.levels[turns.chns[slot]] != 0 ? 0xFF : 0;
            std::memset(m_bytes + at, fill, slicedWord);
            slot = slot + 1 == turns.slotCount ? 0 : slot + 1;
        }
    }

    /// True when `quietBytes` bytes from `bytes` on hold no change.
    [[nodiscard]] bool matches(const std::uint8_t *bytes) const
    {
        std::uint64_t differs = 0;
        for (std::size_t at = 0; at < quietBytes; at += 8) {
            differs |= load64(bytes + at) ^ load64(m_bytes + at);
        }
        return differs == 0;
    }

private:
    std::uint8_t m_bytes[quietBytes];
};

/// True when each channel has room for whatever the next busyGroups groups hold.
bool SmpData::hasRoom(const Tails &tails, const Turns &turns, std::int64_t samples)
{
    constexpr int most = busyGroups * slicedBits;
    if (samples + most > tails.limit()) {
        return false;
    }
    for (int slot = 0; slot < turns.slotCount; ++slot) {
        const auto chn = std::size_t(turns.chns[slot]);
        if ((tails.present() >> chn & 1) != 0 && tails.room(chn) < most) {
            return false;
        }
    }
    return true;
}

/// Decodes busyGroups groups channel by channel, which keeps what belongs to a channel in registers. Needs hasRoom().
/// @return whether any channel changed
bool SmpData::addBusyGroups(Tails &tails, const Turns &turns, const std::uint8_t *bytes, std::int64_t samples)
{
    std::uint32_t any = 0;
    for (int slot = 0; slot < turns.slotCount; ++slot, bytes += slicedWord) {
        const auto chn = std::size_t(turns.chns[slot]);
        const bool present = (tails.present() >> chn & 1) != 0;
        auto level = std::uint32_t(turns.levels[chn]);
        std::uint32_t *next = tails.next(chn);
        const std::uint8_t *at = bytes;
        auto pos = std::uint32_t(samples);
        for (int group = 0; group < busyGroups; ++group) {
            const std::uint32_t word = load16(at);
            std::uint32_t changed = (word ^ (word << 1 | level)) & 0xFFFF;
            any |= changed;
            level = word >> (slicedBits - 1);
            for (changed = present ? changed : 0; changed != 0; changed &= changed - 1) {
                *next++ = pos + std::uint32_t(std::countr_zero(changed));
            }
            at += turns.groupBytes();
            pos += slicedBits;
        }
        turns.levels[chn] = std::int32_t(level);
        tails.setNext(chn, next);
    }
    return any != 0;
}

/// Lists the channels that take turns, of none of which the level is known yet.
void SmpData::startSlices()
{
    m_startLevels = 0;
    m_slot = 0;
    m_slotCount = 0;
    m_slotsKnown = 0;
    for (std::size_t chn = 0; chn < std::min(m_chnRoots.size(), Tails::capacity); ++chn) {
        // A channel whose root the heap refused still sends its words.
        if (m_chnRoots[chn] != nullptr || m_enabled[chn] != 0) {
            m_slicedChn[std::size_t(m_slotCount++)] = std::int32_t(chn);
            m_slicedLevel[chn] = 0;
        }
    }
}

/// Takes the start levels from bit 0 of each channel's first word, as far as the capture's first group has come: a
/// chunk may cut it.
void SmpData::learnStartLevels(std::span<const std::uint8_t> bytes)
{
    for (std::size_t at = 0; m_slotsKnown < m_slotCount && at < bytes.size(); at += slicedWord) {
        const auto chn = std::size_t(m_slicedChn[std::size_t(m_slotsKnown++)]);
        m_slicedLevel[chn] = bytes[at] & 1;
        m_startLevels |= std::uint64_t(bytes[at] & 1) << chn;
    }
}

/// Where addSliced() stands in a chunk. A value on the stack, since the compiler must take every byte written into a
/// leaf for a possible change of the store's members.
struct SmpData::SliceRun {
    Turns turns;
    const std::uint8_t *at;
    const std::uint8_t *end; ///< behind the last whole word
    std::int64_t samples;
    int slot;                  ///< of the word at `at`
    bool quiet = true;         ///< nothing has changed in the current group so far
    bool patternHolds = false; ///< the pattern is that of the present levels
    QuietPattern pattern{};

    [[nodiscard]] bool holds(std::size_t bytes) const { return std::size_t(end - at) >= bytes; }
    void passGroups(std::int64_t groups)
    {
        at += std::size_t(groups) * turns.groupBytes();
        samples += groups * slicedBits;
    }
    void passWord()
    {
        at += slicedWord;
        if (++slot == turns.slotCount) {
            samples += slicedBits;
            slot = 0;
        }
    }
};

/// Passes whole groups in which nothing changes. @return false when the run does not stand before such groups
bool SmpData::passQuietGroups(SliceRun &run)
{
    const auto groupsAtOnce = std::int64_t(quietBytes / run.turns.groupBytes());
    if (!run.quiet || groupsAtOnce == 0 || !run.holds(quietBytes)) {
        return false;
    }
    if (!run.patternHolds) {
        run.pattern.build(run.turns);
        run.patternHolds = true;
    }
    if (!run.pattern.matches(run.at)) {
        return false;
    }
    do {
        run.passGroups(groupsAtOnce);
    } while (run.holds(quietBytes) && run.pattern.matches(run.at));
    return true;
}

/// Decodes whole groups of busy channels. @return false when there are too few, or they may not fit
bool SmpData::passBusyGroups(Tails &tails, SliceRun &run)
{
    if (run.quiet || !run.holds(busyGroups * run.turns.groupBytes()) || !hasRoom(tails, run.turns, run.samples)) {
        return false;
    }
    run.quiet = !addBusyGroups(tails, run.turns, run.at, run.samples);
    run.patternHolds = false;
    run.passGroups(busyGroups);
    return true;
}

/// Decodes the next word. @return false when memory is spent: the word is then not passed
bool SmpData::addWord(Tails &tails, SliceRun &run)
{
    const std::uint32_t word = load16(run.at);
    const auto chn = std::size_t(run.turns.chns[run.slot]);
    // Bit k of `changed` is set where sample k differs from the one before it.
    std::uint32_t changed = (word ^ (word << 1 | std::uint32_t(run.turns.levels[chn]))) & 0xFFFF;
    if (changed != 0) {
        run.quiet = false;
        run.patternHolds = false;
        run.turns.levels[chn] = std::int32_t(word >> (slicedBits - 1));
        changed = (tails.present() >> chn & 1) != 0 ? changed : 0;
        for (; changed != 0; changed &= changed - 1) {
            if (!tails.add(chn, run.samples + std::countr_zero(changed))) [[unlikely]] {
                return false;
            }
        }
    }
    run.passWord();
    return true;
}

bool SmpData::addSliced(std::span<const std::uint8_t> bytes, std::int32_t start, std::int64_t &smpCountOut)
{
    bytes = bytes.subspan(std::min(std::size_t(std::max(start, 0)), bytes.size()));
    if (start >= 0) {
        startSlices();
    }
    learnStartLevels(bytes);
    smpCountOut = m_smpCount;
    if (m_slotCount < 1) {
        return true;
    }
    Tails tails(*this, m_smpCount);
    const std::uint8_t *end = bytes.data() + bytes.size() / slicedWord * slicedWord;
    SliceRun run{{m_slicedChn.data(), m_slicedLevel.data(), m_slotCount}, bytes.data(), end, m_smpCount, m_slot};
    bool stored = true;
    while (run.at != end && stored) {
        if (run.slot == 0) {
            if (passQuietGroups(run) || passBusyGroups(tails, run)) {
                continue;
            }
            run.quiet = true;
        }
        stored = addWord(tails, run);
    }
    m_slot = run.slot;
    m_smpCount = run.samples;
    smpCountOut = run.samples;
    return stored;
}

// ---- simulated runs ------------------------------------------------------------------------------------------------

bool SmpData::addPulses(std::span<const std::int32_t> widths, int chn, std::int64_t &pos)
{
    if (chn < 0 || chn >= chnCount || widths.empty()) {
        return true;
    }
    SmpEdgeRoot *root = m_chnRoots[std::size_t(chn)];
    SmpEdgeLeaf *leaf = nullptr;
    for (const std::int32_t width : widths) {
        pos += width;
        if (root == nullptr) {
            continue;
        }
        if (leaf == nullptr || leaf->count >= SmpEdgeLeaf::capacity) {
            leaf = writableLeaf(*root);
            if (leaf == nullptr) {
                return false;
            }
        }
        smpBlocks::put(*leaf, pos);
    }
    return true;
}

bool SmpData::addPulsesJoin(std::span<const std::int32_t> widths, int chn, std::int64_t &pos, bool join)
{
    if (chn < 0 || chn >= chnCount || widths.empty() || !join || pos <= 0) {
        return addPulses(widths, chn, pos);
    }
    pos += widths[0];
    const SmpEdgeRoot *root = m_chnRoots[std::size_t(chn)];
    SmpEdgeLeaf *leaf = root == nullptr ? nullptr : smpBlocks::lastLeaf(*root);
    if (leaf != nullptr && leaf->count > 0) {
        // Beyond 40 bits the largest position stands for it: finish() makes that the end mark.
        leaf->setPosition(leaf->count - 1, std::clamp(pos, std::int64_t(0), smpBlocks::maxPosition));
    }
    return addPulses(widths.subspan(1), chn, pos);
}
