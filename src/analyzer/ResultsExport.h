#pragma once

#include "analyzer/ResultsGate.h"
#include "settings/FileReplacement.h"

#include <QString>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

class AnalyzerResults;

/// How an export ended.
struct ExportOutcome {
    bool cancelled = false;              ///< nothing was written
    WriteFault fault = WriteFault::None; ///< why it failed
    QString words;                       ///< what the decoder said about it, if anything; in its own language
    [[nodiscard]] bool isDone() const { return !cancelled && fault == WriteFault::None; }
};

/// What the thread of one export does. The thread owns it together with who started it, who may have to go on without a
/// thread that is held fast in the decoder.
class ResultsExport {
public:
    struct Task {
        QString fileName;
        std::int32_t displayBase = 0;
        std::uint32_t exportType = 0; ///< the option's id
    };

    /// @param results  not owned, made ready by StartExportThread(); good until cancel(), which comes before each
    /// change of results, or as long as the thread has a pass
    /// @param over  called on the thread when the file is written, or never will be; not once abandon() was called
    ResultsExport(AnalyzerResults *results, ResultsGate &gate, Task task, std::function<void()> over);
    ResultsExport(const ResultsExport &) = delete;
    ResultsExport &operator=(const ResultsExport &) = delete;

    /// The thread's body.
    void run();

    // ---- main thread -----------------------------------------------------------------------------------------------

    /// Asks it to end without a file.
    void cancel();
    /// 0 to 1, or AnalyzerResults::exportFailed; 1 when it has left the results.
    [[nodiscard]] double progress();
    /// Waits at most that long until the thread has nothing more to do. @return whether that is so
    [[nodiscard]] bool waitForEnd(std::chrono::milliseconds most);
    /// Nobody wants the file any more: what there is of it is removed now.
    void abandon();
    /// Good once the thread has ended.
    [[nodiscard]] const ExportOutcome &outcome() const { return m_outcome; }
    [[nodiscard]] const std::shared_ptr<ResultsReader> &reader() const { return m_reader; }

private:
    [[nodiscard]] ExportOutcome write();
    /// What the decoder says of its export.
    [[nodiscard]] QString build(const QString &partPath);
    /// Takes the pass. What needs the disk alone comes before and behind it: a disk may take as long as it likes.
    /// @return false when the results are, or may be, gone
    [[nodiscard]] bool enterResults();
    /// From here on the results are another's.
    void leaveResults();

    const Task m_task;
    const std::shared_ptr<ResultsReader> m_reader = std::make_shared<ResultsReader>();
    ResultsGate &m_gate; ///< good as long as the results
    std::atomic<bool> m_cancelled{false};
    std::mutex m_mutex; ///< of what follows
    std::condition_variable m_ended;
    AnalyzerResults *m_results;        ///< null when the thread has left them, or never will be in them
    std::optional<ResultsPass> m_pass; ///< made on the thread, which gives it back there
    std::function<void()> m_over;
    QString m_partPath; ///< while the decoder writes
    bool m_isOver = false;
    ExportOutcome m_outcome; ///< the thread's until it is over
};
