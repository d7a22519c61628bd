// The readers of DataBlocks.h.

#include "files/DataBlocks.h"

#include "files/DataBytes.h"
#include "store/SmpData.h"
#include "store/SmpWriter.h"

#include <QIODevice>

#include <algorithm>
#include <chrono>
#include <vector>

namespace {

/// The tree of a channel holds no more, the end mark included.
constexpr std::int64_t entryLimit = SmpEdgeRoot::capacity * SmpData::entriesPerMid;

bool readAll(QIODevice &device, std::uint8_t *out, std::int64_t bytes)
{
    return device.read(reinterpret_cast<char *>(out), bytes) == bytes;
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

/// Appends `count` packed entries to a channel.
DataBlocksResult appendEntries(SmpData &data, SmpEdgeRoot &root, const std::uint8_t *packed, std::int64_t count,
                               std::int64_t &last)
{
    while (count > 0) {
        const SmpEdgeMid &mid = *root.mids[root.midCount - 1];
        SmpEdgeLeaf &leaf = *mid.leaves[mid.leafCount - 1];
        const int room = SmpEdgeLeaf::capacity - leaf.count;
        if (room == 0) {
            if (!data.growChn(root, false)) {
                return DataBlocksResult::NoMemory;
            }
            continue;
        }
        const int run = int(std::min<std::int64_t>(count, room));
        if (!unpackEntries(packed, run, leaf, last)) {
            return DataBlocksResult::Damaged;
        }
        packed += std::ptrdiff_t(run) * dataEntrySize;
        count -= run;
    }
    return DataBlocksResult::Done;
}

/// @return false if `count` packed entries do not strictly increase from `last` on, in/out
bool entriesIncrease(const std::uint8_t *packed, std::int64_t count, std::int64_t &last)
{
    bool ordered = true;
    for (std::int64_t i = 0; i < count; ++i) {
        const std::int64_t pos = take40(packed + i * dataEntrySize);
        ordered &= pos > last;
        last = pos;
    }
    return ordered;
}

/// The blocks of a file, one after the other.
class BlockReader {
public:
    BlockReader(QIODevice &device, const DataFileHead &head, const DataPieceHook &afterPiece)
        : m_device(device), m_head(head), m_afterPiece(afterPiece), m_seen(std::size_t(head.chnCount), false)
    {}

    /// Reads the next block's head. @return Done with `atEnd()` behind the last block that is whole
    [[nodiscard]] DataBlocksResult next(DataBlockHead &block)
    {
        m_atEnd = m_device.pos() == m_device.size();
        if (m_atEnd) {
            return DataBlocksResult::Done;
        }
        std::array<std::uint8_t, DataBlockHead::size> bytes;
        if (m_device.size() - m_device.pos() < DataBlockHead::size) {
            return cut();
        }
        if (!readAll(m_device, bytes.data(), DataBlockHead::size)) {
            return DataBlocksResult::DeviceError;
        }
        if (!decodeBlockHead(bytes, block) || block.chn >= m_head.chnCount || m_seen[std::size_t(block.chn)] ||
            block.entryCount >= entryLimit) {
            return DataBlocksResult::Damaged;
        }
        // A number that the rest of the file cannot hold is refused before anything is read on its word.
        if (block.entryCount * dataEntrySize > m_device.size() - m_device.pos()) {
            return cut();
        }
        m_seen[std::size_t(block.chn)] = true;
        return DataBlocksResult::Done;
    }
    [[nodiscard]] bool atEnd() const { return m_atEnd; }

    /// Reads the entries of a block in pieces of up to `dataReadPiece`, and hands each to `take`.
    template<class Take>
    [[nodiscard]] DataBlocksResult entries(std::int64_t count, std::uint8_t *buffer, const Take &take)
    {
        while (count > 0) {
            const std::int64_t piece = std::min<std::int64_t>(count, dataReadPiece / dataEntrySize);
            if (!readAll(m_device, buffer, piece * dataEntrySize)) {
                return DataBlocksResult::DeviceError;
            }
            const DataBlocksResult taken = take(buffer, piece);
            if (taken != DataBlocksResult::Done) {
                return taken;
            }
            count -= piece;
            if (m_afterPiece && !m_afterPiece(m_device.pos())) {
                return DataBlocksResult::Stopped;
            }
        }
        return DataBlocksResult::Done;
    }

    /// What was found, once the end has been reached.
    void tell(DataBlocksFound &found) const
    {
        found.blocks = int(std::count(m_seen.begin(), m_seen.end(), true));
        found.cut = found.blocks < m_head.blockCount;
        for (int chn = 0; chn < std::min(m_head.chnCount, DataFileHead::namedChannels) && found.cut; ++chn) {
            if ((m_head.blockChns >> chn & 1) != 0 && !m_seen[std::size_t(chn)]) {
                found.missing.push_back(chn);
            }
        }
    }

private:
    /// The file ends within a block, or has something behind its last one.
    DataBlocksResult cut()
    {
        m_atEnd = std::count(m_seen.begin(), m_seen.end(), true) < m_head.blockCount;
        return m_atEnd ? DataBlocksResult::Done : DataBlocksResult::Damaged;
    }

    QIODevice &m_device;
    const DataFileHead &m_head;
    const DataPieceHook &m_afterPiece;
    std::vector<bool> m_seen;
    bool m_atEnd = false;
};

/// Reads the head, which is to be for `chnCount` channels.
DataBlocksResult readFileHead(QIODevice &device, int chnCount, DataFileHead &head)
{
    std::array<std::uint8_t, DataFileHead::size> bytes;
    if (!readAll(device, bytes.data(), DataFileHead::size) || !decodeFileHead(bytes, head)) {
        return DataBlocksResult::HeadRefused;
    }
    return head.chnCount == chnCount ? DataBlocksResult::Done : DataBlocksResult::OtherModel;
}

/// Gives a channel its tree.
SmpEdgeRoot *startChannel(SmpData &data, const DataBlockHead &head)
{
    SmpWriter(data).setStartLevel(head.chn, head.level != 0);
    return data.createChn(head.chn);
}

} // namespace

DataBlocksResult readDataBlocks(QIODevice &device, SmpData &data, const DataPieceHook &afterPiece,
                                DataBlocksFound *found)
{
    DataFileHead head;
    const DataBlocksResult accepted = readFileHead(device, data.chnCount, head);
    if (accepted != DataBlocksResult::Done) {
        return accepted;
    }

    constexpr std::chrono::milliseconds waitPiece(20);
    while (!data.open(waitPiece)) {
        if (afterPiece && !afterPiece(device.pos())) {
            data.readmit();
            return DataBlocksResult::StoreKept;
        }
    }
    data.clear();
    SmpWriter writer(data);
    writer.setSmpCount(head.smpCount);
    writer.setSmpFrequ(head.smpFrequ);
    writer.setTrgPos(head.trgPos);

    const auto buffer = pieceBuffer(dataReadPiece);
    if (!buffer) {
        return DataBlocksResult::NoMemory;
    }
    BlockReader reader(device, head, afterPiece);
    for (;;) {
        DataBlockHead block;
        DataBlocksResult result = reader.next(block);
        if (result != DataBlocksResult::Done || reader.atEnd()) {
            DataBlocksFound unasked;
            reader.tell(found != nullptr ? *found : unasked);
            return result;
        }
        SmpEdgeRoot *root = startChannel(data, block);
        if (root == nullptr) {
            return DataBlocksResult::NoMemory;
        }
        std::int64_t last = -1;
        result = reader.entries(block.entryCount, buffer.get(), [&](const std::uint8_t *packed, std::int64_t count) {
            return appendEntries(data, *root, packed, count, last);
        });
        if (result != DataBlocksResult::Done) {
            return result;
        }
    }
}

std::int64_t entriesBelow(QIODevice &device, const DataBlockPlace &place, std::int64_t pos)
{
    std::int64_t first = 0;
    std::int64_t end = place.entryCount;
    while (first < end) {
        const std::int64_t middle = first + (end - first) / 2;
        std::array<std::uint8_t, sizeof(std::uint64_t)> packed{};
        if (!device.seek(place.at + middle * dataEntrySize) || !readAll(device, packed.data(), dataEntrySize)) {
            return -1;
        }
        if (take40(packed.data()) < pos) {
            first = middle + 1;
        } else {
            end = middle;
        }
    }
    return first;
}

std::int64_t treeBytes(std::int64_t entries)
{
    const std::int64_t leaves = entries / SmpEdgeLeaf::capacity + 1; // the end mark may take one
    const std::int64_t mids = leaves / SmpEdgeMid::capacity + 1;
    return std::int64_t(sizeof(SmpEdgeRoot)) + mids * std::int64_t(sizeof(SmpEdgeMid)) +
           leaves * std::int64_t(sizeof(SmpEdgeLeaf));
}

DataBlocksResult checkDataBlocks(QIODevice &device, int chnCount, bool andEntries, DataBlocksFound &found,
                                 const DataPieceHook &afterPiece)
{
    DataFileHead head;
    DataBlocksResult result = readFileHead(device, chnCount, head);
    const auto buffer = pieceBuffer(andEntries ? dataReadPiece : 0);
    if (result != DataBlocksResult::Done || !buffer) {
        return buffer ? result : DataBlocksResult::NoMemory;
    }
    found = {};
    found.head = head;
    BlockReader reader(device, head, afterPiece);
    for (;;) {
        DataBlockHead block;
        result = reader.next(block);
        if (result != DataBlocksResult::Done || reader.atEnd()) {
            reader.tell(found);
            return result;
        }
        found.bytes += treeBytes(block.entryCount);
        found.places.push_back({block.chn, device.pos(), block.entryCount});
        std::int64_t last = -1;
        if (!andEntries) {
            result = device.seek(device.pos() + block.entryCount * dataEntrySize) ? DataBlocksResult::Done
                                                                                  : DataBlocksResult::DeviceError;
        } else {
            result = reader.entries(block.entryCount, buffer.get(), [&last](const std::uint8_t *packed, auto count) {
                return entriesIncrease(packed, count, last) ? DataBlocksResult::Done : DataBlocksResult::Damaged;
            });
        }
        if (result != DataBlocksResult::Done) {
            return result;
        }
    }
}
