#include "measure/TimingMarkerTip.h"

#include "measure/SectionParts.h"

#include <QCursor>
#include <QPainter>
#include <QStyle>
#include <QToolTip>

TimingMarkerTip::TimingMarkerTip(QWidget *parent) : QLabel(unknownText(), parent)
{
    setTextFormat(Qt::PlainText);
    setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    setStyleSheet(sectionLabelStyle());
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
}

QSize TimingMarkerTip::minimumSizeHint() const
{
    return {fontMetrics().horizontalAdvance(unknownText()), QLabel::minimumSizeHint().height()};
}

void TimingMarkerTip::enterEvent(QEvent *event)
{
    QLabel::enterEvent(event);
    if (fontMetrics().horizontalAdvance(text()) > width()) {
        QToolTip::showText(QCursor::pos(), text(), this);
    } else {
        QToolTip::hideText();
    }
}

void TimingMarkerTip::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QString shown = fontMetrics().elidedText(text(), Qt::ElideRight, width());
    style()->drawItemText(&painter, rect(), int(alignment()), palette(), isEnabled(), shown, foregroundRole());
}
