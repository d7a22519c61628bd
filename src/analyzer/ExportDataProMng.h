#pragma once

#include "analyzer/ResultsExport.h"

#include <QObject>
#include <QString>

#include <memory>
#include <thread>

/// The thread of one export: has the decoder write its results beside the file that is asked for, which then takes that
/// file's place, so that whatever ends the writing, an earlier file stays as it was.
///
/// Made and destroyed on the main thread, by AnalyzerManager. It holds a ResultsPass while the decoder writes.
/// A decoder that never comes back is left behind with its thread.
class ExportDataProMng : public QObject {
    Q_OBJECT
public:
    /// Starts the thread. @param exported  not owned, made ready by StartExportThread()  @param gate  of the results
    ExportDataProMng(AnalyzerResults *exported, ResultsGate &gate, const ResultsExport::Task &task);
    /// Cancels it and waits for its thread, unless that has lost its pass: then it is left behind.
    ~ExportDataProMng() override;

    /// Asks it to end without a file: within 100 ms. Main thread.
    void cancel() { m_job->cancel(); }
    [[nodiscard]] double progress() const { return m_job->progress(); }
    [[nodiscard]] const std::shared_ptr<ResultsReader> &reader() const { return m_job->reader(); }
    /// Good once the thread has ended.
    [[nodiscard]] const ExportOutcome &outcome() const { return m_job->outcome(); }

signals:
    /// The file is written, or never will be.
    void sigDeleteExportDataProMng();

private:
    std::shared_ptr<ResultsExport> m_job; ///< the thread's too
    std::thread m_thread;
};
