#pragma once

#include <QList>
#include <QPointer>
#include <QString>
#include <QWidget>

class DevBase;
class MyButton;
class QHBoxLayout;
class QLabel;
class TimingMarkerTip;

/// The letter of a pair: "A" for group 0.
[[nodiscard]] QString pairLetter(int group);
/// Such as "A1-A2".
[[nodiscard]] QString pairName(int group);

/// One row of the list of timing marker pairs: its markers' buttons, their distance, and below it their two times.
///
/// Group g has the markers with the ids 2 g and 2 g + 1. The row only shows texts and tells what was clicked; the
/// markers are the wave view's. Main thread.
class TimingMarkerPair : public QWidget {
    Q_OBJECT
public:
    /// @param group  0 to 4
    TimingMarkerPair(const DevBase &device, int group, QWidget *parent = nullptr);

    const int groupId;
    QHBoxLayout *line = nullptr; ///< what shows also when the row is folded
    MyButton *btnLocation = nullptr;
    MyButton *btnDeploy = nullptr;
    MyButton *btnRemove = nullptr;
    MyButton *btnTiming1 = nullptr;
    MyButton *btnTiming2 = nullptr;
    TimingMarkerTip *pairTotal = nullptr; ///< distance of the two markers, "###" unless both are placed
    QWidget *detail = nullptr;
    QList<TimingMarkerTip *> times; ///< of the two markers
    bool expanded = true;

    /// Puts the row's buttons behind `before` in the order of Tab. @return the row's last button
    QWidget *followInTabOrder(QWidget *before);

signals:
    void deleteClicked(int id);   ///< `id`: the group
    void markerClicked(int id);   ///< `id`: the marker
    void locationClicked(int id); ///< `id`: the pair's first marker

public slots:
    /// Asks to show the pair; nothing unless both markers are placed.
    void slotBtnLocationClicked();
    void slotBtnDeployClicked();
    void slotBtnRemoveSetClicked();
    /// Nothing while the device has no capture.
    void slotTimingBtn1Clicked();
    void slotTimingBtn2Clicked();

private:
    void buildLine();
    void buildDetail();
    void clickMarker(int marker);

    const QPointer<const DevBase> m_device; ///< null when it has gone
};
