#include "wave/LabelMove.h"

#include "controls/Contrast.h"
#include "controls/Look.h"
#include "controls/Truncate.h"

#include <QFocusEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

LabelMove::LabelMove(int channel, QWidget *parent) : QLabel(QString::number(channel), parent), chnIndex(channel)
{
    // Numbers are written on the channel's own colour, and some of those are dark.
    const QColor ground = gChnColors.value(channel % std::max(int(gChnColors.size()), 1), Qt::white);
    setStyleSheet(QStringLiteral("QLabel{border:0;color:%1;}").arg(textOn(ground).name()));
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true); // a move without a button tells of a release that was lost
}

void LabelMove::enterEvent(QEvent *event)
{
    QLabel::enterEvent(event);
    setCursor(Qt::OpenHandCursor);
}

void LabelMove::leaveEvent(QEvent *event)
{
    QLabel::leaveEvent(event);
    setCursor(Qt::ArrowCursor);
}

void LabelMove::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        return;
    }
    letGo(); // a former release may have been lost
    pressX = event->screenPos().x();
    pressY = event->screenPos().y();
    m_held = true;
    setCursor(Qt::ClosedHandCursor);
    emit channelMoveCallback(handleMove::pressed, chnIndex, 0);
}

void LabelMove::mouseMoveEvent(QMouseEvent *event)
{
    if (!event->buttons().testFlag(Qt::LeftButton)) {
        letGo();
    } else if (m_held) {
        emit channelMoveCallback(handleMove::moved, chnIndex, truncated32(event->screenPos().y() - pressY));
    }
}

void LabelMove::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton) {
        letGo();
    }
}

void LabelMove::letGo()
{
    if (m_held) {
        m_held = false;
        setCursor(Qt::OpenHandCursor);
        emit channelMoveCallback(handleMove::released, chnIndex, 0);
    }
}

void LabelMove::hideEvent(QHideEvent *event)
{
    QLabel::hideEvent(event);
    letGo();
}

bool LabelMove::event(QEvent *event)
{
    if (event->type() == QEvent::WindowBlocked) { // a modal box takes the mouse away
        letGo();
    }
    if (event->type() == QEvent::Polish) {
        return QFrame::event(event); // a label that takes the focus would make a text document of its number
    }
    return QLabel::event(event);
}

void LabelMove::keyPressEvent(QKeyEvent *event)
{
    const bool vertical = event->key() == Qt::Key_Up || event->key() == Qt::Key_Down;
    if (vertical && (event->modifiers() & ~Qt::KeypadModifier) == Qt::ControlModifier) {
        emit moveByKey(chnIndex, event->key() == Qt::Key_Up ? -1 : 1);
    } else {
        QLabel::keyPressEvent(event);
    }
}

void LabelMove::focusInEvent(QFocusEvent *event)
{
    QLabel::focusInEvent(event);
    // The window or a menu giving the focus back says nothing about how it came here first.
    const bool givenBack = event->reason() == Qt::ActiveWindowFocusReason || event->reason() == Qt::PopupFocusReason;
    if (!givenBack) {
        m_keyFocus = event->reason() != Qt::MouseFocusReason;
    }
    update();
}

void LabelMove::focusOutEvent(QFocusEvent *event)
{
    QLabel::focusOutEvent(event);
    update();
}

void LabelMove::paintEvent(QPaintEvent *event)
{
    QLabel::paintEvent(event);
    if (m_keyFocus && hasFocus()) {
        const int line = dp(1);
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing); // whole pixels, since the line's middle lies between them
        painter.setPen(QPen(gGreys.value(0), line, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
        painter.drawRect(QRectF(rect()).adjusted(line * 0.5, line * 0.5, -line * 0.5, -line * 0.5));
    }
}
