#include "app/MainWindow.h"

#include "app/MainMenu.h"
#include "app/ViewPicture.h"
#include "controls/Look.h"
#include "controls/MyProgressDlg.h"
#include "controls/WindowPlace.h"
#include "device/DevBase.h"
#include "device/DeviceGlobals.h"
#include "measure/AnalyzerView.h"
#include "panels/DevSetting.h"
#include "panels/Toolbar.h"
#include "protocol/DecodedWave.h"
#include "protocol/ProtocolResult.h"
#include "session/Session.h"
#include "settings/Config.h"
#include "settings/Language.h"
#include "update/CheckUpdate.h"
#include "wave/MainView.h"
#include "wave/PosiView.h"
#include "wave/TimeView.h"
#include "wave/WaveDataGen.h"

#include <QApplication>
#include <QCloseEvent>
#include <QGridLayout>
#include <QGuiApplication>
#include <QIcon>
#include <QLabel>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QShortcut>
#include <QWheelEvent>

#include <initializer_list>

namespace {

constexpr int startDelayMs = 200;

/// A bar that may be wider than the window: the wheel moves it sideways.
class BarScroll : public QScrollArea {
public:
    using QScrollArea::QScrollArea;

protected:
    void wheelEvent(QWheelEvent *event) override
    {
        const QPoint delta = event->angleDelta();
        horizontalScrollBar()->setValue(horizontalScrollBar()->value() - delta.x() - delta.y());
        event->accept();
    }
};

/// Lets a scroll area go without bars: what does not fit is reached by the wheel, and follows the focus.
QScrollArea *barelessScroll(QScrollArea *area, QWidget *content)
{
    area->setWidget(content);
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setFocusPolicy(Qt::NoFocus);
    return area;
}

} // namespace

MainWindow::MainWindow(Session &session, const UpdateSource &updates, QWidget *parent)
    : QWidget(parent), m_session(session)
{
    initWindow();
    buildDialogs();
    buildPanels();
    connectPanels();
    connectAnalyzerView();
    buildAnalyzerPanel();
    buildScrollAreas();
    buildGrid();
    buildShortcuts();
    connectSession();
    rebindDevice();
    m_session.watchDevices(std::uintptr_t(winId()));
    buildUpdates(updates);
    m_startTimer = startTimer(startDelayMs);
}

MainWindow::~MainWindow()
{
    // The generator's worker reads the device's capture, which may go away before this window's children do.
    waveGen->setDataSource(nullptr);
    m_session.endCaptures(); // the analyzers drive simulated ones
    gSimulationSource = nullptr;
    delete protocolResult; // its thread reads what the analyzers own
    letGoOfAnalyzers();
}

void MainWindow::initWindow()
{
    setWindowIcon(QIcon(QStringLiteral(":/res/Logo.ico")));
    setMinimumSize(dp(800), dp(240));
    setGeometry(windowPositionGet(QGuiApplication::primaryScreen()->availableGeometry()));
    if (globalGet(QStringLiteral("windowMaximized")).toInt() != 0) {
        setWindowState(Qt::WindowMaximized);
    }
    setAcceptDrops(true);
    setFocusPolicy(Qt::ClickFocus);
    QPalette colours = palette();
    colours.setColor(QPalette::Window, gGreys.at(5));
    setPalette(colours);
    setAutoFillBackground(true);
}

void MainWindow::buildDialogs()
{
    connectDialog = new MyProgressDlg(::tr("Device connect"), QString(), ::tr("Close"), this);
    connectDialog->setObjectName(QStringLiteral("connectDialog"));
    smpDialog = new MyProgressDlg(::tr("Sampling"), QString(), ::tr("Stop"), this);
    smpDialog->setObjectName(QStringLiteral("smpDialog"));
    connect(smpDialog, &QDialog::rejected, this, &MainWindow::slotSmpStop);
}

void MainWindow::buildPanels()
{
    buildAnalyzers();
    waveGen = new WaveDataGen(this);
    toolbar = new Toolbar(this);
    mainMenu = new MainMenu(m_session, this);
    devSetting = new DevSetting(this);
    timeView = new TimeView(waveGen, this);
    posiView = new PosiView(this);
    analyzerView = new AnalyzerView(*gDev, this);
    buildResults();
    mainView = new MainView(waveGen, this);
    statusLabel = new QLabel(::tr("Device unconnected"), this);
    statusLabel->setFixedHeight(dp(20));
    statusLabel->setStyleSheet(
        QStringLiteral("background-color:#2f2f2f;border:%1px solid #7f7f7f;color:#f7f7f7;").arg(dp(1)));
    statusLabel->setAccessibleDescription(::tr("Device state")); // its name is the text that it shows
}

void MainWindow::connectPanels()
{
    connect(toolbar, &Toolbar::zoomValued, this, &MainWindow::slotToolbarZoomChanged);
    connect(toolbar, &Toolbar::frequViewChanged, this, &MainWindow::slotToolbarFrequChanged);
    connect(toolbar, &Toolbar::startAsked, this, &MainWindow::startCapture);
    connect(toolbar, &Toolbar::stopAsked, this, &MainWindow::slotSmpStop);
    mainMenu->shownPairs = [this] { return mainView->shownPairs(); };
    mainMenu->viewPicture = [this] { return ViewPicture(timeView, mainView); };
    connect(mainView, &MainView::pictureWanted, mainMenu, &MainMenu::copyPicture);
    connect(mainMenu, &MainMenu::openSettingFile, this, &MainWindow::slotReplaceConfig);
    connect(mainMenu, &MainMenu::openFileGone, this, &MainWindow::showTitleAndState);
    connect(mainMenu, &MainMenu::fileTold, this, &MainWindow::showInStatus);
    connect(devSetting, &DevSetting::simDevModelChanged, this, &MainWindow::slotDevPreConnect);
    connect(mainView, &MainView::zoomChangedByMouse, this, &MainWindow::slotMouseZoomChanged);
    connect(mainView, &MainView::mouseDraged, this, &MainWindow::slotMouseDraged);
    connect(mainView, &MainView::timeWidthChanged, this, &MainWindow::updatePosition);
    connect(mainView, &MainView::timeMarkBodyChanged, timeView, &TimeView::slotMainViewMarkerChanged);
    connect(mainView, &MainView::pointerMoved, timeView, &TimeView::slotPointerMoved);
    connect(timeView, &TimeView::timeMarkerChanged, mainView, &MainView::slotTimeViewMarkerChanged);
    connect(posiView, &PosiView::sigPosiChanged, this, &MainWindow::slotPosiViewChanged);
    connect(waveGen, &WaveDataGen::sigViewRefresh, this, &MainWindow::slotWaveViewRefresh);
}

void MainWindow::connectAnalyzerView()
{
    connect(analyzerView, &AnalyzerView::timingMarkerPairClicked, mainView, &MainView::slotTimingMarkerPairClicked);
    connect(analyzerView, &AnalyzerView::pulseMeasureChanged, mainView, &MainView::slotPulseMeasureInfoChanged);
    connect(mainView, &MainView::timMarkPairChanged, analyzerView, &AnalyzerView::slotTimMarkPairChanged);
    connect(mainView, &MainView::pulseMeasureChangedbySmpDone, analyzerView, &AnalyzerView::slotPulseMeasureChangedAll);
    connect(mainView, &MainView::pulseMeasureChangedbyTimeMarker, analyzerView,
            &AnalyzerView::slotPulseMeasureChangedbyTimeMarker);
    connect(mainView, &MainView::logMeasureChanged, analyzerView, &AnalyzerView::slotLogMeasureChanged);
    connect(analyzerView, &AnalyzerView::voltageMarkerClicked, mainView, &MainView::slotVoltageMarkerClicked);
    connect(analyzerView, &AnalyzerView::voltageChnChanged, mainView, &MainView::slotVoltageAChnChanged);
    connect(mainView, &MainView::voltageMarkerValueChanged, analyzerView, &AnalyzerView::slotVoltageMarkerValueChanged);
    connect(waveGen, &WaveDataGen::sigParameterRefreshAch, analyzerView, &AnalyzerView::slotParameterRefreshAch);
}

void MainWindow::buildScrollAreas()
{
    toolbarScroll = barelessScroll(new BarScroll(this), toolbar);
    toolbarScroll->setFixedHeight(dp(48));
    analyzerScroll = barelessScroll(new QScrollArea(this), analyzerView);
    analyzerScroll->setFixedWidth(dp(240));
    // An area follows the focus only while Tab goes round in it, not when the focus comes in from outside.
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget *, QWidget *now) {
        if (now != nullptr && analyzerView->isAncestorOf(now)) {
            analyzerScroll->ensureWidgetVisible(now, 0, dp(4));
        } else if (now != nullptr && toolbar->isAncestorOf(now)) {
            // The whole of it: of a field, ensureWidgetVisible() looks at the cursor only.
            const QPoint middle = now->mapTo(toolbar, now->rect().center());
            toolbarScroll->ensureVisible(middle.x(), middle.y(), now->width() / 2 + dp(4), 0);
        }
    });
}

void MainWindow::buildGrid()
{
    grid = new QGridLayout(this);
    grid->setContentsMargins(dp(2), 0, dp(2), dp(2));
    grid->setSpacing(0);
    grid->addWidget(toolbarScroll, 0, 0, 1, 3);
    grid->addWidget(mainMenu, 0, 3);
    grid->addWidget(devSetting, 1, 0);
    grid->addWidget(timeView, 1, 1);
    grid->addWidget(mainView, 2, 0, 1, 2);
    grid->addWidget(statusLabel, 3, 0);
    grid->addWidget(posiView, 3, 1);
    grid->addWidget(analyzerScroll, 1, 2, 3, 2);
    grid->setRowStretch(2, 1);
    grid->setColumnStretch(1, 1);
}

void MainWindow::buildShortcuts()
{
    const auto add = [this](int key) {
        auto *shortcut = new QShortcut(QKeySequence(key), this);
        shortcut->setAutoRepeat(false);
        shortcuts.append(shortcut);
        return shortcut;
    };
    QShortcut *open = add(int(Qt::CTRL) | Qt::Key_O);
    QShortcut *save = add(int(Qt::CTRL) | Qt::Key_S);
    connect(open, &QShortcut::activated, mainMenu, &MainMenu::actOpenFile);
    connect(save, &QShortcut::activated, mainMenu, &MainMenu::actSaveData);
    connect(add(Qt::Key_F5), &QShortcut::activated, toolbar, &Toolbar::slotShortcutF5);
    // A key of two owners reaches neither: the menu's actions have these two once they exist.
    connect(mainMenu, &MainMenu::shortcutsTaken, this, [open, save] {
        open->setEnabled(false);
        save->setEnabled(false);
    });
}

void MainWindow::orderTabs()
{
    QVector<QWidget *> stops;
    for (const QWidget *panel :
         std::initializer_list<QWidget *>{toolbar, mainMenu, devSetting, timeView, mainView, posiView, analyzerView}) {
        for (QWidget *widget = nextInFocusChain(); widget != this; widget = widget->nextInFocusChain()) {
            const bool isPart = widget == panel || panel->isAncestorOf(widget);
            if (isPart && (widget->focusPolicy() & Qt::TabFocus) != 0) {
                stops.append(widget);
            }
        }
    }
    for (int i = 1; i < stops.size(); ++i) {
        setTabOrder(stops.at(i - 1), stops.at(i));
    }
}

void MainWindow::buildUpdates(const UpdateSource &updates)
{
    checkUpdate = new CheckUpdate(updates, this);
    checkUpdate->model = [] { return gDev->model; };
    mainMenu->checksAtStart = checkUpdate->canCheckAtStart();
    connect(mainMenu, &MainMenu::checkUpdateWanted, checkUpdate, &CheckUpdate::actCheckUpdate);
    if (globalGet(QStringLiteral("disAutoUpdate")).toInt() == 0) {
        checkUpdate->checkAtStart();
    }
}

bool MainWindow::isLookingUpHost() const
{
    return checkUpdate->isLookingUp();
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    gDev->shutDown();
    if (!isMaximized()) {
        windowPositionSet(geometry());
    }
    globalSet(QStringLiteral("windowMaximized"), QString::number(isMaximized() ? 1 : 0));
    globalSet(QStringLiteral("ratioSasPix"), QString::number(waveGen->ratioSasPix(), 'g', 6));
    smpDialog->hide();
    connectDialog->hide();
    checkUpdate->stop();
    QWidget::closeEvent(event);
}

void MainWindow::keyPressEvent(QKeyEvent *event)
{
    QWidget::keyPressEvent(event);
    if (event->key() == Qt::Key_Shift) {
        mainView->shiftHeld = true;
    } else if (event->key() == Qt::Key_Escape) { // nobody with the focus had a use for it
        mainView->dropMarker();
    }
}

void MainWindow::keyReleaseEvent(QKeyEvent *event)
{
    QWidget::keyReleaseEvent(event);
    if (event->key() == Qt::Key_Shift) {
        mainView->shiftHeld = false;
    }
}
