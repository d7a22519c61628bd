// What the main window does with instruments that come and go.

#include "app/InitStatus.h"
#include "app/MainMenu.h"
#include "app/MainWindow.h"
#include "controls/MyProgressDlg.h"
#include "device/DevBase.h"
#include "device/DevInit.h"
#include "device/DeviceGlobals.h"
#include "device/UsbTransport.h"
#include "panels/DevSetting.h"
#include "panels/Toolbar.h"
#include "settings/Language.h"

#include <QLabel>
#include <QTimer>

#if defined(Q_OS_WIN)
#include <qt_windows.h>
#endif

void MainWindow::connectBringUp()
{
    if (gDevInit == nullptr) {
        return;
    }
    // Both are emitted on this thread: the device object has been swapped when the second returns.
    connect(gDevInit, &DevInit::sigInitSta, this, &MainWindow::slotDevInitStaShow);
    connect(gDevInit, &DevInit::sigDevPreConnect, this, &MainWindow::slotDevPreConnect);
}

void MainWindow::watchDevices()
{
    if (gUsb == nullptr) {
        return;
    }
    connect(gUsb, &UsbTransport::sigDevChange, this, &MainWindow::lookForDevice);
    gUsb->registerHotplug(std::uintptr_t(winId()));
}

void MainWindow::lookForDevice()
{
    if (gDevInit == nullptr) {
        return;
    }
    if (mainMenu->isBusy()) {
        // A file fills the device object's store, which must stay until it has. Each message is one look.
        constexpr int againMs = 200;
        QTimer::singleShot(againMs, this, &MainWindow::lookForDevice);
        return;
    }
    gDevInit->slotDevChange();
}

bool MainWindow::nativeEvent(const QByteArray &eventType, void *message, long *result)
{
#if defined(Q_OS_WIN)
    const auto *native = static_cast<const MSG *>(message);
    if (InitStatus::isDeviceChange(native->message, native->wParam)) {
        lookForDevice();
    }
#endif
    return QWidget::nativeEvent(eventType, message, result);
}

void MainWindow::slotDevInitStaShow(int sta, int err, int n)
{
    devSetting->closeMenu(); // it would lie above the dialog, and offer what an instrument decides
    if (err != 0) {
        connectDialog->setLabelText(InitStatus::errorText(sta, err));
        connectDialog->setButtonVisible(true);
        return;
    }
    if (const int progress = InitStatus::progress(sta, n); progress >= 0) {
        connectDialog->setProgress(progress);
    }
    constexpr int loading = 0;
    constexpr int finishing = 2;
    constexpr int connected = 6;
    constexpr int gone = 7;
    if (sta == loading || sta == finishing) {
        connectDialog->setButtonVisible(false);
        connectDialog->setLabelText(InitStatus::connectingText());
        connectDialog->show();
    } else if (sta == connected) {
        connectDialog->accept();
        gDev->loadVth();
        toolbar->sendSecondThreshold();
        gDev->resetPwm();
        showConnection(true);
    } else if (sta == gone) {
        showConnection(false);
    } else if (sta > gone) {
        statusLabel->clear();
    }
}

void MainWindow::showConnection(bool connected)
{
    statusLabel->setToolTip(QString());
    statusLabel->setText(connected ? ::tr("Device connected") : ::tr("Device unconnected"));
    showModelTitle(connected);
    toolbar->showConnected(connected);
    toolbar->update();
}
