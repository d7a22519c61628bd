#pragma once

#include "analyzer/AnalyzerLib.h"

#include <QString>

#include <memory>
#include <vector>

class AnalyzerProgMng;
class SmpLease;
struct SmpEdgeRoot;

/// The channels of a capture as decoders reach them; null for one that it does not have.
using CaptureRoots = std::vector<SmpEdgeRoot *>;

/// One analyzer of the user's list. Its index in the manager's list is its identity.
///
/// The analyzer goes through its virtual destructor, not through its plug-in's DestroyAnalyzer: that is for clones.
struct AnalyzerItem : AnalyzerLib {
    QString format; ///< a DisplayBase value in decimal
    bool showInList = true;
    QString fault;                      ///< why it is out of use until it is restarted; empty if it is not
    std::unique_ptr<Analyzer> analyzer; ///< never null
    // While a worker runs:
    std::shared_ptr<const CaptureRoots> roots;
    std::unique_ptr<SmpLease> capture;
    std::unique_ptr<AnalyzerProgMng> progMng; ///< never null; idle without a worker

    AnalyzerItem();
    AnalyzerItem(AnalyzerItem &&) noexcept;
    AnalyzerItem &operator=(AnalyzerItem &&) noexcept;
    ~AnalyzerItem();
};
