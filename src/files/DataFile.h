#pragma once

#include "files/JobDialog.h"

#include <QFile>
#include <QThread>

#include <atomic>
#include <cstdint>

class SmpData;

/// Reads and writes the binary part of a data file (.cxdat, see docs/formats.md), directly or, for a big job, on its
/// own thread behind a modal dialog.
///
/// Made on the main thread, where it is needed, and dies there. While a job runs in the background the main thread sits
/// in the dialog, so that nothing else touches the store or the file. A failure is told without a reason; the caller
/// shows its message. All operations are for the main thread; none may be called while a job runs, nor under a
/// SmpReadLock of the caller, since a load waits for all readers to leave.
class DataFile : public QThread {
    Q_OBJECT
public:
    /// `data` is not owned and outlives the object. Without `dialogs` a background job is simply waited for.
    explicit DataFile(SmpData *data, JobDialogFactory dialogs = {});
    /// Stops a job that still runs, and waits for it.
    ~DataFile() override;

    /// The numbers of the jobs. This class knows loading and saving; a mode without a job fails.
    enum class Mode { Load = 0, SaveData = 1, ExportBinary = 2, ExportText = 3 };

    SmpData *smpData; ///< not owned
    QFile file;
    const std::uint8_t *chnSelect = nullptr; ///< one flag per digital channel; null for none; not owned
    std::int64_t posStart = 0;               ///< first sample of the range
    std::int64_t posEnd = 0;                 ///< last sample of the range, inclusive
    std::int64_t workTotal = 0;              ///< entries of the selected channels in the range
    std::int64_t smpTotal = 0;               ///< samples in the range
    std::atomic<int> cancelled{0};           ///< polled by a job in the background after each piece

    /// Files from this size on, in bytes, load behind the dialog.
    static constexpr std::int64_t backgroundLoadSize = 50'000'000;
    /// Saves from this many entries on run behind the dialog.
    static constexpr std::int64_t backgroundSaveEntries = 10'000'000;

    /// The range of a save, in samples; swapped and limited to the capture. An empty range still holds one sample.
    /// A bound that is not a number is read as 0. Also sets `smpTotal`.
    void setRange(double start, double end);
    /// The entries that a save of the selection writes; also sets `workTotal`. Cost: two look-ups a channel.
    [[nodiscard]] std::int64_t edgeTotal();
    /// Loads `path`, whose binary part begins at `headSize`, in bytes, and closes the capture. Blocks until it is done;
    /// from `backgroundLoadSize` on events are processed in the dialog meanwhile.
    ///
    /// On failure the store is empty. But if the file cannot be opened, or its head is refused (no data file, or
    /// another number of channels), a capture that was there stays as it is. `complete` is set in every case: a store
    /// without a capture becomes a closed one of no samples, which readers are admitted to and find empty.
    /// @return false on failure, and a cancel is one
    [[nodiscard]] bool loadData(const QString &path, std::int64_t headSize);
    /// Writes the binary part of the range and selection to `file`, which the caller has opened for appending, not in
    /// text mode, behind the settings block; the caller closes it. Everything has been handed to the system on return.
    /// @return false if there is no closed capture, or not all could be written: a partial file then stays
    [[nodiscard]] bool saveData();
    /// Runs a job on this thread behind the dialog. `file` is open: at the binary part to load, or as for saveData().
    /// A load leaves the store open, for loadData() to close.
    /// @return the job's outcome: false for a mode without a job; a cancel counts as failure unless it comes too late
    [[nodiscard]] bool runWithDialog(Mode job);

    /// The progress of a job: whole `unit`s of `done` and of `total`, as a percentage of at most 99.
    [[nodiscard]] static int percentOf(std::int64_t done, std::int64_t total, std::int64_t unit);

signals:
    /// 0 to 100, 100 once at the end of every job that is not cancelled. Emitted on the thread that runs the job.
    void sigReportProgress(int percent);

protected:
    void run() override;

private:
    [[nodiscard]] bool loadBlocks();
    [[nodiscard]] bool openForLoad(const QString &path, std::int64_t headSize);
    /// Waits for the job; from here on what it wrote is this thread's again. @return its outcome
    bool joined();
    /// Reports the progress after a piece. @return false when the job is cancelled
    [[nodiscard]] bool afterPiece(int percent);

    JobDialogFactory m_dialogs;
    // Handed over with the start of the thread and back with the store to `result`.
    int progress = 0;                ///< the last percentage reported
    std::atomic<bool> result{false}; ///< the job's outcome; release on set, acquire on test
    bool background = false;         ///< the job runs behind the dialog
    Mode mode = Mode::Load;
    bool m_storeTouched = false; ///< the load has begun to change the store
};
