// The analyzers behind the main window: they follow its captures and its devices, and what they tell is shown.

#include "analyzer/AnalyzerManager.h"
#include "app/FileDialogs.h"
#include "app/MainWindow.h"
#include "controls/NoticeBox.h"
#include "device/DevBase.h"
#include "device/DeviceGlobals.h"
#include "measure/AnalyzerView.h"
#include "protocol/AnalyzerExport.h"
#include "protocol/DecodedWave.h"
#include "protocol/ProtocolResult.h"
#include "protocol/ProtocolSetting.h"
#include "settings/Language.h"
#include "wave/MainView.h"

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
    protocolResult = new ProtocolResult(*analyzerMgr, *waveGen);
    const auto askPath = [](QWidget *parent, int kind, const QString &ending) {
        return FileDialogs::askSavePath(parent, kind, QDateTime::currentDateTime(), ending);
    };
    analyzerExport = new AnalyzerExport(*analyzerMgr, askPath, this);
    connect(analyzerExport, &AnalyzerExport::fileTold, this, &MainWindow::showInStatus);
}

void MainWindow::buildAnalyzerPanel()
{
    m_decodedWave = std::make_unique<DecodedWave>(*analyzerMgr, [this] { mainView->slotUpdateAnalyzerDecoded(); });
    protocolSetting = new ProtocolSetting(analyzerMgr);
    protocolSetting->extendMenu = [this](QMenu &menu, int itemIndex) { analyzerExport->extendMenu(menu, itemIndex); };
    analyzerView->addSection(AnalyzerView::Analyzers, protocolSetting);
    analyzerView->addSection(AnalyzerView::Results, protocolResult); // the last: Tab walks in the order of adding
    connect(protocolResult, &ProtocolResult::settingsWanted, protocolSetting, &ProtocolSetting::slotEditWanted);
    connect(analyzerMgr, &AnalyzerManager::analyzerItemChanged, this, &MainWindow::showChannelLabels);
    connect(analyzerMgr, &AnalyzerManager::analyzerDecodedChanged, mainView, &MainView::slotUpdateAnalyzerDecoded);
    connect(protocolSetting, &ProtocolSetting::decodeAdvanced, mainView, &MainView::slotUpdateAnalyzerDecoded);
}

void MainWindow::showChannelLabels()
{
    const QStringList usage = analyzerMgr->channelUsage(-1);
    QVector<QPair<int, QString>> labels;
    for (int i = 0; i + 1 < usage.size(); i += 2) {
        labels.append({usage.at(i).toInt(), usage.at(i + 1)});
    }
    mainView->slotAnalyzerItemChanged(labels);
}

void MainWindow::tellOfVanished()
{
    QStringList names;
    for (const QString &name : analyzerMgr->notFound()) {
        if (!m_vanished.contains(name)) {
            m_vanished.insert(name);
            names.append(name);
        }
    }
    if (!names.isEmpty()) {
        showInStatus(::tr("Decoder not found:") + QLatin1Char(' ') + names.join(QStringLiteral(", ")));
    }
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
    protocolSetting->reload();
    tellOfVanished();
    analyzerMgr->loadFromConfig();
    // Direct: the decoders have left the last capture when the next one begins.
    connect(gDev, &DevBase::sigCaptureStarts, analyzerMgr, &AnalyzerManager::captureStarts, Qt::DirectConnection);
}

void MainWindow::letGoOfAnalyzers()
{
    analyzerMgr->setCapture(nullptr, 0);
}
