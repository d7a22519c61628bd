#pragma once

#include "analyzer/AnalyzerHost.h"
#include "analyzer/AnalyzerItem.h"
#include "analyzer/AnalyzerLibraries.h"

#include <QStringList>
#include <QVector>

#include <vector>

/// The plug-ins that were found and the user's analyzers as they stand: what can be asked about them without changing
/// the list or a run.
///
/// An item's index is its identity, and shifts when an earlier item is removed. It is not checked but where told. Main
/// thread.
class AnalyzerList {
public:
    AnalyzerList(const AnalyzerList &) = delete;
    AnalyzerList &operator=(const AnalyzerList &) = delete;

    // ---- the plug-ins ----------------------------------------------------------------------------------------------

    [[nodiscard]] QStringList libraryDisplayNames() const;
    /// Empty when no library has that file name.
    [[nodiscard]] QString libraryDisplayName(const QString &fileName) const;
    /// File names in what is stored of the user's analyzers that no library has, each once.
    [[nodiscard]] QStringList notFound() const;
    [[nodiscard]] const QVector<AnalyzerLib> &foundLibraries() const { return libraries.all(); }
    [[nodiscard]] const QVector<PluginFolder::Refusal> &refusals() const { return libraries.refusals(); }
    /// Tries a plug-in again that was passed over since the program died with it; found at the next start.
    void retryPlugin(const QString &fileName) { libraries.retry(fileName); }

    // ---- the user's analyzers --------------------------------------------------------------------------------------

    [[nodiscard]] int count() const { return int(items.size()); }
    [[nodiscard]] Analyzer *analyzerAt(int index) const { return items[std::size_t(index)].analyzer.get(); }
    /// Empty for an index out of range.
    [[nodiscard]] QString fileNameAt(int index) const;
    /// The analyzer's name, with a note if it is not for the present model.
    [[nodiscard]] QString analyzerTitle(int index) const;
    [[nodiscard]] int displayFormat(int index) const;
    /// -1 when the analyzer is not in the list.
    [[nodiscard]] int formatOfAnalyzer(const Analyzer *analyzer) const;

    [[nodiscard]] bool isWorkerRunning(int index) const;
    /// Share of the capture that the running worker has decoded, 0 to 1.
    [[nodiscard]] double progress(int index) const;
    /// What the user should know about the last run, in the user's language, a sentence a line: why it failed or ended
    /// early; empty for nothing.
    [[nodiscard]] QString message(int index) const;
    /// The last run did not come to the capture's end, though nobody asked it to stop.
    [[nodiscard]] bool endedEarly(int index) const;

    // ---- the list of results ---------------------------------------------------------------------------------------

    [[nodiscard]] bool isShown(int index) const { return items[std::size_t(index)].showInList; }
    void setShown(int index, bool shown);
    /// For each item its name, a comma, and 0 or 1.
    [[nodiscard]] QStringList shownStateList() const;
    [[nodiscard]] QVector<Analyzer *> shownAnalyzers() const;

    // ---- channels --------------------------------------------------------------------------------------------------

    [[nodiscard]] QVector<Analyzer *> analyzersOnChannel(int channel) const;
    /// Pairs of texts: channel number, name and setting.
    [[nodiscard]] QStringList analyzerChannels(int index) const;
    /// A pair of texts for each channel of the device: its number, and what uses it. @param leaveOut  an item, or -1
    [[nodiscard]] QStringList channelUsage(int leaveOut) const;
    /// The same without the channels that are disabled.
    [[nodiscard]] QStringList enabledChannelUsage(int leaveOut) const;

protected:
    /// Scans the plug-ins. No item is there yet. Parameters as of AnalyzerManager.
    AnalyzerList(AnalyzerHost host, const QStringList &folders, const QString &guardFolder);
    ~AnalyzerList() = default;

    /// Null when the analyzer is not in the list.
    [[nodiscard]] AnalyzerItem *itemOf(const Analyzer *analyzer);

    AnalyzerHost m_host;
    AnalyzerLibraries libraries;
    std::vector<AnalyzerItem> items;

private:
    [[nodiscard]] QString availability(const AnalyzerLib &lib) const;
};
