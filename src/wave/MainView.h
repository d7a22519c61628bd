#pragma once

#include "wave/ChannelLayout.h"
#include "wave/RowDrag.h"
#include "wave/TimeAxis.h"
#include "wave/TimeMarkers.h"

#include <QPair>
#include <QPoint>
#include <QStringList>
#include <QVector>
#include <QWidget>

#include <cstdint>
#include <vector>

class CursorBody;
class ItemChnSidebar;
class ItemWaveArrow;
class ItemWaveBackground;
class ItemWaveLine;
class NextEdge;
class QAction;
class QFrame;
class QGraphicsScene;
class QHBoxLayout;
class QMouseEvent;
class QScrollArea;
class QShortcut;
class WaveDataGen;
class WaveView;
enum class EdgeSide;
struct SmpEdgeInfo;

/// A pair of timing markers that are both shown on the wave.
struct ShownPair {
    int group;           ///< 0 to 4, for the letters A to E
    QString firstName;   ///< such as "A1"
    QString secondName;  ///< such as "A2"
    double firstSample;  ///< where the first stands; either may be the earlier
    double secondSample; ///< where the second stands
};

/// The central widget: the column of channel sidebars and, beside it, the scene with the waves.
///
/// Owns the items of each channel, lays them out, and turns mouse and keys into requests. The time axis is the
/// generator's: this class holds no time state of its own. GUI thread; one instance. Points are device pixels of the
/// wave view.
class MainView : public QWidget {
    Q_OBJECT
public:
    /// @param generator  not owned, outlives this
    explicit MainView(WaveDataGen *generator, QWidget *parent = nullptr);
    ~MainView() override;

    /// Replaces all items by those of the present device and the stored configuration.
    void rebuildChannels();
    /// Shows the generator's newest frame.
    void refreshWave();
    /// Takes off what belongs to the capture that is about to be replaced.
    void clearForNewData();

    /// The pairs whose markers are both shown, in the order of their letters.
    [[nodiscard]] QVector<ShownPair> shownPairs() const;

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

    /// Counts the edges and pulses anew for all rows that ask for them.
    void slotPulseMeasureInfoChanged();

    /// The sender is the shortcut of a marker's number.
    void slotShortCutTimeMarker();

    void slotShortCutZoomIn();
    void slotShortCutZoomOut();
    void slotShortCutMovToBeg();
    void slotShortCutMovToEnd();

signals:
    /// The waves have another width: the window shows more or less of the capture than before.
    void timeWidthChanged();
    /// `flag` 1 in, 2 out, about `point`.
    void zoomChangedByMouse(int flag, QPoint point);
    /// The wave was dragged by `width` logical pixels to the right.
    void mouseDraged(int width);
    /// Width, period, duty and frequency of the pulse under the pointer; "###" for what is not known.
    void logMeasureChanged(QStringList res);
    /// A pair or a marker's time has changed, for the list of pairs. `type` 0: the view has made the pair of marker
    /// `phyId` on its own; 4: the marker's time is `value`, its distance from the pair's other marker `total`.
    void timMarkPairChanged(int type, int phyId, QString value, QString total);
    /// A marker has changed, for the ruler. `type` 7: marker `index` (its id) has state `value`; 8: the marker at
    /// position `index` of the list stands at device pixel `value`; 9: the pair that begins at position `index` is
    /// gone.
    void timeMarkBodyChanged(int type, int index, int value);
    /// The counts of all requests of `gPulseRequests`, each as the request and four fields.
    void pulseMeasureChangedbySmpDone(QStringList res);
    /// The counts of the requests about pair `index`, 0 to 4.
    void pulseMeasureChangedbyTimeMarker(int index, QStringList res);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    // construction
    void buildViews();
    void connectWaveView();
    void connectScrolling();
    void addShortcut(int key, void (MainView::*slot)());

    // channels
    void removeChannels();
    void buildChannel(int chn, int row, int multiplier);
    void layoutRows();
    void placeRow(int chn);
    void setTimeWidth();
    void setAnalogTimeWidth(int oldWidth, int deviceWidth);
    [[nodiscard]] std::vector<ChannelRow> channelRows() const;

    // rows as the user arranges them
    void connectSidebar(ItemChnSidebar *sidebar);
    void dragRow(int offsetY);
    void dropRow(int offsetY);
    void moveRowByKey(int chn, int step);
    /// Hands the order of `m_chns` to the sidebars.
    void takeOrder();
    void storeOrder();
    /// What points at a row points at another one now.
    void rowsMoved();
    /// Tab walks the sidebars from top to bottom.
    void orderTabs();

    // input
    [[nodiscard]] bool canMoveTime() const;
    void zoomAboutMiddle(int flag);
    [[nodiscard]] int channelAt(QPoint point) const;
    void hover(QPoint point);
    void repeatHover();
    void hideHover();
    void forgetHover();
    [[nodiscard]] bool pulseUnder(int chn, int x, SmpEdgeInfo &info, std::int64_t &rate) const;
    void placeArrow(int chn, const SmpEdgeInfo &info);

    // timing markers; positions are those of the list
    [[nodiscard]] TimeWindow timeWindow() const;
    /// The position of the marker, whose pair is made if need be; -1 for a negative id.
    [[nodiscard]] int markerIndex(int phyId);
    void addMarkerPair(int position, int firstId);
    void removeMarkerPair(int phyId);
    void removeMarkers();
    /// The position of the first marker in that state, -1 for none.
    [[nodiscard]] int firstMarkerIn(MarkerState state) const;
    /// Changes the state and the place.
    void setMarker(int index, MarkerState state, int x);
    /// Changes the state alone. Only one marker follows the pointer: another one is put down.
    void changeMarkerState(int index, MarkerState state);
    void showMarkerState(int index, MarkerState state);
    void placeMarker(int index);
    void snapMarker(int index, QPoint point);
    void repositionMarkers();
    void takeMarkersOff();
    void markerHasMoved(int index);
    void tellMarkerTexts(int index);
    void pressMarkerButton(int phyId);
    void showPair(int phyId);
    /// True when the pointer has been used up by a marker.
    bool moveOverMarkers(QPoint point);
    bool releaseOverMarkers(Qt::MouseButton button);

    // edge button
    [[nodiscard]] bool isOverNextEdge(QPoint point) const;
    void offerNextEdge(QPoint point);
    void showNextEdge(EdgeSide side, int chn, int x);
    void clickNextEdge();

    // measurements
    /// Counts anew what is asked about the pair, whose markers have changed.
    void refreshPulsesOfPair(int group);

    QHBoxLayout *mainLayout;
    QScrollArea *sidebarArea;
    QFrame *sidebarFrame;
    QVector<ItemChnSidebar *> chnSidebars; ///< by physical channel, as the two below
    WaveView *waveView;
    QGraphicsScene *scene;
    ItemWaveArrow *waveArrow;
    NextEdge *nextEdge;
    QVector<ItemWaveBackground *> waveBackgrounds;
    QVector<ItemWaveLine *> waveLines;
    QVector<CursorBody *> timeMarkers; ///< in pairs, by id
    bool pulseInfoDirty = false;       ///< pulses are to be counted anew at the next refresh
    ChannelLayout m_rows;              ///< the rows' tops and heights, as they are shown
    std::vector<ChannelRow> m_chns;    ///< what m_rows was computed from
    RowDrag m_drag;                    ///< both follow it at each step
    int m_dragScroll = 0;              ///< scroll position of the column at the press
    WaveDataGen *const waveGen;
    QVector<QShortcut *> shortcuts;

    // The last hover, to spare repainting when nothing has changed; all 0 when no arrow is shown.
    double hoverChn = 0;
    double hoverStart = 0;
    double hoverEdge = 0;
    double m_hoverRatio = 0;

    bool dragged = false; ///< the mouse has moved since the last press
    QPoint pressPos;      ///< anchor of the drag
    bool m_sized = false; ///< the window has given this widget its size
    const QStringList freqUnits;
    const QStringList timeUnits;
};

/// The one main view, for panels. Set by the constructor, cleared by the destructor.
extern MainView *gMainView;
