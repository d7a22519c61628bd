// The file actions of the main menu: open, save, export.

#include "app/FileDialogs.h"
#include "app/MainMenu.h"
#include "app/ProgressJobDialog.h"
#include "app/RecentMenu.h"
#include "controls/NoticeBox.h"
#include "device/DevBase.h"
#include "device/DevModels.h"
#include "device/DeviceGlobals.h"
#include "files/CaptureFile.h"
#include "files/CaptureHistory.h"
#include "files/ForeignFile.h"
#include "panels/ExportDataSet.h"
#include "session/Session.h"
#include "settings/Config.h"
#include "settings/Globals.h"
#include "settings/HistoryOptions.h"
#include "wave/MainView.h"

#include <QAction>
#include <QFileInfo>
#include <QPointer>

bool MainMenu::isBusy() const
{
    return !m_session.mayBeginFileJob();
}

QString MainMenu::saveFileDialog(int kind)
{
    return FileDialogs::askSavePath(window(), kind, now());
}

QString MainMenu::openFileDialog()
{
    return FileDialogs::askOpenPath(window());
}

void MainMenu::actOpenFile()
{
    const QString path = isBusy() ? QString() : openFileDialog();
    if (!path.isEmpty()) {
        openFile(path);
    }
}

CaptureFile MainMenu::captureFile() const
{
    return CaptureFile(digitalChannelsOf, progressJobDialogs(window()));
}

OpenedCapture MainMenu::read(const QString &path, const SmpData *former)
{
    if (isForeignCapture(path)) {
        return readForeignFile(path);
    }
    const Session::FileJob held(m_session);
    return captureFile().open(path, former);
}

void MainMenu::setHistory(CaptureHistory *history)
{
    m_history = history;
    if (m_recent != nullptr) {
        m_recent->setHistory(history);
    } else if (history != nullptr) {
        history->refresh(); // the menu shows what is known when it opens
    }
}

QString MainMenu::shownName(const QString &path) const
{
    for (const HistoryEntry &entry : m_history == nullptr ? QVector<HistoryEntry>() : m_history->entries()) {
        if (entry.path == path) {
            return captureText(entry);
        }
    }
    return path;
}

void MainMenu::remember(const QString &path)
{
    const bool isKept = m_history != nullptr && QFileInfo(path).absolutePath() == m_history->folder().path();
    if (!isKept) {
        RecentFiles::add(path);
    }
}

void MainMenu::openFile(const QString &path)
{
    if (isBusy()) {
        return;
    }
    OpenedCapture opened = read(path, gDev->smpData.get());
    if (!opened.outcome.isDone()) {
        tellOpenFailed(path, QMessageBox::Warning, opened.outcome);
        return;
    }
    remember(path);
    // The rebind that follows reads gOpenFile for the title. A settings file shows no data: the device object with the
    // former capture goes away.
    gOpenFile = opened.isData ? path : QString();
    configTake(*opened.settings);
    emit openSettingFile();
    if (opened.isData && opened.capture == nullptr) {
        opened = read(path, nullptr); // there is room now
    }
    if (opened.isData) {
        takeCapture(path, opened, QMessageBox::Warning);
    }
    if (!opened.notes.isEmpty()) {
        emit fileTold(opened.notes.join(QStringLiteral("; ")));
    }
}

void MainMenu::openStartFile(const QString &path)
{
    if (isForeignCapture(path)) {
        openFile(path); // its settings are made when it has been read
        return;
    }
    OpenedCapture opened = read(path, gDev->smpData.get());
    if (gDev->isCapturing()) {
        return; // the capture has overtaken the file
    }
    if (!opened.outcome.isDone()) {
        // Its settings have been in effect since the start.
        configLoad();
        viewOptionsLoad();
        gOpenFile.clear();
        emit openSettingFile();
    } else {
        remember(path);
    }
    takeCapture(path, opened, QMessageBox::Information);
}

void MainMenu::takeCapture(const QString &path, const OpenedCapture &opened, QMessageBox::Icon kind)
{
    FileOutcome outcome = opened.outcome;
    if (outcome.isDone()) {
        emit gDev->sigCaptureStarts(); // who reads the former capture lets go
    }
    if (outcome.isDone() && !gDev->smpData->adopt(*opened.capture)) {
        outcome = {FileResult::OtherModel};
    }
    if (!outcome.isDone()) {
        tellOpenFailed(path, kind, outcome);
        return;
    }
    emit gDev->sigSmpDataReady();
    const QString warning = fileWarning(outcome, chnShowNameGet);
    if (!warning.isEmpty()) {
        showNotice(window(), QMessageBox::Warning, QString(), warning + QStringLiteral("\r\n") + path);
    }
}

void MainMenu::tellFailed(const QString &what, const QString &path, QMessageBox::Icon kind, const FileOutcome &outcome)
{
    const QString end = QStringLiteral("\r\n");
    showNotice(window(), kind, ::tr("An error occurred"),
               what + end + path + end + fileReason(outcome) +
                   (outcome.detail.isEmpty() ? QString() : end + outcome.detail));
}

void MainMenu::tellOpenFailed(const QString &path, QMessageBox::Icon kind, const FileOutcome &outcome)
{
    if (gOpenFile == path && gDev->smpData->sampleCount() < 1) {
        gOpenFile.clear();
        emit openFileGone();
    }
    tellFailed(::tr("File open failed."), path, kind, outcome);
}

void MainMenu::tellWritten(const QString &path, const FileOutcome &outcome)
{
    if (outcome.isDone()) {
        emit fileTold(::tr("Saved:") + QLatin1Char(' ') + QFileInfo(path).fileName());
    } else {
        tellFailed(::tr("File save failed."), path, QMessageBox::Warning, outcome);
    }
}

void MainMenu::actSaveSettings()
{
    const QString path = isBusy() ? QString() : saveFileDialog(1);
    if (path.isEmpty()) {
        return;
    }
    const FileOutcome outcome = CaptureFile::saveSettings(path, configCopy());
    if (outcome.isDone()) {
        remember(path);
        tellWritten(path, outcome);
    } else {
        // No box: nothing is lost but what can be saved again.
        emit fileTold(::tr("File save failed.") + QLatin1Char(' ') + fileReason(outcome));
    }
}

void MainMenu::actSaveData()
{
    CapturePart part;
    const QString path = askTarget(0, ::tr("Sorry, there is no data that can be saved."), part);
    if (!path.isEmpty()) {
        const Session::FileJob held(m_session);
        const FileOutcome outcome = captureFile().save(path, *gDev->smpData, part, configCopy());
        if (outcome.isDone()) {
            remember(path);
        }
        tellWritten(path, outcome);
    }
}

QString MainMenu::askTarget(int kind, const QString &noData, CapturePart &part)
{
    if (isBusy()) {
        return {};
    }
    // Behind each of the dialogs another file may be dropped on the window, or an instrument plugged in.
    const QPointer<DevBase> device = gDev;
    const auto hasData = [&device] { return device == gDev && gDev->smpData->sampleCount() > 0; };
    QString path;
    if (hasData()) {
        ExportDataSet dialog(shownPairs ? shownPairs() : QVector<ShownPair>(), window());
        dialog.setWindowTitle(FileDialogs::saveKind(kind).title);
        if (dialog.exec() != QDialog::Accepted) {
            return {};
        }
        if (hasData()) {
            dialog.getSelection(part.channels, part.start, part.end);
            path = saveFileDialog(kind);
        }
    }
    if (!hasData()) {
        showNotice(window(), QMessageBox::Information, QString(), noData);
        return {};
    }
    return path;
}

void MainMenu::slotExportMenuTrig(QAction *action)
{
    CapturePart part;
    const int kind = action->data().toInt();
    const QString path = askTarget(kind, ::tr("Sorry, there is no data that can be exported."), part);
    if (!path.isEmpty()) {
        const Session::FileJob held(m_session);
        const auto format = kind == 4 ? ExportKind::Binary : ExportKind::Text;
        const bool isForeign = kind == FileDialogs::vcd || kind == FileDialogs::sr;
        tellWritten(path, isForeign ? exportForeign(path, kind, part)
                                    : captureFile().exportTo(path, *gDev->smpData, part, format));
    }
}
