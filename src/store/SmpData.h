#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <corvanlux/analyzer/EdgeTree.h>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

class SmpLeaseList;
class SmpSlabs;

/// One analog channel: signed bytes; sample s stands for (s + 128) * voltDiv * 10 / 255 - voltDiv * 5 millivolts.
struct SmpAChnBuffer {
    static constexpr int capacity = 32768;
    std::int8_t samples[capacity];
    std::int32_t count;
    std::int32_t voltDiv; ///< millivolts per division
};

/// Names one entry of a channel. Its global index is root * 104857600 + mid * 20480 + leaf.
struct SmpEdgeCursor {
    std::int32_t root = 0;
    std::int32_t mid = 0;
    std::int32_t leaf = 0;
    bool operator==(const SmpEdgeCursor &) const = default;
};

/// The surroundings of a position.
struct SmpEdgeInfo {
    std::int64_t prevEdge;      ///< last entry at or below the position, -1 for none
    std::int64_t nextEdge;      ///< first entry above it; may be the end mark
    std::int64_t afterNextEdge; ///< the entry after that, -1 for none
    std::int32_t level;         ///< 0 or 1
};

/// A piece of a drawable line: columns x to x + width - 1.
struct SmpWaveRun {
    std::int32_t x;
    std::int32_t width;
    std::int32_t kind; ///< 0 low, 1 high, 2 a column that holds at least one transition
};

/// A point of a drawable analog line.
struct SmpAChnPoint {
    std::int32_t x;
    double value; ///< millivolts
};

/// The store of one capture: for each digital channel, the sample positions at which its level changes; for each
/// analog channel, its samples.
///
/// Owned by the device object, and never outlives it. One writer at a time: a capture's conversion thread, the
/// simulated capture, or DataFile. Readers hold a SmpReadLock for a frame or a SmpLease for longer, which are only
/// granted while the capture is closed; begin(), clear() and open() tell the holders of leases to leave and wait for
/// all readers before they touch anything, and after that no lock is held while a capture fills. Positions are signed
/// 64-bit sample indices, 0 to 2^40 - 1.
///
/// States: empty (after the constructor or clear()), filling (after begin(), `complete` false), closed (after finish(),
/// `complete` true).
class SmpData {
public:
    static constexpr std::int64_t entriesPerMid = std::int64_t(SmpEdgeMid::capacity) * SmpEdgeLeaf::capacity;

    /// Allocates no tree. Both counts are fixed for the life of the object.
    SmpData(int chnCount, int aChnCount);
    ~SmpData();
    SmpData(const SmpData &) = delete;
    SmpData &operator=(const SmpData &) = delete;

    const std::int32_t chnCount;  ///< digital channels
    const std::int32_t aChnCount; ///< analog channels

    // ---- what the capture is -------------------------------------------------------------------------------------
    // Under a SmpReadLock or a lease; while the store is open, by the writer alone, who changes it through SmpWriter
    // and the operations below. Each is a plain read.

    /// `chnCount` roots; null for a channel that the capture does not have.
    [[nodiscard]] std::span<const SmpEdgeRoot *const> chnRoots() const { return m_chnRoots; }
    /// `aChnCount` buffers; null where the heap refused one.
    [[nodiscard]] std::span<const SmpAChnBuffer *const> aChnBufs() const { return m_aChnBufs; }
    /// Samples stored so far; the capture's length once closed.
    [[nodiscard]] std::int64_t smpCount() const { return m_smpCount; }
    /// Sample rate of this capture, Hz.
    [[nodiscard]] std::int64_t smpFrequ() const { return m_smpFrequ; }
    /// Position of the trigger, 0 when there was none.
    [[nodiscard]] std::int64_t trgPos() const { return m_trgPos; }
    /// -1, or the offset of the last malformed record in its chunk, bytes.
    [[nodiscard]] std::int32_t zeroSmpCnt() const { return m_zeroSmpCnt; }
    /// Number of the record that holds the trigger, from 1; 0 for none.
    [[nodiscard]] std::uint32_t trgRecord() const { return m_trgRecord; }
    /// Bit i is the level of channel i at position 0.
    [[nodiscard]] std::uint64_t startLevels() const { return m_startLevels; }
    /// Enabled channels in ascending order, then zeros, `chnCount` in all, for addSliced().
    [[nodiscard]] std::span<const std::int32_t> slicedChn() const { return m_slicedChn; }
    /// Last level of each channel, for addSliced().
    [[nodiscard]] std::span<const std::int32_t> slicedLevel() const { return m_slicedLevel; }
    /// True when the capture is closed and may be read. A test that admits nobody; any thread, at any time.
    [[nodiscard]] bool complete() const { return m_complete.load(std::memory_order_acquire); }

    /// `smpCount` if the capture is closed, else 0. Any thread; takes and releases the read lock.
    [[nodiscard]] std::int64_t sampleCount() const;

    // ---- life of a capture; writer only --------------------------------------------------------------------------

    /// Clears `complete`: from here on no reader is admitted, and the holders of leases are told to leave. Waits for
    /// nobody and changes nothing else.
    void closeToReaders();
    /// closeToReaders(), then waits until all readers have left, however long they stay: not for a main thread.
    void open();
    /// The same, but waits no longer than `most`. @return false when somebody still reads: then nothing may be touched,
    /// and either open() is called again or readmit()
    [[nodiscard]] bool open(std::chrono::milliseconds most);
    /// Closes an opened store again as it is: with the capture that was there when nothing has been touched, without
    /// one after clear().
    void readmit();
    /// Lets go of a store that holders of leases may still read: destroys it if they leave within 50 ms, else when the
    /// last one has left, on a thread of its own. Null is allowed. Its readers of a frame must be gone.
    static void retire(std::unique_ptr<SmpData> data);
    /// Leases that are held. Any thread; the number may change at any time while the store is closed.
    [[nodiscard]] int leaseCount() const;
    /// open(), then gives every block and credits `memBudget`; `smpCount` and `trgPos` become 0. The next capture takes
    /// the memory first; what it leaves goes back to the system with finish(), readmit() or trim().
    void clear();
    /// Gives memory that holds no block back to the system, if it is much on a thread that does nothing else. For a
    /// capture that is cleared or begun and not finished.
    void trim();
    /// Starts a capture. A failed allocation leaves a null channel and is not reported.
    /// @param enable  `chnCount` flags, non-zero for a channel that is captured
    void begin(std::uint32_t triggerRecord, std::int64_t frequency, std::span<const std::uint8_t> enable);
    /// Closes the capture at `endPos`: every transition at or beyond it goes, each channel ends in one end mark.
    /// Cost: one step a leaf, and one per entry cut off.
    void finish(std::int64_t endPos);
    /// Takes over the capture of `other`, which is closed and read by nobody: trees, length, rate and trigger. What was
    /// here is freed, analog channels too; `other` is empty afterwards. Waits for the readers as open() does, and
    /// closes this capture again. Cost: that of freeing.
    /// @return false, with nothing changed, if the numbers of digital channels differ
    bool adopt(SmpData &other);
    /// Appends one empty leaf, with a new mid before it when the last is full. `forced` passes over the budget. To be
    /// called only when the last leaf is full, or there is none: entries are found by their index, which takes every
    /// leaf but the last for full. A mid that was taken for a leaf that then is refused stays for the next call.
    /// @return false when a block cannot be had, the root is full, or the budget is below 1 and `forced` is not set
    [[nodiscard]] bool growChn(SmpEdgeRoot &root, bool forced);
    /// Gives a channel a root with its first mid and leaf, all charged, whatever the budget.
    /// @return null when the heap refuses; the channel then has no root
    SmpEdgeRoot *createChn(int chn);

    // ---- decoders of received data; writer only ------------------------------------------------------------------
    // Each returns false only when the memory budget is spent or the heap refuses a block: what was stored stays, and
    // finish() closes it. Little-endian throughout. Only whole groups or words are read; the record formats add all
    // bytes of a chunk to `consumed`, a tail too short for a group as well, and on a stop the whole groups done, 16 (in
    // addMixed16 4) for each. A channel without a root is passed over, and so is a position that 40 bits do not hold.
    // What goes on from chunk to chunk (last word, record counter, slot) is kept here; the record formats start anew
    // when `smpCount` is 0. Cost: some nanoseconds a transition; where nothing changes, a small part of a nanosecond a
    // byte.

    /// Records of 4 bytes: analog 0, analog 1 (signed 8 bits each), 16 digital bits; one sample a record.
    /// A call's analog bytes are stored from index 0 of both analog buffers: the whole capture is one chunk.
    [[nodiscard]] bool addMixed16(std::span<const std::uint8_t> bytes, std::uint32_t &consumed);
    /// Groups of 16 bytes: five records {word: 16 bits, count: 8 bits}, one spare byte.
    [[nodiscard]] bool addRle16(std::span<const std::uint8_t> bytes, std::uint32_t &consumed);
    /// Groups of 32 bytes: six records {word: 32 bits, count: 8 bits}, two check bytes whose XOR is 0xFF.
    [[nodiscard]] bool addRle32(std::span<const std::uint8_t> bytes, std::uint32_t &consumed);
    /// One byte a sample, bit i for channel i. `start` >= 0 marks a capture's first chunk and is its first sample.
    [[nodiscard]] bool addBytes8(std::span<const std::uint8_t> bytes, std::int32_t start, std::int64_t &smpCountOut);
    /// 16-bit words of the enabled channels in turn; bit k is the channel's sample k of the current 16.
    [[nodiscard]] bool addSliced(std::span<const std::uint8_t> bytes, std::int32_t start, std::int64_t &smpCountOut);
    /// Run widths of one channel: each is added to `pos`, where an entry is appended.
    [[nodiscard]] bool addPulses(std::span<const std::int32_t> widths, int chn, std::int64_t &pos);
    /// The same; with `join` and `pos` above 0 the first width lengthens the channel's last run.
    [[nodiscard]] bool addPulsesJoin(std::span<const std::int32_t> widths, int chn, std::int64_t &pos, bool join);

    // ---- queries; under a SmpReadLock (or by the writer after finish()) -------------------------------------------
    // A channel without data gives -1.

    /// The level at `pos`, or -1 when `pos` is negative or past the channel's end mark. Sets `cursor` to the first
    /// entry above `pos` (the end mark itself for a `pos` there). `cursor` comes in as a hint: all zero, or an entry at
    /// or before the answer; any other hint is ignored. On -1 `cursor` is left alone. Cost: logarithmic in the distance
    /// from the hint, well below a microsecond on a channel of 100 million entries.
    [[nodiscard]] int locate(int chn, std::int64_t pos, SmpEdgeCursor &cursor) const;
    /// True when an entry that is no end mark's echo stands exactly at `pos`; false outside the data.
    [[nodiscard]] bool isEdge(int chn, std::int64_t pos) const;
    /// The last entry at or below `pos`; -1 when none.
    [[nodiscard]] std::int64_t prevEdge(int chn, std::int64_t pos) const;
    /// The first entry above `pos`, which may be the end mark; -1 outside the data.
    [[nodiscard]] std::int64_t nextEdge(int chn, std::int64_t pos) const;
    /// The number of entries in (a, b]; -1 when either is outside the data.
    [[nodiscard]] std::int64_t edgeCount(int chn, std::int64_t a, std::int64_t b) const;
    /// @return 0, or -1 when `pos` is outside the data
    [[nodiscard]] int edgeNeighbours(int chn, std::int64_t pos, SmpEdgeInfo &info) const;
    /// The position of the entry `offset` entries from `cursor`; -1 when there is none.
    [[nodiscard]] std::int64_t entryAt(int chn, const SmpEdgeCursor &cursor, std::int64_t offset = 0) const;
    /// The position of the channel's end mark; -1 for no data.
    [[nodiscard]] std::int64_t lastPosition(int chn) const;
    /// The channel's entries, the end mark included; 0 for no data. Cost: one step a mid.
    [[nodiscard]] std::int64_t entryCount(int chn) const;

    /// One view line. `start` is the position of column 0, `step` the samples per column (above 0).
    /// @param out  room for `width` records; never more are written
    /// @return the records written, -1 for no data, a start outside it, or numbers that are not finite. Cost: follows
    /// `width`, not the data.
    [[nodiscard]] int waveRuns(int chn, double start, double step, int width, SmpWaveRun *out) const;
    /// One analog line, one sample a column. @return the points written into `out` (room for `width`)
    [[nodiscard]] int aChnPoints(int aChn, double start, double step, int width, SmpAChnPoint *out) const;

private:
    friend class SmpReadLock;
    friend class SmpLease;
    friend class SmpWriter;
    class Tails; ///< the leaves that a decoder appends to

    /// What a decoder of the device's records keeps between two calls.
    struct RecordState {
        std::uint32_t word = 0;    ///< the last record's digital bits
        std::uint64_t records = 0; ///< records since the capture's start
    };

    void leaveTrees();
    void freeChannel(int chn);
    void closeChannel(SmpEdgeRoot &root, int level);
    [[nodiscard]] SmpEdgeLeaf *writableLeaf(SmpEdgeRoot &root);
    [[nodiscard]] const SmpEdgeRoot *tree(int chn) const;
    void startRecords(RecordState &state, std::uint32_t firstWord);
    [[nodiscard]] bool addRecord(Tails &tails, RecordState &state, std::uint32_t word, std::int64_t samples);
    struct RleRun;
    template<class Format>
    void addPlainGroups(Tails &tails, RleRun &run, const std::uint8_t *end);
    template<class Format>
    [[nodiscard]] bool addOddGroup(Tails &tails, RleRun &run, std::size_t groupAt);
    template<class Format>
    [[nodiscard]] bool addRle(std::span<const std::uint8_t> bytes, RecordState &state, std::uint32_t &consumed);
    struct Turns;
    class QuietPattern;
    struct SliceRun;
    [[nodiscard]] static bool hasRoom(const Tails &tails, const Turns &turns, std::int64_t samples);
    [[nodiscard]] static bool addBusyGroups(Tails &tails, const Turns &turns, const std::uint8_t *bytes,
                                            std::int64_t samples);
    [[nodiscard]] static bool passQuietGroups(SliceRun &run);
    [[nodiscard]] static bool passBusyGroups(Tails &tails, SliceRun &run);
    [[nodiscard]] static bool addWord(Tails &tails, SliceRun &run);
    void startSlices();
    void learnStartLevels(std::span<const std::uint8_t> bytes);

    std::shared_ptr<SmpLeaseList> m_leases; ///< also the leases'
    std::unique_ptr<SmpSlabs> m_slabs;      ///< the memory of all blocks
    std::vector<SmpEdgeRoot *> m_chnRoots;
    std::vector<SmpAChnBuffer *> m_aChnBufs;
    std::int64_t m_smpCount = 0;
    std::int64_t m_smpFrequ = 0;
    std::int64_t m_trgPos = 0;
    std::int32_t m_zeroSmpCnt = -1;
    std::uint32_t m_trgRecord = 0;
    std::uint64_t m_startLevels = 0;
    std::vector<std::int32_t> m_slicedChn;
    std::vector<std::int32_t> m_slicedLevel;
    /// SmpReadLock and open() order it sequentially with the count of readers.
    std::atomic<bool> m_complete{false};
    mutable std::atomic<int> m_readers{0}; ///< admitted readers of a frame; open() waits for 0
    std::vector<std::uint8_t> m_enabled;   ///< flags of begin(): also channels whose root the heap refused
    RecordState m_mixed16;
    RecordState m_rle16;
    RecordState m_rle32;
    std::uint8_t m_lastByte = 0; ///< addBytes8
    int m_slot = 0;              ///< addSliced: index in `slicedChn` of the next word's channel
    int m_slotCount = 0;         ///< addSliced: channels that take turns
    int m_slotsKnown = 0;        ///< addSliced: of these, the ones whose start level has come
};

/// Admission to read a capture. Holds while it lives; false when there is no closed capture to read.
///
/// Keep it for one event handler or one frame, never across a return to the event loop or a call that starts, clears or
/// loads a capture: that writer waits for it. Any thread, lock-free; may nest (an inner one is refused as soon as a
/// writer waits, the outer one stays good).
class SmpReadLock {
public:
    /// `data` may be null: then refused.
    explicit SmpReadLock(const SmpData *data);
    ~SmpReadLock();
    SmpReadLock(const SmpReadLock &) = delete;
    SmpReadLock &operator=(const SmpReadLock &) = delete;
    explicit operator bool() const { return m_data != nullptr; }

private:
    const SmpData *m_data; ///< null when refused
};
