#pragma once

#include "analyzer/AnalyzerList.h"
#include "analyzer/AnalyzerMaker.h"
#include "analyzer/AnalyzerRuns.h"
#include "analyzer/AnalyzerSimulation.h"
#include "analyzer/ExportDataProMng.h"
#include "analyzer/FaultTeller.h"
#include "analyzer/ResultsGate.h"
#include "analyzer/WatchedTime.h"

#include <QObject>
#include <QTimer>

#include <cstdint>
#include <functional>
#include <memory>

class SmpData;

/// The single owner of everything that decodes: finds the plug-ins, keeps the user's list of analyzers with their
/// settings, and starts, stops and restarts their workers.
///
/// Main thread throughout, and without any widget: the window, the tests and the command line drive it alike. Nothing
/// here waits longer than 50 ms for a decoder: a worker that does not leave is taken out of its item, which waits for
/// it meanwhile; it is given two seconds in all, and then left behind with what it can reach. A reader that does not
/// come out of a decoder's texts or export is left behind in the same way. Whatever a plug-in throws is told once by
/// analyzerFailed(), and takes its analyzer out of use until it is restarted. A decode that throws has failed, and is
/// tried again on the next capture.
///
/// Results may be read by holders of a ResultsPass of gate(), and on the main thread.
class AnalyzerManager : public QObject, public AnalyzerList, private ResultsKeeper {
    Q_OBJECT
public:
    /// Scans the plug-ins. No item is there yet.
    /// @param folders  where plug-ins are looked for
    /// @param guardFolder  where culprits are remembered; empty for nowhere
    explicit AnalyzerManager(AnalyzerHost host = {}, const QStringList &folders = PluginFolder::standardFolders(),
                             const QString &guardFolder = PluginFolder::standardGuardFolder(),
                             QObject *parent = nullptr);
    /// Stops all workers; waits for those that do not leave as long as for any of them.
    ~AnalyzerManager() override;

    // ---- the capture -----------------------------------------------------------------------------------------------

    /// What is decoded from now on. Stops all workers. `capture` must be given up by the same call, with null, before
    /// it goes. @param deviceCode  code word of the present model
    void setCapture(SmpData *capture, std::uint32_t deviceCode);
    /// A new capture is in the store: starts each analyzer that is in use on it, without saving.
    void captureReady();
    /// A capture is about to fill the store: stops all workers, drops all results, and tells the simulation who is to
    /// drive channels.
    void captureStarts();
    /// The capture that was to start has failed, or was stopped before it began: decodes what the store has, which may
    /// be the last one. Nothing when it is ready, or none was to start.
    void captureFailed();

    // ---- the list --------------------------------------------------------------------------------------------------

    /// Rebuilds the list from what is stored. No worker is started.
    void loadFromConfig();
    /// Stores the list. Settings that hold a ";" are stored as none, and told.
    void saveToConfig();
    /// One run on the present capture. Nothing without one.
    void startAnalyzer(int index);
    /// Saves, and runs the analyzer with its present settings.
    void restartAnalyzer(int index);
    /// A new instance of a library, for the settings dialog: the caller's until addAnalyzer(); null when the plug-in
    /// fails.
    [[nodiscard]] Analyzer *createAnalyzer(int library);
    /// Gives an instance of createAnalyzer() up that is not added.
    void destroyAnalyzer(int library, Analyzer *analyzer);
    /// Appends an item of the library `addLibIndex`, saves and starts it. Takes the analyzer over.
    void addAnalyzer(Analyzer *analyzer);
    void removeAnalyzer(int index);
    /// Stops a running worker. Returns within 50 ms.
    void stopWorker(int index);
    /// The same for all; returns within 50 ms whatever their number.
    void stopAllWorkers();
    void setDisplayFormat(int index, int format);
    /// Has `change` write settings of an analyzer of the list, whose worker was stopped, while nobody reads its
    /// results: their texts may go by the settings. The item may have another instance of the analyzer by then, with
    /// the same settings and without results.
    void changeSettings(int index, const std::function<void()> &change);

    /// Who drives channels in simulated captures.
    [[nodiscard]] SimulationSource &simulation() { return m_simulation; }
    [[nodiscard]] ResultsGate &gate() { return m_gate; }

    // ---- export ----------------------------------------------------------------------------------------------------

    /// Has a decoder write its results on a thread of its own. One export runs at a time: another one is passed over.
    /// When results are replaced meanwhile it is cancelled.
    /// @param option  id of an export option of the analyzer's settings
    void startExport(AnalyzerResults *results, const QString &path, int displayBase, std::uint32_t option);
    [[nodiscard]] bool isExporting() const { return exportThread != nullptr; }
    /// Share that is written, 0 to 1; 1 when no export runs.
    [[nodiscard]] double exportProgress() const;
    void cancelExport();
    /// Of the export that ended last.
    [[nodiscard]] const ExportOutcome &exportOutcome() const { return m_exportOutcome; }

    int addLibIndex = -1; ///< library of the analyzer that is being added

signals:
    /// The list, or an item's settings or format, has changed.
    void analyzerItemChanged();
    /// A run has ended by itself.
    void analyzerDecodedChanged();
    /// A run has begun.
    void analyzerStarted();
    /// Readers of results did not come out of a decoder, and were left behind.
    void readersLost();
    /// Results are about to be replaced. Emitted directly, before the manager waits for their readers.
    void modifyPrepared();
    /// A plug-in did what it must not: what, in words for the user. Once for each occasion.
    void analyzerFailed(const QString &name, const QString &what);

public slots:
    /// A worker ended by itself; nothing when it was stopped or replaced meanwhile. Either may be gone by now.
    void slotStopWorkThread(AnalyzerProgMng *progMng, Analyzer *anly);
    /// The export has ended.
    void slotDeleteExportDataProMng();

    /// Looks whether readers of results are held fast in a decoder, and whether texts have failed: takes the analyzer
    /// out of use. Time counts from look to look, half a second at most. Runs by itself every half second while there
    /// is something to read and the event loop runs.
    void lookAfterReaders();

private:
    void tellSimulation();
    /// Goes on without the export, whose thread is held fast.
    void leaveExport();
    [[nodiscard]] bool owns(const AnalyzerResults *results) const override;
    void keep(const AnalyzerResults *results, std::shared_ptr<ResultsReader> reader) override;

    FaultTeller m_faults;
    ResultsGate m_gate{this};
    AnalyzerSimulation m_simulation;
    AnalyzerMaker m_maker;
    AnalyzerRuns m_runs;
    bool m_awaitsCapture = false;                   ///< captureStarts(), and nothing since
    QTimer m_watchTimer;                            ///< lookAfterReaders()
    WatchedTime m_readTime;                         ///< of the readers of results
    std::unique_ptr<ExportDataProMng> exportThread; ///< null when idle
    ExportOutcome m_exportOutcome;
};
