#include "controls/MenuDialog.h"

#include "controls/Style.h"

#include <QCloseEvent>
#include <QHideEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPointer>
#include <QPushButton>
#include <QWidgetAction>

MenuDialog::MenuDialog(QWidget *parent) : QMenu(parent)
{
    setStyleSheet(menuDialogStyle());
}

QAction *MenuDialog::addForm(QWidget *form)
{
    auto *action = new QWidgetAction(this);
    action->setDefaultWidget(form);
    addAction(action);
    return action;
}

void MenuDialog::stepAside(const std::function<void()> &ask)
{
    const QPointer<MenuDialog> self = this;
    const QPoint place = pos();
    m_aside = true;
    hide();
    ask();
    if (self && m_aside) {
        m_aside = false;
        popup(place);
    }
}

void MenuDialog::dismiss()
{
    if (!m_aside) {
        hide();
        return;
    }
    m_aside = false;
    QHideEvent event; // it is hidden already, so that no event would come
    QMenu::hideEvent(&event);
}

void MenuDialog::hideEvent(QHideEvent *event)
{
    if (!m_aside) {
        QMenu::hideEvent(event); // ends exec()
    }
}

QWidget *MenuDialog::focusedControl() const
{
    QWidget *focused = focusWidget();
    return focused != this ? focused : nullptr;
}

bool MenuDialog::pressByEnter()
{
    if (auto *focused = qobject_cast<QPushButton *>(focusedControl())) {
        focused->click();
        return true;
    }
    for (QPushButton *button : findChildren<QPushButton *>()) {
        if (button->isDefault() && button->isVisible() && button->isEnabled()) {
            button->click();
            return true;
        }
    }
    if (auto *focused = qobject_cast<QAbstractButton *>(focusedControl())) {
        focused->click();
        return true;
    }
    return false;
}

/// What a form's control leaves over. A menu would look for entries by it.
void MenuDialog::keyPressEvent(QKeyEvent *event)
{
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isEnter && pressByEnter()) {
        return;
    }
    if (focusedControl() == nullptr || event->key() == Qt::Key_Escape) {
        QMenu::keyPressEvent(event);
    }
}

bool MenuDialog::focusNextPrevChild(bool next)
{
    // QMenu goes to its next entry instead; a form's only control keeps the focus.
    return QWidget::focusNextPrevChild(next) || focusedControl() != nullptr || QMenu::focusNextPrevChild(next);
}

void MenuDialog::mouseReleaseEvent(QMouseEvent *event)
{
    QAction *action = actionAt(event->pos());
    if (!action || action->property("canHideMenu").toString() == QLatin1String("true")) {
        QMenu::mouseReleaseEvent(event);
        return;
    }
    const QPointer<MenuDialog> self = this; // what the action does may end the menu
    m_keepOpen = qobject_cast<QWidgetAction *>(action) != nullptr;
    action->activate(QAction::Trigger);
    if (self) {
        m_keepOpen = false;
    }
}

void MenuDialog::closeEvent(QCloseEvent *event)
{
    if (m_keepOpen) {
        event->ignore();
    } else {
        QMenu::closeEvent(event);
    }
}
