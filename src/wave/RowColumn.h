#pragma once

#include "wave/ChannelLayout.h"
#include "wave/RowDrag.h"

#include <QPair>
#include <QPoint>
#include <QPointer>
#include <QRect>
#include <QRegion>
#include <QScrollArea>
#include <QStringList>
#include <QTimer>
#include <QVector>

#include <vector>

class DevBase;
class ItemChnSidebar;
class ItemWaveBackground;
class ItemWaveLine;
class QFrame;
class QGraphicsScene;
class WaveDataGen;

/// The rows of the digital channels: the column of sidebars, and each row's ground and line in the scene.
///
/// Owns sidebars and items, places them, and keeps order, heights and triggers as the user arranges them, which it
/// stores in the configuration. It knows no pointer and no marker: it tells when rows have moved. GUI thread, owned by
/// the main view. Places are device pixels of the scene.
class RowColumn : public QScrollArea {
    Q_OBJECT
public:
    /// @param scene, waveGen  not owned, outlive this
    RowColumn(QGraphicsScene &scene, const WaveDataGen &waveGen, QWidget *parent);
    ~RowColumn() override;

    /// The rows of `device` as they are stored. Rows that stand already are filled anew; rowMade() tells of each new
    /// one. They have no place until lay().
    void rebuild(DevBase &device);
    /// Places all rows; each is as wide as the waves.
    void lay(int waveWidth);

    [[nodiscard]] int count() const { return int(m_sidebars.size()); }
    [[nodiscard]] bool isAnalog() const;
    [[nodiscard]] int totalHeight() const { return m_layout.totalHeight; }
    /// The height of the analog area above the rows; 0 without one.
    [[nodiscard]] int analogHeight() const { return m_layout.aChnHeight; }
    /// The widget in which the sidebars stand, for what stands above them.
    [[nodiscard]] QFrame &frame() const { return *m_frame; }
    /// Where a channel's row lies in the scene; empty for a channel that does not exist or is off.
    [[nodiscard]] QRect placeOf(int chn) const;
    /// What the rows' grounds cover in the scene, also while one of them is dragged.
    [[nodiscard]] QRegion ground() const;
    /// The channel whose row holds a point of a view of that size, -1 for none.
    /// @param scroll  device pixels by which the rows are scrolled up
    [[nodiscard]] int channelAt(QPoint point, QSize view, int scroll) const;
    /// The channels that are in use.
    [[nodiscard]] QVector<int> enabledChannels() const;

    /// What the sidebars show of the device's triggers.
    void showTriggers();
    /// Names of decoders by channel; channels that do not exist are passed over.
    void showLabels(const QVector<QPair<int, QString>> &labels);
    /// All rows, for a new frame.
    void repaintLines();

    /// A height for the row of `sidebar` (null: of none), or ItemChnSidebar::resetAll, or undoReset, which takes the
    /// last reset back, once.
    void chooseHeight(ItemChnSidebar *sidebar, int value);
    /// See MainView::slotChnMove().
    void dragBy(int mouseFlag, int chn, int offsetY);
    /// Exchanges a row with its neighbour above (`step` -1) or below (1).
    void moveByKey(int chn, int step);

signals:
    void rowMade(ItemChnSidebar *sidebar);
    /// Heights are others: the rows are to be laid anew.
    void heightsChanged();
    /// What points at a row points at another one now.
    void rowsMoved();
    /// The sidebars' order from top to bottom has changed; `stops` are their controls in the order of Tab.
    void tabOrderChanged(const QVector<QWidget *> &stops);

private:
    /// Makes or takes away the last rows: those that stay are kept, since a row is many widgets.
    void setCount(int channels);
    void addRow(int chn);
    void fillRow(int chn, int row, int multiplier);
    void placeRow(int chn);
    /// Shows a row that has a place; one below the visible part on one of the loop's next turns, since a row that is
    /// shown for the first time is many widgets to be dressed.
    void showRow(int chn);
    /// At most so many of the rows that wait for that.
    void showRest(int most);
    /// @param top  of a row, pixels of the column
    [[nodiscard]] bool isBelowView(int top) const;
    [[nodiscard]] std::vector<ChannelRow> channelRows() const;
    void dragRow(int offsetY);
    void dropRow(int offsetY);
    void resetRows();
    void undoReset();
    void offerUndo(bool on);
    /// Hands the order of `m_chns` to the sidebars.
    void takeOrder();
    void storeOrder();
    void storeHeights();
    void tellTabOrder();

    QGraphicsScene &m_scene;
    const WaveDataGen &m_waveGen;
    QPointer<DevBase> m_device;
    QFrame *m_frame;
    QVector<ItemChnSidebar *> m_sidebars; ///< by physical channel, as the two below
    QVector<ItemWaveBackground *> m_backgrounds;
    QVector<ItemWaveLine *> m_lines;
    ChannelLayout m_layout;         ///< the rows' tops and heights, as they are shown
    std::vector<ChannelRow> m_chns; ///< what m_layout was computed from
    int m_waveWidth = 0;
    /// A row as it was before a reset.
    struct Arranged {
        QString name; ///< as it is stored
        int row;
        int multiplier;
        int trigger;
    };
    std::vector<Arranged> m_beforeReset; ///< by channel; empty when there is nothing to take back
    QTimer m_showRest;                   ///< runs while rows wait to be shown
    RowDrag m_drag;                      ///< layout and order follow it at each step
    int m_dragScroll = 0;                ///< scroll position at the press
};
