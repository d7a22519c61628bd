#include "controls/MyButton.h"

#include "controls/Look.h"

#include <QFocusEvent>
#include <QLinearGradient>
#include <QPainter>

#include <algorithm>

namespace {
constexpr int lighterEnds = 167; // percent, at the ends of a face that is not selected
constexpr int darkerEnds = 167;  // percent, at the ends of a selected face
} // namespace

QPainterPath roundedOutline(const QRectF &rect, const CornerRadii &radii)
{
    const double limit = std::max(0.0, std::min(rect.width(), rect.height()) / 2.0);
    const auto cut = [limit](int radius) { return std::clamp(double(radius), 0.0, limit); };
    const double tr = cut(radii.topRight);
    const double tl = cut(radii.topLeft);
    const double bl = cut(radii.bottomLeft);
    const double br = cut(radii.bottomRight);
    QPainterPath path;
    path.moveTo(rect.left() + tl, rect.top());
    path.lineTo(rect.right() - tr, rect.top());
    if (tr > 0) {
        path.arcTo(rect.right() - 2 * tr, rect.top(), 2 * tr, 2 * tr, 90, -90);
    }
    path.lineTo(rect.right(), rect.bottom() - br);
    if (br > 0) {
        path.arcTo(rect.right() - 2 * br, rect.bottom() - 2 * br, 2 * br, 2 * br, 0, -90);
    }
    path.lineTo(rect.left() + bl, rect.bottom());
    if (bl > 0) {
        path.arcTo(rect.left(), rect.bottom() - 2 * bl, 2 * bl, 2 * bl, 270, -90);
    }
    path.lineTo(rect.left(), rect.top() + tl);
    if (tl > 0) {
        path.arcTo(rect.left(), rect.top(), 2 * tl, 2 * tl, 180, -90);
    }
    path.closeSubpath();
    return path;
}

MyButton::MyButton(QWidget *parent)
    : QPushButton(parent),
      borderColor(gGreys.value(2)),
      faceColor(gGreys.value(8)),
      hoverColor(gGreys.value(6)),
      checkedColor(gGreys.value(9)),
      textColor(0xf7, 0xf7, 0xf7)
{
    setAttribute(Qt::WA_LayoutUsesWidgetRect);
}

MyButton::MyButton(const QIcon &icon, const QString &toolTip, QWidget *parent) : MyButton(parent)
{
    setIcon(icon);
    setToolTip(toolTip);
    setAccessibleName(toolTip);
}

MyButton::MyButton(const QString &text, QWidget *parent) : MyButton(parent)
{
    setText(text);
}

void MyButton::setSelected(bool on)
{
    selected = on;
    if (isCheckable()) {
        setChecked(on); // what a screen reader tells
    }
    update();
}

void MyButton::setUseCheckedIcon(bool on)
{
    useCheckedIcon = on;
    update();
}

void MyButton::setRadius(int radius)
{
    radii = {radius, radius, radius, radius};
    update();
}

QSize MyButton::sizeHint() const
{
    if (text().isEmpty()) {
        return iconSize() + QSize(dp(8), dp(8));
    }
    const QFontMetrics metrics(font());
    return {metrics.horizontalAdvance(text()) + dp(16), std::max(metrics.height() + dp(6), iconSize().height())};
}

QBrush MyButton::faceBrush() const
{
    const QColor face = selected ? checkedColor : hovered && isEnabled() ? hoverColor : faceColor;
    if (!gradient) {
        return face;
    }
    const QColor ends = selected ? face.darker(darkerEnds) : face.lighter(lighterEnds);
    QLinearGradient shade(0, 0, 0, height());
    shade.setColorAt(0.0, ends);
    shade.setColorAt(0.3, face);
    shade.setColorAt(0.7, face);
    shade.setColorAt(1.0, ends);
    return shade;
}

void MyButton::paintEvent(QPaintEvent *)
{
    const double inset = penWidth * 0.5;
    const QPainterPath outline = roundedOutline(QRectF(rect()).adjusted(inset, inset, -inset, -inset), radii);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(outline, faceBrush());
    if (penWidth > 0) {
        painter.strokePath(outline, QPen(borderColor, penWidth, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
    }

    const QIcon &shown = !checkedIcon.isNull() && (selected || useCheckedIcon) ? checkedIcon : icon();
    if (!shown.isNull()) {
        QRect place({0, 0}, iconSize());
        place.moveCenter(rect().center());
        shown.paint(&painter, place, Qt::AlignCenter, isEnabled() ? QIcon::Normal : QIcon::Disabled);
    }
    if (!text().isEmpty()) {
        painter.setFont(font());
        painter.setPen(isEnabled() ? textColor : QColor(0xaf, 0xaf, 0xaf));
        painter.drawText(rect(), Qt::AlignCenter | Qt::TextShowMnemonic, text());
    }
    paintFocus(painter);
}

void MyButton::paintFocus(QPainter &painter) const
{
    if (!hasKeyFocus()) {
        return;
    }
    const double width = dp(1);
    const double inset = penWidth + width * 0.5;
    painter.setPen(QPen(gGreys.value(0), width));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(roundedOutline(QRectF(rect()).adjusted(inset, inset, -inset, -inset), radii));
}

void MyButton::enterEvent(QEvent *event)
{
    QPushButton::enterEvent(event);
    hovered = true;
    update();
}

void MyButton::leaveEvent(QEvent *event)
{
    QPushButton::leaveEvent(event);
    hovered = false;
    update();
}

void MyButton::focusInEvent(QFocusEvent *event)
{
    QPushButton::focusInEvent(event);
    // The window or a menu giving the focus back says nothing about how it came here first.
    const bool givenBack = event->reason() == Qt::ActiveWindowFocusReason || event->reason() == Qt::PopupFocusReason;
    if (!givenBack) {
        m_keyFocus = event->reason() != Qt::MouseFocusReason;
    }
    update();
}

void MyButton::takeFocusFrom(const MyButton &replaced)
{
    m_keyFocus = replaced.m_keyFocus;
    setFocus(Qt::ActiveWindowFocusReason); // which says nothing about how it came
}

void MyButton::focusOutEvent(QFocusEvent *event)
{
    QPushButton::focusOutEvent(event);
    update();
}
