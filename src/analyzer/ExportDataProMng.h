#pragma once

#include "analyzer/ResultsGate.h"
#include "settings/FileReplacement.h"

#include <QString>
#include <QThread>

#include <atomic>
#include <cstdint>
#include <optional>

class AnalyzerResults;

/// How an export ended.
struct ExportOutcome {
    bool cancelled = false;              ///< nothing was written
    WriteFault fault = WriteFault::None; ///< why it failed
    QString words;                       ///< what the decoder said about it, if anything; in its own language
    [[nodiscard]] bool isDone() const { return !cancelled && fault == WriteFault::None; }
};

/// The thread of one export: has the decoder write its results beside the file that is asked for, which then takes that
/// file's place, so that whatever ends the writing, an earlier file stays as it was.
///
/// Made and destroyed on the main thread, by AnalyzerManager. It holds a ResultsPass from its beginning to its end.
class ExportDataProMng : public QThread {
    Q_OBJECT
public:
    /// @param exported  not owned, made ready by StartExportThread()
    ExportDataProMng(AnalyzerResults *exported, ResultsGate &gate);
    /// The thread has ended.
    ~ExportDataProMng() override;

    AnalyzerResults *const results; ///< not owned
    // Set before the start:
    QString fileName;
    std::int32_t displayBase = 0;
    std::uint32_t exportType = 0; ///< the option's id

    /// Asks it to end without a file: within 100 ms. Main thread.
    void cancel();
    /// Good once the thread has ended.
    [[nodiscard]] const ExportOutcome &outcome() const { return m_outcome; }

signals:
    void sigDeleteExportDataProMng();
    /// The file is written, or never will be. Emitted on the thread.
    void sigQuit();

public slots:
    /// Waits for the thread, which has nothing more to do. Main thread.
    void slotQuit();

protected:
    void run() override;

private:
    [[nodiscard]] ExportOutcome write();
    void join();

    std::optional<ResultsPass> m_pass; ///< given back on the thread
    std::atomic<bool> m_cancelled{false};
    std::atomic<bool> m_left{false}; ///< the thread has nothing more to do: orders its memory for who waited for it
    ExportOutcome m_outcome;         ///< the thread's until it has ended
};
