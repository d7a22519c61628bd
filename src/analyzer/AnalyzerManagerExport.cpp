// The export of decoded results.

#include "analyzer/AnalyzerManager.h"
#include "analyzer/DisplayFormat.h"
#include "analyzer/PluginCall.h"

#include <corvanlux/analyzer/AnalyzerResults.h>

void AnalyzerManager::startExport(AnalyzerResults *results, const QString &path, int displayBase, std::uint32_t option)
{
    if (exportThread || results == nullptr) {
        return;
    }
    m_exportOutcome = {};
    results->StartExportThread(nullptr, displayBaseOf(displayBase), 0); // forgets the last export, and writes nothing
    exportThread = std::make_unique<ExportDataProMng>(results, m_gate, ResultsExport::Task{path, displayBase, option});
    connect(exportThread.get(), &ExportDataProMng::sigDeleteExportDataProMng, this,
            &AnalyzerManager::slotDeleteExportDataProMng);
    // Direct: the thread has left the results when the manager waits for their readers.
    connect(this, &AnalyzerManager::modifyPrepared, exportThread.get(), &ExportDataProMng::cancel,
            Qt::DirectConnection);
    m_watchTimer.start();
}

double AnalyzerManager::exportProgress() const
{
    return exportThread ? exportThread->progress() : 1.0;
}

void AnalyzerManager::cancelExport()
{
    if (exportThread) {
        exportThread->cancel();
    }
}

void AnalyzerManager::slotDeleteExportDataProMng()
{
    m_exportOutcome = exportThread->outcome();
    exportThread.release()->deleteLater(); // it is what emits this
}
