#pragma once

#include <QAbstractButton>
#include <QApplication>
#include <QEvent>
#include <QMessageBox>

/// What a box on the screen said before it was closed by its button.
struct SeenBox {
    int count = 0;
    QString title;
    QString text;
    QString button;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
};

/// Closes every message box that appears while this lives by its first button, and notes the last one.
class BoxCloser : public QObject {
public:
    BoxCloser() { qApp->installEventFilter(this); }
    SeenBox seen;

    bool eventFilter(QObject *object, QEvent *event) override
    {
        auto *box = qobject_cast<QMessageBox *>(object);
        if (box != nullptr && event->type() == QEvent::Show) {
            ++seen.count;
            seen.title = box->windowTitle();
            seen.text = box->text();
            seen.button = box->buttons().constFirst()->text();
            seen.icon = box->icon();
            QMetaObject::invokeMethod(box->buttons().constFirst(), "click", Qt::QueuedConnection);
        }
        return false;
    }
};
