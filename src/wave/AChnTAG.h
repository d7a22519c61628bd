#pragma once

#include <QColor>
#include <QLabel>
#include <QPoint>

#include <array>

/// The flag of an analog channel's zero level, at the right edge of the analog sidebar: a coloured arrow that is
/// dragged up and down, or moved by the arrow keys while it has the focus. It tells of the move and moves nothing
/// itself.
///
/// GUI thread. Placed by ItemAChnSidebar.
class AChnTAG : public QLabel {
    Q_OBJECT
public:
    static constexpr int tagSize = 11; ///< of both sides, pixels at 96 dpi

    AChnTAG(int channel, QWidget *parent);

    [[nodiscard]] int channel() const { return chnIndex; }
    /// Takes another channel's colour and name.
    void setChannel(int channel);
    /// The row that the flag points at, device pixels of its parent.
    [[nodiscard]] int centre() const { return y() + height() / 2; }
    void setCentre(int row) { move(x(), row - height() / 2); }

    int tagY = 0;    ///< the stored place, logical pixels
    int tagRefH = 0; ///< the height of the area that `tagY` refers to, logical pixels; 0 for none yet

signals:
    /// The flag is dragged: the pointer is `posY` device pixels below the place in the flag where it took hold of it.
    void labelMoved(int posY);
    /// An arrow key asks for so many steps down, below 0 up.
    void movedByKey(int steps);

protected:
    /// @param meaning  what the flag marks, translated
    AChnTAG(int channel, const QString &meaning, QWidget *parent);

    using Outline = std::array<QPoint, 5>;
    /// The outline in a square of that side, pixels.
    [[nodiscard]] virtual Outline outline(int side) const;

    bool event(QEvent *event) override;
    void enterEvent(QEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    const QString m_meaning;
    int chnIndex;
    QColor color;
    int m_pressY = 0;        ///< where the pointer took hold, within the flag
    bool m_held = false;     ///< between press and release
    bool m_keyFocus = false; ///< the focus came by key, so it is shown
};
