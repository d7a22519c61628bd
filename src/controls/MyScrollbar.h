#pragma once

#include <QWidget>

/// Where a handle is drawn on its vertical track, in pixels from the track's top.
struct ScrollHandle {
    double height;
    qlonglong top;
};

/// The height in proportion to the page, in pixels: page / (page - min + max) of the track, at most the whole track.
/// This one, not the drawn height, scales a drag.
[[nodiscard]] double scrollHandleHeight(int trackHeight, qlonglong minV, qlonglong maxV, qlonglong pageStep);

/// The handle as drawn: at least `minHeight` pixels high, and still able to reach both ends of the track.
[[nodiscard]] ScrollHandle scrollHandle(int trackHeight, int minHeight, qlonglong minV, qlonglong maxV,
                                        qlonglong pageStep, qlonglong value);

/// The value after a drag of `moved` pixels that began at `pressValue`, not yet cut to the range.
[[nodiscard]] qlonglong scrollDragValue(qlonglong pressValue, int moved, int trackHeight, double handleHeight,
                                        qlonglong minV, qlonglong maxV);

/// The thin vertical bar that lies over a view's right edge: a translucent handle without a track.
///
/// Hidden at first, and whenever there is nothing to scroll. The owner places it, and keeps it in step with what it
/// scrolls; while `maxV` is not positive it takes no value, so an owner gives the range before the value. Main thread.
class MyScrollbar : public QWidget {
    Q_OBJECT
public:
    explicit MyScrollbar(QWidget *parent = nullptr);

    double handleHeight = 0; ///< pixels, in proportion to the page
    int pressY = 0;          ///< row of the press, pixels
    qlonglong pressValue = 0;
    qlonglong minV = 0;
    qlonglong maxV = 0;
    qlonglong pageStep = 0;
    qlonglong value = 0;

    [[nodiscard]] QSize sizeHint() const override;

public slots:
    /// A value at or past a positive `max` follows it. Shows or hides the bar.
    void setRange(qlonglong min, qlonglong max);
    /// What is seen at once, in the units of the range; below 0 counts as 0.
    void setPageStep(qlonglong step);
    /// Cut to the range; emits only on a change.
    void setValue(qlonglong v);

signals:
    void rangChanged(qlonglong min, qlonglong max);
    void valueChanged(qlonglong value);

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    /// A click above or below the handle moves by a page.
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    void moveBy(double distance);
    void updateHandle();
    [[nodiscard]] ScrollHandle handle() const; ///< as drawn
    bool m_pressed = false;                    ///< the left button is down
    bool m_dragged = false;                    ///< and has moved since
};
