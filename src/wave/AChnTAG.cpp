#include "wave/AChnTAG.h"

#include "controls/Look.h"
#include "settings/Language.h"
#include "wave/AnalogColor.h"

#include <QFocusEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

namespace {

constexpr int tagPageSteps = 10; ///< of Page Up and Page Down

/// The steps that a key asks for, 0 for any other key.
int tagSteps(const QKeyEvent &event)
{
    if ((event.modifiers() & ~Qt::KeypadModifier) != Qt::NoModifier) {
        return 0;
    }
    switch (event.key()) {
    case Qt::Key_Up:
        return -1;
    case Qt::Key_Down:
        return 1;
    case Qt::Key_PageUp:
        return -tagPageSteps;
    case Qt::Key_PageDown:
        return tagPageSteps;
    default:
        return 0;
    }
}

} // namespace

AChnTAG::AChnTAG(int channel, QWidget *parent) : AChnTAG(channel, ::tr("Zero level"), parent) {}

AChnTAG::AChnTAG(int channel, const QString &meaning, QWidget *parent)
    : QLabel(parent), m_meaning(meaning), chnIndex(channel)
{
    setFixedSize(dp(tagSize), dp(tagSize));
    setFocusPolicy(Qt::StrongFocus);
    setChannel(channel);
}

void AChnTAG::setChannel(int channel)
{
    chnIndex = channel;
    color = aChnColor(channel);
    const QString name = QStringLiteral("CH%1, ").arg(channel + 1) + m_meaning;
    setAccessibleName(name);
    setToolTip(name + QStringLiteral(" (\u2191, \u2193)"));
    update();
}

AChnTAG::Outline AChnTAG::outline(int side) const
{
    const int last = side - 1;
    return {QPoint(0, 0), QPoint(last / 2, 0), QPoint(last, last / 2), QPoint(last / 2, last), QPoint(0, last)};
}

bool AChnTAG::event(QEvent *event)
{
    if (event->type() == QEvent::ShortcutOverride && tagSteps(*static_cast<QKeyEvent *>(event)) != 0) {
        event->accept(); // the arrows would zoom
        return true;
    }
    if (event->type() == QEvent::WindowBlocked) { // a modal box takes the mouse away
        m_held = false;
    }
    return QLabel::event(event);
}

void AChnTAG::enterEvent(QEvent *event)
{
    QLabel::enterEvent(event);
    setCursor(Qt::SizeVerCursor);
}

void AChnTAG::leaveEvent(QEvent *event)
{
    QLabel::leaveEvent(event);
    setCursor(Qt::ArrowCursor);
}

void AChnTAG::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton) {
        m_held = true;
        m_pressY = event->y();
    }
}

void AChnTAG::mouseMoveEvent(QMouseEvent *event)
{
    m_held = m_held && event->buttons().testFlag(Qt::LeftButton); // a release may have been lost
    if (m_held && event->y() != m_pressY) {
        emit labelMoved(event->y() - m_pressY);
    }
}

void AChnTAG::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton) {
        m_held = false;
    }
}

void AChnTAG::keyPressEvent(QKeyEvent *event)
{
    const int steps = tagSteps(*event);
    if (steps != 0) {
        emit movedByKey(steps);
    } else {
        QLabel::keyPressEvent(event);
    }
}

void AChnTAG::focusInEvent(QFocusEvent *event)
{
    QLabel::focusInEvent(event);
    // The window or a menu giving the focus back says nothing about how it came here first.
    if (event->reason() != Qt::ActiveWindowFocusReason && event->reason() != Qt::PopupFocusReason) {
        m_keyFocus = event->reason() != Qt::MouseFocusReason;
    }
    update();
}

void AChnTAG::focusOutEvent(QFocusEvent *event)
{
    QLabel::focusOutEvent(event);
    update();
}

void AChnTAG::paintEvent(QPaintEvent * /*event*/)
{
    const Outline points = outline(width());
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setPen(QPen(m_keyFocus && hasFocus() ? gGreys.value(0) : color, 0));
    painter.setBrush(color);
    painter.drawPolygon(points.data(), int(points.size()));
}
