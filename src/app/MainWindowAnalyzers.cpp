// The analyzers behind the main window: they follow its captures and its devices, and what they tell is shown.

#include "analyzer/AnalyzerManager.h"
#include "app/FileDialogs.h"
#include "app/MainWindow.h"
#include "controls/NoticeBox.h"
#include "device/DevBase.h"
#include "device/DeviceGlobals.h"
#include "measure/AnalyzerView.h"
#include "protocol/AnalyzerExport.h"
#include "protocol/ProtocolResult.h"
#include "settings/Language.h"

#include <QDateTime>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

void MainWindow::buildAnalyzers()
{
    AnalyzerHost host;
    host.model = [] { return gDev->model; };
    host.channelCount = [] { return int(gDev->chnEnable.size()); };
    host.isChannelEnabled = [](int channel) { return gDev->chnEnable.value(channel); };
    analyzerMgr = new AnalyzerManager(host, PluginFolder::standardFolders(), PluginFolder::standardGuardFolder(), this);
    gSimulationSource = &analyzerMgr->simulation();
    connect(analyzerMgr, &AnalyzerManager::analyzerFailed, this,
            [this](const QString &name, const QString &what) { showInStatus(name + QStringLiteral(": ") + what); });
    for (const PluginFolder::Refusal &refusal : analyzerMgr->refusals()) {
        if (refusal.passedOver) {
            QTimer::singleShot(0, this, [this, name = refusal.fileName] { offerRetry(name); });
        }
    }
}

void MainWindow::buildResults()
{
    protocolResult = new ProtocolResult(*analyzerMgr, *waveGen, analyzerView);
    analyzerView->addSection(AnalyzerView::Results, protocolResult);
    const auto askPath = [](QWidget *parent, int kind) {
        return FileDialogs::askSavePath(parent, kind, QDateTime::currentDateTime());
    };
    analyzerExport = new AnalyzerExport(*analyzerMgr, askPath, this);
    connect(analyzerExport, &AnalyzerExport::fileTold, this, &MainWindow::showInStatus);
}

void MainWindow::offerRetry(const QString &fileName)
{
    auto *box = new QMessageBox(QMessageBox::Warning, ::tr("An error occurred"),
                                ::tr("The program ended while this decoder was tried. It is passed over:") +
                                    QLatin1Char('\n') + fileName,
                                QMessageBox::NoButton, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    const QPushButton *again = box->addButton(::tr("Try again at the next start"), QMessageBox::AcceptRole);
    box->addButton(::tr("Close"), QMessageBox::RejectRole);
    connect(again, &QPushButton::clicked, this, [this, fileName] { analyzerMgr->retryPlugin(fileName); });
    fitNotice(*box);
    box->open(); // the program goes on behind it
}

void MainWindow::rebindAnalyzers()
{
    protocolResult->clear();
    analyzerMgr->setCapture(gDev->smpData.get(), std::uint32_t(gDev->model));
    analyzerMgr->loadFromConfig();
    // Direct: the decoders have left the last capture when the next one begins.
    connect(gDev, &DevBase::sigCaptureStarts, analyzerMgr, &AnalyzerManager::captureStarts, Qt::DirectConnection);
}

void MainWindow::letGoOfAnalyzers()
{
    analyzerMgr->setCapture(nullptr, 0);
}
