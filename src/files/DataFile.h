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
/// in the dialog, so that nothing else touches the store or the file.
class DataFile : public QThread {
    Q_OBJECT
public:
    explicit DataFile(SmpData *data, JobDialogFactory dialogs = {});
    ~DataFile() override;

    enum class Mode { Load = 0, SaveData = 1, ExportBinary = 2, ExportText = 3 };

    SmpData *smpData; ///< not owned
    QFile file;
    const std::uint8_t *chnSelect = nullptr; ///< one flag per digital channel; not owned
    std::int64_t posStart = 0;               ///< first sample of the range
    std::int64_t posEnd = 0;                 ///< last sample of the range, inclusive
    std::int64_t workTotal = 0;              ///< entries of the selected channels in the range
    std::int64_t smpTotal = 0;               ///< samples in the range
    std::atomic<int> cancelled{0};           ///< polled by the job after each piece

    /// Files from this size on, in bytes, load behind the dialog.
    static constexpr std::int64_t backgroundLoadSize = 50'000'000;
    /// Saves from this many entries on run behind the dialog.
    static constexpr std::int64_t backgroundSaveEntries = 10'000'000;

    /// The range of a save, in samples; swapped and limited to the capture. An empty range still holds one sample.
    void setRange(double start, double end);
    /// The entries that a save of the selection writes; also sets `workTotal`.
    [[nodiscard]] std::int64_t edgeTotal();
    /// Loads `path`, whose binary part begins at `headSize`. On failure the store is empty and closed, unless the head
    /// itself was refused: then nothing has changed.
    [[nodiscard]] bool loadData(const QString &path, std::int64_t headSize);
    /// Appends the binary part to the open `file`.
    [[nodiscard]] bool saveData();
    /// Runs a job on this thread behind the dialog. @return the job's outcome; a cancel counts as failure
    [[nodiscard]] bool runWithDialog(Mode job);

signals:
    void sigReportProgress(int percent);

protected:
    void run() override;
};
