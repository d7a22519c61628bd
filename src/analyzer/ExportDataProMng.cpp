#include "analyzer/ExportDataProMng.h"

#include "analyzer/LeftBehind.h"
#include "settings/PostedCall.h"

namespace {

constexpr auto betweenLooks = std::chrono::milliseconds(10);

} // namespace

ExportDataProMng::ExportDataProMng(AnalyzerResults *exported, ResultsGate &gate, const ResultsExport::Task &task)
    : m_job(std::make_shared<ResultsExport>(exported, gate, task,
                                            [this] { postCall(this, [this] { emit sigDeleteExportDataProMng(); }); })),
      m_thread([job = m_job] { job->run(); })
{}

ExportDataProMng::~ExportDataProMng()
{
    m_job->cancel();
    while (!m_job->waitForEnd(betweenLooks)) {
        if (reader()->isStuck()) {
            m_job->abandon();
            LeftBehind::leave(m_thread);
            return;
        }
    }
    m_thread.join();
}
