#pragma once

#include <QGraphicsView>
#include <QRegion>

#include <functional>

class MyScrollbar;

/// The view of the wave scene. It turns input into signals and decides nothing; a thin scroll bar lies over its right
/// edge while the rows do not all fit.
///
/// GUI thread, owned by the main view. Points are device pixels of the viewport.
class WaveView : public QGraphicsView {
    Q_OBJECT
public:
    explicit WaveView(QGraphicsScene *scene, QWidget *parent = nullptr);

    /// What the thin scroll bar takes of the right edge; 0 while it is hidden.
    [[nodiscard]] int scrollBarWidth() const;

    /// What the rows' own grounds cover, in the scene: it is not painted twice. Empty for nothing. Called while
    /// painting.
    std::function<QRegion()> groundOfRows;

    /// What is written in grey over the rows; an empty text for nothing. Called while painting.
    std::function<QString()> hint;

public slots:
    /// Brings the thin bar in line with the native vertical scroll bar, whose range is now `min` to `max`.
    void scrollBarRangeChanged(int min, int max);

signals:
    /// One step of the wheel: `flag` is +1 away from the user, else -1.
    void wheelChanged(int flag, QPoint point);
    /// The same with Shift held, which moves instead of zooming.
    void wheelPans(int flag);
    /// Also for the second press of a double click: each click counts.
    void mousePressed(QMouseEvent *event);
    void mouseReleased(QMouseEvent *event);
    void mouseMoved(QMouseEvent *event);
    void mouseLeave();

protected:
    void drawBackground(QPainter *painter, const QRectF &rect) override;
    void drawForeground(QPainter *painter, const QRectF &rect) override;
    bool viewportEvent(QEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void connectScrollBars();

    MyScrollbar *m_bar;
};
