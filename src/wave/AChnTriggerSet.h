#pragma once

#include <QFrame>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QVector>

class DevBase;
class MyButton;
class QCheckBox;
class QGridLayout;
class QLabel;
class QPushButton;
class QSpinBox;
class SensitivityMenu;
class TriggerPosition;

/// The kinds of change that AChnTriggerSet tells of.
namespace aTrigChange {

inline constexpr int enabled = 0;     ///< "true" or "false"
inline constexpr int edge = 1;        ///< the channel whose edge was chosen
inline constexpr int channel = 2;     ///< the trigger's channel
inline constexpr int value = 3;       ///< empty: see AChnTriggerSet::level()
inline constexpr int sensitivity = 4; ///< divisions, as a text

} // namespace aTrigChange

/// The analog trigger: its channel, edge, level and sensitivity, and the place of the trigger in the capture.
///
/// Stored with the device at once. GUI thread, placed in an ItemAChnSidebar.
class AChnTriggerSet : public QFrame {
    Q_OBJECT
public:
    explicit AChnTriggerSet(QWidget *parent);
    ~AChnTriggerSet() override;

    /// Shows what the device has, and tells of the channel, and whether there is a trigger.
    void refresh(DevBase &device);
    /// Shows the device's edges alone.
    void showEdges();
    /// Millivolts.
    [[nodiscard]] int level() const;
    /// Takes a level as if it had been typed; beyond the field's range its nearest end. Tells of it.
    void setLevel(double millivolts);
    /// The analog channel of the trigger, 0 or 1.
    [[nodiscard]] int channel() const;
    /// False while a box is open that this has asked for: it is to be kept, out of sight, until mayBeDeleted().
    [[nodiscard]] bool mayGo();
    /// The controls in the order of Tab.
    [[nodiscard]] QVector<QWidget *> tabStops() const;

public slots:
    void openExtendSetMenu();
    void slotTrigMouseClicked();
    /// The level has been edited. While the field has the focus this gives it away, which calls it once more.
    void slotTrigVoltageClicked();
    void slotChnCtlClicked();
    void slotTrigChnClicked();
    void slotSenstivityChanged(); ///< as slotTrigVoltageClicked()
    void slotVoltageZreoClicked();

signals:
    /// @param trig  of aTrigChange
    void aChnTrigSetChanged(int trig, const QString &set);
    /// The box is closed for which mayGo() was false.
    void mayBeDeleted();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void buildHead(QGridLayout &grid);
    void buildEdges(QGridLayout &grid);
    void buildLevel(QGridLayout &grid);
    void storeLevel();
    void showChannel(int index);
    [[nodiscard]] int chosenEdge() const;

    const QStringList chnTexts;
    QCheckBox *enableBox;
    QVector<MyButton *> edgeBtns; ///< rising, falling
    QPushButton *chnBtn;
    MyButton *settingBtn;
    QLabel *levelLabel;
    QSpinBox *levelSpin;
    QLabel *levelUnit;
    MyButton *levelZero = nullptr;
    TriggerPosition *m_position;
    SensitivityMenu *extendMenu = nullptr; ///< made at first use
    QPointer<DevBase> m_device;            ///< null once it has gone
};
