#pragma once

#include "protocol/ExportOptions.h"

#include <QObject>
#include <QPointer>
#include <QTimer>

#include <functional>

class AnalyzerManager;
class AnalyzerResults;
class ExportDialog;
class MyProgressDlg;
class QAction;
class QMenu;
class QWidget;

/// The export of decoded results as the user sees it: the entry in an analyzer's menu, the choice among several kinds
/// of file, the progress with its stop, and how it ended.
///
/// The writing is the manager's. Main thread; one instance.
class AnalyzerExport : public QObject {
    Q_OBJECT
public:
    /// Asks for a path to write to. `kind` 2 text, 3 CSV; a name without an ending gets `ending`, the one that was
    /// chosen: a decoder's bytes or packets are no text. @return empty on cancel
    using AskPath = std::function<QString(QWidget *parent, int kind, const QString &ending)>;

    /// @param manager, window  not owned, outlive this
    AnalyzerExport(AnalyzerManager &manager, AskPath askPath, QWidget *window);

    /// Adds the entry of the analyzer at `itemIndex` to its menu: none that can be chosen, one list of endings, or the
    /// dialog.
    void extendMenu(QMenu &menu, int itemIndex);

signals:
    /// A file was written: words for the status line.
    void fileTold(const QString &text);

private slots:
    void slotTimerOut();
    void slotExportStop();

private:
    void actExportDialog(const Analyzer *analyzer);
    void exportAs(const Analyzer *analyzer, const ExportChoice &choice);
    /// Null when the analyzer is not in the list any more, or has no frames.
    [[nodiscard]] AnalyzerResults *resultsOf(const Analyzer *analyzer, int &itemIndex) const;
    void start(AnalyzerResults &results, int itemIndex, const QString &path, std::uint32_t optionId);
    void tellEnd();
    void tellFailed(const QString &path, const QString &why) const;

    AnalyzerManager &m_manager;
    const AskPath m_askPath;
    QWidget *const m_window;
    QPointer<ExportDialog> exportDialog;
    MyProgressDlg *exportProgress = nullptr; ///< made at first use
    QTimer exportTimer{this};
    QString m_path;
    bool m_stopped = false; ///< by the user
};
