#pragma once

#include <QStringList>
#include <QVector>
#include <QWidget>

class MyButton;
class QAction;
class QLabel;
class QMenu;

/// The section "Measurements": width, period, duty cycle and frequency of the pulse under the pointer on the wave.
///
/// Which of the four are shown is the user's choice and kept in the global section of the configuration, one key a row;
/// a key that begins with "Dis" holds 0 for a row that is shown. The texts come in made; this class knows no capture.
/// Main thread.
class MeasureView : public QWidget {
    Q_OBJECT
public:
    explicit MeasureView(QWidget *parent = nullptr);

    /// Takes over the stored choice of rows. Whatever is no number there counts as 0.
    void reload();

    bool expanded = true;
    MyButton *btnExpand = nullptr;
    MyButton *btnSetting = nullptr;
    QMenu *measureMenu = nullptr; ///< one checkable entry a row, with the row's number as its data
    QWidget *valuesWidget = nullptr;
    QStringList keys; ///< in the order of the rows, as the two below
    QVector<QLabel *> nameLabels;
    QVector<QLabel *> valueLabels;

public slots:
    void slotDeployClicked();
    /// Pops up the menu at the pointer.
    void openMenuDig();
    /// Shows or hides the row of a menu entry by its check mark, and stores that.
    void slotMenuClicked(QAction *action);
    /// Shows the values, first row first. Nothing for no values, or more than there are rows.
    void slotValueChanged(QStringList values);

private:
    void addRow(const QString &name, const QString &key);
};
