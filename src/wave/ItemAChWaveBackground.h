#pragma once

#include "wave/WaveItem.h"

#include <QLine>

#include <vector>

class WaveDataGen;

/// The grid of the analog area: ten divisions from top to bottom, and a line at each tick of the ruler. The scene's own
/// ground shows through.
class ItemAChWaveBackground : public WaveItem {
public:
    /// @param generator  not owned, outlives this
    explicit ItemAChWaveBackground(const WaveDataGen *generator);
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;

private:
    const WaveDataGen *const waveGen;
    std::vector<QLine> m_lines; ///< scratch of one paint, kept for its memory
};
