#pragma once

#include "controls/MenuDialog.h"

class QButtonGroup;
class QRadioButton;

/// The menu that chooses a model by hand, while no instrument is connected.
///
/// Made for one opening, on the stack of who opens it. It shows `gDev` as it is then, and closes when that object goes.
/// The arrow keys go from model to model, Space and Enter choose. Main thread.
class MenuDevSettings : public MenuDialog {
    Q_OBJECT
public:
    explicit MenuDevSettings(QWidget *parent = nullptr);

signals:
    /// The model of this code was chosen, which may be the present one. The menu has closed by then.
    void simDevModelChanged(int model);

protected:
    void showEvent(QShowEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QRadioButton *addModel(int index);
    void choose(int index);

    QButtonGroup *m_models; ///< the ids are indices in the table of models
};
