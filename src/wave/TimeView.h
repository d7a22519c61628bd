#pragma once

#include "wave/TimeMarkers.h"
#include "wave/TimeTicks.h"

#include <QLine>
#include <QPoint>
#include <QRect>
#include <QVector>
#include <QWidget>

#include <optional>
#include <span>
#include <vector>

class CursorHandle;
class PointerTag;
class WaveDataGen;

/// Where a tick stands in the ruler, in device pixels.
struct RulerMark {
    QPoint text; ///< left end of the label's baseline
    QLine line;
};

/// The place of `tick` in a ruler of `height` device pixels on a screen of `dpi` (at least 96).
[[nodiscard]] RulerMark rulerMark(const TimeTick &tick, int dpi, int height);

/// Where a label begins that must not lie under a flag: at its own place, or `gap` behind the last flag that would
/// cover it.
/// @param flags  from left to right
[[nodiscard]] int besideFlags(const QRect &label, std::span<const QRect> flags, int gap);

/// The same for all labels of a ruler: none is moved to where another one stands, but is left out instead.
/// @param labels  from left to right; a label at the very left may come last
/// @return for each where it begins; none for one that is left out
/// Cost: follows the square of the labels' number.
[[nodiscard]] std::vector<std::optional<int>> labelsBesideFlags(std::span<const QRect> labels,
                                                                std::span<const QRect> flags, int gap);

/// The ruler above the waves: paints the ticks of the generator's newest frame and carries the flags of the timing
/// markers, which can be picked up, moved and put down there as in the waves.
///
/// The markers belong to the main view: the ruler shows what it is told and tells what is done to a flag. Main thread.
class TimeView : public QWidget {
    Q_OBJECT
public:
    /// @param waveGen  outlives the ruler
    explicit TimeView(const WaveDataGen *waveGen, QWidget *parent = nullptr);

    /// Takes away all flags, for another device.
    void dropHandles();

public slots:
    /// A marker has changed. `changedType` 7: the marker with id `index` (0 or above) has state `value`; its flag and
    /// that of its pair are made if need be. 8: the marker at position `index` of the list begins at device pixel
    /// `value`. 9: the pair that begins at position `index` is gone. A position that is none is ignored.
    void slotMainViewMarkerChanged(int changedType, int index, int value);

    /// The pointer is at device column `x` of the waves; `text` tells what is there, empty for nothing.
    void slotPointerMoved(int x, const QString &text);

signals:
    /// A flag is to change. `changedType` 5: the marker at position `index` of the list gets `state`; 6: it moves to
    /// `midX` (device pixels) as well.
    void timeMarkerChanged(int changedType, int index, int state, int midX);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    void slotMouseEnter(int phyId);
    void slotMouseLeave(int phyId);
    [[nodiscard]] CursorHandle *handleOf(int phyId);
    void addPair(int phyId);
    void removePair(int position);
    /// The first flag that is hovered or follows decides: it is picked up, or put down.
    void pickUpOrPutDown();
    /// The position of the first flag in that state, -1 for none.
    [[nodiscard]] int firstIn(MarkerState state) const;

    /// The places of the flags that are shown, from left to right.
    [[nodiscard]] std::vector<QRect> shownFlags() const;

    const WaveDataGen *m_waveGen;
    PointerTag *m_pointer;
    QVector<CursorHandle *> handles; ///< by id: the same positions as the main view's markers
    bool moved = false;              ///< the mouse has moved since the last press
    QVector<QLine> m_lines;          ///< of one painting; kept for its memory
};
