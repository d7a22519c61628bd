#include "files/DataBlocks.h"

#include "store/SmpData.h"
#include "store/SmpEdgeReader.h"

#include <QIODevice>
#include <QtEndian>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <memory>
#include <new>

namespace {

constexpr char fileMark[] = {'c', 'x', 'd', 'a', 't'};
constexpr char blockMark[] = {'#', '#', 'D'};

constexpr int smpCountAt = 8;
constexpr int smpFrequAt = 16;
constexpr int trgPosAt = 24;
constexpr int chnCountAt = 32;

constexpr int blockChnAt = 4;
constexpr int blockLevelAt = 5;
constexpr int blockEntriesAt = 8;

/// Entries are taken and put 8 bytes at a time: room behind the last one of a buffer.
constexpr int wordSlack = 8;

/// The tree of a channel holds no more, the end mark included.
constexpr std::int64_t entryLimit = SmpEdgeRoot::capacity * SmpData::entriesPerMid;

/// The 5 bytes at `bytes`; 8 must be readable there.
inline std::int64_t take40(const std::uint8_t *bytes)
{
    return std::int64_t(qFromLittleEndian<quint64>(bytes) & quint64(dataFileMax));
}

/// Puts `value` as 5 bytes and writes over the 3 bytes behind them.
inline void put40(std::uint8_t *bytes, std::int64_t value)
{
    qToLittleEndian<quint64>(quint64(value) & quint64(dataFileMax), bytes);
}

std::unique_ptr<std::uint8_t[]> pieceBuffer(int bytes)
{
    return std::unique_ptr<std::uint8_t[]>(new (std::nothrow) std::uint8_t[std::size_t(bytes + wordSlack)]());
}

bool readAll(QIODevice &device, std::uint8_t *out, std::int64_t bytes)
{
    return device.read(reinterpret_cast<char *>(out), bytes) == bytes;
}

bool writeAll(QIODevice &device, const std::uint8_t *from, std::int64_t bytes)
{
    return device.write(reinterpret_cast<const char *>(from), bytes) == bytes;
}

/// Unpacks `count` entries to the end of `leaf`, which has room for them.
/// @param last  in/out, the entry before the first one; -1 for none
/// @return false if they do not strictly increase
bool unpackEntries(const std::uint8_t *packed, int count, SmpEdgeLeaf &leaf, std::int64_t &last)
{
    std::uint32_t *low = leaf.posLow + leaf.count;
    std::uint8_t *high = leaf.posHigh + leaf.count;
    std::int64_t previous = last;
    bool ordered = true;
    for (int i = 0; i < count; ++i) {
        const std::int64_t pos = take40(packed + std::ptrdiff_t(i) * dataEntrySize);
        ordered &= pos > previous;
        low[i] = std::uint32_t(pos);
        high[i] = std::uint8_t(pos >> 32);
        previous = pos;
    }
    last = previous;
    leaf.count += count;
    return ordered;
}

/// Appends `count` packed entries to a channel. @return false if they are out of order or memory is spent
bool appendEntries(SmpData &data, SmpEdgeRoot &root, const std::uint8_t *packed, std::int64_t count, std::int64_t &last)
{
    while (count > 0) {
        const SmpEdgeMid &mid = *root.mids[root.midCount - 1];
        SmpEdgeLeaf &leaf = *mid.leaves[mid.leafCount - 1];
        const int room = SmpEdgeLeaf::capacity - leaf.count;
        if (room == 0) {
            if (!data.growChn(root, false)) {
                return false;
            }
            continue;
        }
        const int run = int(std::min<std::int64_t>(count, room));
        if (!unpackEntries(packed, run, leaf, last)) {
            return false;
        }
        packed += std::ptrdiff_t(run) * dataEntrySize;
        count -= run;
    }
    return true;
}

/// Reads the entries of one block in pieces.
DataBlocksResult readEntries(QIODevice &device, SmpData &data, SmpEdgeRoot &root, std::int64_t count,
                             std::uint8_t *buffer, const DataPieceHook &afterPiece)
{
    std::int64_t last = -1;
    while (count > 0) {
        const std::int64_t entries = std::min<std::int64_t>(count, dataReadPiece / dataEntrySize);
        if (!readAll(device, buffer, entries * dataEntrySize)) {
            return DataBlocksResult::Failed;
        }
        if (!appendEntries(data, root, buffer, entries, last)) {
            return DataBlocksResult::Failed;
        }
        count -= entries;
        if (afterPiece && !afterPiece(device.pos())) {
            return DataBlocksResult::Stopped;
        }
    }
    return DataBlocksResult::Done;
}

/// Reads the next block's head and gives its channel a tree. @return null for a head that cannot be accepted
SmpEdgeRoot *startBlock(QIODevice &device, SmpData &data, DataBlockHead &head)
{
    std::array<std::uint8_t, DataBlockHead::size> bytes;
    if (!readAll(device, bytes.data(), DataBlockHead::size) || !decodeBlockHead(bytes, head)) {
        return nullptr;
    }
    if (head.chn >= data.chnCount || data.chnRoots[std::size_t(head.chn)] != nullptr) {
        return nullptr;
    }
    // A number that the rest of the file cannot hold is refused before anything is read on its word.
    if (head.entryCount >= entryLimit || head.entryCount * dataEntrySize > device.size() - device.pos()) {
        return nullptr;
    }
    SmpEdgeRoot *root = data.createChn(head.chn);
    const std::uint64_t bit = head.chn < 64 ? std::uint64_t(1) << head.chn : 0;
    data.startLevels = head.level != 0 ? data.startLevels | bit : data.startLevels & ~bit;
    return root;
}

/// Where the entries of one channel go out from.
struct ChannelOut {
    SmpEdgeReader reader;     ///< at the next entry
    std::int64_t posStart;    ///< what positions are counted from
    std::int64_t entriesLeft; ///< the end mark included
    std::int64_t endMark;
};

/// Packs the next entries of the channel, as many as `room` takes. @return the bytes packed; 0 for a broken tree
int packEntries(ChannelOut &out, std::uint8_t *packed, int room)
{
    int bytes = 0;
    while (out.entriesLeft > 0 && bytes < room) {
        const SmpEdgeReader::Block block = out.reader.block();
        const std::int64_t fits = std::min<std::int64_t>(out.entriesLeft, (room - bytes) / dataEntrySize);
        const int run = int(std::min<std::int64_t>(block.size(), fits));
        if (run < 1) {
            return 0;
        }
        for (int i = 0; i < run; ++i) {
            put40(packed + bytes, block.position(i) - out.posStart);
            bytes += dataEntrySize;
        }
        out.entriesLeft -= run;
        out.reader.pass(run);
    }
    // The first entry behind the range is what closes the channel, wherever it stands.
    if (out.entriesLeft == 0) {
        put40(packed + bytes - dataEntrySize, out.endMark);
    }
    return bytes;
}

DataBlocksResult writeEntries(QIODevice &device, ChannelOut &out, std::uint8_t *buffer, std::int64_t &done,
                              const DataPieceHook &afterPiece)
{
    while (out.entriesLeft > 0) {
        const int bytes = packEntries(out, buffer, dataWritePiece);
        if (bytes == 0 || !writeAll(device, buffer, bytes)) {
            return DataBlocksResult::Failed;
        }
        done += bytes / dataEntrySize;
        if (afterPiece && !afterPiece(done)) {
            return DataBlocksResult::Stopped;
        }
    }
    return DataBlocksResult::Done;
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

DataBlocksResult readDataBlocks(QIODevice &device, SmpData &data, const DataPieceHook &afterPiece)
{
    std::array<std::uint8_t, DataFileHead::size> bytes;
    DataFileHead head;
    if (!readAll(device, bytes.data(), DataFileHead::size) || !decodeFileHead(bytes, head) ||
        head.chnCount != data.chnCount) {
        return DataBlocksResult::HeadRefused;
    }

    constexpr std::chrono::milliseconds waitPiece(20);
    while (!data.open(waitPiece)) {
        if (afterPiece && !afterPiece(device.pos())) {
            data.readmit();
            return DataBlocksResult::StoreKept;
        }
    }
    data.clear();
    data.smpCount = head.smpCount;
    data.smpFrequ = head.smpFrequ;
    data.trgPos = head.trgPos;

    const auto buffer = pieceBuffer(dataReadPiece);
    if (!buffer) {
        return DataBlocksResult::Failed;
    }
    while (device.pos() != device.size()) {
        DataBlockHead block;
        SmpEdgeRoot *root = startBlock(device, data, block);
        if (root == nullptr) {
            return DataBlocksResult::Failed;
        }
        const auto result = readEntries(device, data, *root, block.entryCount, buffer.get(), afterPiece);
        if (result != DataBlocksResult::Done) {
            return result;
        }
    }
    return DataBlocksResult::Done;
}

DataBlocksResult writeDataBlocks(QIODevice &device, const SmpData &data, const DataSelection &selection,
                                 const DataPieceHook &afterPiece)
{
    const std::int64_t samples = selection.posEnd - selection.posStart + 1;
    if (samples < 1) {
        return DataBlocksResult::Failed;
    }
    const auto head = encodeFileHead(
        {samples, data.smpFrequ, std::max<std::int64_t>(data.trgPos - selection.posStart, 0), data.chnCount});
    const auto buffer = pieceBuffer(dataWritePiece);
    if (!buffer || !writeAll(device, head.data(), DataFileHead::size)) {
        return DataBlocksResult::Failed;
    }

    std::int64_t done = 0;
    for (int chn = 0; chn < data.chnCount && selection.chnSelect != nullptr; ++chn) {
        if (selection.chnSelect[chn] == 0) {
            continue;
        }
        const std::int64_t transitions = data.edgeCount(chn, selection.posStart, selection.posEnd);
        if (transitions < 0) {
            continue;
        }
        ChannelOut out{SmpEdgeReader(data, chn, selection.posStart), selection.posStart, transitions + 1, samples};
        const auto blockHead = encodeBlockHead({chn, out.reader.level(), transitions + 1});
        if (!writeAll(device, blockHead.data(), DataBlockHead::size)) {
            return DataBlocksResult::Failed;
        }
        const auto result = writeEntries(device, out, buffer.get(), done, afterPiece);
        if (result != DataBlocksResult::Done) {
            return result;
        }
    }
    return DataBlocksResult::Done;
}
