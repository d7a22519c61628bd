#pragma once

#include <QObject>
#include <QPointF>
#include <QRect>

class NextEdge;
class QGraphicsScene;
class WaveDataGen;

/// Where the edge button is offered, and what a click on it does.
///
/// Owns the button through the scene. GUI thread, owned by the main view. Places are device pixels of the scene.
class EdgeJump : public QObject {
    Q_OBJECT
public:
    /// @param scene, waveGen  not owned, outlive this
    EdgeJump(QGraphicsScene &scene, WaveDataGen &waveGen, QObject *parent);

    /// The pointer is at column `x` over the row `row` of channel `chn`, -1 for no row: shows the button at the near
    /// end of that row, or hides it.
    /// @param right  where the visible part of the row ends
    void offer(int x, int chn, const QRect &row, int right);
    void hide();
    [[nodiscard]] bool isUnder(QPointF point) const;
    /// Brings the edge that the button stands for to the middle.
    void click();

private:
    WaveDataGen &m_waveGen;
    NextEdge *m_button;
};
