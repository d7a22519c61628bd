#include "wave/NoticeBox.h"

#include "app/Language.h"

#include <QLabel>

void showNotice(QWidget *parent, QMessageBox::Icon kind, const QString &title, const QString &text,
                const QString &textStyle)
{
    QMessageBox box(kind, title, text, QMessageBox::NoButton, parent);
    // A path may hold what looks like markup.
    box.setTextFormat(Qt::PlainText);
    if (!textStyle.isEmpty()) {
        box.setStyleSheet(QStringLiteral("QMessageBox{background-color:#F0F0F0;}"));
        for (QLabel *label : box.findChildren<QLabel *>()) {
            label->setStyleSheet(textStyle);
        }
    }
    box.addButton(::tr("Close"), QMessageBox::AcceptRole);
    box.exec();
}
