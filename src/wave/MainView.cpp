#include "wave/MainView.h"

#include "controls/Look.h"
#include "device/DevBase.h"
#include "device/DeviceGlobals.h"
#include "settings/Config.h"
#include "wave/CursorBody.h"
#include "wave/DecodedSource.h"
#include "wave/ItemChnSidebar.h"
#include "wave/ItemWaveArrow.h"
#include "wave/ItemWaveBackground.h"
#include "wave/ItemWaveLine.h"
#include "wave/NextEdge.h"
#include "wave/WaveDataGen.h"
#include "wave/WaveView.h"

#include <QFrame>
#include <QGraphicsScene>
#include <QHBoxLayout>
#include <QMouseEvent>
#include <QScrollArea>
#include <QScrollBar>
#include <QShortcut>

MainView *gMainView = nullptr;

namespace {

constexpr int leastUnit = 42; ///< pixels at 96 dpi, as the one below
constexpr int mostUnit = 120;
constexpr int analogUnits = 8; ///< height of the analog area in units of a row

} // namespace

MainView::MainView(WaveDataGen *generator, QWidget *parent)
    : QWidget(parent),
      mainLayout(new QHBoxLayout(this)),
      sidebarArea(new QScrollArea(this)),
      sidebarFrame(new QFrame),
      scene(new QGraphicsScene(this)),
      waveArrow(new ItemWaveArrow),
      nextEdge(new NextEdge),
      waveGen(generator),
      freqUnits{QStringLiteral("Hz"), QStringLiteral("KHz"), QStringLiteral("MHz"), QStringLiteral("GHz")},
      timeUnits{QStringLiteral("ps"), QStringLiteral("ns"), QStringLiteral("us"), QStringLiteral("ms"),
                QStringLiteral("s")}
{
    gMainView = this;
    buildViews();
    connectWaveView();
    connectScrolling();
    for (const int key : {Qt::Key_Up, Qt::Key_Plus, Qt::Key_Equal}) {
        addShortcut(key, &MainView::slotShortCutZoomIn);
    }
    for (const int key : {Qt::Key_Down, Qt::Key_Minus}) {
        addShortcut(key, &MainView::slotShortCutZoomOut);
    }
    addShortcut(Qt::Key_Home, &MainView::slotShortCutMovToBeg);
    addShortcut(Qt::Key_End, &MainView::slotShortCutMovToEnd);
    for (int key = Qt::Key_0; key <= Qt::Key_9; ++key) {
        addShortcut(key, &MainView::slotShortCutTimeMarker);
    }
}

MainView::~MainView()
{
    m_drag = {};
    qDeleteAll(chnSidebars); // as children of this widget they would go, and tell of it, when this is no view any more
    gMainView = nullptr;
}

void MainView::buildViews()
{
    sidebarArea->setWidget(sidebarFrame);
    sidebarArea->setWidgetResizable(true);
    sidebarArea->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    sidebarArea->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    sidebarArea->setFrameShape(QFrame::NoFrame);
    sidebarArea->setFocusPolicy(Qt::NoFocus); // the rows are scrolled by the bar over the waves
    sidebarArea->setFixedWidth(dp(ItemChnSidebar::columnWidth));
    sidebarArea->setStyleSheet(QStringLiteral("QScrollArea{background-color:%1;border:0;}").arg(gGreys[7].name()));
    sidebarFrame->setObjectName(QStringLiteral("sidebarFrame"));
    sidebarFrame->setStyleSheet(QStringLiteral("#sidebarFrame{background-color:%1;border:0;}").arg(gGreys[7].name()));

    scene->setBackgroundBrush(gGreys[7]);
    scene->setItemIndexMethod(QGraphicsScene::NoIndex); // few items, and their geometry changes all at once
    scene->addItem(waveArrow);
    waveArrow->hide();
    scene->addItem(nextEdge);
    waveView = new WaveView(scene, this);

    mainLayout->setContentsMargins(0, 0, 0, 0);
    mainLayout->setSpacing(0);
    mainLayout->addWidget(sidebarArea, 0);
    mainLayout->addWidget(waveView, 1);
}

void MainView::connectWaveView()
{
    connect(waveView, &WaveView::wheelChanged, this, &MainView::slotWheelChanged);
    connect(waveView, &WaveView::mousePressed, this, &MainView::slotMousePressed);
    connect(waveView, &WaveView::mouseReleased, this, &MainView::slotMouseReleased);
    connect(waveView, &WaveView::mouseMoved, this, &MainView::slotMouseMoved);
    connect(waveView, &WaveView::mouseLeave, this, &MainView::slotMouseLeave);
}

void MainView::connectScrolling()
{
    QScrollBar *sidebars = sidebarArea->verticalScrollBar();
    QScrollBar *waves = waveView->verticalScrollBar();
    connect(sidebars, &QScrollBar::rangeChanged, this, &MainView::slotSidebarVerRangChange);
    connect(sidebars, &QScrollBar::valueChanged, waves, &QScrollBar::setValue);
    connect(waves, &QScrollBar::valueChanged, sidebars, &QScrollBar::setValue);
}

void MainView::addShortcut(int key, void (MainView::*slot)())
{
    auto *shortcut = new QShortcut(QKeySequence(key), this);
    shortcut->setAutoRepeat(false);
    connect(shortcut, &QShortcut::activated, this, slot);
    shortcuts.append(shortcut);
}

void MainView::rebuildChannels()
{
    removeChannels();
    const int count = gDev->chnEnable.size();
    const QVector<int> rows = chnShowIndexGet(count);
    const QVector<int> multipliers = chnShowMultipGet(count);
    for (int chn = 0; chn < count; ++chn) {
        buildChannel(chn, rows[chn], validMultiplier(multipliers[chn]));
    }
    orderTabs();
    layoutRows();
}

void MainView::removeChannels()
{
    m_drag = {};
    hideHover();
    nextEdge->hide();
    removeMarkers();
    qDeleteAll(chnSidebars);
    qDeleteAll(waveBackgrounds);
    qDeleteAll(waveLines);
    chnSidebars.clear();
    waveBackgrounds.clear();
    waveLines.clear();
}

void MainView::buildChannel(int chn, int row, int multiplier)
{
    auto *sidebar = new ItemChnSidebar(chn, row, multiplier, sidebarFrame);
    sidebar->setChnName(chnShowNameGet(chn));
    if (gDecodedSource != nullptr) {
        sidebar->setAnalyzerLabel(gDecodedSource->chnLabel(chn));
    }
    sidebar->setTrigCode(gDev->chnTrig.value(chn));
    connectSidebar(sidebar);
    chnSidebars.append(sidebar);

    waveBackgrounds.append(new ItemWaveBackground(chn));
    waveLines.append(new ItemWaveLine(chn, waveGen));
    scene->addItem(waveBackgrounds.last());
    scene->addItem(waveLines.last());
}

std::vector<ChannelRow> MainView::channelRows() const
{
    std::vector<ChannelRow> rows;
    for (const ItemChnSidebar *sidebar : chnSidebars) {
        rows.push_back({sidebar->row(), sidebar->multiplier(), gDev->chnEnable.value(sidebar->channel())});
    }
    return rows;
}

void MainView::layoutRows()
{
    const int aUnits = gDev->aChnEnable.isEmpty() ? 0 : analogUnits;
    m_chns = channelRows();
    m_rows = layoutChannels(m_chns, aUnits, sidebarArea->height(), {dp(leastUnit), dp(mostUnit)});
    for (int chn = 0; chn < chnSidebars.size(); ++chn) {
        placeRow(chn);
    }
    sidebarFrame->setFixedHeight(m_rows.totalHeight);
    scene->setSceneRect(0, 0, waveView->width(), m_rows.totalHeight);
    for (CursorBody *marker : timeMarkers) {
        marker->setColumnHeight(m_rows.totalHeight);
    }
    nextEdge->hide(); // its row may have moved
    setTimeWidth();
    forgetHover();
    repeatHover();
}

void MainView::placeRow(int chn)
{
    const auto row = std::size_t(chnSidebars[chn]->row());
    const int top = m_rows.tops[row];
    const QSize size(waveView->width(), m_rows.heights[row]);
    chnSidebars[chn]->setGeometry(0, top, dp(ItemChnSidebar::columnWidth), size.height());
    chnSidebars[chn]->setVisible(size.height() > 0); // what has no place must not take the focus
    waveBackgrounds[chn]->setSize(size);
    waveBackgrounds[chn]->setPos(0, top);
    waveLines[chn]->setSize(size);
    waveLines[chn]->setPos(0, top);
    waveLines[chn]->update(); // the line is new even where the row stays
}

void MainView::setTimeWidth()
{
    // An analog model keeps its time span from one width to the next: the arbitrary width of a widget that has never
    // been shown must not be where it begins.
    if (!m_sized && !gDev->aChnEnable.isEmpty()) {
        return;
    }
    const int oldWidth = waveGen->viewWidth();
    waveGen->setViewWidth(waveView->width() / uiScale());
    if (gDev->aChnEnable.isEmpty()) {
        waveGen->updateLines();
    } else {
        setAnalogTimeWidth(oldWidth, waveView->width());
    }
}

void MainView::setAnalogTimeWidth(int oldWidth, int deviceWidth)
{
    // The seen time span is kept, reckoned with the device width also on a scaled display.
    const double oldRatio = waveGen->ratioSasPix();
    const bool keeps = oldWidth != 0 && oldRatio != 0.0 && deviceWidth > 0;
    waveGen->setRatioKeepStart(keeps ? oldWidth * oldRatio / deviceWidth : 1.0);
}

void MainView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    m_sized = true;
    layoutRows();
    emit timeWidthChanged();
}

void MainView::refreshWave()
{
    slotUpdateAnalyzerDecoded();
    repeatHover();
    repositionMarkers();
    if (pulseInfoDirty) {
        pulseInfoDirty = false;
        slotPulseMeasureInfoChanged();
    }
}

void MainView::clearForNewData()
{
    hideHover();
    nextEdge->hide();
    takeMarkersOff();
    pulseInfoDirty = true;
    if (gDev->smpData->sampleCount() < 1) {
        slotPulseMeasureInfoChanged(); // there is nothing to see, so no refresh follows
    }
}

void MainView::slotChnEnaChanged()
{
    slotChnTrigEdgeChanged(); // a channel that is off has lost its trigger
    layoutRows();
    slotPulseMeasureInfoChanged();
}

void MainView::slotAnalyzerItemChanged(const QVector<QPair<int, QString>> &labels)
{
    if (labels.size() == chnSidebars.size()) {
        for (const auto &[chn, label] : labels) {
            if (chn >= 0 && chn < chnSidebars.size()) {
                chnSidebars[chn]->setAnalyzerLabel(label);
            }
        }
    }
    slotUpdateAnalyzerDecoded();
}

void MainView::slotUpdateAnalyzerDecoded()
{
    for (ItemWaveLine *line : waveLines) {
        line->update();
    }
}

void MainView::slotSidebarVerRangChange(int min, int max)
{
    QScrollBar *waves = waveView->verticalScrollBar();
    waves->setPageStep(sidebarArea->verticalScrollBar()->pageStep());
    waves->setRange(min, max);
}
