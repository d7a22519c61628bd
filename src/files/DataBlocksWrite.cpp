// The writer of DataBlocks.h.

#include "files/DataBlocks.h"
#include "files/DataBytes.h"
#include "settings/FileReplacement.h"
#include "store/SmpData.h"
#include "store/SmpEdgeReader.h"

#include <QIODevice>

#include <algorithm>
#include <vector>

namespace {

bool writeAll(QIODevice &device, const std::uint8_t *from, std::int64_t bytes)
{
    return writeWhole(device, reinterpret_cast<const char *>(from), bytes);
}

/// Where the entries of one channel go out from.
struct ChannelOut {
    SmpEdgeReader reader;     ///< at the next entry
    std::int64_t posStart;    ///< what positions are counted from
    std::int64_t entriesLeft; ///< the end mark included
    std::int64_t endMark;
};

/// Packs the first `count` entries of a block, counted from `posStart`. The values are copies, since the compiler must
/// take every byte written for a possible change of what the block refers to.
void packRun(const SmpEdgeReader::Block &block, int count, std::int64_t posStart, std::uint8_t *packed)
{
    const std::uint32_t *const low = block.low.data();
    const std::uint8_t *const high = block.high.data();
    const std::int64_t shared = block.sharedHigh;
    for (int i = 0; i < count; ++i, packed += dataEntrySize) {
        const std::int64_t above = shared >= 0 ? shared : std::int64_t(high[i]) << 32;
        put40(packed, (above | std::int64_t(low[i])) - posStart);
    }
}

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
        packRun(block, run, out.posStart, packed + bytes);
        bytes += run * dataEntrySize;
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
            return DataBlocksResult::DeviceError;
        }
        done += bytes / dataEntrySize;
        if (afterPiece && !afterPiece(done)) {
            return DataBlocksResult::Stopped;
        }
    }
    return DataBlocksResult::Done;
}

/// The channels of a selection that hold data.
std::vector<int> chosenChannels(const SmpData &data, const DataSelection &selection)
{
    std::vector<int> chosen;
    for (int chn = 0; chn < data.chnCount && selection.chnSelect != nullptr; ++chn) {
        if (selection.chnSelect[chn] != 0 && data.chnRoots()[std::size_t(chn)] != nullptr &&
            data.edgeCount(chn, selection.posStart, selection.posEnd) >= 0) {
            chosen.push_back(chn);
        }
    }
    return chosen;
}

/// The head of a file with the blocks of these channels.
DataFileHead headOf(const SmpData &data, const DataSelection &selection, const std::vector<int> &chosen)
{
    DataFileHead head{selection.posEnd - selection.posStart + 1, data.smpFrequ(),
                      std::max<std::int64_t>(data.trgPos() - selection.posStart, 0), data.chnCount};
    head.blockCount = int(chosen.size());
    for (const int chn : chosen) {
        head.blockChns |= chn < DataFileHead::namedChannels ? std::uint64_t(1) << chn : 0;
    }
    return head;
}

} // namespace

DataBlocksResult writeDataBlocks(QIODevice &device, const SmpData &data, const DataSelection &selection,
                                 const DataPieceHook &afterPiece)
{
    const std::int64_t samples = selection.posEnd - selection.posStart + 1;
    if (samples < 1) {
        return DataBlocksResult::DeviceError;
    }
    const std::vector<int> chosen = chosenChannels(data, selection);
    const auto head = encodeFileHead(headOf(data, selection, chosen));
    const auto buffer = pieceBuffer(dataWritePiece);
    if (!buffer) {
        return DataBlocksResult::NoMemory;
    }
    if (!writeAll(device, head.data(), DataFileHead::size)) {
        return DataBlocksResult::DeviceError;
    }

    std::int64_t done = 0;
    for (const int chn : chosen) {
        const std::int64_t transitions = data.edgeCount(chn, selection.posStart, selection.posEnd);
        ChannelOut out{SmpEdgeReader(data, chn, selection.posStart), selection.posStart, transitions + 1, samples};
        const auto blockHead = encodeBlockHead({chn, out.reader.level(), transitions + 1});
        if (!writeAll(device, blockHead.data(), DataBlockHead::size)) {
            return DataBlocksResult::DeviceError;
        }
        const auto result = writeEntries(device, out, buffer.get(), done, afterPiece);
        if (result != DataBlocksResult::Done) {
            return result;
        }
    }
    return DataBlocksResult::Done;
}
