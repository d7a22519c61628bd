#include "wave/EdgeJump.h"

#include "controls/Look.h"
#include "wave/NextEdge.h"
#include "wave/WaveDataGen.h"

#include <QGraphicsScene>

namespace {

constexpr int buttonGap = 5; ///< pixels at 96 dpi by which the button is lower than its row
constexpr int buttonTop = 4; ///< pixels at 96 dpi, from the row's top

} // namespace

EdgeJump::EdgeJump(QGraphicsScene &scene, WaveDataGen &waveGen, QObject *parent)
    : QObject(parent), m_waveGen(waveGen), m_button(new NextEdge)
{
    scene.addItem(m_button);
}

void EdgeJump::offer(int x, int chn, const QRect &row, int right)
{
    const EdgeZone zone = edgeZone(x, right, NextEdge::buttonWidth());
    if (zone.side == EdgeSide::none) {
        m_button->hide();
        return;
    }
    if (chn < 0 || m_waveGen.sampleCount() < 1) {
        return;
    }
    m_button->setTarget(zone.side, chn);
    m_button->setButtonSize({NextEdge::buttonWidth(), row.height() - dp(buttonGap)});
    m_button->setPos(zone.x - NextEdge::buttonWidth(), row.top() + dp(buttonTop));
    m_button->show();
}

void EdgeJump::hide()
{
    m_button->hide();
}

bool EdgeJump::isUnder(QPointF point) const
{
    return m_button->isVisible() && m_button->sceneBoundingRect().contains(point);
}

void EdgeJump::click()
{
    if (m_button->isBackward()) {
        m_waveGen.jumpPrevEdge(m_button->channel());
    } else {
        m_waveGen.jumpNextEdge(m_button->channel());
    }
}
