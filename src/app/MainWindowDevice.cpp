// The device object behind the main window and the files that it shows: what replaces either, and the title of both.

#include "app/MainMenu.h"
#include "app/MainWindow.h"
#include "controls/Look.h"
#include "controls/MyProgressDlg.h"
#include "device/DevBase.h"
#include "device/DevInit.h"
#include "device/DevModels.h"
#include "device/DeviceGlobals.h"
#include "measure/AnalyzerView.h"
#include "panels/DevSetting.h"
#include "panels/Toolbar.h"
#include "settings/Config.h"
#include "settings/Globals.h"
#include "settings/Language.h"
#include "wave/MainView.h"
#include "wave/TimeView.h"
#include "wave/WaveDataGen.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QLabel>
#include <QMimeData>
#include <QTimerEvent>
#include <QUrl>

#include <utility>

namespace {

QString titleTail()
{
    return QStringLiteral(" - CorvanLUX");
}

/// A dropped file is read and stays where it is: whoever offered it for moving must not take it away.
void acceptCopy(QDropEvent &event)
{
    event.setDropAction(Qt::CopyAction);
    event.accept();
}

} // namespace

void MainWindow::showModelTitle(bool connected)
{
    const QString state = connected ? ::tr("Connected") : ::tr("Unconnected");
    setWindowTitle(gDev->name + QLatin1Char(' ') + state + titleTail());
}

void MainWindow::showFileTold(const QString &text)
{
    // The column is as wide as that of the channels, whatever a file is called.
    statusLabel->setText(statusLabel->fontMetrics().elidedText(text, Qt::ElideMiddle, statusLabel->width() - dp(6)));
    statusLabel->setToolTip(text);
}

void MainWindow::showTitleAndState()
{
    statusLabel->setToolTip(QString());
    if (gOpenFile.isEmpty()) {
        showModelTitle(gDev->connected);
        statusLabel->setText(gDev->connected ? ::tr("Device connected") : ::tr("Device unconnected"));
    } else {
        setWindowTitle(gOpenFile + titleTail());
        statusLabel->setText(gDev->connected ? ::tr("Device connected") : ::tr("Data review"));
    }
}

void MainWindow::rebindDevice()
{
    showTitleAndState();
    waveGen->setDataSource(gDev->smpData.get());
    waveGen->setClampToData(!gDev->isAnalogModel());

    devSetting->reload();
    toolbar->reload();
    timeView->dropHandles();
    timeView->update();
    mainView->rebuildChannels();
    updatePosition();
    analyzerView->reload();
    orderTabs();
    connectDevice();
}

void MainWindow::connectDevice()
{
    // A capture thread's report may still be queued when its device has been replaced.
    const int number = ++m_deviceNumber;
    connect(gDev, &DevBase::sigSmpSta, this, [this, number](int sta, int err, int n) {
        if (number == m_deviceNumber) {
            slotDevSmpStaShow(sta, err, n);
        }
    });
    connect(gDev, &DevBase::sigSmpDataReady, this, [this, number] {
        if (number == m_deviceNumber) {
            slotSmpDataReady();
        }
    });
    connect(gDev, &DevBase::sigChnEnaChanged, mainView, &MainView::slotChnEnaChanged);
}

void MainWindow::replaceDevice(int model)
{
    // No report of the old device may reach the window any more, nor may the generator's worker read its capture.
    ++m_deviceNumber;
    smpDialog->hide();
    waveGen->setDataSource(nullptr);
    delete std::exchange(gDev, nullptr);
    gDev = createDevice(model).release();
}

void MainWindow::slotDevPreConnect(int model)
{
    if (model == gDev->model || mainMenu->isBusy()) {
        return;
    }
    replaceDevice(model);
    rebindDevice();
    globalSet(QStringLiteral("devModel"), QString::number(gDev->model));
}

void MainWindow::slotReplaceConfig()
{
    if (mainMenu->isBusy()) {
        return;
    }
    m_startFile = false; // what was named at the start has been overtaken
    const int model = globalGet(QStringLiteral("devModel")).toInt();
    const bool stays = gDev->connected && gDev->model == model && gDevInit != nullptr;
    replaceDevice(model);
    if (stays && gDev->initDevice(gDevInit->identity()) == 0) {
        gDev->loadVth();
        gDev->resetPwm();
    }
    rebindDevice();
}

void MainWindow::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != m_startTimer) {
        QWidget::timerEvent(event);
        return;
    }
    killTimer(std::exchange(m_startTimer, 0));
    // A capture that was started meanwhile fills the store already, and has overtaken the file.
    if (gOpenFile.isEmpty() || !m_startFile || gDev->isCapturing()) {
        lookForDevice();
        return;
    }
    mainMenu->openStartFile(QString(gOpenFile)); // a copy: it is cleared when it cannot be opened
}

void MainWindow::dragEnterEvent(QDragEnterEvent *event)
{
    if (event->mimeData()->hasUrls()) {
        acceptCopy(*event);
    }
}

void MainWindow::dropEvent(QDropEvent *event)
{
    acceptCopy(*event);
    const QList<QUrl> urls = event->mimeData()->urls();
    const QString path = urls.isEmpty() ? QString() : urls.constFirst().toLocalFile();
    if (!path.isEmpty()) {
        mainMenu->openFile(path);
    }
}
