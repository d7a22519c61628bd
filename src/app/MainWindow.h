#pragma once

#include "update/UpdateSource.h"

#include <QPoint>
#include <QSet>
#include <QVector>
#include <QWidget>

#include <memory>

class AnalyzerExport;
class AnalyzerManager;
class AnalyzerView;
class CaptureHistory;
class CheckUpdate;
class DecodedWave;
class DevSetting;
class MainMenu;
class MainView;
class MyProgressDlg;
class PosiView;
class ProtocolResult;
class ProtocolSetting;
class QGridLayout;
class QLabel;
class QScrollArea;
class QShortcut;
class Session;
class TimeView;
class Toolbar;
class WaveDataGen;

/// The top-level widget: owns the panels and is where the session and the view meet.
///
/// It turns the session's reports into the progress dialogs, the title and the status line, tells the view when a
/// capture is ready, and brings everything in line with `gDev` when that has been replaced. Main thread.
class MainWindow : public QWidget {
    Q_OBJECT
public:
    /// @param session  not owned, outlives this
    /// @param updates  where newer versions are asked for; by default nowhere
    explicit MainWindow(Session &session, const UpdateSource &updates = {}, QWidget *parent = nullptr);
    ~MainWindow() override;

    /// True while the system looks for the host of the update service, which nothing can end.
    [[nodiscard]] bool isLookingUpHost() const;
    /// The captures that are kept, for the menu. Not owned, outlives this.
    void setHistory(CaptureHistory *history);

public slots:
    /// A report of the running capture: state, error, value (percent).
    void slotDevSmpStaShow(int sta, int err, int n);
    /// A report of an instrument's bring-up: state, error, value, see DevInit::sigInitSta().
    void slotDevInitStaShow(int sta, int err, int n);
    /// The user chooses another model, see Session::chooseModel().
    void slotDevPreConnect(int model);
    /// The device's store holds a new capture, or the data of a file: shows it from scratch.
    void slotSmpDataReady();
    /// The lines have changed: paints them. `decRefresh` asks also for the decoded results.
    void slotWaveViewRefresh(bool decRefresh);
    /// "All", "Trg", "Out", "In" or a number of samples per pixel; anything else shows all.
    void slotToolbarZoomChanged(QString str);
    /// Another sample rate has been chosen.
    void slotToolbarFrequChanged();
    /// `flag` 1 zooms in, 2 out, about the column under `mouse` (device pixels of the wave view).
    void slotMouseZoomChanged(int flag, QPoint mouse);
    /// The wave has been dragged to the right by so many logical pixels.
    void slotMouseDraged(int moveLenLogic);
    /// `posi` is the view's start as a share of the capture, 0 to 1.
    void slotPosiViewChanged(double posi);
    /// Asks the running capture to end; does not wait.
    void slotSmpStop();
    /// The configuration has been replaced, see Session::replaceConfig().
    void slotReplaceConfig();

protected:
    void timerEvent(QTimerEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    bool nativeEvent(const QByteArray &eventType, void *message, long *result) override;

private:
    void initWindow();
    void buildDialogs();
    void buildPanels();
    void buildAnalyzers();
    /// The list of decoded results, in the right-hand panel.
    void buildResults();
    /// The panel of the analyzers, and what they show on the waves.
    void buildAnalyzerPanel();
    /// Tells of stored analyzers whose plug-in is not there any more: once for each.
    void tellOfVanished();
    void showChannelLabels();
    /// Asks whether a decoder with which the program ended is to be tried again.
    void offerRetry(const QString &fileName);
    /// The analyzers look at the present device and its capture, or at none.
    void rebindAnalyzers();
    void letGoOfAnalyzers();
    void connectPanels();
    void connectAnalyzerView();
    void buildScrollAreas();
    void buildGrid();
    void buildShortcuts();
    /// Brings everything that looks at the device in line with `gDev`.
    void rebindDevice();
    /// Panels that are made anew take as long to be made as to be painted: in between other events have their turn.
    void paintInTheNextTurn();
    void showTitleAndState();
    /// Tells in the status line how a save or an export ended, until the state changes.
    void showInStatus(const QString &text);
    /// Tab walks the panels in the order in which they are read, and the controls of each in that panel's own order.
    void orderTabs();
    void connectSession();
    /// Looks for a newer version, unless the user or the build does not want it at the start.
    void buildUpdates(const UpdateSource &updates);
    /// The device object goes: nothing may read its capture any more.
    void letGoOfDevice();
    void updatePosition();
    void showModelTitle(bool connected);
    void showConnection(bool connected);
    /// Starts a capture, where the session lets one begin now.
    void startCapture();
    void showRunError(int sta, int err, int n);
    void showRunState(int sta, int n);
    /// Behind a capture that has ended without data: the analyzers decode what is in the store, which may be the last
    /// one.
    void decodeLastCapture();
    /// True when there is something that the view can zoom in and move through.
    [[nodiscard]] bool hasView() const;

    Session &m_session;
    AnalyzerManager *analyzerMgr = nullptr;
    WaveDataGen *waveGen = nullptr;
    QVector<QShortcut *> shortcuts;
    QGridLayout *grid = nullptr;
    QScrollArea *toolbarScroll = nullptr;
    QScrollArea *analyzerScroll = nullptr;
    MainMenu *mainMenu = nullptr;
    Toolbar *toolbar = nullptr;
    DevSetting *devSetting = nullptr;
    TimeView *timeView = nullptr;
    MainView *mainView = nullptr;
    PosiView *posiView = nullptr;
    QLabel *statusLabel = nullptr;
    AnalyzerView *analyzerView = nullptr;
    ProtocolResult *protocolResult = nullptr;
    AnalyzerExport *analyzerExport = nullptr;
    ProtocolSetting *protocolSetting = nullptr;
    std::unique_ptr<DecodedWave> m_decodedWave;
    QSet<QString> m_vanished; ///< file names that were told
    MyProgressDlg *smpDialog = nullptr;
    MyProgressDlg *connectDialog = nullptr;
    CheckUpdate *checkUpdate = nullptr;

    int m_startTimer = 0;
    bool m_startFile = true; ///< the file that was named at the start, if any, is still to be loaded
};
