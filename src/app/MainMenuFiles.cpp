// The file actions of the main menu: open, save, export.

#include "app/FileDialogs.h"
#include "app/MainMenu.h"
#include "app/ProgressJobDialog.h"
#include "controls/NoticeBox.h"
#include "device/DevBase.h"
#include "device/DeviceGlobals.h"
#include "files/DataFile.h"
#include "panels/ExportDataSet.h"
#include "session/Session.h"
#include "settings/Config.h"
#include "settings/Globals.h"
#include "wave/MainView.h"

#include <QAction>
#include <QFileInfo>
#include <QPointer>

#include <utility>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

namespace {

/// A pipe keeps whoever opens or writes it waiting for its reader, be it for ever, and the window with it.
bool isPipe(const QString &path)
{
#ifdef Q_OS_UNIX
    struct stat status {};
    return stat(QFile::encodeName(path).constData(), &status) == 0 && S_ISFIFO(status.st_mode);
#else
    Q_UNUSED(path)
    return false;
#endif
}

} // namespace

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

void MainMenu::openFile(const QString &path)
{
    if (isBusy()) {
        return;
    }
    const QFileInfo info(path);
    const bool isData = info.suffix() == QLatin1String("cxdat");
    const bool isSettings = info.suffix() == QLatin1String("cxset");
    QByteArray settings;
    if (!info.isFile() || (!isData && !isSettings) || !configHeadOfFile(path, settings)) {
        tellOpenFailed(path, QMessageBox::Warning);
        return;
    }
    // The rebind that follows reads gOpenFile for the title, so it is set before, and taken back if there is none. A
    // settings file shows no data: the device object with the former capture goes away.
    const QString formerFile = std::exchange(gOpenFile, isData ? path : QString());
    if (!configReplace(settings)) {
        gOpenFile = formerFile;
        configLoad();
        tellOpenFailed(path, QMessageBox::Warning);
        return;
    }
    emit openSettingFile();
    if (isData && !loadData(path, settings.size())) {
        tellOpenFailed(path, QMessageBox::Warning);
    }
}

bool MainMenu::loadData(const QString &path, qint64 headSize)
{
    const Session::FileJob held(m_session);
    DataFile job(gDev->smpData.get(), progressJobDialogs(window()));
    if (!job.loadData(path, headSize)) {
        return false;
    }
    emit gDev->sigSmpDataReady();
    return true;
}

void MainMenu::tellFailed(const QString &what, const QString &path, QMessageBox::Icon kind)
{
    showNotice(window(), kind, ::tr("An error occurred"), what + QStringLiteral("\r\n") + path);
}

void MainMenu::tellOpenFailed(const QString &path, QMessageBox::Icon kind)
{
    if (gOpenFile == path && gDev->smpData->sampleCount() < 1) {
        gOpenFile.clear();
        emit openFileGone();
    }
    tellFailed(::tr("File open failed."), path, kind);
}

void MainMenu::actSaveSettings()
{
    const QString path = saveFileDialog(1);
    if (!path.isEmpty() && !isPipe(path)) {
        configSave(path); // a failure goes unnoticed
    }
}

void MainMenu::actSaveData()
{
    Selection selection;
    const QString path = askTarget(0, ::tr("Sorry, there is no data that can be saved."), selection);
    if (!path.isEmpty() && !writeData(path, selection)) {
        tellFailed(::tr("File save failed."), path, QMessageBox::Warning);
    }
}

QString MainMenu::askTarget(int kind, const QString &noData, Selection &selection)
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
        if (dialog.exec() != QDialog::Accepted) {
            return {};
        }
        if (hasData()) {
            dialog.getSelection(selection.channels, selection.start, selection.end);
            path = saveFileDialog(kind);
        }
    }
    if (!hasData()) {
        showNotice(window(), QMessageBox::Information, QString(), noData);
        return {};
    }
    return path;
}

bool MainMenu::writeData(const QString &path, const Selection &selection)
{
    const Session::FileJob held(m_session);
    QByteArray head;
    // Settings beyond the format's limit would make a file that nobody can open.
    if (isPipe(path) || !configSave(path) || !configHeadOfFile(path, head)) {
        return false;
    }
    DataFile job(gDev->smpData.get(), progressJobDialogs(window()));
    job.chnSelect = selection.channels.data();
    job.file.setFileName(path);
    if (!job.file.open(QIODevice::WriteOnly | QIODevice::Append)) {
        return false;
    }
    job.setRange(selection.start, selection.end);
    return job.runJob(DataFile::Mode::SaveData);
}

void MainMenu::slotExportMenuTrig(QAction *action)
{
    Selection selection;
    const int kind = action->data().toInt();
    const QString path = askTarget(kind, ::tr("Sorry, there is no data that can be exported."), selection);
    if (!path.isEmpty() && !writeExport(kind, path, selection)) {
        tellFailed(::tr("File save failed."), path, QMessageBox::Warning);
    }
}

bool MainMenu::writeExport(int kind, const QString &path, const Selection &selection)
{
    const Session::FileJob held(m_session);
    const bool binary = kind == 4;
    DataFile job(gDev->smpData.get(), progressJobDialogs(window()));
    job.chnSelect = selection.channels.data();
    job.file.setFileName(path);
    const QIODevice::OpenMode text = binary ? QIODevice::NotOpen : QIODevice::Text;
    if (isPipe(path) || !job.file.open(QIODevice::WriteOnly | QIODevice::Truncate | text)) {
        return false;
    }
    job.setRange(selection.start, selection.end);
    return job.runJob(binary ? DataFile::Mode::ExportBinary : DataFile::Mode::ExportText);
}
