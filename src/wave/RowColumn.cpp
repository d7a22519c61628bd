#include "wave/RowColumn.h"

#include "controls/Look.h"
#include "device/DevBase.h"
#include "settings/Config.h"
#include "wave/DecodedSource.h"
#include "wave/ItemChnSidebar.h"
#include "wave/ItemWaveBackground.h"
#include "wave/ItemWaveLine.h"
#include "wave/LabelMove.h"

#include <QFrame>
#include <QGraphicsScene>
#include <QScrollBar>

#include <utility>

namespace {

constexpr int leastUnit = 42; ///< pixels at 96 dpi, as the one below
constexpr int mostUnit = 120;
constexpr int analogUnits = 8; ///< height of the analog area in units of a row
constexpr int rowsATurn = 4;   ///< of the rows below the view, which are made ready while nobody waits for them

// z values of background and line: below all other items at rest, above them while dragged
constexpr qreal restingBackground = 0;
constexpr qreal restingLine = 1;
constexpr qreal draggedBackground = 5;
constexpr qreal draggedLine = 6;

} // namespace

RowColumn::RowColumn(QGraphicsScene &scene, const WaveDataGen &waveGen, QWidget *parent)
    : QScrollArea(parent), m_scene(scene), m_waveGen(waveGen), m_frame(new QFrame)
{
    setWidget(m_frame);
    setWidgetResizable(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus); // the rows are scrolled by the bar over the waves
    setFixedWidth(dp(ItemChnSidebar::columnWidth));
    setStyleSheet(QStringLiteral("QScrollArea{background-color:%1;border:0;}").arg(gGreys[7].name()));
    m_showRest.setSingleShot(true);
    connect(&m_showRest, &QTimer::timeout, this, [this] { showRest(rowsATurn); });
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this, [this] { showRest(count()); });
    m_frame->setObjectName(QStringLiteral("sidebarFrame"));
    m_frame->setStyleSheet(QStringLiteral("#sidebarFrame{background-color:%1;border:0;}").arg(gGreys[7].name()));
}

RowColumn::~RowColumn()
{
    m_drag = {};
    qDeleteAll(m_sidebars); // as children they would go, and tell of it, when this is no column any more
}

// ---- rows

void RowColumn::rebuild(DevBase &device)
{
    m_drag = {};
    m_device = &device;
    const int channels = device.chnEnable.size();
    setCount(channels);
    const QVector<int> rows = chnShowIndexGet(channels);
    const QVector<int> multipliers = chnShowMultipGet(channels);
    for (int chn = 0; chn < channels; ++chn) {
        fillRow(chn, rows[chn], validMultiplier(multipliers[chn]));
    }
    offerUndo(false); // of other settings
    tellTabOrder();
}

void RowColumn::setCount(int channels)
{
    m_chns.clear();
    m_layout = {};
    while (count() > channels) {
        delete m_sidebars.takeLast();
        delete m_backgrounds.takeLast();
        delete m_lines.takeLast();
    }
    while (count() < channels) {
        addRow(count());
    }
}

void RowColumn::addRow(int chn)
{
    auto *sidebar = new ItemChnSidebar(chn, chn, 1, m_frame);
    connect(sidebar, &ItemChnSidebar::reachedByKey, this, [this, sidebar](QWidget *control) {
        ensureWidgetVisible(sidebar, 0, 0);
        ensureWidgetVisible(control, 0, 0); // of a row that is higher than the column
    });
    connect(sidebar, &ItemChnSidebar::trigChosen, this, [this](int channel, int code) {
        if (m_device) {
            m_device->setChnTrig(channel, code);
        }
    });
    m_sidebars.append(sidebar);
    m_backgrounds.append(new ItemWaveBackground(chn));
    m_lines.append(new ItemWaveLine(chn, &m_waveGen));
    m_backgrounds.last()->covered = [line = m_lines.last()](const QPainter &painter, const QRectF &exposed) {
        return line->covers(painter, exposed);
    };
    m_scene.addItem(m_backgrounds.last());
    m_scene.addItem(m_lines.last());
    emit rowMade(sidebar);
}

void RowColumn::fillRow(int chn, int row, int multiplier)
{
    ItemChnSidebar *sidebar = m_sidebars[chn];
    sidebar->closeMenu();
    sidebar->setRow(row);
    sidebar->setMultiplier(multiplier);
    sidebar->setChnName(chnShowNameGet(chn));
    sidebar->setAnalyzerLabel(gDecodedSource == nullptr ? QString() : gDecodedSource->chnLabel(chn));
    sidebar->setTrigCode(m_device->chnTrig.value(chn));
    m_backgrounds[chn]->setZValue(restingBackground); // it may have been on its way to another place
    m_lines[chn]->setZValue(restingLine);
}

std::vector<ChannelRow> RowColumn::channelRows() const
{
    std::vector<ChannelRow> rows;
    for (const ItemChnSidebar *sidebar : m_sidebars) {
        const bool enabled = m_device && m_device->chnEnable.value(sidebar->channel());
        rows.push_back({sidebar->row(), sidebar->multiplier(), enabled});
    }
    return rows;
}

bool RowColumn::isAnalog() const
{
    return m_device && !m_device->aChnEnable.isEmpty();
}

void RowColumn::lay(int waveWidth)
{
    m_waveWidth = waveWidth;
    m_chns = channelRows();
    m_layout = layoutChannels(m_chns, isAnalog() ? analogUnits : 0, height(), {dp(leastUnit), dp(mostUnit)});
    for (int chn = 0; chn < count(); ++chn) {
        placeRow(chn);
    }
    m_frame->setFixedHeight(m_layout.totalHeight);
}

void RowColumn::placeRow(int chn)
{
    const auto row = std::size_t(m_sidebars[chn]->row());
    const int top = m_layout.tops[row];
    const QSize size(m_waveWidth, m_layout.heights[row]);
    m_sidebars[chn]->setGeometry(0, top, dp(ItemChnSidebar::columnWidth), size.height());
    showRow(chn);
    m_backgrounds[chn]->setSize(size);
    m_backgrounds[chn]->setPos(0, top);
    m_lines[chn]->setSize(size);
    m_lines[chn]->setPos(0, top);
    m_lines[chn]->update(); // the line is new even where the row stays
}

bool RowColumn::isBelowView(int top) const
{
    return top >= verticalScrollBar()->value() + height();
}

void RowColumn::showRow(int chn)
{
    ItemChnSidebar &sidebar = *m_sidebars[chn];
    const auto row = std::size_t(sidebar.row());
    const bool hasPlace = m_layout.heights[row] > 0;
    if (hasPlace && sidebar.isHidden() && isVisible() && isBelowView(m_layout.tops[row])) {
        m_showRest.start();
    } else {
        sidebar.setVisible(hasPlace); // what has no place must not take the focus
    }
}

void RowColumn::showRest(int most)
{
    m_showRest.stop();
    for (int chn = 0; chn < int(m_chns.size()); ++chn) {
        const bool waits = m_sidebars[chn]->isHidden() && placeOf(chn).height() > 0;
        if (waits && most-- == 0) {
            m_showRest.start();
            return;
        }
        if (waits) {
            m_sidebars[chn]->show();
        }
    }
}

QRect RowColumn::placeOf(int chn) const
{
    if (chn < 0 || std::size_t(chn) >= m_chns.size()) {
        return {};
    }
    const auto row = std::size_t(m_chns[std::size_t(chn)].showIndex);
    return {0, m_layout.tops[row], m_waveWidth, m_layout.heights[row]};
}

QRegion RowColumn::ground() const
{
    QRegion covered;
    for (const ItemWaveBackground *background : m_backgrounds) {
        covered += background->sceneBoundingRect().toAlignedRect();
    }
    return covered;
}

int RowColumn::channelAt(QPoint point, QSize view, int scroll) const
{
    return channelUnderPoint(m_layout, m_chns, point, view, scroll);
}

QVector<int> RowColumn::enabledChannels() const
{
    QVector<int> channels;
    for (int chn = 0; chn < int(m_chns.size()); ++chn) {
        if (m_chns[std::size_t(chn)].enabled) {
            channels.append(chn);
        }
    }
    return channels;
}

void RowColumn::showTriggers()
{
    for (ItemChnSidebar *sidebar : m_sidebars) {
        sidebar->setTrigCode(m_device ? m_device->chnTrig.value(sidebar->channel()) : 0);
    }
}

void RowColumn::showLabels(const QVector<QPair<int, QString>> &labels)
{
    for (const auto &[chn, label] : labels) {
        if (chn >= 0 && chn < count()) {
            m_sidebars[chn]->setAnalyzerLabel(label);
        }
    }
}

void RowColumn::repaintLines()
{
    m_scene.update(); // at once: row by row the view would put the parts together again
}

// ---- heights and order

void RowColumn::chooseHeight(ItemChnSidebar *sidebar, int value)
{
    if (value == ItemChnSidebar::resetAll) {
        resetRows();
    } else if (value == ItemChnSidebar::undoReset) {
        undoReset();
    } else if (sidebar != nullptr) {
        sidebar->setMultiplier(validMultiplier(value));
    }
    storeHeights();
    emit heightsChanged();
}

void RowColumn::resetRows()
{
    m_beforeReset.clear();
    for (ItemChnSidebar *sidebar : m_sidebars) {
        const int trigger = m_device ? m_device->chnTrig.value(sidebar->channel()) : 0;
        m_beforeReset.push_back({sidebar->storedName(), sidebar->row(), sidebar->multiplier(), trigger});
        sidebar->reset();
    }
    offerUndo(true);
    if (m_device) {
        chnTrigPut(m_device->name, QVector<int>(count(), 0), false);
    }
    storeOrder();
}

void RowColumn::undoReset()
{
    if (!m_device || int(m_beforeReset.size()) != count()) {
        return;
    }
    for (int chn = 0; chn < count(); ++chn) {
        const Arranged &before = m_beforeReset[std::size_t(chn)];
        globalSet(QStringLiteral("chnShowName%1").arg(chn), before.name);
        m_device->setChnTrig(chn, before.trigger);
        fillRow(chn, before.row, before.multiplier);
    }
    showTriggers(); // an edge clears those that were set before it
    offerUndo(false);
    storeOrder();
}

void RowColumn::offerUndo(bool on)
{
    if (!on) {
        m_beforeReset.clear();
    }
    for (ItemChnSidebar *sidebar : m_sidebars) {
        sidebar->setUndoable(on);
    }
}

void RowColumn::storeHeights()
{
    QVector<int> factors;
    for (const ItemChnSidebar *sidebar : m_sidebars) {
        factors.append(sidebar->multiplier());
    }
    chnShowMultipPut(factors);
}

void RowColumn::storeOrder()
{
    QVector<int> order;
    for (const ItemChnSidebar *sidebar : m_sidebars) {
        order.append(sidebar->row());
    }
    chnShowIndexPut(order);
    tellTabOrder();
}

void RowColumn::tellTabOrder()
{
    QVector<QWidget *> stops;
    for (int row = 0; row < count(); ++row) {
        for (const ItemChnSidebar *sidebar : m_sidebars) {
            stops += sidebar->row() == row ? sidebar->tabStops() : QVector<QWidget *>();
        }
    }
    emit tabOrderChanged(stops);
}

// ---- moving a row

void RowColumn::dragBy(int mouseFlag, int chn, int offsetY)
{
    if (mouseFlag == handleMove::pressed) {
        if (m_drag.chn >= 0) {
            dropRow(0); // two handles cannot be held at once
        }
        m_drag = dragFrom(m_layout, m_chns, chn);
        m_dragScroll = verticalScrollBar()->value();
    } else if (m_drag.chn < 0 || m_drag.chn != chn) {
        return; // the rows have been rebuilt since the press
    } else if (mouseFlag == handleMove::moved) {
        dragRow(offsetY);
    } else if (mouseFlag == handleMove::released) {
        dropRow(offsetY);
    }
}

void RowColumn::dragRow(int offsetY)
{
    const int gaveWay = exchangeOnce(m_layout, m_chns, m_drag);
    if (gaveWay >= 0) {
        takeOrder();
        placeRow(gaveWay);
    }
    m_drag.wantedY = wantedTop(m_drag, offsetY, verticalScrollBar()->value() - m_dragScroll);
    const int y = draggedTop(m_layout, m_drag);
    ItemChnSidebar *sidebar = m_sidebars[m_drag.chn];
    sidebar->raise();
    m_backgrounds[m_drag.chn]->setZValue(draggedBackground);
    m_lines[m_drag.chn]->setZValue(draggedLine);
    sidebar->move(0, y);
    m_backgrounds[m_drag.chn]->setPos(0, y);
    m_lines[m_drag.chn]->setPos(0, y);
    ensureWidgetVisible(sidebar, 0, 0);
}

void RowColumn::dropRow(int offsetY)
{
    // A fast move passes several middles from one event to the next: the row comes to rest where it is shown.
    while (exchangeOnce(m_layout, m_chns, m_drag) >= 0) {
    }
    const int chn = m_drag.chn;
    m_drag = {};
    takeOrder();
    for (int i = 0; i < count(); ++i) {
        placeRow(i);
    }
    m_backgrounds[chn]->setZValue(restingBackground);
    m_lines[chn]->setZValue(restingLine);
    m_backgrounds[chn]->moveBy(0, offsetY);
    m_lines[chn]->moveBy(0, offsetY);
    storeOrder();
    emit rowsMoved();
}

void RowColumn::moveByKey(int chn, int step)
{
    if (m_drag.chn >= 0 || !moveByOne(m_layout, m_chns, chn, step)) {
        return;
    }
    takeOrder();
    for (int i = 0; i < count(); ++i) {
        placeRow(i);
    }
    storeOrder();
    ensureWidgetVisible(m_sidebars[chn], 0, 0);
    emit rowsMoved();
}

void RowColumn::takeOrder()
{
    for (int chn = 0; chn < count(); ++chn) {
        m_sidebars[chn]->setRow(m_chns[std::size_t(chn)].showIndex);
    }
}
