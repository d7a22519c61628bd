#pragma once

#include <QObject>
#include <QRect>
#include <QStringList>

#include <cstdint>

class ItemWaveArrow;
class QGraphicsScene;
class WaveDataGen;
struct SmpEdgeInfo;

/// The pulse under the pointer: its arrows in the scene, and its times as text.
///
/// Owns the arrow item through the scene. GUI thread, owned by the main view. Places are device pixels of the scene.
class PulsePointer : public QObject {
    Q_OBJECT
public:
    /// @param scene, waveGen  not owned, outlive this
    PulsePointer(QGraphicsScene &scene, const WaveDataGen &waveGen, QObject *parent);

    /// The pointer is at column `x` over the row `row` of channel `chn`; -1 for no row.
    void pointAt(int chn, const QRect &row, int x);
    void hide();
    /// The arrows are placed anew at the next pointAt(), be it at the same pulse.
    void forget();

signals:
    /// Width, period, duty and frequency; "###" for what is not known.
    void logMeasureChanged(const QStringList &res);

private:
    [[nodiscard]] bool pulseUnder(int chn, int x, SmpEdgeInfo &info, std::int64_t &rate) const;
    void placeArrow(const QRect &row, const SmpEdgeInfo &info);

    /// What the arrows were last placed for, to spare repainting when nothing has changed.
    struct Shown {
        int chn = -1;
        std::int64_t edge = 0;
        double start = 0;
        double ratio = 0;
        bool operator==(const Shown &) const = default;
    };

    const WaveDataGen &m_waveGen;
    ItemWaveArrow *m_arrow;
    Shown m_shown;
    const QStringList m_freqUnits;
    const QStringList m_timeUnits;
};
