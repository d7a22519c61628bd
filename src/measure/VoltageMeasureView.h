#pragma once

#include <QList>
#include <QStringList>
#include <QWidget>

class MyButton;
class VoltageMarkerPair;

/// The section "Voltage Marker Pairs": the voltages of the markers Y1 and Y2, for a model with analog channels.
///
/// The markers and the arithmetic are the main view's; the texts come in made. Nothing is stored. Main thread.
class VoltageMeasureView : public QWidget {
    Q_OBJECT
public:
    explicit VoltageMeasureView(QWidget *parent = nullptr);

    /// Another device: no voltage is known any more. The chosen channel stays, as it does in the main view.
    void reload();

    bool expanded = true;
    MyButton *btnExpand = nullptr;
    QWidget *pairsWidget = nullptr;
    QList<VoltageMarkerPair *> pairs; ///< one

signals:
    void markerPairClicked(int index); ///< `index`: the marker's id
    void chnBtnClicked(int chnIndex);

public slots:
    void slotBtnDeployClicked();
    /// The voltages of the first pair's markers and between them.
    void slotValueChanged(const QStringList &values);
};
