#pragma once

#include "analyzer/AnalyzerItem.h"
#include "analyzer/LingeringWorkers.h"
#include "analyzer/ResultsGate.h"

#include <QDeadlineTimer>
#include <QObject>
#include <QString>

#include <chrono>
#include <cstdint>
#include <memory>
#include <vector>

class AnalyzerMaker;
class AnalyzerProgMng;
class FaultTeller;
class SmpData;

/// The runs of the user's analyzers on the present capture: starts their workers, and ends them.
///
/// Nothing here waits longer than 50 ms for a decoder: a worker that does not leave is taken out of its item, which
/// waits for it meanwhile, and goes to LingeringWorkers. An item whose results are held fast by readers gives its
/// analyzer up to them. Main thread.
class AnalyzerRuns : public QObject {
    Q_OBJECT
public:
    /// What others own, and this works with.
    struct Parts {
        std::vector<AnalyzerItem> &items; ///< the user's list
        AnalyzerMaker &maker;
        FaultTeller &faults;
        ResultsGate &gate;
    };
    explicit AnalyzerRuns(const Parts &parts);

    /// What is decoded from now on. Ends all runs. See AnalyzerManager.
    void setCapture(SmpData *capture, std::uint32_t deviceCode);
    /// The same capture with other data.
    void takeCapture() { setCapture(m_capture, deviceView->device.deviceCode); }

    /// The user starts it: one run on the present capture, by whatever it was out of use.
    void start(AnalyzerItem &item);
    /// One run on the present capture, nothing without one. Behind a worker that lingers, later. Within a change of
    /// results. @param again  the analyzer asked for it itself
    void run(AnalyzerItem &item, bool again);
    /// Ends the item's run, and one that would follow. Returns within 50 ms.
    void stop(AnalyzerItem &item);
    /// The same for all; returns within 50 ms whatever their number.
    void stopAll();
    /// Empties the list for good, and waits for workers that do not leave as long as for any of them.
    void endAll();

    /// The right to replace results: their readers are told, and waited for.
    [[nodiscard]] ResultsChange prepareModify() { return prepareModify(m_gate.patience); }
    /// To be called before the item's results go: a reader that did not come out of them keeps them, with their
    /// analyzer. @return whether the item has another instance now
    bool leaveResults(AnalyzerItem &item);
    /// The item has left the list: ends its worker, and destroys its analyzer unless it is still read.
    void drop(AnalyzerItem &item);
    /// Those that have left the list, or were replaced in it, and are still read. Without workers.
    [[nodiscard]] const std::vector<AnalyzerItem> &stillRead() const { return m_read; }
    /// Destroys those of them that nobody reads any more.
    void dropUnread();
    /// Takes an item out of use in whose results readers are held fast.
    void retire(AnalyzerItem &item);

signals:
    /// Results are about to be replaced. Emitted directly, before their readers are waited for.
    void modifyPrepared();
    /// There will be results to look after.
    void begins();
    /// A run has begun.
    void started();
    /// A run has ended by itself.
    void ended();

public slots:
    /// A worker ended by itself; nothing when it was stopped or replaced meanwhile.
    void slotStopWorkThread(AnalyzerProgMng *progMng, Analyzer *anly);

private slots:
    /// Ends the workers whose capture a writer waits for.
    void leaveToWriter();

private:
    /// @param readers  the patience with them
    [[nodiscard]] ResultsChange prepareModify(std::chrono::milliseconds readers);
    /// The end of the patience with workers: within a change of results, what its readers have left of it.
    [[nodiscard]] QDeadlineTimer workersEnd() const;
    /// Ends the item's worker, or takes it out of the item. @return false in that case
    bool endWorker(AnalyzerItem &item);
    /// The same, of several workers that leave at the same time: `until` is the end of the patience with all.
    bool endWorker(AnalyzerItem &item, const QDeadlineTimer &until);
    /// The item's worker has nothing more to do, or there is none.
    static void letGo(AnalyzerItem &item);
    void takeOut(AnalyzerItem &item);
    [[nodiscard]] AnalyzerItem *itemOf(const AnalyzerProgMng *progMng);
    /// The item that waits for a lingering worker; null when it does so no more.
    [[nodiscard]] AnalyzerItem *waitingFor(quint64 lingering);
    void lingeringEnded(quint64 number);
    void lingeringOverdue(quint64 number, const QString &name);

    std::vector<AnalyzerItem> &items;
    AnalyzerMaker &m_maker;
    FaultTeller &m_faults;
    ResultsGate &m_gate;
    QDeadlineTimer m_changeEnd;   ///< of the patience within the change of results that is under way
    SmpData *m_capture = nullptr; ///< not owned
    std::shared_ptr<CaptureView> deviceView = std::make_shared<CaptureView>(); ///< never null
    std::vector<AnalyzerItem> m_read;                                          ///< readers did not come out of them
    LingeringWorkers m_lingering;
};
