#include "measure/TimingMarkerTip.h"

#include "measure/SectionParts.h"

#include <QCursor>
#include <QPainter>
#include <QStyle>
#include <QToolTip>

QString elidedValue(const QString &text, const QFontMetrics &metrics, int room)
{
    int unitAt = text.size();
    while (unitAt > 0 && !text.at(unitAt - 1).isDigit()) {
        --unitAt;
    }
    if (unitAt == 0) {
        return metrics.elidedText(text, Qt::ElideRight, room); // no number
    }
    const QString unit = text.mid(unitAt);
    return metrics.elidedText(text.left(unitAt), Qt::ElideRight, room - metrics.horizontalAdvance(unit)) + unit;
}

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
    const QString shown = elidedValue(text(), fontMetrics(), width());
    style()->drawItemText(&painter, rect(), int(alignment()), palette(), isEnabled(), shown, foregroundRole());
}
