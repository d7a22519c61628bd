#pragma once

#include <QList>
#include <QPointer>
#include <QString>
#include <QWidget>

class DevBase;
class MyButton;
class QVBoxLayout;
class TimingMarkerPair;

/// The section "Timing Marker Pairs": up to five pairs of timing markers, with their times and distances.
///
/// The list of pairs lives here and in the wave view at the same time, and each tells the other of a change: what the
/// user does here goes out as a signal with a marker's id, what happens on the wave comes in through
/// slotTimingMarkerPairChanged(). Nothing is stored. Main thread.
class Annotations : public QWidget {
    Q_OBJECT
public:
    static constexpr int mostPairs = 5;

    explicit Annotations(const DevBase &device, QWidget *parent = nullptr);

    /// Another device: empties the list and opens the section. Emits nothing, since the wave view drops its markers
    /// too.
    void reload(const DevBase &device);

    bool expanded = true;
    MyButton *btnExpand = nullptr;
    MyButton *btnAdd = nullptr;
    QWidget *pairsWidget = nullptr;
    QVBoxLayout *pairsLayout = nullptr;
    QList<TimingMarkerPair *> pairs; ///< sorted by group

signals:
    // `phyid`: the pair's first marker, but for markerPairClicked, where it is the marker itself.
    void addPairClicked(int phyid);
    void delPairClicked(int phyid);
    void markerPairClicked(int phyid);
    void locationPairClicked(int phyid);

public slots:
    /// The wave view's side. `type` 0: it has made the pair of marker `phyId` on its own; 4: that marker's time and the
    /// distance to its pair's other marker have changed. Other types, markers of no pair here and ids of none of the
    /// five pairs do nothing.
    void slotTimingMarkerPairChanged(int type, int phyId, QString timeData, QString timeToal);
    void slotBtnDeployClicked();
    /// Adds the pair of the lowest free letter; tells the user when there is none.
    void slotBtnAddClicked();
    /// `id`: the group.
    void slotDeleteClicked(int id);

private:
    [[nodiscard]] int placeOf(int group) const;
    void setExpanded(bool on);
    void insertPair(int group);
    void showInOrder();

    QPointer<const DevBase> m_device; ///< null from its end until reload()
};
