// What the main window does with instruments that come and go.

#include "app/MainWindow.h"
#include "controls/MyProgressDlg.h"
#include "panels/DevSetting.h"
#include "panels/Toolbar.h"
#include "session/InitStatus.h"
#include "session/Session.h"
#include "settings/Language.h"

#include <QLabel>

#if defined(Q_OS_WIN)
#include <qt_windows.h>
#endif

bool MainWindow::nativeEvent(const QByteArray &eventType, void *message, long *result)
{
#if defined(Q_OS_WIN)
    const auto *native = static_cast<const MSG *>(message);
    if (InitStatus::isDeviceChange(native->message, native->wParam)) {
        m_session.lookForDevice();
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
        connectDialog->show(); // an instrument may fall silent long after its bring-up
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
