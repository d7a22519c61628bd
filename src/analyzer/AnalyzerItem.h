#pragma once

#include "analyzer/AnalyzerLib.h"

#include <QString>

#include <chrono>
#include <corvanlux/analyzer/DeviceCollection.h>
#include <memory>
#include <vector>

class AnalyzerProgMng;
class AnalyzerResults;
class ResultsReader;
class SmpLease;
struct SmpEdgeRoot;

/// A capture as decoders see it. Never changed once a worker has it: another capture gets a record of its own, since a
/// worker that does not leave may go on with this one.
struct CaptureView {
    std::vector<const SmpEdgeRoot *> roots; ///< null for a channel that the capture does not have
    DeviceCollection device;                ///< points at `roots`
};

/// A thread that lost its pass inside of an analyzer's results.
struct LostReader {
    std::shared_ptr<ResultsReader> reader;
    std::chrono::milliseconds since; ///< as whoever looks after it counts
};

/// One analyzer of the user's list. Its index in the manager's list is its identity.
///
/// The analyzer goes through its virtual destructor, not through its plug-in's DestroyAnalyzer: that is for clones.
struct AnalyzerItem : AnalyzerLib {
    QString format; ///< a DisplayBase value in decimal
    bool showInList = true;
    QString fault;          ///< why it is out of use until it is restarted; empty if it is not
    quint64 lingering = 0;  ///< its last worker among LingeringWorkers: it runs when that one has left; 0 for none
    bool runsLater = false; ///< then
    int restarts = 0;       ///< runs that it asked for itself, since it was started
    std::unique_ptr<Analyzer> analyzer; ///< never null
    std::vector<LostReader> readers;    ///< of its results, or of those of an analyzer that was here before
    // While a worker runs:
    std::shared_ptr<CaptureView> view;
    std::unique_ptr<SmpLease> capture;
    std::unique_ptr<AnalyzerProgMng> progMng; ///< never null; idle without a worker

    AnalyzerItem();
    AnalyzerItem(AnalyzerItem &&) noexcept;
    AnalyzerItem &operator=(AnalyzerItem &&) noexcept;
    ~AnalyzerItem();

    /// The analyzer's own, or the plug-in's where it tells none.
    [[nodiscard]] QString name() const;
    /// What the user should know about its last run, as AnalyzerList tells it.
    [[nodiscard]] QString message() const;
    /// Null when the analyzer has none.
    [[nodiscard]] AnalyzerResults *results() const;
    /// What the texts of its results threw, for the user; empty for nothing.
    [[nodiscard]] QString textFault() const;
    /// A lost reader is still inside of the results that the analyzer has now.
    [[nodiscard]] bool isRead() const;
    /// A lost reader has been in some results of this item for too long.
    /// @param now  as LostReader::since  @param stuckIn  results of whom that is known
    [[nodiscard]] bool isHeldFast(std::chrono::milliseconds now,
                                  const std::vector<const AnalyzerResults *> &stuckIn) const;
};
