#pragma once

#include "controls/MenuDialog.h"

#include <QVector>

class QBoxLayout;
class QButtonGroup;
class QCheckBox;

/// The menu with which the user chooses the parameters that the section "Measure" shows, or sees all of a channel's.
///
/// Made for one opening, on the stack of who opens it. A choice applies at once: it is told, and the menu stays open.
/// Main thread.
class AChnMeasureSet : public MenuDialog {
    Q_OBJECT
public:
    /// @param ids  the parameters that are shown, as places in `gMeasureNames`, the newest first; -1 for free rows
    explicit AChnMeasureSet(QVector<int> ids, QWidget *parent = nullptr);

    QVector<QCheckBox *> boxes; ///< by parameter, whose number is the object name
    QButtonGroup *showAllGroup = nullptr;
    QCheckBox *removeAllBox = nullptr;
    QVector<qint32> shownIds; ///< as they are chosen at present

signals:
    /// All parameters of analog channel `chnId` are to be shown.
    void showAllMeasureClicked(int chnId);
    /// Other parameters have been chosen: `count` of them, the newest first, -1 for free rows. The array is this
    /// object's.
    void showMeasureChanged(const qint32 *showMeasuIndex, int count);
    void removeAllClicked();

public slots:
    /// The sender is a button of the group "Show All".
    void slotShowAllClicked();
    void slotRemoveAllClcked();
    /// The sender is a parameter's box.
    void slotOptionsClicked();

protected:
    void showEvent(QShowEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void addBoxes(QBoxLayout &column);
    void addShowAll(QBoxLayout &line);
};
