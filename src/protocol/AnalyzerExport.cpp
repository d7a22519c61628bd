#include "protocol/AnalyzerExport.h"

#include "analyzer/AnalyzerManager.h"
#include "controls/MyProgressDlg.h"
#include "controls/NoticeBox.h"
#include "files/CaptureFile.h"
#include "protocol/ExportDialog.h"
#include "settings/Globals.h"
#include "settings/Language.h"

#include <QAction>
#include <QFileInfo>
#include <QMenu>

#include <algorithm>
#include <corvanlux/analyzer/AnalyzerResults.h>
#include <utility>

namespace {

constexpr int progressEvery = 200; // ms
constexpr int textKind = 2;
constexpr int csvKind = 3;

bool isOpenCapture(const QString &path)
{
    const QString open = gOpenFile.isEmpty() ? QString() : QFileInfo(gOpenFile).canonicalFilePath();
    return !open.isEmpty() && QFileInfo(path).canonicalFilePath() == open;
}

QString reasonOf(const ExportOutcome &outcome)
{
    if (outcome.cancelled) {
        return ::tr("The results have changed meanwhile.");
    }
    if (outcome.fault == WriteFault::Other && !outcome.words.isEmpty()) {
        return outcome.words;
    }
    return fileReason({fileResultOf(outcome.fault)});
}

} // namespace

AnalyzerExport::AnalyzerExport(AnalyzerManager &manager, AskPath askPath, QWidget *window)
    : QObject(window), m_manager(manager), m_askPath(std::move(askPath)), m_window(window)
{
    qRegisterMetaType<ExportChoice>();
    exportTimer.setInterval(progressEvery);
    connect(&exportTimer, &QTimer::timeout, this, &AnalyzerExport::slotTimerOut);
}

void AnalyzerExport::extendMenu(QMenu &menu, int itemIndex)
{
    const Analyzer *analyzer = m_manager.analyzerAt(itemIndex);
    const QVector<ExportOption> options = exportOptionsOf(*analyzer);
    if (options.isEmpty()) {
        menu.addAction(::tr("Export Data"))->setEnabled(false);
        return;
    }
    if (options.size() > 1) {
        const QAction *entry = menu.addAction(::tr("Export Data") + QStringLiteral("..."));
        connect(
            entry, &QAction::triggered, this, [this, analyzer] { actExportDialog(analyzer); }, Qt::QueuedConnection);
        return;
    }
    QMenu *endings = menu.addMenu(::tr("Export Data"));
    for (const ExportChoice &choice : options.constFirst().choices) {
        const QAction *entry = endings->addAction(QString(choice.text).replace(QLatin1Char('&'), QStringLiteral("&&")));
        // Queued: the menu has closed by then, and may go while the user chooses a path.
        connect(
            entry, &QAction::triggered, this, [this, analyzer, choice] { exportAs(analyzer, choice); },
            Qt::QueuedConnection);
    }
}

void AnalyzerExport::actExportDialog(const Analyzer *analyzer)
{
    int index = -1;
    (void)resultsOf(analyzer, index);
    if (index < 0 || exportDialog) {
        return;
    }
    exportDialog = new ExportDialog(exportOptionsOf(*m_manager.analyzerAt(index)), m_window);
    exportDialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(
        exportDialog, &ExportDialog::chosen, this,
        [this, analyzer](const ExportChoice &choice) { exportAs(analyzer, choice); }, Qt::QueuedConnection);
    exportDialog->open();
}

AnalyzerResults *AnalyzerExport::resultsOf(const Analyzer *analyzer, int &itemIndex) const
{
    itemIndex = 0;
    while (itemIndex < m_manager.count() && m_manager.analyzerAt(itemIndex) != analyzer) {
        ++itemIndex;
    }
    AnalyzerResults *results = nullptr;
    if (itemIndex == m_manager.count()) {
        itemIndex = -1;
    } else if (!m_manager.analyzerAt(itemIndex)->GetAnalyzerResults(&results) || results->GetNumFrames() == 0) {
        results = nullptr;
    }
    return results;
}

void AnalyzerExport::exportAs(const Analyzer *analyzer, const ExportChoice &choice)
{
    int index = -1;
    if (m_manager.isExporting()) {
        return;
    }
    if (resultsOf(analyzer, index) != nullptr) {
        const int kind = choice.extension == QLatin1String("csv") ? csvKind : textKind;
        const QString path = m_askPath(m_window, kind, choice.extension);
        if (path.isEmpty()) {
            return;
        }
        if (isOpenCapture(path)) {
            tellFailed(path, ::tr("The file is open in this program."));
            return;
        }
        AnalyzerResults *results = resultsOf(analyzer, index); // time has passed
        if (results != nullptr) {
            start(*results, index, path, choice.optionId);
            return;
        }
    }
    showNotice(m_window, QMessageBox::Information, QString(), ::tr("Sorry, there is no data that can be exported."));
}

void AnalyzerExport::start(AnalyzerResults &results, int itemIndex, const QString &path, std::uint32_t optionId)
{
    m_path = path;
    m_stopped = false;
    m_manager.startExport(&results, path, m_manager.displayFormat(itemIndex), optionId);
    if (exportProgress == nullptr) {
        const QString label = ::tr("Saving file, please wait") + QStringLiteral("...");
        exportProgress = new MyProgressDlg(::tr("Save file"), label, ::tr("Stop"), m_window);
        exportProgress->autoAccept = true;
        exportProgress->closeOnButton = false; // it stays until the file is gone
        connect(exportProgress, &QDialog::rejected, this, &AnalyzerExport::slotExportStop);
        connect(exportProgress, &QDialog::accepted, &exportTimer, &QTimer::stop);
    }
    exportProgress->setProgress(0);
    exportProgress->show();
    exportTimer.start();
}

void AnalyzerExport::slotTimerOut()
{
    if (m_manager.isExporting()) {
        constexpr int most = 99; // all of it is for the file that has its name
        exportProgress->setProgress(std::min(int(m_manager.exportProgress() * 100), most));
        return;
    }
    exportTimer.stop();
    if (m_manager.exportOutcome().isDone()) {
        exportProgress->setProgress(100);
    } else {
        exportProgress->hide();
    }
    tellEnd();
}

void AnalyzerExport::slotExportStop()
{
    m_stopped = true;
    m_manager.cancelExport();
}

void AnalyzerExport::tellEnd()
{
    const ExportOutcome &outcome = m_manager.exportOutcome();
    if (outcome.isDone()) {
        emit fileTold(::tr("Saved:") + QLatin1Char(' ') + QFileInfo(m_path).fileName());
    } else if (!(outcome.cancelled && m_stopped)) {
        tellFailed(m_path, reasonOf(outcome));
    }
}

void AnalyzerExport::tellFailed(const QString &path, const QString &why) const
{
    const QString end = QStringLiteral("\r\n");
    showNotice(m_window, QMessageBox::Warning, ::tr("An error occurred"),
               ::tr("File save failed.") + end + path + end + why);
}
