#pragma once

#include <QMenu>

/// A pop-up menu that hosts whole forms: a light panel that stays open while the form in it is used.
///
/// Forms are placed through QWidgetActions. An action closes the menu on a click only if its dynamic property
/// "canHideMenu" is "true"; any other is merely activated. Main thread.
class MenuDialog : public QMenu {
    Q_OBJECT
public:
    explicit MenuDialog(QWidget *parent = nullptr);

    /// Places `form` in the menu, which takes it over. @return its action
    QAction *addForm(QWidget *form);

protected:
    void mouseReleaseEvent(QMouseEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    bool m_keepOpen = false; ///< QMenu closes itself when a form's action fires: not now
};
