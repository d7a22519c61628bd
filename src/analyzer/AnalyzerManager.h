#pragma once

#include "analyzer/AnalyzerHost.h"
#include "analyzer/AnalyzerItem.h"
#include "analyzer/AnalyzerSimulation.h"
#include "analyzer/ExportDataProMng.h"
#include "analyzer/PluginFolder.h"
#include "analyzer/PluginGuard.h"
#include "analyzer/ResultsGate.h"

#include <QObject>
#include <QSet>
#include <QStringList>
#include <QTimer>
#include <QVector>

#include <corvanlux/analyzer/DeviceCollection.h>
#include <memory>
#include <vector>

class AnalyzerProgMng;
class QDeadlineTimer;
class SmpData;
struct LingeringWorker;

/// The single owner of everything that decodes: finds the plug-ins, keeps the user's list of analyzers with their
/// settings, and starts, stops and restarts their workers.
///
/// Main thread throughout, and without any widget: the window, the tests and the command line drive it alike. Nothing
/// here waits longer than 50 ms for a decoder: a worker that does not leave is taken out of its item, given two seconds
/// in all, then ended by force, and if not even that helps left behind with what it can reach. A reader that does not
/// come out of a decoder's texts or export is left behind in the same way. Whatever a plug-in throws is told once by
/// analyzerFailed(), and takes its analyzer out of use until it is restarted.
///
/// An item's index is its identity here, and shifts when an earlier item is removed. Results may be read by holders of
/// a ResultsPass of gate(), and on the main thread.
class AnalyzerManager : public QObject, private ResultsKeeper {
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
    [[nodiscard]] bool isWorkerRunning(int index) const;
    void setDisplayFormat(int index, int format);
    [[nodiscard]] int displayFormat(int index) const;
    /// -1 when the analyzer is not in the list.
    [[nodiscard]] int formatOfAnalyzer(const Analyzer *analyzer) const;
    [[nodiscard]] int count() const { return int(items.size()); }
    /// Unchecked index, as the operations of an item are.
    [[nodiscard]] Analyzer *analyzerAt(int index) const { return items[std::size_t(index)].analyzer.get(); }
    /// Empty for an index out of range.
    [[nodiscard]] QString fileNameAt(int index) const;
    /// The analyzer's name, with a note if it is not for the present model.
    [[nodiscard]] QString analyzerTitle(int index) const;
    /// Share of the capture that the running worker has decoded, 0 to 1.
    [[nodiscard]] double progress(int index) const;
    /// What the user should know about the last run, in the user's language, a sentence a line: why it failed or ended
    /// early; empty for nothing.
    [[nodiscard]] QString message(int index) const;
    /// The last run did not come to the capture's end, though nobody asked it to stop.
    [[nodiscard]] bool endedEarly(int index) const;

    [[nodiscard]] QStringList libraryDisplayNames() const;
    /// Empty when no library has that file name.
    [[nodiscard]] QString libraryDisplayName(const QString &fileName) const;
    [[nodiscard]] const QVector<AnalyzerLib> &foundLibraries() const { return libraries; }
    [[nodiscard]] const QVector<PluginFolder::Refusal> &refusals() const { return m_refusals; }
    /// Tries a plug-in again that was passed over since the program died with it; found at the next start.
    void retryPlugin(const QString &fileName) { m_guard.retry(fileName); }

    [[nodiscard]] bool isShown(int index) const { return items[std::size_t(index)].showInList; }
    void setShown(int index, bool shown);
    /// For each item its name, a comma, and 0 or 1.
    [[nodiscard]] QStringList shownStateList() const;
    [[nodiscard]] QVector<Analyzer *> shownAnalyzers() const;
    [[nodiscard]] QVector<Analyzer *> analyzersOnChannel(int channel) const;
    /// Pairs of texts: channel number, name and setting.
    [[nodiscard]] QStringList analyzerChannels(int index) const;
    /// A pair of texts for each channel of the device: its number, and what uses it. @param leaveOut  an item, or -1
    [[nodiscard]] QStringList channelUsage(int leaveOut) const;
    /// The same without the channels that are disabled.
    [[nodiscard]] QStringList enabledChannelUsage(int leaveOut) const;

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
    /// A worker ended by itself; nothing when it was stopped or replaced meanwhile.
    void slotStopWorkThread(AnalyzerProgMng *progMng, Analyzer *anly);
    /// The export has ended.
    void slotDeleteExportDataProMng();

    /// Looks whether readers of results are held fast in a decoder, and whether texts have failed: takes the analyzer
    /// out of use. Runs by itself every half second while there is something to read and the event loop runs.
    void lookAfterReaders();

private slots:
    /// Ends the workers whose capture a writer waits for.
    void leaveToWriter();

private:
    [[nodiscard]] ResultsChange prepareModify();
    [[nodiscard]] AnalyzerItem makeItem(const AnalyzerLib &lib, std::unique_ptr<Analyzer> analyzer);
    [[nodiscard]] std::unique_ptr<Analyzer> newAnalyzer(const AnalyzerLib &lib);
    [[nodiscard]] AnalyzerItem *itemOf(const AnalyzerProgMng *progMng);
    void run(AnalyzerItem &item, bool again);
    /// Ends the item's worker, or takes it out of the item. @return false in that case
    bool endWorker(AnalyzerItem &item);
    /// The same, of several workers that leave at the same time: `until` is the end of the patience with all.
    bool endWorker(AnalyzerItem &item, const QDeadlineTimer &until);
    void takeOut(AnalyzerItem &item);
    /// Puts another instance with the same settings in the item's place. @return what was there
    [[nodiscard]] AnalyzerItem exchange(AnalyzerItem &item);
    /// To be called before the item's results go: a reader that did not come out of them keeps them, with their
    /// analyzer. @return whether the item has another instance now
    [[nodiscard]] bool leaveResults(AnalyzerItem &item);
    /// Goes on without the export, whose thread is held fast.
    void leaveExport();
    /// A reader has been held fast for too long. @param stuckIn  results of whom that is known
    [[nodiscard]] static bool isOverdue(const AnalyzerItem &item, const std::vector<const AnalyzerResults *> &stuckIn);
    /// Takes an item out of use in whose results readers are held fast.
    void retire(AnalyzerItem &item);
    [[nodiscard]] static QString textFault(const AnalyzerItem &item);
    [[nodiscard]] bool owns(const AnalyzerResults *results) const override;
    void keep(const AnalyzerResults *results, std::shared_ptr<ResultsReader> reader) override;
    /// The item's worker has nothing more to do, or there is none.
    static void letGo(AnalyzerItem &item);
    void dropItem(AnalyzerItem &item);
    void lookAfterLingering();
    /// The capture is about to be replaced or to go: when workers are left in it, the store gives it up to them.
    void leaveCapture();
    void fail(AnalyzerItem &item, const QString &what);
    /// Has analyzerFailed() emitted when the event loop runs again, so that no receiver changes the list under a walk;
    /// of the same words only the first ones, until the analyzer is restarted.
    void tell(const QString &name, const QString &what);
    void tellSimulation();
    [[nodiscard]] QString settingsText(const AnalyzerItem &item);
    [[nodiscard]] QString availability(const AnalyzerLib &lib) const;
    [[nodiscard]] static QString nameOf(const AnalyzerItem &item);

    AnalyzerHost m_host;
    PluginGuard m_guard;
    SmpData *m_capture = nullptr;                                              ///< not owned
    std::shared_ptr<CaptureView> deviceView = std::make_shared<CaptureView>(); ///< never null
    QVector<AnalyzerLib> libraries;
    QVector<PluginFolder::Refusal> m_refusals;
    ResultsGate m_gate{this};
    AnalyzerSimulation m_simulation;
    std::vector<AnalyzerItem> items;
    std::vector<AnalyzerItem> m_read; ///< without workers: readers did not come out of them
    std::vector<std::unique_ptr<LingeringWorker>> m_lingering;
    std::vector<std::unique_ptr<SmpLease>> m_heldForEver; ///< of workers that were left behind in `m_capture`
    QTimer m_lingerTimer;
    QTimer m_watchTimer;                            ///< lookAfterReaders()
    QSet<QString> m_told;                           ///< name and words
    std::unique_ptr<ExportDataProMng> exportThread; ///< null when idle
    ExportOutcome m_exportOutcome;
};
