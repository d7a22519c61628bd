#pragma once

#include <QPointer>
#include <QWidget>

class MenuDialog;
class MyButton;
class QLabel;

/// The small panel left of the time ruler: the picture of an analyzer, the model's name, and the buttons of two menus,
/// one to choose a model by hand and one for channels, PWM outputs and trigger position.
///
/// As wide as the sidebar column and as high as the ruler, so that the ruler stands exactly above the waves. It keeps
/// no device: each menu is made for one opening and reads `gDev` then. Main thread.
class DevSetting : public QWidget {
    Q_OBJECT
public:
    explicit DevSetting(QWidget *parent = nullptr);

    /// Shows the name of `gDev`'s model.
    void reload();
    /// Closes the menu that is open, if any, without a change: an instrument comes or goes, so that what it shows is
    /// of the past.
    void closeMenu();

signals:
    /// The model of this code was chosen by hand; it may be the present one.
    void simDevModelChanged(int model);

public slots:
    // Both return when their menu has closed.

    /// Opens the menu of models.
    void choiceDeviceClickedSlot();
    /// Opens the menu of channels, PWM outputs and trigger position.
    void choideChannelClickedSlot();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    [[nodiscard]] MyButton *makeButton(const QString &icon, const QString &name);
    /// Runs the menu beside the button.
    void run(MenuDialog &menu, const QWidget &button);

    QLabel *m_picture;
    QLabel *m_name;
    MyButton *m_modelButton;
    MyButton *m_settingButton;
    QPointer<MenuDialog> m_menu; ///< the one that is open
};
