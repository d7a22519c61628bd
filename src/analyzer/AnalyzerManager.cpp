#include "analyzer/AnalyzerManager.h"

#include "analyzer/AnalyzerProgMng.h"
#include "analyzer/DisplayFormat.h"
#include "analyzer/PluginCall.h"
#include "settings/PostedCall.h"

#include <algorithm>
#include <corvanlux/analyzer/AnalyzerResults.h>
#include <corvanlux/analyzer/AnalyzerSettings.h>
#include <utility>

namespace {

constexpr std::chrono::milliseconds watchStep{500}; ///< between two looks at the readers of results

} // namespace

AnalyzerManager::AnalyzerManager(AnalyzerHost host, const QStringList &folders, const QString &guardFolder,
                                 QObject *parent)
    : QObject(parent),
      AnalyzerList(std::move(host), folders, guardFolder),
      m_simulation([this](const QString &name, const QString &what) {
          postCall(this, [this, name, what] { m_faults.tell(name, what); });
      }),
      m_maker(libraries, m_faults),
      m_runs({items, m_maker, m_faults, m_gate}),
      m_readTime(watchStep)
{
    // Queued: no receiver may change the list under a walk.
    connect(&m_faults, &FaultTeller::told, this, &AnalyzerManager::analyzerFailed, Qt::QueuedConnection);
    connect(&m_maker, &AnalyzerMaker::workerEnded, this, &AnalyzerManager::slotStopWorkThread);
    connect(&m_runs, &AnalyzerRuns::modifyPrepared, this, &AnalyzerManager::modifyPrepared);
    connect(&m_runs, &AnalyzerRuns::begins, &m_watchTimer, qOverload<>(&QTimer::start));
    connect(&m_runs, &AnalyzerRuns::started, this, &AnalyzerManager::analyzerStarted);
    connect(&m_runs, &AnalyzerRuns::ended, this, &AnalyzerManager::analyzerDecodedChanged);
    m_watchTimer.setInterval(watchStep);
    connect(&m_watchTimer, &QTimer::timeout, this, &AnalyzerManager::lookAfterReaders);
}

AnalyzerManager::~AnalyzerManager()
{
    if (exportThread) {
        exportThread->cancel();
        const ResultsChange change(m_gate); // takes its pass if it must
        exportThread.reset();
    }
    m_runs.endAll();
}

// ---- the capture

void AnalyzerManager::setCapture(SmpData *capture, std::uint32_t deviceCode)
{
    m_runs.setCapture(capture, deviceCode);
}

void AnalyzerManager::captureReady()
{
    m_awaitsCapture = false;
    m_runs.takeCapture();
    const ResultsChange change = m_runs.prepareModify();
    std::vector<const Analyzer *> all;
    for (const AnalyzerItem &item : items) {
        all.push_back(item.analyzer.get());
    }
    for (const Analyzer *analyzer : all) {
        AnalyzerItem *item = itemOf(analyzer); // who heard of the last one's start may have changed the list
        if (item != nullptr && item->fault.isEmpty()) {
            m_runs.run(*item, false);
        }
    }
}

void AnalyzerManager::captureFailed()
{
    if (m_awaitsCapture) {
        captureReady();
    }
}

void AnalyzerManager::captureStarts()
{
    m_awaitsCapture = true;
    m_runs.stopAll();
    const ResultsChange change = m_runs.prepareModify();
    for (AnalyzerItem &item : items) {
        m_runs.leaveResults(item);
        const QString fault = pluginFault([&item] { item.analyzer->SetupResults(); });
        if (!fault.isEmpty()) {
            m_faults.fail(item, fault);
        }
    }
    tellSimulation();
}

// ---- runs

void AnalyzerManager::startAnalyzer(int index)
{
    const ResultsChange change = m_runs.prepareModify();
    m_runs.start(items[std::size_t(index)]);
}

void AnalyzerManager::restartAnalyzer(int index)
{
    const Analyzer *analyzer = analyzerAt(index);
    saveToConfig();
    AnalyzerItem *item = itemOf(analyzer); // who heard of it may have changed the list
    if (item == nullptr) {
        return;
    }
    m_faults.forget(item->name()); // a new try may fail anew
    const ResultsChange change = m_runs.prepareModify();
    m_runs.start(*item);
}

void AnalyzerManager::stopWorker(int index)
{
    m_runs.stop(items[std::size_t(index)]);
}

void AnalyzerManager::stopAllWorkers()
{
    m_runs.stopAll();
}

void AnalyzerManager::slotStopWorkThread(AnalyzerProgMng *progMng, Analyzer *anly)
{
    m_runs.slotStopWorkThread(progMng, anly);
}

// ---- the list

Analyzer *AnalyzerManager::createAnalyzer(int library)
{
    return libraries.has(library) ? m_maker.make(libraries.all().at(library)).release() : nullptr;
}

void AnalyzerManager::destroyAnalyzer(int library, Analyzer *analyzer)
{
    if (libraries.has(library)) {
        AnalyzerLibraries::destroy(libraries.all().at(library), analyzer);
    }
}

void AnalyzerManager::loadFromConfig()
{
    const ResultsChange change = m_runs.prepareModify();
    m_runs.stopAll();
    for (AnalyzerItem &item : items) {
        m_runs.drop(item);
    }
    items.clear();
    items = m_maker.stored(m_host.stored());
    tellSimulation();
    emit analyzerItemChanged();
}

void AnalyzerManager::saveToConfig()
{
    QList<QStringList> list;
    for (const AnalyzerItem &item : items) {
        list.append({item.fileName, m_maker.settingsText(item), item.format});
    }
    m_host.store(list);
    tellSimulation();
    emit analyzerItemChanged();
}

void AnalyzerManager::setDisplayFormat(int index, int format)
{
    items[std::size_t(index)].format = QString::number(format);
    saveToConfig();
}

void AnalyzerManager::changeSettings(int index, const std::function<void()> &change)
{
    const ResultsChange out = m_runs.prepareModify();
    (void)m_runs.leaveResults(items[std::size_t(index)]);
    change();
}

void AnalyzerManager::addAnalyzer(Analyzer *analyzer)
{
    std::unique_ptr<Analyzer> taken(analyzer);
    if (!taken || !libraries.has(addLibIndex)) {
        return;
    }
    {
        const ResultsChange change = m_runs.prepareModify();
        items.push_back(m_maker.itemOf(libraries.all().at(addLibIndex), std::move(taken)));
    }
    saveToConfig();
    if (AnalyzerItem *item = itemOf(analyzer)) { // who heard of it may have changed the list
        const ResultsChange change = m_runs.prepareModify();
        m_runs.start(*item);
    }
}

void AnalyzerManager::removeAnalyzer(int index)
{
    const ResultsChange change = m_runs.prepareModify();
    m_runs.drop(items[std::size_t(index)]);
    items.erase(items.begin() + index);
    saveToConfig();
}

void AnalyzerManager::tellSimulation()
{
    std::vector<AnalyzerSimulation::Model> models;
    for (const AnalyzerItem &item : items) {
        if (item.fault.isEmpty()) {
            QByteArray settings;
            (void)pluginFault([&] { settings = item.analyzer->GetAnalyzerSettings()->SaveText(); });
            models.push_back({item, settings});
        }
    }
    m_simulation.setModels(std::move(models));
}

// ---- export

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

void AnalyzerManager::leaveExport()
{
    exportThread.reset();
    m_exportOutcome = {true, WriteFault::None, {}};
}

// ---- the readers of results

bool AnalyzerManager::owns(const AnalyzerResults *results) const
{
    return std::any_of(items.begin(), items.end(),
                       [results](const AnalyzerItem &item) { return item.results() == results; });
}

void AnalyzerManager::keep(const AnalyzerResults *results, std::shared_ptr<ResultsReader> reader)
{
    for (AnalyzerItem &item : items) {
        if (item.results() == results) {
            item.readers.push_back({std::move(reader), m_readTime.look()});
            QMetaObject::invokeMethod(this, "readersLost", Qt::QueuedConnection);
            m_watchTimer.start();
            return;
        }
    }
}

void AnalyzerManager::lookAfterReaders()
{
    const std::chrono::milliseconds now = m_readTime.look();
    const std::vector<const AnalyzerResults *> stuckIn = m_gate.takeFromStuck(now);
    const auto isOfExport = [this](const LostReader &lost) {
        return exportThread && lost.reader == exportThread->reader();
    };
    const auto endExport = [&](const AnalyzerItem &item) {
        if (std::any_of(item.readers.begin(), item.readers.end(), isOfExport)) {
            leaveExport();
        }
    };
    for (std::size_t i = 0; i < items.size(); ++i) {
        AnalyzerItem &item = items[i];
        if (item.isHeldFast(now, stuckIn)) {
            endExport(item);
            m_runs.retire(item);
            emit analyzerItemChanged();
        } else if (const QString fault = item.textFault(); !fault.isEmpty() && item.fault.isEmpty()) {
            m_faults.fail(item, fault);
        }
    }
    for (const AnalyzerItem &item : m_runs.stillRead()) {
        if (item.isHeldFast(now, stuckIn)) {
            endExport(item);
        }
    }
    m_runs.dropUnread();
    if (items.empty() && m_runs.stillRead().empty() && !exportThread) {
        m_watchTimer.stop();
    }
}
