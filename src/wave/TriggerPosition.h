#pragma once

#include <QObject>
#include <QPointer>
#include <QVector>

class DevBase;
class MyButton;
class QGridLayout;
class QLabel;
class QLineEdit;
class QWidget;

/// The place of the trigger in the capture, in percent: a line of the analog trigger's controls.
///
/// Stored with the device at once. GUI thread, owned by AChnTriggerSet, whose children the controls are.
class TriggerPosition : public QObject {
    Q_OBJECT
public:
    explicit TriggerPosition(QWidget *parent);

    void addTo(QGridLayout &grid, int row);
    /// Shows what the device has.
    void refresh(DevBase &device);
    /// See AChnTriggerSet.
    [[nodiscard]] bool mayGo();
    /// The controls in the order of Tab.
    [[nodiscard]] QVector<QWidget *> tabStops() const;

public slots:
    /// The position has been edited. While the field has the focus this gives it away, which calls it once more.
    void slotHorEditClicked();
    /// The button beside it puts the trigger to the begin.
    void slotHorZreoClicked();

signals:
    void mayBeDeleted();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void show(int percent);
    /// Tells that the device refused it. @return false when this object may not go on
    [[nodiscard]] bool tellRefusal();

    QWidget *const m_owner;
    QLabel *horLabel;
    QLineEdit *horEdit;
    MyButton *horZero;
    bool m_telling = false;     ///< a box is open that takes the focus away
    bool m_leaving = false;     ///< the device has gone meanwhile
    QPointer<DevBase> m_device; ///< null once it has gone
};
