#include "wave/MainView.h"

#include "controls/Look.h"
#include "controls/MyScrollbar.h"
#include "settings/Language.h"
#include "wave/AChnParameterSet.h"
#include "wave/AnalogArea.h"
#include "wave/EdgeJump.h"
#include "wave/ItemChnSidebar.h"
#include "wave/LabelMove.h"
#include "wave/MarkerChange.h"
#include "wave/PulsePointer.h"
#include "wave/PulseRequests.h"
#include "wave/RowColumn.h"
#include "wave/SeenTransitions.h"
#include "wave/VoltageBoard.h"
#include "wave/WaveDataGen.h"
#include "wave/WaveGestures.h"
#include "wave/WaveKeys.h"
#include "wave/WaveView.h"
#include "wave/ZoomFlag.h"

#include <QAction>
#include <QFrame>
#include <QGraphicsScene>
#include <QHBoxLayout>
#include <QMouseEvent>
#include <QScrollBar>

MainView *gMainView = nullptr;

MainView::MainView(WaveDataGen *generator, QWidget *parent)
    : QWidget(parent),
      mainLayout(new QHBoxLayout(this)),
      scene(new QGraphicsScene(this)),
      waveGen(generator),
      m_rows(new RowColumn(*scene, *generator, this)),
      m_analog(new AnalogArea(*scene, *generator, m_rows->frame(), this)),
      waveView(new WaveView(scene, this)), // after the rows, whose scroll range it follows
      m_markers(new MarkerBoard(*scene, *generator, this)),
      m_voltages(new VoltageBoard(*scene, this)),
      m_pulse(new PulsePointer(*scene, *generator, this)),
      m_edges(new EdgeJump(*scene, *generator, this)),
      m_gestures(new WaveGestures(parts(), this))
{
    gMainView = this;
    buildViews();
    connectWaveView();
    connectScrolling();
    connectParts();
    connectVoltages();
    connectKeys();
}

MainView::~MainView()
{
    waveView->groundOfRows = nullptr;
    waveView->hint = nullptr;
    delete m_analog; // which stands in the rows' column
    delete m_rows;   // as a child of this widget it would go, and tell of it, when this is no view any more
    gMainView = nullptr;
}

WaveParts MainView::parts() const
{
    return {*waveView, *m_rows, *m_markers, *m_voltages, *m_pulse, *m_edges, *waveGen};
}

void MainView::buildViews()
{
    scene->setBackgroundBrush(gGreys[7]);
    waveView->hint = [this] {
        const bool isEmpty = waveGen->sampleCount() < 1;
        return isEmpty ? ::tr("Press F5 to capture, or open a file with Ctrl+O.") : QString();
    };
    waveView->groundOfRows = [this] { return m_rows->ground(); };
    scene->setItemIndexMethod(QGraphicsScene::NoIndex); // few items, and their geometry changes all at once
    mainLayout->setContentsMargins(0, 0, 0, 0);
    mainLayout->setSpacing(0);
    mainLayout->addWidget(m_rows, 0);
    mainLayout->addWidget(waveView, 1);
}

void MainView::connectWaveView()
{
    connect(waveView, &WaveView::wheelChanged, this, &MainView::slotWheelChanged);
    connect(waveView, &WaveView::wheelPans, this, [this](int flag) { m_gestures->pan(-flag); });
    connect(waveView, &WaveView::mousePressed, this, &MainView::slotMousePressed);
    connect(waveView, &WaveView::mouseReleased, this, &MainView::slotMouseReleased);
    connect(waveView, &WaveView::mouseMoved, this, &MainView::slotMouseMoved);
    connect(waveView, &WaveView::mouseLeave, this, &MainView::slotMouseLeave);
}

void MainView::connectScrolling()
{
    QScrollBar *sidebars = m_rows->verticalScrollBar();
    QScrollBar *waves = waveView->verticalScrollBar();
    connect(sidebars, &QScrollBar::rangeChanged, this, &MainView::slotSidebarVerRangChange);
    connect(sidebars, &QScrollBar::valueChanged, waves, &QScrollBar::setValue);
    connect(waves, &QScrollBar::valueChanged, sidebars, &QScrollBar::setValue);
}

void MainView::connectParts()
{
    connect(m_rows, &RowColumn::rowMade, this, &MainView::connectSidebar);
    connect(m_rows, &RowColumn::heightsChanged, this, &MainView::layoutRows);
    connect(m_rows, &RowColumn::rowsMoved, this, &MainView::rowsMoved);
    connect(m_rows, &RowColumn::tabOrderChanged, this, &MainView::orderTabs);
    connect(m_analog, &AnalogArea::chnSetChangedACH, this, &MainView::slotChnSetChangedACH);
    connect(m_analog, &AnalogArea::reachedByKey, m_rows,
            [this](QWidget *control) { m_rows->ensureWidgetVisible(control, 0, 0); });
    connect(m_markers, &MarkerBoard::timMarkPairChanged, this, &MainView::timMarkPairChanged);
    connect(m_markers, &MarkerBoard::timeMarkBodyChanged, this, &MainView::timeMarkBodyChanged);
    connect(m_markers, &MarkerBoard::pairChanged, this, &MainView::refreshPulsesOfPair);
    connect(m_markers, &MarkerBoard::pickedUp, m_edges, &EdgeJump::hide);
    connect(m_pulse, &PulsePointer::logMeasureChanged, this, &MainView::logMeasureChanged);
    connect(m_gestures, &WaveGestures::zoomChangedByMouse, this, &MainView::zoomChangedByMouse);
    connect(m_gestures, &WaveGestures::pointerMoved, this, &MainView::pointerMoved);
    connect(m_gestures, &WaveGestures::mouseDraged, this, &MainView::mouseDraged);
}

void MainView::connectKeys()
{
    const auto *keys = new WaveKeys(parts(), *m_gestures, this);
    connect(keys, &WaveKeys::zoomChangedByMouse, this, &MainView::zoomChangedByMouse);
    connect(keys, &WaveKeys::pictureWanted, this, &MainView::pictureWanted);
}

void MainView::connectVoltages()
{
    connect(m_voltages, &VoltageBoard::valuesChanged, this, &MainView::voltageMarkerValueChanged);
    connect(m_voltages, &VoltageBoard::followingChanged, m_edges, &EdgeJump::hide);
    m_voltages->scaleOf = [this](int chn) { return AChnScale{m_analog->zeroY(chn), m_analog->fullScaleMv(chn)}; };
    connect(this, &MainView::aChnScaleChanged, m_voltages, &VoltageBoard::scaleChanged);
}

void MainView::connectSidebar(ItemChnSidebar *sidebar)
{
    connect(sidebar, &ItemChnSidebar::trigEdgeChanged, this, &MainView::slotChnTrigEdgeChanged);
    connect(sidebar, &ItemChnSidebar::trigerMenu, this, &MainView::slotChnTrigerMenu);
    connect(sidebar->handle(), &LabelMove::channelMoveCallback, this, &MainView::slotChnMove);
    connect(sidebar->handle(), &LabelMove::moveByKey, m_rows, &RowColumn::moveByKey);
}

// ---- rows

void MainView::rebuildChannels(DevBase &device)
{
    m_pulse->hide();
    m_edges->hide();
    m_markers->clear();
    m_analog->rebuild(device);
    m_rows->rebuild(device);
    m_voltages->rebuild(m_rows->isAnalog());
    layoutRows();
}

void MainView::layoutRows()
{
    m_rows->lay(waveView->width());
    m_analog->lay({waveView->width(), m_rows->analogHeight()});
    scene->setSceneRect(0, 0, waveView->width(), m_rows->totalHeight());
    m_markers->setArea({waveView->width(), m_rows->totalHeight()});
    m_voltages->setArea({waveView->width(), m_rows->analogHeight()});
    setTimeWidth();
    rowsMoved();
}

void MainView::rowsMoved()
{
    m_edges->hide(); // its row may be another now
    m_pulse->forget();
    m_gestures->pointAgain();
}

void MainView::setTimeWidth()
{
    // An analog model keeps its time span from one width to the next: the arbitrary width of a widget that has never
    // been shown must not be where it begins.
    if (!m_sized && m_rows->isAnalog()) {
        return;
    }
    const int oldWidth = waveGen->viewWidth();
    waveGen->setViewWidth(waveView->width() / uiScale());
    if (m_rows->isAnalog()) {
        setAnalogTimeWidth(oldWidth);
    } else {
        waveGen->updateLines();
    }
}

void MainView::setAnalogTimeWidth(int oldWidth)
{
    const double oldRatio = waveGen->ratioSasPix();
    const int width = waveGen->viewWidth();
    if (oldWidth == width && oldRatio != 0.0) {
        waveGen->updateLines(); // the heights have changed, not the time span
        return;
    }
    const bool keeps = oldWidth != 0 && oldRatio != 0.0 && width > 0;
    waveGen->setRatioKeepStart(keeps ? oldWidth * oldRatio / width : 1.0);
}

void MainView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    m_sized = true;
    layoutRows();
    emit timeWidthChanged();
}

void MainView::orderTabs(QVector<QWidget *> stops)
{
    stops = m_analog->tabStops() + stops;
    stops.append(waveView->findChild<MyScrollbar *>());
    for (int i = 1; i < stops.size(); ++i) {
        setTabOrder(stops[i - 1], stops[i]);
    }
}

void MainView::slotChnEnaChanged()
{
    slotChnTrigEdgeChanged(); // a channel that is off has lost its trigger
    layoutRows();
    slotPulseMeasureInfoChanged();
}

void MainView::slotChnTrigEdgeChanged()
{
    m_rows->showTriggers();
    m_analog->showTriggers();
}

void MainView::slotChnSetChangedACH(int type, int id, int value)
{
    if (type == aChnChange::trigger) {
        m_rows->showTriggers();
        return;
    }
    m_analog->take(type, id, value);
    if (type == aChnChange::fullScale || type == aChnChange::zeroLevel) {
        emit aChnScaleChanged(id);
    }
}

void MainView::slotChnTrigerMenu(QAction *action)
{
    m_rows->chooseHeight(qobject_cast<ItemChnSidebar *>(sender()), action->data().toInt());
}

void MainView::slotChnMove(int mouseFlag, int movedPhyIndex, int offsetY)
{
    m_rows->dragBy(mouseFlag, movedPhyIndex, offsetY);
}

void MainView::slotAnalyzerItemChanged(const QVector<QPair<int, QString>> &labels)
{
    if (labels.size() == m_rows->count()) {
        m_rows->showLabels(labels);
    }
    slotUpdateAnalyzerDecoded();
}

void MainView::slotUpdateAnalyzerDecoded()
{
    m_rows->repaintLines();
}

void MainView::slotSidebarVerRangChange(int min, int max)
{
    QScrollBar *waves = waveView->verticalScrollBar();
    waves->setPageStep(m_rows->verticalScrollBar()->pageStep());
    waves->setRange(min, max);
}

// ---- captures

void MainView::refreshWave()
{
    slotUpdateAnalyzerDecoded();
    m_gestures->pointAgain();
    m_markers->reposition();
    if (pulseInfoDirty) {
        pulseInfoDirty = false;
        slotPulseMeasureInfoChanged();
    }
}

void MainView::clearForNewData()
{
    m_pulse->hide();
    m_edges->hide();
    m_markers->takeOff();
    scene->update();
    pulseInfoDirty = true;
    if (waveGen->sampleCount() < 1) {
        slotPulseMeasureInfoChanged(); // there is nothing to see, so no refresh follows
    }
}

void MainView::showAllIfFlat()
{
    const QRect seen = waveView->mapToScene(waveView->viewport()->rect()).boundingRect().toRect();
    if (!SeenTransitions::areIn(seen, *m_rows, *waveGen) && SeenTransitions::areAnywhere(*m_rows, *waveGen)) {
        waveGen->zoomFit();
    }
}

void MainView::slotPulseMeasureInfoChanged()
{
    const QStringList requests = gPulseRequests == nullptr ? QStringList() : gPulseRequests->allRequests();
    emit pulseMeasureChangedbySmpDone(countedRequests(requests, shownPairs(), waveGen->source()));
}

void MainView::refreshPulsesOfPair(int group)
{
    const QStringList requests = gPulseRequests == nullptr ? QStringList() : gPulseRequests->requestsOfPair(group);
    emit pulseMeasureChangedbyTimeMarker(group, countedRequests(requests, shownPairs(), waveGen->source()));
}

// ---- markers

QVector<ShownPair> MainView::shownPairs() const
{
    return m_markers->shownPairs();
}

void MainView::slotTimingMarkerPairClicked(int type, int phyId)
{
    if (type >= pairRequest::add && type <= pairRequest::location) {
        m_markers->ask(PairRequest(type), phyId);
    }
}

void MainView::slotTimeViewMarkerChanged(int changedType, int index, int state, int midX)
{
    if (changedType == markerChange::setState) {
        m_markers->setState(index, TimeMarkers::stateOf(state));
    } else if (changedType == markerChange::setAndMove) {
        m_markers->setStateAt(index, TimeMarkers::stateOf(state), midX);
    }
}

void MainView::slotVoltageMarkerClicked(int phyId)
{
    m_voltages->pressButton(phyId);
}

void MainView::dropMarker()
{
    if (!m_markers->dropFollowing()) {
        m_voltages->dropFollowing();
    }
}

void MainView::slotVoltageAChnChanged(int chnIndex)
{
    m_voltages->setChannel(chnIndex);
}

// ---- gestures

void MainView::slotWheelChanged(int flag, QPoint point)
{
    emit zoomChangedByMouse(flag == 1 ? zoomFlag::in : zoomFlag::out, point);
}

void MainView::slotMousePressed(QMouseEvent *event)
{
    m_gestures->press(*event);
}

void MainView::slotMouseMoved(QMouseEvent *event)
{
    m_voltages->movesBoth = shiftHeld;
    m_gestures->move(*event);
}

void MainView::slotMouseReleased(QMouseEvent *event)
{
    m_gestures->release(*event);
}

void MainView::slotMouseLeave()
{
    m_gestures->leave();
}
