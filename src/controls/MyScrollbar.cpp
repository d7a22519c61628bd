#include "controls/MyScrollbar.h"

#include "controls/Look.h"
#include "controls/Truncate.h"
#include "settings/Language.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

namespace {

constexpr int minHandleUnits = 12; // what a finger on a touch pad still hits

bool movesHandle(int key)
{
    return key == Qt::Key_Up || key == Qt::Key_Down || key == Qt::Key_PageUp || key == Qt::Key_PageDown ||
           key == Qt::Key_Home || key == Qt::Key_End;
}

} // namespace

double scrollHandleHeight(int trackHeight, qlonglong minV, qlonglong maxV, qlonglong pageStep)
{
    const double page = double(pageStep);
    const double total = page - double(minV) + double(maxV);
    if (total <= 0.0) {
        return trackHeight;
    }
    return std::clamp(page / total * trackHeight, 0.0, double(std::max(trackHeight, 0)));
}

ScrollHandle scrollHandle(int trackHeight, int minHeight, qlonglong minV, qlonglong maxV, qlonglong pageStep,
                          qlonglong value)
{
    const double height = scrollHandleHeight(trackHeight, minV, maxV, pageStep);
    const double travel = trackHeight - height;
    const double span = double(maxV) - double(minV);
    const qlonglong top = span > 0.0 ? truncated64(travel * double(value) / span) : 0;
    if (height >= minHeight) {
        return {height, top};
    }
    const double shortTravel = std::max(0, trackHeight - minHeight);
    return {double(minHeight), travel > 0.0 ? truncated64(shortTravel * double(top) / travel) : 0};
}

qlonglong scrollDragValue(qlonglong pressValue, int moved, int trackHeight, double handleHeight, qlonglong minV,
                          qlonglong maxV)
{
    const double travel = trackHeight - handleHeight;
    if (travel <= 0.0) {
        return pressValue;
    }
    return truncated64(double(pressValue) + (double(maxV) - double(minV)) * moved / travel);
}

MyScrollbar::MyScrollbar(QWidget *parent) : QWidget(parent)
{
    setFocusPolicy(Qt::TabFocus);
    setAccessibleName(::tr("Vertical position"));
    hide();
}

QSize MyScrollbar::sizeHint() const
{
    return {dp(10), dp(80)};
}

void MyScrollbar::setRange(qlonglong min, qlonglong max)
{
    if (min == minV && max == maxV) {
        return;
    }
    const bool tell = maxV > 0 || max >= 0;
    minV = min;
    maxV = max;
    updateHandle();
    if (value >= max && max > 0) {
        setValue(max);
    } else if (tell) {
        emit rangChanged(min, max);
    }
    setVisible(maxV > minV && maxV > 0);
    update();
}

void MyScrollbar::setPageStep(qlonglong step)
{
    pageStep = std::max<qlonglong>(step, 0);
    updateHandle();
    update();
}

void MyScrollbar::setValue(qlonglong v)
{
    if (maxV <= 0) {
        return;
    }
    const qlonglong cut = std::max(std::min(v, maxV), minV);
    if (cut == value) {
        return;
    }
    value = cut;
    update();
    emit valueChanged(value);
}

void MyScrollbar::moveBy(double distance)
{
    setValue(truncated64(double(value) + distance));
}

void MyScrollbar::updateHandle()
{
    handleHeight = scrollHandleHeight(height(), minV, maxV, pageStep);
}

ScrollHandle MyScrollbar::handle() const
{
    return scrollHandle(height(), minHandleUnits * uiScale(), minV, maxV, pageStep, value);
}

bool MyScrollbar::event(QEvent *event)
{
    // Up, Down, Home and End move the time axis by shortcuts of the window, but not while this bar has the focus.
    if (event->type() == QEvent::ShortcutOverride && movesHandle(static_cast<QKeyEvent *>(event)->key())) {
        event->accept();
        return true;
    }
    return QWidget::event(event);
}

void MyScrollbar::paintEvent(QPaintEvent *)
{
    const ScrollHandle shown = handle();
    const QRectF rect(0.0, double(shown.top), width(), shown.height);
    const double radius = width() / 2.0;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(this->rect(), QColor(0, 0, 0, 0));
    // Told from the dark ground by its grey, and from light waves by its dark outline.
    QColor face = gGreys.value(4);
    face.setAlpha(230);
    painter.setPen(QPen(gGreys.value(hasFocus() ? 0 : 9), dp(1)));
    painter.setBrush(face);
    const double inset = dp(1) / 2.0;
    painter.drawRoundedRect(rect.adjusted(inset, inset, -inset, -inset), radius, radius);
}

void MyScrollbar::resizeEvent(QResizeEvent *)
{
    updateHandle();
}

void MyScrollbar::mousePressEvent(QMouseEvent *event)
{
    // Taken in any case: a click on the bar must not act on the view below.
    event->accept();
    m_pressed = event->button() == Qt::LeftButton && maxV >= 1;
    if (!m_pressed) {
        return;
    }
    m_dragged = false;
    pressY = event->y();
    pressValue = value;
}

void MyScrollbar::mouseMoveEvent(QMouseEvent *event)
{
    event->accept();
    if (m_pressed && event->buttons().testFlag(Qt::LeftButton)) {
        m_dragged = m_dragged || event->y() != pressY;
        setValue(scrollDragValue(pressValue, event->y() - pressY, height(), handleHeight, minV, maxV));
    }
}

void MyScrollbar::mouseReleaseEvent(QMouseEvent *event)
{
    event->accept();
    if (event->button() != Qt::LeftButton || !m_pressed) {
        return;
    }
    m_pressed = false;
    const ScrollHandle shown = handle();
    if (!m_dragged && event->y() < shown.top) {
        moveBy(-double(pageStep));
    } else if (!m_dragged && event->y() >= double(shown.top) + shown.height) {
        moveBy(double(pageStep));
    }
}

void MyScrollbar::keyPressEvent(QKeyEvent *event)
{
    const qlonglong line = std::max<qlonglong>(pageStep / 10, 1);
    const qlonglong page = std::max<qlonglong>(pageStep, 1);
    switch (event->key()) {
    case Qt::Key_Up:
        moveBy(-double(line));
        break;
    case Qt::Key_Down:
        moveBy(double(line));
        break;
    case Qt::Key_PageUp:
        moveBy(-double(page));
        break;
    case Qt::Key_PageDown:
        moveBy(double(page));
        break;
    case Qt::Key_Home:
        setValue(minV);
        break;
    case Qt::Key_End:
        setValue(maxV);
        break;
    default:
        QWidget::keyPressEvent(event);
    }
}

void MyScrollbar::focusInEvent(QFocusEvent *event)
{
    QWidget::focusInEvent(event);
    update();
}

void MyScrollbar::focusOutEvent(QFocusEvent *event)
{
    QWidget::focusOutEvent(event);
    update();
}
