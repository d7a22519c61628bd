#include "controls/FieldKeys.h"

#include <QKeyEvent>
#include <QLineEdit>

FieldKeys::FieldKeys(QLineEdit *field) : QObject(field)
{
    field->installEventFilter(this);
}

bool FieldKeys::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::ShortcutOverride) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Up || key == Qt::Key_Down) {
            event->accept();
            return true;
        }
    }
    return QObject::eventFilter(watched, event);
}
