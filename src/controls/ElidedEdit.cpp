#include "controls/ElidedEdit.h"

#include <QPainter>
#include <QStyle>
#include <QStyleOptionFrame>

namespace {
constexpr int ownMargin = 2; // pixels, which the field keeps on each side of its text
} // namespace

QRect ElidedEdit::textRoom() const
{
    QStyleOptionFrame option;
    initStyleOption(&option);
    return style()
        ->subElementRect(QStyle::SE_LineEditContents, &option, this)
        .marginsRemoved(textMargins())
        .adjusted(ownMargin, 0, -ownMargin, 0);
}

QString ElidedEdit::shownText() const
{
    return hasFocus() ? text() : fontMetrics().elidedText(text(), Qt::ElideRight, textRoom().width());
}

void ElidedEdit::paintEvent(QPaintEvent *event)
{
    const QString shown = shownText();
    if (shown == text()) {
        QLineEdit::paintEvent(event);
        return;
    }
    QStyleOptionFrame option;
    initStyleOption(&option);
    QPainter painter(this);
    style()->drawPrimitive(QStyle::PE_PanelLineEdit, &option, &painter, this);
    style()->drawItemText(&painter, textRoom(), int(alignment() & Qt::AlignVertical_Mask) | int(Qt::AlignLeft),
                          palette(), isEnabled(), shown, QPalette::Text);
}
