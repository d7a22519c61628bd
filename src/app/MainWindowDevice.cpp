// The device object behind the main window and the files that it shows: what replaces either, and the title of both.

#include "app/MainMenu.h"
#include "app/MainWindow.h"
#include "controls/Look.h"
#include "controls/MyProgressDlg.h"
#include "device/DevBase.h"
#include "device/DeviceGlobals.h"
#include "measure/AnalyzerView.h"
#include "panels/DevSetting.h"
#include "panels/Toolbar.h"
#include "session/Session.h"
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
#include <QTimer>
#include <QTimerEvent>
#include <QUrl>
#include <QVector>

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

void MainWindow::showInStatus(const QString &text)
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
        setWindowTitle(mainMenu->shownName(gOpenFile) + titleTail());
        statusLabel->setText(gDev->connected ? ::tr("Device connected") : ::tr("Data review"));
    }
}

void MainWindow::setHistory(CaptureHistory *history)
{
    mainMenu->setHistory(history);
}

void MainWindow::paintInTheNextTurn()
{
    constexpr int soon = 1; // ms; without any wait it would be this turn still
    const QVector<QWidget *> parts{toolbar, mainView};
    for (QWidget *part : parts) {
        part->setUpdatesEnabled(false);
    }
    QTimer::singleShot(soon, this, [parts] {
        for (QWidget *part : parts) {
            part->setUpdatesEnabled(true);
        }
    });
}

void MainWindow::rebindDevice()
{
    if (isVisible()) {
        paintInTheNextTurn();
    }
    showTitleAndState();
    waveGen->setDataSource(gDev->smpData.get());
    waveGen->setClampToData(!gDev->isAnalogModel());

    devSetting->reload();
    toolbar->reload();
    timeView->dropHandles();
    timeView->update();
    mainView->rebuildChannels(*gDev);
    updatePosition();
    analyzerView->reload(*gDev);
    rebindAnalyzers();
    orderTabs();
}

void MainWindow::connectSession()
{
    connect(&m_session, &Session::sigDeviceLeaves, this, &MainWindow::letGoOfDevice);
    connect(&m_session, &Session::sigDeviceReplaced, this, &MainWindow::rebindDevice);
    connect(&m_session, &Session::sigSmpSta, this, &MainWindow::slotDevSmpStaShow);
    connect(&m_session, &Session::sigSmpDataReady, this, &MainWindow::slotSmpDataReady);
    connect(&m_session, &Session::sigChnEnaChanged, mainView, &MainView::slotChnEnaChanged);
    connect(&m_session, &Session::sigInitSta, this, &MainWindow::slotDevInitStaShow);
}

void MainWindow::letGoOfDevice()
{
    smpDialog->hide();
    waveGen->setDataSource(nullptr);
    letGoOfAnalyzers();
}

void MainWindow::slotDevPreConnect(int model)
{
    m_session.chooseModel(model);
}

void MainWindow::slotReplaceConfig()
{
    if (m_session.mayReplaceDevice()) {
        m_startFile = false; // what was named at the start has been overtaken
        m_session.replaceConfig();
    }
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
        m_session.lookForDevice();
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
