// The rows as the user arranges them: order by dragging a channel's number, heights by its menu, triggers.

#include "controls/MyScrollbar.h"
#include "device/DevBase.h"
#include "device/DeviceGlobals.h"
#include "settings/Config.h"
#include "wave/ItemChnSidebar.h"
#include "wave/ItemWaveBackground.h"
#include "wave/ItemWaveLine.h"
#include "wave/LabelMove.h"
#include "wave/MainView.h"
#include "wave/NextEdge.h"
#include "wave/WaveView.h"

#include <QAction>
#include <QScrollArea>
#include <QScrollBar>

namespace {

// z values of background and line: below all other items at rest, above them while dragged
constexpr qreal restingBackground = 0;
constexpr qreal restingLine = 1;
constexpr qreal draggedBackground = 5;
constexpr qreal draggedLine = 6;

} // namespace

void MainView::connectSidebar(ItemChnSidebar *sidebar)
{
    connect(sidebar, &ItemChnSidebar::trigEdgeChanged, this, &MainView::slotChnTrigEdgeChanged);
    connect(sidebar, &ItemChnSidebar::trigerMenu, this, &MainView::slotChnTrigerMenu);
    connect(sidebar, &ItemChnSidebar::reachedByKey, this, [this, sidebar](QWidget *control) {
        sidebarArea->ensureWidgetVisible(sidebar, 0, 0);
        sidebarArea->ensureWidgetVisible(control, 0, 0); // of a row that is higher than the column
    });
    connect(sidebar->handle(), &LabelMove::channelMoveCallback, this, &MainView::slotChnMove);
    connect(sidebar->handle(), &LabelMove::moveByKey, this, &MainView::moveRowByKey);
}

void MainView::slotChnTrigEdgeChanged()
{
    for (ItemChnSidebar *sidebar : chnSidebars) {
        sidebar->setTrigCode(gDev->chnTrig.value(sidebar->channel()));
    }
}

void MainView::slotChnTrigerMenu(QAction *action)
{
    const int value = action->data().toInt();
    if (value == ItemChnSidebar::resetAll) {
        for (ItemChnSidebar *sidebar : chnSidebars) {
            sidebar->reset();
        }
        chnTrigPut(gDev->name, QVector<int>(chnSidebars.size(), 0), false);
        storeOrder();
    } else if (auto *sidebar = qobject_cast<ItemChnSidebar *>(sender())) {
        sidebar->setMultiplier(validMultiplier(value));
    }
    QVector<int> factors;
    for (const ItemChnSidebar *sidebar : chnSidebars) {
        factors.append(sidebar->multiplier());
    }
    chnShowMultipPut(factors);
    layoutRows();
}

void MainView::storeOrder()
{
    QVector<int> order;
    for (const ItemChnSidebar *sidebar : chnSidebars) {
        order.append(sidebar->row());
    }
    chnShowIndexPut(order);
    orderTabs();
}

void MainView::orderTabs()
{
    QVector<QWidget *> stops;
    for (int row = 0; row < chnSidebars.size(); ++row) {
        for (const ItemChnSidebar *sidebar : chnSidebars) {
            stops += sidebar->row() == row ? sidebar->tabStops() : QVector<QWidget *>();
        }
    }
    stops.append(waveView->findChild<MyScrollbar *>());
    for (int i = 1; i < stops.size(); ++i) {
        setTabOrder(stops[i - 1], stops[i]);
    }
}

// ---- moving a row

void MainView::slotChnMove(int mouseFlag, int movedPhyIndex, int offsetY)
{
    if (mouseFlag == handleMove::pressed) {
        if (m_drag.chn >= 0) {
            dropRow(0); // two handles cannot be held at once
        }
        m_drag = dragFrom(m_rows, m_chns, movedPhyIndex);
        m_dragScroll = sidebarArea->verticalScrollBar()->value();
    } else if (m_drag.chn < 0 || m_drag.chn != movedPhyIndex) {
        return; // the rows have been rebuilt since the press
    } else if (mouseFlag == handleMove::moved) {
        dragRow(offsetY);
    } else if (mouseFlag == handleMove::released) {
        dropRow(offsetY);
    }
}

void MainView::dragRow(int offsetY)
{
    const int gaveWay = exchangeOnce(m_rows, m_chns, m_drag);
    if (gaveWay >= 0) {
        takeOrder();
        placeRow(gaveWay);
    }
    m_drag.wantedY = wantedTop(m_drag, offsetY, sidebarArea->verticalScrollBar()->value() - m_dragScroll);
    const int y = draggedTop(m_rows, m_drag);
    ItemChnSidebar *sidebar = chnSidebars[m_drag.chn];
    sidebar->raise();
    waveBackgrounds[m_drag.chn]->setZValue(draggedBackground);
    waveLines[m_drag.chn]->setZValue(draggedLine);
    sidebar->move(0, y);
    waveBackgrounds[m_drag.chn]->setPos(0, y);
    waveLines[m_drag.chn]->setPos(0, y);
    sidebarArea->ensureWidgetVisible(sidebar, 0, 0);
}

void MainView::dropRow(int offsetY)
{
    // A fast move passes several middles from one event to the next: the row comes to rest where it is shown.
    while (exchangeOnce(m_rows, m_chns, m_drag) >= 0) {
    }
    const int chn = m_drag.chn;
    m_drag = {};
    takeOrder();
    for (int i = 0; i < chnSidebars.size(); ++i) {
        placeRow(i);
    }
    waveBackgrounds[chn]->setZValue(restingBackground);
    waveLines[chn]->setZValue(restingLine);
    waveBackgrounds[chn]->moveBy(0, offsetY);
    waveLines[chn]->moveBy(0, offsetY);
    storeOrder();
    rowsMoved();
}

void MainView::moveRowByKey(int chn, int step)
{
    if (m_drag.chn >= 0 || !moveByOne(m_rows, m_chns, chn, step)) {
        return;
    }
    takeOrder();
    for (int i = 0; i < chnSidebars.size(); ++i) {
        placeRow(i);
    }
    storeOrder();
    sidebarArea->ensureWidgetVisible(chnSidebars[chn], 0, 0);
    rowsMoved();
}

void MainView::rowsMoved()
{
    nextEdge->hide(); // its row may be another now
    forgetHover();
    repeatHover();
}

void MainView::takeOrder()
{
    for (int chn = 0; chn < chnSidebars.size(); ++chn) {
        chnSidebars[chn]->setRow(m_chns[std::size_t(chn)].showIndex);
    }
}
