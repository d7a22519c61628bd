#pragma once

#include "wave/WaveItem.h"
#include "wave/WaveStrokes.h"

#include <QColor>
#include <QRect>

#include <memory>
#include <vector>

class DecodedPainter;
class WaveDataGen;

/// The logic trace of a digital channel, and above it what is decoded there.
///
/// Holds no waveform: it replays the runs that the generator has prepared for the frame. Cost follows the pixels.
class ItemWaveLine : public WaveItem {
public:
    ItemWaveLine(int channel, const WaveDataGen *generator);
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;

private:
    void paintTrace(QPainter &painter, const QRectF &exposed);
    void paintDecoded(QPainter &painter, const QRectF &exposed);

    /// The same picture in one pass, for a trace of many strokes; paints the ground between them as well.
    void paintRows(QPainter &painter, const QRect &seen, QColor color);

    const int chnIndex;
    const WaveDataGen *const waveGen;
    const QColor lineColor; ///< the trace's colour when waves are drawn in their channels' colours
    const std::shared_ptr<DecodedPainter> m_decoded;
    std::vector<QRect> m_rects; ///< scratch of one paint, kept for its memory, as the one below
    TraceRows m_traceRows;
};
