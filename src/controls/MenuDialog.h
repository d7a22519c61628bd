#pragma once

#include <QMenu>

#include <functional>

/// A pop-up menu that hosts whole forms: a light panel that stays open while the form in it is used.
///
/// Forms are placed through QWidgetActions. An action closes the menu on a click only if its dynamic property
/// "canHideMenu" is "true"; any other is merely activated. In a form Tab walks from control to control, Enter presses
/// the button that has the focus, or else the form's default button, and Esc closes the menu. Main thread.
class MenuDialog : public QMenu {
    Q_OBJECT
public:
    explicit MenuDialog(QWidget *parent = nullptr);

    /// Places `form` in the menu, which takes it over. @return its action
    QAction *addForm(QWidget *form);

    /// Runs `ask`, such as a modal box, while the menu is off the screen: a pop-up takes all mouse and key events, so
    /// that nobody could answer a box above it. Then the menu comes back where it was, as it was, unless dismiss() was
    /// called meanwhile. exec() goes on all the time.
    void stepAside(const std::function<void()> &ask);

public slots:
    /// Closes the menu and ends exec(), also while it stands aside.
    void dismiss();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    bool focusNextPrevChild(bool next) override;
    void hideEvent(QHideEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    /// The control of a form that has the focus, null for none.
    [[nodiscard]] QWidget *focusedControl() const;
    bool pressByEnter();

    bool m_aside = false;    ///< off the screen for a box
    bool m_keepOpen = false; ///< QMenu closes itself when a form's action fires: not now
};
