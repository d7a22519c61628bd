#pragma once

#include "wave/TimeTicks.h"

#include <QLine>
#include <QPoint>
#include <QVector>
#include <QWidget>

class WaveDataGen;

/// Where a tick stands in the ruler, in device pixels.
struct RulerMark {
    QPoint text; ///< left end of the label's baseline
    QLine line;
};

/// The place of `tick` in a ruler of `height` device pixels on a screen of `dpi` (at least 96).
[[nodiscard]] RulerMark rulerMark(const TimeTick &tick, int dpi, int height);

/// The ruler above the waves: paints the ticks of the generator's newest frame. Main thread.
class TimeView : public QWidget {
    Q_OBJECT
public:
    /// @param waveGen  outlives the ruler
    explicit TimeView(const WaveDataGen *waveGen, QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const WaveDataGen *m_waveGen;
    QVector<QLine> m_lines; ///< of one painting; kept for its memory
};
