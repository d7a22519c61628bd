#include "app/ViewPicture.h"

#include "controls/Look.h"

#include <QPainter>
#include <QWidget>

namespace {

/// Where both lie, in the coordinates of what holds them.
QRect placeOf(const QWidget *ruler, const QWidget *rows)
{
    return ruler->geometry().united(rows->geometry());
}

} // namespace

QSize ViewPicture::size() const
{
    return placeOf(m_ruler, m_rows).size();
}

void ViewPicture::paint(QPainter &painter) const
{
    const QPoint origin = placeOf(m_ruler, m_rows).topLeft();
    painter.fillRect(QRect(QPoint(), size()), gGreys[5]);
    // Shapes know no clip: rows that are scrolled up reach over the ruler until that is painted.
    for (QWidget *widget : {m_rows, m_ruler}) {
        if (widget == m_ruler) {
            painter.fillRect(QRect(0, 0, size().width(), m_ruler->height()), gGreys[5]);
        }
        widget->render(&painter, widget->pos() - origin, QRegion(), QWidget::DrawChildren);
    }
}

QImage ViewPicture::image() const
{
    QImage image(size(), QImage::Format_RGB32);
    QPainter painter(&image);
    paint(painter);
    return image;
}

QPicture ViewPicture::shapes() const
{
    QPicture shapes;
    shapes.setBoundingRect(QRect(QPoint(), size()));
    QPainter painter(&shapes);
    paint(painter);
    return shapes;
}
