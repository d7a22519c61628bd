#pragma once

#include "files/DataBlocks.h"
#include "files/JobDialog.h"
#include "settings/FileReplacement.h"

#include <QByteArray>
#include <QFile>
#include <QThread>

#include <atomic>
#include <cstdint>
#include <functional>

class SmpData;

/// Reads and writes the binary part of a data file (.cxdat, see docs/formats.md) and writes the exports, directly or,
/// for a big job, on its own thread behind a modal dialog.
///
/// Made on the main thread, where it is needed, and dies there. While a job runs in the background the main thread sits
/// in the dialog, so that nothing else touches the store or the file. All operations are for the main thread; none may
/// be called while a job runs, nor under a SmpReadLock of the caller, since a load waits for all readers to leave.
class DataFile : public QThread {
    Q_OBJECT
public:
    /// `data` is not owned and outlives the object. Without `dialogs` a background job is simply waited for.
    explicit DataFile(SmpData *data, JobDialogFactory dialogs = {});
    /// Stops a job that still runs, and waits for it.
    ~DataFile() override;

    /// The numbers of the jobs. Any other fails.
    enum class Mode { Load = 0, SaveData = 1, ExportBinary = 2, ExportText = 3 };

    SmpData *smpData; ///< not owned
    QFile file;
    const std::uint8_t *chnSelect = nullptr; ///< one flag per digital channel; null for none; not owned
    std::int64_t posStart = 0;               ///< first sample of the range
    std::int64_t posEnd = 0;                 ///< last sample of the range, inclusive
    std::int64_t workTotal = 0;              ///< entries of the selected channels in the range
    std::int64_t smpTotal = 0;               ///< samples in the range
    std::atomic<int> cancelled{0};           ///< polled by a job in the background after each piece
    /// Asked after each piece, on the thread that does the job; false cancels it. May be empty.
    std::function<bool()> mayGoOn;
    bool checksOnly = false; ///< a load looks at the whole file and leaves the store empty
    bool syncs = false;      ///< a job that writes ends with what it wrote on the disk; may block as long as that takes

    /// Files from this size on, in bytes, load behind the dialog.
    static constexpr std::int64_t backgroundLoadSize = 50'000'000;
    /// Saves from this many entries on run behind the dialog.
    static constexpr std::int64_t backgroundSaveEntries = 10'000'000;
    /// Binary exports from this many samples on run behind the dialog.
    static constexpr std::int64_t backgroundBinarySamples = 20'000'000;
    /// Text exports from this many entries on run behind the dialog.
    static constexpr std::int64_t backgroundTextEntries = 200'000;
    /// A job of this part of those sizes, or a bigger one, runs on the thread all the same, since the window would
    /// stand still; its dialog only appears when it takes longer than `dialogDelay`.
    static constexpr std::int64_t asidePart = 10;
    int dialogDelay = 500; ///< ms

    /// The range of a save or an export, in samples; swapped and limited to the capture. An empty range still holds one
    /// sample. A bound that is not a number is read as 0. Also sets `smpTotal`.
    void setRange(double start, double end);
    /// The entries that a save of the selection writes; also sets `workTotal`. Cost: two look-ups a channel.
    [[nodiscard]] std::int64_t edgeTotal();
    /// Loads `path`, whose binary part begins at `headSize`, in bytes, and closes the capture. Returns when it is done.
    /// From `backgroundLoadSize` on events are processed in the dialog meanwhile; from a tenth of it on those that the
    /// user does not make.
    ///
    /// Somebody who holds a lease on the store and is long in leaving is waited for on the thread, whatever the size.
    ///
    /// On failure the store is empty. But if the file cannot be opened, or its head is refused (no data file, or
    /// another number of channels), or the user gives up the wait, a capture that was there stays as it is. `complete`
    /// is set in every case: a store without a capture becomes a closed one of no samples, which readers are admitted
    /// to and find empty.
    /// @return false on failure, and a cancel is one
    [[nodiscard]] bool loadData(const QString &path, std::int64_t headSize);
    /// Writes the binary part of the range and selection to `file`, which the caller has opened for appending, not in
    /// text mode, behind the settings block; the caller closes it. Everything has been handed to the system on return.
    /// @return false if there is no closed capture, or not all could be written: a partial file then stays
    [[nodiscard]] bool saveData();
    /// Writes the range of the selected channels to `file` as a plain dump of samples. The caller has opened the file,
    /// truncated, not in text mode, and closes it. Everything has been handed to the system on return.
    /// @return false as for saveData()
    [[nodiscard]] bool exportBinary();
    /// Writes the range of the selected channels to `file` as text, a line for each sample at which one changes. The
    /// caller has opened the file, truncated, in text mode, and closes it.
    /// @return false as for saveData()
    [[nodiscard]] bool exportText();
    /// Runs a job that writes, as its size asks for: from the limits above on like runWithDialog(), a small one at
    /// once. Between them it runs on the thread too, while events are processed that the user does not make, at first
    /// without a dialog. Whatever these events start must leave the store, the device object and this object alone.
    /// `file` and the range are as for the job; the entries and samples are counted here.
    /// @return the job's outcome, as runWithDialog(); false for a job that does not write
    [[nodiscard]] bool runJob(Mode job);
    /// Runs a job on this thread behind the dialog. `file` is open: at the binary part to load, or as for the job. A
    /// load leaves the store open, for loadData() to close.
    /// @return the job's outcome: false for a mode without a job; a cancel counts as failure unless it comes too late
    [[nodiscard]] bool runWithDialog(Mode job);

    /// How the last job ended.
    [[nodiscard]] DataBlocksResult outcome() const { return m_outcome; }
    /// Why a job that wrote failed at its file; None when that was not the reason.
    [[nodiscard]] WriteFault fault() const { return m_fault; }
    /// What the last load found, if it was Done.
    [[nodiscard]] const DataBlocksFound &found() const { return m_found; }

    /// The progress of a job: whole `unit`s of `done` and of `total`, as a percentage of at most 99.
    [[nodiscard]] static int percentOf(std::int64_t done, std::int64_t total, std::int64_t unit);

signals:
    /// 0 to 100, 100 once at the end of every job that is not cancelled. Emitted on the thread that runs the job.
    void sigReportProgress(int percent);
    /// A job has ended on its thread: behind its last report, and unlike QThread's own signal before the thread lets go
    /// of this object. Emitted on that thread.
    void sigJobEnded();

protected:
    void run() override;

private:
    [[nodiscard]] bool loadBlocks();
    [[nodiscard]] bool openForLoad(const QString &path, std::int64_t headSize);
    /// How big a job that writes is, and from where on its kind goes behind the dialog: entries or samples.
    [[nodiscard]] std::int64_t sizeOf(Mode job, std::int64_t &limit);
    /// Runs a job on the thread, with the dialog at once or after `dialogDelay`. @return the job's outcome
    [[nodiscard]] bool runOnThread(Mode job, bool dialogAtOnce);
    [[nodiscard]] std::unique_ptr<JobDialog> makeDialog() const;
    /// Waits for the job; from here on what it wrote is this thread's again. @return its outcome
    bool joined();
    /// Reports the progress after a piece. @return false when the job is cancelled
    [[nodiscard]] bool afterPiece(int percent);
    /// Runs a job that writes the capture to `file`: `write` does it, and calls the hook after each piece, whose number
    /// of `unit`s of `total` is the progress.
    template<class Write>
    [[nodiscard]] bool writeJob(std::int64_t total, std::int64_t unit, const Write &write);
    [[nodiscard]] bool writeText();

    JobDialogFactory m_dialogs;
    // Handed over with the start of the thread and back with the store to `result`.
    int progress = 0;                ///< the last percentage reported
    std::atomic<bool> result{false}; ///< the job's outcome; release on set, acquire on test
    bool background = false;         ///< the job runs behind the dialog
    Mode mode = Mode::Load;
    DataBlocksResult m_outcome = DataBlocksResult::DeviceError;
    WriteFault m_fault = WriteFault::None;
    DataBlocksFound m_found;
    bool m_storeTouched = false; ///< the load has begun to change the store
    QByteArray m_header;         ///< the first line of a text export, made where the configuration may be read
};
