// The heads of DataBlocks.h as bytes.

#include "files/DataBlocks.h"
#include "files/DataBytes.h"

#include <bit>
#include <cstring>

namespace {

constexpr char fileMark[] = {'c', 'x', 'd', 'a', 't'};
constexpr char blockMark[] = {'#', '#', 'D'};

constexpr int smpCountAt = 8;
constexpr int smpFrequAt = 16;
constexpr int trgPosAt = 24;
constexpr int chnCountAt = 32;
constexpr int blockCountAt = 33; ///< the number and 1, so that 0 says nothing
constexpr std::size_t blockChnsAt = 34;
constexpr std::size_t blockChnsSize = 6;

constexpr int blockChnAt = 4;
constexpr int blockLevelAt = 5;
constexpr int blockEntriesAt = 8;

/// Takes what the head says of its blocks, unless it contradicts itself: other programs may leave anything there.
void takeBlockCount(std::span<const std::uint8_t, DataFileHead::size> bytes, DataFileHead &head)
{
    std::uint64_t chns = 0;
    for (std::size_t i = 0; i < blockChnsSize; ++i) {
        chns |= std::uint64_t(bytes[blockChnsAt + i]) << (8 * i);
    }
    const int count = bytes[blockCountAt] - 1;
    const int named = std::popcount(chns);
    const bool allNamed = head.chnCount <= DataFileHead::namedChannels;
    const bool fits = count >= 0 && count <= head.chnCount && (allNamed ? count == named : count >= named) &&
                      (!allNamed || chns >> head.chnCount == 0);
    head.blockCount = fits ? count : -1;
    head.blockChns = fits ? chns : 0;
}

} // namespace

std::array<std::uint8_t, DataFileHead::size> encodeFileHead(const DataFileHead &head)
{
    std::array<std::uint8_t, DataFileHead::size> bytes{};
    std::memcpy(bytes.data(), fileMark, sizeof fileMark);
    put40(bytes.data() + smpCountAt, head.smpCount);
    put40(bytes.data() + smpFrequAt, head.smpFrequ);
    put40(bytes.data() + trgPosAt, head.trgPos);
    bytes[chnCountAt] = std::uint8_t(head.chnCount);
    if (head.blockCount >= 0 && head.blockCount <= DataFileHead::blockCountMax) {
        bytes[blockCountAt] = std::uint8_t(head.blockCount + 1);
        for (std::size_t i = 0; i < blockChnsSize; ++i) {
            bytes[blockChnsAt + i] = std::uint8_t(head.blockChns >> (8 * i));
        }
    }
    return bytes;
}

bool decodeFileHead(std::span<const std::uint8_t, DataFileHead::size> bytes, DataFileHead &head)
{
    if (std::memcmp(bytes.data(), fileMark, sizeof fileMark) != 0) {
        return false;
    }
    head.smpCount = take40(bytes.data() + smpCountAt);
    head.smpFrequ = take40(bytes.data() + smpFrequAt);
    head.trgPos = take40(bytes.data() + trgPosAt);
    head.chnCount = bytes[chnCountAt];
    takeBlockCount(bytes, head);
    return true;
}

std::array<std::uint8_t, DataBlockHead::size> encodeBlockHead(const DataBlockHead &head)
{
    std::array<std::uint8_t, DataBlockHead::size> bytes{};
    std::memcpy(bytes.data(), blockMark, sizeof blockMark);
    bytes[blockChnAt] = std::uint8_t(head.chn);
    bytes[blockLevelAt] = std::uint8_t(head.level);
    put40(bytes.data() + blockEntriesAt, head.entryCount);
    return bytes;
}

bool decodeBlockHead(std::span<const std::uint8_t, DataBlockHead::size> bytes, DataBlockHead &head)
{
    if (std::memcmp(bytes.data(), blockMark, sizeof blockMark) != 0) {
        return false;
    }
    head.chn = bytes[blockChnAt];
    head.level = bytes[blockLevelAt] != 0 ? 1 : 0;
    head.entryCount = take40(bytes.data() + blockEntriesAt);
    return true;
}
