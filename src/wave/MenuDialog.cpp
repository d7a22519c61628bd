#include "wave/MenuDialog.h"

#include "wave/Style.h"

#include <QCloseEvent>
#include <QMouseEvent>
#include <QPointer>
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
