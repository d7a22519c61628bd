#pragma once

#include <QList>
#include <QStringList>
#include <QWidget>

#include <cstdint>

class MyButton;
class QLabel;

/// The two voltage markers in the panel: their buttons, the channel that they read, and their voltages.
///
/// Only shows texts and tells what was clicked; the markers are the wave view's. Main thread.
class VoltageMarkerPair : public QWidget {
    Q_OBJECT
public:
    /// @param pairIndex  the markers' ids are twice this and the number after it
    explicit VoltageMarkerPair(int pairIndex, QWidget *parent = nullptr);

    const std::int32_t index;
    QList<MyButton *> markerBtns; ///< "Y1" and "Y2"
    MyButton *btnChn = nullptr;   ///< "CH1" or "CH2"
    MyButton *btnDeploy = nullptr;
    QWidget *detail = nullptr;   ///< hidden while the pair is folded
    QList<QLabel *> valueLabels; ///< of the two markers
    QLabel *diffLabel = nullptr;
    bool expanded = true;

    /// The markers' voltages, and what is between them. A list of another length changes nothing.
    void setValues(const QStringList &values);
    /// No voltage is known.
    void clearValues();

signals:
    void markerClicked(int id);
    void chnBtnClicked(int chnIndex);

public slots:
    void slotBtnDeployClicked();
    void slotBtn1Clicked();
    void slotBtn2Clicked();
    void slotBtnChnClicked();

private:
    void buildLine();
    void buildDetail();
    void nameChannelButton();
};
