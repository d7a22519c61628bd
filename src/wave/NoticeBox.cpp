#include "wave/NoticeBox.h"

#include "app/Language.h"

void showNotice(QWidget *parent, QMessageBox::Icon kind, const QString &title, const QString &text)
{
    QMessageBox box(kind, title, text, QMessageBox::NoButton, parent);
    // A path may hold what looks like markup.
    box.setTextFormat(Qt::PlainText);
    box.addButton(::tr("Close"), QMessageBox::AcceptRole);
    box.exec();
}
