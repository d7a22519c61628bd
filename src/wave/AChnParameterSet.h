#pragma once

#include <QFrame>
#include <QPointer>
#include <QStringList>
#include <QVector>

class DevBase;
class MenuDialog;
class MyButton;
class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;

/// The kinds of change of an analog channel that its controls, its sidebar and the main view tell each other of: the
/// first argument of their signals.
namespace aChnChange {

inline constexpr int enabled = 10;   ///< value 0 or 1
inline constexpr int probe = 11;     ///< value 1, 10 or 100
inline constexpr int look = 12;      ///< value 1 for a reversed channel, else 0
inline constexpr int fullScale = 13; ///< value in millivolts
inline constexpr int zeroLevel = 14; ///< value in device pixels from the top of the area
inline constexpr int trigger = 15;   ///< the device's triggers; no value

} // namespace aChnChange

/// The settings of one analog channel: on or off, volts per division, probe factor, and in a menu coupling and reverse.
///
/// They are stored with the device at once; of those that the view needs it tells. GUI thread, placed in an
/// ItemAChnSidebar.
class AChnParameterSet : public QFrame {
    Q_OBJECT
public:
    AChnParameterSet(int channel, QWidget *parent);

    /// Shows what the device has, and tells of what the view needs.
    void refresh(DevBase &device);
    /// The millivolts that the area's height stands for: ten divisions.
    [[nodiscard]] int fullScaleMv() const;
    /// The controls in the order of Tab.
    [[nodiscard]] QVector<QWidget *> tabStops() const;

public slots:
    /// Pops up the menu of coupling and reverse: at the pointer, or below its button if that was pressed by key.
    void openExtendSetMenu();
    void slotOpenClicked();
    void slotProbeClicked();
    void slotReverseClicked();
    void slotCoupleClicked(int index);
    void slotVoltageChanged(const QString &voltage);

signals:
    /// @param type  of aChnChange, 10 to 13
    /// @param id    the channel
    void chnSetChanged(int type, int id, int value);

private:
    void buildName();
    void buildButtons();
    void buildVolts();
    void showProbe(int index);
    void createMenu();
    void showExtended();
    [[nodiscard]] QString spoken(const QString &control) const;

    const int chnIndex;
    const QStringList coupleTexts;
    const QStringList voltTexts;
    const QStringList probeTexts;
    QCheckBox *enableBox;
    QLabel *nameLabel;
    QComboBox *voltCombo;
    QPushButton *probeBtn;
    MyButton *settingBtn;
    MenuDialog *extendMenu = nullptr; ///< made at first use, with the two below
    QCheckBox *reverseBox = nullptr;
    QComboBox *coupleCombo = nullptr;
    QPointer<DevBase> m_device; ///< null once it has gone
};
