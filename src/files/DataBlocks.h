#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

class QIODevice;
class SmpData;

/// The binary part of a data file (.cxdat) as bytes: its records, and the way between them and the store of a capture.
///
/// docs/formats.md tells the layout. Nothing here knows threads, dialogs or the settings in front of the binary part:
/// the caller hands in a device that stands at the right place. Free functions without state; any thread, as long as
/// nobody else uses the device, and as long as the rules of SmpData for one writer or for readers are kept.

/// The largest number that the 5-byte fields hold.
inline constexpr std::int64_t dataFileMax = (std::int64_t(1) << 40) - 1;

/// The head of the binary part.
struct DataFileHead {
    static constexpr int size = 40; ///< bytes
    std::int64_t smpCount = 0;      ///< samples in the file, 0 to dataFileMax
    std::int64_t smpFrequ = 0;      ///< Hz, 0 to dataFileMax
    std::int64_t trgPos = 0;        ///< from the first sample of the file; may lie behind the last one
    std::int32_t chnCount = 0;      ///< digital channels of the model, 0 to 255
    std::int32_t blockCount = -1;   ///< channel blocks behind the head, up to blockCountMax; -1 when it does not say
    std::uint64_t blockChns = 0;    ///< bit c: channel c has one of these blocks; for channels below namedChannels
    static constexpr int blockCountMax = 254;
    static constexpr int namedChannels = 48;
    bool operator==(const DataFileHead &) const = default;
};

/// The head of one channel's block.
struct DataBlockHead {
    static constexpr int size = 16; ///< bytes
    std::int32_t chn = 0;           ///< from 0 to 255
    std::int32_t level = 0;         ///< at the first sample, 0 or 1
    std::int64_t entryCount = 0;    ///< entries that follow, 0 to dataFileMax
    bool operator==(const DataBlockHead &) const = default;
};

/// Bytes of one entry.
inline constexpr int dataEntrySize = 5;
/// Bytes that are read at once at most: 40,960 entries.
inline constexpr int dataReadPiece = 204'800;
/// A piece goes out as soon as it holds this many bytes: 40,956 entries.
inline constexpr int dataWritePiece = 204'780;

[[nodiscard]] std::array<std::uint8_t, DataFileHead::size> encodeFileHead(const DataFileHead &head);
/// @return false if the bytes do not begin with the file's mark; `head` is then unchanged. The bytes that are to be
/// zero are not looked at. A number of blocks that does not fit the channels beside it counts as none.
[[nodiscard]] bool decodeFileHead(std::span<const std::uint8_t, DataFileHead::size> bytes, DataFileHead &head);
[[nodiscard]] std::array<std::uint8_t, DataBlockHead::size> encodeBlockHead(const DataBlockHead &head);
/// @return false if the bytes do not begin with the block's mark; `head` is then unchanged. A level byte other than 0
/// reads as 1.
[[nodiscard]] bool decodeBlockHead(std::span<const std::uint8_t, DataBlockHead::size> bytes, DataBlockHead &head);

/// How a job on the blocks ended.
enum class DataBlocksResult {
    Done,
    HeadRefused, ///< reading only: no head; nothing was changed
    StoreKept,   ///< reading only: the hook said so while somebody still read the last capture; nothing was changed
    OtherModel,  ///< reading only: a head for another number of channels; nothing was changed
    Damaged,     ///< reading only: malformed or cut short; what was stored so far stays
    NoMemory,    ///< what was stored or written so far stays
    DeviceError, ///< the device did not read or write; so does it here
    Stopped      ///< the hook said so
};

/// Called after each piece; false stops the job. May be empty.
/// @param done  reading: the device's position, bytes; writing: entries written so far, over all channels
using DataPieceHook = std::function<bool(std::int64_t done)>;

/// Where the entries of a channel are in a file.
struct DataBlockPlace {
    int chn = 0;
    std::int64_t at = 0;         ///< bytes from the device's begin
    std::int64_t entryCount = 0; ///< of dataEntrySize bytes, in increasing order
};

/// What a reader of the blocks found.
struct DataBlocksFound {
    DataFileHead head;                  ///< checkDataBlocks() only
    std::vector<DataBlockPlace> places; ///< the same; of whole blocks, in the file's order
    int blocks = 0;                     ///< whole ones
    bool cut = false;         ///< the head promises more blocks than there are, the one that is cut short included
    std::vector<int> missing; ///< the channels of those, as far as the head names them
    std::int64_t bytes = 0;   ///< of the memory that the store takes for them
};

/// Reads head and blocks from the device's position to its end into `data`, which is opened and cleared once the head
/// has been accepted, and is left open (not `complete`): the caller finishes or clears it.
///
/// A file that ends before the number of blocks that its head tells is read as far as its blocks are whole. The numbers
/// in the file are not trusted: nothing is allocated before the bytes for it have been read. Entries at or behind
/// `smpCount` are legal here, since closing the capture cuts them off; entries out of order are not.
/// @param found  out, may be null
/// Cost: one step an entry. Waits for the readers of the store, and calls the hook every 20 ms meanwhile.
[[nodiscard]] DataBlocksResult readDataBlocks(QIODevice &device, SmpData &data, const DataPieceHook &afterPiece = {},
                                              DataBlocksFound *found = nullptr);

/// Looks at head and blocks as readDataBlocks() would, without a store. The device is to be random-access.
/// @param chnCount    of the model
/// @param andEntries  looks at the entries too; without, the cost is a read for each block
[[nodiscard]] DataBlocksResult checkDataBlocks(QIODevice &device, int chnCount, bool andEntries, DataBlocksFound &found,
                                               const DataPieceHook &afterPiece = {});

/// How many entries of a block lie below `pos`: transitions, for the capture's length. Searches: a few reads.
/// @return -1 when the device does not read
[[nodiscard]] std::int64_t entriesBelow(QIODevice &device, const DataBlockPlace &place, std::int64_t pos);

/// The memory that the tree of a channel with `entries` entries takes at most, bytes.
[[nodiscard]] std::int64_t treeBytes(std::int64_t entries);

/// What writeDataBlocks() writes.
struct DataSelection {
    const std::uint8_t *chnSelect = nullptr; ///< one flag per digital channel; null for none
    std::int64_t posStart = 0;               ///< first sample
    std::int64_t posEnd = 0;                 ///< last sample, inclusive
};

/// Writes head and blocks of a range of a closed capture at the device's position. The caller holds a SmpReadLock.
/// The head tells which blocks follow. What a device keeps in a buffer of its own is the caller's to flush. Cost: one
/// step an entry.
[[nodiscard]] DataBlocksResult writeDataBlocks(QIODevice &device, const SmpData &data, const DataSelection &selection,
                                               const DataPieceHook &afterPiece = {});
