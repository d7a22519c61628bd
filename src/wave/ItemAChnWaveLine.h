#pragma once

#include "wave/AnalogScale.h"
#include "wave/WaveItem.h"

#include <QPointer>
#include <QVector>

class DevBase;
class WaveDataGen;

/// The traces of all analog channels, one over the other as on an oscilloscope.
///
/// Holds no waveform: it replays the points that the generator has prepared for the frame. Values of a channel that
/// does not exist are ignored. Cost follows the pixels.
class ItemAChnWaveLine : public WaveItem {
public:
    /// All channels are on, with the zero level at the top and nothing to draw until they have a full scale.
    /// @param generator  not owned, outlives this
    ItemAChnWaveLine(int channels, const WaveDataGen *generator);

    /// Whose channels they are: it tells which are reversed. Not owned.
    void setDevice(const DevBase &device) { m_device = &device; }
    void setChnEnabled(int channel, bool on);
    /// @param y  of the channel's zero level, device pixels from the top of the area
    void setZeroY(int channel, int y);
    /// @param value  millivolts that the area's height stands for; 0 draws nothing
    void setFullScale(int channel, int value);

    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;

private:
    void paintTrace(QPainter &painter, int channel, const QRect &seen);

    const WaveDataGen *const waveGen;
    QPointer<const DevBase> m_device;
    QVector<char> chnEnabled; ///< by analog channel, as the two below
    QVector<int> zeroY;
    QVector<int> fullScale;
    TraceStrokes m_strokes; ///< scratch of one paint, kept for its memory
};
