#include "app/MainMenu.h"

#include "app/Config.h"
#include "app/Globals.h"
#include "app/Language.h"
#include "app/ProgressJobDialog.h"
#include "device/DevBase.h"
#include "files/DataFile.h"
#include "wave/NoticeBox.h"

#include <QFileInfo>
#include <QMessageBox>
#include <QScopedValueRollback>

MainMenu::MainMenu(QWidget *parent) : QWidget(parent) {}

void MainMenu::openFile(const QString &path)
{
    if (m_loading) {
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
    const QScopedValueRollback<bool> loading(m_loading, true);
    DataFile job(gDev->smpData.get(), progressJobDialogs(window()));
    if (!job.loadData(path, headSize)) {
        return false;
    }
    emit gDev->sigSmpDataReady();
    return true;
}

void MainMenu::tellOpenFailed(const QString &path, QMessageBox::Icon kind)
{
    if (gOpenFile == path && gDev->smpData->sampleCount() < 1) {
        gOpenFile.clear();
        emit openFileGone();
    }
    showNotice(window(), kind, ::tr("An error occurred"), ::tr("File open failed.") + QStringLiteral("\r\n") + path);
}
