#pragma once

#include "analyzer/AnalyzerItem.h"

#include <QObject>
#include <QString>

#include <memory>
#include <vector>

class AnalyzerLibraries;
class AnalyzerProgMng;
class FaultTeller;

/// Makes the analyzers of the user's list, and takes down what is stored of them. What a plug-in does wrong meanwhile
/// is told. Main thread.
class AnalyzerMaker : public QObject {
    Q_OBJECT
public:
    /// Neither is owned.
    AnalyzerMaker(AnalyzerLibraries &libraries, FaultTeller &faults);

    /// A new instance; null when the plug-in fails.
    [[nodiscard]] std::unique_ptr<Analyzer> make(const AnalyzerLib &lib);
    /// An item with that instance, and with a worker that is idle.
    [[nodiscard]] AnalyzerItem itemOf(const AnalyzerLib &lib, std::unique_ptr<Analyzer> analyzer);
    /// Puts another instance with the same settings in the item's place. @return what was there
    [[nodiscard]] AnalyzerItem exchange(AnalyzerItem &item);

    /// Those of a stored list: file name, settings and format of each, all followed by ";". What is not found, or fails
    /// at once, is left out.
    [[nodiscard]] std::vector<AnalyzerItem> stored(const QString &text);
    /// The item's settings as they are stored; empty, and told, if they cannot be.
    [[nodiscard]] QString settingsText(const AnalyzerItem &item);

signals:
    /// The worker of an item that was made here has come to its natural end. It may be stopped or replaced by now.
    void workerEnded(AnalyzerProgMng *progMng, Analyzer *anly);

private:
    AnalyzerLibraries &m_libraries;
    FaultTeller &m_faults;
};
