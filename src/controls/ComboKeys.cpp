#include "controls/ComboKeys.h"

#include <QComboBox>
#include <QFocusEvent>
#include <QKeyEvent>

namespace {

bool belongsToBox(const QKeyEvent &event)
{
    switch (event.key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Home:
    case Qt::Key_End:
        return true;
    default:
        break;
    }
    const Qt::KeyboardModifiers others = event.modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier);
    const QString text = event.text();
    return others == Qt::NoModifier && !text.isEmpty() && text.at(0).isLetterOrNumber();
}

} // namespace

ComboKeys::ComboKeys(QComboBox *box) : QObject(box)
{
    box->installEventFilter(this);
    box->setFocusPolicy(Qt::StrongFocus); // its own would give it the focus with the wheel's first notch
}

bool ComboKeys::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::FocusIn) {
        // The window or the list of entries giving the focus back says nothing about how it came here first.
        const Qt::FocusReason reason = static_cast<QFocusEvent *>(event)->reason();
        if (reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason) {
            m_reachedByKey = reason != Qt::MouseFocusReason;
        }
    } else if (event->type() == QEvent::Wheel && !static_cast<QWidget *>(watched)->hasFocus()) {
        event->ignore(); // what lies around the box scrolls
        return true;
    } else if (event->type() == QEvent::MouseButtonPress) {
        m_reachedByKey = false;
    } else if (event->type() == QEvent::ShortcutOverride && m_reachedByKey &&
               belongsToBox(*static_cast<QKeyEvent *>(event))) {
        event->accept();
        return true;
    }
    return QObject::eventFilter(watched, event);
}
