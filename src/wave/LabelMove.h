#pragma once

#include <QLabel>

/// The mouse flags of a row's handle.
namespace handleMove {

inline constexpr int pressed = 1;
inline constexpr int released = 2;
inline constexpr int moved = 3;

} // namespace handleMove

/// A channel's number, the handle by which its row is dragged: it tells of the drag and moves nothing itself.
///
/// GUI thread. Placed in an ItemChnSidebar.
class LabelMove : public QLabel {
    Q_OBJECT
public:
    LabelMove(int channel, QWidget *parent);

signals:
    /// @param mouseFlag  of handleMove: 1 pressed, 3 moved, 2 released. A 1 is followed by exactly one 2, also when the
    /// release is lost.
    /// @param offsetY    screen pixels from the press downward, truncated; 0 unless moved
    void channelMoveCallback(int mouseFlag, int movedPhyIndex, int offsetY);
    /// Ctrl with Up (`step` -1) or Down (1): the row is to change places with its neighbour.
    void moveByKey(int movedPhyIndex, int step);

protected:
    void enterEvent(QEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void letGo();

    double pressX = 0; ///< screen position of the press
    double pressY = 0;
    const int chnIndex;      ///< physical channel
    bool m_held = false;     ///< between press and release
    bool m_keyFocus = false; ///< the focus came by key, so it is shown
};
