#include "protocol/ResultView.h"

#include "controls/Look.h"
#include "controls/MyScrollbar.h"

#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyle>
#include <QToolTip>
#include <QWheelEvent>

#include <algorithm>

namespace {

constexpr int gridWidth = 10; // pixels
constexpr int rowHeight = 18; // units, as the three below
constexpr int textMargin = 3; ///< left and right of a row's text
constexpr int barWidth = 8;
constexpr int fewestRows = 4;
constexpr int wheelNotch = 120; // eighths of a degree

/// What the style leaves free left and right of a row's text, pixels: the same at each scale.
int marginOf(const QStyle &style)
{
    return style.pixelMetric(QStyle::PM_FocusFrameHMargin) + 1;
}

QString viewStyle(const QStyle &style)
{
    // Rows are as high as their grid: in a gap between two of them a click would go astray.
    return QStringLiteral("QListView{background-color:#1f1f23;border:0px solid #7f7f7f;color:#dfdfdf;outline:0;}"
                          "QListView::item{min-height:%4px;border:0;padding:0 %5px;}"
                          "QListView::item:hover{background-color:%1;}"
                          "QListView::item:selected{background-color:%2;color:%3;}")
        .arg(gGreys[7].name(), gGreys[5].name(), gGreys[0].name())
        .arg(ResultView::gridHeight())
        .arg(std::max(dp(textMargin) - marginOf(style), 0));
}

bool isMove(int key)
{
    return key == Qt::Key_Up || key == Qt::Key_Down || key == Qt::Key_PageUp || key == Qt::Key_PageDown ||
           key == Qt::Key_Home || key == Qt::Key_End;
}

bool isEnter(int key)
{
    return key == Qt::Key_Return || key == Qt::Key_Enter;
}

/// Ctrl+C, or Ctrl+Shift+C.
bool isCopy(const QKeyEvent &event)
{
    const Qt::KeyboardModifiers held = event.modifiers();
    return event.key() == Qt::Key_C && held.testFlag(Qt::ControlModifier) && !held.testFlag(Qt::AltModifier);
}

} // namespace

ResultView::ResultView(QWidget *parent) : QListView(parent)
{
    setStyleSheet(viewStyle(*style()));
    setSelectionMode(QAbstractItemView::SingleSelection);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setAutoScroll(false);
    setUniformItemSizes(true);
    setTextElideMode(Qt::ElideRight);
    setFont(gFontMain);
    setGridSize({gridWidth, gridHeight()});
    setViewportMargins(0, 0, dp(barWidth), 0);
    setMouseTracking(true);
    setTabKeyNavigation(false);
    setMinimumHeight(fewestRows * gridHeight());
    bar = new MyScrollbar(this);
    connect(this, &QAbstractItemView::clicked, this, &ResultView::rowChosen);
}

int ResultView::gridHeight()
{
    return std::max(dp(rowHeight), QFontMetrics(gFontMain).height());
}

int ResultView::currentRow() const
{
    return selectionModel() != nullptr && selectionModel()->isSelected(currentIndex()) ? currentIndex().row() : -1;
}

void ResultView::markRow(int row)
{
    const QModelIndex index = row >= 0 && row < model()->rowCount() ? model()->index(row, 0) : QModelIndex();
    if (index.isValid()) {
        setCurrentIndex(index);
    } else {
        selectionModel()->clear();
    }
}

bool ResultView::event(QEvent *event)
{
    if (event->type() == QEvent::ShortcutOverride) {
        // Up, Down, Home and End move the time axis by shortcuts of the window, but not while the list has the focus.
        const auto &key = static_cast<const QKeyEvent &>(*event);
        if (isMove(key.key()) || isEnter(key.key()) || isCopy(key)) {
            event->accept();
            return true;
        }
    }
    const bool isTaken = QListView::event(event);
    if (event->type() == QEvent::Resize) {
        fitRows(); // not in resizeEvent(), which is the viewport's: that one could not follow from there
    }
    return isTaken;
}

bool ResultView::viewportEvent(QEvent *event)
{
    if (event->type() == QEvent::ToolTip) {
        // The pointer has come to rest: to the base, whose rows have no tips of their own, that is the end of any tip.
        showTip(static_cast<const QHelpEvent &>(*event).pos());
        return true;
    }
    return QListView::viewportEvent(event);
}

void ResultView::paintEvent(QPaintEvent *event)
{
    QListView::paintEvent(event);
    if (hasFocus()) {
        QPainter painter(viewport());
        const int line = dp(1);
        const QRect inner = viewport()->rect().adjusted(line, line, -line, -line);
        for (const QRect &side : QRegion(viewport()->rect()).subtracted(inner)) {
            painter.fillRect(side, gGreys[0]);
        }
    }
}

void ResultView::fitRows()
{
    const int rows = height() / gridHeight();
    const int whole = rows * gridHeight();
    if (height() != whole) {
        resize(width(), whole);
    }
    bar->setGeometry(width() - dp(barWidth), 0, dp(barWidth), whole);
    bar->setPageStep(whole);
    if (rows != m_rows) {
        m_rows = rows;
        emit listRowChanged(rows);
    }
}

void ResultView::wheelEvent(QWheelEvent *event)
{
    if (bar->maxV <= bar->minV) {
        event->ignore(); // the panel around it scrolls
        return;
    }
    m_turned += event->angleDelta().y();
    const int notches = m_turned / wheelNotch;
    m_turned -= notches * wheelNotch;
    bar->setValue(bar->value - qlonglong(notches) * gridHeight());
    event->accept();
}

void ResultView::mousePressEvent(QMouseEvent *event)
{
    m_isRowPressed = indexAt(event->pos()).isValid();
    QListView::mousePressEvent(event);
}

void ResultView::mouseMoveEvent(QMouseEvent *event)
{
    if (event->buttons() == Qt::NoButton) { // else it would mark another row than that which was pressed
        QListView::mouseMoveEvent(event);
    }
    if (event->y() != m_tipY) {
        showTip(event->pos());
    }
}

void ResultView::showTip(const QPoint &place)
{
    const QModelIndex index = indexAt(place);
    if (!index.isValid()) {
        m_tipY = -1;
        QToolTip::hideText();
        return;
    }
    m_tipY = place.y();
    const QString text = index.data().toString();
    const int room = viewport()->width() - 2 * std::max(dp(textMargin), marginOf(*style()));
    if (fontMetrics().horizontalAdvance(text) > room) {
        QToolTip::showText(viewport()->mapToGlobal(place), text.toHtmlEscaped(), viewport());
    } else {
        QToolTip::hideText();
    }
}

void ResultView::mouseDoubleClickEvent(QMouseEvent *event)
{
    event->accept(); // not to the base, for which it would begin another click
    if (event->button() == Qt::LeftButton && m_isRowPressed) {
        emit rowDoubleClicked();
    }
}

void ResultView::contextMenuEvent(QContextMenuEvent *event)
{
    const bool byKey = event->reason() == QContextMenuEvent::Keyboard;
    emit menuWanted(byKey ? viewport()->mapToGlobal(visualRect(currentIndex()).bottomLeft()) : event->globalPos());
}

void ResultView::leaveEvent(QEvent *event)
{
    QListView::leaveEvent(event);
    m_tipY = -1;
}

void ResultView::keyPressEvent(QKeyEvent *event)
{
    if (isMove(event->key())) {
        emit keyMoved(event->key());
    } else if (isEnter(event->key())) {
        if (currentRow() >= 0) {
            emit rowChosen(currentIndex());
        }
    } else if (isCopy(*event)) {
        emit copyWanted(event->modifiers().testFlag(Qt::ShiftModifier));
    } else {
        event->ignore();
    }
}
