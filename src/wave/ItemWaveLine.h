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

    /// What the next paint() of `exposed` will paint all over, the ground between the strokes as well: nothing for a
    /// trace of few strokes. While painting, with what the frame has then.
    [[nodiscard]] QRect covers(const QPainter &painter, const QRectF &exposed);

private:
    void paintTrace(QPainter &painter, const QRectF &exposed);
    void paintDecoded(QPainter &painter, const QRectF &exposed);

    /// Fills `m_rects` for what is to be seen.
    void measure(const QRect &seen);
    /// The trace of `m_rects` is painted by paintRows().
    [[nodiscard]] bool isPaintedAsRows(const QPainter &painter) const;
    /// The same picture in one pass, for a trace of many strokes; paints the ground between them as well.
    void paintRows(QPainter &painter, const QRect &seen, QColor color);

    const int chnIndex;
    const WaveDataGen *const waveGen;
    const QColor lineColor; ///< the trace's colour when waves are drawn in their channels' colours
    const std::shared_ptr<DecodedPainter> m_decoded;
    std::vector<QRect> m_rects; ///< scratch of one paint, kept for its memory, as the one below
    QRect m_measured;           ///< what covers() has filled `m_rects` for; empty when the paint has taken it
    TraceRows m_traceRows;
};
