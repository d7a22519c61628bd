#include "controls/NoticeBox.h"

#include "controls/Look.h"
#include "settings/Language.h"

#include <QGridLayout>
#include <QLabel>
#include <QSpacerItem>

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
    auto *grid = qobject_cast<QGridLayout *>(box.layout());
    if (label == nullptr || grid == nullptr || grid->indexOf(label) < 0) {
        return;
    }
    label->ensurePolished();
    const QMargins margins = label->contentsMargins();
    const int text = label->fontMetrics().size(0, box.text()).width() + dp(2);
    const int width = std::min(text, dp(400)) + margins.left() + margins.right();
    // Behind the label, not as its least width: the box looks at that to find whether the text must wrap.
    int row = 0;
    int column = 0;
    int rows = 0;
    int columns = 0;
    grid->getItemPosition(grid->indexOf(label), &row, &column, &rows, &columns);
    grid->addItem(new QSpacerItem(width, 0, QSizePolicy::Minimum, QSizePolicy::Minimum), row, column, rows, columns);
}
