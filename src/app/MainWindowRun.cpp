// What the main window does with the reports of a capture and with the moves of its panels.

#include "acquisition/SmpState.h"
#include "analyzer/AnalyzerManager.h"
#include "app/MainWindow.h"
#include "controls/Look.h"
#include "controls/MyProgressDlg.h"
#include "controls/NoticeBox.h"
#include "device/DevBase.h"
#include "device/DeviceGlobals.h"
#include "panels/SmpCtrl.h"
#include "panels/Toolbar.h"
#include "protocol/ProtocolResult.h"
#include "session/RunStatus.h"
#include "session/Session.h"
#include "settings/Config.h"
#include "settings/Globals.h"
#include "settings/Language.h"
#include "wave/MainView.h"
#include "wave/PosiView.h"
#include "wave/SmpZoom.h"
#include "wave/TimeView.h"
#include "wave/WaveDataGen.h"

#include <QTimer>

#include <algorithm>

void MainWindow::slotDevSmpStaShow(int sta, int err, int n)
{
    if (err != 0 || sta == smpState::done) {
        // Behind the capture's data, where there is some.
        QTimer::singleShot(0, this, &MainWindow::decodeLastCapture);
    }
    if (err != 0) {
        showRunError(sta, err, n);
    } else {
        showRunState(sta, n);
    }
}

void MainWindow::showRunError(int sta, int err, int n)
{
    if (err == smpError::malformedRecord) {
        globalSet(QStringLiteral("zeroSmpCnt"), QString::number(n));
        return;
    }
    const RunStatus::ErrorText error = RunStatus::errorText(sta, err, gDev->transferMode);
    if (gDev->isAnalogModel()) {
        toolbar->smpCtrl->hideProgress();
        // The blanks widen a box that holds nothing but a code.
        const QString tail = error.isCode ? QStringLiteral(".                 ") : QString();
        showNotice(this, QMessageBox::Warning, ::tr("An error occurred"), error.text + tail);
        return;
    }
    smpDialog->closeOnButton = true;
    smpDialog->setButtonVisible(true);
    if (error.box) {
        smpDialog->accept();
        showNotice(this, QMessageBox::Warning, ::tr("An error occurred"), error.text);
        return;
    }
    smpDialog->setLabelText(RunStatus::dialogErrorText(err, error));
    smpDialog->show(); // a capture that could not even start has not opened it
}

void MainWindow::showRunState(int sta, int n)
{
    if (sta == smpState::starting && !gOpenFile.isEmpty()) {
        gOpenFile.clear();
        showTitleAndState();
    }
    if (sta == smpState::starting) {
        protocolResult->clear();
    }
    const int shown = RunStatus::shownProgress(n);
    if (gDev->isAnalogModel()) {
        if (sta == smpState::done) {
            toolbar->smpCtrl->hideProgress();
        } else if (sta != smpState::starting) {
            toolbar->smpCtrl->setProgress(shown);
        }
        return;
    }
    if (sta == smpState::done) {
        smpDialog->accept();
        return;
    }
    if (sta < smpState::starting || sta > smpState::done) {
        return;
    }
    if (sta == smpState::starting) {
        smpDialog->closeOnButton = false;
    }
    if (sta == smpState::starting || sta == smpState::reading) {
        smpDialog->setButtonVisible(sta == smpState::starting);
    }
    smpDialog->setLabelText(RunStatus::stateText(sta));
    smpDialog->setProgress(shown);
    if (sta == smpState::starting) {
        smpDialog->show();
    }
}

void MainWindow::slotSmpDataReady()
{
    for (int chn = 0; chn < gDev->aChnProbe.size(); ++chn) {
        waveGen->setAChnProbe(chn, gDev->aChnProbe.at(chn));
    }
    mainView->clearForNewData();
    waveGen->dataReady();
    if (!gOpenFile.isEmpty()) {
        mainView->showAllIfFlat();
    }
    analyzerMgr->captureReady();
    protocolResult->followWorkers();
}

void MainWindow::decodeLastCapture()
{
    if (!gDev->isCapturing()) {
        analyzerMgr->captureFailed();
        protocolResult->followWorkers();
    }
}

bool MainWindow::hasView() const
{
    return gDev->isAnalogModel() || gDev->smpData->sampleCount() > 0;
}

void MainWindow::slotWaveViewRefresh(bool decRefresh)
{
    if (!hasView()) {
        return;
    }
    timeView->update();
    mainView->refreshWave();
    updatePosition();
    toolbar->showRatio(waveGen->ratioSasPix());
    if (gDev->smpData->sampleCount() > 0) {
        waveGen->setFrameAck();
    }
    if (decRefresh) {
        protocolResult->slotWaveMoved();
    }
}

void MainWindow::updatePosition()
{
    posiView->updatePosi(gDev->smpData->sampleCount(), waveGen->viewWidth(), waveGen->ratioSasPix(),
                         waveGen->viewStart());
}

void MainWindow::slotToolbarZoomChanged(QString str)
{
    if (str == QLatin1String("Trg")) {
        waveGen->zoomToTrigger();
    } else if (str == QLatin1String("Out")) {
        waveGen->zoomStepOut();
    } else if (str == QLatin1String("In")) {
        waveGen->zoomStepIn();
    } else {
        bool isNumber = false;
        const double ratio = str.toDouble(&isNumber);
        if (isNumber) {
            waveGen->zoomSetRatio(ratio);
        } else {
            waveGen->zoomFit();
        }
    }
}

void MainWindow::slotToolbarFrequChanged()
{
    waveGen->setSampleRateHz(gDev->smpFrequ());
}

void MainWindow::slotMouseZoomChanged(int flag, QPoint mouse)
{
    if (!hasView()) {
        return;
    }
    const int column = mouse.x() / uiScale();
    if (flag == 1) {
        waveGen->zoomInAt(column);
    } else if (flag == 2) {
        waveGen->zoomOutAt(column);
    }
}

void MainWindow::slotMouseDraged(int moveLenLogic)
{
    waveGen->setViewStart(waveGen->viewStart() - moveLenLogic * waveGen->ratioSasPix());
}

void MainWindow::slotPosiViewChanged(double posi)
{
    const auto total = double(gDev->smpData->sampleCount());
    const double start = total * posi;
    if (start < 0.0) {
        waveGen->setViewStart(0.0);
    } else {
        waveGen->setViewStart(std::min(start, total - waveGen->viewWidth() * waveGen->ratioSasPix()));
    }
}

void MainWindow::startCapture()
{
    if (m_session.mayStartCapture()) {
        toolbar->smpCtrl->beginProgress(); // before the run, whose failure hides it
        m_session.startCapture();
    }
}

void MainWindow::slotSmpStop()
{
    m_session.stopCapture();
}
