#pragma once

#include <QColor>
#include <QWidget>

/// A bar of one colour, such as the separator between two sections: fixed height, as wide as it may be.
class ColorLump : public QWidget {
    Q_OBJECT
public:
    /// @param barHeight  height of the coloured part, pixels; the margins come on top of it
    ColorLump(int barHeight, const QColor &barColor, int horizontalMargin = 0, int verticalMargin = 0,
              QWidget *parent = nullptr);

    QColor color;      ///< update() after a change
    const int marginX; ///< pixels left free on the left and on the right
    const int marginY; ///< pixels left free above and below

protected:
    void paintEvent(QPaintEvent *event) override;
};
