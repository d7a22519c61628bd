#include "wave/WaveView.h"

#include "controls/Look.h"
#include "controls/MyScrollbar.h"

#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QWheelEvent>

WaveView::WaveView(QGraphicsScene *scene, QWidget *parent) : QGraphicsView(scene, parent), m_bar(new MyScrollbar(this))
{
    setAlignment(Qt::AlignLeft | Qt::AlignTop);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setAcceptDrops(false);
    setDragMode(NoDrag);
    // A click ends typing elsewhere. By key there is nothing to do here that needs the focus, and it would not be seen.
    setFocusPolicy(Qt::ClickFocus);
    viewport()->setFocusPolicy(Qt::ClickFocus);
    setMouseTracking(true);
    viewport()->setMouseTracking(true);
    setFrameShape(NoFrame);
    setStyleSheet(QStringLiteral("QGraphicsView{background-color:%1;border:0;}").arg(gGreys[7].name()));
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent); // each pixel is painted here: what lies below need not be
    // A new frame asks for all at once; a hover and a marker change a row and a column, whose common rectangle would be
    // everything. Each item sets all painter state that it uses.
    setViewportUpdateMode(MinimalViewportUpdate);
    setOptimizationFlags(DontSavePainterState | DontAdjustForAntialiasing);
    connectScrollBars();
}

int WaveView::scrollBarWidth() const
{
    return m_bar->isHidden() ? 0 : m_bar->width();
}

void WaveView::connectScrollBars()
{
    QScrollBar *native = verticalScrollBar();
    connect(native, &QScrollBar::rangeChanged, this, &WaveView::scrollBarRangeChanged);
    connect(native, &QScrollBar::valueChanged, m_bar, &MyScrollbar::setValue);
    connect(m_bar, &MyScrollbar::valueChanged, native, [native](qlonglong value) { native->setValue(int(value)); });
}

void WaveView::scrollBarRangeChanged(int min, int max)
{
    m_bar->setPageStep(verticalScrollBar()->pageStep());
    m_bar->setRange(min, max);
    m_bar->setValue(verticalScrollBar()->value());
}

void WaveView::drawBackground(QPainter *painter, const QRectF &rect)
{
    QRegion bare(rect.toAlignedRect());
    if (groundOfRows) {
        bare -= groundOfRows();
    }
    for (const QRect &part : bare) {
        painter->fillRect(part, scene()->backgroundBrush());
    }
}

void WaveView::drawForeground(QPainter *painter, const QRectF & /*rect*/)
{
    const QString text = hint ? hint() : QString();
    if (!text.isEmpty()) {
        const QRectF seen = mapToScene(viewport()->rect()).boundingRect();
        painter->setFont(gFontMain);
        painter->setPen(gGreys[2]);
        constexpr int flags = Qt::AlignCenter | Qt::TextWordWrap;
        const QRectF place = painter->boundingRect(seen, flags, text);
        painter->fillRect(place.adjusted(-dp(8), -dp(4), dp(8), dp(4)), gGreys[8]); // the rows' bands would cross it
        painter->drawText(seen, flags, text);
    }
}

bool WaveView::viewportEvent(QEvent *event)
{
    if (event->type() == QEvent::Leave) {
        emit mouseLeave();
    }
    return QGraphicsView::viewportEvent(event);
}

void WaveView::wheelEvent(QWheelEvent *event)
{
    // The base class would scroll. A purely sideways step is none of the wheel's.
    const int delta = event->angleDelta().y();
    if (delta != 0 && event->modifiers() == Qt::ShiftModifier) {
        emit wheelPans(delta < 1 ? -1 : 1);
    } else if (delta != 0) {
        emit wheelChanged(delta < 1 ? -1 : 1, event->position().toPoint());
    }
    event->accept();
}

void WaveView::mousePressEvent(QMouseEvent *event)
{
    emit mousePressed(event);
    QGraphicsView::mousePressEvent(event);
}

void WaveView::mouseDoubleClickEvent(QMouseEvent *event)
{
    emit mousePressed(event);
    QGraphicsView::mouseDoubleClickEvent(event);
}

void WaveView::mouseReleaseEvent(QMouseEvent *event)
{
    emit mouseReleased(event);
    QGraphicsView::mouseReleaseEvent(event);
}

void WaveView::mouseMoveEvent(QMouseEvent *event)
{
    emit mouseMoved(event);
    QGraphicsView::mouseMoveEvent(event);
}

void WaveView::resizeEvent(QResizeEvent *event)
{
    QGraphicsView::resizeEvent(event);
    m_bar->setGeometry(width() - dp(10), 0, dp(10), height());
    // The base class sets the page step after the range, and tells only of the range.
    scrollBarRangeChanged(verticalScrollBar()->minimum(), verticalScrollBar()->maximum());
}
