#pragma once

#include "controls/MenuDialog.h"

#include <QPointer>
#include <QString>
#include <QVector>

#include <array>

class DevBase;
class QButtonGroup;
class QCheckBox;
class QComboBox;
class QGridLayout;
class QLineEdit;
class QRadioButton;
class QSlider;
class QVBoxLayout;

/// The menu of channels in use, PWM outputs and trigger position.
///
/// Made for one opening, on the stack of who opens it. It shows `gDev` as it is then; OK applies what stands there, and
/// until then nothing changes. When the device object goes the menu closes, and it applies nothing to another one. A
/// form higher than the screen scrolls between the top and its buttons. Main thread.
class MenuChnSettings : public MenuDialog {
    Q_OBJECT
public:
    explicit MenuChnSettings(QWidget *parent = nullptr);

protected:
    void showEvent(QShowEvent *event) override;

private:
    struct PwmRow {
        QCheckBox *enable = nullptr;
        QLineEdit *frequ = nullptr;
        QComboBox *unit = nullptr;
        QLineEdit *duty = nullptr;
    };

    [[nodiscard]] QWidget *makeGroups();
    void addRanges(QVBoxLayout &column);
    void addChannels(QVBoxLayout &column);
    void addPwm(QVBoxLayout &column);
    void addPwmRow(QGridLayout &grid, int output);
    void addPosition(QVBoxLayout &column);
    void addButtons(QVBoxLayout &column);

    /// Checks the channels 0 to `last`, and no others.
    void checkRange(int last);
    void apply();
    // Each applies its part. @return the text of its error, empty for none
    QString applyPosition();
    QString applyChannels();
    QString applyPwm();

    const QPointer<DevBase> m_device; ///< the one shown
    QButtonGroup *m_ranges;
    QRadioButton *m_noRange = nullptr; ///< one of the group that is never shown: checked while no range is
    QVector<QCheckBox *> m_channels;
    std::array<PwmRow, 2> m_pwm;
    QSlider *m_position = nullptr; ///< null for the analog model
};
