#include "wave/NoticeBox.h"

#include "app/Globals.h"
#include "app/Language.h"

#include <QLabel>

#include <algorithm>

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
    fitNotice(box);
    box.exec();
}

void fitNotice(QMessageBox &box)
{
    auto *label = box.findChild<QLabel *>(QStringLiteral("qt_msgbox_label"));
    if (label == nullptr) {
        return;
    }
    label->ensurePolished();
    const QMargins margins = label->contentsMargins();
    const int text = label->fontMetrics().size(0, box.text()).width() + dp(2);
    label->setMinimumWidth(std::min(text, dp(400)) + margins.left() + margins.right());
}
