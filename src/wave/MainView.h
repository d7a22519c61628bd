#pragma once

#include "wave/MarkerBoard.h"

#include <QPair>
#include <QPoint>
#include <QStringList>
#include <QVector>
#include <QWidget>

class AnalogArea;
class DevBase;
class EdgeJump;
class ItemChnSidebar;
class PulsePointer;
class QAction;
class QGraphicsScene;
class QHBoxLayout;
class QMouseEvent;
class RowColumn;
class VoltageBoard;
class WaveDataGen;
class WaveGestures;
class WaveView;
struct WaveParts;

/// The central widget: the column of channel sidebars and, beside it, the scene with the waves.
///
/// Puts the parts together that do the work (rows, markers, the pulse under the pointer, the edge button, gestures) and
/// is the border at which the window and the panels meet them. The time axis is the generator's: this class holds no
/// time state of its own. GUI thread; one instance. Points are device pixels of the wave view.
class MainView : public QWidget {
    Q_OBJECT
public:
    /// @param generator  not owned, outlives this
    explicit MainView(WaveDataGen *generator, QWidget *parent = nullptr);
    ~MainView() override;

    /// Replaces all items by those of `device` and the stored configuration. Not owned; it may go at any time, and then
    /// shows no row until the next call.
    void rebuildChannels(DevBase &device);
    /// Shows the generator's newest frame.
    void refreshWave();
    /// Takes off what belongs to the capture that is about to be replaced.
    void clearForNewData();

    /// After a file has been placed: where no row in view shows a transition but some row has one, the whole capture is
    /// shown instead of flat lines.
    void showAllIfFlat();

    /// The pairs whose markers are both shown, in the order of their letters.
    [[nodiscard]] QVector<ShownPair> shownPairs() const;

    /// The area of the analog channels, which only some models have.
    [[nodiscard]] const AnalogArea &analog() const { return *m_analog; }

    /// Takes off the marker that follows the pointer, of either kind. Nothing without one.
    void dropMarker();

    /// The main window sets it while Shift is held: what is dragged in pairs then moves together.
    bool shiftHeld = false;

public slots:
    /// A channel was switched on or off.
    void slotChnEnaChanged();
    /// A decoder was added, removed or changed. `labels` names channel and decoder; lists of any other length than the
    /// channel count change no label.
    void slotAnalyzerItemChanged(const QVector<QPair<int, QString>> &labels);
    /// A channel's trigger has been chosen, and the device may have cleared others: shows them all.
    void slotChnTrigEdgeChanged();
    /// Something of analog channel `id` has changed. @param type  of aChnChange (AChnParameterSet.h)
    void slotChnSetChangedACH(int type, int id, int value);
    /// An entry of the sending sidebar's height menu.
    void slotChnTrigerMenu(QAction *action);
    /// A channel's number was pressed (`mouseFlag` 1), moved by `offsetY` device pixels since then (3) or released (2).
    void slotChnMove(int mouseFlag, int movedPhyIndex, int offsetY);
    /// There is more decoded data to show.
    void slotUpdateAnalyzerDecoded();
    /// Brings the wave view's vertical scroll bar in line with the sidebars'.
    void slotSidebarVerRangChange(int min, int max);

    void slotWheelChanged(int flag, QPoint point);
    void slotMousePressed(QMouseEvent *event);
    void slotMouseReleased(QMouseEvent *event);
    void slotMouseMoved(QMouseEvent *event);
    void slotMouseLeave();

    /// The list of pairs asks for a change. `type` 0: make the pair of marker `phyId`, both off; 1: remove it; 2: the
    /// marker's button was pressed: it follows the pointer, or no longer; 3: bring both of the pair into view. A marker
    /// is only taken up while there is a capture with samples. Other types and negative ids are ignored.
    void slotTimingMarkerPairClicked(int type, int phyId);
    /// A flag of the ruler was used. `changedType` 5: the marker at position `index` of the list gets `state`; 6: it
    /// moves to `midX` (device pixels) as well. Positions that are none are ignored.
    void slotTimeViewMarkerChanged(int changedType, int index, int state, int midX);

    /// The button of voltage marker `phyId` (0 or 1, others are ignored): it follows the pointer from now on; one that
    /// does already is taken off, or laid down where it has been moved to.
    void slotVoltageMarkerClicked(int phyId);
    /// The analog channel whose voltages the markers read.
    void slotVoltageAChnChanged(int chnIndex);

    /// Counts the edges and pulses anew for all rows that ask for them.
    void slotPulseMeasureInfoChanged();

signals:
    /// The key for a copy of the view was pressed, where nothing else takes it.
    void pictureWanted();
    /// The waves have another width: the window shows more or less of the capture than before.
    void timeWidthChanged();
    /// `flag` 1 in, 2 out, about `point`.
    void zoomChangedByMouse(int flag, QPoint point);
    /// The wave was dragged by `width` logical pixels to the right.
    void mouseDraged(int width);
    /// The pointer is at device column `x` of the waves: its time and sample from the trigger as text, empty for none.
    void pointerMoved(int x, const QString &text);
    /// Width, period, duty and frequency of the pulse under the pointer; "###" for what is not known.
    void logMeasureChanged(QStringList res);
    /// A pair or a marker's time has changed, for the list of pairs. `type` 0: the view has made the pair of marker
    /// `phyId` on its own; 4: the marker's time is `value`, its distance from the pair's other marker `total`.
    void timMarkPairChanged(int type, int phyId, QString value, QString total);
    /// A marker has changed, for the ruler. `type` 7: marker `index` (its id) has state `value`; 8: the marker at
    /// position `index` of the list stands at device pixel `value`; 9: the pair that begins at position `index` is
    /// gone.
    void timeMarkBodyChanged(int type, int index, int value);
    /// The voltages of Y1 and Y2, and between them; "###" for what is not known.
    void voltageMarkerValueChanged(QStringList values);
    /// The counts of all requests of `gPulseRequests`, each as the request and four fields.
    void pulseMeasureChangedbySmpDone(QStringList res);
    /// The counts of the requests about pair `index`, 0 to 4.
    void pulseMeasureChangedbyTimeMarker(int index, QStringList res);
    /// The full scale or the zero level of an analog channel is another: what is read against them is to be read anew.
    void aChnScaleChanged(int channel);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void buildViews();
    [[nodiscard]] WaveParts parts() const;
    void connectVoltages();
    void connectWaveView();
    void connectScrolling();
    void connectParts();
    void connectKeys();
    void connectSidebar(ItemChnSidebar *sidebar);

    void layoutRows();
    void setTimeWidth();
    /// Keeps the seen time span. @param oldWidth  logical pixels, as the generator's
    void setAnalogTimeWidth(int oldWidth);
    void rowsMoved();
    /// Tab walks the sidebars from top to bottom, and then the scroll bar.
    void orderTabs(QVector<QWidget *> stops);
    /// Counts anew what is asked about the pair, whose markers have changed.
    void refreshPulsesOfPair(int group);

    QHBoxLayout *mainLayout;
    QGraphicsScene *scene;
    WaveDataGen *const waveGen;
    RowColumn *m_rows;
    AnalogArea *m_analog;
    WaveView *waveView;
    MarkerBoard *m_markers;
    VoltageBoard *m_voltages;
    PulsePointer *m_pulse;
    EdgeJump *m_edges;
    WaveGestures *m_gestures;
    bool pulseInfoDirty = false; ///< pulses are to be counted anew at the next refresh
    bool m_sized = false;        ///< the window has given this widget its size
};

/// The one main view, for panels. Set by the constructor, cleared by the destructor.
extern MainView *gMainView;
