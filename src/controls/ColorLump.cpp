#include "controls/ColorLump.h"

#include <QPainter>

ColorLump::ColorLump(int barHeight, const QColor &barColor, int horizontalMargin, int verticalMargin, QWidget *parent)
    : QWidget(parent), color(barColor), marginX(horizontalMargin), marginY(verticalMargin)
{
    setFixedHeight(barHeight + 2 * marginY);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void ColorLump::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect().adjusted(marginX, marginY, -marginX, -marginY), color);
}
